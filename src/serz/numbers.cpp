#include "numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace serz {

namespace {

// Adds one unit in the last place of a digit string (dots passed over); true when the carry
// ran off the front, so a leading 1 is needed.
bool roundUp(char* first, char* last) {
    for (char* p = last; p >= first; --p) {
        if (*p == '.')
            continue;
        if (*p == '9') {
            *p = '0';
            continue;
        }
        ++*p;
        return false;
    }
    return true;
}

// The power of ten of the last digit that is not zero in the exact decimal expansion of a > 0
// (a double has at most 767 significant digits, and to_chars prints them exactly).
int lowestDigitPower(double a) {
    char buf[800];
    const auto r = std::to_chars(buf, buf + sizeof buf, a, std::chars_format::scientific, 767);
    const char* e = std::find(buf, r.ptr, 'e');
    int exponent = 0;
    std::from_chars(e + 1 + (e[1] == '+'), r.ptr, exponent);
    const char* last = e;
    while (last > buf && (last[-1] == '0' || last[-1] == '.'))
        --last;
    const auto digits = static_cast<int>(last - buf) - (last - buf > 1 ? 1 : 0); // less the point
    return exponent - (digits - 1);
}

// `first`..`last` is |v| printed with one digit more than wanted, correctly rounded, that last
// digit standing for 10^lastPower. Unless that digit is a 5, rounding the text by it gives the
// correctly rounded shorter form. A 5 is an exact decimal tie (which goes away from zero) only
// when the exact expansion ends there; otherwise the shorter form is printed afresh, which is
// what false asks the caller to do.
bool dropLastDigit(char* first, char*& last, double a, int lastPower, bool& carry) {
    const char d = last[-1];
    carry = false;
    if (d == '5' && lowestDigitPower(a) < lastPower)
        return false;
    --last;
    if (d >= '5')
        carry = roundUp(first, last - 1);
    return true;
}

#ifdef __SIZEOF_INT128__
__extension__ typedef unsigned __int128 Wide;
#endif

// roundSix in integers for the magnitudes documents are full of (1e-13 up to 1e7): a = m /
// 2^shift with m below 2^53, so a * 10^k = m * 10^k / 2^shift is exact in 128 bits. With k
// chosen to leave seven digits before the point, the seventh digit alone decides: 5 or more
// rounds up, since an exact tie goes away from zero as well. False for other magnitudes.
bool roundSixInIntegers(double a, char* digits, int& count, int& exponent) {
#ifdef __SIZEOF_INT128__
    static constexpr std::uint64_t kPow10[] = {1ull,
                                               10ull,
                                               100ull,
                                               1000ull,
                                               10000ull,
                                               100000ull,
                                               1000000ull,
                                               10000000ull,
                                               100000000ull,
                                               1000000000ull,
                                               10000000000ull,
                                               100000000000ull,
                                               1000000000000ull,
                                               10000000000000ull,
                                               100000000000000ull,
                                               1000000000000000ull,
                                               10000000000000000ull,
                                               100000000000000000ull,
                                               1000000000000000000ull,
                                               10000000000000000000ull};
    std::uint64_t bits;
    std::memcpy(&bits, &a, 8);
    const int biased = static_cast<int>((bits >> 52) & 0x7FF);
    if (biased == 0 || biased == 0x7FF)
        return false;
    const int binary = biased - 1023;
    if (binary < -44 || binary > 23)
        return false;
    const int shift = 1075 - biased; // from 52 - 23 = 29 to 52 + 44 = 96
    const std::uint64_t m = (bits & ((std::uint64_t{1} << 52) - 1)) | (std::uint64_t{1} << 52);
    // log10(a) lies in [binary, binary + 1) * log10(2): the decimal exponent is this or one more.
    int decimal = (binary * 78913) >> 18;
    auto sevenDigits = [&](int e) -> std::optional<std::uint64_t> {
        const int k = 6 - e;
        if (k < 0 || k > 19)
            return std::nullopt;
        return static_cast<std::uint64_t>((static_cast<Wide>(m) * kPow10[k]) >> shift);
    };
    auto seven = sevenDigits(decimal);
    if (seven && *seven >= 10000000u)
        seven = sevenDigits(++decimal);
    if (!seven || *seven < 1000000u || *seven >= 10000000u)
        return false;
    auto six = static_cast<std::uint32_t>(*seven / 10u + (*seven % 10u >= 5u ? 1u : 0u));
    if (six == 1000000u) {
        six = 100000u;
        ++decimal;
    }
    for (int i = 5; i >= 0; --i) {
        digits[i] = static_cast<char>('0' + six % 10u);
        six /= 10u;
    }
    count = 6;
    exponent = decimal;
    return true;
#else
    (void)a, (void)digits, (void)count, (void)exponent;
    return false;
#endif
}

// Digits of |v| rounded to six significant digits, exact decimal ties away from zero, and
// the decimal exponent of the first digit.
void roundSix(double a, char* digits, int& count, int& exponent, bool integers) {
    if (integers && roundSixInIntegers(a, digits, count, exponent))
        return;
    char buf[48];
    auto r = std::to_chars(buf, buf + sizeof buf, a, std::chars_format::scientific, 6);
    char* e = std::find(buf, r.ptr, 'e');
    std::from_chars(e + 1 + (e[1] == '+'), r.ptr, exponent);
    char* last = e;
    bool carry = false;
    if (!dropLastDigit(buf, last, a, exponent - 6, carry)) {
        r = std::to_chars(buf, buf + sizeof buf, a, std::chars_format::scientific, 5);
        e = std::find(buf, r.ptr, 'e');
        std::from_chars(e + 1 + (e[1] == '+'), r.ptr, exponent);
        last = e;
    }
    count = 0;
    if (carry) {
        digits[count++] = '1';
        ++exponent;
    }
    for (char* p = buf; p < last && count < 6; ++p)
        if (*p != '.')
            digits[count++] = *p;
}

} // namespace

