#include "frmeditor.h"

#include "../consists/frmcheckqd.h"
#include "../common/numberedview.h"

#include "../common/frmabout.h"
#include "../common/desktopui.h"
#include "../common/mnemonics.h"
#include "../assets/frmassets.h"
#include "../assets/frmcontent.h"
#include "../assets/frmindex.h"
#include "../archives/apmenus.h"
#include "../archives/frmapconsists.h"
#include "../archives/frmassetsap.h"
#include "../routes/frmdelroute.h"
#include "../routes/frmmkre.h"
#include "../routes/frmprovider.h"
#include "../scenarios/frmshowroutes.h"
#include "../textures/frmgfx2.h"
#include "dialogs.h"
#include "dlgsearch.h"
#include "texturemenus.h"
#include "xmlhighlighter.h"
#include "xmltreemodel.h"
#include "velmora/core/editorcaptions.h"
#include "velmora/core/services.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDateTime>
#include <QFontMetricsF>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QStatusBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>

namespace velmora::ui {

namespace {

QPushButton* commandButton(const char* name, const QString& caption) {
    auto* b = new QPushButton(caption);
    b->setObjectName(name);
    return b;
}

} // namespace

frmEditor::frmEditor(AppContext& ctx, const StartupOptions& options, QWidget* parent)
    : QMainWindow(parent), m_ctx(ctx) {
    setObjectName("frmEditor");
    buildWidgets();
    buildMenus();
    buildContextMenu();
    connectCommands();
    m_startup = runStartup(m_ctx, options);
    applyStartup();
    markWaitingEntries();
}

frmEditor::~frmEditor() = default;

void frmEditor::buildWidgets() {
    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName("SSTab1");
    m_tabs->addTab(buildTextTab(), tr("Text"));
    m_tabs->addTab(buildTreeTab(), tr("XML Tree"));
    m_tabs->addTab(buildRoutesTab(), tr("Routes"));
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
    m_panels[0]->setMinimumWidth(fromTwips({2000, 0, 0, 0}).width());
    m_panels[1]->setProperty("key", "Time panel");
    m_clock = new QTimer(this);
    connect(m_clock, &QTimer::timeout, this,
            [this] { m_panels[1]->setText(QTime::currentTime().toString("hh:mm")); });
    m_clock->start(10000);
    m_panels[1]->setText(QTime::currentTime().toString("hh:mm"));
}

QWidget* frmEditor::buildTextTab() {
    auto* frame1 = new QWidget;
    frame1->setObjectName("Frame1");

    auto* label1 = new QLabel(tr("File:"));
    label1->setObjectName("Label1");
    m_path = new QLineEdit;
    m_path->setObjectName("Text1");
    m_path->setReadOnly(true);
    m_pathLabel = new QLabel;
    m_pathLabel->setObjectName("Label2");
    auto* label3 = new QLabel(tr("File:"));
    label3->setObjectName("Label3");
    m_path2 = new QLineEdit;
    m_path2->setObjectName("Text3");
    m_path2->setReadOnly(true);
    m_path2Label = new QLabel;
    m_path2Label->setObjectName("Label4");

    m_text = new NumberedView;
    m_text->setObjectName("RichTextBox1");
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_text2 = new QPlainTextEdit;
    m_text2->setObjectName("RTB2");
    m_text2->setLineWrapMode(QPlainTextEdit::NoWrap);
    QFont mono(QStringLiteral("Courier New"));
    mono.setStyleHint(QFont::Monospace);
    mono.setPointSize(11);
    m_text->setFont(mono);
    m_text2->setFont(mono);
    for (QPlainTextEdit* view : {static_cast<QPlainTextEdit*>(m_text), m_text2})
        view->setTabStopDistance(4 * QFontMetricsF(mono).horizontalAdvance(' '));
    connect(m_text, &QPlainTextEdit::textChanged, this, [this] {
        if (!m_loading && m_path->text().endsWith(QLatin1String("bin")))
            m_edited = true;
    });
    // While the second view is open both views keep to the same character offset.
    connect(m_text, &QPlainTextEdit::cursorPositionChanged, this, [this] {
        if (!m_secondView)
            return;
        QTextCursor c = m_text2->textCursor();
        c.setPosition(std::min(m_text->textCursor().position(), m_text2->document()->characterCount() - 1));
        m_text2->setTextCursor(c);
        m_text2->ensureCursorVisible();
    });

    m_highlight = commandButton("Command1", tr("Highlight XML"));
    m_font = commandButton("Command5", tr("Change Font"));
    m_clearScreen = commandButton("Command6", tr("Clear screen"));
    m_showImage = commandButton("Command7", tr("Show Image"));
    m_showImage->setVisible(false);
    connect(m_highlight, &QPushButton::clicked, this, &frmEditor::Command1_Click);
    connect(m_font, &QPushButton::clicked, this, &frmEditor::Command5_Click);
    connect(m_clearScreen, &QPushButton::clicked, this, &frmEditor::Command6_Click);

    auto* top = new QGridLayout;
    top->addWidget(label1, 0, 0);
    top->addWidget(m_path, 0, 1);
    top->addWidget(m_highlight, 0, 2);
    top->addWidget(m_font, 0, 3);
    top->addWidget(m_clearScreen, 0, 4);
    top->addWidget(m_showImage, 0, 5);
    top->addWidget(m_pathLabel, 1, 1, 1, 5);
    top->addWidget(label3, 2, 0);
    top->addWidget(m_path2, 2, 1);
    top->addWidget(m_path2Label, 3, 1, 1, 5);
    for (QWidget* w : {static_cast<QWidget*>(label3), static_cast<QWidget*>(m_path2),
                       static_cast<QWidget*>(m_path2Label), static_cast<QWidget*>(m_text2)})
        w->setVisible(false);
    label3->setProperty("secondView", true);

    auto* split = new QSplitter(Qt::Vertical);
    split->addWidget(m_text);
    split->addWidget(m_text2);
    auto* l = new QVBoxLayout(frame1);
    l->addLayout(top);
    l->addWidget(split, 1);
    return frame1;
}

QWidget* frmEditor::buildTreeTab() {
    auto* page = new QWidget;
    auto* frame2 = new QWidget;
    frame2->setObjectName("Frame2");
    m_tree = new QTreeView;
    m_tree->setObjectName("trevwContents");
    m_tree->setHeaderHidden(true);
    m_tree->setUniformRowHeights(true);
    m_tree->setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);
    m_treeModel = new XmlTreeModel(this);
    m_tree->setModel(m_treeModel);
    connect(m_tree, &QTreeView::clicked, this, &frmEditor::showNode);
    connect(m_tree->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current) { showNode(current); });
    connect(m_treeModel, &XmlTreeModel::nameRefused, this, [this] {
        m_ctx.ui().message("Node names cannot have spaces!", Icon::Warning, "Invalid character");
    });
    connect(m_treeModel, &XmlTreeModel::nameChanged, this, [this] { SetDirty(true); });
    auto* l2 = new QVBoxLayout(frame2);
    l2->setContentsMargins(0, 0, 0, 0);
    l2->addWidget(m_tree);

    auto* frame3 = new QWidget;
    frame3->setObjectName("Frame3");
    m_treeFind = new QLineEdit;
    m_treeFind->setObjectName("Text2");
    connect(m_treeFind, &QLineEdit::returnPressed, this, &frmEditor::Command2_Click);
    auto* find = commandButton("Command2", tr("Find"));
    auto* findAll = commandButton("Command3", tr("Find All"));
    auto* findText = commandButton("Command4", tr("Find in Text"));
    connect(find, &QPushButton::clicked, this, &frmEditor::Command2_Click);
    connect(findAll, &QPushButton::clicked, this, &frmEditor::Command3_Click);
    connect(findText, &QPushButton::clicked, this, &frmEditor::Command4_Click);
    auto* l3 = new QHBoxLayout(frame3);
    l3->setContentsMargins(0, 0, 0, 0);
    l3->addWidget(m_treeFind, 1);
    l3->addWidget(find);
    l3->addWidget(findAll);
    l3->addWidget(findText);

    m_attribsFrame = new QWidget;
    m_attribsFrame->setObjectName("fraAttribs");
    auto* lblNames = new QLabel(tr("Attributes"));
    lblNames->setObjectName("lblNames");
    m_attributes = new QListWidget;
    m_attributes->setObjectName("lstAttributes");
    auto* lblValue = new QLabel(tr("Value"));
    lblValue->setObjectName("lblValue");
    m_attributeValue = new QLineEdit;
    m_attributeValue->setObjectName("txtAttributeValue");
    auto* lblText = new QLabel(tr("Text"));
    lblText->setObjectName("lblText");
    m_characters = new QPlainTextEdit;
    m_characters->setObjectName("txtCharacters");
    connect(m_attributes, &QListWidget::currentRowChanged, this, [this](int row) {
        if (!m_selectedNode || row < 0 || static_cast<std::size_t>(row) >= m_selectedNode->attributes.size())
            return;
        m_nodeEditing = true;
        m_attributeValue->setText(m_selectedNode->attributes[static_cast<std::size_t>(row)].second);
        m_nodeEditing = false;
    });
    connect(m_attributeValue, &QLineEdit::textEdited, this, [this](const QString& value) {
        const int row = m_attributes->currentRow();
        if (!m_selectedNode || row < 0 || static_cast<std::size_t>(row) >= m_selectedNode->attributes.size())
            return;
        m_selectedNode->attributes[static_cast<std::size_t>(row)].second = value;
        SetDirty(true);
    });
    connect(m_characters, &QPlainTextEdit::textChanged, this, [this] {
        if (m_nodeEditing || !m_selectedNode)
            return;
        m_selectedNode->characters = m_characters->toPlainText();
        SetDirty(true);
    });
    auto* la = new QVBoxLayout(m_attribsFrame);
    la->setContentsMargins(0, 0, 0, 0);
    la->addWidget(lblNames);
    la->addWidget(m_attributes, 1);
    la->addWidget(lblValue);
    la->addWidget(m_attributeValue);
    la->addWidget(lblText);
    la->addWidget(m_characters, 2);
    EnableNodeEdit(false);

    m_treeNote = new QLabel(tr("Edits made in the tree are not saved: Save writes the document as the Text tab "
                               "shows it."));
    m_treeNote->setObjectName("lblTreeNote");
    m_treeNote->setWordWrap(true);
    m_treeNote->setVisible(false);

    auto* split = new QSplitter(Qt::Horizontal);
    split->addWidget(frame2);
    split->addWidget(m_attribsFrame);
    split->setStretchFactor(0, 2);
    split->setStretchFactor(1, 1);
    auto* l = new QVBoxLayout(page);
    l->addWidget(frame3);
    l->addWidget(m_treeNote);
    l->addWidget(split, 1);
    return page;
}

