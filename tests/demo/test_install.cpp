// The generated install against its manifest: every recorded fault is really on disk, nothing
// else is broken, the same seed gives the same bytes, and the scale multiplies the work.

#include "demofixture.h"
#include "dxt.h"
#include "serz/serz.h"
#include "velmora/core/userinterface.h"

#include <QCryptographicHash>

#include <gtest/gtest.h>
#include <zip.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <regex>
#include <set>

using namespace velmora;
using namespace velmora::test;
namespace fs = std::filesystem;

namespace {

std::string lower(std::string s) {
    for (char& c : s)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

// Undoes the XML escaping and the widened Windows-1252 form (U+FFxx -> the Latin-1 letter in
// UTF-8), as the checks' character repair does, so that a reference can be looked up on disk.
std::string repaired(std::string s) {
    for (auto [from, to] : {std::pair{"&apos;", "'"}, std::pair{"&amp;", "&"}, std::pair{"&quot;", "\""}})
        for (std::size_t p; (p = s.find(from)) != std::string::npos;)
            s.replace(p, std::strlen(from), to);
    for (std::size_t p; (p = s.find("\xEF\xBF")) != std::string::npos && p + 2 < s.size();) {
        auto c = static_cast<unsigned char>(s[p + 2]) + 0x40u; // EF BF 80..BF -> U+FFC0..U+FFFF
        s.replace(p, 3, std::string{static_cast<char>(0xC0 | (c >> 6)), static_cast<char>(0x80 | (c & 0x3F))});
    }
    return s;
}

// Case-insensitive lookup of a root-relative path, one component at a time.
bool existsAnyCase(const fs::path& root, const std::string& rel) {
    fs::path at = root;
    std::size_t start = 0;
    while (start < rel.size()) {
        std::size_t slash = rel.find('/', start);
        std::string part = rel.substr(start, slash == std::string::npos ? std::string::npos : slash - start);
        start = slash == std::string::npos ? rel.size() : slash + 1;
        bool found = false;
        std::error_code ec;
        for (const auto& e : fs::directory_iterator(at, ec)) {
            auto name = e.path().filename().u8string();
            if (lower(std::string(name.begin(), name.end())) == lower(part)) {
                at = e.path();
                found = true;
                break;
            }
        }
        if (!found)
            return false;
    }
    return true;
}

// Every Provider / Product / BlueprintID triple of a document, in the line order the checks use.
std::vector<std::array<std::string, 3>> references(const std::string& xml) {
    static const std::regex triple(
        "<Provider d:type=\"cDeltaString\">([^<]*)</Provider>\\s*<Product d:type=\"cDeltaString\">([^<]*)</Product>"
        "\\s*</[^>]+>\\s*</[^>]+>\\s*<BlueprintID d:type=\"cDeltaString\">([^<]*)</BlueprintID>");
    std::vector<std::array<std::string, 3>> out;
    for (auto it = std::sregex_iterator(xml.begin(), xml.end(), triple); it != std::sregex_iterator(); ++it)
        out.push_back({(*it)[1], (*it)[2], (*it)[3]});
    return out;
}

std::string binPath(const std::array<std::string, 3>& r) {
    std::string id = r[2];
    std::replace(id.begin(), id.end(), '\\', '/');
    return "Assets/" + r[0] + "/" + r[1] + "/" + id.substr(0, id.size() - 3) + "bin";
}

std::set<std::string> faultPaths(const Install& in, std::initializer_list<const char*> kinds) {
    std::set<std::string> out;
    for (const auto& f : in.faults())
        for (const char* k : kinds)
            if (str(f.toObject()["kind"]) == k)
                out.insert(str(f.toObject()["path"]));
    return out;
}

std::vector<fs::path> filesEnding(const fs::path& root, const std::string& ext) {
    std::vector<fs::path> out;
    for (const auto& e : fs::recursive_directory_iterator(root))
        if (e.is_regular_file() && lower(e.path().extension().string()) == lower(ext))
            out.push_back(e.path());
    std::sort(out.begin(), out.end());
    return out;
}

std::string treeHash(const fs::path& root) {
    QCryptographicHash hash(QCryptographicHash::Sha256);
    std::vector<fs::path> files;
    for (const auto& e : fs::recursive_directory_iterator(root))
        if (e.is_regular_file())
            files.push_back(e.path());
    std::sort(files.begin(), files.end());
    for (const auto& f : files) {
        std::string rel = fs::relative(f, root).generic_string();
        std::string bytes = readFile(f);
        hash.addData(QByteArray(rel.data(), static_cast<qsizetype>(rel.size() + 1)));
        hash.addData(QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size())));
    }
    return hash.result().toHex().toStdString();
}

