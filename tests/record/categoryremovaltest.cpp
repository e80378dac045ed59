#include "categoryfixture.h"
#include "childprocess.h"
#include "logcapture.h"
#include "qcopenvelope.h"
#include "synchronisations.h"
#include <QDir>
#include <QTimer>

namespace {

/** The six cards of View. */
struct Six : ListedView
{
    Six() { addSix(); }

    bool isMasterShown() { return table().currentIndex == table().masterIndex; }
};

constexpr auto AllOfThem = "a5 b5 c59 d59 e9 f";
constexpr auto WithoutFive = "a b c9 d9 e9 f";

/** Makes a box with one card of category 5 in a folder; its path. */
QByteArray makeBox(const QString &folder, const char *name)
{
    const QByteArray stem = QFile::encodeName(folder) + '/' + name;
    const QByteArray path = stem.contains('.') ? stem : stem + ".BOX";
    const QByteArray index = path.left(path.lastIndexOf('.')) + ".IDX";
    KyPDataManagerItemInfo items;
    items.addTextItem("TITL", QStringLiteral("title"));
    items.addCategoryItem();
    KyPDataManagerSortKey order;
    order.addSortKey("TITL", true, true);
    KyPDataManager::createFile(path.constData(), index.constData(), TestBox::ApplicationId, false, items,
                               order, KyPDataManagerIndexInfo());
    KyPDataManager manager(path.constData(), nullptr, false);
    unsigned long card = 0;
    const bool isMade = manager.editNewCard() && manager.writeItem("CTGR", "\5", 1UL) &&
                        manager.finishEditCard(&card) && card == 1;
    return isMade ? path : QByteArray();
}

/** The list of the card that makeBox() made. */
QByteArray listIn(const QByteArray &path)
{
    const KyPDataManager reader(path.constData(), nullptr, true);
    return listOf(reader, 1);
}

QByteArray categoryMessage(int category)
{
    QByteArray data;
    QDataStream stream(&data, QIODevice::WriteOnly);
    stream.setVersion(QCopEnvelope::StreamVersion);
    stream << qint32(category);
    return data;
}

/** What another application says of a box that it wants or gives back. */
QByteArray lendMessage(const TestBox &box)
{
    QByteArray data;
    QDataStream stream(&data, QIODevice::WriteOnly);
    stream.setVersion(QCopEnvelope::StreamVersion);
    stream << QString::fromLatin1(box.path()) << QStringLiteral("other");
    return data;
}

/** A folder of the test's own for boxes. */
QString newFolder()
{
    static int folders = 0;
    const QString folder = QDir::homePath() + QStringLiteral("/volume%1").arg(++folders);
    return QDir().mkpath(folder) ? folder : QString();
}

/** Holds the box that its first argument names until its input ends. */
int childMain(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const KyPDataManager manager(argc > 1 ? argv[1] : "", nullptr, false);
    ChildProcess::say(manager.isOpened() ? "held" : "refused");
    const ChildInput input([](const QByteArray &) {});
    return QCoreApplication::exec();
}

} // namespace

class CategoryRemovalTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void everyCardLosesIt_data();
    void everyCardLosesIt();
    void masterIsShownInItsOwnOrder();
    void directionStays();
    void viewsOfTheCategoryAndOfTheUnfiledGo();
    void logTellsWhatIsDone();
    void unusedCategoryChangesNoCard();
    void unfiledCategoryChangesNoCard();
    void idThatIsNoneIsRefused_data();
    void idThatIsNoneIsRefused();
    void cardBeingEditedLosesItToo();
    void viewToResumeIsForgotten();
    void masterThatIsACategory();
    void masterOfTheRemovedCategory();
    void isOneSynchronisation();
    void isPartOfTheCallersAction();
    void closedBoxIsLeftAlone();
    void readOnlyBoxIsLeftAlone();
    void managerWithNoIndexTable();
    void messageRemovesTheCategory();
    void messageThatIsCutShortIsIgnored();
    void messageReachesEveryManager();
    void messageWhileTheBoxIsLent();
    void volumeOfSeveralBoxes();
    void boxHeldByThisProcess();
    void boxHeldByAnotherProcess();
    void boxThatIsGivenBackDuringTheAttempts();
    void removalInsideTheAttempts();
    void everyVolumeIsVisited();
};

