#pragma once
// A text view with the line numbers in a margin, since every error the codec reports quotes a
// line. Two kinds of marks: the hits of Find All, painted over the text where the view shows
// them, and whole lines marked with a word in the margin and a tinted background (a missing file
// in a report), so that such a mark never rests on colour alone.

#include <QPlainTextEdit>

#include <map>
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

    // Marks lines (0-based) with a word shown in the margin and a background of `tint`.
    void setLineMarks(const std::map<int, QString>& marks, const QColor& tint);
    const std::map<int, QString>& lineMarks() const { return m_lineMarks; }

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    friend class LineMargin;
    void paintMargin(QPaintEvent* event);
    void updateMargin(const QRect& rect, int dy);
    void paintLineMarks();
    QWidget* m_margin;
    std::vector<int> m_marks; // sorted positions
    int m_markLength = 0;
    std::map<int, QString> m_lineMarks;
    QColor m_tint;
};

} // namespace velmora::ui
