#pragma once
// Add to List: the rows of the asset grid from a walk of the Assets tree. Path tests come
// first, so most files are decided before one is opened; the blueprints that remain are
// converted in this process, on all cores, and the rows are merged in the walk's order, so the
// list and its Index numbers are the same whatever the number of threads.

#include "velmora/assets/assetgrid.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velmora {
class ErrorLog;
class UserInterface;
}

namespace velmora::assets {

struct AssetListOptions {
    std::string mask = "*.bin";      // Text1; empty means "*.*"
    std::string category;            // Text5; "Freight" is taken as "Freight Wagon"
    bool rollingStockOnly = false;   // Check1
    bool excludePreload = false;     // Check3
    bool defaultFolders = false;     // Check4
    bool convertBins = true;         // false until the screen's first Add to List
    std::optional<std::string> singleFile; // Process Missing Assets File: only this name
    std::string languageTag = "English";   // the name in the user's language first
    bool quickDriveConsists = false; // List QD consists: only PreLoad files, its own exclusions
    bool zeroLength = false;         // Find Zero Length Files: files of at most one byte
    int threads = 0;                 // 0: one per core
    ErrorLog* log = nullptr;         // where files and folders that cannot be read are logged
};

struct AssetListResult {
    std::vector<AssetRow> rows;
    std::vector<std::string> messages; // "<file> is invalid and contains errors", in walk order
    // Blueprints and folders that could not be read, "<path>: <reason>": the rows are then not
    // the whole list, and this says so.
    std::vector<std::string> unreadable;
    std::string categoryFilter;        // the filter as it stands after the build
    long converted = 0;                // blueprints opened
    bool stopped = false;
};

// One blueprint's row from its XML, or nothing when the row is left out; `index` stays empty.
// `full` is the path with backslashes; `name` its file name.
std::optional<AssetRow> blueprintRow(const std::string& xml, const std::string& provider, const std::string& product,
                                     const std::string& path, const AssetListOptions& options);

// Whether the path tests let a file through before it is opened.
bool passesPathTests(const std::string& fullWithBackslashes, const std::string& name, const AssetListOptions& options);

// Walks `startFolder` and builds the rows. Progress and Stop through `ui` (may be null).
AssetListResult buildAssetList(const std::filesystem::path& startFolder, const AssetListOptions& options,
                               UserInterface* ui = nullptr);

} // namespace velmora::assets
