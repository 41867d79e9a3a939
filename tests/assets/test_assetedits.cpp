// The Edit Assets commands: the distance arithmetic and text changes on their own, then every
// command as a batch on the demo install's items: what is written where, what is kept, that the
// results still encode, which items are passed over and why, and one undo for a whole batch.

#include "../common/demofixture.h"
#include "serz/serz.h"
#include "velmora/assets/assetedits.h"
#include "velmora/assets/checks.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/templates.h"
#include "velmora/core/textboundary.h"
#include "velmora/core/xmltext.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

using namespace velmora;
using namespace velmora::assets;
namespace fs = std::filesystem;

namespace {

const std::string kSignalBox = "DemoRail/Class66Pack/Scenery/Buildings/SignalBox.bin";
const std::string kShed = "DemoRail/Class66Pack/Scenery/Buildings/O'Brien's Shed.bin";
const std::string kShedShape = "DemoRail/Class66Pack/Scenery/Buildings/O'Brien's Shed.GeoPcDx";
const std::string kWaterTower = "DemoRail/Class66Pack/Scenery/Faulty/Water_Tower.bin"; // its shape is missing
const std::string kEmptyHut = "DemoRail/Class66Pack/Scenery/Broken/Empty_Hut.bin";     // zero length
const std::string kClass66 = "DemoRail/Class66Pack/RailVehicles/Diesel/Class66/Engine/Class66_EWS.bin";
const std::string kWinter = "DemoRail/Class66Pack/Scenery/Textures/Gen4_WI.TgPcDx";

// A shape's LOD list with these distances, as the codec writes it.
std::string lodShape(const std::vector<std::string>& values) {
    std::string xml = "<cHcGeometry>\n\t<LODController>\n\t\t<cHcGeometryLODController>\n\t\t\t<LOD>\n";
    for (const auto& v : values)
        xml += "\t\t\t\t<e d:type=\"sFloat32\" d:alt_encoding=\"0000000000000000\" d:precision=\"string\">" + v + "</e>\n";
    return xml + "\t\t\t</LOD>\n\t\t</cHcGeometryLODController>\n\t</LODController>\n</cHcGeometry>\n";
}

// The <e> values of the first LOD list, in order.
std::vector<std::string> distances(const std::string& xml) {
    std::vector<std::string> out;
    const std::size_t end = xml.find("</LOD>");
    for (std::size_t p = xml.find("<e ", xml.find("<LOD>")); p < end; p = xml.find("<e ", p + 1)) {
        const std::size_t gt = xml.find('>', p);
        out.push_back(xml.substr(gt + 1, xml.find('<', gt) - gt - 1));
    }
    return out;
}

std::vector<std::string> rescaled(const std::vector<std::string>& values, double min, double max) {
    std::string xml = lodShape(values);
    rescaleLods(xml, min, max);
    return distances(xml);
}

::testing::AssertionResult encodes(const std::string& xml) {
    std::string bin, back;
    if (const ConvertResult r = xmlTextToBin(xml, bin); !r || bin.empty())
        return ::testing::AssertionFailure() << "does not encode: " << r.message;
    if (const serz::Status s = serz::decode(bin, back); !s)
        return ::testing::AssertionFailure() << "does not decode: " << s.message;
    return ::testing::AssertionSuccess();
}

std::string detail(const std::string& xml, const std::string& tag, std::size_t from = 1) {
    std::string value;
    GetDetail(xml, from, tag, value);
    return value;
}

class AssetEdits : public test::DemoInstallTest<AssetEdits> {
public:
    static constexpr const char* kName = "assetedits";
    static void SetUpTestSuite() {
        DemoInstallTest::SetUpTestSuite();
        fs::copy(fs::path(VELMORA_SOURCE_DIR) / "data", s_dir / "data", fs::copy_options::recursive);
    }

protected:
    fs::path file(const std::string& relative) { return s_dir / "rw/Assets" / relative; }
    AssetRow row(const std::string& relative) {
        AssetRow r;
        EXPECT_TRUE(rowForBlueprint(relative, s_dir / "rw/Assets", r)) << relative;
        return r;
    }
    std::vector<AssetRow> rows(const std::vector<std::string>& relatives) {
        std::vector<AssetRow> out;
        for (const auto& r : relatives)
            out.push_back(row(r));
        return out;
    }
    std::string text(const std::string& relative) {
        std::string xml;
        EXPECT_TRUE(binToXmlText(file(relative), xml)) << relative;
        return xml;
    }
    BatchResult run(EditSettings settings, const std::vector<std::string>& relatives) {
        settings.count = relatives.size();
        const std::string error = loadEditSettings(*m_ctx, settings);
        EXPECT_EQ(error, "");
        const BatchOptions o = editBatchOptions(settings);
        return runBatch(*m_ctx, rows(relatives), o,
                        [&settings](const RowInput& in) { return editAssetRow(settings, in); }, nullptr);
    }
    void undoLast() {
        const auto last = lastUndoableEntry(m_ctx->journal().entries());
        ASSERT_TRUE(last);
        const UndoResult u = undoEntry(m_ctx->files(), *last, false);
        ASSERT_TRUE(u.ok) << u.message;
    }
    // The product's blueprint cache, made so that a test can see whether a batch takes it away.
    fs::path blueprintCache() {
        const fs::path pak = s_dir / "rw/Assets/DemoRail/Class66Pack/BluePrints.pak";
        std::ofstream(pak, std::ios::binary) << "PK cache";
        return pak;
    }
};

} // namespace

