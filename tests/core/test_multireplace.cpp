// Search and replace over many documents: each changed document goes through the round trip
// and keeps its old file as a backup, one without a hit is not touched, a change that does not
// encode leaves the document whole, and a failed write leaves every old file as it was.

#include "faultyfiles.h"
#include "tempdir.h"

#include "velmora/core/appcontext.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/multireplace.h"
#include "velmora/core/userinterface.h"

#include <gtest/gtest.h>

using namespace velmora;
using velmora::test::slurp;
using velmora::test::TempDir;
namespace fs = std::filesystem;

namespace {

std::string documentXml(const std::string& name, const std::string& speed = "12.5") {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
           "<cThing xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\">\r\n"
           "\t<Name d:type=\"cDeltaString\">" +
           name + "</Name>\r\n\t<Other d:type=\"cDeltaString\">" + speed + "</Other>\r\n</cThing>\r\n";
}

struct Fixture {
    TempDir dir;
    ScriptedUi ui;
    AppContext ctx{dir / "home", dir / "data", ui};

    fs::path document(const std::string& rel, const std::string& name, const std::string& other = "12.5") {
        std::string bin;
        EXPECT_TRUE(xmlTextToBin(documentXml(name, other), bin));
        return dir.write(rel, bin);
    }
    static std::string xmlOf(const fs::path& file) {
        std::string xml;
        EXPECT_TRUE(binToXmlText(file, xml)) << file;
        return xml;
    }
    MultiReplaceResult run(const std::vector<fs::path>& files, const std::string& find, const std::string& with,
                           int threads = 0) {
        MultiReplaceOptions o;
        o.find = find;
        o.replacement = with;
        o.threads = threads;
        return replaceInFiles(ctx, files, o, nullptr);
    }
};

} // namespace

TEST(ReplaceText, IgnoresCaseAndNeverReplacesWhatItPutIn) {
    std::string xml = "<a>Red red RED</a>";
    EXPECT_EQ(replaceInDocumentText(xml, "red", "reddish", true), 3u);
    EXPECT_EQ(xml, "<a>reddish reddish reddish</a>");
    xml = "<a>Red red</a>";
    EXPECT_EQ(replaceInDocumentText(xml, "red", "x", false), 1u);
    EXPECT_EQ(xml, "<a>Red x</a>");
    EXPECT_EQ(replaceInDocumentText(xml, "", "x", true), 0u) << "an empty search changes nothing";
    EXPECT_EQ(replaceInDocumentText(xml, "absent", "x", true), 0u);
    EXPECT_EQ(xml, "<a>Red x</a>");
}

TEST(ReplaceText, ADocumentInOneByteCharactersKeepsItsOtherBytes) {
    // Not UTF-8: "Caf\xE9" stays one byte, and what is typed comes in as the same one-byte form.
    std::string xml = "<a>Caf\xE9 Bahnhof</a>";
    EXPECT_EQ(replaceInDocumentText(xml, "Bahnhof", "Z\u00fcrich", true), 1u);
    EXPECT_EQ(xml, "<a>Caf\xE9 Z\xFCrich</a>");
    EXPECT_EQ(replaceInDocumentText(xml, "caf\u00e9", "Bar", true), 1u) << "an accented search matches its byte";
    EXPECT_EQ(xml, "<a>Bar Z\xFCrich</a>");
}

TEST(MultiReplace, ChangesDocumentsWithHitsAndLeavesTheOthersWithoutBackup) {
    Fixture f;
    const fs::path a = f.document("r/a.bin", "Red Signal");
    const fs::path b = f.document("r/b.bin", "green");
    const fs::path c = f.document("r/c.xml.bin", "RED and red");
    const std::string bBefore = slurp(b);
    const auto r = f.run({a, b, c}, "red", "Blue");
    ASSERT_TRUE(r.error.empty()) << r.error;
    EXPECT_FALSE(r.anyFailed());
    ASSERT_EQ(r.files.size(), 3u);
    EXPECT_EQ(r.files[0].state, FileReplace::State::Changed);
    EXPECT_EQ(r.files[0].count, 1u);
    EXPECT_EQ(r.files[1].state, FileReplace::State::Unchanged);
    EXPECT_EQ(r.files[2].count, 2u);
    EXPECT_EQ(r.changed, 2u);
    EXPECT_EQ(r.replacements, 3u);
    EXPECT_EQ(Fixture::xmlOf(a), documentXml("Blue Signal"));
    EXPECT_EQ(Fixture::xmlOf(c), documentXml("Blue and Blue"));
    EXPECT_EQ(r.files[0].backup, fs::path(a.string() + ".bak"));
    EXPECT_TRUE(fs::exists(a.string() + ".bak"));
    EXPECT_EQ(slurp(b), bBefore);
    EXPECT_FALSE(fs::exists(b.string() + ".bak")) << "a document without a hit gets no backup";

    // The whole run is one journal entry, and one undo takes every document back.
    const auto entries = f.ctx.journal().entries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].command, "Replace in all selected files");
    EXPECT_EQ(entries[0].files.size(), 2u);
    ASSERT_TRUE(undoEntry(f.ctx.files(), entries[0].id, false).ok);
    EXPECT_EQ(Fixture::xmlOf(a), documentXml("Red Signal"));
    EXPECT_EQ(Fixture::xmlOf(c), documentXml("RED and red"));
}

