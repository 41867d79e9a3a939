// The scenario package: scenarios gathered one by one with the stock they run, then written
// with the lamp assets when a vehicle needs them and the installer's two lists.

#include "common.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/xmltext.h"

#include <algorithm>

namespace velmora::packaging {

using namespace detail;

namespace {

// The part of a name from its last '_' on ("_MT" of "HTA_MT"), empty when it has none.
std::string lastPart(const std::string& name) {
    const auto at = name.rfind('_');
    return at == std::string::npos ? std::string() : name.substr(at);
}

bool oneOf(const std::string& part, std::initializer_list<const char*> list) {
    return std::any_of(list.begin(), list.end(), [&](const char* s) { return iequals(part, s); });
}

// The value between the next '>' and the '<' after it, from a one-based position; `pos` moves
// past it.
std::string valueAfter(const std::string& text, std::size_t& pos) {
    const auto open = text.find('>', pos == 0 ? 0 : pos - 1);
    if (open == std::string::npos) {
        pos = 0;
        return {};
    }
    const auto close = text.find('<', open + 1);
    if (close == std::string::npos) {
        pos = 0;
        return {};
    }
    pos = close + 1;
    return text.substr(open + 1, close - open - 1);
}

// One lamp from the hit of its name at `at`: provider, blueprint, the number behind the blank of
// its name (head lamps), and its three position values.
std::vector<std::string> lampFields(const std::string& xml, std::size_t at, bool numbered) {
    std::string provider, blueprint;
    std::size_t p = at;
    GetDetail(xml, p, "Provider", provider);
    p = at;
    GetDetail(xml, p, "BlueprintID", blueprint);
    std::vector<std::string> out{provider, blueprint};
    if (numbered) {
        const auto end = xml.find('<', at - 1);
        const std::string name = xml.substr(at - 1, end == std::string::npos ? 0 : end - at + 1);
        const auto blank = name.find(' ');
        out.push_back(blank == std::string::npos ? std::string() : trimmed(name.substr(blank + 1)));
    }
    std::size_t e = InStr(at, xml, "<Element>", Match::Text);
    for (int i = 0; i < 3; ++i) {
        if (e)
            e = InStr(e + 1, xml, "<e", Match::Binary);
        out.push_back(e ? valueAfter(xml, e) : std::string("0"));
    }
    return out;
}

std::vector<std::string> absentLamp(bool numbered) {
    std::vector<std::string> out{"", ""};
    if (numbered)
        out.push_back("");
    out.insert(out.end(), {"0", "0", "0"});
    return out;
}

std::string joined(const std::vector<std::string>& fields) {
    std::string out;
    for (std::size_t i = 0; i < fields.size(); ++i)
        out += (i ? "," : "") + fields[i];
    return out;
}

// Empty lamp fields: a known variant, or a blueprint that is not there to read.
std::string emptyLampFields() {
    return std::string(17, ',');
}

} // namespace

std::string HasItLights(const std::string& xml, const std::string& name, bool& lampsNeeded) {
    if (oneOf(lastPart(name), {"_XP-Pass", "_Stop-Pass", "_XP-Perishable", "_XP-Freight", "_Thru-Freight",
                               "_Light-Engine", "_Parcel", "_Thru-Mineral", "_Stop-Freight", "_Rear"}))
        lampsNeeded = true;
    std::vector<std::string> fields;
    const std::size_t head = InStr(1, xml, "HeadLamp", Match::Text);
    std::size_t second = 0;
    if (head) {
        const auto first = lampFields(xml, head, true);
        fields.insert(fields.end(), first.begin(), first.end());
        second = InStr(head + 8, xml, ">Headlamp", Match::Text);
    } else {
        const auto none = absentLamp(true);
        fields.insert(fields.end(), none.begin(), none.end());
    }
    if (second) {
        const auto lamp = lampFields(xml, second + 1, true);
        fields.insert(fields.end(), lamp.begin(), lamp.end());
    } else {
        const auto none = absentLamp(true);
        fields.insert(fields.end(), none.begin(), none.end());
    }
    if (!second) {
        if (const std::size_t tail = InStr(1, xml, "TailLamp", Match::Text)) {
            const auto lamp = lampFields(xml, tail, false);
            fields.insert(fields.end(), lamp.begin(), lamp.end());
        } else {
            const auto none = absentLamp(false);
            fields.insert(fields.end(), none.begin(), none.end());
        }
    } else {
        const auto none = absentLamp(false);
        fields.insert(fields.end(), none.begin(), none.end());
    }
    return joined(fields);
}

void ScenarioPackage::CheckStock(const fs::path& scenarioFolder) {
    const auto bin = m_ctx.resolver.resolve(scenarioFolder, "Scenario.bin");
    std::string xml;
    if (!bin || !binToXmlText(*bin, xml))
        return;
    const fs::path assets = m_ctx.railWorks() / "Assets";
    for (std::size_t at = InStr(1, xml, "<BlueprintID d:type", Match::Binary); at;
         at = InStr(at + 1, xml, "<BlueprintID d:type", Match::Binary)) {
        std::size_t p = at;
        const std::string id = valueAfter(xml, p);
        if (id.empty())
            continue;
        std::string provider, product;
        GetProvider(at, provider, product, xml);
        std::string file = id;
        if (iendsWith(file, ".xml"))
            file = file.substr(0, file.size() - 3) + "bin";
        const std::string path = provider + "\\" + product + "\\" + file;
        const std::vector<std::string> parts = splitDocumentPath(file);
        const std::string base = parts.empty() ? std::string() : fs::path(parts.back()).stem().string();
        std::string fields = emptyLampFields();
        if (!oneOf(lastPart(base), {"_MT", "_DO", "_PO", "_ND", "_DF", "_DR", "_DEAD"})) {
            std::string blueprint;
            if (const auto found = m_ctx.resolver.resolve(assets, path);
                found && binToXmlText(*found, blueprint))
                fields = "," + HasItLights(blueprint, base, m_lamps);
        }
        m_stock.push_back(path + fields);
        m_stockPaths.push_back(path);
    }
}

std::string ScenarioPackage::add(const routes::RouteEntry& route, const routes::ScenarioEntry& scenario,
                                 UserInterface*) {
    std::string name = scenario.name;
    std::replace(name.begin(), name.end(), ':', '-');
    const auto folder = m_ctx.resolver.resolve(route.path, "Scenarios\\" + scenario.folder);
    if (!folder)
        return (route.path / "Scenarios" / scenario.folder).string() +
               ": the scenario's folder is not there.";
    m_folders.push_back(scenario.folder);
    CheckStock(*folder);
    if (m_state.packageFolder.empty())
        m_state.packageFolder = fileNameFromText(trimmed(name));
    m_lines.emplace_back(*folder, fs::path("RailWorks") / folder->lexically_relative(m_ctx.railWorks()));
    return "Scenario Added - Add another or click Process to finish.";
}

std::string ScenarioPackage::scenarioStockText() const {
    std::vector<std::string> rows = m_stock;
    std::sort(rows.begin(), rows.end());
    // Neighbours compared from the last row up, as the sorted list always was.
    for (std::size_t i = rows.size(); i > 1; --i)
        if (rows[i - 1] == rows[i - 2])
            rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(i - 1));
    std::string out;
    for (std::size_t i = 0; i < rows.size(); ++i)
        out += (i ? "\r\n" : "") + rows[i];
    return out;
}

