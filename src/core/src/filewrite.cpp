#include "velmora/core/filewrite.h"

#include "velmora/core/journal.h"
#include "velmora/core/userinterface.h"

#include <QCryptographicHash>

#include <algorithm>
#include <memory>
#include <cerrno>
#include <fstream>
#include <random>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace velmora {

namespace {

std::error_code lastError() { return {errno, std::generic_category()}; }

bool isReadOnly(const fs::path& p) {
#ifdef _WIN32
    std::error_code ec;
    const auto perms = fs::status(p, ec).permissions();
    return !ec && (perms & fs::perms::owner_write) == fs::perms::none;
#else
    return ::access(p.c_str(), W_OK) != 0 && errno == EACCES;
#endif
}

// Errors of a file system that cannot give a file a second name: the backup is copied instead.
bool linksUnsupported(const std::error_code& ec) {
#ifdef _WIN32
    return ec && ec != std::errc::file_exists;
#else
    return ec == std::errc::operation_not_permitted || ec == std::errc::operation_not_supported ||
           ec == std::errc::cross_device_link || ec == std::errc::function_not_supported ||
           ec == std::errc::too_many_links;
#endif
}

std::string randomTag() {
    static thread_local std::mt19937_64 rng{std::random_device{}()};
    static const char kDigits[] = "0123456789abcdefghijklmnopqrstuvwxyz";
    std::string tag;
    std::uint64_t v = rng();
    for (int i = 0; i < 10; ++i, v /= 36)
        tag += kDigits[v % 36];
    return tag;
}

bool readWhole(const fs::path& file, std::string& bytes, std::error_code& ec) {
    std::error_code statEc;
    if (!fs::is_regular_file(file, statEc)) {
        ec = statEc ? statEc : std::make_error_code(std::errc::invalid_argument);
        return false;
    }
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        ec = std::make_error_code(std::errc::permission_denied);
        return false;
    }
    const auto size = fs::file_size(file, statEc);
    if (statEc) {
        ec = statEc;
        return false;
    }
    bytes.resize(static_cast<std::size_t>(size));
    in.read(bytes.data(), static_cast<std::streamsize>(size));
    if (static_cast<std::uint64_t>(in.gcount()) != size) {
        ec = std::make_error_code(std::errc::io_error);
        return false;
    }
    return true;
}

std::string failureText(const fs::path& target, WriteStep step, const std::error_code& ec, bool existed) {
    std::string what;
    switch (step) {
    case WriteStep::Create: what = "the new file could not be created beside it"; break;
    case WriteStep::Write: what = "the new content could not be written"; break;
    case WriteStep::Sync: what = "the new content could not be saved to disk"; break;
    case WriteStep::Backup: what = "no backup could be made"; break;
    case WriteStep::Replace: what = "the new file could not be put in its place"; break;
    }
    return target.string() + ": " + what + " (" + ec.message() + "). " +
           (existed ? "The file was not changed." : "Nothing was written.");
}

} // namespace

const char* writeStepName(WriteStep step) {
    switch (step) {
    case WriteStep::Create: return "create";
    case WriteStep::Write: return "write";
    case WriteStep::Sync: return "sync";
    case WriteStep::Backup: return "backup";
    case WriteStep::Replace: return "replace";
    }
    return "?";
}

// ---- the system's calls ----------------------------------------------------------------------

std::error_code FileOps::create(const fs::path& path, int& handle) {
#ifdef _WIN32
    const int err = _wsopen_s(&handle, path.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY | _O_NOINHERIT,
                              _SH_DENYWR, _S_IREAD | _S_IWRITE);
    return err ? std::error_code(err, std::generic_category()) : std::error_code();
#else
    // O_EXCL with O_CREAT fails on any existing name, a symbolic link included.
    handle = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    return handle < 0 ? lastError() : std::error_code();
#endif
}

std::error_code FileOps::write(int handle, const char* data, std::size_t size) {
    while (size > 0) {
        const std::size_t chunk = std::min<std::size_t>(size, 1u << 30);
#ifdef _WIN32
        const int n = ::_write(handle, data, static_cast<unsigned>(chunk));
#else
        const ssize_t n = ::write(handle, data, chunk);
#endif
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return lastError();
        }
        if (n == 0)
            return std::make_error_code(std::errc::no_space_on_device);
        data += n;
        size -= static_cast<std::size_t>(n);
    }
    return {};
}

