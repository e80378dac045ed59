#include "contactspage.h"
#include "cardlist.h"
#include "contactform.h"
#include "contactimport.h"
#include "contactnames.h"
#include "pagefixture.h"

#include "addressfields.h"
#include "messagerobot.h"
#include "pdtm.h"

#include <dlfcn.h>

#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressDialog>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeView>

namespace {

const char CardText[] = "BEGIN:VCARD\r\nVERSION:3.0\r\nN:%1;%2;;;\r\nFN:%1 %2\r\n"
                        "X-PHONETIC-LAST-NAME:%3\r\nX-PHONETIC-FIRST-NAME:%4\r\nEND:VCARD\r\n";

QString card(const char *last, const char *first, const char *lastReading, const char *firstReading)
{
    return QString::fromUtf8(CardText).arg(QString::fromUtf8(last), QString::fromUtf8(first),
                                           QString::fromUtf8(lastReading), QString::fromUtf8(firstReading));
}

QString cardIn(const char *name, const char *categories)
{
    return QStringLiteral("BEGIN:VCARD\r\nVERSION:3.0\r\nFN:%1\r\nN:;%1;;;\r\nCATEGORIES:%2\r\nEND:VCARD\r\n")
        .arg(QLatin1String(name), QLatin1String(categories));
}

/* The outermost actions, by the handle of their box. */
QMap<uint32_t, int> openActions;
int committedActions = 0;
bool wasActionInAction = false; // of another box

bool isHeldElsewhere = false;
bool hasNoIndexNames = false; ///< no temporary index can be made

/* Sees whether a progress dialog comes up while it lives. */
class ProgressWatcher : public QObject
{
public:
    ProgressWatcher() { qApp->installEventFilter(this); }
    [[nodiscard]] bool wasShown() const { return m_wasShown; }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        m_wasShown |= event->type() == QEvent::Show && qobject_cast<QProgressDialog *>(watched);
        return false;
    }

private:
    bool m_wasShown = false;
};

} // namespace

/* The next definition of a store operation that this test defines itself. */
template <typename Function> Function *nextDefinition(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

extern "C" PdtmStatus DtmBeginAction(uint32_t handle)
{
    const PdtmStatus status = nextDefinition<decltype(DtmBeginAction)>("DtmBeginAction")(handle);
    if (status == PdtmOk) {
        wasActionInAction |= !openActions.isEmpty() && !openActions.contains(handle);
        ++openActions[handle];
    }
    return status;
}

extern "C" PdtmStatus DtmEndAction(uint32_t handle)
{
    if (--openActions[handle] <= 0) {
        openActions.remove(handle);
        ++committedActions;
    }
    return nextDefinition<decltype(DtmEndAction)>("DtmEndAction")(handle);
}

extern "C" uint32_t _BoxOpenRwMode(const char *path, uint8_t mode)
{
    const auto next = nextDefinition<decltype(_BoxOpenRwMode)>("_BoxOpenRwMode");
    return isHeldElsewhere ? 0 : next(path, mode);
}

extern "C" int GetNewFileName(const char *directory, char *name, const char *extension, int position,
                              int digits)
{
    const auto next = nextDefinition<decltype(GetNewFileName)>("GetNewFileName");
    return hasNoIndexNames ? 0 : next(directory, name, extension, position, digits);
}

class ContactsPageTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void importedContactsComeByReading();
    void importTwiceDoublesNothing();
    void importKeepsWhatComesBeforeAndBehindABrokenCard();
    void importOfAMissingFileSaysSo();
    void importMakesCategoriesOfTheDevice();
    void importKeepsCategoriesWithoutRoomInTheGroups();
    void importIsOneActionForFiveHundredCards();
    void importShowsProgressFrom200Cards_data();
    void importShowsProgressFrom200Cards();
    void newContactAppearsInItsPlace();
    void contactWithNothingIsRefused();
    void editMovesTheContact();
    void editOfADeletedContactKeepsIt();
    void cancelAsksOnlyWhenSomethingWasTyped();
    void deleteAsksAndUndoBringsBack();
    void deletingNothingDoesNothing();
    void clickOnAHeaderSortsAndASecondOneTurns();
    void menuSortsAsHeadersDo();
    void orderOfAnEmptyBoxHoldsForItsFirstCards();
    void orderThatIsChosenWhileTheBoxIsLentHoldsAfterwards();
    void keysOfTheListDoNothingInTheForm();
    void newContactIsFiledUnderTheShownCategory();
    void deletingLeavesTheListInItsPlace();
    void savingLeavesTheListInItsPlace();
    void lettersFindAName();
    void lentBoxShowsItsLastPictureDisabled();
    void lentBoxShowsItsLastPictureAfterLettersThatFindNothing();
    void unchangedFormOfALentBoxLeavesItsLastPicture();
    void listHasTheKeysAgainAfterALoan();
    void searchKeepsTheKeysAfterALoan();
    void loanBetweenTwoLooksIsSeen();
    void viewIsShownWhenOthersUsedUpTheNamesOfIndexes();
    void boxInUseAtTheStartIsTakenLater();
    void lastPictureStaysWhenTheViewIsLostWithTheBox();
    void boxInUseIsNotCalledEmpty();
    void textLongerThanItsEditorStaysWhole();
    void nameInAQuestionIsPlainText();
    void longNameInAQuestionIsCut();
    void undoBringsBackWhatWasChangedDuringTheQuestion();
    void tabulatorLeadsThroughTheForm();
    void namesFollowTheirParts_data();
    void namesFollowTheirParts();

private:
    QString write(const QString &text);
    QString import(ContactsPage &page, const QString &text);
    static QStringList names(const ContactsPage &page);
    /* Contacts with the names 10000 and so on. */
    static bool addMany(ContactsPage &page, int count);

    static void useUpIndexNames(const ContactsPage &page);

    QTemporaryDir m_folder;
};

