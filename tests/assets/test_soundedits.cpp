// The sound and occlusion edits on the demo install's stock, its blueprints first made into the
// kind of vehicle each command is for: what each command points where, that every result still
// encodes and decodes, what an unchanged row is told, and the notes about files not installed.

#include "../common/demofixture.h"
#include "blueprinttext.h"
#include "serz/serz.h"
#include "velmora/assets/checks.h"
#include "velmora/assets/soundedits.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/xmltext.h"

#include <deque>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <set>

using namespace velmora;
using namespace velmora::assets;
using velmora::test::count;
using velmora::test::roundTrips;
using velmora::test::valueOf;
namespace fs = std::filesystem;

namespace {

const std::string kClass66 = "DemoRail/Class66Pack/RailVehicles/Diesel/Class66/Engine/Class66_EWS.bin";
const std::string kHta = "DemoRail/Class66Pack/RailVehicles/Freight/HTA/HTA_Coal.bin";
const std::string kMk1 = "Heritage/SteamDays/RailVehicles/Passenger/Mk1/Mk1_BSK.bin";
const std::string kBroken = "DemoRail/Class66Pack/Scenery/Broken/Empty_Hut.bin";
const std::string kModern = "Kuju\\RailSimulator\\Audio\\RailNetwork\\Bogies\\BG_Modern";
constexpr std::size_t npos = std::string::npos;

// The BlueprintID of the child of this name.
std::string childBlueprint(const std::string& xml, const std::string& childName) {
    const std::size_t child = xml.find(">" + childName + "<");
    return child == npos ? "(no child " + childName + ")" : valueOf(xml, "BlueprintID", xml.find("<BlueprintID d:type", child));
}

// The sixteen matrix values of the first child whose text from its name on holds `mark`.
std::vector<std::string> matrixAfter(const std::string& xml, const std::string& mark) {
    std::vector<std::string> values;
    std::size_t pos = xml.find("<Element>", xml.find(mark));
    for (int i = 0; i < 16 && pos != npos; ++i) {
        pos = xml.find("<e ", pos + 1);
        const std::size_t gt = xml.find('>', pos);
        values.push_back(xml.substr(gt + 1, xml.find('<', gt) - gt - 1));
    }
    return values;
}

// The d:id of the child element that stands before `at`.
long childId(const std::string& xml, std::size_t at) {
    const std::string open = "<cEntityContainerBlueprint-sChild d:id=\"";
    const std::size_t p = xml.rfind(open, at);
    return p == npos ? -1 : std::stol(xml.substr(p + open.size()));
}

bool hasNote(const RowEdit& e, const std::string& part) {
    for (const auto& n : e.notes)
        if (n.find(part) != npos)
            return true;
    return false;
}

class SoundEdits : public test::DemoInstallTest<SoundEdits> {
public:
    static constexpr const char* kName = "soundedits";
    static void SetUpTestSuite() {
        DemoInstallTest::SetUpTestSuite();
        fs::copy(fs::path(VELMORA_SOURCE_DIR) / "data", s_dir / "data", fs::copy_options::recursive);
    }

protected:
    fs::path assets() const { return s_dir / "rw/Assets"; }
    RowInput input(const std::string& relative) {
        RowInput in;
        m_rows.emplace_back();
        EXPECT_TRUE(rowForBlueprint(relative, assets(), m_rows.back())) << relative;
        in.row = &m_rows.back();
        in.file = assets() / relative;
        in.assets = assets();
        EXPECT_TRUE(binToXmlText(in.file, in.xml)) << relative;
        return in;
    }
    SoundSettings settings(SoundCommand command, unsigned long long seed = 7) {
        SoundSettings s;
        s.command = command;
        s.seed = seed;
        s.bogie = "BG_Modern";
        EXPECT_EQ(loadSoundSettings(*m_ctx, s), "");
        return s;
    }
    // A child in the demo's own shape: the Class 66's engine sound with another name and sound.
    std::string child(const std::string& name, const std::string& provider, const std::string& product,
                      const std::string& id) {
        const std::string xml = input(kClass66).xml;
        const std::size_t from = xml.find("<cEntityContainerBlueprint-sChild");
        std::string b = xml.substr(from, xml.find("</cEntityContainerBlueprint-sChild>") + 35 - from);
        std::size_t p = 1;
        PutDetail(b, p, "ChildName", name);
        p = 1;
        PutDetail(b, p, "Provider", provider);
        p = 1;
        PutDetail(b, p, "Product", product);
        p = b.find("<BlueprintID d:type") + 1;
        PutDetail(b, p, "BlueprintID", id);
        return b;
    }
    static void addChild(std::string& xml, const std::string& block) {
        if (const std::size_t empty = xml.find("<Children/>"); empty != npos)
            xml.replace(empty, 11, "<Children>\r\n" + block + "\r\n</Children>");
        else
            xml.insert(xml.find("</Children>"), block + "\r\n");
    }
    static void setValue(std::string& xml, const std::string& tag, const std::string& value, std::size_t from = 0) {
        std::size_t p = from + 1;
        PutDetail(xml, p, tag, value);
    }
    // The Class 66 made a loco of the class: its engine sound, a horn, remappers, and controls
    // that do not act on the consist.
    RowInput loco(const std::string& classSound, const std::string& horn) {
        RowInput in = input(kClass66);
        std::string& xml = in.xml;
        setValue(xml, "BlueprintID", classSound, xml.find("<BlueprintID d:type", xml.find(">EngineSound<")));
        addChild(xml, child("Horn", "Kuju", "RailSimulator", horn));
        xml.insert(xml.find("<BogieAudioControlName"),
                   "<IntermediateRemapper d:type=\"cDeltaString\">Old</IntermediateRemapper>\r\n"
                   "<ExpertRemapper d:type=\"cDeltaString\">Old</ExpertRemapper>\r\n");
        const std::string close = "</cControlContainerBlueprint-cControlValue>";
        for (std::size_t p = xml.find(close); p != npos; p = xml.find(close, p + 60)) {
            xml.insert(p, "<ApplyToConsist d:type=\"cDeltaString\">eFalse</ApplyToConsist>\r\n");
            p = xml.find(close, p);
        }
        return in;
    }
    void undoLast() {
        const auto last = lastUndoableEntry(m_ctx->journal().entries());
        ASSERT_TRUE(last);
        const UndoResult u = undoEntry(m_ctx->files(), *last, false);
        ASSERT_TRUE(u.ok) << u.message;
    }
    std::deque<AssetRow> m_rows;
};

} // namespace

