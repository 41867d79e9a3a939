#pragma once
// dlgMode: "Select 7zip Mode", how an unpack treats the files that are already there.

#include "velmora/archives/unpack.h"

#include <QDialog>

#include <optional>

class QRadioButton;

namespace velmora::ui {

class dlgMode : public QDialog {
    Q_OBJECT
public:
    explicit dlgMode(archives::UnpackMode initial = archives::UnpackMode::Overwrite, QWidget* parent = nullptr);

    QRadioButton* option(int index) const { return m_options[index]; } // Option1(0) to Option1(5)
    // The mode set when OK was pressed; nothing after Cancel.
    std::optional<archives::UnpackMode> mode() const { return m_chosen; }

    // Shows the dialog and gives the chosen mode, or nothing.
    static std::optional<archives::UnpackMode> choose(archives::UnpackMode initial, QWidget* parent);

public slots:
    void OKButton_Click();
    void CancelButton_Click();

private:
    QRadioButton* m_options[archives::kUnpackModes];
    std::optional<archives::UnpackMode> m_chosen;
};

} // namespace velmora::ui
