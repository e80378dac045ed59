#include "addressindex.h"
#include "matchtext.h"
#include "writtendictionary.h"
#include "ydicbytes_p.h"
#include "ydicsearch.h"

#include <algorithm>
#include <QTest>

using namespace ZipDict;

namespace {

constexpr uint8_t Ibaraki = 8;
constexpr uint8_t Nagano = 20;
constexpr uint8_t Saga = 41;
constexpr size_t MostKeys = 1705;

using Codes = std::vector<uint32_t>;

Place place(uint32_t code, uint8_t prefecture, std::u16string_view municipality,
            std::u16string_view town = {})
{
    return {code, prefecture, std::u16string(municipality), std::u16string(town), std::u16string(town),
            {},   false};
}

/* Names that begin with different characters. */
std::u16string pairOfCharacters(size_t number)
{
    const auto kanji = [](size_t cell) {
        const char jis[] = {static_cast<char>(0x32 + cell / 94), static_cast<char>(0x21 + cell % 94)};
        return fromJis({jis, 2});
    };
    return kanji(number / 60) + kanji(number % 60 + 1000);
}

Municipality municipality(uint8_t prefecture, const std::u16string &name, const std::u16string &withoutCounty,
                          size_t places)
{
    return {prefecture, name, textOf(name), textOf(name), textOf(withoutCounty), places};
}

std::vector<WrittenReference> references(size_t count)
{
    return std::vector<WrittenReference>(count, WrittenReference{0x010203, 10, NameForm::Both});
}

/** A group of level 2. */
struct Group
{
    unsigned prefecture = 0;
    unsigned keyField = 0;
    unsigned count = 0;
    unsigned suffix = 0;

    bool operator==(const Group &) const = default;
};

std::vector<Group> groupsOf(const Bytes &level2)
{
    std::vector<Group> groups;
    for (size_t at = 0; at < level2.size();) {
        const unsigned head = ydic_u16(level2.data() + at);
        Group group = {head >> 10, head >> 6 & 15, head & 63, 0};
        at += 2;
        if (group.keyField > 0) {
            at += 2 * (group.keyField - 1);
            group.suffix = level2[at++];
        }
        at += size_t{group.count} * YDIC_REFERENCE;
        groups.push_back(group);
    }
    return groups;
}

} // namespace

/** The index of municipalities as it is written. */
class AddressIndexWriterTest : public QObject
{
    Q_OBJECT
private slots:
    void groupHasTheNameBehindTwoCharacters_data();
    void groupHasTheNameBehindTwoCharacters();
    void keysAscendAndAnEntryFollows();
    void keyIsNormalised();
    void municipalitiesOfOneKeyAreApart();
    void countyMayBeLeftOut();
    void islandMayBeLeftOut();
    void cityWithCountyCharacterHasNoCounty();
    void sameNameInSeveralPrefectures();
    void manyReferencesTakeSeveralGroups();
    void municipalityOfManyAreasIsFound();
    void kashimaCitiesAreTold();
    void kashimaOfSagaAloneIsFound();
    void kashimaWithTownOfHundredIsFound();
    void namesWithoutCountyEnterByTheirPlaces();
    void knownKeyNeedsNoRoom();
    void namesWithoutCountyStayOutOfAFullLevel2();
    void tooManyKeysAreAnError();
    void tooManyReferencesAreAnError();
    void referencesFollowTheirNameForm();
};

void AddressIndexWriterTest::groupHasTheNameBehindTwoCharacters_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<unsigned>("keyField");
    QTest::addColumn<unsigned>("suffix");
    QTest::newRow("two characters") << "津市" << 0U << 0U;
    QTest::newRow("three characters") << "横浜市" << 1U << 1U;
    QTest::newRow("ward") << "横浜市中区" << 3U << 2U;
    QTest::newRow("town") << "大島町" << 1U << 3U;
    QTest::newRow("village") << "小笠原村" << 2U << 4U;
    QTest::newRow("longest") << QString(16, u'山') + u'村' << 15U << 4U;
}

void AddressIndexWriterTest::groupHasTheNameBehindTwoCharacters()
{
    QFETCH(QString, name);
    QFETCH(unsigned, keyField);
    QFETCH(unsigned, suffix);
    const AddressIndex index =
        writeAddressIndex({municipality(Nagano, name.toStdU16String(), u"", 1)}, {references(2)});
    QVERIFY(index.errors.empty());
    QVERIFY(groupsOf(index.level2) == (std::vector<Group>{{Nagano, keyField, 2, suffix}}));
}

