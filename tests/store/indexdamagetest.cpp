#include "checksum.h"
#include "indexfixture.h"

#include <QRandomGenerator>

using namespace expression;

namespace {

/** Flips, truncates or replaces the file of an index that isn't in memory, and looks at what comes of it. */
class Damage
{
public:
    explicit Damage(TestBox &box) : m_box(box)
    {
        m_index =
            box.sorted("KYTEST.IDX", sortKey("NAME", TextAscending) + sortKey("NUMB", Descending) + '\0');
        for (int i = 0; i < 60; ++i) {
            box.add(QByteArray::number(i * 7919 % 31), static_cast<uint16_t>(i));
        }
        m_cards = cardsOf(m_index);
        _IndexSort(m_index, box.handle());
        m_bytes = contentsOf(m_index);
    }
    [[nodiscard]] const QByteArray &bytes() const { return m_bytes; }
    [[nodiscard]] const QByteArray &index() const { return m_index; }
    [[nodiscard]] const Cards &cards() const { return m_cards; }

    /** True when the index shows what a fresh sort would, before and after a card comes. */
    bool heals(const QByteArray &bytes)
    {
        replaceContents(m_index, bytes);
        m_box.forgetMemory();
        return check(m_index) == PdtmOk && cardsOf(m_index) == m_cards && placesANewCard();
    }
    /** The same, or both definitions are gone: told as damaged, and left to the owner to be deleted. */
    bool healsOrIsGivenUp(const QByteArray &bytes)
    {
        replaceContents(m_index, bytes);
        if (check(m_index) != PdtmDamaged) {
            return heals(bytes);
        }
        m_box.forgetMemory();
        return cardsOf(m_index).isEmpty() && TestBox::info(m_index, InfoBoxName).isNull() &&
               m_box.family() == QList<QByteArray>{m_index};
    }

private:
    /** A card that comes needs the sort keys as well. */
    bool placesANewCard()
    {
        const uint16_t card = m_box.add("12", 999);
        const Cards cards = cardsOf(m_index);
        _IndexSort(m_index, m_box.handle());
        const bool same = cards == cardsOf(m_index) && cards.contains(card);
        _CardDelete(m_box.handle(), card);
        _IndexSort(m_index, m_box.handle());
        m_bytes = contentsOf(m_index); // of today's change counter
        return same;
    }

    TestBox &m_box;
    QByteArray m_index;
    QByteArray m_bytes;
    Cards m_cards;
};

constexpr qsizetype CounterSize = 16; // with its checksum

std::unique_ptr<pdtm::IndexFileReader> readerOf(const std::string &path)
{
    auto reader = std::make_unique<pdtm::IndexFileReader>();
    if (reader->open(path) != PdtmOk) {
        qFatal("can't read the index");
    }
    return reader;
}

} // namespace

/** Damaged index files: no crash, no endless loop, and the order of a fresh sort again. */
class IndexDamageTest : public QObject
{
    Q_OBJECT

private slots:
    void everyDefinitionByteFlipped();
    void bothDefinitionsDamaged();
    void truncations();
    void counterWrittenInPart();
    void fileOfTheEarlierFormat();
    void noCounterForAnotherFile();
    void noCounterWithoutAnOrder();
    void randomFlips_data();
    void randomFlips();
};

void IndexDamageTest::everyDefinitionByteFlipped()
{
    const MemoryFolder folder;
    TestBox box("KYTEST.BOX", folder.path());
    Damage damage(box);
    const int size = int(damage.bytes().size());
    const int definition = 160; // head, and more than the definition holds; the same from the end
    for (int i = 0; i < definition; ++i) {
        for (const int at : {i, size - 1 - i}) {
            QByteArray bytes = damage.bytes();
            bytes[at] = static_cast<char>(~bytes[at]);
            QVERIFY2(damage.heals(bytes), qPrintable(QString("byte %1 of %2").arg(at).arg(size)));
        }
    }
}

void IndexDamageTest::bothDefinitionsDamaged()
{
    const MemoryFolder folder;
    TestBox box("KYTEST.BOX", folder.path());
    Damage damage(box);
    QByteArray bytes = damage.bytes();
    bytes[30] = static_cast<char>(~bytes[30]);
    bytes[bytes.size() - 30] = static_cast<char>(~bytes[bytes.size() - 30]);
    replaceContents(damage.index(), bytes);
    box.forgetMemory();
    QCOMPARE(check(damage.index()), PdtmStatus(PdtmDamaged));
    char buffer[PdtmInfoRoom];
    uint16_t size = sizeof buffer;
    QCOMPARE(_IndexInfoRead(damage.index(), InfoSortExpression, buffer, &size), PdtmStatus(PdtmDamaged));
    QCOMPARE(box.family(), QList<QByteArray>{damage.index()});
    QCOMPARE(_IndexDelete(damage.index()), PdtmStatus(PdtmOk));
    QVERIFY(box.family().isEmpty());
}

