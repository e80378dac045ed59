#include "codefixture.h"
#include "memoryfaults.h"
#include "ydiccode_p.h"

#include <QElapsedTimer>
#include <QTest>

#include <set>

using namespace codefixture;
using namespace imagebuilder;

namespace {

constexpr auto Level1At = size_t{YDIC_HEADER_LENGTH} + YDIC_ASK1JI_LENGTH;
constexpr auto Level2At = Level1At + YDIC_LEVEL1_LENGTH;

/** Two wards of Tokyo, a town of Hokkaido, and room between them. */
Image smallImage()
{
    Image image{.prefectures = {{4, 1}}};
    image.addChunk(4800, 10, stored(u"余市町") + record(10, stored(u"黒川町")));
    image.addChunk(10000, 1,
                   stored(u"千代田区") + record(1, stored(u"千代田")) + record(3, stored(u"一ツ橋")) +
                       record(3, stored(u"大手町")) + record(5, stored(u"丸の内")));
    image.addChunk(10200, 72, stored(u"千代田区") + record(72, stored(u"飯田橋")));
    image.addChunk(10400, 0, stored(u"中央区") + record(0, "\x68") + record(61, stored(u"入船")));
    return image;
}

/** A patch: 1000001 is another place, 1000003 is gone. */
Image smallPatch()
{
    Image patch{.type = YDIC_PATCH};
    patch.addChunk(10000, 1, stored(u"千代田区") + record(1, stored(u"皇居")) + record(3, "\x6A\x68"));
    return patch;
}

/** An image with one chunk of 1000000 to 1000099. */
Image imageOf(const Bytes &records)
{
    Image image;
    image.addChunk(10000, 0, records);
    return image;
}

/** 1000005 with as many places as are asked for, each two one-byte text codes. */
Image imageOfPlaces(uint32_t count, const Bytes &common)
{
    Bytes records = common;
    for (uint32_t i = 0; i < count; ++i)
        records += record(5, u8(YDIC_ASK1JI_FIRST + i / 52 % 52) + u8(YDIC_ASK1JI_FIRST + i % 52));
    Image image = imageOf(records);
    for (uint32_t i = 0; i < 52; ++i)
        image.ask1ji += u16(0x3021 + i); // 亜 to 旭
    return image;
}

/** Level 1 with one slice, that of 10. */
Bytes level1Of(uint32_t start, uint32_t end)
{
    Bytes level1;
    for (int prefix = 0; prefix <= YDIC_PREFIXES; ++prefix)
        level1 += u8(13) + u16(prefix <= 10 ? start : end);
    return level1;
}

/** Three chunks of 1000005, of which the second ends before its start. */
Bytes imageWithDamagedSecondChunk()
{
    Image image;
    image.addChunk(10000, 5, record(5, stored(u"一")));
    image.addChunk(10000, 5, record(5, stored(u"二")));
    image.addChunk(10000, 5, record(5, stored(u"三")));
    return image.bytes().replace(Level2At + size_t{2} * YDIC_LEVEL2_ENTRY + 2, 3, u24(2));
}

Bytes withField(Bytes file, size_t field, uint32_t value)
{
    return file.replace(field, 4, u32(value));
}

int countOf(const Bytes &dictionary, const char *code)
{
    const Answer answer = search(dictionary, code);
    return answer.isGuarded ? answer.count : -100;
}

} // namespace

/** The addresses of a code. */
class CodeSearchTest : public QObject
{
    Q_OBJECT
private slots:
    void codesAreTakenApart_data();
    void codesAreTakenApart();
    void whatIsNoCodeIsRefused_data();
    void whatIsNoCodeIsRefused();

    void addressesOfACode_data();
    void addressesOfACode();
    void resultsFollowOneAnother();
    void chunksOfACode_data();
    void chunksOfACode();
    void foundFlagTellsOfRecords();

    void patchReplacesRecordsOfACode();
    void patchRemovesACode();
    void patchLeavesOtherCodesToTheDictionary();
    void damagedPatchIsTheAnswer();

