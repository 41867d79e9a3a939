#include "velmora/core/language.h"

#include "velmora/core/errorlog.h"
#include "velmora/core/services.h"
#include "velmora/core/writelist.h"

#include <algorithm>

namespace velmora {

namespace fs = std::filesystem;

namespace {

std::optional<fs::path> findIn(const std::vector<fs::path>& folders, const std::string& name) {
    for (const auto& f : folders) {
        fs::path p = f / name;
        if (FileExists(p))
            return p;
    }
    return std::nullopt;
}

// Reads one pair; nullopt at the end of the input or on a pair numbered 0.
std::optional<std::string> readPair(WriteListReader& reader) {
    auto number = reader.next();
    if (!number)
        return std::nullopt;
    auto n = toInt32(*number);
    if (n && *n == 0)
        return std::nullopt;
    auto text = reader.next();
    if (!text)
        return std::nullopt;
    return text->text;
}

} // namespace

bool LanguageTable::loadText(std::string_view text) {
    // First pass counts, second pass reads that many: the table is sized to the pairs before
    // the terminating 0, whatever follows it.
    WriteListReader counter(text);
    std::size_t count = 0;
    while (readPair(counter))
        ++count;
    m_entries.assign(count, std::string());
    WriteListReader reader(text);
    for (std::size_t i = 0; i < count; ++i)
        m_entries[i] = *readPair(reader);
    return true;
}

bool LanguageTable::load(const std::vector<fs::path>& folders, std::string& fileName, ErrorLog* log) {
    auto file = findIn(folders, fileName);
    if (!file) {
        fileName = "Lang_English.txt";
        file = findIn(folders, fileName);
    }
    if (!file) {
        m_entries.clear();
        if (log) {
            std::string where;
            for (const auto& f : folders)
                where += (where.empty() ? "" : ", ") + f.string();
            log->log("modLanguage", "LoadLanguage", err::FileNotFound,
                     "File not found: " + fileName + " (looked in " + where + ")");
        }
        return false;
    }
    return loadText(ReadTextFile(*file));
}

std::string LanguageTable::text(int n) const {
    if (has(n))
        return m_entries[static_cast<std::size_t>(n - 1)];
    if (m_log)
        m_log->log("modLanguage", "LangText", err::SubscriptOutOfRange,
                   "Subscript out of range: language entry " + std::to_string(n) + " (the table has " +
                       std::to_string(size()) + " entries)");
    return {};
}

std::string languageNameFromFile(const std::string& fileName) {
    if (fileName.size() <= 9)
        return {};
    return fileName.substr(5, fileName.size() - 9);
}

std::vector<std::string> listLanguageFiles(const std::vector<fs::path>& folders) {
    std::vector<std::string> names;
    for (const auto& folder : folders) {
        std::error_code ec;
        for (const auto& entry : fs::directory_iterator(folder, ec)) {
            std::string name = entry.path().filename().string();
            if (entry.is_regular_file(ec) && iendsWith(name, ".txt") &&
                std::find(names.begin(), names.end(), name) == names.end())
                names.push_back(name);
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace velmora