TEST(MultiReplace, NamesWithAccentsQuotesAndCommasAndAnAccentedReplacement) {
    Fixture f;
    const fs::path odd = f.document("Z\u00fcrich \"Hbf\"/O'Brien, Caf\u00e9.bin", "Caf\u00e9 Alpina");
    const auto r = f.run({odd}, "CAF\u00c9", "Caf\u00e9 \"Z\u00fcrich\"");
    ASSERT_FALSE(r.anyFailed()) << describe(r);
    // The converter writes a quote in element text as its entity.
    EXPECT_EQ(Fixture::xmlOf(odd), documentXml("Caf\u00e9 &quot;Z\u00fcrich&quot; Alpina"));
    EXPECT_NE(describe(r).find("O'Brien, Caf\u00e9.bin: 1 replacement"), std::string::npos) << describe(r);
}

TEST(MultiReplace, UnreadableDocumentsAreNamedAndTheOthersStillChange) {
    Fixture f;
    const fs::path good = f.document("good.bin", "Red");
    const fs::path garbage = f.dir.write("garbage.bin", "not a document at all");
    const fs::path missing = f.dir / "gone \u00e9.bin";
    const auto r = f.run({garbage, good, missing}, "red", "Blue");
    EXPECT_TRUE(r.anyFailed());
    EXPECT_EQ(r.files[0].state, FileReplace::State::Unreadable);
    EXPECT_NE(r.files[0].message.find("garbage.bin"), std::string::npos) << r.files[0].message;
    EXPECT_EQ(r.files[2].state, FileReplace::State::Unreadable);
    EXPECT_NE(r.files[2].message.find("gone \u00e9.bin"), std::string::npos) << r.files[2].message;
    EXPECT_EQ(r.files[1].state, FileReplace::State::Changed);
    EXPECT_EQ(slurp(garbage), "not a document at all");
    const std::string text = describe(r);
    EXPECT_NE(text.find("garbage.bin"), std::string::npos);
    EXPECT_NE(text.find("1 document changed"), std::string::npos) << text;
}

TEST(MultiReplace, XmlSpecialCharactersGoInAsTyped) {
    Fixture f;
    const fs::path escaped = f.document("escaped.bin", "Tom and Jerry");
    const fs::path broken = f.document("broken.bin", "Tom and Jerry");
    const std::string before = slurp(broken);
    // An entity is XML text: the document holds "&" and its XML shows the entity again.
    auto r = f.run({escaped}, " and ", " &amp; ");
    ASSERT_FALSE(r.anyFailed()) << describe(r);
    EXPECT_EQ(Fixture::xmlOf(escaped), documentXml("Tom &amp; Jerry"));
    // A bare "<" makes XML the encoder refuses: the document stays whole, with no backup, named
    // with the message users know.
    r = f.run({broken}, " and ", " <b> ");
    ASSERT_EQ(r.files[0].state, FileReplace::State::NotEncoded);
    EXPECT_NE(r.files[0].message.find("broken.bin"), std::string::npos);
    EXPECT_NE(r.files[0].message.find(kNotRecompressed), std::string::npos);
    EXPECT_EQ(slurp(broken), before);
    EXPECT_FALSE(fs::exists(broken.string() + ".bak"));
    EXPECT_EQ(r.changed, 0u);
}

