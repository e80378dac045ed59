#include "foldedtext.h"
#include "guardedbytes.h"

#include <QRandomGenerator>
#include <QtTest>

using namespace pdtm;

namespace {

std::string_view asText(const GuardedBytes &bytes)
{
    return {reinterpret_cast<const char *>(bytes.data()), bytes.bytes().size()};
}

size_t findIn(const QByteArray &text, const QByteArray &sought)
{
    return FoldedText(sought.toStdString()).findIn(asText(GuardedBytes(text)));
}

/** The definition: bytes compared one by one, ASCII letters in lower case. */
size_t findSlowly(const QByteArray &text, const QByteArray &sought)
{
    const auto isSame = [](char one, char other) { return lowerAscii(one) == lowerAscii(other); };
    const auto found = std::search(text.begin(), text.end(), sought.begin(), sought.end(), isSame);
    const bool isThere = found != text.end() || sought.isEmpty();
    return isThere ? static_cast<size_t>(found - text.begin()) : std::string_view::npos;
}

} // namespace

class FoldedTextTest : public QObject
{
    Q_OBJECT
private slots:
    void everyPlaceInTextsOfEveryLength();
    void partsAtTheEndsAreNoMatch();
    void randomTexts();
    void onlyLettersHaveTwoCases();
    void emptyTexts();
    void equal();
};

void FoldedTextTest::everyPlaceInTextsOfEveryLength()
{
    for (const QByteArray &sought :
         {QByteArray("X"), QByteArray("Needle"), QByteArray("\xE7\x94\xB0\xE4\xB8\xAD"),
          QByteArray(40, 'e') + 'E', QByteArray("\xFF")}) {
        for (qsizetype length = sought.size(); length < sought.size() + 140; ++length) {
            for (qsizetype at = 0; at + sought.size() <= length; ++at) {
                QByteArray text(length, '-');
                text.replace(at, sought.size(), sought.toUpper());
                QCOMPARE(findIn(text, sought), static_cast<size_t>(at));
            }
        }
    }
}

void FoldedTextTest::partsAtTheEndsAreNoMatch()
{
    for (qsizetype length = 0; length < 140; ++length) {
        const QByteArray text = QByteArray(length, '-');
        QCOMPARE(findIn("eedle" + text + "needl", "needle"), std::string_view::npos);
    }
}

void FoldedTextTest::randomTexts()
{
    QRandomGenerator random(17);
    const QByteArray bytes = "aAbB-\xE3\x81";
    const auto make = [&](quint32 longest) {
        QByteArray text(random.bounded(longest + 1), '\0');
        for (char &byte : text)
            byte = bytes[random.bounded(static_cast<quint32>(bytes.size()))];
        return text;
    };
    for (int round = 0; round < 20000; ++round) {
        const QByteArray text = make(200);
        const QByteArray sought = make(6);
        QVERIFY2(findIn(text, sought) == findSlowly(text, sought), (text + " / " + sought).constData());
    }
}

/** In every length of text that is looked at in another way. */
void FoldedTextTest::onlyLettersHaveTwoCases()
{
    for (const qsizetype length : {1, 20, 100}) {
        for (int sought = 1; sought < 256; ++sought) {
            for (int stored = 1; stored < 256; ++stored) {
                const QByteArray text(length, static_cast<char>(stored));
                const bool isSame =
                    lowerAscii(static_cast<char>(sought)) == lowerAscii(static_cast<char>(stored));
                QCOMPARE(FoldedText(std::string(1, static_cast<char>(sought))).isIn(text.toStdString()),
                         isSame);
            }
        }
    }
}

void FoldedTextTest::emptyTexts()
{
    QCOMPARE(findIn("", ""), size_t(0));
    QCOMPARE(findIn("text", ""), size_t(0));
    QCOMPARE(findIn("", "x"), std::string_view::npos);
    QVERIFY(FoldedText().isIn("text"));
}

void FoldedTextTest::equal()
{
    const FoldedText text("Fox 1");
    QVERIFY(text.equals("fOX 1"));
    QVERIFY(!text.equals("fOX"));
    QVERIFY(!text.equals("fOX 12"));
    QVERIFY(!text.equals("fOX\x11"
                         "1"));
}

QTEST_GUILESS_MAIN(FoldedTextTest)
#include "foldedtexttest.moc"
