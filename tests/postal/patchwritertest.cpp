#include "patchwriter.h"

#include "dictionarycheck.h"
#include "dictionaryfile.h"
#include "imagebuilder.h"
#include <algorithm>
#include <QTest>
#include <random>
#include <set>

using namespace ZipDict;
using imagebuilder::OpenImages;

namespace {

using Places = std::vector<Place>;

constexpr int Most = 100;

FileIdentity patchIdentity()
{
    return {2, true, 1, 7};
}

imagebuilder::Bytes bytesOf(const WrittenFile &file)
{
    if (!file.errors.empty())
        qFatal("%s", file.errors.front().c_str());
    return {file.bytes.begin(), file.bytes.end()};
}

Place townOf(uint32_t code, const std::u16string &town)
{
    return {code, 13, u"千代田区", town, town, {}, false};
}

/** Both editions, and the older one with the patch. */
struct Editions
{
    Editions(const Places &older, const Places &newer)
        : patched(bytesOf(writeDictionary(1, older)), bytesOf(writePatch(patchIdentity(), older, newer))),
          whole(bytesOf(writeDictionary(2, newer)))
    {
    }

    OpenImages patched;
    OpenImages whole;
};

using Results = QStringList;

Results resultsIn(const std::vector<char> &buffer, int count)
{
    Results results;
    const char *at = buffer.data();
    for (int i = 0; i < count; ++i) {
        results << QString::fromStdU16String(fromJis(at));
        at += std::strlen(at) + 1;
    }
    return results;
}

QByteArray codeText(uint32_t code)
{
    return QByteArray::number(code).rightJustified(7, '0');
}

Results addressesOf(uint32_t code, OpenImages &images)
{
    std::vector<char> buffer(Most * (YDIC_ADDRESS_LENGTH + 1));
    const int count = Zip2AdrSearch(codeText(code).constData(), Most, buffer.data(), images.info());
    return count < 0 ? Results{"failure"} : resultsIn(buffer, count);
}

/* The neighbour's code, and its addresses. */
Results neighbourOf(uint32_t code, uint8_t direction, OpenImages &images)
{
    std::vector<char> buffer(Most * (YDIC_ADDRESS_LENGTH + 1));
    char near[8] = {};
    const int count =
        Zip2AdrSearchNP(codeText(code).constData(), Most, direction, near, buffer.data(), images.info());
    return count < 0 ? Results{"failure"} : Results{near} + resultsIn(buffer, count);
}

/* In the order of their numbers: a patch's candidates come behind those of the dictionary. */
Results codesOf(const std::u16string &address, OpenImages &images)
{
    char buffer[Most * 8] = {};
    const int count = Adr2ZipSearch(toJis(address).value().c_str(), Most, buffer, images.info());
    Results codes;
    for (int i = 0; i < count; ++i)
        codes << buffer + i * 8;
    codes.sort();
    return count < 0 ? Results{"failure"} : codes;
}

std::vector<std::u16string> textsOf(const Place &place)
{
    std::vector<std::u16string> texts = place.aliases;
    texts.push_back(place.matched);
    for (std::u16string &text : texts)
        text.insert(0, prefectureName(place.prefecture) + place.municipality);
    return texts;
}

/** Editions that differ at random. */
class RandomEditions
{
public:
    explicit RandomEditions(unsigned seed) : m_random(seed)
    {
        for (const uint32_t code : someCodes()) {
            const Places before = placesOf(code);
            const unsigned fate = number(10);
            if (fate != 0)
                older.insert(older.end(), before.begin(), before.end());
            if (fate == 1)
                continue;
            const Places after = fate < 3 ? placesOf(code) : fate == 3 ? turned(before) : before;
            newer.insert(newer.end(), after.begin(), after.end());
        }
    }

    Places older;
    Places newer;

private:
    unsigned number(unsigned below) { return static_cast<unsigned>(m_random() % below); }

