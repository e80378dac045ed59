#include "qcopchannel.h"
#include "childprocess.h"
#include "logcapture.h"
#include "privatebus.h"
#include "qcopenvelope.h"
#include "qpeapplication.h"
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QDialog>
#include <QtTest>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace {

using Message = QPair<QByteArray, QByteArray>;

/** Keeps what arrives on a channel. */
struct Listener
{
    explicit Listener(const QByteArray &name) : channel(name)
    {
        QObject::connect(&channel, &QCopChannel::received,
                         [this](const QByteArray &message, const QByteArray &data) {
                             messages.append({message, data});
                         });
    }
    QCopChannel channel;
    QList<Message> messages;
};

bool waitForMessages(const Listener &listener, qsizetype count)
{
    return QTest::qWaitFor([&] { return listener.messages.size() >= count; }, 10000);
}

/** Lets what is under way arrive: a message to ourselves comes behind all of it. */
bool settle()
{
    Listener mark("Test/Settle");
    QCopChannel::send("Test/Settle", "mark()");
    return waitForMessages(mark, 1);
}

QByteArray number(int value)
{
    return QByteArray::number(value);
}

QProcessEnvironment environmentWith(const QString &name, const QString &value)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(name, value);
    return environment;
}

/** A socket on which connections are accepted by the kernel and nobody ever answers. */
class SilentSocket
{
public:
    explicit SilentSocket(const QByteArray &path) : m_path(path), m_fd(::socket(AF_UNIX, SOCK_STREAM, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.constData(), sizeof address.sun_path - 1);
        m_listens = ::bind(m_fd, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0 &&
                    ::listen(m_fd, 5) == 0;
    }
    ~SilentSocket() { ::close(m_fd); }
    [[nodiscard]] bool listens() const { return m_listens; }
    [[nodiscard]] QString address() const { return "unix:path=" + QString::fromLocal8Bit(m_path); }

private:
    QByteArray m_path;
    int m_fd;
    bool m_listens = false;
};

/** Makes a bus silent that has answered so far. */
bool suspend(const PrivateBus &bus)
{
    const QString name = "suspended";
    const auto connection = QDBusConnection::connectToBus(bus.address(), name);
    const QDBusReply<uint> pid = connection.interface()->servicePid("org.freedesktop.DBus");
    const bool stopped = pid.isValid() && ::kill(pid_t(pid.value()), SIGSTOP) == 0;
    QDBusConnection::disconnectFromBus(name);
    return stopped;
}

// What a child does, by role.

/** CHANNEL: says each message, and sends the "CHANNEL MESSAGE" lines of its input. */
int listenAndTell(int argc, char **argv)
{
    QPEApplication application(argc, argv, "child");
    QCopChannel channel(argv[2]);
    QObject::connect(&channel, &QCopChannel::received, [](const QByteArray &message, const QByteArray &data) {
        ChildProcess::say(message + ' ' + data.toHex());
    });
    ChildInput input([](const QByteArray &line) {
        const qsizetype blank = line.indexOf(' ');
        QCopChannel::send(line.left(blank), line.mid(blank + 1));
    });
    ChildProcess::say("ready");
    return application.exec();
}

/** CHANNEL COUNT: sends COUNT messages and returns from main at once. */
int sendAndLeave(int argc, char **argv)
{
    QPEApplication application(argc, argv, "sender");
    for (int i = 0; i < QByteArray(argv[3]).toInt(); ++i)
        QCopChannel::send(argv[2], number(i));
    return 0;
}

/** Makes every thread but this one come last, as under load. */
void starveOtherThreads()
{
    constexpr int Lowest = 19;
    const QStringList threads = QDir("/proc/self/task").entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &thread : threads) {
        if (thread.toInt() != ::gettid())
            ::setpriority(PRIO_PROCESS, thread.toUInt(), Lowest);
    }
}

