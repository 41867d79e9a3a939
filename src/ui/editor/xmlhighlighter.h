#pragma once
// Colours the XML of a text view by the editor's colour table, line by line.

#include <QSyntaxHighlighter>

namespace velmora::ui {

class XmlHighlighter : public QSyntaxHighlighter {
    Q_OBJECT
public:
    explicit XmlHighlighter(QTextDocument* document);

protected:
    void highlightBlock(const QString& text) override;
};

} // namespace velmora::ui