TEST(SoundCommandTable, WordsMenusAndChoices) {
    const auto& all = soundCommands();
    ASSERT_EQ(all.size(), 15u);
    std::set<std::string> words, menus;
    for (const auto& c : all) {
        EXPECT_EQ(soundCommand(c.word), &c) << c.word;
        words.insert(c.word);
        menus.insert(c.menuName);
    }
    EXPECT_EQ(words.size(), all.size());
    EXPECT_EQ(menus.size(), all.size());
    EXPECT_EQ(soundCommand("Class37"), nullptr);
    EXPECT_EQ(all.front().command, SoundCommand::NewWagon);
    EXPECT_TRUE(all[13].occlusion && all[14].occlusion);
    EXPECT_FALSE(all[12].occlusion);
    EXPECT_STREQ(soundCommand("mk1")->caption, "Add MK1 & Mk2a/b/c Coach Sounds");
    EXPECT_EQ(bogieSounds(), (std::vector<std::string>{"BG_Steam", "BG_Modern", "RA_BG_Mk1", "RA_BG_Mk3"}));
}

TEST_F(SoundEdits, NoticesComeFromTheLanguageTable) {
    EXPECT_EQ(soundNotice(*m_ctx, *soundCommand("mk2")), m_ctx->lang.text(531));
    EXPECT_EQ(settings(SoundCommand::Mk3).notChanged, "Not changed:- ");
    // A table without the entries: the English texts.
    AppContext bare(s_dir / "home", s_dir / "nodata", m_ui);
    EXPECT_EQ(soundNotice(bare, *soundCommand("hst")),
              "This will add the AP Class 43/HST sounds to the selected power cars. The AP HST pack must be installed.");
}

