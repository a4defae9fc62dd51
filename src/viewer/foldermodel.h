#pragma once

#include <QAbstractItemModel>
#include <QIcon>

#include <memory>

/// The folders below the root as a tree, each listed when it is first opened. Hidden folders are left out unless a path
/// leads through one; links to folders stand like folders.
class FolderModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    explicit FolderModel(QObject *parent = nullptr);
    ~FolderModel() override;

    void setFolderIcon(const QIcon &icon);
    /// The row of a folder, listed as far down as it takes; invalid when the folder is not there or cannot be read.
    QModelIndex indexOf(const QString &folder);
    /// Without a separator at its end, but for the root.
    QString path(const QModelIndex &index) const;
    /// Lists the folder anew; what is below it closes when that has changed.
    void refresh(const QModelIndex &index);

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &index) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    bool hasChildren(const QModelIndex &parent = {}) const override;
    bool canFetchMore(const QModelIndex &parent) const override;
    void fetchMore(const QModelIndex &parent) override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    struct Node;
    Node *nodeOf(const QModelIndex &index) const;
    QModelIndex indexOfNode(Node *node) const;
    bool list(Node *node);
    void add(Node *node, const QStringList &names);
    Node *childNamed(Node *node, const QString &name);

    std::unique_ptr<Node> m_root;
    QIcon m_folderIcon;
};
