#pragma once
// Changing what a route's tiles place: a missing blueprint replaced by an existing one in every
// tile of its kind, placed items removed, and the route's list of Provider/Product pairs built
// again from what its tiles use. These are the only commands that rewrite tiles, so every one of
// them reads every tile first, stops before writing anything when one does not decode, and then
// puts all the changed tiles in place as one journal entry, each old tile kept as its backup.

#include "velmora/routes/routes.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {
class UserInterface;
}

namespace velmora::routes {

// What a reference places; it picks the tile folder the reference is looked for in.
enum class ItemKind { Scenery = 1, Loft = 2, Road = 3, Track = 4 };

// "(Scenery Item)", "(Loft Item)", "(Road Item)", "(Track Item)".
const char* kindLabel(ItemKind kind);
// "scenery", "loft", "road", "track".
const char* kindWord(ItemKind kind);
// The kind a missing-item row's label names (the label may go on, "(Loft Item) on tile ...").
std::optional<ItemKind> kindFromLabel(std::string_view label);
// The kind from its word, any letter case.
std::optional<ItemKind> kindFromWord(std::string_view word);
// The route's tile folders of a kind, below the route: Scenery; Networks\Loft Tiles;
// Networks\Road Tiles; Networks\Track Tiles and the networks themselves (Tracks.bin).
std::vector<std::string> tileFoldersOf(ItemKind kind);

// A blueprint as the tiles name it: Provider, Product and the path below the product with its
// .xml ending (Scenery\Trees\Oak.xml).
struct AssetName {
    std::string provider, product, path;
    bool empty() const { return provider.empty() && product.empty() && path.empty(); }
    bool complete() const { return !provider.empty() && !product.empty() && !path.empty(); }
    // Provider\Product\path with the .bin ending: the file below Assets.
    std::string binPath() const;
    // Provider/Product/path, as the command line takes it.
    std::string text() const;
};

// PROVIDER/PRODUCT/PATH as typed: '/' stands for '\', a .bin ending for .xml. Empty with
// `error` set when the text has fewer than three parts or an empty one.
std::optional<AssetName> parseAssetName(std::string_view text, std::string* error = nullptr);
// The triple of a missing-item path as the route check shows it, ending in
// Assets/<Provider>/<Product>/<path>.bin: the text behind "Assets" cut at the next two
// separators, .bin made .xml.
std::optional<AssetName> assetNameFromMissing(std::string_view shownPath);

// One change asked for. An empty replacement removes: a scenery item's whole cDynamicEntity
// block is cut out of its tile, a loft, road or track reference is blanked (the ribbon stays).
struct Substitution {
    AssetName missing;
    AssetName replacement;
    bool removes() const { return replacement.empty(); }
};

struct TileEditOptions {
    ItemKind kind = ItemKind::Scenery;
    // Scenery items are also replaced in the Scenery folders of these scenarios.
    std::vector<ScenarioEntry> scenarios;
    bool dryRun = false; // read and count, write nothing
    int threads = 0;     // 0: one per core
    std::string command; // the journal entry's name
};

// One element of a tile that changes.
struct ElementChange {
    std::string before; // Provider/Product/path
    std::string after;  // the replacement, or "(removed)" / "(blanked)"
};

struct TileChange {
    fs::path tile;
    std::vector<ElementChange> elements;
    fs::path backup; // the old tile's backup, once written
};

struct TileEditResult {
    std::size_t tilesRead = 0;
    std::vector<TileChange> changed; // in the order of the tile folders and names
    // The whole command stopped before writing (a tile that does not decode, a replacement that
    // does not exist) or while putting tiles in place (what was written is then put back).
    std::string error;
    std::vector<std::string> unreadable; // folders that could not be listed, "<folder>: <reason>"
    bool stopped = false;                // Abort: nothing was written
    bool written = false;                // the changed tiles are in place
    std::size_t elements() const;
    bool ok() const { return error.empty() && !stopped; }
};

// Replaces (or removes) every reference each substitution names, in every tile of the kind, in
// one pass over the tiles. Provider, Product and path are compared without regard to letter
// case, and a path's .xml or .bin ending counts the same. A replacement that does not exist
// below Assets (or in its product's .ap) is refused before any tile is read.
TileEditResult substituteInTiles(AppContext& ctx, const RouteEntry& route, const std::vector<Substitution>& changes,
                                 const TileEditOptions& options, UserInterface* ui = nullptr);

// The edit of one tile's text, for the tests and the benchmark: the references changed, in
// document order; `xml` is changed in place.
std::vector<ElementChange> substituteInText(std::string& xml, const std::vector<Substitution>& changes, ItemKind kind);

// A rules file: one "missing,replacement" pair a line, each as PROVIDER/PRODUCT/PATH; an empty
// replacement removes. Blank lines and lines starting with '#' are passed over. Fields may be
// in double quotes (a comma in a name). Bad lines are named with their number in `errors`.
std::vector<Substitution> parseRules(const std::string& text, std::vector<std::string>& errors);

// The Provider\Product pairs a list of blueprint paths (shown as the check shows them, below
// Assets) names, sorted, each once.
std::vector<std::string> providerPairs(const std::vector<std::string>& paths);

struct ProvidersResult {
    std::vector<std::string> pairs; // Provider\Product, as written into the list
    fs::path file;                  // RouteProperties.xml
    std::string error;
    bool written = false;
};

// Builds the route's RBlueprintSetPreLoad list again from `pairs` (Provider\Product), adding the
// weather's and the template's pairs when they are not among them, from Templates\ProvHeader.txt;
// the old file is kept as its backup. With `dryRun` the list is made and nothing written.
ProvidersResult fixProviders(AppContext& ctx, const RouteEntry& route, const std::vector<std::string>& pairs,
                             bool dryRun = false);

// The Provider\Product pairs a route's tiles (and its scenarios' scenery) use, each once,
// sorted: what the list should hold. Tiles that do not decode are named in `unreadable`.
std::vector<std::string> pairsUsedByRoute(AppContext& ctx, const RouteEntry& route,
                                          const std::vector<ScenarioEntry>& scenarios, std::vector<std::string>& unreadable,
                                          int threads = 0, UserInterface* ui = nullptr, bool* stopped = nullptr);

} // namespace velmora::routes