/** CHANNEL WAY: runs a loop, sends one message as the last thing in it and ends by that way. */
int sendFromLoopAndLeave(int argc, char **argv)
{
    const QByteArray channel = argv[2], way = argv[3];
    auto application = std::make_unique<QCoreApplication>(argc, argv);
    static_cast<void>(QCopChannel::isRunning("nobody")); // there is a connection
    QTimer::singleShot(0, [&] {
        starveOtherThreads();
        QCopChannel::send(channel, "last()");
        if (way == "exit")
            std::exit(0);
        QCoreApplication::quit();
    });
    const int result = QCoreApplication::exec();
    if (way == "object kept")
        static_cast<void>(application.release());
    return result;
}

/** Sends one message when the process has left main(), if that is wished. */
struct LateSender
{
    ~LateSender()
    {
        if (!channel.isEmpty())
            QCopChannel::send(channel, "late()");
    }
    QByteArray channel;
};

/** CHANNEL: sends a message from a global that is older than the connection and so outlives it. */
int sendBehindTheConnection(int, char **argv)
{
    static LateSender sender;
    sender.channel = argv[2];
    return QCopChannel::isRunning("nobody") ? 1 : 0;
}

/** CHANNEL: sends a message from a global that is younger than the connection. */
int sendBeforeTheConnectionEnds(int, char **argv)
{
    if (QCopChannel::isRunning("nobody"))
        return 1;
    static LateSender sender;
    sender.channel = argv[2];
    starveOtherThreads();
    return 0;
}

/** CHANNEL: sends one message without an application object. */
int sendWithoutApplication(int, char **argv)
{
    return QCopChannel::send(argv[2], "early()") ? 0 : 1;
}

/** MINE NEXT: passes a number on, increased. */
int passOn(int argc, char **argv)
{
    const QByteArray next = argv[3];
    QPEApplication application(argc, argv, "ring");
    QCopChannel channel(argv[2]);
    QObject::connect(&channel, &QCopChannel::received, [next](const QByteArray &message, const QByteArray &) {
        QCopChannel::send(next, number(message.toInt() + 1));
    });
    ChildInput input([](const QByteArray &) {});
    ChildProcess::say("ready");
    return application.exec();
}

/** Says how long the first channel took, then at each line of input sends ten messages to itself, the channel
 * and a second one on the same name, and says what came of it. */
int talkToItself(int argc, char **argv)
{
    QElapsedTimer clock;
    clock.start();
    LogCapture log;
    QPEApplication application(argc, argv, "alone");
    Listener listener("Test/Alone");
    Listener second("Test/Alone");
    Listener other("Test/Other");
    ChildProcess::say(number(int(clock.elapsed())));
    ChildInput input([&](const QByteArray &) {
        listener.messages.clear();
        second.messages.clear();
        for (int i = 0; i < 10; ++i)
            QCopChannel::send("Test/Alone", number(i), QByteArray("\0\xff", 2));
        const bool early = !listener.messages.isEmpty();
        const bool arrived = waitForMessages(listener, 10) && waitForMessages(second, 10);
        bool ordered = listener.messages == second.messages && other.messages.isEmpty();
        for (int i = 0; i < listener.messages.size(); ++i)
            ordered = ordered && listener.messages[i] == Message(number(i), QByteArray("\0\xff", 2));
        const auto warnings = log.warnings().filter("QCopChannel: no session bus").size();
        ChildProcess::say((early ? "early " : "queued ") +
                          QByteArray(arrived && ordered ? "ordered " : "bad ") + number(int(warnings)));
    });
    return application.exec();
}

/** Without a bus: deletes a channel with messages pending, and one in its own slot; says what still arrived.
 */
int deleteAlone(int argc, char **argv)
{
    QPEApplication application(argc, argv, "alone");
    auto doomed = std::make_unique<Listener>("Test/Alone");
    auto *suicide = new QCopChannel("Test/Alone");
    Listener witness("Test/Alone");
    int last = 0;
    QObject::connect(suicide, &QCopChannel::received, [&] {
        ++last;
        delete suicide;
    });
    for (int i = 0; i < 10; ++i)
        QCopChannel::send("Test/Alone", number(i));
    doomed.reset();
    waitForMessages(witness, 10);
    ChildProcess::say(number(int(witness.messages.size())) + ' ' + number(last));
    return 0;
}

