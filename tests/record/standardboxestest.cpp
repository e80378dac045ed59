#include "boxfixture.h"
#include "childprocess.h"
#include "kypdatabase.h"
#include "kypdatamanagerindexinfo.h"
#include "kypdatamanageriteminfo.h"
#include <QTest>
#include <QTranslator>

namespace {

template <typename... T>
concept ReadsTime = requires(const KyPDataBase &base, T... arguments)
{
    base.readTimeField(5, arguments...);
};
// A plain number is a card; a flag in its place is a mistake.
static_assert(ReadsTime<> && ReadsTime<int> && ReadsTime<unsigned long> && ReadsTime<int, bool>);
static_assert(!ReadsTime<bool>);

/** Field tables: number, code, ItemType, flag, label. */
constexpr const char *AddressbookTable[] = {
    " 0      7 + category",
    " 1 FULL 0 + full name",
    " 2 TITL 0 + title",
    " 3 LNME 0 + last name",
    " 4 FNME 0 + first name",
    " 5 MNME 0 + middle name",
    " 6 SUFX 0 + suffix",
    " 7 FLAS 0 + file as",
    " 8 LNPR 0 + lastname pronunciation",
    " 9 FNPR 0 + firstname pronunciation",
    "10 NAPR 0 + fullname pronunciation",
    "11 CPNY 0 + company",
    "12 CPPR 0 + company pronunciation",
    "13 SCTN 0 + department",
    "14 PSTN 0 + job title",
    "15 TEL2 0 + business phone",
    "16 FAX2 0 + business fax",
    "17 CPS2 0 + business mobile",
    "18 BSTA 0 + business state",
    "19 BCTY 0 + business city",
    "20 BSTR 0 + business street",
    "21 BZIP 0 + business zip",
    "22 BCTR 0 + business country",
    "23 BWEB 0 + business webpage",
    "24 OFCE 0 + office",
    "25 PRFS 0 + profession",
    "26 ASST 0 + assistant",
    "27 MNGR 0 + manager",
    "28 BPGR 0 + business pager",
    "29 CPS1 0 + mobile phone",
    "30 TEL1 0 + home phone",
    "31 FAX1 0 + home fax",
    "32 HSTA 0 + home state",
    "33 HCTY 0 + home city",
    "34 HSTR 0 + home street",
    "35 HZIP 0 + home zip",
    "36 HCTR 0 + home country",
    "37 HWEB 0 + home webpage",
    "38 DMAL 0 + default email",
    "39 MAL1 0 + emails",
    "40 SPUS 0 + spouse",
    "41 GNDR 0 + gender",
    "42 BRTH 0 + birthday",
    "43 ANIV 0 + anniversary",
    "44 NCNM 0 + nickname",
    "45 CLDR 0 + children",
    "46 MEM1 0 + notes",
    "47 GRPS 0 + groups",
};
constexpr const char *TodolistTable[] = {
    " 0      7 + category",  " 1 ETDY 5 - start date", " 2 LTDY 5 - due date",    " 3 FNDY 5 - finish date",
    " 4 MARK 1 + completed", " 5 PRTY 1 + priority",   " 6 TITL 0 + description", " 7 MEM1 0 + notes",
};
constexpr const char *DatebookTable[] = {
    " 0      7 + category",
    " 1 DSRP 0 + description",
    " 2 PLCE 0 + location",
    " 4 MEM1 0 + notes",
    " 5 TIM1 5 - start",
    " 6 TIM2 5 - end",
    " 7 ADAY 1 + all day",
    " 8 ARON 1 + alarm",
    " 9 ARMN 2 + alarm time",
    "10 ARSD 1 + all sound",
    "11 RTYP 1 + repeat type",
    "12 RFRQ 2 + repeat frequency",
    "13 RPOS 2 + repeat position",
    "14 RDYS 1 + repeat days",
    "15 REND 1 + repeat end",
    "16 REDT 5 - repeat enddate",
    "17 ALSD 5 - allday startdate",
    "18 ALED 5 - allday enddate",
    "19 MDAY 1 + multi date",
};
constexpr const char *MailTable[] = {
    " 0 MLID 3 + internal mail id",
    " 1 SIZE 3 + size",
    " 2 TYPE 1 + mail type",
    " 3 RDCK 1 + read check",
    " 4 DLCK 1 + download",
    " 5 DECK 1 + server delete",
    " 6 SVID 0 + serverid",
    " 7 SDCK 1 + send",
    " 8 MDCK 1 + modify",
    " 9 DRFT 1 + draft",
    "10 SLCK 1 + select check",
    "11 ACNM 0 + account name",
    "12 MLBX 0 + mailbox",
    "13 RVTM 5 + receive date",
    "14 SDTM 5 + send date",
    "15 TMZN 0 + time zone",
    "16 FMAC 0 + from account",
    "17 FMNM 0 + from name",
    "18 FMAD 0 + from",
    "19 MLTO 0 + to",
    "20 MLCC 0 + cc",
    "21 MLBC 0 + bcc",
    "22 MLRP 0 + reply",
    "23 SBJT 0 + subject",
    "24 BODY 0 + body",
    "25 HTML 0 + htmlbody",
    "26 ENNM 2 + enclosure num",
    "27 ENAT 0 + conntent attribute",
    "28 ENTP 0 + conntent type",
    "29 ENFL 0 + enclosure file",
    "30 DMMY 0 + dummy",
};
/** The memo box has no field table; this is what it declares. */
constexpr const char *MemoTable[] = {
    " 1 CLAS 0 + title",
    " 2 MEM1 0 + contents",
    " 3 dATE 5 + modified time",
    " 4      7 + ",
};

struct Field
{
    int number;
    QByteArray code;
    int type;
    bool flag;
    QString label;

