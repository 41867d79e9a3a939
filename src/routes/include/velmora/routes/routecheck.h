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
    // Extra notes that never change the check's own reports:
    bool markArchives = false; // which missing items stand inside an .ap of their product
    bool markCase = false;     // which items were found only under other letter case
};

// A note on one item: the path as the check names it, and where it really is.
struct ItemMark {
    std::string path;
    std::string where;
};

struct RouteCheckResult {
    std::string routeName;
    std::vector<std::string> warnings;     // template not found, provider errors in tiles
    // Tiles, folders and blueprints that could not be read, "<path>: <reason>". The reports
    // then do not cover the whole route, which a caller must say.
    std::vector<std::string> unreadable;
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

    // The notes the options ask for, in the order the items were met.
    std::vector<ItemMark> inArchive; // missing item, the .ap that holds it
    std::vector<ItemMark> otherCase; // name as written, the file that answered to it
    // Notes of the deep stage, which its own lists leave out: shapes and sections the
    // blueprints name that do not exist (the shape, the blueprint), and textures missing as
    // the check reads them that exist relative to the shape's folder (as written, the file).
    std::vector<ItemMark> missingShapes;
    std::vector<ItemMark> otherReading;

    bool aborted = false;
    bool anyMissing() const { return !missing.empty() || !missingFiles.empty() || !missingShapes.empty(); }
    // The text report of the missing items, in the route screen's words.
    std::string missingReport() const;
    std::string texturesReport() const;
    // The notes, or empty when none were asked for or found.
    std::string marksReport() const;
};

class RouteCheck {
public:
    RouteCheck(AppContext& ctx, const RouteEntry& route, const std::vector<ScenarioEntry>& scenarios);
    // The template and the tiles; with `options.deep` the deep stage too.
    RouteCheckResult run(const RouteCheckOptions& options, UserInterface* ui = nullptr);
    // The deep stage on the result of a run without it: the tiles are not read again. False when
    // stopped by Abort (the result then says `aborted`).
    bool deepen(RouteCheckResult& result, const RouteCheckOptions& options, UserInterface* ui = nullptr);

private:
    AppContext& m_ctx;
    const RouteEntry& m_route;
    const std::vector<ScenarioEntry>& m_scenarios;
};

struct ReportFiles {
    std::vector<fs::path> written;
    std::vector<std::string> errors; // one a report that could not be written, naming it
    bool ok() const { return errors.empty(); }
};

// The reports a check leaves under Reports: <route>_Assets.csv, _GeoShapes.csv, _Textures.csv,
// _Sounds.csv (what the route uses) and MissingAssets.csv (for the asset screen). All are made
// before any is written; each old one is kept as its numbered backup when its new one is in place.
ReportFiles saveRouteReports(AppContext& ctx, const RouteCheckResult& result);

} // namespace velmora::routes
