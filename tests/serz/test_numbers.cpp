#include "numbers.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>

using namespace serz;

namespace {
std::string g(double v, int digits = 3) {
    std::string s;
    appendFloatG(s, v, digits);
    return s;
}
std::string f7(double v) {
    std::string s;
    appendFloatFixed7(s, v);
    return s;
}
} // namespace

TEST(FloatText, PrintfGWithTiesAwayFromZero) {
    EXPECT_EQ(g(0), "0");
    EXPECT_EQ(g(-0.0), "-0");
    EXPECT_EQ(g(-1), "-1");
    EXPECT_EQ(g(static_cast<float>(514.399)), "514.399");
    EXPECT_EQ(g(static_cast<float>(0.000358953)), "0.000358953");
    EXPECT_EQ(g(5769010.0), "5.76901e+006");
    EXPECT_EQ(g(5769010.0, 2), "5.76901e+06");
    EXPECT_EQ(g(std::numeric_limits<float>::max()), "3.40282e+038");
    EXPECT_EQ(g(std::numeric_limits<float>::denorm_min()), "1.4013e-045");
    EXPECT_EQ(g(123456.0), "123456");
    EXPECT_EQ(g(1234567.0), "1.23457e+006");
    EXPECT_EQ(g(0.0001), "0.0001");
    EXPECT_EQ(g(0.00001), "1e-005");
    EXPECT_EQ(g(100.0), "100");
    // Exact decimal ties round away from zero, unlike the C library on Linux.
    EXPECT_EQ(g(1.015625), "1.01563");
    EXPECT_EQ(g(-1.015625), "-1.01563");
    EXPECT_EQ(g(725.5625), "725.563");
    EXPECT_EQ(g(999999.5), "1e+006");
    // Near a tie but not on it: the nearest.
    EXPECT_EQ(g(static_cast<float>(1.0156249)), "1.01562");
}

TEST(FloatText, ArrayElementsWithSevenDecimals) {
    EXPECT_EQ(f7(static_cast<float>(-0.0238218)), "-0.0238218");
    EXPECT_EQ(f7(1.0), "1.0000000");
    EXPECT_EQ(f7(-0.0), "-0.0000000");
    EXPECT_EQ(f7(-1e-9), "-0.0000000");
    // The double nearest 5e-8 lies just below it (4.99999999999999977e-8): not a tie.
    EXPECT_EQ(f7(0.00000005), "0.0000000");
    EXPECT_EQ(f7(-0.00000005), "-0.0000000");
    EXPECT_EQ(f7(1.0 / 1024 / 1024 / 16), "0.0000001") << "5.9604644775390625e-8, above the tie";
}

TEST(FloatText, AltEncodingIsTheDoublesBytes) {
    std::string s;
    appendAltEncoding(s, 1.0);
    EXPECT_EQ(s, "000000000000F03F");
    s.clear();
    appendAltEncoding(s, static_cast<float>(14.7));
    EXPECT_EQ(s, "0000006066662D40");
    s.clear();
    appendAltEncoding(s, -0.0);
    EXPECT_EQ(s, "0000000000000080");
    EXPECT_EQ(*parseAltEncoding("0000000000405E40"), 121.0);
    EXPECT_FALSE(parseAltEncoding("0000000000405E4"));
    EXPECT_FALSE(parseAltEncoding("000000000040XE40"));
    EXPECT_EQ(*parseDouble(" 1e-005 "), 1e-5);
    EXPECT_TRUE(std::isinf(*parseDouble("1e999")));
    EXPECT_FALSE(parseDouble("1.2.3"));
}

