#include "powerduty.h"
#include "logcapture.h"
#include "messagesender.h"
#include "platformservice.h"
#include "privatebus.h"
#include <fcntl.h>
#include <poll.h>
#include <QDBusContext>
#include <QtTest>
#include <unistd.h>

namespace {

QString sessionAddress()
{
    return qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
}

void sendMode(int mode)
{
    QCopChannel::send("QPE/System", "setScreenSaverMode(int)", dataOf(qint32(mode)));
}

void sendMode(MessageSender &sender, int mode)
{
    sender.send("QPE/System", "setScreenSaverMode(int)", dataOf(qint32(mode)));
}

} // namespace

enum class Answer { Give, Refuse, Wait };

/** The login manager: gives the writing end of a pipe, whose reading end tells when it is closed. */
class LoginManager : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")
public:
    explicit LoginManager(const QString &address) : connection(address)
    {
        connection.bus.registerObject("/org/freedesktop/login1", this, QDBusConnection::ExportAllSlots);
        connection.bus.registerService("org.freedesktop.login1");
    }
    ~LoginManager() override
    {
        for (const Inhibitor &inhibitor : m_inhibitors)
            ::close(inhibitor.fd);
    }

    /** What is inhibited now, in the order of asking. */
    [[nodiscard]] QStringList inForce() const
    {
        QStringList names;
        for (const Inhibitor &inhibitor : m_inhibitors) {
            pollfd end{inhibitor.fd, POLLIN, 0};
            if (::poll(&end, 1, 0) == 0)
                names.append(inhibitor.what);
        }
        return names;
    }

    /** Answers what was kept waiting. */
    void answerAll()
    {
        answer = Answer::Give;
        for (const QDBusMessage &call : std::exchange(m_waiting, {}))
            connection.bus.send(
                call.createReply(QVariant::fromValue(give(call.arguments().value(0).toString()))));
    }

    /** Answers what was kept waiting with something else than a descriptor. */
    void answerWith(const QString &text)
    {
        for (const QDBusMessage &call : std::exchange(m_waiting, {}))
            connection.bus.send(call.createReply(text));
    }

    Answer answer = Answer::Give;
    QStringList asked;         ///< the kinds of all calls
    QVariantList lastCall;     ///< arguments
    QStringList beforeLast;    ///< what was in force when the last call came
    TestConnection connection; // the last to go: with it the service ends

public slots:
    QDBusUnixFileDescriptor Inhibit(const QString &what, const QString &who, const QString &why,
                                    const QString &mode)
    {
        beforeLast = inForce();
        asked.append(what);
        lastCall = {what, who, why, mode};
        if (answer == Answer::Give)
            return give(what);
        if (answer == Answer::Refuse) {
            sendErrorReply(QDBusError::AccessDenied, "not allowed");
        } else {
            setDelayedReply(true);
            m_waiting.append(message());
        }
        return {};
    }

private:
    struct Inhibitor
    {
        QString what;
        int fd;
    };

    QDBusUnixFileDescriptor give(const QString &what)
    {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0)
            return {};
        m_inhibitors.append({what, ends[0]});
        QDBusUnixFileDescriptor descriptor;
        descriptor.giveFileDescriptor(ends[1]);
        return descriptor;
    }

    QList<Inhibitor> m_inhibitors;
    QList<QDBusMessage> m_waiting;
};

/** The desktop's screen saver. */
class ScreenSaver : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")
public:
    ScreenSaver() : connection(sessionAddress())
    {
        connection.bus.registerObject("/org/freedesktop/ScreenSaver", this, QDBusConnection::ExportAllSlots);
        connection.bus.registerService("org.freedesktop.ScreenSaver");
    }

    [[nodiscard]] bool isHeldOff() const { return !m_numbers.isEmpty(); }
    void answerAll()
    {
        answer = Answer::Give;
        for (const QDBusMessage &call : std::exchange(m_waiting, {}))
            connection.bus.send(call.createReply(QVariant::fromValue(give())));
    }

    Answer answer = Answer::Give;
    int asked = 0;
    int given = 0;
    TestConnection connection;

public slots:
    uint Inhibit(const QString &, const QString &)
    {
        ++asked;
        if (answer == Answer::Give)
            return give();
        if (answer == Answer::Refuse) {
            sendErrorReply(QDBusError::AccessDenied, "not allowed");
        } else {
            setDelayedReply(true);
            m_waiting.append(message());
        }
        return 0;
    }
    void UnInhibit(uint number) { m_numbers.remove(number); }

