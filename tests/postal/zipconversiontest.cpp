#include "zipconversion.h"
#include "fakedictionary.h"
#include <QtTest>

namespace {

/** A handle: the stand-ins don't look into it. */
ydic_info handle;

QStringList cities(const QList<KYAddressItem> &items)
{
    QStringList list;
    for (const KYAddressItem &item : items)
        list.append(item.city);
    return list;
}

struct Found
{
    QStringList cities;
    QString zip;
};

Found fromZip(const QString &zip, int mode)
{
    QString foundZip = "never written";
    const QList<KYAddressItem> items = GetKyAddressListFromZip(&handle, zip, &foundZip, mode);
    return {cities(items), foundZip};
}

} // namespace

class ZipConversionTest : public QObject
{
    Q_OBJECT
private slots:
    void init() { dictionary = FakeDictionary(); }

    void digitsOfACode_data();
    void digitsOfACode();
    void labelOfACode_data();
    void labelOfACode();
    void textFromJis();
    void noTextFromJis();
    void cutTextEndsInOneReplacement();
    void bytesThatAreNoCharacterAreReplaced();
    void textLongerThanAnyAddressComesWhole();
    void textToJis_data();
    void textToJis();
    void addressIsEncodedLikeAnyText();
    void typedAddressBecomesFullWidth_data();
    void typedAddressBecomesFullWidth();

    void findsTheCode();
    void splitsAtTheFirstSolidus();
    void placeWithoutAPrefecture();
    void twentyPlacesAtMost();
    void codeThatIsMissingLeadsToTheNextOfItsArea();
    void codeBehindTheLastOfItsAreaLeadsToTheArea();
    void codeBehindTheLastOfAllLeadsToTheArea();
    void areaWithoutItsFirstCodeLeadsToWhatFollows();
    void nothingBehindTheAreaEither();
    void neighbours_data();
    void neighbours();
    void unknownModeFindsNothing();
    void noDigitsAskNothing();
    void noHandleAsksNothing();
    void failedSearchIsNothingFound();
    void failedNeighbourEndsTheSearch();
    void foundCodeMayBeLeftOut();

    void addressOfOneCode();
    void addressOfSeveralCodes();
    void severalCodesOfWhichNoneHasAPlace();
    void addressThatFitsNothing();
    void addressInAnotherModeOrNullAsksNothing();
    void failedAddressSearchIsNothingFound();
};

void ZipConversionTest::digitsOfACode_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("digits");
    QTest::newRow("whole") << "1000001"
                           << "1000001";
    QTest::newRow("with a hyphen") << "100-0001"
                                   << "1000001";
    QTest::newRow("full-width") << "１００－０００９"
                                << "1000009";
    QTest::newRow("both widths, other characters") << "〒1０0-0001 東京"
                                                   << "1000001";
    QTest::newRow("padded on the right") << "100"
                                         << "1000000";
    QTest::newRow("one zero") << "0"
                              << "0000000";
    QTest::newRow("long stays long") << "123456789"
                                     << "123456789";
    QTest::newRow("digits of other scripts are dropped") << "٣1"
                                                         << "1000000";
    QTest::newRow("neighbours of the digits are dropped") << "/0:９／："
                                                          << "0900000";
}

void ZipConversionTest::digitsOfACode()
{
    QFETCH(QString, text);
    QTEST(EncodeZipStr(text), "digits");
    for (const char *nothing : {"", "-", "東京都"})
        QVERIFY(EncodeZipStr(nothing).isNull());
}

void ZipConversionTest::labelOfACode_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("label");
    QTest::newRow("code") << "1234567"
                          << "１２３－４５６７";
    QTest::newRow("with a hyphen") << "890-0000"
                                   << "８９０－００００";
    QTest::newRow("padded") << "10"
                            << "１００－００００";
    QTest::newRow("long") << "12345678"
                          << "１２３－４５６７８";
}

void ZipConversionTest::labelOfACode()
{
    QFETCH(QString, text);
    QTEST(EncodeZipLabel(text), "label");
    QVERIFY(EncodeZipLabel("東京都").isNull());
}

void ZipConversionTest::textFromJis()
{
    QCOMPARE(YDicJisToUnicode("\x45\x6C\x35\x7E\x45\x54\x21\x3F\x40\x69"), "東京都／千");
    QCOMPARE(YDicJisToUnicode("\x21\x5D"), "－");
}

void ZipConversionTest::noTextFromJis()
{
    QVERIFY(YDicJisToUnicode(nullptr).isNull());
    QCOMPARE(YDicJisToUnicode(""), "");
}

