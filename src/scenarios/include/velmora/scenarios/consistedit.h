#pragma once
// The editor's commands on the vehicles and consists of a scenario: change numbers, duplicate,
// delete and flip vehicles, load and unload wagons, rename, delete and re-class a consist, and
// choose the consist to drive. Each works on `doc.scenarioText` (the service name also on
// `doc.propertiesText`) and reads the tables again; nothing is written until Save. An empty
// string means done; otherwise it is the message the editor shows.

#include "velmora/scenarios/scenario.h"

#include <functional>
#include <string>
#include <vector>

namespace velmora::scenarios {

extern const char* const kEditNote;       // "Your Scenario information will be updated once you save changes."
extern const char* const kDriverNote;     // "Your Scenario Driver information will be updated once you save changes."
extern const char* const kSecondDeletion; // "You have already deleted one consist, no more" / ...

// Change Number: `number` into the first vehicle; each next one gets the number with its last
// three characters replaced by a random 002..1000 ("000" picture). `randomFraction` in [0, 1).
std::string changeNumbers(ScenarioDocument& doc, int consist, const std::vector<int>& vehicles, std::string number,
                          const std::function<double()>& randomFraction = {});
// Duplicate Item: a copy behind the vehicle, its number plus 3.
std::string duplicateVehicle(ScenarioDocument& doc, int consist, int vehicle);
std::string deleteVehicle(ScenarioDocument& doc, int consist, int vehicle);
std::string flipVehicles(ScenarioDocument& doc, int consist, const std::vector<int>& vehicles);
// Load (true) or Unload: stops at the first vehicle that cannot carry a load ("<name> is not a
// loadable vehicle"); the ones before it stay changed.
std::string loadVehicles(ScenarioDocument& doc, int consist, const std::vector<int>& vehicles, bool load);
// Rename Consist: the service name in every language, and in the properties text.
std::string renameConsist(ScenarioDocument& doc, int consist, const std::string& name);
// Delete Consist: one between saves (`deletedSinceSave` says whether one has gone already).
std::string deleteConsist(ScenarioDocument& doc, int consist, bool& deletedSinceSave);
// Change Service Class: the index of the class list into the consist's ServiceClass.
std::string changeServiceClass(ScenarioDocument& doc, int consist, int serviceClass);
// Drive It: PlayerDriver and PlayerControlled 0 everywhere, then PlayerDriver 1 in this consist.
std::string driveConsist(ScenarioDocument& doc, int consist);

extern const char* const kNotLoose;      // "You do not appear to have selected a Loose Consist?"
extern const char* const kLooseInserted; // "Your Loose Consist has been inserted, now save the scenario."

// Save Selected Loose Consist: the consist's text from <cConsist d through </cConsist>, for a
// file of SavedFiles; empty with `refused` set when the consist is not a loose one.
std::string looseConsistText(const ScenarioDocument& doc, int consist, std::string& refused);
// Add Previously Saved Loose Consist: the text behind the document's first </cConsist> and its
// line break. A text that is not one whole consist is refused and nothing changes.
std::string insertLooseConsist(ScenarioDocument& doc, const std::string& text);

} // namespace velmora::scenarios
