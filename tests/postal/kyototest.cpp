#include "querytext.h"

#include <QTest>

/** Addresses in Kyoto, which name streets in front of the place. */
class KyotoTest : public QObject
{
    Q_OBJECT
private slots:
    void streets_data();
    void streets();
};

void KyotoTest::streets_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<bool>("isCut");
    const auto cut = [](const char *name, const char *typed, const char *expected) {
        QTest::newRow(name) << QString(typed) << QString(expected) << true;
    };
    const auto stays = [](const char *name, const char *typed) {
        QTest::newRow(name) << QString(typed) << QString(typed) << false;
    };
    cut("up, katakana", "京都市中京区烏丸通三条上ル場之町", "京都市中京区場ノ町");
    cut("up", "京都市中京区烏丸通三条上る今町", "京都市中京区今町");
    cut("down", "京都市中京区烏丸通三条下る今町", "京都市中京区今町");
    cut("down, katakana", "京都市中京区烏丸通三条下ル今町", "京都市中京区今町");
    cut("in", "京都市中京区烏丸通川入る今町", "京都市中京区今町");
    cut("in, katakana", "京都市中京区烏丸通川入ル今町", "京都市中京区今町");
    stays("ru of another word", "京都市中京区烏丸通走る今町");
    stays("up without ru", "京都市中京区烏丸通上今町");
    cut("east in", "京都市中京区三条通烏丸東入今町", "京都市中京区今町");
    cut("west in", "京都市中京区三条通烏丸西入今町", "京都市中京区今町");
    cut("south in", "京都市中京区三条通烏丸南入今町", "京都市中京区今町");
    cut("north in", "京都市中京区三条通烏丸北入今町", "京都市中京区今町");
    cut("east in, with ru", "京都市中京区三条通烏丸東入る今町", "京都市中京区今町");
    cut("east in, with ru in katakana", "京都市中京区三条通烏丸東入ル今町", "京都市中京区今町");
    stays("in without a direction", "京都市中京区三条通烏丸川入今町");
    stays("a direction without in", "京都市中京区三条通烏丸東今町");
    cut("east side", "京都市中京区三条通烏丸東側今町", "京都市中京区今町");
    cut("west side", "京都市中京区三条通烏丸西側今町", "京都市中京区今町");
    cut("south side", "京都市中京区三条通烏丸南側今町", "京都市中京区今町");
    cut("north side", "京都市中京区三条通烏丸北側今町", "京都市中京区今町");
    cut("behind, to the east", "京都市中京区三条通烏丸東裏今町", "京都市中京区今町");
    stays("side without a direction", "京都市中京区三条通烏丸川側今町");
    stays("side at the end", "京都市中京区三条通烏丸東側");
    stays("side of a town's name", "京都市中京区三条通烏丸東側町");
    stays("side of a crossing's name", "京都市中京区三条通烏丸東裏辻町");
    cut("side and a crossing that is no town", "京都市中京区三条通烏丸東側辻川", "京都市中京区辻川");
    stays("side behind a town", "京都市中京区三条通烏丸町東側今");
    cut("crossing", "京都市下京区七条通三筋目今町", "京都市下京区今町");
    stays("number of a block is no crossing", "京都市下京区七条通三番目今町");
    stays("crossing without an eye", "京都市下京区七条通三筋今町");
    cut("the last word, up", "京都市中京区三条通東入烏丸上る今町", "京都市中京区今町");
    cut("the last word, in", "京都市中京区烏丸通三条上る寺町東入今町", "京都市中京区今町");
    cut("the last word, side", "京都市中京区烏丸通三条上る東側今町", "京都市中京区今町");
    cut("the last word, crossing", "京都市中京区烏丸通東側三筋目今町", "京都市中京区今町");
    cut("a side of the name behind a street", "京都市中京区烏丸通三条上る東側町", "京都市中京区東側町");
    cut("nothing behind", "京都市中京区烏丸通三条上る", "京都市中京区");
    cut("up inside the name", "京都市中京区烏丸通三条下る上る町", "京都市中京区町");

    cut("short ward", "京都市北区大宮通上る今町", "京都市北区今町");
    cut("short ward, south", "京都市南区大宮通下る今町", "京都市南区今町");
    cut("left", "京都市左京区大宮通下る今町", "京都市左京区今町");
    cut("east", "京都市東山区大宮通下る今町", "京都市東山区今町");
    stays("ward without streets, right", "京都市右京区大宮通上る今町");
    stays("ward without streets, west", "京都市西京区大宮通上る今町");
    stays("ward without streets, mountain", "京都市山科区大宮通上る今町");
    stays("ward without streets, south", "京都市伏見区大宮通上る今町");
    cut("only the ward's own characters count", "京都市右京川大宮通上る今町", "京都市右京川今町");
    stays("another city", "大阪市中央区大宮通上る今町");
    stays("another place in Kyoto", "京都川中央区大宮通上る今町");
    stays("a city that begins so", "京北市中央区大宮通上る今町");
    stays("the ward alone", "京都市北区");
    stays("six characters", "京都市中京区");

    cut("shortest street", "京都市中京区川上る今町", "京都市中京区今町");
    stays("no street in front", "京都市中京区上る今町");
    cut("shortest street of a short ward", "京都市北区川上る今町", "京都市北区今町");
    stays("no street in front, short ward", "京都市北区上る今町");

    cut("block and a town", "京都市中京区烏丸通三条上る二丁目今町", "京都市中京区今町");
    cut("block in digits and a town", "京都市中京区烏丸通三条上る５丁目今川町", "京都市中京区今川町");
    cut("block, the town at once", "京都市中京区烏丸通三条上る二丁目町", "京都市中京区町");
    cut("block alone", "京都市中京区烏丸通三条上る二丁目", "京都市中京区二丁目");
    cut("block and no town", "京都市中京区烏丸通三条上る二丁目今川", "京都市中京区二丁目今川");
    cut("short block", "京都市中京区烏丸通三条上る二丁今川", "京都市中京区今川");
    cut("short block at the end", "京都市中京区烏丸通三条上る二丁", "京都市中京区");
    cut("short block of a town", "京都市中京区烏丸通三条上る二丁町", "京都市中京区二丁町");
    cut("no block", "京都市中京区烏丸通三条上る丁目今町", "京都市中京区丁目今町");
    cut("with its prefecture", "京都府京都市中京区烏丸通三条上る今町", "京都市中京区今町");
}

void KyotoTest::streets()
{
    QFETCH(QString, typed);
    QFETCH(QString, expected);
    QFETCH(bool, isCut);
    const ydic_search search = normalisedSearch(typed);
    QCOMPARE(queryText(search), expected);
    QCOMPARE((search.flags & YDIC_KYOTO_CUT) != 0, isCut);
}

QTEST_GUILESS_MAIN(KyotoTest)
#include "kyototest.moc"
