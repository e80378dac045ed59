#include "kycategories.h"

#include "categoryfixture.h"
#include "childprocess.h"
#include "devicepath.h"
#include "logcapture.h"
#include "qcopchannel.h"
#include "qcopenvelope.h"
#include "qpeapplication.h"
#include "tablefixture.h"
#include "writewatch.h"
#include <algorithm>
#include <QTranslator>

namespace {

constexpr auto Unfiled = "Unfiled";

int opens = 0; ///< of the table in mode 0

/** BOX: holds a box; for each line of input, tells the category lists of its cards. */
int holdBox(const char *path)
{
    KyPDataManager box(path, nullptr, false);
    ChildInput input([&](const QByteArray &) {
        QByteArrayList lists;
        for (unsigned long card = box.firstCard(); card; card = box.nextCard(card))
            lists.append(listOf(box, card).toHex());
        ChildProcess::say(lists.join(' '));
    });
    ChildProcess::say(box.isOpened() ? "held" : "failed");
    return QCoreApplication::exec();
}

/** Holds the table until the first line of input, without looking at messages. */
int holdTable()
{
    const uint32_t handle = _BoxOpenRwMode(TableBox, 0);
    ChildProcess::say(handle ? "held" : "failed");
    QThread::msleep(30);
    return _BoxCloseEx(handle, 1);
}

/** NAME COUNT: makes the table and adds NAME0, NAME1, ... and as many names that others add as well. */
int addMany(const char *name, const char *count)
{
    KyCategories::createFile(nullptr);
    KyCategories categories(nullptr);
    for (int i = 0; i < QByteArray(count).toInt(); ++i) {
        const QString common = "common " + QString::number(i);
        if (!categories.addCategory(name + QString::number(i)))
            return 1;
        if (!categories.addCategory(common) && !categories.exists(common))
            return 2;
    }
    return 0;
}

int childMain(int argc, char **argv)
{
    const QByteArray role = argc > 1 ? argv[1] : "";
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(role + QByteArray::number(QCoreApplication::applicationPid()));
    if (role == "box")
        return holdBox(argv[2]);
    return role == "table" ? holdTable() : addMany(argv[2], argv[3]);
}

/** The ids that `categoryRemoved(int)` names on "QPE/System". */
class Removals
{
public:
    Removals()
    {
        QObject::connect(&m_channel, &QCopChannel::received,
                         [this](const QByteArray &message, const QByteArray &data) {
                             if (message == "categoryRemoved(int)")
                                 note(data);
                         });
    }
    QList<int> ids;

private:
    void note(const QByteArray &data)
    {
        int id = 0;
        QCopArguments arguments(data);
        arguments >> id;
        ids.append(arguments.atEnd() && arguments.status() == QDataStream::Ok ? id : -1);
    }
    QCopChannel m_channel{"QPE/System"};
};

/** Lists the volumes of the device, as it does itself. */
bool listVolumes(const QByteArray &table)
{
    const QString path = devicePath("/etc/mtab");
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) &&
           file.write(table) == table.size();
}

/** A card with a list of categories in a box that is made for it. @return its id */
unsigned long addCardWith(const QByteArray &box, const QByteArray &list)
{
    KyPDataManager manager(box.constData(), nullptr, false);
    const unsigned long card = addCard(manager, "card");
    return card && storeBytes(manager, card, "CTGR", list) ? card : 0;
}

QByteArray listIn(const QByteArray &box, unsigned long card)
{
    const KyPDataManager manager(box.constData(), nullptr, true);
    return listOf(manager, card).toHex();
}

} // namespace

uint32_t _BoxOpenRwMode(const char *path, uint8_t mode)
{
    static const auto next = nextDefinition<decltype(_BoxOpenRwMode)>("_BoxOpenRwMode");
    if (mode == 0 && qstrcmp(path, TableBox) == 0)
        ++opens;
    return next(path, mode);
}

class KyCategoriesTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    // the table
    void tableFile();
    void creatingAgainKeepsTheTable();
    void fileNames();
    void card();
    void cardOfASystemCategory();
    void itemsAreWrittenInOrder();

    // adding
    void idsRiseFromOne();
    void existingNameIsRefused();
    void unfiledCannotBeAdded();
    void namesWithoutUseAreRefused_data();
    void namesWithoutUseAreRefused();
    void namesComeBack_data();
    void namesComeBack();
    void fullTable();
    void removedIdComesBackLast();
    void removedIdComesBackOnceAllOthersAreTaken();
    void numberOfCategoriesIsNeverTriedAgain();
    void lastIdComesBack();

    // asking
    void unfiledIsAlwaysThere();
    void unfiledNeedsNoTable();
    void unfiledIsTranslated();
    void unknownNamesAndIds();
    void namesAreMatchedInFull();
    void idsAreInTheOrderOfTheNames();
    void labelsAreInTextOrder();
    void systemCategories();
    void markedCardsDontCount();

    // renaming
    void renaming();
    void refusedRenamings();
    void renamingToANameThatExists();
    void renamingToUnfiledHidesTheCategory();

    // removing
    void removing();
    void refusedRemovals();
    void systemCategoryIsRemoved();
    void removalReachesEveryBox();
    void removalReachesAnOpenBoxOfThisProcess();
    void removalReachesABoxThatAnotherProcessHolds();
    void removalSendsAMessage();
    void removedIdWithoutANumber();

    // the box around each call
    void openAndCloseDoNothing();
    void tableIsHeldOnlyInACall();
    void tableMadeLaterIsFound();
    void tableMadeLaterIsFound_data();
    void missingTable();
    void tableThatAnotherProcessUsesIsWaitedFor();
    void tableThatIsHeldForGoodGivesUnknown();
    void manyApplicationsAtOnce();
    void callInsideACall();
    void fullTableIsOpenedOnceACall();
};

void KyCategoriesTest::init()
{
    QVERIFY(makeTable());
    WriteWatch::reset();
    opens = 0;
}

void KyCategoriesTest::cleanup()
{
    QVERIFY(isTableFree());
}

void KyCategoriesTest::tableFile()
{
    const KyPDataManager table(TableBox, nullptr, true);
    QStringList items;
    for (const KyPDataManagerItem &item : table.items().entries())
        items.append(
            QString("%1 %2 %3").arg(QString::fromLatin1(item.code, 4)).arg(item.type).arg(item.label));
    QCOMPARE(items.mid(0, 4), (QStringList{"TITL 17 name", "SCTG 11 category", "COLR 13 color of file",
                                           "TYPE 6 type of file"}));
    char order[PdtmInfoRoom];
    uint16_t size = sizeof order;
    QCOMPARE(_IndexInfoRead(TableIndex, InfoSortExpression, order, &size), PdtmStatus(PdtmOk));
    QCOMPARE(QByteArray(order, size), QByteArray("TITL\xFE\x80\0", 7));
    QCOMPARE(_DTMFileCheckAppliID(TableBox, 3, 0x464C4552), PdtmStatus(PdtmOk));
}

void KyCategoriesTest::creatingAgainKeepsTheTable()
{
    KyCategories categories(nullptr);
    QCOMPARE(categories.addCategory("Business"), 1);
    QVERIFY(KyCategories::createFile("F0:OTHER.BOX"));
    QCOMPARE(categories.id("Business"), 1);
    QVERIFY(!QFile::exists(QFileInfo(KyCategories::boxFileName()).path() + "/OTHER.BOX"));
}

void KyCategoriesTest::fileNames()
{
    const QString folder = QDir::homePath() + "/Applications/dtm/";
    QCOMPARE(KyCategories::boxFileName(), folder + "KYFLER.BOX");
    QCOMPARE(KyCategories::indexFileName(), folder + "KYFLER.IDX");
    QVERIFY(QFile::exists(KyCategories::boxFileName()));
    QVERIFY(QFile::exists(KyCategories::indexFileName()));
}

void KyCategoriesTest::card()
{
    KyCategories categories("F0:NOSUCH.BOX"); // the name has no effect
    const int id = categories.addCategory("仕事");
    const KyPDataManager table(TableBox, nullptr, true);
    const unsigned long card = table.firstCard();
    QCOMPARE(storedBytes(table, card, "TITL"), QByteArray("仕事"));
    QCOMPARE(storedBytes(table, card, "SCTG"), QByteArray(1, char(id)));
    QCOMPARE(storedBytes(table, card, "COLR"), QByteArray("\xFF\xFF\xFF\0", 4));
    QCOMPARE(storedBytes(table, card, "TYPE"), QByteArray(1, '\0'));
    QCOMPARE(table.count(), 1);
}

void KyCategoriesTest::cardOfASystemCategory()
{
    KyCategories categories(nullptr);
    QCOMPARE(categories.addSystemCategory("System"), 1);
    const KyPDataManager table(TableBox, nullptr, true);
    QCOMPARE(storedBytes(table, table.firstCard(), "TYPE"), QByteArray("\x80"));
}

