#pragma once
// A curve of a simulation table drawn into a picture with Qt Gui alone: black axes with five
// steps labelled to two decimals, a light blue grid, the line in red, axis titles where the
// curve's name gives them. For the command line, which has no widgets; text needs a
// QGuiApplication (ensureGuiApplication makes an offscreen one when there is none).

#include <QImage>

#include <memory>
#include <string>
#include <utility>
#include <vector>

class QGuiApplication;

namespace velmora::physics {

struct CurvePlot {
    std::string title, xTitle, yTitle; // UTF-8
    std::vector<std::pair<double, double>> points;
};

// The ranges the axes run over: the points' smallest and largest values, widened by one each
// way when they are equal (one point, or a flat line), so that every point lies on the plot.
struct PlotRange {
    double minX = 0, maxX = 1, minY = 0, maxY = 1;
};
PlotRange plotRange(const std::vector<std::pair<double, double>>& points);

QImage renderCurve(const CurvePlot& plot, int width = 900, int height = 600);

// A QGuiApplication on the offscreen platform when the process has none; null when one exists.
std::unique_ptr<QGuiApplication> ensureGuiApplication();

} // namespace velmora::physics
