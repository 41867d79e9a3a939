#include "velmora/assets/assetgrid.h"

#include "velmora/core/filewrite.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"

#include <algorithm>

namespace velmora::assets {

namespace {

std::string xmlEscape(const std::string& s) {
    std::string out;
    out.reserve(s.size());
    for (char c : s) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default: out += c;
        }
    }
    return out;
}

std::string xmlUnescape(std::string s) {
    for (auto [from, to] : {std::pair{"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&apos;", "'"}, {"&amp;", "&"}}) {
        const std::string f = from;
        for (std::size_t p = s.find(f); p != std::string::npos; p = s.find(f, p + 1))
            s.replace(p, f.size(), to);
    }
    return s;
}

// A line of cells. In the comma form a cell holding a comma, a quote or a line break is put in
// quotes, its quotes doubled, so that names with commas come back whole. The tab form has no
// quoting: a tab or line break inside a cell becomes a blank, so that each row stays one line.
std::string joined(const std::vector<std::string>& cells, char separator) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (i)
            line += separator;
        if (separator == ',') {
            line += csvCell(cells[i]);
        } else {
            std::string cell = cells[i];
            for (char& ch : cell)
                if (ch == '\t' || ch == '\r' || ch == '\n')
                    ch = ' ';
            line += cell;
        }
    }
    return line + "\r\n";
}

std::string spreadsheet(const std::vector<std::vector<std::string>>& rows, const std::string& sheet) {
    std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
                      "<?mso-application progid=\"Excel.Sheet\"?>\r\n"
                      "<Workbook xmlns=\"urn:schemas-microsoft-com:office:spreadsheet\"\r\n"
                      " xmlns:ss=\"urn:schemas-microsoft-com:office:spreadsheet\">\r\n"
                      "<Worksheet ss:Name=\"" + xmlEscape(utf8FromDocument(sheet)) + "\"><Table>\r\n";
    for (const auto& cells : rows) {
        out += "<Row>";
        for (const auto& c : cells)
            out += "<Cell><Data ss:Type=\"String\">" + xmlEscape(utf8FromDocument(c)) + "</Data></Cell>";
        out += "</Row>\r\n";
    }
    out += "</Table></Worksheet></Workbook>\r\n";
    return out;
}

std::vector<std::vector<std::string>> readSpreadsheet(const std::string& text) {
    std::vector<std::vector<std::string>> table;
    for (std::size_t r = text.find("<Row"); r != std::string::npos; r = text.find("<Row", r + 4)) {
        const std::size_t end = text.find("</Row>", r);
        if (end == std::string::npos)
            break;
        std::vector<std::string> cells;
        for (std::size_t d = text.find("<Data", r); d != std::string::npos && d < end; d = text.find("<Data", d + 5)) {
            const std::size_t b = text.find('>', d);
            const std::size_t c = text.find("</Data>", b);
            if (b == std::string::npos || c == std::string::npos)
                break;
            cells.push_back(documentFromUtf8(xmlUnescape(text.substr(b + 1, c - b - 1))));
        }
        table.push_back(std::move(cells));
    }
    return table;
}

AssetRow fromCells(std::vector<std::string> cells) {
    cells.resize(8);
    return {cells[0], cells[1], cells[2], cells[3], cells[4], cells[5], cells[6], cells[7]};
}

} // namespace

std::string AssetRow::relativePath() const { return provider + "\\" + product + "\\" + path; }

std::vector<std::string> AssetRow::cells() const {
    return {provider, product, path, name, inScene, category, blueprint, index};
}

CellRows cellsOf(const std::vector<AssetRow>& rows) {
    CellRows cells;
    cells.reserve(rows.size());
    for (const AssetRow& row : rows)
        cells.push_back(row.cells());
    return cells;
}

const std::vector<std::string>& assetColumns() {
    static const std::vector<std::string> columns = {"Provider", "Product",  "Path",      "Name",
                                                     "In Scene", "Category", "Blueprint", "Index"};
    return columns;
}

