#include "records.h"
#include "writtendictionary.h"
#include "ydicbytes_p.h"

#include <algorithm>
#include <QRandomGenerator>
#include <QTest>
#include <set>

using namespace ZipDict;

namespace {

constexpr uint8_t Ishikawa = 17;
constexpr uint8_t Aichi = 23;
constexpr uint8_t Mie = 24;

using Codes = std::vector<uint32_t>;
using Texts = std::vector<std::u16string>;

} // namespace

/** Dictionaries as they are written, read with the searches. */
class DictionaryWriterTest : public QObject
{
    Q_OBJECT
private slots:
    void placeIsFoundBothWays();
    void wholeAreaIsFoundBothWays();
    void codeOfHundredWithTownIsFoundBothWays();
    void codeOfHundredThatAnyAddressMeansIsFound();
    void shownTextNeedNotBeMatched();
    void placesOfACodeKeepTheirOrder();
    void codeOfSeveralMunicipalitiesShowsAll();
    void municipalitiesMayAlternate();
    void placeOfAnotherPrefectureIsFoundBothWays();
    void wholeAreaOfAnotherPrefectureIsFoundBothWays();
    void prefectureOfMostCodesIsThatOfThePrefix();
    void businessIsFoundByItsCodeOnly();
    void aliasLeadsToTheCodeAndIsNotShown();
    void aliasOfHundredAndOfAnotherPrefecture();
    void manyPlacesOfACodeLeaveRoomForOthers();
    void longAddressIsCutToAResult();
    void headerTellsTheFile();
    void patchHeaderTellsTheEditions();
    void commonCharactersTakeOneByte();
    void emptyDictionaryHasNothing();
    void changeTableIsWritten();
    void cancelledPlacesAreGone_data();
    void cancelledPlacesAreGone();
    void sameInputGivesTheSameBytes();
    void randomPlacesAreFound_data();
    void randomPlacesAreFound();
};

void DictionaryWriterTest::placeIsFoundBothWays()
{
    WrittenDictionary dictionary({tokyo(1000001, u"千代田区", u"千代田")});
    QCOMPARE(dictionary.addresses(1000001), (Texts{u"東京都／千代田区千代田"}));
    QCOMPARE(dictionary.addresses(1000002), Texts());
    QCOMPARE(dictionary.codes(u"東京都千代田区千代田"), (Codes{1000001}));
    QCOMPARE(dictionary.codes(u"千代田区千代田１−１"), (Codes{1000001}));
    QCOMPARE(dictionary.codes(u"千代田区丸の内"), Codes());
}

void DictionaryWriterTest::wholeAreaIsFoundBothWays()
{
    WrittenDictionary dictionary(
        {tokyo(1000000, u"千代田区"), tokyo(1000001, u"千代田区", u"千代田"), tokyo(1001211, u"新島村")});
    QCOMPARE(dictionary.addresses(1000000), (Texts{u"東京都／千代田区"}));
    QCOMPARE(dictionary.addresses(1001211), (Texts{u"東京都／新島村"}));
    QCOMPARE(dictionary.codes(u"千代田区"), (Codes{1000000}));
    QCOMPARE(dictionary.codes(u"千代田区大手町"), (Codes{1000000}));
    QCOMPARE(dictionary.codes(u"千代田区千代田"), (Codes{1000001}));
    QCOMPARE(dictionary.codes(u"新島村式根島"), (Codes{1001211}));
}

void DictionaryWriterTest::codeOfHundredWithTownIsFoundBothWays()
{
    WrittenDictionary dictionary(
        {tokyo(1000100, u"西多摩郡檜原村", u"本宿"), tokyo(1000101, u"大島町", u"元町")});
    QCOMPARE(dictionary.addresses(1000100), (Texts{u"東京都／西多摩郡檜原村本宿"}));
    QCOMPARE(dictionary.codes(u"東京都西多摩郡檜原村本宿"), (Codes{1000100}));
    QCOMPARE(dictionary.codes(u"桧原村本宿"), (Codes{1000100}));
    QCOMPARE(dictionary.codes(u"西多摩郡檜原村"), Codes());
}

