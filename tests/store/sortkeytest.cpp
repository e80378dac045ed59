#include "sortkey.h"
#include "recordbuilder.h"

#include <QtTest>

using namespace pdtm;

namespace {

SortKeyMaker maker(const QByteArray &expression, const Schema &schema, const char *language = "ja")
{
    return {*SortExpression::parse(bytesOf(expression)), schema, language};
}

int order(const std::string &one, const std::string &other)
{
    const int result = one.compare(other); // bytes, then length
    return result < 0 ? -1 : result > 0 ? 1 : 0;
}

} // namespace

class SortKeyTest : public QObject
{
    Q_OBJECT
private slots:
    void risingValues_data();
    void risingValues();
    void equalKeys_data();
    void equalKeys();
    void secondKeyDecides_data();
    void secondKeyDecides();
    void firstKeyNeverRunsIntoTheSecond();
    void itemsThatTheBoxLacks();
    void lowerCaseCode();
    void longTexts();
    void appendsBehindWhatIsThere();
    void rulesVersion();
};

/** Stored values in rising order; the descending operator turns them round. */
void SortKeyTest::risingValues_data()
{
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<char>("ascending");
    QTest::addColumn<QByteArrayList>("stored");
    const auto text = [](const char *name, const QByteArrayList &stored) {
        QTest::newRow(name) << QByteArray("UTF8") << '\x80' << stored;
    };
    const auto plain = [](const char *name, const char *code, const QByteArrayList &stored) {
        QTest::newRow(name) << QByteArray(code) << '\x82' << stored;
    };
    text("readings", {"", "アイ", "あう", "あお", "か", "が", "きょう", "さとう", "すずき", "たなか",
                      "ティー", "やまだ", "わたなべ"});
    text("kanji as the standard lists them", {"三", "山", "上"});
    text("scripts", {"", "-", "1", "10", "a", "B", "z", "あ", "亜"});
    text("case comes last", {"resume", "Resume", "résumé", "resumes"});
    text("prefix first", {"a", "aa", "aab", "ab"});
    text("text of ignorable characters alone is no empty one", {"", "\x01", "a"});
    text("malformed", {"a", "b", "ba", "b\xC3"});
    plain("bytes of a text", "UTF8",
          {"", raw("\0"), raw("\0\0"), raw("\0\1"), raw("\1"), raw("\1\0"), raw("\1\1"), "\2", "B", "Ba", "a",
           "あ", "三", "上", "\xFF", "\xFF\xFF"});
    plain("uchar", "UCHR", {"", raw("\0"), "\1", "\x7F", "\x80", "\xFF"});
    plain("bit", "BITS", {"", raw("\0"), "\1"});
    plain("ushort", "USH1",
          {"", native<uint16_t>(0), native<uint16_t>(255), native<uint16_t>(256), native<uint16_t>(65535)});
    plain("other ushort", "USH2",
          {"", native<uint16_t>(1), native<uint16_t>(0x0100), native<uint16_t>(0x0201)});
    plain("ulong", "ULNG",
          {"", native<uint32_t>(0), native<uint32_t>(255), native<uint32_t>(256),
           native<uint32_t>(0x01000000), native<uint32_t>(0xFFFFFFFF)});
    plain("color", "COLR", {"", native<uint32_t>(255), native<uint32_t>(256)});
    plain("binary as a number, then others", "BINA",
          {"", native<uint32_t>(255), native<uint32_t>(256), native<uint32_t>(0xFFFFFFFF), "abc", "abcde"});
    plain("time", "TIME",
          {"", timeValue(1999, 12, 31, 23, 59, 59), timeValue(2000, 1, 1), timeValue(2000, 1, 1, 31, 63, 63),
           timeValue(2000, 1, 2)});
    plain("categories", "CTGR", {"", "\1", "\1\2", "\2", "\xF5"});
    // わたなべ, 三, 山, 上 in Shift-JIS
    QTest::newRow("Shift-JIS in text order")
        << QByteArray("SJS1") << '\x80' << QByteArrayList{"",
                                                          "a",
                                                          raw("\x82\xED\x82\xBD\x82\xC8\x82\xD7"),
                                                          raw("\x8E\x4F"),
                                                          raw("\x8E\x52"),
                                                          raw("\x8F\xE3")};
    QTest::newRow("number in the text kind")
        << QByteArray("USH1") << '\x80' << QByteArrayList{"", native<uint16_t>(255), native<uint16_t>(256)};
}

void SortKeyTest::risingValues()
{
    QFETCH(QByteArray, code);
    QFETCH(char, ascending);
    QFETCH(QByteArrayList, stored);
    const Schema schema = everyType();
    const SortKeyMaker up = maker(code + '\xFE' + ascending, schema);
    const SortKeyMaker down = maker(code + '\xFE' + static_cast<char>(ascending + 1), schema);
    for (qsizetype i = 0; i < stored.size(); ++i)
        for (qsizetype j = 0; j < stored.size(); ++j) {
            const TestCard one = TestCard(schema).set(code, stored[i]);
            const TestCard other = TestCard(schema).set(code, stored[j]);
            const int expected = i < j ? -1 : i > j ? 1 : 0;
            const QByteArray place = QByteArray::number(i) + " and " + QByteArray::number(j);
            QVERIFY2(order(up.make(one.view()), up.make(other.view())) == expected, place);
            QVERIFY2(order(down.make(one.view()), down.make(other.view())) == -expected, place);
        }
}

