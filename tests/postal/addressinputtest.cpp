#include "querytext.h"

#include <QTest>

/** What is taken off an address before it is normalised. */
class AddressInputTest : public QObject
{
    Q_OBJECT
private slots:
    void everyPrefectureIsTakenOff();
    void prefecturesWithoutEndingStay_data();
    void prefecturesWithoutEndingStay();
    void onlyTheFirstEndingIsLookedUp_data();
    void onlyTheFirstEndingIsLookedUp();
    void fewerThanEightBytesHaveNoPrefecture_data();
    void fewerThanEightBytesHaveNoPrefecture();
    void eightBytesHaveOne();
    void onePrefectureOnly();
    void prefectureAlone();
    void kindsAreLookedUpApart_data();
    void kindsAreLookedUpApart();
    void unknownKind();
    void highBitsAreIgnored();
    void byteOfNothingButItsHighBitEnds();
    void oddNumberOfBytesIsRefused_data();
    void oddNumberOfBytesIsRefused();
    void emptyAddress();
    void eightyBytesAreTaken_data();
    void eightyBytesAreTaken();
    void oldQueryIsCleared();
};

const QStringList Names =
    QString(
        "北海道 青森県 岩手県 宮城県 秋田県 山形県 福島県 茨城県 栃木県 群馬県 埼玉県 千葉県 東京都 神奈川県 "
        "新潟県 富山県 石川県 福井県 山梨県 長野県 岐阜県 静岡県 愛知県 三重県 滋賀県 京都府 大阪府 兵庫県 "
        "奈良県 和歌山県 鳥取県 島根県 岡山県 広島県 山口県 徳島県 香川県 愛媛県 高知県 福岡県 佐賀県 長崎県 "
        "熊本県 大分県 宮崎県 鹿児島県 沖縄県")
        .split(u' ');

void AddressInputTest::everyPrefectureIsTakenOff()
{
    QCOMPARE(Names.size(), 47);
    for (int i = 0; i < Names.size(); ++i) {
        const ydic_search search = searchOf(Names[i] + "今川町");
        QCOMPARE(int{search.prefecture}, i + 1);
        QCOMPARE(queryText(search), QString("今川町"));
    }
}

void AddressInputTest::prefecturesWithoutEndingStay_data()
{
    QTest::addColumn<QString>("address");
    for (const char *address : {"東京千代田区", "大阪中央区", "京都市中京区", "北海上川町", "愛知名古屋市",
                                "神奈川横浜市", "和歌山市今町"})
        QTest::newRow(address) << QString(address);
}

void AddressInputTest::prefecturesWithoutEndingStay()
{
    QFETCH(QString, address);
    const ydic_search search = searchOf(address);
    QCOMPARE(int{search.prefecture}, 0);
    QCOMPARE(queryText(search), address);
}

void AddressInputTest::onlyTheFirstEndingIsLookedUp_data()
{
    QTest::addColumn<QString>("address");
    for (const char *address :
         {"山川県今町", "山川都今町", "山川府今町", "山川道今町", "今山川県町", "大阪県今町", "京都都今町",
          "東京府今町", "山川県県今町", "神奈道県今町", "鹿児県県今町"})
        QTest::newRow(address) << QString(address);
}

void AddressInputTest::onlyTheFirstEndingIsLookedUp()
{
    QFETCH(QString, address);
    const ydic_search search = searchOf(address);
    QCOMPARE(int{search.prefecture}, 0);
    QCOMPARE(queryText(search), address);
}

void AddressInputTest::fewerThanEightBytesHaveNoPrefecture_data()
{
    QTest::addColumn<QString>("address");
    for (const char *address : {"愛知", "東京都", "三重県", "北海道", "津"})
        QTest::newRow(address) << QString(address);
}

void AddressInputTest::fewerThanEightBytesHaveNoPrefecture()
{
    QFETCH(QString, address);
    const ydic_search search = searchOf(address);
    QCOMPARE(int{search.prefecture}, 0);
    QCOMPARE(queryText(search), address);
}

void AddressInputTest::eightBytesHaveOne()
{
    const ydic_search search = searchOf("三重県津");
    QCOMPARE(int{search.prefecture}, 24);
    QCOMPARE(queryText(search), QString("津"));
}

void AddressInputTest::onePrefectureOnly()
{
    const ydic_search search = searchOf("三重県岐阜県津市");
    QCOMPARE(int{search.prefecture}, 24);
    QCOMPARE(queryText(search), QString("岐阜県津市"));
}

void AddressInputTest::prefectureAlone()
{
    const ydic_search search = searchOf("神奈川県");
    QCOMPARE(int{search.prefecture}, 14);
    QCOMPARE(queryText(search), QString());
}

