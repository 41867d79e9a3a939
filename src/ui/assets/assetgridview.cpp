#include "assetgridview.h"

#include "../common/desktopui.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"

#include <QFileDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
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

QTableWidget* makeListGrid(const char* name, const QStringList& headers) {
    auto* grid = new QTableWidget(0, static_cast<int>(headers.size()));
    grid->setObjectName(name);
    grid->setHorizontalHeaderLabels(headers);
    grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    grid->setSelectionMode(QAbstractItemView::ExtendedSelection);
    grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid->horizontalHeader()->setStretchLastSection(true);
    grid->setWordWrap(false);
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

std::vector<assets::AssetRow> assetGridRows(const QTableWidget* grid) {
    std::vector<assets::AssetRow> out;
    out.reserve(static_cast<std::size_t>(grid->rowCount()));
    for (int r = 0; r < grid->rowCount(); ++r) {
        std::vector<std::string> cells(8);
        for (int c = 0; c < 8; ++c)
            if (auto* item = grid->item(r, c))
                cells[static_cast<std::size_t>(c)] = fromQt(item->text());
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
