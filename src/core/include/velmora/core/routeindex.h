#pragma once
// Reports/RouteIndex.csv: route folder and display name, one route a line.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

struct RouteIndex {
    std::vector<std::string> folders; // parallel tables, same length
    std::vector<std::string> names;

    std::size_t size() const { return folders.size(); }
    // The display name of a route folder, or "" when it is not in the index.
    std::string nameOf(std::string_view folder) const;
};

// Plain comma-separated input of two fields a line; blank lines are skipped.
RouteIndex parseRouteIndex(std::string_view text);
RouteIndex loadRouteIndex(const std::filesystem::path& file);

} // namespace velmora
