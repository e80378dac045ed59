#include "postalpage.h"

#include "contactspage.h"
#include "kyzipconvertor.h"
#include "messagerobot.h"
#include "pagefixture.h"

#include <QClipboard>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

namespace {

QString etcFolder()
{
    return qEnvironmentVariable("KY_DEVICE_ROOT") + QLatin1String("/home/QtPalmtop/etc");
}

/* Puts the dictionary of all Japan into the device's internal storage. */
void installDictionary()
{
    QVERIFY(QDir().mkpath(etcFolder()));
    QVERIFY(QFile::link(QStringLiteral(KY_POSTAL_DICTIONARY), etcFolder() + QLatin1String("/yubin02.dat")));
}

void removeDictionary()
{
    QFile::remove(etcFolder() + QLatin1String("/yubin02.dat"));
}

/* True while this process has the dictionary open. */
bool hasDictionaryOpen()
{
    const QDir descriptors(QStringLiteral("/proc/self/fd"));
    for (const QFileInfo &descriptor : descriptors.entryInfoList(QDir::Files | QDir::System)) {
        if (descriptor.symLinkTarget().endsWith(QLatin1String("/yubin02.dat")))
            return true;
    }
    return false;
}

QString status(const PostalPage &page)
{
    return page.findChild<QLabel *>()->text();
}

QStringList rows(const PostalPage &page)
{
    const auto *list = page.findChild<KyAddressListBox *>();
    QStringList result;
    for (int row = 0; row < list->count(); ++row)
        result.append(list->item(row)->text());
    return result;
}

QPushButton *button(const QWidget &parent, const QString &text)
{
    for (auto *candidate : parent.findChildren<QPushButton *>()) {
        if (candidate->text().replace(QLatin1String("&&"), QLatin1String("&")) == text)
            return candidate;
    }
    return nullptr;
}

/* Presses a button of the convertor as soon as it is there. */
void pressInConvertor(const QString &text)
{
    auto *timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, qApp, [timer, text] {
        auto *convertor = qobject_cast<KyZIPConvertor *>(QApplication::activeModalWidget());
        if (!convertor || !convertor->isVisible())
            return;
        timer->deleteLater();
        button(*convertor, text)->click();
    });
    timer->start(5);
}

} // namespace

class PostalPageTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void pageWithoutADictionarySaysSo();
    void codeShowsItsPlaces_data();
    void codeShowsItsPlaces();
    void beginningOfACodeLeadsToTheFirstThatBeginsSo();
    void codeOfMoreThanSevenDigitsIsRefused();
    void codeBehindTheLastOfItsAreaSaysSo();
    void moreThanAreListedSaySo();
    void addressShowsItsCode_data();
    void addressShowsItsCode();
    void addressOfAStreetShowsItsCode();
    void addressWithSeveralCodesListsThem();
    void addressThatFitsNothingSaysSo();
    void everyKeyPressSearches();
    void neighboursAreWalkedBothWays();
    void lowestCodeHasNoneBefore();
    void rowIsCopied();
    void copiedRowIsFoundAgain_data();
    void copiedRowIsFoundAgain();
    void keysGoFromTheLineToTheListAndCopy();
    void tabFollowsTheLayout();
    void readersTellTheNames();
    void cardWithTheDictionaryMayBeTakenOut();
    void dictionaryThatArrivesLaterIsUsedWhenThePageIsShownAgain();
    void codeFillsTheAddressOfTheForm();
    void addressFillsTheCodeOfTheForm();
    void tabOfTheFormGoesFromTheAddressToItsButtons();
    void addressThatIsThereIsNotWrittenTwice_data();
    void addressThatIsThereIsNotWrittenTwice();
    void formKeepsWhatTheUserDoesNotTake();
    void formWithoutADictionarySaysSo();
    void formWithACodeThatIsNoneSaysSo();
};

void PostalPageTest::init()
{
    removeBoxes();
    installDictionary();
}

void PostalPageTest::cleanup()
{
    removeDictionary();
}

void PostalPageTest::pageWithoutADictionarySaysSo()
{
    removeDictionary();
    PostalPage page;
    QVERIFY(showActive(page));
    page.search(QStringLiteral("1000001"));
    QCOMPARE(status(page), QStringLiteral("A postal code dictionary isn't found."));
    QVERIFY(rows(page).isEmpty());
}

