// Marker files to the point .csv, the .dcsv and the routemarker blueprint, written into the
// save folder through the write service: an old output is kept under its numbered backup name,
// and one run is one journal entry.

#include "velmora/routes/markers.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/templates.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/userinterface.h"
#include "velmora/core/xmltext.h"

#include <algorithm>

namespace velmora::routes {

namespace {

const char* const kClosing = "\t</CSVItem>\r\n</cCSVArray>\r\n";

// A name or value as the document holds it: UTF-8 with the XML escapes.
std::string inDocument(const std::string& text) {
    return documentText(text);
}

WriteOptions scratch() {
    WriteOptions o;
    o.backup = Backup::None;
    o.journal = false;
    return o;
}

std::string stemOf(const fs::path& file) {
    const std::string name = file.filename().string();
    return name.size() > 4 ? name.substr(0, name.size() - 4) : name;
}

bool sameFile(const fs::path& a, const fs::path& b) {
    std::error_code ec;
    return fs::exists(a, ec) && fs::exists(b, ec) && fs::equivalent(a, b, ec);
}

struct Templates {
    std::string header, body, marker;
};

// The three templates, read whole before a run; false with the missing one named.
bool readTemplates(AppContext& ctx, Templates& t, std::string& error) {
    t.header = readTemplate(ctx, "DCSVHeader.txt", error);
    t.body = readTemplate(ctx, "DCSVBody.txt", error);
    t.marker = readTemplate(ctx, "routemarker.txt", error);
    return error.empty();
}

// Writes the .dcsv and the blueprint of one set; the blueprint's XML lies in TempFiles first and
// stays there when the codec refuses it.
void writeFull(AppContext& ctx, const Templates& t, const MarkerSet& set, const fs::path& folder,
               const std::string& base, const MarkerColour& colour, MarkerReport& r) {
    const fs::path dcsv = folder / (base + ".dcsv");
    if (const WriteResult w = ctx.files().write(dcsv, dcsvText(t.header, t.body, set, base)); w)
        r.files.push_back(dcsv);
    else
        r.problems.push_back(w.message);
    std::string below = pathBelowAssets(folder / base);
    if (below.empty())
        below = base;
    const std::string xml = routeMarkerXml(t.marker, base, below, set.named, colour);
    const fs::path xmlFile = ctx.tempFiles() / (base + ".xml");
    ctx.files().write(xmlFile, xml, scratch());
    std::string bin;
    const ConvertResult converted = xmlTextToBin(xml, bin, xmlFile.string());
    if (!converted || bin.empty()) {
        r.problems.push_back("Serz.exe could not convert file " + base +
                             ".xml\nThis is a limitation of Serz.exe and "
                             "out of my control. (" +
                             converted.message + ")");
        return;
    }
    const fs::path binFile = folder / (base + ".bin");
    if (const WriteResult w = ctx.files().write(binFile, bin); w)
        r.files.push_back(binFile);
    else
        r.problems.push_back(w.message);
}

std::string fieldOf(std::string_view line, int index) {
    for (int i = 0; i < index; ++i) {
        const std::size_t comma = line.find(',');
        if (comma == std::string_view::npos)
            return {};
        line.remove_prefix(comma + 1);
    }
    const std::size_t comma = line.find(',');
    std::string out(line.substr(0, comma));
    out.erase(0, out.find_first_not_of(" \t\n"));
    out.erase(out.find_last_not_of(" \t\r\n") + 1);
    return out;
}

} // namespace

std::string pointCsvText(const MarkerSet& set) {
    std::string out;
    for (const MarkerPoint& p : set.points) {
        out += p.longitude + "," + p.latitude;
        if (!p.name.empty())
            out += "," + p.name;
        out += "\r\n";
    }
    return out;
}

std::string colourText(int value) {
    // Four decimals by integer arithmetic, so that no locale's decimal comma gets in.
    value = std::clamp(value, 0, 255);
    const int tenThousandths = (value * 10000 * 2 + 255) / (255 * 2);
    std::string decimals = std::to_string(tenThousandths % 10000);
    decimals.insert(0, 4 - decimals.size(), '0');
    return std::to_string(tenThousandths / 10000) + "." + decimals;
}

std::string dcsvText(const std::string& header, const std::string& body, const MarkerSet& set,
                     const std::string& baseName) {
    std::string out = header;
    std::size_t n = 0;
    for (const MarkerPoint& p : set.points)
        out += fillTemplate(body, {{"ccccc", std::to_string(++n)},
                                   {"ddddd", inDocument(p.name.empty() ? baseName : p.name)},
                                   {"aaaa", p.longitude},
                                   {"bbbb", p.latitude}});
    return out + kClosing;
}

std::string routeMarkerXml(const std::string& templ, const std::string& baseName, const std::string& csvPath,
                           bool named, const MarkerColour& colour) {
    const std::string zero = "0.0000";
    return fillTemplate(templ, {{"aaaa", inDocument(baseName)},
                                {"bbbb", named ? inDocument(csvPath) : std::string()},
                                {"cccc", named ? std::string() : inDocument(csvPath)},
                                {"dddd", named ? zero : colourText(colour.red)},
                                {"eeee", named ? zero : colourText(colour.green)},
                                {"ffff", named ? zero : colourText(colour.blue)},
                                {"gggg", zero}});
}

std::string pathBelowAssets(const fs::path& file) {
    std::vector<std::string> parts;
    for (const auto& part : file)
        parts.push_back(part.string());
    for (std::size_t i = parts.size(); i-- > 0;)
        if (iequals(parts[i], "Assets")) {
            std::string out;
            for (std::size_t k = i + 1; k < parts.size(); ++k)
                out += (out.empty() ? "" : "\\") + parts[k];
            return out;
        }
    return {};
}

std::vector<fs::path> markerFilesIn(const fs::path& folder, const std::vector<std::string>& kinds) {
    std::vector<fs::path> out;
    std::error_code ec;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        if (entryKind(*it) != EntryKind::File)
            continue;
        const std::string kind = markerKind(it->path());
        if (!kind.empty() && std::find(kinds.begin(), kinds.end(), kind) != kinds.end())
            out.push_back(it->path());
    }
    std::sort(out.begin(), out.end());
    return out;
}

