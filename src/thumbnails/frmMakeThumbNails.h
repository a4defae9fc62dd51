#pragma once

#include "ui/controls.h"
#include "ui/form.h"
#include "ui/pathlabel.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>

/// The progress window of a thumbnail run. It has no caption and no button: a click on it asks the run to stop.
class frmMakeThumbNails : public FormDialog
{
    Q_OBJECT
public:
    explicit frmMakeThumbNails(QWidget *parent = nullptr);

    CONTROL(lblInformation, QLabel);
    CONTROL(lblMakingThumbnail, QLabel);
    CONTROL(lblFileName, PathLabel); ///< name of the file in work
    CONTROL(lblFileCount, QLabel); ///< "3 of 12"
    CONTROL(pgbThumbnails, QProgressBar); ///< 0 to 100
    CONTROL(lblSpeed, QLabel); ///< thumbnails a minute
    CONTROL(lblThumbnailsPer, QLabel);
    CONTROL(lblPerMin, QLabel);
    CONTROL(lblTimeRemaining, QLabel);
    CONTROL(lblCurrentSize, QLabel); ///< only in the run over all sizes
    CONTROL(chkShowThumbnail, QCheckBox);
    CONTROL(lblShowThumbnail, QLabel);
    CONTROL(imgThumbnail, QLabel); ///< the source of the thumbnail made last
    CONTROL(txtClose, QLineEdit); ///< out of sight; asks the run to stop when it gets the focus

    /// False asks the run to stop; who asks the user and hears a no sets it again.
    bool KeepGoing = true;

    static constexpr int usualWidth = 8400; ///< twips
    static constexpr int previewWidth = 9960;

    void Form_Load() override;
    void Form_Activate() override;
    void Form_QueryUnload(bool &cancel) override;

    /// Shows the window, owned by another, and returns at once.
    void showOver(QWidget *owner);
    /// As a click on the window.
    void CancelRun() { KeepGoing = false; }
    void chkShowThumbnail_Click();
    /// Shows a source in the preview, as large as there is room.
    void showPreview(const QImage &picture);

    void reject() override;
    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    void mouseReleaseEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    class QLayout *makeLines();
    void setWidth(int twips);
};