void KyCategoriesTest::itemsAreWrittenInOrder()
{
    KyCategories categories(nullptr);
    const QByteArrayList order{"TITL", "SCTG", "COLR", "TYPE"};
    for (int failing = 0; failing < order.size(); ++failing) {
        WriteWatch::reset();
        WriteWatch::fail(order[failing]);
        QCOMPARE(categories.addCategory("new"), 0);
        QCOMPARE(WriteWatch::codes(), QByteArrayList{"ATTR"} + order.first(failing + 1));
    }
    WriteWatch::reset();
    QCOMPARE(categories.addCategory("new"), 1);
    QCOMPARE(WriteWatch::codes().mid(1, order.size()), order);
}

void KyCategoriesTest::idsRiseFromOne()
{
    KyCategories categories(nullptr);
    for (int id = 1; id <= 5; ++id)
        QCOMPARE(categories.addCategory("category " + QString::number(id)), id);
    QCOMPARE(categories.addSystemCategory("system"), 6);
}

void KyCategoriesTest::existingNameIsRefused()
{
    KyCategories categories(nullptr);
    QCOMPARE(categories.addCategory("Business"), 1);
    QCOMPARE(categories.addCategory("Business"), 0);
    QCOMPARE(categories.addSystemCategory("Business"), 0);
    QCOMPARE(tableContents(), (QMap<QString, int>{{"Business", 1}}));
}

void KyCategoriesTest::unfiledCannotBeAdded()
{
    KyCategories categories(nullptr);
    QCOMPARE(categories.addCategory(Unfiled), 0);
    QCOMPARE(categories.addSystemCategory(Unfiled), 0);
    QVERIFY(tableContents().isEmpty());
}

void KyCategoriesTest::namesWithoutUseAreRefused_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("null") << QString();
    QTest::newRow("empty") << "";
    QTest::newRow("0 character inside") << QString("Known%1behind").arg(QChar(0));
    QTest::newRow("0 character in front") << QString("%1Known").arg(QChar(0));
    QTest::newRow("control character") << QString("Known\x02");
    QTest::newRow("half a character") << QString("Known%1").arg(QChar(0xD83D));
}

void KyCategoriesTest::namesWithoutUseAreRefused()
{
    QFETCH(QString, name);
    KyCategories categories(nullptr);
    QCOMPARE(categories.addCategory("Known"), 1);
    QCOMPARE(categories.addCategory(name), 0);
    QCOMPARE(categories.addSystemCategory(name), 0);
    QVERIFY(!categories.renameCategory("Known", name));
    QVERIFY(!categories.renameCategory(name, "Other"));
    QVERIFY(!categories.removeCategory(name));
    QVERIFY(!categories.exists(name));
    QCOMPARE(categories.id(name), 0);
    QVERIFY(!categories.isSystemCategory(name));
    QCOMPARE(tableContents(), (QMap<QString, int>{{"Known", 1}}));
}

void KyCategoriesTest::namesComeBack_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("Japanese") << "仕事・家族";
    QTest::newRow("beyond the first plane") << QString::fromUtf8("😀𠮷");
    QTest::newRow("blanks") << " a  b ";
    QTest::newRow("markup") << "<a> & \"b\"";
    QTest::newRow("operators of expressions") << QString("%1%2").arg(QChar(0xFE)).arg(QChar(0x86));
    QTest::newRow("very long") << QString(20000, u'長');
}

void KyCategoriesTest::namesComeBack()
{
    QFETCH(QString, name);
    KyCategories categories(nullptr);
    QCOMPARE(categories.addCategory(name), 1);
    QCOMPARE(categories.label(1), name);
    QCOMPARE(categories.id(name), 1);
    QCOMPARE(categories.labels(false), QStringList{name});
    QVERIFY(!categories.exists(name.chopped(1)));
    QVERIFY(!categories.exists(name + name));
    QVERIFY(categories.removeCategory(name));
    QVERIFY(!categories.exists(name));
}

void KyCategoriesTest::fullTable()
{
    QVERIFY(fillTable(1, 244));
    KyCategories categories(nullptr);
    QCOMPARE(categories.addCategory("last"), 245);
    LogCapture log;
    QCOMPARE(categories.addCategory("one more"), 0);
    QCOMPARE(log.lines(), QStringList{"no more ids"});
    QCOMPARE(tableContents().size(), 245);
    QCOMPARE(categories.labels(true).size(), 246);
}

