#include "listscreen.h"

#include "../common/desktopui.h"
#include "assetgridview.h"
#include "velmora/assets/assetgrid.h"
#include "velmora/core/services.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QTableWidget>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextTable>

namespace velmora::ui {

namespace {

constexpr const char* kListFilter =
    "Comma Separated (*.csv)|*.csv|Excel file (*.xls)|*.xls|Tabbed text file (*.txt)|*.txt";

struct SharedCommand {
    const char* name;
    int entry; // of the language table
    const char* caption;
    void (ListScreen::*run)();
};

// Command1 and Command10 are each screen's own; they are reached through their virtual calls.
const SharedCommand kShared[] = {
    {"Command1", 87, "Add to List", &ListScreen::Command1_Click},
    {"Command5", 292, "Clear List", &ListScreen::Command5_Click},
    {"Command3", 91, "Save List", &ListScreen::Command3_Click},
    {"Command11", 92, "Load List", &ListScreen::Command11_Click},
    {"Command18", 301, "Restore", &ListScreen::Command18_Click},
    {"Command2", 89, "Print List", &ListScreen::Command2_Click},
    {"Command14", 373, "Find", &ListScreen::Command14_Click},
    {"Command8", 380, "Show All", &ListScreen::Command8_Click},
    {"Command15", 375, "Select All", &ListScreen::Command15_Click},
    {"Command16", 376, "Unselect All", &ListScreen::Command16_Click},
    {"Command10", 381, "Find Zero Length Files", &ListScreen::Command10_Click},
    {"Command6", 293, "Delete Selected", &ListScreen::Command6_Click},
};

} // namespace

ListScreen::ListScreen(AppContext& ctx, std::vector<std::string> columns, std::string sheet, QWidget* parent)
    : QMainWindow(parent), m_ctx(ctx), m_columns(std::move(columns)), m_sheet(std::move(sheet)) {
    // A fresh scratch folder for this screen's conversions.
    m_ctx.clearTempFiles();
    m_grid = makeListGrid(m_columns);
    m_start = new QLineEdit;
    m_start->setObjectName("Text2");
    m_browse = new QPushButton(tr("..."));
    m_browse->setObjectName("cmdBrowse");
    connect(m_browse, &QPushButton::clicked, this, [this] {
        const QString dir = QFileDialog::getExistingDirectory(this, tr("Start folder"), m_start->text());
        if (!dir.isEmpty())
            m_start->setText(dir);
    });
    m_mask = new QComboBox;
    m_mask->setObjectName("Text1");
    m_mask->setEditable(true);
    m_find = new QLineEdit;
    m_find->setObjectName("Text6");
    m_findColumn = new QComboBox;
    m_findColumn->setObjectName("Combo1");
    for (const auto& c : m_columns)
        m_findColumn->addItem(toQt(c));
    m_findColumn->setCurrentIndex(3);
    m_total = new QLabel;
    m_total->setObjectName("Label5");
    m_selected = new QLabel;
    m_selected->setObjectName("Label11");
    connect(m_grid, &QTableWidget::itemSelectionChanged, this, &ListScreen::updateCounts);
    updateCounts();
}

QPushButton* ListScreen::listCommand(const char* name) {
    for (const SharedCommand& c : kShared) {
        if (QString(c.name) != name)
            continue;
        auto* button = new QPushButton(caption(m_ctx, c.entry, c.caption));
        button->setObjectName(c.name);
        connect(button, &QPushButton::clicked, this, [this, run = c.run] { (this->*run)(); });
        if (QString(c.name) == "Command14")
            button->setShortcut(Qt::Key_F3); // F3 repeats the find
        return button;
    }
    return nullptr;
}

QHBoxLayout* ListScreen::countsRow() {
    auto* counts = new QHBoxLayout;
    counts->addWidget(m_total);
    counts->addWidget(m_selected);
    counts->addStretch(1);
    return counts;
}

QGroupBox* ListScreen::hideColumnsBox() {
    auto* hide = new QGroupBox(caption(m_ctx, 382, "Hide Columns"));
    auto* layout = new QHBoxLayout(hide);
    for (int c = 0; c < static_cast<int>(m_columns.size()); ++c) {
        auto* box = new QCheckBox(toQt(m_columns[static_cast<std::size_t>(c)]));
        box->setObjectName(QString("Check2_%1").arg(c));
        connect(box, &QCheckBox::toggled, this, [this, c](bool on) { m_grid->setColumnHidden(c, on); });
        layout->addWidget(box);
    }
    return hide;
}

assets::CellRows ListScreen::gridCells() const {
    assets::CellRows out;
    out.reserve(static_cast<std::size_t>(m_grid->rowCount()));
    for (int r = 0; r < m_grid->rowCount(); ++r)
        out.push_back(listRowCells(m_grid, r));
    return out;
}

assets::CellRows ListScreen::selectedCells() const {
    assets::CellRows out;
    for (const QModelIndex& index : m_grid->selectionModel()->selectedRows())
        out.push_back(listRowCells(m_grid, index.row()));
    return out;
}

void ListScreen::updateCounts() {
    m_total->setText(caption(m_ctx, 88, "Total rows:") + QString(" %1").arg(m_grid->rowCount()));
    m_selected->setText(caption(m_ctx, 86, "Selected rows:") +
                        QString(" %1").arg(m_grid->selectionModel()->selectedRows().size()));
}

void ListScreen::appendGridRows(const assets::CellRows& rows) {
    appendListRows(m_grid, rows);
    updateCounts();
}

void ListScreen::setGridRows(const assets::CellRows& rows) {
    m_grid->setRowCount(0);
    appendGridRows(rows);
}

void ListScreen::announceBuild() {
    if (m_deleting) {
        m_ctx.ui().message(fromQt(caption(m_ctx, 429, "Selected items have been removed from the grid.")));
        m_deleting = false;
    } else {
        m_ctx.ui().message(fromQt(caption(m_ctx, 90, "Selected items have been added to the grid.")));
    }
}

void ListScreen::Command5_Click() {
    m_grid->setRowCount(0);
    m_findStart = 0;
    updateCounts();
}

void ListScreen::Command3_Click() {
    MakePath(m_ctx.reports());
    FileRequest request{"Save Grid as File", m_ctx.reports(), kListFilter, true};
    auto chosen = m_ctx.ui().chooseFile(request);
    if (!chosen || chosen->empty() || assets::listFormOf(*chosen) == assets::ListForm::Unknown)
        return;
    assets::CellRows table{m_columns};
    for (auto& cells : gridCells())
        table.push_back(std::move(cells));
    std::string error;
    JournalCommand command(&m_ctx.journal(), "Save Grid as File " + chosen->string());
    if (!assets::saveList(m_ctx.files(), *chosen, table, m_sheet, &error))
        m_ctx.ui().message(error, Icon::Warning);
}

bool ListScreen::loadList(const std::filesystem::path& file) {
    const auto form = assets::listFormOf(file);
    if (form == assets::ListForm::Unknown)
        return false;
    std::vector<assets::ListLine> lines;
    std::string error;
    if (!assets::loadListLines(file, form, lines, &error)) {
        m_ctx.ui().message(error, Icon::Warning);
        return false;
    }
    // The header line, when the list is of this screen's columns.
    if (!lines.empty() && !lines.front().cells.empty() && lines.front().cells[0] == m_columns[0])
        lines.erase(lines.begin());
    assets::CellRows rows;
    rows.reserve(lines.size());
    for (auto& line : lines) {
        line.cells.resize(m_columns.size());
        rows.push_back(std::move(line.cells));
    }
    setGridRows(rows);
    m_lastList = file;
    listLoaded();
    return true;
}

void ListScreen::Command11_Click() {
    MakePath(m_ctx.reports());
    FileRequest request{"Load Grid from File", m_ctx.reports(), kListFilter, false};
    auto chosen = m_ctx.ui().chooseFile(request);
    if (chosen && !chosen->empty())
        loadList(*chosen);
}

void ListScreen::Command18_Click() {
    if (!m_lastList.empty())
        loadList(m_lastList);
}

void ListScreen::printGrid(QPrinter& printer) {
    QTextDocument page;
    QTextCursor c(&page);
    const int columns = m_grid->columnCount();
    QTextTable* table = c.insertTable(m_grid->rowCount() + 1, columns);
    for (int col = 0; col < columns; ++col)
        table->cellAt(0, col).firstCursorPosition().insertText(m_grid->horizontalHeaderItem(col)->text());
    for (int r = 0; r < m_grid->rowCount(); ++r)
        for (int col = 0; col < columns; ++col)
            if (auto* item = m_grid->item(r, col))
                table->cellAt(r + 1, col).firstCursorPosition().insertText(item->text());
    page.print(&printer);
}

void ListScreen::Command2_Click() {
    if (m_grid->rowCount() < 1) {
        m_ctx.ui().message("You do not appear to have added any items to the list below?\n"
                           "Click the 'Add to List' button to enable your stock selection.");
        return;
    }
    QPrinter printer;
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() == QDialog::Accepted)
        printGrid(printer);
}

