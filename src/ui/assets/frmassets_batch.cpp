// The commands of frmAssets that change the selected blueprints in a batch: Change Name
// (Command17, "Rename Selected Asset"), the clones and the rolling-stock edits. The batch runs
// off the GUI thread with progress and Abort; it is one journal entry, and the rows passed over
// are shown in frmReport at the end.

#include "frmassets.h"

#include "../common/backgroundjob.h"
#include "../common/desktopui.h"
#include "../common/frmreport.h"
#include "dlgcoachname.h"
#include "dlgnewname.h"
#include "dlgrsedits.h"
#include "velmora/assets/renaming.h"
#include "velmora/assets/rsedits.h"
#include "velmora/core/services.h"

#include <QMenuBar>
#include <QPushButton>
#include <QTableWidget>

namespace velmora::ui {

frmAssets::BatchDialogs frmAssets::realDialogs() {
    BatchDialogs d;
    d.coachName = [this](const std::string& file, const std::string& display, const std::string& suffix) {
        return dlgCoachName::ask(file, display, suffix, this);
    };
    d.newName = [this](const assets::CloneNames& prefill, bool withCategory) {
        return dlgNewName::ask(prefill, withCategory, this);
    };
    d.head = [this](const assets::LampTable& table) { return dlgHead::ask(table, this); };
    d.tail = [this](const assets::LampTable& table) { return dlgTail::ask(table, this); };
    d.mass = [this] { return dlgMass::ask(this); };
    return d;
}

void frmAssets::buildBatchMenus() {
    m_dialogs = realDialogs();
    buildCloneMenu();
    QMenu* rs = menuBar()->addMenu(caption(m_ctx, 303, "Edit Rolling Stock"));
    rs->setObjectName("mnuEditRS");
    for (const auto& c : assets::rsCommands()) {
        QAction* a = rs->addAction(caption(m_ctx, c.langEntry, c.caption));
        a->setObjectName(c.menuName);
        const assets::RsCommand command = c.command;
        connect(a, &QAction::triggered, this, [this, command] { editRollingStock(command); });
    }
    // The physics grids open on the first selected row; they have a screen of their own.
    for (const auto& [name, entry, text] : {std::tuple{"mnuPhysics", 517, "Edit rolling stock physics"},
                                            std::tuple{"mnuPhysSteam", 518, "Edit steam loco physics"}}) {
        QAction* a = rs->addAction(caption(m_ctx, entry, text));
        a->setObjectName(name);
        a->setEnabled(false);
        a->setToolTip(tr("Comes with the physics screen."));
    }

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

namespace {

// The notice a command shows before it starts, with OK and Cancel; empty for none.
std::string notice(const AppContext& ctx, assets::RsCommand command) {
    auto entry = [&](int n, const char* design) { return ctx.lang.has(n) ? ctx.lang.text(n) : std::string(design); };
    switch (command) {
    case assets::RsCommand::Conductor:
        return entry(443, "This will add a conductor beside the driver of each selected US diesel, as a mirror "
                          "image of the driver.");
    case assets::RsCommand::Passengers:
        return entry(520, "Passengers will be added to the selected carriages. An empty copy of each is kept with "
                          "_MT added to its name.");
    case assets::RsCommand::WheelSlip:
        return entry(461, "This will add wheel slip to the bogies of the selected steam locos.") + "\n" +
               entry(462, "Select the bogie blueprints only: rows whose path holds no 'Bogie' are passed over.");
    case assets::RsCommand::UsAirBrakes:
        return "This option will modify airbrakes on US Diesels\n"
               "The method follows a forum post on the air brake settings of US diesels.";
    default:
        return {};
    }
}

} // namespace

bool frmAssets::askRsSettings(assets::RsSettings& settings) {
    using C = assets::RsCommand;
    if (const std::string text = notice(m_ctx, settings.command); !text.empty())
        if (m_ctx.ui().ask(text, Buttons::OkCancel, Icon::Information) != Answer::Ok)
            return false;
    if (settings.command == C::HeadLights || settings.command == C::TailLights) {
        assets::LampTable table;
        std::string error;
        const auto file = m_ctx.resolver.resolve(m_ctx.dataPath(), "Templates/UKLights.txt");
        if (!file || !assets::readLampTable(*file, table, error)) {
            m_ctx.ui().message(file ? error : (m_ctx.dataPath() / "Templates/UKLights.txt").string() +
                                                  ": the template is missing.",
                               Icon::Warning);
            return false;
        }
        if (settings.command == C::HeadLights) {
            const auto chosen = m_dialogs.head(table);
            if (!chosen || chosen->first >= table.heads.size())
                return false;
            settings.lamp = table.heads[chosen->first];
            settings.trainType = static_cast<int>(chosen->second);
        } else {
            const auto chosen = m_dialogs.tail(table);
            if (!chosen || *chosen >= table.tails.size())
                return false;
            settings.lamp = table.tails[*chosen];
        }
    }
    if (settings.command == C::Mass) {
        const auto values = m_dialogs.mass();
        if (!values)
            return false;
        settings.mass = values->first;
        settings.capacity = values->second;
    }
    if (settings.command == C::Provider) {
        auto entry = [&](int n, const char* design) { return m_ctx.lang.has(n) ? m_ctx.lang.text(n) : std::string(design); };
        const auto old = m_ctx.ui().inputText(entry(446, "Enter the Provider (or name word) to be replaced:"),
                                              "Correct Provider", "");
        if (!old || old->empty())
            return false;
        const auto now = m_ctx.ui().inputText(entry(447, "Enter the new Provider (or name word):"), "Correct Provider", "");
        if (!now)
            return false;
        settings.oldProvider = *old;
        settings.newProvider = *now;
    }
    settings.assets = m_ctx.resolver.resolveForWrite(m_ctx.railWorks(), "Assets");
    if (const std::string error = assets::loadRsSettings(m_ctx, settings); !error.empty()) {
        m_ctx.ui().message(error, Icon::Warning);
        return false;
    }
    return true;
}

void frmAssets::editRollingStock(assets::RsCommand command) {
    const auto& all = assets::rsCommands();
    const auto info = std::find_if(all.begin(), all.end(), [&](const auto& c) { return c.command == command; });
    if (info == all.end())
        return;
    auto rows = batchRows();
    if (!rows)
        return;
    assets::RsSettings settings;
    settings.command = command;
    if (!askRsSettings(settings))
        return;
    assets::BatchOptions o;
    o.command = info->caption;
    o.store = info->store;
    if (info->store == assets::Store::NewName) {
        // dlgCoachName for each row in turn; Cancel keeps the rows named so far and ends there.
        std::vector<assets::AssetRow> named;
        for (const auto& row : *rows) {
            const std::string stem = assets::blueprintStem(row);
            const std::string display = row.name.empty() ? stem : row.name;
            // A suffix of the dialog's own choices preselects that choice; another one (Make
            // Dead's "_Dead") is put behind the names, with Spare chosen.
            const std::string suffix = info->suffix;
            const bool ownChoice = !suffix.empty() && assets::coachOptions()[assets::coachOptionOf(suffix)].suffix == suffix;
            const auto names = ownChoice ? m_dialogs.coachName(stem, display, suffix)
                                         : m_dialogs.coachName(stem + suffix, display + suffix, "");
            if (!names)
                break;
            named.push_back(row);
            o.names.push_back(*names);
        }
        if (named.empty())
            return;
        *rows = std::move(named);
    }
    const auto result =
        runRowBatch(*rows, o, [settings](const assets::RowInput& in) { return assets::editRow(settings, in); });
    std::string done = m_ctx.lang.has(519) ? m_ctx.lang.text(519) : "The selected items have been changed.";
    if (command == assets::RsCommand::Provider)
        done = "Your asset(s) has been modified as requested.";
    else if (command == assets::RsCommand::WheelSlip && m_ctx.lang.has(463))
        done = m_ctx.lang.text(463);
    finishBatch(result, done);
}

} // namespace velmora::ui
