#include "frmcheckqd.h"

#include "../common/backgroundjob.h"
#include "../common/desktopui.h"
#include "../common/frmreport.h"
#include "../common/palettecolours.h"
#include "../common/windowplace.h"
#include "frmedqd.h"

#include "velmora/assets/assetgrid.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace velmora::ui {

namespace {

const char* const kFragmentsListed = "You have listed Fragments not Consists\nThis option is for full Consists only.";
const char* const kListAllQuestion = "List all the QD consists below Assets?\nThis reads every PreLoad document.";
const char* const kNoConsistSelected = "You have not selected a consist";

} // namespace

frmCheckQD::frmCheckQD(AppContext& ctx, QWidget* parent) : QDialog(parent), m_ctx(ctx) {
    setObjectName("frmCheckQD");
    setWindowTitle(tr("Check QD consists and fragments"));
    rememberPlace(ctx, this, objectName(), {1100, 650});

    m_grid = new QTableWidget(0, static_cast<int>(consists::qdGridHeader().size()));
    m_grid->setObjectName("Grid2");
    QStringList header;
    for (const auto& h : consists::qdGridHeader())
        header << toQt(h);
    m_grid->setHorizontalHeaderLabels(header);
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setSelectionMode(QAbstractItemView::SingleSelection);
    m_grid->setSortingEnabled(true);
    m_grid->horizontalHeader()->setStretchLastSection(true);

    m_search = new QLineEdit;
    m_search->setObjectName("txtSearch");
    m_search->setPlaceholderText(tr("Show only rows holding this text"));
    m_search->setClearButtonEnabled(true);
    connect(m_search, &QLineEdit::textChanged, this, &frmCheckQD::applySearch);
    m_summary = new QLabel;
    m_summary->setObjectName("lblSummary");

    auto button = [this](const char* name, const QString& caption, void (frmCheckQD::*slot)()) {
        auto* b = new QPushButton(caption);
        b->setObjectName(name);
        connect(b, &QPushButton::clicked, this, slot);
        return b;
    };
    auto* commands = new QHBoxLayout;
    commands->addWidget(button("Command1", tr("Check all QD Consists"), &frmCheckQD::Command1_Click));
    commands->addWidget(button("Command2", tr("Check all QD Fragments"), &frmCheckQD::Command2_Click));
    commands->addWidget(button("Command7", tr("List All QD Consists"), &frmCheckQD::Command7_Click));
    commands->addWidget(button("Command6", tr("Edit selected QD consist"), &frmCheckQD::Command6_Click));
    commands->addWidget(button("Command4", tr("Clear Grid"), &frmCheckQD::Command4_Click));
    commands->addWidget(button("Command5", tr("Save Grid"), &frmCheckQD::Command5_Click));
    commands->addWidget(button("Command8", tr("Save Spreadsheet"), &frmCheckQD::Command8_Click));
    auto* exit = new QPushButton(tr("Exit"));
    exit->setObjectName("Command3");
    connect(exit, &QPushButton::clicked, this, &QDialog::close);
    commands->addWidget(exit);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(commands);
    layout->addWidget(m_search);
    layout->addWidget(m_grid, 1);
    layout->addWidget(m_summary);
}

bool frmCheckQD::walk(consists::QdView view) {
    const fs::path assets = m_ctx.resolver.resolveForWrite(m_ctx.railWorks(), "Assets");
    consists::QdListing listing;
    const bool finished = runInBackground(m_ctx, "Looking for Quick Drive documents", [&](UserInterface& ui) {
        listing = consists::checkQuickDrive(m_ctx, assets, 0, &ui);
    });
    if (!finished || listing.stopped)
        return false;
    m_listing = std::move(listing);
    m_view = view;
    m_listed = true;
    fillGrid();
    return true;
}

void frmCheckQD::fillGrid() {
    const auto rows = consists::qdGridRows(m_listing, m_view);
    m_grid->setSortingEnabled(false);
    m_grid->setRowCount(0);
    m_grid->setRowCount(static_cast<int>(rows.size()));
    const QColor tint = readableOn(QColor(0xC0, 0x10, 0x10), m_grid->palette());
    for (int r = 0; r < static_cast<int>(rows.size()); ++r) {
        const auto& cells = rows[static_cast<std::size_t>(r)];
        const bool missing = !cells[consists::kQdStatusColumn].empty();
        for (int c = 0; c < static_cast<int>(cells.size()); ++c) {
            auto* item = new QTableWidgetItem(toQt(cells[static_cast<std::size_t>(c)]));
            if (missing)
                item->setForeground(tint);
            m_grid->setItem(r, c, item);
        }
    }
    m_grid->setSortingEnabled(true);
    m_grid->resizeColumnsToContents();
    applySearch();
    m_summary->setText(tr("%1 documents read, %2 listed, %3 entries missing, %4 could not be read")
                           .arg(m_listing.tested)
                           .arg(m_listing.documents.size())
                           .arg(m_listing.missingCount())
                           .arg(m_listing.unreadable.size()));
}

