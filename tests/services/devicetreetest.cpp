#include "devicetree.h"
#include "logcapture.h"
#include "mounts.h"
#include <filesystem>
#include <QtTest>

namespace {

bool canMount = false; // set by main()

void writeFile(const QString &path, const QByteArray &contents)
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(contents), contents.size());
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/** A tree in a folder of its own, whose sources the test writes. */
struct TreeFolder
{
    TreeFolder()
    {
        sources.powerSupplies = folder.filePath("power");
        sources.firmware = folder.filePath("firmware");
        sources.settings = folder.filePath("settings.conf");
        sources.refreshTime = 100;
    }
    void makeTree()
    {
        tree = std::make_unique<DeviceTree>(folder.filePath("root"), folder.filePath("files"), sources);
        QVERIFY(tree->create());
    }
    [[nodiscard]] QByteArray value(const QString &name) const
    {
        return readFile(folder.filePath("root/proc/" + name));
    }
    [[nodiscard]] QByteArray identity(const QString &name) const { return value("deviceinfo/" + name); }
    void setSettings(const QByteArray &text) const { writeFile(sources.settings, text); }
    void setMains(const char *online) const
    {
        writeFile(sources.powerSupplies + "/AC/type", "Mains\n");
        writeFile(sources.powerSupplies + "/AC/online", QByteArray(online) + '\n');
        writeFile(sources.powerSupplies + "/BAT/type", "Battery\n");
        writeFile(sources.powerSupplies + "/BAT/capacity", "50\n");
    }

    QTemporaryDir folder;
    DeviceSources sources;
    std::unique_ptr<DeviceTree> tree;
};

constexpr auto OnMains = "1.16 1.2 0x02 0x01 0x00 0xff 50% -1 ?\n";
constexpr auto OnBattery = "1.16 1.2 0x02 0x00 0x00 0xff 50% -1 ?\n";

} // namespace

class DeviceTreeTest : public QObject
{
    Q_OBJECT
private slots:
    void memoryHeader();
    void memoryHeaderOfNothing();
    void filesAreHonest();
    void checksumFollowsIdentity();
    void filesAreRefreshed();
    void settingsNameTheIdentity();
    void machineNamesTheRest();
    void numberIsThatOfTheSettings();
    void identityFollowsTheSettings();
    void valuesAreOneLine_data();
    void valuesAreOneLine();
    void powerIsRefreshed();
    void mountRefreshesAtOnce();
    void fullDiskHeals();
    void lostFileComesBack();
    void filesAreReplacedWhole();
    void linkIsRenewed();
    void destructionTakesFilesAway();
};

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
    const double actual = double(std::filesystem::space(QDir::homePath().toStdString()).available);
    QVERIFY2(qAbs(free - actual) < 0.2 * actual + 1, QByteArray::number(free));
    const QList<QByteArray> memory = readFile(proc + "meminfo").split('\n')[1].simplified().split(' ');
    const double total = double(sysconf(_SC_PHYS_PAGES)) * double(sysconf(_SC_PAGESIZE));
    QVERIFY2(qAbs(memory.value(1).toDouble() - total) < 0.1 * total, memory.value(1));
    QVERIFY(readFile(proc + "apm").startsWith("1.16 1.2 0x02 0x0"));
    QVERIFY(!QFile::exists(proc + "deviceinfo/hardno"));
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

void DeviceTreeTest::settingsNameTheIdentity()
{
    TreeFolder folder;
    folder.setSettings("[Other]\nVendor = no\n[Identity]\nFormatVersion = 2.1\nVendor = A vendor\n"
                       "Product = KY-3500\nNumber = 2\nLocale = ja\nCheckSum = abc\n");
    folder.makeTree();
    QCOMPARE(folder.identity("filever"), QByteArray("2.1\n"));
    QCOMPARE(folder.identity("vendor"), QByteArray("A vendor\n"));
    QCOMPARE(folder.identity("product"), QByteArray("KY-3500\n"));
    QCOMPARE(folder.identity("hardno"), QByteArray("2\n"));
    QCOMPARE(folder.identity("locale"), QByteArray("ja\n"));
    QCOMPARE(folder.identity("checksum"), QByteArray("abc\n"));
}

void DeviceTreeTest::machineNamesTheRest()
{
    TreeFolder folder;
    writeFile(folder.sources.firmware + "/sys_vendor", "Maker of machines\n");
    writeFile(folder.sources.firmware + "/product_name", "Machine 7\n");
    folder.setSettings("[Identity]\nVendor = Somebody\n");
    folder.makeTree();
    QCOMPARE(folder.identity("vendor"), QByteArray("Somebody\n"));
    QCOMPARE(folder.identity("product"), QByteArray("Machine 7\n"));
    QCOMPARE(folder.identity("filever"), QByteArray("1.0\n"));
    QCOMPARE(folder.identity("locale"), QByteArray("C\n"));
    const QByteArray sum = QCryptographicHash::hash("1.0SomebodyMachine 7C", QCryptographicHash::Md5).toHex();
    QCOMPARE(folder.identity("checksum"), sum + '\n');
}

void DeviceTreeTest::numberIsThatOfTheSettings()
{
    TreeFolder folder;
    folder.setSettings("[Identity]\nProduct = KY-3500\n");
    folder.makeTree();
    // Readers take the number of this file first, and go by the product only without it.
    QVERIFY(!QFile::exists(folder.folder.filePath("files/deviceinfo/hardno")));
    folder.setSettings("[Identity]\nProduct = KY-3500\nNumber = 7\n");
    QTRY_COMPARE_WITH_TIMEOUT(folder.identity("hardno"), QByteArray("7\n"), 10000);
    folder.setSettings("[Identity]\nProduct = KY-3500\n");
    QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(folder.folder.filePath("files/deviceinfo/hardno")), 10000);
}

