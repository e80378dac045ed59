#ifndef MESSAGESENDER_H
#define MESSAGESENDER_H

#include "childprocess.h"
#include "qcopenvelope.h"
#include "sessionbus_p.h"
#include <QDBusMessage>

// Other applications that send messages, and the buses on their way, for the tests of what the service does.

/** An argument as it stands in a message. */
template <typename T> QByteArray dataOf(const T &value)
{
    QByteArray data;
    QDataStream stream(&data, QIODevice::WriteOnly);
    stream.setVersion(QCopEnvelope::StreamVersion);
    stream << value;
    return data;
}

/** Bytes that are different at each call and the same in each run. */
inline QByteArray randomBytes(QRandomGenerator &random)
{
    QByteArray bytes(random.bounded(64), '\0');
    for (char &byte : bytes)
        byte = char(random.bounded(256));
    return bytes;
}

/** Sends a message for each line of its input: channel, message and the data in hexadecimal digits. */
inline int childMain(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    ChildInput input([](const QByteArray &line) {
        const QList<QByteArray> parts = line.split(' ');
        QCopChannel::send(parts.value(0), parts.value(1), QByteArray::fromHex(parts.value(2)));
        SessionBus::flush(); // it may be the last thing that this process does
    });
    return QCoreApplication::exec();
}

/** Another application. */
class MessageSender
{
public:
    MessageSender() : m_process({"send"}) {}

    void send(const QByteArray &channel, const QByteArray &message, const QByteArray &data)
    {
        m_process.write(channel + ' ' + message + ' ' + data.toHex());
    }
    void kill() { m_process.kill(); }
    int finish() { return m_process.finish(); }

private:
    ChildProcess m_process;
};

/** A connection of the test's own. */
class TestConnection
{
public:
    explicit TestConnection(const QString &address)
        : m_name(QUuid::createUuid().toString()), bus(QDBusConnection::connectToBus(address, m_name))
    {
    }
    ~TestConnection() { QDBusConnection::disconnectFromBus(m_name); }
    Q_DISABLE_COPY_MOVE(TestConnection)

private:
    const QString m_name;

public:
    QDBusConnection bus;
};

/** Waits until everything that is on its way by these connections has been handled, and what it led to. */
inline void settle(const QList<QDBusConnection> &connections)
{
    for (int round = 0; round < 8; ++round) {
        for (const QDBusConnection &connection : connections) {
            // The bus answers in the order in which it reads.
            if (connection.isConnected())
                connection.call(QDBusMessage::createMethodCall(
                    "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId"));
        }
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

#endif
