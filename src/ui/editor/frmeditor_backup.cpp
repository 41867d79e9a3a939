// The main screen's entries that look after the simulator's folder as a whole: the two backups,
// Read/Write for all or a chosen folder, the version and the web site. The work is in the backup
// library; here it runs behind a progress box with Abort, and its outcome is shown.

#include "frmeditor.h"

#include "../common/backgroundjob.h"
#include "velmora/backup/housekeeping.h"

namespace velmora::ui {

namespace {

void runBackup(AppContext& ctx, bool incremental) {
    backup::BackupRun run;
    runInBackground(ctx, incremental ? "Incremental Backup" : "Backup Train Simulator 2019", [&](UserInterface&) {
        run = incremental ? backup::incrementalBackup(ctx) : backup::fullBackup(ctx);
    });
    ctx.ui().message(run.message, run.warn() ? Icon::Warning : Icon::Information);
}

void runReadWrite(AppContext& ctx, const std::optional<fs::path>& folder) {
    backup::ReadWriteRun run;
    runInBackground(ctx, "Making files Read/Write", [&](UserInterface&) { run = backup::makeReadWrite(ctx, folder); });
    const bool clean = run.refused.empty() && run.problems.empty();
    ctx.ui().message(run.message, clean ? Icon::Information : Icon::Warning);
}

} // namespace

void frmEditor::mnuBackup_Click() { runBackup(m_ctx, false); }

void frmEditor::mnuInc_Click() { runBackup(m_ctx, true); }

void frmEditor::mnuReadWrite_Click() { runReadWrite(m_ctx, std::nullopt); }

void frmEditor::mnuSelRW_Click() {
    const auto folder = m_ctx.ui().chooseFolder("Select the folder whose files are to be made Read/Write",
                                                m_ctx.railWorks());
    if (folder)
        runReadWrite(m_ctx, *folder);
}

void frmEditor::mnuVer_Click() { backup::checkForNewerVersion(m_ctx); }

void frmEditor::mnuWeb_Click() { backup::openWebSite(m_ctx); }

} // namespace velmora::ui
