#include "addressfields.h"
#include "cardlist.h"
#include "contactspage.h"
#include "memospage.h"

#include "messagerobot.h"
#include "pagefixture.h"
#include "pdtm.h"

#include <QComboBox>
#include <QSignalSpy>
#include <QTextBrowser>

class CardSearchTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void everyFieldIsSearched_data();
    void everyFieldIsSearched();
    void typingShowsMatchesAfterAMoment();
    void enterSearchesAtOnce();
    void escapeShowsAllAgain();
    void noMatchIsSaid();
    void searchKeepsCategoryAndOrder();
    void orderChangedInASearchHoldsBehindIt();
    void categoryChangedInASearchKeepsIt();
    void editedCardEntersAndLeavesTheMatches();
    void longestTextFindsExactly();
    void longerTextIsNotTaken_data();
    void longerTextIsNotTaken();
    void halfTypedSearchCountsBeforeADeletion();
    void selectedCardStaysSelected();
    void textTypedWhileTheBoxIsAskedForHolds();
    void categoryChosenWhileTheBoxIsAskedForHolds();
    void manySearchesLeaveNoIndexes();
    void bigBoxIsSearchedInTime();

private:
    unsigned long add(const CardValues &values, const QList<int> &categories = {});
    QStringList found(const QString &text);
    void lendBox();
    uint32_t m_holder = 0;
    [[nodiscard]] QLineEdit *line() const { return m_page->findChild<QLineEdit *>("search"); }

    std::unique_ptr<CategoryTable> m_table;
    std::unique_ptr<ContactsPage> m_page;
};

void CardSearchTest::init()
{
    m_page.reset();
    m_table.reset();
    removeBoxes();
    m_table = std::make_unique<CategoryTable>();
    m_page = std::make_unique<ContactsPage>(m_table.get());
    m_page->resize(480, 640);
    QVERIFY(showActive(*m_page));
}

unsigned long CardSearchTest::add(const CardValues &values, const QList<int> &categories)
{
    return m_page->book()->save(0, values, categories);
}

QStringList CardSearchTest::found(const QString &text)
{
    m_page->search(text);
    return texts(*m_page, 0);
}

void CardSearchTest::everyFieldIsSearched_data()
{
    QTest::addColumn<int>("field");
    for (int field = AddressField::First; field <= AddressField::Last; ++field)
        QTest::addRow("field %d", field) << field;
}

void CardSearchTest::everyFieldIsSearched()
{
    QFETCH(int, field);
    const unsigned long card = add({{field, "before Needle behind"}});
    add({{field, "hay"}});
    m_page->search("needle");
    QCOMPARE(m_page->book()->shownCards(), QList<unsigned long>{card});
}

void CardSearchTest::typingShowsMatchesAfterAMoment()
{
    add({{AddressField::FullName, "Ann"}});
    add({{AddressField::FullName, "Anton"}});
    add({{AddressField::FullName, "Bob"}});
    QTest::keyClicks(line(), "an");
    QCOMPARE(texts(*m_page, 0).size(), 3);
    QTRY_COMPARE_WITH_TIMEOUT(texts(*m_page, 0).size(), 2, Patience);
    QTest::keyClicks(line(), "t");
    QTRY_COMPARE_WITH_TIMEOUT(texts(*m_page, 0), QStringList{"Anton"}, Patience);
    QTest::keyClick(line(), Qt::Key_Backspace);
    QTRY_COMPARE_WITH_TIMEOUT(texts(*m_page, 0).size(), 2, Patience);
}

void CardSearchTest::enterSearchesAtOnce()
{
    add({{AddressField::FullName, "Ann"}});
    add({{AddressField::FullName, "Bob"}});
    QTest::keyClicks(line(), "b");
    QTest::keyClick(line(), Qt::Key_Return);
    QCOMPARE(texts(*m_page, 0), QStringList{"Bob"});
}

void CardSearchTest::escapeShowsAllAgain()
{
    add({{AddressField::FullName, "Ann"}});
    add({{AddressField::FullName, "Bob"}});
    QCOMPARE(found("bob"), QStringList{"Bob"});
    line()->setFocus();
    QTest::keyClick(line(), Qt::Key_Escape);
    QCOMPARE(line()->text(), QString());
    QCOMPARE(texts(*m_page, 0).size(), 2);
}

