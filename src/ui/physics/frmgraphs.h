#pragma once
// frmGraphs: one curve table of the open simulation at a time, drawn as a chart, its points
// in edit boxes (X in Text1, Y in Text2) that Redraw draws again and "Save .DCSV File" writes
// back into the table. The chart can be printed and saved as a PNG picture.

#include "velmora/core/appcontext.h"
#include "velmora/physics/dcsvtable.h"

#include <QDialog>

#include <filesystem>
#include <string>
#include <vector>

class QChart;
class QChartView;
class QLabel;
class QLineEdit;

namespace velmora::ui {

class frmGraphs : public QDialog {
    Q_OBJECT
public:
    // A table the simulation names: the row it stands in (TractiveForceVSpeed ...) and its file.
    struct CurveFile {
        std::string row;
        std::filesystem::path file;
    };
    static constexpr int kRows = 100;

    frmGraphs(AppContext& ctx, std::vector<CurveFile> curves, bool steam, std::string stockName,
              QWidget* parent = nullptr);

    // Loads and draws the curve of a button (by its row name); false after saying why not.
    bool loadCurve(const std::string& row);
    const physics::DcsvTable& table() const { return m_table; }
    QLineEdit* xBox(int row) const { return m_x[static_cast<std::size_t>(row)]; } // Text1
    QLineEdit* yBox(int row) const { return m_y[static_cast<std::size_t>(row)]; } // Text2
    QChart* chart() const { return m_chart; }
    QLabel* heading() const { return m_heading; }
    // The points drawn now.
    const std::vector<std::pair<double, double>>& drawn() const { return m_drawn; }
    // The chart as a PNG picture written to `file` (no backup: it is an export); false after saying why.
    bool savePicture(const std::filesystem::path& file);

public slots:
    void Command7_Click();  // Redraw
    void Command8_Click();  // Save .DCSV File
    void Command5_Click();  // Clear
    void Command13_Click(); // Print
    void Command14_Click(); // Save Picture

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void draw(const std::vector<std::pair<double, double>>& points);
    // The boxes' points up to the first empty X; false after naming a box that holds no number.
    bool boxPoints(std::vector<std::pair<std::string, std::string>>& typed, std::vector<std::pair<double, double>>& points);

    AppContext& m_ctx;
    std::vector<CurveFile> m_curves;
    std::string m_stock;
    std::string m_curveName; // the loaded curve's row
    physics::DcsvTable m_table;
    std::vector<QLineEdit*> m_x, m_y;
    std::vector<std::pair<double, double>> m_drawn;
    QChart* m_chart = nullptr;
    QChartView* m_view = nullptr;
    QLabel* m_heading = nullptr;
    QLabel* m_pointer = nullptr;
};

} // namespace velmora::ui
