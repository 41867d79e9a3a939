// "Update Sounds" and "Add Cab Occlusions" from the command line: rolling stock pointed at the
// files of a sound pack, or given the cab shadow of an occlusion pack. Each batch is one journal
// entry; the output names every file written, the sound files that are not installed, and every
// row passed over with the reason. Exit 1 when rows were passed over, 2 when the batch could not
// run.

#include "session.h"

#include "velmora/assets/batchedit.h"
#include "velmora/assets/soundedits.h"

#include <algorithm>
#include <strings.h>

namespace velmora::cli {

namespace {

int runSounds(Session& s, const assets::SoundCommandInfo& info, assets::SoundSettings& settings,
              const std::vector<std::string>& paths, int threads) {
    s.start();
    std::vector<assets::AssetRow> rows;
    if (!s.requireRoot() || !rowsFromPaths(s, paths, rows))
        return Error;
    settings.command = info.command;
    if (const std::string error = assets::loadSoundSettings(s.ctx, settings); !error.empty())
        return s.fail(error);
    assets::BatchOptions o;
    o.command = info.caption;
    o.threads = threads;
    const assets::BatchResult r = assets::runBatch(
        s.ctx, rows, o, [&settings](const assets::RowInput& in) { return assets::editSoundRow(settings, in); }, &s.ui);
    if (!r.error.empty())
        return s.fail(r.error);
    s.out << assets::describe(r);
    if (r.rowsWritten > 0 && !info.occlusion)
        s.out << settings.updated << "\n";
    return r.passedOver.empty() ? Success : ProblemsFound;
}

int cmdSounds(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--bogie", "--threads"}, {"--add-bogie", "--add-wagon-sound"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() < 2)
        return s.fail("needs the command and the blueprints (.bin); see velmora-cli assets sounds --help");
    const assets::SoundCommandInfo* info = assets::soundCommand(a.plain.front());
    if (!info || info->occlusion)
        return s.fail("no sound command '" + a.plain.front() + "'; see velmora-cli assets sounds --help");
    const auto threads = s.threads(a);
    if (!threads)
        return Error;
    assets::SoundSettings settings;
    settings.addBogie = a.has("--add-bogie");
    settings.addWagonSound = a.has("--add-wagon-sound");
    if (info->command == assets::SoundCommand::BogieName) {
        const auto bogie = a.value("--bogie");
        if (!bogie)
            return s.fail("bogie needs --bogie BG_Steam|BG_Modern|RA_BG_Mk1|RA_BG_Mk3");
        // The word as typed, in the spelling of the list.
        const auto& choices = assets::bogieSounds();
        const auto found = std::find_if(choices.begin(), choices.end(),
                                        [&](const std::string& c) { return strcasecmp(c.c_str(), bogie->c_str()) == 0; });
        if (found == choices.end())
            return s.fail("--bogie takes BG_Steam, BG_Modern, RA_BG_Mk1 or RA_BG_Mk3, not '" + *bogie + "'");
        settings.bogie = *found;
    }
    return runSounds(s, *info, settings, {a.plain.begin() + 1, a.plain.end()}, *threads);
}

int cmdOcclusion(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--threads"}, {});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() < 2)
        return s.fail("needs class37 or class47 and the blueprints (.bin)");
    const std::string& which = a.plain.front();
    const assets::SoundCommandInfo* info = which == "class37"   ? assets::soundCommand("occlusion37")
                                           : which == "class47" ? assets::soundCommand("occlusion47")
                                                                : nullptr;
    if (!info)
        return s.fail("no occlusion '" + which + "'; it is class37 or class47");
    const auto threads = s.threads(a);
    if (!threads)
        return Error;
    assets::SoundSettings settings;
    return runSounds(s, *info, settings, {a.plain.begin() + 1, a.plain.end()}, *threads);
}

std::string padded(std::string word) {
    word.resize(std::max<std::size_t>(word.size() + 1, 18), ' ');
    return word;
}

const char* soundsHelp() {
    static const std::string text = [] {
        std::string t = "COMMAND is one of (the entry of the asset screen's Update Sounds menu in brackets):\n";
        for (const auto& c : assets::soundCommands())
            if (!c.occlusion)
                t += "  " + padded(c.word) + "\"" + c.caption + "\"\n";
        t += "\nOptions:\n"
             "  --add-bogie         the wagon commands: an empty BogieAudioControlName is filled\n"
             "  --add-wagon-sound   the wagon commands: an empty children list (<Children/>) gets a Wagon Sound child\n"
             "  --bogie WORD        bogie: BG_Steam, BG_Modern, RA_BG_Mk1 or RA_BG_Mk3\n"
             "  --threads N         the number of threads (all cores when left out)\n"
             "\nThe sound pack is not looked for: a blueprint pointed at a sound that is not installed is written,\n"
             "with a note naming the missing file. Every blueprint is kept as its numbered backup (.bak, .bak1 ...);\n"
             "the whole batch is one entry of the journal, so one `velmora-cli undo` takes it back. Exit 1 when a\n"
             "blueprint was passed over (named with the reason), 2 when the batch could not run.\n";
        return t;
    }();
    return text.c_str();
}

const char* occlusionHelp() {
    static const std::string text = [] {
        std::string t = "The first word is one of (the entry of the asset screen's Add Cab Occlusions menu in brackets):\n";
        for (const auto& c : assets::soundCommands())
            if (c.occlusion)
                t += "  " + padded(std::string("class") + (c.command == assets::SoundCommand::Occlusion37 ? "37" : "47")) +
                     "\"" + c.caption + "\"\n";
        t += "\nThe occlusion pack is the program's Occlusions folder (in its own folder or its data folder), holding\n"
             "Waggonz/37Occ and 37CabShadow.bin (47 likewise). Waggonz/37Occ is copied to Assets when it is not there;\n"
             "the cab shadow is put beside each blueprint. A blueprint that has the cab shadow already is passed over.\n"
             "  --threads N         the number of threads (all cores when left out)\n"
             "Exit 1 when a blueprint was passed over, 2 when the batch could not run (a missing pack is named).\n";
        return t;
    }();
    return text.c_str();
}

} // namespace

std::vector<Command> soundCommands() {
    return {
        {"assets sounds", "COMMAND PATH... [--add-bogie] [--add-wagon-sound] [--bogie WORD] [--threads N]",
         "points the blueprints at the files of a sound pack (see --help for the commands)", cmdSounds, true,
         soundsHelp()},
        {"assets occlusion", "class37|class47 PATH... [--threads N]",
         "adds the cab shadow of an occlusion pack to the locos", cmdOcclusion, true, occlusionHelp()},
    };
}

} // namespace velmora::cli
