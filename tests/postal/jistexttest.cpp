#include "jistext.h"

#include <QTest>

using namespace ZipDict;

/** Text of the dictionary tools. */
class JisTextTest : public QObject
{
    Q_OBJECT
private slots:
    void everyCharacterComesBack();
    void codesAreThoseOfTheStandard();
    void bothSpellingsHaveTheSameCode();
    void extensionsHaveNoCode();
    void damagedJisShowsAsReplacement();
    void utf8ComesBack();
    void badUtf8IsRefused_data();
    void badUtf8IsRefused();
    void sjisIsRead();
    void badSjisIsRefused_data();
    void badSjisIsRefused();
};

void JisTextTest::everyCharacterComesBack()
{
    int characters = 0;
    for (int row = 0x21; row <= 0x7E; ++row) {
        for (int cell = 0x21; cell <= 0x7E; ++cell) {
            const std::string jis = {static_cast<char>(row), static_cast<char>(cell)};
            const std::u16string text = fromJis(jis);
            if (text == u"\uFFFD")
                continue;
            ++characters;
            QCOMPARE(toJis(text), jis);
        }
    }
    QCOMPARE(characters, 6879); // of JIS X 0208
}

void JisTextTest::codesAreThoseOfTheStandard()
{
    QCOMPARE(jisOf(u'／'), 0x213FU);
    QCOMPARE(jisOf(u'１'), 0x2331U);
    QCOMPARE(jisOf(u'亜'), 0x3021U);
    QCOMPARE(jisOf(u'熙'), 0x7426U);
    QCOMPARE(jisOf(u'a'), 0U);
}

void JisTextTest::bothSpellingsHaveTheSameCode()
{
    QCOMPARE(toJis(u"〜−―"), toJis(u"～－—"));
}

void JisTextTest::extensionsHaveNoCode()
{
    QVERIFY(!toJis(u"①").has_value());
    QVERIFY(!toJis(u"髙").has_value());
}

void JisTextTest::damagedJisShowsAsReplacement()
{
    QCOMPARE(fromJis("\x30\x21\x30"), std::u16string(u"亜\uFFFD"));
    QCOMPARE(fromJis("\x7F\x01"), std::u16string(u"\uFFFD"));
}

void JisTextTest::utf8ComesBack()
{
    const std::u16string text = u"a\u00E9丸の内";
    QCOMPARE(fromUtf8(toUtf8(text)), text);
    QCOMPARE(toUtf8(u"内"), std::string("\xE5\x86\x85"));
}

void JisTextTest::badUtf8IsRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("cut") << QByteArray("\xE5\x86");
    QTest::newRow("no lead byte") << QByteArray("\x86");
    QTest::newRow("second byte") << QByteArray("\xE5\x41\x85");
    QTest::newRow("overlong, two") << QByteArray("\xC0\xAF");
    QTest::newRow("overlong, three") << QByteArray("\xE0\x80\xAF");
    QTest::newRow("surrogate") << QByteArray("\xED\xA0\x80");
    QTest::newRow("four bytes") << QByteArray("\xF0\x9F\x98\x80");
}

void JisTextTest::badUtf8IsRefused()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(!fromUtf8(bytes.toStdString()).has_value());
}

void JisTextTest::sjisIsRead()
{
    QCOMPARE(fromSjis("0\x88\x9F\xB1\x8A\xDB"), std::u16string(u"0亜ｱ丸"));
}

void JisTextTest::badSjisIsRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("cut") << QByteArray("\x88");
    QTest::newRow("trail byte") << QByteArray("\x88\x20");
    QTest::newRow("extension") << QByteArray("\x87\x40");
}

void JisTextTest::badSjisIsRefused()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(!fromSjis(bytes.toStdString()).has_value());
}

QTEST_GUILESS_MAIN(JisTextTest)
#include "jistexttest.moc"