void KyCategoriesTest::removedIdComesBackLast()
{
    QVERIFY(fillTable(1, 10));
    KyCategories categories(nullptr);
    QVERIFY(categories.removeCategory("5"));
    QCOMPARE(categories.addCategory("new"), 11); // 10 is tried first, and taken
    for (int id = 12; id <= 245; ++id) {
        if (id == 15)
            QVERIFY(fillTable(15, 243)); // a short cut
        if (id < 15 || id > 243)
            QCOMPARE(categories.addCategory("new " + QString::number(id)), id);
    }
    QCOMPARE(categories.addCategory("at last"), 5);
}

void KyCategoriesTest::removedIdComesBackOnceAllOthersAreTaken()
{
    QVERIFY(fillTable(1, 245));
    KyCategories categories(nullptr);
    QVERIFY(categories.removeCategory("200"));
    QVERIFY(categories.removeCategory("3"));
    QCOMPARE(categories.addCategory("a"), 3);
    QCOMPARE(categories.addCategory("b"), 200);
}

void KyCategoriesTest::numberOfCategoriesIsNeverTriedAgain()
{
    QVERIFY(fillTable(1, 245));
    KyCategories categories(nullptr);
    QVERIFY(categories.removeCategory("244"));
    LogCapture log;
    QCOMPARE(categories.addCategory("new"), 0); // there are 244, so 245 and 1 to 243 are tried
    QVERIFY(log.lines().contains("no more ids"));
    QVERIFY(categories.removeCategory("7"));
    QCOMPARE(categories.addCategory("a"), 244);
    QCOMPARE(categories.addCategory("b"), 7);
}

void KyCategoriesTest::lastIdComesBack()
{
    QVERIFY(fillTable(1, 245));
    KyCategories categories(nullptr);
    QVERIFY(categories.removeCategory("245"));
    QCOMPARE(categories.addCategory("new"), 245);
}

void KyCategoriesTest::unfiledIsAlwaysThere()
{
    const KyCategories categories(nullptr);
    QVERIFY(categories.exists(Unfiled));
    QCOMPARE(categories.id(Unfiled), 254);
    QCOMPARE(categories.label(254), Unfiled);
    QCOMPARE(categories.ids({Unfiled, "unknown"}), QList<int>{254});
    QVERIFY(categories.isSystemCategory(Unfiled));
    QVERIFY(categories.isSystemCategory(254));
    QCOMPARE(categories.labels(false), QStringList());
    QCOMPARE(categories.labels(true), QStringList{Unfiled});
    QVERIFY(!categories.exists("unfiled"));
}

void KyCategoriesTest::unfiledNeedsNoTable()
{
    KyCategories categories(nullptr);
    opens = 0;
    QCOMPARE(categories.label(254), Unfiled);
    QVERIFY(categories.exists(Unfiled));
    QVERIFY(categories.isSystemCategory(Unfiled));
    QVERIFY(categories.isSystemCategory(254));
    QCOMPARE(categories.addCategory(Unfiled), 0);
    QVERIFY(!categories.removeCategory(Unfiled));
    QVERIFY(!categories.renameCategory(Unfiled, "Other"));
    QCOMPARE(opens, 0);
}

namespace {

class JapaneseNames : public QTranslator
{
public:
    QString translate(const char *context, const char *text, const char *, int) const override
    {
        const bool isOurs = qstrcmp(context, "KyCategories") == 0 && qstrcmp(text, Unfiled) == 0;
        return isOurs ? QString("未整理") : QString();
    }
    bool isEmpty() const override { return false; }
};

} // namespace

void KyCategoriesTest::unfiledIsTranslated()
{
    JapaneseNames names;
    QVERIFY(QCoreApplication::installTranslator(&names));
    KyCategories categories(nullptr);
    QCOMPARE(categories.label(254), "未整理");
    QCOMPARE(categories.id("未整理"), 254);
    QCOMPARE(categories.addCategory("未整理"), 0);
    QCOMPARE(categories.labels(true), QStringList{"未整理"});
    QCOMPARE(categories.addCategory(Unfiled), 1); // an ordinary name then
    QVERIFY(QCoreApplication::removeTranslator(&names));
}

void KyCategoriesTest::unknownNamesAndIds()
{
    QVERIFY(fillTable(1, 3));
    const KyCategories categories(nullptr);
    QCOMPARE(categories.id("unknown"), 0);
    QVERIFY(!categories.exists("unknown"));
    QVERIFY(!categories.isSystemCategory("unknown"));
    for (const int id : {-1, 0, 4, 245, 246, 253, 255, 257}) { // 257 & 0xFF is 1
        LogCapture log;
        QVERIFY(categories.label(id).isNull());
        QCOMPARE(log.lines(), QStringList{QString("KyCategories: not found id %1").arg(id)});
        QVERIFY(!categories.isSystemCategory(id));
    }
}