std::error_code FileOps::sync(int handle) {
#ifdef _WIN32
    return ::_commit(handle) != 0 ? lastError() : std::error_code();
#else
    return ::fsync(handle) != 0 ? lastError() : std::error_code();
#endif
}

std::error_code FileOps::close(int handle) {
#ifdef _WIN32
    return ::_close(handle) != 0 ? lastError() : std::error_code();
#else
    return ::close(handle) != 0 ? lastError() : std::error_code();
#endif
}

std::error_code FileOps::link(const fs::path& from, const fs::path& to) {
    std::error_code ec;
    fs::create_hard_link(from, to, ec);
    return ec;
}

std::error_code FileOps::rename(const fs::path& from, const fs::path& to) {
    std::error_code ec;
    fs::rename(from, to, ec);
    return ec;
}

std::error_code FileOps::remove(const fs::path& path) {
    std::error_code ec;
    fs::remove(path, ec);
    return ec;
}

namespace {
FileOps& systemOps() {
    static FileOps ops;
    return ops;
}
} // namespace

// ---- the service -----------------------------------------------------------------------------

std::string sha256Hex(std::string_view bytes) {
    return QCryptographicHash::hash(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())),
                                    QCryptographicHash::Sha256)
        .toHex()
        .toStdString();
}

namespace {
// The base of the numbered backup names: the file itself, or the stem beside it.
fs::path backupBase(const fs::path& target, const std::string& stem) {
    return stem.empty() ? target : target.parent_path() / stem;
}
} // namespace

std::optional<fs::path> freeBackupName(const fs::path& path, const std::string& stem) {
    for (int n = 0; n <= 50; ++n) {
        fs::path candidate = backupBase(path, stem);
        candidate += n == 0 ? std::string(".bak") : ".bak" + std::to_string(n);
        std::error_code ec;
        if (!fs::exists(fs::symlink_status(candidate, ec)))
            return candidate;
    }
    return std::nullopt;
}

WriteService::WriteService(UserInterface* ui, Journal* journal) : m_ui(ui), m_journal(journal), m_ops(&systemOps()) {}

void WriteService::setFileOps(FileOps* ops) { m_ops = ops ? ops : &systemOps(); }

std::error_code WriteService::writeTemporary(const fs::path& folder, const std::string& name, const Producer& produce,
                                             fs::path& temp, WriteStep& step, std::optional<fs::perms> perms, bool sync,
                                             std::uint64_t& size, QCryptographicHash* hash) {
    step = WriteStep::Create;
    int handle = -1;
    std::error_code ec;
    // A unique name that nobody else uses; a name that exists (even as a link) is skipped.
    for (int attempt = 0; attempt < 16; ++attempt) {
        temp = folder / ("." + name + "." + randomTag() + ".velmora-tmp");
        ec = m_ops->create(temp, handle);
        if (ec != std::errc::file_exists)
            break;
    }
    if (ec) {
        temp.clear();
        return ec;
    }
    step = WriteStep::Write;
    size = 0;
    ec = produce([&](const char* data, std::size_t n) -> std::error_code {
        if (hash)
            hash->addData(QByteArrayView(data, static_cast<qsizetype>(n)));
        size += n;
        return m_ops->write(handle, data, n);
    });
    if (!ec && sync) {
        step = WriteStep::Sync;
        ec = m_ops->sync(handle);
    }
    // Some file systems report a failed write only when the file is closed.
    const std::error_code closed = m_ops->close(handle);
    if (!ec && closed) {
        step = WriteStep::Write;
        ec = closed;
    }
    if (!ec && perms) {
        std::error_code permsEc;
        fs::permissions(temp, *perms | fs::perms::owner_write, permsEc);
    }
    return ec;
}

