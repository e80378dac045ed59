#include "japanesetext.h"

#include <functional>
#include <QStringConverter>
#include <QTest>

static QByteArray hex(const QByteArray &digits)
{
    return QByteArray::fromHex(digits);
}

static QByteArray twoBytes(int first, int second)
{
    return QByteArray(1, static_cast<char>(first)) + static_cast<char>(second);
}

static QByteArray kanji(const QByteArray &codes)
{
    return "\x1B$B" + codes + "\x1B(B";
}

static const QChar replacement = QChar::ReplacementCharacter;

class JapaneseTextTest : public QObject
{
    Q_OBJECT
private slots:
    void bothEncodingsBothWays_data();
    void bothEncodingsBothWays();
    void bothSpellingsAreEncoded_data();
    void bothSpellingsAreEncoded();
    void missingCharactersBecomeQuestionMarks_data();
    void missingCharactersBecomeQuestionMarks();
    void undecodableSjisGoesOn_data();
    void undecodableSjisGoesOn();
    void readsForeignJis_data();
    void readsForeignJis();
    void everyTwoByteCodeAgreesWithAnotherTable();
    void everyCodeThatIsNoDuplicateRoundTrips();
    void everyRowAndCellOfJisIsThatOfSjis();
    void everySingleByteIsDecoded();
    void randomBytesDecode();
    void longTextsConvert();
};

void JapaneseTextTest::bothEncodingsBothWays_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("sjis");
    QTest::addColumn<QByteArray>("jis");
    const auto row = [](const char *name, const char *text, const QByteArray &sjis, const QByteArray &jis) {
        QTest::newRow(name) << QString::fromUtf8(text) << sjis << jis;
    };
    row("empty", "", "", "");
    row("ASCII", "Hello\r\n\t~\\", "Hello\r\n\t~\\", "Hello\r\n\t~\\");
    row("kanji", "東京都千代田区", hex("938c8b9e937390e791e393638be6"),
        kanji(hex("456c357e45544069426545443668")));
    row("hiragana", "あ", hex("82a0"), kanji("$\""));
    row("half-width kana", "ｶﾅ", hex("b6c5"), "\x1B(I6E\x1B(B");
    row("ends of the half-width kana", "｡ﾟ", hex("a1df"), "\x1B(I!_\x1B(B");
    row("mixed", "a東ｶb", hex("61938cb662"), "a\x1B$BEl\x1B(I6\x1B(Bb");
    row("line feed", "東\n京", hex("938c0a8b9e"), "\x1B$BEl\x1B(B\n\x1B$B5~\x1B(B");
    row("digit in a ring", "①", hex("8740"), kanji("-!"));
    row("first code", "　", hex("8140"), kanji("!!"));
    row("last of row 1", "◯", hex("81fc"), kanji("\"~"));
    row("last of level 2", "熙", hex("eaa4"), kanji("t&"));
    row("trail byte 7E", "―×", hex("815c817e"), kanji("!=!_"));
    row("trail byte 80", "÷", hex("8180"), kanji("!`"));
}

void JapaneseTextTest::bothEncodingsBothWays()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, sjis);
    QFETCH(QByteArray, jis);
    QCOMPARE(JapaneseText::toSjis(text).toHex(), sjis.toHex());
    QCOMPARE(JapaneseText::fromSjis(sjis), text);
    QCOMPARE(JapaneseText::toJis7(text).toHex(), jis.toHex());
    QCOMPARE(JapaneseText::fromJis7(jis), text);
    QVERIFY(JapaneseText::canEncodeSjis(text));
}

void JapaneseTextTest::bothSpellingsAreEncoded_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("sjis");
    QTest::addColumn<QByteArray>("jis");
    const auto row = [](const char *name, const QString &text, const char *sjis, const char *jis) {
        QTest::newRow(name) << text << QByteArray(sjis) << kanji(jis);
    };
    row("wave dash", QChar(0x301C), "\x81\x60", "!A");
    row("full-width tilde", QChar(0xFF5E), "\x81\x60", "!A");
    row("minus", QChar(0x2212), "\x81\x7C", "!]");
    row("full-width hyphen", QChar(0xFF0D), "\x81\x7C", "!]");
    row("double line", QChar(0x2016), "\x81\x61", "!B");
    row("parallel", QChar(0x2225), "\x81\x61", "!B");
    row("em dash", QChar(0x2014), "\x81\x5C", "!=");
    row("horizontal bar", QChar(0x2015), "\x81\x5C", "!=");
    row("cent", QChar(0xA2), "\x81\x91", "!q");
    row("full-width cent", QChar(0xFFE0), "\x81\x91", "!q");
    row("not", QChar(0xAC), "\x81\xCA", "\"L");
    row("full-width not", QChar(0xFFE2), "\x81\xCA", "\"L");
}

