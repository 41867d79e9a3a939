// "Update Sounds": the commands' table, the templates and pack files they read before a batch,
// and the wagon and coach edits, which only point a blueprint at other sound files.

#include "soundshared.h"

#include "rsshared.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/paths.h"
#include "velmora/core/services.h"
#include "velmora/core/templates.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/xmltext.h"

#include <algorithm>

namespace velmora::assets {

namespace fs = std::filesystem;

namespace {

const ScanSettings kText{Match::Text};
constexpr std::string_view kBogies = "Kuju\\RailSimulator\\Audio\\RailNetwork\\Bogies\\";
constexpr std::string_view kModern = "Kuju\\RailSimulator\\Audio\\RailNetwork\\Bogies\\BG_Modern";
constexpr std::string_view kSteam = "Kuju\\RailSimulator\\Audio\\RailNetwork\\Bogies\\BG_Steam";

// The values that tell the wagon commands apart.
struct WagonKind {
    std::string_view bogie;     // an empty BogieAudioControlName gets this
    std::string_view childFile; // the sound file of a new Wagon Sound child
    std::string_view sound;     // the sound the existing Wagon Sound child is pointed at
};

WagonKind wagonKind(SoundCommand command) {
    switch (command) {
    case SoundCommand::OldHeavy:
        return {kSteam, "AP_Old_1_Sound.xml", "Audio\\RailVehicles\\Wagons\\AP\\AP_Old_1_Sound.xml"};
    case SoundCommand::OldHeavyRattly:
        return {kSteam, "AP_Old_2_Sound.xml", "Audio\\RailVehicles\\Wagons\\AP\\AP_Old_1_Sound.xml"};
    case SoundCommand::ContainerFlats:
        return {kModern, "AP_Old_1_Sound.xml", "Audio\\RailVehicles\\Wagons\\AP\\AP_Containers_Sound.xml"};
    case SoundCommand::FourWheel:
        return {kSteam, "AP_4Wheel_Sound.xml", "Audio\\RailVehicles\\Wagons\\AP\\AP_4Wheel_Sound.xml"};
    default:
        return {kModern, "AP_Old_1_Sound.xml", "Audio\\RailVehicles\\Wagons\\AP\\AP_New_Sound.xml"};
    }
}

bool isWagonCommand(SoundCommand c) {
    return c == SoundCommand::NewWagon || c == SoundCommand::OldHeavy || c == SoundCommand::OldHeavyRattly ||
           c == SoundCommand::ContainerFlats || c == SoundCommand::FourWheel;
}

// The templates each command reads.
std::vector<const char*> templatesOf(SoundCommand command) {
    if (isWagonCommand(command))
        return {"WagonSounds.txt"};
    switch (command) {
    case SoundCommand::Class37:
        return {"ChildAudio37.txt", "Bell37.txt"};
    case SoundCommand::Class47:
        return {"ChildAudio.txt", "BellControl.txt"};
    case SoundCommand::Hst:
        return {"HST_Controls.txt"};
    case SoundCommand::Occlusion37:
        return {"Class37Children.txt"};
    case SoundCommand::Occlusion47:
        return {"Class47Children.txt"};
    default:
        return {};
    }
}

std::string language(AppContext& ctx, int entry, const char* english) {
    if (entry > 0 && ctx.lang.has(entry)) {
        std::string text = ctx.lang.text(entry);
        if (!text.empty())
            return text;
    }
    return english;
}

} // namespace

const std::vector<SoundCommandInfo>& soundCommands() {
    using C = SoundCommand;
    static const std::vector<SoundCommandInfo> commands{
        {C::NewWagon, "new-wagon", "mnuNewWag", "New Wagon Sounds", 544,
         "This will point the selected wagons at the AP wagon sounds. The AP sound pack must be installed.", false},
        {C::OldHeavy, "old-heavy", "mnuOldH", "Old heavy wagons", 544,
         "This will point the selected wagons at the AP wagon sounds. The AP sound pack must be installed.", false},
        {C::OldHeavyRattly, "old-heavy-rattly", "mnuOHR", "Old Heavy Rattly", 544,
         "This will point the selected wagons at the AP wagon sounds. The AP sound pack must be installed.", false},
        {C::ContainerFlats, "container-flats", "mnuCntrFlats", "Container Flats", 544,
         "This will point the selected wagons at the AP wagon sounds. The AP sound pack must be installed.", false},
        {C::FourWheel, "four-wheel", "mnu4WW", "4 Wheel Wagons", 544,
         "This will point the selected wagons at the AP wagon sounds. The AP sound pack must be installed.", false},
        {C::Mk1, "mk1", "mnuMK1", "Add MK1 & Mk2a/b/c Coach Sounds", 530,
         "This will point the selected Mk1 and Mk2a/b/c coaches at the AP coach sounds. The AP sound pack must be "
         "installed.",
         false},
        {C::Mk2, "mk2", "mnuMk2", "Add Mk2d/e/f (air cond) Coach Sounds", 531,
         "This will point the selected Mk2d/e/f (air cond) coaches at the AP coach sounds. The AP sound pack must be "
         "installed.",
         false},
        {C::Mk3, "mk3", "mnuMk3", "Add Mk3 Coach Sounds", 532,
         "This will point the selected Mk3 coaches at the AP Mk3 bogie sounds. The AP sound pack must be installed.",
         false},
        {C::Appropriate, "appropriate", "mnuApp", "Add Appropriate Coach Sounds", 533,
         "This will update the selected coaches that use the BG_Modern bogie sounds to the Mk3 Coach Packs as "
         "appropriate",
         false},
        {C::BogieName, "bogie", "mnuBacn", "Change BogieAudioControlName", 0, "", false},
        {C::Class37, "class37", "mnuSnd37", "Class 37 Sounds", 545,
         "This will add the AP Class 37 sounds to the selected locos. The AP Class 37 pack must be installed.", false},
        {C::Class47, "class47", "mnuCL47", "Class 47 Sounds", 546,
         "This will add the AP Class 47 sounds to the selected locos. The AP Class 47 pack must be installed.", false},
        {C::Hst, "hst", "mnuHST", "Class 43/HST Sounds", 547,
         "This will add the AP Class 43/HST sounds to the selected power cars. The AP HST pack must be installed.",
         false},
        {C::Occlusion37, "occlusion37", "mnuAdd37", "Add Class 37 Occlusions", 548,
         "This will add cab shadows (occlusions) to the selected locos. Do you wish to continue?", true},
        {C::Occlusion47, "occlusion47", "mnuAdd47", "Add Class 47 Occlusions", 548,
         "This will add cab shadows (occlusions) to the selected locos. Do you wish to continue?", true},
    };
    return commands;
}

const SoundCommandInfo* soundCommand(std::string_view word) {
    for (const auto& c : soundCommands())
        if (word == c.word)
            return &c;
    return nullptr;
}

const std::vector<std::string>& bogieSounds() {
    static const std::vector<std::string> choices{"BG_Steam", "BG_Modern", "RA_BG_Mk1", "RA_BG_Mk3"};
    return choices;
}

std::string soundNotice(AppContext& ctx, const SoundCommandInfo& info) {
    return language(ctx, info.noticeEntry, info.notice);
}

std::string loadSoundSettings(AppContext& ctx, SoundSettings& settings) {
    settings.resolver = &ctx.resolver;
    if (settings.assets.empty())
        settings.assets = ctx.resolver.resolveForWrite(ctx.railWorks(), "Assets");
    settings.notChanged = language(ctx, 535, "Not changed:- ");
    settings.updated = language(ctx, 534, "The sounds of the selected items have been updated.");
    if (settings.command == SoundCommand::BogieName &&
        std::find(bogieSounds().begin(), bogieSounds().end(), settings.bogie) == bogieSounds().end())
        return "'" + settings.bogie + "' is none of BG_Steam, BG_Modern, RA_BG_Mk1, RA_BG_Mk3.";
    for (const char* name : templatesOf(settings.command)) {
        const fs::path file = rsTemplateFile(ctx, name);
        std::string text = ReadTextFile(file);
        if (text.empty()) {
            if (settings.command == SoundCommand::Hst)
                return "Unable to convert files, the file\nTemplates\\HST_Controls.txt is missing.";
            return file.string() + ": the template is missing or empty.";
        }
        settings.templates[name] = std::move(text);
    }
    if (settings.command == SoundCommand::Occlusion37 || settings.command == SoundCommand::Occlusion47)
        return snd::loadOcclusion(ctx, settings);
    return {};
}

RowEdit editSoundRow(const SoundSettings& settings, const RowInput& input) {
    using C = SoundCommand;
    switch (settings.command) {
    case C::NewWagon:
    case C::OldHeavy:
    case C::OldHeavyRattly:
    case C::ContainerFlats:
    case C::FourWheel:
        return snd::wagonSounds(settings, input);
    case C::Mk1:
    case C::Mk2:
    case C::Mk3:
    case C::Appropriate:
        return snd::coachSounds(settings, input);
    case C::BogieName:
        return snd::bogieName(settings, input);
    case C::Class37:
        return snd::class37(settings, input);
    case C::Class47:
        return snd::class47(settings, input);
    case C::Hst:
        return snd::hst(settings, input);
    case C::Occlusion37:
    case C::Occlusion47:
        return snd::occlusion(settings, input);
    }
    return rs::passOver(input, "Unknown command.");
}

namespace snd {

RowIds::RowIds(const SoundSettings& settings, const RowInput& input) {
    std::uint64_t seed = settings.seed;
    if (seed == 0) {
        std::random_device device;
        seed = (static_cast<std::uint64_t>(device()) << 32) ^ device();
    }
    m_engine.seed(seed + 0x9E3779B97F4A7C15ull * (input.index + 1));
}

std::string RowIds::next() {
    const double fraction = std::generate_canonical<double, 53>(m_engine);
    long long n = 10000000 + static_cast<long long>(fraction * 20000000.0);
    if (n >= 30000000) // a fraction rounded up to 1
        n = 29999999;
    return std::to_string(n);
}

std::string templateText(const SoundSettings& settings, const std::string& name, const std::string& xml) {
    const auto it = settings.templates.find(name);
    return it == settings.templates.end() ? std::string() : rs::withLineEnds(it->second, xml);
}

std::string rowName(const RowInput& input) {
    std::string name;
    std::size_t pos = InStr(1, input.xml, "<Name ", Match::Text);
    if (pos)
        GetDetail(input.xml, pos, "Name", name, kText);
    return utf8FromDocument(shownName(name));
}

RowEdit notChanged(const SoundSettings& settings, const RowInput& input) {
    const std::string name = rowName(input);
    return rs::passOver(input, name.empty() ? "nothing in it needed changing" : settings.notChanged + name);
}

void noteBlueprint(const SoundSettings& settings, RowEdit& edit, std::string_view provider, std::string_view product,
                   std::string_view id) {
    const std::string relative =
        utf8FromDocument(shownName(std::string(provider) + "\\" + std::string(product) + "\\" + rs::binOf(std::string(id))));
    PathResolver own;
    const PathResolver& resolver = settings.resolver ? *settings.resolver : own;
    if (!resolver.exists(settings.assets, relative))
        edit.notes.push_back(relative + " is not installed.");
}

void noteReferenceAt(const SoundSettings& settings, RowEdit& edit, const std::string& xml, std::size_t pos) {
    std::string provider, product, id;
    GetProvider(pos, provider, product, xml);
    std::size_t at = pos;
    GetDetail(xml, at, "BlueprintID", id, kText);
    if (!id.empty())
        noteBlueprint(settings, edit, provider, product, id);
}

void noteProxy(const SoundSettings& settings, RowEdit& edit, std::string_view proxy) {
    const std::string relative = utf8FromDocument(proxy);
    PathResolver own;
    const PathResolver& resolver = settings.resolver ? *settings.resolver : own;
    if (!resolver.exists(settings.assets, relative + ".proxybin") && !resolver.exists(settings.assets, relative + ".proxyxml"))
        edit.notes.push_back(relative + " (.proxybin or .proxyxml) is not installed.");
}

bool setTag(std::string& xml, std::size_t from, std::string_view tag, std::string_view value) {
    std::size_t pos = InStr(from ? from : 1, xml, "<" + std::string(tag), Match::Text);
    if (!pos)
        return false;
    PutDetail(xml, pos, tag, value, kText);
    return pos != 0;
}

// The wagon commands: an empty bogie sound filled, an empty children list given a Wagon Sound,
// the stock wagon sound exchanged for the pack's.
RowEdit wagonSounds(const SoundSettings& settings, const RowInput& input) {
    const WagonKind kind = wagonKind(settings.command);
    std::string xml = input.xml;
    RowEdit e;
    if (settings.addBogie) {
        std::size_t pos = InStr(1, xml, "<BogieAudioControlName", Match::Text);
        std::string bogie;
        if (pos)
            GetDetail(xml, pos, "BogieAudioControlName", bogie, kText);
        if (pos && rs::trimmed(bogie).empty() && setTag(xml, 1, "BogieAudioControlName", kind.bogie))
            noteProxy(settings, e, kind.bogie);
    }
    if (settings.addWagonSound) {
        // Only the empty form: a list that holds other children gets no sound child.
        if (const std::size_t empty = InStr(1, xml, "<Children/>", Match::Text)) {
            RowIds ids(settings, input);
            const std::string block = fillTemplate(templateText(settings, "WagonSounds.txt", xml),
                                                   {{"aaaaaa", ids.next()}, {"bbbbbb", std::string(kind.childFile)}});
            xml.replace(empty - 1, 11, block);
            noteBlueprint(settings, e, "Kuju", "RailSimulator",
                          "Audio\\RailVehicles\\Wagons\\AP\\" + std::string(kind.childFile));
        }
    }
    std::size_t found = InStr(1, xml, "Audio\\RailVehicles\\Wagons\\Wagon Generic Sound.xml", Match::Text);
    if (!found)
        found = InStr(1, xml, "Audio\\RailVehicles\\Wagons\\Wagon Sound.xml", Match::Text);
    if (found) {
        // Only the reference whose own value names the stock sound.
        std::size_t id = InStrRev(xml, "<BlueprintID", found, Match::Text);
        if (id && InStr(id, xml, "</BlueprintID>", Match::Text) < found)
            id = 0;
        if (id) {
            setTag(xml, id, "BlueprintID", kind.sound);
            noteReferenceAt(settings, e, xml, id);
        }
    }
    if (xml == input.xml)
        return notChanged(settings, input);
    e.xml = std::move(xml);
    return e;
}

// The coach commands: the bogie sound of the pack, and for Mk1 and Mk2 the coach's sound child.
RowEdit coachSounds(const SoundSettings& settings, const RowInput& input) {
    std::string xml = input.xml;
    RowEdit e;
    const std::size_t bogie = InStr(1, xml, "<BogieAudioControlName", Match::Text);
    if (!bogie)
        return rs::passOver(input, "The blueprint has no BogieAudioControlName.");
    if (settings.command == SoundCommand::Mk1 || settings.command == SoundCommand::Mk2) {
        const std::string joints = std::string(kBogies) + "AP\\AP_2Axle_Joints";
        setTag(xml, bogie, "BogieAudioControlName", joints);
        noteProxy(settings, e, joints);
        if (const std::size_t child = InStr(bogie, xml, "Wagon Sound", Match::Text)) {
            if (const std::size_t id = InStr(child, xml, "<BlueprintID d:type", Match::Text)) {
                setTag(xml, id > 5 ? id - 5 : 1, "BlueprintID",
                       settings.command == SoundCommand::Mk1 ? "Audio\\RailVehicles\\Passenger\\AP\\AP_Mk1-2a_Sound.xml"
                                                             : "Audio\\RailVehicles\\Passenger\\AP\\AP_Mk2f_Sound.xml");
                noteReferenceAt(settings, e, xml, id);
            }
        }
    } else {
        std::size_t pos = bogie;
        std::string value;
        GetDetail(xml, pos, "BogieAudioControlName", value, kText);
        if (InStr(1, value, "BG_Modern", Match::Text)) {
            const std::string mk3 = std::string(kBogies) + "RA_BG_Mk3";
            setTag(xml, bogie, "BogieAudioControlName", mk3);
            noteProxy(settings, e, mk3);
        } else if (settings.command == SoundCommand::Appropriate) {
            return rs::passOver(input,
                                rowName(input) + " was not using the BG_Modern audio files. No change was made to it.");
        }
    }
    if (xml == input.xml)
        return notChanged(settings, input);
    e.xml = std::move(xml);
    return e;
}

// dlgBogie: the chosen stock bogie sound.
RowEdit bogieName(const SoundSettings& settings, const RowInput& input) {
    std::string xml = input.xml;
    const std::string value = std::string(kBogies) + settings.bogie;
    if (!setTag(xml, 1, "BogieAudioControlName", value))
        return rs::passOver(input, "The blueprint has no BogieAudioControlName.");
    if (xml == input.xml)
        return notChanged(settings, input);
    RowEdit e;
    noteProxy(settings, e, value);
    e.xml = std::move(xml);
    return e;
}

} // namespace snd

} // namespace velmora::assets
