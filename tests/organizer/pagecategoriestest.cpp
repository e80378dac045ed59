#include "categorytable.h"
#include "contactspage.h"
#include "mainwindow.h"
#include "memospage.h"
#include "taskspage.h"

#include "addressfields.h"
#include "categoryrobot.h"
#include "channellistener.h"
#include "editdialogrobot.h"
#include "messagerobot.h"
#include "pagefixture.h"

#include <QToolButton>

namespace {

QStringList choices(const CardsPage &page)
{
    const QComboBox *box = chooser(page);
    QStringList result;
    for (int i = 0; i < box->count(); ++i)
        result.append(box->itemText(i));
    return result;
}

/* Chooses a row as a user does. */
void choose(const KyCategorySelect &select, const QString &name)
{
    auto *box = select.findChild<QComboBox *>();
    box->setCurrentIndex(box->findText(name));
    emit box->activated(box->currentIndex());
}

void press(const SeenDialog &dialog, const QString &text)
{
    for (QPushButton *candidate : dialog.widget()->findChildren<QPushButton *>()) {
        if (candidate->text().remove(u'&') == text || candidate->accessibleName() == text)
            candidate->click();
    }
}

} // namespace

class PageCategoriesTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void choosersOfAllPagesListAllCategories();
    void chosenCategoryShowsItsCards();
    void emptyCategoryShowsNothing();
    void unfiledShowsCardsWithoutCategory();
    void formFilesUnderTheChosenCategory();
    void formFilesUnderSeveralCategories();
    void formShowsTheCategoriesOfItsCard();
    void unfiledInTheFormIsNoCategory();
    void newCardBeginsInTheShownCategory();
    void cardLeavesTheViewOfACategoryItLoses();
    void filingLeavesOtherFieldsAlone();
    void dialogAddsForAllPages();
    void dialogThatIsCancelledKeepsTheView();
    void dialogThatTicksSeveralShowsTheFirst();
    void dialogThatTicksNoneShowsAllCards();
    void dialogThatRemovesTheShownCategoryShowsAllCards_data();
    void dialogThatRemovesTheShownCategoryShowsAllCards();
    void renamedCategoryIsSeenOnAllPages();
    void removingTheShownCategoryShowsAllCards();
    void removedCategoryGoesFromTheCardsOfAllBoxes();
    void tableWithoutRoomTakesNoMore();
    void additionIsToldToOthers();
    void receiversDoNotLookAtTheArgument();
    void openFormSeesANewCategoryAndKeepsItsOwn();
    void removedCategoryIsNoChangeOfAnOpenForm();

private:
    unsigned long addContact(const char *name, const QList<int> &categories = {});
    [[nodiscard]] CategoryTable &table() const { return *m_window->categories(); }
    [[nodiscard]] ContactsPage &contacts() const { return *m_window->contacts(); }
    [[nodiscard]] QList<CardsPage *> pages() const
    {
        return {m_window->contacts(), m_window->tasks(), m_window->memos()};
    }

    std::unique_ptr<MainWindow> m_window;
};

void PageCategoriesTest::init()
{
    m_window.reset();
    removeBoxes();
    m_window = std::make_unique<MainWindow>();
    m_window->show();
}

unsigned long PageCategoriesTest::addContact(const char *name, const QList<int> &categories)
{
    return contacts().book()->save(
        0, {{AddressField::FullName, name}, {AddressField::FullPronunciation, name}}, categories);
}

void PageCategoriesTest::choosersOfAllPagesListAllCategories()
{
    for (const CardsPage *page : pages())
        QCOMPARE(choices(*page), (QStringList{"Unfiled", "All"}));
    table().add("Work");
    table().add("Club");
    for (const CardsPage *page : pages())
        QCOMPARE(choices(*page), (QStringList{"Club", "Work", "Unfiled", "All"}));
}

void PageCategoriesTest::chosenCategoryShowsItsCards()
{
    const int club = table().add("Club");
    const int work = table().add("Work");
    addContact("Ann", {club});
    addContact("Bob", {work});
    addContact("Cid", {club, work});
    const auto &chosen = *contacts().findChild<KyCategorySelect *>("category");
    choose(chosen, "Club");
    QCOMPARE(texts(contacts(), 0), (QStringList{"Ann", "Cid"}));
    choose(chosen, "Work");
    QCOMPARE(texts(contacts(), 0), (QStringList{"Bob", "Cid"}));
    choose(chosen, "All");
    QCOMPARE(texts(contacts(), 0), (QStringList{"Ann", "Bob", "Cid"}));
    QCOMPARE(state(contacts()), QString("3 contacts"));
}

