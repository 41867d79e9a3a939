#pragma once
// Element searches shared by the row lists and the tables: a tag is found by its whole name
// (letter case ignored), so that "<MaxForce" never stops at "<MaxForcePercentOfVehicleWeight".
// Positions here are zero-based offsets; npos means "not found".

#include <cstddef>
#include <string>
#include <string_view>

namespace velmora::physics::scan {

inline constexpr std::size_t npos = std::string_view::npos;

bool sameTag(std::string_view a, std::string_view b);

// The first "<name" (whole name, or any name that begins with `name` when `prefix`) in
// [from, end), at its '<'.
std::size_t findOpen(std::string_view xml, std::size_t from, std::size_t end, std::string_view name,
                     bool prefix = false);
// The tag name of the element whose '<' is at `open`.
std::string_view tagName(std::string_view xml, std::size_t open);

struct Element {
    std::size_t open = npos;       // '<' of the opening tag
    std::size_t contentBegin = 0;  // just behind the opening tag's '>'
    std::size_t contentEnd = 0;    // the '<' of the closing tag (== contentBegin when self-closing)
    std::size_t end = 0;           // just behind the element
    bool selfClosing = false;
    bool closed = false;           // a closing tag was found (or the element closes itself)
    std::string_view name;

    bool found() const { return open != npos; }
    bool hasChildren(std::string_view xml) const {
        return xml.substr(contentBegin, contentEnd - contentBegin).find('<') != std::string_view::npos;
    }
};

// The element whose '<' is at `open`, with its extent (nested elements of the same name allowed).
Element elementAt(std::string_view xml, std::size_t open, std::size_t end);
// The value of attribute `name` in the opening tag at `open`; empty when absent.
std::string attribute(std::string_view xml, std::size_t open, std::string_view name);

} // namespace velmora::physics::scan
