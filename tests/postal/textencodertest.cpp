#include "textencoder.h"
#include "jistext.h"
#include "matchtext.h"
#include "ydicbytes_p.h"

#include <QRandomGenerator>
#include <QTest>

using namespace ZipDict;

/** The text of records. */
class TextEncoderTest : public QObject
{
    Q_OBJECT
private slots:
    void equalPartsStandOnce_data();
    void equalPartsStandOnce();
    void bothReadersGetTheirText();
    void mostUsedCharactersTakeOneByte();
    void equallyUsedCharactersAreTakenInOrder();
    void solidusKeepsTwoBytes();
    void bytesStayAsTheyAre();
    void lengthIsThatOfTheBytes();
    void matchTextIsAsPrintedWhereASearchAcceptsIt_data();
    void matchTextIsAsPrintedWhereASearchAcceptsIt();
    void matchTextHasTheNormalisedForm();
};

/* Readable: the marks as letters. */
static QString readable(const Text &text)
{
    QString result;
    for (const char16_t character : text) {
        const char jis[] = {static_cast<char>(character >> 8), static_cast<char>(character)};
        if (character < 0x100)
            result += QLatin1Char(jis[1]);
        else
            result += QString::fromStdU16String(fromJis({jis, 2}));
    }
    return result;
}

static Text text(const QString &string)
{
    return textOf(string.toStdU16String());
}

/* What the search by code shows. */
static Text shownPart(const Text &merged)
{
    Text shown;
    bool isHidden = false;
    for (const char16_t c : merged) {
        if (c == YDIC_MARK_END)
            break;
        if (c == YDIC_MARK_HIDDEN)
            isHidden = !isHidden;
        else if (c != YDIC_MARK_SHOWN && !isHidden)
            shown += c;
    }
    return shown;
}

/* What the search by address compares. */
static Text matchedPart(const Text &merged)
{
    Text matched;
    bool isSkipped = false;
    for (const char16_t c : merged) {
        if (c == YDIC_MARK_SHOWN)
            isSkipped = !isSkipped;
        else if (c >= 0x100 && !isSkipped)
            matched += c;
    }
    return matched;
}

void TextEncoderTest::equalPartsStandOnce_data()
{
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("matched");
    QTest::addColumn<QString>("merged");
    QTest::newRow("equal") << "千代田"
                           << "千代田"
                           << "千代田";
    QTest::newRow("bracket is shown only") << "丸の内（２９階）"
                                           << "丸の内"
                                           << "丸の内e（２９階）e";
    QTest::newRow("fillers are shown only") << "大字山田字川"
                                            << "山田川"
                                            << "e大字e山田e字e川";
    QTest::newRow("nothing matched") << "１番地"
                                     << ""
                                     << "e１番地e";
    QTest::newRow("nothing shown") << ""
                                   << "千代田"
                                   << "f千代田";
    QTest::newRow("more matched, at the end") << "山田"
                                              << "山田川"
                                              << "山田f川";
    QTest::newRow("more matched, at the start") << "川"
                                                << "山川"
                                                << "g山g川";
    QTest::newRow("different") << "甲乙"
                               << "丙丁"
                               << "e甲乙ef丙丁";
    QTest::newRow("different in the middle") << "山甲川"
                                             << "山乙川"
                                             << "山e甲eg乙g川";
    QTest::newRow("nothing") << ""
                             << ""
                             << "";
}

void TextEncoderTest::equalPartsStandOnce()
{
    QFETCH(QString, shown);
    QFETCH(QString, matched);
    QFETCH(QString, merged);
    QCOMPARE(readable(mergedText(text(shown), text(matched))), merged);
}

void TextEncoderTest::bothReadersGetTheirText()
{
    QRandomGenerator random(1);
    const Text characters = text("山川田町一");
    const auto any = [&] {
        Text made;
        for (int length = random.bounded(9); length > 0; --length)
            made += characters[static_cast<size_t>(random.bounded(5))];
        return made;
    };
    for (int i = 0; i < 3000; ++i) {
        const Text shown = any();
        const Text matched = any();
        const Text merged = mergedText(shown, matched);
        QCOMPARE(readable(shownPart(merged)), readable(shown));
        QCOMPARE(readable(matchedPart(merged)), readable(matched));
    }
}