bool codecAvailable() {
    std::string bin;
    return serz::encode("<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<a xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" "
                        "d:version=\"1.0\">\r\n</a>\r\n",
                        bin)
        .ok;
}

} // namespace

TEST(DemoInstall, HoldsWhatTheManifestSays) {
    const Install& in = sharedInstall();
    ASSERT_TRUE(in.result.ok) << in.result.error;
    EXPECT_EQ(in.manifest["format"].toString(), "velmora-demo-manifest");
    EXPECT_EQ(in.manifest["version"].toInt(), 1);
    EXPECT_TRUE(fs::exists(in.path("RailWorks.exe")));
    EXPECT_EQ(in.result.routes.size(), 3u);       // one of them partly unpacked
    EXPECT_EQ(in.result.packedRoutes.size(), 2u);
    EXPECT_GE(in.result.products.size(), 3u);
    EXPECT_EQ(static_cast<std::size_t>(in.faults().size()), in.result.faults);
    QJsonObject counts = in.manifest["counts"].toObject();
    EXPECT_EQ(static_cast<std::size_t>(counts["blueprints"].toInt()), in.result.blueprints);
    EXPECT_EQ(static_cast<std::size_t>(counts["tiles"].toInt()), in.result.tiles);

    // Every route has scenarios of every class and every tile kind; each tile listed is on disk
    // (or in the route's MainContent.ap).
    for (const auto& rv : in.manifest["routes"].toArray()) {
        QJsonObject r = rv.toObject();
        std::string folder = "Content/Routes/" + str(r["folder"]);
        EXPECT_EQ(str(r["folder"]).size(), 36u);
        if (r["packed"].toBool()) {
            EXPECT_TRUE(fs::exists(in.path(folder + "/MainContent.ap")));
            EXPECT_EQ(str(r["archive"]), folder + "/MainContent.ap");
            EXPECT_FALSE(fs::exists(in.path(folder + "/RouteProperties.xml")));
            continue;
        }
        if (!str(r["archive"]).empty()) {
            // Partly unpacked: what is not on disk is in the archive and listed as only there.
            std::set<std::string> only;
            for (const auto& f : r["archiveOnly"].toArray())
                only.insert(str(f));
            for (const auto& t : r["tiles"].toArray())
                EXPECT_NE(fs::exists(in.path(str(t))), only.count(str(t)) == 1) << str(t);
            EXPECT_TRUE(fs::exists(in.path(folder + "/RouteProperties.xml")));
            EXPECT_FALSE(fs::is_empty(in.path(folder + "/MixMap")));
            continue;
        }
        std::set<std::string> classes;
        for (const auto& s : r["scenarios"].toArray())
            classes.insert(str(s.toObject()["class"]));
        EXPECT_EQ(classes, (std::set<std::string>{"eStandardScenarioClass", "eFreeRoamScenarioClass", "eCareerScenarioClass",
                                                  "eTimetableScenarioClass", "eTemplateScenarioClass"}));
        for (const auto& t : r["tiles"].toArray())
            EXPECT_TRUE(fs::exists(in.path(str(t)))) << str(t);
        for (const char* sub : {"Networks/Tracks.bin", "RouteProperties.xml", "RouteInformation/En/Description.html"})
            EXPECT_TRUE(fs::exists(in.path(folder + "/" + sub))) << folder << "/" << sub;
        for (const char* sub : {"Scenery", "Networks/Track Tiles", "Networks/Road Tiles", "Networks/Loft Tiles", "MixMap"})
            EXPECT_FALSE(fs::is_empty(in.path(folder + "/" + sub))) << sub;
    }
    std::string scenario = readFile(filesEnding(in.dir.path(), ".MD5").at(0).parent_path() / "Scenario.bin");
    for (const char* tag : {"<cEngine ", "<cWagon ", "<ReskinBlueprintID>", "<InitialLevel>", "<UniqueNumber",
                            "<PlayerDriver d:type=\"bool\">1", "<Driver>\r\n\t\t\t\t<d:nil/>", "<FinalDestination>",
                            "<StartTime", "<cStopAtDestinations"})
        EXPECT_NE(scenario.find(tag), std::string::npos) << tag;
}