int childMain(int argc, char **argv)
{
    const QByteArray role = argv[1];
    if (role == "listen")
        return listenAndTell(argc, argv);
    if (role == "leave")
        return sendAndLeave(argc, argv);
    if (role == "loop")
        return sendFromLoopAndLeave(argc, argv);
    if (role == "outlives")
        return sendBehindTheConnection(argc, argv);
    if (role == "younger")
        return sendBeforeTheConnectionEnds(argc, argv);
    if (role == "early")
        return sendWithoutApplication(argc, argv);
    if (role == "ring")
        return passOn(argc, argv);
    if (role == "delete")
        return deleteAlone(argc, argv);
    return role == "alone" ? talkToItself(argc, argv) : 2;
}

} // namespace

class QCopChannelTest : public QObject
{
    Q_OBJECT
private slots:
    void carriesChannelName();
    void deliversToEveryChannelOfTheProcess();
    void deliversNothingBeforeTheLoop();
    void keepsOrder();
    void carriesEveryByte_data();
    void carriesEveryByte();
    void tellsChannelsApart_data();
    void tellsChannelsApart();
    void refusesOverlongData();
    void envelopeSendsAtItsEnd();
    void receiveCanBeOverridden();
    void deletedWhileMessagesArePending();
    void deletedInItsOwnSlot();
    void deletedByAnotherChannelsSlot();
    void deliversInsideNestedLoop();
    void reachesOtherProcesses();
    void passesRingOfProcesses();
    void messageBeforeReturnFromMainLeaves();
    void lastMessageOfALoopLeaves_data();
    void lastMessageOfALoopLeaves();
    void messageOfAYoungerGlobalLeaves();
    void messageOfAGlobalThatOutlivesTheBusIsSafe();
    void lastMessageDoesNotWaitForASilentBus();
    void messageWithoutApplicationLeaves();
    void tellsWhoSent();
    void isRegisteredFollowsOtherProcess_data();
    void isRegisteredFollowsOtherProcess();
    void isRegisteredOnPlainChannelIsThisProcess();
    void secondListenerKeepsNameWhenFirstDies();
    void homesDoNotMeet();
    void worksWithoutBus_data();
    void worksWithoutBus();
    void deletingWithoutBusIsSafe();
    void silentSocketDoesNotHang();
    void survivesDeathOfBus();
};

void QCopChannelTest::carriesChannelName()
{
    QObject parent;
    auto *channel = new QCopChannel("QPE/System", &parent, "mine");
    QCOMPARE(channel->channel(), QByteArray("QPE/System"));
    QCOMPARE(channel->objectName(), QString("mine"));
    QCOMPARE(channel->parent(), &parent);
}

void QCopChannelTest::deliversToEveryChannelOfTheProcess()
{
    Listener first("Test/A"), second("Test/A"), other("Test/B");
    QVERIFY(QCopChannel::send("Test/A", "hello(int)", "x"));
    QVERIFY(settle());
    const QList<Message> expected{{"hello(int)", "x"}};
    QCOMPARE(first.messages, expected);
    QCOMPARE(second.messages, expected);
    QVERIFY(other.messages.isEmpty());
}

void QCopChannelTest::deliversNothingBeforeTheLoop()
{
    Listener listener("Test/A");
    QCopChannel::send("Test/A", "hello()");
    QThread::msleep(100);
    QCOMPARE(listener.messages.size(), 0);
    QVERIFY(waitForMessages(listener, 1));
}

void QCopChannelTest::keepsOrder()
{
    Listener first("Test/Order"), second("Test/Order");
    for (int i = 0; i < 2000; ++i)
        QCopChannel::send("Test/Order", number(i));
    QVERIFY(waitForMessages(first, 2000));
    QVERIFY(waitForMessages(second, 2000));
    for (int i = 0; i < 2000; ++i)
        QCOMPARE(first.messages[i].first, number(i));
    QCOMPARE(second.messages, first.messages);
}

void QCopChannelTest::carriesEveryByte_data()
{
    QTest::addColumn<QByteArray>("data");
    QByteArray all;
    for (int i = 0; i < 256; ++i)
        all += char(i);
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("zero bytes and 0xff") << QByteArray("\0\xff\0", 3);
    QTest::newRow("all bytes") << all;
    QTest::newRow("a megabyte") << all.repeated(4096);
}

