#include "frmphysics.h"

#include "../common/desktopui.h"
#include "../common/windowplace.h"
#include "frmgraphs.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QVBoxLayout>

namespace velmora::ui {

namespace {

QTableWidget* makeGrid(const char* name) {
    auto* grid = new QTableWidget(0, 4);
    grid->setObjectName(name);
    grid->setHorizontalHeaderLabels({QObject::tr("Item"), QObject::tr("Data"), QObject::tr("Key"), QString()});
    grid->setColumnHidden(3, true); // the position the row was read at
    grid->horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    grid->setColumnWidth(0, 320);
    grid->setColumnWidth(1, 360);
    grid->setColumnWidth(2, 200);
    grid->verticalHeader()->setVisible(false);
    return grid;
}

QPushButton* button(const char* name, const QString& text) {
    auto* b = new QPushButton(text);
    b->setObjectName(name);
    return b;
}

} // namespace

frmPhysics::frmPhysics(AppContext& ctx, const std::filesystem::path& vehicleFile, bool steam, QWidget* parent)
    : QDialog(parent), m_ctx(ctx), m_steam(steam) {
    setObjectName("frmPhysics");
    setWindowTitle(tr("Physics"));
    auto* top = new QVBoxLayout(this);
    auto* checked = new QHBoxLayout;
    checked->addWidget(new QLabel(tr("Stock being checked")));
    m_label = new QLabel;
    m_label->setObjectName("Label2");
    m_label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    checked->addWidget(m_label, 1);
    top->addLayout(checked);
    m_tabs = new QTabWidget;
    m_tabs->setObjectName("SSTab1");
    m_grid1 = makeGrid("VSFG1");
    m_grid2 = makeGrid("VSFG2");
    m_tabs->addTab(m_grid1, tr("Rail Vehicle"));
    m_tabs->addTab(m_grid2, tr("Engine Simulation"));
    top->addWidget(m_tabs, 1);

    auto* buttons = new QHBoxLayout;
    QPushButton* add = button("Command2", tr("Add Simulation File to Grid"));
    QPushButton* addSteam = button("Command6", tr("Steam Simulation"));
    add->setVisible(!steam);
    addSteam->setVisible(steam);
    QPushButton* graphs = button("Command3", tr("Show Graphs"));
    QPushButton* save1 = button("Command4", tr("Save Changes"));
    save1->setToolTip(tr("Writes the rail vehicle's blueprint"));
    QPushButton* save2 = button("Command5", tr("Save Changes"));
    save2->setToolTip(tr("Writes the engine simulation"));
    QPushButton* exit = button("Command1", tr("&Exit"));
    for (QPushButton* b : {add, addSteam, graphs, save1, save2})
        buttons->addWidget(b);
    buttons->addStretch(1);
    buttons->addWidget(exit);
    top->addLayout(buttons);
    connect(add, &QPushButton::clicked, this, &frmPhysics::Command2_Click);
    connect(addSteam, &QPushButton::clicked, this, &frmPhysics::Command6_Click);
    connect(graphs, &QPushButton::clicked, this, &frmPhysics::Command3_Click);
    connect(save1, &QPushButton::clicked, this, &frmPhysics::Command4_Click);
    connect(save2, &QPushButton::clicked, this, &frmPhysics::Command5_Click);
    connect(exit, &QPushButton::clicked, this, &QDialog::close);
    connect(m_grid1, &QTableWidget::cellChanged, this,
            [this](int row, int column) { cellChanged(m_grid1, m_set.vehicle, row, column); });
    connect(m_grid2, &QTableWidget::cellChanged, this,
            [this](int row, int column) { cellChanged(m_grid2, m_set.simulation, row, column); });
    rememberPlace(ctx, this, objectName(), {950, 650});

    m_label->setText(QString::fromStdString(vehicleFile.string()));
    const physics::SimKind kind = steam ? physics::SimKind::Steam : physics::SimKind::DieselElectric;
    const std::string problem = physics::openPhysics(vehicleFile, ctx.railWorks(), ctx.resolver, m_set, &kind);
    if (!problem.empty()) {
        m_ctx.ui().message(problem, Icon::Warning);
        return;
    }
    m_loaded = true;
    fill(m_grid1, m_set.vehicle);
}

frmPhysics* frmPhysics::open(AppContext& ctx, const std::filesystem::path& vehicleFile, bool steam, QWidget* parent) {
    auto* screen = new frmPhysics(ctx, vehicleFile, steam, parent);
    if (!screen->loaded()) {
        delete screen;
        return nullptr;
    }
    screen->setAttribute(Qt::WA_DeleteOnClose);
    screen->show();
    return screen;
}

void frmPhysics::fill(QTableWidget* grid, const physics::PhysicsDocument& doc) {
    m_filling = true;
    grid->setRowCount(0);
    grid->setRowCount(static_cast<int>(doc.rows.size()));
    for (std::size_t i = 0; i < doc.rows.size(); ++i) {
        const physics::PhysicsRow& r = doc.rows[i];
        const int row = static_cast<int>(i);
        auto* item = new QTableWidgetItem(toQt(r.qualifiedName()));
        item->setFlags(item->flags() & ~Qt::ItemIsEditable);
        grid->setItem(row, 0, item);
        auto* value = new QTableWidgetItem(toQt(r.value));
        if (r.kind != physics::RowKind::Value)
            value->setFlags(value->flags() & ~Qt::ItemIsEditable);
        grid->setItem(row, 1, value);
        auto* key = new QTableWidgetItem(toQt(r.key));
        key->setFlags(key->flags() & ~Qt::ItemIsEditable);
        grid->setItem(row, 2, key);
        grid->setItem(row, 3, new QTableWidgetItem(QString::number(r.position)));
    }
    m_filling = false;
}

void frmPhysics::cellChanged(QTableWidget* grid, physics::PhysicsDocument& doc, int row, int column) {
    if (m_filling || column != 1 || row < 0 || static_cast<std::size_t>(row) >= doc.rows.size())
        return;
    const std::string typed = grid->item(row, 1)->text().toStdString();
    const std::string problem = physics::setValue(doc, static_cast<std::size_t>(row), typed);
    if (problem.empty()) {
        m_changed = true;
        return;
    }
    // The cell goes back to what the document holds.
    m_filling = true;
    grid->item(row, 1)->setText(toQt(doc.rows[static_cast<std::size_t>(row)].value));
    m_filling = false;
    m_ctx.ui().message(problem, problem.rfind("The Key ", 0) == 0 ? Icon::Critical : Icon::Warning);
}

void frmPhysics::addSimulation(physics::SimKind kind) {
    if (m_changed &&
        m_ctx.ui().ask("You have changed some Data, do you wish to SAVE it before\nadding the Simulation File to the grid?",
                       Buttons::YesNo) == Answer::Yes)
        return; // the user saves first
    if (m_set.simulation.file.empty()) {
        m_ctx.ui().message(m_set.simProblem.empty() ? physics::noSimulationMessage() : m_set.simProblem, Icon::Warning);
        return;
    }
    physics::readSimulationRows(m_set, kind);
    fill(m_grid2, m_set.simulation);
    m_tabs->setCurrentWidget(m_grid2);
}

void frmPhysics::Command2_Click() { addSimulation(physics::SimKind::DieselElectric); }
void frmPhysics::Command6_Click() { addSimulation(physics::SimKind::Steam); }

void frmPhysics::save(physics::PhysicsDocument& doc) {
    if (doc.file.empty())
        return;
    m_changed = false;
    const physics::SaveResult r = physics::saveDocument(m_ctx, doc, "Save Changes " + doc.file.string());
    if (!r.ok)
        m_ctx.ui().message(r.message, Icon::Warning);
}

void frmPhysics::Command4_Click() { save(m_set.vehicle); }
void frmPhysics::Command5_Click() { save(m_set.simulation); }

void frmPhysics::Command3_Click() {
    std::vector<frmGraphs::CurveFile> curves;
    for (const physics::PhysicsRow& r : m_set.simulation.rows)
        if (r.kind == physics::RowKind::Table && !r.value.empty())
            curves.push_back({r.item, physics::tableFile(r.value, m_ctx.railWorks(), m_ctx.resolver)});
    std::string stock;
    for (const physics::PhysicsRow& r : m_set.vehicle.rows)
        if (r.item == "Name" && stock.empty())
            stock = r.value;
    if (m_graphs)
        m_graphs->close();
    m_graphs = new frmGraphs(m_ctx, curves, m_set.kind == physics::SimKind::Steam, stock, this);
    m_graphs->setAttribute(Qt::WA_DeleteOnClose);
    m_graphs->show();
}

} // namespace velmora::ui
