#include "boxfixture.h"
#include "syscallfailures.h"

#include <cerrno>
#include <QtTest>

using namespace boxfixture;

/** Actions: what they save, what a failure undoes, and how often the disk is waited for. */
class ActionTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void nestedActionsEndOnce();
    void emptyActionWritesNothing();
    void endWithoutBegin();
    void closeUndoesAnOpenAction();
    void failureUndoesTheAction_data();
    void failureUndoesTheAction();
    void failureUndoesASingleChange_data();
    void failureUndoesASingleChange();
    void failureInsideAnActionEndsIt();
    void changesOfManyCardsReachTheFile();
    void undoneChangesOfManyCardsLeaveNothing();
    void undoneNewCardLosesNoCopyOfAWorkCard();
    void cardsOfTheActionKeepTheirIds();
    void garbageOfAnActionIsCounted();
    void manyChangesOfOneCard();
    void cardOfAnotherLengthLeavesItsNeighbours();
    void refusalInsideAnActionKeepsIt();
    void oneSynchronisationAChange();
    void thousandChanges();
    void oneSynchronisationAnAction();
    void scratchCardsNeverSynchroniseAlone();

private:
    static constexpr uint16_t Many = 40;
    void addAndReadMany();

    QByteArray m_box;
    uint32_t m_handle = 0;
    int m_number = 0;
};

void ActionTest::init()
{
    m_box = "F0:A" + QByteArray::number(++m_number) + ".BOX";
    QCOMPARE(makeBox(m_box.constData()), PdtmStatus(PdtmOk));
    m_handle = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(addCard(m_handle, "before"), uint16_t(1));
}

