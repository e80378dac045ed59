#include "querytext.h"
#include "ydicaddress_p.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr uint8_t Key = 0;
constexpr uint8_t Work = 1;
constexpr uint16_t Hokkaido = 1;
constexpr uint16_t Tokyo = 13;

const QString Impossible = QStringLiteral("impossible");

/** A text after it was normalised towards the query, and what it lost: "大 -1". */
QString converted(ydic_search *search, const QString &text, uint8_t mode)
{
    char buffer[YDIC_WORK_LENGTH + 3] = {};
    const QByteArray jis = jisBytes(text);
    memcpy(buffer, jis.constData(), static_cast<size_t>(jis.size()));
    auto length = static_cast<int16_t>(jis.size() / 2);
    if (yuragi_conv(buffer, &length, mode, search) != 0)
        return Impossible;
    const QString result = jisText(buffer);
    if (result.size() != length)
        return QStringLiteral("%1 and the length %2").arg(result).arg(length);
    return search->dropMark == 0 ? result : QStringLiteral("%1 -%2").arg(result).arg(search->dropMark);
}

QString converted(const QString &address, const QString &text, uint16_t prefecture = Tokyo)
{
    ydic_search search = normalisedSearch(address);
    search.groupPrefecture = prefecture;
    return converted(&search, text, Work);
}

void columns()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("result");
}

void row(const char *name, const char16_t *address, const char16_t *text, const QString &result)
{
    QTest::newRow(name) << QString::fromUtf16(address) << QString::fromUtf16(text) << result;
}

} // namespace

/** Texts of the dictionary, normalised towards an address. */
class TextConversionTest : public QObject
{
    Q_OBJECT
private slots:
    void textTakesTheFormOfTheQuery_data();
    void textTakesTheFormOfTheQuery();
    void keysLeaveLowNumbersAlone_data();
    void keysLeaveLowNumbersAlone();
    void numbersOfTwoDigitsGetTen_data();
    void numbersOfTwoDigitsGetTen();
    void numbersStayWithoutTenInTheQuery();
    void separatorsBecomeNo_data();
    void separatorsBecomeNo();
    void separatorsOutsideTheTextChangeNothing();
    void riBehindTooriIsOptional_data();
    void riBehindTooriIsOptional();
    void riAtTheStartIsNotInserted();
    void lastCharacterIsOptional_data();
    void lastCharacterIsOptional();
    void joOfHokkaidoIsOptional_data();
    void joOfHokkaidoIsOptional();
    void elsewhereJoHasToBeThere();
    void positionsCountFromWhatTheIndexMatched();
    void textLongerThanItsRoomIsRefused();
    void queryOfFullLengthIsNotPassed();
};

void TextConversionTest::textTakesTheFormOfTheQuery_data()
{
    columns();
    row("variant in the text", u"滝沢", u"瀧澤", u"滝沢"_s);
    row("variant in the query", u"瀧澤", u"滝沢", u"滝沢"_s);
    row("variant in both", u"瀧澤", u"瀧澤", u"滝沢"_s);
    row("another variant", u"滝沢", u"瀧籠", Impossible);
    row("digit in the text", u"三", u"３", u"三"_s);
    row("digit in the query", u"３", u"三", u"三"_s);
    row("digit in both", u"３", u"３", u"三"_s);
    row("nine", u"九", u"９", u"九"_s);
    row("another digit", u"三", u"４", Impossible);
    row("zero", u"千０", u"千０", u"千０"_s);
    row("の", u"井ノ頭", u"井の頭", u"井ノ頭"_s);
    row("ノ", u"井の頭", u"井ノ頭", u"井ノ頭"_s);
    row("之", u"井の頭", u"井之頭", u"井ノ頭"_s);
    row("つ", u"三ッ木", u"三つ木", u"三ツ木"_s);
    row("っ, which isn't of the class", u"三ツ木", u"三っ木", Impossible);
    row("ッ", u"三つ木", u"三ッ木", u"三ツ木"_s);
    row("ツ", u"三ッ木", u"三ツ木", u"三ツ木"_s);
    row("が", u"丘ヶ崎", u"丘が崎", u"丘ケ崎"_s);
    row("ガ", u"丘ヶ崎", u"丘ガ崎", u"丘ケ崎"_s);
    row("ヶ", u"丘ケ崎", u"丘ヶ崎", u"丘ケ崎"_s);
    row("ケ", u"丘ヶ崎", u"丘ケ崎", u"丘ケ崎"_s);
    row("菟", u"兎田", u"菟田", u"兎田"_s);
    row("莵", u"菟田", u"莵田", u"兎田"_s);
    row("兎", u"莵田", u"兎田", u"兎田"_s);
    row("劔", u"剣山", u"劔山", u"剣山"_s);
    row("剱", u"劔山", u"剱山", u"剣山"_s);
    row("剣", u"剱山", u"剣山", u"剣山"_s);
    row("member of another class", u"井ノ頭", u"井が頭", Impossible);
    row("other character where a class is", u"井ノ頭", u"井大頭", Impossible);
    row("other character", u"大山", u"大川", Impossible);
    row("text ends before the query", u"大山川", u"大山", u"大山"_s);
    row("query ends before the text", u"大山", u"大山川", Impossible);
}

