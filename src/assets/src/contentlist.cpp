#include "velmora/assets/contentlist.h"

#include "velmora/assets/scanpath.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"
#include "velmora/core/xmltext.h"

#include <algorithm>

namespace velmora::assets {

namespace {

bool contains(std::string_view text, std::string_view what) {
    return InStr(1, text, what, Match::Text) > 0;
}

std::string withBackslashes(std::string s) {
    std::replace(s.begin(), s.end(), '/', '\\');
    return s;
}

// The part of `full` below `root` (both with backslashes), letter case aside; false when
// `full` does not lie below it.
bool below(const std::string& full, std::string root, std::string& rest) {
    while (!root.empty() && root.back() == '\\')
        root.pop_back();
    if (root.empty() || full.size() <= root.size() + 1 || full[root.size()] != '\\' ||
        !iequals(std::string_view(full).substr(0, root.size()), root))
        return false;
    rest = full.substr(root.size() + 1);
    return true;
}

} // namespace

std::vector<std::string> ContentRow::cells() const {
    return {route, routeName, subFolder, name, subFolder2, fileName, index};
}

std::string ContentRow::relativePath() const {
    std::string out;
    for (const std::string* part : {&route, &subFolder, &subFolder2, &fileName})
        if (!part->empty())
            out += (out.empty() ? "" : "\\") + *part;
    return out;
}

const std::vector<std::string>& contentColumns() {
    static const std::vector<std::string> columns = {"Route",       "Route Name", "Sub-Folder", "Name",
                                                     "Sub-Folder2", "File Name",  "Index"};
    return columns;
}

ContentRow contentRowFromCells(std::vector<std::string> cells) {
    cells.resize(7);
    return {cells[0], cells[1], cells[2], cells[3], cells[4], cells[5], cells[6]};
}

std::vector<std::vector<std::string>> cellsOf(const std::vector<ContentRow>& rows) {
    std::vector<std::vector<std::string>> cells;
    cells.reserve(rows.size());
    for (const ContentRow& row : rows)
        cells.push_back(row.cells());
    return cells;
}

ContentNames::ContentNames(fs::path routesFolder) : m_routesFolder(std::move(routesFolder)) {}

std::string ContentNames::firstEnglish(const std::string& relative) {
    const std::string key = toLowerAscii(relative);
    if (auto known = m_names.find(key); known != m_names.end())
        return known->second;
    std::string& name = m_names[key]; // remembered whatever comes of it: one try a document
    const auto file = m_resolver.resolve(m_routesFolder, relative);
    if (!file)
        return name;
    std::error_code ec;
    if (!fs::is_regular_file(*file, ec)) {
        // A FIFO of that name would block the reader; it is named, not opened.
        m_unreadable.push_back(file->string() + ": not a regular file");
        return name;
    }
    if (!FileExists(*file)) {
        m_unreadable.push_back(file->string() + ": cannot be opened for reading");
        return name;
    }
    ++m_reads;
    const std::string text = ReadTextFile(*file);
    std::size_t pos = 1;
    GetDetail(text, pos, "English", name, ScanSettings{Match::Binary, false, true});
    return name;
}

std::string ContentNames::routeName(const std::string& route) {
    return firstEnglish(route + "\\RouteProperties.xml");
}

std::string ContentNames::scenarioName(const std::string& route, const std::string& scenario) {
    return firstEnglish(route + "\\Scenarios\\" + scenario + "\\ScenarioProperties.xml");
}

ContentFile contentRow(const std::string& belowRoutes, ContentNames& names, ContentRow& row) {
    row = {};
    if (contains(belowRoutes, "PreLoad"))
        return ContentFile::Skipped;
    const std::size_t b1 = belowRoutes.find('\\');
    if (b1 == std::string::npos || b1 == 0)
        return ContentFile::Invalid;
    row.route = belowRoutes.substr(0, b1);
    const std::size_t b2 = belowRoutes.find('\\', b1 + 1);
    if (b2 == std::string::npos) {
        row.fileName = belowRoutes.substr(b1 + 1);
    } else {
        row.subFolder = belowRoutes.substr(b1 + 1, b2 - b1 - 1);
        const std::size_t b3 = belowRoutes.find('\\', b2 + 1);
        if (b3 == std::string::npos) {
            row.fileName = belowRoutes.substr(b2 + 1);
        } else {
            row.subFolder2 = belowRoutes.substr(b2 + 1, b3 - b2 - 1);
            row.fileName = belowRoutes.substr(b3 + 1);
        }
    }
    row.routeName = names.routeName(row.route);
    if (iequals(row.subFolder, "Scenarios") && !row.subFolder2.empty())
        row.name = names.scenarioName(row.route, row.subFolder2);
    return ContentFile::Row;
}

ContentListResult buildContentList(const fs::path& routesFolder, const fs::path& startFolder,
                                   const ContentListOptions& options, UserInterface* ui) {
    ContentListResult result;
    // The walk's own paths are cut at the routes folder: both are taken absolute.
    std::error_code ec;
    const fs::path routes = fs::absolute(routesFolder, ec);
    const fs::path start = fs::absolute(startFolder, ec);
    const std::string routesText = withBackslashes(routes.string());
    ContentNames names(routes);

    cScanPath scan;
    scan.useListSettings(options.mask, options.zeroLength);
    if (ui)
        ui->beginProgress("Looking for files in " + start.string(), 0);
    long seen = 0;
    long running = 0;
    // No file is converted here: what a conversion gives fills no column of the row.
    scan.FileMatch = [&](const std::string& path, const std::string& name) {
        const std::string full = withBackslashes(path + name);
        if (ui && ++seen % 256 == 0) {
            ui->progress(seen, "Looking at " + path);
            if (ui->cancelled())
                scan.StopScan();
        }
        std::string rest;
        if (!below(full, routesText, rest)) {
            const std::size_t at = InStr(1, full, "\\Routes\\", Match::Text);
            if (at == 0)
                return;
            rest = full.substr(at + 7);
        }
        ContentRow row;
        switch (contentRow(rest, names, row)) {
        case ContentFile::Skipped:
            return;
        case ContentFile::Invalid:
            result.messages.push_back(full + " is invalid and contains errors");
            return;
        case ContentFile::Row:
            row.index = std::to_string(++running);
            result.rows.push_back(std::move(row));
        }
    };
    scan.StartScan(start, true, false, true, false);
    result.stopped = scan.stopped();
    result.unreadable = scan.UnreadableFolders();
    for (const auto& document : names.unreadable())
        result.unreadable.push_back(document);
    result.documentsRead = names.documentsRead();
    if (ui)
        ui->endProgress();
    return result;
}

} // namespace velmora::assets
