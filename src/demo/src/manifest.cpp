#include "manifest.h"

#include "velmora/core/services.h"


namespace velmora::demo {

std::string jsonString(const std::string& text) { return jsonQuoted(text); }

Fault makeFault(std::string kind, std::string check, std::string path, std::string referencedBy, std::string reference,
                std::string expect, std::vector<std::string> routes) {
    Fault f;
    f.kind = std::move(kind);
    f.check = std::move(check);
    f.path = std::move(path);
    f.referencedBy = std::move(referencedBy);
    f.reference = std::move(reference);
    f.expect = std::move(expect);
    f.routes = std::move(routes);
    return f;
}

namespace {

std::string stringArray(const std::vector<std::string>& items, const std::string& indent) {
    if (items.empty())
        return "[]";
    std::string out = "[\n";
    for (std::size_t i = 0; i < items.size(); ++i)
        out += indent + "  " + jsonString(items[i]) + (i + 1 < items.size() ? ",\n" : "\n");
    return out + indent + "]";
}

std::string boolText(bool b) { return b ? "true" : "false"; }

std::string number(double value) {
    std::string text = std::to_string(value);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.')
        text.pop_back();
    return text;
}

std::string vehicleJson(const ManifestVehicle& v) {
    std::string o = "{\"name\": " + jsonString(v.name) + ", \"provider\": " + jsonString(v.provider) +
                    ", \"product\": " + jsonString(v.product) + ", \"blueprint\": " + jsonString(v.blueprint) +
                    ", \"reskin\": ";
    o += v.reskinBlueprint.empty() ? std::string("null")
                                   : "{\"provider\": " + jsonString(v.reskinProvider) + ", \"product\": " +
                                         jsonString(v.reskinProduct) + ", \"blueprint\": " + jsonString(v.reskinBlueprint) + "}";
    return o + ", \"flipped\": " + boolText(v.flipped) + ", \"number\": " + jsonString(v.number) +
           ", \"preloaded\": " + boolText(v.preloaded) + ", \"missing\": " + boolText(v.missing) + "}";
}

// One scenario on a few lines: what it is, then each consist with its vehicles.
std::string scenarioJson(const ManifestScenario& s) {
    const std::string in = "          ";
    std::string o = "{\"folder\": " + jsonString(s.folder) + ", \"name\": " + jsonString(s.name) +
                    ", \"class\": " + jsonString(s.scenarioClass) + ", \"properties\": " + boolText(s.hasProperties);
    if (!s.hasProperties)
        return o + "}";
    o += ",\n" + in + "\"startTime\": " + number(s.startTime) + ", \"season\": " + jsonString(s.season) +
         ", \"startLocation\": " + jsonString(s.startLocation) + ",\n" + in + "\"weather\": {\"provider\": " +
         jsonString(s.weatherProvider) + ", \"product\": " + jsonString(s.weatherProduct) + ", \"blueprint\": " +
         jsonString(s.weatherBlueprint) + ", \"folderExists\": " + boolText(s.weatherFolder) + "},\n" + in +
         "\"save\": " +
         (s.save.empty() ? std::string("null")
                         : "{\"file\": " + jsonString(s.save) + ", \"md5\": " + boolText(s.saveHash) + "}") +
         ",\n" + in + "\"consists\": [";
    for (std::size_t i = 0; i < s.consists.size(); ++i) {
        const auto& c = s.consists[i];
        o += std::string(i ? "," : "") + "\n" + in + "  {\"index\": " + std::to_string(i) + ", \"service\": " +
             jsonString(c.service) + ", \"playerDriven\": " + boolText(c.playerDriven) + ", \"startTime\": " +
             number(c.startTime) + ", \"destination\": " + jsonString(c.destination) + ", \"vehicles\": [";
        for (std::size_t k = 0; k < c.vehicles.size(); ++k)
            o += std::string(k ? "," : "") + "\n" + in + "    " + vehicleJson(c.vehicles[k]);
        o += "]}";
    }
    return o + "]}";
}

} // namespace

std::string Manifest::json() const {
    std::string o = "{\n";
    o += "  \"format\": \"velmora-demo-manifest\",\n";
    o += "  \"version\": 1,\n";
    o += "  \"seed\": " + std::to_string(seed) + ",\n";
    o += "  \"scale\": " + std::to_string(scale) + ",\n";
    o += "  \"counts\": {";
    for (std::size_t i = 0; i < counts.size(); ++i)
        o += (i ? ", " : "") + jsonString(counts[i].first) + ": " + std::to_string(counts[i].second);
    o += "},\n";

    o += "  \"products\": [\n";
    for (std::size_t i = 0; i < products.size(); ++i) {
        const auto& p = products[i];
        o += "    {\"provider\": " + jsonString(p.provider) + ", \"product\": " + jsonString(p.product) +
             ", \"archive\": " + jsonString(p.archive) + "}" + (i + 1 < products.size() ? ",\n" : "\n");
    }
    o += "  ],\n";

    o += "  \"routes\": [\n";
    for (std::size_t i = 0; i < routes.size(); ++i) {
        const auto& r = routes[i];
        o += "    {\n      \"folder\": " + jsonString(r.folder) + ",\n      \"name\": " + jsonString(r.name) +
             ",\n      \"packed\": " + (r.packed ? "true" : "false") + ",\n      \"scenarios\": [";
        for (std::size_t j = 0; j < r.scenarios.size(); ++j)
            o += std::string(j ? "," : "") + "\n        " + scenarioJson(r.scenarios[j]);
        o += r.scenarios.empty() ? "],\n" : "\n      ],\n";
        o += "      \"tiles\": " + stringArray(r.tiles, "      ") + ",\n";
        o += "      \"archive\": " + jsonString(r.archive) + ",\n";
        o += "      \"archiveOnly\": " + stringArray(r.archiveOnly, "      ") + "\n    }" +
             (i + 1 < routes.size() ? ",\n" : "\n");
    }
    o += "  ],\n";

    o += "  \"archives\": [\n";
    for (std::size_t i = 0; i < archives.size(); ++i) {
        const auto& a = archives[i];
        o += "    {\"path\": " + jsonString(a.path) + ", \"kind\": " + jsonString(a.kind) + ", \"state\": " +
             jsonString(a.state) + ", \"entries\": " + std::to_string(a.entries) + ", \"readable\": " +
             boolText(a.readable) + ", \"route\": " + jsonString(a.route) + ", \"scenarios\": [";
        for (std::size_t j = 0; j < a.scenarios.size(); ++j)
            o += std::string(j ? "," : "") + "\n        " + scenarioJson(a.scenarios[j]);
        o += std::string(a.scenarios.empty() ? "]}" : "\n      ]}") + (i + 1 < archives.size() ? ",\n" : "\n");
    }
    o += "  ],\n";

    o += "  \"savedConsists\": [";
    for (std::size_t i = 0; i < savedConsists.size(); ++i) {
        const auto& c = savedConsists[i];
        o += std::string(i ? "," : "") + "\n    {\"name\": " + jsonString(c.name) + ", \"vehicles\": [";
        for (std::size_t k = 0; k < c.vehicles.size(); ++k)
            o += std::string(k ? "," : "") + "\n      " + vehicleJson(c.vehicles[k]);
        o += "]}";
    }
    o += savedConsists.empty() ? "],\n" : "\n  ],\n";
    o += "  \"quickDrive\": [\n";
    for (std::size_t i = 0; i < quickDrive.size(); ++i) {
        const auto& q = quickDrive[i];
        o += "    {\"path\": " + jsonString(q.path) + ", \"kind\": " + jsonString(q.kind) + ", \"name\": " +
             jsonString(q.name) + ", \"entries\": [";
        for (std::size_t k = 0; k < q.entries.size(); ++k) {
            const auto& e = q.entries[k];
            o += std::string(k ? ", " : "") + "{\"provider\": " + jsonString(e.provider) + ", \"product\": " +
                 jsonString(e.product) + ", \"blueprint\": " + jsonString(e.blueprint) + ", \"flipped\": " +
                 boolText(e.flipped) + ", \"missing\": " + boolText(e.missing) + "}";
        }
        o += std::string("]}") + (i + 1 < quickDrive.size() ? ",\n" : "\n");
    }
    o += "  ],\n";

    o += "  \"faults\": [\n";
    for (std::size_t i = 0; i < faults.size(); ++i) {
        const Fault& f = faults[i];
        o += "    {\n";
        o += "      \"id\": " + std::to_string(i + 1) + ",\n";
        o += "      \"kind\": " + jsonString(f.kind) + ",\n";
        o += "      \"check\": " + jsonString(f.check) + ",\n";
        o += "      \"path\": " + jsonString(f.path) + ",\n";
        o += "      \"referencedBy\": " + jsonString(f.referencedBy) + ",\n";
        o += "      \"reference\": " + jsonString(f.reference) + ",\n";
        o += "      \"routes\": " + stringArray(f.routes, "      ") + ",\n";
        o += "      \"details\": {";
        for (std::size_t j = 0; j < f.details.size(); ++j)
            o += (j ? ", " : "") + jsonString(f.details[j].first) + ": " + jsonString(f.details[j].second);
        o += "},\n";
        o += "      \"expect\": " + jsonString(f.expect) + "\n";
        o += "    }" + std::string(i + 1 < faults.size() ? ",\n" : "\n");
    }
    o += "  ]\n}\n";
    return o;
}

} // namespace velmora::demo
