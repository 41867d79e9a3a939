// Scenarios from the command line: the list of a route, one scenario's fields and consists, the
// field changes saved as the editor saves them, saved copies and empty consists.

#include "scenarioargs.h"
#include "session.h"

#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/scenarios/scenario.h"
#include "velmora/scenarios/scenariolist.h"
#include "velmora/scenarios/consistedit.h"
#include "velmora/scenarios/consistfields.h"
#include "velmora/scenarios/indexstock.h"
#include "velmora/scenarios/scenariosave.h"
#include "velmora/scenarios/swap.h"

namespace velmora::cli {

namespace sc = velmora::scenarios;

std::optional<sc::ScenarioRef> scenarioArgument(Session& s, const Arguments& a, std::size_t extra, bool needScenario) {
    const std::size_t wanted = (needScenario ? 2 : 1) + extra;
    if (!a.problem.empty()) {
        s.fail(a.problem);
        return std::nullopt;
    }
    if (a.plain.size() != wanted) {
        s.fail(a.plain.size() < wanted ? "needs " + std::to_string(wanted) + " arguments: the route" +
                                             (needScenario ? ", the scenario (folder or name)" : std::string()) +
                                             (extra ? " and a file name" : "")
                                       : "unexpected argument '" + a.plain[wanted] + "'");
        return std::nullopt;
    }
    s.start();
    if (!s.requireRoot())
        return std::nullopt;
    const auto routes = routes::listRoutes(s.ctx);
    const routes::RouteEntry* route = routes::findRoute(routes, a.plain[0]);
    if (!route) {
        s.fail(routes::routeNotFound(s.ctx, a.plain[0]));
        return std::nullopt;
    }
    if (!needScenario)
        return sc::ScenarioRef{*route, {}, route->path};
    auto found = sc::findScenario(s.ctx, *route, a.plain[1]);
    if (!found)
        s.fail("no scenario with the folder or name '" + a.plain[1] + "' in " + shown(route->name));
    return found;
}

namespace {

void warn(Session& s, const std::vector<std::string>& warnings) {
    for (const auto& w : warnings)
        s.err << "velmora-cli: " << s.g.command << ": " << shown(w) << '\n';
}

std::string jsonBool(bool b) { return b ? "true" : "false"; }

std::string jsonReference(const sc::Reference& r) {
    return "{\"provider\": " + jsonString(r.provider) + ", \"product\": " + jsonString(r.product) +
           ", \"blueprint\": " + jsonString(r.blueprintId) + "}";
}

void showJson(Session& s, const sc::ScenarioRef& ref, const sc::ScenarioDocument& d) {
    const sc::Properties& p = d.properties;
    auto& o = s.out;
    o << "{\n  \"folder\": " << jsonString(ref.scenario.folder) << ",\n  \"name\": " << jsonString(p.displayName)
      << ",\n  \"class\": " << jsonString(p.scenarioClass) << ",\n  \"startTime\": " << jsonString(p.startTime)
      << ",\n  \"season\": " << jsonString(p.season) << ",\n  \"weather\": " << jsonReference(p.weather)
      << ",\n  \"consists\": [";
    for (std::size_t i = 0; i < d.consists.size(); ++i) {
        const sc::Consist& c = d.consists[i];
        o << (i ? "," : "") << "\n    {\"index\": " << i << ", \"service\": " << jsonString(c.serviceName)
          << ", \"playerDriven\": " << jsonBool(c.playerDriver == "1")
          << ", \"serviceClass\": " << jsonString(c.serviceClass) << ", \"vehicles\": [";
        for (std::size_t j = 0; j < c.vehicles.size(); ++j) {
            const sc::Vehicle& v = c.vehicles[j];
            o << (j ? "," : "") << "\n      {\"name\": " << jsonString(v.name)
              << ", \"provider\": " << jsonString(v.blueprint.provider)
              << ", \"product\": " << jsonString(v.blueprint.product)
              << ", \"blueprint\": " << jsonString(v.blueprint.blueprintId)
              << ", \"reskin\": " << (v.reskin.empty() ? std::string("null") : jsonReference(v.reskin))
              << ", \"flipped\": " << jsonBool(v.flipped == "1") << ", \"number\": " << jsonString(v.number)
              << ", \"preloaded\": " << jsonBool(v.preloaded == "eTrue") << ", \"loadable\": " << jsonBool(v.loadable)
              << ", \"startTime\": " << jsonString(v.startTime) << ", \"destination\": " << jsonString(v.destination)
              << ", \"missing\": " << jsonBool(v.missing) << "}";
        }
        o << (c.vehicles.empty() ? "" : "\n    ") << "]}";
    }
    o << (d.consists.empty() ? "" : "\n  ") << "]\n}\n";
}

void showText(Session& s, const sc::ScenarioRef& ref, const sc::ScenarioDocument& d) {
    const sc::Properties& p = d.properties;
    auto& o = s.out;
    o << "Scenario: " << shown(p.displayName) << " (" << ref.scenario.folder << ")\n"
      << "Class: " << sc::classCaption(d.cls()) << '\n'
      << "Description: " << shown(p.description) << '\n'
      << "Briefing: " << shown(p.briefing) << '\n'
      << "Start Time (24 hour): " << p.startTime << '\n'
      << "Duration (mins): " << p.durationMins << '\n'
      << "Day Month Year: " << p.startDD << ' ' << p.startMM << ' ' << p.startYYYY << '\n'
      << "Season: " << p.season << '\n'
      << "Weather: " << shown(p.weather.provider) << '\\' << shown(p.weather.product) << '\\'
      << shown(p.weather.blueprintId) << '\n';
    if (sc::showsAuthor(d.cls()))
        o << "Author: " << shown(p.author) << '\n';
    if (sc::showsStartLocation(d.cls()))
        o << "Start Location(Freeroam): " << shown(p.startLocation) << '\n';
    for (std::size_t i = 0; i < d.consists.size(); ++i) {
        const sc::Consist& c = d.consists[i];
        o << "\nConsist " << i << ": " << shown(c.serviceName) << (c.playerDriver == "1" ? " (driven)" : "")
          << (c.serviceClass.empty() ? "" : ", service class " + c.serviceClass) << ", " << c.vehicles.size()
          << " items\n";
        if (c.vehicles.empty())
            o << "\tEmpty Consist\n";
        for (const sc::Vehicle& v : c.vehicles) {
            o << '\t' << shown(v.name) << '\t' << shown(v.path) << '\t' << v.number
              << (v.flipped == "1" ? "\tReversed" : "\tForward") << (v.preloaded == "eTrue" ? "\tLoaded" : "");
            if (!v.reskin.empty())
                o << "\treskin " << shown(v.reskin.provider) << '\\' << shown(v.reskin.product) << '\\'
                  << shown(v.reskin.blueprintId);
            o << (v.missing ? "\tmissing" : "") << '\n';
        }
    }
    if (!d.missingReport.empty())
        o << '\n' << shown(d.missingReport);
}

sc::ScenarioDocument opened(Session& s, const sc::ScenarioRef& ref, int& code) {
    sc::ScenarioDocument d = sc::openScenario(s.ctx, ref.folder);
    warn(s, d.warnings);
    code = d.ok() ? Success : s.fail(shown(d.error));
    return d;
}

// A scenario opened to be changed: a Quick Drive scenario is refused.
sc::ScenarioDocument editable(Session& s, const sc::ScenarioRef& ref, int& code) {
    sc::ScenarioDocument d = opened(s, ref, code);
    if (code == Success && d.refused)
        code = s.fail("the scenario was not changed");
    return d;
}

int cmdScenarioList(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--json"});
    const auto ref = scenarioArgument(s, a, 0, false);
    if (!ref)
        return Error;
    bool noFolder = false;
    const auto scenarios = routes::listScenarios(s.ctx, ref->route, &noFolder);
    auto copiesOf = [&](const routes::ScenarioEntry& e) {
        std::vector<sc::SavedCopy> copies;
        if (const auto folder = s.ctx.resolver.resolve(ref->route.path, "Scenarios\\" + e.folder))
            for (auto& c : sc::savedCopies(*folder))
                if (!c.document)
                    copies.push_back(std::move(c));
        return copies;
    };
    if (a.has("--json")) {
        s.out << "[";
        for (std::size_t i = 0; i < scenarios.size(); ++i) {
            const auto& e = scenarios[i];
            s.out << (i ? "," : "") << "\n  {\"folder\": " << jsonString(e.folder) << ", \"name\": " << jsonString(e.name)
                  << ", \"class\": " << jsonString(e.scenarioClass) << ", \"legend\": " << jsonString(e.legend())
                  << ", \"saves\": [";
            const auto copies = copiesOf(e);
            for (std::size_t j = 0; j < copies.size(); ++j)
                s.out << (j ? ", " : "") << jsonString(copies[j].name);
            s.out << "]}";
        }
        s.out << (scenarios.empty() ? "" : "\n") << "]\n";
        return Success;
    }
    if (noFolder) {
        s.out << "No Scenarios folder found\n";
        return Success;
    }
    s.out << "No. of Scenarios: " << scenarios.size() << '\n';
    for (const auto& e : scenarios) {
        s.out << e.folder << '\t' << shown(e.name) << '\t' << e.legend();
        for (const auto& c : copiesOf(e))
            s.out << '\t' << c.name;
        s.out << '\n';
    }
    return Success;
}

int cmdScenarioShow(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--json"});
    const auto ref = scenarioArgument(s, a);
    if (!ref)
        return Error;
    int code = Success;
    const sc::ScenarioDocument d = opened(s, *ref, code);
    if (code != Success)
        return code;
    if (a.has("--json"))
        showJson(s, *ref, d);
    else
        showText(s, *ref, d);
    return d.anyMissing() ? ProblemsFound : Success;
}

// The season as the editor's list offers it.
std::optional<std::string> season(const std::string& typed) {
    for (const char* value : {"SEASON_SPRING", "SEASON_SUMMER", "SEASON_AUTUMN", "SEASON_WINTER"})
        if (iequals(typed, value) || iequals(typed, value + 7))
            return std::string(value);
    return std::nullopt;
}

// Applies the options to the fields; an empty result, or the problem with the options.
std::string readOptions(Session& s, const Arguments& a, const sc::ScenarioDocument& d, sc::Fields& f) {
    auto text = [&](const char* option, std::string& field) {
        if (auto v = a.value(option))
            field = documentFromUtf8(*v);
    };
    text("--name", f.displayName);
    text("--description", f.description);
    text("--briefing", f.briefing);
    if (auto v = a.value("--start-time"))
        f.startTime = *v;
    if (auto v = a.value("--duration")) {
        if (!parseNumber(*v) || *parseNumber(*v) < 0)
            return "--duration needs a number of minutes, not '" + *v + "'";
        f.durationMins = *v;
    }
    if (auto v = a.value("--date")) {
        const auto first = v->find('/');
        const auto second = first == std::string::npos ? first : v->find('/', first + 1);
        if (second == std::string::npos || v->find_first_not_of("0123456789/") != std::string::npos)
            return "--date needs DD/MM/YYYY, not '" + *v + "'";
        f.startDD = v->substr(0, first);
        f.startMM = v->substr(first + 1, second - first - 1);
        f.startYYYY = v->substr(second + 1);
    }
    if (auto v = a.value("--season")) {
        const auto value = season(*v);
        if (!value)
            return "--season needs SEASON_SPRING, SEASON_SUMMER, SEASON_AUTUMN or SEASON_WINTER, not '" + *v + "'";
        f.season = *value;
    }
    if (auto v = a.value("--weather")) {
        const auto first = v->find('/');
        const auto second = first == std::string::npos ? first : v->find('/', first + 1);
        if (second == std::string::npos || second + 1 >= v->size())
            return "--weather needs PROVIDER/PRODUCT/PATH, not '" + *v + "'";
        std::string path = v->substr(second + 1);
        for (char& ch : path)
            if (ch == '/')
                ch = '\\';
        if (iendsWith(path, "bin"))
            path.replace(path.size() - 3, 3, "xml");
        f.weather = {documentFromUtf8(v->substr(0, first)), documentFromUtf8(v->substr(first + 1, second - first - 1)),
                     documentFromUtf8(path)};
    }
    if (auto v = a.value("--class")) {
        const auto cls = sc::parseClass(*v);
        if (!cls)
            return "--class needs standard, freeroam, career, tutorial or timetable, not '" + *v + "'";
        if (*cls != d.cls() && s.ctx.ui().ask(sc::kClassChangeWarning, Buttons::OkCancel) != Answer::Ok)
            return "the class was not changed";
        f.cls = *cls;
    }
    if (auto v = a.value("--author")) {
        if (!sc::showsAuthor(f.cls))
            return "the author is kept only in standard and free-roam scenarios";
        f.author = documentFromUtf8(*v);
    }
    if (auto v = a.value("--start-location")) {
        if (!sc::showsStartLocation(f.cls))
            return "the start location is kept only in free-roam scenarios";
        f.startLocation = documentFromUtf8(*v);
    }
    f.changeAllConsists = a.has("--all-consists");
    return {};
}

int cmdScenarioSet(Session& s) {
    const Arguments a = parseArguments(s.g.rest,
                                       {"--name", "--description", "--briefing", "--start-time", "--duration", "--date",
                                        "--season", "--weather", "--class", "--author", "--start-location"},
                                       {"--all-consists"});
    const auto ref = scenarioArgument(s, a);
    if (!ref)
        return Error;
    if (a.options.empty())
        return s.fail("nothing to change: give at least one field option");
    int code = Success;
    const sc::ScenarioDocument d = opened(s, *ref, code);
    if (code != Success)
        return code;
    if (d.refused)
        return s.fail("the scenario was not changed");
    sc::Fields f = sc::fieldsOf(d);
    if (const std::string problem = readOptions(s, a, d, f); !problem.empty())
        return s.fail(problem);
    const sc::SaveResult r = sc::saveScenario(s.ctx, d, f);
    if (!r)
        return s.fail(shown(r.message));
    if (!s.g.quiet) {
        s.out << r.message << '\n';
        for (const auto& b : r.backups)
            s.out << "Backup: " << b.string() << '\n';
    }
    return Success;
}

// A 0-based index as typed; -1 when it is not one.
int indexOf(const std::string& text) {
    if (text.empty() || text.size() > 6 || text.find_first_not_of("0123456789") != std::string::npos)
        return -1;
    return std::stoi(text);
}

// Saves a scenario whose text an editing command changed, its fields as they were read.
int saveEdited(Session& s, const sc::ScenarioDocument& d) {
    const sc::SaveResult r = sc::saveScenario(s.ctx, d, sc::fieldsOf(d));
    if (!r)
        return s.fail(shown(r.message));
    if (!s.g.quiet)
        s.out << r.message << '\n';
    return Success;
}

// The editor's consist fields: a consist's start time, the driven or an AI consist's start speed
// (mph, as the editor asks), an AI consist's trigger distance; then the scenario is saved.
int cmdScenarioConsist(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--start-time", "--start-speed", "--trigger-distance"}, {});
    const auto ref = scenarioArgument(s, a, 1);
    if (!ref)
        return Error;
    const std::string& typed = a.plain[2];
    const int index = indexOf(typed);
    if (index < 0)
        return s.fail("the consist is given by its index, 0 for the first: '" + shown(typed) + "'");
    if (a.options.empty())
        return s.fail("nothing to change: give --start-time, --start-speed or --trigger-distance");
    int code = Success;
    sc::ScenarioDocument d = editable(s, *ref, code);
    if (code != Success)
        return code;
    if (index >= static_cast<int>(d.consists.size()))
        return s.fail("the scenario has " + std::to_string(d.consists.size()) + " consists; there is no consist " + typed);
    auto numberOf = [&](const char* option, double& value) {
        const std::string text = *a.value(option);
        char* end = nullptr;
        value = std::strtod(text.c_str(), &end);
        return !text.empty() && end && *end == '\0' && value >= 0;
    };
    std::string problem;
    if (const auto time = a.value("--start-time"))
        problem = sc::setConsistStartTime(d, index, *time);
    double value = 0;
    if (problem.empty() && a.value("--start-speed")) {
        if (!numberOf("--start-speed", value))
            problem = "--start-speed takes miles an hour, e.g. 25";
        else if (index == d.drivenConsist)
            problem = sc::setDrivenStartSpeed(d, value / sc::kMphPerMetreSecond);
        else
            problem = sc::setAiStartSpeed(d, index, value / sc::kMphPerMetreSecond);
    }
    if (problem.empty() && a.value("--trigger-distance")) {
        if (!numberOf("--trigger-distance", value))
            problem = "--trigger-distance takes metres, e.g. 500";
        else
            problem = sc::setTriggerDistance(d, index, value);
    }
    if (!problem.empty())
        return s.fail(shown(problem) + "; nothing was written");
    return saveEdited(s, d);
}

// The vehicle and consist commands of the editor: which one, and what it needs.
enum class Edit { Number, Duplicate, DeleteVehicle, Flip, Load, Unload, Rename, DeleteConsist, ServiceClass, Drive };

int editScenario(Session& s, Edit edit) {
    const Arguments a = parseArguments(s.g.rest, {"--consist", "--vehicle", "--number", "--name", "--class"}, {});
    const auto ref = scenarioArgument(s, a);
    if (!ref)
        return Error;
    const int consist = indexOf(a.value("--consist").value_or(""));
    if (consist < 0)
        return s.fail("--consist takes the consist's index, 0 for the first (as scenario show prints them)");
    // --vehicle V or V,V,...: the vehicles' indexes within the consist.
    std::vector<int> vehicles;
    const bool needsVehicles = edit <= Edit::Unload;
    if (needsVehicles) {
        std::string list = a.value("--vehicle").value_or("");
        for (std::size_t at = 0; at <= list.size();) {
            const std::size_t comma = std::min(list.find(',', at), list.size());
            const int v = indexOf(list.substr(at, comma - at));
            if (v < 0)
                return s.fail("--vehicle takes the vehicle's index in the consist (0 for the first), or several with commas");
            vehicles.push_back(v);
            at = comma + 1;
        }
    }
    int code = Success;
    sc::ScenarioDocument d = opened(s, *ref, code);
    if (code != Success)
        return code;
    if (d.refused)
        return s.fail("the scenario was not changed");
    if (consist >= static_cast<int>(d.consists.size()))
        return s.fail("the scenario has " + std::to_string(d.consists.size()) + " consists; there is no consist " +
                      std::to_string(consist));
    for (int v : vehicles)
        if (v >= static_cast<int>(d.consists[static_cast<std::size_t>(consist)].vehicles.size()))
            return s.fail("consist " + std::to_string(consist) + " has " +
                          std::to_string(d.consists[static_cast<std::size_t>(consist)].vehicles.size()) +
                          " vehicles; there is no vehicle " + std::to_string(v));
    std::string refused;
    bool deleted = false;
    switch (edit) {
    case Edit::Number:
        if (!a.value("--number") || a.value("--number")->empty())
            return s.fail("--number takes the new running number");
        refused = sc::changeNumbers(d, consist, vehicles, utf8ToCp1252(*a.value("--number")));
        break;
    case Edit::Duplicate: refused = sc::duplicateVehicle(d, consist, vehicles.front()); break;
    case Edit::DeleteVehicle: refused = sc::deleteVehicle(d, consist, vehicles.front()); break;
    case Edit::Flip: refused = sc::flipVehicles(d, consist, vehicles); break;
    case Edit::Load:
    case Edit::Unload: refused = sc::loadVehicles(d, consist, vehicles, edit == Edit::Load); break;
    case Edit::Rename:
        if (!a.value("--name") || a.value("--name")->empty())
            return s.fail("--name takes the consist's new name");
        refused = sc::renameConsist(d, consist, utf8ToCp1252(*a.value("--name")));
        break;
    case Edit::DeleteConsist: refused = sc::deleteConsist(d, consist, deleted); break;
    case Edit::ServiceClass: {
        const int cls = indexOf(a.value("--class").value_or(""));
        if (cls < 0 || cls > 10)
            return s.fail("--class takes the service class's number, 0 (Special) to 10 (International)");
        refused = sc::changeServiceClass(d, consist, cls);
        break;
    }
    case Edit::Drive: refused = sc::driveConsist(d, consist); break;
    }
    if (!refused.empty())
        return s.fail(shown(refused) + "; nothing was written");
    return saveEdited(s, d);
}

// Save Selected Loose Consist: the loose consist's text into FILE (an older file of that name is
// kept as a numbered backup).
int cmdScenarioExportLoose(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--consist", "--to"}, {});
    const auto ref = scenarioArgument(s, a);
    if (!ref)
        return Error;
    const int consist = indexOf(a.value("--consist").value_or(""));
    if (consist < 0 || !a.value("--to") || a.value("--to")->empty())
        return s.fail("needs --consist C (the loose consist's index) and --to FILE");
    int code = Success;
    const sc::ScenarioDocument d = opened(s, *ref, code);
    if (code != Success)
        return code;
    std::string refused;
    const std::string text = sc::looseConsistText(d, consist, refused);
    if (!refused.empty())
        return s.fail(shown(refused));
    const WriteResult written = s.ctx.files().write(fs::path(*a.value("--to")), text);
    if (!written)
        return s.fail(shown(written.message));
    return Success;
}

// Add Previously Saved Loose Consist: FILE's consist behind the first consist, then saved.
int cmdScenarioImportLoose(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {});
    const auto ref = scenarioArgument(s, a, 1);
    if (!ref)
        return Error;
    const fs::path file = a.plain[2];
    if (!FileExists(file))
        return s.fail(file.string() + ": the file does not exist or cannot be read");
    int code = Success;
    sc::ScenarioDocument d = opened(s, *ref, code);
    if (code != Success)
        return code;
    if (const std::string refused = sc::insertLooseConsist(d, ReadTextFile(file)); !refused.empty())
        return s.fail(file.string() + ": " + shown(refused) + "; nothing was written");
    return saveEdited(s, d);
}

} // namespace

