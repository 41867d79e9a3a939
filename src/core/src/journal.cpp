#include "velmora/core/journal.h"

#include "velmora/core/filewrite.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"

#include <QByteArray>
#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <fstream>
#include <map>

namespace velmora {

namespace {

// A path is kept as text when it is UTF-8 and as hexadecimal bytes otherwise, so that a name in
// another code page comes back exactly.
void putPath(QJsonObject& o, const char* key, const fs::path& p) {
    const std::string bytes = p.string();
    if (validUtf8(bytes))
        o.insert(QLatin1String(key), QString::fromStdString(bytes));
    else
        o.insert(QLatin1String(key) + QLatin1String("Hex"),
                 QString::fromLatin1(QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size())).toHex()));
}

fs::path getPath(const QJsonObject& o, const char* key) {
    const QString hexKey = QLatin1String(key) + QLatin1String("Hex");
    if (o.contains(hexKey))
        return fs::path(QByteArray::fromHex(o.value(hexKey).toString().toLatin1()).toStdString());
    return fs::path(o.value(QLatin1String(key)).toString().toStdString());
}

std::string nowText() { return QDateTime::currentDateTime().toString("yyyy-MM-dd hh:mm:ss").toStdString(); }

struct Line {
    long id = 0;
    std::string command, time;
    long undoes = 0;
    JournalFile file;
};

std::optional<Line> parseLine(std::string_view text) {
    QJsonParseError error{};
    const QJsonDocument doc =
        QJsonDocument::fromJson(QByteArray(text.data(), static_cast<qsizetype>(text.size())), &error);
    if (error.error != QJsonParseError::NoError || !doc.isObject())
        return std::nullopt;
    const QJsonObject o = doc.object();
    Line l;
    l.id = static_cast<long>(o.value("entry").toDouble());
    if (l.id <= 0)
        return std::nullopt;
    l.command = o.value("command").toString().toStdString();
    l.time = o.value("time").toString().toStdString();
    l.undoes = static_cast<long>(o.value("undoes").toDouble());
    l.file.action = o.value("action").toString() == "remove" ? JournalFile::Action::Remove : JournalFile::Action::Write;
    l.file.path = getPath(o, "path");
    l.file.backup = getPath(o, "backup");
    l.file.created = o.value("created").toBool();
    l.file.size = static_cast<std::uint64_t>(o.value("size").toDouble());
    l.file.sha256 = o.value("sha256").toString().toStdString();
    l.file.backupSize = static_cast<std::uint64_t>(o.value("backupSize").toDouble());
    return l;
}

std::string formatLine(long id, const std::string& time, const std::string& command, long undoes,
                       const JournalFile& f) {
    QJsonObject o;
    o.insert("entry", static_cast<double>(id));
    o.insert("time", QString::fromStdString(time));
    o.insert("command", QString::fromUtf8(command.data(), static_cast<qsizetype>(command.size())));
    if (undoes)
        o.insert("undoes", static_cast<double>(undoes));
    o.insert("action", f.action == JournalFile::Action::Remove ? "remove" : "write");
    putPath(o, "path", f.path);
    if (!f.backup.empty()) {
        putPath(o, "backup", f.backup);
        o.insert("backupSize", static_cast<double>(f.backupSize));
    }
    o.insert("created", f.created);
    o.insert("size", static_cast<double>(f.size));
    o.insert("sha256", QString::fromStdString(f.sha256));
    return QJsonDocument(o).toJson(QJsonDocument::Compact).toStdString() + "\n";
}

bool endsWithLineEnd(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in)
        return true;
    in.seekg(0, std::ios::end);
    if (in.tellg() <= 0)
        return true;
    in.seekg(-1, std::ios::end);
    return in.get() == '\n';
}

// The hash of a file's bytes as they stand, nothing when it cannot be read. Raw bytes, not
// ReadTextFile: that one turns marker files from UTF-16 into single bytes.
std::optional<std::string> currentHash(const fs::path& file) {
    std::error_code ec;
    if (!fs::is_regular_file(file, ec))
        return std::nullopt;
    std::ifstream in(file, std::ios::binary);
    if (!in)
        return std::nullopt;
    return sha256Hex(std::string(std::istreambuf_iterator<char>(in), {}));
}

} // namespace

