#include "imagebuilder.h"
#include "memoryfaults.h"
#include "querytext.h"
#include "ydicaddress_p.h"

#include <QElapsedTimer>
#include <QTest>

#include <algorithm>

using namespace imagebuilder;
using namespace Qt::StringLiterals;

namespace {

constexpr unsigned Hokkaido = 1;
constexpr unsigned Ibaraki = 8;
constexpr unsigned Tokyo = 13;
constexpr unsigned Ishikawa = 17;
constexpr unsigned Kyoto = 26;
constexpr unsigned Saga = 41;

struct Entry
{
    uint8_t last2;
    std::u16string_view text;
};

/** Writes municipalities whose places have one chunk. */
class Builder
{
public:
    Image image;

    /** A group for a municipality: two characters of its key, what follows, and 1 to 4 for its last one. */
    Bytes municipality(unsigned prefecture, std::u16string_view key, unsigned suffix, uint32_t firstFive,
                       const Bytes &records)
    {
        const uint32_t offset = image.nextReference();
        const uint32_t length = image.addChunk(firstFive, 0, records);
        return group(prefecture, jis(key), suffix, reference(offset, length));
    }

    static Bytes places(const std::vector<Entry> &entries)
    {
        Bytes bytes;
        for (const Entry &entry : entries)
            bytes += record(entry.last2, entry.text.empty() ? u8(YDIC_MARK_WHOLE) : stored(entry.text));
        return bytes;
    }
};

/** The codes of an address. */
QStringList codes(const QString &address, ydic_info *info, uint32_t max = 100)
{
    std::vector<char> result(size_t{max} * 8 + 1, '#');
    const int count = Adr2ZipSearch(jisBytes(address).constData(), max, result.data(), info);
    if (count < 0)
        return {u"failure %1"_s.arg(count)};
    QStringList list;
    for (int i = 0; i < count; ++i)
        list += QString::fromLatin1(result.data() + 8 * i);
    if (result.back() != '#')
        list += u"written behind the end"_s;
    return list;
}

QStringList codes(const QString &address, const Image &dictionary)
{
    OpenImages files(dictionary.bytes());
    return codes(address, files.info());
}

QStringList codes(const QString &address, const Image &dictionary, const Image &patch)
{
    OpenImages files(dictionary.bytes(), patch.bytes());
    return codes(address, files.info());
}

/** Places of one municipality, 大田区 of Tokyo, whose codes begin with 14400. */
Image ota(const Bytes &records)
{
    Builder builder;
    const Bytes group = builder.municipality(Tokyo, u"", 2, 14400, records);
    builder.image.addAddressKey(u"大田", group);
    return builder.image;
}

Image ota(const std::vector<Entry> &entries)
{
    return ota(Builder::places(entries));
}

Image patchOf(Image image)
{
    image.type = YDIC_PATCH;
    return image;
}

/** Both cities 鹿島市, of which the index names one, and a town. */
Image kashima()
{
    Builder builder;
    builder.image.address2 = group(0, Bytes()); // no range starts at 0
    builder.image.address2 +=
        builder.municipality(Saga, u"", 1, 84913, Builder::places({{0, u""}, {11, u"高津原"}}));
    builder.image.secondStart = 2;
    builder.image.secondEnd = static_cast<uint16_t>(builder.image.address2.size());
    builder.image.addAddressKey(u"鹿島",
                                builder.municipality(Ishikawa, u"", 3, 92909, Builder::places({{0, u""}})));
    builder.image.addAddressKey(
        u"鹿嶋", builder.municipality(Ibaraki, u"", 1, 31400, Builder::places({{0, u""}, {31, u"宮中"}})));
    return builder.image;
}

} // namespace

/** From an address to its codes. */
class AddressSearchTest : public QObject
{
    Q_OBJECT
private slots:
    void longestMatchWins();
    void placesThatMatchAlikeAreAllGiven();
    void municipalityAloneGivesItsWholeArea();
    void prefectureLimitsTheSearch();
    void prefectureWithoutItsEndingIsNoPrefecture();
    void addressThatFitsNothingHasNoCode_data();
    void addressThatFitsNothingHasNoCode();
    void addressOfOneCharacterHasNoCode();
    void oddAddressIsRefused();
    void highBitsAreIgnored();
    void maximumIsKept();
    void candidatesBehindTheHundredthAreLost();
    void spellingsFindThePlace_data();
    void spellingsFindThePlace();
    void streetsOfKyotoAreCut();
    void joOfSapporoMayBeLeftOut_data();
    void joOfSapporoMayBeLeftOut();

