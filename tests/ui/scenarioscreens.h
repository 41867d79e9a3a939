#pragma once
// The scenario list as the scenario screens' tests open it: the first route's scenarios listed,
// and a scenario row chosen by the start of its name.

#include "scenarios/frmshowroutes.h"

#include <QListWidget>
#include <QTableWidget>

#include <memory>

namespace velmora::test {

// The scenario screen on the first route, its scenarios listed.
inline std::unique_ptr<ui::frmShowRoutes> listedScenarios(AppContext& ctx) {
    auto screen = std::make_unique<ui::frmShowRoutes>(ctx);
    screen->routeList()->setCurrentRow(0);
    screen->Command1_Click();
    return screen;
}

// Selects the scenario row whose name starts with `name`; false when there is none.
inline bool selectScenario(ui::frmShowRoutes& screen, const QString& name) {
    QTableWidget* list = screen.scenarioList();
    for (int r = 0; r < list->rowCount(); ++r)
        if (list->item(r, 1) && list->item(r, 1)->text().startsWith(name)) {
            list->setCurrentCell(r, 1);
            return true;
        }
    return false;
}

} // namespace velmora::test
