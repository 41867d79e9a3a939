#pragma once
// The field side of the scenario editor and "Save Changes to Scenario" (Command1): the fields as
// the editor shows them, and the save that writes ScenarioProperties.xml and Scenario.bin in that
// order, each with its numbered backup (ScenarioProperties.bak, Scenario.bak, then .bak1 ..
// .bak50), as one journal entry. A field left as it was read is left byte for byte in the file.

#include "velmora/scenarios/scenario.h"

#include <filesystem>
#include <string>
#include <vector>

namespace velmora::scenarios {

// The editor's fields: text as the documents hold it once repaired (Windows-1252).
struct Fields {
    std::string displayName, description, briefing; // Text1(0) to Text1(2)
    std::string startTime;                           // Text1(3), HHMM
    std::string durationMins;                        // Text1(4)
    std::string startDD, startMM, startYYYY;         // Text1(5) to Text1(7)
    std::string season;                              // Text1(8)
    Reference weather;                               // Text1(9) to Text1(11)
    ScenarioClass cls = ScenarioClass::Standard;     // Option2
    std::string author;                              // Text3(1)
    std::string startLocation;                       // Text3(2)
    bool changeAllConsists = false;                  // Check1: move every StartTime with the scenario's
};

// The fields as the document was read.
Fields fieldsOf(const ScenarioDocument& doc);

extern const char* const kTimeFormat; // "The time must be in 24hour format, e.g. 0530"
extern const char* const kSaved;      // "Your Scenario.bin and ScenarioProperties.xml files have been updated."
extern const char* const kClassChangeWarning; // the OK/Cancel box before a class change

// Seconds of an HHMM time in the picture "00000.0000" ("2400" gives "86400.0000"); empty when the
// text is not four digits up to 2400.
std::string secondsText(std::string_view hhmm);

// PutName: the same text into every language element of the block at `pos` (1-based).
void PutName(std::string& text, std::size_t pos, const std::string& value, const std::string& language);

// ChangeTimes: every StartTime of the scenario text moved by `delta` seconds, wrapped at 86400.
void ChangeTimes(std::string& text, double delta);

// The properties text with "Provider|Product" pairs merged into its RBlueprintSetPreLoad, each
// pair once, sorted without regard to case. `error` is set (empty text) when the template is missing.
std::string withRequiredAssets(AppContext& ctx, std::string properties, const std::vector<std::string>& pairs,
                               std::string& error);

// The properties text with the fields written into it, in the save's order; `delta` gets the
// start-time change when every consist moves with it. `error` is set (nothing done) when the time
// is refused or a tag is missing.
std::string applyFields(AppContext& ctx, const ScenarioDocument& doc, const Fields& fields, double& delta,
                        std::string& error);

struct SaveResult {
    bool ok = false;
    std::string message;              // kSaved, or what went wrong (naming the file)
    std::vector<fs::path> backups;    // ScenarioProperties.bak..., Scenario.bak...
    explicit operator bool() const { return ok; }
};

// Command1_Click: validates, writes both documents with their backups in one journal entry.
// A failure at any step leaves both documents as they were.
SaveResult saveScenario(AppContext& ctx, const ScenarioDocument& doc, const Fields& fields);

} // namespace velmora::scenarios
