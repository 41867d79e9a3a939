#pragma once
// A small but realistic simulator install for the demo run, the tests and the benchmarks.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace velmora {
class UserInterface;
}

namespace velmora::demo {

struct DemoOptions {
    int scale = 1;
    std::uint64_t seed = 1;
};

struct DemoProduct {
    std::string provider;
    std::string product;
};

struct DemoRoute {
    std::string folder; // the GUID folder under Content/Routes
    std::string displayName;
};

struct DemoResult {
    bool ok = false;
    std::string error; // names the file that could not be written
    std::vector<DemoProduct> products;
    std::vector<DemoRoute> routes;
    std::size_t files = 0;
};

// Writes the install into `root` (created when missing). Existing files are replaced;
// nothing outside `root` is touched. Progress and Abort through `ui` when given.
DemoResult generateDemoInstall(const std::filesystem::path& root, const DemoOptions& options,
                               UserInterface* ui = nullptr);

} // namespace velmora::demo
