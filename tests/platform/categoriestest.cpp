#include "categories.h"

#include "childprocess.h"
#include "logcapture.h"
#include <limits>
#include <QTemporaryDir>
#include <QTest>
#include <sys/stat.h>

namespace {

const QString AddressBook = "Address Book";
const QString TodoList = "Todo List";

bool put(const QString &path, const QByteArray &contents)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size();
}

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

quint64 inodeOf(const QString &path)
{
    struct stat info = {};
    return stat(QFile::encodeName(path), &info) == 0 ? info.st_ino : 0;
}

Categories loaded(const QString &file)
{
    Categories categories;
    return categories.load(file) ? categories : Categories();
}

/** FILE NAME COUNT: adds global categories NAME0, NAME1, ... to a file, each with a load and a save. */
int childMain(int argc, char **argv)
{
    if (argc < 4)
        return 2;
    const QString file = QFile::decodeName(argv[1]);
    for (int i = 0; i < QByteArray(argv[3]).toInt(); ++i) {
        Categories categories;
        const bool added = categories.load(file) &&
                           categories.addGlobalCategory(argv[2] + QString::number(i)) != 0 &&
                           categories.addGlobalCategory("Common " + QString::number(i)) != 0;
        if (!added || !categories.save(file))
            return 1;
    }
    return 0;
}

} // namespace

class CategoriesTest : public QObject
{
    Q_OBJECT
private slots:
    void init();

    // the value
    void addsToAnApplication();
    void addsGlobally();
    void addsWithAnId();
    void sameNameIsAddedOnce();
    void idsAreUniqueOverAllGroups();
    void takenNumberGoesOnToTheNext();
    void namesAreMatchedInFull();
    void ownCategoryHidesTheGlobalOne();
    void idsLeaveOutUnknownNames();
    void labelsAreSortedAndWithGlobals();
    void labelBelongsToItsApplication();
    void renamingKeepsTheId();
    void refusedRenamings();
    void removing();
    void removingAGlobalOneTakesItFromAll();
    void invalidNames_data();
    void invalidNames();
    void copiesAreIndependent();

    // the file
    void missingFileIsEmpty();
    void format();
    void namesComeBack_data();
    void namesComeBack();
    void damagedFile_data();
    void damagedFile();
    void toleratedFile_data();
    void toleratedFile();
    void hugeFileIsRefused();
    void longestFileIsNotOverrun();
    void folderInPlaceOfTheFile();
    void entitiesAreNotExpanded();
    void unchangedFileIsNotWritten();
    void emptyFirstSaveMakesTheFile();
    void missingFolderIsAnError();
    void unreadableFileIsNotReplaced();

