#pragma once
// The scenario list's housekeeping over the selected scenarios: "Revert to Default" (each
// Scenario.bin back to its first backup, Scenario.bak) and "Make Selected Career / Timetable
// Scenarios 'Standard'" (the class in ScenarioProperties.xml). Each command is one journal entry;
// what a file held before is kept as its numbered backup, so nothing is lost and one undo takes
// the whole command back.

#include "velmora/scenarios/scenariolist.h"

#include <filesystem>
#include <string>
#include <vector>

namespace velmora::scenarios {

// Revert to Default: Scenario.bin gets the content of Scenario.bak, the default the first save
// kept. A scenario with no Scenario.bak (or no Scenario.bin) is left as it is. The program keeps
// Scenario.bak, and what Scenario.bin held goes to the next free numbered backup.
CommandResult revertToDefault(AppContext& ctx, const std::vector<fs::path>& scenarioFolders);

// Which class the command makes Standard.
enum class MakeStandardFrom { Career, Timetable };

// Make Selected Career (or Timetable) Scenarios 'Standard'. The scenarios are taken in order; the
// first whose properties hold a class the command does not change (standard, template, free roam,
// and timetable for the career command or career for the timetable one) stops the command there,
// those before it changed. Only ScenarioProperties.xml is written, kept as
// ScenarioProperties.bak (or the next free .bakN).
CommandResult makeStandard(AppContext& ctx, const std::vector<fs::path>& scenarioFolders,
                           MakeStandardFrom from);

} // namespace velmora::scenarios
