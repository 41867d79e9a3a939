// The converter's XML -> binary document, in one pass: a small reader for the converter's
// dialect feeds a writer that follows the converter's string-table and template-ring rules.

#include "numbers.h"
#include "serz/serz.h"
#include "tokens.h"
#include "writer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <vector>

namespace serz {

namespace {

// The attributes the converter's dialect gives a meaning to, values still escaped; others are
// ignored. The first of a name counts.
struct Attributes {
    std::optional<std::string_view> type, id, altEncoding, numElements, elementType, size;

    void set(std::string_view name, std::string_view value) {
        std::optional<std::string_view>* slot = nullptr;
        switch (name.size()) {
        case 6:
            if (name == "d:type") slot = &type;
            else if (name == "d:size") slot = &size;
            break;
        case 4:
            if (name == "d:id") slot = &id;
            break;
        case 14:
            if (name == "d:alt_encoding") slot = &altEncoding;
            break;
        case 13:
            if (name == "d:numElements") slot = &numElements;
            else if (name == "d:elementType") slot = &elementType;
            break;
        default: break;
        }
        if (slot && !*slot)
            *slot = value;
    }
};

// Classes of characters for the scanner, one table look-up a character.
enum : std::uint8_t { kBlank = 1, kNameEnd = 2, kAttrNameEnd = 4 };
constexpr std::array<std::uint8_t, 256> kClasses = [] {
    std::array<std::uint8_t, 256> c{};
    for (unsigned char b : {' ', '\t', '\r', '\n'})
        c[b] |= kBlank | kNameEnd;
    for (unsigned char b : {'/', '>'})
        c[b] |= kNameEnd | kAttrNameEnd;
    for (unsigned char b : {'=', ' '})
        c[b] |= kAttrNameEnd;
    return c;
}();
inline bool is(char c, std::uint8_t cls) { return kClasses[static_cast<unsigned char>(c)] & cls; }
// Blanks between the parts of a tag and between elements.
inline bool isBlank(char c) { return is(c, kBlank); }

class Encoder {
public:
    Encoder(std::string_view in, std::string& out, const ReadOptions& options)
        : m_in(in), m_writer(out, in.size() / 2), m_options(options) {}

    Status run();

private:
    // The line of an error is counted from the place reached only when there is one.
    bool fail(std::string message) {
        if (m_error.empty()) {
            m_error = std::move(message);
            const std::size_t end = std::min(m_pos, m_in.size());
            m_errorLine = 1 + static_cast<std::size_t>(std::count(m_in.begin(), m_in.begin() + static_cast<std::ptrdiff_t>(end), '\n'));
        }
        return false;
    }
    void skipSpace() {
        // Indentation is runs of tabs: up to eight of them are passed over in one step.
        constexpr std::uint64_t kTabs = 0x0909090909090909ull;
        while (m_pos < m_in.size()) {
            if (m_in[m_pos] == '\t' && m_in.size() - m_pos >= 8) {
                std::uint64_t w;
                std::memcpy(&w, m_in.data() + m_pos, 8);
                const std::uint64_t other = w ^ kTabs; // little-endian: the first byte is the lowest
                m_pos += other ? static_cast<std::size_t>(__builtin_ctzll(other) / 8) : 8;
            } else if (isBlank(m_in[m_pos])) {
                ++m_pos;
            } else {
                return;
            }
        }
    }
    bool skipPast(std::string_view end) {
        const std::size_t at = m_in.find(end, m_pos);
        if (at == std::string_view::npos)
            return fail("'" + std::string(end) + "' is missing");
        m_pos = at + end.size();
        return true;
    }
    // The character at `at`, or NUL past the end.
    char at(std::size_t i) const { return i < m_in.size() ? m_in[i] : '\0'; }

    bool element();
    bool startTag(std::string_view& name, Attributes& attributes, bool& selfClosing);
    bool closeTag(std::string_view name);
    bool text(std::string_view& raw);
    bool unescape(std::string_view raw, std::string& out);
    void countChild() {
        if (!m_frames.empty())
            ++m_frames.back().children;
    }

    bool value(Interned& name, std::string_view type, std::string_view raw, const Attributes& a);
    bool number(ValueType vt, std::string_view text, std::optional<std::string_view> alt, std::string& bytes);
    bool array(Interned& name, const Attributes& a, std::string_view raw);
    bool blob(const Attributes& a, std::string_view raw);