TEST_F(SoundEdits, WagonCommandsFillTheBogieAddTheSoundAndSayWhatIsNotInstalled) {
    struct Expect {
        SoundCommand command;
        std::string bogie, childFile;
    } table[] = {
        {SoundCommand::NewWagon, "BG_Modern", "AP_Old_1_Sound.xml"},
        {SoundCommand::OldHeavy, "BG_Steam", "AP_Old_1_Sound.xml"},
        {SoundCommand::OldHeavyRattly, "BG_Steam", "AP_Old_2_Sound.xml"},
        {SoundCommand::ContainerFlats, "BG_Modern", "AP_Old_1_Sound.xml"},
        {SoundCommand::FourWheel, "BG_Steam", "AP_4Wheel_Sound.xml"},
    };
    const RowInput hta = input(kHta);
    ASSERT_NE(hta.xml.find("<Children/>"), npos);
    for (const auto& t : table) {
        SoundSettings s = settings(t.command);
        s.addBogie = s.addWagonSound = true;
        const RowEdit e = editSoundRow(s, hta);
        ASSERT_EQ(e.passedOver, "") << t.childFile;
        EXPECT_EQ(valueOf(e.xml, "BogieAudioControlName"), "Kuju\\RailSimulator\\Audio\\RailNetwork\\Bogies\\" + t.bogie);
        EXPECT_EQ(childBlueprint(e.xml, "Wagon Sound"), "Audio\\RailVehicles\\Wagons\\AP\\" + t.childFile);
        EXPECT_EQ(valueOf(e.xml, "Provider", e.xml.find(">Wagon Sound<")), "Kuju");
        const long id = childId(e.xml, e.xml.find(">Wagon Sound<"));
        EXPECT_GE(id, 10000000);
        EXPECT_LT(id, 30000000);
        EXPECT_EQ(count(e.xml, "<Children>"), 1u);
        EXPECT_EQ(count(e.xml, "\n"), count(e.xml, "\r\n"));
        EXPECT_TRUE(hasNote(e, "Bogies\\" + t.bogie + " (.proxybin or .proxyxml) is not installed."));
        EXPECT_TRUE(hasNote(e, "Kuju\\RailSimulator\\Audio\\RailVehicles\\Wagons\\AP\\" +
                                   t.childFile.substr(0, t.childFile.size() - 3) + "bin is not installed."));
        EXPECT_TRUE(roundTrips(e.xml));
    }

    // Run again on its own result: nothing matches any more, and the row is named.
    SoundSettings s = settings(SoundCommand::NewWagon);
    s.addBogie = s.addWagonSound = true;
    RowInput again = hta;
    again.xml = editSoundRow(s, hta).xml;
    RowEdit e = editSoundRow(s, again);
    EXPECT_FALSE(e.changed);
    EXPECT_EQ(e.passedOver, "Not changed:- DemoRail HTA Coal Hopper");
    // Neither question ticked: the stock wagon has no sound to exchange.
    EXPECT_EQ(editSoundRow(settings(SoundCommand::NewWagon), hta).passedOver, "Not changed:- DemoRail HTA Coal Hopper");

    // With the pack installed, no notes.
    const fs::path ap = assets() / "Kuju/RailSimulator/Audio/RailVehicles/Wagons/AP";
    const fs::path bogies = assets() / "Kuju/RailSimulator/Audio/RailNetwork/Bogies";
    fs::create_directories(ap);
    fs::create_directories(bogies);
    std::ofstream(ap / "AP_Old_1_Sound.bin") << "x";
    std::ofstream(bogies / "BG_Modern.proxyxml") << "x";
    m_ctx->resolver.invalidate();
    s = settings(SoundCommand::NewWagon);
    s.addBogie = s.addWagonSound = true;
    EXPECT_EQ(editSoundRow(s, hta).notes, std::vector<std::string>{});
    fs::remove_all(assets() / "Kuju/RailSimulator/Audio");
    m_ctx->resolver.invalidate();
}

TEST_F(SoundEdits, WagonSoundChildIsExchangedOnlyWhereItIsTheStockOne) {
    RowInput in = input(kHta);
    const std::string stock = "Audio\\RailVehicles\\Wagons\\Wagon Sound.xml";
    const std::string generic = "Audio\\RailVehicles\\Wagons\\Wagon Generic Sound.xml";
    addChild(in.xml, child("Wagon Sound", "Kuju", "RailSimulator", stock));
    addChild(in.xml, child("Other Sound", "Kuju", "RailSimulator", generic));
    SoundSettings s = settings(SoundCommand::ContainerFlats);
    s.addWagonSound = true; // the list is not the empty form: no child is added
    RowEdit e = editSoundRow(s, in);
    EXPECT_EQ(e.passedOver, "");
    EXPECT_EQ(count(e.xml, "<cEntityContainerBlueprint-sChild"), 2u);
    // The generic sound is looked for first; the stock one stays.
    EXPECT_EQ(childBlueprint(e.xml, "Other Sound"), "Audio\\RailVehicles\\Wagons\\AP\\AP_Containers_Sound.xml");
    EXPECT_EQ(childBlueprint(e.xml, "Wagon Sound"), stock);
    EXPECT_EQ(valueOf(e.xml, "BogieAudioControlName"), ""); // not asked for
    EXPECT_TRUE(hasNote(e, "Kuju\\RailSimulator\\Audio\\RailVehicles\\Wagons\\AP\\AP_Containers_Sound.bin"));
    EXPECT_TRUE(roundTrips(e.xml));

    // A list with other children and no Wagon Sound, the child asked for: nothing to do.
    RowInput other = input(kHta);
    addChild(other.xml, child("Buffers", "DemoRail", "Class66Pack", "Scenery\\Buffers.xml"));
    s.addBogie = false;
    e = editSoundRow(s, other);
    EXPECT_EQ(e.passedOver, "Not changed:- DemoRail HTA Coal Hopper");
    EXPECT_EQ(e.xml.find(">Wagon Sound<"), npos);

    // The stock sound named outside a reference is no sound to exchange.
    RowInput named = input(kHta);
    addChild(named.xml, child("Buffers", "DemoRail", "Class66Pack", "Scenery\\Buffers.xml"));
    setValue(named.xml, "ParentNodeName", stock, named.xml.find(">Buffers<"));
    ASSERT_TRUE(roundTrips(named.xml));
    EXPECT_EQ(editSoundRow(s, named).passedOver, "Not changed:- DemoRail HTA Coal Hopper");

    // A bogie sound that is there already stays.
    setValue(other.xml, "BogieAudioControlName", "Mine\\Bogie");
    s.addBogie = true;
    EXPECT_NE(editSoundRow(s, other).passedOver, "");
}

