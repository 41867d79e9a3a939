#pragma once
// The driver's instructions of a consist, as the details grid and the work order read them: each
// instruction of the consist's DriverInstructionContainer with its texts and the targets it
// names (a place, an operation on wagons, the times), read by tag search on the consist's text.

#include "velmora/scenarios/scenario.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::scenarios {

// One cDriverInstructionTarget: a place of an instruction.
struct InstructionTarget {
    std::string displayName;          // DisplayName, repaired
    std::string operation;            // Operation: "Default", "AddToFront", "DropOffRailVehicle", ...
    bool pickingUp = false;           // PickingUp is 1
    std::string dueTime;              // DueTime (the one after TickedTime) as HHMM
    std::string arrivalTime;          // ArrivalTime as HHMM; empty when 0 or absent
    std::string departureTime;        // DepartureTime as HHMM; empty when 0 or absent
    std::vector<std::string> numbers; // the RailVehicleNumber entries, repaired
};

// One instruction element.
struct Instruction {
    std::string kind;            // the element: "cStopAtDestinations", "cConsistOperations", ...
    std::string activationLevel; // ActivationLevel
    std::string triggeredText, untriggeredText, displayText; // in the user's language, repaired
    std::vector<InstructionTarget> targets;
};

// The text of consist `index`: from where its slice starts to where the next one starts (the last
// to its </cConsist>). Empty when there is no such consist.
std::string_view consistText(std::string_view scenarioText, const std::vector<Consist>& consists, std::size_t index);

// The consist's FinalDestination target, when it has one.
std::optional<InstructionTarget> finalDestination(std::string_view consist);

// The instructions of the consist's DriverInstructionContainer, in document order: each
// cStopAtDestinations, cPickupPassengers, cConsistOperations and cTriggerInstruction element.
std::vector<Instruction> readInstructions(std::string_view consist, const std::string& language);

// The instruction's kind in words: "Stop at destination", "Pick up passengers", ...
std::string instructionKindText(std::string_view kind);

// The user's language for the language blocks of a document ("English" when none is set).
std::string documentLanguage(const AppContext& ctx);

} // namespace velmora::scenarios
