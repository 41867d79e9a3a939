// Deleting routes and scenarios, and blanking a route's terrain mix maps.

#include "staging.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/templates.h"
#include "velmora/core/textsearch.h"
#include "velmora/core/userinterface.h"
#include "velmora/core/xmltext.h"
#include "velmora/routes/routeedits.h"
#include "velmora/textures/texture.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace velmora::routes {

namespace {

const ScanSettings kExact{Match::Binary};

// The files of `folders` moved below the Deleted folder (or removed for good) as one journal
// entry, each file named in the report.
EditReport removeFolders(AppContext& ctx, const std::vector<fs::path>& folders, const std::string& command,
                         bool permanently, bool dryRun) {
    EditReport report;
    std::vector<std::vector<fs::path>> contents(folders.size());
    for (std::size_t i = 0; i < folders.size(); ++i)
        if (!detail::listTree(folders[i], contents[i], report.warnings, report.message))
            return report;
    const fs::path keepIn = deletedFolder(ctx);
    for (std::size_t i = 0; i < folders.size(); ++i) {
        for (const fs::path& file : contents[i]) {
            report.files.push_back(file);
            report.lines.push_back(file.string() + (permanently ? ": deleted" : ": moved to " + keepIn.string()));
        }
        report.count += contents[i].size();
    }
    report.ok = true;
    if (dryRun)
        return report;
    if (permanently) {
        for (const fs::path& folder : folders) {
            std::error_code ec;
            fs::remove_all(folder, ec);
            if (ec) {
                report.ok = false;
                report.message = folder.string() + ": could not be deleted whole (" + ec.message() + ").";
                return report;
            }
        }
        return report;
    }
    JournalCommand entry(&ctx.journal(), command);
    for (const fs::path& folder : folders)
        for (const std::string& problem : ctx.files().removeFolder(folder, keepIn))
            report.warnings.push_back(problem);
    return report;
}

std::string zeroBlob(std::size_t size, const std::string& lineBreak) {
    std::string out;
    out.reserve(size * 2 + size / 8 + 8);
    for (std::size_t i = 0; i < size; i += 8) {
        if (i > 0)
            out += (i % 32 == 0) ? lineBreak : std::string(" ");
        out.append(2 * std::min<std::size_t>(8, size - i), '0');
    }
    return out;
}

} // namespace

fs::path deletedFolder(AppContext& ctx) {
    const fs::path base = ctx.appPath() / "Deleted" / localTimeText("%Y%m%d-%H%M%S");
    fs::path folder = base;
    std::error_code ec;
    for (int n = 2; fs::exists(folder, ec); ++n)
        folder = base.string() + "-" + std::to_string(n);
    return folder;
}

EditReport deleteRoute(AppContext& ctx, const RouteEntry& route, bool permanently, bool dryRun) {
    if (!ctx.resolver.resolve(route.path, "RouteProperties.xml")) {
        EditReport report;
        report.message = route.path.string() + ": is not a route, it has no RouteProperties.xml; nothing was deleted.";
        return report;
    }
    EditReport report = removeFolders(ctx, {route.path}, "Delete Selected Route: " + route.name, permanently, dryRun);
    if (report.ok && !dryRun)
        report.message = permanently ? "The route " + route.name + " has been deleted."
                                     : "The route " + route.name + " has been moved to the Deleted folder.";
    return report;
}

EditReport deleteScenarios(AppContext& ctx, const RouteEntry& route, const std::vector<ScenarioEntry>& scenarios,
                           bool permanently, bool dryRun) {
    std::vector<fs::path> folders;
    // Last row first, as the list takes them out.
    for (auto it = scenarios.rbegin(); it != scenarios.rend(); ++it) {
        const auto folder = ctx.resolver.resolve(route.path, "Scenarios\\" + it->folder);
        if (!folder) {
            EditReport report;
            report.message = (route.path / "Scenarios" / it->folder).string() + ": there is no such folder; nothing was deleted.";
            return report;
        }
        folders.push_back(*folder);
    }
    std::string names;
    for (const ScenarioEntry& s : scenarios)
        names += (names.empty() ? "" : ", ") + s.name;
    EditReport report = removeFolders(ctx, folders, "Delete Selected Scenario(s): " + names, permanently, dryRun);
    if (report.ok && !dryRun)
        report.message = std::to_string(folders.size()) + (permanently ? " scenario(s) deleted." : " scenario(s) moved to the Deleted folder.");
    return report;
}