TEST(EditCommandTable, WordsFindTheirCommandsAndOptions) {
    ASSERT_EQ(editCommands().size(), 9u);
    EXPECT_STREQ(editCommands().front().caption, "Change LODs");
    for (const auto& c : editCommands())
        EXPECT_EQ(editCommand(c.word), &c) << c.word;
    EXPECT_EQ(editCommand("Lod"), nullptr);
    EditSettings s;
    s.command = EditCommand::Snow;
    EXPECT_FALSE(editBatchOptions(s).readRows); // textures are replaced whole, never decoded
    EXPECT_FALSE(editBatchOptions(s).removesCache);
    s.command = EditCommand::Lod;
    EXPECT_EQ(editBatchOptions(s).command, "Change LODs");
    EXPECT_FALSE(editBatchOptions(s).removesCache); // only shapes change
    s.command = EditCommand::Category;
    EXPECT_TRUE(editBatchOptions(s).readRows);
    EXPECT_TRUE(editBatchOptions(s).removesCache);
}

TEST(LodDistances, SpreadBetweenMinAndMaxInWholeNumbers) {
    EXPECT_EQ(lodText(350), "350.0000");
    EXPECT_EQ(lodText(12.25), "12.2500");
    // Smallest and largest take the limits; the rest old / (oldMax - oldMin) * (max - min) + min.
    EXPECT_EQ(rescaled({"100", "200", "400"}, 50, 500), (std::vector<std::string>{"50.0000", "350.0000", "500.0000"}));
    // Cut to the whole number, not rounded: 1 + 110 / 300 * 99 = 37.3.
    EXPECT_EQ(rescaled({"100", "110", "400"}, 1, 100), (std::vector<std::string>{"1.0000", "37.0000", "100.0000"}));
    // Beyond the largest: kept at it.
    EXPECT_EQ(rescaled({"100", "350", "400"}, 50, 500)[1], "500.0000");
    // The limits given with a fraction keep it; only the spread values are cut.
    EXPECT_EQ(rescaled({"10", "20"}, 5.5, 99.75), (std::vector<std::string>{"5.5000", "99.7500"}));
    // The first of equal smallest values is fixed; the other is spread like any value.
    EXPECT_EQ(rescaled({"100", "100", "400"}, 50, 500), (std::vector<std::string>{"50.0000", "200.0000", "500.0000"}));
}