    void kashimaMeansBothCities();
    void kashimaOfSagaIsFound();
    void kashimaOfIbarakiIsFound();
    void oldKashimaMeansIbaraki();
    void oldKashimaOfSagaIsNothing();
    void kashimaWithoutSecondRangeMeansIbaraki();
    void kashimaThatIsNoCityHasNoSecondRange();
    void completeAddressesOfKashimaAreNormalised();
    void failureBeforeTheSecondRangeEndsTheSearch();

    void patchAddsCandidates();
    void patchTakesCandidatesAway();
    void patchMovesAPlace();
    void patchWithoutTheKeyChangesNothing();
    void patchIsNotReadUnlessInUse();
    void failureOfThePatchDiscardsTheCandidates();
    void patchHasItsOwnOneByteText();

    void failureOfTheDictionaryEndsTheSearch();
    void noMemoryIsToldAndNothingLost();
    void everyPathFreesWhatItAllocated();
    void largeMunicipalityIsSearchedQuickly();
};

void AddressSearchTest::longestMatchWins()
{
    const Image image = ota({{0, u""}, {1, u"蒲田"}, {2, u"蒲田本町"}, {3, u"蒲"}, {4, u"羽田"}});
    QCOMPARE(codes(u"大田区蒲田本町１−１"_s, image), QStringList{u"1440002"_s});
    QCOMPARE(codes(u"大田区蒲田西"_s, image), QStringList{u"1440001"_s});
    QCOMPARE(codes(u"大田区蒲生"_s, image), QStringList{u"1440003"_s});
    QCOMPARE(codes(u"大田区大森"_s, image), QStringList{u"1440000"_s});
}

void AddressSearchTest::placesThatMatchAlikeAreAllGiven()
{
    QCOMPARE(codes(u"大田区蒲田"_s, ota({{1, u"蒲田"}, {5, u"蒲田"}, {9, u"蒲"}})),
             QStringList({u"1440001"_s, u"1440005"_s}));
}

void AddressSearchTest::municipalityAloneGivesItsWholeArea()
{
    QCOMPARE(codes(u"大田区"_s, ota({{0, u""}, {1, u"蒲田"}})), QStringList{u"1440000"_s});
    QCOMPARE(codes(u"大田区"_s, ota({{1, u"蒲田"}})), QStringList());
}

void AddressSearchTest::prefectureLimitsTheSearch()
{
    Builder builder;
    const Bytes groups = builder.municipality(Tokyo, u"田", 2, 10000, Builder::places({{0, u""}})) +
                         builder.municipality(28, u"田", 2, 67500, Builder::places({{0, u""}}));
    builder.image.addAddressKey(u"千代", groups);
    QCOMPARE(codes(u"東京都千代田区"_s, builder.image), QStringList{u"1000000"_s});
    QCOMPARE(codes(u"兵庫県千代田区"_s, builder.image), QStringList{u"6750000"_s});
    QCOMPARE(codes(u"千代田区"_s, builder.image), QStringList({u"1000000"_s, u"6750000"_s}));
    QCOMPARE(codes(u"北海道千代田区"_s, builder.image), QStringList());
}

void AddressSearchTest::prefectureWithoutItsEndingIsNoPrefecture()
{
    Builder builder;
    const Bytes group = builder.municipality(23, u"", 1, 44000, Builder::places({{0, u""}}));
    builder.image.addAddressKey(u"愛知", group);
    QCOMPARE(codes(u"愛知"_s, builder.image), QStringList()); // a key, but no 市
    QCOMPARE(codes(u"愛知市"_s, builder.image), QStringList{u"4400000"_s});
    QCOMPARE(codes(u"東京愛知市"_s, builder.image), QStringList());
}

void AddressSearchTest::addressThatFitsNothingHasNoCode_data()
{
    QTest::addColumn<QString>("address");
    QTest::newRow("nothing") << QString();
    QTest::newRow("another municipality") << u"品川区"_s;
    QTest::newRow("another ending") << u"大田市蒲田"_s;
    QTest::newRow("another place") << u"大田区羽田"_s;
    QTest::newRow("prefecture alone") << u"東京都"_s;
    QTest::newRow("prefecture and nothing behind") << u"神奈川県"_s;
}

