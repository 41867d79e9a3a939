// "Update Sounds" (mnuArmstrong) and "Add Cab Occlusions" (mnuOcc) of frmAssets: each command
// opens with its notice (OK/Cancel), asks what its dialog asks, and runs on the selected rows
// through the shared row loop; the rows passed over are shown in frmReport at the end.

#include "frmassets.h"

#include "../common/desktopui.h"
#include "velmora/assets/soundedits.h"

#include <QMenu>
#include <QMenuBar>

#include <algorithm>

namespace velmora::ui {

namespace {

using S = assets::SoundCommand;

bool isWagon(S c) {
    return c == S::NewWagon || c == S::OldHeavy || c == S::OldHeavyRattly || c == S::ContainerFlats || c == S::FourWheel;
}
bool isCoach(S c) { return c == S::Mk1 || c == S::Mk2 || c == S::Mk3 || c == S::Appropriate; }

} // namespace

void frmAssets::buildSoundMenus() {
    QMenu* sounds = menuBar()->addMenu(caption(m_ctx, 379, "Update Sounds"));
    sounds->setObjectName("mnuArmstrong");
    QMenu* wagons = sounds->addMenu(caption(m_ctx, 540, "Wagon Sounds"));
    wagons->setObjectName("mnuWagonSounds");
    QMenu* coaches = sounds->addMenu(caption(m_ctx, 541, "Coach Sounds"));
    coaches->setObjectName("mnuCoachSounds");
    QMenu* locos = nullptr;
    QMenu* occlusions = menuBar()->addMenu(caption(m_ctx, 438, "Add Cab Occlusions"));
    occlusions->setObjectName("mnuOcc");
    for (const auto& c : assets::soundCommands()) {
        QMenu* menu = c.occlusion              ? occlusions
                      : isWagon(c.command)     ? wagons
                      : isCoach(c.command)     ? coaches
                      : c.command == S::BogieName ? sounds
                                                  : nullptr;
        if (!menu) {
            if (!locos) {
                locos = sounds->addMenu(caption(m_ctx, 542, "Loco Sounds"));
                locos->setObjectName("mnuLocoSounds");
            }
            menu = locos;
        }
        QAction* a = menu->addAction(QString::fromUtf8(c.caption));
        a->setObjectName(c.menuName);
        const S command = c.command;
        connect(a, &QAction::triggered, this, [this, command] { updateSounds(command); });
    }
}

void frmAssets::updateSounds(assets::SoundCommand command) {
    const auto& all = assets::soundCommands();
    const auto info = std::find_if(all.begin(), all.end(), [&](const auto& c) { return c.command == command; });
    if (info == all.end())
        return;
    auto rows = m_batch->batchRows();
    if (!rows)
        return;
    auto& ui = m_ctx.ui();
    const std::string title = info->caption;
    const std::string notice = assets::soundNotice(m_ctx, *info);
    if (!notice.empty() && ui.ask(notice, Buttons::OkCancel, Icon::Information, title) != Answer::Ok)
        return;
    assets::SoundSettings settings;
    settings.command = command;
    if (isWagon(command)) {
        const auto answers = dialogs().freightAudio();
        if (!answers)
            return;
        settings.addBogie = answers->first;
        settings.addWagonSound = answers->second;
    }
    if (command == S::BogieName) {
        const auto bogie = dialogs().bogie();
        if (!bogie)
            return;
        settings.bogie = *bogie;
    }
    if (const std::string error = assets::loadSoundSettings(m_ctx, settings); !error.empty()) {
        ui.message(error, Icon::Warning);
        return;
    }
    assets::BatchOptions o;
    o.command = info->caption;
    const auto result = m_batch->runRowBatch(
        *rows, o, [settings](const assets::RowInput& in) { return assets::editSoundRow(settings, in); });
    m_batch->finishBatch(result, info->occlusion ? lang(519, "The selected items have been changed.")
                                                 : settings.updated);
}

} // namespace velmora::ui
