#pragma once
// "Display Work Order" (frmWorkOrder): a printable order for the driver of a scenario's driven
// consist, as rich text (HTML): the route and scenario, the scenario's fields, the service and its
// rolling stock, the wagon numbers, and each instruction with its place and operation. A free
// roam or timetable scenario has no single order: it gets the scenario's part only.

#include "velmora/scenarios/scenario.h"

#include <string>
#include <string_view>

namespace velmora::scenarios {

extern const char* const kNoWagonNumbers; // "There are no wagon numbers in this scenario," / "Work Order can be constructed."

// An Operation value in the order's words: "AddToFront" is "Couple to Front of train", ...;
// "Default" and empty give nothing; another value is shown as it stands.
std::string operationText(std::string_view operation);

// Whether the scenario's class has one order for its driver (not free roam, not timetable).
bool hasSingleOrder(const ScenarioDocument& doc);

// The order as an HTML document in UTF-8, document text escaped.
std::string workOrderHtml(const ScenarioDocument& doc, const std::string& routeName, const std::string& language);

// Text as HTML: UTF-8, with &, <, > and quotes escaped and line breaks as <br>.
std::string htmlText(std::string_view documentText);

} // namespace velmora::scenarios