TEST(LodDistances, OneOrEqualDistancesTakeMinAndAZeroEndsTheList) {
    EXPECT_EQ(rescaled({"120"}, 40, 900), (std::vector<std::string>{"40.0000"}));
    EXPECT_EQ(rescaled({"75", "75"}, 40, 900), (std::vector<std::string>{"40.0000", "40.0000"}));
    // Reading stops at 0: what follows is left as it was.
    EXPECT_EQ(rescaled({"100", "0", "300"}, 40, 900), (std::vector<std::string>{"40.0000", "0", "300"}));
    std::string none = "<cHcGeometry>\n\t<Material/>\n</cHcGeometry>\n";
    EXPECT_EQ(rescaleLods(none, 1, 2), 0u);
    std::string empty = lodShape({});
    EXPECT_EQ(rescaleLods(empty, 1, 2), 0u);
    // Two lists: both are read and written, each value where it stood.
    std::string two = lodShape({"100", "400"}) + lodShape({"200"});
    EXPECT_EQ(rescaleLods(two, 50, 500), 3u);
    EXPECT_NE(two.find(">350.0000</e>"), std::string::npos) << two;
}

TEST(LodDistances, AtMostFiftyAreRead) {
    std::vector<std::string> many;
    for (int i = 1; i <= 60; ++i)
        many.push_back(std::to_string(i * 10));
    std::string xml = lodShape(many);
    EXPECT_EQ(rescaleLods(xml, 1, 1000), 50u);
    EXPECT_EQ(distances(xml)[55], "560"); // beyond the fiftieth: untouched
}

TEST(TextChanges, CategoryGetsItsLeadingEAndItsPlace) {
    EXPECT_EQ(categoryText("ExcludeFromBrowserList"), "eExcludeFromBrowserList");
    EXPECT_EQ(categoryText("eExcludeFromBrowserList"), "eExcludeFromBrowserList");
    EXPECT_EQ(categoryText("  "), "");
    EXPECT_EQ(categoryText("Rock & \"Roll\""), "eRock &amp; &quot;Roll&quot;");

    const std::string head = "<Blueprint>\r\n\t\t\t<Description>\r\n\t\t\t\t<English d:type=\"cDeltaString\">x</English>\r\n"
                             "\t\t\t</Description>\r\n";
    std::string xml = head + "\t\t\t<ValidInScenarios d:type=\"cDeltaString\">eTrue</ValidInScenarios>\r\n</Blueprint>\r\n";
    putCategory(xml, "eSheds");
    EXPECT_NE(xml.find("</Description>\r\n\t\t\t<Category d:type=\"cDeltaString\">eSheds</Category>\r\n\t\t\t<Valid"),
              std::string::npos)
        << xml;
    putCategory(xml, "eHuts"); // now present: replaced, not added again
    EXPECT_EQ(detail(xml, "Category"), "eHuts");
    EXPECT_EQ(xml.find("eSheds"), std::string::npos);
    // A longer tag of the same start is no Category.
    std::string other = head + "\t\t\t<Categories d:type=\"cDeltaString\">a</Categories>\r\n</Blueprint>\r\n";
    putCategory(other, "eB");
    EXPECT_NE(other.find("<Category d:type=\"cDeltaString\">eB</Category>"), std::string::npos);
    EXPECT_NE(other.find(">a</Categories>"), std::string::npos);
}

