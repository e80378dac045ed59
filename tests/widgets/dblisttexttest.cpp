#include "config.h"
#include "dblistfixture.h"
#include "logcapture.h"
#include "qcopchannel.h"
#include "qcopenvelope.h"
#include <QtTest>

namespace {

constexpr char Channel[] = "QPE/System";
constexpr char ClockChange[] = "clockChange(bool)";

int settingsRead = 0;

QString settingsFile()
{
    return QDir::homePath() + "/Settings/qpe.conf";
}

void writeSetting(const QString &group, const QString &key, const QString &value)
{
    Config settings("qpe");
    settings.setGroup(group);
    settings.writeEntry(key, value);
}

void sendClock(bool ampm)
{
    QCopEnvelope envelope(Channel, ClockChange);
    envelope << ampm;
}

QByteArray streamed(bool ampm)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QCopEnvelope::StreamVersion);
    stream << ampm;
    return bytes;
}

/** A list of one card with a time, 2003-04-05 17:06. */
std::unique_ptr<ListedBox> boxWithATime()
{
    auto box = std::make_unique<ListedBox>(QStringList{"a"});
    const bool isWritten = box->write(box->cards[0], "TIME", QDateTime(QDate(2003, 4, 5), QTime(17, 6)));
    return isWritten ? std::move(box) : nullptr;
}

constexpr char TwelveHours[] = "2003/04/05 5:06 PM";
constexpr char TwentyFourHours[] = "2003/04/05 17:06";

} // namespace

/** Tells where the clock is looked up. */
extern "C" Q_DECL_EXPORT int open64(const char *path, int flags, ...)
{
    static const auto next = nextDefinition<int(const char *, int, mode_t)>("open64");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = va_arg(arguments, mode_t);
    va_end(arguments);
    settingsRead += path && QByteArray(path).endsWith("/qpe.conf");
    return next(path, flags, mode);
}

/** What the list of a box writes into its cells. */
class DbListTextTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void textOfEachEncoding_data();
    void textOfEachEncoding();
    void firstLineOnly_data();
    void firstLineOnly();
    void itemThatIsEmpty();
    void timeWithDate();
    void dateAlone();
    void timeInTheUsersOrder();
    void timeThatIsStoredInUtc();
    void itemsOfOtherTypes_data();
    void itemsOfOtherTypes();
    void itemThatTheBoxDoesNotHave();
    void listWithoutAManager();
    void codeOfFewerCharacters();
    void clockOfTheSettings_data();
    void clockOfTheSettings();
    void clockChangeRepaintsTimes();
    void clockChangeTakesNoSettings();
    void clockChangeOfAnotherProcess();
    void messagesThatChangeNothing_data();
    void messagesThatChangeNothing();
};

void DbListTextTest::init()
{
    QFile::remove(settingsFile());
}

void DbListTextTest::textOfEachEncoding_data()
{
    QTest::addColumn<QByteArray>("code");
    QTest::newRow("UTF-8") << QByteArray("TITL");
    QTest::newRow("Shift-JIS") << QByteArray("SJIS");
    QTest::newRow("other Shift-JIS") << QByteArray("SJI2");
}

void DbListTextTest::textOfEachEncoding()
{
    QFETCH(QByteArray, code);
    ListedBox box({"a"});
    const QString text = QString::fromUtf8("\u5C71\u7530 x");
    QVERIFY(box.write(box.cards[0], code, text));
    box.list.setColumns({listColumn(code, "Text")});
    QCOMPARE(box.list.itemText(1, 0), text);
}

void DbListTextTest::firstLineOnly_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    QTest::newRow("two lines") << "one\ntwo"
                               << "one";
    QTest::newRow("three lines") << "one\ntwo\nthree"
                                 << "one";
    QTest::newRow("empty first line") << "\ntwo"
                                      << "";
    QTest::newRow("end of the line only") << "one\n"
                                          << "one";
    QTest::newRow("one line") << "one two"
                              << "one two";
}

void DbListTextTest::firstLineOnly()
{
    QFETCH(QString, text);
    for (const char *code : {"TITL", "SJIS", "SJI2"}) {
        ListedBox box({"a"});
        QVERIFY(box.write(box.cards[0], code, text));
        box.list.setColumns({listColumn(code, "Text")});
        QTEST(box.list.itemText(1, 0), "shown");
    }
}

void DbListTextTest::itemThatIsEmpty()
{
    ListedBox box({"a"});
    box.list.setColumns({listColumn("SJIS", "Text"), listColumn("TIME", "When")});
    LogCapture log;
    QCOMPARE(box.list.itemText(1, 0), QString());
    QCOMPARE(box.list.itemText(1, 1), QString());
    QCOMPARE(log.lines(), QStringList());
}

void DbListTextTest::timeWithDate()
{
    const auto box = boxWithATime();
    QVERIFY(box);
    QCOMPARE(box->list.itemText(1, 1), TwelveHours);
}

void DbListTextTest::dateAlone()
{
    ListedBox box({"a"});
    QVERIFY(box.write(box.cards[0], "TIME", QDate(2003, 4, 5)));
    QCOMPARE(box.list.itemText(1, 1), "2003/04/05 12:00 AM"); // a date with no time reads as midnight
}

void DbListTextTest::timeInTheUsersOrder()
{
    const auto box = boxWithATime();
    QVERIFY(box);
    writeSetting("Date", "Order", "DMY");
    writeSetting("Date", "Separator", ".");
    QCOMPARE(box->list.itemText(1, 1), "05.04.2003 5:06 PM");
}

