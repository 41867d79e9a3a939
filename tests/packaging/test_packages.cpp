// Packages of reskins and asset folders, the lamp facts of the scenario stock list, and folders
// that hurt a walk: a link that loops, a named pipe, a file nobody may read.

#include "common/unprivileged.h"
#include "packagefixture.h"
#include "velmora/packaging/crc.h"
#include "velmora/packaging/packaging.h"

#include <sys/stat.h>

using namespace velmora;
using namespace velmora::packaging;

namespace {

class Packages : public test::PackageTest {
protected:
    PackageOptions options() const {
        PackageOptions o;
        o.base = out();
        return o;
    }
    PackageState m_state;
};

TEST_F(Packages, ReskinKeepsOnlyWhatDiffersAndCopiesTheRestAtInstallation) {
    const fs::path original = root() / "Assets/Acme/Trains/RailVehicles/Wagon";
    const fs::path reskin = root() / "Assets/Acme/Reskins/RailVehicles/Wagon Bleu";
    put(original / "Wagon.bin", "blueprint");
    put(reskin / "Wagon.bin", "blueprint"); // byte-equal: goes
    put(original / "Textures/Body.TgPcDx", "old paint");
    put(reskin / "Textures/Body.TgPcDx", "new paint"); // differs: stays
    put(original / "Empty.txt", "");
    put(reskin / "Empty.txt", ""); // empty in both: unchanged
    put(original / "Description.html", "same words");
    put(reskin / "Description.html", "same words"); // never compared: stays
    put(original / "IMAGE.PNG", "png");
    put(reskin / "image.png", "png");
    put(reskin / "Numbers, \"été\".dcsv", "only here"); // reskin only: stays, no line

    const PackageReport r = packageReskin(ctx(), reskin, original, m_state, options(), nullptr);
    ASSERT_TRUE(r.ok()) << r.refused;
    EXPECT_EQ(m_state.packageFolder, "Wagon Bleu");
    const fs::path pkg = out() / "Wagon Bleu";
    const fs::path packed = pkg / "RailWorks/Assets/Acme/Reskins/RailVehicles/Wagon Bleu";
    EXPECT_FALSE(fs::exists(packed / "Wagon.bin"));
    EXPECT_FALSE(fs::exists(packed / "Empty.txt"));
    EXPECT_EQ(read(packed / "Textures/Body.TgPcDx"), "new paint");
    EXPECT_TRUE(fs::exists(packed / "Description.html"));
    EXPECT_TRUE(fs::exists(packed / "image.png"));
    EXPECT_EQ(read(packed / "Numbers, \"été\".dcsv"), "only here");
    EXPECT_EQ(read(pkg / "RailWorks/Assets/InstallMe.bat"),
              "Copy \"Acme\\Trains\\RailVehicles\\Wagon\\Empty.txt\" \"Acme\\Reskins\\RailVehicles\\Wagon "
              "Bleu\\Empty.txt\"\r\n"
              "Copy \"Acme\\Trains\\RailVehicles\\Wagon\\Wagon.bin\" \"Acme\\Reskins\\RailVehicles\\Wagon "
              "Bleu\\Wagon.bin\"\r\n");
    EXPECT_EQ(read(pkg / "ReadMe.txt"),
              "\r\nInstallation Instructions:-\r\n"
              "Unzip this package to a temporary folder, e.g. C:\\Temp and click on VL_AssetSetup.exe\r\n"
              "The installer will open and should display the path of your TrainSimulator 2019 folder\r\n"
              "If not click on the '....' button and navigate to your TrainSimulator 2019 folder in Steam\r\n"
              "Click the 'Install to TrainSimulator 2019' button and thats it\r\n");
}

TEST_F(Packages, ReskinGuardsNameWhatIsNotChosen) {
    EXPECT_EQ(packageReskin(ctx(), {}, root(), m_state, options(), nullptr).refused,
              "You do not appear to have selected the folder of your ReSkinned object.");
    EXPECT_EQ(packageReskin(ctx(), root() / "Assets", {}, m_state, options(), nullptr).refused,
              "You do not appear to have selected the folder of your Original object.");
    fs::create_directories(m_dir / "elsewhere");
    EXPECT_NE(packageReskin(ctx(), m_dir / "elsewhere", m_dir / "elsewhere", m_state, options(), nullptr)
                  .refused.find("is not below the simulator's folder"),
              std::string::npos);
}

TEST_F(Packages, AssetFoldersWithSetupAndListsAndRemovedRowsStillCopied) {
    put(root() / "Assets/Acme/Trains/Scenery/Hut.bin", "hut");
    put(root() / "Assets/Acme/Trains/RailVehicles/Loco.bin", "loco");
    put(home() / "TempFiles/Scenario.zzz", "marker");
    AssetPackage package(ctx(), m_state);
    EXPECT_EQ(package.add(root() / "Assets/Acme/Trains/Scenery"), "");
    EXPECT_EQ(package.add(root() / "Assets/Acme/Trains/RailVehicles"), "");
    EXPECT_NE(package.add(m_dir / "nowhere"), "");
    package.remove({0});
    ASSERT_EQ(package.list().size(), 1u);
    const PackageReport r = package.process(options(), nullptr);
    ASSERT_TRUE(r.ok());
    const fs::path pkg = out() / "Scenery";
    EXPECT_EQ(read(pkg / "RailWorks/Assets/Acme/Trains/Scenery/Hut.bin"), "hut");
    EXPECT_EQ(read(pkg / "RailWorks/Assets/Acme/Trains/RailVehicles/Loco.bin"), "loco");
    EXPECT_EQ(read(pkg / "AssetSetup.ggg"), "Assets\\Acme\\Trains\r\n");
    EXPECT_EQ(read(pkg / "Scenario.yyy"), "Scenery\r\nScenery\r\nRailVehicles\r\n");
    EXPECT_EQ(read(pkg / "Scenario.zzz"), "marker");
}

TEST_F(Packages, AssetsWithoutMarkerOrInstallerAreNamedAndMadeAllTheSame) {
    put(root() / "Assets/Acme/Trains/Scenery/Hut.bin", "hut");
    AssetPackage package(ctx(), m_state);
    package.add(root() / "Assets/Acme/Trains/Scenery");
    const PackageReport r = package.process(options(), nullptr);
    ASSERT_TRUE(r.ok());
    ASSERT_EQ(r.notes.size(), 2u);
    EXPECT_NE(r.notes[0].find("VL_RouteSetup.exe is not in"), std::string::npos);
    EXPECT_NE(r.notes[1].find("Scenario.zzz is not there"), std::string::npos);
}

TEST_F(Packages, LampFactsOfAVehicle) {
    const std::string xml =
        "<Child><ChildName>HeadLamp 2</ChildName><Provider>Orvelle</Provider><Product>Lights</Product>"
        "<BlueprintID>Lamps\\White.xml</BlueprintID><Element><e>1.5</e><e>2.25</e><e>-3</e></Element>"
        "<ChildName>Headlamp "
        "4</ChildName><Provider>Orvelle</Provider><BlueprintID>Lamps\\Red.xml</BlueprintID>"
        "<Element><e>4</e><e>5</e><e>6</e></Element></Child>";
    bool lamps = false;
    EXPECT_EQ(HasItLights(xml, "Class66_XP-Freight", lamps),
              "Orvelle,Lamps\\White.xml,2,1.5,2.25,-3,Orvelle,Lamps\\Red.xml,4,4,5,6,,,0,0,0");
    EXPECT_TRUE(lamps);
    lamps = false;
    EXPECT_EQ(HasItLights("<nothing/>", "Class66_EWS", lamps), ",,,0,0,0,,,,0,0,0,,,0,0,0");
    EXPECT_FALSE(lamps);
    const std::string tail =
        "<ChildName>TailLamp</ChildName><Provider>P</Provider><BlueprintID>T.xml</BlueprintID>"
        "<Element><e>7</e><e>8</e><e>9</e></Element>";
    EXPECT_EQ(HasItLights(tail, "Van_Rear", lamps), ",,,0,0,0,,,,0,0,0,P,T.xml,7,8,9");
    EXPECT_TRUE(lamps);
}

TEST_F(Packages, LoopingLinkAndPipeInAWalkedFolderAreNamedAndPassedOver) {
    const fs::path folder = root() / "Assets/Acme/Trains/Scenery";
    put(folder / "Hut.bin", "hut");
    fs::create_directory_symlink(folder, folder / "Loop");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    AssetPackage package(ctx(), m_state);
    package.add(folder);
    const PackageReport r = package.process(options(), nullptr);
    ASSERT_TRUE(r.ok());
    EXPECT_EQ(read(out() / "Scenery/RailWorks/Assets/Acme/Trains/Scenery/Hut.bin"), "hut");
    auto named = [&](const std::string& what) {
        return std::any_of(r.problems.begin(), r.problems.end(),
                           [&](const std::string& p) { return p.find(what) != std::string::npos; });
    };
    EXPECT_TRUE(named("Loop: a link, not followed"));
    EXPECT_TRUE(named("pipe: not a regular file"));
}

TEST_F(Packages, UnreadableFileIsNamedAndTheRestIsPackaged) {
    const fs::path folder = root() / "Assets/Acme/Trains/Scenery";
    put(folder / "Hut.bin", "hut");
    put(folder / "Secret, é.bin", "secret");
    ::chmod((folder / "Secret, é.bin").c_str(), 0);
    fs::permissions(m_dir, fs::perms::all, fs::perm_options::add);
    for (const auto& e : fs::recursive_directory_iterator(m_dir))
        if (e.is_directory())
            fs::permissions(e.path(), fs::perms::all, fs::perm_options::add);
    test::whereModesHold([&] {
        AppContext ctx(home(), m_dir / "data", m_ui);
        ctx.setRailWorksOverride(root());
        PackageState state;
        AssetPackage package(ctx, state);
        package.add(folder);
        const PackageReport r = package.process(options(), nullptr);
        const bool named = std::any_of(r.problems.begin(), r.problems.end(), [](const std::string& p) {
            return p.find("Secret, é.bin: cannot be read") != std::string::npos;
        });
        return r.ok() && named &&
               read(out() / "Scenery/RailWorks/Assets/Acme/Trains/Scenery/Hut.bin") == "hut";
    });
}

} // namespace
