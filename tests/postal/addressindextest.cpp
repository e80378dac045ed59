#include "imagebuilder.h"
#include "querytext.h"
#include "ydicaddress_p.h"

#include <QTest>

#include <array>
#include <vector>

using namespace imagebuilder;
using namespace Qt::StringLiterals;

namespace {

constexpr uint16_t Hokkaido = 1;
constexpr uint16_t Tokyo = 13;

/** What knsk_sub() frees. */
struct Slice
{
    Slice(ydic_search *search, size_t length) : bytes(length), groups(length / 2 + 1)
    {
        search->groups = groups.data();
    }
    std::vector<uint8_t> bytes;
    std::vector<ydic_group> groups;
};

/** A search in files. */
class Search
{
public:
    Search(const QString &address, const Image &image)
        : m_files(image.bytes()), m_search(normalisedSearch(address))
    {
        m_search.readBuf = m_buffer.data();
        if (InitDicData(&m_search, info()) != 0)
            qFatal("the image has no header");
    }
    Search(const Search &) = delete;
    Search &operator=(const Search &) = delete;

    ydic_search *search() { return &m_search; }
    ydic_info *info() { return m_files.info(); }

    /** The groups of level 2 that fit: "13: 3 consumed, 2 references at 5". */
    QStringList groups(uint16_t start, uint16_t end)
    {
        m_search.consumed = 2;
        Slice slice(&m_search, end - start);
        const int count = idx2_knsk(start, end, slice.bytes.data(), &m_search, info());
        if (count < 0)
            return {u"failure %1"_s.arg(count)};
        QStringList list;
        for (const ydic_group *group = m_search.groups; group < m_search.groups + count; ++group) {
            list += u"%1: %2 consumed, %3 references at %4"_s.arg(group->prefecture)
                        .arg(group->consumed)
                        .arg(group->count)
                        .arg(group->refOffset);
        }
        m_search.groups = nullptr;
        return list;
    }

    QStringList groupsOf(const Image &image)
    {
        return groups(0, static_cast<uint16_t>(image.address2.size()));
    }

    /** The candidates of a slice of level 2: "1000001 5". */
    QStringList candidates(uint16_t start, uint16_t end)
    {
        const int result = knsk_sub(start, end, &m_search, info());
        QStringList list;
        if (result != 0)
            list += u"failure %1"_s.arg(result);
        if (m_search.groups)
            list += u"groups are left"_s;
        for (int i = 0; i < m_search.candCount; ++i)
            list += u"%1 %2"_s.arg(m_search.candCode[i], 7, 10, QChar(u'0')).arg(m_search.candMatch[i]);
        return list;
    }

    QStringList candidatesOf(const Image &image)
    {
        return candidates(0, static_cast<uint16_t>(image.address2.size()));
    }

private:
    OpenImages m_files;
    std::array<char, YDIC_READ_LENGTH> m_buffer{};
    ydic_search m_search;
};

/** An image whose level 2 is one slice. */
Image imageOf(const Bytes &groups)
{
    Image image;
    image.address2 = groups;
    return image;
}

/** What level 1 says of an address: "from 3 to 7". */
QString slice(Search *search, uint8_t read = 1)
{
    uint16_t start = 0;
    uint16_t end = 0;
    const int found = idx1_knsk(&start, &end, read, search->search(), search->info());
    return found == 1 ? u"from %1 to %2"_s.arg(start).arg(end) : QString::number(found);
}

/** An image with keys whose slices have as many bytes as their place in the alphabet. */
Image imageOfKeys()
{
    Image image;
    image.addAddressKey(u"亜川", Bytes(1, '\0'));
    image.addAddressKey(u"大田", Bytes(2, '\0'));
    image.addAddressKey(u"大野", Bytes(3, '\0'));
    image.addAddressKey(u"品川", Bytes(4, '\0'));
    image.addAddressKey(u"目黒", Bytes(5, '\0'));
    return image;
}

/** A group without references, whose municipality is two characters and a key. */
Bytes groupOf(unsigned prefecture, std::u16string_view key, unsigned suffix)
{
    return group(prefecture, jis(key), suffix, Bytes());
}

/** Offset and content of one chunk after another. */
struct Chunks
{
    Image *image;