void DbListTextTest::timeThatIsStoredInUtc()
{
    const auto box = boxWithATime();
    QVERIFY(box);
    QVERIFY(box->manager->setInternalUtc("TIME"));
    QCOMPARE(box->list.itemText(1, 1), "2003/04/06 2:06 AM"); // nine hours later
}

void DbListTextTest::itemsOfOtherTypes_data()
{
    QTest::addColumn<QByteArray>("code");
    for (const char *code : {"NUMB", "FLAG", "SHRT", "SALT", "LONG", "BINA", "COLR", "CTGR"})
        QTest::newRow(code) << QByteArray(code);
}

void DbListTextTest::itemsOfOtherTypes()
{
    QFETCH(QByteArray, code);
    ListedBox box({"a"});
    box.list.setColumns({listColumn(code, "Other")});
    LogCapture log;
    QVERIFY(box.list.itemText(1, 0).isNull());
    QCOMPARE(log.lines(), QStringList{"unexpected item type for itemText."});
}

void DbListTextTest::itemThatTheBoxDoesNotHave()
{
    ListedBox box({"a"});
    box.list.setColumns({listColumn("NONE", "None")});
    LogCapture log;
    QVERIFY(box.list.itemText(1, 0).isNull());
    QCOMPARE(log.lines(), QStringList{"no such item"});
}

void DbListTextTest::listWithoutAManager()
{
    const KyDbListView list;
    LogCapture log;
    QVERIFY(list.itemText(1, 0).isNull());
    QCOMPARE(log.lines(), QStringList{"[KyDbListView::itemText] unexpected NULL"});
}

void DbListTextTest::codeOfFewerCharacters()
{
    ListedBox box({"a"});
    box.list.setColumns({listColumn("TIT\0", "Title")}); // is no shorter name of TITL
    LogCapture log;
    QVERIFY(box.list.itemText(1, 0).isNull());
    QCOMPARE(log.lines(), QStringList{"no such item"});
}

void DbListTextTest::clockOfTheSettings_data()
{
    QTest::addColumn<QString>("setting");
    QTest::addColumn<QString>("shown");
    QTest::newRow("none") << "" << TwelveHours;
    QTest::newRow("twelve hours") << "1" << TwelveHours;
    QTest::newRow("twenty-four hours") << "0" << TwentyFourHours;
}

void DbListTextTest::clockOfTheSettings()
{
    QFETCH(QString, setting);
    if (!setting.isEmpty())
        writeSetting("Time", "AMPM", setting);
    const auto box = boxWithATime();
    QVERIFY(box);
    QTEST(box->list.itemText(1, 1), "shown");
    writeSetting("Time", "AMPM", setting == "0" ? "1" : "0"); // is for lists that are made later
    QTEST(box->list.itemText(1, 1), "shown");
}

void DbListTextTest::clockChangeRepaintsTimes()
{
    const auto box = boxWithATime();
    QVERIFY(box);
    box->list.resize(400, 100);
    box->list.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box->list));
    struct Paintings : QObject
    {
        bool eventFilter(QObject *, QEvent *event) override
        {
            count += event->type() == QEvent::Paint;
            return false;
        }
        int count = 0;
    } paintings;
    box->list.viewport()->installEventFilter(&paintings);
    QCoreApplication::processEvents();
    paintings.count = 0;
    box->list.systemMessage(ClockChange, streamed(false));
    QTRY_VERIFY_WITH_TIMEOUT(paintings.count > 0, 10000);
    QCOMPARE(box->list.itemText(1, 1), TwentyFourHours);
    sendClock(true);
    QTRY_COMPARE_WITH_TIMEOUT(box->list.itemText(1, 1), TwelveHours, 10000);
}

void DbListTextTest::clockChangeTakesNoSettings()
{
    const auto box = boxWithATime();
    QVERIFY(box);
    writeSetting("Time", "AMPM", "1");
    settingsRead = 0;
    box->list.systemMessage(ClockChange, streamed(false));
    QCOMPARE(settingsRead, 0);
    QCOMPARE(box->list.itemText(1, 1), TwentyFourHours);
    QVERIFY(settingsRead > 0); // the order of dates is looked up for each text
}

void DbListTextTest::clockChangeOfAnotherProcess()
{
    const auto box = boxWithATime();
    QVERIFY(box);
    ListedBox second;
    second.list.setDb(box->manager.get());
    sendClock(false);
    QTRY_COMPARE_WITH_TIMEOUT(box->list.itemText(1, 1), TwentyFourHours, 10000);
    QTRY_COMPARE_WITH_TIMEOUT(second.list.itemText(1, 1), TwentyFourHours, 10000);
}

void DbListTextTest::messagesThatChangeNothing_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("nothing in it") << QByteArray(ClockChange) << QByteArray();
    QTest::newRow("of the same name") << QByteArray("clockChange()") << streamed(false);
    QTest::newRow("other") << QByteArray("timeChange(QString)") << streamed(false);
    QTest::newRow("nameless") << QByteArray() << streamed(false);
}

void DbListTextTest::messagesThatChangeNothing()
{
    QFETCH(QByteArray, message);
    QFETCH(QByteArray, data);
    const auto box = boxWithATime();
    QVERIFY(box);
    box->list.systemMessage(message, data);
    QCOMPARE(box->list.itemText(1, 1), TwelveHours);
}

QTEST_MAIN(DbListTextTest)
#include "dblisttexttest.moc"
