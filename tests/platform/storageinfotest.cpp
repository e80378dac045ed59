#include "storageinfo.h"

#include "devicepath.h"
#include "mounts.h"
#include <QDir>
#include <QSaveFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

static bool canMount = false;

static void put(const QString &path, const QByteArray &contents)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(contents), contents.size());
}

static QStringList pathsOf(const StorageInfo &storage)
{
    QStringList paths;
    for (const FileSystem *fileSystem : storage.fileSystems())
        paths.append(fileSystem->path());
    return paths;
}

static const FileSystem *at(const StorageInfo &storage, const QString &path)
{
    for (const FileSystem *fileSystem : storage.fileSystems()) {
        if (fileSystem->path() == path)
            return fileSystem;
    }
    return nullptr;
}

/** A copy of /usr with the folders of the cards in it, made of bind mounts. */
class UsrWithCards
{
public:
    UsrWithCards() : m_usr(m_folder.path())
    {
        const QDir usr("/usr");
        for (const QString &name : usr.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
            m_isComplete &= bind(usr.filePath(name), m_folder.filePath(name));
        m_isComplete &= QDir().mkpath(m_folder.filePath("mnt.rom/card")) &&
                        QDir().mkpath(m_folder.filePath("mnt.rom/cf")) &&
                        mount(qPrintable(m_folder.path()), "/usr", nullptr, MS_BIND | MS_REC, nullptr) == 0;
    }
    ~UsrWithCards()
    {
        if (m_isComplete)
            umount2("/usr", MNT_DETACH);
        umount2(qPrintable(m_folder.path()), MNT_DETACH);
    }
    Q_DISABLE_COPY_MOVE(UsrWithCards)

    [[nodiscard]] bool isComplete() const { return m_isComplete; }

private:
    static bool bind(const QString &from, const QString &to)
    {
        return QDir().mkpath(to) &&
               mount(qPrintable(from), qPrintable(to), nullptr, MS_BIND | MS_REC, nullptr) == 0;
    }

    QTemporaryDir m_folder;
    TmpfsMount m_usr;
    bool m_isComplete = true;
};

class StorageInfoTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void internalVolumeComesFirst();
    void internalVolumeIsThatOfHome();
    void deviceTableIsListedInItsOrder();
    void deviceTableHasOctalEscapes();
    void junkInTheDeviceTableIsPassedOver();
    void laterMountHidesTheEarlierOne();
    void secondMountOfAVolumeIsLeftOut();
    void pathsBelongToTheirVolume();
    void veryLongPathsEnd();
    void namesAreThoseOfTheKind();
    void defaultNames();
    void changesOfTheDeviceTableAreToldOnce_data();
    void changesOfTheDeviceTableAreToldOnce();
    void aTableThatAppearsIsSeen();
    void sameTableTellsNothing();

    void kernelTableListsCards();
    void mountsAreToldOnce();
    void otherMountsTellNothing();
    void blocksAreThoseOfTheVolume();
    void fileSystemOfFindsTheMount();

private:
    void writeTable(const QByteArray &lines);
    QString inRoot(const char *path) const { return m_root->path() + path; }

    std::unique_ptr<QTemporaryDir> m_root;
};

void StorageInfoTest::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    QVERIFY(m_root->isValid());
    qputenv("KY_DEVICE_ROOT", m_root->path().toUtf8());
    for (const char *folder : {"/etc", "/usr/mnt.rom/card", "/usr/mnt.rom/cf", "/mnt/disk one", "/mnt/b"})
        QVERIFY(QDir().mkpath(inRoot(folder)));
}

void StorageInfoTest::cleanup()
{
    m_root.reset();
}