std::vector<fs::path> mixMapFiles(AppContext& ctx, const RouteEntry& route) {
    std::vector<fs::path> out;
    const auto folder = ctx.resolver.resolve(route.path, "MixMap");
    std::error_code ec;
    if (!folder)
        return out;
    for (fs::directory_iterator it(*folder, ec), end; !ec && it != end; it.increment(ec))
        if (it->is_regular_file(ec))
            out.push_back(it->path());
    std::sort(out.begin(), out.end(), [](const fs::path& a, const fs::path& b) {
        std::string x = a.filename().string(), y = b.filename().string();
        for (std::string* t : {&x, &y})
            std::transform(t->begin(), t->end(), t->begin(), [](unsigned char c) { return char(std::tolower(c)); });
        return x < y;
    });
    return out;
}

std::string blankMixMapText(const std::string& xml, const std::string& blankTemplate, std::string& error) {
    const std::size_t blob = xml.find("<d:blob");
    const std::size_t image = blob == std::string::npos ? blob : xml.rfind("<cHcImageDx", blob);
    if (image == std::string::npos) {
        error = "it holds no image level (<cHcImageDx> with a <d:blob>)";
        return {};
    }
    const std::string head = xml.substr(0, blob);
    std::string format, width, height;
    std::size_t pos = image + 1;
    GetDetail(head, pos, "Format", format, kExact);
    pos = image + 1;
    GetDetail(head, pos, "Width", width, kExact);
    pos = image + 1;
    GetDetail(head, pos, "Height", height, kExact);
    const textures::PixelFormat pixels = textures::pixelFormatNamed(format);
    const int w = std::atoi(width.c_str()), h = std::atoi(height.c_str());
    if (pixels == textures::PixelFormat::Unknown || w <= 0 || h <= 0) {
        error = "its first image level has no known format and size ('" + format + "', " + width + " x " + height + ")";
        return {};
    }
    const std::string lineBreak = xml.find("\r\n") != std::string::npos ? "\r\n" : "\n";
    std::string tail = blankTemplate;
    // The template is kept with plain line ends; the document's own are used.
    if (lineBreak == "\r\n") {
        std::string crlf;
        for (char c : tail)
            crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
        tail = crlf;
    }
    const std::size_t size = textures::levelSize(pixels, w, h);
    return head + fillTemplate(tail, {{"ssssss", std::to_string(size)}, {"bbbbbb", zeroBlob(size, lineBreak)}});
}

EditReport blankTerrain(AppContext& ctx, const RouteEntry& route, const std::vector<std::string>& names, bool dryRun) {
    EditReport report;
    std::string error;
    std::string blank = readTemplate(ctx, "BlankTerrain.txt", error);
    if (blank.empty()) {
        report.message = error;
        return report;
    }
    std::erase(blank, '\r');
    std::vector<fs::path> files;
    const auto folder = ctx.resolver.resolve(route.path, "MixMap");
    if (!folder) {
        report.message = (route.path / "MixMap").string() + ": there is no such folder; nothing was changed.";
        return report;
    }
    if (names.empty())
        files = mixMapFiles(ctx, route);
    for (const std::string& name : names) {
        const auto file = ctx.resolver.resolve(*folder, name);
        if (!file || !fs::is_regular_file(*file)) {
            report.message = (*folder / name).string() + ": there is no such file; nothing was changed.";
            return report;
        }
        files.push_back(*file);
    }
    detail::Staging staging(ctx);
    ctx.ui().beginProgress("Remove terrain textures", static_cast<std::int64_t>(files.size()));
    std::int64_t done = 0;
    for (const fs::path& file : files) {
        if (ctx.ui().cancelled()) {
            ctx.ui().endProgress();
            report.aborted = true;
            report.message = "Aborted: nothing was changed.";
            return report;
        }
        std::string xml, bin;
        if (const ConvertResult c = binToXmlText(file, xml); !c) {
            ctx.ui().endProgress();
            report.message = c.message + " Nothing was changed.";
            return report;
        }
        const std::string text = blankMixMapText(xml, blank, error);
        if (text.empty()) {
            ctx.ui().endProgress();
            report.message = file.string() + ": " + error + "; nothing was changed.";
            return report;
        }
        if (const ConvertResult c = xmlTextToBin(text, bin, file.string()); !c) {
            ctx.ui().endProgress();
            report.message = c.message + " Nothing was changed.";
            return report;
        }
        if (!dryRun && !staging.stage(file, bin, error)) {
            ctx.ui().endProgress();
            report.message = error;
            return report;
        }
        report.files.push_back(file);
        report.lines.push_back(file.string() + ": terrain textures blanked");
        ctx.ui().progress(++done);
    }
    ctx.ui().endProgress();
    report.count = files.size();
    report.ok = true;
    if (dryRun)
        return report;
    if (const std::string failed = staging.commitAll("Remove terrain textures: " + route.name); !failed.empty()) {
        report.ok = false;
        report.message = failed;
        return report;
    }
    report.message = "All selected files have been modified.";
    return report;
}

} // namespace velmora::routes
