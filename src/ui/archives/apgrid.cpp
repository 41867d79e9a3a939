#include "apgrid.h"

#include "../common/backgroundjob.h"
#include "../common/desktopui.h"
#include "../common/frmreport.h"
#include "dlgmode.h"
#include "velmora/archives/zipreader.h"
#include "velmora/core/services.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLayout>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTableWidget>
#include <QWidget>

namespace velmora::ui {

namespace {

struct ButtonEntry {
    const char* name;
    const char* caption;
    void (ApGridCommands::*slot)();
};

const ButtonEntry kButtons[] = {
    {"Command14", "Unpack Selected .ap files with 7zip (normally use this option)", &ApGridCommands::Command14_Click},
    {"Command15", "Extract rolling-stock from all .ap files", &ApGridCommands::Command15_Click},
    {"Command16", "Extract scenarios from all .ap files", &ApGridCommands::Command16_Click},
    {"Command17", "Extract rolling-stock  from selected .ap files", &ApGridCommands::Command17_Click},
    {"Command18", "Extract scenarios from selected .ap files", &ApGridCommands::Command18_Click},
    {"Command19", "List files in .ap file", &ApGridCommands::Command19_Click},
    {"Command20", "Extract Loco .geopcdx files", &ApGridCommands::Command20_Click},
    {"Command21", "Extract RouteProperties.xml from selected", &ApGridCommands::Command21_Click},
    {"Command22", "Select all MainContent.ap files", &ApGridCommands::Command22_Click},
    {"Command24", "Extract rolling stock .bin files from selected .ap", &ApGridCommands::Command24_Click},
    {"Command13", "Extract RouteProperties.xml for all routes and add route name.", &ApGridCommands::Command13_Click},
    {"Command12", "Delete Selected Folders", &ApGridCommands::Command12_Click},
};

std::string reportText(const archives::ApCommandResult& result) {
    std::string text = result.summary;
    if (!result.problems.empty()) {
        text += "\nNot done:\n";
        for (const std::string& p : result.problems)
            text += "  " + p + "\n";
    }
    if (text.empty())
        text = "Nothing was unpacked.\n";
    return text;
}

} // namespace

ApGridCommands::ApGridCommands(AppContext& ctx, frmListRS* screen, archives::ApTable table, bool details)
    : QObject(screen), m_ctx(ctx), m_screen(screen), m_table(std::move(table)), m_details(details) {
    setObjectName("ApGridCommands");
    // mnuSort, in both listings.
    auto* bar = new QMenuBar(screen);
    QMenu* sort = bar->addMenu(tr("Sort"));
    sort->setObjectName("mnuSort");
    QAction* byFile = sort->addAction(tr("Sort on File"));
    byFile->setObjectName("mnuSF");
    QAction* byDate = sort->addAction(tr("Sort on Date"));
    byDate->setObjectName("mnuSD");
    connect(byFile, &QAction::triggered, this, &ApGridCommands::mnuSF_Click);
    connect(byDate, &QAction::triggered, this, &ApGridCommands::mnuSD_Click);
    screen->layout()->setMenuBar(bar);

    auto* panel = new QWidget;
    panel->setObjectName("apCommands");
    auto* layout = new QVBoxLayout(panel);
    layout->setContentsMargins(0, 0, 0, 0);
    m_legend = new QLabel(archives::kRedRowsLegend);
    m_legend->setObjectName("Label6");
    layout->addWidget(m_legend);
    auto* grid = new QGridLayout;
    int n = 0;
    for (const ButtonEntry& entry : kButtons) {
        auto* b = new QPushButton(tr(entry.caption));
        b->setObjectName(entry.name);
        connect(b, &QPushButton::clicked, this, entry.slot);
        grid->addWidget(b, n / 3, n % 3);
        ++n;
    }
    layout->addLayout(grid);
    screen->addPanel(panel);
    // Shown once something has been unpacked, so that the folders can go.
    button("Command12")->setVisible(false);
    fill();
}

QPushButton* ApGridCommands::button(const char* name) const { return m_screen->findChild<QPushButton*>(name); }

void ApGridCommands::askForMode() {
    QWidget* parent = m_screen;
    m_chooseMode = [parent] { return dlgMode::choose(archives::UnpackMode::Overwrite, parent); };
}

void ApGridCommands::fill() {
    std::vector<std::string> status;
    std::vector<bool> red;
    bool anyRed = false;
    for (const archives::ApFile& f : m_table.files) {
        status.push_back(archives::apStateText(f.state));
        red.push_back(f.red);
        anyRed = anyRed || f.red;
    }
    m_screen->setStatusRows(archives::apGridRows(m_table, m_details), status, red);
    m_legend->setVisible(anyRed);
}

void ApGridCommands::mnuSF_Click() {
    archives::sortApTable(m_table, archives::ApSort::File);
    fill();
}

void ApGridCommands::mnuSD_Click() {
    archives::sortApTable(m_table, archives::ApSort::Date);
    fill();
}

std::vector<fs::path> ApGridCommands::selectedAps() const {
    std::vector<fs::path> aps;
    for (const std::string& cell : m_screen->selectedFirstCells())
        if (!cell.empty())
            aps.emplace_back(cell);
    return aps;
}

bool ApGridCommands::run(const std::string& label,
                         const std::function<archives::ApCommandResult(UserInterface&)>& command) {
    archives::ApCommandResult result;
    runInBackground(m_ctx, label, [&](UserInterface& ui) { result = command(ui); });
    if (!result.ran)
        return false;
    m_report = frmReport::show(m_ctx, tr("%1: what was done").arg(toQt(label)), reportText(result), m_screen);
    return true;
}

void ApGridCommands::unpackSelected(archives::UnpackCommand command) {
    const std::vector<fs::path> aps = selectedAps();
    if (aps.empty()) {
        m_ctx.ui().message("Select one or more .ap files in the grid first.", Icon::Information);
        return;
    }
    archives::UnpackMode mode = archives::UnpackMode::Overwrite;
    if (command == archives::UnpackCommand::Unpack && m_chooseMode) {
        const auto chosen = m_chooseMode();
        if (!chosen)
            return;
        mode = *chosen;
    }
    const bool ran = run("Unpacking .ap files", [&](UserInterface& ui) {
        return archives::unpackSelected(m_ctx, ui, aps, command, mode);
    });
    if (ran)
        button("Command12")->setVisible(true);
}

void ApGridCommands::Command14_Click() { unpackSelected(archives::UnpackCommand::Unpack); }
void ApGridCommands::Command17_Click() { unpackSelected(archives::UnpackCommand::RollingStock); }
void ApGridCommands::Command18_Click() { unpackSelected(archives::UnpackCommand::Scenarios); }
void ApGridCommands::Command20_Click() { unpackSelected(archives::UnpackCommand::LocoShapes); }
void ApGridCommands::Command24_Click() { unpackSelected(archives::UnpackCommand::RollingStockBins); }

void ApGridCommands::Command15_Click() {
    run("Extracting rolling stock", [&](UserInterface& ui) {
        return archives::unpackEverywhere(m_ctx, ui, archives::EntrySet::RollingStock);
    });
}

void ApGridCommands::Command16_Click() {
    run("Extracting scenarios", [&](UserInterface& ui) {
        return archives::unpackEverywhere(m_ctx, ui, archives::EntrySet::Scenarios);
    });
}

void ApGridCommands::Command19_Click() {
    const std::vector<fs::path> aps = selectedAps();
    if (aps.empty()) {
        m_ctx.ui().message("Select the .ap file to list in the grid first.", Icon::Information);
        return;
    }
    if (m_ctx.ui().ask("This will list all files in the selected .ap file.", Buttons::OkCancel) != Answer::Ok)
        return;
    m_report = showEntryListing(m_ctx, aps.front(), m_screen);
}

void ApGridCommands::Command21_Click() {
    const std::vector<fs::path> aps = selectedAps();
    if (aps.empty()) {
        m_ctx.ui().message("Select one or more .ap files in the grid first.", Icon::Information);
        return;
    }
    run("Extracting RouteProperties.xml",
        [&](UserInterface& ui) { return archives::extractRouteProperties(m_ctx, ui, aps); });
}

void ApGridCommands::Command22_Click() {
    QTableWidget* grid = m_screen->grid();
    grid->clearSelection();
    const int column = grid->columnCount() - (m_details ? 4 : 1);
    for (int r = 0; r < grid->rowCount(); ++r) {
        const QTableWidgetItem* item = grid->item(r, column);
        if (item && iendsWith(fromQt(item->text().trimmed()), "MainContent.ap"))
            grid->selectionModel()->select(grid->model()->index(r, 0),
                                           QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
}

void ApGridCommands::Command13_Click() {
    run("Adding route names", [&](UserInterface& ui) { return archives::addRouteNames(m_ctx, ui); });
}

void ApGridCommands::Command12_Click() {
    const std::vector<fs::path> aps = selectedAps();
    if (aps.empty()) {
        m_ctx.ui().message("Select the .ap files whose folders are to go first.", Icon::Information);
        return;
    }
    run("Deleting folders", [&](UserInterface& ui) { return archives::deleteFolders(m_ctx, ui, aps); });
}

frmReport* showEntryListing(AppContext& ctx, const fs::path& ap, QWidget* parent) {
    archives::ZipReader zip;
    std::string listing;
    runInBackground(ctx, "Listing " + ap.string(), [&](UserInterface&) {
        if (zip.open(ap))
            listing = archives::entryListing(zip);
    });
    if (!zip.isOpen()) {
        ctx.ui().message(zip.error(), Icon::Warning);
        return nullptr;
    }
    return frmReport::show(ctx, toQt(ap.filename().string()), listing, parent);
}

frmListRS* showApTable(AppContext& ctx, archives::ApTable table, bool details, const QString& title, QWidget* parent) {
    auto* screen = new frmListRS(ctx, details ? ReportKind::ApFiles : ReportKind::ApFilesNoDetail, title, {}, "AP_Files",
                                 ".csv", parent);
    screen->setAttribute(Qt::WA_DeleteOnClose);
    auto* commands = new ApGridCommands(ctx, screen, std::move(table), details);
    if (!commands->table().unreadable.empty() || commands->table().stopped) {
        std::string note = commands->table().stopped ? "The search was stopped: the list is not complete.\n" : "";
        for (const std::string& u : commands->table().unreadable)
            note += u + "\n";
        frmReport::show(ctx, QObject::tr("Folders not searched"), note, screen);
    }
    screen->show();
    return screen;
}

frmListRS* findApScreen(AppContext& ctx, const archives::ApFindOptions& options, const QString& title, QWidget* parent) {
    archives::ApTable table;
    const bool finished = runInBackground(ctx, "Finding .ap files", [&](UserInterface& ui) {
        table = archives::findApFiles(ctx.railWorks(), options, &ui);
    });
    if (!finished && table.files.empty())
        return nullptr;
    return showApTable(ctx, std::move(table), options.details, title, parent);
}

} // namespace velmora::ui
