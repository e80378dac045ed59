#include "contact.h"

#include <QTest>

class ContactTest : public QObject
{
    Q_OBJECT
private slots:
    void keysHaveTheirNumbers_data();
    void keysHaveTheirNumbers();
    void emptyHoldsNothing();
    void emptyTextTakesTheKeyAway();
    void keysDontTouchEachOther();
    void copiesAreIndependent();
    void equalityLooksAtEverything();
    void emailsArePartedAnyWay_data();
    void emailsArePartedAnyWay();
    void childrenArePartedAnyWay_data();
    void childrenArePartedAnyWay();
    void fullName_data();
    void fullName();
};

void ContactTest::keysHaveTheirNumbers_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("number");
    const auto row = [](const char *name, Contact::Key key, int number) {
        QTest::newRow(name) << int(key) << number;
    };
    row("title", Contact::Title, 2);
    row("first name", Contact::FirstName, 3);
    row("middle name", Contact::MiddleName, 4);
    row("last name", Contact::LastName, 5);
    row("suffix", Contact::Suffix, 6);
    row("file as", Contact::FileAs, 7);
    row("job title", Contact::JobTitle, 8);
    row("department", Contact::Department, 9);
    row("company", Contact::Company, 10);
    row("business phone", Contact::BusinessPhone, 11);
    row("business fax", Contact::BusinessFax, 12);
    row("business mobile", Contact::BusinessMobile, 13);
    row("default address", Contact::DefaultEmail, 14);
    row("addresses", Contact::Emails, 15);
    row("home phone", Contact::HomePhone, 16);
    row("home fax", Contact::HomeFax, 17);
    row("mobile", Contact::HomeMobile, 18);
    row("business street", Contact::BusinessStreet, 19);
    row("business city", Contact::BusinessCity, 20);
    row("business state", Contact::BusinessState, 21);
    row("business zip", Contact::BusinessZip, 22);
    row("business country", Contact::BusinessCountry, 23);
    row("pager", Contact::BusinessPager, 24);
    row("business web page", Contact::BusinessWebPage, 25);
    row("office", Contact::Office, 26);
    row("profession", Contact::Profession, 27);
    row("assistant", Contact::Assistant, 28);
    row("manager", Contact::Manager, 29);
    row("home street", Contact::HomeStreet, 30);
    row("home city", Contact::HomeCity, 31);
    row("home state", Contact::HomeState, 32);
    row("home zip", Contact::HomeZip, 33);
    row("home country", Contact::HomeCountry, 34);
    row("home web page", Contact::HomeWebPage, 35);
    row("spouse", Contact::Spouse, 36);
    row("gender", Contact::Gender, 37);
    row("birthday", Contact::Birthday, 38);
    row("anniversary", Contact::Anniversary, 39);
    row("nickname", Contact::Nickname, 40);
    row("children", Contact::Children, 41);
    row("notes", Contact::Notes, 42);
    row("groups", Contact::Groups, 43);
    row("first name pronunciation", Contact::FirstNamePronunciation, 46);
    row("last name pronunciation", Contact::LastNamePronunciation, 47);
    row("company pronunciation", Contact::CompanyPronunciation, 48);
}

void ContactTest::keysHaveTheirNumbers()
{
    QFETCH(int, key);
    QFETCH(int, number);
    QCOMPARE(key, number);
    Contact contact;
    contact.replace(key, "text");
    QCOMPARE(contact.find(number), QString("text"));
}

void ContactTest::emptyHoldsNothing()
{
    const Contact contact;
    for (int key = 0; key <= 60; ++key)
        QVERIFY(contact.find(key).isNull());
    QVERIFY(contact.emailList().isEmpty());
    QVERIFY(contact.childrenList().isEmpty());
    QVERIFY(contact.categories().isEmpty());
    QVERIFY(contact.fullName().isEmpty());
}

void ContactTest::emptyTextTakesTheKeyAway()
{
    Contact contact;
    contact.replace(Contact::Notes, "text");
    contact.replace(Contact::Notes, "");
    QVERIFY(contact.find(Contact::Notes).isNull());
    QCOMPARE(contact, Contact());
}

void ContactTest::keysDontTouchEachOther()
{
    Contact contact;
    for (int key = 2; key <= 48; ++key)
        contact.replace(key, QString::number(key));
    contact.replace(Contact::Company, "changed");
    for (int key = 2; key <= 48; ++key)
        QCOMPARE(contact.find(key), key == Contact::Company ? QString("changed") : QString::number(key));
}

void ContactTest::copiesAreIndependent()
{
    Contact contact;
    contact.replace(Contact::LastName, "before");
    contact.setCategories({1});
    Contact copy = contact;
    copy.replace(Contact::LastName, "after");
    copy.setCategories({2, 3});
    QCOMPARE(contact.find(Contact::LastName), QString("before"));
    QCOMPARE(contact.categories(), QList<int>{1});
    contact = copy;
    copy.replace(Contact::LastName, "later");
    QCOMPARE(contact.find(Contact::LastName), QString("after"));
    QCOMPARE(contact.categories(), (QList<int>{2, 3}));
}