    /** As the box has it. */
    [[nodiscard]] QByteArray declaredCode() const
    {
        if (type == 7)
            return "CTGR";
        return flag ? code : char(code[0] + ('a' - 'A')) + code.mid(1);
    }
    /** As the store numbers types. */
    [[nodiscard]] int storeType() const
    {
        constexpr int types[] = {17, 11, 8, 18, 13, 4, 9, 12};
        return types[type];
    }
};

using Table = QList<Field>;

template <size_t Count> Table parsed(const char *const (&rows)[Count])
{
    Table table;
    for (const char *const text : rows) {
        const QByteArray row = text;
        table.append(
            {row.left(2).toInt(), row.mid(3, 4), row.mid(8, 1).toInt(), row.at(10) == '+', row.mid(12)});
    }
    return table;
}

using Create = bool (*)(const KyPDataManagerIndexInfo &);

bool createInbox(const KyPDataManagerIndexInfo &indexes)
{
    return KyPDataBase::createMailInboxFile(indexes, 0);
}

bool createOutbox(const KyPDataManagerIndexInfo &indexes)
{
    return KyPDataBase::createMailOutboxFile(indexes, 0);
}

struct Box
{
    const char *name;
    Create create;
    QByteArray file;
    QByteArray index;
    Table table;
    quint32 applicationId;
    QByteArray order;
    KyPDataBaseItemInfo items;
};

QList<Box> allBoxes()
{
    using Base = KyPDataBase;
    const Table mail = parsed(MailTable);
    const QByteArray mailOrder("ACNM\xFE\x82\0", 7);
    return {
        {"address book", Base::createAddressbookFile, "KYADRS.BOX", "KYADRS.IDX", parsed(AddressbookTable),
         0x41445253, QByteArray("NAPR\xFE\x80\0", 7), Base::addressbookItems()},
        {"to-do list", Base::createTodolistFile, "KYTODO.BOX", "KYTODO.IDX", parsed(TodolistTable),
         0x544F444F, QByteArray("LTDY\xFE\x82\0", 7), Base::todolistItems()},
        {"calendar", Base::createDatebookFile, "KYDATE.BOX", "KYDATE.IDX", parsed(DatebookTable), 0x5343444C,
         QByteArray("TIM1\xFE\x82\0", 7), Base::datebookItems()},
        {"mail inbox", createInbox, "kyinbox.box", "kyinbox.idx", mail, 0x4D41494C, mailOrder,
         Base::maillistItems()},
        {"mail outbox", createOutbox, "kyoutbox.box", "kyoutbox.idx", mail, 0x4D41494C, mailOrder,
         Base::maillistItems()},
        {"memo", Base::createMemoFile, "KYMEMO.BOX", "KYMEMO.IDX", parsed(MemoTable), 0x54454454,
         QByteArray("CLAS\xFE\x80\0", 7), KyPDataBaseItemInfo()},
    };
}

/** Role "create": makes all boxes. */
int childMain(int, char **)
{
    for (const Box &box : allBoxes())
        box.create(KyPDataManagerIndexInfo());
    return 0;
}

/** Shows which context a text is looked up in. */
class ContextTranslator : public QTranslator
{
public:
    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char *context, const char *source, const char *, int) const override
    {
        return QString::fromLatin1(context) + '|' + QString::fromLatin1(source);
    }
};

