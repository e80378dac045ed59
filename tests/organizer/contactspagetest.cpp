#include "contactspage.h"
#include "contactform.h"
#include "contactimport.h"
#include "contactnames.h"
#include "contactsmodel.h"

#include "addressfields.h"
#include "messagerobot.h"
#include "pdtm.h"

#include "qcopenvelope.h"

#include <QLabel>
#include <QLineEdit>
#include <QProgressDialog>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeView>

namespace {

const char Card[] = "BEGIN:VCARD\r\nVERSION:3.0\r\nN:%1;%2;;;\r\nFN:%1 %2\r\n"
                    "X-PHONETIC-LAST-NAME:%3\r\nX-PHONETIC-FIRST-NAME:%4\r\nEND:VCARD\r\n";

QString card(const char *last, const char *first, const char *lastReading, const char *firstReading)
{
    return QString::fromUtf8(Card).arg(QString::fromUtf8(last), QString::fromUtf8(first),
                                       QString::fromUtf8(lastReading), QString::fromUtf8(firstReading));
}

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

/* A message of the close protocol, as another application sends it. */
void tellAll(const char *message)
{
    QCopEnvelope envelope("QPE/System", message);
    envelope << QString("F0:KYADRS.BOX") << QString("other");
}

} // namespace

class ContactsPageTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void importedContactsComeByReading();
    void importTwiceDoublesNothing();
    void importKeepsWhatComesBeforeAndBehindABrokenCard();
    void importOfAMissingFileSaysSo();
    void importTellsOfCategories();
    void importShowsProgressFrom200Cards_data();
    void importShowsProgressFrom200Cards();
    void newContactAppearsInItsPlace();
    void contactWithNothingIsRefused();
    void editMovesTheContact();
    void editOfADeletedContactKeepsIt();
    void cancelAsksOnlyWhenSomethingWasTyped();
    void deleteAsksAndUndoBringsBack();
    void deletingNothingDoesNothing();
    void lentBoxShowsItsLastPictureDisabled();
    void boxInUseAtTheStartIsTakenLater();
    void namesFollowTheirParts_data();
    void namesFollowTheirParts();

private:
    QString write(const QString &text);
    QString import(ContactsPage &page, const QString &text);
    static QStringList names(const ContactsPage &page);
    static void type(ContactsPage &page, const QString &label, const QString &text);

    QTemporaryDir m_folder;
};

void ContactsPageTest::init()
{
    QDir boxes(QDir::homePath() + QLatin1String("/Applications/dtm"));
    for (const QString &file : boxes.entryList(QDir::Files))
        boxes.remove(file);
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
    return ContactImport(page.book(), nullptr).run(write(text));
}

QStringList ContactsPageTest::names(const ContactsPage &page)
{
    const QAbstractItemModel *model = page.findChild<QTreeView *>()->model();
    QStringList result;
    for (int row = 0; row < model->rowCount(); ++row)
        result.append(model->index(row, ContactsModel::Name).data().toString());
    return result;
}

/* Types into the field of the form that has this label. */
void ContactsPageTest::type(ContactsPage &page, const QString &label, const QString &text)
{
    const auto labels = page.findChild<ContactForm *>()->findChildren<QLabel *>();
    for (const QLabel *candidate : labels) {
        if (candidate->text() == label) {
            auto *line = qobject_cast<QLineEdit *>(candidate->buddy());
            QVERIFY(line);
            line->setText(text);
            return;
        }
    }
    QFAIL(qPrintable("no field " + label));
}

void ContactsPageTest::importedContactsComeByReading()
{
    ContactsPage page;
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
    ContactsPage page;
    const QString cards = card("佐藤", "太郎", "サトウ", "タロウ") + card("青木", "花子", "アオキ", "ハナコ");
    import(page, cards);
    const QString report = import(page, cards + card("森", "圭", "モリ", "ケイ"));
    QVERIFY2(report.contains(QLatin1String("2 contacts were there already")), qPrintable(report));
    QVERIFY2(report.startsWith(QLatin1String("1 contact imported")), qPrintable(report));
    QCOMPARE(page.book()->count(), 3);
}

void ContactsPageTest::importKeepsWhatComesBeforeAndBehindABrokenCard()
{
    ContactsPage page;
    const QString report =
        import(page, card("佐藤", "太郎", "サトウ", "タロウ") + "BEGIN:VCARD\r\nVERSION:3.0\r\nN:森;;;;\r\n" +
                         card("青木", "花子", "アオキ", "ハナコ"));
    QCOMPARE(page.book()->count(), 2);
    QVERIFY2(report.contains(QLatin1String("line 8")), qPrintable(report));
}

void ContactsPageTest::importOfAMissingFileSaysSo()
{
    ContactsPage page;
    const QString path = m_folder.filePath(QStringLiteral("none.vcf"));
    const QString report = ContactImport(page.book(), nullptr).run(path);
    QVERIFY2(report.contains(path) && report.contains(QLatin1String("can't be read")), qPrintable(report));
    QCOMPARE(page.book()->count(), 0);
}

void ContactsPageTest::importTellsOfCategories()
{
    ContactsPage page;
    import(page,
           QStringLiteral("BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Ann\r\nN:;Ann;;;\r\nCATEGORIES:Club,Work\r\n"
                          "END:VCARD\r\n"));
    QCOMPARE(page.book()->text(page.book()->cardAt(0), AddressField::Groups), QString("Club, Work"));
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
    ContactsPage page;
    page.show();
    ProgressWatcher watcher;
    ContactImport(page.book(), &page).run(write(text));
    QCOMPARE(watcher.wasShown(), shown);
    QCOMPARE(page.book()->count(), cards);
}

