#include "app/frmTip.h"

#include "app/settings.h"
#include "app/translations.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "ui/icons.h"

#include <QFile>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QRandomGenerator>
#include <QVBoxLayout>

// Outside any namespace, as the macro asks.
static void registerTips()
{
    Q_INIT_RESOURCE(lumora);
}

namespace {

constexpr char showKey[] = "Show Tips at Startup";
constexpr qint64 longestFile = 1 << 20;

QStringList readTips()
{
    QStringList tips;
    if (const auto bytes = readFile(AppFolder() + QStringLiteral("TIPOFDAY.TXT"), longestFile))
        tips = tipsOf(*bytes);
    registerTips();
    QFile own(inTextLanguage(QStringLiteral(":/lumora/TIPOFDAY.TXT")));
    if (tips.isEmpty() && own.open(QIODevice::ReadOnly))
        tips = tipsOf(own.readAll());
    return tips;
}

}

QStringList tipsOf(const QByteArray &bytes)
{
    QStringList tips;
    const QStringList lines = QString::fromUtf8(bytes).split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        const QString tip = line.trimmed().left(500);
        if (!tip.isEmpty())
            tips.append(tip);
    }
    return tips;
}

frmTip::frmTip(QWidget *parent)
    : FormDialog(parent)
{
    setWindowTitle(tr("Tip of the Day"));
    setWindowIcon(themedIcon(QStringLiteral("lumora")));
    lblHeading->setText(tr("Did you know..."));
    QFont heading = lblHeading->font();
    heading.setPointSizeF(heading.pointSizeF() * 1.3);
    lblHeading->setFont(heading);
    lblTipText->setWordWrap(true);
    lblTipText->setTextFormat(Qt::PlainText);
    lblTipText->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    lblTipText->setMinimumSize(360, 5 * lblTipText->fontMetrics().height());
    lblTipText->setTextInteractionFlags(Qt::TextSelectableByMouse);
    picBulb->setAlignment(Qt::AlignTop);
    chkLoadTipsAtStartup->setText(tr("&Show Tips at Startup"));
    cmdNextTip->setText(tr("&Next Tip"));
    cmdOK->setText(tr("&OK"));
    cmdNextTip->setAutoDefault(false);
    cmdOK->setDefault(true);

    auto *text = new QGridLayout;
    text->setHorizontalSpacing(14);
    text->setVerticalSpacing(10);
    text->addWidget(picBulb, 0, 0, 2, 1);
    text->addWidget(lblHeading, 0, 1);
    text->addWidget(lblTipText, 1, 1);
    text->setColumnStretch(1, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(chkLoadTipsAtStartup);
    buttons->addStretch(1);
    buttons->addWidget(cmdNextTip);
    buttons->addWidget(cmdOK);
    auto *all = new QVBoxLayout(this);
    all->setContentsMargins(18, 18, 18, 14);
    all->setSpacing(14);
    all->addLayout(text, 1);
    all->addLayout(buttons);
    connect(chkLoadTipsAtStartup, &QCheckBox::clicked, this, &frmTip::chkLoadTipsAtStartup_Click);
    connect(cmdNextTip, &QPushButton::clicked, this, &frmTip::cmdNextTip_Click);
    connect(cmdOK, &QPushButton::clicked, this, &frmTip::cmdOK_Click);
    cmdOK->setFocus();
}

void frmTip::Form_Load()
{
    picBulb->setPixmap(themedIcon(QStringLiteral("dialog-information")).pixmap(QSize(48, 48), devicePixelRatio()));
    chkLoadTipsAtStartup->setChecked(truth(option(showKey, "1"), true));
    m_tips = readTips();
    // Each start begins at another tip, and the button goes through all of them.
    if (!m_tips.isEmpty())
        m_current = QRandomGenerator::global()->bounded(int(m_tips.size()));
    cmdNextTip->setEnabled(m_tips.size() > 1);
    cmdNextTip_Click();
}

void frmTip::cmdNextTip_Click()
{
    if (m_tips.isEmpty())
        return;
    m_current = (m_current + 1) % m_tips.size();
    lblTipText->setText(m_tips.at(m_current));
}

void frmTip::cmdOK_Click()
{
    unload<frmTip>();
}

void frmTip::reject()
{
    cmdOK_Click();
}

void frmTip::chkLoadTipsAtStartup_Click()
{
    saveOption(showKey, chkLoadTipsAtStartup->isChecked() ? QStringLiteral("1") : QStringLiteral("0"));
}
