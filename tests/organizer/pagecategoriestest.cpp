#include "categoriesdialog.h"
#include "categorychecklist.h"
#include "categorytable.h"
#include "contactspage.h"
#include "mainwindow.h"
#include "memospage.h"
#include "taskspage.h"

#include "addressfields.h"
#include "messagerobot.h"
#include "pagefixture.h"

#include "qcopchannel.h"
#include "qcopenvelope.h"

#include <QComboBox>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>

namespace {

QStringList choices(const CardsPage &page)
{
    const auto *chooser = page.findChild<QComboBox *>("category");
    QStringList result;
    for (int i = 0; i < chooser->count(); ++i)
        result.append(chooser->itemText(i));
    return result;
}

/* The dialog of categories, worked as a user does. */
class Dialog
{
public:
    explicit Dialog(CategoryTable *table) : m_dialog(table) { m_dialog.show(); }

    void select(const QString &name)
    {
        auto *list = m_dialog.findChild<QListWidget *>();
        list->setCurrentItem(list->findItems(name, Qt::MatchExactly).value(0));
    }
    void type(const QString &name) { m_dialog.findChild<QLineEdit *>()->setText(name); }
    void press(const QString &text) { QTest::mouseClick(button(text), Qt::LeftButton); }
    [[nodiscard]] QPushButton *button(const QString &text) const
    {
        for (QPushButton *candidate : m_dialog.findChildren<QPushButton *>()) {
            if (candidate->text().remove(u'&') == text)
                return candidate;
        }
        return nullptr;
    }
    [[nodiscard]] QStringList names() const
    {
        const auto *list = m_dialog.findChild<QListWidget *>();
        QStringList result;
        for (int row = 0; row < list->count(); ++row)
            result.append(list->item(row)->text());
        return result;
    }

private:
    CategoriesDialog m_dialog;
};

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
    void formFilesUnderTickedCategories();
    void cardLeavesTheViewOfACategoryItLoses();
    void tickingAndSavingLeavesOtherFieldsAlone();
    void dialogAddsForAllPages();
    void duplicateNameIsRefused();
    void blanksAroundANameAreDropped();
    void nameOfTheUnfiledIsRefused();
    void dialogRenamesForAllPages();
    void renamingToAnExistingNameIsRefused();
    void systemCategoryIsProtected();
    void dialogRemovesAfterAsking();
    void removingTheShownCategoryShowsAllCards();
    void removedCategoryGoesFromTheCardsOfAllBoxes();
    void tableWithoutRoomSaysSo();
    void changesAreTold();
    void receiversDoNotLookAtTheArgument();
    void openFormSeesANewCategoryAndKeepsItsTicks();
    void removedCategoryIsNoChangeOfAnOpenForm();
    void longNameIsTakenAndCutInMessages();

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
        QCOMPARE(choices(*page), (QStringList{"All", "Unfiled"}));
    addCategory(table(), "Work");
    addCategory(table(), "Club");
    for (const CardsPage *page : pages())
        QCOMPARE(choices(*page), (QStringList{"All", "Club", "Work", "Unfiled"}));
}

void PageCategoriesTest::chosenCategoryShowsItsCards()
{
    const int club = addCategory(table(), "Club");
    const int work = addCategory(table(), "Work");
    addContact("Ann", {club});
    addContact("Bob", {work});
    addContact("Cid", {club, work});
    auto *chooser = contacts().findChild<QComboBox *>("category");
    const auto choose = [&](const QString &name) {
        chooser->setFocus();
        chooser->setCurrentIndex(chooser->findText(name));
        emit chooser->activated(chooser->currentIndex());
    };
    choose("Club");
    QCOMPARE(texts(contacts(), 0), (QStringList{"Ann", "Cid"}));
    choose("Work");
    QCOMPARE(texts(contacts(), 0), (QStringList{"Bob", "Cid"}));
    choose("All");
    QCOMPARE(texts(contacts(), 0), (QStringList{"Ann", "Bob", "Cid"}));
    QCOMPARE(state(contacts()), QString("3 contacts"));
}

