// The "Edit Assets" menu of frmAssets (mnuEdAss): LOD distances, category, names, emissive
// lighting, snow textures, language tables, a Source folder and Delete Selected. The batch
// commands run on the selected rows through the shared row loop; this file asks the questions
// and keeps the grid in step with what was written.

#include "frmassets.h"

#include "../common/desktopui.h"
#include "velmora/assets/assetedits.h"
#include "velmora/assets/renaming.h"

#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QTableWidget>

#include <algorithm>

namespace velmora::ui {

namespace {

// A distance typed in Text3 or Text4: a number with a point (or the user's own decimal sign).
std::optional<double> lodValue(const QString& text) {
    bool ok = false;
    double value = QLocale::c().toDouble(text.trimmed(), &ok);
    if (!ok)
        value = QLocale().toDouble(text.trimmed(), &ok);
    return ok && value >= 0 ? std::optional<double>(value) : std::nullopt;
}

} // namespace

void frmAssets::buildEditAssetsMenu() {
    for (const auto& c : assets::editCommands()) {
        QAction* a = m_editAssetsMenu->addAction(caption(m_ctx, c.langEntry, c.caption));
        a->setObjectName(c.menuName);
        const assets::EditCommand command = c.command;
        connect(a, &QAction::triggered, this, [this, command] { editAssets(command); });
    }
}

std::string frmAssets::lang(int entry, const char* design) const {
    return m_ctx.lang.has(entry) ? m_ctx.lang.text(entry) : std::string(design);
}

void frmAssets::setWrittenCells(const std::vector<assets::AssetRow>& rows, const assets::BatchResult& result, int column,
                                const std::vector<std::string>& values) {
    if (!result.error.empty() || result.stopped)
        return;
    // The selection gives the grid rows in the order the batch had them; the rows passed over
    // keep their cells.
    const auto selected = grid()->selectionModel()->selectedRows();
    std::size_t passed = 0;
    for (std::size_t i = 0; i < rows.size() && i < static_cast<std::size_t>(selected.size()) && i < values.size(); ++i) {
        if (passed < result.passedOver.size() && result.passedOver[passed].row == rows[i].relativePath()) {
            ++passed;
            continue;
        }
        if (auto* cell = grid()->item(selected[static_cast<int>(i)].row(), column)) {
            cell->setText(toQt(values[i]));
            cell->setData(Qt::UserRole, QByteArray::fromStdString(values[i]));
        }
    }
}

void frmAssets::editAssets(assets::EditCommand command) {
    using C = assets::EditCommand;
    const auto& all = assets::editCommands();
    const auto info = std::find_if(all.begin(), all.end(), [&](const auto& c) { return c.command == command; });
    if (info == all.end())
        return;
    switch (command) {
    case C::Name:
        mnuChangeName_Click();
        return;
    case C::Delete:
        Command6_Click();
        return;
    case C::MakeSource:
        mnuMakeSource_Click();
        return;
    default:
        break;
    }
    auto& ui = m_ctx.ui();
    const std::string title = info->caption;
    auto rows = m_batch->batchRows();
    if (!rows)
        return;
    assets::EditSettings settings;
    settings.command = command;
    settings.count = rows->size();
    settings.resolver = &m_ctx.resolver;
    switch (command) {
    case C::Lod: {
        if (ui.ask(lang(474, "This will change the LOD distances of the shapes of all selected items.") + "\n" +
                       lang(475, "Every selected item will be changed, and a backup of each file is kept."),
                   Buttons::OkCancel, Icon::Warning, title) != Answer::Ok)
            return;
        const auto min = lodValue(m_minLod->text());
        const auto max = lodValue(m_maxLod->text());
        if (m_minLod->text().trimmed().isEmpty() || m_maxLod->text().trimmed().isEmpty()) {
            ui.message(lang(523, "Please enter both a Min LOD and a Max LOD value."));
            return;
        }
        if (!min || !max || *min > *max) {
            ui.message("Min LOD and Max LOD must be numbers, the first not above the second.", Icon::Warning);
            return;
        }
        settings.minLod = *min;
        settings.maxLod = *max;
        break;
    }
    case C::Category: {
        if (ui.ask(lang(475, "Every selected item will be changed, and a backup of each file is kept.") + "\n" +
                       lang(477, "The category that you type next will be given to all of them. Continue?"),
                   Buttons::OkCancel, Icon::Warning, title) != Answer::Ok)
            return;
        const auto typed = ui.inputText(lang(522, "Enter the category for the selected items:"), title,
                                        "eExcludeFromBrowserList");
        if (!typed || typed->empty())
            return;
        settings.typed = *typed;
        break;
    }
    case C::LocoName: {
        if (ui.ask("This option will change both the Name and Localize(English)\n"
                   "Name of the item and delete any 'Key' entry for a selected item.",
                   Buttons::OkCancel, Icon::Information, title) != Answer::Ok)
            return;
        const auto typed = ui.inputText(lang(521, "Enter the new name. End it with # to number several items in turn:"),
                                        title, "");
        if (!typed || typed->empty())
            return;
        settings.typed = *typed;
        break;
    }
    case C::Snow:
        if (ui.ask(lang(489, "This will overwrite every selected winter (_WI) texture with the deep snow texture.") +
                       "\n" + lang(490, "A backup of each texture is kept. Do you wish to continue?"),
                   Buttons::OkCancel, Icon::Warning, title) != Answer::Ok)
            return;
        break;
    case C::EnglishOnly:
        if (ui.ask("This will remove all non-English entries from the items in question\n"
                   "If you do not have a back-up of the folder you are about to alter, I suggest\n"
                   "you make one before carrying out this procedure!",
                   Buttons::OkCancel, Icon::Warning, title) != Answer::Ok)
            return;
        break;
    default:
        break;
    }
    if (const std::string error = assets::loadEditSettings(m_ctx, settings); !error.empty()) {
        ui.message(error, Icon::Warning);
        return;
    }
    assets::BatchOptions o = assets::editBatchOptions(settings);
    o.command = info->caption;
    const auto result = m_batch->runRowBatch(
        *rows, o, [settings](const assets::RowInput& in) { return assets::editAssetRow(settings, in); });
    if (command == C::Category) {
        // The grid shows the category without its leading "e".
        const std::string shown = assets::categoryText(settings.typed).substr(1);
        setWrittenCells(*rows, result, 5, std::vector<std::string>(rows->size(), shown));
    } else if (command == C::LocoName) {
        setWrittenCells(*rows, result, 3, assets::changedNames(settings.typed, rows->size()));
    }
    const std::string done = command == C::ZeroEmissive ? "Requested changes have been made."
                                                        : lang(519, "The selected items have been changed.");
    m_batch->finishBatch(result, done);
}

void frmAssets::mnuMakeSource_Click() {
    auto& ui = m_ctx.ui();
    if (ui.ask("You must have selected the Asset folder you wish\n"
               "to make a Source folder tree for. Usually you will need\n"
               "to select a Texture folder. Continue?",
               Buttons::YesNo, Icon::Question, "Make Equivalent Source Folder") != Answer::Yes)
        return;
    const std::string folder = fromQt(m_start->text());
    if (folder.find("Assets") == std::string::npos) {
        ui.message("You don't appear to have selected a path?");
        return;
    }
    if (const std::string error = assets::makeSourceFolder(m_ctx, folder); !error.empty()) {
        ui.message(error, Icon::Warning);
        return;
    }
    std::string ignored;
    ui.message("The folder " + assets::sourceFolderFor(m_ctx, folder, ignored).string() + " is ready.");
}

} // namespace velmora::ui
