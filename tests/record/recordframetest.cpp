#include "logcapture.h"
#include "mappingfixture.h"
#include "recordframe_p.h"
#include "syscallfailures.h"
#include "writewatch.h"
#include <cerrno>
#include <QPointer>
#include <QTimer>

namespace {

using CategoriesType = KyPDataBase::CategoriesType;

/** One of the three kinds of record, with a text and categories as all that tells two apart. */
struct Kind
{
    const char *name;
    std::unique_ptr<KyPDataBase> (*open)();
    bool (*add)(KyPDataBase *, unsigned long *, const QString &, const QList<int> &, CategoriesType);
    bool (*edit)(KyPDataBase *, unsigned long *, const QString &, const QList<int> &, CategoriesType);
    QString (*text)(KyPDataBase *, unsigned long);
    QList<int> (*categories)(KyPDataBase *, unsigned long, CategoriesType);
};

Contact contactOf(const QString &text, const QList<int> &categories)
{
    Contact contact;
    contact.replace(Contact::Notes, text);
    contact.setCategories(categories);
    return contact;
}

Task taskOf(const QString &text, const QList<int> &categories)
{
    Task task;
    task.setNotes(text);
    task.setCategories(categories);
    return task;
}

Event eventOf(const QString &text, const QList<int> &categories)
{
    Event event;
    event.setNotes(text);
    event.setStart(time_t(1000000));
    event.setEnd(time_t(1003600));
    event.setCategories(categories);
    return event;
}

template <auto Write, auto Make>
bool written(KyPDataBase *db, unsigned long *card, const QString &text, const QList<int> &categories,
             CategoriesType type)
{
    return Write(db, card, Make(text, categories), type);
}

template <typename Record>
using Writer = bool (*)(KyPDataBase *, unsigned long *, const Record &, CategoriesType);

constexpr Kind Kinds[] = {
    {"contact", openAddressbook, written<Writer<Contact>(&KyPDataBase::addAddressbookEntry), contactOf>,
     written<Writer<Contact>(&KyPDataBase::editAddressbookEntry), contactOf>,
     [](KyPDataBase *db, unsigned long card) {
         return KyPDataBase::toContact(db, card, KyPDataBase::CategoriesNone).find(Contact::Notes);
     },
     [](KyPDataBase *db, unsigned long card, CategoriesType type) {
         return KyPDataBase::toContact(db, card, type).categories();
     }},
    {"task", openTodolist, written<Writer<Task>(&KyPDataBase::addTodolistEntry), taskOf>,
     written<Writer<Task>(&KyPDataBase::editTodolistEntry), taskOf>,
     [](KyPDataBase *db, unsigned long card) {
         return KyPDataBase::toTask(db, card, KyPDataBase::CategoriesNone).notes();
     },
     [](KyPDataBase *db, unsigned long card, CategoriesType type) {
         return KyPDataBase::toTask(db, card, type).categories();
     }},
    {"event", openDatebook, written<Writer<Event>(&KyPDataBase::addDatebookEntry), eventOf>,
     written<Writer<Event>(&KyPDataBase::editDatebookEntry), eventOf>,
     [](KyPDataBase *db, unsigned long card) {
         return KyPDataBase::toEvent(db, card, KyPDataBase::CategoriesNone).notes();
     },
     [](KyPDataBase *db, unsigned long card, CategoriesType type) {
         return KyPDataBase::toEvent(db, card, type).categories();
     }},
};

} // namespace

/** What writing has in common for contacts, tasks and events: each test runs for all three. */
class RecordFrameTest : public QObject
{
    Q_OBJECT
private slots:
    void cleanup();

