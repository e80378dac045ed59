#include "boxfixture.h"

#include <csignal>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace boxfixture;

/**
 * Boxes on real volumes: full, read-only, unmounted. The test runs itself again inside a mount namespace of
 * its own; where the machine forbids that, it says so and is skipped.
 */
class BoxVolumeTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();
    void fullVolume();
    void fullVolumeInsideAnAction();
    void noRoomForABox();
    void enoughStorage();
    void readOnlyVolume();
    void readOnlyVolumeWithAnIndex();
    void readOnlyVolumeWithALeftOverLog();
    void folderThatCannotBeWritten();
    void unmountAfterAClose();

private:
    bool remount(unsigned long flags);
    QTemporaryDir m_folder;
    QByteArray m_volume;
    QByteArray m_box;
    bool m_isMounted = false;
};

void BoxVolumeTest::initTestCase()
{
    if (!qEnvironmentVariableIsSet("BOXVOLUMETEST_NAMESPACE"))
        QSKIP("this machine allows no mount namespace");
    m_volume = m_folder.path().toUtf8();
    m_box = m_volume + "/V.BOX";
}

void BoxVolumeTest::init()
{
    m_isMounted = mount("tmpfs", m_volume.constData(), "tmpfs", 0, "size=256k") == 0;
    QVERIFY2(m_isMounted, strerror(errno));
}

void BoxVolumeTest::cleanup()
{
    if (m_isMounted)
        QVERIFY2(umount(m_volume.constData()) == 0, strerror(errno)); // no descriptor is left open
    m_isMounted = false;
}

bool BoxVolumeTest::remount(unsigned long flags)
{
    return mount("tmpfs", m_volume.constData(), "tmpfs", MS_REMOUNT | flags, "size=256k") == 0;
}

void BoxVolumeTest::fullVolume()
{
    QCOMPARE(makeBox(m_box.constData()), PdtmStatus(PdtmOk));
    QVERIFY(writeFile(QString::fromUtf8(m_volume) + "/filler", QByteArray(60000, 'f')));
    const uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    uint16_t last = 0;
    uint16_t card = 0;
    PdtmStatus status = PdtmOk;
    while (status == PdtmOk && last < 500) {
        uint16_t work = PdtmWorkCard;
        QCOMPARE(_CardCreate(handle, &work), PdtmStatus(PdtmOk));
        QCOMPARE(write(handle, work, "NAPR", "name " + QByteArray::number(last + 1)), PdtmStatus(PdtmOk));
        card = 0;
        status = _CardCopy(handle, work, &card);
        last = status == PdtmOk ? card : last;
    }
    QCOMPARE(status, PdtmStatus(PdtmOutOfSpace));
    QVERIFY(last > 5);
    QCOMPARE(card, uint16_t(0));
    QCOMPARE(DtmIsEnoughStorageForOperation(handle, 1), 0);
    for (uint16_t saved = 1; saved <= last; ++saved)
        QCOMPARE(read(handle, saved, "NAPR"), "name " + QByteArray::number(saved));
    QCOMPARE(write(handle, 1, "NAPR", "lost"), PdtmStatus(PdtmOutOfSpace));
    QCOMPARE(read(handle, 1, "NAPR"), QByteArray("name 1"));

    QVERIFY(QFile::remove(QString::fromUtf8(m_volume) + "/filler"));
    QCOMPARE(addCard(handle, "afterwards"), uint16_t(last + 1));
    QCOMPARE(_BoxClose(handle), PdtmStatus(PdtmOk));
    QCOMPARE(_DTMFileCheckLevel(m_box.constData(), 255), PdtmStatus(PdtmOk));
    const uint32_t again = _BoxOpenRwMode(m_box.constData(), 0);
    for (uint16_t saved = 1; saved <= last; ++saved)
        QCOMPARE(read(again, saved, "NAPR"), "name " + QByteArray::number(saved));
    QCOMPARE(read(again, uint16_t(last + 1), "NAPR"), QByteArray("afterwards"));
    _BoxClose(again);
}

void BoxVolumeTest::fullVolumeInsideAnAction()
{
    QCOMPARE(makeBox(m_box.constData()), PdtmStatus(PdtmOk));
    const uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(addCard(handle, "saved"), uint16_t(1));
    QCOMPARE(DtmBeginAction(handle), PdtmStatus(PdtmOk));
    for (int i = 0; i < 300; ++i)
        addCard(handle, QByteArray(3000, 'x'));
    QCOMPARE(DtmEndAction(handle), PdtmStatus(PdtmOutOfSpace));
    QCOMPARE(read(handle, 1, "NAPR"), QByteArray("saved"));
    QCOMPARE(read(handle, 2, "NAPR"), QByteArray("status 65"));
    QCOMPARE(addCard(handle, "next"), uint16_t(2));
    _BoxClose(handle);
}

