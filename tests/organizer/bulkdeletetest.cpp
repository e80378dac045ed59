#include "addressfields.h"
#include "contactspage.h"

#include "messagerobot.h"
#include "pagefixture.h"
#include "pdtm.h"

#include <dlfcn.h>

namespace {

bool isFull = false;

} // namespace

extern "C" int DtmIsEnoughStorageForOperation(uint32_t handle, int operation)
{
    const auto next = reinterpret_cast<decltype(&DtmIsEnoughStorageForOperation)>(
        dlsym(RTLD_NEXT, "DtmIsEnoughStorageForOperation"));
    return isFull ? 0 : next(handle, operation);
}

class BulkDeleteTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup() { isFull = false; }
    void questionNamesTheNumber_data();
    void questionNamesTheNumber();
    void noDeletesNothing();
    void onlyTheShownCategoryGoes();
    void wholeBoxIsNamed();
    void undoBringsAllBackWithTheirCategories();
    void undoLeavesOutARemovedCategory();
    void undoOfOneBringsItsCategoriesBack();
    void undoIsForTheLastDeletionOnly();
    void deletionWithoutRoomKeepsTheCards();
    void changedListIsNotDeleted();
    void emptyListHasNothingToDelete();

private:
    unsigned long add(const char *name, const QList<int> &categories = {});

    std::unique_ptr<CategoryTable> m_table;
    std::unique_ptr<ContactsPage> m_page;
    int m_club = 0;
    int m_work = 0;
};

void BulkDeleteTest::init()
{
    m_page.reset();
    m_table.reset();
    removeBoxes();
    m_table = std::make_unique<CategoryTable>();
    m_page = std::make_unique<ContactsPage>(m_table.get());
    m_club = m_table->add("Club");
    m_work = m_table->add("Work");
}

unsigned long BulkDeleteTest::add(const char *name, const QList<int> &categories)
{
    return m_page->book()->save(0, {{AddressField::FullName, name}, {AddressField::FullPronunciation, name}},
                                categories);
}

void BulkDeleteTest::questionNamesTheNumber_data()
{
    QTest::addColumn<int>("cards");
    QTest::addColumn<QString>("question");
    QTest::newRow("one") << 1 << "Delete 1 contact?";
    QTest::newRow("twelve") << 12 << "Delete 12 contacts?";
}

void BulkDeleteTest::questionNamesTheNumber()
{
    QFETCH(int, cards);
    QFETCH(QString, question);
    add("other");
    for (int i = 0; i < cards; ++i)
        add("in the club", {m_club});
    m_page->showCategory(m_club);
    MessageRobot robot({QMessageBox::Yes});
    m_page->deleteShown();
    QCOMPARE(robot.boxes().value(0).text, question);
    QCOMPARE(robot.boxes().value(0).defaultButton, QMessageBox::No);
    QCOMPARE(m_page->book()->count(), 0);
    QCOMPARE(m_page->book()->allCards().size(), 1);
}

void BulkDeleteTest::noDeletesNothing()
{
    add("Ann");
    add("Bob");
    MessageRobot robot({QMessageBox::No});
    m_page->deleteShown();
    QCOMPARE(robot.boxes().size(), 1);
    QCOMPARE(m_page->book()->count(), 2);
}

void BulkDeleteTest::onlyTheShownCategoryGoes()
{
    add("Ann", {m_club});
    add("Bob", {m_work});
    add("Cid", {m_club, m_work});
    add("Dan");
    m_page->showCategory(m_club);
    MessageRobot robot({QMessageBox::Yes});
    m_page->deleteShown();
    m_page->showCategory(0);
    QCOMPARE(texts(*m_page, 0), (QStringList{"Bob", "Dan"}));
}

void BulkDeleteTest::wholeBoxIsNamed()
{
    add("Ann");
    add("Bob");
    MessageRobot robot({QMessageBox::Yes});
    m_page->deleteShown();
    QCOMPARE(robot.boxes().value(0).text, QString("Delete 2 contacts?\nThat is all there is."));
    QCOMPARE(m_page->book()->count(), 0);
}

