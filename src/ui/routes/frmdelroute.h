#pragma once
// frmDelRoute: the routes of the install, the scenarios of one, and the route check.
// frmFindLoco: where an asset is used in the scenarios of all routes.

#include "../common/frmresults.h"
#include "frmlistrs.h"
#include "velmora/core/userinterface.h"
#include "velmora/packaging/packaging.h"
#include "velmora/routes/routecheck.h"
#include "velmora/routes/routeedits.h"

#include <QDialog>
#include <QPointer>

#include <memory>
#include <optional>

class QCheckBox;
class QGridLayout;
class QGroupBox;
class QLabel;
class QListWidget;
class QPushButton;
class QTableWidget;

namespace velmora::ui {


// The scenarios of a route as rows of folder, name and kind, each row in its kind's colour; the one
// row "No Scenarios folder found" when the route has no such folder.
void fillScenarioRows(QTableWidget* table, const std::vector<routes::ScenarioEntry>& scenarios, bool noFolder);
// The frame "Legend": the name of each kind of scenario in the colour its rows have in `table`.
QGroupBox* scenarioLegend(const QTableWidget* table);
// List3 of the scenario screens: a read-only grid of folder, name and kind, whole rows selected.
QTableWidget* makeScenarioTable();
// List1 of the scenario screens: the routes of the install by name, anything odd about them said.
// Returns the routes in the list's order.
std::vector<routes::RouteEntry> fillRouteNames(AppContext& ctx, QListWidget* list);
// The route of the list's current row, or null.
const routes::RouteEntry* currentRoute(const QListWidget* list, const std::vector<routes::RouteEntry>& entries);
// The folder of the scenario in `row` of the entries of `route`, or nothing after saying "No
// Scenarios were found.".
std::optional<std::filesystem::path> scenarioFolderAt(AppContext& ctx, const routes::RouteEntry* route,
                                                      const std::vector<routes::ScenarioEntry>& entries, int row);

class frmDelRoute : public QDialog {
    Q_OBJECT
public:
    // `packageMode` is the route packaging's use of the screen, whose actions come later.
    frmDelRoute(AppContext& ctx, bool packageMode = false, QWidget* parent = nullptr);

    QListWidget* routeList() const { return m_routes; }   // List1
    QTableWidget* scenarioList() const { return m_scenarios; } // List3
    const routes::RouteCheckResult& lastCheck() const { return m_check; }
    // The report screens opened so far, newest last (for the tests and for closing them).
    const std::vector<QPointer<QWidget>>& reports() const { return m_reports; }
    // The window holding the last command's reports, if it is still open.
    frmResults* results() const { return m_results; }

public slots:
    void Command1_Click();  // List Scenarios in Selected Route
    void Command4_Click();  // the route check
    void Command12_Click(); // Print list of all Routes and Scenarios
    void Command26_Click(); // List Routes with Scenario types
    void Command14_Click(); // Show Provider / Products used in selected route
    void Command18_Click(); // Check ScenarioProperties
    void Command3_Click();  // stock of the selected scenario
    void Command15_Click(); // stock used by all scenarios of the route
    void Command19_Click(); // stock of the selected scenario with wagon numbers
    void Command21_Click(); // all rolling stock used by all routes
    void Command10_Click(); // &Abort: stops the check at its next file
    void Command17_Click(); // items used by the route with their tiles and offsets
    void Command22_Click(); // items used from the selected provider and product
    // Edits of the selected route or scenarios (frmdelroute_edits.cpp).
    void Command7_Click();  // Raise or Lower Track
    void Command20_Click(); // speed limits (hidden)
    void Command9_Click();  // Clone Route
    void Command8_Click();  // Clone Scenario
    void OKButton_Click();  // Delete Selected Route (delete mode)
    void Command2_Click();  // Delete Selected Scenario(s)
    void mnuTex_Click();    // Remove terrain textures: opens frmMix on the route's MixMap folder
    // The route template and the route's own pages (frmdelroute_template.cpp).
    void Command11_Click();    // View Route Details: frmRouteDetails
    void Command25_Click();    // Check Route Template
    void mnuCRF_Click();       // Make Asset Folder
    void mnuRouteInfo_Click(); // Add Route Description: frmDesc
    void mnuMap_Click();       // Add Route Loading Picture: frmThumbnail