void ActionTest::cleanup()
{
    syscalls::failingSynchronisation = 0;
    syscalls::failingWrite = 0;
    QCOMPARE(_BoxClose(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(_DTMFileCheckLevel(m_box.constData(), 255), PdtmStatus(PdtmOk));
}

void ActionTest::nestedActionsEndOnce()
{
    QCOMPARE(DtmBeginAction(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(DtmBeginAction(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(addCard(m_handle, "inner"), uint16_t(2));
    QCOMPARE(DtmEndAction(m_handle), PdtmStatus(PdtmOk));
    const char *count = "SELECT count(*) FROM cards WHERE id < 65280";
    QCOMPARE(sql(internalPath(m_box.mid(3)), count), QByteArray("1"));
    QCOMPARE(read(m_handle, 2, "NAPR"), QByteArray("inner"));
    QCOMPARE(DtmEndAction(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(sql(internalPath(m_box.mid(3)), count), QByteArray("2"));
}

void ActionTest::emptyActionWritesNothing()
{
    syscalls::synchronisations = 0;
    QCOMPARE(DtmBeginAction(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(read(m_handle, 1, "NAPR"), QByteArray("before"));
    QCOMPARE(DtmEndAction(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(syscalls::synchronisations, 0);
}

void ActionTest::endWithoutBegin()
{
    QCOMPARE(DtmEndAction(m_handle), PdtmStatus(PdtmBadArgument));
    QCOMPARE(DtmBeginAction(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(DtmEndAction(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(DtmEndAction(m_handle), PdtmStatus(PdtmBadArgument));
}

void ActionTest::closeUndoesAnOpenAction()
{
    QCOMPARE(DtmBeginAction(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(addCard(m_handle, "lost"), uint16_t(2));
    QCOMPARE(write(m_handle, 1, "NAPR", "lost"), PdtmStatus(PdtmOk));
    QCOMPARE(_BoxClose(m_handle), PdtmStatus(PdtmOk));
    m_handle = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(read(m_handle, 1, "NAPR"), QByteArray("before"));
    QCOMPARE(read(m_handle, 2, "NAPR"), QByteArray("status 65"));
    QCOMPARE(addCard(m_handle, "kept"), uint16_t(2));
}

void ActionTest::failureUndoesTheAction_data()
{
    QTest::addColumn<int>("synchronisation");
    QTest::addColumn<int>("write");
    QTest::addColumn<int>("status");
    QTest::newRow("synchronisation fails") << EIO << 0 << int(PdtmIoError);
    QTest::newRow("write finds the disk full") << 0 << ENOSPC << int(PdtmOutOfSpace);
    QTest::newRow("write fails") << 0 << EIO << int(PdtmIoError);
}

void ActionTest::failureUndoesTheAction()
{
    QFETCH(int, synchronisation);
    QFETCH(int, write);
    QFETCH(int, status);
    QCOMPARE(DtmBeginAction(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(addCard(m_handle, "lost"), uint16_t(2));
    QCOMPARE(boxfixture::write(m_handle, 1, "NAPR", "lost"), PdtmStatus(PdtmOk));
    syscalls::failingSynchronisation = synchronisation;
    syscalls::failingWrite = write;
    QCOMPARE(int(DtmEndAction(m_handle)), status);
    syscalls::failingWrite = 0;
    QCOMPARE(read(m_handle, 1, "NAPR"), QByteArray("before"));
    QCOMPARE(read(m_handle, 2, "NAPR"), QByteArray("status 65"));
    QCOMPARE(addCard(m_handle, "kept"), uint16_t(2));
    QCOMPARE(sql(internalPath(m_box.mid(3)), "SELECT count(*) FROM cards WHERE id < 65280"), QByteArray("2"));
}

void ActionTest::failureUndoesASingleChange_data()
{
    failureUndoesTheAction_data();
}

void ActionTest::failureUndoesASingleChange()
{
    QFETCH(int, synchronisation);
    QFETCH(int, write);
    QFETCH(int, status);
    uint16_t next = 0;
    uint16_t card = 0;
    const CardItemKey category = key(1, "CTGR");
    const std::function<PdtmStatus()> changes[] = {
        [&] { return boxfixture::write(m_handle, 1, "NAPR", "lost"); },
        [&] { return boxfixture::write(m_handle, 1, "ATTR", "\x40"); },
        [&] { return _CardCreate(m_handle, &card); },
        [&] { return _CardCopy(m_handle, 1, &card); },
        [&] { return _CardDelete(m_handle, 1); },
        [&] { return _CardAllDelete(m_handle, 0, 0, 0); },
        [&] { return _CardCategoryAppend(m_handle, &category, 3); },
    };
    for (const auto &change : changes) {
        syscalls::failingSynchronisation = synchronisation;
        syscalls::failingWrite = write;
        QCOMPARE(int(change()), status);
        syscalls::failingWrite = 0;
        QCOMPARE(read(m_handle, 1, "NAPR"), QByteArray("before"));
        QCOMPARE(read(m_handle, 1, "ATTR"), QByteArray(1, '\0'));
        QCOMPARE(read(m_handle, 1, "CTGR"), QByteArray());
        QCOMPARE(_ExpectNewCardID(m_handle, &next), PdtmStatus(PdtmOk));
        QCOMPARE(next, uint16_t(2));
    }
    QCOMPARE(card, uint16_t(0));
}

/** Enough is written that pages leave memory before the end. */
void ActionTest::failureInsideAnActionEndsIt()
{
    QCOMPARE(DtmBeginAction(m_handle), PdtmStatus(PdtmOk));
    syscalls::failingWrite = ENOSPC;
    PdtmStatus status = PdtmOk;
    for (int i = 0; i < 30 && status == PdtmOk; ++i) {
        uint16_t card = 0;
        status = _CardCreate(m_handle, &card);
        if (status == PdtmOk)
            status = write(m_handle, card, "NAPR", QByteArray(4 << 20, 'x'));
    }
    QCOMPARE(status, PdtmStatus(PdtmOutOfSpace));
    syscalls::failingWrite = 0;
    QCOMPARE(write(m_handle, 1, "NAPR", "too late"), PdtmStatus(PdtmOutOfSpace));
    QCOMPARE(read(m_handle, 2, "NAPR"), QByteArray("status 65"));
    QCOMPARE(DtmEndAction(m_handle), PdtmStatus(PdtmOutOfSpace));
    QCOMPARE(read(m_handle, 1, "NAPR"), QByteArray("before"));
    QCOMPARE(addCard(m_handle, "kept"), uint16_t(2));
}

/** So many cards are read that all of them are in memory: the file hears of changes at the end alone. */
void ActionTest::addAndReadMany()
{
    for (uint16_t card = 2; card <= Many; ++card)
        QCOMPARE(addCard(m_handle, QByteArray::number(card)), card);
    for (uint16_t card = 2; card <= Many; ++card)
        QCOMPARE(read(m_handle, card, "NAPR"), QByteArray::number(card));
}

void ActionTest::changesOfManyCardsReachTheFile()
{
    addAndReadMany();
    const QString path = internalPath(m_box.mid(3));
    const char *const ids =
        "SELECT group_concat(id, ' ') FROM (SELECT id FROM cards WHERE id IN (3, 4, 5, 41, 42, 43))";
    QCOMPARE(DtmBeginAction(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(addCard(m_handle, "new"), uint16_t(41));
    QCOMPARE(addCard(m_handle, "new and gone"), uint16_t(42));
    QCOMPARE(write(m_handle, 3, "NAPR", "first"), PdtmStatus(PdtmOk));
    QCOMPARE(write(m_handle, 3, "NAPR", "second"), PdtmStatus(PdtmOk));
    QCOMPARE(write(m_handle, 4, "NAPR", "gone"), PdtmStatus(PdtmOk));
    QCOMPARE(_CardDelete(m_handle, 4), PdtmStatus(PdtmOk));
    QCOMPARE(_CardDelete(m_handle, 42), PdtmStatus(PdtmOk));
    QCOMPARE(read(m_handle, 3, "NAPR"), QByteArray("second"));
    QCOMPARE(read(m_handle, 4, "NAPR"), QByteArray("status 65"));
    QCOMPARE(sql(path, ids), QByteArray("3 4 5"));
    QCOMPARE(DtmEndAction(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(sql(path, ids), QByteArray("3 5 41"));
    QCOMPARE(sql(path, "SELECT instr(data, 'second') > 0 FROM cards WHERE id = 3"), QByteArray("1"));
}

void ActionTest::undoneChangesOfManyCardsLeaveNothing()
{
    addAndReadMany();
    QCOMPARE(DtmBeginAction(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(write(m_handle, 3, "NAPR", "lost"), PdtmStatus(PdtmOk));
    QCOMPARE(_CardDelete(m_handle, 4), PdtmStatus(PdtmOk));
    QCOMPARE(addCard(m_handle, "lost"), uint16_t(41));
    QCOMPARE(_BoxClose(m_handle), PdtmStatus(PdtmOk));
    m_handle = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(read(m_handle, 3, "NAPR"), QByteArray("3"));
    QCOMPARE(write(m_handle, 5, "NAPR", "kept"), PdtmStatus(PdtmOk));
    QCOMPARE(read(m_handle, 4, "NAPR"), QByteArray("4"));
    QCOMPARE(sql(internalPath(m_box.mid(3)),
                 "SELECT count(*) FROM cards WHERE id < 65280 AND instr(data, 'lost')"),
             QByteArray("0"));
    QCOMPARE(sql(internalPath(m_box.mid(3)), "SELECT count(*) FROM cards WHERE id < 65280"),
             QByteArray("40"));
}

/** A new card takes the copy out of the file; undone, it stands there again and goes with the work card. */
void ActionTest::undoneNewCardLosesNoCopyOfAWorkCard()
{
    const QString path = internalPath(m_box.mid(3));
    const char *const copies = "SELECT count(*) FROM cards WHERE id = 65280";
    _BoxClose(m_handle);
    m_handle = _BoxOpenRwMode(m_box.constData(), 0);
    uint16_t card = 0;
    syscalls::failingSynchronisation = EIO;
    QCOMPARE(_CardCreate(m_handle, &card), PdtmStatus(PdtmIoError));
    QCOMPARE(sql(path, copies), QByteArray("1"));
    QCOMPARE(_CardDelete(m_handle, PdtmWorkCard), PdtmStatus(PdtmOk));
    QCOMPARE(write(m_handle, 1, "NAPR", "after"), PdtmStatus(PdtmOk));
    QCOMPARE(sql(path, copies), QByteArray("0"));
}

void ActionTest::cardsOfTheActionKeepTheirIds()
{
    addAndReadMany();
    QCOMPARE(DtmBeginAction(m_handle), PdtmStatus(PdtmOk));
    uint16_t next = 41;
    QCOMPARE(_CardCreate(m_handle, &next), PdtmStatus(PdtmOk));
    uint16_t last = PdtmLastOrdinaryCard;
    QCOMPARE(_CardCreate(m_handle, &last), PdtmStatus(PdtmOk));
    uint16_t card = 0; // the ids begin again
    QCOMPARE(_CardCreate(m_handle, &card), PdtmStatus(PdtmOk));
    QCOMPARE(card, uint16_t(42));
    QCOMPARE(DtmEndAction(m_handle), PdtmStatus(PdtmOk));
}

void ActionTest::garbageOfAnActionIsCounted()
{
    addAndReadMany();
    QCOMPARE(write(m_handle, 3, "NAPR", QByteArray(50000, 'x')), PdtmStatus(PdtmOk));
    QCOMPARE(DtmBeginAction(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(_CardDelete(m_handle, 3), PdtmStatus(PdtmOk));
    uint32_t garbage = 0;
    QCOMPARE(_GetBoxGarbageSize(m_box.constData(), &garbage), PdtmStatus(PdtmOk));
    QVERIFY2(garbage >= 45000, QByteArray::number(garbage));
    QCOMPARE(DtmEndAction(m_handle), PdtmStatus(PdtmOk));
}

/** Former states of cards fill the memory until the cards are read anew. */
void ActionTest::manyChangesOfOneCard()
{
    addAndReadMany();
    QCOMPARE(DtmBeginAction(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(write(m_handle, 5, "NAPR", "once"), PdtmStatus(PdtmOk));
    QCOMPARE(_CardDelete(m_handle, 6), PdtmStatus(PdtmOk));
    for (int i = 0; i < 200; ++i) {
        QCOMPARE(write(m_handle, 3, "NAPR", QByteArray(100000 + i, 'x')), PdtmStatus(PdtmOk));
        QCOMPARE(write(m_handle, 4, "NAPR", QByteArray::number(i)), PdtmStatus(PdtmOk));
    }
    QCOMPARE(read(m_handle, 3, "NAPR").size(), 100199);
    QCOMPARE(read(m_handle, 4, "NAPR"), QByteArray("199"));
    QCOMPARE(read(m_handle, 5, "NAPR"), QByteArray("once"));
    QCOMPARE(read(m_handle, 6, "NAPR"), QByteArray("status 65"));
    QCOMPARE(DtmEndAction(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(read(m_handle, 3, "NAPR").size(), 100199);
    QCOMPARE(sql(internalPath(m_box.mid(3)), "SELECT length(data) > 100199 FROM cards WHERE id = 3"),
             QByteArray("1"));
}

void ActionTest::cardOfAnotherLengthLeavesItsNeighbours()
{
    addAndReadMany();
    for (const int length : {1, 2, 3, 0, 1, 30, 29, 30, 31, 5, 5}) {
        const QByteArray name(length, 'x');
        QCOMPARE(write(m_handle, 3, "NAPR", name), PdtmStatus(PdtmOk));
        QCOMPARE(read(m_handle, 2, "NAPR"), QByteArray("2"));
        QCOMPARE(read(m_handle, 3, "NAPR"), name);
        QCOMPARE(read(m_handle, 4, "NAPR"), QByteArray("4"));
    }
}

void ActionTest::refusalInsideAnActionKeepsIt()
{
    QCOMPARE(DtmBeginAction(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(write(m_handle, 1, "NAPR", "kept"), PdtmStatus(PdtmOk));
    QCOMPARE(write(m_handle, 99, "NAPR", "x"), PdtmStatus(PdtmNoSuchCard));
    QCOMPARE(write(m_handle, 1, "ZZZZ", "x"), PdtmStatus(PdtmNoSuchItem));
    QCOMPARE(DtmEndAction(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(sql(internalPath(m_box.mid(3)), "SELECT instr(data, 'kept') > 0 FROM cards WHERE id = 1"),
             QByteArray("1"));
}

void ActionTest::oneSynchronisationAChange()
{
    uint16_t card = 0;
    const CardItemKey category = key(1, "CTGR");
    const std::function<PdtmStatus()> changes[] = {
        [&] { return write(m_handle, 1, "NAPR", "changed"); },
        [&] { return write(m_handle, 1, "ATTR", "\x40"); },
        [&] { return _CardCreate(m_handle, &card); },
        [&] { return _CardCopy(m_handle, 1, &card); },
        [&] { return _CardCategoryAppend(m_handle, &category, 3); },
        [&] { return _CardCategoryDelete(m_handle, &category, 3); },
        [&] { return _CardDelete(m_handle, 1); },
        [&] { return _CardAllDelete(m_handle, 0, 0, 0); },
    };
    for (const auto &change : changes) {
        syscalls::synchronisations = 0;
        QCOMPARE(change(), PdtmStatus(PdtmOk));
        QCOMPARE(syscalls::synchronisations, 1);
    }
}

void ActionTest::thousandChanges()
{
    syscalls::synchronisations = 0;
    for (int i = 0; i < 1000; ++i)
        QCOMPARE(write(m_handle, 1, "NAPR", QByteArray::number(i)), PdtmStatus(PdtmOk));
    QVERIFY2(syscalls::synchronisations >= 1000, QByteArray::number(syscalls::synchronisations));
    QVERIFY2(syscalls::synchronisations <= 1050, QByteArray::number(syscalls::synchronisations));
}

void ActionTest::oneSynchronisationAnAction()
{
    syscalls::synchronisations = 0;
    QCOMPARE(DtmBeginAction(m_handle), PdtmStatus(PdtmOk));
    for (int i = 0; i < 100; ++i)
        QVERIFY(addCard(m_handle, QByteArray::number(i)));
    QCOMPARE(DtmEndAction(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(syscalls::synchronisations, 1);
}

void ActionTest::scratchCardsNeverSynchroniseAlone()
{
    _BoxClose(m_handle);
    syscalls::synchronisations = 0;
    m_handle = _BoxOpenRwMode(m_box.constData(), 0);
    uint16_t work = PdtmWorkCard;
    QCOMPARE(_CardCopy(m_handle, 1, &work), PdtmStatus(PdtmOk));
    QCOMPARE(write(m_handle, work, "NAPR", "being edited"), PdtmStatus(PdtmOk));
    QCOMPARE(DtmUpdateSyncId(m_handle), PdtmStatus(PdtmOk));
    _BoxClose(m_handle);
    QCOMPARE(syscalls::synchronisations, 0);
    m_handle = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(_CardDelete(m_handle, work), PdtmStatus(PdtmOk));
    _BoxClose(m_handle);
    QCOMPARE(syscalls::synchronisations, 0);
    m_handle = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(sql(internalPath(m_box.mid(3)), "SELECT count(*) FROM cards"), QByteArray("1"));
}

QTEST_GUILESS_MAIN(ActionTest)
#include "actiontest.moc"
