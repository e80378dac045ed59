#include "mappingfixture.h"
#include "timeconversion.h"
#include "writewatch.h"

namespace {

/** One of the three kinds of card. */
struct Kind
{
    const char *name;
    std::unique_ptr<KyPDataBase> (*open)();
    std::unique_ptr<KyPDataBase> (*openOther)();
    bool (*copy)(KyPDataBase *, unsigned long *, KyPDataManager *, unsigned long, KyCategories *);
    QByteArrayList codes; ///< of the fields that a full card has copied, in their order
};

using Copier = bool (*)(KyPDataBase *, unsigned long *, KyPDataManager *, unsigned long, KyCategories *);

const QByteArrayList ContactCodes = {
    "FULL", "TITL", "LNME", "FNME", "MNME", "SUFX", "FLAS", "LNPR", "FNPR", "NAPR", "CPNY", "CPPR",
    "SCTN", "PSTN", "TEL2", "FAX2", "CPS2", "BSTA", "BCTY", "BSTR", "BZIP", "BCTR", "BWEB", "OFCE",
    "PRFS", "ASST", "MNGR", "BPGR", "CPS1", "TEL1", "FAX1", "HSTA", "HCTY", "HSTR", "HZIP", "HCTR",
    "HWEB", "DMAL", "MAL1", "SPUS", "GNDR", "BRTH", "ANIV", "NCNM", "CLDR", "MEM1", "GRPS"};
const QByteArrayList TaskCodes = {"MARK", "PRTY", "TITL", "MEM1", "LTDY", "ETDY", "FNDY"};
const QByteArrayList EventCodes = {"DSRP", "PLCE", "MEM1", "ADAY", "ALSD", "ALED", "TIM1", "TIM2", "ARON",
                                   "ARMN", "ARSD", "MDAY", "RTYP", "RFRQ", "RPOS", "RDYS", "REND", "REDT"};

const QList<Kind> &kinds()
{
    static const QList<Kind> all = {
        {"contact", openAddressbook, openOtherAddressbook, Copier(&KyPDataBase::addAddressbookEntry),
         ContactCodes},
        {"task", openTodolist, openOtherTodolist, Copier(&KyPDataBase::addTodolistEntry), TaskCodes},
        {"event", openDatebook, openOtherDatebook, Copier(&KyPDataBase::addDatebookEntry), EventCodes},
    };
    return all;
}

QByteArray textBytes(int number)
{
    return QString::fromUtf8("値 %1\r\nline\n").arg(number).toUtf8();
}

/** What a full card of a kind has in its items. */
QMap<QByteArray, QByteArray> fullItems(const Kind &kind)
{
    QMap<QByteArray, QByteArray> items;
    for (int i = 0; i < kind.codes.size(); ++i)
        items.insert(kind.codes[i], textBytes(i));
    if (qstrcmp(kind.name, "task") == 0) {
        items["MARK"] = QByteArray(1, '\1');
        items["PRTY"] = QByteArray(1, '\4');
        items["LTDY"] = ptime(2026, 1, 2, 0, 0, 0);
        items["ETDY"] = ptime(2026, 3, 4, 0, 0, 0);
        items["FNDY"] = ptime(2026, 5, 6, 0, 0, 0);
    }
    if (qstrcmp(kind.name, "event") == 0) {
        items["ADAY"] = QByteArray(1, '\1');
        items["ALSD"] = ptime(2026, 1, 2, 31, 63, 63);
        items["ALED"] = ptime(2026, 3, 4, 31, 63, 63);
        items["TIM1"] = ptime(2026, 1, 2, 3, 4, 5);
        items["TIM2"] = ptime(2026, 3, 4, 5, 6, 7);
        items["ARON"] = QByteArray(1, '\0');
        items["ARMN"] = QByteArray("\x2C\x01");
        items["ARSD"] = QByteArray(1, '\1');
        items["MDAY"] = QByteArray(1, '\1');
        items["RTYP"] = QByteArray(1, '\3');
        items["RFRQ"] = QByteArray("\x02\x01");
        items["RPOS"] = QByteArray("\x04\x03");
        items["RDYS"] = QByteArray("\x55");
        items["REND"] = QByteArray(1, '\1');
        items["REDT"] = ptime(2027, 6, 7, 0, 0, 0);
    }
    return items;
}

/** Adds a card with items and categories as they are given. */
unsigned long addItems(KyPDataManager &manager, const QMap<QByteArray, QByteArray> &items)
{
    unsigned long card = 0;
    bool isWritten = manager.editNewCard();
    for (auto item = items.cbegin(); item != items.cend(); ++item)
        isWritten = isWritten && manager.writeItem(item.key().constData(), item->constData(),
                                                   static_cast<unsigned long>(item->size()));
    return isWritten && manager.finishEditCard(&card) ? card : 0;
}

} // namespace

class RecordCopyTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup() { WriteWatch::reset(); }

    void everyFieldIsCopied_data() { rows(); }
    void everyFieldIsCopied();
    void fieldsAreWrittenInOrder_data() { rows(); }
    void fieldsAreWrittenInOrder();
    void firstFailingWriteCancels_data();
    void firstFailingWriteCancels();
    void missingItemsStayMissing_data() { rows(); }
    void missingItemsStayMissing();
    void sourceStaysAsItIs_data() { rows(); }
    void sourceStaysAsItIs();
    void categoriesStayAsTheyAre_data() { rows(); }
    void categoriesStayAsTheyAre();
    void categoriesOfAnotherTableAreTranslated_data() { rows(); }
    void categoriesOfAnotherTableAreTranslated();
    void cardOfTheSameBox_data() { rows(); }
    void cardOfTheSameBox();
    void currentCardOfTheSource_data() { rows(); }
    void currentCardOfTheSource();
    void unreadableSourceIsNotCopied_data() { rows(); }
    void unreadableSourceIsNotCopied();
    void nullBoxes_data() { rows(); }
    void nullBoxes();
    void timedEventHasNoDates();
    void eventWithoutRepetition_data();
    void eventWithoutRepetition();
    void eventWithoutStartIsRefused_data();
    void eventWithoutStartIsRefused();
    void taskDatesGoToMidnight();

private:
    static void rows()
    {
        QTest::addColumn<int>("number");
        for (int i = 0; i < kinds().size(); ++i)
            QTest::newRow(kinds()[i].name) << i;
    }
    const Kind &kind()
    {
        const QFETCH(int, number);
        return kinds()[number];
    }
    /** Opens the boxes of a kind. */
    void open(const Kind &kind)
    {
        db = kind.open();
        source = kind.openOther();
        QVERIFY(db->isOpened());
        QVERIFY(source->isOpened());
    }

    std::unique_ptr<KyPDataBase> db;
    std::unique_ptr<KyPDataBase> source;
};

void RecordCopyTest::init()
{
    db.reset();
    source.reset();
}

void RecordCopyTest::everyFieldIsCopied()
{
    open(kind());
    const QMap<QByteArray, QByteArray> items = fullItems(kind());
    const unsigned long card = addItems(*source, items);
    QVERIFY(card);
    const unsigned long expected = db->expectedCardId();
    const int before = db->count();
    unsigned long copy = 7; // not looked at
    QVERIFY(kind().copy(db.get(), &copy, source.get(), card, nullptr));
    QCOMPARE(copy, expected);
    QCOMPARE(db->count(), before + 1);
    for (auto item = items.cbegin(); item != items.cend(); ++item)
        QCOMPARE(storedBytes(*db, copy, item.key().constData()), item.value());
}

void RecordCopyTest::fieldsAreWrittenInOrder()
{
    open(kind());
    const unsigned long card = addItems(*source, fullItems(kind()));
    WriteWatch::reset();
    unsigned long copy = 0;
    QVERIFY(kind().copy(db.get(), &copy, source.get(), card, nullptr));
    const QByteArrayList expected =
        QByteArrayList{"ATTR"} + kind().codes + QByteArrayList{"CTTM", "SYID", "MDTM", "CTGR", "MDTM"};
    QCOMPARE(WriteWatch::codes(), expected);
}

void RecordCopyTest::firstFailingWriteCancels_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<int>("place");
    for (int i = 0; i < kinds().size(); ++i) {
        for (int place = 0; place < kinds()[i].codes.size(); ++place)
            QTest::addRow("%s %s", kinds()[i].name, kinds()[i].codes[place].constData()) << i << place;
    }
}

void RecordCopyTest::firstFailingWriteCancels()
{
    QFETCH(int, place);
    open(kind());
    const unsigned long card = addItems(*source, fullItems(kind()));
    const int before = db->count();
    WriteWatch::reset();
    WriteWatch::fail(kind().codes[place]);
    unsigned long copy = 7;
    QVERIFY(!kind().copy(db.get(), &copy, source.get(), card, nullptr));
    QCOMPARE(WriteWatch::codes(), QByteArrayList{"ATTR"} + kind().codes.first(place + 1));
    QCOMPARE(copy, 0ul);
    QCOMPARE(db->count(), before);
    WriteWatch::reset();
    QVERIFY(db->editNewCard()); // the edit is over
}

