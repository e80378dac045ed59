#include "imagebuilder.h"
#include "querytext.h"
#include "ydicaddress_p.h"

#include <QTest>

#include <array>

using namespace imagebuilder;
using namespace Qt::StringLiterals;

namespace {

constexpr uint16_t Tokyo = 13;
const Bytes Silent = u8(YDIC_MARK_SILENT);
const Bytes Shown = u8(YDIC_MARK_SHOWN);
const Bytes End = u8(YDIC_MARK_END);
const Bytes Hidden = u8(YDIC_MARK_HIDDEN);
const Bytes Whole = u8(YDIC_MARK_WHOLE);
const Bytes Complete = u8(YDIC_MARK_COMPLETE);
const Bytes Cancels = u8(YDIC_MARK_CANCELS);

/** The chunk of the codes 100-00xx, without common text. */
Bytes chunk(const Bytes &records)
{
    return u24(10000) + records;
}

/** A record that has its whole code and address. */
Bytes complete(uint32_t code, const Bytes &text, uint8_t last2 = 1)
{
    return record(last2, Complete + u24(code) + text);
}

/** An address, and what comparing texts with it gives. */
class Match
{
public:
    /** @param consumed characters of the address that the index has matched */
    explicit Match(const QString &address, int consumed = 0) : m_search(normalisedSearch(address))
    {
        m_search.consumed = static_cast<int16_t>(consumed);
        m_search.groupPrefecture = Tokyo;
        m_search.readBuf = m_buffer.data();
    }
    Match(const Match &) = delete;
    Match &operator=(const Match &) = delete;

    ydic_search *search() { return &m_search; }

    /** The candidates after comparing a chunk: "1000001 3", and "-1" when its text lost its end. */
    QStringList chunk(const Bytes &bytes)
    {
        m_result = compare(bytes, 0);
        return candidates();
    }
    QStringList complete(const Bytes &bytes)
    {
        m_result = compare(bytes, 0x8000);
        return candidates();
    }
    /** What dic_knsk() returned last. */
    int result() const { return m_result; }

    QStringList candidates() const
    {
        QStringList list;
        for (int i = 0; i < m_search.candCount; ++i) {
            list += u"%1 %2"_s.arg(m_search.candCode[i], 7, 10, QChar(u'0')).arg(m_search.candMatch[i]);
            if (m_search.candDrop[i] != 0)
                list.last() += u" -%1"_s.arg(m_search.candDrop[i]);
        }
        return list;
    }

private:
    int compare(const Bytes &bytes, uint16_t kind)
    {
        // At the end of the buffer, so that a check of memory sees what is read behind it.
        const size_t offset = m_buffer.size() - bytes.size();
        memcpy(m_buffer.data() + offset, bytes.data(), bytes.size());
        return dic_knsk(static_cast<uint32_t>(offset), static_cast<uint16_t>(bytes.size() | kind), &m_search);
    }

    ydic_search m_search;
    std::array<char, YDIC_READ_LENGTH> m_buffer{};
    int m_result = -1;
};

/** The candidates of a chunk with one record, of code 100-0001. */
QStringList matched(const QString &address, std::u16string_view text, int consumed = 0)
{
    return Match(address, consumed).chunk(chunk(record(1, stored(text))));
}

QStringList matchedComplete(const QString &address, std::u16string_view text)
{
    return Match(address).complete(complete(1000001, stored(u"東京都／") + stored(text)));
}

} // namespace

/** Comparing the texts of the dictionary with an address. */
class AddressMatchTest : public QObject
{
    Q_OBJECT
private slots:
    void recordMatchesBehindWhatTheIndexMatched();
    void commonTextIsNotCompared();
    void everyRecordOfAChunkIsCompared();
    void oneByteTextIsDecoded();
    void textBetweenMarksIsNotCompared();
    void otherMarksInTextAreSkipped();
    void recordWithoutTextToCompareMatchesAsFarAsTheIndex();
    void silentRecordIsAnOrdinaryOne();
    void wholeAreaNeedsNoText();
    void wholeAreaOfCode00IsACandidate();
    void wholeAreaAfterShortenedRecordLostNothing();
    void textOfCode00IsNoCandidate();
    void completeRecordInAChunkIsSkipped();
    void cancellingRecordTakesTheCandidateAway();
    void cancellingRecordOfAnotherMatchTakesNothing();
    void byteThatIsNoCodeEndsTheChunk();
    void codeAboveTheHighestIsNotStored();

