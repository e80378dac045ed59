/* Each operation of the store that deletion and the categories of cards use fails in turn; and a process that
 * deletes is killed before each of them, and at any moment. */

#include "categoryfixture.h"
#include "childprocess.h"
#include <csignal>
#include <QRandomGenerator>

namespace {

/** Calls of the store, made to fail or to kill. */
struct Watch
{
    QByteArrayList calls;
    QByteArray operation; ///< that fails
    int number = 0;       ///< of its call that fails, from 1; 0: every one
    PdtmStatus status = PdtmOk;
    bool disk = false; ///< nothing reaches the disk
    int killBefore = -1;
    bool isInside = false;
};
Watch watch;

void fail(const QByteArray &operation, int number, PdtmStatus status = PdtmIoError)
{
    watch = {};
    watch.operation = operation;
    watch.number = number;
    watch.status = status;
}

/** @param failure what the operation gives when it fails; a status is that of the watch */
template <typename Result, typename Forward>
Result watched(const QByteArray &operation, Result failure, Forward forward)
{
    if (watch.isInside)
        return forward();
    if (watch.calls.size() == watch.killBefore)
        raise(SIGKILL);
    watch.calls.append(operation);
    if (operation == watch.operation && (watch.number == 0 || watch.calls.count(operation) == watch.number))
        return failure;
    watch.isInside = true;
    const Result result = forward();
    watch.isInside = false;
    return result;
}

} // namespace

#define WATCHED(operation, failure, ...)                                                                     \
    watched(#operation, failure, [&] {                                                                       \
        static const auto next = nextDefinition<decltype(operation)>(#operation);                            \
        return next(__VA_ARGS__);                                                                            \
    })

extern "C" {

Q_DECL_EXPORT int fsync(int descriptor)
{
    static const auto next = nextDefinition<int(int)>("fsync");
    errno = EIO;
    return watch.disk ? -1 : next(descriptor);
}

Q_DECL_EXPORT int fdatasync(int descriptor)
{
    static const auto next = nextDefinition<int(int)>("fdatasync");
    errno = EIO;
    return watch.disk ? -1 : next(descriptor);
}

} // extern "C"

int DtmIsEnoughStorageForOperation(uint32_t handle, int kind)
{
    return WATCHED(DtmIsEnoughStorageForOperation, 0, handle, kind);
}

PdtmStatus DtmBeginAction(uint32_t handle)
{
    return WATCHED(DtmBeginAction, watch.status, handle);
}

PdtmStatus DtmEndAction(uint32_t handle)
{
    return WATCHED(DtmEndAction, watch.status, handle);
}

PdtmStatus _CardDelete(uint32_t handle, uint16_t card)
{
    return WATCHED(_CardDelete, watch.status, handle, card);
}

PdtmStatus _CardAllDelete(uint32_t handle, uint8_t mask, uint8_t value, uint8_t third)
{
    return WATCHED(_CardAllDelete, watch.status, handle, mask, value, third);
}

PdtmStatus _CardCopy(uint32_t handle, uint16_t source, uint16_t *destination)
{
    return WATCHED(_CardCopy, watch.status, handle, source, destination);
}

PdtmStatus _CardRead(uint32_t handle, const CardItemKey *key, void *buffer, uint32_t *size)
{
    return WATCHED(_CardRead, watch.status, handle, key, buffer, size);
}

PdtmStatus _CardWrite(uint32_t handle, const CardItemKey *key, const void *buffer, uint32_t size)
{
    return WATCHED(_CardWrite, watch.status, handle, key, buffer, size);
}

PdtmStatus _CardCategoryAppend(uint32_t handle, const CardItemKey *key, uint8_t category)
{
    return WATCHED(_CardCategoryAppend, watch.status, handle, key, category);
}

PdtmStatus _CardCategoryDelete(uint32_t handle, const CardItemKey *key, uint8_t category)
{
    return WATCHED(_CardCategoryDelete, watch.status, handle, key, category);
}

PdtmStatus _IndexNoAppend(const char *path, uint32_t handle, uint16_t card, uint16_t *indexNumber)
{
    return WATCHED(_IndexNoAppend, watch.status, path, handle, card, indexNumber);
}

