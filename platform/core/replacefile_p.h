#ifndef KY_REPLACEFILE_H
#define KY_REPLACEFILE_H

#include <QByteArray>
#include <QString>

/**
 * Gives a file new contents at one stroke: they are written to the sibling PATH.new, reach the disk, and are
 * renamed.
 *
 * Readers see the old contents or the new ones. Of two writers the last one wins whole. Permissions of an
 * existing file stay, and a symbolic link keeps leading to it.
 *
 * @return false, with a warning and the old contents in place, when any step fails
 */
[[nodiscard]] bool replaceFile(const QString &path, const QByteArray &contents);

#endif
