#include "serz/serz.h"
#include "testfiles.h"
#include "../common/hostile.h"

#include <sys/stat.h>
#include <unistd.h>

using namespace serz;
using namespace serztest;

namespace {

// A binary document built by hand: header, then tokens.
struct Bin {
    std::string b{"SERZ\0\0\1\0", 8};
    Bin& u8(int v) { b += static_cast<char>(v); return *this; }
    Bin& u16(int v) { b += static_cast<char>(v & 0xFF); b += static_cast<char>((v >> 8) & 0xFF); return *this; }
    Bin& u32(long long v) { for (int i = 0; i < 4; ++i) b += static_cast<char>((v >> (8 * i)) & 0xFF); return *this; }
    Bin& str(const std::string& s, int chars) { u16(0xFFFF); u32(chars); b += s; return *this; }
    Bin& ref(int i) { return u16(i); }
    Bin& full(char kind) { b += '\xFF'; b += kind; return *this; }
};

std::string decoded(const std::string& bin, WriteOptions o = {LineEnd::Lf, 3}) {
    std::string xml;
    const Status s = decode(bin, xml, o);
    EXPECT_TRUE(s.ok) << s.message;
    return xml;
}

const char* kHead = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";

} // namespace

TEST(Decode, ConverterXmlByteForByte) {
    SKIP_WITHOUT_TESTDATA();
    const std::string bin = slurp(testdata("routeproperties.bin"));
    const std::string expected = slurp(testdata("routeproperties.serz.xml"));
    EXPECT_EQ(decoded(bin), expected);
    std::string crlf;
    ASSERT_TRUE(decode(bin, crlf, {LineEnd::CrLf, 3}).ok);
    EXPECT_EQ(crlf, toCrLf(expected)) << "the converter's own line ends";
    // serz64's flavour differs only in the exponent digits.
    const std::string two = decoded(bin, {LineEnd::Lf, 2});
    EXPECT_NE(two.find("5.76901e+06<"), std::string::npos);
    EXPECT_EQ(two.find("e+006"), std::string::npos);
}

TEST(Decode, EveryRealDocumentComesBackThroughLosslessImport) {
    SKIP_WITHOUT_TESTDATA();
    for (const char* name : {"routeproperties.bin", "Bogie01.bin", "bogie_audio_control.proxybin"}) {
        const std::string bin = slurp(testdata(name));
        std::string xml, back;
        ASSERT_TRUE(decode(bin, xml).ok) << name;
        ASSERT_TRUE(encode(xml, back).ok) << name;
        EXPECT_EQ(back, bin) << name;
    }
    // The game's texture carries the FF 43 record, which takes a ring slot and is never written.
    const std::string tex = slurp(testdata("WheelCompleteMap.TgPcDx"));
    std::string xml, back, again;
    ASSERT_TRUE(decode(tex, xml).ok);
    EXPECT_NE(xml.find("HC_IMAGE_FORMAT_COMPRESSED_EXPL_ALPHA"), std::string::npos);
    EXPECT_NE(xml.find("<d:blob d:size=\"1048576\">"), std::string::npos);
    ASSERT_TRUE(encode(xml, back).ok);
    EXPECT_NE(back, tex);
    ASSERT_TRUE(decode(back, again).ok);
    EXPECT_EQ(again, xml) << "but the document it holds is the same";
}

TEST(Decode, EveryTruncatedPrefixFailsCleanly) {
    SKIP_WITHOUT_TESTDATA();
    for (const char* name : {"routeproperties.bin", "bogie_audio_control.proxybin"}) {
        const std::string bin = slurp(testdata(name));
        for (std::size_t n = 0; n < bin.size(); ++n) {
            std::string xml = "stale";
            const Status s = decode(std::string_view(bin).substr(0, n), xml);
            ASSERT_FALSE(s.ok) << name << " cut at " << n;
            ASSERT_TRUE(xml.empty());
            ASSERT_LE(s.offset, n);
        }
    }
}