    void duplicatesAtMaximumMakeRoom();
    void maximumOfDistinctAddressesEndsTheScan();
    void duplicatesBelowMaximumAreRemoved();
    void maximumOfNoneTouchesNothing();
    void manyAddresses_data();
    void manyAddresses();

    void duplicatesMakeRoomAmongManyAddresses();
    void duplicatesBehindManyAddressesTakeNoTime();

    void shortFile_data();
    void shortFile();
    void fileThatIsMissing();
    void invalidCodeInAShortFileIsAFailedRead();
    void noMemory();
    void everyPathGivesItsMemoryBack();
    void lookupIsSmall();

    void sliceLimit_data();
    void sliceLimit();
    void limitOfDamagedFileTakesNoMemory();
    void longestSlice();
    void sliceThatEndsBeforeItsStart();
    void sliceWithPartOfAnEntry();
    void chunkRange_data();
    void chunkRange();
    void chunkOutsideOfRangeIsAFailure_data();
    void chunkOutsideOfRangeIsAFailure();
    void chunkBeforeTheRangeIsAFailure();
    void damageBehindResultsLeavesNone();
    void offsetsDontWrap_data();
    void offsetsDontWrap();
};

void CodeSearchTest::codesAreTakenApart_data()
{
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<int>("first2");
    QTest::addColumn<int>("mid3");
    QTest::addColumn<int>("last2");
    QTest::newRow("digits") << QByteArray("1234567") << 12 << 345 << 67;
    QTest::newRow("hyphen") << QByteArray("123-4567") << 12 << 345 << 67;
    QTest::newRow("lowest") << QByteArray("0000000") << 0 << 0 << 0;
    QTest::newRow("highest") << QByteArray("999-9999") << 99 << 999 << 99;
    QTest::newRow("zeros in front") << QByteArray("0600001") << 6 << 0 << 1;
}

void CodeSearchTest::codesAreTakenApart()
{
    QFETCH(QByteArray, code);
    ydic_key key{};
    QCOMPARE(zipCode_Check(code.constData(), &key), 1);
    QTEST(int{key.first2}, "first2");
    QTEST(int{key.mid3}, "mid3");
    QTEST(int{key.last2}, "last2");
    QCOMPARE(ydic_number(&key), code.replace("-", "").toUInt());
}

void CodeSearchTest::whatIsNoCodeIsRefused_data()
{
    QTest::addColumn<QByteArray>("code");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("hyphen behind two") << QByteArray("12-34567");
    QTest::newRow("hyphen behind four") << QByteArray("1234-567");
    QTest::newRow("two hyphens") << QByteArray("123--567");
    QTest::newRow("hyphen alone") << QByteArray("-");
    QTest::newRow("blank behind") << QByteArray("1234567 ");
    QTest::newRow("blank in front") << QByteArray(" 1234567");
    QTest::newRow("six digits") << QByteArray("123456");
    QTest::newRow("six digits and hyphen") << QByteArray("123-456");
    QTest::newRow("eight digits") << QByteArray("12345678");
    QTest::newRow("nine digits") << QByteArray("123456789");
    QTest::newRow("hyphen and eight digits") << QByteArray("123-45678");
    QTest::newRow("letter") << QByteArray("123456a");
    QTest::newRow("behind 9") << QByteArray("123456:");
    QTest::newRow("before 0") << QByteArray("123456/");
    QTest::newRow("byte above ASCII") << QByteArray("123456\xB1");
}

void CodeSearchTest::whatIsNoCodeIsRefused()
{
    QFETCH(QByteArray, code);
    ydic_key key{1, 2, 3};
    QCOMPARE(zipCode_Check(code.constData(), &key), -1);
    const Answer answer = search(smallImage().bytes(), code.constData());
    QCOMPARE(answer.count, int{YDIC_BAD_INPUT});
    QVERIFY(answer.isEmpty && answer.isGuarded);
}

