#ifndef CONFIG_H
#define CONFIG_H

#include "kyexport.h"
#include <QMap>
#include <QString>
#include <QStringList>

typedef QMap<QString, QString> ConfigGroup;

/**
 * A settings file: groups of `key = value` in UTF-8.
 *
 * Reads are tolerant: a missing or damaged file has the groups that can be read. A changed file is written when
 * the object is destroyed, to a sibling file that is renamed, so that a full disk never empties it; an unchanged
 * one isn't written.
 */
class KY_EXPORT Config
{
public:
    enum Domain {
        File, ///< the name is the path of the file
        User  ///< $HOME/Settings/NAME.conf
    };

    explicit Config(const QString &name, Domain domain = User);
    virtual ~Config();
    Config(const Config &) = delete;
    Config &operator=(const Config &) = delete;

    /** False when the file could not be read. */
    [[nodiscard]] bool isValid() const;
    [[nodiscard]] bool hasGroup(const QString &group) const;
    [[nodiscard]] QStringList groupList() const;
    /** Makes a group current, and makes it when there is none. Keys before the first setGroup() are those of the
     * nameless group. */
    void setGroup(const QString &group);

    [[nodiscard]] bool hasKey(const QString &key) const;
    [[nodiscard]] QString readEntry(const QString &key, const QString &defaultValue = QString()) const;
    [[nodiscard]] int readNumEntry(const QString &key, int defaultValue = -1) const;
    [[nodiscard]] bool readBoolEntry(const QString &key, bool defaultValue = false) const;
    [[nodiscard]] QStringList readListEntry(const QString &key, QChar separator) const;

    void writeEntry(const QString &key, const QString &value);
    void writeEntry(const QString &key, const char *value);
    void writeEntry(const QString &key, int value);
    void writeEntry(const QString &key, bool value);
    void writeEntry(const QString &key, const QStringList &list, QChar separator);
    void removeEntry(const QString &key);
    /** Takes all keys out of the current group. */
    void clearGroup();

    /** Writes now. @return false when the new contents did not reach the file, which then is as it was */
    bool write(const QString &file = QString());

protected:
    void read();

    QMap<QString, ConfigGroup> groups;
    QMap<QString, ConfigGroup>::Iterator git; ///< the current group
    QString filename;                         ///< path of the file
    bool changed = false;
};

#endif
