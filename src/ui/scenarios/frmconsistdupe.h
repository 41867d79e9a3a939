#pragma once
// frmConsistDupe: copies a consist of one scenario into another of the same route. The routes,
// the scenarios of the chosen one coloured by their kind, and two consist lists (#1 and #2) side
// by side, each line carrying its consist's number in brackets; "Transfer Selected Consist" puts
// the consist of #1's selected line behind the one of #2's selected line and writes scenario #2.

#include "velmora/core/appcontext.h"
#include "velmora/routes/routes.h"
#include "velmora/scenarios/consisttransfer.h"

#include <QDialog>

#include <optional>
#include <vector>

class QLabel;
class QListWidget;
class QPushButton;
class QTableWidget;
class QTextEdit;

namespace velmora::ui {

class frmConsistDupe : public QDialog {
    Q_OBJECT
public:
    explicit frmConsistDupe(AppContext& ctx, QWidget* parent = nullptr);

    QListWidget* routeList() const { return m_routes; }       // List1
    QTableWidget* scenarioList() const { return m_scenarios; } // List3
    QTextEdit* consists1() const { return m_rtb1; }            // RTB1
    QTextEdit* consists2() const { return m_rtb2; }            // RTB2
    QPushButton* button(const char* name) const;
    // The scenarios the two lists show (empty folders when cleared).
    const scenarios::ListedScenario& first() const { return m_first; }
    const scenarios::ListedScenario& second() const { return m_second; }
    // Puts the cursor of a list on its line `line` (0-based), the line selected.
    static void selectLine(QTextEdit* list, int line);

public slots:
    void Command1_Click(); // List Scenarios in Selected Route
    void Command5_Click(); // List Consists in Selected #1
    void Command2_Click(); // List Consists in Selected #2
    void Command7_Click(); // Transfer Selected Consist
    void Command3_Click(); // Delete Empty Consists from Selected Scenario
    void Command4_Click(); // Clear List #1
    void Command6_Click(); // Clear List #2
    void Command8_Click(); // Clear Both

private:
    const routes::RouteEntry* selectedRoute();
    // The folder of the selected scenario row, or nothing after saying "No Scenarios were found.".
    std::optional<std::filesystem::path> selectedScenarioFolder();
    // Reads the selected scenario into one side and shows its consists.
    void listInto(scenarios::ListedScenario& side, QTextEdit* view);
    void showConsists(const scenarios::ListedScenario& side, QTextEdit* view);
    // The consist number of the list's selection, or of the cursor's line when nothing is selected.
    static std::optional<int> selectedOccurrence(const QTextEdit* view);

    AppContext& m_ctx;
    std::vector<routes::RouteEntry> m_routeEntries;
    std::vector<routes::ScenarioEntry> m_scenarioEntries;
    scenarios::ListedScenario m_first, m_second;
    QListWidget* m_routes;
    QTableWidget* m_scenarios;
    QTextEdit* m_rtb1;
    QTextEdit* m_rtb2;
    QLabel* m_caption1;
    QLabel* m_caption2;
};

} // namespace velmora::ui