    // two writers
    void additionsOfBothSurvive();
    void additionOfTheSameNameHasTheSameId();
    void sameNameOfTwoApplicationsKeepsBothIds();
    void additionMeetsATakenId();
    void greatestIdIsFollowedByTheFirst();
    void removalOfOneAndAdditionOfTheOther();
    void renamingOfOneAndAdditionOfTheOther();
    void renamingToANameThatTheOtherHasAdded();
    void renamingOfWhatTheOtherRemoved();
    void removalOfWhatTheOtherRenamed();
    void exchangedNames();
    void exchangedNamesBesideAnAddition();
    void otherFileIsAddedTo();
    void fileThatWasDeletedComesBackWhole();
    void damageAfterTheLoadIsNotOverwritten();
    void manyWritersLoseNothing();

private:
    [[nodiscard]] QString path() const { return m_folder->filePath("Categories.xml"); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void CategoriesTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void CategoriesTest::addsToAnApplication()
{
    Categories categories;
    const int id = categories.addCategory(AddressBook, "Customers");
    QVERIFY(id > 0);
    QCOMPARE(categories.id(AddressBook, "Customers"), id);
    QCOMPARE(categories.label(AddressBook, id), "Customers");
    QVERIFY(categories.exists(AddressBook, "Customers"));
    QVERIFY(!categories.exists(TodoList, "Customers"));
    QVERIFY(!categories.isGlobal("Customers"));
    QCOMPARE(categories.id(TodoList, "Customers"), 0);
}

void CategoriesTest::addsGlobally()
{
    Categories categories;
    const int id = categories.addGlobalCategory("Business");
    QVERIFY(id > 0);
    for (const QString &application : {AddressBook, TodoList, QString("never named")}) {
        QCOMPARE(categories.id(application, "Business"), id);
        QCOMPARE(categories.label(application, id), "Business");
        QCOMPARE(categories.labels(application), QStringList{"Business"});
    }
    QVERIFY(categories.isGlobal("Business"));
}

void CategoriesTest::addsWithAnId()
{
    Categories categories;
    QVERIFY(categories.addCategory(AddressBook, "Customers", 77));
    QCOMPARE(categories.id(AddressBook, "Customers"), 77);
    QVERIFY(categories.addCategory(AddressBook, "Customers", 77));
    QVERIFY(!categories.addCategory(AddressBook, "Customers", 78));
    QVERIFY(!categories.addCategory(AddressBook, "Friends", 77));
    QVERIFY(!categories.addCategory(TodoList, "Friends", 77));
    QVERIFY(!categories.addCategory(AddressBook, "Friends", 0));
    QVERIFY(!categories.addCategory(AddressBook, "Friends", -5));
    QVERIFY(!categories.addCategory(AddressBook, "", 5));
    QVERIFY(!categories.addCategory("", "Friends", 5));
    QCOMPARE(categories.labels(AddressBook), QStringList{"Customers"});
    QCOMPARE(categories.labels(TodoList), QStringList());
}

void CategoriesTest::sameNameIsAddedOnce()
{
    Categories categories;
    const int own = categories.addCategory(AddressBook, "Customers");
    const int global = categories.addGlobalCategory("Business");
    const Categories before = categories;
    QCOMPARE(categories.addCategory(AddressBook, "Customers"), own);
    QCOMPARE(categories.addGlobalCategory("Business"), global);
    QCOMPARE(categories.addCategory(AddressBook, "Business"), global); // it has that one already
    QVERIFY(categories == before);
}

void CategoriesTest::idsAreUniqueOverAllGroups()
{
    Categories categories;
    QSet<int> ids;
    for (int i = 0; i < 245; ++i) {
        const QString name = "Category " + QString::number(i);
        ids << categories.addCategory(AddressBook, name) << categories.addCategory(TodoList, name)
            << categories.addGlobalCategory(name);
    }
    QCOMPARE(ids.size(), 3 * 245);
    QVERIFY(std::ranges::all_of(ids, [](int id) { return id > 0; }));
}

void CategoriesTest::takenNumberGoesOnToTheNext()
{
    Categories fresh;
    const int usual = fresh.addGlobalCategory("Business");
    Categories categories;
    QVERIFY(categories.addCategory(AddressBook, "A", usual));
    QVERIFY(categories.addCategory(TodoList, "B", usual + 1));
    QCOMPARE(categories.addGlobalCategory("Business"), usual + 2);
}

void CategoriesTest::namesAreMatchedInFull()
{
    Categories categories;
    categories.addGlobalCategory("Business");
    for (const char *other : {"Busines", "Business ", "business", "", "siness"})
        QVERIFY(!categories.exists(AddressBook, other));
}

void CategoriesTest::ownCategoryHidesTheGlobalOne()
{
    Categories categories;
    const int own = categories.addCategory(AddressBook, "Business");
    const int global = categories.addGlobalCategory("Business");
    QVERIFY(own != global);
    QCOMPARE(categories.id(AddressBook, "Business"), own);
    QCOMPARE(categories.id(TodoList, "Business"), global);
    QCOMPARE(categories.label(AddressBook, global), "Business"); // records may carry either
    QCOMPARE(categories.labels(AddressBook), QStringList{"Business"});
}

void CategoriesTest::idsLeaveOutUnknownNames()
{
    Categories categories;
    const int own = categories.addCategory(AddressBook, "Customers");
    const int global = categories.addGlobalCategory("Business");
    const QList<int> expected{global, own, global};
    QCOMPARE(categories.ids(AddressBook, {"Business", "nobody", "Customers", "Business"}), expected);
    QCOMPARE(categories.ids(AddressBook, {}), QList<int>());
}

void CategoriesTest::labelsAreSortedAndWithGlobals()
{
    Categories categories;
    for (const char *name : {"b", "d"})
        categories.addCategory(AddressBook, name);
    for (const char *name : {"c", "a"})
        categories.addGlobalCategory(name);
    QCOMPARE(categories.labels(AddressBook), (QStringList{"a", "b", "c", "d"}));
    QCOMPARE(categories.labels(TodoList), (QStringList{"a", "c"}));
}

void CategoriesTest::labelBelongsToItsApplication()
{
    Categories categories;
    const int id = categories.addCategory(AddressBook, "Customers");
    QVERIFY(categories.label(TodoList, id).isNull());
    QVERIFY(categories.label(AddressBook, id + 1).isNull());
    QVERIFY(categories.label(AddressBook, 0).isNull());
}

void CategoriesTest::renamingKeepsTheId()
{
    Categories categories;
    const int own = categories.addCategory(AddressBook, "Customers");
    const int global = categories.addGlobalCategory("Business");
    QVERIFY(categories.renameCategory(AddressBook, "Customers", "Clients"));
    QVERIFY(categories.renameCategory(AddressBook, "Business", "Work"));
    QCOMPARE(categories.id(AddressBook, "Clients"), own);
    QCOMPARE(categories.id(TodoList, "Work"), global);
    QVERIFY(!categories.exists(AddressBook, "Customers"));
    QVERIFY(!categories.exists(AddressBook, "Business"));
}

void CategoriesTest::refusedRenamings()
{
    Categories categories;
    categories.addCategory(AddressBook, "Customers");
    categories.addCategory(AddressBook, "Friends");
    const Categories before = categories;
    QVERIFY(!categories.renameCategory(AddressBook, "nobody", "Other"));
    QVERIFY(!categories.renameCategory(TodoList, "Customers", "Other"));
    QVERIFY(!categories.renameCategory(AddressBook, "Customers", "Friends"));
    QVERIFY(!categories.renameCategory(AddressBook, "Customers", ""));
    QVERIFY(categories == before);
}

void CategoriesTest::removing()
{
    Categories categories;
    const int id = categories.addCategory(AddressBook, "Customers");
    categories.addCategory(TodoList, "Customers");
    QVERIFY(categories.removeCategory(AddressBook, "Customers"));
    QVERIFY(!categories.removeCategory(AddressBook, "Customers"));
    QVERIFY(categories.label(AddressBook, id).isNull());
    QVERIFY(categories.exists(TodoList, "Customers"));
}

void CategoriesTest::removingAGlobalOneTakesItFromAll()
{
    Categories categories;
    categories.addGlobalCategory("Business");
    QVERIFY(categories.removeCategory(AddressBook, "Business"));
    QVERIFY(!categories.exists(TodoList, "Business"));
    QVERIFY(categories == Categories());
}

void CategoriesTest::invalidNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("null") << QString();
    QTest::newRow("empty") << "";
    QTest::newRow("0 character") << QString("a%1b").arg(QChar(0));
    QTest::newRow("control character") << QString("a\x01");
    QTest::newRow("escape") << QString("\x1B[2J");
    QTest::newRow("lone high surrogate") << QString("a%1").arg(QChar(0xD83D));
    QTest::newRow("lone low surrogate") << QString("%1a").arg(QChar(0xDE00));
    QTest::newRow("surrogates the wrong way round") << QString("%1%2").arg(QChar(0xDE00)).arg(QChar(0xD83D));
    QTest::newRow("U+FFFE") << QString(QChar(0xFFFE));
    QTest::newRow("U+FFFF") << QString(QChar(0xFFFF));
}

void CategoriesTest::invalidNames()
{
    QFETCH(QString, name);
    Categories categories;
    categories.addGlobalCategory("Business");
    const Categories before = categories;
    QVERIFY(!Categories::isValidName(name));
    QCOMPARE(categories.addCategory(AddressBook, name), 0);
    QCOMPARE(categories.addCategory(name, "Customers"), 0);
    QCOMPARE(categories.addGlobalCategory(name), 0);
    QVERIFY(!categories.addCategory(AddressBook, name, 5));
    QVERIFY(!categories.addCategory(name, "Customers", 5));
    QVERIFY(!categories.renameCategory(AddressBook, "Business", name));
    QVERIFY(categories == before);
}

void CategoriesTest::copiesAreIndependent()
{
    Categories categories;
    categories.addGlobalCategory("Business");
    Categories copy = categories;
    copy.addGlobalCategory("Private");
    QVERIFY(!categories.isGlobal("Private"));
    QVERIFY(!(copy == categories));
    copy = categories;
    QVERIFY(copy == categories);
}

void CategoriesTest::missingFileIsEmpty()
{
    Categories categories;
    categories.addGlobalCategory("Business");
    QVERIFY(categories.load(path()));
    QVERIFY(categories == Categories());
    QVERIFY(!QFileInfo::exists(path()));
}

void CategoriesTest::format()
{
    Categories categories;
    categories.addCategory(AddressBook, "Customers & \"<friends>\"", 77);
    categories.addCategory(TodoList, "家族", 8);
    const int global = categories.addGlobalCategory("Business");
    QVERIFY(categories.save(path()));
    const QByteArray expected =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<categories version=\"1\">\n"
        "    <global>\n"
        "        <category id=\"" +
        QByteArray::number(global) +
        "\" name=\"Business\"/>\n"
        "    </global>\n"
        "    <application name=\"Address Book\">\n"
        "        <category id=\"77\" name=\"Customers &amp; &quot;&lt;friends&gt;&quot;\"/>\n"
        "    </application>\n"
        "    <application name=\"Todo List\">\n"
        "        <category id=\"8\" name=\"家族\"/>\n"
        "    </application>\n"
        "</categories>\n";
    QCOMPARE(contentsOf(path()), expected);
    QVERIFY(loaded(path()) == categories);
}

void CategoriesTest::namesComeBack_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("Japanese") << "仕事・家族";
    QTest::newRow("markup") << "<a href='x'>&amp;\"]]>";
    QTest::newRow("line breaks and tabs") << "a\tb\nc\rd\r\ne";
    QTest::newRow("blanks") << "  a  b  ";
    QTest::newRow("beyond the first plane") << QString::fromUtf8("😀𠮷");
    QTest::newRow("no-break and line separators") << QString("a%1b%2c").arg(QChar(0x85)).arg(QChar(0x2028));
    QTest::newRow("byte order mark") << QString("%1a").arg(QChar(0xFEFF));
    QTest::newRow("very long") << QString(100000, u'長');
}

