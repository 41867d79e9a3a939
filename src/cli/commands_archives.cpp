// The .ap archives from the command line: the table of archives found, unpacking by the four
// rules, entries listed, extracted and opened, the index files, and making zip archives.

#include "session.h"

#include "velmora/archives/apcommands.h"
#include "velmora/archives/aptable.h"
#include "velmora/archives/routenames.h"
#include "velmora/archives/zipwriter.h"
#include "velmora/assets/scanpath.h"
#include "velmora/core/services.h"
#include "serz/serz.h"

namespace velmora::cli {

namespace {

namespace ar = velmora::archives;

// Typing the command is the user's yes to its first question; later questions (a file already
// there in an asking mode) go to the terminal as usual.
class Consented : public AbortableUi {
public:
    using AbortableUi::AbortableUi;
    Answer ask(const std::string& text, Buttons buttons, Icon icon, const std::string& title) override {
        if (!m_asked) {
            m_asked = true;
            return buttons == Buttons::YesNo || buttons == Buttons::YesNoCancel ? Answer::Yes : Answer::Ok;
        }
        return AbortableUi::ask(text, buttons, icon, title);
    }
    // The closing messages say what the summary says better.
    void message(const std::string&, Icon, const std::string&) override {}

private:
    bool m_asked = false;
};

int finishCommand(Session& s, const ar::ApCommandResult& r) {
    if (!s.g.quiet)
        s.out << shown(r.summary);
    for (const auto& p : r.problems)
        s.err << "velmora-cli: " << s.g.command << ": " << shown(p) << '\n';
    bool failed = false;
    for (const auto& u : r.unpacked) {
        if (u.cancelled)
            return s.fail("stopped; the archive in work was not unpacked");
        failed = failed || !u.ok;
    }
    // An archive that could not be unpacked at all is an error; entries refused are findings.
    return failed ? Error : r.problems.empty() ? Success : ProblemsFound;
}

std::vector<fs::path> archiveArguments(Session& s, const Arguments& a) {
    std::vector<fs::path> aps;
    for (const auto& p : a.plain)
        aps.push_back(fs::absolute(p));
    if (aps.empty())
        s.fail("needs at least one .ap file");
    return aps;
}

int cmdFind(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--sort"}, {"--content", "--assets", "--main", "--no-detail", "--json"});
    if (!s.startWithout(a))
        return Error;
    ar::ApFindOptions o;
    o.search = a.has("--assets") ? ar::ApSearch::Assets
               : a.has("--content") ? ar::ApSearch::Scenarios
               : a.has("--main")    ? ar::ApSearch::MainContent
                                    : ar::ApSearch::All;
    o.details = !a.has("--no-detail");
    const auto sort = a.value("--sort");
    if (sort && *sort != "file" && *sort != "date")
        return s.fail("--sort takes file or date");
    ar::ApTable t = ar::findApFiles(s.ctx.railWorks(), o, &s.ui);
    if (sort)
        ar::sortApTable(t, *sort == "date" ? ar::ApSort::Date : ar::ApSort::File);
    if (a.has("--json")) {
        s.out << ar::apTableJson(t);
    } else {
        for (const auto& f : t.files)
            s.out << shown(f.path.string()) << '\t' << ar::apStateText(f.state)
                  << (o.details ? "\t" + f.date + "\t" + std::to_string(f.size) + "\t" + std::to_string(f.folderSize) +
                                      (f.red ? "\tred" : "")
                                : std::string())
                  << '\n';
    }
    for (const auto& u : t.unreadable)
        s.err << "velmora-cli: " << s.g.command << ": cannot be read: " << shown(u) << '\n';
    if (t.stopped)
        return s.fail("stopped; the table is not complete");
    return t.unreadable.empty() ? Success : ProblemsFound;
}

int cmdUnpack(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--mode", "--to", "--only"}, {});
    if (!a.problem.empty())
        return s.fail(a.problem);
    const std::vector<fs::path> aps = archiveArguments(s, a);
    if (aps.empty())
        return Error;
    const auto mode = ar::unpackModeFromWord(a.value("--mode").value_or("overwrite"));
    if (!mode)
        return s.fail("--mode takes overwrite, skip, rename-new or rename-old");
    ar::UnpackCommand command = ar::UnpackCommand::Unpack;
    if (const auto only = a.value("--only")) {
        if (*only == "rolling-stock")
            command = ar::UnpackCommand::RollingStock;
        else if (*only == "scenarios")
            command = ar::UnpackCommand::Scenarios;
        else if (*only == "loco-shapes")
            command = ar::UnpackCommand::LocoShapes;
        else if (*only == "stock-bins")
            command = ar::UnpackCommand::RollingStockBins;
        else
            return s.fail("--only takes rolling-stock, scenarios, loco-shapes or stock-bins");
    }
    s.start();
    Consented ui(s.ui);
    const fs::path to = a.value("--to") ? fs::absolute(*a.value("--to")) : fs::path();
    return finishCommand(s, ar::unpackSelected(s.ctx, ui, aps, command, *mode, to));
}

int cmdUnpackAll(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--rolling-stock", "--scenarios"});
    if (a.has("--rolling-stock") == a.has("--scenarios"))
        return s.fail("takes --rolling-stock or --scenarios");
    if (!s.startWithout(a))
        return Error;
    Consented ui(s.ui);
    return finishCommand(s, ar::unpackEverywhere(s.ctx, ui, a.has("--rolling-stock") ? ar::EntrySet::RollingStock
                                                                                      : ar::EntrySet::Scenarios));
}

// The archive of a command that reads one: opened, or null after saying why.
bool openArchive(Session& s, const Arguments& a, ar::ZipReader& zip) {
    if (!a.problem.empty()) {
        s.fail(a.problem);
        return false;
    }
    if (a.plain.empty()) {
        s.fail("needs the .ap file");
        return false;
    }
    if (!zip.open(a.plain.front())) {
        s.fail(zip.error());
        return false;
    }
    return true;
}

int cmdEntries(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--filter"}, {"--json"});
    ar::ZipReader zip;
    if (!openArchive(s, a, zip))
        return Error;
    if (a.plain.size() > 1)
        return s.fail("unexpected argument '" + a.plain[1] + "'");
    const std::string filter = a.value("--filter").value_or("");
    if (filter.empty() && !a.has("--json")) {
        s.out << shown(ar::entryListing(zip));
        return Success;
    }
    std::string json = "[";
    bool first = true;
    for (const ar::ZipEntry& e : zip.entries()) {
        const std::string name = ar::windowsName(e.name);
        const std::string file = name.substr(name.rfind('\\') + 1);
        if (!filter.empty() && !assets::cScanPath::like(name, filter) && !assets::cScanPath::like(file, filter))
            continue;
        if (!a.has("--json")) {
            s.out << e.index << '\t' << shown(name) << '\t' << e.size << '\t' << e.packed << '\t'
                  << localTimeText("%Y-%m-%d %H:%M:%S", e.modified) << '\n';
            continue;
        }
        json += std::string(first ? "\n " : ",\n ") + "{\"index\": " + std::to_string(e.index) +
                ", \"name\": " + jsonQuoted(e.name) + ", \"size\": " + std::to_string(e.size) +
                ", \"packed\": " + std::to_string(e.packed) + ", \"modified\": " +
                jsonQuoted(localTimeText("%Y-%m-%d %H:%M:%S", e.modified)) +
                ", \"folder\": " + (e.folder ? "true" : "false") + "}";
        first = false;
    }
    if (a.has("--json"))
        s.out << json << (first ? "]\n" : "\n]\n");
    return Success;
}

int cmdExtract(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--to", "--mode"}, {"--flat"});
    ar::ZipReader zip;
    if (!openArchive(s, a, zip))
        return Error;
    if (!a.value("--to"))
        return s.fail("needs --to DIR, the folder to extract into");
    ar::UnpackOptions o;
    o.destination = fs::absolute(*a.value("--to"));
    o.keepPaths = !a.has("--flat");
    const auto mode = ar::unpackModeFromWord(a.value("--mode").value_or("overwrite"));
    if (!mode)
        return s.fail("--mode takes overwrite, skip, rename-new or rename-old");
    o.mode = *mode;
    for (std::size_t i = 1; i < a.plain.size(); ++i) {
        const std::int64_t index = zip.find(a.plain[i]);
        if (index < 0)
            return s.fail(zip.path().string() + ": holds no entry '" + a.plain[i] + "'; nothing was extracted");
        o.only.push_back(static_cast<std::uint64_t>(index));
    }
    zip.close();
    s.start();
    const ar::UnpackResult r = ar::unpackArchive(s.ctx.files(), fs::absolute(a.plain.front()), o, &s.ui);
    ar::ApCommandResult out;
    out.ran = true;
    out.summary = ar::describe(r);
    if (!r.ok && !r.cancelled)
        out.problems.push_back(r.error);
    for (const auto& refused : r.refused)
        out.problems.push_back(r.archive.string() + ": " + refused);
    out.unpacked.push_back(r);
    return finishCommand(s, out);
}

int cmdOpen(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--xml"}, {});
    ar::ZipReader zip;
    if (!openArchive(s, a, zip))
        return Error;
    if (a.plain.size() != 2)
        return s.fail("takes the .ap file and one ENTRY");
    const std::int64_t index = zip.find(a.plain[1]);
    if (index < 0)
        return s.fail(zip.path().string() + ": holds no entry '" + a.plain[1] + "'");
    std::string bytes;
    const ar::ReadResult read = zip.readAll(static_cast<std::uint64_t>(index), bytes, serz::kMaxDocumentBytes);
    if (!read)
        return s.fail(read.message);
    std::string text = bytes;
    if (bytes.compare(0, 4, "SERZ") == 0) {
        text.clear();
        const serz::Status st = serz::decode(bytes, text);
        if (!st)
            return s.fail(zip.path().string() + ": " + a.plain[1] + ": " + st.message);
    }
    if (const auto out = a.value("--xml")) {
        s.start();
        WriteOptions plain;
        const WriteResult w = s.ctx.files().write(fs::absolute(*out), text, plain);
        if (!w)
            return s.fail(w.message);
        if (!s.g.quiet)
            s.out << "Wrote " << shown(w.target.string()) << (w.backup.empty() ? "" : ", backup " + shown(w.backup.string()))
                  << '\n';
        return Success;
    }
    s.out << shown(text);
    return Success;
}

int cmdIndex(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() > 1)
        return s.fail("unexpected argument '" + a.plain[1] + "'");
    s.start();
    fs::path folder;
    if (a.plain.empty()) {
        if (!s.requireRoot())
            return Error;
        folder = s.ctx.railWorks();
    } else {
        folder = fs::absolute(a.plain.front());
    }
    ar::ApFindOptions o;
    o.details = false;
    const ar::ApTable t = ar::findApFiles(folder, o, &s.ui);
    std::vector<fs::path> files;
    for (const auto& f : t.files)
        files.push_back(f.path);
    const WriteResult w = s.ctx.files().write(s.ctx.appPath() / "Data" / "AP-Index.csv", ar::apIndexText(files));
    if (!w)
        return s.fail(w.message);
    if (!s.g.quiet)
        s.out << "Your AP-Index.csv file is in your Data folder\n"
              << shown(w.target.string()) << ": " << files.size() << " .ap files\n";
    for (const auto& u : t.unreadable)
        s.err << "velmora-cli: " << s.g.command << ": cannot be read: " << shown(u) << '\n';
    return t.unreadable.empty() ? Success : ProblemsFound;
}

// The commands that take .ap files and nothing else.
template <typename Run>
int onArchives(Session& s, Run run) {
    const Arguments a = parseArguments(s.g.rest, {}, {});
    if (!a.problem.empty())
        return s.fail(a.problem);
    const std::vector<fs::path> aps = archiveArguments(s, a);
    if (aps.empty())
        return Error;
    s.start();
    return finishCommand(s, run(aps));
}

int cmdRouteProperties(Session& s) {
    return onArchives(s, [&](const std::vector<fs::path>& aps) {
        Consented ui(s.ui);
        return ar::extractRouteProperties(s.ctx, ui, aps);
    });
}

int cmdRouteNames(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--no-extract"});
    if (!s.startWithout(a))
        return Error;
    Consented ui(s.ui);
    // The question's third answer skips the extraction.
    class NoExtract : public Consented {
    public:
        using Consented::Consented;
        Answer ask(const std::string&, Buttons, Icon, const std::string&) override { return Answer::No; }
    } skip(s.ui);
    return finishCommand(s, ar::addRouteNames(s.ctx, a.has("--no-extract") ? static_cast<UserInterface&>(skip) : ui));
}

int cmdDeleteFolders(Session& s) {
    // Deleting asks on the terminal (or takes --yes): it is the one command that removes.
    return onArchives(s, [&](const std::vector<fs::path>& aps) { return ar::deleteFolders(s.ctx, s.ui, aps); });
}

int cmdRouteIndex(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {});
    if (!s.startWithout(a))
        return Error;
    Consented ui(s.ui);
    return finishCommand(s, ar::buildRouteIndex(s.ctx, ui));
}

