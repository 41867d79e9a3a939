#pragma once
// Numbers as the converter prints and reads them: "%g" with exact decimal ties rounded away
// from zero, "%.7f" for array elements, and the hex of a double's bytes for d:alt_encoding.

#include "tokens.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace serz {

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