std::optional<int> indexOption(Session& s, const Arguments& a, const char* option) {
    const std::string typed = a.value(option).value_or("");
    const int index = indexOf(typed);
    if (index < 0) {
        s.fail(std::string(option) + " takes an index, 0 for the first: '" + shown(typed) + "'");
        return std::nullopt;
    }
    return index;
}

namespace {

// The swaps of the editor: one vehicle, every vehicle of its name in its consist, or every
// vehicle of a name in the scenario; then the scenario is saved.
int cmdScenarioSwap(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--consist", "--vehicle", "--with", "--index-row", "--name"},
                                       {"--keep-numbers", "--all-identical", "--every-consist", "--all-scenarios"});
    const bool all = a.has("--all-scenarios");
    // Every scenario of the route: the scenario the user stands in may be named, or left out.
    const auto ref = all && a.problem.empty() && a.plain.size() == 1 ? scenarioArgument(s, a, 0, false)
                                                                      : scenarioArgument(s, a);
    if (!ref)
        return Error;
    const auto with = a.value("--with");
    if ((!with || with->empty()) == !a.value("--index-row"))
        return s.fail("--with names the stock: a blueprint path below Assets or a full path; or --index-row N, "
                      "the stock of row N of the rolling-stock index (1 for the first)");
    std::optional<int> indexRow;
    if (a.value("--index-row") && !(indexRow = indexOption(s, a, "--index-row")))
        return Error;
    const bool every = a.has("--every-consist") || all;
    const char* const byName = all ? "--all-scenarios" : "--every-consist";
    std::optional<int> consist, vehicle;
    if (every) {
        if (a.has("--every-consist") && all)
            return s.fail("--every-consist and --all-scenarios go alone");
        if (!a.value("--name") || a.value("--name")->empty())
            return s.fail(std::string(byName) + " needs --name, the vehicles' name as 'scenario show' prints it");
        if (a.value("--consist") || a.value("--vehicle") || a.has("--all-identical"))
            return s.fail(std::string(byName) + " takes --name and --with, not --consist, --vehicle or --all-identical");
    } else {
        if (a.value("--name"))
            return s.fail("--name goes with --every-consist or --all-scenarios");
        if (!(consist = indexOption(s, a, "--consist")) || !(vehicle = indexOption(s, a, "--vehicle")))
            return Error;
    }
    std::string problem;
    const auto stock = indexRow ? sc::chooseIndexStockAt(s.ctx, *indexRow, problem) : sc::chooseStock(s.ctx, *with, problem);
    if (!stock)
        return s.fail(shown(problem) + " Nothing was written.");
    if (all)
        return swapInAllScenarios(s, ref->route, *a.value("--name"), *stock, a.has("--keep-numbers"));
    int code = Success;
    sc::ScenarioDocument d = editable(s, *ref, code);
    if (code != Success)
        return code;
    sc::SwapOptions options;
    options.keepNumbers = a.has("--keep-numbers");
    const sc::SwapResult r = every ? sc::swapEveryConsist(s.ctx, d, documentFromUtf8(*a.value("--name")), *stock, options)
                             : a.has("--all-identical") ? sc::swapIdentical(s.ctx, d, *consist, *vehicle, *stock, options)
                                                        : sc::swapVehicle(s.ctx, d, *consist, *vehicle, *stock, options);
    if (!r.ok())
        return s.fail(shown(r.error) + " Nothing was written.");
    if (r.swapped == 0)
        return s.fail("no vehicle is named '" + shown(a.value("--name").value_or("")) + "'; nothing was written");
    const sc::SaveResult saved = sc::saveScenario(s.ctx, d, sc::fieldsOf(d));
    if (!saved)
        return s.fail(shown(saved.message));
    if (!s.g.quiet)
        s.out << (every ? sc::kAllSwapped : sc::kConsistSwapped) << '\n'
              << r.swapped << (r.swapped == 1 ? " vehicle" : " vehicles") << " swapped for " << shown(stock->name) << '\n'
              << saved.message << '\n';
    return Success;
}

