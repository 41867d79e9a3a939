// The conversion services every tool goes through: the converter's contract that a failed
// conversion leaves no output (or an empty one), and errors that name the file.

#include "tempdir.h"

#include "serz/serz.h"
#include "velmora/core/convert.h"
#include "velmora/core/services.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace velmora;
using velmora::test::TempDir;

namespace {

const std::string kXml = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
                         "<cThing xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\">\r\n"
                         "\t<Name d:type=\"cDeltaString\">First</Name>\r\n"
                         "\t<Speed d:type=\"sFloat32\" d:alt_encoding=\"0000000000002940\" d:precision=\"string\">12.5</Speed>\r\n"
                         "</cThing>\r\n";

} // namespace

TEST(Convert, BothWaysThroughFilesAndInMemoryAgree) {
    TempDir dir;
    std::string bin;
    ASSERT_TRUE(xmlTextToBin(kXml, bin));
    dir.write("a.xml", kXml);
    ASSERT_TRUE(SerzToBin(dir / "a.xml", dir / "a.bin"));
    EXPECT_EQ(ReadTextFile(dir / "a.bin"), bin);
    EXPECT_TRUE(conversionSucceeded(dir / "a.bin"));

    ASSERT_TRUE(SerzToXml(dir / "a.bin", dir / "back.xml"));
    EXPECT_EQ(ReadTextFile(dir / "back.xml"), kXml) << "the converter's own text, byte for byte";
    std::string xml;
    ASSERT_TRUE(binToXmlText(dir / "a.bin", xml));
    EXPECT_EQ(xml, kXml);
}

TEST(Convert, AFailedConversionLeavesNoOutputAndNamesTheFile) {
    TempDir dir;
    dir.write("bad.bin", "SERZ but not really a document");
    dir.write("stale.xml", "an old conversion that must not pass for a new one");
    ConvertResult r = SerzToXml(dir / "bad.bin", dir / "stale.xml");
    EXPECT_FALSE(r);
    EXPECT_FALSE(fs::exists(dir / "stale.xml"));
    EXPECT_FALSE(conversionSucceeded(dir / "stale.xml"));
    EXPECT_EQ(r.message.rfind((dir / "bad.bin").string() + ": ", 0), 0u) << r.message;

    dir.write("bad.xml", "<cThing><Open></cThing>");
    dir.write("stale.bin", "old");
    r = SerzToBin(dir / "bad.xml", dir / "stale.bin");
    EXPECT_FALSE(r);
    EXPECT_FALSE(fs::exists(dir / "stale.bin"));
    EXPECT_NE(r.message.find("bad.xml"), std::string::npos);
    EXPECT_NE(r.message.find("line"), std::string::npos) << "XML errors name the line: " << r.message;

    std::string xml = "stale";
    r = binToXmlText(dir / "nothing.bin", xml);
    EXPECT_FALSE(r);
    EXPECT_NE(r.message.find("nothing.bin: cannot be read"), std::string::npos) << r.message;
    EXPECT_FALSE(SerzToXml(dir / "nothing.bin", dir / "n.xml"));
    EXPECT_FALSE(fs::exists(dir / "n.xml"));

    std::string bin;
    r = xmlTextToBin("<cThing>", bin, "typed.xml");
    EXPECT_FALSE(r);
    EXPECT_EQ(r.message.rfind("typed.xml: ", 0), 0u) << r.message;
}

TEST(Convert, AnEmptyOutputNeverCountsAsSuccess) {
    TempDir dir;
    dir.write("empty.xml", "");
    EXPECT_FALSE(conversionSucceeded(dir / "empty.xml"));
    EXPECT_FALSE(conversionSucceeded(dir / "absent.xml"));
    EXPECT_FALSE(conversionSucceeded(dir.path())) << "a folder is no output";
}

TEST(Convert, NeitherTheReadersNorTheConvertersWaitOnAFifo) {
    TempDir dir;
    const fs::path fifo = dir / "Tile.bin";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    // Each of these would block for ever on open() if it tried to read the FIFO.
    EXPECT_FALSE(FileExists(fifo));
    EXPECT_EQ(ReadTextFile(fifo), "");
    std::string xml;
    const ConvertResult r = binToXmlText(fifo, xml);
    EXPECT_FALSE(r);
    EXPECT_NE(r.message.find("Tile.bin: is not a regular file"), std::string::npos) << r.message;
    EXPECT_FALSE(SerzToXml(fifo, dir / "Tile.xml"));
    EXPECT_FALSE(fs::exists(dir / "Tile.xml"));
}
