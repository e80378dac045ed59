#include "config.h"
#include "kystringselect.h"
#include "logcapture.h"
#include <QDir>
#include <QFile>
#include <QtTest>

namespace {

/** The rows below the empty one, without a reload. */
QStringList shown(const KyStringSelect &box)
{
    QStringList rows;
    for (int row = 1; row < box.count(); ++row)
        rows.append(box.itemText(row));
    return rows;
}

/** The history that another box finds in the file. */
QStringList stored(const QString &group)
{
    return shown(KyStringSelect(group, {"never", "written"}));
}

QString settingsFolder()
{
    return QDir::homePath() + "/Settings";
}

QByteArray settingsFile()
{
    QFile file(settingsFolder() + "/haldenlist.conf");
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeSettingsFile(const QByteArray &contents)
{
    QVERIFY(QDir().mkpath(settingsFolder()));
    QFile file(settingsFolder() + "/haldenlist.conf");
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(contents), contents.size());
}

/** A to Z, so that the last one is the oldest. */
QStringList letters(int count)
{
    QStringList list;
    for (int i = 0; i < count; ++i)
        list.append(QString(QChar('A' + i)));
    return list;
}

} // namespace

class StringSelectTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void plainBoxHasNothing();
    void takesName();
    void groupNeverWrittenShowsDefaults();
    void firstAdditionStoresDefaultsBehindIt();
    void defaultsCountOnlyUntilTheFirstWrite();
    void firstRowIsEmptyAndCurrent();
    void firstRowIsEmptyInAnEditableBox();
    void setGroupShowsAnotherHistory();
    void groupsAreKeptApart();
    void namelessGroupWorks();
    void writeStoresAsItIs();
    void fileHasTheTwoKeys();
    void emptyHistoryOfAWrittenGroup();
    void signOfAWrittenGroup_data();
    void signOfAWrittenGroup();
    void additionDoesNotShowBeforeReload();
    void whiteSpaceIsSimplified_data();
    void whiteSpaceIsSimplified();
    void textWithoutCharactersChangesNothing_data();
    void textWithoutCharactersChangesNothing();
    void stringThatIsPresentMovesToTheTop();
    void simplifiedStringThatIsPresentMovesToTheTop();
    void duplicatesAreKeptWhenWanted();
    void capacityIsTwenty();
    void allEqualToTheLastGoTogether();
    void moveToTheTopOfAFullListLosesNothing();
    void loweringTheCapacityTakesOneAnAddition();
    void settingTheCapacityCutsNothing();
    void capacityOfNothingKeepsTheNewest_data();
    void capacityOfNothingKeepsTheNewest();
    void separatorInsideAString_data();
    void separatorInsideAString();
    void settingsThatCannotBeWritten();
    void boxMayBeNarrowerThanItsStrings();
    void stringsToTryTheBoxWith();
};

void StringSelectTest::init()
{
    QDir(settingsFolder()).removeRecursively();
    QFile::remove(settingsFolder());
}

void StringSelectTest::plainBoxHasNothing()
{
    const KyStringSelect box;
    QCOMPARE(box.count(), 0);
    QVERIFY(!QFile::exists(settingsFolder() + "/haldenlist.conf"));
}

void StringSelectTest::takesName()
{
    QWidget parent;
    const KyStringSelect plain(&parent, "plain");
    QCOMPARE(plain.objectName(), "plain");
    QCOMPARE(plain.parentWidget(), &parent);
    const KyStringSelect box("words", {}, &parent, "history");
    QCOMPARE(box.objectName(), "history");
    QCOMPARE(box.parentWidget(), &parent);
}

void StringSelectTest::groupNeverWrittenShowsDefaults()
{
    const KyStringSelect box("words", {"one", "two"});
    QCOMPARE(shown(box), (QStringList{"one", "two"}));
    QVERIFY(!QFile::exists(settingsFolder() + "/haldenlist.conf"));
}

void StringSelectTest::firstAdditionStoresDefaultsBehindIt()
{
    KyStringSelect box("words", {"one", "two"});
    QVERIFY(box.addStringAtTop("three", false));
    QCOMPARE(stored("words"), (QStringList{"three", "one", "two"}));
}

void StringSelectTest::defaultsCountOnlyUntilTheFirstWrite()
{
    KyStringSelect("words", {"one"}).write();
    QCOMPARE(shown(KyStringSelect("words", {"other"})), QStringList{"one"});
}

void StringSelectTest::firstRowIsEmptyAndCurrent()
{
    KyStringSelect box("words", {"one", "two"});
    QCOMPARE(box.count(), 3);
    QCOMPARE(box.itemText(0), QString());
    QCOMPARE(box.currentIndex(), 0);
    QCOMPARE(box.currentText(), QString());
    box.setCurrentIndex(2);
    box.reload();
    QCOMPARE(box.count(), 3);
    QCOMPARE(box.currentIndex(), 0);
    QCOMPARE(KyStringSelect("empty", {}).count(), 1);
}