void PageCategoriesTest::emptyCategoryShowsNothing()
{
    const int club = addCategory(table(), "Club");
    addContact("Ann");
    contacts().showCategory(club);
    QCOMPARE(texts(contacts(), 0), QStringList());
    QCOMPARE(state(contacts()), QString("0 contacts"));
}

void PageCategoriesTest::unfiledShowsCardsWithoutCategory()
{
    const int club = addCategory(table(), "Club");
    addContact("Ann", {club});
    const unsigned long bob = addContact("Bob");
    contacts().showCategory(UnfiledCategoryId);
    QCOMPARE(texts(contacts(), 0), QStringList{"Bob"});
    contacts().book()->save(bob, {}, QList<int>{club});
    QCOMPARE(texts(contacts(), 0), QStringList());
    contacts().book()->save(bob, {}, QList<int>());
    QCOMPARE(texts(contacts(), 0), QStringList{"Bob"});
}

void PageCategoriesTest::formFilesUnderTickedCategories()
{
    const int club = addCategory(table(), "Club");
    const int work = addCategory(table(), "Work");
    const unsigned long ann = addContact("Ann", {club});
    contacts().editCard();
    auto *form = contacts().findChild<CardForm *>();
    auto *list = form->findChild<CategoryChecklist *>();
    QCOMPARE(list->checked(), QList<int>{club});
    QVERIFY(!form->isModified());
    list->setChecked({work});
    QVERIFY(form->isModified());
    form->save();
    QCOMPARE(contacts().book()->categories(ann), QList<int>{work});
}

void PageCategoriesTest::cardLeavesTheViewOfACategoryItLoses()
{
    const int club = addCategory(table(), "Club");
    addContact("Ann", {club});
    addContact("Bob", {club});
    contacts().showCategory(club);
    contacts().selectRow(0);
    contacts().editCard();
    contacts().findChild<CategoryChecklist *>()->setChecked({});
    contacts().findChild<CardForm *>()->save();
    QCOMPARE(texts(contacts(), 0), QStringList{"Bob"});
    contacts().showCategory(UnfiledCategoryId);
    QCOMPARE(texts(contacts(), 0), QStringList{"Ann"});
}

void PageCategoriesTest::tickingAndSavingLeavesOtherFieldsAlone()
{
    const int club = addCategory(table(), "Club");
    const unsigned long ann = addContact("Ann");
    contacts().book()->save(ann, {{AddressField::Birthday, "1980-01-02"}, {AddressField::LastName, "Ann"}});
    const CardValues before = contacts().book()->values(ann);
    contacts().editCard();
    contacts().findChild<CategoryChecklist *>()->setChecked({club});
    contacts().findChild<CardForm *>()->save();
    QCOMPARE(contacts().book()->values(ann), before);
    QCOMPARE(contacts().book()->categories(ann), QList<int>{club});
}

void PageCategoriesTest::dialogAddsForAllPages()
{
    Dialog dialog(&table());
    QVERIFY(!dialog.button("Add")->isEnabled());
    dialog.type("Club");
    dialog.press("Add");
    QCOMPARE(dialog.names(), QStringList{"Club"});
    for (const CardsPage *page : pages())
        QCOMPARE(choices(*page), (QStringList{"All", "Club", "Unfiled"}));
}

void PageCategoriesTest::duplicateNameIsRefused()
{
    addCategory(table(), "Club");
    Dialog dialog(&table());
    MessageRobot robot({QMessageBox::Ok});
    dialog.type("Club");
    dialog.press("Add");
    QCOMPARE(robot.boxes().value(0).text, QString("There is a category \"Club\" already."));
    QCOMPARE(dialog.names(), QStringList{"Club"});
}

void PageCategoriesTest::blanksAroundANameAreDropped()
{
    Dialog dialog(&table());
    dialog.type("  Club ");
    dialog.press("Add");
    QCOMPARE(dialog.names(), QStringList{"Club"});
    dialog.type("   ");
    QVERIFY(!dialog.button("Add")->isEnabled());
}

