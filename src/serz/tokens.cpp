#include "tokens.h"

#include <cstring>

namespace serz {

ValueType valueTypeNamed(std::string_view n) {
    if (n == "cDeltaString") return ValueType::String;
    if (n == "sFloat32") return ValueType::Float32;
    if (n == "sUInt32") return ValueType::UInt32;
    if (n == "sInt32") return ValueType::SInt32;
    if (n == "bool") return ValueType::Bool;
    if (n == "sUInt64") return ValueType::UInt64;
    if (n == "sUInt8") return ValueType::UInt8;
    if (n == "sInt16") return ValueType::SInt16;
    if (n == "sUInt16") return ValueType::UInt16;
    if (n == "sFloat64") return ValueType::Float64;
    if (n == "sInt64") return ValueType::SInt64;
    if (n == "sInt8") return ValueType::SInt8;
    return ValueType::Unknown;
}

std::size_t valueSize(ValueType t) {
    switch (t) {
    case ValueType::Bool:
    case ValueType::SInt8:
    case ValueType::UInt8: return 1;
    case ValueType::SInt16:
    case ValueType::UInt16: return 2;
    case ValueType::SInt32:
    case ValueType::UInt32:
    case ValueType::Float32: return 4;
    case ValueType::SInt64:
    case ValueType::UInt64:
    case ValueType::Float64: return 8;
    case ValueType::String:
    case ValueType::Unknown: break;
    }
    return 0;
}

void appendName(std::string& out, std::string_view name) {
    if (name.empty()) {
        out += 'e';
        return;
    }
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (name[i] == ':' && i + 1 < name.size() && name[i + 1] == ':') {
            out += '-';
            ++i;
        } else {
            out += name[i];
        }
    }
}

namespace {

// The entity of a character the XML text cannot hold as it is, or null.
inline const char* entityOf(char c) {
    switch (c) {
    case '\'': return "&apos;";
    case '"': return "&quot;";
    case '&': return "&amp;";
    case '<': return "&lt;";
    case '>': return "&gt;";
    default: return nullptr;
    }
}

} // namespace

void appendEscaped(std::string& out, std::string_view text) {
    std::size_t from = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char* entity = entityOf(text[i]);
        if (!entity)
            continue;
        out.append(text, from, i - from);
        out += entity;
        from = i + 1;
    }
    out.append(text, from, std::string_view::npos);
}

char* putEscaped(char* p, std::string_view text) {
    for (const char c : text) {
        if (const char* entity = entityOf(c)) {
            const std::size_t n = std::strlen(entity);
            std::memcpy(p, entity, n);
            p += n;
        } else {
            *p++ = c;
        }
    }
    return p;
}

void appendBlobHex(std::string& out, std::string_view bytes, const char* eol) {
    const std::string_view lineEnd(eol);
    const std::size_t at = out.size();
    out.resize(at + bytes.size() * 2 + (bytes.size() / 8 + 1) * lineEnd.size());
    out.resize(static_cast<std::size_t>(putBlobHex(out.data() + at, bytes, lineEnd) - out.data()));
}

char* putBlobHex(char* p, std::string_view bytes, std::string_view eol) {
    static constexpr char hex[] = "0123456789ABCDEF";
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i > 0 && i % 8 == 0) {
            if (i % 32 == 0) {
                std::memcpy(p, eol.data(), eol.size());
                p += eol.size();
            } else {
                *p++ = ' ';
            }
        }
        const auto b = static_cast<unsigned char>(bytes[i]);
        *p++ = hex[b >> 4];
        *p++ = hex[b & 15];
    }
    return p;
}

} // namespace serz
