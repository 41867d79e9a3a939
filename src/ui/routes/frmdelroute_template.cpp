// The route screen's commands for the route template and the route's own pages: its details,
// the template's browse filtering, the gathering of its assets, its description and picture.

#include "frmdelroute.h"

#include "browseflagsbox.h"
#include "frmdesc.h"
#include "frmroutedetails.h"
#include "../common/backgroundjob.h"
#include "../common/desktopui.h"
#include "velmora/routes/routetemplate.h"

namespace velmora::ui {

namespace {

void showJob(AppContext& ctx, const routes::RouteJob& job) {
    std::string text = job.message;
    for (const auto& note : job.notes)
        text += "\n" + note;
    ctx.ui().message(text, job.ok ? Icon::Information : Icon::Warning);
}

} // namespace

void frmDelRoute::Command11_Click() {
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    auto* screen = new frmRouteDetails(m_ctx, *route, this);
    screen->setAttribute(Qt::WA_DeleteOnClose);
    m_routePage = screen;
    if (screen->loaded())
        screen->show();
    else
        screen->close();
}

void frmDelRoute::Command25_Click() {
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    const routes::TemplateCheck check = routes::inspectRouteTemplate(m_ctx, *route);
    switch (check.state) {
    case routes::TemplateState::NoProperties:
    case routes::TemplateState::Unreadable:
        m_ctx.ui().message(check.message, Icon::Warning);
        return;
    case routes::TemplateState::NotFound:
        m_ctx.ui().message(check.templateFile.string() + "\n" + check.message, Icon::Warning);
        return;
    default:
        break;
    }
    if (m_ctx.ui().ask(check.message, Buttons::YesNo) != Answer::Yes)
        return;
    const auto flags = askBrowseFlags(this);
    if (!flags)
        return;
    showJob(m_ctx, routes::applyBrowseFilter(m_ctx, check, *flags));
}

void frmDelRoute::mnuCRF_Click() {
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    const std::string name = route->name;
    routes::RouteJob job;
    setEnabled(false);
    runInBackground(m_ctx, "Make Asset Folder", [&](UserInterface& ui) { job = routes::gatherRouteAssets(m_ctx, name, &ui); });
    setEnabled(true);
    showJob(m_ctx, job);
}

void frmDelRoute::mnuRouteInfo_Click() {
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    auto* screen = new frmDesc(m_ctx, *route, this);
    screen->setAttribute(Qt::WA_DeleteOnClose);
    m_routePage = screen;
    screen->show();
}

void frmDelRoute::mnuMap_Click() {
    auto* screen = new frmThumbnail(m_ctx, this);
    screen->setAttribute(Qt::WA_DeleteOnClose);
    m_routePage = screen;
    screen->show();
}

} // namespace velmora::ui