void frmCheckQD::applySearch() {
    const QString text = m_search->text();
    for (int r = 0; r < m_grid->rowCount(); ++r) {
        bool shown = text.isEmpty();
        for (int c = 0; c < m_grid->columnCount() && !shown; ++c)
            if (const auto* item = m_grid->item(r, c))
                shown = item->text().contains(text, Qt::CaseInsensitive);
        m_grid->setRowHidden(r, !shown);
    }
}

void frmCheckQD::Command1_Click() {
    if (!walk(consists::QdView::Consists))
        return;
    std::string report = consists::qdMissingReport(m_listing);
    for (const auto& u : m_listing.unreadable)
        report += (report.empty() ? "" : "\n") + u + " is invalid and contains errors";
    if (!report.empty())
        frmReport::show(m_ctx, tr("Check QD consists and fragments"), report, this);
}

void frmCheckQD::Command2_Click() {
    if (!walk(consists::QdView::Fragments))
        return;
    if (const std::string report = consists::qdMissingReport(m_listing); !report.empty())
        frmReport::show(m_ctx, tr("Check QD consists and fragments"), report, this);
}

void frmCheckQD::Command7_Click() {
    if (m_ctx.ui().ask(kListAllQuestion, Buttons::YesNo) != Answer::Yes)
        return;
    walk(consists::QdView::AllConsists);
}

void frmCheckQD::Command6_Click() {
    if (m_listed && m_view == consists::QdView::Fragments) {
        m_ctx.ui().message(kFragmentsListed);
        return;
    }
    const auto selected = m_grid->selectedItems();
    if (selected.isEmpty()) {
        m_ctx.ui().message(kNoConsistSelected);
        return;
    }
    const int row = selected.front()->row();
    const std::string path = fromQt(m_grid->item(row, consists::kQdDocumentColumn)->text());
    for (const auto& d : m_listing.documents)
        if (d.path == path && d.kind == consists::QdKind::Consist) {
            auto* editor = new frmEdQD(m_ctx, d.file, this);
            editor->setAttribute(Qt::WA_DeleteOnClose);
            editor->show();
            return;
        }
}

void frmCheckQD::Command4_Click() {
    m_grid->setRowCount(0);
    m_listing = {};
    m_listed = false;
    m_summary->clear();
}

void frmCheckQD::Command5_Click() { saveGrid(false); }
void frmCheckQD::Command8_Click() { saveGrid(true); }

void frmCheckQD::saveGrid(bool spreadsheet) {
    MakePath(m_ctx.reports());
    const std::string filter = spreadsheet ? "Excel file (*.xls)|*.xls"
                                           : "Comma Separated (*.csv)|*.csv|Tabbed text file (*.txt)|*.txt";
    const auto chosen = m_ctx.ui().chooseFile({"Save Grid as File", m_ctx.reports(), filter, true});
    if (!chosen)
        return;
    fs::path file = *chosen;
    if (assets::listFormOf(file) == assets::ListForm::Unknown)
        file += spreadsheet ? ".xls" : ".csv";
    // The rows as shown: in the grid's order, without those the search hides.
    std::vector<std::vector<std::string>> rows{consists::qdGridHeader()};
    for (int r = 0; r < m_grid->rowCount(); ++r) {
        if (m_grid->isRowHidden(r))
            continue;
        std::vector<std::string> cells;
        for (int c = 0; c < m_grid->columnCount(); ++c)
            cells.push_back(m_grid->item(r, c) ? fromQt(m_grid->item(r, c)->text()) : std::string());
        rows.push_back(std::move(cells));
    }
    JournalCommand command(&m_ctx.journal(), "Save Grid as File " + file.filename().string());
    std::string error;
    if (!assets::saveList(m_ctx.files(), file, rows, "QD consists", &error))
        m_ctx.ui().message(error, Icon::Warning);
}

} // namespace velmora::ui
