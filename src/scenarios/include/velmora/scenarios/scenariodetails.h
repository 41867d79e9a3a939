#pragma once
// "Display Details of Selected Scenario" (frmScenario): every consist of a scenario laid out in
// one wide grid of labelled lines, service by service: name, class, destination, start time, the
// driver's instructions (a column a place), then the vehicles; with a track index, where each
// consist and vehicle stands. The grid is saved as comma-separated or tab-separated text, or as
// a spreadsheet.

#include "velmora/scenarios/scenario.h"
#include "velmora/scenarios/trackindex.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {
class WriteService;
}

namespace velmora::scenarios {

// The service class in the words of the details screen, by the ServiceClass value ("Hight-speed
// Freight" for 4); a value outside the table is shown as it stands.
std::string detailsServiceClass(std::string_view value);

// The text of a vehicle's place: "On Track in tile " and the tile.
std::string onTrackText(Tile tile);

struct DetailsGrid {
    std::vector<std::vector<std::string>> rows; // the first cell of a row is its label
    std::size_t columns() const;
};

// The grid of a scenario. Without an index (`index` null) the grid has no location rows.
DetailsGrid detailsGrid(const ScenarioDocument& doc, const TrackIndex* index, const std::string& language);

// "Save Grid as File": the form by the file's ending: .csv comma-separated (cells with commas,
// quotes or line breaks in quotes), .txt tab-separated (tabs and line breaks in a cell become
// blanks), .xls a SpreadsheetML workbook, which Excel opens as a sheet. Through the write
// service; false with `error` naming the file.
bool saveDetailsGrid(WriteService& files, const std::filesystem::path& file, const DetailsGrid& grid,
                     std::string* error = nullptr);

// The dialog's filter.
extern const char* const kGridFilter; // "Comma Separated (*.csv)|*.csv|Excel file (*.xls)|*.xls|Tabbed text file (*.txt)|*.txt"

} // namespace velmora::scenarios
