// Binary document -> the converter's XML, in one pass over the token stream.

#include "numbers.h"
#include "serz/serz.h"
#include "tokens.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <stdexcept>
#include <vector>

namespace serz {

namespace {

constexpr char kHeader[8] = {'S', 'E', 'R', 'Z', 0, 0, 1, 0};

struct Template {
    Kind kind = Kind::None;
    ValueType valueType = ValueType::Unknown; // of values and arrays
    std::uint32_t name = 0;
    std::uint32_t type = 0;
};

// The XML is written through a cursor into a small stage that is appended to the string when
// full, so that no byte of the string is first filled with zeros and then written again. A
// piece larger than the stage (a long text, a blob) goes straight into the string, which is
// then extended for it. Room is made once per token; the pieces are copied in unchecked.
class Sink {
public:
    explicit Sink(std::string& s) : m_s(s) {}

    // `capacity`: taken at once (pages never written cost no memory).
    void start(std::size_t capacity) {
        m_s.clear();
        m_s.reserve(capacity);
        m_direct = false;
        p = m_stage;
        m_end = m_stage + kStage;
    }
    void room(std::size_t n) {
        if (static_cast<std::size_t>(m_end - p) < n)
            makeRoom(n);
    }
    std::size_t size() const {
        return m_direct ? static_cast<std::size_t>(p - m_s.data()) : m_s.size() + static_cast<std::size_t>(p - m_stage);
    }
    void finish() { settle(); }
    void clear() {
        m_s.clear();
        m_direct = false;
        p = m_stage;
        m_end = m_stage + kStage;
    }

    // Unchecked: room() was made for them.
    void put(char c) { *p++ = c; }
    void put(std::string_view t) {
        std::memcpy(p, t.data(), t.size());
        p += t.size();
    }
    template <std::size_t N> void put(const char (&literal)[N]) {
        std::memcpy(p, literal, N - 1);
        p += N - 1;
    }
    // Needs room for 16 bytes at least.
    void tabs(std::size_t n) {
        static constexpr char kTabs[17] = "\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t";
        if (n <= 16)
            std::memcpy(p, kTabs, 16);
        else
            std::memset(p, '\t', n);
        p += n;
    }

    char* p = nullptr;
    static constexpr std::size_t kStage = 4096;

private:
    // What is written goes into the string: the stage is appended, or the string cut back to
    // the end of a direct piece.
    void settle() {
        if (m_direct) {
            m_s.resize(static_cast<std::size_t>(p - m_s.data()));
            m_direct = false;
        } else {
            m_s.append(m_stage, p);
        }
        p = m_stage;
        m_end = m_stage + kStage;
    }
    void makeRoom(std::size_t n) {
        settle();
        if (n <= kStage)
            return;
        const std::size_t at = m_s.size();
        m_s.resize(at + n);
        m_direct = true;
        p = m_s.data() + at;
        m_end = p + n;
    }

    std::string& m_s;
    char m_stage[kStage];
    char* m_end = nullptr;
    bool m_direct = false;
};

// The XML form of a name from the string table, made once when the name is first used: "<"
// and the name, then "</", the name, ">" and the line break; an open tag takes the first part,
// a close tag the rest.
struct NameForm {
    std::uint32_t at = 0;    // in the name text
    std::uint32_t open = 0;  // length of "<Name"
    std::uint32_t close = 0; // length of "</Name>" and the line break
};

// The attributes of a scalar as the converter writes them, up to the value's text.
std::string_view scalarHead(ValueType vt) {
    switch (vt) {
    case ValueType::Bool: return " d:type=\"bool\">";
    case ValueType::SInt8: return " d:type=\"sInt8\">";
    case ValueType::UInt8: return " d:type=\"sUInt8\">";
    case ValueType::SInt16: return " d:type=\"sInt16\">";
    case ValueType::UInt16: return " d:type=\"sUInt16\">";
    case ValueType::SInt32: return " d:type=\"sInt32\">";
    case ValueType::UInt32: return " d:type=\"sUInt32\">";
    case ValueType::SInt64: return " d:type=\"sInt64\">";
    case ValueType::UInt64: return " d:type=\"sUInt64\">";
    case ValueType::Float32: return " d:type=\"sFloat32\" d:alt_encoding=\"";
    case ValueType::Float64: return " d:type=\"sFloat64\" d:alt_encoding=\"";
    case ValueType::String: return " d:type=\"cDeltaString\">";
    case ValueType::Unknown: break;
    }
    return {};
}

class Decoder {
public:
    Decoder(std::string_view in, std::string& out, const WriteOptions& options)
        : m_in(in), m_sink(out), m_options(options), m_eol(options.lineEnd == LineEnd::CrLf ? "\r\n" : "\n"),
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
    bool scalar(const Template& t);
    bool array(const Template& t);

