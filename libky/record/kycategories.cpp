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
constexpr int LongestWait = 500;    // ms, for a table that another application has
constexpr int Pause = 5;            // ms, between two attempts

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

QString realPath(const char *logicalPath)
{
    char path[4096];
    return FileGetRealPath(path, logicalPath) == PdtmOk ? QFile::decodeName(path) : QString();
}

} // namespace

KyCategoriesPrivate::KyCategoriesPrivate() : manager(std::make_unique<KyPDataManager>(TableBox, nullptr, false))
{
    manager->close();
}

bool KyCategoriesPrivate::open()
{
    const QDeadlineTimer end(LongestWait);
    while (!tryOpen()) {
        const bool isHeld = !manager->isOpened() && KyPDataManager::checkFile(TableBox);
        if (!isHeld || end.hasExpired())
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
    // The store looks behind the end of a text.
    return searchTerm("TITL\xFE\x95\xFE\x90\x11" + name.toUtf8() + QByteArray(2, '\0'));
}

bool KyCategoriesPrivate::hasFoundNone() const
{
    return manager->d->lastError == PdtmNone;
}

int KyCategoriesPrivate::idOf(const QString &name)
{
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
    QList<int> candidates;
    for (int id = count + 1; id <= LastId; ++id)
        candidates.append(id);
    for (int id = 1; id < count; ++id)
        candidates.append(id);
    for (const int id : candidates) {
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
    if (search(name) || !hasFoundNone())
        return 0;
    const int id = newId();
    unsigned long card = 0;
    const bool added = id && manager->editNewCard() && write(name, id, NewColor, system) &&
                       manager->finishEditCard(&card);
    manager->cancelEditCard();
    return added ? id : 0;
}

bool KyCategoriesPrivate::rename(const QString &oldName, const QString &newName)
{
    unsigned long card = search(oldName);
    const int type = card ? manager->readUcharItem("TYPE", card) : -1;
    if (type < 0 || (type & SystemFlag))
        return false;
    const bool renamed = manager->startEditCard(card) && manager->writeItem("TITL", newName) &&
                         manager->finishEditCard(&card);
    manager->cancelEditCard();
    return renamed;
}

std::optional<int> KyCategoriesPrivate::remove(const QString &name)
{
    unsigned long card = search(name);
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
    return d->addUnlessRefused(name, false);
}

int KyCategories::addSystemCategory(const QString &name)
{
    return d->addUnlessRefused(name, true);
}

bool KyCategories::removeCategory(const QString &name)
{
    if (isUnfiled(name))
        return false;
    const std::optional<int> id = d->removeFromTable(name);
    if (!id)
        return false;
    ...
}
