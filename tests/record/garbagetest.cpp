#include "logcapture.h"
#include "messagerobot.h"
#include "qcopchannel.h"
#include "recordfixture.h"
#include <QWidget>

namespace {

QList<quint32> garbageSizes; ///< what _GetBoxGarbageSize tells, in turn; the last one stays; empty: the truth
QByteArrayList calls;        ///< of the operations of a collection
bool refuseOpen = false;
bool refuseClose = false;

void pretend(const QList<quint32> &sizes)
{
    garbageSizes = sizes;
    calls.clear();
}

} // namespace

PdtmStatus _GetBoxGarbageSize(const char *path, uint32_t *size)
{
    static const auto next = nextDefinition<decltype(_GetBoxGarbageSize)>("_GetBoxGarbageSize");
    if (garbageSizes.isEmpty())
        return next(path, size);
    *size = garbageSizes.size() > 1 ? garbageSizes.takeFirst() : garbageSizes.first();
    return PdtmOk;
}

PdtmStatus _BoxGarbageCollect(const char *path)
{
    static const auto next = nextDefinition<decltype(_BoxGarbageCollect)>("_BoxGarbageCollect");
    const PdtmStatus status = next(path);
    calls.append("collect " + QByteArray::number(status));
    return status;
}

PdtmStatus _BoxClose(uint32_t handle)
{
    static const auto next = nextDefinition<decltype(_BoxClose)>("_BoxClose");
    calls.append("close");
    return refuseClose ? PdtmStatus(PdtmIoError) : next(handle);
}

uint32_t _BoxOpenRwMode(const char *path, uint8_t mode)
{
    static const auto next = nextDefinition<decltype(_BoxOpenRwMode)>("_BoxOpenRwMode");
    calls.append("open " + QByteArray::number(mode));
    return refuseOpen ? 0 : next(path, mode);
}

class GarbageTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void bigGarbage();
    void automaticCollection_data();
    void automaticCollection();
    void bulkDeletionCollects_data();
    void bulkDeletionCollects();
    void growthOfAnActionCountsFromItsFirstEdit();
    void viewStaysOverACollection();
    void failedEditCollectsNothing();
    void realGarbageIsCollected();
    void collectionSendsNoMessage();
    void reopenThatFailsLeavesTheBoxClosed();
    void boxThatCannotBeClosedIsKept();
    void alertThreshold_data();
    void alertThreshold();
    void alertLooks();
    void alertAnswers_data();
    void alertAnswers();
    void constructorAsksWithAParent();
    void constructorIsSilentWithNoParent();
};

void GarbageTest::init()
{
    pretend({});
    refuseOpen = refuseClose = false;
}

void GarbageTest::bigGarbage()
{
    QVERIFY(!IsBigGarbage(0));
    QVERIFY(!IsBigGarbage(102400));
    QVERIFY(IsBigGarbage(102401));
    QVERIFY(KyPDtm::IsBigGarbage(0xFFFFFFFF));
}

void GarbageTest::automaticCollection_data()
{
    QTest::addColumn<bool>("byDeletion");
    QTest::addColumn<quint32>("start");
    QTest::addColumn<quint32>("present");
    QTest::addColumn<bool>("collects");

    for (const bool byDeletion : {false, true}) {
        const auto row = [byDeletion](const char *name, quint32 start, quint32 present, bool collects) {
            QTest::addRow("%s: %s", byDeletion ? "deletion" : "edit", name)
                << byDeletion << start << present << collects;
        };
        row("20480 from 0", 0, 20480, false);
        row("20481 from 0", 0, 20481, true);
        row("growth of 20480", 1000, 21480, false);
        row("growth of 20481", 1000, 21481, true);
        row("102400 with little growth", 102300, 102400, false);
        row("102401 with little growth", 102300, 102401, true);
        row("102401 with none", 102401, 102401, true);
        row("less than at the start", 50000, 40000, false);
        row("none left", 102400, 0, false);
    }
}

void GarbageTest::automaticCollection()
{
    QFETCH(bool, byDeletion);
    QFETCH(quint32, start);
    QFETCH(quint32, present);
    QFETCH(bool, collects);
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("a"));
    const unsigned long kept = addCard(manager, QStringLiteral("b"));
    QVERIFY(manager.last());
    pretend({start, present});
    LogCapture log;
    if (byDeletion)
        QVERIFY(manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    else
        QVERIFY(manager.startEditCard(card) && manager.finishEditCard(&card));
    if (collects) {
        QCOMPARE(calls, (QByteArrayList{"close", "collect 0", "open 0"}));
        QCOMPARE(log.lines(),
                 QStringList{QStringLiteral("KyPDataManager: auto garbage collection %1").arg(present)});
    } else {
        QVERIFY(calls.isEmpty());
        QVERIFY(log.lines().isEmpty());
    }
    QVERIFY(manager.isOpened());
    QCOMPARE(manager.readItem("TITL"), QStringLiteral("b"));
    QCOMPARE(manager.lastCard(), kept);
    QVERIFY(manager.startEditCard(kept));
}

