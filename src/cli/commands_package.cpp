// Packages for distribution from the command line: a route, its assets, scenarios, asset
// folders and reskins, each into a folder below the program's folder (or --to DIR), zipped on
// request, with a report of what was copied, left out and missing.

#include "session.h"
#include "velmora/core/textboundary.h"
#include "velmora/packaging/packaging.h"

namespace velmora::cli {

namespace {

const std::vector<std::string> kValues = {"--to", "--original"};
const std::vector<std::string> kFlags = {"--zip", "--json", "--with-assets"};

packaging::PackageOptions optionsOf(const Arguments& a) {
    packaging::PackageOptions o;
    if (const auto to = a.value("--to"))
        o.base = fs::absolute(*to);
    return o;
}

// The report, the zip when asked, and the exit code: an error when the package was refused or
// stopped, problems found when a file could not be copied or read.
int finish(Session& s, const Arguments& a, packaging::PackageReport r) {
    if (!r.ok()) {
        if (a.has("--json"))
            s.out << r.json();
        return s.fail(r.refused.empty() ? "stopped: nothing of this run was put in the package" : r.refused);
    }
    if (a.has("--zip"))
        packaging::zipPackage(s.ctx, r, &s.ui);
    if (a.has("--json"))
        s.out << r.json();
    else if (!s.g.quiet)
        s.out << shown(r.text());
    for (const auto& p : r.problems)
        s.err << "velmora-cli: " << s.g.command << ": " << shown(p) << '\n';
    return r.problems.empty() ? Success : ProblemsFound;
}

// The route with its assets (--with-assets), or its assets alone.
int routePackage(Session& s, bool assetsOnly) {
    const Arguments a =
        parseArguments(s.g.rest, kValues, assetsOnly ? std::vector<std::string>{"--zip", "--json"} : kFlags);
    if (!a.problem.empty() || a.plain.size() != 1)
        return s.fail(!a.problem.empty() ? a.problem : "needs the route: its folder or its name");
    const auto route = routeArgument(s, a.plain.front());
    if (!route)
        return Error;
    packaging::PackageState state;
    const auto options = optionsOf(a);
    return finish(
        s, a,
        assetsOnly ? packaging::packageRouteAssets(s.ctx, *route, state, options, &s.ui)
                   : packaging::packageRoute(s.ctx, *route, state, options, &s.ui, a.has("--with-assets")));
}

int cmdPackageRoute(Session& s) {
    return routePackage(s, false);
}
int cmdPackageRouteAssets(Session& s) {
    return routePackage(s, true);
}

int cmdPackageScenarios(Session& s) {
    const Arguments a = parseArguments(s.g.rest, kValues, {"--zip", "--json"});
    if (!a.problem.empty() || a.plain.size() < 2)
        return s.fail(!a.problem.empty() ? a.problem
                                         : "needs the route and at least one scenario (folder or name)");
    const auto route = routeArgument(s, a.plain.front());
    if (!route)
        return Error;
    const auto scenarios = routes::listScenarios(s.ctx, *route);
    packaging::PackageState state;
    packaging::ScenarioPackage package(s.ctx, state);
    for (std::size_t i = 1; i < a.plain.size(); ++i) {
        const std::string& which = a.plain[i];
        const auto found =
            std::find_if(scenarios.begin(), scenarios.end(), [&](const routes::ScenarioEntry& e) {
                return e.folder == which || sameName(e.name, which);
            });
        if (found == scenarios.end())
            return s.fail("no scenario with the folder or name '" + which + "' in " + shown(route->name));
        const std::string said = package.add(*route, *found, &s.ui);
        if (said != "Scenario Added - Add another or click Process to finish.")
            return s.fail(said);
    }
    return finish(s, a, package.process(optionsOf(a), &s.ui));
}

int cmdPackageAssets(Session& s) {
    const Arguments a = parseArguments(s.g.rest, kValues, {"--zip", "--json"});
    if (!a.problem.empty() || a.plain.empty())
        return s.fail(!a.problem.empty() ? a.problem : "needs at least one asset folder");
    s.start();
    if (!s.requireRoot())
        return Error;
    packaging::PackageState state;
    packaging::AssetPackage package(s.ctx, state);
    for (const auto& folder : a.plain)
        if (const std::string problem = package.add(fs::absolute(folder)); !problem.empty())
            return s.fail(problem);
    return finish(s, a, package.process(optionsOf(a), &s.ui));
}

int cmdPackageReskins(Session& s) {
    const Arguments a = parseArguments(s.g.rest, kValues, {"--zip", "--json"});
    if (!a.problem.empty() || a.plain.size() != 1)
        return s.fail(!a.problem.empty() ? a.problem : "needs the reskin's folder");
    const auto original = a.value("--original");
    if (!original)
        return s.fail(
            "You do not appear to have selected the folder of your Original object. (--original FOLDER)");
    s.start();
    if (!s.requireRoot())
        return Error;
    packaging::PackageState state;
    return finish(s, a,
                  packaging::packageReskin(s.ctx, fs::absolute(a.plain.front()), fs::absolute(*original),
                                           state, optionsOf(a), &s.ui));
}

const char* const kPackageHelp =
    "The package is made in <program folder>/<package name> (or DIR/<package name> with --to), mirroring the "
    "simulator's root below RailWorks, with VL_RouteSetup.exe or VL_AssetSetup.exe when the installer lies "
    "in the "
    "program's folder, and PackageContents.txt listing every file with its size and SHA-256. A package "
    "folder inside "
    "the simulator's folder, or one without room, is refused before anything is copied. --zip makes "
    "<package>.zip "
    "beside it. --json gives {\"folder\", \"copied\", \"unchanged\", \"written\", \"leftOut\", \"missing\", "
    "\"problems\", \"notes\", \"bytes\", \"files\", \"check\", \"zip\"}. One undo takes the package back. "
    "Exit 2 when "
    "refused, 1 when a file could not be copied.";

} // namespace

std::vector<Command> packageCommands() {
    return {
        {"package route", "ROUTE [--to DIR] [--zip] [--with-assets] [--json]",
         "packages a route folder with its template (and, --with-assets, the assets its check's reports "
         "name)",
         cmdPackageRoute, true, kPackageHelp},
        {"package route-assets", "ROUTE [--to DIR] [--zip] [--json]",
         "packages the assets a route uses, from the four reports of its check (route check --deep)",
         cmdPackageRouteAssets, true, kPackageHelp},
        {"package scenarios", "ROUTE SCENARIO... [--to DIR] [--zip] [--json]",
         "packages scenarios of a route with Scenario.yyy and the stock list Scenario.qqq",
         cmdPackageScenarios, true, kPackageHelp},
        {"package assets", "FOLDER... [--to DIR] [--zip] [--json]",
         "packages asset folders with AssetSetup.ggg and Scenario.yyy", cmdPackageAssets, true, kPackageHelp},
        {"package reskins", "RESKIN_FOLDER --original FOLDER [--to DIR] [--zip] [--json]",
         "packages a reskin without the files equal to its original's, with InstallMe.bat and ReadMe.txt",
         cmdPackageReskins, true, kPackageHelp},
    };
}

} // namespace velmora::cli