private:
    uint give()
    {
        const uint number = 4000000000U + uint(++given); // more than an int holds
        m_numbers.insert(number);
        return number;
    }

    QSet<uint> m_numbers;
    QList<QDBusMessage> m_waiting;
};

class PowerDutyTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void modesInSequence_data();
    void modesInSequence();
    void inhibitorIsABlockInOneName();
    void changeOfModeLeavesNoGap();
    void strictestOfTwoSendersCounts();
    void modeEndsWithItsSender_data();
    void modeEndsWithItsSender();
    void modeOfSenderThatEndedBeforeIsReleased();

    void refusedIdlePartHoldsOffScreenSaver();
    void repeatedModeIsLoggedOnce();
    void refusalIsToldOnce();
    void refusedChangeKeepsTheSmallerInhibitor();
    void refusedChangeLetsGoOfTheLargerInhibitor();
    void wrongAnswerIsARefusal();
    void missingSystemBusIsToldOnce();
    void deathOfSystemBusIsSurvived();
    void silentLoginManagerIsGivenUpAndStillHeard();
    void lateAnswerToWithdrawnQuestionIsClosed();
    void oneQuestionAtATime();
    void loginManagerThatComesLaterIsAsked();
    void loginManagerThatStartsAgainIsAskedAgain();

    void screenSaverThatComesLaterIsHeldOff();
    void screenSaverThatStartsAgainIsHeldOffAgain();
    void lateNumberOfScreenSaverIsGivenBack();
    void refusalOfScreenSaverIsSurvived();

    void malformedMessagesAreIgnored_data();
    void malformedMessagesAreIgnored();
    void randomBytesDoNoHarm();
    void endOfDutyLetsGoOfEverything();
    void endOfServiceClosesInhibitor_data();
    void endOfServiceClosesInhibitor();
    void serviceRunsWithoutSystemBus();

private:
    void startDuty();
    void startLoginManager() { m_login = std::make_unique<LoginManager>(m_systemBus->address()); }
    /** Lets everything that was sent arrive, and what it leads to. */
    void settleAll();
    /** What is inhibited, with " saver" when the screen saver is held off. */
    [[nodiscard]] QString state() const;

    std::unique_ptr<PrivateBus> m_systemBus;
    std::unique_ptr<TestConnection> m_system; ///< that of the duty
    std::unique_ptr<LoginManager> m_login;
    std::unique_ptr<ScreenSaver> m_saver;
    std::unique_ptr<PowerDuty> m_duty;
};

void PowerDutyTest::init()
{
    m_systemBus = std::make_unique<PrivateBus>();
    m_saver = std::make_unique<ScreenSaver>();
    startLoginManager();
}

void PowerDutyTest::cleanup()
{
    m_duty.reset();
    m_system.reset();
    m_login.reset();
    m_saver.reset();
    m_systemBus.reset();
}

void PowerDutyTest::startDuty()
{
    m_system = std::make_unique<TestConnection>(m_systemBus->address());
    m_duty = std::make_unique<PowerDuty>(m_system->bus, SessionBus::connection());
}

void PowerDutyTest::settleAll()
{
    QList<QDBusConnection> connections{SessionBus::connection()};
    if (m_system)
        connections.append(m_system->bus);
    if (m_login)
        connections.append(m_login->connection.bus);
    if (m_saver)
        connections.append(m_saver->connection.bus);
    settle(connections);
}

QString PowerDutyTest::state() const
{
    const QString inhibited = m_login ? m_login->inForce().join(',') : QString();
    return m_saver && m_saver->isHeldOff() ? inhibited + " saver" : inhibited;
}

void PowerDutyTest::modesInSequence_data()
{
    QTest::addColumn<QList<int>>("modes");
    QTest::addColumn<QString>("expected");
    QTest::newRow("nothing") << QList<int>{200} << "";
    QTest::newRow("keep running") << QList<int>{0} << "sleep";
    QTest::newRow("keep lit") << QList<int>{2} << "sleep:idle";
    QTest::newRow("no saver alone") << QList<int>{300} << " saver";
    QTest::newRow("keep running, no saver") << QList<int>{0, 300} << "sleep saver";
    QTest::newRow("keep lit, no saver") << QList<int>{2, 300} << "sleep:idle saver";
    QTest::newRow("from running to lit") << QList<int>{0, 2} << "sleep:idle";
    QTest::newRow("from lit to running") << QList<int>{2, 0} << "sleep";
    QTest::newRow("the same again") << QList<int>{2, 2, 2} << "sleep:idle";
    QTest::newRow("released") << QList<int>{2, 200} << "";
    QTest::newRow("released with saver") << QList<int>{2, 300, 200} << "";
    QTest::newRow("released twice") << QList<int>{0, 200, 200} << "";
    QTest::newRow("next mode lets the saver start") << QList<int>{2, 300, 0} << "sleep";
    QTest::newRow("on, off, on") << QList<int>{2, 200, 0} << "sleep";
    QTest::newRow("unknown mode alone") << QList<int>{1} << "";
    QTest::newRow("unknown mode changes nothing") << QList<int>{2, 300, -1, 1, 201} << "sleep:idle saver";
}

