#pragma once
// DIR/manifest.json: what the install holds and every deliberate fault in it, with where it is
// and what a correct check reports. Later checks are tested against it, so its form is stable:
// fixed key order, paths relative to the root with '/' separators, no time stamps.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace velmora::demo {

struct Fault {
    std::string kind;         // e.g. "missing-blueprint"; the README lists them
    std::string check;        // the check that must find it: "route", "textures", "audio", ...
    std::string path;         // the file concerned, relative to the root
    std::string referencedBy; // the document that names it, or ""
    std::string reference;    // the value as the document holds it, or ""
    std::vector<std::string> routes; // route folders whose check reports it
    std::string expect;       // what a correct check reports
    std::vector<std::pair<std::string, std::string>> details; // extra facts, e.g. the texture code
};

// A vehicle of a scenario's consist as the documents hold it: blueprints as written (backslashes,
// ending in ".xml"); the reskin's three parts are empty when the vehicle is not a reskin.
struct ManifestVehicle {
    std::string name, provider, product, blueprint;
    std::string reskinProvider, reskinProduct, reskinBlueprint;
    bool flipped = false;
    std::string number;
    bool preloaded = false;
    bool missing = false; // no blueprint of that name below Assets
};

struct ManifestConsist {
    std::string service; // "" for a loose consist
    bool playerDriven = false;
    double startTime = 0; // seconds after midnight
    std::string destination;
    std::vector<ManifestVehicle> vehicles;
};

struct ManifestScenario {
    std::string folder, name, scenarioClass;
    bool hasProperties = true;
    double startTime = 0; // seconds after midnight
    std::string season;
    std::string weatherProvider, weatherProduct, weatherBlueprint;
    bool weatherFolder = true; // Assets/<provider>/<product>/Weather (or Environment/Weather) exists
    std::string startLocation;
    std::string save;     // "CurrentSave.bin" when the scenario has a saved copy, else ""
    bool saveHash = false; // the save has its .MD5 companion
    std::vector<ManifestConsist> consists;
};

// A consist of Content/ConsistTemplates.bin: its English name and vehicles front to back (only
// provider, product, blueprint as written, flipped and missing are set).
struct ManifestSavedConsist {
    std::string name;
    std::vector<ManifestVehicle> vehicles;
};

struct ManifestRoute {
    std::string folder, name;
    bool packed = false;
    std::vector<ManifestScenario> scenarios;
    std::vector<std::string> tiles; // root-relative
    std::string archive;                  // the route's MainContent.ap, root-relative, or ""
    std::vector<std::string> archiveOnly; // of a route partly unpacked: files only in the archive
};

// An .ap file: what it holds and how the archive table rates it ("Unpacked" when the folders
// that unpacking makes lie beside it, else "Not unpacked").
struct ManifestArchive {
    std::string path;  // root-relative
    std::string kind;  // "assets", "route" (a MainContent.ap) or "scenarios"
    std::string state; // "Unpacked" or "Not unpacked"
    std::size_t entries = 0;
    bool readable = true; // false for the damaged one
    std::string route;    // the route folder of a route's or a scenario pack's archive
    std::vector<ManifestScenario> scenarios; // the scenarios packed in it
};

struct ManifestProduct {
    std::string provider, product;
    std::string archive; // product-level .ap, root-relative, or ""
};

// A Quick Drive consist or fragment and what it names, blueprints as the document writes them.
struct ManifestQdEntry {
    std::string provider, product, blueprint;
    bool flipped = false;
    bool missing = false; // no blueprint of that path below Assets
};
struct ManifestQuickDrive {
    std::string path; // root-relative
    std::string kind; // "consist" or "fragment"
    std::string name;
    std::vector<ManifestQdEntry> entries;
};

struct Manifest {
    std::uint64_t seed = 0;
    int scale = 1;
    std::vector<ManifestProduct> products;
    std::vector<ManifestRoute> routes;
    std::vector<ManifestArchive> archives;
    std::vector<ManifestSavedConsist> savedConsists;
    std::vector<Fault> faults;
    std::vector<ManifestQuickDrive> quickDrive;
    std::vector<std::pair<std::string, std::size_t>> counts;

    Fault& add(Fault f) {
        faults.push_back(std::move(f));
        return faults.back();
    }
    std::string json() const;
};

Fault makeFault(std::string kind, std::string check, std::string path, std::string referencedBy, std::string reference,
                std::string expect, std::vector<std::string> routes = {});

std::string jsonString(const std::string& text);

} // namespace velmora::demo
