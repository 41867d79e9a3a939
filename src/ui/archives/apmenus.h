#pragma once
// The main menu's .ap entries: the archive manager, the listing of one archive, and the five
// searches that show the .ap files found in the grid report screen.

#include "frmnewap.h"

namespace velmora::ui {

class frmListRS;
class frmReport;

// The .ap entries of the main menu, by control name.
inline constexpr const char* kApSearchMenus[] = {"mnuFindAllAP", "mnuNoDet", "mnuMC", "mnuSce", "mnuFA"};

// mnuFindAllAP, mnuNoDet, mnuMC, mnuSce or mnuFA: its search, in the background, and its grid.
frmListRS* runApSearchMenu(AppContext& ctx, const QString& menu, QWidget* parent);
// mnuListAP: an .ap chosen by the user, its entries listed in frmReport.
frmReport* listApEntries(AppContext& ctx, QWidget* parent);
// mnuAP: the archive manager.
frmNewAP* openArchiveManager(AppContext& ctx, frmNewAP::EditorOpener openInEditor, QWidget* parent);

} // namespace velmora::ui
