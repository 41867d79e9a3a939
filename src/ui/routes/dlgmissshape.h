#pragma once
// dlgMissShape: "Substitute for a missing Asset." The missing item's provider, product and path
// (Text1 to Text3), the replacement's (Text4 to Text6, all empty to remove the item), and the
// kind of item in Option1, which picks the tile folder the substitution walks.

#include "velmora/core/appcontext.h"
#include "velmora/routes/substitute.h"

#include <QDialog>

#include <array>
#include <optional>

class QLineEdit;
class QRadioButton;

namespace velmora::ui {

struct MissShape {
    routes::AssetName missing, replacement;
    routes::ItemKind kind = routes::ItemKind::Scenery;
};

class dlgMissShape : public QDialog {
    Q_OBJECT
public:
    dlgMissShape(AppContext& ctx, const MissShape& prefill, QWidget* parent = nullptr);
    // What OK stored; empty after Cancel.
    const std::optional<MissShape>& result() const { return m_result; }

public slots:
    void Command1_Click(); // browse for the replacement
    void Command2_Click(); // browse for the missing item
    void Command3_Click(); // Cancel
    void OKButton_Click();

private:
    // A chosen .bin cut at Assets into provider, product and the path with its .xml ending.
    std::optional<routes::AssetName> browse();
    AppContext& m_ctx;
    std::array<QLineEdit*, 6> m_text{};
    std::array<QRadioButton*, 4> m_option{};
    std::optional<MissShape> m_result;
};

} // namespace velmora::ui