TEST_F(SoundEdits, RandomIdsAreTheRowsOwn) {
    RowInput in = input(kHta);
    SoundSettings s = settings(SoundCommand::NewWagon, 99);
    s.addWagonSound = true;
    auto idOf = [&](const RowInput& row) {
        const std::string xml = editSoundRow(s, row).xml;
        return childId(xml, xml.find(">Wagon Sound<"));
    };
    const long first = idOf(in);
    EXPECT_EQ(idOf(in), first); // the same start, the same id
    in.index = 1;
    EXPECT_NE(idOf(in), first); // another row of the batch, another id
    s.seed = 0;
    std::set<long> ids;
    for (int i = 0; i < 50; ++i) {
        const long id = idOf(in);
        EXPECT_GE(id, 10000000);
        EXPECT_LE(id, 29999999);
        ids.insert(id);
    }
    EXPECT_GT(ids.size(), 40u);
}

TEST_F(SoundEdits, CoachCommands) {
    RowInput in = input(kMk1);
    setValue(in.xml, "BogieAudioControlName", kModern);
    addChild(in.xml, child("Wagon Sound", "Kuju", "RailSimulator", "Audio\\RailVehicles\\Passenger\\Coach.xml"));
    const std::string joints = "Kuju\\RailSimulator\\Audio\\RailNetwork\\Bogies\\AP\\AP_2Axle_Joints";

    RowEdit e = editSoundRow(settings(SoundCommand::Mk1), in);
    EXPECT_EQ(valueOf(e.xml, "BogieAudioControlName"), joints);
    EXPECT_EQ(childBlueprint(e.xml, "Wagon Sound"), "Audio\\RailVehicles\\Passenger\\AP\\AP_Mk1-2a_Sound.xml");
    EXPECT_TRUE(hasNote(e, "AP_2Axle_Joints (.proxybin or .proxyxml) is not installed."));
    EXPECT_TRUE(hasNote(e, "Kuju\\RailSimulator\\Audio\\RailVehicles\\Passenger\\AP\\AP_Mk1-2a_Sound.bin"));
    EXPECT_TRUE(roundTrips(e.xml));
    e = editSoundRow(settings(SoundCommand::Mk2), in);
    EXPECT_EQ(childBlueprint(e.xml, "Wagon Sound"), "Audio\\RailVehicles\\Passenger\\AP\\AP_Mk2f_Sound.xml");

    for (SoundCommand c : {SoundCommand::Mk3, SoundCommand::Appropriate}) {
        e = editSoundRow(settings(c), in);
        EXPECT_EQ(valueOf(e.xml, "BogieAudioControlName"), "Kuju\\RailSimulator\\Audio\\RailNetwork\\Bogies\\RA_BG_Mk3");
        EXPECT_EQ(childBlueprint(e.xml, "Wagon Sound"), "Audio\\RailVehicles\\Passenger\\Coach.xml");
        EXPECT_TRUE(roundTrips(e.xml));
    }
    // A coach not on BG_Modern: Mk3 leaves it unchanged, Appropriate says why.
    RowInput steam = in;
    setValue(steam.xml, "BogieAudioControlName", "Kuju\\RailSimulator\\Audio\\RailNetwork\\Bogies\\BG_Steam");
    EXPECT_EQ(editSoundRow(settings(SoundCommand::Mk3), steam).passedOver, "Not changed:- Heritage Mk1 BSK");
    EXPECT_EQ(editSoundRow(settings(SoundCommand::Appropriate), steam).passedOver,
              "Heritage Mk1 BSK was not using the BG_Modern audio files. No change was made to it.");
    // Mk1 without a Wagon Sound child: only the bogie.
    e = editSoundRow(settings(SoundCommand::Mk1), input(kMk1));
    EXPECT_EQ(valueOf(e.xml, "BogieAudioControlName"), joints);
    EXPECT_TRUE(e.changed);
    // No bogie sound at all.
    RowInput none = in;
    none.xml.erase(none.xml.find("<BogieAudioControlName"), none.xml.find("</BogieAudioControlName>") + 24 -
                                                                 none.xml.find("<BogieAudioControlName"));
    EXPECT_EQ(editSoundRow(settings(SoundCommand::Mk3), none).passedOver, "The blueprint has no BogieAudioControlName.");
}

TEST_F(SoundEdits, BogieNameTakesTheChosenStockSound) {
    const RowInput in = input(kMk1);
    for (const std::string& word : bogieSounds()) {
        SoundSettings s = settings(SoundCommand::BogieName);
        s.bogie = word;
        ASSERT_EQ(loadSoundSettings(*m_ctx, s), "");
        const RowEdit e = editSoundRow(s, in);
        EXPECT_EQ(valueOf(e.xml, "BogieAudioControlName"), "Kuju\\RailSimulator\\Audio\\RailNetwork\\Bogies\\" + word);
        EXPECT_TRUE(roundTrips(e.xml));
        RowInput again = in;
        again.xml = e.xml;
        EXPECT_EQ(editSoundRow(s, again).passedOver, "Not changed:- Heritage Mk1 BSK");
    }
    SoundSettings s = settings(SoundCommand::Mk1);
    s.command = SoundCommand::BogieName;
    s.bogie = "BG_Nowhere";
    EXPECT_NE(loadSoundSettings(*m_ctx, s).find("BG_Nowhere"), npos);
}