void ListScreen::Command14_Click() {
    std::string error;
    const auto hit = assets::findCellRow(gridCells(), m_findColumn->currentIndex(), fromQt(m_find->text()),
                                         static_cast<std::size_t>(m_findStart), &error);
    if (!error.empty()) {
        m_ctx.ui().message(error, Icon::Warning);
        return;
    }
    if (!hit) {
        m_findStart = 0;
        return;
    }
    m_grid->selectRow(static_cast<int>(*hit));
    m_grid->scrollToItem(m_grid->item(static_cast<int>(*hit), 0));
    m_findStart = static_cast<int>(*hit) + 1;
}

void ListScreen::Command8_Click() {
    if (m_grid->rowCount() == 0)
        return;
    // "Show All" keeps only the rows that Find would stop at.
    const auto all = gridCells();
    assets::CellRows kept;
    for (std::size_t i : assets::matchingCellRows(all, m_findColumn->currentIndex(), fromQt(m_find->text())))
        kept.push_back(all[i]);
    setGridRows(kept);
    m_grid->selectAll();
    m_findStart = 0;
    updateCounts();
}

void ListScreen::Command15_Click() {
    m_grid->selectAll();
    updateCounts();
}

void ListScreen::Command16_Click() {
    m_grid->clearSelection();
    updateCounts();
}

void ListScreen::Command6_Click() {
    const auto selected = selectedCells();
    if (selected.empty()) {
        m_ctx.ui().message("No rows are selected, so nothing was deleted.");
        return;
    }
    if (m_ctx.ui().ask(assets::deleteWarning(), Buttons::OkCancel, Icon::Warning) != Answer::Ok)
        return;
    m_deleting = true;
    // Each file keeps a numbered backup name and the whole command is one journal entry, so
    // one undo puts every file back.
    const auto result = assets::deleteFiles(m_ctx, filesOf(selected));
    for (const auto& e : result.errors)
        m_ctx.ui().message(e, Icon::Warning);
    Command5_Click();
    if (m_zeroLength) {
        m_zeroLength = false;
        m_deleting = false;
        return;
    }
    Command1_Click();
}

} // namespace velmora::ui