void DeviceTreeTest::identityFollowsTheSettings()
{
    TreeFolder folder;
    folder.makeTree();
    QCOMPARE(folder.identity("product"), QByteArray("\n"));
    const QByteArray sum = folder.identity("checksum");
    folder.setSettings("[Identity]\nProduct = KY-C100\n");
    QTRY_COMPARE_WITH_TIMEOUT(folder.identity("product"), QByteArray("KY-C100\n"), 10000);
    QTRY_VERIFY_WITH_TIMEOUT(folder.identity("checksum") != sum, 10000);
    QVERIFY(QFile::remove(folder.sources.settings));
    QTRY_COMPARE_WITH_TIMEOUT(folder.identity("product"), QByteArray("\n"), 10000);
    QTRY_COMPARE_WITH_TIMEOUT(folder.identity("checksum"), sum, 10000);
}

void DeviceTreeTest::valuesAreOneLine_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QByteArray>("line");
    const QByteArray kana = QString(200, QChar(0x3042)).toUtf8(); // three bytes each
    const auto row = [](const char *name, const QByteArray &value, const QByteArray &line) {
        QTest::newRow(name) << value << line;
    };
    row("carriage return", "one\rtwo", "one two\n");
    row("zero byte", QByteArray("one\0two", 7), "one two\n");
    row("511 bytes", QByteArray(511, 'x'), QByteArray(511, 'x') + '\n');
    row("600 bytes", QByteArray(600, 'x'), QByteArray(511, 'x') + '\n');
    row("600 bytes of kana", kana, kana.left(510) + '\n');
    row("600 bytes that end within one", 'x' + kana, 'x' + kana.left(510) + '\n');
    row("empty", "", "\n");
}

void DeviceTreeTest::valuesAreOneLine()
{
    QFETCH(QByteArray, value);
    TreeFolder folder;
    folder.setSettings("[Identity]\nProduct = " + value + "\nNumber = " + value + '\n');
    folder.makeTree();
    QTEST(folder.identity("product"), "line");
    QTEST(folder.identity("hardno"), "line");
}

void DeviceTreeTest::powerIsRefreshed()
{
    TreeFolder folder;
    folder.setMains("1");
    folder.makeTree();
    QCOMPARE(folder.value("apm"), QByteArray(OnMains));
    folder.setMains("0");
    QTRY_COMPARE_WITH_TIMEOUT(folder.value("apm"), QByteArray(OnBattery), 10000);
}

void DeviceTreeTest::mountRefreshesAtOnce()
{
    if (!canMount)
        QSKIP("this machine allows no mounts of one's own");
    TreeFolder folder;
    folder.sources.refreshTime = 3600000; // so that it can't be this
    folder.setMains("1");
    folder.makeTree();
    folder.setMains("0");
    QTest::qWait(3 * KernelEvents::GatherTime);
    QCOMPARE(folder.value("apm"), QByteArray(OnMains));
    QTemporaryDir card;
    const TmpfsMount mount(card.path());
    QVERIFY(mount.isMounted());
    QTRY_COMPARE_WITH_TIMEOUT(folder.value("apm"), QByteArray(OnBattery), 10000);
}

void DeviceTreeTest::fullDiskHeals()
{
    if (!canMount)
        QSKIP("this machine allows no mounts of one's own");
    TreeFolder folder;
    QVERIFY(QDir().mkpath(folder.folder.filePath("files")));
    const TmpfsMount disk(folder.folder.filePath("files"), "size=256k");
    QVERIFY(disk.isMounted());
    folder.setMains("1");
    folder.makeTree();
    QFile ballast(folder.folder.filePath("files/ballast"));
    QVERIFY(ballast.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (ballast.write(QByteArray(4096, 'x')) > 0) {
    }
    LogCapture log;
    folder.setMains("0");
    QTRY_COMPARE_WITH_TIMEOUT(log.warnings().size(), 1, 10000);
    QTest::qWait(5 * folder.sources.refreshTime);
    QCOMPARE(log.warnings().size(), 1); // one for all files and times
    QVERIFY2(log.warnings()[0].startsWith("kyplatformd: cannot write "), qPrintable(log.warnings()[0]));
    QCOMPARE(folder.value("apm"), QByteArray(OnMains));
    QVERIFY(ballast.remove());
    QTRY_COMPARE_WITH_TIMEOUT(folder.value("apm"), QByteArray(OnBattery), 10000);
}

void DeviceTreeTest::lostFileComesBack()
{
    TreeFolder folder;
    folder.setMains("1");
    folder.makeTree();
    QVERIFY(QDir(folder.folder.filePath("files")).removeRecursively());
    QTRY_VERIFY_WITH_TIMEOUT(!folder.identity("checksum").isEmpty(), 10000);
    QCOMPARE(folder.value("apm"), QByteArray(OnMains));
    QVERIFY(folder.value("cpuinfo").size() > 1);
}

void DeviceTreeTest::filesAreReplacedWhole()
{
    TreeFolder folder;
    folder.setMains("1");
    folder.makeTree();
    QFile before(folder.folder.filePath("files/apm"));
    QVERIFY(before.open(QIODevice::ReadOnly));
    folder.setMains("0");
    QTRY_COMPARE_WITH_TIMEOUT(folder.value("apm"), QByteArray(OnBattery), 10000);
    QCOMPARE(before.readAll(), QByteArray(OnMains));
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

int main(int argc, char **argv)
{
    canMount = enterMountNamespace();
    QCoreApplication application(argc, argv);
    DeviceTreeTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "devicetreetest.moc"
