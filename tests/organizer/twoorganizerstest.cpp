#include "categorytable.h"
#include "contactspage.h"
#include "mainwindow.h"
#include "memospage.h"
#include "taskspage.h"

#include "addressfields.h"
#include "childprocess.h"
#include "pagefixture.h"

#include "qpeapplication.h"

#include <QComboBox>
#include <QTemporaryDir>

namespace {

/* Another Organizer. A line of its input is a command and an argument; it answers each with a line. */
class OtherOrganizer
{
public:
    OtherOrganizer() { m_window.show(); }

    void obey(const QByteArray &line)
    {
        const QString command = QString::fromUtf8(line).section(u' ', 0, 0);
        const QString argument = QString::fromUtf8(line).section(u' ', 1);
        ChildProcess::say(answer(command, argument).toUtf8());
    }

private:
    QString answer(const QString &command, const QString &argument)
    {
        ContactsPage &page = *m_window.contacts();
        CategoryTable &table = *m_window.categories();
        if (command == "ask")
            return page.book()->ask() ? "ours" : "not ours";
        if (command == "add")
            return page.book()->save(0, values(argument)) != 0 ? "done" : "failed";
        if (command == "annotate") // the card of the first row
            return page.book()->save(page.book()->cardAt(0), {{AddressField::Notes, argument}}) != 0
                       ? "done"
                       : "failed";
        if (command == "category")
            page.showCategory(table.id(argument));
        else if (command == "search")
            page.search(argument);
        else if (command == "order")
            page.book()->setOrder(AddressField::Company, false);
        else if (command == "makecategory")
            return table.add(argument) != 0 ? "done" : "failed";
        else if (command == "renamecategory")
            return renameCategory(argument.section(u'/', 0, 0), argument.section(u'/', 1)) ? "done"
                                                                                           : "failed";
        else if (command == "removecategory")
            return KyCategories().removeCategory(argument) ? "done" : "failed";
        return state(page) + ": " + texts(page, 0).join(u' ');
    }

    static CardValues values(const QString &name)
    {
        return {{AddressField::FullName, name}, {AddressField::FullPronunciation, name}};
    }

    MainWindow m_window;
};

int otherOrganizer(int argc, char **argv)
{
    QPEApplication application(argc, argv, "second");
    OtherOrganizer organizer;
    ChildInput input([&](const QByteArray &line) { organizer.obey(line); });
    ChildProcess::say("ready");
    return QPEApplication::exec();
}

} // namespace

class TwoOrganizersTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void otherTakesTheBoxAndThisOneTakesItBack();
    void searchAndCategoryAndOrderHoldBehindALoan();
    void otherViewsDoNotTouchThisOne();
    void categoryViewIsRightAfterTheOtherReplacedItsIndex();
    void quickLoanIsSeen();
    void categoryMadeInTheOtherIsSeenHere();
    void categoryRenamedInTheOtherIsSeenHere();
    void categoryRemovedInTheOtherLeavesTheCardsHere();
    void killedHolderLeavesTheBox();
    void manyLoansLoseNothing();

private:
    /* What the other one answers to a command. */
    QString tell(const QByteArray &command);
    unsigned long add(const QString &name, const CardValues &more = {}, const QList<int> &categories = {});
    [[nodiscard]] ContactsPage &contacts() const { return *m_window->contacts(); }
    void startOther();

    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<ChildProcess> m_other;
};

void TwoOrganizersTest::init()
{
    m_other.reset();
    m_window.reset();
    removeBoxes();
    m_window = std::make_unique<MainWindow>();
    m_window->show();
}

void TwoOrganizersTest::startOther()
{
    m_other = std::make_unique<ChildProcess>(QStringList());
    QCOMPARE(m_other->readLine(30000), QByteArray("ready"));
}

QString TwoOrganizersTest::tell(const QByteArray &command)
{
    m_other->write(command);
    return QString::fromUtf8(m_other->readLine(30000));
}

unsigned long TwoOrganizersTest::add(const QString &name, const CardValues &more,
                                     const QList<int> &categories)
{
    CardValues values = more;
    values.insert(AddressField::FullName, name);
    values.insert(AddressField::FullPronunciation, name);
    return contacts().book()->save(0, values, categories);
}

