#include "taskbar.h"
#include "logcapture.h"
#include "messagesender.h"
#include "platformservice.h"
#include <QtTest>

namespace {

void sendTo(const QByteArray &message, const QByteArray &data = QByteArray())
{
    QCopChannel::send("QPE/TaskBar", message, data);
}

void sendLock(MessageSender &sender, qint32 lock)
{
    sender.send("QPE/TaskBar", "lockApplication(bool)", dataOf(lock));
}

/** A `const char *` with a length that need not be its own. */
QByteArray text(quint32 length, const QByteArray &bytes)
{
    return dataOf(length) + bytes;
}

/** A name as an application sends it. */
QByteArray name(const QByteArray &bytes)
{
    return dataOf(bytes.constData());
}

FepState stateOf(bool on, bool visible, int mode = 0, const QString &method = QString())
{
    return {on, true, visible, mode, method};
}

FepState kept()
{
    return FepState::read().value_or(FepState{true, false, true, -1, "none"});
}

} // namespace

class TaskBarTest : public QObject
{
    Q_OBJECT
private slots:
    void init() { m_taskBar = std::make_unique<TaskBar>(SessionBus::connection()); }
    void cleanup() { m_taskBar.reset(); }

    void sessionBeginsOffAndHidden();
    void stateGoesWithTheTaskBar();
    void messagesShowInTheState_data();
    void messagesShowInTheState();
    void oneMessageLeavesTheRestAlone();
    void namesOfInputMethods_data();
    void namesOfInputMethods();
    void argumentsCutShortAreIgnored();
    void changesAreLoggedOnce();
    void floodIsWrittenOnceInAWhile();
    void stateThatCannotBeWrittenIsTold();
    void randomBytesDoNoHarm();

    void lockIsKeptForEachSender();
    void lockEndsWithItsSender();
    void lockCutShortIsIgnored();
    void lockIsLogged();

    void serviceKeepsTheState();
    void stateOfAKilledServiceIsReplaced();

private:
    void settleAll() { settle({SessionBus::connection()}); }
    std::unique_ptr<TaskBar> m_taskBar;
};

void TaskBarTest::sessionBeginsOffAndHidden()
{
    m_taskBar.reset();
    QVERIFY((FepState{true, false, true, 7, "left over"}.write()));
    m_taskBar = std::make_unique<TaskBar>(SessionBus::connection());
    QVERIFY(FepState::read() == FepState());
}

void TaskBarTest::stateGoesWithTheTaskBar()
{
    QVERIFY(QFile::exists(FepState::file()));
    m_taskBar.reset();
    QVERIFY(!QFile::exists(FepState::file()));
}

void TaskBarTest::messagesShowInTheState_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<FepState>("before");
    QTest::addColumn<FepState>("after");
    const FepState none, on = stateOf(true, false), shown = stateOf(false, true);
    QTest::newRow("on") << QByteArray("inputFepOnReq") << QByteArray() << none << on;
    QTest::newRow("off") << QByteArray("inputFepOffReq") << QByteArray() << on << none;
    QTest::newRow("shown") << QByteArray("showInputMethod()") << QByteArray() << none << shown;
    QTest::newRow("hidden") << QByteArray("hideInputMethod()") << QByteArray() << shown << none;
    QTest::newRow("mode") << QByteArray("inputFepModeChangedReq()") << dataOf(qint32(130)) << none
                          << stateOf(false, false, 130);
    QTest::newRow("negative mode") << QByteArray("inputFepModeChangedReq()") << dataOf(qint32(-1)) << none
                                   << stateOf(false, false, -1);
    QTest::newRow("method") << QByteArray("changeInputMethod()") << name("Pickboard") << none
                            << stateOf(false, false, 0, "Pickboard");
    QTest::newRow("on with other signature") << QByteArray("inputFepOnReq()") << QByteArray() << none << none;
    QTest::newRow("mode without signature")
        << QByteArray("inputFepModeChangedReq") << dataOf(qint32(1)) << none << none;
}

void TaskBarTest::messagesShowInTheState()
{
    QFETCH(QByteArray, message);
    QFETCH(QByteArray, data);
    QFETCH(FepState, before);
    QFETCH(FepState, after);
    if (before.on)
        sendTo("inputFepOnReq");
    if (before.visible)
        sendTo("showInputMethod()");
    QTRY_COMPARE(kept(), before);
    sendTo(message, data);
    settleAll();
    QTRY_COMPARE(kept(), after);
}