void CategoriesTest::namesComeBack()
{
    QFETCH(QString, name);
    Categories categories;
    const int own = categories.addCategory(name, name);
    const int global = categories.addGlobalCategory(name);
    QVERIFY(own && global);
    QVERIFY(categories.save(path()));
    const Categories again = loaded(path());
    QVERIFY(again == categories);
    QCOMPARE(again.label(name, own), name);
    QCOMPARE(again.label(TodoList, global), name);
}

void CategoriesTest::damagedFile_data()
{
    QTest::addColumn<QByteArray>("contents");
    const auto row = [](const char *name, const QByteArray &contents) { QTest::newRow(name) << contents; };
    const auto file = [&](const char *name, const QByteArray &inside) {
        row(name, "<categories version=\"1\">" + inside + "</categories>");
    };
    row("empty", "");
    row("no XML", "Business = 5\n");
    row("binary", QByteArray("\0\1\2\xFF\xFE", 5));
    row("cut short", "<categories version=\"1\"><global><category id=\"1\" name=\"A\"/></global>");
    row("cut inside an element", "<categories version=\"1\"><global><category id=\"1\" na");
    row("damaged UTF-8", "<categories version=\"1\"><global><category id=\"1\" name=\"\xE5\xAE\"/></global>"
                         "</categories>");
    row("other root", "<settings version=\"1\"/>");
    row("no version", "<categories/>");
    row("later version", "<categories version=\"2\"/>");
    row("unknown attribute", "<categories version=\"1\" color=\"red\"/>");
    row("something behind", "<categories version=\"1\"/><categories version=\"1\"/>");
    row("text behind", "<categories version=\"1\"/>text");
    row("document type", "<!DOCTYPE categories><categories version=\"1\"/>");
    file("unknown group", "<local/>");
    file("category outside a group", "<category id=\"1\" name=\"A\"/>");
    file("text in place of a group", "Business");
    file("application without a name", "<application><category id=\"1\" name=\"A\"/></application>");
    file("application with an empty name", "<application name=\"\"/>");
    file("unknown attribute of an application", "<application name=\"X\" color=\"red\"/>");
    file("unknown attribute of the global group", "<global name=\"X\"/>");
    file("unknown attribute of a category", "<global><category id=\"1\" name=\"A\" color=\"red\"/></global>");
    file("unknown element in a group", "<global><label id=\"1\" name=\"A\"/></global>");
    file("something in a category",
         "<global><category id=\"1\" name=\"A\"><category id=\"2\" name=\"B\"/></category>"
         "</global>");
    file("text in a category", "<global><category id=\"1\" name=\"A\">text</category></global>");
    file("no id", "<global><category name=\"A\"/></global>");
    file("id 0", "<global><category id=\"0\" name=\"A\"/></global>");
    file("negative id", "<global><category id=\"-1\" name=\"A\"/></global>");
    file("id beyond 32 bits", "<global><category id=\"4294967297\" name=\"A\"/></global>");
    file("id that is no number", "<global><category id=\"1a\" name=\"A\"/></global>");
    file("no name", "<global><category id=\"1\"/></global>");
    file("empty name", "<global><category id=\"1\" name=\"\"/></global>");
    file("same id in a group",
         "<global><category id=\"1\" name=\"A\"/><category id=\"1\" name=\"B\"/></global>");
    file("same id in two groups", "<global><category id=\"1\" name=\"A\"/></global>"
                                  "<application name=\"X\"><category id=\"1\" name=\"B\"/></application>");
    file("same name in a group",
         "<global><category id=\"1\" name=\"A\"/><category id=\"2\" name=\"A\"/></global>");
}

