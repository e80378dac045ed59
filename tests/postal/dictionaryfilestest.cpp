#include "imagebuilder.h"
#include "ydicfile_p.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <set>
#include <sys/stat.h>

using namespace imagebuilder;

namespace {

// What the engine's own calls of the system do, wrapped by the linker.
std::set<FILE *> s_notClosing;
int s_closed = 0;
int s_opensUntilFailure = -1; // negative: none fails
bool s_statFails = false;
bool s_memoryFails = false;
const void *s_freed = nullptr;

constexpr std::array<const char *, YDIC_SLOTS> Paths{Path_cfsh_dic, Path_cfsh_pch, Path_hfsh_dic,
                                                     Path_hfsh_pch, Path_hrom_dic};

Bytes dictionary(uint8_t edition)
{
    return Image{.edition = edition}.bytes();
}

Bytes patch(uint8_t corrects, uint8_t makes, uint8_t serial = 0)
{
    return Image{.type = YDIC_PATCH, .corrects = corrects, .edition = makes, .serial = serial}.bytes();
}

Bytes withByte(const Bytes &file, size_t offset, char byte)
{
    return file.substr(0, offset) + byte + file.substr(offset + 1);
}

QString placeOf(const char *path)
{
    return qEnvironmentVariable("KY_DEVICE_ROOT") + QLatin1String(path);
}

void writeFile(const char *path, const Bytes &bytes)
{
    QFile file(placeOf(path));
    QVERIFY(QDir().mkpath(QFileInfo(file).path()));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(QByteArray::fromStdString(bytes)), qint64(bytes.size()));
}

qsizetype openDescriptors()
{
    return QDir("/proc/self/fd").entryList(QDir::Files | QDir::System | QDir::NoDotAndDotDot).size();
}

/** A handle that ends with the test. */
struct Handle
{
    Handle() { result = ZipInit(&info); }
    ~Handle() { finish(); }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;

    int finish() { return info ? ZipFin(std::exchange(info, nullptr)) : 0; }

    int edition(uint8_t fileSel) const
    {
        uint8_t edition = 0;
        return ReadDic(YDIC_AT_EDITION, 1, &edition, fileSel, info) == 0 ? edition : -1;
    }

    /** What was chosen, by slot: digits of ydic_info::opened, * for 255. */
    QByteArray opened() const
    {
        QByteArray digits;
        for (const uint8_t opened : info->opened)
            digits += opened == YDIC_PATCH_USELESS ? '*' : char('0' + opened);
        return digits;
    }

    ydic_info *info = nullptr;
    int result = 0;
};

} // namespace

extern "C" {

int __real_fclose(FILE *file);
int __wrap_fclose(FILE *file)
{
    ++s_closed;
    const bool fails = s_notClosing.erase(file) > 0 || s_notClosing.contains(nullptr);
    const int result = __real_fclose(file);
    return fails ? EOF : result;
}

FILE *__real_fdopen(int descriptor, const char *mode);
FILE *__wrap_fdopen(int descriptor, const char *mode)
{
    return s_opensUntilFailure-- == 0 ? nullptr : __real_fdopen(descriptor, mode);
}

int __real_fstat(int descriptor, struct stat *found);
int __wrap_fstat(int descriptor, struct stat *found)
{
    return s_statFails ? -1 : __real_fstat(descriptor, found);
}

void *__real_calloc(size_t count, size_t size);
void *__wrap_calloc(size_t count, size_t size)
{
    return s_memoryFails ? nullptr : __real_calloc(count, size);
}

void __real_free(void *memory);
void __wrap_free(void *memory)
{
    s_freed = memory;
    __real_free(memory);
}

} // extern "C"

