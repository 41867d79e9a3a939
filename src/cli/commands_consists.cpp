// The consist builder from the command line: a saved consist added from stock, deleted, renamed,
// or generated from a pool of wagons. Each reads ConsistTemplates.bin into the builder's grid,
// changes the grid as the screen's command does, and writes the whole file back.

#include "session.h"

#include "velmora/consists/consistbuilder.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/scenarios/indexstock.h"
#include "velmora/scenarios/swap.h"

namespace velmora::cli {

namespace {

namespace cs = velmora::consists;

// Start-up with the root required, and the saved consists read into the grid. With `mustExist`
// a missing file is refused. False after saying why.
bool openGrid(Session& s, const Arguments& a, cs::ConsistBuilder& b, bool mustExist) {
    if (!a.problem.empty()) {
        s.fail(a.problem);
        return false;
    }
    s.start();
    if (!s.requireRoot())
        return false;
    const cs::OpenResult o = b.open(s.ctx);
    if (!o.ok()) {
        s.fail(cs::consistTemplatesFile(s.ctx).string() + ": " + shown(o.error) + "\nNothing was written.");
        return false;
    }
    if (mustExist && !o.exists) {
        s.fail("You currently don't have any saved consists.");
        return false;
    }
    return true;
}

int saved(Session& s, cs::ConsistBuilder& b, const std::string& what) {
    const cs::SaveResult r = b.save(s.ctx, s.g.command);
    if (!r)
        return s.fail(shown(r.message) + (r.detail.empty() ? "" : "\n" + shown(r.detail)));
    if (!s.g.quiet) {
        s.out << r.message << '\n' << what << '\n';
        if (!r.backup.empty())
            s.out << "Backup: " << r.backup.string() << '\n';
    }
    return Success;
}

std::string vehicles(std::size_t n) {
    return std::to_string(n) + (n == 1 ? " vehicle" : " vehicles");
}

int cmdAdd(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {});
    cs::ConsistBuilder b;
    if (a.problem.empty() && a.plain.size() < 2)
        return s.fail("takes the consist's NAME and at least one STOCK (a blueprint below Assets, :flipped to "
                      "reverse it); nothing was written");
    if (!openGrid(s, a, b, false))
        return Error;
    if (a.plain[0].empty())
        return s.fail("the consist's name is empty; nothing was written");
    b.startConsist(a.plain[0]);
    for (std::size_t i = 1; i < a.plain.size(); ++i) {
        std::string typed = a.plain[i];
        bool flipped = false;
        for (const char* mark : {":flipped", ":1"})
            if (iendsWith(typed, mark)) {
                typed.resize(typed.size() - std::string_view(mark).size());
                flipped = true;
                break;
            }
        std::string error;
        const auto stock = scenarios::chooseStock(s.ctx, typed, error);
        if (!stock)
            return s.fail(shown(error) + "\nNothing was written.");
        b.addStock({cs::documentText(stock->provider), cs::documentText(stock->product), cs::documentText(stock->path)});
        if (flipped)
            b.flip({b.rows().size() - 1});
    }
    return saved(s, b, "Added: " + a.plain[0] + " (" + vehicles(a.plain.size() - 1) + ")");
}

// The words checked (`words` of them, `usage` saying what they are), the grid opened, and the
// rows of the consists named by the first word; nothing after saying what is wrong.
std::optional<std::vector<std::size_t>> openNamed(Session& s, const Arguments& a, cs::ConsistBuilder& b,
                                                  std::size_t words, const char* usage) {
    if (a.problem.empty() && (a.plain.size() != words || a.plain.back().empty())) {
        s.fail(std::string(usage) + "; nothing was written");
        return std::nullopt;
    }
    if (!openGrid(s, a, b, true))
        return std::nullopt;
    auto rows = b.rowsNamed(a.plain[0]);
    if (rows.empty()) {
        s.fail("there is no saved consist named '" + a.plain[0] + "'; nothing was written");
        return std::nullopt;
    }
    return rows;
}

int cmdDelete(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {});
    cs::ConsistBuilder b;
    const auto rows = openNamed(s, a, b, 1, "takes the NAME of the consist to delete");
    if (!rows)
        return Error;
    if (rows->size() == b.rows().size())
        return s.fail("'" + a.plain[0] + "' is the only saved consist; an empty ConsistTemplates.bin is not "
                      "written. Nothing was written.");
    b.remove(*rows);
    return saved(s, b, "Deleted: " + a.plain[0] + " (" + vehicles(rows->size()) + ")");
}

int cmdRename(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {});
    cs::ConsistBuilder b;
    const auto rows = openNamed(s, a, b, 2, "takes the consist's NAME and its NEWNAME");
    if (!rows)
        return Error;
    // Every consist of that name; after a rename the next one's rows still carry the old name.
    for (std::size_t r : *rows)
        if (sameName(cs::shownName(b.rows()[r].name), a.plain[0]))
            b.rename(r, a.plain[1]);
    return saved(s, b, "Renamed: " + a.plain[0] + " -> " + a.plain[1]);
}

int cmdGenerate(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--wagons", "--randomness", "--pool"}, {});
    if (a.problem.empty() && (a.plain.size() != 1 || a.plain[0].empty()))
        return s.fail("takes the NAME of the new consist; nothing was written");
    const auto wagons = parseNumber(a.value("--wagons").value_or(""));
    if (a.problem.empty() && (!wagons || *wagons < 1 || *wagons > 1000))
        return s.fail("--wagons takes the number of wagons, 1 to 1000; nothing was written");
    const auto randomness = parseNumber(a.value("--randomness").value_or(""));
    if (a.problem.empty() && (!randomness || *randomness < 0 || *randomness > 10))
        return s.fail("--randomness takes 0 (one wagon repeated), 1 to 9 (half from each half of the pool) or 10 "
                      "(any wagon each time); nothing was written");
    cs::ConsistBuilder b;
    if (!openGrid(s, a, b, false))
        return Error;
    const fs::path pool = a.value("--pool") ? fs::path(*a.value("--pool")) : s.ctx.reports() / "Index.csv";
    if (!a.value("--pool") && !fs::exists(pool))
        return s.fail(std::string(scenarios::kNoIndexFile) + " (" + pool.string() + ")\nNothing was written.");
    std::vector<assets::AssetRow> rows;
    std::string error;
    if (!cs::loadPool(pool, rows, error))
        return s.fail(shown(error) + "\nNothing was written.");
    b.startConsist(a.plain[0]);
    std::vector<std::string> problems;
    const int added = b.generate(rows, static_cast<int>(*wagons), static_cast<int>(*randomness),
                                 cs::systemIds().fraction, &problems);
    for (const std::string& p : problems)
        s.err << "velmora-cli: " << s.g.command << ": " << shown(p) << '\n';
    if (added == 0)
        return s.fail(pool.string() + " gave no wagons; nothing was written");
    return saved(s, b, "Generated: " + a.plain[0] + " (" + vehicles(static_cast<std::size_t>(added)) + ")");
}

} // namespace

std::vector<Command> consistBuilderCommands() {
    return {
        {"consists add", "NAME STOCK[:flipped]...",
         "adds a saved consist of the stock given front to back (a blueprint below Assets or a full path)", cmdAdd},
        {"consists delete", "NAME", "deletes the saved consists of that name", cmdDelete},
        {"consists rename", "NAME NEWNAME", "renames the saved consists of that name", cmdRename},
        {"consists generate", "NAME --wagons N --randomness R [--pool FILE]",
         "adds a saved consist of N wagons picked at random from the stock index or a pool", cmdGenerate},
    };
}

} // namespace velmora::cli
