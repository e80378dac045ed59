#include "codefixture.h"
#include "memoryfaults.h"
#include "ydiccode_p.h"

#include <QRandomGenerator>
#include <QTest>

#include <set>

using namespace codefixture;
using namespace imagebuilder;

namespace {

constexpr auto Level2At = size_t{YDIC_HEADER_LENGTH} + YDIC_ASK1JI_LENGTH + YDIC_LEVEL1_LENGTH;

/** What a step of the search answers. */
struct Near
{
    int result = 0;
    Bytes code{};
    bool isGuarded = false;
};

/** A file with its fields and number index. */
class OpenRuns
{
public:
    explicit OpenRuns(const Image &image)
        : m_files(image.bytes()),
          m_index(image.numberIndex.empty() ? image.numberIndexBytes() : image.numberIndex)
    {
        uint8_t scratch[YDIC_SCRATCH_LENGTH];
        m_isRead = header_Read(m_files.info()->dictFile, &m_fields, scratch) == 1;
    }

    Near near(uint32_t number, uint8_t direction)
    {
        return call([&](char *code) {
            return near_numberSch(static_cast<uint8_t>(number / 100000), number, code, direction, file(),
                                  &m_fields, index());
        });
    }

    Near bottom(uint8_t first2)
    {
        return call([&](char *code) { return bottom_numSch(first2, code, file(), &m_fields, index()); });
    }

    Near top(uint8_t first2)
    {
        return call([&](char *code) { return top_numSch(first2, code, file(), &m_fields, index()); });
    }

    void setRunsAt(uint32_t offset) { m_fields.numberRuns = offset; }
    [[nodiscard]] bool isRead() const { return m_isRead; }

private:
    template <typename Step> Near call(Step step)
    {
        ResultBuffer code(YDIC_CODE_LENGTH);
        const int result = step(code.data());
        return {result, result < 0 ? Bytes() : Bytes(code.data()), code.isGuarded()};
    }

    FILE *file() { return m_files.info()->dictFile; }
    const uint8_t *index() const { return reinterpret_cast<const uint8_t *>(m_index.data()); }

    OpenImages m_files;
    Bytes m_index;
    ydic_fields m_fields{};
    bool m_isRead = false;
};

/** Runs in several prefixes; 03 has only one, and 99 one of a single code. */
Image imageOfRuns()
{
    Image image;
    image.addRun(600, 3);     // 600 to 602
    image.addRun(610, 1);     // 610
    image.addRun(620, 1);     // 620
    image.addRun(630, 4);     // 630 to 633
    image.addRun(640, 1);     // 640
    image.addRun(100010, 1);  // prefix 01 begins with a run of one,
    image.addRun(100020, 2);  // and ends with one of two
    image.addRun(300050, 3);  // prefix 03 has this one alone
    image.addRun(9900000, 1); // and prefix 99 too
    return image;
}

/** Every code of a random table, and the table. */
std::set<uint32_t> addRandomRuns(Image &image, QRandomGenerator &random)
{
    std::set<uint32_t> codes;
    for (uint32_t prefix = 0; prefix < YDIC_PREFIXES; ++prefix) {
        uint32_t number = prefix * 100000 + random.bounded(30U);
        const bool mustHaveRun = prefix == YDIC_PREFIXES - 1;
        for (uint32_t run = mustHaveRun ? random.bounded(1U, 4U) : random.bounded(5U); run > 0; --run) {
            const auto length = static_cast<uint8_t>(random.bounded(1U, 5U));
            image.addRun(number, length);
            for (uint8_t i = 0; i < length; ++i)
                codes.insert(number++);
            number += random.bounded(1U, 4U);
        }
    }
    return codes;
}

Bytes textOfCode(uint32_t number)
{
    return QByteArray::number(number).rightJustified(7, '0').toStdString();
}

/** Codes 1000001, 1000003 and 1000004. */
Image dictionaryImage()
{
    Image image;
    image.addChunk(10000, 1,
                   stored(u"千代田区") + record(1, stored(u"一")) + record(3, stored(u"三")) +
                       record(4, stored(u"四")));
    image.addRun(1000001, 1);
    image.addRun(1000003, 2);
    image.addRun(9999999, 1);
    return image;
}

/** 1000002 is new, 1000003 is another place, 1000004 is gone. */
Image patchImage()
{
    Image patch{.type = YDIC_PATCH};
    patch.addChunk(10000, 2,
                   stored(u"千代田区") + record(2, stored(u"新二")) + record(3, stored(u"新三")) +
                       record(4, "\x6A" + stored(u"四")));
    return patch;
}

} // namespace

