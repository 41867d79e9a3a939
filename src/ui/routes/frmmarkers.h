#pragma once
// frmMarkers: GPS marker files of a folder to the point .csv, the .dcsv and the routemarker
// blueprint in the save folder (Text1); and the precision of .dcsv files from their source.
// The marker mode the menu opens it with picks the file pattern and the commands shown.

#include "velmora/core/appcontext.h"
#include "velmora/routes/markers.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QScrollBar;

namespace velmora::ui {

class frmMarkers : public QDialog {
    Q_OBJECT
public:
    // 1 GPS files to .csv, .dcsv and .bin; 2 .dcsv files to improve; 3 straight to .dcsv;
    // 4 .csv files to .dcsv.
    frmMarkers(AppContext& ctx, int markerMode, QWidget* parent = nullptr);

    int markerMode() const { return m_mode; }
    QLineEdit* saveFolder() const { return m_text1; }  // Text1
    QLineEdit* sourceFolder() const { return m_dir1; } // the folder File1 lists
    QListWidget* fileList() const { return m_file1; }  // File1
    QString pattern() const { return m_pattern; }
    routes::MarkerColour colour() const;
    // What the last command did, as the report showed it.
    const routes::MarkerReport& lastReport() const { return m_last; }

public slots:
    void Command2_Click(); // choose the save folder
    void Command7_Click(); // choose the folder of the marker files
    void Command4_Click(); // Proceed
    void Command1_Click(); // Select All
    void Command3_Click(); // Process
    void Command6_Click(); // Convert Fully
    void Command5_Click(); // Process DCSV
    void Command8_Click(); // Make Blueprint
    void HScroll1_Change();

private:
    void listFiles();
    std::vector<std::filesystem::path> selectedFiles() const;
    void convert(bool csvOnly);
    void showReport(const routes::MarkerReport& report, const QString& title);

    AppContext& m_ctx;
    int m_mode;
    QString m_pattern;
    std::vector<std::string> m_kinds;
    QLineEdit* m_text1;
    QLineEdit* m_dir1;
    QListWidget* m_file1;
    QScrollBar* m_scroll[3];
    QLabel* m_label3[3];
    QPushButton* m_process;
    QPushButton* m_full;
    QPushButton* m_dcsv;
    routes::MarkerReport m_last;
};

} // namespace velmora::ui
