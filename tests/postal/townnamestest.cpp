#include "townnames.h"

#include "numberedlists.h"
#include "source.h"
#include <QTest>

using namespace ZipDict;

namespace {

QString text(std::u16string_view characters)
{
    return QString::fromUtf16(characters.data(), qsizetype(characters.size()));
}

std::u16string wide(const QString &characters)
{
    return characters.toStdU16String();
}

template <typename Strings> QStringList list(const Strings &strings)
{
    QStringList texts;
    for (const auto &string : strings)
        texts << text(string);
    return texts;
}

SourceRow rowOf(uint32_t code, std::u16string_view municipality, std::u16string_view town)
{
    SourceRow row;
    row.line = 1;
    row.code = code;
    row.prefecture = u"東京都";
    row.municipality = municipality;
    row.town = town;
    return row;
}

} // namespace

/** What printed towns mean. */
class TownNamesTest : public QObject
{
    Q_OBJECT
private slots:
    void itemsOfLists_data();
    void itemsOfLists();
    void numbersOfLists_data();
    void numbersOfLists();
    void numbersAreBounded();
    void printedTowns_data();
    void printedTowns();
    void areasLeadToTheirCode_data();
    void areasLeadToTheirCode();
    void areasOfOneCodeAreNoAliases();
    void aliasesAreBounded();
    void brokenBracketsAreRead_data();
    void brokenBracketsAreRead();
    void longListsAreShortened_data();
    void longListsAreShortened();
    void addressesFitTheirResult();
    void placesAreSortedByCode();
    void samePlaceIsThereOnce();
    void businessesShowAddressAndName();
    void businessKeepsItsNameBeforeItsBlock();
};

void TownNamesTest::itemsOfLists_data()
{
    QTest::addColumn<QString>("printed");
    QTest::addColumn<QStringList>("items");
    QTest::newRow("one") << "甲" << QStringList{"甲"};
    QTest::newRow("several") << "甲、乙、丙" << QStringList{"甲", "乙", "丙"};
    QTest::newRow("inner list") << "甲「１、２を除く」、乙〔丙、丁〕"
                                << QStringList{"甲「１、２を除く」", "乙〔丙、丁〕"};
    QTest::newRow("closed too often") << "甲」」、乙" << QStringList{"甲」」", "乙"};
    QTest::newRow("never closed") << "甲「乙、丙" << QStringList{"甲「乙、丙"};
    QTest::newRow("empty items") << "、甲" << QStringList{"", "甲"};
}

void TownNamesTest::itemsOfLists()
{
    QFETCH(QString, printed);
    const std::u16string characters = wide(printed);
    QTEST(list(listItems(characters)), "items");
}

void TownNamesTest::numbersOfLists_data()
{
    QTest::addColumn<QString>("printed");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("range") << "９～１１丁目" << QStringList{"９丁目", "１０丁目", "１１丁目"};
    QTest::newRow("unit at both ends") << "１条～３条" << QStringList{"１条", "２条", "３条"};
    QTest::newRow("unit of the next item") << "１、３～４丁目" << QStringList{"１丁目", "３丁目", "４丁目"};
    QTest::newRow("part of a 丁目") << "１～２丁目、５丁目１～１０番地" << QStringList{"１丁目", "２丁目"};
    QTest::newRow("numbers of 番地") << "１、３～５番地" << QStringList{};
    QTest::newRow("numbers behind 番地")
        << "１丁目、３丁目５、１３－４、２０番地、２丁目" << QStringList{"１丁目", "２丁目"};
    QTest::newRow("numbers before 番地") << "１、３番地、５丁目" << QStringList{"５丁目"};
    QTest::newRow("地割 with the name once")
        << "種市第１地割～第３地割" << QStringList{"種市第１地割", "種市第２地割", "種市第３地割"};
    QTest::newRow("地割 with the name twice")
        << "湯田９地割～湯田１０地割" << QStringList{"湯田９地割", "湯田１０地割"};
    QTest::newRow("another name at the end") << "湯田９地割～湯本１０地割" << QStringList{};
    QTest::newRow("another unit at the end") << "１条～３丁目" << QStringList{};
    QTest::newRow("downwards") << "３～１丁目" << QStringList{};
    QTest::newRow("open end") << "３～" << QStringList{};
    QTest::newRow("no number") << "丁目" << QStringList{};
    QTest::newRow("huge number") << "１～９９９９９丁目" << QStringList{};
    QTest::newRow("name without a unit") << "本町１～３" << QStringList{};
}