void PageCategoriesTest::nameOfTheUnfiledIsRefused()
{
    QVERIFY(!table().add("Unfiled").isEmpty());
    addCategory(table(), "Club");
    QVERIFY(!table().rename("Club", "Unfiled").isEmpty());
    QCOMPARE(table().entries().size(), 1);
}

void PageCategoriesTest::dialogRenamesForAllPages()
{
    const int club = addCategory(table(), "Club");
    addContact("Ann", {club});
    contacts().showCategory(club);
    Dialog dialog(&table());
    dialog.select("Club");
    dialog.type("Society");
    dialog.press("Rename");
    QCOMPARE(dialog.names(), QStringList{"Society"});
    for (const CardsPage *page : pages())
        QCOMPARE(choices(*page), (QStringList{"All", "Society", "Unfiled"}));
    QCOMPARE(contacts().findChild<QComboBox *>("category")->currentText(), QString("Society"));
    QCOMPARE(texts(contacts(), 0), QStringList{"Ann"});
    QCOMPARE(table().id("Society"), club);
}

void PageCategoriesTest::renamingToAnExistingNameIsRefused()
{
    addCategory(table(), "Club");
    addCategory(table(), "Work");
    Dialog dialog(&table());
    dialog.select("Club");
    dialog.type("Work");
    MessageRobot robot({QMessageBox::Ok});
    dialog.press("Rename");
    QCOMPARE(robot.boxes().value(0).text, QString("There is a category \"Work\" already."));
    QCOMPARE(dialog.names(), (QStringList{"Club", "Work"}));
}

void PageCategoriesTest::systemCategoryIsProtected()
{
    QVERIFY(KyCategories().addSystemCategory("Device") != 0);
    addCategory(table(), "Club");
    Dialog dialog(&table());
    dialog.select("Device");
    dialog.type("Mine");
    QVERIFY(!dialog.button("Rename")->isEnabled());
    QVERIFY(!dialog.button("Remove")->isEnabled());
    QVERIFY(!table().rename("Device", "Mine").isEmpty());
    QVERIFY(!table().remove("Device").isEmpty());
    dialog.select("Club");
    QVERIFY(dialog.button("Remove")->isEnabled());
    QCOMPARE(dialog.names(), (QStringList{"Club", "Device"}));
}

void PageCategoriesTest::dialogRemovesAfterAsking()
{
    const int club = addCategory(table(), "Club");
    const unsigned long ann = addContact("Ann", {club});
    Dialog dialog(&table());
    dialog.select("Club");
    MessageRobot robot({QMessageBox::No, QMessageBox::Yes});
    dialog.press("Remove");
    QCOMPARE(dialog.names(), QStringList{"Club"});
    dialog.press("Remove");
    QCOMPARE(dialog.names(), QStringList());
    QVERIFY(robot.boxes().value(0).text.contains("\"Club\""));
    QCOMPARE(robot.boxes().value(0).defaultButton, QMessageBox::No);
    QTRY_COMPARE_WITH_TIMEOUT(contacts().book()->categories(ann), QList<int>(), Patience);
}

void PageCategoriesTest::removingTheShownCategoryShowsAllCards()
{
    const int club = addCategory(table(), "Club");
    addContact("Ann", {club});
    addContact("Bob");
    contacts().showCategory(club);
    contacts().search("n");
    QCOMPARE(table().remove("Club"), QString());
    QTRY_COMPARE_WITH_TIMEOUT(contacts().findChild<QComboBox *>("category")->currentText(), QString("All"),
                              Patience);
    QTRY_COMPARE_WITH_TIMEOUT(contacts().book()->categories(contacts().book()->cardAt(0)), QList<int>(),
                              Patience);
    QCOMPARE(texts(contacts(), 0), QStringList{"Ann"});
    contacts().search("");
    QCOMPARE(texts(contacts(), 0), (QStringList{"Ann", "Bob"}));
}

