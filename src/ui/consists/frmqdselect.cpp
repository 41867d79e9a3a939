#include "frmqdselect.h"

#include "../common/desktopui.h"
#include "../common/windowplace.h"
#include "velmora/routes/routes.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <set>

namespace velmora::ui {

namespace cs = velmora::consists;

frmQDSelect::frmQDSelect(AppContext& ctx, QWidget* parent) : QDialog(parent), m_ctx(ctx) {
    setObjectName("frmQDSelect");
    setWindowTitle(caption(ctx, 604, "Quick Drive Consist Details"));
    rememberPlace(ctx, this, objectName(), {700, 600});
    auto line = [](const char* name) {
        auto* e = new QLineEdit;
        e->setObjectName(name);
        return e;
    };
    m_locoName = line("Text1_0");
    m_displayName = line("Text1_1");
    m_consistName = line("Text3");
    m_era[0] = line("Text2_0");
    m_era[1] = line("Text2_1");
    m_era[0]->setPlaceholderText("2000");
    m_era[1]->setPlaceholderText("2050");
    m_locoType = new QComboBox;
    m_locoType->setObjectName("Combo1");
    for (const std::string& t : cs::engineTypes())
        m_locoType->addItem(toQt(t));
    m_consistType = new QComboBox;
    m_consistType->setObjectName("Combo2");
    for (const std::string& t : cs::consistTypes())
        m_consistType->addItem(toQt(t));
    m_drivable = new QCheckBox(caption(ctx, 609, "Locomotive is drivable"));
    m_drivable->setObjectName("Check1");
    m_drivable->setChecked(true);
    const char* railNames[3] = {"Check2_0", "Check2_1", "Check2_2"};
    const QString railCaptions[3] = {caption(ctx, 610, "Locomotive has Pantograph"),
                                     caption(ctx, 611, "Locomotive has 3rd rail shoe"),
                                     caption(ctx, 612, "Locomotive requires 4th rail")};
    for (int i = 0; i < 3; ++i) {
        m_rails[i] = new QCheckBox(railCaptions[i]);
        m_rails[i]->setObjectName(railNames[i]);
    }

    // The installed routes, name and folder, several may be selected.
    m_routes = new QTableWidget(0, 2);
    m_routes->setObjectName("List1");
    m_routes->setHorizontalHeaderLabels({tr("Route Name"), tr("Folder Name")});
    m_routes->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_routes->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_routes->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_routes->horizontalHeader()->setStretchLastSection(true);
    for (const routes::RouteEntry& r : routes::listRoutes(ctx)) {
        const int row = m_routes->rowCount();
        m_routes->insertRow(row);
        m_routes->setItem(row, 0, new QTableWidgetItem(toQt(r.name)));
        m_routes->setItem(row, 1, new QTableWidgetItem(toQt(r.folder)));
    }
    m_routes->setSortingEnabled(true);

    auto* era = new QHBoxLayout;
    era->addWidget(m_era[0]);
    era->addWidget(m_era[1]);
    auto* form = new QFormLayout;
    form->addRow(caption(ctx, 605, "Locomotive Name (appears in QD Select Loco screen)"), m_locoName);
    form->addRow(caption(ctx, 606, "Display Name (appears in QD Select Consist screen)"), m_displayName);
    form->addRow(caption(ctx, 607, "Consist Name (Must be unique)"), m_consistName);
    form->addRow(caption(ctx, 608, "Locomotive Type (Diesel, Electric or Steam)"), m_locoType);
    form->addRow(m_drivable);
    for (QCheckBox* c : m_rails)
        form->addRow(c);
    form->addRow(caption(ctx, 613, "Era (start year - end year)"), era);
    form->addRow(caption(ctx, 614, "Consist Type"), m_consistType);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setObjectName("cmdOK");
    buttons->button(QDialogButtonBox::Cancel)->setObjectName("cmdCancel");
    connect(buttons, &QDialogButtonBox::accepted, this, &frmQDSelect::cmdOK_Click);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_routes, 1);
    layout->addWidget(buttons);
}

cs::QDMetadata frmQDSelect::metadata() const {
    cs::QDMetadata m;
    m.locoName = fromQt(m_locoName->text());
    m.displayName = fromQt(m_displayName->text());
    m.consistName = fromQt(m_consistName->text());
    m.locoType = fromQt(m_locoType->currentText());
    m.drivable = m_drivable->isChecked();
    m.pantograph = m_rails[0]->isChecked();
    m.thirdRail = m_rails[1]->isChecked();
    m.fourthRail = m_rails[2]->isChecked();
    m.eraStart = fromQt(m_era[0]->text().trimmed());
    m.eraEnd = fromQt(m_era[1]->text().trimmed());
    m.consistType = fromQt(m_consistType->currentText());
    std::set<int> rows;
    for (const QModelIndex& index : m_routes->selectionModel()->selectedRows())
        rows.insert(index.row());
    for (int row : rows) {
        const QTableWidgetItem* folder = m_routes->item(row, 1);
        // An empty folder cell or the header text is no route.
        if (folder && !folder->text().isEmpty() && folder->text() != "Folder Name")
            m.routes.push_back(fromQt(folder->text()));
    }
    return m;
}

void frmQDSelect::cmdOK_Click() {
    if (metadata().routes.empty()) {
        m_ctx.ui().message(cs::kNoRoute);
        return;
    }
    accept();
}

} // namespace velmora::ui
