// The routes of the install and the route check from the command line.

#include "session.h"

#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/routes/routecheck.h"
#include "velmora/routes/routeitems.h"

namespace velmora::cli {

namespace {

std::string jsonList(const std::vector<std::string>& items) {
    std::string out = "[";
    for (std::size_t i = 0; i < items.size(); ++i)
        out += (i ? ", " : "") + jsonString(items[i]);
    return out + "]";
}

std::string jsonMarks(const std::vector<routes::ItemMark>& marks, const char* where) {
    std::string out = "[";
    for (std::size_t i = 0; i < marks.size(); ++i)
        out += std::string(i ? ", " : "") + "{\"path\": " + jsonString(marks[i].path) + ", \"" + where +
               "\": " + jsonString(marks[i].where) + "}";
    return out + "]";
}



// The route named by the first of `plainCount` plain arguments; null after saying why.
const routes::RouteEntry* routeArgument(Session& s, const Arguments& a, std::size_t plainCount,
                                        std::vector<routes::RouteEntry>& found) {
    if (a.plain.size() != plainCount) {
        s.fail(a.plain.empty() ? "needs the route: its folder or its name"
               : a.plain.size() < plainCount ? "needs " + std::to_string(plainCount) + " arguments, the route first"
                                             : "unexpected argument '" + a.plain[plainCount] + "'");
        return nullptr;
    }
    s.start();
    if (!s.requireRoot())
        return nullptr;
    found = routes::listRoutes(s.ctx);
    const routes::RouteEntry* route = routes::findRoute(found, a.plain.front());
    if (!route)
        s.fail(routes::routeNotFound(s.ctx, a.plain.front()));
    return route;
}

// What could not be read, on standard error. True when there was something: the answer is then
// not the whole one, and the command ends with an error.
bool reportUnreadable(Session& s, const std::vector<std::string>& unreadable) {
    for (const auto& u : unreadable)
        s.err << "velmora-cli: " << s.g.command << ": cannot be read: " << shown(u) << '\n';
    return !unreadable.empty();
}

void printMissing(Session& s, const std::vector<routes::MissingItem>& missing) {
    if (missing.empty())
        return;
    s.out << "\nFollowing Asset(s) were missing from this route:-\n";
    for (const auto& m : missing)
        s.out << m.row() << '\n';
}

int cmdRouteList(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--json"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    s.start();
    if (!s.requireRoot())
        return Error;
    std::vector<std::string> warnings;
    const auto routes = routes::listRoutes(s.ctx, &warnings);
    for (const auto& w : warnings)
        s.err << "velmora-cli: " << w << '\n';
    if (a.has("--json")) {
        s.out << "[\n";
        for (std::size_t i = 0; i < routes.size(); ++i) {
            s.out << "  {\"folder\": " << jsonString(routes[i].folder) << ", \"name\": " << jsonString(routes[i].name)
                  << ", \"scenarios\": [";
            const auto scenarios = routes::listScenarios(s.ctx, routes[i]);
            for (std::size_t j = 0; j < scenarios.size(); ++j)
                s.out << (j ? ", " : "") << "{\"folder\": " << jsonString(scenarios[j].folder) << ", \"name\": "
                      << jsonString(scenarios[j].name) << ", \"class\": " << jsonString(scenarios[j].legend()) << "}";
            s.out << "]}" << (i + 1 < routes.size() ? "," : "") << '\n';
        }
        s.out << "]\n";
        return Success;
    }
    s.out << "Routes: " << routes.size() << '\n';
    for (const auto& r : routes) {
        s.out << r.folder << '\t' << shown(r.name) << '\n';
        bool noFolder = false;
        const auto scenarios = routes::listScenarios(s.ctx, r, &noFolder);
        if (noFolder)
            s.out << "\tNo Scenarios folder found\n";
        for (const auto& sc : scenarios)
            s.out << '\t' << sc.folder << '\t' << shown(sc.name) << '\t' << sc.legend() << '\n';
    }
    return Success;
}

int cmdRouteCheck(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--out", "--threads"}, {"--deep", "--json", "--csv", "--mark-archives", "--mark-case"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    routes::RouteCheckOptions options;
    options.deep = a.has("--deep");
    options.markArchives = a.has("--mark-archives");
    options.markCase = a.has("--mark-case");
    const auto threads = s.threads(a);
    if (!threads)
        return Error;
    options.threads = *threads;
    std::vector<routes::RouteEntry> routesFound;
    const routes::RouteEntry* route = routeArgument(s, a, 1, routesFound);
    if (!route)
        return Error;
    const auto scenarios = routes::listScenarios(s.ctx, *route);
    routes::RouteCheck check(s.ctx, *route, scenarios);
    const auto r = check.run(options, &s.ui);
    if (r.aborted)
        return s.fail("stopped");

    // A report that cannot be written ends the command with an error, never with "Wrote".
    const routes::ReportFiles reports = routes::saveRouteReports(s.ctx, r);
    bool failed = !reports.ok();
    for (const std::string& error : reports.errors)
        s.fail(error);
    if (auto out = a.value("--out")) {
        // The reports go where the user asked too, as the screen saves them under Reports.
        auto put = [&](const WriteResult& written) {
            if (!written) {
                failed = true;
                s.fail(written.message);
            } else if (!s.g.quiet) {
                s.out << "Wrote " << written.target.string() << '\n';
            }
        };
        for (const auto& file : reports.written)
            put(s.ctx.files().copy(file, fs::path(*out) / file.filename()));
        std::string summary = r.missingReport();
        if (r.deepDone)
            summary += "\r\n" + r.texturesReport();
        if (const std::string marks = r.marksReport(); !marks.empty())
            summary += "\r\n" + marks;
        put(s.ctx.files().write(fs::path(*out) / (fileNameFromText(route->name) + "_Report.txt"), summary));
    }
    if (failed)
        return Error;

    if (a.has("--json")) {
        std::vector<std::string> missing;
        for (const auto& m : r.missing)
            missing.push_back(m.row());
        s.out << "{\n  \"route\": " << jsonString(r.routeName) << ",\n  \"folder\": " << jsonString(route->folder)
              << ",\n  \"tiles\": " << r.tiles << ",\n  \"missing\": " << jsonList(missing)
              << ",\n  \"warnings\": " << jsonList(r.warnings) << ",\n  \"assetsUsed\": " << r.assetsUnique.size();
        if (r.deepDone)
            s.out << ",\n  \"missingFiles\": " << jsonList(r.missingFiles) << ",\n  \"shapes\": " << r.geoFiles.size()
                  << ",\n  \"textures\": " << r.texturesUsed.size() << ",\n  \"sounds\": " << r.audioUsed.size();
        if (options.markArchives)
            s.out << ",\n  \"inArchive\": " << jsonMarks(r.inArchive, "archive");
        if (options.markCase)
            s.out << ",\n  \"otherCase\": " << jsonMarks(r.otherCase, "found");
        if (r.deepDone)
            s.out << ",\n  \"missingShapes\": " << jsonMarks(r.missingShapes, "blueprint")
                  << ",\n  \"otherReading\": " << jsonMarks(r.otherReading, "found");
        s.out << ",\n  \"unreadable\": " << jsonList(r.unreadable);
        s.out << "\n}\n";
    } else if (a.has("--csv")) {
        s.out << "Kind,File,Where\n";
        for (const auto& m : r.missing)
            s.out << "blueprint," << csvField(m.path) << ',' << csvField(m.label + " on tile " + m.tile) << '\n';
        for (const auto& m : r.missingFiles) {
            const auto by = m.find(" Called by ");
            s.out << "file," << csvField(m.substr(0, by)) << ','
                  << csvField(by == std::string::npos ? "" : m.substr(by + 11)) << '\n';
        }
        for (const auto& m : r.inArchive)
            s.out << "in-archive," << csvField(m.path) << ',' << csvField(m.where) << '\n';
        for (const auto& m : r.otherCase)
            s.out << "other-case," << csvField(m.path) << ',' << csvField(m.where) << '\n';
        for (const auto& m : r.missingShapes)
            s.out << "missing-shape," << csvField(m.path) << ',' << csvField(m.where) << '\n';
        for (const auto& m : r.otherReading)
            s.out << "other-reading," << csvField(m.path) << ',' << csvField(m.where) << '\n';
    } else if (!a.value("--out")) {
        s.out << "Route: " << shown(r.routeName) << " (" << route->folder << "), " << r.tiles << " tiles, "
              << r.assetsUnique.size() << " blueprints used\n\n"
              << r.missingReport() << '\n';
        if (r.deepDone)
            s.out << '\n' << r.texturesReport() << '\n';
        if (const std::string marks = r.marksReport(); !marks.empty())
            s.out << '\n' << marks;
    }
    // A tile that could not be read may hide what is missing: that is an error, not a finding.
    if (reportUnreadable(s, r.unreadable))
        return Error;
    return r.anyMissing() ? ProblemsFound : Success;
}

// The scenarios named after the route (folder or name), or all of them; empty after saying why.
std::optional<std::vector<routes::ScenarioEntry>> chosenScenarios(Session& s, const routes::RouteEntry& route,
                                                                   const std::vector<std::string>& names) {
    const auto all = routes::listScenarios(s.ctx, route);
    if (names.empty())
        return all;
    std::vector<routes::ScenarioEntry> chosen;
    for (const auto& n : names) {
        const auto it = std::find_if(all.begin(), all.end(), [&](const routes::ScenarioEntry& e) {
            return iequals(e.folder, n) || sameName(e.name, n);
        });
        if (it == all.end()) {
            s.fail("no scenario with the folder or name '" + n + "' in " + shown(route.name));
            return std::nullopt;
        }
        chosen.push_back(*it);
    }
    return chosen;
}

// A route and the scenarios named after it (all of them when none is).
struct RouteSelection {
    std::vector<routes::RouteEntry> routes;
    std::size_t index = 0;
    std::vector<routes::ScenarioEntry> scenarios;
    const routes::RouteEntry& route() const { return routes[index]; }
};

// The route first, then any number of scenarios; nothing after saying why.
std::optional<RouteSelection> routeAndScenarios(Session& s, const Arguments& a) {
    if (!a.problem.empty() || a.plain.empty()) {
        s.fail(a.problem.empty() ? "needs the route: its folder or its name" : a.problem);
        return std::nullopt;
    }
    Arguments first = a;
    first.plain.resize(1);
    RouteSelection chosen;
    const routes::RouteEntry* route = routeArgument(s, first, 1, chosen.routes);
    if (!route)
        return std::nullopt;
    chosen.index = static_cast<std::size_t>(route - chosen.routes.data());
    auto scenarios = chosenScenarios(s, *route, {a.plain.begin() + 1, a.plain.end()});
    if (!scenarios)
        return std::nullopt;
    chosen.scenarios = std::move(*scenarios);
    return chosen;
}

int cmdRouteStock(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--numbers"});
    const auto chosen = routeAndScenarios(s, a);
    if (!chosen)
        return Error;
    const routes::RouteEntry* route = &chosen->route();
    for (const auto& sc : chosen->scenarios) {
        s.out << shown(sc.name) << " (" << sc.folder << ")\n";
        std::string message;
        if (a.has("--numbers")) {
            for (const auto& row : routes::scenarioNumbers(s.ctx, *route, sc, &message))
                s.out << '\t' << shown(row) << '\n';
        } else {
            for (const auto& item : routes::scenarioStock(s.ctx, *route, sc, &message))
                s.out << '\t' << shown(item.path) << '\t' << shown(item.name) << (item.missing ? "\tmissing\n" : "\n");
        }
        if (!message.empty())
            s.out << '\t' << message << '\n';
    }
    return Success;
}

int cmdRouteScenery(Session& s) {
    const auto chosen = routeAndScenarios(s, parseArguments(s.g.rest, {}, {}));
    if (!chosen)
        return Error;
    bool anyMissing = false, anyUnreadable = false;
    for (const auto& sc : chosen->scenarios) {
        const auto r = routes::scenarioScenery(s.ctx, chosen->route(), sc);
        s.out << shown(sc.name) << " (" << sc.folder << ")\n";
        if (!r.hasScenery) {
            s.out << "\tThere was no Scenery file with this scenario\n";
            continue;
        }
        for (const auto& item : r.items)
            s.out << '\t' << shown(item) << '\n';
        for (const auto& m : r.missing)
            s.out << "\tmissing: " << shown(m.row()) << '\n';
        for (const auto& w : r.warnings)
            s.err << "velmora-cli: " << w << '\n';
        anyMissing = anyMissing || !r.missing.empty();
        anyUnreadable = reportUnreadable(s, r.unreadable) || anyUnreadable;
    }
    if (anyUnreadable)
        return Error;
    return anyMissing ? ProblemsFound : Success;
}

int cmdRouteAllStock(Session& s) {
    if (!s.startWithout(parseArguments(s.g.rest, {}, {})))
        return Error;
    std::vector<std::string> warnings;
    for (const auto& row : routes::allRoutesStock(s.ctx, routes::listRoutes(s.ctx), &warnings))
        s.out << shown(row) << '\n';
    for (const auto& w : warnings)
        s.err << "velmora-cli: " << w << '\n';
    return Success;
}

// The overview of all routes and scenarios, or the table of scenario types.
int routesText(Session& s, bool types) {
    if (!s.startWithout(parseArguments(s.g.rest, {}, {})))
        return Error;
    const auto all = routes::listRoutes(s.ctx);
    s.out << shown(types ? routes::scenarioTypesTable(s.ctx, all) : routes::routesOverview(s.ctx, all)) << '\n';
    return Success;
}

int cmdRouteOverview(Session& s) { return routesText(s, false); }
int cmdRouteTypes(Session& s) { return routesText(s, true); }

int cmdRouteCheckProperties(Session& s) {
    const auto chosen = routeAndScenarios(s, parseArguments(s.g.rest, {}, {}));
    if (!chosen)
        return Error;
    bool anyError = false;
    for (const auto& sc : chosen->scenarios)
        if (const std::string problem = routes::scenarioPropertiesProblem(s.ctx, chosen->route(), sc); !problem.empty()) {
            anyError = true;
            s.out << problem << '\n';
        }
    s.out << (anyError ? "All selected ScenarioProperties.xml checked - at least one had a format error."
                       : "All selected ScenarioProperties.xml checked - all formats OK.")
          << '\n';
    return anyError ? ProblemsFound : Success;
}

int cmdRouteProviders(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {});
    if (!a.problem.empty())
        return s.fail(a.problem);
    std::vector<routes::RouteEntry> found;
    const routes::RouteEntry* route = routeArgument(s, a, 1, found);
    if (!route)
        return Error;
    s.out << "Provider\tProduct\n";
    for (const auto& [provider, product] : routes::routeProviders(s.ctx, *route))
        s.out << provider << '\t' << product << '\n';
    return Success;
}

int cmdRouteItems(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--threads"}, {"--csv"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    const auto threads = s.threads(a);
    if (!threads)
        return Error;
    std::vector<routes::RouteEntry> found;
    const routes::RouteEntry* route = routeArgument(s, a, 1, found);
    if (!route)
        return Error;
    const auto r = routes::listPlacedItems(s.ctx, *route, *threads, &s.ui);
    if (r.aborted)
        return s.fail("stopped");
    for (const auto& w : r.warnings)
        s.err << "velmora-cli: " << w << '\n';
    if (a.has("--csv")) {
        s.out << "Asset,Type,Tile,X,Z,Found\n";
        for (const auto& i : r.items)
            s.out << csvField(i.path) << ',' << csvField(i.label) << ',' << i.tile << ',' << i.x << ',' << i.z << ','
                  << (i.found ? "yes" : "no") << '\n';
    } else {
        s.out << "Following item(s) were used by this route:-\n";
        for (const auto& i : r.items)
            s.out << i.row() << '\n';
        printMissing(s, r.missing);
    }
    if (reportUnreadable(s, r.unreadable))
        return Error;
    return r.missing.empty() ? Success : ProblemsFound;
}

int cmdRouteProduct(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--threads"}, {"--unused", "--del"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.has("--del") && !a.has("--unused"))
        return s.fail("--del goes with --unused");
    const auto threads = s.threads(a);
    if (!threads)
        return Error;
    std::vector<routes::RouteEntry> found;
    const routes::RouteEntry* route = routeArgument(s, a, 3, found);
    if (!route)
        return Error;
    const auto scenarios = routes::listScenarios(s.ctx, *route);
    const auto r = routes::productItemsUsed(s.ctx, *route, scenarios, a.plain[1], a.plain[2], *threads, &s.ui);
    if (r.aborted)
        return s.fail("stopped");
    if (a.has("--unused")) {
        // What is used on a tile that could not be read would be proposed for deletion.
        if (reportUnreadable(s, r.unreadable))
            return s.fail("not every tile could be read, so what the route uses is not known: nothing is listed");
        std::vector<std::string> unreadable;
        const auto rows = routes::productItemsNotUsed(s.ctx, r, a.has("--del"), &unreadable);
        if (a.has("--del") && reportUnreadable(s, unreadable))
            return s.fail("not every folder of the product could be read: no deletions are proposed");
        for (const auto& row : rows)
            s.out << row << '\n';
        return reportUnreadable(s, unreadable) ? Error : Success;
    }
    if (r.used.empty())
        s.out << "No shapes used by this provider/product\n";
    for (const auto& u : r.used)
        s.out << u << '\n';
    printMissing(s, r.missing);
    if (reportUnreadable(s, r.unreadable))
        return Error;
    return r.missing.empty() ? Success : ProblemsFound;
}

} // namespace