QDateTime timeOf(const Field &field)
{
    return QDateTime(QDate(2026, 3, 1 + field.number % 28), QTime(8, field.number, 7));
}

QString textOf(const Field &field)
{
    return QString::fromUtf8("値 %1").arg(field.number);
}

/** Writes a value of its own to a field, by its number. */
bool write(KyPDataBase &base, const Field &field)
{
    switch (field.type) {
    case 0:
        return base.writeField(field.number, textOf(field));
    case 1:
        return base.writeField(field.number, static_cast<unsigned char>(100 + field.number));
    case 2:
        return base.writeField(field.number, static_cast<unsigned short>(1000 + field.number));
    case 3:
        return base.writeField(field.number, 0xFEDCBA00ul + static_cast<unsigned long>(field.number));
    case 5:
        return base.writeField(field.number, timeOf(field));
    default:
        return false;
    }
}

/** True when a field reads as write() wrote it. */
bool readsAsWritten(const KyPDataBase &base, const Field &field, unsigned long card)
{
    switch (field.type) {
    case 0:
        return base.readField(field.number, card) == textOf(field);
    case 1:
        return base.readUcharField(field.number, card) == 100 + field.number;
    case 2:
        return base.readUshortField(field.number, card) == 1000 + field.number;
    case 3:
        return base.readUlongField(field.number, card) ==
               0xFEDCBA00ul + static_cast<unsigned long>(field.number);
    case 5:
        return base.readTimeField(field.number, card) == timeOf(field) &&
               base.readDateField(field.number, card) == timeOf(field).date();
    default:
        return false;
    }
}

void addBoxRows()
{
    QTest::addColumn<int>("number");
    const QList<Box> boxes = allBoxes();
    for (int i = 0; i < boxes.size(); ++i)
        QTest::newRow(boxes[i].name) << i;
}

} // namespace

/** Names, field tables and files of the personal data. */
class StandardBoxesTest : public QObject
{
    Q_OBJECT
private slots:
    void fileNames_data();
    void fileNames();
    void mailFilesOnInternalStorage_data();
    void mailFilesOnInternalStorage();
    void mailFilesOnCards_data();
    void mailFilesOnCards();
    void externalPathMakesItsFolders();
    void externalPathWithoutMount();

    void fieldTable_data();
    void fieldTable();
    void labelsAreTranslated();

    void boxIsCreated_data();
    void boxIsCreated();
    void secondCreationChangesNothing_data();
    void secondCreationChangesNothing();
    void lowerCaseCodesAreDeclared();
    void calendarDeclaresByNumber();
    void mailBoxesOnACard();
    void furtherIndexesAreMade();

    void everyFieldByNumber_data();
    void everyFieldByNumber();
    void memoByCode();
    void rawAndDateFields();
    void emptyFields();
    void fieldWithoutEntry();
    void tableIsKept();
    void writingNeedsAnEdit();

    void creationBesideAnEditorChangesNothing();

private:
    [[nodiscard]] static QByteArray internal(const QByteArray &file) { return "F0:" + file; }
};