    void nullBoxWritesNothing_data() { kinds(); }
    void nullBoxWritesNothing();
    void addMakesANewCard_data() { kinds(); }
    void addMakesANewCard();
    void editChangesTheCard_data() { kinds(); }
    void editChangesTheCard();
    void resumeCardIdMakesANewCard_data() { kinds(); }
    void resumeCardIdMakesANewCard();
    void unknownCardIsRefused_data() { kinds(); }
    void unknownCardIsRefused();
    void editUnderWayIsLeftAlone_data() { kinds(); }
    void editUnderWayIsLeftAlone();
    void closedBoxIsRefused_data() { kinds(); }
    void closedBoxIsRefused();
    void categoriesNoneLeavesThemAlone_data() { kinds(); }
    void categoriesNoneLeavesThemAlone();
    void emptyCategoriesAreWritten_data() { kinds(); }
    void emptyCategoriesAreWritten();
    void failingFieldTouchesNoCategory_data() { kinds(); }
    void failingFieldTouchesNoCategory();
    void refusedCategoriesLeaveTheCardWritten_data() { kinds(); }
    void refusedCategoriesLeaveTheCardWritten();
    void entryCostsOneSynchronisation_data() { kinds(); }
    void entryCostsOneSynchronisation();
    void fullDiskKeepsEverything_data() { kinds(); }
    void fullDiskKeepsEverything();
    void entriesOfAnOuterActionAreOne_data() { kinds(); }
    void entriesOfAnOuterActionAreOne();
    void garbageOfAnEntryIsCollected_data() { kinds(); }
    void garbageOfAnEntryIsCollected();
    void boxLentDuringTheLookUp_data() { kinds(); }
    void boxLentDuringTheLookUp();
    void boxGoneAfterTheLookUp_data() { kinds(); }
    void boxGoneAfterTheLookUp();
    void boxDeletedDuringTheLookUp_data() { kinds(); }
    void boxDeletedDuringTheLookUp();
    void systemCardIsADestination();

private:
    static void kinds()
    {
        QTest::addColumn<int>("number");
        for (int i = 0; i < int(std::size(Kinds)); ++i)
            QTest::newRow(Kinds[i].name) << i;
    }
    const Kind &kind()
    {
        const QFETCH(int, number);
        return Kinds[number];
    }
};

void RecordFrameTest::cleanup()
{
    WriteWatch::reset();
    syscalls::failingWrite = 0;
}

void RecordFrameTest::nullBoxWritesNothing()
{
    unsigned long card = 7;
    QVERIFY(!kind().edit(nullptr, &card, "text", {}, KyPDataBase::CategoriesPdtm));
    QCOMPARE(card, 7ul);
    QVERIFY(!kind().add(nullptr, &card, "text", {}, KyPDataBase::CategoriesPdtm));
    QCOMPARE(card, 0ul);
    QVERIFY(kind().text(nullptr, 7).isEmpty());
    QCOMPARE(KyPDataBase::toContact(nullptr, 7, KyPDataBase::CategoriesXml), Contact());
    QCOMPARE(KyPDataBase::toTask(nullptr, 7, KyPDataBase::CategoriesXml), Task());
    QCOMPARE(KyPDataBase::toEvent(nullptr, 7, KyPDataBase::CategoriesXml), Event());
}

void RecordFrameTest::addMakesANewCard()
{
    const auto db = kind().open();
    const int before = db->count();
    const unsigned long expected = db->expectedCardId();
    unsigned long card = 1;
    QVERIFY(kind().add(db.get(), &card, "text", {5, 6}, KyPDataBase::CategoriesPdtm));
    QCOMPARE(card, expected);
    QCOMPARE(db->count(), before + 1);
    QCOMPARE(kind().text(db.get(), card), QString("text"));
    QCOMPARE(storedBytes(*db, card, "CTGR"), QByteArray("\x05\x06"));
}

void RecordFrameTest::editChangesTheCard()
{
    const auto db = kind().open();
    unsigned long card = 0;
    QVERIFY(kind().add(db.get(), &card, "before", {5}, KyPDataBase::CategoriesPdtm));
    const unsigned long same = card;
    const int before = db->count();
    QVERIFY(kind().edit(db.get(), &card, "after", {6, 7}, KyPDataBase::CategoriesPdtm));
    QCOMPARE(card, same);
    QCOMPARE(db->count(), before);
    QCOMPARE(kind().text(db.get(), card), QString("after"));
    QCOMPARE(kind().categories(db.get(), card, KyPDataBase::CategoriesPdtm), (QList<int>{6, 7}));
    unsigned long other = 0;
    QVERIFY(kind().edit(db.get(), &other, "new", {}, KyPDataBase::CategoriesPdtm));
    QVERIFY(other && other != card);
}