void CategoryRemovalTest::init()
{
    deleteTemporaryFiles();
}

void CategoryRemovalTest::everyCardLosesIt_data()
{
    QTest::addColumn<int>("view");
    QTest::addColumn<bool>("ascending");
    for (const bool ascending : {true, false}) {
        const char *direction = ascending ? "ascending" : "descending";
        QTest::addRow("master, %s", direction) << 0 << ascending;
        QTest::addRow("the category, %s", direction) << 5 << ascending;
        QTest::addRow("another category, %s", direction) << 9 << ascending;
        QTest::addRow("an empty category, %s", direction) << 30 << ascending;
        QTest::addRow("the unfiled, %s", direction) << UnfiledCategoryId << ascending;
        QTest::addRow("a search, %s", direction) << -1 << ascending;
    }
}

void CategoryRemovalTest::everyCardLosesIt()
{
    QFETCH(int, view);
    QFETCH(bool, ascending);
    Six six;
    six.manager.sort(ascending);
    if (view > 0)
        QVERIFY(six.manager.enableFilter(view));
    else if (view < 0)
        QVERIFY(six.filter("e", KyPDataManager::FilterMaster, false));
    QVERIFY(six.manager.categoryRemoved(5));
    QCOMPARE(six.cards(), WithoutFive);
    QVERIFY(six.isMasterShown());
    QCOMPARE(six.titles(), ascending ? QStringLiteral("abcdef") : QStringLiteral("fedcba"));
}

void CategoryRemovalTest::masterIsShownInItsOwnOrder()
{
    Six six;
    QVERIFY(six.manager.sort("NUMB", true));
    QCOMPARE(six.titles(), QStringLiteral("fedcba"));
    QVERIFY(six.manager.categoryRemoved(5));
    QCOMPARE(six.titles(), QStringLiteral("abcdef"));
}

void CategoryRemovalTest::directionStays()
{
    Six six;
    QVERIFY(six.manager.sort("NUMB", false));
    QVERIFY(six.manager.enableFilter(9));
    QVERIFY(!six.manager.ascendent());
    QVERIFY(six.manager.categoryRemoved(5));
    QVERIFY(!six.manager.ascendent());
    QCOMPARE(six.titles(), QStringLiteral("fedcba"));
}

void CategoryRemovalTest::viewsOfTheCategoryAndOfTheUnfiledGo()
{
    Six six;
    for (const int category : {5, 9, UnfiledCategoryId})
        QVERIFY(six.manager.enableFilter(category));
    QCOMPARE(temporaryFiles().size(), 3);
    QVERIFY(six.manager.categoryRemoved(5));
    QVERIFY(!rowOf(six.manager, 5));
    QVERIFY(!rowOf(six.manager, UnfiledCategoryId));
    QCOMPARE(temporaryFiles().size(), 1);
    QCOMPARE(cardsOfCategory(six.manager, 9).size(), 3);
    QVERIFY(six.manager.enableFilter(5));
    QCOMPARE(six.titles(), QString());
    QVERIFY(six.manager.enableFilter(UnfiledCategoryId));
    QCOMPARE(six.titles(), QStringLiteral("abf"));
}

