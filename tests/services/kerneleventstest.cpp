#include "kernelevents.h"
#include "logcapture.h"
#include "mounts.h"
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/netlink.h>
#include <QtTest>
#include <sys/resource.h>
#include <sys/socket.h>

namespace {

/** Fields with a zero byte behind each. */
QByteArray announcement(const QByteArrayList &fields)
{
    return fields.join('\0') + '\0';
}

const QByteArray PowerChange = announcement(
    {"change@/devices/platform/ac/power_supply/AC", "ACTION=change", "SUBSYSTEM=power_supply", "SEQNUM=7"});
const QByteArray OtherChange =
    announcement({"change@/devices/virtual/net/lo", "ACTION=change", "SUBSYSTEM=net"});
constexpr int LongTime = 10 * KernelEvents::GatherTime; // for what must not come

bool canMount = false; // set by main()

// What recvmsg() does to the socket of the test, which isn't one of the kernel's.
int testSocket = -1;
sockaddr_nl senderAddress{};
int errorsLeft = 0;
int nextError = 0;
int calls = 0;

void makeKernelSender(quint32 pid)
{
    senderAddress = {};
    senderAddress.nl_family = AF_NETLINK;
    senderAddress.nl_pid = pid;
}

/** The test's end of a socket that the events read. */
class Announcer
{
public:
    Announcer()
    {
        int ends[2] = {-1, -1};
        if (::socketpair(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0, ends) != 0)
            qFatal("no sockets");
        m_end = ends[0];
        testSocket = ends[1];
        makeKernelSender(0);
        errorsLeft = calls = 0;
    }
    ~Announcer()
    {
        testSocket = -1;
        ::close(m_end);
    }
    Q_DISABLE_COPY_MOVE(Announcer)
    void send(const QByteArray &message) const
    {
        QCOMPARE(::send(m_end, message.constData(), size_t(message.size()), 0), ssize_t(message.size()));
    }

private:
    int m_end;
};

} // namespace

extern "C" ssize_t recvmsg(int fd, msghdr *message, int flags)
{
    using Function = ssize_t (*)(int, msghdr *, int);
    static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "recvmsg"));
    if (fd != testSocket)
        return next(fd, message, flags);
    ++calls;
    if (errorsLeft > 0) {
        --errorsLeft;
        errno = nextError;
        return -1;
    }
    const ssize_t size = next(fd, message, flags);
    if (size >= 0) {
        std::memcpy(message->msg_name, &senderAddress, sizeof senderAddress);
        message->msg_namelen = sizeof senderAddress;
    }
    return size;
}

class KernelEventsTest : public QObject
{
    Q_OBJECT
private slots:
    void isOfPowerSupply_data();
    void isOfPowerSupply();
    void changeOfPowerSupplyIsTold();
    void otherDevicesAreIgnored();
    void otherSendersAreIgnored_data();
    void otherSendersAreIgnored();
    void longMessageIsReadAsFarAsItGoes();
    void lostAnnouncementsCountAsChange();
    void interruptedReadGoesOn();
    void brokenSocketIsLeftAlone();
    void burstIsToldOnce();
    void endlessBurstIsToldAllTheSame();
    void withoutDescriptorsNothingHappens();
    void forbiddenSocketIsToldOnce();
    void realAnnouncementOfAnotherDeviceIsIgnored();
    void realForgedAnnouncementIsIgnored();
    void realPowerSupply();
    void realMount();
};

void KernelEventsTest::isOfPowerSupply_data()
{
    QTest::addColumn<QByteArray>("announcement");
    QTest::addColumn<bool>("relevant");
    QTest::newRow("change") << PowerChange << true;
    QTest::newRow("other") << OtherChange << false;
    QTest::newRow("empty") << QByteArray() << false;
    QTest::newRow("only zeros") << QByteArray(5, '\0') << false;
    QTest::newRow("no zero at the end")
        << announcement({"add@/x", "SUBSYSTEM=power_supply"}).chopped(1) << true;
    QTest::newRow("in place of the head") << announcement({"SUBSYSTEM=power_supply", "A=b"}) << false;
    QTest::newRow("within a value") << announcement({"add@/x", "A=SUBSYSTEM=power_supply"}) << false;
    QTest::newRow("longer") << announcement({"add@/x", "SUBSYSTEM=power_supply2"}) << false;
    QTest::newRow("cut off") << PowerChange.left(PowerChange.indexOf("SEQNUM") - 2) << false;
}

void KernelEventsTest::isOfPowerSupply()
{
    QFETCH(QByteArray, announcement);
    QTEST(KernelEvents::isOfPowerSupply(announcement), "relevant");
}

