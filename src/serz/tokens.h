#pragma once
// Token kinds and value types of the binary form, shared by the reader and the writer.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace serz {

enum class Kind : std::uint8_t {
    None = 0,
    Open = 0x50,      // 'P'
    Close = 0x70,     // 'p'
    Value = 0x56,     // 'V'
    Array = 0x41,     // 'A'
    Reference = 0x52, // 'R'
    Nil = 0x4E,       // 'N'
    Blob = 0x42,      // 'B'
    Hint = 0x43,      // 'C', written by the game only
};

inline Kind kindOf(std::uint8_t b) {
    switch (b) {
    case 0x50: case 0x70: case 0x56: case 0x41: case 0x52: case 0x4E: case 0x42: case 0x43:
        return static_cast<Kind>(b);
    default: return Kind::None;
    }
}

enum class ValueType { Bool, SInt8, UInt8, SInt16, UInt16, SInt32, UInt32, SInt64, UInt64, Float32, Float64, String, Unknown };

ValueType valueTypeNamed(std::string_view name);
std::size_t valueSize(ValueType t);

// Bytes taken by the UTF-8 character that starts with this byte (1 for a stray byte).
inline std::size_t utf8Length(unsigned char lead) {
    if (lead < 0xC0)
        return 1;
    if (lead < 0xE0)
        return 2;
    if (lead < 0xF0)
        return 3;
    if (lead < 0xF8)
        return 4;
    return 1;
}

// Names: "::" is written "-", the empty name "e".
void appendName(std::string& out, std::string_view name);
// Text with ' " & < > as entities; everything else, control characters too, as it is.
void appendEscaped(std::string& out, std::string_view text);
// The same into a buffer with room for six bytes a byte of text; returns the end written.
char* putEscaped(char* p, std::string_view text);
// The bytes as upper-case hex, 8 bytes a group, 4 groups a line.
void appendBlobHex(std::string& out, std::string_view bytes, const char* eol);
// The same into a buffer with room for two bytes a byte and a line break every eight bytes.
char* putBlobHex(char* p, std::string_view bytes, std::string_view eol);

} // namespace serz