void CardSearchTest::noMatchIsSaid()
{
    add({{AddressField::FullName, "Ann"}});
    QCOMPARE(found("xyz"), QStringList());
    QCOMPARE(state(*m_page), QString("No match"));
    QCOMPARE(m_page->findChild<CardList *>()->placeholder(), QString("No match"));
    QCOMPARE(m_page->findChild<QTextBrowser *>()->toPlainText(), QString());
    QCOMPARE(found("").size(), 1);
    QCOMPARE(state(*m_page), QString("1 contact"));
}

void CardSearchTest::searchKeepsCategoryAndOrder()
{
    const int club = m_table->add("Club");
    const auto contact = [&](const char *name, const char *company, const QList<int> &categories) {
        add({{AddressField::FullName, name},
             {AddressField::FullPronunciation, name},
             {AddressField::Company, company}},
            categories);
    };
    contact("Ann 1", "Z", {club});
    contact("Bob 2", "Y", {club});
    contact("Cid 1", "X", {club});
    contact("Dan 1", "W", {});
    clickHeader(*m_page, 1);
    m_page->showCategory(club);
    QCOMPARE(texts(*m_page, 0), (QStringList{"Cid 1", "Bob 2", "Ann 1"}));
    QCOMPARE(found("1"), (QStringList{"Cid 1", "Ann 1"}));
    QCOMPARE(found(""), (QStringList{"Cid 1", "Bob 2", "Ann 1"}));
    m_page->showCategory(0);
    QCOMPARE(texts(*m_page, 0), (QStringList{"Dan 1", "Cid 1", "Bob 2", "Ann 1"}));
}

void CardSearchTest::orderChangedInASearchHoldsBehindIt()
{
    const auto contact = [&](const char *name, const char *company) {
        add({{AddressField::FullName, name},
             {AddressField::FullPronunciation, name},
             {AddressField::Company, company}});
    };
    contact("Ann", "2 x");
    contact("Bob", "1 x");
    contact("Cid", "0");
    QCOMPARE(found("x"), (QStringList{"Ann", "Bob"}));
    clickHeader(*m_page, 1);
    QCOMPARE(texts(*m_page, 0), (QStringList{"Bob", "Ann"}));
    QCOMPARE(found(""), (QStringList{"Cid", "Bob", "Ann"}));
    clickHeader(*m_page, 1);
    QCOMPARE(found("x"), (QStringList{"Ann", "Bob"}));
}

void CardSearchTest::categoryChangedInASearchKeepsIt()
{
    const int club = m_table->add("Club");
    add({{AddressField::FullName, "Ann"}}, {club});
    add({{AddressField::FullName, "Anton"}});
    add({{AddressField::FullName, "Bob"}}, {club});
    QCOMPARE(found("an").size(), 2);
    m_page->showCategory(club);
    QCOMPARE(texts(*m_page, 0), QStringList{"Ann"});
    m_page->showCategory(UnfiledCategoryId);
    QCOMPARE(texts(*m_page, 0), QStringList{"Anton"});
    m_page->showCategory(0);
    QCOMPARE(texts(*m_page, 0).size(), 2);
    QCOMPARE(found("").size(), 3);
}

void CardSearchTest::editedCardEntersAndLeavesTheMatches()
{
    const unsigned long ann = add({{AddressField::FullName, "Ann"}});
    const unsigned long bob = add({{AddressField::FullName, "Bob"}});
    QCOMPARE(found("ann"), QStringList{"Ann"});
    m_page->book()->save(bob, {{AddressField::Notes, "friend of Ann"}});
    QCOMPARE(texts(*m_page, 0).size(), 2);
    m_page->book()->save(ann, {{AddressField::FullName, "Eve"}});
    QCOMPARE(texts(*m_page, 0), QStringList{"Bob"});
}

void CardSearchTest::longestTextFindsExactly()
{
    const QString longest = QString(14, QChar(0x3042)); // three bytes each
    QCOMPARE(longest.toUtf8().size(), Book::MaximumSearch);
    add({{AddressField::FullName, longest}});
    add({{AddressField::FullName, longest.chopped(1) + "x"}});
    QCOMPARE(found(longest), QStringList{longest});
    QCOMPARE(line()->text(), longest);
}

void CardSearchTest::longerTextIsNotTaken_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("taken");
    QTest::newRow("ASCII") << QString(43, 'x') << QString(42, 'x');
    QTest::newRow("cut between characters") << QString(41, 'x') + QString::fromUtf8("あ") << QString(41, 'x');
    QTest::newRow("cut before a character of two halves")
        << QString(40, 'x') + QString::fromUtf8("𠮷") << QString(40, 'x');
}

void CardSearchTest::longerTextIsNotTaken()
{
    QFETCH(QString, text);
    line()->insert(text);
    QTEST(line()->text(), "taken");
}

