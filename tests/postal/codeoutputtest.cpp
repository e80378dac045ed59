#include "codefixture.h"
#include "ydiccode_p.h"

#include <QTest>

using namespace codefixture;
using namespace imagebuilder;

namespace {

const Bytes Area = stored(u"千代田区");

/** 1000005 with the given records, in a chunk of its own. */
Bytes imageOf(const Bytes &records, uint8_t prefecture = 13)
{
    Image image{.ask1ji = jis(u"丁目"), .prefectures = {{10, prefecture}}};
    image.ask1ji.resize(size_t{YDIC_ASK1JI_LENGTH} - 2);
    image.ask1ji += jis(u"北");
    image.addChunk(10000, 0, records);
    return image.bytes();
}

Answer show(const Bytes &records)
{
    return search(imageOf(records), "1000005");
}

/** Marks of text by their letters: "d" is 0x64. */
QByteArray body(const Bytes &bytes)
{
    return QByteArray::fromStdString(bytes);
}

const uint8_t *asBytes(const Bytes &bytes)
{
    return reinterpret_cast<const uint8_t *>(bytes.data());
}

/** Joins results as they lie in a buffer. */
Bytes joined(const QByteArrayList &results)
{
    Bytes bytes;
    for (const QByteArray &result : results)
        bytes += result.toStdString() + '\0';
    return bytes;
}

} // namespace

/** What is shown of the records of a code. */
class CodeOutputTest : public QObject
{
    Q_OBJECT
private slots:
    void record_data();
    void record();
    void numberMarkInTextWritesNothing();
    void commonText_data();
    void commonText();
    void chunkWithoutCommonText();
    void lengthOfAnAddress_data();
    void lengthOfAnAddress();
    void cutMayFallInsideACharacter();
    void prefectureThatIsNone_data();
    void prefectureThatIsNone();
    void oneByteCodeOfNothingWritesNothing();
    void recordAtTheEndOfTheChunk_data();
    void recordAtTheEndOfTheChunk();
    void recordThatIsCutEndsWithTheChunk();
    void chunkWithoutRoomForItsHeader();
    void nothingIsWrittenWithoutRoom();
    void skip_data();
    void skip();
    void duplicates_data();
    void duplicates();
};

void CodeOutputTest::record_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("addresses");
    const QString area = "東京都／千代田区";
    const Bytes east = stored(u"東");
    const Bytes west = stored(u"西");
    const Bytes complete = stored(u"京都府／左京区");
    QTest::newRow("text") << body(east) << QStringList{area + "東"};
    QTest::newRow("no text") << body("") << QStringList{area};
    QTest::newRow("no text but an end") << body("f") << QStringList{area};
    QTest::newRow("whole area") << body("h") << QStringList{area};
    QTest::newRow("whole area with an end") << body("hf") << QStringList{area};
    QTest::newRow("whole area shows no text") << body("h" + east) << QStringList{area};
    QTest::newRow("complete") << body("i" + u24(1000005) + complete) << QStringList{"京都府／左京区"};
    QTest::newRow("complete, its code looks like records")
        << body("i" + Bytes("\x05\x05\x06", 3) + complete) << QStringList{"京都府／左京区"};
    QTest::newRow("complete, up to its end")
        << body("i" + u24(1000005) + complete + "f" + east) << QStringList{"京都府／左京区"};
    QTest::newRow("complete, without what is hidden")
        << body("i" + u24(1000005) + complete + "g" + east + "g" + west) << QStringList{"京都府／左京区西"};
    QTest::newRow("complete without text") << body("i" + u24(1000005)) << QStringList();
    QTest::newRow("silent") << body("d" + east) << QStringList();
    QTest::newRow("silent whole area") << body("dh") << QStringList();
    QTest::newRow("silent and complete") << body("di" + Bytes("\x05\x05\x06", 3) + complete) << QStringList();
    QTest::newRow("cancelling") << body("j" + east) << QStringList();
    QTest::newRow("cancelling the whole area") << body("jhf") << QStringList();
    QTest::newRow("cancelling and silent") << body("jd" + east) << QStringList();
    QTest::newRow("cancelling a complete one")
        << body("ji" + Bytes("\x05\x05\x63", 3) + complete) << QStringList();
    QTest::newRow("text that an address need not say is shown")
        << body(east + "e" + west + "e") << QStringList{area + "東西"};
    QTest::newRow("text behind the end isn't shown") << body(east + "f" + west) << QStringList{area + "東"};
    QTest::newRow("hidden text isn't shown")
        << body(east + "g" + west + "g" + east) << QStringList{area + "東東"};
    QTest::newRow("hidden text at the front") << body("g" + west + "g" + east) << QStringList{area + "東"};
    QTest::newRow("hidden one-byte code") << body(east + "gmg" + "n") << QStringList{area + "東目"};
    QTest::newRow("hidden up to the end") << body(east + "g" + west) << QStringList{area + "東"};
    QTest::newRow("first one-byte code") << body("m") << QStringList{area + "丁"};
    QTest::newRow("second one-byte code") << body("n") << QStringList{area + "目"};
    QTest::newRow("last one-byte code") << body("\xA0") << QStringList{area + "北"};
    QTest::newRow("lowest half of a character") << body("\xA1\xA1") << QStringList{area + QChar(0x3000)};
    for (const char *mark : {"d", "h", "j", "k", "l"})
        QTest::addRow("%s in text writes nothing", mark)
            << body(std::string(east).append(mark).append(west)) << QStringList{area + "東西"};
}

