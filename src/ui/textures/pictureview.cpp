#include "pictureview.h"

#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>

#include <cmath>

namespace velmora::ui {

PictureView::PictureView(QScrollArea* area) : m_area(area) {
    setObjectName("SuperPicCtl1");
    setAutoFillBackground(false);
}

void PictureView::setPicture(const QImage& picture, int zoomPercent) {
    m_picture = picture;
    m_zoom = zoomPercent;
    const QSize s = sizeHint();
    setFixedSize(s.isEmpty() ? QSize(1, 1) : s);
    update();
}

QSize PictureView::sizeHint() const {
    if (m_picture.isNull())
        return {};
    const double f = m_zoom / 100.0;
    return {std::max(1, static_cast<int>(std::lround(m_picture.width() * f))),
            std::max(1, static_cast<int>(std::lround(m_picture.height() * f)))};
}

void PictureView::setPanning(bool on) {
    m_panning = on;
    m_dragging = false;
    setCursor(on ? Qt::OpenHandCursor : Qt::ArrowCursor);
}

void PictureView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), palette().window());
    if (m_picture.isNull())
        return;
    // The part of the picture under the exposed rectangle, a pixel wider each way so that the
    // edges of a magnified pixel are drawn whole.
    const double f = m_zoom / 100.0;
    const QRect exposed = event->rect();
    QRect source(static_cast<int>(std::floor(exposed.left() / f)) - 1, static_cast<int>(std::floor(exposed.top() / f)) - 1,
                 static_cast<int>(std::ceil(exposed.width() / f)) + 3, static_cast<int>(std::ceil(exposed.height() / f)) + 3);
    source &= m_picture.rect();
    if (source.isEmpty())
        return;
    const QRectF target(source.left() * f, source.top() * f, source.width() * f, source.height() * f);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, m_zoom < 100);
    painter.drawImage(target, m_picture, source);
}

void PictureView::mousePressEvent(QMouseEvent* event) {
    if (!m_panning || event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    m_dragging = true;
    m_last = event->globalPosition().toPoint();
    setCursor(Qt::ClosedHandCursor);
}

void PictureView::mouseMoveEvent(QMouseEvent* event) {
    if (!m_dragging)
        return QWidget::mouseMoveEvent(event);
    const QPoint now = event->globalPosition().toPoint();
    const QPoint moved = now - m_last;
    m_last = now;
    m_area->horizontalScrollBar()->setValue(m_area->horizontalScrollBar()->value() - moved.x());
    m_area->verticalScrollBar()->setValue(m_area->verticalScrollBar()->value() - moved.y());
}

void PictureView::mouseReleaseEvent(QMouseEvent* event) {
    if (!m_dragging)
        return QWidget::mouseReleaseEvent(event);
    m_dragging = false;
    setCursor(Qt::OpenHandCursor);
}

} // namespace velmora::ui