void QCopChannelTest::carriesEveryByte()
{
    QFETCH(QByteArray, data);
    Listener listener("Test/A");
    QCopChannel::send("Test/A", "data(QByteArray)", data);
    QVERIFY(waitForMessages(listener, 1));
    QCOMPARE(listener.messages[0].second, data);
}

void QCopChannelTest::tellsChannelsApart_data()
{
    QTest::addColumn<QByteArray>("mine");
    QTest::addColumn<QByteArray>("other");
    QTest::newRow("prefix") << QByteArray("Test/A") << QByteArray("Test/AB");
    QTest::newRow("case") << QByteArray("Test/A") << QByteArray("Test/a");
    QTest::newRow("quote") << QByteArray("Test/it's',arg0='x") << QByteArray("Test/it");
    QTest::newRow("not UTF-8") << QByteArray("Test/\xff") << QByteArray("Test/\xfe");
    QTest::newRow("percent") << QByteArray("Test/%41") << QByteArray("Test/A");
    QTest::newRow("empty") << QByteArray("") << QByteArray("x");
}

void QCopChannelTest::tellsChannelsApart()
{
    QFETCH(QByteArray, mine);
    QFETCH(QByteArray, other);
    Listener listener(mine), otherListener(other);
    QCopChannel::send(other, "other()");
    QCopChannel::send(mine, "mine()");
    QVERIFY(settle());
    QCOMPARE(listener.messages, (QList<Message>{{"mine()", ""}}));
    QCOMPARE(otherListener.messages, (QList<Message>{{"other()", ""}}));
}

void QCopChannelTest::refusesOverlongData()
{
    LogCapture log;
    Listener listener("Test/A");
    QVERIFY(!QCopChannel::send("Test/A", "big()", QByteArray(QCopChannel::MaximumData + 1, 'x')));
    QCOMPARE(log.warnings().size(), 1);
    QVERIFY(settle());
    QVERIFY(listener.messages.isEmpty());
}

void QCopChannelTest::envelopeSendsAtItsEnd()
{
    Listener listener("Test/A");
    {
        QCopEnvelope envelope("Test/A", "closeFile(QString,QString)");
        envelope << QString("F0:KYADRS.BOX") << QString::fromUtf8("住所録");
        QVERIFY(settle());
        QVERIFY(listener.messages.isEmpty());
    }
    QVERIFY(waitForMessages(listener, 1));
    QCOMPARE(listener.messages[0].first, QByteArray("closeFile(QString,QString)"));
    QString path, sender;
    QCopArguments arguments(listener.messages[0].second);
    arguments >> path >> sender;
    QCOMPARE(path, QString("F0:KYADRS.BOX"));
    QCOMPARE(sender, QString::fromUtf8("住所録"));
}

void QCopChannelTest::receiveCanBeOverridden()
{
    class Own : public QCopChannel
    {
    public:
        using QCopChannel::QCopChannel;
        void receive(const QByteArray &message, const QByteArray &) override { got = message; }
        QByteArray got;
    } channel("Test/A");
    QSignalSpy spy(&channel, &QCopChannel::received);
    QCopChannel::send("Test/A", "up()");
    QVERIFY(settle());
    QCOMPARE(channel.got, QByteArray("up()"));
    QCOMPARE(spy.size(), 0);
}

void QCopChannelTest::deletedWhileMessagesArePending()
{
    auto doomed = std::make_unique<Listener>("Test/A");
    Listener witness("Test/A");
    for (int i = 0; i < 100; ++i)
        QCopChannel::send("Test/A", number(i));
    QThread::msleep(50); // the messages now wait in this process
    doomed.reset();
    QVERIFY(waitForMessages(witness, 100));
    QVERIFY(settle());
}

void QCopChannelTest::deletedInItsOwnSlot()
{
    auto *channel = new QCopChannel("Test/A");
    Listener witness("Test/A");
    int received = 0;
    connect(channel, &QCopChannel::received, this, [&] {
        ++received;
        delete channel;
    });
    for (int i = 0; i < 10; ++i)
        QCopChannel::send("Test/A", number(i));
    QVERIFY(waitForMessages(witness, 10));
    QVERIFY(settle());
    QCOMPARE(received, 1);
}