TEST(TextChanges, EnglishOnlyKeepsTheEnglishLineOfEachName) {
    std::string xml =
        "<A>\r\n\t<Localisation-cUserLocalisedString>\r\n\t\t<English d:type=\"cDeltaString\">One</English>\r\n"
        "\t\t<French d:type=\"cDeltaString\">Un</French>\r\n\t\t<Other/>\r\n\t\t<Key d:type=\"cDeltaString\">k</Key>\r\n"
        "\t</Localisation-cUserLocalisedString>\r\n\t<Localisation-cUserLocalisedString>\r\n"
        "\t\t<English d:type=\"cDeltaString\">Two</English>\r\n\t</Localisation-cUserLocalisedString>\r\n</A>\r\n";
    EXPECT_EQ(englishOnly(xml), 1u);
    EXPECT_EQ(xml, "<A>\r\n\t<Localisation-cUserLocalisedString>\r\n\t\t<English d:type=\"cDeltaString\">One</English>\r\n"
                   "\t</Localisation-cUserLocalisedString>\r\n\t<Localisation-cUserLocalisedString>\r\n"
                   "\t\t<English d:type=\"cDeltaString\">Two</English>\r\n\t</Localisation-cUserLocalisedString>\r\n</A>\r\n");
    EXPECT_EQ(englishOnly(xml), 0u);
}

TEST_F(AssetEdits, ChangeLodsWritesTheShapesAndKeepsBlueprintsAndTheCache) {
    const std::string shape = "DemoRail/Class66Pack/Scenery/Buildings/SignalBox.GeoPcDx";
    const std::string blueprintBytes = ReadTextFile(file(kSignalBox));
    const std::string shapeBytes = ReadTextFile(file(shape));
    const fs::path pak = blueprintCache();
    EditSettings s;
    s.command = EditCommand::Lod;
    s.minLod = 100;
    s.maxLod = 2000;
    const BatchResult r = run(s, {kSignalBox, kShedShape, kEmptyHut, kWaterTower});
    ASSERT_TRUE(r.error.empty()) << r.error;
    EXPECT_EQ(r.rowsWritten, 2u) << describe(r);
    ASSERT_EQ(r.written.size(), 2u);
    EXPECT_EQ(r.written[0], file(shape)); // the blueprint's shape, not the blueprint
    EXPECT_EQ(ReadTextFile(file(kSignalBox)), blueprintBytes);
    // The demo's 50, 250, 1000: 250 becomes 100 + 250 / 950 * 1900 = 600.
    EXPECT_EQ(distances(text(shape)), (std::vector<std::string>{"100", "600", "2000"}));
    EXPECT_EQ(distances(text(kShedShape)), (std::vector<std::string>{"100", "600", "2000"}));
    ASSERT_EQ(r.passedOver.size(), 2u);
    EXPECT_NE(r.passedOver[0].row.find("Empty_Hut.bin"), std::string::npos);
    EXPECT_NE(r.passedOver[0].reason.find("Empty_Hut.bin"), std::string::npos) << r.passedOver[0].reason;
    EXPECT_NE(r.passedOver[1].reason.find("Water_Tower.GeoPcDx"), std::string::npos) << r.passedOver[1].reason;
    EXPECT_TRUE(fs::exists(pak)); // no blueprint changed
    EXPECT_TRUE(fs::exists(file(shape).string() + ".bak"));

    undoLast();
    EXPECT_EQ(ReadTextFile(file(shape)), shapeBytes);
    fs::remove(pak);
}

TEST_F(AssetEdits, ChangeLodsNeedsBothDistancesInOrder) {
    EditSettings s;
    s.command = EditCommand::Lod;
    s.maxLod = 500;
    EXPECT_EQ(loadEditSettings(*m_ctx, s), "Please enter both a Min LOD and a Max LOD value.");
    s.minLod = 600;
    EXPECT_NE(loadEditSettings(*m_ctx, s).find("larger than the Max LOD"), std::string::npos);
    s.minLod = -5;
    EXPECT_NE(loadEditSettings(*m_ctx, s), "");
}

