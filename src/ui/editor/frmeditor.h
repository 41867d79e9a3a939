#pragma once
// The main screen: the document editor and the menu from which every other tool opens.
// Tab 0 is the text view (with an optional second view below it), tab 1 the XML tree of the
// loaded document, tab 2 the list of routes from Reports/RouteIndex.csv.

#include "../common/doctext.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/document.h"
#include "velmora/core/xmltree.h"
#include "velmora/packaging/packaging.h"

#include "../common/numberedview.h"

#include <QDialog>
#include <QMainWindow>
#include <QPointer>

#include <map>
#include <memory>

class QAction;
class QLabel;
class QLineEdit;
class QListWidget;
class QMenu;
class QPlainTextEdit;
class QPushButton;
class QTabWidget;
class QTableWidget;
class QTreeView;
class QTimer;
class QWidget;
class QPrinter;
class QFont;
class QModelIndex;

namespace velmora::ui {

class XmlHighlighter;
class XmlTreeModel;
class dlgSearch;
class frmListRS;
class frmReport;

// Clear Railworks\Temp: the files of the simulator's Temp folder, deleted one by one or all.
class frmFolder6 : public QDialog {
    Q_OBJECT
public:
    frmFolder6(AppContext& ctx, QWidget* parent = nullptr);
    QListWidget* files() const { return m_files; }
public slots:
    void Command1_Click(); // Delete Selected
    void Command2_Click(); // Delete All
private:
    void refresh();
    AppContext& m_ctx;
    std::filesystem::path m_folder;
    QListWidget* m_files;
};

class frmEditor : public QMainWindow {
    Q_OBJECT
public:
    // Runs the start-up sequence; `options` carries --railworks and the document path.
    frmEditor(AppContext& ctx, const StartupOptions& options, QWidget* parent = nullptr);
    ~frmEditor() override;

    AppContext& context() { return m_ctx; }
    const StartupResult& startup() const { return m_startup; }

    // What a menu entry that is not yet live waits for: the tooltip it shows when disabled.
    static QString waitsFor(const QString& entry);
    void markWaitingEntries();
    // A saved .csv or .xls report chosen by the user, in a grid report screen (or nothing).
    frmListRS* openGridReport(const std::string& filter);

    // Every menu entry by its control name (mnuOpenRS, mnuDont, ...).
    QAction* action(const QString& name) const;
    QMenu* menu(const QString& name) const;

    // LoadLanguage's last step: the captions of this screen from the language table.
    void assignCaptions();
    // The window's size and position in twips, as the settings file keeps them.
    WindowGeometry currentGeometry() const;

    bool edited() const { return m_edited; }
    bool saved() const { return m_saved; }
    NumberedView* textView() const { return m_text; }
    QPlainTextEdit* secondView() const { return m_text2; }
    const EditorDocument& document() const { return m_doc; }
    const XmlTree& tree() const { return m_xmlTree; }
    bool treeLoaded() const { return m_treeLoaded; }
    bool highlighted() const { return m_highlighted; }
    // The status bar's panels 1 to 5.
    QString panelText(int panel) const;

    // dlgLang's OK: switch to the chosen Lang_<name>.txt.
    void applyLanguage(const QString& fileName);

    // The searches of the tree tab; `text` is what Text2 holds.
    void setTreeSearchText(const QString& text);
    // Bold nodes of the tree (the hits of Find and Find All), by key.
    QStringList boldNodes() const;

    // Change Font's result: both views, and the size kept in the settings.
    void applyFont(const QFont& font);
    // Prints the text view (tabs taken out first), whole or the selection.
    void printText(QPrinter& printer, bool selectionOnly);

    // A document taken out of an archive into TempFiles, opened for reading: `from` names the
    // archive and the entry. Save asks for another place rather than writing into TempFiles.
    void openArchivedDocument(const std::string& path, const std::string& from);
    bool documentReadOnly() const { return m_readOnlyDoc; }

