#ifndef KYSTRINGSELECT_H
#define KYSTRINGSELECT_H

#include "kyexport.h"
#include <memory>
#include <QComboBox>
#include <QStringList>

class KyStringSelectPrivate;

/**
 * A combo box with the strings that the user used, newest first, below an empty row. They are kept in a group
 * of the settings file "haldenlist", where applications find each other's histories by the group's name.
 *
 * The box may be narrower than its widest string.
 */
class KY_EXPORT KyStringSelect : public QComboBox
{
    Q_OBJECT
public:
    /** No row, no group: nothing is read before setGroup(). */
    explicit KyStringSelect(QWidget *parent = nullptr, const char *name = nullptr);
    /** As with setGroup(). */
    KyStringSelect(const QString &group, const QStringList &defaults, QWidget *parent = nullptr,
                   const char *name = nullptr);
    ~KyStringSelect() override;

    /** How many strings are kept, 20 at first. Those beyond it go one with each addition, not at once; of 0
     * or less the newest string stays all the same. */
    void setMax(int max);
    /** Reads the history of a group and shows it. @param defaults the history while the group has never been
     * written */
    void setGroup(const QString &group, const QStringList &defaults);
    /** Shows the history as it is now, with the empty row as the current one. */
    void reload();
    /** Writes the history to its group; addStringAtTop() does so by itself. */
    void write();
    /**
     * Puts a string in front of the history, each run of white space in it a single blank and none at its
     * ends, and writes the history. The rows of the box stay: reload() shows the new order.
     *
     * @param text any text: one with the file's separator ';' comes back whole. Nothing happens for one that
     * is empty or all white space
     * @param keepDuplicates leaves strings that are equal to it in the list
     * @return false when nothing happened; true also when the file can't be written, which gives a warning
     */
    bool addStringAtTop(const QString &text, bool keepDuplicates = false);

    /** A few strings to try the box with. */
    [[nodiscard]] static QStringList testStrings();

private:
    Q_DISABLE_COPY_MOVE(KyStringSelect)
    void init(const QString &group, const QStringList &defaults);
    void makeRoom();

    const std::unique_ptr<KyStringSelectPrivate> d;
};

#endif
