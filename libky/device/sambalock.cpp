#include "sambalock_p.h"

#include <QDataStream>

namespace {

struct Entry
{
    qint32 unused[2];
    quint32 shareMode;
    qint32 unusedToo[2];
};

/** Leaves the status of the stream at an error when there is no whole entry any more. */
Entry readEntry(QDataStream &stream)
{
    Entry entry{};
    stream >> entry.unused[0] >> entry.unused[1] >> entry.shareMode >> entry.unusedToo[0] >>
        entry.unusedToo[1];
    return entry;
}

} // namespace

bool hasSambaLockEntry(QIODevice &lockFile, char mask, char value, bool equal)
{
    QDataStream stream(&lockFile);
    stream.setByteOrder(QDataStream::LittleEndian);
    qint32 unused = 0, count = 0;
    quint16 nameLength = 0;
    stream >> unused >> count >> nameLength;
    if (nameLength == 0)
        return false;
    stream.skipRawData(nameLength);
    for (; count > 0; --count) { // the count is what the file claims: the file may end before
        const Entry entry = readEntry(stream);
        if (stream.status() != QDataStream::Ok)
            return false;
        const bool isValue = (entry.shareMode & quint8(mask)) == quint8(value);
        if (isValue == equal)
            return true;
    }
    return false;
}