void CodeSearchTest::addressesOfACode_data()
{
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<QStringList>("addresses");
    QTest::newRow("one") << QByteArray("1000001") << QStringList{"東京都／千代田区千代田"};
    QTest::newRow("with a hyphen") << QByteArray("100-0001") << QStringList{"東京都／千代田区千代田"};
    QTest::newRow("two") << QByteArray("1000003")
                         << QStringList{"東京都／千代田区一ツ橋", "東京都／千代田区大手町"};
    QTest::newRow("last of a chunk") << QByteArray("1000005") << QStringList{"東京都／千代田区丸の内"};
    QTest::newRow("second chunk") << QByteArray("1020072") << QStringList{"東京都／千代田区飯田橋"};
    QTest::newRow("whole area") << QByteArray("1040000") << QStringList{"東京都／中央区"};
    QTest::newRow("last of a slice") << QByteArray("1040061") << QStringList{"東京都／中央区入船"};
    QTest::newRow("other prefecture") << QByteArray("0480010") << QStringList{"北海道／余市町黒川町"};
    QTest::newRow("prefix without entries") << QByteArray("1100001") << QStringList();
    QTest::newRow("below all prefixes") << QByteArray("0000000") << QStringList();
    QTest::newRow("above all prefixes") << QByteArray("9999999") << QStringList();
    QTest::newRow("below the smallest last digits") << QByteArray("1000000") << QStringList();
    QTest::newRow("between two records") << QByteArray("1000002") << QStringList();
    QTest::newRow("above the last record") << QByteArray("1000099") << QStringList();
    QTest::newRow("between two middles") << QByteArray("1010001") << QStringList();
    QTest::newRow("below the first middle") << QByteArray("0470010") << QStringList();
    QTest::newRow("above the last middle") << QByteArray("1099999") << QStringList();
}

void CodeSearchTest::addressesOfACode()
{
    QFETCH(QByteArray, code);
    QFETCH(QStringList, addresses);
    const Answer answer = search(smallImage().bytes(), code.constData());
    QCOMPARE(answer.addresses, addresses);
    QCOMPARE(answer.count, int(addresses.size()));
    QCOMPARE(answer.isEmpty, addresses.isEmpty());
    QVERIFY(answer.isGuarded);
}

void CodeSearchTest::resultsFollowOneAnother()
{
    OpenImages files(smallImage().bytes());
    ResultBuffer buffer(bufferLength(DialogMaximum));
    QCOMPARE(Zip2AdrSearch("1000003", DialogMaximum, buffer.data(), files.info()), 2);
    const Bytes first = jis(u"東京都／千代田区一ツ橋");
    const Bytes second = jis(u"東京都／千代田区大手町");
    const Bytes expected = first + '\0' + second + '\0';
    QCOMPARE(Bytes(buffer.data(), expected.size()), expected);
}

void CodeSearchTest::chunksOfACode_data()
{
    // Chunks of 10000: the smallest last digits, and the codes in it, whose places are A to Z in file order.
    using Chunks = QList<QPair<int, QByteArray>>;
    QTest::addColumn<Chunks>("chunks");
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<QByteArray>("places");
    QTest::newRow("all with the same smallest digits are scanned")
        << Chunks{{5, "\5\7"}, {5, "\5\6"}, {5, "\5"}} << QByteArray("1000005") << QByteArray("A");
    QTest::newRow("of these the scan goes on while codes are lower or equal")
        << Chunks{{5, "\5\5"}, {5, "\5"}, {5, "\5\6"}} << QByteArray("1000005") << QByteArray("ABCD");
    QTest::newRow("begins with the first of them")
        << Chunks{{5, "\5"}, {5, "\5\6"}} << QByteArray("1000006") << QByteArray("C");
    QTest::newRow("begins with the greatest smallest digits that aren't above")
        << Chunks{{5, "\5\7"}, {7, "\7"}, {9, "\x9"}} << QByteArray("1000007") << QByteArray("C");
    QTest::newRow("smaller digits behind greater ones don't begin again")
        << Chunks{{7, "\7"}, {5, "\7"}} << QByteArray("1000007") << QByteArray("AB");
    QTest::newRow("ends before greater smallest digits")
        << Chunks{{5, "\5\7"}, {8, "\7"}} << QByteArray("1000007") << QByteArray("B");
    QTest::newRow("a greater code ends the scan of all chunks")
        << Chunks{{5, "\7"}, {5, "\5"}} << QByteArray("1000005") << QByteArray("");
    QTest::newRow("below all") << Chunks{{5, "\5"}, {7, "\7"}} << QByteArray("1000004") << QByteArray("");
}