void TownNamesTest::numbersOfLists()
{
    QFETCH(QString, printed);
    QTEST(list(numberedNames(wide(printed), 60)), "names");
}

void TownNamesTest::numbersAreBounded()
{
    QCOMPARE(numberedNames(u"１～９９９９丁目", 60).size(), 60U);
    QCOMPARE(numberedNames(u"１～５、１～９丁目", 7).size(), 7U);
}

void TownNamesTest::printedTowns_data()
{
    QTest::addColumn<QString>("municipality");
    QTest::addColumn<QString>("printed");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("matched");
    QTest::addColumn<QStringList>("aliases");
    const QString ward = "千代田区";
    const QStringList none;

    QTest::newRow("plain") << ward << "有楽町"
                           << "有楽町"
                           << "有楽町" << none;
    QTest::newRow("not listed") << ward << "以下に掲載がない場合"
                                << ""
                                << "" << none;
    QTest::newRow("nothing") << ward << ""
                             << ""
                             << "" << none;

    QTest::newRow("all of a village") << "利島村"
                                      << "利島村一円"
                                      << ""
                                      << "" << none;
    QTest::newRow("all of a village in a 郡") << "南佐久郡北相木村"
                                              << "北相木村一円"
                                              << ""
                                              << "" << none;
    QTest::newRow("all of another village") << "利島村"
                                            << "新島村一円"
                                            << "新島村一円"
                                            << "新島村一円" << none;
    QTest::newRow("town named 一円") << "犬上郡多賀町"
                                     << "一円"
                                     << "一円"
                                     << "一円" << none;
    QTest::newRow("lots behind the name") << "猿島郡境町"
                                          << "境町の次に番地がくる場合"
                                          << ""
                                          << "" << none;
    QTest::newRow("some lots behind the name") << "北都留郡小菅村"
                                               << "小菅村の次に１～６６３番地がくる場合"
                                               << "１～６６３番地"
                                               << "" << none;
    QTest::newRow("some lots, with a remark") << "仲多度郡琴平町"
                                              << "琴平町の次に４２７番地以降がくる場合（川西）"
                                              << "４２７番地以降（川西）"
                                              << "" << none;

    QTest::newRow("all but buildings") << ward << "大手町（次のビルを除く）"
                                       << "大手町"
                                       << "大手町" << none;
    QTest::newRow("others") << ward << "大手町（その他）"
                            << "大手町"
                            << "大手町" << none;
    QTest::newRow("any 丁目") << "京都市下京区"
                              << "突抜（丁目）"
                              << "突抜"
                              << "突抜" << none;
    QTest::newRow("any 番地") << "京都市伏見区"
                              << "聚楽町（番地）"
                              << "聚楽町"
                              << "聚楽町" << none;
    QTest::newRow("all towns") << "京都市左京区"
                               << "広河原（各町）"
                               << "広河原"
                               << "広河原" << none;
    QTest::newRow("all of it") << "十勝郡浦幌町"
                               << "厚内（全域）"
                               << "厚内"
                               << "厚内" << none;
    QTest::newRow("unknown floor") << ward << "丸の内ＪＰタワー（地階・階層不明）"
                                   << "丸の内ＪＰタワー"
                                   << "丸の内ＪＰタワー" << none;

    QTest::newRow("one 丁目") << ward << "一ツ橋（１丁目）"
                              << "一ツ橋１丁目"
                              << "一ツ橋" << QStringList{"一ツ橋１丁目"};
    QTest::newRow("one 丁") << "堺市北区"
                            << "東上野芝町（２丁）"
                            << "東上野芝町２丁"
                            << "東上野芝町" << QStringList{"東上野芝町２丁"};
    QTest::newRow("a floor behind a number")
        << ward << "東池袋サンシャイン６０（２７階）"
        << "東池袋サンシャイン６０（２７階）"
        << "東池袋サンシャイン６０" << QStringList{"東池袋サンシャイン６０２７階"};
    QTest::newRow("a floor") << ward << "丸の内ＪＰタワー（２９階）"
                             << "丸の内ＪＰタワー２９階"
                             << "丸の内ＪＰタワー" << QStringList{"丸の内ＪＰタワー２９階"};
    QTest::newRow("a floor of a part")
        << "名古屋市中村区"
        << "名駅ミッドランドスクエア（高層棟）（２階）"
        << "名駅ミッドランドスクエア（高層棟）２階"
        << "名駅ミッドランドスクエア"
        << QStringList{"名駅ミッドランドスクエア２階", "名駅ミッドランドスクエア高層棟２階"};

    QTest::newRow("range of 丁目") << "札幌市中央区"
                                   << "大通西（１～３丁目）"
                                   << "大通西（１～３丁目）"
                                   << "大通西" << QStringList{"大通西１丁目", "大通西２丁目", "大通西３丁目"};
    QTest::newRow("list of 丁目") << ward << "富士見（１、３～４丁目）"
                                  << "富士見（１、３～４丁目）"
                                  << "富士見" << QStringList{"富士見１丁目", "富士見３丁目", "富士見４丁目"};
    QTest::newRow("range of 番地") << "小樽市"
                                   << "天神（１～５５番地）"
                                   << "天神（１～５５番地）"
                                   << "天神" << none;
    QTest::newRow("inner remark") << "牧之原市"
                                  << "牧之原（１～９番地「２、３番地を除く」）"
                                  << "牧之原（１～９番地「２、３番地を除く」）"
                                  << "牧之原" << none;
    QTest::newRow("地割 in brackets") << "宮古市"
                                      << "川井（第９地割～第１０地割）"
                                      << "川井（第９地割～第１０地割）"
                                      << "川井" << QStringList{"川井第９地割", "川井第１０地割"};
    QTest::newRow("地割 without brackets")
        << "和賀郡西和賀町"
        << "湯田１９地割～湯田２０地割"
        << "湯田１９地割～湯田２０地割"
        << "湯田１９地割～湯田２０地割" << QStringList{"湯田１９地割", "湯田２０地割"};
    QTest::newRow("地割 and areas") << "九戸郡洋野町"
                                    << "種市第１地割～第２地割（八木）"
                                    << "種市第１地割～第２地割（八木）"
                                    << "種市第１地割～第２地割"
                                    << QStringList{"種市第１地割", "種市第２地割"};

    QTest::newRow("two towns") << "和賀郡西和賀町"
                               << "樺沢１６地割、樺沢１７地割"
                               << "樺沢１６地割、樺沢１７地割"
                               << "樺沢１６地割、樺沢１７地割" << QStringList{"樺沢１６地割", "樺沢１７地割"};
    QTest::newRow("two areas of a town")
        << "豊橋市"
        << "岩田町居村、北郷中"
        << "岩田町居村、北郷中"
        << "岩田町居村、北郷中" << QStringList{"岩田町居村", "北郷中", "岩田町北郷中"};
    QTest::newRow("three towns") << "新城市"
                                 << "井道、奥井道、内井道"
                                 << "井道、奥井道、内井道"
                                 << "井道、奥井道、内井道" << QStringList{"井道", "奥井道", "内井道"};
    QTest::newRow("number in a name") << "名張市"
                                      << "桔梗が丘８番町"
                                      << "桔梗が丘８番町"
                                      << "桔梗が丘８番町" << none;
}

