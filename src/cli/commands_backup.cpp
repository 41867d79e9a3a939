// Backups and housekeeping of the simulator's folder from the command line: the full and the
// incremental copy, read/write, the scratch folders and the web site.

#include "session.h"

#include "velmora/backup/housekeeping.h"
#include "velmora/core/services.h"

namespace velmora::cli {

namespace {

namespace bk = velmora::backup;

std::string problemsJson(const std::vector<std::string>& problems) {
    std::string json = "[";
    for (std::size_t i = 0; i < problems.size(); ++i)
        json += (i ? "," : "") + jsonString(problems[i]);
    return json + "]";
}

// Exit 0 when everything was copied, 1 when something was left or failed, 2 when nothing ran.
int backupResult(Session& s, const bk::BackupRun& run, bool json) {
    if (!run.ran)
        return s.fail(run.message);
    const auto& r = run.report;
    if (json) {
        s.out << "{\"target\":" << jsonString(r.target.string()) << ",\"copied\":" << r.copied
              << ",\"cloned\":" << r.cloned << ",\"unchanged\":" << r.unchanged << ",\"bytes\":" << r.bytes
              << ",\"aborted\":" << (r.aborted ? "true" : "false") << ",\"problems\":" << problemsJson(r.problems)
              << "}\n";
    } else {
        s.ctx.ui().message(run.message, run.warn() ? Icon::Warning : Icon::Information);
    }
    return r.complete() ? Success : ProblemsFound;
}

int cmdBackup(Session& s, bool incremental) {
    const Arguments a = parseArguments(s.g.rest, {"--to"}, {"--json"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (!a.plain.empty())
        return s.fail("unexpected argument '" + a.plain.front() + "'");
    s.start();
    if (!s.requireRoot())
        return Error;
    std::optional<fs::path> to;
    if (const auto v = a.value("--to"))
        to = fs::path(*v);
    const bool json = a.has("--json");
    return backupResult(s, incremental ? bk::incrementalBackup(s.ctx, to) : bk::fullBackup(s.ctx, to), json);
}

int cmdFull(Session& s) { return cmdBackup(s, false); }
int cmdIncremental(Session& s) { return cmdBackup(s, true); }

int cmdReadWrite(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--json"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() > 1)
        return s.fail("unexpected argument '" + a.plain[1] + "'");
    s.start();
    if (!s.requireRoot())
        return Error;
    std::optional<fs::path> folder;
    if (!a.plain.empty())
        folder = fs::absolute(fs::path(a.plain.front()));
    const bk::ReadWriteRun run = bk::makeReadWrite(s.ctx, folder);
    if (!run.refused.empty())
        return s.fail(run.refused);
    if (a.has("--json"))
        s.out << "{\"changed\":" << run.changed << ",\"seen\":" << run.seen
              << ",\"problems\":" << problemsJson(run.problems) << "}\n";
    else
        s.ctx.ui().message(run.message, run.problems.empty() ? Icon::Information : Icon::Warning);
    return run.problems.empty() ? Success : ProblemsFound;
}

int cmdClearTemp(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--simulator"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (!a.plain.empty())
        return s.fail("unexpected argument '" + a.plain.front() + "'");
    s.start();
    if (a.has("--simulator")) {
        if (!s.requireRoot())
            return Error;
        bk::clearSimulatorTemp(s.ctx);
        if (!s.g.quiet)
            s.out << "Emptied " << bk::simulatorTemp(s.ctx).string() << '\n';
    } else {
        s.ctx.clearTempFiles();
        if (!s.g.quiet)
            s.out << "Emptied " << s.ctx.tempFiles().string() << '\n';
    }
    return Success;
}

int cmdWebsite(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--version-page", "--open"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (!a.plain.empty())
        return s.fail("unexpected argument '" + a.plain.front() + "'");
    const std::string url = a.has("--version-page") ? bk::versionPageUrl() : bk::homePageUrl();
    if (a.has("--version-page"))
        s.out << bk::versionMessage() << '\n';
    s.out << url << '\n';
    if (a.has("--open") && !openUrl(url, &s.ui))
        return Error;
    return Success;
}

} // namespace

std::vector<Command> backupCommands() {
    return {
        {"backup full", "[--to DIR] [--json]",
         "copies the simulator's own files, Assets, Content and Source into the next free VL_Backup<n> of the "
         "backup folder (settings field 13, or DIR); cloned where the file system allows",
         cmdFull, false,
         "A target inside the simulator's folder or without room is refused before copying. Links to folders, "
         "named pipes and unreadable files are named, never followed. Exit 1 when anything was not copied. "
         "--json: target, copied, cloned, unchanged, bytes, aborted, problems."},
        {"backup incremental", "[--to DIR] [--json]",
         "brings <backups>/Incremental Backup up to date: copies each file that is newer than its copy, or has none",
         cmdIncremental, false, "Options and output as for backup full."},
        {"read-write", "[FOLDER] [--json]",
         "makes every file and folder of the simulator (or of FOLDER inside it) Read/Write; links are named, not "
         "followed",
         cmdReadWrite, false, "--json: changed, seen, problems."},
        {"clear-temp", "[--simulator]",
         "empties the program's TempFiles folder, or with --simulator the simulator's Temp folder", cmdClearTemp,
         false},
        {"website", "[--version-page] [--open]",
         "the program's web site (or, with --version-page, the current version and the page naming the newest); "
         "opened in the browser only with --open",
         cmdWebsite, false},
    };
}

} // namespace velmora::cli