void TaskBarTest::oneMessageLeavesTheRestAlone()
{
    sendTo("inputFepOnReq");
    sendTo("showInputMethod()");
    sendTo("inputFepModeChangedReq()", dataOf(qint32(5)));
    sendTo("changeInputMethod()", name("Keyboard"));
    QTRY_COMPARE(kept(), stateOf(true, true, 5, "Keyboard"));
    sendTo("hideInputMethod()");
    QTRY_COMPARE(kept(), stateOf(true, false, 5, "Keyboard"));
}

void TaskBarTest::namesOfInputMethods_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("expected");
    const QString before = "before", kanji = QString(64, QChar(0x6f22));
    const QByteArray longest(64, 'm');
    QTest::newRow("plain") << name("Pickboard") << "Pickboard";
    QTest::newRow("Japanese") << name("手書き") << QString::fromUtf8("手書き");
    QTest::newRow("empty") << name("") << "";
    QTest::newRow("null") << text(0, {}) << "";
    QTest::newRow("64 letters") << name(longest) << QString::fromLatin1(longest);
    QTest::newRow("65 letters") << name(longest + 'm') << before;
    QTest::newRow("64 characters of three bytes") << name(kanji.toUtf8()) << kanji;
    QTest::newRow("64 characters of four bytes")
        << name(QByteArray("𠮷").repeated(64)) << QString::fromUtf8("𠮷").repeated(64);
    QTest::newRow("65 characters of four bytes") << name(QByteArray("𠮷").repeated(65)) << before;
    QTest::newRow("ends at the zero") << text(9, QByteArray("Pen\0Board", 9)) << "Pen";
    QTest::newRow("without zero") << text(3, "Pen") << "Pen";
    QTest::newRow("line feed") << name("Pen\n[Group]") << before;
    QTest::newRow("escape") << name("\x1b[2J") << before;
    QTest::newRow("damaged UTF-8") << name("Pen\xff") << before;
    QTest::newRow("shorter than it says") << text(10, "Pen") << before;
    QTest::newRow("much shorter than it says") << text(0x7fffffff, "Pen") << before;
    QTest::newRow("length of all ones") << text(0xffffffff, "Pen") << before;
    QTest::newRow("negative length") << text(0x80000000, "Pen") << before;
    QTest::newRow("nothing") << QByteArray() << before;
    QTest::newRow("half a length") << QByteArray(2, '\0') << before;
}

void TaskBarTest::namesOfInputMethods()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, expected);
    sendTo("changeInputMethod()", name("before"));
    QTRY_COMPARE(kept().method, "before");
    sendTo("changeInputMethod()", data);
    settleAll();
    QTRY_COMPARE(kept().method, expected);
}

void TaskBarTest::argumentsCutShortAreIgnored()
{
    sendTo("inputFepModeChangedReq()", dataOf(qint32(5)));
    sendTo("inputFepModeChangedReq()", QByteArray(3, '\0'));
    sendTo("inputFepModeChangedReq()");
    sendTo("inputFepOnReq"); // the last to arrive
    QTRY_VERIFY(kept().on);
    QCOMPARE(kept().mode, 5);
}

void TaskBarTest::changesAreLoggedOnce()
{
    LogCapture log;
    for (const char *message : {"inputFepOnReq", "inputFepOnReq"})
        sendTo(message);
    QTRY_VERIFY(kept().on);
    for (const char *message : {"showInputMethod()", "unknown()"})
        sendTo(message);
    QTRY_VERIFY(kept().visible);
    settleAll();
    const QStringList expected{"kyplatformd: input method \"\", mode 0, on, hidden",
                               "kyplatformd: input method \"\", mode 0, on, shown"};
    QCOMPARE(log.lines(), expected);
}

void TaskBarTest::floodIsWrittenOnceInAWhile()
{
    constexpr int count = 2000;
    LogCapture log;
    for (int mode = 1; mode <= count; ++mode)
        sendTo("inputFepModeChangedReq()", dataOf(qint32(mode)));
    // All of them are there before the event loop runs.
    SessionBus::flush();
    QTRY_COMPARE_WITH_TIMEOUT(kept().mode, count, 10000);
    QVERIFY2(log.lines().size() < count / 10, qPrintable(log.lines().join('\n')));
}

void TaskBarTest::stateThatCannotBeWrittenIsTold()
{
    const QString file = FepState::file();
    QVERIFY(QFile::remove(file));
    QVERIFY(QDir().mkpath(file + "/in the way"));
    LogCapture log;
    sendTo("inputFepOnReq");
    sendTo("showInputMethod()");
    QTRY_COMPARE(log.lines().filter("shown").size(), 1);
    QVERIFY(!log.warnings().filter(file).isEmpty());
    QVERIFY(QDir(file).removeRecursively());
    sendTo("hideInputMethod()");
    QTRY_COMPARE(kept(), stateOf(true, false));
}

