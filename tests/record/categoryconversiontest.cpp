#include "categories.h"
#include "kycategories.h"

#include "childprocess.h"
#include "tablefixture.h"
#include <sys/stat.h>

namespace {

const QString AddressBook = "Address Book";
const QString TodoList = "Todo List";

QString settingsFolder()
{
    return QDir::homePath() + "/Settings";
}

bool put(const QByteArray &contents)
{
    QFile file(categoryFileName());
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size();
}

QByteArray fileContents()
{
    QFile file(settingsFolder() + "/Categories.xml");
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

Categories categoryFile()
{
    Categories file;
    return file.load(categoryFileName()) ? file : Categories();
}

/** The ids of these names in the table, made where they are missing. */
QList<int> addAll(const QStringList &names)
{
    KyCategories table(nullptr);
    for (const QString &name : names)
        table.addCategory(name);
    return table.ids(names);
}

/** The id of a global category that is added to the file, 0 when that fails. */
int fileCategoryId(const QString &name)
{
    Categories file = categoryFile();
    const int id = file.addGlobalCategory(name);
    return file.save(categoryFileName()) ? id : 0;
}

/** NAME COUNT: brings categories NAME0, NAME1, ... of the table into the file and back. */
int childMain(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QString::number(QCoreApplication::applicationPid()));
    const QByteArray name = argc > 2 ? argv[1] : "";
    KyCategories table(nullptr);
    for (int i = 0; i < QByteArray(argv[2]).toInt(); ++i) {
        const QList<int> ids{table.addCategory(name + QString::number(i)), table.id("common")};
        const QList<int> inFile = convCategoriesPdtmToXml(ids, AddressBook);
        if (inFile.size() != 2 || convCategoriesXmlToPdtm(inFile, AddressBook) != ids)
            return 1;
    }
    return 0;
}

} // namespace

class CategoryConversionTest : public QObject
{
    Q_OBJECT
private slots:
    void init();

    void fileNameMakesTheFolder();
    void fileNameLeavesTheFolderAlone();
    void withoutHomeNoFolderIsMade();

    void toTheFile();
    void toTheFileInOrder();
    void toTheFileKeepsTheApplicationsOwn();
    void toTheFileLeavesOutUnknownIds();
    void firstTranslationMakesTheFile();
    void repeatedTranslationDoesNotWrite();
    void renamedCategoryIsAddedUnderItsNewName();
    void removedCategoryStaysInTheFile();
    void unfiledGoesAlong();

    void fromTheFile();
    void fromTheFileAddsToTheTable();
    void fromTheFileLeavesOutUnknownIds();
    void emptyListTouchesNoFile();
    void fullTableLeavesTheRestOut();
    void fullTableThereAndBack();
    void tableThatIsHeldForGoodGivesNothing();
    void thereAndBack_data();
    void thereAndBack();

    void damagedFileGivesNothing();
    void fileThatCannotBeWritten();

    void fromAnotherTable();
    void fromNoTable();
    void eventsAreTranslatedAsCalender();

    void applicationsAtOnceLoseNothing();
};

void CategoryConversionTest::init()
{
    QVERIFY(makeTable());
    QDir(settingsFolder()).removeRecursively();
    QVERIFY(!QFileInfo::exists(settingsFolder()));
}

void CategoryConversionTest::fileNameMakesTheFolder()
{
    QCOMPARE(categoryFileName(), settingsFolder() + "/Categories.xml");
    struct stat info = {};
    QCOMPARE(stat(QFile::encodeName(settingsFolder()), &info), 0);
    QVERIFY(S_ISDIR(info.st_mode));
    QCOMPARE(info.st_mode & 07777, mode_t(0700));
    QVERIFY(!QFileInfo::exists(categoryFileName()));
}

void CategoryConversionTest::fileNameLeavesTheFolderAlone()
{
    QCOMPARE(mkdir(QFile::encodeName(settingsFolder()), 0755), 0);
    QCOMPARE(chmod(QFile::encodeName(settingsFolder()), 0755), 0);
    QVERIFY(put("here"));
    QCOMPARE(fileContents(), "here");
    struct stat info = {};
    QCOMPARE(stat(QFile::encodeName(settingsFolder()), &info), 0);
    QCOMPARE(info.st_mode & 07777, mode_t(0755));
}

