#pragma once
// Stock swapping in the scenario editor: one vehicle (Swap Selected Item), every vehicle of the
// same name in one consist (Swap All Identical Stock) or in the whole scenario (Swap in EVERY
// consist). Each swap rewrites the vehicle's blueprint references, name, running number (and
// every other element whose whole text is the old number), mass and cargo order in
// `doc.scenarioText`, adds the stock's provider and product to the required assets that Save
// merges into RBlueprintSetPreLoad, and reads the tables again. Nothing is written until Save.

#include "velmora/scenarios/scenario.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velmora::scenarios {

extern const char* const kLocosForWagons; // "Sorry, but you can not swap Locos for Wagons."
extern const char* const kWagonsForLocos; // "Sorry, but you can not swap Wagons for Locos."
extern const char* const kNoStockChosen;  // "You have not selected any rolling-stock from the Available Stock list?"
extern const char* const kConsistSwapped; // "Your Consist's Rolling-Stock information will be updated once you save changes."
extern const char* const kAllSwapped;     // "All Consists' Rolling-Stock information will be updated once you save changes."
extern const char* const kKeepNumbers;    // "Don't Change numbers when swapping stock."

// The stock a swap installs: the five chosen values and the reskin values.
struct ChosenStock {
    std::string provider, product; // the two folder levels below Assets
    std::string name;              // display name, repaired
    std::string path;              // below Provider\Product, backslashes, ending ".xml"
    std::string category;          // "Diesel", "Electric", "Steam", "Freight", "Passenger", "Tender", "DMU", "EMU"
    fs::path file;                 // the .bin
    bool reskin = false;           // the blueprint is a cReskinBlueprint
    std::string reskinName;        // its English DisplayName
    Reference base;                // its ReskinAssetBpId: the base asset
};

// The stock named by a blueprint path below Assets (".bin" or ".xml", '\' or '/') or by a full
// path that passes through an Assets folder. Empty with `error` set when the file does not exist,
// cannot be read or is no rail vehicle.
std::optional<ChosenStock> chooseStock(const AppContext& ctx, const std::string& typed, std::string& error);

struct SwapOptions {
    bool keepNumbers = false;                  // Check2
    std::function<double()> randomFraction;    // for the pick from a numbering list; empty: random
};

struct SwapResult {
    std::string error; // the program's words when refused; the text is then unchanged
    int swapped = 0;   // vehicles rewritten
    bool ok() const { return error.empty(); }
};

// The validity test on a vehicle's text for a stock category: empty when the swap may go on.
std::string swapRefusal(const std::string& category, const std::string& vehicleText);

// SwapCoal: the first two <e> elements after the first <InitialLevel exchanged in place.
void SwapCoal(std::string& vehicleText);

// Command10: vehicle `vehicle` (0-based) of consist `consist`.
SwapResult swapVehicle(const AppContext& ctx, ScenarioDocument& doc, int consist, int vehicle,
                       const ChosenStock& stock, const SwapOptions& options = {});

// Command7: every vehicle of the consist named as vehicle `vehicle` is (ignoring case).
SwapResult swapIdentical(const AppContext& ctx, ScenarioDocument& doc, int consist, int vehicle,
                         const ChosenStock& stock, const SwapOptions& options = {});

// Command22: every vehicle of the scenario named `name` (as the grid shows it, ignoring case).
SwapResult swapEveryConsist(const AppContext& ctx, ScenarioDocument& doc, const std::string& name,
                            const ChosenStock& stock, const SwapOptions& options = {});

// The stock a vehicle is to be swapped for, or nothing to leave it alone.
using StockPicker = std::function<const ChosenStock*(int consist, int vehicle, const Vehicle& v)>;

// A vehicle the validity test kept from its swap.
struct Refusal {
    int consist = 0, vehicle = 0;
    std::string name;   // the vehicle's name as the grid shows it
    std::string reason; // the program's words
};

// Every vehicle `pick` gives a stock for, each swapped by the rules of Swap Selected Item: the
// validity test on the vehicle itself, the reskin's own reference, number, mass and cargo order.
// The number changes are carried through the document once all vehicles are done. Vehicles the
// test refuses are left as they are and listed in `refusals`.
SwapResult swapEach(const AppContext& ctx, ScenarioDocument& doc, const StockPicker& pick,
                    std::vector<Refusal>* refusals = nullptr, const SwapOptions& options = {});

} // namespace velmora::scenarios
