// A developer's folder trees, and a checked route's assets gathered into one folder for sharing.

#include "velmora/routes/routetemplate.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/userinterface.h"

#include <set>

namespace velmora::routes {

namespace {

// Makes the folders below `base`; existing ones are left. False after naming the one that failed.
bool makeFolders(const fs::path& base, RouteJob& job) {
    for (const std::string& relative : developerFolders()) {
        fs::path folder = base;
        for (const auto& part : splitDocumentPath(relative))
            folder /= part;
        std::error_code ec;
        fs::create_directories(folder, ec);
        if (ec || !fs::is_directory(folder, ec)) {
            job.message = folder.string() + ": the folder cannot be made (" + (ec ? ec.message() : "a file has that name") + ")";
            return false;
        }
    }
    return true;
}

// The part of a report's path from its "Assets" folder on ("Assets\Provider\..."), or empty.
std::string fromAssets(const std::string& path, const fs::path& root) {
    std::string p = path;
    for (char& c : p)
        if (c == '\\')
            c = '/';
    std::string rootText = root.generic_string();
    if (!rootText.empty() && rootText.back() != '/')
        rootText += '/';
    std::size_t at = std::string::npos;
    if (p.size() > rootText.size() && iequals(std::string_view(p).substr(0, rootText.size()), rootText) &&
        iequals(std::string_view(p).substr(rootText.size(), 7), "Assets/"))
        at = rootText.size();
    else
        for (std::size_t i = p.find("/"); i != std::string::npos; i = p.find('/', i + 1))
            if (iequals(std::string_view(p).substr(i, 8), "/Assets/"))
                at = i + 1;
    return at == std::string::npos ? std::string() : p.substr(at);
}

} // namespace

std::vector<std::string> developerFolders() {
    std::vector<std::string> out;
    for (const char* top : {"Audio", "Environment", "Particles", "PreLoad", "RailNetwork", "RailVehicles", "RouteMarkers",
                            "Scenery", "Stations", "System", "TemplateRoutes", "Weather"})
        out.emplace_back(top);
    for (const char* s : {"Animated", "Billboards", "Brushes", "Buildings", "Characters", "Clocks", "Clutter",
                          "DestinationBoards", "Procedural", "Structures", "Vegetation", "Vehicles", "Wildlife"})
        out.push_back(std::string("Scenery\\") + s);
    for (const char* v : {"Couplings", "Diesel", "Electric", "Freight", "Passenger", "Steam"})
        out.push_back(std::string("RailVehicles\\") + v);
    return out;
}

RouteJob setUpDeveloperFolders(AppContext& ctx, const std::string& provider, const std::string& product) {
    RouteJob job;
    if (provider.empty() || product.empty()) {
        job.message = "You have not entered details in all the boxes, please complete\nentries and try again.";
        return job;
    }
    for (const char* tree : {"Source", "Assets"}) {
        const fs::path base = ctx.resolver.resolveForWrite(
            ctx.railWorks(), std::string(tree) + "\\" + fileNameFromText(provider) + "\\" + fileNameFromText(product));
        std::error_code ec;
        if (fs::is_directory(base, ec) &&
            ctx.ui().ask(std::string("A") + (tree[0] == 'A' ? "n " : " ") + tree +
                             " folder with that name already exists. Do you wish\nto add any missing sub-folders ?",
                         Buttons::YesNo) != Answer::Yes) {
            job.notes.push_back(base.string() + ": left as it is");
            continue;
        }
        if (!makeFolders(base, job))
            return job;
        job.written.push_back(base);
    }
    ctx.resolver.invalidate();
    job.ok = true;
    job.message = "Your Provider and Product folders have been set up";
    return job;
}

RouteJob setUpSubFolders(AppContext& ctx, const fs::path& folder) {
    RouteJob job;
    std::error_code ec;
    if (folder.empty() || !fs::is_directory(folder, ec)) {
        job.message = folder.string() + ": there is no such folder";
        return job;
    }
    bool some = false;
    for (const std::string& relative : developerFolders())
        some = some || fs::is_directory(folder / relative.substr(0, relative.find('\\')), ec);
    if (some && ctx.ui().ask("Some of the sub-folders already exist in " + folder.string() +
                                 ". Do you wish\nto add any missing sub-folders ?",
                             Buttons::YesNo) != Answer::Yes) {
        job.ok = true;
        job.message = "Nothing was changed.";
        return job;
    }
    if (!makeFolders(folder, job))
        return job;
    ctx.resolver.invalidate();
    job.ok = true;
    job.written.push_back(folder);
    job.message = "Your Provider and Product folders have been set up";
    return job;
}

RouteJob gatherRouteAssets(AppContext& ctx, const std::string& routeName, UserInterface* ui) {
    RouteJob job;
    const std::string base = fileNameFromText(routeName);
    std::vector<std::string> sources;
    std::set<std::string> seen;
    for (const char* kind : {"_Sounds.csv", "_Textures.csv", "_GeoShapes.csv", "_Assets.csv"}) {
        const fs::path report = ctx.reports() / (base + kind);
        std::error_code ec;
        if (!fs::is_regular_file(report, ec)) {
            job.message = "To use this option, you\nneed the " + base +
                          " Sounds,Textures,GeoShapes and Assets.csv files\nFrom the 'Check Route' option\n(" +
                          report.string() + " is missing)";
            return job;
        }
        for (const std::string& line : SplitLines(ReadTextFile(report))) {
            const auto cells = csvCells(line);
            if (!cells.empty() && !cells.front().empty() && seen.insert(cells.front()).second)
                sources.push_back(cells.front());
        }
    }
    const fs::path root = ctx.railWorks();
    const fs::path target = root / ("Assets_" + base);
    JournalCommand command(&ctx.journal(), "Make Asset Folder " + routeName);
    if (ui)
        ui->beginProgress("Copying the assets of " + routeName, static_cast<std::int64_t>(sources.size()));
    std::size_t copied = 0;
    for (std::size_t i = 0; i < sources.size(); ++i) {
        if (ui)
            ui->progress(static_cast<std::int64_t>(i));
        if (ui && ui->cancelled()) {
            job.notes.push_back("Stopped by Abort after " + std::to_string(copied) + " file(s).");
            break;
        }
        const std::string relative = fromAssets(sources[i], root);
        std::error_code ec;
        const auto found = relative.empty() ? std::nullopt : ctx.resolver.resolve(root, relative);
        const fs::path source = found ? *found : fs::path();
        if (!found || !fs::is_regular_file(source, ec)) {
            job.notes.push_back(sources[i] + ": " + (relative.empty() ? "not below an Assets folder" : "the file is missing"));
            continue;
        }
        fs::path to = target;
        for (const auto& part : splitDocumentPath(relative))
            to /= part;
        const WriteResult w = ctx.files().copy(source, to);
        if (!w) {
            job.notes.push_back(w.message);
            continue;
        }
        ++copied;
        job.written.push_back(w.target);
    }
    if (ui)
        ui->endProgress();
    job.ok = true;
    job.message = std::to_string(copied) + " file(s) of " + routeName + " have been copied to " + target.string();
    return job;
}

} // namespace velmora::routes
