#include "descriptor_p.h"
#include "sessionbus_p.h"
#include <cstring>
#include <poll.h>
#include <QCryptographicHash>
#include <QDBusMessage>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr int ProbeTimeout = 300;      // ms that a bus has to answer in
constexpr int CallTimeout = 1000;      // ms for a question to the bus itself
constexpr qsizetype LongestName = 150; // keeps a bus name below its limit of 255 bytes

enum NameFlag : quint32 { Queue = 0, DoNotQueue = 4 };
enum NameReply : quint32 { PrimaryOwner = 1, AlreadyOwner = 4 };

/** Value of a key in a bus address such as unix:path=/run/bus,guid=0123; null when it isn't there. */
QByteArray addressValue(const QByteArray &address, const QByteArray &key)
{
    const QByteArray keys = address.mid(address.indexOf(':') + 1);
    for (const QByteArray &pair : keys.split(',')) {
        if (pair.startsWith(key + '='))
            return QByteArray::fromPercentEncoding(pair.mid(key.size() + 1));
    }
    return {};
}

/** Name of the socket as the kernel wants it, an abstract one with a leading zero byte. */
QByteArray socketName(const QByteArray &address)
{
    if (!address.startsWith("unix:"))
        return {};
    const QByteArray abstract = addressValue(address, "abstract");
    return abstract.isNull() ? addressValue(address, "path") : '\0' + abstract;
}

bool connectTo(int fd, const QByteArray &name)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (name.isEmpty() || name.size() >= qsizetype(sizeof address.sun_path))
        return false;
    std::memcpy(address.sun_path, name.constData(), size_t(name.size()));
    const bool isAbstract = name.at(0) == '\0';
    const auto length = offsetof(sockaddr_un, sun_path) + size_t(name.size()) + (isAbstract ? 0 : 1);
    return ::connect(fd, reinterpret_cast<const sockaddr *>(&address), socklen_t(length)) == 0;
}

/** True when the socket's owner answers to the first line of a login. A socket that accepts and stays silent
 * would block the bus library for good. */
bool answers(const QByteArray &address)
{
    const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (socket.get() < 0 || !connectTo(socket.get(), socketName(address)))
        return false;
    const QByteArray login = '\0' + ("AUTH EXTERNAL " + QByteArray::number(::getuid()).toHex()) + "\r\n";
    if (::send(socket.get(), login.constData(), size_t(login.size()), MSG_NOSIGNAL) != login.size())
        return false;
    pollfd wait{socket.get(), POLLIN, 0};
    char reply = 0;
    return ::poll(&wait, 1, ProbeTimeout) == 1 && ::recv(socket.get(), &reply, 1, 0) == 1;
}

QByteArray configuredAddress()
{
    const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    if (!address.isEmpty())
        return address;
    const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    const QByteArray socket = runtime + "/bus";
    if (runtime.isEmpty() || !QFile::exists(QFile::decodeName(socket)))
        return {};
    return "unix:path=" + socket.toPercentEncoding("/");
}

/** The first listed address at which a bus answers; empty when there is none. */
QByteArray liveAddress(const QByteArray &addresses)
{
    for (const QByteArray &address : addresses.split(';')) {
        if (answers(address))
            return address;
    }
    return {};
}

QDBusMessage callToBus(const QString &method, const QVariantList &arguments)
{
    const QString bus = QStringLiteral("org.freedesktop.DBus");
    QDBusMessage call =
        QDBusMessage::createMethodCall(bus, QStringLiteral("/org/freedesktop/DBus"), bus, method);
    call.setArguments(arguments);
    return call;
}

/** Asks the bus itself. @return the first value of its answer; invalid when none came in time */
QVariant askBus(const QString &method, const QVariantList &arguments)
{
    if (!SessionBus::isAvailable())
        return {};
    const QDBusMessage reply =
        SessionBus::connection().call(callToBus(method, arguments), QDBus::Block, CallTimeout);
    return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments().value(0) : QVariant();
}

/** A name as one element of a bus name, which holds letters, digits and '_' and starts with no digit. Names
 * that are too long are told apart by their hash. */
QString nameElement(const QByteArray &name)
{
    QByteArray escaped = "n";
    for (const char c : name) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        escaped += plain ? QByteArray(1, c) : '_' + QByteArray(1, c).toHex();
    }
    if (escaped.size() > LongestName)
        escaped = 'x' + QCryptographicHash::hash(name, QCryptographicHash::Sha256).toHex();
    return QString::fromLatin1(escaped);
}

/** The bus library sends from a thread of its own, and stops that at the end of the process although messages
 * still wait for it. The library came first, and so it ends behind this. */
struct LastFlush
{
    ~LastFlush() { SessionBus::flush(); }
};

} // namespace

namespace SessionBus {

QDBusConnection connection()
{
    // Never destroyed: globals that end later may still ask for it, and find it closed.
    static const QDBusConnection *const bus =
        new QDBusConnection(open(configuredAddress(), QStringLiteral("ky")));
    static const LastFlush lastFlush;
    return *bus;
}

QDBusConnection open(const QByteArray &addresses, const QString &name)
{
    // Makes the register of types, which the library's thread looks into to its end: what comes before the
    // library outlives it.
    qRegisterMetaType<QDBusMessage>();
    const QByteArray address = liveAddress(addresses);
    return address.isEmpty() ? QDBusConnection(name)
                             : QDBusConnection::connectToBus(QString::fromLatin1(address), name);
}

bool isAvailable()
{
    return connection().isConnected();
}

QString profile()
{
    const QFileInfo home(QDir::homePath());
    const QString path = home.exists() ? home.canonicalFilePath() : home.absoluteFilePath();
    const QByteArray hash = QCryptographicHash::hash(QFile::encodeName(path), QCryptographicHash::Sha256);
    return QLatin1Char('h') + QString::fromLatin1(hash.toHex().left(16));
}

QString serviceName(const QString &role, const QByteArray &name)
{
    const QString service = QStringLiteral("org.ky.%1.%2").arg(profile(), role);
    return name.isNull() ? service : service + QLatin1Char('.') + nameElement(name);
}

bool requestName(const QString &service, bool queue)
{
    const quint32 flags = queue ? Queue : DoNotQueue;
    const quint32 reply = askBus(QStringLiteral("RequestName"), {service, flags}).toUInt();
    return reply == PrimaryOwner || reply == AlreadyOwner;
}

void releaseName(const QString &service)
{
    if (isAvailable())
        askBus(QStringLiteral("ReleaseName"), {service});
}

bool hasOwner(const QString &service)
{
    return askBus(QStringLiteral("NameHasOwner"), {service}).toBool();
}

bool isOwner(const QString &service)
{
    const QString owner = askBus(QStringLiteral("GetNameOwner"), {service}).toString();
    return !owner.isEmpty() && owner == connection().baseService();
}

void startService(const QString &service)
{
    // Sent without a wish for an answer.
    if (isAvailable())
        connection().send(callToBus(QStringLiteral("StartServiceByName"), {service, quint32(0)}));
}

void flush()
{
    // The bus answers in the order in which it reads.
    askBus(QStringLiteral("GetId"), {});
}

} // namespace SessionBus
