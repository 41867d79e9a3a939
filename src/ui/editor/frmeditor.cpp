#include "frmeditor.h"

#include "../common/desktopui.h"
#include "dialogs.h"
#include "velmora/core/convert.h"
#include "velmora/core/editorcaptions.h"
#include "velmora/core/services.h"

#include <QAction>
#include <QCoreApplication>
#include <QCloseEvent>
#include <QDateTime>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QStatusBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>

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

constexpr int kTwipsPerPixel = 15;

std::int16_t toTwips(int pixels) {
    long t = static_cast<long>(pixels) * kTwipsPerPixel;
    return static_cast<std::int16_t>(std::clamp<long>(t, -32768, 32767));
}

} // namespace

frmEditor::frmEditor(AppContext& ctx, const StartupOptions& options, QWidget* parent)
    : QMainWindow(parent), m_ctx(ctx) {
    setObjectName("frmEditor");
    buildWidgets();
    buildMenus();
    connectCommands();
    m_startup = runStartup(m_ctx, options);
    applyStartup();
}

frmEditor::~frmEditor() = default;

void frmEditor::buildWidgets() {
    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName("SSTab1");

    auto* frame1 = new QWidget;
    frame1->setObjectName("Frame1");
    m_text = new QPlainTextEdit;
    m_text->setObjectName("RichTextBox1");
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    auto* l1 = new QVBoxLayout(frame1);
    l1->addWidget(m_text);
    connect(m_text, &QPlainTextEdit::textChanged, this, [this] {
        if (!m_text->property("loading").toBool())
            m_edited = true;
    });

    auto* frame2 = new QWidget;
    frame2->setObjectName("Frame2");
    m_tree = new QTreeWidget;
    m_tree->setObjectName("TreeView1");
    m_tree->setHeaderHidden(true);
    auto* l2 = new QVBoxLayout(frame2);
    l2->addWidget(m_tree);

    auto* frame3 = new QWidget;
    frame3->setObjectName("Frame3");
    m_routes = new QTableWidget(0, 2);
    m_routes->setObjectName("VSFG1");
    m_routes->setHorizontalHeaderLabels({tr("Route folder"), tr("Route name")});
    m_routes->horizontalHeader()->setStretchLastSection(true);
    m_routes->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_routes->horizontalHeader()->setSortIndicator(0, Qt::AscendingOrder);
    m_routes->setSortingEnabled(true);
    auto* l3 = new QVBoxLayout(frame3);
    l3->addWidget(m_routes);

    m_tabs->addTab(frame1, tr("Text"));
    m_tabs->addTab(frame2, tr("XML Tree"));
    m_tabs->addTab(frame3, tr("Routes"));
    setCentralWidget(m_tabs);
    connect(m_tabs, &QTabWidget::currentChanged, this, &frmEditor::SSTab1_Click);

    auto* bar = new QStatusBar;
    bar->setObjectName("StatusBar1");
    setStatusBar(bar);
    for (int i = 0; i < 5; ++i) {
        m_panels[i] = new QLabel;
        m_panels[i]->setObjectName(QString("StatusPanel%1").arg(i + 1));
        bar->addPermanentWidget(m_panels[i], i == 0 ? 1 : 0);
    }
    m_panels[0]->setMinimumWidth(2000 / kTwipsPerPixel);
    m_clock = new QTimer(this);
    connect(m_clock, &QTimer::timeout, this,
            [this] { m_panels[1]->setText(QTime::currentTime().toString("hh:mm")); });
    m_clock->start(10000);
    m_panels[1]->setText(QTime::currentTime().toString("hh:mm"));
}

void frmEditor::buildMenus() {
    for (const MenuEntry& e : kMenus) {
        const QString name = e.name;
        if (QString(e.parent).isEmpty()) {
            QMenu* top = menuBar()->addMenu(e.caption);
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
            sub->setObjectName(name);
            m_menus[name] = sub;
            action = sub->menuAction();
        } else {
            action = parentMenu->addAction(e.caption);
            action->setCheckable(e.checkable);
            // Until its tool exists an entry is shown but cannot be chosen.
            action->setEnabled(false);
        }
        action->setObjectName(name);
        m_actions[name] = action;
    }
}

