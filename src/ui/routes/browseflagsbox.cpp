#include "browseflagsbox.h"

#include "../common/dialogbuttons.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDialog>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QRadioButton>
#include <QVBoxLayout>

namespace velmora::ui {

namespace {

template <std::size_t N>
QGroupBox* radioGroup(QWidget* owner, const QString& title, const std::array<const char*, N>& names, const char* control,
                      std::vector<QRadioButton*>& out) {
    auto* box = new QGroupBox(title);
    auto* layout = new QVBoxLayout(box);
    auto* group = new QButtonGroup(owner);
    for (std::size_t i = 0; i < N; ++i) {
        auto* b = new QRadioButton(QObject::tr(names[i]));
        b->setObjectName(QString("%1_%2").arg(control).arg(i));
        group->addButton(b, static_cast<int>(i));
        layout->addWidget(b);
        out.push_back(b);
    }
    return box;
}

} // namespace

BrowseFlagsBox::BrowseFlagsBox(bool withTerrain, QWidget* parent) : QWidget(parent) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(radioGroup(this, tr("Route Location"), routes::kLocations, "Option1", m_locations));
    layout->addWidget(radioGroup(this, tr("Era"), routes::kEras, "Option2", m_eras));
    if (withTerrain) {
        auto* box = new QGroupBox(tr("Terrain"));
        auto* v = new QVBoxLayout(box);
        for (std::size_t i = 0; i < routes::kTerrains.size(); ++i) {
            auto* c = new QCheckBox(tr(routes::kTerrains[i]));
            c->setObjectName(QString("Check1_%1").arg(i));
            v->addWidget(c);
            m_terrains.push_back(c);
        }
        layout->addWidget(box);
    }
    setFlags({});
}

routes::BrowseFlags BrowseFlagsBox::flags() const {
    routes::BrowseFlags f;
    f.location = f.era = -1;
    for (std::size_t i = 0; i < m_locations.size(); ++i)
        if (m_locations[i]->isChecked())
            f.location = static_cast<int>(i);
    for (std::size_t i = 0; i < m_eras.size(); ++i)
        if (m_eras[i]->isChecked())
            f.era = static_cast<int>(i);
    for (std::size_t i = 0; i < f.terrain.size(); ++i)
        f.terrain[i] = i < m_terrains.size() && m_terrains[i]->isChecked();
    return f;
}

void BrowseFlagsBox::setFlags(const routes::BrowseFlags& f) {
    for (std::size_t i = 0; i < m_locations.size(); ++i)
        m_locations[i]->setChecked(static_cast<int>(i) == f.location);
    for (std::size_t i = 0; i < m_eras.size(); ++i)
        m_eras[i]->setChecked(static_cast<int>(i) == f.era);
    for (std::size_t i = 0; i < m_terrains.size(); ++i)
        m_terrains[i]->setChecked(f.terrain[i]);
}

std::optional<routes::BrowseFlags> askBrowseFlags(QWidget* parent) {
    QDialog dialog(parent);
    dialog.setObjectName("dlgBrowseFilter");
    dialog.setWindowTitle(QObject::tr("Route Template filtering"));
    auto* box = new BrowseFlagsBox(true, &dialog);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(box);
    layout->addLayout(okCancelRow(&dialog, &QDialog::accept, &QDialog::reject));
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return box->flags();
}

} // namespace velmora::ui
