#pragma once
// The sequential "write list" text format of the settings and language files:
// a string in double quotes, an integer as plain digits, a Boolean as #TRUE# or #FALSE#,
// items separated by commas or line breaks.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

class WriteListReader {
public:
    explicit WriteListReader(std::string_view text) : m_text(text) {}

    struct Item {
        std::string text;
        bool quoted = false;
    };

    // The next item, or nullopt at the end of the input.
    std::optional<Item> next();
    bool atEnd() const;
    // 1-based line of the next item, for error messages.
    std::size_t line() const { return m_line; }

private:
    void skipBlanks();
    std::string_view m_text;
    std::size_t m_pos = 0;
    std::size_t m_line = 1;
};

// Conversions of one item to a field type; nullopt when the item does not fit the type.
std::optional<std::int16_t> toInt16(const WriteListReader::Item& item);
std::optional<std::int32_t> toInt32(const WriteListReader::Item& item);
std::optional<bool> toBool(const WriteListReader::Item& item);

// Writers of one value; the caller adds the line break.
std::string writeString(std::string_view s); // "text"
std::string writeBool(bool b);               // #TRUE# / #FALSE#
std::string writeInt(long v);                // 123

} // namespace velmora