void QCopChannelTest::deletedByAnotherChannelsSlot()
{
    auto first = std::make_unique<QCopChannel>("Test/A");
    auto second = std::make_unique<QCopChannel>("Test/A");
    int received = 0;
    connect(first.get(), &QCopChannel::received, this, [&] { ++received, second.reset(); });
    connect(second.get(), &QCopChannel::received, this, [&] { ++received, first.reset(); });
    QCopChannel::send("Test/A", "one()");
    QVERIFY(settle());
    QCOMPARE(received, 1);
}

void QCopChannelTest::deliversInsideNestedLoop()
{
    QDialog dialog;
    QCopChannel channel("Test/A");
    connect(&channel, &QCopChannel::received, &dialog, &QDialog::accept);
    QCopChannel::send("Test/A", "done()");
    QTimer::singleShot(5000, &dialog, &QDialog::reject);
    QCOMPARE(dialog.exec(), int(QDialog::Accepted));
}

void QCopChannelTest::reachesOtherProcesses()
{
    ChildProcess first({"listen", "Test/Shared"}), second({"listen", "Test/Shared"});
    QCOMPARE(first.readLine(), QByteArray("ready"));
    QCOMPARE(second.readLine(), QByteArray("ready"));
    Listener here("Test/Shared");
    for (int i = 0; i < 200; ++i)
        QCopChannel::send("Test/Shared", number(i), QByteArray("\0\xff", 2));
    for (int i = 0; i < 200; ++i) {
        QCOMPARE(first.readLine(), number(i) + " 00ff");
        QCOMPARE(second.readLine(), number(i) + " 00ff");
    }
    QVERIFY(waitForMessages(here, 200));
    first.write("Test/Shared fromChild()");
    QVERIFY(waitForMessages(here, 201));
    QCOMPARE(here.messages[200].first, QByteArray("fromChild()"));
    QCOMPARE(first.readLine(), QByteArray("fromChild() "));
    QCOMPARE(second.readLine(), QByteArray("fromChild() "));
    QCOMPARE(first.finish(), 0);
}

void QCopChannelTest::passesRingOfProcesses()
{
    ChildProcess a({"ring", "Ring/A", "Ring/B"}), b({"ring", "Ring/B", "Ring/C"}),
        c({"ring", "Ring/C", "Ring/Home"});
    for (ChildProcess *child : {&a, &b, &c})
        QCOMPARE(child->readLine(), QByteArray("ready"));
    Listener home("Ring/Home");
    for (int round = 0; round < 50; ++round) {
        QCopChannel::send("Ring/A", number(round * 10));
        QVERIFY(waitForMessages(home, round + 1));
        QCOMPARE(home.messages[round].first, number(round * 10 + 3));
    }
}

void QCopChannelTest::messageBeforeReturnFromMainLeaves()
{
    Listener listener("Test/Last");
    ChildProcess child({"leave", "Test/Last", "200"});
    QCOMPARE(child.finish(), 0);
    QVERIFY(waitForMessages(listener, 200));
    QCOMPARE(listener.messages[199].first, QByteArray("199"));
}

void QCopChannelTest::lastMessageOfALoopLeaves_data()
{
    QTest::addColumn<QString>("way");
    QTest::newRow("return from main") << "return";
    QTest::newRow("application object kept") << "object kept";
    QTest::newRow("exit in a slot") << "exit";
}

/** The bus connection has a thread of its own, which the end of the process doesn't wait for by itself. */
void QCopChannelTest::lastMessageOfALoopLeaves()
{
    constexpr int Processes = 30;
    QFETCH(QString, way);
    Listener listener("Test/Last");
    std::vector<std::unique_ptr<ChildProcess>> children;
    for (int i = 0; i < Processes; ++i)
        children.push_back(std::make_unique<ChildProcess>(QStringList{"loop", "Test/Last", way}));
    for (const auto &child : children)
        QCOMPARE(child->finish(), 0);
    QVERIFY(waitForMessages(listener, Processes));
    QVERIFY(settle());
    QCOMPARE(listener.messages, QList<Message>(Processes, {"last()", ""}));
}