void KyCategoriesTest::namesAreMatchedInFull()
{
    KyCategories categories(nullptr);
    QCOMPARE(categories.addCategory("Business"), 1);
    for (const char *name :
         {"Busi", "usiness", "Business trips", "business", "BUSINESS", "Business ", "Ｂusiness"}) {
        QVERIFY2(!categories.exists(name), name);
        QCOMPARE(categories.id(name), 0);
    }
    QCOMPARE(categories.addCategory("business"), 2);
    QCOMPARE(categories.addCategory("Busi"), 3);
    QCOMPARE(categories.ids({"Busi", "Business", "business"}), (QList<int>{3, 1, 2}));
}

void KyCategoriesTest::idsAreInTheOrderOfTheNames()
{
    QVERIFY(fillTable(1, 4));
    const KyCategories categories(nullptr);
    const QList<int> expected{4, 254, 2, 4};
    QCOMPARE(categories.ids({"4", "unknown", Unfiled, "2", "", "4"}), expected);
    QCOMPARE(categories.ids({}), QList<int>());
}

void KyCategoriesTest::labelsAreInTextOrder()
{
    KyCategories categories(nullptr);
    for (const char *name : {"b", "いえ", "A", "あさ", "C"})
        QVERIFY(categories.addCategory(name));
    QCOMPARE(categories.labels(true), (QStringList{"A", "b", "C", "あさ", "いえ", Unfiled}));
    QCOMPARE(categories.labels(false), (QStringList{"A", "b", "C", "あさ", "いえ"}));
}

void KyCategoriesTest::systemCategories()
{
    KyCategories categories(nullptr);
    QCOMPARE(categories.addCategory("own"), 1);
    QCOMPARE(categories.addSystemCategory("system"), 2);
    QVERIFY(!categories.isSystemCategory("own"));
    QVERIFY(!categories.isSystemCategory(1));
    QVERIFY(categories.isSystemCategory("system"));
    QVERIFY(categories.isSystemCategory(2));
}

void KyCategoriesTest::markedCardsDontCount()
{
    QVERIFY(fillTable(1, 3));
    {
        KyPDataManager table(TableBox, nullptr, false);
        QVERIFY(table.writeAttribute(table.firstCard(), 0x40, true)); // "1", as by a bulk deletion cut short
    }
    KyCategories categories(nullptr);
    QVERIFY(!categories.exists("1"));
    QCOMPARE(categories.labels(false), (QStringList{"2", "3"}));
    QCOMPARE(categories.addCategory("new"), 4); // 3 is tried first
}

void KyCategoriesTest::renaming()
{
    QVERIFY(fillTable(1, 3));
    KyCategories categories(nullptr);
    QVERIFY(categories.renameCategory("2", "仕事"));
    QCOMPARE(tableContents(), (QMap<QString, int>{{"1", 1}, {"仕事", 2}, {"3", 3}}));
    QCOMPARE(categories.label(2), "仕事");
    QCOMPARE(categories.labels(false), (QStringList{"1", "3", "仕事"}));
    QVERIFY(!categories.exists("2"));
    QVERIFY(categories.renameCategory("仕事", "仕事")); // its own name
    const KyPDataManager table(TableBox, nullptr, true);
    QCOMPARE(storedBytes(table, table.lastCard(), "COLR"), QByteArray("\xFF\xFF\xFF\0", 4));
}

void KyCategoriesTest::refusedRenamings()
{
    KyCategories categories(nullptr);
    QCOMPARE(categories.addSystemCategory("system"), 1);
    QVERIFY(!categories.renameCategory("system", "other"));
    QVERIFY(!categories.renameCategory("unknown", "other"));
    QVERIFY(!categories.renameCategory(Unfiled, "other"));
    QCOMPARE(tableContents(), (QMap<QString, int>{{"system", -1}}));
}

void KyCategoriesTest::renamingToANameThatExists()
{
    QVERIFY(fillTable(1, 2));
    KyCategories categories(nullptr);
    QVERIFY(categories.renameCategory("2", "1"));
    QCOMPARE(categories.labels(false), (QStringList{"1", "1"}));
    QCOMPARE(categories.label(1), "1");
    QCOMPARE(categories.label(2), "1");
}

