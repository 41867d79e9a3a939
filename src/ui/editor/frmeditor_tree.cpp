// The tree tab and the route tab of the main screen.

#include "frmeditor.h"
#include "velmora/routes/routes.h"

#include "../common/desktopui.h"
#include "velmora/core/routeindex.h"
#include "velmora/core/services.h"
#include "xmltreemodel.h"

#include <QAction>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPrintDialog>
#include <QPrinter>
#include <QTabWidget>
#include <QTableWidget>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextTable>
#include <QTreeView>

namespace velmora::ui {

void frmEditor::ClearCurrentFile(const QString& fileName) {
    m_treeModel->setTree(nullptr);
    m_xmlTree.clear();
    m_selectedNode = nullptr;
    m_treeFile = fileName;
    m_treeTried = false;
    m_treeSearchStart = 0;
    // The title names the user's document, not its scratch copy.
    m_caption = "XML File Editor - " + (m_doc.path.empty() ? fromQt(fileName) : m_doc.path.string());
    SetDirty(false);
    EnableNodeEdit(false);
}

bool frmEditor::LoadXMLFile() {
    m_treeTried = true;
    m_treeModel->setTree(nullptr);
    const std::string text = ReadTextFile(fromQt(m_treeFile));
    UserInterface& ui = m_ctx.ui();
    const bool large = text.size() > static_cast<std::size_t>(kBackgroundLoadBytes);
    if (large)
        ui.beginProgress("Building the tree of " + fromQt(m_treeFile), 1000);
    const bool ok = m_xmlTree.parse(
        text,
        [&](double fraction) {
            if (large) {
                ui.progress(static_cast<std::int64_t>(fraction * 1000));
                ui.pumpEvents();
            }
        },
        [&] { return large && ui.cancelled(); });
    if (large)
        ui.endProgress();
    if (!ok) {
        m_ctx.log().log("frmEditor", "LoadXMLFile", err::Conversion,
                        fromQt(m_treeFile) + ": " + fromQt(m_xmlTree.error()));
        return false;
    }
    m_treeModel->setTree(&m_xmlTree);
    m_tree->expand(m_treeModel->index(0, 0));
    return true;
}

void frmEditor::SetDirty(bool dirty) {
    QString caption = toQt(m_caption);
    if (dirty && !caption.endsWith('*'))
        caption += '*';
    setWindowTitle(caption);
    // The tree is for browsing and finding: its edits change neither the text nor what Save
    // writes, and the document is not marked changed by them. The mark says the tree differs.
    m_treeNote->setVisible(dirty);
}

void frmEditor::EnableNodeEdit(bool enabled) {
    m_attribsFrame->setEnabled(enabled);
    if (!enabled) {
        m_nodeEditing = true;
        m_attributes->clear();
        m_attributeValue->clear();
        m_characters->clear();
        m_nodeEditing = false;
    }
}

void frmEditor::showNode(const QModelIndex& index) {
    XmlNode* node = m_treeModel->node(index);
    m_selectedNode = node;
    m_nodeEditing = true;
    m_attributes->clear();
    m_attributeValue->clear();
    if (node) {
        for (const auto& [name, value] : node->attributes)
            m_attributes->addItem(name);
        m_characters->setPlainText(node->characters);
    } else {
        m_characters->clear();
    }
    m_nodeEditing = false;
    EnableNodeEdit(node != nullptr);
}

void frmEditor::setTreeSearchText(const QString& text) { m_treeFind->setText(text); }

QStringList frmEditor::boldNodes() const { return m_treeModel->boldKeys(); }

void frmEditor::treeSearch(TreeSearchKind kind, bool all) {
    if (m_xmlTree.size() > kTreeSearchLimit) {
        m_ctx.ui().message(treeTooLongMessage(), Icon::Information);
        return;
    }
    const QString what = m_treeFind->text();
    const auto& nodes = m_xmlTree.nodes();
    bool any = false;
    std::size_t start = m_treeSearchStart;
    for (;;) {
        const long hit = findInTree(m_xmlTree, start, what, kind);
        if (hit < 0)
            break;
        any = true;
        XmlNode* node = nodes[static_cast<std::size_t>(hit)];
        const QModelIndex index = m_treeModel->indexOf(node);
        m_tree->scrollTo(index);
        m_tree->setCurrentIndex(index);
        m_treeModel->setBold(node, true);
        start = static_cast<std::size_t>(hit) + 1;
        if (all)
            continue;
        if (m_ctx.ui().ask("Is this the item you wished to find?", Buttons::OkContinue, Icon::Question) == Answer::Ok) {
            m_treeSearchStart = start;
            return;
        }
        m_treeModel->setBold(node, false);
    }
    m_treeSearchStart = 0;
    if (!any)
        m_ctx.ui().message("Not found", Icon::Information);
}

void frmEditor::Command2_Click() { treeSearch(TreeSearchKind::Names, false); }
void frmEditor::Command3_Click() { treeSearch(TreeSearchKind::Names, true); }
void frmEditor::Command4_Click() { treeSearch(TreeSearchKind::Shown, false); }

void frmEditor::SSTab1_Click(int index) {
    // A document whose tree cannot be built says so once, not on every visit to the tab.
    if (index == 1 && !m_treeLoaded && !m_treeTried && !m_treeFile.isEmpty()) {
        m_treeLoaded = LoadXMLFile();
    } else if (index == 2) {
        Command9_Click();
    }
}

void frmEditor::Command9_Click() {
    // The routes as their folders hold them now; Reports/RouteIndex.csv only where the install
    // has no route to read (the root is not set, or its routes are elsewhere).
    RouteIndex found;
    for (const auto& route : routes::listRoutes(m_ctx)) {
        found.folders.push_back(route.folder);
        found.names.push_back(route.name);
    }
    m_ctx.routes = found.size() ? found : loadRouteIndex(m_ctx.reports() / "RouteIndex.csv");
    m_routes->setSortingEnabled(false);
    m_routes->clearContents();
    m_routes->setRowCount(static_cast<int>(m_ctx.routes.size()));
    for (std::size_t i = 0; i < m_ctx.routes.size(); ++i) {
        m_routes->setItem(static_cast<int>(i), 0, new QTableWidgetItem(toQt(m_ctx.routes.folders[i])));
        m_routes->setItem(static_cast<int>(i), 1, new QTableWidgetItem(toQt(m_ctx.routes.names[i])));
    }
    m_routes->setSortingEnabled(true);
}

void frmEditor::Command8_Click() {
    const int row = m_routes->currentRow();
    if (row < 0 || !m_routes->item(row, 0))
        return;
    const std::string folder = fromQt(m_routes->item(row, 0)->text());
    FileRequest request;
    request.title = "Open TrainSim file";
    request.startFolder = m_ctx.resolver.resolveForWrite(m_ctx.railWorks(), "Content\\Routes\\" + folder);
    request.filter = "All Files (*.*)|*.*";
    auto chosen = m_ctx.ui().chooseFile(request);
    if (!chosen || chosen->empty())
        return;
    openChosenPath(chosen->string());
}

void frmEditor::openChosenPath(const std::string& path) {
    m_ctx.currentFile = path;
    m_openedFromRouteList = true;
    m_tabs->setCurrentIndex(0);
    const std::string ext = toLowerAscii(std::filesystem::path(path).extension().string());
    if (ext == ".bin" || ext == ".xsec" || ext == ".geopcdx" || ext == ".proxybin") {
        mnuOpenRS_Click();
    } else if (ext == ".xml" || ext == ".cost" || ext == ".tgt" || ext == ".proxyxml" || ext == ".txt") {
        mnuXML_Click();
    } else {
        m_openedFromRouteList = false;
        m_ctx.ui().message(path + ": the texture viewer is not available yet", Icon::Information);
    }
}

void frmEditor::Command10_Click() {
    QPrinter printer;
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    QTextDocument page;
    QTextCursor c(&page);
    QTextTable* table = c.insertTable(m_routes->rowCount() + 1, 2);
    for (int col = 0; col < 2; ++col)
        table->cellAt(0, col).firstCursorPosition().insertText(m_routes->horizontalHeaderItem(col)->text());
    for (int r = 0; r < m_routes->rowCount(); ++r)
        for (int col = 0; col < 2; ++col)
            if (auto* item = m_routes->item(r, col))
                table->cellAt(r + 1, col).firstCursorPosition().insertText(item->text());
    page.print(&printer);
}

} // namespace velmora::ui