    struct Frame {
        std::string_view xmlName;
        Interned* name;
        std::size_t countAt;
        std::uint32_t children = 0;
    };

    std::string_view m_in;
    Writer m_writer;
    const ReadOptions& m_options;
    std::size_t m_pos = 0;
    std::string m_error;
    std::size_t m_errorLine = 0;
    std::vector<Frame> m_frames;
    bool m_rootSeen = false;
    // Kept from element to element so that their memory is taken once.
    std::string m_bytes;
    std::string m_text;
};

bool Encoder::startTag(std::string_view& name, Attributes& attributes, bool& selfClosing) {
    // m_pos is just past '<'.
    const std::size_t start = m_pos;
    while (m_pos < m_in.size() && !is(m_in[m_pos], kNameEnd))
        ++m_pos;
    name = m_in.substr(start, m_pos - start);
    if (name.empty())
        return fail("an element has no name");
    attributes = {};
    for (;;) {
        skipSpace();
        if (m_pos >= m_in.size())
            return fail("the document ends inside the tag <" + std::string(name));
        if (m_in[m_pos] == '>') {
            ++m_pos;
            selfClosing = false;
            return true;
        }
        if (m_in[m_pos] == '/') {
            if (at(m_pos + 1) != '>')
                return fail("a stray '/' in the tag <" + std::string(name));
            m_pos += 2;
            selfClosing = true;
            return true;
        }
        const std::size_t a = m_pos;
        while (m_pos < m_in.size() && !is(m_in[m_pos], kAttrNameEnd))
            ++m_pos;
        const std::string_view attrName = m_in.substr(a, m_pos - a);
        skipSpace();
        if (at(m_pos) != '=')
            return fail("the attribute " + std::string(attrName) + " of <" + std::string(name) + "> has no value");
        ++m_pos;
        skipSpace();
        const char quote = at(m_pos);
        if (quote != '"' && quote != '\'')
            return fail("the value of " + std::string(attrName) + " is not in quotes");
        ++m_pos;
        const std::size_t end = m_in.find(quote, m_pos);
        if (end == std::string_view::npos)
            return fail("the value of " + std::string(attrName) + " has no closing quote");
        attributes.set(attrName, m_in.substr(m_pos, end - m_pos));
        m_pos = end + 1;
    }
}

bool Encoder::closeTag(std::string_view name) {
    if (at(m_pos) != '<' || at(m_pos + 1) != '/')
        return fail("<" + std::string(name) + "> is not closed");
    m_pos += 2;
    // The usual case: the name and '>' right after it.
    if (m_in.size() - m_pos > name.size() && m_in[m_pos + name.size()] == '>' && m_in.compare(m_pos, name.size(), name) == 0) {
        m_pos += name.size() + 1;
        return true;
    }
    const std::size_t end = m_in.find('>', m_pos);
    if (end == std::string_view::npos)
        return fail("a closing tag has no '>'");
    std::string_view closing = m_in.substr(m_pos, end - m_pos);
    while (!closing.empty() && isBlank(closing.back()))
        closing.remove_suffix(1);
    if (closing != name)
        return fail("</" + std::string(closing) + "> closes <" + std::string(name) + ">");
    m_pos = end + 1;
    return true;
}

bool Encoder::text(std::string_view& raw) {
    const std::size_t end = m_in.find('<', m_pos);
    if (end == std::string_view::npos)
        return fail("the document ends inside a value");
    raw = m_in.substr(m_pos, end - m_pos);
    m_pos = end;
    return true;
}

bool Encoder::unescape(std::string_view raw, std::string& out) {
    out.clear();
    std::size_t from = 0;
    for (std::size_t amp = raw.find('&'); amp != std::string_view::npos; amp = raw.find('&', from)) {
        out.append(raw, from, amp - from);
        const std::size_t semi = raw.find(';', amp);
        if (semi == std::string_view::npos)
            return fail("an '&' that starts no entity");
        const std::string_view entity = raw.substr(amp + 1, semi - amp - 1);
        if (entity == "apos") out += '\'';
        else if (entity == "quot") out += '"';
        else if (entity == "amp") out += '&';
        else if (entity == "lt") out += '<';
        else if (entity == "gt") out += '>';
        else if (!entity.empty() && entity[0] == '#') {
            unsigned long cp = 0;
            const bool hex = entity.size() > 1 && (entity[1] == 'x' || entity[1] == 'X');
            const std::string_view digits = entity.substr(hex ? 2 : 1);
            auto r = std::from_chars(digits.data(), digits.data() + digits.size(), cp, hex ? 16 : 10);
            if (r.ec != std::errc() || r.ptr != digits.data() + digits.size() || cp > 0x10FFFF)
                return fail("the character reference &" + std::string(entity) + "; is not valid");
            appendUtf8(out, static_cast<char32_t>(cp));
        } else {
            return fail("unknown entity &" + std::string(entity) + ";");
        }
        from = semi + 1;
    }
    out.append(raw, from, std::string_view::npos);
    return true;
}

template <typename T> bool parseInt(std::string_view text, T& v) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t' || text.front() == '\r' || text.front() == '\n'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r' || text.back() == '\n'))
        text.remove_suffix(1);
    if (!text.empty() && text.front() == '+')
        text.remove_prefix(1);
    auto r = std::from_chars(text.data(), text.data() + text.size(), v);
    return r.ec == std::errc() && r.ptr == text.data() + text.size() && !text.empty();
}

