// The readers of GPS files: each gives the points as the exact text of the source and names
// what it could not take, with the line where there is one, so that one bad point never costs
// the rest of the file.

#include "velmora/core/services.h"
#include "velmora/routes/markers.h"

#include <QByteArray>
#include <QXmlStreamReader>
#include <cctype>
#include <charconv>
#include <optional>

namespace velmora::routes {

namespace {

std::string trimmed(std::string_view t) {
    std::size_t a = 0, b = t.size();
    while (a < b && (t[a] == ' ' || t[a] == '\t' || t[a] == '\r' || t[a] == '\n'))
        ++a;
    while (b > a && (t[b - 1] == ' ' || t[b - 1] == '\t' || t[b - 1] == '\r' || t[b - 1] == '\n'))
        --b;
    return std::string(t.substr(a, b - a));
}

// Control characters of a name would break the .csv's lines and the .dcsv's text.
std::string cleanName(std::string_view name) {
    std::string out(name);
    for (char& c : out)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
            c = ' ';
    return trimmed(out);
}

std::optional<double> number(std::string_view text) {
    if (!text.empty() && text.front() == '+')
        text.remove_prefix(1);
    double value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || ec != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

// Adds the point when both coordinates are numbers in range; else names it.
void take(GpsRead& read, MarkerSet& set, MarkerPoint p, const std::string& where) {
    const auto lon = number(p.longitude), lat = number(p.latitude);
    std::string wrong;
    if (!lon)
        wrong = "the longitude '" + p.longitude + "' is not a number";
    else if (!lat)
        wrong = "the latitude '" + p.latitude + "' is not a number";
    else if (*lat < -90 || *lat > 90)
        wrong = "the latitude " + p.latitude + " is beyond 90 degrees";
    else if (*lon < -180 || *lon > 180)
        wrong = "the longitude " + p.longitude + " is beyond 180 degrees";
    if (!wrong.empty()) {
        read.problems.push_back(where + ": " + wrong + "; the point was left out");
        return;
    }
    set.points.push_back(std::move(p));
}

std::string at(const std::string& label, long long line) {
    return label + ": line " + std::to_string(line);
}

std::vector<std::string_view> fields(std::string_view line, std::size_t most) {
    std::vector<std::string_view> out;
    while (out.size() + 1 < most) {
        const std::size_t comma = line.find(',');
        if (comma == std::string_view::npos)
            break;
        out.push_back(line.substr(0, comma));
        line.remove_prefix(comma + 1);
    }
    out.push_back(line);
    return out;
}

void keep(GpsRead& read, MarkerSet set) {
    if (!set.points.empty())
        read.sets.push_back(std::move(set));
}

void noPoints(GpsRead& read, const std::string& label, const char* what) {
    if (read.sets.empty())
        read.problems.push_back(label + ": " + what);
}

QByteArray bytes(std::string_view text) {
    return QByteArray(text.data(), static_cast<qsizetype>(text.size()));
}

std::string attribute(const QXmlStreamReader& xml, const char* name) {
    for (const auto& a : xml.attributes())
        if (a.name().compare(QLatin1String(name), Qt::CaseInsensitive) == 0)
            return a.value().toString().toStdString();
    return {};
}

bool isNamed(const QXmlStreamReader& xml, const char* name) {
    return xml.name().compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
}

bool notXml(GpsRead& read, const QXmlStreamReader& xml, const std::string& label, const char* kind) {
    if (!xml.hasError())
        return false;
    read.problems.push_back(at(label, xml.lineNumber()) + ": is not a " + kind +
                            " file: " + xml.errorString().toStdString());
    return true;
}

// The items of a track's coordinates: "<longitude>,<latitude>,0" each, separated by blanks. An
// item with another height ends the block, as the GPS tools write flat tracks only.
void coordinateBlock(GpsRead& read, MarkerSet& set, const std::string& text, const std::string& where) {
    std::size_t i = 0;
    while (i < text.size()) {
        while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i])))
            ++i;
        std::size_t end = i;
        while (end < text.size() && !std::isspace(static_cast<unsigned char>(text[end])))
            ++end;
        if (end == i)
            break;
        const std::string item = text.substr(i, end - i);
        const auto parts = fields(item, 4);
        if (parts.size() != 3 || parts[2] != "0") {
            read.problems.push_back(where + ": the coordinates item '" + item +
                                    "' does not end in ,0; the rest of that block was left out");
            return;
        }
        take(read, set, {std::string(parts[0]), std::string(parts[1]), {}}, where);
        i = end;
    }
}

} // namespace

