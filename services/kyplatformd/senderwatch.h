#ifndef SENDERWATCH_H
#define SENDERWATCH_H

#include <QDBusConnection>
#include <QDBusServiceWatcher>

/** Tells when processes that sent a message have ended. Never waits for the bus. */
class SenderWatch : public QObject
{
    Q_OBJECT
public:
    /** @param bus the one that the messages come by */
    explicit SenderWatch(const QDBusConnection &bus, QObject *parent = nullptr);

    /** Watches a process from now on, until it ends. @param source as QCopChannel::messageSource() gives it
     */
    void add(const QByteArray &source);

signals:
    /** A watched process is no more; also for one that had ended before it was added. */
    void ended(const QByteArray &source);

private:
    void askFor(const QString &name);
    void forget(const QString &name);

    QDBusServiceWatcher m_watcher;
};

#endif
