// The commands of frmAssets that change the selected blueprints in a batch: Change Name
// (Command17, "Rename Selected Asset") here, the Edit Assets menu and the sound updates beside
// it, the clones and the rolling-stock edits through the batch commands the asset screens share.

#include "frmassets.h"

#include "../common/desktopui.h"
#include "velmora/assets/renaming.h"

#include <QMenuBar>
#include <QTableWidget>

namespace velmora::ui {

void frmAssets::buildBatchMenus() {
    m_batch = new AssetBatchCommands(m_ctx, this, [this] { return selectedRows(); });
    connect(m_batch, &AssetBatchCommands::reportShown, this, &frmAssets::reportShown);
    m_batch->addCloneMenu(menuBar(), {"mnuClone", "mnuCloneDefault", "mnuRB", "mnuCloneReskin"});
    m_batch->addEditRsMenu(menuBar());
    m_editAssetsMenu = menuBar()->addMenu(caption(m_ctx, 378, "Edit Assets"));
    m_editAssetsMenu->setObjectName("mnuEdAss");
    buildEditAssetsMenu();
    buildSoundMenus();
}

AssetBatchCommands::Dialogs& frmAssets::dialogs() { return m_batch->dialogs(); }

void frmAssets::mnuChangeName_Click() {
    const auto rows = m_batch->batchRows();
    if (!rows)
        return;
    const std::string prompt = m_ctx.lang.has(521) ? m_ctx.lang.text(521)
                                                   : "Enter the new name. End it with # to number several items in turn:";
    const auto typed = m_ctx.ui().inputText(prompt, fromQt(caption(m_ctx, 499, "Change Name")), "");
    if (!typed || typed->empty())
        return;
    assets::BatchOptions o;
    o.command = "Change Name";
    const auto result = m_batch->runRowBatch(*rows, o, assets::changeNameEditor(*typed, rows->size()));
    setWrittenCells(*rows, result, 3, assets::changedNames(*typed, rows->size()));
    m_batch->finishBatch(result, m_ctx.lang.has(519) ? m_ctx.lang.text(519) : "The selected items have been changed.");
}

void frmAssets::Command17_Click() { mnuChangeName_Click(); }

} // namespace velmora::ui
