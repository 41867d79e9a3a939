// The writer's hash tables against plain maps, and the paths of the codec that only large or
// unusual documents take: long texts and blobs written outside the output stage, deep nesting,
// names met first as string values, tags whose binary form differs in length.

#include "tables.h"

#include "serz/serz.h"
#include "testfiles.h"

#include <deque>
#include <map>
#include <random>
#include <string>
#include <unordered_map>

using namespace serz;

namespace {

const std::string kHead = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n";
const std::string kRootOpen = "<R xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\">\r\n";

// XML in the writer's own form comes back byte for byte.
void expectRoundTrip(const std::string& xml) {
    std::string bin, back;
    Status s = encode(xml, bin);
    ASSERT_TRUE(s.ok) << s.message;
    s = decode(bin, back);
    ASSERT_TRUE(s.ok) << s.message;
    EXPECT_EQ(back.size(), xml.size());
    EXPECT_TRUE(back == xml);
}

std::size_t occurrences(const std::string& hay, const std::string& needle) {
    std::size_t n = 0;
    for (std::size_t at = hay.find(needle); at != std::string::npos; at = hay.find(needle, at + 1))
        ++n;
    return n;
}

} // namespace

TEST(WriterTables, TemplateSlotsFollowTheRingLikeAMap) {
    // The ring's use: store at p, drop what p held, over many wraps, keys chosen so that many
    // share a home place (removal must keep every other key reachable).
    TemplateSlots slots;
    std::unordered_map<std::uint64_t, std::uint8_t> model;
    std::array<std::uint64_t, 255> ring;
    ring.fill(TemplateSlots::kEmpty);
    std::mt19937_64 random(7);
    std::size_t next = 0;
    for (int step = 0; step < 200000; ++step) {
        const std::uint64_t key = (std::uint64_t(0x50 + random() % 3) << 32) | (random() % 600) << 16 | random() % 4;
        const auto found = model.find(key);
        ASSERT_EQ(slots.find(key), found == model.end() ? TemplateSlots::kAbsent : int(found->second)) << step;
        if (found != model.end())
            continue;
        if (ring[next] != TemplateSlots::kEmpty) {
            slots.erase(ring[next]);
            model.erase(ring[next]);
        }
        ring[next] = key;
        slots.insert(key, static_cast<std::uint8_t>(next));
        model[key] = static_cast<std::uint8_t>(next);
        next = (next + 1) % 255;
    }
    for (const auto& [key, slot] : model)
        EXPECT_EQ(slots.find(key), slot);
}

TEST(WriterTables, TextTableFindsEveryTextAndOnlyThose) {
    TextTable table;
    std::deque<std::string> texts;
    std::map<std::string, std::uint32_t> model;
    for (std::uint32_t i = 0; i < 5000; ++i) {
        // Short and long, empty, accented, texts that differ only in their last byte.
        std::string t = i == 0 ? std::string() : "Net::cItem" + std::to_string(i) + (i % 3 ? "" : "\xC3\xA9 long enough to pass eight");
        const auto& kept = texts.emplace_back(t);
        ASSERT_EQ(table.find(kept, hashText(kept)), TextTable::kAbsent);
        table.insert(kept, hashText(kept), i);
        model[kept] = i;
    }
    for (const auto& [text, value] : model)
        EXPECT_EQ(table.find(text, hashText(text)), value);
    EXPECT_EQ(table.find("Net::cItem1x", hashText("Net::cItem1x")), TextTable::kAbsent);
    EXPECT_EQ(table.size(), model.size());
}

TEST(WriterTables, HashOfATextDependsOnEveryByte) {
    const std::string base = "Network::cTrackRibbon";
    for (std::size_t i = 0; i < base.size(); ++i) {
        std::string other = base;
        other[i] ^= 1;
        EXPECT_NE(hashText(base), hashText(other)) << i;
    }
    EXPECT_NE(hashText(""), hashText(std::string_view("\0", 1)));
}

TEST(CodecPaths, LongTextsBlobsAndDeepNestingComeBackWhole) {
    std::string xml = kHead + kRootOpen;
    // Nesting deeper than the sixteen tabs written at once.
    std::string indent = "\t";
    for (int d = 0; d < 40; ++d) {
        xml += indent + "<Level" + std::to_string(d) + ">\r\n";
        indent += '\t';
    }
    // A text far longer than the output stage, entities throughout, accents and control bytes.
    std::string text;
    for (int i = 0; i < 3000; ++i)
        text += "Gr\xC3\xBCn &amp; &apos;q&quot; \x01 &lt;";
    xml += indent + "<Brief d:type=\"cDeltaString\">" + text + "</Brief>\r\n";
    // A blob of 20,000 bytes: lines of four groups, a short last group.
    std::string hex;
    for (int i = 0; i < 20003; ++i) {
        if (i && i % 32 == 0)
            hex += "\r\n";
        else if (i && i % 8 == 0)
            hex += ' ';
        static const char digits[] = "0123456789ABCDEF";
        hex += digits[(i * 7) & 15];
        hex += digits[(i * 13) & 15];
    }
    xml += indent + "<d:blob d:size=\"20003\">" + hex + "</d:blob>\r\n";
    xml += indent + "<Empty/>\r\n";
    for (int d = 39; d >= 0; --d) {
        indent.pop_back();
        xml += indent + "</Level" + std::to_string(d) + ">\r\n";
    }
    xml += "</R>\r\n";
    expectRoundTrip(xml);
}

TEST(CodecPaths, ANameFirstSeenAsAStringValueIsStoredOnce) {
    const std::string xml = kHead + kRootOpen + "\t<Kind d:type=\"cDeltaString\">Net::cItem</Kind>\r\n" +
                            "\t<Net-cItem d:id=\"5\"/>\r\n\t<Net-cItem/>\r\n</R>\r\n";
    std::string bin;
    ASSERT_TRUE(encode(xml, bin).ok);
    EXPECT_EQ(occurrences(bin, "Net::cItem"), 1u);
    expectRoundTrip(xml);
}

TEST(CodecPaths, ATagIsJudgedStorableByItsBinaryForm) {
    // "\xE2-" is cut short as it stands, but "\xE2::" holds the three bytes a reader takes.
    std::string bin;
    Status s = encode(kHead + kRootOpen + "<\xE2- d:type=\"sInt32\">1</\xE2->\r\n</R>\r\n", bin);
    EXPECT_TRUE(s.ok) << s.message;
    s = encode(kHead + kRootOpen + "<A\xC3 d:type=\"sInt32\">1</A\xC3>\r\n</R>\r\n", bin);
    EXPECT_FALSE(s.ok);
    EXPECT_NE(s.message.find("middle of a UTF-8 character"), std::string::npos);
}

TEST(CodecPaths, ErrorsNameTheLineOfTheirPlace) {
    std::string bin;
    Status s = encode(kHead + kRootOpen + "\t<a>\r\n\t\t<v d:type=\"sInt32\"\r\n\t\t>x1</v>\r\n\t</a>\r\n</R>\r\n", bin);
    ASSERT_FALSE(s.ok);
    EXPECT_EQ(s.line, 5u) << s.message;
    s = encode(kHead + kRootOpen + "\t<a>\r\n\t\t<v d:type=\"sInt32\">1</w>\r\n", bin);
    ASSERT_FALSE(s.ok);
    EXPECT_EQ(s.line, 4u) << s.message;
    EXPECT_TRUE(bin.empty());
}
