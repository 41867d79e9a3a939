#pragma once
// Where document text meets the world outside the documents. Document text is Windows-1252
// bytes (a name the repair has mended) or UTF-8 (most names as the documents hold them); file
// names, the terminal and JSON are UTF-8. Every crossing goes through here.

#include <filesystem>
#include <streambuf>
#include <string>
#include <string_view>

namespace velmora {

// Text as UTF-8: text that is UTF-8 already (paths, most names) is kept, other bytes are read
// as Windows-1252.
std::string utf8FromDocument(std::string_view text);
// Text typed by the user (UTF-8) in the form the repaired document text takes.
std::string documentFromUtf8(std::string_view utf8);
// Whether two names are the same, one as the document text holds it, the other as typed.
bool sameName(std::string_view documentText, std::string_view typed);

// A file name made from document text: one UTF-8 component that stays inside the folder it is
// put in. Separators, characters Windows refuses and control characters become "_", and a name
// of nothing or of dots only becomes "_". Long names are cut to 200 bytes.
std::string fileNameFromText(std::string_view text);

// Text for a terminal, where control characters would move the cursor, change colours or
// retitle the window: each is shown as \xHH (C1 controls as \u00HH). Line breaks and tabs
// stay, and so does a CR just before a LF.
std::string forTerminal(std::string_view utf8);

// A stream buffer that passes everything through forTerminal on its way to `target`.
class TerminalBuffer : public std::streambuf {
public:
    explicit TerminalBuffer(std::streambuf* target) : m_target(target) {}
    ~TerminalBuffer() override;

protected:
    int_type overflow(int_type ch) override;
    int sync() override;

private:
    bool flushPending(bool all);
    std::streambuf* m_target;
    std::string m_pending;
};

} // namespace velmora
