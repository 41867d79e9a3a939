#include "tokens.h"

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

void appendEscaped(std::string& out, std::string_view text) {
    std::size_t from = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char* entity = nullptr;
        switch (text[i]) {
        case '\'': entity = "&apos;"; break;
        case '"': entity = "&quot;"; break;
        case '&': entity = "&amp;"; break;
        case '<': entity = "&lt;"; break;
        case '>': entity = "&gt;"; break;
        default: continue;
        }
        out.append(text, from, i - from);
        out += entity;
        from = i + 1;
    }
    out.append(text, from, std::string_view::npos);
}

void appendBlobHex(std::string& out, std::string_view bytes, const char* eol) {
    static const char* hex = "0123456789ABCDEF";
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i > 0) {
            if (i % 32 == 0)
                out += eol;
            else if (i % 8 == 0)
                out += ' ';
        }
        const auto b = static_cast<unsigned char>(bytes[i]);
        out += hex[b >> 4];
        out += hex[b & 15];
    }
}

} // namespace serz