char* putInt(char* p, long long v) { return std::to_chars(p, p + kIntegerRoom, v).ptr; }

char* putUInt(char* p, unsigned long long v) { return std::to_chars(p, p + kIntegerRoom, v).ptr; }

char* putInteger(char* p, ValueType type, const char* b) {
    switch (type) {
    case ValueType::Bool: *p = (*b != 0) ? '1' : '0'; return p + 1;
    case ValueType::SInt8: return putInt(p, static_cast<std::int8_t>(*b));
    case ValueType::UInt8: return putUInt(p, static_cast<std::uint8_t>(*b));
    case ValueType::SInt16: { std::int16_t v; std::memcpy(&v, b, 2); return putInt(p, v); }
    case ValueType::UInt16: { std::uint16_t v; std::memcpy(&v, b, 2); return putUInt(p, v); }
    case ValueType::SInt32: { std::int32_t v; std::memcpy(&v, b, 4); return putInt(p, v); }
    case ValueType::UInt32: { std::uint32_t v; std::memcpy(&v, b, 4); return putUInt(p, v); }
    case ValueType::SInt64: { std::int64_t v; std::memcpy(&v, b, 8); return putInt(p, v); }
    case ValueType::UInt64: { std::uint64_t v; std::memcpy(&v, b, 8); return putUInt(p, v); }
    default: return p;
    }
}

