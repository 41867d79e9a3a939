// The Edit Assets commands from the command line: level-of-detail distances, categories,
// names, emissive lighting, deep snow textures and language tables of the named items, a
// Source folder to match an Assets folder, and deleting items. Each batch is one journal entry;
// the output names every file written and every item passed over with the reason. Exit 1 when
// items were passed over, 2 when the command could not run.

#include "session.h"

#include "velmora/assets/assetedits.h"
#include "velmora/assets/batchedit.h"
#include "velmora/assets/listcommands.h"
#include "velmora/core/paths.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <strings.h>

namespace velmora::cli {

namespace {

std::optional<double> distance(const std::optional<std::string>& text) {
    if (!text || text->empty())
        return std::nullopt;
    char* end = nullptr;
    const double value = std::strtod(text->c_str(), &end);
    if (!end || *end != '\0' || !std::isfinite(value))
        return std::nullopt;
    return value;
}

// Make Equivalent Source Folder: a relative FOLDER is taken below the Assets folder unless it
// starts with Assets itself.
int makeSource(Session& s, const std::vector<std::string>& words) {
    if (words.size() != 1)
        return s.fail("make-source needs one folder below Assets");
    s.start();
    if (!s.requireRoot())
        return Error;
    fs::path folder = words.front();
    if (folder.is_relative() && strcasecmp(folder.begin()->string().c_str(), "Assets") != 0)
        folder = s.ctx.resolver.resolveForWrite(s.ctx.railWorks(), "Assets") / folder;
    std::string error;
    const fs::path target = assets::sourceFolderFor(s.ctx, folder, error);
    if (target.empty())
        return s.fail(error);
    const bool existed = fs::is_directory(target);
    if (const std::string made = assets::makeSourceFolder(s.ctx, folder); !made.empty())
        return s.fail(made);
    s.out << (existed ? "The folder exists already: " : "Made ") << target.string() << '\n';
    return Success;
}

// Delete Selected: the warning must be answered (--yes); every file keeps its backup name, so
// one undo puts them back.
int deleteItems(Session& s, const std::vector<std::string>& words) {
    if (words.empty())
        return s.fail("delete needs the files below Assets");
    s.start();
    std::vector<assets::AssetRow> rows;
    if (!s.requireRoot() || !rowsFromPaths(s, words, rows))
        return Error;
    if (s.ui.ask(assets::deleteWarning(), Buttons::OkCancel, Icon::Warning, "Delete Selected") != Answer::Ok) {
        s.out << "Nothing was deleted.\n";
        return Success;
    }
    std::vector<std::string> missing;
    for (const auto& row : rows)
        if (!fs::is_regular_file(assets::rowFile(s.ctx, row)))
            missing.push_back(row.relativePath());
    const assets::DeleteResult r = assets::deleteRowFiles(s.ctx, rows);
    s.out << r.deleted << (r.deleted == 1 ? " file" : " files") << " deleted (each kept as its backup).\n";
    for (const auto& m : missing)
        s.out << "  " << m << ": not there; passed over\n";
    for (const auto& e : r.errors)
        s.err << "velmora-cli: assets edit: " << e << '\n';
    return r.errors.empty() && missing.empty() ? Success : ProblemsFound;
}

int cmdEdit(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--min", "--max", "--category", "--name", "--threads"}, {});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.empty())
        return s.fail("needs the command and the items; see velmora-cli assets edit --help");
    const assets::EditCommandInfo* info = assets::editCommand(a.plain.front());
    if (!info)
        return s.fail("no edit '" + a.plain.front() + "'; see velmora-cli assets edit --help");
    const std::vector<std::string> words(a.plain.begin() + 1, a.plain.end());
    using C = assets::EditCommand;
    if (info->command == C::MakeSource)
        return makeSource(s, words);
    if (info->command == C::Delete)
        return deleteItems(s, words);
    if (words.empty())
        return s.fail(std::string(info->word) + " needs the items (blueprints, shapes or textures below Assets)");
    const auto threads = s.threads(a);
    if (!threads)
        return Error;

    assets::EditSettings settings;
    settings.command = info->command;
    if (info->command == C::Lod) {
        const auto min = distance(a.value("--min")), max = distance(a.value("--max"));
        if (!min || !max)
            return s.fail("lod needs --min and --max, each a distance in metres");
        settings.minLod = *min;
        settings.maxLod = *max;
    }
    if (info->command == C::Category)
        settings.typed = a.value("--category").value_or("eExcludeFromBrowserList");
    if (info->command == C::Name || info->command == C::LocoName) {
        if (!a.value("--name") || a.value("--name")->empty())
            return s.fail(std::string(info->word) + " needs --name NAME");
        settings.typed = *a.value("--name");
    }
    s.start();
    std::vector<assets::AssetRow> rows;
    if (!s.requireRoot() || !rowsFromPaths(s, words, rows))
        return Error;
    settings.count = rows.size();
    if (const std::string error = assets::loadEditSettings(s.ctx, settings); !error.empty())
        return s.fail(error);
    assets::BatchOptions o = assets::editBatchOptions(settings);
    o.threads = *threads;
    const assets::BatchResult r = assets::runBatch(
        s.ctx, rows, o, [&settings](const assets::RowInput& in) { return assets::editAssetRow(settings, in); }, &s.ui);
    if (!r.error.empty())
        return s.fail(r.error);
    s.out << assets::describe(r);
    return r.passedOver.empty() ? Success : ProblemsFound;
}

// `assets edit --help`: each edit with the menu entry it stands for.
const char* editHelp() {
    static const std::string text = [] {
        std::string t = "COMMAND is one of (the entry of the asset screen's Edit Assets menu in brackets):\n";
        for (const auto& c : assets::editCommands()) {
            std::string word = c.word;
            word.resize(std::max<std::size_t>(word.size() + 1, 16), ' ');
            t += "  " + word + "\"" + c.caption + "\"" + (c.shapes ? " (on the items' shapes)" : "") + "\n";
        }
        t += "\nOptions:\n"
             "  --min M --max M     lod: the smallest and largest distance; those between are spread in proportion,\n"
             "                      as whole metres; a shape with one distance gets the smallest\n"
             "  --category C        category: the category (eExcludeFromBrowserList when left out; a leading e is added)\n"
             "  --name N            name, loco-name: the display name; with several items \" #\" is added unless it\n"
             "                      ends in \"#\", and the \"#\" becomes each one's number from 1; loco-name also sets the\n"
             "                      engine's name and empties the Key entries\n"
             "  --threads N         the number of threads (all cores when left out)\n"
             "\nlod and zero-emissive take blueprints (their GeometryID names the shape) or shapes (.GeoPcDx); snow\n"
             "takes textures (.TgPcDx) and writes Templates/Snow000_Deep.TgPcDx over each; make-source FOLDER makes\n"
             "the folder below Source that matches FOLDER below Assets; delete PATH... deletes the files (answer the\n"
             "warning with --yes).\n"
             "\nEvery file written keeps the old one as its numbered backup (.bak, .bak1 ...); the whole batch is one\n"
             "entry of the journal, so one `velmora-cli undo` takes it back. Exit 1 when an item was passed over\n"
             "(named with the reason), 2 when the command could not run.\n";
        return t;
    }();
    return text.c_str();
}

} // namespace

std::vector<Command> assetEditCommands() {
    return {
        {"assets edit", "COMMAND PATH... [--min M --max M] [--category C] [--name N] [--threads N]",
         "an Edit Assets command on the items (see --help for the commands)", cmdEdit, true, editHelp()},
    };
}

} // namespace velmora::cli
