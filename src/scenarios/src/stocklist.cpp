#include "velmora/scenarios/stocklist.h"

#include "velmora/assets/scanpath.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/parallel.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/userinterface.h"
#include "velmora/core/xmltext.h"

#include <algorithm>
#include <array>

namespace velmora::scenarios {

namespace {

bool contains(std::string_view text, std::string_view what) { return InStr(1, text, what, Match::Text) > 0; }

bool containsAny(std::string_view text, std::initializer_list<std::string_view> words) {
    return std::any_of(words.begin(), words.end(), [&](std::string_view w) { return contains(text, w); });
}

std::string backslashed(std::string path) {
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

// What each category rejects by the file's path. The differences between the rows (Electric
// keeps \Bogie, Tender tests "\Simulation" without its closing backslash, only EMU and DMU
// reject the other traction's folders) are meant.
bool rejectedByCategory(const std::string& full, StockCategory category) {
    switch (category) {
    case StockCategory::Passenger:
        return containsAny(full, {"\\Simulation\\", "Camera", "Textures", "PassengerView", "CabView", "\\Bogie", "Digit",
                                  "\\Freight\\"});
    case StockCategory::Freight:
        return containsAny(full, {"\\Simulation\\", "Camera", "Textures", "PassengerView", "CabView", "\\Bogie", "Digit",
                                  "\\Passenger\\"});
    case StockCategory::Tender:
        return containsAny(full, {"\\Simulation", "Camera", "Textures", "PassengerView", "CabView", "\\Bogie", "Digit"});
    case StockCategory::EMU:
        return containsAny(full, {"\\Simulation\\", "Camera", "Textures", "PassengerView", "CabView", "\\Bogie", "Digit",
                                  "\\Freight\\", "Steam\\", "Diesel"});
    case StockCategory::DMU:
        return containsAny(full, {"\\Simulation\\", "Camera", "Textures", "PassengerView", "CabView", "\\Bogie", "Digit",
                                  "\\Freight\\", "Steam\\", "Electric"});
    case StockCategory::Steam:
        return containsAny(full, {"\\Simulation\\", "Camera", "Textures", "PassengerView", "CabView", "\\Bogie", "Digit"});
    case StockCategory::Electric:
        return containsAny(full, {"\\Simulation\\", "Camera", "Textures", "PassengerView", "CabView", "Digit"});
    case StockCategory::Diesel:
        break;
    }
    return containsAny(full, {"\\Simulation\\", "\\Camera", "\\Textures", "\\PassengerView", "\\CabView", "\\Bogie",
                              "\\Digit"});
}

// Multiple units count by their traction.
std::string traction(std::string_view type) {
    if (iequals(type, "DMU"))
        return "Diesel";
    if (iequals(type, "EMU"))
        return "Electric";
    return std::string(type);
}

// Provider, product and the rest of a path below the Assets folder: the simulator's own when
// the path lies in it, else the first folder named Assets.
bool splitBelowAssets(const std::string& full, const std::string& assetsPrefix, std::string& provider,
                      std::string& product, std::string& rest) {
    std::size_t start = std::string::npos;
    if (!assetsPrefix.empty() && full.size() > assetsPrefix.size() &&
        iequals(std::string_view(full).substr(0, assetsPrefix.size()), assetsPrefix))
        start = assetsPrefix.size();
    else if (const std::size_t at = InStr(1, full, "\\Assets\\", Match::Text))
        start = at - 1 + 8;
    if (start == std::string::npos)
        return false;
    const std::size_t b1 = full.find('\\', start);
    if (b1 == std::string::npos)
        return false;
    provider = full.substr(start, b1 - start);
    const std::size_t b2 = full.find('\\', b1 + 1);
    product = full.substr(b1 + 1, b2 == std::string::npos ? std::string::npos : b2 - b1 - 1);
    rest = b2 == std::string::npos ? std::string() : full.substr(b2 + 1);
    return true;
}

std::string assetsPrefixOf(const AppContext& ctx) {
    const fs::path assets = ctx.resolver.resolveForWrite(ctx.railWorks(), "Assets");
    std::error_code ec;
    const fs::path absolute = fs::absolute(assets, ec);
    return backslashed((ec ? assets : absolute).lexically_normal().string()) + "\\";
}

std::optional<StockItem> itemFromClasses(const StockClasses& classes, const std::string& full,
                                         const std::string& assetsPrefix, StockCategory category, bool notRail) {
    StockItem item;
    item.category = category;
    std::string rest;
    if (!splitBelowAssets(full, assetsPrefix, item.provider, item.product, rest) || rest.empty())
        return std::nullopt;

    StockTest found;
    if (notRail) {
        const bool locoCategory = category == StockCategory::Diesel || category == StockCategory::Electric ||
                                  category == StockCategory::Steam || category == StockCategory::EMU ||
                                  category == StockCategory::DMU;
        if (locoCategory) {
            // A locomotive of another traction is left out.
            const StockTest& loco = classes.loco;
            if (loco.is && iequals(traction(loco.engineType), traction(categoryCaption(category)))) {
                found = loco;
                item.kind = StockKind::Loco;
            }
        }
        if (!found.is && (category == StockCategory::Passenger || category == StockCategory::Freight))
            if (found = classes.wagon; found.is)
                item.kind = StockKind::Wagon;
        if (!found.is && (category == StockCategory::Tender || category == StockCategory::Steam))
            if (found = classes.tender; found.is)
                item.kind = StockKind::Tender;
    } else {
        switch (category) {
        case StockCategory::Passenger:
        case StockCategory::Freight:
            found = classes.wagon;
            item.kind = StockKind::Wagon;
            break;
        case StockCategory::Tender:
            found = classes.tender;
            item.kind = StockKind::Tender;
            break;
        case StockCategory::EMU:
        case StockCategory::DMU:
            found = classes.loco;
            item.kind = StockKind::Loco;
            if (!found.is) {
                found = classes.wagon;
                item.kind = StockKind::Wagon;
            }
            break;
        default:
            found = classes.loco;
            item.kind = StockKind::Loco;
            break;
        }
    }
    if (!found.is)
        return std::nullopt;
    item.name = found.name;
    // The path below Provider\Product with the text after its last "." made "xml".
    const std::size_t dot = rest.rfind('.');
    item.path = (dot == std::string::npos ? rest + "." : rest.substr(0, dot + 1)) + "xml";
    return item;
}

struct Candidate {
    fs::path file;
    std::string full; // backslashes
    std::uint32_t categories = 0; // bit per category index in the request whose path tests it passed
};

struct Outcome {
    std::vector<std::optional<StockItem>> items; // by category index in the request
    std::string error;
};

} // namespace

const std::vector<StockCategory>& allStockCategories() {
    static const std::vector<StockCategory> all = {StockCategory::Diesel,    StockCategory::Electric,
                                                   StockCategory::Steam,     StockCategory::Passenger,
                                                   StockCategory::Freight,   StockCategory::Tender,
                                                   StockCategory::DMU,       StockCategory::EMU};
    return all;
}

const char* categoryCaption(StockCategory category) {
    static constexpr std::array<const char*, 8> kCaptions = {"Diesel",  "Electric", "Steam", "Passenger",
                                                             "Freight", "Tender",   "DMU",   "EMU"};
    return kCaptions[static_cast<std::size_t>(category)];
}

std::optional<StockCategory> categoryFromCaption(std::string_view caption) {
    for (StockCategory c : allStockCategories())
        if (iequals(caption, categoryCaption(c)))
            return c;
    return std::nullopt;
}

std::string detailsCategory(StockCategory category) {
    switch (category) {
    case StockCategory::Freight:
        return "Freight Wagon";
    case StockCategory::DMU:
        return "Diesel";
    case StockCategory::EMU:
        return "Electric";
    default:
        return categoryCaption(category);
    }
}

const char* kindName(StockKind kind) {
    switch (kind) {
    case StockKind::Loco:
        return "loco";
    case StockKind::Wagon:
        return "wagon";
    case StockKind::Tender:
        break;
    }
    return "tender";
}

bool notRailVehicles(const std::string& folder) { return !contains(folder, "RailVehicles"); }

bool stockPathPasses(std::string full, StockCategory category, bool notRail) {
    // The install path must not trip the tests: "...\Steam\steamapps\common\RailWorks" would
    // otherwise reject every diesel multiple unit.
    if (const std::size_t at = InStr(1, full, "steamapps\\", Match::Text))
        full.erase(0, at - 1 + 10);
    return !rejectedByCategory(full, notRail ? StockCategory::Diesel : category);
}

bool stockFolderEntered(const std::string& folder) {
    return !containsAny(folder, {"\\Simulation\\", "\\Camera", "\\Textures", "\\PassengerView", "\\CabView", "\\Bogie",
                                 "\\Digit", "\\Audio", "\\Couplings", "\\Particles", "\\Driver", "\\Characters",
                                 "\\LocoInformation"});
}

std::optional<StockItem> stockItemFromXml(const AppContext& ctx, const std::string& xml, const std::string& full,
                                          StockCategory category, bool notRail) {
    return itemFromClasses(classifyStock(ctx, xml), full, assetsPrefixOf(ctx), category, notRail);
}

std::optional<StockItem> FileMatch(const AppContext& ctx, const fs::path& folder, const std::string& file,
                                   StockCategory category, bool notRail, std::string* error) {
    const fs::path bin = folder / file;
    const std::string full = backslashed(bin.string());
    if (!contains(file, ".bin") || !stockPathPasses(full, category, notRail))
        return std::nullopt;
    std::string xml;
    if (const ConvertResult r = binToXmlText(bin, xml); !r) {
        if (error)
            *error = r.message.empty() ? full + ": cannot be converted" : r.message;
        return std::nullopt;
    }
    auto item = stockItemFromXml(ctx, xml, full, category, notRail);
    if (item)
        item->file = bin;
    return item;
}

StockListing listStock(AppContext& ctx, const fs::path& folder, const std::vector<StockCategory>& categories,
                       int threads, UserInterface* ui) {
    StockListing listing;
    std::error_code ec;
    const fs::path start = fs::absolute(folder, ec).lexically_normal();
    const std::string startText = backslashed((ec ? folder : start).string());
    const std::string assetsPrefix = assetsPrefixOf(ctx);
    listing.notRailVehicles = notRailVehicles(startText);
    std::string rest;
    splitBelowAssets(startText + "\\", assetsPrefix, listing.provider, listing.product, rest);
    if (categories.empty() || categories.size() > 32)
        return listing;

    // The walk, on this thread: every file that its path rules out is decided here.
    std::vector<Candidate> candidates;
    assets::cScanPath scan;
    scan.ReadOnly = true; // a write-protected vehicle is still one to place
    scan.setFilter("*.*");
    // Abort is looked at on every entry, so that it is felt at once however small the folders.
    auto aborted = [&] {
        if (ui && ui->cancelled())
            scan.StopScan();
        return scan.stopped();
    };
    scan.DirFilter = [&](const std::string& path, const std::string& name) {
        return !aborted() && stockFolderEntered(backslashed(path + name) + "\\");
    };
    if (ui)
        ui->beginProgress("Looking for rolling stock in " + startText, 0);
    long seen = 0;
    scan.FileMatch = [&](const std::string& path, const std::string& name) {
        if (ui && ++seen % 256 == 0) {
            ui->progress(seen, "Looking at " + path);
            ui->pumpEvents();
        }
        if (aborted())
            return;
        if (!contains(name, ".bin"))
            return;
        Candidate c{fs::path(path) / name, backslashed(path + name), 0};
        for (std::size_t i = 0; i < categories.size(); ++i)
            if (stockPathPasses(c.full, categories[i], listing.notRailVehicles))
                c.categories |= 1u << i;
        if (c.categories)
            candidates.push_back(std::move(c));
    };
    scan.StartScan(ec ? folder : start, true, false, true, false);
    listing.unreadable = scan.UnreadableFolders();
    if (ui)
        ui->endProgress();
    if (scan.stopped()) {
        listing.stopped = true;
        return listing;
    }

    // The class tests, each blueprint converted once, on all cores.
    bool stopped = false;
    std::vector<Outcome> outcomes = parallelMap<Outcome>(
        candidates.size(), threads, ui, "Reading rolling stock", stopped, [&](std::size_t i) {
            const Candidate& c = candidates[i];
            return onePiece(
                [&] {
                    Outcome out;
                    std::string xml;
                    if (const ConvertResult r = binToXmlText(c.file, xml); !r) {
                        out.error = r.message.empty() ? c.full + ": cannot be converted" : r.message;
                        return out;
                    }
                    const StockClasses classes = classifyStock(ctx, xml);
                    out.items.resize(categories.size());
                    for (std::size_t k = 0; k < categories.size(); ++k)
                        if (c.categories & (1u << k))
                            out.items[k] = itemFromClasses(classes, c.full, assetsPrefix, categories[k],
                                                           listing.notRailVehicles);
                    return out;
                },
                [&](const std::string& why) {
                    Outcome failed;
                    failed.error = c.full + ": " + why;
                    return failed;
                });
        });
    if (stopped) {
        listing.stopped = true;
        return listing;
    }

    // The merge, in the walk's order for each category in turn.
    listing.tested = static_cast<long>(candidates.size());
    for (std::size_t i = 0; i < candidates.size(); ++i)
        if (!outcomes[i].error.empty())
            listing.unreadable.push_back(std::move(outcomes[i].error));
    for (std::size_t k = 0; k < categories.size(); ++k)
        for (std::size_t i = 0; i < candidates.size(); ++i)
            if (k < outcomes[i].items.size() && outcomes[i].items[k]) {
                StockItem item = std::move(*outcomes[i].items[k]);
                item.file = candidates[i].file;
                listing.items.push_back(std::move(item));
            }
    return listing;
}

void StockTables::clear() {
    StockPaths.clear();
    StockNames.clear();
    StockFiles.clear();
}

bool StockTables::pin(const std::vector<std::size_t>& rows) {
    std::vector<std::size_t> kept;
    for (std::size_t r : rows)
        if (r < size())
            kept.push_back(r);
    if (kept.empty())
        return false;
    auto keep = [&](std::vector<std::string>& table) {
        std::vector<std::string> out;
        for (std::size_t r : kept)
            out.push_back(table[r]);
        table = std::move(out);
    };
    keep(StockPaths);
    keep(StockNames);
    keep(StockFiles);
    pinned = true;
    return true;
}

StockListing Command6_Click(AppContext& ctx, StockTables& tables, const fs::path& folder, StockCategory category,
                            int threads, UserInterface* ui) {
    tables.UseIndexFile = false;
    if (!tables.pinned)
        tables.clear();
    tables.StockCategory = categoryCaption(category);
    StockListing listing = listStock(ctx, folder, {category}, threads, ui);
    tables.StockProvider = listing.provider;
    tables.StockProduct = listing.product;
    for (const StockItem& item : listing.items) {
        tables.StockPaths.push_back(item.path);
        tables.StockNames.push_back(item.name);
        tables.StockFiles.push_back(item.file.string());
    }
    return listing;
}

std::optional<StockPreview> stockPreview(const AppContext& ctx, const StockTables& tables, std::size_t row) {
    if (row >= tables.size() || row >= tables.StockFiles.size())
        return std::nullopt;
    StockPreview preview;
    preview.label = tables.StockFiles[row];
    if (const auto category = categoryFromCaption(tables.StockCategory))
        preview.category = detailsCategory(*category);
    else
        preview.category = tables.StockCategory;

    // The thumbnail's name is the stock's name with quotes as two apostrophes and colons as
    // semicolons; whatever else a file name cannot hold is mended on the way.
    std::string name;
    for (char ch : tables.StockNames[row])
        name += ch == '"' ? std::string("''") : ch == ':' ? std::string(";") : std::string(1, ch);
    const fs::path thumbnail = ctx.appPath() / "Thumbnails" / (fileNameFromText(name) + ".jpg");
    if (FileExists(thumbnail)) {
        preview.source = StockPreview::Source::Thumbnail;
        preview.picture = thumbnail;
        return preview;
    }
    const fs::path own = fs::path(tables.StockFiles[row]).parent_path();
    if (auto info = ctx.resolver.resolve(own, "LocoInformation\\image.png"); info && FileExists(*info)) {
        preview.source = StockPreview::Source::LocoInformation;
        preview.picture = *info;
        return preview;
    }
    preview.picture = ctx.appPath() / "NoPicture.jpg";
    return preview;
}

} // namespace velmora::scenarios