namespace {

char* putText(char* p, std::string_view s) {
    std::memcpy(p, s.data(), s.size());
    return p + s.size();
}

char* printFloatG(char* p, double v, int exponentDigits, bool integers) {
    if (std::isnan(v))
        return putText(p, "nan");
    if (std::isinf(v))
        return putText(p, v < 0 ? "-inf" : "inf");
    if (std::signbit(v))
        *p++ = '-';
    if (v == 0) {
        *p++ = '0';
        return p;
    }
    char buf[8];
    int count = 0, exponent = 0;
    roundSix(std::fabs(v), buf, count, exponent, integers);
    // Trailing zeros go, as "%g" drops them.
    while (count > 1 && buf[count - 1] == '0')
        --count;
    const std::string_view digits(buf, static_cast<std::size_t>(count));
    if (exponent < -4 || exponent >= 6) {
        *p++ = digits[0];
        if (digits.size() > 1) {
            *p++ = '.';
            p = putText(p, digits.substr(1));
        }
        *p++ = 'e';
        *p++ = exponent < 0 ? '-' : '+';
        char e[8];
        const char* eEnd = std::to_chars(e, e + sizeof e, exponent < 0 ? -exponent : exponent).ptr;
        const int width = static_cast<int>(eEnd - e);
        for (int i = width; i < std::min(exponentDigits, 16); ++i)
            *p++ = '0';
        return putText(p, std::string_view(e, static_cast<std::size_t>(width)));
    }
    if (exponent < 0) {
        p = putText(p, "0.");
        for (int i = 0; i < -exponent - 1; ++i)
            *p++ = '0';
        return putText(p, digits);
    }
    const std::size_t intDigits = static_cast<std::size_t>(exponent) + 1;
    if (digits.size() <= intDigits) {
        p = putText(p, digits);
        for (std::size_t i = digits.size(); i < intDigits; ++i)
            *p++ = '0';
        return p;
    }
    p = putText(p, digits.substr(0, intDigits));
    *p++ = '.';
    return putText(p, digits.substr(intDigits));
}

} // namespace

char* putFloatG(char* p, double v, int exponentDigits) { return printFloatG(p, v, exponentDigits, true); }

char* putFloatGByText(char* p, double v, int exponentDigits) { return printFloatG(p, v, exponentDigits, false); }

char* putFloatFixed7(char* p, double v) {
#ifdef __SIZEOF_INT128__
    // In integers for normal values below 1.3e11 (every coordinate and matrix element): v =
    // m / 2^shift with m below 2^53, so |v| * 10^8 = m * 10^8 / 2^shift is exact in 128 bits
    // and fits in 64 once shifted. The eighth decimal alone decides the rounding: 5 or more
    // rounds up, since an exact tie goes away from zero as well. Zero, tiny and large values
    // are left to the text way.
    std::uint64_t bits;
    std::memcpy(&bits, &v, 8);
    const int exponent = static_cast<int>((bits >> 52) & 0x7FF);
    const int shift = 1075 - exponent; // |v| = m / 2^shift
    if ((bits << 1) == 0) {
        if (bits >> 63)
            *p++ = '-';
        std::memcpy(p, "0.0000000", 9);
        return p + 9;
    }
    if (exponent != 0 && shift > 16 && shift < 127) {
        const std::uint64_t m = (bits & ((std::uint64_t{1} << 52) - 1)) | (std::uint64_t{1} << 52);
        const auto eighths = static_cast<std::uint64_t>((static_cast<Wide>(m) * 100000000u) >> shift);
        const std::uint64_t q = eighths / 10u + (eighths % 10u >= 5u ? 1u : 0u);
        if (bits >> 63)
            *p++ = '-';
        auto part = static_cast<std::uint32_t>(q % 10000000u);
        p = std::to_chars(p, p + kIntegerRoom, q / 10000000u).ptr;
        *p++ = '.';
        for (int i = 6; i >= 0; --i) {
            p[i] = static_cast<char>('0' + part % 10);
            part /= 10;
        }
        return p + 7;
    }
#endif
    return putFloatFixed7ByText(p, v);
}

char* putFloatFixed7ByText(char* p, double v) {
    if (std::isnan(v) || std::isinf(v))
        return putFloatG(p, v, 3);
    char buf[kFloatFixedRoom];
    const double a = std::fabs(v);
    auto r = std::to_chars(buf, buf + sizeof buf, a, std::chars_format::fixed, 8);
    char* last = r.ptr;
    bool carry = false;
    if (!dropLastDigit(buf, last, a, -8, carry)) {
        r = std::to_chars(buf, buf + sizeof buf, a, std::chars_format::fixed, 7);
        last = r.ptr;
    }
    if (std::signbit(v))
        *p++ = '-';
    if (carry)
        *p++ = '1';
    return putText(p, std::string_view(buf, static_cast<std::size_t>(last - buf)));
}