void DictionaryWriterTest::codeOfHundredThatAnyAddressMeansIsFound()
{
    Place place = tokyo(1000100, u"大島町", u"１番地");
    place.matched.clear();
    WrittenDictionary dictionary({place});
    QCOMPARE(dictionary.addresses(1000100), (Texts{u"東京都／大島町１番地"}));
    QCOMPARE(dictionary.codes(u"大島町元町"), (Codes{1000100}));
}

void DictionaryWriterTest::shownTextNeedNotBeMatched()
{
    Place tower = tokyo(1006229, u"千代田区", u"丸の内（２９階）");
    tower.matched = u"丸の内";
    Place block = tokyo(1006230, u"小金井市", u"１番地");
    block.matched.clear();
    WrittenDictionary dictionary({tower, block});
    QCOMPARE(dictionary.addresses(1006229), (Texts{u"東京都／千代田区丸の内（２９階）"}));
    QCOMPARE(dictionary.codes(u"千代田区丸の内"), (Codes{1006229}));
    QCOMPARE(dictionary.codes(u"小金井市本町"), (Codes{1006230}));
}

void DictionaryWriterTest::placesOfACodeKeepTheirOrder()
{
    WrittenDictionary dictionary({tokyo(1000011, u"港区", u"芝"), tokyo(1000011, u"港区", u"麻布"),
                                  tokyo(1000011, u"港区", u"三田"), tokyo(1000012, u"港区", u"白金")});
    QCOMPARE(dictionary.addresses(1000011),
             (Texts{u"東京都／港区芝", u"東京都／港区麻布", u"東京都／港区三田"}));
    QCOMPARE(dictionary.addresses(1000012), (Texts{u"東京都／港区白金"}));
}

void DictionaryWriterTest::codeOfSeveralMunicipalitiesShowsAll()
{
    WrittenDictionary dictionary({tokyo(1000009, u"港区", u"芝"), tokyo(1000011, u"港区", u"麻布"),
                                  tokyo(1000011, u"品川区", u"大崎"), tokyo(1000011, u"港区", u"三田"),
                                  tokyo(1000012, u"港区", u"白金"), tokyo(1000013, u"品川区", u"大井")});
    QCOMPARE(dictionary.addresses(1000009), (Texts{u"東京都／港区芝"}));
    QCOMPARE(dictionary.addresses(1000011),
             (Texts{u"東京都／港区麻布", u"東京都／品川区大崎", u"東京都／港区三田"}));
    QCOMPARE(dictionary.addresses(1000012), (Texts{u"東京都／港区白金"}));
    QCOMPARE(dictionary.addresses(1000013), (Texts{u"東京都／品川区大井"}));
    QCOMPARE(dictionary.codes(u"品川区大崎"), (Codes{1000011}));
    QCOMPARE(dictionary.codes(u"港区三田"), (Codes{1000011}));
}

void DictionaryWriterTest::municipalitiesMayAlternate()
{
    std::vector<Place> places;
    for (uint32_t i = 1; i < 20; ++i)
        places.push_back(tokyo(1000000 + i, i % 2 ? u"港区" : u"品川区", u"町" + std::u16string(i, u'山')));
    WrittenDictionary dictionary(places);
    for (const Place &place : places)
        QCOMPARE(dictionary.addresses(place.code), (Texts{shownAddress(place)}));
}

void DictionaryWriterTest::placeOfAnotherPrefectureIsFoundBothWays()
{
    const Place nagashima = {4980801, Mie, u"桑名郡木曽岬町", u"加路戸", u"加路戸", {}, false};
    WrittenDictionary dictionary({{4980001, Aichi, u"弥富市", u"佐古木", u"佐古木", {}, false},
                                  {4980002, Aichi, u"弥富市", u"鯏浦町", u"鯏浦町", {}, false},
                                  nagashima});
    QCOMPARE(dictionary.addresses(4980801), (Texts{u"三重県／桑名郡木曽岬町加路戸"}));
    QCOMPARE(dictionary.addresses(4980001), (Texts{u"愛知県／弥富市佐古木"}));
    QCOMPARE(dictionary.codes(u"三重県桑名郡木曽岬町加路戸"), (Codes{4980801}));
    QCOMPARE(dictionary.codes(u"木曽岬町加路戸３５"), (Codes{4980801}));
    QCOMPARE(dictionary.codes(u"愛知県桑名郡木曽岬町加路戸"), Codes());
}

