/* Kills a writing process again and again, and looks at what it left: every acknowledged change is there,
 * whole, nothing half-done is, and the indexes agree with a fresh sort.
 *
 * Arguments: --rounds N (200 without it). The writer is this program with the argument "writer". */

#include "kypdatamanager.h"
#include "kypdatamanagerindexinfo.h"
#include "kypdatamanageriteminfo.h"
#include "kypdatamanagersortkey.h"
#include "pdtm.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QTest>
#include <unistd.h>

namespace {

constexpr const char *Box = "F0:CRASH.BOX";
constexpr const char *Master = "F0:CRASH.IDX";
constexpr unsigned long ApplicationId = 0x43525348;

/* The state of a card: its three items and its category follow from one number, so that a half-written card
 * shows. */
QString textOf(unsigned value)
{
    return QStringLiteral("%1 text %2").arg(value % 97).arg(value);
}

struct NamedIndex
{
    const char *path;
    QByteArray search;
    QByteArray sort;
};

QByteArray key(const char *code, char op)
{
    return QByteArray(code, 4) + '\xFE' + op;
}

/* Five indexes beside the master, of both kinds of order, whole and restricted. */
const QList<NamedIndex> &otherIndexes()
{
    const QByteArray end(1, '\0');
    const QByteArray category = QByteArray("CTGR\xFE\x92\x0C\x03", 8) + end;
    const QByteArray even = QByteArray("FLAG\xFE\x90\x0B\x01", 8) + end;
    static const QList<NamedIndex> indexes = {
        {"F0:CRASH1.IDX", {}, key("TXTB", '\x82') + end},
        {"F0:CRASH2.IDX", {}, key("NUMB", '\x83') + end},
        {"F0:CRASH3.IDX", category, key("TXTA", '\x80') + end},
        {"F0:CRASH4.IDX", even, key("NUMB", '\x82') + end},
        {"F0:CRASH5.IDX", {}, key("FLAG", '\x82') + key("TXTA", '\x81') + end},
    };
    return indexes;
}

void createBox()
{
    KyPDataManagerItemInfo items;
    items.addTextItem("TXTA", "a");
    items.addTextItem("TXTB", "b");
    items.addUlongItem("NUMB", "number");
    items.addUcharItem("FLAG", "flag");
    items.addCategoryItem();
    KyPDataManagerSortKey order;
    order.addSortKey("TXTA", true, true);
    KyPDataManagerIndexInfo indexes;
    for (const NamedIndex &index : otherIndexes()) {
        indexes.addIndexInfo(index.path, index.search.constData(),
                             static_cast<unsigned long>(index.search.size()), index.sort.constData(),
                             static_cast<unsigned long>(index.sort.size()));
    }
    KyPDataManager::createFile(Box, Master, ApplicationId, false, items, order, indexes);
}

void writeValue(KyPDataManager &box, unsigned value)
{
    const char category = static_cast<char>(value % 5 + 1);
    box.writeItem("TXTA", textOf(value));
    box.writeItem("TXTB", textOf(value + 1));
    box.writeItem("NUMB", static_cast<unsigned long>(value));
    box.writeItem("FLAG", static_cast<unsigned char>(value % 2));
    box.writeItem("CTGR", &category, 1);
}

/* Tells the parent in one write, so that a line is there whole or not at all. */
void tell(const QByteArray &line)
{
    const QByteArray whole = line + '\n';
    if (write(STDOUT_FILENO, whole.constData(), static_cast<size_t>(whole.size())) != whole.size())
        _exit(3);
}

void announce(char what, unsigned long card, unsigned value)
{
    tell(QByteArray(1, what) + ' ' + QByteArray::number(static_cast<qulonglong>(card)) + ' ' +
         QByteArray::number(value));
}

unsigned long randomCard(const KyPDataManager &box)
{
    const int count = box.count();
    return count <= 0 ? 0
                      : box.cardIdFromNumber(
                            QRandomGenerator::global()->bounded(1u, static_cast<unsigned>(count) + 1));
}

/* Adds, edits and deletes until it is killed: "?" before a change, "!" behind an acknowledged one. */
int writeForEver()
{
    KyPDataManager box(Box, nullptr, false);
    if (!box.isOpened() || box.count() < 0)
        return 2;
    tell("ready");
    for (;;) {
        const unsigned value = QRandomGenerator::global()->bounded(1u, 0x1000000u);
        const int count = box.count();
        const quint32 dice = QRandomGenerator::global()->bounded(100u);
        const bool adding = count < 50 || (dice < 35 && count < 400);
        unsigned long card = adding ? 0 : randomCard(box);
        if (!adding && dice >= 75) {
            announce('?', card, 0);
            const unsigned long deleted = card;
            if (!box.deleteCard(&card, KyPDataManager::DeleteSingle))
                return 4;
            announce('!', deleted, 0);
            continue;
        }
        announce('?', adding ? box.expectedCardId() : card, value);
        if (!box.startEditCard(card))
            return 5;
        writeValue(box, value);
        if (!box.finishEditCard(&card))
            return 6;
        announce('!', card, value);
    }
}

QList<unsigned long> walk(const KyPDataManager &box, const char *path)
{
    QList<unsigned long> cards;
    char real[4096];
    FileGetRealPath(real, path);
    for (unsigned long card = box.firstCard(real); card != 0; card = box.nextCard(card, real))
        cards.append(card);
    return cards;
}

/* The same index made anew under another name, walked. */
QList<unsigned long> freshWalk(const KyPDataManager &box, const NamedIndex &index)
{
    const char *fresh = "F0:FRESH.IDX";
    _IndexDelete(fresh);
    _IndexCreate(fresh, 17);
    _IndexInfoWrite(fresh, InfoBoxName, "CRASH.BOX", 10);
    if (!index.search.isEmpty())
        _IndexInfoWrite(fresh, InfoSearchExpression, index.search.constData(),
                        static_cast<uint16_t>(index.search.size()));
    _IndexInfoWrite(fresh, InfoSortExpression, index.sort.constData(),
                    static_cast<uint16_t>(index.sort.size()));
    if (index.search.isEmpty())
        _IndexUnGroup(fresh, box.boxHandle());
    else
        _IndexGroup(Master, fresh, box.boxHandle());
    _IndexSort(fresh, box.boxHandle());
    const QList<unsigned long> cards = walk(box, fresh);
    _IndexDelete(fresh);
    return cards;
}

int rounds = 200;

} // namespace