void CategoriesTest::damagedFile()
{
    QFETCH(QByteArray, contents);
    QVERIFY(put(path(), contents));
    Categories categories;
    categories.addGlobalCategory("Business");
    const Categories before = categories;
    QVERIFY(!categories.load(path()));
    QVERIFY(categories == before);

    const LogCapture log;
    QVERIFY(!categories.save(path()));
    QCOMPARE(log.warnings(), QStringList{"could not read " + path() + ", so it isn't replaced"});
    QCOMPARE(contentsOf(path()), contents);
}

void CategoriesTest::toleratedFile_data()
{
    QTest::addColumn<QByteArray>("contents");
    QTest::newRow("comments and other layout") << QByteArray(
        "<!-- mine --><categories  version='1'><!-- a --><application name='X'>\r\n"
        "<category name='A' id='5'></category></application>\r\n<global/></categories><!-- b -->\n");
    QTest::newRow("byte order mark") << QByteArray(
        "\xEF\xBB\xBF<categories version=\"1\"><application name=\"X\">"
        "<category id=\"5\" name=\"A\"/></application></categories>");
    QTest::newRow("a group in two parts")
        << QByteArray("<categories version=\"1\"><application name=\"X\"/><application name=\"X\">"
                      "<category id=\"5\" name=\"A\"/></application></categories>");
}