void frmEditor::connectCommands() {
    auto wire = [this](const char* name, void (frmEditor::*slot)()) {
        QAction* a = m_actions.at(name);
        a->setEnabled(true);
        connect(a, &QAction::triggered, this, slot);
    };
    wire("mnuOpenRS", &frmEditor::mnuOpenRS_Click);
    wire("mnuXML", &frmEditor::mnuXML_Click);
    wire("mnuClear", &frmEditor::mnuClear_Click);
    wire("mnuExit", &frmEditor::mnuExit_Click);
    wire("mnuDont", &frmEditor::mnuDont_Click);
    wire("mnuNewVer", &frmEditor::mnuNewVer_Click);
    wire("mnuEdMax", &frmEditor::mnuEdMax_Click);
    wire("mnuWarn", &frmEditor::mnuWarn_Click);
    wire("mnuRWPath", &frmEditor::mnuRWPath_Click);
    wire("mnuRWB", &frmEditor::mnuRWB_Click);
    wire("mnuLang", &frmEditor::mnuLang_Click);
    wire("mnuPaths", &frmEditor::mnuPaths_Click);
    wire("mnuIRF", &frmEditor::mnuIRF_Click);
    wire("mnuViewer", &frmEditor::mnuViewer_Click);
    wire("mnuAcro", &frmEditor::mnuAcro_Click);
    wire("mnuContents", &frmEditor::mnuContents_Click);
    wire("mnuUUID", &frmEditor::mnuUUID_Click);
    wire("mnuTime", &frmEditor::mnuTime_Click);
}

QAction* frmEditor::action(const QString& name) const {
    auto it = m_actions.find(name);
    return it == m_actions.end() ? nullptr : it->second;
}

QMenu* frmEditor::menu(const QString& name) const {
    auto it = m_menus.find(name);
    return it == m_menus.end() ? nullptr : it->second;
}

void frmEditor::assignCaptions() {
    for (const CaptionAssignment& a : editorCaptionAssignments()) {
        const QString control = QString::fromUtf8(a.control.data(), static_cast<qsizetype>(a.control.size()));
        if (!m_ctx.lang.has(a.entry))
            continue; // a control without its entry keeps the design caption
        const QString text = toQt(m_ctx.lang.text(a.entry));
        if (QAction* act = action(control)) {
            act->setText(text);
            if (QMenu* m = menu(control))
                m->setTitle(text);
        } else if (control == "SSTab1") {
            m_tabs->setTabText(0, text);
        } else if (control == "Frame1") {
            m_tabs->widget(0)->setToolTip(text);
        }
    }
}

WindowGeometry frmEditor::currentGeometry() const {
    const QRect g = normalGeometry();
    return {toTwips(g.width()), toTwips(g.height()), toTwips(g.top()), toTwips(g.left())};
}

void frmEditor::applyStartup() {
    const StartupResult& r = m_startup;
    action("mnuNewVer")->setChecked(m_ctx.settings.noNewVersionNotice);
    action("mnuDont")->setChecked(m_ctx.settings.dontAskOnClose);
    action("mnuWarn")->setChecked(m_ctx.settings.warnIfNotSaved);
    action("mnuEdMax")->setChecked(m_ctx.settings.editorState == 2);
    for (const char* name : {"mnuSaveRS", "mnuSavexml", "mnuSaveAs", "mnuPrint", "mnuDDS", "mnuView", "mnuEditDDS"})
        action(name)->setEnabled(false);
    action("mnuRSBT")->setVisible(r.showRsBinTool);
    if (r.fontSizeSet) {
        QFont f = m_text->font();
        f.setPointSizeF(r.fontSize);
        m_text->setFont(f);
    }
    setGeometry(r.geometry.left / kTwipsPerPixel, r.geometry.top / kTwipsPerPixel,
                r.geometry.width / kTwipsPerPixel, r.geometry.height / kTwipsPerPixel);
    if (r.maximised)
        setWindowState(windowState() | Qt::WindowMaximized);
    assignCaptions();
    if (m_ctx.lang.has(321))
        m_panels[0]->setText(toQt(m_ctx.lang.text(321)));
    m_panels[2]->setText(toQt(r.statusLanguage));
    setWindowTitle(toQt(r.caption));
    m_tabs->setCurrentIndex(0);

    switch (r.open) {
    case OpenAction::OpenBinary: mnuOpenRS_Click(); break;
    case OpenAction::OpenXml: mnuXML_Click(); break;
    case OpenAction::OpenTexture: // the texture tools come with their own screen
    case OpenAction::None: break;
    }
    SSTab1_Click(m_tabs->currentIndex());
}

void frmEditor::refreshCaption() { setWindowTitle(toQt(m_ctx.caption())); }

void frmEditor::showDocument(const std::string& path, const std::string& xml) {
    m_text->setProperty("loading", true);
    m_text->setPlainText(toQt(xml));
    m_text->setProperty("loading", false);
    m_edited = false;
    m_ctx.currentFile = path;
    m_panels[3]->setText(toQt(path));
    m_panels[4]->setText(QString::number(xml.size()));
}

void frmEditor::mnuOpenRS_Click() {
    std::string path = m_ctx.currentFile;
    if (!m_ctx.openedFromCommandLine || path.empty()) {
        FileRequest request;
        request.title = "Open TS 2019 File";
        request.filter = "TS 2019 Files (*.bin *.XSec *.GeoPcDx *.proxybin)|*.bin|All Files (*)|*";
        request.startFolder = m_ctx.railWorks();
        auto chosen = m_ctx.ui().chooseFile(request);
        if (!chosen)
            return;
        path = chosen->string();
    }
    m_ctx.openedFromCommandLine = false;
    std::string xml;
    if (auto r = binToXmlText(path, xml); !r) {
        m_ctx.ui().message("Cannot open " + path + "\n" + r.message, Icon::Warning);
        return;
    }
    showDocument(path, xml);
}