void AddressIndexWriterTest::keysAscendAndAnEntryFollows()
{
    const AddressIndex index =
        writeAddressIndex({municipality(13, u"港区", u"", 1), municipality(13, u"中央区", u"", 1),
                           municipality(13, u"大島町", u"", 1)},
                          {references(1), references(1), references(1)});
    QCOMPARE(index.level1.size(), size_t{4 * YDIC_ADDRESS1_ENTRY});
    for (size_t at = YDIC_ADDRESS1_ENTRY; at < index.level1.size(); at += YDIC_ADDRESS1_ENTRY) {
        const uint8_t *entry = index.level1.data() + at;
        QVERIFY(ydic_u32(entry - YDIC_ADDRESS1_ENTRY) < ydic_u32(entry));
        QVERIFY(ydic_u16(entry - 2) < ydic_u16(entry + 4));
    }
    QCOMPARE(size_t{ydic_u16(index.level1.data() + index.level1.size() - 2)}, index.level2.size());
}

void AddressIndexWriterTest::keyIsNormalised()
{
    WrittenDictionary dictionary({place(1900200, 13, u"西多摩郡檜原村"), place(1900201, 13, u"龍ケ崎市")});
    QCOMPARE(dictionary.codes(u"西多摩郡檜原村"), (Codes{1900200}));
    QCOMPARE(dictionary.codes(u"桧原村"), (Codes{1900200}));
    QCOMPARE(dictionary.codes(u"竜ヶ崎市"), (Codes{1900201}));
    QCOMPARE(dictionary.codes(u"龍が崎市"), (Codes{1900201}));
}

void AddressIndexWriterTest::municipalitiesOfOneKeyAreApart()
{
    WrittenDictionary dictionary({place(2200001, 14, u"横浜市西区"), place(2300001, 14, u"横浜市鶴見区"),
                                  place(2310001, 14, u"横浜市中区")});
    QCOMPARE(dictionary.codes(u"横浜市中区"), (Codes{2310001}));
    QCOMPARE(dictionary.codes(u"神奈川県横浜市鶴見区"), (Codes{2300001}));
    QCOMPARE(dictionary.codes(u"横浜市南区"), Codes());
}

void AddressIndexWriterTest::countyMayBeLeftOut()
{
    WrittenDictionary dictionary({place(3840100, Nagano, u"北佐久郡立科町", u"茂田井")});
    QCOMPARE(dictionary.codes(u"長野県北佐久郡立科町茂田井"), (Codes{3840100}));
    QCOMPARE(dictionary.codes(u"立科町茂田井"), (Codes{3840100}));
    QCOMPARE(dictionary.codes(u"佐久郡立科町茂田井"), Codes());
}

void AddressIndexWriterTest::islandMayBeLeftOut()
{
    WrittenDictionary dictionary({place(1001401, 13, u"八丈島八丈町", u"大賀郷"),
                                  place(1001701, 13, u"青ヶ島村"), place(6180000, 27, u"三島郡島本町")});
    QCOMPARE(dictionary.codes(u"東京都八丈島八丈町大賀郷"), (Codes{1001401}));
    QCOMPARE(dictionary.codes(u"東京都八丈町大賀郷"), (Codes{1001401}));
    QCOMPARE(dictionary.codes(u"青ヶ島村"), (Codes{1001701}));
    QCOMPARE(dictionary.codes(u"島本町"), (Codes{6180000}));
}

void AddressIndexWriterTest::cityWithCountyCharacterHasNoCounty()
{
    const WrittenFile file =
        writeDictionary(1, {place(6390001, 29, u"大和郡山市", u"本町"), place(9630001, 7, u"郡山市", u"本町"),
                            place(9630002, 7, u"郡町", u"本町")});
    QCOMPARE(ydic_u32(file.bytes.data() + YDIC_AT_ADDRESS_INDEX1 + 4), uint32_t{3 * YDIC_ADDRESS1_ENTRY});
}

