#include "recordframe_p.h"

#include "kycategories.h"
#include <QPointer>

namespace KyPDtm {

namespace {

/** Ends the edit. @p card is left alone on failure. */
bool finishRecord(KyPDataBase &db, unsigned long *card)
{
    unsigned long written = *card;
    if (!db.finishEditCard(&written))
        return false;
    *card = written;
    return true;
}

/** Ends the edit and gives the card its categories, with one synchronisation for both. */
bool finishWithCategories(KyPDataBase &db, unsigned long *card, const QList<int> &categories)
{
    if (!db.beginAction()) {
        db.cancelEditCard();
        return false;
    }
    unsigned long written = *card;
    const bool isWritten = db.finishEditCard(&written);
    const bool isComplete =
        isWritten && db.updateCategories(written, categories, KyPDataManager::DeleteSingle, false);
    // The card stays when its categories are refused; what the store can't write undoes the whole action.
    const bool isKept = db.endAction() && isWritten;
    if (isKept)
        *card = written;
    return isKept && isComplete;
}

} // namespace

bool writeRecord(KyPDataBase *db, unsigned long source, unsigned long *destination,
                 const FieldWriter &writeFields, const CategorySource &categories)
{
    if (!db || !db->startEditCard(source))
        return false;
    if (!writeFields(*db)) {
        db->cancelEditCard();
        return false;
    }
    // The table of categories may run the event loop, where the box may be lent. An edit survives that and an
    // action doesn't, so the action begins behind it.
    const QPointer<KyPDataBase> alive(db);
    const std::optional<QList<int>> ids = categories();
    if (!alive)
        return false;
    return ids ? finishWithCategories(*db, destination, *ids) : finishRecord(*db, destination);
}

bool editRecord(KyPDataBase *db, unsigned long *card, const FieldWriter &writeFields,
                const CategorySource &categories)
{
    // ResumeCardId is what applications pass for a card that is yet to be made.
    const unsigned long id = quint16(*card) == ResumeCardId ? 0 : *card;
    unsigned long written = id;
    const bool isDone = writeRecord(db, id, &written, writeFields, categories);
    if (written)
        *card = written;
    return isDone;
}

CategorySource recordCategories(const QList<int> &ids, KyPDataBase::CategoriesType type,
                                const QString &application)
{
    return [ids, type, application]() -> std::optional<QList<int>> {
        if (type == KyPDataBase::CategoriesNone)
            return std::nullopt;
        return type == KyPDataBase::CategoriesXml ? convCategoriesXmlToPdtm(ids, application) : ids;
    };
}

QList<int> categoriesOfCard(const KyPDataBase &db, unsigned long card, KyPDataBase::CategoriesType type,
                            const QString &application)
{
    if (type == KyPDataBase::CategoriesNone)
        return {};
    const QList<int> ids = db.readCategories(card);
    return type == KyPDataBase::CategoriesXml ? convCategoriesPdtmToXml(ids, application) : ids;
}

} // namespace KyPDtm
