#include "thumbnails/frmDatabaseStats.h"

#include "app/globals.h"
#include "thumbnails/cachetexts.h"
#include "thumbnails/frmDataBase.h"
#include "ui/background.h"
#include "ui/guards.h"
#include "ui/yield.h"
#include "viewer/frmMainViewer.h"
#include "viewer/frmMessage.h"

#include <QBoxLayout>
#include <QGridLayout>

namespace {

/// The labels of the sizes, 60 first.
constexpr const char *sizeLabels[] = {"Label4", "Label5", "Label6", "Label7", "Label8", "Label9", "Label10", "Label11",
    "Label12", "Label13", "Label16", "Label18", "Label19", "Label20", "Label2"};
constexpr auto toTheRight = Qt::AlignRight | Qt::AlignVCenter;
constexpr int rowsOnTheLeft = 8; ///< 60 to 130

}

frmDatabaseStats::frmDatabaseStats(QWidget *parent)
    : FormDialog(parent)
{
    setWindowTitle(tr("Tessaly Lumora - Database Stats"));
    Label1->setText(tr("Thumbnail Database Statistics:"));
    QFont heading = Label1->font();
    heading.setBold(true);
    Label1->setFont(heading);
    Label15->setText(tr("Database File Size:"));
    Label17->setText(tr("Total Thumnails:"));
    lblNumberOfThumbnails->setText(tr("Number of Thumbails:"));
    lblFileSize->setAlignment(toTheRight);
    lblTotalThumbnails->setAlignment(toTheRight);
    lblFileSize->setAccessibleDescription(Label15->text());
    lblTotalThumbnails->setAccessibleDescription(Label17->text());
    cmdCompactDatabase->setText(tr("&Compact Database"));
    cmdCompactDatabase->setToolTip(tr("Gives the room of deleted thumbnails back to the disk."));
    cmdCompactDatabase->setAutoDefault(false);
    OKButton->setText(tr("&OK"));
    OKButton->setDefault(true);

    auto *sums = new QGridLayout;
    sums->setHorizontalSpacing(12);
    sums->addWidget(Label15, 0, 0);
    sums->addWidget(lblFileSize, 0, 1);
    sums->addWidget(Label17, 1, 0);
    sums->addWidget(lblTotalThumbnails, 1, 1);
    sums->setColumnStretch(1, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(cmdCompactDatabase);
    buttons->addStretch(1);
    buttons->addWidget(OKButton);
    auto *all = new QVBoxLayout(this);
    all->setContentsMargins(18, 16, 18, 14);
    all->setSpacing(10);
    all->addWidget(Label1);
    all->addLayout(sums);
    all->addSpacing(4);
    all->addWidget(lblNumberOfThumbnails);
    all->addLayout(makeCounts(), 1);
    all->addSpacing(6);
    all->addLayout(buttons);
    setMinimumWidth(340);
    setTabOrder(cmdCompactDatabase, OKButton);
    OKButton->setFocus();
    connect(cmdCompactDatabase, &QPushButton::clicked, this, &frmDatabaseStats::cmdCompactDatabase_Click);
    connect(OKButton, &QPushButton::clicked, this, &frmDatabaseStats::OKButton_Click);
}

QLayout *frmDatabaseStats::makeCounts()
{
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(10);
    grid->setColumnMinimumWidth(2, 28);
    for (int side = 0; side < 2; ++side) {
        Label3[side]->setText(tr("Size:"));
        Label14[side]->setText(tr("No. of Items:"));
        Label3[side]->setAlignment(toTheRight);
        Label14[side]->setAlignment(toTheRight);
        grid->addWidget(Label3[side], 0, side * 3);
        grid->addWidget(Label14[side], 0, side * 3 + 1);
        grid->setColumnStretch(side * 3 + 1, 1);
    }
    for (int index = 0; index < sizes; ++index) {
        const int size = smallestThumbnailSize + index * thumbnailSizeStep;
        auto *label = makeControl<QLabel>(this, sizeLabels[index]);
        label->setText(QString::number(size));
        QLabel *count = m_counts[std::size_t(index)] = new QLabel(this);
        count->setObjectName(QStringLiteral("lblThumbnailCount(%1)").arg(size));
        count->setAccessibleDescription(tr("Thumbnails of size %1").arg(size));
        const int side = index < rowsOnTheLeft ? 0 : 1;
        const int row = 1 + index - side * rowsOnTheLeft;
        label->setAlignment(toTheRight);
        count->setAlignment(toTheRight);
        grid->addWidget(label, row, side * 3);
        grid->addWidget(count, row, side * 3 + 1);
    }
    return grid;
}

QLabel *frmDatabaseStats::lblThumbnailCount(int size) const
{
    return m_counts[std::size_t((size - smallestThumbnailSize) / thumbnailSizeStep)];
}

void frmDatabaseStats::showTotal(int records)
{
    lblTotalThumbnails->setText(groupedNumber(records));
}

void frmDatabaseStats::Form_Load()
{
    IsOpen = true;
    setParent(&form<frmMainViewer>(), windowFlags() | Qt::Dialog);
}

void frmDatabaseStats::Form_Activate()
{
    if (m_compacting || globals.ProgramExiting)
        return;
    const Hourglass hourglass;
    PaintFormBackground(this, QStringLiteral("OTHER"));
    auto &cache = form<frmDataBase>();
    cache.CloseDatabase();
    lblFileSize->setText(groupedNumber(cache.FileSize()));
    cache.OpenImagesDatabase(QString());
    cache.DatabaseStats();
}

void frmDatabaseStats::Form_Unload()
{
    IsOpen = false;
}

void frmDatabaseStats::cmdCompactDatabase_Click()
{
    if (m_compacting)
        return;
    const QPointer<frmDatabaseStats> here(this);
    m_compacting = true;
    cmdCompactDatabase->setEnabled(false);
    form<frmMessage>().showOver(this, compactionText(CompactionTakes::Seconds));
    Yield();
    if (!globals.ProgramExiting)
        form<frmDataBase>().CompactDatabase();
    unload<frmMessage>();
    if (!here)
        return;
    m_compacting = false;
    cmdCompactDatabase->setEnabled(true);
    if (!globals.ProgramExiting && !isUnloaded())
        Form_Activate();
}

void frmDatabaseStats::OKButton_Click()
{
    unload<frmDatabaseStats>();
}

void frmDatabaseStats::reject()
{
    OKButton_Click();
}
