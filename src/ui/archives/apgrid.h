#pragma once
// The .ap mode of the grid report screen frmListRS: the table of .ap files with their states,
// its sort menu, and the commands that unpack, list or remove what the rows name. Each command
// takes the selected rows first, runs off the GUI thread with progress and Abort, and ends with
// a report of what it unpacked and what it refused.

#include "../routes/frmlistrs.h"
#include "velmora/archives/apcommands.h"
#include "velmora/archives/aptable.h"

#include <QObject>

#include <functional>
#include <optional>

class QLabel;
class QPushButton;

namespace velmora::ui {

class frmReport;

class ApGridCommands : public QObject {
    Q_OBJECT
public:
    ApGridCommands(AppContext& ctx, frmListRS* screen, archives::ApTable table, bool details);

    frmListRS* screen() const { return m_screen; }
    const archives::ApTable& table() const { return m_table; }
    QLabel* legend() const { return m_legend; } // Label6
    QPushButton* button(const char* name) const;

    // How Command14 learns the mode: Overwrite, as its question says, unless a chooser (dlgMode
    // in the desktop program) is put here. A chooser that gives nothing stops the unpack.
    void setModeChooser(std::function<std::optional<archives::UnpackMode>()> chooser) { m_chooseMode = std::move(chooser); }
    // Puts dlgMode in front of Command14.
    void askForMode();

    // The report shown by the last command, if any.
    frmReport* lastReport() const { return m_report; }

public slots:
    void mnuSF_Click(); // sort on the file
    void mnuSD_Click(); // sort on the date
    void Command14_Click(); // Unpack Selected
    void Command15_Click(); // rolling stock from every .ap below Assets
    void Command16_Click(); // scenarios from every .ap below Content
    void Command17_Click(); // rolling stock from the selected
    void Command18_Click(); // scenarios from the selected
    void Command19_Click(); // the entries of the first selected .ap, in frmReport
    void Command20_Click(); // loco .GeoPcDx from the selected
    void Command21_Click(); // RouteProperties.xml beside the selected
    void Command22_Click(); // selects every MainContent.ap row
    void Command24_Click(); // rolling stock .bin files from the selected
    void Command13_Click(); // route name folders
    void Command12_Click(); // Delete Selected Folders

private:
    void fill();
    std::vector<fs::path> selectedAps() const;
    // Runs an archive command in the background, then reports it; false when nothing ran.
    bool run(const std::string& label, const std::function<archives::ApCommandResult(UserInterface&)>& command);
    void unpackSelected(archives::UnpackCommand command);

    AppContext& m_ctx;
    frmListRS* m_screen;
    archives::ApTable m_table;
    bool m_details;
    QLabel* m_legend;
    std::function<std::optional<archives::UnpackMode>()> m_chooseMode;
    frmReport* m_report = nullptr;
};

// The entries of `ap` in frmReport, read in the background; nothing (having said why) when it
// cannot be read.
frmReport* showEntryListing(AppContext& ctx, const fs::path& ap, QWidget* parent);

// Shows the table in a new frmListRS of the .ap mode (11 with details, 14 without).
frmListRS* showApTable(AppContext& ctx, archives::ApTable table, bool details, const QString& title, QWidget* parent);

// The main menu's searches: finds the .ap files in the background and shows them; nothing when
// the user aborted.
frmListRS* findApScreen(AppContext& ctx, const archives::ApFindOptions& options, const QString& title, QWidget* parent);

} // namespace velmora::ui