void StorageInfoTest::writeTable(const QByteArray &lines)
{
    QSaveFile file(inRoot("/etc/mtab"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(lines), lines.size());
    QVERIFY(file.commit());
}

void StorageInfoTest::internalVolumeComesFirst()
{
    const StorageInfo storage;
    QCOMPARE(storage.fileSystems().size(), 1);
    const FileSystem *internal = storage.fileSystems().first();
    QCOMPARE(internal->name(), QString("Internal"));
    QVERIFY(!internal->isRemovable());
    QVERIFY(internal->isWritable());
    QVERIFY(internal->options().split(',').contains("rw"));
    QVERIFY(QDir::homePath().startsWith(internal->path()));
    QVERIFY(internal->totalBlocks() > internal->availBlocks());
}

void StorageInfoTest::internalVolumeIsThatOfHome()
{
    if (!canMount)
        QSKIP("this machine forbids mounts");
    const TmpfsMount home(QDir::homePath(), "size=64k");
    QVERIFY(home.isMounted());
    const StorageInfo storage;
    const FileSystem *internal = storage.fileSystems().first();
    QCOMPARE(internal->path(), QDir::homePath());
    QCOMPARE(internal->disk(), QString("kytest"));
    QCOMPARE(internal->totalBlocks() * internal->blockSize(), 65536L);
}

void StorageInfoTest::deviceTableIsListedInItsOrder()
{
    writeTable("/dev/root / cramfs ro 0 0\n"
               "/proc /proc proc rw 0 0\n"
               "none /dev/shm tmpfs rw 0 0\n"
               "/dev/hda1 /usr/mnt.rom/cf vfat rw,noatime 0 0\n"
               "none /var/tmpfs tmpfs rw 0 0\n"
               "/dev/mmcda1 /usr/mnt.rom/card tmpfs ro,noatime 0 0\n"
               "/dev/sda1 /mnt/b ext2 rw 0 0\n");
    const StorageInfo storage;
    const QStringList paths = pathsOf(storage);
    QCOMPARE(paths.mid(1), QStringList({"/dev/shm", inRoot("/usr/mnt.rom/cf"), inRoot("/usr/mnt.rom/card"),
                                        inRoot("/mnt/b")}));
    const FileSystem *cf = storage.fileSystems()[2];
    QCOMPARE(cf->disk(), QString("/dev/hda1"));
    QCOMPARE(cf->options(), QString("rw,noatime"));
    QVERIFY(cf->isWritable());
    QVERIFY(cf->isRemovable());
    const FileSystem *card = storage.fileSystems()[3];
    QVERIFY(!card->isWritable());
    QVERIFY(!card->options().contains("rw"));
    QVERIFY(card->isRemovable());
    QVERIFY(startsWithDevicePath(card->path(), "/usr/mnt.rom/card"));
    QVERIFY(!storage.fileSystems()[4]->isRemovable());
}

void StorageInfoTest::deviceTableHasOctalEscapes()
{
    writeTable("/dev/sda\\0401 /mnt/disk\\040one ext2 rw,x=\\134y 0 0\n/dev/b /mnt/b\\04 ext2 rw 0 0\n");
    const StorageInfo storage;
    QCOMPARE(storage.fileSystems().size(), 2);
    QCOMPARE(storage.fileSystems()[1]->path(), inRoot("/mnt/disk one"));
    QCOMPARE(storage.fileSystems()[1]->disk(), QString("/dev/sda 1"));
    QCOMPARE(storage.fileSystems()[1]->options(), QString("rw,x=\\y"));
    QCOMPARE(storage.fileSystems()[1]->name(), QString("disk one"));
}

void StorageInfoTest::junkInTheDeviceTableIsPassedOver()
{
    writeTable("\n   \nhalf /mnt/b\n\xFF\xFE\nx relative ext2 rw\n/dev/sda1 /mnt/b ext2 rw");
    const StorageInfo storage;
    QCOMPARE(pathsOf(storage).mid(1), QStringList(inRoot("/mnt/b")));
}

void StorageInfoTest::laterMountHidesTheEarlierOne()
{
    writeTable("/dev/a /mnt/b ext2 rw 0 0\n/dev/b /usr/mnt.rom/cf vfat rw 0 0\n/dev/c /mnt/b ext3 ro 0 0\n");
    const StorageInfo storage;
    QCOMPARE(pathsOf(storage).mid(1), QStringList({inRoot("/mnt/b"), inRoot("/usr/mnt.rom/cf")}));
    QCOMPARE(storage.fileSystems()[1]->disk(), QString("/dev/c"));
}

void StorageInfoTest::secondMountOfAVolumeIsLeftOut()
{
    writeTable("/dev/a /mnt/b ext2 rw 0 0\n/dev/a /mnt/disk\\040one ext2 rw 0 0\n"
               "/dev/a /usr/mnt.rom/card ext2 rw 0 0\n");
    const StorageInfo storage;
    QCOMPARE(pathsOf(storage).mid(1), QStringList({inRoot("/mnt/b"), inRoot("/usr/mnt.rom/card")}));
}

void StorageInfoTest::veryLongPathsEnd()
{
    const StorageInfo storage;
    const QString path = QDir::homePath() + QString("/x").repeated(20'000);
    QCOMPARE(storage.fileSystemOf(path), storage.fileSystems().first());
}

void StorageInfoTest::pathsBelongToTheirVolume()
{
    writeTable("/dev/mmcda1 /usr/mnt.rom/card vfat rw 0 0\n");
    QVERIFY(QFile::link(inRoot("/usr/mnt.rom/card"), inRoot("/link")));
    const StorageInfo storage;
    const FileSystem *internal = storage.fileSystems()[0];
    const FileSystem *card = storage.fileSystems()[1];
    QCOMPARE(storage.fileSystemOfThePath(inRoot("/usr/mnt.rom/card")), card);
    QCOMPARE(storage.fileSystemOfThePath(inRoot("/usr/mnt.rom/card/")), card);
    QCOMPARE(storage.fileSystemOfThePath(inRoot("/usr/mnt.rom/card/not/there.txt")), card);
    QCOMPARE(storage.fileSystemOfThePath(inRoot("/link/file")), card);
    QCOMPARE(storage.fileSystemOfThePath(QDir::homePath() + "/Documents/"), internal);
    QCOMPARE(storage.fileSystemOfThePath(inRoot("/usr/mnt.rom/cards")), internal);
    QCOMPARE(storage.fileSystemOf(inRoot("/usr/mnt.rom/card/x")), card);
    QCOMPARE(storage.fileSystemOf(QDir::homePath()), internal);
}

void StorageInfoTest::namesAreThoseOfTheKind()
{
    writeTable("/dev/c /mnt/b ext2 rw 0 0\n/dev/a /usr/mnt.rom/cf vfat rw 0 0\n"
               "/dev/b /usr/mnt.rom/card vfat rw 0 0\n");
    const StorageInfo storage;
    QStringList names;
    QStringList shown;
    for (const FileSystem *fileSystem : storage.fileSystems()) {
        names.append(fileSystem->name());
        shown.append(fileSystem->uiName());
    }
    QCOMPARE(names, QStringList({"Internal", "b", "CF", "SD"}));
    QCOMPARE(shown[0], StorageInfo::getDefaultStorageName(0, false));
    QCOMPARE(shown[1], QString("b"));
    QCOMPARE(shown[2], StorageInfo::getDefaultStorageName(2, false));
    QCOMPARE(shown[3], StorageInfo::getDefaultStorageName(1, false));
}

void StorageInfoTest::defaultNames()
{
    QCOMPARE(StorageInfo::getDefaultStorageName(0), QString("Internal"));
    QCOMPARE(StorageInfo::getDefaultStorageName(1, false), QString("SD"));
    QCOMPARE(StorageInfo::getDefaultStorageName(2, false), QString("CF"));
    QCOMPARE(StorageInfo::getDefaultStorageName(0, true), QString("Internal storage"));
    QCOMPARE(StorageInfo::getDefaultStorageName(1, true), QString("SD card"));
    QCOMPARE(StorageInfo::getDefaultStorageName(2, true), QString("CF card"));
    QCOMPARE(StorageInfo::getDefaultStorageName(3), QString());
    QCOMPARE(StorageInfo::getDefaultStorageName(-1), QString());
}

void StorageInfoTest::changesOfTheDeviceTableAreToldOnce_data()
{
    QTest::addColumn<bool>("inPlace");
    QTest::newRow("renamed into its place") << false;
    QTest::newRow("written in place") << true;
}

void StorageInfoTest::changesOfTheDeviceTableAreToldOnce()
{
    QFETCH(bool, inPlace);
    writeTable("");
    StorageInfo storage;
    QSignalSpy changes(&storage, &StorageInfo::disksChanged);
    const QByteArray tables[] = {"/dev/a /usr/mnt.rom/card vfat rw 0 0\n",
                                 "/dev/a /usr/mnt.rom/card vfat ro 0 0\n", "none /proc proc rw 0 0\n"};
    int told = 0;
    for (const QByteArray &table : tables) {
        if (inPlace) {
            QFile file(inRoot("/etc/mtab"));
            QVERIFY(file.open(QIODevice::ReadWrite));
            QCOMPARE(file.write(table), table.size());
            QVERIFY(file.resize(table.size()));
        } else {
            writeTable(table);
        }
        ++told;
        QTRY_COMPARE(changes.count(), told);
        QTest::qWait(50);
        QCOMPARE(changes.count(), told);
        QCOMPARE(storage.fileSystems().size(), told == 3 ? 1 : 2);
    }
}

void StorageInfoTest::aTableThatAppearsIsSeen()
{
    StorageInfo storage;
    QSignalSpy changes(&storage, &StorageInfo::disksChanged);
    writeTable("/dev/a /usr/mnt.rom/card vfat rw 0 0\n");
    QTRY_COMPARE(changes.count(), 1);
    QCOMPARE(storage.fileSystems().size(), 2);
}

void StorageInfoTest::sameTableTellsNothing()
{
    writeTable("/dev/a /usr/mnt.rom/card vfat rw 0 0\n");
    StorageInfo storage;
    const FileSystem *card = storage.fileSystems()[1];
    QSignalSpy changes(&storage, &StorageInfo::disksChanged);
    writeTable("/dev/a /usr/mnt.rom/card vfat rw 0 0\n");
    put(inRoot("/etc/other"), "x");
    QTest::qWait(100);
    storage.update();
    QCOMPARE(changes.count(), 0);
    QCOMPARE(storage.fileSystems()[1], card);
}

void StorageInfoTest::kernelTableListsCards()
{
    if (!canMount)
        QSKIP("this machine forbids mounts");
    qunsetenv("KY_DEVICE_ROOT");
    const UsrWithCards usr;
    QVERIFY(usr.isComplete());
    const TmpfsMount card("/usr/mnt.rom/card");
    const TmpfsMount other(inRoot("/mnt/b"));
    const StorageInfo storage;
    const FileSystem *sd = at(storage, "/usr/mnt.rom/card");
    QVERIFY(sd);
    QVERIFY(sd->isRemovable());
    QCOMPARE(sd->uiName(), QString("SD"));
    QVERIFY(!at(storage, "/usr/mnt.rom/cf"));
    QVERIFY(!at(storage, inRoot("/mnt/b")));
    QVERIFY(!at(storage, "/proc"));
    QVERIFY(!at(storage, "/sys"));
}

void StorageInfoTest::mountsAreToldOnce()
{
    if (!canMount)
        QSKIP("this machine forbids mounts");
    qunsetenv("KY_DEVICE_ROOT");
    const UsrWithCards usr;
    QVERIFY(usr.isComplete());
    StorageInfo storage;
    QSignalSpy changes(&storage, &StorageInfo::disksChanged);

    TmpfsMount card("/usr/mnt.rom/cf");
    QTRY_COMPARE(changes.count(), 1);
    QVERIFY(at(storage, "/usr/mnt.rom/cf")->isWritable());

    QVERIFY(card.makeReadOnly());
    QTRY_COMPARE(changes.count(), 2);
    QVERIFY(!at(storage, "/usr/mnt.rom/cf")->isWritable());

    card.unmount();
    QTRY_COMPARE(changes.count(), 3);
    QVERIFY(!at(storage, "/usr/mnt.rom/cf"));
    QTest::qWait(50);
    QCOMPARE(changes.count(), 3);
}

void StorageInfoTest::otherMountsTellNothing()
{
    if (!canMount)
        QSKIP("this machine forbids mounts");
    StorageInfo storage;
    QSignalSpy changes(&storage, &StorageInfo::disksChanged);
    const TmpfsMount other(inRoot("/mnt/b"));
    QVERIFY(other.isMounted());
    QTRY_COMPARE(storage.fileSystemOf(inRoot("/mnt/b"))->disk(), QString("kytest"));
    QCOMPARE(changes.count(), 0);
}

void StorageInfoTest::blocksAreThoseOfTheVolume()
{
    if (!canMount)
        QSKIP("this machine forbids mounts");
    const TmpfsMount card(inRoot("/usr/mnt.rom/card"), "size=256k");
    QVERIFY(card.isMounted());
    writeTable("/dev/a /usr/mnt.rom/card vfat rw 0 0\n");
    const StorageInfo storage;
    const FileSystem *sd = storage.fileSystems()[1];
    QCOMPARE(sd->totalBlocks() * sd->blockSize(), 262144L);
    QCOMPARE(sd->availBlocks(), sd->totalBlocks());
    put(sd->path() + "/file", QByteArray(100'000, 'x'));
    QCOMPARE(sd->availBlocks() * sd->blockSize(), 262144L - 102400L);
}

void StorageInfoTest::fileSystemOfFindsTheMount()
{
    if (!canMount)
        QSKIP("this machine forbids mounts");
    const TmpfsMount other(inRoot("/mnt/b"), "size=128k");
    QVERIFY(other.isMounted());
    QVERIFY(QFile::link(inRoot("/mnt/b"), inRoot("/link")));
    const StorageInfo storage;
    for (const char *path : {"/mnt/b", "/mnt/b/", "/mnt/b/new/file", "/link", "/link/x", "/mnt/../mnt/b/x"}) {
        const FileSystem *fileSystem = storage.fileSystemOf(inRoot(path));
        QCOMPARE(fileSystem->path(), inRoot("/mnt/b"));
        QCOMPARE(fileSystem->totalBlocks() * fileSystem->blockSize(), 131072L);
    }
    QVERIFY(storage.fileSystemOf(inRoot("/mnt/bb"))->path() != inRoot("/mnt/b"));
    QVERIFY(storage.fileSystemOfThePath(inRoot("/mnt/b"))->path() != inRoot("/mnt/b"));
    QCOMPARE(storage.fileSystemOf("/proc/self/status")->disk(), QString("proc"));
}

int main(int argc, char **argv)
{
    canMount = enterMountNamespace();
    QCoreApplication app(argc, argv);
    StorageInfoTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "storageinfotest.moc"
