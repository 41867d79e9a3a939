#pragma once
// The commands of the archive table, with their questions and closing messages, for the screen
// and the command line alike. Each command that writes is one journal entry, so one undo takes
// all it unpacked (or removed) back.

#include "velmora/archives/unpack.h"

#include <filesystem>
#include <string>
#include <vector>

namespace velmora {
class AppContext;
class UserInterface;
} // namespace velmora

namespace velmora::archives {

namespace fs = std::filesystem;

// The unpack commands on chosen .ap files, by what they take from each.
enum class UnpackCommand {
    Unpack,           // Command14: everything, by the chosen mode
    RollingStock,     // Command17
    Scenarios,        // Command18
    LocoShapes,       // Command20
    RollingStockBins, // Command24
};

struct ApCommandResult {
    bool ran = false; // false when the user said no at the first question
    std::vector<UnpackResult> unpacked;
    std::vector<std::string> problems; // archives that could not be read, folders left, ...
    std::string summary;               // what the command did, for a report or the terminal
    bool ok() const { return ran && problems.empty(); }
};

// The question each unpack command asks first.
std::string unpackQuestion(UnpackCommand command);

// Unpacks the chosen .ap files, each into its own folder, or into `destination` when one is
// given, or, in the new-folder mode, into one the user chooses for each through `ui`.
ApCommandResult unpackSelected(AppContext& ctx, UserInterface& ui, const std::vector<fs::path>& aps,
                               UnpackCommand command, UnpackMode mode = UnpackMode::Overwrite,
                               const fs::path& destination = {});

// Command15 and Command16: rolling stock from every .ap below Assets, or scenarios from every
// .ap below Content, overwriting.
ApCommandResult unpackEverywhere(AppContext& ctx, UserInterface& ui, EntrySet set);

// Command21: RouteProperties.xml from the MainContent.ap beside each chosen file.
ApCommandResult extractRouteProperties(AppContext& ctx, UserInterface& ui, const std::vector<fs::path>& aps);

// Command13: RouteProperties.xml from every route archive (unless the user skips that), then a
// folder named after each route inside its folder.
ApCommandResult addRouteNames(AppContext& ctx, UserInterface& ui);

// Build Route Index: every RouteProperties.xml unpacked, then Reports\RouteIndex.csv written.
ApCommandResult buildRouteIndex(AppContext& ctx, UserInterface& ui);

// Command12: the folders of the chosen .ap files removed, behind their question. They move to
// the program's own Deleted folder, from where an undo brings them back.
ApCommandResult deleteFolders(AppContext& ctx, UserInterface& ui, const std::vector<fs::path>& aps);

// A listing of an archive's entries in the form of the 7-Zip program's "l" command: date, time,
// attributes, size, compressed size, name; and a closing line of totals.
std::string entryListing(const ZipReader& zip);

} // namespace velmora::archives