PdtmStatus _IndexNoDelete(const char *path, uint16_t indexNumber)
{
    return WATCHED(_IndexNoDelete, watch.status, path, indexNumber);
}

PdtmStatus _IndexNoToCardID(const char *path, uint16_t indexNumber, uint16_t *card)
{
    return WATCHED(_IndexNoToCardID, watch.status, path, indexNumber, card);
}

PdtmStatus _CardIDToIndexNo(const char *path, uint16_t card, uint16_t *indexNumber)
{
    return WATCHED(_CardIDToIndexNo, watch.status, path, card, indexNumber);
}

PdtmStatus _NextIndexNo(const char *path, uint8_t mask, uint8_t value, uint8_t third, uint16_t *indexNumber)
{
    return WATCHED(_NextIndexNo, watch.status, path, mask, value, third, indexNumber);
}

PdtmStatus _IndexSearch(const char *path, uint32_t handle, const void *expression, int backward, uint8_t mask,
                        uint8_t value, uint8_t third, uint16_t start, uint16_t *indexNumber)
{
    return WATCHED(_IndexSearch, watch.status, path, handle, expression, backward, mask, value, third, start,
                   indexNumber);
}

PdtmStatus _IndexDelete(const char *path)
{
    return WATCHED(_IndexDelete, watch.status, path);
}

namespace {

constexpr auto Single = KyPDataManager::DeleteSingle;
constexpr auto Visible = KyPDataManager::DeleteVisible;
constexpr auto All = KyPDataManager::DeleteAll;

/** The six cards of View, with views of 5, 9 and the unfiled kept and 5 shown: a, b, c and d. */
struct Six : ListedView
{
    Six()
    {
        addSix();
        for (const char title : QByteArray("abcdef"))
            ids[title] = cardOf(QString(QChar(title)));
        isReady =
            manager.enableFilter(UnfiledCategoryId) && manager.enableFilter(9) && manager.enableFilter(5);
    }

    /** Titles of the cards that are visible in the box. */
    QString left()
    {
        QString all;
        for (const unsigned long card : cardsIn(manager, box.master()))
            all += manager.readItem("TITL", card);
        return all;
    }

    /** Titles of those that are marked for deletion. */
    QString marked()
    {
        QString all;
        for (auto id = ids.cbegin(); id != ids.cend(); ++id) {
            if (storedBytes(manager, *id, "ATTR") == "\x40")
                all += QChar(id.key());
        }
        return all;
    }

    /** Titles in the view of a category, "-" when there is none. */
    QString shown(int category)
    {
        if (!rowOf(manager, category))
            return QStringLiteral("-");
        QString all;
        for (const unsigned long card : cardsOfCategory(manager, category))
            all += manager.readItem("TITL", card);
        return all;
    }

    QString allShown() { return shown(5) + ' ' + shown(9) + ' ' + shown(UnfiledCategoryId); }

    QMap<char, unsigned long> ids;
    bool isReady = false;
};

constexpr auto AllOfThem = "a5 b5 c59 d59 e9 f";
constexpr auto AllViews = "abcd cde f";

// The killed process

constexpr auto KillBox = "F0:KILL.BOX";
constexpr auto KillMaster = "F0:KILL.IDX";

void createKillBox()
{
    KyPDataManagerItemInfo items;
    items.addTextItem("TITL", QStringLiteral("title"));
    items.addCategoryItem();
    KyPDataManagerSortKey order;
    order.addSortKey("TITL", true, true);
    KyPDataManager::createFile(KillBox, KillMaster, TestBox::ApplicationId, false, items, order,
                               KyPDataManagerIndexInfo());
}

/** Makes the box hold @p filed cards of category 5 and three others. */
bool fillKillBox(KyPDataManager &manager, int filed)
{
    bool isFilled = manager.beginAction() && manager.deleteCard(nullptr, All);
    for (int i = 0; i < filed + 3 && isFilled; ++i) {
        unsigned long card = 0;
        isFilled = manager.editNewCard() && manager.writeItem("TITL", QString::number(i)) &&
                   (i < 3 || manager.writeItem("CTGR", "\5", 1UL)) && manager.finishEditCard(&card);
    }
    return manager.endAction() && isFilled;
}

/** Arguments: what to do, and before which call to die, -1 for none. */
int childMain(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    KyPDataManager manager(KillBox, nullptr, false);
    if (argc < 3 || !manager.isOpened() || !manager.enableFilter(5))
        return 2;
    ChildProcess::say("go");
    watch = {};
    watch.killBefore = QByteArray(argv[2]).toInt();
    const bool isDone =
        qstrcmp(argv[1], "visible") == 0 ? manager.deleteCard(nullptr, Visible) : manager.categoryRemoved(5);
    ChildProcess::say(isDone ? "done" : "failed");
    return 0;
}

} // namespace

class DeleteFaultsTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void singleThatFails();
    void visible_data();
    void visible();
    void marksThatWereLeftGoWithTheNext();
    void all_data();
    void all();
    void failureSpoilsTheCallersAction();
    void failedDeletionCollectsNothing();
    void categoryThatCannotBeAdded();
    void viewThatCannotTakeTheCard();
    void viewThatHasTheCardAlready();
    void shownViewThatCannotTakeTheCard();
    void cardThatCannotBeTakenOut();
    void categoryThatCannotBeRemoved();
    void unfiledViewThatCannotTakeTheCard();
    void visibleAddThatFails();
    void visibleRemovalThatFails();
    void visibleRemovalWithAFailingView();
    void update_data();
    void update();
    void removal_data();
    void removal();
    void killedBeforeEachCall_data();
    void killedBeforeEachCall();
    void killedAtAnyMoment_data();
    void killedAtAnyMoment();

private:
    void checkAllOrNone(bool isRemoval, int filed, bool *isDone);
};

void DeleteFaultsTest::init()
{
    watch = {};
    deleteTemporaryFiles();
}

// Deletion

void DeleteFaultsTest::singleThatFails()
{
    Six six;
    unsigned long card = six.ids['b'];
    fail("_CardDelete", 1);
    QVERIFY(!six.manager.deleteCard(&card, Single));
    QCOMPARE(card, six.ids['b']);
    watch = {};
    QCOMPARE(six.left(), QStringLiteral("abcdef"));
    QCOMPARE(six.allShown(), AllViews);
    watch.disk = true;
    QVERIFY(!six.manager.deleteCard(&card, Single));
    QCOMPARE(card, six.ids['b']);
    watch = {};
    QCOMPARE(six.left(), QStringLiteral("abcdef"));
    QCOMPARE(six.allShown(), AllViews);
}

void DeleteFaultsTest::visible_data()
{
    QTest::addColumn<QByteArray>("operation");
    QTest::addColumn<int>("number");
    QTest::addColumn<bool>("result");
    QTest::addColumn<QString>("left");
    QTest::addColumn<QString>("marked");
    const auto row = [](const char *name, const QByteArray &operation, int number, bool result,
                        const char *left, const char *marked) {
        QTest::newRow(name) << operation << number << result << QString(left) << QString(marked);
    };
    row("none", "", 0, true, "ef", "");
    row("no room", "DtmIsEnoughStorageForOperation", 1, false, "abcdef", "");
    row("action that can't begin", "DtmBeginAction", 1, false, "abcdef", "");
    row("first step", "_NextIndexNo", 1, true, "abcdef", "");
    row("third step", "_NextIndexNo", 3, true, "cdef", "");
    row("step from the second card", "_CardIDToIndexNo", 2, true, "cdef", "");
    row("third card", "_IndexNoToCardID", 3, true, "cdef", "");
    row("attribute of the third card", "_CardRead", 3, true, "cdef", "");
    row("mark of the third card", "_CardWrite", 3, true, "cdef", "");
    row("deletion", "_CardAllDelete", 1, false, "ef", "abcd");
    row("disk", "disk", 0, false, "abcdef", "");
}

