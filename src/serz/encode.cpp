// The converter's XML -> binary document, in one pass: a small reader for the converter's
// dialect feeds a writer that follows the converter's string-table and template-ring rules.

#include "numbers.h"
#include "serz/serz.h"
#include "tokens.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <unordered_map>
#include <vector>

namespace serz {

namespace {

struct Attribute {
    std::string_view name;
    std::string_view value; // still escaped
};

// The writer side: strings, templates and the token bytes.
class Writer {
public:
    explicit Writer(std::string& out) : m_out(out) {
        m_out.assign("SERZ\0\0\1\0", 8);
        m_ring.fill(kEmpty);
    }

    // Writes the token's head: a back-reference to its template, or the escape, the kind and
    // the strings of a new template. False when the string table is full.
    bool head(Kind kind, const std::string& name, const std::string& type) {
        const auto n = hasName(kind) ? known(name) : std::optional<std::uint16_t>(0);
        const auto t = type.empty() && !hasType(kind) ? std::optional<std::uint16_t>(0) : known(type);
        if (n && t) {
            const auto it = m_templates.find(key(kind, *n, *t));
            if (it != m_templates.end()) {
                m_out += static_cast<char>(it->second);
                return true;
            }
        }
        m_out += '\xFF';
        m_out += static_cast<char>(kind);
        std::uint16_t ni = 0, ti = 0;
        if (hasName(kind) && !strref(name, ni))
            return false;
        if (hasType(kind) && !strref(type, ti))
            return false;
        const std::uint64_t k = key(kind, ni, ti);
        if (m_ring[m_next] != kEmpty)
            m_templates.erase(m_ring[m_next]);
        m_ring[m_next] = k;
        m_templates[k] = static_cast<std::uint8_t>(m_next);
        m_next = (m_next + 1) % 255;
        return true;
    }

    // Text whose last character is cut short cannot be stored: a reader would run past it.
    static bool storable(const std::string& s) {
        std::size_t p = 0;
        while (p < s.size())
            p += utf8Length(static_cast<unsigned char>(s[p]));
        return p == s.size();
    }

    bool strref(const std::string& s, std::uint16_t& index) {
        const auto it = m_strings.find(s);
        if (it != m_strings.end()) {
            index = it->second;
            put16(index);
            return true;
        }
        if (m_strings.size() >= 0xFFFF)
            return false;
        index = static_cast<std::uint16_t>(m_strings.size());
        m_strings.emplace(s, index);
        put16(0xFFFF);
        // Counted the way a reader walks them, so that text that is not proper UTF-8 still
        // comes back as the same bytes.
        std::uint32_t chars = 0;
        for (std::size_t p = 0; p < s.size(); p += utf8Length(static_cast<unsigned char>(s[p])))
            ++chars;
        put32(chars);
        m_out += s;
        return true;
    }

    void put8(std::uint8_t v) { m_out += static_cast<char>(v); }
    void put16(std::uint16_t v) { m_out.append(reinterpret_cast<const char*>(&v), 2); }
    void put32(std::uint32_t v) { m_out.append(reinterpret_cast<const char*>(&v), 4); }
    void putRaw(const void* p, std::size_t n) { m_out.append(static_cast<const char*>(p), n); }
    std::size_t size() const { return m_out.size(); }
    void patch32(std::size_t at, std::uint32_t v) { std::memcpy(m_out.data() + at, &v, 4); }

private:
    static constexpr std::uint64_t kEmpty = ~0ull;
    static bool hasName(Kind k) { return k == Kind::Open || k == Kind::Close || k == Kind::Value || k == Kind::Array || k == Kind::Reference; }
    static bool hasType(Kind k) { return k == Kind::Value || k == Kind::Array; }
    static std::uint64_t key(Kind k, std::uint16_t n, std::uint16_t t) {
        return (std::uint64_t(static_cast<std::uint8_t>(k)) << 32) | (std::uint64_t(n) << 16) | t;
    }
    std::optional<std::uint16_t> known(const std::string& s) const {
        const auto it = m_strings.find(s);
        if (it == m_strings.end())
            return std::nullopt;
        return it->second;
    }

    std::string& m_out;
    std::unordered_map<std::string, std::uint16_t> m_strings;
    std::unordered_map<std::uint64_t, std::uint8_t> m_templates;
    std::array<std::uint64_t, 255> m_ring{};
    std::size_t m_next = 0;
};

class Encoder {
public:
    Encoder(std::string_view in, std::string& out, const ReadOptions& options)
        : m_in(in), m_writer(out), m_options(options) {}