void CodeOutputTest::record()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, addresses);
    // The same code once more behind it: it is seen only when the record ended where it ends.
    const Bytes last = ::record(5, stored(u"末"));
    const Answer answer =
        show(Area + ::record(4, bytes.toStdString()) + ::record(5, bytes.toStdString()) + last);
    QCOMPARE(answer.addresses, addresses + QStringList{"東京都／千代田区末"});
    QVERIFY(answer.isGuarded);
}

void CodeOutputTest::numberMarkInTextWritesNothing()
{
    // Only a record that is passed over takes it for the mark of a complete one.
    const Bytes mark = ::record(5, stored(u"東") + "i" + stored(u"西"));
    const Bytes last = ::record(5, stored(u"末"));
    QCOMPARE(show(mark + last).addresses, (QStringList{"東京都／東西", "東京都／末"}));
}

void CodeOutputTest::commonText_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("shown");
    QTest::newRow("characters") << body(Area) << "千代田区東";
    QTest::newRow("one-byte codes") << body("mn") << "丁目東";
    QTest::newRow("hidden part") << body(stored(u"南") + "g" + Area + "g" + stored(u"北")) << "南北東";
    QTest::newRow("hidden part ends with the common text") << body(stored(u"南") + "g" + Area) << "南東";
    QTest::newRow("e has no meaning") << body("e" + Area + "e") << "千代田区東";
    QTest::newRow("f has no meaning") << body(stored(u"南") + "f" + Area) << "南千代田区東";
    QTest::newRow("h, i, j, k and l have none") << body(stored(u"南") + "hijkl" + Area) << "南千代田区東";
}

void CodeOutputTest::commonText()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, shown);
    QCOMPARE(show(bytes.toStdString() + ::record(5, stored(u"東"))).addresses,
             QStringList{"東京都／" + shown});
}

void CodeOutputTest::chunkWithoutCommonText()
{
    QCOMPARE(show(::record(5, stored(u"東")) + ::record(5, "h")).addresses,
             (QStringList{"東京都／東", "東京都／"}));
    // 0x64 behind the header is neither a record nor common text.
    QCOMPARE(show("d" + ::record(5, stored(u"東"))).count, 0);
}

void CodeOutputTest::lengthOfAnAddress_data()
{
    QTest::addColumn<int>("bytes");
    QTest::addColumn<int>("shown");
    QTest::newRow("short") << 10 << 10;
    QTest::newRow("79") << 79 << 79;
    QTest::newRow("80") << 80 << 80;
    QTest::newRow("81") << 81 << 80;
    QTest::newRow("82") << 82 << 80;
    QTest::newRow("very long") << 4000 << 80;
}

