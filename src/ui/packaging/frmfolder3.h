#pragma once
// frmFolder3: a package of asset folders. Folders are added one by one; Remove from Package only
// takes rows out of the list (what was added is still copied); Process writes the package.

#include "velmora/packaging/packaging.h"

#include <QDialog>

class QLineEdit;
class QListWidget;

namespace velmora::ui {

class frmFolder3 : public QDialog {
    Q_OBJECT
public:
    frmFolder3(AppContext& ctx, packaging::PackageState& state, QWidget* parent = nullptr);

    QLineEdit* folderBox() const { return m_folder; } // Text1
    QListWidget* list() const { return m_list; }      // List1
    // The report window of the package made last, while it is open.
    QWidget* packageReport() const { return m_report; }

public slots:
    void Browse_Click();
    void Command1_Click(); // add the folder of Text1
    void Command4_Click(); // Remove from Package
    void Command3_Click(); // Process

private:
    void showList();
    AppContext& m_ctx;
    packaging::AssetPackage m_package;
    QLineEdit* m_folder;
    QListWidget* m_list;
    QWidget* m_report = nullptr;
};

} // namespace velmora::ui
