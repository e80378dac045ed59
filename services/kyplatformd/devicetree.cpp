#include "devicetree.h"
#include "filecontents.h"
#include "identity.h"
#include "powersupplies.h"
#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {

/** A value of today's /proc/meminfo, given there in kilobytes, in bytes. */
qint64 memoryValue(const QByteArray &meminfo, const QByteArray &key)
{
    for (const QByteArray &line : meminfo.split('\n')) {
        if (line.startsWith(key + ':'))
            return line.mid(key.size() + 1).simplified().split(' ').value(0).toLongLong() * 1024;
    }
    return 0;
}

/** Bytes that a user without privileges can still fill where HOME lies. Asked of the system, not of the mount
 * table, which doesn't show that volume inside a changed root. */
quint64 freeStorage()
{
    struct statvfs volume = {};
    ::statvfs(QFile::encodeName(QDir::homePath()).constData(), &volume);
    return quint64(volume.f_bavail) * volume.f_frsize;
}

} // namespace

DeviceSources::DeviceSources()
    : powerSupplies("/sys/class/power_supply"), firmware("/sys/class/dmi/id"),
      settings(QDir::homePath() + "/Settings/kyplatformd.conf"), refreshTime(DeviceTree::RefreshTime)
{
}

DeviceTree::DeviceTree(const QString &root, const QString &folder, const DeviceSources &sources,
                       QObject *parent)
    : QObject(parent), m_root(root), m_folder(folder), m_sources(sources),
      m_processor(fileContents("/proc/cpuinfo") + '\n')
{
    connect(&m_timer, &QTimer::timeout, this, &DeviceTree::refresh);
}

DeviceTree::~DeviceTree()
{
    if (!m_written.isEmpty())
        QDir(m_folder).removeRecursively();
}

bool DeviceTree::create()
{
    const QFileInfo proc(m_root + "/proc");
    if (proc.exists() && !proc.isSymLink())
        return true;
    // Before the first look, so that no change falls between.
    m_events = std::make_unique<KernelEvents>();
    connect(m_events.get(), &KernelEvents::changed, this, &DeviceTree::refresh);
    m_timer.start(m_sources.refreshTime);
    return refresh() && linkProc();
}

QByteArray DeviceTree::memoryHeader(const QByteArray &meminfo)
{
    const auto value = [&meminfo](const char *key) { return memoryValue(meminfo, key); };
    const qint64 total = value("MemTotal"), free = value("MemFree");
    const qint64 swapTotal = value("SwapTotal"), swapFree = value("SwapFree");
    const QString memory = QString::asprintf("Mem:  %lld %lld %lld %lld %lld %lld\n", total, total - free,
                                             free, value("Shmem"), value("Buffers"), value("Cached"));
    const QString swap =
        QString::asprintf("Swap: %lld %lld %lld\n", swapTotal, swapTotal - swapFree, swapFree);
    return "        total:    used:    free:  shared: buffers:  cached:\n" + (memory + swap).toLatin1();
}

bool DeviceTree::refresh()
{
    m_complete = true;
    write("apm", apmLine(m_sources.powerSupplies));
    write("meminfo", memoryHeader(fileContents("/proc/meminfo")));
    write("cpuinfo", m_processor);
    writeLine("fs/jffs2/1f:03/reliable_free_size", QByteArray::number(freeStorage()));
    writeIdentity();
    m_warned = !m_complete;
    return m_complete;
}

void DeviceTree::writeIdentity()
{
    const Identity identity = readIdentity(m_sources.settings, m_sources.firmware);
    writeLine("deviceinfo/filever", identity.formatVersion);
    writeLine("deviceinfo/vendor", identity.vendor);
    writeLine("deviceinfo/product", identity.product);
    writeLine("deviceinfo/locale", identity.locale);
    writeLine("deviceinfo/checksum", identity.checksum);
    if (identity.number.isNull())
        remove("deviceinfo/hardno");
    else
        writeLine("deviceinfo/hardno", identity.number);
}

void DeviceTree::write(const QString &name, const QByteArray &contents)
{
    const QString path = m_folder + QLatin1Char('/') + name;
    if (m_written.value(name) == contents && QFile::exists(path))
        return;
    QSaveFile file(path);
    // Without the flush, commit() would put a cut-off file in place when the disk is full.
    if (!QDir().mkpath(QFileInfo(path).path()))
        fail(path, QStringLiteral("its folder cannot be made"));
    else if (file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size() && file.flush() &&
             file.commit())
        m_written.insert(name, contents);
    else
        fail(path, file.errorString());
}

void DeviceTree::writeLine(const QString &name, const QByteArray &line)
{
    write(name, line + '\n');
}

void DeviceTree::remove(const QString &name)
{
    QFile file(m_folder + QLatin1Char('/') + name);
    if (!file.exists() || file.remove())
        m_written.remove(name);
    else
        fail(file.fileName(), file.errorString());
}

void DeviceTree::fail(const QString &path, const QString &reason)
{
    m_complete = false;
    if (!m_warned) // once, and not for each file and again each time the files are refreshed
        qWarning("kyplatformd: cannot write %s: %s", qUtf8Printable(path), qUtf8Printable(reason));
    m_warned = true;
}

bool DeviceTree::linkProc() const
{
    const QByteArray target = QFile::encodeName(m_folder), link = QFile::encodeName(m_root + "/proc");
    const QByteArray fresh = link + ".new";
    ::unlink(fresh.constData());
    const bool made = QDir().mkpath(m_root) && ::symlink(target.constData(), fresh.constData()) == 0 &&
                      ::rename(fresh.constData(), link.constData()) == 0;
    if (!made)
        qWarning("kyplatformd: cannot make %s", link.constData());
    return made;
}
