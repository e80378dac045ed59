#include "devicepath.h"
#include "kypdatabase.h"
#include "kypdatamanagerindexinfo.h"
#include "kypdatamanageriteminfo.h"
#include "kypdatamanagersortkey.h"
#include "pdtm.h"
#include <QDir>
#include <QFile>
#include <span>

namespace KyPDtm {

namespace {

/** One row of a field table. Labels are translated when the table is asked for. */
struct Field
{
    int number;
    const char *code;
    KyPDataBaseItemInfo::ItemType type;
    const char *label;
    bool flag;
};

/** Application ids: four characters, big-endian. */
enum ApplicationId : unsigned long {
    AddressbookId = 0x41445253, // ADRS
    TodolistId = 0x544F444F,    // TODO
    DatebookId = 0x5343444C,    // SCDL
    MailId = 0x4D41494C,        // MAIL
    MemoId = 0x54454454         // TEDT
};

constexpr char AddressbookOrder[] = "NAPR\xFE\x80"; // by reading, in text order, ascending
constexpr char InternalStorage[] = "F0:";

struct Card
{
    int storage;
    const char *mount;
};
constexpr Card Cards[] = {{1, "/usr/mnt.rom/card"}, {2, "/usr/mnt.rom/cf"}};

KyPDataBaseItemInfo fieldTable(std::span<const Field> fields)
{
    KyPDataBaseItemInfo table;
    for (const Field &field : fields)
        table.addItemInfo(field.number, field.code, field.type, KyPDataBase::tr(field.label), field.flag);
    return table;
}

KyPDataManagerItemInfo declaredItems(const KyPDataBaseItemInfo &table)
{
    KyPDataManagerItemInfo items;
    table.toKyPdtmItemInfo(&items);
    return items;
}

KyPDataManagerSortKey ascending(const char *code, bool textOrder)
{
    KyPDataManagerSortKey key;
    key.addSortKey(code, textOrder, true);
    return key;
}

QByteArray internalPath(bool bare, const char *name)
{
    return bare ? QByteArray(name) : QByteArray(InternalStorage) + name;
}

QByteArray mailPath(int storage, const char *name)
{
    for (const Card &card : Cards) {
        if (card.storage == storage)
            return QFile::encodeName(getExternalPath(devicePath(QLatin1String(card.mount)))) + name;
    }
    return internalPath(false, name);
}

void makeFolder(const QString &path)
{
    if (!QDir(path).exists())
        QDir().mkdir(QDir(path).absolutePath());
}

} // namespace

QByteArray KyPDataBase::addressbookFileName(bool bare)
{
    return internalPath(bare, "KYADRS.BOX");
}

QByteArray KyPDataBase::todolistFileName(bool bare)
{
    return internalPath(bare, "KYTODO.BOX");
}

QByteArray KyPDataBase::datebookFileName(bool bare)
{
    return internalPath(bare, "KYDATE.BOX");
}

QByteArray KyPDataBase::memoFileName(bool bare)
{
    return internalPath(bare, "KYMEMO.BOX");
}

QByteArray KyPDataBase::mailInboxFileName(int storage)
{
    return mailPath(storage, "kyinbox.box");
}

QByteArray KyPDataBase::mailOutboxFileName(int storage)
{
    return mailPath(storage, "kyoutbox.box");
}

QByteArray KyPDataBase::addressbookMasterIdx(bool bare)
{
    return internalPath(bare, "KYADRS.IDX");
}

QByteArray KyPDataBase::todolistMasterIdx(bool bare)
{
    return internalPath(bare, "KYTODO.IDX");
}

QByteArray KyPDataBase::datebookMasterIdx(bool bare)
{
    return internalPath(bare, "KYDATE.IDX");
}

QByteArray KyPDataBase::datebookStartIdx(bool bare)
{
    return internalPath(bare, "KYDATE1.IDX");
}

QByteArray KyPDataBase::datebookEndIdx(bool bare)
{
    return internalPath(bare, "KYDATE2.IDX");
}

QByteArray KyPDataBase::datebookMultiIdx(bool bare)
{
    return internalPath(bare, "KYDATE3.IDX");
}

QByteArray KyPDataBase::datebookRepeatIdx(bool bare)
{
    return internalPath(bare, "KYDATE4.IDX");
}

QByteArray KyPDataBase::memoMasterIdx(bool bare)
{
    return internalPath(bare, "KYMEMO.IDX");
}

QByteArray KyPDataBase::mailInboxMasterIdx(int storage)
{
    return mailPath(storage, "kyinbox.idx");
}

QByteArray KyPDataBase::mailOutboxMasterIdx(int storage)
{
    return mailPath(storage, "kyoutbox.idx");
}

KyPDataBaseItemInfo KyPDataBase::addressbookItems()
{
    using enum KyPDataBaseItemInfo::ItemType;
    static constexpr Field fields[] = {
        {0, "    ", Category, QT_TR_NOOP("category"), true},
        {1, "FULL", Text, QT_TR_NOOP("full name"), true},
        {2, "TITL", Text, QT_TR_NOOP("title"), true},
        {3, "LNME", Text, QT_TR_NOOP("last name"), true},
        {4, "FNME", Text, QT_TR_NOOP("first name"), true},
        {5, "MNME", Text, QT_TR_NOOP("middle name"), true},
        {6, "SUFX", Text, QT_TR_NOOP("suffix"), true},
        {7, "FLAS", Text, QT_TR_NOOP("file as"), true},
        {8, "LNPR", Text, QT_TR_NOOP("lastname pronunciation"), true},
        {9, "FNPR", Text, QT_TR_NOOP("firstname pronunciation"), true},
        {10, "NAPR", Text, QT_TR_NOOP("fullname pronunciation"), true},
        {11, "CPNY", Text, QT_TR_NOOP("company"), true},
        {12, "CPPR", Text, QT_TR_NOOP("company pronunciation"), true},
        {13, "SCTN", Text, QT_TR_NOOP("department"), true},
        {14, "PSTN", Text, QT_TR_NOOP("job title"), true},
        {15, "TEL2", Text, QT_TR_NOOP("business phone"), true},
        {16, "FAX2", Text, QT_TR_NOOP("business fax"), true},
        {17, "CPS2", Text, QT_TR_NOOP("business mobile"), true},
        {18, "BSTA", Text, QT_TR_NOOP("business state"), true},
        {19, "BCTY", Text, QT_TR_NOOP("business city"), true},
        {20, "BSTR", Text, QT_TR_NOOP("business street"), true},
        {21, "BZIP", Text, QT_TR_NOOP("business zip"), true},
        {22, "BCTR", Text, QT_TR_NOOP("business country"), true},
        {23, "BWEB", Text, QT_TR_NOOP("business webpage"), true},
        {24, "OFCE", Text, QT_TR_NOOP("office"), true},
        {25, "PRFS", Text, QT_TR_NOOP("profession"), true},
        {26, "ASST", Text, QT_TR_NOOP("assistant"), true},
        {27, "MNGR", Text, QT_TR_NOOP("manager"), true},
        {28, "BPGR", Text, QT_TR_NOOP("business pager"), true},
        {29, "CPS1", Text, QT_TR_NOOP("mobile phone"), true},
        {30, "TEL1", Text, QT_TR_NOOP("home phone"), true},
        {31, "FAX1", Text, QT_TR_NOOP("home fax"), true},
        {32, "HSTA", Text, QT_TR_NOOP("home state"), true},
        {33, "HCTY", Text, QT_TR_NOOP("home city"), true},
        {34, "HSTR", Text, QT_TR_NOOP("home street"), true},
        {35, "HZIP", Text, QT_TR_NOOP("home zip"), true},
        {36, "HCTR", Text, QT_TR_NOOP("home country"), true},
        {37, "HWEB", Text, QT_TR_NOOP("home webpage"), true},
        {38, "DMAL", Text, QT_TR_NOOP("default email"), true},
        {39, "MAL1", Text, QT_TR_NOOP("emails"), true},
        {40, "SPUS", Text, QT_TR_NOOP("spouse"), true},
        {41, "GNDR", Text, QT_TR_NOOP("gender"), true},
        {42, "BRTH", Text, QT_TR_NOOP("birthday"), true},
        {43, "ANIV", Text, QT_TR_NOOP("anniversary"), true},
        {44, "NCNM", Text, QT_TR_NOOP("nickname"), true},
        {45, "CLDR", Text, QT_TR_NOOP("children"), true},
        {46, "MEM1", Text, QT_TR_NOOP("notes"), true},
        {47, "GRPS", Text, QT_TR_NOOP("groups"), true},
    };
    return fieldTable(fields);
}

KyPDataBaseItemInfo KyPDataBase::todolistItems()
{
    using enum KyPDataBaseItemInfo::ItemType;
    static constexpr Field fields[] = {
        {0, "    ", Category, QT_TR_NOOP("category"), true},
        {1, "ETDY", Time, QT_TR_NOOP("start date"), false},
        {2, "LTDY", Time, QT_TR_NOOP("due date"), false},
        {3, "FNDY", Time, QT_TR_NOOP("finish date"), false},
        {4, "MARK", UnsignedChar, QT_TR_NOOP("completed"), true},
        {5, "PRTY", UnsignedChar, QT_TR_NOOP("priority"), true},
        {6, "TITL", Text, QT_TR_NOOP("description"), true},
        {7, "MEM1", Text, QT_TR_NOOP("notes"), true},
    };
    return fieldTable(fields);
}

KyPDataBaseItemInfo KyPDataBase::datebookItems()
{
    using enum KyPDataBaseItemInfo::ItemType;
    static constexpr Field fields[] = {
        {0, "    ", Category, QT_TR_NOOP("category"), true},
        {1, "DSRP", Text, QT_TR_NOOP("description"), true},
        {2, "PLCE", Text, QT_TR_NOOP("location"), true},
        {4, "MEM1", Text, QT_TR_NOOP("notes"), true},
        {5, "TIM1", Time, QT_TR_NOOP("start"), false},
        {6, "TIM2", Time, QT_TR_NOOP("end"), false},
        {7, "ADAY", UnsignedChar, QT_TR_NOOP("all day"), true},
        {8, "ARON", UnsignedChar, QT_TR_NOOP("alarm"), true},
        {9, "ARMN", UnsignedShort, QT_TR_NOOP("alarm time"), true},
        {10, "ARSD", UnsignedChar, QT_TR_NOOP("all sound"), true},
        {11, "RTYP", UnsignedChar, QT_TR_NOOP("repeat type"), true},
        {12, "RFRQ", UnsignedShort, QT_TR_NOOP("repeat frequency"), true},
        {13, "RPOS", UnsignedShort, QT_TR_NOOP("repeat position"), true},
        {14, "RDYS", UnsignedChar, QT_TR_NOOP("repeat days"), true},
        {15, "REND", UnsignedChar, QT_TR_NOOP("repeat end"), true},
        {16, "REDT", Time, QT_TR_NOOP("repeat enddate"), false},
        {17, "ALSD", Time, QT_TR_NOOP("allday startdate"), false},
        {18, "ALED", Time, QT_TR_NOOP("allday enddate"), false},
        {19, "MDAY", UnsignedChar, QT_TR_NOOP("multi date"), true},
    };
    return fieldTable(fields);
}

KyPDataBaseItemInfo KyPDataBase::maillistItems()
{
    using enum KyPDataBaseItemInfo::ItemType;
    static constexpr Field fields[] = {
        {0, "MLID", UnsignedLong, QT_TR_NOOP("internal mail id"), true},
        {1, "SIZE", UnsignedLong, QT_TR_NOOP("size"), true},
        {2, "TYPE", UnsignedChar, QT_TR_NOOP("mail type"), true},
        {3, "RDCK", UnsignedChar, QT_TR_NOOP("read check"), true},
        {4, "DLCK", UnsignedChar, QT_TR_NOOP("download"), true},
        {5, "DECK", UnsignedChar, QT_TR_NOOP("server delete"), true},
        {6, "SVID", Text, QT_TR_NOOP("serverid"), true},
        {7, "SDCK", UnsignedChar, QT_TR_NOOP("send"), true},
        {8, "MDCK", UnsignedChar, QT_TR_NOOP("modify"), true},
        {9, "DRFT", UnsignedChar, QT_TR_NOOP("draft"), true},
        {10, "SLCK", UnsignedChar, QT_TR_NOOP("select check"), true},
        {11, "ACNM", Text, QT_TR_NOOP("account name"), true},
        {12, "MLBX", Text, QT_TR_NOOP("mailbox"), true},
        {13, "RVTM", Time, QT_TR_NOOP("receive date"), true},
        {14, "SDTM", Time, QT_TR_NOOP("send date"), true},
        {15, "TMZN", Text, QT_TR_NOOP("time zone"), true},
        {16, "FMAC", Text, QT_TR_NOOP("from account"), true},
        {17, "FMNM", Text, QT_TR_NOOP("from name"), true},
        {18, "FMAD", Text, QT_TR_NOOP("from"), true},
        {19, "MLTO", Text, QT_TR_NOOP("to"), true},
        {20, "MLCC", Text, QT_TR_NOOP("cc"), true},
        {21, "MLBC", Text, QT_TR_NOOP("bcc"), true},
        {22, "MLRP", Text, QT_TR_NOOP("reply"), true},
        {23, "SBJT", Text, QT_TR_NOOP("subject"), true},
        {24, "BODY", Text, QT_TR_NOOP("body"), true},
        {25, "HTML", Text, QT_TR_NOOP("htmlbody"), true},
        {26, "ENNM", UnsignedShort, QT_TR_NOOP("enclosure num"), true},
        {27, "ENAT", Text, QT_TR_NOOP("conntent attribute"), true},
        {28, "ENTP", Text, QT_TR_NOOP("conntent type"), true},
        {29, "ENFL", Text, QT_TR_NOOP("enclosure file"), true},
        {30, "DMMY", Text, QT_TR_NOOP("dummy"), true},
    };
    return fieldTable(fields);
}

bool KyPDataBase::createAddressbookFile(const KyPDataManagerIndexInfo &indexes)
{
    return createFile(addressbookFileName(false), addressbookMasterIdx(false), AddressbookId, false,
                      declaredItems(addressbookItems()), AddressbookOrder, sizeof AddressbookOrder, indexes);
}

bool KyPDataBase::createTodolistFile(const KyPDataManagerIndexInfo &indexes)
{
    return createFile(todolistFileName(false), todolistMasterIdx(false), TodolistId, false,
                      declaredItems(todolistItems()), ascending("LTDY", false), indexes);
}

bool KyPDataBase::createDatebookFile(const KyPDataManagerIndexInfo &indexes)
{
    return createFile(datebookFileName(false), datebookMasterIdx(false), DatebookId, false,
                      declaredItems(datebookItems()), ascending("TIM1", false), indexes);
}

bool KyPDataBase::createMailInboxFile(const KyPDataManagerIndexInfo &indexes, int storage)
{
    return createFile(mailInboxFileName(storage), mailInboxMasterIdx(storage), MailId, false,
                      declaredItems(maillistItems()), ascending("ACNM", false), indexes);
}

bool KyPDataBase::createMailOutboxFile(const KyPDataManagerIndexInfo &indexes, int storage)
{
    return createFile(mailOutboxFileName(storage), mailOutboxMasterIdx(storage), MailId, false,
                      declaredItems(maillistItems()), ascending("ACNM", false), indexes);
}

bool KyPDataBase::createMemoFile(const KyPDataManagerIndexInfo &indexes)
{
    KyPDataManagerItemInfo items;
    items.addTextItem("CLAS", KyPDataManager::tr("title"));
    items.addTextItem("MEM1", KyPDataManager::tr("contents"));
    items.addTimeItem("dATE", KyPDataManager::tr("modified time"));
    items.addCategoryItem();
    return createFile(memoFileName(false), memoMasterIdx(false), MemoId, false, items,
                      ascending("CLAS", true), indexes);
}

QString getExternalPath(const QString &mount)
{
    char folder[64] = {};
    GetExternalStorageDtmPath(folder);
    const QString below = QString::fromUtf8(folder, static_cast<qsizetype>(qstrnlen(folder, sizeof folder)));
    const QString top = mount + below.left(below.indexOf(u'/', 1));
    makeFolder(top);
    makeFolder(top + QLatin1String("/kliomu")); // holds no box; a card that was made ready has it
    makeFolder(mount + below);
    return mount + below + u'/';
}

} // namespace KyPDtm