TEST(Decode, TheRingTheStringTableAndElementForms) {
    Bin d;
    d.full('P').str("Root", 4).u32(-5).u32(5);         // slot 0
    d.full('V').str("", 0).str("sInt32", 6).u32(-7);    // slot 1: empty name shows as e
    d.u8(1).u32(8);                                     // back-reference to slot 1
    d.full('P').str("Net::cThing", 11).u32(0).u32(0);   // slot 2
    d.full('p').ref(2);                                 // slot 3: right after its open
    d.full('N');                                        // slot 4
    d.full('R').str("Ref", 3).u32(-12);                 // slot 5
    d.full('V').str("S", 1).str("cDeltaString", 12).str("a'b\"<&>\x01", 8);
    d.full('p').ref(0);
    EXPECT_EQ(decoded(d.b), std::string(kHead) +
                                "<Root xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\" d:id=\"-5\">\n"
                                "\t<e d:type=\"sInt32\">-7</e>\n"
                                "\t<e d:type=\"sInt32\">8</e>\n"
                                "\t<Net-cThing/>\n"
                                "\t<d:nil/>\n"
                                "\t<Ref d:type=\"ref\">-12</Ref>\n"
                                "\t<S d:type=\"cDeltaString\">a&apos;b&quot;&lt;&amp;&gt;\x01</S>\n"
                                "</Root>\n");
}

TEST(Decode, RingWrapsAfter255FullTokensAndTheHintTakesASlot) {
    Bin e;
    e.full('C').u8(0).u32(1);                     // slot 0: the game's hint, read over
    e.full('P').str("R", 1).u32(0).u32(0);        // slot 1
    e.full('V').str("a", 1).str("bool", 4).u8(7); // slot 2: any non-zero byte is 1
    e.u8(2).u8(0);                                // back-reference to slot 2
    e.full('p').ref(0);                           // slot 3
    EXPECT_EQ(decoded(e.b), std::string(kHead) +
                                "<R xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\">\n"
                                "\t<a d:type=\"bool\">1</a>\n"
                                "\t<a d:type=\"bool\">0</a>\n"
                                "</R>\n");

    // 256 new templates: the ring wraps, and slot 0 then holds the 256th.
    Bin ring;
    ring.full('P').str("R", 1).u32(0).u32(0);          // slot 0; string 0
    ring.full('V').str("t", 1).str("sUInt8", 6).u8(0); // slot 1; strings 1, 2
    for (int i = 0; i < 254; ++i)                      // slots 2..254, then 0
        ring.full('V').str("n" + std::to_string(1000 + i), 5).ref(2).u8(1);
    ring.u8(0).u8(9); // slot 0 now holds n1253
    ring.u8(1).u8(5); // slot 1 still holds t
    ring.full('p').ref(0);
    const std::string xml = decoded(ring.b);
    EXPECT_NE(xml.find("\t<n1253 d:type=\"sUInt8\">1</n1253>\n\t<n1253 d:type=\"sUInt8\">9</n1253>\n"
                       "\t<t d:type=\"sUInt8\">5</t>\n</R>"),
              std::string::npos);
}

TEST(Decode, StringsAreCountedInCharacters) {
    Bin d;
    d.full('P').str("R", 1).u32(0).u32(1);
    // "België" is 6 characters in 7 bytes; U+FFE9 (a widened é) is one character in 3 bytes.
    d.full('V').str("n", 1).str("cDeltaString", 12).str("Belgi\xC3\xAB \xEF\xBF\xA9", 8);
    d.full('p').ref(0);
    EXPECT_NE(decoded(d.b).find(">Belgi\xC3\xAB \xEF\xBF\xA9</n>"), std::string::npos);
}

