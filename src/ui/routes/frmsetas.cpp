#include "frmsetas.h"

#include "../common/desktopui.h"
#include "velmora/core/userinterface.h"
#include "velmora/routes/routetemplate.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora::ui {

frmSetAS::frmSetAS(AppContext& ctx, QWidget* parent) : QDialog(parent), m_ctx(ctx) {
    setObjectName("frmSetAS");
    setWindowTitle(tr("Set Up Developer Folders"));
    m_text1 = new QLineEdit;
    m_text1->setObjectName("Text1");
    m_text2 = new QLineEdit;
    m_text2->setObjectName("Text2");
    auto* form = new QFormLayout;
    form->addRow(tr("Provider"), m_text1);
    form->addRow(tr("Product"), m_text2);
    auto* process = new QPushButton(tr("Process"));
    process->setObjectName("Command1");
    connect(process, &QPushButton::clicked, this, &frmSetAS::Command1_Click);
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    row->addWidget(process);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(row);
}

void frmSetAS::Command1_Click() {
    const routes::RouteJob job =
        routes::setUpDeveloperFolders(m_ctx, fromQt(m_text1->text().trimmed()), fromQt(m_text2->text().trimmed()));
    m_ctx.ui().message(job.message, job.ok ? Icon::Information : Icon::Warning);
}

void mnuDevFolders_Click(AppContext& ctx) {
    const auto folder = ctx.ui().chooseFolder("Select the folder to set up", ctx.railWorks() / "Assets");
    if (!folder)
        return;
    const routes::RouteJob job = routes::setUpSubFolders(ctx, *folder);
    ctx.ui().message(job.message, job.ok ? Icon::Information : Icon::Warning);
}

} // namespace velmora::ui