    /** Appends a chunk with one whole area. @return its reference */
    Bytes add(uint32_t firstFive, size_t length)
    {
        Bytes records = record(1, u8(YDIC_MARK_WHOLE));
        const uint32_t offset = image->nextReference();
        records += Bytes(length - YDIC_CHUNK_HEADER - records.size(), char(YDIC_MARK_END)); // ends the chunk
        return reference(offset, image->addChunk(firstFive, 1, records));
    }
};

} // namespace

/** The index that leads from the start of an address to chunks. */
class AddressIndexTest : public QObject
{
    Q_OBJECT
private slots:
    void keyLeadsToItsSlice_data();
    void keyLeadsToItsSlice();
    void addressOfOneCharacterHasNoKey();
    void keyComparesAllFourBytes();
    void firstLevelMayLieInTheBuffer();
    void firstLevelHoldsAsManyKeysAsTheBuffer();
    void firstLevelThatIsTooLargeFails();
    void firstLevelWithoutKeysHasNone();
    void firstLevelThatIsCutFails();

    void groupWithoutKeyFits();
    void groupFitsByItsKey_data();
    void groupFitsByItsKey();
    void groupOfAnotherPrefectureIsSkipped();
    void groupsOfSeveralPrefecturesFit();
    void groupsAreAsManyAsTheSliceHas();
    void unknownSuffixEndsTheWalk();
    void unknownSuffixOfSkippedGroupIsNotSeen();
    void keyIsNormalisedTowardsTheQuery_data();
    void keyIsNormalisedTowardsTheQuery();
    void damagedSliceHasNoGroups_data();
    void damagedSliceHasNoGroups();
    void sliceThatIsCutFails();
    void sliceWithoutBytesHasNoGroups();

    void referencesAreCompared();
    void referencesOfSeveralReadsAreCompared();
    void referencesFarApartAreCompared();
    void overlappingReferencesAreReadWhole();
    void referenceThatIsTooLongEndsTheSlice();
    void longestReferenceIsRead();
    void referenceThatIsTooLongKeepsWhatWasFound();
    void referencesThatDescendAreCompared();
    void directReferenceLeadsToCompleteRecord();
    void emptyReferenceGivesNothing();
    void everySliceBeginsBehindItsKey();
    void groupsPrefectureIsKnownToItsRecords();
    void referenceBehindTheFileFails();
    void sliceThatEndsBeforeItsStartIsEmpty();
};

void AddressIndexTest::keyLeadsToItsSlice_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("result");
    QTest::newRow("first") << u"亜川"_s << u"from 0 to 1"_s;
    QTest::newRow("second") << u"大田区蒲田"_s << u"from 1 to 3"_s;
    QTest::newRow("third") << u"大野"_s << u"from 3 to 6"_s;
    QTest::newRow("fourth") << u"品川区"_s << u"from 6 to 10"_s;
    QTest::newRow("last") << u"目黒区"_s << u"from 10 to 15"_s;
    QTest::newRow("before the first") << u"亜井"_s << u"0"_s;
    QTest::newRow("between two") << u"大阪市"_s << u"0"_s;
    QTest::newRow("behind the last") << u"目腕"_s << u"0"_s;
}

void AddressIndexTest::keyLeadsToItsSlice()
{
    QFETCH(QString, address);
    Search search(address, imageOfKeys());
    QTEST(slice(&search), "result");
}

void AddressIndexTest::addressOfOneCharacterHasNoKey()
{
    Image image;
    image.address1 = jis(u"大") + Bytes(2, '\0') + u16(0);
    Search search(u"大"_s, image);
    QCOMPARE(slice(&search), u"0"_s);
    Search nothing(QString(), imageOfKeys());
    QCOMPARE(slice(&nothing), u"0"_s);
}

void AddressIndexTest::keyComparesAllFourBytes()
{
    Image image;
    image.addAddressKey(u"大田", Bytes(1, '\0'));
    Search search(u"大都"_s, image); // differs in the last byte alone: 4544, 4554
    QCOMPARE(jis(u"田")[0], jis(u"都")[0]);
    QCOMPARE(slice(&search), u"0"_s);
}

void AddressIndexTest::firstLevelMayLieInTheBuffer()
{
    Search search(u"大田区"_s, imageOfKeys());
    QCOMPARE(slice(&search, 1), u"from 1 to 3"_s);
    search.info()->dictFile = std::exchange(search.info()->patchFile, search.info()->dictFile);
    QCOMPARE(slice(&search, 0), u"from 1 to 3"_s);
    QCOMPARE(slice(&search, 1), u"-2"_s);
    search.info()->dictFile = std::exchange(search.info()->patchFile, search.info()->dictFile);
}

