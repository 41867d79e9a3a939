#pragma once
// Unpacking archives into the install, in the process. Each archive is unpacked whole or not at
// all: every chosen entry is first written beside its place under a temporary name, and only
// when all of them are there do they take their names (the old files keeping backups, so that
// one undo takes the unpack back). A full disk, a damaged archive or Abort half way leaves the
// install as it was.

#include "velmora/archives/zipreader.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {
class UserInterface;
class WriteService;
} // namespace velmora

namespace velmora::archives {

// What happens to a file that is already there, by the numbers of the "Select 7zip Mode" dialog.
enum class UnpackMode {
    NewFolder = 0,  // into a folder the user chooses; a file that is there is asked about
    SameFolder = 1, // beside the archive, for a first unpack; a file that is there is asked about
    Overwrite = 2,  // replaced (its old content kept as a backup)
    Skip = 3,       // left as it is
    RenameNew = 4,  // the unpacked file takes the next free name "<name>_<n>.<ext>"
    RenameOld = 5,  // the file there moves to the next free name, the unpacked one takes its place
};
inline constexpr int kUnpackModes = 6;
// The dialog's caption of a mode.
const char* unpackModeCaption(UnpackMode mode);
// The command line's word for a mode: overwrite, skip, rename-new, rename-old.
std::optional<UnpackMode> unpackModeFromWord(std::string_view word);

// Which entries an unpack takes, by the work each command of the archive table does.
enum class EntrySet {
    All,
    RollingStock,     // everything below RailVehicles
    Scenarios,        // everything below Scenarios
    LocoShapes,       // .GeoPcDx files of engines below RailVehicles
    RollingStockBins, // .bin files below RailVehicles
    RouteProperties,  // RouteProperties.xml at the archive's root
};
bool entryWanted(EntrySet kind, std::string_view entryName);

struct UnpackOptions {
    UnpackMode mode = UnpackMode::Overwrite;
    EntrySet kind = EntrySet::All;
    fs::path destination;              // empty: the archive's own folder
    bool keepPaths = true;             // false: every file straight into the destination
    std::vector<std::uint64_t> only;   // when not empty: these entries and no others
    std::uint64_t entryLimit = 16ull << 30; // no file of the simulator's comes near this
    // Off for scratch unpacking (TempFiles): no backups, no journal.
    bool keepBackups = true;
};

struct UnpackResult {
    fs::path archive;
    bool ok = false;        // false: nothing of this archive was put in place
    bool cancelled = false; // stopped by Abort, nothing put in place
    std::string error;      // why not ok, naming the file
    std::vector<fs::path> written;  // unpacked to their places (new, or replacing what was there)
    std::vector<fs::path> kept;     // there already and left as they were
    std::vector<std::string> renamed;    // "<file>: <what got which name>"
    std::vector<std::string> refused;    // "<entry>: <why>": unsafe names, damaged data, too large
    std::vector<std::string> collisions; // entries that met in one file, told by their names
    std::uint64_t bytes = 0;
};

// Unpacks one archive. `ui` (may be null) shows progress, answers Abort, and is asked in the
// two modes that ask. The caller keeps a journal entry open when several archives make one
// command.
UnpackResult unpackArchive(WriteService& files, const fs::path& archive, const UnpackOptions& options,
                           UserInterface* ui);

// A few lines for people: what was unpacked, kept, renamed, refused.
std::string describe(const UnpackResult& result);

} // namespace velmora::archives
