#include "frmdelroute.h"

#include "../common/desktopui.h"
#include "../common/windowplace.h"
#include "../common/frmreport.h"
#include "../common/frmresults.h"
#include "../common/palettecolours.h"
#include "velmora/core/convert.h"
#include "velmora/core/services.h"
#include "velmora/routes/routeitems.h"
#include "velmora/scenarios/scenariolist.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QVBoxLayout>

namespace velmora::ui {

frmDelRoute::frmDelRoute(AppContext& ctx, bool packageMode, QWidget* parent)
    : QDialog(parent), m_ctx(ctx), m_packageMode(packageMode), m_work(ctx.ui()) {
    setObjectName("frmDelRoute");
    setWindowTitle(packageMode ? caption(ctx, 617, "Select Route to Package") : tr("Select Route"));
    rememberPlace(ctx, this, objectName(), {1000, 650});
    m_routes = new QListWidget;
    m_routes->setObjectName("List1");
    m_routes->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_scenarios = new QTableWidget(0, 3);
    m_scenarios->setObjectName("List3");
    m_scenarios->setHorizontalHeaderLabels({tr("Scenario folder"), tr("Scenario"), tr("Type")});
    m_scenarios->horizontalHeader()->setStretchLastSection(true);
    m_scenarios->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_scenarios->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_routeCount = new QLabel;
    m_routeCount->setObjectName("Label7");
    m_scenarioCount = new QLabel;
    m_scenarioCount->setObjectName("Label9");
    connect(m_routes, &QListWidget::itemClicked, this, &frmDelRoute::Command1_Click);

    struct Button {
        const char* name;
        int entry; // of the language table
        const char* caption;
        void (frmDelRoute::*slot)();
    };
    const Button buttons[] = {
        {"Command1", 116, "List Scenarios in Selected Route", &frmDelRoute::Command1_Click},
        {"Command4", 117, "Check Route", &frmDelRoute::Command4_Click},
        {"Command12", 119, "Print list of all Routes and Scenarios", &frmDelRoute::Command12_Click},
        {"Command26", 120, "List Routes with Scenario types", &frmDelRoute::Command26_Click},
        {"Command14", 346, "Show Provider / Products used in selected route", &frmDelRoute::Command14_Click},
        {"Command18", 350, "Check ScenarioProperties", &frmDelRoute::Command18_Click},
        {"Command3", 619, "List Stock used by Selected Scenario", &frmDelRoute::Command3_Click},
        {"Command15", 347, "List Stock used by all scenarios", &frmDelRoute::Command15_Click},
        {"Command19", 348, "List Stock used with wagon numbers", &frmDelRoute::Command19_Click},
        {"Command21", 349, "List ALL rolling stock used by all routes.", &frmDelRoute::Command21_Click},
        {"Command17", 620, "List Items used with Locations", &frmDelRoute::Command17_Click},
        {"Command22", 351, "Display items used from selected P/P", &frmDelRoute::Command22_Click},
        {"Command10", 130, "&Abort", &frmDelRoute::Command10_Click},
        {"Command7", 0, "Raise or Lower Track", &frmDelRoute::Command7_Click},
        {"Command9", 0, "Clone Route", &frmDelRoute::Command9_Click},
        {"Command8", 0, "Clone Scenario", &frmDelRoute::Command8_Click},
        {"Command2", 0, "Delete Selected Scenario(s)", &frmDelRoute::Command2_Click},
        {"mnuTex", 0, "Remove terrain textures", &frmDelRoute::mnuTex_Click},
        {"Command20", 0, "Command20", &frmDelRoute::Command20_Click},
        {"Command11", 0, "View Route Details", &frmDelRoute::Command11_Click},
        {"Command25", 0, "Check Route Template", &frmDelRoute::Command25_Click},
        {"mnuCRF", 0, "Make Asset Folder", &frmDelRoute::mnuCRF_Click},
        {"mnuRouteInfo", 0, "Add Route Description", &frmDelRoute::mnuRouteInfo_Click},
        {"mnuMap", 0, "Add Route Loading Picture", &frmDelRoute::mnuMap_Click},
    };
    auto* grid = new QGridLayout;
    int i = 0;
    for (const Button& b : buttons) {
        auto* button = new QPushButton(caption(m_ctx, b.entry, b.caption));
        button->setObjectName(b.name);
        connect(button, &QPushButton::clicked, this, b.slot);
        grid->addWidget(button, i / 3, i % 3);
        ++i;
        if (button->objectName() == "Command22") {
            m_command22 = button;
            button->setEnabled(false); // until the providers are listed
        }
        if (button->objectName() == "Command20")
            button->setVisible(false); // the speed limits have no button of their own
        const bool edit = b.slot == &frmDelRoute::Command7_Click || b.slot == &frmDelRoute::Command9_Click ||
                          b.slot == &frmDelRoute::Command8_Click || b.slot == &frmDelRoute::Command2_Click ||
                          b.slot == &frmDelRoute::mnuTex_Click;
        if (packageMode && edit)
            button->setVisible(false); // packaging copies; it does not edit
    }
    auto* ok = new QPushButton(packageMode ? caption(m_ctx, 314, "Package Selected Route")
                                           : caption(m_ctx, 121, "Delete Selected Route"));
    ok->setObjectName("OKButton");
    auto* package = new QPushButton(caption(m_ctx, 312, "Package this routes Assets"));
    package->setObjectName("Command16");
    package->setVisible(packageMode);
    package->setEnabled(false);
    if (packageMode)
        addPackageCommands(grid, ok, package, i / 3 + 2);
    else
        connect(ok, &QPushButton::clicked, this, &frmDelRoute::OKButton_Click);
    grid->addWidget(ok, i / 3, i % 3);
    grid->addWidget(package, i / 3, i % 3 + 1);
    // Notes the check can add without changing its reports.
    m_markArchives = new QCheckBox(tr("Note missing items packed in an .ap of their product"));
    m_markArchives->setObjectName("chkMarkArchives");
    m_markCase = new QCheckBox(tr("Note names found only under other letter case"));
    m_markCase->setObjectName("chkMarkCase");
    grid->addWidget(m_markArchives, i / 3 + 1, 0);
    grid->addWidget(m_markCase, i / 3 + 1, 1);

    auto* lists = new QHBoxLayout;
    auto* left = new QVBoxLayout;
    left->addWidget(m_routeCount);
    left->addWidget(m_routes, 1);
    auto* right = new QVBoxLayout;
    right->addWidget(m_scenarioCount);
    right->addWidget(m_scenarios, 1);
    lists->addLayout(left, 1);
    lists->addLayout(right, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(lists, 1);
    layout->addLayout(grid);

    reloadRoutes();
}

void frmDelRoute::reloadRoutes() {
    std::vector<std::string> warnings;
    m_routeEntries = routes::listRoutes(m_ctx, &warnings);
    for (const auto& w : warnings)
        m_ctx.ui().message(w, Icon::Warning);
    m_routes->clear();
    for (const auto& r : m_routeEntries)
        m_routes->addItem(toQt(r.folder + "\t" + r.name));
    m_routeCount->setText(caption(m_ctx, 129, "No. of Routes") + QString(": %1").arg(m_routeEntries.size()));
}

const routes::RouteEntry* frmDelRoute::selectedRoute() {
    const auto selected = m_routes->selectedItems();
    const int row = selected.isEmpty() ? m_routes->currentRow() : m_routes->row(selected.front());
    if (row < 0 || row >= static_cast<int>(m_routeEntries.size())) {
        m_ctx.ui().message("Select a route in the list first.");
        return nullptr;
    }
    return &m_routeEntries[static_cast<std::size_t>(row)];
}

void frmDelRoute::beginResults(const QString& title) {
    m_results = nullptr;
    const routes::RouteEntry* route =
        m_routes->currentRow() >= 0 ? &m_routeEntries[static_cast<std::size_t>(m_routes->currentRow())] : nullptr;
    m_resultsTitle = route ? title + ": " + toQt(route->name) : title;
}

void frmDelRoute::addResult(QDialog* page, const QString& tab) {
    if (!m_results) {
        m_results = new frmResults(m_ctx, m_resultsTitle.isEmpty() ? page->windowTitle() : m_resultsTitle, this);
        m_results->show();
    }
    m_results->addPage(page, tab);
    m_results->tabs()->setCurrentWidget(page);
    m_reports.push_back(page);
}

frmListRS* frmDelRoute::showList(ReportKind kind, const QString& tab, const QString& title,
                                 const std::vector<std::string>& rows, const std::string& suffix) {
    const routes::RouteEntry* route =
        m_routes->currentRow() >= 0 ? &m_routeEntries[static_cast<std::size_t>(m_routes->currentRow())] : nullptr;
    auto* list = new frmListRS(m_ctx, kind, title, rows, route ? route->name : std::string(), suffix, this);
    addResult(list, tab);
    return list;
}

void frmDelRoute::showText(const QString& tab, const QString& title, const std::string& text) {
    addResult(new frmReport(m_ctx, title, text, this), tab);
}

void fillScenarioRows(QTableWidget* table, const std::vector<routes::ScenarioEntry>& scenarios, bool noFolder) {
    table->setRowCount(0);
    if (noFolder) {
        table->setRowCount(1);
        table->setItem(0, 0, new QTableWidgetItem(QObject::tr("No Scenarios folder found")));
    }
    for (const auto& s : scenarios) {
        const int r = table->rowCount();
        table->insertRow(r);
        const QColor colour = rowColour(s.colour(), table->palette());
        int c = 0;
        for (const std::string& text : {s.folder, s.name, s.legend()}) {
            auto* item = new QTableWidgetItem(toQt(text));
            item->setForeground(colour);
            table->setItem(r, c++, item);
        }
    }
}

QGroupBox* scenarioLegend(const QTableWidget* table) {
    // The legend's kinds, in the order the frame names them, with a scenario of each kind.
    const std::pair<const char*, const char*> kinds[] = {
        {"Timetable Scenario", "eTimetableScenarioClass"}, {"Workshop Scenario", "eStandardScenarioClass"},
        {"Quick Drive Scenario", "eTemplateScenarioClass"}, {"Career Scenario", "eCareerScenarioClass"},
        {"Standard Scenario", "eStandardScenarioClass"},    {"Free Roam Scenario", "eFreeRoamScenarioClass"},
    };
    auto* legend = new QGroupBox(QObject::tr("Legend"));
    auto* row = new QHBoxLayout(legend);
    for (const auto& [caption, value] : kinds) {
        routes::ScenarioEntry sample;
        sample.scenarioClass = value;
        sample.workshop = std::string(caption) == "Workshop Scenario";
        // Each kind in its own colour, and its name, so colour is never the only sign.
        auto* label = new QLabel(QObject::tr(caption));
        QPalette p = label->palette();
        p.setColor(QPalette::WindowText, rowColour(sample.colour(), table->palette()));
        label->setPalette(p);
        row->addWidget(label);
    }
    return legend;
}

QTableWidget* makeScenarioTable() {
    auto* table = new QTableWidget(0, 3);
    table->setObjectName("List3");
    table->setHorizontalHeaderLabels({QObject::tr("Scenario folder"), QObject::tr("Scenario"), QObject::tr("Kind")});
    table->horizontalHeader()->setStretchLastSection(true);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->verticalHeader()->setVisible(false);
    return table;
}

std::vector<routes::RouteEntry> fillRouteNames(AppContext& ctx, QListWidget* list) {
    std::vector<std::string> warnings;
    std::vector<routes::RouteEntry> entries = routes::listRoutes(ctx, &warnings);
    for (const auto& w : warnings)
        ctx.ui().message(w, Icon::Warning);
    for (const auto& r : entries)
        list->addItem(toQt(r.name));
    return entries;
}

const routes::RouteEntry* currentRoute(const QListWidget* list, const std::vector<routes::RouteEntry>& entries) {
    const int row = list->currentRow();
    return row < 0 || row >= static_cast<int>(entries.size()) ? nullptr : &entries[static_cast<std::size_t>(row)];
}

std::optional<std::filesystem::path> scenarioFolderAt(AppContext& ctx, const routes::RouteEntry* route,
                                                      const std::vector<routes::ScenarioEntry>& entries, int row) {
    if (route && row >= 0 && row < static_cast<int>(entries.size()))
        if (const auto found = scenarios::findScenario(ctx, *route, entries[static_cast<std::size_t>(row)].folder))
            return found->folder;
    ctx.ui().message("No Scenarios were found.");
    return std::nullopt;
}

void frmDelRoute::Command1_Click() {
    m_scenarios->setRowCount(0);
    m_scenarios->setHorizontalHeaderLabels({tr("Scenario folder"), tr("Scenario"), tr("Type")});
    m_listsProviders = false;
    m_command22->setEnabled(false);
    m_scenarioEntries.clear();
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    bool noFolder = false;
    m_scenarioEntries = routes::listScenarios(m_ctx, *route, &noFolder);
    fillScenarioRows(m_scenarios, m_scenarioEntries, noFolder);
    m_scenarioCount->setText(caption(m_ctx, 132, "No. of Scenarios") + QString(": %1").arg(m_scenarioEntries.size()));
}

void frmDelRoute::Command4_Click() {
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    beginResults(tr("Check Route"));
    if (m_scenarioEntries.empty())
        Command1_Click();
    routes::RouteCheck check(m_ctx, *route, m_scenarioEntries);
    m_work.reset();
    routes::RouteCheckOptions options;
    options.markArchives = m_markArchives->isChecked();
    options.markCase = m_markCase->isChecked();
    m_check = check.run(options, &m_work);
    if (m_check.aborted)
        return;
    for (const auto& w : m_check.warnings)
        m_ctx.ui().message(w, Icon::Warning);
    std::vector<std::string> rows;
    for (const auto& m : m_check.missing)
        rows.push_back(m.row());
    m_scenerySubstituted = false;
    if (rows.empty())
        m_ctx.ui().message("No Assets were missing from this route.");
    else {
        // The grid offers substitution; a change made there makes the rest of the check stale.
        frmListRS* list = showList(ReportKind::MissingItems, tr("Missing items"),
                                   tr("Following Asset(s) were missing from this route:-"), rows);
        list->offerSubstitution(*route, m_scenarioEntries);
        connect(list, &frmListRS::scenerySubstituted, this, [this] { m_scenerySubstituted = true; });
    }
    if (m_ctx.ui().ask("Do you wish to view a list of Shapes used by this route?", Buttons::YesNo) == Answer::Yes)
        showList(ReportKind::Used, tr("Shapes used"), tr("Following Asset(s) were used by this route:-"), m_check.assetsUnique, "_Assets.csv");
    if (m_scenerySubstituted)
        return;
    if (m_ctx.ui().ask("Would you like to check for missing Texture/Audio/Animation & Script files?", Buttons::YesNo) !=
        Answer::Yes) {
        saveReports();
        showMarks();
        return;
    }
    // The deep stage goes on from the tiles already read.
    if (!check.deepen(m_check, options, &m_work))
        return;
    saveReports();
    showList(ReportKind::GeoFiles, tr("Geometry used"), tr("Following geometric item(s) were used by this route:-"), m_check.geoFiles,
             "_GeoShapes.csv");
    showText(tr("Missing textures"), tr("Missing Textures:-"), m_check.texturesReport());
    if (m_ctx.ui().ask("Do you wish to view a list of Textures used by this route?", Buttons::YesNo) == Answer::Yes)
        showList(ReportKind::Used, tr("Textures used"), tr("Following Textures files were used by this route:-"), m_check.texturesUsed,
                 "_Textures.csv");
    if (!m_check.audioUsed.empty() &&
        m_ctx.ui().ask("Do you wish to view a list of Audio files used by this route?", Buttons::YesNo) == Answer::Yes)
        showList(ReportKind::Used, tr("Audio used"), tr("Following Audio files were used by this route:-"), m_check.audioUsed, "_Sounds.csv");
    showMarks();
}

void frmDelRoute::saveReports() {
    JournalCommand command(&m_ctx.journal(), "Check Route " + m_check.routeName);
    for (const std::string& error : routes::saveRouteReports(m_ctx, m_check).errors)
        m_ctx.ui().message(error, Icon::Critical);
}

void frmDelRoute::showMarks() {
    if (const std::string notes = m_check.marksReport(); !notes.empty())
        showText(tr("Notes"), tr("Notes on the check"), notes);
}

void frmDelRoute::Command10_Click() { m_work.abort(); }

void frmDelRoute::Command12_Click() {
    beginResults(tr("Routes and Scenarios"));
    showText(tr("Routes and Scenarios"), tr("Routes and Scenarios"), routes::routesOverview(m_ctx, m_routeEntries));
}

void frmDelRoute::Command26_Click() {
    beginResults(tr("Routes with Scenario types"));
    showText(tr("Scenario types"), tr("Routes with Scenario types"), routes::scenarioTypesTable(m_ctx, m_routeEntries));
}

void frmDelRoute::Command14_Click() {
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    m_scenarios->setRowCount(0);
    m_scenarioEntries.clear();
    m_scenarios->setHorizontalHeaderLabels({tr("Provider"), tr("Product"), QString()});
    for (const auto& [provider, product] : routes::routeProviders(m_ctx, *route)) {
        const int r = m_scenarios->rowCount();
        m_scenarios->insertRow(r);
        m_scenarios->setItem(r, 0, new QTableWidgetItem(toQt(provider)));
        m_scenarios->setItem(r, 1, new QTableWidgetItem(toQt(product)));
    }
    m_listsProviders = true;
    m_command22->setEnabled(true);
}

std::optional<std::pair<std::string, std::string>> frmDelRoute::selectedProvider() {
    const int row = m_scenarios->currentRow();
    if (!m_listsProviders || row < 0 || !m_scenarios->item(row, 0) || !m_scenarios->item(row, 1)) {
        m_ctx.ui().message("Select a provider and product in the list first.");
        return std::nullopt;
    }
    return std::make_pair(fromQt(m_scenarios->item(row, 0)->text()), fromQt(m_scenarios->item(row, 1)->text()));
}

void frmDelRoute::Command17_Click() {
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    beginResults(tr("Items used with locations"));
    m_work.reset();
    const auto r = routes::listPlacedItems(m_ctx, *route, 0, &m_work);
    if (r.aborted)
        return;
    for (const auto& w : r.warnings)
        m_ctx.ui().message(w, Icon::Warning);
    std::vector<std::string> rows;
    for (const auto& m : r.missing)
        rows.push_back(m.row());
    if (!rows.empty())
        showList(ReportKind::MissingItems, tr("Missing items"), tr("Following Asset(s) were missing from this route:-"), rows);
    rows.clear();
    for (const auto& item : r.items)
        rows.push_back(item.row());
    showList(ReportKind::ItemsWithLocations, tr("Items used"), tr("Following item(s) were used by this route:-"), rows, "_Locations.csv");
}

void frmDelRoute::Command22_Click() {
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    beginResults(tr("Items used from the product"));
    const auto chosen = selectedProvider();
    if (!chosen)
        return;
    const auto scenarios = routes::listScenarios(m_ctx, *route);
    m_work.reset();
    const auto r = routes::productItemsUsed(m_ctx, *route, scenarios, chosen->first, chosen->second, 0, &m_work);
    if (r.aborted)
        return;
    std::vector<std::string> rows;
    for (const auto& m : r.missing)
        rows.push_back(m.row());
    if (!rows.empty())
        showList(ReportKind::MissingItems, tr("Missing items"), tr("Following Asset(s) were missing from this route:-"), rows);
    if (r.used.empty()) {
        m_ctx.ui().message("No shapes used by this provider/product");
        return;
    }
    showList(ReportKind::ProviderItems, tr("Items of the product"),
             tr("Items of %1\\%2 used by this route:-").arg(toQt(r.provider), toQt(r.product)), r.used, "_" + r.product + ".csv")
        ->offerUnused(r);
}

void frmDelRoute::Command18_Click() {
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    bool anyError = false;
    for (const QModelIndex& index : m_scenarios->selectionModel()->selectedRows()) {
        if (index.row() >= static_cast<int>(m_scenarioEntries.size()))
            continue;
        const auto& s = m_scenarioEntries[static_cast<std::size_t>(index.row())];
        if (const std::string problem = routes::scenarioPropertiesProblem(m_ctx, *route, s); !problem.empty()) {
            anyError = true;
            m_ctx.ui().message(problem, Icon::Warning);
        }
    }
    m_ctx.ui().message(anyError ? "All selected ScenarioProperties.xml checked - at least one had a format error."
                                : "All selected ScenarioProperties.xml checked - all formats OK.");
}

void frmDelRoute::Command3_Click() {
    const routes::RouteEntry* route = selectedRoute();
    const int row = m_scenarios->currentRow();
    if (!route || row < 0 || row >= static_cast<int>(m_scenarioEntries.size()))
        return;
    beginResults(tr("Stock used by the scenario"));
    const routes::ScenarioEntry& scenario = m_scenarioEntries[static_cast<std::size_t>(row)];
    std::string message;
    std::vector<std::string> rows;
    std::vector<bool> missing;
    for (const auto& item : routes::scenarioStock(m_ctx, *route, scenario, &message)) {
        rows.push_back(item.path + "\t" + item.name);
        missing.push_back(item.missing);
    }
    if (!message.empty()) {
        m_ctx.ui().message(message);
        return;
    }
    showList(ReportKind::ScenarioStock, tr("Stock"), tr("Stock used by this scenario"), rows)->markMissing(missing);

    // The scenery the scenario places itself.
    const auto scenery = routes::scenarioScenery(m_ctx, *route, scenario);
    if (!scenery.hasScenery) {
        m_ctx.ui().message("There was no Scenery file with this scenario");
        return;
    }
    for (const auto& w : scenery.warnings)
        m_ctx.ui().message(w, Icon::Warning);
    rows.clear();
    for (const auto& m : scenery.missing)
        rows.push_back(m.row());
    if (!rows.empty())
        showList(ReportKind::MissingItems, tr("Missing items"), tr("Following Asset(s) were missing from this route:-"), rows);
    showList(ReportKind::ScenarioScenery, tr("Scenery"), tr("Scenery items of this scenario"), scenery.items);
}

void frmDelRoute::Command15_Click() {
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    beginResults(tr("Stock used by all scenarios"));
    if (m_scenarioEntries.empty())
        Command1_Click();
    std::vector<std::string> rows;
    std::vector<bool> missing;
    for (const auto& s : m_scenarioEntries)
        for (const auto& item : routes::scenarioStock(m_ctx, *route, s)) {
            rows.push_back(item.path + "\t" + item.name);
            missing.push_back(item.missing);
        }
    showList(ReportKind::ScenarioStock, tr("Stock"), tr("Stock used by all scenarios"), rows)->markMissing(missing);
}

void frmDelRoute::Command19_Click() {
    const routes::RouteEntry* route = selectedRoute();
    const int row = m_scenarios->currentRow();
    if (!route || row < 0 || row >= static_cast<int>(m_scenarioEntries.size()))
        return;
    beginResults(tr("Stock used with wagon numbers"));
    std::string message;
    const auto rows = routes::scenarioNumbers(m_ctx, *route, m_scenarioEntries[static_cast<std::size_t>(row)], &message);
    if (!message.empty())
        m_ctx.ui().message(message);
    else
        showList(ReportKind::StockWithNumbers, tr("Numbers"), tr("Stock used with wagon numbers"), rows);
}

void frmDelRoute::Command21_Click() {
    beginResults(tr("All rolling stock"));
    std::vector<std::string> warnings;
    const auto rows = routes::allRoutesStock(m_ctx, m_routeEntries, &warnings);
    for (const auto& w : warnings)
        m_ctx.ui().message(w);
    showList(ReportKind::AllStock, tr("All stock"), tr("All rolling stock used by all routes"), rows);
}

frmFindLoco::frmFindLoco(AppContext& ctx, const std::string& assetPath, const std::string& assetName, QWidget* parent)
    : QDialog(parent) {
    setObjectName("frmFindLoco");
    rememberPlace(ctx, this, objectName(), {700, 400});
    setWindowTitle(tr("Where is it used?") + " " + toQt(assetName));
    m_results = new QListWidget;
    m_results->setObjectName("List3");
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(toQt(assetPath)));
    layout->addWidget(m_results, 1);
    const auto uses = routes::whereUsed(ctx, routes::listRoutes(ctx), assetPath);
    for (const auto& u : uses)
        m_results->addItem(toQt(u.route + "\t" + u.scenario + "\t" + u.scenarioFolder));
    if (uses.empty())
        m_results->addItem(tr("Not used by any scenario"));
}

} // namespace velmora::ui
