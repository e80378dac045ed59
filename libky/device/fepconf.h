#ifndef FEPCONF_H
#define FEPCONF_H

#include "kyexport.h"
#include <QString>

/**
 * The mode settings of the Japanese input method, which it and the applications share in one file,
 * $HOME/Settings/fepmode.ja.conf: 64 bytes, 16 items of 32 bits in the machine's byte order. What the items
 * mean is the input method's affair. `flock` guards the file: the calls wait for each other, in other
 * processes too. Each call takes the file over for the user and the group of its process, if it may.
 *
 * Arrays of items have 16 elements. Calls with an item outside 0 to 15 are false and change nothing.
 */
class KY_EXPORT FepConf
{
public:
    FepConf() = delete;

    static constexpr int Items = 16;

    [[nodiscard]] static QString getConfigPathName();
    /** Fills @p items with the contents of a new file: 130 for items 1 and 3, else 0. */
    static void setConfigDefault(int *items);

    /** Of a file that is shorter than it should be the items that it has are read, and true is returned.
     * @return false when there is no file or it can't be read */
    static bool readFepModeConfigFile(int *items);
    /** Writes all items; makes the file when it is missing. */
    static bool writeFepModeConfigFile(int *items);

    /** Reads one item. @return false, with @p value 0, when there is no file or it can't be read; one with
     * the defaults is put there */
    static bool readFepModeConfigFileItem(int item, int *value);
    /** Writes one item; when there is no file, one is made with the defaults for the others. */
    static bool writeFepModeConfigFileItem(int item, int value);
    /** Makes an item that is 0 become 1, and any other 0; makes the file when it is missing. One that can't
     * be read gets the defaults, and the result is false. */
    static bool toggleFepModeConfigFileItem(int item);

    /**
     * Begins a change of several items, and keeps the file locked until one of the two calls below. Any other
     * call before that, in this process too, waits for ever.
     * @return a descriptor for them, -1 on failure
     */
    [[nodiscard]] static int readLockOpenFepModeConfigFile(int *items);
    /** Writes the items and unlocks. @return false when that failed or @p fd is negative */
    static bool writeUnLockCloseFepModeConfigFile(int fd, int *items);
    /** Unlocks and changes nothing. */
    static void unlockCloseFepModeConfigFile(int fd);
};

#endif
