#pragma once
// Copies chosen parts of a folder tree into another folder, in the process: each file cloned
// where the file system can share its blocks (FICLONE on Linux: btrfs, XFS), else copied.
// The walk never follows a link to a folder and never opens anything but a regular file; what
// it leaves alone (a named pipe, a link that leads nowhere or round in a loop, an unreadable
// file) is named in the report, never silently dropped.

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velmora {
class UserInterface;
}

namespace velmora::backup {

namespace fs = std::filesystem;

// One part of the source: a folder below it with everything inside, or (empty `folder`) the
// files lying directly in the source itself, without its sub-folders.
struct TreePart {
    fs::path folder;
    bool recursive = true;
};

enum class CopyRule {
    All,        // every file, into a target folder that must be new or empty of those names
    NewerOnly,  // a file whose copy is missing, older or of another size; the rest stays
};

struct TreeCopyOptions {
    CopyRule rule = CopyRule::All;
    // Off to force plain copies (tests and the comparison in the benchmark).
    bool clone = true;
    // The room left on the target's file system; the system's answer when not set. Tests set it.
    std::function<std::optional<std::uint64_t>(const fs::path&)> freeSpace;
    // Files copied at once: 0 for one a core. With 1 the copy stops at the very next file on
    // Abort; otherwise Abort is seen a few times a second.
    int threads = 0;
};

struct TreeCopyReport {
    fs::path target;
    std::uint64_t planned = 0;   // files that were to be copied
    std::uint64_t copied = 0;    // of them, copied (cloned ones included)
    std::uint64_t cloned = 0;    // of them, sharing blocks with the original
    std::uint64_t unchanged = 0; // left as they were, their copy being up to date
    std::uint64_t bytes = 0;     // of the copied files
    // Refused before anything was copied: why. Empty when the copy ran.
    std::string refused;
    bool aborted = false;
    // One sentence each, naming the file: what was left alone and what failed.
    std::vector<std::string> problems;

    bool complete() const { return refused.empty() && !aborted && problems.empty(); }
};

// True when `inner` is `outer` or lies below it, by their real places (links resolved as far
// as the names exist).
bool isInside(const fs::path& inner, const fs::path& outer);

// Copies the parts of `source` into the same places below `target`. Refuses a target inside the
// source (the copy would copy itself) and a target without room for the files to copy, before
// copying anything. Progress and Abort through `ui` (may be null); an abort stops between
// files and leaves no partly written file.
TreeCopyReport copyTree(const fs::path& source, const std::vector<TreePart>& parts, const fs::path& target,
                        const TreeCopyOptions& options, UserInterface* ui);

// How one file is copied; exposed for tests. `replace` writes beside the target and renames
// over it, otherwise the target must not exist. The copy takes the source's modification time
// and permission bits. `cloned` says whether blocks are shared. Empty string on success, else
// the reason.
std::string copyFile(const fs::path& from, const fs::path& to, bool replace, bool clone, bool& cloned);

} // namespace velmora::backup
