// The main screen's menu bar: every command of the program, the ones whose tools are not built
// yet shown disabled with what they wait for, and the small commands of the Reports and Options
// menus.

#include "frmeditor.h"

#include "../common/desktopui.h"
#include "../common/windowplace.h"
#include "../common/frmreport.h"
#include "../consists/frmqd.h"
#include "../routes/frmlistrs.h"
#include "../consists/frmconsistbuilder.h"
#include "frmfolder5.h"
#include "../scenarios/frmconsistdupe.h"
#include "velmora/assets/assetgrid.h"
#include "velmora/core/services.h"

#include <QAction>
#include <QHBoxLayout>
#include <QListWidget>
#include <QMenuBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace velmora::ui {

namespace {

// The menu bar: control name, parent menu, design caption; a parent of "" is a top-level menu.
struct MenuEntry {
    const char* name;
    const char* parent;
    const char* caption;
    bool checkable = false;
};

const char* const kSeparator = "-";

const MenuEntry kMenus[] = {
    {"mnuFileS", "", "Files"},
    {"mnuOpenRS", "mnuFileS", "Open TS 2019 File"},
    {"mnuSaveRS", "mnuFileS", "SaveTS 2019 File"},
    {"mnuItSaveAs", "mnuFileS", "Save TS2019 File As"},
    {"mnuUndoLast", "mnuFileS", "Undo Last Change..."},
    {"mnu2bin", "mnuFileS", "Open 2nd Window"},
    {"mnuFile2", "mnuFileS", "Open 2nd .bin file"},
    {kSeparator, "mnuFileS", ""},
    {"mnuXML", "mnuFileS", "Open .xml/.proxyxml file"},
    {"mnuSavexml", "mnuFileS", "Save .xml file"},
    {"mnuSaveAs", "mnuFileS", "Save .xml As"},
    {kSeparator, "mnuFileS", ""},
    {"mnuOpenTex", "mnuFileS", "Open .TgPcDx Texture Files"},
    {kSeparator, "mnuFileS", ""},
    {"mnuAP", "mnuFileS", "Open .ap FileManager"},
    {"mnuListAP", "mnuFileS", "List files in .ap"},
    {"mnuFindAllAP", "mnuFileS", "Find all .AP files - full detail"},
    {"mnuNoDet", "mnuFileS", "Find all .AP files - no detail"},
    {"mnuMC", "mnuFileS", "Find all MainContent.ap files"},
    {"mnuSce", "mnuFileS", "Find all Scenario.ap files"},
    {"mnuFA", "mnuFileS", "Find all .ap files in Assets"},
    {kSeparator, "mnuFileS", ""},
    {"mnuPrint", "mnuFileS", "Print"},
    {"mnuBackup", "mnuFileS", "Backup Train Simulator 2019"},
    {"mnuInc", "mnuFileS", "Incremental Backup"},
    {kSeparator, "mnuFileS", ""},
    {"mnuExit", "mnuFileS", "Exit"},

    {"mnuSearch", "", "Search"},
    {"mnuFind", "mnuSearch", "Find"},
    {"mnuFindMult", "mnuSearch", "Find in Multiple Files"},
    {"mnuGoToLine", "mnuSearch", "Go to Line..."},

    {"mnuConv", "", "Graphics Tools"},
    {"mnuDDS", "mnuConv", "Convert to .dds"},
    {"mnuView", "mnuConv", "View Texture"},
    {"mnuEditDDS", "mnuConv", "Edit Texture"},
    {"mnuDDStoKrs", "mnuConv", "Convert .dds to TgPcDx"},
    {"mnuEmpt", "mnuConv", "Empty TempDDS"},
    {"mnuRSBT", "mnuConv", "RSBinTool"},
    {"mnuTgpcdx", "mnuConv", "TgPcDx/DDS Viewer"},

    {"mnuTools", "", "Tools"},
    {"mnuTime", "mnuTools", "Convert RW time to hrs/mins"},
    {"mnuUUID", "mnuTools", "Generate GUID/UUID"},
    {"mnuIdent", "mnuTools", "Identify Object"},
    {"mnuClearTemp", "mnuTools", "Clear Railworks\\Temp"},
    {kSeparator, "mnuTools", ""},
    {"mnuDelRoute", "mnuTools", "Check Routes or Scenarios"},
    {"mnuCheckQD", "mnuTools", "Check QD consists and fragments"},
    {"mnuAddProv", "mnuTools", "Edit Providers"},
    {"mnuDRS", "mnuTools", "Direct Route Setup"},
    {"mnuRouteInfo", "mnuTools", "Add Route Description"},
    {"mnuMap", "mnuTools", "Add Route Loading Picture"},
    {"mnuMarkers", "mnuTools", "Markers"},
    {"mnuMultiMarker", "mnuMarkers", "Convert  Marker files"},
    {"mnuMkrDCSV", "mnuMarkers", "Convert Markers Direct to DCSV"},
    {"mnuCSV2DCSV", "mnuMarkers", "Convert .csv Direct to DCSV"},
    {"mnuMkRW", "mnuMarkers", "Set Markers from WorldEditor"},
    {kSeparator, "mnuTools", ""},
    {"mnuDeveloper", "mnuTools", "Set Up Developer Folders"},
    {"mnuDevFolders", "mnuTools", "Set Up Sub- Folders"},

    {"mnuLists", "", "Assets"},
    {"mnuAE", "mnuLists", "Asset Editor"},
    {"mnuAPEdit", "mnuLists", "AP Assets Editor"},
    {"mnuCnt", "mnuLists", "Content Editor"},
    {"mnuAPCont", "mnuLists", "AP Content Editor"},
    {"mnuRollingStock", "mnuLists", "View Rolling-stock list"},

    {"mnuScen", "", "Scenarios"},
    {"mnuOstrand", "mnuScen", "Edit Scenarios"},
    {"mnuEC", "mnuScen", "Compare Consists"},
    {"mnuBuildCon", "mnuScen", "Build or Edit Consists"},
    {"mnuBuildQD", "mnuScen", "Build QD Consists or Fragments"},

    {"mnuEB", "", "Packaging"},
    {"mnuPackAss", "mnuEB", "Package Assets"},
    {"mnuReskin", "mnuEB", "Package Reskins"},
    {"mnuPack", "mnuEB", "Package Route"},
    {"mnuPackSce", "mnuEB", "Package Scenarios"},

    {"mnuReports", "", "Reports"},
    {"mnuCSV", "mnuReports", "Open .csv Reports"},
    {"mnuExcel", "mnuReports", "Open Excel Reports"},
    {"mnuTxt", "mnuReports", "Open Reports"},

    {"mnuOpt", "", "Options"},
    {"mnuClear", "mnuOpt", "Clear Screen"},
    {"mnuCTF", "mnuOpt", "Clear Temp Files"},
    {"mnuReadWrite", "mnuOpt", "Make all RW files Read/Write"},
    {"mnuSelRW", "mnuOpt", "Make files in Selected folder Read/Write"},
    {"mnuNoMarkers", "mnuOpt", "No Markers in Scenario Editor", true},
    {kSeparator, "mnuOpt", ""},
    {"mnuDont", "mnuOpt", "Don't ask on closing down", true},
    {"mnuNewVer", "mnuOpt", "Don't advise of new version on StartUp", true},
    {"mnuEdMax", "mnuOpt", "Start the editor maximised", true},
    {"mnuWarn", "mnuOpt", "Warn if Edit not saved", true},
    {kSeparator, "mnuOpt", ""},
    {"mnuAcro", "mnuOpt", "PDF Reader Path"},
    {"mnuIRF", "mnuOpt", "Texture Editor Path"},
    {"mnuViewer", "mnuOpt", "Viewer Path"},
    {"mnuQDPreload", "mnuOpt", "PreLoad Folder"},
    {"mnuRWPath", "mnuOpt", "RailWorks Path"},
    {"mnuRWB", "mnuOpt", "RailWorks Backup Folder"},
    {"mnuLang", "mnuOpt", "Language"},
    {"mnuPaths", "mnuOpt", "Show Paths"},
    {"mnuSP", "mnuOpt", "Register SuperPicture2.ocx"},

    {"mnuHelp", "", "Help"},
    {"mnuContents", "mnuHelp", "Contents"},
    {"mnuAbout", "mnuHelp", "About"},
    {"mnuVer", "mnuHelp", "Check for Newer Version"},
    {"mnuWeb", "mnuHelp", "Go to My Web Site"},
    {"mnuEmail", "mnuHelp", "Send me Email"},
};

// What a disabled entry waits for, by the tool it belongs to.
struct Waiting {
    std::initializer_list<const char*> entries;
    const char* reason;
};

const Waiting kWaiting[] = {
    {{"mnuSaveRS", "mnuItSaveAs", "mnuSavexml", "mnuSaveAs", "mnuPrint"}, "Works while a document is open"},
    {{"mnuFile2"}, "Works while the second window is open (Open 2nd Window)"},
    {{"mnuUndoLast"}, "Works once a command has changed a file"},
    {{"mnuDDS"}, "Works while a texture is open"},
    {{"mnuView", "mnuEditDDS"}, "Works once the open texture is converted to .dds"},
    {{"mnuNoMarkers"}, "Waits for the marker tools"},
    {{"mnuSP"}, "Not needed here: pictures are shown without SuperPicture2.ocx"},
    {{"mnuEmail"}, "Waits for the mail screen"},
};

} // namespace

