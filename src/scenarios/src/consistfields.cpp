#include "velmora/scenarios/consistfields.h"

#include "velmora/scenarios/scenariosave.h"
#include "velmora/core/xmltext.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace velmora::scenarios {

const char* const kNoConsist = "You do not appear to have selected a consist?";
const char* const kDrivenSelected = "You have selected the Driven Consist, you must\nselect an AI consist.";
const char* const kLooseSelected = "You have selected a Loose Consist, you must\nselect an AI consist.";
const char* const kNoTriggerOption = "There is no option to change the 'Start Trigger Distance'\n"
                                     "in this consist, it must have been written on an earlier\n"
                                     "version of Train Simulator.";

namespace {

const ScanSettings kExact{};

bool validConsist(const ScenarioDocument& doc, int consist) {
    return consist >= 0 && consist < static_cast<int>(doc.consists.size());
}

// Where consist i's slice begins and ends in the text (0-based, end exclusive).
std::pair<std::size_t, std::size_t> sliceOf(const ScenarioDocument& doc, int consist) {
    const auto i = static_cast<std::size_t>(consist);
    const std::size_t end = i + 1 < doc.consists.size() ? doc.consists[i + 1].start : doc.scenarioText.size();
    return {doc.consists[i].start, end};
}

std::optional<double> number(const std::string& text) {
    double value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc() || end == text.data())
        return std::nullopt;
    return value;
}

std::string plain(double value) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.7g", value);
    return buffer;
}

// The first `tag` element at or after `from` (0-based) within [from, end): its value's place.
std::size_t elementAt(const std::string& text, std::size_t from, std::size_t end, std::string_view tag) {
    const std::size_t at = InStr(from + 1, text, "<" + std::string(tag), Match::Binary);
    return at == 0 || at - 1 >= end ? std::string::npos : at - 1;
}

std::string readAt(const std::string& text, std::size_t at, std::string_view tag) {
    std::string value;
    std::size_t pos = at + 1;
    GetDetail(text, pos, tag, value, kExact);
    return pos ? value : std::string();
}

void putAt(std::string& text, std::size_t at, std::string_view tag, const std::string& value) {
    std::size_t pos = at + 1;
    PutDetail(text, pos, tag, value, kExact);
}

// The Speed element of the driven consist's first vehicle: behind "<number></UniqueNumber>", the
// next <TotalMass, then <Speed.
std::size_t drivenSpeedAt(const ScenarioDocument& doc) {
    if (!validConsist(doc, doc.drivenConsist))
        return std::string::npos;
    const auto& consist = doc.consists[static_cast<std::size_t>(doc.drivenConsist)];
    if (consist.vehicles.empty())
        return std::string::npos;
    const auto [from, end] = sliceOf(doc, doc.drivenConsist);
    const std::size_t number = doc.scenarioText.find(consist.vehicles.front().number + "</UniqueNumber>", from);
    if (number == std::string::npos || number >= end)
        return std::string::npos;
    const std::size_t mass = elementAt(doc.scenarioText, number, end, "TotalMass");
    return mass == std::string::npos ? mass : elementAt(doc.scenarioText, mass, end, "Speed");
}

// An AI consist's element behind its service name: refused for the driven and loose consists.
std::string refusedAi(const ScenarioDocument& doc, int consist) {
    if (!validConsist(doc, consist))
        return kNoConsist;
    if (consist == doc.drivenConsist)
        return kDrivenSelected;
    if (doc.consists[static_cast<std::size_t>(consist)].serviceName == "Loose Consist")
        return kLooseSelected;
    return {};
}

std::size_t serviceNameAt(const ScenarioDocument& doc, int consist) {
    const auto [from, end] = sliceOf(doc, consist);
    const std::size_t at = elementAt(doc.scenarioText, from, end, "ServiceName>");
    return at;
}

} // namespace

void rereadTables(ScenarioDocument& doc) {
    std::vector<Consist> old = std::move(doc.consists);
    std::string error;
    doc.consists = readConsists(doc.scenarioText, doc.scenarioFile, error, &doc.drivenConsist);
    for (std::size_t i = 0; i < doc.consists.size() && i < old.size(); ++i)
        for (std::size_t j = 0; j < doc.consists[i].vehicles.size() && j < old[i].vehicles.size(); ++j) {
            doc.consists[i].vehicles[j].missing = old[i].vehicles[j].missing;
            doc.consists[i].vehicles[j].path = old[i].vehicles[j].path;
        }
}