    void placeMayLackItsMachi_data();
    void placeMayLackItsMachi();
    void placeMayLackItsBan();
    void shortenedTextOfCode00IsNoCandidate();
    void shortenedTextMaySplitANumber();
    void matchSplitsNoNumber();
    void normalisedMatchSplitsNoNumber();
    void textIsNormalisedOnlyWhereThatMayHelp_data();
    void textIsNormalisedOnlyWhereThatMayHelp();
    void textMayBeLongerByWhatNormalisingTakes_data();
    void textMayBeLongerByWhatNormalisingTakes();

    void completeRecordMatchesFromTheStart();
    void completeRecordOfCode00IsACandidate();
    void completeRecordTakesItsWholeCode();
    void completeRecordCancels();
    void completeRecordMayBeSilent();
    void completeRecordKeepsHalfACharacterOfAPair();
    void completeRecordSkipsOtherMarks();
    void completeRecordWithoutMachiNeedsAReason();
    void brokenCompleteRecordGivesNothing_data();
    void brokenCompleteRecordGivesNothing();

    void nothingBehindTheQueryMatches();
    void textOpenAtTheEndOfARecordEndsThere();
    void longTextIsCut();
    void emptyAndCutChunksGiveNothing_data();
    void emptyAndCutChunksGiveNothing();
    void nothingOutsideTheBufferIsRead();
    void indexThatMatchedTooMuchGivesNothing();
};

void AddressMatchTest::recordMatchesBehindWhatTheIndexMatched()
{
    QCOMPARE(matched(u"大田区蒲田"_s, u"蒲田", 3), QStringList{u"1000001 5"_s});
    QCOMPARE(matched(u"大田区蒲田本町"_s, u"蒲田", 3), QStringList{u"1000001 5"_s});
    QCOMPARE(matched(u"大田区蒲原"_s, u"蒲田", 3), QStringList());
    QCOMPARE(matched(u"大田区蒲"_s, u"蒲田", 3), QStringList());
}

void AddressMatchTest::commonTextIsNotCompared()
{
    Match match(u"大田区蒲田"_s, 3);
    QCOMPARE(match.chunk(chunk(stored(u"大田区") + u8(109) + record(1, stored(u"蒲田")))),
             QStringList{u"1000001 5"_s});
    QCOMPARE(match.result(), 1);
}

void AddressMatchTest::everyRecordOfAChunkIsCompared()
{
    Match match(u"蒲田本町"_s);
    const Bytes records =
        record(1, stored(u"蒲田")) + record(2, stored(u"川")) + record(99, stored(u"蒲田本町"));
    QCOMPARE(match.chunk(chunk(records)), QStringList({u"1000001 2"_s, u"1000099 4"_s}));
    QCOMPARE(match.chunk(chunk(record(1, stored(u"川")))).size(), 2);
    QCOMPARE(match.result(), 0);
}

void AddressMatchTest::oneByteTextIsDecoded()
{
    Match match(u"川山田"_s);
    memcpy(match.search()->ask1ji, jis(u"川").data(), 2);
    memcpy(match.search()->ask1ji + 102, jis(u"田").data(), 2);
    QCOMPARE(match.chunk(chunk(record(1, u8(109) + stored(u"山") + u8(160)))), QStringList{u"1000001 3"_s});
}

void AddressMatchTest::textBetweenMarksIsNotCompared()
{
    Match match(u"川山田"_s);
    QCOMPARE(match.chunk(chunk(record(1, stored(u"川") + Shown + stored(u"大字") + Shown + stored(u"山") +
                                             Shown + Shown + stored(u"田")))),
             QStringList{u"1000001 3"_s});
}

void AddressMatchTest::otherMarksInTextAreSkipped()
{
    Match match(u"川山田"_s);
    const Bytes text =
        stored(u"川") + End + Hidden + stored(u"山") + Hidden + u8(0x6B) + u8(0x6C) + stored(u"田");
    QCOMPARE(match.chunk(chunk(record(1, text))), QStringList{u"1000001 3"_s});
}

