#include "velmora/core/routeindex.h"

#include "velmora/core/services.h"
#include "velmora/core/writelist.h"

namespace velmora {

std::string RouteIndex::nameOf(std::string_view folder) const {
    for (std::size_t i = 0; i < folders.size(); ++i)
        if (iequals(folders[i], folder))
            return names[i];
    return {};
}

RouteIndex parseRouteIndex(std::string_view text) {
    RouteIndex index;
    index.folders.reserve(1000);
    index.names.reserve(1000);
    // Line by line, so that a line with one field cannot shift the pairs that follow it.
    std::size_t pos = 0;
    while (pos < text.size()) {
        std::size_t end = text.find('\n', pos);
        if (end == std::string_view::npos)
            end = text.size();
        std::string_view line = text.substr(pos, end - pos);
        pos = end + 1;
        WriteListReader reader(line);
        auto folder = reader.next();
        if (!folder || folder->text.empty())
            continue;
        auto name = reader.next();
        index.folders.push_back(folder->text);
        index.names.push_back(name ? name->text : std::string());
    }
    index.folders.shrink_to_fit();
    index.names.shrink_to_fit();
    return index;
}

RouteIndex loadRouteIndex(const std::filesystem::path& file) {
    if (!FileExists(file))
        return {};
    return parseRouteIndex(ReadTextFile(file));
}

} // namespace velmora