void ContactsPageTest::newContactAppearsInItsPlace()
{
    ContactsPage page;
    import(page, card("相川", "恵", "アイカワ", "メグミ") + card("渡辺", "一", "ワタナベ", "ハジメ"));
    page.newContact();
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
    ContactsPage page;
    page.newContact();
    MessageRobot robot({QMessageBox::Ok});
    page.findChild<ContactForm *>()->save();
    QCOMPARE(robot.boxes().size(), 1);
    QCOMPARE(page.book()->count(), 0);
}

void ContactsPageTest::editMovesTheContact()
{
    ContactsPage page;
    import(page, card("相川", "恵", "アイカワ", "メグミ") + card("渡辺", "一", "ワタナベ", "ハジメ"));
    page.selectRow(0);
    const unsigned long edited = page.book()->cardAt(0);
    page.editContact();
    type(page, "Last name", "和田");
    type(page, "Last name, reading", "ワダ");
    page.findChild<ContactForm *>()->save();
    QCOMPARE(names(page), (QStringList{"和田 恵", "渡辺 一"}));
    QCOMPARE(page.book()->rowOf(edited), 0);

    page.selectRow(0);
    page.editContact();
    type(page, "Last name, reading", "ワン");
    page.findChild<ContactForm *>()->save();
    QCOMPARE(names(page), (QStringList{"渡辺 一", "和田 恵"}));
}

void ContactsPageTest::editOfADeletedContactKeepsIt()
{
    ContactsPage page;
    import(page, card("相川", "恵", "アイカワ", "メグミ"));
    page.selectRow(0);
    page.editContact();
    type(page, "Email", "a@example.org");
    QVERIFY(page.book()->remove(page.book()->cardAt(0)));
    page.findChild<ContactForm *>()->save();
    QCOMPARE(names(page), QStringList{"相川 恵"});
    QCOMPARE(page.book()->text(page.book()->cardAt(0), AddressField::DefaultEmail), QString("a@example.org"));
}

void ContactsPageTest::cancelAsksOnlyWhenSomethingWasTyped()
{
    ContactsPage page;
    auto *form = page.findChild<ContactForm *>();
    QSignalSpy cancelled(form, &ContactForm::cancelled);
    page.newContact();
    MessageRobot robot({QMessageBox::Cancel, QMessageBox::Discard});
    form->cancel();
    QCOMPARE(robot.boxes().size(), 0);
    QCOMPARE(cancelled.count(), 1);

    page.newContact();
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
    ContactsPage page;
    import(page, card("相川", "恵", "アイカワ", "メグミ") + card("渡辺", "一", "ワタナベ", "ハジメ"));
    page.selectRow(0);
    MessageRobot robot({QMessageBox::No, QMessageBox::Yes});
    page.deleteContact();
    QCOMPARE(page.book()->count(), 2);
    page.deleteContact();
    QCOMPARE(names(page), QStringList{"渡辺 一"});
    QVERIFY(robot.boxes().value(1).text.contains(QString("相川 恵")));
    page.undoDelete();
    QCOMPARE(names(page), (QStringList{"相川 恵", "渡辺 一"}));
    page.undoDelete();
    QCOMPARE(page.book()->count(), 2);
}

void ContactsPageTest::deletingNothingDoesNothing()
{
    ContactsPage page;
    MessageRobot robot;
    page.deleteContact();
    page.editContact();
    QCOMPARE(robot.boxes().size(), 0);
}

void ContactsPageTest::lentBoxShowsItsLastPictureDisabled()
{
    ContactsPage page;
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

void ContactsPageTest::boxInUseAtTheStartIsTakenLater()
{
    {
        ContactsPage maker;
        import(maker, card("相川", "恵", "アイカワ", "メグミ"));
    }
    const uint32_t holder = _BoxOpenRwMode("F0:KYADRS.BOX", 0);
    QVERIFY(holder != 0);
    ContactsPage page;
    QVERIFY(!page.book()->isAvailable());
    QVERIFY(page.summary().startsWith(QLatin1String("In use by another application")));
    QVERIFY(page.book()->save(0, {{AddressField::LastName, "x"}}) == 0);
    _BoxClose(holder);
    QTRY_COMPARE(names(page), QStringList{"相川 恵"});
}

void ContactsPageTest::namesFollowTheirParts_data()
{
    using Texts = ContactTexts;
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
    row("given name goes when the last name changes",
        {{FullName, "The Boss"}, {LastName, "Smith"}, {FullPronunciation, "B"}}, {{LastName, "Jones"}},
        "Jones", "Jones");
}

void ContactsPageTest::namesFollowTheirParts()
{
    QFETCH(ContactTexts, original);
    QFETCH(ContactTexts, changed);
    ContactNames::completeNames(changed, original);
    QTEST(changed.value(AddressField::FullName, original.value(AddressField::FullName)), "name");
    QTEST(changed.value(AddressField::FullPronunciation, original.value(AddressField::FullPronunciation)),
          "reading");
}

QTEST_MAIN(ContactsPageTest)
#include "contactspagetest.moc"
