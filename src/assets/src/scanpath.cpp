#include "velmora/assets/scanpath.h"

#include "velmora/core/services.h"

#include <algorithm>
#include <deque>
#include <vector>

namespace velmora::assets {

namespace {

std::string trim(const std::string& s) {
    const auto b = s.find_first_not_of(" \t");
    if (b == std::string::npos)
        return {};
    const auto e = s.find_last_not_of(" \t");
    return s.substr(b, e - b + 1);
}

std::string upper(std::string_view s) {
    std::string out(s);
    for (char& c : out)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 32);
    return out;
}

bool lessIgnoringCase(const std::string& a, const std::string& b) {
    const std::size_t n = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < n; ++i) {
        const char x = static_cast<char>(std::tolower(static_cast<unsigned char>(a[i])));
        const char y = static_cast<char>(std::tolower(static_cast<unsigned char>(b[i])));
        if (x != y)
            return static_cast<unsigned char>(x) < static_cast<unsigned char>(y);
    }
    return a.size() < b.size();
}

// A folder's entries by name, ignoring case, each with its name (taken once, not at every
// comparison); `ec` says why a folder could not be read (whole or in part).
std::vector<std::pair<std::string, fs::directory_entry>> listFolder(const fs::path& folder, std::error_code& ec) {
    std::vector<std::pair<std::string, fs::directory_entry>> entries;
    fs::directory_iterator it(folder, ec);
    for (; !ec && it != fs::directory_iterator(); it.increment(ec))
        entries.emplace_back(it->path().filename().string(), *it);
    std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) { return lessIgnoringCase(a.first, b.first); });
    return entries;
}

std::string withSeparator(std::string path) {
    if (path.empty() || (path.back() != '/' && path.back() != '\\'))
        path += '/';
    return path;
}

} // namespace

void cScanPath::setFilter(const std::string& filter) { m_filter = trim(filter); }

std::string cScanPath::Filter() const {
    std::string f = m_filter;
    if (!f.empty() && f.back() == ';')
        f.pop_back();
    return f;
}

void cScanPath::useListSettings(const std::string& mask, bool zeroLength) {
    Archive = true;
    Compressed = true;
    Hidden = false;
    ReadOnly = false;
    System = false;
    Normal = true;
    setFilter(mask.empty() ? "*.*" : mask);
    MaximumSize = zeroLength ? 1 : 0;
}

