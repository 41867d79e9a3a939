#include "frmgraphs.h"

#include "../common/desktopui.h"
#include "../common/windowplace.h"

#include <QBuffer>
#include <QChart>
#include <QChartView>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLineSeries>
#include <QMouseEvent>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QScatterSeries>
#include <QScrollArea>
#include <QVBoxLayout>
#include <QValueAxis>

#include <algorithm>

namespace velmora::ui {

namespace {

struct CurveButton {
    const char* name;
    const char* caption;
    const char* row; // the simulation row that names the table
    bool steam;
};

// In the order of CurveNo.
const CurveButton kButtons[] = {
    {"Command1", "TractiveEffortVsThrottle.dcsv", "TractiveEffortVThrottle", false},
    {"Command2", "DynamicBrakeEffortVsSpeed", "BrakeEffortVsSpeed", false},
    {"Command3", "TractiveEffortVsSpeed ", "TractiveForceVSpeed", false},
    {"Command4", "TractiveEffortVFieldDivertProportion", "TractiveEffortVFieldDivertProportion", false},
    {"Command9", "BurnRateVsSteamUsageRate", "BurnRateVsSteamUsageRate", true},
    {"Command10", "ConditionChangeVSTemp", "ConditionChangeVsTemp", true},
    {"Command11", "TractiveEffortLinearVsSpeed", "TractiveEffortLinearVsSpeed", true},
    {"Command12", "TractiveEffortVsCutoff", "TractiveEffortVsCutoff", true},
};

const CurveButton* buttonOf(const std::string& row) {
    for (const CurveButton& b : kButtons)
        if (row == b.row)
            return &b;
    return nullptr;
}

QPushButton* button(const char* name, const QString& text) {
    auto* b = new QPushButton(text);
    b->setObjectName(name);
    return b;
}

// The curve's name as the buttons say it, without the file ending.
std::string curveWord(const CurveButton& b) {
    std::string word = b.caption;
    while (!word.empty() && word.back() == ' ')
        word.pop_back();
    if (const std::size_t dot = word.find(".dcsv"); dot != std::string::npos)
        word.resize(dot);
    return word;
}

} // namespace

frmGraphs::frmGraphs(AppContext& ctx, std::vector<CurveFile> curves, bool steam, std::string stockName, QWidget* parent)
    : QDialog(parent), m_ctx(ctx), m_curves(std::move(curves)), m_stock(std::move(stockName)) {
    setObjectName("frmGraphs");
    setWindowTitle(tr("Graphs"));
    auto* top = new QHBoxLayout(this);

    auto* left = new QVBoxLayout;
    for (const CurveButton& b : kButtons) {
        if (b.steam != steam)
            continue;
        QPushButton* c = button(b.name, QString::fromUtf8(b.caption).trimmed());
        const std::string row = b.row;
        connect(c, &QPushButton::clicked, this, [this, row] { loadCurve(row); });
        left->addWidget(c);
    }
    left->addSpacing(12);
    QPushButton* redraw = button("Command7", tr("Redraw"));
    QPushButton* save = button("Command8", tr("Save .DCSV File"));
    QPushButton* clear = button("Command5", tr("Clear"));
    QPushButton* print = button("Command13", tr("Print"));
    QPushButton* picture = button("Command14", tr("Save Picture..."));
    QPushButton* exit = button("Command6", tr("&Exit"));
    for (QPushButton* b : {redraw, save, clear, print, picture})
        left->addWidget(b);
    left->addStretch(1);
    left->addWidget(exit);
    top->addLayout(left);
    connect(redraw, &QPushButton::clicked, this, &frmGraphs::Command7_Click);
    connect(save, &QPushButton::clicked, this, &frmGraphs::Command8_Click);
    connect(clear, &QPushButton::clicked, this, &frmGraphs::Command5_Click);
    connect(print, &QPushButton::clicked, this, &frmGraphs::Command13_Click);
    connect(picture, &QPushButton::clicked, this, &frmGraphs::Command14_Click);
    connect(exit, &QPushButton::clicked, this, &QDialog::close);

    auto* middle = new QVBoxLayout;
    m_heading = new QLabel;
    m_heading->setObjectName("Label1");
    middle->addWidget(m_heading);
    m_chart = new QChart;
    m_chart->legend()->hide();
    m_view = new QChartView(m_chart);
    m_view->setObjectName("Picture1");
    m_view->setRenderHint(QPainter::Antialiasing);
    m_view->setMinimumSize(520, 380);
    m_view->viewport()->setMouseTracking(true);
    m_view->viewport()->installEventFilter(this);
    middle->addWidget(m_view, 1);
    m_pointer = new QLabel;
    m_pointer->setObjectName("lblPointer");
    middle->addWidget(m_pointer);
    top->addLayout(middle, 1);

    // The points: X and Y boxes, a row each, scrolled.
    auto* boxes = new QWidget;
    auto* grid = new QGridLayout(boxes);
    grid->addWidget(new QLabel("X"), 0, 1);
    grid->addWidget(new QLabel("Y"), 0, 2);
    for (int i = 0; i < kRows; ++i) {
        auto* x = new QLineEdit;
        auto* y = new QLineEdit;
        x->setObjectName(QString("Text1_%1").arg(i));
        y->setObjectName(QString("Text2_%1").arg(i));
        x->setMaximumWidth(90);
        y->setMaximumWidth(90);
        grid->addWidget(new QLabel(QString::number(i + 1)), i + 1, 0);
        grid->addWidget(x, i + 1, 1);
        grid->addWidget(y, i + 1, 2);
        m_x.push_back(x);
        m_y.push_back(y);
    }
    auto* scroll = new QScrollArea;
    scroll->setWidget(boxes);
    scroll->setMinimumWidth(250);
    top->addWidget(scroll);
    rememberPlace(ctx, this, objectName(), {1100, 650});
}

bool frmGraphs::loadCurve(const std::string& row) {
    const CurveButton* b = buttonOf(row);
    const std::string word = b ? curveWord(*b) : row;
    const auto found = std::find_if(m_curves.begin(), m_curves.end(), [&](const CurveFile& c) { return c.row == row; });
    const std::string caption = b ? std::string(b->caption) : row;
    std::string shownName = caption;
    while (!shownName.empty() && shownName.back() == ' ')
        shownName.pop_back();
    if (found == m_curves.end()) {
        m_ctx.ui().message("No " + shownName + " file found for this loco", Icon::Warning);
        return false;
    }
    Command5_Click();
    physics::DcsvTable table;
    if (std::string problem = physics::readTable(found->file, table); !problem.empty()) {
        m_ctx.ui().message(problem, Icon::Warning);
        return false;
    }
    m_table = std::move(table);
    m_curveName = row;
    m_heading->setText(toQt(word + " Data for " + m_stock));
    std::vector<std::pair<double, double>> points;
    for (std::size_t i = 0; i < m_table.points.size() && i < m_x.size(); ++i) {
        m_x[i]->setText(toQt(m_table.points[i].x));
        m_y[i]->setText(toQt(m_table.points[i].y));
        points.emplace_back(m_table.points[i].xValue, m_table.points[i].yValue);
    }
    draw(points);
    return true;
}

void frmGraphs::draw(const std::vector<std::pair<double, double>>& points) {
    m_chart->removeAllSeries();
    for (QAbstractAxis* axis : m_chart->axes())
        m_chart->removeAxis(axis);
    m_drawn = points;
    if (points.empty())
        return;
    auto* line = new QLineSeries;
    line->setPen(QPen(QColor(255, 0, 0), 2));
    auto* marks = new QScatterSeries;
    marks->setColor(QColor(255, 0, 0));
    marks->setMarkerSize(7);
    double minX = points.front().first, maxX = minX, minY = points.front().second, maxY = minY;
    for (const auto& [x, y] : points) {
        line->append(x, y);
        marks->append(x, y);
        minX = std::min(minX, x);
        maxX = std::max(maxX, x);
        minY = std::min(minY, y);
        maxY = std::max(maxY, y);
    }
    if (minX == maxX) {
        minX -= 1;
        maxX += 1;
    }
    if (minY == maxY) {
        minY -= 1;
        maxY += 1;
    }
    m_chart->addSeries(line);
    m_chart->addSeries(marks);
    const physics::AxisTitles titles = physics::axisTitlesOf(m_curveName.empty() ? m_table.file.stem().string() : m_curveName);
    auto axis = [&](Qt::Alignment where, double from, double to, const std::string& title) {
        auto* a = new QValueAxis;
        a->setRange(from, to);
        a->setTickCount(6);
        a->setLabelFormat("%.2f");
        a->setTitleText(QString::fromStdString(title));
        a->setLinePenColor(Qt::black);
        a->setGridLineColor(QColor(152, 245, 255));
        m_chart->addAxis(a, where);
        line->attachAxis(a);
        marks->attachAxis(a);
    };
    axis(Qt::AlignBottom, minX, maxX, titles.x);
    axis(Qt::AlignLeft, minY, maxY, titles.y);
}

bool frmGraphs::boxPoints(std::vector<std::pair<std::string, std::string>>& typed,
                          std::vector<std::pair<double, double>>& points) {
    for (std::size_t i = 0; i < m_x.size(); ++i) {
        const std::string x = m_x[i]->text().trimmed().toStdString(), y = m_y[i]->text().trimmed().toStdString();
        if (x.empty())
            break; // an empty X ends the list
        double xv = 0, yv = 0;
        if (!physics::parseNumber(x, xv) || !physics::parseNumber(y, yv)) {
            m_ctx.ui().message("Row " + std::to_string(i + 1) + ": '" + (physics::parseNumber(x, xv) ? y : x) +
                                   "' is not a number",
                               Icon::Warning);
            return false;
        }
        typed.emplace_back(x, y);
        points.emplace_back(xv, yv);
    }
    return true;
}

void frmGraphs::Command7_Click() {
    std::vector<std::pair<std::string, std::string>> typed;
    std::vector<std::pair<double, double>> points;
    if (boxPoints(typed, points))
        draw(points);
}

void frmGraphs::Command8_Click() {
    if (m_table.file.empty())
        return;
    std::vector<std::pair<std::string, std::string>> typed;
    std::vector<std::pair<double, double>> points;
    if (!boxPoints(typed, points))
        return;
    // The table keeps its size: rows beyond its points are not written, fewer rows leave the rest.
    physics::DcsvTable changed = m_table;
    for (std::size_t i = 0; i < typed.size() && i < changed.points.size(); ++i)
        if (std::string problem = physics::setPoint(changed, i, typed[i].first, typed[i].second); !problem.empty()) {
            m_ctx.ui().message(problem, Icon::Warning);
            return;
        }
    if (std::string problem = physics::saveTable(m_ctx, changed, "Save .DCSV File " + changed.file.string());
        !problem.empty()) {
        m_ctx.ui().message(problem, Icon::Warning);
        return;
    }
    m_table = std::move(changed);
}

void frmGraphs::Command5_Click() {
    for (std::size_t i = 0; i < m_x.size(); ++i) {
        m_x[i]->clear();
        m_y[i]->clear();
    }
    draw({});
}

void frmGraphs::Command13_Click() {
    QPrinter printer;
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    QPainter painter(&printer);
    m_view->render(&painter);
}

void frmGraphs::Command14_Click() {
    FileRequest r;
    r.title = "Save Picture";
    r.filter = "PNG picture (*.png)|*.png";
    r.save = true;
    if (const auto file = m_ctx.ui().chooseFile(r))
        savePicture(*file);
}

bool frmGraphs::savePicture(const std::filesystem::path& file) {
    const QPixmap picture = m_view->grab();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (picture.isNull() || !picture.save(&buffer, "PNG")) {
        m_ctx.ui().message(file.string() + ": the picture could not be made", Icon::Warning);
        return false;
    }
    WriteOptions o;
    o.backup = Backup::None;
    const WriteResult w =
        m_ctx.files().write(file, std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())), o);
    if (!w)
        m_ctx.ui().message(w.message, Icon::Warning);
    return w.ok;
}

bool frmGraphs::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_view->viewport() && event->type() == QEvent::MouseMove && !m_drawn.empty()) {
        const QPointF scene = m_view->mapToScene(static_cast<QMouseEvent*>(event)->position().toPoint());
        const QPointF value = m_chart->mapToValue(m_chart->mapFromScene(scene));
        m_pointer->setText(QString("X: %1  Y: %2").arg(value.x(), 0, 'f', 2).arg(value.y(), 0, 'f', 2));
    }
    return QDialog::eventFilter(watched, event);
}

} // namespace velmora::ui
