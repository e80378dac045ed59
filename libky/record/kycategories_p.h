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
    bool isReachable = true;   ///< at the last open(); also where there is no table

    /** Opens the table, unless it is open. One that another application has is waited for, a second at
     * most: nobody keeps it for longer than a call. Where one does all the same, the next calls wait no
     * more, so that many in a row don't stop an application for minutes. */
    bool open();
    void close();

    /** @name Calls that open and close the table
     * @{ */
    /** Adds a category. @return its id, 0 on refusal */
    [[nodiscard]] int add(const QString &name, bool system);
    [[nodiscard]] bool rename(const QString &oldName, const QString &newName);
    /** Takes a category out of the table alone. @return the id that it had, 0 when that can't be read;
     * nothing when it was not removed */
    [[nodiscard]] std::optional<int> remove(const QString &name);
    /** @} */

    /** @name Calls on the open table
     * @{ */
    /** The card of a category, 0 when there is none. */
    [[nodiscard]] unsigned long search(int id);
    [[nodiscard]] unsigned long search(const QString &name); ///< as above
    /** True when the last search() found none because there is none, and not because the store failed. */
    [[nodiscard]] bool hasFoundNone() const;
    /** The id of a category, tr("Unfiled") included; 0 for an unknown name. */
    [[nodiscard]] int idOf(const QString &name);
    /** True for a card with the system bit. */
    [[nodiscard]] bool isSystem(unsigned long card) const;
    /** An id for a new category, 0 when there is none. */
    [[nodiscard]] int newId();
    /** Fills the card being edited. */
    [[nodiscard]] bool write(const QString &name, int id, unsigned int color, bool system);
    /** @} */

private:
    bool hasWaitedInVain = false; ///< at the last open()

    [[nodiscard]] unsigned long searchTerm(const QByteArray &term);
    [[nodiscard]] bool waitForTable();
    [[nodiscard]] bool tryOpen();
};

} // namespace KyCategory

#endif