void TownNamesTest::printedTowns()
{
    QFETCH(QString, municipality);
    QFETCH(QString, printed);
    const TownName name = townNameOf(wide(municipality), wide(printed), false);
    QTEST(text(name.shown), "shown");
    QTEST(text(name.matched), "matched");
    QTEST(list(name.aliases), "aliases");
}

void TownNamesTest::areasLeadToTheirCode_data()
{
    QTest::addColumn<QString>("municipality");
    QTest::addColumn<QString>("remark");
    QTest::addColumn<QStringList>("aliases");
    QTest::newRow("areas") << "六戸町"
                           << "内金矢、内山" << QStringList{"町内金矢", "町内山"};
    QTest::newRow("area with exceptions") << "六戸町"
                                          << "七百、下久保「１７４を除く」" << QStringList{"町七百"};
    QTest::newRow("exceptions") << "六戸町"
                                << "無番地を除く" << QStringList{};
    QTest::newRow("numbers") << "六戸町"
                             << "１、２－３、４の２・４、５～６" << QStringList{};
    QTest::newRow("lots") << "六戸町"
                          << "松本３６７番地、９９番地以上" << QStringList{};
    QTest::newRow("others") << "六戸町"
                            << "国見、国見その他" << QStringList{"町国見"};
    QTest::newRow("joined areas") << "六戸町"
                                  << "逆巻・前倉・結東" << QStringList{"町逆巻", "町前倉", "町結東"};
    QTest::newRow("nothing before ・") << "六戸町"
                                       << "・北" << QStringList{"町北"};
    QTest::newRow("number in a name") << "六戸町"
                                      << "第１号、小伝谷６７" << QStringList{"町第１号", "町小伝谷６７"};
    QTest::newRow("streets of Kyoto") << "京都市中京区"
                                      << "烏丸通三条上る、御幸町通" << QStringList{};
    QTest::newRow("streets elsewhere") << "六戸町"
                                       << "元町通" << QStringList{"町元町通"};
    QTest::newRow("area of Kyoto") << "京都市左京区"
                                   << "雲ケ畑" << QStringList{"町雲ケ畑"};
    QTest::newRow("said twice") << "六戸町"
                                << "内山、内山" << QStringList{"町内山"};
}

