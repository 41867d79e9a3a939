#pragma once
// A new route's beginnings: the route template (skies, weather, terrain and the browse filter of
// the simulator's route list), a route's details and its latitude and longitude, the description
// page, the loading picture with its metadata, the repair of an older template without browse
// filtering, the gathering of a checked route's assets into one folder, and a developer's folder
// trees. Every file goes through the write service inside one journal entry per command.

#include "velmora/routes/routes.h"
#include "velmora/textures/texture.h"

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace velmora {
class AppContext;
class UserInterface;
struct WriteResult;
} // namespace velmora

namespace velmora::routes {

// An asset the template names: provider, product and the path below the product (ending .xml).
struct TemplateItem {
    std::string provider, product, path;
    bool empty() const { return provider.empty() || product.empty() || path.empty(); }
};

// The six items of a template, in the order of the picker buttons.
enum TemplateSlot { SpringSky, SummerSky, AutumnSky, WinterSky, Weather, Terrain };
inline constexpr int kTemplateSlots = 6;
const char* slotName(int slot); // "Spring Sky" .. "Terrain"

// The simulator's own skies, weather and terrain the pickers start with.
std::array<TemplateItem, kTemplateSlots> defaultTemplateItems();
// The folder a picker's file dialog starts in.
fs::path pickerFolder(AppContext& ctx, int slot);
// A chosen blueprint file as an item: the path cut behind its last "\Assets" (or "/Assets") into
// provider, product and the rest, with "xml" for the last three characters. Nothing when the
// file does not lie two folders below an Assets folder.
std::optional<TemplateItem> itemFromPath(const std::string& chosen);

inline const std::array<const char*, 6> kLocations{"Africa", "Asia", "Australia", "Europe", "North America",
                                                   "South America"};
inline const std::array<const char*, 3> kEras{"Heritage", "Historic", "Modern"};
inline const std::array<const char*, 4> kTerrains{"Countryside", "Mountains", "Plains", "Urban"};

// Where a route sits in the simulator's route list: one location, one era, any terrains.
struct BrowseFlags {
    int location = 3; // index into kLocations
    int era = 2;      // index into kEras
    std::array<bool, 4> terrain{true, false, false, false};
};
// A location, era or terrain by its caption, without regard to case or blanks; -1 when unknown.
int locationIndex(const std::string& name);
int eraIndex(const std::string& name);
int terrainIndex(const std::string& name);
// The tokens of the flags as the templates hold them (aaabbb .. cccggg), "eTrue" or "eFalse".
std::vector<std::pair<std::string, std::string>> browseTokens(const BrowseFlags& flags);

struct TemplateRequest {
    std::string name, provider, product; // as typed (UTF-8)
    std::array<TemplateItem, kTemplateSlots> items;
    BrowseFlags flags;
};

// What a command did: its message (the words the screen shows) or the failure, naming the file.
struct RouteJob {
    bool ok = false;
    std::string message;
    std::vector<fs::path> written;
    std::vector<std::string> notes; // what was passed over, one line each

    // The job after its one write: the write's message when it failed, else ok with `done`.
    RouteJob& after(const WriteResult& write, std::string done);
};

// Build Template: Templates\AdvRoute15.txt filled, encoded and written as
// Assets\<Provider>\<Product>\TemplateRoutes\<name>.bin, with the TemplateRoutes and RouteMarkers
// folders made. An old template of that name is kept as its numbered backup.
RouteJob buildRouteTemplate(AppContext& ctx, const TemplateRequest& request);

// The details of a route as RouteProperties.xml holds them (document text, not yet repaired).
struct RouteDetails {
    fs::path file;
    std::array<std::string, 5> names; // English, French, Italian, German, Spanish
    TemplateItem routeTemplate;
    std::array<TemplateItem, kTemplateSlots> items; // four skies, weather, terrain
    std::string latitude, longitude;
};
// False with `error` naming the file when it is missing or cannot be read.
bool readRouteDetails(AppContext& ctx, const RouteEntry& route, RouteDetails& out, std::string& error);
// Update Lat/Long: both values must be numbers in range. The old file is kept as
// RouteProperties.xmlbak, or the next free numbered backup when that name is taken.
RouteJob updateLatLong(AppContext& ctx, const RouteEntry& route, const std::string& latitude,
                       const std::string& longitude);

// The description page from Templates\Description.txt: title, sub-title and three paragraphs.
// The text is shown as typed: <, > and & are escaped for the page.
RouteJob writeDescription(AppContext& ctx, const RouteEntry& route, const std::array<std::string, 5>& texts);

struct ThumbnailRequest {
    fs::path dds;          // 256 x 128, DXT1, six mip levels
    // A picture of any size instead of the .dds: scaled to 256 x 128 and made into the six DXT1
    // levels here; `dds` then only gives the name (a photo's "Borders.png" makes "Borders").
    const textures::Image* picture = nullptr;
    fs::path preload;      // a PreLoad folder below Assets\<Provider>\<Product>
    std::string metadata;  // the metadata's file name: no blanks, no suffix
    BrowseFlags flags;     // location and era
};
// The picture as <PreLoad>\<dds name>.TgPcDx and the metadata from Templates\MetaData.txt as
// <PreLoad>\<metadata>.bin. Both are made before either is written; when the second write fails
// the first is put back.
RouteJob makeThumbnail(AppContext& ctx, const ThumbnailRequest& request);

// The state of a route's template as Check Route Template finds it.
enum class TemplateState { NoProperties, NotFound, Unreadable, NoFiltering, NoFlags, Filtered };
struct TemplateCheck {
    TemplateState state = TemplateState::NoProperties;
    fs::path templateFile;
    std::string xml;     // the template's XML when it could be read
    std::string message; // the words for the state
};
TemplateCheck inspectRouteTemplate(AppContext& ctx, const RouteEntry& route);
// Adds the browse filtering (NoFiltering) or replaces it (NoFlags, Filtered), keeping the old
// .bin as its numbered backup.
RouteJob applyBrowseFilter(AppContext& ctx, const TemplateCheck& check, const BrowseFlags& flags);
// Check Route Template as the route screen runs it: the state's message or question, then the
// change when the answer is yes. `flags` gives the filter choice (null: not asked, nothing done).
RouteJob checkRouteTemplate(AppContext& ctx, const RouteEntry& route, const BrowseFlags* flags);

// Make Asset Folder: every file the route check's four reports name copied into
// <RailWorks>\Assets_<route name>, each below its path from "Assets" on. Files that are gone are
// noted and passed over; Abort stops between files.
RouteJob gatherRouteAssets(AppContext& ctx, const std::string& routeName, UserInterface* progress = nullptr);

// The folders of a developer's new work below one product folder: top level, Scenery, RailVehicles.
std::vector<std::string> developerFolders();
// Source\<Provider>\<Product> and Assets\<Provider>\<Product> with the developer folders, each
// tree after a question when it exists already.
RouteJob setUpDeveloperFolders(AppContext& ctx, const std::string& provider, const std::string& product);
// The developer folders inside a chosen folder, after a question when some exist.
RouteJob setUpSubFolders(AppContext& ctx, const fs::path& folder);

} // namespace velmora::routes
