#include "velmora/demo/xmlbuilder.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace velmora::demo {

std::string xmlEscape(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (char c : text) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '\'': out += "&apos;"; break;
        case '"': out += "&quot;"; break;
        default: out += c;
        }
    }
    return out;
}

namespace {

// The mantissa digits and decimal exponent of `value` (non-zero, finite) to `digits` places,
// from glibc's exact decimal expansion.
struct Decimal {
    std::string digits; // first digit, then the rest, no point
    int exponent = 0;
};

Decimal decimalDigits(double magnitude, int digits) {
    std::string buf(static_cast<std::size_t>(digits) + 16, '\0');
    int n = std::snprintf(buf.data(), buf.size(), "%.*e", digits - 1, magnitude);
    buf.resize(static_cast<std::size_t>(n));
    Decimal d;
    auto e = buf.find('e');
    d.digits = buf.substr(0, 1) + buf.substr(2, e - 2);
    d.exponent = std::atoi(buf.c_str() + e + 1);
    return d;
}

// True when the digits behind position `from` are exactly "5" followed by zeros in the full
// expansion: a tie that the converter rounds away from zero.
bool roundsUp(double magnitude, const Decimal& wide, std::size_t keep) {
    char next = wide.digits[keep];
    if (next != '5')
        return next > '5';
    if (wide.digits.find_first_not_of('0', keep + 1) != std::string::npos)
        return true;
    // Looks like an exact tie at this width; a 4999... tail could have been rounded up to it.
    Decimal exact = decimalDigits(magnitude, 1100);
    return exact.digits[keep] >= '5';
}

} // namespace

std::string formatFloat(double value, int exponentDigits) {
    if (value == 0)
        return std::signbit(value) ? "-0" : "0";
    const double magnitude = std::fabs(value);
    constexpr std::size_t kSignificant = 6;
    Decimal wide = decimalDigits(magnitude, 26);
    std::string digits = wide.digits.substr(0, kSignificant);
    int exponent = wide.exponent;
    if (roundsUp(magnitude, wide, kSignificant)) {
        int i = static_cast<int>(kSignificant) - 1;
        while (i >= 0 && digits[static_cast<std::size_t>(i)] == '9')
            digits[static_cast<std::size_t>(i--)] = '0';
        if (i < 0) {
            digits = "1" + digits.substr(0, kSignificant - 1);
            ++exponent;
        } else {
            ++digits[static_cast<std::size_t>(i)];
        }
    }
    while (digits.size() > 1 && digits.back() == '0')
        digits.pop_back();

    std::string out = value < 0 ? "-" : "";
    if (exponent < -4 || exponent >= static_cast<int>(kSignificant)) {
        out += digits[0];
        if (digits.size() > 1)
            out += "." + digits.substr(1);
        std::string e = std::to_string(exponent < 0 ? -exponent : exponent);
        if (e.size() < static_cast<std::size_t>(exponentDigits))
            e.insert(0, static_cast<std::size_t>(exponentDigits) - e.size(), '0');
        out += (exponent < 0 ? "e-" : "e+") + e;
    } else if (exponent < 0) {
        out += "0." + std::string(static_cast<std::size_t>(-exponent - 1), '0') + digits;
    } else {
        auto intDigits = static_cast<std::size_t>(exponent) + 1;
        if (digits.size() <= intDigits) {
            out += digits + std::string(intDigits - digits.size(), '0');
        } else {
            out += digits.substr(0, intDigits) + "." + digits.substr(intDigits);
        }
    }
    return out;
}

namespace {
std::string altEncoding(double v) {
    unsigned char bytes[8];
    std::memcpy(bytes, &v, 8);
    static const char* hex = "0123456789ABCDEF";
    std::string out;
    for (unsigned char b : bytes) {
        out += hex[b >> 4];
        out += hex[b & 15];
    }
    return out;
}
std::string xmlName(std::string_view name) {
    std::string out;
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (name[i] == ':' && i + 1 < name.size() && name[i + 1] == ':') {
            out += '-';
            ++i;
        } else {
            out += name[i];
        }
    }
    return out.empty() ? "e" : out;
}
} // namespace

XmlBuilder::XmlBuilder(std::string_view rootName, std::int64_t rootId) {
    m_out = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n";
    std::string line = "<" + xmlName(rootName) + " xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\"";
    if (rootId != 0)
        line += " d:id=\"" + std::to_string(rootId) + "\"";
    line += ">";
    m_out += line + "\r\n";
    m_stack.push_back(xmlName(rootName));
}

void XmlBuilder::indent() { m_out.append(m_stack.size(), '\t'); }

void XmlBuilder::line(const std::string& text) {
    m_justOpened = false;
    indent();
    m_out += text;
    m_out += "\r\n";
}

XmlBuilder& XmlBuilder::open(std::string_view name, std::int64_t id) {
    std::string n = xmlName(name);
    line("<" + n + (id ? " d:id=\"" + std::to_string(id) + "\"" : std::string()) + ">");
    m_stack.push_back(n);
    m_justOpened = true;
    return *this;
}

