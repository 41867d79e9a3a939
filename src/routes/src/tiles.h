#pragma once
// What the route check and the route's item lists share: the tiles of a route in the check's
// order, the line-wise reading of a reference, and finding a file below Assets by its name as
// written or as repaired.

#include "velmora/core/xmltext.h"
#include "velmora/routes/routecheck.h"

#include <filesystem>
#include <string>
#include <vector>

namespace velmora::routes::detail {

inline const ScanSettings kBinary{Match::Binary};

// InStr over document text, ignoring case; 1-based, 0 when absent.
inline std::size_t find(std::string_view text, std::string_view what, std::size_t from = 1) {
    return InStr(from, text, what, Match::Text);
}

// The .bin files of a folder (not its sub-folders), in name order without regard to case: regular
// files only, so that a FIFO never blocks a reader. A folder that cannot be read is added to
// `unreadable` as "<folder>: <reason>".
std::vector<fs::path> binFiles(const fs::path& folder, std::vector<std::string>* unreadable = nullptr);

// The value of a line between its first ">" and the next "<"; false when there is none.
bool lineValue(const std::string& line, std::string& value);

// A BlueprintID's .xml ending made .bin.
std::string binOf(const std::string& id);

// A reference as the tiles hold it.
struct Triple {
    std::string provider, product, id;
    std::string bin() const { return provider + "\\" + product + "\\" + binOf(id); }
};
Triple readTriple(const std::string& xml, std::size_t pos);

struct TileJob {
    fs::path file;
    std::string label; // "(Scenery Item)", "(Loft Item)", "(Road Item)", "(Track Item)"
};
// The tiles the check reads, in its order: Scenery, Networks\Loft Tiles, Networks\Road Tiles,
// Networks (Tracks.bin), then each scenario's own Scenery.
std::vector<TileJob> routeTiles(AppContext& ctx, const RouteEntry& route, const std::vector<ScenarioEntry>& scenarios,
                                std::vector<std::string>* unreadable = nullptr);

// Files below Assets, found by their name as written or as repaired.
class AssetFiles {
public:
    explicit AssetFiles(AppContext& ctx);
    bool exists(const std::string& relative, fs::path* real = nullptr) const;
    // The full path as written, for reports.
    std::string display(const std::string& relative) const;
    // Back from display() to the backslash path below Assets.
    std::string relative(const std::string& shown) const;
    const fs::path& root() const { return m_assets; }
    AppContext& ctx() const { return m_ctx; }

private:
    AppContext& m_ctx;
    fs::path m_assets;
};

// The warning for a reference whose Provider (or else Product) line is broken.
std::string referenceWarning(bool provider, const std::string& label, const fs::path& tile);

// The references of a tile, read line by line: a line with "<Provider", the next with the
// Product, the BlueprintID three lines on. References without an id are left out, and so are
// all-empty ones (a reskin slot left unused). An empty Provider or a broken Product line sets
// `warning` and ends the reading.
std::vector<Triple> tileReferences(const std::string& xml, const std::string& label, const fs::path& tile,
                                   std::string& warning);

// A reference as the check records it.
struct Ref {
    std::string path; // below Assets, backslashes
    bool found = false;
    bool inTransfer = false; // held by a transfer point: used only when found
    std::string real;        // the file that answered, when found
};

struct TileScan {
    std::vector<Ref> refs; // in the order the tile names them
    std::string warning;
    std::string error; // the codec's refusal of the tile, naming it
};

// One tile as the check reads it: its references, each transfer point's contents before the
// point itself.
TileScan scanTile(const AssetFiles& files, const fs::path& file, const std::string& label);

} // namespace velmora::routes::detail
