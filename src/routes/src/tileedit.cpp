// The walk over a route's tiles that a substitution makes, all or nothing: every tile is read and
// changed in memory and its new content staged beside it; only when every tile decoded and was
// staged do the changed ones take their names, as one journal entry.

#include "velmora/routes/substitute.h"

#include "tiles.h"

#include "velmora/archives/productarchives.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/parallel.h"
#include "velmora/core/services.h"
#include "velmora/core/templates.h"
#include "velmora/core/userinterface.h"
#include "velmora/routes/routecheck.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace velmora::routes {

namespace {

using namespace detail;

struct TileWork {
    std::vector<ElementChange> elements;
    PreparedFile prepared;
    std::string error; // the tile could not be read, encoded or staged
};

void discardAll(WriteService& files, std::vector<TileWork>& work) {
    for (TileWork& w : work)
        files.discard(w.prepared);
}

TileWork editTile(WriteService& files, const fs::path& tile, const std::vector<Substitution>& changes, ItemKind kind,
                  bool dryRun) {
    TileWork w;
    std::string xml;
    if (const ConvertResult r = binToXmlText(tile, xml); !r) {
        w.error = r.message.find(tile.filename().string()) == std::string::npos ? tile.string() + ": " + r.message : r.message;
        return w;
    }
    w.elements = substituteInText(xml, changes, kind);
    if (w.elements.empty() || dryRun)
        return w;
    std::string bin;
    if (const ConvertResult r = xmlTextToBin(xml, bin, tile.string()); !r || bin.empty()) {
        w.error = tile.string() + ": the changed tile could not be encoded: " + r.message;
        return w;
    }
    WriteOptions staged;
    staged.sync = kSyncStagedEachFile;
    const WriteResult s = files.prepare(
        tile, [&bin](const ByteSink& sink) { return sink(bin.data(), bin.size()); }, staged, w.prepared);
    if (!s)
        w.error = s.message;
    return w;
}

} // namespace

std::size_t TileEditResult::elements() const {
    std::size_t n = 0;
    for (const auto& t : changed)
        n += t.elements.size();
    return n;
}

TileEditResult substituteInTiles(AppContext& ctx, const RouteEntry& route, const std::vector<Substitution>& changes,
                                 const TileEditOptions& options, UserInterface* ui) {
    TileEditResult result;
    ctx.resolver.invalidate();
    const AssetFiles assets(ctx);
    // Every change is checked before a tile is read: one that names nothing complete, or a
    // replacement that is not there, stops the whole command.
    if (changes.empty()) {
        result.error = "no substitution was given";
        return result;
    }
    const archives::ProductArchives archived(assets.root(), ctx.resolver);
    for (const Substitution& s : changes) {
        if (!s.missing.complete()) {
            result.error = "the item to change needs its provider, product and path";
            return result;
        }
        if (s.removes())
            continue;
        if (!s.replacement.complete()) {
            result.error = "the replacement '" + s.replacement.text() + "' needs its provider, product and path";
            return result;
        }
        const std::string file = s.replacement.binPath();
        if (!assets.exists(file) && !archived.find(file)) {
            result.error = assets.display(file) + ": the replacement does not exist; nothing was changed";
            return result;
        }
    }

    // The tiles of the kind, and for scenery those the scenarios place themselves.
    std::vector<fs::path> tiles;
    std::vector<std::string> folders = tileFoldersOf(options.kind);
    if (options.kind == ItemKind::Scenery)
        for (const auto& s : options.scenarios)
            folders.push_back("Scenarios\\" + s.folder + "\\Scenery");
    for (const std::string& folder : folders)
        if (auto f = ctx.resolver.resolve(route.path, folder)) {
            const auto files = binFiles(*f, &result.unreadable);
            tiles.insert(tiles.end(), files.begin(), files.end());
        }
    if (!result.unreadable.empty()) {
        result.error = result.unreadable.front() + ": a tile folder could not be read; nothing was changed";
        return result;
    }
    result.tilesRead = tiles.size();

    std::vector<TileWork> work = parallelMap<TileWork>(
        tiles.size(), options.threads, ui, options.command.empty() ? "Tiles of " + route.name : options.command,
        result.stopped, [&](std::size_t i) {
            return onePiece([&] { return editTile(ctx.files(), tiles[i], changes, options.kind, options.dryRun); },
                            [&](const std::string& why) {
                                TileWork failed;
                                failed.error = tiles[i].string() + ": " + why;
                                return failed;
                            });
        });
    if (result.stopped) {
        discardAll(ctx.files(), work);
        return result;
    }
    for (const TileWork& w : work)
        if (!w.error.empty()) {
            discardAll(ctx.files(), work);
            result.error = w.error + "; the command stopped before writing, no tile was changed";
            return result;
        }
    for (std::size_t i = 0; i < work.size(); ++i)
        if (!work[i].elements.empty())
            result.changed.push_back({tiles[i], std::move(work[i].elements), {}});
    if (options.dryRun || result.changed.empty())
        return result;

    syncStaged(route.path);
    JournalCommand entry(&ctx.journal(), options.command.empty() ? "Substitute in " + route.name : options.command);
    std::vector<WriteResult> committed;
    std::size_t n = 0;
    for (std::size_t i = 0; i < work.size(); ++i) {
        if (work[i].prepared.temp.empty())
            continue;
        WriteResult w = ctx.files().commit(work[i].prepared);
        if (!w) {
            for (std::size_t rest = i + 1; rest < work.size(); ++rest)
                ctx.files().discard(work[rest].prepared);
            const std::string lost = ctx.files().putBack(committed);
            result.error = w.message + "; the command stopped" +
                           (lost.empty() ? " and the tiles it had written were put back" : ". " + lost);
            for (auto& c : result.changed)
                c.backup.clear();
            return result;
        }
        result.changed[n++].backup = w.backup;
        committed.push_back(std::move(w));
    }
    result.written = true;
    ctx.resolver.invalidate();
    return result;
}

