// Scripts for rolling stock: a diesel's exhaust driven by the engine's revolutions, and the
// wagon script.

#include "rsshared.h"
#include "velmora/core/convert.h"
#include "velmora/core/services.h"
#include "velmora/core/xmltext.h"

namespace velmora::assets {

namespace fs = std::filesystem;

namespace {

const ScanSettings kText{Match::Text};
constexpr std::size_t kMostExhausts = 2;

// ApplyToConsist of the named control, when the control's own block has one.
void applyToConsist(std::string& xml, std::string_view control, std::string_view value) {
    const std::size_t named = InStr(1, xml, control, Match::Text);
    if (!named)
        return;
    const std::size_t end = InStr(named, xml, "</cControlContainerBlueprint-cControlValue>", Match::Text);
    std::size_t apply = InStr(named, xml, "<ApplyToConsist", Match::Text);
    if (apply && (!end || apply < end))
        PutDetail(xml, apply, "ApplyToConsist", value, kText);
}

// The names of the children whose entry holds `word`, one a child, within the children list.
std::vector<std::string> childNamesWith(const std::string& xml, std::string_view word) {
    std::vector<std::string> names;
    const std::size_t children = InStr(1, xml, "<Children>", Match::Text);
    const std::size_t end = children ? InStr(children, xml, "</Children>", Match::Text) : 0;
    std::size_t from = children;
    while (from && end) {
        const std::size_t hit = InStr(from, xml, word, Match::Text);
        if (!hit || hit > end)
            break;
        std::size_t pos = InStrRev(xml, "<cEntityContainerBlueprint", hit, Match::Text);
        std::string name;
        if (pos)
            GetDetail(xml, pos, "ChildName", name, kText);
        names.push_back(name);
        from = InStr(hit, xml, "</Matrix>", Match::Text);
    }
    return names;
}

// The script file the document's ScriptComponent names, below Assets, as .lua.
std::string scriptOf(const std::string& xml) {
    std::size_t pos = InStr(1, xml, "<ScriptComponent>", Match::Text);
    std::string name;
    if (pos)
        GetDetail(xml, pos, "Name", name, kText);
    if (name.empty())
        return {};
    for (const char* ext : {".lua", ".out"})
        if (name.size() > 4 && InStr(name.size() - 3, name, ext, Match::Text))
            name.resize(name.size() - 4);
    return name + ".lua";
}

} // namespace

namespace rs {

RowEdit locoScript(const RsSettings& settings, const RowInput& input) {
    std::string xml = input.xml;
    if (const std::size_t values = InStr(1, xml, "<ControlValues>", Match::Text)) {
        insertChild(xml, values - 1 + 15, templateText(settings, "locoScript1.txt"));
        applyToConsist(xml, "RPM</ControlName>", "eFalse");
        applyToConsist(xml, "RPMDelta</ControlName>", "eTrue");
        applyToConsist(xml, "Regulator</ControlName>", "eTrue");
    }
    std::vector<std::string> exhausts = childNamesWith(xml, "Exhaust");
    if (exhausts.empty())
        exhausts = childNamesWith(xml, "Clag");
    if (exhausts.size() > kMostExhausts)
        return passOver(input, "Unable to modify file as Exhaust names ambiguous.");

    RowEdit e;
    std::size_t sim = InStr(1, xml, "<EngineSimulationContainer>", Match::Text);
    if (sim) {
        const BlueprintRef ref = GetBlueprintRef(xml, sim, kText);
        const fs::path file =
            assetPath(settings, ref.provider + "\\" + ref.product + "\\" + binOf(ref.blueprintId));
        std::string simXml;
        if (ref.blueprintId.empty())
            return passOver(input, "The engine simulation is not named in full.");
        if (const ConvertResult r = binToXmlText(file, simXml); !r)
            return passOver(input,
                            "The engine simulation " + file.string() + " could not be read: " + r.message);
        if (const std::string lua = scriptOf(simXml); !lua.empty()) {
            const fs::path luaFile = assetPath(settings, lua);
            // An existing sound script is kept as it is, with a backup; a missing one is the default.
            const std::string current = FileExists(luaFile) ? ReadTextFile(luaFile) : std::string();
            e.files.push_back(
                {luaFile, current.empty() ? templateText(settings, "DefaultAudio.lua") : current});
        }
        e.documents.push_back({file, std::move(simXml)});
    } else {
        e.notes.push_back(input.file.filename().string() +
                          ": no EngineSimulationContainer, the simulation was left alone.");
    }

    if (!exhausts.empty()) {
        const std::string script = scriptOf(xml);
        if (script.empty()) {
            e.notes.push_back(input.file.filename().string() +
                              ": no ScriptComponent, so no exhaust script was written.");
        } else {
            std::string text =
                templateText(settings, exhausts.size() == 1 ? "EngScript1.lua" : "EngScript2.lua");
            replaceAll(text, "aaaaaa", exhausts[0]);
            if (exhausts.size() == 2)
                replaceAll(text, "bbbbbb", exhausts[1]);
            e.files.push_back({assetPath(settings, script), std::move(text)});
        }
    }
    e.changed = xml != input.xml;
    e.xml = std::move(xml);
    return e;
}

RowEdit wagonScript(const RsSettings& settings, const RowInput& input) {
    std::string xml = input.xml;
    if (std::size_t script = InStr(1, xml, "<ScriptComponent>", Match::Text)) {
        PutDetail(xml, script, "Name", "1_WagonScript/wag_script_drb", kText);
    } else {
        const std::size_t container = InStr(1, xml, "</ContainerComponent>", Match::Text);
        const std::size_t wagon = container ? InStr(container, xml, "</cWagonBlueprint>", Match::Text) : 0;
        if (!wagon)
            return passOver(input, "The blueprint is no wagon with a ContainerComponent.");
        insertChild(xml, container - 1 + 21, templateText(settings, "WagScript1.txt"));
    }
    RowEdit e = edited(input, std::move(xml));
    if (!e.changed)
        e.passedOver = "The wagon has the wagon script already.";
    return e;
}

} // namespace rs

} // namespace velmora::assets
