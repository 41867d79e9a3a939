// The journal of changes and undo: one entry a command, every file put back, created files taken
// away, changed files refused, undo walking back in time.

#include "tempdir.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/journal.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonDocument>

#include <gtest/gtest.h>

using namespace velmora;
using velmora::test::TempDir;
namespace fs = std::filesystem;

namespace {

struct Workspace {
    TempDir dir;
    Journal journal{dir / "home/Journal.jsonl"};
    WriteService files{nullptr, &journal};

    // A batch command: two documents changed, one report created.
    void batch(const std::string& version) {
        JournalCommand command(&journal, "batch " + version);
        ASSERT_TRUE(files.write(dir / "rw/A.bin", "A " + version));
        ASSERT_TRUE(files.write(dir / "rw/B.bin", "B " + version));
        ASSERT_TRUE(files.write(dir / ("rw/Report " + version + ".csv"), "report"));
    }
};

} // namespace

TEST(Journal, OneCommandIsOneEntryWithEveryFileItWrote) {
    Workspace w;
    w.dir.write("rw/A.bin", "A0");
    w.dir.write("rw/B.bin", "B0");
    w.batch("1");
    {
        // A command inside a command joins it.
        JournalCommand outer(&w.journal, "outer");
        JournalCommand inner(&w.journal, "inner");
        ASSERT_TRUE(w.files.write(w.dir / "rw/A.bin", "A nested"));
    }
    ASSERT_TRUE(w.files.write(w.dir / "rw/Alone.txt", "x")); // no command: an entry of its own
    WriteOptions scratch;
    scratch.journal = false;
    ASSERT_TRUE(w.files.write(w.dir / "rw/Scratch.xml", "x", scratch));

    const auto entries = w.journal.entries();
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[0].id, 1);
    EXPECT_EQ(entries[0].command, "batch 1");
    ASSERT_EQ(entries[0].files.size(), 3u);
    const JournalFile& a = entries[0].files[0];
    EXPECT_EQ(a.path, w.dir / "rw/A.bin");
    EXPECT_EQ(a.backup, w.dir / "rw/A.bin.bak");
    EXPECT_FALSE(a.created);
    EXPECT_EQ(a.size, 3u);
    EXPECT_EQ(a.sha256, sha256Hex("A 1"));
    EXPECT_EQ(a.backupSize, 2u);
    EXPECT_TRUE(entries[0].files[2].created);
    EXPECT_TRUE(entries[0].files[2].backup.empty());
    EXPECT_EQ(entries[1].command, "outer");
    EXPECT_EQ(entries[2].command, "write " + (w.dir / "rw/Alone.txt").string());
}

TEST(Journal, UndoPutsEveryFileBackAndWalksBackInTime) {
    Workspace w;
    w.dir.write("rw/A.bin", "A0");
    w.dir.write("rw/B.bin", "B0");
    w.batch("1");
    w.batch("2");
    auto entries = w.journal.entries();
    ASSERT_EQ(lastUndoableEntry(entries), 2);

    UndoResult r = undoEntry(w.files, 2, false);
    ASSERT_TRUE(r.ok) << r.message;
    EXPECT_EQ(test::slurp(w.dir / "rw/A.bin"), "A 1");
    EXPECT_EQ(test::slurp(w.dir / "rw/B.bin"), "B 1");
    EXPECT_FALSE(fs::exists(w.dir / "rw/Report 2.csv")) << "a file the command made is taken away";
    EXPECT_EQ(test::slurp(w.dir / "rw/Report 2.csv.bak"), "report") << "... but never deleted";
    EXPECT_EQ(r.restored.size(), 2u);
    EXPECT_EQ(r.removed.size(), 1u);

    // The undo is an entry of its own; the next plain undo passes over it and the undone one.
    entries = w.journal.entries();
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[2].undoes, 2);
    EXPECT_EQ(entries[2].command, "undo 2");
    EXPECT_EQ(entries[1].undoneBy, 3);
    ASSERT_EQ(lastUndoableEntry(entries), 1);

    // Undoing an undo puts the command's work back, the file it had made included; the command
    // is then the newest change again.
    ASSERT_TRUE(undoEntry(w.files, 3, false).ok);
    EXPECT_EQ(test::slurp(w.dir / "rw/A.bin"), "A 2");
    EXPECT_EQ(test::slurp(w.dir / "rw/Report 2.csv"), "report");
    ASSERT_EQ(lastUndoableEntry(w.journal.entries()), 2);

    // Plain undo, again and again, walks back to the start.
    for (long expected : {2, 1}) {
        const auto next = lastUndoableEntry(w.journal.entries());
        ASSERT_EQ(next, expected);
        ASSERT_TRUE(undoEntry(w.files, *next, false).ok);
    }
    EXPECT_EQ(test::slurp(w.dir / "rw/A.bin"), "A0");
    EXPECT_EQ(test::slurp(w.dir / "rw/B.bin"), "B0");
    EXPECT_FALSE(fs::exists(w.dir / "rw/Report 1.csv"));
    EXPECT_FALSE(fs::exists(w.dir / "rw/Report 2.csv"));
    EXPECT_EQ(lastUndoableEntry(w.journal.entries()), std::nullopt);
    EXPECT_FALSE(undoEntry(w.files, 1, false).ok) << "an entry is undone once";
    EXPECT_FALSE(undoEntry(w.files, 99, false).ok);
}

