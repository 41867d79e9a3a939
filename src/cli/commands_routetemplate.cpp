// Route templates, a route's details and pages, its asset folder, and developer folders from
// the command line.

#include "session.h"

#include "velmora/core/services.h"
#include "pictureimage.h"
#include "velmora/routes/routetemplate.h"

namespace velmora::cli {

namespace {

// The route named by the only plain argument; nothing after saying why.
std::optional<routes::RouteEntry> namedRoute(Session& s, const Arguments& a) {
    if (!a.problem.empty()) {
        s.fail(a.problem);
        return std::nullopt;
    }
    if (a.plain.size() != 1) {
        s.fail(a.plain.empty() ? "needs the route: its folder or its name" : "unexpected argument '" + a.plain[1] + "'");
        return std::nullopt;
    }
    return routeArgument(s, a.plain.front());
}

// The words of every repeat of `option`, each split at its commas.
std::vector<std::string> listed(const Arguments& a, const std::string& option) {
    std::vector<std::string> out;
    for (const auto& [name, value] : a.options)
        if (name == option)
            for (const auto& cell : csvCells(value))
                if (!cell.empty())
                    out.push_back(cell);
    return out;
}

// --location, --era and --terrain over the defaults (Europe, Modern, Countryside); false after
// naming a word that is none of them.
bool browseFlags(Session& s, const Arguments& a, routes::BrowseFlags& flags) {
    if (const auto location = a.value("--location")) {
        flags.location = routes::locationIndex(*location);
        if (flags.location < 0) {
            s.fail("--location: '" + *location + "' is none of Africa, Asia, Australia, Europe, North America, South America");
            return false;
        }
    }
    if (const auto era = a.value("--era")) {
        flags.era = routes::eraIndex(*era);
        if (flags.era < 0) {
            s.fail("--era: '" + *era + "' is none of Heritage, Historic, Modern");
            return false;
        }
    }
    const auto terrains = listed(a, "--terrain");
    if (!terrains.empty())
        flags.terrain = {false, false, false, false};
    for (const auto& t : terrains) {
        const int i = routes::terrainIndex(t);
        if (i < 0) {
            s.fail("--terrain: '" + t + "' is none of Countryside, Mountains, Plains, Urban");
            return false;
        }
        flags.terrain[static_cast<std::size_t>(i)] = true;
    }
    return true;
}

int finish(Session& s, const routes::RouteJob& job) {
    for (const auto& note : job.notes)
        s.err << "velmora-cli: " << s.g.command << ": " << shown(note) << '\n';
    if (!job.ok)
        return s.fail(shown(job.message));
    s.out << shown(job.message) << '\n';
    return Success;
}

int cmdNewTemplate(Session& s) {
    static const char* items[] = {"--spring-sky", "--summer-sky", "--autumn-sky", "--winter-sky", "--weather", "--terrain-item"};
    std::vector<std::string> withValue = {"--provider", "--product", "--location", "--era", "--terrain"};
    withValue.insert(withValue.end(), std::begin(items), std::end(items));
    const Arguments a = parseArguments(s.g.rest, withValue, {});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() != 1)
        return s.fail(a.plain.empty() ? "needs the template's NAME" : "unexpected argument '" + a.plain[1] + "'");
    routes::TemplateRequest r;
    r.name = a.plain.front();
    r.provider = a.value("--provider").value_or("");
    r.product = a.value("--product").value_or("");
    r.items = routes::defaultTemplateItems();
    for (int i = 0; i < routes::kTemplateSlots; ++i) {
        const auto given = a.value(items[i]);
        if (!given)
            continue;
        // PROVIDER/PRODUCT/PATH, the path below the product with either separator.
        const std::size_t one = given->find('/'), two = one == std::string::npos ? one : given->find('/', one + 1);
        if (two == std::string::npos || two + 1 >= given->size())
            return s.fail(std::string(items[i]) + ": '" + *given + "' is no PROVIDER/PRODUCT/PATH");
        std::string path = given->substr(two + 1);
        for (char& c : path)
            if (c == '/')
                c = '\\';
        if (!iendsWith(path, ".xml") && !iendsWith(path, ".bin"))
            path += ".xml";
        if (iendsWith(path, ".bin"))
            path.replace(path.size() - 3, 3, "xml");
        r.items[static_cast<std::size_t>(i)] = {given->substr(0, one), given->substr(one + 1, two - one - 1), path};
    }
    if (!browseFlags(s, a, r.flags))
        return Error;
    s.start();
    if (!s.requireRoot())
        return Error;
    return finish(s, routes::buildRouteTemplate(s.ctx, r));
}

int cmdDetails(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--set-lat", "--set-long"}, {"--json"});
    const auto route = namedRoute(s, a);
    if (!route)
        return Error;
    const auto lat = a.value("--set-lat"), lon = a.value("--set-long");
    if (lat.has_value() != lon.has_value())
        return s.fail("--set-lat and --set-long go together");
    if (lat) {
        const routes::RouteJob job = routes::updateLatLong(s.ctx, *route, *lat, *lon);
        if (!job.ok)
            return s.fail(shown(job.message));
        for (const auto& note : job.notes)
            s.out << shown(note) << '\n';
    }
    routes::RouteDetails d;
    std::string error;
    if (!routes::readRouteDetails(s.ctx, *route, d, error))
        return s.fail(shown(error));
    auto item = [](const routes::TemplateItem& i) {
        return i.provider.empty() && i.path.empty() ? std::string() : i.provider + "\\" + i.product + "\\" + i.path;
    };
    const char* languages[5] = {"English", "French", "Italian", "German", "Spanish"};
    const char* keys[routes::kTemplateSlots] = {"springSky", "summerSky", "autumnSky", "winterSky", "weather", "terrain"};
    if (a.has("--json")) {
        s.out << "{\"route\": " << jsonString(route->folder) << ", \"file\": " << jsonString(d.file.string())
              << ",\n \"names\": {";
        for (int i = 0; i < 5; ++i)
            s.out << (i ? ", " : "") << jsonString(languages[i]) << ": " << jsonString(d.names[static_cast<std::size_t>(i)]);
        s.out << "},\n \"template\": " << jsonString(item(d.routeTemplate));
        for (int i = 0; i < routes::kTemplateSlots; ++i)
            s.out << ", " << jsonString(keys[i]) << ": " << jsonString(item(d.items[static_cast<std::size_t>(i)]));
        s.out << ",\n \"latitude\": " << jsonString(d.latitude) << ", \"longitude\": " << jsonString(d.longitude) << "}\n";
        return Success;
    }
    for (int i = 0; i < 5; ++i)
        if (!d.names[static_cast<std::size_t>(i)].empty())
            s.out << languages[i] << ": " << shown(d.names[static_cast<std::size_t>(i)]) << '\n';
    s.out << "Route Template: " << shown(item(d.routeTemplate)) << '\n';
    for (int i = 0; i < routes::kTemplateSlots; ++i)
        s.out << routes::slotName(i) << ": " << shown(item(d.items[static_cast<std::size_t>(i)])) << '\n';
    s.out << "Latitude: " << d.latitude << "\nLongitude: " << d.longitude << '\n';
    return Success;
}

int cmdDescription(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--html", "--title", "--subtitle", "--para"}, {});
    const auto route = namedRoute(s, a);
    if (!route)
        return Error;
    if (const auto html = a.value("--html")) {
        // A page written elsewhere, put in place as it is.
        const std::string page = ReadTextFile(*html);
        if (page.empty())
            return s.fail(*html + ": the file is missing or empty");
        const fs::path target = s.ctx.resolver.resolveForWrite(route->path, "RouteInformation\\En\\Description.html");
        const WriteResult w = s.ctx.files().write(target, page);
        if (!w)
            return s.fail(w.message);
        s.out << "Your Description file has been saved in the route's\nRouteInformation\\En folder.\n";
        return Success;
    }
    std::array<std::string, 5> texts;
    texts[0] = a.value("--title").value_or("");
    texts[1] = a.value("--subtitle").value_or("");
    std::size_t para = 2;
    for (const auto& [name, value] : a.options)
        if (name == "--para") {
            if (para == 5)
                return s.fail("--para: at most three paragraphs");
            texts[para++] = value;
        }
    return finish(s, routes::writeDescription(s.ctx, *route, texts));
}

int cmdThumbnail(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--from", "--metadata", "--preload", "--location", "--era"}, {});
    const auto route = namedRoute(s, a);
    if (!route)
        return Error;
    routes::ThumbnailRequest r;
    r.dds = a.value("--from").value_or("");
    // Any other picture is scaled and made into the thumbnail's levels here.
    textures::Image picture;
    if (!r.dds.empty() && !iequals(r.dds.extension().string(), ".dds")) {
        std::string error;
        picture = textures::readPictureFile(r.dds, error);
        if (!picture.valid())
            return s.fail(error);
        r.picture = &picture;
    }
    r.metadata = a.value("--metadata").value_or("");
    r.preload = a.value("--preload").value_or(s.ctx.settings.preloadFolder);
    if (r.preload.empty())
        return s.fail("needs --preload FOLDER (no PreLoad folder is set in the options)");
    if (!browseFlags(s, a, r.flags))
        return Error;
    return finish(s, routes::makeThumbnail(s.ctx, r));
}

int cmdCheckTemplate(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {"--location", "--era", "--terrain"}, {"--add", "--update", "--json"});
    const auto route = namedRoute(s, a);
    if (!route)
        return Error;
    routes::BrowseFlags flags;
    if (!browseFlags(s, a, flags))
        return Error;
    const routes::TemplateCheck check = routes::inspectRouteTemplate(s.ctx, *route);
    static const char* states[] = {"no-properties", "not-found", "unreadable", "no-filtering", "no-flags", "filtered"};
    const bool change = (check.state == routes::TemplateState::NoFiltering && a.has("--add")) ||
                        ((check.state == routes::TemplateState::NoFlags || check.state == routes::TemplateState::Filtered) &&
                         a.has("--update"));
    if (a.has("--json") && !change) {
        s.out << "{\"state\": \"" << states[static_cast<int>(check.state)] << "\", \"template\": "
              << jsonString(check.templateFile.string()) << ", \"message\": " << jsonString(check.message) << "}\n";
        return check.state <= routes::TemplateState::Unreadable ? Error : Success;
    }
    if (change)
        return finish(s, routes::applyBrowseFilter(s.ctx, check, flags));
    const routes::RouteJob job = routes::checkRouteTemplate(s.ctx, *route, &flags);
    return job.ok ? Success : Error;
}