void PowerDutyTest::modesInSequence()
{
    QFETCH(QList<int>, modes);
    QFETCH(QString, expected);
    startDuty();
    for (const int mode : modes) {
        sendMode(mode);
        settleAll();
    }
    QTRY_COMPARE(state(), expected);
}

void PowerDutyTest::inhibitorIsABlockInOneName()
{
    startDuty();
    sendMode(2);
    QTRY_COMPARE(m_login->asked.size(), 1);
    const QVariantList expected{"sleep:idle", "libky", "An application keeps the device awake", "block"};
    QCOMPARE(m_login->lastCall, expected);
}

void PowerDutyTest::changeOfModeLeavesNoGap()
{
    startDuty();
    sendMode(0);
    QTRY_COMPARE(state(), "sleep");
    sendMode(2);
    QTRY_COMPARE(state(), "sleep:idle");
    QCOMPARE(m_login->beforeLast, QStringList{"sleep"});
}

void PowerDutyTest::strictestOfTwoSendersCounts()
{
    startDuty();
    MessageSender first, second;
    sendMode(first, 0);
    QTRY_COMPARE(state(), "sleep");
    sendMode(second, 2);
    QTRY_COMPARE(state(), "sleep:idle");
    sendMode(second, 300);
    QTRY_COMPARE(state(), "sleep:idle saver");
    sendMode(first, 200);
    sendMode(first, 0);
    sendMode(second, 200);
    QTRY_COMPARE(state(), "sleep");
    sendMode(first, 200);
    QTRY_COMPARE(state(), "");
}

void PowerDutyTest::modeEndsWithItsSender_data()
{
    QTest::addColumn<bool>("killed");
    QTest::newRow("killed") << true;
    QTest::newRow("ended") << false;
}

void PowerDutyTest::modeEndsWithItsSender()
{
    QFETCH(bool, killed);
    startDuty();
    MessageSender first, second;
    sendMode(first, 0);
    sendMode(second, 2);
    sendMode(second, 300);
    QTRY_COMPARE(state(), "sleep:idle saver");
    if (killed)
        second.kill();
    else
        QCOMPARE(second.finish(), 0);
    QTRY_COMPARE(state(), "sleep");
    first.kill();
    QTRY_COMPARE(state(), "");
}

void PowerDutyTest::modeOfSenderThatEndedBeforeIsReleased()
{
    startDuty();
    QProcess sender;
    sender.start(QCoreApplication::applicationFilePath(), {"--child", "send"});
    sender.write("QPE/System setScreenSaverMode(int) " + dataOf(qint32(2)).toHex() + '\n');
    sender.closeWriteChannel();
    QVERIFY(sender.waitForFinished()); // without an event of this process
    SessionBus::flush();               // the bus has seen the end
    QTRY_COMPARE(m_login->asked, QStringList{"sleep:idle"});
    QTRY_COMPARE(state(), "");
}

void PowerDutyTest::refusedIdlePartHoldsOffScreenSaver()
{
    m_login->answer = Answer::Refuse;
    startDuty();
    sendMode(2);
    QTRY_COMPARE(state(), " saver");
    sendMode(0);
    QTRY_COMPARE(state(), "");
    sendMode(2);
    QTRY_COMPARE(state(), " saver");
    m_login->answer = Answer::Give;
    sendMode(0);
    QTRY_COMPARE(state(), "sleep");
    sendMode(2);
    QTRY_COMPARE(state(), "sleep:idle");
}

void PowerDutyTest::repeatedModeIsLoggedOnce()
{
    startDuty();
    LogCapture log;
    for (const int mode : {2, 2, 2, 200, 200, 7})
        sendMode(mode);
    QTRY_COMPARE(log.lines().filter("screen saver mode 200").size(), 1);
    settleAll();
    QCOMPARE(log.lines().filter("screen saver mode").size(), 2);
}

void PowerDutyTest::refusalIsToldOnce()
{
    m_login->answer = Answer::Refuse;
    startDuty();
    LogCapture log;
    for (const int mode : {2, 0, 2, 200, 2}) {
        sendMode(mode);
        settleAll();
    }
    QTRY_COMPARE(m_login->asked.size(), 4);
    settleAll();
    QCOMPARE(log.lines().filter("not allowed"),
             QStringList{"kyplatformd: the login manager inhibits nothing: not allowed"});
    QVERIFY(log.warnings().isEmpty());
}

