#pragma once
// A package under construction: the files to copy into it (whole folders, or names matching a
// pattern in a folder and its sub-folders, as the copy lines of a package have always been) and
// the small text files that go beside them. Nothing is written until run(): it refuses a
// package inside the simulator's tree and one without room, then copies every file natively
// (cloned where the file system shares blocks) through the write service under one journal
// entry, so that one undo takes a package back, and lists the result in PackageContents.txt.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velmora {
class AppContext;
class UserInterface;
} // namespace velmora

namespace velmora::packaging {

namespace fs = std::filesystem;

inline constexpr const char* kManifestName = "PackageContents.txt";

struct ManifestRow {
    std::string path; // relative to the package folder, '/' between parts
    std::uint64_t size = 0;
    std::string sha256;
};

// What the package's blueprints come to: in the package, in a product left out on purpose
// (the default content every user has), missing at the source already, or nowhere.
struct PackageCheck {
    bool done = false;
    std::size_t inPackage = 0;
    std::vector<std::string> leftOut; // "Provider\Product" of the products left out, once each
    std::size_t leftOutItems = 0;
    std::vector<std::string> missingAtSource;
    std::vector<std::string> notInPackage; // the finding: used, installed at the source, not packed
    // A few lines for people.
    std::string text() const;
};

struct PackageReport {
    fs::path folder;     // <program folder or --to>\<PackageFolder>
    std::string refused; // why nothing was copied; empty when the package was made
    bool aborted = false;
    std::vector<std::string> copied;    // package-relative paths, in copy order
    std::vector<std::string> unchanged; // already in the package as they are
    std::vector<std::string> written;   // marker and text files written
    std::vector<std::string> leftOut;   // left out on purpose, with the reason
    std::vector<std::string> missing;   // what a copy line named that is not there
    std::vector<std::string> problems;  // unreadable files, links, pipes, failed writes
    std::vector<std::string> notes;     // parts of a package that are not on this machine
    std::uint64_t bytes = 0;
    std::vector<ManifestRow> manifest;
    PackageCheck check;
    fs::path zip;

    bool ok() const { return refused.empty() && !aborted; }
    // The summary in a few lines; the JSON form for scripts.
    std::string text() const;
    std::string json() const;
};

// One file that matched a copy line: where it comes from, where it goes below the package.
struct PlannedCopy {
    fs::path source;
    fs::path target; // relative to the package folder
    std::uint64_t size = 0;
};

class PackageBuilder {
public:
    PackageBuilder(AppContext& ctx, fs::path folder);

    const fs::path& folder() const { return m_folder; }

    // Every file below `source`, into `target` (relative) at the same places: the whole-folder
    // copy line. False when the folder is not there (named in missing).
    bool copyFolder(const fs::path& source, const fs::path& target);
    // Files whose names match `pattern` ('*' and '?', letter case ignored) in `folder` and its
    // sub-folders, into `target` at the same places below it: the pattern copy line. False when
    // nothing matched (named in missing).
    bool copyPattern(const fs::path& folder, const std::string& pattern, const fs::path& target);
    // One file under its own name in `target`. False when it is not there.
    bool copyFile(const fs::path& source, const fs::path& target);
    // One file under another name (`target` relative, with its name).
    bool copyFileAs(const fs::path& source, const fs::path& target);
    // A text file of the package, written as it stands.
    void writeText(const fs::path& target, std::string bytes);
    // Takes a planned copy back out (the reskin's unchanged files); a file already in the package
    // from an earlier run is removed from it when the package is made (kept as a backup).
    void drop(const fs::path& target);
    // A file the package should hold that is not there, or a thing left out: said in the report.
    void note(const std::string& text) { m_report.notes.push_back(text); }
    void leftOut(const std::string& text) { m_report.leftOut.push_back(text); }
    void missing(const std::string& text) { m_report.missing.push_back(text); }

    const std::vector<PlannedCopy>& planned() const { return m_copies; }
    std::uint64_t plannedBytes() const;

    // The free room of the file system the package goes to; the system's answer when not set.
    std::function<std::optional<std::uint64_t>(const fs::path&)> freeSpace;

    // Refusals, then the copies and the texts, then the manifest. Progress and Abort by `ui`.
    PackageReport run(const std::string& command, UserInterface* ui);

private:
    void add(const fs::path& source, const fs::path& target, std::uint64_t size);

    AppContext& m_ctx;
    fs::path m_folder;
    std::vector<PlannedCopy> m_copies;
    std::map<fs::path, std::size_t> m_byTarget;
    std::vector<std::pair<fs::path, std::string>> m_texts;
    std::vector<fs::path> m_dropped;
    PackageReport m_report;
    // Folder listings, read once however many lines name the same folder.
    struct Listing {
        std::vector<std::string> files, folders;
        bool ok = false;
    };
    const Listing& listing(const fs::path& folder);
    std::map<fs::path, Listing> m_listings;
};

// The regular files below a folder, relative, in name order. Links are never followed; what is
// left alone (links, pipes, devices, unreadable folders) is said in `problems`.
std::vector<fs::path> filesBelow(const fs::path& folder, std::vector<std::string>* problems = nullptr);

// Whether `name` matches a copy line's pattern: '*' any run, '?' one character, letter case
// ignored, "*.*" everything.
bool patternMatches(const std::string& name, const std::string& pattern);

// The manifest's text: a header and a CSV row a file (path, size, SHA-256), CR LF.
std::string manifestText(const std::vector<ManifestRow>& rows);

} // namespace velmora::packaging