ListForm listFormOf(const fs::path& file) {
    const std::string name = file.filename().string();
    if (name.size() < 3)
        return ListForm::Unknown;
    const std::string last = toLowerAscii(name.substr(name.size() - 3));
    if (last == "csv")
        return ListForm::Csv;
    if (last == "txt" || last == "tab")
        return ListForm::Tabbed;
    if (last == "xls")
        return ListForm::Spreadsheet;
    return ListForm::Unknown;
}

std::string listText(ListForm form, const std::vector<std::vector<std::string>>& rows, const std::string& sheet) {
    if (form == ListForm::Spreadsheet)
        return spreadsheet(rows, sheet);
    std::string text;
    if (form == ListForm::Csv || form == ListForm::Tabbed)
        for (const auto& cells : rows)
            text += joined(cells, form == ListForm::Csv ? ',' : '\t');
    return text;
}

namespace {

bool saveIn(WriteService& files, const fs::path& file, ListForm form, const std::vector<std::vector<std::string>>& rows,
            const std::string& sheet, std::string* error) {
    if (form == ListForm::Unknown) {
        if (error)
            *error = file.string() + ": a list is saved as .csv, .txt, .tab or .xls";
        return false;
    }
    if (const WriteResult written = files.write(file, listText(form, rows, sheet)); !written) {
        if (error)
            *error = written.message;
        return false;
    }
    return true;
}

} // namespace

bool saveList(WriteService& files, const fs::path& file, const std::vector<std::vector<std::string>>& rows,
              const std::string& sheet, std::string* error) {
    return saveIn(files, file, listFormOf(file), rows, sheet, error);
}

bool saveAssetList(WriteService& files, const fs::path& file, ListForm form, const std::vector<AssetRow>& rows,
                   std::string* error) {
    std::vector<std::vector<std::string>> table{assetColumns()};
    for (const auto& r : rows)
        table.push_back(r.cells());
    return saveIn(files, file, form, table, "Assets", error);
}

bool loadListLines(const fs::path& file, ListForm form, std::vector<ListLine>& lines, std::string* error) {
    if (!FileExists(file)) {
        if (error)
            *error = file.string() + ": the file does not exist or cannot be read";
        return false;
    }
    const std::string text = ReadTextFile(file);
    lines.clear();
    if (form == ListForm::Spreadsheet) {
        auto table = readSpreadsheet(text);
        for (std::size_t i = 0; i < table.size(); ++i)
            lines.push_back({i + 1, std::move(table[i])});
    } else if (form == ListForm::Csv || form == ListForm::Tabbed) {
        std::size_t number = 0;
        for (const std::string& line : SplitLines(text)) {
            ++number;
            if (!line.empty())
                lines.push_back({number, csvCells(line, form == ListForm::Csv ? ',' : '\t')});
        }
    } else {
        if (error)
            *error = file.string() + ": a list is read from .csv, .txt, .tab or .xls";
        return false;
    }
    if (!lines.empty() && !lines.front().cells.empty() && lines.front().cells[0] == "Provider")
        lines.erase(lines.begin()); // the header line
    return true;
}

bool loadAssetList(const fs::path& file, ListForm form, std::vector<AssetRow>& rows, std::string* error) {
    std::vector<ListLine> lines;
    if (!loadListLines(file, form, lines, error))
        return false;
    rows.clear();
    for (ListLine& line : lines)
        rows.push_back(fromCells(std::move(line.cells)));
    return true;
}

bool saveStockIndex(WriteService& files, const fs::path& reportsFolder, const std::vector<AssetRow>& rows,
                    std::string* error) {
    // The old index is kept as its numbered backup once the new one is complete.
    return saveAssetList(files, reportsFolder / "Index.csv", ListForm::Csv, rows, error);
}

} // namespace velmora::assets
