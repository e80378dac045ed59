#ifndef KYCATEGORIES_P_H
#define KYCATEGORIES_P_H

#include "kypdatamanager.h"
#include <memory>
#include <optional>

namespace KyCategory {

/** The table box and the calls on it that expect it open. */
class KyCategoriesPrivate
{
public:
    KyCategoriesPrivate();

    std::unique_ptr<KyPDataManager> manager;
    quint8 thirdAttribute = 0; ///< passed through to KyPDataManager::search()

    /** Opens the table, unless it is open. One that another application has is waited for, half a second at
     * most: nobody keeps it for longer than a call. */
    bool open();
    void close();

    /** The card of a category, 0 when there is none. */
    [[nodiscard]] unsigned long search(int id);
    [[nodiscard]] unsigned long search(const QString &name);
    /** True when the last search() found none because there is none, and not because the store failed. */
    [[nodiscard]] bool hasFoundNone() const;

    [[nodiscard]] int idOf(const QString &name); ///< 0 for an unknown name
    [[nodiscard]] bool isSystem(unsigned long card) const;

    /** An id for a new category, 0 when there is none. */
    [[nodiscard]] int newId();
    /** Fills the card being edited. */
    [[nodiscard]] bool write(const QString &name, int id, unsigned int color, bool system);

    [[nodiscard]] int add(const QString &name, bool system);
    [[nodiscard]] bool rename(const QString &oldName, const QString &newName);
    /** @return the id that the category had, 0 when it can't be read; nothing when it was not removed */
    [[nodiscard]] std::optional<int> remove(const QString &name);

private:
    [[nodiscard]] unsigned long searchTerm(const QByteArray &term);
    [[nodiscard]] bool tryOpen();
};

} // namespace KyCategory

#endif
