#pragma once
// Cloning: new assets made from existing ones. An exact copy of a blueprint's folder under a new
// name, of a whole vehicle folder, a small reskin blueprint that re-textures its source, or a
// scenery item with its own copies of shape and textures. Every file goes through the write
// service inside one journal entry, so one undo takes a clone back.

#include "velmora/assets/assetgrid.h"

#include <filesystem>
#include <string>
#include <vector>

namespace velmora {
class AppContext;
class UserInterface;
} // namespace velmora

namespace velmora::assets {

enum class CloneKind {
    Asset,           // mnuClone "Clone selected Asset": the blueprint's folder
    Vehicle,         // mnuCloneDefault "Clone Selected rolling-stock": the vehicle's folder
    ReskinBlueprint, // mnuRB "Clone for Reskin Blueprint"
    SceneryReskin,   // mnuCloneReskin "Clone Scenery for ReSkinning"
};

// The names of a clone as the dialogs take them.
struct CloneNames {
    std::string fileName; // without extension
    std::string displayName;
    std::string targetFolder; // below Assets, Provider\Product\...\ ('/' accepted)
    std::string category;     // dlgNewName22's combo text (reskin blueprints)
};

// The dialog's prefills for a row: source file name + "_", display name + "_", the default
// target folder + "\".
CloneNames clonePrefill(AppContext& ctx, const AssetRow& row, CloneKind kind);

// The entries of dlgNewName22's category box, in order.
const std::vector<std::string>& cloneCategories();
// The browse category a reskin blueprint gets for a category of that box ("eRailVehicles" ...).
std::string categoryValue(const std::string& category);

struct CloneResult {
    bool ok = false;
    std::string message;
    std::vector<std::filesystem::path> written;
    // Lines for the shared file list buffer: textures that were not found.
    std::vector<std::string> missing;
    // Links, FIFOs, devices and unreadable files of the source folder, each named with why.
    std::vector<std::string> skipped;
};

// One row cloned, in a journal entry of its own (a caller that has one open for several rows
// gets them all in that one). Questions (a target that holds files already) go to `ui`; without
// a yes nothing is written.
CloneResult cloneRow(AppContext& ctx, const AssetRow& row, CloneKind kind, const CloneNames& names,
                     UserInterface* ui);

// A target folder below Assets as its elements, or empty with `problem` set: no "..", no
// absolute path or drive, no ':' or control characters, at least Provider\Product\Folder.
std::vector<std::string> targetElements(const std::string& targetFolder, std::string& problem);

// The blueprint text of a clone: every path that points into `sourceFolder` (below Assets,
// Provider\Product\...) points to the same place below `targetFolder` instead, compared
// without regard to case: Provider\Product\... strings and blueprint references alike. Paths
// outside the source folder stay as they are.
std::string repointPaths(const std::string& xml, const std::string& sourceFolder,
                         const std::string& targetFolder);

} // namespace velmora::assets