void RecordFrameTest::resumeCardIdMakesANewCard()
{
    const auto db = kind().open();
    const unsigned long expected = db->expectedCardId();
    unsigned long card = ResumeCardId;
    QVERIFY(kind().edit(db.get(), &card, "text", {5}, KyPDataBase::CategoriesPdtm));
    QCOMPARE(card, expected);
    QCOMPARE(kind().text(db.get(), card), QString("text"));
    QCOMPARE(storedBytes(*db, ResumeCardId, "MEM1"), QByteArray("unreadable"));
    // A failure leaves the id as it was.
    WriteWatch::fail("MEM1");
    card = ResumeCardId;
    QVERIFY(!kind().edit(db.get(), &card, "text", {5}, KyPDataBase::CategoriesPdtm));
    QCOMPARE(card, ResumeCardId);
}

void RecordFrameTest::unknownCardIsRefused()
{
    const auto db = kind().open();
    const int before = db->count();
    unsigned long card = 0xFEFF;
    QVERIFY(!kind().edit(db.get(), &card, "text", {5}, KyPDataBase::CategoriesPdtm));
    QCOMPARE(card, 0xFEFFul);
    QCOMPARE(db->count(), before);
    QVERIFY(kind().text(db.get(), 0xFEFF).isEmpty());
    QVERIFY(kind().categories(db.get(), 0xFEFF, KyPDataBase::CategoriesPdtm).isEmpty());
}

void RecordFrameTest::editUnderWayIsLeftAlone()
{
    const auto db = kind().open();
    QVERIFY(db->editNewCard());
    QVERIFY(db->writeItem("MEM1", "of the page"));
    unsigned long card = 0;
    QVERIFY(!kind().add(db.get(), &card, "text", {}, KyPDataBase::CategoriesPdtm));
    QCOMPARE(card, 0ul);
    QVERIFY(db->finishEditCard(&card));
    QCOMPARE(kind().text(db.get(), card), QString("of the page"));
}

void RecordFrameTest::closedBoxIsRefused()
{
    const auto db = kind().open();
    QVERIFY(db->close());
    unsigned long card = 0;
    QVERIFY(!kind().add(db.get(), &card, "text", {}, KyPDataBase::CategoriesPdtm));
    QCOMPARE(card, 0ul);
    QVERIFY(db->open(false));
    QVERIFY(kind().add(db.get(), &card, "text", {}, KyPDataBase::CategoriesPdtm));
}

void RecordFrameTest::categoriesNoneLeavesThemAlone()
{
    const auto db = kind().open();
    unsigned long card = 0;
    QVERIFY(kind().add(db.get(), &card, "before", {5, 6}, KyPDataBase::CategoriesPdtm));
    QVERIFY(kind().edit(db.get(), &card, "after", {9}, KyPDataBase::CategoriesNone));
    QCOMPARE(kind().text(db.get(), card), QString("after"));
    QCOMPARE(storedBytes(*db, card, "CTGR"), QByteArray("\x05\x06"));
    QVERIFY(kind().categories(db.get(), card, KyPDataBase::CategoriesNone).isEmpty());
    QCOMPARE(kind().categories(db.get(), card, KyPDataBase::CategoriesPdtm), (QList<int>{5, 6}));
}

void RecordFrameTest::emptyCategoriesAreWritten()
{
    const auto db = kind().open();
    for (const CategoriesType type : {KyPDataBase::CategoriesPdtm, KyPDataBase::CategoriesXml}) {
        unsigned long card = 0;
        QVERIFY(kind().add(db.get(), &card, "text", {5, 6}, KyPDataBase::CategoriesPdtm));
        QVERIFY(kind().edit(db.get(), &card, "text", {}, type));
        QCOMPARE(storedBytes(*db, card, "CTGR"), QByteArray());
    }
}

