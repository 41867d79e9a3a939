// Binary document -> the converter's XML, in one pass over the token stream.

#include "numbers.h"
#include "serz/serz.h"
#include "tokens.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <vector>

namespace serz {

namespace {

constexpr char kHeader[8] = {'S', 'E', 'R', 'Z', 0, 0, 1, 0};

struct Template {
    Kind kind = Kind::None;
    std::uint32_t name = 0;
    std::uint32_t type = 0;
};

class Decoder {
public:
    Decoder(std::string_view in, std::string& out, const WriteOptions& options)
        : m_in(in), m_out(out), m_options(options), m_eol(options.lineEnd == LineEnd::CrLf ? "\r\n" : "\n"),
          m_limit(options.maxXmlBytes ? options.maxXmlBytes : xmlLimitFor(in.size())) {}

    Status run();

private:
    // Reading primitives; each sets the error and returns false at the end of the input.
    bool need(std::size_t n) {
        if (m_in.size() - m_pos >= n)
            return true;
        return fail("the document ends in the middle of a token");
    }
    bool u8(std::uint8_t& v) {
        if (!need(1))
            return false;
        v = static_cast<std::uint8_t>(m_in[m_pos++]);
        return true;
    }
    template <typename T> bool raw(T& v) {
        if (!need(sizeof(T)))
            return false;
        std::memcpy(&v, m_in.data() + m_pos, sizeof(T));
        m_pos += sizeof(T);
        return true;
    }
    bool fail(std::string message) {
        if (m_error.empty()) {
            m_error = std::move(message);
            m_errorAt = m_tokenStart;
        }
        return false;
    }

    bool strref(std::uint32_t& index);
    bool token();
    bool fullToken(Kind kind);
    bool instance(const Template& t);
    bool scalar(std::string_view name, std::string_view type);
    bool array(std::string_view name, std::string_view type);

    void flushPending(bool selfClose);
    void indent() { m_out.append(m_depth, '\t'); }
    void openTag(std::string_view name) {
        flushPending(false);
        indent();
        m_out += '<';
        appendName(m_out, name);
    }
    void closeTag(std::string_view name) {
        m_out += "</";
        appendName(m_out, name);
        m_out += '>';
        m_out += m_eol;
    }

    std::string_view m_in;
    std::string& m_out;
    const WriteOptions& m_options;
    const char* m_eol;
    std::uint64_t m_limit;
    std::size_t m_pos = 0;
    std::size_t m_tokenStart = 0;
    std::string m_error;
    std::size_t m_errorAt = 0;

    std::vector<std::string_view> m_strings;
    std::array<Template, 255> m_ring{};
    std::size_t m_fullTokens = 0;

