#include "kymisc.h"

#include <algorithm>
#include <malloc.h>
#include <optional>
#include <QDir>
#include <QFile>
#include <QRegularExpression>

namespace {

constexpr qint64 LongestCommandLine = 1023; // in bytes
constexpr QByteArrayView MemorySizes[] = {"VmSize", "VmRSS", "VmData"};

bool isProcess(const QString &name)
{
    return std::all_of(name.begin(), name.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
}

/** The arguments with a blank behind each; empty for a thread of the kernel, none when the process has ended.
 */
std::optional<QString> commandLineOf(const QString &process)
{
    QFile file(QStringLiteral("/proc/%1/cmdline").arg(process));
    char bytes[LongestCommandLine];
    const qint64 count = file.open(QIODevice::ReadOnly) ? file.read(bytes, LongestCommandLine) : -1;
    if (count < 0)
        return std::nullopt;
    std::replace(bytes, bytes + count, '\0', ' ');
    return QString::fromLocal8Bit(bytes, count);
}

void appendProcess(QStringList &list, KyMisc::ListType type, const QString &process,
                   const QString &commandLine)
{
    switch (type) {
    case KyMisc::ListPid:
        list.append(process);
        break;
    case KyMisc::ListCmdline:
        list.append(commandLine);
        break;
    case KyMisc::ListPidCmdline:
        list.append(process + QLatin1Char(' ') + commandLine);
        break;
    }
}

bool isMemorySize(const QByteArray &line)
{
    return std::ranges::any_of(MemorySizes, [&line](QByteArrayView name) { return line.startsWith(name); });
}

} // namespace

QStringList KyMisc::procList(const QRegularExpression &expression, unsigned int maxCount,
                             KyMisc::ListType type)
{
    QStringList list;
    if (!expression.isValid()) {
        qWarning("procList: %s", qUtf8Printable(expression.errorString()));
        return list;
    }
    const QDir processes(QStringLiteral("/proc")); // the machine's own, whatever the device root
    for (const QString &process : processes.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Unsorted)) {
        const std::optional<QString> commandLine = isProcess(process) ? commandLineOf(process) : std::nullopt;
        if (!commandLine || !expression.match(*commandLine).hasMatch())
            continue;
        appendProcess(list, type, process, *commandLine); // of an unknown type nothing, and it counts
        if (--maxCount == 0)                              // none left; from 0 on it never is
            break;
    }
    return list;
}

void KyMisc::dumpMemInfo(bool withMallocStats)
{
    QByteArray sizes;
    QFile status(QStringLiteral("/proc/self/status"));
    if (status.open(QIODevice::ReadOnly)) {
        for (QByteArray line = status.readLine(); !line.isEmpty(); line = status.readLine()) {
            if (isMemorySize(line))
                sizes += line.trimmed() + ' ';
        }
    }
    qDebug("%s", sizes.constData());
    if (withMallocStats)
        malloc_stats();
}