    // The mix map screen mnuTex opened last, while it is open.
    QDialog* mixScreen() const { return m_mix; }
    // The details, description or picture screen opened last, while it is open.
    QDialog* routePage() const { return m_routePage; }

    // Packaging, in package mode (frmdelroute_package.cpp).
    void PackageRoute_Click(); // OKButton: Package Selected Route
    void Command16_Click();    // Package this routes Assets
    packaging::PackageReport packageSelectedRoute(const std::string& label, bool assets, const std::string& zipQuestion);
    void Command5_Click();     // Add to Package: the selected scenarios of List3
    void Command6_Click();     // Process Package
    // The package name the packaging screens share; the screen's own until one is given.
    void setPackageState(packaging::PackageState* state) { m_packageState = state ? state : &m_ownPackageState; }
    // The scenarios gathered by Command5 (List4, List5), or null before the first.
    const packaging::ScenarioPackage* scenarioPackage() const { return m_scenarioPackage.get(); }
    // The report window of the last package made, while it is open.
    QWidget* packageReport() const { return m_packageReport; }

private:
    const routes::RouteEntry* selectedRoute();
    // The route list read again (after a clone or a deletion).
    void reloadRoutes();
    // The routes of the selected rows of List1, in list order.
    std::vector<routes::RouteEntry> selectedRoutes() const;
    // The result of an edit: its message, or its failure, and what it warned of.
    void showEdit(const routes::EditReport& report);
    // The reports of one command go into one results window, a tab each; a command starts its
    // own window with beginResults.
    void beginResults(const QString& title);
    frmListRS* showList(ReportKind kind, const QString& tab, const QString& title, const std::vector<std::string>& rows,
                        const std::string& suffix = {});
    void showText(const QString& tab, const QString& title, const std::string& text);
    void addResult(QDialog* page, const QString& tab);
    void showMarks();
    // The check's reports under Reports; a report that cannot be written is said.
    void saveReports();
    // The provider and product of the selected row while List3 shows providers.
    std::optional<std::pair<std::string, std::string>> selectedProvider();

    AppContext& m_ctx;
    bool m_packageMode;
    std::vector<routes::RouteEntry> m_routeEntries;
    std::vector<routes::ScenarioEntry> m_scenarioEntries;
    routes::RouteCheckResult m_check;
    bool m_scenerySubstituted = false; // set from the missing-items grid: the check's lists are stale
    QListWidget* m_routes;
    QTableWidget* m_scenarios;
    QLabel* m_routeCount;
    QLabel* m_scenarioCount;
    QPushButton* m_command22;
    bool m_listsProviders = false; // List3 holds providers (Command14), not scenarios
    QCheckBox* m_markArchives;
    QCheckBox* m_markCase;
    std::vector<QPointer<QWidget>> m_reports;
    QPointer<frmResults> m_results;
    QString m_resultsTitle;
    QPointer<QDialog> m_mix;
    QPointer<QDialog> m_routePage; // the details, description or picture screen opened last
    AbortableUi m_work; // the check's channel: the screen's Abort as well as the progress bar's
    // Packaging.
    void addPackageCommands(QGridLayout* grid, QPushButton* ok, QPushButton* command16, int row);
    packaging::PackageState m_ownPackageState;
    packaging::PackageState* m_packageState = &m_ownPackageState;
    std::unique_ptr<packaging::ScenarioPackage> m_scenarioPackage;
    QPushButton* m_command16 = nullptr;
    QPointer<QWidget> m_packageReport;
};

class frmFindLoco : public QDialog {
    Q_OBJECT
public:
    frmFindLoco(AppContext& ctx, const std::string& assetPath, const std::string& assetName, QWidget* parent = nullptr);
    QListWidget* results() const { return m_results; }

private:
    QListWidget* m_results;
};

} // namespace velmora::ui