void CategoriesTest::toleratedFile()
{
    QFETCH(QByteArray, contents);
    QVERIFY(put(path(), contents));
    Categories expected;
    QVERIFY(expected.addCategory("X", "A", 5));
    Categories categories;
    QVERIFY(categories.load(path()));
    QVERIFY(categories == expected);
}

void CategoriesTest::hugeFileIsRefused()
{
    const QByteArray head = "<categories version=\"1\">";
    const QByteArray tail = "</categories>";
    const auto filled = [&](qint64 size) {
        return head + QByteArray(size - head.size() - tail.size(), ' ') + tail;
    };
    QVERIFY(put(path(), filled(Categories::MaximumFileSize)));
    Categories categories;
    QVERIFY(categories.load(path()));
    QVERIFY(put(path(), filled(Categories::MaximumFileSize + 1)));
    QVERIFY(!categories.load(path()));
}

void CategoriesTest::longestFileIsNotOverrun()
{
    Categories categories;
    categories.addGlobalCategory(QString(Categories::MaximumFileSize - 1000, u'a'));
    QVERIFY(categories.save(path()));
    const Categories before = categories;
    const quint64 inode = inodeOf(path());
    categories.addGlobalCategory(QString(1000, u'b'));
    const LogCapture log;
    QVERIFY(!categories.save(path()));
    QCOMPARE(log.warnings(), QStringList{path() + " would become too long"});
    QCOMPARE(inodeOf(path()), inode);
    QVERIFY(loaded(path()) == before);
}

