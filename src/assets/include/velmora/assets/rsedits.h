#pragma once
// The "Edit Rolling Stock" commands: the text surgery each one does on a rolling-stock
// blueprint, and the templates it reads once before a batch. The edits only change text and
// say what to store; the row loop of batchedit.h converts and writes.

#include "velmora/assets/batchedit.h"

#include <array>
#include <cstddef>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {
class AppContext;
class PathResolver;
} // namespace velmora

namespace velmora::assets {

enum class RsCommand {
    HeadLights,
    TailLights,
    Dead,
    Conductor,
    Passengers,
    Mass,
    WheelSlip,
    UsAirBrakes,
    Provider,
    LocoScript,
    WagonScript
};

struct RsCommandInfo {
    RsCommand command;
    const char* word;     // the command line's word: head-lights, tail-lights, dead, ...
    const char* menuName; // mnuHead ...
    int langEntry;        // the menu caption's entry in the language table
    const char* caption;  // the caption in English, e.g. "Add head-lights"
    Store store;          // in place, or a variant under a new name (dlgCoachName)
    const char* suffix;   // the suffix dlgCoachName gives a variant's names by default; "" for none
};
// In menu order.
const std::vector<RsCommandInfo>& rsCommands();
// By its command-line word; nullptr when there is none.
const RsCommandInfo* rsCommand(std::string_view word);

// One row of Templates\UKLights.txt: the template's name, the lamp blueprint
// (Provider\Product\BlueprintID ending in xml), and all columns as written.
struct LampTemplate {
    std::string name;
    std::string blueprint;
    std::array<std::string, 11> columns;
    std::size_t line = 0; // in the file, one-based
};
struct LampTable {
    std::vector<LampTemplate> heads, tails; // column 6 not "0" / equal to "0"
};
// Reads the table. A malformed line (too few fields, a position that is no number, a blueprint
// not ending in xml) gives false, and `error` names the file and the line.
bool readLampTable(const std::filesystem::path& file, LampTable& table, std::string& error);

// dlgHead's train types with the lamp positions of their two slots (0: no lamp).
struct TrainType {
    const char* name;
    int slot1, slot2;
};
const std::vector<TrainType>& trainTypes();

// A template of these commands (UKLights.txt among them): the user's own copy in the program's
// writable Templates folder if there is one, else the shipped one (which may not exist).
std::filesystem::path rsTemplateFile(AppContext& ctx, std::string_view name);

// Everything a command needs besides the row: the choices of its dialog, and the templates,
// read once before the batch.
struct RsSettings {
    RsCommand command{};
    LampTemplate lamp;                            // head and tail lights: the chosen template
    int trainType = 0;                            // head lights: index into trainTypes()
    std::string mass, capacity;                   // dlgMass, as typed; written as typed
    std::string oldProvider, newProvider;         // Correct Provider
    std::map<std::string, std::string> templates; // file name -> text, read by loadRsSettings
    std::filesystem::path assets;                 // the simulator's Assets folder
    std::string notBogie;                         // why a row that is no bogie is passed over
    const PathResolver* resolver = nullptr;       // finds document paths in any letter case
};
// Reads the templates the command needs (a user's own copy in the program's writable
// Templates folder wins over the shipped one) and checks what the command needs before any
// row is touched: the chosen lamp's blueprint below Assets, numbers that are numbers, an old
// provider that is not empty. Returns an empty string, or what is wrong, naming the file.
std::string loadRsSettings(AppContext& ctx, RsSettings& settings);

// The command's edit of one row. Safe to call on several threads at once.
RowEdit editRow(const RsSettings& settings, const RowInput& input);

} // namespace velmora::assets
