#include "frmabout.h"

#include "desktopui.h"
#include "velmora/core/about.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QVBoxLayout>

namespace velmora::ui {

frmAbout::frmAbout(AppContext& ctx, QWidget* parent) : QDialog(parent), m_ctx(ctx) {
    setObjectName("frmAbout");
    setWindowTitle(tr("About Velmora"));
    m_text = new QPlainTextEdit(toQt(aboutText()));
    m_text->setObjectName("txtAbout");
    m_text->setReadOnly(true);
    m_text->setFont(QFontDatabase::systemFont(QFontDatabase::GeneralFont));
    m_text->setMinimumSize(480, 220);
    // Kept in memory; the settings file takes it when the program closes.
    m_dontShow = new QCheckBox(tr("Do not show in future"));
    m_dontShow->setObjectName("chkDontShow");
    m_dontShow->setChecked(m_ctx.aboutTick);
    connect(m_dontShow, &QCheckBox::toggled, this, [this](bool on) { m_ctx.aboutTick = on; });
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_text, 1);
    layout->addWidget(m_dontShow);
    layout->addWidget(buttons);
}

QString frmAbout::text() const { return m_text->toPlainText(); }

} // namespace velmora::ui