void ContactsPageTest::init()
{
    removeBoxes();
}

QString ContactsPageTest::write(const QString &text)
{
    QFile file(m_folder.filePath(QStringLiteral("cards.vcf")));
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(text.toUtf8());
    return file.fileName();
}

QString ContactsPageTest::import(ContactsPage &page, const QString &text)
{
    CategoryTable table;
    return ContactImport(page.book(), &table, nullptr).run(write(text));
}

QStringList ContactsPageTest::names(const ContactsPage &page)
{
    return texts(page, 0);
}

bool ContactsPageTest::addMany(ContactsPage &page, int count)
{
    QList<Card> cards;
    for (int i = 10000; i < 10000 + count; ++i) {
        const QString name = QString::number(i);
        cards.append({{{AddressField::LastName, name},
                       {AddressField::FullName, name},
                       {AddressField::FullPronunciation, name}},
                      {}});
    }
    return page.book()->addAll(cards) != 0;
}

void ContactsPageTest::importedContactsComeByReading()
{
    CategoryTable table;
    ContactsPage page(&table);
    const QString report =
        import(page, card("渡辺", "一", "ワタナベ", "ハジメ") + card("Smith", "John", "", "") +
                         card("相川", "恵", "あいかわ", "めぐみ") + card("佐藤", "太郎", "サトウ", "タロウ") +
                         card("青木", "花子", "アオキ", "ハナコ"));
    QVERIFY2(report.startsWith(QLatin1String("5 contacts imported")), qPrintable(report));
    QCOMPARE(names(page), (QStringList{"Smith John", "相川 恵", "青木 花子", "佐藤 太郎", "渡辺 一"}));
    QCOMPARE(page.book()->text(page.book()->cardAt(3), AddressField::FullPronunciation),
             QString("サトウ タロウ"));
}

void ContactsPageTest::importTwiceDoublesNothing()
{
    CategoryTable table;
    ContactsPage page(&table);
    const QString cards = card("佐藤", "太郎", "サトウ", "タロウ") + card("青木", "花子", "アオキ", "ハナコ");
    import(page, cards);
    const QString report = import(page, cards + card("森", "圭", "モリ", "ケイ"));
    QVERIFY2(report.contains(QLatin1String("2 contacts were there already")), qPrintable(report));
    QVERIFY2(report.startsWith(QLatin1String("1 contact imported")), qPrintable(report));
    QCOMPARE(page.book()->count(), 3);
}

void ContactsPageTest::importKeepsWhatComesBeforeAndBehindABrokenCard()
{
    CategoryTable table;
    ContactsPage page(&table);
    const QString report =
        import(page, card("佐藤", "太郎", "サトウ", "タロウ") + "BEGIN:VCARD\r\nVERSION:3.0\r\nN:森;;;;\r\n" +
                         card("青木", "花子", "アオキ", "ハナコ"));
    QCOMPARE(page.book()->count(), 2);
    QVERIFY2(report.contains(QLatin1String("line 8")), qPrintable(report));
}

void ContactsPageTest::importOfAMissingFileSaysSo()
{
    CategoryTable table;
    ContactsPage page(&table);
    const QString path = m_folder.filePath(QStringLiteral("none.vcf"));
    const QString report = ContactImport(page.book(), &table, nullptr).run(path);
    QVERIFY2(report.contains(path) && report.contains(QLatin1String("can't be read")), qPrintable(report));
    QCOMPARE(page.book()->count(), 0);
}