bool Encoder::number(ValueType vt, std::string_view t, std::optional<std::string_view> alt, std::string& bytes) {
    auto put = [&](const auto& v) { bytes.append(reinterpret_cast<const char*>(&v), sizeof v); };
    auto bad = [&](const char* what) { return fail("'" + std::string(t) + "' is not " + what); };
    switch (vt) {
    case ValueType::Bool: {
        std::string_view s = t;
        while (!s.empty() && (s.front() == ' ' || s.front() == '\r' || s.front() == '\n' || s.front() == '\t'))
            s.remove_prefix(1);
        while (!s.empty() && (s.back() == ' ' || s.back() == '\r' || s.back() == '\n' || s.back() == '\t'))
            s.remove_suffix(1);
        put(static_cast<std::uint8_t>(s == "0" ? 0 : 1));
        return true;
    }
    case ValueType::SInt8: { std::int8_t v; if (!parseInt(t, v)) return bad("an sInt8"); put(v); return true; }
    case ValueType::UInt8: { std::uint8_t v; if (!parseInt(t, v)) return bad("an sUInt8"); put(v); return true; }
    case ValueType::SInt16: { std::int16_t v; if (!parseInt(t, v)) return bad("an sInt16"); put(v); return true; }
    case ValueType::UInt16: { std::uint16_t v; if (!parseInt(t, v)) return bad("an sUInt16"); put(v); return true; }
    case ValueType::SInt32: { std::int32_t v; if (!parseInt(t, v)) return bad("an sInt32"); put(v); return true; }
    case ValueType::UInt32: { std::uint32_t v; if (!parseInt(t, v)) return bad("an sUInt32"); put(v); return true; }
    case ValueType::SInt64: { std::int64_t v; if (!parseInt(t, v)) return bad("an sInt64"); put(v); return true; }
    case ValueType::UInt64: { std::uint64_t v; if (!parseInt(t, v)) return bad("an sUInt64"); put(v); return true; }
    case ValueType::Float32:
    case ValueType::Float64: {
        std::optional<double> d;
        // Lossless: the exact value of d:alt_encoding, when the text is what would be printed
        // for it (so an edited text always wins).
        if (alt && m_options.floats == FloatImport::Lossless) {
            if (const auto exact = parseAltEncoding(*alt)) {
                for (int digits : {3, 2}) {
                    char printed[kFloatGRoom];
                    if (std::string_view(printed, static_cast<std::size_t>(putFloatG(printed, *exact, digits) - printed)) == t) {
                        d = exact;
                        break;
                    }
                }
            }
        }
        if (!d)
            d = parseDouble(t);
        if (!d)
            return bad("a number");
        if (vt == ValueType::Float32)
            put(static_cast<float>(*d));
        else
            put(*d);
        return true;
    }
    case ValueType::String:
    case ValueType::Unknown: break;
    }
    return fail("unknown value type");
}

