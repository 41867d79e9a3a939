#include "velmora/core/xmlhighlight.h"

namespace velmora {

namespace {

bool isWord(QChar c) {
    const char16_t u = c.unicode();
    return (u >= 'a' && u <= 'z') || (u >= 'A' && u <= 'Z') || (u >= '0' && u <= '9') || u == '_';
}

bool isSpace(QChar c) {
    const char16_t u = c.unicode();
    return u == ' ' || u == '\t' || u == '\r' || u == '\n' || u == '\f' || u == '\v';
}

bool isNameChar(QChar c) {
    const char16_t u = c.unicode();
    return isWord(c) || isSpace(c) || u == ':' || u == '-' || u == '.';
}

// An attribute at `i`: a blank, a word character, name characters, "=", blanks, then a quoted
// value or digits. Returns the ends of the name part and the value, or false.
bool matchAttribute(const QString& s, int i, int& nameEnd, int& valueEnd) {
    const int n = static_cast<int>(s.size());
    if (i + 1 >= n || s[i] != ' ' || !isWord(s[i + 1]))
        return false;
    int j = i + 2;
    while (j < n && isNameChar(s[j]))
        ++j;
    if (j >= n || s[j] != '=')
        return false;
    ++j;
    while (j < n && s[j] == ' ')
        ++j;
    nameEnd = j;
    if (j >= n)
        return false;
    if (s[j] == '"' || s[j] == '\'') {
        const QChar quote = s[j];
        const int close = static_cast<int>(s.indexOf(quote, j + 1));
        if (close < 0 || close == j + 1)
            return false;
        valueEnd = close + 1;
        return true;
    }
    int k = j;
    while (k < n && s[k].isDigit() && s[k].unicode() < 128)
        ++k;
    if (k == j)
        return false;
    valueEnd = k;
    return true;
}

std::string rtfColour(unsigned r, unsigned g, unsigned b) {
    return "\\red" + std::to_string(r) + "\\green" + std::to_string(g) + "\\blue" + std::to_string(b) + ";";
}

} // namespace

std::vector<ColourSpan> xmlColourSpans(const QString& s, bool& inComment) {
    std::vector<ColourSpan> spans;
    const int n = static_cast<int>(s.size());

    // Tags.
    for (int i = static_cast<int>(s.indexOf('<')); i >= 0 && i < n;) {
        const int close = static_cast<int>(s.indexOf('>', i + 1));
        if (close < 0)
            break;
        if (close == i + 1) { // "<>" is no tag; look for the next "<"
            i = static_cast<int>(s.indexOf('<', i + 1));
            continue;
        }
        spans.push_back({i, close - i + 1, XmlColour::Tag});
        i = static_cast<int>(s.indexOf('<', close + 1));
    }

    // Attribute names and values.
    for (int i = 0; i < n;) {
        int nameEnd = 0, valueEnd = 0;
        if (!matchAttribute(s, i, nameEnd, valueEnd)) {
            ++i;
            continue;
        }
        spans.push_back({i, nameEnd - i, XmlColour::AttributeName});
        spans.push_back({nameEnd, valueEnd - nameEnd, XmlColour::AttributeValue});
        // The tag colour resumes up to the end of the tag the attribute stands in.
        int next = static_cast<int>(s.indexOf('<', valueEnd));
        const int gt = static_cast<int>(s.indexOf('>', valueEnd));
        if (next < 0)
            next = n;
        if (gt >= 0 && gt < next)
            next = gt + 1;
        if (next > valueEnd)
            spans.push_back({valueEnd, next - valueEnd, XmlColour::Tag});
        i = valueEnd;
    }

    // Text between tags that holds "=" is plain text, not an attribute.
    for (int i = static_cast<int>(s.indexOf('>')); i >= 0 && i < n;) {
        const int lt = static_cast<int>(s.indexOf('<', i + 1));
        const int eq = static_cast<int>(s.indexOf('=', i + 1));
        if (lt < 0 || eq < 0) // no "=" before a later "<" can make a match
            break;
        if (eq > lt) {
            i = static_cast<int>(s.indexOf('>', i + 1));
            continue;
        }
        // From the "=" the match runs to the last "<" before the next ">".
        int gt = static_cast<int>(s.indexOf('>', eq + 1));
        if (gt < 0)
            gt = n;
        const int end = static_cast<int>(s.lastIndexOf('<', gt - 1));
        if (end <= eq) {
            i = static_cast<int>(s.indexOf('>', i + 1));
            continue;
        }
        if (end - i - 1 > 0)
            spans.push_back({i + 1, end - i - 1, XmlColour::Plain});
        i = static_cast<int>(s.indexOf('>', end));
    }

    // Comments, across lines.
    int from = 0;
    while (from <= n) {
        int start = from;
        if (!inComment) {
            start = static_cast<int>(s.indexOf(QLatin1String("<!--"), from));
            if (start < 0)
                break;
            inComment = true;
            from = start + 4;
        }
        const int end = static_cast<int>(s.indexOf(QLatin1String("-->"), from));
        if (end < 0) {
            spans.push_back({start, n - start, XmlColour::Comment});
            break;
        }
        spans.push_back({start, end + 3 - start, XmlColour::Comment});
        inComment = false;
        from = end + 3;
    }
    return spans;
}

std::string fcnGetRTFColor(std::uint32_t v) {
    return rtfColour(v % 256, (v % 65536) / 256, v / 65536);
}

std::string fcnGetRTFColor(const std::string& hex) {
    const std::string six = hex.size() > 6 ? hex.substr(hex.size() - 6) : hex;
    auto part = [&](std::size_t at) -> unsigned {
        if (six.size() < at + 2)
            return 0;
        return static_cast<unsigned>(std::stoul(six.substr(at, 2), nullptr, 16));
    };
    try {
        return rtfColour(part(0), part(2), part(4));
    } catch (const std::exception&) {
        return rtfColour(0, 0, 0);
    }
}

} // namespace velmora
