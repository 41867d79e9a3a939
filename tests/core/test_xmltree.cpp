#include "velmora/core/xmltree.h"

#include <gtest/gtest.h>

using namespace velmora;

TEST(XmlTree, KeysAttributesAndCharactersInDocumentOrder) {
    XmlTree tree;
    ASSERT_TRUE(tree.parse("<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
                           "<cRoute xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\">\r\n"
                           "\t<Name d:type=\"cDeltaString\">M\xC3\xBChle &amp; <![CDATA[Co]]></Name>\r\n"
                           "\t<e d:type=\"sUInt64\">1</e>\r\n"
                           "\t<e d:type=\"sUInt64\">2</e>\r\n"
                           "</cRoute>\r\n"))
        << tree.error().toStdString();
    ASSERT_EQ(tree.size(), 4u);
    const XmlNode* doc = tree.document();
    EXPECT_EQ(doc->name, "cRoute");
    EXPECT_EQ(doc->key(), "nod1");
    ASSERT_EQ(doc->attributes.size(), 1u) << "a namespace declaration is not an attribute";
    EXPECT_EQ(doc->attributes[0].first, "d:version");

    const XmlNode* name = doc->children[0].get();
    EXPECT_EQ(name->attributes[0].first, "d:type") << "prefixes stay in the names";
    EXPECT_EQ(name->characters, QString::fromUtf8("M\xC3\xBChle & Co")) << "split character data is joined";

    // Siblings of one name get keys of their own, found again by key.
    EXPECT_EQ(doc->children[1]->key(), "nod3");
    EXPECT_EQ(doc->children[2]->key(), "nod4");
    EXPECT_EQ(tree.byKey("nod4"), doc->children[2].get());
    EXPECT_EQ(tree.byKey("nod5"), nullptr);
    EXPECT_EQ(tree.byKey("node"), nullptr);
    EXPECT_EQ(doc->children[2]->parent, doc);
}

TEST(XmlTree, DocumentElementWithoutChildrenIsOneNode) {
    XmlTree tree;
    ASSERT_TRUE(tree.parse("<Only/>"));
    EXPECT_EQ(tree.size(), 1u);
    EXPECT_TRUE(tree.document()->children.empty());
}

TEST(XmlTree, BadXmlLeavesTheTreeEmptyAndNamesTheLine) {
    XmlTree tree;
    ASSERT_TRUE(tree.parse("<a/>"));
    EXPECT_FALSE(tree.parse("<a>\n<b>\n</a>"));
    EXPECT_TRUE(tree.empty());
    EXPECT_EQ(tree.size(), 0u);
    EXPECT_TRUE(tree.error().startsWith("Line 3")) << tree.error().toStdString();
}

TEST(XmlTree, ParsingStopsWhenCancelled) {
    std::string big = "<r>";
    for (int i = 0; i < 100000; ++i)
        big += "<e>1</e>";
    big += "</r>";
    XmlTree tree;
    EXPECT_FALSE(tree.parse(big, {}, [] { return true; }));
    EXPECT_TRUE(tree.empty());
}

TEST(TreeSearch, FindsFromAnIndexIgnoringCase) {
    XmlTree tree;
    ASSERT_TRUE(tree.parse("<Root><Provider a=\"x\">DTG</Provider><provider>Other</provider>"
                           "<Blue Name=\"Found\">deep text</Blue></Root>"));
    EXPECT_EQ(findInTree(tree, 0, "PROVIDER", TreeSearchKind::Names), 1);
    EXPECT_EQ(findInTree(tree, 2, "PROVIDER", TreeSearchKind::Names), 2);
    EXPECT_EQ(findInTree(tree, 3, "PROVIDER", TreeSearchKind::Names), -1);
    EXPECT_EQ(findInTree(tree, 0, "DEEP", TreeSearchKind::Names), -1) << "Find looks at names only";
    EXPECT_EQ(findInTree(tree, 0, "DEEP", TreeSearchKind::Shown), 3);
    EXPECT_EQ(findInTree(tree, 0, "name", TreeSearchKind::Shown), 3);
    EXPECT_EQ(findInTree(tree, 100, "x", TreeSearchKind::Shown), -1);
}

TEST(XmlTree, AMillionNestedElementsAreBuiltAndFreedWithoutRecursion) {
    // Seven megabytes of nesting: freeing it level by level through the nodes' destructors
    // would take a million stack frames.
    const std::size_t depth = 1000000;
    std::string text;
    text.reserve(depth * 7 + 16);
    for (std::size_t i = 0; i < depth; ++i)
        text += "<a>";
    for (std::size_t i = 0; i < depth; ++i)
        text += "</a>";
    {
        XmlTree tree;
        ASSERT_TRUE(tree.parse(text)) << tree.error().toStdString();
        EXPECT_EQ(tree.size(), depth);
        EXPECT_EQ(tree.nodes().back()->parent, tree.nodes()[depth - 2]);
        tree.clear();
        EXPECT_TRUE(tree.empty());
        ASSERT_TRUE(tree.parse(text));
    } // and freed with the tree
    // A document that breaks off deep inside is freed the same way.
    XmlTree broken;
    EXPECT_FALSE(broken.parse(std::string_view(text).substr(0, depth * 3 + 2)));
    EXPECT_TRUE(broken.empty());
}

TEST(XmlTree, SharedTextsStayEachNodesOwnWhenEdited) {
    XmlTree tree;
    ASSERT_TRUE(tree.parse("<r xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\"><e d:type=\"sUInt64\">1</e>"
                           "<e d:type=\"sUInt64\">1</e></r>"));
    XmlNode* first = tree.document()->children[0].get();
    XmlNode* second = tree.document()->children[1].get();
    first->characters += "2";
    first->attributes[0].second = "cDeltaString";
    first->name = "f";
    EXPECT_EQ(second->characters, "1");
    EXPECT_EQ(second->attributes[0].second, "sUInt64");
    EXPECT_EQ(second->name, "e");
    EXPECT_EQ(first->characters, "12");
}
