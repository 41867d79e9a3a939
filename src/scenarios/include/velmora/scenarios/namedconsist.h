#pragma once
// "Save as Named Consist": a consist of the open scenario added to the user's saved consists.

#include "velmora/consists/consisttemplates.h"
#include "velmora/scenarios/scenario.h"

#include <string>
#include <vector>

namespace velmora::scenarios {

// The vehicles of a consist, front to back, as a saved consist names them.
std::vector<consists::NewVehicle> templateVehicles(const Consist& consist);

// The question before the save, and the default answer: the consist's name.
extern const char* const kConsistNamePrompt; // "Type Name for consist "

// Adds consist `index` of the scenario to ConsistTemplates.bin under `name` (UTF-8, as typed).
consists::SaveResult saveAsNamedConsist(AppContext& ctx, const ScenarioDocument& doc, std::size_t index,
                                        const std::string& name, const consists::IdSource* ids = nullptr);

} // namespace velmora::scenarios
