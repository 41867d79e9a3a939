#pragma once
// The state the whole program shares: where it lives, its settings, the language table,
// the route index, the error log and the front end. Screens pass it to each other;
// there are no process-wide globals.

#include "velmora/core/desktopstate.h"
#include "velmora/core/errorlog.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/language.h"
#include "velmora/core/paths.h"
#include "velmora/core/routeindex.h"
#include "velmora/core/settings.h"

#include <filesystem>
#include <optional>
#include <string>

namespace velmora {

class UserInterface;

namespace fs = std::filesystem;

// What the main screen does with a document path given at start, by the end of the path.
enum class OpenAction { None, OpenBinary, OpenTexture, OpenXml };
OpenAction dispatchByPathEnd(std::string_view path);

class AppContext {
public:
    AppContext(fs::path appPath, fs::path dataPath, UserInterface& ui);

    // strAppPath: the program's own writable folder.
    const fs::path& appPath() const { return m_appPath; }
    // Shipped data (Language, Templates, BluePrints).
    const fs::path& dataPath() const { return m_dataPath; }
    // strRailWorks: the session override (--railworks) or the settings field.
    fs::path railWorks() const;
    void setRailWorksOverride(std::optional<fs::path> root) { m_railWorksOverride = std::move(root); }

    fs::path tempFiles() const { return m_appPath / "TempFiles"; }
    // The program's own scratch folder emptied and made again (nothing of the user's is there).
    void clearTempFiles() const;
    fs::path reports() const { return m_appPath / "Reports"; }
    fs::path settingsFile() const { return m_appPath / Settings::kFileName; }
    // Language folders searched in order: the user's own, then the shipped ones.
    std::vector<fs::path> languageFolders() const;

    Settings settings;
    bool aboutTick = false; // the About screen's own "Do not show in future" value
    LanguageTable lang;
    RouteIndex routes;
    PathResolver resolver;
    ErrorLog& log() { return m_log; }
    // The one way files are written; every write of a command is recorded in the journal.
    WriteService& files() { return m_files; }
    Journal& journal() { return m_journal; }
    fs::path journalFile() const { return m_appPath / "Journal.jsonl"; }
    // Window places and recent files, read from the program's folder on first use.
    DesktopState& desktop();
    UserInterface& ui() { return *m_ui; }
    void setUserInterface(UserInterface& ui);

    // The document the main screen works on.
    std::string currentFile;
    bool openedFromCommandLine = false;

    // Writes all 31 fields; `aboutTick` picks field 14's source (see writeSettingsText).
    bool writeSettings(bool closingWrite = false);
    // LoadLanguage: the table from Lang_<settings.language>.txt, with its fallback.
    void loadLanguage();
    // "VL editor  Version 0.1.0   Rail Works path = <root>"
    std::string caption() const;

private:
    fs::path m_appPath;
    fs::path m_dataPath;
    std::optional<fs::path> m_railWorksOverride;
    UserInterface* m_ui;
    ErrorLog m_log;
    Journal m_journal;
    WriteService m_files;
    std::optional<DesktopState> m_desktop;
};

struct StartupOptions {
    std::optional<fs::path> railWorks; // --railworks
    std::string commandLinePath;       // the optional document path
    fs::path userHome;                 // where Steam's folders are looked for
    bool askForRoot = true;            // run mnuRWPath_Click when no root was found
};

struct StartupResult {
    bool maximised = false;
    WindowGeometry geometry;
    bool showRsBinTool = false;
    bool fontSizeSet = false;
    double fontSize = 0;
    std::string caption;
    std::string statusLanguage; // status panel 3
    OpenAction open = OpenAction::None;
    std::vector<std::string> problems; // what was missing, for the command line to report
};

// The start-up sequence without its widgets: settings, root, language, route index,
// folders, the converter copy, the caption and the command-line document.
StartupResult runStartup(AppContext& ctx, const StartupOptions& options);

// Closing: the unsaved-edit question, the settings write, the exit question, the fresh
// TempFiles. Returns false when the user cancelled the close (the settings stay written).
bool runShutdown(AppContext& ctx, bool editedNotSaved, const WindowGeometry& current);

// Commands of the Options menu that touch the settings file.
void mnuDont_Click(AppContext& ctx);
void mnuNewVer_Click(AppContext& ctx);
void mnuEdMax_Click(AppContext& ctx);
void mnuWarn_Click(AppContext& ctx);
// Asks for RailWorks.exe; true when a new root was taken.
bool mnuRWPath_Click(AppContext& ctx, const WindowGeometry& current);
bool mnuRWB_Click(AppContext& ctx, const fs::path& backupFolder, const WindowGeometry& current);
// Switches the language to the chosen Lang_<name>.txt and reloads the table.
void mnuLang_Click(AppContext& ctx, const std::string& chosenFile, const WindowGeometry& current);
// File dialogs for the helper programs (kept in memory until the next full write).
bool mnuIRF_Click(AppContext& ctx);
bool mnuViewer_Click(AppContext& ctx);
bool mnuAcro_Click(AppContext& ctx);
// The user guide shipped with the program.
fs::path userGuide(const AppContext& ctx);
// Opens the user guide in the desktop's viewer; says where it should be when it is missing.
void mnuContents_Click(AppContext& ctx);

// The read-only list of dlgOptions: pairs of label and value.
std::vector<std::pair<std::string, std::string>> optionsSummary(const AppContext& ctx);

// Copies serz.exe and its two libraries from the simulator root when zlibwapi.dll is missing
// in the program's folder and the simulator has them. Nothing depends on these copies.
void copyConverterFiles(AppContext& ctx);

} // namespace velmora