void RecordFrameTest::failingFieldTouchesNoCategory()
{
    const auto db = kind().open();
    const int unknown = fileCategory(QString(), QString("not in the table of a %1").arg(kind().name));
    unsigned long card = 0;
    QVERIFY(kind().add(db.get(), &card, "before", {5}, KyPDataBase::CategoriesPdtm));
    WriteWatch::fail("MEM1");
    QVERIFY(!kind().edit(db.get(), &card, "after", {unknown}, KyPDataBase::CategoriesXml));
    WriteWatch::reset();
    QCOMPARE(kind().text(db.get(), card), QString("before"));
    QCOMPARE(storedBytes(*db, card, "CTGR"), QByteArray("\x05"));
    KyCategories::createFile(nullptr);
    QVERIFY(!KyCategories().exists(QString("not in the table of a %1").arg(kind().name)));
}

void RecordFrameTest::refusedCategoriesLeaveTheCardWritten()
{
    const auto db = kind().open();
    const unsigned long expected = db->expectedCardId();
    WriteWatch::fail("CTGR");
    unsigned long card = 0;
    QVERIFY(!kind().add(db.get(), &card, "text", {5}, KyPDataBase::CategoriesPdtm));
    WriteWatch::reset();
    QCOMPARE(card, expected);
    QVERIFY(db->close()); // what an action leaves open would be lost
    QVERIFY(db->open(false));
    QCOMPARE(kind().text(db.get(), card), QString("text"));
    QCOMPARE(storedBytes(*db, card, "CTGR"), QByteArray());
    QVERIFY(db->editNewCard()); // the edit is over
}

void RecordFrameTest::entryCostsOneSynchronisation()
{
    const auto db = kind().open();
    unsigned long card = 0;
    QVERIFY(kind().add(db.get(), &card, "first", {5}, KyPDataBase::CategoriesPdtm));
    syscalls::synchronisations = 0;
    QVERIFY(kind().add(db.get(), &card, "second", {5}, KyPDataBase::CategoriesPdtm));
    QCOMPARE(syscalls::synchronisations, 1);
    QVERIFY(kind().edit(db.get(), &card, "changed", {6}, KyPDataBase::CategoriesPdtm));
    QCOMPARE(syscalls::synchronisations, 2);
}

void RecordFrameTest::fullDiskKeepsEverything()
{
    const auto db = kind().open();
    unsigned long card = 0;
    QVERIFY(kind().add(db.get(), &card, "before", {5}, KyPDataBase::CategoriesPdtm));
    const int before = db->count();
    syscalls::failingWrite = ENOSPC;
    QVERIFY(!kind().edit(db.get(), &card, "after", {6}, KyPDataBase::CategoriesPdtm));
    unsigned long other = 0;
    QVERIFY(!kind().add(db.get(), &other, "more", {6}, KyPDataBase::CategoriesPdtm));
    syscalls::failingWrite = 0;
    QCOMPARE(other, 0ul);
    QCOMPARE(db->count(), before);
    QCOMPARE(kind().text(db.get(), card), QString("before"));
    QCOMPARE(storedBytes(*db, card, "CTGR"), QByteArray("\x05"));
    QVERIFY(kind().edit(db.get(), &card, "after", {6}, KyPDataBase::CategoriesPdtm));
    QCOMPARE(kind().text(db.get(), card), QString("after"));
}

void RecordFrameTest::entriesOfAnOuterActionAreOne()
{
    const auto db = kind().open();
    unsigned long card = 0;
    QVERIFY(kind().add(db.get(), &card, "first", {5}, KyPDataBase::CategoriesPdtm));
    syscalls::synchronisations = 0;
    QVERIFY(db->beginAction());
    for (int i = 0; i < 5; ++i)
        QVERIFY(kind().add(db.get(), &card, "more", {5}, KyPDataBase::CategoriesPdtm));
    QCOMPARE(syscalls::synchronisations, 0);
    QVERIFY(db->endAction());
    QCOMPARE(syscalls::synchronisations, 1);
    QCOMPARE(kind().text(db.get(), card), QString("more"));
}

/** Growth is measured from before the first of the two edits. */
void RecordFrameTest::garbageOfAnEntryIsCollected()
{
    const auto db = kind().open();
    unsigned long card = 0;
    QVERIFY(kind().add(db.get(), &card, QString(60000, 'x'), {5}, KyPDataBase::CategoriesPdtm));
    const LogCapture log;
    QVERIFY(kind().edit(db.get(), &card, "short", {5}, KyPDataBase::CategoriesPdtm));
    QCOMPARE(log.lines().filter("auto garbage collection").size(), 1);
    QCOMPARE(db->garbageSize(), 0ul);
    QCOMPARE(kind().text(db.get(), card), QString("short"));
}