void CodeSearchTest::chunksOfACode()
{
    using Chunks = QList<QPair<int, QByteArray>>;
    QFETCH(Chunks, chunks);
    QFETCH(QByteArray, code);
    QFETCH(QByteArray, places);
    Image image;
    char16_t place = u'Ａ';
    image.addChunk(10, 0, record(0, stored(u"前")));
    for (const auto &[smallest, codes] : chunks) {
        Bytes records;
        for (const char last2 : codes)
            records += record(static_cast<uint8_t>(last2), stored(std::u16string(1, place++)));
        image.addChunk(10000, static_cast<uint8_t>(smallest), records);
    }
    image.addChunk(10100, 0, record(0, stored(u"後")));
    QStringList addresses;
    for (const char letter : places)
        addresses.append(QString("東京都／") + QChar(u'Ａ' + letter - 'A'));
    QCOMPARE(search(image.bytes(), code.constData()).addresses, addresses);
}

void CodeSearchTest::foundFlagTellsOfRecords()
{
    OpenImages files(imageOf(record(5, "\x64") + record(6, stored(u"東"))).bytes());
    ResultBuffer buffer(bufferLength(DialogMaximum));
    uint8_t found = 9;
    QCOMPARE(Zip2AdrSearchBody("1000004", DialogMaximum, buffer.data(), files.info()->dictFile, &found), 0);
    QCOMPARE(int{found}, 0);
    QCOMPARE(Zip2AdrSearchBody("1000005", DialogMaximum, buffer.data(), files.info()->dictFile, &found), 0);
    QCOMPARE(int{found}, 1);
    QCOMPARE(Zip2AdrSearchBody("1000006", DialogMaximum, buffer.data(), files.info()->dictFile, &found), 1);
    QCOMPARE(int{found}, 1);
}

void CodeSearchTest::patchReplacesRecordsOfACode()
{
    OpenImages files(smallImage().bytes(), smallPatch().bytes());
    QCOMPARE(search(files, "1000001").addresses, QStringList{"東京都／千代田区皇居"});
}

void CodeSearchTest::patchRemovesACode()
{
    OpenImages files(smallImage().bytes(), smallPatch().bytes());
    const Answer answer = search(files, "1000003");
    QCOMPARE(answer.count, 0);
    QVERIFY(answer.isEmpty);
    ResultBuffer buffer(bufferLength(DialogMaximum));
    uint8_t found = 0;
    QCOMPARE(Zip2AdrSearchBody("1000003", DialogMaximum, buffer.data(), files.info()->patchFile, &found), 0);
    QCOMPARE(int{found}, 1);
}

void CodeSearchTest::patchLeavesOtherCodesToTheDictionary()
{
    OpenImages files(smallImage().bytes(), smallPatch().bytes());
    QCOMPARE(search(files, "1000005").addresses, QStringList{"東京都／千代田区丸の内"});
    QCOMPARE(search(files, "0480010").addresses, QStringList{"北海道／余市町黒川町"});
    QCOMPARE(search(files, "1000002").count, 0);
}

void CodeSearchTest::damagedPatchIsTheAnswer()
{
    OpenImages files(smallImage().bytes(), smallPatch().bytes().substr(0, Level2At));
    const Answer answer = search(files, "1000005");
    QCOMPARE(answer.count, int{YDIC_NOT_READ});
    QVERIFY(answer.isEmpty);
    files.info()->hasPatch = 0;
    QCOMPARE(search(files, "1000005").count, 1);
}

