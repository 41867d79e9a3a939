#include "assetgridview.h"

#include "../common/desktopui.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"

#include <QFileDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>

namespace velmora::ui {

QTableWidget* makeListGrid(const std::vector<std::string>& columns) {
    auto* grid = new QTableWidget(0, static_cast<int>(columns.size()));
    grid->setObjectName("VSFG1");
    QStringList headers;
    for (const auto& c : columns)
        headers << toQt(c);
    grid->setHorizontalHeaderLabels(headers);
    grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    grid->setSelectionMode(QAbstractItemView::ExtendedSelection);
    grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid->horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
    grid->setSortingEnabled(true);
    grid->horizontalHeader()->setSortIndicatorShown(true);
    grid->horizontalHeader()->setStretchLastSection(true);
    grid->setWordWrap(false);
    grid->verticalHeader()->setDefaultSectionSize(grid->fontMetrics().height() + 6);
    return grid;
}

void appendListRows(QTableWidget* grid, const std::vector<std::vector<std::string>>& rows) {
    // Sorting is off while rows go in, or each one would be sorted into place on its own.
    grid->setSortingEnabled(false);
    int r = grid->rowCount();
    const int columns = grid->columnCount();
    grid->setRowCount(r + static_cast<int>(rows.size()));
    for (const auto& cells : rows) {
        for (int c = 0; c < columns && c < static_cast<int>(cells.size()); ++c) {
            const std::string& cell = cells[static_cast<std::size_t>(c)];
            auto* item = new QTableWidgetItem(toQt(utf8FromDocument(cell)));
            item->setData(Qt::UserRole, QByteArray::fromStdString(cell));
            grid->setItem(r, c, item);
        }
        ++r;
    }
    grid->setSortingEnabled(true);
    // Fitting the columns reads every cell: worth it for lists a person reads, not for a whole index.
    if (grid->rowCount() <= 5000)
        grid->resizeColumnsToContents();
}

std::vector<std::string> listRowCells(const QTableWidget* grid, int row) {
    std::vector<std::string> cells(static_cast<std::size_t>(grid->columnCount()));
    for (int c = 0; c < grid->columnCount(); ++c) {
        const QTableWidgetItem* item = grid->item(row, c);
        if (!item)
            continue;
        const QVariant bytes = item->data(Qt::UserRole);
        cells[static_cast<std::size_t>(c)] =
            bytes.isValid() ? bytes.toByteArray().toStdString() : fromQt(item->text());
    }
    return cells;
}

QTableWidget* makeAssetGrid() { return makeListGrid(assets::assetColumns()); }

void appendAssetRows(QTableWidget* grid, const std::vector<assets::AssetRow>& rows) {
    appendListRows(grid, assets::cellsOf(rows));
}

QTableWidget* makeListGrid(const char* name, const QStringList& headers) {
    std::vector<std::string> columns;
    for (const auto& h : headers)
        columns.push_back(fromQt(h));
    QTableWidget* grid = makeListGrid(columns);
    grid->setObjectName(name);
    return grid;
}

QPushButton* folderBrowseButton(QWidget* owner, QLineEdit* folderBox) {
    auto* browse = new QPushButton(QStringLiteral("..."));
    browse->setObjectName("cmdBrowse");
    QObject::connect(browse, &QPushButton::clicked, owner, [owner, folderBox] {
        const QString dir = QFileDialog::getExistingDirectory(owner, QObject::tr("Start folder"), folderBox->text());
        if (!dir.isEmpty())
            folderBox->setText(dir);
    });
    return browse;
}

std::vector<assets::AssetRow> assetGridRows(const QTableWidget* grid) {
    std::vector<assets::AssetRow> out;
    out.reserve(static_cast<std::size_t>(grid->rowCount()));
    for (int r = 0; r < grid->rowCount(); ++r) {
        std::vector<std::string> cells = listRowCells(grid, r);
        cells.resize(8);
        out.push_back({cells[0], cells[1], cells[2], cells[3], cells[4], cells[5], cells[6], cells[7]});
    }
    return out;
}

void saveAssetGridAs(AppContext& ctx, const std::vector<assets::AssetRow>& rows) {
    MakePath(ctx.reports());
    FileRequest request{"Save Grid as File", ctx.reports(),
                        "Comma Separated (*.csv)|*.csv|Excel file (*.xls)|*.xls|Tabbed text file (*.txt)|*.txt", true};
    auto chosen = ctx.ui().chooseFile(request);
    if (!chosen || chosen->empty())
        return;
    const auto form = assets::listFormOf(*chosen);
    if (form == assets::ListForm::Unknown)
        return;
    std::string error;
    JournalCommand command(&ctx.journal(), "Save Grid as File " + chosen->string());
    if (!assets::saveAssetList(ctx.files(), *chosen, form, rows, &error))
        ctx.ui().message(error, Icon::Warning);
}

} // namespace velmora::ui