/** Another holder of the category table makes the look-up run the event loop. */
class TableHolder
{
public:
    TableHolder()
    {
        KyCategories::createFile(nullptr);
        m_table = std::make_unique<KyPDataManager>("F0:KYFLER.BOX", nullptr, false);
    }
    [[nodiscard]] bool isOpened() const { return m_table->isOpened(); }

    /** Runs in the event loop of the look-up; the table is free behind it. */
    void during(const std::function<void()> &work)
    {
        QTimer::singleShot(0, m_table.get(), [this, work] {
            work();
            m_table->close();
            hasRun = true;
        });
    }

    bool hasRun = false;

private:
    std::unique_ptr<KyPDataManager> m_table;
};

static QByteArray pathOf(KyPDataBase &db)
{
    return QByteArray(privateOf(db).boxDir) + privateOf(db).boxName;
}

void RecordFrameTest::boxLentDuringTheLookUp()
{
    const int category = fileCategory(QString(), "lent");
    QVERIFY(tableCategory("lent"));
    const auto db = kind().open();
    TableHolder holder;
    QVERIFY(holder.isOpened());
    holder.during([&db] {
        QVERIFY(db->close());
        KyPDataManager borrower(pathOf(*db).constData(), nullptr, false);
        QVERIFY(borrower.isOpened());
        QVERIFY(borrower.close());
        QVERIFY(db->open(false));
    });
    unsigned long card = 0;
    QVERIFY(kind().add(db.get(), &card, "text", {category}, KyPDataBase::CategoriesXml));
    QVERIFY(holder.hasRun);
    QCOMPARE(kind().text(db.get(), card), QString("text"));
    QCOMPARE(categoryNames(*db, card), QStringList{"lent"});
}

void RecordFrameTest::boxGoneAfterTheLookUp()
{
    const int category = fileCategory(QString(), "gone");
    QVERIFY(tableCategory("gone"));
    const auto db = kind().open();
    const int before = db->count();
    TableHolder holder;
    QVERIFY(holder.isOpened());
    holder.during([&db] { QVERIFY(db->close()); });
    unsigned long card = 0;
    QVERIFY(!kind().add(db.get(), &card, "text", {category}, KyPDataBase::CategoriesXml));
    QVERIFY(holder.hasRun);
    QCOMPARE(card, 0ul);
    QVERIFY(db->open(false));
    QCOMPARE(db->count(), before);
    QVERIFY(kind().add(db.get(), &card, "text", {category}, KyPDataBase::CategoriesXml)); // the edit is over
}

void RecordFrameTest::boxDeletedDuringTheLookUp()
{
    const int category = fileCategory(QString(), "deleted");
    QVERIFY(tableCategory("deleted"));
    auto db = kind().open();
    TableHolder holder;
    QVERIFY(holder.isOpened());
    holder.during([&db] { db.reset(); });
    unsigned long card = 0;
    QVERIFY(!kind().add(db.get(), &card, "text", {category}, KyPDataBase::CategoriesXml));
    QVERIFY(holder.hasRun);
    QVERIFY(!db);
    QCOMPARE(card, 0ul);
}

void RecordFrameTest::systemCardIsADestination()
{
    const auto db = openDatebook();
    const int before = db->count();
    for (const char *text : {"parked", "parked again"}) {
        unsigned long card = ResumeCardId;
        QVERIFY(KyPDtm::writeEvent(db.get(), 0, &card, eventOf(text, {5}), KyPDataBase::CategoriesPdtm));
        QCOMPARE(card, ResumeCardId);
        const Event back = KyPDataBase::toEvent(db.get(), ResumeCardId, KyPDataBase::CategoriesPdtm);
        QCOMPARE(back.notes(), QString(text));
        QCOMPARE(back.categories(), QList<int>{5});
        QCOMPARE(db->count(), before);
    }
}

QTEST_MAIN(RecordFrameTest)
#include "recordframetest.moc"
