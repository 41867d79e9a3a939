// Edits of whole routes and scenarios from the command line: the track's height and speed
// limits, clones, deletion and blank terrain.

#include "session.h"

#include "velmora/routes/providers.h"
#include "velmora/routes/routeedits.h"
#include "velmora/scenarios/scenariolist.h"

#include <algorithm>
#include <charconv>

namespace velmora::cli {

std::optional<routes::RouteEntry> routeArgument(Session& s, const std::string& which) {
    s.start();
    if (!s.requireRoot())
        return std::nullopt;
    const auto found = routes::listRoutes(s.ctx);
    if (const routes::RouteEntry* route = routes::findRoute(found, which))
        return *route;
    std::error_code ec;
    const fs::path asPath(which);
    if (fs::is_directory(asPath, ec) && !fs::exists(asPath / "RouteProperties.xml", ec))
        s.fail(asPath.string() + ": is not a route, it has no RouteProperties.xml");
    else
        s.fail(routes::routeNotFound(s.ctx, which));
    return std::nullopt;
}

namespace {

// The route named by the first plain argument; at least `least` plain arguments, at most `most`.
// Null after saying why. A folder that exists but is no route is named as such.
std::optional<routes::RouteEntry> editedRoute(Session& s, const Arguments& a, std::size_t least, std::size_t most) {
    if (!a.problem.empty()) {
        s.fail(a.problem);
        return std::nullopt;
    }
    if (a.plain.size() < least || a.plain.size() > most) {
        s.fail(a.plain.size() < least ? (least == 1 ? std::string("needs the route: its folder or its name")
                                                    : "needs the route and the scenario(s)")
                                      : "unexpected argument '" + a.plain[most] + "'");
        return std::nullopt;
    }
    return routeArgument(s, a.plain.front());
}

std::optional<double> metres(Session& s, const Arguments& a, const char* option) {
    const auto text = a.value(option);
    if (!text)
        return std::nullopt;
    double value = 0;
    const char* begin = text->data() + (!text->empty() && text->front() == '+');
    const auto [end, ec] = std::from_chars(begin, text->data() + text->size(), value);
    if (text->empty() || ec != std::errc() || end != text->data() + text->size()) {
        s.fail(std::string(option) + ": '" + *text + "' is not a number of metres");
        return std::nullopt;
    }
    return value;
}

// What an edit did, file by file, then its message; warnings on standard error. With --json one
// object: ok, dryRun, count, files, lines, warnings, made and message.
int report(Session& s, const routes::EditReport& r, bool dryRun) {
    for (const auto& w : r.warnings)
        s.err << "velmora-cli: " << s.g.command << ": " << shown(w) << '\n';
    if (!r.ok)
        return s.fail(shown(r.message));
    if (std::find(s.g.rest.begin(), s.g.rest.end(), "--json") != s.g.rest.end()) {
        auto list = [](const std::vector<std::string>& items) {
            std::string out = "[";
            for (std::size_t i = 0; i < items.size(); ++i)
                out += (i ? ", " : "") + jsonString(items[i]);
            return out + "]";
        };
        std::vector<std::string> files;
        for (const auto& f : r.files)
            files.push_back(f.string());
        s.out << "{\"ok\": true, \"dryRun\": " << (dryRun ? "true" : "false") << ", \"count\": " << r.count
              << ",\n \"files\": " << list(files) << ",\n \"lines\": " << list(r.lines)
              << ",\n \"warnings\": " << list(r.warnings) << ",\n \"made\": " << jsonString(r.made)
              << ", \"message\": " << jsonString(r.message) << "}\n";
        return Success;
    }
    for (const auto& line : r.lines)
        s.out << shown(line) << '\n';
    if (dryRun)
        s.out << "Dry run: " << r.files.size() << " file(s), " << r.count << " change(s); nothing was written.\n";
    else if (!r.message.empty())
        s.out << shown(r.message) << '\n';
    if (!r.made.empty())
        s.out << (dryRun ? "Would be made: " : "Made: ") << r.made << '\n';
    return Success;
}

bool confirmed(Session& s, const std::string& question, bool dryRun) {
    return dryRun || s.ctx.ui().ask(question, Buttons::YesNo) == Answer::Yes;
}

int cmdRaiseTrack(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--by", "--trackside"}, {"--dry-run", "--json"});
    const auto route = editedRoute(s, a, 1, 1);
    if (!route)
        return Error;
    if (!a.value("--by"))
        return s.fail("needs --by METRES, the amount to raise (or, below zero, lower) the track by");
    routes::TrackAdjust adjust;
    const auto by = metres(s, a, "--by");
    if (!by)
        return Error;
    adjust.track = *by;
    if (a.value("--trackside")) {
        adjust.trackside = metres(s, a, "--trackside");
        if (!adjust.trackside)
            return Error;
    }
    adjust.dryRun = a.has("--dry-run");
    if (!confirmed(s,
                   "This changes the height of every piece of track in the route. It is meant for routes where the "
                   "track type was changed and the new track is sunken into the terrain or floating above it.\nProceed?",
                   adjust.dryRun))
        return s.fail("the track was not changed");
    return report(s, routes::raiseTrack(s.ctx, *route, adjust), adjust.dryRun);
}

int cmdSpeedLimits(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--limit", "--primary", "--secondary"}, {"--dry-run", "--json"});
    const auto route = editedRoute(s, a, 1, 1);
    if (!route)
        return Error;
    routes::SpeedLimits limits;
    limits.primary = a.value("--primary").value_or(a.value("--limit").value_or(""));
    limits.secondary = a.value("--secondary").value_or(a.value("--limit").value_or(""));
    if (limits.primary.empty() || limits.secondary.empty())
        return s.fail("needs --limit N, or --primary N and --secondary N");
    limits.dryRun = a.has("--dry-run");
    return report(s, routes::setSpeedLimits(s.ctx, *route, limits), limits.dryRun);
}

int cmdRouteClone(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--as", "--into"}, {"--dry-run", "--json"});
    const auto route = editedRoute(s, a, 1, 1);
    if (!route)
        return Error;
    routes::CloneOptions options;
    options.name = a.value("--as").value_or("");
    if (options.name.empty())
        return s.fail("needs --as NAME: You have not selected a new name for your cloned route?");
    if (const auto into = a.value("--into"))
        options.parent = fs::path(*into);
    options.dryRun = a.has("--dry-run");
    return report(s, routes::cloneRoute(s.ctx, *route, options), options.dryRun);
}

int cmdScenarioClone(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--as"}, {"--dry-run", "--json", "--standard", "--keep-class"});
    const auto route = editedRoute(s, a, 2, 2);
    if (!route)
        return Error;
    const auto ref = scenarios::findScenario(s.ctx, *route, a.plain[1]);
    if (!ref)
        return s.fail("no scenario with the folder or name '" + a.plain[1] + "' in " + shown(route->name));
    routes::CloneOptions options;
    options.name = a.value("--as").value_or("");
    if (options.name.empty())
        return s.fail("needs --as NAME: You have not selected a new name for your cloned scenario?");
    options.dryRun = a.has("--dry-run");
    const routes::ScenarioKind kind = routes::scenarioKind(s.ctx, *route, ref->scenario);
    auto answer = [&](const std::string& question) {
        if (a.has("--standard") || a.has("--keep-class"))
            return a.has("--standard");
        return s.ctx.ui().ask(question, Buttons::YesNo) == Answer::Yes;
    };
    if (kind.career)
        options.careerToStandard = answer("This is a Career Scenario, do you wish to  clone it\nas a Standard Scenario?");
    if (kind.workshop)
        options.workshopToStandard = answer("This is a Workshop scenario, do you wish to\nconvert it to a Standard scenario?");
    return report(s, routes::cloneScenario(s.ctx, *route, ref->scenario, options), options.dryRun);
}

int cmdRouteDelete(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--dry-run", "--json", "--permanently"});
    const auto route = editedRoute(s, a, 1, 1);
    if (!route)
        return Error;
    const bool dryRun = a.has("--dry-run");
    if (!confirmed(s, "Do you really wish to delete the selected route?", dryRun))
        return s.fail("the route was not deleted");
    return report(s, routes::deleteRoute(s.ctx, *route, a.has("--permanently"), dryRun), dryRun);
}

int cmdScenarioDelete(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--dry-run", "--json", "--permanently"});
    const auto route = editedRoute(s, a, 2, 1000);
    if (!route)
        return Error;
    std::vector<routes::ScenarioEntry> chosen;
    for (std::size_t i = 1; i < a.plain.size(); ++i) {
        const auto ref = scenarios::findScenario(s.ctx, *route, a.plain[i]);
        if (!ref)
            return s.fail("no scenario with the folder or name '" + a.plain[i] + "' in " + shown(route->name));
        chosen.push_back(ref->scenario);
    }
    const bool dryRun = a.has("--dry-run");
    if (!confirmed(s, "Do you really wish to delete the selected scenario(s)?", dryRun))
        return s.fail("no scenario was deleted");
    return report(s, routes::deleteScenarios(s.ctx, *route, chosen, a.has("--permanently"), dryRun), dryRun);
}

int cmdBlankTerrain(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--dry-run", "--json"});
    const auto route = editedRoute(s, a, 1, 100000);
    if (!route)
        return Error;
    const bool dryRun = a.has("--dry-run");
    if (!confirmed(s, "Do you really wish to remove terrain textures?", dryRun))
        return s.fail("the terrain textures were not changed");
    const std::vector<std::string> files(a.plain.begin() + 1, a.plain.end());
    return report(s, routes::blankTerrain(s.ctx, *route, files, dryRun), dryRun);
}

int cmdUpdateProviders(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {"--dry-run", "--json", "--missing"});
    const auto route = editedRoute(s, a, 1, 100000);
    if (!route)
        return Error;
    if (a.has("--missing")) {
        const auto missing = routes::missingProductFolders(s.ctx, *route);
        if (!missing.empty())
            s.out << "The following folders listed in RouteProperties.xml don't exist in Assets\n";
        for (const auto& m : missing)
            s.out << shown(m) << '\n';
        return Success;
    }
    std::vector<routes::ProductPair> pairs;
    for (std::size_t i = 1; i < a.plain.size(); ++i) {
        std::string pair = a.plain[i];
        std::replace(pair.begin(), pair.end(), '/', '\\');
        const std::size_t slash = pair.find('\\');
        if (slash == std::string::npos || slash == 0 || slash + 1 == pair.size() || pair.find('\\', slash + 1) != std::string::npos)
            return s.fail("'" + a.plain[i] + "' is no PROVIDER/PRODUCT pair");
        pairs.emplace_back(pair.substr(0, slash), pair.substr(slash + 1));
    }
    if (pairs.empty())
        return s.fail("needs the PROVIDER/PRODUCT pairs the route is to preload, or --missing");
    const bool dryRun = a.has("--dry-run");
    return report(s, routes::updateProviders(s.ctx, *route, pairs, dryRun), dryRun);
}

} // namespace