void CodeOutputTest::lengthOfAnAddress()
{
    QFETCH(int, bytes);
    Bytes text;
    for (int i = 0; i < bytes; ++i)
        text += static_cast<char>(0xB0 + i % 50);
    const Bytes records = ::record(5, "i" + u24(1000005) + text) + ::record(5, stored(u"東"));
    for (uint32_t max : {1U, 2U}) {
        const Answer answer = search(imageOf(records), "1000005", max);
        QCOMPARE(answer.count, int(max));
        QTEST(int(answer.results[0].size()), "shown");
        for (size_t i = 0; i < answer.results[0].size(); ++i)
            QCOMPARE(int(answer.results[0][i]), 0x30 + int(i) % 50);
        QVERIFY(answer.isGuarded);
    }
}

void CodeOutputTest::cutMayFallInsideACharacter()
{
    // A half character shifts what follows, the one-byte code is cut in two.
    const Bytes text = stored(std::u16string(39, u'長')) + "\xB0" + "n";
    const Answer answer = show(::record(5, "i" + u24(1000005) + text));
    QCOMPARE(answer.results[0], jis(std::u16string(39, u'長')) + "\x30" + jis(u"目").substr(0, 1));
}

void CodeOutputTest::prefectureThatIsNone_data()
{
    QTest::addColumn<int>("prefecture");
    QTest::addColumn<QString>("name");
    QTest::newRow("before the first") << 0 << "";
    QTest::newRow("first") << 1 << "北海道";
    QTest::newRow("four characters") << 14 << "神奈川県";
    QTest::newRow("last") << 47 << "沖縄県";
    QTest::newRow("behind the last") << 48 << "";
    QTest::newRow("behind the table") << 49 << "";
    QTest::newRow("greatest") << 255 << "";
}

void CodeOutputTest::prefectureThatIsNone()
{
    QFETCH(int, prefecture);
    QFETCH(QString, name);
    const Bytes file = imageOf(::record(5, stored(u"東")), static_cast<uint8_t>(prefecture));
    QCOMPARE(search(file, "1000005").addresses, QStringList{name + "／東"});
}

void CodeOutputTest::oneByteCodeOfNothingWritesNothing()
{
    const Answer answer = show(::record(5, stored(u"東") + "o" + stored(u"西")) + ::record(5, stored(u"南")));
    QCOMPARE(answer.addresses, (QStringList{"東京都／東西", "東京都／南"}));
}

void CodeOutputTest::recordAtTheEndOfTheChunk_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("addresses");
    QTest::newRow("code byte alone") << body("") << QStringList{"東京都／"};
    QTest::newRow("silent") << body("d") << QStringList();
    QTest::newRow("complete, without its code") << body("i") << QStringList();
    QTest::newRow("complete, with a part of its code") << body("i\x0F\x42") << QStringList();
    QTest::newRow("half of a character") << body("\xB0") << QStringList{"東京都／\uFFFD"};
}

void CodeOutputTest::recordAtTheEndOfTheChunk()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, addresses);
    Image image;
    image.addChunk(10000, 0, ::record(5, bytes.toStdString()));
    image.addChunk(10000, 0, ::record(6, stored(u"次")));
    image.chunks.replace(image.chunks.rfind(u24(10000)), 3, "jjj"); // a mark, were it the record's
    QCOMPARE(search(image.bytes(), "1000005").addresses, addresses);
}

void CodeOutputTest::recordThatIsCutEndsWithTheChunk()
{
    const Bytes chunk = u24(10000) + ::record(5, "i\x0F") + Bytes(8, '\xB0');
    const Bytes level1(YDIC_LEVEL1_LENGTH, '\0');
    const Bytes ask1ji(YDIC_ASK1JI_LENGTH, '\0');
    const ydic_range common = {3, 3};
    const ydic_key key = {10, 0, 5};
    ydic_state state = {1, 0, 0};
    ResultBuffer buffer(bufferLength(1));
    QCOMPARE(ydic_output(buffer.data(), 3, &common, &key, 6, &state, ask1ji.data(), asBytes(level1), nullptr,
                         asBytes(chunk)),
             6U);
    QCOMPARE(int{state.count}, 0);
}

void CodeOutputTest::chunkWithoutRoomForItsHeader()
{
    for (size_t length : {0U, 1U, 2U, 3U}) {
        Image image;
        image.addChunk(10000, 5, ::record(5, stored(u"東")));
        image.chunks.resize(length);
        image.addChunk(10000, 5, ::record(5, stored(u"西")));
        QCOMPARE(search(image.bytes(), "1000005").addresses, QStringList{"東京都／西"});
    }
}