void ZipConversionTest::cutTextEndsInOneReplacement()
{
    QCOMPARE(YDicJisToUnicode("\x45\x6C\x35"), "東\uFFFD");
    // As the search cuts it, a place that begins behind an odd number of bytes.
    const QByteArray cut = QByteArray("\x42\x67").repeated(39) + "\x3A";
    QCOMPARE(YDicJisToUnicode(cut.constData()), QString(39, u'大') + QChar(0xFFFD));
}

void ZipConversionTest::bytesThatAreNoCharacterAreReplaced()
{
    QCOMPARE(YDicJisToUnicode("\x7E\x7E\x45\x6C"), "\uFFFD東");
    QCOMPARE(YDicJisToUnicode("\xFF\x45\x6C"), "\uFFFD東");
}

void ZipConversionTest::textLongerThanAnyAddressComesWhole()
{
    const QByteArray text = QByteArray("\x42\x67").repeated(500);
    QCOMPARE(YDicJisToUnicode(text.constData()), QString(500, u'大'));
}

void ZipConversionTest::textToJis_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("encoded");
    QTest::newRow("Kanji") << "東京都"
                           << "\x45\x6C\x35\x7E\x45\x54";
    QTest::newRow("one character") << "町"
                                   << "\x44\x2E";
    QTest::newRow("kana, digit, sign") << "ア１／"
                                       << "\x25\x22\x23\x31\x21\x3F";
    QTest::newRow("both minus signs") << "－−"
                                      << "\x21\x5D\x21\x5D";
    QTest::newRow("full-width blank") << "東　"
                                      << "\x45\x6C\x21\x21";
    QTest::newRow("last row of all") << "熙"
                                     << "\x74\x26";
    QTest::newRow("Kanji of no standard") << "髙山"
                                          << "\x22\x2E\x3B\x33";
    QTest::newRow("half-width between") << "東a京"
                                        << "\x45\x6C\x22\x2E\x35\x7E";
    QTest::newRow("half-width kana") << "東ｱ"
                                     << "\x45\x6C\x22\x2E";
    QTest::newRow("a maker's sign") << "東①"
                                    << "\x45\x6C\x22\x2E";
    QTest::newRow("outside the first plane") << "東𠮷京"
                                             << "\x45\x6C\x22\x2E\x35\x7E";
    QTest::newRow("half a pair") << QString("東") + QChar(0xD842) << "\x45\x6C\x22\x2E";
    QTest::newRow("escape") << "東\x1B(B"
                            << "\x45\x6C\x22\x2E\x22\x2E\x22\x2E";
}

void ZipConversionTest::textToJis()
{
    QFETCH(QString, text);
    QTEST(UnicodeToYDicJis(text), "encoded");
    // Without the two escapes.
    for (const char *nothing : {"", "a", "Tokyo", "Chiyoda-ku", "ﾄｳｷｮｳ", "①", "𠮷", " "})
        QVERIFY2(UnicodeToYDicJis(nothing).isNull(), nothing);
}

void ZipConversionTest::addressIsEncodedLikeAnyText()
{
    QCOMPARE(EncodeAdrStr("東京1"), "\x45\x6C\x35\x7E\x22\x2E");
    QVERIFY(EncodeAdrStr("1").isNull());
}

void ZipConversionTest::typedAddressBecomesFullWidth_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("widened");
    QTest::newRow("as it is") << "千代田区外神田３－２"
                              << "千代田区外神田３－２";
    QTest::newRow("half-width number") << "外神田3-12"
                                       << "外神田３－１２";
    QTest::newRow("half-width letters") << "外神田Abz!~"
                                        << "外神田Ａｂｚ！～";
    QTest::newRow("half-width kana") << "ﾆｾｺﾁﾖｳｶﾞﾊﾟ"
                                     << "ニセコチヨウガパ";
    QTest::newRow("blanks of both widths") << " 東京都 千代田区　外神田\n"
                                           << "東京都千代田区外神田";
    QTest::newRow("sign of the standard stays") << "虎ノ門ヶ々〇"
                                                << "虎ノ門ヶ々〇";
    QTest::newRow("number in a ring") << "神田③"
                                      << "神田３";
    QTest::newRow("Kanji of no standard") << "髙山"
                                          << "髙山";
}

void ZipConversionTest::typedAddressBecomesFullWidth()
{
    QFETCH(QString, typed);
    QTEST(FullWidthAdrStr(typed), "widened");
}

void ZipConversionTest::findsTheCode()
{
    dictionary.places = {{"1000001", {"東京都／千代田区千代田", "東京都／千代田区皇居外苑"}},
                         {"1000002", {"東京都／千代田区"}}};
    QString found;
    const QList<KYAddressItem> items = GetKyAddressListFromZip(&handle, "１００－０００１", &found, 1);
    QCOMPARE(items.size(), 2);
    QCOMPARE(items[1].state, "東京都");
    QCOMPARE(items[1].city, "千代田区皇居外苑");
    QCOMPARE(items[1].zip, "1000001");
    QVERIFY(!items[1].showZip);
    QCOMPARE(found, "1000001");
    QCOMPARE(dictionary.asked, QByteArrayList{"search 1000001"});
}

