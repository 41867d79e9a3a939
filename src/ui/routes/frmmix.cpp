#include "frmmix.h"

#include "../common/backgroundjob.h"
#include "../common/desktopui.h"
#include "../common/windowplace.h"
#include "velmora/core/userinterface.h"
#include "velmora/routes/routeedits.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora::ui {

frmMix::frmMix(AppContext& ctx, const routes::RouteEntry& route, QWidget* parent)
    : QDialog(parent), m_ctx(ctx), m_route(route) {
    setObjectName("frmMix");
    setWindowTitle(tr("Remove terrain textures: %1").arg(toQt(route.name)));
    rememberPlace(ctx, this, objectName(), {520, 480});
    m_files = new QListWidget;
    m_files->setObjectName("List1");
    m_files->setSelectionMode(QAbstractItemView::ExtendedSelection);
    for (const auto& f : routes::mixMapFiles(ctx, route))
        m_files->addItem(toQt(f.filename().string()));
    auto* all = new QPushButton(tr("Select All"));
    all->setObjectName("Command1");
    auto* process = new QPushButton(tr("Process"));
    process->setObjectName("Command2");
    connect(all, &QPushButton::clicked, this, &frmMix::Command1_Click);
    connect(process, &QPushButton::clicked, this, &frmMix::Command2_Click);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(all);
    buttons->addWidget(process);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_files, 1);
    layout->addLayout(buttons);
}

void frmMix::Command1_Click() { m_files->selectAll(); }

void frmMix::Command2_Click() {
    std::vector<std::string> names;
    for (int r = 0; r < m_files->count(); ++r)
        if (m_files->item(r)->isSelected())
            names.push_back(fromQt(m_files->item(r)->text()));
    if (names.empty()) {
        m_ctx.ui().message("Select the files to process first.");
        return;
    }
    routes::EditReport report;
    setEnabled(false);
    runInBackground(m_ctx, "Remove terrain textures",
                    [&](UserInterface&) { report = routes::blankTerrain(m_ctx, m_route, names, false); });
    setEnabled(true);
    m_ctx.ui().message(report.message.empty() ? "Aborted: nothing was changed." : report.message,
                       report.ok ? Icon::Information : Icon::Warning);
}

} // namespace velmora::ui
