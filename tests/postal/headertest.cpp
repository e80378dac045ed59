#include "imagebuilder.h"
#include "ydicfile_p.h"
#include "ydicsearch.h"

#include <QTest>

#include <array>

using namespace imagebuilder;

namespace {

/** A header whose every 32-bit field is its own offset, and something above its low 24 bits. */
Bytes numberedHeader()
{
    Bytes file(6, '\0');
    for (uint32_t offset = 8; offset < YDIC_HEADER_LENGTH; offset += 4)
        file.resize(offset), file += u32(0xAB000000U + offset);
    return file;
}

} // namespace

/** The header of a dictionary, as both searches read it. */
class HeaderTest : public QObject
{
    Q_OBJECT
private slots:
    void codeSearchHasItsFieldsWhole();
    void headerThatIsCutFails();
    void oneByteTextCodesFollowTheHeader();
    void oneByteTextCodesThatAreCutFail();
    void addressSearchHasLowThreeBytes();
    void addressSearchReadsRangeOfTwoBytes();
    void addressSearchTakesFileInUse();
    void addressSearchOfShortFileFails();
    void readsFromWhereverTheFileStands();
    void readsFromDictionaryOrPatch();
    void readsNothingBehindTheEnd();
    void readsNothingFromNoFile();
};

void HeaderTest::codeSearchHasItsFieldsWhole()
{
    OpenImages files(numberedHeader());
    ydic_fields fields{};
    std::array<uint8_t, YDIC_SCRATCH_LENGTH> scratch{};
    QCOMPARE(header_Read(files.info()->dictFile, &fields, scratch.data()), 1);
    const uint32_t high = 0xAB000000U;
    QCOMPARE(fields.codeIndex1, high + 16);
    QCOMPARE(fields.codeIndex1Size, high + 20);
    QCOMPARE(fields.baseA, high + 24);
    QCOMPARE(fields.baseASize, high + 28);
    QCOMPARE(fields.baseB, high + 32);
    QCOMPARE(fields.baseBSize, high + 36);
    QCOMPARE(fields.numberIndex, high + 56);
    QCOMPARE(fields.numberIndexSize, high + 60);
    QCOMPARE(fields.numberRuns, high + 64);
    QCOMPARE(fields.numberRunsSize, high + 68);
    QCOMPARE(fields.changes, high + 72);
    QCOMPARE(fields.changesSize, high + 76);
    QCOMPARE(fields.sliceLimit, high + 80);
}

void HeaderTest::headerThatIsCutFails()
{
    OpenImages files(numberedHeader().substr(0, YDIC_HEADER_LENGTH - 1));
    ydic_fields fields{};
    std::array<uint8_t, YDIC_SCRATCH_LENGTH> scratch{};
    QCOMPARE(header_Read(files.info()->dictFile, &fields, scratch.data()), -1);
}

void HeaderTest::oneByteTextCodesFollowTheHeader()
{
    const Bytes characters = jis(u"丁目北南");
    OpenImages files(Image{.ask1ji = characters}.bytes());
    std::array<char, YDIC_ASK1JI_LENGTH> ask1ji{};
    QCOMPARE(ask1ji_tblRead(files.info()->dictFile, ask1ji.data()), 1);
    QCOMPARE(Bytes(ask1ji.data(), characters.size()), characters);
}

void HeaderTest::oneByteTextCodesThatAreCutFail()
{
    OpenImages files(Image().bytes().substr(0, size_t{YDIC_HEADER_LENGTH} + YDIC_ASK1JI_LENGTH - 1));
    std::array<char, YDIC_ASK1JI_LENGTH> ask1ji{};
    QCOMPARE(ask1ji_tblRead(files.info()->dictFile, ask1ji.data()), -1);
}

