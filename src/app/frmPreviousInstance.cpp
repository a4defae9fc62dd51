#include "app/frmPreviousInstance.h"

#include "ui/yield.h"

#include <QGuiApplication>

namespace {
constexpr char readyForCommand[] = "Ready for command";
}

frmPreviousInstance::frmPreviousInstance(QWidget *parent)
    : FormWindow(parent)
{
    setWindowTitle(QStringLiteral("PreviousInstance"));
    connect(cmdDummy, &QPushButton::clicked, this, &frmPreviousInstance::cmdDummy_Click);
}

void frmPreviousInstance::Form_Load()
{
    cmdDummy->hide();
    Text1->clear();
    cmdDummy->setText(QString::fromLatin1(readyForCommand));
    const QStringList commands = std::exchange(StartCommands, {});
    for (const QString &command : commands)
        takeIn(command);
}

void frmPreviousInstance::takeIn(const QString &command)
{
    cmdDummy->setText(command);
    cmdDummy->click();
}

void frmPreviousInstance::cmdDummy_Click()
{
    QueueCommand(cmdDummy->text());
    cmdDummy->setText(QString::fromLatin1(readyForCommand));
}

void frmPreviousInstance::QueueCommand(const QString &text)
{
    if (!List1->addItem(text))
        qWarning("the command queue is full, a command is lost");
    Yield();
}

void BringToFront(QWidget *window, const QString &activationToken)
{
    if (window->isMinimized())
        window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    // Wayland lets a window come to the front only with the token that the desktop gave to the start which asks for it;
    // Qt takes it from here and clears it.
    if (!activationToken.isEmpty() && QGuiApplication::platformName().startsWith(QLatin1String("wayland")))
        qputenv("XDG_ACTIVATION_TOKEN", activationToken.toUtf8());
    window->raise();
    window->activateWindow();
}
