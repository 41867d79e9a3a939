// The content list from the command line: the files of Content\Routes with route and scenario
// names, as the content screen lists them.

#include "session.h"
#include "velmora/assets/assetgrid.h"
#include "velmora/assets/contentlist.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/services.h"

namespace velmora::cli {

namespace {

int cmdContentList(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--out", "--mask"}, {"--json", "--csv", "--zero-length"});
    if (!s.startWithout(a))
        return Error;
    const auto routes = s.ctx.resolver.resolve(s.ctx.railWorks(), "Content\\Routes");
    if (!routes)
        return s.fail((s.ctx.railWorks() / "Content" / "Routes").string() +
                      ": the simulator root has no routes folder");
    assets::ContentListOptions o;
    o.mask = a.value("--mask").value_or("*.*");
    o.zeroLength = a.has("--zero-length");
    const auto result = assets::buildContentList(*routes, *routes, o, &s.ui);
    for (const auto& m : result.messages)
        s.err << "velmora-cli: " << m << '\n';
    if (result.stopped)
        return s.fail("stopped");

    if (auto out = a.value("--out")) {
        // Saved as Save List saves the grid: the form by the name's last letters, or JSON.
        if (iendsWith(*out, ".json")) {
            const std::string json = tableJson(assets::contentColumns(), assets::cellsOf(result.rows));
            if (const WriteResult written = s.ctx.files().write(*out, json); !written)
                return s.fail(written.message);
        } else {
            assets::CellRows table = assets::cellsOf(result.rows);
            table.insert(table.begin(), assets::contentColumns());
            std::string error;
            if (!assets::saveList(s.ctx.files(), *out, table, "Content", &error))
                return s.fail(error);
        }
        if (!s.g.quiet)
            s.out << result.rows.size() << " rows written to " << *out << '\n';
    } else if (a.has("--json")) {
        s.out << tableJson(assets::contentColumns(), assets::cellsOf(result.rows));
    } else {
        s.out << tableText(assets::contentColumns(), assets::cellsOf(result.rows),
                           a.has("--csv") ? ',' : '\t', a.has("--csv"));
    }
    // A list that misses what could not be read must not pass for the whole tree.
    for (const auto& what : result.unreadable)
        s.err << "velmora-cli: content list: could not be read: " << what << '\n';
    return result.unreadable.empty() ? Success : Error;
}

} // namespace

std::vector<Command> contentCommands() {
    return {
        {"content list", "[--mask M] [--zero-length] [--json|--csv] [--out FILE]",
         "the files of Content/Routes with route and scenario names (to FILE as .csv, .txt, .xls or .json); "
         "exit 2 naming the folders that could not be read",
         cmdContentList},
    };
}

} // namespace velmora::cli