void TextConversionTest::textTakesTheFormOfTheQuery()
{
    QFETCH(QString, address);
    QFETCH(QString, text);
    QTEST(converted(address, text), "result");
}

void TextConversionTest::keysLeaveLowNumbersAlone_data()
{
    columns();
    row("one", u"一", u"１", Impossible);
    row("eight", u"八", u"８", Impossible);
    row("eight as it is", u"八", u"八", u"八"_s);
    row("nine", u"九", u"９", u"九"_s);
    row("variant", u"滝", u"瀧", u"滝"_s);
    row("class", u"ケ", u"が", u"ケ"_s);
    row("tens stay digits", u"九十", u"９０", Impossible);
    row("separator", u"九−五", u"九番", u"九ノ"_s);
}

void TextConversionTest::keysLeaveLowNumbersAlone()
{
    QFETCH(QString, address);
    QFETCH(QString, text);
    ydic_search search = normalisedSearch(address);
    QTEST(converted(&search, text, Key), "result");
}

void TextConversionTest::numbersOfTwoDigitsGetTen_data()
{
    columns();
    row("10", u"十番", u"１０番", u"十番"_s);
    row("12", u"十二番", u"１２番", u"十二番"_s);
    row("20", u"二十番", u"２０番", u"二十番"_s);
    row("23", u"二十三番", u"２３番", u"二十三番"_s);
    row("typed as digits", u"２３番", u"二十三番", u"二十三番"_s);
    row("two of them", u"十番二十一", u"１０番２１", u"十番二十一"_s);
    row("three digits", u"十番１２３", u"１０番１２３", u"十番一二三"_s);
    row("four digits", u"十番１２３４", u"１０番１２３４", u"十番一二三四"_s);
    row("zero in front", u"十番０５", u"１０番０５", u"十番０五"_s);
    row("one digit", u"十番５", u"１０番５", u"十番五"_s);
}

void TextConversionTest::numbersOfTwoDigitsGetTen()
{
    QFETCH(QString, address);
    QFETCH(QString, text);
    QTEST(converted(address, text), "result");
}

void TextConversionTest::numbersStayWithoutTenInTheQuery()
{
    QCOMPARE(converted(u"一二番"_s, u"１２番"_s), u"一二番"_s);
}

void TextConversionTest::separatorsBecomeNo_data()
{
    columns();
    row("丁目", u"三−５", u"三丁目五", u"三ノ五"_s);
    row("丁", u"三−５", u"三丁五", u"三ノ五"_s);
    row("番", u"三−５", u"三番五", u"三ノ五"_s);
    row("−", u"三−５", u"三−五", u"三ノ五"_s);
    row("の", u"三−５", u"三の五", u"三ノ五"_s);
    row("之", u"三−５", u"三之五", u"三ノ五"_s);
    row("ノ", u"三−５", u"三ノ五", u"三ノ五"_s);
    row("dash that isn't one of the text's", u"三−５", u"三ー五", Impossible);
    row("目 behind something else", u"三−５", u"三番目五", Impossible);
    row("丁 at the end", u"三−５", u"三丁", u"三ノ"_s);
    row("丁目 at the end", u"三−５", u"三丁目", u"三ノ"_s);
    row("second: 番", u"三−５−１", u"三丁目五番一", u"三ノ五ノ一"_s);
    row("second: −", u"三−５−１", u"三丁目五−一", u"三ノ五ノ一"_s);
    row("second: の", u"三−５−１", u"三丁目五の一", u"三ノ五ノ一"_s);
    row("second: ノ", u"三−５−１", u"三丁目五ノ一", u"三ノ五ノ一"_s);
    row("second: 之", u"三−５−１", u"三丁目五之一", Impossible);
    row("second: 丁目", u"三−５−１", u"三番五丁目一", Impossible);
    row("no separator in the query", u"三の", u"三番", Impossible);
}

