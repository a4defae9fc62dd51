#include "actions/frmListManagement.h"

#include "app/globals.h"
#include "ui/background.h"
#include "ui/guards.h"
#include "ui/yield.h"
#include "viewer/frmMainViewer.h"

#include <QBoxLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QKeyEvent>

#include <algorithm>

// Removing lets events in: this window may be closed by then, and the lists may have been emptied. What follows a
// yield therefore works on the Main Viewer and its lists alone, and looks at them afresh.

namespace {

constexpr int gridColumns = 10;
constexpr double checkedFontSize = 8; ///< points, in bold
constexpr double plainFontSize = 9;

QFont boxFont(const QFont &base, bool checked)
{
    QFont font = base;
    font.setBold(checked);
    font.setPointSizeF(checked ? checkedFontSize : plainFontSize);
    return font;
}

/// The look of a box follows its mark, and its place in the grid stays as wide as the wider of both.
void styleBox(QCheckBox *box)
{
    box->setFont(boxFont(box->font(), box->isChecked()));
}

void reserveWidth(QCheckBox *box)
{
    int width = 0;
    for (const bool checked : {true, false}) {
        box->setFont(boxFont(box->font(), checked));
        width = qMax(width, box->sizeHint().width());
    }
    box->setMinimumWidth(width);
}

void select(ListBox &list, const QList<int> &indices)
{
    for (const int index : indices)
        list.setSelected(index, true);
}

void deselect(ListBox &list, const QList<int> &indices)
{
    for (const int index : indices)
        list.setSelected(index, false);
}

void reverse(ListBox &list, const QList<int> &indices)
{
    for (const int index : indices)
        list.setSelected(index, !list.isSelected(index));
}

/// Takes the selected entries out and makes the one at the place of the lowest the current one.
void removeSelected(ListBox &list)
{
    const QList<int> selected = list.selectedIndices();
    list.removeItems(selected);
    if (const auto current = currentAfterRemoval(selected.value(0, 0), list.count()))
        list.setSelected(*current, true);
    list.setFocus();
}

void refreshScrollWidths(frmMainViewer &viewer)
{
    viewer.UpdateListScrollWidth(viewer.lstSelect);
    viewer.UpdateListScrollWidth(viewer.lstDisplay);
}

void removeFromSelectionList(frmMainViewer &viewer)
{
    if (viewer.lstSelect->count() == 1)
        viewer.lstSelect->clear();
    else
        removeSelected(*viewer.lstSelect);
    viewer.lstSelect->setHorizontalExtent(viewer.lstSelect->widestEntry());
    viewer.UpdateMenuAndToolbarState();
}

void removeFromDisplayList(frmMainViewer &viewer)
{
    const bool only = viewer.lstDisplay->count() == 1;
    if (!only)
        removeSelected(*viewer.lstDisplay);
    if (viewer.lstDisplay->isEmpty() || only) {
        // Nothing is left that the pane and the status bar could tell of.
        viewer.ClearDisplayList();
        Yield();
    } else {
        viewer.lblCount->setText(QString::number(viewer.lblCount->text().toInt() - 1));
        viewer.ReshowOnActivate = true;
        Yield();
        Yield();
    }
    viewer.UpdateMenuAndToolbarState();
    refreshScrollWidths(viewer);
}

/// Every action holds this: the lists are its own, and at the end the counter tells the truth.
class ActionScope
{
public:
    ActionScope()
        : m_busy(globals.ItemSelectionBusy)
    {
    }
    ~ActionScope()
    {
        if (!isLoaded<frmMainViewer>())
            return;
        auto &viewer = form<frmMainViewer>();
        viewer.lblCount->setText(QString::number(viewer.lstDisplay->count()));
    }
    ActionScope(const ActionScope &) = delete;
    ActionScope &operator=(const ActionScope &) = delete;

private:
    ScopedFlag m_busy;
};

} // namespace

// --- the boxes

TypeBoxes::TypeBoxes(QWidget *owner)
{
    for (const TypeBox &row : typeBoxes()) {
        auto *box = new QCheckBox(QString::fromLatin1(row.caption), owner);
        box->setObjectName(QStringLiteral("chkFileType(%1)").arg(row.index));
        m_boxes[static_cast<std::size_t>(row.index - firstTypeBox)] = box;
    }
}

void TypeBoxes::setAll(bool checked)
{
    for (QCheckBox *box : m_boxes) {
        if (box)
            box->setChecked(checked);
    }
}

void TypeBoxes::reverseAll()
{
    for (QCheckBox *box : m_boxes) {
        if (box)
            box->toggle();
    }
}

QStringList TypeBoxes::checkedCaptions() const
{
    QStringList captions;
    for (const QCheckBox *box : m_boxes) {
        if (box && box->isChecked())
            captions.append(box->text());
    }
    return captions;
}

// --- the window

