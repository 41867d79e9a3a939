#include "velmora/archives/aptable.h"

#include "velmora/assets/scanpath.h"
#include "velmora/core/parallel.h"
#include "velmora/core/paths.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <map>

namespace velmora::archives {

const char* apStateText(ApState state) { return state == ApState::Unpacked ? "Unpacked" : "Not unpacked"; }

namespace {

bool hasComponent(const fs::path& path, std::string_view folded) {
    for (const auto& part : path.parent_path())
        if (foldName(part.string()) == folded)
            return true;
    return false;
}

bool holdsFolder(const fs::path& folder, std::initializer_list<std::string_view> names) {
    std::error_code ec;
    for (fs::directory_iterator it(folder, ec); !ec && it != fs::directory_iterator(); it.increment(ec)) {
        if (!it->is_directory(ec) || it->is_symlink(ec))
            continue;
        const std::string name = foldName(it->path().filename().string());
        for (auto n : names)
            if (name == n)
                return true;
    }
    return false;
}

// Everything below a folder, links not followed and only plain files counted.
std::uint64_t folderSize(const fs::path& folder) {
    std::uint64_t total = 0;
    std::error_code ec;
    fs::recursive_directory_iterator it(folder, fs::directory_options::skip_permission_denied, ec), end;
    for (; !ec && it != end; it.increment(ec)) {
        const fs::file_status s = it->symlink_status(ec);
        if (fs::is_regular_file(s))
            total += it->file_size(ec);
        ec.clear();
    }
    return total;
}

std::string dateText(const fs::path& file) {
    std::error_code ec;
    const auto written = fs::last_write_time(file, ec);
    if (ec)
        return {};
    const auto system = std::chrono::file_clock::to_sys(written);
    return localTimeText("%Y%m%d", std::chrono::system_clock::to_time_t(
                                       std::chrono::time_point_cast<std::chrono::system_clock::duration>(system)));
}

} // namespace

ApState apState(const fs::path& apFile) {
    const fs::path folder = apFile.parent_path();
    if (hasComponent(apFile, "assets"))
        return holdsFolder(folder, {"audio", "railvehicles", "scenery", "elloks"}) ? ApState::Unpacked
                                                                                   : ApState::NotUnpacked;
    return holdsFolder(folder, {"mixmap"}) ? ApState::Unpacked : ApState::NotUnpacked;
}

ApTable findApFiles(const fs::path& railworks, const ApFindOptions& options, UserInterface* ui) {
    ApTable table;
    fs::path start = railworks;
    PathResolver resolver;
    if (options.search == ApSearch::Assets)
        start = resolver.resolveForWrite(railworks, "Assets");
    else if (options.search == ApSearch::Scenarios)
        start = resolver.resolveForWrite(railworks, "Content\\Routes");
    assets::cScanPath scan;
    scan.setFilter(options.search == ApSearch::MainContent ? "MainContent.ap" : "*.ap");
    scan.Hidden = true;
    std::vector<fs::path> found;
    scan.FileMatch = [&](const std::string& path, const std::string& name) {
        if (!iendsWith(name, ".ap"))
            return;
        const fs::path file = fs::path(path) / name;
        const bool inAssets = hasComponent(file, "assets");
        if (!inAssets && !hasComponent(file, "content"))
            return;
        if (options.dropMainContent && iequals(name, "MainContent.ap"))
            return;
        found.push_back(file);
        if (ui && found.size() % 100 == 0) {
            ui->progress(static_cast<std::int64_t>(found.size()), name);
            if (ui->cancelled())
                scan.StopScan();
        }
    };
    if (ui)
        ui->beginProgress("Finding .ap files", 0);
    std::error_code ec;
    if (fs::is_directory(start, ec))
        scan.StartScan(start, true, true, true);
    table.unreadable = scan.UnreadableFolders();
    table.stopped = scan.stopped();
    if (ui)
        ui->endProgress();

    // The states, and with details each folder's size, one folder on each core at a time.
    std::map<fs::path, std::size_t> folders;
    for (const auto& f : found)
        folders.emplace(f.parent_path(), 0);
    std::vector<fs::path> folderList;
    for (auto& [folder, index] : folders) {
        index = folderList.size();
        folderList.push_back(folder);
    }
    bool stopped = false;
    const std::vector<std::uint64_t> sizes =
        options.details ? parallelMap<std::uint64_t>(folderList.size(), 0, ui, "Measuring the folders of the .ap files",
                                                     stopped, [&](std::size_t i) { return folderSize(folderList[i]); })
                        : std::vector<std::uint64_t>(folderList.size(), 0);
    table.stopped = table.stopped || stopped;
    for (const auto& f : found) {
        ApFile a;
        a.path = f;
        a.state = apState(f);
        if (options.details) {
            a.date = dateText(f);
            a.size = fs::file_size(f, ec);
            if (ec)
                a.size = 0;
            a.folderSize = sizes[folders.at(f.parent_path())];
            if (a.state == ApState::NotUnpacked)
                a.red = hasComponent(f, "assets") ? 2 * a.size > a.folderSize : a.size + 100000 > a.folderSize;
        }
        table.files.push_back(std::move(a));
    }
    return table;
}

std::vector<std::string> apGridRows(const ApTable& table, bool details) {
    std::vector<std::string> rows;
    rows.reserve(table.files.size());
    for (const auto& f : table.files)
        rows.push_back(details ? f.path.string() + "\t" + f.date + "\t" + std::to_string(f.size) + "\t" +
                                     std::to_string(f.folderSize)
                               : f.path.string());
    return rows;
}

void sortApTable(ApTable& table, ApSort by) {
    std::stable_sort(table.files.begin(), table.files.end(), [by](const ApFile& a, const ApFile& b) {
        if (by == ApSort::Date && a.date != b.date)
            return a.date < b.date;
        return foldName(a.path.string()) < foldName(b.path.string());
    });
}

std::string apTableJson(const ApTable& table) {
    std::string out = "[";
    for (std::size_t i = 0; i < table.files.size(); ++i) {
        const ApFile& f = table.files[i];
        out += std::string(i ? ",\n " : "\n ") + "{\"path\": " + jsonQuoted(f.path.string()) +
               ", \"state\": " + jsonQuoted(apStateText(f.state)) + ", \"date\": " + jsonQuoted(f.date) +
               ", \"size\": " + std::to_string(f.size) + ", \"folderSize\": " + std::to_string(f.folderSize) +
               ", \"red\": " + (f.red ? "true" : "false") + "}";
    }
    return out + (table.files.empty() ? "]\n" : "\n]\n");
}

} // namespace velmora::archives
