#pragma once

#include "thumbnails/thumbnailsize.h"
#include "ui/controls.h"
#include "ui/form.h"

#include <QLabel>
#include <QPushButton>

/// Tells how large the thumbnail cache is, and compacts it.
class frmDatabaseStats : public FormDialog
{
    Q_OBJECT
public:
    explicit frmDatabaseStats(QWidget *parent = nullptr);

    CONTROL(Label1, QLabel);
    CONTROL(Label15, QLabel);
    CONTROL(lblFileSize, QLabel);
    CONTROL(Label17, QLabel);
    CONTROL(lblTotalThumbnails, QLabel);
    CONTROL(lblNumberOfThumbnails, QLabel);
    CONTROL_ARRAY(Label3, QLabel, 0, 1); ///< heads of the sizes
    CONTROL_ARRAY(Label14, QLabel, 0, 1); ///< heads of the counts
    CONTROL(cmdCompactDatabase, QPushButton);
    CONTROL(OKButton, QPushButton);

    /// The label of a size, 60 to 200 in steps of 10.
    QLabel *lblThumbnailCount(int size) const;
    void showTotal(int records);

    /// From its load until it is unloaded: whoever shows it waits for that.
    bool IsOpen = false;

    void Form_Load() override;
    void Form_Activate() override;
    void Form_Unload() override;
    void cmdCompactDatabase_Click();
    void OKButton_Click();
    void reject() override;

private:
    static constexpr int sizes = (largestThumbnailSize - smallestThumbnailSize) / thumbnailSizeStep + 1;
    class QLayout *makeCounts();
    std::array<QLabel *, sizes> m_counts{};
    bool m_compacting = false;
};
