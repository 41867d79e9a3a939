#pragma once
// frmNewZip: makes a zip archive of chosen files and folders, at a compression level, filtered
// by wildcards, in one file or in parts of about a given size.

#include "velmora/archives/zipwriter.h"
#include "velmora/core/appcontext.h"

#include <QDialog>

class QCheckBox;
class QLabel;
class QLineEdit;
class QMenuBar;
class QSlider;
class QTableWidget;

namespace velmora::ui {

class frmNewZip : public QDialog {
    Q_OBJECT
public:
    explicit frmNewZip(AppContext& ctx, QWidget* parent = nullptr);

    QTableWidget* grid() const { return m_grid; } // VSFG1: what will go in
    QMenuBar* menus() const { return m_menus; }
    QLineEdit* wildcards() const { return m_wildcards; } // Text1
    QSlider* level() const { return m_level; }           // Slider1
    QLabel* levelLabel() const { return m_levelLabel; }
    QCheckBox* multiple() const { return m_multiple; } // Check2
    QLineEdit* partSize() const { return m_partSize; } // Text2, in MB
    QString statusText() const;
    const archives::ZipCreateResult& lastResult() const { return m_result; }

    // Adds a file or a folder to the list.
    void addInput(const fs::path& path);
    // The options the screen's controls give.
    archives::ZipCreateOptions options() const;

public slots:
    void mnuNew_Click();
    void mnuMulti_Click();
    void mnuClose_Click();
    void mnuAdd_Click(); // mnuAdd and mnuAddFiles
    void mnuAddFold_Click();
    bool Command2_Click(); // Process: true when the archive was made

private:
    void showLevel(int level);
    AppContext& m_ctx;
    std::vector<fs::path> m_inputs;
    fs::path m_out; // the name mnuNew gave, proposed by Process
    QMenuBar* m_menus;
    QTableWidget* m_grid;
    QLineEdit* m_wildcards;
    QSlider* m_level;
    QLabel* m_levelLabel;
    QCheckBox* m_multiple;
    QLineEdit* m_partSize;
    QCheckBox* m_subFolders;
    QCheckBox* m_fullPath;
    QLabel* m_status;
    archives::ZipCreateResult m_result;
};

} // namespace velmora::ui