TEST_F(SoundEdits, Class37GetsThePacksEngineBellAndHorn) {
    const RowInput in = loco("Audio\\RailVehicles\\Diesel\\Class37\\Class 37 Engine Sound.xml",
                             "Audio\\RailVehicles\\Diesel\\Class37\\Class 37 Horn Sound.xml");
    ASSERT_TRUE(roundTrips(in.xml));
    const RowEdit e = editSoundRow(settings(SoundCommand::Class37), in);
    ASSERT_EQ(e.passedOver, "");
    const std::string& x = e.xml;
    EXPECT_EQ(valueOf(x, "ExpertRemapper"), "TwoTone_Expert");
    EXPECT_EQ(valueOf(x, "IntermediateRemapper"), "Old");
    EXPECT_EQ(valueOf(x, "BogieAudioControlName"), "AP\\C37P\\Audio\\RailNetwork\\Class 37 Bogie");
    // The new child right behind the engine sound, in the loco's own product.
    EXPECT_LT(x.find("Class 37 Engine Sound.xml"), x.find(">EngineSound2<"));
    EXPECT_LT(x.find(">EngineSound2<"), x.find(">Horn<", x.find("<Children>")));
    EXPECT_EQ(childBlueprint(x, "EngineSound2"), "Audio\\RailVehicles\\Diesel\\Class37\\Class 37 Engine Sound 2.xml");
    EXPECT_EQ(valueOf(x, "Provider", x.find(">EngineSound2<")), "DemoRail");
    EXPECT_EQ(valueOf(x, "Product", x.find(">EngineSound2<")), "Class66Pack");
    const auto place = matrixAfter(x, ">EngineSound2<");
    ASSERT_EQ(place.size(), 16u);
    EXPECT_EQ(place[12], "0");
    EXPECT_EQ(place[13], "2.50444");
    EXPECT_EQ(place[14], "-1.03766");
    const auto horn = matrixAfter(x, "Class 37 Horn Sound.xml");
    EXPECT_EQ(horn[11], "0");
    EXPECT_EQ(horn[12], "4.9533");
    EXPECT_EQ(horn[13], "9.4107");
    EXPECT_EQ(horn[14], "1");
    // The bell behind the horn control; the consist follows regulator and reverser.
    const std::size_t hornControl = x.find(">Horn</ControlName>");
    EXPECT_LT(hornControl, x.find(">Bell<"));
    EXPECT_LT(x.find(">Bell<"), x.find("</ControlValues>"));
    EXPECT_EQ(valueOf(x, "ApplyToConsist", x.find(">Regulator<")), "eTrue");
    EXPECT_EQ(valueOf(x, "ApplyToConsist", x.find(">Reverser<")), "eTrue");
    EXPECT_EQ(valueOf(x, "ApplyToConsist", x.find(">TrainBrakeControl<")), "eFalse");
    EXPECT_EQ(valueOf(x, "ApplyToConsist", hornControl), "eFalse");
    EXPECT_TRUE(hasNote(e, "AP\\C37P\\Audio\\RailNetwork\\Class 37 Bogie (.proxybin or .proxyxml)"));
    EXPECT_TRUE(hasNote(e, "DemoRail\\Class66Pack\\Audio\\RailVehicles\\Diesel\\Class37\\Class 37 Engine Sound 2.bin"));
    EXPECT_TRUE(roundTrips(x));

    RowInput again = in;
    again.xml = x;
    EXPECT_EQ(editSoundRow(settings(SoundCommand::Class37), again).passedOver,
              "This Loco file appears to have already been modified.");
    // A bell of its own is kept; a loco without the class's engine sound is passed over.
    again.xml = in.xml;
    addChild(again.xml, child("Bell", "Kuju", "RailSimulator", "Audio\\Bell.xml"));
    EXPECT_EQ(count(editSoundRow(settings(SoundCommand::Class37), again).xml, ">Bell<"), 1u);
    EXPECT_EQ(editSoundRow(settings(SoundCommand::Class37), input(kClass66)).passedOver,
              "The blueprint has no Class 37 Engine Sound child.");
}