frmListManagement::frmListManagement(QWidget *parent)
    : FormDialog(parent)
{
    setWindowTitle(tr("Tessaly Lumora - Advanced List Management"));
    setModal(false);
    lblInfo->setText(tr("File type selections affect all options with regards to FIND and SELECT ACTIONS."));
    lblInfo->setWordWrap(true);
    cmdClose->setText(tr("C&lose"));
    cmdClose->setAutoDefault(false);

    auto *closeRow = new QHBoxLayout;
    closeRow->addWidget(lblInfo, 1);
    closeRow->addSpacing(12);
    closeRow->addWidget(cmdClose);
    auto *all = new QVBoxLayout(this);
    all->setSpacing(10);
    all->addLayout(makeFindRow());
    all->addLayout(makeActionRow());
    all->addWidget(makeTypes(), 1);
    all->addLayout(closeRow);
    setTabOrder(cmdSelectAllTypes[cmdSelectAllTypes.last], cmdClose);
    txtFindWhat->setFocus();
    connectControls();
}

QLayout *frmListManagement::makeFindRow()
{
    auto *label = new QLabel(tr("Find What:"), this);
    label->setBuddy(txtFindWhat);
    txtFindWhat->setAccessibleName(tr("Find What"));
    txtFindWhat->setToolTip(tr("Type text to look for as part of a file name."));
    txtFindWhat->setClearButtonEnabled(true);
    cmdFind->setText(tr("&Find"));
    cmdFind->setToolTip(tr("Selects the entries that hold the text."));
    cmdFind->setDefault(true);
    cmdFind->setEnabled(false);
    auto *row = new QHBoxLayout;
    row->addWidget(label);
    row->addWidget(txtFindWhat, 1);
    row->addWidget(cmdFind);
    setTabOrder(txtFindWhat, cmdFind);
    return row;
}

QLayout *frmListManagement::makeActionRow()
{
    struct Action
    {
        const char *caption;
        const char *toolTip;
    };
    // clang-format off
    static constexpr Action actions[] = {
        {QT_TR_NOOP("&Select Items In List"), QT_TR_NOOP("Selects the entries of the checked file types.")},
        {QT_TR_NOOP("&Clear Items In List"), QT_TR_NOOP("Takes the selection off the entries of the checked file types.")},
        {QT_TR_NOOP("I&nvert Selections"), QT_TR_NOOP("Reverses the selection of the entries of the checked file types.")},
        {QT_TR_NOOP("&Remove Selections"), QT_TR_NOOP("Takes the selected entries out of the list. The files themselves are not touched.")},
    };
    // clang-format on
    optChangesApplyTo[0]->setText(tr("Selection List"));
    optChangesApplyTo[1]->setText(tr("Display List"));
    auto *group = new QGroupBox(tr("Changes Apply To"), this);
    auto *choices = new QVBoxLayout(group);
    auto *buttons = new QGridLayout;
    for (QRadioButton *choice : optChangesApplyTo)
        choices->addWidget(choice);
    QWidget *before = cmdFind;
    const auto next = [&](QWidget *control) {
        setTabOrder(before, control);
        before = control;
    };
    next(optChangesApplyTo[0]);
    next(optChangesApplyTo[1]);
    for (int index = cmdAction.first; index <= cmdAction.last; ++index) {
        QPushButton *button = cmdAction[index];
        button->setText(tr(actions[index].caption));
        button->setToolTip(tr(actions[index].toolTip));
        button->setAutoDefault(false);
        button->setEnabled(false);
        buttons->addWidget(button, index / 2, index % 2);
        next(button);
    }
    auto *row = new QHBoxLayout;
    row->addWidget(group);
    row->addSpacing(12);
    row->addLayout(buttons, 1);
    return row;
}

QWidget *frmListManagement::makeTypes()
{
    static constexpr const char *captions[] = {
        QT_TR_NOOP("Select All &Types"), QT_TR_NOOP("Cle&ar All Types"), QT_TR_NOOP("In&vert Selections")};
    auto *group = new QGroupBox(tr("File Types"), this);
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(8);
    // The alphabet finds a type.
    for (const TypeBox &row : typeBoxes())
        m_gridOrder.push_back(chkFileType[row.index]);
    std::sort(m_gridOrder.begin(), m_gridOrder.end(),
        [](const QCheckBox *a, const QCheckBox *b) { return a->text() < b->text(); });
    QWidget *before = cmdAction[cmdAction.last];
    int place = 0;
    for (QCheckBox *box : m_gridOrder) {
        reserveWidth(box);
        styleBox(box);
        box->setAccessibleName(box->text().mid(1).chopped(1));
        box->installEventFilter(this);
        grid->addWidget(box, place / gridColumns, place % gridColumns);
        ++place;
        setTabOrder(before, box);
        before = box;
    }
    auto *row = new QHBoxLayout;
    for (int index = cmdSelectAllTypes.first; index <= cmdSelectAllTypes.last; ++index) {
        QPushButton *button = cmdSelectAllTypes[index];
        button->setText(tr(captions[index]));
        button->setAutoDefault(false);
        row->addWidget(button);
        setTabOrder(before, button);
        before = button;
    }
    row->addStretch(1);
    cmdSelectAllTypes[2]->setAccessibleName(tr("Invert Selections of Types"));
    auto *column = new QVBoxLayout(group);
    column->addLayout(grid, 1);
    column->addSpacing(6);
    column->addLayout(row);
    return group;
}