void AddressInputTest::kindsAreLookedUpApart_data()
{
    QTest::addColumn<QString>("head");
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("prefecture");
    const auto row = [](const char *name, const char *head, int kind, int prefecture) {
        QTest::newRow(name) << QString(head) << kind << prefecture;
    };
    row("first of the bisected", "愛知県川", TDFK_KEN_3, 23);
    row("last of the bisected", "兵庫県川", TDFK_KEN_3, 28);
    row("before the bisected", "亜亜県川", TDFK_KEN_3, 0);
    row("behind the bisected", "熙熙県川", TDFK_KEN_3, 0);
    row("between the bisected", "愛川県川", TDFK_KEN_3, 0);
    row("two characters are compared", "愛知川川", TDFK_KEN_3, 23);
    row("not a name of three", "神奈川県", TDFK_KEN_3, 0);
    row("four, first", "鹿児島県", TDFK_KEN_4, 46);
    row("four, last", "和歌山県", TDFK_KEN_4, 30);
    row("three characters are compared", "和歌川県", TDFK_KEN_4, 0);
    row("not a name of four", "愛知県川", TDFK_KEN_4, 0);
    row("fu, first", "京都府川", TDFK_FU, 26);
    row("fu, last", "大阪府川", TDFK_FU, 27);
    row("not a fu", "東京都川", TDFK_FU, 0);
    row("do", "北海道川", TDFK_DO, 1);
    row("not a do", "大阪府川", TDFK_DO, 0);
    row("to", "東京都川", TDFK_TO, 13);
    row("not a to", "北海道川", TDFK_TO, 0);
}

void AddressInputTest::kindsAreLookedUpApart()
{
    QFETCH(QString, head);
    QFETCH(int, kind);
    QFETCH(int, prefecture);
    ydic_search search = {};
    QCOMPARE(check_tdfk(jisBytes(head).constData(), kind, &search), prefecture ? 1 : 0);
    QCOMPARE(int{search.prefecture}, prefecture);
}

void AddressInputTest::unknownKind()
{
    ydic_search search = {};
    QCOMPARE(check_tdfk(jisBytes("東京都川").constData(), 5, &search), 0);
    QCOMPARE(check_tdfk(jisBytes("東京都川").constData(), -1, &search), 0);
}

void AddressInputTest::highBitsAreIgnored()
{
    QByteArray address = jisBytes("東京都千代田区");
    for (int i = 0; i < address.size(); i += 3)
        address[i] = char(address[i] | 0x80);
    ydic_search search = {};
    QCOMPARE(set_moji(address.constData(), &search), 0);
    QCOMPARE(int{search.prefecture}, 13);
    QCOMPARE(queryText(search), QString("千代田区"));
}

void AddressInputTest::byteOfNothingButItsHighBitEnds()
{
    ydic_search search = {};
    QCOMPARE(set_moji((jisBytes("山川") + "\x80\x30\x21").constData(), &search), 0);
    QCOMPARE(queryText(search), QString("山川"));
    QCOMPARE(set_moji((jisBytes("山川") + "\x30\x80\x21").constData(), &search), YDIC_BAD_INPUT);
}

void AddressInputTest::oddNumberOfBytesIsRefused_data()
{
    QTest::addColumn<QByteArray>("address");
    QTest::newRow("one") << QByteArray("\x30");
    QTest::newRow("seven") << jisBytes("三重県") + '\x30';
    QTest::newRow("nine") << jisBytes("三重県津") + '\x30';
    QTest::newRow("81") << jisBytes(QString(40, u'山')) + '\x30';
    QTest::newRow("longer than what is taken") << jisBytes(QString(50, u'山')) + '\x30';
}

void AddressInputTest::oddNumberOfBytesIsRefused()
{
    QFETCH(QByteArray, address);
    ydic_search search = {};
    QCOMPARE(set_moji(address.constData(), &search), -3);
}

void AddressInputTest::emptyAddress()
{
    ydic_search search = {};
    QCOMPARE(set_moji("", &search), 0);
    QCOMPARE(int{search.query[0]}, 0);
    QCOMPARE(int{search.prefecture}, 0);
    yuragi_check(&search);
    QCOMPARE(int{search.queryLen}, 0);
}

void AddressInputTest::eightyBytesAreTaken_data()
{
    QTest::addColumn<QString>("prefecture");
    QTest::addColumn<int>("characters");
    QTest::addColumn<int>("taken");
    QTest::newRow("39") << "" << 39 << 39;
    QTest::newRow("40") << "" << 40 << 40;
    QTest::newRow("41") << "" << 41 << 40;
    QTest::newRow("400") << "" << 400 << 40;
    QTest::newRow("40 behind a prefecture") << "三重県" << 40 << 40;
    QTest::newRow("41 behind a long one") << "神奈川県" << 41 << 40;
}

void AddressInputTest::eightyBytesAreTaken()
{
    QFETCH(QString, prefecture);
    QFETCH(int, characters);
    QFETCH(int, taken);
    const ydic_search search = searchOf(prefecture + QString(characters, u'山'));
    QCOMPARE(queryText(search), QString(taken, u'山'));
    QCOMPARE(int{search.query[80]}, 0);
}

void AddressInputTest::oldQueryIsCleared()
{
    ydic_search search = searchOf(QString(40, u'山'));
    QCOMPARE(set_moji(jisBytes("川").constData(), &search), 0);
    for (int i = 2; i < int(sizeof search.query); ++i)
        QCOMPARE(int{search.query[i]}, 0);
}

QTEST_GUILESS_MAIN(AddressInputTest)
#include "addressinputtest.moc"
