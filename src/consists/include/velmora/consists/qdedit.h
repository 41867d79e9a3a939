#pragma once
// Editing a Quick Drive consist in place: its names, era, consist type, drivable flag and the
// routes on which it may run as AI traffic. The whole new document is encoded before the old
// one is touched; the write keeps a numbered backup and is one journal entry.

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velmora {
class AppContext;
}

namespace velmora::consists {

namespace fs = std::filesystem;

// The program's words.
extern const char* const kQdModified;     // "File has been modified."
extern const char* const kQdDrivableBad;  // "Drivable Consist must be either" / "eTrue or eFalse, ..."
extern const char* const kQdNotAConsist;  // fragments and other documents are refused
extern const char* const kQdEditCommand;  // the journal's name for an edit

// What to change; values left empty stay as they are. Texts are UTF-8 as typed.
struct QdChanges {
    std::optional<std::string> displayName, locoName;
    std::optional<long> eraStart, eraEnd;
    std::optional<std::string> consistType; // "Consist Type Freight Coal" or "eConsistTypeFreightCoal"
    std::optional<std::string> drivable;    // "True", "False", "eTrue" or "eFalse"
    std::optional<std::vector<std::string>> routes; // route GUIDs, the whole new list
};

// "eTrue"/"eFalse" for the four spellings the screen accepts, else nothing.
std::optional<std::string> drivableValue(const std::string& typed);
// A stored type (the types and their stored form: consistTypes, consistTypeValue in qdbuild.h) as the list shows it: "eConsistTypeFreightCoal" becomes "Consist Type Freight
// Coal"; a type the list lacks comes back as it is.
std::string consistTypeCaption(const std::string& stored);

// The element of a route new to the list, made from its id.
using RouteElement = std::function<std::string(const std::string& route)>;

// The changed text; false with `error` when a value is refused or the document is not a
// consist. Routes already listed keep their elements; a new one is made by `newRoute`.
bool applyQdChanges(std::string& xml, const QdChanges& changes, std::string& error, const RouteElement& newRoute = {});

struct QdEditResult {
    bool ok = false;
    std::string message; // kQdModified, or what went wrong naming the file
    fs::path backup;
    explicit operator bool() const { return ok; }
};
QdEditResult editQuickDrive(AppContext& ctx, const fs::path& file, const QdChanges& changes);

} // namespace velmora::consists
