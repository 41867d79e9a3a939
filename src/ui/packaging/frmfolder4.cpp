#include "frmfolder4.h"

#include "../common/desktopui.h"
#include "../common/windowplace.h"
#include "packagerun.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/userinterface.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace velmora::ui {

frmFolder4::frmFolder4(AppContext& ctx, packaging::PackageState& state, QWidget* parent)
    : QDialog(parent), m_ctx(ctx), m_state(state) {
    setObjectName("frmFolder4");
    setWindowTitle(tr("Package Reskins"));
    rememberPlace(ctx, this, objectName(), {640, 200});
    m_reskin = new QLineEdit;
    m_reskin->setObjectName("Text1");
    m_original = new QLineEdit;
    m_original->setObjectName("Text2");
    auto* grid = new QGridLayout(this);
    int row = 0;
    for (auto [box, label] :
         {std::pair{m_reskin, "Folder to be Packaged"}, std::pair{m_original, "Reskinned from:-"}}) {
        auto* browse = new QPushButton(tr("..."));
        browse->setObjectName(row == 0 ? "cmdBrowse1" : "cmdBrowse2");
        connect(browse, &QPushButton::clicked, this, [this, box = box, title = std::string(label)] {
            const fs::path start =
                box->text().isEmpty() ? m_ctx.railWorks() / "Assets" : fs::path(fromQt(box->text()));
            if (const auto chosen = m_ctx.ui().chooseFolder(title, start))
                box->setText(toQt(chosen->string()));
        });
        grid->addWidget(new QLabel(tr(label)), row, 0);
        grid->addWidget(box, row, 1);
        grid->addWidget(browse, row, 2);
        ++row;
    }
    auto* process = new QPushButton(tr("Process"));
    process->setObjectName("Command5");
    connect(process, &QPushButton::clicked, this, &frmFolder4::Command5_Click);
    grid->addWidget(process, row, 1);
}

void frmFolder4::Command5_Click() {
    const fs::path reskin = fromQt(m_reskin->text().trimmed());
    const fs::path original = fromQt(m_original->text().trimmed());
    setEnabled(false);
    const packaging::PackageReport report = runPackage(m_ctx, "Package Reskins", [&](UserInterface& ui) {
        return packaging::packageReskin(m_ctx, reskin, original, m_state, {}, &ui);
    });
    setEnabled(true);
    m_report = endPackage(m_ctx, this, report, "Your Reskins are now saved in ",
                          "Do you wish them to be automatically zipped up ready for distribution?");
}

} // namespace velmora::ui