void DictionaryWriterTest::wholeAreaOfAnotherPrefectureIsFoundBothWays()
{
    WrittenDictionary dictionary({{4980001, Aichi, u"弥富市", u"佐古木", u"佐古木", {}, false},
                                  {4980002, Aichi, u"弥富市", u"鯏浦町", u"鯏浦町", {}, false},
                                  {4980800, Mie, u"桑名郡木曽岬町", u"", u"", {}, false}});
    QCOMPARE(dictionary.addresses(4980800), (Texts{u"三重県／桑名郡木曽岬町"}));
    QCOMPARE(dictionary.codes(u"三重県桑名郡木曽岬町"), (Codes{4980800}));
}

void DictionaryWriterTest::prefectureOfMostCodesIsThatOfThePrefix()
{
    const WrittenDictionary dictionary({{4980001, Mie, u"津市", u"", u"", {}, false},
                                        {4980001, Mie, u"津市", u"栄町", u"栄町", {}, false},
                                        {4980001, Mie, u"津市", u"丸之内", u"丸之内", {}, false},
                                        {4980002, Aichi, u"弥富市", u"", u"", {}, false},
                                        {4980003, Aichi, u"弥富市", u"鯏浦町", u"鯏浦町", {}, false}});
    const size_t level1 = field(dictionary.bytes(), YDIC_AT_CODE_INDEX1);
    QCOMPARE(int(dictionary.bytes()[level1 + 49 * YDIC_LEVEL1_ENTRY]), int(Aichi));
}

void DictionaryWriterTest::businessIsFoundByItsCodeOnly()
{
    Place business = tokyo(1008111, u"千代田区", u"千代田１−１　宮内庁");
    business.isCodeOnly = true;
    business.matched.clear();
    WrittenDictionary dictionary({tokyo(1000001, u"千代田区", u"千代田"), business});
    QCOMPARE(dictionary.addresses(1008111), (Texts{fromJis(*toJis(u"東京都／千代田区千代田１−１　宮内庁"))}));
    QCOMPARE(dictionary.codes(u"千代田区千代田１−１　宮内庁"), (Codes{1000001}));
    QCOMPARE(dictionary.codes(u"千代田区"), Codes());
}

void DictionaryWriterTest::aliasLeadsToTheCodeAndIsNotShown()
{
    Place place = tokyo(1000003, u"千代田区", u"一ツ橋（１丁目）");
    place.matched = u"一ツ橋";
    place.aliases = {u"一ツ橋１丁目", u"神田一ツ橋"};
    Place other = tokyo(1010003, u"千代田区", u"一ツ橋（２丁目）");
    other.matched = u"一ツ橋";
    other.aliases = {u"一ツ橋２丁目"};
    WrittenDictionary dictionary({place, other});
    QCOMPARE(dictionary.addresses(1000003), (Texts{u"東京都／千代田区一ツ橋（１丁目）"}));
    QCOMPARE(dictionary.codes(u"千代田区一ツ橋"), (Codes{1000003, 1010003}));
    QCOMPARE(dictionary.codes(u"千代田区一ツ橋２丁目"), (Codes{1010003}));
    QCOMPARE(dictionary.codes(u"千代田区一ッ橋一丁目"), (Codes{1000003}));
    QCOMPARE(dictionary.codes(u"千代田区神田一ツ橋"), (Codes{1000003}));
}

void DictionaryWriterTest::aliasOfHundredAndOfAnotherPrefecture()
{
    Place hundred = tokyo(1000100, u"大島町");
    hundred.aliases = {u"元町"};
    Place foreign = {1000101, Mie, u"津市", u"栄町", u"栄町", {u"丸之内"}, false};
    WrittenDictionary dictionary({hundred, foreign, tokyo(1000102, u"大島町", u"岡田")});
    QCOMPARE(dictionary.addresses(1000100), (Texts{u"東京都／大島町"}));
    QCOMPARE(dictionary.addresses(1000101), (Texts{u"三重県／津市栄町"}));
    QCOMPARE(dictionary.codes(u"大島町元町"), (Codes{1000100}));
    QCOMPARE(dictionary.codes(u"大島町岡田"), (Codes{1000102}));
    QCOMPARE(dictionary.codes(u"津市丸之内"), (Codes{1000101}));
}