/** Which files are good, which are chosen, and how they are closed. */
class DictionaryFilesTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void pathsOfTheDevice();
    void testOfFile_data();
    void testOfFile();
    void patchAtCardPathIsNoDictionary();
    void folderIsNotRead();
    void pipeIsNotWaitedFor();
    void fileWithoutStatusIsNotRead();
    void fileThatCannotBeClosed_data();
    void fileThatCannotBeClosed();
    void slotBehindTheLastDoesNothing();
    void headIsKept();
    void pathThatIsTooLongIsAbsent();
    void testLeavesNothingOpen();
    void choice_data();
    void choice();
    void filesOfTheChoiceAreRead();
    void sizeOneByteOffIsNotUsed_data();
    void sizeOneByteOffIsNotUsed();
    void noDictionary();
    void unreadableDictionariesAreNotAbsent();
    void noMemory();
    void dictionaryThatGoesBetweenTestAndOpening();
    void patchThatGoesBetweenTestAndOpening();
    void programsThatAreStartedInheritNoFile();
    void closing_data();
    void closing();
    void closingBesideUselessPatch();
    void hookDoesNothing();

private:
    std::unique_ptr<QTemporaryDir> m_root;
};

void DictionaryFilesTest::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    QVERIFY(m_root->isValid());
    qputenv("KY_DEVICE_ROOT", m_root->path().toUtf8());
}

void DictionaryFilesTest::cleanup()
{
    s_notClosing.clear();
    s_opensUntilFailure = -1;
    s_statFails = s_memoryFails = false;
}

void DictionaryFilesTest::pathsOfTheDevice()
{
    QCOMPARE(Path_cfsh_dic, "/mnt/sd/QtPalmtop/etc/yubin02.dat");
    QCOMPARE(Path_cfsh_pch, "/mnt/sd/QtPalmtop/etc/yubin02.dat");
    QCOMPARE(Path_hfsh_dic, "/mnt/cf/QtPalmtop/etc/yubin02.dat");
    QCOMPARE(Path_hfsh_pch, "/mnt/cf/QtPalmtop/etc/yubin02.dat");
    QCOMPARE(Path_hrom_dic, "/home/QtPalmtop/etc/yubin02.dat");
}

void DictionaryFilesTest::testOfFile_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("asDictionary");
    QTest::addColumn<int>("asPatch");
    const auto row = [](const char *name, const Bytes &bytes, int asDictionary, int asPatch) {
        QTest::newRow(name) << QByteArray::fromStdString(bytes) << asDictionary << asPatch;
    };
    const Bytes good = dictionary(1), goodPatch = patch(1, 2);
    row("dictionary", good, YDIC_FILE_GOOD, YDIC_FILE_WRONG_KIND);
    row("patch", goodPatch, YDIC_FILE_WRONG_KIND, YDIC_FILE_GOOD);
    row("other type", withByte(good, 3, 1), YDIC_FILE_WRONG_KIND, YDIC_FILE_WRONG_KIND);
    row("first byte", withByte(good, 0, 0), YDIC_FILE_WRONG_KIND, YDIC_FILE_WRONG_KIND);
    row("second byte", withByte(good, 1, 1), YDIC_FILE_WRONG_KIND, YDIC_FILE_WRONG_KIND);
    row("third byte", withByte(good, 2, 0x29), YDIC_FILE_WRONG_KIND, YDIC_FILE_WRONG_KIND);
    row("first byte of a patch", withByte(goodPatch, 0, 0), YDIC_FILE_WRONG_KIND, YDIC_FILE_WRONG_KIND);
    row("one byte more", good + 'x', YDIC_FILE_WRONG_SIZE, YDIC_FILE_WRONG_KIND);
    row("one byte less", good.substr(0, good.size() - 1), YDIC_FILE_WRONG_SIZE, YDIC_FILE_WRONG_KIND);
    row("patch, one byte more", goodPatch + 'x', YDIC_FILE_WRONG_KIND, YDIC_FILE_WRONG_SIZE);
    row("highest byte of the size", withByte(good, YDIC_AT_FILE_SIZE, 1), YDIC_FILE_WRONG_SIZE,
        YDIC_FILE_WRONG_KIND);
    row("no byte", Bytes(), YDIC_FILE_NOT_READ, YDIC_FILE_NOT_READ);
    row("15 bytes", good.substr(0, 15), YDIC_FILE_NOT_READ, YDIC_FILE_NOT_READ);
    row("cut in front of its size", good.substr(0, YDIC_AT_FILE_SIZE + 3), YDIC_FILE_NOT_READ,
        YDIC_FILE_WRONG_KIND);
    row("bytes that aren't read", withByte(withByte(good, 6, 'x'), 127, 'x'), YDIC_FILE_GOOD,
        YDIC_FILE_WRONG_KIND);
}

