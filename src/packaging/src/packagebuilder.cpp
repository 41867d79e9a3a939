// Making a package: the plan of copies, the checks before anything is written, and the copies
// themselves on all cores, each staged beside its place and then put in place in order.

#include "velmora/packaging/packagebuilder.h"

#include "velmora/backup/treecopy.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/parallel.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"

#include <QCryptographicHash>
#include <QFile>
#include <QStorageInfo>
#include <QString>
#include <algorithm>
#include <atomic>
#include <random>
#include <set>

namespace velmora::packaging {

namespace {

std::string rel(const fs::path& p) {
    return p.generic_string();
}

fs::path nearestExisting(fs::path p) {
    std::error_code ec;
    while (!p.empty() && !fs::exists(p, ec) && p != p.parent_path())
        p = p.parent_path();
    return p.empty() ? fs::path(".") : p;
}

std::optional<std::uint64_t> systemFreeSpace(const fs::path& folder) {
    const QStorageInfo info(QString::fromStdString(nearestExisting(folder).string()));
    if (!info.isValid() || !info.isReady())
        return std::nullopt;
    return static_cast<std::uint64_t>(info.bytesAvailable());
}

std::string fileSha256(const fs::path& file) {
    QFile f(QString::fromStdString(file.string()));
    if (!f.open(QIODevice::ReadOnly))
        return {};
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!hash.addData(&f))
        return {};
    return hash.result().toHex().toStdString();
}

std::string tempTag() {
    static thread_local std::mt19937_64 rng{std::random_device{}()};
    return std::to_string(rng() % 1000000000);
}

// A copy is up to date when it has the source's size and is not older.
bool upToDate(const fs::path& source, const fs::path& target, std::uint64_t size) {
    std::error_code ec;
    if (!fs::is_regular_file(fs::symlink_status(target, ec)) || fs::file_size(target, ec) != size || ec)
        return false;
    const auto a = fs::last_write_time(source, ec);
    if (ec)
        return false;
    const auto b = fs::last_write_time(target, ec);
    return !ec && b >= a;
}

std::string jsonArray(const std::vector<std::string>& items) {
    std::string out = "[";
    for (std::size_t i = 0; i < items.size(); ++i)
        out += (i ? ", " : "") + jsonQuoted(items[i]);
    return out + "]";
}

} // namespace