void AddressIndexTest::firstLevelHoldsAsManyKeysAsTheBuffer()
{
    Image image;
    for (uint32_t key = 0; key < 1705; ++key)
        image.address1 += u32(0x30210000 + key) + u16(key);
    image.address2 = Bytes(1705, '\0');
    image.address1.replace(1704 * 6, 4, jis(u"目黒"));
    Search search(u"目黒区"_s, image);
    QCOMPARE(slice(&search), u"from 1704 to 1705"_s);
}

void AddressIndexTest::firstLevelThatIsTooLargeFails()
{
    Image image;
    for (uint32_t key = 0; key < 1706; ++key)
        image.address1 += u32(0x30210000 + key) + u16(key);
    Search search(u"目黒区"_s, image);
    QCOMPARE(slice(&search), u"-2"_s);
    search.search()->fields.index1Size = 0xFFFFFF;
    QCOMPARE(slice(&search), u"-2"_s);
}

void AddressIndexTest::firstLevelWithoutKeysHasNone()
{
    Search search(u"目黒区"_s, Image());
    QCOMPARE(slice(&search), u"0"_s);
}

void AddressIndexTest::firstLevelThatIsCutFails()
{
    Search search(u"目黒区"_s, imageOfKeys());
    search.search()->fields.index1 += 15; // level 2, which follows, has 15 bytes
    QCOMPARE(slice(&search), u"0"_s);
    search.search()->fields.index1 += 1; // the entry behind the last key is not all there
    QCOMPARE(slice(&search), u"-2"_s);
}

void AddressIndexTest::groupWithoutKeyFits()
{
    const Image image = imageOf(group(Tokyo, reference(0, 1) + reference(1, 1)));
    Search search(u"大田"_s, image);
    QCOMPARE(search.groupsOf(image), QStringList{u"13: 2 consumed, 2 references at 2"_s});
}

void AddressIndexTest::groupFitsByItsKey_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("suffix");
    QTest::addColumn<int>("consumed");
    QTest::newRow("市, K is 1") << u"大阪市北区"_s << u""_s << 1 << 3;
    QTest::newRow("区") << u"大田区"_s << u""_s << 2 << 3;
    QTest::newRow("町") << u"大島町"_s << u""_s << 3 << 3;
    QTest::newRow("村") << u"大潟村"_s << u""_s << 4 << 3;
    QTest::newRow("another suffix") << u"大田区"_s << u""_s << 1 << 0;
    QTest::newRow("suffix that isn't there") << u"大田"_s << u""_s << 2 << 0;
    QTest::newRow("longer key") << u"大阪市北区梅田"_s << u"市北"_s << 2 << 5;
    QTest::newRow("another key") << u"大阪市南区梅田"_s << u"市北"_s << 2 << 0;
    QTest::newRow("key without its suffix") << u"大阪市北"_s << u"市北"_s << 2 << 0;
    QTest::newRow("key longer than the address") << u"大阪市"_s << u"市北"_s << 2 << 0;
    QTest::newRow("longest key") << u"大阪一二三四五六七八九千一二三四村山"_s
                                 << u"一二三四五六七八九千一二三四"_s << 4 << 17;
}

void AddressIndexTest::groupFitsByItsKey()
{
    QFETCH(QString, address);
    QFETCH(QString, key);
    QFETCH(int, suffix);
    QFETCH(int, consumed);
    const Image image =
        imageOf(group(Tokyo, jisBytes(key).toStdString(), static_cast<unsigned>(suffix), reference(0, 1)));
    Search search(address, image);
    QStringList expected;
    if (consumed != 0)
        expected += u"13: %1 consumed, 1 references at %2"_s.arg(consumed).arg(3 + 2 * key.size());
    QCOMPARE(search.groupsOf(image), expected);
}

void AddressIndexTest::groupOfAnotherPrefectureIsSkipped()
{
    const Image image = imageOf(groupOf(Tokyo, u"", 2) + groupOf(32, u"", 2));
    Search search(u"島根県大田区"_s, image);
    QCOMPARE(int(search.search()->prefecture), 32);
    QCOMPARE(search.groupsOf(image), QStringList{u"32: 3 consumed, 0 references at 6"_s});
}

