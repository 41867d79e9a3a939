// The "Edit Rolling Stock" commands: their table, the templates they read before a batch, and
// the edits that need no more than the blueprint's own text.

#include "rsshared.h"
#include "velmora/assets/listcommands.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/paths.h"
#include "velmora/core/services.h"
#include "velmora/core/xmltext.h"

#include <cmath>
#include <cstdlib>

namespace velmora::assets {

namespace fs = std::filesystem;

namespace {

const ScanSettings kText{Match::Text};
constexpr std::string_view kChildOpen = "<cEntityContainerBlueprint-sChild";
constexpr std::string_view kChildClose = "</cEntityContainerBlueprint-sChild>";

// One-based positions as the text helpers count them, turned into string indices.
std::size_t at(std::size_t oneBased) {
    return oneBased ? oneBased - 1 : std::string::npos;
}

std::string displayNameOf(const RowInput& input) {
    if (input.row && !input.row->name.empty())
        return input.row->name;
    std::string name;
    std::size_t pos = InStr(1, input.xml, "<Name ", Match::Text);
    if (pos)
        GetDetail(input.xml, pos, "Name", name, kText);
    return name;
}

// The Children list cut out whole, from the line break ahead of it: nothing rides on the
// vehicle any more, no sound, no smoke, no lamps.
RowEdit dead(const RowInput& input) {
    std::string xml = input.xml;
    const std::size_t container = InStr(1, xml, "<ContainerComponent>", Match::Text);
    const std::size_t open = InStr(container ? container : 1, xml, "<Children>", Match::Text);
    const std::size_t close = open ? InStr(open, xml, "</Children>", Match::Text) : 0;
    if (!close)
        return rs::passOver(input, "The blueprint has no children to take off.");
    std::size_t from = at(open);
    while (from > 0 && (xml[from - 1] == '\t' || xml[from - 1] == ' '))
        --from;
    if (from > 0 && xml[from - 1] == '\n')
        --from;
    if (from > 0 && xml[from - 1] == '\r')
        --from;
    xml.erase(from, at(close) + 11 - from);
    rs::nameVariant(xml, input);
    return rs::edited(input, std::move(xml));
}

// The driver's child copied as a conductor standing mirrored on the other side of the cab.
RowEdit conductor(const RowInput& input) {
    std::string xml = input.xml;
    const std::size_t children = InStr(1, xml, "<Children>", Match::Text);
    const std::size_t driver = children ? InStr(children, xml, ">Driver<", Match::Text) : 0;
    const std::size_t start = driver ? InStrRev(xml, kChildOpen, driver, Match::Text) : 0;
    const std::size_t end = driver ? InStr(driver, xml, kChildClose, Match::Text) : 0;
    if (!start || !end)
        return rs::passOver(input, "The blueprint has no Driver child.");
    const std::size_t blockEnd = at(end) + kChildClose.size();
    std::string copy = xml.substr(at(start), blockEnd - at(start));
    const std::size_t name = InStr(1, copy, ">Driver<", Match::Text);
    copy.replace(at(name), 8, ">Conductor<");
    rs::replaceAll(copy, "WP_04_02", "WP_04_01");
    // The thirteenth value of the matrix is its x translation.
    std::size_t e = InStr(1, copy, "<Element>", Match::Text);
    for (int i = 0; i < 13 && e; ++i)
        e = InStr(e + 1, copy, "<E ", Match::Text);
    const std::size_t gt = e ? copy.find('>', at(e)) : std::string::npos;
    const std::size_t lt = gt == std::string::npos ? gt : copy.find('<', gt);
    if (lt == std::string::npos)
        return rs::passOver(input, "The Driver child has no matrix of sixteen values.");
    copy.replace(gt + 1, lt - gt - 1, rs::toggleSign(copy.substr(gt + 1, lt - gt - 1)));
    rs::insertChild(xml, blockEnd, copy);
    return rs::edited(input, std::move(xml));
}

const char* passengerTemplate(const fs::path& file) {
    const std::string name = file.filename().string();
    for (const char* word : {"BCK", "BFK", "GUARD"})
        if (InStr(1, name, word, Match::Text))
            return "AddPassengers3.txt";
    return InStr(1, name, "Mk1", Match::Text) ? "AddPassengers.txt" : "AddPassengers2.txt";
}

// Figures seated in the coach; the empty coach is kept beside it as <name>_MT.
RowEdit passengers(const RsSettings& settings, const RowInput& input) {
    std::string xml = input.xml;
    const std::size_t children = rs::openChildren(xml);
    if (children == std::string::npos)
        return rs::passOver(input, "The blueprint has no children list to seat passengers in.");
    rs::insertChild(xml, children, rs::templateText(settings, passengerTemplate(input.file)));
    RowEdit e = rs::edited(input, std::move(xml));
    std::string empty = input.xml;
    renameBlueprint(empty, displayNameOf(input) + "_MT");
    e.documents.push_back(
        {input.file.parent_path() / (input.file.stem().string() + "_MT.bin"), std::move(empty)});
    return e;
}

RowEdit mass(const RsSettings& settings, const RowInput& input) {
    std::string xml = input.xml;
    std::size_t pos = InStr(1, xml, "<Mass ", Match::Text);
    if (!pos)
        return rs::passOver(input, "The blueprint has no Mass.");
    PutDetail(xml, pos, "Mass", settings.mass, kText);
    if (const std::size_t empty = InStr(1, xml, "<CargoDef/>", Match::Text)) {
        std::string cargo = rs::withLineEnds(rs::templateText(settings, "CargoDef.txt"), xml);
        std::size_t c = 1;
        PutDetail(cargo, c, "Capacity", settings.capacity, kText);
        xml.replace(at(empty), 11, cargo);
    } else if ((pos = InStr(1, xml, "<Capacity ", Match::Text))) {
        PutDetail(xml, pos, "Capacity", settings.capacity, kText);
    }
    return rs::edited(input, std::move(xml));
}

RowEdit wheelSlip(const RsSettings& settings, const RowInput& input) {
    const std::string path = input.row ? input.row->relativePath() : input.file.string();
    if (!InStr(1, path, "Bogie", Match::Text))
        return rs::passOver(input, settings.notBogie);
    std::string xml = input.xml;
    constexpr std::string_view kPowered = "<Powered d:type=\"cDeltaString\">eFalse</Powered>";
    for (std::size_t a = InStr(1, xml, "<Animation", Match::Text); a;
         a = InStr(a + 1, xml, "<Animation", Match::Text)) {
        if (std::size_t p = InStr(a, xml, "<Powered", Match::Text)) {
            PutDetail(xml, p, "Powered", "eFalse", kText);
        } else if (const std::size_t axle = InStr(a, xml, "<Axle>", Match::Text)) {
            xml.insert(at(axle), std::string(kPowered) + rs::lineEnd(xml));
        }
    }
    RowEdit e = rs::edited(input, std::move(xml));
    if (!e.changed)
        e.passedOver = "The bogie has no wheels to set unpowered, or all of them are already.";
    return e;
}

// The train brake's notched lever replaced by the lever of the template, on the same animation.
RowEdit usAirBrakes(const RsSettings& settings, const RowInput& input) {
    std::string xml = input.xml;
    const std::size_t brake = InStr(1, xml, ">TrainBrakeControl<", Match::Text);
    if (!brake)
        return rs::passOver(input, "The blueprint has no TrainBrakeControl.");
    const std::size_t lever =
        InStr(brake, xml, "<cControlContainerBlueprint-cInteriorIrregularNotchedLever", Match::Text);
    if (!lever)
        return rs::passOver(
            input, "This loco does not appear to have a Notched Lever control\nno changes can be made.");
    std::size_t pos = lever > 10 ? lever - 10 : 1;
    std::string animation;
    GetDetail(xml, pos, "AnimationName", animation, kText);
    const std::size_t open = InStrRev(xml, "<InterfaceElements>", lever, Match::Text);
    const std::size_t close = InStr(lever, xml, "</InterfaceElements>", Match::Text);
    if (!pos || !open || !close)
        return rs::passOver(
            input, "The Notched Lever control has no AnimationName or no InterfaceElements around it.");
    std::string block = rs::withLineEnds(rs::templateText(settings, "US_AirBrakes.txt"), xml);
    rs::replaceAll(block, "aaaaaa", animation);
    xml.replace(at(open), at(close) + 20 - at(open), block);
    return rs::edited(input, std::move(xml));
}

// Whole tag values only: ">old<" becomes ">new<", letter case ignored.
RowEdit provider(const RsSettings& settings, const RowInput& input) {
    std::string xml = input.xml;
    const std::string from = ">" + settings.oldProvider + "<", to = ">" + settings.newProvider + "<";
    for (std::size_t p = InStr(1, xml, from, Match::Text); p;
         p = InStr(p + to.size(), xml, from, Match::Text))
        xml.replace(at(p), from.size(), to);
    RowEdit e = rs::edited(input, std::move(xml));
    if (!e.changed)
        e.passedOver = "No value '" + settings.oldProvider + "' in the blueprint.";
    return e;
}

// The templates each command reads.
std::vector<const char*> templatesOf(RsCommand command) {
    switch (command) {
    case RsCommand::HeadLights:
    case RsCommand::TailLights:
        return {"UKCode.txt"};
    case RsCommand::Passengers:
        return {"AddPassengers.txt", "AddPassengers2.txt", "AddPassengers3.txt"};
    case RsCommand::Mass:
        return {"CargoDef.txt"};
    case RsCommand::UsAirBrakes:
        return {"US_AirBrakes.txt"};
    case RsCommand::LocoScript:
        return {"locoScript1.txt", "EngScript1.lua", "EngScript2.lua", "DefaultAudio.lua"};
    case RsCommand::WagonScript:
        return {"WagScript1.txt"};
    default:
        return {};
    }
}

// The lamp assets that come with the program (OrvelleLights\Assets in its folder) copied over the
// simulator's Assets folder, every file through the write service as one journal entry. Links
// and anything not a plain file are passed over. False when there is no such folder.
bool installLightFiles(AppContext& ctx, const fs::path& assets) {
    fs::path source;
    for (const fs::path& base : {ctx.appPath(), ctx.dataPath()})
        if (auto found = ctx.resolver.resolve(base, "OrvelleLights/Assets"); found && fs::is_directory(*found)) {
            source = *found;
            break;
        }
    if (source.empty())
        return false;
    JournalCommand entry(&ctx.journal(), "Install the lamp files");
    std::error_code ec;
    for (fs::recursive_directory_iterator it(source, fs::directory_options::skip_permission_denied, ec), end;
         !ec && it != end; it.increment(ec)) {
        if (!it->is_regular_file(ec) || it->is_symlink(ec))
            continue;
        ctx.files().copy(it->path(), assets / fs::relative(it->path(), source));
    }
    ctx.resolver.invalidate();
    return true;
}

std::string checkLamp(AppContext& ctx, const RsSettings& settings) {
    if (settings.lamp.blueprint.empty())
        return "No lamp template was chosen.";
    if (settings.command == RsCommand::HeadLights &&
        (settings.trainType < 0 || settings.trainType >= static_cast<int>(trainTypes().size())))
        return "No train type was chosen.";
    const std::string bin = rs::binOf(settings.lamp.blueprint);
    if (!ctx.resolver.resolve(settings.assets, bin) && installLightFiles(ctx, settings.assets))
        ctx.resolver.invalidate();
    if (!ctx.resolver.resolve(settings.assets, bin))
        return "You do not appear to have the Light files installed:-\n" +
               (settings.assets / bin).generic_string();
    return {};
}

} // namespace

const std::vector<RsCommandInfo>& rsCommands() {
    static const std::vector<RsCommandInfo> commands{
        {RsCommand::HeadLights, "head-lights", "mnuHead", 508, "Add head-lights", Store::NewName, ""},
        {RsCommand::TailLights, "tail-lights", "mnuTail", 509, "Add tail-lights", Store::NewName, ""},
        {RsCommand::Dead, "dead", "mnuDead", 510, "Make Selected Stock Dead", Store::NewName, "_Dead"},
        {RsCommand::Conductor, "conductor", "mnuCond", 441, "Add Conductor to US Diesel", Store::InPlace, ""},
        {RsCommand::Passengers, "passengers", "mnuAdd", 442, "Add Passengers to Carriages", Store::InPlace,
         ""},
        {RsCommand::Mass, "mass", "mnuMass", 511, "Correct Mass/Capacity of Selected", Store::InPlace, ""},
        {RsCommand::WheelSlip, "wheelslip", "mnuSlip", 512, "Add WheelSlip to Steam Loco", Store::InPlace,
         ""},
        {RsCommand::UsAirBrakes, "us-airbrakes", "mnuUSAir", 513, "Change US Diesel airbrake settings",
         Store::InPlace, ""},
        {RsCommand::Provider, "provider", "mnuCProv", 514, "Correct Provider", Store::InPlace, ""},
        {RsCommand::LocoScript, "loco-script", "mnuLocoScript", 515, "Add Loco Script (Diesel)",
         Store::InPlace, ""},
        {RsCommand::WagonScript, "wagon-script", "mnuWagScript", 516, "Add Wagon Script", Store::InPlace, ""},
    };
    return commands;
}

const RsCommandInfo* rsCommand(std::string_view word) {
    for (const auto& c : rsCommands())
        if (word == c.word)
            return &c;
    return nullptr;
}

fs::path rsTemplateFile(AppContext& ctx, std::string_view name) {
    const std::string relative = "Templates/" + std::string(name);
    if (auto own = ctx.resolver.resolve(ctx.appPath(), relative))
        return *own;
    if (auto shipped = ctx.resolver.resolve(ctx.dataPath(), relative))
        return *shipped;
    return ctx.dataPath() / relative;
}

std::string loadRsSettings(AppContext& ctx, RsSettings& settings) {
    settings.resolver = &ctx.resolver;
    if (settings.assets.empty())
        settings.assets = ctx.railWorks() / "Assets";
    for (const char* name : templatesOf(settings.command)) {
        const fs::path file = rsTemplateFile(ctx, name);
        std::string text = ReadTextFile(file);
        if (text.empty())
            return file.string() + ": the template is missing or empty.";
        settings.templates[name] = std::move(text);
    }
    switch (settings.command) {
    case RsCommand::HeadLights:
    case RsCommand::TailLights:
        return checkLamp(ctx, settings);
    case RsCommand::Mass:
        settings.mass = rs::trimmed(settings.mass);
        settings.capacity = rs::trimmed(settings.capacity);
        if (!rs::isNumber(settings.mass))
            return "New Mass '" + settings.mass + "' is not a number.";
        if (!rs::isNumber(settings.capacity))
            return "New Capacity '" + settings.capacity + "' is not a number.";
        return {};
    case RsCommand::Provider:
        if (settings.oldProvider.empty())
            return "No Provider to correct was typed.";
        return {};
    case RsCommand::WheelSlip:
        settings.notBogie = ctx.lang.text(464) + " " + ctx.lang.text(465);
        return {};
    default:
        return {};
    }
}

RowEdit editRow(const RsSettings& settings, const RowInput& input) {
    switch (settings.command) {
    case RsCommand::HeadLights:
        return rs::headLights(settings, input);
    case RsCommand::TailLights:
        return rs::tailLights(settings, input);
    case RsCommand::Dead:
        return dead(input);
    case RsCommand::Conductor:
        return conductor(input);
    case RsCommand::Passengers:
        return passengers(settings, input);
    case RsCommand::Mass:
        return mass(settings, input);
    case RsCommand::WheelSlip:
        return wheelSlip(settings, input);
    case RsCommand::UsAirBrakes:
        return usAirBrakes(settings, input);
    case RsCommand::Provider:
        return provider(settings, input);
    case RsCommand::LocoScript:
        return rs::locoScript(settings, input);
    case RsCommand::WagonScript:
        return rs::wagonScript(settings, input);
    }
    return rs::passOver(input, "Unknown command.");
}

namespace rs {

const std::string& templateText(const RsSettings& settings, const std::string& name) {
    static const std::string none;
    const auto it = settings.templates.find(name);
    return it == settings.templates.end() ? none : it->second;
}

std::size_t openChildren(std::string& xml) {
    const std::size_t container = InStr(1, xml, "<ContainerComponent>", Match::Text);
    if (!container)
        return std::string::npos;
    const std::size_t open = InStr(container, xml, "<Children>", Match::Text);
    const std::size_t empty = InStr(container, xml, "<Children/>", Match::Text);
    if (empty && (!open || empty < open)) {
        xml.replace(at(empty), 11, "<Children>" + lineEnd(xml) + "</Children>");
        return at(empty) + 10;
    }
    return open ? at(open) + 10 : std::string::npos;
}

void nameVariant(std::string& xml, const RowInput& input) {
    if (!input.newDisplayName.empty())
        renameBlueprint(xml, input.newDisplayName);
}

RowEdit passOver(const RowInput& input, std::string reason) {
    RowEdit e;
    e.xml = input.xml;
    e.changed = false;
    e.passedOver = std::move(reason);
    return e;
}

RowEdit edited(const RowInput& input, std::string xml) {
    RowEdit e;
    e.changed = xml != input.xml;
    e.xml = std::move(xml);
    return e;
}

// A number as a single-precision value is written: digits, sign, point, exponent; no hex form,
// no "inf" or "nan", nothing beyond the range of a float.
bool isNumber(const std::string& text) {
    if (text.empty() || text.find_first_not_of("0123456789+-.eE") != std::string::npos)
        return false;
    char* end = nullptr;
    const float value = std::strtof(text.c_str(), &end);
    return end && *end == '\0' && std::isfinite(value);
}

std::string trimmed(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t'))
        s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r'))
        s.remove_suffix(1);
    return std::string(s);
}

std::string lineEnd(const std::string& xml) {
    return xml.find("\r\n") == std::string::npos ? "\n" : "\r\n";
}

std::string withLineEnds(std::string_view block, const std::string& xml) {
    const std::string end = lineEnd(xml);
    std::string out;
    out.reserve(block.size() + block.size() / 16);
    for (char c : block) {
        if (c == '\n')
            out += end;
        else if (c != '\r')
            out += c;
    }
    while (out.size() >= end.size() && out.compare(out.size() - end.size(), end.size(), end) == 0)
        out.resize(out.size() - end.size());
    return out;
}

void insertChild(std::string& xml, std::size_t where, std::string_view block) {
    xml.insert(where, lineEnd(xml) + withLineEnds(block, xml));
}

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
    if (from.empty())
        return;
    for (std::size_t p = text.find(from); p != std::string::npos; p = text.find(from, p + to.size()))
        text.replace(p, from.size(), to);
}

std::string toggleSign(std::string_view value) {
    while (!value.empty() && value.front() == ' ')
        value.remove_prefix(1);
    while (!value.empty() && value.back() == ' ')
        value.remove_suffix(1);
    if (!value.empty() && value.front() == '-')
        return std::string(value.substr(1));
    return "-" + std::string(value);
}

fs::path assetPath(const RsSettings& settings, std::string_view relative) {
    if (settings.resolver)
        return settings.resolver->resolveForWrite(settings.assets, relative);
    PathResolver resolver;
    return resolver.resolveForWrite(settings.assets, relative);
}

std::string binOf(std::string id) {
    if (id.size() >= 3 && InStr(id.size() - 2, id, "xml", Match::Text))
        id.replace(id.size() - 3, 3, "bin");
    return id;
}

} // namespace rs

} // namespace velmora::assets