void JapaneseTextTest::bothSpellingsAreEncoded()
{
    QFETCH(QString, text);
    QTEST(JapaneseText::toSjis(text), "sjis");
    QTEST(JapaneseText::toJis7(text), "jis");
    QVERIFY(JapaneseText::canEncodeSjis(text));
}

void JapaneseTextTest::missingCharactersBecomeQuestionMarks_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("sjis");
    QTest::addColumn<QByteArray>("jis");
    QTest::addColumn<bool>("hasSjis");
    QTest::newRow("Hangul") << QString::fromUtf8("a한b") << QByteArray("a?b") << QByteArray("a?b") << false;
    QTest::newRow("pair") << QString::fromUtf8("a😀b") << QByteArray("a?b") << QByteArray("a?b") << false;
    QTest::newRow("pair at the end") << QString::fromUtf8("😀") << QByteArray("?") << QByteArray("?") << false;
    QTest::newRow("half a pair") << QString(QChar(0xD83D)) << QByteArray("?") << QByteArray("?") << false;
    QTest::newRow("second half") << QString(QChar(0xDE00)) + "b" << QByteArray("?b") << QByteArray("?b")
                                 << false;
    QTest::newRow("half before text")
        << QChar(0xD83D) + QString("b") << QByteArray("?b") << QByteArray("?b") << false;
    QTest::newRow("extension kanji") << QString::fromUtf8("髙") << hex("fbfc") << QByteArray("?") << true;
    QTest::newRow("among kanji") << QString::fromUtf8("東﨑京") << hex("938cfab18b9e")
                                 << QByteArray("\x1B$BEl\x1B(B?\x1B$B5~\x1B(B") << true;
    QTest::newRow("escape in the text") << "\x1B$B" << QByteArray("\x1B$B") << QByteArray("?$B") << true;
    QTest::newRow("private use") << QString(QChar(0xE000)) << hex("f040") << QByteArray("?") << true;
}

void JapaneseTextTest::missingCharactersBecomeQuestionMarks()
{
    QFETCH(QString, text);
    QTEST(JapaneseText::toSjis(text), "sjis");
    QTEST(JapaneseText::toJis7(text), "jis");
    QTEST(JapaneseText::canEncodeSjis(text), "hasSjis");
}

void JapaneseTextTest::undecodableSjisGoesOn_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("cut lead byte") << hex("938c8b") << QString::fromUtf8("東") + replacement;
    QTest::newRow("lead byte alone") << hex("93") << QString(replacement);
    QTest::newRow("bad trail byte") << hex("930a41") << QString(replacement) + "\nA";
    QTest::newRow("unassigned code") << hex("854041") << QString(replacement) + "@A";
    QTest::newRow("unassigned, then kanji")
        << hex("8540938c") << QString(replacement) + QString::fromUtf8("@東");
}

void JapaneseTextTest::undecodableSjisGoesOn()
{
    QFETCH(QByteArray, bytes);
    QTEST(JapaneseText::fromSjis(bytes), "text");
}

void JapaneseTextTest::readsForeignJis_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const QByteArray &bytes, const QString &text) {
        QTest::newRow(name) << bytes << text;
    };
    const QString east = QString::fromUtf8("東");
    row("older kanji set", "\x1B$@El\x1B(B", east);
    row("Latin with yen", "\x1B(Ja\\~\x1B$BEl\x1B(Jb", "a\\~" + east + "b");
    row("no closing escape", "\x1B$BEl", east);
    row("line feed among kanji", "\x1B$BEl\nEl\x1B(B", east + "\n" + east);
    row("blank among kanji", "\x1B$BEl El\x1B(B", east + " " + east);
    row("half a code at the end", "\x1B$BE", QString(replacement));
    row("half a code before an escape", "\x1B$BE\x1B(Ba", QString(replacement) + "a");
    row("unassigned code", "\x1B$B)!El\x1B(B", QString(replacement) + east);
    row("unassigned kana", "\x1B(I`6\x1B(B", QString(replacement) + QChar(0xFF76));
    row("unknown escape", "\x1B(Xa", QString(replacement) + "(Xa");
    row("cut escape", "a\x1B$", QString("a") + replacement + "$");
    row("escape at the end", "a\x1B", QString("a") + replacement);
    row("eight bits", "a\xB6\x80z", QString("a") + replacement + replacement + "z");
    row("eight bits among kanji",
        "\x1B$BE\xB6"
        "El\x1B(B",
        QString(replacement) + replacement + east);
    row("zero byte", QByteArray("a\0\x1B$BEl", 7), QString("a") + QChar(0) + east);
}