QWidget* frmEditor::buildRoutesTab() {
    auto* frame5 = new QWidget;
    frame5->setObjectName("Frame5");
    m_routes = new QTableWidget(0, 2);
    m_routes->setObjectName("VSFG1");
    m_routes->setHorizontalHeaderLabels({tr("Route folder"), tr("Route name")});
    m_routes->horizontalHeader()->setStretchLastSection(true);
    m_routes->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_routes->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_routes->horizontalHeader()->setSortIndicator(0, Qt::AscendingOrder);
    m_routes->setSortingEnabled(true);
    auto* open = commandButton("Command8", tr("Open Selected Folder"));
    auto* load = commandButton("Command9", tr("Load List"));
    auto* print = commandButton("Command10", tr("Print List"));
    connect(open, &QPushButton::clicked, this, &frmEditor::Command8_Click);
    connect(load, &QPushButton::clicked, this, &frmEditor::Command9_Click);
    connect(print, &QPushButton::clicked, this, &frmEditor::Command10_Click);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(open);
    buttons->addWidget(load);
    buttons->addWidget(print);
    buttons->addStretch(1);
    auto* l = new QVBoxLayout(frame5);
    l->addLayout(buttons);
    l->addWidget(m_routes, 1);
    return frame5;
}

void frmEditor::buildContextMenu() {
    // mnuPop1: the right-click menu of both text views.
    m_context = new QMenu(this);
    m_context->setObjectName("mnuPop1");
    m_context->setToolTipsVisible(true);
    struct Item {
        const char* name;
        const char* caption;
        void (QPlainTextEdit::*slot)();
    };
    const Item items[] = {{"mnuCopy", "Copy", &QPlainTextEdit::copy},
                          {"mnuCut", "Cut", &QPlainTextEdit::cut},
                          {"mnuPaste", "Paste", &QPlainTextEdit::paste},
                          {"mnuDelete", "Delete", nullptr},
                          {"mnuSelAll", "Select All", &QPlainTextEdit::selectAll}};
    for (const Item& item : items) {
        QAction* a = m_context->addAction(tr(item.caption));
        a->setObjectName(item.name);
        m_actions[item.name] = a;
        connect(a, &QAction::triggered, this, [this, slot = item.slot] {
            auto* view = qobject_cast<QPlainTextEdit*>(m_context->property("view").value<QObject*>());
            if (!view)
                view = m_text;
            if (slot)
                (view->*slot)();
            else
                view->textCursor().removeSelectedText();
        });
    }
    for (QPlainTextEdit* view : {static_cast<QPlainTextEdit*>(m_text), m_text2}) {
        view->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(view, &QWidget::customContextMenuRequested, this, [this, view](const QPoint& at) {
            m_context->setProperty("view", QVariant::fromValue<QObject*>(view));
            m_context->popup(view->mapToGlobal(at));
        });
    }
}

