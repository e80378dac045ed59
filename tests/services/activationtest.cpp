#include "childprocess.h"
#include "platformservice.h"
#include "privatebus.h"
#include "qpeapplication.h"
#include <QtTest>

namespace {

using Environment = QProcessEnvironment;

constexpr int TooLong = 1500; // ms, less than an application waits for its files

/** A bus that starts a program for org.ky.Platform, and an application's environment on it. */
class ActivatingBus
{
public:
    /** @param program an absolute path with arguments; none starts nothing */
    explicit ActivatingBus(const QByteArray &program = QByteArray())
        : m_environment(Environment::systemEnvironment())
    {
        m_environment.insert("KY_DEVICE_ROOT", root());
        m_environment.remove("DBUS_SESSION_BUS_ADDRESS");
        if (!program.isEmpty())
            writeService(program);
        m_bus = std::make_unique<PrivateBus>(services(), m_environment);
        m_environment.insert("DBUS_SESSION_BUS_ADDRESS", m_bus->address());
    }
    ~ActivatingBus()
    {
        QDBusConnection::disconnectFromBus(m_bus->address());
        m_bus->kill();
        // What was started ends with it.
        if (!QTest::qWaitFor([this] { return !hasTree(); }, 10000))
            qWarning("a service goes on");
    }
    Q_DISABLE_COPY_MOVE(ActivatingBus)

    [[nodiscard]] Environment environment() const { return m_environment; }
    [[nodiscard]] QString root() const { return m_folder.filePath("root"); }
    [[nodiscard]] QString marker() const { return m_folder.filePath("marker"); }
    [[nodiscard]] bool hasTree() const { return QFile::exists(root() + "/proc/apm"); }
    [[nodiscard]] QString ownerOf(const QString &service)
    {
        const QDBusConnection connection = QDBusConnection::connectToBus(m_bus->address(), m_bus->address());
        return connection.interface()->serviceOwner(service).value();
    }
    [[nodiscard]] bool hasOwner(const QString &service) { return !ownerOf(service).isEmpty(); }
    /** Takes a name for this test. */
    [[nodiscard]] bool take(const QString &service)
    {
        return QDBusConnection::connectToBus(m_bus->address(), m_bus->address()).registerService(service);
    }
    /** Lets the application keep its own files, so that it waits for nobody. */
    void makeForeignTree() const { QVERIFY(QDir().mkpath(root() + "/proc")); }
    void kill() { m_bus->kill(); }

private:
    [[nodiscard]] QString services() const { return m_folder.filePath("services"); }
    void writeService(QByteArray program) const
    {
        QVERIFY(QDir().mkpath(services()));
        QFile file(services() + "/org.ky.Platform.service");
        QVERIFY(file.open(QIODevice::WriteOnly));
        program.replace("MARKER", QFile::encodeName(marker()));
        file.write("[D-BUS Service]\nName=org.ky.Platform\nExec=" + program + '\n');
    }

    QTemporaryDir m_folder;
    Environment m_environment;
    std::unique_ptr<PrivateBus> m_bus;
};

/** Says how long the start of an application took and what it then found of the device's files. */
int childMain(int argc, char **argv)
{
    QElapsedTimer clock;
    clock.start();
    const QPEApplication application(argc, argv, "starter");
    ChildProcess::say(QByteArray::number(clock.elapsed()));
    ChildProcess::say(QFile::exists(qEnvironmentVariable("KY_DEVICE_ROOT") + "/proc/apm") ? "files" : "none");
    SessionBus::flush();
    const ChildInput input([](const QByteArray &) {});
    return QCoreApplication::exec();
}

QString platformName()
{
    return SessionBus::serviceName("platform");
}

} // namespace

class ActivationTest : public QObject
{
    Q_OBJECT
private slots:
    void applicationHasTheServiceStarted();
    void startedServiceEndsCleanly();
    void manyApplicationsStartOneService();
    void startIsNotWaitedFor();
    void serviceThatNeverServesIsGivenUp();
    void busWithoutServiceCostsNoTime();
    void machineWithoutBusCostsNoTime();
    void presentServiceIsNotStartedAgain();
    void testsStartNothing();
    void serviceOfAnotherHomeDoesNotPreventTheStart();
};

void ActivationTest::applicationHasTheServiceStarted()
{
    ActivatingBus bus(KY_PLATFORMD " --activated");
    ChildProcess child({}, bus.environment());
    QVERIFY(!child.readLine().isNull());
    QCOMPARE(child.readLine(), QByteArray("files"));
    QVERIFY(bus.hasOwner(platformName()));
    QCOMPARE(bus.ownerOf("org.ky.Platform"), bus.ownerOf(platformName()));
}