void JapaneseTextTest::readsForeignJis()
{
    QFETCH(QByteArray, bytes);
    QTEST(JapaneseText::fromJis7(bytes), "text");
}

/** Calls for each code of two bytes that has a character. @return their number */
static int forEachCode(const std::function<void(const QByteArray &code, QChar character)> &visit)
{
    int count = 0;
    for (int lead = 0x81; lead <= 0xFC; ++lead) {
        for (int trail = 0x40; trail <= 0xFC; ++trail) {
            const QByteArray code = twoBytes(lead, trail);
            const QString text = JapaneseText::fromSjis(code);
            const bool isKana = lead >= 0xA0 && lead <= 0xDF;
            if (isKana || text.size() != 1)
                continue;
            visit(code, text[0]);
            ++count;
        }
    }
    return count;
}

void JapaneseTextTest::everyTwoByteCodeAgreesWithAnotherTable()
{
    QStringDecoder other("Shift_JIS");
    if (!other.isValid())
        QSKIP("this build of Qt has no table to compare with");
    int differences = 0;
    const int count = forEachCode([&](const QByteArray &code, QChar character) {
        const QString expected = other(code);
        differences += expected == QString(character) ? 0 : 1;
    });
    QCOMPARE(count, 9604);
    QCOMPARE(differences, 0);
}

void JapaneseTextTest::everyCodeThatIsNoDuplicateRoundTrips()
{
    int same = 0;
    int otherMeaning = 0;
    forEachCode([&](const QByteArray &code, QChar character) {
        const QByteArray again = JapaneseText::toSjis(character);
        same += again == code ? 1 : 0;
        otherMeaning += JapaneseText::fromSjis(again) == QString(character) ? 0 : 1;
    });
    QCOMPARE(same, 9206);
    QCOMPARE(otherMeaning, 0);
}

void JapaneseTextTest::everyRowAndCellOfJisIsThatOfSjis()
{
    int assigned = 0;
    for (int index = 0; index < 94 * 94; ++index) {
        const int lead = index / 188 + (index / 188 < 31 ? 0x81 : 0xC1);
        const int trail = index % 188 + (index % 188 < 63 ? 0x40 : 0x41);
        const QByteArray jis = kanji(twoBytes(0x21 + index / 94, 0x21 + index % 94));
        const QString text = JapaneseText::fromSjis(twoBytes(lead, trail));
        const bool isAssigned = text.size() == 1;
        QCOMPARE(JapaneseText::fromJis7(jis), isAssigned ? text : QString(replacement));
        const bool isCanonical = isAssigned && JapaneseText::toSjis(text) == twoBytes(lead, trail);
        if (isCanonical)
            QCOMPARE(JapaneseText::toJis7(text), jis);
        assigned += isAssigned ? 1 : 0;
    }
    QCOMPARE(assigned, 7336);
}

void JapaneseTextTest::everySingleByteIsDecoded()
{
    for (int byte = 0; byte < 256; ++byte) {
        const QString text = JapaneseText::fromSjis(QByteArray(1, static_cast<char>(byte)));
        QCOMPARE(text.size(), 1);
        if (byte < 0x80)
            QCOMPARE(text[0], QChar(byte));
        if (byte >= 0xA1 && byte <= 0xDF)
            QCOMPARE(text[0], QChar(0xFF61 + byte - 0xA1));
    }
}

void JapaneseTextTest::randomBytesDecode()
{
    quint32 state = 1;
    for (int round = 0; round < 2000; ++round) {
        QByteArray bytes;
        for (int i = 0; i < 64; ++i) {
            state = state * 1664525 + 1013904223;
            bytes += static_cast<char>(state >> 24);
        }
        QVERIFY(JapaneseText::fromSjis(bytes).size() <= bytes.size());
        QVERIFY(JapaneseText::fromJis7(bytes).size() <= bytes.size());
        const QByteArray escaped = "\x1B$B" + bytes;
        QVERIFY(JapaneseText::fromJis7(escaped).size() <= bytes.size());
    }
}

void JapaneseTextTest::longTextsConvert()
{
    const QString text = QString::fromUtf8("東京ｶabc").repeated(100'000);
    QCOMPARE(JapaneseText::fromSjis(JapaneseText::toSjis(text)), text);
    QCOMPARE(JapaneseText::fromJis7(JapaneseText::toJis7(text)), text);
}

QTEST_GUILESS_MAIN(JapaneseTextTest)
#include "japanesetexttest.moc"
