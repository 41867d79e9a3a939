#pragma once
// Colouring of XML text in the editor's views, one line at a time, in the passes the editor
// has always used: tags, then attribute names and values, then text between tags that merely
// holds an equals sign back to plain, then comments.

#include <QString>

#include <cstdint>
#include <string>
#include <vector>

namespace velmora {

enum class XmlColour { Plain = 0, Tag = 1, AttributeName = 2, AttributeValue = 3, Comment = 4 };

// The colours as 32-bit blue-green-red values: plain, tags, attribute names, attribute values,
// comments.
constexpr std::uint32_t kXmlColours[5] = {0x000000, 0xC00000, 0xC000C0, 0x00C000, 0x808080};

struct ColourSpan {
    int start;
    int length;
    XmlColour colour;
};

// The spans of one line in the order they are to be applied (a later span wins). A comment
// that is still open at the end of the line is reported through `inComment`, which also says
// whether the line starts inside one.
std::vector<ColourSpan> xmlColourSpans(const QString& line, bool& inComment);

// "\red<r>\green<g>\blue<b>;" from a number (blue-green-red) or a six-digit hexadecimal text
// in red, green, blue order (its last six characters count).
std::string fcnGetRTFColor(std::uint32_t bgr);
std::string fcnGetRTFColor(const std::string& rrggbb);

} // namespace velmora
