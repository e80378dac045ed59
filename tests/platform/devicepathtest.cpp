#include "devicepath.h"
#include "deviceroot.h"

#include <QTest>

class DevicePathTest : public QObject
{
    Q_OBJECT
private slots:
    void init() { qputenv("KY_DEVICE_ROOT", "/root of it"); }

    void putsTheRootInFront_data();
    void putsTheRootInFront();
    void withoutRootPathsStay();
    void slashesAtTheEndOfTheRootDontDouble();
    void prefixMatchesPlainAndRooted_data();
    void prefixMatchesPlainAndRooted();
    void plainFormCutsToTheRoom_data();
    void plainFormCutsToTheRoom();
    void plainFormMeasuresWithoutRoom();
};

void DevicePathTest::putsTheRootInFront_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *path, const char *expected) {
        QTest::newRow(path) << QString::fromUtf8(path) << QString::fromUtf8(expected);
    };
    row("/proc/apm", "/root of it/proc/apm");
    row("/", "/root of it/");
    row("/usr/mnt.rom/card", "/root of it/usr/mnt.rom/card");
    row("/日本", "/root of it/日本");
    row("/dev/dsp", "/dev/dsp");
    row("/dev", "/dev");
    row("/device", "/root of it/device");
    row("/tmp/x", "/tmp/x");
    row("/tmpx", "/root of it/tmpx");
    row("/proc/self/status", "/proc/self/status");
    row("/proc/selfish", "/root of it/proc/selfish");
    row("/proc/12/cmdline", "/proc/12/cmdline");
    row("/proc/12", "/proc/12");
    row("/proc/12x", "/root of it/proc/12x");
    row("/proc/", "/root of it/proc/");
    row("relative/path", "relative/path");
    row("", "");
}

void DevicePathTest::putsTheRootInFront()
{
    QFETCH(QString, path);
    QTEST(devicePath(path), "expected");
}

void DevicePathTest::withoutRootPathsStay()
{
    qunsetenv("KY_DEVICE_ROOT");
    QCOMPARE(devicePath("/proc/apm"), QString("/proc/apm"));
    qputenv("KY_DEVICE_ROOT", "");
    QCOMPARE(devicePath("/proc/apm"), QString("/proc/apm"));
    qputenv("KY_DEVICE_ROOT", "/");
    QCOMPARE(devicePath("/proc/apm"), QString("/proc/apm"));
}

void DevicePathTest::slashesAtTheEndOfTheRootDontDouble()
{
    qputenv("KY_DEVICE_ROOT", "/r//");
    QCOMPARE(devicePath("/proc/apm"), QString("/r/proc/apm"));
}

void DevicePathTest::prefixMatchesPlainAndRooted_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("matches");
    QTest::newRow("plain") << "/usr/mnt.rom/card/a" << true;
    QTest::newRow("rooted") << "/root of it/usr/mnt.rom/card/a" << true;
    QTest::newRow("the folder itself") << "/usr/mnt.rom/card" << true;
    QTest::newRow("another root") << "/other/usr/mnt.rom/card" << false;
    QTest::newRow("shorter") << "/usr/mnt.rom/car" << false;
}

void DevicePathTest::prefixMatchesPlainAndRooted()
{
    QFETCH(QString, path);
    QTEST(startsWithDevicePath(path, "/usr/mnt.rom/card"), "matches");
}

void DevicePathTest::plainFormCutsToTheRoom_data()
{
    QTest::addColumn<size_t>("room");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("one byte") << size_t(1) << QByteArray("");
    QTest::newRow("within the root") << size_t(3) << QByteArray("/r");
    QTest::newRow("behind the root") << size_t(4) << QByteArray("/rt");
    QTest::newRow("within the path") << size_t(6) << QByteArray("/rt/a");
    QTest::newRow("one short") << size_t(7) << QByteArray("/rt/ab");
    QTest::newRow("just enough") << size_t(8) << QByteArray("/rt/abc");
    QTest::newRow("plenty") << size_t(20) << QByteArray("/rt/abc");
}

void DevicePathTest::plainFormCutsToTheRoom()
{
    QFETCH(size_t, room);
    QFETCH(QByteArray, expected);
    qputenv("KY_DEVICE_ROOT", "/rt");
    QByteArray out(32, '#');
    QCOMPARE(kyDevicePath("/abc", out.data(), room), size_t(7));
    QCOMPARE(out.constData(), expected.constData());
    QCOMPARE(out.mid(static_cast<qsizetype>(room)), QByteArray(32 - static_cast<qsizetype>(room), '#'));
}

void DevicePathTest::plainFormMeasuresWithoutRoom()
{
    qputenv("KY_DEVICE_ROOT", "/rt");
    QCOMPARE(kyDevicePath("/abc", nullptr, 0), size_t(7));
}

QTEST_GUILESS_MAIN(DevicePathTest)
#include "devicepathtest.moc"