// What the manifest says of each scenario (its vehicles, flips, saves and weather) is what the
// documents hold: the scenario editor's tests compare against these entries.
TEST(DemoInstall, ScenariosHoldWhatTheManifestSaysOfThem) {
    const Install& in = sharedInstall();
    auto count = [](const std::string& text, const std::string& what) {
        int n = 0;
        for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
            ++n;
        return n;
    };
    int flipped = 0, reskins = 0, preloaded = 0, withoutHash = 0, withoutWeather = 0;
    for (const auto& rv : in.manifest["routes"].toArray()) {
        const QJsonObject r = rv.toObject();
        if (r["packed"].toBool())
            continue;
        for (const auto& sv : r["scenarios"].toArray()) {
            const QJsonObject sc = sv.toObject();
            if (!sc["properties"].toBool())
                continue;
            const std::string folder = "Content/Routes/" + str(r["folder"]) + "/Scenarios/" + str(sc["folder"]);
            SCOPED_TRACE(folder);
            // This install keeps its documents as XML text (see Install).
            const std::string xml = readFile(in.path(folder + "/Scenario.bin"));
            int vehicles = 0, flips = 0;
            for (const auto& cv : sc["consists"].toArray())
                for (const auto& vv : cv.toObject()["vehicles"].toArray()) {
                    const QJsonObject v = vv.toObject();
                    ++vehicles;
                    flips += v["flipped"].toBool();
                    reskins += v["reskin"].isObject();
                    preloaded += v["preloaded"].toBool();
                    EXPECT_NE(xml.find(">" + str(v["number"]) + "<"), std::string::npos) << str(v["number"]);
                    EXPECT_NE(xml.find(">" + str(v["blueprint"]) + "<"), std::string::npos) << str(v["blueprint"]);
                }
            EXPECT_EQ(count(xml, "<UniqueNumber"), vehicles);
            EXPECT_EQ(count(xml, "<Flipped d:type=\"bool\">1<"), flips);
            flipped += flips;
            const QJsonValue save = sc["save"];
            EXPECT_EQ(fs::exists(in.path(folder + "/CurrentSave.bin")), save.isObject());
            EXPECT_EQ(fs::exists(in.path(folder + "/CurrentSave.bin.MD5")), save.isObject() && save.toObject()["md5"].toBool());
            withoutHash += save.isObject() && !save.toObject()["md5"].toBool();
            const QJsonObject weather = sc["weather"].toObject();
            EXPECT_NE(readFile(in.path(folder + "/ScenarioProperties.xml")).find(str(weather["blueprint"])), std::string::npos);
            const std::string product = "Assets/" + str(weather["provider"]) + "/" + str(weather["product"]);
            EXPECT_EQ(fs::exists(in.path(product + "/Weather")) || fs::exists(in.path(product + "/Environment/Weather")),
                      weather["folderExists"].toBool());
            withoutWeather += !weather["folderExists"].toBool();
        }
    }
    // Each case the editor has to show occurs somewhere.
    EXPECT_GT(flipped, 0);
    EXPECT_GT(reskins, 0);
    EXPECT_GT(preloaded, 0);
    EXPECT_GT(withoutHash, 0);
    EXPECT_GT(withoutWeather, 0);
}