void CategoryConversionTest::withoutHomeNoFolderIsMade()
{
    const QByteArray home = qgetenv("HOME");
    const bool wasThere = QFileInfo::exists("/Settings");
    qunsetenv("HOME");
    const QString name = categoryFileName();
    qputenv("HOME", home);
    QVERIFY(name.endsWith("/Settings/Categories.xml"));
    QCOMPARE(QFileInfo::exists("/Settings"), wasThere);
}

void CategoryConversionTest::toTheFile()
{
    const QList<int> ids = addAll({"Business", "家族"});
    const QList<int> inFile = convCategoriesPdtmToXml(ids, AddressBook);
    const Categories file = categoryFile();
    QCOMPARE(inFile, file.ids("any", {"Business", "家族"}));
    QVERIFY(file.isGlobal("Business") && file.isGlobal("家族"));
    QVERIFY(inFile.size() == 2 && inFile != ids);
}

void CategoryConversionTest::toTheFileInOrder()
{
    const QList<int> ids = addAll({"a", "b", "c"});
    const QList<int> there = convCategoriesPdtmToXml({ids[2], ids[0], ids[1], ids[2]}, TodoList);
    const Categories file = categoryFile();
    QCOMPARE(there, file.ids(TodoList, {"c", "a", "b", "c"}));
    QCOMPARE(there.size(), 4);
}

void CategoryConversionTest::toTheFileKeepsTheApplicationsOwn()
{
    Categories file;
    QVERIFY(file.addCategory(AddressBook, "Business", 77) && file.save(categoryFileName()));
    const QList<int> ids = addAll({"Business"});
    QCOMPARE(convCategoriesPdtmToXml(ids, AddressBook), QList<int>{77});
    const int global = categoryFile().id(TodoList, "Business");
    QVERIFY(global != 0 && global != 77);
    QCOMPARE(convCategoriesPdtmToXml(ids, TodoList), QList<int>{global});
    QCOMPARE(convCategoriesXmlToPdtm({77}, AddressBook), ids);
    QCOMPARE(convCategoriesXmlToPdtm({77}, TodoList), QList<int>());
    QCOMPARE(convCategoriesXmlToPdtm({global}, AddressBook), ids);
}

void CategoryConversionTest::toTheFileLeavesOutUnknownIds()
{
    const QList<int> ids = addAll({"a"});
    QCOMPARE(convCategoriesPdtmToXml({200, ids[0], 0, -1, 255}, AddressBook).size(), 1);
    QCOMPARE(categoryFile().labels(AddressBook), QStringList{"a"});
}

void CategoryConversionTest::firstTranslationMakesTheFile()
{
    QCOMPARE(convCategoriesPdtmToXml({}, AddressBook), QList<int>());
    QVERIFY(fileContents().startsWith("<?xml"));
    QVERIFY(categoryFile() == Categories());
}

void CategoryConversionTest::repeatedTranslationDoesNotWrite()
{
    const QList<int> ids = addAll({"a"});
    const QList<int> there = convCategoriesPdtmToXml(ids, AddressBook);
    struct stat before = {}, after = {};
    QCOMPARE(stat(QFile::encodeName(categoryFileName()), &before), 0);
    QCOMPARE(convCategoriesPdtmToXml(ids, AddressBook), there);
    QCOMPARE(stat(QFile::encodeName(categoryFileName()), &after), 0);
    QCOMPARE(after.st_ino, before.st_ino);
}

void CategoryConversionTest::renamedCategoryIsAddedUnderItsNewName()
{
    const QList<int> ids = addAll({"old"});
    const QList<int> old = convCategoriesPdtmToXml(ids, AddressBook);
    QVERIFY(KyCategories(nullptr).renameCategory("old", "new"));
    const QList<int> renamed = convCategoriesPdtmToXml(ids, AddressBook);
    QVERIFY(renamed != old);
    QCOMPARE(categoryFile().labels(AddressBook), (QStringList{"new", "old"}));
    QCOMPARE(convCategoriesXmlToPdtm(renamed, AddressBook), ids);
}

void CategoryConversionTest::removedCategoryStaysInTheFile()
{
    const QList<int> ids = addAll({"a", "b"});
    const QList<int> there = convCategoriesPdtmToXml(ids, AddressBook);
    QVERIFY(KyCategories(nullptr).removeCategory("a"));
    QCOMPARE(categoryFile().labels(AddressBook), (QStringList{"a", "b"}));
    QCOMPARE(convCategoriesXmlToPdtm(there, AddressBook), (QList<int>{3, ids[1]})); // made again
}