void StandardBoxesTest::fileNames_data()
{
    using Name = QByteArray (*)(bool);
    using Base = KyPDataBase;
    QTest::addColumn<Name>("function");
    QTest::addColumn<QByteArray>("name");
    const auto row = [](Name function, const char *name) {
        QTest::newRow(name) << function << QByteArray(name);
    };
    row(Base::addressbookFileName, "KYADRS.BOX");
    row(Base::todolistFileName, "KYTODO.BOX");
    row(Base::datebookFileName, "KYDATE.BOX");
    row(Base::memoFileName, "KYMEMO.BOX");
    row(Base::addressbookMasterIdx, "KYADRS.IDX");
    row(Base::todolistMasterIdx, "KYTODO.IDX");
    row(Base::datebookMasterIdx, "KYDATE.IDX");
    row(Base::datebookStartIdx, "KYDATE1.IDX");
    row(Base::datebookEndIdx, "KYDATE2.IDX");
    row(Base::datebookMultiIdx, "KYDATE3.IDX");
    row(Base::datebookRepeatIdx, "KYDATE4.IDX");
    row(Base::memoMasterIdx, "KYMEMO.IDX");
}

void StandardBoxesTest::fileNames()
{
    using Name = QByteArray (*)(bool);
    QFETCH(Name, function);
    QFETCH(QByteArray, name);
    QCOMPARE(function(false), "F0:" + name);
    QCOMPARE(function(true), name);
}

void StandardBoxesTest::mailFilesOnInternalStorage_data()
{
    QTest::addColumn<int>("storage");
    for (const int storage : {0, 3, 5, -1, 1000})
        QTest::addRow("%d", storage) << storage;
}

void StandardBoxesTest::mailFilesOnInternalStorage()
{
    QFETCH(int, storage);
    QCOMPARE(KyPDataBase::mailInboxFileName(storage), QByteArray("F0:kyinbox.box"));
    QCOMPARE(KyPDataBase::mailOutboxFileName(storage), QByteArray("F0:kyoutbox.box"));
    QCOMPARE(KyPDataBase::mailInboxMasterIdx(storage), QByteArray("F0:kyinbox.idx"));
    QCOMPARE(KyPDataBase::mailOutboxMasterIdx(storage), QByteArray("F0:kyoutbox.idx"));
}

void StandardBoxesTest::mailFilesOnCards_data()
{
    QTest::addColumn<int>("storage");
    QTest::addColumn<QString>("mount");
    QTest::newRow("SD") << 1 << "/usr/mnt.rom/card";
    QTest::newRow("CF") << 2 << "/usr/mnt.rom/cf";
}

void StandardBoxesTest::mailFilesOnCards()
{
    QFETCH(int, storage);
    QFETCH(QString, mount);
    const QString rooted = qEnvironmentVariable("KY_DEVICE_ROOT") + mount;
    QVERIFY(QDir().mkpath(rooted));
    const QByteArray folder = QFile::encodeName(rooted) + "/Applications/dtm/";
    QCOMPARE(KyPDataBase::mailInboxFileName(storage), folder + "kyinbox.box");
    QCOMPARE(KyPDataBase::mailOutboxFileName(storage), folder + "kyoutbox.box");
    QCOMPARE(KyPDataBase::mailInboxMasterIdx(storage), folder + "kyinbox.idx");
    QCOMPARE(KyPDataBase::mailOutboxMasterIdx(storage), folder + "kyoutbox.idx");
    QVERIFY(QFileInfo(folder).isDir());
}

void StandardBoxesTest::externalPathMakesItsFolders()
{
    const QString mount = qEnvironmentVariable("KY_DEVICE_ROOT") + "/mounted";
    QVERIFY(QDir().mkpath(mount));
    for (int round = 0; round < 2; ++round) {
        QCOMPARE(getExternalPath(mount), mount + "/Applications/dtm/");
        QCOMPARE(QDir(mount).entryList(QDir::Dirs | QDir::NoDotAndDotDot), QStringList("Applications"));
        QCOMPARE(QDir(mount + "/Applications").entryList(QDir::Dirs | QDir::NoDotAndDotDot),
                 (QStringList{"dtm", "kliomu"}));
    }
}

void StandardBoxesTest::externalPathWithoutMount()
{
    const QString mount = qEnvironmentVariable("KY_DEVICE_ROOT") + "/missing";
    QCOMPARE(getExternalPath(mount), mount + "/Applications/dtm/");
    QVERIFY(!QFile::exists(mount));
}

