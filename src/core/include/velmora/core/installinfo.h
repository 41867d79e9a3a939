#pragma once
// A first look at a simulator install: its products. Its routes are the route list's
// (velmora::routes::listRoutes), counted by that one rule.

#include "velmora/core/paths.h"

#include <filesystem>
#include <string>
#include <vector>

namespace velmora {

struct ProductEntry {
    std::string provider;
    std::string product;
};

struct InstallSummary {
    std::filesystem::path root;
    bool hasExecutable = false; // RailWorks.exe
    std::vector<ProductEntry> products; // sorted by provider, then product (ignoring case)
};

InstallSummary summarizeInstall(const std::filesystem::path& root, const PathResolver& resolver);

} // namespace velmora