void TwoOrganizersTest::otherTakesTheBoxAndThisOneTakesItBack()
{
    add("Ann");
    startOther();
    QTRY_VERIFY_WITH_TIMEOUT(!contacts().book()->isAvailable(), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(state(contacts()), QString("In use by another application"), Patience);
    QCOMPARE(texts(contacts(), 0), QStringList{"Ann"});
    QVERIFY(!contacts().findChild<QTreeView *>()->isEnabled());
    QTRY_COMPARE_WITH_TIMEOUT(tell("show"), QString("1 contact: Ann"), Patience);
    QCOMPARE(tell("add Bob"), QString("done"));

    QTRY_VERIFY_WITH_TIMEOUT(contacts().book()->ask(), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(texts(contacts(), 0), (QStringList{"Ann", "Bob"}), Patience);
    QVERIFY(contacts().findChild<QTreeView *>()->isEnabled());
    QTRY_COMPARE_WITH_TIMEOUT(tell("show").section(u':', 0, 0), QString("In use by another application"),
                              Patience);
    QTRY_COMPARE_WITH_TIMEOUT(tell("ask"), QString("ours"), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(tell("show"), QString("2 contacts: Ann Bob"), Patience);
}

void TwoOrganizersTest::searchAndCategoryAndOrderHoldBehindALoan()
{
    const int club = m_window->categories()->add("Club");
    add("Ann", {{AddressField::Company, "1 x"}}, {club});
    add("Bob", {{AddressField::Company, "2 x"}}, {club});
    add("Cid", {{AddressField::Company, "3"}}, {club});
    add("Dan", {{AddressField::Company, "4 x"}});
    contacts().book()->setOrder(AddressField::Company, false);
    contacts().showCategory(club);
    contacts().search("x");
    QCOMPARE(texts(contacts(), 0), (QStringList{"Bob", "Ann"}));

    startOther();
    QTRY_VERIFY_WITH_TIMEOUT(!contacts().book()->isAvailable(), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(tell("show"), QString("4 contacts: Ann Bob Cid Dan"), Patience);
    QCOMPARE(tell("search 3"), QString("1 contact: Cid"));
    QCOMPARE(tell("annotate x"), QString("done"));
    QTRY_VERIFY_WITH_TIMEOUT(contacts().book()->ask(), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(texts(contacts(), 0), (QStringList{"Cid", "Bob", "Ann"}), Patience);
    contacts().search("");
    QCOMPARE(texts(contacts(), 0), (QStringList{"Cid", "Bob", "Ann"}));
    contacts().showCategory(0);
    QCOMPARE(texts(contacts(), 0), (QStringList{"Dan", "Cid", "Bob", "Ann"}));
}

/* Both make temporary indexes of the same names in one folder. */
void TwoOrganizersTest::otherViewsDoNotTouchThisOne()
{
    const int club = m_window->categories()->add("Club");
    m_window->categories()->add("Work");
    for (int i = 0; i < 20; ++i)
        add(QString::number(10 + i), {{AddressField::Company, QString::number(i % 7)}},
            i % 2 == 0 ? QList<int>{club} : QList<int>());
    startOther();
    for (int round = 0; round < 6; ++round) {
        QTRY_VERIFY_WITH_TIMEOUT(contacts().book()->ask(), Patience);
        contacts().book()->setOrder(round % 2 == 0 ? AddressField::Company : 0, round % 3 == 0);
        contacts().showCategory(club);
        contacts().search("1");
        const QStringList before = texts(contacts(), 0);
        QCOMPARE(before.size(), 5); // 10 to 18

        QTRY_COMPARE_WITH_TIMEOUT(tell("ask"), QString("ours"), Patience);
        tell("category Club");
        QCOMPARE(tell("search 2").section(u':', 0, 0), QString("6 contacts")); // 12 and 20 to 28
        tell("order");
        tell("category Work");
        QCOMPARE(tell("search 1").section(u':', 0, 0), QString("No match"));
        tell("category All");
        QCOMPARE(tell("search 29").section(u':', 0, 0), QString("1 contact"));

        QTRY_VERIFY_WITH_TIMEOUT(contacts().book()->ask(), Patience);
        QTRY_COMPARE_WITH_TIMEOUT(texts(contacts(), 0), before, Patience);
    }
}

/* The other one takes over the index of this view, deletes it, and makes one of a search in its place. */
void TwoOrganizersTest::categoryViewIsRightAfterTheOtherReplacedItsIndex()
{
    const int club = m_window->categories()->add("Club");
    add("Ann", {}, {club});
    add("Bob", {}, {club});
    add("Cid");
    contacts().showCategory(club);
    startOther();
    QTRY_COMPARE_WITH_TIMEOUT(tell("ask"), QString("ours"), Patience);
    QCOMPARE(tell("category Club"), QString("2 contacts: Ann Bob"));
    tell("category All");
    QCOMPARE(tell("search Cid"), QString("1 contact: Cid"));
    QTRY_VERIFY_WITH_TIMEOUT(contacts().book()->ask(), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(texts(contacts(), 0), (QStringList{"Ann", "Bob"}), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(tell("ask"), QString("ours"), Patience);
    QCOMPARE(tell("show"), QString("1 contact: Cid"));
}

/* The box is away and back before anybody looks. */
void TwoOrganizersTest::quickLoanIsSeen()
{
    add("Ann");
    contacts().search("ann");
    startOther();
    QTRY_COMPARE_WITH_TIMEOUT(tell("ask"), QString("ours"), Patience);
    QCOMPARE(tell("add Anna"), QString("done"));
    QCOMPARE(m_other->finish(), 0);
    QTRY_COMPARE_WITH_TIMEOUT(texts(contacts(), 0), (QStringList{"Ann", "Anna"}), Patience);
}

void TwoOrganizersTest::categoryMadeInTheOtherIsSeenHere()
{
    startOther();
    QCOMPARE(tell("makecategory Club"), QString("done"));
    for (const CardsPage *page :
         {static_cast<CardsPage *>(m_window->contacts()), static_cast<CardsPage *>(m_window->tasks()),
          static_cast<CardsPage *>(m_window->memos())})
        QTRY_VERIFY_WITH_TIMEOUT(chooser(*page)->findText("Club") >= 0, Patience);
    QVERIFY(m_window->categories()->add("Work") != 0);
    QTRY_VERIFY_WITH_TIMEOUT(tell("category Work").startsWith("0 contacts"), Patience);
}

void TwoOrganizersTest::categoryRenamedInTheOtherIsSeenHere()
{
    const int club = m_window->categories()->add("Club");
    add("Ann", {}, {club});
    contacts().showCategory(club);
    startOther();
    QCOMPARE(tell("renamecategory Club/Society"), QString("done"));
    QTRY_COMPARE_WITH_TIMEOUT(chooser(contacts())->currentText(), QString("Society"), Patience);
    QTRY_VERIFY_WITH_TIMEOUT(contacts().book()->ask(), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(texts(contacts(), 0), QStringList{"Ann"}, Patience);
}

void TwoOrganizersTest::categoryRemovedInTheOtherLeavesTheCardsHere()
{
    const int club = m_window->categories()->add("Club");
    const int work = m_window->categories()->add("Work");
    const unsigned long ann = add("Ann", {}, {club, work});
    startOther();
    QTRY_VERIFY_WITH_TIMEOUT(contacts().book()->ask(), Patience);
    contacts().showCategory(club);
    contacts().search("a");
    QTRY_COMPARE_WITH_TIMEOUT(texts(contacts(), 0), QStringList{"Ann"}, Patience);
    QCOMPARE(tell("removecategory Club"), QString("done"));
    QTRY_COMPARE_WITH_TIMEOUT(contacts().book()->view().category, 0, Patience);
    QTRY_VERIFY_WITH_TIMEOUT(contacts().book()->ask(), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(contacts().book()->categories(ann), QList<int>{work}, Patience);
    QCOMPARE(texts(contacts(), 0), QStringList{"Ann"});
}

void TwoOrganizersTest::killedHolderLeavesTheBox()
{
    add("Ann");
    startOther();
    QTRY_COMPARE_WITH_TIMEOUT(tell("ask"), QString("ours"), Patience);
    QTRY_VERIFY_WITH_TIMEOUT(!contacts().book()->isAvailable(), Patience);
    m_other->kill();
    QTRY_VERIFY_WITH_TIMEOUT(contacts().book()->ask(), Patience);
    QCOMPARE(texts(contacts(), 0), QStringList{"Ann"});
}

void TwoOrganizersTest::manyLoansLoseNothing()
{
    constexpr int Rounds = 30;
    startOther();
    for (int i = 0; i < Rounds; ++i) {
        QTRY_VERIFY_WITH_TIMEOUT(contacts().book()->ask(), Patience);
        QVERIFY(add(QString("a%1").arg(i)) != 0);
        QTRY_COMPARE_WITH_TIMEOUT(tell("ask"), QString("ours"), Patience);
        QCOMPARE(tell("add b" + QByteArray::number(i)), QString("done"));
    }
    QTRY_VERIFY_WITH_TIMEOUT(contacts().book()->ask(), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(contacts().book()->count(), 2 * Rounds, Patience);
    contacts().search("b");
    QCOMPARE(contacts().book()->count(), Rounds);
}

KY_TEST_MAIN_WITH_CHILD(TwoOrganizersTest, otherOrganizer)
#include "twoorganizerstest.moc"
