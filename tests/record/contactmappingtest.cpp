#include "mappingfixture.h"
#include "writewatch.h"

namespace {

/** Field, code and key of each text of a contact, by field. 0: composed. */
struct Row
{
    int field;
    const char *code;
    int key;
};
constexpr Row Rows[] = {
    {1, "FULL", 0},   {2, "TITL", 2},   {3, "LNME", 5},   {4, "FNME", 3},   {5, "MNME", 4},
    {6, "SUFX", 6},   {7, "FLAS", 7},   {8, "LNPR", 47},  {9, "FNPR", 46},  {10, "NAPR", 0},
    {11, "CPNY", 10}, {12, "CPPR", 48}, {13, "SCTN", 9},  {14, "PSTN", 8},  {15, "TEL2", 11},
    {16, "FAX2", 12}, {17, "CPS2", 13}, {18, "BSTA", 21}, {19, "BCTY", 20}, {20, "BSTR", 19},
    {21, "BZIP", 22}, {22, "BCTR", 23}, {23, "BWEB", 25}, {24, "OFCE", 26}, {25, "PRFS", 27},
    {26, "ASST", 28}, {27, "MNGR", 29}, {28, "BPGR", 24}, {29, "CPS1", 18}, {30, "TEL1", 16},
    {31, "FAX1", 17}, {32, "HSTA", 32}, {33, "HCTY", 31}, {34, "HSTR", 30}, {35, "HZIP", 33},
    {36, "HCTR", 34}, {37, "HWEB", 35}, {38, "DMAL", 14}, {39, "MAL1", 15}, {40, "SPUS", 36},
    {41, "GNDR", 37}, {42, "BRTH", 38}, {43, "ANIV", 39}, {44, "NCNM", 40}, {45, "CLDR", 41},
    {46, "MEM1", 42}, {47, "GRPS", 43},
};

constexpr int WriteOrder[] = {1,  2,  4,  5,  3,  6,  7,  11, 10, 9,  8,  12, 14, 13, 39, 38,
                              15, 16, 17, 20, 19, 18, 21, 22, 28, 23, 24, 25, 26, 27, 30, 31,
                              29, 34, 33, 32, 35, 36, 37, 40, 41, 42, 43, 44, 45, 46, 47};

QByteArrayList codesInOrder()
{
    QByteArrayList codes;
    for (const int field : WriteOrder)
        codes.append(Rows[field - 1].code);
    return codes;
}

/** A text of its own for every key. */
Contact fullContact()
{
    Contact contact;
    for (const Row &row : Rows) {
        if (row.key)
            contact.replace(row.key, QString::fromUtf8("値 %1").arg(row.key));
    }
    return contact;
}

} // namespace

class ContactMappingTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup() { WriteWatch::reset(); }

    void everyKeyHasItsField();
    void fieldsAreWrittenInOrder();
    void firstFailingWriteCancels_data();
    void firstFailingWriteCancels();
    void fullNameIsComposedAndNotRead();
    void groupsAreWrittenAndNotRead();
    void pronunciationIsComposed_data();
    void pronunciationIsComposed();
    void singleLineFieldsLoseTheirLineBreaks();
    void otherTextsKeepTheirLineBreaks();
    void lineBreaksAreStoredAsTheyAre();
    void editEmptiesWhatIsGone();
    void roundTripInTheTable();
    void roundTripInTheFile();
    void categoriesAreThoseOfTheAddressBook();
    void longTextsAreKept();

private:
    unsigned long add(const Contact &contact)
    {
        unsigned long card = 7; // not looked at
        const bool isAdded =
            KyPDataBase::addAddressbookEntry(db.get(), &card, contact, KyPDataBase::CategoriesNone);
        return isAdded ? card : 0;
    }
    Contact read(unsigned long card)
    {
        return KyPDataBase::toContact(db.get(), card, KyPDataBase::CategoriesNone);
    }

    std::unique_ptr<KyPDataBase> db;
};

void ContactMappingTest::init()
{
    db.reset();
    db = openAddressbook();
    QVERIFY(db->isOpened());
}

