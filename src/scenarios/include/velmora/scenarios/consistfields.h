#pragma once
// The fields of one consist that the scenario editor changes in the scenario text before it is
// saved: a consist's start time, the start speed of the driven consist and of an AI consist, and
// the distance from the driven train at which an AI consist starts. Each change is made in
// `doc.scenarioText` and the tables are read again; nothing is written until Save.

#include "velmora/scenarios/scenario.h"

#include <optional>
#include <string>

namespace velmora::scenarios {

// The editor's conversion between metres a second and miles an hour, used both ways.
constexpr double kMphPerMetreSecond = 2.24;

extern const char* const kNoConsist;        // "You do not appear to have selected a consist?"
extern const char* const kDrivenSelected;   // "You have selected the Driven Consist, you must" / ...
extern const char* const kLooseSelected;    // "You have selected a Loose Consist, you must" / ...
extern const char* const kNoTriggerOption;  // "There is no option to change the 'Start Trigger Distance'" / ...

// The outcome of a change or a reading: `error` holds the program's words when it was refused.
struct ConsistValue {
    std::optional<double> value;
    std::string error;
    bool ok() const { return error.empty(); }
};

// Reads the tables of `doc.scenarioText` again after a change, keeping what the missing-stock
// test found for each place.
void rereadTables(ScenarioDocument& doc);

// Change Start Time: HHMM into the StartTime behind the consist's </ServiceName>.
std::string setConsistStartTime(ScenarioDocument& doc, int consist, const std::string& hhmm);

// The driven consist's speed at the start (Speed behind its first vehicle's number), m/s.
ConsistValue drivenStartSpeed(const ScenarioDocument& doc);
std::string setDrivenStartSpeed(ScenarioDocument& doc, double metresPerSecond);

// An AI consist's StartSpeed, m/s: the first StartSpeed behind its service name's first
// StartTime. The driven consist is refused.
ConsistValue aiStartSpeed(const ScenarioDocument& doc, int consist);
std::string setAiStartSpeed(ScenarioDocument& doc, int consist, double metresPerSecond);

// The start trigger distance of an AI consist in metres (the document keeps its square).
ConsistValue triggerDistance(const ScenarioDocument& doc, int consist);
std::string setTriggerDistance(ScenarioDocument& doc, int consist, double metres);

} // namespace velmora::scenarios
