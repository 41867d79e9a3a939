// The install's .ap files against the manifest: each opens (but the damaged one), holds what the
// manifest says, lies in a folder that gives it the state the manifest names, and comes out the
// same byte for byte for the same seed.

#include "demofixture.h"

#include <gtest/gtest.h>
#include <zip.h>

#include <algorithm>
#include <map>
#include <set>

using namespace velmora;
using namespace velmora::test;
namespace fs = std::filesystem;

namespace {

// An archive's entries by name, with their bytes; `ok` false when libzip cannot open it.
struct Entries {
    bool ok = false;
    std::vector<std::string> names;
    std::map<std::string, std::string> bytes;
    std::set<zip_int64_t> times;
};

Entries readArchive(const fs::path& file) {
    Entries out;
    int err = 0;
    zip_t* zip = zip_open(file.string().c_str(), ZIP_RDONLY, &err);
    if (!zip)
        return out;
    out.ok = true;
    const zip_int64_t n = zip_get_num_entries(zip, 0);
    for (zip_int64_t i = 0; i < n; ++i) {
        zip_stat_t st;
        zip_stat_index(zip, static_cast<zip_uint64_t>(i), 0, &st);
        out.names.emplace_back(st.name);
        out.times.insert(st.mtime);
        std::string data(static_cast<std::size_t>(st.size), '\0');
        if (zip_file_t* f = zip_fopen_index(zip, static_cast<zip_uint64_t>(i), 0)) {
            zip_fread(f, data.data(), st.size);
            zip_fclose(f);
        }
        out.bytes[st.name] = std::move(data);
    }
    zip_discard(zip);
    return out;
}

QJsonObject archiveEntry(const Install& in, const std::string& path) {
    for (const auto& a : in.manifest["archives"].toArray())
        if (str(a.toObject()["path"]) == path)
            return a.toObject();
    return {};
}

std::vector<QJsonObject> faultsOf(const Install& in, const std::string& kind) {
    std::vector<QJsonObject> out;
    for (const auto& f : in.faults())
        if (str(f.toObject()["kind"]) == kind)
            out.push_back(f.toObject());
    return out;
}

// The fault of `kind` whose path starts with `prefix`, or an empty object.
QJsonObject faultUnder(const Install& in, const std::string& kind, const std::string& prefix) {
    for (const auto& f : faultsOf(in, kind))
        if (str(f["path"]).rfind(prefix, 0) == 0)
            return f;
    return {};
}

std::vector<std::string> archivesOnDisk(const fs::path& root) {
    std::vector<std::string> out;
    for (const auto& e : fs::recursive_directory_iterator(root))
        if (e.is_regular_file() && e.path().extension() == ".ap")
            out.push_back(fs::relative(e.path(), root).generic_string());
    std::sort(out.begin(), out.end());
    return out;
}

// The archive table's rule: below Assets, unpacked when Audio, RailVehicles, Scenery or Elloks
// lies beside the archive; elsewhere when MixMap does.
std::string stateByFolders(const fs::path& archive, bool assets) {
    const fs::path folder = archive.parent_path();
    if (!assets)
        return fs::is_directory(folder / "MixMap") ? "Unpacked" : "Not unpacked";
    for (const char* sub : {"Audio", "RailVehicles", "Scenery", "Elloks"})
        if (fs::is_directory(folder / sub))
            return "Unpacked";
    return "Not unpacked";
}

std::string routeFolderOf(const std::string& archive) { return archive.substr(0, archive.rfind('/')); }

} // namespace

TEST(DemoArchives, EveryArchiveIsListedOpensAndHasTheStateOfItsFolder) {
    const Install& in = sharedInstall();
    ASSERT_TRUE(in.result.ok) << in.result.error;
    std::vector<std::string> listed;
    std::map<std::string, int> kinds;
    for (const auto& av : in.manifest["archives"].toArray()) {
        const QJsonObject a = av.toObject();
        const std::string path = str(a["path"]);
        SCOPED_TRACE(path);
        listed.push_back(path);
        ++kinds[str(a["kind"])];
        const Entries e = readArchive(in.path(path));
        EXPECT_EQ(e.ok, a["readable"].toBool());
        EXPECT_EQ(stateByFolders(in.path(path), path.rfind("Assets/", 0) == 0), str(a["state"]));
        if (!e.ok)
            continue;
        EXPECT_EQ(e.names.size(), static_cast<std::size_t>(a["entries"].toInt()));
        EXPECT_EQ(e.times, (std::set<zip_int64_t>{1546300800}));
        for (const auto& name : e.names)
            EXPECT_EQ(name.find('\\'), std::string::npos) << name;
    }
    std::sort(listed.begin(), listed.end());
    EXPECT_EQ(listed, archivesOnDisk(in.dir.path()));
    EXPECT_EQ(static_cast<std::size_t>(in.manifest["counts"].toObject()["archives"].toInt()), listed.size());
    EXPECT_EQ(in.result.archives, listed.size());
    EXPECT_EQ(kinds, (std::map<std::string, int>{{"assets", 4}, {"route", 3}, {"scenarios", 1}}));
    // Every product's archive is listed as one.
    for (const auto& p : in.manifest["products"].toArray()) {
        if (!str(p.toObject()["archive"]).empty()) {
            EXPECT_FALSE(archiveEntry(in, str(p.toObject()["archive"])).isEmpty()) << str(p.toObject()["archive"]);
        }
    }
}

