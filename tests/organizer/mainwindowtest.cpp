#include "mainwindow.h"

#include "contactspage.h"
#include "manycontacts.h"
#include "memospage.h"
#include "samples.h"
#include "taskspage.h"
#include "tour.h"

#include "addressfields.h"
#include "messagerobot.h"
#include "pagefixture.h"

#include "qcopchannel.h"
#include "qpeapplication.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTemporaryDir>

/* The Organizer as a program of its own. */
class Organizer
{
public:
    explicit Organizer(const QStringList &arguments,
                       QProcess::ProcessChannelMode mode = QProcess::ForwardedErrorChannel)
    {
        m_process.setProcessChannelMode(mode);
        m_process.start(QStringLiteral(KY_ORGANIZER), arguments);
    }
    ~Organizer()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    /* Its exit code, -1 while it runs. */
    int ended(int limit)
    {
        const auto isOver = [this] { return m_process.state() == QProcess::NotRunning; };
        return QTest::qWaitFor(isOver, limit) ? m_process.exitCode() : -1;
    }
    QByteArray output() { return m_process.readAllStandardOutput(); }

private:
    QProcess m_process;
};

class MainWindowTest : public QObject
{
    Q_OBJECT
private slots:
    void init() { removeBoxes(); }
    void keysReachThePages();
    void listOfThePageInFrontHasTheKeys();
    void listThatWasLentBehindAnotherPageHasTheKeys();
    void closingAsksAboutAnUnsavedForm();
    void samplesFillEmptyBoxesOnly();
    void inventedContactsAreAsManyAsWanted();
    void inventedContactsFillAnEmptyBoxOnly();
    void contactsThatAreNotInventedAreToldOf();
    void numberOfInventedContactsIsChecked_data();
    void numberOfInventedContactsIsChecked();
    void tourShowsThousandsOfContacts();
    void tourShowsAllPages();
    void tourOfAnEmptyProfileShowsAllPages();
    void screenOfTheEnvironmentIsTaken();
    void secondStartEndsAndRaisesTheFirst();
    void secondStartImportsNothing();
    void otherNameIsAnotherApplication();
};

void MainWindowTest::keysReachThePages()
{
    MainWindow window;
    QVERIFY(showActive(window));
    const auto *tabs = window.findChild<QTabWidget *>();
    QTest::keyClick(&window, Qt::Key_2, Qt::ControlModifier);
    QCOMPARE(tabs->currentWidget(), window.tasks());
    QTest::keyClick(&window, Qt::Key_3, Qt::ControlModifier);
    QCOMPARE(tabs->currentWidget(), window.memos());
    QTest::keyClick(&window, Qt::Key_1, Qt::ControlModifier);
    QCOMPARE(tabs->currentWidget(), window.contacts());
}

void MainWindowTest::listOfThePageInFrontHasTheKeys()
{
    MainWindow window;
    QVERIFY(showActive(window));
    QTRY_COMPARE(window.focusWidget(), window.contacts()->findChild<QTreeView *>());
    QTest::keyClick(&window, Qt::Key_3, Qt::ControlModifier);
    QCOMPARE(window.focusWidget(), window.memos()->findChild<QTreeView *>());
    QTest::keyClick(&window, Qt::Key_2, Qt::ControlModifier);
    QCOMPARE(window.focusWidget(), window.tasks()->findChild<QTreeView *>());
}

void MainWindowTest::listThatWasLentBehindAnotherPageHasTheKeys()
{
    MainWindow window;
    QVERIFY(showActive(window));
    QTest::keyClick(&window, Qt::Key_2, Qt::ControlModifier);
    const auto *list = window.contacts()->findChild<QTreeView *>();
    tellAll("closeFile(QString,QString)");
    QTRY_VERIFY_WITH_TIMEOUT(!list->isEnabled(), Patience);
    QTest::keyClick(&window, Qt::Key_1, Qt::ControlModifier);
    QTRY_VERIFY_WITH_TIMEOUT(list->isEnabled(), Patience);
    QCOMPARE(window.focusWidget(), list);
}

