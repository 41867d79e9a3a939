#include "velmora/physics/dcsvtable.h"

#include "scan.h"

#include "velmora/physics/physicsdoc.h"
#include "velmora/physics/physicsrows.h"

#include "velmora/core/xmltext.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <utility>

namespace velmora::physics {

namespace {

using scan::npos;

// Where one point stands in the text.
struct ItemPlace {
    scan::Element item, x, y;
};

std::vector<ItemPlace> places(std::string_view xml) {
    std::vector<ItemPlace> out;
    for (std::size_t p = scan::findOpen(xml, 0, xml.size(), "cCSVItem"); p != npos;) {
        ItemPlace place;
        place.item = scan::elementAt(xml, p, xml.size());
        if (!place.item.closed)
            break;
        const std::size_t b = place.item.contentBegin, e = place.item.contentEnd;
        if (const std::size_t x = scan::findOpen(xml, b, e, "X"); x != npos)
            place.x = scan::elementAt(xml, x, e);
        if (const std::size_t y = scan::findOpen(xml, b, e, "Y"); y != npos)
            place.y = scan::elementAt(xml, y, e);
        out.push_back(place);
        p = scan::findOpen(xml, place.item.end, xml.size(), "cCSVItem");
    }
    return out;
}

std::string textOf(std::string_view xml, const scan::Element& e) {
    if (!e.found() || !e.closed || e.selfClosing)
        return {};
    return DecodedChars(xml.substr(e.contentBegin, e.contentEnd - e.contentBegin));
}

// The typed number checked against the element's type, or against being a number at all.
std::string checkNumber(std::string_view xml, const scan::Element& e, std::string_view typed, const char* column) {
    const std::string type = scan::attribute(xml, e.open, "d:type");
    double ignored = 0;
    if (!type.empty() && type != "cDeltaString") {
        if (std::string problem = checkValueForType(typed, type); !problem.empty())
            return std::string(column) + ": " + problem;
        return {};
    }
    if (!parseNumber(typed, ignored))
        return std::string(column) + ": '" + std::string(typed) + "' is not a number";
    return {};
}

std::string_view trimmed(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t'))
        s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t'))
        s.remove_suffix(1);
    return s;
}

// The line an item stands on, from the line's start to behind its line break.
std::pair<std::size_t, std::size_t> itemLines(std::string_view xml, const scan::Element& item) {
    std::size_t begin = xml.rfind('\n', item.open);
    begin = begin == npos ? item.open : begin + 1;
    for (std::size_t i = begin; i < item.open; ++i)
        if (xml[i] != ' ' && xml[i] != '\t') {
            begin = item.open;
            break;
        }
    std::size_t end = item.end;
    if (end < xml.size() && xml[end] == '\r')
        ++end;
    if (end < xml.size() && xml[end] == '\n')
        ++end;
    return {begin, end};
}

// A d:id no element of the document has yet.
std::string freshId(std::string_view xml) {
    std::uint64_t largest = 0;
    for (std::size_t p = xml.find("d:id=\""); p != npos; p = xml.find("d:id=\"", p + 6)) {
        std::uint64_t v = 0;
        std::from_chars(xml.data() + p + 6, xml.data() + xml.size(), v);
        largest = std::max(largest, v);
    }
    return std::to_string(largest >= 0xFFFFFFFFu ? 1 : largest + 1);
}

std::string reread(DcsvTable& table) {
    std::vector<TablePoint> points;
    std::string problem = parseTable(table.file.string(), table.xml, points);
    table.points = std::move(points);
    return problem;
}

} // namespace

bool parseNumber(std::string_view text, double& value) {
    text = trimmed(text);
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    return !text.empty() && ec == std::errc() && end == text.data() + text.size() && std::isfinite(value);
}

std::string parseTable(const std::string& name, const std::string& xml, std::vector<TablePoint>& points) {
    points.clear();
    int row = 0;
    for (const ItemPlace& place : places(xml)) {
        ++row;
        const std::string where = name + ": row " + std::to_string(row);
        if (!place.x.found() || !place.y.found())
            return where + " has no " + (place.x.found() ? "Y" : "X") + " (every row needs X and Y)";
        TablePoint point{textOf(xml, place.x), textOf(xml, place.y)};
        if (!parseNumber(point.x, point.xValue))
            return where + ": X '" + point.x + "' is not a number";
        if (!parseNumber(point.y, point.yValue))
            return where + ": Y '" + point.y + "' is not a number";
        points.push_back(std::move(point));
    }
    return {};
}

std::string readTable(const fs::path& file, DcsvTable& table) {
    table = DcsvTable{};
    PhysicsDocument doc;
    if (std::string problem = openDocument(file, doc); !problem.empty())
        return problem;
    table.file = file;
    table.binary = doc.binary;
    table.xml = std::move(doc.xml);
    return reread(table);
}

int rowOfX(const DcsvTable& table, double x) {
    int found = -1;
    for (std::size_t i = 0; i < table.points.size(); ++i)
        if (static_cast<float>(table.points[i].xValue) == static_cast<float>(x)) {
            if (found >= 0)
                return -2;
            found = static_cast<int>(i);
        }
    return found;
}

std::string setPoint(DcsvTable& table, std::size_t row, std::string_view x, std::string_view y) {
    const std::vector<ItemPlace> at = places(table.xml);
    if (row >= at.size())
        return table.file.string() + ": there is no row " + std::to_string(row + 1);
    const ItemPlace& place = at[row];
    const std::string where = table.file.string() + ": row " + std::to_string(row + 1) + ": ";
    if (std::string problem = checkNumber(table.xml, place.x, x, "X"); !problem.empty())
        return where + problem;
    if (std::string problem = checkNumber(table.xml, place.y, y, "Y"); !problem.empty())
        return where + problem;
    std::string xml = table.xml;
    // The later element first, so that the earlier one's place still holds.
    const bool yLater = place.y.open > place.x.open;
    const scan::Element& later = yLater ? place.y : place.x;
    const scan::Element& earlier = yLater ? place.x : place.y;
    const std::string_view laterText = trimmed(yLater ? y : x), earlierText = trimmed(yLater ? x : y);
    if (textOf(xml, later) != laterText && !replaceElementText(xml, later.open + 1, laterText))
        return where + "the value cannot be written";
    if (textOf(xml, earlier) != earlierText && !replaceElementText(xml, earlier.open + 1, earlierText))
        return where + "the value cannot be written";
    if (xml == table.xml)
        return {};
    const std::string old = std::exchange(table.xml, std::move(xml));
    if (std::string problem = reread(table); !problem.empty()) {
        table.xml = old;
        reread(table);
        return problem;
    }
    table.changed = true;
    return {};
}

std::string addPoint(DcsvTable& table, std::string_view x, std::string_view y) {
    double xv = 0, yv = 0;
    if (!parseNumber(x, xv))
        return table.file.string() + ": X '" + std::string(x) + "' is not a number";
    if (!parseNumber(y, yv))
        return table.file.string() + ": Y '" + std::string(y) + "' is not a number";
    const std::vector<ItemPlace> at = places(table.xml);
    std::string xml = table.xml;
    const std::string id = freshId(xml);
    if (at.empty()) {
        const std::size_t list = scan::findOpen(xml, 0, xml.size(), "CsvItem");
        if (list == npos)
            return table.file.string() + ": there is no CsvItem list to add a row to";
        const scan::Element e = scan::elementAt(xml, list, xml.size());
        const std::string item = "<cCSVItem d:id=\"" + id + "\"><X d:type=\"sFloat32\">" + std::string(trimmed(x)) +
                                 "</X><Y d:type=\"sFloat32\">" + std::string(trimmed(y)) +
                                 "</Y><Name d:type=\"cDeltaString\"></Name></cCSVItem>";
        if (e.selfClosing)
            xml.replace(e.open, e.end - e.open, "<CsvItem>" + item + "</CsvItem>");
        else
            xml.insert(e.contentEnd, item);
    } else {
        // A copy of a neighbour's item, with its own id, the new values and no name.
        std::size_t before = 0;
        while (before < table.points.size() && table.points[before].xValue <= xv)
            ++before;
        const ItemPlace& model = at[before == 0 ? 0 : before - 1];
        const auto [lineBegin, lineEnd] = itemLines(xml, model.item);
        std::string copy = xml.substr(lineBegin, lineEnd - lineBegin);
        const std::size_t offset = model.item.open - lineBegin;
        if (const std::string oldId = scan::attribute(copy, offset, "d:id"); !oldId.empty()) {
            const std::size_t p = copy.find("d:id=\"" + oldId + "\"", offset);
            copy.replace(p + 6, oldId.size(), id);
        }
        const std::size_t yAt = scan::findOpen(copy, 0, copy.size(), "Y");
        const std::size_t xAt = scan::findOpen(copy, 0, copy.size(), "X");
        const std::size_t nameAt = scan::findOpen(copy, 0, copy.size(), "Name");
        // Later elements first, as above.
        std::vector<std::pair<std::size_t, std::string>> values = {{xAt, std::string(trimmed(x))},
                                                                   {yAt, std::string(trimmed(y))}};
        if (nameAt != npos)
            values.push_back({nameAt, ""});
        std::sort(values.begin(), values.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
        for (const auto& [p, v] : values)
            if (p != npos)
                replaceElementText(copy, p + 1, v);
        const std::size_t insertAt = before == 0 ? itemLines(xml, at[0].item).first : lineEnd;
        xml.insert(insertAt, copy);
    }
    const std::string old = std::exchange(table.xml, std::move(xml));
    if (std::string problem = reread(table); !problem.empty()) {
        table.xml = old;
        reread(table);
        return problem;
    }
    table.changed = true;
    return {};
}

std::string removePoint(DcsvTable& table, std::size_t row) {
    const std::vector<ItemPlace> at = places(table.xml);
    if (row >= at.size())
        return table.file.string() + ": there is no row " + std::to_string(row + 1);
    if (at.size() == 1)
        return table.file.string() + ": the last row of a table stays";
    const auto [begin, end] = itemLines(table.xml, at[row].item);
    table.xml.erase(begin, end - begin);
    table.changed = true;
    return reread(table);
}

std::string saveTable(AppContext& ctx, DcsvTable& table, const std::string& command, fs::path* backup) {
    std::string problem = writeBack(ctx, table.file, table.binary, table.xml, command, backup);
    if (problem.empty())
        table.changed = false;
    return problem;
}

AxisTitles axisTitlesOf(std::string_view name) {
    if (const std::size_t dot = name.rfind('.'); dot != npos)
        name = name.substr(0, dot);
    if (const std::size_t cut = name.rfind('_'); cut != npos)
        name = name.substr(cut + 1);
    auto words = [](std::string_view camel) {
        std::string out;
        for (std::size_t i = 0; i < camel.size(); ++i) {
            const char c = camel[i];
            const bool upper = c >= 'A' && c <= 'Z';
            if (upper && i > 0 && !(camel[i - 1] >= 'A' && camel[i - 1] <= 'Z')) {
                out += ' ';
                out += static_cast<char>(c - 'A' + 'a');
            } else {
                out += c;
            }
        }
        return out;
    };
    // "AVsB", "AVSB" or "AVB": the first V behind a small letter and before a capital.
    for (std::size_t i = 1; i + 1 < name.size(); ++i) {
        if (name[i] != 'V' || !(name[i - 1] >= 'a' && name[i - 1] <= 'z'))
            continue;
        std::size_t rest = i + 1;
        if (name[rest] == 's' || name[rest] == 'S')
            if (rest + 1 < name.size() && name[rest + 1] >= 'A' && name[rest + 1] <= 'Z')
                ++rest;
        if (rest < name.size() && name[rest] >= 'A' && name[rest] <= 'Z')
            return {words(name.substr(rest)), words(name.substr(0, i))};
    }
    return {};
}

} // namespace velmora::physics
