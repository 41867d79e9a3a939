#include "xmlhighlighter.h"

#include "velmora/core/xmlhighlight.h"

#include <QColor>

namespace velmora::ui {

namespace {
QColor fromBgr(std::uint32_t bgr) {
    return QColor(static_cast<int>(bgr & 0xFF), static_cast<int>((bgr >> 8) & 0xFF), static_cast<int>((bgr >> 16) & 0xFF));
}
} // namespace

XmlHighlighter::XmlHighlighter(QTextDocument* document) : QSyntaxHighlighter(document) {}

void XmlHighlighter::highlightBlock(const QString& text) {
    // Block state 1: the line ends inside a comment.
    bool inComment = previousBlockState() == 1;
    for (const ColourSpan& span : xmlColourSpans(text, inComment))
        setFormat(span.start, span.length, fromBgr(kXmlColours[static_cast<int>(span.colour)]));
    setCurrentBlockState(inComment ? 1 : 0);
}

} // namespace velmora::ui
