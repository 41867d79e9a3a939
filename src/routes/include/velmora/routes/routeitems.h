#pragma once
// The route's placed items with their locations, and the items of one provider and product:
// which a route uses, and which of that product's blueprints it leaves unused.

#include "velmora/routes/routecheck.h"

#include <string>
#include <vector>

namespace velmora {
class UserInterface;
}

namespace velmora::routes {

// One reference of a tile with where it stands.
struct PlacedItem {
    std::string path;  // the blueprint, full path as the tile names it
    std::string label; // "(Scenery Item)", "(Loft Item)", "(Road Item)", "(Track Item)"
    std::string tile;  // "+000000-000001"
    std::string x, z;  // the offsets within the tile, as the document writes them
    bool found = false;
    // The grid's row: path, label, tile, x, z.
    std::string row() const { return path + "\t" + label + "\t" + tile + "\t" + x + "\t" + z; }
};

struct PlacedItemsResult {
    std::vector<PlacedItem> items;   // tile by tile, in document order
    std::vector<MissingItem> missing; // the items that are not there
    std::vector<std::string> warnings;
    std::vector<std::string> unreadable; // tiles and folders that could not be read
    std::size_t tiles = 0;
    bool aborted = false;
};

// Scenery, loft and road items of the tiles, and the track ribbons of Tracks.bin, each with its
// tile and offset.
PlacedItemsResult listPlacedItems(AppContext& ctx, const RouteEntry& route, int threads = 0,
                                  UserInterface* ui = nullptr);

struct ProductItemsResult {
    std::string provider, product;
    std::vector<std::string> used;    // full paths, sorted, once each
    std::vector<MissingItem> missing; // those that are not there, in tile order
    // Tiles and folders that could not be read: `used` may then lack what they place, and
    // nothing may be called unused.
    std::vector<std::string> unreadable;
    std::size_t tiles = 0;
    bool aborted = false;
};

// The blueprints of one provider and product (compared without regard to case) that the route's
// tiles and its scenarios' scenery place.
ProductItemsResult productItemsUsed(AppContext& ctx, const RouteEntry& route, const std::vector<ScenarioEntry>& scenarios,
                                    const std::string& provider, const std::string& product, int threads = 0,
                                    UserInterface* ui = nullptr);

// The product's blueprints (.bin below Assets\<provider>\<product>) that `used` does not name,
// compared in upper case, as full paths in walk order. With `del` each row is "DEL <path>", the
// form a batch file takes. Folders of the product that cannot be read go to `unreadable`.
std::vector<std::string> productItemsNotUsed(AppContext& ctx, const ProductItemsResult& used, bool del = false,
                                             std::vector<std::string>* unreadable = nullptr);

struct ScenarioSceneryResult {
    bool hasScenery = false;           // the scenario has its own Scenery folder
    std::vector<std::string> items;    // every blueprint its tiles place, full paths, in tile order
    std::vector<MissingItem> missing;  // those that are not there
    std::vector<std::string> warnings; // broken Provider or Product lines
    std::vector<std::string> unreadable; // tiles and folders that could not be read
};

// The scenery a scenario places itself (<scenario>\Scenery), read as the route check reads tiles.
// Tiles the codec refuses go to the error log.
ScenarioSceneryResult scenarioScenery(AppContext& ctx, const RouteEntry& route, const ScenarioEntry& scenario);

// A tile number as the simulator names tiles: a sign ("+" unless the value begins with "-")
// and six digits.
std::string tileNumber(const std::string& value);

} // namespace velmora::routes