/* More than a search has candidates. */
void DictionaryWriterTest::manyPlacesOfACodeLeaveRoomForOthers()
{
    std::vector<Place> places;
    for (uint32_t i = 0; i < 120; ++i) {
        places.push_back(
            tokyo(1000001, u"港区", u"芝（" + std::u16string(1 + i % 20, u"山川田"[i % 3]) + u"）"));
        places.back().matched = u"芝";
    }
    places.push_back(tokyo(1000002, u"港区", u"芝"));
    WrittenDictionary dictionary(places);
    QCOMPARE(dictionary.codes(u"港区芝"), (Codes{1000001, 1000002}));
    QCOMPARE(dictionary.addresses(1000001).size(), size_t{60});
}

void DictionaryWriterTest::longAddressIsCutToAResult()
{
    const std::u16string town(50, u'山');
    WrittenDictionary dictionary({tokyo(1000001, u"千代田区", town)});
    const Texts addresses = dictionary.addresses(1000001);
    QCOMPARE(addresses, (Texts{u"東京都／千代田区" + std::u16string(32, u'山')}));
    QCOMPARE(addresses.front(), shownAddress(tokyo(1000001, u"千代田区", town)));
    Place place = tokyo(1000001, u"千代田区", town);
    place.matched.clear();
    Place cut = place;
    cut.town.resize(32);
    QCOMPARE(writeDictionary(1, {place}).bytes, writeDictionary(1, {cut}).bytes);
}

void DictionaryWriterTest::headerTellsTheFile()
{
    const std::vector<uint8_t> bytes = writeDictionary(7, {tokyo(1000001, u"千代田区", u"千代田")}).bytes;
    QCOMPARE(ydic_u32(bytes.data()), 0xFF002802U);
    QCOMPARE(int(bytes[YDIC_AT_EDITION]), 7);
    QCOMPARE(size_t{field(bytes, YDIC_AT_FILE_SIZE)}, bytes.size());
    QCOMPARE(field(bytes, YDIC_AT_CODE_INDEX1 + 4), 303U);
    QCOMPARE(field(bytes, YDIC_AT_BASE_A + 4), 12U); // a chunk, and the entry that ends it
    QCOMPARE(field(bytes, YDIC_AT_NUMBER_INDEX + 4), 202U);
    QCOMPARE(field(bytes, YDIC_AT_NUMBER_RUNS + 4), 4U);
    QCOMPARE(field(bytes, YDIC_AT_CHANGES + 4), 0U);
    QCOMPARE(field(bytes, YDIC_AT_ADDRESS_INDEX1 + 4), 6U);
    QCOMPARE(field(bytes, YDIC_AT_SLICE_LIMIT), 13U);
}

void DictionaryWriterTest::patchHeaderTellsTheEditions()
{
    FileIdentity identity = {5, true, 4, 9};
    const std::vector<uint8_t> bytes =
        writeDictionary(identity, {{tokyo(1000001, u"千代田区", u"千代田"), false}}, {}).bytes;
    QCOMPARE(int(bytes[YDIC_AT_TYPE]), int(YDIC_PATCH));
    QCOMPARE(int(bytes[YDIC_AT_CORRECTS]), 4);
    QCOMPARE(int(bytes[YDIC_AT_EDITION]), 5);
    QCOMPARE(int(bytes[YDIC_AT_SERIAL]), 9);
}

/* 52 characters of each town take a byte, the 53rd two. */
void DictionaryWriterTest::commonCharactersTakeOneByte()
{
    const auto chunkBytes = [](const std::u16string &town) {
        return field(writeDictionary(1, {tokyo(1000001, u"港区", town)}).bytes, YDIC_AT_BASE_B + 4);
    };
    const uint32_t short2 = chunkBytes(u"山");
    QCOMPARE(chunkBytes(u"山山山山山山"), short2 + 5);
    QCOMPARE(short2, uint32_t{YDIC_CHUNK_HEADER + 2 + 1 + 1});
}