void PostalPageTest::codeShowsItsPlaces_data()
{
    QTest::addColumn<QString>("typed");
    for (const char *typed :
         {"1000001", "100-0001", "〒100-0001", " 100 0001 ", "１００−０００１", "〒１００－０００１"})
        QTest::newRow(typed) << QString::fromUtf8(typed);
}

void PostalPageTest::codeShowsItsPlaces()
{
    QFETCH(QString, typed);
    PostalPage page;
    QVERIFY(showActive(page));
    page.search(typed);
    QCOMPARE(rows(page), QStringList(QStringLiteral("東京都千代田区千代田")));
    QCOMPARE(status(page), QStringLiteral("100-0001: 1 place"));
}

void PostalPageTest::beginningOfACodeLeadsToTheFirstThatBeginsSo()
{
    PostalPage page;
    QVERIFY(showActive(page));
    page.search(QStringLiteral("100"));
    QCOMPARE(status(page), QStringLiteral("100-0000: 1 place"));
    page.search(QStringLiteral("1000007"));
    QCOMPARE(status(page), QStringLiteral("There is no 100-0007. The code behind it is 100-0011: 1 place"));
}

void PostalPageTest::codeOfMoreThanSevenDigitsIsRefused()
{
    PostalPage page;
    QVERIFY(showActive(page));
    page.search(QStringLiteral("100-00012"));
    QCOMPARE(status(page), QStringLiteral("A postal code has seven digits."));
    QVERIFY(rows(page).isEmpty());
    QVERIFY(!button(page, QStringLiteral("Next code"))->isEnabled());
}

void PostalPageTest::codeBehindTheLastOfItsAreaSaysSo()
{
    PostalPage page;
    QVERIFY(showActive(page));
    page.search(QStringLiteral("100-9999"));
    QCOMPARE(status(page), QStringLiteral("There is no 100-9999. Its area begins with 100-0000: 1 place"));
    page.search(QStringLiteral("9999999"));
    QCOMPARE(status(page), QStringLiteral("There is no 999-9999. Its area begins with 999-0100: 1 place"));
}

void PostalPageTest::moreThanAreListedSaySo()
{
    PostalPage page;
    QVERIFY(showActive(page));
    page.search(QStringLiteral("452-0961"));
    QCOMPARE(rows(page).size(), 20);
    QCOMPARE(status(page), QStringLiteral("452-0961: 20 places or more"));
}

void PostalPageTest::addressShowsItsCode_data()
{
    QTest::addColumn<QString>("typed");
    for (const char *typed : {"東京都千代田区永田町１－７－１", "東京都 千代田区 永田町1-7-1",
                              "千代田区永田町", "　東京都千代田区　永田町 1丁目 "})
        QTest::newRow(typed) << QString::fromUtf8(typed);
}

void PostalPageTest::addressShowsItsCode()
{
    QFETCH(QString, typed);
    PostalPage page;
    QVERIFY(showActive(page));
    page.search(typed);
    QCOMPARE(rows(page), QStringList(QStringLiteral("東京都千代田区永田町")));
    QCOMPARE(status(page), QStringLiteral("100-0014: 1 place"));
}

void PostalPageTest::addressOfAStreetShowsItsCode()
{
    PostalPage page;
    QVERIFY(showActive(page));
    page.search(QStringLiteral("京都市中京区烏丸通三条上ル場之町"));
    QCOMPARE(status(page), QStringLiteral("604-8172: 1 place"));
    QCOMPARE(rows(page).size(), 1);
    QVERIFY(rows(page).first().contains(QStringLiteral("京都府京都市中京区場之町")));
}

void PostalPageTest::addressWithSeveralCodesListsThem()
{
    PostalPage page;
    QVERIFY(showActive(page));
    page.search(QStringLiteral("札幌市中央区大通西"));
    QCOMPARE(status(page), QStringLiteral("2 places with several codes"));
    QCOMPARE(rows(page).size(), 2);
    QVERIFY(rows(page).at(0).startsWith(QLatin1String("060-0042 ")));
    QVERIFY(rows(page).at(1).startsWith(QLatin1String("064-0820 ")));
    QVERIFY(!button(page, QStringLiteral("Next code"))->isEnabled());
}

