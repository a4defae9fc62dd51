#pragma once

#include "builtpaths.h"
#include <QDeadlineTimer>
#include <QMap>
#include <QProcess>
#include <QString>

#include <csignal>

inline const QString program = QStringLiteral(LUMORA_BIN "/lumora");
inline constexpr int patience = 20'000; ///< milliseconds

/// One run of the real program, which tells what it does in its log.
class Run
{
public:
    explicit Run(
        const QStringList &arguments, const QMap<QString, QString> &environment = {}, const QString &command = program)
    {
        QProcessEnvironment own = QProcessEnvironment::systemEnvironment();
        own.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        own.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("lumora.*=true"));
        own.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
        for (auto row = environment.begin(); row != environment.end(); ++row)
            own.insert(row.key(), row.value());
        m_process.setProcessEnvironment(own);
        m_process.start(command, arguments);
    }
    ~Run()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    /// Waits until the log holds `text` so many times.
    bool saw(const QString &text, int times = 1)
    {
        QDeadlineTimer end(patience);
        bool running = true;
        while (m_log.count(text) < times && running && !end.hasExpired()) {
            running = m_process.waitForReadyRead(100) || m_process.state() != QProcess::NotRunning;
            m_log += QString::fromUtf8(m_process.readAllStandardError());
        }
        return m_log.count(text) >= times;
    }
    bool stands() { return saw(QStringLiteral("lumora.viewer: activated")); }
    void signal(int number) { ::kill(pid_t(m_process.processId()), number); }
    /// The exit status; -1 when the program does not end or crashes.
    int status()
    {
        if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(patience))
            return -1;
        m_log += QString::fromUtf8(m_process.readAllStandardError());
        return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    }
    int endedBy(int number)
    {
        signal(number);
        return status();
    }
    QString log() const { return m_log; }
    QString output() { return QString::fromUtf8(m_process.readAllStandardOutput()); }

private:
    QProcess m_process;
    QString m_log;
};
