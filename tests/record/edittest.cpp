#include "logcapture.h"
#include "recordfixture.h"
#include "synchronisations.h"
#include <unistd.h>

namespace {

bool refuseSyncId = false;
bool refuseSyncIdUpdate = false;
QByteArray refusedItem;      ///< _CardWrite fails for it
PdtmStatus commitStatus = 0; ///< of _CardCopy from the work card, when it isn't 0
QList<quint16> deletedCards;

const QByteArray longAgo = ptime(2001, 1, 1, 1, 1, 1);

bool isAbsent(const KyPDataManager &manager, unsigned long card)
{
    return storedBytes(manager, card, "TITL") == "unreadable";
}

} // namespace

uint32_t DtmGetSyncId(uint32_t handle)
{
    static const auto next = nextDefinition<decltype(DtmGetSyncId)>("DtmGetSyncId");
    return refuseSyncId ? 0 : next(handle);
}

PdtmStatus DtmUpdateSyncId(uint32_t handle)
{
    static const auto next = nextDefinition<decltype(DtmUpdateSyncId)>("DtmUpdateSyncId");
    return refuseSyncIdUpdate ? PdtmStatus(PdtmIoError) : next(handle);
}

PdtmStatus _CardWrite(uint32_t handle, const CardItemKey *key, const void *buffer, uint32_t size)
{
    static const auto next = nextDefinition<decltype(_CardWrite)>("_CardWrite");
    return refusedItem == QByteArray(key->code, 4) ? PdtmStatus(PdtmIoError)
                                                   : next(handle, key, buffer, size);
}

PdtmStatus _CardCopy(uint32_t handle, uint16_t source, uint16_t *destination)
{
    static const auto next = nextDefinition<decltype(_CardCopy)>("_CardCopy");
    return source == WorkCardId && commitStatus ? commitStatus : next(handle, source, destination);
}

PdtmStatus _CardDelete(uint32_t handle, uint16_t card)
{
    static const auto next = nextDefinition<decltype(_CardDelete)>("_CardDelete");
    deletedCards.append(card);
    return next(handle, card);
}

class EditTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void newCardIsStamped();
    void newCardWithNothingWrittenIsStamped();
    void newCardAtAGivenId();
    void idBeyondSixteenBitsIsCut();
    void syncIdsDiffer();
    void changedCardGetsItsTimeOfChange();
    void attributeAloneIsNoChange();
    void editWithNoWriteIsNoChange();
    void editedCardToANewPlace();
    void nothingIsSeenBeforeTheEnd();
    void cancelLeavesNoTrace();
    void startTwiceLeavesTheFirst();
    void callsWithNoEdit();
    void missingCardCannotBeEdited();
    void staleWorkCardIsRemoved();
    void workCardThatCannotBeMade();
    void failedStampCancels_data();
    void failedStampCancels();
    void failedTimeOfChangeCancels();
    void failedCommitIsLogged();
    void oneSynchronisationAnEdit();
    void actionIsOneSynchronisation();
    void actionsNest();
    void actionsNeedAnOpenBox();
    void actionThatCannotCommit();
    void collectionWaitsForTheEndOfTheAction();
};

void EditTest::init()
{
    refuseSyncId = refuseSyncIdUpdate = false;
    refusedItem.clear();
    commitStatus = 0;
}

void EditTest::newCardIsStamped()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);
    const unsigned long card = addCard(manager, QStringLiteral("a"));
    QVERIFY(card != 0 && card < WorkCardId);
    QCOMPARE(storedBytes(manager, card, "ATTR"), QByteArray(1, '\0'));
    QVERIFY(manager.setInternalUtc("CTTM"));
    QVERIFY(manager.setInternalUtc("MDTM"));
    for (const char *code : {"CTTM", "MDTM"}) {
        const QDateTime stamp = manager.readTimeItem(code, card, true);
        QVERIFY(stamp >= before && stamp <= QDateTime::currentDateTimeUtc());
    }
    unsigned long syncId = 0;
    QVERIFY(manager.readUlongItem("SYID", &syncId, card));
    QVERIFY(syncId != 0);
    QVERIFY(isAbsent(manager, WorkCardId));
    QVERIFY(manager.first());
    QCOMPARE(manager.cardId(), card); // in the index at once
}

void EditTest::newCardWithNothingWrittenIsStamped()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(manager.startEditCard(0));
    QVERIFY(manager.finishEditCard(&card));
    QVERIFY(manager.readDateItem("MDTM", card).isValid()); // writing CTTM is a change
}