void MainWindowTest::closingAsksAboutAnUnsavedForm()
{
    MainWindow window;
    window.show();
    window.memos()->newCard();
    window.tasks()->newCard();
    type(*window.tasks(), "Description", "typed");
    MessageRobot robot({QMessageBox::Cancel, QMessageBox::Discard});
    QVERIFY(!window.close());
    QVERIFY(window.tasks()->isVisible());
    QCOMPARE(editor(*window.tasks(), "Description")->text(), QString("typed"));
    QVERIFY(window.close());
    QCOMPARE(robot.boxes().size(), 2);
}

void MainWindowTest::samplesFillEmptyBoxesOnly()
{
    MainWindow window;
    QVERIFY(window.memos()->book()->save(0, {{MemoField::Title, "mine"}}) != 0);
    QVERIFY(addSamples(window));
    QCOMPARE(window.contacts()->book()->count(), 300);
    QCOMPARE(window.tasks()->book()->count(), 9);
    QCOMPARE(texts(*window.memos(), 0), QStringList{"mine"});
    QVERIFY(addSamples(window));
    QCOMPARE(window.contacts()->book()->count(), 300);
    QCOMPARE(window.tasks()->book()->count(), 9);
}

void MainWindowTest::inventedContactsAreAsManyAsWanted()
{
    CategoryTable table;
    const QList<Card> cards = manyContacts(1000, table);
    QCOMPARE(cards.size(), 1000);
    int readings = 0;
    for (const Card &card : cards) {
        const QString name = card.values.value(AddressField::FullName).toString();
        QVERIFY(name.contains(card.values.value(AddressField::FirstName).toString()));
        QVERIFY(name.contains(card.values.value(AddressField::LastName).toString()));
        QVERIFY(!card.values.value(AddressField::FullPronunciation).toString().isEmpty());
        readings += card.values.contains(AddressField::LastPronunciation);
        QCOMPARE(table.known(card.categories), card.categories);
    }
    QCOMPARE(readings, 500);
    QSet<QString> phones;
    for (const Card &card : cards)
        phones.insert(card.values.value(AddressField::MobilePhone).toString());
    QVERIFY2(phones.size() > 900, qPrintable(QString::number(phones.size())));
}

void MainWindowTest::inventedContactsFillAnEmptyBoxOnly()
{
    MainWindow window;
    QVERIFY(addSampleContacts(window, 20));
    QCOMPARE(window.contacts()->book()->count(), 20);
    QVERIFY(addSampleContacts(window, 30));
    QCOMPARE(window.contacts()->book()->count(), 20);
}

void MainWindowTest::contactsThatAreNotInventedAreToldOf()
{
    const QTemporaryDir folder;
    const QStringList options = {"--contacts", "20", "--tour", folder.path()};
    Organizer first(options, QProcess::MergedChannels);
    QCOMPARE(first.ended(60000), 0);
    QVERIFY(!first.output().contains("none were invented"));
    Organizer second(options, QProcess::MergedChannels);
    QCOMPARE(second.ended(60000), 0);
    QVERIFY(second.output().contains("there are contacts already; none were invented"));
}

void MainWindowTest::numberOfInventedContactsIsChecked_data()
{
    QTest::addColumn<QString>("number");
    for (const char *number : {"0", "-1", "50001", "many", "", "1.5"})
        QTest::newRow(*number ? number : "none") << number;
}

void MainWindowTest::numberOfInventedContactsIsChecked()
{
    QFETCH(QString, number);
    Organizer organizer({"--contacts=" + number});
    QCOMPARE(organizer.ended(30000), 2);
}

void MainWindowTest::tourShowsThousandsOfContacts()
{
    const QTemporaryDir folder;
    Organizer organizer({"--contacts", "5000", "--tour", folder.path()});
    QCOMPARE(organizer.ended(60000), 0);
    const QByteArray lines = organizer.output();
    QVERIFY2(lines.contains("contacts: 5000 contacts, from "), lines);
    QVERIFY2(lines.contains("contacts-middle: 5000 contacts, from "), lines);
    QVERIFY2(lines.contains("contacts-search: 2500 contacts, from "), lines);
}

