#include "velmora/physics/physicsrows.h"

#include "lists.h"
#include "scan.h"

#include "velmora/core/xmltext.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

namespace velmora::physics {

namespace {

using lists::Field;
using scan::npos;

struct Range {
    std::size_t begin, end;
};

class RowReader {
public:
    explicit RowReader(std::string_view xml) : m_xml(xml) {}

    std::vector<PhysicsRow> rows;

    // Reads `fields` in [begin, end) from `cursor` on; the cursor ends behind the last element read.
    void read(const std::vector<Field>& fields, std::size_t begin, std::size_t end, const std::string& path,
              std::size_t& cursor) {
        const std::vector<Range> containers = containerRanges(fields, begin, end);
        for (const Field& f : fields) {
            switch (f.kind) {
            case Field::Value:
                readValue(f, end, path, containers, cursor);
                break;
            case Field::Reference:
                readReference(f, end, path, cursor);
                break;
            case Field::Table:
                readTable(f, end, path, cursor);
                break;
            case Field::Section:
                readSection(f, end, path, cursor);
                break;
            case Field::Repeated:
                readRepeated(f, end, path, cursor);
                break;
            }
        }
    }

private:
    std::string_view m_xml;

    static std::string join(const std::string& path, const std::string& name) {
        return path.empty() ? name : path + "/" + name;
    }

    // Where the sections of this level stand, so that a plain value of the level is never taken
    // from inside one of them (the engine's MaxForce is not the handbrake's).
    std::vector<Range> containerRanges(const std::vector<Field>& fields, std::size_t begin, std::size_t end) const {
        std::vector<Range> out;
        for (const Field& f : fields) {
            if (f.kind == Field::Value)
                continue;
            for (std::size_t p = scan::findOpen(m_xml, begin, end, f.name, f.prefix); p != npos;) {
                const scan::Element e = scan::elementAt(m_xml, p, end);
                if (!e.found())
                    break;
                out.push_back({e.open, e.end});
                p = scan::findOpen(m_xml, e.end, end, f.name, f.prefix);
            }
        }
        return out;
    }

    void add(const std::string& path, const std::string& item, const std::string& key, const scan::Element& e,
             RowKind kind, std::string value) {
        PhysicsRow r;
        r.section = path;
        r.item = item;
        r.key = key;
        r.position = e.open + 1;
        r.kind = kind;
        r.type = scan::attribute(m_xml, e.open, "d:type");
        r.value = std::move(value);
        rows.push_back(std::move(r));
    }

    void readValue(const Field& f, std::size_t end, const std::string& path, const std::vector<Range>& containers,
                   std::size_t& cursor) {
        const std::string& key = f.key.empty() ? f.name : f.key;
        std::size_t p = scan::findOpen(m_xml, cursor, end, key);
        for (bool inside = true; p != npos && inside;) {
            inside = false;
            for (const Range& r : containers)
                if (p > r.begin && p < r.end) {
                    inside = true;
                    p = scan::findOpen(m_xml, r.end, end, key);
                    break;
                }
        }
        if (p == npos)
            return;
        const scan::Element e = scan::elementAt(m_xml, p, end);
        if (!e.closed)
            return;
        if (e.selfClosing || e.hasChildren(m_xml))
            add(path, f.name, key, e, RowKind::Empty, {});
        else
            add(path, f.name, key, e, RowKind::Value,
                DecodedChars(m_xml.substr(e.contentBegin, e.contentEnd - e.contentBegin)));
        cursor = e.end;
    }

    std::string leafValue(const scan::Element& within, std::string_view tag, std::size_t* at = nullptr) const {
        const std::size_t p = scan::findOpen(m_xml, within.contentBegin, within.contentEnd, tag);
        if (p == npos)
            return {};
        const scan::Element e = scan::elementAt(m_xml, p, within.contentEnd);
        if (at)
            *at = p;
        if (!e.closed || e.selfClosing || e.hasChildren(m_xml))
            return {};
        return DecodedChars(m_xml.substr(e.contentBegin, e.contentEnd - e.contentBegin));
    }

    void readReference(const Field& f, std::size_t end, const std::string& path, std::size_t& cursor) {
        const std::size_t p = scan::findOpen(m_xml, cursor, end, f.name);
        if (p == npos)
            return;
        const scan::Element e = scan::elementAt(m_xml, p, end);
        if (!e.closed)
            return;
        std::string value;
        if (!e.selfClosing) {
            const std::string provider = leafValue(e, "Provider"), product = leafValue(e, "Product");
            const std::string id = leafValue(e, "BlueprintID");
            if (!provider.empty() || !product.empty() || !id.empty())
                value = provider + "\\" + product + "\\" + id;
        }
        add(path, f.name, "", e, e.selfClosing ? RowKind::Empty : RowKind::Reference, value);
        cursor = e.end;
    }

