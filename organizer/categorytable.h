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
};

/**
 * The device's categories as they are now. Changes of other applications are seen when they tell of them, by
 * `categoryChange(QString)` or `categoryRemoved(int)`.
 */
class CategoryTable : public QObject
{
    Q_OBJECT
public:
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

    /** Adds a category; events of the application are handled inside. @return its id; 0 for a name that
     * exists or is invalid, when there is no room, and on failure */
    int add(const QString &name);
    /** The id of a name, which is added when it is missing; 0 when it can't be. */
    int idMade(const QString &name);

signals:
    /** Names or ids are others now, or cards have lost a category. */
    void changed();

private:
    void read();
    void reload();
    void announce();

    std::unique_ptr<KyCategories> m_table;
    QCopChannel *m_channel;
    QTimer m_reload;
    QList<CategoryEntry> m_entries;
};

#endif
