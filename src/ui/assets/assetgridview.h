#pragma once
// The eight-column asset grid as the asset screen and the rolling-stock index show it.

#include "velmora/assets/assetgrid.h"

class QTableWidget;

namespace velmora::ui {

// A read-only grid named VSFG1 with the asset columns, whole-row selection of many rows, rows
// in the order they were added until the user sorts by a column.
QTableWidget* makeAssetGrid();
// Adds the rows at the end of the grid.
void appendAssetRows(QTableWidget* grid, const std::vector<assets::AssetRow>& rows);

} // namespace velmora::ui