void DictionaryWriterTest::emptyDictionaryHasNothing()
{
    const WrittenFile file = writeDictionary(1, std::vector<Place>());
    QVERIFY(file.errors.empty());
    WrittenDictionary dictionary(file.bytes);
    QCOMPARE(dictionary.addresses(1000001), Texts());
    QCOMPARE(dictionary.codes(u"千代田区千代田"), Codes());
    QCOMPARE(dictionary.neighbour(1000001, YDIC_NEXT), int64_t{-1});
}

void DictionaryWriterTest::changeTableIsWritten()
{
    const WrittenFile file = writeDictionary(
        {2, true, 1, 0}, {{tokyo(1000001, u"港区", u"芝"), false}},
        {{1000000, ChangeKind::Kept}, {1000001, ChangeKind::Added}, {1000255, ChangeKind::Removed}});
    QCOMPARE(field(file.bytes, YDIC_AT_CHANGES + 4), 12U);
    const uint8_t *table = file.bytes.data() + field(file.bytes, YDIC_AT_CHANGES);
    QCOMPARE(std::vector<uint8_t>(table, table + 12),
             (std::vector<uint8_t>{0x0F, 0x42, 0x40, 0, 0x0F, 0x42, 0x41, 1, 0x0F, 0x43, 0x3F, 2}));
}

void DictionaryWriterTest::cancelledPlacesAreGone_data()
{
    QTest::addColumn<uint32_t>("code");
    QTest::addColumn<int>("prefecture");
    QTest::addColumn<QString>("town");
    QTest::addColumn<QString>("matched");
    QTest::addColumn<QString>("alias");
    QTest::newRow("town") << 1000001U << 13 << "芝"
                          << "芝"
                          << "";
    QTest::newRow("whole area") << 1000001U << 13 << ""
                                << ""
                                << "";
    QTest::newRow("whole area of 00") << 1000000U << 13 << ""
                                      << ""
                                      << "";
    QTest::newRow("town of 00") << 1000000U << 13 << "芝"
                                << "芝"
                                << "";
    QTest::newRow("bracket") << 1000001U << 13 << "芝（１丁目）"
                             << "芝"
                             << "";
    QTest::newRow("alias") << 1000001U << 13 << "芝（１丁目）"
                           << "芝"
                           << "芝１丁目";
    QTest::newRow("alias of 00") << 1000000U << 13 << ""
                                 << ""
                                 << "芝１丁目";
    QTest::newRow("another prefecture") << 1000001U << 24 << "芝"
                                        << "芝"
                                        << "芝１丁目";
    QTest::newRow("another prefecture, whole area of 00") << 1000000U << 24 << ""
                                                          << ""
                                                          << "";
}

void DictionaryWriterTest::cancelledPlacesAreGone()
{
    QFETCH(uint32_t, code);
    QFETCH(int, prefecture);
    QFETCH(QString, town);
    QFETCH(QString, matched);
    QFETCH(QString, alias);
    Place place = {code,
                   static_cast<uint8_t>(prefecture),
                   u"西多摩郡山田町",
                   town.toStdU16String(),
                   matched.toStdU16String(),
                   {},
                   false};
    if (!alias.isEmpty())
        place.aliases.push_back(alias.toStdU16String());
    WrittenDictionary dictionary({place, tokyo(1000002, u"港区", u"三田"), tokyo(1000003, u"港区", u"白金")});
    const std::u16string names[] = {u"西多摩郡山田町", u"山田町"};
    for (const std::u16string &name : names) {
        QCOMPARE(dictionary.codes(name + place.matched), (Codes{code}));
        QCOMPARE(dictionary.codes(name + u"芝１丁目"), (Codes{code}));
    }
    QCOMPARE(dictionary.addresses(code), (Texts{fromJis(*toJis(shownAddress(place)))}));
    dictionary.setPatch(
        writeDictionary({2, true, 1, 0}, {{place, true}, {tokyo(1000004, u"港区", u"芝"), false}}, {}).bytes);
    for (const std::u16string &name : names) {
        QCOMPARE(dictionary.codes(name + place.matched), Codes());
        QCOMPARE(dictionary.codes(name + u"芝１丁目"), Codes());
    }
    QCOMPARE(dictionary.addresses(code), Texts());
    QCOMPARE(dictionary.addresses(1000002), (Texts{u"東京都／港区三田"}));
    QCOMPARE(dictionary.codes(u"港区芝"), (Codes{1000004}));
}