void StringSelectTest::firstRowIsEmptyInAnEditableBox()
{
    KyStringSelect box;
    box.setEditable(true);
    box.setGroup("words", {"one", "two"});
    QCOMPARE(box.currentText(), QString());
    QCOMPARE(shown(box), (QStringList{"one", "two"}));
}

void StringSelectTest::setGroupShowsAnotherHistory()
{
    KyStringSelect("words", {"one"}).write();
    KyStringSelect box("others", {"two"});
    box.setGroup("words", {"other"});
    QCOMPARE(shown(box), QStringList{"one"});
    QVERIFY(box.addStringAtTop("three", false));
    QCOMPARE(stored("words"), (QStringList{"three", "one"}));
}

void StringSelectTest::groupsAreKeptApart()
{
    KyStringSelect first("first", {});
    KyStringSelect second("second", {});
    QVERIFY(first.addStringAtTop("one", false));
    QVERIFY(second.addStringAtTop("two", false));
    QVERIFY(first.addStringAtTop("three", false));
    QCOMPARE(stored("first"), (QStringList{"three", "one"}));
    QCOMPARE(stored("second"), QStringList{"two"});
}

void StringSelectTest::namelessGroupWorks()
{
    KyStringSelect box;
    QVERIFY(box.addStringAtTop("one", false));
    box.reload();
    QCOMPARE(shown(box), QStringList{"one"});
    QCOMPARE(stored(QString()), QStringList{"one"});
}

void StringSelectTest::writeStoresAsItIs()
{
    KyStringSelect box("words", {"b", "a", "b"});
    box.write();
    QCOMPARE(stored("words"), (QStringList{"b", "a", "b"}));
}

void StringSelectTest::fileHasTheTwoKeys()
{
    KyStringSelect("words", {"one", "two"}).write();
    Config config("haldenlist", Config::User);
    QVERIFY(config.hasGroup("words"));
    config.setGroup("words");
    QCOMPARE(config.readEntry("strings"), "one;two");
    QCOMPARE(config.readEntry("defset"), "1");
}

void StringSelectTest::emptyHistoryOfAWrittenGroup()
{
    KyStringSelect("words", {}).write();
    QCOMPARE(stored("words"), QStringList());
}

void StringSelectTest::signOfAWrittenGroup_data()
{
    QTest::addColumn<QByteArray>("sign");
    QTest::addColumn<QString>("first");
    QTest::newRow("one") << QByteArray("defset = 1\n") << "stored";
    QTest::newRow("zero") << QByteArray("defset = 0\n") << "stored";
    QTest::newRow("less than zero") << QByteArray("defset = -1\n") << "default";
    QTest::newRow("not a number") << QByteArray("defset = yes\n") << "default";
    QTest::newRow("none") << QByteArray() << "default";
}

void StringSelectTest::signOfAWrittenGroup()
{
    QFETCH(QByteArray, sign);
    writeSettingsFile("[words]\nstrings = stored\n" + sign);
    const KyStringSelect box("words", {"default"});
    QTEST(box.itemText(1), "first");
}

void StringSelectTest::additionDoesNotShowBeforeReload()
{
    KyStringSelect box("words", {"one"});
    QVERIFY(box.addStringAtTop("two", false));
    QCOMPARE(shown(box), QStringList{"one"});
    box.reload();
    QCOMPARE(shown(box), (QStringList{"two", "one"}));
}

void StringSelectTest::whiteSpaceIsSimplified_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("inner run of blanks") << "a   b    c";
    QTest::newRow("blanks at the ends") << "  a b c ";
    QTest::newRow("tabs and lines") << "\ta\nb\r\n c\n";
}

void StringSelectTest::whiteSpaceIsSimplified()
{
    QFETCH(QString, text);
    KyStringSelect box("words", {});
    QVERIFY(box.addStringAtTop(text, false));
    QCOMPARE(stored("words"), QStringList{"a b c"});
}

void StringSelectTest::textWithoutCharactersChangesNothing_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("null") << QString();
    QTest::newRow("empty") << QString("");
    QTest::newRow("blanks") << "   ";
    QTest::newRow("lines") << "\n\t\n";
}

void StringSelectTest::textWithoutCharactersChangesNothing()
{
    QFETCH(QString, text);
    KyStringSelect box("words", {"one"});
    QVERIFY(!box.addStringAtTop(text, false));
    QVERIFY(!box.addStringAtTop(text, true));
    box.reload();
    QCOMPARE(shown(box), QStringList{"one"});
    QCOMPARE(settingsFile(), QByteArray());
}

void StringSelectTest::stringThatIsPresentMovesToTheTop()
{
    KyStringSelect box("words", {"a", "b", "c", "b"});
    QVERIFY(box.addStringAtTop("b", false));
    QCOMPARE(stored("words"), (QStringList{"b", "a", "c"}));
    QVERIFY(box.addStringAtTop("B", false));
    QCOMPARE(stored("words"), (QStringList{"B", "b", "a", "c"}));
}

