#pragma once
// The way into scenario work (frmShowRoutes): the routes, the scenarios of a route, a scenario's
// saved copies, removing empty consists, and the commands on the simulator's CurrentSave.bin.
// Every write goes through the program's write service inside one journal entry.

#include "velmora/routes/routes.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace velmora {
class AppContext;
}

namespace velmora::scenarios {

namespace fs = std::filesystem;

using routes::RouteEntry;
using routes::ScenarioEntry;

// A scenario of a route with its folder on disk.
struct ScenarioRef {
    RouteEntry route;
    ScenarioEntry scenario;
    fs::path folder;
};

// The scenario of a route named by its folder or its display name (the first of that name).
// A name that is no scenario of the route (a path leading elsewhere included) gives nothing.
std::optional<ScenarioRef> findScenario(AppContext& ctx, const RouteEntry& route, const std::string& folderOrName);

// The folders below the route's Scenarios folder that hold no ScenarioProperties.xml, by name
// (Show Invalid Scenarios). Links are not followed.
std::vector<std::string> invalidScenarios(AppContext& ctx, const RouteEntry& route);

// One entry of File2: a .bin file of the scenario's folder.
struct SavedCopy {
    std::string name;
    bool md5 = false;      // its ".MD5" companion is there
    bool document = false; // Scenario.bin or ScenarioNetworkProperties.bin, not a save
};
// The .bin files of a scenario folder, sorted by name without regard to case.
std::vector<SavedCopy> savedCopies(const fs::path& scenarioFolder);

struct CommandResult {
    bool ok = false;
    std::string message; // what was done, or why nothing was
    std::vector<fs::path> written;
    explicit operator bool() const { return ok; }
};

// "Save CurrentSave.bin As": copies CurrentSave.bin (and its .MD5) to NAME in the folder; ".bin"
// is added when the name does not end so. The name is kept inside the folder.
CommandResult saveCurrentSaveAs(AppContext& ctx, const fs::path& scenarioFolder, const std::string& name);

// "Overwrite CurrentSave.bin with Selected file": asks first; the old CurrentSave.bin and its .MD5
// are kept as numbered backups; the selected file's .MD5, where there is one, goes with it.
CommandResult overwriteCurrentSave(AppContext& ctx, const fs::path& scenarioFolder, const std::string& selected);

// Takes CurrentSave.bin and its .MD5 away from their names (each keeps a numbered backup).
CommandResult deleteCurrentSave(AppContext& ctx, const fs::path& scenarioFolder);

// The scenario text without its consists that hold no rail vehicle; `removed` counts them.
std::string withoutEmptyConsists(const std::string& text, int& removed);

// "Remove Empty Consists from selected Scenario": Scenario.bin rewritten without them, the old
// one kept as Scenario.bak (or the first free .bakN). Nothing is written when none is empty.
CommandResult removeEmptyConsists(AppContext& ctx, const fs::path& scenarioFolder);

} // namespace velmora::scenarios