void TextConversionTest::separatorsBecomeNo()
{
    QFETCH(QString, address);
    QFETCH(QString, text);
    QTEST(converted(address, text), "result");
}

void TextConversionTest::separatorsOutsideTheTextChangeNothing()
{
    ydic_search search = normalisedSearch(u"三−５丁"_s);
    QCOMPARE(int(search.sepPos1), 1);
    search.consumed = 2; // the separator lies before the text
    QCOMPARE(converted(&search, u"五丁"_s, Work), u"五丁"_s);
    search.consumed = 0; // and behind it
    QCOMPARE(converted(&search, u"三"_s, Work), u"三"_s);
}

void TextConversionTest::riBehindTooriIsOptional_data()
{
    columns();
    row("only in the text", u"烏丸通三条", u"烏丸通り三条", u"烏丸通三条"_s);
    row("only in the query", u"烏丸通り三条", u"烏丸通三条", u"烏丸通り三条"_s);
    row("in the text, at the end", u"烏丸通", u"烏丸通り", u"烏丸通"_s);
    row("something else there", u"烏丸通三条", u"烏丸通四条", Impossible);
    row("nothing there", u"烏丸通", u"烏丸通三", Impossible);
    row("not behind 通", u"烏丸三条", u"烏丸り三条", Impossible);
    row("通 at the start", u"通三条", u"通り三条", Impossible);
    row("behind the last of two", u"青通赤通一", u"青通赤通り一", u"青通赤通一"_s);
    row("behind the first of two", u"青通赤通一", u"青通り赤通一", Impossible);
    row("before 町", u"烏丸通", u"烏丸通町", Impossible);
    row("at the start, where there is no 通", u"滝川", u"り滝川", Impossible);
}

void TextConversionTest::riBehindTooriIsOptional()
{
    QFETCH(QString, address);
    QFETCH(QString, text);
    QTEST(converted(address, text), "result");
}

void TextConversionTest::riAtTheStartIsNotInserted()
{
    ydic_search search = normalisedSearch(u"丸通り三"_s);
    search.consumed = 2;
    QCOMPARE(converted(&search, u"三"_s, Work), u"三"_s);
}

void TextConversionTest::lastCharacterIsOptional_data()
{
    columns();
    row("町, the query ends", u"大", u"大町", u"大 -1"_s);
    row("町, a digit follows", u"大１", u"大町", u"大 -1"_s);
    row("町, a numeral follows", u"大一", u"大町", u"大 -1"_s);
    row("町, nine follows", u"大九", u"大町", u"大 -1"_s);
    row("町, a variant follows", u"大滝", u"大町", Impossible);
    row("町, 十 follows", u"大十", u"大町", u"大 -1"_s);
    row("町, 10 follows", u"大１０", u"大町", u"大 -1"_s);
    row("町, 12 follows", u"大１２", u"大町", u"大 -1"_s);
    row("町, 20 follows", u"大２０", u"大町", u"大 -1"_s);
    row("町, 23 follows", u"大２３", u"大町", u"大 -1"_s);
    row("町, zero follows", u"大０", u"大町", Impossible);
    row("町, something else follows", u"大山", u"大町", Impossible);
    row("町 of a longer text", u"東山元", u"東山町", u"東山 -1"_s);
    row("町 of a text that its number shortened", u"十山", u"１０町", Impossible);
    row("町 in the middle", u"東山", u"東町山", Impossible);
    row("番, the query ends", u"東三", u"東三番", u"東三 -1"_s);
    row("番, something else follows", u"東三西", u"東三番", Impossible);
    row("番, a number follows", u"東三五", u"東三番", Impossible);
    row("another last character", u"東三", u"東三条", Impossible);
}

