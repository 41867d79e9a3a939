#pragma once
// The XML tree of the editor's second tab: the one place where a document is really parsed.
// An event-driven reader builds nodes with keys "nod1", "nod2", ... in document order, their
// attributes (qualified names as they stand, "d:type") and their joined character data.

#include <QString>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmora {

// Names, and values and texts that repeat (types, flags, the white space between elements),
// share one copy across the tree: a scenario of millions of nodes holds few distinct ones.
struct XmlNode {
    QString name;
    std::size_t number = 0; // place in document order, from 1
    QString characters;
    std::vector<std::pair<QString, QString>> attributes; // qualified name, value
    XmlNode* parent = nullptr;
    std::size_t row = 0; // place among the parent's children
    std::vector<std::unique_ptr<XmlNode>> children;

    // "nod" + number: unique in the document.
    QString key() const { return QStringLiteral("nod%1").arg(number); }
};

class XmlTree {
public:
    XmlTree() = default;
    ~XmlTree();
    XmlTree(const XmlTree&) = delete;
    XmlTree& operator=(const XmlTree&) = delete;

    // Parses the text (UTF-8 as the converter writes it). Stops early when `cancelled` says so;
    // `progress` gets the fraction read. On failure the tree is empty and `error` names the line.
    bool parse(std::string_view text, const std::function<void(double)>& progress = {},
               const std::function<bool()>& cancelled = {});

    void clear();
    bool empty() const { return !m_document; }
    // The document element, or null.
    XmlNode* document() const { return m_document.get(); }
    // Every node in document order (the order of the tree control, top to bottom).
    const std::vector<XmlNode*>& nodes() const { return m_order; }
    std::size_t size() const { return m_order.size(); }
    XmlNode* byKey(const QString& key) const;
    const QString& error() const { return m_error; }

private:
    std::unique_ptr<XmlNode> m_document;
    std::vector<XmlNode*> m_order;
    QString m_error;
};

// The three tree searches refuse a tree with more nodes than this.
constexpr std::size_t kTreeSearchLimit = 65500;

// "Unfortunately, this file is too long for this Search to work." + line break +
// "Please open in the Velmora editor and run Search there."
std::string treeTooLongMessage();

enum class TreeSearchKind {
    Names,       // Find and Find All: the text the tree shows for each node
    Shown // Find in Text: what selecting the node shows, its attribute names and its characters
};

// The index of the first node at or after `from` whose searched text holds `what`, ignoring
// case; -1 when none. The caller checks the size limit first.
long findInTree(const XmlTree& tree, std::size_t from, const QString& what, TreeSearchKind kind);

} // namespace velmora
