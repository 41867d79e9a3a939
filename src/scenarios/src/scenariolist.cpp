// The scenario list's commands: finding a scenario, its saved copies, CurrentSave.bin and its
// hash file, removing empty consists.

#include "velmora/scenarios/scenariolist.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/userinterface.h"

#include <algorithm>

namespace velmora::scenarios {

namespace {

const char* const kCurrentSave = "CurrentSave.bin";

// The file of that name in the folder, whatever its letter case, or the name as given.
fs::path inFolder(AppContext& ctx, const fs::path& folder, const std::string& name) {
    return ctx.resolver.resolve(folder, name).value_or(folder / fs::path(std::u8string(name.begin(), name.end())));
}

bool isDocumentName(std::string_view name) {
    return iequals(name, "Scenario.bin") || iequals(name, "ScenarioNetworkProperties.bin");
}

WriteOptions scenarioBackup() {
    WriteOptions o;
    o.backupStem = "Scenario";
    return o;
}

} // namespace

std::optional<ScenarioRef> findScenario(AppContext& ctx, const RouteEntry& route, const std::string& key) {
    // A folder name is looked at alone; only a display name needs the whole list.
    if (!key.empty() && key.find_first_of("/\\") == std::string::npos && key != "." && key != "..")
        if (const auto folder = ctx.resolver.resolve(route.path, "Scenarios\\" + key))
            if (auto entry = routes::readScenarioEntry(ctx, *folder))
                return ScenarioRef{route, std::move(*entry), *folder};
    const auto scenarios = routes::listScenarios(ctx, route);
    auto make = [&](const ScenarioEntry& s) -> std::optional<ScenarioRef> {
        const auto folder = ctx.resolver.resolve(route.path, "Scenarios\\" + s.folder);
        if (!folder)
            return std::nullopt;
        return ScenarioRef{route, s, *folder};
    };
    for (const auto& s : scenarios)
        if (iequals(s.folder, key))
            return make(s);
    for (const auto& s : scenarios)
        if (sameName(s.name, key))
            return make(s);
    return std::nullopt;
}

std::vector<std::string> invalidScenarios(AppContext& ctx, const RouteEntry& route) {
    std::vector<std::string> out;
    const auto scenarios = ctx.resolver.resolve(route.path, "Scenarios");
    if (!scenarios)
        return out;
    std::error_code ec;
    for (fs::directory_iterator it(*scenarios, ec), end; !ec && it != end; it.increment(ec))
        if (entryKind(*it) == EntryKind::Folder && !ctx.resolver.exists(it->path(), "ScenarioProperties.xml"))
            out.push_back(it->path().filename().string());
    std::sort(out.begin(), out.end());
    return out;
}

std::vector<SavedCopy> savedCopies(const fs::path& folder) {
    std::vector<SavedCopy> out;
    std::vector<std::string> names;
    std::error_code ec;
    for (fs::directory_iterator it(folder, fs::directory_options::skip_permission_denied, ec);
         !ec && it != fs::directory_iterator(); it.increment(ec))
        if (entryKind(*it) == EntryKind::File)
            names.push_back(it->path().filename().string());
    std::sort(names.begin(), names.end(),
              [](const std::string& a, const std::string& b) { return toLowerAscii(a) < toLowerAscii(b); });
    for (const auto& n : names) {
        if (!iendsWith(n, ".bin"))
            continue;
        const bool md5 = std::any_of(names.begin(), names.end(), [&](const std::string& m) { return iequals(m, n + ".MD5"); });
        out.push_back({n, md5, isDocumentName(n)});
    }
    return out;
}

CommandResult saveCurrentSaveAs(AppContext& ctx, const fs::path& folder, const std::string& typed) {
    CommandResult r;
    const fs::path source = inFolder(ctx, folder, kCurrentSave);
    if (!fs::is_regular_file(source)) {
        r.message = source.string() + ": there is no such file to save.";
        return r;
    }
    std::string name = fileNameFromText(typed);
    if (!iendsWith(name, ".bin"))
        name += ".bin";
    if (iequals(name, kCurrentSave) || isDocumentName(name)) {
        r.message = "The name " + name + " is taken by the scenario's own files; choose another.";
        return r;
    }
    JournalCommand entry(&ctx.journal(), "Save CurrentSave.bin As");
    const fs::path target = inFolder(ctx, folder, name);
    WriteResult w = ctx.files().copy(source, target);
    if (!w) {
        r.message = w.message;
        return r;
    }
    r.written.push_back(w.target);
    const fs::path md5 = inFolder(ctx, folder, std::string(kCurrentSave) + ".MD5");
    if (fs::is_regular_file(md5)) {
        w = ctx.files().copy(md5, fs::path(target) += ".MD5");
        if (!w) {
            r.message = w.message;
            return r;
        }
        r.written.push_back(w.target);
    }
    ctx.resolver.invalidate(folder);
    r.ok = true;
    r.message = "CurrentSave.bin was saved as " + target.string();
    return r;
}

CommandResult overwriteCurrentSave(AppContext& ctx, const fs::path& folder, const std::string& selected) {
    CommandResult r;
    // Only a file listed among the folder's saved copies can be chosen: no path leads elsewhere.
    const auto copies = savedCopies(folder);
    const auto chosen = std::find_if(copies.begin(), copies.end(), [&](const SavedCopy& c) { return iequals(c.name, selected); });
    if (chosen == copies.end()) {
        r.message = "There is no saved copy " + selected + " in " + folder.string() + ".";
        return r;
    }
    if (iequals(chosen->name, kCurrentSave)) {
        r.message = "The selected file is CurrentSave.bin itself; nothing was changed.";
        return r;
    }
    if (ctx.ui().ask("This operation will delete your CurrentSave.bin file for this Scenario and replace it\n"
                     "with the selected file. Proceed?",
                     Buttons::YesNo) != Answer::Yes) {
        r.message = "Nothing was changed.";
        return r;
    }
    JournalCommand entry(&ctx.journal(), "Overwrite CurrentSave.bin with Selected file");
    const fs::path source = folder / chosen->name;
    const fs::path target = inFolder(ctx, folder, kCurrentSave);
    WriteResult w = ctx.files().copy(source, target);
    if (!w) {
        r.message = w.message;
        return r;
    }
    r.written.push_back(w.target);
    const fs::path oldMd5 = inFolder(ctx, folder, std::string(kCurrentSave) + ".MD5");
    if (chosen->md5) {
        w = ctx.files().copy(inFolder(ctx, folder, chosen->name + ".MD5"), oldMd5);
    } else if (fs::exists(oldMd5)) {
        w = ctx.files().remove(oldMd5); // its hash would not be the new save's
    }
    if (!w) {
        r.message = w.message;
        return r;
    }
    ctx.resolver.invalidate(folder);
    r.ok = true;
    r.message = "CurrentSave.bin was replaced by " + chosen->name;
    return r;
}

CommandResult deleteCurrentSave(AppContext& ctx, const fs::path& folder) {
    CommandResult r;
    JournalCommand entry(&ctx.journal(), "Delete CurrentSave.bin");
    for (const std::string& name : {std::string(kCurrentSave), std::string(kCurrentSave) + ".MD5"}) {
        const fs::path file = inFolder(ctx, folder, name);
        if (!fs::exists(file))
            continue;
        const WriteResult w = ctx.files().remove(file);
        if (!w) {
            r.message = w.message;
            return r;
        }
        r.written.push_back(w.backup);
    }
    ctx.resolver.invalidate(folder);
    r.ok = true;
    r.message = r.written.empty() ? "There is no CurrentSave.bin in " + folder.string() + "."
                                  : "CurrentSave.bin was deleted (kept as " + r.written.front().filename().string() + ").";
    return r;
}

std::string withoutEmptyConsists(const std::string& text, int& removed) {
    removed = 0;
    std::string out = text;
    constexpr std::string_view open = "<cConsist d:id";
    for (std::size_t a = out.find(open); a != std::string::npos;) {
        std::size_t b = out.find(open, a + 1);
        if (b == std::string::npos) {
            const std::size_t close = out.find("</cConsist", a);
            if (close == std::string::npos)
                break;
            b = close + 11;
        }
        const std::size_t vehicle = out.find("<cOwnedEntity", a);
        if (vehicle == std::string::npos || vehicle >= b) {
            out.erase(a, b - a);
            ++removed;
            a = out.find(open, a); // go on from the same place
        } else {
            a = out.find(open, a + 1);
        }
    }
    return out;
}

CommandResult removeEmptyConsists(AppContext& ctx, const fs::path& folder) {
    CommandResult r;
    const fs::path file = inFolder(ctx, folder, "Scenario.bin");
    std::string xml;
    if (const ConvertResult c = binToXmlText(file, xml); !c) {
        r.message = c.message.find(file.string()) == std::string::npos ? file.string() + ": " + c.message : c.message;
        return r;
    }
    int removed = 0;
    const std::string changed = withoutEmptyConsists(xml, removed);
    if (removed == 0) {
        r.ok = true;
        r.message = "No empty consists were found in " + file.string() + "; nothing was changed.";
        return r;
    }
    std::string bin;
    if (const ConvertResult c = xmlTextToBin(changed, bin, file.string()); !c) {
        r.message = c.message + " Nothing was changed.";
        return r;
    }
    JournalCommand entry(&ctx.journal(), "Remove Empty Consists");
    const WriteResult w = ctx.files().write(file, bin, scenarioBackup());
    if (!w) {
        r.message = w.message;
        return r;
    }
    ctx.resolver.invalidate(folder);
    r.ok = true;
    r.written.push_back(w.target);
    r.message = std::to_string(removed) + " empty consist(s) removed from " + file.string() +
                (w.backup.empty() ? std::string() : "; the old file is kept as " + w.backup.filename().string()) + ".";
    return r;
}

} // namespace velmora::scenarios