void KyCategoriesTest::renamingToUnfiledHidesTheCategory()
{
    QVERIFY(fillTable(1, 1));
    KyCategories categories(nullptr);
    QVERIFY(categories.renameCategory("1", Unfiled));
    QCOMPARE(categories.label(1), Unfiled);
    QCOMPARE(categories.id(Unfiled), 254);
    QVERIFY(!categories.removeCategory(Unfiled));
}

void KyCategoriesTest::removing()
{
    QVERIFY(fillTable(1, 3));
    KyCategories categories(nullptr);
    QVERIFY(categories.removeCategory("2"));
    QVERIFY(!categories.removeCategory("2"));
    QCOMPARE(tableContents(), (QMap<QString, int>{{"1", 1}, {"3", 3}}));
    QVERIFY(categories.label(2).isNull());
}

void KyCategoriesTest::refusedRemovals()
{
    QVERIFY(fillTable(1, 1));
    const Removals removals;
    KyCategories categories(nullptr);
    QVERIFY(!categories.removeCategory("unknown"));
    QVERIFY(!categories.removeCategory(Unfiled));
    QVERIFY(categories.removeCategory("1"));
    QTRY_COMPARE_WITH_TIMEOUT(removals.ids, QList<int>{1}, 10000); // and nothing before it
}

void KyCategoriesTest::systemCategoryIsRemoved()
{
    KyCategories categories(nullptr);
    QCOMPARE(categories.addSystemCategory("system"), 1);
    QVERIFY(categories.removeCategory("system"));
    QVERIFY(tableContents().isEmpty());
}

void KyCategoriesTest::removalReachesEveryBox()
{
    QVERIFY(fillTable(1, 3));
    const TestBox builtin;
    QVERIFY(listVolumes("/dev/mtdblock1 /home jffs2 rw 0 0\n"
                        "/dev/mmcda1 /usr/mnt.rom/card vfat rw 0 0\n"
                        "/dev/hda1 /usr/mnt.rom/cf vfat rw 0 0\n"));
    QList<QByteArray> boxes{builtin.path()};
    for (const char *card : {"/usr/mnt.rom/card", "/usr/mnt.rom/cf"}) {
        const QByteArray folder = QFile::encodeName(devicePath(card)) + "/Applications/dtm/";
        QVERIFY(QDir().mkpath(folder));
        KyPDataManagerItemInfo items;
        items.addTextItem("TITL", "title");
        items.addCategoryItem();
        const QByteArray box = folder + "mail.box";
        KyPDataManager::createFile(box, folder + "mail.idx", TestBox::ApplicationId, false, items,
                                   KyPDataManagerSortKey(), KyPDataManagerIndexInfo());
        boxes.append(box);
    }
    QList<unsigned long> cards;
    for (const QByteArray &box : boxes)
        cards << addCardWith(box, "\1\2\3") << addCardWith(box, "\2") << addCardWith(box, "\3");
    QVERIFY(!cards.contains(0));

    QVERIFY(KyCategories(nullptr).removeCategory("2"));
    for (const QByteArray &box : boxes) {
        QCOMPARE(listIn(box, cards.takeFirst()), "0103");
        QCOMPARE(listIn(box, cards.takeFirst()), "");
        QCOMPARE(listIn(box, cards.takeFirst()), "03");
    }
    QVERIFY(listVolumes(""));
}

void KyCategoriesTest::removalReachesAnOpenBoxOfThisProcess()
{
    QVERIFY(fillTable(1, 3));
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const unsigned long card = addCard(manager, "card");
    QVERIFY(storeBytes(manager, card, "CTGR", "\1\2"));
    QVERIFY(KyCategories(nullptr).removeCategory("2"));
    QTRY_COMPARE_WITH_TIMEOUT(manager.readCategories(card), QList<int>{1}, 10000);
    QVERIFY(manager.isOpened());
}

void KyCategoriesTest::removalReachesABoxThatAnotherProcessHolds()
{
    QVERIFY(fillTable(1, 3));
    const TestBox box;
    QVERIFY(addCardWith(box.path(), "\1\2"));
    ChildProcess holder({"box", box.path()});
    QCOMPARE(holder.readLine(), "held");
    QVERIFY(KyCategories(nullptr).removeCategory("2"));
    const auto hasLost = [&] {
        holder.write("lists");
        return holder.readLine() == "01";
    };
    QVERIFY(QTest::qWaitFor(hasLost, 10000));
    QCOMPARE(holder.finish(), 0);
}

