#include "velmora/core/xmltree.h"

#include <QBuffer>
#include <QHash>
#include <QXmlStreamReader>

namespace velmora {

namespace {

// Frees a tree without recursion: the nodes' own destructors would call each other once per
// level, and a crafted document nests deeper than the stack holds. `order` lists every node
// with each parent before its children, so from the back every node's children are leaves.
void dismantle(std::unique_ptr<XmlNode>& root, std::vector<XmlNode*>& order) {
    for (auto it = order.rbegin(); it != order.rend(); ++it)
        (*it)->children.clear();
    order.clear();
    root.reset();
}

// Hands out one shared copy of each text it has seen. Unique texts (ids, coordinates) would only
// fill it, so past a bound it stops taking new ones and passes those through.
class SharedTexts {
public:
    // A text the reader shows only for now.
    QString get(QStringView text) {
        if (text.isEmpty())
            return {};
        if (const auto it = m_seen.constFind(text); it != m_seen.cend())
            return *it;
        return keep(text.toString());
    }
    // A text already held: the shared copy when there is one.
    QString share(const QString& text) {
        if (text.isEmpty())
            return {};
        if (const auto it = m_seen.constFind(QStringView(text)); it != m_seen.cend())
            return *it;
        return keep(text);
    }

private:
    QString keep(const QString& text) {
        if (m_seen.size() < kMaxTexts && text.size() <= kMaxLength)
            m_seen.insert(QStringView(text), text); // the key views the data the value shares
        return text;
    }
    static constexpr qsizetype kMaxTexts = 1 << 16;
    static constexpr qsizetype kMaxLength = 256;
    QHash<QStringView, QString> m_seen;
};

} // namespace

XmlTree::~XmlTree() { dismantle(m_document, m_order); }

void XmlTree::clear() {
    dismantle(m_document, m_order);
    m_error.clear();
}

bool XmlTree::parse(std::string_view text, const std::function<void(double)>& progress,
                    const std::function<bool()>& cancelled) {
    clear();
    // Read through a device, so that the reader decodes a buffer at a time rather than keeping
    // the whole text decoded beside the tree it builds.
    QBuffer input;
    input.setData(QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size())));
    input.open(QIODevice::ReadOnly);
    QXmlStreamReader reader(&input);
    std::unique_ptr<XmlNode> root;
    XmlNode* current = nullptr;
    std::size_t counter = 1;
    std::vector<XmlNode*> order;
    std::size_t events = 0;
    SharedTexts names, texts;
    while (!reader.atEnd()) {
        const auto token = reader.readNext();
        if ((++events & 0xFFFF) == 0) {
            if (cancelled && cancelled()) {
                dismantle(root, order);
                m_error = QStringLiteral("Stopped");
                return false;
            }
            if (progress && !text.empty())
                progress(static_cast<double>(reader.characterOffset()) / static_cast<double>(text.size()));
        }
        switch (token) {
        case QXmlStreamReader::StartElement: {
            auto node = std::make_unique<XmlNode>();
            node->name = names.get(reader.qualifiedName());
            node->number = counter++;
            const auto attributes = reader.attributes();
            node->attributes.reserve(static_cast<std::size_t>(attributes.size()));
            for (const auto& a : attributes)
                node->attributes.emplace_back(names.get(a.qualifiedName()), texts.get(a.value()));
            node->parent = current;
            XmlNode* raw = node.get();
            order.push_back(raw);
            if (current) {
                raw->row = current->children.size();
                current->children.push_back(std::move(node));
            } else {
                root = std::move(node);
            }
            current = raw;
            break;
        }
        case QXmlStreamReader::Characters:
            if (current)
                current->characters += reader.text();
            break;
        case QXmlStreamReader::EndElement:
            if (current) {
                // Its text is complete now: shared with every element of the same text.
                current->characters = texts.share(current->characters);
                current = current->parent;
            }
            break;
        default:
            break;
        }
    }
    if (reader.hasError()) {
        dismantle(root, order);
        m_error = QStringLiteral("Line %1, column %2: %3")
                      .arg(reader.lineNumber())
                      .arg(reader.columnNumber())
                      .arg(reader.errorString());
        return false;
    }
    if (progress)
        progress(1.0);
    m_document = std::move(root);
    m_order = std::move(order);
    return true;
}

XmlNode* XmlTree::byKey(const QString& key) const {
    // Keys are "nod" + the node's place in document order, counted from 1.
    if (!key.startsWith(QLatin1String("nod")))
        return nullptr;
    bool ok = false;
    const qulonglong n = QStringView(key).mid(3).toULongLong(&ok);
    if (!ok || n == 0 || n > m_order.size())
        return nullptr;
    return m_order[n - 1];
}

std::string treeTooLongMessage() {
    return "Unfortunately, this file is too long for this Search to work.\n"
           "Please open in the Velmora editor and run Search there.";
}

long findInTree(const XmlTree& tree, std::size_t from, const QString& what, TreeSearchKind kind) {
    const auto& nodes = tree.nodes();
    for (std::size_t i = from; i < nodes.size(); ++i) {
        const XmlNode* n = nodes[i];
        if (kind == TreeSearchKind::Names) {
            if (n->name.contains(what, Qt::CaseInsensitive))
                return static_cast<long>(i);
            continue;
        }
        if (n->characters.contains(what, Qt::CaseInsensitive))
            return static_cast<long>(i);
        for (const auto& [name, value] : n->attributes)
            if (name.contains(what, Qt::CaseInsensitive))
                return static_cast<long>(i);
    }
    return -1;
}

} // namespace velmora
