#pragma once
// Quick Drive documents below Assets: consists (cConsistBlueprint) and fragments
// (cConsistFragmentBlueprint) kept in the PreLoad folders of products. The walk finds them,
// reads each on all cores, and says what each names and which of those are not there.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {
class AppContext;
class UserInterface;
} // namespace velmora

namespace velmora::consists {

namespace fs = std::filesystem;

enum class QdKind { Consist, Fragment };
const char* qdKindName(QdKind kind); // "consist" or "fragment"

// One vehicle or fragment a document names, as the document writes it.
struct QdEntry {
    std::string provider, product, blueprint;
    bool flipped = false;
    bool missing = false; // no .bin of that path below Assets, even after the text repair
};

struct QdDocument {
    fs::path file;
    std::string path; // relative to the simulator root with '/', or the full path outside it
    QdKind kind = QdKind::Consist;
    std::string name;      // consist: the display name; fragment: its name (or display name)
    std::string locoName;  // consists only
    std::string engineType;
    long eraStart = 0, eraEnd = 0;
    bool drivable = false;
    std::string consistType;
    std::vector<std::string> routes; // the routes on which it may run as AI traffic
    std::vector<QdEntry> entries;
    std::size_t missingCount() const;
};

// Reads decoded document text. False when it is neither kind of Quick Drive document. Entries
// are not tested here.
bool parseQuickDrive(std::string_view xml, QdDocument& doc);

// Whether a file's path makes it a candidate: below a PreLoad folder, ending in ".bin".
bool isQuickDrivePath(std::string_view path);

struct QdListing {
    std::vector<QdDocument> documents; // in walk order
    // "<file>: <reason>" for each document that could not be decoded, and each folder that
    // could not be read.
    std::vector<std::string> unreadable;
    long tested = 0;
    bool stopped = false; // Abort was pressed; the lists are incomplete
    std::size_t missingCount() const;
};

// The walk of `folder` (normally <root>/Assets) for Quick Drive documents. `threads` 0 means
// one per core. Links to folders are not followed; what cannot be read is named and the walk
// goes on.
QdListing checkQuickDrive(AppContext& ctx, const fs::path& folder, int threads, UserInterface* ui);

// The heading of the report of what is missing.
extern const char* const kQdMissingHeading;
// The report: the heading and one line per missing entry, "<document>: provider\product\path".
std::string qdMissingReport(const QdListing& listing);

// The grid of the check screen, in UTF-8. The checks give a row for each entry of each document
// of their kind (entries below a Simulation folder give none; a document without entries one
// row); List All gives a row for each consist with the number of missing entries.
enum class QdView { Consists, Fragments, AllConsists };
const std::vector<std::string>& qdGridHeader();
constexpr int kQdDocumentColumn = 0;
constexpr int kQdStatusColumn = 10;
extern const char* const kQdMissingWord; // "missing", in the status column
std::vector<std::vector<std::string>> qdGridRows(const QdListing& listing, QdView view);

} // namespace velmora::consists
