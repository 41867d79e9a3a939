#pragma once
// frmQDSelect, "Quick Drive Consist Details": the names, engine type, flags, era, consist type
// and the routes of a new Quick Drive consist. OK keeps the values; at least one route must be
// selected.

#include "velmora/consists/qdbuild.h"
#include "velmora/core/appcontext.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QTableWidget;

namespace velmora::ui {

class frmQDSelect : public QDialog {
    Q_OBJECT
public:
    explicit frmQDSelect(AppContext& ctx, QWidget* parent = nullptr);

    // What the fields hold now (routes: the folders of the selected rows).
    consists::QDMetadata metadata() const;
    QTableWidget* routeGrid() const { return m_routes; } // List1

public slots:
    // OK: refused with "You do not appear to have selected a route" when no route is selected.
    void cmdOK_Click();

private:
    AppContext& m_ctx;
    QLineEdit* m_locoName;    // Text1(0)
    QLineEdit* m_displayName; // Text1(1)
    QLineEdit* m_consistName; // Text3
    QComboBox* m_locoType;    // Combo1
    QCheckBox* m_drivable;    // Check1
    QCheckBox* m_rails[3];    // Check2(0..2): pantograph, 3rd rail shoe, 4th rail
    QLineEdit* m_era[2];      // Text2(0), Text2(1)
    QComboBox* m_consistType; // Combo2
    QTableWidget* m_routes;   // List1
};

} // namespace velmora::ui
