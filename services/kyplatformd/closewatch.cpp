#include "closewatch.h"
#include <QFile>
#include <sys/inotify.h>
#include <unistd.h>

CloseWatch::CloseWatch(QObject *parent)
    : QObject(parent), m_descriptor(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
{
    if (m_descriptor < 0)
        return;
    m_notifier = std::make_unique<QSocketNotifier>(m_descriptor, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &CloseWatch::readEvents);
}

CloseWatch::~CloseWatch()
{
    m_notifier.reset();
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

void CloseWatch::add(const QString &file)
{
    const int watch = ::inotify_add_watch(m_descriptor, QFile::encodeName(file).constData(), IN_CLOSE_WRITE);
    if (watch >= 0)
        m_watches.insert(file, watch);
}

void CloseWatch::remove(const QString &file)
{
    if (m_watches.contains(file))
        ::inotify_rm_watch(m_descriptor, m_watches.take(file));
}

void CloseWatch::readEvents()
{
    char events[4096]; // which of the files it was doesn't matter
    while (::read(m_descriptor, events, sizeof events) > 0) {
    }
    emit closed();
}