void CodeSearchTest::duplicatesAtMaximumMakeRoom()
{
    const Bytes same = record(5, stored(u"同"));
    const Bytes file =
        imageOf(same + same + same + record(5, stored(u"異")) + same + record(5, stored(u"又"))).bytes();
    const Answer answer = search(file, "1000005", 3);
    QCOMPARE(answer.addresses, (QStringList{"東京都／同", "東京都／異", "東京都／又"}));
    QVERIFY(answer.isGuarded);
}

void CodeSearchTest::maximumOfDistinctAddressesEndsTheScan()
{
    const Bytes records = record(5, stored(u"一")) + record(5, stored(u"二")) + record(5, stored(u"三"));
    const Answer answer = search(imageOf(records).bytes(), "1000005", 2);
    QCOMPARE(answer.addresses, (QStringList{"東京都／一", "東京都／二"}));
    QVERIFY(answer.isGuarded);
    QCOMPARE(search(imageWithDamagedSecondChunk(), "1000005", 1).addresses, QStringList{"東京都／一"});
}

void CodeSearchTest::duplicatesBelowMaximumAreRemoved()
{
    const Bytes same = record(5, stored(u"同"));
    const Answer answer = search(imageOf(record(5, stored(u"先")) + same + same).bytes(), "1000005");
    QCOMPARE(answer.addresses, (QStringList{"東京都／先", "東京都／同"}));
    QCOMPARE(answer.count, 2);
}

void CodeSearchTest::maximumOfNoneTouchesNothing()
{
    OpenImages files(smallImage().bytes());
    ResultBuffer buffer(0);
    QCOMPARE(Zip2AdrSearch("1000003", 0, buffer.data(), files.info()), 0);
    QVERIFY(buffer.isGuarded());
    QCOMPARE(Zip2AdrSearch("100000", 0, buffer.data(), files.info()), int{YDIC_BAD_INPUT});
    QVERIFY(buffer.isGuarded());
}

void CodeSearchTest::manyAddresses_data()
{
    QTest::addColumn<uint32_t>("max");
    QTest::addColumn<int>("count");
    QTest::newRow("one") << 1U << 1;
    QTest::newRow("more than the dialog asks for") << 100U << 100;
    QTest::newRow("eight hundred") << 800U << 800;
    QTest::newRow("as many as are counted") << 809U << 809;
    QTest::newRow("more than are counted") << 810U << 809;
    QTest::newRow("more than there are") << 5000U << 809;
}

void CodeSearchTest::manyAddresses()
{
    QFETCH(uint32_t, max);
    // Prefecture and solidus, this, and two characters: 80 bytes each, so that they fill their room.
    const Bytes common = stored(std::u16string(34, u'長'));
    const Answer answer = search(imageOfPlaces(1600, common).bytes(), "1000005", max);
    QTEST(answer.count, "count");
    QVERIFY(answer.isGuarded);
    for (size_t i = 0; i < answer.results.size(); ++i) {
        const auto number = static_cast<uint32_t>(i);
        QCOMPARE(answer.results[i].size(), size_t{YDIC_ADDRESS_LENGTH});
        QCOMPARE(answer.results[i].substr(76), u16(0x3021 + number / 52) + u16(0x3021 + number % 52));
    }
}

void CodeSearchTest::duplicatesMakeRoomAmongManyAddresses()
{
    const Bytes same = record(5, "m");
    const Answer answer = search(imageOfPlaces(1000, same + same + same).bytes(), "1000005", 5000);
    QCOMPARE(answer.count, 809);
    QCOMPARE(std::set<Bytes>(answer.results.begin(), answer.results.end()).size(), size_t{809});
}

