#include "fileserver.h"
#include "config.h"
#include "logcapture.h"
#include "messagesender.h"
#include "platformservice.h"
#include "privatebus.h"
#include <QDBusContext>
#include <QtTest>

/** The service manager: notes what it is asked to do. */
class ServiceManager : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.systemd1.Manager")
public:
    explicit ServiceManager(const QString &address) : connection(address)
    {
        connection.bus.registerObject("/org/freedesktop/systemd1", this, QDBusConnection::ExportAllSlots);
        connection.bus.registerService("org.freedesktop.systemd1");
    }
    bool refuses = false;
    QStringList calls;
    TestConnection connection;

public slots:
    QDBusObjectPath StopUnit(const QString &unit, const QString &mode) { return note("stop", unit, mode); }
    QDBusObjectPath StartUnit(const QString &unit, const QString &mode) { return note("start", unit, mode); }

private:
    QDBusObjectPath note(const QString &what, const QString &unit, const QString &mode)
    {
        calls.append(what + ' ' + unit + ' ' + mode);
        if (refuses)
            sendErrorReply(QDBusError::AccessDenied, "not allowed");
        return QDBusObjectPath("/org/freedesktop/systemd1/job/1");
    }
};

class FileServerTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void serviceUnitNames_data();
    void serviceUnitNames();
    void unitOfTheSettingsIsControlled();
    void unitOfTheSessionIsControlled();
    void withoutSettingsNothingHappens();
    void settingsCountAtOnce();
    void wrongSettingsAreRefused_data();
    void wrongSettingsAreRefused();
    void refusalIsToldAndSurvived();
    void missingBusIsTold();
    void otherMessagesAreIgnored();
    void payloadIsIgnored();
    void floodHasOneCallUnderWay();
    void serviceControlsTheUnit();

private:
    static void configure(const QString &unit, const QString &bus = QString());
    void settleAll()
    {
        settle({SessionBus::connection(), m_bus->bus, m_system->connection.bus, m_session->connection.bus});
    }

    std::unique_ptr<PrivateBus> m_systemBus;
    std::unique_ptr<ServiceManager> m_system;
    std::unique_ptr<ServiceManager> m_session;
    std::unique_ptr<TestConnection> m_bus; ///< the server's to the system bus
    std::unique_ptr<FileServer> m_server;
};

void FileServerTest::init()
{
    QDir(QDir::homePath() + "/Settings").removeRecursively();
    m_systemBus = std::make_unique<PrivateBus>();
    m_system = std::make_unique<ServiceManager>(m_systemBus->address());
    m_session = std::make_unique<ServiceManager>(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"));
    m_bus = std::make_unique<TestConnection>(m_systemBus->address());
    m_server = std::make_unique<FileServer>(m_bus->bus, SessionBus::connection());
}

void FileServerTest::cleanup()
{
    m_server.reset();
    m_bus.reset();
    m_session.reset();
    m_system.reset();
    m_systemBus.reset();
}

void FileServerTest::configure(const QString &unit, const QString &bus)
{
    Config settings("kyplatformd");
    settings.setGroup("Samba");
    settings.writeEntry("Unit", unit);
    if (!bus.isNull())
        settings.writeEntry("Bus", bus);
}

void FileServerTest::serviceUnitNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("valid");
    QTest::newRow("plain") << "smbd.service" << true;
    QTest::newRow("all marks") << R"(a:b_c.d\x2de@F9-.service)" << true;
    QTest::newRow("longest") << QString(247, 'u') + ".service" << true;
    QTest::newRow("too long") << QString(248, 'u') + ".service" << false;
    QTest::newRow("empty") << "" << false;
    QTest::newRow("ending only") << ".service" << false;
    QTest::newRow("no ending") << "smbd" << false;
    QTest::newRow("socket") << "smbd.socket" << false;
    QTest::newRow("target") << "poweroff.target" << false;
    QTest::newRow("ending in between") << "smbd.service.d" << false;
    QTest::newRow("upper-case ending") << "smbd.SERVICE" << false;
    QTest::newRow("slash") << "../smbd.service" << false;
    QTest::newRow("blank") << "a b.service" << false;
    QTest::newRow("two units") << "a.service b.service" << false;
    QTest::newRow("semicolon") << "a;b.service" << false;
    QTest::newRow("dollar") << "$(a).service" << false;
    QTest::newRow("line feed at the end") << "smbd.service\n" << false;
    QTest::newRow("line feed in front") << "\nsmbd.service" << false;
    QTest::newRow("Japanese") << QString::fromUtf8("共有.service") << false;
}

void FileServerTest::serviceUnitNames()
{
    QFETCH(QString, name);
    QFETCH(bool, valid);
    QCOMPARE(FileServer::isServiceUnit(name), valid);
}

void FileServerTest::unitOfTheSettingsIsControlled()
{
    configure("smbd.service");
    QCopChannel::send("QPE/System", "stopSamba()");
    QCopChannel::send("QPE/System", "startSamba()");
    const QStringList expected{"stop smbd.service replace", "start smbd.service replace"};
    QTRY_COMPARE(m_system->calls, expected);
    QCOMPARE(m_session->calls, QStringList());
}