/** The neighbour of a code. */
class NearCodeTest : public QObject
{
    Q_OBJECT
private slots:
    void numberAsText_data();
    void numberAsText();

    void neighbour_data();
    void neighbour();
    void everyNeighbourOfRandomTables();
    void walkVisitsEveryCode();
    void prefixesOfTheEnds();
    void prefixWithoutRunsBehindAllEndsTheWalk();
    void damagedRuns_data();
    void damagedRuns();
    void runWithoutCodesIsNoNeighbour();
    void indexOfDamagedFileEndsTheWalk();
    void runsThatCantBeRead();

    void addressesOfTheNeighbour();
    void noNeighbourGivesNothing();
    void whatIsNoCodeIsRefused();
    void anyOtherDirectionIsPrevious();
    void maximumOfNoneTouchesNothing();
    void neighbourOfDictionaryMayBeReplacedByPatch();
    void neighbourOfDictionaryMayBeHiddenByPatch();
    void patchNamesNeighbourOfItsOwn();
    void patchNamesNeighbourOfTheDictionary();
    void patchSaysThereIsNone();
    void patchLeavesItToTheDictionary();
    void damagedPatchIsAFailure_data();
    void damagedPatchIsAFailure();

    void numberIndexSize_data();
    void numberIndexSize();
    void shortFile_data();
    void shortFile();
    void noMemory();
};

void NearCodeTest::numberAsText_data()
{
    QTest::addColumn<uint32_t>("number");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("lowest") << 0U << QByteArray("0000000");
    QTest::newRow("zeros in front") << 600001U << QByteArray("0600001");
    QTest::newRow("all digits") << 1234567U << QByteArray("1234567");
    QTest::newRow("highest") << 9999999U << QByteArray("9999999");
    QTest::newRow("what is too long loses its front") << 4294967295U << QByteArray("4967295");
}

void NearCodeTest::numberAsText()
{
    QFETCH(uint32_t, number);
    ResultBuffer buffer(YDIC_CODE_LENGTH);
    int2ascii(number, buffer.data());
    QTEST(QByteArray(buffer.data()), "text");
    QVERIFY(buffer.isGuarded());
}