void ContactMappingTest::everyKeyHasItsField()
{
    for (const Row &row : Rows) {
        if (!row.key)
            continue;
        Contact contact;
        contact.replace(row.key, "text");
        const unsigned long card = add(contact);
        QVERIFY(card);
        for (const Row &other : Rows) {
            if (other.key)
                QCOMPARE(db->readField(other.field, card), QString(other.field == row.field ? "text" : ""));
        }
        QCOMPARE(db->itemName(row.field), QByteArray(row.code));
        const QString back = row.field == 47 ? QString() : QString("text");
        QCOMPARE(read(card).find(row.key), back);
    }
}

void ContactMappingTest::fieldsAreWrittenInOrder()
{
    Contact contact = fullContact();
    contact.setCategories({3});
    unsigned long card = 0;
    QVERIFY(KyPDataBase::addAddressbookEntry(db.get(), &card, contact, KyPDataBase::CategoriesPdtm));
    const QByteArrayList expected =
        QByteArrayList{"ATTR"} + codesInOrder() + QByteArrayList{"CTTM", "SYID", "MDTM", "CTGR", "MDTM"};
    QCOMPARE(WriteWatch::codes(), expected);
}

void ContactMappingTest::firstFailingWriteCancels_data()
{
    QTest::addColumn<int>("place");
    for (int place = 0; place < int(std::size(WriteOrder)); ++place)
        QTest::newRow(Rows[WriteOrder[place] - 1].code) << place;
}

void ContactMappingTest::firstFailingWriteCancels()
{
    QFETCH(int, place);
    const int before = db->count();
    WriteWatch::fail(Rows[WriteOrder[place] - 1].code);
    unsigned long card = 0;
    QVERIFY(!KyPDataBase::addAddressbookEntry(db.get(), &card, fullContact(), KyPDataBase::CategoriesPdtm));
    QCOMPARE(WriteWatch::codes(), QByteArrayList{"ATTR"} + codesInOrder().first(place + 1));
    QCOMPARE(card, 0ul);
    QCOMPARE(db->count(), before);
    WriteWatch::reset();
    QVERIFY(db->editNewCard()); // the edit is over
    db->cancelEditCard();
}

void ContactMappingTest::fullNameIsComposedAndNotRead()
{
    Contact contact;
    contact.replace(Contact::FirstName, "Ann");
    contact.replace(Contact::LastName, "Clark");
    const unsigned long card = add(contact);
    QCOMPARE(db->readField(1, card), QString("Ann Clark"));
    unsigned long changed = card;
    QVERIFY(db->startEditCard(card));
    QVERIFY(db->writeField(1, QString("somebody else")));
    QVERIFY(db->finishEditCard(&changed));
    QCOMPARE(read(card), contact);
}

void ContactMappingTest::groupsAreWrittenAndNotRead()
{
    Contact contact;
    contact.replace(Contact::Groups, "friends");
    const unsigned long card = add(contact);
    QCOMPARE(db->readField(47, card), QString("friends"));
    QVERIFY(read(card).find(Contact::Groups).isNull());
    unsigned long same = card;
    QVERIFY(KyPDataBase::editAddressbookEntry(db.get(), &same, read(card), KyPDataBase::CategoriesNone));
    QCOMPARE(db->readField(47, card), QString(""));
}

void ContactMappingTest::pronunciationIsComposed_data()
{
    QTest::addColumn<QString>("last");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("composed");
    QTest::newRow("both") << "やまだ"
                          << "たろう"
                          << "やまだ たろう";
    QTest::newRow("no last name: no blank") << ""
                                            << "たろう"
                                            << "たろう";
    QTest::newRow("no first name") << "やまだ"
                                   << ""
                                   << "やまだ ";
    QTest::newRow("neither") << ""
                             << ""
                             << "";
}