void PostalPageTest::addressThatFitsNothingSaysSo()
{
    PostalPage page;
    QVERIFY(showActive(page));
    for (const char *typed : {"どこにもない所", "abc", "あ", "\U0001F600"}) {
        page.search(QString::fromUtf8(typed));
        QCOMPARE(status(page), QStringLiteral("No place fits this address."));
        QVERIFY(rows(page).isEmpty());
    }
}

void PostalPageTest::everyKeyPressSearches()
{
    PostalPage page;
    QVERIFY(showActive(page));
    auto *line = page.findChild<QLineEdit *>();
    QTest::keyClicks(line, "10000");
    QCOMPARE(status(page), QStringLiteral("100-0000: 1 place"));
    QTest::keyClicks(line, "01");
    QCOMPARE(status(page), QStringLiteral("100-0001: 1 place"));
    QTest::keyClick(line, Qt::Key_Backspace);
    QCOMPARE(status(page), QStringLiteral("100-0000: 1 place"));
}

void PostalPageTest::neighboursAreWalkedBothWays()
{
    PostalPage page;
    QVERIFY(showActive(page));
    page.search(QStringLiteral("100-0006"));
    QTest::mouseClick(button(page, QStringLiteral("Next code")), Qt::LeftButton);
    QCOMPARE(status(page), QStringLiteral("100-0011: 1 place"));
    QTest::keyClick(page.focusWidget(), Qt::Key_Left, Qt::AltModifier);
    QTRY_COMPARE(status(page), QStringLiteral("100-0006: 1 place"));
}

void PostalPageTest::lowestCodeHasNoneBefore()
{
    PostalPage page;
    QVERIFY(showActive(page));
    page.search(QStringLiteral("001-0000"));
    const QStringList before = rows(page);
    page.goToPrevious();
    QCOMPARE(rows(page), before);
    QCOMPARE(status(page), QStringLiteral("001-0000: 1 place"));
}

void PostalPageTest::rowIsCopied()
{
    PostalPage page;
    QVERIFY(showActive(page));
    page.search(QStringLiteral("1000001"));
    QTest::mouseClick(button(page, QStringLiteral("Copy")), Qt::LeftButton);
    QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("〒100-0001 東京都千代田区千代田"));
}

void PostalPageTest::copiedRowIsFoundAgain_data()
{
    QTest::addColumn<QString>("typed");
    for (const char *typed : {"〒100-0001 東京都千代田区千代田", "〒１００－０００１　東京都千代田区千代田",
                              "100-0001 東京都千代田区千代田", "1000001東京都千代田区千代田１－１"})
        QTest::newRow(typed) << QString::fromUtf8(typed);
}

void PostalPageTest::copiedRowIsFoundAgain()
{
    QFETCH(QString, typed);
    PostalPage page;
    QVERIFY(showActive(page));
    page.search(typed);
    QCOMPARE(status(page), QStringLiteral("100-0001: 1 place"));
}

void PostalPageTest::keysGoFromTheLineToTheListAndCopy()
{
    PostalPage page;
    QVERIFY(showActive(page));
    auto *line = page.findChild<QLineEdit *>();
    auto *list = page.findChild<KyAddressListBox *>();
    QCOMPARE(page.focusWidget(), line);
    QTest::keyClick(line, Qt::Key_Down); // nothing to go to
    QCOMPARE(page.focusWidget(), line);
    page.search(QStringLiteral("札幌市中央区大通西"));
    QTest::keyClick(line, Qt::Key_Down);
    QCOMPARE(page.focusWidget(), list);
    QCOMPARE(list->currentRow(), 0);
    QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Return);
    QCOMPARE(QApplication::clipboard()->text(),
             QStringLiteral("〒064-0820 北海道札幌市中央区大通西（２０～２８丁目）"));
}

void PostalPageTest::tabFollowsTheLayout()
{
    PostalPage page;
    QVERIFY(showActive(page));
    page.search(QStringLiteral("1000001"));
    const QList<QWidget *> order = {page.findChild<QLineEdit *>(), page.findChild<KyAddressListBox *>(),
                                    button(page, QStringLiteral("Previous code")),
                                    button(page, QStringLiteral("Next code")),
                                    button(page, QStringLiteral("Copy"))};
    for (QWidget *widget : order) {
        QCOMPARE(page.focusWidget(), widget);
        QTest::keyClick(widget, Qt::Key_Tab);
    }
}

