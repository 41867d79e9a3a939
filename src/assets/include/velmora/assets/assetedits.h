#pragma once
// The "Edit Assets" commands: changes to any kind of asset, scenery as much as rolling stock.
// Level-of-detail distances and emissive lighting are changed in the item's shape (.GeoPcDx),
// reached from a blueprint through its GeometryID or named by the row itself; the category,
// names and language tables in the blueprint; Make Better Snow overwrites winter textures
// whole. Every edit only changes text and says what to store; the row loop of batchedit.h
// converts and writes, and one undo takes a whole batch back.

#include "velmora/assets/batchedit.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {
class AppContext;
class PathResolver;
} // namespace velmora

namespace velmora::assets {

enum class EditCommand {
    Lod,          // mnuLod: level-of-detail distances of the shapes
    Category,     // mnuCategory
    Name,         // mnuChangeName (and Command17)
    LocoName,     // mnuCNLK: Name, Localized and Key
    ZeroEmissive, // mnuZero: EmissiveAsVec of the shapes
    Snow,         // mnuSnow: winter textures overwritten by the deep snow one
    EnglishOnly,  // mnuEnglish
    MakeSource,   // mnuMakeSource: a folder, no batch
    Delete        // mnuDel: the selected files, no batch
};

struct EditCommandInfo {
    EditCommand command;
    const char* word;     // the command line's word: lod, category, name, ...
    const char* menuName; // mnuLod ...
    int langEntry;        // the menu caption's entry in the language table (0: none)
    const char* caption;  // the caption in English
    bool shapes;          // works on the shapes (.GeoPcDx), not on the blueprints
    bool removesCache;    // BluePrints.pak of every product touched is deleted afterwards
};
// In menu order.
const std::vector<EditCommandInfo>& editCommands();
// By its command-line word; nullptr when there is none.
const EditCommandInfo* editCommand(std::string_view word);

// A distance as the shapes hold it: "####.0000" (no thousands separator, four decimals).
std::string lodText(double distance);
// Change LODs on a shape's text: every <e> of every <LOD> block (up to 50, stopping at a 0)
// rescaled from the old smallest..largest onto min..max, whole numbers; one distance (or all
// equal) becomes `min`. Returns how many distances were written (0: no LOD block).
std::size_t rescaleLods(std::string& shapeXml, double min, double max);
// Zero EmissiveAsVec on a shape's text: behind each <AmbientAsVec the EmissiveAsVec becomes
// "0.0000 0.0000 0.0000 0.0000". Returns how many were changed.
std::size_t zeroEmissive(std::string& shapeXml);

// The shape a row stands for: the row itself when it names a .GeoPcDx, else its blueprint's
// GeometryID (without its [..] part) below Assets, found in any letter case. Empty when the
// blueprint has no GeometryID or the shape does not exist.
std::filesystem::path shapeOfRow(const RowInput& input, const PathResolver& resolver);
// A blueprint's GeometryID without its [..] part; empty when it has none.
std::string geometryOf(const std::string& blueprintXml);
// Whether a file is a shape (.GeoPcDx) or a texture (.TgPcDx), whatever the letter case.
bool isShapeFile(const std::filesystem::path& file);
bool isTextureFile(const std::filesystem::path& file);

// The typed category as the documents hold it: a leading "e" added when missing.
std::string categoryText(std::string typed);
// Change Category on a blueprint's text: the value of <Category, or a new Category line
// behind </Description> when there is none.
void putCategory(std::string& xml, const std::string& category);
// Change Loco Name/Localized/Key on a blueprint's text: the display names as Change Name does,
// the first Key emptied, and where the blueprint has an EngineType, EngineName and the English
// name behind it take the name and the Key behind it is emptied too.
void putLocoName(std::string& xml, const std::string& name);
// Make English Only on a blueprint's text: in every localised string only the English line
// stays (French .. Russian and the Other pairs are cut). Returns how many strings were cut.
std::size_t englishOnly(std::string& xml);

// What a batch command needs besides the rows: the choices the user made.
struct EditSettings {
    EditCommand command{};
    double minLod = 0, maxLod = 0;  // Text3, Text4 of the asset screen
    std::string typed;              // category or name, as typed (UTF-8)
    std::size_t count = 0;          // the number of rows (names are numbered when above 1)
    std::string snowTexture;        // the bytes of Templates/Snow000_Deep.TgPcDx
    const PathResolver* resolver = nullptr;
};
// Checks the choices and reads what the command needs (the snow texture, the numbers) before
// any row is touched. Returns an empty string, or what is wrong, naming the file.
std::string loadEditSettings(AppContext& ctx, EditSettings& settings);
// The batch options the command runs with (rows read or not, cache kept or not).
BatchOptions editBatchOptions(const EditSettings& settings);
// The command's edit of one row. Safe to call on several threads at once.
RowEdit editAssetRow(const EditSettings& settings, const RowInput& input);

// Make Equivalent Source Folder: the folder below the simulator's Source folder that mirrors a
// folder below Assets. Empty, with `error` set, when `folder` is not below Assets.
std::filesystem::path sourceFolderFor(AppContext& ctx, const std::filesystem::path& folder, std::string& error);
// Creates it (and its parents) when missing; returns an empty string or the error.
std::string makeSourceFolder(AppContext& ctx, const std::filesystem::path& folder);

} // namespace velmora::assets
