// The route tools of the Tools menu: route templates, the route's own pages (buttons of the
// route screen), developer folders and the marker screens (frmMKRE is kept live with the other
// tool windows in frmeditor.cpp).

#include "../routes/frmdelroute.h"
#include "../routes/frmmarkers.h"
#include "../routes/frmroute.h"
#include "../routes/frmsetas.h"
#include "frmeditor.h"

#include <QAction>
#include <QPushButton>

namespace velmora::ui {

void frmEditor::connectRouteTools() {
    // Route templates, the route's own pages (buttons of the route screen) and developer folders.
    auto enable = [this](const char* name) {
        action(name)->setEnabled(true);
        return action(name);
    };
    connect(enable("mnuDRS"), &QAction::triggered, this, [this] {
        auto* screen = new frmRoute(m_ctx, this);
        screen->setAttribute(Qt::WA_DeleteOnClose);
        screen->show();
    });
    for (const char* page : {"mnuRouteInfo", "mnuMap"})
        connect(enable(page), &QAction::triggered, this, [this, page] {
            mnuDelRoute_Click();
            if (auto* button = m_routeScreen->findChild<QPushButton*>(page))
                button->setFocus();
        });
    connect(enable("mnuDeveloper"), &QAction::triggered, this, [this] {
        frmSetAS screen(m_ctx, this);
        screen.exec();
    });
    connect(enable("mnuDevFolders"), &QAction::triggered, this, [this] { velmora::ui::mnuDevFolders_Click(m_ctx); });
    // The marker screen, modal, in the mode each entry names; a fresh one each time.
    for (const auto& [entry, mode] : {std::pair{"mnuMultiMarker", 1}, std::pair{"mnuMkrDCSV", 3}, std::pair{"mnuCSV2DCSV", 4}}) {
        connect(action(entry), &QAction::triggered, this, [this, mode = mode] {
            auto* screen = new frmMarkers(m_ctx, mode, this);
            screen->setAttribute(Qt::WA_DeleteOnClose);
            screen->setWindowModality(Qt::ApplicationModal);
            screen->show();
        });
        action(entry)->setEnabled(true);
    }
}

} // namespace velmora::ui