bool Encoder::value(Interned& name, std::string_view type, std::string_view raw, const Attributes& a) {
    if (type == "ref") {
        std::int32_t target = 0;
        if (!parseInt(raw, target))
            return fail("'" + std::string(raw) + "' is not a reference id");
        if (!m_writer.head(Kind::Reference, &name, nullptr))
            return fail("the document holds more than 65,535 strings");
        m_writer.putRaw(&target, 4);
        countChild();
        return true;
    }
    const ValueType vt = valueTypeNamed(type);
    if (vt == ValueType::Unknown)
        return fail("unknown value type '" + std::string(type) + "'");
    if (!m_writer.head(Kind::Value, &name, &m_writer.type(vt)))
        return fail("the document holds more than 65,535 strings");
    countChild();
    if (vt == ValueType::String) {
        // Text without entities is stored as it stands in the input.
        const bool plain = raw.find('&') == std::string_view::npos;
        if (!plain && !unescape(raw, m_text))
            return false;
        const std::string_view s = plain ? raw : std::string_view(m_text);
        if (!Writer::storable(s))
            return fail("the text of <" + std::string(name.text) + "> ends in the middle of a UTF-8 character");
        if (!m_writer.text(s, plain))
            return fail("the document holds more than 65,535 strings");
        return true;
    }
    m_bytes.clear();
    if (!number(vt, raw, a.altEncoding, m_bytes))
        return false;
    m_writer.putRaw(m_bytes.data(), m_bytes.size());
    return true;
}

bool Encoder::array(Interned& name, const Attributes& a, std::string_view raw) {
    const auto countText = a.numElements;
    const auto type = a.elementType;
    unsigned count = 0;
    if (!countText || !parseInt(*countText, count) || count > 255)
        return fail("d:numElements must be a count from 0 to 255");
    if (!type)
        return fail("an array has no d:elementType");
    const ValueType vt = valueTypeNamed(*type);
    if (vt == ValueType::Unknown || vt == ValueType::String)
        return fail("unknown array element type '" + std::string(*type) + "'");
    std::string& bytes = m_bytes;
    bytes.clear();
    unsigned seen = 0;
    std::size_t p = 0;
    while (p < raw.size()) {
        while (p < raw.size() && (raw[p] == ' ' || raw[p] == '\t' || raw[p] == '\r' || raw[p] == '\n'))
            ++p;
        if (p >= raw.size())
            break;
        std::size_t e = p;
        while (e < raw.size() && raw[e] != ' ' && raw[e] != '\t' && raw[e] != '\r' && raw[e] != '\n')
            ++e;
        if (!number(vt, raw.substr(p, e - p), std::nullopt, bytes))
            return false;
        ++seen;
        p = e;
    }
    if (seen != count)
        return fail("d:numElements says " + std::to_string(count) + " but the array holds " + std::to_string(seen));
    if (!m_writer.head(Kind::Array, &name, &m_writer.type(vt)))
        return fail("the document holds more than 65,535 strings");
    m_writer.put8(static_cast<std::uint8_t>(count));
    m_writer.putRaw(bytes.data(), bytes.size());
    countChild();
    return true;
}

bool Encoder::blob(const Attributes& a, std::string_view raw) {
    const auto sizeText = a.size;
    std::uint32_t size = 0;
    if (!sizeText || !parseInt(*sizeText, size))
        return fail("a blob has no valid d:size");
    std::string& bytes = m_bytes;
    bytes.clear();
    bytes.reserve(size);
    int high = -1;
    for (char c : raw) {
        int v;
        if (c >= '0' && c <= '9') v = c - '0';
        else if (c >= 'A' && c <= 'F') v = c - 'A' + 10;
        else if (c >= 'a' && c <= 'f') v = c - 'a' + 10;
        else if (c == ' ' || c == '\r' || c == '\n' || c == '\t') continue;
        else return fail(std::string("'") + c + "' is not a hex digit in a blob");
        if (high < 0) {
            high = v;
        } else {
            bytes += static_cast<char>((high << 4) | v);
            high = -1;
        }
    }
    if (high >= 0)
        return fail("a blob has an odd number of hex digits");
    if (bytes.size() != size)
        return fail("d:size says " + std::to_string(size) + " bytes but the blob holds " + std::to_string(bytes.size()));
    if (!m_writer.head(Kind::Blob, nullptr, nullptr))
        return fail("the document holds more than 65,535 strings");
    m_writer.put32(size);
    m_writer.putRaw(bytes.data(), bytes.size());
    countChild();
    return true;
}

