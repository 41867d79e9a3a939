#include "velmora/core/xmltext.h"

#include "velmora/core/errorlog.h"

#include <array>
#include <cstring>

namespace velmora {

namespace {

// Windows-1252 upper case to lower case: ASCII, the accented letters and the four pairs that
// live in the 0x80 block. Everything else folds to itself.
constexpr std::array<unsigned char, 256> makeFoldTable() {
    std::array<unsigned char, 256> t{};
    for (int i = 0; i < 256; ++i)
        t[i] = static_cast<unsigned char>(i);
    for (int i = 'A'; i <= 'Z'; ++i)
        t[i] = static_cast<unsigned char>(i + 32);
    for (int i = 0xC0; i <= 0xDE; ++i)
        if (i != 0xD7)
            t[i] = static_cast<unsigned char>(i + 32);
    t[0x8A] = 0x9A; // Š š
    t[0x8C] = 0x9C; // Œ œ
    t[0x8E] = 0x9E; // Ž ž
    t[0x9F] = 0xFF; // Ÿ ÿ
    return t;
}
constexpr auto kFold = makeFoldTable();

inline unsigned char fold(char c) { return kFold[static_cast<unsigned char>(c)]; }

bool equalFolded(const char* a, const char* b, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        if (fold(a[i]) != fold(b[i]))
            return false;
    return true;
}

// Zero-based search; npos when absent.
std::size_t findFrom(std::string_view text, std::string_view what, std::size_t from, Match match) {
    if (match == Match::Binary || what.empty())
        return text.find(what, from);
    if (from > text.size() || what.size() > text.size() - from)
        return std::string_view::npos;
    // Candidates are the places where the first character matches in either case.
    const unsigned char first = fold(what[0]);
    char firsts[3] = {static_cast<char>(first), 0, 0};
    std::size_t nFirsts = 1;
    for (int c = 0; c < 256; ++c)
        if (kFold[c] == first && c != first)
            firsts[nFirsts++] = static_cast<char>(c);
    const std::string_view candidates(firsts, nFirsts);
    const std::size_t last = text.size() - what.size();
    for (std::size_t i = text.find_first_of(candidates, from); i != std::string_view::npos && i <= last;
         i = text.find_first_of(candidates, i + 1)) {
        if (equalFolded(text.data() + i + 1, what.data() + 1, what.size() - 1))
            return i;
    }
    return std::string_view::npos;
}

void logError(const ScanSettings& settings, const char* procedure, const std::string& description) {
    if (settings.log)
        settings.log->log(settings.module, procedure, err::SubscriptOutOfRange, description);
}

std::string trimBlanks(std::string_view value) {
    const auto b = value.find_first_not_of(' ');
    if (b == std::string_view::npos)
        return {};
    const auto e = value.find_last_not_of(' ');
    return std::string(value.substr(b, e - b + 1));
}

// The three positions of an element: a at "<tag", b at its ">", c at "</tag" (zero-based).
struct Element {
    std::size_t a = std::string_view::npos, b = std::string_view::npos, c = std::string_view::npos;
};

Element locate(std::string_view text, std::size_t pos, std::string_view open, std::string_view close,
               Match match) {
    Element e;
    if (pos == 0)
        return e;
    e.a = findFrom(text, open, pos - 1, match);
    if (e.a == std::string_view::npos)
        return e;
    e.b = text.find('>', e.a);
    if (e.b == std::string_view::npos)
        return e;
    e.c = findFrom(text, close, e.b, match);
    return e;
}

// --- Repair tables ---------------------------------------------------------------------------

struct Repair {
    const char* find;
    const char* replace;
};

// Reading direction, in order; each row repeats until its sequence no longer occurs.
constexpr Repair kDecodeRows[] = {
    {"&amp;apos;", "'"},  {"&apos;", "'"},      {"&amp;", "&"},       {"&quot;", "'"},
    {"\xC3\x9F", "\xDF"}, {"\xC3\xBC", "\xFC"}, {"\xC3\xA4", "\xE4"}, {"\xC3\x84", "\xC4"},
    {"\xC3\x96", "\xD6"}, {"\xC3\x9C", "\xDC"}, {"\xC3\xA4", "\xE4"}, {"\xC3\xB6", "\xF6"},
    {"\xC3\xBC", "\xFC"}, {"\xC3\x9F", "\xDF"}, {"\xC3\xA6", "\xE6"}, {"\xC3\xB1", "\xF1"},
    {"\xC3\xB6", "\xF6"}, {"\xC3\xA7", "\xE7"}, {"\xC3\xA8", "\xE8"}, {"\xC3\xA9", "\xE9"},
    {"\xC3\xA0", "\xE0"}, {"\xC3\xF9", "\xF9"}, {"\xEF\xBF\x9F", "\xDF"}, {"\xEF\xBF\xBC", "\xFC"},
    {"\xEF\xBF\xA4", "\xE4"}, {"\xEF\xBF\x84", "\xC4"}, {"\xEF\xBF\x96", "\xD6"}, {"\xEF\xBF\x9C", "\xDC"},
    {"\xEF\xBF\xA4", "\xE4"}, {"\xEF\xBF\xB6", "\xF6"}, {"\xEF\xBF\xBC", "\xFC"}, {"\xEF\xBF\x9F", "\xDF"},
    {"\xEF\xBF\xA6", "\xE6"}, {"\xEF\xBF\xB1", "\xF1"}, {"\xEF\xBF\xB6", "\xF6"}, {"\xEF\xBF\xA7", "\xE7"},
    {"\xEF\xBF\xA8", "\xE8"}, {"\xEF\xBF\xA9", "\xE9"}, {"\xEF\xBF\xA0", "\xE0"}, {"\xEF\xBF\xF9", "\xF9"},
    {"\xEF\xBF\xA1", "\xE1"}, {"\xEF\xBE\xBD", "\xBD"}, {"\xC3\xAA", "\xEA"}, {"\xC3\xA5", "\xE5"},
    {"\xC3\xBD", "\xFD"}, {"\xC3\xAD", "\xED"}, {"\xC3\xA1", "\xE1"},
};

// Replaces every occurrence in one pass, ignoring case; false when there was none.
bool replaceAllFolded(std::string& text, std::string_view find, std::string_view replace) {
    std::size_t at = findFrom(text, find, 0, Match::Text);
    if (at == std::string::npos)
        return false;
    std::string out;
    out.reserve(text.size());
    std::size_t from = 0;
    while (at != std::string::npos) {
        out.append(text, from, at - from);
        out.append(replace);
        from = at + find.size();
        at = findFrom(text, find, from, Match::Text);
    }
    out.append(text, from, std::string::npos);
    text.swap(out);
    return true;
}

// Writing direction: find one character, replace it, move on by the advance.
struct Encode {
    char find;
    const char* replace;
    std::size_t advance;
};

constexpr Encode kReplaceAposRows[] = {
    {'\'', "&quot;", 6},       {'\xDF', "\xEF\xBF\x9F", 3}, {'\xFC', "\xEF\xBF\xBC", 3},
    {'\xE4', "\xEF\xBF\xA4", 3}, {'\xE1', "\xEF\xBF\xA1", 3}, {'\xC4', "\xC3\x84", 3},
    {'\xD6', "\xC3\x96", 3},   {'\xDC', "\xC3\x9C", 3},     {'\xE4', "\xC3\xA4", 3},
    {'\xF6', "\xC3\xB6", 3},   {'\xFC', "\xC3\xBC", 1},     {'\xDF', "\xC3\x9F", 3},
    {'\xFD', "\xC3\xBD", 3},   {'\xED', "\xC3\xAD", 3},     {'\xE1', "\xC3\xA1", 3},
    {'\xE6', "\xEF\xBF\xA6", 3}, {'\xF6', "\xEF\xBF\xB6", 3}, {'\xF1', "\xC3\xB1", 2},
    {'\xE7', "\xC3\xA7", 2},   {'\xE8', "\xC3\xA8", 2},     {'\xE9', "\xC3\xA9", 2},
    {'\xE0', "\xC3\xA0", 2},   {'\xF9', "\xC3\xF9", 2},     {'\xBD', "\xC2\xBD", 2},
    {'\xEA', "\xC3\xEA", 1},   {'\xE5', "\xC3\xA5", 2},
};

constexpr Encode kReplaceApos2Rows[] = {
    {'\xDF', "\xC3\x9F", 3}, {'\xFC', "\xC3\xBC", 3}, {'\xE4', "\xC3\xA4", 3}, {'\xC4', "\xC3\x84", 3},
    {'\xD6', "\xC3\x96", 3}, {'\xDC', "\xC3\x9C", 3}, {'\xE4', "\xC3\xA4", 3}, {'\xF6', "\xC3\xB6", 3},
    {'\xFC', "\xC3\xBC", 1}, {'\xDF', "\xC3\x9F", 3}, {'\xE6', "\xC3\x9F", 3}, {'\xF1', "\xC3\xB1", 2},
    {'\xFD', "\xC3\xBD", 3}, {'\xED', "\xC3\xAD", 3}, {'\xE1', "\xC3\xA1", 3}, {'\xE7', "\xC3\xA7", 2},
    {'\xE8', "\xC3\xA8", 2}, {'\xE9', "\xC3\xA9", 2}, {'\xE0', "\xC3\xA0", 1}, {'\xF9', "\xC3\xF9", 1},
    {'\xEA', "\xC3\xEA", 1}, {'\xE5', "\xC3\xA5", 2},
};

void applyEncodeRow(std::string& text, const Encode& row, ErrorLog* log, const char* procedure) {
    const std::string_view replacement(row.replace);
    std::size_t advance = row.advance;
    // A row whose replacement still holds the letter at or past the advance would find that
    // letter again at once and never end; each letter is then replaced only once.
    if (replacement.find(row.find, advance) != std::string_view::npos) {
        if (text.find(row.find) != std::string::npos && log)
            log->log("XmlText", procedure, err::Overflow,
                     "The letter " + std::string(1, row.find) + " cannot be written in this name; it was written once.");
        advance = replacement.size();
    }
    std::size_t at = text.find(row.find);
    while (at != std::string::npos) {
        text.replace(at, 1, replacement);
        at = text.find(row.find, at + advance);
    }
}

// The ampersand row: "&" becomes "&amp;" unless one of the given three-letter words follows;
// the scan moves on by five either way.
void applyAmpersandRow(std::string& text, bool skipQuo) {
    std::size_t at = text.find('&');
    while (at != std::string::npos) {
        const std::string_view next = std::string_view(text).substr(at + 1, 3);
        const bool entity = next.size() == 3 && (equalFolded(next.data(), "apo", 3) ||
                                                 (skipQuo && equalFolded(next.data(), "quo", 3)));
        if (!entity)
            text.replace(at, 1, "&amp;");
        at = text.find('&', at + 5);
    }
}

} // namespace

std::vector<std::string> ElementValues(std::string_view text, std::string_view tag) {
    std::vector<std::string> values;
    const std::string open = "<" + std::string(tag) + ">";
    const std::string close = "</" + std::string(tag) + ">";
    for (std::size_t at = text.find(open); at != std::string_view::npos; at = text.find(open, at + 1)) {
        const std::size_t end = text.find(close, at);
        if (end == std::string_view::npos)
            break;
        const std::string_view block = text.substr(at + open.size(), end - at - open.size());
        if (block.find('<') == std::string_view::npos) {
            values.emplace_back(block);
            continue;
        }
        for (std::size_t e = block.find("<e"); e != std::string_view::npos; e = block.find("<e", e + 1)) {
            const std::size_t gt = block.find('>', e);
            const std::size_t lt = gt == std::string_view::npos ? gt : block.find('<', gt + 1);
            if (lt == std::string_view::npos)
                break;
            if (lt > gt + 1)
                values.emplace_back(block.substr(gt + 1, lt - gt - 1));
        }
    }
    return values;
}

std::size_t InStr(std::size_t from, std::string_view text, std::string_view what, Match match) {
    if (from == 0)
        return 0;
    const std::size_t at = findFrom(text, what, from - 1, match);
    return at == std::string_view::npos ? 0 : at + 1;
}

std::size_t InStrRev(std::string_view text, std::string_view what, std::size_t from, Match match) {
    if (from == 0 || what.empty() || what.size() > text.size())
        return 0;
    std::size_t i = std::min(from - 1, text.size() - what.size());
    for (;;) {
        const bool hit = match == Match::Binary ? std::memcmp(text.data() + i, what.data(), what.size()) == 0
                                                : equalFolded(text.data() + i, what.data(), what.size());
        if (hit)
            return i + 1;
        if (i == 0)
            return 0;
        --i;
    }
}

void GetDetail(std::string_view text, std::size_t& pos, std::string_view tag, std::string& value,
               const ScanSettings& settings) {
    const std::string open = "<" + std::string(tag);
    const std::string close = "</" + std::string(tag);
    const Element e = locate(text, pos, open, close, settings.match);
    if (e.a == std::string_view::npos) {
        pos = 0;
        return;
    }
    if (e.b == std::string_view::npos || e.c == std::string_view::npos) {
        logError(settings, "GetDetail", "The element " + std::string(tag) + " has no end.");
        pos = 0;
        return;
    }
    value.assign(text.substr(e.b + 1, e.c - e.b - 1));
    if (settings.decode)
        DecodeChars(value);
    pos = e.c + 1;
}

void PutDetail(std::string& text, std::size_t& pos, std::string_view tag, std::string_view value,
               const ScanSettings& settings) {
    const std::string open = "<" + std::string(tag);
    const std::string close = "</" + std::string(tag);
    const Element e = locate(text, pos, open, close, settings.match);
    if (e.a == std::string_view::npos || e.b == std::string_view::npos || e.c == std::string_view::npos) {
        logError(settings, "PutDetail", "The element " + std::string(tag) + " was not found; nothing was changed.");
        pos = 0;
        return;
    }
    const std::string stored = settings.trim ? trimBlanks(value) : std::string(value);
    text.replace(e.b + 1, e.c - e.b - 1, stored);
    pos = e.c + 1;
}

void GetProvider(std::size_t pos, std::string& provider, std::string& product, std::string_view text,
                 const ScanSettings& settings) {
    provider.clear();
    product.clear();
    const std::size_t p = InStrRev(text, "<Provider", pos, Match::Binary);
    if (p == 0) {
        logError(settings, "GetProvider", "No provider was found before this blueprint reference.");
        return;
    }
    const auto between = [&](std::size_t from, std::string& out) {
        const std::size_t b = text.find('>', from);
        if (b == std::string_view::npos)
            return;
        const std::size_t c = text.find('<', b + 1);
        if (c == std::string_view::npos)
            return;
        out.assign(text.substr(b + 1, c - b - 1));
        if (settings.decode)
            DecodeChars(out);
    };
    between(p - 1, provider);
    const std::size_t q = findFrom(text, "<Product", p, settings.match);
    if (q != std::string_view::npos)
        between(q, product);
}

BlueprintRef GetBlueprintRef(std::string_view text, std::size_t pos, const ScanSettings& settings) {
    BlueprintRef r;
    GetDetail(text, pos, "Provider", r.provider, settings);
    if (pos)
        GetDetail(text, pos, "Product", r.product, settings);
    if (pos)
        GetDetail(text, pos, "BlueprintID", r.blueprintId, settings);
    if (!pos)
        r.blueprintId.clear();
    return r;
}

void GetDetail2(std::string_view text, std::size_t& pos, std::string_view name, std::string& value,
                const ScanSettings& settings) {
    const std::string open = std::string(name) + "=\"";
    const Element e = locate(text, pos, open, "</e", settings.match);
    if (e.a == std::string_view::npos) {
        pos = 0;
        return;
    }
    if (e.b == std::string_view::npos || e.c == std::string_view::npos) {
        logError(settings, "GetDetail2", "The value " + std::string(name) + " has no end.");
        pos = 0;
        return;
    }
    value.assign(text.substr(e.b + 1, e.c - e.b - 1));
    pos = e.c + 1;
}

void DecodeChars(std::string& text) {
    if (text.find_first_of("&\xC3\xEF") == std::string::npos)
        return;
    for (const Repair& row : kDecodeRows)
        while (replaceAllFolded(text, row.find, row.replace)) {
        }
}

std::string DecodedChars(std::string_view text) {
    std::string copy(text);
    DecodeChars(copy);
    return copy;
}

void ReplaceApos(std::string& text, ErrorLog* log) {
    applyAmpersandRow(text, /*skipQuo=*/true);
    for (const Encode& row : kReplaceAposRows)
        applyEncodeRow(text, row, log, "ReplaceApos");
}

void ReplaceApos2(std::string& text, ErrorLog* log) {
    // The apostrophe comes first here, so the ampersand row must pass over the "&apos;" it makes.
    applyEncodeRow(text, {'\'', "&apos;", 6}, log, "ReplaceApos2");
    applyAmpersandRow(text, /*skipQuo=*/false);
    for (const Encode& row : kReplaceApos2Rows)
        applyEncodeRow(text, row, log, "ReplaceApos2");
}

} // namespace velmora
