// The clones that carry textures: a reskin blueprint (its source's shape stays shared, the clone
// brings its own skin texture) and a scenery item with its own copies of shape and textures.

#include "clonework.h"
#include "velmora/assets/checks.h"
#include "velmora/assets/listcommands.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/services.h"
#include "velmora/core/xmltext.h"

namespace velmora::assets::clonework {

namespace {

const ScanSettings kText{Match::Text};

struct Texture {
    fs::path file;
    std::string name; // the file name the clone gives it, without .TgPcDx
};

// The variants of a texture that travel with it, in the order they are looked for, and the
// name each one gets.
constexpr std::pair<const char*, const char*> kVariants[] = {
    {"_Wi", "_WI"},   {"_sm", "_sm"},       {"_nm", "_nm"},
    {"_nmc", "_nmc"}, {"_night", "_night"}, {"night", "night"},
};

std::string withoutTextureSuffix(const std::string& name) {
    return iendsWith(name, ".TgPcDx") ? name.substr(0, name.size() - 7) : name;
}

// The shape a blueprint names and the textures its lists name, with their variants. A reskin
// takes only the skin: textures below Common or of numbers are passed over, and a second skin
// texture ends it with the language table's box. Textures not found go to `missing`.
bool shapeTextures(Job& job, const std::string& xml, bool skinOnly, fs::path& shape,
                   std::vector<Texture>& out) {
    AssetChecks checks(job.ctx);
    std::size_t at = InStr(1, xml, "<GeometryID", Match::Text);
    if (at == 0)
        return true;
    std::string value;
    GetDetail(xml, at, "GeometryID", value, kText);
    value = withoutBracket(value);
    if (value.empty())
        return true;
    const std::string shapeRel = value + ".GeoPcDx";
    bool exists = false;
    shape = checks.resolve(shapeRel, exists);
    if (!exists) {
        job.result.missing.push_back(shape.string() + " Called by " + job.source.string());
        shape.clear();
        return true;
    }
    std::string shapeXml;
    if (const ConvertResult r = binToXmlText(shape, shapeXml); !r) {
        job.result.message = r.message.empty() ? shape.string() + ": the shape cannot be read" : r.message;
        return false;
    }
    std::vector<fs::path> found;
    for (const std::string& texture : textureValues(shapeXml)) {
        if (texture.empty() || (skinOnly && InStr(1, texture, "common", Match::Text) > 0))
            continue;
        const std::string rel = texturePath(texture, shapeRel);
        fs::path file = checks.resolve(rel, exists);
        if (!exists)
            if (fs::path other = checks.textureAsWritten(texture); !other.empty()) {
                file = std::move(other);
                exists = true;
            }
        if (!exists) {
            job.result.missing.push_back(file.string() + " Called by " + shape.string());
            continue;
        }
        const std::string below = "\\" + rel;
        if (skinOnly &&
            (InStr(1, below, "\\Common\\", Match::Text) > 0 || InStr(1, below, "numbers", Match::Text) > 0))
            continue;
        if (std::find(found.begin(), found.end(), file) == found.end())
            found.push_back(file);
    }
    if (skinOnly && found.size() > 1) {
        job.result.message = job.ctx.lang.text(485) + "\n" + job.ctx.lang.text(486);
        return false;
    }
    for (const fs::path& file : found) {
        const std::string stem = withoutTextureSuffix(file.filename().string());
        out.push_back({file, stem});
        for (const auto& [suffix, name] : kVariants)
            if (auto variant = job.ctx.resolver.resolve(file.parent_path(), stem + suffix + ".tgpcdx"))
                if (fs::is_regular_file(*variant))
                    out.push_back({*variant, stem + name});
    }
    return true;
}

bool copyTextures(Job& job, const std::vector<Texture>& textures, const fs::path& folder) {
    for (const Texture& t : textures)
        if (readable(job, t.file) && !copyFile(job, t.file, folder / (t.name + ".TgPcDx")))
            return false;
    return true;
}

} // namespace

void cloneReskinBlueprint(Job& job) {
    std::string xml;
    fs::path shape;
    std::vector<Texture> textures;
    if (!readBlueprint(job, job.source, xml) || !shapeTextures(job, xml, true, shape, textures))
        return;
    if (textures.empty()) {
        job.result.message = job.source.string() +
                             ": no skin texture of its shape was found, so there is nothing "
                             "for a reskin blueprint to replace. Nothing was written.";
        return;
    }
    std::string error;
    const std::string text = readTemplate(job.ctx, "ReSkinBluePrint.txt", error);
    if (text.empty()) {
        job.result.message = error + " Nothing was written.";
        return;
    }
    std::string blueprintId = job.row.path;
    if (blueprintId.size() >= 3)
        blueprintId.replace(blueprintId.size() - 3, 3, "xml");
    const std::string& skin = textures.front().name;
    const std::string document =
        fillTemplate(text, {
                               {"aaaaaa", documentText(job.names.fileName)},
                               {"bbbbbb", documentText(job.names.displayName)},
                               {"cccccc", documentText(job.names.displayName)},
                               {"dddddd", categoryValue(job.names.category)},
                               {"eeeeee", documentText(job.row.provider)},
                               {"ffffff", documentText(job.row.product)},
                               {"gggggg", documentText(blueprintId)},
                               {"hhhhhh", randomId(systemIds())},
                               {"iiiiii", documentText(skin)},
                               {"jjjjjj", documentText(job.targetRel + "\\[00]" + skin)},
                           });
    std::string bin;
    if (!encodeBlueprint(job, document, job.names.fileName, bin))
        return;
    const fs::path blueprint = job.targetDir / (job.names.fileName + ".bin");
    if (!mayWriteInto(job, blueprint))
        return;
    if (!writeFile(job, blueprint, bin) || !copyTextures(job, textures, job.targetDir)) {
        takeBack(job);
        return;
    }
    job.result.ok = true;
}

void cloneSceneryReskin(Job& job) {
    std::string xml;
    fs::path shape;
    std::vector<Texture> textures;
    if (!readBlueprint(job, job.source, xml) || !shapeTextures(job, xml, false, shape, textures))
        return;
    renameBlueprint(xml, job.names.displayName);
    if (!shape.empty()) {
        std::size_t pos = InStr(1, xml, "<GeometryID", Match::Text);
        const std::string shapeName = shape.filename().string();
        const std::string stem = shapeName.substr(0, shapeName.size() - shape.extension().string().size());
        PutDetail(xml, pos, "GeometryID", documentText(job.targetRel + "\\" + stem), kText);
    }
    std::string bin;
    if (!encodeBlueprint(job, xml, job.names.fileName, bin))
        return;
    const fs::path blueprint = job.targetDir / (job.names.fileName + ".bin");
    if (!mayWriteInto(job, blueprint))
        return;
    const bool ok =
        writeFile(job, blueprint, bin) &&
        (shape.empty() || !readable(job, shape) || copyFile(job, shape, job.targetDir / shape.filename())) &&
        copyTextures(job, textures, job.targetDir / "Textures");
    if (!ok) {
        takeBack(job);
        return;
    }
    job.result.ok = true;
}

} // namespace velmora::assets::clonework