std::error_code WriteService::makeBackup(const fs::path& target, const std::string& stem, fs::path& backup,
                                         const fs::path& named) {
    std::string copied; // read once, only where the file system cannot link
    bool haveCopy = false;
    for (int n = 0; n <= (named.empty() ? 50 : 0); ++n) {
        fs::path candidate = named;
        if (named.empty()) {
            candidate = backupBase(target, stem);
            candidate += n == 0 ? std::string(".bak") : ".bak" + std::to_string(n);
        }
        std::error_code ec = m_ops->link(target, candidate);
        if (!ec) {
            backup = candidate;
            return {};
        }
        if (ec == std::errc::file_exists)
            continue;
        if (!linksUnsupported(ec))
            return ec;
        // No second names here (FAT, some shares): the backup is a copy, made the same safe way.
        if (!haveCopy) {
            if (!readWhole(target, copied, ec))
                return ec;
            haveCopy = true;
        }
        int handle = -1;
        ec = m_ops->create(candidate, handle);
        if (ec == std::errc::file_exists)
            continue;
        if (ec)
            return ec;
        ec = m_ops->write(handle, copied.data(), copied.size());
        if (!ec)
            ec = m_ops->sync(handle);
        const std::error_code closed = m_ops->close(handle);
        if (!ec)
            ec = closed;
        if (ec) {
            m_ops->remove(candidate);
            return ec;
        }
        backup = candidate;
        return {};
    }
    backup.clear();
    return {}; // every name is taken
}

bool WriteService::mayOverwriteWithoutBackup(const fs::path& target, const std::string& stem) {
    if (!m_ui)
        return false;
    std::lock_guard lock(m_askMutex);
    const std::string name = stem.empty() ? target.filename().string() : stem;
    return m_ui->ask("All the backup names of " + target.string() + " are taken (" + name + ".bak and " + name +
                         ".bak1 to " + name + ".bak50).\nOverwrite it without keeping a backup?",
                     Buttons::YesNo, Icon::Warning) == Answer::Yes;
}

WriteResult WriteService::write(const fs::path& requested, std::string_view bytes, const WriteOptions& options) {
    return write(requested, [bytes](const ByteSink& sink) { return sink(bytes.data(), bytes.size()); }, options);
}

WriteResult WriteService::write(const fs::path& requested, const Producer& produce, const WriteOptions& options) {
    PreparedFile file;
    WriteResult r = prepare(requested, produce, options, file);
    return r ? commit(file, options) : r;
}

WriteResult WriteService::prepare(const fs::path& requested, const Producer& produce, const WriteOptions& options,
                                  PreparedFile& file) {
    WriteResult r;
    file = PreparedFile{};
    file.requested = requested;
    r.target = requested;
    std::error_code ec;
    const fs::file_status link = fs::symlink_status(requested, ec);
    if (fs::is_symlink(link)) {
        // The file a link stands for is written, the link stays.
        const fs::path real = fs::canonical(requested, ec);
        if (ec) {
            r.message = requested.string() + ": is a link to a file that cannot be reached (" + ec.message() +
                        "). Nothing was written.";
            return r;
        }
        r.target = real;
    }
    const fs::path& target = r.target;
    const fs::file_status status = fs::status(target, ec);
    const bool existed = fs::exists(status);
    if (existed && !fs::is_regular_file(status)) {
        r.message = target.string() + (fs::is_directory(status) ? ": is a folder, not a file" : ": is not a plain file") +
                    ". Nothing was written.";
        return r;
    }
    if (existed && options.backup == Backup::None && options.refuseReadOnly && isReadOnly(target)) {
        r.message = target.string() + ": the file is read-only. It was not replaced.";
        return r;
    }
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    if (!fs::is_directory(folder, ec)) {
        fs::create_directories(folder, ec);
        if (ec) {
            r.failedStep = WriteStep::Create;
            r.message = target.string() + ": its folder cannot be made (" + ec.message() + "). Nothing was written.";
            return r;
        }
    }

    WriteStep step = WriteStep::Create;
    const std::optional<fs::perms> perms = existed ? std::optional(status.permissions()) : std::nullopt;
    std::optional<QCryptographicHash> hash;
    if (m_journal && options.journal)
        hash.emplace(QCryptographicHash::Sha256);
    ec = writeTemporary(folder, target.filename().string(), produce, file.temp, step, perms, options.sync, file.size,
                        hash ? &*hash : nullptr);
    if (ec) {
        if (!file.temp.empty())
            m_ops->remove(file.temp);
        file.temp.clear();
        r.failedStep = step;
        r.error = ec;
        r.message = failureText(target, step, ec, existed);
        return r;
    }
    if (hash)
        file.sha256 = hash->result().toHex().toStdString();
    file.target = target;
    file.existed = existed;
    r.ok = true;
    r.size = file.size;
    return r;
}