void ContactsPageTest::importMakesCategoriesOfTheDevice()
{
    CategoryTable table;
    const int work = table.add(QStringLiteral("Work"));
    ContactsPage page(&table);
    import(page, cardIn("Ann", "Club,Work"));
    const unsigned long ann = page.book()->cardAt(0);
    QTRY_VERIFY_WITH_TIMEOUT(table.id(QStringLiteral("Club")) != 0, Patience);
    QCOMPARE(page.book()->categories(ann), (QList<int>{table.id(QStringLiteral("Club")), work}));
    QCOMPARE(page.book()->text(ann, AddressField::Groups), QString());
    page.showCategory(work);
    QCOMPARE(names(page), QStringList{"Ann"});
}

void ContactsPageTest::importKeepsCategoriesWithoutRoomInTheGroups()
{
    CategoryTable table;
    KyCategories categories;
    for (int i = 0; i < 245; ++i)
        QVERIFY(categories.addCategory(QString::number(i)) != 0);
    ContactsPage page(&table);
    import(page, cardIn("Ann", "Club,7,Work"));
    const unsigned long ann = page.book()->cardAt(0);
    QCOMPARE(page.book()->categories(ann), QList<int>{categories.id(QStringLiteral("7"))});
    QCOMPARE(page.book()->text(ann, AddressField::Groups), QString("Club, Work"));
    import(page, cardIn("Ann", "Club,7,Work"));
    QCOMPARE(page.book()->count(), 1);
}

void ContactsPageTest::importIsOneActionForFiveHundredCards()
{
    CategoryTable table;
    ContactsPage page(&table);
    QString text;
    for (int i = 0; i < 1250; ++i)
        text += cardIn(qPrintable(QString::number(i)), "Club");
    const QString file = write(text);
    committedActions = 0;
    ContactImport import(page.book(), &table, nullptr);
    import.run(file);
    QCOMPARE(page.book()->count(), 1250);
    QCOMPARE(committedActions, 3);
    QVERIFY(!wasActionInAction);
}

void ContactsPageTest::importShowsProgressFrom200Cards_data()
{
    QTest::addColumn<int>("cards");
    QTest::addColumn<bool>("shown");
    QTest::newRow("199") << 199 << false;
    QTest::newRow("200") << 200 << true;
}

void ContactsPageTest::importShowsProgressFrom200Cards()
{
    QFETCH(int, cards);
    QFETCH(bool, shown);
    QString text;
    for (int i = 0; i < cards; ++i)
        text += card("Smith", QByteArray::number(i).constData(), "", "");
    CategoryTable table;
    ContactsPage page(&table);
    page.show();
    ProgressWatcher watcher;
    ContactImport(page.book(), &table, &page).run(write(text));
    QCOMPARE(watcher.wasShown(), shown);
    QCOMPARE(page.book()->count(), cards);
}

void ContactsPageTest::newContactAppearsInItsPlace()
{
    CategoryTable table;
    ContactsPage page(&table);
    import(page, card("相川", "恵", "アイカワ", "メグミ") + card("渡辺", "一", "ワタナベ", "ハジメ"));
    page.newCard();
    type(page, "Last name", "佐藤");
    type(page, "First name", "太郎");
    type(page, "Last name, reading", "サトウ");
    type(page, "First name, reading", "タロウ");
    page.findChild<ContactForm *>()->save();
    QCOMPARE(names(page), (QStringList{"相川 恵", "佐藤 太郎", "渡辺 一"}));
    QCOMPARE(page.findChild<QTreeView *>()->currentIndex().row(), 1);
}

void ContactsPageTest::contactWithNothingIsRefused()
{
    CategoryTable table;
    ContactsPage page(&table);
    page.newCard();
    MessageRobot robot({QMessageBox::Ok});
    page.findChild<ContactForm *>()->save();
    QCOMPARE(robot.boxes().size(), 1);
    QCOMPARE(page.book()->count(), 0);
}

void ContactsPageTest::editMovesTheContact()
{
    CategoryTable table;
    ContactsPage page(&table);
    import(page, card("相川", "恵", "アイカワ", "メグミ") + card("渡辺", "一", "ワタナベ", "ハジメ"));
    page.selectRow(0);
    const unsigned long edited = page.book()->cardAt(0);
    page.editCard();
    type(page, "Last name", "和田");
    type(page, "Last name, reading", "ワダ");
    page.findChild<ContactForm *>()->save();
    QCOMPARE(names(page), (QStringList{"和田 恵", "渡辺 一"}));
    QCOMPARE(page.book()->rowOf(edited), 0);

    page.selectRow(0);
    page.editCard();
    type(page, "Last name, reading", "ワン");
    page.findChild<ContactForm *>()->save();
    QCOMPARE(names(page), (QStringList{"渡辺 一", "和田 恵"}));
}

void ContactsPageTest::editOfADeletedContactKeepsIt()
{
    CategoryTable table;
    ContactsPage page(&table);
    import(page, card("相川", "恵", "アイカワ", "メグミ"));
    page.selectRow(0);
    page.editCard();
    type(page, "Email", "a@example.org");
    QVERIFY(page.book()->remove(page.book()->cardAt(0)));
    page.findChild<ContactForm *>()->save();
    QCOMPARE(names(page), QStringList{"相川 恵"});
    QCOMPARE(page.book()->text(page.book()->cardAt(0), AddressField::DefaultEmail), QString("a@example.org"));
}

