#include "velmora/archives/unpack.h"

#include "velmora/archives/entrypath.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"
#include "velmora/core/paths.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"

#include <algorithm>
#include <map>
#include <set>
#include <unordered_map>


namespace velmora::archives {

const char* unpackModeCaption(UnpackMode mode) {
    switch (mode) {
    case UnpackMode::NewFolder: return "Unpack .ap files to a new folder";
    case UnpackMode::SameFolder: return "Unpack .ap files to same folder as the .ap (first time unpack)";
    case UnpackMode::Overwrite: return "Unpack .ap overwriting all destination files if they exist";
    case UnpackMode::Skip: return "Unpack .ap skipping any files which already exist";
    case UnpackMode::RenameNew: return "Unpack .ap appending number to any NEW file which already exists";
    case UnpackMode::RenameOld: return "Unpack .ap renaming existing files by adding a number";
    }
    return "";
}

std::optional<UnpackMode> unpackModeFromWord(std::string_view word) {
    if (word == "overwrite")
        return UnpackMode::Overwrite;
    if (word == "skip")
        return UnpackMode::Skip;
    if (word == "rename-new")
        return UnpackMode::RenameNew;
    if (word == "rename-old")
        return UnpackMode::RenameOld;
    return std::nullopt;
}

namespace {

std::vector<std::string> foldedParts(std::string_view name) {
    std::vector<std::string> parts;
    std::string part;
    for (const char c : name) {
        if (c == '/' || c == '\\') {
            if (!part.empty())
                parts.push_back(foldName(part));
            part.clear();
        } else {
            part += c;
        }
    }
    if (!part.empty())
        parts.push_back(foldName(part));
    return parts;
}

bool hasPart(const std::vector<std::string>& parts, std::string_view folded, bool folderOnly = true) {
    const std::size_t n = folderOnly && !parts.empty() ? parts.size() - 1 : parts.size();
    return std::find(parts.begin(), parts.begin() + static_cast<std::ptrdiff_t>(n), folded) !=
           parts.begin() + static_cast<std::ptrdiff_t>(n);
}

bool endsWith(const std::string& s, std::string_view tail) {
    return s.size() >= tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

} // namespace

bool entryWanted(EntrySet kind, std::string_view entryName) {
    if (kind == EntrySet::All)
        return true;
    const std::vector<std::string> parts = foldedParts(entryName);
    if (parts.empty())
        return false;
    const std::string& file = parts.back();
    switch (kind) {
    case EntrySet::All: return true;
    case EntrySet::RollingStock: return hasPart(parts, "railvehicles");
    case EntrySet::Scenarios: return hasPart(parts, "scenarios");
    case EntrySet::LocoShapes:
        return hasPart(parts, "railvehicles") && hasPart(parts, "engine") && endsWith(file, ".geopcdx");
    case EntrySet::RollingStockBins: return hasPart(parts, "railvehicles") && endsWith(file, ".bin");
    case EntrySet::RouteProperties: return parts.size() == 1 && file == "routeproperties.xml";
    }
    return false;
}

namespace {

// One file the unpack will make: the entry (the last of those that meet in it, by the mode's
// rule) and where it goes.
struct Planned {
    std::uint64_t index = 0;
    std::string entryName;
    std::uint64_t size = 0;
    fs::path target;
    fs::path oldKeptAs; // RenameOld: the name the file that is there moves to
    PreparedFile prepared;
};

// "<stem>_<n><ext>" for the first n whose name is free on disk and in `taken`.
fs::path numberedName(const fs::path& file, std::set<std::string>& taken) {
    const std::string stem = file.stem().string();
    const std::string ext = file.extension().string();
    std::error_code ec;
    for (int n = 1;; ++n) {
        fs::path candidate = file.parent_path() / (stem + "_" + std::to_string(n) + ext);
        if (!fs::exists(fs::symlink_status(candidate, ec)) && !taken.count(foldName(candidate.string()))) {
            taken.insert(foldName(candidate.string()));
            return candidate;
        }
    }
}

bool within(const fs::path& folder, const fs::path& root) {
    auto f = folder.begin(), r = root.begin();
    for (; r != root.end(); ++r, ++f)
        if (f == folder.end() || *f != *r)
            return false;
    return true;
}

// Makes the folders of a target that are missing, remembering each so that a failed unpack can
// take them away again, and says whether the folder really lies below the destination (an
// existing folder may be a link that leads elsewhere).
class Folders {
public:
    explicit Folders(fs::path root) : m_root(std::move(root)) {}