MarkerReport convertMarkers(AppContext& ctx, const std::vector<fs::path>& inputs,
                            const ConvertOptions& options) {
    MarkerReport r;
    UserInterface& ui = ctx.ui();
    if (options.saveFolder.empty()) {
        r.message = "Select Folder for saving your Markers";
        return r;
    }
    Templates t;
    std::string error;
    if (!options.csvOnly && !readTemplates(ctx, t, error)) {
        r.message = error;
        return r;
    }
    if (!options.csvOnly && pathBelowAssets(options.saveFolder / "x").empty() &&
        ui.ask("You are not saving into your Assets folder? If this is only a Test your .bin file will be "
               "invalid.\n"
               "Do you wish to continue?",
               Buttons::YesNo, Icon::Warning) != Answer::Yes) {
        r.message = "Nothing was converted.";
        return r;
    }
    JournalCommand entry(&ctx.journal(),
                         (options.csvOnly ? "Process Marker files into " : "Convert Marker files into ") +
                             options.saveFolder.string());
    ui.beginProgress("Converting Marker files", static_cast<std::int64_t>(inputs.size()));
    std::int64_t done = 0;
    for (const fs::path& input : inputs) {
        if (ui.cancelled()) {
            r.aborted = true;
            break;
        }
        ui.progress(done++, input.filename().string());
        GpsRead read = readMarkerFile(input, !options.csvOnly);
        r.problems.insert(r.problems.end(), read.problems.begin(), read.problems.end());
        for (std::size_t k = 0; k < read.sets.size(); ++k) {
            // A file with several lines gives several outputs: name, name2, name3 ...
            const std::string base = stemOf(input) + (k ? std::to_string(k + 1) : std::string());
            const fs::path csv = options.saveFolder / (base + ".csv");
            if (sameFile(csv, input)) {
                r.problems.push_back(input.string() + ": lies in the folder you are saving to and would be "
                                                      "overwritten by its own output; it was not converted");
                continue;
            }
            if (const WriteResult w = ctx.files().write(csv, pointCsvText(read.sets[k])); w)
                r.files.push_back(csv);
            else
                r.problems.push_back(w.message);
            if (!options.csvOnly)
                writeFull(ctx, t, read.sets[k], options.saveFolder, base, options.colour, r);
        }
    }
    ui.progress(done, {});
    ui.endProgress();
    r.ok = !r.aborted;
    r.message =
        r.aborted
            ? "Aborted: the files converted before stay converted."
            : "All selected Marker files have been converted to .csv files and are located\nin folder " +
                  options.saveFolder.string();
    return r;
}

