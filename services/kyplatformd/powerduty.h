#ifndef POWERDUTY_H
#define POWERDUTY_H

#include "logininhibitor.h"
#include "qcopchannel.h"
#include "saverinhibitor.h"
#include "senderwatch.h"
#include <QHash>

/**
 * The power manager's part of `setScreenSaverMode(int)`: applications that work without the user keep the
 * device from sleeping. The login manager sees to it; where it doesn't, the desktop's screen saver at least
 * keeps the screen lit. A mode belongs to the application that sent it and ends with it; of several, each
 * counts.
 */
class PowerDuty : public QObject
{
    Q_OBJECT
public:
    /** Values of `setScreenSaverMode(int)`. */
    enum Mode {
        KeepRunning = 0, ///< the device may not sleep, its screen may go dark
        KeepLit = 2,     ///< neither
        Release = 200,   ///< the device may do both again, and the screen saver may start
        HoldSaver = 300  ///< besides the mode before: no screen saver
    };

    /** @param system the bus of the login manager, may be without connection @param session the bus of the
     * screen saver and of the messages */
    explicit PowerDuty(const QDBusConnection &system, const QDBusConnection &session,
                       QObject *parent = nullptr);

private:
    /** What may not happen. */
    struct Demand
    {
        bool sleep = false;
        bool idle = false; ///< nor the screen go dark
        bool saver = false;

        bool operator==(const Demand &other) const = default;
    };

    void handleMessage(const QByteArray &message, const QByteArray &data);
    void setMode(const QByteArray &sender, int mode);
    void forget(const QByteArray &sender);
    [[nodiscard]] Demand all() const;
    void apply();

    QCopChannel m_channel;
    SenderWatch m_senders;
    LoginInhibitor m_login;
    SaverInhibitor m_saver;
    QHash<QByteArray, Demand> m_demands; ///< by sender
};

#endif
