#pragma once
// The journal of changes: every command that writes appends one entry to `Journal.jsonl` in the
// program's own folder, with the files it wrote, the backup each one got (or that it was new),
// and the size and hash of what was written. An undo restores every file of one entry from its
// backups and is itself an entry, so `history` shows it.
//
// One line of JSON a file record, appended and synced as each file is written, so a command cut
// off half-way is still recorded for what it did.

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

namespace fs = std::filesystem;

class WriteService;

struct JournalFile {
    enum class Action { Write, Remove } action = Action::Write;
    fs::path path;
    fs::path backup;   // Write: the numbered backup of the old file; empty when none was made
    bool created = false;
    std::uint64_t size = 0; // of what was written, or of what was removed
    std::string sha256;
    std::uint64_t backupSize = 0;
};

struct JournalEntry {
    long id = 0;
    std::string command;
    std::string time; // local, "YYYY-MM-DD hh:mm:ss"
    long undoes = 0;   // the entry this one took back; 0 for an ordinary command
    long undoneBy = 0; // the latest undo that took this one back, when reading the journal
    std::vector<JournalFile> files;
};

class Journal {
public:
    explicit Journal(fs::path file);
    const fs::path& file() const { return m_file; }

    // Opens the entry of a command: what is written until the matching end() belongs to it.
    // An open inside an open entry joins the outer one. A write with no entry open gets an
    // entry of its own, named after the file.
    void begin(const std::string& command, long undoes = 0);
    void end();

    // Appends the record of one file to the open entry. False (and the reason) when the journal
    // cannot be written; the file itself has been written by then.
    bool record(const JournalFile& file, std::string* error = nullptr);

    // Every entry, oldest first; lines that cannot be read (a record cut off by a kill) are
    // skipped. `undoneBy` is filled in.
    std::vector<JournalEntry> entries() const;

private:
    long nextId() const;

    fs::path m_file;
    std::mutex m_mutex;
    int m_depth = 0;
    std::string m_command;
    long m_undoes = 0;
    long m_id = 0; // 0 until the open entry's first record
    bool m_endsClean = false; // the last record of the open entry was written whole
    std::string m_time;
};

// Keeps a journal entry open for the life of a command.
class JournalCommand {
public:
    JournalCommand(Journal* journal, const std::string& command, long undoes = 0);
    ~JournalCommand();
    JournalCommand(const JournalCommand&) = delete;
    JournalCommand& operator=(const JournalCommand&) = delete;

private:
    Journal* m_journal;
};

// The newest entry that is no undo itself and has not been undone: what a plain undo takes.
std::optional<long> lastUndoableEntry(const std::vector<JournalEntry>& entries);

struct UndoResult {
    bool ok = false;
    std::string message;                // what went wrong, or a summary
    std::vector<std::string> conflicts; // files that changed since (each line names the file)
    std::vector<fs::path> restored;     // put back from their backups
    std::vector<fs::path> removed;      // created by the entry and removed
};

// What undoing entry `id` would change, or the conflicts that stop it.
struct UndoPlan {
    const JournalEntry* entry = nullptr;
    std::vector<std::string> conflicts;
    std::string problem; // no such entry, or nothing to undo
};
UndoPlan planUndo(const std::vector<JournalEntry>& entries, long id);

// Restores every file of entry `id` from its backups (each through the write service, so what
// stands there now is kept as a numbered backup) and removes the files it created. Refuses,
// naming the files, when any of them changed since the entry wrote it, unless `force`. The undo
// is recorded as an entry of its own that names the one it took back.
UndoResult undoEntry(WriteService& files, long id, bool force);

// The journal as text for people, newest first, one entry a line with its files below.
std::string formatHistory(const std::vector<JournalEntry>& entries, bool withFiles);
// The journal as a JSON array, newest first.
std::string historyJson(const std::vector<JournalEntry>& entries);
// One entry in a few lines, for the question before an undo.
std::string describeEntry(const JournalEntry& entry);

} // namespace velmora