TEST(Decode, BlobsInTheirExactLayout) {
    Bin d;
    d.full('P').str("R", 1).u32(0).u32(1);
    d.full('B').u32(37);
    for (int i = 0; i < 37; ++i)
        d.u8(i);
    d.full('p').ref(0);
    const std::string xml = decoded(d.b);
    EXPECT_NE(xml.find("\t<d:blob d:size=\"37\">0001020304050607 08090A0B0C0D0E0F 1011121314151617 18191A1B1C1D1E1F\n"
                       "2021222324</d:blob>\n"),
              std::string::npos);
}

TEST(Decode, BadInputNamesTheByteAndLeavesNoOutput) {
    const auto error = [](const std::string& bin) {
        std::string xml = "stale";
        const Status s = decode(bin, xml);
        EXPECT_FALSE(s.ok);
        EXPECT_TRUE(xml.empty());
        return s;
    };
    EXPECT_NE(error("SERX\0\0\1\0").message.find("header"), std::string::npos);
    Bin unknown;
    unknown.full('P').str("R", 1).u32(0).u32(0).full('Z');
    Status s = error(unknown.b);
    EXPECT_NE(s.message.find("unknown token kind byte 5A"), std::string::npos);
    EXPECT_EQ(s.offset, 25u);

    Bin empty;
    empty.full('P').str("R", 1).u32(0).u32(0).u8(7);
    EXPECT_NE(error(empty.b).message.find("slot 7"), std::string::npos);
    Bin badIndex;
    badIndex.full('P').str("R", 1).u32(0).u32(0).full('p').ref(9);
    EXPECT_NE(error(badIndex.b).message.find("string index 9"), std::string::npos);
    Bin longString;
    longString.full('P').u16(0xFFFF).u32(100000).b += "abc";
    EXPECT_NE(error(longString.b).message.find("past the end"), std::string::npos);
    Bin unbalanced;
    unbalanced.full('P').str("R", 1).u32(0).u32(0).full('p').ref(0).full('p').ref(0);
    EXPECT_FALSE(decode(unbalanced.b, *std::make_unique<std::string>()).ok);
    Bin open;
    open.full('P').str("R", 1).u32(0).u32(0);
    EXPECT_NE(error(open.b).message.find("ends inside"), std::string::npos);
    Bin badType;
    badType.full('P').str("R", 1).u32(0).u32(0).full('V').str("x", 1).str("sFloat128", 9);
    EXPECT_NE(error(badType.b).message.find("sFloat128"), std::string::npos);
    Bin blobPastEnd;
    blobPastEnd.full('P').str("R", 1).u32(0).u32(0).full('B').u32(1000);
    error(blobPastEnd.b);

    // 65,535 strings fill the table.
    Bin many;
    many.full('P').str("R", 1).u32(0).u32(0);
    for (int i = 0; i < 70000; ++i)
        many.full('V').str("n", 1).str("cDeltaString", 12).str(std::to_string(i), static_cast<int>(std::to_string(i).size()));
    EXPECT_NE(error(many.b).message.find("65,535"), std::string::npos);
}