void ContactsPageTest::cancelAsksOnlyWhenSomethingWasTyped()
{
    CategoryTable table;
    ContactsPage page(&table);
    auto *form = page.findChild<ContactForm *>();
    QSignalSpy cancelled(form, &ContactForm::cancelled);
    page.newCard();
    MessageRobot robot({QMessageBox::Cancel, QMessageBox::Discard});
    form->cancel();
    QCOMPARE(robot.boxes().size(), 0);
    QCOMPARE(cancelled.count(), 1);

    page.newCard();
    type(page, "Last name", "佐藤");
    form->cancel();
    QCOMPARE(cancelled.count(), 1);
    form->cancel();
    QCOMPARE(robot.boxes().size(), 2);
    QCOMPARE(cancelled.count(), 2);
    QCOMPARE(page.book()->count(), 0);
}

void ContactsPageTest::deleteAsksAndUndoBringsBack()
{
    CategoryTable table;
    ContactsPage page(&table);
    import(page, card("相川", "恵", "アイカワ", "メグミ") + card("渡辺", "一", "ワタナベ", "ハジメ"));
    page.selectRow(0);
    MessageRobot robot({QMessageBox::No, QMessageBox::Yes});
    page.deleteCard();
    QCOMPARE(page.book()->count(), 2);
    page.deleteCard();
    QCOMPARE(names(page), QStringList{"渡辺 一"});
    QVERIFY(robot.boxes().value(1).text.contains(QString("相川 恵")));
    page.undoDelete();
    QCOMPARE(names(page), (QStringList{"相川 恵", "渡辺 一"}));
    page.undoDelete();
    QCOMPARE(page.book()->count(), 2);
}

void ContactsPageTest::deletingNothingDoesNothing()
{
    CategoryTable table;
    ContactsPage page(&table);
    MessageRobot robot;
    page.deleteCard();
    page.editCard();
    QCOMPARE(robot.boxes().size(), 0);
}

void ContactsPageTest::clickOnAHeaderSortsAndASecondOneTurns()
{
    enum { Name, Company, Phone };
    CategoryTable table;
    ContactsPage page(&table);
    page.resize(480, 640);
    page.show();
    const auto add = [&](const char *name, const char *company, const char *phone) {
        QVERIFY(page.book()->save(0, {{AddressField::FullName, name},
                                      {AddressField::FullPronunciation, name},
                                      {AddressField::Company, company},
                                      {AddressField::MobilePhone, phone}}) != 0);
    };
    add("a", "Y", "3");
    add("b", "Z", "2");
    add("c", "X", "1");
    const QHeaderView *header = page.findChild<QTreeView *>()->header();
    QCOMPARE(header->sortIndicatorSection(), int(Name));

    clickHeader(page, Company);
    QCOMPARE(names(page), (QStringList{"c", "a", "b"}));
    QCOMPARE(header->sortIndicatorSection(), int(Company));
    QCOMPARE(header->sortIndicatorOrder(), Qt::AscendingOrder);
    clickHeader(page, Company);
    QCOMPARE(names(page), (QStringList{"b", "a", "c"}));
    QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);
    clickHeader(page, Phone);
    QCOMPARE(names(page), (QStringList{"c", "b", "a"}));
    clickHeader(page, Name);
    QCOMPARE(names(page), (QStringList{"a", "b", "c"}));
    clickHeader(page, Name);
    QCOMPARE(names(page), (QStringList{"c", "b", "a"}));
}

void ContactsPageTest::menuSortsAsHeadersDo()
{
    CategoryTable table;
    ContactsPage page(&table);
    for (const char *company : {"Y", "Z", "X"})
        page.book()->save(0, {{AddressField::Company, company}});
    const auto sortBy = [&](const QString &title) {
        for (QAction *action : page.findChildren<QAction *>()) {
            if (action->text() == title)
                action->trigger();
        }
    };
    const QHeaderView *header = page.findChild<QTreeView *>()->header();
    sortBy("Company");
    QCOMPARE(texts(page, 1), (QStringList{"X", "Y", "Z"}));
    QCOMPARE(header->sortIndicatorOrder(), Qt::AscendingOrder);
    sortBy("Company");
    QCOMPARE(texts(page, 1), (QStringList{"Z", "Y", "X"}));
    QCOMPARE(header->sortIndicatorSection(), 1);
    QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);
    clickHeader(page, 1);
    QCOMPARE(texts(page, 1), (QStringList{"X", "Y", "Z"}));
}