void NearCodeTest::neighbour_data()
{
    QTest::addColumn<uint32_t>("number");
    QTest::addColumn<uint32_t>("next");     // 0: none
    QTest::addColumn<uint32_t>("previous"); // 0: none
    QTest::newRow("below all codes") << 0U << 600U << 0U;
    QTest::newRow("just below the first run") << 599U << 600U << 0U;
    QTest::newRow("lowest code") << 600U << 601U << 0U;
    QTest::newRow("inside the first run") << 601U << 602U << 600U;
    QTest::newRow("end of the first run") << 602U << 610U << 601U;
    QTest::newRow("gap behind the first run") << 603U << 610U << 602U;
    QTest::newRow("gap before a run") << 609U << 610U << 602U;
    QTest::newRow("run of one code") << 610U << 620U << 602U;
    QTest::newRow("gap in the middle") << 615U << 620U << 610U;
    QTest::newRow("second run of one code") << 620U << 630U << 610U;
    QTest::newRow("begin of a run in the middle") << 630U << 631U << 620U;
    QTest::newRow("inside a run in the middle") << 631U << 632U << 630U;
    QTest::newRow("end of a run in the middle") << 633U << 640U << 632U;
    QTest::newRow("gap before the last run") << 639U << 640U << 633U;
    QTest::newRow("last run, of one code") << 640U << 100010U << 633U;
    QTest::newRow("behind the last run of a prefix") << 641U << 100010U << 640U;
    QTest::newRow("end of a prefix") << 99999U << 100010U << 640U;
    QTest::newRow("below the first run of a prefix") << 100009U << 100010U << 640U;
    QTest::newRow("first run, of one code") << 100010U << 100020U << 640U;
    QTest::newRow("begin of the last run") << 100020U << 100021U << 100010U;
    QTest::newRow("end of the last run") << 100021U << 300050U << 100020U;
    QTest::newRow("behind the last run") << 100022U << 300050U << 100021U;
    QTest::newRow("prefix without runs") << 200000U << 300050U << 100021U;
    QTest::newRow("below the only run of a prefix") << 300049U << 300050U << 100021U;
    QTest::newRow("begin of the only run") << 300050U << 300051U << 100021U;
    QTest::newRow("inside the only run") << 300051U << 300052U << 300050U;
    QTest::newRow("end of the only run") << 300052U << 9900000U << 300051U;
    QTest::newRow("behind the only run") << 300053U << 9900000U << 300052U;
    QTest::newRow("below the highest code") << 9899999U << 9900000U << 300052U;
    QTest::newRow("highest code") << 9900000U << 0U << 300052U;
    QTest::newRow("above the last run") << 9900001U << 0U << 9900000U;
    QTest::newRow("above all codes") << 9999999U << 0U << 9900000U;
}

void NearCodeTest::neighbour()
{
    QFETCH(uint32_t, number);
    OpenRuns runs(imageOfRuns());
    QVERIFY(runs.isRead());
    QFETCH(uint32_t, next);
    QFETCH(uint32_t, previous);
    for (const auto &[direction, expected] :
         {std::pair(YDIC_NEXT, next), std::pair(YDIC_PREVIOUS, previous)}) {
        const Near near = runs.near(number, static_cast<uint8_t>(direction));
        QCOMPARE(near.code, expected == 0 ? Bytes() : textOfCode(expected));
        QCOMPARE(near.result, expected == 0 ? int{YDIC_NEAR_NONE} : int{YDIC_NEAR_FOUND});
        QVERIFY(near.isGuarded);
    }
}

void NearCodeTest::everyNeighbourOfRandomTables()
{
    QRandomGenerator random(5);
    for (int table = 0; table < 10; ++table) {
        Image image;
        const std::set<uint32_t> codes = addRandomRuns(image, random);
        OpenRuns runs(image);
        for (uint32_t prefix = 0; prefix < YDIC_PREFIXES; ++prefix) {
            for (uint32_t number = prefix * 100000; number < prefix * 100000 + 60; ++number) {
                const auto above = codes.upper_bound(number);
                const auto lower = codes.lower_bound(number);
                QCOMPARE(runs.near(number, YDIC_NEXT).code,
                         above == codes.end() ? Bytes() : textOfCode(*above));
                QCOMPARE(runs.near(number, YDIC_PREVIOUS).code,
                         lower == codes.begin() ? Bytes() : textOfCode(*std::prev(lower)));
            }
        }
    }
}

void NearCodeTest::walkVisitsEveryCode()
{
    QRandomGenerator random(7);
    Image image;
    const std::set<uint32_t> codes = addRandomRuns(image, random);
    OpenRuns runs(image);
    uint32_t number = *codes.begin();
    for (auto code = std::next(codes.begin()); code != codes.end(); ++code) {
        number = static_cast<uint32_t>(std::stoul(runs.near(number, YDIC_NEXT).code));
        QCOMPARE(number, *code);
    }
    QCOMPARE(runs.near(number, YDIC_NEXT).result, int{YDIC_NEAR_NONE});
    for (auto code = std::next(codes.rbegin()); code != codes.rend(); ++code) {
        number = static_cast<uint32_t>(std::stoul(runs.near(number, YDIC_PREVIOUS).code));
        QCOMPARE(number, *code);
    }
    QCOMPARE(runs.near(number, YDIC_PREVIOUS).result, int{YDIC_NEAR_NONE});
}