void ZipConversionTest::splitsAtTheFirstSolidus()
{
    dictionary.places = {{"1000001", {"東京都／千代田区／中"}}};
    const QList<KYAddressItem> items = GetKyAddressListFromZip(&handle, "1000001", nullptr, 1);
    QCOMPARE(items.value(0).state, "東京都");
    QCOMPARE(items.value(0).city, "千代田区／中");
}

void ZipConversionTest::placeWithoutAPrefecture()
{
    dictionary.places = {{"1000001", {"千代田区"}}};
    const QList<KYAddressItem> items = GetKyAddressListFromZip(&handle, "1000001", nullptr, 1);
    QCOMPARE(items.value(0).state, "");
    QCOMPARE(items.value(0).city, "千代田区");
}

void ZipConversionTest::twentyPlacesAtMost()
{
    QStringList places;
    for (int i = 0; i < 25; ++i)
        places.append(QString(38, QChar(0x5927)) + "／" + QChar(0xFF21 + i) + "終終");
    dictionary.places = {{"1000001", places}};
    const Found found = fromZip("1000001", 1);
    QCOMPARE(found.cities.size(), 20);
    QCOMPARE(found.cities.first(), "Ａ");
    QCOMPARE(found.cities.last(), "Ｔ");
}

void ZipConversionTest::codeThatIsMissingLeadsToTheNextOfItsArea()
{
    dictionary.places = {{"1000001", {"東／一"}}, {"1000005", {"東／五"}}, {"1010000", {"東／百"}}};
    const Found found = fromZip("1000003", 1);
    QCOMPARE(found.zip, "1000005");
    QCOMPARE(found.cities, QStringList{"五"});
}

void ZipConversionTest::codeBehindTheLastOfItsAreaLeadsToTheArea()
{
    dictionary.places = {{"1000000", {"東／頭"}}, {"1000005", {"東／五"}}, {"1010000", {"東／百"}}};
    const Found found = fromZip("1009999", 1);
    QCOMPARE(found.zip, "1000000");
    QCOMPARE(found.cities, QStringList{"頭"});
    const QByteArrayList steps = {"search 1009999", "next 1009999", "search 1000000"};
    QCOMPARE(dictionary.asked, steps);
}

void ZipConversionTest::codeBehindTheLastOfAllLeadsToTheArea()
{
    dictionary.places = {{"9990000", {"山／頭"}}};
    QCOMPARE(fromZip("9999999", 1).zip, "9990000");
}

void ZipConversionTest::areaWithoutItsFirstCodeLeadsToWhatFollows()
{
    dictionary.places = {{"1000001", {"東／一"}}, {"1010000", {"東／百"}}};
    const Found found = fromZip("1000002", 1);
    QCOMPARE(found.zip, "1000001");
    QCOMPARE(found.cities, QStringList{"一"});
    // Also when that is of another area: the one asked for has none.
    QCOMPARE(fromZip("0990000", 1).zip, "1000001");
}

void ZipConversionTest::nothingBehindTheAreaEither()
{
    dictionary.places = {{"1000001", {"東／一"}}};
    const Found found = fromZip("2000000", 1);
    QVERIFY(found.cities.isEmpty());
    QVERIFY(found.zip.isNull());
}

void ZipConversionTest::neighbours_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("zip");
    QTest::newRow("next") << "1000001" << 0 << "2000000";
    QTest::newRow("previous") << "2000000" << 255 << "1000001";
    QTest::newRow("of the label's text") << "１００－０００１" << 0 << "2000000";
    QTest::newRow("highest") << "2000000" << 0 << QString();
    QTest::newRow("lowest") << "1000001" << 255 << QString();
}

void ZipConversionTest::neighbours()
{
    dictionary.places = {{"1000001", {"東／一"}}, {"2000000", {"東／二"}}};
    QFETCH(QString, from);
    QFETCH(int, mode);
    QFETCH(QString, zip);
    const Found found = fromZip(from, mode);
    QCOMPARE(found.zip, zip);
    QCOMPARE(found.cities.isEmpty(), zip.isNull());
    QCOMPARE(dictionary.asked.size(), 1);
}

void ZipConversionTest::unknownModeFindsNothing()
{
    dictionary.places = {{"1000001", {"東／一"}}};
    for (const int mode : {-1, 2, 254, 256}) {
        const Found found = fromZip("1000001", mode);
        QVERIFY(found.cities.isEmpty());
        QVERIFY(found.zip.isNull());
    }
    QVERIFY(dictionary.asked.isEmpty());
}