void frmEditor::mnuXML_Click() {
    std::string path = m_ctx.currentFile;
    if (!m_ctx.openedFromCommandLine || path.empty()) {
        FileRequest request;
        request.title = "Open .xml File";
        request.filter = "XML Files (*.xml *.proxyxml *.cost *.tgt)|*.xml|All Files (*)|*";
        request.startFolder = m_ctx.railWorks();
        auto chosen = m_ctx.ui().chooseFile(request);
        if (!chosen)
            return;
        path = chosen->string();
    }
    m_ctx.openedFromCommandLine = false;
    if (!FileExists(path)) {
        m_ctx.ui().message("Cannot open " + path + ": the file does not exist or cannot be read", Icon::Warning);
        return;
    }
    showDocument(path, ReadTextFile(path));
}

void frmEditor::mnuClear_Click() {
    m_text->setProperty("loading", true);
    m_text->clear();
    m_text->setProperty("loading", false);
    m_tree->clear();
    m_edited = false;
    m_panels[3]->clear();
    m_panels[4]->clear();
}

void frmEditor::mnuExit_Click() {
    close();
}

void frmEditor::mnuDont_Click() {
    velmora::mnuDont_Click(m_ctx);
    action("mnuDont")->setChecked(m_ctx.settings.dontAskOnClose);
}

void frmEditor::mnuNewVer_Click() {
    velmora::mnuNewVer_Click(m_ctx);
    action("mnuNewVer")->setChecked(m_ctx.settings.noNewVersionNotice);
}

void frmEditor::mnuEdMax_Click() {
    velmora::mnuEdMax_Click(m_ctx);
    action("mnuEdMax")->setChecked(m_ctx.settings.editorState == 2);
}

void frmEditor::mnuWarn_Click() {
    velmora::mnuWarn_Click(m_ctx);
    action("mnuWarn")->setChecked(m_ctx.settings.warnIfNotSaved);
}

void frmEditor::mnuRWPath_Click() {
    if (velmora::mnuRWPath_Click(m_ctx, currentGeometry()))
        refreshCaption();
}

void frmEditor::mnuRWB_Click() {
    auto folder = m_ctx.ui().chooseFolder("Select your RailWorks backup folder", m_ctx.settings.railWorksBackup);
    if (folder && velmora::mnuRWB_Click(m_ctx, *folder, currentGeometry()))
        refreshCaption();
}

void frmEditor::applyLanguage(const QString& fileName) {
    velmora::mnuLang_Click(m_ctx, fromQt(fileName), currentGeometry());
    m_panels[2]->setText(toQt(m_ctx.settings.language));
    assignCaptions();
}

void frmEditor::mnuLang_Click() {
    dlgLang dialog(m_ctx, this);
    if (dialog.exec() == QDialog::Accepted && !dialog.chosenFile().isEmpty())
        applyLanguage(dialog.chosenFile());
}

void frmEditor::mnuPaths_Click() {
    dlgOptions dialog(m_ctx, this);
    dialog.exec();
}

void frmEditor::mnuIRF_Click() { velmora::mnuIRF_Click(m_ctx); }
void frmEditor::mnuViewer_Click() { velmora::mnuViewer_Click(m_ctx); }
void frmEditor::mnuAcro_Click() { velmora::mnuAcro_Click(m_ctx); }
void frmEditor::mnuContents_Click() { velmora::mnuContents_Click(m_ctx); }

void frmEditor::mnuUUID_Click() {
    dlgGUID dialog(this);
    dialog.exec();
}

void frmEditor::mnuTime_Click() {
    dlgTime dialog(this);
    dialog.exec();
}

void frmEditor::SSTab1_Click(int index) {
    if (index != 2)
        return;
    // The route list tab shows Reports/RouteIndex.csv as loaded.
    m_routes->setSortingEnabled(false);
    m_routes->setRowCount(static_cast<int>(m_ctx.routes.size()));
    for (std::size_t i = 0; i < m_ctx.routes.size(); ++i) {
        m_routes->setItem(static_cast<int>(i), 0, new QTableWidgetItem(toQt(m_ctx.routes.folders[i])));
        m_routes->setItem(static_cast<int>(i), 1, new QTableWidgetItem(toQt(m_ctx.routes.names[i])));
    }
    m_routes->setSortingEnabled(true);
}

void frmEditor::closeEvent(QCloseEvent* event) {
    if (m_closing) {
        event->accept();
        return;
    }
    if (!runShutdown(m_ctx, m_edited, currentGeometry())) {
        event->ignore();
        return;
    }
    m_closing = true;
    event->accept();
    // The whole program ends with this screen, whatever other screens are still open.
    QCoreApplication::quit();
}

} // namespace velmora::ui
