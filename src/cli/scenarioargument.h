#pragma once
// The ROUTE and SCENARIO words the scenario commands start with.

#include "session.h"

#include "velmora/scenarios/scenariolist.h"

#include <optional>

namespace velmora::cli {

// The route and scenario named by the first two plain arguments (only the route when
// `needScenario` is false); `extra` more may follow. Nothing after saying what is wrong.
std::optional<scenarios::ScenarioRef> scenarioArgument(Session& s, const Arguments& a, std::size_t extra = 0,
                                                       bool needScenario = true);

} // namespace velmora::cli