// "10" (megabytes), "500k", "2g".
std::optional<std::uint64_t> volumeSize(std::string text) {
    std::uint64_t unit = 1ull << 20;
    if (!text.empty()) {
        const char last = static_cast<char>(std::tolower(static_cast<unsigned char>(text.back())));
        if (last == 'k' || last == 'm' || last == 'g') {
            unit = last == 'k' ? 1ull << 10 : last == 'm' ? 1ull << 20 : 1ull << 30;
            text.pop_back();
        }
    }
    const auto n = parseNumber(text);
    if (!n || *n <= 0)
        return std::nullopt;
    return static_cast<std::uint64_t>(*n) * unit;
}

int cmdZipCreate(Session& s) {
    const Arguments a =
        parseArguments(s.g.rest, {"--level", "--volume", "--wildcards"}, {"--no-subfolders", "--full-path"});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() < 2)
        return s.fail("takes the archive to make and at least one file or folder to put in it");
    ar::ZipCreateOptions o;
    if (const auto level = a.value("--level")) {
        const auto n = parseNumber(*level);
        if (!n || *n < 0 || *n > 9)
            return s.fail("--level takes 0 (none) to 9 (highest)");
        o.level = static_cast<int>(*n);
    }
    if (const auto volume = a.value("--volume")) {
        const auto bytes = volumeSize(*volume);
        if (!bytes)
            return s.fail("--volume takes a size such as 10 (megabytes), 500k or 2g");
        o.volumeBytes = *bytes;
    }
    o.wildcards = a.value("--wildcards").value_or("*.*");
    o.subFolders = !a.has("--no-subfolders");
    o.fullPath = a.has("--full-path");
    std::vector<fs::path> inputs;
    for (std::size_t i = 1; i < a.plain.size(); ++i)
        inputs.push_back(fs::absolute(a.plain[i]));
    s.start();
    const ar::ZipCreateResult r = ar::createZip(s.ctx.files(), fs::absolute(a.plain.front()), inputs, o, &s.ui);
    for (const auto& k : r.skipped)
        s.err << "velmora-cli: " << s.g.command << ": left out: " << shown(k) << '\n';
    if (!r.ok)
        return s.fail(r.message);
    if (!s.g.quiet) {
        s.out << r.files << " files (" << (r.bytes + 1023) / 1024 << " KB) in:\n";
        for (const auto& p : r.parts)
            s.out << "  " << shown(p.string()) << '\n';
    }
    return r.skipped.empty() ? Success : ProblemsFound;
}

} // namespace

