// frmDelRoute's edits of the selected route or scenarios: track height, speed limits, clones,
// deletion and terrain textures. The questions are asked here; the work runs off the GUI thread
// with progress and Abort.

#include "frmdelroute.h"
#include "frmmix.h"

#include "../common/backgroundjob.h"
#include "../common/desktopui.h"
#include "velmora/core/journal.h"

#include <QListWidget>
#include <QTableWidget>

#include <charconv>

namespace velmora::ui {

namespace {

std::optional<double> numberTyped(std::string text) {
    while (!text.empty() && text.front() == ' ')
        text.erase(text.begin());
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    if (!text.empty() && text.front() == '+')
        text.erase(text.begin());
    double value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || ec != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

// An amount of metres asked for; nothing when the answer is empty, cancelled or no number
// (which is said).
std::optional<double> askMetres(AppContext& ctx, const std::string& prompt, const std::string& title) {
    const auto typed = ctx.ui().inputText(prompt, title, "0.0000");
    if (!typed || typed->empty())
        return std::nullopt;
    const auto value = numberTyped(*typed);
    if (!value)
        ctx.ui().message("'" + *typed + "' is not a number of metres; nothing was changed.", Icon::Warning);
    return value;
}

// A name asked for until one is typed; nothing when cancelled.
std::optional<std::string> askName(AppContext& ctx, const std::string& prompt, const std::string& title,
                                   const std::string& empty) {
    for (;;) {
        const auto typed = ctx.ui().inputText(prompt, title, "");
        if (!typed)
            return std::nullopt;
        if (!typed->empty())
            return typed;
        if (ctx.ui().ask(empty, Buttons::OkCancel, Icon::Question) != Answer::Ok)
            return std::nullopt;
    }
}

} // namespace

std::vector<routes::RouteEntry> frmDelRoute::selectedRoutes() const {
    std::vector<routes::RouteEntry> out;
    for (int r = 0; r < m_routes->count() && r < static_cast<int>(m_routeEntries.size()); ++r)
        if (m_routes->item(r)->isSelected())
            out.push_back(m_routeEntries[static_cast<std::size_t>(r)]);
    return out;
}

void frmDelRoute::showEdit(const routes::EditReport& report) {
    for (const auto& w : report.warnings)
        m_ctx.ui().message(w, Icon::Warning);
    if (report.aborted)
        return;
    if (!report.message.empty())
        m_ctx.ui().message(report.message, report.ok ? Icon::Information : Icon::Warning);
}

void frmDelRoute::Command7_Click() {
    if (m_ctx.ui().ask("This changes the height of every piece of track in the selected route. It is meant for "
                       "routes where the track type was changed and the new track is sunken into the terrain or "
                       "floating above it.",
                       Buttons::OkCancel, Icon::Warning) != Answer::Ok)
        return;
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    routes::TrackAdjust adjust;
    const auto track = askMetres(m_ctx, "Enter amount to raise or lower track by in metres e.g. -0.2000 will lower by 20cm",
                                 "Track adjustment");
    if (!track)
        return;
    adjust.track = *track;
    if (m_ctx.ui().ask("Do you also wish to adjust track-side objects such as\nSwitch Stands?", Buttons::YesNo) ==
        Answer::Yes) {
        adjust.trackside = askMetres(m_ctx,
                                     "Enter amount to raise or lower trackside objects in metres e.g. -0.2000 will "
                                     "lower by 20cm",
                                     "Trackside object adjustment");
        if (!adjust.trackside)
            return;
    }
    const routes::RouteEntry chosen = *route;
    routes::EditReport report;
    setEnabled(false);
    runInBackground(m_ctx, "Raise or Lower Track", [&](UserInterface&) { report = routes::raiseTrack(m_ctx, chosen, adjust); });
    setEnabled(true);
    showEdit(report);
}

void frmDelRoute::Command20_Click() {
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    const auto typed = m_ctx.ui().inputText("Enter Speed Limit", "Speed Limit", "");
    if (!typed || typed->empty())
        return;
    const routes::RouteEntry chosen = *route;
    routes::EditReport report;
    setEnabled(false);
    runInBackground(m_ctx, "Speed limits",
                    [&](UserInterface&) { report = routes::setSpeedLimits(m_ctx, chosen, {*typed, *typed, false}); });
    setEnabled(true);
    showEdit(report);
}

void frmDelRoute::Command9_Click() {
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    const routes::RouteEntry chosen = *route;
    routes::CloneOptions options;
    const auto name = askName(m_ctx, "Type name for new route", "Name of New Route",
                              "You have not selected a new name for your cloned route?");
    if (!name)
        return;
    options.name = *name;
    const Answer where =
        m_ctx.ui().ask("Do you wish the Cloned Route to be in your normal Routes folder?", Buttons::YesNoCancel);
    if (where == Answer::Cancel)
        return;
    if (where == Answer::No) {
        options.parent = m_ctx.ui().chooseFolder("Folder for the cloned route", chosen.path.parent_path());
        if (!options.parent)
            return;
    }
    routes::EditReport report;
    setEnabled(false);
    runInBackground(m_ctx, "Clone Route", [&](UserInterface&) { report = routes::cloneRoute(m_ctx, chosen, options); });
    setEnabled(true);
    showEdit(report);
    if (report.ok)
        reloadRoutes();
}

void frmDelRoute::Command8_Click() {
    const routes::RouteEntry* route = selectedRoute();
    const int row = m_scenarios->currentRow();
    if (!route || m_listsProviders || row < 0 || row >= static_cast<int>(m_scenarioEntries.size())) {
        if (route)
            m_ctx.ui().message("Select a scenario in the list first.");
        return;
    }
    const routes::RouteEntry chosen = *route;
    const routes::ScenarioEntry scenario = m_scenarioEntries[static_cast<std::size_t>(row)];
    routes::CloneOptions options;
    const auto name = askName(m_ctx, "Type name for new scenario", "Name of New Scenario",
                              "You have not selected a new name for your cloned scenario?");
    if (!name)
        return;
    options.name = *name;
    const routes::ScenarioKind kind = routes::scenarioKind(m_ctx, chosen, scenario);
    if (kind.career)
        options.careerToStandard = m_ctx.ui().ask("This is a Career Scenario, do you wish to  clone it\nas a Standard Scenario?",
                                                  Buttons::YesNo) == Answer::Yes;
    if (kind.workshop)
        options.workshopToStandard =
            m_ctx.ui().ask("This is a Workshop scenario, do you wish to\nconvert it to a Standard scenario?",
                           Buttons::YesNo) == Answer::Yes;
    routes::EditReport report;
    setEnabled(false);
    runInBackground(m_ctx, "Clone Scenario",
                    [&](UserInterface&) { report = routes::cloneScenario(m_ctx, chosen, scenario, options); });
    setEnabled(true);
    showEdit(report);
    if (report.ok)
        Command1_Click();
}

void frmDelRoute::OKButton_Click() {
    const std::vector<routes::RouteEntry> chosen = selectedRoutes();
    if (chosen.empty()) {
        m_ctx.ui().message("Select a route in the list first.");
        return;
    }
    if (m_ctx.ui().ask("Do you really wish to delete the selected route?", Buttons::YesNo) != Answer::Yes)
        return;
    std::vector<routes::EditReport> reports;
    setEnabled(false);
    runInBackground(m_ctx, "Delete Selected Route", [&](UserInterface&) {
        JournalCommand entry(&m_ctx.journal(), "Delete Selected Route");
        for (const auto& route : chosen)
            reports.push_back(routes::deleteRoute(m_ctx, route, false, false));
    });
    setEnabled(true);
    for (const auto& r : reports)
        showEdit(r);
    m_scenarios->setRowCount(0);
    m_scenarioEntries.clear();
    reloadRoutes();
}

void frmDelRoute::Command2_Click() {
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    std::vector<routes::ScenarioEntry> chosen;
    if (!m_listsProviders)
        for (int r = 0; r < m_scenarios->rowCount() && r < static_cast<int>(m_scenarioEntries.size()); ++r)
            if (m_scenarios->item(r, 0) && m_scenarios->item(r, 0)->isSelected())
                chosen.push_back(m_scenarioEntries[static_cast<std::size_t>(r)]);
    if (chosen.empty()) {
        m_ctx.ui().message(fromQt(caption(m_ctx, 559, "No scenario selected.")));
        return;
    }
    if (m_ctx.ui().ask("Do you really wish to delete the selected scenario(s)?", Buttons::YesNo) != Answer::Yes)
        return;
    const routes::RouteEntry owner = *route;
    routes::EditReport report;
    setEnabled(false);
    runInBackground(m_ctx, "Delete Selected Scenario(s)",
                    [&](UserInterface&) { report = routes::deleteScenarios(m_ctx, owner, chosen, false, false); });
    setEnabled(true);
    showEdit(report);
    Command1_Click();
}

void frmDelRoute::mnuTex_Click() {
    const routes::RouteEntry* route = selectedRoute();
    if (!route)
        return;
    if (m_ctx.ui().ask("Do you really wish to remove terrain textures?", Buttons::YesNo) != Answer::Yes)
        return;
    if (m_mix)
        m_mix->close();
    m_mix = new frmMix(m_ctx, *route, this);
    m_mix->setAttribute(Qt::WA_DeleteOnClose);
    m_mix->open();
}

} // namespace velmora::ui
