#include "app/frmIntroSelect.h"

#include "app/settings.h"
#include "ui/guards.h"
#include "ui/icons.h"
#include "viewer/frmMainViewer.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr char showKey[] = "Show Intro Select at Startup";

struct Choice
{
    const char *label;
    const char *icon;
    void (frmMainViewer::*run)();
};

// clang-format off
constexpr Choice choices[] = {
    {QT_TRANSLATE_NOOP("frmIntroSelect", "S&elect (Browse for) Media Folder"), "folder-open", &frmMainViewer::mnuFileDirectory_Click},
    {QT_TRANSLATE_NOOP("frmIntroSelect", "O&pen Lumora Standard Media List"), "lumora-list-load", &frmMainViewer::mnuFileLoad_Click},
    {QT_TRANSLATE_NOOP("frmIntroSelect", "Open Lumora &User Media List"), "document-open", &frmMainViewer::mnuFileLoadAs_Click},
    {QT_TRANSLATE_NOOP("frmIntroSelect", "&Display Pixelon / Zoom Viewer"), "lumora-editor", &frmMainViewer::mnuPictureViewer_Click},
    {QT_TRANSLATE_NOOP("frmIntroSelect", "D&isplay Folder Browser Viewer"), "lumora-browse-folder", &frmMainViewer::mnuBrowseFolderView_Click},
};
// clang-format on

void setBold(QWidget *control, bool bold)
{
    QFont font = control->font();
    if (font.bold() == bold)
        return;
    font.setBold(bold);
    control->setFont(font);
}

/// A button whose caption turns bold keeps its width.
void reserveBoldWidth(QPushButton *button)
{
    QFont bold = button->font();
    bold.setBold(true);
    const int more =
        QFontMetrics(bold).horizontalAdvance(button->text()) - button->fontMetrics().horizontalAdvance(button->text());
    button->setMinimumWidth(button->sizeHint().width() + qMax(0, more));
}

}

frmIntroSelect::frmIntroSelect(QWidget *parent)
    : FormDialog(parent)
{
    setWindowTitle(tr("Select Viewer:"));
    setWindowIcon(themedIcon(QStringLiteral("lumora")));
    lblHeading->setText(tr("C&hoose what you want to do"));
    lblHeading->setBuddy(optSelect[0]);
    QFont heading = lblHeading->font();
    heading.setPointSizeF(heading.pointSizeF() * 1.3);
    lblHeading->setFont(heading);

    cmdOK->setText(tr("&Select"));
    cmdOK->setDefault(true);
    cmdCancel->setText(tr("&Close"));
    cmdCancel->setAutoDefault(false);
    for (QPushButton *button : {cmdOK, cmdCancel}) {
        reserveBoldWidth(button);
        button->setMouseTracking(true);
        button->installEventFilter(this);
    }
    chkShowAtStartUp->setText(tr("Sh&ow at startup"));
    lblShowAtStartUp->setText(tr("\"Select Viewer\" of the File menu brings this window back."));
    lblShowAtStartUp->setForegroundRole(QPalette::PlaceholderText);
    lblShowAtStartUp->setWordWrap(true);
    lblShowAtStartUp->installEventFilter(this);
    makeChoices();
    layOut();
    connect(cmdOK, &QPushButton::clicked, this, &frmIntroSelect::cmdOK_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmIntroSelect::cmdCancel_Click);
    connect(chkShowAtStartUp, &QCheckBox::clicked, this, &frmIntroSelect::chkShowAtStartUp_Click);
}

void frmIntroSelect::makeChoices()
{
    for (int i = 0; i < int(std::size(choices)); ++i) {
        const QString text = tr(choices[i].label);
        lblSelect[i]->setText(text);
        lblSelect[i]->setBuddy(optSelect[i]);
        lblSelect[i]->installEventFilter(this);
        optSelect[i]->setAccessibleName(QString(text).remove(QLatin1Char('&')));
    }
    optSelect[0]->setChecked(true);
}