TEST_F(AssetEdits, ZeroEmissiveChangesEveryMaterialAndTheResultEncodes) {
    const std::string shape = "DemoRail/Class66Pack/RailVehicles/Diesel/Class66/Engine/Class66_EWS.GeoPcDx";
    std::string xml = text(shape);
    const std::size_t materials = [&] {
        std::size_t n = 0;
        for (std::size_t p = xml.find("<AmbientAsVec"); p != std::string::npos; p = xml.find("<AmbientAsVec", p + 1))
            ++n;
        return n;
    }();
    ASSERT_GT(materials, 0u);
    EXPECT_EQ(zeroEmissive(xml), materials);
    EXPECT_TRUE(encodes(xml));
    EXPECT_EQ(zeroEmissive(xml), 0u); // nothing left to change

    EditSettings s;
    s.command = EditCommand::ZeroEmissive;
    const BatchResult r = run(s, {kClass66});
    ASSERT_EQ(r.rowsWritten, 1u) << describe(r);
    EXPECT_EQ(detail(text(shape), "EmissiveAsVec"), "0.0000000 0.0000000 0.0000000 0.0000000");
    EXPECT_NE(detail(text(shape), "AmbientAsVec"), "0.0000000 0.0000000 0.0000000 0.0000000");
    // Again: nothing to do, said so.
    const BatchResult again = run(s, {kClass66});
    EXPECT_EQ(again.rowsWritten, 0u);
    ASSERT_EQ(again.passedOver.size(), 1u);
    undoLast();
}

TEST_F(AssetEdits, AShapeThatDoesNotEncodeIsLeftAsItWas) {
    // Three emissive values where the zeroes are four: the codec refuses the edited text.
    const std::string odd = "DemoRail/Class66Pack/Scenery/Buildings/Odd.GeoPcDx";
    std::string xml = text(kShedShape);
    const std::size_t at = xml.find("<EmissiveAsVec");
    ASSERT_NE(at, std::string::npos);
    const std::size_t close = xml.find("</EmissiveAsVec>", at);
    xml.replace(at, close - at,
                "<EmissiveAsVec d:numElements=\"3\" d:elementType=\"sFloat32\" d:precision=\"string\">0.5 0.5 0.5");
    std::string bin;
    ASSERT_TRUE(xmlTextToBin(xml, bin));
    { std::ofstream(file(odd), std::ios::binary) << bin; }
    EditSettings s;
    s.command = EditCommand::ZeroEmissive;
    const BatchResult r = run(s, {odd});
    EXPECT_EQ(r.rowsWritten, 0u);
    ASSERT_EQ(r.passedOver.size(), 1u);
    EXPECT_NE(r.passedOver[0].reason.find("could not convert file Odd.GeoPcDx"), std::string::npos)
        << r.passedOver[0].reason;
    EXPECT_EQ(ReadTextFile(file(odd)), bin);
    EXPECT_FALSE(fs::exists(file(odd).string() + ".bak"));
    fs::remove(file(odd));
}

TEST_F(AssetEdits, ShapeOfRowFindsTheShapeInAnyLetterCase) {
    RowInput in;
    in.assets = s_dir / "rw/Assets";
    in.file = file(kShedShape);
    EXPECT_EQ(shapeOfRow(in, m_ctx->resolver), file(kShedShape));
    in.file = file(kSignalBox);
    in.xml = "<GeometryID d:type=\"cDeltaString\">DEMORAIL\\class66pack\\Scenery\\Buildings\\[00]SIGNALBOX</GeometryID>";
    EXPECT_EQ(shapeOfRow(in, m_ctx->resolver), file("DemoRail/Class66Pack/Scenery/Buildings/SignalBox.GeoPcDx"));
    in.xml = "<Name d:type=\"cDeltaString\">no shape</Name>";
    EXPECT_TRUE(shapeOfRow(in, m_ctx->resolver).empty());
    EditSettings s;
    s.command = EditCommand::Lod;
    s.minLod = 1;
    s.maxLod = 2;
    s.resolver = &m_ctx->resolver;
    EXPECT_EQ(editAssetRow(s, in).passedOver, "The blueprint names no shape (GeometryID).");
}