void DictionaryFilesTest::testOfFile()
{
    QFETCH(QByteArray, bytes);
    for (uint8_t slot = 0; slot < YDIC_SLOTS; ++slot) {
        writeFile(Paths[slot], bytes.toStdString());
        ydic_info info{};
        QCOMPARE(check_fileStatus(slot, &info, Paths[slot]), 0);
        QFETCH(int, asDictionary);
        QFETCH(int, asPatch);
        const bool isPatchSlot = slot == 1 || slot == 3;
        QCOMPARE(int{info.fileStatus[slot]}, isPatchSlot ? asPatch : asDictionary);
    }
}

void DictionaryFilesTest::patchAtCardPathIsNoDictionary()
{
    writeFile(Path_cfsh_dic, patch(1, 2));
    Handle handle;
    QCOMPARE(int{handle.info->fileStatus[0]}, int{YDIC_FILE_WRONG_KIND});
    QCOMPARE(int{handle.info->fileStatus[1]}, int{YDIC_FILE_GOOD});
}

void DictionaryFilesTest::folderIsNotRead()
{
    QVERIFY(QDir().mkpath(placeOf(Path_hrom_dic)));
    ydic_info info{};
    check_fileStatus(4, &info, Path_hrom_dic);
    QCOMPARE(int{info.fileStatus[4]}, int{YDIC_FILE_NOT_READ});
}

void DictionaryFilesTest::pipeIsNotWaitedFor()
{
    QVERIFY(QDir().mkpath(QFileInfo(placeOf(Path_hrom_dic)).path()));
    QCOMPARE(mkfifo(placeOf(Path_hrom_dic).toUtf8(), 0600), 0);
    ydic_info info{};
    check_fileStatus(4, &info, Path_hrom_dic);
    QCOMPARE(int{info.fileStatus[4]}, int{YDIC_FILE_NOT_READ});
}

void DictionaryFilesTest::fileWithoutStatusIsNotRead()
{
    writeFile(Path_hrom_dic, dictionary(1));
    ydic_info info{};
    s_statFails = true;
    check_fileStatus(4, &info, Path_hrom_dic);
    QCOMPARE(int{info.fileStatus[4]}, int{YDIC_FILE_NOT_READ});
}

void DictionaryFilesTest::fileThatCannotBeClosed_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("good") << QByteArray::fromStdString(dictionary(1));
    QTest::newRow("of the wrong kind") << QByteArray(200, 'x');
    QTest::newRow("too short") << QByteArray(1, 'x');
}

void DictionaryFilesTest::fileThatCannotBeClosed()
{
    QFETCH(QByteArray, bytes);
    writeFile(Path_hrom_dic, bytes.toStdString());
    s_notClosing.insert(nullptr);
    ydic_info info{};
    check_fileStatus(4, &info, Path_hrom_dic);
    QCOMPARE(int{info.fileStatus[4]}, int{YDIC_FILE_NOT_CLOSED});
}

void DictionaryFilesTest::slotBehindTheLastDoesNothing()
{
    writeFile(Path_hrom_dic, dictionary(1));
    for (const uint8_t slot : {uint8_t{5}, uint8_t{255}}) {
        ydic_info info;
        memset(&info, 0x5A, sizeof info);
        QCOMPARE(check_fileStatus(slot, &info, Path_hrom_dic), 0);
        const QByteArray bytes(reinterpret_cast<const char *>(&info), sizeof info);
        QCOMPARE(bytes, QByteArray(sizeof info, 0x5A));
    }
}

void DictionaryFilesTest::headIsKept()
{
    const Bytes file = patch(3, 4, 77);
    writeFile(Path_hfsh_pch, file);
    ydic_info info{};
    check_fileStatus(3, &info, Path_hfsh_pch);
    QCOMPARE(Bytes(reinterpret_cast<const char *>(info.fileHead[3]), 16), file.substr(0, 16));
}

void DictionaryFilesTest::pathThatIsTooLongIsAbsent()
{
    writeFile(Path_hrom_dic, dictionary(1));
    QByteArray root = m_root->path().toUtf8();
    while (root.size() < 10000)
        root += "/.";
    qputenv("KY_DEVICE_ROOT", root);
    Handle handle;
    QCOMPARE(handle.result, int{ZIP_INIT_NO_FILE});
}

