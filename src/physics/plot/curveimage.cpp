#include "curveimage.h"

#include <QFont>
#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cstdlib>

namespace velmora::physics {

namespace {

constexpr int kSteps = 5;

QString text(const std::string& s) { return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size())); }

} // namespace

PlotRange plotRange(const std::vector<std::pair<double, double>>& points) {
    PlotRange r;
    if (points.empty())
        return r;
    r.minX = r.maxX = points.front().first;
    r.minY = r.maxY = points.front().second;
    for (const auto& [x, y] : points) {
        r.minX = std::min(r.minX, x);
        r.maxX = std::max(r.maxX, x);
        r.minY = std::min(r.minY, y);
        r.maxY = std::max(r.maxY, y);
    }
    if (r.minX == r.maxX) {
        r.minX -= 1;
        r.maxX += 1;
    }
    if (r.minY == r.maxY) {
        r.minY -= 1;
        r.maxY += 1;
    }
    return r;
}

QImage renderCurve(const CurvePlot& plot, int width, int height) {
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(Qt::white);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    QFont font = p.font();
    font.setPixelSize(13);
    p.setFont(font);

    const QRectF area(90, 50, width - 130, height - 130);
    const PlotRange r = plotRange(plot.points);
    auto at = [&](double x, double y) {
        return QPointF(area.left() + (x - r.minX) / (r.maxX - r.minX) * area.width(),
                       area.bottom() - (y - r.minY) / (r.maxY - r.minY) * area.height());
    };

    p.setPen(QPen(QColor(152, 245, 255), 1));
    for (int i = 0; i <= kSteps; ++i) {
        const double fx = area.left() + i * area.width() / kSteps;
        const double fy = area.bottom() - i * area.height() / kSteps;
        p.drawLine(QPointF(fx, area.top()), QPointF(fx, area.bottom()));
        p.drawLine(QPointF(area.left(), fy), QPointF(area.right(), fy));
    }
    p.setPen(QPen(Qt::black, 1.5));
    p.drawLine(area.bottomLeft(), area.bottomRight());
    p.drawLine(area.bottomLeft(), area.topLeft());
    for (int i = 0; i <= kSteps; ++i) {
        const double fx = area.left() + i * area.width() / kSteps;
        const double fy = area.bottom() - i * area.height() / kSteps;
        const QString xl = QString::number(r.minX + i * (r.maxX - r.minX) / kSteps, 'f', 2);
        const QString yl = QString::number(r.minY + i * (r.maxY - r.minY) / kSteps, 'f', 2);
        p.drawText(QRectF(fx - 50, area.bottom() + 6, 100, 18), Qt::AlignHCenter | Qt::AlignTop, xl);
        p.drawText(QRectF(area.left() - 88, fy - 9, 80, 18), Qt::AlignRight | Qt::AlignVCenter, yl);
    }
    p.drawText(QRectF(0, 10, width, 28), Qt::AlignHCenter | Qt::AlignVCenter, text(plot.title));
    p.drawText(QRectF(area.left(), height - 40, area.width(), 24), Qt::AlignHCenter | Qt::AlignVCenter, text(plot.xTitle));
    p.save();
    p.translate(18, area.center().y());
    p.rotate(-90);
    p.drawText(QRectF(-area.height() / 2, -12, area.height(), 24), Qt::AlignHCenter | Qt::AlignVCenter, text(plot.yTitle));
    p.restore();

    p.setPen(QPen(QColor(255, 0, 0), 2));
    if (plot.points.size() >= 2) {
        QPainterPath line(at(plot.points.front().first, plot.points.front().second));
        for (std::size_t i = 1; i < plot.points.size(); ++i)
            line.lineTo(at(plot.points[i].first, plot.points[i].second));
        p.drawPath(line);
    }
    p.setBrush(QColor(255, 0, 0));
    for (const auto& [x, y] : plot.points)
        p.drawEllipse(at(x, y), 3, 3);
    p.end();
    return image;
}

std::unique_ptr<QGuiApplication> ensureGuiApplication() {
    if (QGuiApplication::instance())
        return nullptr;
    // Nothing is shown: the offscreen platform needs no display, and its fonts come from the system.
    static int argc = 3;
    static char name[] = "velmora-cli", option[] = "-platform", platform[] = "offscreen";
    static char* argv[] = {name, option, platform, nullptr};
    // Its start-up notes (no XDG_RUNTIME_DIR and the like) are no business of a command's output.
    const QtMessageHandler before = qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    auto app = std::make_unique<QGuiApplication>(argc, argv);
    qInstallMessageHandler(before);
    return app;
}

} // namespace velmora::physics
