#include "assetgridview.h"

#include "../common/desktopui.h"
#include "velmora/core/textboundary.h"

#include <QHeaderView>
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

} // namespace velmora::ui
