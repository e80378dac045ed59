#include "indexfixture.h"

#include <cerrno>
#include <dlfcn.h>
#include <unistd.h>
#include <utility>

using namespace expression;

namespace {

int g_writeError = 0;  // errno that write() gives instead of writing
int g_brokenWrite = 0; // errno that write() gives once, when all but one byte is written
int g_renameError = 0; // errno that rename() gives instead of renaming
int g_placeError = 0;  // errno that pwrite() gives instead of writing

/** Makes a system call fail for a while. */
class Failing
{
public:
    Failing(int &place, int error) : m_place(place) { m_place = error; }
    ~Failing() { m_place = 0; }
    Q_DISABLE_COPY_MOVE(Failing)

private:
    int &m_place;
};

} // namespace

extern "C" {

__attribute__((visibility("default"))) ssize_t write(int file, const void *bytes, size_t size)
{
    static const auto next =
        reinterpret_cast<ssize_t (*)(int, const void *, size_t)>(dlsym(RTLD_NEXT, "write"));
    if (g_writeError != 0) {
        errno = g_writeError;
        return -1;
    }
    if (g_brokenWrite != 0 && size > 1) {
        return next(file, bytes, size / 2);
    }
    if (g_brokenWrite != 0) {
        errno = std::exchange(g_brokenWrite, 0);
        return -1;
    }
    return next(file, bytes, size);
}

__attribute__((visibility("default"))) ssize_t pwrite(int file, const void *bytes, size_t size, off_t offset)
{
    static const auto next =
        reinterpret_cast<ssize_t (*)(int, const void *, size_t, off_t)>(dlsym(RTLD_NEXT, "pwrite"));
    if (g_placeError != 0) {
        errno = g_placeError;
        return -1;
    }
    return next(file, bytes, size, offset);
}

__attribute__((visibility("default"))) int rename(const char *from, const char *to) noexcept
{
    static const auto next =
        reinterpret_cast<int (*)(const char *, const char *)>(dlsym(RTLD_NEXT, "rename"));
    if (g_renameError != 0) {
        errno = g_renameError;
        return -1;
    }
    return next(from, to);
}
}

/** Index files that can't be written: the status says why, nothing is left behind, and what was there stays.
 */
class IndexWriteTest : public QObject
{
    Q_OBJECT

private slots:
    void statusSaysWhy_data();
    void statusSaysWhy();
    void fillThatBreaksOffIsUndone();
    void fillOfAReplacedFile();
    void memoryServesWhatCantBeWritten();
    void closeWithoutSpace();
    void counterThatCantBeWritten();
    void newFilesNameIsTaken();
    void goneFolder();
};

void IndexWriteTest::statusSaysWhy_data()
{
    QTest::addColumn<int>("error");
    QTest::addColumn<bool>("inRename");
    QTest::addColumn<int>("status");
    QTest::newRow("full volume") << ENOSPC << false << int(PdtmOutOfSpace);
    QTest::newRow("quota") << EDQUOT << false << int(PdtmOutOfSpace);
    QTest::newRow("read-only volume") << EROFS << true << int(PdtmReadOnly);
    QTest::newRow("folder that can't be written") << EACCES << true << int(PdtmReadOnly);
    QTest::newRow("broken volume") << EIO << false << int(PdtmIoError);
}

void IndexWriteTest::statusSaysWhy()
{
    QFETCH(int, error);
    QFETCH(bool, inRename);
    QFETCH(int, status);
    TestBox box;
    const uint16_t b = box.add("b", 1, "\1");
    const uint16_t a = box.add("a", 2, "\1");
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const QByteArray one = box.grouped("ONE.IDX", index, category(2));
    TestBox::writeInfo(one, InfoSearchExpression, category(1));
    const QByteArray sort = sortBy("NUMB", Ascending);
    const QByteArray before = contentsOf(index);
    QList<int> results;
    {
        const Failing failing(inRename ? g_renameError : g_writeError, error);
        results << _IndexCreate(box.at("NEW.IDX"), 17)
                << _IndexCopy(index, box.at("NEW.IDX"), 2, sort.constData(), int(sort.size()))
                << TestBox::writeInfo(index, InfoSortExpression, sort) << _IndexSort(index, box.handle())
                << _IndexGroup(index, one, box.handle()) << _IndexUnGroup(one, box.handle());
    }
    QCOMPARE(results, QList<int>(6, status));
    QCOMPARE(contentsOf(index), before);
    QCOMPARE(TestBox::info(index, InfoSortExpression), sortBy("NAME", Ascending));
    QCOMPARE(cardsOf(index), (Cards{a, b}));
    QVERIFY(cardsOf(one).isEmpty());
    QVERIFY(!QFile::exists(TestBox::file(box.at("NEW.IDX"))));
    const QDir folder = QFileInfo(TestBox::file(index)).dir();
    QCOMPARE(folder.entryList({"*.new"}, QDir::AllEntries), QStringList());
    QCOMPARE(_IndexGroup(index, one, box.handle()), PdtmStatus(PdtmOk));
}

