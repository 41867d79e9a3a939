#pragma once
// The route check: from a route's tiles to every blueprint it places and which of them are
// missing; then, on request, from those blueprints down to their shapes, cross sections,
// animations, scripts, textures (with the seasonal variants their codes ask for) and sounds.
// Tiles and blueprints are converted in this process on all cores; results are merged in the
// order of a one-by-one walk, so the reports are the same whatever the number of threads.

#include "velmora/routes/routes.h"

#include <functional>
#include <string>
#include <vector>

namespace velmora {
class UserInterface;
}

namespace velmora::routes {

struct MissingItem {
    std::string path;  // the blueprint that is not there
    std::string label; // "(Scenery Item)", "(Loft Item)", "(Road Item)", "(Track Item)"
    std::string tile;  // the tile file that places it
    std::string row() const { return path + "\t" + label + " on tile " + tile; }
};

struct RouteCheckOptions {
    bool deep = false; // go on to shapes, textures and sounds
    int threads = 0;   // 0: one per core
};

struct RouteCheckResult {
    std::string routeName;
    std::vector<std::string> warnings;     // template not found, provider errors in tiles
    std::vector<MissingItem> missing;       // blueprints the tiles name that do not exist
    std::vector<std::string> assetsUnique;  // every blueprint used, sorted, once each
    std::size_t tiles = 0;

    // The deep stage.
    bool deepDone = false;
    std::vector<std::string> geoFiles;        // shapes, sections, animations, scripts found
    std::vector<std::string> missingFiles;    // "<path> Called by <file>", in walk order
    std::vector<std::string> texturesUsed;
    std::vector<std::string> audioUsed;
    std::size_t blueprintsRead = 0;

    bool aborted = false;
    bool anyMissing() const { return !missing.empty() || !missingFiles.empty(); }
    // The text report of the missing items, in the route screen's words.
    std::string missingReport() const;
    std::string texturesReport() const;
};

class RouteCheck {
public:
    RouteCheck(AppContext& ctx, const RouteEntry& route, const std::vector<ScenarioEntry>& scenarios);
    RouteCheckResult run(const RouteCheckOptions& options, UserInterface* ui = nullptr);

private:
    AppContext& m_ctx;
    const RouteEntry& m_route;
    const std::vector<ScenarioEntry>& m_scenarios;
};

// The reports a check leaves under Reports: <route>_Assets.csv, _GeoShapes.csv, _Textures.csv,
// _Sounds.csv (what the route uses) and MissingAssets.csv (for the asset screen). Returns the
// files written.
std::vector<fs::path> saveRouteReports(AppContext& ctx, const RouteCheckResult& result);

} // namespace velmora::routes
