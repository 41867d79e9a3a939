#include "frmlistrs.h"

#include "velmora/core/textboundary.h"

#include "../common/desktopui.h"
#include "../common/windowplace.h"
#include "../common/palettecolours.h"
#include "velmora/core/services.h"

#include <algorithm>

#include <QHBoxLayout>
#include <QItemSelectionModel>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace velmora::ui {

namespace {
std::vector<std::string> cellsOf(const std::string& row) {
    std::vector<std::string> cells;
    std::size_t start = 0;
    for (;;) {
        const auto tab = row.find('\t', start);
        cells.push_back(row.substr(start, tab == std::string::npos ? std::string::npos : tab - start));
        if (tab == std::string::npos)
            return cells;
        start = tab + 1;
    }
}

// Column headers named for what each kind of report holds.
QStringList headersFor(ReportKind kind, int columns) {
    QStringList names;
    switch (kind) {
    case ReportKind::MissingItems: names = {"Missing item", "Placed as"}; break;
    case ReportKind::ItemsWithLocations:
    case ReportKind::ScenarioScenery: names = {"Item", "Kind", "Tile", "X", "Z"}; break;
    case ReportKind::Used:
    case ReportKind::GeoFiles: names = {"File"}; break;
    case ReportKind::MissingTextures: names = {"Texture"}; break;
    case ReportKind::ScenarioStock:
    case ReportKind::AllStock: names = {"Blueprint", "Name"}; break;
    case ReportKind::StockWithNumbers: names = {"Number"}; break;
    case ReportKind::ProviderItems: names = {"Blueprint"}; break;
    case ReportKind::ApFiles: names = {"File", "Date", "Size", "Folder size"}; break;
    case ReportKind::ApFilesNoDetail: names = {"File"}; break;
    }
    while (names.size() < columns)
        names << QString("Column %1").arg(names.size() + 1);
    return names.mid(0, columns);
}
} // namespace

frmListRS::frmListRS(AppContext& ctx, ReportKind kind, const QString& title, const std::vector<std::string>& rows,
                     const std::string& routeName, const std::string& suffix, QWidget* parent)
    : QDialog(parent), m_ctx(ctx), m_kind(kind), m_proposed(fileNameFromText(routeName) + suffix) {
    setObjectName("frmListRS");
    setWindowTitle(title);
    m_grid = new QTableWidget;
    m_grid->setObjectName("VSFG1");
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_grid->horizontalHeader()->setStretchLastSection(true);
    // Long paths show their end, where the file's own name is.
    m_grid->setTextElideMode(Qt::ElideLeft);
    m_grid->verticalHeader()->setVisible(false);
    m_filter = new QLineEdit;
    m_filter->setObjectName("txtFilter");
    m_filter->setPlaceholderText(tr("Filter the rows"));
    m_filter->setClearButtonEnabled(true);
    connect(m_filter, &QLineEdit::textChanged, this, &frmListRS::applyFilter);
    m_counts = new QLabel;
    m_counts->setObjectName("lblCounts");
    auto* heading = new QLabel(title);
    heading->setObjectName("Label1");
    auto* note = new QLabel;
    note->setObjectName("Label5");
    if (kind == ReportKind::MissingItems)
        note->setText(caption(m_ctx, 576, "Note: Items might list as missing because they are in unpacked .ap files"));
    auto button = [this](const char* name, const QString& text) {
        auto* b = new QPushButton(text);
        b->setObjectName(name);
        return b;
    };
    QPushButton* dupes = button("Command1", caption(m_ctx, 123, "Remove dupes from list"));
    QPushButton* save = button("Command6", caption(m_ctx, 201, "Save Report"));
    QPushButton* batch = button("Command7", caption(m_ctx, 569, "Save Grid as Batch File"));
    QPushButton* close = button("Command2", caption(m_ctx, 9, "Exit"));
    m_unused = button("Command23", caption(m_ctx, 352, "Display items NOT used"));
    m_unused->setVisible(false);
    connect(m_unused, &QPushButton::clicked, this, [this] { Command23_Click(); });
    connect(dupes, &QPushButton::clicked, this, &frmListRS::Command1_Click);
    connect(save, &QPushButton::clicked, this, &frmListRS::Command6_Click);
    connect(batch, &QPushButton::clicked, this, &frmListRS::Command7_Click);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    // What each kind of report offers.
    const bool offersDupes = kind == ReportKind::MissingItems || kind == ReportKind::Used || kind == ReportKind::ScenarioStock ||
                             kind == ReportKind::GeoFiles || kind == ReportKind::AllStock || kind == ReportKind::ProviderItems;
    dupes->setEnabled(offersDupes);
    batch->setVisible(kind == ReportKind::ProviderItems);
    auto* buttons = new QHBoxLayout;
    for (QPushButton* b : {dupes, save, batch, m_unused})
        buttons->addWidget(b);
    buttons->addStretch(1);
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(heading);
    auto* filterRow = new QHBoxLayout;
    filterRow->addWidget(m_filter, 1);
    filterRow->addWidget(m_counts);
    layout->addLayout(filterRow);
    layout->addWidget(m_grid, 1);
    layout->addWidget(note);
    m_panels = new QVBoxLayout;
    layout->addLayout(m_panels);
    layout->addLayout(buttons);
    setRows(rows);
    // Where the last grid report was, as the settings keep it (fields 28 to 31).
    rememberPlace(m_ctx, this, objectName(), {900, 600}, &m_ctx.settings.reportGrid);
}