void DictionaryFilesTest::testLeavesNothingOpen()
{
    writeFile(Path_cfsh_dic, dictionary(1));
    writeFile(Path_hrom_dic, Bytes("damaged"));
    const qsizetype before = openDescriptors();
    ydic_info info{};
    for (uint8_t slot = 0; slot < YDIC_SLOTS; ++slot)
        check_fileStatus(slot, &info, Paths[slot]);
    s_opensUntilFailure = 0;
    check_fileStatus(0, &info, Path_cfsh_dic);
    QCOMPARE(int{info.fileStatus[0]}, int{YDIC_FILE_ABSENT});
    QCOMPARE(openDescriptors(), before);
}

void DictionaryFilesTest::choice_data()
{
    QTest::addColumn<QByteArray>("sd");
    QTest::addColumn<QByteArray>("cf");
    QTest::addColumn<QByteArray>("internal");
    QTest::addColumn<int>("result");
    QTest::addColumn<QByteArray>("opened");
    const auto row = [](const char *name, const Bytes &sd, const Bytes &cf, const Bytes &internal, int result,
                        const char *opened) {
        QTest::newRow(name) << QByteArray::fromStdString(sd) << QByteArray::fromStdString(cf)
                            << QByteArray::fromStdString(internal) << result << QByteArray(opened);
    };
    const Bytes none, damaged(300, 'x');
    const int patched = ZIP_INIT_PATCHED, alone = ZIP_INIT_DICTIONARY, useless = ZIP_INIT_USELESS_PATCH;
    const int noGood = ZIP_INIT_NO_GOOD_FILE, noFile = ZIP_INIT_NO_FILE;
    row("internal alone", none, none, dictionary(1), alone, "00001");
    row("CF alone", none, dictionary(1), none, alone, "00100");
    row("SD alone", dictionary(1), none, none, alone, "10000");
    row("SD and internal, the same", dictionary(5), none, dictionary(5), alone, "10000");
    row("SD and CF, the same", dictionary(5), dictionary(5), none, alone, "10000");
    row("CF and internal, the same", none, dictionary(5), dictionary(5), alone, "00100");
    row("internal is newer", dictionary(4), dictionary(5), dictionary(6), alone, "00001");
    row("CF is newer", dictionary(4), dictionary(6), dictionary(5), alone, "00100");
    row("newest is damaged", damaged, dictionary(1), none, alone, "00100");
    row("SD patch on internal", patch(4, 5), none, dictionary(4), patched, "01001");
    row("CF patch on internal", none, patch(4, 5), dictionary(4), patched, "00011");
    row("SD patch on CF", patch(4, 5), dictionary(4), none, patched, "01100");
    row("CF patch on SD", dictionary(4), patch(4, 5), none, patched, "10010");
    row("SD patch on CF goes before internal", patch(4, 5), dictionary(4), dictionary(4), patched, "01100");
    row("CF patch on SD goes before internal", dictionary(4), patch(4, 5), dictionary(4), patched, "10010");
    row("dictionary of the edition goes before a patched one, CF", patch(4, 5), dictionary(5), dictionary(4),
        alone, "00100");
    row("dictionary of the edition goes before a patched one, SD", dictionary(5), patch(4, 5), dictionary(4),
        alone, "10000");
    row("dictionary of the edition goes before a patched one, internal", patch(4, 5), dictionary(4),
        dictionary(5), alone, "00001");
    row("internal goes before SD with its CF patch", dictionary(4), patch(4, 5), dictionary(5), alone,
        "00001");
    row("patched is newer", patch(4, 6), dictionary(5), dictionary(4), patched, "01001");
    row("two patches, the same", patch(4, 5), patch(4, 5), dictionary(4), patched, "01001");
    row("two patches, CF has the greater serial", patch(4, 5, 1), patch(4, 5, 2), dictionary(4), patched,
        "00011");
    row("two patches, SD has the greater serial", patch(4, 5, 2), patch(4, 5, 1), dictionary(4), patched,
        "01001");
    row("two patches, CF makes the newer", patch(4, 5), patch(4, 6), dictionary(4), patched, "00011");
    row("two patches, one is useless", patch(3, 5), patch(4, 6), dictionary(4), patched, "0*011");
    row("patch of an older edition", patch(3, 4), none, dictionary(4), useless, "0*001");
    row("CF patch of an older edition", none, patch(3, 4), dictionary(4), useless, "000*1");
    row("patch of an older edition, two dictionaries", patch(3, 4), dictionary(4), dictionary(4), useless,
        "0*100");
    row("two patches, both useless", patch(3, 4), patch(5, 6), dictionary(4), useless, "0*0*1");
    row("damaged patch counts as none", patch(4, 5) + 'x', none, dictionary(4), alone, "00001");
    row("nothing", none, none, none, noFile, "00000");
    row("patches without a dictionary", patch(1, 2), patch(1, 2), none, noGood, "00000");
    row("damaged SD", damaged, none, none, noGood, "00000");
    row("damaged CF", none, damaged, none, noGood, "00000");
    row("damaged internal", none, none, damaged, noGood, "00000");
    row("edition 0", dictionary(0), dictionary(0), dictionary(0), noGood, "00000");
    row("edition 0 with a patch for it", patch(0, 2), none, dictionary(0), noGood, "00000");
    row("patch of edition 0 fits no absent dictionary", patch(0, 9), none, dictionary(4), useless, "0*001");
    row("patch that makes edition 0", patch(4, 0), none, dictionary(4), noGood, "00000");
}

