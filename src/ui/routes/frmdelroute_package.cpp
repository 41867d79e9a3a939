// The route screen in package mode: the selected route, then its assets, or the selected
// scenarios gathered and written as one package.

#include "../common/desktopui.h"
#include "../packaging/packagerun.h"
#include "frmdelroute.h"

#include <QGridLayout>
#include <QPushButton>
#include <QTableWidget>
#include <set>

namespace velmora::ui {

void frmDelRoute::addPackageCommands(QGridLayout* grid, QPushButton* ok, QPushButton* command16, int row) {
    connect(ok, &QPushButton::clicked, this, &frmDelRoute::PackageRoute_Click);
    m_command16 = command16;
    connect(command16, &QPushButton::clicked, this, &frmDelRoute::Command16_Click);
    auto* add = new QPushButton(tr("Add to Package"));
    add->setObjectName("Command5");
    connect(add, &QPushButton::clicked, this, &frmDelRoute::Command5_Click);
    auto* process = new QPushButton(tr("Process Package"));
    process->setObjectName("Command6");
    connect(process, &QPushButton::clicked, this, &frmDelRoute::Command6_Click);
    grid->addWidget(add, row, 0);
    grid->addWidget(process, row, 1);
    m_scenarios->setSelectionMode(QAbstractItemView::ExtendedSelection);
}

// Packages the selected route's folder or its assets off the GUI thread; the report shown after.
packaging::PackageReport frmDelRoute::packageSelectedRoute(const std::string& label, bool assets, const std::string& zipQuestion) {
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return {};
    const routes::RouteEntry chosen = *route;
    setEnabled(false);
    const packaging::PackageReport report = runPackage(m_ctx, label, [&](UserInterface& ui) {
        return assets ? packaging::packageRouteAssets(m_ctx, chosen, *m_packageState, {}, &ui)
                      : packaging::packageRoute(m_ctx, chosen, *m_packageState, {}, &ui);
    });
    setEnabled(true);
    m_packageReport = endPackage(m_ctx, this, report, "Your Route is now saved in ", zipQuestion);
    return report;
}

void frmDelRoute::PackageRoute_Click() {
    const packaging::PackageReport report = packageSelectedRoute("Package Selected Route", false, {});
    if (report.ok() && !report.folder.empty() &&
        m_ctx.ui().ask("Do you wish to add Assets ready for distribution?", Buttons::YesNo) == Answer::Yes)
        m_command16->setEnabled(true);
}

void frmDelRoute::Command16_Click() {
    packageSelectedRoute("Package this routes Assets", true,
                         "Do you wish it to be automatically zipped up ready for distribution?");
}

void frmDelRoute::Command5_Click() {
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    std::set<int> rows;
    for (const QTableWidgetItem* item : m_scenarios->selectedItems())
        rows.insert(item->row());
    if (m_listsProviders || rows.empty()) {
        m_ctx.ui().message("Select a scenario in the list first.");
        return;
    }
    if (!m_scenarioPackage)
        m_scenarioPackage = std::make_unique<packaging::ScenarioPackage>(m_ctx, *m_packageState);
    std::string said;
    for (const int row : rows)
        if (row < static_cast<int>(m_scenarioEntries.size()))
            said =
                m_scenarioPackage->add(*route, m_scenarioEntries[static_cast<std::size_t>(row)], &m_ctx.ui());
    if (!said.empty())
        m_ctx.ui().message(said);
}

void frmDelRoute::Command6_Click() {
    if (!m_scenarioPackage || m_scenarioPackage->folders().empty()) {
        m_ctx.ui().message("Add a scenario to the package first.");
        return;
    }
    setEnabled(false);
    const packaging::PackageReport report = runPackage(
        m_ctx, "Process Package", [&](UserInterface& ui) { return m_scenarioPackage->process({}, &ui); });
    setEnabled(true);
    m_packageReport = endPackage(m_ctx, this, report, "Your Scenario(s) are now saved in ",
                                 "Do you wish them to be automatically zipped up ready for distribution?");
}

} // namespace velmora::ui