TEST_F(AssetEdits, CategoryNamesAndEnglishOnlyGoIntoTheBlueprintsAndOneUndoTakesThemBack) {
    const std::string shedBytes = ReadTextFile(file(kShed));
    const fs::path pak = blueprintCache();
    EditSettings category;
    category.command = EditCommand::Category;
    category.typed = "Sheds & \"Huts\"";
    BatchResult r = run(category, {kSignalBox, kShed, kClass66});
    EXPECT_EQ(r.rowsWritten, 2u) << describe(r);
    EXPECT_EQ(detail(text(kShed), "Category"), "eSheds &amp; &quot;Huts&quot;");
    EXPECT_TRUE(encodes(text(kShed)));
    ASSERT_EQ(r.passedOver.size(), 1u); // the engine's browse information has no Description
    EXPECT_NE(r.passedOver[0].reason.find("Description"), std::string::npos);
    EXPECT_FALSE(fs::exists(pak)); // blueprints changed: the simulator builds its cache again
    undoLast();
    EXPECT_EQ(ReadTextFile(file(kShed)), shedBytes);

    // A blueprint without a Category gets one behind its Description, and still encodes.
    std::string xml = text(kShed);
    const std::size_t line = xml.rfind('\n', xml.find("<Category"));
    xml.erase(line, xml.find('\n', line + 1) - line);
    ASSERT_EQ(xml.find("<Category"), std::string::npos);
    putCategory(xml, categoryText("ExcludeFromBrowserList"));
    EXPECT_EQ(detail(xml, "Category"), "eExcludeFromBrowserList");
    EXPECT_LT(xml.find("</Description>"), xml.find("<Category"));
    EXPECT_TRUE(encodes(xml));

    // Two rows named Coach: Coach 1 and Coach 2.
    EditSettings name;
    name.command = EditCommand::Name;
    name.typed = "Coach";
    r = run(name, {kSignalBox, kShed});
    EXPECT_EQ(r.rowsWritten, 2u) << describe(r);
    EXPECT_EQ(detail(text(kSignalBox), "English"), "Coach 1");
    EXPECT_EQ(detail(text(kShed), "English"), "Coach 2");
    undoLast();
    EXPECT_EQ(ReadTextFile(file(kShed)), shedBytes);
}

TEST_F(AssetEdits, LocoNameSetsTheEngineNameAndEmptiesTheKeys) {
    // A Key to empty: the demo's names have none.
    std::string xml = text(kClass66);
    std::size_t pos = 1;
    PutDetail(xml, pos, "Key", "a1b2-key");
    const std::size_t engine = xml.find("<EngineType");
    ASSERT_NE(engine, std::string::npos);
    pos = engine;
    PutDetail(xml, pos, "Key", "engine-key");
    putLocoName(xml, documentText("Zürich \"Flyer\" & Co, 66"));
    const std::string name = "Zürich &quot;Flyer&quot; &amp; Co, 66";
    EXPECT_EQ(detail(xml, "Name"), name);
    EXPECT_EQ(detail(xml, "English"), name);
    EXPECT_EQ(detail(xml, "EngineName"), name);
    EXPECT_EQ(detail(xml, "English", xml.find("<EngineType")), name);
    EXPECT_EQ(xml.find("a1b2-key"), std::string::npos);
    EXPECT_EQ(xml.find("engine-key"), std::string::npos);
    EXPECT_TRUE(encodes(xml));

    EditSettings s;
    s.command = EditCommand::LocoName;
    s.typed = "Shed #";
    const BatchResult r = run(s, {kClass66});
    ASSERT_EQ(r.rowsWritten, 1u) << describe(r);
    EXPECT_EQ(detail(text(kClass66), "EngineName"), "Shed 1"); // a final # numbers even one
    undoLast();
}

TEST_F(AssetEdits, EnglishOnlyOnTheDemoEngine) {
    EditSettings s;
    s.command = EditCommand::EnglishOnly;
    const BatchResult r = run(s, {kClass66});
    ASSERT_EQ(r.rowsWritten, 1u) << describe(r);
    const std::string xml = text(kClass66);
    for (const char* gone : {"<French", "<German", "<Russian", "<Other", "<Key"})
        EXPECT_EQ(xml.find(gone), std::string::npos) << gone;
    EXPECT_NE(detail(xml, "English"), "");
    undoLast();
    EXPECT_NE(text(kClass66).find("<French"), std::string::npos);
}

