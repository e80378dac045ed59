#include "kycategories.h"
#include "categories.h"
#include "kycategories_p.h"
#include "kypdatamanager_p.h"
#include "kypdatamanagerindexinfo.h"
#include "kypdatamanageriteminfo.h"
#include "kypdatamanagersortkey.h"
#include "qcopenvelope.h"
#include <QDeadlineTimer>
#include <QFile>
#include <QThread>

namespace KyCategory {

namespace {

constexpr char TableBox[] = "F0:KYFLER.BOX";
constexpr char TableIndex[] = "F0:KYFLER.IDX";
constexpr unsigned long ApplicationId = 0x464C4552; // FLER
constexpr int LastId = 245;
constexpr unsigned int NewColor = 0x00FFFFFF;
constexpr quint8 SystemFlag = 0x80; // in TYPE
constexpr int LongestWait = 1000;   // ms, for a table that another application has
constexpr int Pause = 10;           // ms, between two attempts

/** Keeps the table open for one call. */
class OpenTable
{
public:
    explicit OpenTable(KyCategoriesPrivate &table) : m_table(table), m_isOpen(table.open()) {}
    ~OpenTable() { m_table.close(); }
    Q_DISABLE_COPY_MOVE(OpenTable)
    explicit operator bool() const { return m_isOpen; }

private:
    KyCategoriesPrivate &m_table;
    const bool m_isOpen;
};

bool isUnfiled(const QString &name)
{
    return name == KyCategories::tr("Unfiled");
}

/** The ids that a new category may get, the preferred one first. Those of removed categories come last, and
 * the number of categories itself never. */
QList<int> candidateIds(int count)
{
    QList<int> ids;
    for (int id = count + 1; id <= LastId; ++id)
        ids.append(id);
    for (int id = 1; id < count; ++id)
        ids.append(id);
    return ids;
}

QString realPath(const char *logicalPath)
{
    char path[4096];
    return FileGetRealPath(path, logicalPath) == PdtmOk ? QFile::decodeName(path) : QString();
}

} // namespace

KyCategoriesPrivate::KyCategoriesPrivate()
    : manager(std::make_unique<KyPDataManager>(TableBox, nullptr, false))
{
    manager->close();
}

bool KyCategoriesPrivate::open()
{
    const bool isOpen = waitForTable();
    isReachable = isOpen || !QFile::exists(KyCategories::boxFileName());
    return isOpen;
}

bool KyCategoriesPrivate::waitForTable()
{
    const QDeadlineTimer end(hasWaitedInVain ? 0 : LongestWait);
    hasWaitedInVain = false;
    while (!tryOpen()) {
        const bool isHeld = !manager->isOpened() && KyPDataManager::checkFile(TableBox);
        hasWaitedInVain = isHeld && end.hasExpired();
        if (!isHeld || hasWaitedInVain)
            return false;
        QThread::msleep(Pause);
    }
    return true;
}

bool KyCategoriesPrivate::tryOpen()
{
    if (!manager->d->masterIndex) { // there was no table when it was made
        manager->close();
        manager = std::make_unique<KyPDataManager>(TableBox, nullptr, false);
    } else if (!manager->isOpened()) {
        manager->open(false);
    }
    return manager->isOpened() && manager->d->masterIndex;
}

void KyCategoriesPrivate::close()
{
    if (manager->isOpened())
        manager->close();
}

unsigned long KyCategoriesPrivate::searchTerm(const QByteArray &term)
{
    unsigned char mask = 0, value = 0, third = 0;
    KyPDataManager::getAttrValues(&mask, &value, &third);
    unsigned long card = 0;
    return manager->search(&card, term.constData(), true, mask, value, thirdAttribute) ? card : 0;
}

unsigned long KyCategoriesPrivate::search(int id)
{
    if (!FilerCheckCategoryId(id))
        return 0;
    const char term[] = {'S', 'C', 'T', 'G', '\xFE', '\x90', ItemUchar, char(id), 0};
    return searchTerm(QByteArray(term, sizeof term));
}

unsigned long KyCategoriesPrivate::search(const QString &name)
{
    if (!Categories::isValidName(name)) // a 0 character would end the term
        return 0;
    // The store looks behind the end of a text.
    return searchTerm("TITL\xFE\x95\xFE\x90\x11" + name.toUtf8() + QByteArray(2, '\0'));
}

bool KyCategoriesPrivate::hasFoundNone() const
{
    return manager->d->lastError == PdtmNone;
}

int KyCategoriesPrivate::idOf(const QString &name)
{
    if (isUnfiled(name))
        return UnfiledCategoryId;
    const unsigned long card = search(name);
    return card ? qMax(manager->readUcharItem("SCTG", card), 0) : 0;
}

bool KyCategoriesPrivate::isSystem(unsigned long card) const
{
    const int type = card ? manager->readUcharItem("TYPE", card) : 0;
    return type > 0 && (type & SystemFlag);
}

int KyCategoriesPrivate::newId()
{
    const int count = manager->count();
    if (count < 0)
        return 0;
    for (const int id : candidateIds(count)) {
        if (!search(id))
            return hasFoundNone() ? id : 0;
    }
    qDebug("no more ids");
    return 0;
}

bool KyCategoriesPrivate::write(const QString &name, int id, unsigned int color, bool system)
{
    return manager->writeItem("TITL", name) && manager->writeItem("SCTG", quint8(id)) &&
           manager->writeItem("COLR", static_cast<unsigned long>(color)) &&
           manager->writeItem("TYPE", system ? SystemFlag : quint8(0));
}

int KyCategoriesPrivate::add(const QString &name, bool system)
{
    if (isUnfiled(name) || !Categories::isValidName(name))
        return 0;
    const OpenTable table(*this);
    if (!table || search(name) || !hasFoundNone())
        return 0;
    const int id = newId();
    unsigned long card = 0;
    const bool added =
        id && manager->editNewCard() && write(name, id, NewColor, system) && manager->finishEditCard(&card);
    manager->cancelEditCard();
    return added ? id : 0;
}

bool KyCategoriesPrivate::rename(const QString &oldName, const QString &newName)
{
    if (isUnfiled(oldName) || !Categories::isValidName(newName))
        return false;
    const OpenTable table(*this);
    unsigned long card = table ? search(oldName) : 0;
    const int type = card ? manager->readUcharItem("TYPE", card) : -1;
    if (type < 0 || (type & SystemFlag))
        return false;
    const bool renamed =
        manager->startEditCard(card) && manager->writeItem("TITL", newName) && manager->finishEditCard(&card);
    manager->cancelEditCard();
    return renamed;
}

std::optional<int> KyCategoriesPrivate::remove(const QString &name)
{
    if (isUnfiled(name))
        return std::nullopt;
    const OpenTable table(*this);
    unsigned long card = table ? search(name) : 0;
    if (!card)
        return std::nullopt;
    const int id = qMax(manager->readUcharItem("SCTG", card), 0);
    return manager->deleteCard(&card, KyPDataManager::DeleteSingle) ? std::optional(id) : std::nullopt;
}

KyCategories::KyCategories(const char * /*boxFile*/) : d(std::make_unique<KyCategoriesPrivate>()) {}

KyCategories::~KyCategories() = default;

bool KyCategories::open()
{
    return true;
}

bool KyCategories::close()
{
    return true;
}

int KyCategories::addCategory(const QString &name)
{
    return d->add(name, false);
}

int KyCategories::addSystemCategory(const QString &name)
{
    return d->add(name, true);
}

bool KyCategories::removeCategory(const QString &name)
{
    const std::optional<int> id = d->remove(name);
    if (!id)
        return false;
    KyPDataManager::updateForCategoryRemoved(*id);
    QCopEnvelope message("QPE/System", "categoryRemoved(int)");
    message << *id;
    return true;
}

bool KyCategories::renameCategory(const QString &oldName, const QString &newName)
{
    return d->rename(oldName, newName);
}

int KyCategories::id(const QString &name) const
{
    return ids({name}).value(0);
}

QList<int> KyCategories::ids(const QStringList &names) const
{
    const OpenTable table(*d);
    QList<int> known;
    for (const QString &name : names) {
        if (const int id = table || isUnfiled(name) ? d->idOf(name) : 0)
            known.append(id);
    }
    return known;
}

QString KyCategories::label(int id) const
{
    if (id == UnfiledCategoryId)
        return tr("Unfiled");
    const OpenTable table(*d);
    const unsigned long card = table ? d->search(id) : 0;
    const QString name = card ? d->manager->readItem("TITL", card) : QString();
    if (name.isNull())
        qDebug("KyCategories: not found id %d", id);
    return name;
}

QStringList KyCategories::labels(bool withUnfiled) const
{
    QStringList names;
    const OpenTable table(*d);
    for (unsigned long card = table ? d->manager->firstCard() : 0; card; card = d->manager->nextCard(card))
        names.append(d->manager->readItem("TITL", card));
    if (withUnfiled)
        names.append(tr("Unfiled"));
    return names;
}

bool KyCategories::isReachable() const
{
    return d->isReachable;
}

bool KyCategories::exists(const QString &name) const
{
    if (isUnfiled(name))
        return true;
    const OpenTable table(*d);
    return table && d->search(name);
}

bool KyCategories::isSystemCategory(const QString &name) const
{
    if (isUnfiled(name))
        return true;
    const OpenTable table(*d);
    return table && d->isSystem(d->search(name));
}

bool KyCategories::isSystemCategory(int id) const
{
    if (id == UnfiledCategoryId)
        return true;
    const OpenTable table(*d);
    return table && d->isSystem(d->search(id));
}

bool KyCategories::createFile(const char * /*boxFile*/)
{
    KyPDataManagerItemInfo items;
    items.addTextItem("TITL", tr("name"));
    items.addUcharItem("SCTG", tr("category"));
    items.addColorItem("COLR", tr("color of file"));
    items.addBitItem("TYPE", tr("type of file"));
    KyPDataManagerSortKey order;
    order.addSortKey("TITL", true, true);
    return KyPDataManager::createFile(TableBox, TableIndex, ApplicationId, false, items, order,
                                      KyPDataManagerIndexInfo());
}

QString KyCategories::boxFileName()
{
    return realPath(TableBox);
}

QString KyCategories::indexFileName()
{
    return realPath(TableIndex);
}

} // namespace KyCategory
