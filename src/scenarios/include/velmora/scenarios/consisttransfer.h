#pragma once
// Consist transfer between scenarios (frmConsistDupe): the consists of a scenario as lines that
// carry their occurrence number in brackets, and the copy of one consist of a scenario into
// another scenario of the route (or the same one), behind a chosen consist. Nothing is
// renumbered: the copy keeps its ids, numbers and start time, and the target's
// ScenarioProperties.xml is not touched. Only the target's Scenario.bin is written, with its
// numbered backup (Scenario.bak, Scenario.bak1 ..), as one journal entry.

#include "velmora/scenarios/scenariolist.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmora {
class AppContext;
}

namespace velmora::scenarios {

namespace fs = std::filesystem;

// A scenario as the transfer screen holds it: its folder and its Scenario.bin as text.
struct ListedScenario {
    fs::path folder;
    std::string text;
    std::string error; // why it could not be read, naming the file
    bool ok() const { return error.empty(); }
    fs::path scenarioFile() const { return folder / "Scenario.bin"; }
};

// Reads the scenario's Scenario.bin.
ListedScenario readScenarioText(AppContext& ctx, const fs::path& folder);

// Where consist `occurrence` (1-based, as "<cConsist " occurs in the text) stands: from its
// "<cConsist " to the end of its "</cConsist>" (0-based, end exclusive). Nothing when the text
// has fewer consists or the consist is not closed.
std::optional<std::pair<std::size_t, std::size_t>> consistOccurrence(std::string_view text, int occurrence);

// How many consists "<cConsist " opens in the text.
int consistCount(std::string_view text);

// What a consist list shows of one consist. Names are repaired (Windows-1252), the service
// name in the user's language where the block has it.
struct ConsistSummary {
    int occurrence = 0;    // 1-based
    bool readable = false; // closed, and read as the editor reads a consist
    std::string service;   // or "Loose Consist"
    std::size_t vehicles = 0;
    std::string first;     // the first vehicle's name
    // "[n] service name, k vehicles, first: vehicle name"
    std::string line() const;
};
std::vector<ConsistSummary> consistSummaries(std::string_view text, const std::string& language = "English");
// The lines of the summaries, one a consist.
std::vector<std::string> consistLines(std::string_view text, const std::string& language = "English");

// The occurrence a selected line names: the number between its first "[" and the "]" after it.
// Nothing when there is no "[" or no number between the brackets.
std::optional<int> occurrenceIn(std::string_view line);

// The target text with consist `from` of `source` put in behind the "</cConsist>" of consist
// `after` of `target`. Empty with `error` set (naming `sourceName` or `targetName`) when either
// consist is not there.
std::string withConsistCopied(std::string_view source, int from, std::string_view target, int after,
                              const std::string& sourceName, const std::string& targetName, std::string& error);

extern const char* const kConsistTransferred; // what the screen says after a transfer

// "Transfer Selected Consist": consist `from` of `source` behind consist `after` of `target`, the
// target's Scenario.bin written (its old one kept as Scenario.bak or the first free .bakN). The
// new document is made whole before anything is written; a target whose file changed since it
// was listed is refused. On success `target.text` is the new text.
CommandResult transferConsist(AppContext& ctx, const ListedScenario& source, int from, ListedScenario& target, int after);

} // namespace velmora::scenarios