TEST(DemoInstall, EveryRecordedFaultIsOnDisk) {
    const Install& in = sharedInstall();
    std::map<std::string, int> kinds;
    for (const auto& fv : in.faults()) {
        QJsonObject f = fv.toObject();
        std::string kind = str(f["kind"]), path = str(f["path"]), by = str(f["referencedBy"]);
        SCOPED_TRACE(kind + " " + path);
        ++kinds[kind];
        EXPECT_FALSE(str(f["expect"]).empty());
        EXPECT_FALSE(str(f["check"]).empty());
        if (!by.empty() && !fs::exists(in.path(by))) {
            // Only a texture's or sound's caller may itself lie inside an archive.
            ADD_FAILURE() << "referencedBy is not on disk: " << by;
        }
        if (!by.empty() && !str(f["reference"]).empty()) {
            EXPECT_NE(readFile(in.path(by)).find(str(f["reference"])), std::string::npos) << "reference not in " << by;
        }
        if (kind.rfind("missing-", 0) == 0 || kind == "texture-path-too-deep" || kind == "blueprint-in-archive") {
            EXPECT_FALSE(existsAnyCase(in.dir.path(), path)) << "should be missing";
        } else if (kind == "case-mismatch" || kind == "encoded-name") {
            EXPECT_TRUE(fs::exists(in.path(path)));
            if (kind == "case-mismatch") {
                EXPECT_EQ(in.path(path).string().find(str(f["reference"])), std::string::npos);
            }
        } else if (kind == "read-only-file") {
            auto perms = fs::status(in.path(path)).permissions();
            EXPECT_EQ(perms & (fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write), fs::perms::none);
        } else if (kind == "zero-length-file") {
            EXPECT_EQ(fs::file_size(in.path(path)), 0u);
        } else if (kind == "route-folder-35-chars") {
            EXPECT_EQ(in.path(path).filename().string().size(), 35u);
            EXPECT_TRUE(fs::exists(in.path(path) / "RouteProperties.xml"));
        } else if (kind == "scenario-without-properties") {
            EXPECT_TRUE(fs::exists(in.path(path) / "Scenario.bin"));
            EXPECT_FALSE(fs::exists(in.path(path) / "ScenarioProperties.xml"));
        } else if (kind.rfind("ap-", 0) == 0) {
            EXPECT_TRUE(fs::is_regular_file(in.path(path))); // tests/demo/test_archives.cpp looks inside
        } else if (kind == "empty-provider") {
            EXPECT_NE(readFile(in.path(path)).find("<Provider d:type=\"cDeltaString\"></Provider>"), std::string::npos);
        } else {
            ADD_FAILURE() << "a fault kind without a test: " << kind;
        }
        if (kind == "texture-path-too-deep") {
            EXPECT_TRUE(fs::exists(in.path(str(f["details"].toObject()["intended"]))));
        }
    }
    for (const char* k : {"missing-blueprint", "missing-texture", "missing-seasonal-texture", "missing-shape",
                          "missing-proxy", "missing-sound", "texture-path-too-deep", "empty-provider", "encoded-name",
                          "case-mismatch", "read-only-file", "zero-length-file", "route-folder-35-chars",
                          "scenario-without-properties", "missing-stock", "blueprint-in-archive", "ap-not-unpacked",
                          "ap-partly-unpacked", "ap-damaged", "ap-unsafe-entry"})
        EXPECT_GT(kinds[k], 0) << k;
}

// A route check run by hand: every reference of every tile resolves, except those the manifest
// lists as missing; spellings the manifest lists as repairable resolve after the repair.
TEST(DemoInstall, TilesReferenceNothingUnlisted) {
    const Install& in = sharedInstall();
    std::set<std::string> expected = faultPaths(in, {"missing-blueprint", "blueprint-in-archive"});
    std::set<std::string> missing;
    int found = 0, emptyProviders = 0;
    for (const auto& rv : in.manifest["routes"].toArray()) {
        for (const auto& t : rv.toObject()["tiles"].toArray()) {
            if (!fs::exists(in.path(str(t))))
                continue; // packed
            for (const auto& ref : references(readFile(in.path(str(t))))) {
                if (ref[0].empty()) {
                    ++emptyProviders;
                    continue;
                }
                std::string p = binPath(ref);
                if (fs::exists(in.path(p)) || existsAnyCase(in.dir.path(), repaired(p)))
                    ++found;
                else
                    missing.insert(p);
            }
        }
    }
    EXPECT_EQ(missing, expected);
    EXPECT_EQ(emptyProviders, 1);
    EXPECT_GT(found, 200);
}

// The texture check by hand over every shape on disk: what is missing is exactly the manifest's.
TEST(DemoInstall, ShapesNameOnlyListedMissingTextures) {
    const Install& in = sharedInstall();
    std::set<std::string> expected =
        faultPaths(in, {"missing-texture", "missing-seasonal-texture", "texture-path-too-deep"});
    static const std::regex entry("<e d:type=\"cDeltaString\">\\[([0-9a-f]{2})\\]([^<]*)</e>");
    static const std::map<std::string, std::vector<std::string>> variants = {
        {"00", {""}}, {"08", {"", "_WI"}}, {"09", {"", "_SP", "_WI"}}, {"0c", {"", "_AU", "_WI"}},
        {"0d", {"", "_SP", "_AU", "_WI"}}};
    std::set<std::string> missing, codes;
    int depths[6] = {};
    for (const auto& shape : filesEnding(in.dir.path(), ".GeoPcDx")) {
        std::string xml = readFile(shape);
        std::string folder = fs::relative(shape.parent_path(), in.dir.path()).generic_string();
        for (auto it = std::sregex_iterator(xml.begin(), xml.end(), entry); it != std::sregex_iterator(); ++it) {
            std::string code = (*it)[1], value = repaired((*it)[2]);
            codes.insert(code);
            std::replace(value.begin(), value.end(), '\\', '/');
            std::string base = folder;
            int depth = 0;
            for (; value.rfind("../", 0) == 0; value.erase(0, 3), ++depth)
                base = base.substr(0, base.rfind('/'));
            ++depths[std::min(depth, 5)];
            std::string file = lower(value).rfind("text", 0) == 0 || depth ? base + "/" + value : "Assets/" + value;
            std::vector<std::string> need = variants.at(code);
            if (file.size() > 3 && file.compare(file.size() - 3, 3, "_nm") == 0)
                need.push_back("c");
            for (const auto& suffix : need)
                if (!existsAnyCase(in.dir.path(), file + suffix + ".TgPcDx"))
                    missing.insert(file + suffix + ".TgPcDx");
        }
    }
    EXPECT_EQ(missing, expected);
    EXPECT_EQ(codes, (std::set<std::string>{"00", "08", "09", "0c", "0d"}));
    EXPECT_GT(depths[0], 0);
    EXPECT_GT(depths[1], 0);
    EXPECT_GT(depths[2], 0);
    EXPECT_GT(depths[3], 0);
}