void TextConversionTest::lastCharacterIsOptional()
{
    QFETCH(QString, address);
    QFETCH(QString, text);
    QTEST(converted(address, text), "result");
}

void TextConversionTest::joOfHokkaidoIsOptional_data()
{
    columns();
    row("the query ends", u"南１", u"南一条", u"南一 -2"_s);
    row("a separator follows", u"南１−２", u"南一条", u"南一"_s);
    row("− follows", u"南１−西", u"南一条", u"南一"_s);
    row("ー follows", u"南１ー西", u"南一条", u"南一"_s);
    row("― follows", u"南１―西", u"南一条", u"南一"_s);
    row("‐ follows", u"南１‐西", u"南一条", u"南一"_s);
    row("の follows", u"南１の西", u"南一条", u"南一"_s);
    row("something else follows", u"南１山", u"南一条", Impossible);
    row("after a numeral", u"南一", u"南一条", u"南一 -2"_s);
    row("after 十", u"南十", u"南十条", u"南十 -2"_s);
    row("after 10", u"南１０", u"南十条", u"南十 -2"_s);
    row("after 12", u"南１２", u"南十二条", u"南十二 -2"_s);
    row("after 20", u"南２０", u"南二十条", u"南二十 -2"_s);
    row("after no number", u"南", u"南条", Impossible);
    row("at the start", u"西", u"条西", Impossible);
    row("before 西", u"南１西２", u"南一条西二", u"南一西二"_s);
    row("before 東", u"南１東２", u"南一条東二", u"南一東二"_s);
    row("before 南", u"西１南２", u"西一条南二", u"西一南二"_s);
    row("before 北", u"西１北２", u"西一条北二", u"西一北二"_s);
    row("before something else", u"南１山２", u"南一条山二", Impossible);
    row("before a direction, after no number", u"南西２", u"南条西二", Impossible);
    row("before another direction", u"南１西２", u"南一条東二", Impossible);
    row("last character of the same row", u"南一", u"南一寿", Impossible);
    row("町 in Hokkaido", u"大山", u"大町", Impossible);
}

void TextConversionTest::joOfHokkaidoIsOptional()
{
    QFETCH(QString, address);
    QFETCH(QString, text);
    QTEST(converted(address, text, Hokkaido), "result");
}

void TextConversionTest::elsewhereJoHasToBeThere()
{
    QCOMPARE(converted(u"南１西２"_s, u"南一条西二"_s, Tokyo), Impossible);
    QCOMPARE(converted(u"南１"_s, u"南一条"_s, Tokyo), Impossible);
    QCOMPARE(converted(u"南１"_s, u"南一条"_s, 0), Impossible);
}

void TextConversionTest::positionsCountFromWhatTheIndexMatched()
{
    ydic_search search = normalisedSearch(u"大田区３−５"_s);
    search.consumed = 3;
    QCOMPARE(converted(&search, u"３丁目五番"_s, Work), u"三ノ五 -1"_s);
}

void TextConversionTest::textLongerThanItsRoomIsRefused()
{
    ydic_search search = normalisedSearch(u"大"_s);
    QCOMPARE(converted(&search, QString(44, u'大'), Work), Impossible); // the query is shorter
    char text[YDIC_WORK_LENGTH + 3] = {};
    int16_t length = 45;
    QCOMPARE(yuragi_conv(text, &length, Work, &search), -1);
    length = INT16_MAX;
    QCOMPARE(yuragi_conv(text, &length, Work, &search), -1);
    length = -1;
    QCOMPARE(yuragi_conv(text, &length, Work, &search), -1);
}

void TextConversionTest::queryOfFullLengthIsNotPassed()
{
    const QString address = u"大山通り"_s + QString(36, u'川');
    const QString without = u"大山通"_s + QString(36, u'川');
    QCOMPARE(address.size(), 40);
    QCOMPARE(converted(address, without), address);
    QCOMPARE(converted(address, without + u"町"_s), address + u" -1"_s);
    QCOMPARE(converted(address, without + u"川"_s), Impossible);
}

QTEST_GUILESS_MAIN(TextConversionTest)
#include "textconversiontest.moc"
