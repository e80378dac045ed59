#include "numberruns.h"
#include "writtendictionary.h"

#include <algorithm>
#include <QTest>

using namespace ZipDict;

namespace {

using Codes = std::vector<uint32_t>;
using Texts = std::vector<std::u16string>;

std::string firstError(const std::vector<Place> &places)
{
    const WrittenFile file = writeDictionary(1, places);
    return file.errors.empty() || !file.bytes.empty() ? std::string() : file.errors.front();
}

std::string errorsOf(const std::vector<Place> &places)
{
    std::string all;
    for (const std::string &error : writeDictionary(1, places).errors)
        all += error + "\n";
    return all;
}

size_t chunkCount(const std::vector<uint8_t> &bytes)
{
    return field(bytes, YDIC_AT_BASE_A + 4) / YDIC_LEVEL2_ENTRY - 1;
}

} // namespace

/** What a dictionary has no room for, and how its sections are cut. */
class DictionaryLimitsTest : public QObject
{
    Q_OBJECT
private slots:
    void lastChunkOfTheFileIsReadToItsEnd();
    void longAreaIsCutIntoReadableChunks();
    void tooManyPlacesOfACodeAreAnError();
    void tooManyAreasAreAnError();
    void tooLargeFileIsAnError();
    void unusablePlaceIsAnError_data();
    void unusablePlaceIsAnError();
    void runEndsAt255Codes();
    void runEndsWithItsPrefix();
    void runOfCancelledCodesIsNotWritten();
    void tooManyGapsAreAnError();
    void placesOutOfOrderAreAnError();
};

void DictionaryLimitsTest::lastChunkOfTheFileIsReadToItsEnd()
{
    WrittenDictionary dictionary({tokyo(1000001, u"港区", u"芝"), tokyo(9999999, u"港区", u"三田")});
    QCOMPARE(dictionary.addresses(9999999), (Texts{u"東京都／港区三田"}));
}

void DictionaryLimitsTest::longAreaIsCutIntoReadableChunks()
{
    std::vector<Place> places;
    for (uint32_t i = 0; i < 600; ++i) {
        std::u16string town(20, u'山');
        for (uint32_t bits = i, at = 0; at < 10; ++at, bits /= 2)
            town[at] = bits % 2 ? u'川' : u'谷';
        places.push_back(tokyo(1000001 + i / 7, u"港区", town));
    }
    WrittenDictionary dictionary(places);
    QVERIFY(chunkCount(dictionary.bytes()) >= 3);
    for (uint32_t i = 0; i < 600; i += 7) {
        Texts expected;
        for (uint32_t j = i; j < std::min(i + 7, 600U); ++j)
            expected.push_back(shownAddress(places[j]));
        QCOMPARE(dictionary.addresses(1000001 + i / 7), expected);
    }
    QCOMPARE(dictionary.codes(places.back().municipality + places.back().matched),
             (Codes{places.back().code}));
}

void DictionaryLimitsTest::tooManyPlacesOfACodeAreAnError()
{
    std::vector<Place> places;
    for (int i = 0; i < 200; ++i) {
        places.push_back(tokyo(15, u"港区", std::u16string(30, u"山川田"[i % 3])));
        places.back().matched.clear();
    }
    QVERIFY(firstError(places).find("0000015: too many places") != std::string::npos);
    places.resize(100);
    QCOMPARE(firstError(places), std::string());
}

void DictionaryLimitsTest::tooManyAreasAreAnError()
{
    std::vector<Place> places;
    for (uint32_t i = 0; i < 10923; ++i)
        places.push_back(tokyo(i * 100, u"港区"));
    QVERIFY(errorsOf(places).find("the code index is full") != std::string::npos);
    places.pop_back();
    QVERIFY(errorsOf(places).find("the code index is full") == std::string::npos);
}

void DictionaryLimitsTest::tooLargeFileIsAnError()
{
    std::vector<Place> places;
    std::string kanji; // too many for one-byte codes
    for (char row = 0x30; row < 0x4E; ++row) {
        for (char cell = 0x21; cell < 0x7F; ++cell)
            kanji.append(1, row).append(1, cell);
    }
    const std::u16string characters = fromJis(kanji);
    for (uint32_t i = 0; i < 230000; ++i) {
        places.push_back(tokyo(i, u"港区", std::u16string_view(characters).substr(i % 2000, 34)));
        places.back().isCodeOnly = true;
    }
    QVERIFY(errorsOf(places).find("the file is too large") != std::string::npos);
    QVERIFY(writeDictionary(1, places).bytes.empty());
}