void DictionaryFilesTest::choice()
{
    QFETCH(QByteArray, sd);
    QFETCH(QByteArray, cf);
    QFETCH(QByteArray, internal);
    if (!sd.isEmpty())
        writeFile(Path_cfsh_dic, sd.toStdString());
    if (!cf.isEmpty())
        writeFile(Path_hfsh_dic, cf.toStdString());
    if (!internal.isEmpty())
        writeFile(Path_hrom_dic, internal.toStdString());
    const qsizetype before = openDescriptors();
    Handle handle;
    QTEST(handle.result, "result");
    QTEST(handle.opened(), "opened");
    const int files = handle.result < 0 ? 0 : handle.result == ZIP_INIT_PATCHED ? 2 : 1;
    QCOMPARE(int{handle.info->hasPatch}, files == 2 ? 1 : 0);
    QCOMPARE(handle.info->dictFile != nullptr, files > 0);
    QCOMPARE(handle.info->patchFile != nullptr, files == 2);
    QCOMPARE(openDescriptors(), before + files);
    QCOMPARE(handle.finish(), 1);
    QCOMPARE(openDescriptors(), before);
}

void DictionaryFilesTest::filesOfTheChoiceAreRead()
{
    writeFile(Path_cfsh_dic, patch(4, 7));
    writeFile(Path_hfsh_dic, dictionary(4));
    writeFile(Path_hrom_dic, dictionary(3));
    Handle handle;
    QCOMPARE(handle.edition(0), 4);
    QCOMPARE(handle.edition(1), 7);
}

void DictionaryFilesTest::sizeOneByteOffIsNotUsed_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const Bytes newest = dictionary(255);
    QTest::newRow("more") << QByteArray::fromStdString(newest + 'x');
    QTest::newRow("less") << QByteArray::fromStdString(newest.substr(0, newest.size() - 1));
}

void DictionaryFilesTest::sizeOneByteOffIsNotUsed()
{
    QFETCH(QByteArray, bytes);
    writeFile(Path_cfsh_dic, bytes.toStdString());
    writeFile(Path_hrom_dic, dictionary(1));
    Handle handle;
    QCOMPARE(handle.result, int{ZIP_INIT_DICTIONARY});
    QCOMPARE(handle.opened(), "00001");
}

void DictionaryFilesTest::noDictionary()
{
    ydic_info *info = nullptr;
    QCOMPARE(ZipInit(&info), int{ZIP_INIT_NO_FILE});
    QVERIFY(info);
    s_closed = 0;
    s_freed = nullptr;
    const void *handle = info;
    QCOMPARE(ZipFin(info), 1);
    QCOMPARE(s_closed, 0);
    QCOMPARE(s_freed, handle);
}