void frmIntroSelect::layOut()
{
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(10);
    grid->setVerticalSpacing(10);
    grid->setColumnStretch(2, 1);
    for (int i = 0; i < int(std::size(choices)); ++i) {
        auto *picture = new QLabel;
        picture->setPixmap(themedIcon(QString::fromLatin1(choices[i].icon)).pixmap(QSize(24, 24), devicePixelRatio()));
        grid->addWidget(optSelect[i], i, 0);
        grid->addWidget(picture, i, 1);
        grid->addWidget(lblSelect[i], i, 2);
    }
    auto *head = new QHBoxLayout;
    head->setSpacing(12);
    head->addWidget(imgLogo);
    head->addWidget(lblHeading, 1);
    head->addWidget(Image1);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdCancel);
    auto *line = new QFrame;
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    auto *all = new QVBoxLayout(this);
    all->setSpacing(12);
    all->setContentsMargins(18, 18, 18, 14);
    all->addLayout(head);
    all->addLayout(grid);
    all->addWidget(line);
    all->addWidget(chkShowAtStartUp);
    all->addWidget(lblShowAtStartUp);
    all->addLayout(buttons);
    setMinimumWidth(420);
    QWidget *before = nullptr;
    for (QWidget *control : std::initializer_list<QWidget *>{optSelect[0], optSelect[1], optSelect[2], optSelect[3],
             optSelect[4], chkShowAtStartUp, cmdOK, cmdCancel}) {
        if (before)
            setTabOrder(before, control);
        before = control;
    }
    optSelect[0]->setFocus();
}

bool frmIntroSelect::isWanted()
{
    return truth(option(showKey, "1"), true);
}

void frmIntroSelect::Form_Load()
{
    if (!isWanted()) {
        // Not from inside its own load: whoever asked for the window gets it first.
        QMetaObject::invokeMethod(
            this, [] { unload<frmIntroSelect>(); }, Qt::QueuedConnection);
        return;
    }
    chkShowAtStartUp->setChecked(true);
    imgLogo->setPixmap(themedIcon(QStringLiteral("lumora")).pixmap(QSize(48, 48), devicePixelRatio()));
    Image1->setPixmap(themedIcon(QStringLiteral("image-x-generic")).pixmap(QSize(48, 48), devicePixelRatio()));
}

void frmIntroSelect::cmdOK_Click()
{
    if (m_running)
        return;
    const ScopedFlag running(m_running);
    for (int i = 0; i < int(std::size(choices)); ++i) {
        if (optSelect[i]->isChecked()) {
            (form<frmMainViewer>().*choices[i].run)();
            break;
        }
    }
    unload<frmIntroSelect>();
}

void frmIntroSelect::cmdCancel_Click()
{
    unload<frmIntroSelect>();
}

void frmIntroSelect::reject()
{
    cmdCancel_Click();
}

void frmIntroSelect::chkShowAtStartUp_Click()
{
    saveOption(showKey, chkShowAtStartUp->isChecked() ? QStringLiteral("1") : QStringLiteral("0"));
}

bool frmIntroSelect::clickedLabel(const QObject *label)
{
    if (label == lblShowAtStartUp) {
        chkShowAtStartUp->toggle();
        chkShowAtStartUp_Click();
        return true;
    }
    const auto choice = std::find(lblSelect.begin(), lblSelect.end(), label);
    if (choice == lblSelect.end())
        return false;
    QRadioButton *button = optSelect[int(choice - lblSelect.begin())];
    button->setFocus();
    button->setChecked(true);
    return true;
}

bool frmIntroSelect::eventFilter(QObject *watched, QEvent *event)
{
    const bool button = watched == cmdOK || watched == cmdCancel;
    if (button && event->type() == QEvent::MouseMove) {
        setBold(cmdOK, watched == cmdOK);
        setBold(cmdCancel, watched == cmdCancel);
    } else if (button && event->type() == QEvent::Leave) {
        setBold(static_cast<QWidget *>(watched), false);
    } else if (event->type() == QEvent::MouseButtonPress
        && static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton && clickedLabel(watched)) {
        return true;
    }
    return FormDialog::eventFilter(watched, event);
}