void CategoryRemovalTest::logTellsWhatIsDone()
{
    Six six;
    QVERIFY(six.manager.enableFilter(9));
    QVERIFY(six.manager.enableFilter(UnfiledCategoryId));
    const QString c = QString::number(six.cardOf("c"));
    const QString d = QString::number(six.cardOf("d"));
    const QString e = QString::number(six.cardOf("e"));
    LogCapture log;
    QVERIFY(six.manager.categoryRemoved(9));
    const QString boxName = QString::fromLatin1(six.box.path().mid(3));
    QCOMPARE(log.lines(),
             QStringList({"categoryRemoved " + boxName + " 9", "categoryRemoved: found card " + c,
                          "categoryRemoved: found card " + d, "categoryRemoved: found card " + e,
                          "deleted category index", "deleted category(NO) index"}));
    log.clear();
    QVERIFY(six.manager.categoryRemoved(9));
    QCOMPARE(log.lines(), QStringList{"categoryRemoved " + boxName + " 9"});
}

void CategoryRemovalTest::unusedCategoryChangesNoCard()
{
    Six six;
    QVERIFY(six.manager.enableFilter(9));
    QVERIFY(six.manager.categoryRemoved(200));
    QCOMPARE(six.cards(), AllOfThem);
    QVERIFY(six.isMasterShown());
}

void CategoryRemovalTest::unfiledCategoryChangesNoCard()
{
    Six six;
    QVERIFY(six.manager.enableFilter(UnfiledCategoryId));
    QVERIFY(six.manager.categoryRemoved(UnfiledCategoryId));
    QCOMPARE(six.cards(), AllOfThem);
    QVERIFY(!rowOf(six.manager, UnfiledCategoryId));
    QVERIFY(six.isMasterShown());
}

void CategoryRemovalTest::idThatIsNoneIsRefused_data()
{
    QTest::addColumn<int>("category");
    for (const int category : {0, -1, -251, 246, 253, 255, 256, 0x105})
        QTest::addRow("%d", category) << category;
}

void CategoryRemovalTest::idThatIsNoneIsRefused()
{
    QFETCH(int, category);
    Six six;
    QVERIFY(six.manager.enableFilter(5));
    QVERIFY(six.manager.enableFilter(UnfiledCategoryId));
    QVERIFY(!six.manager.categoryRemoved(category));
    QCOMPARE(six.cards(), AllOfThem);
    QVERIFY(six.table().currentIndex == rowOf(six.manager, UnfiledCategoryId));
    QVERIFY(six.table().masterIndex->inUse);
    QCOMPARE(six.titles(), QStringLiteral("f"));
}

void CategoryRemovalTest::cardBeingEditedLosesItToo()
{
    Six six;
    unsigned long card = six.cardOf("c");
    QVERIFY(six.manager.startEditCard(card));
    QVERIFY(six.manager.writeItem("TITL", "changed"));
    QVERIFY(six.manager.categoryRemoved(5));
    QVERIFY(six.manager.finishEditCard(&card));
    QCOMPARE(six.manager.readCategories(card), QList<int>{9});
    QCOMPARE(six.manager.readItem("TITL", card), QStringLiteral("changed"));
}

void CategoryRemovalTest::viewToResumeIsForgotten()
{
    Six six;
    QVERIFY(six.manager.enableFilter(5));
    QVERIFY(six.filter("c", KyPDataManager::FilterCurrent, true));
    QVERIFY(six.table().resumeIndex == rowOf(six.manager, 5));
    QVERIFY(six.manager.categoryRemoved(5));
    QVERIFY(!six.table().resumeIndex);
    QVERIFY(six.isMasterShown());
}

void CategoryRemovalTest::masterThatIsACategory()
{
    Six six;
    QVERIFY(six.manager.enableFilter(9));
    six.table().masterIndex = rowOf(six.manager, 9);
    QVERIFY(six.manager.categoryRemoved(5));
    QCOMPARE(six.cards(), WithoutFive); // a and b too, which this master doesn't show
    QVERIFY(six.table().currentIndex == rowOf(six.manager, 9));
    QVERIFY(six.isMasterShown());
}