char* putAltEncoding(char* p, double v) {
    static constexpr char hex[] = "0123456789ABCDEF";
    unsigned char bytes[8];
    std::memcpy(bytes, &v, 8);
    for (unsigned char b : bytes) {
        *p++ = hex[b >> 4];
        *p++ = hex[b & 15];
    }
    return p;
}

void appendInt(std::string& out, long long v) {
    char buf[kIntegerRoom];
    out.append(buf, putInt(buf, v));
}

void appendUInt(std::string& out, unsigned long long v) {
    char buf[kIntegerRoom];
    out.append(buf, putUInt(buf, v));
}

void appendInteger(std::string& out, ValueType type, const char* bytes) {
    char buf[kIntegerRoom];
    out.append(buf, putInteger(buf, type, bytes));
}

void appendFloatG(std::string& out, double v, int exponentDigits) {
    char buf[kFloatGRoom];
    out.append(buf, putFloatG(buf, v, exponentDigits));
}

void appendFloatFixed7(std::string& out, double v) {
    char buf[kFloatFixedRoom + 2];
    out.append(buf, putFloatFixed7(buf, v));
}

void appendAltEncoding(std::string& out, double v) {
    char buf[kAltEncodingRoom];
    out.append(buf, putAltEncoding(buf, v));
}

std::optional<double> parseAltEncoding(std::string_view text) {
    if (text.size() != 16)
        return std::nullopt;
    auto nibble = [](char c) -> int {
        if (c >= '0' && c <= '9') return c - '0';
        if (c >= 'A' && c <= 'F') return c - 'A' + 10;
        if (c >= 'a' && c <= 'f') return c - 'a' + 10;
        return -1;
    };
    unsigned char bytes[8];
    for (int i = 0; i < 8; ++i) {
        const int high = nibble(text[2 * i]), low = nibble(text[2 * i + 1]);
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes[i] = static_cast<unsigned char>(high << 4 | low);
    }
    double d;
    std::memcpy(&d, bytes, 8);
    return d;
}

namespace {

// "[-]digits[.digits]" with at most 15 digits in all, as the converter prints array elements
// and most scalars: the digits are an exact integer below 2^53 and the power of ten an exact
// double, so one division gives the correctly rounded value, as a full parse would.
std::optional<double> parsePlainDecimal(std::string_view text) {
    static constexpr double kPow10[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                        1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    std::size_t i = 0;
    const bool negative = !text.empty() && text[0] == '-';
    i += negative;
    std::uint64_t digits = 0;
    int count = 0, fraction = -1;
    for (; i < text.size(); ++i) {
        const char c = text[i];
        if (c >= '0' && c <= '9') {
            if (++count > 15)
                return std::nullopt;
            digits = digits * 10 + static_cast<unsigned>(c - '0');
            if (fraction >= 0)
                ++fraction;
        } else if (c == '.' && fraction < 0) {
            fraction = 0;
        } else {
            return std::nullopt;
        }
    }
    // A point needs digits on both sides to be the printer's form; leave the rest to the full parse.
    if (count == 0 || fraction == 0 || (fraction > 0 && count == fraction))
        return std::nullopt;
    double v = static_cast<double>(digits);
    if (fraction > 0)
        v /= kPow10[fraction];
    return negative ? -v : v;
}

} // namespace

std::optional<double> parseDouble(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t' || text.front() == '\r' || text.front() == '\n'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r' || text.back() == '\n'))
        text.remove_suffix(1);
    if (!text.empty() && text.front() == '+')
        text.remove_prefix(1);
    if (const auto plain = parsePlainDecimal(text))
        return plain;
    double d = 0;
    auto r = std::from_chars(text.data(), text.data() + text.size(), d);
    if (r.ec == std::errc::result_out_of_range) {
        // Beyond the range of a double: the converter's reader gives infinity or zero.
        const bool negative = !text.empty() && text.front() == '-';
        const bool tiny = text.find("e-") != std::string_view::npos || text.find("E-") != std::string_view::npos;
        return tiny ? (negative ? -0.0 : 0.0) : (negative ? -HUGE_VAL : HUGE_VAL);
    }
    if (r.ec != std::errc() || r.ptr != text.data() + text.size() || text.empty())
        return std::nullopt;
    return d;
}

} // namespace serz
