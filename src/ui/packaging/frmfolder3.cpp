#include "frmfolder3.h"

#include "../common/desktopui.h"
#include "../common/windowplace.h"
#include "packagerun.h"
#include "velmora/core/appcontext.h"
#include "velmora/core/userinterface.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <algorithm>

namespace velmora::ui {

frmFolder3::frmFolder3(AppContext& ctx, packaging::PackageState& state, QWidget* parent)
    : QDialog(parent), m_ctx(ctx), m_package(ctx, state) {
    setObjectName("frmFolder3");
    setWindowTitle(tr("Package Assets"));
    rememberPlace(ctx, this, objectName(), {640, 420});
    m_folder = new QLineEdit(toQt((ctx.railWorks() / "Assets").string()));
    m_folder->setObjectName("Text1");
    m_list = new QListWidget;
    m_list->setObjectName("List1");
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    auto* browse = new QPushButton(tr("..."));
    browse->setObjectName("cmdBrowse");
    auto* add = new QPushButton(tr("Add to Package"));
    add->setObjectName("Command1");
    auto* remove = new QPushButton(tr("Remove from Package"));
    remove->setObjectName("Command4");
    auto* process = new QPushButton(tr("Process"));
    process->setObjectName("Command3");
    connect(browse, &QPushButton::clicked, this, &frmFolder3::Browse_Click);
    connect(add, &QPushButton::clicked, this, &frmFolder3::Command1_Click);
    connect(remove, &QPushButton::clicked, this, &frmFolder3::Command4_Click);
    connect(process, &QPushButton::clicked, this, &frmFolder3::Command3_Click);

    auto* grid = new QGridLayout(this);
    grid->addWidget(new QLabel(tr("Select Folder containing your Assets")), 0, 0, 1, 3);
    grid->addWidget(m_folder, 1, 0, 1, 2);
    grid->addWidget(browse, 1, 2);
    grid->addWidget(m_list, 2, 0, 1, 3);
    grid->addWidget(add, 3, 0);
    grid->addWidget(remove, 3, 1);
    grid->addWidget(process, 3, 2);
}

void frmFolder3::Browse_Click() {
    if (const auto chosen =
            m_ctx.ui().chooseFolder("Select Folder containing your Assets", fromQt(m_folder->text())))
        m_folder->setText(toQt(chosen->string()));
}

void frmFolder3::showList() {
    m_list->clear();
    for (const auto& folder : m_package.list())
        m_list->addItem(toQt(folder.string()));
}

void frmFolder3::Command1_Click() {
    const std::string folder = fromQt(m_folder->text().trimmed());
    if (folder.empty())
        return;
    if (const std::string problem = m_package.add(folder); !problem.empty()) {
        m_ctx.ui().message(problem, Icon::Warning);
        return;
    }
    showList();
}

void frmFolder3::Command4_Click() {
    std::vector<int> rows;
    for (const QListWidgetItem* item : m_list->selectedItems())
        rows.push_back(m_list->row(item));
    m_package.remove(rows);
    showList();
}

void frmFolder3::Command3_Click() {
    setEnabled(false);
    const packaging::PackageReport report =
        runPackage(m_ctx, "Package Assets", [&](UserInterface& ui) { return m_package.process({}, &ui); });
    setEnabled(true);
    m_report = endPackage(m_ctx, this, report, "Your Assets are now saved in ",
                          "Do you wish them to be automatically zipped up ready for distribution?");
}

} // namespace velmora::ui
