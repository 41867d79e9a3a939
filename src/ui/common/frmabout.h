#pragma once
// Help > About: the program's name, version, licence and libraries, the same text that
// `velmora-cli version` prints, and the About screen's own "Do not show in future" tick.

#include "velmora/core/appcontext.h"

#include <QDialog>

class QCheckBox;
class QPlainTextEdit;

namespace velmora::ui {

class frmAbout : public QDialog {
    Q_OBJECT
public:
    explicit frmAbout(AppContext& ctx, QWidget* parent = nullptr);
    QString text() const;

private:
    AppContext& m_ctx;
    QPlainTextEdit* m_text;
    QCheckBox* m_dontShow;
};

} // namespace velmora::ui
