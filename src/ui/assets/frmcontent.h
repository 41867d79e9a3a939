#pragma once
// frmContent, "Build List of Content": the files of the Content\Routes tree in a grid, with
// route and scenario names, and the list commands the asset list has. A row opens in the
// Content Editor (frmEdCont).

#include "frmedcont.h"
#include "listscreen.h"
#include "velmora/assets/contentlist.h"

#include <QPointer>

class QComboBox;
class QLineEdit;

namespace velmora::ui {

class frmContent : public ListScreen {
    Q_OBJECT
public:
    explicit frmContent(AppContext& ctx, QWidget* parent = nullptr);

    std::vector<assets::ContentRow> rows() const;
    std::vector<assets::ContentRow> selectedRows() const;
    // The screen's root, Content\Routes below the simulator's root.
    const std::filesystem::path& root() const { return m_root; }
    // The file a row names: root, Route, Sub-Folder, Sub-Folder2 and File Name.
    std::filesystem::path rowFile(const assets::ContentRow& row) const;
    // The Content Editor, once a row has been opened in it.
    frmEdCont* editor() const { return m_editor; }

    void Command1_Click() override;  // Add to List
    void Command10_Click() override; // Find Zero Length Files

public slots:
    // A row opened in the Content Editor (a double click, or a press, in the first column).
    void openRow(int row);

signals:
    void listBuilt();

private:
    void runList(assets::ContentListOptions options);
    std::vector<std::filesystem::path> filesOf(const assets::CellRows& rows) const override;

    std::filesystem::path m_root;
    QLineEdit* m_start = nullptr; // Text2
    QComboBox* m_mask = nullptr;  // Text1
    QPointer<frmEdCont> m_editor;
};

} // namespace velmora::ui
