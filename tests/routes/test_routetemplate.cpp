// Route templates, details, description, thumbnail and folders on a fresh demo install each.

#include "../common/unprivileged.h"
#include "routefixture.h"
#include "../core/faultyfiles.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/userinterface.h"
#include "velmora/demo/demoinstall.h"
#include "velmora/routes/routetemplate.h"
#include "velmora/textures/dds.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using namespace velmora;
using namespace velmora::routes;
using velmora::test::count;
using velmora::test::decoded;
namespace fs = std::filesystem;

namespace {

// A DXT1 picture of the size and mip count asked for, every level filled with its own byte.
std::string ddsPicture(int width, int height, int mips) {
    using namespace textures;
    std::string levels;
    int w = width, h = height;
    for (int i = 0; i < mips; ++i) {
        levels += std::string(levelSize(PixelFormat::Dxt1, w, h), static_cast<char>(0x10 + i));
        w = std::max(1, w / 2);
        h = std::max(1, h / 2);
    }
    return ddsHeader(PixelFormat::Dxt1, width, height, levelSize(PixelFormat::Dxt1, width, height),
                     static_cast<std::size_t>(mips)) +
           levels;
}

class RouteTemplates : public test::RouteTest {
protected:
    void TearDown() override {
        std::error_code ec;
        fs::permissions(properties(), fs::perms::owner_all, ec);
        RouteTest::TearDown();
    }
    fs::path properties() const { return m_valley.path / "RouteProperties.xml"; }
    TemplateRequest request(const std::string& name, const std::string& provider, const std::string& product) {
        TemplateRequest r;
        r.name = name;
        r.provider = provider;
        r.product = product;
        r.items = defaultTemplateItems();
        return r;
    }
};

// --- templates ---------------------------------------------------------------------------------

TEST_F(RouteTemplates, ANewTemplateDecodesWithItsItemsAndFlagsUnderAProviderThatHadNoFolder) {
    TemplateRequest r = request("Côte d'Azur, \"Night\" <1>", "Nouveau Éditeur", "Ligne, Sud");
    r.items[SpringSky] = {"Kuju", "RailSimulatorCore", "TimeOfDay\\Spring.xml"};
    r.flags.location = locationIndex("north america");
    r.flags.era = eraIndex("Historic");
    r.flags.terrain = {false, true, false, true};
    ASSERT_FALSE(fs::exists(rw() / "Assets" / "Nouveau Éditeur"));
    const RouteJob job = buildRouteTemplate(*m_ctx, r);
    ASSERT_TRUE(job.ok) << job.message;
    const fs::path product = rw() / "Assets" / "Nouveau Éditeur" / "Ligne, Sud";
    EXPECT_TRUE(fs::is_directory(product / "RouteMarkers"));
    ASSERT_EQ(job.written.size(), 1u);
    EXPECT_EQ(job.written[0].parent_path(), product / "TemplateRoutes");
    EXPECT_EQ(job.written[0].filename().string(), fileNameFromText(r.name) + ".bin");
    EXPECT_NE(job.message.find("\\Assets\\Nouveau Éditeur\\Ligne, Sud\\TemplateRoutes\\"), std::string::npos);

    const std::string xml = decoded(job.written[0]);
    EXPECT_NE(xml.find("<cRouteBlueprint"), std::string::npos);
    EXPECT_NE(xml.find("<English d:type=\"cDeltaString\">Côte d&apos;Azur, &quot;Night&quot; &lt;1&gt;</English>"),
              std::string::npos)
        << xml;
    // Four skies, weather and terrain as references, in the shape a route's properties hold them.
    EXPECT_EQ(count(xml, "<iBlueprintLibrary-cAbsoluteBlueprintID>"), 7u); // and the browse picture's
    EXPECT_NE(xml.find("<cRouteBlueprint-sSkies>"), std::string::npos);
    EXPECT_NE(xml.find(">Environment\\Terrain\\Terrain.xml<"), std::string::npos);
    EXPECT_NE(xml.find("<NorthAmerica d:type=\"cDeltaString\">eTrue</NorthAmerica>"), std::string::npos);
    EXPECT_NE(xml.find("<Europe d:type=\"cDeltaString\">eFalse</Europe>"), std::string::npos);
    EXPECT_NE(xml.find("<Historic d:type=\"cDeltaString\">eTrue</Historic>"), std::string::npos);
    EXPECT_NE(xml.find("<Mountains d:type=\"cDeltaString\">eTrue</Mountains>"), std::string::npos);
    EXPECT_NE(xml.find("<Urban d:type=\"cDeltaString\">eTrue</Urban>"), std::string::npos);
    EXPECT_EQ(count(xml, "eTrue"), 4u);
    // No token of the template is left unfilled.
    for (const char* token : {"aaaaa", "ddddd", "uuuuu", "aaabbb", "cccggg"})
        EXPECT_EQ(xml.find(token), std::string::npos) << token;
    // The encoded template round-trips through the codec unchanged.
    std::string again;
    ASSERT_TRUE(xmlTextToBin(xml, again));
    EXPECT_EQ(again, ReadTextFile(job.written[0]));
}

TEST_F(RouteTemplates, AnEmptyBoxRefusesAndABuiltTemplateIsUndoneWhole) {
    TemplateRequest r = request("Valley", "Dev", "Valley");
    r.items[Weather].path.clear();
    RouteJob job = buildRouteTemplate(*m_ctx, r);
    EXPECT_FALSE(job.ok);
    EXPECT_EQ(job.message, "You have not entered details in all the boxes, please complete\nentries and try again.");
    EXPECT_FALSE(fs::exists(rw() / "Assets" / "Dev"));

    r = request("Valley", "Dev", "Valley");
    ASSERT_TRUE(buildRouteTemplate(*m_ctx, r).ok);
    const fs::path file = rw() / "Assets/Dev/Valley/TemplateRoutes/Valley.bin";
    const std::string first = ReadTextFile(file);
    r.flags.location = locationIndex("Asia");
    ASSERT_TRUE(buildRouteTemplate(*m_ctx, r).ok);
    EXPECT_EQ(ReadTextFile(fs::path(file.string() + ".bak")), first);
    EXPECT_TRUE(undoLast().ok);
    EXPECT_EQ(ReadTextFile(file), first);
    EXPECT_TRUE(undoLast().ok);
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(RouteTemplates, PickedFilesAreCutBehindTheirAssetsFolder) {
    const auto item = itemFromPath("C:\\Games\\RailWorks\\Assets\\Kuju\\RailSimulatorCore\\TimeOfDay\\Spring.bin");
    ASSERT_TRUE(item);
    EXPECT_EQ(item->provider, "Kuju");
    EXPECT_EQ(item->product, "RailSimulatorCore");
    EXPECT_EQ(item->path, "TimeOfDay\\Spring.xml");
    const auto linux = itemFromPath("/home/me/RailWorks/assets/Prov, Ltd/Pröd/Weather/Rain.bin");
    ASSERT_TRUE(linux);
    EXPECT_EQ(linux->provider, "Prov, Ltd");
    EXPECT_EQ(linux->path, "Weather\\Rain.xml");
    EXPECT_FALSE(itemFromPath("/home/me/Spring.bin"));
    EXPECT_FALSE(itemFromPath("/rw/Assets/Kuju/Spring.bin"));
    EXPECT_EQ(locationIndex("South America"), 5);
    EXPECT_EQ(terrainIndex("plains"), 2);
    EXPECT_EQ(eraIndex("Future"), -1);
}

// --- check route template ----------------------------------------------------------------------

TEST_F(RouteTemplates, AnOldTemplateGetsItsFilteringAddedAsItsFirstSectionKeepingTheOldBin) {
    TemplateCheck check = inspectRouteTemplate(*m_ctx, m_valley);
    ASSERT_EQ(check.state, TemplateState::NoFiltering) << check.message;
    const std::string old = ReadTextFile(check.templateFile);
    BrowseFlags flags;
    flags.location = 1;
    m_ui.pushAnswer(Answer::Yes);
    const RouteJob job = checkRouteTemplate(*m_ctx, m_valley, &flags);
    ASSERT_TRUE(job.ok) << job.message;
    EXPECT_EQ(m_ui.prompts.back().text, "Your Route Template has been updated.");
    EXPECT_EQ(ReadTextFile(fs::path(check.templateFile.string() + ".bak")), old);
    const std::string xml = decoded(check.templateFile);
    const std::size_t blueprint = xml.find("<cRouteBlueprint>");
    ASSERT_NE(blueprint, std::string::npos);
    EXPECT_EQ(xml.find("<", blueprint + 1), xml.find("<BrowseFiltering>")) << xml;
    EXPECT_NE(xml.find("<Asia d:type=\"cDeltaString\">eTrue</Asia>"), std::string::npos);
    EXPECT_NE(xml.find("<Name d:type=\"cDeltaString\">Demo template</Name>"), std::string::npos);
    EXPECT_EQ(inspectRouteTemplate(*m_ctx, m_valley).state, TemplateState::Filtered);
    EXPECT_TRUE(undoLast().ok);
    EXPECT_EQ(ReadTextFile(check.templateFile), old);
}

TEST_F(RouteTemplates, FlagsThatAreAllFalseCountAsNoFilteringAndAreReplacedWhole) {
    TemplateCheck check = inspectRouteTemplate(*m_ctx, m_valley);
    BrowseFlags none;
    none.location = -1;
    none.era = -1;
    none.terrain = {false, false, false, false};
    ASSERT_TRUE(applyBrowseFilter(*m_ctx, check, none).ok);
    check = inspectRouteTemplate(*m_ctx, m_valley);
    EXPECT_EQ(check.state, TemplateState::NoFlags);
    EXPECT_EQ(check.message, "Although the Route Template has a BrowseFiltering section\nNo location or filtering data is "
                             "included.\nDo you wish to update it.");
    // No: nothing changes.
    const std::string before = ReadTextFile(check.templateFile);
    BrowseFlags flags;
    m_ui.pushAnswer(Answer::No);
    EXPECT_TRUE(checkRouteTemplate(*m_ctx, m_valley, &flags).ok);
    EXPECT_EQ(ReadTextFile(check.templateFile), before);
    m_ui.pushAnswer(Answer::Yes);
    ASSERT_TRUE(checkRouteTemplate(*m_ctx, m_valley, &flags).ok);
    const std::string xml = decoded(check.templateFile);
    EXPECT_EQ(count(xml, "<BrowseFiltering>"), 1u);
    EXPECT_EQ(count(xml, "eTrue"), 3u); // Europe, Modern, Countryside
    EXPECT_TRUE(fs::exists(check.templateFile.string() + ".bak1"));
}

TEST_F(RouteTemplates, ARouteWithoutPropertiesOrTemplateIsToldSo) {
    std::string text = ReadTextFile(properties());
    const std::size_t at = text.find("TemplateRoutes\\Demo_Template.xml");
    ASSERT_NE(at, std::string::npos);
    text.replace(at, std::string_view("TemplateRoutes\\Demo_Template.xml").size(), "TemplateRoutes\\Gone_Template.xml");
    ASSERT_TRUE(WriteTextFile(properties(), text));
    EXPECT_EQ(inspectRouteTemplate(*m_ctx, m_valley).state, TemplateState::NotFound);
    BrowseFlags flags;
    EXPECT_FALSE(checkRouteTemplate(*m_ctx, m_valley, &flags).ok);
    EXPECT_NE(m_ui.prompts.back().text.find("Gone_Template.bin\nThe Route Template listed in RouteProperties.xml\nCould not be found."),
              std::string::npos)
        << m_ui.prompts.back().text;
    fs::remove(properties());
    EXPECT_EQ(inspectRouteTemplate(*m_ctx, m_valley).state, TemplateState::NoProperties);
}

// --- details -----------------------------------------------------------------------------------

TEST_F(RouteTemplates, DetailsAreReadAndLatLongUpdateKeepsTheXmlbakThenNumberedBackups) {
    RouteDetails d;
    std::string error;
    ASSERT_TRUE(readRouteDetails(*m_ctx, m_valley, d, error)) << error;
    EXPECT_EQ(d.names[0], "Demo Valley Line");
    EXPECT_EQ(d.routeTemplate.path, "TemplateRoutes\\Demo_Template.xml");
    EXPECT_EQ(d.items[WinterSky].path, "TimeOfDay\\Winter.xml");
    EXPECT_EQ(d.items[Terrain].path, "Environment\\Terrain\\Demo_Terrain.xml");
    EXPECT_EQ(d.latitude, "52.0459");

    const std::string old = ReadTextFile(properties());
    RouteJob job = updateLatLong(*m_ctx, m_valley, " 51.5 ", "-0.125");
    ASSERT_TRUE(job.ok) << job.message;
    EXPECT_EQ(ReadTextFile(m_valley.path / "RouteProperties.xmlbak"), old);
    ASSERT_TRUE(readRouteDetails(*m_ctx, m_valley, d, error));
    EXPECT_EQ(d.latitude, "51.5");
    EXPECT_EQ(d.longitude, "-0.125");
    // The exact encoding follows the value: 51.5 is 0x4049C00000000000.
    EXPECT_NE(ReadTextFile(properties()).find("d:alt_encoding=\"0000000000C04940\""), std::string::npos);
    const std::string second = ReadTextFile(properties());
    ASSERT_TRUE(updateLatLong(*m_ctx, m_valley, "46.6", "8.58").ok);
    EXPECT_EQ(ReadTextFile(m_valley.path / "RouteProperties.xmlbak"), old);
    EXPECT_EQ(ReadTextFile(m_valley.path / "RouteProperties.xml.bak"), second);
    EXPECT_TRUE(undoLast().ok);
    EXPECT_TRUE(undoLast().ok);
    EXPECT_EQ(ReadTextFile(properties()), old);
}

TEST_F(RouteTemplates, ALatitudeThatIsNoNumberOrOutOfRangeChangesNothing) {
    const std::string old = ReadTextFile(properties());
    for (const auto& [lat, lon] : std::vector<std::pair<std::string, std::string>>{
             {"fifty", "1"}, {"52,5", "1"}, {"91", "0"}, {"10", "-180.5"}, {"", "0"}, {"nan", "0"}, {"1e999", "0"}}) {
        const RouteJob job = updateLatLong(*m_ctx, m_valley, lat, lon);
        EXPECT_FALSE(job.ok) << lat << " " << lon;
        EXPECT_NE(job.message.find(lat.empty() || lat == "10" ? lon : lat), std::string::npos) << job.message;
    }
    EXPECT_EQ(ReadTextFile(properties()), old);
    EXPECT_FALSE(fs::exists(m_valley.path / "RouteProperties.xmlbak"));
}

TEST_F(RouteTemplates, AFailedWriteLeavesTheOldPropertiesWhole) {
    const std::string old = ReadTextFile(properties());
    test::FaultyFiles faults(WriteStep::Replace, std::errc::io_error);
    m_ctx->files().setFileOps(&faults);
    const RouteJob job = updateLatLong(*m_ctx, m_valley, "50", "1");
    m_ctx->files().setFileOps(nullptr);
    EXPECT_FALSE(job.ok);
    EXPECT_NE(job.message.find("RouteProperties.xml"), std::string::npos) << job.message;
    EXPECT_EQ(ReadTextFile(properties()), old);
}

TEST_F(RouteTemplates, AnUnreadablePropertiesFileIsNamed) {
    ::chmod(properties().c_str(), 0);
    const fs::path file = properties();
    test::whereModesHold([&] {
        RouteDetails d;
        std::string error;
        const bool read = readRouteDetails(*m_ctx, m_valley, d, error);
        const RouteJob job = updateLatLong(*m_ctx, m_valley, "50", "1");
        return !read && error.find(file.string()) != std::string::npos && !job.ok &&
               job.message.find(file.string()) != std::string::npos;
    });
}

// --- description and thumbnail -----------------------------------------------------------------

TEST_F(RouteTemplates, DescriptionFillsEveryBoxEmptyOnesWithNothingAndEscapesMarkup) {
    const fs::path page = m_valley.path / "RouteInformation" / "En" / "Description.html";
    const bool had = fs::exists(page);
    const std::string old = had ? ReadTextFile(page) : std::string();
    const RouteJob job = writeDescription(*m_ctx, m_valley, {"Ore & Coal <Part 2>", "Zürich–Chur, \"Nord\"", "First.", "", "Last."});
    ASSERT_TRUE(job.ok) << job.message;
    EXPECT_EQ(job.message, "Your Description file has been saved in the route's\nRouteInformation\\En folder.");
    const std::string html = ReadTextFile(page);
    EXPECT_NE(html.find("<h1>Ore &amp; Coal &lt;Part 2&gt;</h1>"), std::string::npos) << html;
    EXPECT_NE(html.find("Zürich–Chur, &quot;Nord&quot;"), std::string::npos);
    EXPECT_NE(html.find("<p>First.</p>\r\n<p></p>\r\n<p>Last.</p>"), std::string::npos) << html;
    for (const char* token : {"AAAAA", "BBBBB", "CCCCC", "DDDDD", "EEEEE"})
        EXPECT_EQ(html.find(token), std::string::npos) << token;
    const UndoResult undone = undoLast();
    EXPECT_TRUE(undone.ok) << undone.message;
    EXPECT_EQ(fs::exists(page), had);
    EXPECT_EQ(had ? ReadTextFile(page) : std::string(), old);
}

TEST_F(RouteTemplates, AThumbnailAndItsMetadataAreWrittenIntoThePreLoadFolder) {
    const fs::path dds = m_dir / "Vallée picture.dds";
    const std::string picture = ddsPicture(256, 128, 6);
    ASSERT_TRUE(WriteTextFile(dds, picture));
    ThumbnailRequest r;
    r.dds = dds;
    r.preload = rw() / "Assets" / "DemoRail" / "Class66Pack" / "PreLoad";
    r.metadata = "ValleyMetadata";
    r.flags.location = 3;
    r.flags.era = 0;
    const RouteJob job = makeThumbnail(*m_ctx, r);
    ASSERT_TRUE(job.ok) << job.message;
    const fs::path texture = r.preload / "Vallée picture.TgPcDx";
    textures::TextureLevels levels;
    std::string error;
    ASSERT_TRUE(textures::readTextureFile(texture, levels, error)) << error;
    EXPECT_EQ(levels.width, 256);
    EXPECT_EQ(levels.height, 128);
    EXPECT_EQ(levels.format, textures::PixelFormat::Dxt1);
    ASSERT_EQ(levels.levels.size(), 6u);
    EXPECT_EQ(levels.levels[5], std::string(16, '\x15')); // 8 x 4: two blocks
    EXPECT_NE(decoded(texture).find(">PreLoad\\Vallée picture</Name>"), std::string::npos);
    const std::string meta = decoded(r.preload / "ValleyMetadata.bin");
    EXPECT_NE(meta.find(">Assets\\DemoRail\\Class66Pack\\PreLoad\\[00]Vallée picture.TgPcDx<"), std::string::npos) << meta;
    EXPECT_NE(meta.find("<Europe d:type=\"cDeltaString\">eTrue</Europe>"), std::string::npos);
    EXPECT_NE(meta.find("<Heritage d:type=\"cDeltaString\">eTrue</Heritage>"), std::string::npos);
    EXPECT_EQ(count(meta, "eTrue"), 2u);
    EXPECT_TRUE(undoLast().ok);
    EXPECT_FALSE(fs::exists(texture));
    EXPECT_FALSE(fs::exists(r.preload / "ValleyMetadata.bin"));
}

TEST_F(RouteTemplates, APictureOfAnyOtherSizeIsScaledIntoTheThumbnailsLevels) {
    // A 300 x 200 photo, red above and blue below: scaled to 256 x 128 in six DXT1 levels.
    textures::Image photo{300, 200, std::vector<std::uint8_t>(300 * 200 * 4)};
    for (std::size_t i = 0; i < photo.rgba.size(); i += 4) {
        const bool top = i / 4 / 300 < 100;
        photo.rgba[i] = top ? 255 : 0;
        photo.rgba[i + 2] = top ? 0 : 255;
        photo.rgba[i + 3] = 255;
    }
    ThumbnailRequest r;
    r.dds = m_dir / "Borders.png"; // only its name is used
    r.picture = &photo;
    r.preload = rw() / "Assets" / "DemoRail" / "Class66Pack" / "PreLoad";
    r.metadata = "BordersMetadata";
    const RouteJob job = makeThumbnail(*m_ctx, r);
    ASSERT_TRUE(job.ok) << job.message;
    textures::TextureLevels levels;
    std::string error;
    ASSERT_TRUE(textures::readTextureFile(r.preload / "Borders.TgPcDx", levels, error)) << error;
    EXPECT_EQ(levels.width, 256);
    EXPECT_EQ(levels.format, textures::PixelFormat::Dxt1);
    ASSERT_EQ(levels.levels.size(), 6u);
    const textures::Image shown = textures::levelImage(levels, 0, &error);
    ASSERT_TRUE(shown.valid()) << error;
    EXPECT_EQ(shown.rgba[0], 255) << "the top is red";
    EXPECT_EQ(shown.rgba[(127 * 256) * 4 + 2], 255) << "the bottom is blue";
    const textures::Image none;
    r.picture = &none;
    EXPECT_NE(makeThumbnail(*m_ctx, r).message.find("Borders.png: the picture holds no pixels"), std::string::npos);
}

TEST_F(RouteTemplates, AThumbnailWhoseMetadataCannotBeWrittenLeavesNoPictureBehind) {
    ThumbnailRequest r;
    r.dds = m_dir / "pic.dds";
    ASSERT_TRUE(WriteTextFile(r.dds, ddsPicture(256, 128, 6)));
    r.preload = rw() / "Assets" / "DemoRail" / "Class66Pack" / "PreLoad";
    r.metadata = "Meta";
    test::FaultyFiles faults(WriteStep::Create, std::errc::no_space_on_device, 1); // the second file
    m_ctx->files().setFileOps(&faults);
    const RouteJob job = makeThumbnail(*m_ctx, r);
    m_ctx->files().setFileOps(nullptr);
    EXPECT_FALSE(job.ok);
    EXPECT_NE(job.message.find("Meta.bin"), std::string::npos) << job.message;
    EXPECT_FALSE(fs::exists(r.preload / "pic.TgPcDx"));
    EXPECT_FALSE(fs::exists(r.preload / "Meta.bin"));
}

TEST_F(RouteTemplates, AWrongThumbnailIsRefusedNamingTheFileAndWritesNothing) {
    ThumbnailRequest r;
    r.preload = rw() / "Assets" / "DemoRail" / "Class66Pack" / "PreLoad";
    r.metadata = "Meta";
    EXPECT_EQ(makeThumbnail(*m_ctx, r).message, "Please enter the name of your DDS picture");
    for (const auto& [w, h, mips] : std::vector<std::tuple<int, int, int>>{{512, 256, 6}, {256, 128, 1}, {128, 128, 6}}) {
        r.dds = m_dir / ("wrong " + std::to_string(w) + ".dds");
        ASSERT_TRUE(WriteTextFile(r.dds, ddsPicture(w, h, mips)));
        const RouteJob job = makeThumbnail(*m_ctx, r);
        EXPECT_FALSE(job.ok);
        EXPECT_NE(job.message.find(r.dds.string()), std::string::npos) << job.message;
        EXPECT_NE(job.message.find("256 by 128, DXT1, with 6 mipmaps"), std::string::npos) << job.message;
    }
    r.dds = m_dir / "cut.dds";
    ASSERT_TRUE(WriteTextFile(r.dds, ddsPicture(256, 128, 6).substr(0, 5000)));
    EXPECT_NE(makeThumbnail(*m_ctx, r).message.find(r.dds.string()), std::string::npos);
    r.dds = m_dir / "right.dds";
    ASSERT_TRUE(WriteTextFile(r.dds, ddsPicture(256, 128, 6)));
    r.metadata = "My Meta";
    EXPECT_FALSE(makeThumbnail(*m_ctx, r).ok);
    r.metadata = "Meta";
    r.preload = m_dir / "elsewhere";
    EXPECT_NE(makeThumbnail(*m_ctx, r).message.find("must lie in a product folder"), std::string::npos);
    EXPECT_FALSE(fs::exists(rw() / "Assets" / "DemoRail" / "Class66Pack" / "PreLoad" / "Meta.bin"));
}

// --- folders -----------------------------------------------------------------------------------

TEST_F(RouteTemplates, DeveloperFoldersAreMadeAndAnExistingTreeIsAskedAbout) {
    RouteJob job = setUpDeveloperFolders(*m_ctx, "Ñandú Works", "First, Line");
    ASSERT_TRUE(job.ok) << job.message;
    EXPECT_EQ(job.message, "Your Provider and Product folders have been set up");
    for (const char* tree : {"Source", "Assets"})
        for (const char* sub : {"PreLoad", "Scenery/Wildlife", "RailVehicles/Steam", "TemplateRoutes"})
            EXPECT_TRUE(fs::is_directory(rw() / tree / "Ñandú Works" / "First, Line" / sub)) << tree << "/" << sub;
    EXPECT_EQ(developerFolders().size(), 12u + 13u + 6u);
    EXPECT_TRUE(m_ui.prompts.empty());

    fs::remove(rw() / "Assets" / "Ñandú Works" / "First, Line" / "Weather");
    m_ui.pushAnswer(Answer::No);  // Source: left
    m_ui.pushAnswer(Answer::Yes); // Assets: completed
    job = setUpDeveloperFolders(*m_ctx, "Ñandú Works", "First, Line");
    ASSERT_TRUE(job.ok);
    ASSERT_EQ(m_ui.prompts.size(), 2u);
    EXPECT_EQ(m_ui.prompts[0].text, "A Source folder with that name already exists. Do you wish\nto add any missing sub-folders ?");
    EXPECT_EQ(m_ui.prompts[1].text, "An Assets folder with that name already exists. Do you wish\nto add any missing sub-folders ?");
    EXPECT_TRUE(fs::is_directory(rw() / "Assets" / "Ñandú Works" / "First, Line" / "Weather"));
}

TEST_F(RouteTemplates, TheAssetFolderGathersWhatTheReportsNameAndPassesOverWhatIsGone) {
    const std::string root = rw().string();
    const std::string wav = root + "/Assets/DemoRail/Class66Pack/Audio/Ambient/Birds1.wav";
    ASSERT_TRUE(fs::exists(wav));
    EXPECT_FALSE(gatherRouteAssets(*m_ctx, "Demo Valley Line").ok); // no reports yet
    fs::create_directories(m_ctx->reports());
    ASSERT_TRUE(WriteTextFile(m_ctx->reports() / "Demo Valley Line_Sounds.csv", wav + "\r\n" + wav + "\r\n"));
    ASSERT_TRUE(WriteTextFile(m_ctx->reports() / "Demo Valley Line_Textures.csv", root + "/Assets/Gone/Gone/x.TgPcDx\r\n"));
    ASSERT_TRUE(WriteTextFile(m_ctx->reports() / "Demo Valley Line_GeoShapes.csv", "\r\n"));
    ASSERT_TRUE(WriteTextFile(m_ctx->reports() / "Demo Valley Line_Assets.csv",
                              "\"" + root + "/Assets/Kuju/RailSimulatorCore/TimeOfDay/Spring.bin\",,1\r\n"));
    const RouteJob job = gatherRouteAssets(*m_ctx, "Demo Valley Line");
    ASSERT_TRUE(job.ok) << job.message;
    EXPECT_EQ(job.written.size(), 2u);
    const fs::path into = rw() / "Assets_Demo Valley Line" / "Assets";
    EXPECT_EQ(ReadTextFile(into / "DemoRail/Class66Pack/Audio/Ambient/Birds1.wav"), ReadTextFile(wav));
    EXPECT_TRUE(fs::exists(into / "Kuju/RailSimulatorCore/TimeOfDay/Spring.bin"));
    ASSERT_EQ(job.notes.size(), 1u);
    EXPECT_NE(job.notes[0].find("x.TgPcDx: the file is missing"), std::string::npos);
    const UndoResult undone = undoLast();
    EXPECT_TRUE(undone.ok) << undone.message;
    EXPECT_FALSE(fs::exists(into / "DemoRail/Class66Pack/Audio/Ambient/Birds1.wav"));

    ScriptedUi stop;
    stop.cancelAfter(0);
    const RouteJob aborted = gatherRouteAssets(*m_ctx, "Demo Valley Line", &stop);
    EXPECT_TRUE(aborted.written.empty());
}

} // namespace
