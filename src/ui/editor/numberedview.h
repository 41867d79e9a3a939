#pragma once
// The main screen's text view with the line numbers in a margin, since every error the codec
// reports quotes a line.

#include <QPlainTextEdit>

namespace velmora::ui {

class NumberedView : public QPlainTextEdit {
    Q_OBJECT
public:
    explicit NumberedView(QWidget* parent = nullptr);

    int marginWidth() const;
    // Puts the cursor at the start of a line, 1-based, and shows it; false past the last line.
    bool goToLine(int line);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    friend class LineMargin;
    void paintMargin(QPaintEvent* event);
    void updateMargin(const QRect& rect, int dy);
    QWidget* m_margin;
};

} // namespace velmora::ui