void GarbageTest::bulkDeletionCollects_data()
{
    QTest::addColumn<KyPDataManager::DeleteMode>("mode");
    QTest::addColumn<quint32>("start");
    QTest::addColumn<quint32>("present");
    QTest::addColumn<bool>("collects");

    for (const auto mode : {KyPDataManager::DeleteVisible, KyPDataManager::DeleteAll}) {
        const auto row = [mode](const char *name, quint32 start, quint32 present, bool collects) {
            const char *what = mode == KyPDataManager::DeleteAll ? "all" : "visible";
            QTest::addRow("%s: %s", what, name) << mode << start << present << collects;
        };
        row("growth of 20480", 1000, 21480, false);
        row("growth of 20481", 1000, 21481, true);
        row("102400 with little growth", 102300, 102400, false);
        row("102401 with little growth", 102300, 102401, true);
        row("less than at the start", 50000, 40000, false);
    }
}

void GarbageTest::bulkDeletionCollects()
{
    QFETCH(KyPDataManager::DeleteMode, mode);
    QFETCH(quint32, start);
    QFETCH(quint32, present);
    QFETCH(bool, collects);
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(addCard(manager, QStringLiteral("a")) && addCard(manager, QStringLiteral("b")));
    pretend({start, present});
    QVERIFY(manager.deleteCard(nullptr, mode));
    // Behind the action of the deletion: a box that is closed inside one loses it.
    QCOMPARE(calls, collects ? QByteArrayList({"close", "collect 0", "open 0"}) : QByteArrayList());
    QVERIFY(manager.isOpened());
    QCOMPARE(manager.count(), 0);
    QVERIFY(addCard(manager, QStringLiteral("c")) != 0);
    QCOMPARE(manager.count(), 1);
}

void GarbageTest::growthOfAnActionCountsFromItsFirstEdit()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    pretend({1000, 21481}); // at the first edit, and ever after
    QVERIFY(manager.beginAction());
    QVERIFY(addCard(manager, QStringLiteral("a")) && addCard(manager, QStringLiteral("b")));
    QVERIFY(calls.isEmpty());
    QVERIFY(manager.endAction());
    QCOMPARE(calls, (QByteArrayList{"close", "collect 0", "open 0"}));
    QCOMPARE(manager.count(), 2);
    calls.clear();
    QVERIFY(addCard(manager, QStringLiteral("c")) != 0); // counts from its own begin again
    QVERIFY(calls.isEmpty());
}

void GarbageTest::viewStaysOverACollection()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("a"));
    const unsigned long other = addCard(manager, QStringLiteral("b"));
    QVERIFY(manager.addCardToCtgr(card, 5, KyPDataManager::DeleteSingle, false));
    QVERIFY(manager.addCardToCtgr(other, 5, KyPDataManager::DeleteSingle, false));
    manager.sort(false);
    QVERIFY(manager.enableFilter(5));
    QVERIFY(manager.first());
    pretend({0, 200000});
    QVERIFY(manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    QCOMPARE(calls.size(), 3);
    QCOMPARE(manager.count(), 1);
    QCOMPARE(manager.cardId(), other);
    QVERIFY(!manager.ascendent());
    QCOMPARE(manager.readCategories(0), QList<int>{5});
}

void GarbageTest::failedEditCollectsNothing()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("a"));
    pretend({200000});
    QVERIFY(!manager.startEditCard(77));
    QVERIFY(!manager.finishEditCard(&card));
    QVERIFY(manager.startEditCard(card) && manager.cancelEditCard());
    card = 0;
    QVERIFY(!manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    QVERIFY(calls.isEmpty());
}

void GarbageTest::realGarbageIsCollected()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    const QByteArray large(60000, 'x');
    QVERIFY(manager.editNewCard());
    QVERIFY(manager.writeItem("BINA", large.constData(), 60000));
    QVERIFY(manager.finishEditCard(&card));
    const unsigned long before = manager.garbageSize();
    calls.clear();
    QVERIFY(manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    QCOMPARE(calls, (QByteArrayList{"close", "collect 0", "open 0"}));
    QVERIFY(manager.garbageSize() <= before);
    QVERIFY(manager.garbageSize() < 20481);
}