void CategoriesTest::folderInPlaceOfTheFile()
{
    QVERIFY(QDir().mkdir(path()));
    Categories categories;
    QVERIFY(!categories.load(path()));
    QVERIFY(!categories.save(path()));
}

void CategoriesTest::entitiesAreNotExpanded()
{
    QByteArray contents = "<?xml version=\"1.0\"?><!DOCTYPE categories [<!ENTITY e0 \"aaaaaaaaaa\">";
    for (int i = 1; i < 12; ++i) {
        const QByteArray inner = "&e" + QByteArray::number(i - 1) + ';';
        contents += "<!ENTITY e" + QByteArray::number(i) + " \"" + inner.repeated(10) + "\">";
    }
    contents +=
        "]><categories version=\"1\"><global><category id=\"1\" name=\"&e11;\"/></global></categories>";
    QVERIFY(put(path(), contents));
    Categories categories;
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!categories.load(path()));
    QVERIFY(clock.elapsed() < 5000);
}

void CategoriesTest::unchangedFileIsNotWritten()
{
    Categories categories;
    categories.addGlobalCategory("Business");
    QVERIFY(categories.save(path()));
    const quint64 inode = inodeOf(path());
    QVERIFY(categories.save(path()));
    QCOMPARE(inodeOf(path()), inode);

    Categories again;
    QVERIFY(again.load(path()));
    again.addGlobalCategory("Business");
    QVERIFY(again.save(path()));
    QCOMPARE(inodeOf(path()), inode);
    again.addGlobalCategory("Private");
    QVERIFY(again.save(path()));
    QVERIFY(inodeOf(path()) != inode);
    QVERIFY(!QFileInfo::exists(path() + ".new"));

    // What another process has added by itself meanwhile.
    const quint64 second = inodeOf(path());
    categories.addGlobalCategory("Private");
    QVERIFY(categories.save(path()));
    QCOMPARE(inodeOf(path()), second);
}

void CategoriesTest::emptyFirstSaveMakesTheFile()
{
    Categories categories;
    QVERIFY(categories.load(path()));
    QVERIFY(categories.save(path()));
    QVERIFY(QFileInfo::exists(path()));
    QVERIFY(categories.load(path()));
    QVERIFY(categories == Categories());
}

void CategoriesTest::missingFolderIsAnError()
{
    Categories categories;
    categories.addGlobalCategory("Business");
    QVERIFY(!categories.save(m_folder->filePath("nowhere/Categories.xml")));
    QVERIFY(categories.isGlobal("Business"));
}

void CategoriesTest::unreadableFileIsNotReplaced()
{
    if (geteuid() == 0)
        QSKIP("root reads everything");
    QVERIFY(put(path(), "<categories version=\"1\"/>"));
    QVERIFY(QFile::setPermissions(path(), {}));
    Categories categories;
    QVERIFY(!categories.load(path()));
    QVERIFY(!categories.save(path()));
}

void CategoriesTest::additionsOfBothSurvive()
{
    Categories first;
    Categories second;
    QVERIFY(first.load(path()) && second.load(path()));
    const int a = first.addCategory(AddressBook, "A");
    const int b = second.addCategory(AddressBook, "B");
    const int c = second.addGlobalCategory("C");
    QVERIFY(first.save(path()));
    QVERIFY(second.save(path()));
    QCOMPARE(second.id(AddressBook, "A"), a); // what others did is here after the save
    const Categories file = loaded(path());
    QVERIFY(file == second);
    QCOMPARE(file.ids(AddressBook, {"A", "B", "C"}), (QList<int>{a, b, c}));
}

void CategoriesTest::additionOfTheSameNameHasTheSameId()
{
    Categories first;
    Categories second;
    QVERIFY(first.load(path()) && second.load(path()));
    const int id = first.addGlobalCategory("Business");
    QCOMPARE(second.addGlobalCategory("Business"), id);
    QVERIFY(first.save(path()) && second.save(path()));
    QCOMPARE(loaded(path()).id(AddressBook, "Business"), id);
    QCOMPARE(loaded(path()).labels(AddressBook), QStringList{"Business"});
}