    std::string make(const fs::path& folder) {
        if (auto it = m_checked.find(folder.string()); it != m_checked.end())
            return it->second;
        std::string& answer = m_checked[folder.string()];
        std::error_code ec;
        fs::path walk;
        for (const auto& part : folder) {
            walk /= part;
            if (fs::is_directory(fs::symlink_status(walk, ec)) || fs::is_directory(walk, ec))
                continue;
            if (fs::exists(fs::symlink_status(walk, ec)))
                return answer = walk.string() + ": a file of that name stands where a folder must be made";
            if (!fs::create_directory(walk, ec) && ec)
                return answer = walk.string() + ": the folder cannot be made (" + ec.message() + ")";
            m_made.push_back(walk);
        }
        const fs::path real = fs::canonical(folder, ec);
        if (ec)
            return answer = folder.string() + ": cannot be reached (" + ec.message() + ")";
        if (!within(real, realRoot()))
            return answer = folder.string() + ": is a link that leads out of the folder unpacked into";
        return answer;
    }

    // Takes away the folders made, deepest first, where they are still empty.
    void takeBack() {
        std::error_code ec;
        for (auto it = m_made.rbegin(); it != m_made.rend(); ++it)
            fs::remove(*it, ec);
        m_made.clear();
    }

private:
    const fs::path& realRoot() {
        if (m_realRoot.empty()) {
            std::error_code ec;
            m_realRoot = fs::canonical(m_root, ec);
        }
        return m_realRoot;
    }
    fs::path m_root, m_realRoot;
    std::vector<fs::path> m_made;
    std::unordered_map<std::string, std::string> m_checked;
};

} // namespace

UnpackResult unpackArchive(WriteService& files, const fs::path& archive, const UnpackOptions& options,
                           UserInterface* ui) {
    UnpackResult result;
    result.archive = archive;
    ZipReader zip;
    if (!zip.open(archive)) {
        result.error = zip.error();
        return result;
    }
    const fs::path destination = fs::absolute(options.destination.empty() ? archive.parent_path() : options.destination);
    const std::string archiveName = archive.filename().string();

    // Which entries, and where each goes.
    std::set<std::uint64_t> only(options.only.begin(), options.only.end());
    const PathResolver resolver;
    // Each folder is looked up once; most entries share their folder with others.
    std::unordered_map<std::string, fs::path> folderOf; // folded relative folder -> real folder
    auto placeFor = [&](const EntryPlace& place) {
        std::string folder;
        for (std::size_t i = 0; i + 1 < place.parts.size(); ++i)
            folder += (i ? "/" : "") + place.parts[i];
        auto [it, added] = folderOf.try_emplace(foldName(folder));
        if (added)
            it->second = folder.empty() ? destination : resolver.resolveForWrite(destination, folder);
        return resolver.resolveForWrite(it->second, place.parts.back());
    };
    std::map<std::string, std::vector<Planned>> byPlace; // folded target -> entries, archive order
    std::vector<std::string> placeOrder;
    const std::uint64_t count = zip.count();
    for (std::uint64_t i = 0; i < count; ++i) {
        if (!only.empty() && !only.count(i))
            continue;
        const ZipEntry entry = zip.entry(i);
        if (!entryWanted(options.kind, entry.name))
            continue;
        if (entry.folder && !entry.link)
            continue; // folders are made for the files in them
        EntryPlace place = placeOf(entry);
        if (!place.ok()) {
            result.refused.push_back(windowsName(entry.name.substr(0, 200)) + ": " + place.refusal);
            continue;
        }
        if (!options.keepPaths)
            place.parts.erase(place.parts.begin(), place.parts.end() - 1);
        // A folder already there in another letter case is the folder meant, as on Windows.
        Planned p;
        p.index = i;
        p.entryName = entry.name;
        p.size = entry.size;
        p.target = placeFor(place);
        const std::string key = foldName(p.target.string());
        auto& group = byPlace[key];
        if (group.empty())
            placeOrder.push_back(key);
        group.push_back(std::move(p));
    }

    // Where several entries meet in one file (names that differ only in letter case), the mode
    // decides as it does for a file already there.
    std::vector<Planned> plan;
    std::set<std::string> taken;
    for (const auto& key : placeOrder)
        taken.insert(key);
    bool askFirst = options.mode == UnpackMode::NewFolder || options.mode == UnpackMode::SameFolder;
    UnpackMode mode = options.mode;
    std::error_code ec;
    std::size_t existing = 0;
    std::map<std::string, fs::file_status> status; // what stands at each place now
    for (const auto& key : placeOrder) {
        const fs::file_status& s = status[key] = fs::symlink_status(byPlace[key].front().target, ec);
        if (fs::exists(s))
            ++existing;
    }
    if (askFirst) {
        mode = UnpackMode::Skip;
        if (existing > 0) {
            const Answer a = ui ? ui->ask(std::to_string(existing) + " of the files in " + archiveName +
                                              " are already in " + destination.string() +
                                              ".\nOverwrite them? Their old content is kept as backups.\n"
                                              "No leaves them as they are and unpacks the rest.",
                                          Buttons::YesNoCancel, Icon::Question, "Select 7zip Mode")
                                : Answer::No;
            if (a == Answer::Cancel) {
                result.cancelled = true;
                result.error = archive.string() + ": nothing was unpacked.";
                return result;
            }
            mode = a == Answer::Yes ? UnpackMode::Overwrite : UnpackMode::Skip;
        }
    }
    for (const auto& key : placeOrder) {
        auto& group = byPlace[key];
        for (auto& g : group)
            g.target = group.front().target; // one file, spelled as the first entry spells it
        if (group.size() > 1) {
            std::string names;
            for (const auto& g : group)
                names += (names.empty() ? "" : ", ") + windowsName(g.entryName);
            const char* rule = mode == UnpackMode::Skip        ? "the first was kept"
                               : mode == UnpackMode::RenameNew ? "the later ones got numbered names"
                               : mode == UnpackMode::RenameOld ? "the last took the name, the earlier ones numbered names"
                                                               : "the last was kept";
            result.collisions.push_back(names + ": differ only in letter case and so are one file here; " + rule);
        }
        const fs::file_status there = status[key];
        if (fs::is_symlink(there) || (fs::exists(there) && !fs::is_regular_file(there))) {
            for (const auto& g : group)
                result.refused.push_back(windowsName(g.entryName) + ": " + g.target.string() +
                                         (fs::is_symlink(there) ? " is a link, which is never written through"
                                                                : " is not a plain file"));
            continue;
        }
        const bool present = fs::exists(there);
        switch (mode) {
        case UnpackMode::Skip:
            if (present)
                result.kept.push_back(group.front().target);
            else
                plan.push_back(std::move(group.front()));
            break;
        case UnpackMode::RenameNew:
            for (std::size_t g = 0; g < group.size(); ++g) {
                if (present || g > 0) {
                    const fs::path wanted = group[g].target;
                    group[g].target = numberedName(wanted, taken);
                    result.renamed.push_back(wanted.string() + ": was there, the unpacked file is " +
                                             group[g].target.filename().string());
                }
                plan.push_back(std::move(group[g]));
            }
            break;
        case UnpackMode::RenameOld:
            for (std::size_t g = 0; g < group.size(); ++g) {
                if (g + 1 < group.size()) { // an earlier entry of the same name, kept under a number
                    const fs::path wanted = group[g].target;
                    group[g].target = numberedName(wanted, taken);
                    result.renamed.push_back(wanted.string() + ": an entry of the same name is kept as " +
                                             group[g].target.filename().string());
                } else if (present) {
                    group[g].oldKeptAs = numberedName(group[g].target, taken);
                    result.renamed.push_back(group[g].target.string() + ": the file that was there is now " +
                                             group[g].oldKeptAs.filename().string());
                }
                plan.push_back(std::move(group[g]));
            }
            break;
        default: // Overwrite
            plan.push_back(std::move(group.back()));
            break;
        }
    }

    // Room enough on the disk, before anything is written.
    std::uint64_t needed = 0;
    for (const auto& p : plan)
        needed += p.size;
    fs::path probe = destination;
    while (!probe.empty() && !fs::exists(probe, ec) && probe.has_parent_path() && probe != probe.parent_path())
        probe = probe.parent_path();
    const fs::space_info space = fs::space(probe, ec);
    if (!ec && needed > space.available) {
        result.error = archive.string() + ": needs " + sizeText(needed) + " to unpack, and " + destination.string() +
                       " has " + sizeText(space.available) + " free. Nothing was unpacked.";
        return result;
    }

    // First every file beside its place under a temporary name...
    WriteOptions write;
    write.backup = options.keepBackups ? Backup::Numbered : Backup::None;
    write.journal = options.keepBackups;
    write.refuseReadOnly = false; // unpacked files are made writable, as the old ones become
    write.sync = kSyncStagedEachFile;
    Folders folders(destination);
    std::vector<Planned*> staged;
    auto undoStaging = [&] {
        for (Planned* p : staged)
            files.discard(p->prepared);
        folders.takeBack();
    };
    if (ui)
        ui->beginProgress("Unpacking " + archiveName, static_cast<std::int64_t>(needed >> 10) + 1);
    std::uint64_t done = 0;
    for (auto& p : plan) {
        if (const std::string why = folders.make(p.target.parent_path()); !why.empty()) {
            result.refused.push_back(windowsName(p.entryName) + ": " + why);
            continue;
        }
        ReadResult read;
        const WriteResult w = files.prepare(
            p.target,
            [&](const ByteSink& sink) {
                read = zip.read(
                    p.index,
                    [&](const char* data, std::size_t size) {
                        done += size;
                        if (ui)
                            ui->progress(static_cast<std::int64_t>(done >> 10));
                        return sink(data, size);
                    },
                    options.entryLimit, [ui] { return ui && ui->cancelled(); });
                if (read.stop == ReadStop::Sink)
                    return read.sinkError;
                return read ? std::error_code{} : std::make_error_code(std::errc::operation_canceled);
            },
            write, p.prepared);
        if (read.stop == ReadStop::Cancelled) {
            undoStaging();
            if (ui)
                ui->endProgress();
            result.cancelled = true;
            result.error = archive.string() + ": stopped; nothing was unpacked.";
            return result;
        }
        if (read.stop == ReadStop::Damaged || read.stop == ReadStop::TooLarge) {
            files.discard(p.prepared);
            result.refused.push_back(windowsName(p.entryName) + ": " +
                                     read.message.substr(read.message.rfind(": ") + 2));
            continue;
        }
        if (!w) { // the disk is full, or the folder cannot be written
            undoStaging();
            if (ui)
                ui->endProgress();
            result.error = w.message + " " + archive.string() + " was not unpacked; nothing of it was put in place.";
            return result;
        }
        staged.push_back(&p);
    }
    if (ui)
        ui->endProgress();
    // Only a file that replaces another needs its data on the disk before it takes the name: a
    // new one lost in a power cut leaves nothing of the user's worse than before.
    if (std::any_of(staged.begin(), staged.end(), [](const Planned* p) { return p->prepared.existed; }))
        syncStaged(destination);

    // ... then each takes its name.
    JournalCommand entry(files.journal(), "ap unpack " + archive.string());
    std::vector<WriteResult> committed;
    for (Planned* p : staged) {
        WriteOptions place = write;
        place.backupName = p->oldKeptAs;
        if (!p->oldKeptAs.empty())
            place.backup = Backup::Numbered;
        WriteResult w = files.commit(p->prepared, place);
        if (!w) {
            for (Planned* rest : staged)
                files.discard(rest->prepared);
            const std::string lost = files.putBack(committed);
            folders.takeBack();
            result.error = w.message + " " + archive.string() + " was not unpacked" +
                           (lost.empty() ? "; what it had put in place was put back." : ". " + lost);
            return result;
        }
        result.bytes += w.size;
        result.written.push_back(p->target);
        committed.push_back(std::move(w));
    }
    result.ok = true;
    return result;
}

std::string describe(const UnpackResult& r) {
    std::string text;
    if (!r.ok)
        return r.error + "\n";
    text += r.archive.string() + ": " + std::to_string(r.written.size()) + " files unpacked (" +
            std::to_string((r.bytes + 1023) / 1024) + " KB)";
    if (!r.kept.empty())
        text += ", " + std::to_string(r.kept.size()) + " already there kept";
    text += ".\n";
    for (const auto& s : r.renamed)
        text += "  renamed: " + s + "\n";
    for (const auto& s : r.collisions)
        text += "  same name: " + s + "\n";
    for (const auto& s : r.refused)
        text += "  not unpacked: " + s + "\n";
    return text;
}

} // namespace velmora::archives
