// Quick Drive consists and fragments built from the command line: the fields of the Build QD
// screens as options, the vehicles as stock paths below Assets.

#include "session.h"

#include "velmora/consists/qdbuild.h"
#include "velmora/core/paths.h"
#include "velmora/core/services.h"

#include <algorithm>

namespace velmora::cli {

namespace {

namespace cs = velmora::consists;

// yes|no, true|false, eTrue|eFalse.
std::optional<bool> yesNoOption(const Arguments& a, const char* option, bool fallback, std::string& problem) {
    const auto v = a.value(option);
    if (!v)
        return fallback;
    for (const char* yes : {"yes", "true", "eTrue"})
        if (iequals(*v, yes))
            return true;
    for (const char* no : {"no", "false", "eFalse"})
        if (iequals(*v, no))
            return false;
    problem = std::string(option) + " takes yes or no, not \"" + *v + "\"";
    return std::nullopt;
}

// "Freight Coal", "Consist Type Freight Coal" or "eConsistTypeFreightCoal": the stored form, or
// empty when it is none of the list.
std::string consistTypeOption(const std::string& typed) {
    for (const std::string& shownType : cs::consistTypes()) {
        const std::string value = cs::consistTypeValue(shownType);
        if (iequals(typed, shownType) || iequals(typed, value) || iequals("Consist Type " + typed, shownType))
            return value;
    }
    return {};
}

// PROVIDER\PRODUCT\path.bin (or .xml, / or \), with ":flipped" behind it for a reversed vehicle.
std::optional<cs::QDVehicle> vehicleOption(Session& s, std::string text, std::string& problem) {
    cs::QDVehicle v;
    if (const std::size_t colon = text.rfind(':'); colon != std::string::npos && iequals(text.substr(colon), ":flipped")) {
        v.flipped = "eTrue";
        text.resize(colon);
    }
    const std::vector<std::string> parts = splitDocumentPath(text);
    if (parts.size() < 3) {
        problem = "--vehicle takes PROVIDER\\PRODUCT\\path of a blueprint below Assets, not \"" + text + "\"";
        return std::nullopt;
    }
    v.provider = parts[0];
    v.product = parts[1];
    for (std::size_t i = 2; i < parts.size(); ++i)
        v.blueprintId += (i > 2 ? "\\" : "") + parts[i];
    if (iendsWith(v.blueprintId, ".bin"))
        v.blueprintId.replace(v.blueprintId.size() - 3, 3, "xml");
    if (!iendsWith(v.blueprintId, ".xml")) {
        problem = "--vehicle names a blueprint, ending .bin or .xml: \"" + text + "\"";
        return std::nullopt;
    }
    if (cs::blueprintMissing(s.ctx, {{}, v.provider, v.product, v.blueprintId, {}})) {
        problem = "there is no blueprint " + (s.ctx.railWorks() / "Assets").string() + "/" + text;
        return std::nullopt;
    }
    return v;
}

int cmdQdBuild(Session& s) {
    const std::vector<std::string> withValue = {"--provider",   "--product", "--name",       "--loco-name",
                                                "--display-name", "--engine", "--drivable",   "--pantograph",
                                                "--third-rail", "--fourth-rail", "--era",    "--type",
                                                "--route",      "--vehicle"};
    const Arguments a = parseArguments(s.g.rest, withValue, {});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() != 1 || (a.plain[0] != "consist" && a.plain[0] != "fragment"))
        return s.fail("say what to build: qd build consist|fragment ...; nothing was written");
    const bool fragment = a.plain[0] == "fragment";
    s.start();
    if (!s.requireRoot())
        return Error;
    const std::string name = a.value("--name").value_or("");
    if (name.empty())
        return s.fail("--name takes the name of the new " + a.plain[0] + "; nothing was written");
    std::string problem;
    const auto target = cs::productPreload(s.ctx, a.value("--provider").value_or(""), a.value("--product").value_or(""), problem);
    if (!target)
        return s.fail(problem + "\n(--provider and --product name the product whose PreLoad folder takes it)");
    std::vector<cs::QDVehicle> vehicles;
    for (const auto& [option, value] : a.options)
        if (option == "--vehicle") {
            const auto v = vehicleOption(s, value, problem);
            if (!v)
                return s.fail(problem + "; nothing was written");
            vehicles.push_back(*v);
        }

