#pragma once
// The readings of a scenario command's words that every file of scenario commands shares.

#include "session.h"

#include "velmora/scenarios/scenario.h"
#include "velmora/scenarios/scenariolist.h"

#include <optional>

namespace velmora::cli {

// The route and scenario named by the first two plain arguments, `extra` more after them;
// nothing after saying what is wrong.
std::optional<scenarios::ScenarioRef> scenarioArguments(Session& s, const Arguments& a, std::size_t extra = 0);
// The scenario opened, its warnings shown; `code` is Error after saying why it could not be.
scenarios::ScenarioDocument openedScenario(Session& s, const scenarios::ScenarioRef& ref, int& code);
// An index typed for an option such as --consist: digits only, 0 for the first.
std::optional<int> indexArgument(Session& s, const Arguments& a, const char* option);

} // namespace velmora::cli