void AddressMatchTest::recordWithoutTextToCompareMatchesAsFarAsTheIndex()
{
    const Bytes text = Shown + stored(u"以下") + Shown;
    QCOMPARE(Match(u"大田区蒲田"_s, 3).chunk(chunk(record(1, text))), QStringList{u"1000001 3"_s});
    QCOMPARE(Match(u"大田区"_s, 3).chunk(chunk(record(1, text))), QStringList{u"1000001 3"_s});
    QCOMPARE(Match(u"大田区"_s, 3).chunk(chunk(record(0, text))), QStringList());
    QCOMPARE(Match(u"大田区"_s, 3).chunk(chunk(record(1, Bytes()))), QStringList{u"1000001 3"_s});
}

void AddressMatchTest::silentRecordIsAnOrdinaryOne()
{
    QCOMPARE(Match(u"川山"_s).chunk(chunk(record(1, Silent + stored(u"川山")))), QStringList{u"1000001 2"_s});
}

void AddressMatchTest::wholeAreaNeedsNoText()
{
    Match match(u"大田区蒲田"_s, 3);
    QCOMPARE(match.chunk(chunk(record(5, Whole + End) + record(6, Whole) + record(7, stored(u"蒲田")))),
             QStringList({u"1000005 3"_s, u"1000006 3"_s, u"1000007 5"_s}));
    QCOMPARE(Match(u"大田区"_s, 3).chunk(chunk(record(0, Silent + Whole))), QStringList{u"1000000 3"_s});
}

void AddressMatchTest::wholeAreaOfCode00IsACandidate()
{
    Match match(u"大田区"_s, 3);
    QCOMPARE(match.chunk(chunk(record(0, Whole))), QStringList{u"1000000 3"_s});
    QCOMPARE(match.result(), 1);
}

void AddressMatchTest::wholeAreaAfterShortenedRecordLostNothing()
{
    QCOMPARE(Match(u"大田区蒲田"_s, 3).chunk(chunk(record(1, stored(u"蒲田町")) + record(2, Whole))),
             QStringList({u"1000001 5 -1"_s, u"1000002 3"_s}));
}

void AddressMatchTest::textOfCode00IsNoCandidate()
{
    Match match(u"川山"_s);
    QCOMPARE(match.chunk(chunk(record(0, stored(u"川山")) + record(1, stored(u"川")))),
             QStringList{u"1000001 1"_s});
}

void AddressMatchTest::completeRecordInAChunkIsSkipped()
{
    Match match(u"川山"_s);
    // Its code has bytes that would begin records, and a mark.
    const Bytes inside = complete(0x010265, stored(u"東京都／川山") + Shown + stored(u"川"));
    QCOMPARE(match.chunk(chunk(inside + record(3, Cancels + Complete + u24(0x010203) + stored(u"川山")) +
                               record(4, stored(u"川")))),
             QStringList{u"1000004 1"_s});
    QCOMPARE(Match(u"川山"_s).chunk(chunk(complete(0x010203, stored(u"川山")))), QStringList());
}

void AddressMatchTest::cancellingRecordTakesTheCandidateAway()
{
    Match match(u"大田区蒲田"_s, 3);
    match.chunk(chunk(record(1, stored(u"蒲田")) + record(2, Whole) + record(3, stored(u"蒲田町"))));
    QCOMPARE(match.candidates(), QStringList({u"1000001 5"_s, u"1000002 3"_s, u"1000003 5 -1"_s}));
    match.chunk(chunk(record(1, Cancels + stored(u"蒲田"))));
    QCOMPARE(match.candidates(), QStringList({u"1000001 0"_s, u"1000002 3"_s, u"1000003 5 -1"_s}));
    match.chunk(chunk(record(2, Cancels + Whole) + record(3, Cancels + Silent + stored(u"蒲田町"))));
    QCOMPARE(match.candidates(), QStringList({u"1000001 0"_s, u"1000002 0"_s, u"1000003 0 -1"_s}));
}

void AddressMatchTest::cancellingRecordOfAnotherMatchTakesNothing()
{
    Match match(u"蒲田"_s);
    match.chunk(chunk(record(1, stored(u"蒲田"))));
    QCOMPARE(match.chunk(chunk(record(1, Cancels + stored(u"蒲")) + record(2, Cancels + stored(u"蒲田")) +
                               record(1, Cancels + stored(u"蒲田町")))),
             QStringList{u"1000001 2"_s});
}