void frmEditor::markWaitingEntries() {
    // Entries change state as documents open and close, so each one keeps its tooltip in step:
    // while it cannot be chosen the tooltip says why.
    for (const auto& [name, entry] : m_actions) {
        if (entry->menu())
            continue;
        auto update = [action = entry, reason = waitsFor(name)] {
            action->setToolTip(action->isEnabled() ? QString() : reason);
        };
        update();
        connect(entry, &QAction::enabledChanged, this, update);
    }
}

QString frmEditor::waitsFor(const QString& entry) {
    for (const Waiting& w : kWaiting)
        for (const char* name : w.entries)
            if (entry == name)
                return tr(w.reason);
    return tr("Waits for its tool, which is not built yet");
}

void frmEditor::buildMenus() {
    for (const MenuEntry& e : kMenus) {
        const QString name = e.name;
        if (QString(e.parent).isEmpty()) {
            QMenu* top = menuBar()->addMenu(e.caption);
            top->setToolTipsVisible(true);
            top->setObjectName(name);
            top->menuAction()->setObjectName(name);
            m_menus[name] = top;
            m_actions[name] = top->menuAction();
            continue;
        }
        QMenu* parentMenu = m_menus.at(e.parent);
        if (name == kSeparator) {
            parentMenu->addSeparator();
            continue;
        }
        // A row that has children of its own is a submenu.
        bool hasChildren = std::any_of(std::begin(kMenus), std::end(kMenus),
                                       [&](const MenuEntry& c) { return name == c.parent; });
        QAction* action;
        if (hasChildren) {
            QMenu* sub = parentMenu->addMenu(e.caption);
            sub->setToolTipsVisible(true);
            sub->setObjectName(name);
            m_menus[name] = sub;
            action = sub->menuAction();
        } else {
            action = parentMenu->addAction(e.caption);
            action->setCheckable(e.checkable);
            // Until its tool exists an entry is shown but cannot be chosen; connectCommands
            // enables the ones that work, markWaitingEntries says what the others wait for.
            action->setEnabled(false);
        }
        action->setObjectName(name);
        m_actions[name] = action;
    }
    // The documents opened lately, above Exit; filled each time the menu opens.
    m_recent = new QMenu(tr("Recent Files"), this);
    m_recent->setObjectName("mnuRecent");
    m_recent->setToolTipsVisible(true);
    m_recent->menuAction()->setObjectName("mnuRecent");
    m_menus["mnuRecent"] = m_recent;
    m_actions["mnuRecent"] = m_recent->menuAction();
    QAction* exit = m_actions.at("mnuExit");
    m_menus.at("mnuFileS")->insertMenu(exit, m_recent);
    m_menus.at("mnuFileS")->insertSeparator(exit);
    connect(m_recent, &QMenu::aboutToShow, this, &frmEditor::fillRecentMenu);
    fillRecentMenu();
}