void CategoryConversionTest::unfiledGoesAlong()
{
    const QList<int> there = convCategoriesPdtmToXml({254}, AddressBook);
    QCOMPARE(categoryFile().labels(AddressBook), QStringList{"Unfiled"});
    QCOMPARE(convCategoriesXmlToPdtm(there, AddressBook), QList<int>{254});
}

void CategoryConversionTest::fromTheFile()
{
    const QList<int> ids = addAll({"Business", "Friends"});
    Categories file;
    QVERIFY(file.addCategory(AddressBook, "Friends", 7000));
    const int business = file.addGlobalCategory("Business");
    QVERIFY(file.save(categoryFileName()));
    const QByteArray before = fileContents();
    QCOMPARE(convCategoriesXmlToPdtm({7000, business}, AddressBook), (QList<int>{ids[1], ids[0]}));
    QCOMPARE(convCategoriesXmlToPdtm({7000, business}, TodoList), QList<int>{ids[0]});
    QCOMPARE(fileContents(), before); // the file grows with the table, and not the other way round
}

void CategoryConversionTest::fromTheFileAddsToTheTable()
{
    addAll({"a"});
    Categories file;
    const int added = file.addCategory(AddressBook, "新しい");
    QVERIFY(file.save(categoryFileName()));
    QCOMPARE(convCategoriesXmlToPdtm({added}, AddressBook), QList<int>{2});
    QCOMPARE(tableContents(), (QMap<QString, int>{{"a", 1}, {"新しい", 2}}));
    QCOMPARE(convCategoriesXmlToPdtm({added}, AddressBook), QList<int>{2});
}

void CategoryConversionTest::fromTheFileLeavesOutUnknownIds()
{
    const QList<int> ids = addAll({"a"});
    const QList<int> there = convCategoriesPdtmToXml(ids, AddressBook);
    QCOMPARE(convCategoriesXmlToPdtm({5, there[0], -1, 0, there[0] + 1}, AddressBook), ids);
    QCOMPARE(tableContents().size(), 1);
}

void CategoryConversionTest::emptyListTouchesNoFile()
{
    QCOMPARE(convCategoriesXmlToPdtm({}, AddressBook), QList<int>());
    QVERIFY(!QFileInfo::exists(settingsFolder()));
}

void CategoryConversionTest::fullTableLeavesTheRestOut()
{
    QVERIFY(fillTable(1, 244));
    Categories file;
    const int first = file.addGlobalCategory("first");
    const int second = file.addGlobalCategory("second");
    const int known = file.addGlobalCategory("17");
    QVERIFY(file.save(categoryFileName()));
    QCOMPARE(convCategoriesXmlToPdtm({first, second, known}, AddressBook), (QList<int>{245, 17}));
}

void CategoryConversionTest::fullTableThereAndBack()
{
    QVERIFY(fillTable(1, 245));
    QList<int> ids;
    for (int id = 245; id >= 1; --id)
        ids.append(id);
    const QList<int> there = convCategoriesPdtmToXml(QList<int>{0, 246, 253, 255} + ids, AddressBook);
    QCOMPARE(there.size(), 245);
    QCOMPARE(categoryFile().labels(AddressBook).size(), 245);
    QCOMPARE(convCategoriesXmlToPdtm(there, AddressBook), ids);
    const int added = fileCategoryId("one more");
    QVERIFY(added);
    QCOMPARE(convCategoriesXmlToPdtm({added, there[0]}, AddressBook), QList<int>{245});
}

void CategoryConversionTest::tableThatIsHeldForGoodGivesNothing()
{
    const QList<int> ids = addAll({"a", "b"});
    const QList<int> there = convCategoriesPdtmToXml(ids, AddressBook);
    const int added = fileCategoryId("c");
    const QByteArray before = fileContents();
    const uint32_t handle = _BoxOpenRwMode(TableBox, 0);
    QVERIFY(handle);
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(convCategoriesPdtmToXml(QList<int>(20, ids[0]), AddressBook), QList<int>());
    QCOMPARE(convCategoriesXmlToPdtm(QList<int>(20, there[0]) + QList<int>{added}, AddressBook),
             QList<int>());
    QVERIFY(clock.elapsed() < 30000); // and not a second for each name and id
    QCOMPARE(fileContents(), before);
    QCOMPARE(_BoxCloseEx(handle, 1), PdtmStatus(PdtmOk));
    QCOMPARE(tableContents().size(), 2);
    QCOMPARE(convCategoriesPdtmToXml(ids, AddressBook), there);
    QCOMPARE(convCategoriesXmlToPdtm({added}, AddressBook), QList<int>{3});
}

