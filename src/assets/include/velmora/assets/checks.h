#pragma once
// What a blueprint needs and what of it is missing: the loco check, the files-used reports, the
// audio and texture walks, Use in Scenarios, and the missing-assets package. Every document is
// converted in memory and read as text; every path found in it is resolved below the simulator's
// Assets folder without regard to letter case.

#include "velmora/assets/assetgrid.h"

#include <filesystem>
#include <string>
#include <vector>

namespace velmora {
class AppContext;
}

namespace velmora::assets {

// One line of a report: a file the blueprint uses, whether it is missing, and the text the
// report shows for it.
struct ReportLine {
    std::string text;
    std::string path; // the file, empty for headers and blank lines
    bool missing = false;
};

struct Report {
    std::vector<ReportLine> lines;
    bool anyMissing() const;
    // The lines joined with CR LF, or "No errors found" when there are none.
    std::string text() const;
};

// How a texture reference of a shape is written down after it is found.
enum class TextureWalk {
    List,        // every texture, repaired when missing (the file lists)
    CheckMissing, // only the missing ones, as "<path> Called by <shape>" (the loco check)
    Show,        // every texture, untested (the files-used reports)
};

// The shared state of the asset screen's checks: the file list buffer that several commands
// append to, and the current file that the texture and audio lines name.
class AssetChecks {
public:
    explicit AssetChecks(AppContext& ctx);

    Report fileList;          // the shared file list buffer
    std::string currentFile;  // named in "Called by" lines
    // Documents that exist but could not be read, "<file>: <reason>", each also in the error
    // log: the reports then lack what those documents name.
    std::vector<std::string> unreadable;

    // Check Loco for missing files.
    Report checkLoco(const std::vector<AssetRow>& rows);
    // Show Files Used by Locos / by Wagons.
    Report filesUsedByLocos(const std::vector<AssetRow>& rows);
    Report filesUsedByWagons(const std::vector<AssetRow>& rows);
    // Show files used by Asset / by Lofts; the lines go through the file list buffer, which is
    // handed back and cleared.
    Report filesUsedByAsset(const std::vector<AssetRow>& rows);
    Report filesUsedByLofts(const std::vector<AssetRow>& rows);
    // The file list of the selected blueprints, ended by a line "+++".
    Report getAssetBits(const std::vector<AssetRow>& rows);

    // The proxies and sound files of an audio blueprint, into the file list buffer.
    void GetAudio(const std::filesystem::path& blueprint);
    // The textures of one shape (its XML) into `out`.
    void textures(const std::string& shapeXml, const std::string& shapeRelative, TextureWalk walk, Report& out);

    // Use in Scenarios: sets ValidInScenarios to eTrue (and an empty Category to
    // eUncategorised) and stores the blueprint with a backup. Returns the messages of rows
    // that could not be stored; `inScene` gets the rows whose cell is now "Yes".
    std::vector<std::string> useInScenarios(std::vector<AssetRow>& rows);

    // Reports/MissingFiles.txt into NewPackage/Assets under the program's folder, with the
    // seasonal variants of textures. Returns the message to show, empty on success.
    std::string packageMissingAssets(int* copied = nullptr);
    // The rows of the blueprints named in Reports/MissingAssets.csv, or the message to show.
    std::string missingAssetRows(std::vector<AssetRow>& rows, const std::string& mask, const std::string& category);

    // A texture value of a shape read as a path below Assets, as the route check reads a value
    // that is neither "text..." nor "..\...": the file when it is there, else empty.
    std::filesystem::path textureAsWritten(const std::string& value) const;

    // Assets\ + a relative path, as a file on disk (found whatever its letter case), and
    // whether it exists, after the name repair when it is not found at first.
    std::filesystem::path resolve(const std::string& relative, bool& exists, bool repair = true) const;

private:
    struct Tag;
    enum class Walk { Check, ShowLoco, ShowWagon };
    Report walkRows(const std::vector<AssetRow>& rows, Walk walk);
    void walkTags(const std::string& xml, Walk walk, Report& report);
    void shapeOfAsset(const std::string& xml, const std::string& product, Report& out, bool loft);
    void GetLoftBits(const std::string& xml, Report& out);
    void animationsAndAudio(const std::string& xml, const AssetRow& row);
    std::string convert(const std::filesystem::path& file);

    AppContext& m_ctx;
    const char* m_procedure = "GetAssetBits"; // the command that logs a document it could not read
};

// The path a texture value of a shape names, below Assets: the [xx] code taken out, "..\" climbed
// from the shape's folder. `shapeRelative` is the shape's path below Assets with backslashes.
std::string texturePath(std::string value, const std::string& shapeRelative);

// The values of a shape's texture lists (its <TextureByName> blocks), in order; with
// `skipBlobs` the lines of binary data are passed over.
std::vector<std::string> textureValues(const std::string& shapeXml, bool skipBlobs = false);

// A value with its "[xx]" part (a texture code or a level of detail) taken out.
std::string withoutBracket(std::string value);

// The row of a blueprint given by a path, full or below Assets; false when it lies outside.
bool rowForBlueprint(const std::string& path, const std::filesystem::path& assetsFolder, AssetRow& row);

} // namespace velmora::assets