XmlBuilder& XmlBuilder::close() {
    std::string n = m_stack.back();
    m_stack.pop_back();
    if (m_justOpened) {
        // An element with no children is written the converter's way, as <X/>.
        m_out.resize(m_out.size() - 3);
        m_out += "/>\r\n";
        m_justOpened = false;
        return *this;
    }
    line("</" + n + ">");
    return *this;
}

XmlBuilder& XmlBuilder::empty(std::string_view name, std::int64_t id) {
    line("<" + xmlName(name) + (id ? " d:id=\"" + std::to_string(id) + "\"" : std::string()) + "/>");
    return *this;
}

XmlBuilder& XmlBuilder::str(std::string_view name, std::string_view value) {
    std::string n = xmlName(name);
    line("<" + n + " d:type=\"cDeltaString\">" + xmlEscape(value) + "</" + n + ">");
    return *this;
}

XmlBuilder& XmlBuilder::boolean(std::string_view name, bool value) {
    std::string n = xmlName(name);
    line("<" + n + " d:type=\"bool\">" + (value ? "1" : "0") + "</" + n + ">");
    return *this;
}

XmlBuilder& XmlBuilder::integer(std::string_view name, std::string_view type, long long value) {
    std::string n = xmlName(name);
    line("<" + n + " d:type=\"" + std::string(type) + "\">" + std::to_string(value) + "</" + n + ">");
    return *this;
}

XmlBuilder& XmlBuilder::uint64(std::string_view name, unsigned long long value) {
    std::string n = xmlName(name);
    line("<" + n + " d:type=\"sUInt64\">" + std::to_string(value) + "</" + n + ">");
    return *this;
}

XmlBuilder& XmlBuilder::float32(std::string_view name, double value) {
    std::string n = xmlName(name);
    double widened = static_cast<double>(static_cast<float>(value));
    line("<" + n + " d:type=\"sFloat32\" d:alt_encoding=\"" + altEncoding(widened) + "\" d:precision=\"string\">" +
         formatFloat(widened) + "</" + n + ">");
    return *this;
}

XmlBuilder& XmlBuilder::float64(std::string_view name, double value) {
    std::string n = xmlName(name);
    line("<" + n + " d:type=\"sFloat64\" d:alt_encoding=\"" + altEncoding(value) + "\" d:precision=\"string\">" +
         formatFloat(value) + "</" + n + ">");
    return *this;
}

XmlBuilder& XmlBuilder::floats(std::string_view name, const std::vector<double>& values) {
    std::string n = xmlName(name);
    std::string text;
    for (double v : values) {
        char buf[64];
        std::snprintf(buf, sizeof buf, "%.7f", static_cast<double>(static_cast<float>(v)));
        if (!text.empty())
            text += ' ';
        text += buf;
    }
    line("<" + n + " d:numElements=\"" + std::to_string(values.size()) +
         "\" d:elementType=\"sFloat32\" d:precision=\"string\">" + text + "</" + n + ">");
    return *this;
}

XmlBuilder& XmlBuilder::ref(std::string_view name, std::int64_t target) {
    std::string n = xmlName(name);
    line("<" + n + " d:type=\"ref\">" + std::to_string(target) + "</" + n + ">");
    return *this;
}

XmlBuilder& XmlBuilder::nil() {
    line("<d:nil/>");
    return *this;
}

XmlBuilder& XmlBuilder::blob(const std::string& bytes) {
    static const char* hex = "0123456789ABCDEF";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i > 0 && i % 32 == 0)
            text += "\r\n";
        else if (i > 0 && i % 8 == 0)
            text += ' ';
        auto b = static_cast<unsigned char>(bytes[i]);
        text += hex[b >> 4];
        text += hex[b & 15];
    }
    line("<d:blob d:size=\"" + std::to_string(bytes.size()) + "\">" + text + "</d:blob>");
    return *this;
}

XmlBuilder& XmlBuilder::blueprintRef(std::string_view name, std::string_view provider, std::string_view product,
                                     std::string_view blueprintId) {
    open(name).open("iBlueprintLibrary::cAbsoluteBlueprintID").open("BlueprintSetID");
    open("iBlueprintLibrary::cBlueprintSetID").str("Provider", provider).str("Product", product).close();
    close().str("BlueprintID", blueprintId).close().close();
    return *this;
}

XmlBuilder& XmlBuilder::localised(std::string_view name, std::string_view english) {
    open(name).open("Localisation::cUserLocalisedString").str("English", english);
    for (const char* lang : {"French", "Italian", "German", "Spanish", "Dutch", "Polish", "Russian"})
        str(lang, "");
    empty("Other").str("Key", "").close().close();
    return *this;
}

XmlBuilder& XmlBuilder::guid(std::string_view name, std::uint64_t a, std::uint64_t b, std::string_view devString) {
    open(name).open("cGUID").open("UUID").uint64("", a).uint64("", b).close();
    str("DevString", devString).close().close();
    return *this;
}

std::string XmlBuilder::finish() {
    while (m_stack.size() > 1)
        close();
    if (!m_stack.empty()) {
        m_out += "</" + m_stack.back() + ">\r\n";
        m_stack.pop_back();
    }
    return m_out;
}

} // namespace velmora::demo