void DeleteFaultsTest::visible()
{
    QFETCH(QByteArray, operation);
    QFETCH(int, number);
    QFETCH(bool, result);
    QFETCH(QString, left);
    QFETCH(QString, marked);
    Six six;
    QVERIFY(six.isReady);
    six.table().lastError = 0;
    unsigned long card = 77;
    fail(operation, number, PdtmDamaged);
    watch.disk = operation == "disk";
    QCOMPARE(six.manager.deleteCard(&card, Visible), result);
    const QByteArrayList calls = watch.calls;
    watch = {};
    QCOMPARE(card, 77UL);
    QCOMPARE(six.left(), left);
    QCOMPARE(six.marked(), marked);
    QCOMPARE(six.manager.count(), int(left.size()) - 2); // the view has lost the same cards
    QCOMPARE(six.table().openActions, 0);
    if (operation == "disk")
        QVERIFY(six.table().lastError != PdtmOk);
    else
        QCOMPARE(int(six.table().lastError), operation == "_CardAllDelete" ? int(PdtmDamaged) : 0);
    const bool isWalked = operation != "DtmIsEnoughStorageForOperation" && operation != "DtmBeginAction";
    QCOMPARE(calls.count("_CardAllDelete"), isWalked ? 1 : 0); // also when the walk ended early
    QVERIFY(!six.manager.endAction());
    QVERIFY(six.manager.deleteCard(&card, Visible)); // and the next one works
    QCOMPARE(six.left(), QStringLiteral("ef"));
}

void DeleteFaultsTest::marksThatWereLeftGoWithTheNext()
{
    Six six;
    fail("_CardAllDelete", 1);
    QVERIFY(!six.manager.deleteCard(nullptr, Visible));
    watch = {};
    QCOMPARE(six.marked(), QStringLiteral("abcd"));
    QVERIFY(six.manager.close());
    QVERIFY(six.manager.open(false));
    QCOMPARE(six.marked(), QStringLiteral("abcd")); // they are on the disk
    QVERIFY(six.manager.deleteCard(nullptr, Visible));
    QCOMPARE(six.marked(), QString());
    QVERIFY(!isThere(six.manager, six.ids['a']));
}

void DeleteFaultsTest::all_data()
{
    QTest::addColumn<QByteArray>("operation");
    QTest::newRow("deletion") << QByteArray("_CardAllDelete");
    QTest::newRow("disk") << QByteArray("disk");
}

void DeleteFaultsTest::all()
{
    QFETCH(QByteArray, operation);
    Six six;
    fail(operation, 1, PdtmDamaged);
    watch.disk = operation == "disk";
    QVERIFY(!six.manager.deleteCard(nullptr, All));
    watch = {};
    QVERIFY(six.table().lastError != PdtmOk);
    QCOMPARE(six.left(), QStringLiteral("abcdef"));
    QCOMPARE(six.allShown(), AllViews);
    QVERIFY(six.manager.deleteCard(nullptr, All));
    QCOMPARE(six.left(), QString());
}

void DeleteFaultsTest::failureSpoilsTheCallersAction()
{
    Six six;
    QVERIFY(six.manager.beginAction());
    QVERIFY(six.add("new", 0, "\5") != 0);
    QVERIFY(six.manager.deleteCard(nullptr, Visible));
    watch.disk = true;
    QVERIFY(!six.manager.endAction());
    watch = {};
    QCOMPARE(six.left(), QStringLiteral("abcdef"));
    QCOMPARE(six.marked(), QString());
    QCOMPARE(six.allShown(), AllViews);
}

void DeleteFaultsTest::failedDeletionCollectsNothing()
{
    Six six;
    for (const auto mode : {Visible, All}) {
        fail("_CardAllDelete", 1);
        six.table().collectionDue = false;
        QVERIFY(!six.manager.deleteCard(nullptr, mode));
        QVERIFY(!six.table().collectionDue);
    }
}

// Categories of one card

void DeleteFaultsTest::categoryThatCannotBeAdded()
{
    Six six;
    fail("_CardCategoryAppend", 1, PdtmOutOfSpace);
    QVERIFY(!six.manager.addCardToCtgr(six.ids['f'], 5, Single, false));
    QCOMPARE(int(six.table().lastError), int(PdtmOutOfSpace));
    watch = {};
    QCOMPARE(six.cards(), AllOfThem);
    QCOMPARE(six.allShown(), AllViews);
}