void AddressSearchTest::addressThatFitsNothingHasNoCode()
{
    QFETCH(QString, address);
    OpenImages files(ota({{1, u"蒲田"}}).bytes());
    QCOMPARE(codes(address, files.info()), QStringList());
    char result[8] = "1234567";
    QCOMPARE(Adr2ZipSearch(jisBytes(address).constData(), 1, result, files.info()), 0);
    QCOMPARE(result[0], '\0');
}

void AddressSearchTest::addressOfOneCharacterHasNoCode()
{
    Image image = ota({{0, u""}});
    image.address1 = jis(u"大") + Bytes(2, '\0') + u16(0) + image.address1;
    QCOMPARE(codes(u"大"_s, image), QStringList());
}

void AddressSearchTest::oddAddressIsRefused()
{
    OpenImages files(ota({{0, u""}}).bytes());
    char result[8] = "1234567";
    const QByteArray odd = jisBytes(u"大田区"_s) + '!';
    QCOMPARE(Adr2ZipSearch(odd.constData(), 1, result, files.info()), int(YDIC_BAD_INPUT));
    QCOMPARE(result[0], '\0');
}

void AddressSearchTest::highBitsAreIgnored()
{
    OpenImages files(ota({{1, u"蒲田"}}).bytes());
    char result[8] = {};
    QCOMPARE(Adr2ZipSearch(stored(u"東京都大田区蒲田").data(), 1, result, files.info()), 1);
    QCOMPARE(QByteArray(result), QByteArray("1440001"));
}

void AddressSearchTest::maximumIsKept()
{
    OpenImages files(ota({{1, u"蒲田"}, {2, u"蒲田"}, {3, u"蒲田"}}).bytes());
    QCOMPARE(codes(u"大田区蒲田"_s, files.info(), 2), QStringList({u"1440001"_s, u"1440002"_s}));
    QCOMPARE(codes(u"大田区蒲田"_s, files.info(), 3).size(), 3);
    char nothing = '#';
    QCOMPARE(Adr2ZipSearch(jisBytes(u"大田区蒲田"_s).constData(), 0, &nothing, files.info()), 0);
    QCOMPARE(nothing, '#');
}

void AddressSearchTest::candidatesBehindTheHundredthAreLost()
{
    Bytes records;
    for (uint8_t last2 = 1; last2 < 100; ++last2)
        records += record(last2, stored(u"蒲"));
    Builder builder;
    const Bytes groups = builder.municipality(Tokyo, u"", 2, 14400, records + record(99, stored(u"蒲田"))) +
                         builder.municipality(Tokyo, u"", 2, 14500, record(1, stored(u"蒲田")));
    builder.image.addAddressKey(u"大田", groups);
    QCOMPARE(codes(u"大田区蒲田"_s, builder.image), QStringList{u"1440099"_s});
    QCOMPARE(codes(u"大田区蒲"_s, builder.image).size(), 99);
}

void AddressSearchTest::spellingsFindThePlace_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("place");
    QTest::newRow("old form typed") << u"大田区澁谷瀧澤"_s << u"澁谷滝沢"_s;
    QTest::newRow("old form printed") << u"大田区滝沢"_s << u"瀧澤"_s;
    QTest::newRow("ヶ as が") << u"大田区丘が崎"_s << u"丘ヶ崎"_s;
    QTest::newRow("ケ as ヶ") << u"大田区丘ヶ崎"_s << u"丘ケ崎"_s;
    QTest::newRow("ノ as の") << u"大田区井の頭"_s << u"井ノ頭"_s;
    QTest::newRow("之 as の") << u"大田区井の頭"_s << u"井之頭"_s;
    QTest::newRow("full-width digit") << u"大田区３番町"_s << u"三番町"_s;
    QTest::newRow("two digits") << u"大田区２３番町"_s << u"二十三番町"_s;
    QTest::newRow("two digits printed") << u"大田区二十三番町"_s << u"２３番町"_s;
    QTest::newRow("大字") << u"大田区大字山田字川"_s << u"山田川"_s;
    QTest::newRow("番地") << u"大田区山田３番地"_s << u"山田三番"_s;
    QTest::newRow("dash for 丁目") << u"大田区山田３−５"_s << u"山田三丁目"_s;
    QTest::newRow("dash for 丁目 and 番") << u"大田区山田３−５−１"_s << u"山田三丁目五番一"_s;
    QTest::newRow("通り as 通") << u"大田区青山通北"_s << u"青山通り北"_s;
    QTest::newRow("通 as 通り") << u"大田区青山通り北"_s << u"青山通北"_s;
    QTest::newRow("町 left out") << u"大田区東山"_s << u"東山町"_s;
    QTest::newRow("町 left out before a number") << u"大田区東山３−５"_s << u"東山町"_s;
}

