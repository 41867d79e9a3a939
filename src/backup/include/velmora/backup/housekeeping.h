#pragma once
// The commands that look after the simulator's folder as a whole: the full and the incremental
// backup, making files read/write, the version and the web site. The copies run in the process
// (see treecopy.h); an incremental backup copies the files that are newer than their copy.

#include "velmora/backup/treecopy.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace velmora {
class AppContext;
}

namespace velmora::backup {

namespace fs = std::filesystem;

// The simulator's own files (not its folders), then Assets, Content and, when it exists, Source.
std::vector<TreePart> simulatorParts(const fs::path& root);

// The first of <backups>/VL_Backup1 .. VL_Backup50 that does not exist; the last when all do.
fs::path nextFullBackupFolder(const fs::path& backups);
// The one rolling copy of the incremental backup.
fs::path incrementalBackupFolder(const fs::path& backups);

inline constexpr const char* kNoBackupPath =
    "You do not appear to have set up a path for your backups.\nGo to the Options menu and do this first.";

inline constexpr const char* kFirstIncremental =
    "This appears to be the first time you have used this option.\nThis first run copies every file; later runs "
    "copy only the files that are newer than their copy.";

struct BackupRun {
    bool ran = false;            // false: stopped before copying (no backup path, refused)
    bool firstIncremental = false;
    TreeCopyReport report;
    std::string message;         // for the user: the outcome, then what was not copied
    bool warn() const { return !ran || !report.complete(); }
};

// mnuBackup_Click: a full copy into the next VL_Backup<n> of the backup folder (`to` in place of
// settings field 13 when given). The folders are made as needed; progress and Abort go through
// the context's user interface. The caller shows the message.
BackupRun fullBackup(AppContext& ctx, const std::optional<fs::path>& to = std::nullopt);
// mnuInc_Click: the files newer than their copy into <backups>/Incremental Backup.
BackupRun incrementalBackup(AppContext& ctx, const std::optional<fs::path>& to = std::nullopt);

struct ReadWriteRun {
    std::uint64_t changed = 0; // files and folders that were read-only
    std::uint64_t seen = 0;
    std::string refused;
    std::vector<std::string> problems;
    std::string message;
};

// mnuReadWrite_Click / mnuSelRW: clears the read-only state of every file and folder in the
// folder and below it (the simulator's whole folder when none is given). Links are not followed
// and are named. A folder outside the simulator's tree and the program's own folder is refused.
ReadWriteRun makeReadWrite(AppContext& ctx, const std::optional<fs::path>& folder = std::nullopt);

// The simulator's Temp folder, emptied and made again (frmFolder6's Delete All).
fs::path simulatorTemp(const AppContext& ctx);
void clearSimulatorTemp(AppContext& ctx);

// "Your Current Version is " + line break + "Version 1.2.3".
std::string versionMessage();
// The program's web site: its home page and the page that names the newest version. Nothing is
// fetched: the pages are only opened in the browser when the user asks.
std::string homePageUrl();
std::string versionPageUrl();
// mnuVer: the version message, then the version page in the browser. mnuWeb: the home page.
void checkForNewerVersion(AppContext& ctx);
void openWebSite(AppContext& ctx);

} // namespace velmora::backup