TEST(DemoInstall, ProxiesNameOnlyListedMissingSounds) {
    const Install& in = sharedInstall();
    static const std::regex file("<Filename d:type=\"cDeltaString\">([^<]*)</Filename>");
    std::set<std::string> missing;
    for (const auto& proxy : filesEnding(in.dir.path(), ".proxyxml")) {
        std::string xml = readFile(proxy);
        for (auto it = std::sregex_iterator(xml.begin(), xml.end(), file); it != std::sregex_iterator(); ++it) {
            std::string rel = "Assets/" + std::string((*it)[1]);
            std::replace(rel.begin(), rel.end(), '\\', '/');
            if (!fs::exists(in.path(rel)))
                missing.insert(rel);
        }
    }
    EXPECT_EQ(missing, faultPaths(in, {"missing-sound"}));
    EXPECT_FALSE(filesEnding(in.dir.path(), ".proxybin").empty());
    EXPECT_FALSE(filesEnding(in.dir.path(), ".wav").empty());
}

TEST(DemoInstall, TexturesCarryFullMipChains) {
    const Install& in = sharedInstall();
    static const std::regex level("<Format d:type=\"cDeltaString\">(HC_IMAGE_FORMAT_[A-Z_]+)</Format>\\s*"
                                  "<IsSwizzled d:type=\"bool\">0</IsSwizzled>\\s*"
                                  "<Width d:type=\"sUInt16\">(\\d+)</Width>\\s*<Height d:type=\"sUInt16\">(\\d+)</Height>"
                                  "\\s*<d:blob d:size=\"(\\d+)\">");
    std::set<std::string> formats;
    auto textures = filesEnding(in.dir.path(), ".TgPcDx");
    ASSERT_GT(textures.size(), 50u);
    for (const auto& t : textures) {
        std::string xml = readFile(t);
        int expectedWidth = std::stoi(xml.substr(xml.find("<Width d:type=\"sUInt32\">") + 24));
        int levels = 0;
        for (auto it = std::sregex_iterator(xml.begin(), xml.end(), level); it != std::sregex_iterator(); ++it) {
            std::string format = (*it)[1];
            int w = std::stoi((*it)[2]), h = std::stoi((*it)[3]);
            formats.insert(format);
            EXPECT_EQ(w, expectedWidth) << t;
            demo::DxtFormat f = format == "HC_IMAGE_FORMAT_COMPRESSED"              ? demo::DxtFormat::Dxt1
                                : format == "HC_IMAGE_FORMAT_COMPRESSED_EXPL_ALPHA" ? demo::DxtFormat::Dxt3
                                                                                    : demo::DxtFormat::Dxt5;
            EXPECT_EQ(std::stoul((*it)[4]), demo::dxtLevelSize(f, w, h)) << t;
            expectedWidth = w / 2;
            ++levels;
        }
        EXPECT_GE(levels, 3) << t;
        EXPECT_EQ(expectedWidth, 2) << "the chain stops at 4x4: " << t;
    }
    EXPECT_EQ(formats.size(), 3u);
}