    Status run();

private:
    bool fail(std::string message) {
        if (m_error.empty()) {
            m_error = std::move(message);
            m_errorLine = m_line;
        }
        return false;
    }
    void skipSpace() {
        while (m_pos < m_in.size()) {
            const char c = m_in[m_pos];
            if (c == '\n')
                ++m_line;
            else if (c != ' ' && c != '\t' && c != '\r')
                return;
            ++m_pos;
        }
    }
    bool skipPast(std::string_view end) {
        const std::size_t at = m_in.find(end, m_pos);
        if (at == std::string_view::npos)
            return fail("'" + std::string(end) + "' is missing");
        countLines(m_pos, at + end.size());
        m_pos = at + end.size();
        return true;
    }
    void countLines(std::size_t from, std::size_t to) {
        for (std::size_t i = from; i < to; ++i)
            if (m_in[i] == '\n')
                ++m_line;
    }

    bool element();
    bool startTag(std::string_view& name, std::vector<Attribute>& attributes, bool& selfClosing);
    bool closeTag(std::string_view name);
    bool text(std::string_view& raw);
    bool unescape(std::string_view raw, std::string& out);
    std::optional<std::string_view> attribute(const std::vector<Attribute>& a, std::string_view name) const;
    static std::string binaryName(std::string_view xmlName);
    void countChild() {
        if (!m_frames.empty())
            ++m_frames.back().children;
    }

    bool value(const std::string& name, std::string_view type, std::string_view raw, const std::vector<Attribute>& a);
    bool number(ValueType vt, std::string_view text, std::optional<std::string_view> alt, std::string& bytes);
    bool array(const std::string& name, const std::vector<Attribute>& a, std::string_view raw);
    bool blob(const std::vector<Attribute>& a, std::string_view raw);

    struct Frame {
        std::string_view xmlName;
        std::string name;
        std::size_t countAt;
        std::uint32_t children = 0;
    };

    std::string_view m_in;
    Writer m_writer;
    const ReadOptions& m_options;
    std::size_t m_pos = 0;
    std::size_t m_line = 1;
    std::string m_error;
    std::size_t m_errorLine = 0;
    std::vector<Frame> m_frames;
    bool m_rootSeen = false;
    std::string m_scratch;
};

std::string Encoder::binaryName(std::string_view xmlName) {
    std::string name;
    name.reserve(xmlName.size() + 4);
    for (char c : xmlName) {
        if (c == '-')
            name += "::";
        else
            name += c;
    }
    return name;
}

std::optional<std::string_view> Encoder::attribute(const std::vector<Attribute>& a, std::string_view name) const {
    for (const auto& x : a)
        if (x.name == name)
            return x.value;
    return std::nullopt;
}

bool Encoder::startTag(std::string_view& name, std::vector<Attribute>& attributes, bool& selfClosing) {
    // m_pos is just past '<'.
    const std::size_t start = m_pos;
    while (m_pos < m_in.size()) {
        const char c = m_in[m_pos];
        if (c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '/' || c == '>')
            break;
        ++m_pos;
    }
    name = m_in.substr(start, m_pos - start);
    if (name.empty())
        return fail("an element has no name");
    attributes.clear();
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
            if (m_pos + 1 >= m_in.size() || m_in[m_pos + 1] != '>')
                return fail("a stray '/' in the tag <" + std::string(name));
            m_pos += 2;
            selfClosing = true;
            return true;
        }
        const std::size_t a = m_pos;
        while (m_pos < m_in.size() && m_in[m_pos] != '=' && m_in[m_pos] != ' ' && m_in[m_pos] != '>' && m_in[m_pos] != '/')
            ++m_pos;
        const std::string_view attrName = m_in.substr(a, m_pos - a);
        skipSpace();
        if (m_pos >= m_in.size() || m_in[m_pos] != '=')
            return fail("the attribute " + std::string(attrName) + " of <" + std::string(name) + "> has no value");
        ++m_pos;
        skipSpace();
        if (m_pos >= m_in.size() || (m_in[m_pos] != '"' && m_in[m_pos] != '\''))
            return fail("the value of " + std::string(attrName) + " is not in quotes");
        const char quote = m_in[m_pos++];
        const std::size_t end = m_in.find(quote, m_pos);
        if (end == std::string_view::npos)
            return fail("the value of " + std::string(attrName) + " has no closing quote");
        attributes.push_back({attrName, m_in.substr(m_pos, end - m_pos)});
        countLines(m_pos, end);
        m_pos = end + 1;
    }
}

