#include "velmora/core/textboundary.h"

#include "velmora/core/services.h"

namespace velmora {

namespace {

void appendEscape(std::string& out, const char* prefix, unsigned value) {
    static const char kHex[] = "0123456789ABCDEF";
    out += prefix;
    out += kHex[(value >> 4) & 0xF];
    out += kHex[value & 0xF];
}

} // namespace

std::string utf8FromDocument(std::string_view text) {
    return validUtf8(text) ? std::string(text) : latin1ToUtf8(text);
}

std::string documentFromUtf8(std::string_view utf8) { return validUtf8(utf8) ? utf8ToCp1252(utf8) : std::string(utf8); }

bool sameName(std::string_view documentText, std::string_view typed) {
    return documentText == typed || utf8FromDocument(documentText) == typed;
}

std::string fileNameFromText(std::string_view text) {
    std::string name = utf8FromDocument(text);
    for (char& ch : name) {
        const auto c = static_cast<unsigned char>(ch);
        if (c < 0x20 || c == 0x7F || std::string_view("/\\:*?\"<>|").find(ch) != std::string_view::npos)
            ch = '_';
    }
    // Windows drops trailing blanks and dots; "." and ".." are no names at all.
    while (!name.empty() && (name.back() == ' ' || name.back() == '.'))
        name.pop_back();
    if (name.find_first_not_of('.') == std::string::npos)
        name.assign(1, '_');
    constexpr std::size_t kLongest = 200;
    if (name.size() > kLongest) {
        std::size_t cut = kLongest;
        while (cut > 0 && (static_cast<unsigned char>(name[cut]) & 0xC0) == 0x80)
            --cut; // not inside a character
        name.resize(cut);
    }
    return name;
}

std::string forTerminal(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        const bool lineEnd = c == '\n' || c == '\t' || (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n');
        if ((c < 0x20 && !lineEnd) || c == 0x7F) {
            appendEscape(out, "\\x", c);
        } else if (c == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) >= 0x80 &&
                   static_cast<unsigned char>(text[i + 1]) <= 0x9F) {
            appendEscape(out, "\\u00", static_cast<unsigned char>(text[++i]));
        } else {
            out += static_cast<char>(c);
        }
    }
    return out;
}

TerminalBuffer::~TerminalBuffer() { flushPending(true); }

bool TerminalBuffer::flushPending(bool all) {
    // A CR or the first byte of a C1 control waits for the byte that decides what it is.
    std::size_t keep = 0;
    if (!all && !m_pending.empty() && (m_pending.back() == '\r' || m_pending.back() == '\xC2'))
        keep = 1;
    const std::string out = forTerminal(std::string_view(m_pending).substr(0, m_pending.size() - keep));
    m_pending.erase(0, m_pending.size() - keep);
    return m_target->sputn(out.data(), static_cast<std::streamsize>(out.size())) == static_cast<std::streamsize>(out.size());
}

TerminalBuffer::int_type TerminalBuffer::overflow(int_type ch) {
    if (traits_type::eq_int_type(ch, traits_type::eof()))
        return traits_type::not_eof(ch);
    m_pending += traits_type::to_char_type(ch);
    if (ch == '\n' || m_pending.size() >= 4096)
        if (!flushPending(false))
            return traits_type::eof();
    return ch;
}

int TerminalBuffer::sync() {
    if (!flushPending(true))
        return -1;
    return m_target->pubsync();
}

} // namespace velmora