void AddressMatchTest::byteThatIsNoCodeEndsTheChunk()
{
    Match match(u"川山"_s);
    QCOMPARE(
        match.chunk(chunk(record(1, stored(u"川")) + record(2, Whole + Whole) + record(3, stored(u"川山")))),
        QStringList({u"1000001 1"_s, u"1000002 0"_s}));
    QCOMPARE(Match(u"川山"_s).chunk(chunk(u8(100) + record(1, stored(u"川")))), QStringList());
}

void AddressMatchTest::codeAboveTheHighestIsNotStored()
{
    const Bytes records = record(99, stored(u"川"));
    QCOMPARE(Match(u"川"_s).chunk(u24(99999) + records), QStringList{u"9999999 1"_s});
    QCOMPARE(Match(u"川"_s).chunk(u24(100000) + records), QStringList());
    QCOMPARE(Match(u"川"_s).chunk(u24(0xFFFFFF) + records + record(99, Whole)), QStringList());
    QCOMPARE(Match(u"川"_s).complete(complete(10000000, stored(u"／川"))), QStringList());
}

void AddressMatchTest::placeMayLackItsMachi_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("result");
    const QStringList one = {u"1000001 1 -1"_s};
    const QStringList two = {u"1000001 2 -1"_s};
    QTest::newRow("the query ends") << u"大"_s << u"大町"_s << one;
    QTest::newRow("a digit follows") << u"大１"_s << u"大町"_s << one;
    QTest::newRow("a numeral follows") << u"大九"_s << u"大町"_s << one;
    QTest::newRow("十 follows") << u"大十"_s << u"大町"_s << one;
    QTest::newRow("10 follows") << u"大１０"_s << u"大町"_s << one;
    QTest::newRow("12 follows") << u"大１２"_s << u"大町"_s << one;
    QTest::newRow("zero follows") << u"大０"_s << u"大町"_s << QStringList();
    QTest::newRow("something else follows") << u"大山"_s << u"大町"_s << QStringList();
    QTest::newRow("a variant follows") << u"大滝"_s << u"大町"_s << QStringList();
    QTest::newRow("longer name") << u"東山元"_s << u"東山町"_s << two;
    QTest::newRow("longer name, the query ends") << u"東山"_s << u"東山町"_s << two;
    QTest::newRow("another last character") << u"東山"_s << u"東山村"_s << QStringList();
    QTest::newRow("two characters less") << u"東"_s << u"東山町"_s << QStringList();
}

void AddressMatchTest::placeMayLackItsMachi()
{
    QFETCH(QString, address);
    QFETCH(QString, text);
    QTEST(matched(address, text.toStdU16String()), "result");
}

void AddressMatchTest::placeMayLackItsBan()
{
    QCOMPARE(matched(u"東三"_s, u"東三番"), QStringList{u"1000001 2 -1"_s});
    QCOMPARE(matched(u"東三西"_s, u"東三番"), QStringList());
    QCOMPARE(matched(u"東山西"_s, u"東山番"), QStringList());
}

void AddressMatchTest::shortenedTextOfCode00IsNoCandidate()
{
    QCOMPARE(Match(u"東山"_s).chunk(chunk(record(0, stored(u"東山町")) + record(0, stored(u"東山番")))),
             QStringList());
}

void AddressMatchTest::shortenedTextMaySplitANumber()
{
    const QStringList one = {u"1000001 1 -1"_s};
    QCOMPARE(matched(u"十２"_s, u"十町"), one);
    QCOMPARE(matched(u"三十"_s, u"三町"), one);
    QCOMPARE(matched(u"三１０"_s, u"三町"), one);
    QCOMPARE(matched(u"三１２"_s, u"三町"), one);
}

void AddressMatchTest::matchSplitsNoNumber()
{
    QCOMPARE(matched(u"西三十二"_s, u"西三"), QStringList());
    QCOMPARE(matched(u"西三十二"_s, u"西三十"), QStringList());
    QCOMPARE(matched(u"西三十二"_s, u"西三十二"), QStringList{u"1000001 4"_s});
    QCOMPARE(matched(u"西三−２"_s, u"西三"), QStringList{u"1000001 2"_s});
}

