// The copying engine of the backups: a walk that plans, a check of room, then the copies, on
// all cores: a backup is mostly many small files, each a handful of system calls.

#include "velmora/backup/treecopy.h"

#include "velmora/core/parallel.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"

#include <cerrno>
#include <chrono>
#include <cstring>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif
#ifdef __linux__
#include <linux/fs.h>
#include <linux/magic.h>
#include <sys/ioctl.h>
#include <sys/vfs.h>
#endif

namespace velmora::backup {

namespace {

struct FileOutcome {
    bool done = false;
    bool cloned = false;
    std::string why; // empty when copied
};

struct PlannedFile {
    fs::path relative;
    std::uint64_t size = 0;
};

struct Plan {
    std::vector<fs::path> folders; // relative, parents first
    std::vector<PlannedFile> files;
    std::uint64_t bytes = 0;
    std::uint64_t unchanged = 0;
    std::vector<std::string> problems;
};

std::string shownPath(const fs::path& p) { return p.string(); }

// What an entry that is not copied is, in words; empty for a folder or a file to copy.
std::string leftAlone(const fs::directory_entry& entry, bool& isFolder) {
    isFolder = false;
    std::error_code ec;
    const fs::file_status own = entry.symlink_status(ec);
    if (ec)
        return "cannot be examined (" + ec.message() + ")";
    if (fs::is_symlink(own)) {
        const fs::file_status to = fs::status(entry.path(), ec);
        if (ec || !fs::exists(to))
            return "a link that leads nowhere or round in a loop: not followed";
        if (fs::is_directory(to))
            return "a link to a folder: not followed";
        if (!fs::is_regular_file(to))
            return "a link to something that is not a regular file: left alone";
        return {};
    }
    if (fs::is_directory(own)) {
        isFolder = true;
        return {};
    }
    if (fs::is_fifo(own))
        return "a named pipe: not opened";
    if (!fs::is_regular_file(own))
        return "not a regular file (a socket or device): left alone";
    return {};
}

bool needsCopy(const fs::path& from, const fs::path& to, std::uint64_t size) {
    std::error_code ec;
    const fs::file_status st = fs::symlink_status(to, ec);
    if (ec || !fs::is_regular_file(st))
        return true;
    if (fs::file_size(to, ec) != size || ec)
        return true;
    const auto a = fs::last_write_time(from, ec);
    if (ec)
        return true;
    const auto b = fs::last_write_time(to, ec);
    return ec || a > b;
}

void planFile(const fs::path& source, const fs::path& target, const fs::path& rel, const TreeCopyOptions& options,
              Plan& plan) {
    std::error_code ec;
    const std::uint64_t size = fs::file_size(source / rel, ec);
    if (ec) {
        plan.problems.push_back(shownPath(source / rel) + ": cannot be examined (" + ec.message() + ")");
        return;
    }
    if (options.rule == CopyRule::NewerOnly && !needsCopy(source / rel, target / rel, size)) {
        ++plan.unchanged;
        return;
    }
    plan.files.push_back({rel, size});
    plan.bytes += size;
}

void planPart(const fs::path& source, const fs::path& target, const TreePart& part, const TreeCopyOptions& options,
              Plan& plan) {
    std::vector<fs::path> pending{part.folder};
    while (!pending.empty()) {
        const fs::path rel = pending.back();
        pending.pop_back();
        if (!rel.empty())
            plan.folders.push_back(rel);
        std::error_code ec;
        fs::directory_iterator it(source / rel, ec);
        if (ec) {
            plan.problems.push_back(shownPath(source / rel) + ": the folder cannot be read (" + ec.message() + ")");
            continue;
        }
        std::vector<fs::path> subfolders;
        for (; it != fs::directory_iterator(); it.increment(ec)) {
            bool folder = false;
            const std::string why = leftAlone(*it, folder);
            const fs::path entryRel = rel / it->path().filename();
            if (!why.empty())
                plan.problems.push_back(shownPath(it->path()) + ": " + why);
            else if (folder)
                subfolders.push_back(entryRel);
            else
                planFile(source, target, entryRel, options, plan);
        }
        if (ec)
            plan.problems.push_back(shownPath(source / rel) + ": the folder could not be read to the end (" +
                                    ec.message() + ")");
        if (part.recursive)
            pending.insert(pending.end(), subfolders.rbegin(), subfolders.rend());
    }
}

fs::path nearestExisting(fs::path p);

std::optional<std::uint64_t> systemFreeSpace(const fs::path& path) {
    std::error_code ec;
    const fs::space_info info = fs::space(nearestExisting(path), ec);
    if (ec)
        return std::nullopt;
    return info.available;
}

fs::path nearestExisting(fs::path p) {
    std::error_code ec;
    while (!p.empty() && !fs::exists(p, ec) && p != p.parent_path())
        p = p.parent_path();
    return p.empty() ? fs::path(".") : p;
}

// Clones on the one file system cost no room for their data: btrfs and XFS share the blocks.
// (An XFS made without reflink support refuses each clone; the copies then fail for want of room
// one by one, each named.)
bool clonesShareBlocks(const fs::path& source, const fs::path& target) {
#ifdef __linux__
    struct stat a {}, b {};
    struct statfs info {};
    const fs::path there = nearestExisting(target);
    if (::stat(source.c_str(), &a) != 0 || ::stat(there.c_str(), &b) != 0 || a.st_dev != b.st_dev ||
        ::statfs(there.c_str(), &info) != 0)
        return false;
    const auto type = static_cast<unsigned long>(info.f_type);
    return type == BTRFS_SUPER_MAGIC || type == XFS_SUPER_MAGIC;
#else
    (void)source;
    (void)target;
    return false;
#endif
}

std::string systemError(int error) { return std::strerror(error); }

#ifndef _WIN32
// Copies the bytes of one open file into another: the kernel's copy first, plain reads where it
// cannot.
int copyBytes(int in, int out) {
#ifdef __linux__
    for (;;) {
        const ssize_t n = ::copy_file_range(in, nullptr, out, nullptr, 1 << 30, 0);
        if (n == 0)
            return 0;
        if (n > 0)
            continue;
        if (errno == EINTR)
            continue;
        if (errno != EXDEV && errno != ENOSYS && errno != EINVAL && errno != EOPNOTSUPP)
            return errno;
        break; // nothing was copied yet by this call: carry on by hand from where we are
    }
#endif
    static thread_local std::vector<char> buffer(1 << 20);
    for (;;) {
        const ssize_t n = ::read(in, buffer.data(), buffer.size());
        if (n == 0)
            return 0;
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return errno;
        }
        for (ssize_t done = 0; done < n;) {
            const ssize_t w = ::write(out, buffer.data() + done, static_cast<std::size_t>(n - done));
            if (w < 0) {
                if (errno == EINTR)
                    continue;
                return errno;
            }
            done += w;
        }
    }
}
#endif

} // namespace

