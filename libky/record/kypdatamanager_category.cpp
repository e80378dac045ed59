#include "kypdatamanager.h"
#include "kypdatamanager_p.h"
#include "storageinfo.h"
#include <algorithm>
#include <QDir>

namespace KyPDtm {

namespace {

constexpr char CategoryItem[] = "CTGR";
constexpr qsizetype ExpressionLength = 9; // of GetCategory_FilterInfo()

QString builtinFolder()
{
    char folder[4096] = {};
    return GetBuiltinStorageDtmPath(folder) == PdtmOk ? QFile::decodeName(folder) : QString();
}

bool isViewOf(const PIOIDXINFO &row, quint8 category)
{
    return row.inUse && category && row.categoryId == category; // 0 marks a row of no category
}

/** Where boxes lie: on internal storage, then on each card. Read anew, since a card may have come or gone. */
QStringList boxFolders()
{
    QStringList folders;
    if (const QString builtin = builtinFolder(); !builtin.isEmpty())
        folders.append(builtin);
    char onCard[64] = {};
    if (GetExternalStorageDtmPath(onCard) != PdtmOk)
        return folders;
    const StorageInfo storage;
    for (const FileSystem *volume : storage.fileSystems()) {
        if (volume->isRemovable())
            folders.append(volume->path() + QFile::decodeName(onCard));
    }
    return folders;
}

} // namespace

// The list of a card

QByteArray KyPDataManagerPrivate::readCategories(unsigned long card) const
{
    const ItemCode item(CategoryItem);
    quint32 length = 0;
    if (read(item, card, nullptr, 0, &length) != PdtmTooShort) // empty, or unreadable
        return QByteArray();
    QByteArray list(qsizetype(length), Qt::Uninitialized);
    if (read(item, card, list.data(), length, &length) != PdtmOk)
        return QByteArray();
    list.truncate(qsizetype(length));
    return list;
}

bool KyPDataManagerPrivate::isCardInTheCategory(unsigned long card, int category) const
{
    const QByteArray list = readCategories(card);
    if (list.isEmpty())
        return category == UnfiledCategoryId;
    return category != UnfiledCategoryId && list.contains(char(category));
}

QList<int> KyPDataManager::readCategories(unsigned long card) const
{
    QList<int> categories;
    for (const char byte : d->readCategories(card)) {
        if (FilerCheckCategoryId(quint8(byte)))
            categories.append(quint8(byte));
    }
    return categories;
}

// Views of categories. Several managers may each have made one of the same category.

bool KyPDataManagerPrivate::putIntoViews(quint8 category, unsigned long card)
{
    bool isIn = true;
    for (PIOIDXINFO &row : indexes) {
        if (isViewOf(row, category))
            isIn = putIntoView(&row, card) && isIn;
    }
    return isIn;
}

bool KyPDataManagerPrivate::putIntoView(PIOIDXINFO *row, unsigned long card)
{
    quint16 number = 0;
    const PdtmStatus status = _IndexNoAppend(rowPath(row).constData(), boxHandle, quint16(card), &number);
    if (status == PdtmOk || status == PdtmAlreadyInIndex)
        return true;
    dropRow(row); // it can no longer be trusted
    if (masterIndex == row)
        masterIndex = wholeRow();
    lastError = status;
    return false;
}

void KyPDataManagerPrivate::takeOutOfViews(quint8 category, unsigned long card)
{
    for (const PIOIDXINFO &row : indexes) {
        if (isViewOf(row, category))
            takeOutOfView(row, card);
    }
}

void KyPDataManagerPrivate::takeOutOfFiledViews(unsigned long card)
{
    for (const PIOIDXINFO &row : indexes) {
        if (row.inUse && row.categoryId && row.categoryId != UnfiledCategoryId)
            takeOutOfView(row, card);
    }
}

void KyPDataManagerPrivate::takeOutOfView(const PIOIDXINFO &row, unsigned long card)
{
    const QByteArray path = rowPath(&row);
    quint16 number = 0;
    if (_CardIDToIndexNo(path.constData(), quint16(card), &number) == PdtmOk)
        _IndexNoDelete(path.constData(), number);
}

PIOIDXINFO *KyPDataManagerPrivate::wholeRow()
{
    const auto isWhole = [](const PIOIDXINFO &row) { return row.sticky && row.isPlain(); };
    if (isWhole(*masterIndex))
        return masterIndex;
    const auto found = std::ranges::find_if(indexes, isWhole);
    return found == std::end(indexes) ? masterIndex : found;
}

void KyPDataManagerPrivate::dropViews(quint8 category, const char *logLine)
{
    for (PIOIDXINFO &row : indexes) {
        if (!isViewOf(row, category))
            continue;
        qDebug("%s", logLine);
        dropRow(&row);
    }
}

void KyPDataManagerPrivate::leaveCategory(quint8 category)
{
    dropViews(category, "deleted category index");
    dropViews(UnfiledCategoryId, "deleted category(NO) index"); // cards may have become unfiled
    if (!masterIndex->inUse)
        masterIndex = wholeRow();
    makeCurrent(masterIndex);
}

// Changes of one card

bool KyPDataManagerPrivate::addToCategory(unsigned long card, quint8 category)
{
    const bool wasUnfiled = isCardInTheCategory(card, UnfiledCategoryId);
    const CardItemKey key = cardItemKey(card, ItemCode(CategoryItem));
    lastError = _CardCategoryAppend(boxHandle, &key, category);
    if (lastError != PdtmOk || !putIntoViews(category, card))
        return false;
    if (category == UnfiledCategoryId)
        takeOutOfFiledViews(card);
    else if (wasUnfiled)
        takeOutOfViews(UnfiledCategoryId, card);
    return true;
}

PdtmStatus KyPDataManagerPrivate::takeFromCard(unsigned long card, quint8 category)
{
    const CardItemKey key = cardItemKey(card, ItemCode(CategoryItem));
    return _CardCategoryDelete(boxHandle, &key, category);
}

bool KyPDataManagerPrivate::removeFromCategory(unsigned long card, quint8 category)
{
    lastError = takeFromCard(card, category);
    if (lastError != PdtmOk)
        return false;
    takeOutOfViews(category, card);
    return !isCardInTheCategory(card, UnfiledCategoryId) || putIntoViews(UnfiledCategoryId, card);
}

// The loop over a view goes on where next() finds nothing, and ends there: applications that want all cards
// of a view walk it themselves, and count on a view of several being left as it is.

bool KyPDataManager::addCardToCtgr(unsigned long card, int category, DeleteMode mode, bool)
{
    if (mode == DeleteVisible) {
        first();
        return next() || d->addToCategory(d->currentCard, quint8(category));
    }
    return mode == DeleteSingle && d->addToCategory(d->cardOf(card), quint8(category));
}

bool KyPDataManager::removeCardFromCtgr(unsigned long card, int category, DeleteMode mode, bool)
{
    if (mode == DeleteVisible) {
        first();
        if (!next())
            d->removeFromCategory(d->currentCard, quint8(category));
        return true;
    }
    return mode == DeleteSingle && d->removeFromCategory(d->cardOf(card), quint8(category));
}

bool KyPDataManager::updateCategories(unsigned long card, const QList<int> &categories, DeleteMode mode, bool)
{
    card = d->cardOf(card);
    if (mode != DeleteSingle || !card) // an edit of card 0 would make a new one
        return false;
    QByteArray list;
    for (const int category : categories)
        list.append(char(category));
    const bool isCleared =
        d->currentIndex && d->currentIndex->categoryId == UnfiledCategoryId && list.isEmpty();
    if (!startEditCard(card))
        return false;
    if (!writeItem(CategoryItem, list.constData(), static_cast<unsigned long>(list.size()))) {
        cancelEditCard();
        return false;
    }
    unsigned long destination = card;
    if (!finishEditCard(&destination))
        return false;
    if (!isCleared)
        d->takeOutOfViews(UnfiledCategoryId, card);
    return true;
}

// Removal of a category

bool KyPDataManager::categoryRemoved(int category)
{
    qDebug("categoryRemoved %s %d", d->boxName, category);
    if (!FilerCheckCategoryId(category) || !d->masterIndex || !isOpened())
        return false;
    const bool isRemoved = beginAction() && endActionAfter(takeFromAllCards(quint8(category)));
    d->leaveCategory(quint8(category));
    return isRemoved;
}

void KyPDataManager::removeCategoryNowOrLater(int category)
{
    if (isOpened()) {
        categoryRemoved(category);
        return;
    }
    // Whoever has the box hears the message, too. A box that nobody has was lent for an attempt that failed,
    // such as that of updateForCategoryRemoved(). The removal can't wait for the end of the loan: the id may
    // be that of a new category by then.
    const bool isHad = d->waitingOpenAgain && d->openHandle();
    if (!isHad) {
        d->noteGoneCategory(category);
        return;
    }
    categoryRemoved(category);
    d->closeHandle();
}

void KyPDataManagerPrivate::noteGoneCategory(int category)
{
    if (FilerCheckCategoryId(category))
        goneCategories.set(size_t(category));
}

void KyPDataManagerPrivate::leaveGoneCategories()
{
    if (readOnly) // the next time that the box can be written
        return;
    for (size_t category = 0; category < goneCategories.size(); ++category) {
        if (!goneCategories[category])
            continue;
        if (editing) // finishEditCard() would bring it back
            takeFromCard(workCard, quint8(category));
        if (masterIndex)
            leaveCategory(quint8(category));
    }
    goneCategories.reset();
}

quint16 KyPDataManager::takeFromAllCards(quint8 category)
{
    if (d->editing) // finishEditCard() would bring it back
        d->takeFromCard(d->workCard, category);
    char term[ExpressionLength] = {};
    unsigned short length = 0;
    GetCategory_FilterInfo(reinterpret_cast<unsigned char *>(term), category, &length);
    const QByteArray allCards = d->rowPath(d->wholeRow());
    unsigned long card = 0;
    while (search(&card, term, true, allCards.constData())) {
        qDebug("categoryRemoved: found card %d", int(card));
        if (const PdtmStatus status = d->takeFromCard(card, category); status != PdtmOk)
            return status;
    }
    // Only this says that there is no further card, and not that it could not be told.
    if (d->lastError == PdtmNone)
        return PdtmOk;
    return d->lastError == PdtmOk ? quint16(PdtmIoError) : d->lastError;
}

void KyPDataManager::updateForCategoryRemoved(int category)
{
    for (const QString &folder : boxFolders())
        updateForCategoryRemovedVolume(folder, category);
}

void updateForCategoryRemovedVolume(const QString &dir, int category)
{
    qDebug("updateForCategoryRemovedVolume: %s", qPrintable(dir));
    const QDir folder(dir);
    for (const QString &name : folder.entryList({QStringLiteral("*.box")}, QDir::Files | QDir::Readable)) {
        const QByteArray path = QFile::encodeName(folder.filePath(name));
        qDebug("found box file %s", path.constData());
        KyPDataManager box(path.constData(), nullptr, false);
        if (box.isOpened())
            box.categoryRemoved(category);
        else
            qDebug("already opened");
    }
}

} // namespace KyPDtm
