#pragma once
// frmPhysics: the physical values of one rail vehicle (VSFG1) and of the engine simulation it
// calls (VSFG2) as rows of item, data and key, the data editable; each grid's document is saved
// on its own. Opened from the asset grid's mnuPhysics and mnuPhysSteam with one selected row.

#include "velmora/core/appcontext.h"
#include "frmgraphs.h"
#include "velmora/physics/physicsdoc.h"

#include <QDialog>
#include <QPointer>

class QLabel;
class QPushButton;
class QTabWidget;
class QTableWidget;

namespace velmora::ui {


class frmPhysics : public QDialog {
    Q_OBJECT
public:
    // `steam`: opened by mnuPhysSteam, so the simulation is read by the steam list.
    frmPhysics(AppContext& ctx, const std::filesystem::path& vehicleFile, bool steam, QWidget* parent = nullptr);

    // Opens the screen for the one selected row's blueprint (full path); says what is wrong
    // otherwise. Null when nothing was opened.
    static frmPhysics* open(AppContext& ctx, const std::filesystem::path& vehicleFile, bool steam, QWidget* parent);

    bool loaded() const { return m_loaded; }
    QTableWidget* vehicleGrid() const { return m_grid1; }  // VSFG1
    QTableWidget* simulationGrid() const { return m_grid2; } // VSFG2
    const physics::PhysicsSet& documents() const { return m_set; }
    bool changed() const { return m_changed; }
    frmGraphs* graphs() const { return m_graphs; }

public slots:
    void Command2_Click(); // Add Simulation File to Grid
    void Command6_Click(); // Steam Simulation
    void Command3_Click(); // Show Graphs
    void Command4_Click(); // Save Changes (the vehicle)
    void Command5_Click(); // Save Changes (the simulation)

private:
    void addSimulation(physics::SimKind kind);
    void fill(QTableWidget* grid, const physics::PhysicsDocument& doc);
    void cellChanged(QTableWidget* grid, physics::PhysicsDocument& doc, int row, int column);
    void save(physics::PhysicsDocument& doc);

    AppContext& m_ctx;
    bool m_steam;
    bool m_loaded = false;
    bool m_changed = false; // one flag for both documents
    bool m_filling = false;
    physics::PhysicsSet m_set;
    QLabel* m_label = nullptr;
    QTabWidget* m_tabs = nullptr;
    QTableWidget* m_grid1 = nullptr;
    QTableWidget* m_grid2 = nullptr;
    QPointer<frmGraphs> m_graphs;
};

} // namespace velmora::ui
