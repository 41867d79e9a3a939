#include "assetbatch.h"

#include "../common/backgroundjob.h"
#include "../common/desktopui.h"
#include "../common/frmreport.h"
#include "dlgcoachname.h"
#include "dlgnewname.h"
#include "dlgrsedits.h"
#include "dlgsounds.h"
#include "../physics/frmphysics.h"
#include "velmora/assets/listcommands.h"
#include "velmora/assets/renaming.h"

#include <QMenu>
#include <QMenuBar>
#include <QWidget>

#include <algorithm>

namespace velmora::ui {

namespace {

struct CloneEntry {
    const char* name;
    int entry;
    const char* caption;
    assets::CloneKind kind;
};

// The clones in menu order, with their language entries.
const std::vector<CloneEntry>& cloneMenu() {
    static const std::vector<CloneEntry> entries = {
        {"mnuClone", 371, "Clone selected Asset", assets::CloneKind::Asset},
        {"mnuCloneDefault", 372, "Clone Selected rolling-stock", assets::CloneKind::Vehicle},
        {"mnuRB", 374, "Clone for Reskin Blueprint", assets::CloneKind::ReskinBlueprint},
        {"mnuCloneReskin", 377, "Clone Scenery for ReSkinning", assets::CloneKind::SceneryReskin},
    };
    return entries;
}

} // namespace

AssetBatchCommands::AssetBatchCommands(AppContext& ctx, QWidget* screen,
                                       std::function<std::vector<assets::AssetRow>()> selected)
    : QObject(screen), m_ctx(ctx), m_screen(screen), m_selected(std::move(selected)) {
    m_dialogs.coachName = [screen](const std::string& file, const std::string& display, const std::string& suffix) {
        return dlgCoachName::ask(file, display, suffix, screen);
    };
    m_dialogs.newName = [screen](const assets::CloneNames& prefill, bool withCategory) {
        return dlgNewName::ask(prefill, withCategory, screen);
    };
    m_dialogs.head = [screen](const assets::LampTable& table) { return dlgHead::ask(table, screen); };
    m_dialogs.tail = [screen](const assets::LampTable& table) { return dlgTail::ask(table, screen); };
    m_dialogs.mass = [screen] { return dlgMass::ask(screen); };
    m_dialogs.freightAudio = [screen]() -> std::optional<std::pair<bool, bool>> {
        const auto choice = dlgFreightAudio::ask(screen);
        if (!choice)
            return std::nullopt;
        return std::pair{choice->addBogie, choice->addWagonSound};
    };
    m_dialogs.bogie = [screen] { return dlgBogie::ask(screen); };
}

std::string AssetBatchCommands::lang(int entry, const char* design) const {
    return m_ctx.lang.has(entry) ? m_ctx.lang.text(entry) : std::string(design);
}

QMenu* AssetBatchCommands::addCloneMenu(QMenuBar* bar, const std::vector<const char*>& entries) {
    QMenu* menu = bar->addMenu(caption(m_ctx, 302, "Clone"));
    menu->setObjectName("mnuCloneMenu");
    for (const CloneEntry& e : cloneMenu()) {
        if (std::none_of(entries.begin(), entries.end(), [&](const char* n) { return std::string(n) == e.name; }))
            continue;
        QAction* a = menu->addAction(caption(m_ctx, e.entry, e.caption));
        a->setObjectName(e.name);
        const assets::CloneKind kind = e.kind;
        connect(a, &QAction::triggered, this, [this, kind] { cloneRows(kind); });
    }
    return menu;
}

QMenu* AssetBatchCommands::addEditRsMenu(QMenuBar* bar) {
    QMenu* rs = bar->addMenu(caption(m_ctx, 303, "Edit Rolling Stock"));
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
        const bool steam = std::string(name) == "mnuPhysSteam";
        connect(a, &QAction::triggered, this, [this, steam] { openPhysics(steam); });
    }
    return rs;
}

void AssetBatchCommands::openPhysics(bool steam) {
    const auto rows = m_selected();
    if (rows.empty() || rows.front().relativePath().find_first_not_of('\\') == std::string::npos) {
        m_ctx.ui().message(lang(437, "You do not appear to have selected any items in the grid?"));
        return;
    }
    // The first selected row; a row of empty folder columns stands for none.
    frmPhysics::open(m_ctx, assets::rowFile(m_ctx, rows.front()), steam, m_screen);
}

std::optional<std::vector<assets::AssetRow>> AssetBatchCommands::batchRows() {
    auto rows = m_selected();
    if (rows.empty()) {
        m_ctx.ui().message(lang(437, "You do not appear to have selected any items in the grid?"));
        return std::nullopt;
    }
    return rows;
}

assets::BatchResult AssetBatchCommands::runRowBatch(const std::vector<assets::AssetRow>& rows,
                                                    const assets::BatchOptions& options,
                                                    const assets::RowEditor& edit) {
    assets::BatchResult result;
    runInBackground(m_ctx, options.command, [&](UserInterface& ui) {
        result = assets::runBatch(m_ctx, rows, options, edit, &ui);
    });
    return result;
}

bool AssetBatchCommands::finishBatch(const assets::BatchResult& result, const std::string& done) {
    if (!result.error.empty()) {
        m_ctx.ui().message(result.error, Icon::Warning);
        return false;
    }
    if (result.stopped)
        return false;
    // The rows passed over, and notes on those written, go to the report so they can be kept.
    if (!result.passedOver.empty() || !result.notes.empty()) {
        const std::string text = assets::describe(result);
        frmReport::show(m_ctx, tr("Rows passed over"), text, m_screen);
        emit reportShown(toQt(text));
    }
    m_ctx.ui().message(done);
    return true;
}

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

bool AssetBatchCommands::askRsSettings(assets::RsSettings& settings) {
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

void AssetBatchCommands::editRollingStock(assets::RsCommand command) {
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

void AssetBatchCommands::cloneRows(assets::CloneKind kind) {
    const auto& kinds = cloneMenu();
    const auto menuEntry = std::find_if(kinds.begin(), kinds.end(), [&](const CloneEntry& e) { return e.kind == kind; });
    const std::string command = menuEntry->caption;
    const bool firstOnly = kind == assets::CloneKind::ReskinBlueprint; // a reskin blueprint of the first row only
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
                m_ctx.ui().message(lang(527, "Procedural items can not be cloned."));
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
        frmReport::show(m_ctx, tr("Files not cloned"), text, m_screen);
        emit reportShown(toQt(text));
    }
    if (made > 0)
        m_ctx.ui().message(m_ctx.lang.has(525) ? m_ctx.lang.text(525) : "Your clone has been made.");
}

} // namespace velmora::ui
