#include "devicetree.h"
#include <cstdio>
#include <QtTest>

namespace {

/** The files of a power supply: type, status, capacity, ... */
using Supply = QMap<QString, QByteArray>;

void writeFile(const QString &path, const QByteArray &contents)
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(contents + '\n');
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

struct ApmLine
{
    int fields = 0;
    unsigned ac = 0xee, status = 0xee, flag = 0xee;
    int percent = -2, seconds = -2;
    char unit = 0;
};

/** Reads the line as its readers do. */
ApmLine parse(const QByteArray &line)
{
    ApmLine apm;
    apm.fields = std::sscanf(line.constData(), "%*[^ ] %*d.%*d 0x%*x 0x%x 0x%x 0x%x %d%% %i %c", &apm.ac,
                             &apm.status, &apm.flag, &apm.percent, &apm.seconds, &apm.unit);
    return apm;
}

} // namespace

class DeviceTreeTest : public QObject
{
    Q_OBJECT
private slots:
    void apmLine_data();
    void apmLine();
    void memoryHeader();
    void memoryHeaderOfNothing();
    void filesAreHonest();
    void checksumFollowsIdentity();
    void filesAreRefreshed();
    void linkIsRenewed();
    void destructionTakesFilesAway();
};

void DeviceTreeTest::apmLine_data()
{
    QTest::addColumn<QList<Supply>>("supplies");
    QTest::addColumn<int>("ac");
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("percent");
    QTest::addColumn<int>("seconds");
    const auto battery = [](const char *status, const char *capacity) {
        return Supply{{"type", "Battery"}, {"status", status}, {"capacity", capacity}};
    };
    const Supply plugged{{"type", "Mains"}, {"online", "1"}}, unplugged{{"type", "Mains"}, {"online", "0"}};
    const auto row = [](const char *name, const QList<Supply> &supplies, int ac, int status, int percent,
                        int seconds = -1) {
        QTest::newRow(name) << supplies << ac << status << percent << seconds;
    };
    row("no supply", {}, 1, 4, -1);
    row("mains only", {plugged}, 1, 4, -1);
    row("high", {battery("Discharging", "80"), unplugged}, 0, 0, 80);
    row("just high", {battery("Discharging", "31")}, 0, 0, 31);
    row("low", {battery("Discharging", "30")}, 0, 1, 30);
    row("just low", {battery("Discharging", "11")}, 0, 1, 11);
    row("very low", {battery("Discharging", "10")}, 0, 127, 10);
    row("just very low", {battery("Discharging", "6")}, 0, 127, 6);
    row("critical", {battery("Discharging", "5")}, 0, 2, 5);
    row("charging", {battery("Charging", "42"), plugged}, 1, 3, 42);
    row("full", {battery("Full", "100"), plugged}, 1, 0, 100);
    row("discharging on the mains", {battery("Discharging", "50"), plugged}, 1, 0, 50);
    row("USB supply", {battery("Discharging", "50"), Supply{{"type", "USB"}, {"online", "1"}}}, 1, 0, 50);
    row("above 100", {battery("Discharging", "104")}, 0, 0, 100);
    row("unknown charge", {battery("Discharging", "?")}, 0, 0, -1);
    Supply timed = battery("Discharging", "50");
    timed.insert("time_to_empty_now", "5400");
    row("time left", {timed}, 0, 0, 50, 5400);
    Supply mouse = battery("Discharging", "3");
    mouse.insert("scope", "Device");
    row("battery of a mouse", {mouse}, 1, 4, -1);
    Supply absent = battery("Unknown", "0");
    absent.insert("present", "0");
    row("battery taken out", {absent, plugged}, 1, 4, -1);
}

void DeviceTreeTest::apmLine()
{
    QFETCH(QList<Supply>, supplies);
    QTemporaryDir folder;
    for (int i = 0; i < supplies.size(); ++i) {
        for (auto file = supplies[i].cbegin(); file != supplies[i].cend(); ++file)
            writeFile(folder.filePath(QString("supply%1/%2").arg(i).arg(file.key())), file.value());
    }
    const ApmLine apm = parse(DeviceTree::apmLine(folder.path()));
    QCOMPARE(apm.fields, 6);
    QTEST(int(apm.ac), "ac");
    QTEST(int(apm.status), "status");
    QTEST(apm.percent, "percent");
    QTEST(apm.seconds, "seconds");
    QCOMPARE(apm.unit, apm.seconds < 0 ? '?' : 's');
}