bool cScanPath::like(std::string_view name, std::string_view pattern) {
    // Iterative wildcard match with one backtrack point: linear in practice, never recursive.
    std::size_t n = 0, p = 0, starP = std::string_view::npos, starN = 0;
    auto eq = [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
    };
    while (n < name.size()) {
        if (p < pattern.size() && (pattern[p] == '?' || eq(pattern[p], name[n]))) {
            ++n;
            ++p;
        } else if (p < pattern.size() && pattern[p] == '*') {
            starP = p++;
            starN = n;
        } else if (starP != std::string_view::npos) {
            p = starP + 1;
            n = ++starN;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}

bool cScanPath::matches(const fs::directory_entry& entry, const std::string& name, bool matchPatterns) const {
    std::error_code ec;
    const EntryKind kind = entryKind(entry);
    if (kind == EntryKind::Other)
        return false;
    const bool isDir = kind == EntryKind::Folder;
    bool ok = false;
    if (m_filter == "*.*" || isDir) {
        ok = true;
    } else if (matchPatterns) {
        std::size_t start = 0;
        while (!ok && start <= m_filter.size()) {
            const std::size_t semi = m_filter.find(';', start);
            const std::string pattern = trim(m_filter.substr(start, semi == std::string::npos ? std::string::npos : semi - start));
            if (!pattern.empty() && like(name, pattern))
                ok = true;
            if (semi == std::string::npos)
                break;
            start = semi + 1;
        }
    } else {
        const auto dot = name.rfind('.');
        const std::string ext = dot == std::string::npos ? std::string() : upper(name.substr(dot + 1));
        ok = !ext.empty() && upper(m_filter).find(ext + ";") != std::string::npos;
    }
    if (!ok)
        return false;

    // Attributes, in the walker's order.
    const bool regular = !isDir;
    if (regular)
        ok = ok && Archive;
    if (isDir)
        ok = ok && Folder;
    if (!name.empty() && name[0] == '.')
        ok = ok && Hidden;
    // The owner's write bit, not access(): an administrator may write anything, and the
    // attribute is about the file, not about who asks.
    if (regular) {
        std::error_code pe;
        const auto perms = entry.status(pe).permissions();
        if (!pe && (perms & fs::perms::owner_write) == fs::perms::none)
            ok = ok && ReadOnly;
    }
    if (!ok || isDir)
        return ok;

    if (MinimumSize || MaximumSize) {
        const auto size = entry.file_size(ec);
        if (ec)
            return false;
        if (MinimumSize && size < MinimumSize)
            return false;
        if (MaximumSize && size > MaximumSize)
            return false;
    }
    if (FromDate != Time{} || ToDate != Time{}) {
        const auto written = entry.last_write_time(ec);
        if (ec)
            return false;
        // The file clock and the system clock differ by a fixed offset; take it once.
        const auto when = std::chrono::time_point_cast<std::chrono::system_clock::duration>(
            written - fs::file_time_type::clock::now() + std::chrono::system_clock::now());
        if (FromDate != Time{} && when < FromDate)
            return false;
        if (ToDate != Time{} && when > ToDate)
            return false;
    }
    return true;
}

bool cScanPath::matchingEntries(const std::string& path, bool matchPatterns,
                                std::vector<std::pair<bool, std::string>>& found) {
    found.clear();
    int seen = 0;
    std::error_code ec;
    auto entries = listFolder(path, ec);
    if (ec)
        m_unreadable.push_back(path + ": " + ec.message());
    for (auto& [name, entry] : entries) {
        if (++seen % 10 == 0 && m_stop)
            return false;
        if (!matches(entry, name, matchPatterns))
            continue;
        found.emplace_back(entryKind(entry) == EntryKind::Folder, std::move(name));
    }
    return true;
}

void cScanPath::StartScan(const fs::path& folder, bool recurse, bool sorted, bool matchPatterns, bool) {
    m_stop = false;
    m_dirs = 0;
    m_files = 0;
    m_unreadable.clear();
    if (sorted) {
        walkSorted(withSeparator(folder.string()), recurse, matchPatterns);
        return;
    }
    std::deque<std::string> pending{withSeparator(folder.string())};
    std::vector<std::pair<bool, std::string>> found;
    while (!pending.empty() && !m_stop) {
        const std::string path = pending.front();
        pending.pop_front();
        if (!matchingEntries(path, matchPatterns, found))
            return;
        for (const auto& [isDir, name] : found) {
            if (m_stop)
                return;
            if (isDir) {
                if (!recurse || (DirFilter && !DirFilter(path, name)))
                    continue;
                pending.push_back(path + name + "/");
                ++m_dirs;
                if (DirMatch)
                    DirMatch(path, name);
            } else {
                ++m_files;
                if (FileMatch)
                    FileMatch(path, name);
            }
        }
    }
}

void cScanPath::walkSorted(const fs::path& folder, bool recurse, bool matchPatterns) {
    if (m_stop)
        return;
    const std::string path = folder.string();
    // Files first, then folders, each in name order.
    std::vector<std::pair<bool, std::string>> found;
    if (!matchingEntries(path, matchPatterns, found))
        return;
    std::stable_sort(found.begin(), found.end(), [](const auto& a, const auto& b) {
        if (a.first != b.first)
            return !a.first;
        return lessIgnoringCase(a.second, b.second);
    });
    for (const auto& [isDir, name] : found) {
        if (m_stop)
            return;
        if (isDir) {
            if (DirFilter && !DirFilter(path, name))
                continue;
            ++m_dirs;
            if (DirMatch)
                DirMatch(path, name);
            if (recurse)
                walkSorted(path + name + "/", recurse, matchPatterns);
        } else {
            ++m_files;
            if (FileMatch)
                FileMatch(path, name);
        }
    }
}

} // namespace velmora::assets
