#pragma once
// What the asset screen's tests share: the grid listed from the demo install with some rows
// selected in turn, the last journal entry undone, and values read out of a binary document.

#include "assets/frmassets.h"
#include "demoscreens.h"
#include "velmora/core/convert.h"
#include "velmora/core/journal.h"
#include "velmora/core/xmltext.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QTableWidget>
#include <QtTest>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace velmora::test {

// A document's XML, or a text no search matches when it does not decode.
inline std::string documentXml(const std::filesystem::path& file) {
    std::string xml;
    return binToXmlText(file, xml) ? xml : std::string("(does not decode)");
}

// The first value of `tag` in a document, from the first `after` on when given.
inline std::string documentDetail(const std::filesystem::path& file, const char* tag, const char* after = nullptr) {
    const std::string xml = documentXml(file);
    std::size_t pos = after ? InStr(1, xml, after, Match::Binary) : 1;
    std::string value;
    if (pos)
        GetDetail(xml, pos, tag, value);
    return value;
}

// The install's assets (its rolling stock only, or everything) in the grid, and the rows of
// these paths selected in turn. Call through QVERIFY-free code: a missing row fails the test.
inline void listAndSelect(ui::frmAssets& screen, const std::filesystem::path& assets,
                          const std::vector<std::string>& paths, bool rollingStock = true) {
    screen.findChild<QLineEdit*>("Text2")->setText(QString::fromStdString(assets.string()));
    screen.findChild<QCheckBox*>("Check1")->setChecked(rollingStock);
    screen.Command1_Click();
    const auto rows = screen.rows();
    screen.grid()->clearSelection();
    for (const auto& path : paths) {
        const auto it = std::find_if(rows.begin(), rows.end(), [&](const auto& r) { return r.path == path; });
        QVERIFY2(it != rows.end(), path.c_str());
        screen.grid()->selectionModel()->select(screen.grid()->model()->index(static_cast<int>(it - rows.begin()), 0),
                                                QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    QCOMPARE(screen.selectedRows().size(), paths.size());
}

inline void undoLast(AppContext& ctx) {
    const auto last = lastUndoableEntry(ctx.journal().entries());
    QVERIFY(last);
    QVERIFY(undoEntry(ctx.files(), *last, false).ok);
}

} // namespace velmora::test
