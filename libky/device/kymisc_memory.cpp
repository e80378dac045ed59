#include "kymisc.h"

#include "descriptor_p.h"
#include "devicepath.h"
#include <algorithm>
#include <array>
#include <fcntl.h>
#include <limits>
#include <QFile>

namespace {

constexpr quint64 ReservedKilobytes = 2048;
constexpr int UnknownStorage = 0x7fffffff;
constexpr qint64 LongestLine = 1024;
/** What any larger number is taken for: four of them can be added, and one be multiplied by ten. */
constexpr quint64 LargestNumber = quint64{1} << 60;

/** The decimal number that a text begins with; 0 when there is none. */
quint64 leadingNumber(QByteArrayView text)
{
    quint64 number = 0;
    for (const char c : text) {
        if (c < '0' || c > '9')
            break;
        number = std::min(number * 10 + quint64(c - '0'), LargestNumber);
    }
    return number;
}

int cutToInt(quint64 number)
{
    return int(std::min<quint64>(number, std::numeric_limits<int>::max()));
}

} // namespace

int KyMisc::availableMemory()
{
    enum Word { Free = 3, Buffers = 5, Cached = 6 };
    QFile file(devicePath(QStringLiteral("/proc/meminfo")));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    file.readLine(LongestLine);
    const QList<QByteArray> words = file.readLine(LongestLine).simplified().split(' ');
    const auto bytes = [&words](Word word) { return leadingNumber(words.value(word)); };
    // Buffers count twice: what callers ask for was measured with that.
    const quint64 kilobytes = (bytes(Free) + bytes(Cached) + 2 * bytes(Buffers)) / 1024;
    return kilobytes > ReservedKilobytes ? cutToInt(kilobytes - ReservedKilobytes) : 0;
}

int KyMisc::availableInternalStorage()
{
    const QByteArray path =
        QFile::encodeName(devicePath(QStringLiteral("/proc/fs/jffs2/1f:03/reliable_free_size")));
    const Descriptor file(::open(path.constData(), O_RDONLY | O_CLOEXEC));
    if (file.get() == 0) { // only in a program whose standard input is closed
        qDebug("DtmFileGetFsAvail: cannot open a proc file");
        return UnknownStorage;
    }
    std::array<char, 32> text{};
    // A file that could not be opened is found out here, as the read fails.
    const ssize_t count = ::read(file.get(), text.data(), text.size());
    if (static_cast<size_t>(count) > text.size()) {
        qDebug("DtmFileGetFsAvail: read len is not avail %d", static_cast<int>(count));
        return UnknownStorage;
    }
    return cutToInt(leadingNumber(QByteArrayView(text.data(), text.size())) / 1024);
}
