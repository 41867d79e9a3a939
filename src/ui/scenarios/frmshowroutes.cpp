#include "frmshowroutes.h"

#include "batchswapui.h"
#include "frmostrand.h"
#include "frmscenario.h"
#include "frmworkorder.h"

#include "../common/backgroundjob.h"
#include "../common/desktopui.h"
#include "../common/frmreport.h"
#include "../common/palettecolours.h"
#include "../common/windowplace.h"
#include "../routes/frmdelroute.h"
#include "../routes/frmlistrs.h"
#include "velmora/core/services.h"
#include "velmora/scenarios/scenario.h"
#include "velmora/scenarios/housekeeping.h"
#include "velmora/scenarios/scenariolist.h"

#include <algorithm>

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace velmora::ui {

namespace {

struct Button {
    const char* name;
    const char* caption;
    void (frmShowRoutes::*slot)(); // null: waits for its tool
};

const Button kButtons[] = {
    {"Command1", "List Scenarios in Selected Route", &frmShowRoutes::Command1_Click},
    {"Command10", "Edit Selected Scenario", &frmShowRoutes::Command10_Click},
    {"Command15", "Show Saved Copies of Selected Scenario", &frmShowRoutes::Command15_Click},
    {"Command4", "Save CurrentSave.bin As", &frmShowRoutes::Command4_Click},
    {"Command5", "Overwrite CurrentSave.bin with Selected file", &frmShowRoutes::Command5_Click},
    {"Command11", "Remove Empty Consists from selected Scenario", &frmShowRoutes::Command11_Click},
    {"Command13", "Show Invalid Scenarios", &frmShowRoutes::Command13_Click},
    {"cmdSwapRules", "Swap Stock by Rule File", &frmShowRoutes::cmdSwapRules_Click},
    {"Command7", "Display Details of Selected Scenario", &frmShowRoutes::Command7_Click},
    {"Command12", "Display Work Order", &frmShowRoutes::Command12_Click},
    {"Command2", "Revert to Default for selected Route", &frmShowRoutes::Command2_Click},
    {"Command3", "Revert to Default for selected Scenario", &frmShowRoutes::Command3_Click},
    {"Command14", "Make Selected Career Scenarios 'Standard'", &frmShowRoutes::Command14_Click},
    {"Command16", "Make Selected Timetable Scenarios 'Standard'", &frmShowRoutes::Command16_Click},
    {"Command8", "Delete Selected Scenario(s)", nullptr},
    {"Command6", "Run RailWorks using selected Save file", nullptr},
};

} // namespace

QString frmShowRoutes::waitsFor(const QString& button) {
    if (button == "Command6")
        return tr("Not offered: the simulator is started from Steam");
    return tr("Waits for the scenario housekeeping tools");
}

frmShowRoutes::frmShowRoutes(AppContext& ctx, QWidget* parent) : QDialog(parent), m_ctx(ctx) {
    setObjectName("frmShowRoutes");
    setWindowTitle(tr("Scenarios"));
    m_routes = new QListWidget;
    m_routes->setObjectName("List1");
    m_scenarios = makeScenarioTable();
    m_files = new QListWidget;
    m_files->setObjectName("File2");
    m_routeCount = new QLabel;
    m_routeCount->setObjectName("Label6");
    m_scenarioCount = new QLabel;
    m_scenarioCount->setObjectName("Label8");
    connect(m_routes, &QListWidget::itemClicked, this, &frmShowRoutes::Command1_Click);
    connect(m_scenarios, &QTableWidget::cellClicked, this, [this] { Command15_Click(); });
    connect(m_scenarios, &QTableWidget::cellDoubleClicked, this, [this] { Command10_Click(); });

    auto* buttons = new QGridLayout;
    int i = 0;
    for (const Button& b : kButtons) {
        auto* button = new QPushButton(tr(b.caption));
        button->setObjectName(b.name);
        if (b.slot) {
            connect(button, &QPushButton::clicked, this, b.slot);
        } else {
            button->setEnabled(false);
            button->setToolTip(waitsFor(b.name));
        }
        buttons->addWidget(button, i / 3, i % 3);
        ++i;
    }
    auto* exit = new QPushButton(tr("Exit"));
    exit->setObjectName("Command9");
    connect(exit, &QPushButton::clicked, this, &QDialog::accept);
    buttons->addWidget(exit, i / 3, i % 3);

    QGroupBox* legend = scenarioLegend(m_scenarios);

    auto* left = new QVBoxLayout;
    left->addWidget(m_routeCount);
    left->addWidget(m_routes, 1);
    auto* middle = new QVBoxLayout;
    middle->addWidget(m_scenarioCount);
    middle->addWidget(m_scenarios, 1);
    auto* right = new QVBoxLayout;
    right->addWidget(new QLabel(tr("Saved Copies of Selected Scenario")));
    right->addWidget(m_files, 1);
    auto* lists = new QHBoxLayout;
    lists->addLayout(left, 2);
    lists->addLayout(middle, 3);
    lists->addLayout(right, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(lists, 1);
    layout->addWidget(legend);
    layout->addLayout(buttons);
    rememberPlace(m_ctx, this, objectName(), {1100, 700});

    MakePath(m_ctx.tempFiles());
    m_routeEntries = fillRouteNames(m_ctx, m_routes);
    m_routeCount->setText(tr("No. of Routes") + QString(": %1").arg(m_routeEntries.size()));
}

QPushButton* frmShowRoutes::button(const char* name) const { return findChild<QPushButton*>(name); }

const routes::RouteEntry* frmShowRoutes::selectedRoute() { return currentRoute(m_routes, m_routeEntries); }

void frmShowRoutes::Command1_Click() {
    m_scenarios->setRowCount(0);
    m_files->clear();
    m_scenarioEntries.clear();
    m_invalid.clear();
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    bool noFolder = false;
    m_scenarioEntries = routes::listScenarios(m_ctx, *route, &noFolder);
    m_invalid = scenarios::invalidScenarios(m_ctx, *route);
    fillScenarioRows(m_scenarios, m_scenarioEntries, noFolder);
    m_scenarios->resizeColumnsToContents();
    m_scenarioCount->setText(tr("No. of Scenarios") + QString(": %1").arg(m_scenarioEntries.size()));
}

std::optional<std::filesystem::path> frmShowRoutes::selectedScenarioFolder() {
    return scenarioFolderAt(m_ctx, selectedRoute(), m_scenarioEntries, m_scenarios->currentRow());
}

void frmShowRoutes::fillSavedCopies(const std::filesystem::path& folder) {
    m_filesFolder = folder;
    m_files->clear();
    for (const auto& copy : scenarios::savedCopies(folder)) {
        auto* item = new QListWidgetItem(toQt(copy.name) + (copy.md5 ? tr("  (with .MD5)") : QString()));
        item->setData(Qt::UserRole, QByteArray::fromStdString(copy.name));
        m_files->addItem(item);
    }
}

void frmShowRoutes::Command15_Click() {
    if (const auto folder = selectedScenarioFolder())
        fillSavedCopies(*folder);
}

void frmShowRoutes::Command4_Click() {
    const auto folder = selectedScenarioFolder();
    if (!folder)
        return;
    const auto name = m_ctx.ui().inputText("Save CurrentSave.bin as", "Save CurrentSave.bin As");
    if (!name || name->empty())
        return;
    JournalCommand command(&m_ctx.journal(), "Save CurrentSave.bin As " + *name);
    const auto done = scenarios::saveCurrentSaveAs(m_ctx, *folder, *name);
    if (!done)
        m_ctx.ui().message(done.message, Icon::Warning);
    fillSavedCopies(*folder);
}

void frmShowRoutes::Command5_Click() {
    const auto folder = selectedScenarioFolder();
    if (!folder)
        return;
    QListWidgetItem* chosen = m_files->currentItem();
    if (!chosen || m_filesFolder != *folder) {
        m_ctx.ui().message("Select a saved copy in the list of Saved Copies first.");
        return;
    }
    JournalCommand command(&m_ctx.journal(), "Overwrite CurrentSave.bin");
    const auto done = scenarios::overwriteCurrentSave(m_ctx, *folder, chosen->data(Qt::UserRole).toByteArray().toStdString());
    if (!done && !done.message.empty())
        m_ctx.ui().message(done.message, Icon::Warning);
    fillSavedCopies(*folder);
}

void frmShowRoutes::Command11_Click() {
    const auto folder = selectedScenarioFolder();
    if (!folder)
        return;
    JournalCommand command(&m_ctx.journal(), "Remove Empty Consists");
    const auto done = scenarios::removeEmptyConsists(m_ctx, *folder);
    m_ctx.ui().message(done.message, done ? Icon::Information : Icon::Warning);
}

void frmShowRoutes::Command13_Click() {
    std::vector<std::string> rows = m_invalid;
    auto* list = new frmListRS(m_ctx, ReportKind::Used, tr("Invalid Scenarios (no ScenarioProperties.xml)"), rows, {}, {}, this);
    list->setAttribute(Qt::WA_DeleteOnClose);
    list->show();
}

void frmShowRoutes::Command10_Click() {
    scenarios::ScenarioDocument doc;
    if (!openSelected(doc))
        return;
    for (const auto& w : doc.warnings)
        m_ctx.ui().message(w, w == scenarios::kQuickDriveRefusal ? Icon::Critical : Icon::Warning);
    if (doc.refused)
        return;
    auto* editor = new frmOstrand(m_ctx, std::move(doc), this);
    editor->setAttribute(Qt::WA_DeleteOnClose);
    editor->show();
    m_editor = editor;
}

void frmShowRoutes::cmdSwapRules_Click() {
    const routes::RouteEntry* selected = selectedRoute();
    if (!selected) {
        m_ctx.ui().message("You have not selected a route?");
        return;
    }
    const routes::RouteEntry route = *selected;
    const auto file = m_ctx.ui().chooseFile(
        {"Rule File for Stock Swaps", m_ctx.appPath() / "Reports", "Comma Separated (*.csv)|*.csv|Text (*.txt)|*.txt", false});
    if (!file || file->empty())
        return;
    std::vector<std::string> errors;
    const auto rules = scenarios::readSwapRules(m_ctx, *file, errors);
    if (!rules) {
        std::string text = "The rule file was refused; nothing was written.\n";
        for (const std::string& e : errors)
            text += "\n" + e;
        frmReport::show(m_ctx, tr("Swap Stock by Rule File"), text, this);
        return;
    }
    const Answer scope = m_ctx.ui().ask("Swap only the vehicles whose blueprint is missing?\n"
                                        "No swaps every vehicle a rule covers.",
                                        Buttons::YesNoCancel);
    if (scope == Answer::Cancel)
        return;
    scenarios::BatchOptions options;
    options.missingOnly = scope == Answer::Yes;
    const auto batch = [&](const scenarios::BatchOptions& o) { return scenarios::swapByRules(m_ctx, route, *rules, o); };
    // First what would change, shown per scenario; then, when the user agrees, the writes.
    options.dryRun = true;
    const scenarios::BatchResult preview = runBatchSwap(m_ctx, "Reading the scenarios of " + route.name, options, batch);
    showBatchReport(m_ctx, preview, tr("Swap Stock by Rule File"), this);
    if (!preview) {
        m_ctx.ui().message(preview.message, preview.stopped ? Icon::Information : Icon::Warning);
        return;
    }
    if (preview.swapped == 0) {
        m_ctx.ui().message("No vehicle of " + route.name + " is covered by a rule; nothing was written.");
        return;
    }
    int scenarioCount = 0;
    for (const auto& o : preview.scenarios)
        scenarioCount += !o.swapped.empty();
    if (m_ctx.ui().ask(std::to_string(preview.swapped) + " vehicles in " + std::to_string(scenarioCount) +
                           " scenarios will be swapped, each scenario keeping a backup.\n"
                           "One undo takes the whole batch back. Do you wish to go on?",
                       Buttons::YesNo) != Answer::Yes)
        return;
    options.dryRun = false;
    const scenarios::BatchResult done = runBatchSwap(m_ctx, "Swapping stock in " + route.name, options, batch);
    m_ctx.ui().message(done ? done.message + "\n" + std::to_string(done.swapped) + " vehicles swapped in " +
                                  std::to_string(done.written) + " scenarios."
                            : done.message,
                       done ? Icon::Information : Icon::Warning);
}

std::optional<scenarios::ScenarioRef> frmShowRoutes::openSelected(scenarios::ScenarioDocument& doc) {
    const auto folder = selectedScenarioFolder();
    const routes::RouteEntry* route = selectedRoute();
    if (!folder || !route)
        return std::nullopt;
    runInBackground(m_ctx, "Opening the scenario", [&](UserInterface&) { doc = scenarios::openScenario(m_ctx, *folder); });
    if (!doc.ok()) {
        m_ctx.ui().message(doc.error, Icon::Warning);
        return std::nullopt;
    }
    return scenarios::ScenarioRef{*route, {}, *folder};
}

void frmShowRoutes::Command7_Click() {
    scenarios::ScenarioDocument doc;
    const auto ref = openSelected(doc);
    if (!ref)
        return;
    auto* details = new frmScenario(m_ctx, *ref, std::move(doc), this);
    details->setAttribute(Qt::WA_DeleteOnClose);
    details->show();
    m_details = details;
    details->loadLocations();
}

void frmShowRoutes::Command12_Click() {
    scenarios::ScenarioDocument doc;
    const auto ref = openSelected(doc);
    if (!ref)
        return;
    auto* order = new frmWorkOrder(m_ctx, *ref, doc, this);
    order->setAttribute(Qt::WA_DeleteOnClose);
    order->show();
    m_workOrder = order;
}

std::vector<std::filesystem::path> frmShowRoutes::selectedScenarioFolders() {
    std::vector<std::filesystem::path> folders;
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return folders;
    std::vector<int> rows;
    for (const QModelIndex& index : m_scenarios->selectionModel()->selectedRows())
        rows.push_back(index.row());
    std::sort(rows.begin(), rows.end());
    for (const int row : rows)
        if (row >= 0 && row < static_cast<int>(m_scenarioEntries.size()))
            if (const auto found = scenarios::findScenario(m_ctx, *route, m_scenarioEntries[static_cast<std::size_t>(row)].folder))
                folders.push_back(found->folder);
    return folders;
}

// The scenario housekeeping: the selected rows, the command, what it did; the list shown again.
void frmShowRoutes::housekeeping(const std::function<scenarios::CommandResult(const std::vector<std::filesystem::path>&)>& command) {
    const auto folders = selectedScenarioFolders();
    if (folders.empty()) {
        m_ctx.ui().message("No Scenarios were found.");
        return;
    }
    const scenarios::CommandResult r = command(folders);
    m_ctx.ui().message(r.message, r ? Icon::Information : Icon::Warning);
    const int row = m_scenarios->currentRow();
    Command1_Click();
    if (row >= 0 && row < m_scenarios->rowCount())
        m_scenarios->selectRow(row);
}

void frmShowRoutes::Command2_Click() {
    m_scenarios->selectAll();
    Command3_Click();
}

void frmShowRoutes::Command3_Click() {
    housekeeping([this](const auto& folders) { return scenarios::revertToDefault(m_ctx, folders); });
}

void frmShowRoutes::Command14_Click() {
    housekeeping([this](const auto& folders) {
        return scenarios::makeStandard(m_ctx, folders, scenarios::MakeStandardFrom::Career);
    });
}

void frmShowRoutes::Command16_Click() {
    housekeeping([this](const auto& folders) {
        return scenarios::makeStandard(m_ctx, folders, scenarios::MakeStandardFrom::Timetable);
    });
}

} // namespace velmora::ui
