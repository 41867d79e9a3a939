#pragma once
// A small but realistic simulator install for the demo run, the tests and the benchmarks:
// providers and products with rolling stock, scenery, geometry, textures and audio, routes with
// tiles and scenarios, .ap archives, and deliberate faults that DIR/manifest.json lists.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {
class UserInterface;
}

namespace velmora::demo {

// Turns a document's XML into the simulator's binary form; false with `error` set on failure.
using Encoder = std::function<bool(std::string_view xml, std::string& binary, std::string& error)>;

struct DemoOptions {
    int scale = 1;          // multiplies tiles, scenery entities, scenarios and assets
    std::uint64_t seed = 1; // the same seed gives the same install, byte for byte
    Encoder encoder;        // empty: the codec (serz::encode)
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
    std::vector<DemoRoute> routes;       // loose routes, with RouteProperties.xml on disk
    std::vector<DemoRoute> packedRoutes; // routes that live only in their MainContent.ap
    std::size_t files = 0;               // files on disk (an archive counts once)
    std::size_t archives = 0;            // .ap files, the damaged one too
    std::size_t archiveEntries = 0;
    std::size_t documents = 0;           // documents encoded through the codec
    std::size_t blueprints = 0;
    std::size_t tiles = 0;               // scenery, track, road and loft tiles of all routes
    std::size_t scenarios = 0;
    std::size_t faults = 0;              // entries of manifest.json's "faults"
};

// Writes the install into `root` (created when missing). Existing files are replaced;
// nothing outside `root` is touched. Progress and Abort through `ui` when given.
DemoResult generateDemoInstall(const std::filesystem::path& root, const DemoOptions& options,
                               UserInterface* ui = nullptr);

} // namespace velmora::demo
