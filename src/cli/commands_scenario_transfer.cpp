// Consists copied between the scenarios of a route, as the consist transfer screen copies them,
// and the consist list that screen shows.

#include "scenarioargs.h"
#include "session.h"

#include "velmora/scenarios/consisttransfer.h"

namespace velmora::cli {

namespace {

namespace sc = velmora::scenarios;

std::string language(const Session& s) { return s.ctx.settings.language.empty() ? "English" : s.ctx.settings.language; }

// A consist index checked against the scenario's consists; false after saying which scenario
// holds how many.
bool inRange(Session& s, const sc::ListedScenario& scenario, int index, const char* option) {
    const int count = sc::consistCount(scenario.text);
    if (index < count)
        return true;
    s.fail(scenario.scenarioFile().string() + " holds " + std::to_string(count) +
           (count == 1 ? " consist" : " consists") + (count ? " (0 to " + std::to_string(count - 1) + ")" : std::string()) +
           "; there is no consist " + std::to_string(index) + " for " + option);
    return false;
}

int cmdScenarioCopyConsist(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--consist", "--to", "--after"}, {});
    const auto ref = scenarioArgument(s, a);
    if (!ref)
        return Error;
    const auto consist = indexOption(s, a, "--consist");
    if (!consist)
        return Error;
    const auto to = a.value("--to");
    if (!to || to->empty())
        return s.fail("--to names the scenario (folder or name) of the same route that gets the copy");
    std::optional<int> after;
    if (a.value("--after") && !(after = indexOption(s, a, "--after")))
        return Error;
    const auto target = sc::findScenario(s.ctx, ref->route, *to);
    if (!target)
        return s.fail("no scenario with the folder or name '" + *to + "' in " + shown(ref->route.name));

    const sc::ListedScenario source = sc::readScenarioText(s.ctx, ref->folder);
    if (!source.ok())
        return s.fail(shown(source.error));
    sc::ListedScenario into = sc::readScenarioText(s.ctx, target->folder);
    if (!into.ok())
        return s.fail(shown(into.error));
    if (!inRange(s, source, *consist, "--consist") || (after && !inRange(s, into, *after, "--after")))
        return Error;
    const int behind = after ? *after + 1 : sc::consistCount(into.text);
    if (behind == 0)
        return s.fail(into.scenarioFile().string() + " holds no consist to put the copy behind");
    const sc::CommandResult r = sc::transferConsist(s.ctx, source, *consist + 1, into, behind);
    if (!r)
        return s.fail(shown(r.message));
    if (!s.g.quiet)
        s.out << shown(r.message) << '\n';
    return Success;
}

int cmdScenarioConsists(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--json"});
    const auto ref = scenarioArgument(s, a);
    if (!ref)
        return Error;
    const sc::ListedScenario scenario = sc::readScenarioText(s.ctx, ref->folder);
    if (!scenario.ok())
        return s.fail(shown(scenario.error));
    const auto consists = sc::consistSummaries(scenario.text, language(s));
    if (a.has("--json")) {
        s.out << "[";
        for (std::size_t i = 0; i < consists.size(); ++i) {
            const auto& c = consists[i];
            s.out << (i ? "," : "") << "\n  {\"index\": " << i << ", \"line\": " << jsonString(c.line())
                  << ", \"readable\": " << (c.readable ? "true" : "false") << ", \"service\": " << jsonString(c.service)
                  << ", \"vehicles\": " << c.vehicles << ", \"first\": " << jsonString(c.first) << "}";
        }
        s.out << (consists.empty() ? "" : "\n") << "]\n";
        return Success;
    }
    // The index the other scenario commands take, then the line as the transfer screen shows it.
    for (std::size_t i = 0; i < consists.size(); ++i)
        s.out << i << '\t' << shown(consists[i].line()) << '\n';
    return Success;
}

} // namespace

std::vector<Command> scenarioTransferCommands() {
    return {
        {"scenario consists", "ROUTE SCENARIO [--json]",
         "each consist's index (0 for the first) and its line as the consist transfer lists it: [n], name, vehicles, first vehicle",
         cmdScenarioConsists},
        {"scenario copy-consist", "ROUTE FROM --consist C --to SCENARIO [--after C2]",
         "copies consist C of FROM behind consist C2 (default: the last) of another scenario of the route, or of "
         "FROM itself; only that scenario's Scenario.bin is written, with its backup",
         cmdScenarioCopyConsist},
    };
}

} // namespace velmora::cli
