#include "memospage.h"

#include "messagerobot.h"
#include "pagefixture.h"

#include <QPlainTextEdit>
#include <QTextBrowser>
#include <QToolButton>

namespace {

enum Column { Title, Changed };

} // namespace

class MemosPageTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void memosComeByTitle();
    void titleIsTheFirstLineWhenItIsLeftOut_data();
    void titleIsTheFirstLineWhenItIsLeftOut();
    void changeIsStampedWhenAMemoIsSaved();
    void openingAMemoDoesNotStampIt();
    void newestCanComeFirst();
    void memoWithNothingIsRefused();
    void memoWithoutATitleShowsItsFirstLine();
    void contentsAreShownAsText();
    void escapeLeavesTheForm();
    void tabulatorLeadsThroughTheForm();

private:
    void write(const QString &title, const QString &contents);

    std::unique_ptr<CategoryTable> m_table;
    std::unique_ptr<MemosPage> m_page;
};

void MemosPageTest::init()
{
    m_page.reset();
    m_table.reset();
    removeBoxes();
    m_table = std::make_unique<CategoryTable>();
    m_page = std::make_unique<MemosPage>(m_table.get());
    m_page->resize(480, 640);
    m_page->show();
}

/* Writes a memo as a user does. */
void MemosPageTest::write(const QString &title, const QString &contents)
{
    m_page->newCard();
    type(*m_page, "Title", title);
    editor<QPlainTextEdit>(*m_page, "Contents")->setPlainText(contents);
    m_page->findChild<CardForm *>()->save();
}

void MemosPageTest::memosComeByTitle()
{
    write("い", "");
    write("b", "");
    write("あ", "");
    QCOMPARE(texts(*m_page, Title), (QStringList{"b", "あ", "い"}));
}

void MemosPageTest::titleIsTheFirstLineWhenItIsLeftOut_data()
{
    QTest::addColumn<QString>("contents");
    QTest::addColumn<QString>("title");
    QTest::newRow("one line") << "milk"
                              << "milk";
    QTest::newRow("two lines") << "milk\nbread"
                               << "milk";
    QTest::newRow("empty lines before it") << "\n\n  milk  \nbread"
                                           << "milk";
    QTest::newRow("long line") << QString(100, 'x') << QString(60, 'x');
    QTest::newRow("character of two halves at the end")
        << QString(59, 'x') + QString::fromUtf8("𠮷") << QString(59, 'x');
}

void MemosPageTest::titleIsTheFirstLineWhenItIsLeftOut()
{
    QFETCH(QString, contents);
    write(" ", contents);
    QTEST(texts(*m_page, Title).value(0), "title");
    const unsigned long memo = m_page->book()->cardAt(0);
    QCOMPARE(m_page->book()->text(memo, MemoField::Contents), contents);
}

void MemosPageTest::changeIsStampedWhenAMemoIsSaved()
{
    const unsigned long memo = m_page->book()->save(
        0, {{MemoField::Title, "a"}, {MemoField::ChangeTime, QDateTime(QDate(2020, 1, 2), QTime(3, 4))}});
    QCOMPARE(texts(*m_page, Changed), QStringList{"2020/01/02 3:04 AM"});
    m_page->editCard();
    type(*m_page, "Title", "b");
    const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
    m_page->findChild<CardForm *>()->save();
    const QDateTime stamp = m_page->book()->value(memo, MemoField::ChangeTime).toDateTime();
    QVERIFY(stamp >= before && stamp <= QDateTime::currentDateTime());
}

void MemosPageTest::openingAMemoDoesNotStampIt()
{
    const QDateTime old(QDate(2020, 1, 2), QTime(3, 4));
    const unsigned long memo =
        m_page->book()->save(0, {{MemoField::Title, "a"}, {MemoField::ChangeTime, old}});
    m_page->editCard();
    m_page->findChild<CardForm *>()->save();
    QCOMPARE(m_page->book()->value(memo, MemoField::ChangeTime).toDateTime(), old);
}

void MemosPageTest::newestCanComeFirst()
{
    for (int year : {2021, 2023, 2022})
        m_page->book()->save(0, {{MemoField::Title, QString::number(year)},
                                 {MemoField::ChangeTime, QDate(year, 1, 1).startOfDay()}});
    clickHeader(*m_page, Changed);
    clickHeader(*m_page, Changed);
    QCOMPARE(texts(*m_page, Title), (QStringList{"2023", "2022", "2021"}));
}

void MemosPageTest::memoWithNothingIsRefused()
{
    MessageRobot robot({QMessageBox::Ok});
    write(" ", "\n \n");
    QCOMPARE(robot.boxes().size(), 1);
    QCOMPARE(m_page->book()->count(), 0);
}

void MemosPageTest::memoWithoutATitleShowsItsFirstLine()
{
    m_page->book()->save(0, {{MemoField::Contents, "from elsewhere\nmore"}});
    QCOMPARE(texts(*m_page, Title), QStringList{"from elsewhere"});
}

void MemosPageTest::contentsAreShownAsText()
{
    write("<b>title</b>", "<i>one</i>\ntwo & three");
    const QString shown = m_page->findChild<QTextBrowser *>()->toPlainText();
    QVERIFY2(shown.contains("<b>title</b>"), qPrintable(shown));
    QVERIFY2(shown.contains("<i>one</i>"), qPrintable(shown));
    QVERIFY2(shown.contains("two & three"), qPrintable(shown));
}

void MemosPageTest::escapeLeavesTheForm()
{
    m_page->newCard();
    auto *form = m_page->findChild<CardForm *>();
    QVERIFY(showActive(*m_page));
    QVERIFY(form->isVisible());
    QTest::keyClick(editor<QPlainTextEdit>(*m_page, "Contents"), Qt::Key_Escape);
    QVERIFY(!form->isVisible());
}

void MemosPageTest::tabulatorLeadsThroughTheForm()
{
    QVERIFY(showActive(*m_page));
    m_page->newCard();
    auto *contents = editor<QPlainTextEdit>(*m_page, "Contents");
    QCOMPARE(m_page->focusWidget(), contents);
    QTest::keyClick(contents, Qt::Key_Tab);
    QCOMPARE(m_page->focusWidget(), filing(*m_page).findChild<QComboBox *>());
    QTest::keyClick(m_page->focusWidget(), Qt::Key_Tab);
    QCOMPARE(m_page->focusWidget(), filing(*m_page).findChild<QToolButton *>());
    QTest::keyClick(m_page->focusWidget(), Qt::Key_Tab);
    const auto *button = qobject_cast<QPushButton *>(m_page->focusWidget());
    QVERIFY(button && button->text().contains("Save"));
    QCOMPARE(contents->toPlainText(), QString());
}

QTEST_MAIN(MemosPageTest)
#include "memospagetest.moc"
