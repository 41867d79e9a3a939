#pragma once
// frmMix: the terrain mix maps of a route, of which the selected ones lose their textures.

#include "velmora/core/appcontext.h"
#include "velmora/routes/routes.h"

#include <QDialog>

class QListWidget;

namespace velmora::ui {

class frmMix : public QDialog {
    Q_OBJECT
public:
    frmMix(AppContext& ctx, const routes::RouteEntry& route, QWidget* parent = nullptr);
    QListWidget* files() const { return m_files; } // List1

public slots:
    void Command1_Click(); // Select All
    void Command2_Click(); // Process: the selected files blanked, with progress and Abort

private:
    AppContext& m_ctx;
    routes::RouteEntry m_route;
    QListWidget* m_files;
};

} // namespace velmora::ui
