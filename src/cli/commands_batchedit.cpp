// The batch edits of blueprints from the command line: Change Name, and the rolling-stock edits.
// Each batch is one journal entry; the output names every file written and every row passed
// over with the reason. Exit 1 when rows were passed over, 2 when the batch could not run.

#include "session.h"

#include "velmora/assets/batchedit.h"
#include "velmora/assets/renaming.h"
#include "velmora/assets/rsedits.h"
#include "velmora/core/templates.h"

#include <algorithm>
#include <cstring>
#include <strings.h>

namespace velmora::cli {

namespace {

// The batch's closing report; the exit code says whether every row was written.
int report(Session& s, const assets::BatchResult& r) {
    if (!r.error.empty())
        return s.fail(r.error);
    s.out << assets::describe(r);
    return r.passedOver.empty() ? Success : ProblemsFound;
}

// Change Name: "Rename Selected Asset".
int cmdRename(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--name", "--threads"}, {});
    if (!a.problem.empty())
        return s.fail(a.problem);
    const auto name = a.value("--name");
    if (a.plain.empty() || !name || name->empty())
        return s.fail("needs the blueprints (.bin) and --name DISPLAYNAME");
    const auto threads = s.threads(a);
    if (!threads)
        return Error;
    s.start();
    std::vector<assets::AssetRow> rows;
    if (!s.requireRoot() || !rowsFromPaths(s, a.plain, rows))
        return Error;
    assets::BatchOptions o;
    o.command = "Change Name";
    o.threads = *threads;
    return report(s, assets::runBatch(s.ctx, rows, o, assets::changeNameEditor(*name, rows.size()), &s.ui));
}

// The lamp template of --template NAME (or the first of its kind), read from UKLights.txt.
bool chooseLamp(Session& s, const Arguments& a, bool head, assets::RsSettings& settings) {
    std::string error;
    const std::string text = readTemplate(s.ctx, "UKLights.txt", error);
    assets::LampTable table;
    if (!error.empty() || !assets::readLampTable(s.ctx.dataPath() / "Templates" / "UKLights.txt", table, error)) {
        s.fail(error);
        return false;
    }
    const auto& list = head ? table.heads : table.tails;
    if (list.empty()) {
        s.fail(std::string("UKLights.txt has no ") + (head ? "head" : "tail") + "-lamp template");
        return false;
    }
    const std::string wanted = a.value("--template").value_or(list.front().name);
    const auto found = std::find_if(list.begin(), list.end(), [&](const assets::LampTemplate& t) {
        return strcasecmp(t.name.c_str(), wanted.c_str()) == 0;
    });
    if (found == list.end()) {
        std::string names;
        for (const auto& t : list)
            names += "\n  " + t.name;
        s.fail("no lamp template '" + wanted + "'; UKLights.txt has:" + names);
        return false;
    }
    settings.lamp = *found;
    if (head) {
        const std::string type = a.value("--train-type").value_or("1");
        const auto& types = assets::trainTypes();
        for (std::size_t i = 0; i < types.size(); ++i)
            if (type == std::to_string(i + 1) || strcasecmp(type.c_str(), types[i].name) == 0)
                settings.trainType = static_cast<int>(i);
        if (type != std::to_string(settings.trainType + 1) && strcasecmp(type.c_str(), types[settings.trainType].name) != 0) {
            s.fail("--train-type takes 1 to " + std::to_string(types.size()) + " or the name of a train type");
            return false;
        }
    }
    return true;
}

// One of the rolling-stock edits on the named blueprints.
int cmdEditRs(Session& s) {
    const Arguments a = parseArguments(s.g.rest,
                                       {"--template", "--train-type", "--mass", "--capacity", "--old", "--new", "--as",
                                        "--name", "--suffix", "--threads"},
                                       {});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() < 2)
        return s.fail("needs the command and the blueprints (.bin); see velmora-cli assets edit-rs --help");
    const assets::RsCommandInfo* info = assets::rsCommand(a.plain.front());
    if (!info)
        return s.fail("no edit '" + a.plain.front() + "'; see velmora-cli assets edit-rs --help");
    const auto threads = s.threads(a);
    if (!threads)
        return Error;
    assets::RsSettings settings;
    settings.command = info->command;
    using C = assets::RsCommand;
    if (info->command == C::Mass) {
        if (!a.value("--mass") || !a.value("--capacity"))
            return s.fail("mass needs --mass and --capacity");
        settings.mass = *a.value("--mass");
        settings.capacity = *a.value("--capacity");
    }
    if (info->command == C::Provider) {
        if (!a.value("--old") || a.value("--old")->empty() || !a.value("--new"))
            return s.fail("provider needs --old WORD and --new WORD");
        settings.oldProvider = *a.value("--old");
        settings.newProvider = *a.value("--new");
    }
    s.start();
    std::vector<assets::AssetRow> rows;
    if (!s.requireRoot() || !rowsFromPaths(s, {a.plain.begin() + 1, a.plain.end()}, rows))
        return Error;
    if ((info->command == C::HeadLights || info->command == C::TailLights) &&
        !chooseLamp(s, a, info->command == C::HeadLights, settings))
        return Error;
    settings.assets = s.ctx.resolver.resolveForWrite(s.ctx.railWorks(), "Assets");
    if (const std::string error = assets::loadRsSettings(s.ctx, settings); !error.empty())
        return s.fail(error);

