#pragma once
// The list grids as the file-list screens and the rolling-stock index show them.

#include "velmora/assets/assetgrid.h"

#include <string>
#include <vector>

class QTableWidget;

namespace velmora::ui {

// A read-only grid named VSFG1 with these columns, whole-row selection of many rows, rows in
// the order they were added until the user sorts by a column.
QTableWidget* makeListGrid(const std::vector<std::string>& columns);
// Adds the rows at the end of the grid. Each cell shows its text as UTF-8 and keeps the bytes
// it was given, so that a name read from a document comes back from the grid unchanged.
void appendListRows(QTableWidget* grid, const std::vector<std::vector<std::string>>& rows);
// The cells of one row as they were given.
std::vector<std::string> listRowCells(const QTableWidget* grid, int row);

// The grid with the eight asset columns, and its rows.
QTableWidget* makeAssetGrid();
void appendAssetRows(QTableWidget* grid, const std::vector<assets::AssetRow>& rows);

} // namespace velmora::ui
