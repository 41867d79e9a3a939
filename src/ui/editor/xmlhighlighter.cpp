#include "xmlhighlighter.h"

#include "../common/palettecolours.h"
#include "velmora/core/xmlhighlight.h"

#include <QPalette>

namespace velmora::ui {

namespace {
QColor fromBgr(std::uint32_t bgr) {
    return QColor(static_cast<int>(bgr & 0xFF), static_cast<int>((bgr >> 8) & 0xFF), static_cast<int>((bgr >> 16) & 0xFF));
}
} // namespace

XmlHighlighter::XmlHighlighter(QTextDocument* document, const QPalette& palette) : QSyntaxHighlighter(document) {
    setPalette(palette);
}

void XmlHighlighter::setPalette(const QPalette& palette) {
    // Plain text is the view's own text colour; the others keep their hue where they can.
    m_colours[0] = palette.color(QPalette::Text);
    for (std::size_t i = 1; i < m_colours.size(); ++i)
        m_colours[i] = readableOn(fromBgr(kXmlColours[i]), palette);
    rehighlight();
}

void XmlHighlighter::highlightBlock(const QString& text) {
    // Block state 1: the line ends inside a comment.
    bool inComment = previousBlockState() == 1;
    for (const ColourSpan& span : xmlColourSpans(text, inComment))
        setFormat(span.start, span.length, m_colours[static_cast<std::size_t>(span.colour)]);
    setCurrentBlockState(inComment ? 1 : 0);
}

} // namespace velmora::ui