void StringSelectTest::simplifiedStringThatIsPresentMovesToTheTop()
{
    KyStringSelect box("words", {"a", "b c"});
    QVERIFY(box.addStringAtTop(" b   c", false));
    QCOMPARE(stored("words"), (QStringList{"b c", "a"}));
}

void StringSelectTest::duplicatesAreKeptWhenWanted()
{
    KyStringSelect box("words", {"a", "b"});
    QVERIFY(box.addStringAtTop("b", true));
    QCOMPARE(stored("words"), (QStringList{"b", "a", "b"}));
}

void StringSelectTest::capacityIsTwenty()
{
    KyStringSelect box("words", letters(19));
    QVERIFY(box.addStringAtTop("new", false));
    QCOMPARE(stored("words"), QStringList{"new"} + letters(19));
    QVERIFY(box.addStringAtTop("newer", false));
    QCOMPARE(stored("words"), (QStringList{"newer", "new"} + letters(18)));
}

void StringSelectTest::allEqualToTheLastGoTogether()
{
    KyStringSelect box("words", {"z", "a", "z", "b", "z"});
    box.setMax(5);
    QVERIFY(box.addStringAtTop("new", false));
    QCOMPARE(stored("words"), (QStringList{"new", "a", "b"}));
}

void StringSelectTest::moveToTheTopOfAFullListLosesNothing()
{
    KyStringSelect box("words", {"a", "b", "c"});
    box.setMax(3);
    QVERIFY(box.addStringAtTop("b", false));
    QCOMPARE(stored("words"), (QStringList{"b", "a", "c"}));
}

void StringSelectTest::loweringTheCapacityTakesOneAnAddition()
{
    KyStringSelect box("words", letters(10));
    box.setMax(3);
    QVERIFY(box.addStringAtTop("new", false));
    QCOMPARE(stored("words"), QStringList{"new"} + letters(9));
    QVERIFY(box.addStringAtTop("newer", false));
    QCOMPARE(stored("words"), (QStringList{"newer", "new"} + letters(8)));
}

void StringSelectTest::settingTheCapacityCutsNothing()
{
    KyStringSelect box("words", letters(10));
    box.setMax(3);
    box.reload();
    QCOMPARE(shown(box), letters(10));
    box.write();
    QCOMPARE(stored("words"), letters(10));
}

void StringSelectTest::capacityOfNothingKeepsTheNewest_data()
{
    QTest::addColumn<int>("max");
    QTest::newRow("zero") << 0;
    QTest::newRow("less than zero") << -5;
}

void StringSelectTest::capacityOfNothingKeepsTheNewest()
{
    QFETCH(int, max);
    KyStringSelect box("words", {});
    box.setMax(max);
    QVERIFY(box.addStringAtTop("a", false));
    QVERIFY(box.addStringAtTop("b", false));
    QCOMPARE(stored("words"), QStringList{"b"});
}

void StringSelectTest::separatorInsideAString_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("in the middle") << "a;b";
    QTest::newRow("at the ends") << ";a;";
    QTest::newRow("alone") << ";";
    QTest::newRow("behind a backslash") << "a\\;b";
    QTest::newRow("backslash at the end") << "a\\";
    QTest::newRow("backslashes") << "\\\\;\\";
    QTest::newRow("equals sign and brackets") << "[group] a = b # c";
    QTest::newRow("Japanese") << QString::fromUtf8("\u691c\u7d22;\u8a9e");
}

void StringSelectTest::separatorInsideAString()
{
    QFETCH(QString, text);
    KyStringSelect box("words", {"last"});
    QVERIFY(box.addStringAtTop("second", false));
    QVERIFY(box.addStringAtTop(text, false));
    QCOMPARE(stored("words"), (QStringList{text, "second", "last"}));
}

void StringSelectTest::settingsThatCannotBeWritten()
{
    QFile obstacle(settingsFolder()); // a file where the folder should be
    QVERIFY(obstacle.open(QIODevice::WriteOnly));
    KyStringSelect box("words", {"one"});
    const LogCapture log;
    QVERIFY(box.addStringAtTop("two", false));
    QVERIFY(!log.warnings().isEmpty());
    box.reload();
    QCOMPARE(shown(box), (QStringList{"two", "one"}));
}

void StringSelectTest::boxMayBeNarrowerThanItsStrings()
{
    const KyStringSelect empty("empty", {});
    const KyStringSelect box("words", {QString(200, 'W')});
    QCOMPARE(box.sizeHint().width(), empty.sizeHint().width());
    QCOMPARE(box.minimumSizeHint().width(), empty.minimumSizeHint().width());
    QVERIFY(box.minimumSizeHint().width() >= box.fontMetrics().horizontalAdvance(QString(8, 'X')));
}

void StringSelectTest::stringsToTryTheBoxWith()
{
    const QStringList strings = KyStringSelect::testStrings();
    QCOMPARE(strings.first(4), (QStringList{"aaa", "bbb", "ccc", "ddd"}));
    QVERIFY(strings.size() > 4);
    QCOMPARE(shown(KyStringSelect("words", strings)), strings);
}

QTEST_MAIN(StringSelectTest)
#include "stringselecttest.moc"
