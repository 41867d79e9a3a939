#pragma once
// Crafted inputs that tests share: documents built to hurt a reader rather than to be read.

#include <string>

namespace velmora::test {

// A document of `bytes` or so made of nested records: one element "a" opened, the same element
// opened again by back-reference at every level, then everything closed. Its XML grows with
// the square of its depth (a tab per level on every line).
inline std::string nestedDocument(std::size_t bytes) {
    std::string b("SERZ\0\0\1\0", 8);
    auto u32 = [&](unsigned v) {
        for (int i = 0; i < 4; ++i)
            b += static_cast<char>((v >> (8 * i)) & 0xFF);
    };
    b += "\xFF\x50\xFF\xFF";
    u32(1);
    b += 'a';
    u32(0);
    u32(1);
    const std::size_t levels = bytes / 10;
    for (std::size_t i = 0; i < levels; ++i) {
        b += '\0'; // the open template in slot 0
        u32(0);
        u32(1);
    }
    b += std::string("\xFF\x70\x00\x00", 4); // close "a": slot 1
    b.append(levels, '\x01');
    return b;
}

} // namespace velmora::test
