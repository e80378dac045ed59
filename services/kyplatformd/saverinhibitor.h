#ifndef SAVERINHIBITOR_H
#define SAVERINHIBITOR_H

#include <memory>
#include <optional>
#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>

/**
 * Holds off the desktop's screen saver, which gives a number for it. A number that comes when nobody wants it
 * any more is given back at once. One question is under way at a time.
 */
class SaverInhibitor : public QObject
{
    Q_OBJECT
public:
    /** @param bus that of the screen saver, which need not be there yet */
    explicit SaverInhibitor(const QDBusConnection &bus, QObject *parent = nullptr);
    /** Lets go of the screen saver. */
    ~SaverInhibitor() override;

    /** True: the screen saver is to be held off from now on. */
    void demand(bool wanted);

private:
    void settle();
    void ask();
    void takeAnswer();
    void giveBack();
    void changeOwner(const QString &newOwner);

    QDBusConnection m_bus;
    QDBusServiceWatcher m_watcher;
    std::unique_ptr<QDBusPendingCallWatcher> m_call;
    bool m_wanted = false;
    std::optional<quint32> m_number; ///< while the screen saver is held off
};

#endif