int cmdScenarioSaves(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--json"});
    const auto ref = scenarioArgument(s, a);
    if (!ref)
        return Error;
    const auto copies = sc::savedCopies(ref->folder);
    if (a.has("--json")) {
        s.out << "[";
        for (std::size_t i = 0; i < copies.size(); ++i)
            s.out << (i ? "," : "") << "\n  {\"file\": " << jsonString(copies[i].name)
                  << ", \"md5\": " << jsonBool(copies[i].md5) << ", \"document\": " << jsonBool(copies[i].document) << "}";
        s.out << (copies.empty() ? "" : "\n") << "]\n";
        return Success;
    }
    s.out << "Saved Copies of Selected Scenario\n";
    for (const auto& c : copies)
        s.out << c.name << (c.md5 ? "\t.MD5" : "") << '\n';
    return Success;
}

int cmdScenarioSaveAs(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {});
    const auto ref = scenarioArgument(s, a, 1);
    return ref ? finish(s, sc::saveCurrentSaveAs(s.ctx, ref->folder, a.plain[2])) : Error;
}

int cmdScenarioOverwriteSave(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {});
    const auto ref = scenarioArgument(s, a, 1);
    return ref ? finish(s, sc::overwriteCurrentSave(s.ctx, ref->folder, a.plain[2])) : Error;
}