void AddressMatchTest::normalisedMatchSplitsNoNumber()
{
    QCOMPARE(matched(u"瀧三十二"_s, u"瀧３"), QStringList());
    QCOMPARE(matched(u"瀧三西"_s, u"瀧３"), QStringList{u"1000001 2"_s});
    QCOMPARE(matched(u"大通り三"_s, u"三", 2), QStringList()); // an り at the start isn't put in
}

void AddressMatchTest::textIsNormalisedOnlyWhereThatMayHelp_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("prefecture");
    QTest::addColumn<QStringList>("result");
    const QStringList two = {u"1000001 2"_s};
    QTest::newRow("variant there") << u"滝山"_s << u"瀧山"_s << 13 << two;
    QTest::newRow("no variant at all") << u"大山"_s << u"大山元番"_s << 13 << QStringList();
    QTest::newRow("通 somewhere") << u"大通"_s << u"大通り"_s << 13 << two;
    QTest::newRow("separator somewhere") << u"三−五"_s << u"三丁目五"_s << 13 << QStringList{u"1000001 3"_s};
    QTest::newRow("Hokkaido") << u"西一"_s << u"西一条"_s << 1 << QStringList{u"1000001 2 -2"_s};
    QTest::newRow("elsewhere") << u"西一"_s << u"西一条"_s << 13 << QStringList();
    QTest::newRow("variant, but no match") << u"滝山"_s << u"瀧川"_s << 13 << QStringList();
    // Had it been normalised, the variant would have matched: where the texts differ first decides.
    QTest::newRow("variant behind the difference") << u"山滝"_s << u"り山滝"_s << 13 << QStringList();
}

void AddressMatchTest::textIsNormalisedOnlyWhereThatMayHelp()
{
    QFETCH(QString, address);
    QFETCH(QString, text);
    QFETCH(int, prefecture);
    Match match(address);
    match.search()->groupPrefecture = static_cast<uint16_t>(prefecture);
    QTEST(match.chunk(chunk(record(1, stored(text.toStdU16String())))), "result");
}

void AddressMatchTest::textMayBeLongerByWhatNormalisingTakes_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("result");
    const QStringList none;
    QTest::newRow("as long") << u"三四"_s << u"３４"_s << QStringList{u"1000001 2"_s};
    QTest::newRow("one") << u"三四"_s << u"３４番"_s << QStringList{u"1000001 2 -1"_s};
    QTest::newRow("10") << u"１０"_s << u"１０番"_s << QStringList{u"1000001 1 -1"_s};
    QTest::newRow("十 as written") << u"十"_s << u"１０番"_s << none;
    QTest::newRow("10 twice") << u"十と１０"_s << u"１０と１０番"_s << none;
    QTest::newRow("通") << u"烏通１０"_s << u"烏通り１０番"_s << QStringList{u"1000001 3 -1"_s};
    QTest::newRow("one separator") << u"１０−５"_s << u"１０丁目５番"_s << QStringList{u"1000001 3 -1"_s};
    QTest::newRow("two separators") << u"１０−１０−１０"_s << u"１０丁目十番１０番"_s
                                    << QStringList{u"1000001 5 -1"_s};
    QTest::newRow("10, and a separator")
        << u"十−１０"_s << u"１０丁目十番"_s << QStringList{u"1000001 3 -1"_s};
    QTest::newRow("more than that") << u"十−十"_s << u"１０丁目十番"_s << none;
}

void AddressMatchTest::textMayBeLongerByWhatNormalisingTakes()
{
    QFETCH(QString, address);
    QFETCH(QString, text);
    QTEST(matched(address, text.toStdU16String()), "result");
}

void AddressMatchTest::completeRecordMatchesFromTheStart()
{
    Match match(u"大田区蒲田本町"_s, 3);
    QCOMPARE(match.complete(complete(1234567, stored(u"東京都／大田区蒲田"))), QStringList{u"1234567 5"_s});
    QCOMPARE(int(match.search()->consumed), 0);
    QCOMPARE(match.result(), 1);
    QCOMPARE(matchedComplete(u"大田区蒲田"_s, u"蒲田"), QStringList());
    QCOMPARE(matchedComplete(u"瀧山三"_s, u"瀧山３"), QStringList{u"1000001 3"_s});
    QCOMPARE(matchedComplete(u"亜亞"_s, u"亜亞"), QStringList{u"1000001 2"_s}); // a character with a low byte
    Match shortened(u"大"_s);
    shortened.complete(complete(1, stored(u"／大町")));
    QCOMPARE(shortened.complete(complete(2, stored(u"／大"))),
             QStringList({u"0000001 1 -1"_s, u"0000002 1"_s}));
}

