// The instructions of a consist read from its text: the instruction elements of its
// DriverInstructionContainer, their texts, and their targets.

#include "velmora/scenarios/instructions.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/services.h"
#include "velmora/core/xmltext.h"

#include <cstdlib>

namespace velmora::scenarios {

namespace {

constexpr std::size_t npos = std::string_view::npos;

// The instruction elements, as the simulator names them.
constexpr const char* kKinds[] = {"cStopAtDestinations", "cPickupPassengers", "cConsistOperations",
                                  "cTriggerInstruction"};

struct Range {
    std::size_t begin = npos, end = npos; // 0-based, `end` one past the element's close
    bool found() const { return begin != npos; }
};

// The element `name` at or after `from` (0-based), compared without regard to case: its start tag
// must end the name ("<cConsistOperations d:id=..." but not "<cConsistOperationsX"). A
// self-closed element ends at its "/>"; one whose close is missing runs to the end of the text.
Range element(std::string_view text, std::string_view name, std::size_t from) {
    const std::string open = "<" + std::string(name);
    for (std::size_t at = InStr(from + 1, text, open, Match::Text); at; at = InStr(at + 1, text, open, Match::Text)) {
        const std::size_t b = at - 1;
        const std::size_t after = b + open.size();
        if (after < text.size() && text[after] != ' ' && text[after] != '>' && text[after] != '/')
            continue;
        const std::size_t gt = text.find('>', after);
        if (gt == npos)
            return {b, text.size()};
        if (text[gt - 1] == '/')
            return {b, gt + 1};
        const std::string close = "</" + std::string(name) + ">";
        const std::size_t c = InStr(gt + 1, text, close, Match::Text);
        return {b, c ? c - 1 + close.size() : text.size()};
    }
    return {};
}

// The value of the first `tag` element of `text`, or empty.
std::string valueOf(std::string_view text, std::string_view tag) {
    std::string value;
    std::size_t pos = 1;
    GetDetail(text, pos, tag, value, {Match::Text});
    return pos ? value : std::string();
}

// A time in seconds as HHMM; empty when the value is absent or 0.
std::string timeOrEmpty(const std::string& seconds) {
    if (seconds.empty() || std::atof(seconds.c_str()) == 0.0)
        return {};
    return hhmm(seconds);
}

// The language block of `tag` in `text`, in the user's language, repaired.
std::string blockText(std::string_view text, std::string_view tag, const std::string& language) {
    const Range r = element(text, tag, 0);
    if (!r.found())
        return {};
    const std::string_view block = text.substr(0, r.end);
    return DecodedChars(GetName(block, r.begin + 1, language));
}

InstructionTarget readTarget(std::string_view t) {
    InstructionTarget target;
    target.displayName = DecodedChars(valueOf(t, "DisplayName"));
    target.operation = valueOf(t, "Operation");
    target.pickingUp = valueOf(t, "PickingUp") == "1";
    target.arrivalTime = timeOrEmpty(valueOf(t, "ArrivalTime"));
    target.departureTime = timeOrEmpty(valueOf(t, "DepartureTime"));
    // The due time stands behind the ticked time; a target without TickedTime has it anyway.
    const std::size_t ticked = InStr(1, t, "<TickedTime", Match::Text);
    const std::string due = valueOf(ticked ? t.substr(ticked - 1) : t, "DueTime");
    if (!due.empty())
        target.dueTime = hhmm(due);
    for (std::string& n : ElementValues(t, "RailVehicleNumber"))
        target.numbers.push_back(DecodedChars(n));
    return target;
}

} // namespace

std::string documentLanguage(const AppContext& ctx) {
    return ctx.settings.language.empty() ? std::string("English") : ctx.settings.language;
}

std::string_view consistText(std::string_view scenarioText, const std::vector<Consist>& consists, std::size_t index) {
    if (index >= consists.size() || consists[index].start > scenarioText.size())
        return {};
    const std::size_t begin = consists[index].start;
    std::size_t end = npos;
    if (index + 1 < consists.size())
        end = consists[index + 1].start;
    else if (const std::size_t last = scenarioText.rfind("</cConsist>"); last != npos && last >= begin)
        end = last;
    if (end == npos || end < begin)
        end = scenarioText.size();
    return scenarioText.substr(begin, end - begin);
}

std::optional<InstructionTarget> finalDestination(std::string_view consist) {
    const Range r = element(consist, "FinalDestination", 0);
    if (!r.found())
        return std::nullopt;
    const std::string_view block = consist.substr(r.begin, r.end - r.begin);
    const Range t = element(block, "cDriverInstructionTarget", 0);
    if (!t.found())
        return std::nullopt;
    return readTarget(block.substr(t.begin, t.end - t.begin));
}

std::vector<Instruction> readInstructions(std::string_view consist, const std::string& language) {
    std::vector<Instruction> out;
    const Range container = element(consist, "DriverInstructionContainer", 0);
    if (!container.found())
        return out;
    const std::string_view all = consist.substr(container.begin, container.end - container.begin);
    std::size_t pos = 0;
    while (pos < all.size()) {
        // The nearest instruction element of any kind; each is read whole, so one held inside
        // another is not read twice.
        Range next;
        const char* kind = nullptr;
        for (const char* k : kKinds)
            if (const Range r = element(all, k, pos); r.found() && (!next.found() || r.begin < next.begin)) {
                next = r;
                kind = k;
            }
        if (!next.found())
            break;
        const std::string_view text = all.substr(next.begin, next.end - next.begin);
        Instruction in;
        in.kind = kind;
        in.activationLevel = valueOf(text, "ActivationLevel");
        in.triggeredText = blockText(text, "TriggeredText", language);
        in.untriggeredText = blockText(text, "UntriggeredText", language);
        in.displayText = blockText(text, "DisplayText", language);
        for (Range t = element(text, "cDriverInstructionTarget", 0); t.found();
             t = element(text, "cDriverInstructionTarget", t.end))
            in.targets.push_back(readTarget(text.substr(t.begin, t.end - t.begin)));
        out.push_back(std::move(in));
        pos = next.end;
    }
    return out;
}

std::string instructionKindText(std::string_view kind) {
    if (iequals(kind, "cStopAtDestinations"))
        return "Stop at destination";
    if (iequals(kind, "cPickupPassengers"))
        return "Pick up passengers";
    if (iequals(kind, "cConsistOperations"))
        return "Consist operation";
    if (iequals(kind, "cTriggerInstruction"))
        return "Triggered instruction";
    return std::string(kind);
}

} // namespace velmora::scenarios
