// Unpacking: what goes where, what is refused, the four rules for files already there, and the
// guarantee that a failed unpack leaves nothing of itself behind.

#include "../core/faultyfiles.h"
#include "ziptestkit.h"
#include "velmora/archives/entrypath.h"
#include "velmora/archives/unpack.h"
#include "velmora/core/journal.h"
#include "velmora/core/services.h"
#include "velmora/core/userinterface.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

using namespace velmora;
using namespace velmora::archives;
using velmora::test::makeZip;

namespace {

class Unpack : public ::testing::Test {
protected:
    void SetUp() override {
        m_dir = fs::temp_directory_path() / ("velmora-unpack-" + std::to_string(::getpid()) + "-" +
                                             ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(m_dir);
        fs::create_directories(m_dir / "dest");
        m_journal = std::make_unique<Journal>(m_dir / "Journal.jsonl");
        m_files = std::make_unique<WriteService>(&m_ui, m_journal.get());
    }
    void TearDown() override { fs::remove_all(m_dir); }

    fs::path dest() const { return m_dir / "dest"; }
    static void put(const fs::path& file, const std::string& text) {
        fs::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << text;
    }
    UnpackResult unpack(const fs::path& ap, UnpackMode mode = UnpackMode::Overwrite) {
        UnpackOptions o;
        o.mode = mode;
        o.destination = dest();
        return unpackArchive(*m_files, ap, o, &m_ui);
    }
    // Every file below the destination, as "relative path=content".
    std::vector<std::string> tree() const {
        std::vector<std::string> out;
        for (auto& e : fs::recursive_directory_iterator(dest()))
            if (e.is_regular_file())
                out.push_back(fs::relative(e.path(), dest()).generic_string() + "=" + ReadTextFile(e.path()));
        std::sort(out.begin(), out.end());
        return out;
    }

    fs::path m_dir;
    ScriptedUi m_ui;
    std::unique_ptr<Journal> m_journal;
    std::unique_ptr<WriteService> m_files;
};

TEST(EntryPlace, RefusesEveryWayOutOfTheFolder) {
    auto refusal = [](std::string name, bool link = false) {
        ZipEntry e;
        e.name = std::move(name);
        e.link = link;
        return placeOf(e).refusal;
    };
    EXPECT_NE(refusal("../escape.txt"), "");
    EXPECT_NE(refusal("a/../../escape.txt"), "");
    EXPECT_NE(refusal("a\\..\\..\\escape.txt"), "") << "a Windows packer's separators";
    EXPECT_NE(refusal("/etc/passwd"), "");
    EXPECT_NE(refusal("\\Windows\\x.dll"), "");
    EXPECT_NE(refusal("C:\\boot.ini"), "");
    EXPECT_NE(refusal("c:relative.txt"), "");
    EXPECT_NE(refusal("Assets/link.bin", true), "");
    EXPECT_NE(refusal("bell\x07.txt"), "");
    EXPECT_NE(refusal("file.bin:stream"), "");
    EXPECT_NE(refusal(std::string(60000, 'a')), "");
    EXPECT_NE(refusal(std::string(300, 'b') + "/x.bin"), "");
    EXPECT_NE(refusal("./"), "");

    ZipEntry fine;
    fine.name = "RailVehicles\\Engine/./Ünïcode, \"quoted\".bin";
    const EntryPlace p = placeOf(fine);
    ASSERT_TRUE(p.ok()) << p.refusal;
    EXPECT_EQ(p.relative(), "RailVehicles/Engine/Ünïcode, \"quoted\".bin");
}

TEST(EntrySets, TakeWhatEachCommandPromises) {
    EXPECT_TRUE(entryWanted(EntrySet::RollingStock, "RailVehicles/Diesel/Class66/Engine/x.bin"));
    EXPECT_TRUE(entryWanted(EntrySet::RollingStock, "railvehicles\\x\\y.TgPcDx"));
    EXPECT_FALSE(entryWanted(EntrySet::RollingStock, "Scenery/RailVehicles.bin")) << "a file, not a folder";
    EXPECT_TRUE(entryWanted(EntrySet::Scenarios, "Scenarios/abc/Scenario.bin"));
    EXPECT_FALSE(entryWanted(EntrySet::Scenarios, "Networks/Tracks.bin"));
    EXPECT_TRUE(entryWanted(EntrySet::LocoShapes, "RailVehicles/Diesel/Engine/Body.GeoPcDx"));
    EXPECT_FALSE(entryWanted(EntrySet::LocoShapes, "RailVehicles/Wagons/Freight/Body.GeoPcDx"));
    EXPECT_FALSE(entryWanted(EntrySet::LocoShapes, "RailVehicles/Diesel/Engine/Body.bin"));
    EXPECT_TRUE(entryWanted(EntrySet::RollingStockBins, "RailVehicles/Wagons/Freight/HTA.bin"));
    EXPECT_FALSE(entryWanted(EntrySet::RollingStockBins, "RailVehicles/Wagons/Freight/HTA.GeoPcDx"));
    EXPECT_TRUE(entryWanted(EntrySet::RouteProperties, "routeproperties.XML"));
    EXPECT_FALSE(entryWanted(EntrySet::RouteProperties, "Scenarios/RouteProperties.xml"));
}

TEST_F(Unpack, AHostileArchiveUnpacksNothingOutsideItsFolderAndNamesWhatItRefused) {
    const fs::path ap = m_dir / "hostile.ap";
    ASSERT_TRUE(makeZip(ap, {{"../escape.txt", "x"},
                             {"/tmp/velmora-absolute-" + std::to_string(::getpid()), "x"},
                             {"C:\\drive.txt", "x"},
                             {"RailVehicles/link", "/etc/passwd", true},
                             {std::string(60000, 'n'), "x"},
                             {"RailVehicles/Engine/Fine.bin", "fine"}}));
    const UnpackResult r = unpack(ap);
    ASSERT_TRUE(r.ok) << r.error;
    EXPECT_EQ(tree(), std::vector<std::string>{"RailVehicles/Engine/Fine.bin=fine"});
    EXPECT_FALSE(fs::exists(m_dir / "escape.txt"));
    EXPECT_FALSE(fs::exists("/tmp/velmora-absolute-" + std::to_string(::getpid())));
    ASSERT_EQ(r.refused.size(), 5u);
    EXPECT_NE(r.refused[0].find("..\\escape.txt"), std::string::npos) << r.refused[0];
    EXPECT_NE(r.refused[3].find("link"), std::string::npos) << r.refused[3];
    EXPECT_LT(r.refused[4].size(), 400u) << "a 60,000-character name is shown cut";
}

TEST_F(Unpack, AFolderLinkInTheDestinationIsNotFollowedOut) {
    fs::create_directories(m_dir / "elsewhere");
    fs::create_directory_symlink(m_dir / "elsewhere", dest() / "RailVehicles");
    const fs::path ap = m_dir / "a.ap";
    ASSERT_TRUE(makeZip(ap, {{"RailVehicles/x.bin", "x"}, {"Scenery/y.bin", "y"}}));
    const UnpackResult r = unpack(ap);
    ASSERT_TRUE(r.ok) << r.error;
    EXPECT_TRUE(fs::is_empty(m_dir / "elsewhere"));
    ASSERT_EQ(r.refused.size(), 1u);
    EXPECT_NE(r.refused[0].find("leads out"), std::string::npos) << r.refused[0];
    EXPECT_EQ(ReadTextFile(dest() / "Scenery/y.bin"), "y");
}

TEST_F(Unpack, EachModeTreatsAFileAlreadyThereByItsRule) {
    const fs::path ap = m_dir / "a.ap";
    ASSERT_TRUE(makeZip(ap, {{"Scenarios/s/Scenario.bin", "new"}, {"Scenarios/s/Other.bin", "other"}}));
    const fs::path there = dest() / "Scenarios/s/Scenario.bin";

    put(there, "old");
    UnpackResult r = unpack(ap, UnpackMode::Skip);
    ASSERT_TRUE(r.ok) << r.error;
    EXPECT_EQ(ReadTextFile(there), "old");
    EXPECT_EQ(r.kept, std::vector<fs::path>{there});
    EXPECT_EQ(ReadTextFile(dest() / "Scenarios/s/Other.bin"), "other");

    r = unpack(ap, UnpackMode::RenameNew);
    ASSERT_TRUE(r.ok) << r.error;
    EXPECT_EQ(ReadTextFile(there), "old");
    EXPECT_EQ(ReadTextFile(dest() / "Scenarios/s/Scenario_1.bin"), "new");
    EXPECT_EQ(ReadTextFile(dest() / "Scenarios/s/Other_1.bin"), "other");

    r = unpack(ap, UnpackMode::RenameOld);
    ASSERT_TRUE(r.ok) << r.error;
    EXPECT_EQ(ReadTextFile(there), "new");
    EXPECT_EQ(ReadTextFile(dest() / "Scenarios/s/Scenario_2.bin"), "old") << "the next free number";

    put(there, "changed");
    r = unpack(ap, UnpackMode::Overwrite);
    ASSERT_TRUE(r.ok) << r.error;
    EXPECT_EQ(ReadTextFile(there), "new");
    EXPECT_EQ(ReadTextFile(dest() / "Scenarios/s/Scenario.bin.bak"), "changed") << "the old content is kept";
}

TEST_F(Unpack, TheAskingModesAskOnceAndFollowTheAnswer) {
    const fs::path ap = m_dir / "a.ap";
    ASSERT_TRUE(makeZip(ap, {{"a.txt", "new"}, {"b.txt", "b"}}));
    put(dest() / "a.txt", "old");
    m_ui.pushAnswer(Answer::Cancel);
    UnpackResult r = unpack(ap, UnpackMode::SameFolder);
    EXPECT_TRUE(r.cancelled);
    EXPECT_EQ(tree(), std::vector<std::string>{"a.txt=old"});
    m_ui.pushAnswer(Answer::No);
    r = unpack(ap, UnpackMode::NewFolder);
    EXPECT_EQ(tree(), (std::vector<std::string>{"a.txt=old", "b.txt=b"}));
    m_ui.pushAnswer(Answer::Yes);
    r = unpack(ap, UnpackMode::SameFolder);
    EXPECT_EQ(ReadTextFile(dest() / "a.txt"), "new");
    EXPECT_EQ(m_ui.prompts.size(), 3u);
}

TEST_F(Unpack, NamesThatDifferOnlyInCaseMeetInOneFileAndTheUserIsTold) {
    put(dest() / "railvehicles/engine/keep.txt", "k");
    const fs::path ap = m_dir / "a.ap";
    ASSERT_TRUE(makeZip(ap, {{"RailVehicles/Engine/Loco.bin", "first"}, {"RAILVEHICLES/engine/LOCO.BIN", "second"}}));
    UnpackResult r = unpack(ap, UnpackMode::Overwrite);
    ASSERT_TRUE(r.ok) << r.error;
    EXPECT_EQ(tree(), (std::vector<std::string>{"railvehicles/engine/Loco.bin=second", "railvehicles/engine/keep.txt=k"}))
        << "the folders there already are the ones meant";
    ASSERT_EQ(r.collisions.size(), 1u);
    EXPECT_NE(r.collisions[0].find("RAILVEHICLES\\engine\\LOCO.BIN"), std::string::npos) << r.collisions[0];

    fs::remove(dest() / "railvehicles/engine/Loco.bin");
    r = unpack(ap, UnpackMode::Skip);
    EXPECT_EQ(ReadTextFile(dest() / "railvehicles/engine/Loco.bin"), "first");
    fs::remove(dest() / "railvehicles/engine/Loco.bin");
    r = unpack(ap, UnpackMode::RenameNew);
    EXPECT_EQ(ReadTextFile(dest() / "railvehicles/engine/Loco.bin"), "first");
    EXPECT_EQ(ReadTextFile(dest() / "railvehicles/engine/Loco_1.bin"), "second");
}

TEST_F(Unpack, AFullDiskHalfWayLeavesTheInstallAsItWas) {
    const fs::path ap = m_dir / "a.ap";
    ASSERT_TRUE(makeZip(ap, {{"A/one.txt", "1"}, {"A/two.txt", "2"}, {"B/C/three.txt", "3"}}));
    put(dest() / "A/two.txt", "old two");
    for (int failing = 0; failing < 3; ++failing) {
        test::FaultyFiles full(WriteStep::Write, std::errc::no_space_on_device, failing);
        m_files->setFileOps(&full);
        const UnpackResult r = unpack(ap);
        m_files->setFileOps(nullptr);
        EXPECT_FALSE(r.ok);
        EXPECT_NE(r.error.find("a.ap"), std::string::npos) << r.error;
        EXPECT_EQ(tree(), std::vector<std::string>{"A/two.txt=old two"}) << "failing write " << failing;
        EXPECT_FALSE(fs::exists(dest() / "B")) << "folders it made are gone again";
    }
    // And a failure when the files take their names puts back those that already had.
    test::FaultyFiles late(WriteStep::Replace, std::errc::io_error, 2);
    m_files->setFileOps(&late);
    const UnpackResult r = unpack(ap);
    m_files->setFileOps(nullptr);
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(ReadTextFile(dest() / "A/two.txt"), "old two");
    EXPECT_FALSE(fs::exists(dest() / "A/one.txt"));
    EXPECT_FALSE(fs::exists(dest() / "B/C/three.txt"));
}

TEST_F(Unpack, AbortStopsWithNothingInPlace) {
    const fs::path ap = m_dir / "a.ap";
    ASSERT_TRUE(makeZip(ap, {{"a.txt", std::string(3 << 20, 'a')}, {"b.txt", "b"}}));
    m_ui.cancelAfter(0);
    const UnpackResult r = unpack(ap);
    EXPECT_TRUE(r.cancelled);
    EXPECT_TRUE(tree().empty());
}

TEST_F(Unpack, OneUndoTakesAWholeUnpackBack) {
    const fs::path ap = m_dir / "a.ap";
    ASSERT_TRUE(makeZip(ap, {{"A/one.txt", "1"}, {"A/two.txt", "new two"}}));
    put(dest() / "A/two.txt", "old two");
    {
        JournalCommand entry(m_journal.get(), "ap unpack");
        ASSERT_TRUE(unpack(ap).ok);
    }
    const auto last = lastUndoableEntry(m_journal->entries());
    ASSERT_TRUE(last);
    const UndoResult u = undoEntry(*m_files, *last, false);
    ASSERT_TRUE(u.ok) << u.message;
    EXPECT_EQ(ReadTextFile(dest() / "A/two.txt"), "old two");
    EXPECT_FALSE(fs::exists(dest() / "A/one.txt"));
}

TEST_F(Unpack, DamagedAndForeignArchivesAreNamedNeverSkipped) {
    const fs::path garbage = m_dir / "garbage.ap";
    put(garbage, std::string(5000, 'z'));
    UnpackResult r = unpack(garbage);
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.find("garbage.ap"), std::string::npos);

