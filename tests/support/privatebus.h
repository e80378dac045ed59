#ifndef KY_TEST_PRIVATEBUS_H
#define KY_TEST_PRIVATEBUS_H

#include <QProcess>
#include <QString>

/** A bus of its own, which can be killed. */
class PrivateBus
{
public:
    PrivateBus()
    {
        m_daemon.start("dbus-daemon", {"--session", "--nofork", "--print-address"});
        m_daemon.waitForReadyRead();
        m_address = m_daemon.readLine().trimmed();
    }
    ~PrivateBus() { kill(); }
    void kill()
    {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }
    [[nodiscard]] QString address() const { return QString::fromLatin1(m_address); }

private:
    QProcess m_daemon;
    QByteArray m_address;
};

#endif
