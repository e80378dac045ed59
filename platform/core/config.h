#ifndef KY_CONFIG_H
#define KY_CONFIG_H

#include "kyexport.h"
#include <QMap>
#include <QString>
#include <QStringList>

typedef QMap<QString, QString> ConfigGroup;

/**
 * A settings file: groups of `key = value` in UTF-8.
 *
 *     key = of the nameless group
 *     [Group]
 *     key = value
 *
 * Reads are tolerant: a byte order mark, CR before LF, blank lines, lines that begin with '#' and lines that
 * aren't of this form are passed over; blanks around names and values don't count; damaged UTF-8 reads as
 * U+FFFD; of a key that comes twice the last value counts. Nothing is escaped, so a line break inside a name
 * or value is written as a blank.
 *
 * A changed file is written when the object is destroyed, to the sibling NAME.new that is renamed, so that
 * neither a full disk nor a power cut empties it; an unchanged one isn't written. Of two writers the last one
 * wins whole.
 */
class KY_EXPORT Config
{
public:
    /** Where a settings file lies. */
    enum Domain {
        File, ///< the name is the path of the file
        User  ///< $HOME/Settings/NAME.conf; the folder is made when missing. With HOME unset nothing is
              ///< written
    };

    /** Reads the file; one that is missing is an empty one, made when there is something to write. */
    explicit Config(const QString &name, Domain domain = User);
    virtual ~Config();
    Config(const Config &) = delete;
    Config &operator=(const Config &) = delete;

    /** False when there is no file or it could not be read. */
    [[nodiscard]] bool isValid() const;
    /** True for a group of the file, and for one that setGroup() has made. */
    [[nodiscard]] bool hasGroup(const QString &group) const;
    /** Names of all groups by code point; that of the nameless group, when it has keys, is empty. */
    [[nodiscard]] QStringList groupList() const;
    /** Makes a group current, and makes it when there is none. Keys before the first setGroup() are those of
     * the nameless group. */
    void setGroup(const QString &group);

    /** True when the current group has the key. */
    [[nodiscard]] bool hasKey(const QString &key) const;
    /** The value of a key of the current group; the default when there is none. */
    [[nodiscard]] QString readEntry(const QString &key, const QString &defaultValue = QString()) const;
    /** The default also for a value that isn't a decimal number of 32 bits. */
    [[nodiscard]] int readNumEntry(const QString &key, int defaultValue = -1) const;
    /** Numbers (0 is false) and the words true, yes, on, false, no, off in any case; else the default. */
    [[nodiscard]] bool readBoolEntry(const QString &key, bool defaultValue = false) const;
    /** Items between separators; a backslash in front of a separator or a backslash makes it part of an item.
     */
    [[nodiscard]] QStringList readListEntry(const QString &key, QChar separator) const;

    /** A key that is empty, has '=' or a line break in it, begins with '[', '#' or a byte order mark or has
     * blanks at an end couldn't be read again: it is refused with a warning. */
    void writeEntry(const QString &key, const QString &value);
    void writeEntry(const QString &key, const char *value); ///< the same, in UTF-8
    void writeEntry(const QString &key, int value);         ///< a decimal number
    void writeEntry(const QString &key, bool value);        ///< 1 or 0
    /** Items between separators, as readListEntry() takes them apart. */
    void writeEntry(const QString &key, const QStringList &list, QChar separator);
    /** Takes a key out of the current group; nothing happens when it has none such. */
    void removeEntry(const QString &key);
    /** Takes all keys out of the current group. */
    void clearGroup();

    /**
     * Writes now, if there are changes.
     * @param file when not empty, the path that this and all later writes go to
     * @return false when the new contents did not reach the file, which then is as it was
     */
    bool write(const QString &file = QString());

protected:
    /** Takes the contents of the file in place of what is in memory. */
    void read();

    QMap<QString, ConfigGroup> groups; ///< contents by name of the group
    /** The current group; groups.end() stands for the nameless group while it has no key. */
    QMap<QString, ConfigGroup>::Iterator git;
    QString filename;     ///< path of the file
    bool changed = false; ///< there is something to write

private:
    const ConfigGroup *currentGroup() const;
    void parse(const QByteArray &contents);

    bool readable = false;
    bool hidden = false; ///< the file is there and can't be read
};

#endif