void StandardBoxesTest::fieldTable_data()
{
    using Items = KyPDataBaseItemInfo (*)();
    QTest::addColumn<Items>("items");
    QTest::addColumn<Table>("table");
    QTest::addColumn<int>("count");
    QTest::newRow("address book") << Items(KyPDataBase::addressbookItems) << parsed(AddressbookTable) << 48;
    QTest::newRow("to-do list") << Items(KyPDataBase::todolistItems) << parsed(TodolistTable) << 8;
    QTest::newRow("calendar") << Items(KyPDataBase::datebookItems) << parsed(DatebookTable) << 19;
    QTest::newRow("mail") << Items(KyPDataBase::maillistItems) << parsed(MailTable) << 31;
}

void StandardBoxesTest::fieldTable()
{
    using Items = KyPDataBaseItemInfo (*)();
    QFETCH(Items, items);
    QFETCH(Table, table);
    QTEST(int(table.size()), "count");
    const KyPDataBaseItemInfo found = items();
    for (const Field &field : table) {
        const KyPdbItemInfo info = found.itemInfo(field.number);
        QCOMPARE(QByteArray(info.code, 4), field.code);
        QCOMPARE(int(info.type), field.type);
        QCOMPARE(info.label, field.label);
        QCOMPARE(info.flag, field.flag);
    }
    KyPDataManagerItemInfo declared;
    found.toKyPdtmItemInfo(&declared);
    QCOMPARE(declared.entries().size(), table.size()); // and no other field
}

void StandardBoxesTest::labelsAreTranslated()
{
    ContextTranslator translator;
    QCoreApplication::installTranslator(&translator);
    const auto remove = qScopeGuard([&] { QCoreApplication::removeTranslator(&translator); });
    QCOMPARE(KyPDataBase::addressbookItems().itemInfo(1).label, QString("KyPDtm::KyPDataBase|full name"));
    QCOMPARE(KyPDataBase::maillistItems().itemInfo(27).label,
             QString("KyPDtm::KyPDataBase|conntent attribute"));
    QFile::remove(boxFolder() + "KYMEMO.BOX");
    QVERIFY(KyPDataBase::createMemoFile(KyPDataManagerIndexInfo()));
    KyPDataManager memo(KyPDataBase::memoFileName(false), nullptr, true);
    QCOMPARE(memo.items().entries().value(0).label, QString("KyPDtm::KyPDataManager|title"));
    QVERIFY(memo.close());
    QVERIFY(KyPDataManager::deleteFile(KyPDataBase::memoFileName(false)));
}

void StandardBoxesTest::boxIsCreated_data()
{
    addBoxRows();
}

void StandardBoxesTest::boxIsCreated()
{
    QFETCH(int, number);
    const Box box = allBoxes().at(number);
    QVERIFY(box.create(KyPDataManagerIndexInfo()));
    QVERIFY(QFile::exists(boxFolder() + box.file));
    QVERIFY(QFile::exists(boxFolder() + box.index));
    QCOMPARE(_DTMFileCheckAppliID(internal(box.file), 3, box.applicationId), PdtmStatus(PdtmOk));

    char order[50];
    uint16_t length = sizeof order;
    QCOMPARE(_IndexInfoRead(internal(box.index), InfoSortExpression, order, &length), PdtmStatus(PdtmOk));
    QCOMPARE(QByteArray(order, length), box.order);

    KyPDataBase base(internal(box.file), box.items, nullptr, false);
    QVERIFY(base.isOpened());
    QCOMPARE(base.count(), 0);
    const QList<KyPDataManagerItem> declared = base.items().entries();
    QCOMPARE(declared.size(), box.table.size() + 4); // and the implicit ones
    for (qsizetype i = 0; i < box.table.size(); ++i) {
        const Field &field = box.table.at(i);
        QCOMPARE(QByteArray(declared.at(i).code, 4), field.declaredCode());
        QCOMPARE(int(declared.at(i).type), field.storeType());
        QCOMPARE(declared.at(i).label, field.type == 7 ? QString("") : field.label);
    }
}

void StandardBoxesTest::secondCreationChangesNothing_data()
{
    addBoxRows();
}