TEST(DemoArchives, ManifestNamesEveryArchiveFault) {
    const Install& in = sharedInstall();
    EXPECT_EQ(faultsOf(in, "ap-not-unpacked").size(), 2u);
    for (const char* kind : {"ap-partly-unpacked", "ap-damaged", "ap-unsafe-entry"})
        EXPECT_EQ(faultsOf(in, kind).size(), 1u) << kind;
    for (const char* kind : {"ap-not-unpacked", "ap-partly-unpacked", "ap-damaged", "ap-unsafe-entry"})
        for (const auto& f : faultsOf(in, kind)) {
            EXPECT_EQ(str(f["check"]), "archives");
            EXPECT_TRUE(fs::is_regular_file(in.path(str(f["path"])))) << str(f["path"]);
            EXPECT_FALSE(archiveEntry(in, str(f["path"])).isEmpty()) << str(f["path"]);
        }
}

// Engine and wagon only inside the product's archive, under the folders the rolling-stock filter
// looks for, with their shape and texture; nothing unpacked beside it.
TEST(DemoArchives, StockOnlyInsideItsArchive) {
    const Install& in = sharedInstall();
    const QJsonObject fault = faultUnder(in, "ap-not-unpacked", "Assets/");
    ASSERT_FALSE(fault.isEmpty());
    const std::string path = str(fault["path"]);
    const QJsonObject details = fault["details"].toObject();
    const Entries e = readArchive(in.path(path));
    ASSERT_TRUE(e.ok);
    const fs::path folder = in.path(path).parent_path();
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1) << "only the .ap";
    const std::string engine = str(details["engine"]), wagon = str(details["wagon"]);
    EXPECT_NE(engine.find("RailVehicles/"), std::string::npos);
    EXPECT_NE(engine.find("/Engine/"), std::string::npos);
    EXPECT_NE(wagon.find("/Freight/"), std::string::npos);
    for (const char* key : {"engine", "wagon", "shape", "texture"}) {
        const std::string entry = str(details[key]);
        SCOPED_TRACE(entry);
        ASSERT_EQ(e.bytes.count(entry), 1u);
        EXPECT_FALSE(fs::exists(folder / fs::path(entry)));
    }
    // This install keeps its documents as XML, so the entries can be read as such.
    EXPECT_NE(e.bytes.at(engine).find("<cEngineBlueprint>"), std::string::npos);
    EXPECT_NE(e.bytes.at(wagon).find("<cWagonBlueprint>"), std::string::npos);
    EXPECT_NE(e.bytes.at(str(details["texture"])).find("<cHcTextureGroup"), std::string::npos);
}

