#pragma once
// frmResults: the reports of one command in one window, a tab for each, instead of a stack of
// windows on one spot. Each page is a whole report screen (frmListRS, frmReport) with its own
// commands; its Exit closes its tab, and the window closes with its last tab.

#include "velmora/core/appcontext.h"

#include <QWidget>

class QTabWidget;
class QDialog;

namespace velmora::ui {

class frmResults : public QWidget {
    Q_OBJECT
public:
    frmResults(AppContext& ctx, const QString& title, QWidget* parent = nullptr);

    // Takes the report screen in as a tab and shows it; the page is deleted with its tab.
    void addPage(QDialog* page, const QString& tabTitle);
    QTabWidget* tabs() const { return m_tabs; }
    int pageCount() const;
    QDialog* page(int index) const;

private:
    void closePage(QDialog* page);
    QTabWidget* m_tabs;
};

} // namespace velmora::ui