void KernelEventsTest::changeOfPowerSupplyIsTold()
{
    const Announcer announcer;
    const KernelEvents events(testSocket, -1);
    QSignalSpy spy(&events, &KernelEvents::changed);
    announcer.send(PowerChange);
    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 1, 10000);
    announcer.send(PowerChange);
    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 2, 10000);
}

void KernelEventsTest::otherDevicesAreIgnored()
{
    const Announcer announcer;
    const KernelEvents events(testSocket, -1);
    QSignalSpy spy(&events, &KernelEvents::changed);
    announcer.send(OtherChange);
    announcer.send(QByteArray());
    announcer.send(QByteArray(3000, '\xff'));
    QTest::qWait(LongTime);
    QCOMPARE(spy.size(), 0);
    announcer.send(PowerChange);
    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 1, 10000);
}

void KernelEventsTest::otherSendersAreIgnored_data()
{
    QTest::addColumn<int>("family");
    QTest::addColumn<quint32>("pid");
    QTest::newRow("another process") << AF_NETLINK << quint32(4711);
    QTest::newRow("another family") << AF_UNIX << quint32(0);
}

void KernelEventsTest::otherSendersAreIgnored()
{
    QFETCH(int, family);
    QFETCH(quint32, pid);
    const Announcer announcer;
    const KernelEvents events(testSocket, -1);
    QSignalSpy spy(&events, &KernelEvents::changed);
    makeKernelSender(pid);
    senderAddress.nl_family = sa_family_t(family);
    announcer.send(PowerChange);
    QTRY_VERIFY_WITH_TIMEOUT(calls >= 2, 10000); // it has been read
    QTest::qWait(LongTime);
    QCOMPARE(spy.size(), 0);
}

void KernelEventsTest::longMessageIsReadAsFarAsItGoes()
{
    const Announcer announcer;
    const KernelEvents events(testSocket, -1);
    QSignalSpy spy(&events, &KernelEvents::changed);
    announcer.send(OtherChange + QByteArray(100000, 'x') + PowerChange);
    QTest::qWait(LongTime);
    QCOMPARE(spy.size(), 0);
    announcer.send(PowerChange + QByteArray(100000, 'x'));
    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 1, 10000);
}

void KernelEventsTest::lostAnnouncementsCountAsChange()
{
    const Announcer announcer;
    const KernelEvents events(testSocket, -1);
    QSignalSpy spy(&events, &KernelEvents::changed);
    nextError = ENOBUFS;
    errorsLeft = 1;
    announcer.send(OtherChange);
    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 1, 10000);
    announcer.send(PowerChange); // and it goes on
    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 2, 10000);
}

void KernelEventsTest::interruptedReadGoesOn()
{
    const Announcer announcer;
    const KernelEvents events(testSocket, -1);
    QSignalSpy spy(&events, &KernelEvents::changed);
    nextError = EINTR;
    errorsLeft = 1;
    announcer.send(PowerChange);
    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 1, 10000);
}

void KernelEventsTest::brokenSocketIsLeftAlone()
{
    const Announcer announcer;
    const KernelEvents events(testSocket, -1);
    QSignalSpy spy(&events, &KernelEvents::changed);
    nextError = ENOTCONN;
    errorsLeft = 1;
    announcer.send(PowerChange);
    QTRY_VERIFY_WITH_TIMEOUT(calls > 0, 10000);
    QTest::qWait(LongTime);
    QCOMPARE(calls, 1);
    QCOMPARE(spy.size(), 0);
}

void KernelEventsTest::burstIsToldOnce()
{
    const Announcer announcer;
    const KernelEvents events(testSocket, -1);
    QSignalSpy spy(&events, &KernelEvents::changed);
    for (int i = 0; i < 10; ++i)
        announcer.send(PowerChange);
    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 1, 10000);
    QTest::qWait(LongTime);
    QCOMPARE(spy.size(), 1);
}

void KernelEventsTest::endlessBurstIsToldAllTheSame()
{
    const Announcer announcer;
    const KernelEvents events(testSocket, -1);
    QSignalSpy spy(&events, &KernelEvents::changed);
    QTimer timer;
    connect(&timer, &QTimer::timeout, &timer, [&] { announcer.send(PowerChange); });
    timer.start(KernelEvents::GatherTime / 8);
    QTRY_VERIFY_WITH_TIMEOUT(spy.size() >= 3, 10000);
}

void KernelEventsTest::withoutDescriptorsNothingHappens()
{
    LogCapture log;
    const KernelEvents events(-1, -1);
    QSignalSpy spy(&events, &KernelEvents::changed);
    QTest::qWait(LongTime);
    QCOMPARE(spy.size(), 0);
    QCOMPARE(log.lines(), QStringList());
}

