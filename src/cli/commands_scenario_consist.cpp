// The user's saved consists from the command line: a scenario's consist saved under a name, and
// the list of the saved ones.

#include "scenarioargs.h"
#include "session.h"

#include "velmora/consists/consisttemplates.h"
#include "velmora/core/textboundary.h"
#include "velmora/scenarios/namedconsist.h"

namespace velmora::cli {

namespace {

namespace sc = velmora::scenarios;
namespace cs = velmora::consists;

int cmdSaveConsist(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--consist", "--as"}, {});
    const auto ref = scenarioArgument(s, a);
    if (!ref)
        return Error;
    const auto consist = indexOption(s, a, "--consist");
    if (!consist)
        return Error;
    const std::string name = a.value("--as").value_or("");
    if (name.empty())
        return s.fail("--as takes the name the consist is saved under; nothing was written");
    int code = Success;
    const sc::ScenarioDocument d = openedScenario(s, *ref, code);
    if (code != Success)
        return code;
    if (*consist >= static_cast<int>(d.consists.size()))
        return s.fail("the scenario has " + std::to_string(d.consists.size()) + " consists; there is no consist " +
                      std::to_string(*consist) + "; nothing was written");
    const cs::SaveResult r = sc::saveAsNamedConsist(s.ctx, d, static_cast<std::size_t>(*consist), name);
    if (!r)
        return s.fail(shown(r.message) + (r.detail.empty() ? "" : "\n" + shown(r.detail)));
    if (!s.g.quiet) {
        s.out << r.message << '\n' << "Saved as: " << name << '\n';
        if (!r.backup.empty())
            s.out << "Backup: " << r.backup.string() << '\n';
    }
    return Success;
}

int cmdConsistsList(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--json"});
    if (!s.startWithout(a))
        return Error;
    const cs::ReadResult r = cs::readConsistTemplates(s.ctx);
    if (!r.ok())
        return s.fail(cs::consistTemplatesFile(s.ctx).string() + ": " + shown(r.error));
    const bool json = a.has("--json");
    bool anyMissing = false;
    auto& o = s.out;
    if (json)
        o << "[";
    else if (!r.exists)
        o << "You currently don't have any saved consists.\n";
    for (std::size_t i = 0; i < r.doc.consists.size(); ++i) {
        const cs::ConsistTemplate& c = r.doc.consists[i];
        const std::string name = cs::shownName(c.name);
        if (json)
            o << (i ? "," : "") << "\n  {\"name\": " << jsonString(name) << ", \"key\": " << jsonString(c.key)
              << ", \"id\": " << jsonString(c.id) << ", \"vehicles\": [";
        else
            o << "Consist " << i << ": " << shown(name) << "\tkey " << c.key << "\tid " << c.id << ", "
              << c.entries.size() << (c.entries.size() == 1 ? " vehicle\n" : " vehicles\n");
        for (std::size_t j = 0; j < c.entries.size(); ++j) {
            const cs::TemplateEntry& e = c.entries[j];
            const bool missing = cs::blueprintMissing(s.ctx, e);
            anyMissing = anyMissing || missing;
            if (json)
                o << (j ? "," : "") << "\n    {\"id\": " << jsonString(e.id) << ", \"provider\": "
                  << jsonString(cs::shownName(e.provider)) << ", \"product\": " << jsonString(cs::shownName(e.product))
                  << ", \"blueprint\": " << jsonString(cs::shownName(e.blueprintId))
                  << ", \"flipped\": " << (e.flipped == "1" ? "true" : "false")
                  << ", \"missing\": " << (missing ? "true" : "false") << "}";
            else
                o << '\t' << shown(cs::shownName(e.provider + "\\" + e.product + "\\" + e.blueprintId))
                  << (e.flipped == "1" ? "\tReversed" : "\tForward") << (missing ? "\tmissing" : "") << '\n';
        }
        if (json)
            o << (c.entries.empty() ? "" : "\n  ") << "]}";
    }
    if (json)
        o << (r.doc.consists.empty() ? "" : "\n") << "]\n";
    return anyMissing ? ProblemsFound : Success;
}

} // namespace

std::vector<Command> consistCommands() {
    return {
        {"scenario save-consist", "ROUTE SCENARIO --consist C --as NAME",
         "adds the consist to the saved consists (Content/ConsistTemplates.bin) under NAME", cmdSaveConsist},
        {"consists list", "[--json]",
         "the saved consists with their vehicles, missing blueprints marked (exit 1 if one is missing)",
         cmdConsistsList},
    };
}

} // namespace velmora::cli
