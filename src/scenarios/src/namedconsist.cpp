// A scenario consist saved as a named consist of the simulator's consist list.

#include "velmora/scenarios/namedconsist.h"

namespace velmora::scenarios {

const char* const kConsistNamePrompt = "Type Name for consist ";

std::vector<consists::NewVehicle> templateVehicles(const Consist& consist) {
    std::vector<consists::NewVehicle> out;
    out.reserve(consist.vehicles.size());
    for (const Vehicle& v : consist.vehicles)
        out.push_back({v.blueprint.provider, v.blueprint.product, v.blueprint.blueprintId, v.flipped});
    return out;
}

consists::SaveResult saveAsNamedConsist(AppContext& ctx, const ScenarioDocument& doc, std::size_t index,
                                        const std::string& name, const consists::IdSource* ids) {
    if (index >= doc.consists.size()) {
        consists::SaveResult r;
        r.message = consists::kNotWritten;
        r.detail = "the scenario has " + std::to_string(doc.consists.size()) + " consists; there is no consist " +
                   std::to_string(index) + ".";
        return r;
    }
    return consists::saveNamedConsist(ctx, name, templateVehicles(doc.consists[index]), ids);
}

} // namespace velmora::scenarios
