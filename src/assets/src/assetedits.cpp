// The "Edit Assets" commands: their table, the choices each one needs before a batch, and the
// edits of a row's blueprint, shape or texture.

#include "rsshared.h"
#include "velmora/assets/assetedits.h"
#include "velmora/assets/renaming.h"
#include "velmora/assets/rsedits.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/paths.h"
#include "velmora/core/services.h"
#include "velmora/core/templates.h"
#include "velmora/core/xmltext.h"

#include <cmath>

namespace velmora::assets {

namespace fs = std::filesystem;

namespace {

const ScanSettings kText{Match::Text};

using rs::lineEnd;
using rs::passOver;
using rs::trimmed;

// The row's own document changed; a text that came out the same is passed over with `same`.
RowEdit edited(const RowInput& input, std::string xml, const char* same) {
    if (xml == input.xml)
        return passOver(input, same);
    return rs::edited(input, std::move(xml));
}

// The first element of exactly this name ("<Category" but not "<Categories"), one-based from
// `from`; 0 when there is none.
std::size_t findElement(const std::string& xml, std::string_view tag, std::size_t from = 1) {
    for (std::size_t p = InStr(from, xml, tag, Match::Text); p; p = InStr(p + 1, xml, tag, Match::Text)) {
        const std::size_t after = p - 1 + tag.size();
        if (after < xml.size() && (xml[after] == ' ' || xml[after] == '>' || xml[after] == '/'))
            return p;
    }
    return 0;
}

// Change LODs and Zero EmissiveAsVec: the change made on the row itself when it is a shape, else
// on its blueprint's shape, which is then stored beside the blueprint left as it was.
template <typename Change>
RowEdit editShape(const EditSettings& settings, const RowInput& input, Change change, const char* nothing) {
    if (isShapeFile(input.file)) {
        std::string xml = input.xml;
        if (!change(xml))
            return passOver(input, nothing);
        return edited(input, std::move(xml), "nothing in the shape needed changing");
    }
    const std::string geometry = geometryOf(input.xml);
    if (geometry.empty())
        return passOver(input, "The blueprint names no shape (GeometryID).");
    PathResolver local;
    const fs::path shape = shapeOfRow(input, settings.resolver ? *settings.resolver : local);
    if (shape.empty())
        return passOver(input, "The shape " + geometry + ".GeoPcDx that it names is missing.");
    std::string xml;
    if (const ConvertResult r = binToXmlText(shape, xml); !r)
        return passOver(input, shape.string() + ": " + (r.message.empty() ? "cannot be read" : r.message));
    const std::string before = xml;
    if (!change(xml))
        return passOver(input, std::string(nothing) + " (" + shape.filename().string() + ")");
    if (xml == before)
        return passOver(input, "nothing in its shape needed changing");
    RowEdit e;
    e.xml = input.xml;
    e.changed = false;
    e.documents.push_back({shape, std::move(xml)});
    return e;
}

RowEdit category(const EditSettings& settings, const RowInput& input) {
    std::string xml = input.xml;
    putCategory(xml, categoryText(settings.typed));
    if (xml == input.xml && !findElement(xml, "<Category"))
        return passOver(input, "The blueprint has no Description to put a Category behind.");
    return edited(input, std::move(xml), "it has that category already");
}

RowEdit locoName(const EditSettings& settings, const RowInput& input) {
    std::string xml = input.xml;
    putLocoName(xml, documentText(numberedName(settings.typed, input.index, settings.count)));
    return edited(input, std::move(xml), "it has that name already");
}

RowEdit englishOnlyRow(const RowInput& input) {
    std::string xml = input.xml;
    englishOnly(xml);
    return edited(input, std::move(xml), "it has no names in other languages");
}

// The deep snow texture written over the row's texture whole.
RowEdit snow(const EditSettings& settings, const RowInput& input) {
    if (!isTextureFile(input.file))
        return passOver(input, "Only textures (.TgPcDx) are given the deep snow texture; this is no texture.");
    if (!fs::is_regular_file(input.file))
        return passOver(input, input.file.string() + ": the texture is not there.");
    RowEdit e;
    e.changed = false;
    e.files.push_back({input.file, settings.snowTexture});
    return e;
}

} // namespace

const std::vector<EditCommandInfo>& editCommands() {
    static const std::vector<EditCommandInfo> commands{
        {EditCommand::Lod, "lod", "mnuLod", 471, "Change LODs", true, false},
        {EditCommand::Category, "category", "mnuCategory", 472, "Change Category", false, true},
        {EditCommand::Name, "name", "mnuChangeName", 499, "Change Name", false, true},
        {EditCommand::LocoName, "loco-name", "mnuCNLK", 507, "Change Loco Name/Localized/Key", false, true},
        {EditCommand::ZeroEmissive, "zero-emissive", "mnuZero", 494, "Zero EmissiveAsVec", true, false},
        {EditCommand::Snow, "snow", "mnuSnow", 488, "Make Better Snow", false, false},
        {EditCommand::EnglishOnly, "english-only", "mnuEnglish", 492, "Make English Only", false, true},
        {EditCommand::MakeSource, "make-source", "mnuMakeSource", 493, "Make Equivalent Source Folder", false,
         false},
        {EditCommand::Delete, "delete", "mnuDel", 586, "Delete Selected", false, true},
    };
    return commands;
}

const EditCommandInfo* editCommand(std::string_view word) {
    for (const auto& c : editCommands())
        if (word == c.word)
            return &c;
    return nullptr;
}

std::string categoryText(std::string typed) {
    typed = trimmed(typed);
    if (typed.empty())
        return typed;
    if (typed.front() != 'e')
        typed.insert(0, 1, 'e');
    return documentText(typed);
}

void putCategory(std::string& xml, const std::string& category) {
    if (std::size_t pos = findElement(xml, "<Category")) {
        PutDetail(xml, pos, "Category", category, kText);
        return;
    }
    const std::size_t description = InStr(1, xml, "</Description>", Match::Text);
    if (!description)
        return;
    // On a line of its own, indented as the Description it follows.
    const std::size_t lineStart = xml.rfind('\n', description - 1);
    const std::size_t from = lineStart == std::string::npos ? 0 : lineStart + 1;
    std::string indent = xml.substr(from, xml.find_first_not_of(" \t", from) - from);
    if (indent.empty())
        indent = "\t\t";
    const std::size_t behind = description - 1 + 14;
    xml.insert(behind, lineEnd(xml) + indent + "<Category d:type=\"cDeltaString\">" + category + "</Category>");
}

void putLocoName(std::string& xml, const std::string& name) {
    putDisplayName(xml, name);
    if (const std::size_t key = findElement(xml, "<Key")) {
        std::size_t pos = key > 10 ? key - 10 : 1;
        PutDetail(xml, pos, "Key", "", kText);
    }
    if (const std::size_t engine = findElement(xml, "<EngineType")) {
        std::size_t pos = engine;
        if (findElement(xml, "<EngineName", engine))
            PutDetail(xml, pos, "EngineName", name, kText);
        pos = engine;
        if (findElement(xml, "<English", engine))
            PutDetail(xml, pos, "English", name, kText);
        pos = engine;
        if (findElement(xml, "<Key", engine))
            PutDetail(xml, pos, "Key", "", kText);
    }
}

std::size_t englishOnly(std::string& xml) {
    std::size_t cut = 0;
    for (std::size_t english = InStr(1, xml, "</English>", Match::Text); english;) {
        const std::size_t behind = english - 1 + 10;
        const std::size_t close = InStr(behind + 1, xml, "</Localisation", Match::Text);
        // The closing tag of this string, not of a later one that has no English line.
        const std::size_t nextEnglish = InStr(behind + 1, xml, "</English>", Match::Text);
        if (!close || (nextEnglish && nextEnglish < close)) {
            english = nextEnglish;
            continue;
        }
        const std::size_t lineFeed = xml.rfind('\n', close - 1);
        if (lineFeed != std::string::npos && lineFeed > behind) {
            const std::string_view gone(xml.data() + behind, lineFeed - behind);
            if (gone.find('<') != std::string_view::npos)
                ++cut;
            // The line end of the English line stays whole: CR LF or LF as the document has it.
            const std::size_t keep = lineFeed > behind && xml[lineFeed - 1] == '\r' ? lineFeed - 1 : lineFeed;
            xml.erase(behind, keep - behind);
        }
        english = InStr(behind + 1, xml, "</English>", Match::Text);
    }
    return cut;
}

std::string loadEditSettings(AppContext& ctx, EditSettings& settings) {
    settings.resolver = &ctx.resolver;
    switch (settings.command) {
    case EditCommand::Lod:
        // 0 (or NaN) is a box left empty.
        if (!std::isfinite(settings.minLod) || !std::isfinite(settings.maxLod) || settings.minLod == 0 ||
            settings.maxLod == 0)
            return ctx.lang.has(523) ? ctx.lang.text(523) : "Please enter both a Min LOD and a Max LOD value.";
        if (settings.minLod < 0 || settings.maxLod < 0)
            return "LOD distances are above 0; a distance of 0 ends the shape's list.";
        if (settings.minLod > settings.maxLod)
            return "The Min LOD (" + lodText(settings.minLod) + ") is larger than the Max LOD (" +
                   lodText(settings.maxLod) + ").";
        return {};
    case EditCommand::Category:
        if (categoryText(settings.typed).empty())
            return "No category was given.";
        return {};
    case EditCommand::Name:
    case EditCommand::LocoName:
        if (trimmed(settings.typed).empty())
            return "No name was given.";
        if (settings.count == 0)
            settings.count = 1;
        return {};
    case EditCommand::Snow: {
        const fs::path file = rsTemplateFile(ctx, "Snow000_Deep.TgPcDx");
        settings.snowTexture = FileExists(file) ? ReadTextFile(file) : std::string();
        if (settings.snowTexture.empty())
            return "The Snow000_Deep.TgPcDx file was not found in your\nVelmora\\Templates folder.";
        return {};
    }
    default:
        return {};
    }
}

BatchOptions editBatchOptions(const EditSettings& settings) {
    BatchOptions o;
    for (const auto& c : editCommands())
        if (c.command == settings.command) {
            o.command = c.caption;
            o.removesCache = c.removesCache;
        }
    o.readRows = settings.command != EditCommand::Snow;
    return o;
}

RowEdit editAssetRow(const EditSettings& settings, const RowInput& input) {
    switch (settings.command) {
    case EditCommand::Lod:
        return editShape(
            settings, input, [&](std::string& xml) { return rescaleLods(xml, settings.minLod, settings.maxLod); },
            "The shape has no LOD distances.");
    case EditCommand::ZeroEmissive:
        return editShape(
            settings, input,
            [](std::string& xml) {
                const std::string before = xml;
                zeroEmissive(xml);
                return InStr(1, before, "<EmissiveAsVec", Match::Text) != 0;
            },
            "The shape has no EmissiveAsVec.");
    case EditCommand::Category:
        return category(settings, input);
    case EditCommand::Name:
        return changeNameEditor(settings.typed, settings.count)(input);
    case EditCommand::LocoName:
        return locoName(settings, input);
    case EditCommand::Snow:
        return snow(settings, input);
    case EditCommand::EnglishOnly:
        return englishOnlyRow(input);
    case EditCommand::MakeSource:
    case EditCommand::Delete:
        break;
    }
    return passOver(input, "This command does not change rows one by one.");
}

fs::path sourceFolderFor(AppContext& ctx, const fs::path& folder, std::string& error) {
    const fs::path normal = folder.lexically_normal();
    fs::path behind;
    bool below = false;
    for (const fs::path& part : normal) {
        if (below) {
            if (part == ".." || part == ".") {
                error = "You don't appear to have selected a path?";
                return {};
            }
            if (!part.empty())
                behind /= part;
        } else {
            std::string name = part.string();
            for (char& c : name)
                c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            below = name == "assets";
        }
    }
    if (!below) {
        error = "You don't appear to have selected a path?";
        return {};
    }
    const fs::path source = ctx.resolver.resolveForWrite(ctx.railWorks(), "Source");
    return behind.empty() ? source : ctx.resolver.resolveForWrite(source, behind.generic_string());
}

std::string makeSourceFolder(AppContext& ctx, const fs::path& folder) {
    std::string error;
    const fs::path target = sourceFolderFor(ctx, folder, error);
    if (target.empty())
        return error;
    if (!MakePath(target))
        return target.string() + ": the folder could not be made.";
    ctx.resolver.invalidate();
    return {};
}

} // namespace velmora::assets