void CardSearchTest::halfTypedSearchCountsBeforeADeletion()
{
    for (const char *name : {"Ann", "Bob", "Bobby"})
        add({{AddressField::FullName, name}});
    QTest::keyClicks(line(), "bob");
    MessageRobot robot({QMessageBox::Yes});
    m_page->deleteShown();
    QVERIFY2(robot.boxes().value(0).text.contains("2 contacts"), qPrintable(robot.boxes().value(0).text));
    QCOMPARE(found(""), QStringList{"Ann"});
}

void CardSearchTest::selectedCardStaysSelected()
{
    for (const char *name : {"Ann", "Bob", "Bobby"})
        add({{AddressField::FullName, name}, {AddressField::FullPronunciation, name}});
    m_page->selectRow(2);
    found("bob");
    QCOMPARE(m_page->findChild<QTreeView *>()->currentIndex().row(), 1);
    found("");
    QCOMPARE(m_page->findChild<QTreeView *>()->currentIndex().row(), 2);
}

/* To an application that gives it back while it is asked for. */
void CardSearchTest::lendBox()
{
    tellAll("closeFile(QString,QString)");
    QTRY_VERIFY_WITH_TIMEOUT(!m_page->book()->isAvailable(), Patience);
    m_holder = _BoxOpenRwMode("F0:KYADRS.BOX", 0);
    QVERIFY(m_holder != 0);
}

/* Events are handled while the box is asked for. */
void CardSearchTest::textTypedWhileTheBoxIsAskedForHolds()
{
    add({{AddressField::FullName, "Ann"}});
    add({{AddressField::FullName, "Bob"}});
    lendBox();
    bool wasInside = false;
    QTimer::singleShot(0, this, [&] {
        m_page->search("Bob");
        wasInside = true;
        _BoxClose(m_holder);
    });
    m_page->search("Ann");
    QTRY_VERIFY_WITH_TIMEOUT(wasInside && m_page->book()->isAvailable(), Patience);
    QCOMPARE(m_page->book()->view().search, line()->text());
    QTRY_COMPARE_WITH_TIMEOUT(texts(*m_page, 0), QStringList{"Bob"}, Patience);
}

void CardSearchTest::categoryChosenWhileTheBoxIsAskedForHolds()
{
    const int club = m_table->add("Club");
    const int work = m_table->add("Work");
    add({{AddressField::FullName, "Ann"}}, {club});
    add({{AddressField::FullName, "Bob"}}, {work});
    lendBox();
    bool wasInside = false;
    QTimer::singleShot(0, this, [&] {
        m_page->showCategory(work);
        wasInside = true;
        _BoxClose(m_holder);
    });
    m_page->showCategory(club);
    QTRY_VERIFY_WITH_TIMEOUT(wasInside && m_page->book()->isAvailable(), Patience);
    QCOMPARE(chooser(*m_page)->currentText(), QString("Work"));
    QTRY_COMPARE_WITH_TIMEOUT(texts(*m_page, 0), QStringList{"Bob"}, Patience);
}

void CardSearchTest::manySearchesLeaveNoIndexes()
{
    const int club = m_table->add("Club");
    add({{AddressField::FullName, "Ann"}}, {club});
    const QDir boxes(QDir::homePath() + QLatin1String("/Applications/dtm"));
    const auto indexes = [&] { return boxes.entryList({"ppin*"}, QDir::Files).size(); };
    for (int i = 0; i < 30; ++i) {
        m_page->showCategory(i % 2 == 0 ? club : UnfiledCategoryId);
        QCOMPARE(found(i % 2 == 0 ? "a" : "").size(), i % 2 == 0 ? 1 : 0);
    }
    m_page->showCategory(0);
    QCOMPARE(found(""), QStringList{"Ann"});
    QCOMPARE(indexes(), 0);
}

/* Three seconds are far more than it takes: a search that costs a read of every card on its own would need
 * more. */
void CardSearchTest::bigBoxIsSearchedInTime()
{
    QList<Card> cards;
    for (int i = 0; i < 20000; ++i)
        cards.append({{{AddressField::FullName, QString::number(i)}}, {}});
    QVERIFY(m_page->book()->addAll(cards) != 0);
    QElapsedTimer timer;
    timer.start();
    for (const char *text : {"1", "19", "199", "1999", "19999"})
        QVERIFY(!found(text).isEmpty());
    QVERIFY2(timer.elapsed() < 3000, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(found("19999"), QStringList{"19999"});
}

QTEST_MAIN(CardSearchTest)
#include "cardsearchtest.moc"
