// The loco sound packs: Class 37 and Class 47 locos get the pack's engine sound children, its
// bogie sound, a bell control and their horn moved; Class 43 power cars are pointed at the MTU
// sounds by plain text replacement.

#include "soundshared.h"

#include "rsshared.h"
#include "velmora/core/templates.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/xmltext.h"

namespace velmora::assets::snd {

namespace {

const ScanSettings kText{Match::Text};
constexpr std::string_view kChildClose = "</cEntityContainerBlueprint-sChild>";
constexpr std::string_view kValueClose = "</cControlContainerBlueprint-cControlValue>";

struct ChildSound {
    const char* name;
    const char* blueprint;
};

// What tells the two loco packs apart.
struct LocoPack {
    const char* childTemplate;
    const char* bellTemplate;
    const char* anchor; // the existing engine sound the new children go behind
    std::vector<ChildSound> children;
    std::vector<std::pair<std::string, std::string>> position; // tokens of the children's place
    std::vector<const char*> horn;                             // from the thirteenth matrix value on
};

const LocoPack& pack37() {
    static const LocoPack pack{"ChildAudio37.txt",
                               "Bell37.txt",
                               "Class 37 Engine Sound",
                               {{"EngineSound2", "Audio\\RailVehicles\\Diesel\\Class37\\Class 37 Engine Sound 2.xml"}},
                               {{"dddddd", "2.50444"}, {"eeeeee", "-1.03766"}},
                               {"4.9533", "9.4107", "1"}};
    return pack;
}

const LocoPack& pack47() {
    static const LocoPack pack{"ChildAudio.txt",
                               "BellControl.txt",
                               "Class 47 Engine Sound",
                               {{"EngineSound2", "Audio\\RailVehicles\\Diesel\\Class 47\\Class 47 Engine Sound 2.xml"},
                                {"EngineSound3", "Audio\\RailVehicles\\Diesel\\Class 47\\Class 47 Engine Sound 3.xml"},
                                {"EngineCabSound", "Audio\\RailVehicles\\Diesel\\Class 47\\Class 47 Engine Cab Sound.xml"}},
                               {{"dddddd", "0"}, {"eeeeee", "2.6865"}, {"ffffff", "-8.95135"}},
                               {"9.7"}};
    return pack;
}

// The blueprint's own Provider and Product, as document text.
std::pair<std::string, std::string> ownProduct(const RowInput& input) {
    if (input.row)
        return {documentText(input.row->provider), documentText(input.row->product)};
    std::string provider, product;
    std::size_t pos = InStr(1, input.xml, "<Provider", Match::Binary);
    if (pos)
        GetDetail(input.xml, pos, "Provider", provider);
    if (pos)
        GetDetail(input.xml, pos, "Product", product);
    return {provider, product};
}

// The value of the first <tag inside the control value whose name ends at `control`.
void setInControl(std::string& xml, std::string_view control, std::string_view tag, std::string_view value) {
    const std::size_t at = InStr(1, xml, control, Match::Text);
    const std::size_t end = at ? InStr(at, xml, kValueClose, Match::Text) : 0;
    const std::size_t pos = end ? InStr(at, xml, "<" + std::string(tag), Match::Text) : 0;
    if (pos && pos < end)
        setTag(xml, pos, tag, value);
}

// The horn's matrix: values from the thirteenth on, one after the other.
void moveHorn(std::string& xml, const std::vector<const char*>& values) {
    const std::size_t horn = InStr(1, xml, "Horn Sound.xml", Match::Text);
    std::size_t e = horn ? InStr(horn, xml, "<Element", Match::Text) : 0;
    for (int i = 0; i < 13 && e; ++i)
        e = InStr(e + 1, xml, "<e ", Match::Binary);
    for (const char* value : values) {
        if (!e)
            return;
        setTag(xml, e, "e", value);
        e = InStr(e + 1, xml, "<e ", Match::Binary);
    }
}

RowEdit locoSounds(const SoundSettings& settings, const RowInput& input, const LocoPack& pack, bool is37) {
    const std::string modified = std::string(pack.anchor) + " 2";
    if (InStr(1, input.xml, modified, Match::Text))
        return rs::passOver(input, "This Loco file appears to have already been modified.");
    const std::size_t anchor = InStr(1, input.xml, pack.anchor, Match::Text);
    if (!anchor || !InStr(anchor, input.xml, kChildClose, Match::Text))
        return rs::passOver(input, std::string("The blueprint has no ") + pack.anchor + " child.");
    std::string xml = input.xml;
    RowEdit e;

    if (const std::size_t remapper = InStr(1, xml, "<IntermediateRemapper", Match::Text))
        setTag(xml, remapper, "ExpertRemapper", "TwoTone_Expert");
    if (is37) {
        const std::string bogie = "AP\\C37P\\Audio\\RailNetwork\\Class 37 Bogie";
        if (setTag(xml, 1, "BogieAudioControlName", bogie))
            noteProxy(settings, e, bogie);
    } else if (InStr(1, xml, "Kuju\\RailSimulator\\Audio\\RailNetwork\\Bogies\\BG_Modern", Match::Binary)) {
        const std::string bogie = "AP\\C47P\\Audio\\RailNetwork\\Class 47 Bogie";
        rs::replaceAll(xml, "Kuju\\RailSimulator\\Audio\\RailNetwork\\Bogies\\BG_Modern", bogie);
        noteProxy(settings, e, bogie);
    }

    RowIds ids(settings, input);
    const auto [provider, product] = ownProduct(input);
    std::string blocks;
    for (const ChildSound& child : pack.children) {
        std::vector<std::pair<std::string, std::string>> tokens{{"aaaaaa", ids.next()},
                                                                {"bbbbbb", child.name},
                                                                {"pppppp", provider},
                                                                {"qqqqqq", product},
                                                                {"cccccc", child.blueprint}};
        tokens.insert(tokens.end(), pack.position.begin(), pack.position.end());
        blocks += rs::lineEnd(xml) + fillTemplate(templateText(settings, pack.childTemplate, xml), tokens);
        noteBlueprint(settings, e, provider, product, child.blueprint);
    }

    moveHorn(xml, pack.horn);
    if (!InStr(1, xml, ">Bell<", Match::Text)) {
        const std::size_t horn = InStr(1, xml, ">Horn<", Match::Text);
        if (const std::size_t close = horn ? InStr(horn, xml, kValueClose, Match::Text) : 0)
            xml.insert(close - 1 + kValueClose.size(),
                       rs::lineEnd(xml) + templateText(settings, pack.bellTemplate, xml));
    }
    const std::size_t at = InStr(1, xml, pack.anchor, Match::Text);
    const std::size_t close = InStr(at, xml, kChildClose, Match::Text);
    xml.insert(close - 1 + kChildClose.size(), blocks);
    setInControl(xml, "Regulator</ControlName>", "ApplyToConsist", "eTrue");
    setInControl(xml, "Reverser</ControlName>", "ApplyToConsist", "eTrue");
    e.xml = std::move(xml);
    return e;
}

void replaceIfThere(std::string& xml, std::string_view from, std::string_view to) {
    if (xml.find(from) != std::string::npos)
        rs::replaceAll(xml, from, to);
}

} // namespace

RowEdit class37(const SoundSettings& settings, const RowInput& input) {
    return locoSounds(settings, input, pack37(), true);
}

RowEdit class47(const SoundSettings& settings, const RowInput& input) {
    return locoSounds(settings, input, pack47(), false);
}

// Class 43 power cars: the MTU sounds, the pack's bogie, the horn at the front, the FGW engine
// simulation, and a guard's signal control when the car has none.
RowEdit hst(const SoundSettings& settings, const RowInput& input) {
    std::string xml = input.xml;
    RowEdit e;
    static const std::pair<const char*, const char*> kReplacements[] = {
        {"MTU MTU", "MTU"},
        {"Audio\\RailVehicles\\Diesel\\RA_Class 43_MTU\\Class 43 Engine Sound MTU.xml</",
         "Audio\\RailVehicles\\Diesel\\Class 43\\Class 43 Engine Sound MTU.xml</"},
        {"Kuju\\RailSimulator\\Audio\\RailNetwork\\Bogies\\BG_Modern", "AP\\C43MTUP\\Audio\\RailNetwork\\Bogies\\Class 43 Bogie"},
        {"Class 43 Engine Sound.xml", "Class 43 Engine Sound MTU.xml"},
        {"Class 43 Cab Sound New.xml", "Class 43 Cab Sound MTU.xml"},
        {"Class 43 Cab Sound.xml", "Class 43 Cab Sound MTU.xml"},
        {"2.54521", "0"},
        {"7.80187", "0"},
    };
    for (const auto& [from, to] : kReplacements)
        replaceIfThere(xml, from, to);
    if (xml != input.xml && xml.find("AP\\C43MTUP\\Audio\\RailNetwork\\Bogies\\Class 43 Bogie") != std::string::npos)
        noteProxy(settings, e, "AP\\C43MTUP\\Audio\\RailNetwork\\Bogies\\Class 43 Bogie");

    if (std::size_t pos = InStr(1, xml, "Class 43 Horn Sound", Match::Text)) {
        for (int i = 0; i < 14 && pos; ++i)
            pos = InStr(pos + 1, xml, "</e>", Match::Text);
        // Only a zero of the horn's own matrix: a horn set already leaves the rest of the text be.
        const std::size_t end = pos ? InStr(pos, xml, "</Element>", Match::Text) : 0;
        pos = pos ? InStr(pos, xml, ">0<", Match::Binary) : 0;
        if (pos && pos < end)
            xml.replace(pos, 1, "8.8");
    }
    replaceIfThere(xml, "RailVehicles\\Diesel\\HST\\Default\\Simulation\\HST Engine Simulation.xml",
                   "RailVehicles\\Diesel\\HST\\FGW\\Simulation\\HST Engine Simulation.xml");
    if (!InStr(1, xml, "GuardSignal", Match::Text)) {
        const std::size_t close = InStr(1, xml, "</ControlValues>", Match::Text);
        const std::size_t behind = close ? InStrRev(xml, ">", close - 1, Match::Binary) : 0;
        if (behind)
            xml.insert(behind, rs::lineEnd(xml) + templateText(settings, "HST_Controls.txt", xml));
    }
    if (xml == input.xml)
        return notChanged(settings, input);
    e.xml = std::move(xml);
    return e;
}

} // namespace velmora::assets::snd
