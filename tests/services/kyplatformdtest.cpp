#include "platformservice.h"
#include "privatebus.h"
#include <QtTest>

namespace {

using Environment = QProcessEnvironment;

Environment environmentWith(const QString &name, const QString &value)
{
    Environment environment = Environment::systemEnvironment();
    environment.insert(name, value);
    return environment;
}

QString treeFolder()
{
    return qEnvironmentVariable("XDG_RUNTIME_DIR") + "/ky-" + SessionBus::profile() + "/proc";
}

QString procLink()
{
    return qEnvironmentVariable("KY_DEVICE_ROOT") + "/proc";
}

} // namespace

class KyPlatformDTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void tellsItsOptions_data();
    void tellsItsOptions();
    void unknownOptionFails();
    void argumentsFail();
    void treeIsCompleteWhenNameIsThere();
    void secondStartExits();
    void eachHomeHasItsOwn();
    void endsCleanlyOnSignal_data();
    void endsCleanlyOnSignal();
    void endsWithItsBus();
    void startsAgainAfterKill();
    void needsBus();
    void needsRuntimeFolder();
    void needsNoDeviceRoot();
    void keepsForeignProcFolder();
    void failsWhereRootCannotBeWritten();
    void failsWhereFilesCannotBeKept();
    void removesMarkerOfCategoryEditing();
    void removesMarkerThatLeadsNowhere();
};

void KyPlatformDTest::init()
{
    QDir(procLink()).removeRecursively(); // the fixture's own folder
    QFile::remove(procLink());
    QDir(treeFolder()).removeRecursively(); // what a killed service left
}

void KyPlatformDTest::tellsItsOptions_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("--help") << QByteArray("Usage:");
    QTest::newRow("--version") << QByteArray("kyplatformd 1.0.0");
}

void KyPlatformDTest::tellsItsOptions()
{
    QFETCH(QByteArray, text);
    PlatformService service(Environment::systemEnvironment(), {QTest::currentDataTag()});
    QCOMPARE(service.exitCode(), 0);
    const QByteArray output = service.output();
    QVERIFY2(output.contains(text), output);
}

void KyPlatformDTest::unknownOptionFails()
{
    PlatformService service(Environment::systemEnvironment(), {"--nonsense"});
    QCOMPARE(service.exitCode(), 1);
    QVERIFY(service.errors().contains("nonsense"));
}

void KyPlatformDTest::argumentsFail()
{
    PlatformService service(Environment::systemEnvironment(), {"start"});
    QCOMPARE(service.exitCode(), 1);
    QCOMPARE(service.errors(), QByteArray("kyplatformd: it takes no arguments but options\n"));
}

void KyPlatformDTest::treeIsCompleteWhenNameIsThere()
{
    PlatformService service;
    QVERIFY(service.isReady());
    QCOMPARE(QFile::symLinkTarget(procLink()), treeFolder());
    for (const char *name :
         {"apm", "meminfo", "cpuinfo", "fs/jffs2/1f:03/reliable_free_size", "deviceinfo/filever",
          "deviceinfo/vendor", "deviceinfo/product", "deviceinfo/locale", "deviceinfo/checksum"})
        QVERIFY2(QFileInfo(procLink() + '/' + name).size() > 0, name);
}

void KyPlatformDTest::secondStartExits()
{
    PlatformService first;
    QVERIFY(first.isReady());
    PlatformService second;
    QCOMPARE(second.exitCode(), 1);
    QCOMPARE(second.errors(), QByteArray("kyplatformd: already running for this HOME\n"));
    QVERIFY(QFile::exists(procLink() + "/apm"));
    QVERIFY(first.isReady());
}

void KyPlatformDTest::eachHomeHasItsOwn()
{
    PlatformService first;
    QVERIFY(first.isReady());
    QTemporaryDir other;
    Environment environment = environmentWith("HOME", other.path());
    environment.insert("KY_DEVICE_ROOT", other.filePath("root"));
    PlatformService second(environment);
    QTRY_VERIFY(QFile::exists(other.filePath("root/proc/apm")));
    QVERIFY(QFile::symLinkTarget(other.filePath("root/proc")) != treeFolder());
    QTest::qWait(200);
    second.signal(SIGTERM);
    QCOMPARE(second.exitCode(), 0);
    QVERIFY(QFile::exists(procLink() + "/apm"));
}

void KyPlatformDTest::endsCleanlyOnSignal_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGHUP") << SIGHUP;
}

void KyPlatformDTest::endsCleanlyOnSignal()
{
    QFETCH(int, number);
    PlatformService service;
    QVERIFY(service.isReady());
    service.signal(number);
    QCOMPARE(service.exitCode(), 0);
    QVERIFY(!QFile::exists(treeFolder()));
    QVERIFY(!SessionBus::hasOwner(SessionBus::serviceName("platform")));
    QCOMPARE(service.errors(), QByteArray());
}