void DeleteFaultsTest::viewThatCannotTakeTheCard()
{
    Six six;
    const QByteArray index = pathOf(six.manager, *rowOf(six.manager, 9));
    fail("_IndexNoAppend", 1, PdtmDamaged);
    QVERIFY(!six.manager.addCardToCtgr(six.ids['a'], 9, Single, false));
    QCOMPARE(int(six.table().lastError), int(PdtmDamaged));
    watch = {};
    QCOMPARE(six.allShown(), QStringLiteral("abcd - f"));
    QVERIFY(!folderNames().contains(QString::fromLatin1(index.mid(3))));
    QCOMPARE(six.manager.readCategories(six.ids['a']), (QList<int>{5, 9})); // the card has it all the same
    QVERIFY(six.manager.enableFilter(9));
    QCOMPARE(six.titles(), QStringLiteral("acde"));
}

void DeleteFaultsTest::viewThatHasTheCardAlready()
{
    Six six;
    fail("_IndexNoAppend", 1, PdtmAlreadyInIndex);
    QVERIFY(six.manager.addCardToCtgr(six.ids['a'], 9, Single, false));
    watch = {};
    QCOMPARE(six.allShown(), AllViews); // the store was not asked
}

void DeleteFaultsTest::shownViewThatCannotTakeTheCard()
{
    Six six;
    QVERIFY(six.manager.first());
    fail("_IndexNoAppend", 1);
    QVERIFY(!six.manager.addCardToCtgr(six.ids['f'], 5, Single, false));
    watch = {};
    QVERIFY(!six.current().inUse);
    QCOMPARE(six.titles(), QString());
    QCOMPARE(six.manager.count(), -1);
    QVERIFY(!six.manager.first() && !six.manager.next());
    QCOMPARE(six.manager.cardId(), six.ids['a']);
    QVERIFY(six.manager.enableFilter(5));
    QCOMPARE(six.titles(), QStringLiteral("abcdf"));
}

void DeleteFaultsTest::cardThatCannotBeTakenOut()
{
    Six six;
    fail("_IndexNoDelete", 0);
    QVERIFY(six.manager.addCardToCtgr(six.ids['f'], 9, Single, false));
    QVERIFY(six.manager.removeCardFromCtgr(six.ids['a'], 5, Single, false));
    watch = {};
    QCOMPARE(six.cards(), QStringLiteral("a b5 c59 d59 e9 f9"));
    QCOMPARE(six.allShown(), QStringLiteral("abcd cdef af")); // until they are built anew
}

void DeleteFaultsTest::categoryThatCannotBeRemoved()
{
    Six six;
    fail("_CardCategoryDelete", 1, PdtmOutOfSpace);
    QVERIFY(!six.manager.removeCardFromCtgr(six.ids['a'], 5, Single, false));
    QCOMPARE(int(six.table().lastError), int(PdtmOutOfSpace));
    watch = {};
    QCOMPARE(six.cards(), AllOfThem);
    QCOMPARE(six.allShown(), AllViews);
}

void DeleteFaultsTest::unfiledViewThatCannotTakeTheCard()
{
    Six six;
    fail("_IndexNoAppend", 1, PdtmDamaged);
    QVERIFY(!six.manager.removeCardFromCtgr(six.ids['a'], 5, Single, false));
    QCOMPARE(int(six.table().lastError), int(PdtmDamaged));
    watch = {};
    QCOMPARE(six.allShown(), QStringLiteral("bcd cde -"));
    QCOMPARE(six.cards(), QStringLiteral("a b5 c59 d59 e9 f"));
}

void DeleteFaultsTest::visibleAddThatFails()
{
    Six six;
    QVERIFY(six.manager.enableFilter(UnfiledCategoryId)); // f alone
    fail("_CardCategoryAppend", 0);
    QVERIFY(!six.manager.addCardToCtgr(0, 9, Visible, false));
    fail("_IndexNoAppend", 0);
    QVERIFY(!six.manager.addCardToCtgr(0, 9, Visible, false));
    watch = {};
    QCOMPARE(six.allShown(), QStringLiteral("abcd - f"));
}

void DeleteFaultsTest::visibleRemovalThatFails()
{
    Six six;
    QVERIFY(six.manager.addCardToCtgr(six.ids['a'], 7, Single, false));
    QVERIFY(six.manager.enableFilter(7)); // a alone
    fail("_CardCategoryDelete", 0);
    QVERIFY(six.manager.removeCardFromCtgr(0, 5, Visible, false));
    QCOMPARE(watch.calls.count("_CardCategoryDelete"), 1);
    watch = {};
    QCOMPARE(six.manager.readCategories(six.ids['a']), (QList<int>{5, 7}));
    QCOMPARE(six.allShown(), AllViews);
}

