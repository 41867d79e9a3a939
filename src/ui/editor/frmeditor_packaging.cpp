// The Packaging menu: asset folders, reskins, and the route screen in package mode for a route
// or scenarios. The screens share one package name for the whole run.

#include "../packaging/frmfolder3.h"
#include "../packaging/frmfolder4.h"
#include "../routes/frmdelroute.h"
#include "frmeditor.h"

#include <QAction>

namespace velmora::ui {

void frmEditor::connectPackaging() {
    auto open = [this](QDialog* screen) {
        screen->setAttribute(Qt::WA_DeleteOnClose);
        screen->show();
        screen->raise();
    };
    auto routeScreen = [this] {
        if (!m_packageScreen) {
            auto* screen = new frmDelRoute(m_ctx, true, this);
            screen->setPackageState(&m_packageState);
            screen->setAttribute(Qt::WA_DeleteOnClose);
            m_packageScreen = screen;
        }
        m_packageScreen->show();
        m_packageScreen->raise();
    };
    connect(action("mnuPackAss"), &QAction::triggered, this,
            [this, open] { open(new frmFolder3(m_ctx, m_packageState, this)); });
    connect(action("mnuReskin"), &QAction::triggered, this,
            [this, open] { open(new frmFolder4(m_ctx, m_packageState, this)); });
    connect(action("mnuPack"), &QAction::triggered, this, routeScreen);
    connect(action("mnuPackSce"), &QAction::triggered, this, routeScreen);
    for (const char* name : {"mnuPackAss", "mnuReskin", "mnuPack", "mnuPackSce"})
        action(name)->setEnabled(true);
}

} // namespace velmora::ui
