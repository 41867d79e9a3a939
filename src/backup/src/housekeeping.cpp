// Backups and the other housekeeping of the simulator's folder.

#include "velmora/backup/housekeeping.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"
#include "velmora/core/version.h"

namespace velmora::backup {

namespace {

constexpr int kMaxFullBackups = 50;

// What the copy left undone, after the outcome.
std::string problemsText(const TreeCopyReport& r) {
    std::string text;
    if (r.aborted)
        text += "\n\nAborted: " + std::to_string(r.copied) + " of " + std::to_string(r.planned) +
                " files had been copied.";
    if (!r.problems.empty()) {
        text += "\n\nNot copied (" + std::to_string(r.problems.size()) + "):";
        for (const auto& p : r.problems)
            text += "\n" + p;
    }
    return text;
}

std::string countsText(const TreeCopyReport& r) {
    std::string text = "\n\n" + std::to_string(r.copied) + " files (" + sizeText(r.bytes) + ") copied";
    if (r.cloned)
        text += ", " + std::to_string(r.cloned) + " of them as clones sharing the disk space of the originals";
    if (r.unchanged)
        text += "; " + std::to_string(r.unchanged) + " unchanged since their last copy";
    return text + ".";
}

std::optional<fs::path> backupRoot(AppContext& ctx, const std::optional<fs::path>& to) {
    if (to && !to->empty())
        return *to;
    if (ctx.settings.railWorksBackup.empty())
        return std::nullopt;
    return fs::path(ctx.settings.railWorksBackup);
}

BackupRun runBackup(AppContext& ctx, const fs::path& target, CopyRule rule, const std::string& done) {
    BackupRun run;
    TreeCopyOptions options;
    options.rule = rule;
    const fs::path root = ctx.railWorks();
    if (root.empty() || !fs::is_directory(root)) {
        run.message = "The Rail Works folder " + root.string() + " was not found: nothing was copied.";
        return run;
    }
    run.report = copyTree(root, simulatorParts(root), target, options, &ctx.ui());
    if (!run.report.refused.empty()) {
        run.message = run.report.refused;
        return run;
    }
    run.ran = true;
    run.message = (run.report.aborted ? "The copy to " + target.string() + " was aborted." : done + "\n" + target.string()) +
                  countsText(run.report) + problemsText(run.report);
    return run;
}

} // namespace

std::vector<TreePart> simulatorParts(const fs::path& root) {
    std::vector<TreePart> parts{{fs::path(), false}, {"Assets", true}, {"Content", true}};
    std::error_code ec;
    if (fs::is_directory(root / "Source", ec))
        parts.push_back({"Source", true});
    return parts;
}

fs::path nextFullBackupFolder(const fs::path& backups) {
    fs::path candidate;
    for (int n = 1; n <= kMaxFullBackups; ++n) {
        candidate = backups / ("VL_Backup" + std::to_string(n));
        std::error_code ec;
        if (!fs::exists(fs::symlink_status(candidate, ec)))
            return candidate;
    }
    return candidate;
}

fs::path incrementalBackupFolder(const fs::path& backups) { return backups / "Incremental Backup"; }

BackupRun fullBackup(AppContext& ctx, const std::optional<fs::path>& to) {
    const auto backups = backupRoot(ctx, to);
    if (!backups)
        return {false, false, {}, kNoBackupPath};
    const fs::path target = nextFullBackupFolder(*backups);
    // Beyond the fiftieth the last folder is used again: its files are brought up to date.
    std::error_code ec;
    const CopyRule rule = fs::exists(target, ec) ? CopyRule::NewerOnly : CopyRule::All;
    return runBackup(ctx, target, rule,
                     "TrainSimulator 2019 Assets,Contents,Source and Root folders have been copied to");
}

BackupRun incrementalBackup(AppContext& ctx, const std::optional<fs::path>& to) {
    const auto backups = backupRoot(ctx, to);
    if (!backups)
        return {false, false, {}, kNoBackupPath};
    const fs::path target = incrementalBackupFolder(*backups);
    std::error_code ec;
    const bool first = !fs::exists(target, ec);
    BackupRun run = runBackup(
        ctx, target, CopyRule::NewerOnly,
        "Changed files in TrainSimulator 2019 Assets,Contents,Source and Root folders have been copied to");
    run.firstIncremental = first;
    if (first && run.ran)
        run.message = std::string(kFirstIncremental) + "\n\n" + run.message;
    return run;
}

ReadWriteRun makeReadWrite(AppContext& ctx, const std::optional<fs::path>& folder) {
    ReadWriteRun run;
    const fs::path root = ctx.railWorks();
    const fs::path start = folder ? *folder : root;
    if (!folder && root.empty()) {
        run.refused = "No Rail Works folder is set.";
    } else if (!(!root.empty() && isInside(start, root)) && !isInside(start, ctx.appPath())) {
        run.refused = start.string() + " lies outside the Rail Works folder " + root.string() +
                      ": only files of the simulator are made Read/Write.";
    } else if (std::error_code ec; !fs::is_directory(fs::symlink_status(start, ec))) {
        run.refused = start.string() + ": no such folder.";
    }
    if (!run.refused.empty()) {
        run.message = run.refused;
        return run;
    }
    constexpr auto writable = fs::perms::owner_write;
    auto clear = [&run](const fs::path& p, fs::perms perms) {
        ++run.seen;
        if ((perms & writable) != fs::perms::none)
            return;
        std::error_code ec;
        fs::permissions(p, writable, fs::perm_options::add | fs::perm_options::nofollow, ec);
        if (ec)
            run.problems.push_back(p.string() + ": cannot be made Read/Write (" + ec.message() + ")");
        else
            ++run.changed;
    };
    std::error_code ec;
    clear(start, fs::symlink_status(start, ec).permissions());
    std::vector<fs::path> pending{start};
    while (!pending.empty()) {
        const fs::path dir = pending.back();
        pending.pop_back();
        fs::directory_iterator it(dir, ec);
        if (ec) {
            run.problems.push_back(dir.string() + ": the folder cannot be read (" + ec.message() + ")");
            continue;
        }
        for (; it != fs::directory_iterator(); it.increment(ec)) {
            const fs::file_status st = it->symlink_status(ec);
            if (fs::is_symlink(st)) {
                run.problems.push_back(it->path().string() + ": a link: not followed");
                continue;
            }
            if (fs::is_directory(st)) {
                clear(it->path(), st.permissions());
                pending.push_back(it->path());
            } else if (fs::is_regular_file(st)) {
                clear(it->path(), st.permissions());
            }
        }
    }
    run.message = "All files are now Read/Write";
    if (!run.problems.empty()) {
        run.message = "Files were made Read/Write, but not all:";
        for (const auto& p : run.problems)
            run.message += "\n" + p;
    }
    return run;
}

fs::path simulatorTemp(const AppContext& ctx) { return ctx.resolver.resolveForWrite(ctx.railWorks(), "Temp"); }

void clearSimulatorTemp(AppContext& ctx) {
    const fs::path temp = simulatorTemp(ctx);
    DeleteTree(temp);
    MakePath(temp);
}

std::string versionMessage() {
    return "Your Current Version is \nVersion " + std::to_string(Version::major) + "." +
           std::to_string(Version::minor) + "." + std::to_string(Version::revision);
}

std::string homePageUrl() { return "https://velmora.example.org/"; }
std::string versionPageUrl() { return homePageUrl() + "downloads/vl_version.html"; }

void checkForNewerVersion(AppContext& ctx) {
    ctx.ui().message(versionMessage());
    openUrl(versionPageUrl(), &ctx.ui());
}

void openWebSite(AppContext& ctx) { openUrl(homePageUrl(), &ctx.ui()); }

} // namespace velmora::backup
