#include "boxwatch.h"
#include "qcopenvelope.h"
#include <algorithm>
#include <fcntl.h>
#include <QDir>
#include <QFile>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

// Time between looks, in ms.
constexpr int BusyPace = 50;     // while a free lock is timed
constexpr int ClosersPace = 250; // while a process that asked for all boxes lives
constexpr int QuietPace = 2000;  // while all locks are held, for those whose closing nobody tells of
constexpr auto Name = "kyplatformd";

/** True when the kernel's list shows a lock on the file. This disturbs nobody; on file systems whose device
 * numbers differ from those in the list it sees nothing. */
bool isListedAsLocked(const struct stat &file)
{
    QFile list(QStringLiteral("/proc/locks"));
    if (!list.open(QIODevice::ReadOnly))
        return false;
    const QByteArray id = QString::asprintf(" %02x:%02x:%llu ", major(file.st_dev), minor(file.st_dev),
                                            static_cast<unsigned long long>(file.st_ino))
                              .toLatin1();
    for (const QByteArray &line : list.readAll().split('\n')) {
        if (line.contains(" FLOCK ") && line.contains(id))
            return true;
    }
    return false;
}

/** Takes the lock for an instant, shared. Only for a lock that has long been free: a process that tried in
 * that very instant would fail once. */
bool canBeLocked(const QByteArray &path)
{
    const int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0)
        return true;
    const bool held = ::flock(fd, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    ::close(fd);
    return !held;
}

bool isLocked(const QByteArray &path)
{
    struct stat file
    {
    };
    return ::stat(path.constData(), &file) == 0 && isListedAsLocked(file);
}

void sendOpenFile(const QString &box)
{
    qDebug("kyplatformd: box \"%s\" is free", qUtf8Printable(box));
    QCopEnvelope envelope("QPE/System", "openFile(QString,QString)");
    envelope << box << QString::fromLatin1(Name);
}

} // namespace

BoxWatch::BoxWatch(QObject *parent) : QObject(parent), m_channel("QPE/System")
{
    connect(&m_channel, &QCopChannel::received, this, &BoxWatch::handleMessage);
    connect(&m_closes, &CloseWatch::closed, this, &BoxWatch::lookSoon);
    connect(&m_timer, &QTimer::timeout, this, &BoxWatch::check);
}

QString BoxWatch::lockFile(const QString &box)
{
    const QString internal = QStringLiteral("F0:");
    const QString file =
        box.startsWith(internal) ? QDir::homePath() + "/Applications/dtm/" + box.mid(internal.size()) : box;
    return file + QLatin1String("-lock");
}

void BoxWatch::handleMessage(const QByteArray &message, const QByteArray &data)
{
    QString box, sender;
    QCopArguments arguments(data);
    arguments >> box >> sender;
    if (arguments.status() != QDataStream::Ok || sender == QLatin1String(Name))
        return;
    if (message == "closeFile(QString,QString)")
        closeAsked(box);
    else if (message == "openFile(QString,QString)")
        openSent(box);
    lookSoon();
}

void BoxWatch::lookSoon()
{
    if (!m_timer.isActive() || m_timer.interval() > BusyPace)
        m_timer.start(BusyPace);
}

void BoxWatch::closeAsked(const QString &box)
{
    if (box.isEmpty())
        m_closersOfAll.insert(m_channel.messageSource());
    else if (canBeWatched(box)) {
        m_boxes.insert(box, QElapsedTimer());
        m_closes.add(lockFile(box));
    }
}

/** False for what nobody has and only fills the memory. */
bool BoxWatch::canBeWatched(const QString &box) const
{
    return QFile::encodeName(box).size() <= LongestPath &&
           (m_boxes.size() < MostBoxes || m_boxes.contains(box));
}

void BoxWatch::openSent(const QString &box)
{
    // The watch over one box goes on: an application that waits ignores what another process of its own name
    // sends, and would wait for ever if that one was the last to have the box.
    if (box.isEmpty())
        m_closersOfAll.clear();
}

void BoxWatch::forget(const QString &box)
{
    m_boxes.remove(box);
    m_closes.remove(lockFile(box));
}

void BoxWatch::check()
{
    checkBoxes();
    checkClosersOfAll();
    setPace();
}

void BoxWatch::checkBoxes()
{
    for (const QString &box : m_boxes.keys()) {
        const QByteArray lock = QFile::encodeName(lockFile(box));
        QElapsedTimer &freeFor = m_boxes[box];
        if (isLocked(lock)) {
            freeFor.invalidate();
        } else if (!freeFor.isValid()) {
            freeFor.start();
        } else if (freeFor.hasExpired(FreeTime)) {
            if (canBeLocked(lock)) {
                sendOpenFile(box);
                forget(box);
            } else {
                freeFor.invalidate();
            }
        }
    }
}

void BoxWatch::checkClosersOfAll()
{
    const auto isGone = [](const QByteArray &source) { return !QCopChannel::isRunning(source); };
    if (m_closersOfAll.removeIf(isGone) > 0 && m_closersOfAll.isEmpty())
        sendOpenFile(QString());
}

void BoxWatch::setPace()
{
    if (m_boxes.isEmpty() && m_closersOfAll.isEmpty()) {
        m_timer.stop();
        return;
    }
    const auto isTimed = [](const QElapsedTimer &freeFor) { return freeFor.isValid(); };
    const bool busy = std::any_of(m_boxes.cbegin(), m_boxes.cend(), isTimed);
    const int idlePace = m_closersOfAll.isEmpty() ? QuietPace : ClosersPace;
    m_timer.start(busy ? BusyPace : idlePace);
}
