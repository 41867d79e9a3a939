#pragma once
// Route markers from GPS tools: the points of a .kml, .gpx, .wpt, .mkr or point .csv file, the
// plain .csv of those points, the simulator's .dcsv and the routemarker blueprint that names it,
// and the markers typed by hand into a route's own RouteMarkers folder.
//
// Coordinates stay the exact text of the source from the first read to the last write: they are
// parsed only to check that they are numbers in range, never to be written again.

#include "velmora/routes/routes.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {
class AppContext;
}

namespace velmora::routes {

namespace fs = std::filesystem;

struct MarkerPoint {
    std::string longitude, latitude; // as the source wrote them
    std::string name;                // empty for a point of a series
};

// The points of one output file. A set in which a name was read is a set of named markers; any
// other is a series, drawn as a line.
struct MarkerSet {
    std::vector<MarkerPoint> points;
    bool named = false;
};

struct GpsRead {
    std::vector<MarkerSet> sets;       // one output each; a track with several lines gives several
    std::vector<std::string> problems; // each names the file, and the line where there is one
};

// What kind of marker file a name is, by its last four characters in any case: "kml", "gpx",
// "wpt", "mkr", "csv"; empty for any other.
std::string markerKind(const fs::path& file);

// The readers, on the text of a file; `label` names it in the problems. `rings` takes the
// LinearRing of a .kml as a line too, as Convert Fully does.
GpsRead readKml(std::string_view text, const std::string& label, bool rings);
GpsRead readGpx(std::string_view text, const std::string& label);
GpsRead readWpt(std::string_view text, const std::string& label);
GpsRead readMkr(std::string_view text, const std::string& label);
GpsRead readPointCsv(std::string_view text, const std::string& label);
// A marker file by its kind; a file of no known kind, or not a regular file, is a problem.
GpsRead readMarkerFile(const fs::path& file, bool fully);

// The point .csv: "<longitude>,<latitude>[,<name>]" a line, each ended by CR LF, no header.
std::string pointCsvText(const MarkerSet& set);

struct MarkerColour {
    int red = 0, green = 0, blue = 0; // 0 to 255, as the sliders stand
};
// A slider's value as its label shows it and the blueprint takes it: its share of 255, "0.0000".
std::string colourText(int value);

// The .dcsv: the header, the body filled for each point (running number, longitude, latitude,
// name or else `baseName`), then the closing text.
std::string dcsvText(const std::string& header, const std::string& body, const MarkerSet& set,
                     const std::string& baseName);
// The routemarker blueprint's XML: `csvPath` is the .dcsv's path below Assets without ".dcsv".
std::string routeMarkerXml(const std::string& templ, const std::string& baseName, const std::string& csvPath,
                           bool named, const MarkerColour& colour);
// The path of a file below the Assets folder that holds it, with backslashes (the product's
// folders and the file); empty when no folder of the path is called Assets.
std::string pathBelowAssets(const fs::path& file);

struct MarkerReport {
    bool ok = false;
    bool aborted = false;
    std::string message;               // the closing message, or what stopped the run
    std::vector<std::string> problems; // named files, lines and conversions that went wrong
    std::vector<fs::path> files;       // written, in order
};

struct ConvertOptions {
    fs::path saveFolder;  // Text1
    bool csvOnly = false; // Process: the .csv only; else Convert Fully
    MarkerColour colour;  // of series lines
};

// Process (csv only) or Convert Fully of the given files into the save folder, one journal
// entry. Outside Assets, Convert Fully asks first whether to go on.
MarkerReport convertMarkers(AppContext& ctx, const std::vector<fs::path>& inputs,
                            const ConvertOptions& options);

// The marker files of a folder (the file list's pattern), regular files only, sorted.
std::vector<fs::path> markerFilesIn(const fs::path& folder, const std::vector<std::string>& kinds);

// Process DCSV: each .dcsv's X and Y set from its source .csv below <root>\Source.
MarkerReport improveDcsv(AppContext& ctx, const std::vector<fs::path>& dcsvFiles);
// The .dcsv text with the X and Y of each item, in order, set from the lines of `sourceCsv`.
std::string improvedDcsvText(std::string dcsv, std::string_view sourceCsv);

// ---- Markers typed by hand into a route (frmMKRE)

// A point typed into the list: the three boxes checked, "You have not given a longitude" etc.
// Empty when all were given.
std::string checkTypedMarker(const std::string& longitude, const std::string& latitude,
                             const std::string& name);
// <Assets>\<Provider>\<Product>\RouteMarkers of the route, from the first BlueprintSetID of its
// RouteProperties.xml; empty with `error` set when the route names none.
fs::path routeMarkerFolder(AppContext& ctx, const RouteEntry& route, std::string& error);
// The first free base name in `folder`: `base`, then base1, base2 ... while a .dcsv of it exists.
std::string freeMarkerName(const fs::path& folder, const std::string& base);

struct RouteMarkerOptions {
    std::string baseName; // the file's name, before a running number
    std::vector<MarkerPoint> points;
    bool clearBlueprintCaches = false; // take the Blueprints.pak files below Assets away
};
// Save Markers: the .dcsv and the blueprint in the route's RouteMarkers folder, one journal
// entry; the caches taken away are part of it, so an undo brings them back.
MarkerReport saveRouteMarkers(AppContext& ctx, const RouteEntry& route, const RouteMarkerOptions& options);

// ---- Make Blueprint (frmBlue)

enum class BlueKind { Named = 1, Series = 2, Route = 3 };
// The marker blueprint source from data/BluePrints: Blue_Named.xml, Blue_Series.xml or
// Blue_Route.xml with ZZZZZZ the name and XXXXXX (and YYYYYY) the .csv names, written to
// <folder>\<name>.xml.
MarkerReport makeMarkerBlueprint(AppContext& ctx, BlueKind kind, const std::string& name,
                                 const std::vector<std::string>& csvNames, const fs::path& folder);

} // namespace velmora::routes
