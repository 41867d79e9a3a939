#pragma once
// frmMKRE: markers typed by hand into the selected route's own RouteMarkers folder.
// frmBlue: a marker blueprint source made from the shipped BluePrints templates.

#include "velmora/core/appcontext.h"
#include "velmora/routes/markers.h"
#include "velmora/routes/routes.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;

namespace velmora::ui {

class frmMKRE : public QDialog {
    Q_OBJECT
public:
    explicit frmMKRE(AppContext& ctx, QWidget* parent = nullptr);
    QListWidget* routeList() const { return m_list1; }  // List1
    QListWidget* markerList() const { return m_list3; } // List3
    QLineEdit* longitude() const { return m_text1; }    // Text1
    QLineEdit* latitude() const { return m_text2; }     // Text2
    QLineEdit* markerName() const { return m_text3; }   // Text3
    QLineEdit* fileName() const { return m_text; }      // Text
    QCheckBox* clearCaches() const { return m_check1; } // Check1
    QLabel* status() const { return m_label; }
    const routes::MarkerReport& lastReport() const { return m_last; }

public slots:
    void Command3_Click(); // Add to List
    void Command1_Click(); // Copy Route to RailWorks: the route's RouteMarkers folder
    void Command4_Click(); // Save Markers

private:
    const routes::RouteEntry* selectedRoute();

    AppContext& m_ctx;
    std::vector<routes::RouteEntry> m_entries;
    QListWidget* m_list1;
    QListWidget* m_list3;
    QLineEdit *m_text1, *m_text2, *m_text3, *m_text;
    QCheckBox* m_check1;
    QLabel* m_label;
    routes::MarkerReport m_last;
};

class frmBlue : public QDialog {
    Q_OBJECT
public:
    explicit frmBlue(AppContext& ctx, QWidget* parent = nullptr);
    QComboBox* mode() const { return m_mode; } // 1 named, 2 series, 3 route
    QLineEdit* name() const { return m_text[0]; }
    QLineEdit* csv(int i) const { return m_text[1 + i]; }
    QLineEdit* folder() const { return m_folder; }

public slots:
    void Command1_Click(); // Make Blueprint
    void Command2_Click(); // choose the folder

private:
    AppContext& m_ctx;
    QComboBox* m_mode;
    QLineEdit* m_text[3];
    QLineEdit* m_folder;
};

} // namespace velmora::ui
