#include "devicepath.h"

#include "deviceroot.h"
#include <QByteArray>
#include <QFile>

QString devicePath(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    const size_t length = kyDevicePath(name.constData(), nullptr, 0);
    QByteArray rooted(static_cast<qsizetype>(length) + 1, '\0');
    kyDevicePath(name.constData(), rooted.data(), length + 1);
    rooted.chop(1);
    return QFile::decodeName(rooted);
}

bool startsWithDevicePath(const QString &path, const QString &prefix)
{
    return path.startsWith(prefix) || path.startsWith(devicePath(prefix));
}
