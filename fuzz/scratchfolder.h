#ifndef SCRATCHFOLDER_H
#define SCRATCHFOLDER_H

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

/** A template for a QTemporaryDir in memory where the machine has such a file system: thousands of files that
 * replace each other keep a disk busy for minutes. */
inline QString scratchFolder()
{
    const QFileInfo memory(QStringLiteral("/dev/shm"));
    const QString parent = memory.isDir() && memory.isWritable() ? memory.filePath() : QDir::tempPath();
    return parent + QStringLiteral("/fuzz-XXXXXX");
}

#endif