TEST(Decode, HostileNestingAndSizeAreRefusedWithTheirByte) {
    // A megabyte of nested records would give hundreds of gigabytes of XML.
    std::string xml = "stale";
    Status s = decode(velmora::test::nestedDocument(1 << 20), xml);
    EXPECT_FALSE(s.ok);
    EXPECT_TRUE(xml.empty());
    EXPECT_NE(s.message.find("nest deeper than 1024 levels"), std::string::npos) << s.message;
    // The root opens at byte 8 (17 bytes), every further level takes 9: the 1025th level fails.
    EXPECT_EQ(s.offset, 25u + 9u * 1023u);

    // The generous limit still lets a deep but honest document through.
    Bin deep;
    deep.full('P').str("a", 1).u32(0).u32(1);
    for (int i = 1; i < 1024; ++i)
        deep.u8(0).u32(0).u32(1);
    deep.full('p').ref(0);
    for (int i = 1; i < 1024; ++i)
        deep.u8(1);
    EXPECT_TRUE(decode(deep.b, xml).ok);

    // One long string named again and again: a few bytes each, the whole string each time.
    Bin wide;
    wide.full('P').str("R", 1).u32(0).u32(0).full('V').str("v", 1).str("cDeltaString", 12).str(std::string(60000, 'x'), 60000);
    for (int i = 0; i < 200; ++i)
        wide.u8(1).ref(3);
    wide.full('p').ref(0);
    WriteOptions small;
    small.maxXmlBytes = 1 << 20;
    s = decode(wide.b, xml, small);
    EXPECT_FALSE(s.ok);
    EXPECT_NE(s.message.find("larger than 1048576 bytes"), std::string::npos) << s.message;
    EXPECT_GT(s.offset, 8u);
    EXPECT_TRUE(decode(wide.b, xml).ok) << "12 MB of XML is within the default for any document";
    EXPECT_EQ(xmlLimitFor(1000), std::uint64_t{256} << 20);
    EXPECT_EQ(xmlLimitFor(std::uint64_t{1} << 30), std::uint64_t{8} << 30);
}

TEST(ReadDocument, OnlyRegularFilesAndWithinTheLimit) {
    const auto dir = std::filesystem::temp_directory_path() / ("velmora-read-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    std::string bytes = "stale";
    EXPECT_FALSE(readDocument(dir / "none.bin", bytes).ok);
    EXPECT_TRUE(bytes.empty());
    // A FIFO would block the reader until a writer comes; it is refused without opening it.
    const auto fifo = dir / "pipe.bin";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    Status s = readDocument(fifo, bytes);
    EXPECT_FALSE(s.ok);
    EXPECT_NE(s.message.find("pipe.bin: is not a regular file"), std::string::npos) << s.message;
    // A sparse file of 3 GB costs nothing on disk; it must cost nothing in memory either.
    const auto big = dir / "big.bin";
    { std::ofstream(big, std::ios::binary) << "SERZ"; }
    std::filesystem::resize_file(big, std::uint64_t{3} << 30);
    s = readDocument(big, bytes);
    EXPECT_FALSE(s.ok);
    EXPECT_NE(s.message.find("more than the 1073741824 bytes a document may have"), std::string::npos) << s.message;
    EXPECT_EQ(bytes.capacity() < 4096, true);
    { std::ofstream(dir / "small.bin", std::ios::binary) << "SERZ1234"; }
    EXPECT_FALSE(readDocument(dir / "small.bin", bytes, 4).ok);
    ASSERT_TRUE(readDocument(dir / "small.bin", bytes).ok);
    EXPECT_EQ(bytes, "SERZ1234");

    // The same rules for a mapped document, and its bytes survive a move and outlive a
    // replacement of the file under its name (as every write of the program does it).
    DocumentBytes mapped;
    EXPECT_FALSE(readDocument(fifo, mapped).ok);
    EXPECT_FALSE(readDocument(big, mapped).ok);
    EXPECT_TRUE(mapped.view().empty());
    EXPECT_FALSE(readDocument(dir / "small.bin", mapped, 4).ok);
    ASSERT_TRUE(readDocument(dir / "small.bin", mapped).ok);
    DocumentBytes moved = std::move(mapped);
    EXPECT_TRUE(mapped.view().empty());
    { std::ofstream(dir / "new.bin", std::ios::binary) << "SERZ5678"; }
    std::filesystem::rename(dir / "new.bin", dir / "small.bin");
    EXPECT_EQ(moved.view(), "SERZ1234");
    { std::ofstream(dir / "empty.bin", std::ios::binary); }
    ASSERT_TRUE(readDocument(dir / "empty.bin", moved).ok);
    EXPECT_TRUE(moved.view().empty());
    std::filesystem::remove_all(dir);
}
