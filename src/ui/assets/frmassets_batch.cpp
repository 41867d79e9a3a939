// The commands of frmAssets that change the selected blueprints in a batch: Change Name
// (Command17, "Rename Selected Asset") here, the clones and the rolling-stock edits through the
// batch commands the asset screens share.

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
    QAction* changeName = m_editAssetsMenu->addAction(caption(m_ctx, 499, "Change Name"));
    changeName->setObjectName("mnuChangeName");
    connect(changeName, &QAction::triggered, this, &frmAssets::mnuChangeName_Click);
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
    // The grid's Name cells follow the rows that were written.
    const auto names = assets::changedNames(*typed, rows->size());
    const auto selected = grid()->selectionModel()->selectedRows();
    std::size_t passed = 0;
    for (std::size_t i = 0; i < rows->size() && i < static_cast<std::size_t>(selected.size()); ++i) {
        const bool skipped = passed < result.passedOver.size() &&
                             result.passedOver[passed].row == (*rows)[i].relativePath();
        if (skipped) {
            ++passed;
            continue;
        }
        if (result.error.empty() && !result.stopped)
            if (auto* cell = grid()->item(selected[static_cast<int>(i)].row(), 3)) {
                cell->setText(toQt(names[i]));
                cell->setData(Qt::UserRole, QByteArray::fromStdString(names[i]));
            }
    }
    m_batch->finishBatch(result, m_ctx.lang.has(519) ? m_ctx.lang.text(519) : "The selected items have been changed.");
}

void frmAssets::Command17_Click() { mnuChangeName_Click(); }

} // namespace velmora::ui