void PostalPageTest::readersTellTheNames()
{
    const PostalPage page;
    QCOMPARE(page.findChild<QLineEdit *>()->accessibleName(), QStringLiteral("Postal code or address"));
    QCOMPARE(page.findChild<KyAddressListBox *>()->accessibleName(), QStringLiteral("Places found"));
}

void PostalPageTest::cardWithTheDictionaryMayBeTakenOut()
{
    PostalPage page;
    QVERIFY(showActive(page));
    page.search(QStringLiteral("1000001"));
    QCOMPARE(rows(page).size(), 1);
    QVERIFY(!hasDictionaryOpen()); // the card could not be unmounted
    removeDictionary();
    page.goToNext();
    QCOMPARE(status(page), QStringLiteral("100-0001: 1 place"));
    page.search(QStringLiteral("1000002"));
    QCOMPARE(status(page), QStringLiteral("A postal code dictionary isn't found."));
    QVERIFY(rows(page).isEmpty());
}

void PostalPageTest::dictionaryThatArrivesLaterIsUsedWhenThePageIsShownAgain()
{
    removeDictionary();
    PostalPage page;
    page.search(QStringLiteral("1000001"));
    QVERIFY(showActive(page));
    page.hide();
    installDictionary();
    QVERIFY(showActive(page));
    QCOMPARE(status(page), QStringLiteral("100-0001: 1 place"));
}

void PostalPageTest::codeFillsTheAddressOfTheForm()
{
    CategoryTable table;
    ContactsPage page(&table);
    QVERIFY(showActive(page));
    page.newCard();
    type(page, QStringLiteral("Postal code"), QStringLiteral("1000001"));
    pressInConvertor(QStringLiteral("Adr & ZIP"));
    button(page, QStringLiteral("Find address"))->click();
    QCOMPARE(editor(page, QStringLiteral("Postal code"))->text(), QStringLiteral("100-0001"));
    QCOMPARE(editor(page, QStringLiteral("State"))->text(), QStringLiteral("東京都"));
    QCOMPARE(editor(page, QStringLiteral("City"))->text(), QStringLiteral("千代田区千代田"));
}

void PostalPageTest::addressFillsTheCodeOfTheForm()
{
    CategoryTable table;
    ContactsPage page(&table);
    QVERIFY(showActive(page));
    page.newCard();
    type(page, QStringLiteral("State"), QStringLiteral("東京都"));
    type(page, QStringLiteral("City"), QStringLiteral("千代田区"));
    type(page, QStringLiteral("Street"), QStringLiteral("永田町1-7-1"));
    pressInConvertor(QStringLiteral("ZIP"));
    button(page, QStringLiteral("Find code"))->click();
    QCOMPARE(editor(page, QStringLiteral("Postal code"))->text(), QStringLiteral("100-0014"));
    QCOMPARE(editor(page, QStringLiteral("City"))->text(), QStringLiteral("千代田区"));
    QCOMPARE(editor(page, QStringLiteral("Street"))->text(), QStringLiteral("永田町1-7-1"));
}

void PostalPageTest::tabOfTheFormGoesFromTheAddressToItsButtons()
{
    CategoryTable table;
    ContactsPage page(&table);
    QVERIFY(showActive(page));
    page.newCard();
    auto *street = editor(page, QStringLiteral("Street"));
    auto *country = editor(page, QStringLiteral("Country"));
    auto *tabs = page.findChild<CardForm *>()->findChild<QTabWidget *>();
    while (!street->isVisible() && tabs->currentIndex() + 1 < tabs->count())
        tabs->setCurrentIndex(tabs->currentIndex() + 1);
    street->setFocus();
    for (const char *text : {"Find address", "Find code"}) {
        QTest::keyClick(page.focusWidget(), Qt::Key_Tab);
        const auto *focused = qobject_cast<QPushButton *>(page.focusWidget());
        QVERIFY(focused);
        QCOMPARE(focused->text(), QString::fromLatin1(text));
    }
    QTest::keyClick(page.focusWidget(), Qt::Key_Tab);
    QCOMPARE(page.focusWidget(), country);
}

