#ifndef KY_TEST_PRIVATEBUS_H
#define KY_TEST_PRIVATEBUS_H

#include <QFile>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

/** A bus of its own, which can be killed. It starts no services but those that it is given. */
class PrivateBus
{
public:
    PrivateBus() : PrivateBus(QString(), QProcessEnvironment::systemEnvironment()) {}

    /** @param services a folder of service files @param environment what the services get */
    PrivateBus(const QString &services, const QProcessEnvironment &environment)
    {
        writeConfiguration(services);
        m_daemon.setProcessEnvironment(environment);
        m_daemon.start("dbus-daemon",
                       {"--config-file=" + configuration(), "--nofork", "--nopidfile", "--print-address"});
        m_daemon.waitForReadyRead();
        m_address = m_daemon.readLine().trimmed();
    }
    ~PrivateBus() { kill(); }
    Q_DISABLE_COPY_MOVE(PrivateBus)

    void kill()
    {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }
    [[nodiscard]] QString address() const { return QString::fromLatin1(m_address); }

private:
    [[nodiscard]] QString configuration() const { return m_folder.filePath("bus.conf"); }

    void writeConfiguration(const QString &services)
    {
        QFile file(configuration());
        if (!file.open(QIODevice::WriteOnly))
            return;
        file.write("<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
                   "  \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
                   "<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen><auth>EXTERNAL</auth>");
        if (!services.isEmpty())
            file.write("<servicedir>" + QFile::encodeName(services) + "</servicedir>");
        file.write("<policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/>"
                   "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>\n");
    }

    QTemporaryDir m_folder;
    QProcess m_daemon;
    QByteArray m_address;
};

#endif
