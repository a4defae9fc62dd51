#pragma once

#include <QTimer>
#include <QTreeView>

class FolderModel;

/// `Dir1`: a tree of folders with one that is in use. Its path changes by a click, by Enter, a moment after the
/// highlight was moved by keys, and by setPath.
class FolderTree : public QTreeView
{
    Q_OBJECT
public:
    explicit FolderTree(QWidget *parent = nullptr);

    /// Without a separator at its end, but for the root; empty before the first setPath.
    QString path() const { return m_path; }
    /// False, and nothing changes, when the folder is not there or cannot be read.
    bool setPath(const QString &folder);
    /// The folder of the highlighted entry, which need not be the path yet.
    QString listPath() const;
    /// Makes the highlighted entry the path.
    void takeHighlighted();
    /// Lists the path's folder anew.
    void refresh();

Q_SIGNALS:
    /// The path has changed.
    void Change();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void currentChanged(const QModelIndex &current, const QModelIndex &previous) override;

private:
    FolderModel *m_folders;
    QString m_path;
    QTimer m_settle; ///< lets keys run through the entries without listing each folder on the way
    bool m_moving = false;
};
