#pragma once
// The arguments every scenario command reads the same way.

#include "session.h"

#include "velmora/scenarios/scenario.h"
#include "velmora/scenarios/scenariolist.h"
#include "velmora/scenarios/swap.h"

#include <cstddef>
#include <optional>

namespace velmora::cli {

// The route and scenario named by the first two plain arguments (the route alone without
// `needScenario`); `extra` more plain arguments may follow. Nothing after saying what is wrong.
std::optional<scenarios::ScenarioRef> scenarioArgument(Session& s, const Arguments& a, std::size_t extra = 0,
                                                       bool needScenario = true);

// An index typed for an option such as --consist or --vehicle: digits only, 0 for the first.
// Nothing after saying what is wrong.
std::optional<int> indexOption(Session& s, const Arguments& a, const char* option);

// The scenario opened, its warnings shown; `code` is Error after saying why it could not be.
scenarios::ScenarioDocument openedScenario(Session& s, const scenarios::ScenarioRef& ref, int& code);

// The end of a command that changed scenario files: its message, or the failure's.
int finish(Session& s, const scenarios::CommandResult& r);

// Swap in ALL Scenarios for this route: every vehicle of the name in every scenario, saved as one
// journal entry, with what changed per scenario.
int swapInAllScenarios(Session& s, const routes::RouteEntry& route, const std::string& name,
                       const scenarios::ChosenStock& stock, bool keepNumbers);

} // namespace velmora::cli
