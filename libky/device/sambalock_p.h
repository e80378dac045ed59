#ifndef SAMBALOCK_P_H
#define SAMBALOCK_P_H

class QIODevice;

/**
 * True when for some entry of a lock file the share mode's low byte, cut down to the bits of @p mask, is
 * @p value (@p equal true) or isn't (@p equal false). See KyMisc::checkTheSmbShareFileMode().
 * @param lockFile read from where it stands, up to the first such entry. An entry that is cut short is none.
 */
[[nodiscard]] bool hasSambaLockEntry(QIODevice &lockFile, char mask, char value, bool equal);

#endif