void RecordCopyTest::missingItemsStayMissing()
{
    open(kind());
    QMap<QByteArray, QByteArray> items;
    if (qstrcmp(kind().name, "event") == 0) // its times must be there
        items = {{"TIM1", ptime(2026, 1, 2, 3, 4, 5)}, {"TIM2", ptime(2026, 3, 4, 5, 6, 7)}};
    const unsigned long card = addItems(*source, items);
    unsigned long copy = 0;
    QVERIFY(kind().copy(db.get(), &copy, source.get(), card, nullptr));
    for (const QByteArray &code : kind().codes)
        QCOMPARE(storedBytes(*db, copy, code.constData()), items.value(code));
}

void RecordCopyTest::sourceStaysAsItIs()
{
    open(kind());
    const QMap<QByteArray, QByteArray> items = fullItems(kind());
    const unsigned long card = addItems(*source, items);
    QVERIFY(source->updateCategories(card, {5}, KyPDataManager::DeleteSingle, false));
    const QByteArray changed = storedBytes(*source, card, "MDTM");
    const int before = source->count();
    unsigned long copy = 0;
    QVERIFY(kind().copy(db.get(), &copy, source.get(), card, nullptr));
    QCOMPARE(source->count(), before);
    QCOMPARE(storedBytes(*source, card, "MDTM"), changed);
    QCOMPARE(storedBytes(*source, card, "CTGR"), QByteArray("\x05"));
    for (auto item = items.cbegin(); item != items.cend(); ++item)
        QCOMPARE(storedBytes(*source, card, item.key().constData()), item.value());
}

void RecordCopyTest::categoriesStayAsTheyAre()
{
    open(kind());
    QMap<QByteArray, QByteArray> items = fullItems(kind());
    items["CTGR"] = QByteArray("\x09\x05\xF0");
    const unsigned long card = addItems(*source, items);
    unsigned long copy = 0;
    QVERIFY(kind().copy(db.get(), &copy, source.get(), card, nullptr));
    QCOMPARE(storedBytes(*db, copy, "CTGR"), QByteArray("\x09\x05\xF0"));
}

/** The table given stands for that of another volume: its names decide. */
void RecordCopyTest::categoriesOfAnotherTableAreTranslated()
{
    open(kind());
    const int known = tableCategory("known");
    const int other = tableCategory("other");
    QMap<QByteArray, QByteArray> items = fullItems(kind());
    items["CTGR"] = QByteArray(1, char(other)) + char(known) + '\xF5'; // 245 is not in the table
    const unsigned long card = addItems(*source, items);
    KyCategories table;
    unsigned long copy = 0;
    QVERIFY(kind().copy(db.get(), &copy, source.get(), card, &table));
    QCOMPARE(categoryNames(*db, copy), (QStringList{"other", "known"}));
    QCOMPARE(storedBytes(*db, copy, "CTGR").size(), 2);
}

void RecordCopyTest::cardOfTheSameBox()
{
    db = kind().open();
    const QMap<QByteArray, QByteArray> items = fullItems(kind());
    const unsigned long card = addItems(*db, items);
    QVERIFY(db->updateCategories(card, {5}, KyPDataManager::DeleteSingle, false));
    unsigned long copy = 0;
    QVERIFY(kind().copy(db.get(), &copy, db.get(), card, nullptr));
    QVERIFY(copy != card);
    for (auto item = items.cbegin(); item != items.cend(); ++item)
        QCOMPARE(storedBytes(*db, copy, item.key().constData()), item.value());
    QCOMPARE(storedBytes(*db, copy, "CTGR"), QByteArray("\x05"));
}

void RecordCopyTest::currentCardOfTheSource()
{
    open(kind());
    QMap<QByteArray, QByteArray> items = fullItems(kind());
    items["MEM1"] = "the current one";
    items["CTGR"] = "\x07";
    QVERIFY(addItems(*source, items));
    QVERIFY(source->first());
    while (source->readItem("MEM1") != QString("the current one"))
        QVERIFY(source->next());
    unsigned long copy = 0;
    QVERIFY(kind().copy(db.get(), &copy, source.get(), 0, nullptr));
    QCOMPARE(storedBytes(*db, copy, "MEM1"), QByteArray("the current one"));
    QCOMPARE(storedBytes(*db, copy, "CTGR"), QByteArray("\x07"));
}

