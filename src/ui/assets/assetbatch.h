#pragma once
// The batch commands on asset rows that more than one screen offers: the clones (mnuClone,
// mnuCloneDefault, mnuRB, mnuCloneReskin) and the rolling-stock edits (mnuEditRS). frmAssets
// runs them on its grid's selected rows, frmAssetsAP on the rows of its main grid. Each batch
// runs off the GUI thread with progress and Abort, is one journal entry, and ends with the rows
// passed over shown in frmReport.

#include "velmora/assets/batchedit.h"
#include "velmora/assets/clone.h"
#include "velmora/assets/rsedits.h"
#include "velmora/core/appcontext.h"

#include <QObject>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

class QMenu;
class QMenuBar;
class QWidget;

namespace velmora::ui {

class AssetBatchCommands : public QObject {
    Q_OBJECT
public:
    // The dialogs the commands ask through; tests put in their own answers.
    struct Dialogs {
        std::function<std::optional<assets::VariantName>(const std::string& fileName, const std::string& displayName,
                                                         const std::string& suffix)>
            coachName; // dlgCoachName
        std::function<std::optional<assets::CloneNames>(const assets::CloneNames& prefill, bool withCategory)>
            newName; // dlgNewName, dlgNewName22
        std::function<std::optional<std::pair<std::size_t, std::size_t>>(const assets::LampTable&)> head; // dlgHead
        std::function<std::optional<std::size_t>(const assets::LampTable&)> tail;                          // dlgTail
        std::function<std::optional<std::pair<std::string, std::string>>()> mass;                          // dlgMass
        std::function<std::optional<std::pair<bool, bool>>()> freightAudio; // dlgFreightAudio: Check1, Check2
        std::function<std::optional<std::string>()> bogie;                  // dlgBogie: BG_Steam ...
    };

    // `selected` gives the rows a command works on, in selection order.
    AssetBatchCommands(AppContext& ctx, QWidget* screen, std::function<std::vector<assets::AssetRow>()> selected);

    Dialogs& dialogs() { return m_dialogs; }

    // The Clone menu with the given entries (by control name), and the Edit Rolling Stock menu.
    QMenu* addCloneMenu(QMenuBar* bar, const std::vector<const char*>& entries);
    QMenu* addEditRsMenu(QMenuBar* bar);

    void cloneRows(assets::CloneKind kind);
    void editRollingStock(assets::RsCommand command);
    // mnuPhysics and mnuPhysSteam: frmPhysics on the first selected row.
    void openPhysics(bool steam);

    // The selected rows, or nothing after saying that none is selected.
    std::optional<std::vector<assets::AssetRow>> batchRows();
    assets::BatchResult runRowBatch(const std::vector<assets::AssetRow>& rows, const assets::BatchOptions& options,
                                    const assets::RowEditor& edit);
    // The error, or the report of rows passed over and the closing message `done`; false when
    // nothing was written.
    bool finishBatch(const assets::BatchResult& result, const std::string& done);

signals:
    // A report was shown in frmReport (for tests).
    void reportShown(const QString& text);

private:
    // The notice and the dialog of a rolling-stock command, then its templates; false when the
    // user cancelled or something it needs is missing (said by then).
    bool askRsSettings(assets::RsSettings& settings);
    std::string lang(int entry, const char* design) const;

    AppContext& m_ctx;
    QWidget* m_screen;
    std::function<std::vector<assets::AssetRow>()> m_selected;
    Dialogs m_dialogs;
};

} // namespace velmora::ui