void AddressIndexWriterTest::sameNameInSeveralPrefectures()
{
    WrittenDictionary dictionary({place(1830001, 13, u"府中市"), place(7260001, 34, u"府中市")});
    QCOMPARE(dictionary.codes(u"府中市"), (Codes{1830001, 7260001}));
    QCOMPARE(dictionary.codes(u"広島県府中市"), (Codes{7260001}));
}

void AddressIndexWriterTest::manyReferencesTakeSeveralGroups()
{
    const AddressIndex index =
        writeAddressIndex({municipality(Nagano, u"立科町", u"", 1)}, {references(63 * 2 + 1)});
    QVERIFY(groupsOf(index.level2) ==
            (std::vector<Group>{{Nagano, 1, 63, 3}, {Nagano, 1, 63, 3}, {Nagano, 1, 1, 3}}));
}

void AddressIndexWriterTest::municipalityOfManyAreasIsFound()
{
    std::vector<Place> places;
    for (uint32_t i = 0; i < 150; ++i)
        places.push_back(place(3800001 + i * 100, Nagano, u"長野市",
                               std::u16string(1 + i % 20, u"山川田谷沢野丘原"[i / 20])));
    WrittenDictionary dictionary(places);
    for (const Place &one : places)
        QCOMPARE(dictionary.codes(u"長野市" + one.matched), (Codes{one.code}));
}

void AddressIndexWriterTest::kashimaCitiesAreTold()
{
    WrittenDictionary dictionary({place(3140001, Ibaraki, u"鹿嶋市", u"清水"),
                                  place(8491301, Saga, u"鹿島市", u"清水"),
                                  place(9290001, 17, u"鹿島郡中能登町", u"清水")});
    QCOMPARE(dictionary.codes(u"鹿嶋市清水"), (Codes{3140001}));
    QCOMPARE(dictionary.codes(u"鹿島市清水"), (Codes{3140001, 8491301}));
    QCOMPARE(dictionary.codes(u"佐賀県鹿島市清水"), (Codes{8491301}));
    QCOMPARE(dictionary.codes(u"茨城県鹿島市清水"), (Codes{3140001}));
    QCOMPARE(dictionary.codes(u"佐賀県鹿嶋市清水"), Codes());
    QCOMPARE(dictionary.codes(u"鹿島郡中能登町清水"), (Codes{9290001}));
}

void AddressIndexWriterTest::kashimaOfSagaAloneIsFound()
{
    WrittenDictionary dictionary({place(8491301, Saga, u"鹿島市", u"清水")});
    QCOMPARE(dictionary.codes(u"鹿島市清水"), (Codes{8491301}));
    QCOMPARE(dictionary.codes(u"鹿嶋市清水"), Codes());
}

void AddressIndexWriterTest::kashimaWithTownOfHundredIsFound()
{
    WrittenDictionary dictionary(
        {place(3140100, Ibaraki, u"鹿嶋市", u"澤"), place(8491300, Saga, u"鹿島市", u"清水")});
    QCOMPARE(dictionary.codes(u"茨城県鹿嶋市澤"), (Codes{3140100}));
    QCOMPARE(dictionary.codes(u"佐賀県鹿島市清水"), (Codes{8491300}));
}

/** 1,704 keys, so that one is left. */
static std::vector<Municipality> almostAllKeys()
{
    std::vector<Municipality> municipalities;
    for (size_t i = 0; i + 1 < MostKeys; ++i)
        municipalities.push_back(municipality(Nagano, pairOfCharacters(i) + u"市", u"", 1));
    return municipalities;
}

void AddressIndexWriterTest::namesWithoutCountyEnterByTheirPlaces()
{
    /* Their full names have the key of the first municipality. */
    std::vector<Municipality> municipalities = almostAllKeys();
    municipalities.push_back(municipality(Nagano, pairOfCharacters(0) + u"郡ああ町", u"ああ町", 5));
    municipalities.push_back(municipality(Nagano, pairOfCharacters(0) + u"郡いい町", u"いい町", 7));
    municipalities.push_back(municipality(Nagano, pairOfCharacters(0) + u"郡うう町", u"うう町", 6));
    const AddressIndex index = writeAddressIndex(
        municipalities, std::vector<std::vector<WrittenReference>>(municipalities.size(), references(1)));
    QVERIFY(index.errors.empty());
    QCOMPARE(index.level1.size(), (MostKeys + 1) * YDIC_ADDRESS1_ENTRY);
    QVERIFY(index.level1.size() <= size_t{YDIC_READ_LENGTH});
    QCOMPARE(index.keysLeftOut, (std::vector<std::u16string>{pairOfCharacters(0) + u"郡うう町",
                                                             pairOfCharacters(0) + u"郡ああ町"}));
    QCOMPARE(int(ydic_u16(index.level1.data())), int(jisOf(u'い')));
}

