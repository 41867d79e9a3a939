#include "frmresults.h"

#include "windowplace.h"

#include <QDialog>
#include <QTabWidget>
#include <QVBoxLayout>

namespace velmora::ui {

frmResults::frmResults(AppContext& ctx, const QString& title, QWidget* parent) : QWidget(parent, Qt::Window) {
    setObjectName("frmResults");
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(title);
    m_tabs = new QTabWidget;
    m_tabs->setObjectName("tabResults");
    m_tabs->setTabsClosable(true);
    m_tabs->setDocumentMode(true);
    m_tabs->setUsesScrollButtons(true);
    connect(m_tabs, &QTabWidget::tabCloseRequested, this, [this](int index) { closePage(page(index)); });
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addWidget(m_tabs);
    rememberPlace(ctx, this, objectName(), {1000, 700});
}

void frmResults::addPage(QDialog* page, const QString& tabTitle) {
    // In a tab the screen is a plain widget: no frame, no place of its own.
    page->setWindowState(Qt::WindowNoState);
    page->setWindowFlags(Qt::Widget);
    page->setAttribute(Qt::WA_DeleteOnClose, false);
    const int index = m_tabs->addTab(page, tabTitle);
    m_tabs->setTabToolTip(index, page->windowTitle());
    page->show();
    connect(page, &QDialog::finished, this, [this, page] { closePage(page); });
}

int frmResults::pageCount() const { return m_tabs->count(); }

QDialog* frmResults::page(int index) const { return qobject_cast<QDialog*>(m_tabs->widget(index)); }

void frmResults::closePage(QDialog* page) {
    const int index = m_tabs->indexOf(page);
    if (index < 0)
        return;
    m_tabs->removeTab(index);
    page->deleteLater();
    if (m_tabs->count() == 0)
        close();
}

} // namespace velmora::ui