void CategoriesTest::sameNameOfTwoApplicationsKeepsBothIds()
{
    Categories first;
    Categories second;
    Categories third;
    QVERIFY(first.load(path()) && second.load(path()) && third.load(path()));
    const int own = first.addCategory(AddressBook, "Business");
    const int other = second.addCategory(TodoList, "Business");
    const int global = third.addGlobalCategory("Business");
    QVERIFY(first.save(path()) && second.save(path()) && third.save(path()));
    // Records may carry an id before it is in the file.
    QCOMPARE(loaded(path()).label(AddressBook, own), "Business");
    QCOMPARE(loaded(path()).label(TodoList, other), "Business");
    QCOMPARE(loaded(path()).id("any", "Business"), global);
}

void CategoriesTest::additionMeetsATakenId()
{
    Categories first;
    Categories second;
    QVERIFY(first.load(path()) && second.load(path()));
    QVERIFY(first.addCategory(AddressBook, "A", 5));
    QVERIFY(second.addCategory(AddressBook, "B", 5));
    QVERIFY(first.save(path()) && second.save(path()));
    QCOMPARE(loaded(path()).ids(AddressBook, {"A", "B"}), (QList<int>{5, 6}));
    QVERIFY(loaded(path()) == second);
}

void CategoriesTest::greatestIdIsFollowedByTheFirst()
{
    constexpr int Greatest = std::numeric_limits<int>::max();
    Categories first;
    Categories second;
    QVERIFY(first.load(path()) && second.load(path()));
    QVERIFY(first.addCategory(AddressBook, "A", Greatest));
    QVERIFY(second.addCategory(AddressBook, "B", Greatest));
    QVERIFY(first.save(path()) && second.save(path()));
    QCOMPARE(loaded(path()).ids(AddressBook, {"A", "B"}), (QList<int>{Greatest, 1}));
}

void CategoriesTest::removalOfOneAndAdditionOfTheOther()
{
    Categories first;
    first.addGlobalCategory("Old");
    first.addGlobalCategory("Kept");
    QVERIFY(first.save(path()));
    Categories second = loaded(path());
    first.addGlobalCategory("New");
    QVERIFY(first.save(path()));
    QVERIFY(second.removeCategory(AddressBook, "Old"));
    QVERIFY(second.save(path()));
    QCOMPARE(loaded(path()).labels(AddressBook), (QStringList{"Kept", "New"}));

    first.addGlobalCategory("Last");
    QVERIFY(first.save(path()));
    QCOMPARE(loaded(path()).labels(AddressBook), (QStringList{"Kept", "Last", "New"})); // it stays removed
}

void CategoriesTest::renamingOfOneAndAdditionOfTheOther()
{
    Categories first;
    const int id = first.addGlobalCategory("Old");
    QVERIFY(first.save(path()));
    Categories second = loaded(path());
    first.addGlobalCategory("New");
    QVERIFY(first.save(path()));
    QVERIFY(second.renameCategory(AddressBook, "Old", "Renamed"));
    QVERIFY(second.save(path()));
    QCOMPARE(loaded(path()).labels(AddressBook), (QStringList{"New", "Renamed"}));
    QCOMPARE(loaded(path()).id(AddressBook, "Renamed"), id);
}

void CategoriesTest::renamingToANameThatTheOtherHasAdded()
{
    Categories first;
    const int id = first.addGlobalCategory("Old");
    QVERIFY(first.save(path()));
    Categories second = loaded(path());
    const int added = first.addGlobalCategory("New");
    QVERIFY(first.save(path()));
    QVERIFY(second.renameCategory(AddressBook, "Old", "New"));
    QVERIFY(second.save(path()));
    QCOMPARE(loaded(path()).ids(AddressBook, {"Old", "New"}), (QList<int>{id, added}));
}

void CategoriesTest::renamingOfWhatTheOtherRemoved()
{
    Categories first;
    first.addGlobalCategory("Old");
    first.addGlobalCategory("Kept");
    QVERIFY(first.save(path()));
    Categories second = loaded(path());
    QVERIFY(first.removeCategory(AddressBook, "Old"));
    QVERIFY(first.save(path()));
    QVERIFY(second.renameCategory(AddressBook, "Old", "New"));
    QVERIFY(second.save(path()));
    QCOMPARE(loaded(path()).labels(AddressBook), QStringList{"Kept"});
}