void SortKeyTest::equalKeys_data()
{
    QTest::addColumn<QByteArray>("expression");
    QTest::addColumn<QByteArray>("one");
    QTest::addColumn<QByteArray>("other");
    QTest::newRow("composed or not") << raw("UTF8\xFE\x80") << QByteArray("\xC3\xA9")
                                     << QByteArray("e\xCC\x81");
    QTest::newRow("malformed bytes are all one character")
        << raw("UTF8\xFE\x80") << QByteArray("a\xFF") << QByteArray("a\xFE");
}

void SortKeyTest::equalKeys()
{
    QFETCH(QByteArray, expression);
    QFETCH(QByteArray, one);
    QFETCH(QByteArray, other);
    QVERIFY(one != other);
    const Schema schema = everyType();
    const SortKeyMaker keys = maker(expression, schema);
    QCOMPARE(keys.make(TestCard(schema).set("UTF8", one).view()),
             keys.make(TestCard(schema).set("UTF8", other).view()));
}

void SortKeyTest::secondKeyDecides_data()
{
    QTest::addColumn<QByteArray>("expression");
    QTest::addColumn<QString>("expected"); // the cards by their names, see the test
    QTest::newRow("both up") << raw("UTF8\xFE\x80"
                                    "UCHR\xFE\x82\0")
                             << "e1 e2 a1 a2 b1";
    QTest::newRow("second down") << raw("UTF8\xFE\x80"
                                        "UCHR\xFE\x83\0")
                                 << "e2 e1 a2 a1 b1";
    QTest::newRow("first down") << raw("UTF8\xFE\x81"
                                       "UCHR\xFE\x82\0")
                                << "b1 a1 a2 e1 e2";
    QTest::newRow("both down") << raw("UTF8\xFE\x81"
                                      "UCHR\xFE\x83\0")
                               << "b1 a2 a1 e2 e1";
    QTest::newRow("plain text first") << raw("UTF8\xFE\x82"
                                             "UCHR\xFE\x83\0")
                                      << "e2 e1 a2 a1 b1";
    QTest::newRow("number first") << raw("UCHR\xFE\x83"
                                         "UTF8\xFE\x80\0")
                                  << "e2 a2 e1 a1 b1";
}

void SortKeyTest::secondKeyDecides()
{
    QFETCH(QByteArray, expression);
    QFETCH(QString, expected);
    const Schema schema = everyType();
    const SortKeyMaker keys = maker(expression, schema);
    QMap<std::string, QString> cards; // ordered by key
    for (const char *name : {"a1", "a2", "b1", "e1", "e2"}) {
        const QByteArray text = name[0] == 'e' ? QByteArray() : QByteArray(name, 1);
        const TestCard card =
            TestCard(schema).set("UTF8", text).set("UCHR", QByteArray(1, static_cast<char>(name[1] - '0')));
        cards.insert(keys.make(card.view()), name);
    }
    QCOMPARE(QStringList(cards.values()).join(' '), expected);
}

void SortKeyTest::firstKeyNeverRunsIntoTheSecond()
{
    const Schema schema = everyType();
    for (const QByteArray &first : {raw("UTF8\xFE\x80"), raw("UTF8\xFE\x82"), raw("BINA\xFE\x82")}) {
        const SortKeyMaker keys = maker(first + raw("NAME\xFE\x82"), schema);
        const QByteArray code = first.left(4);
        const TestCard shorter = TestCard(schema).set(code, "a").set("NAME", "zz");
        const TestCard longer = TestCard(schema).set(code, "az").set("NAME", "a");
        QVERIFY(keys.make(shorter.view()) < keys.make(longer.view()));
    }
}

void SortKeyTest::itemsThatTheBoxLacks()
{
    const Schema schema = everyType();
    const TestCard card = TestCard(schema).set("UCHR", "\7");
    QCOMPARE(maker(raw("XXXX\xFE\x80"), schema).make(card.view()), std::string());
    QCOMPARE(maker(raw("XXXX\xFE\x80UCHR\xFE\x82"), schema).make(card.view()),
             maker(raw("UCHR\xFE\x82"), schema).make(card.view()));
}

void SortKeyTest::lowerCaseCode()
{
    const Schema schema = everyType();
    const TestCard card = TestCard(schema).set("NAME", "x");
    QVERIFY(maker(raw("NAME\xFE\x82"), schema).make(card.view()) !=
            maker(raw("NAME\xFE\x82"), schema).make(RecordView()));
}

/** Texts around and beyond the sizes of the buffers that a key is made in. */
void SortKeyTest::longTexts()
{
    const Schema schema = everyType();
    const SortKeyMaker keys = maker(raw("UTF8\xFE\x80"), schema);
    for (const int length : {255, 256, 257, 511, 512, 513, 100000}) {
        const QByteArray text(length, 'k');
        const std::string key = keys.make(TestCard(schema).set("UTF8", text).view());
        QVERIFY(key < keys.make(TestCard(schema).set("UTF8", text + "k").view()));
        QVERIFY(key > keys.make(TestCard(schema).set("UTF8", text.left(length - 1) + "j").view()));
    }
}

void SortKeyTest::appendsBehindWhatIsThere()
{
    const Schema schema = everyType();
    const SortKeyMaker keys = maker(raw("UTF8\xFE\x81"), schema);
    const TestCard card = TestCard(schema).set("UTF8", "あ");
    std::string out = "before";
    keys.append(card.view(), out);
    QCOMPARE(out, "before" + keys.make(card.view()));
}

void SortKeyTest::rulesVersion()
{
    QVERIFY(collatorVersion("ja") != 0);
    QCOMPARE(collatorVersion("ja"), collatorVersion("ja"));
}

QTEST_GUILESS_MAIN(SortKeyTest)
#include "sortkeytest.moc"