    std::set<uint32_t> someCodes()
    {
        constexpr uint32_t Prefixes[] = {0, 10000, 10001, 10200, 49800, 50000, 99999};
        std::set<uint32_t> codes;
        for (const uint32_t prefix : Prefixes) {
            for (unsigned i = number(12); i > 0; --i)
                codes.insert(prefix * 100 + (number(4) == 0 ? number(100) : number(20)));
        }
        codes.insert(9999999); // there is always a code in both editions, or in one
        return codes;
    }

    std::u16string someTown()
    {
        constexpr std::u16string_view Characters = u"青赤白黒金銀銅鉄森林";
        std::u16string town;
        for (unsigned i = number(3); i < 3; ++i)
            town += Characters[number(Characters.size())];
        return town;
    }

    Place somePlace(uint32_t code)
    {
        struct Municipality
        {
            uint8_t prefecture;
            const char16_t *name;
        };
        constexpr Municipality Municipalities[] = {
            {13, u"千代田区"}, {13, u"中央区"}, {20, u"上田市"}, {24, u"桑名郡木曽岬町"}};
        const Municipality &municipality = Municipalities[number(std::size(Municipalities))];
        Place place = {code, municipality.prefecture, municipality.name, someTown(), {}, {}, false};
        place.matched = number(4) == 0 ? someTown() : place.town;
        if (number(3) == 0)
            place.aliases = {place.matched + u"谷", place.matched + u"岡"};
        if (number(8) == 0)
            place = {code, municipality.prefecture, municipality.name, {}, {}, {}, false};
        place.isCodeOnly = number(8) == 0 && !place.town.empty();
        if (place.isCodeOnly)
            place.matched = u"", place.aliases.clear();
        return place;
    }

    Places placesOf(uint32_t code)
    {
        Places places;
        for (unsigned i = number(3); i < 3; ++i) {
            const Place place = somePlace(code);
            const auto isSame = [&](const Place &other) {
                return shownAddress(other) == shownAddress(place);
            };
            if (std::none_of(places.begin(), places.end(), isSame))
                places.push_back(place);
        }
        return places;
    }

    static Places turned(Places places)
    {
        std::reverse(places.begin(), places.end());
        return places;
    }

    std::mt19937 m_random;
};

std::set<uint32_t> codesIn(const RandomEditions &editions)
{
    std::set<uint32_t> codes = {0, 1, 1999999, 5000000, 9999998, 9999999};
    for (const Places *places : {&editions.older, &editions.newer}) {
        for (const Place &place : *places) {
            codes.insert({place.code, std::min(place.code + 1, LargestCode), std::max(place.code, 1U) - 1});
        }
    }
    return codes;
}

} // namespace

/** A patch makes an edition out of the one before it. */
class PatchWriterTest : public QObject
{
    Q_OBJECT
private slots:
    void tableHasChangesAndTheirNeighbours_data();
    void tableHasChangesAndTheirNeighbours();
    void equalEditionsNeedNothing();
    void changedPlacesChangeNoCode();
    void identityIsWritten();
    void vanishedCodeIsGone();
    void movedPlaceHasItsNewCodeOnly();
    void vanishedAliasIsNotFound();
    void vanishedBusinessIsGone();
    void orderOfPlacesIsThatOfTheNewerEdition();
    void patchedSearchEqualsTheNewerEdition_data();
    void patchedSearchEqualsTheNewerEdition();
};