void AddressMatchTest::completeRecordOfCode00IsACandidate()
{
    QCOMPARE(Match(u"大田区"_s).complete(complete(1234500, stored(u"東京都／大田区"), 0)),
             QStringList{u"1234500 3"_s});
}

void AddressMatchTest::completeRecordTakesItsWholeCode()
{
    QCOMPARE(Match(u"川"_s).complete(complete(9999999, stored(u"／川"))), QStringList{u"9999999 1"_s});
    QCOMPARE(Match(u"川"_s).complete(complete(1, stored(u"／川"), 99)), QStringList{u"0000001 1"_s});
}

void AddressMatchTest::completeRecordCancels()
{
    Match match(u"大田区"_s);
    match.complete(complete(1234567, stored(u"東京都／大田区")));
    QCOMPARE(match.complete(record(67, Cancels + Complete + u24(1234567) + stored(u"東京都／大田区"))),
             QStringList{u"1234567 0"_s});
}

void AddressMatchTest::completeRecordMayBeSilent()
{
    QCOMPARE(Match(u"大田区"_s).complete(complete(1234567, Silent + stored(u"東京都／大田区"))),
             QStringList{u"1234567 3"_s});
}

void AddressMatchTest::completeRecordKeepsHalfACharacterOfAPair()
{
    const Bytes pair = Shown + stored(u"大字") + Shown;
    QCOMPARE(Match(u"大田蒲田"_s).complete(complete(1234567, stored(u"／大田") + pair + stored(u"蒲田"))),
             QStringList());
    QCOMPARE(Match(u"大田蒲田"_s).complete(complete(1234567, stored(u"／大田蒲田") + pair)),
             QStringList{u"1234567 4"_s});
}

void AddressMatchTest::completeRecordSkipsOtherMarks()
{
    QCOMPARE(Match(u"大田蒲田"_s)
                 .complete(complete(1234567, stored(u"／大田") + End + Hidden + stored(u"蒲") + Hidden +
                                                 stored(u"田"))),
             QStringList{u"1234567 4"_s});
}

void AddressMatchTest::completeRecordWithoutMachiNeedsAReason()
{
    QCOMPARE(matchedComplete(u"大"_s, u"大町"), QStringList{u"1000001 1 -1"_s});
    QCOMPARE(matchedComplete(u"東山元"_s, u"東山町"), QStringList{u"1000001 2 -1"_s});
    QCOMPARE(matchedComplete(u"大十"_s, u"大町"), QStringList{u"1000001 1 -1"_s});
    // A digit is none by itself: the text is normalised, and then a number isn't split.
    QCOMPARE(matchedComplete(u"十２"_s, u"十町"), QStringList());
    QCOMPARE(matchedComplete(u"大２"_s, u"大町"), QStringList{u"1000001 1 -1"_s});
    QCOMPARE(matchedComplete(u"東三"_s, u"東三番"), QStringList{u"1000001 2 -1"_s});
}

void AddressMatchTest::brokenCompleteRecordGivesNothing_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const auto row = [](const char *name, const Bytes &bytes) {
        QTest::newRow(name) << QByteArray::fromStdString(bytes);
    };
    row("nothing", Bytes());
    row("code alone", u8(1));
    row("no mark", record(1, stored(u"東京都／大田区")));
    row("number without its mark", record(1, u24(5) + stored(u"東京都／大田区")));
    row("another mark first", record(1, Silent + Complete + u24(1) + stored(u"東京都／大田区")));
    row("cut in its number", record(1, Complete + u16(1)));
    row("cut behind its number", record(1, Complete + u24(1)));
    row("cut behind a mark", record(1, Complete + u24(1) + Silent));
    row("no text", complete(1, Shown + stored(u"東京都／大田区")));
    row("no solidus", complete(1, stored(u"大田区")));
    row("half a solidus", complete(1, stored(u"大田区") + "\xA1"));
}

