#include "devicetree.h"
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStorageInfo>
#include <unistd.h>

namespace {

// Values of the battery status in /proc/apm.
enum BatteryStatus { High = 0, Low = 1, Critical = 2, Charging = 3, NotPresent = 4, VeryLow = 127 };

/** The highest charge in percent that still counts as a status. */
struct ChargeLimit
{
    int percent;
    BatteryStatus status;
};
constexpr ChargeLimit ChargeLimits[] = {{5, Critical}, {10, VeryLow}, {30, Low}, {100, High}};

struct Power
{
    bool online = true; // a machine without any battery runs on the mains
    BatteryStatus status = NotPresent;
    int percent = -1;
    int seconds = -1;
};

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
}

int numberIn(const QString &path)
{
    bool valid = false;
    const int number = contentsOf(path).toInt(&valid);
    return valid ? number : -1;
}

BatteryStatus statusOf(const QByteArray &state, int percent)
{
    if (state == "Charging")
        return Charging;
    for (const ChargeLimit &limit : ChargeLimits) {
        if (percent <= limit.percent)
            return limit.status;
    }
    return High;
}

/** The machine's own battery, not that of a mouse. */
bool isSystemBattery(const QString &supply)
{
    return contentsOf(supply + "/type") == "Battery" && contentsOf(supply + "/scope") != "Device" &&
           contentsOf(supply + "/present") != "0";
}

bool isExternalSupply(const QString &supply)
{
    const QByteArray type = contentsOf(supply + "/type");
    return type == "Mains" || type.startsWith("USB");
}

Power readPower(const QString &powerSupplies)
{
    Power power;
    bool external = false;
    for (const QFileInfo &entry : QDir(powerSupplies).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString supply = entry.filePath();
        if (isExternalSupply(supply))
            external = external || numberIn(supply + "/online") > 0;
        if (power.status != NotPresent || !isSystemBattery(supply))
            continue;
        const QByteArray state = contentsOf(supply + "/status");
        power.percent = qBound(-1, numberIn(supply + "/capacity"), 100);
        power.seconds = numberIn(supply + "/time_to_empty_now");
        power.status = statusOf(state, power.percent < 0 ? 100 : power.percent);
        power.online = state != "Discharging";
    }
    power.online = power.online || external;
    return power;
}

/** A value of today's /proc/meminfo, given there in kilobytes, in bytes. */
qint64 memoryValue(const QByteArray &meminfo, const QByteArray &key)
{
    for (const QByteArray &line : meminfo.split('\n')) {
        if (line.startsWith(key + ':'))
            return line.mid(key.size() + 1).simplified().split(' ').value(0).toLongLong() * 1024;
    }
    return 0;
}

QByteArray lineOf(const QByteArray &text)
{
    return text + '\n';
}

} // namespace

DeviceTree::DeviceTree(const QString &root, const QString &folder, QObject *parent)
    : QObject(parent), m_root(root), m_folder(folder)
{
    connect(&m_timer, &QTimer::timeout, this, [this] { m_complete = refresh(); });
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
    if (!writeIdentity() || !refresh() || !linkProc())
        return false;
    m_timer.start(RefreshTime);
    return true;
}

QByteArray DeviceTree::apmLine(const QString &powerSupplies)
{
    const Power power = readPower(powerSupplies);
    const char unit = power.seconds < 0 ? '?' : 's';
    const QString line =
        QString::asprintf("1.16 1.2 0x02 0x%02x 0x%02x 0xff %d%% %d %c\n", power.online ? 1 : 0,
                          unsigned(power.status), power.percent, power.seconds, unit);
    return line.toLatin1();
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
    const QStorageInfo home(QDir::homePath());
    return write("apm", apmLine(QStringLiteral("/sys/class/power_supply"))) &&
           write("meminfo", memoryHeader(contentsOf(QStringLiteral("/proc/meminfo")))) &&
           write("fs/jffs2/1f:03/reliable_free_size", lineOf(QByteArray::number(home.bytesAvailable())));
}

bool DeviceTree::writeIdentity()
{
    const QString dmi = QStringLiteral("/sys/class/dmi/id/");
    const QByteArray locale = qgetenv("LANG");
    const QByteArray version = "1.0", vendor = contentsOf(dmi + "sys_vendor"),
                     product = contentsOf(dmi + "product_name"), number = "0",
                     language = locale.left(locale.indexOf('.'));
    const QByteArray all = version + vendor + product + number + language;
    const QByteArray sum = QCryptographicHash::hash(all, QCryptographicHash::Md5).toHex();
    return write("deviceinfo/filever", lineOf(version)) && write("deviceinfo/vendor", lineOf(vendor)) &&
           write("deviceinfo/product", lineOf(product)) && write("deviceinfo/hardno", lineOf(number)) &&
           write("deviceinfo/locale", lineOf(language)) && write("deviceinfo/checksum", lineOf(sum)) &&
           write("cpuinfo", lineOf(contentsOf(QStringLiteral("/proc/cpuinfo"))));
}

bool DeviceTree::write(const QString &name, const QByteArray &contents)
{
    if (m_written.value(name) == contents)
        return true;
    const QString path = m_folder + QLatin1Char('/') + name;
    QSaveFile file(path);
    const bool written = QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) &&
                         file.write(contents) == contents.size() && file.commit();
    if (written)
        m_written.insert(name, contents);
    else if (m_complete) // once, and not again each time the files are refreshed
        qWarning("kyplatformd: cannot write %s: %s", qUtf8Printable(path),
                 qUtf8Printable(file.errorString()));
    return written;
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
