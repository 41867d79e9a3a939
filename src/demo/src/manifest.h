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

struct ManifestScenario {
    std::string folder, name, scenarioClass;
    bool hasProperties = true;
};

struct ManifestRoute {
    std::string folder, name;
    bool packed = false;
    std::vector<ManifestScenario> scenarios;
    std::vector<std::string> tiles; // root-relative
};

struct ManifestProduct {
    std::string provider, product;
    std::string archive; // product-level .ap, root-relative, or ""
};

struct Manifest {
    std::uint64_t seed = 0;
    int scale = 1;
    std::vector<ManifestProduct> products;
    std::vector<ManifestRoute> routes;
    std::vector<Fault> faults;
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
