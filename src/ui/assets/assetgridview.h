#pragma once
// The list grids as the file-list screens and the rolling-stock index show them.

#include "velmora/assets/assetgrid.h"

#include <QStringList>

#include <string>
#include <vector>

class QLineEdit;
class QPushButton;
class QTableWidget;
class QWidget;

namespace velmora {
class AppContext;
}

namespace velmora::ui {

// A read-only grid named VSFG1 with these columns, whole-row selection of many rows, rows in
// the order they were added until the user sorts by a column.
QTableWidget* makeListGrid(const std::vector<std::string>& columns);
// The same grid under another name, for the lists beside the asset grid (archives, entries,
// scenarios).
QTableWidget* makeListGrid(const char* name, const QStringList& headers);
// The "..." button beside a start folder box: a folder dialog that fills the box.
QPushButton* folderBrowseButton(QWidget* owner, QLineEdit* folderBox);
// Adds the rows at the end of the grid. Each cell shows its text as UTF-8 and keeps the bytes
// it was given, so that a name read from a document comes back from the grid unchanged.
void appendListRows(QTableWidget* grid, const std::vector<std::vector<std::string>>& rows);
// The cells of one row as they were given.
std::vector<std::string> listRowCells(const QTableWidget* grid, int row);

// The grid with the eight asset columns, and its rows.
QTableWidget* makeAssetGrid();
void appendAssetRows(QTableWidget* grid, const std::vector<assets::AssetRow>& rows);
// The asset grid's rows, each cell as it was given.
std::vector<assets::AssetRow> assetGridRows(const QTableWidget* grid);
// Save Grid: asks for a file in Reports and writes the rows in the form its extension names.
void saveAssetGridAs(AppContext& ctx, const std::vector<assets::AssetRow>& rows);

} // namespace velmora::ui
