#pragma once
// Numbers as the converter prints and reads them: "%g" with exact decimal ties rounded away
// from zero, "%.7f" for array elements, and the hex of a double's bytes for d:alt_encoding.

#include "tokens.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace serz {

// The put* forms write into a buffer that has room for at least the bound given and return the
// end of what they wrote; the append* forms add to a string.
constexpr std::size_t kIntegerRoom = 24;
constexpr std::size_t kFloatGRoom = 32;     // "%g" with up to 16 exponent digits
constexpr std::size_t kFloatFixedRoom = 400; // "%.7f" of the largest double
constexpr std::size_t kAltEncodingRoom = 16;

char* putInt(char* p, long long v);
char* putUInt(char* p, unsigned long long v);
char* putInteger(char* p, ValueType type, const char* bytes);
char* putFloatG(char* p, double v, int exponentDigits);
// The same by way of the shortest exact text; putFloatG takes it for values below 1e-13 or of
// 1e7 and more, NaN and infinity.
char* putFloatGByText(char* p, double v, int exponentDigits);
char* putFloatFixed7(char* p, double v);
// The same by way of the shortest exact text; putFloatFixed7 takes it for values of 2^63 and
// more, NaN and infinity.
char* putFloatFixed7ByText(char* p, double v);
char* putAltEncoding(char* p, double v);

void appendInt(std::string& out, long long v);
void appendUInt(std::string& out, unsigned long long v);
// An integer of the given type from its little-endian bytes.
void appendInteger(std::string& out, ValueType type, const char* bytes);

void appendFloatG(std::string& out, double v, int exponentDigits);
void appendFloatFixed7(std::string& out, double v);
void appendAltEncoding(std::string& out, double v);

std::optional<double> parseAltEncoding(std::string_view hex);
std::optional<double> parseDouble(std::string_view text);

} // namespace serz