// The route packed whole: its folder holds only MainContent.ap, whose root has RouteProperties.xml
// with the name in three languages, beside tiles, networks, pages and a scenario whose stock exists.
TEST(DemoArchives, RoutePackedWholeHoldsARoute) {
    const Install& in = sharedInstall();
    const QJsonObject fault = faultUnder(in, "ap-not-unpacked", "Content/Routes/");
    ASSERT_FALSE(fault.isEmpty());
    const std::string path = str(fault["path"]);
    EXPECT_EQ(str(fault["details"].toObject()["name"]), "Harbour Branch, Line: East");
    EXPECT_EQ(str(fault["details"].toObject()["indexName"]), "Harbour Branch- Line East");
    const fs::path folder = in.path(routeFolderOf(path));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1) << "only MainContent.ap";
    EXPECT_FALSE(fs::exists(folder / "MixMap"));

    const Entries e = readArchive(in.path(path));
    ASSERT_TRUE(e.ok);
    ASSERT_EQ(e.bytes.count("RouteProperties.xml"), 1u);
    const std::string& properties = e.bytes.at("RouteProperties.xml");
    for (const char* name : {">Harbour Branch, Line: East<", ">Embranchement du port, ligne : Est<",
                             ">Hafenbahn, Linie: Ost<"})
        EXPECT_NE(properties.find(name), std::string::npos) << name;
    std::set<std::string> tops;
    int scenarioFiles = 0;
    for (const auto& name : e.names) {
        tops.insert(name.substr(0, name.find('/')));
        scenarioFiles += name.rfind("Scenarios/", 0) == 0 &&
                         (name.ends_with("/ScenarioProperties.xml") || name.ends_with("/Scenario.bin"));
    }
    for (const char* top : {"RouteInformation", "Networks", "Scenery", "Scenarios"})
        EXPECT_EQ(tops.count(top), 1u) << top;
    EXPECT_EQ(scenarioFiles, 2);

    // The route is the manifest's, packed; its scenario's vehicles all exist below Assets.
    const QJsonObject listed = archiveEntry(in, path);
    EXPECT_EQ(str(listed["state"]), "Not unpacked");
    const QJsonArray scenarios = listed["scenarios"].toArray();
    ASSERT_EQ(scenarios.size(), 1);
    int vehicles = 0;
    for (const auto& c : scenarios[0].toObject()["consists"].toArray())
        for (const auto& vv : c.toObject()["vehicles"].toArray()) {
            const QJsonObject v = vv.toObject();
            std::string id = str(v["blueprint"]);
            std::replace(id.begin(), id.end(), '\\', '/');
            const std::string bin = "Assets/" + str(v["provider"]) + "/" + str(v["product"]) + "/" +
                                    id.substr(0, id.size() - 3) + "bin";
            EXPECT_TRUE(fs::exists(in.path(bin))) << bin;
            EXPECT_FALSE(v["missing"].toBool());
            ++vehicles;
        }
    EXPECT_GT(vehicles, 5);
    for (const auto& r : in.manifest["routes"].toArray()) {
        if (str(r.toObject()["archive"]) == path) {
            EXPECT_TRUE(r.toObject()["packed"].toBool());
        }
    }
}

// MixMap beside the archive makes it "Unpacked"; the files the manifest lists as archive-only are
// entries and not on disk, every other entry is on disk with the same bytes.
TEST(DemoArchives, PartlyUnpackedRouteMissesOnlyWhatTheManifestSays) {
    const Install& in = sharedInstall();
    const auto faults = faultsOf(in, "ap-partly-unpacked");
    ASSERT_EQ(faults.size(), 1u);
    const std::string path = str(faults[0]["path"]);
    const std::string folder = routeFolderOf(path);
    QJsonObject route;
    for (const auto& r : in.manifest["routes"].toArray())
        if (str(r.toObject()["archive"]) == path)
            route = r.toObject();
    ASSERT_FALSE(route.isEmpty());
    EXPECT_FALSE(route["packed"].toBool());
    EXPECT_TRUE(fs::is_directory(in.path(folder + "/MixMap")));
    EXPECT_TRUE(fs::exists(in.path(folder + "/RouteProperties.xml")));
    std::set<std::string> only;
    for (const auto& f : route["archiveOnly"].toArray())
        only.insert(str(f));
    EXPECT_EQ(std::to_string(only.size()), str(faults[0]["details"].toObject()["onlyInArchive"]));
    ASSERT_GE(only.size(), 2u);

    const Entries e = readArchive(in.path(path));
    ASSERT_TRUE(e.ok);
    std::size_t seenOnly = 0;
    for (const auto& [name, bytes] : e.bytes) {
        const std::string rel = folder + "/" + name;
        SCOPED_TRACE(rel);
        if (only.count(rel)) {
            ++seenOnly;
            EXPECT_FALSE(fs::exists(in.path(rel)));
        } else {
            EXPECT_EQ(readFile(in.path(rel)), bytes);
        }
    }
    EXPECT_EQ(seenOnly, only.size());
    // The route's own lists still hold what is on disk: its scenario is unpacked.
    for (const auto& s : route["scenarios"].toArray())
        EXPECT_TRUE(fs::exists(in.path(folder + "/Scenarios/" + str(s.toObject()["folder"]) + "/Scenario.bin")));
}

TEST(DemoArchives, DamagedArchiveIsCutShortAndDoesNotOpen) {
    const Install& in = sharedInstall();
    const auto faults = faultsOf(in, "ap-damaged");
    ASSERT_EQ(faults.size(), 1u);
    const std::string path = str(faults[0]["path"]);
    const QJsonObject details = faults[0]["details"].toObject();
    EXPECT_EQ(std::to_string(fs::file_size(in.path(path))), str(details["length"]));
    EXPECT_LT(std::stoul(str(details["length"])), std::stoul(str(details["intactLength"])));
    EXPECT_FALSE(readArchive(in.path(path)).ok);
    EXPECT_FALSE(archiveEntry(in, path)["readable"].toBool());
    // Its first entry's local header is still there: the bytes are a zip until the cut.
    EXPECT_EQ(readFile(in.path(path)).substr(0, 4), std::string("PK\x03\x04", 4));
}

