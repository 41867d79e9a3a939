#pragma once
// Edits of a whole route or scenario: raising or lowering the track network, its speed limits,
// cloning a route or a scenario under a new identity, deleting routes and scenarios (moved to
// the program's Deleted folder, so that an undo brings them back), and blanking the terrain mix
// maps. Every edit writes through the write service as one journal entry; an edit over many
// files makes them all ready first and puts none in place when one of them fails.

#include "velmora/routes/routes.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace velmora {
class AppContext;
}

namespace velmora::routes {

namespace fs = std::filesystem;

// What an edit did, or with a dry run would do.
struct EditReport {
    bool ok = false;
    bool aborted = false;
    std::string message;            // the failure, naming the file; or the closing message
    std::vector<std::string> lines; // file by file: what changed, with counts
    std::vector<std::string> warnings;
    std::vector<fs::path> files; // the files written (or that would be)
    std::size_t count = 0;       // the elements changed
    std::string made;            // the folder a clone was made as
};

// ---- The track network (Networks\Tracks.bin)

struct TrackAdjust {
    double track = 0;                 // metres added to every _height of the ribbons
    std::optional<double> trackside;  // metres added to every Height of the objects on the track
    bool dryRun = false;
};

// The document text with every _height raised by `track` and, when given, every "<Height d:"
// by `trackside`, each written with four decimals. A value that is no number stops it: `error`
// names `label`, the line and the text, and the result is empty. `heights` and `objects` count;
// `elements`, when given, gets a line for each value changed, old and new.
std::string adjustTrackHeights(const std::string& xml, const TrackAdjust& adjust, const std::string& label,
                               std::size_t& heights, std::size_t& objects, std::string& error,
                               std::vector<std::string>* elements = nullptr);
EditReport raiseTrack(AppContext& ctx, const RouteEntry& route, const TrackAdjust& adjust);

struct SpeedLimits {
    std::string primary;   // the value set as Primary of every Network-iTrackNetworkSpeedLimit
    std::string secondary; // and as Secondary
    bool dryRun = false;
};
// The document text with the limits set; `count` the limits changed.
std::string setSpeedLimitsText(const std::string& xml, const SpeedLimits& limits, std::size_t& count);
EditReport setSpeedLimits(AppContext& ctx, const RouteEntry& route, const SpeedLimits& limits);

// ---- New identities

struct Identity {
    std::string text; // lower case, 8-4-4-4-12
    std::uint64_t a = 0, b = 0; // its 16 bytes as the documents store them, two little-endian halves
};
Identity newIdentity();
// The identity of a GUID text; nothing when the text is no GUID.
std::optional<Identity> identityOf(const std::string& text);

// The properties text with its first <UUID> set to `id` and the DisplayName's English, French,
// Italian, German and Spanish set to `name` (document text, repaired) and its Key to the id.
// False when the text has no UUID.
bool setIdentity(std::string& text, const Identity& id, const std::string& name);

// ---- Clones

struct CloneOptions {
    std::string name;             // the new display name, as typed (UTF-8)
    std::optional<fs::path> parent; // the folder the clone goes in; the routes folder when empty
    bool careerToStandard = false;  // a career scenario's clone becomes a standard one
    bool workshopToStandard = false; // a workshop scenario's clone gets WorkshopId 0
    bool dryRun = false;
};
EditReport cloneRoute(AppContext& ctx, const RouteEntry& route, const CloneOptions& options);
EditReport cloneScenario(AppContext& ctx, const RouteEntry& route, const ScenarioEntry& scenario,
                         const CloneOptions& options);
// What a scenario's ScenarioProperties.xml says of its class, for the clone's questions.
struct ScenarioKind {
    bool career = false;
    bool workshop = false;
};
ScenarioKind scenarioKind(AppContext& ctx, const RouteEntry& route, const ScenarioEntry& scenario);

// ---- Deletion

// The folder below the program's own where a deletion now keeps what it takes away.
fs::path deletedFolder(AppContext& ctx);
// `permanently` removes the files for good, with no journal entry; otherwise they are moved to
// deletedFolder() and one undo brings them back.
EditReport deleteRoute(AppContext& ctx, const RouteEntry& route, bool permanently, bool dryRun);
EditReport deleteScenarios(AppContext& ctx, const RouteEntry& route, const std::vector<ScenarioEntry>& scenarios,
                           bool permanently, bool dryRun);

// ---- Terrain mix maps

// The files of the route's MixMap folder, in name order.
std::vector<fs::path> mixMapFiles(AppContext& ctx, const RouteEntry& route);
// The text kept before a mix map's first blob with the blank template behind it, sized for the
// level before it. Empty, with `error`, when the document has no blob or no readable level.
std::string blankMixMapText(const std::string& xml, const std::string& blankTemplate, std::string& error);
// Blanks the files (all of the route's when `files` is empty; names below MixMap otherwise).
EditReport blankTerrain(AppContext& ctx, const RouteEntry& route, const std::vector<std::string>& files, bool dryRun);

} // namespace velmora::routes
