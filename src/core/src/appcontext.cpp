#include "velmora/core/appcontext.h"

#include "velmora/core/process.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"
#include "velmora/core/version.h"

#include <charconv>
#include <system_error>

namespace velmora {

OpenAction dispatchByPathEnd(std::string_view path) {
    for (const char* end : {"proxybin", "GeoPcDx", "XSec", "bin"})
        if (iendsWith(path, end))
            return OpenAction::OpenBinary;
    if (iendsWith(path, "TgPcDx"))
        return OpenAction::OpenTexture;
    for (const char* end : {"proxyxml", "xml", "cost", "tgt"})
        if (iendsWith(path, end))
            return OpenAction::OpenXml;
    return OpenAction::None;
}

AppContext::AppContext(fs::path appPath, fs::path dataPath, UserInterface& ui)
    : m_appPath(std::move(appPath)), m_dataPath(std::move(dataPath)), m_ui(&ui), m_log(m_appPath, &ui),
      m_journal(m_appPath / "Journal.jsonl"), m_files(&ui, &m_journal) {
    lang.setErrorLog(&m_log);
}

void AppContext::setUserInterface(UserInterface& ui) {
    m_ui = &ui;
    m_log.setUserInterface(&ui);
    m_files.setUserInterface(&ui);
}

DesktopState& AppContext::desktop() {
    if (!m_desktop) {
        m_desktop.emplace(m_appPath / DesktopState::kFileName);
        m_desktop->load();
    }
    return *m_desktop;
}

fs::path AppContext::railWorks() const {
    if (m_railWorksOverride)
        return *m_railWorksOverride;
    return fs::path(settings.railWorks);
}

std::vector<fs::path> AppContext::languageFolders() const {
    return {m_appPath / "Language", m_dataPath / "Language"};
}

bool AppContext::writeSettings(bool closingWrite) {
    return saveSettings(settingsFile(), settings, closingWrite ? aboutTick : settings.aboutDontShow, &m_log);
}

void AppContext::loadLanguage() {
    std::string file = "Lang_" + settings.language + ".txt";
    lang.load(languageFolders(), file, &m_log);
}

std::string AppContext::caption() const {
    return "VL editor  Version " + std::to_string(Version::major) + "." + std::to_string(Version::minor) + "." +
           std::to_string(Version::revision) + "   Rail Works path = " + railWorks().string();
}

void copyConverterFiles(AppContext& ctx) {
    const fs::path root = ctx.railWorks();
    if (root.empty() || FileExists(ctx.appPath() / "zlibwapi.dll"))
        return;
    const char* files[] = {"serz.exe", "zlibwapi.dll", "stlport_vc10.5.2.dll"};
    ctx.resolver.invalidate(root); // the root may have changed since it was last listed
    // Only where the simulator has its converter: our own codec does the work either way.
    for (const char* f : files)
        if (!ctx.resolver.exists(root, f))
            return;
    // The program's own working copies: replaced whole, not journalled.
    WriteOptions own;
    own.backup = Backup::None;
    own.journal = false;
    own.refuseReadOnly = false;
    for (const char* f : files) {
        const WriteResult copied = ctx.files().copy(*ctx.resolver.resolve(root, f), ctx.appPath() / f, own);
        if (!copied)
            ctx.log().log("frmEditor", "Form_Load", err::PermissionDenied, copied.message);
    }
}

namespace {

std::string stripOneQuotePair(std::string s) {
    if (!s.empty() && s.front() == '"')
        s.erase(0, 1);
    if (!s.empty() && s.back() == '"')
        s.pop_back();
    return s;
}

void checkRoot(AppContext& ctx, StartupResult& result) {
    const fs::path root = ctx.railWorks();
    if (root.empty()) {
        result.problems.push_back("The simulator folder is not set (RailWorks.exe was not found)");
        return;
    }
    std::error_code ec;
    if (!fs::is_directory(root, ec)) {
        result.problems.push_back("The simulator folder " + root.string() + " does not exist");
        ctx.log().log("frmEditor", "Form_Load", err::PathNotFound, "Path not found: " + root.string());
        return;
    }
    for (const char* expected : {"Assets", "Content"})
        if (!ctx.resolver.exists(root, expected))
            result.problems.push_back("The simulator folder " + root.string() + " has no " + expected + " folder");
}

} // namespace

StartupResult runStartup(AppContext& ctx, const StartupOptions& options) {
    StartupResult result;
    MakePath(ctx.appPath());

    // Settings and the geometry they give.
    loadSettings(ctx.settingsFile(), ctx.settings, &ctx.log());
    ctx.settings.applyDefaults();
    ctx.aboutTick = ctx.settings.aboutDontShow;
    result.geometry = ctx.settings.editor;
    result.maximised = ctx.settings.editorState == 2;

    if (!ctx.settings.fontSize.empty()) {
        const std::string& f = ctx.settings.fontSize;
        double size = 0;
        auto [ptr, ec] = std::from_chars(f.data(), f.data() + f.size(), size);
        if (ec == std::errc() && size > 0) {
            result.fontSizeSet = true;
            result.fontSize = size;
        }
    }

    // The simulator's root: the command line, the settings, the registry, Steam.
    if (options.railWorks)
        ctx.setRailWorksOverride(*options.railWorks);
    if (ctx.railWorks().empty())
        ctx.settings.railWorks = registryInstallPath();
#ifndef _WIN32
    if (ctx.railWorks().empty() && !options.userHome.empty())
        if (auto steam = findRailWorksInSteam(options.userHome))
            ctx.settings.railWorks = steam->string();
#endif

    ctx.loadLanguage();
    ctx.routes = loadRouteIndex(ctx.reports() / "RouteIndex.csv");

    const fs::path rsbt = ctx.appPath() / "RSBinTool";
    std::error_code ec;
    if (fs::is_directory(rsbt, ec)) {
        ctx.settings.rsBinTool = (rsbt / "rsbintool.exe").string();
        result.showRsBinTool = true;
    }

    if (!FolderExists(ctx.tempFiles()))
        MakePath(ctx.tempFiles());

    if (ctx.railWorks().empty() && options.askForRoot)
        mnuRWPath_Click(ctx, result.geometry);
    checkRoot(ctx, result);
    copyConverterFiles(ctx);

    result.caption = ctx.caption();
    result.statusLanguage = ctx.settings.language;

    if (!options.commandLinePath.empty()) {
        ctx.currentFile = stripOneQuotePair(options.commandLinePath);
        ctx.openedFromCommandLine = true;
    }
    if (!ctx.currentFile.empty()) {
        result.maximised = true;
        result.open = dispatchByPathEnd(ctx.currentFile);
    }
    return result;
}

bool runShutdown(AppContext& ctx, bool editedNotSaved, const WindowGeometry& current) {
    UserInterface& ui = ctx.ui();
    if (editedNotSaved && ctx.settings.warnIfNotSaved) {
        if (ui.ask("You edited a file in the .bin file editor but do\nnot appear to have saved it. Do you "
                   "really\nwant to exit?",
                   Buttons::YesNo, Icon::Warning) != Answer::Yes)
            return false;
    }
    ctx.settings.editor = current;
    ctx.writeSettings(true);
    // The settings are already written when this question is asked, also if it cancels the close.
    if (!ctx.settings.dontAskOnClose) {
        if (ui.ask("Do you really wish to exit Velmora?", Buttons::YesNo, Icon::Question) != Answer::Yes)
            return false;
    }
    ctx.clearTempFiles();
    return true;
}

void mnuDont_Click(AppContext& ctx) {
    ctx.settings.dontAskOnClose = !ctx.settings.dontAskOnClose;
    ctx.writeSettings();
}

void mnuNewVer_Click(AppContext& ctx) {
    ctx.settings.noNewVersionNotice = !ctx.settings.noNewVersionNotice;
    ctx.writeSettings();
}

void mnuEdMax_Click(AppContext& ctx) {
    ctx.settings.editorState = ctx.settings.editorState == 2 ? 0 : 2;
    ctx.writeSettings();
}

void mnuWarn_Click(AppContext& ctx) {
    // Kept in memory; reaches the file with the next full write.
    ctx.settings.warnIfNotSaved = !ctx.settings.warnIfNotSaved;
}

bool mnuRWPath_Click(AppContext& ctx, const WindowGeometry& current) {
    FileRequest request;
    request.title = "Select your RailWorks.exe File";
    request.filter = "TrainSimulator 2019 Files (*.exe)|*.exe";
    request.startFolder = registryInstallPath();
    if (request.startFolder.empty())
        request.startFolder = ctx.railWorks();
    auto chosen = ctx.ui().chooseFile(request);
    if (!chosen || chosen->empty())
        return false;
    ctx.settings.railWorks = chosen->parent_path().string();
    ctx.setRailWorksOverride(std::nullopt);
    ctx.settings.editor = current;
    if (FileExists(ctx.settingsFile()))
        ctx.writeSettings();
    copyConverterFiles(ctx);
    return true;
}

bool mnuRWB_Click(AppContext& ctx, const fs::path& backupFolder, const WindowGeometry& current) {
    if (backupFolder.empty())
        return false;
    ctx.settings.railWorksBackup = backupFolder.string();
    ctx.settings.editor = current;
    ctx.writeSettings();
    return true;
}

void mnuLang_Click(AppContext& ctx, const std::string& chosenFile, const WindowGeometry& current) {
    if (!chosenFile.empty())
        ctx.settings.language = languageNameFromFile(chosenFile);
    ctx.settings.editor = current;
    ctx.writeSettings();
    ctx.loadLanguage();
}

namespace {
bool chooseProgram(AppContext& ctx, const std::string& title, std::string& field) {
    FileRequest request;
    request.title = title;
#ifdef _WIN32
    request.filter = "Programs (*.exe)|*.exe";
#else
    request.filter = "Programs (*)|*";
#endif
    if (!field.empty())
        request.startFolder = fs::path(field).parent_path();
    auto chosen = ctx.ui().chooseFile(request);
    if (!chosen || chosen->empty())
        return false;
    field = chosen->string();
    return true;
}
} // namespace

bool mnuIRF_Click(AppContext& ctx) {
    return chooseProgram(ctx, "Select your Graphics Editor", ctx.settings.textureEditor);
}
bool mnuViewer_Click(AppContext& ctx) {
    return chooseProgram(ctx, "Select your Graphics Viewer", ctx.settings.graphicsViewer);
}
bool mnuAcro_Click(AppContext& ctx) { return chooseProgram(ctx, "Select your PDF Reader", ctx.settings.pdfReader); }

void AppContext::clearTempFiles() const {
    DeleteTree(tempFiles());
    MakePath(tempFiles());
}

fs::path userGuide(const AppContext& ctx) { return ctx.dataPath() / "Help" / "guide.html"; }

void mnuContents_Click(AppContext& ctx) {
    // The guide is HTML, which every desktop can show: no reader needs to be set up first.
    const fs::path guide = userGuide(ctx);
    if (!FileExists(guide)) {
        ctx.ui().message("The user guide was not found. It should be at\n" + guide.string(), Icon::Warning);
        return;
    }
    if (!ctx.ui().openInViewer(guide))
        ctx.ui().message("No program on this desktop could show the user guide. Open it in a web browser:\n" +
                             guide.string(),
                         Icon::Warning);
}

std::vector<std::pair<std::string, std::string>> optionsSummary(const AppContext& ctx) {
    const Settings& s = ctx.settings;
    return {{"Language", s.language},
            {"PDF Reader", s.pdfReader},
            {"PreLoad Folder", s.preloadFolder},
            {"RailWorks", ctx.railWorks().string()},
            {"RailWorks Backup", s.railWorksBackup},
            {"Graphics Editor", s.textureEditor},
            {"Graphics Viewer", s.graphicsViewer}};
}

} // namespace velmora
