#pragma once
// The main screen's text view with the line numbers in a margin, since every error the codec
// reports quotes a line.

#include <QPlainTextEdit>

#include <vector>

namespace velmora::ui {

class NumberedView : public QPlainTextEdit {
    Q_OBJECT
public:
    explicit NumberedView(QWidget* parent = nullptr);

    int marginWidth() const;
    // Puts the cursor at the start of a line, 1-based, and shows it; false past the last line.
    bool goToLine(int line);

    // The hits of Find All, `length` characters each, marked where the view shows them. They
    // go when the text changes, as their places would no longer be right.
    void setMarks(std::vector<int> starts, int length);
    const std::vector<int>& marks() const { return m_marks; }

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    friend class LineMargin;
    void paintMargin(QPaintEvent* event);
    void updateMargin(const QRect& rect, int dy);
    QWidget* m_margin;
    std::vector<int> m_marks; // sorted positions
    int m_markLength = 0;
};

} // namespace velmora::ui
