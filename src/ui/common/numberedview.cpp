#include "numberedview.h"

#include <QPainter>
#include <QTextBlock>
#include <QTextLayout>

#include <algorithm>

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
    connect(document(), &QTextDocument::contentsChange, this, [this](int, int removed, int added) {
        if ((removed || added) && !m_marks.empty())
            setMarks({}, 0);
    });
}

void NumberedView::setMarks(std::vector<int> starts, int length) {
    m_marks = std::move(starts);
    m_markLength = length;
    viewport()->update();
}

void NumberedView::paintEvent(QPaintEvent* event) {
    QPlainTextEdit::paintEvent(event);
    if (m_marks.empty() || m_markLength <= 0)
        return;
    // Only the marks on the lines in view are looked up and painted, over the text.
    QPainter painter(viewport());
    QColor colour = palette().color(QPalette::Highlight);
    colour.setAlpha(90);
    for (QTextBlock block = firstVisibleBlock(); block.isValid(); block = block.next()) {
        const QRectF box = blockBoundingGeometry(block).translated(contentOffset());
        if (box.top() > event->rect().bottom())
            break;
        const int start = block.position(), end = start + block.length() - 1;
        const QTextLayout* layout = block.layout();
        for (auto it = std::lower_bound(m_marks.begin(), m_marks.end(), start); it != m_marks.end() && *it < end;
             ++it) {
            const int from = *it - start, to = std::min(end - start, from + m_markLength);
            const QTextLine line = layout->lineForTextPosition(from);
            if (!line.isValid())
                continue;
            const qreal x1 = line.cursorToX(from), x2 = line.cursorToX(to);
            painter.fillRect(QRectF(x1, line.y(), x2 - x1, line.height()).translated(box.topLeft()), colour);
        }
    }
}

int NumberedView::marginWidth() const {
    int digits = 1;
    for (int n = std::max(1, blockCount()); n >= 10; n /= 10)
        ++digits;
    int marks = 0;
    QFont bold = font();
    bold.setBold(true);
    const QFontMetrics boldMetrics(bold);
    for (const auto& [line, word] : m_lineMarks)
        marks = std::max(marks, boldMetrics.horizontalAdvance(word + QLatin1Char(' ')));
    return 8 + fontMetrics().horizontalAdvance(QLatin1Char('9')) * std::max(digits, 3) + marks;
}

void NumberedView::setLineMarks(const std::map<int, QString>& marks, const QColor& tint) {
    m_lineMarks = marks;
    m_tint = tint;
    setViewportMargins(marginWidth(), 0, 0, 0);
    paintLineMarks();
    m_margin->update();
}

void NumberedView::paintLineMarks() {
    QList<QTextEdit::ExtraSelection> lines;
    for (const auto& [line, word] : m_lineMarks) {
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
            if (const auto mark = m_lineMarks.find(block.blockNumber()); mark != m_lineMarks.end()) {
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
