#pragma once
// The XML tree of the editor's second tab as an item model: built lazily by the view, so a
// document of millions of nodes opens as fast as one of ten. Node names are editable; hits of
// the tree searches are shown bold.

#include "velmora/core/xmltree.h"

#include <QAbstractItemModel>
#include <QSet>

namespace velmora::ui {

class XmlTreeModel : public QAbstractItemModel {
    Q_OBJECT
public:
    explicit XmlTreeModel(QObject* parent = nullptr) : QAbstractItemModel(parent) {}

    // Shows the tree (or nothing for null); the model does not own it.
    void setTree(const XmlTree* tree);
    XmlNode* node(const QModelIndex& index) const;
    QModelIndex indexOf(const XmlNode* node) const;

    void setBold(const XmlNode* node, bool bold);
    void clearBold();
    QStringList boldKeys() const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

signals:
    // A name was refused or stored: "Node names cannot have spaces!" or the new name.
    void nameRefused();
    void nameChanged(XmlNode* node);

private:
    int rowOf(const XmlNode* node) const;
    const XmlTree* m_tree = nullptr;
    QSet<const XmlNode*> m_bold;
};

} // namespace velmora::ui
