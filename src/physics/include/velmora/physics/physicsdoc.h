#pragma once
// The two documents behind the physics grids: a rail vehicle's blueprint and the engine
// simulation it calls, each read whole as XML text (a .bin through the codec, an .xml as it
// stands), changed at the positions of its rows and written back through the write service,
// the old file kept as its numbered backup and the save one entry of the journal.

#include "velmora/physics/physicsrows.h"

#include <filesystem>
#include <string>
#include <vector>

namespace velmora {
class AppContext;
class PathResolver;
} // namespace velmora

namespace velmora::physics {

namespace fs = std::filesystem;

struct PhysicsDocument {
    fs::path file;       // the document on disk
    bool binary = true;  // a .bin (or any SERZ document); false for XML text
    std::string xml;     // the whole text, as changed so far
    bool changed = false;
    std::vector<PhysicsRow> rows;
};

// Reads a document whole. Returns what went wrong, naming the file; empty on success.
std::string openDocument(const fs::path& file, PhysicsDocument& doc);

// The simulation file a vehicle calls: its EngineSimulationContainer reference below
// <root>/Assets, as .bin (or .xml when only that is there). `missing` says what is missing
// when there is nothing to open.
struct SimulationLocation {
    std::string reference; // Provider\Product\BlueprintID as the blueprint holds it
    fs::path file;         // empty when missing
    std::string missing;
};
SimulationLocation simulationOf(const std::string& vehicleXml, const fs::path& railWorks, const PathResolver& resolver);

// "There is apparently no Engine Simulation file called by this .bin file"
std::string noSimulationMessage();

// Changes the value of `doc.rows[index]` (text typed in UTF-8) and marks the document changed.
// Returns what is wrong, empty on success; the document is unchanged on failure.
std::string setValue(PhysicsDocument& doc, std::size_t index, std::string_view typedUtf8);

struct SaveResult {
    bool ok = false;
    std::string message; // on failure: the file and what went wrong (the old file is whole)
    fs::path backup;     // the numbered backup made
};
// Writes the document back (encoded when binary), one journal entry named by `command`.
// The changed flag falls on success.
SaveResult saveDocument(AppContext& ctx, PhysicsDocument& doc, const std::string& command);

// The one way the physics documents are stored: encoded when binary, written through the write
// service (numbered backup) inside one journal entry named by `command`. Returns what went
// wrong, empty on success; on failure the old file is whole.
std::string writeBack(AppContext& ctx, const fs::path& file, bool binary, const std::string& xml,
                      const std::string& command, fs::path* backup = nullptr);

// A .dcsv table a simulation row names: the CsvFile value below <root>/Assets, its .csv ending
// read as .dcsv and .dcsv added when it has no ending; found in any letter case.
fs::path tableFile(const std::string& csvFileValue, const fs::path& railWorks, const PathResolver& resolver);

// Both grids of one vehicle, as frmPhysics and `velmora-cli physics` hold them.
struct PhysicsSet {
    PhysicsDocument vehicle;
    PhysicsDocument simulation; // file empty when the vehicle calls none
    SimulationLocation simLocation;
    SimKind kind = SimKind::DieselElectric;
    std::string simProblem; // why the second grid is empty (the missing file, unreadable, not a simulation)
};
// Opens the vehicle and, when it calls one, its simulation, read by `kind` or, when none is
// given, by simKindOf. Returns what is wrong with the vehicle itself (empty on success); a
// missing or unreadable simulation only fills `simProblem`.
std::string openPhysics(const fs::path& vehicleFile, const fs::path& railWorks, const PathResolver& resolver,
                        PhysicsSet& set, const SimKind* kind = nullptr);
// Reads the simulation rows again by another list (the steam one or the diesel one).
void readSimulationRows(PhysicsSet& set, SimKind kind);

} // namespace velmora::physics