void ContactsPageTest::orderOfAnEmptyBoxHoldsForItsFirstCards()
{
    CategoryTable table;
    ContactsPage page(&table);
    page.resize(480, 640);
    page.show();
    clickHeader(page, 1);
    for (const char *company : {"Z", "X", "Y"})
        page.book()->save(0, {{AddressField::Company, company}, {AddressField::FullPronunciation, "same"}});
    QCOMPARE(texts(page, 1), (QStringList{"X", "Y", "Z"}));
}

void ContactsPageTest::orderThatIsChosenWhileTheBoxIsLentHoldsAfterwards()
{
    CategoryTable table;
    ContactsPage page(&table);
    for (const char *company : {"Y", "Z", "X"})
        page.book()->save(0, {{AddressField::Company, company}, {AddressField::FullPronunciation, company}});
    auto *list = page.findChild<CardList *>();
    list->headerClicked(1);
    tellAll("closeFile(QString,QString)");
    QTRY_VERIFY_WITH_TIMEOUT(!page.book()->isAvailable(), Patience);
    QCOMPARE(list->header()->sortIndicatorSection(), 1);
    list->headerClicked(1); // by the menu: the list is disabled
    QCOMPARE(list->header()->sortIndicatorSection(), 1);
    tellAll("openFile(QString,QString)");
    QTRY_COMPARE_WITH_TIMEOUT(texts(page, 1), (QStringList{"Z", "Y", "X"}), Patience);
    QCOMPARE(list->header()->sortIndicatorSection(), 1);
    QCOMPARE(list->header()->sortIndicatorOrder(), Qt::DescendingOrder);
}

void ContactsPageTest::keysOfTheListDoNothingInTheForm()
{
    CategoryTable table;
    table.add(QStringLiteral("Club"));
    ContactsPage page(&table);
    import(page, card("相川", "恵", "アイカワ", "メグミ"));
    page.show();
    page.editCard();
    type(page, "Email", "a@example.org");
    MessageRobot robot;
    auto *box = filing(page).findChild<QComboBox *>();
    QTest::keyClick(box, Qt::Key_Delete);
    QTest::keyClick(box, Qt::Key_N, Qt::ControlModifier);
    QTest::keyClick(box, Qt::Key_F2);
    QCOMPARE(robot.boxes().size(), 0);
    QCOMPARE(page.book()->count(), 1);
    QVERIFY(page.findChild<CardForm *>()->isModified());
}

void ContactsPageTest::newContactIsFiledUnderTheShownCategory()
{
    CategoryTable table;
    const int club = table.add(QStringLiteral("Club"));
    ContactsPage page(&table);
    page.showCategory(club);
    page.newCard();
    QVERIFY(!page.findChild<CardForm *>()->isModified());
    type(page, "Last name", "Ann");
    page.findChild<CardForm *>()->save();
    QCOMPARE(names(page), QStringList{"Ann"});
    QCOMPARE(page.book()->categories(page.book()->cardAt(0)), QList<int>{club});
}

void ContactsPageTest::deletingLeavesTheListInItsPlace()
{
    CategoryTable table;
    ContactsPage page(&table);
    page.resize(480, 640);
    page.show();
    QVERIFY(addMany(page, 100));
    page.selectRow(50);
    const auto *list = page.findChild<QTreeView *>();
    const int place = list->verticalScrollBar()->value();
    MessageRobot robot({QMessageBox::Yes});
    page.deleteCard();
    QCOMPARE(names(page).value(50), QString("10051"));
    QCOMPARE(list->currentIndex().row(), 50);
    QCOMPARE(list->verticalScrollBar()->value(), place);
}

void ContactsPageTest::savingLeavesTheListInItsPlace()
{
    CategoryTable table;
    ContactsPage page(&table);
    page.resize(480, 640);
    page.show();
    QVERIFY(addMany(page, 100));
    page.selectRow(50);
    const auto *list = page.findChild<QTreeView *>();
    const int place = list->verticalScrollBar()->value();
    page.editCard();
    type(page, "Email", "a@example.org");
    page.findChild<ContactForm *>()->save();
    QCOMPARE(list->currentIndex().row(), 50);
    QCOMPARE(list->verticalScrollBar()->value(), place);
}

/* Whichever cell of the row was clicked, which isn't to be seen. */
void ContactsPageTest::lettersFindAName()
{
    CategoryTable table;
    ContactsPage page(&table);
    for (const char *name : {"Ann", "Bob", "Cid"})
        page.book()->save(0, {{AddressField::FullName, name},
                              {AddressField::FullPronunciation, name},
                              {AddressField::Company, "Acme"}});
    auto *list = page.findChild<QTreeView *>();
    list->setCurrentIndex(list->model()->index(0, 1));
    QTest::keyClick(list, Qt::Key_C);
    QCOMPARE(list->currentIndex().row(), 2);
}