void DeleteFaultsTest::visibleRemovalWithAFailingView()
{
    Six six;
    QVERIFY(six.manager.removeCardFromCtgr(six.ids['a'], 5, Single, false));
    QVERIFY(six.manager.addCardToCtgr(six.ids['a'], 7, Single, false));
    QVERIFY(six.manager.enableFilter(7)); // a alone
    fail("_IndexNoAppend", 0);
    QVERIFY(six.manager.removeCardFromCtgr(0, 7, Visible, false));
    watch = {};
    QCOMPARE(six.allShown(), QStringLiteral("bcd cde -"));
    QCOMPARE(six.titles(), QString());
}

void DeleteFaultsTest::update_data()
{
    QTest::addColumn<QByteArray>("operation");
    QTest::addColumn<int>("number");
    QTest::addColumn<bool>("result");
    QTest::newRow("no work card") << QByteArray("_CardCopy") << 1 << false;
    QTest::newRow("list") << QByteArray("_CardWrite") << 1 << false;
    QTest::newRow("time of change") << QByteArray("_CardWrite") << 2 << false;
    QTest::newRow("end of the edit") << QByteArray("_CardCopy") << 2 << false;
    QTest::newRow("disk") << QByteArray("disk") << 0 << false;
    QTest::newRow("not found in the view") << QByteArray("_CardIDToIndexNo") << 1 << true;
    QTest::newRow("view") << QByteArray("_IndexNoDelete") << 1 << true;
}

void DeleteFaultsTest::update()
{
    QFETCH(QByteArray, operation);
    QFETCH(int, number);
    QFETCH(bool, result);
    Six six;
    fail(operation, number);
    watch.disk = operation == "disk";
    QCOMPARE(six.manager.updateCategories(six.ids['a'], {}, Single, false), result);
    watch = {};
    QVERIFY(!six.table().editing);
    QVERIFY(!isThere(six.manager, WorkCardId));
    QCOMPARE(six.cards(), result ? QStringLiteral("a b5 c59 d59 e9 f") : QString(AllOfThem));
    QCOMPARE(six.allShown(), result ? QStringLiteral("bcd cde af") : QString(AllViews));
    QVERIFY(six.manager.updateCategories(six.ids['a'], {9}, Single, false));
}

// Removal of a category

void DeleteFaultsTest::removal_data()
{
    QTest::addColumn<QByteArray>("operation");
    QTest::addColumn<int>("number");
    QTest::addColumn<bool>("result");
    QTest::addColumn<QString>("cards");
    const QString whole = AllOfThem;
    QTest::newRow("none") << QByteArray() << 0 << true << QStringLiteral("a b c9 d9 e9 f");
    QTest::newRow("action that can't begin") << QByteArray("DtmBeginAction") << 1 << false << whole;
    QTest::newRow("first search") << QByteArray("_IndexSearch") << 1 << false << whole;
    QTest::newRow("third search") << QByteArray("_IndexSearch") << 3 << false
                                  << QStringLiteral("a b c59 d59 e9 f");
    QTest::newRow("start of the third search")
        << QByteArray("_CardIDToIndexNo") << 2 << false << QStringLiteral("a b c59 d59 e9 f");
    QTest::newRow("third card found")
        << QByteArray("_IndexNoToCardID") << 3 << false << QStringLiteral("a b c59 d59 e9 f");
    QTest::newRow("third card") << QByteArray("_CardCategoryDelete") << 3 << false
                                << QStringLiteral("a b c59 d59 e9 f");
    QTest::newRow("disk") << QByteArray("disk") << 0 << false << whole;
    QTest::newRow("index files") << QByteArray("_IndexDelete") << 0 << true
                                 << QStringLiteral("a b c9 d9 e9 f");
}

