#include "velmora/assets/assetlist.h"

#include "velmora/assets/scanpath.h"
#include "velmora/core/convert.h"
#include "velmora/core/errorlog.h"
#include "velmora/core/parallel.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"
#include "velmora/core/xmltext.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <deque>
#include <thread>

namespace velmora::assets {

namespace {

bool contains(std::string_view text, std::string_view what) { return InStr(1, text, what, Match::Text) > 0; }

bool endsWithIgnoringCase(std::string_view text, std::string_view end) { return iendsWith(text, end); }

// Folders that hold no rolling stock, tested on the path alone.
constexpr const char* kNotRollingStock[] = {
    "scenery\\",  "Network\\",   "RailSimulatorCore", "Station",   "Weather\\",   "Markers",     "Audio",
    "Lights\\",   "Particles",   "TimeOfDay",         "TemplateRoutes", "System\\", "LevelCrossings",
    "Procedural", "Environment", "Bogeys",            "Bogies",    "Camera",      "Wheels",      "\\Simulation",
    "Foliage",    "CabView",     "Number",            "Texture",   "SignalBox",   "icepak",      "Bridge",
    "\\farm",     "\\Churches",  "\\Industrial",      "\\Misc\\",  "\\Bahnhof",   "\\Bahnsteige", "\\Bruecke",
    "\\Fremdes",  "Gantry",      "\\Haus",            "\\Lampen",  "\\Schilder",  "\\Signal",    "\\Stellwerke",
    "\\Strassen", "\\Sign",      "\\Crew",            "\\Lights",  "\\Objekte",   "Fragment",    "Consist",
    "\\Clock",
};
constexpr std::size_t kUpToIcepak = 26; // the Quick Drive list stops after "icepak"

bool excludedFolder(const std::string& full, bool quickDrive) {
    const std::size_t count = quickDrive ? kUpToIcepak : std::size(kNotRollingStock);
    for (std::size_t i = 0; i < count; ++i) {
        std::string_view word = kNotRollingStock[i];
        if (quickDrive && word == "Station")
            word = "Stations";
        if (contains(full, word))
            return true;
    }
    return false;
}

// The first folder of the path with this name, as a whole component: a user's own folder
// such as "GameAssets" above the simulator must not be taken for it. Zero-based; npos if none.
std::size_t folderNamed(const std::string& full, std::string_view root) {
    const std::string component = "\\" + std::string(root) + "\\";
    const std::size_t at = InStr(1, full, component, Match::Text);
    return at == 0 ? std::string::npos : at; // at is one-based: the zero-based start of the name
}

// Provider, Product and the rest below the folder named `root` in the path.
bool splitBelow(const std::string& full, std::string_view root, std::size_t offset, std::string& provider,
                std::string& product, std::string& rest) {
    const std::size_t at = folderNamed(full, root);
    if (at == std::string::npos)
        return false;
    const std::size_t start = at + offset;
    const std::size_t b1 = full.find('\\', start);
    if (b1 == std::string::npos)
        return false;
    const std::size_t b2 = full.find('\\', b1 + 1);
    if (b2 == std::string::npos)
        return false;
    provider = full.substr(start, b1 - start);
    product = full.substr(b1 + 1, b2 - b1 - 1);
    rest = full.substr(b2 + 1);
    return true;
}

std::string effectiveFilter(const std::string& filter) {
    return iequals(filter, "Freight") ? std::string("Freight Wagon") : filter;
}

bool filterRejects(const std::string& filter, const std::string& value) {
    return !filter.empty() && !iequals(filter, value);
}

std::string detail(const std::string& xml, std::string_view tag) {
    std::size_t pos = 1;
    std::string value;
    GetDetail(xml, pos, tag, value, {Match::Text});
    return value;
}

struct Candidate {
    fs::path file;
    std::string full; // with backslashes
    std::string name;
    bool convert;
};

enum class Kind { Skip, Invalid, Row };

struct Outcome {
    Kind kind = Kind::Skip;
    AssetRow row;
    bool simulation = false;
    std::string error; // why the document could not be read
};

Outcome buildBlueprint(const Candidate& c, const AssetListOptions& options) {
    Outcome out;
    std::string provider, product, rest;
    const bool underAssets = folderNamed(c.full, "Assets") != std::string::npos;
    const bool split = underAssets ? splitBelow(c.full, "Assets", 7, provider, product, rest)
                                   : splitBelow(c.full, "Content", 8, provider, product, rest);
    if (!split) {
        const bool named = underAssets || folderNamed(c.full, "Content") != std::string::npos;
        out.kind = named ? Kind::Invalid : Kind::Skip;
        return out;
    }
    std::string xml;
    if (const ConvertResult r = binToXmlText(c.file, xml); !r) {
        out.error = r.message; // no row, as for any document that gives no XML; but it is named
        return out;
    }
    auto row = blueprintRow(xml, provider, product, rest, options);
    if (!row)
        return out;
    out.kind = Kind::Row;
    out.row = std::move(*row);
    out.simulation = contains(c.full, "\\Simulation");
    return out;
}

Outcome buildPlain(const Candidate& c) {
    Outcome out;
    std::string provider, product, rest;
    if (!splitBelow(c.full, "Assets", 7, provider, product, rest)) {
        out.kind = folderNamed(c.full, "Assets") != std::string::npos ? Kind::Invalid : Kind::Skip;
        return out;
    }
    out.kind = Kind::Row;
    out.row.provider = provider;
    out.row.product = product;
    out.row.path = rest;
    return out;
}

} // namespace

bool passesPathTests(const std::string& full, const std::string& name, const AssetListOptions& options) {
    if (options.quickDriveConsists) {
        if (!contains(full, "PreLoad"))
            return false;
        if (!options.category.empty() && contains(full, options.category))
            return true;
        return !(options.rollingStockOnly && excludedFolder(full, true));
    }
    if (options.excludePreload && contains(full, "PreLoad"))
        return false;
    if (options.singleFile && !iequals(name, *options.singleFile))
        return false;
    if (endsWithIgnoringCase(name, ".ap"))
        return false;
    if (!options.rollingStockOnly)
        return true;
    if (options.defaultFolders)
        return contains(full, "RailVehicles") &&
               (contains(full, "\\Engine\\") || contains(full, "\\Tender\\") || contains(full, "\\Freight\\") ||
                contains(full, "\\Passenger\\"));
    return !excludedFolder(full, false);
}

std::optional<AssetRow> blueprintRow(const std::string& xml, const std::string& provider, const std::string& product,
                                     const std::string& path, const AssetListOptions& options) {
    // What rolling stock is here: a rail vehicle, or a reskin of one.
    const bool reskin = contains(xml, "<cReskinBlueprint>");
    if (options.rollingStockOnly && !contains(xml, "<RailVehicle") && !reskin)
        return std::nullopt;

    AssetRow row{provider, product, path, {}, {}, {}, {}, {}};
    std::string name = detail(xml, options.languageTag.empty() ? "English" : options.languageTag);
    if (name.empty())
        name = detail(xml, "English");
    if (name.empty())
        name = "No Name";
    DecodeChars(name);
    if (name == "No Name")
        return std::nullopt;
    name.erase(std::remove(name.begin(), name.end(), ','), name.end());
    row.name = name;

    const std::size_t blueprintAt = InStr(1, xml, "<Blueprint>", Match::Text);
    const std::size_t c = InStr(blueprintAt + 5, xml, "<c", Match::Text);
    if (c > 0) {
        const std::size_t gt = xml.find('>', c + 1);
        row.blueprint = xml.substr(c + 1, gt == std::string::npos ? std::string::npos : gt - c - 1);
    }

    const std::string filter = options.quickDriveConsists ? options.category : effectiveFilter(options.category);
    bool inSceneKnown = false;
    if (contains(xml, "<Category")) {
        std::string category = detail(xml, "Category");
        if (category.empty())
            return std::nullopt;
        if (category[0] == 'e')
            category.erase(0, 1);
        if (filterRejects(filter, category))
            return std::nullopt;
        row.category = category;
    } else if (contains(xml, "<EngineType")) {
        row.category = detail(xml, "EngineType");
        row.inScene = "Yes";
        inSceneKnown = true;
    } else if (contains(xml, "<cWagonBlueprint")) {
        row.category = contains(xml, "Passenger") ? "Passenger" : "Freight Wagon";
        row.inScene = "Yes";
        inSceneKnown = true;
    } else if (contains(xml, "<cTenderBlueprint")) {
        row.category = "Tender";
        row.inScene = "Yes";
        inSceneKnown = true;
    } else if (contains(xml, "<cTrackSectionBlueprint")) {
        row.category = "Track Section";
        row.inScene = "No";
        inSceneKnown = true;
    } else if (contains(xml, "<cRoadSectionBlueprint") || contains(xml, "<cLoftSectionBlueprint")) {
        row.category = "Road Section"; // lofts are listed as road sections too
        row.inScene = "No";
        inSceneKnown = true;
    }
    if (!inSceneKnown && contains(xml, "<ValidInScenarios")) {
        const std::string valid = detail(xml, "ValidInScenarios");
        if (valid == "eFalse")
            row.inScene = "No";
        else if (valid == "eTrue")
            row.inScene = "Yes";
    }
    if (filterRejects(filter, row.category))
        return std::nullopt;
    if (row.inScene.empty())
        row.inScene = "No";
    return row;
}

AssetListResult buildAssetList(const fs::path& startFolder, const AssetListOptions& options, UserInterface* ui) {
    AssetListResult result;
    result.categoryFilter = options.category;

    // The walk, on this thread, decides every file that can be decided by its path; the
    // conversions start on the other cores as soon as the walk finds their files, and each
    // outcome lands in its candidate's slot.
    ParallelFeed<Candidate, Outcome> feed(options.threads, ui, [&](const Candidate& c) {
        if (!c.convert)
            return buildPlain(c);
        return onePiece([&] { return buildBlueprint(c, options); }, [&](const std::string& why) {
            Outcome failed;
            failed.error = c.file.string() + ": " + why;
            return failed;
        });
    });
    cScanPath scan;
    scan.useListSettings(options.mask, options.zeroLength);
    if (ui)
        ui->beginProgress("Looking for files in " + startFolder.string(), 0);
    long seen = 0;
    scan.FileMatch = [&](const std::string& path, const std::string& name) {
        std::string full = path + name;
        std::replace(full.begin(), full.end(), '/', '\\');
        if (ui && ++seen % 256 == 0) {
            ui->progress(seen, "Looking at " + path);
            if (ui->cancelled())
                scan.StopScan();
        }
        if (!passesPathTests(full, name, options))
            return;
        const bool convert = options.convertBins && endsWithIgnoringCase(name, ".bin");
        feed.add({fs::path(path) / name, std::move(full), name, convert});
    };
    // The walk's own paths are cut at "\Assets\": a relative start folder has no such part.
    std::error_code absoluteError;
    const fs::path start = fs::absolute(startFolder, absoluteError);
    scan.StartScan(absoluteError ? startFolder : start, true, false, true, false);
    result.unreadable = scan.UnreadableFolders();
    if (options.log)
        for (const auto& folder : result.unreadable)
            options.log->log("frmAssets", "Command1_Click", err::PermissionDenied, folder);
    if (scan.stopped()) {
        feed.cancel();
        result.stopped = true;
        if (ui)
            ui->endProgress();
        return result;
    }

    bool stop = false;
    std::vector<Outcome> outcomes = feed.finish("Reading blueprints", stop);
    if (stop) {
        result.stopped = true;
        return result;
    }
    const std::deque<Candidate>& candidates = feed.items();

    // The merge, in walk order: the running number counts every row built, even one that is
    // then left out because it lies below a Simulation folder.
    long running = 0;
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        Outcome& o = outcomes[i];
        if (candidates[i].convert)
            ++result.converted;
        if (!o.error.empty()) {
            if (options.log)
                options.log->log("frmAssets", "Command1_Click", err::Conversion, o.error);
            result.unreadable.push_back(std::move(o.error));
        }
        if (o.kind == Kind::Invalid) {
            result.messages.push_back(candidates[i].full + " is invalid and contains errors");
            continue;
        }
        if (o.kind != Kind::Row)
            continue;
        o.row.index = std::to_string(++running);
        if (!o.simulation)
            result.rows.push_back(std::move(o.row));
    }
    if (result.converted > 0 && !options.quickDriveConsists)
        result.categoryFilter = effectiveFilter(options.category);
    return result;
}

} // namespace velmora::assets