void ContactsPageTest::lentBoxShowsItsLastPictureDisabled()
{
    CategoryTable table;
    ContactsPage page(&table);
    import(page, card("相川", "恵", "アイカワ", "メグミ"));
    page.show();
    const auto *list = page.findChild<QTreeView *>();
    QCOMPARE(names(page), QStringList{"相川 恵"});

    tellAll("closeFile(QString,QString)");
    QTRY_VERIFY(!page.book()->isAvailable());
    QTRY_VERIFY(!list->isEnabled());
    QCOMPARE(names(page), QStringList{"相川 恵"});
    QVERIFY(page.summary().startsWith(QLatin1String("In use by another application")));

    tellAll("openFile(QString,QString)");
    QTRY_VERIFY(list->isEnabled());
    QCOMPARE(names(page), QStringList{"相川 恵"});
}

/* They read more than the list keeps. */
void ContactsPageTest::lentBoxShowsItsLastPictureAfterLettersThatFindNothing()
{
    CategoryTable table;
    ContactsPage page(&table);
    QVERIFY(addMany(page, 2100));
    QVERIFY(showActive(page));
    QCOMPARE(names(page).first(), QString("10000"));
    auto *list = page.findChild<QTreeView *>();
    QTest::keyClick(list, Qt::Key_X);
    QTest::qWait(50); // the first key has all painted anew
    QTest::keyClick(list, Qt::Key_Y);
    tellAll("closeFile(QString,QString)");
    QTRY_VERIFY_WITH_TIMEOUT(!list->isEnabled(), Patience);
    QCOMPARE(list->indexAt({5, 5}).data().toString(), QString("10000"));
}

void ContactsPageTest::unchangedFormOfALentBoxLeavesItsLastPicture()
{
    CategoryTable table;
    ContactsPage page(&table);
    import(page, card("相川", "恵", "アイカワ", "メグミ"));
    page.show();
    QCOMPARE(names(page), QStringList{"相川 恵"});
    page.editCard();
    tellAll("closeFile(QString,QString)");
    QTRY_VERIFY_WITH_TIMEOUT(!page.book()->isAvailable(), Patience);
    page.findChild<ContactForm *>()->save();
    QVERIFY(!page.isEditing());
    QCOMPARE(names(page), QStringList{"相川 恵"});
}

void ContactsPageTest::listHasTheKeysAgainAfterALoan()
{
    CategoryTable table;
    ContactsPage page(&table);
    import(page, card("相川", "恵", "アイカワ", "メグミ"));
    QVERIFY(showActive(page));
    page.focusList();
    auto *list = page.findChild<QTreeView *>();
    tellAll("closeFile(QString,QString)");
    QTRY_VERIFY_WITH_TIMEOUT(!list->isEnabled(), Patience);
    tellAll("openFile(QString,QString)");
    QTRY_VERIFY_WITH_TIMEOUT(list->isEnabled(), Patience);
    QCOMPARE(page.focusWidget(), list);
}

void ContactsPageTest::searchKeepsTheKeysAfterALoan()
{
    CategoryTable table;
    ContactsPage page(&table);
    import(page, card("相川", "恵", "アイカワ", "メグミ"));
    QVERIFY(showActive(page));
    page.focusList();
    auto *list = page.findChild<QTreeView *>();
    tellAll("closeFile(QString,QString)");
    QTRY_VERIFY_WITH_TIMEOUT(!list->isEnabled(), Patience);
    auto *search = page.findChild<QLineEdit *>("search");
    search->setFocus();
    tellAll("openFile(QString,QString)");
    QTRY_VERIFY_WITH_TIMEOUT(list->isEnabled(), Patience);
    QCOMPARE(page.focusWidget(), search);
}

/* Too short for the timer that looks at the box. */
void ContactsPageTest::loanBetweenTwoLooksIsSeen()
{
    CategoryTable table;
    ContactsPage page(&table);
    import(page, card("相川", "恵", "アイカワ", "メグミ"));
    tellAll("closeFile(QString,QString)");
    QTRY_VERIFY(!page.book()->isAvailable());
    {
        KyPDataBase other("F0:KYADRS.BOX", KyPDataBase::addressbookItems(), nullptr, false);
        unsigned long added = 0;
        QVERIFY(other.editNewCard() && other.writeField(AddressField::FullName, QString("new")) &&
                other.finishEditCard(&added));
    }
    tellAll("openFile(QString,QString)");
    QTRY_COMPARE_WITH_TIMEOUT(names(page), (QStringList{"new", "相川 恵"}), Patience);
}