void frmEditor::fillRecentMenu() {
    m_recent->clear();
    const auto& files = m_ctx.desktop().recentFiles();
    int n = 0;
    for (const std::string& path : files) {
        ++n;
        // Numbered 1 to 9 and 0, so each has a key of its own.
        const QString key = n < 10 ? QString::number(n) : QStringLiteral("0");
        QAction* open = m_recent->addAction(QStringLiteral("&%1 %2").arg(key, toQt(path).replace("&", "&&")));
        open->setData(QByteArray::fromStdString(path));
        open->setToolTip(toQt(path));
        connect(open, &QAction::triggered, this, [this, path] { openRecent(path); });
    }
    if (files.empty()) {
        QAction* none = m_recent->addAction(tr("No documents opened yet"));
        none->setEnabled(false);
        none->setToolTip(tr("The documents you open are listed here"));
        return;
    }
    m_recent->addSeparator();
    connect(m_recent->addAction(tr("&Clear the List")), &QAction::triggered, this, [this] {
        for (const std::string& path : std::vector<std::string>(m_ctx.desktop().recentFiles()))
            m_ctx.desktop().removeRecentFile(path);
        saveDesktopState();
    });
}

void frmEditor::rememberRecent(const std::string& path) {
    m_ctx.desktop().addRecentFile(path);
    saveDesktopState();
}