    assets::BatchOptions o;
    o.command = info->caption;
    o.threads = *threads;
    o.store = info->store;
    if (info->store == assets::Store::NewName) {
        // Each variant beside its source: the source's name with the command's suffix, or
        // --as and --name for a single blueprint.
        if ((a.value("--as") || a.value("--name")) && rows.size() > 1)
            return s.fail("--as and --name name the variant of a single blueprint");
        for (const auto& row : rows) {
            const std::string stem = assets::blueprintStem(row);
            assets::VariantName v = assets::withSuffix(stem, stem, a.value("--suffix").value_or(info->suffix));
            if (auto as = a.value("--as"))
                v.fileName = *as;
            if (auto name = a.value("--name"))
                v.displayName = *name;
            o.names.push_back(v);
        }
    }
    return report(s, assets::runBatch(s.ctx, rows, o,
                                      [&settings](const assets::RowInput& in) { return assets::editRow(settings, in); },
                                      &s.ui));
}

// `assets edit-rs --help`: each edit with the menu entry it stands for.
const char* editRsHelp() {
    static const std::string text = [] {
        std::string t = "COMMAND is one of (the entry of the asset screen's Edit Rolling Stock menu in brackets):\n";
        for (const auto& c : assets::rsCommands())
        {
            std::string word = c.word;
            word.resize(std::max<std::size_t>(word.size() + 1, 16), ' ');
            t += "  " + word + "\"" + c.caption + "\"" + (c.store == assets::Store::NewName ? " (a variant beside the source)" : "") + "\n";
        }
        t += "\nOptions:\n"
             "  --template NAME     head-lights, tail-lights: the lamp template of Templates/UKLights.txt (the first one when left out)\n"
             "  --train-type N      head-lights: 1 to 9 or the train type's name (1 \"Express Passenger\" when left out)\n"
             "  --mass M --capacity C   mass: the values every blueprint gets, written as typed\n"
             "  --old WORD --new WORD   provider: the Provider (or name word) replaced, as a whole tag value\n"
             "  --as NEWNAME [--name DISPLAYNAME]   a variant's file name and display name (one blueprint only);\n"
             "                      otherwise the source's name with the command's suffix\n"
             "  --suffix S          the suffix of the variants' names (dead: _Dead; dlgCoachName's are _MT, _DO, _PO,\n"
             "                      _ND, _DF, _DR, _DEAD); a variant of the source's own name replaces it, kept as its backup\n"
             "  --threads N         the number of threads (all cores when left out)\n"
             "\nEvery blueprint changed in place is kept as its numbered backup (.bak, .bak1 ...); the whole batch is one\n"
             "entry of the journal, so one `velmora-cli undo` takes it back. Exit 1 when a blueprint was passed over\n"
             "(named with the reason), 2 when the batch could not run.\n";
        return t;
    }();
    return text.c_str();
}

} // namespace

std::vector<Command> batchEditCommands() {
    return {
        {"assets rename", "PATH... --name DISPLAYNAME [--threads N]",
         "gives the blueprints a new display name, numbered when there are several (stored with backups)", cmdRename,
         true,
         "With several blueprints the name gets \" #\" unless it ends in \"#\"; the \"#\" becomes each one's number "
         "from 1. Exit 1 when a blueprint was passed over (named with the reason)."},
        {"assets edit-rs", "COMMAND PATH... [OPTIONS]",
         "a rolling-stock edit on the blueprints (see --help for the commands)", cmdEditRs, true, editRsHelp()},
    };
}

} // namespace velmora::cli
