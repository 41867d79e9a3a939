#include "assetgridview.h"

#include "../common/desktopui.h"

#include <QHeaderView>
#include <QTableWidget>

namespace velmora::ui {

QTableWidget* makeAssetGrid() {
    auto* grid = new QTableWidget(0, 8);
    grid->setObjectName("VSFG1");
    QStringList headers;
    for (const auto& c : assets::assetColumns())
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

void appendAssetRows(QTableWidget* grid, const std::vector<assets::AssetRow>& rows) {
    // Sorting is off while rows go in, or each one would be sorted into place on its own.
    grid->setSortingEnabled(false);
    int r = grid->rowCount();
    grid->setRowCount(r + static_cast<int>(rows.size()));
    for (const auto& row : rows) {
        const auto cells = row.cells();
        for (int c = 0; c < 8; ++c)
            grid->setItem(r, c, new QTableWidgetItem(toQt(cells[static_cast<std::size_t>(c)])));
        ++r;
    }
    grid->setSortingEnabled(true);
    // Fitting the columns reads every cell: worth it for lists a person reads, not for a whole index.
    if (grid->rowCount() <= 5000)
        grid->resizeColumnsToContents();
}

} // namespace velmora::ui