int cmdScenarioDeleteSave(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {});
    const auto ref = scenarioArgument(s, a);
    if (!ref)
        return Error;
    // The save is kept as a numbered backup, and undo brings it back; still, ask first.
    if (s.ctx.ui().ask("This operation will delete your CurrentSave.bin file for this Scenario.\nProceed?",
                       Buttons::YesNo) != Answer::Yes)
        return s.fail("CurrentSave.bin was not deleted");
    return finish(s, sc::deleteCurrentSave(s.ctx, ref->folder));
}

int cmdScenarioRemoveEmpty(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {});
    const auto ref = scenarioArgument(s, a);
    return ref ? finish(s, sc::removeEmptyConsists(s.ctx, ref->folder)) : Error;
}

} // namespace

sc::ScenarioDocument openedScenario(Session& s, const sc::ScenarioRef& ref, int& code) { return opened(s, ref, code); }

int finish(Session& s, const sc::CommandResult& r) {
    if (!r)
        return s.fail(shown(r.message));
    if (!s.g.quiet)
        s.out << shown(r.message) << '\n';
    return Success;
}

std::vector<Command> scenarioCommands() {
    return {
        {"scenario list", "ROUTE [--json]", "the route's scenarios with folder, name, class and saved copies",
         cmdScenarioList},
        {"scenario show", "ROUTE SCENARIO [--json]",
         "a scenario's fields, consists and vehicles (exit 1 if a vehicle's blueprint is missing)", cmdScenarioShow},
        {"scenario set",
         "ROUTE SCENARIO [--name T] [--description T] [--briefing T] [--start-time HHMM] [--duration MIN] "
         "[--date DD/MM/YYYY] [--season S] [--weather PROVIDER/PRODUCT/PATH] [--class C] [--author A] "
         "[--start-location T] [--all-consists]",
         "changes the fields and saves both documents with their backups", cmdScenarioSet},
        {"scenario consist", "ROUTE SCENARIO INDEX [--start-time HHMM] [--start-speed MPH] [--trigger-distance M]",
         "changes a consist's start time, start speed or trigger distance and saves the scenario", cmdScenarioConsist},
        {"scenario number", "ROUTE SCENARIO --consist C --vehicle V[,V...] --number N",
         "new running numbers (the next vehicles' related), then the scenario is saved",
         [](Session& s) { return editScenario(s, Edit::Number); }},
        {"scenario duplicate", "ROUTE SCENARIO --consist C --vehicle V", "a copy of the vehicle behind it, number plus 3",
         [](Session& s) { return editScenario(s, Edit::Duplicate); }},
        {"scenario delete-vehicle", "ROUTE SCENARIO --consist C --vehicle V", "takes the vehicle out of its consist",
         [](Session& s) { return editScenario(s, Edit::DeleteVehicle); }},
        {"scenario flip", "ROUTE SCENARIO --consist C --vehicle V[,V...]", "turns the vehicles round",
         [](Session& s) { return editScenario(s, Edit::Flip); }},
        {"scenario load", "ROUTE SCENARIO --consist C --vehicle V[,V...]", "loads the wagons",
         [](Session& s) { return editScenario(s, Edit::Load); }},
        {"scenario unload", "ROUTE SCENARIO --consist C --vehicle V[,V...]", "unloads the wagons",
         [](Session& s) { return editScenario(s, Edit::Unload); }},
        {"scenario rename-consist", "ROUTE SCENARIO --consist C --name T", "a new service name, in every language",
         [](Session& s) { return editScenario(s, Edit::Rename); }},
        {"scenario delete-consist", "ROUTE SCENARIO --consist C", "takes the consist out of the scenario",
         [](Session& s) { return editScenario(s, Edit::DeleteConsist); }},
        {"scenario service-class", "ROUTE SCENARIO --consist C --class N", "the consist's service class (0 to 10)",
         [](Session& s) { return editScenario(s, Edit::ServiceClass); }},
        {"scenario drive", "ROUTE SCENARIO --consist C", "makes the consist the one the player drives",
         [](Session& s) { return editScenario(s, Edit::Drive); }},
        {"scenario export-loose", "ROUTE SCENARIO --consist C --to FILE", "saves a loose consist to a file",
         cmdScenarioExportLoose},
        {"scenario import-loose", "ROUTE SCENARIO FILE", "inserts a saved loose consist, then saves the scenario",
         cmdScenarioImportLoose},
        {"scenario swap",
         "ROUTE SCENARIO --consist C --vehicle V [--all-identical] (--with STOCK | --index-row N) [--keep-numbers] | "
         "--every-consist --name NAME (--with STOCK | --index-row N) [--keep-numbers] | "
         "ROUTE [SCENARIO] --all-scenarios --name NAME (--with STOCK | --index-row N) [--keep-numbers]",
         "swaps one vehicle, its like in the consist, or every vehicle of a name (in the scenario or in every "
         "scenario of the route) for other stock and saves",
         cmdScenarioSwap},
        {"scenario saves", "ROUTE SCENARIO [--json]", "the saved copies (.bin files) of a scenario", cmdScenarioSaves},
        {"scenario save-as", "ROUTE SCENARIO NAME", "copies CurrentSave.bin (and its .MD5) to NAME", cmdScenarioSaveAs},
        {"scenario overwrite-save", "ROUTE SCENARIO FILE", "replaces CurrentSave.bin (and its .MD5) by a saved copy",
         cmdScenarioOverwriteSave},
        {"scenario delete-save", "ROUTE SCENARIO [--yes]",
         "deletes CurrentSave.bin and its .MD5, keeping both as numbered backups (asks first)", cmdScenarioDeleteSave},
        {"scenario remove-empty-consists", "ROUTE SCENARIO", "removes the consists that hold no rail vehicle",
         cmdScenarioRemoveEmpty},
    };
}

} // namespace velmora::cli