void HeaderTest::addressSearchHasLowThreeBytes()
{
    OpenImages files(numberedHeader() + Bytes(200, 'x'));
    std::array<char, YDIC_READ_LENGTH> buffer{};
    ydic_search search{};
    search.readBuf = buffer.data();
    QCOMPARE(InitDicData(&search, files.info()), 0);
    QCOMPARE(search.fields.baseA, 24U);
    QCOMPARE(search.fields.baseASize, 28U);
    QCOMPARE(search.fields.baseB, 32U);
    QCOMPARE(search.fields.baseBSize, 36U);
    QCOMPARE(search.fields.index1, 40U);
    QCOMPARE(search.fields.index1Size, 44U);
    QCOMPARE(search.fields.index2, 48U);
    QCOMPARE(search.fields.index2Size, 52U);
    QCOMPARE(Bytes(search.ask1ji, YDIC_ASK1JI_LENGTH), Bytes(YDIC_ASK1JI_LENGTH, 'x'));
    QCOMPARE(buffer[255], 'x');
    QCOMPARE(buffer[256], '\0');
}

void HeaderTest::addressSearchReadsRangeOfTwoBytes()
{
    OpenImages files(Image{.secondStart = 0x1234, .secondEnd = 0xFEDC}.bytes());
    std::array<char, YDIC_READ_LENGTH> buffer{};
    ydic_search search{};
    search.readBuf = buffer.data();
    QCOMPARE(InitDicData(&search, files.info()), 0);
    QCOMPARE(search.fields.secondStart, uint16_t{0x1234});
    QCOMPARE(search.fields.secondEnd, uint16_t{0xFEDC});
}

void HeaderTest::addressSearchTakesFileInUse()
{
    OpenImages files(Image{.ask1ji = jis(u"北")}.bytes(), Image{.ask1ji = jis(u"南")}.bytes());
    std::array<char, YDIC_READ_LENGTH> buffer{};
    ydic_search search{};
    search.readBuf = buffer.data();
    QCOMPARE(InitDicData(&search, files.info()), 0);
    QCOMPARE(Bytes(search.ask1ji, 2), jis(u"北"));
    search.fileSel = 1;
    QCOMPARE(InitDicData(&search, files.info()), 0);
    QCOMPARE(Bytes(search.ask1ji, 2), jis(u"南"));
}

void HeaderTest::addressSearchOfShortFileFails()
{
    OpenImages files(numberedHeader() + Bytes(255 - YDIC_HEADER_LENGTH, 'x'));
    std::array<char, YDIC_READ_LENGTH> buffer{};
    ydic_search search{};
    search.readBuf = buffer.data();
    QCOMPARE(InitDicData(&search, files.info()), int{YDIC_NOT_READ});
}

void HeaderTest::readsFromWhereverTheFileStands()
{
    OpenImages files("0123456789");
    std::array<char, 4> bytes{};
    QCOMPARE(ReadDic(6, 4, bytes.data(), 0, files.info()), 0);
    QCOMPARE(Bytes(bytes.data(), 4), Bytes("6789"));
    QCOMPARE(ReadDic(1, 2, bytes.data(), 0, files.info()), 0);
    QCOMPARE(Bytes(bytes.data(), 4), Bytes("1289"));
}

void HeaderTest::readsFromDictionaryOrPatch()
{
    OpenImages files("dictionary", "patch");
    char byte = 0;
    QCOMPARE(ReadDic(0, 1, &byte, 0, files.info()), 0);
    QCOMPARE(byte, 'd');
    QCOMPARE(ReadDic(0, 1, &byte, 1, files.info()), 0);
    QCOMPARE(byte, 'p');
    QCOMPARE(ReadDic(1, 1, &byte, 255, files.info()), 0);
    QCOMPARE(byte, 'a');
}

void HeaderTest::readsNothingBehindTheEnd()
{
    OpenImages files("0123456789");
    std::array<char, 8> bytes{};
    QCOMPARE(ReadDic(3, 8, bytes.data(), 0, files.info()), int{YDIC_NOT_READ});
    QCOMPARE(ReadDic(10, 1, bytes.data(), 0, files.info()), int{YDIC_NOT_READ});
    QCOMPARE(ReadDic(0xFFFFFFFF, 1, bytes.data(), 0, files.info()), int{YDIC_NOT_READ});
    QCOMPARE(ReadDic(2, 8, bytes.data(), 0, files.info()), 0); // and a failure spoils nothing
}

void HeaderTest::readsNothingFromNoFile()
{
    OpenImages files("0123456789");
    char byte = 0;
    QCOMPARE(ReadDic(0, 1, &byte, 1, files.info()), int{YDIC_NOT_READ});
}

QTEST_GUILESS_MAIN(HeaderTest)
#include "headertest.moc"