bool isInside(const fs::path& inner, const fs::path& outer) {
    std::error_code ec;
    const fs::path a = fs::weakly_canonical(fs::absolute(inner, ec), ec);
    const fs::path b = fs::weakly_canonical(fs::absolute(outer, ec), ec);
    auto ai = a.begin();
    for (auto bi = b.begin(); bi != b.end(); ++bi, ++ai) {
        if (bi->empty() && std::next(bi) == b.end())
            break; // a trailing separator
        if (ai == a.end() || *ai != *bi)
            return false;
    }
    return true;
}

std::string copyFile(const fs::path& from, const fs::path& to, bool replace, bool clone, bool& cloned) {
    cloned = false;
#ifdef _WIN32
    (void)clone;
    std::error_code ec;
    fs::copy_file(from, to, replace ? fs::copy_options::overwrite_existing : fs::copy_options::none, ec);
    return ec ? ec.message() : std::string();
#else
    const int in = ::open(from.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (in < 0)
        return "cannot be read (" + systemError(errno) + ")";
    struct stat st {};
    if (::fstat(in, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(in);
        return "not a regular file: left alone";
    }
    const fs::path written = replace ? to.parent_path() / ("." + to.filename().string() + ".velmora-copy") : to;
    if (replace)
        ::unlink(written.c_str()); // a leftover of an earlier run cut off by a kill
    const int out = ::open(written.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (out < 0) {
        const int e = errno;
        ::close(in);
        return e == EEXIST ? "the copy's name is taken in the target" : "cannot be written (" + systemError(e) + ")";
    }
    int error = 0;
#ifdef __linux__
    if (clone && ::ioctl(out, FICLONE, in) == 0)
        cloned = true;
#else
    (void)clone;
#endif
    if (!cloned)
        error = copyBytes(in, out);
    const struct timespec times[2] = {st.st_atim, st.st_mtim};
    if (!error && (::fchmod(out, st.st_mode & 07777) != 0 || ::futimens(out, times) != 0))
        error = errno;
    if (::close(out) != 0 && !error)
        error = errno;
    ::close(in);
    if (!error && replace && ::rename(written.c_str(), to.c_str()) != 0)
        error = errno;
    if (error) {
        ::unlink(written.c_str());
        cloned = false;
        return "cannot be copied (" + systemError(error) + ")";
    }
    return {};
#endif
}

TreeCopyReport copyTree(const fs::path& source, const std::vector<TreePart>& parts, const fs::path& target,
                        const TreeCopyOptions& options, UserInterface* ui) {
    TreeCopyReport report;
    report.target = target;
    if (isInside(target, source)) {
        report.refused = "The backup folder " + target.string() + " lies inside " + source.string() +
                         ": the copy would copy itself. Choose a folder outside it.";
        return report;
    }
    Plan plan;
    for (const TreePart& part : parts)
        planPart(source, target, part, options, plan);
    report.planned = plan.files.size();
    report.unchanged = plan.unchanged;
    report.problems = std::move(plan.problems);
    const auto room = options.freeSpace ? options.freeSpace(target) : systemFreeSpace(target);
    if (room && *room < plan.bytes && !(options.clone && clonesShareBlocks(source, target))) {
        report.refused = "There is not enough room for the backup in " + target.string() + ": it needs " +
                         sizeText(plan.bytes) + ", " + sizeText(*room) + " are free.";
        return report;
    }

    std::error_code ec;
    fs::create_directories(target, ec);
    for (const fs::path& folder : plan.folders) {
        fs::create_directories(target / folder, ec);
        if (ec)
            report.problems.push_back(shownPath(target / folder) + ": the folder cannot be made (" + ec.message() +
                                      ")");
    }
    const bool replace = options.rule == CopyRule::NewerOnly;
    auto copyOne = [&](std::size_t i) {
        FileOutcome o;
        o.done = true;
        o.why = copyFile(source / plan.files[i].relative, target / plan.files[i].relative, replace, options.clone,
                         o.cloned);
        return o;
    };
    const std::string label = "Copying " + std::to_string(plan.files.size()) + " files to " + target.string();
    std::vector<FileOutcome> outcomes;
    if (options.threads == 1) {
        outcomes.resize(plan.files.size());
        if (ui)
            ui->beginProgress(label, static_cast<std::int64_t>(plan.files.size()));
        auto shown = std::chrono::steady_clock::now();
        for (std::size_t i = 0; i < plan.files.size(); ++i) {
            if (ui && ui->cancelled()) {
                report.aborted = true;
                break;
            }
            outcomes[i] = copyOne(i);
            const auto now = std::chrono::steady_clock::now();
            if (ui && now - shown > std::chrono::milliseconds(150)) {
                shown = now;
                ui->progress(static_cast<std::int64_t>(i + 1), plan.files[i].relative.string());
            }
        }
        if (ui)
            ui->endProgress();
    } else {
        bool stopped = false;
        outcomes = parallelMap<FileOutcome>(plan.files.size(), options.threads, ui, label, stopped, copyOne);
        report.aborted = stopped;
    }
    // In the order of the walk, whatever the number of threads.
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        const FileOutcome& o = outcomes[i];
        if (!o.done)
            continue;
        if (!o.why.empty()) {
            report.problems.push_back(shownPath(source / plan.files[i].relative) + ": " + o.why);
        } else {
            ++report.copied;
            report.cloned += o.cloned ? 1 : 0;
            report.bytes += plan.files[i].size;
        }
    }
    return report;
}

} // namespace velmora::backup
