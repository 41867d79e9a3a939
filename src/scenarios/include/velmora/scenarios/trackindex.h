#pragma once
// The track index of a route: which tile each track ribbon of Networks\Tracks.bin lies in, so
// that a vehicle standing on a ribbon can be placed by tile. Built once from the track network
// and kept as <program folder>/Index/<route folder>.txt, a cache of the program's own: a header
// line, then "<ribbon id>\t<tile x>\t<tile z>" a ribbon.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>

namespace velmora {
class AppContext;
}

namespace velmora::scenarios {

namespace fs = std::filesystem;

struct Tile {
    long x = 0, z = 0;
};
// A tile as the simulator names its tile files: "+000000-000001".
std::string tileText(Tile tile);

struct TrackIndex {
    std::unordered_map<std::string, Tile> ribbons; // ribbon id, in lower case
    // The tile of a ribbon, by its id in any case.
    std::optional<Tile> tileOf(const std::string& ribbonId) const;
};

// <program folder>/Index/<route folder>.txt
fs::path trackIndexFile(const AppContext& ctx, const std::string& routeFolder);
// <route>/Networks/Tracks.bin, found without regard to case; the usual name when there is none.
fs::path tracksFile(const AppContext& ctx, const fs::path& route);

// Reads an index; nothing (and `error` naming the file) when it is missing or is no index.
std::optional<TrackIndex> readTrackIndex(const fs::path& indexFile, std::string* error = nullptr);

// Told how far the reading of the network has come; returning false stops the build.
using IndexProgress = std::function<bool(std::int64_t done, std::int64_t total)>;

struct IndexResult {
    bool ok = false;
    bool stopped = false;  // the progress call said stop: no index was written
    std::string message;   // what went wrong, naming the file
    TrackIndex index;
    explicit operator bool() const { return ok; }
};

// The ribbons of a decoded track network (Tracks.xml text), or nothing when stopped or when the
// text is no well-formed document (`error` says where).
std::optional<TrackIndex> indexOfNetwork(std::string_view xml, const IndexProgress& progress, std::string& error);

// Decodes the route's Tracks.bin in memory and writes the index (the folder made when missing).
// A Tracks.bin larger than `maxBytes`, unreadable or no document gives an error naming it and
// no index; so does a stop. The index is the program's own cache: written with no backup and
// not journalled.
IndexResult buildTrackIndex(AppContext& ctx, const fs::path& route, const fs::path& indexFile,
                            const IndexProgress& progress = {}, std::uint64_t maxBytes = 0);

} // namespace velmora::scenarios