void IndexWriteTest::fillThatBreaksOffIsUndone()
{
    TestBox box;
    const QByteArray master = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const QByteArray one = box.describe("ONE.IDX", {}, category(1));
    const uint16_t a = box.add("a", 0, "\1");
    const QByteArray before = contentsOf(one);
    {
        const Failing failing(g_brokenWrite, ENOSPC);
        QCOMPARE(_IndexGroup(master, one, box.handle()), PdtmStatus(PdtmOutOfSpace));
        QCOMPARE(g_brokenWrite, 0);
    }
    QCOMPARE(contentsOf(one), before);
    QVERIFY(cardsOf(one).isEmpty());
    QCOMPARE(_IndexGroup(master, one, box.handle()), PdtmStatus(PdtmOk));
    QCOMPARE(cardsOf(one), Cards{a});
    const QByteArray filled = contentsOf(one);
    box.restart();
    QCOMPARE(cardsOf(one), Cards{a});
    QCOMPARE(contentsOf(one), filled); // it was whole
}

/** What another process put there is not written over. */
void IndexWriteTest::fillOfAReplacedFile()
{
    TestBox box;
    const std::string path = pdtm::realPath(box.describe("ONE.IDX", {}, category(1)));
    pdtm::IndexFileReader reader;
    QCOMPARE(reader.open(path), PdtmStatus(PdtmOk));
    const QString file = QString::fromStdString(path);
    const QString kept = file + "2";
    pdtm::FileStamp stamp = reader.stamp();
    ++stamp.modified;
    QVERIFY(::link(path.c_str(), QFile::encodeName(kept).constData()) == 0);
    const QByteArray before = contentsOf(QFile::encodeName(kept));
    pdtm::IndexDefinition definition = reader.definition();
    definition.filled = true;
    QCOMPARE(pdtm::fillIndexFile(path, reader.definition(), definition, pdtm::OrderImage(), stamp),
             PdtmStatus(PdtmOk));
    QCOMPARE(contentsOf(QFile::encodeName(kept)), before);
    QVERIFY(contentsOf(QFile::encodeName(file)) != before);
}

void IndexWriteTest::memoryServesWhatCantBeWritten()
{
    TestBox box;
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const uint16_t a = box.add("a");
    box.close();
    const QByteArray damaged = contentsOf(index).chopped(10);
    replaceContents(index, damaged);
    box.forgetMemory();
    box.open();
    {
        const Failing failing(g_renameError, EROFS);
        QCOMPARE(cardsOf(index), Cards{a});
        const uint16_t b = box.add("b");
        QCOMPARE(cardsOf(index), (Cards{a, b}));
        uint16_t number = 0;
        QCOMPARE(_IndexNoDelete(index, 1), PdtmStatus(PdtmOk));
        QCOMPARE(_IndexNoAppend(index, box.handle(), a, &number), PdtmStatus(PdtmOk));
    }
    QCOMPARE(contentsOf(index), damaged);
    box.restart();
    QCOMPARE(cardsOf(index).size(), 2);
}

void IndexWriteTest::closeWithoutSpace()
{
    TestBox box;
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const QByteArray before = contentsOf(index);
    const uint16_t a = box.add("a");
    {
        const Failing failing(g_writeError, ENOSPC);
        box.close();
    }
    QCOMPARE(contentsOf(index), before);
    QCOMPARE(cardsOf(index), Cards{a});
    box.open();
    const uint16_t b = box.add("b");
    QCOMPARE(cardsOf(index), (Cards{a, b}));
    box.restart();
    QCOMPARE(cardsOf(index), (Cards{a, b}));
    QVERIFY(contentsOf(index) != before);
}

void IndexWriteTest::counterThatCantBeWritten()
{
    TestBox box;
    const uint16_t a = box.add("a");
    const uint16_t b = box.add("b");
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    box.restart();
    const QByteArray before = contentsOf(index);
    pdtm::FileStamp stamp = *pdtm::stampOf(pdtm::realPath(index));
    {
        const Failing failing(g_placeError, EIO);
        QCOMPARE(pdtm::writeIndexCounter(pdtm::realPath(index), 77, stamp), PdtmStatus(PdtmIoError));
    }
    QCOMPARE(contentsOf(index), before);
    box.edit(a, "NUMB", native(uint16_t(3)));
    box.close();
    replaceContents(index, before); // stale
    box.forgetMemory();
    box.open();
    QCOMPARE(cardsOf(index), (Cards{a, b}));
}

void IndexWriteTest::newFilesNameIsTaken()
{
    TestBox box;
    box.add("a");
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const QString obstacle = TestBox::file(index) + ".new";
    QVERIFY(QDir().mkpath(obstacle + "/full"));
    QVERIFY(_IndexSort(index, box.handle()) != PdtmOk);
    QVERIFY(QFile::exists(obstacle + "/full"));
    QVERIFY(QDir(obstacle).removeRecursively());
    QFile(obstacle).open(QIODevice::WriteOnly); // left over from a crash
    QCOMPARE(_IndexSort(index, box.handle()), PdtmStatus(PdtmOk));
    QVERIFY(!QFile::exists(obstacle));
}

void IndexWriteTest::goneFolder()
{
    QCOMPARE(_IndexCreate("/nowhere/KYTEST.IDX", 17), PdtmStatus(PdtmMissing));
    QCOMPARE(_IndexDelete("/nowhere/KYTEST.IDX"), PdtmStatus(PdtmMissing));
}

QTEST_GUILESS_MAIN(IndexWriteTest)
#include "indexwritetest.moc"