void GarbageTest::collectionSendsNoMessage()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("a"));
    QCopChannel channel("QPE/System");
    QByteArrayList messages;
    connect(&channel, &QCopChannel::received, this,
            [&messages](const QByteArray &message) { messages.append(message); });
    QCopChannel::send("QPE/System", "before()");
    QTRY_VERIFY_WITH_TIMEOUT(messages.contains("before()"), 10000); // and behind it nothing of the opening
    pretend({0, 200000});
    QVERIFY(manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    QCOMPARE(calls.size(), 3);
    QCopChannel::send("QPE/System", "after()");
    QTRY_VERIFY_WITH_TIMEOUT(messages.contains("after()"), 10000);
    QCOMPARE(messages.mid(messages.indexOf("before()")), (QByteArrayList{"before()", "after()"}));
}

void GarbageTest::reopenThatFailsLeavesTheBoxClosed()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("a"));
    pretend({0, 200000});
    refuseOpen = true;
    QVERIFY(manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    QVERIFY(!manager.isOpened());
    refuseOpen = false;
    QVERIFY(manager.open(false));
}

void GarbageTest::boxThatCannotBeClosedIsKept()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("a"));
    const quint32 handle = manager.boxHandle();
    pretend({0, 200000});
    refuseClose = true;
    QVERIFY(manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    QCOMPARE(calls, QByteArrayList{"close"});
    QCOMPARE(manager.boxHandle(), handle);
    QVERIFY(addCard(manager, QStringLiteral("b")) != 0);
}

void GarbageTest::alertThreshold_data()
{
    QTest::addColumn<quint32>("size");
    QTest::addColumn<bool>("asks");
    QTest::newRow("0") << 0u << false;
    QTest::newRow("102400") << 102400u << false;
    QTest::newRow("102401") << 102401u << true;
}

void GarbageTest::alertThreshold()
{
    QFETCH(quint32, size);
    QFETCH(bool, asks);
    const TestBox box;
    QWidget parent;
    pretend({size});
    MessageRobot robot({QMessageBox::Yes});
    QCOMPARE(KyPDataManager::checkGarbageAlert(box.path().constData(), &parent), asks);
    QCOMPARE(robot.boxes().size(), asks ? 1 : 0);
    QCOMPARE(calls, asks ? QByteArrayList{"collect 0"} : QByteArrayList());
}

void GarbageTest::alertLooks()
{
    const TestBox box;
    QWidget parent;
    pretend({102401});
    MessageRobot robot({QMessageBox::No});
    KyPDataManager::checkGarbageAlert(box.path().constData(), &parent);
    QCOMPARE(robot.boxes().size(), 1);
    const MessageRobot::Box shown = robot.boxes().first();
    QCOMPARE(shown.icon, QMessageBox::Warning);
    QCOMPARE(shown.caption, QStringLiteral("Defragmentation"));
    QCOMPARE(shown.text,
             QStringLiteral("<p>Internal Flash has been fragmented.<p>Do you want to defragment the "
                            "Internal Flash to effectively use it?<p>&lt; Note &gt;This operation "
                            "may take some time.<p>"));
    QCOMPARE(shown.buttons, QMessageBox::Yes | QMessageBox::No);
    QCOMPARE(shown.defaultButton, QMessageBox::No);
    QCOMPARE(shown.escapeButton, QMessageBox::No);
    QVERIFY(shown.hasParent);
}

void GarbageTest::alertAnswers_data()
{
    QTest::addColumn<QMessageBox::StandardButton>("answer");
    QTest::addColumn<bool>("collects");
    QTest::newRow("yes") << QMessageBox::Yes << true;
    QTest::newRow("no") << QMessageBox::No << false;
    QTest::newRow("escape") << QMessageBox::NoButton << false;
}

void GarbageTest::alertAnswers()
{
    QFETCH(QMessageBox::StandardButton, answer);
    QFETCH(bool, collects);
    const TestBox box;
    QWidget parent;
    pretend({150000});
    MessageRobot robot({answer});
    QCOMPARE(KyPDataManager::checkGarbageAlert(box.path().constData(), &parent), collects);
    QCOMPARE(robot.boxes().size(), 1);
    QCOMPARE(calls, collects ? QByteArrayList{"collect 0"} : QByteArrayList());
}

void GarbageTest::constructorAsksWithAParent()
{
    const TestBox box;
    QWidget parent;
    pretend({150000, 0});
    MessageRobot robot({QMessageBox::Yes});
    const KyPDataManager manager(box.path().constData(), &parent, false);
    QCOMPARE(robot.boxes().size(), 1);
    QCOMPARE(calls, (QByteArrayList{"collect 0", "open 0"})); // before the box is opened
    QVERIFY(manager.isOpened());
    QVERIFY(!manager.parent());
}

void GarbageTest::constructorIsSilentWithNoParent()
{
    const TestBox box;
    pretend({150000});
    MessageRobot robot;
    const KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(manager.isOpened());
    QCOMPARE(calls, QByteArrayList{"open 0"});
    QVERIFY(robot.boxes().isEmpty());
}

QTEST_MAIN(GarbageTest)
#include "garbagetest.moc"
