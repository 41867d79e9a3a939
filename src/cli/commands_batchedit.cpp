// The batch edits of blueprints from the command line: Change Name, and the rolling-stock edits.
// Each batch is one journal entry; the output names every file written and every row passed
// over with the reason. Exit 1 when rows were passed over, 2 when the batch could not run.

#include "session.h"

#include "velmora/assets/batchedit.h"
#include "velmora/assets/renaming.h"

namespace velmora::cli {

namespace {

// The batch's closing report; the exit code says whether every row was written.
int report(Session& s, const assets::BatchResult& r) {
    if (!r.error.empty())
        return s.fail(r.error);
    s.out << assets::describe(r);
    return r.passedOver.empty() ? Success : ProblemsFound;
}

// Change Name: "Rename Selected Asset".
int cmdRename(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--name", "--threads"}, {});
    if (!a.problem.empty())
        return s.fail(a.problem);
    const auto name = a.value("--name");
    if (a.plain.empty() || !name || name->empty())
        return s.fail("needs the blueprints (.bin) and --name DISPLAYNAME");
    const auto threads = s.threads(a);
    if (!threads)
        return Error;
    s.start();
    std::vector<assets::AssetRow> rows;
    if (!s.requireRoot() || !rowsFromPaths(s, a.plain, rows))
        return Error;
    assets::BatchOptions o;
    o.command = "Change Name";
    o.threads = *threads;
    return report(s, assets::runBatch(s.ctx, rows, o, assets::changeNameEditor(*name, rows.size()), &s.ui));
}

} // namespace

std::vector<Command> batchEditCommands() {
    return {
        {"assets rename", "PATH... --name DISPLAYNAME [--threads N]",
         "gives the blueprints a new display name, numbered when there are several (stored with backups)", cmdRename,
         true,
         "With several blueprints the name gets \" #\" unless it ends in \"#\"; the \"#\" becomes each one's number "
         "from 1. Exit 1 when a blueprint was passed over (named with the reason)."},
    };
}

} // namespace velmora::cli