std::string markerKind(const fs::path& file) {
    const std::string name = toLowerAscii(file.filename().string());
    if (name.size() < 4 || name[name.size() - 4] != '.')
        return {};
    const std::string kind = name.substr(name.size() - 3);
    for (const char* k : {"kml", "gpx", "wpt", "mkr", "csv"})
        if (kind == k)
            return kind;
    return {};
}

GpsRead readKml(std::string_view text, const std::string& label, bool rings) {
    GpsRead read;
    // A file with a line in it is a track: every line is a series of its own and the names of
    // its placemarks are not read.
    bool track = false;
    {
        QXmlStreamReader scan(bytes(text));
        while (!scan.atEnd() && !track)
            if (scan.readNext() == QXmlStreamReader::StartElement)
                track = isNamed(scan, "LineString") || (rings && isNamed(scan, "LinearRing"));
    }
    QXmlStreamReader xml(bytes(text));
    int lineDepth = 0;
    bool inPlacemark = false;
    // A placemark's point is taken at its end, so that its name may stand before or after it.
    std::string name, coords;
    long long coordsLine = 0;
    MarkerSet points;
    points.named = true;
    auto placemarkPoint = [&] {
        if (coordsLine == 0)
            return;
        std::string shown = cleanName(name);
        for (char& c : shown)
            if (c == ' ')
                c = '_';
        const std::string coordsText = trimmed(coords); // the fields are views into it
        const auto parts = fields(coordsText, 3);
        if (parts.size() < 2)
            read.problems.push_back(at(label, coordsLine) + ": the coordinates '" + coordsText +
                                    "' hold no latitude; the point was left out");
        else
            take(read, points, {trimmed(parts[0]), trimmed(parts[1]), shown.empty() ? "NoName" : shown},
                 at(label, coordsLine));
    };
    while (!xml.atEnd()) {
        const auto token = xml.readNext();
        if (token == QXmlStreamReader::StartElement) {
            if (isNamed(xml, "LineString") || (rings && isNamed(xml, "LinearRing"))) {
                ++lineDepth;
            } else if (isNamed(xml, "Placemark")) {
                inPlacemark = true;
                name.clear();
                coordsLine = 0;
            } else if (isNamed(xml, "name") && inPlacemark && !track && name.empty()) {
                name = xml.readElementText(QXmlStreamReader::IncludeChildElements).toStdString();
            } else if (isNamed(xml, "coordinates")) {
                const long long line = xml.lineNumber();
                const std::string block =
                    xml.readElementText(QXmlStreamReader::IncludeChildElements).toStdString();
                if (track && lineDepth > 0) {
                    MarkerSet series;
                    coordinateBlock(read, series, block, at(label, line));
                    keep(read, std::move(series));
                } else if (!track && inPlacemark && coordsLine == 0) {
                    coords = block;
                    coordsLine = line;
                }
            }
        } else if (token == QXmlStreamReader::EndElement) {
            if (isNamed(xml, "LineString") || (rings && isNamed(xml, "LinearRing"))) {
                --lineDepth;
            } else if (isNamed(xml, "Placemark") && inPlacemark) {
                if (!track)
                    placemarkPoint();
                inPlacemark = false;
            }
        }
    }
    if (!track)
        keep(read, std::move(points));
    if (!notXml(read, xml, label, "KML"))
        noPoints(read, label, "holds no placemarks and no lines");
    return read;
}

GpsRead readGpx(std::string_view text, const std::string& label) {
    GpsRead read;
    // The track's points when there is a track, else the waypoints; no names either way.
    MarkerSet track, waypoints;
    QXmlStreamReader xml(bytes(text));
    int inSegment = 0;
    while (!xml.atEnd()) {
        const auto token = xml.readNext();
        if (token == QXmlStreamReader::StartElement) {
            if (isNamed(xml, "trkseg"))
                ++inSegment;
            else if ((isNamed(xml, "trkpt") && inSegment) || isNamed(xml, "wpt"))
                take(read, isNamed(xml, "wpt") ? waypoints : track,
                     {attribute(xml, "lon"), attribute(xml, "lat"), {}}, at(label, xml.lineNumber()));
        } else if (token == QXmlStreamReader::EndElement && isNamed(xml, "trkseg")) {
            --inSegment;
        }
    }
    keep(read, track.points.empty() ? std::move(waypoints) : std::move(track));
    if (!notXml(read, xml, label, "GPX"))
        noPoints(read, label, "holds no track points and no waypoints");
    return read;
}

