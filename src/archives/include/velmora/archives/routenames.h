#pragma once
// Routes named by their properties: Reports\RouteIndex.csv, the folders that carry a route's
// name inside its GUID-named folder, and Data\AP-Index.csv of the .ap files found.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {
class AppContext;
class UserInterface;
} // namespace velmora

namespace velmora::archives {

namespace fs = std::filesystem;

// The name a RouteProperties.xml gives: English, else French, else German, repaired.
std::string routePropertiesName(std::string_view propertiesText);

struct RouteIndexLines {
    std::string text;                     // the file's content, CR LF after each line and one more
    int routes = 0;
    std::vector<std::string> unreadable;  // route folders or documents that could not be read
};
// One line a route folder that holds RouteProperties.xml: "<folder>,<name>", commas in the name
// made "-", colons taken out, the line cut so that `reportsFolder` and the line stay within
// 240 characters.
RouteIndexLines routeIndexLines(const fs::path& routesFolder, const fs::path& reportsFolder);

// Unpacks every RouteProperties.xml from the .ap files of Content\Routes into their folders, as
// one journal entry; returns a line per archive that could not be read.
std::vector<std::string> extractAllRouteProperties(AppContext& ctx, UserInterface* ui);

// Writes Reports\RouteIndex.csv through the write service and reloads the program's route table.
// False, with the reason in `error`, when it cannot be written.
bool writeRouteIndex(AppContext& ctx, std::string* error = nullptr);

// The folder "<guid>  <name>" that marks a route folder with its name: colons taken out, the
// whole path cut to 240 characters.
fs::path routeNameFolder(const fs::path& routeFolder, std::string_view name);
struct RouteNameFolders {
    std::vector<fs::path> made;
    std::vector<std::string> problems;
};
RouteNameFolders addRouteNameFolders(const fs::path& routesFolder);

// Data\AP-Index.csv: "<folder>,<file name>" a line, in the order given.
std::string apIndexText(const std::vector<fs::path>& apFiles);

} // namespace velmora::archives
