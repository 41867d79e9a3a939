#pragma once
// Stock chosen from the rolling-stock index (Reports\Index.csv) instead of the Available Stock
// list: "Use Index File" of the scenario editor. A row gives the provider, the product and the
// blueprint's path; the stock is then read from its blueprint exactly as a row of Available
// Stock is, so that a swap installs it the same way (reskin values included).

#include "velmora/assets/indexrow.h"
#include "velmora/scenarios/swap.h"

#include <optional>
#include <string>
#include <vector>

namespace velmora::scenarios {

extern const char* const kNoIndexFile;     // "You do not appear to have generated an Index.csv file."
extern const char* const kNoIndexSelection; // "You do not appear to have selected any rolling stock"

// Index rows are read as the asset library reads them.
using assets::IndexStock;
using assets::readIndexRow;

// The stock of an index row as chooseStock gives it for Provider\Product\path: the blueprint is
// read for its name, category and reskin values. Empty with `error` set (naming the row's stock
// or the file) when the row is refused or its blueprint is missing or no rail vehicle.
std::optional<ChosenStock> chooseIndexStock(const AppContext& ctx, const std::vector<std::string>& cells,
                                            std::string& error);

// The stock of row `row` (1 for the first below the header) of the program's Reports\Index.csv.
// Empty with `error` set when there is no index (kNoIndexFile), it cannot be read, it has no such
// row, or the row is refused as above.
std::optional<ChosenStock> chooseIndexStockAt(const AppContext& ctx, int row, std::string& error);

// The chosen file as the editor shows it: <RailWorks>\Assets\Provider\Product\path.bin.
std::string chosenStockPath(const AppContext& ctx, const ChosenStock& stock);

} // namespace velmora::scenarios
