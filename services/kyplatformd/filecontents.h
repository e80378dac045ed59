#ifndef FILECONTENTS_H
#define FILECONTENTS_H

#include <QFile>

/** What a small file holds, without the white space at its ends; empty when it can't be read. */
[[nodiscard]] inline QByteArray fileContents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
}

#endif
