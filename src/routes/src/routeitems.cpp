#include "velmora/routes/routeitems.h"

#include "tiles.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/errorlog.h"
#include "velmora/core/parallel.h"
#include "velmora/core/services.h"

#include <algorithm>
#include <set>

namespace velmora::routes {

using namespace detail;

std::string tileNumber(const std::string& value) {
    const bool negative = !value.empty() && value.front() == '-';
    std::string digits;
    for (char ch : value) {
        if (ch == '.')
            break;
        if (ch >= '0' && ch <= '9')
            digits += ch;
    }
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
    if (digits.size() < 6)
        digits.insert(0, 6 - digits.size(), '0');
    return (negative ? "-" : "+") + digits;
}

namespace {

// How the items of one kind of tile are found.
struct PlacedKind {
    const char* folder; // below the route
    const char* label;
    const char* tag;    // the element that holds one item
    bool track;         // a track ribbon: its tile from the route coordinates, then every reference
};

const PlacedKind kPlacedKinds[] = {
    {"Scenery", "(Scenery Item)", "<cDynamicEntity", false},
    {"Networks\\Loft Tiles", "(Loft Item)", "<Network-cLoftRibbon", false},
    {"Networks\\Road Tiles", "(Road Item)", "<Network-cRoadRibbon", false},
    {"Networks", "(Track Item)", "<Network-cTrackRibbon", true},
};

struct PlacedJob {
    fs::path file;
    const PlacedKind* kind;
};

struct PlacedScan {
    std::vector<PlacedItem> items;
    std::string warning;
    std::string error;
};

// The next reference at or after `pos` and before `limit`; false when there is none.
bool nextReference(const std::string& xml, std::size_t& pos, std::size_t limit, Triple& t) {
    GetDetail(xml, pos, "Provider", t.provider, kBinary);
    if (!pos || pos >= limit)
        return false;
    GetDetail(xml, pos, "Product", t.product, kBinary);
    if (!pos || pos >= limit)
        return false;
    GetDetail(xml, pos, "BlueprintID", t.id, kBinary);
    return pos && pos < limit;
}

std::string distanceAfter(const std::string& xml, std::size_t& pos) {
    std::string value;
    if (pos)
        GetDetail(xml, pos, "Distance", value, kBinary);
    return value;
}

PlacedScan scanPlaced(const AssetFiles& files, const PlacedJob& job) {
    PlacedScan scan;
    std::string xml;
    if (const ConvertResult r = binToXmlText(job.file, xml); !r) {
        scan.error = r.message;
        return scan;
    }
    const PlacedKind& kind = *job.kind;
    const std::string stem = job.file.stem().string();
    auto add = [&](const Triple& t, const std::string& tile, const std::string& x, const std::string& z) {
        if (t.provider.empty() && t.product.empty() && t.id.empty())
            return true; // an unused slot
        if (t.provider.empty() || t.provider == " ") {
            scan.warning = referenceWarning(true, kind.label, job.file);
            return false;
        }
        if (t.id.empty())
            return true;
        PlacedItem item;
        fs::path real;
        item.found = files.exists(t.bin(), &real);
        item.path = files.display(t.bin());
        item.label = kind.label;
        item.tile = tile;
        item.x = x;
        item.z = z;
        scan.items.push_back(std::move(item));
        return true;
    };
    for (std::size_t at = find(xml, kind.tag); at > 0;) {
        const std::size_t next = find(xml, kind.tag, at + 1);
        const std::size_t limit = next ? next : xml.size() + 1;
        bool goOn = true;
        if (kind.track) {
            std::size_t pos = find(xml, "<cFarVector2", at);
            const std::string tileX = distanceAfter(xml, pos), x = distanceAfter(xml, pos);
            const std::string tileZ = distanceAfter(xml, pos), z = distanceAfter(xml, pos);
            const std::size_t end = find(xml, "</Network-cTrackRibbon", at);
            const std::size_t stop = end ? std::min(end, limit) : limit;
            Triple t;
            while (goOn && pos && pos < stop && nextReference(xml, pos, stop, t))
                goOn = add(t, tileNumber(tileX) + tileNumber(tileZ), x, z);
        } else {
            std::size_t pos = find(xml, "<cTileCoordinate>", at);
            const std::string x = pos && pos < limit ? distanceAfter(xml, pos) : std::string();
            pos = pos ? find(xml, "<cTileCoordinate>", pos) : 0;
            const std::string z = pos && pos < limit ? distanceAfter(xml, pos) : std::string();
            Triple t;
            if (pos && pos < limit && nextReference(xml, pos, limit, t))
                goOn = add(t, stem, x, z);
        }
        if (!goOn)
            break;
        at = next;
    }
    return scan;
}

// Tile folders that could not be read, into the error log as well as the result.
void logFolders(AppContext& ctx, const char* procedure, const std::vector<std::string>& folders) {
    for (const auto& folder : folders)
        ctx.log().log("frmDelRoute", procedure, err::PermissionDenied, folder);
}

// A tile the codec refused: logged, and kept in the result so that it is never passed over.
void refused(AppContext& ctx, const char* procedure, const std::string& error, std::vector<std::string>& unreadable) {
    if (error.empty())
        return;
    ctx.log().log("frmDelRoute", procedure, err::Conversion, error);
    unreadable.push_back(error);
}

} // namespace

PlacedItemsResult listPlacedItems(AppContext& ctx, const RouteEntry& route, int threads, UserInterface* ui) {
    PlacedItemsResult result;
    ctx.resolver.invalidate();
    const AssetFiles files(ctx);
    std::vector<PlacedJob> jobs;
    for (const PlacedKind& kind : kPlacedKinds) {
        const auto folder = ctx.resolver.resolve(route.path, kind.folder);
        if (!folder)
            continue;
        for (const auto& file : binFiles(*folder, &result.unreadable))
            if (!kind.track || iequals(file.filename().string(), "Tracks.bin"))
                jobs.push_back({file, &kind});
    }
    logFolders(ctx, "CheckForFiles2", result.unreadable);
    result.tiles = jobs.size();
    const auto scans = parallelMap<PlacedScan>(jobs.size(), threads, ui, "Tiles of " + route.name, result.aborted,
                                            [&](std::size_t i) {
                                                return onePiece([&] { return scanPlaced(files, jobs[i]); },
                                                                [&](const std::string& why) {
                                                                    PlacedScan failed;
                                                                    failed.error = jobs[i].file.string() + ": " + why;
                                                                    return failed;
                                                                });
                                            });
    if (result.aborted)
        return result;
    for (std::size_t i = 0; i < scans.size(); ++i) {
        for (const PlacedItem& item : scans[i].items) {
            if (!item.found)
                result.missing.push_back({item.path, item.label, jobs[i].file.filename().string()});
            result.items.push_back(item);
        }
        if (!scans[i].warning.empty())
            result.warnings.push_back(scans[i].warning);
        refused(ctx, "CheckForFiles2", scans[i].error, result.unreadable);
    }
    return result;
}

ProductItemsResult productItemsUsed(AppContext& ctx, const RouteEntry& route, const std::vector<ScenarioEntry>& scenarios,
                                    const std::string& provider, const std::string& product, int threads,
                                    UserInterface* ui) {
    ProductItemsResult result;
    result.provider = provider;
    result.product = product;
    ctx.resolver.invalidate();
    const AssetFiles files(ctx);
    const std::vector<TileJob> jobs = routeTiles(ctx, route, scenarios, &result.unreadable);
    logFolders(ctx, "CheckForFiles6", result.unreadable);
    result.tiles = jobs.size();
    struct Scan {
        std::vector<std::pair<std::string, bool>> refs; // full path, found
        std::string error;
    };
    const auto scans = parallelMap<Scan>(jobs.size(), threads, ui, "Tiles of " + route.name, result.aborted,
                                      [&](std::size_t i) {
                                          return onePiece(
                                              [&] {
                                                  Scan scan;
                                                  std::string xml, warning;
                                                  if (const ConvertResult r = binToXmlText(jobs[i].file, xml); !r) {
                                                      scan.error = r.message;
                                                      return scan;
                                                  }
                                                  for (const Triple& t :
                                                       tileReferences(xml, jobs[i].label, jobs[i].file, warning))
                                                      if (iequals(t.provider, provider) && iequals(t.product, product))
                                                          scan.refs.emplace_back(files.display(t.bin()),
                                                                                 files.exists(t.bin()));
                                                  return scan;
                                              },
                                              [&](const std::string& why) {
                                                  Scan failed;
                                                  failed.error = jobs[i].file.string() + ": " + why;
                                                  return failed;
                                              });
                                      });
    if (result.aborted)
        return result;
    for (std::size_t i = 0; i < scans.size(); ++i) {
        for (const auto& [path, found] : scans[i].refs) {
            if (!found)
                result.missing.push_back({path, jobs[i].label, jobs[i].file.filename().string()});
            result.used.push_back(path);
        }
        refused(ctx, "CheckForFiles6", scans[i].error, result.unreadable);
    }
    SortStrings(result.used, 0, static_cast<std::ptrdiff_t>(result.used.size()) - 1);
    result.used.erase(std::unique(result.used.begin(), result.used.end()), result.used.end());
    return result;
}

ScenarioSceneryResult scenarioScenery(AppContext& ctx, const RouteEntry& route, const ScenarioEntry& scenario) {
    ScenarioSceneryResult result;
    const auto folder = ctx.resolver.resolve(route.path, "Scenarios\\" + scenario.folder + "\\Scenery");
    if (!folder || !fs::is_directory(*folder))
        return result;
    result.hasScenery = true;
    const AssetFiles files(ctx);
    for (const auto& tile : binFiles(*folder, &result.unreadable)) {
        const TileScan scan = scanTile(files, tile, "(Scenery Item)");
        for (const Ref& ref : scan.refs) {
            if (!ref.found)
                result.missing.push_back({files.display(ref.path), "(Scenery Item)", tile.filename().string()});
            if (ref.found || !ref.inTransfer)
                result.items.push_back(files.display(ref.path));
        }
        if (!scan.warning.empty())
            result.warnings.push_back(scan.warning);
        refused(ctx, "CheckForFiles", scan.error, result.unreadable);
    }
    return result;
}

std::vector<std::string> productItemsNotUsed(AppContext& ctx, const ProductItemsResult& used, bool del,
                                             std::vector<std::string>* unreadable) {
    std::vector<std::string> out;
    const AssetFiles files(ctx);
    const auto folder = ctx.resolver.resolve(files.root(), used.provider + "\\" + used.product);
    if (!folder)
        return out;
    // The used list names files as the tiles spell them; compare folded, below the product.
    std::set<std::string> names;
    const std::size_t skip = used.provider.size() + used.product.size() + 2; // "Provider\Product\"
    for (const auto& u : used.used) {
        const std::string r = files.relative(u);
        names.insert(foldName(r.size() > skip ? r.substr(skip) : r));
    }
    // The product's blueprints, through every folder but those behind links.
    std::vector<fs::path> blueprints;
    std::vector<fs::path> pending{*folder};
    while (!pending.empty()) {
        const fs::path here = pending.back();
        pending.pop_back();
        std::error_code ec;
        for (fs::directory_iterator it(here, ec); !ec && it != fs::directory_iterator(); it.increment(ec)) {
            const EntryKind kind = entryKind(*it);
            if (kind == EntryKind::Folder)
                pending.push_back(it->path());
            else if (kind == EntryKind::File && iendsWith(it->path().filename().string(), ".bin"))
                blueprints.push_back(it->path());
        }
        if (ec && unreadable)
            unreadable->push_back(here.string() + ": " + ec.message());
    }
    std::sort(blueprints.begin(), blueprints.end());
    std::error_code ec;
    for (const auto& file : blueprints) {
        std::string inside = fs::relative(file, *folder, ec).string();
        std::replace(inside.begin(), inside.end(), '/', '\\');
        if (!names.count(foldName(inside)))
            out.push_back((del ? "DEL " : "") + file.string());
    }
    return out;
}

} // namespace velmora::routes