void IndexDamageTest::truncations()
{
    const MemoryFolder folder;
    TestBox box("KYTEST.BOX", folder.path());
    Damage damage(box);
    const qsizetype size = damage.bytes().size();
    for (int i = 0; i < 20; ++i) {
        QVERIFY2(damage.healsOrIsGivenUp(damage.bytes().left(size * i / 20)), qPrintable(QString::number(i)));
    }
    QVERIFY(damage.heals(damage.bytes() + "more"));
}

void IndexDamageTest::counterWrittenInPart()
{
    const MemoryFolder folder;
    TestBox box("KYTEST.BOX", folder.path());
    Damage damage(box);
    const QByteArray before = damage.bytes();
    const std::string path = pdtm::realPath(damage.index());
    const auto counterAt = static_cast<qsizetype>(readerOf(path)->counterOffset());
    box.close();
    pdtm::FileStamp stamp = *pdtm::stampOf(path);
    QCOMPARE(pdtm::writeIndexCounter(path, 0x1122334455667788, stamp), PdtmStatus(PdtmOk));
    QCOMPARE(readerOf(path)->counter(), uint64_t(0x1122334455667788));
    const QByteArray after = contentsOf(damage.index());
    box.open();
    for (qsizetype written = 1; written < CounterSize; ++written) {
        QByteArray bytes = before;
        bytes.replace(counterAt, written, after.mid(counterAt, written));
        replaceContents(damage.index(), bytes);
        QCOMPARE(readerOf(path)->counter(), uint64_t(0));
        QVERIFY2(damage.heals(bytes), qPrintable(QString::number(written)));
    }
}

/** Its counter stood within the checksum of the order, and had none of its own. */
void IndexDamageTest::fileOfTheEarlierFormat()
{
    const MemoryFolder folder;
    TestBox box("KYTEST.BOX", folder.path());
    Damage damage(box);
    const std::string path = pdtm::realPath(damage.index());
    const auto order = static_cast<qsizetype>(readerOf(path)->counterOffset());
    QByteArray bytes = damage.bytes();
    uint32_t count = 0;
    memcpy(&count, bytes.constData() + order + CounterSize, sizeof count);
    bytes.remove(order + 8, 8);
    pdtm::Checksum checksum;
    checksum.add(bytes.constData() + order, 16);
    checksum.add(bytes.constData() + order + 32, count * sizeof(uint16_t));
    checksum.add(bytes.constData() + order + 32 + count * sizeof(uint16_t), count);
    const uint64_t sum = checksum.result();
    memcpy(bytes.data() + order + 16, &sum, sizeof sum);
    QVERIFY(damage.heals(bytes));
}

void IndexDamageTest::noCounterForAnotherFile()
{
    const MemoryFolder folder;
    TestBox box("KYTEST.BOX", folder.path());
    const Damage damage(box);
    const std::string path = pdtm::realPath(damage.index());
    pdtm::FileStamp stamp = *pdtm::stampOf(path);
    ++stamp.inode;
    QCOMPARE(pdtm::writeIndexCounter(path, 77, stamp), PdtmStatus(PdtmDamaged));
    QCOMPARE(pdtm::writeIndexCounter(path + "2", 77, stamp), PdtmStatus(PdtmMissing));
    QCOMPARE(contentsOf(damage.index()), damage.bytes());
}

/** An order that was too large to be stored must not pass for an empty one of today. */
void IndexDamageTest::noCounterWithoutAnOrder()
{
    const MemoryFolder folder;
    TestBox box("KYTEST.BOX", folder.path());
    const Damage damage(box);
    const std::string path = pdtm::realPath(damage.index());
    pdtm::FileStamp stamp;
    QCOMPARE(pdtm::writeIndexFile(path, readerOf(path)->definition(), pdtm::OrderImage(), stamp),
             PdtmStatus(PdtmOk));
    const QByteArray bytes = contentsOf(damage.index());
    QCOMPARE(pdtm::writeIndexCounter(path, 77, stamp), PdtmStatus(PdtmDamaged));
    QCOMPARE(contentsOf(damage.index()), bytes);
}

void IndexDamageTest::randomFlips_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 4; ++seed) {
        QTest::addRow("seed %u", seed) << seed;
    }
}

void IndexDamageTest::randomFlips()
{
    QFETCH(quint32, seed);
    const MemoryFolder folder;
    TestBox box("KYTEST.BOX", folder.path());
    Damage damage(box);
    QRandomGenerator random(seed);
    for (int i = 0; i < 250; ++i) {
        QByteArray bytes = damage.bytes();
        for (quint32 flips = 1 + random.bounded(3U); flips > 0; --flips) {
            const auto at = static_cast<qsizetype>(random.bounded(static_cast<quint32>(bytes.size())));
            bytes[at] = static_cast<char>(bytes[at] ^ static_cast<char>(1 + random.bounded(255)));
        }
        QVERIFY2(damage.healsOrIsGivenUp(bytes), qPrintable(QString("round %1").arg(i)));
    }
}

QTEST_GUILESS_MAIN(IndexDamageTest)
#include "indexdamagetest.moc"
