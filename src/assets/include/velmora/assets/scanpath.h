#pragma once
// cScanPath: the folder walker under every asset list. It reports matching folders and files
// through callbacks, breadth first (a folder's own entries before those of its subfolders) or
// sorted and depth first, and narrows the matches by name, attributes, size and date.
//
// Entries of one folder come in name order, ignoring case, whatever order the file system
// lists them in, so that a walk gives the same rows on every machine. Links to folders are not
// followed, and only folders and regular files are reported; folders that cannot be read are
// kept in UnreadableFolders() so that a shorter list never passes for a complete one.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace velmora::assets {

namespace fs = std::filesystem;

class cScanPath {
public:
    using Time = std::chrono::system_clock::time_point;
    // Path always ends in a separator; Name is the entry's own name.
    using Match = std::function<void(const std::string& path, const std::string& name)>;

    // Attribute properties: an entry that has an attribute matches only when the property is
    // true. On this platform a file whose owner may not write it is read-only and a name
    // starting with "." is hidden; every regular file carries the archive attribute.
    bool Archive = true;
    bool Compressed = true;
    bool Folder = true;
    bool Normal = true;
    bool ReadOnly = true;
    bool Hidden = false;
    bool System = false;
    std::uint32_t MinimumSize = 0; // bytes, inclusive; 0 for no limit
    std::uint32_t MaximumSize = 0;
    Time FromDate{}; // the epoch for no limit
    Time ToDate{};
    int DateType = 0; // 0 last write; creation and last access are taken as last write here

    // Semicolon-separated patterns ("*.cost*;*.tgt") or extensions ("BIN;XML;"). Stored
    // trimmed; read back without a trailing ";".
    void setFilter(const std::string& filter);
    std::string Filter() const;
    // The settings of the file lists' Add to List: archive, compressed and normal files, but no
    // hidden, read-only or system ones (so a read-only file is never listed); the mask, empty
    // meaning "*.*"; with `zeroLength` only files of at most one byte.
    void useListSettings(const std::string& mask, bool zeroLength);

    Match DirMatch;
    Match FileMatch;
    // When set, a folder for which it answers false is neither reported nor entered: a walk
    // that knows a whole subtree holds nothing for it (textures, sounds) need not list it.
    std::function<bool(const std::string& path, const std::string& name)> DirFilter;

    // Walks `folder`. With `matchPatterns` the filter holds wildcards, else extensions.
    void StartScan(const fs::path& folder, bool recurse, bool sorted, bool matchPatterns, bool extended = false);
    // Stops a running walk at its next check (every tenth entry and between folders); safe
    // from another thread.
    void StopScan() { m_stop = true; }
    bool stopped() const { return m_stop; }

    long DirCount() const { return m_dirs; }
    long FileCount() const { return m_files; }
    // "<folder>: <reason>" for each folder of the last walk that could not be read.
    const std::vector<std::string>& UnreadableFolders() const { return m_unreadable; }

    // Wildcard match of a name against one pattern, ignoring case ("*" and "?").
    static bool like(std::string_view name, std::string_view pattern);

private:
    bool matches(const fs::directory_entry& entry, const std::string& name, bool matchPatterns) const;
    void walkSorted(const fs::path& folder, bool recurse, bool matchPatterns);
    // The entries of a folder that pass the filters: (is a folder, name) in listing order;
    // false when the scan was stopped meanwhile.
    bool matchingEntries(const std::string& path, bool matchPatterns,
                         std::vector<std::pair<bool, std::string>>& found);

    std::string m_filter;
    std::atomic<bool> m_stop{false};
    long m_dirs = 0;
    long m_files = 0;
    std::vector<std::string> m_unreadable;
};

} // namespace velmora::assets