void NearCodeTest::prefixesOfTheEnds()
{
    OpenRuns runs(imageOfRuns());
    QCOMPARE(runs.bottom(0).result, int{YDIC_NEAR_NONE});
    QCOMPARE(runs.bottom(0).code, Bytes());
    QCOMPARE(runs.bottom(1).code, Bytes("0000640"));
    QCOMPARE(runs.bottom(99).code, Bytes("0300052"));
    QCOMPARE(runs.top(99).result, int{YDIC_NEAR_NONE});
    QCOMPARE(runs.top(99).code, Bytes());
    QCOMPARE(runs.top(98).code, Bytes("9900000"));
    QCOMPARE(runs.top(1).code, Bytes("0300050"));
    // Nothing lies before 00, whatever the index says.
    Image damaged = imageOfRuns();
    damaged.numberIndex = damaged.numberIndexBytes().replace(0, 2, u16(3));
    QCOMPARE(OpenRuns(damaged).bottom(0).result, int{YDIC_NEAR_NONE});
}

void NearCodeTest::prefixWithoutRunsBehindAllEndsTheWalk()
{
    Image image;
    image.addRun(5000000, 2);
    OpenRuns runs(image);
    for (uint32_t number : {5100000U, 9900000U}) {
        for (uint8_t direction : {YDIC_NEXT, YDIC_PREVIOUS}) {
            const Near near = runs.near(number, direction);
            QCOMPARE(near.result, int{YDIC_NEAR_NONE});
            QCOMPARE(near.code, Bytes());
        }
    }
    QCOMPARE(runs.top(98).result, int{YDIC_NEAR_NONE});
    QCOMPARE(runs.near(5000001, YDIC_NEXT).result, int{YDIC_NEAR_NONE});     // the run behind the last
    QCOMPARE(runs.near(5000000, YDIC_PREVIOUS).result, int{YDIC_NEAR_NONE}); // the run before the first
    QCOMPARE(runs.bottom(50).result, int{YDIC_NEAR_NONE});
    QCOMPARE(runs.near(4900000, YDIC_PREVIOUS).result, int{YDIC_NEAR_NONE});
}

void NearCodeTest::damagedRuns_data()
{
    QTest::addColumn<uint32_t>("first");
    QTest::addColumn<int>("length");
    QTest::addColumn<uint32_t>("number");
    QTest::addColumn<int>("direction");
    QTest::addColumn<int>("result");
    QTest::newRow("begins above all codes") << 10000000U << 1 << 1U << int{YDIC_NEXT} << -1;
    QTest::newRow("greatest begin") << 0xFFFFFFU << 255 << 1U << int{YDIC_NEXT} << -1;
    QTest::newRow("ends above all codes") << 9999990U << 255 << 9999999U << int{YDIC_NEXT} << -1;
    QTest::newRow("begins with no code") << 0U << 0 << 1U << int{YDIC_PREVIOUS} << -1;
    QTest::newRow("has no code, next") << 5U << 0 << 5U << int{YDIC_NEXT} << int{YDIC_NEAR_NONE};
    QTest::newRow("has no code, previous") << 5U << 0 << 5U << int{YDIC_PREVIOUS} << int{YDIC_NEAR_NONE};
}

void NearCodeTest::damagedRuns()
{
    QFETCH(uint32_t, first);
    QFETCH(int, length);
    QFETCH(uint32_t, number);
    QFETCH(int, direction);
    Image image;
    image.addRun(first, static_cast<uint8_t>(length));
    ydic_fields fields{};
    uint8_t scratch[YDIC_SCRATCH_LENGTH];
    OpenImages files(image.bytes());
    QCOMPARE(header_Read(files.info()->dictFile, &fields, scratch), 1);
    // The number's prefix has this run, whatever it begins with.
    Bytes index;
    for (uint32_t prefix = 0; prefix <= YDIC_PREFIXES; ++prefix)
        index += u16(prefix > number / 100000 ? 1 : 0);
    ResultBuffer near(YDIC_CODE_LENGTH);
    QTEST(near_numberSch(static_cast<uint8_t>(number / 100000), number, near.data(),
                         static_cast<uint8_t>(direction), files.info()->dictFile, &fields,
                         reinterpret_cast<const uint8_t *>(index.data())),
          "result");
    QCOMPARE(*near.data(), '\0');
    QVERIFY(near.isGuarded());
}

