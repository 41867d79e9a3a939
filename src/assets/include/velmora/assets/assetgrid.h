#pragma once
// The asset list's rows and the three forms a list is saved in: comma-separated text,
// tab-separated text, and a spreadsheet (SpreadsheetML) that Excel and LibreOffice open.

#include <filesystem>
#include <string>
#include <vector>

namespace velmora {
class WriteService;
}

namespace velmora::assets {

namespace fs = std::filesystem;

// The cells of a list's rows, row by row.
using CellRows = std::vector<std::vector<std::string>>;

struct AssetRow {
    std::string provider, product, path, name, inScene, category, blueprint, index;

    // Provider\Product\Path: the file below Assets.
    std::string relativePath() const;
    std::vector<std::string> cells() const;
};

// "Provider", "Product", "Path", "Name", "In Scene", "Category", "Blueprint", "Index"
const std::vector<std::string>& assetColumns();
// The cells of each row, in column order.
CellRows cellsOf(const std::vector<AssetRow>& rows);

enum class ListForm { Csv, Tabbed, Spreadsheet, Unknown };
// By the last three letters of the name, ignoring case: csv, txt or tab, xls.
ListForm listFormOf(const fs::path& file);

// Rows of cells as the text of a saved list: comma-separated (cells quoted where they need it),
// tab-separated, or a SpreadsheetML workbook with one sheet of that name (text cells, UTF-8).
std::string listText(ListForm form, const std::vector<std::vector<std::string>>& rows, const std::string& sheet);
// The rows saved in the form the file's name ends in, through the write service (an existing
// file is kept as its numbered backup). False with `error` naming the file on failure.
bool saveList(WriteService& files, const fs::path& file, const std::vector<std::vector<std::string>>& rows,
              const std::string& sheet, std::string* error = nullptr);

// A header line, then a line per row, written through the write service (an existing file is
// kept as its numbered backup). True when the whole file was written; else `error` says why.
bool saveAssetList(WriteService& files, const fs::path& file, ListForm form, const std::vector<AssetRow>& rows,
                   std::string* error = nullptr);
// The cells of each row of a list saved in any of the forms, with the line (the sheet's row for
// a spreadsheet) it stands on, 1-based; the header line is left out. False with a message
// naming the file when it cannot be read.
struct ListLine {
    std::size_t line = 0;
    std::vector<std::string> cells;
};
bool loadListLines(const fs::path& file, ListForm form, std::vector<ListLine>& lines, std::string* error = nullptr);
// Reads a list saved in any of the forms; the header line is left out. False with a message
// naming the file when it cannot be read.
bool loadAssetList(const fs::path& file, ListForm form, std::vector<AssetRow>& rows, std::string* error = nullptr);

// The rolling-stock index: `Reports/Index.csv`, comma-separated with its header. An existing
// index is kept as Index.csv.bak, or the first free of .bak1 to .bak50.
bool saveStockIndex(WriteService& files, const fs::path& reportsFolder, const std::vector<AssetRow>& rows,
                    std::string* error = nullptr);

} // namespace velmora::assets