void StandardBoxesTest::secondCreationChangesNothing()
{
    QFETCH(int, number);
    const Box box = allBoxes().at(number);
    QVERIFY(box.create(KyPDataManagerIndexInfo()));
    const auto before = folderState();
    QVERIFY(box.create(KyPDataManagerIndexInfo()));
    QCOMPARE(folderState(), before);
}

void StandardBoxesTest::lowerCaseCodesAreDeclared()
{
    QByteArrayList lower;
    for (const Box &box : allBoxes()) {
        QVERIFY(box.create(KyPDataManagerIndexInfo()));
        KyPDataManager manager(internal(box.file), nullptr, true);
        for (const KyPDataManagerItem &item : manager.items().entries()) {
            if (item.code[0] >= 'a')
                lower.append(QByteArray(item.code, 4));
        }
    }
    QCOMPARE(lower, (QByteArrayList{"eTDY", "lTDY", "fNDY", "tIM1", "tIM2", "rEDT", "aLSD", "aLED", "dATE"}));
}

void StandardBoxesTest::calendarDeclaresByNumber()
{
    QVERIFY(KyPDataBase::createDatebookFile(KyPDataManagerIndexInfo()));
    KyPDataBase base(KyPDataBase::datebookFileName(false), KyPDataBase::datebookItems(), nullptr, true);
    QCOMPARE(base.nameToFieldId(9), 9); // ARMN, in ninth place since number 3 is not used
    QCOMPARE(base.nameToFieldId(10), 10);
    QCOMPARE(base.nameToItemId("ARMN") + 1, base.nameToItemId("ARSD"));
    QCOMPARE(base.nameToFieldId(5), 5); // TIM1, declared as tIM1
    QCOMPARE(base.itemName(5), QByteArray("TIM1"));
    QCOMPARE(base.readFieldType(5), 4);
    QCOMPARE(base.readFieldType(9), 8);
    QCOMPARE(base.readFieldType(1), 17);
    QCOMPARE(base.resumeCardId(), 0xFF10ul);
}

void StandardBoxesTest::mailBoxesOnACard()
{
    QVERIFY(QDir().mkpath(qEnvironmentVariable("KY_DEVICE_ROOT") + "/usr/mnt.rom/card"));
    QVERIFY(KyPDataBase::createMailInboxFile(KyPDataManagerIndexInfo(), 1));
    QVERIFY(KyPDataBase::createMailOutboxFile(KyPDataManagerIndexInfo(), 1));
    for (const QByteArray &path : {KyPDataBase::mailInboxFileName(1), KyPDataBase::mailOutboxFileName(1)}) {
        KyPDataBase base(path, KyPDataBase::maillistItems(), nullptr, false);
        QVERIFY(base.isOpened());
        QVERIFY(base.editNewCard());
        QVERIFY(base.writeField(23, QString("subject")));
        unsigned long card = 0;
        QVERIFY(base.finishEditCard(&card));
        QCOMPARE(base.readField(23, base.firstCard()), QString("subject"));
    }
}

void StandardBoxesTest::furtherIndexesAreMade()
{
    KyPDataManagerIndexInfo indexes;
    constexpr char repeats[] = "RTYP\xFE\x9B\x0B\0";
    constexpr char byStart[] = "TIM1\xFE\x82";
    indexes.addIndexInfo(KyPDataBase::datebookRepeatIdx(false), repeats, sizeof repeats, byStart,
                         sizeof byStart);
    QVERIFY(KyPDataBase::createDatebookFile(indexes));
    QVERIFY(QFile::exists(boxFolder() + "KYDATE4.IDX"));
}

void StandardBoxesTest::everyFieldByNumber_data()
{
    addBoxRows();
}