// Away from exact ties the converter's "%g" and "%.7f" are the C library's: compare the two over
// many floats of every magnitude, the ties themselves being checked above.
TEST(FloatText, AgreesWithTheCLibraryAwayFromTies) {
    std::uint32_t state = 12345;
    auto next = [&] {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return state;
    };
    int compared = 0;
    for (int i = 0; i < 200000; ++i) {
        std::uint32_t bits = next();
        float f;
        std::memcpy(&f, &bits, 4);
        if (!std::isfinite(f))
            continue;
        const double d = f;
        char ref[512];
        std::snprintf(ref, sizeof ref, "%.60e", std::fabs(d));
        // An exact tie at the seventh significant digit: 5 followed by zeros only.
        const std::string digits = std::string(ref).substr(0, std::string(ref).find('e'));
        const bool tie = digits[7] == '5' && digits.find_first_not_of('0', 8) == std::string::npos;
        if (tie)
            continue;
        std::snprintf(ref, sizeof ref, "%g", d);
        ASSERT_EQ(g(d, 2), ref) << "bits " << bits;
        std::snprintf(ref, sizeof ref, "%.60f", std::fabs(d));
        const std::string fixed = ref;
        const std::size_t eighth = fixed.find('.') + 8;
        const bool fixedTie = fixed[eighth] == '5' && fixed.find_first_not_of('0', eighth + 1) == std::string::npos;
        if (std::fabs(d) < 1e9 && !fixedTie) {
            std::snprintf(ref, sizeof ref, "%.7f", d);
            ASSERT_EQ(f7(d), ref) << "bits " << bits;
        }
        ++compared;
    }
    EXPECT_GT(compared, 190000);
}

namespace {
// Compares a printer with its exact-text twin over random floats, random doubles, multiples of
// powers of two from 2^firstShift (every exact decimal tie lies among them) and values of the magnitudes
// 10^lowest .. 10^(lowest + decades).
template <class Fast, class ByText>
void sweep(Fast fast, ByText byText, unsigned seed, int tieRange, int firstShift, int tieShifts, int lowest,
           int decades) {
    std::mt19937 random(seed);
    for (int i = 0; i < 200000; ++i) {
        std::uint32_t bits = random();
        float f;
        std::memcpy(&f, &bits, 4);
        if (!std::isnan(f) && !std::isinf(f)) {
            ASSERT_EQ(fast(f), byText(f)) << bits;
        }
        const double tie = static_cast<double>(static_cast<int>(random() % (2 * tieRange + 1)) - tieRange) /
                           static_cast<double>(1 << (firstShift + i % tieShifts));
        ASSERT_EQ(fast(tie), byText(tie)) << tie;
        std::uint64_t wide = (std::uint64_t(random()) << 32) | random();
        double d;
        std::memcpy(&d, &wide, 8);
        if (!std::isnan(d) && !std::isinf(d)) {
            ASSERT_EQ(fast(d), byText(d)) << wide;
        }
        const double scale = std::pow(10.0, static_cast<int>(random() % static_cast<unsigned>(decades)) + lowest);
        const double value = (static_cast<double>(random()) / 4294967296.0 - 0.5) * scale;
        ASSERT_EQ(fast(value), byText(value)) << value;
    }
}
} // namespace

TEST(FloatText, FixedSevenInIntegersAgreesWithTheExactText) {
    auto fast = [](double v) {
        char buf[kFloatFixedRoom];
        return std::string(buf, putFloatFixed7(buf, v));
    };
    auto byText = [](double v) {
        char buf[kFloatFixedRoom];
        return std::string(buf, putFloatFixed7ByText(buf, v));
    };
    // Exact decimal ties at the seventh place are the odd multiples of 1/256 (and finer
    // powers of two): they go away from zero.
    EXPECT_EQ(fast(1.0 / 256), "0.0039063");
    EXPECT_EQ(fast(-3.0 / 256), "-0.0117188");
    EXPECT_EQ(fast(-0.0), "-0.0000000");
    EXPECT_EQ(fast(-1e-12), "-0.0000000");
    EXPECT_EQ(fast(9.99999995), "9.9999999") << "the double is 9.99999994999..., below the tie";
    EXPECT_EQ(fast(9.9999999500001), "10.0000000");
    // Coordinates and the like, up to past the largest value taken in integers.
    sweep(fast, byText, 11, 100000, 8, 8, -2, 14);
    for (double edge : {9.2e18, 1.3743895e11, 1.3743896e11, 4503599627370496.5, 9007199254740993.0, 1e-320, 5e-8,
                        4.9999999e-8, 0.0, 99999999.999999999})
        EXPECT_EQ(fast(edge), byText(edge)) << edge;
}