void AddressIndexWriterTest::knownKeyNeedsNoRoom()
{
    std::vector<Municipality> municipalities = almostAllKeys();
    municipalities.push_back(municipality(Nagano, u"ああ郡いい町", u"いい町", 5));
    municipalities.push_back(municipality(Nagano, u"ああ郡ああ町", u"ああ町", 5));
    const AddressIndex index = writeAddressIndex(
        municipalities, std::vector<std::vector<WrittenReference>>(municipalities.size(), references(1)));
    QVERIFY(index.errors.empty());
    QCOMPARE(index.keysLeftOut, (std::vector<std::u16string>{u"ああ郡いい町"}));
}

void AddressIndexWriterTest::namesWithoutCountyStayOutOfAFullLevel2()
{
    const std::vector<Municipality> municipalities = {municipality(Nagano, u"ああ郡いい町", u"いい町", 5),
                                                      municipality(Nagano, u"ああ郡うう町", u"うう町", 4)};
    const AddressIndex index = writeAddressIndex(municipalities, {references(7000), references(1)});
    QVERIFY(index.errors.empty());
    QCOMPARE(index.keysLeftOut, (std::vector<std::u16string>{u"ああ郡いい町"}));
    QVERIFY(index.level2.size() <= size_t{UINT16_MAX});
}

void AddressIndexWriterTest::tooManyKeysAreAnError()
{
    std::vector<Municipality> municipalities = almostAllKeys();
    municipalities.push_back(municipality(Nagano, u"津市", u"", 1));
    std::vector<std::vector<WrittenReference>> none(municipalities.size() + 1, references(1));
    QVERIFY(writeAddressIndex(municipalities, none).errors.empty());
    municipalities.push_back(municipality(Nagano, u"呉市", u"", 1));
    QVERIFY(
        writeAddressIndex(municipalities, none).errors.front().find("too many municipalities that begin") !=
        std::string::npos);
}

void AddressIndexWriterTest::tooManyReferencesAreAnError()
{
    /* 206 groups of 63 take 317 bytes each, and a last one of 46 takes 232. */
    const std::vector<Municipality> municipalities = {municipality(Nagano, u"津市", u"", 1)};
    const AddressIndex full = writeAddressIndex(municipalities, {references(206 * 63 + 46)});
    QVERIFY(full.errors.empty());
    QCOMPARE(full.level2.size(), size_t{65534});
    const AddressIndex over = writeAddressIndex(municipalities, {references(206 * 63 + 47)});
    QCOMPARE(over.errors.size(), size_t{1});
    QVERIFY(over.errors.front().find("areas of them") != std::string::npos);
}

void AddressIndexWriterTest::referencesFollowTheirNameForm()
{
    const std::vector<WrittenReference> all = {
        {1, 10, NameForm::Both}, {2, 10, NameForm::Full}, {3, 10, NameForm::WithoutCounty}};
    const AddressIndex index =
        writeAddressIndex({municipality(Nagano, u"ああ郡いい町", u"いい町", 5)}, {all});
    QVERIFY(groupsOf(index.level2) == (std::vector<Group>{{Nagano, 4, 2, 3}, {Nagano, 1, 2, 3}}));
    const size_t full = 2 + 6 + 1;
    QCOMPARE(ydic_u24(index.level2.data() + full), 1U);
    QCOMPARE(ydic_u24(index.level2.data() + full + YDIC_REFERENCE), 2U);
    const size_t without = full + 2 * YDIC_REFERENCE + 2 + 1;
    QCOMPARE(ydic_u24(index.level2.data() + without), 1U);
    QCOMPARE(ydic_u24(index.level2.data() + without + YDIC_REFERENCE), 3U);
}

QTEST_GUILESS_MAIN(AddressIndexWriterTest)
#include "addressindexwritertest.moc"