void CodeSearchTest::duplicatesBehindManyAddressesTakeNoTime()
{
    // One address less than the maximum, and as many records as a chunk holds that are all the first again.
    constexpr uint32_t Distinct = 808;
    Image image = imageOfPlaces(Distinct, stored(std::u16string(34, u'長')));
    while (image.chunks.size() + 3 < YDIC_CHUNK_LENGTH)
        image.chunks += record(5, "mm");
    QElapsedTimer timer;
    timer.start();
    const Answer answer = search(image.bytes(), "1000005", Distinct + 1);
    QCOMPARE(answer.count, int{Distinct});
    QVERIFY2(timer.elapsed() < 3000, QByteArray::number(timer.elapsed()));
}

void CodeSearchTest::shortFile_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("count");
    const int slice = int(Level2At) + 6 + 18 + 6; // behind that of 04: three entries, and the one behind them
    const Image image = smallImage();
    const auto chunks = int(Level2At + image.chunkDistance + image.chunks.size());
    QTest::newRow("nothing but a byte") << 1 << int{YDIC_NOT_READ};
    QTest::newRow("header") << int{YDIC_HEADER_LENGTH} - 1 << int{YDIC_NOT_READ};
    QTest::newRow("one-byte text codes") << int(Level1At) - 1 << int{YDIC_NOT_READ};
    QTest::newRow("level 1") << int(Level2At) - 1 << int{YDIC_NOT_READ};
    QTest::newRow("slice") << slice - 1 << int{YDIC_NOT_READ};
    QTest::newRow("chunks") << chunks - 1 << int{YDIC_NOT_READ};
    QTest::newRow("nothing that is needed") << chunks << 1;
}

void CodeSearchTest::shortFile()
{
    QFETCH(int, length);
    const Answer answer = search(smallImage().bytes().substr(0, static_cast<size_t>(length)), "1040061");
    QTEST(answer.count, "count");
    QCOMPARE(answer.isEmpty, answer.count < 0);
}

void CodeSearchTest::fileThatIsMissing()
{
    ydic_info info{};
    ResultBuffer buffer(bufferLength(1));
    QCOMPARE(Zip2AdrSearch("1000001", 1, buffer.data(), &info), int{YDIC_NOT_READ});
    QCOMPARE(*buffer.data(), '\0');
}

void CodeSearchTest::invalidCodeInAShortFileIsAFailedRead()
{
    QCOMPARE(search(smallImage().bytes().substr(0, Level2At - 1), "abc").count, int{YDIC_NOT_READ});
    QCOMPARE(search(smallImage().bytes().substr(0, Level2At), "abc").count, int{YDIC_BAD_INPUT});
}

void CodeSearchTest::noMemory()
{
    OpenImages files(smallImage().bytes());
    ResultBuffer buffer(bufferLength(DialogMaximum));
    constexpr int Allocations = 4;
    for (int allowed = 0; allowed <= Allocations; ++allowed) {
        *buffer.data() = Guard;
        memoryfaults::reset(allowed);
        const int count = Zip2AdrSearch("1000003", DialogMaximum, buffer.data(), files.info());
        const int left = memoryfaults::blocks;
        memoryfaults::reset();
        QCOMPARE(count, allowed < Allocations ? int{YDIC_NO_MEMORY} : 2);
        QCOMPARE(left, 0);
        QCOMPARE(*buffer.data() == '\0', allowed < Allocations);
    }
}

void CodeSearchTest::everyPathGivesItsMemoryBack()
{
    const Bytes file = smallImage().bytes();
    for (size_t length : {size_t{1}, Level1At - 1, Level2At - 1, Level2At, Level2At + 239, file.size()}) {
        OpenImages files(file.substr(0, length));
        ResultBuffer buffer(bufferLength(DialogMaximum));
        for (const char *code : {"1000003", "1000004", "1100000", "0480000", "abc"}) {
            memoryfaults::reset();
            QVERIFY(Zip2AdrSearch(code, DialogMaximum, buffer.data(), files.info()) <= 2);
            QVERIFY(length == 1 || memoryfaults::peak > 0);
            QCOMPARE(memoryfaults::blocks, 0);
        }
    }
}