/* Another application sorts by many fields. */
void ContactsPageTest::useUpIndexNames(const ContactsPage &page)
{
    tellAll("closeFile(QString,QString)");
    QTRY_VERIFY_WITH_TIMEOUT(!page.book()->isAvailable(), Patience);
    {
        KyPDataBase other("F0:KYADRS.BOX", KyPDataBase::addressbookItems(), nullptr, false);
        for (int field = AddressField::CompanyPronunciation; field < AddressField::BusinessZip; ++field)
            QVERIFY(other.sortField(field, true));
    }
    const QDir boxes(QDir::homePath() + QLatin1String("/Applications/dtm"));
    QVERIFY(boxes.entryList({"ppinKYA*"}, QDir::Files).size() >= 9);
    tellAll("openFile(QString,QString)");
    QTRY_VERIFY_WITH_TIMEOUT(page.book()->isAvailable(), Patience);
}

void ContactsPageTest::viewIsShownWhenOthersUsedUpTheNamesOfIndexes()
{
    CategoryTable table;
    const int club = table.add(QStringLiteral("Club"));
    ContactsPage page(&table);
    page.book()->save(0, {{AddressField::FullName, "Ann"}}, QList<int>{club});
    page.book()->save(0, {{AddressField::FullName, "Bob"}}, QList<int>{club});
    useUpIndexNames(page);
    page.showCategory(club);
    page.search("n");
    QCOMPARE(names(page), QStringList{"Ann"});
    page.search("");
    QCOMPARE(names(page), (QStringList{"Ann", "Bob"}));
}

void ContactsPageTest::boxInUseAtTheStartIsTakenLater()
{
    {
        CategoryTable table;
        ContactsPage maker(&table);
        import(maker, card("相川", "恵", "アイカワ", "メグミ"));
    }
    const uint32_t holder = _BoxOpenRwMode("F0:KYADRS.BOX", 0);
    QVERIFY(holder != 0);
    CategoryTable table;
    ContactsPage page(&table);
    QVERIFY(!page.book()->isAvailable());
    QVERIFY(page.summary().startsWith(QLatin1String("In use by another application")));
    QVERIFY(page.book()->save(0, {{AddressField::LastName, "x"}}) == 0);
    _BoxClose(holder);
    QTRY_COMPARE(names(page), QStringList{"相川 恵"});
}

/* The view needs a new manager, and another application is quicker. */
void ContactsPageTest::lastPictureStaysWhenTheViewIsLostWithTheBox()
{
    CategoryTable table;
    const int club = table.add(QStringLiteral("Club"));
    ContactsPage page(&table);
    page.book()->save(0, {{AddressField::FullName, "Ann"}}, QList<int>{club});
    page.book()->save(0, {{AddressField::FullName, "Bob"}}, QList<int>{club});
    page.showCategory(club);
    QCOMPARE(names(page), (QStringList{"Ann", "Bob"}));
    isHeldElsewhere = hasNoIndexNames = true;
    page.search("n");
    const bool isLent = !page.book()->isAvailable();
    const QStringList picture = names(page);
    isHeldElsewhere = hasNoIndexNames = false;
    QVERIFY(isLent);
    QCOMPARE(picture, (QStringList{"Ann", "Bob"}));
    QTRY_COMPARE_WITH_TIMEOUT(names(page), QStringList{"Ann"}, Patience);
}

void ContactsPageTest::boxInUseIsNotCalledEmpty()
{
    CategoryTable table;
    QCOMPARE(ContactsPage(&table).findChild<CardList *>()->placeholder(), QString("No contacts yet"));
    isHeldElsewhere = true;
    const ContactsPage page(&table);
    const QString placeholder = page.findChild<CardList *>()->placeholder();
    isHeldElsewhere = false;
    QCOMPARE(placeholder, QString("In use by another application"));
}

void ContactsPageTest::textLongerThanItsEditorStaysWhole()
{
    CategoryTable table;
    ContactsPage page(&table);
    const QString company = QString(40000, u'c') + " end";
    const QString notes = QStringLiteral("12\u00A0km\r\nof road");
    const unsigned long ann = page.book()->save(
        0, {{AddressField::FullName, "Ann"}, {AddressField::Company, company}, {AddressField::Notes, notes}});
    QVERIFY(ann != 0);
    page.selectRow(0);
    page.editCard();
    type(page, "Email", "a@example.org");
    page.findChild<ContactForm *>()->save();
    QCOMPARE(page.book()->text(ann, AddressField::DefaultEmail), QString("a@example.org"));
    QVERIFY(page.book()->text(ann, AddressField::Company) == company);
    QCOMPARE(page.book()->text(ann, AddressField::Notes), notes);
}

void ContactsPageTest::nameInAQuestionIsPlainText()
{
    CategoryTable table;
    ContactsPage page(&table);
    page.book()->save(0, {{AddressField::FullName, "<b>Ann</b>"}});
    page.selectRow(0);
    Qt::TextFormat format = Qt::RichText;
    QTimer::singleShot(100, &page, [&format] {
        if (const auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget()))
            format = box->textFormat();
        QApplication::activeModalWidget()->close();
    });
    page.deleteCard();
    QCOMPARE(format, Qt::PlainText);
    QCOMPARE(page.book()->count(), 1);
}