TEST_F(SoundEdits, Class47GetsThreeChildrenAndItsOwnBogie) {
    RowInput in = loco("Audio\\RailVehicles\\Diesel\\Class 47\\Class 47 Engine Sound.xml",
                       "Audio\\RailVehicles\\Diesel\\Class 47\\Class 47 Horn Sound.xml");
    setValue(in.xml, "BogieAudioControlName", kModern);
    const RowEdit e = editSoundRow(settings(SoundCommand::Class47), in);
    ASSERT_EQ(e.passedOver, "");
    const std::string& x = e.xml;
    EXPECT_EQ(valueOf(x, "BogieAudioControlName"), "AP\\C47P\\Audio\\RailNetwork\\Class 47 Bogie");
    EXPECT_EQ(valueOf(x, "ExpertRemapper"), "TwoTone_Expert");
    const std::size_t two = x.find(">EngineSound2<"), three = x.find(">EngineSound3<"), cab = x.find(">EngineCabSound<");
    EXPECT_LT(x.find("Class 47 Engine Sound.xml"), two);
    EXPECT_LT(two, three);
    EXPECT_LT(three, cab);
    EXPECT_EQ(childBlueprint(x, "EngineCabSound"), "Audio\\RailVehicles\\Diesel\\Class 47\\Class 47 Engine Cab Sound.xml");
    EXPECT_EQ(childBlueprint(x, "EngineSound3"), "Audio\\RailVehicles\\Diesel\\Class 47\\Class 47 Engine Sound 3.xml");
    for (const char* name : {">EngineSound2<", ">EngineSound3<", ">EngineCabSound<"}) {
        const auto m = matrixAfter(x, name);
        EXPECT_EQ(m[12], "0");
        EXPECT_EQ(m[13], "2.6865");
        EXPECT_EQ(m[14], "-8.95135");
    }
    std::set<long> ids{childId(x, two), childId(x, three), childId(x, cab)};
    EXPECT_EQ(ids.size(), 3u);
    EXPECT_EQ(matrixAfter(x, "Class 47 Horn Sound.xml")[12], "9.7");
    EXPECT_LT(x.find(">Horn</ControlName>"), x.find(">Bell<"));
    EXPECT_EQ(valueOf(x, "ApplyToConsist", x.find(">Reverser<")), "eTrue");
    EXPECT_TRUE(roundTrips(x));
    // A loco on another bogie sound keeps it.
    setValue(in.xml, "BogieAudioControlName", "Mine\\Bogie");
    EXPECT_EQ(valueOf(editSoundRow(settings(SoundCommand::Class47), in).xml, "BogieAudioControlName"), "Mine\\Bogie");
}

TEST_F(SoundEdits, HstPowerCarGoesToTheMtuSounds) {
    RowInput in = loco("Audio\\RailVehicles\\Diesel\\RA_Class 43_MTU\\Class 43 Engine Sound MTU.xml",
                       "Audio\\RailVehicles\\Diesel\\Class 43\\Class 43 Horn Sound.xml");
    std::string& xml = in.xml;
    setValue(xml, "Name", "HST MTU MTU");
    setValue(xml, "BogieAudioControlName", kModern);
    addChild(xml, child("CabSound", "Kuju", "RailSimulator", "Audio\\RailVehicles\\Diesel\\Class 43\\Class 43 Cab Sound New.xml"));
    addChild(xml, child("Idle", "Kuju", "RailSimulator", "Audio\\RailVehicles\\Diesel\\Class 43\\Class 43 Engine Sound.xml"));
    const std::size_t sim = xml.find("<BlueprintID d:type", xml.find("<EngineSimFile>"));
    setValue(xml, "BlueprintID", "RailVehicles\\Diesel\\HST\\Default\\Simulation\\HST Engine Simulation.xml", sim);
    setValue(xml, "e", "2.54521", xml.find("<e ", xml.find("<Element>", xml.find(">Idle<"))));
    ASSERT_TRUE(roundTrips(xml));

    const RowEdit e = editSoundRow(settings(SoundCommand::Hst), in);
    ASSERT_EQ(e.passedOver, "");
    const std::string& x = e.xml;
    EXPECT_EQ(valueOf(x, "Name"), "HST MTU");
    EXPECT_EQ(childBlueprint(x, "EngineSound"), "Audio\\RailVehicles\\Diesel\\Class 43\\Class 43 Engine Sound MTU.xml");
    EXPECT_EQ(childBlueprint(x, "CabSound"), "Audio\\RailVehicles\\Diesel\\Class 43\\Class 43 Cab Sound MTU.xml");
    EXPECT_EQ(childBlueprint(x, "Idle"), "Audio\\RailVehicles\\Diesel\\Class 43\\Class 43 Engine Sound MTU.xml");
    EXPECT_EQ(valueOf(x, "BogieAudioControlName"), "AP\\C43MTUP\\Audio\\RailNetwork\\Bogies\\Class 43 Bogie");
    EXPECT_EQ(matrixAfter(x, ">Idle<")[0], "0");
    EXPECT_EQ(x.find("2.54521"), npos);
    EXPECT_EQ(matrixAfter(x, "Class 43 Horn Sound.xml")[14], "8.8");
    EXPECT_EQ(valueOf(x, "BlueprintID", x.find("<BlueprintID d:type", x.find("<EngineSimFile>"))),
              "RailVehicles\\Diesel\\HST\\FGW\\Simulation\\HST Engine Simulation.xml");
    const std::size_t guard = x.find(">GuardSignal<");
    EXPECT_LT(x.find(">Horn</ControlName>"), guard);
    EXPECT_LT(guard, x.find("</ControlValues>"));
    EXPECT_TRUE(hasNote(e, "Class 43 Bogie (.proxybin or .proxyxml)"));
    EXPECT_TRUE(roundTrips(x));
    // Done once: the second run finds nothing, and no other zero becomes the horn's.
    RowInput again = in;
    again.xml = x;
    const RowEdit second = editSoundRow(settings(SoundCommand::Hst), again);
    EXPECT_EQ(second.passedOver, "Not changed:- HST MTU");
}

