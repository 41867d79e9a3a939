// The editor's round trip of a document on disk: scratch files, backups, other extensions.

#include "tempdir.h"
#include "velmora/core/document.h"
#include "velmora/core/filewrite.h"
#include "velmora/core/services.h"

#include "serz/serz.h"

#include <gtest/gtest.h>

using namespace velmora;
using velmora::test::TempDir;

namespace {

const std::string kXml = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
                         "<cThing xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\">\r\n"
                         "\t<Name d:type=\"cDeltaString\">First</Name>\r\n"
                         "</cThing>\r\n";

std::string binary(const std::string& xml) {
    std::string bin;
    EXPECT_TRUE(serz::encode(xml, bin).ok);
    return bin;
}

std::string edited(std::string xml) {
    xml.replace(xml.find("First"), 5, "Second");
    return xml;
}

} // namespace

TEST(EditorDocument, NamesSplitAtTheLastDot) {
    std::string name, ext;
    splitDocumentName("/a/b/Bogie.part.XSec", name, ext);
    EXPECT_EQ(name, "Bogie.part.");
    EXPECT_EQ(ext, "XSec");
    splitDocumentName("/a/b/README", name, ext);
    EXPECT_EQ(name, "README.");
    EXPECT_EQ(ext, "");
}

TEST(EditorDocument, AnotherExtensionGoesThroughTheScratchBin) {
    TempDir dir;
    WriteService files;
    dir.write("rw/Shape.XSec", binary(kXml));
    EditorDocument doc;
    std::string xml;
    ASSERT_TRUE(openBinaryDocument(dir / "rw/Shape.XSec", dir / "temp", doc, xml));
    EXPECT_EQ(xml, kXml);
    EXPECT_EQ(doc.tempBin(), dir / "temp/Shape.bin");
    EXPECT_TRUE(FileExists(dir / "temp/Shape.xml"));

    std::vector<std::string> steps;
    const SaveResult r = saveBinaryDocument(files, doc, edited(xml), [&](const std::string& s) { steps.push_back(s); });
    ASSERT_TRUE(r.ok) << r.message;
    EXPECT_EQ(r.backup, dir / "rw/Shape.XSec.bak");
    EXPECT_EQ(ReadTextFile(dir / "rw/Shape.XSec"), binary(edited(kXml)));
    EXPECT_EQ(ReadTextFile(dir / "temp/Shape.XSec"), binary(edited(kXml))) << "renamed from the scratch .bin";
    EXPECT_FALSE(FileExists(dir / "temp/Shape.bin"));
    ASSERT_EQ(steps.size(), 3u);
    EXPECT_EQ(steps[0], "Making Backup of strBin");
    EXPECT_EQ(steps[1], "Copying new .bin file");
    EXPECT_EQ(steps[2].rfind("Finished at ", 0), 0u);
}

TEST(EditorDocument, ADocumentInTheScratchFolderOpensAsItsOwnCopy) {
    TempDir dir;
    dir.write("temp/Saved.bin", binary(kXml));
    dir.write("temp/Saved.xml", kXml);
    EditorDocument doc;
    std::string xml;
    const ConvertResult r = openBinaryDocument(dir / "temp/Saved.bin", dir / "temp", doc, xml);
    ASSERT_TRUE(r) << r.message;
    EXPECT_EQ(xml, kXml);
    ASSERT_TRUE(openXmlDocument(dir / "temp/Saved.xml", dir / "temp", doc, xml));
    EXPECT_EQ(xml, kXml);
    EXPECT_EQ(ReadTextFile(dir / "temp/Saved.bin"), binary(kXml));
}

TEST(EditorDocument, SaveAsLeavesTheOriginalAlone) {
    TempDir dir;
    WriteService files;
    dir.write("rw/Thing.bin", binary(kXml));
    EditorDocument doc;
    std::string xml;
    ASSERT_TRUE(openBinaryDocument(dir / "rw/Thing.bin", dir / "temp", doc, xml));
    const SaveResult r = saveBinaryDocumentAs(files, doc, edited(xml), dir / "temp/Copy.of.xml");
    ASSERT_TRUE(r.ok) << r.message;
    EXPECT_EQ(r.written, dir / "temp/Copy.bin") << "the name up to its first dot is the base";
    EXPECT_EQ(ReadTextFile(dir / "rw/Thing.bin"), binary(kXml));
    EXPECT_FALSE(FileExists(dir / "rw/Thing.bin.bak"));
}

TEST(EditorDocument, RefusedTextAndMissingFilesChangeNothing) {
    TempDir dir;
    WriteService files;
    dir.write("rw/Thing.bin", binary(kXml));
    EditorDocument doc;
    std::string xml;
    ASSERT_TRUE(openBinaryDocument(dir / "rw/Thing.bin", dir / "temp", doc, xml));
    const SaveResult r = saveBinaryDocument(files, doc, "<cThing><Name d:type=\"sInt32\">x</Name></cThing>");
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(r.message.rfind(recompressFailedMessage(), 0), 0u);
    EXPECT_EQ(ReadTextFile(dir / "rw/Thing.bin"), binary(kXml));
    EXPECT_FALSE(FileExists(dir / "rw/Thing.bin.bak"));

    const ConvertResult missing = openBinaryDocument(dir / "rw/None.bin", dir / "temp", doc, xml);
    EXPECT_FALSE(missing);
    EXPECT_NE(missing.message.find("None.bin"), std::string::npos);
    EXPECT_TRUE(xml.empty());

    // An XML document is never saved through the codec.
    ASSERT_TRUE(openXmlDocument(dir / "temp/Thing.xml", dir / "temp2", doc, xml));
    EXPECT_FALSE(saveBinaryDocument(files, doc, xml).ok);
}