WriteResult WriteService::adopt(const fs::path& finished, const fs::path& target, const WriteOptions& options,
                                PreparedFile& file) {
    WriteResult r;
    r.target = target;
    file = PreparedFile{};
    file.requested = target;
    std::error_code ec;
    auto fail = [&](const std::string& why) {
        m_ops->remove(finished);
        r.message = target.string() + ": " + why + ". Nothing was written.";
        return r;
    };
    if (finished.parent_path() != target.parent_path())
        return fail("the finished file " + finished.string() + " is not in its folder");
    const fs::file_status status = fs::symlink_status(target, ec);
    if (fs::is_symlink(status) || (fs::exists(status) && !fs::is_regular_file(status)))
        return fail("is not a plain file");
    file.existed = fs::exists(status);
    file.size = fs::file_size(finished, ec);
    if (ec)
        return fail("the finished file cannot be read (" + ec.message() + ")");
    QCryptographicHash hash(QCryptographicHash::Sha256);
    const bool hashing = m_journal && options.journal;
    if (hashing) {
        // Read in pieces the size of the file up to 1 MiB, into room not filled first: packages
        // and batches adopt thousands of small files.
        const auto chunk = static_cast<std::size_t>(std::clamp<std::uintmax_t>(file.size, 1, std::uintmax_t{1} << 20));
        const std::unique_ptr<char[]> buffer(new char[chunk]);
        std::ifstream in(finished, std::ios::binary);
        if (!in)
            return fail("the finished file cannot be read");
        while (in) {
            in.read(buffer.get(), static_cast<std::streamsize>(chunk));
            hash.addData(QByteArrayView(buffer.get(), static_cast<qsizetype>(in.gcount())));
        }
        if (in.bad())
            return fail("the finished file cannot be read");
    }
    if (options.sync) {
#ifndef _WIN32
        const int fd = ::open(finished.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd < 0 || ::fsync(fd) != 0) {
            if (fd >= 0)
                ::close(fd);
            return fail("the finished file cannot be saved to disk");
        }
        ::close(fd);
#endif
    }
    if (hashing)
        file.sha256 = hash.result().toHex().toStdString();
    file.target = target;
    file.temp = finished;
    r.ok = true;
    r.size = file.size;
    return r;
}

void WriteService::discard(PreparedFile& file) {
    if (!file.temp.empty())
        m_ops->remove(file.temp);
    file.temp.clear();
}

WriteResult WriteService::commit(PreparedFile& file, const WriteOptions& options) {
    WriteResult r;
    r.target = file.target;
    const fs::path& target = file.target;
    auto fail = [&](WriteStep at, const std::error_code& why) {
        discard(file);
        r.failedStep = at;
        r.message = failureText(target, at, why, file.existed);
        return r;
    };
    std::error_code ec;
    if (file.existed && options.backup == Backup::Numbered) {
        ec = makeBackup(target, options.backupStem, r.backup, options.backupName);
        if (ec)
            return fail(WriteStep::Backup, ec);
        if (r.backup.empty()) {
            if (!options.backupName.empty())
                return fail(WriteStep::Backup, std::make_error_code(std::errc::file_exists));
            if (!mayOverwriteWithoutBackup(target, options.backupStem)) {
                discard(file);
                r.failedStep = WriteStep::Backup;
                r.message = target.string() +
                            ": all 51 backup names (.bak, .bak1 to .bak50) are taken, so it was not replaced. "
                            "Remove old backups, or agree to overwrite it without one (--yes on the command line).";
                return r;
            }
            r.overwroteWithoutBackup = true;
        }
    }

    ec = m_ops->rename(file.temp, target);
    if (ec) {
        // The old file never left its name: dropping the backup's second name undoes the backup.
        if (!r.backup.empty())
            m_ops->remove(r.backup);
        r.backup.clear();
        return fail(WriteStep::Replace, ec);
    }
    file.temp.clear();
    // The folder is not synced: after a power cut the name holds the whole old file or the whole
    // new one either way, and a sync of the folder per file would triple the cost of a batch.
    r.ok = true;
    r.created = !file.existed;
    r.size = file.size;
    r.sha256 = file.sha256;
    if (m_journal && options.journal) {
        JournalFile record;
        record.path = file.requested;
        record.backup = r.backup;
        record.created = r.created;
        record.size = r.size;
        record.sha256 = r.sha256;
        if (!r.backup.empty())
            record.backupSize = static_cast<std::uint64_t>(fs::file_size(r.backup, ec));
        std::string error;
        if (!m_journal->record(record, &error))
            r.message = error;
    }
    return r;
}

