#ifndef KY_TEST_BOXHOLDER_H
#define KY_TEST_BOXHOLDER_H

#include "boxwatch.h"
#include "childprocess.h"
#include "platformservice.h"
#include "qcopenvelope.h"
#include <fcntl.h>
#include <memory>
#include <QtTest>
#include <sys/file.h>

// Processes that hold boxes as users of the close protocol do, for the tests of the watch over them.

inline void sendMessage(const QByteArray &message, const QString &box, const QString &sender)
{
    QCopEnvelope envelope("QPE/System", message);
    envelope << box << sender;
}

inline void sendClose(const QString &box, const QString &sender)
{
    sendMessage("closeFile(QString,QString)", box, sender);
}

inline void sendOpen(const QString &box, const QString &sender)
{
    sendMessage("openFile(QString,QString)", box, sender);
}

/** LOCK BOX: holds the lock of a box and asks others to close it, as a process that opened it does. Its
 * input: "release", "take". With an empty LOCK it only asks. */
inline int childMain(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const auto take = [file = argv[2]] {
        const int fd = ::open(file, O_RDWR | O_CREAT, 0600);
        return fd >= 0 && ::flock(fd, LOCK_EX | LOCK_NB) == 0 ? fd : -1;
    };
    int fd = *argv[2] ? take() : -1;
    if (*argv[2] && fd < 0)
        return 1;
    sendClose(QString::fromLocal8Bit(argv[3]), "holder");
    SessionBus::flush(); // whoever hears of it below may send something that is to come behind it
    ChildInput input([&](const QByteArray &line) {
        const bool done = line == "release" ? ::close(fd) == 0 : (fd = take()) >= 0;
        ChildProcess::say(done ? "done" : "failed");
    });
    ChildProcess::say("held");
    return QCoreApplication::exec();
}

/** Keeps the openFile messages for some boxes: the box, a blank, the sender. */
class OpenFiles
{
public:
    explicit OpenFiles(const QStringList &boxes) : m_boxes(boxes), m_channel("QPE/System")
    {
        QObject::connect(&m_channel, &QCopChannel::received,
                         [this](const QByteArray &message, const QByteArray &data) {
                             if (message == "openFile(QString,QString)")
                                 note(data);
                         });
    }
    QStringList seen;

private:
    void note(const QByteArray &data)
    {
        QString box, sender;
        QCopArguments arguments(data);
        arguments >> box >> sender;
        if (m_boxes.contains(box))
            seen.append(box + ' ' + sender);
    }
    const QStringList m_boxes;
    QCopChannel m_channel;
};

/** A kyplatformd and boxes in HOME. */
class WatchedBoxes : public QObject
{
protected:
    /** Longer than the watch takes to give a free box away. */
    static constexpr int Long = 650;

    [[nodiscard]] static QString box(const QString &name) { return QDir::homePath() + '/' + name; }
    [[nodiscard]] static QString lock(const QString &name) { return BoxWatch::lockFile(box(name)); }

    [[nodiscard]] bool prepare()
    {
        return QDir().mkpath(QDir::homePath() + "/Applications/dtm") && m_service.isReady();
    }

private:
    PlatformService m_service;
};

#endif