void QCopChannelTest::messageOfAYoungerGlobalLeaves()
{
    Listener listener("Test/Last");
    for (int i = 1; i <= 10; ++i) {
        ChildProcess child({"younger", "Test/Last"});
        QCOMPARE(child.finish(), 0);
        QVERIFY(waitForMessages(listener, i));
    }
}

void QCopChannelTest::messageOfAGlobalThatOutlivesTheBusIsSafe()
{
    Listener listener("Test/Last");
    ChildProcess child({"outlives", "Test/Last"});
    QCOMPARE(child.finish(), 0);
    QVERIFY(settle());
    QVERIFY(listener.messages.isEmpty());
}

void QCopChannelTest::lastMessageDoesNotWaitForASilentBus()
{
    PrivateBus bus;
    ChildProcess child({"alone"}, environmentWith("DBUS_SESSION_BUS_ADDRESS", bus.address()));
    QVERIFY(!child.readLine().isEmpty());
    child.write("go");
    QCOMPARE(child.readLine(), QByteArray("queued ordered 0"));
    QVERIFY(suspend(bus));
    QCOMPARE(child.finish(), 0);
}

void QCopChannelTest::messageWithoutApplicationLeaves()
{
    Listener listener("Test/Early");
    ChildProcess child({"early", "Test/Early"});
    QCOMPARE(child.finish(), 0);
    QVERIFY(waitForMessages(listener, 1));
    QCOMPARE(listener.messages[0].first, QByteArray("early()"));
}

void QCopChannelTest::tellsWhoSent()
{
    Listener listener("Test/Who");
    QVERIFY(listener.channel.messageSource().isEmpty());
    ChildProcess child({"listen", "Test/Who"});
    QCOMPARE(child.readLine(), QByteArray("ready"));
    child.write("Test/Who hello()");
    QVERIFY(waitForMessages(listener, 1));
    const QByteArray source = listener.channel.messageSource();
    QVERIFY(QCopChannel::isRunning(source));
    QCopChannel::send("Test/Who", "me()");
    QVERIFY(waitForMessages(listener, 2));
    QVERIFY(listener.channel.messageSource() != source);
    child.kill();
    QTRY_VERIFY(!QCopChannel::isRunning(source));
    QVERIFY(QCopChannel::isRunning(listener.channel.messageSource()));
}

void QCopChannelTest::isRegisteredFollowsOtherProcess_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << "datebook";
    QTest::newRow("dash and dot") << "my-app.bin";
    QTest::newRow("digit first") << "3dviewer";
    QTest::newRow("blank and slash") << "a b/c";
    QTest::newRow("Japanese") << QString::fromUtf8("住所録");
    QTest::newRow("200 letters") << QString(200, 'x');
}

void QCopChannelTest::isRegisteredFollowsOtherProcess()
{
    QFETCH(QString, name);
    const QByteArray channel = "QPE/Application/" + name.toUtf8();
    QVERIFY(!QCopChannel::isRegistered(channel));
    ChildProcess child({"listen", QString::fromUtf8(channel)});
    QCOMPARE(child.readLine(), QByteArray("ready"));
    QVERIFY(QCopChannel::isRegistered(channel));
    QVERIFY(QCopChannel::isRegistered("QPE/Application/child"));
    QVERIFY(!QCopChannel::isRegistered(channel + "2"));
    child.kill();
    QTRY_VERIFY(!QCopChannel::isRegistered(channel));
}

void QCopChannelTest::isRegisteredOnPlainChannelIsThisProcess()
{
    QVERIFY(!QCopChannel::isRegistered("Test/Plain"));
    auto channel = std::make_unique<QCopChannel>("Test/Plain");
    auto second = std::make_unique<QCopChannel>("Test/Plain");
    QVERIFY(QCopChannel::isRegistered("Test/Plain"));
    channel.reset();
    QVERIFY(QCopChannel::isRegistered("Test/Plain"));
    second.reset();
    QVERIFY(!QCopChannel::isRegistered("Test/Plain"));
}