void EditTest::newCardAtAGivenId()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 500;
    QVERIFY(manager.editNewCard());
    QVERIFY(manager.writeItem("TITL", "a"));
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(card, 500UL);
    QCOMPARE(manager.readItem("TITL", 500), QStringLiteral("a"));
    QVERIFY(manager.readDateItem("CTTM", 500).isValid());
}

void EditTest::idBeyondSixteenBitsIsCut()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const unsigned long first = addCard(manager, QStringLiteral("a"));
    unsigned long card = 0x10000; // nothing is left of it, so it asks for a new card
    QVERIFY(manager.startEditCard(first));
    QVERIFY(manager.finishEditCard(&card));
    QVERIFY(card != 0 && card != first);
    QVERIFY(storedBytes(manager, card, "SYID") != storedBytes(manager, first, "SYID"));
}

void EditTest::syncIdsDiffer()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const unsigned long first = addCard(manager, QStringLiteral("a"));
    const unsigned long second = addCard(manager, QStringLiteral("b"));
    QVERIFY(storedBytes(manager, first, "SYID") != storedBytes(manager, second, "SYID"));
}

void EditTest::changedCardGetsItsTimeOfChange()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("a"));
    QVERIFY(storeBytes(manager, card, "MDTM", longAgo));
    QVERIFY(storeBytes(manager, card, "CTTM", longAgo));
    const QByteArray syncId = storedBytes(manager, card, "SYID");
    QVERIFY(manager.startEditCard(card));
    QVERIFY(manager.writeItem("TITL", "b"));
    QVERIFY(manager.finishEditCard(&card));
    QVERIFY(storedBytes(manager, card, "MDTM") != longAgo);
    QCOMPARE(storedBytes(manager, card, "CTTM"), longAgo);
    QCOMPARE(storedBytes(manager, card, "SYID"), syncId);
    QCOMPARE(manager.readItem("TITL", card), QStringLiteral("b"));
}

void EditTest::attributeAloneIsNoChange()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("a"));
    QVERIFY(storeBytes(manager, card, "MDTM", longAgo));
    QVERIFY(manager.startEditCard(card));
    QVERIFY(manager.writeItem("ATTR", static_cast<unsigned char>(0x02)));
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(storedBytes(manager, card, "MDTM"), longAgo);
    QCOMPARE(storedBytes(manager, card, "ATTR"), "\x02");
}

void EditTest::editWithNoWriteIsNoChange()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("a"));
    QVERIFY(storeBytes(manager, card, "MDTM", longAgo));
    QVERIFY(manager.startEditCard(card));
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(storedBytes(manager, card, "MDTM"), longAgo);
}

void EditTest::editedCardToANewPlace()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long seventh = 7;
    QVERIFY(manager.editNewCard());
    QVERIFY(manager.writeItem("TITL", "seven"));
    QVERIFY(manager.finishEditCard(&seventh));
    QCOMPARE(seventh, 7UL);
    for (const char *code : {"CTTM", "MDTM"})
        QVERIFY(storeBytes(manager, 7, code, longAgo));
    const QByteArray syncId = storedBytes(manager, 7, "SYID");

    unsigned long card = 0;
    QVERIFY(manager.startEditCard(7));
    QVERIFY(manager.writeItem("NUMB", static_cast<unsigned char>(9)));
    QVERIFY(manager.finishEditCard(&card));
    QVERIFY(card != 0 && card != 7);
    QCOMPARE(manager.readItem("TITL", card), QStringLiteral("seven"));
    QCOMPARE(manager.readUcharItem("NUMB", card), 9);
    QVERIFY(storedBytes(manager, card, "CTTM") != longAgo);
    QVERIFY(storedBytes(manager, card, "SYID") != syncId);
    QCOMPARE(manager.readItem("TITL", 7), QStringLiteral("seven"));
    QCOMPARE(manager.readUcharItem("NUMB", 7), -1);
    QCOMPARE(storedBytes(manager, 7, "CTTM"), longAgo);
    QCOMPARE(storedBytes(manager, 7, "MDTM"), longAgo);
    QCOMPARE(storedBytes(manager, 7, "SYID"), syncId);
}

