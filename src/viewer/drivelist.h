#pragma once

#include <QComboBox>

/// `Drive1`: the mounted volumes, then the bookmarks of the desktop. An item's data is its folder.
class DriveList : public QComboBox
{
    Q_OBJECT
public:
    explicit DriveList(QWidget *parent = nullptr);

    void fill();
    /// The chosen folder; empty for the line between the two kinds.
    QString folder() const { return currentData().toString(); }
    /// Marks the volume that holds the folder, without a change that anyone hears of.
    void showDriveOf(const QString &folder);
    /// After a choice: whether it could be entered. If not, the one before comes back.
    void settle(bool entered);

private:
    void choose(int index);
    int m_entered = 0;
};