// Two names would leave the folder; the ordinary entries are unpacked beside the archive and
// nothing was written where the bad names point.
TEST(DemoArchives, UnsafeEntriesSitBesideOrdinaryOnes) {
    const Install& in = sharedInstall();
    const auto faults = faultsOf(in, "ap-unsafe-entry");
    ASSERT_EQ(faults.size(), 1u);
    const std::string path = str(faults[0]["path"]);
    const QJsonObject details = faults[0]["details"].toObject();
    const std::string upward = str(details["upward"]), absolute = str(details["absolute"]);
    EXPECT_EQ(upward.rfind("../", 0), 0u);
    EXPECT_EQ(absolute.rfind('/', 0), 0u);
    const Entries e = readArchive(in.path(path));
    ASSERT_TRUE(e.ok);
    EXPECT_EQ(e.bytes.count(upward), 1u);
    EXPECT_EQ(e.bytes.count(absolute), 1u);
    const fs::path folder = in.path(path).parent_path();
    EXPECT_FALSE(fs::exists(folder.parent_path() / upward.substr(3)));
    int ordinary = 0;
    for (const auto& [name, bytes] : e.bytes)
        if (name != upward && name != absolute) {
            ++ordinary;
            EXPECT_EQ(readFile(folder / fs::path(name)), bytes) << name;
        }
    EXPECT_GE(ordinary, 3);
}

// A scenario pack in the first route's folder: only the scenario's files, none of them on disk.
TEST(DemoArchives, ScenarioPackHoldsOneScenarioOfALooseRoute) {
    const Install& in = sharedInstall();
    QJsonObject pack;
    for (const auto& a : in.manifest["archives"].toArray())
        if (str(a.toObject()["kind"]) == "scenarios")
            pack = a.toObject();
    ASSERT_FALSE(pack.isEmpty());
    const std::string path = str(pack["path"]);
    EXPECT_EQ(routeFolderOf(path), "Content/Routes/" + str(pack["route"]));
    EXPECT_EQ(str(in.manifest["routes"].toArray()[0].toObject()["folder"]), str(pack["route"]));
    const QJsonArray scenarios = pack["scenarios"].toArray();
    ASSERT_EQ(scenarios.size(), 1);
    const std::string scenario = "Scenarios/" + str(scenarios[0].toObject()["folder"]) + "/";
    const Entries e = readArchive(in.path(path));
    ASSERT_TRUE(e.ok);
    for (const auto& name : e.names) {
        EXPECT_EQ(name.rfind(scenario, 0), 0u) << name;
        EXPECT_FALSE(fs::exists(in.path(routeFolderOf(path) + "/" + name))) << name;
    }
    ASSERT_EQ(e.bytes.count(scenario + "ScenarioProperties.xml"), 1u);
    EXPECT_NE(e.bytes.at(scenario + "ScenarioProperties.xml").find(str(scenarios[0].toObject()["name"])),
              std::string::npos);
    EXPECT_EQ(e.bytes.count(scenario + "Scenario.bin"), 1u);
    // Not one of the route's own scenarios in the manifest.
    for (const auto& s : in.manifest["routes"].toArray()[0].toObject()["scenarios"].toArray())
        EXPECT_NE(str(s.toObject()["folder"]), str(scenarios[0].toObject()["folder"]));
}

TEST(DemoArchives, SameSeedSameArchiveBytes) {
    Install a(1, 5), b(1, 5);
    ASSERT_TRUE(a.result.ok && b.result.ok);
    const auto names = archivesOnDisk(a.dir.path());
    ASSERT_EQ(names, archivesOnDisk(b.dir.path()));
    for (const auto& n : names)
        EXPECT_EQ(readFile(a.path(n)), readFile(b.path(n))) << n;
}

// The scale adds a packed product a step and a packed route for every ten; scale 1 has none.
TEST(DemoArchives, ScaleAddsPackedProductsAndRoutes) {
    const Install& one = sharedInstall();
    Install ten(10);
    ASSERT_TRUE(ten.result.ok) << ten.result.error;
    const auto count = [](const Install& in, const std::string& kind) {
        int n = 0;
        for (const auto& a : in.manifest["archives"].toArray())
            n += str(a.toObject()["kind"]) == kind;
        return n;
    };
    EXPECT_EQ(count(ten, "assets"), count(one, "assets") + 9);
    EXPECT_EQ(count(ten, "route"), count(one, "route") + 1);
    EXPECT_EQ(ten.result.packedRoutes.size(), one.result.packedRoutes.size() + 1);
    EXPECT_EQ(ten.result.archives, archivesOnDisk(ten.dir.path()).size());
    EXPECT_EQ(ten.faults().size(), one.faults().size());
    std::size_t entries = 0;
    for (const auto& a : ten.manifest["archives"].toArray())
        entries += static_cast<std::size_t>(a.toObject()["entries"].toInt());
    EXPECT_EQ(entries, ten.result.archiveEntries);
}