void NearCodeTest::runWithoutCodesIsNoNeighbour()
{
    Image image;
    for (const auto &[first, length] : {std::pair(600U, 1), {700U, 0}, {800U, 1}, {900U, 1}})
        image.addRun(first, static_cast<uint8_t>(length));
    OpenRuns runs(image);
    QCOMPARE(runs.near(700, YDIC_PREVIOUS).code, Bytes("0000600"));
    QCOMPARE(runs.near(700, YDIC_NEXT).code, Bytes("0000800"));
}

void NearCodeTest::indexOfDamagedFileEndsTheWalk()
{
    // Every entry is wrong in its own way: the walk ends, and reads no run that isn't there.
    QRandomGenerator random(11);
    for (int round = 0; round < 300; ++round) {
        Image image = imageOfRuns();
        for (uint32_t prefix = 0; prefix <= YDIC_PREFIXES; ++prefix)
            image.numberIndex += u16(random.bounded(round % 2 == 0 ? 0x10000U : 12U));
        OpenImages files(image.bytes());
        for (const char *code : {"0000601", "0300051", "0200000", "9900000", "9999999"}) {
            for (uint8_t direction : {YDIC_NEXT, YDIC_PREVIOUS}) {
                const Answer answer = searchNear(files, code, direction);
                QVERIFY(answer.count == 0 || answer.count == YDIC_NOT_READ);
                QVERIFY(answer.near.size() == 7 || answer.near.empty());
                QVERIFY(answer.isGuarded);
            }
        }
    }
}

void NearCodeTest::runsThatCantBeRead()
{
    OpenRuns runs(imageOfRuns());
    runs.setRunsAt(100000);
    for (uint32_t number : {0U, 601U, 620U, 99999U, 9900000U}) {
        QCOMPARE(runs.near(number, YDIC_NEXT).result, -1);
        QCOMPARE(runs.near(number, YDIC_PREVIOUS).result, -1);
    }
    QCOMPARE(runs.top(1).result, -1);
    QCOMPARE(runs.bottom(1).result, -1);
    runs.setRunsAt(0xFFFFFFFD); // plus that of the second run: the header
    QCOMPARE(runs.near(641, YDIC_PREVIOUS).result, -1);
    QCOMPARE(runs.top(0).result, -1);
}

void NearCodeTest::addressesOfTheNeighbour()
{
    OpenImages files(dictionaryImage().bytes());
    Answer answer = searchNear(files, "100-0001", YDIC_NEXT);
    QCOMPARE(answer.near, Bytes("1000003"));
    QCOMPARE(answer.addresses, QStringList{"東京都／千代田区三"});
    answer = searchNear(files, "1000002", YDIC_PREVIOUS);
    QCOMPARE(answer.near, Bytes("1000001"));
    QCOMPARE(answer.addresses, QStringList{"東京都／千代田区一"});
    QVERIFY(answer.isGuarded);
}

void NearCodeTest::noNeighbourGivesNothing()
{
    OpenImages files(dictionaryImage().bytes());
    for (const auto &[code, direction] :
         {std::pair("9999999", YDIC_NEXT), std::pair("1000001", YDIC_PREVIOUS)}) {
        const Answer answer = searchNear(files, code, static_cast<uint8_t>(direction));
        QCOMPARE(answer.count, 0);
        QCOMPARE(answer.near, Bytes());
        QVERIFY(answer.isEmpty && answer.isGuarded);
    }
}