void EditTest::nothingIsSeenBeforeTheEnd()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const unsigned long card = addCard(manager, QStringLiteral("a"));
    QVERIFY(manager.startEditCard(card));
    QVERIFY(manager.writeItem("TITL", "b"));
    QCOMPARE(manager.readItem("TITL", card), QStringLiteral("a"));
    QCOMPARE(manager.readItem("TITL", WorkCardId), QStringLiteral("b"));
    QCOMPARE(manager.count(), 1);
    QVERIFY(manager.cancelEditCard());
}

void EditTest::cancelLeavesNoTrace()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("a"));
    QVERIFY(manager.startEditCard(card));
    QVERIFY(manager.writeItem("TITL", "b"));
    QVERIFY(manager.cancelEditCard());
    QCOMPARE(manager.readItem("TITL", card), QStringLiteral("a"));
    QVERIFY(isAbsent(manager, WorkCardId));
    QVERIFY(!manager.writeItem("TITL", "c"));
    QVERIFY(!manager.finishEditCard(&card));
    QCOMPARE(privateOf(manager).workCard, 0UL);
    QCOMPARE(privateOf(manager).editSourceCard, 0UL);
    QVERIFY(!privateOf(manager).editModified);
    QVERIFY(manager.startEditCard(card));
}

void EditTest::startTwiceLeavesTheFirst()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("a"));
    const unsigned long other = addCard(manager, QStringLiteral("b"));
    QVERIFY(manager.startEditCard(card));
    QVERIFY(manager.writeItem("TITL", "changed"));
    QVERIFY(!manager.startEditCard(other));
    QCOMPARE(privateOf(manager).editState, 3);
    QVERIFY(!manager.editNewCard());
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(manager.readItem("TITL", card), QStringLiteral("changed"));
    QCOMPARE(manager.readItem("TITL", other), QStringLiteral("b"));
}

void EditTest::callsWithNoEdit()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 5;
    QVERIFY(!manager.finishEditCard(&card));
    QCOMPARE(card, 5UL);
    QCOMPARE(privateOf(manager).editState, 4);
    QVERIFY(manager.cancelEditCard());
}

void EditTest::missingCardCannotBeEdited()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(!manager.startEditCard(77));
    QCOMPARE(privateOf(manager).editState, 1);
    QCOMPARE(int(privateOf(manager).lastError), int(PdtmNoSuchCard));
    QVERIFY(!manager.writeItem("TITL", "a"));
    QVERIFY(manager.editNewCard());
}

void EditTest::staleWorkCardIsRemoved()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    quint16 stale = WorkCardId;
    QCOMPARE(_CardCreate(manager.boxHandle(), &stale), PdtmStatus(PdtmOk));
    QVERIFY(storeBytes(manager, WorkCardId, "TITL", "stale"));
    unsigned long card = 0;
    QVERIFY(manager.editNewCard());
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(manager.readItem("TITL", card), QStringLiteral(""));
}

void EditTest::workCardThatCannotBeMade()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    refusedItem = "ATTR";
    deletedCards.clear();
    QVERIFY(!manager.editNewCard());
    QCOMPARE(privateOf(manager).editState, 1);
    QCOMPARE(deletedCards, (QList<quint16>{WorkCardId, WorkCardId})); // the stale one and the new one
    QVERIFY(isAbsent(manager, WorkCardId));
    refusedItem.clear();
    QVERIFY(manager.editNewCard());
}

void EditTest::failedStampCancels_data()
{
    QTest::addColumn<QByteArray>("item");
    QTest::addColumn<bool>("syncId");
    QTest::addColumn<bool>("update");
    QTest::newRow("time of creation") << QByteArray("CTTM") << false << false;
    QTest::newRow("no sync id") << QByteArray() << true << false;
    QTest::newRow("sync id not written") << QByteArray("SYID") << false << false;
    QTest::newRow("sync id not advanced") << QByteArray() << false << true;
    QTest::newRow("time of change") << QByteArray("MDTM") << false << false;
}

void EditTest::failedStampCancels()
{
    QFETCH(QByteArray, item);
    QFETCH(bool, syncId);
    QFETCH(bool, update);
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(manager.editNewCard());
    refusedItem = item;
    refuseSyncId = syncId;
    refuseSyncIdUpdate = update;
    unsigned long card = 0;
    QVERIFY(!manager.finishEditCard(&card));
    QCOMPARE(card, 0UL);
    QCOMPARE(manager.count(), 0);
    QVERIFY(isAbsent(manager, WorkCardId));
    QVERIFY(!privateOf(manager).editing);
}