void KyCategoriesTest::removalSendsAMessage()
{
    QVERIFY(fillTable(1, 245));
    const Removals removals;
    KyCategories categories(nullptr);
    QVERIFY(categories.removeCategory("245"));
    QVERIFY(categories.removeCategory("1"));
    QTRY_COMPARE_WITH_TIMEOUT(removals.ids, (QList<int>{245, 1}), 10000);
}

void KyCategoriesTest::removedIdWithoutANumber()
{
    QVERIFY(fillTable(1, 1));
    {
        KyPDataManager table(TableBox, nullptr, false);
        QVERIFY(storeBytes(table, table.firstCard(), "SCTG", ""));
    }
    const TestBox box;
    const unsigned long card = addCardWith(box.path(), "\1\2");
    const Removals removals;
    KyCategories categories(nullptr);
    QVERIFY(categories.removeCategory("1"));
    QTRY_COMPARE_WITH_TIMEOUT(removals.ids, QList<int>{0}, 10000);
    QCOMPARE(listIn(box.path(), card), "0102");
    const KyPDataManager manager(box.path().constData(), nullptr, true);
    QCOMPARE(manager.count(), 1); // the master index is still there
}

void KyCategoriesTest::openAndCloseDoNothing()
{
    KyCategories categories(nullptr);
    opens = 0;
    QVERIFY(categories.open());
    QVERIFY(isTableFree());
    QVERIFY(categories.close());
    QVERIFY(categories.close());
    QCOMPARE(opens, 1); // that of isTableFree()
}

void KyCategoriesTest::tableIsHeldOnlyInACall()
{
    QVERIFY(fillTable(1, 2));
    KyCategories categories(nullptr);
    QVERIFY(isTableFree());
    const auto isFreeAfter = [](auto) { return isTableFree(); };
    QVERIFY(isFreeAfter(categories.addCategory("a")));
    QVERIFY(isFreeAfter(categories.addCategory("a")));
    QVERIFY(isFreeAfter(categories.addSystemCategory("s")));
    QVERIFY(isFreeAfter(categories.id("a")));
    QVERIFY(isFreeAfter(categories.ids({"a", "unknown", "1"})));
    QVERIFY(isFreeAfter(categories.label(1)));
    QVERIFY(isFreeAfter(categories.label(200)));
    QVERIFY(isFreeAfter(categories.labels(true)));
    QVERIFY(isFreeAfter(categories.exists("a")));
    QVERIFY(isFreeAfter(categories.exists("unknown")));
    QVERIFY(isFreeAfter(categories.isSystemCategory("s")));
    QVERIFY(isFreeAfter(categories.isSystemCategory(1)));
    QVERIFY(isFreeAfter(categories.renameCategory("a", "b")));
    QVERIFY(isFreeAfter(categories.renameCategory("s", "t")));
    QVERIFY(isFreeAfter(categories.renameCategory("unknown", "b")));
    QVERIFY(isFreeAfter(categories.removeCategory("b")));
    QVERIFY(isFreeAfter(categories.removeCategory("unknown")));
}

void KyCategoriesTest::tableMadeLaterIsFound_data()
{
    QTest::addColumn<bool>("isBoxThere");
    QTest::newRow("no table at all") << false;
    QTest::newRow("no index") << true;
}

void KyCategoriesTest::tableMadeLaterIsFound()
{
    QFETCH(bool, isBoxThere);
    QVERIFY(fillTable(1, 1));
    if (isBoxThere)
        QCOMPARE(_IndexDelete(TableIndex), PdtmStatus(PdtmOk));
    else
        QVERIFY(removeTable());
    KyCategories categories(nullptr);
    QVERIFY(!categories.exists("1"));
    QCOMPARE(categories.addCategory("new"), 0);
    QVERIFY(!isBoxThere || isTableFree());
    QVERIFY(KyCategories::createFile(nullptr));
    const int expected = isBoxThere ? 2 : 1;
    QCOMPARE(categories.addCategory("new"), expected);
    QCOMPARE(categories.id("new"), expected);
    QCOMPARE(categories.exists("1"), isBoxThere);
}