std::vector<std::string> pairsUsedByRoute(AppContext& ctx, const RouteEntry& route,
                                          const std::vector<ScenarioEntry>& scenarios, std::vector<std::string>& unreadable,
                                          int threads, UserInterface* ui, bool* stopped) {
    RouteCheckOptions options;
    options.threads = threads;
    const RouteCheckResult r = RouteCheck(ctx, route, scenarios).run(options, ui);
    if (stopped)
        *stopped = r.aborted;
    unreadable = r.unreadable;
    // Below the Assets folder, whatever folders the simulator's root itself lies in.
    const AssetFiles assets(ctx);
    std::vector<std::string> paths;
    for (const auto& u : r.assetsUnique)
        paths.push_back("Assets\\" + assets.relative(u));
    for (const auto& m : r.missing)
        paths.push_back("Assets\\" + assets.relative(m.path));
    return providerPairs(paths);
}

namespace {

// The Provider and Product of the reference behind `tag`, as the document holds them.
std::pair<std::string, std::string> pairAfter(const std::string& text, const char* tag) {
    std::size_t pos = InStr(1, text, tag, Match::Binary);
    if (!pos)
        return {};
    const BlueprintRef r = GetBlueprintRef(text, pos, kBinary);
    return {r.provider, r.product};
}

// A random id as the list's entries carry them: they must differ, nothing else reads them.
std::string listId() {
    static thread_local std::mt19937 rng{std::random_device{}()};
    const double f = std::uniform_real_distribution<double>(0.0, 1.0)(rng);
    return std::to_string(static_cast<long>(std::floor(f * 20000000.0 + 10000000.0)));
}

} // namespace

ProvidersResult fixProviders(AppContext& ctx, const RouteEntry& route, const std::vector<std::string>& pairs,
                             bool dryRun) {
    ProvidersResult out;
    out.file = ctx.resolver.resolve(route.path, "RouteProperties.xml").value_or(route.path / "RouteProperties.xml");
    std::string text;
    if (!fs::is_regular_file(out.file) || (text = ReadTextFile(out.file)).empty()) {
        out.error = out.file.string() + ": cannot be read";
        return out;
    }
    const std::size_t open = InStr(1, text, "<RBlueprintSetPreLoad>", Match::Binary);
    const std::size_t close = open ? InStr(open, text, "</RBlueprintSetPreLoad>", Match::Binary) : 0;
    if (!open || !close) {
        out.error = out.file.string() + ": holds no <RBlueprintSetPreLoad> list";
        return out;
    }
    std::string error;
    const std::string block = readTemplate(ctx, "ProvHeader.txt", error);
    if (block.empty()) {
        out.error = error;
        return out;
    }
    // The template's block without the blanks around it, indented as the list's entries are.
    std::size_t first = block.find_first_not_of(" \t\r\n"), last = block.find_last_not_of(" \t\r\n");
    const std::string entry = block.substr(first, last - first + 1);
    std::string list = "\r\n";
    auto add = [&](const std::string& provider, const std::string& product) {
        list += "\t\t" + fillTemplate(entry, {{"xxxxxxxx", listId()}, {"aaaaaa", provider}, {"bbbbbb", product}}) + "\r\n";
    };
    for (const std::string& pair : pairs) {
        const std::size_t slash = pair.find('\\');
        if (slash == std::string::npos)
            continue;
        // Written as the simulator reads names; shown as the program shows them.
        std::string provider = pair.substr(0, slash), product = pair.substr(slash + 1);
        out.pairs.push_back(pair);
        add(documentText(provider), documentText(product));
    }
    // The weather's and the template's pair are always in the list.
    for (const char* tag : {"<WeatherBlueprint", "<InfrastructureModified"}) {
        const auto [provider, product] = pairAfter(text, tag);
        if (provider.empty())
            continue;
        const std::size_t at = InStr(1, list, ">" + provider + "<", Match::Binary);
        if (at && InStr(at, list, ">" + product + "<", Match::Binary))
            continue;
        out.pairs.push_back(shownName(provider) + "\\" + shownName(product));
        add(provider, product);
    }
    list += "\t";
    if (dryRun)
        return out;
    const std::size_t from = open + std::string_view("<RBlueprintSetPreLoad>").size() - 1;
    std::string changed = text.substr(0, from) + list + text.substr(close - 1);
    JournalCommand command(&ctx.journal(), "Fix Prov/Prod in RouteProperties.xml of " + route.name);
    const WriteResult w = ctx.files().write(out.file, changed);
    if (!w) {
        out.error = w.message;
        return out;
    }
    out.written = true;
    return out;
}

} // namespace velmora::routes