void BoxVolumeTest::noRoomForABox()
{
    QVERIFY(!writeFile(QString::fromUtf8(m_volume) + "/filler", QByteArray(300000, 'f')));
    QCOMPARE(_BoxCreate(m_box.constData(), ApplicationId), PdtmStatus(PdtmOutOfSpace));
    QVERIFY(!QFile::exists(QString::fromUtf8(m_box)));
    QVERIFY(!QFile::exists(QString::fromUtf8(m_box) + ".new"));
}

void BoxVolumeTest::enoughStorage()
{
    QCOMPARE(makeBox(m_box.constData()), PdtmStatus(PdtmOk));
    const uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    QVERIFY(DtmIsEnoughStorageForOperation(handle, 1) != 0);
    QVERIFY(!writeFile(QString::fromUtf8(m_volume) + "/filler", QByteArray(300000, 'f')));
    QCOMPARE(DtmIsEnoughStorageForOperation(handle, 1), 0);
    _BoxClose(handle);
}

void BoxVolumeTest::readOnlyVolume()
{
    QCOMPARE(makeBox(m_box.constData()), PdtmStatus(PdtmOk));
    uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(addCard(handle, "saved"), uint16_t(1));
    _BoxClose(handle);
    const QStringList files = QDir(m_folder.path()).entryList(QDir::Files);
    QVERIFY(!files.contains("V.BOX-wal"));
    QVERIFY(remount(MS_RDONLY));

    QCOMPARE(_BoxOpenRwMode(m_box.constData(), 0), 0U);
    handle = _BoxOpenRwMode(m_box.constData(), 1);
    QVERIFY(handle);
    QCOMPARE(read(handle, 1, "NAPR"), QByteArray("saved"));
    QCOMPARE(_BoxOpenRwMode(m_box.constData(), 0), 0U);
    uint32_t added = 7;
    const ITEMDATA item = itemData(ItemTime, KindTime, "BRTH", "");
    QCOMPARE(appendItems(m_box.constData(), &added), PdtmStatus(PdtmOk));
    QCOMPARE(_BoxItemAppend(m_box.constData(), &item, 1, &added), PdtmStatus(PdtmReadOnly));
    QCOMPARE(_BoxGarbageCollect(m_box.constData()), PdtmStatus(PdtmReadOnly));
    QCOMPARE(_BoxDelete(m_box.constData()), PdtmStatus(PdtmReadOnly));
    QCOMPARE(_BoxCreate((m_volume + "/N.BOX").constData(), ApplicationId), PdtmStatus(PdtmReadOnly));
    QCOMPARE(_DTMFileCheckAppliID(m_box.constData(), 3, ApplicationId), PdtmStatus(PdtmOk));
    QCOMPARE(_DTMFileCheckLevel(m_box.constData(), 255), PdtmStatus(PdtmOk));
    _BoxClose(handle);
    QCOMPARE(QDir(m_folder.path()).entryList(QDir::Files), files);
}

/** A process dies, the card is taken out and put in again with its switch on read-only. */
void BoxVolumeTest::readOnlyVolumeWithAnIndex()
{
    const QByteArray index = m_volume + "/V.IDX";
    const char *path = index.constData();
    QCOMPARE(makeBox(m_box.constData()), PdtmStatus(PdtmOk));
    uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(_IndexCreate(path, 17), PdtmStatus(PdtmOk));
    QCOMPARE(_IndexInfoWrite(path, InfoSortExpression, "NAPR\xFE\x80", 7), PdtmStatus(PdtmOk));
    QCOMPARE(_IndexUnGroup(path, handle), PdtmStatus(PdtmNothingToSort));
    QCOMPARE(addCard(handle, "b"), uint16_t(1));
    QCOMPARE(addCard(handle, "a"), uint16_t(2));
    const QByteArray empty = fileBytes(QString::fromUtf8(index));
    _BoxClose(handle);
    for (const bool isStale : {false, true}) {
        QVERIFY(!isStale || writeFile(QString::fromUtf8(index), empty));
        QVERIFY(remount(MS_RDONLY));
        const QByteArray file = fileBytes(QString::fromUtf8(index));
        handle = _BoxOpenRwMode(m_box.constData(), 1);
        QVERIFY(handle);
        uint16_t number = 0;
        uint16_t card = 0;
        QCOMPARE(_NextIndexNo(path, 0x40, 0, 0, &number), PdtmStatus(PdtmOk));
        QCOMPARE(_IndexNoToCardID(path, number, &card), PdtmStatus(PdtmOk));
        QCOMPARE(card, uint16_t(2));
        QCOMPARE(_IndexSearch(path, handle,
                              "NAPR\xFE\x90\x11"
                              "b\0", // and a byte where a join would stand
                              0, 0x40, 0, 0, 0, &number),
                 PdtmStatus(PdtmOk));
        QCOMPARE(number, uint16_t(2));
        QCOMPARE(_IndexSort(path, handle), PdtmStatus(PdtmReadOnly)); // memory is in order already
        QCOMPARE(_IndexNoToCardID(path, 1, &card), PdtmStatus(PdtmOk));
        QCOMPARE(card, uint16_t(2));
        QCOMPARE(_IndexCreate((m_volume + "/N.IDX").constData(), 17), PdtmStatus(PdtmReadOnly));
        QCOMPARE(_IndexDelete(path), PdtmStatus(PdtmReadOnly));
        _BoxClose(handle);
        QCOMPARE(fileBytes(QString::fromUtf8(index)), file);
        QVERIFY(remount(0));
    }
}

