// A row of the rolling-stock index made into the stock a swap installs.

#include "velmora/scenarios/indexstock.h"

#include "velmora/assets/assetgrid.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/paths.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"

namespace velmora::scenarios {

const char* const kNoIndexFile = "You do not appear to have generated an Index.csv file.";
const char* const kNoIndexSelection = "You do not appear to have selected any rolling stock";

std::optional<ChosenStock> chooseIndexStock(const AppContext& ctx, const std::vector<std::string>& cells,
                                            std::string& error) {
    const auto row = readIndexRow(cells, error);
    if (!row)
        return std::nullopt;
    auto stock = chooseStock(ctx, row->provider + "\\" + row->product + "\\" + row->path, error);
    if (!stock)
        return std::nullopt;
    // The blueprint's own name wins over the index's, which lost its commas; a blueprint
    // without one keeps the name the index shows.
    if (stock->name.empty())
        stock->name = row->name;
    return stock;
}

std::optional<ChosenStock> chooseIndexStockAt(const AppContext& ctx, int row, std::string& error) {
    const fs::path file = ctx.reports() / "Index.csv";
    if (!FileExists(file)) {
        error = kNoIndexFile;
        return std::nullopt;
    }
    std::vector<assets::AssetRow> rows;
    if (!assets::loadAssetList(file, assets::ListForm::Csv, rows, &error))
        return std::nullopt;
    if (row < 1 || row > static_cast<int>(rows.size())) {
        error = file.string() + " has " + std::to_string(rows.size()) + " rows of stock; there is no row " +
                std::to_string(row) + ".";
        return std::nullopt;
    }
    return chooseIndexStock(ctx, rows[static_cast<std::size_t>(row - 1)].cells(), error);
}

std::string chosenStockPath(const AppContext& ctx, const ChosenStock& stock) {
    std::string path = stock.path;
    if (iendsWith(path, "xml"))
        path.replace(path.size() - 3, 3, "bin");
    return (ctx.railWorks() / "Assets").string() + "\\" +
           utf8FromDocument(stock.provider + "\\" + stock.product + "\\" + path);
}

} // namespace velmora::scenarios
