#pragma once
// The main screen: the document editor and the menu from which every other tool opens.

#include "velmora/core/appcontext.h"

#include <QMainWindow>
#include <QPointer>

#include <map>

class QAction;
class QLabel;
class QMenu;
class QPlainTextEdit;
class QTabWidget;
class QTableWidget;
class QTreeWidget;
class QTimer;

namespace velmora::ui {

class frmEditor : public QMainWindow {
    Q_OBJECT
public:
    // Runs the start-up sequence; `options` carries --railworks and the document path.
    frmEditor(AppContext& ctx, const StartupOptions& options, QWidget* parent = nullptr);
    ~frmEditor() override;

    AppContext& context() { return m_ctx; }
    const StartupResult& startup() const { return m_startup; }

    // Every menu entry by its control name (mnuOpenRS, mnuDont, ...).
    QAction* action(const QString& name) const;
    QMenu* menu(const QString& name) const;

    // LoadLanguage's last step: the captions of this screen from the language table.
    void assignCaptions();
    // The window's size and position in twips, as the settings file keeps them.
    WindowGeometry currentGeometry() const;

    bool edited() const { return m_edited; }
    QPlainTextEdit* textView() const { return m_text; }

    // dlgLang's OK: switch to the chosen Lang_<name>.txt.
    void applyLanguage(const QString& fileName);

public slots:
    void mnuOpenRS_Click();
    void mnuXML_Click();
    void mnuClear_Click();
    void mnuExit_Click();
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
    void mnuUUID_Click();
    void mnuTime_Click();
    void SSTab1_Click(int index);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildWidgets();
    void buildMenus();
    void connectCommands();
    void applyStartup();
    void showDocument(const std::string& path, const std::string& xml);
    void refreshCaption();

    AppContext& m_ctx;
    StartupResult m_startup;
    std::map<QString, QAction*> m_actions;
    std::map<QString, QMenu*> m_menus;
    QTabWidget* m_tabs = nullptr;
    QPlainTextEdit* m_text = nullptr;
    QTreeWidget* m_tree = nullptr;
    QTableWidget* m_routes = nullptr;
    QLabel* m_panels[5] = {};
    QTimer* m_clock = nullptr;
    bool m_edited = false;
    bool m_closing = false;
};

} // namespace velmora::ui