    // Documents above this size load in the background with progress.
    static constexpr qsizetype kBackgroundLoadBytes = 4 * 1024 * 1024;

public slots:
    void mnuOpenRS_Click();
    void mnuSaveRS_Click();
    void mnuGoToLine_Click(); // Ctrl+G: the cursor to a line the user names
    // True while a document is open and its path is the one shown.
    bool documentShown() const;
    // Files > Undo Last Change...: shows the newest change not yet undone and asks first.
    void mnuUndoLast_Click();
    void mnuItSaveAs_Click();
    void mnuXML_Click();
    void mnuSavexml_Click();
    void mnuSaveAs_Click();
    void mnuClear_Click();
    void mnuPrint_Click();
    void mnuExit_Click();
    void mnu2bin_Click();
    void mnufile2_Click();
    void mnuFind_Click();
    void mnuDont_Click();
    void mnuNewVer_Click();
    void mnuEdMax_Click();
    void mnuWarn_Click();
    void mnuRWPath_Click();
    void mnuRWB_Click();
    void mnuLang_Click();
    void mnuPaths_Click();
    void mnuIRF_Click();
    void mnuViewer_Click();
    void mnuAcro_Click();
    void mnuContents_Click();
    void mnuAbout_Click();
    void mnuUUID_Click();
    void mnuTime_Click();
    void mnuAE_Click();           // the asset screen
    void mnuRollingStock_Click(); // the rolling-stock index
    void mnuIdent_Click();        // Search For Assets Details
    void mnuDelRoute_Click();     // the route screen
    void mnuAddProv_Click();      // Edit Providers: frmProvider
    void mnuOstrand_Click();      // the scenario list, the way into the scenario editor
    void mnuEC_Click();           // Compare Consists: a consist copied into another scenario
    void mnuBuildCon_Click();     // Build or Edit Consists: the saved consists
    void mnuFindMult_Click();     // Find in Multiple Files, modal
    void mnuCSV_Click();          // a saved grid report in frmListRS
    void mnuExcel_Click();
    frmReport* mnuTxt_Click();    // a saved text report in frmReport
    void mnuCTF_Click();          // Clear Temp Files
    void mnuClearTemp_Click();    // Clear Railworks\Temp
    void mnuQDPreload_Click();    // PreLoad Folder
    void mnuBuildQD_Click();      // Build QD Consists or Fragments
    void mnuBackup_Click();       // a full backup into the next VL_Backup<n>
    void mnuInc_Click();          // the incremental backup
    void mnuReadWrite_Click();    // Make all RW files Read/Write
    void mnuSelRW_Click();        // Make files in Selected folder Read/Write
    void mnuVer_Click();          // Check for Newer Version
    void mnuWeb_Click();          // Go to My Web Site
    void Command1_Click(); // Highlight XML
    void Command2_Click(); // Find in the tree
    void Command3_Click(); // Find All in the tree
    void Command4_Click(); // Find in Text of the tree
    void Command5_Click(); // Change Font
    void Command6_Click(); // Clear screen
    void Command8_Click(); // Open Selected Folder
    void Command9_Click(); // Load List
    void Command10_Click(); // Print List
    void SSTab1_Click(int index);

signals:
    // A document has been shown in the text view (after a background load too).
    void documentLoaded();

protected:
    // Another theme: the highlighting colours follow the new palette.
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void buildWidgets();
    QWidget* buildTextTab();
    QWidget* buildTreeTab();
    QWidget* buildRoutesTab();
    void buildMenus();
    void buildContextMenu();
    void connectCommands();
    // Enables the menu entry `name` to show the one screen of type Screen, made by `make` on
    // first use.
    template <typename Screen, typename Make>
    void liveTool(const char* name, Make make);
    void applyStartup();
    void refreshCaption();
    void enableForDocument(bool binary);
    // Drops the open document: the save commands are disabled until the next one opens.
    void forgetDocument();