void KyPlatformDTest::endsWithItsBus()
{
    PrivateBus bus;
    PlatformService service(environmentWith("DBUS_SESSION_BUS_ADDRESS", bus.address()));
    QTRY_VERIFY(QFile::exists(procLink() + "/apm"));
    QTest::qWait(200);
    bus.kill();
    QCOMPARE(service.exitCode(), 0);
    QVERIFY(!QFile::exists(treeFolder()));
}

void KyPlatformDTest::startsAgainAfterKill()
{
    PlatformService first;
    QVERIFY(first.isReady());
    first.signal(SIGKILL);
    QCOMPARE(first.exitCode(), -1);
    QTRY_VERIFY(!SessionBus::hasOwner(SessionBus::serviceName("platform")));
    QVERIFY(QFile::remove(treeFolder() + "/apm"));
    PlatformService second;
    QVERIFY(second.isReady());
    QVERIFY(QFile::exists(procLink() + "/apm"));
}

void KyPlatformDTest::needsBus()
{
    PlatformService service(environmentWith("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"));
    QCOMPARE(service.exitCode(), 1);
    QCOMPARE(service.errors(), QByteArray("kyplatformd: there is no session bus\n"));
    QVERIFY(!QFileInfo(procLink()).isSymLink());
}

void KyPlatformDTest::needsRuntimeFolder()
{
    QTemporaryDir temporary;
    QFile inTheWay(temporary.filePath("runtime-" + QFileInfo(temporary.path()).owner()));
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    Environment environment = environmentWith("XDG_RUNTIME_DIR", "/proc/version");
    environment.insert("TMPDIR", temporary.path()); // one would be made here in its place
    PlatformService service(environment);
    QCOMPARE(service.exitCode(), 1);
    const QByteArray errors = service.errors();
    QVERIFY2(errors.endsWith("kyplatformd: there is no runtime folder\n"), errors);
    QVERIFY(!QFileInfo(procLink()).isSymLink());
    QVERIFY(!QFile::exists("/ky-" + SessionBus::profile()));
}

void KyPlatformDTest::needsNoDeviceRoot()
{
    Environment environment = Environment::systemEnvironment();
    environment.remove("KY_DEVICE_ROOT");
    PlatformService service(environment);
    QVERIFY(service.isReady());
    QVERIFY(!QFile::exists(treeFolder()));
}

void KyPlatformDTest::keepsForeignProcFolder()
{
    QVERIFY(QDir().mkpath(procLink()));
    PlatformService service;
    QVERIFY(service.isReady());
    QVERIFY(!QFileInfo(procLink()).isSymLink());
    QVERIFY(QDir(procLink()).isEmpty());
}

void KyPlatformDTest::failsWhereRootCannotBeWritten()
{
    PlatformService service(environmentWith("KY_DEVICE_ROOT", "/proc/nowhere"));
    QCOMPARE(service.exitCode(), 1);
    QVERIFY(service.errors().contains("kyplatformd: cannot make /proc/nowhere/proc"));
}

void KyPlatformDTest::failsWhereFilesCannotBeKept()
{
    QTemporaryDir runtime; // for the user alone, as it has to be
    const QString profile = runtime.filePath("ky-" + SessionBus::profile());
    QFile inTheWay(profile);
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    PlatformService service(environmentWith("XDG_RUNTIME_DIR", runtime.path()));
    QCOMPARE(service.exitCode(), 1);
    QCOMPARE(service.errors(), "kyplatformd: cannot write " + QFile::encodeName(profile) +
                                   "/proc/apm: its folder cannot be made\n");
    QVERIFY(!QFileInfo(procLink()).isSymLink());
}

void KyPlatformDTest::removesMarkerThatLeadsNowhere()
{
    const QString marker = QDir::homePath() + "/.cateditting";
    QVERIFY(QFile::link(QDir::homePath() + "/nowhere", marker));
    PlatformService service;
    QVERIFY(service.isReady());
    QVERIFY(!QFileInfo(marker).isSymLink());
}

void KyPlatformDTest::removesMarkerOfCategoryEditing()
{
    const QString marker = QDir::homePath() + "/.cateditting";
    QFile file(marker);
    QVERIFY(file.open(QIODevice::WriteOnly));
    PlatformService service;
    QVERIFY(service.isReady());
    QVERIFY(!QFile::exists(marker));
}

QTEST_GUILESS_MAIN(KyPlatformDTest)
#include "kyplatformdtest.moc"