void PageCategoriesTest::emptyCategoryShowsNothing()
{
    const int club = table().add("Club");
    addContact("Ann");
    contacts().showCategory(club);
    QCOMPARE(texts(contacts(), 0), QStringList());
    QCOMPARE(state(contacts()), QString("0 contacts"));
}

void PageCategoriesTest::unfiledShowsCardsWithoutCategory()
{
    const int club = table().add("Club");
    addContact("Ann", {club});
    const unsigned long bob = addContact("Bob");
    contacts().showCategory(UnfiledCategoryId);
    QCOMPARE(texts(contacts(), 0), QStringList{"Bob"});
    contacts().book()->save(bob, {}, QList<int>{club});
    QCOMPARE(texts(contacts(), 0), QStringList());
    contacts().book()->save(bob, {}, QList<int>());
    QCOMPARE(texts(contacts(), 0), QStringList{"Bob"});
}

void PageCategoriesTest::formFilesUnderTheChosenCategory()
{
    const int club = table().add("Club");
    const int work = table().add("Work");
    const unsigned long ann = addContact("Ann", {club});
    contacts().editCard();
    auto *form = contacts().findChild<CardForm *>();
    QCOMPARE(filing(contacts()).currentCategories(), QList<int>{club});
    QVERIFY(!form->isModified());
    choose(filing(contacts()), "Work");
    QVERIFY(form->isModified());
    form->save();
    QCOMPARE(contacts().book()->categories(ann), QList<int>{work});
}

void PageCategoriesTest::formFilesUnderSeveralCategories()
{
    const int club = table().add("Club");
    table().add("Home");
    const int work = table().add("Work");
    const unsigned long ann = addContact("Ann", {club});
    contacts().editCard();
    auto *form = contacts().findChild<CardForm *>();
    const EditDialogRobot robot([](const SeenDialog &dialog) {
        dialog.check("Work");
        dialog.accept();
    });
    QTest::mouseClick(filing(contacts()).findChild<QToolButton *>(), Qt::LeftButton);
    QCOMPARE(robot.dialogs(), 1);
    QVERIFY(form->isModified());
    form->save();
    QCOMPARE(contacts().book()->categories(ann), (QList<int>{club, work}));
}

void PageCategoriesTest::formShowsTheCategoriesOfItsCard()
{
    const int club = table().add("Club");
    table().add("Home");
    const int work = table().add("Work");
    addContact("Ann", {work, club});
    contacts().editCard();
    const auto *box = filing(contacts()).findChild<QComboBox *>();
    QCOMPARE(box->findText("Club (Multi.)"), 0);
    QCOMPARE(box->findText("Home"), 1);
    QCOMPARE(box->findText("Work (Multi.)"), 2);
    QVERIFY(box->currentText().endsWith(" (Multi.)"));
    QVERIFY(!contacts().findChild<CardForm *>()->isModified());
}

void PageCategoriesTest::unfiledInTheFormIsNoCategory()
{
    const int club = table().add("Club");
    const unsigned long ann = addContact("Ann", {club});
    contacts().editCard();
    choose(filing(contacts()), "Unfiled");
    contacts().findChild<CardForm *>()->save();
    QCOMPARE(contacts().book()->categories(ann), QList<int>());
}

void PageCategoriesTest::newCardBeginsInTheShownCategory()
{
    const int club = table().add("Club");
    contacts().showCategory(club);
    contacts().newCard();
    QCOMPARE(filing(contacts()).currentCategories(), QList<int>{club});
    QVERIFY(!contacts().findChild<CardForm *>()->isModified());
    contacts().showList();
    contacts().showCategory(UnfiledCategoryId);
    contacts().newCard();
    QCOMPARE(filing(contacts()).currentCategories(), QList<int>());
}

void PageCategoriesTest::cardLeavesTheViewOfACategoryItLoses()
{
    const int club = table().add("Club");
    addContact("Ann", {club});
    addContact("Bob", {club});
    contacts().showCategory(club);
    contacts().selectRow(0);
    contacts().editCard();
    choose(filing(contacts()), "Unfiled");
    contacts().findChild<CardForm *>()->save();
    QCOMPARE(texts(contacts(), 0), QStringList{"Bob"});
    contacts().showCategory(UnfiledCategoryId);
    QCOMPARE(texts(contacts(), 0), QStringList{"Ann"});
}