Journal::Journal(fs::path file) : m_file(std::move(file)) {}

void Journal::begin(const std::string& command, long undoes) {
    std::lock_guard lock(m_mutex);
    if (m_depth++ == 0) {
        m_command = command;
        m_undoes = undoes;
        m_id = 0;
        m_endsClean = false;
    }
}

void Journal::end() {
    std::lock_guard lock(m_mutex);
    if (m_depth > 0 && --m_depth == 0) {
        // The records of a command reach the disk together, once it has written its last file.
        if (m_id)
            WriteService().append(m_file, {}, nullptr, true);
        m_command.clear();
        m_undoes = 0;
        m_id = 0;
    }
}

long Journal::nextId() const {
    // Entries only grow, so the last line that reads holds the highest number so far.
    std::ifstream in(m_file, std::ios::binary);
    if (!in)
        return 1;
    in.seekg(0, std::ios::end);
    const std::streamoff size = in.tellg();
    std::streamoff start = std::max<std::streamoff>(0, size - 65536);
    for (;;) {
        in.clear();
        in.seekg(start);
        std::string tail(static_cast<std::size_t>(size - start), '\0');
        in.read(tail.data(), static_cast<std::streamsize>(tail.size()));
        long best = 0;
        for (const std::string& line : SplitLines(tail))
            if (auto l = parseLine(line))
                best = std::max(best, l->id);
        if (best > 0 || start == 0)
            return best + 1;
        start = std::max<std::streamoff>(0, start - 65536 * 16);
    }
}

bool Journal::record(const JournalFile& file, std::string* error) {
    std::lock_guard lock(m_mutex);
    long id = m_id;
    std::string command = m_command, time = m_time;
    if (m_depth == 0 || id == 0) {
        id = nextId();
        time = nowText();
        if (m_depth == 0) {
            command = "write " + file.path.string();
        } else {
            m_id = id;
            m_time = time;
        }
    }
    // A record cut off by a kill has no line end: the next one starts on a line of its own.
    std::string line = formatLine(id, time, command, m_depth ? m_undoes : 0, file);
    // Inside a command the journal ends where its own last record ended: no need to look.
    if (!(m_depth > 0 && m_endsClean) && !endsWithLineEnd(m_file))
        line.insert(line.begin(), '\n');
    WriteService plain; // the journal's own appends are never journalled
    m_endsClean = plain.append(m_file, line, error, m_depth == 0);
    if (!m_endsClean) {
        if (error)
            *error = "The journal could not record the change: " + *error;
        return false;
    }
    return true;
}

std::vector<JournalEntry> Journal::entries() const {
    std::vector<JournalEntry> out;
    std::map<long, std::size_t> index;
    for (const std::string& text : SplitLines(ReadTextFile(m_file))) {
        const auto line = parseLine(text);
        if (!line)
            continue;
        auto [it, added] = index.emplace(line->id, out.size());
        if (added) {
            JournalEntry e;
            e.id = line->id;
            e.command = line->command;
            e.time = line->time;
            e.undoes = line->undoes;
            out.push_back(std::move(e));
        }
        out[it->second].files.push_back(line->file);
    }
    std::sort(out.begin(), out.end(), [](const JournalEntry& a, const JournalEntry& b) { return a.id < b.id; });
    for (const JournalEntry& e : out)
        if (e.undoes)
            for (JournalEntry& target : out)
                if (target.id == e.undoes)
                    target.undoneBy = e.id;
    return out;
}

JournalCommand::JournalCommand(Journal* journal, const std::string& command, long undoes) : m_journal(journal) {
    if (m_journal)
        m_journal->begin(command, undoes);
}

JournalCommand::~JournalCommand() {
    if (m_journal)
        m_journal->end();
}

