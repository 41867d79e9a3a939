#include "frmapconsists.h"

#include "../assets/assetgridview.h"
#include "../common/backgroundjob.h"
#include "../common/desktopui.h"
#include "../common/windowplace.h"
#include "velmora/archives/apcommands.h"
#include "velmora/assets/assetgrid.h"
#include "velmora/assets/scanpath.h"
#include "velmora/core/errorlog.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/scenarios/apscenarios.h"

#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <set>

namespace velmora::ui {

namespace {

constexpr const char* kGridFilter = "Comma Separated (*.csv)|*.csv|Tabbed text file (*.txt)|*.txt";
constexpr const char* kApsAdded = "All selected .ap items have been added to the grid.";
constexpr const char* kXmlAdded = "All selected .xml files have been added to the grid.";
constexpr const char* kApsFirst = "You have already run 'Find .ap files'\nThis will not work, you must use the\n"
                                  "'Find Scenario Properties' first.";
constexpr const char* kNoAps = "You do not appear to have selected any .ap files?";
constexpr const char* kNoXml = "You do not appear to have selected any .xml files?";

} // namespace

frmAPConsists::frmAPConsists(AppContext& ctx, QWidget* parent) : QMainWindow(parent), m_ctx(ctx) {
    setObjectName("frmAPConsists");
    setWindowTitle(tr("AP Content Editor"));
    buildWidgets();
    rememberPlace(m_ctx, this, objectName(), {1200, 760});
    m_start->setText(toQt(m_ctx.resolver.resolveForWrite(m_ctx.railWorks(), "Content\\Routes").string()));
}

void frmAPConsists::buildWidgets() {
    auto* central = new QWidget;
    setCentralWidget(central);
    m_start = new QLineEdit;
    m_start->setObjectName("Text2");

    struct Button {
        const char* name;
        const char* caption;
        void (frmAPConsists::*slot)();
    };
    const Button buttons[] = {
        {"Command5", "Find .ap files", &frmAPConsists::Command5_Click},
        {"Command1", "Find Scenario Properties", &frmAPConsists::Command1_Click},
        {"Command11", "Read details of selected .ap files", &frmAPConsists::Command11_Click},
        {"Command8", "Read details of selected .xml files", &frmAPConsists::Command8_Click},
        {"Command10", "Clear Grid", &frmAPConsists::Command10_Click},
        {"Command3", "Save Grid", &frmAPConsists::Command3_Click},
        {"Command9", "Load Grid", &frmAPConsists::Command9_Click},
    };
    auto* commands = new QGridLayout;
    commands->addWidget(new QLabel(tr("Folder")), 0, 0);
    commands->addWidget(m_start, 0, 1, 1, 3);
    int i = 0;
    for (const Button& b : buttons) {
        auto* button = new QPushButton(tr(b.caption));
        button->setObjectName(b.name);
        connect(button, &QPushButton::clicked, this, b.slot);
        commands->addWidget(button, 1 + i / 4, i % 4);
        ++i;
    }

    QStringList headers;
    for (const std::string& c : scenarios::scenarioSummaryColumns())
        headers << toQt(c);
    m_grid = makeListGrid("VSFG1", headers);

    auto* layout = new QVBoxLayout(central);
    layout->addLayout(commands);
    layout->addWidget(m_grid, 1);

    QMenu* tools = menuBar()->addMenu(tr("Routes"));
    tools->setObjectName("mnuRoutes");
    QAction* index = tools->addAction(tr("Build Route Index"));
    index->setObjectName("mnuRInd");
    connect(index, &QAction::triggered, this, &frmAPConsists::mnuRInd_Click);
}

QAction* frmAPConsists::action(const QString& name) const { return findChild<QAction*>(name); }

void frmAPConsists::addCells(const std::vector<std::string>& cells, int at) {
    const int r = at < 0 ? m_grid->rowCount() : at;
    m_grid->insertRow(r);
    for (std::size_t c = 0; c < cells.size() && c < static_cast<std::size_t>(m_grid->columnCount()); ++c)
        m_grid->setItem(r, static_cast<int>(c), new QTableWidgetItem(toQt(cells[c])));
}

std::vector<std::string> frmAPConsists::rowCells(int row) const {
    std::vector<std::string> cells;
    for (int c = 0; c < m_grid->columnCount(); ++c) {
        const QTableWidgetItem* item = m_grid->item(row, c);
        cells.push_back(item ? fromQt(item->text()) : std::string());
    }
    return cells;
}

void frmAPConsists::findFiles(const char* pattern, const char* procedure) {
    assets::cScanPath scan;
    scan.setFilter(pattern);
    scan.FileMatch = [&](const std::string& path, const std::string& name) {
        addCells({(std::filesystem::path(path) / name).string()});
    };
    scan.StartScan(fromQt(m_start->text()), true, true, true);
    for (const std::string& unreadable : scan.UnreadableFolders())
        m_ctx.log().log("frmAPConsists", procedure, err::PermissionDenied, unreadable);
    m_grid->resizeColumnsToContents();
}

void frmAPConsists::Command5_Click() {
    if (m_listing == Listing::Documents)
        m_grid->setRowCount(0); // the two listings do not mix
    findFiles("*.ap", "Command5_Click");
    m_listing = Listing::Archives;
    m_ctx.ui().message(kApsAdded);
}

void frmAPConsists::Command1_Click() {
    if (m_listing == Listing::Archives) {
        m_ctx.ui().message(kApsFirst);
        return;
    }
    findFiles("ScenarioProperties.xml", "Command1_Click");
    m_listing = Listing::Documents;
    m_ctx.ui().message(kXmlAdded);
}

void frmAPConsists::readDetails(Listing wanted, const char* refusal) {
    std::set<int> chosen;
    for (const QModelIndex& index : m_grid->selectionModel()->selectedRows())
        chosen.insert(index.row());
    if (m_listing != wanted || chosen.empty()) {
        m_ctx.ui().message(refusal);
        return;
    }
    const std::string language = m_ctx.settings.language;
    // From the bottom up, so that the rows above keep their numbers as rows come in.
    for (auto it = chosen.rbegin(); it != chosen.rend(); ++it) {
        const std::string file = rowCells(*it).front();
        // A row already read names its archive followed by "|<entry>".
        const std::filesystem::path path = file.substr(0, file.find('|'));
        const scenarios::ScenarioSummaries found = wanted == Listing::Archives
                                                       ? scenarios::readPackedScenarios(path, language)
                                                       : scenarios::readScenarioProperties(path, language);
        for (const std::string& problem : found.problems)
            m_ctx.log().log("frmAPConsists", wanted == Listing::Archives ? "Command11_Click" : "Command8_Click",
                            err::FileNotFound, problem);
        if (found.scenarios.empty())
            continue; // the row stays, so the file is still there to be seen
        m_grid->removeRow(*it);
        int at = *it;
        for (const scenarios::ScenarioSummary& s : found.scenarios)
            addCells(scenarios::scenarioSummaryCells(s), at++);
    }
    m_grid->resizeColumnsToContents();
}

void frmAPConsists::Command11_Click() { readDetails(Listing::Archives, kNoAps); }

void frmAPConsists::Command8_Click() { readDetails(Listing::Documents, kNoXml); }

void frmAPConsists::Command10_Click() {
    m_grid->setRowCount(0);
    m_listing = Listing::None;
}

void frmAPConsists::Command3_Click() {
    MakePath(m_ctx.reports());
    const auto chosen = m_ctx.ui().chooseFile({"Save Grid as File", m_ctx.reports(), kGridFilter, true});
    if (!chosen || chosen->empty())
        return;
    const assets::ListForm form = assets::listFormOf(*chosen);
    if (form != assets::ListForm::Csv && form != assets::ListForm::Tabbed)
        return;
    std::vector<std::vector<std::string>> rows{scenarios::scenarioSummaryColumns()};
    for (int r = 0; r < m_grid->rowCount(); ++r)
        rows.push_back(rowCells(r));
    std::string error;
    JournalCommand command(&m_ctx.journal(), "Save Grid as File " + chosen->string());
    if (!assets::saveList(m_ctx.files(), *chosen, rows, "Scenarios", &error))
        m_ctx.ui().message(error, Icon::Warning);
}

void frmAPConsists::Command9_Click() {
    const auto chosen = m_ctx.ui().chooseFile({"Load Grid from File", m_ctx.reports(), kGridFilter, false});
    if (!chosen || chosen->empty())
        return;
    const assets::ListForm form = assets::listFormOf(*chosen);
    if (form != assets::ListForm::Csv && form != assets::ListForm::Tabbed)
        return;
    std::vector<assets::ListLine> lines;
    std::string error;
    if (!assets::loadListLines(*chosen, form, lines, &error)) {
        m_ctx.ui().message(error, Icon::Warning);
        return;
    }
    m_grid->setRowCount(0);
    m_listing = Listing::None;
    for (const assets::ListLine& line : lines) {
        if (line.cells == scenarios::scenarioSummaryColumns())
            continue; // the header line
        addCells(line.cells);
        if (!line.cells.empty())
            m_listing = iendsWith(line.cells.front().substr(0, line.cells.front().find('|')), ".ap")
                            ? Listing::Archives
                            : Listing::Documents;
    }
    m_grid->resizeColumnsToContents();
}

void frmAPConsists::mnuRInd_Click() {
    // Every route archive is opened: long on a big install, so off the screen's thread. What
    // could not be read is logged back here, on the screen's thread.
    std::vector<std::string> problems;
    runInBackground(m_ctx, "Build Route Index", [this, &problems](UserInterface& ui) {
        problems = archives::buildRouteIndex(m_ctx, ui).problems;
    });
    for (const std::string& problem : problems)
        m_ctx.log().log("frmAPConsists", "mnuRInd_Click", err::FileNotFound, problem);
}

} // namespace velmora::ui