void StandardBoxesTest::everyFieldByNumber()
{
    QFETCH(int, number);
    const Box box = allBoxes().at(number);
    QVERIFY(box.create(KyPDataManagerIndexInfo()));
    KyPDataBaseItemInfo items = box.items;
    const bool isMemo = items.itemInfo(1).label.isEmpty();
    for (const Field &field : box.table) {
        if (isMemo)
            items.addItemInfo(field.number, field.code, KyPDataBaseItemInfo::ItemType(field.type),
                              field.label, true);
    }
    KyPDataBase base(internal(box.file), items, nullptr, false);
    QVERIFY(base.editNewCard());
    for (const Field &field : box.table)
        QCOMPARE(write(base, field), field.type != 7);
    unsigned long card = 0;
    QVERIFY(base.finishEditCard(&card));
    for (const Field &field : box.table) {
        QCOMPARE(base.itemName(field.number), field.code);
        if (field.type == 7)
            continue; // four blanks name no item
        QVERIFY2(readsAsWritten(base, field, card), field.code);
        QCOMPARE(base.readFieldType(field.number), field.storeType());
    }
    QVERIFY(base.startEditCard(card));
    for (const Field &field : box.table)
        QCOMPARE(base.clearField(field.number), field.type != 7);
    QVERIFY(base.finishEditCard(&card));
    for (const Field &field : box.table) {
        if (field.type == 0)
            QCOMPARE(base.readField(field.number, card), QString(""));
        if (field.type == 5)
            QVERIFY(!base.readTimeField(field.number, card).isValid());
        if (field.type == 1)
            QCOMPARE(base.readUcharField(field.number, card), -1);
        if (field.type == 2)
            QCOMPARE(base.readUshortField(field.number, card), -1);
    }
}

void StandardBoxesTest::memoByCode()
{
    QVERIFY(KyPDataBase::createMemoFile(KyPDataManagerIndexInfo()));
    KyPDataManager memo(KyPDataBase::memoFileName(false), nullptr, false);
    QVERIFY(memo.editNewCard());
    QVERIFY(memo.writeItem("CLAS", "a memo"));
    QVERIFY(memo.writeItem("DATE", QDate(2026, 11, 21)));
    QVERIFY(memo.writeItem("CTGR", "\x05\x07", 2));
    unsigned long card = 0;
    QVERIFY(memo.finishEditCard(&card));
    QCOMPARE(memo.readItem("CLAS", card), QString("a memo"));
    QCOMPARE(memo.readDateItem("dATE", card), QDate(2026, 11, 21));
}

void StandardBoxesTest::rawAndDateFields()
{
    QVERIFY(KyPDataBase::createTodolistFile(KyPDataManagerIndexInfo()));
    KyPDataBase base(KyPDataBase::todolistFileName(false), KyPDataBase::todolistItems(), nullptr, false);
    QVERIFY(base.editNewCard());
    QVERIFY(base.writeField(2, QDate(2026, 12, 31)));
    QVERIFY(base.writeField(6, "raw\0x", 3));
    QVERIFY(base.writeField(7, "text of a literal"));
    unsigned long card = 0;
    QVERIFY(base.finishEditCard(&card));
    QCOMPARE(base.readDateField(2, card), QDate(2026, 12, 31));
    QCOMPARE(base.readField(6, card), QString("raw"));
    QCOMPARE(base.readField(7, card), QString("text of a literal"));
    // Card 0 is the current one.
    QVERIFY(base.first());
    while (base.cardId() != card)
        QVERIFY(base.next());
    QCOMPARE(base.readField(6), QString("raw"));
    QCOMPARE(base.readDateField(2), QDate(2026, 12, 31));
}

void StandardBoxesTest::emptyFields()
{
    QVERIFY(createInbox(KyPDataManagerIndexInfo()));
    KyPDataBase base(KyPDataBase::mailInboxFileName(0), KyPDataBase::maillistItems(), nullptr, false);
    QVERIFY(base.editNewCard());
    QVERIFY(base.writeField(1, 0ul));
    unsigned long card = 0;
    QVERIFY(base.finishEditCard(&card));
    QCOMPARE(base.readUlongField(0, card), 0ul); // never written
    QCOMPARE(base.readUlongField(1, card), 0ul); // a stored 0
    QCOMPARE(base.readUlongField(6, card), 0ul); // a text
    QCOMPARE(base.readField(6, card), QString(""));
    QVERIFY(!base.readField(6, card).isNull());
    QVERIFY(base.readField(0, card).isNull());
}

