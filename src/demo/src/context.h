#pragma once
// What the parts of the generator share: the output, the manifest, the random stream, and the
// catalogue of assets that the routes and scenarios place.

#include "manifest.h"
#include "output.h"
#include "random.h"
#include "velmora/demo/xmlbuilder.h"

#include <set>
#include <string>
#include <vector>

namespace velmora {
class UserInterface;
}

namespace velmora::demo {

// A blueprint reference: provider, product and the id below the product ("...\X.xml").
struct Ref {
    std::string provider, product, id;
    bool empty() const { return provider.empty(); }
};

// Root-relative file of an asset path below the product, '\' turned to '/', with the ending
// `ext` in place of the id's ".xml" (or appended when the id has no ending).
std::string assetFile(const std::string& provider, const std::string& product, const std::string& pathBelowProduct,
                      const std::string& ext);
std::string assetFile(const Ref& ref, const std::string& ext = ".bin");
// "Provider\Product\path" as geometry, audio and texture values name files below Assets.
std::string assetsRelative(const Ref& ref);
std::string slashes(std::string path);       // '\' -> '/'
std::string backslashes(std::string path);   // '/' -> '\'

struct Vehicle {
    Ref ref;
    Ref reskinOf; // set for a reskin: `ref` is the reskin, this the base vehicle
    std::string name;
    bool engine = false;
    bool tender = false;
    std::string engineType; // Diesel, Electric, Steam
    std::string numberPrefix;
    bool cargo = false;
    double mass = 40;
};

// One placement on a route that carries faults: the manifest entries get the route's folder
// when the item is placed.
struct FaultyItem {
    Ref ref;
    std::vector<std::size_t> faults;
};

struct Catalogue {
    std::vector<Ref> scenery;  // placeable and sound
    std::vector<Ref> ambient;  // sound emitters below Audio\, sound
    std::vector<Ref> track, road, loft;
    Ref transferPoint;
    std::vector<Vehicle> engines, wagons;
    Ref routeTemplate, terrain, weather, skies[4];
    std::vector<FaultyItem> faulty; // placed on the first route's tiles
    Ref grun, cafe, obrien, signalBox; // exist on disk; the routes name them in other spellings
    std::vector<std::string> routeFolders; // fixed before the assets, for Quick Drive consists
};

struct Context {
    Output& out;
    Manifest& manifest;
    SplitMix rng;
    int scale = 1;
    UserInterface* ui = nullptr;
    Catalogue cat;
    std::set<std::string> written; // root-relative files already written (shared textures)
    std::int64_t step = 0;

    bool cancelled() const;
    void progress(const std::string& label = {});
};

// Shapes that many documents share.
void matrix(XmlBuilder& x, std::string_view name, double tx, double ty, double tz);
void blueprintRef(XmlBuilder& x, std::string_view name, const Ref& ref);
void farPosition(XmlBuilder& x, int tileX, int tileZ, double offsetX, double offsetZ);
void guidElement(XmlBuilder& x, std::string_view name, const Guid& guid);
void localisedName(XmlBuilder& x, std::string_view name, const std::string& english, const std::string& key = {},
                   const std::string& german = {}, const std::string& french = {});

// A rail vehicle as the asset half writes it.
struct StockSpec {
    std::string provider, product;
    std::string folder;      // below the product, e.g. RailVehicles\Diesel\Class66
    std::string engineType;  // "" for a wagon
    bool tender = false, cargo = false;
    std::string file, name, prefix;
    double mass;
    std::vector<std::pair<std::string, std::string>> textures; // code, value relative to the shape
};

// A rail vehicle with its shape, textures, bogie, coupling, numbers, script and, for an engine,
// its cab, simulation, animation and sound.
bool writeStock(Context& ctx, const StockSpec& s, Vehicle& out, bool scriptOnlyCompiled = false);
// An engine's simulation blueprint in <folder>\Simulation with the curves it names; `sim` is its
// reference.
bool writeEngineSimulation(Context& ctx, const std::string& provider, const std::string& product,
                           const std::string& folder, const std::string& file, const std::string& engineType, Ref& sim);
// A scenery object with its own shape and the shape's textures; returns the reference (empty
// after a failed write).
Ref scenery(Context& ctx, const std::string& provider, const std::string& product, const std::string& path,
            const std::string& name, const std::vector<std::pair<std::string, std::string>>& textures,
            bool codeInId = false);

// A route beyond the loose ones, small whatever the scale: packed whole in its MainContent.ap, or
// packed and unpacked but for some tiles (`partlyUnpacked`). Names as RouteProperties.xml holds them.
struct ArchivedRoute {
    std::string guid, english, french, german;
    bool partlyUnpacked = false;
    std::string scenario; // the name of its one scenario
};
bool writeArchivedRoute(Context& ctx, const ArchivedRoute& route, DemoResult& result);
// A scenario of a loose route (0: the first) packed on its own in <route folder>/<archive>, as
// add-on scenarios ship; the scenario goes to the manifest's entry for the archive.
bool writeScenarioPack(Context& ctx, int routeIndex, const std::string& archive, const std::string& scenario,
                       DemoResult& result);

// Writes what the two halves of the generator produce; false stops the generator.
bool writeAssets(Context& ctx);
bool writeRoutes(Context& ctx, DemoResult& result);
// The .ap files beyond those of the assets and routes above, with their faults.
bool writeArchives(Context& ctx, DemoResult& result);

} // namespace velmora::demo