void frmListRS::setRows(const std::vector<std::string>& rows, const std::vector<bool>& missing,
                        const std::vector<std::string>& statusTexts) {
    std::size_t columns = 1;
    std::vector<std::vector<std::string>> table;
    for (const auto& r : rows) {
        table.push_back(cellsOf(r));
        columns = std::max(columns, table.back().size());
    }
    m_marked = !missing.empty();
    const int first = dataColumn();
    // Rows go in as they come; a click on a header sorts them afterwards.
    m_grid->setSortingEnabled(false);
    m_grid->clear();
    m_grid->setColumnCount(static_cast<int>(columns) + first);
    QStringList headers = headersFor(m_kind, static_cast<int>(columns));
    if (m_marked)
        headers.prepend(tr("Status"));
    m_grid->setHorizontalHeaderLabels(headers);
    m_grid->setRowCount(static_cast<int>(table.size()));
    const QColor tint = missingTint(m_grid->palette());
    for (int r = 0; r < static_cast<int>(table.size()); ++r) {
        const auto& cells = table[static_cast<std::size_t>(r)];
        for (int c = 0; c < static_cast<int>(cells.size()); ++c)
            m_grid->setItem(r, c + first, new QTableWidgetItem(toQt(cells[static_cast<std::size_t>(c)])));
        if (!m_marked)
            continue;
        const bool isMissing = static_cast<std::size_t>(r) < missing.size() && missing[static_cast<std::size_t>(r)];
        const auto index = static_cast<std::size_t>(r);
        auto* status = new QTableWidgetItem(index < statusTexts.size() ? toQt(statusTexts[index])
                                            : isMissing                ? tr("missing")
                                                                       : QString());
        status->setData(Qt::UserRole, isMissing);
        m_grid->setItem(r, 0, status);
        if (isMissing && apMode()) {
            // An .ap that is not unpacked is drawn red, as the legend says.
            QFont bold = status->font();
            bold.setBold(true);
            status->setFont(bold);
            for (int c = 0; c < m_grid->columnCount(); ++c)
                if (auto* item = m_grid->item(r, c))
                    item->setForeground(readableOn(Qt::red, m_grid->palette()));
        } else if (isMissing) {
            QFont bold = status->font();
            bold.setBold(true);
            status->setFont(bold);
            for (int c = 0; c < m_grid->columnCount(); ++c)
                if (auto* item = m_grid->item(r, c))
                    item->setBackground(tint);
        }
    }
    // Stock with numbers: a number that occurs twice is drawn in red.
    if (m_kind == ReportKind::StockWithNumbers) {
        std::map<std::string, int> seen;
        for (const auto& row : table)
            ++seen[row.front()];
        for (int r = 0; r < m_grid->rowCount(); ++r)
            if (seen[table[static_cast<std::size_t>(r)].front()] > 1)
                for (int c = 0; c < m_grid->columnCount(); ++c)
                    if (auto* item = m_grid->item(r, c))
                        item->setForeground(readableOn(Qt::red, m_grid->palette()));
    }
    m_grid->resizeColumnsToContents();
    for (int c = 0; c + 1 < m_grid->columnCount(); ++c)
        m_grid->setColumnWidth(c, std::min(m_grid->columnWidth(c), 600));
    m_grid->horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
    m_grid->setSortingEnabled(true);
    applyFilter(m_filter->text());
}