void TownNamesTest::areasLeadToTheirCode()
{
    QFETCH(QString, municipality);
    QFETCH(QString, remark);
    const TownName name = townNameOf(wide(municipality), wide("町（" + remark + "）"), true);
    QTEST(list(name.aliases), "aliases");
    QCOMPARE(text(name.shown), "町（" + remark + "）");
}

void TownNamesTest::areasOfOneCodeAreNoAliases()
{
    const std::vector<Place> one = placesOf({rowOf(1, u"港区", u"町（北）"), rowOf(1, u"港区", u"町（南）")});
    QCOMPARE(one.size(), 2U);
    QVERIFY(one[0].aliases.empty());
    const std::vector<Place> two =
        placesOf({rowOf(1, u"港区", u"町（北）"), rowOf(2, u"港区", u"町（その他）")});
    QCOMPARE(list(two[0].aliases), QStringList{"町北"});
    const std::vector<Place> apart =
        placesOf({rowOf(1, u"港区", u"町（北）"), rowOf(2, u"北区", u"町（南）")});
    QVERIFY(apart[0].aliases.empty());
}

void TownNamesTest::aliasesAreBounded()
{
    std::u16string printed = u"町（甲";
    for (char16_t character = u'一'; character < u'一' + 200; ++character)
        printed += u"、" + std::u16string(1, character);
    QCOMPARE(townNameOf(u"港区", printed + u"）", true).aliases.size(), MaximumAliases);
    QCOMPARE(townNameOf(u"港区", u"町（１～９０丁目）", true).aliases.size(), MaximumAliases);
}

void TownNamesTest::brokenBracketsAreRead_data()
{
    QTest::addColumn<QString>("printed");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("matched");
    QTest::newRow("never closed") << "町（北"
                                  << "町（北）"
                                  << "町";
    QTest::newRow("never opened") << "町）北"
                                  << "町北"
                                  << "町北";
    QTest::newRow("closed twice") << "町（北））"
                                  << "町（北）"
                                  << "町";
    QTest::newRow("nested") << "町（北（南）東）西"
                            << "町西（北（南）東）"
                            << "町西";
    QTest::newRow("nothing else") << "（"
                                  << ""
                                  << "";
    QTest::newRow("nothing inside") << "町（）"
                                    << "町"
                                    << "町";
    QTest::newRow("condition of nothing") << "の次にがくる場合"
                                          << "の次にがくる場合"
                                          << "の次にがくる場合";
    QTest::newRow("overlapping condition") << "区の次にくる場合"
                                           << "区の次にくる場合"
                                           << "区の次にくる場合";
}

void TownNamesTest::brokenBracketsAreRead()
{
    QFETCH(QString, printed);
    const TownName name = townNameOf(u"港区", wide(printed), true);
    QTEST(text(name.shown), "shown");
    QTEST(text(name.matched), "matched");
}