std::string improvedDcsvText(std::string dcsv, std::string_view sourceCsv) {
    std::size_t from = 1;
    for (const std::string& line : SplitLines(sourceCsv)) {
        if (line.find(',') == std::string::npos)
            continue;
        const std::size_t x = InStr(from, dcsv, "<X", Match::Binary);
        if (x == 0)
            break;
        std::size_t pos = x;
        PutDetail(dcsv, pos, "X", fieldOf(line, 0));
        const std::size_t y = InStr(x, dcsv, "<Y", Match::Binary);
        if (y == 0)
            break;
        pos = y;
        PutDetail(dcsv, pos, "Y", fieldOf(line, 1));
        from = y + 1;
    }
    return dcsv;
}

MarkerReport improveDcsv(AppContext& ctx, const std::vector<fs::path>& dcsvFiles) {
    MarkerReport r;
    JournalCommand entry(&ctx.journal(), "Process DCSV");
    for (const fs::path& file : dcsvFiles) {
        if (ctx.ui().cancelled()) {
            r.aborted = true;
            break;
        }
        const std::string below = pathBelowAssets(file);
        std::optional<fs::path> source;
        if (!below.empty() && below.size() > 4)
            source =
                ctx.resolver.resolve(ctx.railWorks(), "Source\\" + below.substr(0, below.size() - 4) + "csv");
        if (!source || !FileExists(*source)) {
            r.problems.push_back("The original Source .csv for " + file.string() + " could not be found");
            continue;
        }
        std::string text = ReadTextFile(file);
        if (text.rfind("SERZ", 0) == 0 && !binToXmlText(file, text)) {
            r.problems.push_back(file.string() + ": could not be read as a .dcsv");
            continue;
        }
        if (text.find("<X") == std::string::npos) {
            r.problems.push_back(file.string() + ": holds no X values; it was left as it is");
            continue;
        }
        if (const WriteResult w = ctx.files().write(file, improvedDcsvText(text, ReadTextFile(*source))); w)
            r.files.push_back(file);
        else
            r.problems.push_back(w.message);
    }
    r.ok = !r.aborted;
    r.message = r.aborted ? "Aborted: the files improved before stay improved."
                          : "Precision of .DCSV files has been improved, a backup has been made.";
    return r;
}

std::string checkTypedMarker(const std::string& longitude, const std::string& latitude,
                             const std::string& name) {
    if (longitude.empty())
        return "You have not given a longitude";
    if (latitude.empty())
        return "You have not given a latitude";
    if (name.empty())
        return "You have not given a name";
    const GpsRead read = readPointCsv(longitude + "," + latitude + "," + name, "the marker");
    return read.problems.empty() ? std::string() : read.problems.front();
}

fs::path routeMarkerFolder(AppContext& ctx, const RouteEntry& route, std::string& error) {
    const auto properties = ctx.resolver.resolve(route.path, "RouteProperties.xml");
    const std::string text = properties ? ReadTextFile(*properties) : std::string();
    std::size_t pos = InStr(1, text, "<BlueprintSetID", Match::Binary);
    std::string provider, product;
    if (pos)
        GetDetail(text, pos, "Provider", provider);
    if (pos)
        GetDetail(text, pos, "Product", product);
    if (provider.empty() || product.empty()) {
        error = (route.path / "RouteProperties.xml").string() +
                ": names no BlueprintSetID with a Provider and Product";
        return {};
    }
    return ctx.resolver.resolveForWrite(ctx.railWorks(), "Assets\\" + fileNameFromText(shownName(provider)) +
                                                             "\\" + fileNameFromText(shownName(product)) +
                                                             "\\RouteMarkers");
}

std::string freeMarkerName(const fs::path& folder, const std::string& base) {
    std::error_code ec;
    std::string name = base;
    for (int n = 1;
         fs::exists(folder / (name + ".dcsv"), ec) || fs::is_symlink(folder / (name + ".dcsv"), ec); ++n)
        name = base + std::to_string(n);
    return name;
}