void BoxVolumeTest::readOnlyVolumeWithALeftOverLog()
{
    QCOMPARE(makeBox(m_box.constData()), PdtmStatus(PdtmOk));
    const pid_t child = fork();
    if (child == 0) {
        addCard(_BoxOpenRwMode(m_box.constData(), 0), "in the log");
        kill(getpid(), SIGKILL);
    }
    QCOMPARE(waitpid(child, nullptr, 0), child);
    const QString log = QString::fromUtf8(m_box) + "-wal";
    QVERIFY(QFileInfo(log).size() > 0);
    const QByteArray before = fileBytes(QString::fromUtf8(m_box)) + fileBytes(log);
    QVERIFY(remount(MS_RDONLY));
    QCOMPARE(_BoxOpenRwMode(m_box.constData(), 0), 0U);
    const uint32_t handle = _BoxOpenRwMode(m_box.constData(), 1);
    QVERIFY(handle);
    QCOMPARE(read(handle, 1, "NAPR"), QByteArray("in the log"));
    _BoxClose(handle);
    QCOMPARE(fileBytes(QString::fromUtf8(m_box)) + fileBytes(log), before);
    QCOMPARE(QDir(QDir::tempPath()).entryList({"pdtm.*"}, QDir::Dirs), QStringList());
}

/** Root may write everywhere, so the folder is mounted onto itself for reading only. */
void BoxVolumeTest::folderThatCannotBeWritten()
{
    const QByteArray folder = m_volume + "/folder";
    QVERIFY(QDir().mkpath(QString::fromUtf8(folder)));
    QVERIFY(mount(folder.constData(), folder.constData(), nullptr, MS_BIND, nullptr) == 0);
    QVERIFY(mount(nullptr, folder.constData(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr) == 0);
    const QByteArray box = folder + "/N.BOX";
    QCOMPARE(_BoxCreate(box.constData(), ApplicationId), PdtmStatus(PdtmReadOnly));
    QCOMPARE(_BoxOpenRwMode(box.constData(), 0), 0U);
    QCOMPARE(QDir(QString::fromUtf8(folder)).entryList(QDir::Files), QStringList());
    QVERIFY(umount(folder.constData()) == 0);
}

void BoxVolumeTest::unmountAfterAClose()
{
    QCOMPARE(makeBox(m_box.constData()), PdtmStatus(PdtmOk));
    for (const uint8_t mode : {uint8_t(0), uint8_t(1)}) {
        const uint32_t handle = _BoxOpenRwMode(m_box.constData(), mode);
        QVERIFY(handle);
        QVERIFY(umount(m_volume.constData()) != 0);
        QCOMPARE(_BoxClose(handle), PdtmStatus(PdtmOk));
    }
    uint32_t size = 0;
    QCOMPARE(_GetBoxGarbageSize(m_box.constData(), &size), PdtmStatus(PdtmOk));
    QVERIFY(umount(m_volume.constData()) == 0);
    m_isMounted = false;
}

/** Runs this program again where it may mount; -1 when the machine forbids it. */
static int runInNamespace(const QStringList &arguments)
{
    const QStringList ways[] = {{"--mount"}, {"--user", "--map-root-user", "--mount"}};
    for (const QStringList &way : ways) {
        if (QProcess::execute("unshare", way + QStringList{"true"}) != 0)
            continue;
        qputenv("BOXVOLUMETEST_NAMESPACE", "1");
        return QProcess::execute("unshare",
                                 way + QStringList{QCoreApplication::applicationFilePath()} + arguments);
    }
    return -1;
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (!qEnvironmentVariableIsSet("BOXVOLUMETEST_NAMESPACE")) {
        const int result = runInNamespace(application.arguments().mid(1));
        if (result >= 0)
            return result;
    }
    BoxVolumeTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "boxvolumetest.moc"