void AddressIndexTest::groupsOfSeveralPrefecturesFit()
{
    const Image image = imageOf(groupOf(Tokyo, u"", 2) + group(32, Bytes()) + groupOf(47, u"", 2));
    Search search(u"大田区"_s, image);
    QCOMPARE(search.groupsOf(image),
             QStringList({u"13: 3 consumed, 0 references at 3"_s, u"32: 2 consumed, 0 references at 5"_s,
                          u"47: 3 consumed, 0 references at 8"_s}));
}

void AddressIndexTest::groupsAreAsManyAsTheSliceHas()
{
    Bytes groups;
    for (int i = 0; i < 32000; ++i)
        groups += group(Tokyo, Bytes());
    const Image image = imageOf(groups);
    Search search(u"大田区"_s, image);
    QCOMPARE(search.groupsOf(image).size(), 32000);
    QCOMPARE(search.candidatesOf(image), QStringList());
}

void AddressIndexTest::unknownSuffixEndsTheWalk()
{
    for (const unsigned suffix : {0U, 5U, 255U}) {
        const Image image = imageOf(groupOf(Tokyo, u"", 2) + groupOf(Tokyo, u"", suffix));
        Search search(u"大田区"_s, image);
        QCOMPARE(search.groupsOf(image), QStringList());
    }
}

void AddressIndexTest::unknownSuffixOfSkippedGroupIsNotSeen()
{
    const Image image = imageOf(groupOf(Tokyo, u"市北", 9) + groupOf(Tokyo, u"", 2));
    Search search(u"大田区"_s, image);
    QCOMPARE(search.groupsOf(image), QStringList{u"13: 3 consumed, 0 references at 10"_s});
    const Image other = imageOf(groupOf(1, u"", 9) + groupOf(Tokyo, u"", 2));
    Search inTokyo(u"東京都大田区"_s, other);
    QCOMPARE(inTokyo.groupsOf(other), QStringList{u"13: 3 consumed, 0 references at 6"_s});
}

void AddressIndexTest::keyIsNormalisedTowardsTheQuery_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("fits");
    QTest::newRow("variant") << u"大山滝野町"_s << u"瀧野"_s << true;
    QTest::newRow("variant behind") << u"大山野滝町"_s << u"野瀧"_s << true;
    QTest::newRow("class") << u"茅場龍ヶ崎町"_s << u"竜が崎"_s << true;
    QTest::newRow("another character") << u"大山滝野町"_s << u"瀧川"_s << false;
    QTest::newRow("nothing known of the character") << u"大滝山野町"_s << u"川野"_s << false;
    QTest::newRow("one to eight") << u"大山八戸町"_s << u"８戸"_s << false;
    QTest::newRow("nine") << u"大山九戸町"_s << u"９戸"_s << true;
    QTest::newRow("り behind 通 dropped") << u"大通滝野町"_s << u"り滝"_s << false;
    QTest::newRow("町 dropped") << u"大山東山一町"_s << u"東山町"_s << false;
}

void AddressIndexTest::keyIsNormalisedTowardsTheQuery()
{
    QFETCH(QString, address);
    QFETCH(QString, key);
    const Image image = imageOf(group(Tokyo, jisBytes(key).toStdString(), 3, Bytes()));
    Search search(address, image);
    QTEST(!search.groupsOf(image).isEmpty(), "fits");
}

void AddressIndexTest::damagedSliceHasNoGroups_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const auto row = [](const char *name, const Bytes &bytes) {
        QTest::newRow(name) << QByteArray::fromStdString(groupOf(Tokyo, u"", 2) + bytes);
    };
    row("half a group's head", u8(13));
    row("references missing", u16(Tokyo << 10 | 1) + u32(0));
    row("suffix missing", u16(Tokyo << 10 | 1 << 6));
    row("key missing", u16(Tokyo << 10 | 15 << 6) + jis(u"大田") + u8(2));
    row("all missing", u16(0xFFFF));
}

void AddressIndexTest::damagedSliceHasNoGroups()
{
    QFETCH(QByteArray, bytes);
    const Image image = imageOf(bytes.toStdString());
    Search search(u"大田区"_s, image);
    QCOMPARE(search.groups(0, 3).size(), 1); // the group before the damage
    QCOMPARE(search.groupsOf(image), QStringList());
    QCOMPARE(search.candidatesOf(image), QStringList());
}

