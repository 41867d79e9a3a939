#include "velmora/core/writelist.h"

#include <charconv>
#include <cstdlib>
#include <limits>

namespace velmora {

namespace {
bool isBlank(char c) { return c == ' ' || c == '\t'; }
std::string_view trim(std::string_view s) {
    while (!s.empty() && isBlank(s.front()))
        s.remove_prefix(1);
    while (!s.empty() && (isBlank(s.back()) || s.back() == '\r'))
        s.remove_suffix(1);
    return s;
}
} // namespace

void WriteListReader::skipBlanks() {
    // Blank lines between items count for nothing, as with the original reader.
    while (m_pos < m_text.size()) {
        char c = m_text[m_pos];
        if (isBlank(c) || c == '\r') {
            ++m_pos;
        } else if (c == '\n') {
            ++m_pos;
            ++m_line;
        } else {
            break;
        }
    }
}

bool WriteListReader::atEnd() const {
    WriteListReader probe = *this;
    probe.skipBlanks();
    return probe.m_pos >= probe.m_text.size();
}

std::optional<WriteListReader::Item> WriteListReader::next() {
    skipBlanks();
    if (m_pos >= m_text.size())
        return std::nullopt;
    Item item;
    if (m_text[m_pos] == '"') {
        item.quoted = true;
        std::size_t close = m_text.find('"', m_pos + 1);
        if (close == std::string_view::npos)
            close = m_text.size();
        item.text = std::string(m_text.substr(m_pos + 1, close - m_pos - 1));
        for (char c : item.text)
            if (c == '\n')
                ++m_line;
        m_pos = close < m_text.size() ? close + 1 : close;
        // Anything up to the separator after a quoted string is dropped.
        while (m_pos < m_text.size() && m_text[m_pos] != ',' && m_text[m_pos] != '\n')
            ++m_pos;
    } else {
        std::size_t end = m_pos;
        while (end < m_text.size() && m_text[end] != ',' && m_text[end] != '\n')
            ++end;
        item.text = std::string(trim(m_text.substr(m_pos, end - m_pos)));
        m_pos = end;
    }
    if (m_pos < m_text.size()) {
        if (m_text[m_pos] == '\n')
            ++m_line;
        ++m_pos; // the separator
    }
    return item;
}

namespace {
template <typename T> std::optional<T> toInt(const WriteListReader::Item& item) {
    std::string_view s = item.text;
    if (s == "#TRUE#")
        return static_cast<T>(-1);
    if (s == "#FALSE#" || s.empty())
        return static_cast<T>(0);
    long long v = 0;
    std::string_view digits = s;
    if (!digits.empty() && digits.front() == '+')
        digits.remove_prefix(1);
    auto [ptr, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), v);
    if (ec != std::errc() || ptr != digits.data() + digits.size())
        return std::nullopt;
    if (v < std::numeric_limits<T>::min() || v > std::numeric_limits<T>::max())
        return std::nullopt;
    return static_cast<T>(v);
}
} // namespace

std::optional<std::int16_t> toInt16(const WriteListReader::Item& item) { return toInt<std::int16_t>(item); }
std::optional<std::int32_t> toInt32(const WriteListReader::Item& item) { return toInt<std::int32_t>(item); }

std::optional<bool> toBool(const WriteListReader::Item& item) {
    if (item.text == "#TRUE#")
        return true;
    if (item.text == "#FALSE#")
        return false;
    if (auto n = toInt<std::int32_t>(item); n && !item.quoted)
        return *n != 0;
    return std::nullopt;
}

std::string writeString(std::string_view s) {
    std::string out;
    out.reserve(s.size() + 2);
    out += '"';
    out += s;
    out += '"';
    return out;
}
std::string writeBool(bool b) { return b ? "#TRUE#" : "#FALSE#"; }
std::string writeInt(long v) { return std::to_string(v); }

} // namespace velmora