void BulkDeleteTest::undoBringsAllBackWithTheirCategories()
{
    add("Ann", {m_club});
    add("Bob", {m_club, m_work});
    add("Cid");
    MessageRobot robot({QMessageBox::Yes});
    m_page->deleteShown();
    QCOMPARE(m_page->book()->count(), 0);
    m_page->undoDelete();
    QCOMPARE(texts(*m_page, 0), (QStringList{"Ann", "Bob", "Cid"}));
    QCOMPARE(m_page->book()->categories(m_page->book()->cardAt(1)), (QList<int>{m_club, m_work}));
    m_page->showCategory(m_club);
    QCOMPARE(texts(*m_page, 0), (QStringList{"Ann", "Bob"}));
    m_page->showCategory(UnfiledCategoryId);
    QCOMPARE(texts(*m_page, 0), QStringList{"Cid"});
    m_page->undoDelete();
    QCOMPARE(m_page->book()->allCards().size(), 3);
}

void BulkDeleteTest::undoLeavesOutARemovedCategory()
{
    add("Ann", {m_club, m_work});
    MessageRobot robot({QMessageBox::Yes});
    m_page->deleteShown();
    QVERIFY(KyCategories().removeCategory("Club"));
    QTRY_COMPARE_WITH_TIMEOUT(m_table->id("Club"), 0, Patience);
    m_page->undoDelete();
    QCOMPARE(m_page->book()->categories(m_page->book()->cardAt(0)), QList<int>{m_work});
}

void BulkDeleteTest::undoOfOneBringsItsCategoriesBack()
{
    add("Ann", {m_work, m_club});
    MessageRobot robot({QMessageBox::Yes});
    m_page->deleteCard();
    QCOMPARE(m_page->book()->count(), 0);
    m_page->undoDelete();
    QCOMPARE(m_page->book()->categories(m_page->book()->cardAt(0)), (QList<int>{m_work, m_club}));
}

void BulkDeleteTest::undoIsForTheLastDeletionOnly()
{
    add("Ann", {m_club});
    add("Bob", {m_club});
    add("Cid");
    m_page->showCategory(m_club);
    MessageRobot robot({QMessageBox::Yes, QMessageBox::Yes});
    m_page->deleteShown();
    m_page->showCategory(0);
    m_page->deleteCard();
    QCOMPARE(m_page->book()->count(), 0);
    m_page->undoDelete();
    QCOMPARE(texts(*m_page, 0), QStringList{"Cid"});
}

void BulkDeleteTest::deletionWithoutRoomKeepsTheCards()
{
    add("Ann", {m_club});
    add("Bob", {m_club});
    isFull = true;
    MessageRobot robot({QMessageBox::Yes, QMessageBox::Ok});
    m_page->deleteShown();
    QCOMPARE(robot.boxes().size(), 2);
    QCOMPARE(robot.boxes().value(1).text, QString("These could not be deleted."));
    QCOMPARE(texts(*m_page, 0), (QStringList{"Ann", "Bob"}));
    m_page->undoDelete();
    QCOMPARE(m_page->book()->allCards().size(), 2);
}

void BulkDeleteTest::changedListIsNotDeleted()
{
    add("Ann");
    MessageRobot robot({QMessageBox::Yes, QMessageBox::Ok});
    QTimer::singleShot(0, this, [this] { add("Bob"); }); // while the question is open
    m_page->deleteShown();
    QCOMPARE(m_page->book()->count(), 2);
    QCOMPARE(robot.boxes().value(1).text, QString("The list has changed meanwhile. Nothing was deleted."));
}

void BulkDeleteTest::emptyListHasNothingToDelete()
{
    MessageRobot robot;
    m_page->deleteShown();
    QCOMPARE(robot.boxes().size(), 0);
}

QTEST_MAIN(BulkDeleteTest)
#include "bulkdeletetest.moc"