void FileServerTest::unitOfTheSessionIsControlled()
{
    configure("share.service", "user");
    QCopChannel::send("QPE/System", "stopSamba()");
    QTRY_COMPARE(m_session->calls, QStringList{"stop share.service replace"});
    QCOMPARE(m_system->calls, QStringList());
}

void FileServerTest::withoutSettingsNothingHappens()
{
    LogCapture log;
    QCopChannel::send("QPE/System", "stopSamba()");
    QCopChannel::send("QPE/System", "startSamba()");
    settleAll();
    QCOMPARE(m_system->calls + m_session->calls, QStringList());
    QCOMPARE(log.lines(), QStringList());
    QVERIFY(!QFile::exists(QDir::homePath() + "/Settings/kyplatformd.conf"));
}

void FileServerTest::settingsCountAtOnce()
{
    configure("smbd.service");
    QCopChannel::send("QPE/System", "stopSamba()");
    QTRY_COMPARE(m_system->calls.size(), 1);
    configure("other.service");
    QCopChannel::send("QPE/System", "startSamba()");
    QTRY_COMPARE(m_system->calls.value(1), "start other.service replace");
}

void FileServerTest::wrongSettingsAreRefused_data()
{
    QTest::addColumn<QString>("unit");
    QTest::addColumn<QString>("bus");
    QTest::addColumn<QString>("warning");
    QTest::newRow("not a service") << "poweroff.target"
                                   << "system"
                                   << "kyplatformd: \"poweroff.target\" is not the name of a service unit";
    QTest::newRow("command") << "a.service; rm x"
                             << "system"
                             << "kyplatformd: \"a.service; rm x\" is not the name of a service unit";
    QTest::newRow("unknown bus") << "smbd.service"
                                 << "both"
                                 << "kyplatformd: the bus of a unit is system or user, not \"both\"";
}

void FileServerTest::wrongSettingsAreRefused()
{
    QFETCH(QString, unit);
    QFETCH(QString, bus);
    QFETCH(QString, warning);
    configure(unit, bus);
    LogCapture log;
    QCopChannel::send("QPE/System", "stopSamba()");
    QTRY_COMPARE(log.warnings(), QStringList{warning});
    settleAll();
    QCOMPARE(m_system->calls + m_session->calls, QStringList());
}

void FileServerTest::refusalIsToldAndSurvived()
{
    configure("smbd.service");
    m_system->refuses = true;
    LogCapture log;
    QCopChannel::send("QPE/System", "stopSamba()");
    QTRY_COMPARE(log.warnings(), QStringList{"kyplatformd: StopUnit smbd.service failed: not allowed"});
    m_system->refuses = false;
    QCopChannel::send("QPE/System", "startSamba()");
    QTRY_COMPARE(m_system->calls.size(), 2);
    settleAll();
    QCOMPARE(log.warnings().size(), 1);
}

void FileServerTest::missingBusIsTold()
{
    configure("smbd.service");
    m_server = std::make_unique<FileServer>(QDBusConnection("no bus"), SessionBus::connection());
    LogCapture log;
    QCopChannel::send("QPE/System", "stopSamba()");
    QTRY_COMPARE(log.warnings(), QStringList{"kyplatformd: StopUnit smbd.service: there is no such bus"});
}

void FileServerTest::otherMessagesAreIgnored()
{
    configure("smbd.service");
    for (const char *message : {"stopSamba", "startSamba(int)", "", "StopUnit", "stopSamba() "})
        QCopChannel::send("QPE/System", message);
    QCopChannel::send("QPE/TaskBar", "stopSamba()");
    settleAll();
    QCOMPARE(m_system->calls, QStringList());
    QCopChannel::send("QPE/System", "stopSamba()");
    QTRY_COMPARE(m_system->calls.size(), 1);
}

void FileServerTest::payloadIsIgnored()
{
    configure("smbd.service");
    QRandomGenerator random(83);
    for (int count = 1; count <= 50; ++count) {
        QCopChannel::send("QPE/System", "stopSamba()", randomBytes(random));
        QTRY_COMPARE(m_system->calls.count("stop smbd.service replace"), count);
        settleAll();
    }
    QCOMPARE(m_system->calls.size(), 50);
}

void FileServerTest::floodHasOneCallUnderWay()
{
    configure("smbd.service");
    for (int i = 0; i < 500; ++i) {
        QCopChannel::send("QPE/System", "startSamba()");
        QCopChannel::send("QPE/System", "stopSamba()");
    }
    // All of them are there before the event loop runs.
    SessionBus::flush();
    QTRY_COMPARE(m_system->calls.value(0), "start smbd.service replace");
    QTRY_COMPARE(m_system->calls.last(), "stop smbd.service replace");
    settleAll();
    QVERIFY2(m_system->calls.size() < 100, QByteArray::number(m_system->calls.size()));
    QCOMPARE(m_system->calls.last(), "stop smbd.service replace");
}

void FileServerTest::serviceControlsTheUnit()
{
    m_server.reset();
    configure("smbd.service");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("DBUS_SYSTEM_BUS_ADDRESS", m_systemBus->address());
    PlatformService service(environment);
    QVERIFY(service.isReady());
    QCopChannel::send("QPE/System", "stopSamba()");
    QTRY_COMPARE(m_system->calls, QStringList{"stop smbd.service replace"});
}

QTEST_GUILESS_MAIN(FileServerTest)
#include "fileservertest.moc"