void CodeSearchTest::lookupIsSmall()
{
    OpenImages files(smallImage().bytes());
    ResultBuffer buffer(bufferLength(DialogMaximum));
    memoryfaults::reset();
    QCOMPARE(Zip2AdrSearch("1000003", DialogMaximum, buffer.data(), files.info()), 2);
    QVERIFY(memoryfaults::peak > 5000);
    QVERIFY(memoryfaults::peak < 8000);
}

void CodeSearchTest::sliceLimit_data()
{
    QTest::addColumn<uint32_t>("limit");
    QTest::addColumn<int>("count");
    QTest::newRow("none") << 0U << int{YDIC_NOT_READ};
    QTest::newRow("the slice") << 18U << int{YDIC_NOT_READ};
    QTest::newRow("the slice and the entry behind it") << 24U << int{YDIC_NOT_READ};
    QTest::newRow("above them") << 25U << 1;
}

void CodeSearchTest::sliceLimit()
{
    QFETCH(uint32_t, limit);
    Image image = smallImage();
    image.sliceLimit = limit;
    QTEST(countOf(image.bytes(), "1040061"), "count");
}

void CodeSearchTest::limitOfDamagedFileTakesNoMemory()
{
    Image image = smallImage();
    image.sliceLimit = 0xFFFFFFFF;
    OpenImages files(image.bytes());
    ResultBuffer buffer(bufferLength(DialogMaximum));
    memoryfaults::reset();
    QCOMPARE(Zip2AdrSearch("1040061", DialogMaximum, buffer.data(), files.info()), 1);
    QVERIFY(memoryfaults::peak < 72000);
}

void CodeSearchTest::longestSlice()
{
    constexpr uint32_t Entries = 10922; // 65,532 bytes, and three that are no entry
    Image image{.sliceLimit = 0xFFFF0000, .chunkDistance = 70000};
    image.addChunk(10001, 0, record(0, stored(u"前")));
    for (uint32_t i = 1; i < Entries - 1; ++i)
        image.level2 += u16(500) + u24(6) + u8(0);
    image.addChunk(10999, 7, record(7, stored(u"後")));
    image.level1 = level1Of(0, 0xFFFF);
    OpenImages files(image.bytes());
    QCOMPARE(search(files, "1099907").addresses, QStringList{"東京都／後"});
    QCOMPARE(search(files, "1000100").addresses, QStringList{"東京都／前"});
}

void CodeSearchTest::sliceThatEndsBeforeItsStart()
{
    Image image = smallImage();
    image.level1 = level1Of(6, 5);
    QCOMPARE(countOf(image.bytes(), "1000001"), int{YDIC_NOT_READ});
    image.level1 = level1Of(12, 11);
    QCOMPARE(countOf(image.bytes(), "1000001"), int{YDIC_NOT_READ});
    image.level1 = level1Of(0xFFFF, 0); // as 16 bits, one byte
    QCOMPARE(countOf(image.bytes(), "1000001"), int{YDIC_NOT_READ});
}

void CodeSearchTest::sliceWithPartOfAnEntry()
{
    Image image = imageOf(record(5, stored(u"東")));
    for (uint32_t length : {7U, 11U}) {
        image.level1 = level1Of(0, length);
        image.sliceLimit = length + YDIC_LEVEL2_ENTRY + 1;
        QCOMPARE(countOf(image.bytes(), "1000005"), 1);
        QCOMPARE(countOf(image.bytes(), "1099999"), 0);
    }
    image.level1 = level1Of(0, 5);
    image.sliceLimit = 12;
    QCOMPARE(countOf(image.bytes(), "1000005"), 0);
}

void CodeSearchTest::chunkRange_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("count");
    QTest::newRow("greatest") << 5119 << 1;
    QTest::newRow("too great") << 5120 << int{YDIC_NOT_READ};
}

void CodeSearchTest::chunkRange()
{
    QFETCH(int, length);
    Bytes records = record(1, stored(u"長"));
    while (int(records.size()) + YDIC_CHUNK_HEADER + 3 < length)
        records += '\xE4';
    Image image;
    QCOMPARE(int(image.addChunk(10000, 0, records + record(5, stored(u"東")))), length);
    QTEST(countOf(image.bytes(), "1000005"), "count");
}