std::vector<std::string> WriteService::removeFolder(const fs::path& folder, const fs::path& keepIn) {
    std::vector<std::string> problems;
    std::error_code ec;
    if (!fs::is_directory(fs::symlink_status(folder, ec))) {
        problems.push_back(folder.string() + ": is not a folder; nothing was removed.");
        return problems;
    }
    std::vector<fs::path> files, folders;
    fs::recursive_directory_iterator it(folder, ec), end;
    if (ec)
        problems.push_back(folder.string() + ": cannot be read (" + ec.message() + ").");
    for (; !ec && it != end; it.increment(ec)) {
        const fs::file_status s = it->symlink_status(ec);
        if (fs::is_directory(s))
            folders.push_back(it->path());
        else if (fs::is_regular_file(s))
            files.push_back(it->path());
        else
            problems.push_back(it->path().string() + ": is not a plain file and was left where it is.");
    }
    if (ec)
        problems.push_back(folder.string() + ": could not be read to the end (" + ec.message() + ").");
    const fs::path base = folder.has_filename() ? folder : folder.parent_path();
    for (const auto& file : files) {
        const fs::path kept = keepIn / base.filename() / fs::relative(file, base, ec);
        fs::create_directories(kept.parent_path(), ec);
        const std::uint64_t size = fs::file_size(file, ec);
        ec = m_ops->rename(file, kept);
        if (ec == std::errc::cross_device_link) {
            // Another disk: copied whole, then the original name freed.
            std::error_code copyEc;
            fs::copy_file(file, kept, copyEc);
            ec = copyEc ? copyEc : m_ops->remove(file);
        }
        if (ec) {
            problems.push_back(file.string() + ": could not be moved to " + kept.string() + " (" + ec.message() + ").");
            continue;
        }
        if (m_journal) {
            JournalFile record;
            record.action = JournalFile::Action::Remove;
            record.path = file;
            record.backup = kept;
            record.size = size;
            record.backupSize = size;
            std::string error;
            if (!m_journal->record(record, &error))
                problems.push_back(error);
        }
    }
    // The emptied folders, deepest first; one still holding something left behind stays.
    std::sort(folders.begin(), folders.end(), [](const fs::path& a, const fs::path& b) { return a.native().size() > b.native().size(); });
    folders.push_back(folder);
    for (const auto& f : folders)
        fs::remove(f, ec);
    return problems;
}

std::string WriteService::putBack(const std::vector<WriteResult>& written) {
    std::string lost;
    WriteOptions plain;
    plain.backup = Backup::None;
    plain.refuseReadOnly = false;
    for (auto it = written.rbegin(); it != written.rend(); ++it) {
        if (!it->ok)
            continue;
        const WriteResult w = it->created ? remove(it->target)
                              : it->backup.empty() ? WriteResult{}
                                                   : copy(it->backup, it->target, plain);
        if (!w)
            lost += (lost.empty() ? "" : " ") + it->target.string() + " could not be put back" +
                    (it->backup.empty() ? std::string(".") : "; its old content is kept as " + it->backup.string() + ".");
    }
    return lost;
}

void syncStaged(const fs::path& anyPath) {
#ifdef __linux__
    const int fd = ::open(anyPath.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd >= 0) {
        ::syncfs(fd);
        ::close(fd);
    }
#else
    (void)anyPath;
#endif
}