TEST(Journal, UndoRefusesFilesChangedSinceUnlessForced) {
    Workspace w;
    w.dir.write("rw/A.bin", "A0");
    w.dir.write("rw/B.bin", "B0");
    w.batch("1");
    w.dir.write("rw/B.bin", "edited by hand");
    UndoResult r = undoEntry(w.files, 1, false);
    EXPECT_FALSE(r.ok);
    ASSERT_EQ(r.conflicts.size(), 1u);
    EXPECT_NE(r.conflicts[0].find("B.bin: has changed since"), std::string::npos) << r.conflicts[0];
    EXPECT_EQ(test::slurp(w.dir / "rw/A.bin"), "A 1") << "nothing is undone when anything conflicts";
    EXPECT_EQ(w.journal.entries().size(), 1u);

    // Forced, the hand edit is kept as a numbered backup, not lost.
    r = undoEntry(w.files, 1, true);
    ASSERT_TRUE(r.ok) << r.message;
    EXPECT_EQ(test::slurp(w.dir / "rw/B.bin"), "B0");
    EXPECT_EQ(test::slurp(w.dir / "rw/B.bin.bak1"), "edited by hand");

    // A backup that went missing is named too.
    w.batch("2");
    fs::remove(w.dir / "rw/A.bin.bak2");
    const auto plan = planUndo(w.journal.entries(), 3);
    ASSERT_EQ(plan.conflicts.size(), 1u);
    EXPECT_NE(plan.conflicts[0].find("A.bin.bak2 is missing"), std::string::npos) << plan.conflicts[0];
}

TEST(Journal, SurvivesACutOffRecordAndNamesInAnyCodePage) {
    Workspace w;
    const std::string odd = std::string("rw/Caf\xE9 \"quoted\", 1.bin"); // Windows-1252, not UTF-8
    {
        JournalCommand command(&w.journal, "odd names");
        ASSERT_TRUE(w.files.write(w.dir / odd, "x"));
    }
    // A record cut off by a kill.
    w.files.append(w.journal.file(), "{\"entry\": 2, \"command\": \"cut");
    {
        JournalCommand command(&w.journal, "after the cut");
        ASSERT_TRUE(w.files.write(w.dir / "rw/Next.bin", "y"));
    }
    const auto entries = w.journal.entries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].files[0].path, w.dir / odd);
    EXPECT_EQ(entries[1].id, 2);
    EXPECT_EQ(entries[1].command, "after the cut");

    // History for people and for scripts, newest first.
    const std::string text = formatHistory(entries, true);
    EXPECT_LT(text.find("after the cut"), text.find("odd names"));
    EXPECT_NE(text.find("created  "), std::string::npos);
    const QJsonDocument json = QJsonDocument::fromJson(QByteArray::fromStdString(historyJson(entries)));
    ASSERT_TRUE(json.isArray());
    EXPECT_EQ(json.array().at(0).toObject().value("entry").toInt(), 2);
    EXPECT_EQ(json.array().at(1).toObject().value("files").toArray().size(), 1);
}