void TownNamesTest::longListsAreShortened_data()
{
    QTest::addColumn<QString>("shown");
    QTest::addColumn<int>("room");
    QTest::addColumn<QString>("shortened");
    QTest::newRow("fits") << "町（甲、乙、丙）" << 8 << "町（甲、乙、丙）";
    QTest::newRow("one area less") << "町（甲、乙、丙）" << 7 << "町（甲、他）";
    QTest::newRow("long area at the end") << "町（甲、乙、丙丁戊）" << 8 << "町（甲、乙、他）";
    QTest::newRow("one area") << "町（甲乙丙）" << 5 << "町";
    QTest::newRow("inner list stays whole")
        << "町（甲、乙「丙、丁」、戊己庚辛）" << 14 << "町（甲、乙「丙、丁」、他）";
    QTest::newRow("inner list goes whole") << "町（甲、乙「丙、丁」、戊己庚辛）" << 12 << "町（甲、他）";
    QTest::newRow("no brackets") << "甲、乙、丙" << 3 << "甲、乙、丙";
    QTest::newRow("no room") << "町（甲、乙、丙）" << 0 << "町";
}

void TownNamesTest::longListsAreShortened()
{
    QFETCH(QString, shown);
    QFETCH(int, room);
    QTEST(text(shortenedTown(wide(shown), size_t(room))), "shortened");
}

void TownNamesTest::addressesFitTheirResult()
{
    const std::vector<Place> places = placesOf(
        {rowOf(1, u"上北郡六戸町",
               u"犬落瀬（内金矢、内山、岡沼、金沢、金矢、上淋代、木越、権現沢、四木、七百、下淋代、高森）"),
         rowOf(2, u"上北郡六戸町", u"犬落瀬（その他）")});
    QCOMPARE(text(places[0].town), "犬落瀬（内金矢、内山、岡沼、金沢、金矢、上淋代、木越、他）");
    QCOMPARE(shownAddress(places[0]), u"東京都／上北郡六戸町" + places[0].town);
    QCOMPARE(places[0].aliases.size(), 12U);
    QCOMPARE(text(places[0].aliases.back()), "犬落瀬高森");
}

void TownNamesTest::placesAreSortedByCode()
{
    const std::vector<Place> places =
        placesOf({rowOf(2, u"港区", u"乙"), rowOf(1, u"港区", u"丁"), rowOf(2, u"港区", u"甲")});
    QCOMPARE(places.size(), 3U);
    QCOMPARE(text(places[0].town), "丁");
    QCOMPARE(text(places[1].town), "乙");
    QCOMPARE(text(places[2].town), "甲");
    QCOMPARE(places[0].prefecture, 13);
}

void TownNamesTest::samePlaceIsThereOnce()
{
    const std::vector<Place> places =
        placesOf({rowOf(1, u"港区", u"町（その他）"), rowOf(1, u"港区", u"町（番地）"),
                  rowOf(1, u"北区", u"町"), rowOf(2, u"港区", u"町")});
    QCOMPARE(places.size(), 3U);
    // Cut to the same text, they keep the names of both.
    const std::u16string name(36, u'町');
    const std::vector<Place> cut = placesOf(
        {rowOf(1, u"港区", name + u"（北）"), rowOf(1, u"港区", name + u"（南）"), rowOf(2, u"港区", name)});
    QCOMPARE(cut.size(), 2U);
    QCOMPARE(list(cut[0].aliases), (QStringList{text(name) + "北", text(name) + "南"}));
}

void TownNamesTest::businessesShowAddressAndName()
{
    SourceRow row = rowOf(1, u"港区", u"芝（北）");
    row.business = u"あ銀行";
    row.businessBlock = u"１丁目２－３";
    const std::vector<Place> places = placesOf({row, rowOf(2, u"港区", u"芝（南）")});
    QCOMPARE(text(places[0].town), "芝（北）１丁目２－３　あ銀行");
    QVERIFY(places[0].isCodeOnly);
    QVERIFY(places[0].matched.empty());
    QVERIFY(places[0].aliases.empty());
    QVERIFY(!places[1].isCodeOnly);
    QVERIFY(places[1].aliases.empty()); // the code of the business is none of the town's
}

void TownNamesTest::businessKeepsItsNameBeforeItsBlock()
{
    SourceRow row = rowOf(1, u"港区", u"芝");
    row.businessBlock = u"１丁目２－３４";
    row.business = std::u16string(25, u'あ'); // fills the forty characters
    QCOMPARE(shownAddress(placesOf({row})[0]), u"東京都／港区芝１丁目２－３４　" + row.business);
    row.business += u'い';
    QCOMPARE(shownAddress(placesOf({row})[0]), u"東京都／港区芝　" + row.business);
}

QTEST_GUILESS_MAIN(TownNamesTest)
#include "townnamestest.moc"