template <typename Screen, typename Make>
void frmEditor::liveTool(const char* name, Make make) {
    connect(action(name), &QAction::triggered, this, [this, make] {
        auto* screen = findChild<Screen*>();
        if (!screen)
            screen = make();
        screen->show();
        screen->raise();
    });
    action(name)->setEnabled(true);
}

void frmEditor::connectCommands() {
    auto wire = [this](const char* name, void (frmEditor::*slot)()) {
        QAction* a = m_actions.at(name);
        a->setEnabled(true);
        connect(a, &QAction::triggered, this, slot);
    };
    wire("mnuOpenRS", &frmEditor::mnuOpenRS_Click);
    wire("mnuSaveRS", &frmEditor::mnuSaveRS_Click);
    wire("mnuItSaveAs", &frmEditor::mnuItSaveAs_Click);
    wire("mnuUndoLast", &frmEditor::mnuUndoLast_Click);
    wire("mnuXML", &frmEditor::mnuXML_Click);
    wire("mnuSavexml", &frmEditor::mnuSavexml_Click);
    wire("mnuSaveAs", &frmEditor::mnuSaveAs_Click);
    wire("mnuClear", &frmEditor::mnuClear_Click);
    wire("mnuPrint", &frmEditor::mnuPrint_Click);
    wire("mnuExit", &frmEditor::mnuExit_Click);
    wire("mnu2bin", &frmEditor::mnu2bin_Click);
    wire("mnuFile2", &frmEditor::mnufile2_Click);
    wire("mnuFind", &frmEditor::mnuFind_Click);
    wire("mnuGoToLine", &frmEditor::mnuGoToLine_Click);
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
    wire("mnuAbout", &frmEditor::mnuAbout_Click);
    wire("mnuUUID", &frmEditor::mnuUUID_Click);
    wire("mnuTime", &frmEditor::mnuTime_Click);
    wire("mnuAE", &frmEditor::mnuAE_Click);
    wire("mnuRollingStock", &frmEditor::mnuRollingStock_Click);
    wire("mnuIdent", &frmEditor::mnuIdent_Click);
    wire("mnuDelRoute", &frmEditor::mnuDelRoute_Click);
    wire("mnuAddProv", &frmEditor::mnuAddProv_Click);
    wire("mnuOstrand", &frmEditor::mnuOstrand_Click);
    wire("mnuEC", &frmEditor::mnuEC_Click);
    wire("mnuBuildCon", &frmEditor::mnuBuildCon_Click);
    wire("mnuFindMult", &frmEditor::mnuFindMult_Click);
    wire("mnuCSV", &frmEditor::mnuCSV_Click);
    wire("mnuExcel", &frmEditor::mnuExcel_Click);
    wire("mnuCTF", &frmEditor::mnuCTF_Click);
    wire("mnuClearTemp", &frmEditor::mnuClearTemp_Click);
    wire("mnuQDPreload", &frmEditor::mnuQDPreload_Click);
    wire("mnuBuildQD", &frmEditor::mnuBuildQD_Click);
    wire("mnuBackup", &frmEditor::mnuBackup_Click);
    wire("mnuInc", &frmEditor::mnuInc_Click);
    wire("mnuReadWrite", &frmEditor::mnuReadWrite_Click);
    wire("mnuSelRW", &frmEditor::mnuSelRW_Click);
    wire("mnuVer", &frmEditor::mnuVer_Click);
    wire("mnuWeb", &frmEditor::mnuWeb_Click);
    connectRouteTools();
    liveTool<frmMKRE>("mnuMkRW", [this] { return new frmMKRE(m_ctx, this); });
    connectPackaging();
    // The texture conversions of the Graphics Tools menu, on the open texture.
    connect(action("mnuOpenTex"), &QAction::triggered, this, [this] {
        if (const auto path = choosePath("Open RS Texture files", "RS Files (*.TgPcDx)|*.TgPcDx")) {
            MakePath(tempDdsFolder(m_ctx));
            // Opened as any binary document is, without asking again.
            m_ctx.currentFile = *path;
            m_openedFromRouteList = true;
            mnuOpenRS_Click();
        }
    });
    connect(this, &frmEditor::documentLoaded, this,
            [this] { action("mnuDDS")->setEnabled(m_path->text().endsWith(QLatin1String("TgPcDx"), Qt::CaseInsensitive)); });
    connect(action("mnuDDS"), &QAction::triggered, this, [this] {
        const bool made = mnuDDS_Click(m_ctx, fromQt(m_path->text()));
        action("mnuView")->setEnabled(made);
        action("mnuEditDDS")->setEnabled(made);
    });
    connect(action("mnuView"), &QAction::triggered, this,
            [this] { openDdsWith(m_ctx, m_ctx.settings.graphicsViewer, fromQt(m_path->text())); });
    connect(action("mnuEditDDS"), &QAction::triggered, this,
            [this] { openDdsWith(m_ctx, m_ctx.settings.textureEditor, fromQt(m_path->text())); });
    connect(action("mnuDDStoKrs"), &QAction::triggered, this, [this] { mnuDDStoKrs_Click(m_ctx, fromQt(m_path->text())); });
    connect(action("mnuEmpt"), &QAction::triggered, this, [this] { mnuEmpt_Click(m_ctx); });
    connect(action("mnuRSBT"), &QAction::triggered, this, [this] { mnuRSBT_Click(m_ctx); });
    for (const char* name : {"mnuOpenTex", "mnuDDStoKrs", "mnuEmpt", "mnuRSBT"})
        action(name)->setEnabled(true);
    // PicView: empty from the menu; Show Image hands it the open texture.
    liveTool<frmGFX2>("mnuTgpcdx", [this] { return new frmGFX2(m_ctx, {}, this); });
    connect(m_showImage, &QPushButton::clicked, this, [this] {
        const fs::path texture = fromQt(m_path->text());
        if (auto* screen = findChild<frmGFX2*>()) {
            screen->setFolder(texture.parent_path());
            screen->openPicture(texture);
            screen->show();
            screen->raise();
        } else {
            (new frmGFX2(m_ctx, texture, this))->show();
        }
    });
    // Tool screens made on first use and kept while the program runs (the content list closes
    // for good, as the asset list does).
    liveTool<frmCheckQD>("mnuCheckQD", [this] { return new frmCheckQD(m_ctx, this); });
    liveTool<frmContent>("mnuCnt", [this] {
        auto* screen = new frmContent(m_ctx, this);
        screen->setWindowFlag(Qt::Window);
        screen->setAttribute(Qt::WA_DeleteOnClose);
        return screen;
    });
    liveTool<frmAssetsAP>("mnuAPEdit", [this] {
        auto* screen = new frmAssetsAP(m_ctx, this);
        screen->setWindowFlag(Qt::Window);
        connect(screen, &frmAssetsAP::openInEditor, this, [this](const QString& file) {
            openChosenPath(fromQt(file));
            raise();
        });
        return screen;
    });
    liveTool<frmAPConsists>("mnuAPCont", [this] {
        auto* screen = new frmAPConsists(m_ctx, this);
        screen->setWindowFlag(Qt::Window);
        return screen;
    });
    connect(action("mnuTxt"), &QAction::triggered, this, [this] { mnuTxt_Click(); });
    action("mnuTxt")->setEnabled(true);
    // The .ap archive tools.
    connect(action("mnuAP"), &QAction::triggered, this, [this] {
        openArchiveManager(
            m_ctx, [this](const fs::path& file, const std::string& from) { openArchivedDocument(file.string(), from); },
            this);
    });
    connect(action("mnuListAP"), &QAction::triggered, this, [this] { listApEntries(m_ctx, this); });
    for (const char* name : kApSearchMenus)
        connect(action(name), &QAction::triggered, this, [this, name] { runApSearchMenu(m_ctx, name, this); });
    for (const char* name : {"mnuAP", "mnuListAP", "mnuFindAllAP", "mnuNoDet", "mnuMC", "mnuSce", "mnuFA"})
        action(name)->setEnabled(true);
    action("mnu2bin")->setCheckable(true);
    action("mnuFile2")->setEnabled(false);

    // The keys desktop users expect.
    action("mnuOpenRS")->setShortcut(QKeySequence::Open);
    action("mnuSaveRS")->setShortcut(QKeySequence::Save);
    action("mnuFind")->setShortcut(QKeySequence::Find);
    action("mnuGoToLine")->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_G));
    action("mnuContents")->setShortcut(QKeySequence::HelpContents);
    action("mnuExit")->setShortcut(QKeySequence::Quit);
    auto* findNext = new QAction(this);
    findNext->setObjectName("findNext");
    findNext->setShortcut(QKeySequence::FindNext);
    connect(findNext, &QAction::triggered, this, [this] {
        if (m_search && !m_search->searchBox()->text().isEmpty())
            m_search->Command2_Click();
        else
            mnuFind_Click();
    });
    addAction(findNext);
}

