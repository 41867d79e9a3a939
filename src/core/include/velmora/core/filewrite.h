#pragma once
// The one way the program writes a file. The new content goes to a temporary file created
// exclusively in the target's own folder (an existing name, a link included, is never opened),
// is flushed and synced; the old file gets its numbered backup name (.bak, .bak1 .. .bak50) as
// a second link, so that it never leaves its own name; then the temporary file is renamed over
// the target in one step. At every moment the target's name holds the whole old file or the
// whole new one, and a failure at any step leaves the old one and no temporary file.
//
// Every write a command makes is recorded in the journal (see journal.h) so that one undo
// takes a whole command back.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

class QCryptographicHash;

namespace velmora {

namespace fs = std::filesystem;

class UserInterface;
class Journal;

// The steps of a write, in order. A failure names its step.
enum class WriteStep { Create, Write, Sync, Backup, Replace };
const char* writeStepName(WriteStep step);

// The file system calls a write is made of. The defaults are the system's; tests derive from
// this to make a chosen call fail and so walk a write through every failure.
class FileOps {
public:
    virtual ~FileOps() = default;
    // Creates `path` for writing; fails when the name exists, whatever it is (never follows a link).
    virtual std::error_code create(const fs::path& path, int& handle);
    // Writes all of the bytes (short writes are continued).
    virtual std::error_code write(int handle, const char* data, std::size_t size);
    virtual std::error_code sync(int handle);
    virtual std::error_code close(int handle);
    // Gives the file `from` the second name `to`; fails when `to` exists. Used for backups.
    virtual std::error_code link(const fs::path& from, const fs::path& to);
    // Moves `from` over `to` in one step, replacing `to`.
    virtual std::error_code rename(const fs::path& from, const fs::path& to);
    virtual std::error_code remove(const fs::path& path);
};

enum class Backup {
    None,     // replaced in one step, the old content not kept (scratch files, settings, exports)
    Numbered, // the old file kept as <name>.bak, or the first free of <name>.bak1 .. .bak50
};

struct WriteOptions {
    Backup backup = Backup::Numbered;
    // Recorded in the journal's open entry. Scratch files and the program's own bookkeeping
    // (settings, logs) are not.
    bool journal = true;
    // The file's permission bits are kept; a read-only file is refused where no backup is made.
    bool refuseReadOnly = true;
    // Flushed to the disk before it takes the name. Off only for trees the program generates
    // from nothing (the demo install), where a crash means generating again.
    bool sync = true;
    // The name the numbered backups are built from, in the target's folder; empty for the
    // target's own name. A scenario's save keeps "Scenario.bak" for "Scenario.bin", not
    // "Scenario.bin.bak", so that the simulator's users find the backups they know.
    std::string backupStem = {};
    // The one name the old file is kept under, in place of the numbered ones; the write fails
    // when that name is taken. An unpack that renames the existing file uses it.
    fs::path backupName = {};
};

struct WriteResult {
    bool ok = false;
    std::string message;                 // on failure: the file, the step, the reason
    std::optional<WriteStep> failedStep; // empty when the failure came before any step
    std::error_code error;               // the system's reason for a failed step, where it gave one
    fs::path target;                     // the file written (a link is written through)
    fs::path backup;                     // the numbered backup made, empty when none
    bool created = false;                // there was no file of that name before
    bool overwroteWithoutBackup = false; // every backup name was taken and the user agreed
    std::uint64_t size = 0;
    std::string sha256; // of what was written, in hex

    explicit operator bool() const { return ok; }
};

// The hex SHA-256 of some bytes, as the journal records them.
std::string sha256Hex(std::string_view bytes);

// The first free numbered backup name of `path` (.bak, then .bak1 .. .bak50), or nothing when
// all 51 are taken. With a stem, the names are built from it in the same folder.
std::optional<fs::path> freeBackupName(const fs::path& path, const std::string& stem = {});

// Receives the new content of a file piece by piece; an error ends the write.
using ByteSink = std::function<std::error_code(const char* data, std::size_t size)>;
// Writes the whole new content through the sink it is given.
using Producer = std::function<std::error_code(const ByteSink& sink)>;

// A file whose new content lies ready beside it under a temporary name (see prepare()).
struct PreparedFile {
    fs::path requested; // the name asked for
    fs::path target;    // the file that will be written (a link is written through)
    fs::path temp;      // the new content; empty once committed or discarded
    bool existed = false;
    std::uint64_t size = 0;
    std::string sha256; // when the write is journalled
};

// Many files staged with prepare() are made durable together: on Linux one call syncs the whole
// file system (syncfs) before they take their names, so each is staged without a sync of its
// own; elsewhere each is synced as it is staged. Only a file that replaces another needs its
// data on the disk before it takes the name: a new one lost in a power cut leaves nothing of
// the user's worse than before.
#ifdef __linux__
inline constexpr bool kSyncStagedEachFile = false;
#else
inline constexpr bool kSyncStagedEachFile = true;
#endif
// Syncs the file system `anyPath` lies on (nothing where files were synced one by one).
void syncStaged(const fs::path& anyPath);

class WriteService {
public:
    explicit WriteService(UserInterface* ui = nullptr, Journal* journal = nullptr);