void DictionaryWriterTest::sameInputGivesTheSameBytes()
{
    std::vector<Place> places;
    for (uint32_t i = 0; i < 500; ++i)
        places.push_back(
            tokyo(1000001 + i * 37, i % 3 ? u"港区" : u"西多摩郡檜原村", std::u16string(i % 9, u'山')));
    QCOMPARE(writeDictionary(1, places).bytes, writeDictionary(1, places).bytes);
}

void DictionaryWriterTest::randomPlacesAreFound_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 20; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

static std::vector<Place> randomPlaces(quint32 seed)
{
    struct Town
    {
        uint8_t prefecture;
        const char16_t *municipality;
    };
    constexpr Town Towns[] = {{Tokyo, u"港区"},     {Tokyo, u"西多摩郡檜原村"},
                              {Tokyo, u"千代田区"}, {Ishikawa, u"鹿島郡中能登町"},
                              {Mie, u"津市"},       {8, u"鹿嶋市"},
                              {41, u"鹿島市"}};
    QRandomGenerator random(seed);
    std::set<uint32_t> codes;
    for (int i = 0; i < 300; ++i)
        codes.insert(static_cast<uint32_t>(random.bounded(3) * 4900000 + random.bounded(600)));
    std::vector<Place> places;
    for (const uint32_t code : codes) {
        for (int more = random.bounded(4) == 0 ? random.bounded(6) : 0; more >= 0; --more) {
            const Town &town = Towns[random.bounded(int(std::size(Towns)))];
            std::u16string name;
            for (int length = random.bounded(6); length > 0; --length)
                name += u"山川田谷ヶ沢澤一十"[random.bounded(9)];
            Place place = {code, town.prefecture, town.municipality, name, name, {}, random.bounded(20) == 0};
            if (random.bounded(5) == 0)
                place.town += u"（谷）";
            if (random.bounded(9) == 0)
                place.aliases = {name + u"野"};
            places.push_back(place);
        }
    }
    return places;
}

void DictionaryWriterTest::randomPlacesAreFound()
{
    QFETCH(quint32, seed);
    const std::vector<Place> places = randomPlaces(seed);
    WrittenDictionary dictionary(places);
    int64_t above = dictionary.neighbour(0, YDIC_NEXT);
    int64_t below = -1;
    for (size_t i = 0, end = 0; i < places.size(); i = end) {
        Texts expected;
        for (; end < places.size() && places[end].code == places[i].code; ++end) {
            const std::u16string shown = shownAddress(places[end]);
            if (std::find(expected.begin(), expected.end(), shown) == expected.end())
                expected.push_back(shown);
        }
        const uint32_t code = places[i].code;
        QCOMPARE(dictionary.addresses(code), expected);
        if (code != 0)
            QCOMPARE(above, int64_t{code});
        QCOMPARE(dictionary.neighbour(code, YDIC_PREVIOUS), below);
        above = dictionary.neighbour(code, YDIC_NEXT);
        below = code;
    }
    QCOMPARE(above, int64_t{-1});
    for (const Place &place : places) {
        if (place.isCodeOnly)
            continue;
        const std::u16string name = prefectureName(place.prefecture) + place.municipality;
        const Codes found = dictionary.codes(name + place.matched);
        QVERIFY2(std::find(found.begin(), found.end(), place.code) != found.end(),
                 qPrintable(QString::number(place.code) + QString::fromStdU16String(name + place.matched)));
        for (const std::u16string &alias : place.aliases) {
            const Codes byAlias = dictionary.codes(name + alias);
            QVERIFY(std::find(byAlias.begin(), byAlias.end(), place.code) != byAlias.end());
        }
    }
}

QTEST_GUILESS_MAIN(DictionaryWriterTest)
#include "dictionarywritertest.moc"