void PageCategoriesTest::removedCategoryGoesFromTheCardsOfAllBoxes()
{
    const int club = addCategory(table(), "Club");
    const int work = addCategory(table(), "Work");
    QMap<Book *, unsigned long> cards;
    cards[contacts().book()] = addContact("Ann", {club, work});
    cards[m_window->tasks()->book()] =
        m_window->tasks()->book()->save(0, {{TaskField::Description, "a"}}, QList<int>{club, work});
    cards[m_window->memos()->book()] =
        m_window->memos()->book()->save(0, {{MemoField::Title, "a"}}, QList<int>{club, work});
    QCOMPARE(table().remove("Club"), QString());
    for (auto it = cards.cbegin(); it != cards.cend(); ++it)
        QTRY_COMPARE_WITH_TIMEOUT(it.key()->categories(it.value()), QList<int>{work}, Patience);
}

void PageCategoriesTest::tableWithoutRoomSaysSo()
{
    KyCategories categories;
    for (int i = 0; i < CategoryTable::MaximumCategories; ++i)
        QVERIFY(categories.addCategory(QString::number(i)) != 0);
    QCOMPARE(table().add("one more"), QString("There is no room for more than 245 categories."));
}

void PageCategoriesTest::changesAreTold()
{
    const QCopChannel channel("QPE/System");
    QSignalSpy spy(&channel, &QCopChannel::received);
    const auto told = [&](const QByteArray &message) {
        int count = 0;
        for (const QList<QVariant> &arguments : spy)
            count += arguments[0].toByteArray() == message;
        return count;
    };
    addCategory(table(), "Club");
    QTRY_COMPARE_WITH_TIMEOUT(told("categoryChange(QString)"), 1, Patience);
    QCOMPARE(table().rename("Club", "Society"), QString());
    QTRY_COMPARE_WITH_TIMEOUT(told("categoryChange(QString)"), 2, Patience);
    QVERIFY(!table().add("Society").isEmpty());
    QCOMPARE(table().remove("Society"), QString());
    QTRY_COMPARE_WITH_TIMEOUT(told("categoryRemoved(int)"), 1, Patience);
    QCOMPARE(told("categoryChange(QString)"), 2);
}

void PageCategoriesTest::receiversDoNotLookAtTheArgument()
{
    QVERIFY(KyCategories().addCategory("Club") != 0);
    QCOMPARE(choices(contacts()), (QStringList{"All", "Unfiled"}));
    QCopChannel::send("QPE/System", "categoryChange(QString)", "no argument at all");
    for (const CardsPage *page : pages())
        QTRY_COMPARE_WITH_TIMEOUT(choices(*page), (QStringList{"All", "Club", "Unfiled"}), Patience);
}

void PageCategoriesTest::openFormSeesANewCategoryAndKeepsItsTicks()
{
    const int work = addCategory(table(), "Work");
    contacts().newCard();
    auto *list = contacts().findChild<CategoryChecklist *>();
    list->setChecked({work});
    addCategory(table(), "Club");
    QCOMPARE(list->count(), 2);
    QCOMPARE(list->checked(), QList<int>{work});
}

void PageCategoriesTest::removedCategoryIsNoChangeOfAnOpenForm()
{
    const int work = addCategory(table(), "Work");
    const int club = addCategory(table(), "Club");
    addContact("Ann", {work});
    contacts().selectRow(0);
    contacts().editCard();
    auto *form = contacts().findChild<CardForm *>();
    QCOMPARE(table().remove("Work"), QString());
    QVERIFY(!form->isModified());
    contacts().findChild<CategoryChecklist *>()->setChecked({club});
    QVERIFY(form->isModified());
}

void PageCategoriesTest::longNameIsTakenAndCutInMessages()
{
    const QString name(2000, u'n');
    Dialog dialog(&table());
    dialog.type(name);
    dialog.press("Add");
    QCOMPARE(dialog.names(), QStringList{name});
    MessageRobot robot({QMessageBox::Ok});
    dialog.type(name);
    dialog.press("Add");
    QCOMPARE(robot.boxes().value(0).text,
             QString("There is a category \"%1\u2026\" already.").arg(QString(60, u'n')));
}

QTEST_MAIN(PageCategoriesTest)
#include "pagecategoriestest.moc"
