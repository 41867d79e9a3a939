#include "apmenus.h"

#include "../common/backgroundjob.h"
#include "../common/desktopui.h"
#include "../common/frmreport.h"
#include "apgrid.h"
#include "velmora/archives/apcommands.h"

namespace velmora::ui {

frmListRS* runApSearchMenu(AppContext& ctx, const QString& menu, QWidget* parent) {
    archives::ApFindOptions options;
    QString title;
    if (menu == "mnuNoDet") {
        options.details = false;
        title = QObject::tr("All .ap files");
    } else if (menu == "mnuMC") {
        options.search = archives::ApSearch::MainContent;
        title = QObject::tr("All MainContent.ap files");
    } else if (menu == "mnuSce") {
        options.search = archives::ApSearch::Scenarios;
        title = QObject::tr("All .ap files in Content\\Routes");
    } else if (menu == "mnuFA") {
        options.search = archives::ApSearch::Assets;
        title = QObject::tr("All .ap files in Assets");
    } else {
        title = QObject::tr("All .ap files");
    }
    return findApScreen(ctx, options, title + " - " + toQt(ctx.railWorks().string()), parent);
}

frmReport* listApEntries(AppContext& ctx, QWidget* parent) {
    FileRequest request{"List files in .ap", ctx.railWorks(), "Archives (*.ap;*.zip)|*.ap;*.zip|All files (*.*)|*.*",
                        false};
    const auto chosen = ctx.ui().chooseFile(request);
    if (!chosen || chosen->empty())
        return nullptr;
    return showEntryListing(ctx, *chosen, parent);
}

frmNewAP* openArchiveManager(AppContext& ctx, frmNewAP::EditorOpener openInEditor, QWidget* parent) {
    auto* screen = new frmNewAP(ctx, std::move(openInEditor), parent);
    screen->setAttribute(Qt::WA_DeleteOnClose);
    screen->show();
    return screen;
}

} // namespace velmora::ui
