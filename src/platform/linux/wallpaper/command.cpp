#include "platform/linux/wallpaper/command.h"

#include <QProcess>
#include <QStandardPaths>

namespace {
constexpr int patience = 10000; ///< milliseconds
}

bool command::isInstalled(const QString &program)
{
    return !QStandardPaths::findExecutable(program).isEmpty();
}

Result<void> command::run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(program, arguments);
    if (!process.waitForFinished(patience)) {
        const Failure failure{QStringLiteral("%1: %2").arg(program, process.errorString())};
        process.kill();
        process.waitForFinished(patience);
        return failure;
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return Failure{QStringLiteral("%1: %2").arg(program, QString::fromLocal8Bit(process.readAllStandardError()))};
    return {};
}

Result<void> command::start(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProgram(program);
    process.setArguments(arguments);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    if (!process.startDetached())
        return Failure{program + QStringLiteral(" does not start")};
    return {};
}