bool Encoder::element() {
    // m_pos is at '<' of a start tag.
    ++m_pos;
    std::string_view xmlName;
    Attributes attrs;
    bool selfClosing = false;
    if (!startTag(xmlName, attrs, selfClosing))
        return false;
    if (m_frames.empty() && m_rootSeen)
        return fail("a second root element <" + std::string(xmlName) + ">");

    if (xmlName == "d:nil") {
        if (!selfClosing && !closeTag(xmlName))
            return false;
        if (m_frames.empty())
            return fail("the root cannot be nil");
        if (!m_writer.head(Kind::Nil, nullptr, nullptr))
            return false;
        countChild();
        return true;
    }
    std::string_view raw;
    if (xmlName == "d:blob") {
        if (!selfClosing && (!text(raw) || !closeTag(xmlName)))
            return false;
        if (m_frames.empty())
            return fail("the root cannot be a blob");
        return blob(attrs, raw);
    }
    Interned& name = m_writer.name(xmlName);
    if (!name.storable)
        return fail("the name <" + std::string(xmlName) + "> ends in the middle of a UTF-8 character");
    const auto type = attrs.type;
    const bool isArray = attrs.numElements.has_value();
    bool leafText = false;
    if (!type && !isArray && !selfClosing) {
        // A leaf with text and no type is a string; anything else is an element.
        std::size_t q = m_pos;
        while (q < m_in.size() && isBlank(m_in[q]))
            ++q;
        if (q < m_in.size() && m_in[q] != '<') {
            const std::size_t lt = m_in.find('<', q);
            if (lt == std::string_view::npos)
                return fail("<" + std::string(xmlName) + "> is not closed");
            leafText = at(lt + 1) == '/';
        } else if (q >= m_in.size()) {
            return fail("<" + std::string(xmlName) + "> is not closed");
        }
    }
    if (type || isArray || leafText) {
        if (m_frames.empty())
            return fail("the root must be an element, not a value");
        if (!selfClosing && (!text(raw) || !closeTag(xmlName)))
            return false;
        if (isArray)
            return array(name, attrs, raw);
        return value(name, type ? *type : std::string_view("cDeltaString"), raw, attrs);
    }

    std::int32_t id = 0;
    if (const auto idText = attrs.id; idText && !parseInt(*idText, id))
        return fail("d:id=\"" + std::string(*idText) + "\" is not a 32-bit id");
    countChild();
    if (!m_writer.head(Kind::Open, &name, nullptr))
        return fail("the document holds more than 65,535 strings");
    m_writer.putRaw(&id, 4);
    const std::size_t countAt = m_writer.size();
    m_writer.put32(0);
    m_rootSeen = true;
    if (selfClosing) {
        m_writer.head(Kind::Close, &name, nullptr);
        return true;
    }
    m_frames.push_back({xmlName, &name, countAt, 0});
    return true;
}

Status Encoder::run() {
    if (m_in.size() >= 3 && static_cast<unsigned char>(m_in[0]) == 0xEF && static_cast<unsigned char>(m_in[1]) == 0xBB &&
        static_cast<unsigned char>(m_in[2]) == 0xBF)
        return Status{false, "line 1: the document starts with a byte order mark, which the simulator's tools refuse", 0, 1};
    while (m_error.empty()) {
        skipSpace();
        if (m_pos >= m_in.size())
            break;
        if (m_in[m_pos] != '<') {
            if (m_frames.empty())
                fail("text outside the root element");
            else
                fail("text between the elements of <" + std::string(m_frames.back().xmlName) + ">");
            break;
        }
        const char next = at(m_pos + 1);
        if (next == '?') {
            skipPast("?>");
        } else if (next == '!' && m_in.compare(m_pos, 4, "<!--") == 0) {
            skipPast("-->");
        } else if (next == '/') {
            if (m_frames.empty()) {
                fail("a closing tag without an open element");
                break;
            }
            const Frame frame = m_frames.back();
            m_frames.pop_back();
            if (!closeTag(frame.xmlName))
                break;
            m_writer.patch32(frame.countAt, frame.children);
            m_writer.head(Kind::Close, frame.name, nullptr);
        } else {
            element();
        }
    }
    if (m_error.empty() && !m_frames.empty())
        fail("the document ends before </" + std::string(m_frames.back().xmlName) + ">");
    if (m_error.empty() && !m_rootSeen)
        fail("the document holds no element");
    if (!m_error.empty())
        return Status{false, "line " + std::to_string(m_errorLine) + ": " + m_error, 0, m_errorLine};
    return Status::success();
}

} // namespace

Status encode(std::string_view xml, std::string& binary, const ReadOptions& options) {
    try {
        Encoder e(xml, binary, options);
        Status s = e.run();
        if (!s.ok)
            binary.clear();
        return s;
    } catch (const std::bad_alloc&) {
        binary.clear();
        binary.shrink_to_fit();
        return Status{false, "there is not enough memory to convert the document", 0, 0};
    }
}

void appendUtf8(std::string& out, char32_t cp) {
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

} // namespace serz
