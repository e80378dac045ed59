#ifndef KY_TEST_MAPPINGFIXTURE_H
#define KY_TEST_MAPPINGFIXTURE_H

#include "boxfixture.h"
#include "categories.h"
#include "contact.h"
#include "event.h"
#include "kycategories.h"
#include "kypdatabase.h"
#include "kypdatamanagerindexinfo.h"
#include "kypdatamanageriteminfo.h"
#include "kypdatamanagersortkey.h"
#include "recordfixture.h"
#include "task.h"
#include <QTest>

/** The standard box of contacts, made when it is missing. */
inline std::unique_ptr<KyPDataBase> openAddressbook()
{
    KyPDataBase::createAddressbookFile(KyPDataManagerIndexInfo());
    return std::make_unique<KyPDataBase>(KyPDataBase::addressbookFileName(false),
                                         KyPDataBase::addressbookItems(), nullptr, false);
}

/** The standard box of tasks. */
inline std::unique_ptr<KyPDataBase> openTodolist()
{
    KyPDataBase::createTodolistFile(KyPDataManagerIndexInfo());
    return std::make_unique<KyPDataBase>(KyPDataBase::todolistFileName(false), KyPDataBase::todolistItems(),
                                         nullptr, false);
}

/** The standard box of events. */
inline std::unique_ptr<KyPDataBase> openDatebook()
{
    KyPDataBase::createDatebookFile(KyPDataManagerIndexInfo());
    return std::make_unique<KyPDataBase>(KyPDataBase::datebookFileName(false), KyPDataBase::datebookItems(),
                                         nullptr, false);
}

/** A box of the same layout beside it: a second address book and so on. */
inline std::unique_ptr<KyPDataBase> openOther(const QByteArray &stem, unsigned long applicationId,
                                              const char *sortCode, const KyPDataBaseItemInfo &fields)
{
    KyPDataManagerItemInfo items;
    fields.toKyPdtmItemInfo(&items);
    KyPDataManagerSortKey order;
    order.addSortKey(sortCode, true, true);
    const QByteArray box = "F0:" + stem + ".BOX";
    const QByteArray index = "F0:" + stem + ".IDX";
    KyPDataManager::createFile(box.constData(), index.constData(), applicationId, false, items, order,
                               KyPDataManagerIndexInfo());
    return std::make_unique<KyPDataBase>(box.constData(), fields, nullptr, false);
}
inline std::unique_ptr<KyPDataBase> openOtherAddressbook()
{
    return openOther("OADRS", 0x41445253, "NAPR", KyPDataBase::addressbookItems());
}
inline std::unique_ptr<KyPDataBase> openOtherTodolist()
{
    return openOther("OTODO", 0x544F444F, "TITL", KyPDataBase::todolistItems());
}
inline std::unique_ptr<KyPDataBase> openOtherDatebook()
{
    return openOther("ODATE", 0x5343444C, "DSRP", KyPDataBase::datebookItems());
}

/** The id of a category of the device, which is added unless it is there. */
inline int tableCategory(const QString &name)
{
    KyCategories::createFile(nullptr);
    KyCategories table;
    return table.exists(name) ? table.id(name) : table.addCategory(name);
}

/** The id of a category of the category file, which is added to an application unless it is there. */
inline int fileCategory(const QString &application, const QString &name)
{
    Categories file;
    if (!file.load(categoryFileName()))
        return 0;
    const int id = application.isEmpty() ? file.addGlobalCategory(name) : file.addCategory(application, name);
    return file.save(categoryFileName()) ? id : 0;
}

/** Names of the categories of a card. */
inline QStringList categoryNames(const KyPDataBase &db, unsigned long card)
{
    const KyCategories table;
    QStringList names;
    for (const int id : db.readCategories(card))
        names.append(table.label(id));
    return names;
}

inline QDateTime wall(const QString &text)
{
    const QDateTime parsed = QDateTime::fromString(text, QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    return QDateTime(parsed.date(), parsed.time(), Qt::UTC);
}

inline QString shown(const QDateTime &time)
{
    return time.date().toString(QStringLiteral("yyyy-MM-dd ")) +
           time.time().toString(QStringLiteral("hh:mm:ss"));
}

#endif