void PatchWriterTest::tableHasChangesAndTheirNeighbours_data()
{
    QTest::addColumn<QList<int>>("older");
    QTest::addColumn<QList<int>>("newer");
    QTest::addColumn<QString>("table");
    using Codes = QList<int>;

    QTest::newRow("added") << Codes{1, 2, 4, 5} << Codes{1, 2, 3, 4, 5} << "2 kept, 3 added, 4 kept";
    QTest::newRow("removed") << Codes{1, 2, 3, 4, 5} << Codes{1, 2, 4, 5} << "2 kept, 3 removed, 4 kept";
    QTest::newRow("first") << Codes{2, 3} << Codes{1, 2, 3} << "1 added, 2 kept";
    QTest::newRow("last") << Codes{1, 2, 3} << Codes{1, 2} << "2 kept, 3 removed";
    QTest::newRow("block") << Codes{1, 2, 4, 7} << Codes{1, 3, 5, 7}
                           << "1 kept, 2 removed, 3 added, 4 removed, 5 added, 7 kept";
    QTest::newRow("one code between two changes")
        << Codes{1, 3, 5} << Codes{1, 2, 3, 4, 5} << "1 kept, 2 added, 3 kept, 4 added, 5 kept";
    QTest::newRow("two codes between two changes")
        << Codes{1, 3, 4, 6} << Codes{1, 2, 3, 4, 5, 6} << "1 kept, 2 added, 3 kept, 4 kept, 5 added, 6 kept";
    QTest::newRow("three codes between two changes") << Codes{1, 3, 4, 5, 7} << Codes{1, 2, 3, 4, 5, 6, 7}
                                                     << "1 kept, 2 added, 3 kept, 5 kept, 6 added, 7 kept";
    QTest::newRow("nothing stays") << Codes{1, 3} << Codes{2, 4} << "1 removed, 2 added, 3 removed, 4 added";
    QTest::newRow("all removed") << Codes{1, 2} << Codes{} << "1 removed, 2 removed";
    QTest::newRow("all added") << Codes{} << Codes{1, 2} << "1 added, 2 added";
}

static QString tableOf(const WrittenFile &patch)
{
    constexpr const char *Kinds[] = {"kept", "added", "removed"};
    const DictionaryFile file(patch.bytes);
    const uint64_t start = file.u32(YDIC_AT_CHANGES);
    QStringList changes;
    for (uint64_t at = start; at < start + file.u32(YDIC_AT_CHANGES + 4); at += YDIC_CHANGE)
        changes << QString("%1 %2").arg(file.u24(at)).arg(Kinds[file.byteAt(at + 3)]);
    return changes.join(", ");
}

void PatchWriterTest::tableHasChangesAndTheirNeighbours()
{
    QFETCH(const QList<int>, older);
    QFETCH(const QList<int>, newer);
    QFETCH(const QString, table);
    const auto places = [](const QList<int> &codes) {
        Places list;
        for (const int code : codes)
            list.push_back(townOf(static_cast<uint32_t>(code), u"丸の内"));
        return list;
    };
    QCOMPARE(tableOf(writePatch(patchIdentity(), places(older), places(newer))), table);
}

void PatchWriterTest::equalEditionsNeedNothing()
{
    const Places places = {townOf(1, u"青"), townOf(2, u"赤")};
    const WrittenFile patch = writePatch(patchIdentity(), places, places);
    QVERIFY(patch.errors.empty());
    QCOMPARE(tableOf(patch), QString());
    QVERIFY(DictionaryFile(patch.bytes).codeIndex().empty());
    Editions editions(places, places);
    QCOMPARE(addressesOf(2, editions.patched), Results{"東京都／千代田区赤"});
}

void PatchWriterTest::changedPlacesChangeNoCode()
{
    const Places older = {townOf(1, u"青"), townOf(2, u"赤")};
    const Places newer = {townOf(1, u"青"), townOf(2, u"白")};
    QCOMPARE(tableOf(writePatch(patchIdentity(), older, newer)), QString());
    Editions editions(older, newer);
    QCOMPARE(addressesOf(2, editions.patched), Results{"東京都／千代田区白"});
    QCOMPARE(codesOf(u"千代田区赤", editions.patched), Results());
    QCOMPARE(codesOf(u"千代田区白", editions.patched), Results{"0000002"});
}

void PatchWriterTest::identityIsWritten()
{
    const WrittenFile patch = writePatch(patchIdentity(), {townOf(1, u"青")}, {townOf(2, u"青")});
    const DictionaryFile file(patch.bytes);
    QVERIFY(file.isPatch());
    QCOMPARE(file.byteAt(YDIC_AT_CORRECTS), 1U);
    QCOMPARE(file.byteAt(YDIC_AT_EDITION), 2U);
    QCOMPARE(file.byteAt(YDIC_AT_SERIAL), 7U);
}

