#pragma once
// The scenario document: ScenarioProperties.xml and Scenario.bin (decoded in memory by the codec)
// as two texts, and the tables the scenario editor builds from them: the consists of List1 and
// the items of VSG2, with missing stock marked. Everything is read by tag search on the text.

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {
class AppContext;
}

namespace velmora::scenarios {

namespace fs = std::filesystem;

// A blueprint reference as the document writes it: the id a path with backslashes ending in .xml.
struct Reference {
    std::string provider, product, blueprintId;
    bool empty() const { return provider.empty() && product.empty() && blueprintId.empty(); }
};

// One row of the item grid: a rail vehicle of a consist.
struct Vehicle {
    std::string name;        // ItemNames, repaired
    Reference blueprint;     // ItemProviders, ItemProducts, ItemBlueprintIDs
    Reference reskin;        // the reskin tables; empty when the vehicle is no reskin
    std::string flipped;     // ItemFlipped: "0" or "1"
    std::string number;      // ItemNumbers
    std::string preloaded;   // ItemPreloaded: "eTrue" or "eFalse"
    bool loadable = true;    // ItemLoadable
    std::string startTime;   // ItemStartTimes, HHMM; empty when the consist has none
    std::string destination; // ItemDestinations, or "Not Shown"
    bool missing = false;    // no blueprint file below Assets
    std::string path;        // Provider\Product\...\file.bin, as the missing test builds it
};

// One row of List1.
struct Consist {
    std::size_t start = 0;          // ConsistEnds: where the consist's slice starts (0-based)
    std::string serviceName;        // ServiceNames, repaired, or "Loose Consist"
    std::string dir;                // ConsistDirs
    std::string driverEngineIndex;  // DriverEngineIndexes
    std::string playerDriver;       // PlayerDrivers: "1", else empty
    std::string serviceClass;       // ServiceClasses
    bool realDestination = false;   // a FinalDestination of 251 characters or more: shown red
    std::vector<Vehicle> vehicles;
    unsigned colour() const { return realDestination ? 0xFF0000u : 0x000000u; }
};

// The scenario classes, in the order of the editor's radio group (Option2).
enum class ScenarioClass { Standard, FreeRoam, Career, Tutorial, Timetable, QuickDrive, Unknown };
ScenarioClass classOf(std::string_view value);
std::string classValue(ScenarioClass c);   // "eStandardScenarioClass", ...
std::string classCaption(ScenarioClass c); // "Standard Scenario", ..., "Quick Drive"
// The value for a class as typed on the command line: the value itself, the caption, or a
// short word ("standard", "freeroam", "career", "tutorial", "timetable").
std::optional<ScenarioClass> parseClass(std::string_view typed);
bool showsAuthor(ScenarioClass c);        // standard and free roam
bool showsStartLocation(ScenarioClass c); // free roam

// The fields of ScenarioProperties.xml, read forward in the document's order.
struct Properties {
    std::string displayName, description, briefing; // repaired
    std::string scenarioClass;
    std::string startTimeRaw; // seconds from midnight as written
    std::string startTime;    // HHMM
    std::string durationMins, startDD, startMM, startYYYY, season;
    Reference weather;
    std::string author;        // standard and free roam only
    std::string startLocation; // free roam only, repaired
};

// The texts a scenario shows in boxes, in the program's own words.
extern const char* const kQuickDriveRefusal; // "This is a Quick Drive scenario" / ...
extern const char* const kCareerWarning;     // "This is a Career Scenario and may not work if edited." / ...

struct ScenarioDocument {
    fs::path folder;
    fs::path propertiesFile, scenarioFile;
    std::string propertiesText; // strPropertiesText
    std::string scenarioText;   // strScenarioText
    Properties properties;
    std::vector<Consist> consists;
    int drivenConsist = -1;            // the consist whose PlayerDriver is 1
    bool refused = false;              // a Quick Drive scenario: tables left empty
    std::optional<fs::path> weatherFolder; // empty when the weather folder is missing
    std::string missingReport;         // "Missing items:-" and one path a line, or empty
    std::vector<std::string> warnings; // boxes shown on opening, and what looked wrong
    std::string error;                 // set when the scenario could not be opened: names the file
    // "Provider|Product" of every stock swapped in since opening: Save adds each to
    // RBlueprintSetPreLoad of the properties.
    std::vector<std::string> requiredAssets;

    bool ok() const { return error.empty(); }
    ScenarioClass cls() const { return classOf(properties.scenarioClass); }
    bool anyMissing() const;
};

// The item bound of one consist: a consist of more items is refused.
constexpr std::size_t kMaxItems = 900;

// GetName: a language block's text in the user's language, else English, French, Italian, German,
// Spanish; empty when none has a value.
std::string GetName(std::string_view text, std::size_t pos, const std::string& language);

// Seconds from midnight as HHMM ("0530" for 19800).
std::string hhmm(std::string_view seconds);

// Reads the properties forward; a tag missing or out of order leaves `error` naming the file.
Properties readProperties(const std::string& text, const std::string& language, const fs::path& file,
                          std::string& error);

// The consist pass and the item pass over a scenario text. `error` names `file` when a consist
// holds more items than the bound.
std::vector<Consist> readConsists(const std::string& text, const fs::path& file, std::string& error,
                                  int* driven = nullptr, const std::string& language = "English");

// Marks each vehicle whose blueprint is not below `assets` (compared without regard to case,
// then once more repaired); a path that leads out of Assets counts as missing. Returns the report.
std::string markMissing(AppContext& ctx, std::vector<Consist>& consists);

// The weather folder of a reference: <Assets>\Provider\Product\Weather, else ...\Environment\Weather.
std::optional<fs::path> weatherFolder(AppContext& ctx, const Reference& weather);

// OpenScenario: reads both documents of a scenario folder and fills the tables.
ScenarioDocument openScenario(AppContext& ctx, const fs::path& folder);

} // namespace velmora::scenarios
