// frmListRS's commands on the grid of missing items: a missing blueprint replaced in every tile
// of its kind, scenery and loft items removed, and the route's list of providers and products
// rebuilt. The walks over the tiles run off the GUI thread with progress and Abort.

#include "frmlistrs.h"

#include "../common/backgroundjob.h"
#include "../common/desktopui.h"

#include "velmora/core/services.h"
#include "velmora/core/xmltext.h"

#include <algorithm>

#include <QHBoxLayout>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>

namespace velmora::ui {

namespace rt = velmora::routes;

void frmListRS::offerSubstitution(const rt::RouteEntry& route, const std::vector<rt::ScenarioEntry>& scenarios) {
    if (m_route)
        return;
    m_route = route;
    m_scenarios = scenarios;
    if (!askMissShape)
        askMissShape = [this](const MissShape& prefill) {
            dlgMissShape dialog(m_ctx, prefill, this);
            dialog.exec();
            return dialog.result();
        };
    auto* panel = new QWidget;
    panel->setObjectName("SubstitutePanel");
    auto* row = new QHBoxLayout(panel);
    row->setContentsMargins(0, 0, 0, 0);
    auto button = [&](const char* name, const QString& text, void (frmListRS::*slot)()) {
        auto* b = new QPushButton(text);
        b->setObjectName(name);
        connect(b, &QPushButton::clicked, this, slot);
        row->addWidget(b);
        return b;
    };
    // Their names in the missing-items grid; the screen's own Command6 and Command23 save the
    // report and list unused items, so these carry the grid's name in front.
    button("MissCommand6", tr("Substitute existing scenery item"), &frmListRS::Substitute_Click);
    button("MissCommand8", tr("Remove Selected Scenery Items"), &frmListRS::RemoveScenery_Click);
    button("MissCommand23", tr("Remove selected loft items"), &frmListRS::RemoveLoft_Click);
    button("MissCommand5", tr("List Providers && Products Used"), &frmListRS::ListProviders_Click);
    m_fixProviders = button("MissCommand11", tr("Fix Prov/Prod in RouteProperties.xml"), &frmListRS::FixProviders_Click);
    m_fixProviders->setVisible(false);
    m_label4 = new QLabel;
    m_label4->setObjectName("Label4");
    row->addWidget(m_label4);
    row->addStretch(1);
    addPanel(panel);
}

std::vector<frmListRS::SelectedItem> frmListRS::selectedItems() const {
    std::vector<int> rows;
    for (const QModelIndex& index : m_grid->selectionModel()->selectedRows())
        rows.push_back(index.row());
    std::sort(rows.begin(), rows.end());
    std::vector<SelectedItem> out;
    for (int r : rows) {
        const QTableWidgetItem* path = m_grid->item(r, dataColumn());
        const QTableWidgetItem* label = m_grid->item(r, dataColumn() + 1);
        if (!path)
            continue;
        const auto name = rt::assetNameFromMissing(fromQt(path->text().trimmed()));
        const auto kind = label ? rt::kindFromLabel(fromQt(label->text())) : std::nullopt;
        if (name)
            out.push_back({r, *name, kind.value_or(rt::ItemKind::Scenery)});
    }
    return out;
}

bool frmListRS::needsDupesRemoved() {
    if (m_dupesRemoved)
        return false;
    m_ctx.ui().message("You must click the 'Remove Duplicates' button\nbefore using this option.", Icon::Information);
    return true;
}

bool frmListRS::walkTiles(const std::vector<rt::Substitution>& changes, rt::ItemKind kind, const std::string& command) {
    rt::TileEditOptions options;
    options.kind = kind;
    options.command = command;
    if (kind == rt::ItemKind::Scenery)
        options.scenarios = m_scenarios;
    rt::TileEditResult result;
    const bool finished = runInBackground(m_ctx, command, [&](UserInterface& ui) {
        result = rt::substituteInTiles(m_ctx, *m_route, changes, options, &ui);
    });
    if (!finished || result.stopped) {
        m_ctx.ui().message("Stopped: no tile was changed.", Icon::Information);
        return false;
    }
    if (!result.error.empty()) {
        m_ctx.ui().message(result.error, Icon::Warning);
        return false;
    }
    if (result.changed.empty()) {
        m_ctx.ui().message("No tile of this route places " + changes.front().missing.text() + ".", Icon::Information);
        return false;
    }
    m_substituted = true;
    emit scenerySubstituted();
    m_ctx.ui().message("The requested changes have been made.", Icon::Information);
    return true;
}

void frmListRS::removeRows(std::vector<int> rows) {
    std::sort(rows.rbegin(), rows.rend());
    for (int r : rows)
        m_grid->removeRow(r);
    applyFilter(m_filter->text());
}

void frmListRS::Substitute_Click() {
    if (!m_route || needsDupesRemoved())
        return;
    std::vector<int> done;
    for (const SelectedItem& item : selectedItems()) {
        MissShape prefill;
        prefill.missing = item.name;
        prefill.kind = item.kind;
        const auto shape = askMissShape(prefill);
        if (!shape)
            break;
        rt::Substitution change{shape->missing, shape->replacement};
        ReplaceApos2(change.replacement.path);
        if (!change.missing.complete() || !change.replacement.complete()) {
            if (m_ctx.ui().ask("As you have not included a new Provider, Product or Path, then is it\n"
                               "correct that you wish the items to be removed from your route?",
                               Buttons::YesNo, Icon::Question) != Answer::Yes)
                continue;
            change.replacement = {};
            if (!change.missing.complete())
                continue;
        }
        if (walkTiles({change}, shape->kind, "Substitute " + change.missing.text() + " in " + m_route->name))
            done.push_back(item.row);
    }
    removeRows(done);
}

void frmListRS::RemoveScenery_Click() {
    if (!m_route || needsDupesRemoved())
        return;
    std::vector<rt::Substitution> changes;
    std::vector<int> rows;
    for (const SelectedItem& item : selectedItems())
        if (item.kind == rt::ItemKind::Scenery) {
            changes.push_back({item.name, {}});
            rows.push_back(item.row);
        }
    if (changes.empty())
        return;
    if (walkTiles(changes, rt::ItemKind::Scenery, "Remove scenery items from " + m_route->name))
        removeRows(rows);
}

void frmListRS::RemoveLoft_Click() {
    if (!m_route)
        return;
    std::vector<rt::Substitution> changes;
    std::vector<int> rows;
    for (const SelectedItem& item : selectedItems())
        if (item.kind == rt::ItemKind::Loft) {
            changes.push_back({item.name, {}});
            rows.push_back(item.row);
        }
    if (changes.empty())
        return;
    if (walkTiles(changes, rt::ItemKind::Loft, "Remove loft items from " + m_route->name))
        removeRows(rows);
}

void frmListRS::ListProviders_Click() {
    if (!m_route)
        return;
    // What the route's tiles use, read afresh: the grid holds only what is missing, and a list
    // built from it would drop every product the route places without fault.
    std::vector<std::string> unreadable;
    bool stopped = false;
    std::vector<std::string> pairs;
    const bool finished = runInBackground(m_ctx, "Providers && Products Used", [&](UserInterface& ui) {
        pairs = rt::pairsUsedByRoute(m_ctx, *m_route, m_scenarios, unreadable, 0, &ui, &stopped);
    });
    if (!finished || stopped)
        return;
    if (!unreadable.empty()) {
        m_ctx.ui().message("Not every tile of this route could be read, so the providers it uses are not known:\n" +
                               unreadable.front(),
                           Icon::Warning);
        return;
    }
    m_pairs = std::move(pairs);
    std::string text;
    for (const auto& p : m_pairs)
        text += p + "\n";
    if (m_label4)
        m_label4->setText(tr("%n Provider/Product pair(s)", nullptr, static_cast<int>(m_pairs.size())));
    m_ctx.ui().message(text.empty() ? std::string("No providers or products are listed.") : text, Icon::Information,
                       "Providers && Products Used");
    if (m_fixProviders)
        m_fixProviders->setVisible(m_route.has_value() && !m_pairs.empty());
}

void frmListRS::FixProviders_Click() {
    if (!m_route || m_pairs.empty())
        return;
    const rt::ProvidersResult r = rt::fixProviders(m_ctx, *m_route, m_pairs);
    if (!r.error.empty())
        m_ctx.ui().message(r.error, Icon::Warning);
    else
        m_ctx.ui().message("Your RouteProperties.xml file has been modified as requested.", Icon::Information);
}

} // namespace velmora::ui
