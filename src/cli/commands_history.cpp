// The journal of changes: what the commands wrote, and undo of one whole command.

#include "session.h"

#include "velmora/core/journal.h"

namespace velmora::cli {

namespace {

int cmdHistory(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--json", "--files"});
    if (!s.noWords(a))
        return Error;
    const auto entries = s.ctx.journal().entries();
    if (a.has("--json")) {
        s.out << historyJson(entries);
    } else if (entries.empty()) {
        if (!s.g.quiet)
            s.out << "No changes have been recorded in " << s.ctx.journalFile().string() << ".\n";
    } else {
        s.out << formatHistory(entries, a.has("--files"));
    }
    return Success;
}

int cmdUndo(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--force"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() > 1)
        return s.fail("unexpected argument '" + a.plain[1] + "'");
    const auto entries = s.ctx.journal().entries();
    long id = 0;
    if (a.plain.empty()) {
        const auto last = lastUndoableEntry(entries);
        if (!last)
            return s.fail("there is no change left to undo");
        id = *last;
    } else {
        const auto n = parseNumber(a.plain.front());
        if (!n || *n <= 0)
            return s.fail("ENTRY is the number that history shows, not '" + a.plain.front() + "'");
        id = static_cast<long>(*n);
    }
    const UndoResult r = undoEntry(s.ctx.files(), id, a.has("--force"));
    for (const std::string& conflict : r.conflicts)
        s.err << "velmora-cli: undo: " << conflict << '\n';
    if (!r.ok)
        return s.fail(r.message);
    if (!s.g.quiet) {
        for (const auto& p : r.restored)
            s.out << "Put back " << p.string() << '\n';
        for (const auto& p : r.removed)
            s.out << "Removed " << p.string() << " (kept as a numbered backup)\n";
        s.out << r.message << '\n';
    }
    return Success;
}

} // namespace

std::vector<Command> historyCommands() {
    return {
        {"history", "[--json] [--files]", "the changes commands have made, newest first", cmdHistory, false},
        {"undo", "[ENTRY] [--force]", "puts back every file of one change (the newest not undone)", cmdUndo, false},
    };
}

} // namespace velmora::cli
