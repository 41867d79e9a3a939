#pragma once
// A first look at a simulator install: its products and its routes.

#include "velmora/core/paths.h"

#include <filesystem>
#include <string>
#include <vector>

namespace velmora {

struct ProductEntry {
    std::string provider;
    std::string product;
};

struct RouteEntry {
    std::string folder;
    std::string displayName; // English name from RouteProperties.xml, else ""
};

struct InstallSummary {
    std::filesystem::path root;
    bool hasExecutable = false; // RailWorks.exe
    std::vector<ProductEntry> products; // sorted by provider, then product (ignoring case)
    std::vector<RouteEntry> routes;     // sorted by folder
};

InstallSummary summarizeInstall(const std::filesystem::path& root, const PathResolver& resolver);

// The English display name in a RouteProperties.xml or ScenarioProperties.xml text.
std::string englishDisplayName(std::string_view xml);

} // namespace velmora