void AddressSearchTest::spellingsFindThePlace()
{
    QFETCH(QString, address);
    QFETCH(QString, place);
    const std::u16string text = place.toStdU16String();
    QCOMPARE(codes(address, ota({{1, text}, {2, u"雪谷"}})), QStringList{u"1440001"_s});
}

void AddressSearchTest::streetsOfKyotoAreCut()
{
    Builder builder;
    const Bytes group = builder.municipality(Kyoto, u"市中京", 2, 60481,
                                             Builder::places({{0, u""}, {72, u"場之町"}, {73, u"烏丸"}}));
    builder.image.addAddressKey(u"京都", group);
    QCOMPARE(codes(u"京都市中京区烏丸通三条上ル場之町"_s, builder.image), QStringList{u"6048172"_s});
    QCOMPARE(codes(u"京都府京都市中京区烏丸通三条上る場ノ町"_s, builder.image), QStringList{u"6048172"_s});
}

void AddressSearchTest::joOfSapporoMayBeLeftOut_data()
{
    QTest::addColumn<QString>("address");
    QTest::newRow("as printed") << u"札幌市中央区南一条西二丁目"_s;
    QTest::newRow("digits") << u"札幌市中央区南１条西２丁目"_s;
    QTest::newRow("条 left out") << u"札幌市中央区南１西２"_s;
    QTest::newRow("条 left out, numerals") << u"札幌市中央区南一西二"_s;
    QTest::newRow("prefecture") << u"北海道札幌市中央区南１西２−３"_s;
}

void AddressSearchTest::joOfSapporoMayBeLeftOut()
{
    QFETCH(QString, address);
    Builder builder;
    const Bytes group =
        builder.municipality(Hokkaido, u"市中央", 2, 6000,
                             Builder::places({{1, u"南一条西二"}, {2, u"南二条西二"}, {3, u"南一条東二"}}));
    builder.image.addAddressKey(u"札幌", group);
    QCOMPARE(codes(address, builder.image), QStringList{u"0600001"_s});
}

void AddressSearchTest::kashimaMeansBothCities()
{
    QCOMPARE(codes(u"鹿島市"_s, kashima()), QStringList({u"3140000"_s, u"8491300"_s}));
    QCOMPARE(codes(u"鹿島市宮中"_s, kashima()), QStringList{u"3140031"_s});
    QCOMPARE(codes(u"鹿島市高津原"_s, kashima()), QStringList{u"8491311"_s});
}

void AddressSearchTest::kashimaOfSagaIsFound()
{
    QCOMPARE(codes(u"佐賀県鹿島市"_s, kashima()), QStringList{u"8491300"_s});
    QCOMPARE(codes(u"佐賀県鹿島市高津原"_s, kashima()), QStringList{u"8491311"_s});
}

void AddressSearchTest::kashimaOfIbarakiIsFound()
{
    QCOMPARE(codes(u"茨城県鹿島市"_s, kashima()), QStringList{u"3140000"_s});
    QCOMPARE(codes(u"茨城県鹿嶋市宮中"_s, kashima()), QStringList{u"3140031"_s});
}

void AddressSearchTest::oldKashimaMeansIbaraki()
{
    QCOMPARE(codes(u"鹿嶋市"_s, kashima()), QStringList{u"3140000"_s});
    QCOMPARE(codes(u"鹿嶋市高津原"_s, kashima()), QStringList{u"3140000"_s});
}

void AddressSearchTest::oldKashimaOfSagaIsNothing()
{
    QCOMPARE(codes(u"佐賀県鹿嶋市"_s, kashima()), QStringList());
}

void AddressSearchTest::kashimaWithoutSecondRangeMeansIbaraki()
{
    Image image = kashima();
    image.secondStart = 0;
    QCOMPARE(codes(u"鹿島市"_s, image), QStringList{u"3140000"_s});
}

void AddressSearchTest::kashimaThatIsNoCityHasNoSecondRange()
{
    QCOMPARE(codes(u"鹿島町"_s, kashima()), QStringList{u"9290900"_s});
    QCOMPARE(codes(u"佐賀県鹿島町"_s, kashima()), QStringList());
}

