#ifndef LOGININHIBITOR_H
#define LOGININHIBITOR_H

#include <memory>
#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusUnixFileDescriptor>
#include <QTimer>

/**
 * An inhibitor of the login manager: what it names doesn't happen while the descriptor that the login manager
 * gave is open. One question is under way at a time, however often the demand changes meanwhile.
 */
class LoginInhibitor : public QObject
{
    Q_OBJECT
public:
    /** Time in ms after which an unanswered question counts as refused. An answer that comes later still
     * counts. */
    static constexpr int AnswerTime = 5000;

    /** @param bus that of the login manager; may be without connection */
    explicit LoginInhibitor(const QDBusConnection &bus, QObject *parent = nullptr);

    /** What is to be inhibited from now on: "sleep", "sleep:idle"; empty for nothing. */
    void demand(const QString &what);
    /** True when the login manager did not give what it was asked for last. */
    [[nodiscard]] bool isRefused() const { return m_refused; }

signals:
    /** isRefused() may have changed. */
    void answered();

private:
    void ask();
    void askAgain();
    void takeAnswer();
    void hold(const QDBusUnixFileDescriptor &descriptor);
    void noteRefusal(const QString &reason);
    void release();

    QDBusConnection m_bus;
    QDBusServiceWatcher m_watcher; ///< for a login manager that comes later
    std::unique_ptr<QDBusPendingCallWatcher> m_call;
    QTimer m_limit;
    QString m_demanded;
    QString m_asked;
    QString m_held;
    QDBusUnixFileDescriptor m_descriptor; ///< that of m_held
    bool m_refused = false;
};

#endif
