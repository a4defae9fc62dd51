#include "viewer/foldermodel.h"

#include "platform/filepath.h"
#include "platform/files.h"

#include <algorithm>
#include <vector>

struct FolderModel::Node
{
    QString name;
    QString path; ///< with a separator at its end
    Node *parent = nullptr;
    int row = 0;
    bool listed = false;
    bool readable = true;
    std::vector<std::unique_ptr<Node>> children;

    QStringList childNames() const
    {
        QStringList names;
        for (const std::unique_ptr<Node> &child : children)
            names.append(child->name);
        return names;
    }
};

namespace {

/// Sub-folders in the program's order, links to folders among them.
std::optional<QStringList> folderNames(const QString &folder)
{
    const Result<FolderListing> listing = listFolder(folder);
    if (!listing)
        return std::nullopt;
    QStringList names = listing->folders + listing->folderLinks;
    std::sort(names.begin(), names.end(), nameLess);
    return names;
}

} // namespace

FolderModel::FolderModel(QObject *parent)
    : QAbstractItemModel(parent)
    , m_root(std::make_unique<Node>())
{
    m_root->name = QStringLiteral("/");
    m_root->path = QStringLiteral("/");
}

FolderModel::~FolderModel() = default;

void FolderModel::setFolderIcon(const QIcon &icon)
{
    m_folderIcon = icon;
}

QModelIndex FolderModel::indexOf(const QString &folder)
{
    if (!folder.startsWith(QLatin1Char('/')))
        return {};
    Node *node = m_root.get();
    const QStringList steps = absolutePath(folder, QStringLiteral("/")).split(QLatin1Char('/'), Qt::SkipEmptyParts);
    for (const QString &step : steps) {
        // A folder on the way may be closed to listing and still let one through.
        list(node);
        node = childNamed(node, step);
        if (!node)
            return {};
    }
    return list(node) ? indexOfNode(node) : QModelIndex();
}

QString FolderModel::path(const QModelIndex &index) const
{
    const Node *node = nodeOf(index);
    return !node || node == m_root.get() ? QStringLiteral("/") : node->path.chopped(1);
}

void FolderModel::refresh(const QModelIndex &index)
{
    Node *node = nodeOf(index);
    if (!node || !node->listed)
        return;
    const std::optional<QStringList> names = folderNames(node->path);
    if (names && *names == node->childNames())
        return;
    if (!node->children.empty()) {
        beginRemoveRows(index, 0, static_cast<int>(node->children.size()) - 1);
        node->children.clear();
        endRemoveRows();
    }
    node->readable = names.has_value();
    if (names)
        add(node, *names);
}

FolderModel::Node *FolderModel::nodeOf(const QModelIndex &index) const
{
    return index.isValid() ? static_cast<Node *>(index.internalPointer()) : nullptr;
}

QModelIndex FolderModel::indexOfNode(Node *node) const
{
    return createIndex(node->row, 0, node);
}

bool FolderModel::list(Node *node)
{
    // One that could not be read is tried again each time: it may have been mounted or opened since.
    if (node->listed && node->readable)
        return true;
    node->listed = true;
    const std::optional<QStringList> names = folderNames(node->path);
    node->readable = names.has_value();
    if (names)
        add(node, *names);
    return node->readable;
}

void FolderModel::add(Node *node, const QStringList &names)
{
    if (names.isEmpty())
        return;
    const int first = static_cast<int>(node->children.size());
    beginInsertRows(indexOfNode(node), first, first + static_cast<int>(names.size()) - 1);
    for (const QString &name : names) {
        auto child = std::make_unique<Node>();
        child->name = name;
        child->path = node->path + name + QLatin1Char('/');
        child->parent = node;
        child->row = static_cast<int>(node->children.size());
        node->children.push_back(std::move(child));
    }
    endInsertRows();
}

/// The child of that name; one that the listing left out, hidden or new, joins at the end when it is there.
FolderModel::Node *FolderModel::childNamed(Node *node, const QString &name)
{
    const auto found = std::find_if(node->children.begin(), node->children.end(),
        [&](const std::unique_ptr<Node> &child) { return child->name == name; });
    if (found != node->children.end())
        return found->get();
    if (!folderExists(node->path + name))
        return nullptr;
    add(node, {name});
    return node->children.back().get();
}

QModelIndex FolderModel::index(int row, int column, const QModelIndex &parent) const
{
    if (column != 0 || row < 0)
        return {};
    const Node *node = nodeOf(parent);
    if (!node)
        return row == 0 ? indexOfNode(m_root.get()) : QModelIndex();
    return row < static_cast<int>(node->children.size())
        ? indexOfNode(node->children[static_cast<std::size_t>(row)].get())
        : QModelIndex();
}

QModelIndex FolderModel::parent(const QModelIndex &index) const
{
    const Node *node = nodeOf(index);
    return node && node->parent ? indexOfNode(node->parent) : QModelIndex();
}

int FolderModel::rowCount(const QModelIndex &parent) const
{
    const Node *node = nodeOf(parent);
    return node ? static_cast<int>(node->children.size()) : 1;
}

int FolderModel::columnCount(const QModelIndex &) const
{
    return 1;
}

bool FolderModel::hasChildren(const QModelIndex &parent) const
{
    const Node *node = nodeOf(parent);
    return !node || !node->listed || !node->children.empty();
}

bool FolderModel::canFetchMore(const QModelIndex &parent) const
{
    const Node *node = nodeOf(parent);
    return node && !node->listed;
}

void FolderModel::fetchMore(const QModelIndex &parent)
{
    if (Node *node = nodeOf(parent))
        ignore(list(node));
}

QVariant FolderModel::data(const QModelIndex &index, int role) const
{
    const Node *node = nodeOf(index);
    if (!node)
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return displayPath(node->name);
    case Qt::ToolTipRole:
        return displayPath(node->path);
    case Qt::DecorationRole:
        return m_folderIcon;
    default:
        return {};
    }
}
