// Search and replace in many documents from the command line: each document is converted to
// its XML text, changed and converted back; the run is one journal entry. Exit 1 when a
// document could not be read, encoded again or written (each named with the reason).

#include "session.h"

#include "velmora/core/multireplace.h"
#include "velmora/core/services.h"

namespace velmora::cli {

namespace {

const char* stateWord(FileReplace::State state) {
    switch (state) {
    case FileReplace::State::Unchanged: return "unchanged";
    case FileReplace::State::Changed: return "changed";
    case FileReplace::State::Unreadable: return "unreadable";
    case FileReplace::State::NotEncoded: return "not-encoded";
    case FileReplace::State::NotWritten: return "not-written";
    }
    return "";
}

int cmdSearchReplace(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--find", "--replace", "--threads"}, {"--ignore-case", "--dry-run", "--json"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    const auto find = a.value("--find");
    const auto replace = a.value("--replace");
    if (!find || find->empty() || !replace)
        return s.fail("needs --find TEXT (not empty) and --replace TEXT");
    if (a.plain.empty())
        return s.fail("needs the documents to change");
    const auto threads = s.threads(a);
    if (!threads)
        return Error;
    s.start();

    MultiReplaceOptions o;
    o.find = *find;
    o.replacement = *replace;
    o.ignoreCase = a.has("--ignore-case");
    o.dryRun = a.has("--dry-run");
    o.threads = *threads;
    std::vector<fs::path> files(a.plain.begin(), a.plain.end());
    const MultiReplaceResult r = replaceInFiles(s.ctx, files, o, &s.ui);

    if (a.has("--json")) {
        std::vector<std::vector<std::string>> rows;
        for (const FileReplace& f : r.files)
            rows.push_back({f.file.string(), stateWord(f.state), std::to_string(f.count), f.backup.string(), f.message});
        s.out << tableJson({"file", "state", "count", "backup", "message"}, rows) << '\n';
    } else if (!s.g.quiet || r.anyFailed()) {
        s.out << describe(r, o.dryRun);
    }
    if (!r.error.empty())
        return s.fail(r.error);
    return r.anyFailed() ? ProblemsFound : Success;
}

} // namespace

std::vector<Command> searchReplaceCommands() {
    return {
        {"search-replace", "--find TEXT --replace TEXT FILE... [--ignore-case] [--dry-run] [--json] [--threads N]",
         "replaces a text in the XML of several documents (stored with backups)", cmdSearchReplace, true,
         "Each document is converted to its XML text, every hit of --find is replaced by --replace (the search goes\n"
         "on one character past each hit, so a replacement that holds the search text is not replaced again), and the\n"
         "document is converted back and stored under its own name, the old file kept as its numbered backup (.bak,\n"
         ".bak1 ...). A document without a hit is not written and gets no backup. The search matches letter case\n"
         "unless --ignore-case is given (the screen always ignores case).\n"
         "The replacement goes into the XML text as typed: write &amp; &lt; &gt; for & < > in the document; a bare\n"
         "< or & leaves XML that does not encode, and that document is left as it was and named.\n"
         "  --dry-run    count the hits and name the documents that would change; write nothing\n"
         "  --json       one object a document: file, state (changed, unchanged, unreadable, not-encoded,\n"
         "               not-written), count, backup, message\n"
         "  --threads N  the number of threads (all cores when left out)\n"
         "The whole run is one entry of the journal: one `velmora-cli undo` takes it back. Exit 1 when a document\n"
         "could not be read, encoded or written (named with the reason), 2 when the run could not go on.\n"},
    };
}

} // namespace velmora::cli