void PageCategoriesTest::filingLeavesOtherFieldsAlone()
{
    const int club = table().add("Club");
    const unsigned long ann = addContact("Ann");
    contacts().book()->save(ann, {{AddressField::Birthday, "1980-01-02"}, {AddressField::LastName, "Ann"}});
    const CardValues before = contacts().book()->values(ann);
    contacts().editCard();
    choose(filing(contacts()), "Club");
    contacts().findChild<CardForm *>()->save();
    QCOMPARE(contacts().book()->values(ann), before);
    QCOMPARE(contacts().book()->categories(ann), QList<int>{club});
}

void PageCategoriesTest::dialogAddsForAllPages()
{
    const CategoryRobot name({"Club"});
    const EditDialogRobot robot([](const SeenDialog &dialog) {
        press(dialog, "Add");
        dialog.accept();
    });
    contacts().showCategories();
    QCOMPARE(robot.dialogs(), 1);
    for (const CardsPage *page : pages())
        QTRY_COMPARE_WITH_TIMEOUT(choices(*page), (QStringList{"Club", "Unfiled", "All"}), Patience);
    QCOMPARE(chooser(contacts())->currentText(), QString("All"));
}

void PageCategoriesTest::dialogThatIsCancelledKeepsTheView()
{
    const int club = table().add("Club");
    addContact("Ann", {club});
    addContact("Bob");
    contacts().showCategory(club);
    const EditDialogRobot robot([](const SeenDialog &dialog) {
        dialog.check("Club", false);
        dialog.cancel();
    });
    contacts().showCategories();
    QCOMPARE(robot.dialogs(), 1);
    QCOMPARE(chooser(contacts())->currentText(), QString("Club"));
    QCOMPARE(texts(contacts(), 0), QStringList{"Ann"});
}

void PageCategoriesTest::dialogThatTicksSeveralShowsTheFirst()
{
    const int club = table().add("Club");
    const int work = table().add("Work");
    addContact("Ann", {club});
    addContact("Bob", {work});
    const EditDialogRobot robot([](const SeenDialog &dialog) {
        dialog.check("Club");
        dialog.check("Work");
        dialog.accept();
    });
    contacts().showCategories();
    QCOMPARE(robot.dialogs(), 1);
    QCOMPARE(texts(contacts(), 0), QStringList{"Ann"});
    QTRY_COMPARE_WITH_TIMEOUT(choices(contacts()), (QStringList{"Club", "Work", "Unfiled", "All"}), Patience);
    QCOMPARE(chooser(contacts())->currentText(), QString("Club"));
}

void PageCategoriesTest::dialogThatTicksNoneShowsAllCards()
{
    const int club = table().add("Club");
    addContact("Ann", {club});
    addContact("Bob");
    contacts().showCategory(club);
    const EditDialogRobot robot([](const SeenDialog &dialog) {
        dialog.check("Club", false);
        dialog.accept();
    });
    contacts().showCategories();
    QCOMPARE(robot.dialogs(), 1);
    QCOMPARE(texts(contacts(), 0), (QStringList{"Ann", "Bob"}));
    QTRY_COMPARE_WITH_TIMEOUT(chooser(contacts())->currentText(), QString("All"), Patience);
}

void PageCategoriesTest::dialogThatRemovesTheShownCategoryShowsAllCards_data()
{
    QTest::addColumn<QDialogButtonBox::StandardButton>("end");
    QTest::newRow("accepted") << QDialogButtonBox::Ok;
    QTest::newRow("cancelled") << QDialogButtonBox::Cancel;
}