namespace {
// What a copy says when its source cannot be read; nothing is written then.
WriteResult unreadableSource(const fs::path& source, const fs::path& target, const std::error_code& ec) {
    WriteResult r;
    r.target = target;
    r.message = source.string() + ": cannot be read (" + ec.message() + "). Nothing was written to " +
                target.string() + ".";
    return r;
}
} // namespace

WriteResult WriteService::prepareCopy(const fs::path& source, const fs::path& target, const WriteOptions& options,
                                      PreparedFile& file) {
    std::string bytes;
    std::error_code ec;
    if (!readWhole(source, bytes, ec))
        return unreadableSource(source, target, ec);
    return prepare(target, [&bytes](const ByteSink& sink) { return sink(bytes.data(), bytes.size()); }, options, file);
}

WriteResult WriteService::copy(const fs::path& source, const fs::path& target, const WriteOptions& options) {
    std::string bytes;
    std::error_code ec;
    if (!readWhole(source, bytes, ec))
        return unreadableSource(source, target, ec);
    return write(target, bytes, options);
}

WriteResult WriteService::remove(const fs::path& target) {
    WriteResult r;
    r.target = target;
    std::string bytes;
    std::error_code ec;
    if (!readWhole(target, bytes, ec)) {
        r.message = target.string() + ": cannot be read (" + ec.message() + "). It was not removed.";
        return r;
    }
    // The file keeps a numbered backup name before it loses its own: nothing is ever deleted.
    ec = makeBackup(target, {}, r.backup, {});
    if (ec || r.backup.empty()) {
        r.failedStep = WriteStep::Backup;
        r.message = target.string() + ": no backup could be made (" +
                    (ec ? ec.message() : std::string("all 51 backup names are taken")) + "). It was not removed.";
        return r;
    }
    ec = m_ops->remove(target);
    if (ec) {
        m_ops->remove(r.backup);
        r.backup.clear();
        r.failedStep = WriteStep::Replace;
        r.message = target.string() + ": cannot be removed (" + ec.message() + "). It was not changed.";
        return r;
    }
    r.ok = true;
    r.size = bytes.size();
    if (m_journal) {
        r.sha256 = sha256Hex(bytes);
        JournalFile record;
        record.action = JournalFile::Action::Remove;
        record.path = target;
        record.backup = r.backup;
        record.backupSize = r.size;
        record.size = r.size;
        record.sha256 = r.sha256;
        std::string error;
        if (!m_journal->record(record, &error))
            r.message = error;
    }
    return r;
}

bool WriteService::append(const fs::path& target, std::string_view bytes, std::string* error, bool sync) {
    auto failed = [&](const std::string& why) {
        if (error)
            *error = target.string() + ": " + why;
        return false;
    };
    std::error_code ec;
    if (target.has_parent_path() && !fs::is_directory(target.parent_path(), ec))
        fs::create_directories(target.parent_path(), ec);
#ifdef _WIN32
    int fd = -1;
    if (_wsopen_s(&fd, target.c_str(), _O_WRONLY | _O_CREAT | _O_APPEND | _O_BINARY | _O_NOINHERIT, _SH_DENYNO,
                  _S_IREAD | _S_IWRITE) != 0)
        return failed("cannot be opened for appending");
#else
    // A log is never a link or a FIFO of someone else's making.
    const int fd = ::open(target.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0666);
    if (fd < 0)
        return failed("cannot be opened for appending (" + lastError().message() + ")");
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return failed("is not a plain file");
    }
#endif
    ec = m_ops->write(fd, bytes.data(), bytes.size());
    if (!ec && sync)
        ec = m_ops->sync(fd);
    const std::error_code closed = m_ops->close(fd);
    if (!ec)
        ec = closed;
    return ec ? failed("cannot be written (" + ec.message() + ")") : true;
}

WriteResult writeFileSafely(const fs::path& target, std::string_view bytes, Backup backup) {
    WriteService plain;
    WriteOptions options;
    options.backup = backup;
    options.journal = false;
    return plain.write(target, bytes, options);
}

} // namespace velmora