    void startOutput();
    const NameForm& nameForm(std::uint32_t index);
    std::string_view openPart(const NameForm& f) const { return {m_names.data() + f.at, f.open}; }
    std::string_view closePart(const NameForm& f) const { return {m_names.data() + f.at + f.open, f.close}; }

    void flushPending(bool selfClose);
    // Room for the indentation, the tags of this name and `more` bytes; the pending open
    // element is written first.
    const NameForm& openTag(std::uint32_t name, std::size_t more) {
        flushPending(false);
        const NameForm& f = nameForm(name);
        m_sink.room(m_depth + 16 + f.open + f.close + more);
        m_sink.tabs(m_depth);
        m_sink.put(openPart(f));
        return f;
    }

    std::string_view m_in;
    Sink m_sink;
    const WriteOptions& m_options;
    std::string_view m_eol;
    std::uint64_t m_limit;
    std::size_t m_pos = 0;
    std::size_t m_tokenStart = 0;
    std::string m_error;
    std::size_t m_errorAt = 0;

    std::vector<std::string_view> m_strings;
    std::vector<NameForm> m_forms; // by string index; open == 0 until first used as a name
    std::string m_names;
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
    m_forms.emplace_back();
    return true;
}

const NameForm& Decoder::nameForm(std::uint32_t index) {
    NameForm& f = m_forms[index];
    if (f.open != 0)
        return f;
    const std::size_t at = m_names.size();
    m_names += '<';
    appendName(m_names, m_strings[index]);
    const std::size_t open = m_names.size() - at;
    m_names += "</";
    m_names.append(m_names, at + 1, open - 1);
    m_names += '>';
    m_names += m_eol;
    f.at = static_cast<std::uint32_t>(at);
    f.open = static_cast<std::uint32_t>(open);
    f.close = static_cast<std::uint32_t>(m_names.size() - at - open);
    return f;
}

void Decoder::startOutput() {
    // Real documents give 2 to 7 times their size. A large one takes the capacity of the most
    // it may give at once, so that the text is never copied to a larger block (which would
    // hold the old block and the new at the same time); only the pages written are ever
    // touched. A small one takes a little more than it will probably need.
    const std::uint64_t expected = std::min<std::uint64_t>(m_in.size() * std::uint64_t{8} + 4096, m_limit);
    if (m_in.size() >= (std::size_t{1} << 20)) {
        try {
            m_sink.start(static_cast<std::size_t>(m_limit));
            return;
        } catch (const std::bad_alloc&) {
            // No address space for all of it: grow as needed.
        } catch (const std::length_error&) {
        }
    }
    m_sink.start(static_cast<std::size_t>(expected));
}

void Decoder::flushPending(bool selfClose) {
    if (!m_pending)
        return;
    m_pending = false;
    const NameForm& f = nameForm(m_pendingName);
    static constexpr std::string_view kRoot = " xmlns:d=\"http://www.kuju.com/TnT/2003/Delta\" d:version=\"1.0\"";
    m_sink.room(m_depth + 16 + f.open + kRoot.size() + 16 + kIntegerRoom + m_eol.size());
    m_sink.tabs(m_depth);
    m_sink.put(openPart(f));
    if (m_pendingRoot)
        m_sink.put(kRoot);
    if (m_pendingId != 0) {
        m_sink.put(" d:id=\"");
        m_sink.p = putInt(m_sink.p, m_pendingId);
        m_sink.put('"');
    }
    if (selfClose) {
        m_sink.put("/>");
    } else {
        m_sink.put('>');
        ++m_depth;
    }
    m_sink.put(m_eol);
}

bool Decoder::scalar(const Template& t) {
    const ValueType vt = t.valueType;
    if (vt == ValueType::String) {
        std::uint32_t s = 0;
        if (!strref(s))
            return false;
        const std::string_view text = m_strings[s];
        // An entity is at most six bytes for one.
        const NameForm& f = openTag(t.name, 32 + text.size() * 6);
        m_sink.put(scalarHead(vt));
        m_sink.p = putEscaped(m_sink.p, text);
        m_sink.put(closePart(f));
        return true;
    }
    const std::size_t size = valueSize(vt);
    if (!need(size))
        return false;
    const char* p = m_in.data() + m_pos;
    m_pos += size;
    const NameForm& f = openTag(t.name, 80 + kAltEncodingRoom + kFloatGRoom);
    m_sink.put(scalarHead(vt));
    if (vt == ValueType::Float32 || vt == ValueType::Float64) {
        const double d = floatAt(vt, p);
        m_sink.p = putAltEncoding(m_sink.p, d);
        m_sink.put("\" d:precision=\"string\">");
        m_sink.p = putFloatG(m_sink.p, d, m_options.exponentDigits);
    } else {
        m_sink.p = putInteger(m_sink.p, vt, p);
    }
    m_sink.put(closePart(f));
    return true;
}

bool Decoder::array(const Template& t) {
    const ValueType vt = t.valueType;
    std::uint8_t count = 0;
    if (!u8(count))
        return false;
    const std::size_t size = valueSize(vt);
    if (!need(size * count))
        return false;
    const std::string_view type = m_strings[t.type];
    const bool isFloat = vt == ValueType::Float32 || vt == ValueType::Float64;
    const NameForm& f = openTag(t.name, 80 + type.size() + std::size_t{count} * ((isFloat ? kFloatFixedRoom : kIntegerRoom) + 1));
    m_sink.put(" d:numElements=\"");
    m_sink.p = putUInt(m_sink.p, count);
    m_sink.put("\" d:elementType=\"");
    m_sink.put(type);
    m_sink.put('"');
    if (isFloat)
        m_sink.put(" d:precision=\"string\"");
    m_sink.put('>');
    for (std::uint8_t i = 0; i < count; ++i) {
        if (i)
            m_sink.put(' ');
        const char* p = m_in.data() + m_pos;
        m_pos += size;
        m_sink.p = isFloat ? putFloatFixed7(m_sink.p, floatAt(vt, p)) : putInteger(m_sink.p, vt, p);
    }
    m_sink.put(closePart(f));
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
            const NameForm& f = nameForm(name);
            m_sink.room(m_depth + 16 + f.close);
            m_sink.tabs(m_depth);
            m_sink.put(closePart(f));
        }
        if (m_stack.empty())
            m_rootDone = true;
        return true;
    }
    case Kind::Value: return scalar(t);
    case Kind::Array: return array(t);
    case Kind::Reference: {
        std::int32_t target = 0;
        if (!raw(target))
            return false;
        const NameForm& f = openTag(t.name, 16 + kIntegerRoom);
        m_sink.put(" d:type=\"ref\">");
        m_sink.p = putInt(m_sink.p, target);
        m_sink.put(closePart(f));
        return true;
    }
    case Kind::Nil:
        flushPending(false);
        m_sink.room(m_depth + 16 + 10);
        m_sink.tabs(m_depth);
        m_sink.put("<d:nil/>");
        m_sink.put(m_eol);
        return true;
    case Kind::Blob: {
        std::uint32_t size = 0;
        if (!raw(size) || !need(size))
            return false;
        flushPending(false);
        // Two digits a byte, a space or a line break between groups of eight.
        m_sink.room(m_depth + 16 + 48 + kIntegerRoom + std::size_t{size} * 2 + (std::size_t{size} / 8 + 1) * 2);
        m_sink.tabs(m_depth);
        m_sink.put("<d:blob d:size=\"");
        m_sink.p = putUInt(m_sink.p, size);
        m_sink.put("\">");
        if (m_options.blobPlaces)
            m_options.blobPlaces->push_back({m_pos, size});
        else
            m_sink.p = putBlobHex(m_sink.p, m_in.substr(m_pos, size), m_eol);
        m_pos += size;
        m_sink.put("</d:blob>");
        m_sink.put(m_eol);
        return true;
    }
    case Kind::Hint:
    case Kind::None: break;
    }
    return fail("a back-reference names an empty slot");
}