TEST(DemoInstall, ArchivesHoldTheirEntriesWithFixedTimes) {
    const Install& in = sharedInstall();
    // The product archive with the DMU and the routes packed whole; test_archives.cpp has the rest.
    std::vector<std::string> archives = {"Assets/Heritage/SteamDays/SteamDaysAssets.ap"};
    for (const auto& r : in.result.packedRoutes)
        archives.push_back("Content/Routes/" + r.folder + "/MainContent.ap");
    ASSERT_EQ(archives.size(), 3u);
    for (const auto& a : archives) {
        int err = 0;
        zip_t* zip = zip_open(in.path(a).string().c_str(), ZIP_RDONLY, &err);
        ASSERT_NE(zip, nullptr) << a;
        zip_int64_t n = zip_get_num_entries(zip, 0);
        EXPECT_GT(n, 5);
        bool blueprint = false, properties = false;
        for (zip_int64_t i = 0; i < n; ++i) {
            zip_stat_t st;
            zip_stat_index(zip, static_cast<zip_uint64_t>(i), 0, &st);
            EXPECT_EQ(st.mtime, 1546300800);
            std::string name = st.name;
            EXPECT_EQ(name.find('\\'), std::string::npos);
            blueprint = blueprint || name.find("RailVehicles/DMU/") == 0;
            properties = properties || name == "RouteProperties.xml";
        }
        EXPECT_TRUE(a.find("MainContent.ap") != std::string::npos ? properties : blueprint) << a;
        zip_close(zip);
    }
}

TEST(DemoInstall, SameSeedSameBytesOtherSeedOtherInstall) {
    Install a(1, 99), b(1, 99), c(1, 100);
    ASSERT_TRUE(a.result.ok && b.result.ok && c.result.ok);
    EXPECT_EQ(treeHash(a.dir.path()), treeHash(b.dir.path()));
    EXPECT_NE(treeHash(a.dir.path()), treeHash(c.dir.path()));
    EXPECT_EQ(a.result.files, c.result.files);
}

TEST(DemoInstall, ScaleMultipliesTheWork) {
    const Install& one = sharedInstall();
    Install three(3);
    ASSERT_TRUE(three.result.ok) << three.result.error;
    EXPECT_GE(three.result.blueprints, 2 * one.result.blueprints);
    // The routes kept small in their archives do not grow with the rest.
    EXPECT_GT(three.result.tiles, 2 * one.result.tiles);
    EXPECT_GT(three.result.scenarios, 2 * one.result.scenarios);
    EXPECT_EQ(three.faults().size(), one.faults().size()); // the faults do not multiply
}

TEST(DemoInstall, AbortStopsAndSaysSo) {
    ScriptedUi ui;
    ui.cancelAfter(5);
    TempDir dir;
    auto result = demo::generateDemoInstall(dir.path(), {1, 1, keepXml()}, &ui);
    EXPECT_FALSE(result.ok);
    EXPECT_NE(result.error.find("stopped"), std::string::npos);
    EXPECT_FALSE(fs::exists(dir.path() / "manifest.json"));
    EXPECT_GT(ui.progressTotal, 0);
}

TEST(DemoInstall, EncoderFailureNamesTheDocument) {
    TempDir dir;
    auto result = demo::generateDemoInstall(dir.path(), {1, 1, [](std::string_view, std::string&, std::string& e) {
                                                             e = "no codec here";
                                                             return false;
                                                         }});
    EXPECT_FALSE(result.ok);
    EXPECT_NE(result.error.find(".bin: no codec here"), std::string::npos) << result.error;
}

// With the codec in place: every document encodes, and decodes back to the XML it was made from.
TEST(DemoInstall, EveryDocumentDecodesToItsXml) {
    if (!codecAvailable())
        GTEST_SKIP() << "the codec is not built yet";
    std::vector<std::string> mismatches;
    auto checked = [&](std::string_view xml, std::string& bin, std::string& error) {
        serz::Status s = serz::encode(xml, bin);
        if (!s.ok) {
            error = s.message;
            return false;
        }
        std::string back;
        if (!serz::decode(bin, back).ok || back != xml)
            if (mismatches.size() < 5)
                mismatches.push_back(std::string(xml.substr(0, 300)));
        return true;
    };
    Install in(1, 7, checked);
    ASSERT_TRUE(in.result.ok) << in.result.error;
    EXPECT_TRUE(mismatches.empty()) << mismatches.size() << " documents differ, first:\n" << mismatches.front();
    for (const auto& ext : {".bin", ".GeoPcDx", ".TgPcDx", ".XSec", ".proxybin", ".dcsv"})
        for (const auto& f : filesEnding(in.dir.path(), ext)) {
            if (fs::file_size(f) == 0)
                continue; // the zero-length fault
            std::string xml;
            EXPECT_TRUE(serz::decode(readFile(f), xml).ok) << f;
        }
}