    cs::QDBuildResult r;
    if (fragment) {
        for (const char* option : {"--loco-name", "--display-name", "--engine", "--drivable", "--pantograph",
                                   "--third-rail", "--fourth-rail", "--era", "--type", "--route"})
            if (a.value(option))
                return s.fail(std::string(option) + " belongs to a consist, not a fragment; nothing was written");
        r = cs::buildQDFragment(s.ctx, *target, name, vehicles);
    } else {
        cs::QDMetadata m;
        m.consistName = name;
        m.locoName = a.value("--loco-name").value_or(name);
        m.displayName = a.value("--display-name").value_or(name);
        m.locoType = a.value("--engine").value_or("Diesel");
        const auto& engines = cs::engineTypes();
        const auto engine = std::find_if(engines.begin(), engines.end(), [&](const std::string& e) { return iequals(e, m.locoType); });
        if (engine == engines.end())
            return s.fail("--engine takes Diesel, Electric or Steam, not \"" + m.locoType + "\"");
        m.locoType = *engine;
        const auto drivable = yesNoOption(a, "--drivable", true, problem);
        const auto pantograph = yesNoOption(a, "--pantograph", false, problem);
        const auto third = yesNoOption(a, "--third-rail", false, problem);
        const auto fourth = yesNoOption(a, "--fourth-rail", false, problem);
        if (!problem.empty())
            return s.fail(problem + "; nothing was written");
        m.drivable = *drivable;
        m.pantograph = *pantograph;
        m.thirdRail = *third;
        m.fourthRail = *fourth;
        if (const auto era = a.value("--era")) {
            const std::size_t dash = era->find('-');
            m.eraStart = era->substr(0, dash);
            m.eraEnd = dash == std::string::npos ? std::string() : era->substr(dash + 1);
        }
        m.consistType = consistTypeOption(a.value("--type").value_or("Consist Type Passenger Regional"));
        if (m.consistType.empty())
            return s.fail("--type takes one of the consist types, e.g. \"Freight Coal\"; see velmora-cli qd build --help");
        for (const auto& [option, value] : a.options)
            if (option == "--route")
                for (std::size_t from = 0; from <= value.size();) {
                    const std::size_t comma = std::min(value.find(',', from), value.size());
                    const std::string folder = value.substr(from, comma - from);
                    from = comma + 1;
                    if (folder.empty())
                        continue;
                    if (folder.find_first_of("/\\") != std::string::npos || folder == ".." || folder == "." ||
                        !s.ctx.resolver.exists(s.ctx.railWorks() / "Content" / "Routes", folder))
                        return s.fail("there is no route folder " + (s.ctx.railWorks() / "Content/Routes").string() +
                                      "/" + folder + "; nothing was written");
                    m.routes.push_back(folder);
                }
        r = cs::buildQDConsist(s.ctx, *target, m, vehicles);
    }
    if (!r)
        return s.fail(shown(r.message) + (r.detail == r.message ? "" : "\n" + shown(r.detail)));
    if (!s.g.quiet) {
        if (!fragment)
            s.out << r.message << '\n';
        s.out << "Written: " << r.file.string() << '\n';
        if (!r.backup.empty())
            s.out << "Backup: " << r.backup.string() << '\n';
    }
    return Success;
}

} // namespace

std::vector<Command> qdBuildCommands() {
    return {
        {"qd build", "consist|fragment --provider P --product Q --name NAME [--vehicle STOCK[:flipped]]...",
         "a new Quick Drive consist or fragment in the product's PreLoad folder, made from the templates "
         "QD1-QD5 or QDF1, QD2, QDF3 (an existing file of the name is kept as NAME.bak)",
         cmdQdBuild, true,
         "  --vehicle STOCK[:flipped]  a vehicle or fragment, front first: PROVIDER\\PRODUCT\\path below Assets\n"
         "                             (.bin or .xml); \":flipped\" reverses it. May be repeated.\n"
         "Consist only:\n"
         "  --route GUID[,GUID...]     the route folders it may run on (at least one; may be repeated)\n"
         "  --loco-name TEXT           Locomotive Name (default: NAME)\n"
         "  --display-name TEXT        Display Name (default: NAME)\n"
         "  --engine Diesel|Electric|Steam   (default Diesel)\n"
         "  --drivable yes|no          (default yes)\n"
         "  --pantograph yes|no, --third-rail yes|no, --fourth-rail yes|no   (default no)\n"
         "  --era FROM-TO              (default 2000-2050)\n"
         "  --type TYPE                e.g. \"Freight Coal\" or eConsistTypeFreightCoal (default Passenger Regional)\n"
         "A fragment's NAME must contain the word Fragment.\n"},
    };
}

} // namespace velmora::cli
