#pragma once

#include "ui/controls.h"
#include "ui/form.h"
#include "ui/listbox.h"

/// A list box that holds the names of the files of one folder that match its pattern.
class FileListBox : public ListBox
{
    Q_OBJECT
public:
    using ListBox::ListBox;

    QString path() const { return m_path; }
    QString pattern() const { return m_pattern; }
    /// Takes effect at the next setPath.
    void setPattern(const QString &pattern) { m_pattern = pattern; }
    void setPath(const QString &folder);

private:
    QString m_path;
    QString m_pattern;
};

/// The hidden collector: one file list for each decoder family, and one that gathers the result.
class frmFileListForm : public FormWindow
{
    Q_OBJECT
public:
    explicit frmFileListForm(QWidget *parent = nullptr);

    CONTROL(flstGVBOX, FileListBox);
    CONTROL(flstMediaPlayer, FileListBox);
    CONTROL(flstPoly, FileListBox);
    CONTROL(flstAll, ListBox);

    /// Fills flstAll with the names of one folder by the patterns of the globals, then the dialog's File1.
    void CollectAllFiles(const QString &folder);
    /// Copies flstAll into File1 of an open folder dialog; an empty flstAll leaves File1 alone.
    void FillSelectDirectoryFileListBox();

private:
    int m_ticket = 0; ///< grows with each collection; one that finds a newer one inside a yield ends
};
