// Cloning assets from the command line: an asset's folder, a vehicle's folder, a reskin
// blueprint, a scenery item with its own textures.

#include "session.h"
#include "velmora/assets/clone.h"
#include "velmora/core/services.h"

#include <algorithm>

namespace velmora::cli {

namespace {

using assets::CloneKind;

// NEWPATH below Assets: the folders, then the new file name (a ".bin" behind it is dropped).
bool splitNewPath(Session& s, const std::string& newPath, assets::CloneNames& names) {
    std::string path = newPath;
    while (!path.empty() && (path.back() == '/' || path.back() == '\\'))
        path.pop_back();
    const auto slash = path.find_last_of("/\\");
    if (slash == std::string::npos) {
        s.fail("--as " + newPath + ": give Provider/Product/Folder.../NewFile below Assets");
        return false;
    }
    names.targetFolder = path.substr(0, slash);
    names.fileName = path.substr(slash + 1);
    if (iendsWith(names.fileName, ".bin"))
        names.fileName.resize(names.fileName.size() - 4);
    return true;
}

int runClone(Session& s, CloneKind kind, const std::vector<std::string>& options, const char* needs) {
    const Arguments a = parseArguments(s.g.rest, options, {});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() != 1 || !a.value("--as"))
        return s.fail(needs);
    s.start();
    std::vector<assets::AssetRow> rows;
    if (!s.requireRoot() || !rowsFromPaths(s, a.plain, rows))
        return Error;
    const assets::AssetRow& row = rows.front();
    assets::CloneNames names = assets::clonePrefill(s.ctx, row, kind);
    if (kind == CloneKind::Vehicle) {
        names.targetFolder = *a.value("--as");
        // The vehicle keeps its blueprint's name unless told otherwise.
        const std::string file = row.path.substr(row.path.find_last_of('\\') + 1);
        names.fileName = a.value("--file").value_or(fs::path(file).stem().string());
    } else if (!splitNewPath(s, *a.value("--as"), names)) {
        return Error;
    }
    if (auto display = a.value("--name"))
        names.displayName = *display;
    if (auto category = a.value("--category")) {
        const auto& known = assets::cloneCategories();
        const auto it = std::find_if(known.begin(), known.end(),
                                     [&](const std::string& c) { return iequals(c, *category); });
        if (it == known.end()) {
            std::string list;
            for (const auto& c : known)
                list += (list.empty() ? "" : ", ") + c;
            return s.fail("--category " + *category + ": one of " + list);
        }
        names.category = *it;
    }
    const assets::CloneResult r = assets::cloneRow(s.ctx, row, kind, names, &s.ui);
    for (const auto& f : r.written)
        s.out << "Wrote " << shown(f.string()) << '\n';
    for (const auto& m : r.missing)
        s.out << "Missing: " << shown(m) << '\n';
    for (const auto& p : r.skipped)
        s.out << "Passed over: " << shown(p) << '\n';
    if (!r.ok)
        return s.fail(r.message);
    if (!s.g.quiet)
        s.out << shown(r.message) << '\n';
    return r.missing.empty() && r.skipped.empty() ? Success : ProblemsFound;
}

int cmdClone(Session& s) {
    return runClone(s, CloneKind::Asset, {"--as", "--name"},
                    "needs the blueprint and --as Provider/Product/Folder/NewFile");
}

int cmdCloneVehicle(Session& s) {
    return runClone(s, CloneKind::Vehicle, {"--as", "--name", "--file"},
                    "needs the blueprint and --as Provider/Product/Folder (the new vehicle folder's place)");
}

int cmdReskin(Session& s) {
    return runClone(s, CloneKind::ReskinBlueprint, {"--as", "--name", "--category"},
                    "needs the blueprint and --as Provider/Product/Folder/NewFile");
}

int cmdCloneSceneryReskin(Session& s) {
    return runClone(s, CloneKind::SceneryReskin, {"--as", "--name"},
                    "needs the blueprint and --as Provider/Product/Folder/NewFile");
}

} // namespace

std::vector<Command> cloneCommands() {
    return {
        {"assets clone", "PATH --as NEWPATH [--name DISPLAYNAME]",
         "a copy of the blueprint's folder as NEWPATH (Provider/Product/Folder.../NewFile) with every path "
         "into "
         "it moved along (exit 1 if files were passed over)",
         cmdClone},
        {"assets clone-vehicle", "PATH --as NEWFOLDER [--name DISPLAYNAME] [--file NEWFILE]",
         "a copy of the vehicle's folder (the one above the blueprint's) below NEWFOLDER", cmdCloneVehicle},
        {"assets reskin", "PATH --as NEWPATH [--name DISPLAYNAME] [--category C]",
         "a reskin blueprint of the item with a copy of its one skin texture (exit 1 if textures are "
         "missing)",
         cmdReskin},
        {"assets clone-scenery-reskin", "PATH --as NEWPATH [--name DISPLAYNAME]",
         "a scenery item with its own copies of blueprint, shape and textures (in NEWPATH's Textures folder)",
         cmdCloneSceneryReskin},
    };
}

} // namespace velmora::cli