TEST(FloatText, SixDigitsInIntegersAgreeWithTheExactText) {
    auto fast = [](double v) {
        char buf[kFloatGRoom];
        return std::string(buf, putFloatG(buf, v, 3));
    };
    auto byText = [](double v) {
        char buf[kFloatGRoom];
        return std::string(buf, putFloatGByText(buf, v, 3));
    };
    // Exact ties at the seventh digit go away from zero; just below one stays below.
    EXPECT_EQ(fast(1.015625), "1.01563");
    EXPECT_EQ(fast(-725.5625), "-725.563");
    EXPECT_EQ(fast(999999.5), "1e+006");
    EXPECT_EQ(fast(9999995.0), "1e+007");
    EXPECT_EQ(fast(std::nextafter(1.015625, 0.0)), "1.01562");
    // The double nearest 99999.95 lies just below it: not a tie, whatever its shortest text.
    EXPECT_EQ(fast(99999.95), "99999.9");
    EXPECT_EQ(byText(99999.95), "99999.9");
    EXPECT_EQ(byText(1.015625e20), "1.01563e+020") << "an exact tie far outside the integer range";
    EXPECT_EQ(byText(99999.95e20), "9.99999e+024");
    sweep(fast, byText, 23, 10000000, 0, 12, -15, 24);
    // Around the ends of the integer range and the decimal exponent's steps.
    for (double edge : {1e-13, 9.99999e-14, 1.0000005e-13, 1e7, 9999999.0, 9999999.5, 8388607.5, 8388608.0,
                        16777215.0, 0.0001, 0.00009999995, 0.000099999949, 1e-5, 99999.95, 999999.4999, 1.0, 10.0,
                        0.1, 0.3, 2.5e-7, std::numeric_limits<double>::min()}) {
        EXPECT_EQ(fast(edge), byText(edge)) << edge;
        EXPECT_EQ(fast(-edge), byText(-edge)) << edge;
    }
}

// Plain decimals are read by a short way; it must give what a full parse gives.
TEST(FloatText, PlainDecimalsReadAsAFullParseReadsThem) {
    auto full = [](const std::string& t) {
        double d = 0;
        std::from_chars(t.data() + (t[0] == '+'), t.data() + t.size(), d);
        return d;
    };
    auto same = [](double a, double b) { return std::memcmp(&a, &b, 8) == 0; };
    EXPECT_TRUE(same(*parseDouble("-0.0000000"), -0.0));
    EXPECT_TRUE(same(*parseDouble("0"), 0.0));
    EXPECT_TRUE(same(*parseDouble("-0.0238218"), -0.0238218));
    EXPECT_TRUE(same(*parseDouble("123456789012345"), 123456789012345.0));
    EXPECT_TRUE(same(*parseDouble("1234567890123456789"), 1234567890123456789.0)) << "past 15 digits: the full parse";
    EXPECT_TRUE(same(*parseDouble("0.000000000000000000001"), 1e-21));
    EXPECT_TRUE(same(*parseDouble("1."), 1.0) && same(*parseDouble(".5"), 0.5)) << "as the full parse takes them";
    for (const char* bad : {"-", ".", "1..2", "--1", "1-", "0x10", ""})
        EXPECT_FALSE(parseDouble(bad)) << bad;
    std::mt19937_64 random(5);
    char text[64];
    for (int i = 0; i < 300000; ++i) {
        const int places = static_cast<int>(random() % 16);
        const std::uint64_t whole = random() % 100000000000ull >> (random() % 40);
        const std::uint64_t part = random() % 10000000000000000ull;
        int n = std::snprintf(text, sizeof text, "%s%llu", random() % 2 ? "-" : "", static_cast<unsigned long long>(whole));
        if (places > 0)
            n += std::snprintf(text + n, sizeof text - static_cast<std::size_t>(n), ".%0*llu", places,
                               static_cast<unsigned long long>(part % static_cast<std::uint64_t>(std::pow(10.0, places))));
        const std::string t(text, static_cast<std::size_t>(n));
        ASSERT_TRUE(same(*parseDouble(t), full(t))) << t;
    }
}
