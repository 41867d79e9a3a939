#pragma once
// The details of scenarios read from their ScenarioProperties.xml, whether the document lies in
// a scenario folder or packed in an .ap archive of the route (Content\Routes\<route>\*.ap).
// Nothing is unpacked: a packed document is read into memory.

#include "velmora/scenarios/scenario.h"

#include <filesystem>
#include <string>
#include <vector>

namespace velmora::scenarios {

namespace fs = std::filesystem;

struct ScenarioSummary {
    fs::path file;         // the ScenarioProperties.xml, or the .ap holding it
    std::string entry;     // the entry's path in the archive (backslashes); empty for a loose file
    std::string route;     // the route's folder
    std::string scenario;  // the scenario's folder
    Properties properties; // the fields, read as the scenario editor reads them
};

// The grid's columns: "File", "Route", "Scenario", "Name", "Class", "Start Time", "Duration",
// "Date", "Season", "Author".
const std::vector<std::string>& scenarioSummaryColumns();
// The cells of a row, in the columns' order: the file is the archive's path followed by the
// entry ("<archive>|<entry>") for a packed document.
std::vector<std::string> scenarioSummaryCells(const ScenarioSummary& s);

struct ScenarioSummaries {
    std::vector<ScenarioSummary> scenarios;
    std::vector<std::string> problems; // archives or documents that could not be read, named
};

// The route and scenario folders of a properties document by its path (".../Routes/<route>/
// Scenarios/<scenario>/ScenarioProperties.xml", '\' or '/'); empty where the path has none.
void placeOfProperties(std::string_view path, std::string& route, std::string& scenario);

// Every ScenarioProperties.xml packed in `archive`, in archive order. A damaged archive or
// document is named in `problems`.
ScenarioSummaries readPackedScenarios(const fs::path& archive, const std::string& language);

// One loose ScenarioProperties.xml.
ScenarioSummaries readScenarioProperties(const fs::path& file, const std::string& language);

} // namespace velmora::scenarios
