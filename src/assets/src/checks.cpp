#include "velmora/assets/checks.h"

#include "velmora/assets/assetlist.h"
#include "velmora/assets/listcommands.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/errorlog.h"
#include "velmora/core/services.h"
#include "velmora/core/xmltext.h"

#include <algorithm>

namespace velmora::assets {

namespace fs = std::filesystem;

namespace {

const ScanSettings kText{Match::Text};

std::size_t find(const std::string& text, std::string_view what, std::size_t from = 1) {
    return InStr(from, text, what, Match::Text);
}

std::string detailFrom(const std::string& xml, std::size_t pos, std::string_view tag) {
    std::string value;
    GetDetail(xml, pos, tag, value, kText);
    return pos == 0 ? std::string() : value;
}

// The value between the ">" behind a tag and the next "<".
std::string valueBehind(const std::string& xml, std::size_t at) {
    const std::size_t gt = xml.find('>', at - 1);
    if (gt == std::string::npos)
        return {};
    const std::size_t lt = xml.find('<', gt + 1);
    return lt == std::string::npos ? std::string() : xml.substr(gt + 1, lt - gt - 1);
}

std::string folderOf(const std::string& backslashPath) {
    const auto slash = backslashPath.rfind('\\');
    return slash == std::string::npos ? std::string() : backslashPath.substr(0, slash);
}

std::string lastElement(const std::string& value) {
    const auto slash = value.find_last_of("\\/");
    return slash == std::string::npos ? value : value.substr(slash + 1);
}

// A blueprint ID names the .xml source; the document on disk ends in .bin.
std::string binOf(const std::string& blueprintId) {
    return blueprintId.size() >= 3 ? blueprintId.substr(0, blueprintId.size() - 3) + "bin" : blueprintId;
}

struct Triple {
    std::string provider, product, id;
};

Triple tripleFrom(const std::string& xml, std::size_t pos) {
    const BlueprintRef r = GetBlueprintRef(xml, pos, kText);
    return {r.provider, r.product, r.blueprintId};
}

// The file a value names: the value and the suffix. Some tools write the value with its
// extension already, or with the .csv that a numbering list is compiled from; the suffix is then
// not added a second time.
std::string withSuffix(const std::string& value, std::string_view suffix) {
    if (iendsWith(value, suffix))
        return value;
    if (suffix == ".dcsv" && iendsWith(value, ".csv"))
        return value.substr(0, value.size() - 4) + ".dcsv";
    return value + std::string(suffix);
}

void add(Report& r, std::string text, std::string path = {}, bool missing = false) {
    r.lines.push_back({std::move(text), std::move(path), missing});
}

} // namespace

std::string withoutBracket(std::string value) {
    const auto open = value.find('[');
    const auto close = open == std::string::npos ? open : value.find(']', open);
    if (close != std::string::npos)
        value.erase(open, close - open + 1);
    return value;
}

bool Report::anyMissing() const {
    return std::any_of(lines.begin(), lines.end(), [](const ReportLine& l) { return l.missing; });
}

std::string Report::text() const {
    if (lines.empty())
        return "No errors found";
    std::string out;
    for (const auto& l : lines)
        out += l.text + "\r\n";
    return out;
}

std::string texturePath(std::string value, const std::string& shapeRelative) {
    // The texture code in brackets is four characters wide wherever it stands.
    if (const auto bracket = value.find('['); bracket != std::string::npos)
        value.erase(bracket, 4);
    const std::string shapeFolder = folderOf(shapeRelative);
    std::string base;
    if (iequals(value.substr(0, std::min<std::size_t>(4, value.size())), "text")) {
        base = shapeFolder;
    } else if (value.rfind("..\\", 0) == 0) {
        int levels = 0;
        for (int n = 5; n >= 1; --n) {
            std::string prefix;
            for (int i = 0; i < n; ++i)
                prefix += "..\\";
            if (value.rfind(prefix, 0) == 0) {
                levels = n;
                value.erase(0, prefix.size());
                break;
            }
        }
        auto up = [](std::string path, int n) {
            for (int i = 0; i < n; ++i)
                path = folderOf(path);
            return path;
        };
        if (levels <= 2) {
            base = up(shapeFolder, levels);
        } else {
            // Three or more: the first folder of the value, where it stands in the shape's path.
            const std::string first = value.substr(0, value.find('\\'));
            const std::size_t at = InStr(1, "\\" + shapeRelative, "\\" + first + "\\", Match::Text);
            // Not there: that many levels up from where the shape lies.
            base = at > 0 ? shapeRelative.substr(0, at > 1 ? at - 2 : 0) : up(shapeFolder, levels);
        }
    } else {
        base = shapeFolder;
    }
    if (base.empty())
        base = shapeFolder;
    return base.empty() ? value + ".TgPcDx" : base + "\\" + value + ".TgPcDx";
}

bool rowForBlueprint(const std::string& path, const fs::path& assetsFolder, AssetRow& row) {
    std::string rel = path;
    std::replace(rel.begin(), rel.end(), '/', '\\');
    const std::string root = [&] {
        std::string r = assetsFolder.string();
        std::replace(r.begin(), r.end(), '/', '\\');
        return r + "\\";
    }();
    if (rel.rfind(root, 0) == 0)
        rel = rel.substr(root.size());
    else if (const auto at = InStr(1, rel, "\\Assets\\", Match::Text); at > 0)
        rel = rel.substr(at + 7);
    else if (rel.rfind("Assets\\", 0) == 0)
        rel = rel.substr(7);
    const auto b1 = rel.find('\\');
    const auto b2 = b1 == std::string::npos ? b1 : rel.find('\\', b1 + 1);
    if (b2 == std::string::npos)
        return false;
    row = {rel.substr(0, b1), rel.substr(b1 + 1, b2 - b1 - 1), rel.substr(b2 + 1), "", "", "", "", ""};
    return true;
}

AssetChecks::AssetChecks(AppContext& ctx) : m_ctx(ctx) {}

fs::path AssetChecks::resolve(const std::string& relative, bool& exists, bool repair) const {
    const fs::path assets = m_ctx.resolver.resolveForWrite(m_ctx.railWorks(), "Assets");
    if (auto found = m_ctx.resolver.resolve(assets, relative); found && fs::is_regular_file(*found)) {
        exists = true;
        return *found;
    }
    exists = false;
    if (repair) {
        // Entities and both mis-decoded spellings of accented letters back to the plain name,
        // which the file system holds as UTF-8.
        const std::string repaired = latin1ToUtf8(DecodedChars(relative));
        if (repaired != relative) {
            if (auto found = m_ctx.resolver.resolve(assets, repaired); found && fs::is_regular_file(*found)) {
                exists = true;
                return *found;
            }
            return m_ctx.resolver.resolveForWrite(assets, repaired);
        }
    }
    return m_ctx.resolver.resolveForWrite(assets, relative);
}

std::string AssetChecks::convert(const fs::path& file) {
    std::string xml;
    if (const ConvertResult r = binToXmlText(file, xml); !r) {
        // A file that is not there is a finding of the report; one that is there and cannot be
        // read is an error.
        std::error_code ec;
        if (fs::exists(file, ec)) {
            m_ctx.log().log("frmAssets", m_procedure, err::Conversion, r.message);
            unreadable.push_back(r.message);
        }
        return {};
    }
    return xml;
}

std::vector<std::string> textureValues(const std::string& shapeXml, bool skipBlobs) {
    std::vector<std::string> values;
    bool inList = false;
    for (const std::string& line : SplitLines(shapeXml)) {
        if (find(line, "<Owner ") || (skipBlobs && find(line, "<d:blob")))
            continue;
        if (!inList) {
            inList = find(line, "<TextureByName") > 0;
            continue;
        }
        if (find(line, "</TextureByName") || !find(line, "<e")) {
            inList = false;
            continue;
        }
        const std::size_t gt = line.find('>');
        const std::size_t lt = gt == std::string::npos ? gt : line.find('<', gt + 1);
        if (lt != std::string::npos)
            values.push_back(line.substr(gt + 1, lt - gt - 1));
    }
    return values;
}

fs::path AssetChecks::textureAsWritten(const std::string& value) const {
    const std::string plain = withoutBracket(value);
    const bool belowAssets = plain.rfind("..\\", 0) != 0 && !iequals(plain.substr(0, std::min<std::size_t>(4, plain.size())), "text");
    bool found = false;
    if (belowAssets)
        if (const fs::path candidate = resolve(plain + ".TgPcDx", found); found)
            return candidate;
    return {};
}

void AssetChecks::textures(const std::string& shapeXml, const std::string& shapeRelative, TextureWalk walk, Report& out) {
    for (const std::string& value : textureValues(shapeXml, walk == TextureWalk::Show)) {
        const std::string relative = texturePath(value, shapeRelative);
        if (walk == TextureWalk::Show) {
            bool exists = false;
            add(out, resolve(relative, exists, false).string(), relative);
            continue;
        }
        bool exists = false;
        const fs::path file = resolve(relative, exists);
        // The route check reads a value that is neither "text..." nor "..\..." as a path below
        // Assets: a texture found that way is not passed off as missing.
        const fs::path other = exists ? fs::path() : textureAsWritten(value);
        if (walk == TextureWalk::List) {
            add(out, other.empty() ? file.string() : other.string(), other.empty() ? file.string() : other.string(),
                !exists && other.empty());
        } else if (!exists) {
            bool shapeExists = false;
            const std::string called = file.string() + " Called by " + resolve(shapeRelative, shapeExists, false).string();
            if (other.empty())
                add(out, called, file.string(), true);
            else
                add(out, called + " (found below Assets as " + other.string() + ")", file.string(), false);
        }
    }
}

// The tag table of the loco check, in its order.
struct AssetChecks::Tag {
    const char* search;    // the tag searched for
    const char* detail;    // the value read from there; "" for a blueprint triple
    const char* suffix;    // added to the path
    enum Form { Triple, Plain, Bracketed, Anims, Children, Script, Cargo } form;
};

void AssetChecks::walkTags(const std::string& xml, Walk walk, Report& report) {
    static const AssetChecks::Tag kTable[] = {
        {"<NumberingList>", "CsvFile", ".dcsv", AssetChecks::Tag::Plain},
        {"<FrontCoupling", "", "", AssetChecks::Tag::Triple},
        {"<RearCoupling", "", "", AssetChecks::Tag::Triple},
        {"<BogeyBlueprint>", "", "", AssetChecks::Tag::Triple},
        {"<BogieAudioControlName", "BogieAudioControlName", ".proxyxml", AssetChecks::Tag::Plain},
        {"<CouplingAudioControlName", "CouplingAudioControlName", ".proxyxml", AssetChecks::Tag::Plain},
        {"<HeadOutCameraBlueprint>", "", "", AssetChecks::Tag::Triple},
        {"<PrimaryNamedTextureSet>", "", "", AssetChecks::Tag::Triple},
        {"<SecondaryNamedTextureSet>", "", "", AssetChecks::Tag::Triple},
        {"<GeometryID ", "GeometryID", ".geopcdx", AssetChecks::Tag::Bracketed},
        {"<CollisionGeometryID ", "CollisionGeometryID", ".geopcdx", AssetChecks::Tag::Bracketed},
        {"<AnimSet>", "AnimationName", ".ban", AssetChecks::Tag::Anims},
        {"<EngineSimFile>", "", "", AssetChecks::Tag::Triple},
        // The check searches the tag as it has always been spelt, which a correctly spelt
        // document does not contain; the reports spell it right.
        {"<IneriorGeometryID ", "InteriorGeometryID", ".geopcdx", AssetChecks::Tag::Bracketed},
        {"<InteriorCamera>", "", "", AssetChecks::Tag::Triple},
        {"<CabOcclusion>", "", "", AssetChecks::Tag::Triple},
        {"<Children>", "", "", AssetChecks::Tag::Children},
        {"<ScriptComponent>", "Name", ".lua", AssetChecks::Tag::Script},
        {"<CargoBlueprintID>", "", "", AssetChecks::Tag::Cargo},
    };
    const bool show = walk != Walk::Check;
    for (std::size_t row = 0; row < std::size(kTable); ++row) {
        const AssetChecks::Tag& t = kTable[row];
        // The wagon report leaves out the head-out camera, the engine simulation and scripts.
        if (walk == Walk::ShowWagon && (row == 6 || row == 12 || row == 17))
            continue;
        const std::string search = (row == 13 && show) ? "<InteriorGeometryID " : t.search;
        const std::size_t at = find(xml, search);
        if (at == 0)
            continue;
        const char* missingMark = walk == Walk::ShowWagon ? (row == 2 ? "Missing: " : "MISSING:  ") : "MISSING: ";
        auto report1 = [&](const std::string& relative) {
            bool exists = false;
            fs::path file = resolve(relative, exists);
            // A script may be given compiled only.
            if (!exists && t.form == AssetChecks::Tag::Script) {
                bool outExists = false;
                const fs::path compiled = resolve(relative.substr(0, relative.size() - 3) + "out", outExists);
                if (outExists) {
                    exists = true;
                    file = compiled;
                }
            }
            if (!show) {
                if (!exists)
                    add(report, file.string(), file.string(), true);
            } else {
                add(report, exists ? file.string() : missingMark + file.string(), file.string(), !exists);
            }
        };
        auto triple = [&](std::size_t pos) {
            const Triple tr = tripleFrom(xml, pos);
            if (!tr.id.empty())
                report1(tr.provider + "\\" + tr.product + "\\" + binOf(tr.id));
        };
        switch (t.form) {
        case AssetChecks::Tag::Triple: triple(at); break;
        case AssetChecks::Tag::Cargo:
            if (!detailFrom(xml, at, "Provider").empty())
                triple(at);
            break;
        case AssetChecks::Tag::Plain:
        case AssetChecks::Tag::Script: {
            const std::string value = detailFrom(xml, at, t.detail);
            if (!value.empty())
                report1(withSuffix(value, t.suffix));
            break;
        }
        case AssetChecks::Tag::Bracketed: {
            const std::string value = withoutBracket(detailFrom(xml, at, t.detail));
            if (!value.empty())
                report1(value + t.suffix);
            break;
        }
        case AssetChecks::Tag::Anims: {
            // Each animation in turn, every search resuming 100 characters behind the last.
            std::size_t pos = at;
            for (;;) {
                std::string name;
                GetDetail(xml, pos, "AnimationName", name, kText);
                if (pos == 0 || name.empty())
                    break;
                report1(withSuffix(name, ".ban"));
                pos += 100;
            }
            break;
        }
        case AssetChecks::Tag::Children:
            for (std::size_t child = find(xml, "<ChildName ", at); child > 0; child = find(xml, "<ChildName ", child + 1))
                triple(child);
            break;
        }
    }
}

Report AssetChecks::walkRows(const std::vector<AssetRow>& rows, Walk walk) {
    m_procedure = walk == Walk::Check ? "mnuCheckLoco_Click" : walk == Walk::ShowLoco ? "mnuShowFiles_Click" : "mnuWag_Click";
    Report report;
    for (const AssetRow& row : rows) {
        const std::string relative = row.relativePath();
        if (relative == "\\\\" || row.provider.empty())
            continue;
        bool exists = false;
        const fs::path file = resolve(relative, exists, false);
        if (walk == Walk::Check) {
            add(report, "");
            add(report, m_ctx.lang.text(495) + " " + file.string());
            add(report, m_ctx.lang.text(496));
        } else {
            add(report, m_ctx.lang.text(495) + " " + file.string() + (walk == Walk::ShowWagon ? " Files used:-" : ""));
            add(report, "");
        }
        const std::string xml = convert(file);
        if (xml.empty()) {
            add(report, file.string() + ": the blueprint cannot be read", file.string(), true);
            continue;
        }
        // The shape first, with its textures.
        if (const std::size_t geometry = find(xml, "<GeometryID"); geometry > 0) {
            const std::string shapeRelative = withoutBracket(valueBehind(xml, geometry)) + ".GeoPcDx";
            bool shapeExists = false;
            const fs::path shape = resolve(shapeRelative, shapeExists);
            if (!shapeExists) {
                add(report, (walk == Walk::Check ? std::string() : std::string("MISSING: ")) + shape.string(),
                    shape.string(), true);
            } else {
                const std::string shapeXml = convert(shape);
                if (walk == Walk::Check)
                    textures(shapeXml, shapeRelative, TextureWalk::CheckMissing, fileList);
                else
                    textures(shapeXml, shapeRelative, TextureWalk::Show, report);
            }
        } else if (walk != Walk::Check) {
            continue; // the reports end the row of a blueprint without a shape
        }
        walkTags(xml, walk, report);
    }
    return report;
}

Report AssetChecks::checkLoco(const std::vector<AssetRow>& rows) { return walkRows(rows, Walk::Check); }
Report AssetChecks::filesUsedByLocos(const std::vector<AssetRow>& rows) { return walkRows(rows, Walk::ShowLoco); }
Report AssetChecks::filesUsedByWagons(const std::vector<AssetRow>& rows) { return walkRows(rows, Walk::ShowWagon); }

void AssetChecks::GetAudio(const fs::path& blueprint) {
    const std::string xml = convert(blueprint);
    auto proxy = [&](const std::string& name, bool reportMissing) {
        bool exists = false;
        const fs::path file = resolve(name + ".proxyxml", exists);
        if (!exists) {
            if (reportMissing)
                add(fileList, file.string() + " Called by " + currentFile, file.string(), true);
            return;
        }
        add(fileList, file.string(), file.string());
        const std::string proxyText = ReadTextFile(file);
        for (std::size_t at = find(proxyText, "<Pathname"); at > 0; at = find(proxyText, "<Pathname", at + 1)) {
            const std::string sound = detailFrom(proxyText, at, "Filename");
            if (sound.empty())
                continue;
            bool soundExists = false;
            const fs::path soundFile = resolve(sound, soundExists);
            add(fileList, soundExists ? soundFile.string() : soundFile.string() + " Called by " + file.string(),
                soundFile.string(), !soundExists);
        }
    };
    for (std::size_t at = find(xml, "<SoundComponent>"); at > 0; at = find(xml, "<SoundComponent>", at + 1)) {
        const std::string name = detailFrom(xml, at, "ProxyName");
        if (!name.empty())
            proxy(name, true);
    }
    if (const std::size_t track = find(xml, "<cTrackSoundBlueprint>"); track > 0)
        for (const char* tag : {"RumbleAudioControlName", "TingleAudioControlName", "JunctionAudioControlName",
                                "DerailmentAudioControlName"})
            if (const std::string name = detailFrom(xml, track, tag); !name.empty())
                proxy(name, true);
}

void AssetChecks::shapeOfAsset(const std::string& xml, const std::string&, Report& out, bool loft) {
    const std::size_t geometry = find(xml, "<GeometryID");
    const std::string shapeRelative = withoutBracket(valueBehind(xml, geometry)) + ".geopcdx";
    bool exists = false;
    const fs::path shape = resolve(shapeRelative, exists);
    add(out, m_ctx.lang.text(498));
    add(out, shape.string(), shape.string(), !exists);
    const std::string shapeXml = exists ? convert(shape) : std::string();
    textures(shapeXml, shapeRelative, loft ? TextureWalk::List : TextureWalk::Show, out);
    if (loft)
        add(out, "");
}

void AssetChecks::GetLoftBits(const std::string& xml, Report& out) {
    if (find(xml, "<GeometryID")) {
        shapeOfAsset(xml, {}, out, true);
        return;
    }
    const std::size_t section = find(xml, "<CrossSectionID");
    if (!section) {
        add(out, "Selected item did not have an associated .GeoPcDx or .XSec file");
        add(out, "So this option can't display textures used. Sorry.");
        return;
    }
    const std::string relative = withoutBracket(detailFrom(xml, section, "CrossSectionID")) + ".XSec";
    bool exists = false;
    const fs::path file = resolve(relative, exists);
    add(out, file.string(), file.string(), !exists);
    const std::string sectionXml = exists ? convert(file) : std::string();
    for (const std::string& value : ElementValues(sectionXml, "Texture")) {
        bool textureExists = false;
        const fs::path texture = resolve(texturePath(value, relative), textureExists);
        add(out, texture.string(), texture.string(), !textureExists);
    }
}

void AssetChecks::animationsAndAudio(const std::string& xml, const AssetRow& row) {
    // Animations beside the blueprint, then a blank line.
    if (const std::size_t anims = find(xml, "<AnimSet>"); anims > 0) {
        std::size_t pos = anims;
        for (std::string name; GetDetail(xml, pos, "AnimationName", name, kText), pos > 0 && !name.empty();) {
            bool animExists = false;
            fs::path anim =
                resolve(withSuffix(folderOf(row.relativePath()) + "\\" + lastElement(name), ".ban"), animExists);
            // The value is a path below Assets, as the loco check reads it: an animation kept in
            // a folder of its own is found there rather than listed as missing beside the blueprint.
            if (bool asWritten = false; !animExists) {
                const fs::path written = resolve(withSuffix(name, ".ban"), asWritten);
                if (asWritten) {
                    anim = written;
                    animExists = true;
                }
            }
            add(fileList, anim.string(), anim.string(), !animExists);
        }
        add(fileList, "");
    }
    // Every mention of audio: the blueprint reference around it, followed to its sounds.
    for (std::size_t at = find(xml, "Audio"); at > 0; at = find(xml, "Audio", at + 5)) {
        const std::size_t provider = InStrRev(xml, "<Provider", at, Match::Binary);
        if (!provider)
            continue;
        const Triple tr = tripleFrom(xml, provider);
        if (iendsWith(tr.id, "xml")) {
            bool audioExists = false;
            const fs::path audio = resolve(tr.provider + "\\" + tr.product + "\\" + binOf(tr.id), audioExists);
            if (audioExists)
                GetAudio(audio);
        }
    }
}

Report AssetChecks::filesUsedByAsset(const std::vector<AssetRow>& rows) {
    m_procedure = "mnuSFA_Click";
    for (const AssetRow& row : rows) {
        if (row.name == "Name" || row.provider.empty())
            continue;
        bool exists = false;
        const fs::path file = resolve(row.relativePath(), exists, false);
        currentFile = file.string();
        const std::string xml = convert(file);
        if (find(xml, "<AnimSet>"))
            add(fileList, "Animation files used by " + file.string());
        animationsAndAudio(xml, row);
        if (find(xml, "<GeometryID")) {
            shapeOfAsset(xml, row.product, fileList, false);
        } else {
            add(fileList, "Selected item did not have an associated .GeoPcDx file");
            add(fileList, "So this option can't display textures used. Sorry.");
        }
    }
    Report out = std::move(fileList);
    fileList = {};
    return out;
}

Report AssetChecks::filesUsedByLofts(const std::vector<AssetRow>& rows) {
    m_procedure = "mnuLoft_Click";
    for (const AssetRow& row : rows) {
        if (row.provider.empty())
            continue;
        bool exists = false;
        const fs::path file = resolve(row.relativePath(), exists, false);
        currentFile = file.string();
        GetLoftBits(convert(file), fileList);
    }
    Report out = std::move(fileList);
    fileList = {};
    return out;
}

Report AssetChecks::getAssetBits(const std::vector<AssetRow>& rows) {
    m_procedure = "GetAssetBits";
    for (const AssetRow& row : rows) {
        if (row.name == "Name" || row.provider.empty())
            continue;
        bool exists = false;
        const fs::path file = resolve(row.relativePath(), exists, false);
        add(fileList, file.string(), file.string(), !exists);
        currentFile = file.string();
        const std::string xml = convert(file);
        if (xml.empty())
            continue;
        animationsAndAudio(xml, row);
        if (const std::size_t geometry = find(xml, "<GeometryID"); geometry > 0) {
            const std::string shapeRelative = withoutBracket(detailFrom(xml, geometry, "GeometryID")) + ".geopcdx";
            bool shapeExists = false;
            const fs::path shape = resolve(shapeRelative, shapeExists);
            add(fileList, shape.string(), shape.string(), !shapeExists);
            if (shapeExists)
                textures(convert(shape), shapeRelative, TextureWalk::List, fileList);
            add(fileList, "");
        } else {
            GetLoftBits(xml, fileList);
        }
    }
    Report out = std::move(fileList);
    fileList = {};
    if (!out.lines.empty()) {
        add(out, "");
        add(out, "+++");
    }
    return out;
}

std::vector<std::string> AssetChecks::useInScenarios(std::vector<AssetRow>& rows) {
    m_procedure = "mnuInScene_Click";
    std::vector<std::string> problems;
    for (AssetRow& row : rows) {
        bool exists = false;
        const fs::path file = resolve(row.relativePath(), exists, false);
        std::string xml = convert(file);
        if (xml.empty()) {
            problems.push_back(file.string() + ": the blueprint cannot be read");
            continue;
        }
        bool changed = false;
        if (const std::size_t valid = find(xml, "<ValidInScenarios"); valid > 0) {
            const std::string value = detailFrom(xml, valid, "ValidInScenarios");
            if (value != "eFalse")
                continue; // any other value is left as it stands
            std::size_t pos = valid;
            PutDetail(xml, pos, "ValidInScenarios", "eTrue", kText);
            changed = true;
        }
        if (const std::size_t category = find(xml, "<Category"); category > 0 && detailFrom(xml, category, "Category").empty()) {
            std::size_t pos = category;
            PutDetail(xml, pos, "Category", "eUncategorised", kText);
            changed = true;
        }
        if (!changed)
            continue;
        std::string bin;
        if (!xmlTextToBin(xml, bin, file.string()) || bin.empty()) {
            problems.push_back("Serz.exe could not convert file " + file.filename().string() +
                               "\nThis is a limitation of Serz.exe and out of my control.");
            continue;
        }
        if (const WriteResult stored = m_ctx.files().write(file, bin); !stored) {
            problems.push_back(stored.message);
            continue;
        }
        removeBlueprintCache(m_ctx, row.provider, row.product);
        row.inScene = "Yes";
    }
    m_ctx.resolver.invalidate();
    return problems;
}

std::string AssetChecks::missingAssetRows(std::vector<AssetRow>& rows, const std::string& mask, const std::string& category) {
    const fs::path list = m_ctx.reports() / "MissingAssets.csv";
    if (!FileExists(list))
        return "Your missing assets file could not be found, must be saved as\nReports\\MissingAssets.csv";
    for (const std::string& text : SplitLines(ReadTextFile(list))) {
        // The route check quotes a path that holds a comma or a quote.
        std::string line = csvCells(text).front();
        while (!line.empty() && line.back() == ' ')
            line.pop_back();
        if (line.empty())
            continue;
        std::replace(line.begin(), line.end(), '/', '\\');
        const auto slash = line.rfind('\\');
        if (slash == std::string::npos)
            continue;
        AssetRow probe;
        const fs::path assets = m_ctx.resolver.resolveForWrite(m_ctx.railWorks(), "Assets");
        if (!rowForBlueprint(line, assets, probe))
            continue;
        const std::string folderRelative = folderOf(probe.relativePath());
        bool exists = false;
        const fs::path folder = resolve(folderRelative, exists, false);
        if (!fs::is_directory(folder))
            continue;
        AssetListOptions options;
        options.mask = mask.empty() ? "*.*" : mask;
        options.category = category;
        options.singleFile = line.substr(slash + 1);
        options.log = &m_ctx.log();
        auto result = buildAssetList(folder, options);
        rows.insert(rows.end(), result.rows.begin(), result.rows.end());
    }
    return {};
}

std::string AssetChecks::packageMissingAssets(int* copied) {
    const fs::path list = m_ctx.reports() / "MissingFiles.txt";
    if (!FileExists(list))
        return "Your missing files file could not be found, must be saved as\nReports\\MissingFiles.txt";
    const fs::path package = m_ctx.appPath() / "NewPackage";
    if (!MakePath(package / "Assets"))
        return (package / "Assets").string() + ": the folder cannot be made";
    int count = 0;
    auto copy = [&](const fs::path& from, const std::string& relative) {
        // Only paths that stay inside the package folder are written.
        const fs::path target = (package / fs::path(relative).lexically_normal()).lexically_normal();
        const fs::path inside = target.lexically_relative(package);
        if (inside.empty() || *inside.begin() == "..")
            return;
        // The package is the program's own output: a file copied again replaces the last copy.
        WriteOptions replaceCopy;
        replaceCopy.backup = Backup::None;
        replaceCopy.refuseReadOnly = false;
        if (const WriteResult done = m_ctx.files().copy(from, target, replaceCopy))
            ++count;
        else
            m_ctx.log().log("frmAssets", "Command21_Click", err::FileNotFound, done.message);
    };
    for (const std::string& line : SplitLines(ReadTextFile(list))) {
        if (line == "+++")
            break;
        if (line.empty())
            continue;
        std::string normal = line;
        std::replace(normal.begin(), normal.end(), '\\', '/');
        const std::size_t at = normal.find("Assets/");
        if (at == std::string::npos)
            continue;
        const std::string relative = normal.substr(at);
        copy(fs::path(line), relative);
        if (iendsWith(normal, ".tgpcdx")) {
            const std::string stem = normal.substr(0, normal.size() - 7);
            const std::string relStem = relative.substr(0, relative.size() - 7);
            for (const char* season : {"_Au", "_Sp", "_Wi"}) {
                const fs::path variant = fs::path(stem + season + ".TgPcDx");
                const fs::path parent = variant.parent_path();
                // The seasonal file may be spelt in any letter case; the copy keeps the one on disk.
                if (auto found = m_ctx.resolver.resolve(parent, variant.filename().string()))
                    copy(*found, (fs::path(relative).parent_path() / found->filename()).generic_string());
            }
        }
    }
    if (copied)
        *copied = count;
    return {};
}

} // namespace velmora::assets