void DictionaryLimitsTest::unusablePlaceIsAnError_data()
{
    QTest::addColumn<uint32_t>("code");
    QTest::addColumn<int>("prefecture");
    QTest::addColumn<QString>("municipality");
    QTest::addColumn<QString>("town");
    QTest::addColumn<QString>("error");
    QTest::newRow("good") << 1000001U << 13 << "港区"
                          << "芝"
                          << "";
    QTest::newRow("code") << 10000000U << 13 << "港区"
                          << "芝"
                          << "seven digits";
    QTest::newRow("no prefecture") << 1000001U << 0 << "港区"
                                   << "芝"
                                   << "prefecture";
    QTest::newRow("prefecture") << 1000001U << 48 << "港区"
                                << "芝"
                                << "prefecture";
    QTest::newRow("town") << 1000001U << 13 << "港区"
                          << "髙輪"
                          << "JIS X 0208";
    QTest::newRow("municipality") << 1000001U << 13 << "①区"
                                  << "芝"
                                  << "JIS X 0208";
    QTest::newRow("suffix") << 1000001U << 13 << "港"
                            << "芝"
                            << "ends in";
    QTest::newRow("one character") << 1000001U << 13 << "区"
                                   << "芝"
                                   << "ends in";
    QTest::newRow("no municipality") << 1000001U << 13 << ""
                                     << "芝"
                                     << "ends in";
    QTest::newRow("17 characters") << 1000001U << 13 << QString(16, u'山') + u'区' << "芝"
                                   << "";
    QTest::newRow("18 characters") << 1000001U << 13 << QString(17, u'山') + u'区' << "芝"
                                   << "ends in";
}

void DictionaryLimitsTest::unusablePlaceIsAnError()
{
    QFETCH(uint32_t, code);
    QFETCH(int, prefecture);
    QFETCH(QString, municipality);
    QFETCH(QString, town);
    QFETCH(QString, error);
    const Place place = {code,
                         static_cast<uint8_t>(prefecture),
                         municipality.toStdU16String(),
                         town.toStdU16String(),
                         town.toStdU16String(),
                         {},
                         false};
    const QString found = QString::fromStdString(firstError({place}));
    QCOMPARE(found.isEmpty(), error.isEmpty());
    QVERIFY2(found.contains(error), qPrintable(found));
}

void DictionaryLimitsTest::runEndsAt255Codes()
{
    std::vector<Place> places;
    for (uint32_t i = 0; i < 300; ++i)
        places.push_back(tokyo(1000001 + i, u"港区", u"芝"));
    WrittenDictionary dictionary(places);
    const std::vector<uint8_t> &bytes = dictionary.bytes();
    QCOMPARE(field(bytes, YDIC_AT_NUMBER_RUNS + 4), 8U);
    const uint8_t *runs = bytes.data() + field(bytes, YDIC_AT_NUMBER_RUNS);
    QCOMPARE(ydic_u24(runs), 1000001U);
    QCOMPARE(int(runs[3]), 255);
    QCOMPARE(ydic_u24(runs + 4), 1000256U);
    QCOMPARE(int(runs[7]), 45);
    QCOMPARE(dictionary.neighbour(1000255, YDIC_NEXT), int64_t{1000256});
    QCOMPARE(dictionary.neighbour(1000256, YDIC_PREVIOUS), int64_t{1000255});
}

void DictionaryLimitsTest::runEndsWithItsPrefix()
{
    WrittenDictionary dictionary({tokyo(1099999, u"港区", u"芝"), tokyo(1100000, u"港区", u"三田")});
    QCOMPARE(field(dictionary.bytes(), YDIC_AT_NUMBER_RUNS + 4), 8U);
    QCOMPARE(dictionary.neighbour(1099999, YDIC_NEXT), int64_t{1100000});
    QCOMPARE(dictionary.neighbour(1100000, YDIC_PREVIOUS), int64_t{1099999});
    QCOMPARE(dictionary.neighbour(1100000, YDIC_NEXT), int64_t{-1});
}

void DictionaryLimitsTest::runOfCancelledCodesIsNotWritten()
{
    const WrittenFile file = writeDictionary({2, true, 1, 0},
                                             {{tokyo(1000001, u"港区", u"芝"), true},
                                              {tokyo(1000002, u"港区", u"三田"), true},
                                              {tokyo(1000002, u"港区", u"白金"), false}},
                                             {});
    QCOMPARE(field(file.bytes, YDIC_AT_NUMBER_RUNS + 4), 4U);
    QCOMPARE(ydic_u24(file.bytes.data() + field(file.bytes, YDIC_AT_NUMBER_RUNS)), 1000002U);
}

void DictionaryLimitsTest::tooManyGapsAreAnError()
{
    Codes codes;
    for (uint32_t i = 0; i < 65535; ++i)
        codes.push_back(i * 2);
    QVERIFY(writeNumberRuns(codes).errors.empty());
    codes.push_back(9999999);
    QVERIFY(writeNumberRuns(codes).errors.front().find("too many gaps") != std::string::npos);
}

void DictionaryLimitsTest::placesOutOfOrderAreAnError()
{
    QVERIFY(firstError({tokyo(1000002, u"港区", u"芝"), tokyo(1000001, u"港区", u"三田")}).find("order") !=
            std::string::npos);
}

QTEST_GUILESS_MAIN(DictionaryLimitsTest)
#include "dictionarylimitstest.moc"