void CategoryRemovalTest::masterOfTheRemovedCategory()
{
    Six six;
    QVERIFY(six.manager.enableFilter(5));
    six.table().masterIndex = rowOf(six.manager, 5);
    QVERIFY(six.manager.categoryRemoved(5));
    QVERIFY(six.isMasterShown());
    QCOMPARE(pathOf(six.manager, six.current()), six.box.master());
    QCOMPARE(six.titles(), QStringLiteral("abcdef"));
}

void CategoryRemovalTest::isOneSynchronisation()
{
    Six six;
    synchronisations() = 0;
    QVERIFY(six.manager.categoryRemoved(5));
    QCOMPARE(synchronisations(), 1);
    QVERIFY(six.manager.categoryRemoved(5)); // with nothing to do
    QCOMPARE(synchronisations(), 1);
}

void CategoryRemovalTest::isPartOfTheCallersAction()
{
    Six six;
    synchronisations() = 0;
    QVERIFY(six.manager.beginAction());
    QVERIFY(six.manager.categoryRemoved(5));
    QVERIFY(six.manager.categoryRemoved(9));
    QCOMPARE(synchronisations(), 0);
    QVERIFY(six.manager.endAction());
    QCOMPARE(synchronisations(), 1);
    QCOMPARE(six.cards(), QStringLiteral("a b c d e f"));
}

void CategoryRemovalTest::closedBoxIsLeftAlone()
{
    Six six;
    QVERIFY(six.manager.enableFilter(9));
    QVERIFY(six.manager.close());
    QVERIFY(!six.manager.categoryRemoved(5));
    QCOMPARE(six.table().currentIndex, rowOf(six.manager, 9));
    QVERIFY(six.manager.open(false));
    QCOMPARE(six.titles(), QStringLiteral("cde"));
    QCOMPARE(six.cards(), AllOfThem);
    QVERIFY(six.manager.categoryRemoved(5));
    QCOMPARE(six.cards(), WithoutFive);
}

void CategoryRemovalTest::readOnlyBoxIsLeftAlone()
{
    Six six;
    KyPDataManager reader(six.box.path().constData(), nullptr, true);
    QVERIFY(!reader.categoryRemoved(5));
    QVERIFY(reader.isOpened());
    QCOMPARE(six.cards(), AllOfThem);
}

void CategoryRemovalTest::managerWithNoIndexTable()
{
    KyPDataManager nothing("F0:NOTHING.BOX", nullptr, false);
    QVERIFY(!nothing.categoryRemoved(5));
    const TestBox reserved("F0:pplxREMO.IDX", KyPDataManagerSortKey());
    KyPDataManager manager(reserved.path().constData(), nullptr, false);
    QVERIFY(manager.isOpened());
    QVERIFY(!manager.categoryRemoved(5));
}

// The message

void CategoryRemovalTest::messageRemovesTheCategory()
{
    Six six;
    six.manager.systemMessage("categoryRemoved(int)", categoryMessage(5));
    QCOMPARE(six.cards(), WithoutFive);
}

void CategoryRemovalTest::messageThatIsCutShortIsIgnored()
{
    Six six;
    QVERIFY(six.manager.enableFilter(5));
    LogCapture log;
    six.manager.systemMessage("categoryRemoved(int)", QByteArray());
    six.manager.systemMessage("categoryRemoved(int)", categoryMessage(5).left(3));
    six.manager.systemMessage("categoryRemoved(QString)", categoryMessage(5));
    QVERIFY(log.lines().isEmpty());
    QCOMPARE(six.cards(), AllOfThem);
    QVERIFY(!six.isMasterShown());
}

void CategoryRemovalTest::messageReachesEveryManager()
{
    Six first;
    Six second;
    {
        QCopEnvelope envelope("QPE/System", "categoryRemoved(int)"); // this application's own counts, too
        envelope << qint32(5);
    }
    QTRY_COMPARE_WITH_TIMEOUT(first.cards(), QString(WithoutFive), 10000);
    QTRY_COMPARE_WITH_TIMEOUT(second.cards(), QString(WithoutFive), 10000);
}

