#include "shell/frmPreferences.h"

#include "app/globals.h"
#include "platform/dialogs.h"
#include "platform/filepath.h"
#include "platform/folders.h"
#include "shell/associations.h"
#include "shell/pagearea.h"
#include "ui/guards.h"
#include "ui/yield.h"

#include <QApplication>
#include <QFile>
#include <QFont>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLoggingCategory>
#include <QVBoxLayout>

#include <array>

// Outside any namespace, as the macro asks.
static void registerDesktopFiles()
{
    Q_INIT_RESOURCE(desktop);
}

namespace {
Q_LOGGING_CATEGORY(logAssociations, "lumora.associations", QtWarningMsg)

/// A run, or the question before it, is under way: events may start no other, and the window stays as it is.
bool settingAssociations = false;

void forEachBox(const auto &boxes, const auto &visit)
{
    for (int box = 1; box <= associationBoxCount; ++box) {
        if (box != missingAssociationBox)
            visit(boxes[box], box);
    }
}

QString readClass(const QString &key)
{
    return ReadDefault(key, QString());
}

QByteArray desktopFile(const char *name)
{
    registerDesktopFiles();
    QFile file(QStringLiteral(":/lumora/desktop/") + QLatin1String(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void yieldBetweenSteps()
{
    if (!globals.ProgramExiting)
        Yield();
}

/// Every step over all types before the next. The choice was taken at the beginning, and once begun it goes on to the
/// end, also where the program ends meanwhile: in between, types would be this program's that nobody chose.
void writeAssociations(const AssociationBoxes &boxes, const std::function<void()> &beep)
{
    carryOut(classWrites(AppFolder(), FileNameOfPath(programFile())), beep);
    yieldBetweenSteps();
    carryOut(keyWrites(), beep);
    yieldBetweenSteps();
    carryOut(userWrites(), beep);
    yieldBetweenSteps();
    carryOut(choiceWrites(boxes, readClass), beep);
    yieldBetweenSteps();
}

void tellDesktop(const AssociationBoxes &boxes)
{
    const Result<QList<ToolCommand>> told = setDesktopTypes(desktopTypes(boxes),
        {desktopFile("lumora.desktop"), desktopFile("mime.xml"), desktopFile("lumora.svg"), programFile()});
    if (told)
        startTools(*told);
    else
        qCWarning(logAssociations, "the desktop was not told: %s", qPrintable(told.reason()));
}

/// The boxes whose types open with the program now.
AssociationBoxes desktopBoxes()
{
    QVector<QByteArray> types;
    for (int box = 1; box <= associationBoxCount; ++box)
        types.append(desktopTypeOfBox(box));
    const QVector<QByteArray> own = ownDesktopTypes(types);
    AssociationBoxes boxes;
    for (int box = 1; box <= associationBoxCount; ++box)
        boxes[std::size_t(box)] = own.contains(desktopTypeOfBox(box));
    return boxes;
}

QGridLayout *boxGroup(const QString &title, QVBoxLayout *rows, QWidget *page)
{
    auto *group = new QGroupBox(title, page);
    rows->addWidget(group);
    return new QGridLayout(group);
}
}

QWidget *frmPreferences::makeAssociationsPage()
{
    beep = &QApplication::beep;
    delete std::exchange(chkAssocFileType[missingAssociationBox], nullptr);
    auto *page = new QWidget(this);
    auto *rows = new QVBoxLayout(page);
    struct Group
    {
        QString title;
        int first;
        int last;
        int columns;
    };
    const std::array groups = {Group{tr("Picture Types"), 1, 29, 10}, Group{tr("Audio and Video Types"), 30, 39, 2},
        Group{tr("Further Picture Types"), 40, 61, 11}};
    for (const Group &group : groups) {
        QGridLayout *grid = boxGroup(group.title, rows, page);
        int place = 0;
        for (int box = group.first; box <= group.last; ++box) {
            if (box == missingAssociationBox)
                continue;
            const QByteArray caption = associationCaption(box).toLatin1();
            chkAssocFileType[box]->setText(QCoreApplication::translate("MediaTypes", caption.constData()));
            grid->addWidget(chkAssocFileType[box], place / group.columns, place % group.columns);
            ++place;
        }
        for (int column = 0; column < group.columns; ++column)
            grid->setColumnStretch(column, 1);
    }

    chkAssocFileType[listFileBox]->setToolTip(tr("With the list files of Lumora (.Lsl)"));
    chkAssocFileType[listFileBox]->setAccessibleDescription(chkAssocFileType[listFileBox]->toolTip());

    auto *note = new QLabel(tr("Files of the checked types will open with Lumora V3 on your desktop, those of the "
                               "others with the program they had before; types in bold letters do so now. Types of "
                               "one kind, as .JPG and .JPEG, go together. .IMG, .GEM and .PIC stay with the programs "
                               "of your system."),
        page);
    note->setWordWrap(true);
    rows->addWidget(note);

    cmdAssocSelectAll->setText(tr("Select &All"));
    cmdAssocClearAll->setText(tr("&Clear All"));
    cmdAssocInvertAll->setText(tr("&Invert All"));
    cmdMakeAssoc->setText(tr("Set Associations"));
    cmdMakeAssoc->setToolTip(tr("Makes Lumora V3 the program for the checked types"));
    auto *buttons = new QHBoxLayout;
    for (QPushButton *button : {cmdAssocSelectAll, cmdAssocClearAll, cmdAssocInvertAll})
        buttons->addWidget(button);
    buttons->addStretch();
    buttons->addWidget(cmdMakeAssoc);
    rows->addStretch();
    rows->addLayout(buttons);
    return new PageArea(page);
}

void frmPreferences::connectAssociations()
{
    forEachBox(chkAssocFileType, [this](QCheckBox *box, int index) {
        connect(box, &QCheckBox::toggled, this, [this, index] {
            if (LoadingSettings)
                return;
            AssociationsChanged = true;
            m_chosenBoxes.set(std::size_t(index));
        });
    });
    const auto onClick = [this](QPushButton *button, auto work) {
        connect(button, &QPushButton::clicked, this, [this, work] {
            forEachBox(chkAssocFileType, [work](QCheckBox *box, int) { work(box); });
            AssociationsChanged = true; // also where a box stays as it was: that is a choice now
            m_chosenBoxes.set();
        });
    };
    onClick(cmdAssocSelectAll, [](QCheckBox *box) { box->setChecked(true); });
    onClick(cmdAssocClearAll, [](QCheckBox *box) { box->setChecked(false); });
    onClick(cmdAssocInvertAll, [](QCheckBox *box) { box->toggle(); });
    connect(cmdMakeAssoc, &QPushButton::clicked, this, &frmPreferences::cmdMakeAssoc_Click);
    connect(SSTab1, &QTabWidget::currentChanged, this, [this](int page) {
        if (std::exchange(m_page, page) == AssociateFileTypes)
            ignore(offerAssociations());
        else if (page == AssociateFileTypes)
            readAssociations();
    });
}

// The boxes show the store; what the desktop does stands beside it in bold letters.
void frmPreferences::showDesktopTypes()
{
    const AssociationBoxes own = desktopBoxes();
    forEachBox(chkAssocFileType, [&own](QCheckBox *box, int index) {
        const bool opens = own[std::size_t(index)];
        QFont font = box->font();
        if (font.bold() == opens)
            return;
        font.setBold(opens);
        box->setFont(font);
        box->setAccessibleDescription(opens ? tr("Opens with Lumora V3 now") : box->toolTip());
    });
}

// A choice that is not set yet survives a look at another window.
void frmPreferences::readAssociations()
{
    showDesktopTypes();
    if (AssociationsChanged || settingAssociations)
        return;
    const ScopedFlag showing(LoadingSettings);
    m_chosenBoxes.reset();
    const AssociationBoxes associated = associatedBoxes(readClass);
    forEachBox(chkAssocFileType,
        [&associated](QCheckBox *box, int index) { box->setChecked(associated[std::size_t(index)]); });
}

bool frmPreferences::offerAssociations()
{
    if (settingAssociations)
        return false;
    if (!AssociationsChanged)
        return true;
    const QPointer<frmPreferences> here(this);
    MessageBox::Answer answer = MessageBox::Answer::No;
    {
        const ScopedFlag asking(settingAssociations);
        answer = dialogs().show(this, applyAssociationsBox());
    }
    if (here && !isUnloaded() && answer == MessageBox::Answer::Yes)
        cmdMakeAssoc_Click();
    return here && !isUnloaded();
}

void frmPreferences::cmdMakeAssoc_Click()
{
    if (settingAssociations)
        return;
    const QPointer<frmPreferences> here(this);
    AssociationBoxes boxes;
    forEachBox(
        chkAssocFileType, [&boxes](const QCheckBox *box, int index) { boxes[std::size_t(index)] = box->isChecked(); });
    const AssociationBoxes chosen = m_chosenBoxes;
    {
        const ScopedFlag setting(settingAssociations);
        const Hourglass busy;
        writeAssociations(boxes, std::function(beep)); // a copy, as the window may go
        if (here)
            AssociationsChanged = false;
        // A box that shows the store, and that nobody has touched, asks the desktop for nothing new.
        tellDesktop(boxes & (chosen | desktopBoxes()));
    }
    if (!here || isUnloaded() || globals.ProgramExiting)
        return;
    showDesktopTypes();
    ignore(dialogs().show(this, associationsMadeBox()));
}
