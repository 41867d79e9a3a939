// ScenarioProperties.xml: the classes, GetName, the forward reading of the fields, the weather
// folder.

#include "velmora/scenarios/scenario.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/paths.h"
#include "velmora/core/services.h"
#include "velmora/core/xmltext.h"
#include "velmora/routes/routes.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace velmora::scenarios {

const char* const kQuickDriveRefusal = "This is a Quick Drive scenario\nIt can't be edited by the user.";
const char* const kCareerWarning = "This is a Career Scenario and may not work if edited.\n"
                                   "If it is a cloned career scenario, you may edit\n"
                                   "it to change it to a Standard scenario.";

namespace {

struct ClassRow {
    ScenarioClass cls;
    const char* value;
    const char* caption;
    const char* word;
};

constexpr ClassRow kClasses[] = {
    {ScenarioClass::Standard, "eStandardScenarioClass", "Standard Scenario", "standard"},
    {ScenarioClass::FreeRoam, "eFreeRoamScenarioClass", "FreeRoam Scenario", "freeroam"},
    {ScenarioClass::Career, "eCareerScenarioClass", "Career Scenario", "career"},
    {ScenarioClass::Tutorial, "eTutorialScenarioClass", "Tutorial Scenario", "tutorial"},
    {ScenarioClass::Timetable, "eTimetableScenarioClass", "Timetable Scenario", "timetable"},
    {ScenarioClass::QuickDrive, "eTemplateScenarioClass", "Quick Drive", "quickdrive"},
};

const ScanSettings kExact{Match::Binary};

// A path component that leaves the folder it is read in.
bool leadsOut(std::string_view component) { return component == ".." || component == "."; }

} // namespace

ScenarioClass classOf(std::string_view value) {
    for (const auto& row : kClasses)
        if (value == row.value)
            return row.cls;
    return ScenarioClass::Unknown;
}

std::string classValue(ScenarioClass c) {
    for (const auto& row : kClasses)
        if (row.cls == c)
            return row.value;
    return {};
}

std::string classCaption(ScenarioClass c) {
    for (const auto& row : kClasses)
        if (row.cls == c)
            return row.caption;
    return {};
}

std::optional<ScenarioClass> parseClass(std::string_view typed) {
    for (const auto& row : kClasses) {
        if (row.cls == ScenarioClass::QuickDrive)
            continue; // not one of the editor's choices
        if (iequals(typed, row.value) || iequals(typed, row.caption) || iequals(typed, row.word))
            return row.cls;
    }
    return std::nullopt;
}

bool showsAuthor(ScenarioClass c) { return c == ScenarioClass::Standard || c == ScenarioClass::FreeRoam; }
bool showsStartLocation(ScenarioClass c) { return c == ScenarioClass::FreeRoam; }

std::string GetName(std::string_view text, std::size_t pos, const std::string& language) {
    return routes::localisedName(text, pos, language.empty() ? std::string("English") : language);
}

std::string hhmm(std::string_view seconds) {
    const double value = std::atof(std::string(seconds).c_str());
    const long hours = static_cast<long>(std::floor(value / 3600));
    const long minutes = (std::lround(value) % 3600) / 60;
    char buf[32];
    std::snprintf(buf, sizeof buf, "%02ld%02ld", hours, minutes);
    return buf;
}

Properties readProperties(const std::string& text, const std::string& language, const fs::path& file,
                          std::string& error) {
    Properties p;
    auto fault = [&](const std::string& tag) {
        error = file.string() + ": the tag " + tag +
                " is missing or out of order. The tags must stand in this order: DisplayName, Description, "
                "Briefing, ScenarioClass, StartTime, DurationMins, StartDD, StartMM, StartYYYY, Season, "
                "Provider, Product, BlueprintID.";
        return p;
    };
    std::size_t pos = 1;
    for (auto [tag, out] : {std::pair{"DisplayName", &p.displayName}, std::pair{"Description", &p.description},
                            std::pair{"Briefing", &p.briefing}}) {
        const std::size_t at = InStr(pos, text, std::string("<") + tag + ">", Match::Binary);
        const std::size_t end = at ? InStr(at, text, std::string("</") + tag + ">", Match::Binary) : 0;
        if (!end)
            return fault(tag);
        *out = DecodedChars(GetName(std::string_view(text).substr(0, end), at, language));
        pos = end;
    }
    struct Field {
        const char* tag;
        std::string* value;
    };
    const Field fields[] = {{"ScenarioClass", &p.scenarioClass}, {"StartTime", &p.startTimeRaw},
                            {"DurationMins", &p.durationMins},   {"StartDD", &p.startDD},
                            {"StartMM", &p.startMM},             {"StartYYYY", &p.startYYYY},
                            {"Season", &p.season},               {"Provider", &p.weather.provider},
                            {"Product", &p.weather.product},     {"BlueprintID", &p.weather.blueprintId}};
    for (const Field& f : fields) {
        GetDetail(text, pos, f.tag, *f.value, kExact);
        if (!pos)
            return fault(f.tag);
    }
    p.startTime = hhmm(p.startTimeRaw);
    const ScenarioClass cls = classOf(p.scenarioClass);
    if (showsAuthor(cls)) {
        if (const std::size_t at = InStr(1, text, "<Author d", Match::Binary); at) {
            std::size_t from = at > 10 ? at - 10 : 1;
            GetDetail(text, from, "Author", p.author, kExact);
        }
    }
    if (showsStartLocation(cls)) {
        if (std::size_t at = InStr(1, text, "<StartLocation>", Match::Binary); at) {
            GetDetail(text, at, "English", p.startLocation, kExact);
            DecodeChars(p.startLocation);
        }
    }
    return p;
}

std::optional<fs::path> weatherFolder(AppContext& ctx, const Reference& weather) {
    if (weather.provider.empty() || weather.product.empty())
        return std::nullopt;
    for (const std::string& part : {weather.provider, weather.product})
        for (const auto& c : splitDocumentPath(part))
            if (leadsOut(c))
                return std::nullopt;
    const auto product = ctx.resolver.resolve(ctx.railWorks() / "Assets", weather.provider + "\\" + weather.product);
    if (!product)
        return std::nullopt;
    for (const char* sub : {"Weather", "Environment\\Weather"})
        if (auto folder = ctx.resolver.resolve(*product, sub); folder && fs::is_directory(*folder))
            return folder;
    return std::nullopt;
}

} // namespace velmora::scenarios