    std::vector<std::uint32_t> m_stack; // names of open elements
    std::size_t m_depth = 0;
    bool m_rootDone = false;
    // An open element is written once the next token shows whether it is empty.
    bool m_pending = false;
    std::uint32_t m_pendingName = 0;
    std::int32_t m_pendingId = 0;
    bool m_pendingRoot = false;
};

// A stored sFloat32 or sFloat64, widened to double.
double floatAt(ValueType vt, const char* p) {
    if (vt == ValueType::Float32) {
        float f;
        std::memcpy(&f, p, 4);
        return f;
    }
    double d;
    std::memcpy(&d, p, 8);
    return d;
}

bool Decoder::strref(std::uint32_t& index) {
    std::uint16_t ref = 0;
    if (!raw(ref))
        return false;
    if (ref != 0xFFFF) {
        if (ref >= m_strings.size())
            return fail("string index " + std::to_string(ref) + " is beyond the " + std::to_string(m_strings.size()) +
                        " strings read so far");
        index = ref;
        return true;
    }
    std::uint32_t chars = 0;
    if (!raw(chars))
        return false;
    // The count is of characters: walk them to find the bytes they take.
    const std::size_t start = m_pos;
    std::size_t p = m_pos;
    for (std::uint32_t i = 0; i < chars; ++i) {
        if (p >= m_in.size())
            return fail("a string of " + std::to_string(chars) + " characters runs past the end of the document");
        p += utf8Length(static_cast<unsigned char>(m_in[p]));
    }
    if (p > m_in.size())
        return fail("a string runs past the end of the document");
    if (m_strings.size() >= 0xFFFF)
        return fail("the document holds more than 65,535 strings");
    m_pos = p;
    index = static_cast<std::uint32_t>(m_strings.size());
    m_strings.push_back(m_in.substr(start, p - start));
    return true;
}

void Decoder::flushPending(bool selfClose) {
    if (!m_pending)
        return;
    m_pending = false;
    indent();
    m_out += '<';
    appendName(m_out, m_strings[m_pendingName]);
    if (m_pendingRoot)
        m_out += " xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\"";
    if (m_pendingId != 0) {
        m_out += " d:id=\"";
        appendInt(m_out, m_pendingId);
        m_out += '"';
    }
    m_out += selfClose ? "/>" : ">";
    m_out += m_eol;
    if (!selfClose)
        ++m_depth;
}

bool Decoder::scalar(std::string_view name, std::string_view type) {
    const ValueType vt = valueTypeNamed(type);
    if (vt == ValueType::Unknown)
        return fail("unknown value type '" + std::string(type) + "'");
    openTag(name);
    if (vt == ValueType::String) {
        std::uint32_t s = 0;
        if (!strref(s))
            return false;
        m_out += " d:type=\"cDeltaString\">";
        appendEscaped(m_out, m_strings[s]);
        closeTag(name);
        return true;
    }
    m_out += " d:type=\"";
    m_out += type;
    m_out += '"';
    const std::size_t size = valueSize(vt);
    if (!need(size))
        return false;
    const char* p = m_in.data() + m_pos;
    m_pos += size;
    if (vt == ValueType::Float32 || vt == ValueType::Float64) {
        const double d = floatAt(vt, p);
        m_out += " d:alt_encoding=\"";
        appendAltEncoding(m_out, d);
        m_out += "\" d:precision=\"string\">";
        appendFloatG(m_out, d, m_options.exponentDigits);
    } else {
        m_out += '>';
        appendInteger(m_out, vt, p);
    }
    closeTag(name);
    return true;
}

bool Decoder::array(std::string_view name, std::string_view type) {
    const ValueType vt = valueTypeNamed(type);
    if (vt == ValueType::Unknown || vt == ValueType::String)
        return fail("unknown array element type '" + std::string(type) + "'");
    std::uint8_t count = 0;
    if (!u8(count))
        return false;
    const std::size_t size = valueSize(vt);
    if (!need(size * count))
        return false;
    openTag(name);
    m_out += " d:numElements=\"";
    appendInt(m_out, count);
    m_out += "\" d:elementType=\"";
    m_out += type;
    m_out += '"';
    const bool isFloat = vt == ValueType::Float32 || vt == ValueType::Float64;
    if (isFloat)
        m_out += " d:precision=\"string\"";
    m_out += '>';
    for (std::uint8_t i = 0; i < count; ++i) {
        if (i)
            m_out += ' ';
        const char* p = m_in.data() + m_pos;
        m_pos += size;
        if (isFloat) {
            appendFloatFixed7(m_out, floatAt(vt, p));
        } else {
            appendInteger(m_out, vt, p);
        }
    }
    closeTag(name);
    return true;
}

bool Decoder::instance(const Template& t) {
    if (m_rootDone)
        return fail("data follows the end of the root element");
    if (m_stack.empty() && t.kind != Kind::Open)
        return fail("the document does not start with an element");
    switch (t.kind) {
    case Kind::Open: {
        std::int32_t id = 0;
        std::uint32_t children = 0;
        if (!raw(id) || !raw(children))
            return false;
        if (m_stack.size() >= m_options.maxDepth)
            return fail("the elements nest deeper than " + std::to_string(m_options.maxDepth) + " levels");
        flushPending(false);
        m_pending = true;
        m_pendingName = t.name;
        m_pendingId = id;
        m_pendingRoot = m_stack.empty();
        m_stack.push_back(t.name);
        return true;
    }
    case Kind::Close: {
        if (m_stack.empty())
            return fail("a close token has no element to close");
        const std::uint32_t name = m_stack.back();
        m_stack.pop_back();
        if (m_pending) {
            flushPending(true);
        } else {
            --m_depth;
            indent();
            closeTag(m_strings[name]);
        }
        if (m_stack.empty())
            m_rootDone = true;
        return true;
    }
    case Kind::Value: return scalar(m_strings[t.name], m_strings[t.type]);
    case Kind::Array: return array(m_strings[t.name], m_strings[t.type]);
    case Kind::Reference: {
        std::int32_t target = 0;
        if (!raw(target))
            return false;
        openTag(m_strings[t.name]);
        m_out += " d:type=\"ref\">";
        appendInt(m_out, target);
        closeTag(m_strings[t.name]);
        return true;
    }
    case Kind::Nil:
        flushPending(false);
        indent();
        m_out += "<d:nil/>";
        m_out += m_eol;
        return true;
    case Kind::Blob: {
        std::uint32_t size = 0;
        if (!raw(size) || !need(size))
            return false;
        flushPending(false);
        indent();
        m_out += "<d:blob d:size=\"";
        appendInt(m_out, size);
        m_out += "\">";
        if (m_options.blobPlaces)
            m_options.blobPlaces->push_back({m_pos, size});
        else
            appendBlobHex(m_out, m_in.substr(m_pos, size), m_eol);
        m_pos += size;
        m_out += "</d:blob>";
        m_out += m_eol;
        return true;
    }
    case Kind::Hint:
    case Kind::None: break;
    }
    return fail("a back-reference names an empty slot");
}

bool Decoder::fullToken(Kind kind) {
    Template t{kind, 0, 0};
    switch (kind) {
    case Kind::Open:
    case Kind::Close:
    case Kind::Reference:
        if (!strref(t.name))
            return false;
        break;
    case Kind::Value:
    case Kind::Array:
        if (!strref(t.name) || !strref(t.type))
            return false;
        break;
    case Kind::Nil:
    case Kind::Blob: break;
    case Kind::Hint: {
        // The game's own size hint: read over it, but it takes its slot in the ring.
        std::uint8_t zero = 0;
        std::uint32_t hint = 0;
        if (!u8(zero) || !raw(hint))
            return false;
        m_ring[m_fullTokens++ % 255] = t;
        return true;
    }
    case Kind::None: return fail("unknown token kind");
    }
    m_ring[m_fullTokens++ % 255] = t;
    return instance(t);
}

bool Decoder::token() {
    m_tokenStart = m_pos;
    std::uint8_t b = 0;
    if (!u8(b))
        return false;
    if (b != 0xFF) {
        const Template& t = m_ring[b];
        if (t.kind == Kind::None || t.kind == Kind::Hint)
            return fail("a back-reference names slot " + std::to_string(b) + ", which holds no token");
        return instance(t);
    }
    std::uint8_t kindByte = 0;
    if (!u8(kindByte))
        return false;
    const Kind kind = kindOf(kindByte);
    if (kind == Kind::None) {
        char hex[8];
        std::snprintf(hex, sizeof hex, "%02X", kindByte);
        return fail(std::string("unknown token kind byte ") + hex);
    }
    return fullToken(kind);
}

Status Decoder::run() {
    m_out.clear();
    if (m_in.size() < 8 || std::memcmp(m_in.data(), kHeader, 8) != 0)
        return Status{false, "not a simulator document: the header is not SERZ 00 00 01 00", 0, 0};
    m_pos = 8;
    m_out.clear();
    m_out.reserve(static_cast<std::size_t>(std::min<std::uint64_t>(m_in.size() * std::uint64_t{7}, m_limit)));
    m_out += "<?xml version=\"1.0\" encoding=\"utf-8\"?>";
    m_out += m_eol;
    while (m_pos < m_in.size()) {
        if (!token())
            break;
        if (m_out.size() > m_limit) {
            fail("the XML would be larger than " + std::to_string(m_limit) + " bytes");
            break;
        }
    }
    if (m_error.empty() && !m_stack.empty())
        fail("the document ends inside the element " + std::string(m_strings[m_stack.back()]));
    if (m_error.empty() && !m_rootDone)
        fail("the document holds no element");
    if (!m_error.empty()) {
        m_out.clear();
        return Status{false, m_error + " (at byte " + std::to_string(m_errorAt) + ")", m_errorAt, 0};
    }
    return Status::success();
}

} // namespace

std::uint64_t xmlLimitFor(std::uint64_t binaryBytes) {
    constexpr std::uint64_t kFloor = std::uint64_t{256} << 20, kCeiling = std::uint64_t{8} << 30;
    return std::clamp(binaryBytes * 32, kFloor, kCeiling);
}

Status decode(std::string_view binary, std::string& xml, const WriteOptions& options) {
    try {
        Decoder d(binary, xml, options);
        return d.run();
    } catch (const std::bad_alloc&) {
        xml.clear();
        xml.shrink_to_fit();
        return Status{false, "there is not enough memory to convert the document", 0, 0};
    }
}

} // namespace serz
