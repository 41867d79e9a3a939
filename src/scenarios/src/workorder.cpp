// The work order of a scenario as HTML.

#include "velmora/scenarios/workorder.h"

#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/scenarios/instructions.h"

#include <vector>

namespace velmora::scenarios {

const char* const kNoWagonNumbers = "There are no wagon numbers in this scenario,\nWork Order can be constructed.";

namespace {

// A labelled line: the label in bold, then the value.
std::string line(const char* label, std::string_view value) {
    return "<b>" + htmlText(label) + "</b>" + htmlText(value) + "<br>\n";
}

} // namespace

std::string htmlText(std::string_view documentText) {
    std::string out;
    for (char ch : utf8FromDocument(documentText)) {
        switch (ch) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        case '\'': out += "&#39;"; break;
        case '\r': break;
        case '\n': out += "<br>"; break;
        default: out += ch;
        }
    }
    return out;
}

std::string operationText(std::string_view operation) {
    if (operation.empty() || iequals(operation, "Default"))
        return {};
    if (iequals(operation, "AddToFront"))
        return "Couple to Front of train";
    if (iequals(operation, "AddToBack"))
        return "Couple to back of train";
    if (iequals(operation, "DropOffRailVehicle"))
        return "Drop off wagon(s)";
    if (iequals(operation, "PickingUp"))
        return "Pick Up";
    if (toLowerAscii(operation).find("marshal") != std::string::npos)
        return "Marshall";
    return std::string(operation);
}

bool hasSingleOrder(const ScenarioDocument& doc) {
    return doc.cls() != ScenarioClass::FreeRoam && doc.cls() != ScenarioClass::Timetable;
}

std::string workOrderHtml(const ScenarioDocument& doc, const std::string& routeName, const std::string& language) {
    const Properties& p = doc.properties;
    std::string html = "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>Work Order: " +
                       htmlText(p.displayName) + "</title></head>\n<body>\n";
    html += "<p>" + line("Route:- ", routeName) + line("Scenario:- ", p.displayName) + "</p>\n";
    html += "<p>" + line("Description: ", p.description) + "</p>\n";
    html += "<p>" + line("Briefing:", " " + p.briefing) + "</p>\n";
    html += "<p>" + line("Start Time: ", p.startTime) + line("Duration: ", p.durationMins) + line("Season: ", p.season) +
            "</p>\n";
    if (!hasSingleOrder(doc)) {
        html += "<p>" + htmlText("A " + classCaption(doc.cls()) + " has no single work order: its services are " +
                                 "driven as the player chooses.") +
                "</p>\n</body></html>\n";
        return html;
    }
    const Consist* driven = doc.drivenConsist >= 0 && static_cast<std::size_t>(doc.drivenConsist) < doc.consists.size()
                                ? &doc.consists[static_cast<std::size_t>(doc.drivenConsist)]
                                : nullptr;
    const std::string_view text =
        driven ? consistText(doc.scenarioText, doc.consists, static_cast<std::size_t>(doc.drivenConsist))
               : std::string_view();
    const auto destination = finalDestination(text);
    html += "<p>" + line("Service: ", driven ? driven->serviceName : std::string()) +
            line("Final Destination: ",
                 destination && !destination->displayName.empty() ? destination->displayName : "Not Shown") +
            "</p>\n";
    html += "<p><b>Initial Rolling Stock:-</b><br>\n";
    if (driven)
        for (const Vehicle& v : driven->vehicles)
            html += htmlText(v.name) + (v.number.empty() ? std::string() : " (" + htmlText(v.number) + ")") + "<br>\n";
    html += "</p>\n";

    const std::vector<Instruction> instructions = driven ? readInstructions(text, language) : std::vector<Instruction>{};
    std::vector<std::string> numbers;
    for (const Instruction& in : instructions)
        for (const InstructionTarget& t : in.targets)
            numbers.insert(numbers.end(), t.numbers.begin(), t.numbers.end());
    if (numbers.empty()) {
        html += "<p>" + htmlText(kNoWagonNumbers) + "</p>\n";
    } else {
        html += "<p><b>Wagon Numbers:- </b>";
        for (std::size_t i = 0; i < numbers.size(); ++i)
            html += (i ? ", " : "") + htmlText(numbers[i]);
        html += "</p>\n";
    }
    for (const Instruction& in : instructions) {
        std::string kind = instructionKindText(in.kind);
        if (!in.displayText.empty())
            kind += ": " + in.displayText;
        if (in.targets.empty())
            html += "<p>" + line("Instruction: ", kind) + "</p>\n";
        for (const InstructionTarget& t : in.targets) {
            html += "<p>" + line("Instruction: ", kind) + line("At Location: ", t.displayName);
            if (const std::string op = operationText(t.operation); !op.empty())
                html += line("Operation: ", op);
            if (!t.numbers.empty()) {
                std::string wagons;
                for (std::size_t i = 0; i < t.numbers.size(); ++i)
                    wagons += (i ? ", " : "") + t.numbers[i];
                html += line("Wagons: ", wagons);
            }
            if (const std::string& due = t.arrivalTime.empty() ? t.dueTime : t.arrivalTime; !due.empty())
                html += line("Due: ", due);
            html += "</p>\n";
        }
    }
    html += "</body></html>\n";
    return html;
}

} // namespace velmora::scenarios
