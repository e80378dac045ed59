#ifndef KY_TEST_PLATFORMSERVICE_H
#define KY_TEST_PLATFORMSERVICE_H

#include "sessionbus_p.h"
#include <csignal>
#include <QProcess>
#include <QTest>

/** A kyplatformd of the test's own; KY_PLATFORMD is the path of the program. */
class PlatformService
{
public:
    explicit PlatformService(
        const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment(),
        const QStringList &options = {})
    {
        m_process.setProcessEnvironment(environment);
        m_process.start(QStringLiteral(KY_PLATFORMD), options);
    }
    ~PlatformService()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(PlatformService)

    /** Waits until the service of this HOME has its name. */
    [[nodiscard]] bool isReady()
    {
        const QString service = SessionBus::serviceName(QStringLiteral("platform"));
        return QTest::qWaitFor([&] { return SessionBus::hasOwner(service); }, 5000);
    }

    [[nodiscard]] qint64 pid() const { return m_process.processId(); }
    void signal(int number) { ::kill(pid_t(m_process.processId()), number); }

    /** Waits for the end. @return the exit code, -1 when it crashed or goes on */
    [[nodiscard]] int exitCode()
    {
        const bool ended = m_process.state() == QProcess::NotRunning || m_process.waitForFinished(5000);
        return ended && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    }

    [[nodiscard]] QByteArray output() { return m_process.readAllStandardOutput(); }
    [[nodiscard]] QByteArray errors() { return m_process.readAllStandardError(); }

private:
    QProcess m_process;
};

#endif
