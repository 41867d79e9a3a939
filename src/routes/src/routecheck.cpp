#include "velmora/routes/routecheck.h"

#include "tiles.h"

#include "velmora/core/appcontext.h"
#include "velmora/archives/productarchives.h"
#include "velmora/core/convert.h"
#include "velmora/core/errorlog.h"
#include "velmora/core/parallel.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/userinterface.h"
#include "velmora/core/xmltext.h"

#include <algorithm>
#include <unordered_set>
#include <atomic>
#include <chrono>
#include <thread>

namespace velmora::routes {

namespace {

using namespace detail;

std::string withoutCode(std::string value) {
    if (const auto b = value.find('['); b != std::string::npos)
        value.erase(b, 4);
    return value;
}

std::string folderOf(const std::string& path) {
    const auto slash = path.rfind('\\');
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

std::string nameOf(const std::string& path) {
    const auto slash = path.find_last_of("\\/");
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

struct Checker {
    AssetFiles files;
    bool markCase = false; // collect the names found only under other letter case

    bool exists(const std::string& relative, fs::path* real = nullptr) const { return files.exists(relative, real); }
    std::string display(const std::string& relative) const { return files.display(relative); }

    // Notes `real` when it answered to `relative` only because letter case was ignored.
    void noteCase(const std::string& relative, const fs::path& real, std::vector<ItemMark>& marks) const {
        if (!markCase)
            return;
        const std::string named = display(relative);
        const std::string actual = real.string();
        if (named != actual && foldName(named) == foldName(actual))
            marks.push_back({named, actual});
    }

    // The document's XML; empty with `error` set when it cannot be had.
    std::string convert(const fs::path& file, std::string& error) const {
        std::string xml;
        if (const ConvertResult r = binToXmlText(file, xml); !r)
            error = r.message;
        return xml;
    }

    TileScan tile(const fs::path& file, const std::string& label) const { return scanTile(files, file, label); }

    // What a blueprint names below it: the shapes, sections, animations and scripts that exist
    // (the geometry list), and the shapes and sections that do not.
    struct Geometry {
        std::vector<std::string> found;
        std::vector<std::string> missingShapes;
        std::string error;
    };

    Geometry geometry(const std::string& blueprint) const {
        Geometry g;
        std::vector<std::string>& out = g.found;
        fs::path real;
        if (!exists(blueprint, &real))
            return g;
        const std::string xml = convert(real, g.error);
        auto keep = [&](const std::string& relative) {
            if (relative.empty() || std::find(out.begin(), out.end(), relative) != out.end())
                return true;
            if (!exists(relative))
                return false;
            out.push_back(relative);
            return true;
        };
        auto shape = [&](const std::string& relative) {
            if (!keep(relative) && std::find(g.missingShapes.begin(), g.missingShapes.end(), relative) == g.missingShapes.end())
                g.missingShapes.push_back(relative);
        };
        if (const std::size_t geometryAt = find(xml, "<GeometryID"); geometryAt > 0) {
            std::size_t pos = geometryAt;
            std::string value;
            GetDetail(xml, pos, "GeometryID", value, kBinary);
            if (!value.empty())
                shape(withoutCode(value) + ".GeoPcDx");
        } else if (const std::size_t section = find(xml, "<cSectionRenderBlueprint"); section > 0) {
            std::size_t pos = section;
            std::string value;
            GetDetail(xml, pos, "CrossSectionID", value, kBinary);
            if (!value.empty())
                shape(withoutCode(value) + ".XSec");
            for (const char* part : {"<StartGeometry", "<MiddleGeometry", "<EndGeometry"}) {
                const std::size_t at = find(xml, part);
                if (!at)
                    continue;
                const Triple t = readTriple(xml, at);
                if (t.id.empty())
                    continue;
                const std::string base = t.provider + "\\" + t.product + "\\" + withoutCode(t.id);
                const std::string stem = base.size() > 4 ? base.substr(0, base.rfind('.')) : base;
                // Either form will do: the part is missing only when neither is there.
                const bool geo = keep(stem + ".GeoPcDx");
                if (!keep(stem + ".XSec") && !geo)
                    g.missingShapes.push_back(stem + ".GeoPcDx");
            }
        }
        if (std::size_t anims = find(xml, "<AnimSet>"); anims > 0) {
            for (int n = 0; n < 2 && anims; ++n) {
                std::string name;
                GetDetail(xml, anims, "AnimationName", name, kBinary);
                if (anims && !name.empty())
                    keep(iendsWith(name, ".ban") ? name : name + ".ban");
            }
        }
        if (std::size_t script = find(xml, "<_script>"); script > 0) {
            std::string name;
            GetDetail(xml, script, "Name", name, kBinary);
            if (script && !name.empty())
                keep(iendsWith(name, ".lua") ? name : name + ".lua");
        }
        return g;
    }

    struct Found {
        std::vector<std::string> used;    // files that exist
        std::vector<std::string> missing; // report lines
        std::vector<ItemMark> otherCase;  // files found only under other letter case
        std::vector<ItemMark> otherReading; // missing as read, there relative to the shape's folder
        std::string error;                // the document that could not be read
    };

    void require(const std::string& relative, const std::string& caller, Found& f, bool& present) const {
        fs::path real;
        present = exists(relative, &real);
        if (present) {
            f.used.push_back(real.string());
            noteCase(relative, real, f.otherCase);
        } else
            f.missing.push_back(display(relative) + " Called by " + caller);
    }

    // The texture value of a shape, below Assets.
    static std::string texturePath(std::string value, const std::string& shape) {
        value = withoutCode(value);
        const std::string folder = folderOf(shape);
        if (value.rfind("..\\", 0) == 0) {
            int levels = 0;
            for (int n = 5; n >= 1 && levels == 0; --n) {
                std::string prefix;
                for (int i = 0; i < n; ++i)
                    prefix += "..\\";
                if (value.rfind(prefix, 0) == 0)
                    levels = n;
            }
            value.erase(0, static_cast<std::size_t>(3 * levels));
            std::string base = folder;
            for (int i = 0; i < levels; ++i)
                base = folderOf(base);
            if (levels > 2) {
                const std::string first = value.substr(0, value.find('\\'));
                if (const std::size_t at = InStr(1, "\\" + shape, "\\" + first + "\\", Match::Text); at > 0)
                    base = shape.substr(0, at > 1 ? at - 2 : 0);
            }
            return base.empty() ? value : base + "\\" + value;
        }
        if (iequals(value.substr(0, std::min<std::size_t>(4, value.size())), "text"))
            return folder.empty() ? value : folder + "\\" + value;
        return value; // relative to Assets as it stands
    }

    // The textures of one shape, section or decal, with the variants each code asks for.
    Found textures(const std::string& geo) const {
        Found f;
        if (iendsWith(geo, "ban") || iendsWith(geo, "lua") || iendsWith(geo, "out"))
            return f;
        fs::path real;
        if (!exists(geo, &real)) {
            f.missing.push_back(display(geo));
            return f;
        }
        const std::string caller = nameOf(geo);
        const std::string xml = convert(real, f.error);
        bool present = false;
        if (find(geo, "\\Decals\\")) {
            for (std::size_t at = find(xml, "<TextureID"); at > 0; at = find(xml, "<TextureID", at + 1)) {
                const std::size_t gt = xml.find('>', at - 1);
                const std::size_t end = find(xml, "</TextureID", at);
                if (gt == std::string::npos || !end)
                    break;
                require(withoutCode(xml.substr(gt + 1, end - 2 - gt)) + ".TgPcDx", caller, f, present);
            }
            return f;
        }
        if (iendsWith(geo, "XSec")) {
            for (const std::string& value : ElementValues(xml, "Texture"))
                require(texturePath(value, geo) + ".TgPcDx", caller, f, present);
            return f;
        }
        bool inList = false;
        for (const std::string& line : SplitLines(xml)) {
            if (find(line, "<d:blob"))
                break; // the binary part of the shape
            if (!inList) {
                inList = find(line, "<TextureByName") > 0;
                continue;
            }
            if (find(line, "</TextureByName")) {
                inList = false;
                continue;
            }
            if (!find(line, "<e"))
                continue;
            std::string value;
            if (!lineValue(line, value))
                continue;
            const auto bracket = value.find('[');
            const std::string code = bracket == std::string::npos ? std::string() : toLowerAscii(value.substr(bracket + 1, 2));
            const std::string stem = texturePath(value, geo);
            // The asset screen reads a value that is neither "text..." nor "..\\..." as relative
            // to the shape's folder; a texture there is noted, not passed over in silence.
            const std::string plain = withoutCode(value);
            const bool belowAssets = plain.rfind("..\\", 0) != 0 && !iequals(plain.substr(0, std::min<std::size_t>(4, plain.size())), "text");
            auto need = [&](const std::string& file, bool& found) {
                require(file, caller, f, found);
                fs::path other;
                const std::string alternative = folderOf(geo) + "\\" + plain + file.substr(stem.size());
                if (!found && belowAssets && exists(alternative, &other))
                    f.otherReading.push_back({display(file), other.string()});
            };
            std::vector<const char*> variants;
            if (code == "08") variants = {"_WI"};
            else if (code == "09") variants = {"_SP", "_WI"};
            else if (code == "0c") variants = {"_AU", "_WI"};
            else if (code == "0d") variants = {"_SP", "_AU", "_WI"};
            need(stem + ".TgPcDx", present);
            if (!present && variants.empty())
                continue; // the base of a plain texture: on to the next
            bool last = present;
            for (const char* v : variants)
                need(stem + v + ".TgPcDx", last);
            if (!last)
                continue;
            // A normal map's companion: the same name with "c" behind it.
            if (iendsWith(stem, "_nm"))
                need(stem + "c.TgPcDx", present);
        }
        return f;
    }

    // Proxies and their sound files.
    Found audio(const std::string& blueprint) const {
        Found f;
        fs::path real;
        if (!exists(blueprint, &real))
            return f;
        const std::string xml = convert(real, f.error);
        auto proxy = [&](const std::string& name) {
            fs::path proxyFile;
            if (!exists(name + ".proxyxml", &proxyFile)) {
                f.missing.push_back(display(name + ".proxyxml") + " Called by " + display(blueprint));
                return;
            }
            f.used.push_back(proxyFile.string());
            noteCase(name + ".proxyxml", proxyFile, f.otherCase);
            const std::string text = ReadTextFile(proxyFile);
            for (std::size_t at = find(text, "<Pathname"); at > 0; at = find(text, "<Pathname", at + 1)) {
                std::size_t pos = at;
                std::string sound;
                GetDetail(text, pos, "Filename", sound, kBinary);
                if (!pos || sound.empty())
                    continue;
                fs::path soundFile;
                if (exists(sound, &soundFile)) {
                    f.used.push_back(soundFile.string());
                    noteCase(sound, soundFile, f.otherCase);
                } else
                    f.missing.push_back(display(sound) + " Called by " + proxyFile.string());
            }
        };
        for (std::size_t at = find(xml, "<SoundComponent>"); at > 0; at = find(xml, "<SoundComponent>", at + 1)) {
            std::size_t pos = at;
            std::string name;
            GetDetail(xml, pos, "ProxyName", name, kBinary);
            if (pos && !name.empty())
                proxy(name);
        }
        if (const std::size_t track = find(xml, "<cTrackSoundBlueprint>"); track > 0)
            for (const char* tag : {"RumbleAudioControlName", "TingleAudioControlName", "JunctionAudioControlName",
                                    "DerailmentAudioControlName"}) {
                std::size_t pos = track;
                std::string name;
                GetDetail(xml, pos, tag, name, kBinary);
                if (pos && !name.empty())
                    proxy(name);
            }
        return f;
    }
};

} // namespace

std::string RouteCheckResult::missingReport() const {
    if (missing.empty() && warnings.empty())
        return "No Assets were missing from this route.";
    std::string out;
    if (!missing.empty())
        out = "Following Asset(s) were missing from this route:-\r\n\r\n"
              "(Note: Velmora may not resolve some foreign characters, please advise with copy this report if any "
              "found)\r\n\r\n";
    for (const auto& m : missing)
        out += m.row() + "\r\n";
    for (const auto& w : warnings)
        out += w + "\r\n";
    return out;
}

std::string RouteCheckResult::texturesReport() const {
    std::string out = "Texture Check:-\r\n\r\n";
    for (const auto& m : missingFiles)
        out += m + "\r\n";
    return out.size() < 25 ? std::string("No missing textures detected") : out;
}

std::string RouteCheckResult::marksReport() const {
    std::string out;
    auto section = [&](const char* title, const std::vector<ItemMark>& marks) {
        if (marks.empty())
            return;
        out += std::string(out.empty() ? "" : "\r\n") + title + "\r\n\r\n";
        for (const auto& m : marks)
            out += m.path + "\t" + m.where + "\r\n";
    };
    section("Missing, but packed in an .ap archive of the product (the simulator reads these):", inArchive);
    section("Found only under a different letter case (the name as written, the file found):", otherCase);
    section("Shapes the blueprints name that do not exist (the shape, the blueprint naming it):", missingShapes);
    section("Missing as the texture check reads them, but found relative to the shape's folder (as read, the file "
            "found):",
            otherReading);
    return out;
}

namespace {

// The notes the options ask for, over what the check found so far; each item once.
void addMarks(const Checker& c, AppContext& ctx, const RouteCheckOptions& options, RouteCheckResult& result) {
    if (options.markArchives) {
        result.inArchive.clear();
        const archives::ProductArchives archives(c.files.root(), ctx.resolver);
        auto mark = [&](const std::string& shown) {
            if (auto ap = archives.find(c.files.relative(shown)))
                result.inArchive.push_back({shown, ap->string()});
        };
        for (const auto& m : result.missing)
            mark(m.path);
        for (const auto& line : result.missingFiles)
            mark(line.substr(0, line.find(" Called by ")));
    }
    for (auto* marks : {&result.inArchive, &result.otherCase, &result.missingShapes, &result.otherReading}) {
        std::unordered_set<std::string> seen;
        std::erase_if(*marks, [&](const ItemMark& m) { return !seen.insert(m.path).second; });
    }
}

std::string routeProperties(AppContext& ctx, const RouteEntry& route) {
    const auto file = ctx.resolver.resolve(route.path, "RouteProperties.xml");
    return file ? ReadTextFile(*file) : std::string();
}

} // namespace

RouteCheck::RouteCheck(AppContext& ctx, const RouteEntry& route, const std::vector<ScenarioEntry>& scenarios)
    : m_ctx(ctx), m_route(route), m_scenarios(scenarios) {}

RouteCheckResult RouteCheck::run(const RouteCheckOptions& options, UserInterface* ui) {
    RouteCheckResult result;
    result.routeName = m_route.name;
    m_ctx.resolver.invalidate();
    const Checker c{AssetFiles(m_ctx), options.markCase};

    // The route's template.
    const std::string properties = routeProperties(m_ctx, m_route);
    if (const std::size_t at = find(properties, "<InfrastructureModified"); at > 0) {
        const Triple t = readTriple(properties, at);
        const std::string path = t.bin();
        if (!t.id.empty() && !c.exists(path))
            result.warnings.push_back(c.display(path) + "\nThe Route Template listed in RouteProperties.xml\nCould not be found");
    }

    // The tiles, folder by folder in the check's order, then the scenarios' own scenery.
    const std::vector<TileJob> jobs = routeTiles(m_ctx, m_route, m_scenarios, &result.unreadable);
    for (const auto& folder : result.unreadable)
        m_ctx.log().log("frmDelRoute", "CheckForFiles", err::PermissionDenied, folder);
    result.tiles = jobs.size();

    const auto scans = parallelMap<TileScan>(jobs.size(), options.threads, ui, "Tiles of " + m_route.name, result.aborted,
                                          [&](std::size_t i) { return c.tile(jobs[i].file, jobs[i].label); });
    if (result.aborted)
        return result;
    std::vector<std::string> used;
    for (std::size_t i = 0; i < scans.size(); ++i) {
        const TileScan& s = scans[i];
        const std::string tileName = jobs[i].file.filename().string();
        for (const Ref& ref : s.refs) {
            if (!ref.found)
                result.missing.push_back({c.display(ref.path), jobs[i].label, tileName});
            else
                c.noteCase(ref.path, ref.real, result.otherCase);
            if (ref.found || !ref.inTransfer)
                used.push_back(c.display(ref.path));
        }
        if (!s.warning.empty())
            result.warnings.push_back(s.warning);
        if (!s.error.empty()) {
            m_ctx.log().log("frmDelRoute", "CheckForFiles", err::Conversion, s.error);
            result.unreadable.push_back(s.error);
        }
    }
    SortStrings(used, 0, static_cast<std::ptrdiff_t>(used.size()) - 1);
    for (const auto& u : used)
        if (result.assetsUnique.empty() || result.assetsUnique.back() != u)
            result.assetsUnique.push_back(u);
    addMarks(c, m_ctx, options, result);
    if (options.deep)
        deepen(result, options, ui);
    return result;
}

bool RouteCheck::deepen(RouteCheckResult& result, const RouteCheckOptions& options, UserInterface* ui) {
    if (result.aborted || result.deepDone)
        return !result.aborted;
    const Checker c{AssetFiles(m_ctx), options.markCase};

    // Down from the blueprints: audio ones to their sounds, the others to their shapes.
    struct BlueprintScan {
        Checker::Geometry geo;
        Checker::Found audio;
    };
    const auto blueprints = parallelMap<BlueprintScan>(
        result.assetsUnique.size(), options.threads, ui, "Blueprints", result.aborted, [&](std::size_t i) {
            const std::string rel = c.files.relative(result.assetsUnique[i]);
            return onePiece(
                [&] {
                    BlueprintScan b;
                    if (find(rel, "\\Audio\\"))
                        b.audio = c.audio(rel);
                    else
                        b.geo = c.geometry(rel);
                    return b;
                },
                [&](const std::string& why) {
                    BlueprintScan failed;
                    failed.geo.error = c.display(rel) + ": " + why;
                    return failed;
                });
        });
    if (result.aborted)
        return false;
    result.blueprintsRead = blueprints.size();
    std::vector<std::string> geo;
    std::unordered_set<std::string> seenGeo;
    auto unreadable = [&](const std::string& error) {
        if (error.empty())
            return;
        m_ctx.log().log("frmDelRoute", "FindGeopcdx", err::Conversion, error);
        result.unreadable.push_back(error);
    };
    auto take = [&](const Checker::Found& f, std::vector<std::string>& usedInto) {
        usedInto.insert(usedInto.end(), f.used.begin(), f.used.end());
        result.missingFiles.insert(result.missingFiles.end(), f.missing.begin(), f.missing.end());
        result.otherCase.insert(result.otherCase.end(), f.otherCase.begin(), f.otherCase.end());
        result.otherReading.insert(result.otherReading.end(), f.otherReading.begin(), f.otherReading.end());
        unreadable(f.error);
    };
    for (std::size_t i = 0; i < blueprints.size(); ++i) {
        const auto& b = blueprints[i];
        for (const auto& g : b.geo.found)
            if (seenGeo.insert(g).second)
                geo.push_back(g);
        for (const auto& shape : b.geo.missingShapes)
            result.missingShapes.push_back({c.display(shape), result.assetsUnique[i]});
        unreadable(b.geo.error);
        take(b.audio, result.audioUsed);
    }
    for (const auto& g : geo) {
        result.geoFiles.push_back(c.display(g));
        if (fs::path real; options.markCase && c.exists(g, &real))
            c.noteCase(g, real, result.otherCase);
    }
    const auto found = parallelMap<Checker::Found>(geo.size(), options.threads, ui, "Textures", result.aborted,
                                                [&](std::size_t i) {
                                                    return onePiece([&] { return c.textures(geo[i]); },
                                                                    [&](const std::string& why) {
                                                                        Checker::Found failed;
                                                                        failed.error = c.display(geo[i]) + ": " + why;
                                                                        return failed;
                                                                    });
                                                });
    if (result.aborted)
        return false;
    for (const auto& f : found)
        take(f, result.texturesUsed);

    // The terrain's textures: plain, or _A to _H when the _A form exists.
    const std::string properties = routeProperties(m_ctx, m_route);
    if (const std::size_t at = find(properties, "<TerrainBlueprint>"); at > 0) {
        const Triple t = readTriple(properties, at);
        fs::path terrain;
        if (!t.id.empty() && c.exists(t.bin(), &terrain)) {
            Checker::Found f;
            const std::string xml = c.convert(terrain, f.error);
            for (std::size_t d = find(xml, "<cMixTexDescriptor"); d > 0; d = find(xml, "<cMixTexDescriptor", d + 1)) {
                for (const char* tag : {"BaseTextureName", "BaseSpringTextureName", "BaseSummerTextureName",
                                        "BaseAutumnTextureName", "BaseWinterTextureName"}) {
                    std::size_t pos = d;
                    std::string name;
                    GetDetail(xml, pos, tag, name, kBinary);
                    if (!pos || name.empty())
                        continue;
                    bool present = false;
                    fs::path real;
                    if (c.exists(name + ".TgPcDx", &real)) {
                        f.used.push_back(real.string());
                        c.noteCase(name + ".TgPcDx", real, f.otherCase);
                    } else if (c.exists(name + "_A.TgPcDx")) {
                        for (char letter = 'A'; letter <= 'H'; ++letter)
                            c.require(name + "_" + letter + ".TgPcDx", "Texturing.bin", f, present);
                    } else {
                        f.missing.push_back(c.display(name + ".TgPcDx") + " Called by Texturing.bin");
                    }
                }
            }
            take(f, result.texturesUsed);
        }
    }
    SortStrings(result.texturesUsed, 0, static_cast<std::ptrdiff_t>(result.texturesUsed.size()) - 1);
    result.texturesUsed.erase(std::unique(result.texturesUsed.begin(), result.texturesUsed.end()), result.texturesUsed.end());
    result.deepDone = true;
    addMarks(c, m_ctx, options, result);
    return true;
}

ReportFiles saveRouteReports(AppContext& ctx, const RouteCheckResult& r) {
    std::vector<std::pair<std::string, std::string>> reports; // name, text
    auto add = [&](const std::string& name, const std::vector<std::string>& rows, bool numbered) {
        std::string text;
        for (std::size_t i = 0; i < rows.size(); ++i)
            text += csvCell(rows[i]) + (numbered ? ",," + std::to_string(i + 1) : std::string()) + "\r\n";
        reports.emplace_back(name, std::move(text));
    };
    const std::string route = fileNameFromText(r.routeName);
    add(route + "_Assets.csv", r.assetsUnique, true);
    if (r.deepDone) {
        add(route + "_GeoShapes.csv", r.geoFiles, false);
        add(route + "_Textures.csv", r.texturesUsed, false);
        add(route + "_Sounds.csv", r.audioUsed, false);
    }
    std::vector<std::string> missing;
    for (const auto& m : r.missing)
        missing.push_back(m.path);
    add("MissingAssets.csv", missing, false);

    ReportFiles out;
    for (const auto& [name, text] : reports) {
        const WriteResult written = ctx.files().write(ctx.reports() / name, text);
        if (written)
            out.written.push_back(written.target);
        else
            out.errors.push_back(written.message);
    }
    return out;
}

} // namespace velmora::routes
