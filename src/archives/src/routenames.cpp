#include "velmora/archives/routenames.h"

#include "velmora/archives/aptable.h"
#include "velmora/archives/unpack.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/journal.h"
#include "velmora/core/paths.h"
#include "velmora/core/routeindex.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/userinterface.h"
#include "velmora/core/xmltext.h"

#include <algorithm>

namespace velmora::archives {

namespace {

// The route folders below Content\Routes, in name order, and the properties document of each
// (any letter case), or an empty path.
std::vector<std::pair<fs::path, fs::path>> routeFolders(const fs::path& routesFolder,
                                                        std::vector<std::string>& unreadable) {
    std::vector<std::pair<fs::path, fs::path>> found;
    std::error_code ec;
    fs::directory_iterator it(routesFolder, ec);
    if (ec) {
        unreadable.push_back(routesFolder.string() + ": " + ec.message());
        return found;
    }
    for (; !ec && it != fs::directory_iterator(); it.increment(ec)) {
        if (entryKind(*it) != EntryKind::Folder)
            continue;
        fs::path properties;
        std::error_code inner;
        fs::directory_iterator files(it->path(), inner);
        if (inner)
            unreadable.push_back(it->path().string() + ": " + inner.message());
        for (; !inner && files != fs::directory_iterator(); files.increment(inner))
            if (iequals(files->path().filename().string(), "RouteProperties.xml") && entryKind(*files) == EntryKind::File)
                properties = files->path();
        found.emplace_back(it->path(), properties);
    }
    std::sort(found.begin(), found.end());
    return found;
}

} // namespace

std::string routePropertiesName(std::string_view text) {
    for (const char* language : {"English", "French", "German"}) {
        std::size_t pos = 1;
        std::string value;
        GetDetail(text, pos, language, value);
        if (pos && !value.empty())
            return DecodedChars(value);
    }
    return {};
}

RouteIndexLines routeIndexLines(const fs::path& routesFolder, const fs::path& reportsFolder) {
    RouteIndexLines out;
    const std::size_t pathLength = reportsFolder.string().size();
    for (const auto& [folder, properties] : routeFolders(routesFolder, out.unreadable)) {
        if (properties.empty())
            continue;
        if (!FileExists(properties)) {
            out.unreadable.push_back(properties.string() + ": cannot be read");
            continue;
        }
        std::string name = routePropertiesName(ReadTextFile(properties));
        std::replace(name.begin(), name.end(), ',', '-');
        std::string line = folder.filename().string() + "," + name;
        line.erase(std::remove(line.begin(), line.end(), ':'), line.end());
        if (pathLength < 240 && pathLength + 1 + line.size() > 240)
            line.resize(240 - pathLength);
        out.text += line + "\r\n";
        ++out.routes;
    }
    out.text += "\r\n";
    return out;
}

std::vector<std::string> extractAllRouteProperties(AppContext& ctx, UserInterface* ui) {
    std::vector<std::string> problems;
    ApFindOptions find;
    find.search = ApSearch::Scenarios; // every .ap below Content\Routes
    find.details = false;
    const ApTable table = findApFiles(ctx.railWorks(), find, ui);
    problems.insert(problems.end(), table.unreadable.begin(), table.unreadable.end());
    JournalCommand entry(ctx.files().journal(), "extract RouteProperties.xml from every route archive");
    UnpackOptions options;
    options.kind = EntrySet::RouteProperties;
    for (const auto& ap : table.files) {
        if (ui && ui->cancelled())
            break;
        const UnpackResult r = unpackArchive(ctx.files(), ap.path, options, ui);
        if (!r.ok)
            problems.push_back(r.error);
        for (const auto& refused : r.refused)
            problems.push_back(ap.path.string() + ": " + refused);
    }
    return problems;
}

bool writeRouteIndex(AppContext& ctx, std::string* error) {
    const RouteIndexLines lines = routeIndexLines(ctx.railWorks() / "Content" / "Routes", ctx.reports());
    JournalCommand entry(ctx.files().journal(), "route index");
    const WriteResult w = ctx.files().write(ctx.reports() / "RouteIndex.csv", lines.text);
    if (!w) {
        if (error)
            *error = w.message;
        return false;
    }
    ctx.routes = loadRouteIndex(ctx.reports() / "RouteIndex.csv");
    return true;
}

fs::path routeNameFolder(const fs::path& routeFolder, std::string_view name) {
    std::string clean(name);
    clean.erase(std::remove(clean.begin(), clean.end(), ':'), clean.end());
    std::string folderName = routeFolder.filename().string() + "  " + fileNameFromText(utf8FromDocument(clean));
    const std::size_t base = routeFolder.string().size() + 1;
    if (base + folderName.size() > 240 && base < 240)
        folderName.resize(240 - base);
    // A cut may end in a blank or a dot, which Windows drops from a name.
    while (!folderName.empty() && (folderName.back() == ' ' || folderName.back() == '.'))
        folderName.pop_back();
    return routeFolder / folderName;
}

RouteNameFolders addRouteNameFolders(const fs::path& routesFolder) {
    RouteNameFolders out;
    for (const auto& [folder, properties] : routeFolders(routesFolder, out.problems)) {
        if (properties.empty())
            continue;
        const std::string name = routePropertiesName(ReadTextFile(properties));
        const fs::path mark = routeNameFolder(folder, name);
        std::error_code ec;
        if (fs::is_directory(mark, ec))
            continue;
        if (fs::create_directory(mark, ec))
            out.made.push_back(mark);
        else
            out.problems.push_back(mark.string() + ": cannot be made (" + ec.message() + ")");
    }
    return out;
}

std::string apIndexText(const std::vector<fs::path>& apFiles) {
    std::string text;
    for (const auto& ap : apFiles)
        text += ap.parent_path().string() + "," + ap.filename().string() + "\r\n";
    return text;
}

} // namespace velmora::archives