    void readTable(const Field& f, std::size_t end, const std::string& path, std::size_t& cursor) {
        const std::size_t p = scan::findOpen(m_xml, cursor, end, f.name);
        if (p == npos)
            return;
        const scan::Element section = scan::elementAt(m_xml, p, end);
        if (!section.closed || section.selfClosing)
            return;
        std::size_t at = npos;
        const std::string value = leafValue(section, "CsvFile", &at);
        if (at == npos)
            return;
        add(path, f.name, "CsvFile", scan::elementAt(m_xml, at, section.contentEnd), RowKind::Table, value);
        cursor = section.end;
    }

    void readSection(const Field& f, std::size_t end, const std::string& path, std::size_t& cursor) {
        const std::size_t p = scan::findOpen(m_xml, cursor, end, f.name);
        if (p == npos)
            return;
        const scan::Element section = scan::elementAt(m_xml, p, end);
        if (!section.closed)
            return;
        std::size_t inner = section.contentBegin;
        read(f.children, section.contentBegin, section.contentEnd, join(path, f.name), inner);
        cursor = section.end;
    }

    // One set of rows per repetition: a repetition starts where the first child is found, and
    // the list ends when it is found no more.
    void readRepeated(const Field& f, std::size_t end, const std::string& path, std::size_t& cursor) {
        for (std::size_t p = scan::findOpen(m_xml, cursor, end, f.name, f.prefix); p != npos;
             p = f.prefix ? scan::findOpen(m_xml, cursor, end, f.name, true) : npos) {
            const scan::Element section = scan::elementAt(m_xml, p, end);
            if (!section.closed)
                return;
            const std::string name = join(path, std::string(section.name));
            std::size_t inner = section.contentBegin;
            const std::vector<Field> first(f.children.begin(), f.children.begin() + 1);
            while (!f.children.empty()) {
                const std::size_t before = rows.size(), at = inner;
                read(first, section.contentBegin, section.contentEnd, name, inner);
                if (rows.size() == before || inner <= at)
                    break;
                const std::vector<Field> rest(f.children.begin() + 1, f.children.end());
                read(rest, section.contentBegin, section.contentEnd, name, inner);
            }
            cursor = section.end;
        }
    }
};

bool isNumberType(std::string_view type) {
    return type.rfind("sFloat", 0) == 0 || type.rfind("sInt", 0) == 0 || type.rfind("sUInt", 0) == 0 || type == "bool";
}

std::string_view trimmed(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t'))
        s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t'))
        s.remove_suffix(1);
    return s;
}

std::string escapedXml(std::string_view text) {
    std::string out;
    for (char c : text) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        default: out += c;
        }
    }
    return out;
}

char lowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

bool sameText(std::string_view a, std::string_view b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (lowerAscii(a[i]) != lowerAscii(b[i]))
            return false;
    return true;
}

// Whether "a/b/c" ends with the sections "b/c" typed (whole components).
bool endsWithSections(std::string_view path, std::string_view typed) {
    if (typed.empty())
        return true;
    if (path.size() < typed.size() || !sameText(path.substr(path.size() - typed.size()), typed))
        return false;
    return path.size() == typed.size() || path[path.size() - typed.size() - 1] == '/';
}

} // namespace

std::string PhysicsRow::qualifiedName() const { return section.empty() ? item : section + "/" + item; }

std::vector<PhysicsRow> vehicleRows(std::string_view xml) {
    RowReader r(xml);
    std::size_t cursor = 0;
    r.read(lists::vehicleFields(), 0, xml.size(), "", cursor);
    return std::move(r.rows);
}

std::vector<PhysicsRow> simulationRows(std::string_view xml, SimKind kind) {
    RowReader r(xml);
    std::size_t cursor = 0;
    r.read(kind == SimKind::Steam ? lists::steamFields() : lists::dieselFields(), 0, xml.size(), "", cursor);
    return std::move(r.rows);
}

bool isSimulationBlueprint(std::string_view xml) { return scan::findOpen(xml, 0, xml.size(), "cEngineSimBlueprint") != npos; }

SimKind simKindOf(std::string_view vehicleXml, std::string_view simXml) {
    if (scan::findOpen(simXml, 0, simXml.size(), "cSteamEngineSimObjectBlueprint") != npos)
        return SimKind::Steam;
    for (const PhysicsRow& r : vehicleRows(vehicleXml))
        if (r.item == "EngineType" && sameText(r.value, "Steam"))
            return SimKind::Steam;
    return SimKind::DieselElectric;
}

