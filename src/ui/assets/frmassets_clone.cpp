// The clones of frmAssets: a new asset made from each selected row (mnuClone, mnuCloneDefault,
// mnuCloneReskin) or a reskin blueprint of the first (mnuRB). Every clone of one command is one
// journal entry; the files passed over and the textures not found are shown at the end.

#include "frmassets.h"

#include "../common/backgroundjob.h"
#include "../common/desktopui.h"
#include "../common/frmreport.h"
#include "dlgnewname.h"
#include "velmora/assets/clone.h"

#include <QMenuBar>

namespace velmora::ui {

void frmAssets::buildCloneMenu() {
    QMenu* menu = menuBar()->addMenu(caption(m_ctx, 302, "Clone"));
    menu->setObjectName("mnuCloneMenu");
    const std::tuple<const char*, int, const char*, void (frmAssets::*)()> entries[] = {
        {"mnuClone", 371, "Clone selected Asset", &frmAssets::mnuClone_Click},
        {"mnuCloneDefault", 372, "Clone Selected rolling-stock", &frmAssets::mnuCloneDefault_Click},
        {"mnuRB", 374, "Clone for Reskin Blueprint", &frmAssets::mnuRB_Click},
        {"mnuCloneReskin", 377, "Clone Scenery for ReSkinning", &frmAssets::mnuCloneReskin_Click},
    };
    for (const auto& [name, entry, text, slot] : entries) {
        QAction* a = menu->addAction(caption(m_ctx, entry, text));
        a->setObjectName(name);
        connect(a, &QAction::triggered, this, slot);
    }
}

void frmAssets::cloneRows(assets::CloneKind kind, const std::string& command, bool firstOnly) {
    auto rows = batchRows();
    if (!rows)
        return;
    if (firstOnly)
        rows->resize(1);
    const bool withCategory = kind == assets::CloneKind::ReskinBlueprint;
    std::vector<std::string> report;
    int made = 0;
    {
        JournalCommand entry(&m_ctx.journal(), command);
        for (const auto& row : *rows) {
            if ((kind == assets::CloneKind::ReskinBlueprint || kind == assets::CloneKind::SceneryReskin) &&
                row.path.find("Procedural") != std::string::npos) {
                m_ctx.ui().message(m_ctx.lang.has(527) ? m_ctx.lang.text(527) : "Procedural items can not be cloned.");
                break;
            }
            const auto names = m_dialogs.newName(assets::clonePrefill(m_ctx, row, kind), withCategory);
            if (!names)
                break; // Cancel ends the command; the clones made so far stay
            assets::CloneResult result;
            runInBackground(m_ctx, command, [&](UserInterface& ui) {
                result = assets::cloneRow(m_ctx, row, kind, *names, &ui);
            });
            for (const auto& line : result.missing)
                report.push_back(line);
            for (const auto& line : result.skipped)
                report.push_back(line);
            if (!result.ok) {
                const std::string failed = m_ctx.lang.has(526) ? m_ctx.lang.text(526)
                                                               : "The clone could not be completed.";
                m_ctx.ui().message(failed + "\n" + result.message, Icon::Warning);
                break;
            }
            ++made;
        }
    }
    m_ctx.resolver.invalidate();
    if (!report.empty()) {
        std::string text;
        for (const auto& line : report)
            text += line + "\n";
        frmReport::show(m_ctx, tr("Files not cloned"), text, this);
        emit reportShown(toQt(text));
    }
    if (made > 0)
        m_ctx.ui().message(m_ctx.lang.has(525) ? m_ctx.lang.text(525) : "Your clone has been made.");
}

void frmAssets::mnuClone_Click() { cloneRows(assets::CloneKind::Asset, "Clone selected Asset", false); }
void frmAssets::mnuCloneDefault_Click() {
    cloneRows(assets::CloneKind::Vehicle, "Clone Selected rolling-stock", false);
}
void frmAssets::mnuRB_Click() { cloneRows(assets::CloneKind::ReskinBlueprint, "Clone for Reskin Blueprint", true); }
void frmAssets::mnuCloneReskin_Click() {
    cloneRows(assets::CloneKind::SceneryReskin, "Clone Scenery for ReSkinning", false);
}

} // namespace velmora::ui