void RecordCopyTest::unreadableSourceIsNotCopied()
{
    open(kind());
    const unsigned long card = addItems(*source, fullItems(kind()));
    const int before = db->count();
    unsigned long copy = 7;
    QVERIFY(!kind().copy(db.get(), &copy, source.get(), 0xFEFF, nullptr)); // no such card
    QCOMPARE(copy, 0ul);
    QVERIFY(source->close());
    copy = 7;
    QVERIFY(!kind().copy(db.get(), &copy, source.get(), card, nullptr));
    QCOMPARE(copy, 0ul);
    QCOMPARE(db->count(), before);
}

void RecordCopyTest::nullBoxes()
{
    open(kind());
    const unsigned long card = addItems(*source, fullItems(kind()));
    unsigned long copy = 7;
    QVERIFY(!kind().copy(nullptr, &copy, source.get(), card, nullptr));
    QCOMPARE(copy, 0ul);
    copy = 7;
    QVERIFY(!kind().copy(db.get(), &copy, nullptr, card, nullptr));
    QCOMPARE(copy, 0ul);
    QVERIFY(db->editNewCard()); // no edit is open
}

void RecordCopyTest::timedEventHasNoDates()
{
    open(kinds()[2]);
    QMap<QByteArray, QByteArray> items = fullItems(kinds()[2]);
    items["ADAY"] = QByteArray(1, '\0');
    const unsigned long card = addItems(*source, items);
    WriteWatch::reset();
    unsigned long copy = 0;
    QVERIFY(KyPDataBase::addDatebookEntry(db.get(), &copy, source.get(), card, nullptr));
    QVERIFY(WriteWatch::codes().contains("ALSD"));
    QCOMPARE(storedBytes(*db, copy, "ADAY"), QByteArray(1, '\0'));
    QCOMPARE(storedBytes(*db, copy, "ALSD"), QByteArray());
    QCOMPARE(storedBytes(*db, copy, "ALED"), QByteArray());
}

void RecordCopyTest::eventWithoutRepetition_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::newRow("none") << QByteArray("\xFF");
    QTest::newRow("missing") << QByteArray();
}

void RecordCopyTest::eventWithoutRepetition()
{
    QFETCH(QByteArray, type);
    open(kinds()[2]);
    QMap<QByteArray, QByteArray> items = fullItems(kinds()[2]);
    items["RTYP"] = type;
    const unsigned long card = addItems(*source, items);
    unsigned long copy = 0;
    QVERIFY(KyPDataBase::addDatebookEntry(db.get(), &copy, source.get(), card, nullptr));
    QCOMPARE(storedBytes(*db, copy, "RTYP"), type);
    for (const char *code : {"RFRQ", "RPOS", "RDYS", "REND", "REDT"})
        QCOMPARE(storedBytes(*db, copy, code), QByteArray());
}

void RecordCopyTest::eventWithoutStartIsRefused_data()
{
    QTest::addColumn<QByteArray>("code");
    for (const char *code : {"TIM1", "TIM2", "ALSD", "ALED", "REDT"})
        QTest::newRow(code) << QByteArray(code);
}

void RecordCopyTest::eventWithoutStartIsRefused()
{
    QFETCH(QByteArray, code);
    open(kinds()[2]);
    QMap<QByteArray, QByteArray> items = fullItems(kinds()[2]);
    items.remove(code);
    const unsigned long card = addItems(*source, items);
    const int before = db->count();
    unsigned long copy = 7;
    QVERIFY(!KyPDataBase::addDatebookEntry(db.get(), &copy, source.get(), card, nullptr));
    QCOMPARE(copy, 0ul);
    QCOMPARE(db->count(), before);
}

void RecordCopyTest::taskDatesGoToMidnight()
{
    open(kinds()[1]);
    QMap<QByteArray, QByteArray> items = fullItems(kinds()[1]);
    items["LTDY"] = ptime(2026, 1, 2, 3, 4, 5);
    items["ETDY"] = ptime(2026, 3, 4, 31, 63, 63);
    const unsigned long card = addItems(*source, items);
    unsigned long copy = 0;
    QVERIFY(KyPDataBase::addTodolistEntry(db.get(), &copy, source.get(), card, nullptr));
    QCOMPARE(storedBytes(*db, copy, "LTDY"), ptime(2026, 1, 2, 0, 0, 0));
    QCOMPARE(storedBytes(*db, copy, "ETDY"), ptime(2026, 3, 4, 0, 0, 0));
}

QTEST_MAIN(RecordCopyTest)
#include "recordcopytest.moc"