namespace {
const JournalEntry* findEntry(const std::vector<JournalEntry>& entries, long id) {
    for (const JournalEntry& e : entries)
        if (e.id == id)
            return &e;
    return nullptr;
}

// An entry counts as undone while the undo that took it back has not been taken back itself.
bool isUndone(const std::vector<JournalEntry>& entries, const JournalEntry& e) {
    if (!e.undoneBy)
        return false;
    const JournalEntry* undo = findEntry(entries, e.undoneBy);
    return !undo || !undo->undoneBy;
}

// For each file of an entry, its first and its last record: the first says what stood there
// before, the last what the entry left there.
struct FileSpan {
    const JournalFile* first;
    const JournalFile* last;
};
std::vector<FileSpan> spans(const JournalEntry& e) {
    std::vector<FileSpan> out;
    for (const JournalFile& f : e.files) {
        auto it = std::find_if(out.begin(), out.end(), [&](const FileSpan& s) { return s.first->path == f.path; });
        if (it == out.end())
            out.push_back({&f, &f});
        else
            it->last = &f;
    }
    return out;
}
} // namespace

std::optional<long> lastUndoableEntry(const std::vector<JournalEntry>& entries) {
    for (auto it = entries.rbegin(); it != entries.rend(); ++it)
        if (!it->undoes && !isUndone(entries, *it))
            return it->id;
    return std::nullopt;
}

UndoPlan planUndo(const std::vector<JournalEntry>& entries, long id) {
    UndoPlan plan;
    plan.entry = findEntry(entries, id);
    if (!plan.entry) {
        plan.problem = "There is no entry " + std::to_string(id) + " in the journal.";
        return plan;
    }
    if (isUndone(entries, *plan.entry)) {
        plan.problem = "Entry " + std::to_string(id) + " has been undone already (by entry " +
                       std::to_string(plan.entry->undoneBy) + ").";
        return plan;
    }
    for (const FileSpan& s : spans(*plan.entry)) {
        const std::string path = s.first->path.string();
        const auto now = currentHash(s.last->path);
        std::error_code ec;
        if (s.last->action == JournalFile::Action::Remove) {
            if (fs::exists(fs::symlink_status(s.last->path, ec)))
                plan.conflicts.push_back(path + ": exists again since it was removed");
        } else if (!now) {
            plan.conflicts.push_back(path + ": is missing or cannot be read");
        } else if (*now != s.last->sha256) {
            plan.conflicts.push_back(path + ": has changed since");
        }
        if (!s.first->backup.empty()) {
            const auto size = fs::file_size(s.first->backup, ec);
            if (ec)
                plan.conflicts.push_back(path + ": its backup " + s.first->backup.string() + " is missing");
            else if (size != s.first->backupSize)
                plan.conflicts.push_back(path + ": its backup " + s.first->backup.string() + " has changed");
        } else if (!s.first->created) {
            plan.conflicts.push_back(path + ": was overwritten without a backup and cannot be put back");
        }
    }
    return plan;
}

UndoResult undoEntry(WriteService& files, long id, bool force) {
    UndoResult result;
    Journal* journal = files.journal();
    if (!journal) {
        result.message = "There is no journal to undo from.";
        return result;
    }
    const std::vector<JournalEntry> entries = journal->entries();
    const UndoPlan plan = planUndo(entries, id);
    if (!plan.problem.empty()) {
        result.message = plan.problem;
        return result;
    }
    result.conflicts = plan.conflicts;
    if (!plan.conflicts.empty() && !force) {
        result.message = "Entry " + std::to_string(id) +
                         " was not undone: its files have changed since. Undo it anyway with --force (what stands "
                         "there now is kept as a numbered backup).";
        return result;
    }
    JournalCommand command(journal, "undo " + std::to_string(id), id);
    std::vector<std::string> failures;
    const std::vector<FileSpan> all = spans(*plan.entry);
    // Newest first, so that a file the entry made inside a folder it made goes before the folder's.
    for (auto it = all.rbegin(); it != all.rend(); ++it) {
        const JournalFile& first = *it->first;
        std::error_code ec;
        const bool present = fs::exists(fs::symlink_status(first.path, ec));
        if (first.created && first.action == JournalFile::Action::Write) {
            if (!present)
                continue;
            // Kept as a numbered backup, then the name is freed: an undo never deletes.
            WriteResult kept = files.remove(first.path);
            if (kept)
                result.removed.push_back(first.path);
            else
                failures.push_back(kept.message);
            continue;
        }
        if (first.backup.empty())
            continue; // nothing to put back: named among the conflicts
        WriteResult r = files.copy(first.backup, first.path);
        if (r)
            result.restored.push_back(first.path);
        else
            failures.push_back(r.message);
    }
    result.ok = failures.empty();
    if (result.ok) {
        result.message = "Entry " + std::to_string(id) + " undone: " + std::to_string(result.restored.size()) +
                         " file(s) put back, " + std::to_string(result.removed.size()) + " removed.";
    } else {
        result.message = "Entry " + std::to_string(id) + " was undone only in part:";
        for (const std::string& f : failures)
            result.message += "\n" + f;
    }
    return result;
}