void frmEditor::saveDesktopState() {
    if (const std::string why = m_ctx.desktop().save(m_ctx.files()); !why.empty())
        m_ctx.log().log("frmEditor", "saveDesktopState", 0, why);
}

void frmEditor::openRecent(const std::string& path) {
    if (!FileExists(path)) {
        m_ctx.ui().message(path + ": the file no longer exists or cannot be read; it is taken off the list.",
                           Icon::Warning);
        m_ctx.desktop().removeRecentFile(path);
        saveDesktopState();
        return;
    }
    openChosenPath(path);
}

void frmEditor::mnuEC_Click() {
    // Made on first use and kept, as the scenario list is.
    if (!m_consistTransfer) {
        auto* screen = new frmConsistDupe(m_ctx, this);
        screen->setAttribute(Qt::WA_DeleteOnClose);
        m_consistTransfer = screen;
    }
    m_consistTransfer->show();
    m_consistTransfer->raise();
}

void frmEditor::mnuBuildCon_Click() {
    // Made on first use and kept; without saved consists the user may decline to start any.
    if (!m_consistBuilder) {
        auto* screen = new frmConsistBuilder(m_ctx, this);
        screen->setAttribute(Qt::WA_DeleteOnClose);
        if (!screen->opened()) {
            delete screen;
            return;
        }
        m_consistBuilder = screen;
    }
    m_consistBuilder->show();
    m_consistBuilder->raise();
}

void frmEditor::mnuFindMult_Click() {
    frmFolder5 screen(m_ctx, this);
    screen.exec();
}

void frmEditor::mnuCSV_Click() { openGridReport("Comma Separated (*.csv)|*.csv"); }
void frmEditor::mnuExcel_Click() { openGridReport("Excel file (*.xls)|*.xls"); }

frmListRS* frmEditor::openGridReport(const std::string& filter) {
    const auto file = m_ctx.ui().chooseFile({"Open Report", m_ctx.reports(), filter, false});
    if (!file)
        return nullptr;
    std::vector<assets::AssetRow> cells;
    std::string error;
    if (!assets::loadAssetList(*file, assets::listFormOf(*file), cells, &error)) {
        m_ctx.ui().message(error, Icon::Warning);
        return nullptr;
    }
    // The grid's rows are TAB-separated; the cells a report does not fill are left off.
    std::vector<std::string> rows;
    for (const auto& row : cells) {
        std::string line;
        for (const auto& cell : row.cells())
            line += cell + "\t";
        while (!line.empty() && line.back() == '\t')
            line.pop_back();
        rows.push_back(line);
    }
    auto* screen = new frmListRS(m_ctx, ReportKind::Used, toQt(file->filename().string()), rows,
                                 file->stem().string(), file->extension().string(), this);
    screen->setAttribute(Qt::WA_DeleteOnClose);
    screen->show();
    return screen;
}