void KyCategoriesTest::missingTable()
{
    QVERIFY(removeTable());
    KyCategories categories(nullptr);
    QCOMPARE(categories.addCategory("a"), 0);
    QVERIFY(!categories.removeCategory("a"));
    QVERIFY(!categories.renameCategory("a", "b"));
    QCOMPARE(categories.id("a"), 0);
    QCOMPARE(categories.ids({"a", Unfiled}), QList<int>{UnfiledCategoryId});
    QVERIFY(categories.label(1).isNull());
    QCOMPARE(categories.label(UnfiledCategoryId), Unfiled);
    QCOMPARE(categories.labels(true), QStringList{Unfiled});
    QVERIFY(!categories.exists("a"));
    QVERIFY(!categories.isSystemCategory("a"));
    QVERIFY(!categories.isSystemCategory(1));
    QVERIFY(categories.isReachable()); // nothing is kept from it
    QVERIFY(!QFile::exists(KyCategories::boxFileName()));
    QVERIFY(makeTable());
}

void KyCategoriesTest::tableThatAnotherProcessUsesIsWaitedFor()
{
    QVERIFY(fillTable(1, 2));
    KyCategories known(nullptr);
    ChildProcess holder({"table"});
    QCOMPARE(holder.readLine(), "held");
    QCOMPARE(known.id("2"), 2);
    QCOMPARE(holder.finish(), 0);
    ChildProcess other({"table"});
    QCOMPARE(other.readLine(), "held");
    QCOMPARE(KyCategories(nullptr).id("2"), 2); // its manager found the table held
    QCOMPARE(other.finish(), 0);
}

void KyCategoriesTest::tableThatIsHeldForGoodGivesUnknown()
{
    QVERIFY(fillTable(1, 2));
    KyCategories categories(nullptr);
    const uint32_t handle = _BoxOpenRwMode(TableBox, 0);
    QVERIFY(handle);
    QVERIFY(categories.isReachable());
    QCOMPARE(categories.id("2"), 0);
    QVERIFY(!categories.isReachable());
    QCOMPARE(categories.addCategory("new"), 0);
    opens = 0;
    for (int id = 1; id <= 30; ++id)
        QVERIFY(categories.label(id).isNull());
    QCOMPARE(opens, 30 * 9); // the attempts of one open() each: the first wait was enough
    QCOMPARE(_BoxCloseEx(handle, 1), PdtmStatus(PdtmOk));
    QCOMPARE(categories.id("2"), 2);
    QVERIFY(categories.isReachable());
    ChildProcess holder({"table"});
    QCOMPARE(holder.readLine(), "held");
    QCOMPARE(categories.id("2"), 2); // and it waits again
    QCOMPARE(holder.finish(), 0);
}

void KyCategoriesTest::manyApplicationsAtOnce()
{
    constexpr int Count = 15;
    QVERIFY(removeTable()); // each of them makes it
    ChildProcess first({"add", "first ", QString::number(Count)});
    ChildProcess second({"add", "second ", QString::number(Count)});
    ChildProcess third({"add", "third ", QString::number(Count)});
    QCOMPARE(first.finish(60000), 0);
    QCOMPARE(second.finish(60000), 0);
    QCOMPARE(third.finish(60000), 0);
    const QMap<QString, int> contents = tableContents();
    QCOMPARE(KyCategories(nullptr).labels(false).size(), 4 * Count); // no name twice
    QCOMPARE(contents.size(), 4 * Count);
    QList<int> ids = contents.values();
    std::ranges::sort(ids);
    for (int i = 0; i < ids.size(); ++i)
        QCOMPARE(ids[i], i + 1);
}

void KyCategoriesTest::callInsideACall()
{
    QVERIFY(fillTable(1, 2));
    QVERIFY(removeTable());
    KyCategories categories(nullptr); // with no table each call looks for one, and handles events meanwhile
    int inner = -1;
    QTimer::singleShot(0, [&] {
        QVERIFY(KyCategories::createFile(nullptr));
        inner = categories.addCategory("inner");
    });
    categories.addCategory("outer");
    QTRY_COMPARE_WITH_TIMEOUT(inner, 1, 10000);
    QVERIFY(isTableFree());
    QCOMPARE(categories.id("inner"), 1);
}

void KyCategoriesTest::fullTableIsOpenedOnceACall()
{
    QVERIFY(fillTable(1, 245));
    KyCategories categories(nullptr);
    opens = 0;
    QCOMPARE(categories.addCategory("new"), 0); // looks for every id
    QCOMPARE(opens, 1);
    const QStringList names = categories.labels(false);
    QCOMPARE(opens, 2);
    QCOMPARE(categories.ids(names).size(), 245);
    QCOMPARE(opens, 3);
}

KY_TEST_MAIN_WITH_CHILD(KyCategoriesTest, childMain)
#include "kycategoriestest.moc"