void AddressIndexTest::sliceThatIsCutFails()
{
    const Image image = imageOf(groupOf(Tokyo, u"", 2));
    Search search(u"大田区"_s, image);
    QCOMPARE(search.groups(0, 4), QStringList{u"failure -2"_s});
    QCOMPARE(search.candidates(0, 4), QStringList{u"failure -2"_s});
    QCOMPARE(search.candidates(60000, 65535), QStringList{u"failure -2"_s});
}

void AddressIndexTest::sliceWithoutBytesHasNoGroups()
{
    const Image image = imageOf(groupOf(Tokyo, u"", 2));
    Search search(u"大田区"_s, image);
    QCOMPARE(idx2_knsk(1, 1, nullptr, search.search(), search.info()), 0);
    QCOMPARE(idx2_knsk(2, 1, nullptr, search.search(), search.info()), 0);
}

void AddressIndexTest::referencesAreCompared()
{
    Image image;
    Chunks chunks{&image};
    Bytes references = chunks.add(10000, 10);
    references += chunks.add(20000, 20);
    image.address2 = group(Tokyo, Bytes(), 2, references);
    image.address2 += group(Tokyo, chunks.add(30000, 10));
    Search search(u"大田区"_s, image);
    QCOMPARE(search.candidatesOf(image), QStringList({u"1000001 3"_s, u"2000001 3"_s, u"3000001 2"_s}));
}

void AddressIndexTest::referencesOfSeveralReadsAreCompared()
{
    Image image;
    image.chunkDistance = 1000;
    Chunks chunks{&image};
    Bytes references;
    QStringList expected;
    for (uint32_t i = 0; i < 40; ++i) {
        references += chunks.add(10000 + i, 700 + i * 13);
        expected += u"%1 3"_s.arg((10000 + i) * 100 + 1);
    }
    image.address2 = group(Tokyo, Bytes(), 2, references);
    Search search(u"大田区"_s, image);
    QCOMPARE(search.candidatesOf(image), expected);
}

void AddressIndexTest::referencesFarApartAreCompared()
{
    Image image;
    Chunks chunks{&image};
    const Bytes first = chunks.add(10000, 100);
    chunks.add(20000, 10041); // the third ends one byte behind what one read takes
    const Bytes third = chunks.add(30000, 100);
    image.address2 = group(Tokyo, Bytes(), 2, first + third);
    Search search(u"大田区"_s, image);
    QCOMPARE(search.candidatesOf(image), QStringList({u"1000001 3"_s, u"3000001 3"_s}));
}

void AddressIndexTest::overlappingReferencesAreReadWhole()
{
    Image image;
    Chunks chunks{&image};
    const uint32_t offset = image.nextReference();
    const Bytes first = chunks.add(10000, 10);
    chunks.add(20000, 10);
    // The middle one ends behind the last one.
    const Bytes references = first + reference(offset + 10, 10) + reference(offset, 10);
    image.address2 = group(Tokyo, Bytes(), 2, references);
    Search search(u"大田区"_s, image);
    QCOMPARE(search.candidatesOf(image), QStringList({u"1000001 3"_s, u"2000001 3"_s, u"1000001 3"_s}));
}

void AddressIndexTest::referenceThatIsTooLongEndsTheSlice()
{
    Image image;
    Chunks chunks{&image};
    const Bytes tooLong = chunks.add(10000, 10241);
    const Bytes short1 = chunks.add(20000, 10);
    image.address2 = group(Tokyo, Bytes(), 2, tooLong + short1) + group(Tokyo, Bytes(), 2, short1);
    Search search(u"大田区"_s, image);
    QCOMPARE(search.candidatesOf(image), QStringList());
}

void AddressIndexTest::longestReferenceIsRead()
{
    Image image;
    Chunks chunks{&image};
    Bytes references = chunks.add(10000, 10240);
    references += chunks.add(20000, 10);
    image.address2 = group(Tokyo, Bytes(), 2, references);
    Search search(u"大田区"_s, image);
    QCOMPARE(search.candidatesOf(image), QStringList({u"1000001 3"_s, u"2000001 3"_s}));
}

void AddressIndexTest::referenceThatIsTooLongKeepsWhatWasFound()
{
    Image image;
    Chunks chunks{&image};
    const Bytes first = chunks.add(10000, 10);
    const Bytes tooLong = chunks.add(20000, 10241);
    image.address2 = group(Tokyo, Bytes(), 2, first + tooLong) + group(Tokyo, Bytes(), 2, first);
    Search search(u"大田区"_s, image);
    QCOMPARE(search.candidatesOf(image), QStringList{u"1000001 3"_s});
}