void TaskBarTest::randomBytesDoNoHarm()
{
    QRandomGenerator random(85);
    for (int i = 0; i < 500; ++i) {
        for (const char *message : {"lockApplication(bool)", "inputFepModeChangedReq()",
                                    "changeInputMethod()", "inputFepOnReq", "hideInputMethod()"})
            sendTo(message, randomBytes(random));
    }
    sendTo("changeInputMethod()", name("after"));
    QTRY_COMPARE(kept().method, "after");
    QVERIFY(kept().on && !kept().visible);
}

void TaskBarTest::lockIsKeptForEachSender()
{
    MessageSender first, second;
    sendLock(first, 1);
    QTRY_VERIFY(m_taskBar->isLocked());
    sendLock(second, 0); // not its own
    second.send("QPE/TaskBar", "inputFepOnReq", {});
    QTRY_VERIFY(kept().on);
    QVERIFY(m_taskBar->isLocked());
    sendLock(second, 1);
    second.send("QPE/TaskBar", "inputFepOffReq", {});
    QTRY_VERIFY(!kept().on);
    sendLock(first, 0);
    first.send("QPE/TaskBar", "inputFepOnReq", {});
    QTRY_VERIFY(kept().on);
    QVERIFY(m_taskBar->isLocked());
    sendLock(second, 0);
    QTRY_VERIFY(!m_taskBar->isLocked());
}

void TaskBarTest::lockEndsWithItsSender()
{
    MessageSender first, second;
    LogCapture log;
    sendLock(first, 1);
    sendLock(second, 1);
    second.send("QPE/TaskBar", "inputFepOnReq", {});
    QTRY_VERIFY(kept().on);
    QTRY_COMPARE(log.lines().filter(" locks").size(), 2);
    first.kill();
    QTRY_COMPARE(log.lines().filter("unlocks").size(), 1);
    QVERIFY(m_taskBar->isLocked());
    second.kill();
    QTRY_VERIFY(!m_taskBar->isLocked());
    QVERIFY(kept().on); // the input method is everybody's
}

void TaskBarTest::lockCutShortIsIgnored()
{
    sendTo("lockApplication(bool)", QByteArray("\1", 1));
    sendTo("lockApplication(bool)");
    settleAll();
    QVERIFY(!m_taskBar->isLocked());
    sendTo("lockApplication(bool)", dataOf(qint32(256)));
    QTRY_VERIFY(m_taskBar->isLocked());
    sendTo("lockApplication(bool)");
    settleAll();
    QVERIFY(m_taskBar->isLocked());
}

void TaskBarTest::lockIsLogged()
{
    LogCapture log;
    for (const qint32 lock : {1, 1, 0, 0})
        sendTo("lockApplication(bool)", dataOf(lock));
    const QString self = SessionBus::connection().baseService();
    const QStringList expected{"kyplatformd: " + self + " locks the task bar",
                               "kyplatformd: " + self + " unlocks the task bar"};
    QTRY_COMPARE(log.lines().size(), expected.size());
    settleAll();
    QCOMPARE(log.lines(), expected);
}

void TaskBarTest::serviceKeepsTheState()
{
    m_taskBar.reset();
    PlatformService service;
    QVERIFY(service.isReady());
    QVERIFY(FepState::read() == FepState());
    sendTo("inputFepOnReq");
    QTRY_VERIFY(kept().on && kept().switchable);
    service.signal(SIGTERM);
    QCOMPARE(service.exitCode(), 0);
    QVERIFY(!QFile::exists(FepState::file()));
}

void TaskBarTest::stateOfAKilledServiceIsReplaced()
{
    m_taskBar.reset();
    PlatformService first;
    QVERIFY(first.isReady());
    sendTo("inputFepOnReq");
    QTRY_VERIFY(kept().on && kept().switchable);
    first.signal(SIGKILL);
    QCOMPARE(first.exitCode(), -1);
    QTRY_VERIFY(!SessionBus::hasOwner(SessionBus::serviceName("platform")));
    PlatformService second;
    QVERIFY(second.isReady());
    QVERIFY(FepState::read() == FepState());
}

KY_TEST_MAIN_WITH_CHILD(TaskBarTest, childMain)
#include "taskbartest.moc"