void TextEncoderTest::mostUsedCharactersTakeOneByte()
{
    OneByteCodes codes;
    Text all; // 60 characters, the later the more often
    for (char16_t i = 0; i < 60; ++i)
        all.append(i + 1U, static_cast<char16_t>(0x3021 + i));
    codes.count(all);
    codes.choose();
    QCOMPARE(codes.length(Text(1, char16_t{0x3021 + 59})), size_t{1});
    QCOMPARE(codes.length(Text(1, char16_t{0x3021 + 8})), size_t{1});
    QCOMPARE(codes.length(Text(1, char16_t{0x3021 + 7})), size_t{2});
    const Bytes table = codes.table();
    QCOMPARE(table.size(), size_t{YDIC_ASK1JI_LENGTH});
    QCOMPARE(int(ydic_u16(table.data())), 0x3021 + 59);
    Bytes bytes;
    codes.append(bytes, {char16_t{0x3021 + 59}, char16_t{0x3021 + 57}, char16_t{0x3021}});
    QCOMPARE(bytes, (Bytes{109, 111, 0xB0, 0xA1}));
}

void TextEncoderTest::equallyUsedCharactersAreTakenInOrder()
{
    OneByteCodes codes;
    codes.count({0x3025, 0x3023, 0x3024});
    codes.choose();
    const Bytes table = codes.table();
    QCOMPARE(int(ydic_u16(table.data())), 0x3023);
    QCOMPARE(int(ydic_u16(table.data() + 2)), 0x3024);
    QCOMPARE(int(ydic_u16(table.data() + 4)), 0x3025);
    QCOMPARE(int(ydic_u16(table.data() + 6)), 0x2121); // unused
}

void TextEncoderTest::solidusKeepsTwoBytes()
{
    OneByteCodes codes;
    codes.count(text("／／／／"));
    codes.choose();
    Bytes bytes;
    codes.append(bytes, text("／"));
    QCOMPARE(bytes, (Bytes{0xA1, 0xBF}));
}

void TextEncoderTest::bytesStayAsTheyAre()
{
    OneByteCodes codes;
    const Text number = numberText(0x12FF64, 3);
    codes.count(number + number);
    codes.choose();
    Bytes bytes;
    codes.append(bytes, number);
    QCOMPARE(bytes, (Bytes{0x12, 0xFF, 0x64}));
    QCOMPARE(int(ydic_u16(codes.table().data())), 0x2121);
}

void TextEncoderTest::lengthIsThatOfTheBytes()
{
    OneByteCodes codes;
    codes.count(text("山山川"));
    codes.choose();
    const Text mixed = numberText(7, 1) + text("山谷川") + char16_t{YDIC_MARK_END};
    Bytes bytes;
    codes.append(bytes, mixed);
    QCOMPARE(bytes.size(), size_t{6});
    QCOMPARE(codes.length(mixed), bytes.size());
}

void TextEncoderTest::matchTextIsAsPrintedWhereASearchAcceptsIt_data()
{
    QTest::addColumn<QString>("municipality");
    QTest::addColumn<QString>("matched");
    QTest::addColumn<QString>("expected");
    QTest::newRow("plain") << "千代田区"
                           << "千代田"
                           << "千代田";
    QTest::newRow("nothing") << "千代田区"
                             << ""
                             << "";
    QTest::newRow("old character") << "春日井市"
                                   << "押澤台"
                                   << "押澤台";
    QTest::newRow("class of ke") << "渋谷区"
                                 << "千駄ヶ谷"
                                 << "千駄ヶ谷";
    QTest::newRow("class of no") << "千代田区"
                                 << "丸の内"
                                 << "丸の内";
    QTest::newRow("one digit") << "札幌市中央区"
                               << "北１条西"
                               << "北１条西";
    QTest::newRow("two digits") << "旭川市"
                                << "１２条通"
                                << "１２条通";
    QTest::newRow("old character in the municipality") << "西多摩郡檜原村"
                                                       << "澤"
                                                       << "澤";
    QTest::newRow("fillers") << "青森市"
                             << "大字山田字川"
                             << "山田川";
    QTest::newRow("fillers and an old character") << "青森市"
                                                  << "大字山澤"
                                                  << "山沢";
    QTest::newRow("kept filler") << "市川市"
                                 << "十文字"
                                 << "十文字";
    QTest::newRow("banchi") << "江田島市"
                            << "江田島町国有無番地"
                            << "江田島町国有無番";
    QTest::newRow("street of Kyoto") << "京都市中京区"
                                     << "烏丸通三条上ル場之町"
                                     << "場ノ町";
}

void TextEncoderTest::matchTextIsAsPrintedWhereASearchAcceptsIt()
{
    QFETCH(QString, municipality);
    QFETCH(QString, matched);
    QFETCH(QString, expected);
    QCOMPARE(readable(matchText(13, text(municipality), text(matched)).text), expected);
}

void TextEncoderTest::matchTextHasTheNormalisedForm()
{
    const MatchText match = matchText(13, text("日野市"), text("澤ヶ谷１２丁目"));
    QCOMPARE(readable(match.text), QString("澤ヶ谷１２丁目"));
    QCOMPARE(readable(match.normalised), QString("沢ケ谷十二丁目"));
}

QTEST_GUILESS_MAIN(TextEncoderTest)
#include "textencodertest.moc"
