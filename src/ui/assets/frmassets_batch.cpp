// The commands of frmAssets that change the selected blueprints in a batch: Change Name
// (Command17, "Rename Selected Asset"), the clones and the rolling-stock edits. The batch runs
// off the GUI thread with progress and Abort; it is one journal entry, and the rows passed over
// are shown in frmReport at the end.

#include "frmassets.h"

#include "../common/backgroundjob.h"
#include "../common/desktopui.h"
#include "../common/frmreport.h"
#include "velmora/assets/renaming.h"

#include <QMenuBar>
#include <QPushButton>
#include <QTableWidget>

namespace velmora::ui {

void frmAssets::buildBatchMenus() {
    m_editAssetsMenu = menuBar()->addMenu(caption(m_ctx, 378, "Edit Assets"));
    m_editAssetsMenu->setObjectName("mnuEdAss");
    QAction* changeName = m_editAssetsMenu->addAction(caption(m_ctx, 499, "Change Name"));
    changeName->setObjectName("mnuChangeName");
    connect(changeName, &QAction::triggered, this, &frmAssets::mnuChangeName_Click);
}

std::optional<std::vector<assets::AssetRow>> frmAssets::batchRows() {
    auto rows = selectedRows();
    if (rows.empty()) {
        m_ctx.ui().message(m_ctx.lang.has(437) ? m_ctx.lang.text(437)
                                                : "You do not appear to have selected any items in the grid?");
        return std::nullopt;
    }
    return rows;
}

assets::BatchResult frmAssets::runRowBatch(const std::vector<assets::AssetRow>& rows, const assets::BatchOptions& options,
                                           const assets::RowEditor& edit) {
    assets::BatchResult result;
    runInBackground(m_ctx, options.command, [&](UserInterface& ui) {
        result = assets::runBatch(m_ctx, rows, options, edit, &ui);
    });
    return result;
}

bool frmAssets::finishBatch(const assets::BatchResult& result, const std::string& done) {
    if (!result.error.empty()) {
        m_ctx.ui().message(result.error, Icon::Warning);
        return false;
    }
    if (result.stopped)
        return false;
    // The rows passed over, and notes on those written, go to the report so they can be kept.
    if (!result.passedOver.empty() || !result.notes.empty()) {
        const std::string text = assets::describe(result);
        frmReport::show(m_ctx, tr("Rows passed over"), text, this);
        emit reportShown(toQt(text));
    }
    m_ctx.ui().message(done);
    return true;
}

void frmAssets::mnuChangeName_Click() {
    const auto rows = batchRows();
    if (!rows)
        return;
    const std::string prompt = m_ctx.lang.has(521) ? m_ctx.lang.text(521)
                                                   : "Enter the new name. End it with # to number several items in turn:";
    const auto typed = m_ctx.ui().inputText(prompt, fromQt(caption(m_ctx, 499, "Change Name")), "");
    if (!typed || typed->empty())
        return;
    assets::BatchOptions o;
    o.command = "Change Name";
    const auto result = runRowBatch(*rows, o, assets::changeNameEditor(*typed, rows->size()));
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
    finishBatch(result, m_ctx.lang.has(519) ? m_ctx.lang.text(519) : "The selected items have been changed.");
}

void frmAssets::Command17_Click() { mnuChangeName_Click(); }

} // namespace velmora::ui
