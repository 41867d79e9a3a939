#include "velmora/scenarios/consistedit.h"

#include "velmora/scenarios/consistfields.h"
#include "velmora/core/xmltext.h"

#include <cstdio>
#include <random>

namespace velmora::scenarios {

const char* const kEditNote = "Your Scenario information will be updated once you save changes.";
const char* const kDriverNote = "Your Scenario Driver information will be updated once you save changes.";
const char* const kSecondDeletion = "You have already deleted one consist, no more\ncan be deleted until you save the changes.";

namespace {

const ScanSettings kExact{};

std::string noVehicle(const char* what) { return std::string("You have not selected an item to ") + what + "?"; }

// Runs `edit` on the text of one vehicle, then puts the vehicle back.
template <typename Edit> std::string onVehicle(ScenarioDocument& doc, int consist, int vehicle, Edit edit) {
    const auto span = vehicleSpan(doc, consist, vehicle);
    if (!span)
        return doc.scenarioFile.string() + ": there is no vehicle " + std::to_string(vehicle) + " in consist " +
               std::to_string(consist) + ".";
    std::string text = doc.scenarioText.substr(span->first, span->second - span->first);
    const std::string refused = edit(text);
    if (!refused.empty())
        return refused;
    doc.scenarioText.replace(span->first, span->second - span->first, text);
    return {};
}

// The value of the first `tag` element of `text`, and its replacement.
std::string valueOf(const std::string& text, std::string_view tag) {
    std::string value;
    std::size_t pos = 1;
    GetDetail(text, pos, tag, value, kExact);
    return pos ? value : std::string();
}

bool put(std::string& text, std::string_view tag, const std::string& value, std::size_t from = 1) {
    std::size_t pos = from;
    PutDetail(text, pos, tag, value, kExact);
    return pos != 0;
}

double standardFraction() {
    static std::mt19937_64 generator(std::random_device{}());
    return std::uniform_real_distribution<double>(0.0, 1.0)(generator);
}

bool validConsist(const ScenarioDocument& doc, int consist) {
    return consist >= 0 && consist < static_cast<int>(doc.consists.size());
}

std::pair<std::size_t, std::size_t> sliceOf(const ScenarioDocument& doc, int consist) {
    const auto i = static_cast<std::size_t>(consist);
    const std::size_t end = i + 1 < doc.consists.size() ? doc.consists[i + 1].start : doc.scenarioText.size();
    return {doc.consists[i].start, end};
}

} // namespace

std::string changeNumbers(ScenarioDocument& doc, int consist, const std::vector<int>& vehicles, std::string number,
                          const std::function<double()>& randomFraction) {
    if (vehicles.empty())
        return noVehicle("renumber");
    const auto fraction = randomFraction ? randomFraction : std::function<double()>(standardFraction);
    for (int v : vehicles) {
        if (const std::string refused = onVehicle(doc, consist, v, [&](std::string& text) {
                const std::size_t at = text.find("<UniqueNumber");
                if (!number.empty() && at != std::string::npos)
                    put(text, "UniqueNumber", number, at > 100 ? at - 100 + 1 : 1);
                return std::string();
            });
            !refused.empty())
            return refused;
        // The next vehicle's number: the last three characters made new, so the numbers stay related.
        char tail[16];
        std::snprintf(tail, sizeof tail, "%03d", static_cast<int>(999 * fraction()) + 2);
        number = (number.size() >= 3 ? number.substr(0, number.size() - 3) : std::string()) + tail;
    }
    rereadTables(doc);
    return {};
}

std::string duplicateVehicle(ScenarioDocument& doc, int consist, int vehicle) {
    const auto span = vehicleSpan(doc, consist, vehicle);
    if (!span)
        return noVehicle("duplicate");
    std::string copy = doc.scenarioText.substr(span->first, span->second - span->first);
    if (copy.find("<UniqueNumber") != std::string::npos) {
        // Read as a number the way the old editor read it: blanks inside do not count ("66 958").
        std::string digits;
        for (char c : valueOf(copy, "UniqueNumber"))
            if (c != ' ' && c != '\t')
                digits += c;
        const double value = std::strtod(digits.c_str(), nullptr);
        char sum[32];
        std::snprintf(sum, sizeof sum, "%.15g", value + 3);
        put(copy, "UniqueNumber", sum);
    }
    doc.scenarioText.insert(span->second, copy);
    rereadTables(doc);
    return {};
}

std::string deleteVehicle(ScenarioDocument& doc, int consist, int vehicle) {
    const auto span = vehicleSpan(doc, consist, vehicle);
    if (!span)
        return noVehicle("delete");
    doc.scenarioText.erase(span->first, span->second - span->first);
    rereadTables(doc);
    return {};
}

std::string flipVehicles(ScenarioDocument& doc, int consist, const std::vector<int>& vehicles) {
    if (vehicles.empty())
        return noVehicle("flip");
    for (int v : vehicles)
        if (const std::string refused = onVehicle(doc, consist, v, [&](std::string& text) {
                put(text, "Flipped", valueOf(text, "Flipped") == "1" ? "0" : "1");
                return std::string();
            });
            !refused.empty())
            return refused;
    rereadTables(doc);
    return {};
}

std::string loadVehicles(ScenarioDocument& doc, int consist, const std::vector<int>& vehicles, bool load) {
    if (vehicles.empty())
        return noVehicle(load ? "load" : "unload");
    std::string stopped;
    for (int v : vehicles) {
        stopped = onVehicle(doc, consist, v, [&](std::string& text) {
            if (text.find("<InitialLevel/>") != std::string::npos)
                return valueOf(text, "Name") + " is not a loadable vehicle";
            // The documents spell it IsPreLoaded: the tag is looked for whatever its case.
            const std::size_t at = InStr(1, text, "<IsPreloaded", Match::Text);
            if (at) {
                const std::size_t gt = text.find('>', at - 1), lt = text.find('<', gt);
                if (gt != std::string::npos && lt != std::string::npos)
                    text.replace(gt + 1, lt - gt - 1, load ? "eTrue" : "eFalse");
            }
            return std::string();
        });
        if (!stopped.empty())
            break;
    }
    rereadTables(doc);
    return stopped;
}

std::string renameConsist(ScenarioDocument& doc, int consist, const std::string& name) {
    if (!validConsist(doc, consist))
        return "You do not appear to have selected a consist?";
    if (name.empty())
        return {};
    const std::string old = doc.consists[static_cast<std::size_t>(consist)].serviceName;
    const auto [from, end] = sliceOf(doc, consist);
    const std::size_t service = doc.scenarioText.find("<ServiceName>", from);
    if (service == std::string::npos || service >= end)
        return "A Loose Consist has no name to change.";
    for (const char* language : {"English", "French", "Italian", "German", "Spanish"})
        put(doc.scenarioText, language, name, service + 1);
    // The front-end list of the properties names the service too.
    for (std::size_t at = InStr(1, doc.propertiesText, ">" + old + "<", Match::Text); at;
         at = InStr(at + name.size() + 2, doc.propertiesText, ">" + old + "<", Match::Text))
        doc.propertiesText.replace(at, old.size(), name);
    rereadTables(doc);
    return {};
}

std::string deleteConsist(ScenarioDocument& doc, int consist, bool& deletedSinceSave) {
    if (deletedSinceSave)
        return kSecondDeletion;
    if (!validConsist(doc, consist))
        return "You do not appear to have selected a consist?";
    const auto [from, end] = sliceOf(doc, consist);
    const std::size_t open = doc.scenarioText.find("<cConsist d", from);
    const std::size_t close = open == std::string::npos ? open : doc.scenarioText.find("</cConsist>", open);
    if (close == std::string::npos)
        return doc.scenarioFile.string() + ": the consist's end was not found.";
    doc.scenarioText.erase(open, close + 11 - open);
    deletedSinceSave = true;
    rereadTables(doc);
    return {};
}

std::string changeServiceClass(ScenarioDocument& doc, int consist, int serviceClass) {
    if (!validConsist(doc, consist))
        return "You do not appear to have selected a consist?";
    const auto [from, end] = sliceOf(doc, consist);
    const std::size_t at = doc.scenarioText.find("<ServiceClass", from);
    if (at == std::string::npos || at >= end)
        return "A Loose Consist has no service class.";
    put(doc.scenarioText, "ServiceClass", std::to_string(serviceClass), at + 1);
    rereadTables(doc);
    return {};
}

std::string driveConsist(ScenarioDocument& doc, int consist) {
    if (!validConsist(doc, consist) || doc.consists[static_cast<std::size_t>(consist)].vehicles.empty())
        return "You have not selected a locomotive to drive?";
    for (const char* tag : {"PlayerDriver", "PlayerControlled"})
        for (std::size_t pos = 1; pos;) {
            const std::size_t at = InStr(pos, doc.scenarioText, std::string("<") + tag, Match::Binary);
            if (!at)
                break;
            pos = at;
            PutDetail(doc.scenarioText, pos, tag, "0", kExact);
            if (pos)
                ++pos;
        }
    const std::size_t open = doc.scenarioText.find("<cConsist d", doc.consists[static_cast<std::size_t>(consist)].start);
    if (open != std::string::npos)
        put(doc.scenarioText, "PlayerDriver", "1", open + 1);
    rereadTables(doc);
    return {};
}

const char* const kNotLoose = "You do not appear to have selected a Loose Consist?";
const char* const kLooseInserted = "Your Loose Consist has been inserted, now save the scenario.";

std::string looseConsistText(const ScenarioDocument& doc, int consist, std::string& refused) {
    if (!validConsist(doc, consist) || doc.consists[static_cast<std::size_t>(consist)].serviceName != "Loose Consist") {
        refused = kNotLoose;
        return {};
    }
    const auto [from, end] = sliceOf(doc, consist);
    const std::size_t open = doc.scenarioText.find("<cConsist d", from);
    const std::size_t close = open == std::string::npos ? open : doc.scenarioText.find("</cConsist>", open);
    if (close == std::string::npos) {
        refused = doc.scenarioFile.string() + ": the consist's end was not found.";
        return {};
    }
    return doc.scenarioText.substr(open, close + 11 - open);
}

std::string insertLooseConsist(ScenarioDocument& doc, const std::string& text) {
    // One whole consist and nothing else, so that the document stays a run of consists.
    const std::size_t open = text.find("<cConsist d");
    const std::size_t close = text.rfind("</cConsist>");
    if (open == std::string::npos || close == std::string::npos || text.find("<cConsist d", open + 1) != std::string::npos)
        return "The file does not hold one saved Loose Consist.";
    const std::size_t first = doc.scenarioText.find("</cConsist>");
    if (first == std::string::npos)
        return doc.scenarioFile.string() + ": the scenario holds no consist to insert behind.";
    // Behind the tag and its line break.
    std::size_t at = first + 11;
    if (doc.scenarioText.compare(at, 2, "\r\n") == 0)
        at += 2;
    else if (at < doc.scenarioText.size() && doc.scenarioText[at] == '\n')
        at += 1;
    std::string block = text.substr(open, close + 11 - open);
    doc.scenarioText.insert(at, block + "\r\n");
    rereadTables(doc);
    return {};
}

} // namespace velmora::scenarios