    const fs::path fifo = m_dir / "fifo.ap";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    r = unpack(fifo); // would block for ever if it were opened
    EXPECT_FALSE(r.ok);
    EXPECT_NE(r.error.find("not a plain file"), std::string::npos) << r.error;

    // An archive cut short: its entries' data is not all there.
    const fs::path whole = m_dir / "whole.ap";
    std::string noise(200000, '\0');
    unsigned seed = 7;
    for (char& c : noise)
        c = static_cast<char>((seed = seed * 1103515245u + 12345u) >> 16);
    ASSERT_TRUE(makeZip(whole, {{"a.bin", noise}}));
    std::string bytes = ReadTextFile(whole);
    const fs::path cut = m_dir / "cut.ap";
    put(cut, bytes.substr(0, 1000) + bytes.substr(bytes.size() - 200)); // keeps the directory at the end
    r = unpack(cut);
    if (r.ok) {
        ASSERT_EQ(r.refused.size(), 1u);
        EXPECT_NE(r.refused[0].find("a.bin"), std::string::npos) << r.refused[0];
    }
    EXPECT_TRUE(tree().empty());
}

TEST_F(Unpack, AnEntryBeyondTheLimitStopsAtItAndSaysSo) {
    const fs::path ap = m_dir / "a.ap";
    ASSERT_TRUE(makeZip(ap, {{"big.bin", std::string(1 << 20, '\0')}, {"small.bin", "s"}}));
    UnpackOptions o;
    o.destination = dest();
    o.entryLimit = 1000;
    const UnpackResult r = unpackArchive(*m_files, ap, o, nullptr);
    ASSERT_TRUE(r.ok) << r.error;
    EXPECT_EQ(tree(), std::vector<std::string>{"small.bin=s"});
    ASSERT_EQ(r.refused.size(), 1u);
    EXPECT_NE(r.refused[0].find("more than"), std::string::npos) << r.refused[0];
}

TEST_F(Unpack, ManyEntriesAndAChosenFew) {
    std::vector<test::TestEntry> entries;
    for (int i = 0; i < 200000; ++i)
        entries.push_back({"F" + std::to_string(i % 100) + "/e" + std::to_string(i) + ".txt", ""});
    const fs::path ap = m_dir / "many.ap";
    ASSERT_TRUE(makeZip(ap, entries));
    ZipReader zip;
    ASSERT_TRUE(zip.open(ap)) << zip.error();
    EXPECT_EQ(zip.count(), 200000u);
    EXPECT_EQ(zip.find("f7\\E107.TXT"), 107);
    UnpackOptions o;
    o.destination = dest();
    o.only = {5, 199999};
    o.keepPaths = false;
    const UnpackResult r = unpackArchive(*m_files, ap, o, nullptr);
    ASSERT_TRUE(r.ok) << r.error;
    EXPECT_EQ(tree(), (std::vector<std::string>{"e199999.txt=", "e5.txt="}));
}

} // namespace