class CrashTest : public QObject
{
    Q_OBJECT
private slots:
    void everyAcknowledgedChangeSurvives();

private:
    bool letWriterRun(int milliseconds);
    void readTold(const QByteArray &output);
    void check(int round);

    QMap<unsigned long, unsigned> m_cards; // as acknowledged
    unsigned long m_pendingCard = 0;       // announced and not acknowledged
    unsigned m_pendingValue = 0;
    int m_acknowledged = 0;
};

void CrashTest::readTold(const QByteArray &output)
{
    m_pendingCard = 0;
    const QList<QByteArray> lines = output.split('\n');
    for (qsizetype i = 0; i + 1 < lines.size(); ++i) {
        const QList<QByteArray> words = lines[i].split(' ');
        if (words.size() != 3)
            continue;
        const unsigned long card = words[1].toULong();
        const unsigned value = words[2].toUInt();
        if (words[0] == "?") {
            m_pendingCard = card;
            m_pendingValue = value;
            continue;
        }
        m_pendingCard = 0;
        ++m_acknowledged;
        if (value == 0)
            m_cards.remove(card);
        else
            m_cards.insert(card, value);
    }
}

bool CrashTest::letWriterRun(int milliseconds)
{
    QProcess writer;
    writer.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    writer.start(QCoreApplication::applicationFilePath(), {QStringLiteral("writer")});
    QByteArray output;
    while (!output.contains("ready\n")) {
        if (!writer.waitForReadyRead(20000))
            return false;
        output += writer.readAllStandardOutput();
    }
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < milliseconds && writer.state() == QProcess::Running)
        QTest::qSleep(1);
    const bool running = writer.state() == QProcess::Running;
    writer.kill();
    writer.waitForFinished();
    readTold(output + writer.readAllStandardOutput());
    return running && writer.exitStatus() == QProcess::CrashExit;
}

void CrashTest::check(int round)
{
    const QByteArray where = "round " + QByteArray::number(round);
    KyPDataManager box(Box, nullptr, false);
    QVERIFY2(box.isOpened() && box.count() >= 0, where);
    QMap<unsigned long, unsigned> found;
    for (unsigned long card = box.firstCard(); card != 0; card = box.nextCard(card)) {
        unsigned long value = 0;
        QVERIFY2(box.readUlongItem("NUMB", &value, card), where);
        const unsigned number = static_cast<unsigned>(value);
        QCOMPARE(box.readItem("TXTA", card), textOf(number));
        QCOMPARE(box.readItem("TXTB", card), textOf(number + 1));
        QCOMPARE(box.readUcharItem("FLAG", card), static_cast<int>(number % 2));
        found.insert(card, number);
    }
    if (m_pendingCard != 0) {
        // The change under way at the kill has happened whole or not at all.
        if (m_pendingValue == 0 && !found.contains(m_pendingCard))
            m_cards.remove(m_pendingCard);
        if (m_pendingValue != 0 && found.value(m_pendingCard) == m_pendingValue)
            m_cards.insert(m_pendingCard, m_pendingValue);
    }
    QVERIFY2(found == m_cards, where);

    const NamedIndex master = {Master, {}, key("TXTA", '\x80') + QByteArray(1, '\0')};
    for (const NamedIndex &index : QList<NamedIndex>{master} + otherIndexes())
        QVERIFY2(walk(box, index.path) == freshWalk(box, index), where + ' ' + index.path);
}

void CrashTest::everyAcknowledgedChangeSurvives()
{
    createBox();
    for (int round = 0; round < rounds; ++round) {
        QVERIFY(letWriterRun(QRandomGenerator::global()->bounded(1, 40)));
        check(round);
        if (QTest::currentTestFailed())
            return;
    }
    QVERIFY2(m_acknowledged > rounds, "the writers got nothing done");
    qInfo("%d kills, %d acknowledged changes, %lld cards at the end", rounds, m_acknowledged,
          static_cast<long long>(m_cards.size()));
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.contains(QLatin1String("writer")))
        return writeForEver();
    const qsizetype option = arguments.indexOf(QLatin1String("--rounds"));
    if (option > 0 && option + 1 < arguments.size())
        rounds = arguments[option + 1].toInt();
    CrashTest test;
    return QTest::qExec(&test, {arguments[0]});
}

#include "crashtest.moc"
