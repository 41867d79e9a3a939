#pragma once
// The eight-column asset grid as the asset screen and the rolling-stock index show it.

#include "velmora/assets/assetgrid.h"

#include <QStringList>

class QLineEdit;
class QPushButton;
class QTableWidget;
class QWidget;

namespace velmora {
class AppContext;
}

namespace velmora::ui {

// A read-only grid named VSFG1 with the asset columns, whole-row selection of many rows, rows
// in the order they were added until the user sorts by a column.
QTableWidget* makeAssetGrid();
// A read-only grid of whole-row, many-row selection with these columns, for the lists beside
// the asset grid (archives, entries, scenarios).
QTableWidget* makeListGrid(const char* name, const QStringList& headers);
// The "..." button beside a start folder box: a folder dialog that fills the box.
QPushButton* folderBrowseButton(QWidget* owner, QLineEdit* folderBox);
// Adds the rows at the end of the grid.
void appendAssetRows(QTableWidget* grid, const std::vector<assets::AssetRow>& rows);
// The grid's rows in the order shown.
std::vector<assets::AssetRow> assetGridRows(const QTableWidget* grid);
// "Save Grid as File": the rows saved where the user chooses (Reports first), in the form the
// name ends in, as one journal entry; a failure is told through the context's interface.
void saveAssetGridAs(AppContext& ctx, const std::vector<assets::AssetRow>& rows);

} // namespace velmora::ui