std::vector<Command> archiveCommands() {
    return {
        {"ap find", "[--assets|--content|--main] [--no-detail] [--sort file|date] [--json]",
         "the .ap files of the install with their states, dates and sizes", cmdFind, false,
         "Each line: path, state (Unpacked or Not unpacked), date, size, size of its folder, and \"red\" where the "
         "folder is too small to hold what the archive packs. --json gives a list of {\"path\", \"state\", \"date\", "
         "\"size\", \"folderSize\", \"red\"}."},
        {"ap unpack", "FILE... [--mode overwrite|skip|rename-new|rename-old] [--to DIR] "
                      "[--only rolling-stock|scenarios|loco-shapes|stock-bins]",
         "unpacks archives into their folders (or DIR), each whole or not at all", cmdUnpack, true,
         "overwrite keeps the replaced files as backups; skip leaves them; rename-new gives the unpacked file the next "
         "free name <name>_<n>.<ext>; rename-old moves the file there to that name. Entries that would land outside "
         "the folder are refused and named. One undo takes the whole unpack back."},
        {"ap unpack-all", "--rolling-stock|--scenarios",
         "rolling stock from every .ap in Assets, or scenarios from every .ap in Content", cmdUnpackAll},
        {"ap entries", "FILE [--filter MASK] [--json]", "the entries of an archive", cmdEntries, false,
         "Without options, a listing in the 7-Zip program's form. --json gives a list of {\"index\", \"name\", "
         "\"size\", \"packed\", \"modified\", \"folder\"}."},
        {"ap extract", "FILE [ENTRY...] --to DIR [--flat] [--mode M]",
         "extracts all entries, or the ones named, into DIR", cmdExtract},
        {"ap open", "FILE ENTRY [--xml OUT]", "an entry as text, a binary document converted to XML", cmdOpen},
        {"ap index", "[FOLDER]", "writes Data/AP-Index.csv: the .ap files below FOLDER (the install)", cmdIndex},
        {"ap route-properties", "FILE...",
         "RouteProperties.xml from the MainContent.ap beside each file, into its folder", cmdRouteProperties},
        {"ap route-names", "[--no-extract]",
         "RouteProperties.xml from every route archive, then a folder named after each route", cmdRouteNames},
        {"ap delete-folders", "FILE...",
         "moves the folders of the archives to the program's Deleted folder (asks; undo brings them back)",
         cmdDeleteFolders},
        {"route index", "", "writes Reports/RouteIndex.csv from every route's RouteProperties.xml", cmdRouteIndex},
        {"zip create", "OUT.zip PATH... [--level N] [--volume SIZE] [--wildcards W] [--no-subfolders] [--full-path]",
         "makes a zip archive, or parts of SIZE through 7-Zip", cmdZipCreate},
    };
}

} // namespace velmora::cli