void EditTest::failedTimeOfChangeCancels()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("a"));
    QVERIFY(manager.startEditCard(card));
    QVERIFY(manager.writeItem("TITL", "b"));
    refusedItem = "MDTM";
    QVERIFY(!manager.finishEditCard(&card));
    QCOMPARE(manager.readItem("TITL", card), QStringLiteral("a"));
    QVERIFY(!privateOf(manager).editing);
}

void EditTest::failedCommitIsLogged()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("a"));
    const unsigned long before = card;
    QVERIFY(manager.startEditCard(card));
    QVERIFY(manager.writeItem("TITL", "b"));
    commitStatus = PdtmOutOfSpace;
    LogCapture log;
    QVERIFY(!manager.finishEditCard(&card));
    QCOMPARE(log.lines(), QStringList{"finish card error 47"});
    QCOMPARE(card, before);
    QCOMPARE(int(privateOf(manager).lastError), int(PdtmOutOfSpace));
    QVERIFY(!privateOf(manager).editing);
    QVERIFY(isAbsent(manager, WorkCardId));
    QCOMPARE(manager.readItem("TITL", card), QStringLiteral("a"));
}

void EditTest::oneSynchronisationAnEdit()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("warm"));

    synchronisations() = 0;
    QVERIFY(manager.editNewCard());
    QVERIFY(manager.writeItem("TITL", "a"));
    QVERIFY(manager.writeItem("LONG", 5UL));
    QCOMPARE(synchronisations(), 0);
    card = 0;
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(synchronisations(), 1);

    QVERIFY(manager.startEditCard(card));
    QVERIFY(manager.writeItem("TITL", "b"));
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(synchronisations(), 2);

    QVERIFY(manager.startEditCard(card));
    QVERIFY(manager.writeItem("TITL", "c"));
    QVERIFY(manager.cancelEditCard());
    QCOMPARE(synchronisations(), 2);

    QVERIFY(manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    QCOMPARE(synchronisations(), 3);
}

void EditTest::actionIsOneSynchronisation()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    addCard(manager, QStringLiteral("warm"));
    synchronisations() = 0;
    QVERIFY(manager.beginAction());
    for (int i = 0; i < 20; ++i)
        QVERIFY(addCard(manager, QString::number(i)) != 0);
    QCOMPARE(synchronisations(), 0);
    QVERIFY(manager.endAction());
    QCOMPARE(synchronisations(), 1);
    QCOMPARE(manager.count(), 21);
}

void EditTest::actionsNest()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    addCard(manager, QStringLiteral("warm"));
    synchronisations() = 0;
    QVERIFY(manager.beginAction());
    QVERIFY(manager.beginAction());
    QVERIFY(addCard(manager, QStringLiteral("a")) != 0);
    QVERIFY(manager.endAction());
    QCOMPARE(synchronisations(), 0);
    QVERIFY(manager.endAction());
    QCOMPARE(synchronisations(), 1);
    QVERIFY(!manager.endAction()); // none is open
}

void EditTest::actionsNeedAnOpenBox()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(manager.close());
    QVERIFY(!manager.beginAction());
    QVERIFY(!manager.endAction());
    KyPDataManager reader(box.path().constData(), nullptr, true);
    QVERIFY(!reader.beginAction());
}

void EditTest::actionThatCannotCommit()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(manager.beginAction());
    QVERIFY(addCard(manager, QStringLiteral("a")) != 0);
    QVERIFY(manager.close()); // the action is lost with the handle
    QVERIFY(manager.open(false));
    QVERIFY(!manager.endAction());
    QCOMPARE(manager.count(), 0);
    QVERIFY(addCard(manager, QStringLiteral("b")) != 0);
}

void EditTest::collectionWaitsForTheEndOfTheAction()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    const QByteArray large(200000, 'x');
    QVERIFY(manager.editNewCard());
    QVERIFY(manager.writeItem("BINA", large.constData(), 200000));
    QVERIFY(manager.finishEditCard(&card));
    LogCapture log;
    QVERIFY(manager.beginAction());
    QVERIFY(manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    QVERIFY(addCard(manager, QStringLiteral("b")) != 0);
    QVERIFY(log.lines().isEmpty());
    QVERIFY(manager.endAction());
    QCOMPARE(log.lines().size(), 1);
    QVERIFY(log.lines().first().startsWith("KyPDataManager: auto garbage collection "));
    QVERIFY(manager.garbageSize() < 20481);
}

QTEST_MAIN(EditTest)
#include "edittest.moc"
