#pragma once
// The simulator's binary documents ("SERZ") to the converter's XML and back.
// Standard C++ only. Nothing here throws: every entry point returns a Status.

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace serz {

enum class LineEnd { CrLf, Lf };

struct WriteOptions {
    LineEnd lineEnd = LineEnd::CrLf; // serz.exe writes CR LF
    int exponentDigits = 3;          // serz.exe: at least three digits; serz64.exe: two
};

enum class FloatImport {
    Lossless,   // floats from d:alt_encoding when the text is what the writer would print for it
    Compatible, // floats always from the text, as the converter does
};

struct ReadOptions {
    FloatImport floats = FloatImport::Lossless;
};

struct Status {
    bool ok = true;
    std::string message;   // empty when ok
    std::uint64_t offset = 0; // byte offset into the input (binary input)
    std::uint64_t line = 0;   // 1-based line (XML input); 0 when not applicable

    explicit operator bool() const { return ok; }
    static Status success() { return {}; }
};

// In memory.
Status decode(std::string_view binary, std::string& xml, const WriteOptions& options = {});
Status encode(std::string_view xml, std::string& binary, const ReadOptions& options = {});

// Appends the UTF-8 form of a code point (at most U+10FFFF).
void appendUtf8(std::string& out, char32_t cp);

} // namespace serz
