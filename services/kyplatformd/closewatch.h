#ifndef CLOSEWATCH_H
#define CLOSEWATCH_H

#include <memory>
#include <QHash>
#include <QObject>
#include <QSocketNotifier>

/**
 * Tells when somebody closes a file that was open for writing, which a process does that lets go of a lock
 * and one that is killed. Costs nothing while nothing happens.
 */
class CloseWatch : public QObject
{
    Q_OBJECT
public:
    explicit CloseWatch(QObject *parent = nullptr);
    ~CloseWatch() override;

    /** Watches a file from now on. One that isn't there is not watched, nor any when the system has no more
     * watches to give. */
    void add(const QString &file);
    void remove(const QString &file);

signals:
    /** One of the files was closed. Locks on it go an instant later. */
    void closed();

private:
    void readEvents();

    const int m_descriptor;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QHash<QString, int> m_watches;
};

#endif