void PowerDutyTest::refusedChangeKeepsTheSmallerInhibitor()
{
    startDuty();
    sendMode(0);
    QTRY_COMPARE(state(), "sleep");
    m_login->answer = Answer::Refuse;
    sendMode(2);
    QTRY_COMPARE(state(), "sleep saver");
}

void PowerDutyTest::refusedChangeLetsGoOfTheLargerInhibitor()
{
    startDuty();
    sendMode(2);
    QTRY_COMPARE(state(), "sleep:idle");
    m_login->answer = Answer::Refuse;
    sendMode(0);
    QTRY_COMPARE(state(), "");
}

void PowerDutyTest::wrongAnswerIsARefusal()
{
    m_login->answer = Answer::Wait;
    startDuty();
    sendMode(2);
    QTRY_COMPARE(m_login->asked.size(), 1);
    m_login->answerWith("a text");
    QTRY_COMPARE(state(), " saver");
}

void PowerDutyTest::missingSystemBusIsToldOnce()
{
    LogCapture log;
    m_duty = std::make_unique<PowerDuty>(QDBusConnection("no bus"), SessionBus::connection());
    QCOMPARE(log.lines(), QStringList());
    for (const int mode : {0, 2, 200, 2})
        sendMode(mode);
    QTRY_COMPARE(state(), " saver");
    QCOMPARE(log.lines().filter("bus"),
             QStringList{"kyplatformd: the login manager inhibits nothing: there is no system bus"});
    sendMode(200);
    QTRY_COMPARE(state(), "");
}

void PowerDutyTest::deathOfSystemBusIsSurvived()
{
    startDuty();
    sendMode(0);
    QTRY_COMPARE(state(), "sleep");
    m_login->answer = Answer::Wait;
    sendMode(2);
    QTRY_COMPARE(m_login->asked.size(), 2);
    m_systemBus->kill(); // with a question under way
    QTRY_COMPARE(state(), "sleep saver");
    sendMode(200);
    QTRY_COMPARE(state(), "");
}

void PowerDutyTest::silentLoginManagerIsGivenUpAndStillHeard()
{
    m_login->answer = Answer::Wait;
    startDuty();
    QElapsedTimer clock;
    clock.start();
    sendMode(2);
    QTRY_COMPARE_WITH_TIMEOUT(state(), " saver", LoginInhibitor::AnswerTime + 10000);
    QVERIFY(clock.elapsed() >= LoginInhibitor::AnswerTime * 9 / 10);
    m_login->answerAll();
    QTRY_COMPARE(state(), "sleep:idle");
}

void PowerDutyTest::lateAnswerToWithdrawnQuestionIsClosed()
{
    m_login->answer = Answer::Wait;
    startDuty();
    sendMode(2);
    QTRY_COMPARE(m_login->asked.size(), 1);
    sendMode(200);
    settleAll();
    m_login->answerAll();
    settleAll();
    QTRY_COMPARE(state(), "");
    QCOMPARE(m_login->asked.size(), 1);
    sendMode(0);
    QTRY_COMPARE(state(), "sleep");
}

void PowerDutyTest::oneQuestionAtATime()
{
    m_login->answer = Answer::Wait;
    startDuty();
    for (int i = 0; i < 100; ++i) {
        sendMode(0);
        sendMode(200);
    }
    sendMode(2);
    settleAll();
    QTRY_COMPARE(m_login->asked, QStringList{"sleep"});
    m_login->answerAll();
    QTRY_COMPARE(state(), "sleep:idle");
    const QStringList both{"sleep", "sleep:idle"};
    QCOMPARE(m_login->asked, both);
}

void PowerDutyTest::loginManagerThatComesLaterIsAsked()
{
    m_login.reset();
    startDuty();
    sendMode(2);
    QTRY_COMPARE(state(), " saver");
    startLoginManager();
    QTRY_COMPARE(state(), "sleep:idle");
}

void PowerDutyTest::loginManagerThatStartsAgainIsAskedAgain()
{
    startDuty();
    sendMode(2);
    QTRY_COMPARE(state(), "sleep:idle");
    m_login.reset();
    startLoginManager();
    QTRY_COMPARE(state(), "sleep:idle");
    sendMode(200);
    QTRY_COMPARE(state(), "");
    m_login.reset();
    startLoginManager();
    settleAll();
    QCOMPARE(m_login->asked, QStringList());
}

