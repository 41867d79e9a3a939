// A row of the rolling-stock index read as the stock it names.

#include "velmora/assets/indexrow.h"

#include "velmora/core/paths.h"

namespace velmora::assets {

namespace {

std::string trimmed(const std::string& s) {
    const std::size_t from = s.find_first_not_of(" \t\r\n");
    if (from == std::string::npos)
        return {};
    return s.substr(from, s.find_last_not_of(" \t\r\n") + 1 - from);
}

// A name that stays below the folder it is joined to: no drive, no root, no "." or "..".
bool staysBelow(const std::string& path, bool oneLevel) {
    if (path.empty() || path.find(':') != std::string::npos || path.front() == '\\' || path.front() == '/')
        return false;
    const auto parts = splitDocumentPath(path);
    if (parts.empty() || (oneLevel && parts.size() != 1))
        return false;
    for (const auto& p : parts)
        if (p == "." || p == "..")
            return false;
    return true;
}

} // namespace

std::optional<IndexStock> readIndexRow(const std::vector<std::string>& cells, std::string& error) {
    if (cells.size() < 6) {
        error = "The index row has " + std::to_string(cells.size()) +
                " cells; a row of Index.csv has Provider, Product, Path, Name, In Scene and Category.";
        return std::nullopt;
    }
    IndexStock s{trimmed(cells[0]), trimmed(cells[1]), trimmed(cells[3]), trimmed(cells[5]), trimmed(cells[2])};
    const std::string shown = s.provider + "\\" + s.product + "\\" + s.path;
    if (s.provider.empty() || s.product.empty() || s.path.empty()) {
        error = "The index row '" + shown + "' lacks its provider, product or path.";
        return std::nullopt;
    }
    if (!staysBelow(s.provider, true) || !staysBelow(s.product, true) || !staysBelow(s.path, false)) {
        error = "The index row '" + shown + "' does not name a file below Assets.";
        return std::nullopt;
    }
    return s;
}

} // namespace velmora::assets