void NearCodeTest::whatIsNoCodeIsRefused()
{
    OpenImages files(dictionaryImage().bytes());
    const Answer answer = searchNear(files, "100000", YDIC_NEXT);
    QCOMPARE(answer.count, int{YDIC_BAD_INPUT});
    QCOMPARE(answer.near, Bytes());
    QVERIFY(answer.isEmpty);
}

void NearCodeTest::anyOtherDirectionIsPrevious()
{
    OpenImages files(dictionaryImage().bytes(), Image{.type = YDIC_PATCH}.bytes());
    QCOMPARE(searchNear(files, "1000003", 255).near, Bytes("1000001"));
}

void NearCodeTest::maximumOfNoneTouchesNothing()
{
    OpenImages files(dictionaryImage().bytes());
    const Answer answer = searchNear(files, "1000001", YDIC_NEXT, 0);
    QCOMPARE(answer.count, 0);
    QCOMPARE(answer.near, Bytes("1000003"));
    QVERIFY(answer.isGuarded);
}

void NearCodeTest::neighbourOfDictionaryMayBeReplacedByPatch()
{
    OpenImages files(dictionaryImage().bytes(), patchImage().bytes());
    const Answer answer = searchNear(files, "1000001", YDIC_NEXT);
    QCOMPARE(answer.near, Bytes("1000003"));
    QCOMPARE(answer.addresses, QStringList{"東京都／千代田区新三"});
}

void NearCodeTest::neighbourOfDictionaryMayBeHiddenByPatch()
{
    OpenImages files(dictionaryImage().bytes(), patchImage().bytes());
    const Answer answer = searchNear(files, "1000003", YDIC_NEXT);
    QCOMPARE(answer.near, Bytes("1000004"));
    QCOMPARE(answer.count, 0);
    QVERIFY(answer.isEmpty);
}

void NearCodeTest::patchNamesNeighbourOfItsOwn()
{
    Image patch = patchImage();
    patch.addChange(1000001, 0);
    patch.addChange(1000002, 1);
    patch.addChange(1000003, 0);
    OpenImages files(dictionaryImage().bytes(), patch.bytes());
    const Answer answer = searchNear(files, "1000001", YDIC_NEXT);
    QCOMPARE(answer.near, Bytes("1000002"));
    QCOMPARE(answer.addresses, QStringList{"東京都／千代田区新二"});
}

void NearCodeTest::patchNamesNeighbourOfTheDictionary()
{
    // The patch has no record of it, or one that shows nothing: the dictionary's is shown.
    Image patch = patchImage();
    patch.addChange(1000001, 0);
    patch.addChange(1000002, 1);
    patch.addChange(1000003, 2);
    patch.addChange(1000004, 0);
    OpenImages files(dictionaryImage().bytes(), patch.bytes());
    Answer answer = searchNear(files, "1000002", YDIC_NEXT);
    QCOMPARE(answer.near, Bytes("1000004"));
    QCOMPARE(answer.addresses, QStringList{"東京都／千代田区四"});
    answer = searchNear(files, "1000002", YDIC_PREVIOUS);
    QCOMPARE(answer.near, Bytes("1000001"));
    QCOMPARE(answer.addresses, QStringList{"東京都／千代田区一"});
}

void NearCodeTest::patchSaysThereIsNone()
{
    Image patch = patchImage();
    patch.addChange(1000003, 2);
    OpenImages files(dictionaryImage().bytes(), patch.bytes());
    const Answer answer = searchNear(files, "1000003", YDIC_NEXT);
    QCOMPARE(answer.count, 0);
    QCOMPARE(answer.near, Bytes());
    QVERIFY(answer.isEmpty);
}

void NearCodeTest::patchLeavesItToTheDictionary()
{
    Image patch = patchImage();
    patch.addChange(1000001, 0);
    patch.addChange(1000004, 0);
    OpenImages files(dictionaryImage().bytes(), patch.bytes());
    QCOMPARE(searchNear(files, "1000001", YDIC_NEXT).near, Bytes("1000003"));
}

