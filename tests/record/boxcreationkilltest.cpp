#include "boxfixture.h"
#include "childprocess.h"
#include "kypdatamanager.h"
#include "kypdatamanagerindexinfo.h"
#include "kypdatamanageriteminfo.h"
#include "kypdatamanagersortkey.h"
#include "storefaults.h"
#include <QRandomGenerator>
#include <QTest>

namespace {

constexpr char Search[] = "NAME\xFE\x92\x11"
                          "a"; // the name contains an a

/** What a box is to become; each one changes what the one before it left. */
enum Version { Plain, OtherOrder, NewItem, Versions };

void createVersion(const QByteArray &name, int version)
{
    KyPDataManagerItemInfo items;
    items.addTextItem("NAME", "name");
    if (version == NewItem)
        items.addTextItem("NOTE", "note");
    KyPDataManagerSortKey order;
    order.addSortKey("NAME", true, version == Plain);
    char sort[50];
    const unsigned long length = order.createSortExp(sort, sizeof sort);
    KyPDataManagerIndexInfo indexes;
    indexes.addIndexInfo("F0:" + name + "1.IDX", Search, sizeof Search, sort, length);
    indexes.addIndexInfo("F0:" + name + "2.IDX", Search, sizeof Search, nullptr, 0);
    KyPDataManager::createFile("F0:" + name + ".BOX", "F0:" + name + ".IDX", 0x54455354, false, items, order,
                               indexes);
}

/** Roles: "create NAME VERSION CALL", killed before that call of the store; "again NAME VERSION", for ever.
 */
int childMain(int argc, char **argv)
{
    if (argc < 4)
        return 2;
    const QByteArray name = argv[2];
    if (argc > 4) {
        StoreFaults::killBefore(QByteArray(argv[4]).toInt());
        createVersion(name, QByteArray(argv[3]).toInt());
        return 0;
    }
    ChildProcess::say("ready");
    createVersion(name, QByteArray(argv[3]).toInt());
    return 0;
}

} // namespace

/** A process is killed while it creates a box; the next creation leaves nothing half-made. */
class BoxCreationKillTest : public QObject
{
    Q_OBJECT
private slots:
    void killedBeforeEachCall_data();
    void killedBeforeEachCall();
    void killedAtAnyMoment_data();
    void killedAtAnyMoment();

private:
    void prepare(int version);
    void checkRepaired(int version);

    QByteArray m_name;
    int m_number = 1000;
};

/** A box of its own as the version before left it, with three cards; no box for the first version. */
void BoxCreationKillTest::prepare(int version)
{
    m_name = "K" + QByteArray::number(++m_number);
    if (version == Plain)
        return;
    createVersion(m_name, version - 1);
    const uint32_t box = _BoxOpenRwMode("F0:" + m_name + ".BOX", 0);
    QVERIFY(box != 0);
    QCOMPARE(addCard(box, {{"NAME", "berta"}}), 1);
    QCOMPARE(addCard(box, {{"NAME", "anna"}}), 2);
    QCOMPARE(addCard(box, {{"NAME", "cent"}}), 3);
    QCOMPARE(_BoxCloseEx(box, 1), PdtmStatus(PdtmOk));
}

void BoxCreationKillTest::checkRepaired(int version)
{
    createVersion(m_name, version);
    const QByteArray path = "F0:" + m_name;
    const QList<int> cards = version == Plain ? QList<int>{} : QList<int>{3, 1, 2};
    const QList<int> subset = version == Plain ? QList<int>{} : QList<int>{1, 2};
    KyPDataManager manager(path + ".BOX", nullptr, false);
    QVERIFY(manager.isOpened());
    QCOMPARE(manager.items().entries().size() - (version == NewItem ? 1 : 0), 5); // one and the implicit four
    QCOMPARE(manager.count(), int(cards.size()));
    QCOMPARE(cardsOf(path + ".IDX"), cards);
    QCOMPARE(cardsOf(path + "1.IDX"), subset);
    QCOMPARE(cardsOf(path + "2.IDX"), subset);
    // A file that was being written next to its index stays until the index is written again.
    QVERIFY(manager.editNewCard());
    QVERIFY(manager.writeItem("NAME", "dan"));
    unsigned long card = 0;
    QVERIFY(manager.finishEditCard(&card));
    QVERIFY(manager.close());
    QVERIFY(cardsOf(path + "2.IDX").contains(int(card)));
    const QStringList files{m_name + ".BOX", m_name + ".IDX", m_name + "1.IDX", m_name + "2.IDX"};
    QCOMPARE(folderNames(boxFolder(), m_name).join(' '), files.join(' '));
}

void BoxCreationKillTest::killedBeforeEachCall_data()
{
    // In two halves, so that each run is short.
    QTest::addColumn<int>("version");
    QTest::addColumn<int>("call");
    for (const int first : {0, 1}) {
        const char *half = first == 0 ? "even" : "odd";
        QTest::addRow("new box, %s", half) << int(Plain) << first;
        QTest::addRow("changed order, %s", half) << int(OtherOrder) << first;
        QTest::addRow("new item, %s", half) << int(NewItem) << first;
    }
}

void BoxCreationKillTest::killedBeforeEachCall()
{
    QFETCH(int, version);
    QFETCH(int, call);
    bool killed = true;
    for (; killed && !QTest::currentTestFailed(); call += 2) {
        prepare(version);
        ChildProcess child({"create", m_name, QString::number(version), QString::number(call)});
        killed = child.finish() != 0;
        checkRepaired(version);
        if (QTest::currentTestFailed())
            qWarning("killed before call %d", call);
    }
    QVERIFY2(call > 20, "the child did not reach the later calls");
}

void BoxCreationKillTest::killedAtAnyMoment_data()
{
    QTest::addColumn<int>("version");
    QTest::newRow("new box") << int(Plain);
    QTest::newRow("changed order") << int(OtherOrder);
    QTest::newRow("new item") << int(NewItem);
}

void BoxCreationKillTest::killedAtAnyMoment()
{
    QFETCH(int, version);
    for (int i = 0; i < 10 && !QTest::currentTestFailed(); ++i) {
        prepare(version);
        ChildProcess child({"again", m_name, QString::number(version)});
        QCOMPARE(child.readLine(), QByteArray("ready"));
        const unsigned long pause = QRandomGenerator::global()->bounded(20000u);
        QThread::usleep(pause);
        child.kill();
        checkRepaired(version);
        if (QTest::currentTestFailed())
            qWarning("killed after %lu us", pause);
    }
}

KY_TEST_MAIN_WITH_CHILD(BoxCreationKillTest, childMain)
#include "boxcreationkilltest.moc"
