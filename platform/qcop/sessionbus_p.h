#ifndef KY_SESSIONBUS_H
#define KY_SESSIONBUS_H

#include "kyexport.h"
#include <QByteArray>
#include <QDBusConnection>
#include <QString>

/**
 * The session bus as the platform uses it: one connection a process, opened at first use.
 *
 * Only a bus that answers within 300 ms is used; no bus is ever started. The address is that of
 * DBUS_SESSION_BUS_ADDRESS, else the socket "bus" in XDG_RUNTIME_DIR; only Unix sockets are looked at. What
 * the platform puts on the bus carries a hash of HOME, so that two profiles on one bus don't meet.
 */
namespace SessionBus {

/** False when there is no bus that answers, and for good once the bus has died. */
[[nodiscard]] KY_EXPORT bool isAvailable();

/** The connection; not connected when isAvailable() is false. */
[[nodiscard]] KY_EXPORT QDBusConnection connection();

/** A connection to another bus, under the same conditions. @param addresses as a bus is told of in the
 * environment, separated by semicolons @return one that is not connected when there is no bus that answers */
[[nodiscard]] KY_EXPORT QDBusConnection open(const QByteArray &addresses, const QString &name);

/** "h" and 16 hexadecimal digits that stand for HOME. */
[[nodiscard]] KY_EXPORT QString profile();

/** Bus name of this profile: org.ky.PROFILE.ROLE, with @p name escaped behind it when it isn't null. */
[[nodiscard]] KY_EXPORT QString serviceName(const QString &role, const QByteArray &name = QByteArray());

/** Takes a bus name. When it is taken, this process waits in line for it if @p queue is true.
 * @return true when the name now belongs to this process */
bool KY_EXPORT requestName(const QString &service, bool queue);
KY_EXPORT void releaseName(const QString &service);

/** True when a process owns the name; also for the names of connections, which are never used twice. */
[[nodiscard]] KY_EXPORT bool hasOwner(const QString &service);
/** True when this process owns the name, and does not only wait in line for it. */
[[nodiscard]] KY_EXPORT bool isOwner(const QString &service);

/** Asks the bus to start the program that stands for a name, and waits for nothing; a bus that knows no such
 * program does nothing. */
KY_EXPORT void startService(const QString &service);

/** Waits, at most 1 s, until the bus has what was sent. The end of the process does so too, by exit() or a
 * return from main(), not by _exit(). */
KY_EXPORT void flush();

} // namespace SessionBus

#endif
