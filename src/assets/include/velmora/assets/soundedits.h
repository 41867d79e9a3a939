#pragma once
// "Update Sounds" and "Add Cab Occlusions": rolling stock pointed at the better sound files of
// a sound pack, or given the cab-shadow children of an occlusion pack. Every command is a text
// change of the blueprint stored in place through the row loop of batchedit.h; a row that
// cannot be changed is passed over and named. The pack is not looked for, but each row whose
// new sound (or bogie sound) does not exist below Assets gets a note in the closing report.

#include "velmora/assets/batchedit.h"

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

enum class SoundCommand {
    NewWagon,       // mnuNewWag  "New Wagon Sounds"
    OldHeavy,       // mnuOldH    "Old heavy wagons"
    OldHeavyRattly, // mnuOHR     "Old Heavy Rattly"
    ContainerFlats, // mnuCntrFlats "Container Flats"
    FourWheel,      // mnu4WW     "4 Wheel Wagons"
    Mk1,            // mnuMK1     "Add MK1 & Mk2a/b/c Coach Sounds"
    Mk2,            // mnuMk2     "Add Mk2d/e/f (air cond) Coach Sounds"
    Mk3,            // mnuMk3     "Add Mk3 Coach Sounds"
    Appropriate,    // mnuApp     "Add Appropriate Coach Sounds"
    BogieName,      // mnuBacn    "Change BogieAudioControlName" (dlgBogie)
    Class37,        // mnuSnd37   "Class 37 Sounds"
    Class47,        // mnuCL47    "Class 47 Sounds"
    Hst,            // mnuHST     "Class 43/HST Sounds"
    Occlusion37,    // mnuAdd37   "Add Class 37 Occlusions" (menu mnuOcc)
    Occlusion47     // mnuAdd47   "Add Class 47 Occlusions" (menu mnuOcc)
};

struct SoundCommandInfo {
    SoundCommand command;
    const char* word;     // the command line's word: new-wagon, old-heavy, ..., class37, ...
    const char* menuName; // mnuNewWag ...
    const char* caption;  // the menu caption
    int noticeEntry;      // the opening OK/Cancel notice's entry in the language table (0: none)
    const char* notice;   // the notice in English
    bool occlusion;       // in "Add Cab Occlusions" (mnuOcc), not "Update Sounds" (mnuArmstrong)
};
// In menu order, the sound commands first.
const std::vector<SoundCommandInfo>& soundCommands();
// By its command-line word; nullptr when there is none.
const SoundCommandInfo* soundCommand(std::string_view word);

// dlgBogie's choices: BG_Steam, BG_Modern, RA_BG_Mk1, RA_BG_Mk3.
const std::vector<std::string>& bogieSounds();

// Everything a command needs besides the row: the choices of its dialog, the templates and
// files it reads, read once before the batch.
struct SoundSettings {
    SoundCommand command{};
    bool addBogie = false;       // dlgFreightAudio Check1: an empty BogieAudioControlName is filled
    bool addWagonSound = false;  // dlgFreightAudio Check2: <Children/> gets a Wagon Sound child
    std::string bogie;           // dlgBogie's choice (one of bogieSounds())
    std::map<std::string, std::string> templates; // file name -> text
    std::string cabShadow;       // the occlusion commands: the bytes of 37CabShadow.bin / 47CabShadow.bin
    std::string notChanged;      // language entry 535: the start of a row's "not changed" line
    std::filesystem::path assets; // the simulator's Assets folder
    const PathResolver* resolver = nullptr;
    // Where each row's random ids start from: 0 draws a fresh start for every row; any other
    // value makes the ids repeatable (the row's place in the batch is mixed in).
    unsigned long long seed = 0;
    // The closing message (language entry 534), as loadSoundSettings read it.
    std::string updated;
};
// The opening notice of a command in the user's language (its English text when the table
// has no such entry), and the closing message.
std::string soundNotice(AppContext& ctx, const SoundCommandInfo& info);
// Reads the templates (a user's own copy in the program's writable Templates folder wins) and
// for the occlusion commands the cab shadow and the occlusion folder, which it copies to
// Assets\Waggonz\37Occ (47Occ) when missing, as its own journal entry. Returns an empty string
// or what is missing, naming the file; nothing of the rows is touched then.
std::string loadSoundSettings(AppContext& ctx, SoundSettings& settings);

// The command's edit of one row. Safe to call on several threads at once. Random ids come from
// a generator of the row's own.
RowEdit editSoundRow(const SoundSettings& settings, const RowInput& input);

} // namespace velmora::assets