std::vector<std::size_t> findRows(const std::vector<PhysicsRow>& rows, std::string_view name) {
    std::size_t position = 0;
    if (const std::size_t at = name.rfind('@'); at != std::string_view::npos) {
        const std::string_view digits = name.substr(at + 1);
        const auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), position);
        if (ec != std::errc() || end != digits.data() + digits.size())
            return {};
        name = name.substr(0, at);
    }
    std::string_view sections, item = name;
    bool topOnly = false; // "/Item": the row outside every section
    if (const std::size_t slash = name.rfind('/'); slash != std::string_view::npos) {
        sections = name.substr(0, slash);
        item = name.substr(slash + 1);
        topOnly = slash == 0;
    }
    std::vector<std::size_t> out;
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (sameText(rows[i].item, item) && endsWithSections(rows[i].section, sections) &&
            (!topOnly || rows[i].section.empty()) && (position == 0 || rows[i].position == position))
            out.push_back(i);
    return out;
}

std::string checkValueForType(std::string_view value, std::string_view type) {
    if (!isNumberType(type))
        return {};
    const std::string_view v = trimmed(value);
    const char* b = v.data();
    const char* e = v.data() + v.size();
    const std::string shownValue = "'" + std::string(value) + "'";
    if (type.rfind("sFloat", 0) == 0) {
        double d = 0;
        const auto [end, ec] = std::from_chars(b, e, d);
        if (v.empty() || ec != std::errc() || end != e || !std::isfinite(d))
            return shownValue + " is not a number (the element holds " + std::string(type) + ")";
        if (type == "sFloat32" && std::fabs(d) > std::numeric_limits<float>::max())
            return shownValue + " is too large for " + std::string(type);
        return {};
    }
    if (type == "bool") {
        if (v == "0" || v == "1")
            return {};
        return shownValue + " is not 0 or 1 (the element holds bool)";
    }
    const bool isUnsigned = type.rfind("sUInt", 0) == 0;
    int bits = 32;
    std::from_chars(type.data() + (isUnsigned ? 5 : 4), type.data() + type.size(), bits);
    if (bits < 8 || bits > 64)
        bits = 64;
    if (isUnsigned) {
        unsigned long long n = 0;
        const auto [end, ec] = std::from_chars(b, e, n);
        if (v.empty() || ec != std::errc() || end != e)
            return shownValue + " is not a whole number of 0 or more (the element holds " + std::string(type) + ")";
        if (bits < 64 && n >> bits)
            return shownValue + " is too large for " + std::string(type);
        return {};
    }
    long long n = 0;
    const auto [end, ec] = std::from_chars(b, e, n);
    if (v.empty() || ec != std::errc() || end != e)
        return shownValue + " is not a whole number (the element holds " + std::string(type) + ")";
    if (bits < 64 && (n < -(1LL << (bits - 1)) || n >= (1LL << (bits - 1))))
        return shownValue + " is out of range for " + std::string(type);
    return {};
}

bool replaceElementText(std::string& xml, std::size_t open, std::string_view text) {
    if (open == 0 || open > xml.size())
        return false;
    const scan::Element e = scan::elementAt(xml, open - 1, xml.size());
    if (!e.found() || !e.closed || e.selfClosing || e.hasChildren(xml))
        return false;
    xml.replace(e.contentBegin, e.contentEnd - e.contentBegin, escapedXml(text));
    // The exact float the codec keeps beside the text belongs to the old value.
    const std::string tag = xml.substr(open - 1, e.contentBegin - (open - 1));
    const std::size_t alt = tag.find(" d:alt_encoding=\"");
    if (alt != std::string::npos) {
        const std::size_t close = tag.find('"', alt + 17);
        if (close != std::string::npos)
            xml.erase(open - 1 + alt, close + 1 - alt);
    }
    return true;
}

std::string putRowValue(std::string& xml, const PhysicsRow& row, std::string_view typedUtf8) {
    const std::string missing = "The Key " + row.key + " was not found";
    if (row.key.empty() || row.kind == RowKind::Reference)
        return missing;
    const std::size_t from = row.position == 0 ? 0 : row.position - 1;
    const std::size_t p = scan::findOpen(xml, from, xml.size(), row.key);
    if (p == npos)
        return missing;
    const scan::Element e = scan::elementAt(xml, p, xml.size());
    if (!e.closed || e.selfClosing || e.hasChildren(xml))
        return missing;
    if (std::string problem = checkValueForType(typedUtf8, scan::attribute(xml, p, "d:type")); !problem.empty())
        return row.item + ": " + problem;
    const std::string_view value = isNumberType(scan::attribute(xml, p, "d:type")) ? trimmed(typedUtf8) : typedUtf8;
    return replaceElementText(xml, p + 1, value) ? std::string() : missing;
}

} // namespace velmora::physics