TEST_F(SoundEdits, MissingTemplatesAreNamed) {
    AppContext bare(s_dir / "home", s_dir / "nodata", m_ui);
    bare.setRailWorksOverride(s_dir / "rw");
    SoundSettings s;
    s.command = SoundCommand::Hst;
    EXPECT_EQ(loadSoundSettings(bare, s), "Unable to convert files, the file\nTemplates\\HST_Controls.txt is missing.");
    s.command = SoundCommand::FourWheel;
    EXPECT_NE(loadSoundSettings(bare, s).find("WagonSounds.txt"), npos);
    s.command = SoundCommand::Class47;
    EXPECT_NE(loadSoundSettings(bare, s).find("ChildAudio.txt"), npos);
    s.command = SoundCommand::Mk1; // reads no template
    EXPECT_EQ(loadSoundSettings(bare, s), "");
}

TEST_F(SoundEdits, OcclusionPackIsCheckedAndItsShapesInstalledOnce) {
    SoundSettings s;
    s.command = SoundCommand::Occlusion37;
    EXPECT_NE(loadSoundSettings(*m_ctx, s).find("no Occlusions folder"), npos);
    const fs::path pack = s_dir / "home/Occlusions";
    fs::create_directories(pack / "Waggonz/47Occ");
    std::ofstream(pack / "Waggonz/47Occ/Shadow.GeoPcDx") << "shape";
    std::string error = loadSoundSettings(*m_ctx, s);
    EXPECT_NE(error.find("37Occ is missing"), npos) << error;
    fs::create_directories(pack / "Waggonz/37Occ/Textures");
    std::ofstream(pack / "Waggonz/37Occ/Shadow.GeoPcDx") << "shape";
    std::ofstream(pack / "Waggonz/37Occ/Textures/Shadow.TgPcDx") << "texture";
    error = loadSoundSettings(*m_ctx, s);
    EXPECT_NE(error.find("37CabShadow.bin is missing"), npos) << error;
    EXPECT_FALSE(fs::exists(assets() / "Waggonz"));
    std::ofstream(pack / "37CabShadow.bin", std::ios::binary) << std::string("SERZ\0\0\1\0", 8);

    ASSERT_EQ(loadSoundSettings(*m_ctx, s), "");
    EXPECT_EQ(s.cabShadow, std::string("SERZ\0\0\1\0", 8));
    EXPECT_TRUE(fs::exists(assets() / "Waggonz/37Occ/Textures/Shadow.TgPcDx"));
    EXPECT_FALSE(fs::exists(assets() / "Waggonz/47Occ"));
    EXPECT_EQ(m_ctx->journal().entries().back().command, "Add Class 37 Occlusions: the occlusion shapes");
    const std::size_t entries = m_ctx->journal().entries().size();
    ASSERT_EQ(loadSoundSettings(*m_ctx, s), ""); // there now: not copied again
    EXPECT_EQ(m_ctx->journal().entries().size(), entries);
    undoLast();
    EXPECT_FALSE(fs::exists(assets() / "Waggonz/37Occ/Shadow.GeoPcDx"));

    // A file where the shapes' folder would go: the copy fails and says which file.
    fs::remove_all(assets() / "Waggonz");
    std::ofstream(assets() / "Waggonz") << "in the way";
    m_ctx->resolver.invalidate();
    error = loadSoundSettings(*m_ctx, s);
    EXPECT_NE(error.find("Shadow."), npos) << error;
    EXPECT_NE(error.find("could not be copied"), npos) << error;
    EXPECT_EQ(ReadTextFile(assets() / "Waggonz"), "in the way");
    fs::remove(assets() / "Waggonz");
    fs::remove_all(pack);
    m_ctx->resolver.invalidate();
}