void AddressMatchTest::brokenCompleteRecordGivesNothing()
{
    QFETCH(QByteArray, bytes);
    Match match(u"大田区"_s);
    QCOMPARE(match.complete(bytes.toStdString()), QStringList());
    QCOMPARE(match.result(), 0);
}

void AddressMatchTest::nothingBehindTheQueryMatches()
{
    Match match(u"大田"_s); // the one-byte text stands for two zeros, as there are behind the query
    QCOMPARE(match.chunk(chunk(record(1, stored(u"大田") + u8(109)))), QStringList());
    QCOMPARE(match.complete(complete(1, stored(u"／大田") + u8(109))), QStringList());
    Match variant(u"滝山"_s);
    QCOMPARE(variant.chunk(chunk(record(1, stored(u"瀧山") + u8(109)))), QStringList());
}

void AddressMatchTest::textOpenAtTheEndOfARecordEndsThere()
{
    Match match(u"川山"_s);
    QCOMPARE(match.chunk(chunk(record(1, stored(u"川") + Shown + stored(u"大")) + record(2, stored(u"川山")) +
                               record(3, stored(u"川") + Shown))),
             QStringList({u"1000001 1"_s, u"1000002 2"_s, u"1000003 1"_s}));
    QCOMPARE(Match(u"川"_s).complete(complete(5, stored(u"／川") + Shown)), QStringList{u"0000005 1"_s});
}

void AddressMatchTest::longTextIsCut()
{
    const QString address(40, u'川');
    Match match(address);
    const std::u16string text(3000, u'川');
    QCOMPARE(match.chunk(chunk(record(1, stored(text)) + record(2, stored(address.toStdU16String())))),
             QStringList{u"1000002 40"_s});
    Match bytes(address);
    memcpy(bytes.search()->ask1ji, jis(u"川").data(), 2);
    QCOMPARE(bytes.chunk(chunk(record(1, stored(u"川") + Bytes(5000, char(109))))), QStringList());
    QCOMPARE(bytes.complete(complete(1, stored(u"／川") + "\xA4" + Bytes(5000, char(109)))), QStringList());
}

void AddressMatchTest::emptyAndCutChunksGiveNothing_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("cut in its header") << QByteArray::fromStdString(u16(100));
    QTest::newRow("header alone") << QByteArray::fromStdString(u24(10000));
    QTest::newRow("common text alone") << QByteArray::fromStdString(chunk(stored(u"大田区")));
    QTest::newRow("complete record, cut")
        << QByteArray::fromStdString(chunk(record(1, Complete + u16(0x0101))));
    QTest::newRow("cancelling record, cut") << QByteArray::fromStdString(chunk(record(1, Cancels)));
}

void AddressMatchTest::emptyAndCutChunksGiveNothing()
{
    QFETCH(QByteArray, bytes);
    Match match(u"大田区"_s, 3);
    QCOMPARE(match.chunk(bytes.toStdString()), QStringList());
}

void AddressMatchTest::nothingOutsideTheBufferIsRead()
{
    Match match(u"川"_s);
    QCOMPARE(dic_knsk(YDIC_READ_LENGTH - 3, 4, match.search()), 0);
    QCOMPARE(dic_knsk(YDIC_READ_LENGTH + 1, 0, match.search()), 0);
    QCOMPARE(dic_knsk(0xFFFFFFFFU, 10, match.search()), 0);
    QCOMPARE(dic_knsk(0, 0xFFFF, match.search()), 0);
    QCOMPARE(match.candidates(), QStringList());
    match.chunk(chunk(record(1, Whole))); // at the end of the buffer
    QCOMPARE(dic_knsk(YDIC_READ_LENGTH - 5, 6, match.search()), 0);
    QCOMPARE(dic_knsk(YDIC_READ_LENGTH - 5, 5, match.search()), 1);
}

void AddressMatchTest::indexThatMatchedTooMuchGivesNothing()
{
    QCOMPARE(Match(u"川"_s, 60).chunk(chunk(record(1, Whole) + record(2, stored(u"川")))), QStringList());
}

QTEST_GUILESS_MAIN(AddressMatchTest)
#include "addressmatchtest.moc"