QAction* frmEditor::action(const QString& name) const {
    auto it = m_actions.find(name);
    return it == m_actions.end() ? nullptr : it->second;
}

QMenu* frmEditor::menu(const QString& name) const {
    auto it = m_menus.find(name);
    return it == m_menus.end() ? nullptr : it->second;
}

QString frmEditor::panelText(int panel) const {
    return panel >= 1 && panel <= 5 ? m_panels[panel - 1]->text() : QString();
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
        } else if (auto* button = findChild<QPushButton*>(control)) {
            button->setText(text);
        } else if (auto* label = findChild<QLabel*>(control)) {
            label->setText(text);
        }
    }
    // Highlight XML shows its second caption while the colouring is on.
    if (m_highlighted && m_ctx.lang.has(311))
        m_highlight->setText(toQt(m_ctx.lang.text(311)));
    if (m_ctx.lang.has(321))
        m_panels[0]->setText(toQt(m_ctx.lang.text(321)));
    // The language tables give plain words: the keys for keyboard users are chosen here.
    assignMnemonics(menuBar());
}

WindowGeometry frmEditor::currentGeometry() const {
    return toTwips(normalGeometry());
}

void frmEditor::applyStartup() {
    const StartupResult& r = m_startup;
    action("mnuNewVer")->setChecked(m_ctx.settings.noNewVersionNotice);
    action("mnuDont")->setChecked(m_ctx.settings.dontAskOnClose);
    action("mnuWarn")->setChecked(m_ctx.settings.warnIfNotSaved);
    action("mnuEdMax")->setChecked(m_ctx.settings.editorState == 2);
    for (const char* name : {"mnuSaveRS", "mnuItSaveAs", "mnuSavexml", "mnuSaveAs", "mnuPrint", "mnuDDS", "mnuView",
                             "mnuEditDDS"})
        action(name)->setEnabled(false);
    action("mnuRSBT")->setVisible(r.showRsBinTool);
    if (r.fontSizeSet) {
        for (QPlainTextEdit* view : {static_cast<QPlainTextEdit*>(m_text), m_text2}) {
            QFont f = view->font();
            f.setPointSizeF(r.fontSize);
            view->setFont(f);
        }
    }
    setGeometry(fromTwips(r.geometry));
    if (r.maximised)
        setWindowState(windowState() | Qt::WindowMaximized);
    assignCaptions();
    m_panels[2]->setText(toQt(r.statusLanguage));
    refreshCaption();
    m_tabs->setCurrentIndex(0);

    switch (r.open) {
    case OpenAction::OpenBinary: mnuOpenRS_Click(); break;
    case OpenAction::OpenXml: mnuXML_Click(); break;
    case OpenAction::OpenTexture: // the texture tools come with their own screen
    case OpenAction::None: break;
    }
    SSTab1_Click(m_tabs->currentIndex());
}