void frmListRS::applyFilter(const QString& text) {
    int shown = 0;
    for (int r = 0; r < m_grid->rowCount(); ++r) {
        bool match = text.isEmpty();
        for (int c = 0; !match && c < m_grid->columnCount(); ++c)
            if (auto* item = m_grid->item(r, c))
                match = item->text().contains(text, Qt::CaseInsensitive);
        m_grid->setRowHidden(r, !match);
        shown += match;
    }
    QString counts = shown == m_grid->rowCount() ? tr("%n row(s)", nullptr, shown)
                                                 : tr("%1 of %n row(s)", nullptr, m_grid->rowCount()).arg(shown);
    if (m_kind == ReportKind::MissingItems)
        counts += tr(", %n missing", nullptr, m_grid->rowCount());
    else if (m_marked) {
        int missing = 0;
        for (int r = 0; r < m_grid->rowCount(); ++r)
            missing += rowMissing(r);
        if (apMode())
            counts += tr(", %n in red", nullptr, missing);
        else
            counts += missing ? tr(", %n missing", nullptr, missing) : tr(", none missing");
    }
    m_counts->setText(counts);
}

QString frmListRS::counts() const { return m_counts->text(); }

bool frmListRS::rowMissing(int row) const {
    const QTableWidgetItem* status = m_marked ? m_grid->item(row, 0) : nullptr;
    return status && status->data(Qt::UserRole).toBool();
}

std::vector<bool> frmListRS::missingFlags() const {
    std::vector<bool> flags;
    if (m_marked)
        for (int r = 0; r < m_grid->rowCount(); ++r)
            flags.push_back(rowMissing(r));
    return flags;
}

void frmListRS::markMissing(const std::vector<bool>& missing) { setRows(rows(), missing); }

void frmListRS::setStatusRows(const std::vector<std::string>& rows, const std::vector<std::string>& status,
                              const std::vector<bool>& flagged) {
    std::vector<bool> flags = flagged;
    flags.resize(std::max({flags.size(), status.size(), std::size_t{1}}), false);
    setRows(rows, flags, status);
}

QString frmListRS::statusText(int row) const {
    const QTableWidgetItem* status = m_marked ? m_grid->item(row, 0) : nullptr;
    return status ? status->text() : QString();
}

std::vector<std::string> frmListRS::selectedFirstCells() const {
    std::vector<int> selected;
    for (const QModelIndex& index : m_grid->selectionModel()->selectedRows())
        selected.push_back(index.row());
    std::sort(selected.begin(), selected.end());
    std::vector<std::string> cells;
    for (int r : selected) {
        const QTableWidgetItem* item = m_grid->item(r, dataColumn());
        cells.push_back(item ? fromQt(item->text().trimmed()) : std::string());
    }
    return cells;
}

void frmListRS::addPanel(QWidget* panel) { m_panels->addWidget(panel); }

std::vector<std::string> frmListRS::rows() const {
    std::vector<std::string> out;
    for (int r = 0; r < m_grid->rowCount(); ++r) {
        std::string row;
        for (int c = dataColumn(); c < m_grid->columnCount(); ++c) {
            if (c > dataColumn())
                row += '\t';
            if (auto* item = m_grid->item(r, c))
                row += fromQt(item->text());
        }
        while (!row.empty() && row.back() == '\t')
            row.pop_back();
        out.push_back(row);
    }
    return out;
}

void frmListRS::Command1_Click() {
    auto all = rows();
    // A row's mark goes with its text through the sort.
    const std::vector<bool> flags = missingFlags();
    std::map<std::string, bool> missingOf;
    for (std::size_t i = 0; i < flags.size(); ++i)
        missingOf[all[i]] = flags[i];
    SortStrings(all, 0, static_cast<std::ptrdiff_t>(all.size()) - 1);
    std::vector<std::string> unique;
    std::vector<bool> uniqueFlags;
    for (const auto& r : all)
        if (unique.empty() || unique.back() != r) {
            unique.push_back(r);
            if (m_marked)
                uniqueFlags.push_back(missingOf[r]);
        }
    setRows(unique, uniqueFlags);
    m_dupesRemoved = true;
}