    void setUserInterface(UserInterface* ui) { m_ui = ui; }
    // The calls the writes are made of; null puts the system's back.
    void setFileOps(FileOps* ops);
    Journal* journal() const { return m_journal; }

    // Writes `bytes` as the whole new content of `target`, making missing folders on the way.
    // When every backup name is taken, asks whether to overwrite with no backup; without a yes
    // the target is left as it is and the result says why.
    WriteResult write(const fs::path& target, std::string_view bytes, const WriteOptions& options = {});
    // The same, with content that comes in pieces (an archive's entry), never all in memory.
    WriteResult write(const fs::path& target, const Producer& produce, const WriteOptions& options = {});

    // A write in two halves, so that many files can be made ready and then all put in place,
    // or none: prepare() writes the new content beside the target under a temporary name and
    // changes nothing else; commit() gives the old file its backup and the new one the name, and
    // records it in the journal; discard() drops what prepare() made. A failed commit discards.
    WriteResult prepare(const fs::path& target, const Producer& produce, const WriteOptions& options,
                        PreparedFile& file);
    WriteResult commit(PreparedFile& file, const WriteOptions& options = {});
    // Takes a file that another program has finished (an archive libzip or 7-Zip wrote) as the
    // prepared content of `target`. It must lie in the target's folder; it is synced, measured
    // and, for the journal, hashed. On failure it is removed.
    // prepare() with the content of the file `source`.
    WriteResult prepareCopy(const fs::path& source, const fs::path& target, const WriteOptions& options,
                            PreparedFile& file);
    WriteResult adopt(const fs::path& finished, const fs::path& target, const WriteOptions& options,
                      PreparedFile& file);
    void discard(PreparedFile& file);

    // Takes a whole folder away by moving every file in it below `keepIn` (the program's own
    // folder of removed things), each recorded in the journal as removed with its new place as
    // its backup, so that an undo brings the folder back. Links and other non-files are left
    // where they are and named. Returns the problems, one sentence each; empty when all went.
    std::vector<std::string> removeFolder(const fs::path& folder, const fs::path& keepIn);

    // Puts back what a command wrote before a later step of it failed, newest first: a replaced
    // file gets its old content again from its backup, a created one is taken away (keeping a
    // backup name). Returns what could not be put back, one sentence a file; empty when all was.
    std::string putBack(const std::vector<WriteResult>& written);

    // The whole of `source` written to `target` the same way.
    WriteResult copy(const fs::path& source, const fs::path& target, const WriteOptions& options = {});
    // Adds `bytes` at the end of a log of the program's own (Errors.txt, the journal), synced
    // unless told otherwise.
    bool append(const fs::path& target, std::string_view bytes, std::string* error = nullptr, bool sync = true);
    // Takes a file away from its name, as an undo does with a file its command created: the
    // file keeps its numbered backup name, so nothing is deleted. Recorded in the journal.
    WriteResult remove(const fs::path& target);

private:
    std::error_code writeTemporary(const fs::path& folder, const std::string& name, const Producer& produce,
                                   fs::path& temp, WriteStep& step, std::optional<fs::perms> perms, bool sync,
                                   std::uint64_t& size, QCryptographicHash* hash);
    std::error_code makeBackup(const fs::path& target, const std::string& stem, fs::path& backup,
                               const fs::path& named);
    bool mayOverwriteWithoutBackup(const fs::path& target, const std::string& stem);

    UserInterface* m_ui;
    Journal* m_journal;
    FileOps* m_ops;
    std::mutex m_askMutex;
};

// The write service of code that has no program folder (velmora-serz, scratch conversions):
// the same steps, no journal and no questions.
WriteResult writeFileSafely(const fs::path& target, std::string_view bytes, Backup backup = Backup::None);

} // namespace velmora