void AddressSearchTest::completeAddressesOfKashimaAreNormalised()
{
    Image image = kashima();
    const Bytes complete = record(1, u8(YDIC_MARK_COMPLETE) + u24(8491312) + stored(u"佐賀県／鹿嶋市瀧"));
    const uint32_t offset = image.nextReference() + YDIC_CHUNK_HEADER;
    image.addChunk(92910, 1, complete);
    image.secondStart = static_cast<uint16_t>(image.address2.size());
    image.address2 +=
        group(Saga, Bytes(), 1, reference(offset, static_cast<uint32_t>(complete.size()), true));
    image.secondEnd = static_cast<uint16_t>(image.address2.size());
    QCOMPARE(codes(u"佐賀県鹿島市滝"_s, image), QStringList{u"8491312"_s});
}

void AddressSearchTest::failureBeforeTheSecondRangeEndsTheSearch()
{
    Image image = kashima();
    image.address1.replace(6 + 4, 2, u16(static_cast<uint32_t>(image.address2.size())));
    image.address2 += group(Ibaraki, Bytes(), 1, reference(0xFFFFFF, 10));
    QCOMPARE(codes(u"鹿島市"_s, image), QStringList{u"failure -2"_s});
}

void AddressSearchTest::patchAddsCandidates()
{
    const Image dictionary = ota({{0, u""}, {1, u"蒲田"}});
    const Image patch = patchOf(ota({{7, u"蒲田本町"}}));
    QCOMPARE(codes(u"大田区蒲田本町"_s, dictionary, patch), QStringList{u"1440007"_s});
    QCOMPARE(codes(u"大田区蒲田西"_s, dictionary, patch), QStringList{u"1440001"_s});
}

void AddressSearchTest::patchTakesCandidatesAway()
{
    const Image dictionary = ota({{0, u""}, {1, u"蒲田"}});
    const Bytes removed = u8(YDIC_MARK_CANCELS) + stored(u"蒲田");
    const Image patch = patchOf(ota(record(1, removed)));
    QCOMPARE(codes(u"大田区蒲田"_s, dictionary), QStringList{u"1440001"_s});
    QCOMPARE(codes(u"大田区蒲田"_s, dictionary, patch), QStringList{u"1440000"_s});
    const Image both =
        patchOf(ota(record(0, u8(YDIC_MARK_CANCELS) + u8(YDIC_MARK_WHOLE)) + record(1, removed)));
    QCOMPARE(codes(u"大田区蒲田"_s, dictionary, both), QStringList());
}

void AddressSearchTest::patchMovesAPlace()
{
    const Image dictionary = ota({{1, u"蒲田"}});
    const Image patch =
        patchOf(ota(record(1, u8(YDIC_MARK_CANCELS) + stored(u"蒲田")) + record(2, stored(u"蒲田"))));
    QCOMPARE(codes(u"東京都大田区蒲田"_s, dictionary, patch), QStringList{u"1440002"_s});
}

void AddressSearchTest::patchWithoutTheKeyChangesNothing()
{
    QCOMPARE(codes(u"大田区蒲田"_s, ota({{1, u"蒲田"}}), patchOf(Image())), QStringList{u"1440001"_s});
}

void AddressSearchTest::patchIsNotReadUnlessInUse()
{
    OpenImages files(ota({{1, u"蒲田"}}).bytes(), patchOf(ota({{2, u"蒲田"}})).bytes());
    QCOMPARE(codes(u"大田区蒲田"_s, files.info()).size(), 2);
    files.info()->hasPatch = 0;
    QCOMPARE(codes(u"大田区蒲田"_s, files.info()), QStringList{u"1440001"_s});
}

void AddressSearchTest::failureOfThePatchDiscardsTheCandidates()
{
    OpenImages files(ota({{1, u"蒲田"}}).bytes(), Bytes(200, '\0'));
    QCOMPARE(codes(u"大田区蒲田"_s, files.info()), QStringList{u"failure -2"_s});
}

void AddressSearchTest::patchHasItsOwnOneByteText()
{
    Image dictionary = ota(record(1, u8(109)));
    dictionary.ask1ji = jis(u"蒲");
    Image patch = patchOf(ota(record(2, u8(109))));
    patch.ask1ji = jis(u"羽");
    QCOMPARE(codes(u"大田区蒲"_s, dictionary, patch), QStringList{u"1440001"_s});
    QCOMPARE(codes(u"大田区羽"_s, dictionary, patch), QStringList{u"1440002"_s});
}