void MainWindowTest::tourShowsAllPages()
{
    const QTemporaryDir folder;
    Organizer organizer({"--sample", "--tour", folder.path(), "--screen", "800x600"});
    QCOMPARE(organizer.ended(60000), 0);
    const QByteArray lines = organizer.output();
    for (const char *line :
         {"contacts: 300 contacts, from ", "contacts-category: Business: ", "contacts-search: 200 contacts",
          "tasks: 9 tasks, from ", "tasks-category: Business: 3 tasks", "memos: 5 memos, from ",
          "memos-category: Business: 1 memo, from Meeting notes", "categories: 9 categories",
          "  Desktop: 800 x 600 pixels, landscape"})
        QVERIFY2(lines.contains(line), lines);
    for (const char *page : {"contacts", "contact", "contacts-search", "tasks", "task", "memos", "memo",
                             "tasks-category", "categories"}) {
        const QImage picture(folder.filePath(QLatin1String(page) + ".png"));
        QCOMPARE(picture.size(), QSize(800, 600));
    }
}

void MainWindowTest::tourOfAnEmptyProfileShowsAllPages()
{
    const QTemporaryDir folder;
    Organizer organizer({"--tour", folder.path()});
    QCOMPARE(organizer.ended(60000), 0);
    const QByteArray lines = organizer.output();
    QVERIFY2(lines.contains("contacts: 0 contacts\n") && lines.contains("memos: 0 memos\n"), lines);
}

void MainWindowTest::screenOfTheEnvironmentIsTaken()
{
    const QTemporaryDir folder;
    qputenv("KY_SCREEN", "320x480");
    Organizer organizer({"--tour", folder.path()});
    qunsetenv("KY_SCREEN");
    QCOMPARE(organizer.ended(60000), 0);
    QVERIFY(organizer.output().contains("  Desktop: 320 x 480 pixels, portrait"));
    QCOMPARE(QImage(folder.filePath("settings.png")).width(), 320);
}

void MainWindowTest::secondStartEndsAndRaisesTheFirst()
{
    Organizer first({"--name", "one"});
    QTRY_VERIFY_WITH_TIMEOUT(QPEApplication::isRunning("one"), 30000);
    const QCopChannel channel("QPE/Application/one");
    QSignalSpy told(&channel, &QCopChannel::received);
    Organizer second({"--name", "one"});
    QCOMPARE(second.ended(30000), 0);
    QTRY_VERIFY_WITH_TIMEOUT(!told.isEmpty(), Patience);
    QCOMPARE(told[0][0].toByteArray(), QByteArray("raise()"));
    QCOMPARE(first.ended(0), -1);
}

void MainWindowTest::secondStartImportsNothing()
{
    Organizer first({"--name", "one"});
    QTRY_VERIFY_WITH_TIMEOUT(QPEApplication::isRunning("one"), 30000);
    Organizer importing({"--name", "one", "--import", "contacts.vcf"});
    QCOMPARE(importing.ended(30000), 1);
    Organizer sampling({"--name", "one", "--sample"});
    QCOMPARE(sampling.ended(30000), 1);
    Organizer filling({"--name", "one", "--contacts", "5"});
    QCOMPARE(filling.ended(30000), 1);
    QCOMPARE(first.ended(0), -1);
}

void MainWindowTest::otherNameIsAnotherApplication()
{
    Organizer first({"--name", "one"});
    QTRY_VERIFY_WITH_TIMEOUT(QPEApplication::isRunning("one"), 30000);
    Organizer second({"--name", "two"});
    QTRY_VERIFY_WITH_TIMEOUT(QPEApplication::isRunning("two"), 30000);
    QCOMPARE(first.ended(0), -1);
    QCOMPARE(second.ended(500), -1);
}

QTEST_MAIN(MainWindowTest)
#include "mainwindowtest.moc"