void CodeSearchTest::chunkOutsideOfRangeIsAFailure_data()
{
    QTest::addColumn<int>("entry");
    QTest::addColumn<uint32_t>("offset");
    QTest::newRow("range that ends before its start") << 2 << 0U;
    QTest::newRow("chunk that ends behind the range") << 1 << 0xFFFFFFU;
    QTest::newRow("chunk that ends before its start") << 1 << 5U;
    QTest::newRow("range that lies behind the file") << 0 << 0xFFFFF0U;
    QTest::newRow("range that is too long") << 2 << 0xFFFFFFU;
}

void CodeSearchTest::chunkOutsideOfRangeIsAFailure()
{
    QFETCH(int, entry);
    QFETCH(uint32_t, offset);
    Image image;
    image.addChunk(9000, 0, record(0, stored(u"前")));
    image.addChunk(10000, 5, record(5, stored(u"一")));
    image.addChunk(10000, 5, record(5, stored(u"二")));
    Bytes file = image.bytes();
    QCOMPARE(countOf(file, "1000005"), 2);
    const size_t at = Level2At + YDIC_LEVEL2_ENTRY * static_cast<size_t>(entry + 1) + 2;
    file.replace(at, 3, u24(offset));
    QCOMPARE(countOf(file, "1000005"), int{YDIC_NOT_READ});
}

void CodeSearchTest::chunkBeforeTheRangeIsAFailure()
{
    const Bytes level2 = u16(0) + u24(5) + u8(5) + u16(0) + u24(20) + u8(6);
    const auto *entriesAt = reinterpret_cast<const uint8_t *>(level2.data());
    const ydic_range chunks = {10, 20};
    const ydic_range entries = {0, YDIC_LEVEL2_ENTRY};
    const ydic_key key = {10, 0, 5};
    ydic_state state = {1, 0, 0};
    uint8_t found = 0;
    QCOMPARE(ydic_sch(nullptr, &chunks, &entries, &key, &state, nullptr, nullptr, entriesAt, nullptr, &found),
             int{YDIC_NOT_READ});
    QCOMPARE(int{found}, 0);
}

void CodeSearchTest::damageBehindResultsLeavesNone()
{
    const Answer answer = search(imageWithDamagedSecondChunk(), "1000005");
    QCOMPARE(answer.count, int{YDIC_NOT_READ});
    QVERIFY(answer.isEmpty);
}

void CodeSearchTest::offsetsDontWrap_data()
{
    QTest::addColumn<int>("field");
    QTest::newRow("base A") << int{YDIC_AT_BASE_A};
    QTest::newRow("base B") << int{YDIC_AT_BASE_B};
    QTest::newRow("level 1") << int{YDIC_AT_CODE_INDEX1};
}

void CodeSearchTest::offsetsDontWrap()
{
    QFETCH(int, field);
    // What stands before the base makes the sum of 32 bits come out at the section.
    Image image;
    image.addChunk(9000, 0, record(0, stored(u"前")));
    image.addChunk(10000, 5, record(5, stored(u"一")));
    const Bytes file = image.bytes();
    QCOMPARE(countOf(file, "1000005"), 1);
    QCOMPARE(countOf(withField(file, static_cast<size_t>(field), 0xFFFFFFFF), "1000005"), int{YDIC_NOT_READ});
    uint8_t byte = 0;
    OpenImages files(file);
    QVERIFY(ydic_readFrom(files.info()->dictFile, 0, 1, 1, &byte));
    QVERIFY(!ydic_readFrom(files.info()->dictFile, 0xFFFFFFFF, 1, 1, &byte));
    QVERIFY(!ydic_readFrom(files.info()->dictFile, 0xFFFFFF00, 0x101, 1, &byte));
}

QTEST_GUILESS_MAIN(CodeSearchTest)
#include "codesearchtest.moc"