void AddressIndexTest::referencesThatDescendAreCompared()
{
    Image image;
    Chunks chunks{&image};
    const Bytes first = chunks.add(10000, 10);
    const Bytes second = chunks.add(20000, 10);
    const Bytes third = chunks.add(30000, 10);
    image.address2 = group(Tokyo, Bytes(), 2, third + first + second);
    Search search(u"大田区"_s, image);
    QCOMPARE(search.candidatesOf(image), QStringList({u"3000001 3"_s, u"1000001 3"_s, u"2000001 3"_s}));
}

void AddressIndexTest::directReferenceLeadsToCompleteRecord()
{
    Image image;
    const Bytes text = stored(u"東京都／大田区蒲田");
    const Bytes complete = record(1, u8(YDIC_MARK_COMPLETE) + u24(1234500) + text);
    const uint32_t offset = image.nextReference() + YDIC_CHUNK_HEADER;
    image.addChunk(10000, 1, complete + record(2, u8(YDIC_MARK_WHOLE)));
    image.address2 =
        group(Tokyo, Bytes(), 2,
              reference(offset, static_cast<uint32_t>(complete.size()), true) +
                  reference(offset - YDIC_CHUNK_HEADER, static_cast<uint32_t>(complete.size() + 5)));
    Search search(u"大田区蒲田"_s, image);
    // The one behind counts again from what the index matched.
    QCOMPARE(search.candidatesOf(image), QStringList({u"1234500 5"_s, u"1000002 3"_s}));
}

void AddressIndexTest::emptyReferenceGivesNothing()
{
    Image image;
    Chunks chunks{&image};
    const uint32_t offset = image.nextReference();
    const Bytes first = chunks.add(10000, 10);
    image.address2 = group(Tokyo, Bytes(), 2, reference(offset, 0) + reference(offset, 0, true) + first);
    Search search(u"大田区"_s, image);
    QCOMPARE(search.candidatesOf(image), QStringList{u"1000001 3"_s});
}

void AddressIndexTest::everySliceBeginsBehindItsKey()
{
    Image image;
    Chunks chunks{&image};
    image.address2 = group(Tokyo, jis(u"瀧野"), 3, chunks.add(10000, 10));
    Search search(u"大山滝野町"_s, image);
    QCOMPARE(search.candidatesOf(image), QStringList{u"1000001 5"_s});
    search.search()->candCount = 0;
    QCOMPARE(search.candidatesOf(image), QStringList{u"1000001 5"_s});
}

void AddressIndexTest::groupsPrefectureIsKnownToItsRecords()
{
    Image image;
    const Bytes text = record(1, stored(u"南一条西二"));
    const uint32_t offset = image.nextReference();
    const uint32_t length = image.addChunk(10000, 1, text);
    const Bytes references = reference(offset, length);
    image.address2 = group(Hokkaido, Bytes(), 1, references) + group(Tokyo, Bytes(), 1, references);
    Search search(u"札幌市南１西２"_s, image);
    QCOMPARE(search.candidatesOf(image), QStringList{u"1000001 7"_s});
}

void AddressIndexTest::referenceBehindTheFileFails()
{
    Image image;
    Chunks chunks{&image};
    const Bytes first = chunks.add(10000, 10);
    image.address2 = group(Tokyo, Bytes(), 2, first) + group(Tokyo, Bytes(), 2, reference(0xFFFFFF, 10));
    Search search(u"大田区"_s, image);
    QCOMPARE(search.candidatesOf(image), QStringList({u"failure -2"_s, u"1000001 3"_s}));
}

void AddressIndexTest::sliceThatEndsBeforeItsStartIsEmpty()
{
    Image image;
    Chunks chunks{&image};
    image.address2 = group(Tokyo, Bytes(), 2, chunks.add(10000, 10));
    Search search(u"大田区"_s, image);
    QCOMPARE(search.candidates(3, 3), QStringList());
    QCOMPARE(search.candidates(8, 0), QStringList());
    QCOMPARE(search.candidates(65535, 0), QStringList());
}

QTEST_GUILESS_MAIN(AddressIndexTest)
#include "addressindextest.moc"