void CategoryRemovalTest::messageWhileTheBoxIsLent()
{
    Six six;
    six.manager.systemMessage("closeFile(QString,QString)", lendMessage(six.box));
    QVERIFY(!six.manager.isOpened());
    KyPDataManager borrower(six.box.path().constData(), nullptr, false);
    QVERIFY(borrower.isOpened());
    for (KyPDataManager *manager : {&six.manager, &borrower})
        manager->systemMessage("categoryRemoved(int)", categoryMessage(5));
    QVERIFY(borrower.close());
    six.manager.systemMessage("openFile(QString,QString)", lendMessage(six.box));
    QVERIFY(six.manager.isOpened());
    QCOMPARE(six.cards(), WithoutFive);
}

// All boxes

void CategoryRemovalTest::volumeOfSeveralBoxes()
{
    const QString folder = newFolder();
    const QByteArray upper = makeBox(folder, "A.BOX");
    const QByteArray lower = makeBox(folder, "b.box");
    const QByteArray mixed = makeBox(folder, "c d.Box");
    QVERIFY(!upper.isEmpty() && !lower.isEmpty() && !mixed.isEmpty());
    QFile other(folder + "/E.BOX");
    QVERIFY(other.open(QIODevice::WriteOnly) && other.write("no box") == 6);
    other.close();
    QVERIFY(QFile::copy(folder + "/A.BOX", folder + "/A.BOX.old"));
    QVERIFY(QDir(folder).mkdir("F.BOX"));

    LogCapture log;
    updateForCategoryRemovedVolume(folder, 5);
    const QStringList lines = log.lines();
    QCOMPARE(lines.first(), "updateForCategoryRemovedVolume: " + folder);
    QStringList found = lines.filter("found box file ");
    found.sort();
    QCOMPARE(found, QStringList({"found box file " + upper, "found box file " + folder + "/E.BOX",
                                 "found box file " + lower, "found box file " + mixed}));
    QCOMPARE(lines.count("already opened"), 1); // behind the one that is no box
    for (const QByteArray &path : {upper, lower, mixed})
        QCOMPARE(listIn(path), QByteArray());
    QFile::remove(folder + "/A.BOX");
    QVERIFY(QFile::rename(folder + "/A.BOX.old", folder + "/A.BOX"));
    QCOMPARE(listIn(upper), QByteArray("\5"));
    QVERIFY(other.open(QIODevice::ReadOnly));
    QCOMPARE(other.readAll(), QByteArray("no box"));
}

void CategoryRemovalTest::boxHeldByThisProcess()
{
    const QString folder = newFolder();
    const QByteArray held = makeBox(folder, "A.BOX");
    const QByteArray free = makeBox(folder, "B.BOX");
    KyPDataManager holder(held.constData(), nullptr, false);
    QVERIFY(holder.isOpened());
    LogCapture log;
    updateForCategoryRemovedVolume(folder, 5);
    QCOMPARE(log.lines().count("already opened"), 1);
    QVERIFY(holder.isOpened());
    QCOMPARE(holder.readCategories(1), QList<int>{5}); // until its category is told to it
    QCOMPARE(listIn(free), QByteArray());
}

void CategoryRemovalTest::boxHeldByAnotherProcess()
{
    const QString folder = newFolder();
    const QByteArray held = makeBox(folder, "A.BOX");
    const QByteArray free = makeBox(folder, "B.BOX");
    ChildProcess child({QString::fromLatin1(held)});
    QCOMPARE(child.readLine(), QByteArray("held"));
    LogCapture log;
    updateForCategoryRemovedVolume(folder, 5);
    QCOMPARE(log.lines().count("already opened"), 1);
    QCOMPARE(listIn(held), QByteArray("\5"));
    QCOMPARE(listIn(free), QByteArray());
    {
        QCopEnvelope envelope("QPE/System", "categoryRemoved(int)");
        envelope << qint32(5);
    }
    QTRY_COMPARE_WITH_TIMEOUT(listIn(held), QByteArray(), 10000); // its holder has obeyed
    QCOMPARE(child.finish(), 0);
}

