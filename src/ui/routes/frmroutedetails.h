#pragma once
// frmRouteDetails: a route's names, template, skies, weather and terrain, and its latitude and
// longitude, which Update Lat/Long saves.

#include "velmora/core/appcontext.h"
#include "velmora/routes/routetemplate.h"

#include <QDialog>

#include <array>

class QLineEdit;

namespace velmora::ui {

class frmRouteDetails : public QDialog {
    Q_OBJECT
public:
    frmRouteDetails(AppContext& ctx, const routes::RouteEntry& route, QWidget* parent = nullptr);
    // False when RouteProperties.xml could not be read (the screen has said so).
    bool loaded() const { return m_loaded; }
    QLineEdit* name(int i) const { return m_text1[static_cast<std::size_t>(i)]; }  // Text1
    QLineEdit* item(int i) const { return m_text2[static_cast<std::size_t>(i)]; }  // Text2: template, six items
    QLineEdit* latLong(int i) const { return m_text3[static_cast<std::size_t>(i)]; } // Text3

public slots:
    void Command2_Click(); // Update Lat/Long

private:
    AppContext& m_ctx;
    routes::RouteEntry m_route;
    bool m_loaded = false;
    std::array<QLineEdit*, 5> m_text1{};
    std::array<QLineEdit*, routes::kTemplateSlots + 1> m_text2{};
    std::array<QLineEdit*, 2> m_text3{};
};

} // namespace velmora::ui
