#ifndef KY_MOUNTTABLE_H
#define KY_MOUNTTABLE_H

#include "filesystem.h"
#include <QList>

/** The entries of a mount table in its order: one a line, of the fields disk, path, type and options, in
 * which blanks and the like are written as octal numbers (\040). Other lines are passed over. */
QList<MountEntry> parseMountTable(const QByteArray &table);

/** Which entry from a first one on is mounted nearest above a path, the last of several; -1 when none is. */
qsizetype indexHolding(const QList<MountEntry> &mounts, const QString &path, qsizetype first = 0);

/** A path without links, for as much of it as exists. */
QString resolvedPath(const QString &path);

#endif
