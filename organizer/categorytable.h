#ifndef CATEGORYTABLE_H
#define CATEGORYTABLE_H

#include "kycategories.h"

#include <QObject>
#include <QTimer>

class QCopChannel;

/** A category of the device. */
struct CategoryEntry
{
    int id = 0;
    QString name;
    bool isSystem = false; ///< can be neither renamed nor removed
};

/**
 * The device's categories as they are now. Changes of other applications are seen when they tell of them, by
 * `categoryChange(QString)` or `categoryRemoved(int)`.
 */
class CategoryTable : public QObject
{
    Q_OBJECT
public:
    /** As many as there are ids. */
    static constexpr int MaximumCategories = 245;

    explicit CategoryTable(QObject *parent = nullptr);

    /** In the order of the table. */
    [[nodiscard]] const QList<CategoryEntry> &entries() const { return m_entries; }
    /** Null for an id that is no category; that of UnfiledCategoryId is known. */
    [[nodiscard]] QString name(int id) const;
    /** 0 for an unknown name. */
    [[nodiscard]] int id(const QString &name) const;
    /** The names of those ids that are known, with commas. */
    [[nodiscard]] QString names(const QList<int> &ids) const;
    /** Those of @p ids that are known. */
    [[nodiscard]] QList<int> known(const QList<int> &ids) const;

    /** @name Changes
     * Events of the application are handled inside. Each gives what is in the way, for the user; an empty
     * text when it is done.
     * @{ */
    [[nodiscard]] QString add(const QString &name);
    [[nodiscard]] QString rename(const QString &oldName, const QString &newName);
    /** Takes the category from all cards of all boxes, too. */
    [[nodiscard]] QString remove(const QString &name);
    /** @} */

signals:
    /** Names or ids are others now, or cards have lost a category. */
    void changed();

private:
    void read();
    void reload();
    void announce();
    [[nodiscard]] QString objectionTo(const QString &name) const;

    std::unique_ptr<KyCategories> m_table;
    QCopChannel *m_channel;
    QTimer m_reload;
    QList<CategoryEntry> m_entries;
};

#endif