int cmdAssetFolder(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {});
    const auto route = namedRoute(s, a);
    if (!route)
        return Error;
    return finish(s, routes::gatherRouteAssets(s.ctx, route->name, &s.ui));
}

int cmdDevFolders(Session& s) {
    const Arguments a = parseArguments(s.g.rest, {}, {});
    if (!a.problem.empty())
        return s.fail(a.problem);
    if (a.plain.size() != 2)
        return s.fail(a.plain.size() < 2 ? "needs the PROVIDER and the PRODUCT" : "unexpected argument '" + a.plain[2] + "'");
    s.start();
    if (!s.requireRoot())
        return Error;
    return finish(s, routes::setUpDeveloperFolders(s.ctx, a.plain[0], a.plain[1]));
}

} // namespace

std::vector<Command> routeTemplateCommands() {
    return {
        {"route new-template",
         "NAME --provider P --product Q [--spring-sky P/Q/PATH] [--summer-sky ..] [--autumn-sky ..] [--winter-sky ..] "
         "[--weather P/Q/PATH] [--terrain-item P/Q/PATH] [--location L] [--era E] [--terrain T,...]",
         "builds a route template into Assets\\P\\Q\\TemplateRoutes\\NAME.bin, making the TemplateRoutes and RouteMarkers "
         "folders",
         cmdNewTemplate, true,
         "Items not given are the simulator's own (Kuju\\RailSimulatorCore skies and weather, Kuju\\RailSimulator terrain). "
         "--location is one of Africa, Asia, Australia, Europe (default), North America, South America; --era Heritage, "
         "Historic, Modern (default); --terrain any of Countryside (default), Mountains, Plains, Urban."},
        {"route details", "ROUTE [--set-lat X --set-long Y] [--json]",
         "the route's names, template, skies, weather, terrain and position; --set-lat/--set-long save a new position "
         "(the old file kept as RouteProperties.xmlbak)",
         cmdDetails},
        {"route description", "ROUTE (--html FILE | [--title T] [--subtitle S] [--para P]...)",
         "writes RouteInformation\\En\\Description.html from Templates\\Description.txt (or puts FILE there as it is)",
         cmdDescription, true,
         "Up to three --para. Empty boxes are left empty; <, > and & are shown as typed."},
        {"route thumbnail", "ROUTE --from PICTURE --metadata NAME [--preload FOLDER] [--location L] [--era E]",
         "the loading picture (256 x 128 DXT1, 6 mipmaps) as a .TgPcDx and its metadata NAME.bin in the PreLoad folder",
         cmdThumbnail, true,
         "PICTURE is a .dds of that size and kind, or a PNG, JPEG or BMP of any size, scaled to 256 x 128. "
         "--preload defaults to the PreLoad folder of the options."},
        {"route check-template", "ROUTE [--add | --update] [--location L] [--era E] [--terrain T,...] [--json] [--yes]",
         "whether the route's template has browse filtering; --add adds it when missing, --update replaces it",
         cmdCheckTemplate, true, "The old .bin is kept as its numbered backup."},
        {"route asset-folder", "ROUTE",
         "copies every file of the route check's reports into <RailWorks>\\Assets_<route name> (run route check --deep first)",
         cmdAssetFolder},
        {"dev-folders", "PROVIDER PRODUCT [--yes]",
         "makes the developer folders under Source\\PROVIDER\\PRODUCT and Assets\\PROVIDER\\PRODUCT; asks when a tree exists",
         cmdDevFolders},
    };
}

} // namespace velmora::cli