MarkerReport saveRouteMarkers(AppContext& ctx, const RouteEntry& route, const RouteMarkerOptions& options) {
    MarkerReport r;
    if (options.points.empty()) {
        r.message = "There are no markers in the list to save.";
        return r;
    }
    Templates t;
    std::string error;
    const fs::path folder = routeMarkerFolder(ctx, route, error);
    if (folder.empty() || !readTemplates(ctx, t, error)) {
        r.message = error;
        return r;
    }
    MarkerSet set{options.points, true};
    for (const MarkerPoint& p : set.points)
        if (const std::string wrong = checkTypedMarker(p.longitude, p.latitude, p.name); !wrong.empty()) {
            r.message = wrong;
            return r;
        }
    const std::string base = freeMarkerName(
        folder, fileNameFromText(options.baseName.empty() ? std::string("Markers") : options.baseName));
    JournalCommand entry(&ctx.journal(), "Adding Markers to " + route.name);
    writeFull(ctx, t, set, folder, base, {}, r);
    std::size_t removed = 0;
    if (options.clearBlueprintCaches)
        if (const auto assets = ctx.resolver.resolve(ctx.railWorks(), "Assets")) {
            std::vector<fs::path> caches;
            std::error_code ec;
            for (fs::recursive_directory_iterator it(*assets, ec), end; !ec && it != end; it.increment(ec))
                if (entryKind(*it) == EntryKind::File &&
                    iequals(it->path().filename().string(), "Blueprints.pak"))
                    caches.push_back(it->path());
            for (const fs::path& cache : caches)
                if (const WriteResult w = ctx.files().remove(cache); !w)
                    r.problems.push_back(w.message);
                else
                    ++removed;
        }
    r.ok = r.problems.empty();
    r.message = r.ok ? "Adding Markers to " + route.name + ": " + base + " is in " + folder.string()
                     : "Adding Markers to " + route.name + " did not go through whole.";
    if (options.clearBlueprintCaches)
        r.message += "\n" + std::to_string(removed) +
                     " Blueprints.pak file(s) taken away; the simulator rebuilds them.";
    return r;
}

MarkerReport makeMarkerBlueprint(AppContext& ctx, BlueKind kind, const std::string& name,
                                 const std::vector<std::string>& csvNames, const fs::path& folder) {
    MarkerReport r;
    const char* file = kind == BlueKind::Named    ? "Blue_Named.xml"
                       : kind == BlueKind::Series ? "Blue_Series.xml"
                                                  : "Blue_Route.xml";
    const std::size_t needed = kind == BlueKind::Route ? 2 : 1;
    if (name.empty() || csvNames.size() < needed ||
        std::any_of(csvNames.begin(), csvNames.end(), [](const std::string& c) { return c.empty(); })) {
        r.message = kind == BlueKind::Route ? "Give the blueprint's name and the names of both .csv files."
                                            : "Give the blueprint's name and the name of its .csv file.";
        return r;
    }
    const auto templ = ctx.resolver.resolve(ctx.dataPath(), std::string("BluePrints/") + file);
    const std::string text = templ ? ReadTextFile(*templ) : std::string();
    if (text.empty()) {
        r.message = (ctx.dataPath() / "BluePrints" / file).string() + ": the template is missing or empty.";
        return r;
    }
    auto csv = [](std::string c) { return iendsWith(c, ".csv") ? c : c + ".csv"; };
    std::vector<std::pair<std::string, std::string>> tokens{{"ZZZZZZ", inDocument(name)},
                                                            {"XXXXXX", inDocument(csv(csvNames[0]))}};
    if (kind == BlueKind::Route)
        tokens.emplace_back("YYYYYY", inDocument(csv(csvNames[1])));
    const fs::path target = folder / (fileNameFromText(name) + ".xml");
    JournalCommand entry(&ctx.journal(), "Make Blueprint " + target.filename().string());
    const WriteResult w = ctx.files().write(target, fillTemplate(text, tokens));
    if (!w) {
        r.message = w.message;
        return r;
    }
    r.ok = true;
    r.files.push_back(target);
    r.message = "Your template has been written to:-\n" + folder.string();
    return r;
}

} // namespace velmora::routes