frmReport* frmEditor::mnuTxt_Click() {
    const auto file = m_ctx.ui().chooseFile({"Open Report", m_ctx.reports(), "Text file (*.txt)|*.txt", false});
    if (!file)
        return nullptr;
    if (!FileExists(*file)) {
        m_ctx.ui().message(file->string() + ": the file does not exist or cannot be read", Icon::Warning);
        return nullptr;
    }
    return frmReport::show(m_ctx, toQt(file->filename().string()), ReadTextFile(*file), this);
}

void frmEditor::mnuCTF_Click() {
    m_ctx.clearTempFiles();
}

void frmEditor::mnuQDPreload_Click() {
    const auto folder = m_ctx.ui().chooseFolder("Select your PreLoad folder",
                                                m_ctx.resolver.resolveForWrite(m_ctx.railWorks(), "Assets"));
    if (!folder)
        return;
    m_ctx.settings.preloadFolder = folder->string();
    m_ctx.settings.editor = currentGeometry();
    m_ctx.writeSettings();
}

void frmEditor::mnuBuildQD_Click() {
    // A new screen each time: it starts by asking for the PreLoad folder.
    auto* screen = new frmQD(m_ctx, this);
    screen->setAttribute(Qt::WA_DeleteOnClose);
    if (!screen->opened()) {
        screen->deleteLater();
        return;
    }
    screen->show();
}

void frmEditor::mnuClearTemp_Click() {
    frmFolder6 screen(m_ctx, this);
    screen.exec();
}

frmFolder6::frmFolder6(AppContext& ctx, QWidget* parent)
    : QDialog(parent), m_ctx(ctx), m_folder(ctx.resolver.resolveForWrite(ctx.railWorks(), "Temp")) {
    setObjectName("frmFolder6");
    rememberPlace(ctx, this, objectName(), {600, 450});
    setWindowTitle(toQt(m_folder.string()));
    m_files = new QListWidget;
    m_files->setObjectName("File1");
    m_files->setSelectionMode(QAbstractItemView::ExtendedSelection);
    auto* remove = new QPushButton(tr("Delete Selected"));
    remove->setObjectName("Command1");
    auto* all = new QPushButton(tr("Delete All"));
    all->setObjectName("Command2");
    auto* close = new QPushButton(caption(m_ctx, 9, "Exit"));
    close->setObjectName("Command3");
    connect(remove, &QPushButton::clicked, this, &frmFolder6::Command1_Click);
    connect(all, &QPushButton::clicked, this, &frmFolder6::Command2_Click);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    auto* buttons = new QHBoxLayout;
    for (QPushButton* b : {remove, all, close})
        buttons->addWidget(b);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_files, 1);
    layout->addLayout(buttons);
    refresh();
}

void frmFolder6::refresh() {
    m_files->clear();
    std::error_code ec;
    std::vector<std::string> names;
    for (fs::directory_iterator it(m_folder, ec); !ec && it != fs::directory_iterator(); it.increment(ec))
        if (entryKind(*it) == EntryKind::File)
            names.push_back(it->path().filename().string());
    std::sort(names.begin(), names.end());
    for (const auto& n : names)
        m_files->addItem(toQt(n));
}

void frmFolder6::Command1_Click() {
    for (const QListWidgetItem* item : m_files->selectedItems()) {
        std::error_code ec;
        fs::remove(m_folder / fromQt(item->text()), ec);
    }
    refresh();
}

void frmFolder6::Command2_Click() {
    DeleteTree(m_folder);
    MakePath(m_folder);
    refresh();
}

} // namespace velmora::ui
