#pragma once
// Available Stock: the walk that lists the rolling stock of a folder below Assets for one
// category of the scenario editor (Diesel, Electric, Steam, Passenger, Freight, Tender, DMU,
// EMU), the tables the list fills, and the preview of a chosen row.
//
// Path tests come first and whole subtrees (textures, sounds, cabs) are never entered; the
// blueprints that remain are converted in this process on all cores and the rows merged in the
// walk's order, so the list is the same whatever the number of threads. Links to folders are
// not followed, FIFOs and other special files are left alone, and every blueprint or folder
// that could not be read is named in the result.

#include "velmora/scenarios/stock.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {
class AppContext;
class UserInterface;
}

namespace velmora::scenarios {

namespace fs = std::filesystem;

// The captions of the category buttons, in this order.
enum class StockCategory { Diesel, Electric, Steam, Passenger, Freight, Tender, DMU, EMU };
const std::vector<StockCategory>& allStockCategories();
const char* categoryCaption(StockCategory category);
// A caption, ignoring letter case.
std::optional<StockCategory> categoryFromCaption(std::string_view caption);
// The category as the details line shows it: "Freight Wagon", "Diesel" for DMU, "Electric" for EMU.
std::string detailsCategory(StockCategory category);

enum class StockKind { Loco, Wagon, Tender };
const char* kindName(StockKind kind); // "loco", "wagon", "tender"

struct StockItem {
    StockCategory category = StockCategory::Diesel;
    StockKind kind = StockKind::Loco; // the test that took it
    std::string provider, product;    // the two folder levels below Assets
    std::string name;                 // display name (document text, repaired)
    std::string path;                 // below Provider\Product, backslashes, ending ".xml"
    fs::path file;                    // the .bin
};

// Whether a folder's path leaves the listing in the mode for folders outside RailVehicles:
// then the engine type must fit the category, and Steam lists tenders too.
bool notRailVehicles(const std::string& folderWithBackslashes);

// The path tests of one file, before it is opened: `full` has backslashes; everything up to and
// including "steamapps\" is cut off first.
bool stockPathPasses(std::string full, StockCategory category, bool notRailVehicles);

// Whether the walk enters a subfolder (path with backslashes, ending in one).
bool stockFolderEntered(const std::string& folderWithBackslashes);

// FileMatch for a blueprint already converted: the item when it qualifies. `full` is the file's
// path with backslashes.
std::optional<StockItem> stockItemFromXml(const AppContext& ctx, const std::string& xml, const std::string& full,
                                          StockCategory category, bool notRailVehicles);
// FileMatch: one listed file, path tests and class tests. `error` gets the reason when the
// blueprint could not be read.
std::optional<StockItem> FileMatch(const AppContext& ctx, const fs::path& folder, const std::string& file,
                                   StockCategory category, bool notRailVehicles, std::string* error = nullptr);

struct StockListing {
    std::vector<StockItem> items;        // by category in the order asked, then in walk order
    std::vector<std::string> unreadable; // "<file or folder>: <reason>", in walk order
    bool notRailVehicles = false;
    std::string provider, product;       // the folder's own two levels below Assets, if it has them
    long tested = 0;                     // blueprints opened
    bool stopped = false;                // Abort: the items are then incomplete
};

// Walks `folder` for each category (one pass, each blueprint converted once). Progress and
// Abort through `ui`, which may be null. Safe to call on a worker thread: it only reads, and
// logs what it could not read once the walk is over.
StockListing listStock(AppContext& ctx, const fs::path& folder, const std::vector<StockCategory>& categories,
                       int threads = 0, UserInterface* ui = nullptr);

// The tables the screen's list is built from; they belong to whoever keeps the screen's state,
// so pinned rows outlive the screen.
struct StockTables {
    std::vector<std::string> StockPaths; // below Provider\Product, ending ".xml"
    std::vector<std::string> StockNames;
    std::vector<std::string> StockFiles; // the .bin, full path
    std::string StockCategory;           // the caption of the category chosen
    std::string StockProvider, StockProduct;
    bool pinned = false;                 // a new listing adds to the rows instead of replacing them
    bool UseIndexFile = false;

    std::size_t size() const { return StockNames.size(); }
    void clear();
    // Pin Selected: keeps only these rows (in their order) and pins them, so that the next listing
    // adds to them. False, with nothing changed, when no row is given.
    bool pin(const std::vector<std::size_t>& rows);
    void unpin() { pinned = false; }
};

// "Find Available Rolling-Stock": resets the tables unless rows are pinned, lists `folder` for
// the category and adds the rows. The listing is returned for what it could not read.
StockListing Command6_Click(AppContext& ctx, StockTables& tables, const fs::path& folder, StockCategory category,
                            int threads = 0, UserInterface* ui = nullptr);

// What a click on a row shows: the path, the picture to load and the category line.
struct StockPreview {
    enum class Source { Thumbnail, LocoInformation, NoPicture } source = Source::NoPicture;
    std::string label;    // the stock's .bin path
    fs::path picture;     // Thumbnails/<name>.jpg, else LocoInformation/image.png, else NoPicture.jpg
    std::string category; // for the details line
};
std::optional<StockPreview> stockPreview(const AppContext& ctx, const StockTables& tables, std::size_t row);

} // namespace velmora::scenarios