TEST_F(SoundEdits, CabShadowChildrenGoBehindTheLastChild) {
    SoundSettings s;
    s.command = SoundCommand::Occlusion47;
    s.templates["Class47Children.txt"] = ReadTextFile(s_dir / "data/Templates/Class47Children.txt");
    s.cabShadow = "bytes";
    s.assets = assets();
    s.seed = 3;
    s.notChanged = "Not changed:- ";
    RowInput in = input(kClass66);
    addChild(in.xml, child("Horn", "Kuju", "RailSimulator", "Audio\\Horn.xml"));
    const RowEdit e = editSoundRow(s, in);
    ASSERT_EQ(e.passedOver, "");
    const std::string& x = e.xml;
    EXPECT_LT(x.find(">Horn<"), x.find(">CabShadow1<"));
    EXPECT_LT(x.find(">CabShadow2<"), x.find("</Children>"));
    EXPECT_EQ(childBlueprint(x, "CabShadow1"), "RailVehicles\\Diesel\\Class66\\Engine\\47CabShadow.xml");
    EXPECT_EQ(valueOf(x, "Provider", x.find(">CabShadow2<")), "DemoRail");
    EXPECT_NE(childId(x, x.find(">CabShadow1<")), childId(x, x.find(">CabShadow2<")));
    ASSERT_EQ(e.files.size(), 1u);
    EXPECT_EQ(e.files[0].target, in.file.parent_path() / "47CabShadow.bin");
    EXPECT_EQ(e.files[0].bytes, "bytes");
    EXPECT_TRUE(roundTrips(x));
    RowInput again = in;
    again.xml = x;
    EXPECT_EQ(editSoundRow(s, again).passedOver, "Not changed:- DemoRail Class 66 EWS");

    // An empty children list is opened; names with accents, commas and quotes stay well-formed.
    RowInput wagon = input(kHta);
    AssetRow hostile = *wagon.row;
    hostile.provider = "Z\xc3\xbcrich, \"Bahn\" & Co";
    hostile.product = "O'Brien's <Pack>";
    hostile.path = "RailVehicles\\Caf\xc3\xa9, \"Wagen\"\\HTA_Coal.bin";
    wagon.row = &hostile;
    const RowEdit w = editSoundRow(s, wagon);
    ASSERT_EQ(w.passedOver, "");
    EXPECT_EQ(w.xml.find("<Children/>"), npos);
    EXPECT_EQ(count(w.xml, ">CabShadow"), 2u);
    EXPECT_TRUE(roundTrips(w.xml));
    std::string bin, back;
    ASSERT_TRUE(xmlTextToBin(w.xml, bin));
    ASSERT_TRUE(serz::decode(bin, back));
    EXPECT_NE(back.find("47CabShadow.xml"), npos);
}

TEST_F(SoundEdits, BatchNamesUnreadableRowsAndOneUndoTakesItAllBack) {
    const fs::path pack = s_dir / "home/Occlusions";
    fs::create_directories(pack / "Waggonz/37Occ");
    std::ofstream(pack / "Waggonz/37Occ/Shadow.GeoPcDx") << "shape";
    std::ofstream(pack / "37CabShadow.bin", std::ios::binary) << "cab shadow";
    SoundSettings s;
    s.command = SoundCommand::Occlusion37;
    ASSERT_EQ(loadSoundSettings(*m_ctx, s), "");
    const std::string locoBefore = ReadTextFile(assets() / kClass66);
    std::vector<AssetRow> rows(2);
    ASSERT_TRUE(rowForBlueprint(kClass66, assets(), rows[0]));
    ASSERT_TRUE(rowForBlueprint(kBroken, assets(), rows[1]));
    BatchOptions o;
    o.command = "Add Class 37 Occlusions";
    const BatchResult r = runBatch(*m_ctx, rows, o, [&](const RowInput& in) { return editSoundRow(s, in); }, nullptr);
    ASSERT_EQ(r.error, "");
    EXPECT_EQ(r.rowsWritten, 1u);
    ASSERT_EQ(r.passedOver.size(), 1u);
    EXPECT_NE(r.passedOver[0].row.find("Empty_Hut.bin"), npos);
    const fs::path shadow = assets() / "DemoRail/Class66Pack/RailVehicles/Diesel/Class66/Engine/37CabShadow.bin";
    EXPECT_EQ(ReadTextFile(shadow), "cab shadow");
    std::string xml;
    ASSERT_TRUE(binToXmlText(assets() / kClass66, xml));
    EXPECT_EQ(count(xml, "37CabShadow.xml"), 2u);

    undoLast();
    EXPECT_EQ(ReadTextFile(assets() / kClass66), locoBefore);
    EXPECT_FALSE(fs::exists(shadow));
    undoLast(); // the shapes
    fs::remove_all(pack);

    // A wagon batch: every written row in the one entry.
    const std::string wagonBefore = ReadTextFile(assets() / kHta), coachBefore = ReadTextFile(assets() / kMk1);
    SoundSettings w;
    w.command = SoundCommand::OldHeavy;
    w.addBogie = w.addWagonSound = true;
    ASSERT_EQ(loadSoundSettings(*m_ctx, w), "");
    std::vector<AssetRow> wagons(2);
    ASSERT_TRUE(rowForBlueprint(kHta, assets(), wagons[0]));
    ASSERT_TRUE(rowForBlueprint(kMk1, assets(), wagons[1]));
    o.command = "Old heavy wagons";
    const BatchResult b = runBatch(*m_ctx, wagons, o, [&](const RowInput& in) { return editSoundRow(w, in); }, nullptr);
    EXPECT_EQ(b.rowsWritten, 2u);
    EXPECT_FALSE(b.notes.empty());
    ASSERT_TRUE(binToXmlText(assets() / kHta, xml));
    EXPECT_EQ(valueOf(xml, "BogieAudioControlName"), "Kuju\\RailSimulator\\Audio\\RailNetwork\\Bogies\\BG_Steam");
    undoLast();
    EXPECT_EQ(ReadTextFile(assets() / kHta), wagonBefore);
    EXPECT_EQ(ReadTextFile(assets() / kMk1), coachBefore);
}