void frmListManagement::connectControls()
{
    connect(cmdFind, &QPushButton::clicked, this, &frmListManagement::cmdFind_Click);
    connect(cmdClose, &QPushButton::clicked, this, &frmListManagement::cmdClose_Click);
    for (int index = cmdAction.first; index <= cmdAction.last; ++index)
        connect(cmdAction[index], &QPushButton::clicked, this, [this, index] { cmdAction_Click(index); });
    for (int index = optChangesApplyTo.first; index <= optChangesApplyTo.last; ++index) {
        // A choice that the program makes counts as a click.
        connect(optChangesApplyTo[index], &QRadioButton::toggled, this, [this, index](bool chosen) {
            if (chosen)
                optChangesApplyTo_Click(index);
        });
    }
    for (const TypeBox &row : typeBoxes())
        connect(
            chkFileType[row.index], &QCheckBox::toggled, this, [this, index = row.index] { chkFileType_Click(index); });
    for (int index = cmdSelectAllTypes.first; index <= cmdSelectAllTypes.last; ++index)
        connect(
            cmdSelectAllTypes[index], &QPushButton::clicked, this, [this, index] { cmdSelectAllTypes_Click(index); });
}

/// The keys up and down go over the grid as it is seen; left and right do so by themselves.
bool frmListManagement::eventFilter(QObject *watched, QEvent *event)
{
    const auto box = std::find(m_gridOrder.begin(), m_gridOrder.end(), watched);
    if (box != m_gridOrder.end() && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        const int step = key == Qt::Key_Up ? -gridColumns : key == Qt::Key_Down ? gridColumns : 0;
        const auto place = box - m_gridOrder.begin() + step;
        if (step != 0) {
            if (place >= 0 && place < std::ssize(m_gridOrder))
                m_gridOrder[std::size_t(place)]->setFocus(Qt::TabFocusReason);
            return true;
        }
    }
    return FormDialog::eventFilter(watched, event);
}

void frmListManagement::Form_Activate()
{
    PaintFormBackground(this, QStringLiteral("OTHER"));
    const auto &viewer = form<frmMainViewer>();
    const ListBox *lists[] = {viewer.lstSelect, viewer.lstDisplay};
    for (int index = optChangesApplyTo.first; index <= optChangesApplyTo.last; ++index) {
        optChangesApplyTo[index]->setEnabled(!lists[index]->isEmpty());
        if (lists[index]->isEmpty())
            optChangesApplyTo[1 - index]->setChecked(true);
    }
}

void frmListManagement::optChangesApplyTo_Click(int)
{
    for (QPushButton *button : cmdAction)
        button->setEnabled(true);
    cmdFind->setEnabled(true);
}

void frmListManagement::chkFileType_Click(int index)
{
    styleBox(chkFileType[index]);
}

void frmListManagement::cmdSelectAllTypes_Click(int index)
{
    if (index == 2)
        chkFileType.reverseAll();
    else
        chkFileType.setAll(index == 0);
}

void frmListManagement::cmdClose_Click()
{
    unload<frmListManagement>();
}

void frmListManagement::reject()
{
    cmdClose_Click();
}

// --- the actions

ListBox *frmListManagement::chosenList() const
{
    if (optChangesApplyTo[0]->isChecked())
        return form<frmMainViewer>().lstSelect;
    return optChangesApplyTo[1]->isChecked() ? form<frmMainViewer>().lstDisplay : nullptr;
}

void frmListManagement::cmdFind_Click()
{
    ListBox *list = chosenList();
    if (!list || globals.ItemSelectionBusy || globals.ProgramExiting)
        return;
    const ActionScope scope;
    list->clearSelections();
    select(*list, entriesWithText(list->items(), txtFindWhat->text(), TypeTest(chkFileType.checkedCaptions())));
}

void frmListManagement::cmdAction_Click(int index)
{
    ListBox *list = chosenList();
    if (!list || globals.ItemSelectionBusy || globals.ProgramExiting)
        return;
    const ActionScope scope;
    const TypeTest types(chkFileType.checkedCaptions());
    auto &viewer = form<frmMainViewer>();
    if (index == 0)
        select(*list, entriesOfTypes(list->items(), types, TypeMatch::Any));
    else if (index == 1)
        deselect(*list, entriesOfTypes(list->items(), types, TypeMatch::Any));
    else if (index == 2)
        reverse(*list, entriesOfTypes(list->items(), types, TypeMatch::Odd));
    else if (list->listIndex() < 0)
        return;
    else if (list == viewer.lstSelect)
        removeFromSelectionList(viewer);
    else
        removeFromDisplayList(viewer);
}

void frmMainViewer::mnuPictureAdvListManagement_Click()
{
    auto &window = form<frmListManagement>();
    if (window.parentWidget() != this)
        window.setParent(this, window.windowFlags() | Qt::Dialog);
    window.show();
    window.raise();
    window.activateWindow();
}
