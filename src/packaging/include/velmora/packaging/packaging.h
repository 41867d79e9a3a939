#pragma once
// Packages for distribution: a folder below the program's folder (or another chosen one) that
// mirrors the simulator's root, with the installer and its marker files beside it. Five kinds:
// a route, the assets a route uses (from the reports of its check), scenarios, asset folders,
// and a reskin that ships only the files that differ from its original.

#include "velmora/packaging/packagebuilder.h"
#include "velmora/routes/routes.h"

namespace velmora::packaging {

// The name of the package folder: empty until a flow sets it, and any flow that finds it empty
// fills it. It outlives the screens, so that a second package of the same run joins the first.
struct PackageState {
    std::string packageFolder;
};

struct PackageOptions {
    fs::path base; // where package folders are made; empty for the program's own folder
    // The free room of the package's file system; the system's answer when not set (tests).
    std::function<std::optional<std::uint64_t>(const fs::path&)> freeSpace;
};

inline constexpr const char* kInstaller = "VL_RouteSetup.exe";
inline constexpr const char* kAssetInstaller = "VL_AssetSetup.exe";

// The route folder copied whole (less its Scenarios.bin), its template's TemplateRoutes and
// RouteMarkers, and the installer; `withAssets` adds what packageRouteAssets copies, in the
// same run.
PackageReport packageRoute(AppContext& ctx, const routes::RouteEntry& route, PackageState& state,
                           const PackageOptions& options, UserInterface* ui, bool withAssets = false);

// The four reports of a route's check, in the order they are read, with the message that
// names a missing one.
struct RouteReport {
    fs::path file;
    const char* missingMessage;
    int kind; // 0 assets, 1 shapes, 2 textures, 3 sounds
};
std::vector<RouteReport> routeReports(AppContext& ctx, const routes::RouteEntry& route);

// The files each report row names, with the wildcard endings for shapes, sections, textures
// and sounds, and the terrain's Environment unless the terrain is Kuju's. Refused, naming the
// report, when one of the four is missing.
PackageReport packageRouteAssets(AppContext& ctx, const routes::RouteEntry& route, PackageState& state,
                                 const PackageOptions& options, UserInterface* ui);

// The path of a report row below the simulator's root, from its Assets on ("Assets\P\Q\f.bin"),
// or nothing for a row to pass over (empty, "," and ",,,," lines, no Assets in the path).
std::optional<std::string> reportRowPath(const std::string& line, const fs::path& root);

// The lamp facts of a vehicle blueprint's XML, as the fields of its stock row; `lampsNeeded` is
// set when the vehicle's name ends in one of the lamp codes.
std::string HasItLights(const std::string& xml, const std::string& name, bool& lampsNeeded);

class ScenarioPackage {
public:
    explicit ScenarioPackage(AppContext& ctx, PackageState& state) : m_ctx(ctx), m_state(state) {}
    // Adds a scenario of a route and gathers its stock; the message to show, or the problem.
    std::string add(const routes::RouteEntry& route, const routes::ScenarioEntry& scenario,
                    UserInterface* ui);
    // Reads a scenario's stock into the stock rows (List5).
    void CheckStock(const fs::path& scenarioFolder);
    // Writes the package: the scenarios, the lamps when needed, the installer, Scenario.yyy and
    // Scenario.qqq.
    PackageReport process(const PackageOptions& options, UserInterface* ui);

    const std::vector<std::string>& folders() const { return m_folders; } // List4
    const std::vector<std::string>& stockRows() const { return m_stock; } // List5
    bool lampsNeeded() const { return m_lamps; }
    // The stock rows once each, joined by CR LF (what Scenario.qqq holds).
    std::string scenarioStockText() const;

private:
    AppContext& m_ctx;
    PackageState& m_state;
    std::vector<std::string> m_folders;
    std::vector<std::pair<fs::path, fs::path>> m_lines; // scenario folder, target below the package
    std::vector<std::string> m_stock;
    std::vector<std::string> m_stockPaths; // the first field of each stock row
    bool m_lamps = false;
};

class AssetPackage {
public:
    explicit AssetPackage(AppContext& ctx, PackageState& state) : m_ctx(ctx), m_state(state) {}
    // Adds an asset folder (below the simulator's root); the problem, or empty.
    std::string add(const fs::path& folder);
    // Takes rows out of the list; what was added is still copied.
    void remove(std::vector<int> rows);
    const std::vector<fs::path>& list() const { return m_list; } // List1
    PackageReport process(const PackageOptions& options, UserInterface* ui);

private:
    AppContext& m_ctx;
    PackageState& m_state;
    std::vector<fs::path> m_list;
    std::vector<std::pair<fs::path, fs::path>> m_lines;
};

// A reskin: the whole reskin folder less every file equal (by CRC-32) to the file of the same
// name in the original, each of which gets a Copy line of InstallMe.bat instead;
// Description.html and image.png are never compared. ReadMe.txt and the installer beside it.
PackageReport packageReskin(AppContext& ctx, const fs::path& reskin, const fs::path& original,
                            PackageState& state, const PackageOptions& options, UserInterface* ui);

// The text of ReadMe.txt of a reskin package.
std::string reskinReadMe();

// Which blueprints ("Provider\Product\path", .xml or .bin) are in the package, left out on
// purpose, missing at the source, or not in the package.
PackageCheck checkBlueprints(AppContext& ctx, const fs::path& packageFolder,
                             const std::vector<std::string>& blueprints);

// Zips the package folder into <folder>.zip beside it; sets `report.zip` or adds the problem.
bool zipPackage(AppContext& ctx, PackageReport& report, UserInterface* ui);

// The folder a package goes to.
fs::path packageRoot(AppContext& ctx, const PackageOptions& options, const std::string& packageFolder);

} // namespace velmora::packaging
