// Scenario.bin as text: opening a scenario, the consist pass, the item pass and the missing-stock
// marks of the item grid.

#include "velmora/scenarios/scenario.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/paths.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/xmltext.h"

#include <fstream>
#include <unordered_map>

namespace velmora::scenarios {

namespace {

constexpr std::size_t npos = std::string_view::npos;
const ScanSettings kExact{Match::Binary};

// The value of the first `tag` element at or after `from` (0-based) in `s`, or empty.
std::string valueAfter(std::string_view s, std::size_t from, std::string_view tag) {
    std::string value;
    std::size_t pos = from + 1;
    GetDetail(s, pos, tag, value, kExact);
    return pos ? value : std::string();
}

// The value of the last `tag` element of a vehicle's text that starts before `limit`, or empty.
// Tags are compared without regard to case ("IsPreLoaded" in the documents).
std::string lastInVehicle(std::string_view vehicle, std::string_view tag) {
    const std::size_t at = InStrRev(vehicle, tag, vehicle.size(), Match::Text);
    if (!at)
        return {};
    std::string value;
    std::size_t pos = at;
    const std::string name(tag.substr(1));
    GetDetail(vehicle, pos, name, value, {Match::Text});
    return pos ? value : std::string();
}

Reference referenceAt(std::string_view s, std::size_t from) {
    const BlueprintRef r = GetBlueprintRef(s, from + 1, kExact);
    return {r.provider, r.product, r.blueprintId};
}

// The item pass of one consist's slice.
bool readItems(std::string_view s, Consist& c, const fs::path& file, std::size_t index, std::string& error) {
    const std::size_t first = s.find("<Name");
    if (first == npos)
        return true;
    std::string startTime;
    if (const std::size_t at = s.find("<StartTime", first); at != npos)
        startTime = hhmm(valueAfter(s, at, "StartTime"));
    std::string destination = "Not Shown";
    if (const std::size_t at = s.find("FinalDestination"); at != npos)
        destination = DecodedChars(valueAfter(s, at, "DisplayName"));
    for (std::size_t p = s.find("<Name", first); p != npos; p = s.find("<Name", p + 10)) {
        std::size_t pos = p + 1;
        std::string name;
        GetDetail(s, pos, "Name", name, kExact);
        if (!pos)
            break;
        if (c.vehicles.size() == kMaxItems) {
            error = file.string() + ": consist " + std::to_string(index) + " holds more than " +
                    std::to_string(kMaxItems) + " items; the scenario cannot be opened.";
            return false;
        }
        Vehicle v;
        v.name = DecodedChars(name);
        const std::size_t bp = s.rfind("<BlueprintID>", p);
        if (bp != npos) {
            v.blueprint = referenceAt(s, bp);
            if (const std::size_t rk = s.find("<ReskinBlueprintID", bp); rk != npos && rk < p)
                v.reskin = referenceAt(s, rk);
        }
        // The vehicle's own text: from its <cOwnedEntity to its name.
        const std::size_t owned = s.rfind("<cOwnedEntity", p);
        const std::string_view vehicle = s.substr(owned == npos ? 0 : owned, p - (owned == npos ? 0 : owned));
        v.flipped = lastInVehicle(vehicle, "<Flipped");
        v.number = lastInVehicle(vehicle, "<UniqueNumber");
        v.preloaded = lastInVehicle(vehicle, "<IsPreloaded");
        v.loadable = vehicle.find("<InitialLevel/>") == npos;
        v.startTime = startTime;
        v.destination = destination;
        c.vehicles.push_back(std::move(v));
    }
    return true;
}

bool readWhole(const fs::path& file, std::string& bytes) {
    std::ifstream in(file, std::ios::binary);
    if (!in)
        return false;
    bytes.assign(std::istreambuf_iterator<char>(in), {});
    return !in.bad();
}

} // namespace

bool ScenarioDocument::anyMissing() const {
    for (const auto& c : consists)
        for (const auto& v : c.vehicles)
            if (v.missing)
                return true;
    return false;
}

std::vector<Consist> readConsists(const std::string& text, const fs::path& file, std::string& error, int* driven,
                                  const std::string& language) {
    std::vector<Consist> out;
    std::vector<std::size_t> ends{0};
    for (std::size_t at = text.find("</cConsist>"); at != npos; at = text.find("</cConsist>", at + 1))
        ends.push_back(at);
    if (driven)
        *driven = -1;
    const std::string_view all(text);
    for (std::size_t i = 0; i + 1 < ends.size(); ++i) {
        const std::string_view s = all.substr(ends[i], ends[i + 1] - ends[i]);
        Consist c;
        c.start = ends[i];
        if (const std::size_t at = s.find("<PlayerDriver"); at != npos) {
            if (valueAfter(s, at, "PlayerDriver") == "1") {
                c.playerDriver = "1";
                if (driven)
                    *driven = static_cast<int>(i);
            }
        }
        const std::size_t service = s.find("<ServiceName>");
        if (service != npos) {
            const std::size_t close = s.find("</ServiceName>", service);
            c.serviceName = DecodedChars(GetName(s.substr(0, close == npos ? s.size() : close), service + 1, language));
            if (const std::size_t dir = s.rfind("<_dir", service); dir != npos)
                c.dir = valueAfter(s, dir, "_dir");
        } else {
            c.serviceName = "Loose Consist";
        }
        if (const std::size_t at = s.find("<DriverEngineIndex"); at != npos)
            c.driverEngineIndex = valueAfter(s, at, "DriverEngineIndex");
        if (const std::size_t at = s.find("<ServiceClass"); at != npos)
            c.serviceClass = valueAfter(s, at, "ServiceClass");
        if (const std::size_t at = s.find("<FinalDestination>"); at != npos) {
            const std::size_t close = s.find("</FinalDestination>", at);
            c.realDestination = close != npos && close - at >= 251;
        }
        if (!readItems(s, c, file, i, error))
            return {};
        out.push_back(std::move(c));
    }
    return out;
}

std::string markMissing(AppContext& ctx, std::vector<Consist>& consists) {
    const fs::path assets = ctx.railWorks() / "Assets";
    std::unordered_map<std::string, bool> known;
    std::string report;
    auto exists = [&](const std::string& path) {
        for (const auto& c : splitDocumentPath(path))
            if (c == ".." || c == ".")
                return false; // never looked for outside Assets
        return ctx.resolver.exists(assets, path);
    };
    for (auto& c : consists)
        for (auto& v : c.vehicles) {
            if (v.name.empty())
                continue;
            std::string path = v.blueprint.provider + "\\" + v.blueprint.product + "\\" + v.blueprint.blueprintId;
            if (path.size() >= 3)
                path.replace(path.size() - 3, 3, "bin");
            v.path = path;
            auto [it, fresh] = known.try_emplace(path, false);
            if (fresh) {
                bool found = exists(path);
                if (!found) {
                    const std::string repaired = utf8FromDocument(DecodedChars(path));
                    found = repaired != path && exists(repaired);
                }
                it->second = !found;
            }
            v.missing = it->second;
            if (v.missing)
                report += (report.empty() ? "Missing items:-\n" : "") + path + "\n";
        }
    return report;
}

ScenarioDocument openScenario(AppContext& ctx, const fs::path& folder) {
    ScenarioDocument d;
    d.folder = folder;
    d.propertiesFile = ctx.resolver.resolve(folder, "ScenarioProperties.xml").value_or(folder / "ScenarioProperties.xml");
    d.scenarioFile = ctx.resolver.resolve(folder, "Scenario.bin").value_or(folder / "Scenario.bin");
    if (!fs::is_regular_file(d.propertiesFile)) {
        d.error = d.propertiesFile.string() + ": there is no such file; the scenario cannot be opened.";
        return d;
    }
    if (!readWhole(d.propertiesFile, d.propertiesText)) {
        d.error = d.propertiesFile.string() + ": cannot be read; the scenario cannot be opened.";
        return d;
    }
    if (d.propertiesText.find("eCareerScenarioClass") != std::string::npos)
        d.warnings.push_back(kCareerWarning);
    if (!fs::is_regular_file(d.scenarioFile)) {
        d.error = d.scenarioFile.string() + ": there is no such file; the scenario cannot be opened.";
        return d;
    }
    if (const ConvertResult r = binToXmlText(d.scenarioFile, d.scenarioText); !r) {
        d.error = r.message.find(d.scenarioFile.string()) == std::string::npos ? d.scenarioFile.string() + ": " + r.message
                                                                                 : r.message;
        d.scenarioText.clear();
        return d;
    }
    const std::string language = ctx.settings.language.empty() ? std::string("English") : ctx.settings.language;
    d.properties = readProperties(d.propertiesText, language, d.propertiesFile, d.error);
    if (!d.ok())
        return d;
    if (d.cls() == ScenarioClass::QuickDrive) {
        d.refused = true;
        d.warnings.push_back(kQuickDriveRefusal);
        return d;
    }
    d.weatherFolder = weatherFolder(ctx, d.properties.weather);
    if (!d.weatherFolder)
        d.warnings.push_back("The Weather folder for this scenario is missing\nMaybe it is packed in an .ap file? "
                             "Missing item:-\n" +
                             (ctx.railWorks() / "Assets" / d.properties.weather.provider / d.properties.weather.product /
                              "Weather")
                                 .string());
    d.consists = readConsists(d.scenarioText, d.scenarioFile, d.error, &d.drivenConsist, language);
    if (!d.ok())
        return d;
    if (d.consists.empty())
        d.warnings.push_back(d.scenarioFile.string() + ": holds no consists.");
    for (std::size_t i = 0; i < d.consists.size(); ++i)
        if (d.consists[i].vehicles.empty())
            d.warnings.push_back(d.scenarioFile.string() + ": consist " + std::to_string(i) + " (" +
                                 d.consists[i].serviceName + ") is an Empty Consist.");
    d.missingReport = markMissing(ctx, d.consists);
    return d;
}

} // namespace velmora::scenarios
