#pragma once
// Search and replace in many documents at once. Each document is decoded to its XML text, the
// search text replaced in that text (hits one past the previous one, as the preview's Replace
// All walks them), encoded again and stored under its own name with a numbered backup of the
// old file. A document the search text is not in is left alone: no write, no backup. The whole
// run is one journal entry, so one undo takes it back.
//
// The replacement goes into the XML text as typed: "&amp;" there stands for "&" in the
// document, and a bare "<" or "&" leaves text the encoder refuses; such a document is left as
// it was and named.

#include <QString>

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace velmora {

class AppContext;
class UserInterface;

// What the simulator's users know from a document that did not encode again.
inline constexpr const char* kNotRecompressed =
    "Serz.exe was unable to recompress this file. The operation could\n"
    "not be completed. The original file has not been altered.";

struct MultiReplaceOptions {
    std::string find;        // UTF-8, as typed; an empty one changes nothing
    std::string replacement; // UTF-8, as typed
    bool ignoreCase = true;  // the screen always ignores case
    bool dryRun = false;     // count the hits, write nothing
    int threads = 0;         // 0: one per core
    std::string command = "Replace in all selected files"; // the journal entry's name
};

struct FileReplace {
    enum class State { Unchanged, Changed, Unreadable, NotEncoded, NotWritten };
    std::filesystem::path file;
    State state = State::Unchanged;
    std::size_t count = 0;  // replacements made in it
    std::filesystem::path backup; // where the old file was kept, when written
    std::string message;    // for the failed states: what went wrong, naming the file
};

struct MultiReplaceResult {
    std::vector<FileReplace> files; // in the order given
    std::size_t changed = 0;        // documents written (or, dry, that would be)
    std::size_t replacements = 0;
    bool stopped = false; // Abort before anything took its name: nothing did
    std::string error;    // a failure that stopped the run; what it had written was put back
    bool anyFailed() const;
};

// Replaces `find` by `replacement` in a document's XML text, kept in its own form (UTF-8, or
// one byte a character). Returns the number of replacements.
std::size_t replaceInDocumentText(std::string& xml, const QString& find, const QString& replacement, bool ignoreCase);

MultiReplaceResult replaceInFiles(AppContext& ctx, const std::vector<std::filesystem::path>& files,
                                  const MultiReplaceOptions& options, UserInterface* ui);

// Save Selected as XML: `folder` (the program's own scratch folder) emptied and made again, then
// each document's XML text saved in it as <name>.xml. Returns the problems, one sentence a
// document that could not be read or saved.
std::vector<std::string> saveAsXml(const std::vector<std::filesystem::path>& files, const std::filesystem::path& folder,
                                   UserInterface* ui);

// One line a document changed with its count, then the documents that failed with the reason.
std::string describe(const MultiReplaceResult& result, bool dryRun = false);

} // namespace velmora
