#pragma once
// Swaps over every scenario of a route at once: "Swap in ALL Scenarios for this route" (every
// vehicle of one name becomes one stock) and the swap by a rule file (each vehicle whose blueprint
// a rule covers becomes the rule's stock).
//
// A batch works in two steps. First every scenario is read, changed and encoded in memory, on
// all cores; a scenario that cannot be read stops the batch there, before anything is written,
// and the message names it. Then the changed scenarios are written one after the other, each
// Scenario.bin and ScenarioProperties.xml with its numbered backup, all as one journal entry, so
// that one undo takes the whole batch back. When a write fails, the files the batch had already
// written get their old content again. Scenarios in which nothing changed are not written.

#include "velmora/scenarios/scenariolist.h"
#include "velmora/scenarios/swap.h"
#include "velmora/scenarios/swaprules.h"

#include <string>
#include <vector>

namespace velmora {
class UserInterface;
}

namespace velmora::scenarios {

extern const char* const
    kAllScenariosSaved; // "All changed Scenario.bin & ScenarioProperties.xml files have been saved. "

struct BatchOptions {
    SwapOptions swap;
    bool dryRun = false;         // read and change in memory, write nothing
    bool missingOnly = false;    // rules: only vehicles whose blueprint is missing
    int threads = 0;             // 0: one a core
    UserInterface* ui = nullptr; // progress and Abort
};

// A vehicle that changed, or would in a dry run.
struct VehicleSwap {
    int consist = 0, vehicle = 0;
    std::string name;      // before the swap, as the grid shows it
    std::string blueprint; // before: Provider\Product\path
    std::string stock;     // after: the stock's name
    std::string stockPath; // after: Provider\Product\path
    int rule = 0;          // the rule file's line; 0 for a swap by name
};

// A vehicle whose blueprint is missing and that no rule covers.
struct Uncovered {
    int consist = 0, vehicle = 0;
    std::string name, blueprint;
};

struct ScenarioOutcome {
    fs::path folder, scenarioFile, propertiesFile;
    std::string name;       // the scenario's display name
    std::string passedOver; // why the scenario was left out (no Scenario.bin, Quick Drive), else empty
    std::vector<VehicleSwap> swapped;
    std::vector<Refusal> refused;
    std::vector<Uncovered> uncovered;
    // Ready to write: the new documents (the properties empty when they stay as they are).
    std::string scenarioBin, propertiesText;
};

struct BatchResult {
    bool ok = false;
    bool stopped = false;                   // Abort was pressed: nothing was written
    std::string message;                    // the program's words, or what went wrong naming the file
    std::vector<ScenarioOutcome> scenarios; // in the order of the route's scenario list
    int written = 0;                        // scenarios written
    int swapped = 0;                        // vehicles changed
    std::vector<fs::path> backups;
    explicit operator bool() const { return ok; }
};

// Command20: every vehicle named `name` (ignoring case) in every scenario of the route, as Swap in
// EVERY consist swaps it: the validity test looks at each document's first vehicle, and a
// scenario it refuses is left as it is (listed with the reason).
BatchResult swapInAllScenarios(AppContext& ctx, const RouteEntry& route, const std::string& name,
                               const ChosenStock& stock, const BatchOptions& options = {});

// Every vehicle of every scenario of the route that a rule covers (with `missingOnly`, only those
// whose blueprint is missing), each swapped as Swap Selected Item swaps it. A vehicle the validity
// test refuses stops the batch before anything is written; the result lists each one.
BatchResult swapByRules(AppContext& ctx, const RouteEntry& route, const SwapRules& rules,
                        const BatchOptions& options = {});

// The outcome as text, one block a scenario that changed (or would), refused or left missing
// vehicles, for the dry run and the report at the end.
std::string batchReport(const BatchResult& result);

} // namespace velmora::scenarios