void CategoriesTest::removalOfWhatTheOtherRenamed()
{
    Categories first;
    first.addGlobalCategory("Old");
    first.addGlobalCategory("Kept");
    QVERIFY(first.save(path()));
    Categories second = loaded(path());
    QVERIFY(first.renameCategory(AddressBook, "Old", "New"));
    QVERIFY(first.save(path()));
    QVERIFY(second.removeCategory(AddressBook, "Old"));
    QVERIFY(second.save(path()));
    QCOMPARE(loaded(path()).labels(AddressBook), QStringList{"Kept"});
}

namespace {

bool exchange(Categories &categories)
{
    return categories.renameCategory(AddressBook, "A", "tmp") &&
           categories.renameCategory(AddressBook, "B", "A") &&
           categories.renameCategory(AddressBook, "tmp", "B");
}

} // namespace

void CategoriesTest::exchangedNames()
{
    Categories categories;
    const int a = categories.addGlobalCategory("A");
    const int b = categories.addGlobalCategory("B");
    QVERIFY(categories.save(path()));
    QVERIFY(exchange(categories));
    QVERIFY(categories.save(path()));
    QCOMPARE(loaded(path()).ids(AddressBook, {"A", "B"}), (QList<int>{b, a}));
}

void CategoriesTest::exchangedNamesBesideAnAddition()
{
    Categories first;
    const int a = first.addGlobalCategory("A");
    const int b = first.addGlobalCategory("B");
    QVERIFY(first.save(path()));
    Categories second = loaded(path());
    const int c = first.addGlobalCategory("C");
    QVERIFY(first.save(path()));
    QVERIFY(exchange(second));
    QVERIFY(second.save(path()));
    QCOMPARE(loaded(path()).ids(AddressBook, {"A", "B", "C"}), (QList<int>{b, a, c}));
}

void CategoriesTest::otherFileIsAddedTo()
{
    Categories categories;
    categories.addGlobalCategory("A");
    QVERIFY(categories.save(path()));
    Categories there;
    there.addGlobalCategory("B");
    const QString other = m_folder->filePath("other.xml");
    QVERIFY(there.save(other));
    QVERIFY(categories.save(other));
    QCOMPARE(loaded(other).labels(AddressBook), (QStringList{"A", "B"}));
}

void CategoriesTest::fileThatWasDeletedComesBackWhole()
{
    Categories categories;
    categories.addGlobalCategory("A");
    QVERIFY(categories.save(path()));
    QVERIFY(QFile::remove(path()));
    QVERIFY(categories.save(path()));
    QCOMPARE(loaded(path()).labels(AddressBook), QStringList{"A"});
    QVERIFY(QFile::remove(path()));
    categories.addGlobalCategory("B");
    QVERIFY(categories.save(path()));
    QCOMPARE(loaded(path()).labels(AddressBook), (QStringList{"A", "B"}));
}

void CategoriesTest::damageAfterTheLoadIsNotOverwritten()
{
    Categories categories;
    categories.addGlobalCategory("A");
    QVERIFY(categories.save(path()));
    categories.addGlobalCategory("B");
    QVERIFY(put(path(), "<categories version"));
    QVERIFY(!categories.save(path()));
    QCOMPARE(contentsOf(path()), "<categories version");
}

void CategoriesTest::manyWritersLoseNothing()
{
    constexpr int Count = 40;
    ChildProcess first({path(), "first ", QString::number(Count)});
    ChildProcess second({path(), "second ", QString::number(Count)});
    ChildProcess third({path(), "third ", QString::number(Count)});
    QCOMPARE(first.finish(60000), 0);
    QCOMPARE(second.finish(60000), 0);
    QCOMPARE(third.finish(60000), 0);
    const Categories file = loaded(path());
    QCOMPARE(file.labels(AddressBook).size(), 4 * Count);
    for (int i = 0; i < Count; ++i) {
        for (const char *name : {"first ", "second ", "third ", "Common "})
            QVERIFY2(file.isGlobal(name + QString::number(i)), name);
    }
}

KY_TEST_MAIN_WITH_CHILD(CategoriesTest, childMain)
#include "categoriestest.moc"