bool frmListRS::saveTo(const std::filesystem::path& file) {
    const std::string name = file.filename().string();
    const std::string last = name.size() >= 3 ? toLowerAscii(name.substr(name.size() - 3)) : std::string();
    std::string text;
    const auto all = rows();
    if (last == "csv" || last == "txt" || last == "tab") {
        for (const std::string& row : all) {
            if (last == "csv") {
                const auto cells = cellsOf(row);
                for (std::size_t i = 0; i < cells.size(); ++i)
                    text += (i ? "," : "") + csvCell(cells[i]);
            } else {
                text += row;
            }
            text += "\r\n";
        }
    } else if (last == "xls") {
        text = "<?xml version=\"1.0\"?>\r\n<?mso-application progid=\"Excel.Sheet\"?>\r\n"
               "<Workbook xmlns=\"urn:schemas-microsoft-com:office:spreadsheet\" "
               "xmlns:ss=\"urn:schemas-microsoft-com:office:spreadsheet\"><Worksheet ss:Name=\"Report\"><Table>\r\n";
        for (const auto& row : all) {
            text += "<Row>";
            for (const auto& cell : cellsOf(row)) {
                QString escaped = toQt(cell).toHtmlEscaped();
                text += "<Cell><Data ss:Type=\"String\">" + escaped.toStdString() + "</Data></Cell>";
            }
            text += "</Row>\r\n";
        }
        text += "</Table></Worksheet></Workbook>\r\n";
    } else {
        return false;
    }
    return writeReport(file, text);
}

bool frmListRS::writeReport(const std::filesystem::path& file, const std::string& text) {
    // An older file of that name is kept as a numbered backup.
    JournalCommand command(&m_ctx.journal(), "Save Grid " + file.string());
    const WriteResult written = m_ctx.files().write(file, text);
    if (!written)
        m_ctx.ui().message(written.message, Icon::Warning);
    return written.ok;
}

void frmListRS::Command6_Click() {
    MakePath(m_ctx.reports());
    FileRequest request{"Save Grid as File", m_ctx.reports() / m_proposed,
                        "Comma Separated (*.csv)|*.csv|Excel file (*.xls)|*.xls|Tabbed text file (*.txt)|*.txt", true};
    if (auto chosen = m_ctx.ui().chooseFile(request); chosen && !chosen->empty())
        saveTo(*chosen);
}

bool frmListRS::saveBatch(const std::filesystem::path& file) {
    std::string text;
    for (std::string row : rows()) {
        while (!row.empty() && (row.back() == ' ' || row.back() == '\t'))
            row.pop_back();
        text += row + "\r\n";
    }
    return writeReport(file, text);
}

void frmListRS::Command7_Click() {
    FileRequest request{"Save Grid as Batch File", m_ctx.reports(), "Batch file (*.bat)|*.bat", true};
    if (auto chosen = m_ctx.ui().chooseFile(request); chosen && !chosen->empty())
        saveBatch(*chosen);
}

void frmListRS::offerUnused(const routes::ProductItemsResult& used) {
    m_used = used;
    m_unused->setVisible(true);
}

frmListRS* frmListRS::Command23_Click() {
    // What a tile that could not be read places would be offered as unused.
    if (!m_used.unreadable.empty()) {
        m_ctx.ui().message("Not every tile of this route could be read, so what it uses is not known:\n" +
                               m_used.unreadable.front(),
                           Icon::Warning);
        return nullptr;
    }
    const Answer del = m_ctx.ui().ask("Do you wish to add 'DEL ' to each item so that the\n"
                                      "list can be saved as a batch file to enable you to\n"
                                      "delete unused items (Can be very dangerous in \n"
                                      "inexperienced hands.....)",
                                      Buttons::YesNo, Icon::Warning);
    const auto rows = routes::productItemsNotUsed(m_ctx, m_used, del == Answer::Yes);
    auto* list = new frmListRS(m_ctx, ReportKind::ProviderItems,
                               tr("Items of %1\\%2 NOT placed on this route's tiles (scenario stock is not looked at):-").arg(toQt(m_used.provider), toQt(m_used.product)),
                               rows, m_used.provider + "_" + m_used.product, "_NotUsed.csv", this);
    list->setAttribute(Qt::WA_DeleteOnClose);
    list->show();
    return list;
}

} // namespace velmora::ui
