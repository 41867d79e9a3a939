// Lamps on rolling stock: the table of lamp templates (Templates\UKLights.txt), the train
// types' head-lamp codes, and the children that carry the lamps.

#include "rsshared.h"
#include "velmora/core/services.h"
#include "velmora/core/xmltext.h"

#include <algorithm>
#include <cstdlib>

namespace velmora::assets {

namespace {

constexpr std::size_t kFields = 10; // the tenth takes the rest of the line

std::vector<std::string> fieldsOf(std::string_view line) {
    std::vector<std::string> fields;
    while (fields.size() + 1 < kFields) {
        const std::size_t comma = line.find(',');
        if (comma == std::string_view::npos)
            break;
        fields.push_back(rs::trimmed(line.substr(0, comma)));
        line.remove_prefix(comma + 1);
    }
    fields.push_back(rs::trimmed(line));
    return fields;
}

// What is wrong with a row of the table, or nothing.
std::string checkRow(const std::vector<std::string>& f) {
    if (f.size() < kFields)
        return "has " + std::to_string(f.size()) + " of the " + std::to_string(kFields) + " fields";
    if (f[1].size() < 3 || !InStr(f[1].size() - 2, f[1], "xml", Match::Text))
        return "names the lamp blueprint '" + f[1] + "', which does not end in xml";
    if (std::count(f[1].begin(), f[1].end(), '\\') < 2)
        return "names the lamp blueprint '" + f[1] + "' without Provider\\Product\\";
    for (std::size_t c = 2; c <= 7; ++c)
        if (!rs::isNumber(f[c]))
            return "has '" + f[c] + "' in column " + std::to_string(c) + ", which must be a number";
    if (!f[9].empty() && !rs::isNumber(f[9]))
        return "has '" + f[9] + "' as the number of tail lamps";
    return {};
}

struct Position {
    std::string x, y, z;
};

// Lamp positions 1 (top), 2 (one side), 3 (middle), 4 (other side) on the buffer beam.
Position headPosition(const LampTemplate& t, int position) {
    const auto& c = t.columns;
    switch (position) {
    case 1:
        return {"0.0000", c[5], c[6]};
    case 2:
        return {c[2], c[3], c[4]};
    case 3:
        return {"0.0000", c[3], c[7] == "0.0000" ? c[4] : c[7]};
    default:
        return {rs::toggleSign(c[2]), c[3], c[4]};
    }
}

// One lamp child made from UKCode.txt.
std::string lampChild(const RsSettings& settings, const std::string& childName, const std::string& scale,
                      const Position& p) {
    const std::string& id = settings.lamp.blueprint;
    const std::size_t first = id.find('\\'), second = id.find('\\', first + 1);
    std::string block = rs::templateText(settings, "UKCode.txt");
    rs::replaceAll(block, "HeadLamp", childName);
    rs::replaceAll(block, "444444", id.substr(0, first));
    rs::replaceAll(block, "555555", id.substr(first + 1, second - first - 1));
    rs::replaceAll(block, "666666", id.substr(second + 1));
    rs::replaceAll(block, "777777", scale);
    rs::replaceAll(block, "111111", p.x);
    rs::replaceAll(block, "222222", p.y);
    rs::replaceAll(block, "333333", p.z);
    return block;
}

RowEdit lampsAdded(const RowInput& input, std::string xml) {
    RowEdit e;
    rs::nameVariant(xml, input);
    e.xml = std::move(xml);
    return e;
}

RowEdit noChildren(const RowInput& input) {
    return rs::passOver(input, "The blueprint has no ContainerComponent with Children to carry lamps.");
}

} // namespace

bool readLampTable(const std::filesystem::path& file, LampTable& table, std::string& error) {
    table = {};
    const std::string text = ReadTextFile(file);
    if (text.empty()) {
        error = file.string() + ": the lamp table is missing or empty.";
        return false;
    }
    const std::vector<std::string> lines = SplitLines(text);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string line = rs::trimmed(lines[i]);
        if (line.empty() || line.rfind("//", 0) == 0)
            continue;
        const std::vector<std::string> fields = fieldsOf(line);
        if (const std::string wrong = checkRow(fields); !wrong.empty()) {
            error = file.string() + ", line " + std::to_string(i + 1) + ": the lamp template " + wrong + ".";
            return false;
        }
        LampTemplate t;
        std::copy(fields.begin(), fields.end(), t.columns.begin());
        t.name = t.columns[0];
        t.blueprint = t.columns[1];
        t.line = i + 1;
        (t.columns[6] == "0" ? table.tails : table.heads).push_back(std::move(t));
    }
    return true;
}

const std::vector<TrainType>& trainTypes() {
    static const std::vector<TrainType> types{
        {"Express Passenger", 2, 4}, {"Stopping Passenger", 1, 0}, {"Express Perishable", 1, 2},
        {"Express Freight", 1, 4},   {"Thru Freight", 1, 3},       {"Light Engine", 3, 0},
        {"Parcels", 2, 3},           {"Thru Mineral", 2, 0},       {"Stopping Freight", 4, 0},
    };
    return types;
}

namespace rs {

RowEdit headLights(const RsSettings& settings, const RowInput& input) {
    std::string xml = input.xml;
    const std::size_t children = openChildren(xml);
    if (children == std::string::npos)
        return noChildren(input);
    const TrainType& type = trainTypes().at(static_cast<std::size_t>(settings.trainType));
    for (int position : {type.slot1, type.slot2})
        if (position != 0)
            insertChild(xml, children,
                        lampChild(settings, "HeadLamp" + std::to_string(position), "1.0000",
                                  headPosition(settings.lamp, position)));
    return lampsAdded(input, std::move(xml));
}

RowEdit tailLights(const RsSettings& settings, const RowInput& input) {
    std::string xml = input.xml;
    const std::size_t children = openChildren(xml);
    if (children == std::string::npos)
        return noChildren(input);
    const auto& c = settings.lamp.columns;
    insertChild(xml, children, lampChild(settings, "TailLamp", c[3], {c[2], c[3], c[4]}));
    if (c[9] == "2") // a second lamp, mirrored
        insertChild(xml, children, lampChild(settings, "TailLamp", c[3], {toggleSign(c[2]), c[3], c[4]}));
    return lampsAdded(input, std::move(xml));
}

} // namespace rs

} // namespace velmora::assets
