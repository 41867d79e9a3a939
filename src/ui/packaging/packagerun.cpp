#include "packagerun.h"

#include "../archives/frmnewzip.h"
#include "../common/backgroundjob.h"
#include "../common/desktopui.h"
#include "../common/frmreport.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/journal.h"
#include "velmora/core/userinterface.h"

namespace velmora::ui {

packaging::PackageReport runPackage(AppContext& ctx, const std::string& label,
                                    const std::function<packaging::PackageReport(UserInterface&)>& make) {
    packaging::PackageReport report;
    runInBackground(ctx, label, [&](UserInterface& ui) {
        JournalCommand entry(&ctx.journal(), label);
        report = make(ui);
    });
    return report;
}

QWidget* endPackage(AppContext& ctx, QWidget* parent, const packaging::PackageReport& report,
                    const std::string& saved, const std::string& zipQuestion) {
    if (!report.ok()) {
        ctx.ui().message(report.refused.empty() ? "Stopped: nothing of this run was put in the package."
                                                : report.refused,
                         report.refused.empty() ? Icon::Information : Icon::Warning);
        return nullptr;
    }
    frmReport* shown = frmReport::show(ctx, QObject::tr("Package"), report.text(), parent);
    shown->setObjectName("packageReport");
    if (zipQuestion.empty()) {
        ctx.ui().message(saved + report.folder.string());
        return shown;
    }
    if (ctx.ui().ask(saved + report.folder.string() + "\n" + zipQuestion, Buttons::YesNo) == Answer::Yes) {
        frmNewZip zip(ctx, parent);
        zip.addInput(report.folder);
        zip.exec();
    }
    return shown;
}

} // namespace velmora::ui
