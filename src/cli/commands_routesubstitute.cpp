// The commands that rewrite a route's tiles: a missing blueprint replaced by another (or many by
// a rules file), placed items removed, and the route's list of providers and products rebuilt.

#include "session.h"

#include "velmora/core/services.h"
#include "velmora/routes/substitute.h"

namespace velmora::cli {

namespace {

namespace rt = velmora::routes;

// The route of the first plain argument, with its scenarios; null after saying why.
const rt::RouteEntry* routeOf(Session& s, const Arguments& a, std::vector<rt::RouteEntry>& found) {
    if (a.plain.empty()) {
        s.fail("needs the route: its folder or its name");
        return nullptr;
    }
    s.start();
    if (!s.requireRoot())
        return nullptr;
    found = rt::listRoutes(s.ctx);
    const rt::RouteEntry* route = rt::findRoute(found, a.plain.front());
    if (!route)
        s.fail(rt::routeNotFound(s.ctx, a.plain.front()));
    return route;
}

std::optional<rt::ItemKind> kindOf(Session& s, const Arguments& a) {
    const std::string word = a.value("--kind").value_or("scenery");
    const auto kind = rt::kindFromWord(word);
    if (!kind)
        s.fail("--kind takes scenery, loft, road or track, not '" + word + "'");
    return kind;
}

void printJson(Session& s, const rt::TileEditResult& r, bool dryRun) {
    auto& o = s.out;
    o << "{\n  \"dryRun\": " << (dryRun ? "true" : "false") << ",\n  \"tilesRead\": " << r.tilesRead
      << ",\n  \"tilesChanged\": " << r.changed.size() << ",\n  \"elements\": " << r.elements() << ",\n  \"tiles\": [";
    for (std::size_t i = 0; i < r.changed.size(); ++i) {
        const auto& t = r.changed[i];
        o << (i ? "," : "") << "\n    {\"tile\": " << jsonString(t.tile.string()) << ", \"backup\": "
          << jsonString(t.backup.string()) << ", \"elements\": [";
        for (std::size_t e = 0; e < t.elements.size(); ++e)
            o << (e ? ", " : "") << "{\"before\": " << jsonString(t.elements[e].before)
              << ", \"after\": " << jsonString(t.elements[e].after) << "}";
        o << "]}";
    }
    o << (r.changed.empty() ? "" : "\n  ") << "]\n}\n";
}

// What the walk changed, or would, tile by tile; the exit code.
int report(Session& s, const rt::TileEditResult& r, bool dryRun, bool json) {
    if (r.stopped)
        return s.fail("stopped: nothing was written");
    if (!r.error.empty())
        return s.fail(r.error);
    if (json) {
        printJson(s, r, dryRun);
        return Success;
    }
    for (const auto& t : r.changed) {
        s.out << shown(t.tile.string()) << ": " << t.elements.size() << (t.elements.size() == 1 ? " element" : " elements");
        if (!t.backup.empty())
            s.out << " (old tile kept as " << shown(t.backup.filename().string()) << ")";
        s.out << '\n';
        for (const auto& e : t.elements)
            s.out << "  " << shown(e.before) << " -> " << shown(e.after) << '\n';
    }
    s.out << r.elements() << (r.elements() == 1 ? " element in " : " elements in ") << r.changed.size()
          << (r.changed.size() == 1 ? " tile " : " tiles ") << (dryRun ? "would change" : "changed") << " (of "
          << r.tilesRead << " read)" << (dryRun ? "; nothing was written" : "") << ".\n";
    if (!dryRun && r.written)
        s.out << "The requested changes have been made.\n";
    return Success;
}

int runEdit(Session& s, const Arguments& a, const rt::RouteEntry& route, rt::ItemKind kind,
            const std::vector<rt::Substitution>& changes, const std::string& command) {
    const auto threads = s.threads(a);
    if (!threads)
        return Error;
    rt::TileEditOptions options;
    options.kind = kind;
    options.dryRun = a.has("--dry-run");
    options.threads = *threads;
    options.command = command;
    if (kind == rt::ItemKind::Scenery)
        options.scenarios = rt::listScenarios(s.ctx, route);
    const rt::TileEditResult r = rt::substituteInTiles(s.ctx, route, changes, options, &s.ui);
    return report(s, r, options.dryRun, a.has("--json"));
}

// route substitute ROUTE (--missing P/P/PATH [--with P/P/PATH] | --rules FILE.csv) [--kind K]
int cmdRouteSubstitute(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--missing", "--with", "--kind", "--rules", "--threads"},
                                       {"--dry-run", "--json"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() > 1)
        return s.fail("unexpected argument '" + a.plain[1] + "'");
    const auto rules = a.value("--rules");
    if (rules && (a.value("--missing") || a.value("--with")))
        return s.fail("--rules goes without --missing and --with");
    if (!rules && !a.value("--missing"))
        return s.fail("needs --missing PROVIDER/PRODUCT/PATH (and --with), or --rules FILE.csv");
    const auto kind = kindOf(s, a);
    if (!kind)
        return Error;
    std::vector<rt::Substitution> changes;
    std::string why;
    if (rules) {
        const fs::path file = *rules;
        std::error_code ec;
        if (!fs::is_regular_file(file, ec))
            return s.fail(file.string() + ": no such rules file");
        const std::string text = ReadTextFile(file);
        std::vector<std::string> errors;
        changes = rt::parseRules(text, errors);
        for (const auto& e : errors)
            s.err << "velmora-cli: " << s.g.command << ": " << shown(file.string()) << ", " << shown(e) << '\n';
        if (!errors.empty())
            return s.fail(file.string() + ": " + std::to_string(errors.size()) +
                          (errors.size() == 1 ? " line is" : " lines are") + " not a rule; nothing was changed");
        if (changes.empty())
            return s.fail(file.string() + ": holds no rule");
    } else {
        rt::Substitution one;
        if (auto m = rt::parseAssetName(*a.value("--missing"), &why))
            one.missing = *m;
        else
            return s.fail("--missing " + why);
        if (const auto with = a.value("--with"); with && !with->empty()) {
            if (auto r = rt::parseAssetName(*with, &why))
                one.replacement = *r;
            else
                return s.fail("--with " + why);
        }
        changes.push_back(one);
    }
    std::vector<rt::RouteEntry> found;
    const rt::RouteEntry* route = routeOf(s, a, found);
    if (!route)
        return Error;
    const bool removes = std::any_of(changes.begin(), changes.end(), [](const auto& c) { return c.removes(); });
    if (removes && !a.has("--dry-run") &&
        s.ui.ask("As you have not included a new Provider, Product or Path, then is it\n"
                 "correct that you wish the items to be removed from your route?",
                 Buttons::YesNo, Icon::Question, "Substitute for a missing Asset.") != Answer::Yes)
        return s.fail("nothing was changed");
    return runEdit(s, a, *route, *kind, changes, "Substitute in " + route->name);
}

// route remove-items ROUTE PROVIDER/PRODUCT/PATH... [--kind K]
int cmdRouteRemoveItems(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--kind", "--threads"}, {"--dry-run", "--json"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() < 2)
        return s.fail("needs the route and at least one PROVIDER/PRODUCT/PATH");
    const auto kind = kindOf(s, a);
    if (!kind)
        return Error;
    std::vector<rt::Substitution> changes;
    for (std::size_t i = 1; i < a.plain.size(); ++i) {
        std::string why;
        const auto name = rt::parseAssetName(a.plain[i], &why);
        if (!name)
            return s.fail(why);
        changes.push_back({*name, {}});
    }
    std::vector<rt::RouteEntry> found;
    const rt::RouteEntry* route = routeOf(s, a, found);
    if (!route)
        return Error;
    return runEdit(s, a, *route, *kind, changes, "Remove items from " + route->name);
}

// route fix-providers ROUTE [--dry-run]
int cmdRouteFixProviders(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--threads"}, {"--dry-run"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() > 1)
        return s.fail("unexpected argument '" + a.plain[1] + "'");
    const auto threads = s.threads(a);
    if (!threads)
        return Error;
    std::vector<rt::RouteEntry> found;
    const rt::RouteEntry* route = routeOf(s, a, found);
    if (!route)
        return Error;
    std::vector<std::string> unreadable;
    bool stopped = false;
    const auto pairs =
        rt::pairsUsedByRoute(s.ctx, *route, rt::listScenarios(s.ctx, *route), unreadable, *threads, &s.ui, &stopped);
    if (stopped)
        return s.fail("stopped: nothing was written");
    for (const auto& u : unreadable)
        s.err << "velmora-cli: " << s.g.command << ": cannot be read: " << shown(u) << '\n';
    if (!unreadable.empty())
        return s.fail("not every tile could be read, so the providers the route uses are not known: nothing was changed");
    const rt::ProvidersResult r = rt::fixProviders(s.ctx, *route, pairs, a.has("--dry-run"));
    if (!r.error.empty())
        return s.fail(r.error);
    s.out << shown(r.file.string()) << ": " << r.pairs.size() << " Provider/Product pairs"
          << (a.has("--dry-run") ? " would be listed; nothing was written" : "") << ":\n";
    for (const auto& p : r.pairs)
        s.out << "  " << shown(p) << '\n';
    if (r.written)
        s.out << "Your RouteProperties.xml file has been modified as requested.\n";
    return Success;
}

} // namespace

std::vector<Command> routeSubstituteCommands() {
    return {
        {"route substitute",
         "ROUTE (--missing PROVIDER/PRODUCT/PATH [--with PROVIDER/PRODUCT/PATH] | --rules FILE.csv) "
         "[--kind scenery|loft|road|track] [--dry-run] [--json] [--threads N]",
         "replaces a blueprint in every tile of its kind (without --with: removes it, after asking); "
         "--rules applies many missing,replacement pairs in one pass; one undo takes it all back",
         cmdRouteSubstitute},
        {"route remove-items", "ROUTE PROVIDER/PRODUCT/PATH... [--kind K] [--dry-run] [--json] [--threads N]",
         "removes placed items: scenery blocks are cut out of the tiles, loft, road and track references blanked",
         cmdRouteRemoveItems},
        {"route fix-providers", "ROUTE [--dry-run] [--threads N]",
         "rebuilds RouteProperties.xml's list of providers and products from what the route's tiles use",
         cmdRouteFixProviders},
    };
}

} // namespace velmora::cli
