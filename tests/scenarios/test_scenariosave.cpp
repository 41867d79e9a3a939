// Saving the fields, with its backups, its journal entry and its failures; the saved copies and
// the removal of empty consists.

#include "scenariofixture.h"

#include "../core/faultyfiles.h"
#include "velmora/core/journal.h"
#include "velmora/scenarios/scenariolist.h"
#include "velmora/scenarios/scenariosave.h"

#include <sstream>

using namespace velmora;
using namespace velmora::scenarios;
namespace fs = std::filesystem;

namespace {

struct Saving : test::ScenarioTest<Saving> {
    static constexpr const char* kName = "scenario-save";
};

using test::linesOf;

// The lines of `after` that are not the same line of `before` (both have as many lines).
std::vector<std::string> changedLines(const std::string& before, const std::string& after) {
    const auto a = linesOf(before), b = linesOf(after);
    EXPECT_EQ(a.size(), b.size());
    std::vector<std::string> changed;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
        if (a[i] != b[i])
            changed.push_back(b[i]);
    return changed;
}

TEST_F(Saving, FieldChangeKeepsBackupsAndTouchesOnlyItsFields) {
    const fs::path folder = copyOf();
    const std::string oldProperties = test::slurp(folder / "ScenarioProperties.xml");
    const std::string oldScenario = test::slurp(folder / "Scenario.bin");
    const ScenarioDocument d = openScenario(*m_ctx, folder);
    ASSERT_TRUE(d.ok());
    Fields f = fieldsOf(d);
    f.displayName = "Caf\xE9, \"quoted\" & O'Neill"; // Windows-1252 as the repaired text holds it
    f.season = "SEASON_WINTER";
    f.startTime = "2400";
    const SaveResult r = saveScenario(*m_ctx, d, f);
    ASSERT_TRUE(r) << r.message;
    EXPECT_EQ(r.message, kSaved);
    EXPECT_EQ(test::slurp(folder / "ScenarioProperties.bak"), oldProperties);
    EXPECT_EQ(test::slurp(folder / "Scenario.bak"), oldScenario);
    EXPECT_EQ(test::slurp(folder / "Scenario.bin"), oldScenario) << "no consist moved: the same document";
    const auto changed = changedLines(oldProperties, test::slurp(folder / "ScenarioProperties.xml"));
    ASSERT_EQ(changed.size(), 7u); // five languages of the name, the time, the season
    for (const auto& line : changed)
        EXPECT_TRUE(line.find("O&apos;Neill") != std::string::npos || line.find("86400.0000") != std::string::npos ||
                    line.find("SEASON_WINTER") != std::string::npos)
            << line;

    const ScenarioDocument again = openScenario(*m_ctx, folder);
    EXPECT_EQ(again.properties.displayName, f.displayName);
    EXPECT_EQ(again.properties.startTime, "2400");

    // The second save keeps the first backups and takes the next names.
    f.durationMins = "90";
    ASSERT_TRUE(saveScenario(*m_ctx, again, f));
    EXPECT_TRUE(fs::exists(folder / "ScenarioProperties.bak1"));
    EXPECT_TRUE(fs::exists(folder / "Scenario.bak1"));
    EXPECT_EQ(test::slurp(folder / "Scenario.bak"), oldScenario);
}

TEST_F(Saving, StartTimeMovesEveryConsistOnlyWhenAsked) {
    const fs::path folder = copyOf();
    const ScenarioDocument d = openScenario(*m_ctx, folder);
    Fields f = fieldsOf(d);
    const int was = std::stoi(d.properties.startTime);
    f.startTime = (was >= 2300 ? "0030" : std::to_string(was + 100).insert(0, was + 100 < 1000 ? "0" : ""));
    f.changeAllConsists = true;
    ASSERT_TRUE(saveScenario(*m_ctx, d, f));
    const ScenarioDocument moved = openScenario(*m_ctx, folder);
    EXPECT_EQ(moved.properties.startTime, f.startTime);
    const double delta = std::atof(secondsText(f.startTime).c_str()) - std::atof(d.properties.startTimeRaw.c_str());
    for (std::size_t i = 0; i < 2; ++i) {
        const double before = std::stoi(d.consists[i].vehicles[0].startTime.substr(0, 2)) * 3600.0 +
                              std::stoi(d.consists[i].vehicles[0].startTime.substr(2)) * 60.0;
        double expected = before + delta;
        if (expected > 86400)
            expected -= 86400;
        EXPECT_EQ(moved.consists[i].vehicles[0].startTime, hhmm(std::to_string(expected)));
    }

    std::string text = "<StartTime d:type=\"sFloat32\">86000</StartTime><StartTime>100</StartTime>";
    ChangeTimes(text, 600);
    EXPECT_EQ(text, "<StartTime d:type=\"sFloat32\">00200.0000</StartTime><StartTime>00700.0000</StartTime>");
    EXPECT_EQ(secondsText("0000"), "00000.0000");
    EXPECT_EQ(secondsText("2401"), "");
    EXPECT_EQ(secondsText("930"), "");
}

TEST_F(Saving, RefusedSavesWriteNothing) {
    const fs::path folder = copyOf();
    const auto before = test::snapshot(folder);
    const ScenarioDocument d = openScenario(*m_ctx, folder);
    Fields f = fieldsOf(d);
    f.startTime = "25:00";
    EXPECT_EQ(saveScenario(*m_ctx, d, f).message, kTimeFormat);
    f = fieldsOf(d);
    f.briefing = "<script>";
    EXPECT_FALSE(saveScenario(*m_ctx, d, f));
    f = fieldsOf(d);
    f.startDD = "45"; // taken as typed: the program never refused a day
    EXPECT_EQ(test::snapshot(folder), before);
    EXPECT_TRUE(saveScenario(*m_ctx, d, f));

    const ScenarioDocument quick = openScenario(*m_ctx, copyOf("[QD] Quick Drive"));
    EXPECT_EQ(saveScenario(*m_ctx, quick, fieldsOf(quick)).message, kQuickDriveRefusal);
}

// Each step of either write failing leaves both documents whole, with no temporary file.
TEST_F(Saving, FailureAtAnyStepLeavesBothDocuments) {
    const fs::path folder = copyOf();
    const std::string properties = test::slurp(folder / "ScenarioProperties.xml");
    const std::string scenario = test::slurp(folder / "Scenario.bin");
    const ScenarioDocument d = openScenario(*m_ctx, folder);
    Fields f = fieldsOf(d);
    f.displayName = "Changed";
    for (WriteStep step : {WriteStep::Create, WriteStep::Write, WriteStep::Sync, WriteStep::Backup, WriteStep::Replace})
        for (int skip : {0, 1}) {
            SCOPED_TRACE(std::string(writeStepName(step)) + (skip ? " of Scenario.bin" : " of the properties"));
            test::FaultyFiles faulty(step, std::errc::no_space_on_device, skip);
            m_ctx->files().setFileOps(&faulty);
            const SaveResult r = saveScenario(*m_ctx, d, f);
            m_ctx->files().setFileOps(nullptr);
            EXPECT_FALSE(r);
            EXPECT_NE(r.message.find(folder.string()), std::string::npos) << r.message;
            EXPECT_EQ(test::slurp(folder / "ScenarioProperties.xml"), properties);
            EXPECT_EQ(test::slurp(folder / "Scenario.bin"), scenario);
            for (const auto& [name, bytes] : test::snapshot(folder))
                EXPECT_EQ(name.find("velmora-tmp"), std::string::npos) << name;
        }
}

TEST_F(Saving, OneJournalEntryThatUndoTakesBack) {
    const fs::path folder = copyOf();
    const auto before = test::snapshot(folder);
    const ScenarioDocument d = openScenario(*m_ctx, folder);
    Fields f = fieldsOf(d);
    f.description = "Other words";
    ASSERT_TRUE(saveScenario(*m_ctx, d, f));
    const auto entries = m_ctx->journal().entries();
    ASSERT_FALSE(entries.empty());
    EXPECT_EQ(entries.back().command, "Save Changes to Scenario");
    EXPECT_EQ(entries.back().files.size(), 2u);
    const UndoResult u = undoEntry(m_ctx->files(), entries.back().id, false);
    ASSERT_TRUE(u.ok) << u.message;
    const auto after = test::snapshot(folder);
    EXPECT_EQ(after.at("ScenarioProperties.xml"), before.at("ScenarioProperties.xml"));
    EXPECT_EQ(after.at("Scenario.bin"), before.at("Scenario.bin"));
}

TEST_F(Saving, ClassAuthorAndStartLocation) {
    const fs::path folder = copyOf("Career: first turn");
    const std::string old = test::slurp(folder / "ScenarioProperties.xml");
    ScenarioDocument d = openScenario(*m_ctx, folder);
    Fields f = fieldsOf(d);
    f.cls = ScenarioClass::Standard;
    ASSERT_TRUE(saveScenario(*m_ctx, d, f));
    const auto changed = changedLines(old, test::slurp(folder / "ScenarioProperties.xml"));
    ASSERT_EQ(changed.size(), 1u) << "a class change is one word";
    EXPECT_NE(changed[0].find("eStandardScenarioClass"), std::string::npos);

    // A standard scenario without an Author element gets one before the preload list.
    std::string text = test::slurp(folder / "ScenarioProperties.xml");
    const std::size_t author = text.find("<Author");
    text.erase(author, text.find("</Author>") + 9 - author);
    std::ofstream(folder / "ScenarioProperties.xml", std::ios::binary | std::ios::trunc) << text;
    d = openScenario(*m_ctx, folder);
    f = fieldsOf(d);
    EXPECT_EQ(f.author, "");
    f.author = "Somebody";
    ASSERT_TRUE(saveScenario(*m_ctx, d, f));
    EXPECT_EQ(openScenario(*m_ctx, folder).properties.author, "Somebody");

    const fs::path free = copyOf("Free roam");
    d = openScenario(*m_ctx, free);
    f = fieldsOf(d);
    f.startLocation = "Platform 2";
    ASSERT_TRUE(saveScenario(*m_ctx, d, f));
    EXPECT_EQ(openScenario(*m_ctx, free).properties.startLocation, "Platform 2");
}

// A free-roam scenario without a StartLocation block gets one from the shipped template, behind
// the briefing; without the template nothing is written and the template is named.
TEST_F(Saving, AStartLocationBlockComesFromTheTemplate) {
    const fs::path free = copyOf("Free roam");
    std::string text = test::slurp(free / "ScenarioProperties.xml");
    const std::size_t from = text.find("\t<StartLocation>");
    ASSERT_NE(from, std::string::npos);
    text.erase(from, text.find("</StartLocation>") + 16 + 2 - from);
    std::ofstream(free / "ScenarioProperties.xml", std::ios::binary | std::ios::trunc) << text;

    ScenarioDocument d = openScenario(*m_ctx, free);
    Fields f = fieldsOf(d);
    EXPECT_EQ(f.startLocation, "");
    f.startLocation = "Platform 2";
    const auto before = test::snapshot(free);
    const SaveResult refused = saveScenario(*m_ctx, d, f); // this context ships no templates
    EXPECT_FALSE(refused);
    EXPECT_NE(refused.message.find("StartLocation.txt"), std::string::npos) << refused.message;
    EXPECT_EQ(test::snapshot(free), before);

    AppContext shipped(s_dir / "home", fs::path(VELMORA_SOURCE_DIR) / "data", m_ui);
    shipped.setRailWorksOverride(s_dir / "rw");
    d = openScenario(shipped, free);
    ASSERT_TRUE(saveScenario(shipped, d, f));
    const std::string saved = test::slurp(free / "ScenarioProperties.xml");
    const std::size_t block = saved.find("</Briefing>\r\n\t<StartLocation>\r\n");
    ASSERT_NE(block, std::string::npos);
    EXPECT_NE(saved.find("<English d:type=\"cDeltaString\">Platform 2</English>", block), std::string::npos);
    EXPECT_EQ(saved.find("bbbbbb"), std::string::npos);
    EXPECT_EQ(openScenario(shipped, free).properties.startLocation, "Platform 2");
}

TEST_F(Saving, EmptyConsistsAreRemovedWithABackup) {
    const fs::path folder = copyOf();
    std::string xml = xmlOf(folder);
    // The loose consist loses its vehicles.
    const std::size_t third = xml.find("<cConsist", xml.find("<cConsist", xml.find("<cConsist") + 1) + 1);
    const std::size_t from = xml.find("<RailVehicles>", third);
    const std::size_t to = xml.find("</RailVehicles>", from);
    xml.replace(from, to + 15 - from, "<RailVehicles/>");
    putXml(folder, xml);
    const std::string old = test::slurp(folder / "Scenario.bin");
    EXPECT_EQ(openScenario(*m_ctx, folder).consists.size(), 3u);
    const CommandResult r = removeEmptyConsists(*m_ctx, folder);
    ASSERT_TRUE(r) << r.message;
    EXPECT_NE(r.message.find("1 empty consist(s) removed"), std::string::npos);
    EXPECT_EQ(test::slurp(folder / "Scenario.bak"), old);
    EXPECT_EQ(openScenario(*m_ctx, folder).consists.size(), 2u);
    const auto before = test::snapshot(folder);
    EXPECT_TRUE(removeEmptyConsists(*m_ctx, folder));
    EXPECT_EQ(test::snapshot(folder), before) << "nothing written when none is empty";
}

TEST_F(Saving, CurrentSaveCommands) {
    const fs::path folder = copyOf();
    const std::string save = test::slurp(folder / "CurrentSave.bin");
    const std::string md5 = test::slurp(folder / "CurrentSave.bin.MD5");
    ASSERT_TRUE(saveCurrentSaveAs(*m_ctx, folder, "../../Evening run"));
    EXPECT_EQ(test::slurp(folder / ".._.._Evening run.bin"), save) << "the name stays inside the folder";
    EXPECT_EQ(test::slurp(folder / ".._.._Evening run.bin.MD5"), md5);
    EXPECT_FALSE(saveCurrentSaveAs(*m_ctx, folder, "Scenario"));

    auto copies = savedCopies(folder);
    ASSERT_GE(copies.size(), 4u);
    EXPECT_EQ(copies[0].name, ".._.._Evening run.bin");
    EXPECT_TRUE(copies[0].md5);

    // A copy without a hash file: the old hash goes (kept as a backup), none takes its place.
    std::ofstream(folder / "Plain.bin", std::ios::binary) << "other save";
    m_ui.pushAnswer(Answer::Yes);
    ASSERT_TRUE(overwriteCurrentSave(*m_ctx, folder, "plain.BIN"));
    EXPECT_EQ(test::slurp(folder / "CurrentSave.bin"), "other save");
    EXPECT_FALSE(fs::exists(folder / "CurrentSave.bin.MD5"));
    EXPECT_EQ(test::slurp(folder / "CurrentSave.bin.bak"), save);
    m_ui.pushAnswer(Answer::Yes);
    ASSERT_TRUE(overwriteCurrentSave(*m_ctx, folder, ".._.._Evening run.bin"));
    EXPECT_EQ(test::slurp(folder / "CurrentSave.bin"), save);
    EXPECT_EQ(test::slurp(folder / "CurrentSave.bin.MD5"), md5);
    m_ui.pushAnswer(Answer::No);
    EXPECT_FALSE(overwriteCurrentSave(*m_ctx, folder, "Plain.bin"));
    EXPECT_FALSE(overwriteCurrentSave(*m_ctx, folder, "../Scenario.bin"));

    ASSERT_TRUE(deleteCurrentSave(*m_ctx, folder));
    EXPECT_FALSE(fs::exists(folder / "CurrentSave.bin"));
    EXPECT_FALSE(fs::exists(folder / "CurrentSave.bin.MD5"));
}

} // namespace
