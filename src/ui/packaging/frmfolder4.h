#pragma once
// frmFolder4: a package of a reskin that ships only the files that differ from its original.

#include "velmora/packaging/packaging.h"

#include <QDialog>

class QLineEdit;

namespace velmora::ui {

class frmFolder4 : public QDialog {
    Q_OBJECT
public:
    frmFolder4(AppContext& ctx, packaging::PackageState& state, QWidget* parent = nullptr);

    QLineEdit* reskinBox() const { return m_reskin; }     // Text1: Folder to be Packaged
    QLineEdit* originalBox() const { return m_original; } // Text2: Reskinned from:-
    QWidget* packageReport() const { return m_report; }

public slots:
    void Command5_Click(); // Process

private:
    AppContext& m_ctx;
    packaging::PackageState& m_state;
    QLineEdit* m_reskin;
    QLineEdit* m_original;
    QWidget* m_report = nullptr;
};

} // namespace velmora::ui