void DictionaryFilesTest::unreadableDictionariesAreNotAbsent()
{
    QVERIFY(QDir().mkpath(placeOf(Path_hfsh_dic)));
    Handle handle;
    QCOMPARE(handle.result, int{ZIP_INIT_NO_GOOD_FILE});
}

void DictionaryFilesTest::noMemory()
{
    writeFile(Path_hrom_dic, dictionary(1));
    ydic_info *info = reinterpret_cast<ydic_info *>(this);
    s_memoryFails = true;
    const int result = ZipInit(&info);
    s_memoryFails = false;
    QCOMPARE(result, int{ZIP_INIT_NO_MEMORY});
    QVERIFY(!info);
    QCOMPARE(ZipFin(info), 1);
}

void DictionaryFilesTest::dictionaryThatGoesBetweenTestAndOpening()
{
    writeFile(Path_hrom_dic, dictionary(1));
    const qsizetype before = openDescriptors();
    s_opensUntilFailure = 1;
    Handle handle;
    QCOMPARE(handle.result, int{ZIP_INIT_NO_GOOD_FILE});
    QCOMPARE(handle.opened(), "00000");
    QVERIFY(!handle.info->dictFile);
    s_closed = 0;
    QCOMPARE(handle.finish(), 1);
    QCOMPARE(s_closed, 0);
    QCOMPARE(openDescriptors(), before);
}

void DictionaryFilesTest::patchThatGoesBetweenTestAndOpening()
{
    writeFile(Path_cfsh_pch, patch(4, 5));
    writeFile(Path_hrom_dic, dictionary(4));
    s_opensUntilFailure = 4; // the card's file is tested twice
    Handle handle;
    QCOMPARE(handle.result, int{ZIP_INIT_DICTIONARY});
    QCOMPARE(handle.opened(), "00001");
    QVERIFY(!handle.info->patchFile);
    QCOMPARE(int{handle.info->hasPatch}, 0);
    QCOMPARE(handle.edition(0), 4);
    QCOMPARE(handle.finish(), 1);
}

void DictionaryFilesTest::programsThatAreStartedInheritNoFile()
{
    writeFile(Path_cfsh_pch, patch(4, 5));
    writeFile(Path_hrom_dic, dictionary(4));
    Handle handle;
    for (FILE *file : {handle.info->dictFile, handle.info->patchFile})
        QCOMPARE(fcntl(fileno(file), F_GETFD), FD_CLOEXEC);
}

void DictionaryFilesTest::closing_data()
{
    QTest::addColumn<bool>("dictionaryFails");
    QTest::addColumn<bool>("patchFails");
    QTest::addColumn<int>("result");
    QTest::newRow("both close") << false << false << 1;
    QTest::newRow("dictionary fails") << true << false << -1;
    QTest::newRow("patch fails") << false << true << -2;
    QTest::newRow("both fail") << true << true << -1;
}

void DictionaryFilesTest::closing()
{
    QFETCH(bool, dictionaryFails);
    QFETCH(bool, patchFails);
    writeFile(Path_cfsh_pch, patch(4, 5));
    writeFile(Path_hrom_dic, dictionary(4));
    Handle handle;
    if (dictionaryFails)
        s_notClosing.insert(handle.info->dictFile);
    if (patchFails)
        s_notClosing.insert(handle.info->patchFile);
    s_closed = 0;
    const void *memory = handle.info;
    QTEST(handle.finish(), "result");
    QCOMPARE(s_closed, 2);
    QCOMPARE(s_freed, memory);
}

void DictionaryFilesTest::closingBesideUselessPatch()
{
    writeFile(Path_cfsh_pch, patch(3, 4));
    writeFile(Path_hrom_dic, dictionary(4));
    Handle handle;
    QCOMPARE(handle.result, int{ZIP_INIT_USELESS_PATCH});
    s_closed = 0;
    QCOMPARE(handle.finish(), 1);
    QCOMPARE(s_closed, 1); // the useless patch is not open
}

void DictionaryFilesTest::hookDoesNothing()
{
    QCOMPARE(Zip7Hook(), 0);
}

QTEST_GUILESS_MAIN(DictionaryFilesTest)
#include "dictionaryfilestest.moc"