std::vector<Command> routeCommands() {
    return {
        {"route list", "[--json]", "the routes and their scenarios", cmdRouteList},
        {"route check", "ROUTE [--deep] [--json|--csv] [--out DIR] [--threads N] [--mark-archives] [--mark-case]",
         "what a route uses that is missing; --deep down to textures and sounds (exit 1 if anything); "
         "the marks note missing items packed in an .ap and names found under other letter case", cmdRouteCheck},
        {"route providers", "ROUTE", "the providers and products a route preloads", cmdRouteProviders},
        {"route overview", "", "every route's scenarios with their types, sorted", cmdRouteOverview},
        {"route types", "", "the table of scenario types, a row a route", cmdRouteTypes},
        {"route stock", "ROUTE [SCENARIO...] [--numbers]",
         "the rolling stock of the scenarios (all when none is named); --numbers with running numbers", cmdRouteStock},
        {"route scenery", "ROUTE [SCENARIO...]",
         "the scenery the scenarios place themselves (exit 1 if any of it is missing)", cmdRouteScenery},
        {"route all-stock", "", "the rolling stock of every scenario of every route, once each", cmdRouteAllStock},
        {"route check-properties", "ROUTE [SCENARIO...]",
         "the format test of the scenarios' ScenarioProperties.xml (exit 1 if one fails)", cmdRouteCheckProperties},
        {"route items", "ROUTE [--csv] [--threads N]",
         "every scenery, loft, road and track item with its tile and offset (exit 1 if any is missing)", cmdRouteItems},
        {"route product", "ROUTE PROVIDER PRODUCT [--unused [--del]] [--threads N]",
         "the blueprints of one provider and product the route uses; --unused those it does not use, "
         "--del as lines of a batch file",
         cmdRouteProduct},
    };
}

} // namespace velmora::cli