void CategoryConversionTest::thereAndBack_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("Japanese") << "仕事・家族";
    QTest::newRow("markup") << "<a> & \"b\"";
    QTest::newRow("blanks and breaks") << " a\tb\nc ";
    QTest::newRow("beyond the first plane") << QString::fromUtf8("😀𠮷");
    QTest::newRow("very long") << QString(5000, u'長');
}

void CategoryConversionTest::thereAndBack()
{
    QFETCH(QString, name);
    const QList<int> ids = addAll({"other", name});
    QCOMPARE(ids, (QList<int>{1, 2}));
    for (const QString &application : {AddressBook, TodoList, QString("Calendar"), QString("Calender")}) {
        const QList<int> there = convCategoriesPdtmToXml(ids, application);
        QCOMPARE(there.size(), 2);
        QCOMPARE(convCategoriesXmlToPdtm(there, application), ids);
    }
}

void CategoryConversionTest::damagedFileGivesNothing()
{
    const QList<int> ids = addAll({"a"});
    const QList<int> there = convCategoriesPdtmToXml(ids, AddressBook);
    QVERIFY(put("<categories"));
    QCOMPARE(convCategoriesPdtmToXml(ids, AddressBook), QList<int>());
    QCOMPARE(convCategoriesXmlToPdtm(there, AddressBook), QList<int>());
    QCOMPARE(fileContents(), "<categories");
    QCOMPARE(tableContents().size(), 1);
}

void CategoryConversionTest::fileThatCannotBeWritten()
{
    const QList<int> ids = addAll({"a", "b"});
    const QList<int> first = convCategoriesPdtmToXml({ids[0]}, AddressBook);
    const QByteArray before = fileContents();
    QVERIFY(QDir().mkdir(categoryFileName() + ".new")); // in the way of every save
    const QList<int> both = convCategoriesPdtmToXml(ids, AddressBook);
    QCOMPARE(both.size(), 2);
    QCOMPARE(both.first(), first.first());
    QCOMPARE(fileContents(), before);
    QVERIFY(QDir().rmdir(categoryFileName() + ".new"));
    QCOMPARE(convCategoriesPdtmToXml(ids, AddressBook), both);
    QCOMPARE(convCategoriesXmlToPdtm(both, AddressBook), ids);
}

void CategoryConversionTest::fromAnotherTable()
{
    const QList<int> ids = addAll({"a", "b", "c"});
    KyCategories source(nullptr);
    QCOMPARE(convCategoriesBoxToPdtm({3, 200, 1}, &source), (QList<int>{3, 1}));
    QCOMPARE(convCategoriesBoxToPdtm({254}, &source), QList<int>{254});
    QVERIFY(!QFileInfo::exists(settingsFolder()));
    QCOMPARE(ids, (QList<int>{1, 2, 3}));
}

void CategoryConversionTest::fromNoTable()
{
    addAll({"a"});
    KyCategories source(nullptr);
    QCOMPARE(convCategoriesBoxToPdtm({1}, nullptr), QList<int>());
    QCOMPARE(convCategoriesBoxToPdtm({}, &source), QList<int>());
}

void CategoryConversionTest::eventsAreTranslatedAsCalender()
{
    Categories file;
    QVERIFY(file.addCategory("Calender", "Meetings", 500));
    QVERIFY(file.addCategory("Calendar", "Holidays", 600));
    QVERIFY(file.save(categoryFileName()));
    const QList<int> ids = addAll({"Meetings", "Holidays"});
    const QList<int> there = eventCategoryPdtmToXml(ids);
    QCOMPARE(there, (QList<int>{500, categoryFile().id("other", "Holidays")}));
    QVERIFY(!there.contains(600));
    QCOMPARE(eventCategoryXmlToPdtm({500}), QList<int>{ids[0]});
    QCOMPARE(eventCategoryXmlToPdtm({600}), QList<int>());
}

void CategoryConversionTest::applicationsAtOnceLoseNothing()
{
    constexpr int Count = 10;
    addAll({"common"});
    ChildProcess first({"first ", QString::number(Count)});
    ChildProcess second({"second ", QString::number(Count)});
    QCOMPARE(first.finish(60000), 0);
    QCOMPARE(second.finish(60000), 0);
    QCOMPARE(tableContents().size(), 2 * Count + 1);
    QCOMPARE(categoryFile().labels(AddressBook).size(), 2 * Count + 1);
}

KY_TEST_MAIN_WITH_CHILD(CategoryConversionTest, childMain)
#include "categoryconversiontest.moc"