TEST(MultiReplace, AFailedWriteLeavesEveryOldFileWhole) {
    Fixture f;
    const fs::path a = f.document("a.bin", "Red");
    const fs::path b = f.document("b.bin", "Red");
    const std::string aBefore = slurp(a), bBefore = slurp(b);
    // The second document's new content cannot take its name: the first is put back.
    test::FaultyFiles replaceFails(WriteStep::Replace, std::errc::io_error, 1);
    f.ctx.files().setFileOps(&replaceFails);
    auto r = f.run({a, b}, "red", "Blue", 1);
    f.ctx.files().setFileOps(nullptr);
    EXPECT_FALSE(r.error.empty());
    EXPECT_EQ(r.changed, 0u);
    EXPECT_EQ(slurp(a), aBefore);
    EXPECT_EQ(slurp(b), bBefore);
    // A full disk while the new content is written: nothing of the run takes a name, no
    // temporary file is left.
    test::FaultyFiles diskFull(WriteStep::Write, std::errc::no_space_on_device);
    f.ctx.files().setFileOps(&diskFull);
    r = f.run({a, b}, "red", "Blue", 1);
    f.ctx.files().setFileOps(nullptr);
    EXPECT_NE(r.error.find("nothing of it was written"), std::string::npos) << r.error;
    EXPECT_EQ(slurp(b), bBefore);
    EXPECT_EQ(Fixture::xmlOf(a), documentXml("Red"));
    for (const auto& e : fs::directory_iterator(f.dir.path()))
        EXPECT_EQ(e.path().filename().string().find(".tmp"), std::string::npos) << e.path();
}

TEST(MultiReplace, DryRunCountsAndWritesNothingTheSameOnAnyNumberOfThreads) {
    Fixture f;
    std::vector<fs::path> files;
    for (int i = 0; i < 40; ++i)
        files.push_back(f.document("d" + std::to_string(i) + ".bin", i % 3 ? "red red" : "none"));
    MultiReplaceOptions o;
    o.find = "red";
    o.replacement = "x";
    o.dryRun = true;
    o.threads = 1;
    const auto one = replaceInFiles(f.ctx, files, o, nullptr);
    o.threads = 4;
    const auto four = replaceInFiles(f.ctx, files, o, nullptr);
    EXPECT_EQ(one.changed, 26u);
    EXPECT_EQ(one.replacements, 52u);
    ASSERT_EQ(four.files.size(), one.files.size());
    for (std::size_t i = 0; i < files.size(); ++i) {
        EXPECT_EQ(four.files[i].file, one.files[i].file);
        EXPECT_EQ(four.files[i].count, one.files[i].count);
    }
    EXPECT_FALSE(fs::exists(files[1].string() + ".bak"));
    EXPECT_TRUE(f.ctx.journal().entries().empty());
    EXPECT_NE(describe(one, true).find("26 documents would change"), std::string::npos);
}

TEST(MultiReplace, TheSameDocumentNamedTwiceIsWrittenOnce) {
    Fixture f;
    const fs::path a = f.document("a.bin", "Red");
    const auto r = f.run({a, f.dir / "./a.bin"}, "red", "Blue");
    ASSERT_FALSE(r.anyFailed()) << describe(r);
    EXPECT_EQ(r.changed, 1u);
    EXPECT_FALSE(fs::exists(a.string() + ".bak1"));
}

TEST(SaveAsXml, EmptiesTheFolderAndNamesWhatCannotBeRead) {
    Fixture f;
    const fs::path a = f.document("a.bin", "Red");
    f.dir.write("TempXML/old.xml", "stale");
    const auto problems = saveAsXml({a, f.dir / "missing.bin"}, f.dir / "TempXML", nullptr);
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_NE(problems[0].find("missing.bin"), std::string::npos);
    EXPECT_EQ(slurp(f.dir / "TempXML/a.xml"), documentXml("Red"));
    EXPECT_FALSE(fs::exists(f.dir / "TempXML/old.xml"));
}

TEST(MultiReplace, AbortBeforeTheEndWritesNothing) {
    Fixture f;
    std::vector<fs::path> files;
    std::string bin;
    ASSERT_TRUE(xmlTextToBin(documentXml("Red"), bin));
    for (int i = 0; i < 1500; ++i)
        files.push_back(f.dir.write("many/d" + std::to_string(i) + ".bin", bin));
    f.ui.cancelAfter(0); // Abort at the first look at the progress
    MultiReplaceOptions o;
    o.find = "red";
    o.replacement = "Blue";
    o.threads = 1;
    const auto r = replaceInFiles(f.ctx, files, o, &f.ui);
    ASSERT_TRUE(r.stopped) << "the run ended before the first look at Abort";
    EXPECT_EQ(describe(r), "Stopped: nothing was written.\n");
    EXPECT_EQ(slurp(files.front()), bin);
    EXPECT_TRUE(f.ctx.journal().entries().empty());
    for (const auto& e : fs::directory_iterator(f.dir / "many"))
        EXPECT_EQ(e.path().extension(), ".bin") << "no backup and no temporary file: " << e.path();
}
