#include "velmora/routes/routes.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/xmltext.h"

#include <algorithm>
#include <cstdio>

namespace velmora::routes {

namespace {

const ScanSettings kBinary{Match::Binary};

std::vector<fs::path> subfolders(const fs::path& folder) {
    std::vector<fs::path> out;
    std::error_code ec;
    for (fs::directory_iterator it(folder, fs::directory_options::skip_permission_denied, ec);
         !ec && it != fs::directory_iterator(); it.increment(ec))
        if (it->is_directory(ec))
            out.push_back(it->path());
    std::sort(out.begin(), out.end(), [](const fs::path& a, const fs::path& b) {
        return toLowerAscii(a.filename().string()) < toLowerAscii(b.filename().string());
    });
    return out;
}

// The value between the last ">" before a closing tag and that tag.
std::string valueBefore(std::string_view text, std::size_t close) {
    const std::size_t gt = text.rfind('>', close);
    return gt == std::string_view::npos ? std::string() : std::string(text.substr(gt + 1, close - gt - 1));
}

std::string languageOf(const AppContext& ctx) {
    return ctx.settings.language.empty() ? std::string("English") : ctx.settings.language;
}

// A document the simulator would refuse: what converts to less than 1000 bytes.
bool formatError(const std::string& xml) {
    std::string bin;
    return !xmlTextToBin(xml, bin) || bin.size() < 1000;
}

std::string pad(std::string s, std::size_t width) {
    if (s.size() < width)
        s.append(width - s.size(), ' ');
    return s;
}

} // namespace

std::string ScenarioEntry::reportWord() const {
    if (scenarioClass == "eTemplateScenarioClass")
        return "Quick Drive";
    if (scenarioClass == "eFreeRoamScenarioClass")
        return "Free Roam";
    if (scenarioClass == "eCareerScenarioClass")
        return "Career";
    if (scenarioClass == "eTimetableScenarioClass")
        return "Timetabled";
    if (scenarioClass == "eStandardScenarioClass")
        return workshop ? std::string() : "Standard";
    return {};
}

std::string ScenarioEntry::legend() const {
    if (scenarioClass == "eTemplateScenarioClass")
        return "Quick Drive Scenario";
    if (scenarioClass == "eFreeRoamScenarioClass")
        return "Free Roam Scenario";
    if (scenarioClass == "eCareerScenarioClass")
        return "Career Scenario";
    if (scenarioClass == "eTimetableScenarioClass")
        return "Timetable Scenario";
    if (scenarioClass == "eStandardScenarioClass")
        return workshop ? "Workshop Scenario" : "Standard Scenario";
    return {};
}

unsigned ScenarioEntry::colour() const {
    if (scenarioClass == "eTemplateScenarioClass")
        return 0x00FF00;
    if (scenarioClass == "eFreeRoamScenarioClass")
        return 0x0000FF;
    if (scenarioClass == "eCareerScenarioClass")
        return 0xFF0000;
    if (scenarioClass == "eTimetableScenarioClass")
        return 0xFF00FF;
    if (scenarioClass == "eStandardScenarioClass" && workshop)
        return 0x00FFFF;
    return 0x000000;
}

std::string localisedName(std::string_view text, std::size_t from, const std::string& language) {
    std::vector<std::string> order{language, "English", "French", "Italian", "German", "Spanish"};
    std::size_t start = from;
    for (std::size_t i = 0; i < order.size(); ++i) {
        if (i > 0 && order[i] == order[0])
            continue;
        const std::size_t open = InStr(start, text, "<" + order[i], Match::Binary);
        if (open == 0) {
            continue;
        }
        const std::size_t close = InStr(open, text, "</" + order[i], Match::Binary);
        if (close == 0)
            continue;
        const std::string value = valueBefore(text, close - 1);
        if (!value.empty())
            return value;
        start = close;
    }
    return {};
}

std::vector<RouteEntry> listRoutes(AppContext& ctx, std::vector<std::string>* warnings) {
    std::vector<RouteEntry> routes;
    const auto folder = ctx.resolver.resolve(ctx.railWorks(), "Content\\Routes");
    if (!folder)
        return routes;
    for (const fs::path& p : subfolders(*folder)) {
        const std::string name = p.filename().string();
        if (name.size() != 36)
            continue; // route folders are GUIDs
        const auto properties = ctx.resolver.resolve(p, "RouteProperties.xml");
        if (!properties)
            continue;
        const std::string text = ReadTextFile(*properties);
        RouteEntry r{name, {}, p, formatError(text)};
        if (r.formatError && warnings)
            warnings->push_back("If you saw a message regarding Line 113, there is a format\nerror in " +
                                properties->string());
        const std::size_t dev = InStr(1, text, "<DevString", Match::Binary);
        if (dev == 0)
            continue;
        const std::size_t devEnd = InStr(dev, text, "</DevString", Match::Binary);
        r.name = localisedName(text, devEnd ? devEnd : dev, languageOf(ctx));
        if (r.name.empty())
            continue;
        DecodeChars(r.name);
        routes.push_back(std::move(r));
    }
    return routes;
}

const RouteEntry* findRoute(const std::vector<RouteEntry>& routes, const std::string& key) {
    for (const auto& r : routes)
        if (iequals(r.folder, key))
            return &r;
    // The name as typed is UTF-8, the route's name repaired document text.
    for (const auto& r : routes)
        if (sameName(r.name, key))
            return &r;
    return nullptr;
}

std::string routeNotFound(AppContext& ctx, const std::string& key) {
    std::string text = "no route with the folder or name '" + key + "'";
    if (key.size() != 36 || key.find_first_of("/\\") != std::string::npos)
        return text;
    const auto folder = ctx.resolver.resolve(ctx.railWorks(), "Content\\Routes\\" + key);
    if (folder && !ctx.resolver.resolve(*folder, "RouteProperties.xml") &&
        ctx.resolver.resolve(*folder, "MainContent.ap"))
        text += ": the folder holds no RouteProperties.xml, the route is packed in its MainContent.ap; unpack it first";
    return text;
}

std::vector<ScenarioEntry> listScenarios(AppContext& ctx, const RouteEntry& route, bool* noFolder) {
    std::vector<ScenarioEntry> out;
    const auto folder = ctx.resolver.resolve(route.path, "Scenarios");
    if (noFolder)
        *noFolder = !folder;
    if (!folder)
        return out;
    for (const fs::path& p : subfolders(*folder))
        if (auto s = readScenarioEntry(ctx, p))
            out.push_back(std::move(*s));
    return out;
}

std::optional<ScenarioEntry> readScenarioEntry(AppContext& ctx, const fs::path& p) {
    const auto properties = ctx.resolver.resolve(p, "ScenarioProperties.xml");
    const std::string text = properties ? ReadTextFile(*properties) : std::string();
    if (text.empty())
        return std::nullopt;
    const std::size_t dev = InStr(1, text, "<DevString", Match::Binary);
    if (dev == 0)
        return std::nullopt;
    ScenarioEntry s;
    s.folder = p.filename().string();
    const std::size_t display = InStr(1, text, "<DisplayName", Match::Binary);
    s.name = localisedName(text, display ? display : dev, languageOf(ctx));
    if (s.name.empty()) {
        const std::size_t devEnd = InStr(dev, text, "</DevString", Match::Binary);
        s.name = devEnd ? valueBefore(text, devEnd - 1) : std::string();
    }
    DecodeChars(s.name);
    if (const std::size_t cls = InStr(1, text, "<ScenarioClass ", Match::Binary); cls > 0) {
        std::size_t pos = cls > 100 ? cls - 100 : 1;
        GetDetail(text, pos, "ScenarioClass", s.scenarioClass, kBinary);
        if (s.scenarioClass == "eStandardScenarioClass") {
            std::string workshop;
            pos = 1;
            GetDetail(text, pos, "WorkshopID", workshop, kBinary);
            s.workshop = !workshop.empty() && workshop != "0";
        }
    }
    return s;
}

std::string routesOverview(AppContext& ctx, const std::vector<RouteEntry>& routes) {
    std::vector<std::string> rows;
    for (const auto& r : routes) {
        bool noFolder = false;
        const auto scenarios = listScenarios(ctx, r, &noFolder);
        if (noFolder) {
            rows.push_back(pad(r.name, 70) + "The folder " + r.path.string() + "\\Scenarios can't be found.");
            continue;
        }
        for (const auto& s : scenarios)
            rows.push_back(pad(r.name + " - " + s.name, 70) + s.reportWord());
    }
    SortStrings(rows, 0, static_cast<std::ptrdiff_t>(rows.size()) - 1);
    std::string out;
    for (const auto& row : rows)
        out += row + "\r\n";
    return out;
}

std::string scenarioTypesTable(AppContext& ctx, const std::vector<RouteEntry>& routes) {
    auto count = [](int n) {
        char buf[16];
        std::snprintf(buf, sizeof buf, "%4d", n);
        return std::string(buf);
    };
    std::string out = pad("Route Name", 50) + "Q.Drive Career Standard Free Roam Timetabled\r\n";
    for (const auto& r : routes) {
        int quick = 0, career = 0, standard = 0, free = 0, timetabled = 0, workshop = 0;
        for (const auto& s : listScenarios(ctx, r)) {
            if (s.scenarioClass == "eTemplateScenarioClass") ++quick;
            else if (s.scenarioClass == "eCareerScenarioClass") ++career;
            else if (s.scenarioClass == "eFreeRoamScenarioClass") ++free;
            else if (s.scenarioClass == "eTimetableScenarioClass") ++timetabled;
            else if (s.scenarioClass == "eStandardScenarioClass") (s.workshop ? workshop : standard)++;
        }
        std::string name = r.name;
        if (!name.empty() && name[0] == '\t')
            name.erase(0, 1);
        // Workshop scenarios are counted but have no column of their own.
        out += pad(name.substr(0, 50), 50) + count(quick) + count(career) + count(standard) + count(free) +
               count(timetabled) + "\r\n";
    }
    return out;
}

std::vector<std::pair<std::string, std::string>> routeProviders(AppContext& ctx, const RouteEntry& route) {
    std::vector<std::pair<std::string, std::string>> out;
    const auto properties = ctx.resolver.resolve(route.path, "RouteProperties.xml");
    const std::string text = properties ? ReadTextFile(*properties) : std::string();
    const std::size_t preload = InStr(1, text, "<RBlueprintSetPreLoad>", Match::Binary);
    if (!preload)
        return out;
    for (std::size_t at = InStr(preload, text, "<Provider ", Match::Binary); at > 0;
         at = InStr(at + 1, text, "<Provider ", Match::Binary)) {
        std::size_t pos = at;
        std::string provider, product;
        GetDetail(text, pos, "Provider", provider, kBinary);
        if (pos)
            GetDetail(text, pos, "Product", product, kBinary);
        out.emplace_back(DecodedChars(provider), DecodedChars(product));
    }
    return out;
}

std::vector<StockItem> scenarioStock(AppContext& ctx, const RouteEntry& route, const ScenarioEntry& scenario,
                                     std::string* message) {
    std::vector<StockItem> out;
    const auto file = ctx.resolver.resolve(route.path, "Scenarios\\" + scenario.folder + "\\Scenario.bin");
    if (!file) {
        if (message)
            *message = "There is no scenario.bin file in this folder.\noperation aborted.";
        return out;
    }
    if (scenario.scenarioClass == "eTemplateScenarioClass") {
        if (message)
            *message = "This appears to be a Quick Drive scenario, as such there\nis no rolling stock listed for the route.";
        return out;
    }
    const fs::path assets = ctx.railWorks() / "Assets";
    std::string xml;
    if (const ConvertResult r = binToXmlText(*file, xml); !r) {
        if (message)
            *message = r.message;
        return out;
    }
    for (std::size_t at = InStr(1, xml, "<BlueprintID d:type", Match::Binary); at > 0;
         at = InStr(at + 1, xml, "<BlueprintID d:type", Match::Binary)) {
        const std::size_t gt = xml.find('>', at - 1);
        const std::size_t lt = gt == std::string::npos ? gt : xml.find('<', gt + 1);
        if (lt == std::string::npos)
            break;
        std::string id = xml.substr(gt + 1, lt - gt - 1);
        if (id.empty())
            continue;
        std::string provider, product;
        GetProvider(at, provider, product, xml, {Match::Binary, false, true});
        if (iendsWith(id, "xml"))
            id = id.substr(0, id.size() - 3) + "bin";
        const auto slash = id.find_last_of("\\/");
        std::string path = provider + "\\" + product + "\\" + id;
        const bool missing = !ctx.resolver.exists(assets, path);
        out.push_back({std::move(path), slash == std::string::npos ? id : id.substr(slash + 1), missing});
    }
    return out;
}

std::string scenarioPropertiesProblem(AppContext& ctx, const RouteEntry& route, const ScenarioEntry& scenario) {
    const auto file = ctx.resolver.resolve(route.path, "Scenarios\\" + scenario.folder + "\\ScenarioProperties.xml");
    std::string bin;
    if (file && xmlTextToBin(ReadTextFile(*file), bin) && bin.size() >= 1000)
        return {};
    return "If you saw a message regarding Line 113, there is a format\nerror in " +
           (file ? file->string() : (route.path / "Scenarios" / scenario.folder / "ScenarioProperties.xml").string());
}

std::vector<std::string> allRoutesStock(AppContext& ctx, const std::vector<RouteEntry>& routes,
                                        std::vector<std::string>* warnings) {
    std::vector<std::string> rows;
    for (const auto& r : routes) {
        const auto scenarios = listScenarios(ctx, r);
        if (scenarios.empty() && warnings)
            warnings->push_back("There are no scenarios in:-\n" + r.name);
        for (const auto& s : scenarios)
            for (const auto& item : scenarioStock(ctx, r, s))
                rows.push_back(item.path);
    }
    // One entry per value, compared in upper case.
    std::stable_sort(rows.begin(), rows.end(),
                     [](const std::string& a, const std::string& b) { return toLowerAscii(a) < toLowerAscii(b); });
    rows.erase(std::unique(rows.begin(), rows.end(), [](const std::string& a, const std::string& b) { return iequals(a, b); }),
               rows.end());
    return rows;
}

std::vector<std::string> scenarioNumbers(AppContext& ctx, const RouteEntry& route, const ScenarioEntry& scenario,
                                         std::string* message) {
    std::vector<std::string> rows;
    const auto file = ctx.resolver.resolve(route.path, "Scenarios\\" + scenario.folder + "\\Scenario.bin");
    std::string xml;
    if (!file || !binToXmlText(*file, xml)) {
        if (message)
            *message = "There is no scenario.bin file in this folder.\noperation aborted.";
        return rows;
    }
    std::size_t pos = 1;
    for (;;) {
        std::string number, name;
        GetDetail(xml, pos, "UniqueNumber", number, kBinary);
        if (!pos)
            break;
        GetDetail(xml, pos, "Name", name, kBinary);
        if (!pos)
            break;
        rows.push_back(number + "\t" + DecodedChars(name));
    }
    return rows;
}

std::vector<Use> whereUsed(AppContext& ctx, const std::vector<RouteEntry>& routes, const std::string& asset) {
    auto key = [](std::string p) {
        std::replace(p.begin(), p.end(), '/', '\\');
        if (iendsWith(p, ".xml"))
            p = p.substr(0, p.size() - 3) + "bin";
        return toLowerAscii(p);
    };
    const std::string wanted = key(asset);
    std::vector<Use> uses;
    for (const auto& r : routes)
        for (const auto& s : listScenarios(ctx, r))
            for (const auto& item : scenarioStock(ctx, r, s))
                if (key(item.path) == wanted) {
                    uses.push_back({r.name, r.folder, s.name, s.folder});
                    break;
                }
    return uses;
}

} // namespace velmora::routes