void PowerDutyTest::screenSaverThatComesLaterIsHeldOff()
{
    m_saver.reset();
    startDuty();
    sendMode(300);
    settleAll();
    m_saver = std::make_unique<ScreenSaver>();
    QTRY_COMPARE(state(), " saver");
    sendMode(200);
    QTRY_COMPARE(state(), "");
}

void PowerDutyTest::screenSaverThatStartsAgainIsHeldOffAgain()
{
    startDuty();
    sendMode(300);
    QTRY_COMPARE(state(), " saver");
    m_saver.reset();
    m_saver = std::make_unique<ScreenSaver>();
    QTRY_COMPARE(state(), " saver");
    sendMode(200);
    QTRY_COMPARE(state(), "");
}

void PowerDutyTest::lateNumberOfScreenSaverIsGivenBack()
{
    m_saver->answer = Answer::Wait;
    startDuty();
    for (const int mode : {300, 200, 300, 200})
        sendMode(mode);
    QTRY_COMPARE(m_saver->asked, 1);
    settleAll();
    QCOMPARE(m_saver->asked, 1);
    m_saver->answerAll();
    QTRY_COMPARE(state(), "");
    QCOMPARE(m_saver->given, 1);
    sendMode(300);
    QTRY_COMPARE(state(), " saver");
}

void PowerDutyTest::refusalOfScreenSaverIsSurvived()
{
    m_saver->answer = Answer::Refuse;
    startDuty();
    sendMode(300);
    QTRY_COMPARE(m_saver->asked, 1);
    settleAll();
    QCOMPARE(m_saver->asked, 1);
    m_saver->answer = Answer::Give;
    sendMode(200);
    sendMode(300);
    QTRY_COMPARE(state(), " saver");
}

void PowerDutyTest::malformedMessagesAreIgnored_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("data");
    const QByteArray right = "setScreenSaverMode(int)";
    QTest::newRow("no argument") << right << QByteArray();
    QTest::newRow("three bytes") << right << QByteArray(3, '\0');
    QTest::newRow("without signature") << QByteArray("setScreenSaverMode") << dataOf(qint32(2));
    QTest::newRow("other signature") << QByteArray("setScreenSaverMode(bool)") << dataOf(qint32(2));
    QTest::newRow("no message") << QByteArray() << dataOf(qint32(2));
}

void PowerDutyTest::malformedMessagesAreIgnored()
{
    QFETCH(QByteArray, message);
    QFETCH(QByteArray, data);
    startDuty();
    QCopChannel::send("QPE/System", message, data);
    settleAll();
    QCOMPARE(m_login->asked, QStringList());
    sendMode(2);
    QTRY_COMPARE(state(), "sleep:idle");
    QCopChannel::send("QPE/System", message, data);
    settleAll();
    QCOMPARE(state(), "sleep:idle");
}

void PowerDutyTest::randomBytesDoNoHarm()
{
    startDuty();
    QRandomGenerator random(8);
    for (int i = 0; i < 500; ++i)
        QCopChannel::send("QPE/System", "setScreenSaverMode(int)", randomBytes(random));
    sendMode(2);
    QTRY_COMPARE(state(), "sleep:idle");
    sendMode(200);
    QTRY_COMPARE(state(), "");
}

void PowerDutyTest::endOfDutyLetsGoOfEverything()
{
    startDuty();
    sendMode(2);
    sendMode(300);
    QTRY_COMPARE(state(), "sleep:idle saver");
    settleAll(); // the answers have arrived, too
    m_duty.reset();
    QTRY_COMPARE(state(), "");
}

void PowerDutyTest::endOfServiceClosesInhibitor_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGKILL") << SIGKILL;
}

void PowerDutyTest::endOfServiceClosesInhibitor()
{
    QFETCH(int, number);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("DBUS_SYSTEM_BUS_ADDRESS", m_systemBus->address());
    PlatformService service(environment);
    QVERIFY(service.isReady());
    sendMode(2);
    QTRY_COMPARE(state(), "sleep:idle");
    service.signal(number);
    QCOMPARE(service.exitCode(), number == SIGTERM ? 0 : -1);
    QTRY_COMPARE(state(), "");
}

void PowerDutyTest::serviceRunsWithoutSystemBus()
{
    PlatformService service;
    QVERIFY(service.isReady());
    sendMode(2);
    QTRY_COMPARE(state(), " saver");
    service.signal(SIGTERM);
    QCOMPARE(service.exitCode(), 0);
    QTRY_COMPARE(state(), "");
}

KY_TEST_MAIN_WITH_CHILD(PowerDutyTest, childMain)
#include "powerdutytest.moc"