void ContactMappingTest::pronunciationIsComposed()
{
    QFETCH(QString, last);
    QFETCH(QString, first);
    QFETCH(QString, composed);
    Contact contact;
    contact.replace(Contact::LastNamePronunciation, last);
    contact.replace(Contact::FirstNamePronunciation, first);
    const unsigned long card = add(contact);
    QCOMPARE(db->readField(10, card), composed);
    QCOMPARE(read(card), contact);
}

void ContactMappingTest::singleLineFieldsLoseTheirLineBreaks()
{
    Contact contact;
    for (const Row &row : Rows) {
        if (row.key)
            contact.replace(row.key, "a\r\nb\nc\r\n\nd\re");
    }
    const Contact back = read(add(contact));
    const QList<int> kept = {25, 15, 41, 42};
    for (const Row &row : Rows) {
        if (row.key && !kept.contains(row.key) && row.key != Contact::Groups)
            QCOMPARE(back.find(row.key), QString("a b c  d\re"));
    }
}

void ContactMappingTest::otherTextsKeepTheirLineBreaks()
{
    Contact contact;
    const QString text("a\r\nb\nc");
    for (const int key : {Contact::BusinessWebPage, Contact::Emails, Contact::Children, Contact::Notes})
        contact.replace(key, text);
    const Contact back = read(add(contact));
    QCOMPARE(back, contact);
    QCOMPARE(back.emailList(), (QStringList{"a", "b", "c"}));
    QCOMPARE(back.childrenList(), (QStringList{"a", "b", "c"}));
}

void ContactMappingTest::lineBreaksAreStoredAsTheyAre()
{
    Contact contact;
    contact.replace(Contact::Title, "a\nb");
    QCOMPARE(db->readField(2, add(contact)), QString("a\nb"));
}

void ContactMappingTest::editEmptiesWhatIsGone()
{
    unsigned long card = add(fullContact());
    Contact contact;
    contact.replace(Contact::Company, "one text");
    QVERIFY(KyPDataBase::editAddressbookEntry(db.get(), &card, contact, KyPDataBase::CategoriesNone));
    QCOMPARE(read(card), contact);
    QCOMPARE(db->readField(47, card), QString(""));
}

void ContactMappingTest::roundTripInTheTable()
{
    Contact contact = fullContact();
    contact.replace(Contact::Groups, QString());
    contact.setCategories({tableCategory("beta"), tableCategory("alpha")});
    unsigned long card = 0;
    QVERIFY(KyPDataBase::addAddressbookEntry(db.get(), &card, contact, KyPDataBase::CategoriesPdtm));
    QCOMPARE(KyPDataBase::toContact(db.get(), card, KyPDataBase::CategoriesPdtm), contact);
    QCOMPARE(categoryNames(*db, card), (QStringList{"beta", "alpha"}));
}

void ContactMappingTest::roundTripInTheFile()
{
    Contact contact = fullContact();
    contact.replace(Contact::Groups, QString());
    contact.setCategories({fileCategory("Address Book", "delta"), fileCategory(QString(), "gamma")});
    unsigned long card = 0;
    QVERIFY(KyPDataBase::addAddressbookEntry(db.get(), &card, contact, KyPDataBase::CategoriesXml));
    QCOMPARE(KyPDataBase::toContact(db.get(), card, KyPDataBase::CategoriesXml), contact);
    QCOMPARE(categoryNames(*db, card), (QStringList{"delta", "gamma"}));
}

void ContactMappingTest::categoriesAreThoseOfTheAddressBook()
{
    Contact contact;
    contact.setCategories({fileCategory("Address Book", "ours"), fileCategory("Todo List", "theirs")});
    unsigned long card = 0;
    QVERIFY(KyPDataBase::addAddressbookEntry(db.get(), &card, contact, KyPDataBase::CategoriesXml));
    QCOMPARE(categoryNames(*db, card), QStringList{"ours"});
}

void ContactMappingTest::longTextsAreKept()
{
    Contact contact;
    contact.replace(Contact::Notes, QString(100000, u'長'));
    QCOMPARE(read(add(contact)), contact);
}

QTEST_MAIN(ContactMappingTest)
#include "contactmappingtest.moc"