void DeviceTreeTest::memoryHeader()
{
    const QByteArray today =
        "MemTotal:        8000000 kB\nMemFree:         1000 kB\nMemAvailable:  5 kB\n"
        "Buffers:            20 kB\nCached:            300 kB\nSwapCached:         7 kB\n"
        "SwapTotal:        50 kB\nSwapFree:         40 kB\nShmem:             4 kB\n";
    const QList<QByteArray> lines = DeviceTree::memoryHeader(today).split('\n');
    QCOMPARE(lines[0], QByteArray("        total:    used:    free:  shared: buffers:  cached:"));
    QCOMPARE(lines[1], QByteArray("Mem:  8192000000 8190976000 1024000 4096 20480 307200"));
    QCOMPARE(lines[2], QByteArray("Swap: 51200 10240 40960"));
    QCOMPARE(lines.size(), 4); // the last one empty
}

void DeviceTreeTest::memoryHeaderOfNothing()
{
    QCOMPARE(DeviceTree::memoryHeader("MemFree\nMemFree:\n").split('\n')[1], QByteArray("Mem:  0 0 0 0 0 0"));
}

void DeviceTreeTest::filesAreHonest()
{
    QTemporaryDir folder;
    DeviceTree tree(folder.filePath("root"), folder.filePath("files"));
    QVERIFY(tree.create());
    const QString proc = folder.filePath("root/proc/");
    const double free = readFile(proc + "fs/jffs2/1f:03/reliable_free_size").trimmed().toDouble();
    const double actual = double(QStorageInfo(QDir::homePath()).bytesAvailable());
    QVERIFY2(qAbs(free - actual) < 0.2 * actual + 1, QByteArray::number(free));
    const QList<QByteArray> memory = readFile(proc + "meminfo").split('\n')[1].simplified().split(' ');
    const double total = double(sysconf(_SC_PHYS_PAGES)) * double(sysconf(_SC_PAGESIZE));
    QVERIFY2(qAbs(memory.value(1).toDouble() - total) < 0.1 * total, memory.value(1));
    QCOMPARE(parse(readFile(proc + "apm")).fields, 6);
    QCOMPARE(readFile(proc + "deviceinfo/hardno"), QByteArray("0\n"));
    QCOMPARE(readFile(proc + "deviceinfo/locale"), QByteArray("C\n"));
    QVERIFY(readFile(proc + "cpuinfo").startsWith("processor"));
}

void DeviceTreeTest::checksumFollowsIdentity()
{
    QTemporaryDir folder;
    const QByteArray before = qgetenv("LANG");
    QSet<QByteArray> sums;
    for (const char *language : {"C.UTF-8", "ja_JP.UTF-8", "C.UTF-8"}) {
        qputenv("LANG", language);
        DeviceTree tree(folder.filePath("root"), folder.filePath("files"));
        QVERIFY(tree.create());
        sums.insert(readFile(folder.filePath("root/proc/deviceinfo/checksum")));
    }
    qputenv("LANG", before);
    QCOMPARE(sums.size(), 2);
}

void DeviceTreeTest::filesAreRefreshed()
{
    QTemporaryDir folder;
    DeviceTree tree(folder.filePath("root"), folder.filePath("files"));
    QVERIFY(tree.create());
    const QString file = folder.filePath("root/proc/meminfo");
    const QByteArray before = readFile(file);
    const std::vector<char> ballast(64 * 1024 * 1024, 'x');
    QTRY_VERIFY_WITH_TIMEOUT(readFile(file) != before, DeviceTree::RefreshTime + 1500);
    QVERIFY(readFile(file).contains("Mem:"));
    QCOMPARE(ballast.back(), 'x');
}

void DeviceTreeTest::linkIsRenewed()
{
    QTemporaryDir folder;
    QVERIFY(QDir().mkpath(folder.filePath("root")));
    QVERIFY(QFile::link(folder.filePath("gone"), folder.filePath("root/proc")));
    DeviceTree tree(folder.filePath("root"), folder.filePath("files"));
    QVERIFY(tree.create());
    QCOMPARE(QFile::symLinkTarget(folder.filePath("root/proc")), folder.filePath("files"));
}

void DeviceTreeTest::destructionTakesFilesAway()
{
    QTemporaryDir folder;
    {
        DeviceTree tree(folder.filePath("root"), folder.filePath("files"));
        QVERIFY(tree.create());
        QVERIFY(QFile::exists(folder.filePath("files/apm")));
    }
    QVERIFY(!QFile::exists(folder.filePath("files")));
}

QTEST_GUILESS_MAIN(DeviceTreeTest)
#include "devicetreetest.moc"