bool patternMatches(const std::string& name, const std::string& pattern) {
    if (pattern == "*.*" || pattern == "*")
        return true;
    // Iterative wildcard match with one point to come back to after a '*'.
    std::size_t n = 0, p = 0, star = std::string::npos, mark = 0;
    auto same = [](char a, char b) {
        auto low = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
        return low(a) == low(b);
    };
    while (n < name.size()) {
        if (p < pattern.size() && (pattern[p] == '?' || same(pattern[p], name[n]))) {
            ++n;
            ++p;
        } else if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            mark = n;
        } else if (star != std::string::npos) {
            p = star + 1;
            n = ++mark;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}

std::vector<fs::path> filesBelow(const fs::path& folder, std::vector<std::string>* problems) {
    std::vector<fs::path> out;
    std::vector<fs::path> pending{fs::path()};
    while (!pending.empty()) {
        const fs::path at = pending.back();
        pending.pop_back();
        std::error_code ec;
        fs::directory_iterator it(folder / at, ec);
        if (ec) {
            if (problems)
                problems->push_back((folder / at).string() + ": the folder cannot be read (" + ec.message() +
                                    ")");
            continue;
        }
        std::vector<fs::path> sub;
        for (; !ec && it != fs::directory_iterator(); it.increment(ec)) {
            const fs::file_status s = it->symlink_status(ec);
            if (fs::is_directory(s))
                sub.push_back(at / it->path().filename());
            else if (fs::is_regular_file(s))
                out.push_back(at / it->path().filename());
            else if (problems)
                problems->push_back(it->path().string() +
                                    (fs::is_symlink(s)
                                         ? ": a link, not followed"
                                         : ": not a regular file (a pipe or device), left alone"));
        }
        if (ec && problems)
            problems->push_back((folder / at).string() + ": the folder could not be read to the end (" +
                                ec.message() + ")");
        pending.insert(pending.end(), sub.begin(), sub.end());
    }
    std::sort(out.begin(), out.end());
    return out;
}

std::string manifestText(const std::vector<ManifestRow>& rows) {
    std::string out = "Path,Size,SHA-256\r\n";
    for (const auto& r : rows)
        out += csvCell(r.path) + "," + std::to_string(r.size) + "," + r.sha256 + "\r\n";
    return out;
}

std::string PackageCheck::text() const {
    if (!done)
        return {};
    std::string out = "Blueprints in the package: " + std::to_string(inPackage) + "\n";
    if (leftOutItems) {
        out += "Left out on purpose, every user has them (" + std::to_string(leftOutItems) + "):";
        for (const auto& p : leftOut)
            out += " " + p;
        out += "\n";
    }
    if (!missingAtSource.empty())
        out += "Missing on this machine too (" + std::to_string(missingAtSource.size()) + ")\n";
    if (notInPackage.empty()) {
        out += "Every blueprint used is in the package or left out on purpose.\n";
    } else {
        out += "Used but not in the package (" + std::to_string(notInPackage.size()) + "):\n";
        for (const auto& p : notInPackage)
            out += "  " + p + "\n";
    }
    return out;
}

std::string PackageReport::text() const {
    std::string out;
    if (!refused.empty())
        return refused + "\n";
    out += "Package: " + folder.string() + "\n";
    out += std::to_string(copied.size()) + " files copied (" + sizeText(bytes) + ")";
    if (!unchanged.empty())
        out += ", " + std::to_string(unchanged.size()) + " already there";
    out += "\n";
    if (aborted)
        out += "Stopped: nothing of this run was put in the package.\n";
    for (const auto& n : notes)
        out += n + "\n";
    for (const auto& l : leftOut)
        out += "Left out: " + l + "\n";
    for (const auto& m : missing)
        out += "Missing: " + m + "\n";
    for (const auto& p : problems)
        out += "Problem: " + p + "\n";
    out += check.text();
    if (!zip.empty())
        out += "Zipped to " + zip.string() + "\n";
    return out;
}

std::string PackageReport::json() const {
    std::string out = "{\n  \"folder\": " + jsonQuoted(folder.string());
    out += ",\n  \"refused\": " + jsonQuoted(refused);
    out += ",\n  \"aborted\": " + std::string(aborted ? "true" : "false");
    out += ",\n  \"copied\": " + jsonArray(copied);
    out += ",\n  \"unchanged\": " + jsonArray(unchanged);
    out += ",\n  \"written\": " + jsonArray(written);
    out += ",\n  \"leftOut\": " + jsonArray(leftOut);
    out += ",\n  \"missing\": " + jsonArray(missing);
    out += ",\n  \"problems\": " + jsonArray(problems);
    out += ",\n  \"notes\": " + jsonArray(notes);
    out += ",\n  \"bytes\": " + std::to_string(bytes);
    out += ",\n  \"files\": " + std::to_string(manifest.size());
    if (check.done)
        out += ",\n  \"check\": {\"inPackage\": " + std::to_string(check.inPackage) +
               ", \"leftOut\": " + jsonArray(check.leftOut) +
               ", \"missingAtSource\": " + jsonArray(check.missingAtSource) +
               ", \"notInPackage\": " + jsonArray(check.notInPackage) + "}";
    out += ",\n  \"zip\": " + jsonQuoted(zip.string());
    return out + "\n}\n";
}

PackageBuilder::PackageBuilder(AppContext& ctx, fs::path folder) : m_ctx(ctx), m_folder(std::move(folder)) {
    m_report.folder = m_folder;
}

const PackageBuilder::Listing& PackageBuilder::listing(const fs::path& folder) {
    auto [it, added] = m_listings.try_emplace(folder);
    if (!added)
        return it->second;
    Listing& l = it->second;
    std::error_code ec;
    fs::directory_iterator entries(folder, ec);
    if (ec)
        return l;
    for (; !ec && entries != fs::directory_iterator(); entries.increment(ec)) {
        const fs::file_status s = entries->symlink_status(ec);
        const std::string name = entries->path().filename().string();
        if (fs::is_directory(s))
            l.folders.push_back(name);
        else if (fs::is_regular_file(s))
            l.files.push_back(name);
        else
            m_report.problems.push_back(entries->path().string() +
                                        (fs::is_symlink(s)
                                             ? ": a link, not followed"
                                             : ": not a regular file (a pipe or device), left alone"));
    }
    if (ec)
        m_report.problems.push_back(folder.string() + ": the folder could not be read to the end (" +
                                    ec.message() + ")");
    std::sort(l.files.begin(), l.files.end());
    std::sort(l.folders.begin(), l.folders.end());
    l.ok = true;
    return l;
}

void PackageBuilder::add(const fs::path& source, const fs::path& target, std::uint64_t size) {
    const fs::path key = target.lexically_normal();
    if (auto it = m_byTarget.find(key); it != m_byTarget.end()) {
        m_copies[it->second] = {source, key, size}; // a later line overwrites, as it always did
        return;
    }
    m_byTarget.emplace(key, m_copies.size());
    m_copies.push_back({source, key, size});
}

bool PackageBuilder::copyFolder(const fs::path& source, const fs::path& target) {
    return copyPattern(source, "*.*", target);
}

bool PackageBuilder::copyPattern(const fs::path& folder, const std::string& pattern, const fs::path& target) {
    const std::size_t before = m_copies.size();
    bool any = false;
    std::vector<fs::path> pending{fs::path()};
    bool first = true;
    while (!pending.empty()) {
        const fs::path at = pending.back();
        pending.pop_back();
        const Listing& l = listing(folder / at);
        if (!l.ok) {
            if (first) {
                m_report.missing.push_back((folder / pattern).string());
                return false;
            }
            m_report.problems.push_back((folder / at).string() + ": the folder cannot be read");
            continue;
        }
        first = false;
        for (const auto& name : l.files)
            if (patternMatches(name, pattern)) {
                std::error_code ec;
                const std::uint64_t size = fs::file_size(folder / at / name, ec);
                if (ec) {
                    m_report.problems.push_back((folder / at / name).string() + ": cannot be examined (" +
                                                ec.message() + ")");
                    continue;
                }
                add(folder / at / name, target / at / name, size);
                any = true;
            }
        for (auto it = l.folders.rbegin(); it != l.folders.rend(); ++it)
            pending.push_back(at / *it);
    }
    if (!any && before == m_copies.size() && pattern != "*.*")
        m_report.missing.push_back((folder / pattern).string());
    return any;
}

bool PackageBuilder::copyFile(const fs::path& source, const fs::path& target) {
    std::error_code ec;
    if (!fs::is_regular_file(fs::symlink_status(source, ec))) {
        m_report.missing.push_back(source.string());
        return false;
    }
    add(source, target / source.filename(), fs::file_size(source, ec));
    return true;
}

bool PackageBuilder::copyFileAs(const fs::path& source, const fs::path& target) {
    std::error_code ec;
    if (!fs::is_regular_file(fs::symlink_status(source, ec))) {
        m_report.missing.push_back(source.string());
        return false;
    }
    add(source, target, fs::file_size(source, ec));
    return true;
}

void PackageBuilder::writeText(const fs::path& target, std::string bytes) {
    m_texts.emplace_back(target, std::move(bytes));
}

void PackageBuilder::drop(const fs::path& target) {
    const fs::path key = target.lexically_normal();
    if (auto it = m_byTarget.find(key); it != m_byTarget.end()) {
        const std::size_t index = it->second;
        m_copies.erase(m_copies.begin() + static_cast<std::ptrdiff_t>(index));
        m_byTarget.erase(it);
        for (auto& [k, i] : m_byTarget)
            if (i > index)
                --i;
    }
    m_dropped.push_back(key);
}

std::uint64_t PackageBuilder::plannedBytes() const {
    std::uint64_t total = 0;
    for (const auto& c : m_copies)
        total += c.size;
    for (const auto& [name, text] : m_texts)
        total += text.size();
    return total;
}

PackageReport PackageBuilder::run(const std::string& command, UserInterface* ui) {
    PackageReport report = std::move(m_report);
    m_report = PackageReport{};
    report.folder = m_folder;
    const fs::path root = m_ctx.railWorks();
    if (!root.empty() && (backup::isInside(m_folder, root) || backup::isInside(root, m_folder))) {
        report.refused = "The package folder " + m_folder.string() + " lies inside the simulator's folder " +
                         root.string() +
                         " (or holds it): a package is made outside it. Choose another folder.";
        return report;
    }
    const std::uint64_t needed = plannedBytes();
    const auto room = freeSpace ? freeSpace(m_folder) : systemFreeSpace(m_folder);
    if (room && *room < needed) {
        report.refused = "There is not enough room for the package in " + m_folder.string() + ": it needs " +
                         sizeText(needed) + ", " + sizeText(*room) + " are free.";
        return report;
    }

    if (!MakePath(m_folder)) {
        report.refused = m_folder.string() + ": the package folder cannot be made.";
        return report;
    }
    std::set<fs::path> folders;
    for (const auto& c : m_copies)
        folders.insert((m_folder / c.target).parent_path());
    for (const auto& f : folders)
        if (!MakePath(f))
            report.problems.push_back(f.string() + ": the folder cannot be made");

    struct Staged {
        bool unchanged = false;
        PreparedFile prepared;
        std::string problem;
    };
    WriteService& service = m_ctx.files();
    WriteOptions write;
    write.sync = kSyncStagedEachFile;
    bool stopped = false;
    std::vector<Staged> staged = parallelMap<Staged>(
        m_copies.size(), 0, ui,
        "Copying " + std::to_string(m_copies.size()) + " files to " + m_folder.string(), stopped,
        [&](std::size_t i) {
            Staged s;
            const PlannedCopy& c = m_copies[i];
            const fs::path target = m_folder / c.target;
            std::error_code ec;
            const fs::file_status there = fs::symlink_status(target, ec);
            if (fs::is_symlink(there) || (fs::exists(there) && !fs::is_regular_file(there))) {
                s.problem = target.string() + ": is not a plain file; it was left as it is";
                return s;
            }
            if (fs::exists(there) && upToDate(c.source, target, c.size)) {
                s.unchanged = true;
                return s;
            }
            const fs::path temp =
                target.parent_path() / ("." + target.filename().string() + "." + tempTag() + ".velmora-tmp");
            bool cloned = false;
            const std::string why = backup::copyFile(c.source, temp, false, true, cloned);
            if (!why.empty()) {
                s.problem = c.source.string() + ": " + why;
                return s;
            }
            // The copy is the prepared content: measured and hashed by the write service, synced
            // with the rest (unless each is synced here) before any of them replaces a file.
            const WriteResult w = service.adopt(temp, target, write, s.prepared);
            if (!w)
                s.problem = w.message;
            return s;
        });
    if (stopped) {
        for (auto& s : staged)
            service.discard(s.prepared);
        report.aborted = true;
        return report;
    }
    if (std::any_of(staged.begin(), staged.end(), [](const Staged& s) { return s.prepared.existed; }))
        syncStaged(m_folder);

    // A file the package held from an earlier run keeps its old content outside the package, so
    // that an undo can put it back and the package holds nothing but itself.
    const fs::path kept =
        m_ctx.appPath() / "PackageBackups" / (localTimeText("%Y%m%d-%H%M%S") + "-" + tempTag());
    auto keptAside = [&](const fs::path& target, bool existed) {
        WriteOptions o = write;
        if (existed) {
            MakePath((kept / target).parent_path());
            o.backupName = kept / target;
        }
        return o;
    };
    auto exists = [&](const fs::path& target) {
        std::error_code ec;
        return fs::exists(fs::symlink_status(m_folder / target, ec));
    };
    std::map<std::string, std::string> hashes;
    JournalCommand entry(&m_ctx.journal(), command);
    for (std::size_t i = 0; i < staged.size(); ++i) {
        Staged& s = staged[i];
        const std::string target = rel(m_copies[i].target);
        if (s.unchanged) {
            report.unchanged.push_back(target);
            continue;
        }
        if (!s.problem.empty()) {
            report.problems.push_back(s.problem);
            continue;
        }
        const WriteResult w = service.commit(s.prepared, keptAside(m_copies[i].target, s.prepared.existed));
        if (!w) {
            report.problems.push_back(w.message);
            continue;
        }
        report.copied.push_back(target);
        report.bytes += w.size;
        hashes[target] = w.sha256;
    }
    for (const fs::path& gone : m_dropped) {
        std::error_code ec;
        if (fs::is_regular_file(fs::symlink_status(m_folder / gone, ec)))
            if (const WriteResult w = service.remove(m_folder / gone); !w)
                report.problems.push_back(w.message);
    }
    for (const auto& [target, text] : m_texts) {
        const WriteResult w = service.write(m_folder / target, text, keptAside(target, exists(target)));
        if (w) {
            report.written.push_back(rel(target));
            hashes[rel(target)] = w.sha256;
        } else {
            report.problems.push_back(w.message);
        }
    }

    // The manifest: every file now in the package but itself.
    std::vector<fs::path> files = filesBelow(m_folder);
    files.erase(std::remove(files.begin(), files.end(), fs::path(kManifestName)), files.end());
    bool unused = false;
    report.manifest = parallelMap<ManifestRow>(files.size(), 0, nullptr, {}, unused, [&](std::size_t i) {
        ManifestRow row;
        row.path = rel(files[i]);
        std::error_code ec;
        row.size = fs::file_size(m_folder / files[i], ec);
        const auto known = hashes.find(row.path);
        row.sha256 =
            known != hashes.end() && !known->second.empty() ? known->second : fileSha256(m_folder / files[i]);
        return row;
    });
    if (const WriteResult w = service.write(m_folder / kManifestName, manifestText(report.manifest),
                                            keptAside(kManifestName, exists(kManifestName)));
        w)
        report.written.push_back(kManifestName);
    else
        report.problems.push_back(w.message);
    return report;
}

} // namespace velmora::packaging
