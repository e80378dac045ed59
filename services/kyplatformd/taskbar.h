#ifndef TASKBAR_H
#define TASKBAR_H

#include "fepstate_p.h"
#include "qcopchannel.h"
#include "qcopenvelope.h"
#include "senderwatch.h"
#include <QSet>
#include <QTimer>

/**
 * The task bar's part of the messages on "QPE/TaskBar". What applications ask of the input method becomes the
 * state that they see; a lock, which the desktop has no use for, is remembered while its sender lives.
 */
class TaskBar : public QObject
{
    Q_OBJECT
public:
    static constexpr qsizetype LongestMethod = 64; // characters in the name of an input method

    /** Writes the state that a session begins with: off and hidden. @param session the bus of the messages */
    explicit TaskBar(const QDBusConnection &session, QObject *parent = nullptr);
    /** Takes the state away. */
    ~TaskBar() override;

    /** True while an application that asked for it keeps the user from changing to another one. */
    [[nodiscard]] bool isLocked() const { return !m_locks.isEmpty(); }

private:
    void handleMessage(const QByteArray &message, const QByteArray &data);
    void keepState();
    void setSwitch(const QByteArray &message);
    void setMode(QCopArguments &arguments);
    void setMethod(QCopArguments &arguments);
    void setLock(QCopArguments &arguments);
    void unlock(const QByteArray &sender);

    QCopChannel m_channel;
    SenderWatch m_senders;
    QSet<QByteArray> m_locks; ///< senders
    FepState m_state;
    QTimer m_timer; ///< until the state is written
};

#endif
