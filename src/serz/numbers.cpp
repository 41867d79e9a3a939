#include "numbers.h"

#include <charconv>
#include <cmath>
#include <cstring>

namespace serz {

namespace {

// Digits of |v| rounded to `significant` digits, exact decimal ties away from zero; the
// decimal exponent of the first digit. to_chars rounds to even on a tie; a tie is seen as
// the one-digit-longer form being exactly the value, ending in 5.
void roundSignificant(double v, int significant, std::string& digits, int& exponent) {
    char buf[64];
    const double a = std::fabs(v);
    auto r = std::to_chars(buf, buf + sizeof buf, a, std::chars_format::scientific, significant - 1);
    std::string_view s(buf, static_cast<std::size_t>(r.ptr - buf));
    char longer[64];
    auto l = std::to_chars(longer, longer + sizeof longer, a, std::chars_format::scientific, significant);
    std::string_view ls(longer, static_cast<std::size_t>(l.ptr - longer));
    // ls: d.ddddd(d)e±xx with `significant` digits after the point: the digit past the kept ones.
    const std::size_t ePos = ls.find('e');
    const bool tie = ePos != std::string_view::npos && ls[ePos - 1] == '5' && [&] {
        double back = 0;
        std::from_chars(longer, longer + (l.ptr - longer), back);
        return back == a;
    }();
    if (tie) {
        // Keep the first `significant` digits of the longer form and round them up.
        std::string d;
        d += ls[0];
        d.append(ls.substr(2, ePos - 3));
        int e = std::atoi(std::string(ls.substr(ePos + 1)).c_str());
        int i = static_cast<int>(d.size()) - 1;
        while (i >= 0 && d[static_cast<std::size_t>(i)] == '9') {
            d[static_cast<std::size_t>(i)] = '0';
            --i;
        }
        if (i < 0) {
            d.insert(d.begin(), '1');
            d.pop_back();
            ++e;
        } else {
            ++d[static_cast<std::size_t>(i)];
        }
        digits = d;
        exponent = e;
        return;
    }
    // s: d.ddddde±xx with significant-1 digits after the point.
    const std::size_t e = s.find('e');
    digits.assign(1, s[0]);
    if (significant > 1)
        digits.append(s.substr(2, e - 2));
    exponent = std::atoi(std::string(s.substr(e + 1)).c_str());
}

} // namespace

void appendInt(std::string& out, long long v) {
    char buf[24];
    auto r = std::to_chars(buf, buf + sizeof buf, v);
    out.append(buf, r.ptr);
}

void appendUInt(std::string& out, unsigned long long v) {
    char buf[24];
    auto r = std::to_chars(buf, buf + sizeof buf, v);
    out.append(buf, r.ptr);
}

void appendInteger(std::string& out, ValueType type, const char* p) {
    switch (type) {
    case ValueType::Bool: out += (*p != 0) ? '1' : '0'; return;
    case ValueType::SInt8: appendInt(out, static_cast<std::int8_t>(*p)); return;
    case ValueType::UInt8: appendUInt(out, static_cast<std::uint8_t>(*p)); return;
    case ValueType::SInt16: { std::int16_t v; std::memcpy(&v, p, 2); appendInt(out, v); return; }
    case ValueType::UInt16: { std::uint16_t v; std::memcpy(&v, p, 2); appendUInt(out, v); return; }
    case ValueType::SInt32: { std::int32_t v; std::memcpy(&v, p, 4); appendInt(out, v); return; }
    case ValueType::UInt32: { std::uint32_t v; std::memcpy(&v, p, 4); appendUInt(out, v); return; }
    case ValueType::SInt64: { std::int64_t v; std::memcpy(&v, p, 8); appendInt(out, v); return; }
    case ValueType::UInt64: { std::uint64_t v; std::memcpy(&v, p, 8); appendUInt(out, v); return; }
    default: return;
    }
}

void appendFloatG(std::string& out, double v, int exponentDigits) {
    if (std::isnan(v)) {
        out += "nan";
        return;
    }
    if (std::isinf(v)) {
        out += v < 0 ? "-inf" : "inf";
        return;
    }
    if (std::signbit(v))
        out += '-';
    if (v == 0) {
        out += '0';
        return;
    }
    std::string digits;
    int exponent = 0;
    roundSignificant(v, 6, digits, exponent);
    // Trailing zeros go, as "%g" drops them.
    while (digits.size() > 1 && digits.back() == '0')
        digits.pop_back();
    if (exponent < -4 || exponent >= 6) {
        out += digits[0];
        if (digits.size() > 1) {
            out += '.';
            out.append(digits, 1, std::string::npos);
        }
        out += 'e';
        out += exponent < 0 ? '-' : '+';
        std::string e = std::to_string(exponent < 0 ? -exponent : exponent);
        if (static_cast<int>(e.size()) < exponentDigits)
            e.insert(0, static_cast<std::size_t>(exponentDigits) - e.size(), '0');
        out += e;
        return;
    }
    if (exponent < 0) {
        out += "0.";
        out.append(static_cast<std::size_t>(-exponent - 1), '0');
        out += digits;
        return;
    }
    const std::size_t intDigits = static_cast<std::size_t>(exponent) + 1;
    if (digits.size() <= intDigits) {
        out += digits;
        out.append(intDigits - digits.size(), '0');
        return;
    }
    out.append(digits, 0, intDigits);
    out += '.';
    out.append(digits, intDigits, std::string::npos);
}

void appendFloatFixed7(std::string& out, double v) {
    if (std::isnan(v) || std::isinf(v)) {
        appendFloatG(out, v, 3);
        return;
    }
    char buf[400];
    const double a = std::fabs(v);
    auto r = std::to_chars(buf, buf + sizeof buf, a, std::chars_format::fixed, 7);
    std::string s(buf, r.ptr);
    // An exact tie at the eighth decimal rounds away from zero.
    char longer[400];
    auto l = std::to_chars(longer, longer + sizeof longer, a, std::chars_format::fixed, 8);
    if (l.ptr[-1] == '5') {
        double back = 0;
        std::from_chars(longer, l.ptr, back);
        if (back == a) {
            std::string d(longer, l.ptr - 1); // drop the 5
            int i = static_cast<int>(d.size()) - 1;
            for (; i >= 0; --i) {
                char& c = d[static_cast<std::size_t>(i)];
                if (c == '.')
                    continue;
                if (c == '9') {
                    c = '0';
                    continue;
                }
                ++c;
                break;
            }
            if (i < 0)
                d.insert(d.begin(), '1');
            s = d;
        }
    }
    if (std::signbit(v))
        out += '-';
    out += s;
}

void appendAltEncoding(std::string& out, double v) {
    static const char* hex = "0123456789ABCDEF";
    unsigned char bytes[8];
    std::memcpy(bytes, &v, 8);
    for (unsigned char b : bytes) {
        out += hex[b >> 4];
        out += hex[b & 15];
    }
}

std::optional<double> parseAltEncoding(std::string_view text) {
    if (text.size() != 16)
        return std::nullopt;
    unsigned char bytes[8];
    for (int i = 0; i < 8; ++i) {
        unsigned v = 0;
        auto r = std::from_chars(text.data() + 2 * i, text.data() + 2 * i + 2, v, 16);
        if (r.ec != std::errc() || r.ptr != text.data() + 2 * i + 2)
            return std::nullopt;
        bytes[i] = static_cast<unsigned char>(v);
    }
    double d;
    std::memcpy(&d, bytes, 8);
    return d;
}

std::optional<double> parseDouble(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t' || text.front() == '\r' || text.front() == '\n'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r' || text.back() == '\n'))
        text.remove_suffix(1);
    if (!text.empty() && text.front() == '+')
        text.remove_prefix(1);
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