    // Open: the path from the command line or the route list, else a file dialog.
    std::optional<std::string> choosePath(const std::string& title, const std::string& filter);
    void loadBinary(const std::string& path);
    void showText(QPlainTextEdit* view, const QString& text);
    std::string viewBytes(QPlainTextEdit* view) const;
    void markLoaded(const std::string& path);
    // A path chosen elsewhere (the route list, the recent files) opened as its ending says.
    void openChosenPath(const std::string& path);
    // Files > Recent Files.
    void fillRecentMenu();
    void openRecent(const std::string& path);
    void rememberRecent(const std::string& path);
    void saveDesktopState();

    // The tree tab.
    void ClearCurrentFile(const QString& fileName);
    bool LoadXMLFile();
    void showNode(const QModelIndex& index);
    void SetDirty(bool dirty);
    void EnableNodeEdit(bool enabled);
    void treeSearch(TreeSearchKind kind, bool all);

    void setHighlight(bool on);

    AppContext& m_ctx;
    StartupResult m_startup;
    std::map<QString, QAction*> m_actions;
    std::map<QString, QMenu*> m_menus;
    QTabWidget* m_tabs = nullptr;

    // Tab 0.
    QLineEdit* m_path = nullptr;   // Text1
    QLabel* m_pathLabel = nullptr; // Label2
    QLineEdit* m_path2 = nullptr;  // Text3
    QLabel* m_path2Label = nullptr; // Label4
    NumberedView* m_text = nullptr;    // RichTextBox1, with line numbers
    QPlainTextEdit* m_text2 = nullptr; // RTB2
    QPushButton* m_highlight = nullptr; // Command1
    QPushButton* m_font = nullptr;      // Command5
    QPushButton* m_clearScreen = nullptr; // Command6
    QPushButton* m_showImage = nullptr;   // Command7
    QMenu* m_context = nullptr;
    XmlHighlighter* m_highlighter = nullptr;
    XmlHighlighter* m_highlighter2 = nullptr;

    // Tab 1.
    QTreeView* m_tree = nullptr; // trevwContents
    XmlTreeModel* m_treeModel = nullptr;
    QLineEdit* m_treeFind = nullptr; // Text2
    QListWidget* m_attributes = nullptr; // lstAttributes
    QLineEdit* m_attributeValue = nullptr; // txtAttributeValue
    QPlainTextEdit* m_characters = nullptr; // txtCharacters
    QWidget* m_attribsFrame = nullptr; // fraAttribs
    QLabel* m_treeNote = nullptr; // says, once the tree is edited, that Save does not write it
    XmlTree m_xmlTree;
    XmlNode* m_selectedNode = nullptr;
    QString m_treeFile;
    std::size_t m_treeSearchStart = 0;
    bool m_nodeEditing = false;

    // Tab 2.
    QTableWidget* m_routes = nullptr; // VSFG1

    QLabel* m_panels[5] = {};
    QTimer* m_clock = nullptr;
    QPointer<dlgSearch> m_search;
    QPointer<QWidget> m_assets;
    QPointer<QWidget> m_routeScreen;
    // Packaging: the package name the packaging screens share for the whole run, and the route
    // screen in package mode (frmeditor_packaging.cpp).
    void connectPackaging();
    // Route templates, route pages, developer folders and markers (frmeditor_routetools.cpp).
    void connectRouteTools();
    packaging::PackageState m_packageState;
    QPointer<QWidget> m_packageScreen;
    QPointer<QDialog> m_scenarioScreen;
    QPointer<QDialog> m_consistTransfer;
    QPointer<QDialog> m_consistBuilder;

    EditorDocument m_doc;
    std::string m_caption; // the caption before a dirty mark
    TextForm m_form;  // how the first view's text goes back to bytes
    TextForm m_form2; // and the second's
    bool m_edited = false;
    bool m_saved = false;
    bool m_secondView = false;
    bool m_treeLoaded = false;
    bool m_treeTried = false; // a parse of the current tree file has been attempted
    bool m_highlighted = false;
    bool m_openedFromRouteList = false; // the path was chosen elsewhere: no file dialog
    bool m_readOnlyDoc = false;         // a copy from an archive: saved only under another name
    QMenu* m_recent = nullptr;
    bool m_loading = false;
    bool m_closing = false;
};

} // namespace velmora::ui