void NearCodeTest::damagedPatchIsAFailure_data()
{
    QTest::addColumn<QByteArray>("patch");
    Image image = patchImage();
    image.addChange(1000001, 0);
    image.addChange(1000002, 1);
    const Bytes patch = image.bytes();
    QTest::newRow("header") << QByteArray::fromStdString(patch.substr(0, 127));
    QTest::newRow("changes") << QByteArray::fromStdString(
        Bytes(patch).replace(YDIC_AT_CHANGES, 4, u32(100000)));
    QTest::newRow("addresses") << QByteArray::fromStdString(
        Bytes(patch).replace(YDIC_AT_BASE_B, 4, u32(100000)));
}

void NearCodeTest::damagedPatchIsAFailure()
{
    QFETCH(QByteArray, patch);
    OpenImages files(dictionaryImage().bytes(), patch.toStdString());
    const Answer answer = searchNear(files, "1000001", YDIC_NEXT);
    QCOMPARE(answer.count, int{YDIC_NOT_READ});
    QVERIFY(answer.isEmpty);
}

void NearCodeTest::numberIndexSize_data()
{
    QTest::addColumn<uint32_t>("size");
    QTest::addColumn<int>("count");
    QTest::newRow("none") << 0U << int{YDIC_NOT_READ};
    QTest::newRow("an entry too few") << 200U << int{YDIC_NOT_READ};
    QTest::newRow("a byte too few") << 201U << int{YDIC_NOT_READ};
    QTest::newRow("all entries") << 202U << 1;
    QTest::newRow("longer than the file") << 0xFFFFFFU << int{YDIC_NOT_READ};
    QTest::newRow("longer than any file") << 0x1000000U << int{YDIC_NOT_READ};
    QTest::newRow("greatest") << 0xFFFFFFFFU << int{YDIC_NOT_READ};
}

void NearCodeTest::numberIndexSize()
{
    QFETCH(uint32_t, size);
    OpenImages files(dictionaryImage().bytes().replace(YDIC_AT_NUMBER_INDEX + 4, 4, u32(size)));
    memoryfaults::reset();
    QTEST(searchNear(files, "1000001", YDIC_NEXT).count, "count");
    QVERIFY(memoryfaults::peak < 0x1010000);
    QVERIFY(size <= 0xFFFFFF || memoryfaults::peak < 1000);
}

void NearCodeTest::shortFile_data()
{
    QTest::addColumn<int>("length");
    const auto image = dictionaryImage();
    const auto index = int(Level2At + image.chunkDistance + image.chunks.size());
    QTest::newRow("header") << int{YDIC_HEADER_LENGTH} - 1;
    QTest::newRow("number index") << index + 201;
    QTest::newRow("first run") << index + 202 + 3;
    QTest::newRow("second run") << index + 202 + 7;
}

void NearCodeTest::shortFile()
{
    QFETCH(int, length);
    const Bytes file = dictionaryImage().bytes();
    OpenImages files(file.substr(0, static_cast<size_t>(length)));
    const Answer answer = searchNear(files, "1000001", YDIC_NEXT);
    QCOMPARE(answer.count, int{YDIC_NOT_READ});
    QCOMPARE(answer.near, Bytes());
    QVERIFY(answer.isEmpty);
}

void NearCodeTest::noMemory()
{
    OpenImages files(dictionaryImage().bytes());
    ResultBuffer result(bufferLength(1));
    ResultBuffer near(YDIC_CODE_LENGTH);
    constexpr int Allocations = 6; // the header, the number index, and those of the search
    for (int allowed = 0; allowed <= Allocations; ++allowed) {
        *result.data() = Guard;
        memoryfaults::reset(allowed);
        const int count = Zip2AdrSearchNP("1000001", 1, YDIC_NEXT, near.data(), result.data(), files.info());
        const int left = memoryfaults::blocks;
        memoryfaults::reset();
        QCOMPARE(count, allowed < Allocations ? int{YDIC_NO_MEMORY} : 1);
        QCOMPARE(left, 0);
        QCOMPARE(*result.data() == '\0', allowed < Allocations);
    }
}

QTEST_GUILESS_MAIN(NearCodeTest)
#include "nearcodetest.moc"