void ZipConversionTest::noDigitsAskNothing()
{
    dictionary.places = {{"0000000", {"東／一"}}};
    QVERIFY(fromZip("東京", 1).zip.isNull());
    QVERIFY(fromZip(QString(), 0).zip.isNull());
    QVERIFY(dictionary.asked.isEmpty());
}

void ZipConversionTest::noHandleAsksNothing()
{
    QString found = "never written";
    bool multi = true;
    QVERIFY(GetKyAddressListFromZip(nullptr, "1000001", &found, 1).isEmpty());
    QVERIFY(found.isNull());
    QVERIFY(GetKyAddressListFromAdr(nullptr, "\x45\x6C", &multi, 1).isEmpty());
    QVERIFY(!multi);
    QVERIFY(dictionary.asked.isEmpty());
}

void ZipConversionTest::failedSearchIsNothingFound()
{
    dictionary.failure = YDIC_NOT_READ;
    for (const int mode : {0, 1, 255}) {
        const Found found = fromZip("1000001", mode);
        QVERIFY(found.cities.isEmpty());
        QVERIFY(found.zip.isNull());
    }
}

void ZipConversionTest::failedNeighbourEndsTheSearch()
{
    dictionary.places = {{"1000000", {"東／頭"}}};
    dictionary.nearFailure = YDIC_NOT_READ;
    QVERIFY(fromZip("1000003", 1).cities.isEmpty());
}

void ZipConversionTest::foundCodeMayBeLeftOut()
{
    dictionary.places = {{"1000001", {"東／一"}}};
    QCOMPARE(cities(GetKyAddressListFromZip(&handle, "1000001", nullptr, 1)), QStringList{"一"});
}

void ZipConversionTest::addressOfOneCode()
{
    dictionary.places = {{"1000001", {"東京都／千代田", "東京都／皇居"}}};
    dictionary.codes = {{jis("千代田"), {"1000001"}}};
    bool multi = true;
    const QList<KYAddressItem> items =
        GetKyAddressListFromAdr(&handle, UnicodeToYDicJis("千代田"), &multi, 1);
    QVERIFY(!multi);
    QCOMPARE(cities(items), QStringList({"千代田", "皇居"}));
    QCOMPARE(items[0].state, "東京都");
    QCOMPARE(items[0].zip, "100-0001");
    QVERIFY(!items[0].showZip);
}

void ZipConversionTest::addressOfSeveralCodes()
{
    dictionary.places = {{"1000001", {"東京都／千代田"}}, {"2000002", {"東京都／清瀬"}}};
    dictionary.codes = {{jis("東京都"), {"2000002", "3000003", "1000001"}}};
    bool multi = false;
    const QList<KYAddressItem> items =
        GetKyAddressListFromAdr(&handle, UnicodeToYDicJis("東京都"), &multi, 1);
    QVERIFY(multi);
    QCOMPARE(cities(items), QStringList({"清瀬", "千代田"}));
    QCOMPARE(items[0].zip, "200-0002");
    QCOMPARE(items[1].zip, "100-0001");
    QVERIFY(items[0].showZip && items[1].showZip);
    QCOMPARE(cities(GetKyAddressListFromAdr(&handle, UnicodeToYDicJis("東京都"), nullptr, 1)).size(), 2);
}

void ZipConversionTest::severalCodesOfWhichNoneHasAPlace()
{
    dictionary.codes = {{jis("東京都"), {"2000002", "3000003"}}};
    bool multi = true;
    QVERIFY(GetKyAddressListFromAdr(&handle, UnicodeToYDicJis("東京都"), &multi, 1).isEmpty());
    QVERIFY(!multi);
}

void ZipConversionTest::addressThatFitsNothing()
{
    bool multi = true;
    QVERIFY(GetKyAddressListFromAdr(&handle, UnicodeToYDicJis("東"), &multi, 1).isEmpty());
    QVERIFY(!multi);
    QCOMPARE(dictionary.asked, QByteArrayList{"address \x45\x6C"});
}

void ZipConversionTest::addressInAnotherModeOrNullAsksNothing()
{
    for (const int mode : {0, 2, 255})
        QVERIFY(GetKyAddressListFromAdr(&handle, UnicodeToYDicJis("東"), nullptr, mode).isEmpty());
    bool multi = true;
    QVERIFY(GetKyAddressListFromAdr(&handle, QString(), &multi, 1).isEmpty());
    QVERIFY(!multi);
    QVERIFY(dictionary.asked.isEmpty());
}

void ZipConversionTest::failedAddressSearchIsNothingFound()
{
    dictionary.failure = YDIC_NO_MEMORY;
    bool multi = true;
    QVERIFY(GetKyAddressListFromAdr(&handle, UnicodeToYDicJis("東"), &multi, 1).isEmpty());
    QVERIFY(!multi);
}

QTEST_GUILESS_MAIN(ZipConversionTest)
#include "zipconversiontest.moc"