void frmEditor::refreshCaption() {
    m_caption = m_ctx.caption();
    setWindowTitle(toQt(m_caption));
}

void frmEditor::mnuExit_Click() { close(); }

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

void frmEditor::mnuAbout_Click() {
    frmAbout screen(m_ctx, this);
    screen.exec();
}

void frmEditor::mnuUUID_Click() {
    dlgGUID dialog(this);
    dialog.exec();
}

void frmEditor::mnuTime_Click() {
    dlgTime dialog(this);
    dialog.exec();
}

void frmEditor::mnuAE_Click() {
    if (!m_assets) {
        auto* screen = new frmAssets(m_ctx, this);
        screen->setWindowFlag(Qt::Window);
        screen->setAttribute(Qt::WA_DeleteOnClose);
        m_assets = screen;
    }
    m_assets->show();
    m_assets->raise();
}

void frmEditor::mnuAddProv_Click() {
    auto* screen = new frmProvider(m_ctx, this);
    screen->setAttribute(Qt::WA_DeleteOnClose);
    screen->show();
}

void frmEditor::mnuDelRoute_Click() {
    if (!m_routeScreen) {
        auto* screen = new frmDelRoute(m_ctx, false, this);
        screen->setAttribute(Qt::WA_DeleteOnClose);
        m_routeScreen = screen;
    }
    m_routeScreen->show();
    m_routeScreen->raise();
}

