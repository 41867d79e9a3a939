#pragma once
// What a rolling-stock blueprint is: a locomotive, a wagon or a tender, with its display name
// and engine type, and the details a swap takes from it (mass, a running number, the order of
// coal and water). Every blueprint is converted in this process and read as text; nothing is
// written, so these may run on any thread.

#include <filesystem>
#include <functional>
#include <string>

namespace velmora {
class AppContext;
}

namespace velmora::scenarios {

namespace fs = std::filesystem;

// The answer of one class test.
struct StockTest {
    bool read = false;      // the blueprint could be converted; else `error` says why
    std::string error;      // "<file>: <reason>"
    bool is = false;        // of the class asked about
    bool reskin = false;    // a locomotive only by its category: a reskin
    std::string name;       // display name, repaired ("Unnamed" when it has none)
    std::string engineType; // locomotives: EngineType, a reskin's from its base asset
};

// Locomotive: the text holds <cEngineComponentBlueprint, or it is a reskin whose text holds
// ">eLocomotoves<". The name comes from the language tag, then <Name, then "Unnamed".
StockTest IsItALoco(const AppContext& ctx, const fs::path& bin);
StockTest IsItAWagon(const AppContext& ctx, const fs::path& bin);
StockTest IsItATender(const AppContext& ctx, const fs::path& bin);

// The same tests on a blueprint already converted (a reskin's base is still read from disk).
StockTest locoFromXml(const AppContext& ctx, const std::string& xml);
StockTest wagonFromXml(const AppContext& ctx, const std::string& xml);
StockTest tenderFromXml(const AppContext& ctx, const std::string& xml);

// The three tests at once, each marker searched for once in one folded copy of the text: what a
// walk over thousands of blueprints uses.
struct StockClasses {
    StockTest loco, wagon, tender;
};
StockClasses classifyStock(const AppContext& ctx, const std::string& xml);

// The display name of a blueprint as the class tests take it, repaired.
std::string stockName(const std::string& xml, const std::string& languageTag);

// What a swap writes into a vehicle from the stock's blueprint.
struct StockDetails {
    bool read = false;
    std::string error;
    std::string mass;   // Mass of the rail vehicle component, as the document writes it
    std::string number; // from the numbering list; empty when there is none
    int fuelKind = 0;   // 0 no coal; 1 water behind coal; 2 coal behind water
};

// `randomFraction` gives numbers in [0, 1) for the rough pick from the numbering list; empty
// means the standard generator.
StockDetails GetStockDetails(const AppContext& ctx, const fs::path& bin,
                             const std::function<double()>& randomFraction = {});

// The pick from a numbering list's text: the distance d between the first <cCSVItem and the
// first <Name, the count of <Name tags (stopping at 21), k = int((count - 2) * fraction + 1),
// at least 1, and the Name value read from position d * k. Empty when the list has no <Name.
std::string pickNumber(const std::string& numberingXml, double fraction);

} // namespace velmora::scenarios