void DeleteFaultsTest::removal()
{
    QFETCH(QByteArray, operation);
    QFETCH(int, number);
    QFETCH(bool, result);
    QFETCH(QString, cards);
    Six six;
    QVERIFY(six.isReady);
    six.table().lastError = 0;
    fail(operation, number, PdtmDamaged);
    watch.disk = operation == "disk";
    QCOMPARE(six.manager.categoryRemoved(5), result);
    watch = {};
    QCOMPARE(six.cards(), cards);
    QCOMPARE(six.allShown(), QStringLiteral("- cde -"));
    QVERIFY(six.table().currentIndex == six.table().masterIndex);
    QCOMPARE(six.titles(), QStringLiteral("abcdef"));
    QCOMPARE(six.table().openActions, 0);
    QVERIFY(!six.manager.endAction());
    QVERIFY(six.manager.categoryRemoved(5));
    QCOMPARE(six.cards(), QStringLiteral("a b c9 d9 e9 f"));
}

// Kills

/** Looks at the box that a killed process left, and fills it anew. @param isDone whether all has happened */
void DeleteFaultsTest::checkAllOrNone(bool isRemoval, int filed, bool *isDone)
{
    KyPDataManager manager(KillBox, nullptr, false);
    QVERIFY(manager.isOpened());
    int cards = 0;
    int inCategory = 0;
    for (unsigned long card = manager.firstCard(); card; card = manager.nextCard(card)) {
        ++cards;
        inCategory += manager.readCategories(card) == QList<int>{5} ? 1 : 0;
        QCOMPARE(storedBytes(manager, card, "ATTR"), QByteArray(1, '\0'));
    }
    int marked = 0;
    QVERIFY(!manager.count(&marked, "", 0, 0x40, 0x40, 0));
    *isDone = inCategory == 0;
    QCOMPARE(inCategory, *isDone ? 0 : filed);
    QCOMPARE(cards, *isDone && !isRemoval ? 3 : filed + 3);
    QVERIFY(manager.enableFilter(5)); // an index that was left behind shows the same
    QCOMPARE(manager.count(), inCategory);
    QVERIFY(fillKillBox(manager, filed));
}

void DeleteFaultsTest::killedBeforeEachCall_data()
{
    QTest::addColumn<QString>("what");
    QTest::newRow("deletion of a view") << QStringLiteral("visible");
    QTest::newRow("removal of a category") << QStringLiteral("removal");
}

void DeleteFaultsTest::killedBeforeEachCall()
{
    QFETCH(QString, what);
    constexpr int Filed = 3;
    createKillBox();
    {
        KyPDataManager manager(KillBox, nullptr, false);
        QVERIFY(fillKillBox(manager, Filed));
    }
    int kills = 0;
    bool isDone = false;
    for (bool isKilled = true; isKilled; ++kills) {
        ChildProcess child({what, QString::number(kills)});
        QCOMPARE(child.readLine(), QByteArray("go"));
        isKilled = child.finish() != 0;
        QCOMPARE(child.readLine(0), isKilled ? QByteArray() : QByteArray("done"));
        checkAllOrNone(what == "removal", Filed, &isDone);
        if (QTest::currentTestFailed())
            return;
    }
    QVERIFY(isDone);
    QVERIFY(kills > 15);
}

void DeleteFaultsTest::killedAtAnyMoment_data()
{
    killedBeforeEachCall_data();
}

void DeleteFaultsTest::killedAtAnyMoment()
{
    QFETCH(QString, what);
    constexpr int Rounds = 30;
    constexpr int Filed = 200;
    constexpr int LongestDelay = 3000; // microseconds
    createKillBox();
    {
        KyPDataManager manager(KillBox, nullptr, false);
        QVERIFY(fillKillBox(manager, Filed));
    }
    int done = 0;
    for (int round = 0; round < Rounds; ++round) {
        ChildProcess child({what, QStringLiteral("-1")});
        QCOMPARE(child.readLine(), QByteArray("go"));
        usleep(QRandomGenerator::global()->bounded(1u, unsigned(LongestDelay)));
        child.kill();
        const bool isAcknowledged = child.readLine(0) == "done";
        bool isDone = false;
        checkAllOrNone(what == "removal", Filed, &isDone);
        QVERIFY(isDone || !isAcknowledged);
        if (QTest::currentTestFailed())
            return;
        done += isDone ? 1 : 0;
    }
    qInfo("%d kills, %d after the end", Rounds, done);
}

KY_TEST_MAIN_WITH_CHILD(DeleteFaultsTest, childMain)
#include "deletefaultstest.moc"
