#include "velmora/scenarios/apscenarios.h"

#include "velmora/archives/zipreader.h"
#include "velmora/core/services.h"

#include <algorithm>
#include <system_error>

namespace velmora::scenarios {

namespace {

constexpr std::uint64_t kPropertiesLimit = 64ull << 20; // a properties document is a few KB

// The folder names of a path, split at '\' or '/'.
std::vector<std::string> folders(std::string_view path) {
    std::vector<std::string> out;
    std::string part;
    for (const char c : path) {
        if (c == '\\' || c == '/') {
            out.push_back(part);
            part.clear();
        } else {
            part += c;
        }
    }
    out.push_back(part);
    return out;
}

std::string windowsPath(std::string text) {
    std::replace(text.begin(), text.end(), '/', '\\');
    return text;
}

void addDocument(ScenarioSummaries& out, const std::string& text, const fs::path& file, const std::string& entry,
                 const std::string& where, const std::string& language) {
    ScenarioSummary s;
    s.file = file;
    s.entry = entry;
    placeOfProperties(where, s.route, s.scenario);
    std::string error;
    s.properties = readProperties(text, language, entry.empty() ? file : fs::path(file.string() + ": " + entry), error);
    if (!error.empty()) {
        out.problems.push_back(error);
        return;
    }
    out.scenarios.push_back(std::move(s));
}

} // namespace

const std::vector<std::string>& scenarioSummaryColumns() {
    static const std::vector<std::string> columns{"File",       "Route",    "Scenario", "Name",   "Class",
                                                  "Start Time", "Duration", "Date",     "Season", "Author"};
    return columns;
}

std::vector<std::string> scenarioSummaryCells(const ScenarioSummary& s) {
    const Properties& p = s.properties;
    const ScenarioClass cls = classOf(p.scenarioClass);
    std::string date = p.startDD + "/" + p.startMM + "/" + p.startYYYY;
    if (date == "//")
        date.clear();
    return {s.entry.empty() ? s.file.string() : s.file.string() + "|" + s.entry,
            s.route,
            s.scenario,
            p.displayName,
            cls == ScenarioClass::Unknown ? p.scenarioClass : classCaption(cls),
            p.startTime,
            p.durationMins,
            date,
            p.season,
            p.author};
}

void placeOfProperties(std::string_view path, std::string& route, std::string& scenario) {
    route.clear();
    scenario.clear();
    const std::vector<std::string> parts = folders(path);
    for (std::size_t i = 0; i + 1 < parts.size(); ++i) {
        if (iequals(parts[i], "Routes") && i + 2 < parts.size())
            route = parts[i + 1];
        if (iequals(parts[i], "Scenarios") && i + 2 < parts.size())
            scenario = parts[i + 1];
    }
}

ScenarioSummaries readPackedScenarios(const fs::path& archive, const std::string& language) {
    ScenarioSummaries out;
    archives::ZipReader zip;
    if (!zip.open(archive)) {
        out.problems.push_back(zip.error());
        return out;
    }
    // A route's archive lies in the route's folder, and its entries start below that folder.
    const std::string routeFolder = windowsPath(archive.parent_path().string());
    for (const archives::ZipEntry& e : zip.entries()) {
        if (e.folder || e.link || !iendsWith(e.name, "ScenarioProperties.xml"))
            continue;
        const std::string entry = archives::windowsName(e.name);
        const std::string name = entry.substr(entry.rfind('\\') == std::string::npos ? 0 : entry.rfind('\\') + 1);
        if (!iequals(name, "ScenarioProperties.xml"))
            continue;
        std::string text;
        if (const archives::ReadResult r = zip.readAll(e.index, text, kPropertiesLimit); !r) {
            out.problems.push_back(r.message);
            continue;
        }
        addDocument(out, text, archive, entry, routeFolder + "\\" + entry, language);
    }
    return out;
}

ScenarioSummaries readScenarioProperties(const fs::path& file, const std::string& language) {
    ScenarioSummaries out;
    std::error_code ec;
    if (!fs::is_regular_file(file, ec)) {
        out.problems.push_back(file.string() + ": the file cannot be read");
        return out;
    }
    addDocument(out, ReadTextFile(file), file, {}, file.string(), language);
    return out;
}

} // namespace velmora::scenarios
