#pragma once
// The .dcsv tables a simulation names for its curves: one cCSVItem a point, with X and Y (and
// a Name, empty in curves). A table is read whole as XML text and changed at its items'
// positions, so that a table saved unchanged is the same file byte for byte.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {
class AppContext;
}

namespace velmora::physics {

namespace fs = std::filesystem;

struct TablePoint {
    std::string x, y; // as the table holds them
    double xValue = 0, yValue = 0;
};

struct DcsvTable {
    fs::path file;
    bool binary = true;
    std::string xml;
    std::vector<TablePoint> points;
    bool changed = false;
};

// Reads a table. Returns what is wrong, naming the file and, for a bad point, its row (one-based):
// a point without X or Y, or text where a number stands.
std::string readTable(const fs::path& file, DcsvTable& table);
// The same on text already read (`name` for the messages).
std::string parseTable(const std::string& name, const std::string& xml, std::vector<TablePoint>& points);

// The row (zero-based) whose X is `x` as a number; -1 when none, -2 when several have it.
int rowOfX(const DcsvTable& table, double x);

// Changes one point (X and Y typed as numbers). Returns what is wrong, empty on success.
std::string setPoint(DcsvTable& table, std::size_t row, std::string_view x, std::string_view y);
// Adds a point in X order (behind the last one with a smaller or equal X).
std::string addPoint(DcsvTable& table, std::string_view x, std::string_view y);
// Removes a point; the last point of a table stays.
std::string removePoint(DcsvTable& table, std::size_t row);

// Writes the table back (encoded when binary), one journal entry named by `command`; the old
// file is kept as its numbered backup. Returns what went wrong, empty on success.
std::string saveTable(AppContext& ctx, DcsvTable& table, const std::string& command, fs::path* backup = nullptr);

// Axis titles of a curve by its name, "AVsB" or "AVB": Y is A and X is B, in words
// ("TractiveEffortVsSpeed": X "Speed", Y "Tractive effort"). Empty when the name does not say.
struct AxisTitles {
    std::string x, y;
};
AxisTitles axisTitlesOf(std::string_view curveName);

// A number as typed: the whole text one finite number.
bool parseNumber(std::string_view text, double& value);

} // namespace velmora::physics
