#pragma once
// The table of .ap files found in the install, each with its state: whether its content has been
// unpacked beside it, and for the detailed listing its date, its size and the size of its folder.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace velmora {
class UserInterface;
}

namespace velmora::archives {

namespace fs = std::filesystem;

enum class ApState { Unpacked, NotUnpacked };
// "Unpacked" or "Not unpacked".
const char* apStateText(ApState state);

// The main screen's five searches.
enum class ApSearch {
    All,         // every .ap below the install
    MainContent, // the routes' MainContent.ap
    Scenarios,   // every .ap below Content\Routes
    Assets,      // every .ap below Assets
};

struct ApFile {
    fs::path path;
    ApState state = ApState::NotUnpacked;
    std::string date; // the file's date, YYYYmmdd
    std::uint64_t size = 0;
    std::uint64_t folderSize = 0; // everything below the .ap's folder, the .ap included
    bool red = false; // not unpacked, and its folder too small to hold what it packs
};

struct ApTable {
    std::vector<ApFile> files;
    std::vector<std::string> unreadable; // folders that could not be read, with why
    bool stopped = false;                // Abort was pressed: the table is incomplete
};

struct ApFindOptions {
    ApSearch search = ApSearch::All;
    bool details = true;          // dates and sizes (the detailed listing)
    bool dropMainContent = false; // leave out every MainContent.ap
};

// Finds the .ap files below the install `railworks` (only those below Assets or Content are
// taken), in name order, with their states. Progress and Abort through `ui`.
ApTable findApFiles(const fs::path& railworks, const ApFindOptions& options, UserInterface* ui);

// The state of one .ap by what its folder holds.
ApState apState(const fs::path& apFile);

// The grid's rows: path, TAB, date, TAB, size, TAB, folder size; or the path alone without
// details.
std::vector<std::string> apGridRows(const ApTable& table, bool details);

enum class ApSort { File, Date };
void sortApTable(ApTable& table, ApSort by);

// The table as JSON: a list of {"path", "state", "date", "size", "folderSize", "red"}.
std::string apTableJson(const ApTable& table);

// The legend shown under the grid when a row is red.
inline constexpr const char* kRedRowsLegend =
    "Items in red are not fully unpacked. Those in black are at least partially unpacked";

} // namespace velmora::archives