GpsRead readWpt(std::string_view text, const std::string& label) {
    GpsRead read;
    MarkerSet set;
    const auto lines = SplitLines(text);
    bool started = false;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        std::string_view line = lines[i];
        if (!started)
            started = line.find("1,1,") != std::string_view::npos;
        if (!started || trimmed(line).empty())
            continue;
        const auto parts = fields(line, 5);
        if (parts.size() < 4) {
            read.problems.push_back(at(label, static_cast<long long>(i + 1)) +
                                    ": the waypoint has no latitude and longitude; it was left out");
            continue;
        }
        take(read, set, {trimmed(parts[3]), trimmed(parts[2]), {}}, at(label, static_cast<long long>(i + 1)));
    }
    keep(read, std::move(set));
    noPoints(read, label,
             started ? "holds no waypoints" : "holds no line with 1,1, where the waypoints begin");
    return read;
}

GpsRead readMkr(std::string_view text, const std::string& label) {
    GpsRead read;
    MarkerSet set;
    const std::string key = "Marker (";
    long long line = 1;
    std::size_t counted = 0;
    for (std::size_t at0 = text.find(key); at0 != std::string_view::npos;
         at0 = text.find(key, at0 + key.size())) {
        for (; counted < at0; ++counted)
            line += text[counted] == '\n';
        std::size_t end = text.find_first_of("\r\n", at0);
        std::string rest(
            text.substr(at0 + key.size(), end == std::string_view::npos ? end : end - at0 - key.size()));
        // Blanks may come in runs; words are what the marker holds.
        std::string collapsed;
        for (char c : rest)
            if (!(c == ' ' && !collapsed.empty() && collapsed.back() == ' '))
                collapsed += c;
        rest = trimmed(collapsed);
        if (!rest.empty() && rest.back() == ')')
            rest = trimmed(std::string_view(rest).substr(0, rest.size() - 1));
        const std::size_t blank = rest.find(' ');
        const std::string longitude = rest.substr(0, blank);
        std::string after =
            blank == std::string::npos ? std::string() : trimmed(std::string_view(rest).substr(blank + 1));
        std::size_t latEnd = after.find(' ');
        if (latEnd == std::string::npos)
            latEnd = after.find('\t');
        const std::string latitude = trimmed(std::string_view(after).substr(0, latEnd));
        const std::string name =
            latEnd == std::string::npos ? std::string() : cleanName(after.substr(latEnd + 1));
        set.named = set.named || !name.empty();
        take(read, set, {longitude, latitude, name}, at(label, line));
    }
    keep(read, std::move(set));
    noPoints(read, label, "holds no markers");
    return read;
}

GpsRead readPointCsv(std::string_view text, const std::string& label) {
    GpsRead read;
    MarkerSet set;
    const auto lines = SplitLines(text);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        std::string_view line = lines[i];
        while (!line.empty() && line.front() == '\n')
            line.remove_prefix(1);
        if (trimmed(line).empty())
            continue;
        const auto parts = fields(line, 3);
        if (parts.size() < 2) {
            read.problems.push_back(at(label, static_cast<long long>(i + 1)) + ": '" + std::string(line) +
                                    "' has one field, not a longitude and a latitude; it was left out");
            continue;
        }
        MarkerPoint p{trimmed(parts[0]), trimmed(parts[1]),
                      parts.size() > 2 ? cleanName(parts[2]) : std::string()};
        set.named = set.named || !p.name.empty();
        take(read, set, std::move(p), at(label, static_cast<long long>(i + 1)));
    }
    keep(read, std::move(set));
    noPoints(read, label, "holds no points");
    return read;
}

GpsRead readMarkerFile(const fs::path& file, bool fully) {
    const std::string kind = markerKind(file);
    const std::string label = file.string();
    GpsRead read;
    if (kind.empty() || (kind == "csv" && !fully)) {
        read.problems.push_back(label + ": " +
                                (fully ? "You have not selected a .kml,.wpt,.mkr,.gpx or .csv file?"
                                       : "You have not selected a .kml,.wpt,.mkr or .gpx file?"));
        return read;
    }
    std::error_code ec;
    if (!fs::is_regular_file(file, ec)) {
        read.problems.push_back(label + ": is not a regular file; it was not read");
        return read;
    }
    const std::string text = ReadTextFile(file);
    if (text.empty()) {
        read.problems.push_back(label + ": is empty or could not be read");
        return read;
    }
    if (kind == "kml")
        return readKml(text, label, fully);
    if (kind == "gpx")
        return readGpx(text, label);
    if (kind == "wpt")
        return readWpt(text, label);
    if (kind == "mkr")
        return readMkr(text, label);
    return readPointCsv(text, label);
}

} // namespace velmora::routes
