#include "kernelevents.h"
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/netlink.h>
#include <QByteArrayList>
#include <sys/socket.h>

namespace {

constexpr int KernelGroup = 1;       // of the kernel's own announcements
constexpr int LongestMessage = 8192; // the kernel's have at most 2 KB behind the name of the device
constexpr int MessagesAtOnce = 64;   // then others have their turn in the event loop

enum class Reading { Nothing, Ignored, Relevant, Failed };

/** Only the kernel has the number 0; any process may send to a socket whose number it knows. */
bool isOfKernel(const sockaddr_nl &sender, socklen_t length)
{
    return length == sizeof sender && sender.nl_family == AF_NETLINK && sender.nl_pid == 0;
}

Reading readingOf(int error)
{
    if (error == EAGAIN)
        return Reading::Nothing;
    if (error == ENOBUFS) // announcements were lost, so it may have been any
        return Reading::Relevant;
    return error == EINTR ? Reading::Ignored : Reading::Failed;
}

Reading readMessage(int socket)
{
    char buffer[LongestMessage];
    sockaddr_nl sender{};
    iovec part{buffer, sizeof buffer};
    msghdr message{};
    message.msg_name = &sender;
    message.msg_namelen = sizeof sender;
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    const ssize_t size = ::recvmsg(socket, &message, MSG_DONTWAIT);
    if (size < 0)
        return readingOf(errno);
    const bool relevant = isOfKernel(sender, message.msg_namelen) &&
                          KernelEvents::isOfPowerSupply(QByteArray::fromRawData(buffer, size));
    return relevant ? Reading::Relevant : Reading::Ignored;
}

} // namespace

int KernelEvents::openSocket()
{
    const int socket = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_KOBJECT_UEVENT);
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = KernelGroup;
    if (socket >= 0 && ::bind(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0)
        return socket;
    qDebug("kyplatformd: the kernel's announcements can't be heard: %s", std::strerror(errno));
    if (socket >= 0)
        ::close(socket);
    return -1;
}

int KernelEvents::openMountTable()
{
    return ::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC);
}

KernelEvents::KernelEvents(int socket, int mountTable, QObject *parent)
    : QObject(parent), m_socket(socket), m_mountTable(mountTable), m_socketNotifier(QSocketNotifier::Read),
      m_mountNotifier(QSocketNotifier::Exception) // one for reading would never rest
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(GatherTime);
    connect(&m_timer, &QTimer::timeout, this, &KernelEvents::changed);
    connect(&m_socketNotifier, &QSocketNotifier::activated, this, &KernelEvents::readSocket);
    connect(&m_mountNotifier, &QSocketNotifier::activated, this, &KernelEvents::changedSoon);
    if (socket >= 0)
        m_socketNotifier.setSocket(socket);
    if (mountTable >= 0)
        m_mountNotifier.setSocket(mountTable);
    m_socketNotifier.setEnabled(socket >= 0);
    m_mountNotifier.setEnabled(mountTable >= 0);
}

bool KernelEvents::isOfPowerSupply(const QByteArray &announcement)
{
    const QByteArrayList fields = announcement.split('\0');
    return fields.indexOf("SUBSYSTEM=power_supply", 1) > 0;
}

void KernelEvents::readSocket()
{
    Reading reading = Reading::Ignored;
    for (int i = 0; i < MessagesAtOnce && reading != Reading::Nothing; ++i) {
        reading = readMessage(m_socket.get());
        if (reading == Reading::Relevant)
            changedSoon();
        if (reading == Reading::Failed) {
            m_socketNotifier.setEnabled(false); // it would be reported again at once, for ever
            return;
        }
    }
}

void KernelEvents::changedSoon()
{
    if (!m_timer.isActive())
        m_timer.start();
}
