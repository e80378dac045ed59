#ifndef FILESERVER_H
#define FILESERVER_H

#include "qcopchannel.h"
#include <memory>
#include <QDBusConnection>
#include <QDBusPendingCallWatcher>

/**
 * The server process behind `stopSamba()` and `startSamba()`: the service unit that the key "Unit" of the
 * group [Samba] in $HOME/Settings/kyplatformd.conf names, such as smbd.service. Without it nothing happens.
 * The key "Bus" says whose unit it is: system, which is the default, or user. One call is under way at a
 * time; of the messages that arrive meanwhile the last one counts.
 */
class FileServer : public QObject
{
    Q_OBJECT
public:
    /** @param system the bus of the machine's service manager @param session that of the session's; both may
     * be without connection */
    explicit FileServer(const QDBusConnection &system, const QDBusConnection &session,
                        QObject *parent = nullptr);

    /** True for the name of a service unit, such as smbd.service, and nothing else. */
    [[nodiscard]] static bool isServiceUnit(const QString &name);

private:
    void handleMessage(const QByteArray &message);
    void control(const QString &method);
    void call(const QDBusConnection &bus, const QString &method, const QString &unit);
    void takeAnswer(const QString &method, const QString &unit);

    const QDBusConnection m_system;
    const QDBusConnection m_session;
    QCopChannel m_channel;
    std::unique_ptr<QDBusPendingCallWatcher> m_call;
    QString m_wanted; ///< the method that comes next; empty for none
};

#endif
