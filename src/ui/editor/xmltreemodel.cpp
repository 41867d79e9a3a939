#include "xmltreemodel.h"

#include <QFont>

namespace velmora::ui {

void XmlTreeModel::setTree(const XmlTree* tree) {
    beginResetModel();
    m_tree = tree;
    m_bold.clear();
    endResetModel();
}

XmlNode* XmlTreeModel::node(const QModelIndex& index) const {
    return index.isValid() ? static_cast<XmlNode*>(index.internalPointer()) : nullptr;
}

int XmlTreeModel::rowOf(const XmlNode* n) const { return static_cast<int>(n->row); }

QModelIndex XmlTreeModel::indexOf(const XmlNode* n) const {
    if (!n)
        return {};
    return createIndex(rowOf(n), 0, const_cast<XmlNode*>(n));
}

QModelIndex XmlTreeModel::index(int row, int column, const QModelIndex& parent) const {
    if (!m_tree || m_tree->empty() || column != 0 || row < 0)
        return {};
    if (!parent.isValid())
        return row == 0 ? createIndex(0, 0, m_tree->document()) : QModelIndex();
    const XmlNode* p = node(parent);
    if (static_cast<std::size_t>(row) >= p->children.size())
        return {};
    return createIndex(row, 0, p->children[static_cast<std::size_t>(row)].get());
}

QModelIndex XmlTreeModel::parent(const QModelIndex& child) const {
    const XmlNode* n = node(child);
    if (!n || !n->parent)
        return {};
    return indexOf(n->parent);
}

int XmlTreeModel::rowCount(const QModelIndex& parent) const {
    if (!m_tree || m_tree->empty())
        return 0;
    if (!parent.isValid())
        return 1;
    return static_cast<int>(node(parent)->children.size());
}

int XmlTreeModel::columnCount(const QModelIndex&) const { return 1; }

QVariant XmlTreeModel::data(const QModelIndex& index, int role) const {
    const XmlNode* n = node(index);
    if (!n)
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole: return n->name;
    case Qt::FontRole:
        if (m_bold.contains(n)) {
            QFont f;
            f.setBold(true);
            return f;
        }
        return {};
    case Qt::UserRole: return n->key();
    default: return {};
    }
}

bool XmlTreeModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    XmlNode* n = node(index);
    if (!n || role != Qt::EditRole)
        return false;
    const QString name = value.toString();
    if (name.contains(' ')) {
        emit nameRefused();
        return false;
    }
    n->name = name;
    emit dataChanged(index, index);
    emit nameChanged(n);
    return true;
}

Qt::ItemFlags XmlTreeModel::flags(const QModelIndex& index) const {
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable;
}

void XmlTreeModel::setBold(const XmlNode* n, bool bold) {
    if (bold)
        m_bold.insert(n);
    else
        m_bold.remove(n);
    const QModelIndex i = indexOf(n);
    emit dataChanged(i, i, {Qt::FontRole});
}

void XmlTreeModel::clearBold() {
    const auto nodes = m_bold;
    m_bold.clear();
    for (const XmlNode* n : nodes) {
        const QModelIndex i = indexOf(n);
        emit dataChanged(i, i, {Qt::FontRole});
    }
}

QStringList XmlTreeModel::boldKeys() const {
    QStringList keys;
    for (const XmlNode* n : m_bold)
        keys << n->key();
    keys.sort();
    return keys;
}

} // namespace velmora::ui