bool Encoder::closeTag(std::string_view name) {
    if (m_in.compare(m_pos, 2, "</") != 0)
        return fail("<" + std::string(name) + "> is not closed");
    m_pos += 2;
    const std::size_t end = m_in.find('>', m_pos);
    if (end == std::string_view::npos)
        return fail("a closing tag has no '>'");
    std::string_view closing = m_in.substr(m_pos, end - m_pos);
    while (!closing.empty() && (closing.back() == ' ' || closing.back() == '\t' || closing.back() == '\r' || closing.back() == '\n'))
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
    countLines(m_pos, end);
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
                    m_scratch.clear();
                    appendFloatG(m_scratch, *exact, digits);
                    if (m_scratch == t) {
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

bool Encoder::value(const std::string& name, std::string_view type, std::string_view raw, const std::vector<Attribute>& a) {
    if (type == "ref") {
        std::int32_t target = 0;
        if (!parseInt(raw, target))
            return fail("'" + std::string(raw) + "' is not a reference id");
        if (!m_writer.head(Kind::Reference, name, {}))
            return fail("the document holds more than 65,535 strings");
        m_writer.putRaw(&target, 4);
        countChild();
        return true;
    }
    const ValueType vt = valueTypeNamed(type);
    if (vt == ValueType::Unknown)
        return fail("unknown value type '" + std::string(type) + "'");
    if (!m_writer.head(Kind::Value, name, std::string(type)))
        return fail("the document holds more than 65,535 strings");
    countChild();
    if (vt == ValueType::String) {
        std::string s;
        if (!unescape(raw, s))
            return false;
        if (!Writer::storable(s))
            return fail("the text of <" + name + "> ends in the middle of a UTF-8 character");
        std::uint16_t index = 0;
        if (!m_writer.strref(s, index))
            return fail("the document holds more than 65,535 strings");
        return true;
    }
    std::string bytes;
    if (!number(vt, raw, attribute(a, "d:alt_encoding"), bytes))
        return false;
    m_writer.putRaw(bytes.data(), bytes.size());
    return true;
}

bool Encoder::array(const std::string& name, const std::vector<Attribute>& a, std::string_view raw) {
    const auto countText = attribute(a, "d:numElements");
    const auto type = attribute(a, "d:elementType");
    unsigned count = 0;
    if (!countText || !parseInt(*countText, count) || count > 255)
        return fail("d:numElements must be a count from 0 to 255");
    if (!type)
        return fail("an array has no d:elementType");
    const ValueType vt = valueTypeNamed(*type);
    if (vt == ValueType::Unknown || vt == ValueType::String)
        return fail("unknown array element type '" + std::string(*type) + "'");
    std::string bytes;
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
    if (!m_writer.head(Kind::Array, name, std::string(*type)))
        return fail("the document holds more than 65,535 strings");
    m_writer.put8(static_cast<std::uint8_t>(count));
    m_writer.putRaw(bytes.data(), bytes.size());
    countChild();
    return true;
}

bool Encoder::blob(const std::vector<Attribute>& a, std::string_view raw) {
    const auto sizeText = attribute(a, "d:size");
    std::uint32_t size = 0;
    if (!sizeText || !parseInt(*sizeText, size))
        return fail("a blob has no valid d:size");
    std::string bytes;
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
    if (!m_writer.head(Kind::Blob, {}, {}))
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
    std::vector<Attribute> attrs;
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
        if (!m_writer.head(Kind::Nil, {}, {}))
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
    const std::string name = binaryName(xmlName);
    if (!Writer::storable(name))
        return fail("the name <" + std::string(xmlName) + "> ends in the middle of a UTF-8 character");
    const auto type = attribute(attrs, "d:type");
    const bool isArray = attribute(attrs, "d:numElements").has_value();
    bool leafText = false;
    if (!type && !isArray && !selfClosing) {
        // A leaf with text and no type is a string; anything else is an element.
        const std::size_t lt = m_in.find('<', m_pos);
        if (lt == std::string_view::npos)
            return fail("<" + std::string(xmlName) + "> is not closed");
        if (m_in.compare(lt, 2, "</") == 0) {
            const std::string_view between = m_in.substr(m_pos, lt - m_pos);
            leafText = between.find_first_not_of(" \t\r\n") != std::string_view::npos;
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
    if (const auto idText = attribute(attrs, "d:id"); idText && !parseInt(*idText, id))
        return fail("d:id=\"" + std::string(*idText) + "\" is not a 32-bit id");
    countChild();
    if (!m_writer.head(Kind::Open, name, {}))
        return fail("the document holds more than 65,535 strings");
    m_writer.putRaw(&id, 4);
    const std::size_t countAt = m_writer.size();
    m_writer.put32(0);
    m_rootSeen = true;
    if (selfClosing) {
        m_writer.head(Kind::Close, name, {});
        return true;
    }
    m_frames.push_back({xmlName, name, countAt, 0});
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
        if (m_in.compare(m_pos, 2, "<?") == 0) {
            skipPast("?>");
        } else if (m_in.compare(m_pos, 4, "<!--") == 0) {
            skipPast("-->");
        } else if (m_in.compare(m_pos, 2, "</") == 0) {
            if (m_frames.empty()) {
                fail("a closing tag without an open element");
                break;
            }
            Frame frame = std::move(m_frames.back());
            m_frames.pop_back();
            if (!closeTag(frame.xmlName))
                break;
            m_writer.patch32(frame.countAt, frame.children);
            m_writer.head(Kind::Close, frame.name, {});
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
