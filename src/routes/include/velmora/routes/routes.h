#pragma once
// The routes installed under the simulator's root and the scenarios of each, as the route
// screen lists them: folders of exactly 36 characters that hold a RouteProperties.xml with a
// name in one of the six languages.

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {
class AppContext;
}

namespace velmora::routes {

namespace fs = std::filesystem;

struct RouteEntry {
    std::string folder; // the GUID folder below Content/Routes
    std::string name;   // the display name, repaired
    fs::path path;
    bool formatError = false; // RouteProperties.xml did not convert to a document
};

struct ScenarioEntry {
    std::string folder;
    std::string name;
    std::string scenarioClass; // eStandardScenarioClass, ...
    bool workshop = false;     // a standard scenario with a WorkshopID
    std::string reportWord() const; // "Standard", "Free Roam", "Career", "Quick Drive", "Timetabled"
    std::string legend() const;     // "Standard Scenario", "Workshop Scenario", ...
    unsigned colour() const;        // 0xRRGGBB of the row
};

// The routes in listing (name) order. `warnings` gets the format messages.
std::vector<RouteEntry> listRoutes(AppContext& ctx, std::vector<std::string>* warnings = nullptr);
// A route by its folder or by its display name (the first of that name), or nothing.
const RouteEntry* findRoute(const std::vector<RouteEntry>& routes, const std::string& folderOrName);
// What to say when findRoute finds nothing: the same words for every command, and for a route
// folder that holds its route only packed in MainContent.ap, that it has to be unpacked first.
std::string routeNotFound(AppContext& ctx, const std::string& folderOrName);

// The scenarios of a route; `noFolder` is set when the route has no Scenarios folder.
std::vector<ScenarioEntry> listScenarios(AppContext& ctx, const RouteEntry& route, bool* noFolder = nullptr);

// The list entry of one scenario folder, or nothing when it is no listed scenario (no
// ScenarioProperties.xml, or one without an identity).
std::optional<ScenarioEntry> readScenarioEntry(AppContext& ctx, const fs::path& folder);

// The printable overview: every route's scenarios, the name padded to 70 columns, sorted.
std::string routesOverview(AppContext& ctx, const std::vector<RouteEntry>& routes);
// The table of scenario types, a row a route.
std::string scenarioTypesTable(AppContext& ctx, const std::vector<RouteEntry>& routes);
// The providers and products a route preloads.
std::vector<std::pair<std::string, std::string>> routeProviders(AppContext& ctx, const RouteEntry& route);

struct StockItem {
    std::string path; // Provider\Product\...\file.bin
    std::string name; // the file's name, as the stock list shows it
    bool missing = false; // no such blueprint below Assets (it may still be packed in an .ap)
};

// The rolling stock a scenario's Scenario.bin names, in document order. `message` gets the
// reason when there is none to read ("There is no scenario.bin file in this folder.").
std::vector<StockItem> scenarioStock(AppContext& ctx, const RouteEntry& route, const ScenarioEntry& scenario,
                                     std::string* message = nullptr);

// The stock of a scenario with its running numbers: each UniqueNumber and the Name that follows
// it, as "<number>\t<name>" rows.
std::vector<std::string> scenarioNumbers(AppContext& ctx, const RouteEntry& route, const ScenarioEntry& scenario,
                                         std::string* message = nullptr);

// The format test of a scenario's ScenarioProperties.xml: empty when it converts to a document
// of at least 1000 bytes, else the warning naming the file.
std::string scenarioPropertiesProblem(AppContext& ctx, const RouteEntry& route, const ScenarioEntry& scenario);

// The rolling stock of every scenario of the routes, one entry per path compared without regard
// to case, sorted. `warnings` gets "There are no scenarios in:-" for routes without any.
std::vector<std::string> allRoutesStock(AppContext& ctx, const std::vector<RouteEntry>& routes,
                                        std::vector<std::string>* warnings = nullptr);

struct Use {
    std::string route, routeFolder, scenario, scenarioFolder;
};
// Where is it used? The scenarios of the routes whose stock names the asset (a path below Assets,
// compared without regard to case or to .xml/.bin).
std::vector<Use> whereUsed(AppContext& ctx, const std::vector<RouteEntry>& routes, const std::string& asset);

// The display name in a localised block: the user's language first, then English, French,
// Italian, German, Spanish, searching from `from`; empty when none has a value.
std::string localisedName(std::string_view text, std::size_t from, const std::string& language);

} // namespace velmora::routes
