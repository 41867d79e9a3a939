#pragma once
// The language table: entries numbered by their position in Language/Lang_<name>.txt.

#include <filesystem>
#include <string>
#include <vector>

namespace velmora {

class ErrorLog;

class LanguageTable {
public:
    static constexpr int kHighestEntry = 634;

    // Loads `fileName` (no folder) from the first of `folders` that has it; when no folder
    // has it, falls back to "Lang_English.txt" and updates `fileName`. When that is missing
    // too, the open failure is logged and the table is empty.
    // Two passes: count pairs up to the end or the first pair numbered 0, then read that many.
    bool load(const std::vector<std::filesystem::path>& folders, std::string& fileName, ErrorLog* log);
    bool loadText(std::string_view text);

    // Entry n (1-based). A missing entry logs "Subscript out of range" and gives "".
    std::string text(int n) const;
    int size() const { return static_cast<int>(m_entries.size()); }
    bool has(int n) const { return n >= 1 && n <= size(); }
    void setErrorLog(ErrorLog* log) { m_log = log; }

private:
    std::vector<std::string> m_entries;
    ErrorLog* m_log = nullptr;
};

// "Lang_German.txt" -> "German" (drops the first five and the last four characters).
std::string languageNameFromFile(const std::string& fileName);
// The language files in a folder, sorted by name.
std::vector<std::string> listLanguageFiles(const std::vector<std::filesystem::path>& folders);

} // namespace velmora
