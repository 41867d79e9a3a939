#pragma once
// frmRoute: Direct Route Setup. A new route template from a name, a provider and product, six
// items (four skies, weather, terrain) and where the route belongs in the simulator's list.

#include "browseflagsbox.h"
#include "velmora/core/appcontext.h"

#include <QDialog>

#include <array>

class QLineEdit;

namespace velmora::ui {

class frmRoute : public QDialog {
    Q_OBJECT
public:
    explicit frmRoute(AppContext& ctx, QWidget* parent = nullptr);

    // Text1: name, provider, product. Text2, Text3, Text4: provider, product and path of item i.
    QLineEdit* text1(int i) const { return m_text1[static_cast<std::size_t>(i)]; }
    QLineEdit* text2(int i) const { return m_text2[static_cast<std::size_t>(i)]; }
    QLineEdit* text3(int i) const { return m_text3[static_cast<std::size_t>(i)]; }
    QLineEdit* text4(int i) const { return m_text4[static_cast<std::size_t>(i)]; }
    BrowseFlagsBox* filters() const { return m_flags; }
    routes::TemplateRequest request() const;

public slots:
    void Command3_Click(int item); // picks an item
    void Command4_Click();         // Build Template
    void Command2_Click();         // Abandon

private:
    AppContext& m_ctx;
    std::array<QLineEdit*, 3> m_text1{};
    std::array<QLineEdit*, routes::kTemplateSlots> m_text2{}, m_text3{}, m_text4{};
    BrowseFlagsBox* m_flags;
};

} // namespace velmora::ui