void CategoryRemovalTest::boxThatIsGivenBackDuringTheAttempts()
{
    const QString folder = newFolder();
    const QByteArray path = makeBox(folder, "A.BOX");
    auto holder = std::make_unique<KyPDataManager>(path.constData(), nullptr, false);
    QVERIFY(holder->isOpened());
    QTimer::singleShot(0, &*holder, [&holder] { holder.reset(); });
    LogCapture log;
    updateForCategoryRemovedVolume(folder, 5);
    QVERIFY(!holder);
    QCOMPARE(log.lines().count("already opened"), 0);
    QCOMPARE(listIn(path), QByteArray());
}

void CategoryRemovalTest::removalInsideTheAttempts()
{
    const QString folder = newFolder();
    const QByteArray held = makeBox(folder, "A.BOX");
    const QByteArray free = makeBox(folder, "B.BOX");
    const KyPDataManager holder(held.constData(), nullptr, false);
    bool isRun = false;
    QTimer::singleShot(0, this, [&] {
        isRun = true;
        updateForCategoryRemovedVolume(folder, 5);
        QVERIFY(QFile::remove(QFile::decodeName(free))); // it is in the list of the outer call
    });
    updateForCategoryRemovedVolume(folder, 5);
    QVERIFY(isRun);
    QCOMPARE(listOf(holder, 1), QByteArray("\5"));
    QVERIFY(!QFile::exists(QFile::decodeName(free))); // and isn't made anew
}

void CategoryRemovalTest::everyVolumeIsVisited()
{
    const QString root = qEnvironmentVariable("KY_DEVICE_ROOT");
    const QString card = root + "/usr/mnt.rom/card/Applications/dtm";
    const QString cf = root + "/usr/mnt.rom/cf/Applications/dtm";
    const QString fixed = root + "/mnt/b/Applications/dtm";
    for (const QString &folder : {card, cf, fixed, root + "/etc"})
        QVERIFY(QDir().mkpath(folder));
    QFile table(root + "/etc/mtab");
    QVERIFY(table.open(QIODevice::WriteOnly));
    table.write("/dev/hda1 /usr/mnt.rom/cf vfat rw 0 0\n"
                "/dev/mmcda1 /usr/mnt.rom/card vfat rw 0 0\n"
                "/dev/sda1 /mnt/b ext2 rw 0 0\n");
    table.close();
    const QByteArray onCard = makeBox(card, "A.BOX");
    const QByteArray onCf = makeBox(cf, "B.BOX");
    const QByteArray onFixed = makeBox(fixed, "C.BOX");
    const QByteArray inside = makeBox(boxFolder().chopped(1), "ZZINSIDE.BOX");
    LogCapture log;
    KyPDataManager::updateForCategoryRemoved(5);
    QCOMPARE(
        log.lines().filter("updateForCategoryRemovedVolume"),
        QStringList({"updateForCategoryRemovedVolume: " + boxFolder().chopped(1),
                     "updateForCategoryRemovedVolume: " + cf, "updateForCategoryRemovedVolume: " + card}));
    for (const QByteArray &path : {onCard, onCf, inside})
        QCOMPARE(listIn(path), QByteArray());
    QCOMPARE(listIn(onFixed), QByteArray("\5"));

    QVERIFY(table.open(QIODevice::WriteOnly)); // the card is taken out
    table.write("/dev/hda1 /usr/mnt.rom/cf vfat rw 0 0\n");
    table.close();
    log.clear();
    KyPDataManager::updateForCategoryRemoved(5);
    QCOMPARE(log.lines().filter("updateForCategoryRemovedVolume").size(), 2);
}

KY_TEST_MAIN_WITH_CHILD(CategoryRemovalTest, childMain)
#include "categoryremovaltest.moc"