void ActivationTest::startedServiceEndsCleanly()
{
    ActivatingBus bus(KY_PLATFORMD " --activated");
    ChildProcess child({}, bus.environment());
    QVERIFY(!child.readLine().isNull());
    const QDBusConnection connection = QDBusConnection::connectToBus(
        bus.environment().value("DBUS_SESSION_BUS_ADDRESS"), "startedServiceEndsCleanly");
    const uint pid = connection.interface()->servicePid("org.ky.Platform");
    QVERIFY(pid > 0);
    QCOMPARE(::kill(pid_t(pid), SIGTERM), 0);
    QTRY_VERIFY_WITH_TIMEOUT(!bus.hasOwner("org.ky.Platform"), 10000);
    QTRY_VERIFY_WITH_TIMEOUT(!bus.hasOwner(platformName()), 10000);
    QVERIFY(!bus.hasTree());
    QDBusConnection::disconnectFromBus("startedServiceEndsCleanly");
}

void ActivationTest::manyApplicationsStartOneService()
{
    ActivatingBus bus(KY_PLATFORMD " --activated");
    std::vector<std::unique_ptr<ChildProcess>> children;
    for (int i = 0; i < 5; ++i)
        children.push_back(std::make_unique<ChildProcess>(QStringList(), bus.environment()));
    for (const auto &child : children) {
        QVERIFY(!child->readLine().isNull());
        QCOMPARE(child->readLine(), QByteArray("files"));
    }
    QVERIFY(bus.hasOwner(platformName()));
}

void ActivationTest::startIsNotWaitedFor()
{
    ActivatingBus bus("/bin/sh -c \"touch MARKER; sleep 5\"");
    bus.makeForeignTree();
    ChildProcess child({}, bus.environment());
    const QByteArray time = child.readLine();
    QVERIFY2(!time.isEmpty() && time.toInt() < TooLong, time);
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(bus.marker()), 10000);
}

void ActivationTest::serviceThatNeverServesIsGivenUp()
{
    ActivatingBus bus("/bin/sh -c \"touch MARKER; sleep 15\"");
    ChildProcess child({}, bus.environment());
    const QByteArray time = child.readLine();
    QVERIFY2(time.toInt() >= 2000 && time.toInt() < 8000, time);
    QCOMPARE(child.readLine(), QByteArray("none"));
    QVERIFY(QFile::exists(bus.marker()));
}

void ActivationTest::busWithoutServiceCostsNoTime()
{
    ActivatingBus bus;
    bus.makeForeignTree();
    ChildProcess child({}, bus.environment());
    const QByteArray time = child.readLine();
    QVERIFY2(!time.isEmpty() && time.toInt() < TooLong, time);
    QVERIFY(!bus.hasOwner(platformName()));
}

void ActivationTest::machineWithoutBusCostsNoTime()
{
    QTemporaryDir root;
    Environment environment = Environment::systemEnvironment();
    environment.insert("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    environment.insert("KY_DEVICE_ROOT", root.path());
    ChildProcess child({}, environment);
    const QByteArray time = child.readLine();
    QVERIFY2(!time.isEmpty() && time.toInt() < TooLong, time);
    QCOMPARE(child.readLine(), QByteArray("none"));
}

void ActivationTest::presentServiceIsNotStartedAgain()
{
    ActivatingBus bus("/bin/touch MARKER");
    QVERIFY(bus.take(platformName()));
    ChildProcess child({}, bus.environment());
    QVERIFY(!child.readLine().isNull());
    QVERIFY(!child.readLine().isNull());
    QTest::qWait(500);
    QVERIFY(!QFile::exists(bus.marker()));
}

void ActivationTest::testsStartNothing()
{
    // Whatever is installed on the machine: the bus of the tests knows nobody but itself.
    const QDBusReply<QStringList> names = SessionBus::connection().interface()->activatableServiceNames();
    QVERIFY(names.isValid());
    QCOMPARE(names.value(), QStringList("org.freedesktop.DBus"));
    ActivatingBus bus;
    const QDBusConnection own = QDBusConnection::connectToBus(
        bus.environment().value("DBUS_SESSION_BUS_ADDRESS"), "testsStartNothing");
    QCOMPARE(own.interface()->activatableServiceNames().value(), QStringList("org.freedesktop.DBus"));
    QDBusConnection::disconnectFromBus("testsStartNothing");
}

void ActivationTest::serviceOfAnotherHomeDoesNotPreventTheStart()
{
    ActivatingBus bus(KY_PLATFORMD " --activated");
    QTemporaryDir other;
    Environment environment = bus.environment();
    environment.insert("HOME", other.path());
    environment.insert("KY_DEVICE_ROOT", other.filePath("root"));
    PlatformService startedByHand(environment);
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(other.filePath("root/proc/apm")), 10000);
    ChildProcess child({}, bus.environment());
    QVERIFY(!child.readLine().isNull());
    QCOMPARE(child.readLine(), QByteArray("files"));
    QCOMPARE(bus.ownerOf("org.ky.Platform"), bus.ownerOf(platformName()));
    QVERIFY(QFile::exists(other.filePath("root/proc/apm")));
    startedByHand.signal(SIGTERM);
    QCOMPARE(startedByHand.exitCode(), 0);
    QVERIFY(bus.hasTree());
}

KY_TEST_MAIN_WITH_CHILD(ActivationTest, childMain)
#include "activationtest.moc"