void ContactTest::equalityLooksAtEverything()
{
    Contact contact;
    contact.replace(Contact::LastName, "name");
    contact.setCategories({1, 2});
    Contact other;
    other.setCategories({1, 2});
    QVERIFY(!(contact == other));
    other.replace(Contact::LastName, "name");
    QVERIFY(contact == other);
    other.replace(Contact::Nickname, "more");
    QVERIFY(!(contact == other));
    other.replace(Contact::Nickname, QString());
    QVERIFY(contact == other);
    other.setCategories({2, 1});
    QVERIFY(!(contact == other));
}

void ContactTest::emailsArePartedAnyWay_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("addresses");
    QTest::newRow("none") << QString() << QStringList();
    QTest::newRow("only blanks") << " \n, ;" << QStringList();
    QTest::newRow("one") << "a@example.jp" << QStringList{"a@example.jp"};
    QTest::newRow("blank") << "a@example.jp b@example.jp" << QStringList{"a@example.jp", "b@example.jp"};
    QTest::newRow("lines") << "a@x.jp\r\nb@x.jp\nc@x.jp" << QStringList{"a@x.jp", "b@x.jp", "c@x.jp"};
    QTest::newRow("commas") << " a@x.jp, b@x.jp;c@x.jp " << QStringList{"a@x.jp", "b@x.jp", "c@x.jp"};
}

void ContactTest::emailsArePartedAnyWay()
{
    QFETCH(QString, text);
    QFETCH(QStringList, addresses);
    Contact contact;
    contact.replace(Contact::DefaultEmail, "default@example.jp");
    contact.setEmails(text);
    QCOMPARE(contact.emailList(), addresses);
    QCOMPARE(contact.find(Contact::Emails), text);
    QCOMPARE(contact.find(Contact::DefaultEmail), QString("default@example.jp"));
}

void ContactTest::childrenArePartedAnyWay_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("none") << QString() << QStringList();
    QTest::newRow("only line breaks") << "\r\n\n" << QStringList();
    QTest::newRow("one with a blank") << "Ichiro Yamada" << QStringList{"Ichiro Yamada"};
    QTest::newRow("lines") << "Ichiro Yamada\nJiro" << QStringList{"Ichiro Yamada", "Jiro"};
    QTest::newRow("commas") << "Ichiro, Jiro;Saburo" << QStringList{"Ichiro", "Jiro", "Saburo"};
    QTest::newRow("other line ends") << " Ichiro \r\n\r\n Jiro\r\n" << QStringList{"Ichiro", "Jiro"};
}

void ContactTest::childrenArePartedAnyWay()
{
    QFETCH(QString, text);
    QFETCH(QStringList, names);
    Contact contact;
    contact.setChildren(text);
    QCOMPARE(contact.childrenList(), names);
    QCOMPARE(contact.find(Contact::Children), text);
}

void ContactTest::fullName_data()
{
    using Texts = QMap<int, QString>;
    QTest::addColumn<Texts>("texts");
    QTest::addColumn<QString>("name");
    const auto row = [](const char *tag, const Texts &texts, const char *name) {
        QTest::newRow(tag) << texts << QString(name);
    };
    row("nothing", {}, "");
    row("all parts",
        {{Contact::Title, "Dr."},
         {Contact::FirstName, "Ann"},
         {Contact::MiddleName, "B."},
         {Contact::LastName, "Clark"},
         {Contact::Suffix, "Jr."}},
        "Dr. Ann B. Clark Jr.");
    row("last name alone", {{Contact::LastName, "Clark"}}, "Clark");
    row("East Asian", {{Contact::Title, "Dr."}, {Contact::FirstName, "太郎"}, {Contact::LastName, "山田"}},
        "山田 太郎");
    row("East Asian first name", {{Contact::FirstName, "ハナ"}, {Contact::LastName, "Smith"}}, "Smith ハナ");
    row("outside the first plane", {{Contact::FirstName, "太郎"}, {Contact::LastName, "𠮷田"}}, "𠮷田 太郎");
    row("nickname", {{Contact::Nickname, "Bob"}, {Contact::Company, "Acme"}}, "Bob");
    row("company", {{Contact::Company, "Acme"}, {Contact::DefaultEmail, "a@x.jp"}}, "Acme");
    row("default address", {{Contact::DefaultEmail, "a@x.jp"}, {Contact::HomeMobile, "090"}}, "a@x.jp");
    row("mobile", {{Contact::HomeMobile, "090"}}, "090");
    row("name before nickname", {{Contact::Nickname, "Bob"}, {Contact::FirstName, "Robert"}}, "Robert");
}

void ContactTest::fullName()
{
    using Texts = QMap<int, QString>;
    QFETCH(Texts, texts);
    QFETCH(QString, name);
    Contact contact;
    for (auto text = texts.cbegin(); text != texts.cend(); ++text)
        contact.replace(text.key(), text.value());
    QCOMPARE(contact.fullName(), name);
}

QTEST_GUILESS_MAIN(ContactTest)
#include "contacttest.moc"
