#include "frmroutedetails.h"

#include "../common/desktopui.h"
#include "../common/windowplace.h"
#include "velmora/core/templates.h"
#include "velmora/core/userinterface.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora::ui {

namespace {

QLineEdit* shownField(const QString& objectName, bool readOnly) {
    auto* edit = new QLineEdit;
    edit->setObjectName(objectName);
    edit->setReadOnly(readOnly);
    return edit;
}

QString itemText(const routes::TemplateItem& item) {
    if (item.provider.empty() && item.product.empty() && item.path.empty())
        return {};
    return toQt(shownName(item.provider + "\\" + item.product + "\\" + item.path));
}

} // namespace

frmRouteDetails::frmRouteDetails(AppContext& ctx, const routes::RouteEntry& route, QWidget* parent)
    : QDialog(parent), m_ctx(ctx), m_route(route) {
    setObjectName("frmRouteDetails");
    setWindowTitle(tr("Route Details") + " - " + toQt(route.name));
    rememberPlace(ctx, this, objectName(), {760, 560});
    auto* names = new QGroupBox(tr("Route Name"));
    auto* nameForm = new QFormLayout(names);
    const char* languages[5] = {"English", "French", "Italian", "German", "Spanish"};
    for (int i = 0; i < 5; ++i) {
        m_text1[static_cast<std::size_t>(i)] = shownField(QString("Text1_%1").arg(i), true);
        nameForm->addRow(tr(languages[i]), m_text1[static_cast<std::size_t>(i)]);
    }
    auto* items = new QGroupBox(tr("Route Template and Environment"));
    auto* itemForm = new QFormLayout(items);
    for (int i = 0; i <= routes::kTemplateSlots; ++i) {
        m_text2[static_cast<std::size_t>(i)] = shownField(QString("Text2_%1").arg(i), true);
        itemForm->addRow(i == 0 ? tr("Route Template") : tr(routes::slotName(i - 1)), m_text2[static_cast<std::size_t>(i)]);
    }
    auto* place = new QGroupBox(tr("Location"));
    auto* placeForm = new QFormLayout(place);
    m_text3[0] = shownField("Text3_0", false);
    m_text3[1] = shownField("Text3_1", false);
    placeForm->addRow(tr("Latitude"), m_text3[0]);
    placeForm->addRow(tr("Longitude"), m_text3[1]);
    auto* update = new QPushButton(tr("Update Lat/Long"));
    update->setObjectName("Command2");
    connect(update, &QPushButton::clicked, this, &frmRouteDetails::Command2_Click);
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    row->addWidget(update);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(names);
    layout->addWidget(items);
    layout->addWidget(place);
    layout->addLayout(row);

    routes::RouteDetails d;
    std::string error;
    m_loaded = routes::readRouteDetails(ctx, route, d, error);
    if (!m_loaded) {
        ctx.ui().message(error, Icon::Warning);
        update->setEnabled(false);
        return;
    }
    for (std::size_t i = 0; i < 5; ++i)
        m_text1[i]->setText(toQt(shownName(d.names[i])));
    m_text2[0]->setText(itemText(d.routeTemplate));
    for (std::size_t i = 0; i < d.items.size(); ++i)
        m_text2[i + 1]->setText(itemText(d.items[i]));
    m_text3[0]->setText(toQt(d.latitude));
    m_text3[1]->setText(toQt(d.longitude));
}

void frmRouteDetails::Command2_Click() {
    const routes::RouteJob job =
        routes::updateLatLong(m_ctx, m_route, fromQt(m_text3[0]->text()), fromQt(m_text3[1]->text()));
    std::string text = job.message;
    for (const auto& note : job.notes)
        text += "\n" + note;
    m_ctx.ui().message(text, job.ok ? Icon::Information : Icon::Warning);
}

} // namespace velmora::ui