std::string setConsistStartTime(ScenarioDocument& doc, int consist, const std::string& hhmm) {
    if (!validConsist(doc, consist))
        return kNoConsist;
    const std::string seconds = secondsText(hhmm);
    if (seconds.empty())
        return kTimeFormat;
    const auto [from, end] = sliceOf(doc, consist);
    const std::size_t close = doc.scenarioText.find("</ServiceName>", from);
    const std::size_t at = close == std::string::npos || close >= end ? close
                                                                        : elementAt(doc.scenarioText, close, end, "StartTime");
    if (at == std::string::npos || close >= end)
        return doc.scenarioFile.string() + ": this consist has no service and so no start time.";
    putAt(doc.scenarioText, at, "StartTime", seconds);
    rereadTables(doc);
    return {};
}

ConsistValue drivenStartSpeed(const ScenarioDocument& doc) {
    const std::size_t at = drivenSpeedAt(doc);
    if (at == std::string::npos)
        return {std::nullopt, doc.scenarioFile.string() + ": the driven consist's speed was not found."};
    return {number(readAt(doc.scenarioText, at, "Speed")), {}};
}

std::string setDrivenStartSpeed(ScenarioDocument& doc, double metresPerSecond) {
    const std::size_t at = drivenSpeedAt(doc);
    if (at == std::string::npos)
        return doc.scenarioFile.string() + ": the driven consist's speed was not found.";
    putAt(doc.scenarioText, at, "Speed", plain(metresPerSecond));
    rereadTables(doc);
    return {};
}

ConsistValue aiStartSpeed(const ScenarioDocument& doc, int consist) {
    if (const std::string refused = refusedAi(doc, consist); !refused.empty())
        return {std::nullopt, refused};
    const auto [from, end] = sliceOf(doc, consist);
    const std::size_t name = serviceNameAt(doc, consist);
    const std::size_t time = name == std::string::npos ? name : elementAt(doc.scenarioText, name, end, "StartTime");
    const std::size_t speed = time == std::string::npos ? time : elementAt(doc.scenarioText, time, end, "StartSpeed");
    if (speed == std::string::npos)
        return {std::nullopt, doc.scenarioFile.string() + ": this consist has no start speed."};
    return {number(readAt(doc.scenarioText, speed, "StartSpeed")), {}};
}

std::string setAiStartSpeed(ScenarioDocument& doc, int consist, double metresPerSecond) {
    if (const ConsistValue current = aiStartSpeed(doc, consist); !current.ok())
        return current.error;
    const auto [from, end] = sliceOf(doc, consist);
    const std::size_t time = elementAt(doc.scenarioText, serviceNameAt(doc, consist), end, "StartTime");
    putAt(doc.scenarioText, elementAt(doc.scenarioText, time, end, "StartSpeed"), "StartSpeed", plain(metresPerSecond));
    rereadTables(doc);
    return {};
}

ConsistValue triggerDistance(const ScenarioDocument& doc, int consist) {
    if (const std::string refused = refusedAi(doc, consist); !refused.empty())
        return {std::nullopt, refused};
    if (doc.scenarioText.find("<StartTriggerDistance") == std::string::npos)
        return {std::nullopt, kNoTriggerOption};
    const auto [from, end] = sliceOf(doc, consist);
    const std::size_t at = elementAt(doc.scenarioText, from, end, "StartTriggerDistanceFromPlayerSquared");
    if (at == std::string::npos)
        return {std::nullopt, kNoTriggerOption};
    const auto squared = number(readAt(doc.scenarioText, at, "StartTriggerDistanceFromPlayerSquared"));
    if (!squared)
        return {std::nullopt, doc.scenarioFile.string() + ": the start trigger distance does not read as a number."};
    return {*squared == 0 ? 0.0 : std::sqrt(*squared), {}};
}

std::string setTriggerDistance(ScenarioDocument& doc, int consist, double metres) {
    if (const ConsistValue current = triggerDistance(doc, consist); !current.ok())
        return current.error;
    const auto [from, end] = sliceOf(doc, consist);
    putAt(doc.scenarioText, elementAt(doc.scenarioText, from, end, "StartTriggerDistanceFromPlayerSquared"),
          "StartTriggerDistanceFromPlayerSquared", plain(metres * metres));
    rereadTables(doc);
    return {};
}

} // namespace velmora::scenarios
