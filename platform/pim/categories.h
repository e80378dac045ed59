#ifndef KY_CATEGORIES_H
#define KY_CATEGORIES_H

#include "kyexport.h"
#include <QList>
#include <QSharedDataPointer>
#include <QString>
#include <QStringList>

class CategoriesPrivate;

/**
 * The categories of the platform's applications: a group of names for each application, and global ones that
 * every application has beside its own. Ids are positive and unique over all groups. Implicitly shared.
 *
 *     Categories categories;
 *     if (categories.load(categoryFileName())) {
 *         categories.addGlobalCategory("Business");
 *         categories.save(categoryFileName());
 *     }
 *
 * **Names** hold at least one character, and none that XML can't: no control character but tab and line
 * breaks, no unpaired surrogate; see isValidName(). They are compared in full. An application may have a
 * category of its own by the name of a global one; it then sees its own. The name of an application follows
 * the same rule.
 *
 * **The file** is XML:
 *
 *     <?xml version="1.0" encoding="UTF-8"?>
 *     <categories version="1">
 *         <global>
 *             <category id="1204" name="Business"/>
 *         </global>
 *         <application name="Address Book">
 *             <category id="77" name="Customers"/>
 *         </application>
 *     </categories>
 *
 * Anything else in its place is damage, other elements and attributes and a document type included, and a
 * damaged file is never overwritten.
 */
class KY_EXPORT Categories
{
public:
    /** A longer file, in bytes, is neither read nor written. */
    static constexpr qint64 MaximumFileSize = qint64{16} * 1024 * 1024;

    /** None. */
    Categories();
    Categories(const Categories &other);            ///< shares the categories
    Categories &operator=(const Categories &other); ///< shares the categories
    ~Categories();

    /** True for the same categories with the same ids. */
    bool operator==(const Categories &other) const;

    /** True for a text that can name a category or an application. */
    [[nodiscard]] static bool isValidName(const QString &name);

    /** Takes the categories of a file in place of its own. A missing file holds none. @return false, with
     * nothing changed, when the file is damaged or can't be read */
    [[nodiscard]] bool load(const QString &file);
    /**
     * Brings what has been added, renamed and removed since load() into the file. What other processes have
     * done to the file in the meantime stays, and is here, too, afterwards: of two additions of one name the
     * earlier one counts, as does a name that was added against a renaming to it. Without changes the file
     * isn't touched; one that is missing is made, with all that is here.
     * @return false, with a warning and the file as it was, when it is damaged, or can't be read or written
     */
    bool save(const QString &file);

    /** Adds a category to an application, unless it has one of that name, be it a global one. An id is made
     * from application and name, so that two processes that add the same one get the same id.
     * @return its id; 0 for an invalid name */
    int addCategory(const QString &application, const QString &name);
    /** Adds a category with a given id. True as well when it is there already with this very id. @return
     * false for an invalid name, an id below 1 or one that is taken, and a name that has another id */
    bool addCategory(const QString &application, const QString &name, int id);
    /** Adds a category for all applications, unless there is one of that name. @return its id; 0 for an
     * invalid name */
    int addGlobalCategory(const QString &name);
    /** Gives the category that id() tells of another name; the id stays. @return false for an unknown name,
     * an invalid new one, and one that is in the same group already */
    bool renameCategory(const QString &application, const QString &oldName, const QString &newName);
    /** Removes the category that id() tells of, a global one from all applications. @return false for an
     * unknown name */
    bool removeCategory(const QString &application, const QString &name);

    /** The id of a name, the application's own first, then a global one; 0 for an unknown name. */
    [[nodiscard]] int id(const QString &application, const QString &name) const;
    /** The ids of the names that are known, in their order. */
    [[nodiscard]] QList<int> ids(const QString &application, const QStringList &names) const;
    /** The name of an id that the application has or that is global; else null. */
    [[nodiscard]] QString label(const QString &application, int id) const;
    /** All names that the application has, global ones included, sorted by code point. */
    [[nodiscard]] QStringList labels(const QString &application) const;
    /** True for a name that id() knows. */
    [[nodiscard]] bool exists(const QString &application, const QString &name) const;
    /** True for the name of a global category. */
    [[nodiscard]] bool isGlobal(const QString &name) const;

private:
    QSharedDataPointer<CategoriesPrivate> d;
};

#endif