void frmEditor::mnuOstrand_Click() {
    if (!m_scenarioScreen) {
        auto* screen = new frmShowRoutes(m_ctx, this);
        screen->setAttribute(Qt::WA_DeleteOnClose);
        m_scenarioScreen = screen;
    }
    m_scenarioScreen->show();
    m_scenarioScreen->raise();
}

void frmEditor::mnuRollingStock_Click() {
    frmIndex screen(m_ctx, this);
    if (screen.loaded())
        screen.exec();
}

void frmEditor::mnuIdent_Click() {
    frmMain screen(m_ctx, this);
    screen.exec();
}

void frmEditor::mnuFind_Click() {
    if (!m_search)
        m_search = new dlgSearch(m_text, m_ctx.ui(), this);
    m_search->show();
    m_search->raise();
}

void frmEditor::mnuGoToLine_Click() {
    const int lines = m_text->document()->blockCount();
    const auto answer = m_ctx.ui().inputText("Line number (1 to " + std::to_string(lines) + "):", "Go to Line",
                                             std::to_string(m_text->textCursor().blockNumber() + 1));
    if (!answer)
        return;
    bool ok = false;
    const int line = QString::fromStdString(*answer).trimmed().toInt(&ok);
    if (!ok || !m_text->goToLine(line))
        m_ctx.ui().message("There is no line " + *answer + " in this document: it has " + std::to_string(lines) + ".",
                           Icon::Warning, "Go to Line");
}

void frmEditor::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::PaletteChange)
        return;
    // The views take the new palette after this screen does: read theirs once they have it.
    QTimer::singleShot(0, this, [this] {
        if (m_highlighter)
            m_highlighter->setPalette(m_text->palette());
        if (m_highlighter2)
            m_highlighter2->setPalette(m_text2->palette());
    });
}

void frmEditor::closeEvent(QCloseEvent* event) {
    if (m_closing) {
        event->accept();
        return;
    }
    if (!runShutdown(m_ctx, m_edited && !m_saved, currentGeometry())) {
        event->ignore();
        return;
    }
    m_closing = true;
    event->accept();
    // The other screens still open keep their places for the next run.
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w != this && w->isVisible())
            w->hide();
    // The whole program ends with this screen, whatever other screens are still open.
    QCoreApplication::quit();
}

} // namespace velmora::ui
