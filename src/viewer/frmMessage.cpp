#include "viewer/frmMessage.h"

#include <QGuiApplication>
#include <QVBoxLayout>

namespace {
constexpr int shortWork = 200; // milliseconds in which nobody could read the text
}

frmMessage::frmMessage(QWidget *parent)
    : FormWindow(parent)
{
    setAttribute(Qt::WA_ShowWithoutActivating);
    setWindowTitle(tr("Tessaly Lumora V3"));
    lblMessage->setAlignment(Qt::AlignCenter);
    lblMessage->setTextFormat(Qt::PlainText);
    lblMessage->setMinimumWidth(260);
    ProgressBar1->setAccessibleName(tr("Progress"));
    ProgressBar1->hide();
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(24, 20, 24, 20);
    column->addWidget(lblMessage);
    column->addWidget(ProgressBar1);
}

void frmMessage::showOver(QWidget *owner, const QString &text)
{
    lblMessage->setText(text);
    setParent(owner, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowDoesNotAcceptFocus);
    adjustSize();
    if (owner)
        move(owner->mapToGlobal(owner->rect().center()) - rect().center());
    if (QGuiApplication::platformName() == QLatin1String("xcb"))
        setWindowOpacity(0);
    m_since.start();
    show();
}

void frmMessage::setProgress(int percent)
{
    ProgressBar1->show();
    ProgressBar1->setValue(percent);
    stillWorking();
}

void frmMessage::stillWorking()
{
    if (windowOpacity() < 1 && m_since.hasExpired(shortWork))
        setWindowOpacity(1);
}