void QCopChannelTest::secondListenerKeepsNameWhenFirstDies()
{
    const QByteArray channel = "QPE/Application/shared";
    ChildProcess first({"listen", channel});
    QCOMPARE(first.readLine(), QByteArray("ready"));
    ChildProcess second({"listen", channel});
    QCOMPARE(second.readLine(), QByteArray("ready"));
    first.kill();
    QCopChannel::send(channel, "still()");
    QCOMPARE(second.readLine(), QByteArray("still() "));
    QVERIFY(QCopChannel::isRegistered(channel));
    second.kill();
    QTRY_VERIFY(!QCopChannel::isRegistered(channel));
}

void QCopChannelTest::homesDoNotMeet()
{
    QTemporaryDir home;
    ChildProcess stranger({"listen", "QPE/Application/app"}, environmentWith("HOME", home.path()));
    QCOMPARE(stranger.readLine(), QByteArray("ready"));
    Listener here("QPE/Application/app");
    QCopChannel::send("QPE/Application/app", "fromHere()");
    QVERIFY(waitForMessages(here, 1));
    stranger.write("QPE/Application/app fromStranger()");
    QCOMPARE(stranger.readLine(), QByteArray("fromStranger() "));
    QVERIFY(settle());
    QCOMPARE(here.messages.size(), 1);
    QVERIFY(!QCopChannel::isRegistered("QPE/Application/child"));
}

void QCopChannelTest::worksWithoutBus_data()
{
    QTest::addColumn<QString>("address");
    QTest::newRow("no address") << QString();
    QTest::newRow("nobody there") << "unix:path=/nonexistent/bus";
    QTest::newRow("no socket's path") << "unix:path=/";
    QTest::newRow("overlong path") << "unix:path=/" + QString(300, 'x');
    QTest::newRow("would start one") << "autolaunch:";
    QTest::newRow("nonsense") << ";;=,:unix";
}

void QCopChannelTest::worksWithoutBus()
{
    QFETCH(QString, address);
    QProcessEnvironment environment = environmentWith("DBUS_SESSION_BUS_ADDRESS", address);
    if (address.isEmpty())
        environment.remove("DBUS_SESSION_BUS_ADDRESS");
    ChildProcess child({"alone"}, environment);
    QVERIFY(!child.readLine().isEmpty());
    child.write("go");
    QCOMPARE(child.readLine(), QByteArray("queued ordered 1"));
    child.write("again");
    QCOMPARE(child.readLine(), QByteArray("queued ordered 1"));
    QCOMPARE(child.finish(), 0);
}

void QCopChannelTest::deletingWithoutBusIsSafe()
{
    ChildProcess child({"delete"}, environmentWith("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"));
    QCOMPARE(child.readLine(), QByteArray("10 1"));
    QCOMPARE(child.finish(), 0);
}

void QCopChannelTest::silentSocketDoesNotHang()
{
    QTemporaryDir folder;
    const SilentSocket silent(folder.filePath("bus").toLocal8Bit());
    QVERIFY(silent.listens());
    ChildProcess child({"alone"}, environmentWith("DBUS_SESSION_BUS_ADDRESS", silent.address()));
    const int start = child.readLine().toInt();
    QVERIFY2(start >= 300 && start < 1000, QByteArray::number(start));
    child.write("go");
    QCOMPARE(child.readLine(), QByteArray("queued ordered 1"));
}

void QCopChannelTest::survivesDeathOfBus()
{
    PrivateBus bus;
    ChildProcess child({"alone"}, environmentWith("DBUS_SESSION_BUS_ADDRESS", bus.address()));
    QVERIFY(!child.readLine().isEmpty());
    child.write("go");
    QCOMPARE(child.readLine(), QByteArray("queued ordered 0"));
    bus.kill();
    QTest::qWait(200); // the child's bus connection takes note in its own time
    child.write("go");
    QCOMPARE(child.readLine(), QByteArray("queued ordered 1"));
    QCOMPARE(child.finish(), 0);
}

KY_TEST_MAIN_WITH_CHILD(QCopChannelTest, childMain)
#include "qcopchanneltest.moc"