PackageReport ScenarioPackage::process(const PackageOptions& options, UserInterface* ui) {
    if (m_state.packageFolder.empty() || m_lines.empty()) {
        return refusedReport({}, "No scenario has been added to the package.");
    }
    PackageBuilder builder(m_ctx, packageRoot(m_ctx, options, m_state.packageFolder));
    builder.freeSpace = options.freeSpace;
    for (const auto& [source, target] : m_lines)
        builder.copyFolder(source, target);
    if (m_lamps) {
        std::optional<fs::path> lamps;
        if (std::error_code ec; fs::is_directory(m_ctx.appPath() / "OrvelleLights", ec))
            lamps = m_ctx.appPath() / "OrvelleLights";
        else
            lamps = m_ctx.resolver.resolve(m_ctx.railWorks(), "Assets\\OrvelleLights");
        if (lamps)
            builder.copyFolder(*lamps, fs::path("RailWorks") / "Assets" / "OrvelleLights");
        else
            builder.note("The lamp assets OrvelleLights are not beside the program (" +
                         (m_ctx.appPath() / "OrvelleLights").string() +
                         ") nor in the Assets folder: the package goes without them.");
    }
    addInstaller(m_ctx, builder, kAssetInstaller);
    std::string list = m_state.packageFolder + "\r\n";
    for (const std::string& folder : m_folders)
        list += (folder.size() > 36 ? folder.substr(folder.size() - 36) : folder) + "\r\n";
    builder.writeText("Scenario.yyy", list);
    builder.writeText("Scenario.qqq", scenarioStockText());
    PackageReport report = builder.run("package scenarios " + m_state.packageFolder, ui);
    if (report.ok()) {
        report.check = checkBlueprints(m_ctx, report.folder, m_stockPaths);
    }
    return report;
}

} // namespace velmora::packaging
