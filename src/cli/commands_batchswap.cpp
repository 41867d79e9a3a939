// Swaps over every scenario of a route: by a vehicle's name (the editor's Swap in ALL Scenarios)
// and by a rule file (route swap-stock), with what changed, or would, per scenario.

#include "scenarioargs.h"
#include "session.h"
#include "velmora/core/textboundary.h"
#include "velmora/scenarios/batchswap.h"

namespace velmora::cli {

namespace sc = velmora::scenarios;

namespace {

std::string place(int consist, int vehicle) {
    return "\"consist\": " + std::to_string(consist) + ", \"vehicle\": " + std::to_string(vehicle);
}

void printJson(Session& s, const sc::BatchResult& r, bool dryRun) {
    auto& o = s.out;
    o << "{\n  \"ok\": " << (r.ok ? "true" : "false") << ",\n  \"dryRun\": " << (dryRun ? "true" : "false")
      << ",\n  \"message\": " << jsonString(r.message) << ",\n  \"written\": " << r.written
      << ",\n  \"swapped\": " << r.swapped << ",\n  \"scenarios\": [";
    bool first = true;
    for (const sc::ScenarioOutcome& sc : r.scenarios) {
        o << (first ? "" : ",") << "\n    {\"folder\": " << jsonString(sc.folder.filename().string())
          << ", \"name\": " << jsonString(sc.name) << ", \"passedOver\": " << jsonString(sc.passedOver)
          << ",\n     \"swapped\": [";
        first = false;
        for (std::size_t i = 0; i < sc.swapped.size(); ++i) {
            const sc::VehicleSwap& v = sc.swapped[i];
            o << (i ? ", " : "") << "{" << place(v.consist, v.vehicle) << ", \"name\": " << jsonString(v.name)
              << ", \"blueprint\": " << jsonString(v.blueprint) << ", \"stock\": " << jsonString(v.stock)
              << ", \"stockPath\": " << jsonString(v.stockPath) << ", \"rule\": " << v.rule << "}";
        }
        o << "],\n     \"refused\": [";
        for (std::size_t i = 0; i < sc.refused.size(); ++i) {
            const sc::Refusal& v = sc.refused[i];
            o << (i ? ", " : "") << "{" << place(v.consist, v.vehicle) << ", \"name\": " << jsonString(v.name)
              << ", \"reason\": " << jsonString(v.reason) << "}";
        }
        o << "],\n     \"uncovered\": [";
        for (std::size_t i = 0; i < sc.uncovered.size(); ++i) {
            const sc::Uncovered& v = sc.uncovered[i];
            o << (i ? ", " : "") << "{" << place(v.consist, v.vehicle) << ", \"name\": " << jsonString(v.name)
              << ", \"blueprint\": " << jsonString(v.blueprint) << "}";
        }
        o << "]}";
    }
    o << (r.scenarios.empty() ? "" : "\n  ") << "]\n}\n";
}

int finishBatch(Session& s, const sc::BatchResult& r, bool dryRun, bool json) {
    if (json) {
        printJson(s, r, dryRun);
        return r.ok ? Success : Error;
    }
    if (!s.g.quiet || !r.ok)
        s.out << sc::batchReport(r);
    if (!r.ok)
        return s.fail(shown(r.message));
    if (!s.g.quiet)
        s.out << r.swapped << (r.swapped == 1 ? " vehicle" : " vehicles")
              << (dryRun ? " would change" : " changed")
              << (dryRun ? ""
                         : " in " + std::to_string(r.written) + (r.written == 1 ? " scenario" : " scenarios"))
              << ".\n"
              << shown(r.message) << '\n';
    return Success;
}

// route swap-stock ROUTE --rules FILE.csv [--missing-only] [--dry-run] [--json] [--threads N]
int cmdRouteSwapStock(Session& s) {
    const Arguments a =
        parseArguments(s.g.rest, {"--rules", "--threads"}, {"--missing-only", "--dry-run", "--json"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() != 1)
        return s.fail(a.plain.empty() ? "needs the route (folder or name)"
                                      : "unexpected argument '" + a.plain[1] + "'");
    const auto rulesFile = a.value("--rules");
    if (!rulesFile || rulesFile->empty())
        return s.fail("--rules names the rule file (provider,product,blueprint,stock a line)");
    const auto threads = s.threads(a);
    if (!threads)
        return Error;
    s.start();
    if (!s.requireRoot())
        return Error;
    const auto routes = routes::listRoutes(s.ctx);
    const routes::RouteEntry* route = routes::findRoute(routes, a.plain[0]);
    if (!route)
        return s.fail(routes::routeNotFound(s.ctx, a.plain[0]));
    std::vector<std::string> errors;
    const auto rules = sc::readSwapRules(s.ctx, *rulesFile, errors);
    if (!rules) {
        for (const std::string& e : errors)
            s.err << "velmora-cli: " << s.g.command << ": " << shown(e) << '\n';
        return s.fail("the rule file was refused; nothing was written");
    }
    sc::BatchOptions options;
    options.dryRun = a.has("--dry-run");
    options.missingOnly = a.has("--missing-only");
    options.threads = *threads;
    options.ui = &s.ui;
    return finishBatch(s, sc::swapByRules(s.ctx, *route, *rules, options), options.dryRun, a.has("--json"));
}

} // namespace

int swapInAllScenarios(Session& s, const routes::RouteEntry& route, const std::string& name,
                       const sc::ChosenStock& stock, bool keepNumbers) {
    sc::BatchOptions options;
    options.swap.keepNumbers = keepNumbers;
    options.ui = &s.ui;
    return finishBatch(s, sc::swapInAllScenarios(s.ctx, route, documentFromUtf8(name), stock, options), false,
                       false);
}

std::vector<Command> batchSwapCommands() {
    return {
        {"route swap-stock", "ROUTE --rules FILE.csv [--missing-only] [--dry-run] [--json] [--threads N]",
         "swaps the vehicles a rule file covers in every scenario of the route, all saved as one undo",
         cmdRouteSwapStock, true,
         "The rule file has one rule a line: provider,product,blueprint,stock. The blueprint is a path\n"
         "below the product, or * for every blueprint of it; the stock is a blueprint path below Assets\n"
         "or a full path. Lines starting with # are comments. --missing-only swaps only vehicles whose\n"
         "blueprint is missing; --dry-run writes nothing and lists, per scenario, each vehicle that would\n"
         "change and each missing vehicle no rule covers."},
    };
}

} // namespace velmora::cli
