#include "numberedview.h"

#include <QPainter>
#include <QTextBlock>

namespace velmora::ui {

class LineMargin : public QWidget {
public:
    explicit LineMargin(NumberedView* view) : QWidget(view), m_view(view) { setObjectName("lineNumbers"); }
    QSize sizeHint() const override { return {m_view->marginWidth(), 0}; }

protected:
    void paintEvent(QPaintEvent* event) override { m_view->paintMargin(event); }

private:
    NumberedView* m_view;
};

NumberedView::NumberedView(QWidget* parent) : QPlainTextEdit(parent), m_margin(new LineMargin(this)) {
    connect(this, &QPlainTextEdit::blockCountChanged, this, [this] { setViewportMargins(marginWidth(), 0, 0, 0); });
    connect(this, &QPlainTextEdit::updateRequest, this, &NumberedView::updateMargin);
    setViewportMargins(marginWidth(), 0, 0, 0);
}

int NumberedView::marginWidth() const {
    int digits = 1;
    for (int n = std::max(1, blockCount()); n >= 10; n /= 10)
        ++digits;
    int marks = 0;
    QFont bold = font();
    bold.setBold(true);
    const QFontMetrics boldMetrics(bold);
    for (const auto& [line, word] : m_marks)
        marks = std::max(marks, boldMetrics.horizontalAdvance(word + QLatin1Char(' ')));
    return 8 + fontMetrics().horizontalAdvance(QLatin1Char('9')) * std::max(digits, 3) + marks;
}

void NumberedView::setMarks(const std::map<int, QString>& marks, const QColor& tint) {
    m_marks = marks;
    m_tint = tint;
    setViewportMargins(marginWidth(), 0, 0, 0);
    paintMarks();
    m_margin->update();
}

void NumberedView::paintMarks() {
    QList<QTextEdit::ExtraSelection> lines;
    for (const auto& [line, word] : m_marks) {
        const QTextBlock block = document()->findBlockByNumber(line);
        if (!block.isValid())
            continue;
        QTextEdit::ExtraSelection mark;
        mark.cursor = QTextCursor(block);
        mark.format.setBackground(m_tint);
        mark.format.setProperty(QTextFormat::FullWidthSelection, true);
        lines << mark;
    }
    setExtraSelections(lines);
}

bool NumberedView::goToLine(int line) {
    const QTextBlock block = document()->findBlockByNumber(line - 1);
    if (line < 1 || !block.isValid())
        return false;
    setTextCursor(QTextCursor(block));
    centerCursor();
    return true;
}

void NumberedView::resizeEvent(QResizeEvent* event) {
    QPlainTextEdit::resizeEvent(event);
    const QRect r = contentsRect();
    m_margin->setGeometry(QRect(r.left(), r.top(), marginWidth(), r.height()));
}

void NumberedView::updateMargin(const QRect& rect, int dy) {
    if (dy)
        m_margin->scroll(0, dy);
    else
        m_margin->update(0, rect.y(), m_margin->width(), rect.height());
}

void NumberedView::paintMargin(QPaintEvent* event) {
    QPainter painter(m_margin);
    const QPalette& pal = palette();
    painter.fillRect(event->rect(), pal.color(QPalette::AlternateBase));
    painter.setPen(pal.color(QPalette::PlaceholderText));
    // Only the blocks in view are painted: a document of millions of lines costs nothing more.
    QTextBlock block = firstVisibleBlock();
    int top = qRound(blockBoundingGeometry(block).translated(contentOffset()).top());
    int bottom = top + qRound(blockBoundingRect(block).height());
    while (block.isValid() && top <= event->rect().bottom()) {
        if (block.isVisible() && bottom >= event->rect().top()) {
            painter.drawText(0, top, m_margin->width() - 4, fontMetrics().height(), Qt::AlignRight,
                             QString::number(block.blockNumber() + 1));
            if (const auto mark = m_marks.find(block.blockNumber()); mark != m_marks.end()) {
                painter.save();
                painter.setPen(pal.color(QPalette::Text));
                QFont bold = painter.font();
                bold.setBold(true);
                painter.setFont(bold);
                painter.drawText(4, top, m_margin->width(), fontMetrics().height(), Qt::AlignLeft, mark->second);
                painter.restore();
            }
        }
        block = block.next();
        top = bottom;
        bottom = top + qRound(blockBoundingRect(block).height());
    }
}

} // namespace velmora::ui