TEST_F(AssetEdits, SnowOverwritesTexturesOnlyAndKeepsEachOldOne) {
    const std::string old = ReadTextFile(file(kWinter));
    const std::string snow = ReadTextFile(s_dir / "data/Templates/Snow000_Deep.TgPcDx");
    // The template is a texture document of the expected shape.
    std::string xml;
    ASSERT_TRUE(binToXmlText(s_dir / "data/Templates/Snow000_Deep.TgPcDx", xml));
    EXPECT_EQ(detail(xml, "Width"), "256");
    EXPECT_NE(xml.find("<cHcTextureGroup"), std::string::npos);
    EXPECT_NE(xml.find("HC_IMAGE_FORMAT_COMPRESSED"), std::string::npos);
    EXPECT_NE(xml.find("<Height d:type=\"sUInt16\">4</Height>"), std::string::npos); // mips down to 4x4

    EditSettings s;
    s.command = EditCommand::Snow;
    const std::string gone = "DemoRail/Class66Pack/Scenery/Textures/Gone_WI.TgPcDx";
    const BatchResult r = run(s, {kWinter, kSignalBox, gone});
    ASSERT_EQ(r.rowsWritten, 1u) << describe(r);
    EXPECT_EQ(ReadTextFile(file(kWinter)), snow);
    EXPECT_EQ(ReadTextFile(file(kWinter).string() + ".bak"), old);
    ASSERT_EQ(r.passedOver.size(), 2u);
    EXPECT_NE(r.passedOver[0].reason.find("no texture"), std::string::npos);
    EXPECT_NE(r.passedOver[1].reason.find("Gone_WI.TgPcDx: the texture is not there"), std::string::npos);
    EXPECT_FALSE(fs::exists(file(gone))); // never made where there was none
    undoLast();
    EXPECT_EQ(ReadTextFile(file(kWinter)), old);

    // Without the template nothing starts.
    const fs::path templ = s_dir / "data/Templates/Snow000_Deep.TgPcDx";
    fs::rename(templ, templ.string() + ".away");
    m_ctx->resolver.invalidate();
    EditSettings missing;
    missing.command = EditCommand::Snow;
    EXPECT_EQ(loadEditSettings(*m_ctx, missing),
              "The Snow000_Deep.TgPcDx file was not found in your\nVelmora\\Templates folder.");
    fs::rename(templ.string() + ".away", templ);
    m_ctx->resolver.invalidate();
}

TEST_F(AssetEdits, SourceFolderMirrorsThePathBelowAssets) {
    std::string error;
    const fs::path assetsFolder = s_dir / "rw/Assets";
    EXPECT_EQ(sourceFolderFor(*m_ctx, assetsFolder / "DemoRail/Class66Pack/Scenery/Textures", error),
              s_dir / "rw/Source/DemoRail/Class66Pack/Scenery/Textures");
    EXPECT_EQ(error, "");
    for (const fs::path& outside : {s_dir / "rw/Content/Routes", fs::path("/tmp"), assetsFolder / "../../x"}) {
        error.clear();
        EXPECT_TRUE(sourceFolderFor(*m_ctx, outside, error).empty()) << outside;
        EXPECT_EQ(error, "You don't appear to have selected a path?");
    }
    const fs::path accents = assetsFolder / "DemoRail/Zürich, \"Ost\" & Süd";
    EXPECT_EQ(makeSourceFolder(*m_ctx, accents), "");
    EXPECT_TRUE(fs::is_directory(s_dir / "rw/Source/DemoRail/Zürich, \"Ost\" & Süd"));
    EXPECT_EQ(makeSourceFolder(*m_ctx, accents), ""); // there already: fine
}