bool Decoder::fullToken(Kind kind) {
    Template t{kind, ValueType::Unknown, 0, 0};
    switch (kind) {
    case Kind::Open:
    case Kind::Close:
    case Kind::Reference:
        if (!strref(t.name))
            return false;
        break;
    case Kind::Value:
    case Kind::Array: {
        if (!strref(t.name) || !strref(t.type))
            return false;
        const std::string_view type = m_strings[t.type];
        t.valueType = valueTypeNamed(type);
        if (kind == Kind::Value && t.valueType == ValueType::Unknown)
            return fail("unknown value type '" + std::string(type) + "'");
        if (kind == Kind::Array && (t.valueType == ValueType::Unknown || t.valueType == ValueType::String))
            return fail("unknown array element type '" + std::string(type) + "'");
        break;
    }
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
    if (m_in.size() < 8 || std::memcmp(m_in.data(), kHeader, 8) != 0) {
        m_sink.clear();
        return Status{false, "not a simulator document: the header is not SERZ 00 00 01 00", 0, 0};
    }
    m_pos = 8;
    startOutput();
    m_sink.room(64);
    m_sink.put("<?xml version=\"1.0\" encoding=\"utf-8\"?>");
    m_sink.put(m_eol);
    while (m_pos < m_in.size()) {
        if (!token())
            break;
        if (m_sink.size() > m_limit) {
            fail("the XML would be larger than " + std::to_string(m_limit) + " bytes");
            break;
        }
    }
    if (m_error.empty() && !m_stack.empty())
        fail("the document ends inside the element " + std::string(m_strings[m_stack.back()]));
    if (m_error.empty() && !m_rootDone)
        fail("the document holds no element");
    if (!m_error.empty()) {
        m_sink.clear();
        return Status{false, m_error + " (at byte " + std::to_string(m_errorAt) + ")", m_errorAt, 0};
    }
    m_sink.finish();
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
