#pragma once
// A text view with the line numbers in a margin, since every error the codec reports quotes a
// line. Lines can be marked with a word in the margin and a tinted background (a missing file in
// a report): a mark never rests on colour alone.

#include <QPlainTextEdit>

#include <map>

namespace velmora::ui {

class NumberedView : public QPlainTextEdit {
    Q_OBJECT
public:
    explicit NumberedView(QWidget* parent = nullptr);

    int marginWidth() const;
    // Puts the cursor at the start of a line, 1-based, and shows it; false past the last line.
    bool goToLine(int line);

    // Marks lines (0-based) with a word shown in the margin and a background of `tint`.
    void setMarks(const std::map<int, QString>& marks, const QColor& tint);
    const std::map<int, QString>& marks() const { return m_marks; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    friend class LineMargin;
    void paintMargin(QPaintEvent* event);
    void updateMargin(const QRect& rect, int dy);
    void paintMarks();
    QWidget* m_margin;
    std::map<int, QString> m_marks;
    QColor m_tint;
};

} // namespace velmora::ui