void CodeOutputTest::nothingIsWrittenWithoutRoom()
{
    const Bytes chunk = u24(10000) + ::record(5, stored(u"東")) + ::record(6, stored(u"西"));
    const Bytes level1(YDIC_LEVEL1_LENGTH, '\0');
    const Bytes ask1ji(YDIC_ASK1JI_LENGTH, '\0');
    const ydic_range common = {3, 3};
    const ydic_key key = {10, 0, 5};
    for (const ydic_state &full :
         {ydic_state{0, 0, 0}, ydic_state{2, 2, 10}, ydic_state{100000, YDIC_MOST_RESULTS, UINT16_MAX}}) {
        ydic_state state = full;
        QCOMPARE(ydic_output(nullptr, 3, &common, &key, uint32_t(chunk.size()), &state, ask1ji.data(),
                             asBytes(level1), nullptr, asBytes(chunk)),
                 6U);
        QCOMPARE(state.count, full.count);
        QCOMPARE(state.bytes, full.bytes);
    }
}

void CodeOutputTest::skip_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<uint32_t>("position");
    QTest::newRow("text") << body("\5" + stored(u"東西") + "\6") << 5U;
    QTest::newRow("nothing") << body("\5\6") << 1U;
    QTest::newRow("nothing but the end") << body("\5") << 1U;
    QTest::newRow("lowest text byte") << body("\5\x64\x63\6") << 2U;
    QTest::newRow("code bytes of a complete one") << body("\5i\1\2\3" + stored(u"東") + "\6") << 7U;
    QTest::newRow("complete one in text") << body("\5" + stored(u"東") + "i\1\2\3\6") << 7U;
    QTest::newRow("two of them") << body("\5i\1\2\3i\1\2\3\6") << 9U;
    QTest::newRow("mark among the code bytes") << body("\5i\1\2i\1\2\3\6") << 5U;
    QTest::newRow("complete one, cut before its code") << body("\5i") << 2U;
    QTest::newRow("complete one, cut in its code") << body("\5i\1") << 3U;
    QTest::newRow("complete one, cut behind its code") << body("\5i\1\2\3") << 5U;
}

void CodeOutputTest::skip()
{
    QFETCH(QByteArray, bytes);
    const Bytes chunk = bytes.toStdString();
    QTEST(ydic_dictSkip(0, uint32_t(chunk.size()), asBytes(chunk)), "position");
}

void CodeOutputTest::duplicates_data()
{
    QTest::addColumn<QByteArrayList>("before");
    QTest::addColumn<QByteArrayList>("after");
    QTest::newRow("none") << QByteArrayList() << QByteArrayList();
    QTest::newRow("one") << QByteArrayList{"a"} << QByteArrayList{"a"};
    QTest::newRow("different") << QByteArrayList{"a", "ab", "b"} << QByteArrayList{"a", "ab", "b"};
    QTest::newRow("neighbours") << QByteArrayList{"a", "a", "b"} << QByteArrayList{"a", "b"};
    QTest::newRow("apart") << QByteArrayList{"abc", "b", "abc", "c"} << QByteArrayList{"abc", "b", "c"};
    QTest::newRow("last") << QByteArrayList{"a", "bcd", "bcd"} << QByteArrayList{"a", "bcd"};
    QTest::newRow("all") << QByteArrayList{"a", "a", "a", "a"} << QByteArrayList{"a"};
    QTest::newRow("several") << QByteArrayList{"b", "a", "b", "a", "c", "b"} << QByteArrayList{"b", "a", "c"};
}

void CodeOutputTest::duplicates()
{
    QFETCH(QByteArrayList, before);
    QFETCH(QByteArrayList, after);
    Bytes buffer = joined(before);
    ydic_state state = {20, uint16_t(before.size()), uint16_t(buffer.size())};
    QCOMPARE(ydic_uniq(buffer.data(), &state), int(after.size()));
    QCOMPARE(int(state.count), int(after.size()));
    QCOMPARE(size_t{state.bytes}, joined(after).size());
    QCOMPARE(state.max, 20U);
    QCOMPARE(buffer.substr(0, state.bytes), joined(after));
}

QTEST_GUILESS_MAIN(CodeOutputTest)
#include "codeoutputtest.moc"