void AddressSearchTest::failureOfTheDictionaryEndsTheSearch()
{
    Bytes file = ota({{1, u"蒲田"}}).bytes();
    file.resize(file.size() - 1); // in level 2 of the address index
    OpenImages cut(file);
    char result[8] = "1234567";
    QCOMPARE(Adr2ZipSearch(jisBytes(u"大田区蒲田"_s).constData(), 1, result, cut.info()), int(YDIC_NOT_READ));
    QCOMPARE(result[0], '\0');
    OpenImages withPatch(file, patchOf(ota({{2, u"蒲田"}})).bytes());
    QCOMPARE(codes(u"大田区蒲田"_s, withPatch.info()), QStringList{u"failure -2"_s});
    file.resize(255); // the header is read with what follows it
    OpenImages header(file);
    QCOMPARE(codes(u"大田区蒲田"_s, header.info()), QStringList{u"failure -2"_s});
}

void AddressSearchTest::noMemoryIsToldAndNothingLost()
{
    OpenImages files(ota({{1, u"蒲田"}}).bytes());
    const QByteArray address = jisBytes(u"大田区蒲田"_s);
    char result[8] = {};
    for (int allocations = 0; allocations < 3; ++allocations) { // the buffer, the slice, its groups
        memoryfaults::reset(allocations);
        const int found = Adr2ZipSearch(address.constData(), 1, result, files.info());
        const int left = memoryfaults::blocks;
        memoryfaults::reset();
        QCOMPARE(found, int(YDIC_NO_MEMORY));
        QCOMPARE(left, 0);
    }
    memoryfaults::reset(3);
    const int found = Adr2ZipSearch(address.constData(), 1, result, files.info());
    memoryfaults::reset();
    QCOMPARE(found, 1);
}

void AddressSearchTest::everyPathFreesWhatItAllocated()
{
    Builder builder;
    const Bytes good = builder.municipality(Tokyo, u"", 2, 14400, Builder::places({{1, u"蒲田"}}));
    builder.image.addAddressKey(u"大田", good);
    builder.image.addAddressKey(u"品川", group(Tokyo, Bytes(), 2, reference(0xFFFFFF, 10)));
    builder.image.addAddressKey(u"目黒", group(Tokyo, Bytes(), 9, Bytes()));
    OpenImages files(builder.image.bytes());
    for (const QString &address : {u"大田区蒲田"_s, u"品川区"_s, u"目黒区"_s, u"港区"_s, u"大"_s}) {
        const QByteArray jis = jisBytes(address);
        char result[8] = {};
        memoryfaults::reset();
        const int found = Adr2ZipSearch(jis.constData(), 1, result, files.info());
        QCOMPARE(memoryfaults::blocks, 0);
        QCOMPARE(found, address == u"大田区蒲田"_s ? 1 : address == u"品川区"_s ? int(YDIC_NOT_READ) : 0);
    }
}

void AddressSearchTest::largeMunicipalityIsSearchedQuickly()
{
    Builder builder;
    Bytes references;
    const auto add = [&](uint32_t firstFive, const Bytes &records) {
        const uint32_t offset = builder.image.nextReference();
        references += reference(offset, builder.image.addChunk(firstFive, 0, records));
    };
    Bytes records;
    for (uint8_t last2 = 1; last2 < 100; ++last2)
        records += record(last2, stored(u"雪谷一丁目瀧澤町"));
    for (uint32_t firstFive = 14400; firstFive < 14412; ++firstFive)
        add(firstFive, records);
    add(14412, record(1, stored(u"雪谷一丁目滝野")));
    builder.image.addAddressKey(u"大田", group(Tokyo, Bytes(), 2, references));
    OpenImages files(builder.image.bytes());
    const QByteArray address = jisBytes(u"東京都大田区雪谷１丁目滝野"_s);
    char result[8] = {};
    qint64 best = INT64_MAX;
    for (int i = 0; i < 50; ++i) {
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(Adr2ZipSearch(address.constData(), 1, result, files.info()), 1);
        best = std::min(best, timer.nsecsElapsed());
    }
    QCOMPARE(QByteArray(result), QByteArray("1441201"));
    QVERIFY2(best < 2'000'000, "a search of 1,189 records takes milliseconds");
}

QTEST_GUILESS_MAIN(AddressSearchTest)
#include "addresssearchtest.moc"