void PatchWriterTest::vanishedCodeIsGone()
{
    Editions editions({townOf(1, u"青"), townOf(2, u"赤"), townOf(3, u"白")},
                      {townOf(1, u"青"), townOf(3, u"白")});
    QCOMPARE(addressesOf(2, editions.patched), Results());
    QCOMPARE(codesOf(u"千代田区赤", editions.patched), Results());
    QCOMPARE(neighbourOf(1, YDIC_NEXT, editions.patched), (Results{"0000003", "東京都／千代田区白"}));
    QCOMPARE(neighbourOf(3, YDIC_PREVIOUS, editions.patched), (Results{"0000001", "東京都／千代田区青"}));
}

void PatchWriterTest::movedPlaceHasItsNewCodeOnly()
{
    Editions editions({townOf(1, u"青"), townOf(2, u"赤")}, {townOf(1, u"青"), townOf(5, u"赤")});
    QCOMPARE(codesOf(u"千代田区赤", editions.patched), Results{"0000005"});
}

void PatchWriterTest::vanishedAliasIsNotFound()
{
    Place older = townOf(1, u"青");
    older.aliases = {u"白金"};
    Editions editions({older}, {townOf(1, u"青")});
    QCOMPARE(codesOf(u"千代田区白金", editions.patched), Results());
    QCOMPARE(codesOf(u"千代田区青", editions.patched), Results{"0000001"});
}

void PatchWriterTest::vanishedBusinessIsGone()
{
    Place business = townOf(2, u"丸の内　銀行");
    business.isCodeOnly = true;
    business.matched.clear();
    Editions editions({townOf(1, u"青"), business}, {townOf(1, u"青")});
    QCOMPARE(addressesOf(2, editions.patched), Results());
    QCOMPARE(neighbourOf(1, YDIC_NEXT, editions.patched), Results{""});
}

void PatchWriterTest::orderOfPlacesIsThatOfTheNewerEdition()
{
    Editions editions({townOf(1, u"青"), townOf(1, u"赤")}, {townOf(1, u"赤"), townOf(1, u"青")});
    QCOMPARE(addressesOf(1, editions.patched), (Results{"東京都／千代田区赤", "東京都／千代田区青"}));
    QCOMPARE(codesOf(u"千代田区青", editions.patched), Results{"0000001"});
}

void PatchWriterTest::patchedSearchEqualsTheNewerEdition_data()
{
    QTest::addColumn<unsigned>("seed");
    for (unsigned seed = 1; seed <= 60; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void PatchWriterTest::patchedSearchEqualsTheNewerEdition()
{
    QFETCH(const unsigned, seed);
    const RandomEditions random(seed);
    const WrittenFile patch = writePatch(patchIdentity(), random.older, random.newer);
    QVERIFY(patch.errors.empty());
    const std::vector<std::string> findings = checkDictionary(patch.bytes);
    QVERIFY2(findings.empty(), findings.empty() ? "" : findings.front().c_str());

    Editions editions(random.older, random.newer);
    for (const uint32_t code : codesIn(random)) {
        QCOMPARE(addressesOf(code, editions.patched), addressesOf(code, editions.whole));
        QCOMPARE(neighbourOf(code, YDIC_NEXT, editions.patched),
                 neighbourOf(code, YDIC_NEXT, editions.whole));
        QCOMPARE(neighbourOf(code, YDIC_PREVIOUS, editions.patched),
                 neighbourOf(code, YDIC_PREVIOUS, editions.whole));
    }
    for (const Places *places : {&random.older, &random.newer}) {
        for (const Place &place : *places) {
            for (const std::u16string &text : textsOf(place))
                QCOMPARE(codesOf(text, editions.patched), codesOf(text, editions.whole));
        }
    }
}

QTEST_MAIN(PatchWriterTest)
#include "patchwritertest.moc"
