#pragma once
// The route list's filter choice, as frmRoute, frmThumbnail and Check Route Template show it:
// one location (Option1), one era (Option2) and any terrains (Check1).

#include "velmora/routes/routetemplate.h"

#include <QWidget>

#include <optional>
#include <vector>

class QCheckBox;
class QRadioButton;

namespace velmora::ui {

class BrowseFlagsBox : public QWidget {
    Q_OBJECT
public:
    explicit BrowseFlagsBox(bool withTerrain = true, QWidget* parent = nullptr);
    routes::BrowseFlags flags() const;
    void setFlags(const routes::BrowseFlags& flags);

private:
    std::vector<QRadioButton*> m_locations, m_eras;
    std::vector<QCheckBox*> m_terrains;
};

// The filter choice in a small dialog of its own; nothing when it was cancelled.
std::optional<routes::BrowseFlags> askBrowseFlags(QWidget* parent);

} // namespace velmora::ui