void KernelEventsTest::forbiddenSocketIsToldOnce()
{
    rlimit before{};
    QCOMPARE(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    QCOMPARE(::setrlimit(RLIMIT_NOFILE, &none), 0);
    LogCapture log;
    const int socket = KernelEvents::openSocket();
    QCOMPARE(::setrlimit(RLIMIT_NOFILE, &before), 0);
    QCOMPARE(socket, -1);
    QCOMPARE(log.lines().size(), 1);
    QVERIFY(log.lines()[0].startsWith("kyplatformd: the kernel's announcements can't be heard: "));
    QCOMPARE(log.warnings(), QStringList());
}

void KernelEventsTest::realAnnouncementOfAnotherDeviceIsIgnored()
{
    testSocket = -1;
    const int socket = KernelEvents::openSocket();
    if (socket < 0)
        QSKIP("this machine lets nobody hear the kernel's announcements");
    const int second = KernelEvents::openSocket(); // shows that it came
    const Descriptor witness(second);
    const KernelEvents events(socket, -1);
    QSignalSpy spy(&events, &KernelEvents::changed);
    QFile trigger("/sys/class/net/lo/uevent");
    if (!trigger.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || trigger.write("change") != 6)
        QSKIP("this machine lets nobody cause an announcement");
    char buffer[8192];
    sockaddr_nl kernel{};
    socklen_t length = sizeof kernel;
    const auto hasCome = [&] {
        return ::recvfrom(second, buffer, sizeof buffer, MSG_DONTWAIT, reinterpret_cast<sockaddr *>(&kernel),
                          &length) > 0;
    };
    if (!QTest::qWaitFor(hasCome, 2000))
        QSKIP("announcements don't reach this machine's programs");
    // As the tests with a sender of their own have it.
    QCOMPARE(length, socklen_t(sizeof kernel));
    QCOMPARE(kernel.nl_family, sa_family_t(AF_NETLINK));
    QCOMPARE(kernel.nl_pid, 0U);
    QTest::qWait(LongTime);
    QCOMPARE(spy.size(), 0);
}

void KernelEventsTest::realForgedAnnouncementIsIgnored()
{
    testSocket = -1;
    const int socket = KernelEvents::openSocket();
    if (socket < 0)
        QSKIP("this machine lets nobody hear the kernel's announcements");
    sockaddr_nl address{};
    socklen_t length = sizeof address;
    QCOMPARE(::getsockname(socket, reinterpret_cast<sockaddr *>(&address), &length), 0);
    address.nl_groups = 0;
    const KernelEvents events(socket, -1);
    QSignalSpy spy(&events, &KernelEvents::changed);
    const Descriptor forger(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_KOBJECT_UEVENT));
    const ssize_t sent = ::sendto(forger.get(), PowerChange.constData(), size_t(PowerChange.size()), 0,
                                  reinterpret_cast<const sockaddr *>(&address), sizeof address);
    if (sent != PowerChange.size())
        QSKIP("this machine lets nobody send to such a socket");
    QTest::qWait(LongTime);
    QCOMPARE(spy.size(), 0);
}

void KernelEventsTest::realPowerSupply()
{
    testSocket = -1;
    const QStringList supplies = QDir("/sys/class/power_supply").entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    if (supplies.isEmpty())
        QSKIP("this machine has no power supply");
    const KernelEvents events(KernelEvents::openSocket(), -1);
    QSignalSpy spy(&events, &KernelEvents::changed);
    QFile trigger("/sys/class/power_supply/" + supplies[0] + "/uevent");
    if (!trigger.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || trigger.write("change") != 6)
        QSKIP("this machine lets nobody cause an announcement");
    QTRY_VERIFY_WITH_TIMEOUT(spy.size() > 0, 10000);
}

void KernelEventsTest::realMount()
{
    if (!canMount)
        QSKIP("this machine allows no mounts of one's own");
    const KernelEvents events(-1, KernelEvents::openMountTable());
    QSignalSpy spy(&events, &KernelEvents::changed);
    QTest::qWait(LongTime); // mounts that were there before are no news
    QCOMPARE(spy.size(), 0);
    QTemporaryDir folder;
    TmpfsMount mount(folder.path());
    QVERIFY(mount.isMounted());
    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 1, 10000);
    mount.unmount();
    QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 2, 10000);
    QTest::qWait(LongTime);
    QCOMPARE(spy.size(), 2);
}

int main(int argc, char **argv)
{
    canMount = enterMountNamespace();
    QCoreApplication application(argc, argv);
    KernelEventsTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "kerneleventstest.moc"
