#include "senderwatch.h"
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

SenderWatch::SenderWatch(const QDBusConnection &bus, QObject *parent) : QObject(parent)
{
    m_watcher.setConnection(bus);
    m_watcher.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
    connect(&m_watcher, &QDBusServiceWatcher::serviceUnregistered, this, &SenderWatch::forget);
}

void SenderWatch::add(const QByteArray &source)
{
    const QString name = QString::fromLatin1(source);
    if (m_watcher.watchedServices().contains(name))
        return;
    m_watcher.addWatchedService(name);
    askFor(name); // it may have ended before the watch began
}

void SenderWatch::askFor(const QString &name)
{
    QDBusMessage question = QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                           "org.freedesktop.DBus", "NameHasOwner");
    question << name;
    auto *call = new QDBusPendingCallWatcher(m_watcher.connection().asyncCall(question), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, name, call] {
        const QDBusPendingReply<bool> reply = *call;
        if (reply.isError() || !reply.value())
            forget(name);
        call->deleteLater();
    });
}

void SenderWatch::forget(const QString &name)
{
    if (m_watcher.removeWatchedService(name))
        emit ended(name.toLatin1());
}
