#ifndef BOXWATCH_H
#define BOXWATCH_H

#include "closewatch.h"
#include "qcopchannel.h"
#include <QElapsedTimer>
#include <QHash>
#include <QSet>
#include <QTimer>

/**
 * Mends what a killed process leaves behind in the close protocol. A process that was asked by `closeFile` to
 * let go of a box waits for an `openFile`; one that is killed never sends it. So when the lock of a box that
 * was asked for stays free for 300 ms, the watch sends `openFile` for it, once, and after a close for all
 * boxes whose sender has died, an `openFile` with an empty path.
 */
class BoxWatch : public QObject
{
    Q_OBJECT
public:
    static constexpr int FreeTime = 300; // ms
    /** Boxes watched at a time; a request for one more is ignored. */
    static constexpr qsizetype MostBoxes = 256;
    static constexpr qsizetype LongestPath = 255; // bytes in the path of a box

    explicit BoxWatch(QObject *parent = nullptr);

    /** Where the lock of a box lies; "F0:" stands for the folder of the internal boxes. */
    [[nodiscard]] static QString lockFile(const QString &box);

private:
    void handleMessage(const QByteArray &message, const QByteArray &data);
    void closeAsked(const QString &box);
    void openSent(const QString &box);
    [[nodiscard]] bool canBeWatched(const QString &box) const;
    void lookSoon();
    void forget(const QString &box);
    void check();
    void checkBoxes();
    void checkClosersOfAll();
    void setPace();

    QCopChannel m_channel;
    CloseWatch m_closes; ///< of the locks of the boxes asked for
    QTimer m_timer;
    QHash<QString, QElapsedTimer> m_boxes; ///< boxes asked for; the clock runs while the lock is free
    QSet<QByteArray> m_closersOfAll;       ///< processes that asked for all boxes
};

#endif