void StandardBoxesTest::fieldWithoutEntry()
{
    QVERIFY(KyPDataBase::createDatebookFile(KyPDataManagerIndexInfo()));
    KyPDataBase base(KyPDataBase::datebookFileName(false), KyPDataBase::datebookItems(), nullptr, false);
    QVERIFY(base.editNewCard());
    unsigned long card = 0;
    QVERIFY(base.writeField(1, QString("an event")));
    for (const int field : {3, -1, 20, 1000}) {
        QVERIFY(!base.writeField(field, QString("text")));
        QVERIFY(!base.writeField(field, "raw", 3));
        QVERIFY(!base.writeField(field, QDate(2026, 1, 1)));
        QVERIFY(!base.writeField(field, static_cast<unsigned char>(1)));
        QVERIFY(!base.clearField(field));
    }
    QVERIFY(base.finishEditCard(&card));
    for (const int field : {3, -1, 20, 1000}) {
        QVERIFY(base.readField(field, card).isNull());
        QVERIFY(!base.readTimeField(field, card).isValid());
        QVERIFY(!base.readDateField(field, card).isValid());
        QCOMPARE(base.readUcharField(field, card), -1);
        QCOMPARE(base.readUshortField(field, card), -1);
        QCOMPARE(base.readUlongField(field, card), 0ul);
        QCOMPARE(base.readFieldType(field), 0);
        QCOMPARE(base.nameToFieldId(field), 0);
        QCOMPARE(base.itemName(field), QByteArray(4, '\0'));
    }
}

void StandardBoxesTest::tableIsKept()
{
    QVERIFY(KyPDataBase::createTodolistFile(KyPDataManagerIndexInfo()));
    KyPDataBaseItemInfo items = KyPDataBase::todolistItems();
    KyPDataBase base(KyPDataBase::todolistFileName(false), items, nullptr, true);
    items.addItemInfo(6, "MEM1", KyPDataBaseItemInfo::Text, "notes", true);
    QCOMPARE(base.itemName(6), QByteArray("TITL"));
}

void StandardBoxesTest::writingNeedsAnEdit()
{
    QVERIFY(KyPDataBase::createTodolistFile(KyPDataManagerIndexInfo()));
    KyPDataBase base(KyPDataBase::todolistFileName(false), KyPDataBase::todolistItems(), nullptr, false);
    for (const Field &field : parsed(TodolistTable)) {
        QVERIFY(!write(base, field));
        QVERIFY(!base.clearField(field.number));
    }
}

void StandardBoxesTest::creationBesideAnEditorChangesNothing()
{
    for (const Box &box : allBoxes())
        QVERIFY(box.create(KyPDataManagerIndexInfo()));
    KyPDataBase base(KyPDataBase::addressbookFileName(false), KyPDataBase::addressbookItems(), nullptr,
                     false);
    unsigned long card = 0;
    for (const char *name : {"ito", "abe", "uno"}) {
        card = 0;
        QVERIFY(base.editNewCard());
        QVERIFY(base.writeField(1, QString(name)));
        QVERIFY(base.writeField(10, QString(name)));
        QVERIFY(base.finishEditCard(&card));
    }
    const auto names = [&base] {
        QStringList result;
        for (bool found = base.first(); found; found = base.next())
            result.append(base.readField(1));
        result.removeAll(QString::fromUtf8("値 1"));
        result.removeAll("");
        return result;
    };
    QCOMPARE(names(), (QStringList{"abe", "ito", "uno"}));
    QVERIFY(base.startEditCard(card));
    QVERIFY(base.writeField(10, QString("aa")));
    const auto before = folderState();
    QVERIFY(before.size() >= 12);

    ChildProcess child({"create"});
    QCOMPARE(child.finish(), 0);

    QCOMPARE(folderState(), before);
    QVERIFY(base.isOpened());
    QCOMPARE(names(), (QStringList{"abe", "ito", "uno"}));
    QVERIFY(base.finishEditCard(&card));
    QCOMPARE(names(), (QStringList{"uno", "abe", "ito"}));
    QVERIFY(base.close());
    QVERIFY(base.open(false));
    QCOMPARE(names(), (QStringList{"uno", "abe", "ito"}));
}

KY_TEST_MAIN_WITH_CHILD(StandardBoxesTest, childMain)
#include "standardboxestest.moc"
