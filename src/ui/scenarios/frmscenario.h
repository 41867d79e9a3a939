#pragma once
// frmScenario, "Display Details of Selected Scenario": the scenario's fields, its consists with
// the driven one, the class (standard or timetable only), and every consist in one wide grid
// (VSFG1) of labelled lines. The route's track index places the vehicles by tile; it is made
// the first time, when the user agrees, off the GUI thread with progress and Abort.

#include "velmora/core/appcontext.h"
#include "velmora/scenarios/scenariodetails.h"
#include "velmora/scenarios/scenariolist.h"

#include <QDialog>

#include <array>
#include <optional>

class QButtonGroup;
class QLabel;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QPrinter;
class QTableWidget;

namespace velmora::ui {

class frmScenario : public QDialog {
    Q_OBJECT
public:
    frmScenario(AppContext& ctx, scenarios::ScenarioRef ref, scenarios::ScenarioDocument doc, QWidget* parent = nullptr);

    QTableWidget* grid() const { return m_grid; }            // VSFG1
    QPlainTextEdit* cellText() const { return m_scroll; }    // txtScroll
    QListWidget* consistList() const { return m_consists; }  // List1
    QLineEdit* field(int index) const { return m_text1[static_cast<std::size_t>(index)]; } // Text1(i)
    QLineEdit* drivenField() const { return m_driven; }
    QButtonGroup* classGroup() const { return m_class; }     // Option2
    const scenarios::DetailsGrid& details() const { return m_details; }
    bool hasLocations() const { return m_index.has_value(); }
    const scenarios::ScenarioDocument& document() const { return m_doc; }

    // Prints the grid on a printer already set up (Command3 asks for one first).
    void printTo(QPrinter& printer) const;

public slots:
    // The track index: read when made before, else (after the question) made now.
    void loadLocations();
    void VSFG1_MouseDown(int row, int column); // the right click: the whole cell in txtScroll
    void Command2_Click();                     // Save to Excel
    void Command3_Click();                     // Print
    void Command1_Click();                     // Exit
    // Option2: a class change asks first and saves the scenario; false when nothing changed.
    bool setClass(scenarios::ScenarioClass cls);

private:
    void fillFields();
    void fillGrid();
    void showClass();

    AppContext& m_ctx;
    scenarios::ScenarioRef m_ref;
    scenarios::ScenarioDocument m_doc;
    std::optional<scenarios::TrackIndex> m_index;
    scenarios::DetailsGrid m_details;
    std::array<QLineEdit*, 8> m_text1{};
    QListWidget* m_consists;
    QLineEdit* m_driven;
    QButtonGroup* m_class;
    QTableWidget* m_grid;
    QPlainTextEdit* m_scroll;
};

} // namespace velmora::ui
