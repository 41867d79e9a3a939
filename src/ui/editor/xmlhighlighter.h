#pragma once
// Colours the XML of a text view by the editor's colour table, line by line, each colour made
// readable on the view's background (see palettecolours.h).

#include <QColor>
#include <QSyntaxHighlighter>

#include <array>

class QPalette;

namespace velmora::ui {

class XmlHighlighter : public QSyntaxHighlighter {
    Q_OBJECT
public:
    XmlHighlighter(QTextDocument* document, const QPalette& palette);

    // The colours in use: plain, tags, attribute names, attribute values, comments.
    const std::array<QColor, 5>& colours() const { return m_colours; }
    // The view's palette changed (another theme): the colours follow and the text is coloured again.
    void setPalette(const QPalette& palette);

protected:
    void highlightBlock(const QString& text) override;

private:
    std::array<QColor, 5> m_colours;
};

} // namespace velmora::ui
