#pragma once
// The commands of the asset screen that work on the grid's rows: find, delete, a row's
// picture, a vehicle's child entries, the smoke stack repair and the LocoInformation picture.

#include "velmora/assets/assetgrid.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velmora {
class AppContext;
}

namespace velmora::assets {

// Find: the text as typed, with its first letter upper-cased, or lower-cased, as a regular
// expression in one column (0 to 7), from row `from` on. Nothing when no row matches or the
// text is no valid expression (`error` then says why).
std::optional<std::size_t> findRow(const std::vector<AssetRow>& rows, int column, const std::string& text,
                                   std::size_t from, std::string* error = nullptr);
// Show All: every row that Find would stop at, in order.
std::vector<std::size_t> matchingRows(const std::vector<AssetRow>& rows, int column, const std::string& text);
// The same over the cells of any list (the content list's among them).
std::optional<std::size_t> findCellRow(const CellRows& rows, int column, const std::string& text,
                                       std::size_t from, std::string* error = nullptr);
std::vector<std::size_t> matchingCellRows(const CellRows& rows, int column, const std::string& text);

// "This will DELETE all selected files - You have been warned!!!" and its two further lines.
std::string deleteWarning();

struct DeleteResult {
    int deleted = 0;
    std::vector<std::string> errors; // file and reason
};
// Takes the files away through the write service, as one journal entry "Delete Selected": each
// keeps its numbered backup name, so one undo puts them all back. Files that are not there are
// passed over.
DeleteResult deleteFiles(AppContext& ctx, const std::vector<std::filesystem::path>& files);
// The files of the given rows below the simulator's Assets folder, deleted as above.
DeleteResult deleteRowFiles(AppContext& ctx, const std::vector<AssetRow>& rows);

struct RowPicture {
    enum class Source { Thumbnail, LocoInformation, Texture, NoPicture } source = Source::NoPicture;
    std::filesystem::path file; // the picture file, or the texture document
};
// Thumbnails/<Name>.jpg, else LocoInformation/image.png beside the blueprint, else the first
// texture of the blueprint's shape, else NoPicture.jpg from the program's folder.
RowPicture rowPicture(AppContext& ctx, const AssetRow& row);

// The child names of a blueprint's container, in order.
std::vector<std::string> childEntries(const std::string& xml);
// Cuts the child elements of these names out of the blueprint (at most 21 handled).
std::string removeChildEntries(std::string xml, const std::vector<std::string>& names);
// Puts the display name, as typed, into Name (from the first "<Name ") and the five languages.
void renameBlueprint(std::string& xml, const std::string& displayName);
// Each named child (at most 3) becomes "Main Smoke Stack".
std::string correctSmokeStack(std::string xml, const std::vector<std::string>& names);

struct StoreResult {
    bool ok = false;
    std::string message;
    std::filesystem::path written;
};
// Converts the blueprint and stores it as <fileName>.bin in the folder of `source`, replacing a
// file of that name after a numbered backup, and deletes the product's BluePrints.pak.
StoreResult storeBlueprint(AppContext& ctx, const std::filesystem::path& source, const std::string& xml,
                           std::string fileName);

// Add LocoInformation for one row: Thumbnails/<Name>.jpg becomes LocoInformation/image.png
// beside the blueprint. `toPng` gives a picture file's content as PNG, nothing when it cannot.
// Returns an empty string on success.
std::string addLocoInformation(AppContext& ctx, const AssetRow& row,
                               const std::function<std::optional<std::string>(const std::filesystem::path& jpg)>& toPng);

// "Search For Assets Details": every blueprint of this file name below the Assets folder (a
// final "xml" is taken as "bin"), with its provider, product, path, name and category. `tick`
// runs now and then, so that a screen stays alive and can call `stop`.
struct AssetDetail {
    std::string provider, product, path, name, category;
};
std::vector<AssetDetail> searchAssetDetails(const std::filesystem::path& assetsFolder, std::string fileName,
                                            const std::function<void()>& tick, const bool& stop);

// The simulator's cache of a product's blueprints, BluePrints.pak, is taken away after a
// blueprint of the product changed: the simulator builds it again from the blueprints. A cache
// is not the user's work, so it is deleted outright (and missing is fine).
void removeBlueprintCache(AppContext& ctx, const std::string& provider, const std::string& product);
// The same for the product that holds `blueprint` (a file below the Assets folder).
void removeBlueprintCacheOf(AppContext& ctx, const std::filesystem::path& blueprint);

// The blueprint file of a row: Assets\Provider\Product\Path, resolved without regard to case.
std::filesystem::path rowFile(AppContext& ctx, const AssetRow& row);

} // namespace velmora::assets
