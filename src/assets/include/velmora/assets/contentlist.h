#pragma once
// The content list: a row per file of the Content\Routes tree, as the asset list has one per
// file of Assets, with the route's name and, below Scenarios, the scenario's name looked up.
// Names are read from RouteProperties.xml and ScenarioProperties.xml once per route and once per
// scenario, however many files lie below them.

#include "velmora/core/paths.h"

#include <cstddef>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace velmora {
class UserInterface;
}

namespace velmora::assets {

namespace fs = std::filesystem;

// Names are document text (Windows-1252 where the repair mended them); file and folder names
// are as the file system gives them.
struct ContentRow {
    std::string route, routeName, subFolder, name, subFolder2, fileName, index;

    std::vector<std::string> cells() const;
    // Route\Sub-Folder\Sub-Folder2\File Name below the routes folder, empty parts left out.
    std::string relativePath() const;
};

// "Route", "Route Name", "Sub-Folder", "Name", "Sub-Folder2", "File Name", "Index"
const std::vector<std::string>& contentColumns();
// A row from the cells of a grid or a loaded list (missing cells stay empty); and back.
ContentRow contentRowFromCells(std::vector<std::string> cells);
std::vector<std::vector<std::string>> cellsOf(const std::vector<ContentRow>& rows);

// The display names of routes and scenarios below one routes folder, each document read the
// first time it is asked for and remembered, found whatever the letter case of its name.
class ContentNames {
public:
    explicit ContentNames(fs::path routesFolder);

    // The first English value of <route>\RouteProperties.xml; empty without one.
    std::string routeName(const std::string& route);
    // The first English value of <route>\Scenarios\<scenario>\ScenarioProperties.xml.
    std::string scenarioName(const std::string& route, const std::string& scenario);

    // Documents opened so far.
    std::size_t documentsRead() const { return m_reads; }
    // "<file>: <reason>" for each name document that exists but could not be read.
    const std::vector<std::string>& unreadable() const { return m_unreadable; }

private:
    std::string firstEnglish(const std::string& relative);

    fs::path m_routesFolder;
    PathResolver m_resolver;
    std::map<std::string, std::string> m_names; // by relative path of the document
    std::size_t m_reads = 0;
    std::vector<std::string> m_unreadable;
};

enum class ContentFile {
    Row,     // the row is filled in (its Index aside)
    Skipped, // a PreLoad path, or one outside any routes folder
    Invalid, // directly in the routes folder, with no route folder: "... is invalid and contains errors"
};

// The row of one file. `belowRoutes` is its path below the routes folder, with backslashes
// (Route\Sub-Folder\Sub-Folder2\the rest). A file directly in a route's folder has an empty
// Sub-Folder; all that follows the route is then its File Name.
ContentFile contentRow(const std::string& belowRoutes, ContentNames& names, ContentRow& row);

struct ContentListOptions {
    std::string mask = "*.*"; // Text1; empty means "*.*"
    bool zeroLength = false;  // Find Zero Length Files: files of at most one byte
};

struct ContentListResult {
    std::vector<ContentRow> rows;
    std::vector<std::string> messages; // "<file> is invalid and contains errors", in walk order
    // Folders and name documents that could not be read, "<path>: <reason>": the list is then
    // not the whole tree, and this says so. The caller names them (one box, one report), not
    // one error record each.
    std::vector<std::string> unreadable;
    std::size_t documentsRead = 0; // RouteProperties.xml and ScenarioProperties.xml opened
    bool stopped = false;
};

// Walks `startFolder` (the routes folder or a folder below it) and builds the rows, Index
// counting from 1. Rows are cut below `routesFolder`; a file outside it is cut below the first
// "Routes" folder of its path. Progress and Stop through `ui` (may be null).
ContentListResult buildContentList(const fs::path& routesFolder, const fs::path& startFolder,
                                   const ContentListOptions& options, UserInterface* ui = nullptr);

} // namespace velmora::assets
