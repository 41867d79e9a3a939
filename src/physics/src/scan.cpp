#include "scan.h"

#include <algorithm>

namespace velmora::physics::scan {

namespace {

char lower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

bool endsName(char c) { return c == '>' || c == '/' || c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

bool startsWithName(std::string_view text, std::string_view name) {
    if (text.size() < name.size())
        return false;
    for (std::size_t i = 0; i < name.size(); ++i)
        if (lower(text[i]) != lower(name[i]))
            return false;
    return true;
}

} // namespace

bool sameTag(std::string_view a, std::string_view b) { return a.size() == b.size() && startsWithName(a, b); }

std::size_t findOpen(std::string_view xml, std::size_t from, std::size_t end, std::string_view name, bool prefix) {
    end = std::min(end, xml.size());
    for (std::size_t p = xml.find('<', from); p != npos && p < end; p = xml.find('<', p + 1)) {
        const std::size_t n = p + 1;
        if (n + name.size() > end || !startsWithName(xml.substr(n), name))
            continue;
        const std::size_t after = n + name.size();
        if (after >= xml.size())
            continue;
        if (endsName(xml[after]))
            return p;
        if (prefix && xml[after] != ':' && xml[after] != '-')
            return p;
    }
    return npos;
}

std::string_view tagName(std::string_view xml, std::size_t open) {
    std::size_t e = open + 1;
    while (e < xml.size() && !endsName(xml[e]))
        ++e;
    return xml.substr(open + 1, e - open - 1);
}

Element elementAt(std::string_view xml, std::size_t open, std::size_t end) {
    Element el;
    end = std::min(end, xml.size());
    const std::size_t gt = xml.find('>', open);
    if (gt == npos || gt >= end)
        return el;
    el.open = open;
    el.name = tagName(xml, open);
    el.contentBegin = gt + 1;
    if (xml[gt - 1] == '/') {
        el.selfClosing = el.closed = true;
        el.contentEnd = el.contentBegin;
        el.end = gt + 1;
        return el;
    }
    // Same-named elements may nest; count them down to our own closing tag.
    int depth = 1;
    std::size_t p = el.contentBegin;
    while (depth > 0) {
        p = xml.find('<', p);
        if (p == npos || p >= end)
            break;
        const bool closing = p + 1 < xml.size() && xml[p + 1] == '/';
        const std::string_view name = tagName(xml, closing ? p + 1 : p);
        const std::size_t gt2 = xml.find('>', p);
        if (gt2 == npos || gt2 >= end)
            break;
        if (sameTag(name, el.name)) {
            if (closing)
                --depth;
            else if (xml[gt2 - 1] != '/')
                ++depth;
        }
        if (depth == 0) {
            el.contentEnd = p;
            el.end = gt2 + 1;
            el.closed = true;
            return el;
        }
        p = gt2 + 1;
    }
    el.contentEnd = el.end = end;
    return el;
}

std::string attribute(std::string_view xml, std::size_t open, std::string_view name) {
    const std::size_t gt = xml.find('>', open);
    const std::string_view tag = xml.substr(open, gt == npos ? npos : gt - open);
    const std::string needle = " " + std::string(name) + "=\"";
    const std::size_t p = tag.find(needle);
    if (p == npos)
        return {};
    const std::size_t v = p + needle.size();
    const std::size_t q = tag.find('"', v);
    return std::string(tag.substr(v, q == npos ? npos : q - v));
}

} // namespace velmora::physics::scan