void PostalPageTest::addressThatIsThereIsNotWrittenTwice_data()
{
    QTest::addColumn<QStringList>("lines"); // state, city, street
    QTest::addColumn<QStringList>("filled");
    QTest::newRow("town in the street") << QStringList{"東京都", "千代田区", "永田町1-7-1"}
                                        << QStringList{"東京都", "千代田区", "永田町1-7-1"};
    QTest::newRow("no state") << QStringList{"", "千代田区", "永田町1-7-1"}
                              << QStringList{"東京都", "千代田区", "永田町1-7-1"};
    QTest::newRow("all in one line") << QStringList{"", "", "東京都 千代田区 永田町1-7-1"}
                                     << QStringList{"", "", "東京都 千代田区 永田町1-7-1"};
    QTest::newRow("with a blank") << QStringList{"東京都", "千代田区 永田町", "1-7-1"}
                                  << QStringList{"東京都", "千代田区 永田町", "1-7-1"};
    QTest::newRow("spelled otherwise") << QStringList{"東京都", "千代田区霞ヶ関", "1-1-1"}
                                       << QStringList{"東京都", "千代田区霞が関", "1-1-1"};
}

void PostalPageTest::addressThatIsThereIsNotWrittenTwice()
{
    QFETCH(QStringList, lines);
    QFETCH(QStringList, filled);
    const QString code =
        filled[1].contains(QStringLiteral("霞")) ? QStringLiteral("100-0013") : QStringLiteral("100-0014");
    const QStringList labels = {"State", "City", "Street"};
    CategoryTable table;
    ContactsPage page(&table);
    QVERIFY(showActive(page));
    page.newCard();
    for (int i = 0; i < labels.size(); ++i)
        type(page, labels[i], lines[i]);
    pressInConvertor(QStringLiteral("Adr & ZIP"));
    button(page, QStringLiteral("Find code"))->click();
    QCOMPARE(editor(page, QStringLiteral("Postal code"))->text(), code);
    for (int i = 0; i < labels.size(); ++i)
        QCOMPARE(editor(page, labels[i])->text(), filled[i]);
}

void PostalPageTest::formKeepsWhatTheUserDoesNotTake()
{
    CategoryTable table;
    ContactsPage page(&table);
    QVERIFY(showActive(page));
    page.newCard();
    type(page, QStringLiteral("Postal code"), QStringLiteral("1000001"));
    type(page, QStringLiteral("City"), QStringLiteral("as typed"));
    pressInConvertor(QStringLiteral("ZIP"));
    button(page, QStringLiteral("Find address"))->click();
    QCOMPARE(editor(page, QStringLiteral("City"))->text(), QStringLiteral("as typed"));
    QCOMPARE(editor(page, QStringLiteral("State"))->text(), QString());
}

void PostalPageTest::formWithoutADictionarySaysSo()
{
    removeDictionary();
    CategoryTable table;
    ContactsPage page(&table);
    QVERIFY(showActive(page));
    page.newCard();
    type(page, QStringLiteral("Postal code"), QStringLiteral("1000001"));
    MessageRobot robot({QMessageBox::Ok});
    button(page, QStringLiteral("Find address"))->click();
    QCOMPARE(robot.boxes().size(), 1);
    QCOMPARE(robot.boxes().first().text, QStringLiteral("A postal code dictionary\nisn't found."));
}

void PostalPageTest::formWithACodeThatIsNoneSaysSo()
{
    CategoryTable table;
    ContactsPage page(&table);
    QVERIFY(showActive(page));
    page.newCard();
    type(page, QStringLiteral("Postal code"), QStringLiteral("none"));
    MessageRobot robot({QMessageBox::Ok});
    button(page, QStringLiteral("Find address"))->click();
    QCOMPARE(robot.boxes().size(), 1);
    QCOMPARE(robot.boxes().first().text,
             QStringLiteral("There is a mistake\nin the input of the postal code."));
    QCOMPARE(editor(page, QStringLiteral("Postal code"))->text(), QStringLiteral("none"));
}

QTEST_MAIN(PostalPageTest)
#include "postalpagetest.moc"
