#include "velmora/core/textsearch.h"

#include <gtest/gtest.h>

using namespace velmora;

TEST(TextSearch, FindIgnoresCaseAndHonoursWholeWords) {
    const QString text = "<Provider>DTG</Provider> provider providers";
    EXPECT_EQ(findInText(text, {"PROVIDER"}, 0), 1);
    EXPECT_EQ(findInText(text, {"PROVIDER"}, 2), 15);
    EXPECT_EQ(findInText(text, {"provider", true}, 0), 1) << "tag brackets are not word characters";
    EXPECT_EQ(findInText(text, {"provider", true}, 2), 15);
    EXPECT_EQ(findInText(text, {"provider", true}, 16), 25);
    EXPECT_EQ(findInText(text, {"provider", true}, 26), -1) << "'providers' is another word";
    EXPECT_EQ(findInText(text, {""}, 0), -1);
}

TEST(TextSearch, ReplaceAllGoesOnPastEachHitAndEnds) {
    QString a = "one two one";
    EXPECT_EQ(replaceAllInText(a, {"ONE"}, "1"), 2);
    EXPECT_EQ(a, "1 two 1");

    // A replacement that holds the search text: the loop goes on and ends.
    QString b = "a-a";
    EXPECT_EQ(replaceAllInText(b, {"a"}, "aa"), 2);
    EXPECT_EQ(b, "aa-aa");
    QString c = "abab";
    EXPECT_EQ(replaceAllInText(c, {"ab"}, "xab"), 2);
    EXPECT_EQ(c, "xabxab");

    // One character past the previous hit: overlapping hits in the original text are found.
    QString d = "aaa";
    EXPECT_EQ(replaceAllInText(d, {"aa"}, "b"), 1);
    EXPECT_EQ(d, "ba");

    QString e = "cat concat cat";
    EXPECT_EQ(replaceAllInText(e, {"cat", true}, "dog"), 2);
    EXPECT_EQ(e, "dog concat dog");
}

TEST(TextSearch, ReplaceAllJudgesWholeWordsInTheRewrittenText) {
    // After "a" becomes "x", the next "a" follows a letter in the new text and is no word.
    QString text = "a a";
    EXPECT_EQ(replaceAllInText(text, {"a", true}, "x"), 2);
    EXPECT_EQ(text, "x x");
    QString joined = "ab";
    EXPECT_EQ(replaceAllInText(joined, {"a"}, ""), 1);
    EXPECT_EQ(joined, "b");
    QString none = "nothing";
    EXPECT_EQ(replaceAllInText(none, {"zzz"}, "y"), 0);
    EXPECT_EQ(none, "nothing");
}