std::vector<Command> routeEditCommands() {
    return {
        {"route raise-track", "ROUTE --by METRES [--trackside METRES] [--dry-run] [--yes]",
         "raises (or lowers) every track height in Networks\\Tracks.bin, and the trackside objects", cmdRaiseTrack, true,
         "--by adds the metres to every _height (four decimals); --trackside adds its metres to the Height of the "
         "objects on the track. Tracks.bin is kept as its numbered backup."},
        {"route speed-limits", "ROUTE (--limit N | --primary N --secondary N) [--dry-run]",
         "sets the Primary and Secondary of every speed limit in Networks\\Tracks.bin", cmdSpeedLimits},
        {"route clone", "ROUTE --as NAME [--into FOLDER] [--dry-run]",
         "copies the route under a new identity and name; each scenario gets a new identity", cmdRouteClone, true,
         "The clone goes in the routes folder as its new GUID, or below --into. Links and pipes are named and not "
         "copied; a scenario folder without ScenarioProperties.xml is left out."},
        {"scenario clone", "ROUTE SCENARIO --as NAME [--standard | --keep-class] [--dry-run]",
         "copies the scenario under a new identity and name", cmdScenarioClone, true,
         "A career or workshop scenario asks whether the clone becomes a standard one; --standard answers yes, "
         "--keep-class no. The clone keeps the old properties as ScenarioProperties.xml.bak and no .MD5."},
        {"route delete", "ROUTE [--permanently] [--dry-run] [--yes]",
         "moves the route's folder to the Deleted folder (undo brings it back); asks first", cmdRouteDelete},
        {"scenario delete", "ROUTE SCENARIO... [--permanently] [--dry-run] [--yes]",
         "moves the scenarios' folders to the Deleted folder (undo brings them back); asks first", cmdScenarioDelete},
        {"route blank-terrain", "ROUTE [TILE...] [--dry-run] [--yes]",
         "removes the terrain textures of the route's MixMap files (all, or those named) with Templates\\BlankTerrain.txt",
         cmdBlankTerrain},
        {"route update-providers", "ROUTE (PROVIDER/PRODUCT... [--dry-run] | --missing)",
         "replaces the Provider/Product list RouteProperties.xml preloads; --missing names those not below Assets",
         cmdUpdateProviders},
    };
}

} // namespace velmora::cli