namespace {
std::string shownPath(const fs::path& p) { return utf8FromDocument(p.string()); }

std::string headline(const JournalEntry& e) {
    std::string line = std::to_string(e.id) + "  " + e.time + "  " + e.command + "  (" +
                       std::to_string(e.files.size()) + (e.files.size() == 1 ? " file)" : " files)");
    if (e.undoneBy)
        line += "  undone by " + std::to_string(e.undoneBy);
    return line;
}

std::string fileLine(const JournalFile& f) {
    if (f.action == JournalFile::Action::Remove)
        return "removed  " + shownPath(f.path) + (f.backup.empty() ? "" : "  (kept as " + shownPath(f.backup) + ")");
    if (f.created)
        return "created  " + shownPath(f.path);
    if (f.backup.empty())
        return "replaced " + shownPath(f.path) + "  (no backup)";
    return "written  " + shownPath(f.path) + "  (backup " + shownPath(f.backup) + ")";
}
} // namespace

std::string describeEntry(const JournalEntry& e) {
    std::string text = headline(e) + "\n";
    const std::size_t shownFiles = std::min<std::size_t>(e.files.size(), 10);
    for (std::size_t i = 0; i < shownFiles; ++i)
        text += "  " + fileLine(e.files[i]) + "\n";
    if (e.files.size() > shownFiles)
        text += "  ... and " + std::to_string(e.files.size() - shownFiles) + " more\n";
    return text;
}

std::string formatHistory(const std::vector<JournalEntry>& entries, bool withFiles) {
    std::string text;
    for (auto it = entries.rbegin(); it != entries.rend(); ++it) {
        text += headline(*it) + "\n";
        if (withFiles)
            for (const JournalFile& f : it->files)
                text += "    " + fileLine(f) + "\n";
    }
    return text;
}

std::string historyJson(const std::vector<JournalEntry>& entries) {
    std::string out = "[";
    for (auto it = entries.rbegin(); it != entries.rend(); ++it) {
        const JournalEntry& e = *it;
        out += std::string(it == entries.rbegin() ? "" : ",") + "\n  {\"entry\": " + std::to_string(e.id) +
               ", \"time\": " + jsonQuoted(e.time) + ", \"command\": " + jsonQuoted(e.command) +
               ", \"undoes\": " + std::to_string(e.undoes) + ", \"undoneBy\": " + std::to_string(e.undoneBy) +
               ", \"files\": [";
        for (std::size_t i = 0; i < e.files.size(); ++i) {
            const JournalFile& f = e.files[i];
            out += std::string(i ? ", " : "") + "{\"action\": " +
                   (f.action == JournalFile::Action::Remove ? "\"remove\"" : "\"write\"") +
                   ", \"path\": " + jsonQuoted(shownPath(f.path)) + ", \"backup\": " + jsonQuoted(shownPath(f.backup)) +
                   ", \"created\": " + (f.created ? "true" : "false") + ", \"size\": " + std::to_string(f.size) +
                   ", \"sha256\": " + jsonQuoted(f.sha256) + "}";
        }
        out += "]}";
    }
    return out + (entries.empty() ? "]\n" : "\n]\n");
}

} // namespace velmora
