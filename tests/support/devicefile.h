#ifndef KY_TEST_DEVICEFILE_H
#define KY_TEST_DEVICEFILE_H

#include "devicepath.h"
#include <QDir>
#include <QFile>
#include <QFileInfo>

/** Makes a file of the device, with its folders, or overwrites it. */
inline bool writeDeviceFile(const QString &path, const QByteArray &contents)
{
    QFile file(devicePath(path));
    return QDir().mkpath(QFileInfo(file).path()) && file.open(QIODevice::WriteOnly) &&
           file.write(contents) == contents.size();
}

inline bool removeDeviceFile(const QString &path)
{
    return QFile::remove(devicePath(path));
}

#endif
