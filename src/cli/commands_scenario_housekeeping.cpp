// The scenario list's housekeeping from the command line: Revert to Default and Make Standard
// over several scenarios of a route at once, each run one journal entry.

#include "scenarioargs.h"
#include "session.h"
#include "velmora/scenarios/housekeeping.h"

namespace velmora::cli {

namespace sc = velmora::scenarios;

namespace {

// The folders of the scenarios named after the route (every scenario of it with `all`);
// nothing after saying what is wrong.
std::optional<std::vector<fs::path>> scenarioFolders(Session& s, const Arguments& a, bool all) {
    if (!a.problem.empty()) {
        s.fail(a.problem);
        return std::nullopt;
    }
    if (a.plain.empty() || (a.plain.size() == 1 && !all)) {
        s.fail(a.plain.empty() ? "needs the route, then the scenarios (folders or names)"
                               : "name the scenarios after the route, or give --all");
        return std::nullopt;
    }
    if (all && a.plain.size() > 1) {
        s.fail("--all takes the route alone");
        return std::nullopt;
    }
    s.start();
    if (!s.requireRoot())
        return std::nullopt;
    const auto routes = routes::listRoutes(s.ctx);
    const routes::RouteEntry* route = routes::findRoute(routes, a.plain[0]);
    if (!route) {
        s.fail(routes::routeNotFound(s.ctx, a.plain[0]));
        return std::nullopt;
    }
    std::vector<fs::path> folders;
    if (all) {
        for (const auto& e : routes::listScenarios(s.ctx, *route))
            folders.push_back(route->path / "Scenarios" / e.folder);
        return folders;
    }
    for (std::size_t i = 1; i < a.plain.size(); ++i) {
        const auto found = sc::findScenario(s.ctx, *route, a.plain[i]);
        if (!found) {
            s.fail("no scenario with the folder or name '" + a.plain[i] + "' in " + shown(route->name));
            return std::nullopt;
        }
        folders.push_back(found->folder);
    }
    return folders;
}

int cmdRevert(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--all"});
    const auto folders = scenarioFolders(s, a, a.has("--all"));
    return folders ? finish(s, sc::revertToDefault(s.ctx, *folders)) : Error;
}

int cmdMakeStandard(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--from"}, {});
    const std::string from = a.value("--from").value_or("");
    if (from != "career" && from != "timetable")
        return s.fail("--from takes career or timetable: the class the scenarios are made Standard from");
    const auto folders = scenarioFolders(s, a, false);
    return folders ? finish(s, sc::makeStandard(s.ctx, *folders,
                                                from == "career" ? sc::MakeStandardFrom::Career
                                                                 : sc::MakeStandardFrom::Timetable))
                   : Error;
}

} // namespace

std::vector<Command> scenarioHousekeepingCommands() {
    return {
        {"scenario revert", "ROUTE SCENARIO... | ROUTE --all",
         "Revert to Default: each Scenario.bin gets its first backup (Scenario.bak) again, what it held kept "
         "as a numbered backup",
         cmdRevert},
        {"scenario make-standard", "ROUTE SCENARIO... --from career|timetable",
         "makes career (or timetable) scenarios Standard; stops at the first of another class",
         cmdMakeStandard},
    };
}

} // namespace velmora::cli
