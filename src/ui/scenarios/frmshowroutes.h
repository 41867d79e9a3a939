#pragma once
// frmShowRoutes: the way into scenario work. The routes, the scenarios of the chosen one coloured
// by their kind, and the saved copies of a scenario; it opens the scenario editor, removes empty
// consists and manages the simulator's CurrentSave.bin.

#include "frmostrand.h"
#include "frmscenario.h"
#include "frmworkorder.h"
#include "velmora/core/appcontext.h"
#include "velmora/routes/routes.h"
#include "velmora/scenarios/scenariolist.h"

#include <QDialog>
#include <QPointer>

#include <functional>
#include <optional>
#include <vector>

class QLabel;
class QListWidget;
class QPushButton;
class QTableWidget;

namespace velmora::ui {

class frmShowRoutes : public QDialog {
    Q_OBJECT
public:
    explicit frmShowRoutes(AppContext& ctx, QWidget* parent = nullptr);

    QListWidget* routeList() const { return m_routes; }       // List1
    QTableWidget* scenarioList() const { return m_scenarios; } // List3
    QListWidget* savedCopies() const { return m_files; }      // File2
    QPushButton* button(const char* name) const;
    // The editor opened last, while it is open.
    frmOstrand* editor() const { return m_editor; }
    // The details and work order screens opened last, while they are open.
    frmScenario* details() const { return m_details; }
    frmWorkOrder* workOrder() const { return m_workOrder; }

    // What a command that is not built yet waits for (its tooltip).
    static QString waitsFor(const QString& button);

public slots:
    void Command1_Click();  // List Scenarios in Selected Route
    void Command4_Click();  // Save CurrentSave.bin As
    void Command5_Click();  // Overwrite CurrentSave.bin with Selected file
    void Command10_Click(); // Edit Selected Scenario
    void Command11_Click(); // Remove Empty Consists from selected Scenario
    void Command13_Click(); // Show Invalid Scenarios
    void Command15_Click(); // Show Saved Copies of Selected Scenario
    // Swap Stock by Rule File: a rule file over every scenario of the route, first as a dry run
    // shown per scenario, then written as one undo when the user agrees.
    void cmdSwapRules_Click();
    void Command2_Click();  // Revert to Default for selected Route: every scenario row
    void Command3_Click();  // Revert to Default for selected Scenario(s)
    void Command14_Click(); // Make Selected Career Scenarios 'Standard'
    void Command16_Click(); // Make Selected Timetable Scenarios 'Standard'
    void Command7_Click();  // Display Details of Selected Scenario
    void Command12_Click(); // Display Work Order

private:
    const routes::RouteEntry* selectedRoute();
    // The folder of the selected scenario row, or nothing after saying "No Scenarios were found.".
    std::optional<std::filesystem::path> selectedScenarioFolder();
    // The folders of every selected scenario row, in the list's order.
    std::vector<std::filesystem::path> selectedScenarioFolders();
    void housekeeping(const std::function<scenarios::CommandResult(const std::vector<std::filesystem::path>&)>& command);
    void fillSavedCopies(const std::filesystem::path& folder);
    // The selected scenario opened off the GUI thread into `doc`, or nothing after saying why.
    std::optional<scenarios::ScenarioRef> openSelected(scenarios::ScenarioDocument& doc);

    AppContext& m_ctx;
    std::vector<routes::RouteEntry> m_routeEntries;
    std::vector<routes::ScenarioEntry> m_scenarioEntries;
    std::vector<std::string> m_invalid; // scenario folders without ScenarioProperties.xml
    QListWidget* m_routes;
    QTableWidget* m_scenarios;
    QListWidget* m_files;
    QLabel* m_routeCount;
    QLabel* m_scenarioCount;
    std::filesystem::path m_filesFolder; // the folder File2 lists
    QPointer<frmOstrand> m_editor;
    QPointer<frmScenario> m_details;
    QPointer<frmWorkOrder> m_workOrder;
};

} // namespace velmora::ui
