#ifndef KYCATEGORIES_H
#define KYCATEGORIES_H

#include "kypdatamanager.h"
#include <memory>
#include <QCoreApplication>
#include <QList>
#include <QStringList>

/** The categories of the device. Everything here is also reachable without the namespace. */
namespace KyCategory {

class KyCategoriesPrivate;

/**
 * The device's one table of categories: names, and the ids 1 to 245 that cards carry. It is a box,
 * `F0:KYFLER.BOX`, which createFile() makes at the start of an application.
 *
 * Cards with no category have the pseudo category UnfiledCategoryId; it has no entry in the table, its name
 * is tr("Unfiled"), and it can be neither added, renamed nor removed.
 *
 * The box is held only during a call, so that every call sees what other applications did before. When
 * another one is just using it, the call waits, handling events, for a second at most; where that was in
 * vain, the next calls of the object don't wait until the table has been free. A failure to open it counts as
 * "unknown".
 *
 * Names are compared in full. They hold at least one character, and none that the category file can't hold:
 * see Categories::isValidName().
 */
class KY_EXPORT KyCategories
{
    Q_DECLARE_TR_FUNCTIONS(KyCategories)
public:
    /** @param boxFile has no effect: there is one table */
    explicit KyCategories(const char *boxFile = nullptr);
    ~KyCategories();

    bool open();  ///< does nothing: each call opens the table by itself. True
    bool close(); ///< does nothing. True

    /** Adds a category with the lowest id above their number that is free, or below it. @return its id; 0 for
     * a name that exists or is invalid, when all ids are taken, and on failure */
    int addCategory(const QString &name);
    /** As addCategory(), for a category that keeps its name. */
    int addSystemCategory(const QString &name);
    /** Removes a category, from all cards of all boxes too; running applications update the boxes they hold.
     * A system category is not protected. @return false, with nothing removed, for an unknown name, and on
     * failure */
    bool removeCategory(const QString &name);
    /** Gives a category another name, even one that exists. @return false for an unknown or an invalid name,
     * that of a system category, and on failure */
    bool renameCategory(const QString &oldName, const QString &newName);

    [[nodiscard]] int id(const QString &name) const; ///< 254 for tr("Unfiled"), 0 for an unknown name
    /** The ids of the names that are known, in their order. */
    [[nodiscard]] QList<int> ids(const QStringList &names) const;
    [[nodiscard]] QString label(int id) const; ///< the name; null for an unknown id
    /** All names in text order. @param withUnfiled tr("Unfiled") at the end */
    [[nodiscard]] QStringList labels(bool withUnfiled) const;
    /** False when the last call that looked into the table could not open it, although there is one: what it
     * took for unknown may exist. */
    [[nodiscard]] bool isReachable() const;
    [[nodiscard]] bool exists(const QString &name) const; ///< true for tr("Unfiled"), too
    /** True for tr("Unfiled"), too. */
    [[nodiscard]] bool isSystemCategory(const QString &name) const;
    /** True for UnfiledCategoryId, too. */
    [[nodiscard]] bool isSystemCategory(int id) const;

    /** Makes the table unless it is there. @param boxFile has no effect @return true: see
     * KyPDataManager::createFile() */
    static bool createFile(const char *boxFile);
    [[nodiscard]] static QString boxFileName();   ///< path of the table in the file system
    [[nodiscard]] static QString indexFileName(); ///< path of its index in the file system

private:
    Q_DISABLE_COPY_MOVE(KyCategories)
    const std::unique_ptr<KyCategoriesPrivate> d;
};

} // namespace KyCategory

using KyCategory::KyCategories;

/** The platform's category file, `$HOME/Settings/Categories.xml`; its folder is made when it is missing. */
[[nodiscard]] KY_EXPORT QString categoryFileName();

/** Ids of the box table as those of the category file, where each becomes a global category if it isn't there
 * yet. Empty when the file can't be read. @param application whose group is looked at, such as "Address Book"
 */
[[nodiscard]] KY_EXPORT QList<int> convCategoriesPdtmToXml(const QList<int> &ids, const QString &application);

/** Ids of the category file as those of the box table, to which missing ones are added. An id that the file
 * doesn't know is left out. Empty when the file can't be read. */
[[nodiscard]] KY_EXPORT QList<int> convCategoriesXmlToPdtm(const QList<int> &ids, const QString &application);

/** Ids of another table as those of this device's, to which missing ones are added. Empty for a null
 * @p source. */
[[nodiscard]] KY_EXPORT QList<int> convCategoriesBoxToPdtm(const QList<int> &ids, KyCategories *source);

[[nodiscard]] KY_EXPORT QList<int> eventCategoryPdtmToXml(const QList<int> &ids); ///< for "Calender"
[[nodiscard]] KY_EXPORT QList<int> eventCategoryXmlToPdtm(const QList<int> &ids); ///< for "Calender"

#endif