void PageCategoriesTest::dialogThatRemovesTheShownCategoryShowsAllCards()
{
    QFETCH(QDialogButtonBox::StandardButton, end);
    const int club = table().add("Club");
    table().add("Work");
    addContact("Ann", {club});
    addContact("Bob");
    contacts().showCategory(club);
    const MessageRobot yes({QMessageBox::Yes});
    const EditDialogRobot robot([end](const SeenDialog &dialog) {
        press(dialog, "Delete"); // the first category
        dialog.button(end)->click();
    });
    contacts().showCategories();
    QCOMPARE(robot.dialogs(), 1);
    QTRY_COMPARE_WITH_TIMEOUT(texts(contacts(), 0), (QStringList{"Ann", "Bob"}), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(choices(contacts()), (QStringList{"Work", "Unfiled", "All"}), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(chooser(contacts())->currentText(), QString("All"), Patience);
    QCOMPARE(contacts().book()->view().category, 0);
}

void PageCategoriesTest::renamedCategoryIsSeenOnAllPages()
{
    const int club = table().add("Club");
    addContact("Ann", {club});
    contacts().showCategory(club);
    QVERIFY(renameCategory("Club", "Society"));
    for (const CardsPage *page : pages())
        QTRY_COMPARE_WITH_TIMEOUT(choices(*page), (QStringList{"Society", "Unfiled", "All"}), Patience);
    QCOMPARE(chooser(contacts())->currentText(), QString("Society"));
    QCOMPARE(texts(contacts(), 0), QStringList{"Ann"});
    QCOMPARE(table().id("Society"), club);
}

void PageCategoriesTest::removingTheShownCategoryShowsAllCards()
{
    const int club = table().add("Club");
    addContact("Ann", {club});
    addContact("Bob");
    contacts().showCategory(club);
    contacts().search("n");
    QVERIFY(KyCategories().removeCategory("Club"));
    QTRY_COMPARE_WITH_TIMEOUT(chooser(contacts())->currentText(), QString("All"), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(contacts().book()->categories(contacts().book()->cardAt(0)), QList<int>(),
                              Patience);
    QCOMPARE(texts(contacts(), 0), QStringList{"Ann"});
    contacts().search("");
    QCOMPARE(texts(contacts(), 0), (QStringList{"Ann", "Bob"}));
}

void PageCategoriesTest::removedCategoryGoesFromTheCardsOfAllBoxes()
{
    const int club = table().add("Club");
    const int work = table().add("Work");
    QMap<Book *, unsigned long> cards;
    cards[contacts().book()] = addContact("Ann", {club, work});
    cards[m_window->tasks()->book()] =
        m_window->tasks()->book()->save(0, {{TaskField::Description, "a"}}, QList<int>{club, work});
    cards[m_window->memos()->book()] =
        m_window->memos()->book()->save(0, {{MemoField::Title, "a"}}, QList<int>{club, work});
    QVERIFY(KyCategories().removeCategory("Club"));
    for (auto it = cards.cbegin(); it != cards.cend(); ++it)
        QTRY_COMPARE_WITH_TIMEOUT(it.key()->categories(it.value()), QList<int>{work}, Patience);
}

void PageCategoriesTest::tableWithoutRoomTakesNoMore()
{
    constexpr int Most = 245; // as many as there are ids
    KyCategories categories;
    for (int i = 0; i < Most; ++i)
        QVERIFY(categories.addCategory(QString::number(i)) != 0);
    QCOMPARE(table().add("one more"), 0);
    QCOMPARE(table().entries().size(), Most);
}

void PageCategoriesTest::additionIsToldToOthers()
{
    ChannelListener listener("QPE/System");
    const auto told = [&] {
        int count = 0;
        for (const auto &[message, data] : listener.take())
            count += message == "categoryChange(QString)";
        return count;
    };
    QVERIFY(table().add("Club") != 0);
    QCOMPARE(told(), 1);
    QCOMPARE(table().add("Club"), 0);
    QCOMPARE(told(), 0);
}

void PageCategoriesTest::receiversDoNotLookAtTheArgument()
{
    QVERIFY(KyCategories().addCategory("Club") != 0);
    QCOMPARE(choices(contacts()), (QStringList{"Unfiled", "All"}));
    QCopChannel::send("QPE/System", "categoryChange(QString)", "no argument at all");
    for (const CardsPage *page : pages())
        QTRY_COMPARE_WITH_TIMEOUT(choices(*page), (QStringList{"Club", "Unfiled", "All"}), Patience);
}

void PageCategoriesTest::openFormSeesANewCategoryAndKeepsItsOwn()
{
    const int work = table().add("Work");
    contacts().newCard();
    choose(filing(contacts()), "Work");
    table().add("Club");
    QTRY_VERIFY_WITH_TIMEOUT(filing(contacts()).findChild<QComboBox *>()->findText("Club") >= 0, Patience);
    QCOMPARE(filing(contacts()).currentCategories(), QList<int>{work});
    QCOMPARE(filing(contacts()).currentCategory(), work);
}

void PageCategoriesTest::removedCategoryIsNoChangeOfAnOpenForm()
{
    const int work = table().add("Work");
    table().add("Club");
    addContact("Ann", {work});
    contacts().selectRow(0);
    contacts().editCard();
    auto *form = contacts().findChild<CardForm *>();
    QVERIFY(KyCategories().removeCategory("Work"));
    QTRY_COMPARE_WITH_TIMEOUT(filing(contacts()).currentCategories(), QList<int>(), Patience);
    QVERIFY(!form->isModified());
    choose(filing(contacts()), "Club");
    QVERIFY(form->isModified());
}

QTEST_MAIN(PageCategoriesTest)
#include "pagecategoriestest.moc"