void ContactsPageTest::longNameInAQuestionIsCut()
{
    CategoryTable table;
    ContactsPage page(&table);
    page.book()->save(0, {{AddressField::FullName, QString(2000, u'n') + "\nsecond line"}});
    page.selectRow(0);
    MessageRobot robot({QMessageBox::No});
    page.deleteCard();
    QCOMPARE(robot.boxes().value(0).text, "Delete " + QString(60, u'n') + QChar(0x2026) + "?");
}

void ContactsPageTest::undoBringsBackWhatWasChangedDuringTheQuestion()
{
    CategoryTable table;
    ContactsPage page(&table);
    const unsigned long ann = page.book()->save(0, {{AddressField::FullName, "Ann"}});
    page.selectRow(0);
    QTimer::singleShot(0, &page, [&] { page.book()->save(ann, {{AddressField::Notes, "new"}}); });
    QTimer::singleShot(100, &page, [] {
        const auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        box->button(QMessageBox::Yes)->click();
    });
    page.deleteCard();
    QCOMPARE(page.book()->count(), 0);
    page.undoDelete();
    QCOMPARE(page.book()->text(page.book()->cardAt(0), AddressField::Notes), QString("new"));
}

void ContactsPageTest::tabulatorLeadsThroughTheForm()
{
    CategoryTable table;
    ContactsPage page(&table);
    QVERIFY(showActive(page));
    page.newCard();
    page.findChild<QTabWidget *>()->setCurrentIndex(3);
    auto *notes = page.findChild<QPlainTextEdit *>();
    notes->setFocus();
    QTest::keyClick(notes, Qt::Key_Tab);
    QCOMPARE(notes->toPlainText(), QString());
    QCOMPARE(page.focusWidget(), filing(page).findChild<QComboBox *>());
}

void ContactsPageTest::namesFollowTheirParts_data()
{
    using Texts = CardValues;
    QTest::addColumn<Texts>("original");
    QTest::addColumn<Texts>("changed");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("reading");
    using namespace AddressField;
    const auto row = [](const char *what, const Texts &original, const Texts &changed, const char *name,
                        const char *reading) {
        QTest::newRow(what) << original << changed << QString::fromUtf8(name) << QString::fromUtf8(reading);
    };
    row("Japanese, last name first", {}, {{LastName, "佐藤"}, {FirstName, "太郎"}}, "佐藤 太郎", "佐藤 太郎");
    row("Western, first name first", {}, {{LastName, "Smith"}, {FirstName, "John"}}, "John Smith",
        "Smith John");
    row("title and suffix", {}, {{Title, "Dr."}, {LastName, "Smith"}, {Suffix, "Jr."}}, "Dr. Smith Jr.",
        "Smith");
    row("reading wins", {}, {{LastName, "佐藤"}, {LastPronunciation, "サトウ"}}, "佐藤", "サトウ");
    row("company alone", {}, {{Company, "Acme"}}, "Acme", "Acme");
    row("mail alone", {}, {{DefaultEmail, "a@example.org"}}, "a@example.org", "a@example.org");
    row("given name stays when a phone changes",
        {{FullName, "The Boss"}, {LastName, "Smith"}, {FullPronunciation, "B"}}, {{HomePhone, "1"}},
        "The Boss", "B");
    row("given name without parts stays when a mail address comes",
        {{FullName, "The Boss"}, {FullPronunciation, "B"}}, {{DefaultEmail, "a@example.org"}}, "The Boss",
        "B");
    row("given name without parts stays when the company changes",
        {{FullName, "The Boss"}, {FullPronunciation, "B"}, {Company, "Acme"}}, {{Company, "Example"}},
        "The Boss", "B");
    row("given name without parts goes when a last name comes",
        {{FullName, "The Boss"}, {FullPronunciation, "B"}}, {{LastName, "Jones"}}, "Jones", "Jones");
    row("composed name goes with its company",
        {{FullName, "Acme"}, {FullPronunciation, "Acme"}, {Company, "Acme"}}, {{Company, "Example"}},
        "Example", "Example");
    row("given name goes when the last name changes",
        {{FullName, "The Boss"}, {LastName, "Smith"}, {FullPronunciation, "B"}}, {{LastName, "Jones"}},
        "Jones", "Jones");
}

void ContactsPageTest::namesFollowTheirParts()
{
    QFETCH(CardValues, original);
    QFETCH(CardValues, changed);
    ContactNames::completeNames(changed, original);
    QTEST(changed.value(AddressField::FullName, original.value(AddressField::FullName)).toString(), "name");
    QTEST(changed.value(AddressField::FullPronunciation, original.value(AddressField::FullPronunciation))
              .toString(),
          "reading");
}

QTEST_MAIN(ContactsPageTest)
#include "contactspagetest.moc"
