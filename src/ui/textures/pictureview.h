#pragma once
// The viewer's picture control: the picture drawn at a zoom, only the part in sight, so that a
// large texture at 800% costs no more than at 100%. In panning mode a drag moves the scroll
// area it sits in.

#include <QImage>
#include <QPoint>
#include <QWidget>

class QScrollArea;

namespace velmora::ui {

class PictureView : public QWidget {
    Q_OBJECT
public:
    explicit PictureView(QScrollArea* area);

    void setPicture(const QImage& picture, int zoomPercent);
    const QImage& picture() const { return m_picture; }
    int zoom() const { return m_zoom; }
    void setPanning(bool on);
    bool panning() const { return m_panning; }
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    QScrollArea* m_area;
    QImage m_picture;
    int m_zoom = 100;
    bool m_panning = false;
    bool m_dragging = false;
    QPoint m_last;
};

} // namespace velmora::ui
