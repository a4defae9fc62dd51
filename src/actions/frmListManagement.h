#pragma once

#include "actions/listmanagement.h"
#include "ui/controls.h"
#include "ui/form.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

class ListBox;

/// The boxes `chkFileType(0..60)`; there is none at 50.
class TypeBoxes
{
public:
    explicit TypeBoxes(QWidget *owner);
    /// Null for 50.
    QCheckBox *operator[](int index) const { return m_boxes[static_cast<std::size_t>(index - firstTypeBox)]; }
    void setAll(bool checked);
    void reverseAll();
    /// The captions of the checked boxes.
    QStringList checkedCaptions() const;

private:
    std::array<QCheckBox *, lastTypeBox - firstTypeBox + 1> m_boxes{};
};

/// Selects entries of the Selection or the Display list by a text or by their file types, and takes the selected ones
/// out. It holds no list of its own and may stay open beside the Main Viewer.
class frmListManagement : public FormDialog
{
    Q_OBJECT
public:
    explicit frmListManagement(QWidget *parent = nullptr);

    CONTROL(txtFindWhat, QLineEdit);
    CONTROL(cmdFind, QPushButton);
    CONTROL_ARRAY(optChangesApplyTo, QRadioButton, 0, 1);
    CONTROL_ARRAY(cmdAction, QPushButton, 0, 3);
    CONTROL(lblInfo, QLabel);
    TypeBoxes chkFileType{this};
    CONTROL_ARRAY(cmdSelectAllTypes, QPushButton, 0, 2);
    CONTROL(cmdClose, QPushButton);

    void Form_Activate() override;
    void cmdFind_Click();
    void cmdAction_Click(int index);
    void optChangesApplyTo_Click(int index);
    void chkFileType_Click(int index);
    void cmdSelectAllTypes_Click(int index);
    void cmdClose_Click();
    void reject() override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    class QLayout *makeFindRow();
    class QLayout *makeActionRow();
    QWidget *makeTypes();
    void connectControls();
    /// The list that the actions work on; null while none has been chosen.
    ListBox *chosenList() const;
    std::vector<QCheckBox *> m_gridOrder; ///< the boxes as they stand in the grid, row by row
};
