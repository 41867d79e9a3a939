// Route markers from the command line: GPS files to .csv, .dcsv and the routemarker blueprint,
// markers typed into a route, the precision of a .dcsv from its source, marker blueprint sources.

#include "session.h"
#include "velmora/routes/markers.h"
#include "velmora/routes/routes.h"

#include <algorithm>

namespace velmora::cli {

namespace {

const std::vector<std::string> kAllKinds = {"kml", "gpx", "wpt", "mkr", "csv"};

std::string list(const std::vector<std::string>& items) {
    std::string out = "[";
    for (std::size_t i = 0; i < items.size(); ++i)
        out += (i ? ", " : "") + jsonString(items[i]);
    return out + "]";
}

// Problems on standard error, the files and the closing message on standard output (or one JSON
// object). Exit 1 when something was named, 2 when nothing could be done.
int report(Session& s, const routes::MarkerReport& r, bool json) {
    std::vector<std::string> files;
    for (const auto& f : r.files)
        files.push_back(f.string());
    if (json) {
        s.out << "{\"ok\": " << (r.ok ? "true" : "false") << ", \"files\": " << list(files)
              << ",\n \"problems\": " << list(r.problems) << ",\n \"message\": " << jsonString(r.message)
              << "}\n";
        return !r.ok ? Error : r.problems.empty() ? Success : ProblemsFound;
    }
    for (const auto& p : r.problems)
        s.err << "velmora-cli: " << s.g.command << ": " << shown(p) << '\n';
    if (!r.ok)
        return s.fail(shown(r.message));
    for (const auto& f : files)
        s.out << "Wrote " << shown(f) << '\n';
    s.out << shown(r.message) << '\n';
    return r.problems.empty() ? Success : ProblemsFound;
}

std::optional<routes::MarkerColour> colour(Session& s, const std::string& text) {
    routes::MarkerColour c;
    int* parts[] = {&c.red, &c.green, &c.blue};
    std::size_t from = 0;
    for (int i = 0; i < 3; ++i) {
        const std::size_t comma = i < 2 ? text.find(',', from) : text.size();
        const auto n =
            comma == std::string::npos ? std::nullopt : parseNumber(text.substr(from, comma - from));
        if (!n || *n < 0 || *n > 255 || (i == 2 && text.find(',', from) != std::string::npos)) {
            s.fail("--colour: '" + text + "' is not R,G,B with each from 0 to 255");
            return std::nullopt;
        }
        *parts[i] = static_cast<int>(*n);
        from = comma + 1;
    }
    return c;
}

int cmdConvert(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--to", "--colour"}, {"--csv-only", "--json"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.empty())
        return s.fail("needs the marker files or the folders that hold them");
    const auto to = a.value("--to");
    if (!to || to->empty())
        return s.fail("needs --to DIR: Select Folder for saving your Markers");
    routes::ConvertOptions o;
    o.saveFolder = fs::absolute(fs::path(*to));
    o.csvOnly = a.has("--csv-only");
    if (const auto c = a.value("--colour")) {
        const auto parsed = colour(s, *c);
        if (!parsed)
            return Error;
        o.colour = *parsed;
    }
    s.start();
    std::vector<fs::path> inputs;
    for (const std::string& word : a.plain) {
        std::error_code ec;
        const fs::path p(word);
        if (fs::is_directory(p, ec)) {
            const auto found = routes::markerFilesIn(
                p, o.csvOnly ? std::vector<std::string>{"kml", "gpx", "wpt", "mkr"} : kAllKinds);
            inputs.insert(inputs.end(), found.begin(), found.end());
        } else if (fs::exists(fs::symlink_status(p, ec))) {
            inputs.push_back(p);
        } else {
            s.err << "velmora-cli: " << s.g.command << ": " << shown(word) << ": no such file or folder\n";
        }
    }
    if (inputs.empty())
        return s.fail("found no marker files (.kml, .gpx, .wpt, .mkr" +
                      std::string(o.csvOnly ? "" : ", .csv") + ")");
    return report(s, routes::convertMarkers(s.ctx, inputs, o), a.has("--json"));
}

int cmdAdd(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--file"}, {"--clear-caches", "--json"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() < 4 || (a.plain.size() - 1) % 3 != 0)
        return s.fail("needs the route, then NAME LAT LON for each marker");
    routes::RouteMarkerOptions o;
    for (std::size_t i = 1; i + 2 < a.plain.size(); i += 3) {
        const std::string& name = a.plain[i];
        const std::string& lat = a.plain[i + 1];
        const std::string& lon = a.plain[i + 2];
        if (const std::string wrong = routes::checkTypedMarker(lon, lat, name); !wrong.empty())
            return s.fail(shown(name) + ": " + wrong);
        o.points.push_back({lon, lat, name});
    }
    o.baseName = a.value("--file").value_or(a.plain[1]);
    o.clearBlueprintCaches = a.has("--clear-caches");
    const auto route = routeArgument(s, a.plain.front());
    if (!route)
        return Error;
    return report(s, routes::saveRouteMarkers(s.ctx, *route, o), a.has("--json"));
}

int cmdImprove(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--json"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.empty())
        return s.fail("needs the .dcsv files");
    s.start();
    if (!s.requireRoot())
        return Error;
    std::vector<fs::path> files;
    for (const auto& p : a.plain)
        files.push_back(fs::absolute(fs::path(p)));
    return report(s, routes::improveDcsv(s.ctx, files), a.has("--json"));
}

int cmdBlueprint(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--to"}, {"--json"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.empty())
        return s.fail("needs the kind: named, series or route");
    const std::string& kind = a.plain.front();
    const routes::BlueKind k = kind == "named"    ? routes::BlueKind::Named
                               : kind == "series" ? routes::BlueKind::Series
                                                  : routes::BlueKind::Route;
    if (kind != "named" && kind != "series" && kind != "route")
        return s.fail("'" + kind + "' is no kind of marker blueprint: named, series or route");
    const std::size_t words = k == routes::BlueKind::Route ? 4 : 3;
    if (a.plain.size() != words)
        return s.fail(k == routes::BlueKind::Route ? "needs NAME NAMED-CSV SERIES-CSV" : "needs NAME CSV");
    const auto to = a.value("--to");
    if (!to)
        return s.fail("needs --to DIR, the folder the blueprint is written to");
    s.start();
    return report(s,
                  routes::makeMarkerBlueprint(s.ctx, k, a.plain[1], {a.plain.begin() + 2, a.plain.end()},
                                              fs::absolute(fs::path(*to))),
                  a.has("--json"));
}

} // namespace

std::vector<Command> markerCommands() {
    return {
        {"markers convert", "FILE|FOLDER... --to DIR [--csv-only] [--colour R,G,B] [--json]",
         "GPS marker files (.kml .gpx .wpt .mkr .csv) to <name>.csv, .dcsv and .bin in DIR", cmdConvert, true,
         "A folder gives the marker files in it. --csv-only makes the point .csv of GPS files only. Outside "
         "an Assets "
         "folder the full conversion asks first (--yes goes on). --colour sets the line colour of series "
         "(default "
         "0,0,0). Old outputs are kept as .bak, .bak1 ...; bad points and files are named and the rest "
         "converted "
         "(exit 1)."},
        {"markers add", "ROUTE NAME LAT LON [NAME LAT LON ...] [--file BASENAME] [--clear-caches]",
         "named markers into the route's Assets\\<Provider>\\<Product>\\RouteMarkers as .dcsv and .bin",
         cmdAdd, true,
         "The folder comes from the BlueprintSetID of RouteProperties.xml. The file takes the first marker's "
         "name or "
         "--file, with a running number when a .dcsv of that name is there. --clear-caches takes the "
         "Blueprints.pak "
         "files below Assets away so the simulator rebuilds them (undo brings them back)."},
        {"markers improve", "DCSV... [--json]",
         "the X and Y of each .dcsv set again from its source .csv below <root>\\Source", cmdImprove},
        {"markers blueprint", "named|series|route NAME CSV [SERIES-CSV] --to DIR [--json]",
         "a marker blueprint source from BluePrints\\Blue_Named.xml, Blue_Series.xml or Blue_Route.xml",
         cmdBlueprint},
    };
}

} // namespace velmora::cli
