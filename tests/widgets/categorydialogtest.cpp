#include "kycategorydialog.h"
#include "kycategoryedit_p.h"
#include "messagerobot.h"
#include "tablefixture.h"
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QtTest>

namespace {

constexpr auto Exists = "This category name is already exist.";
constexpr auto BadCharacters = "This category name has characters that can't be used.";

/** A dialog on the screen, with the keyboard. */
struct Asked
{
    explicit Asked(const QString &text = {}) : dialog(nullptr, "Add", "Type new category name", text, &edit)
    {
        dialog.show();
        dialog.activateWindow();
        if (!QTest::qWaitForWindowActive(&dialog))
            qFatal("the dialog isn't shown");
    }
    Q_DISABLE_COPY_MOVE(Asked)

    KyCategoryEditPrivate edit;
    KyCategoryDialog dialog;
    QLineEdit *line = dialog.findChild<QLineEdit *>();
    QLabel *prompt = dialog.findChild<QLabel *>();
    QDialogButtonBox *buttons = dialog.findChild<QDialogButtonBox *>();
};

void type(const Asked &asked, const QString &text)
{
    for (const QChar character : text)
        QTest::keyClick(asked.dialog.windowHandle(), character.toLatin1());
}

void press(const Asked &asked, Qt::Key key)
{
    QTest::keyClick(asked.dialog.windowHandle(), key);
}

} // namespace

class CategoryDialogTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanup();
    void geometryAtScale_data();
    void geometryAtScale();
    void nothingIsCutOff_data() { geometryAtScale_data(); }
    void nothingIsCutOff();
    void showsWhatItIsGiven();
    void lineHasTheFocusAndIsSelected();
    void promptIsPlainText();
    void nameIsLimitedTo48Characters();
    void characterCutAtTheLimitIsDropped();
    void enterAcceptsTheName();
    void escapeChangesNothing();
    void buttonsAcceptAndReject();
    void otherResultsCloseWithThem();
    void blanksAroundTheNameAreDropped();
    void emptyNameIsAccepted_data();
    void emptyNameIsAccepted();
    void takenNameIsRefusedAndKeepsItOpen_data();
    void takenNameIsRefusedAndKeepsItOpen();
    void unchangedNameOfARenamingIsRefused();
    void namesAreComparedInFull();
    void invalidNameIsRefused_data();
    void invalidNameIsRefused();
    void refusedNameMayBeCorrected();
};

void CategoryDialogTest::initTestCase()
{
    QVERIFY(makeTable());
    QVERIFY(KyCategories().addCategory("Business"));
    QVERIFY(KyCategories().addSystemCategory("System"));
}

void CategoryDialogTest::cleanup()
{
    qputenv("KY_DPI", "72");
}

void CategoryDialogTest::geometryAtScale_data()
{
    QTest::addColumn<QByteArray>("dpi");
    QTest::addColumn<int>("scale");
    QTest::newRow("scale 1") << QByteArray("72") << 1;
    QTest::newRow("scale 2") << QByteArray("144") << 2;
}

void CategoryDialogTest::geometryAtScale()
{
    QFETCH(QByteArray, dpi);
    QFETCH(int, scale);
    qputenv("KY_DPI", dpi);
    const Asked asked;
    QCOMPARE(asked.dialog.minimumSize(), QSize(200, 95) * scale);
    QCOMPARE(asked.dialog.maximumSize(), QSize(200, 95) * scale);
    QCOMPARE(asked.line->geometry(), QRect(10 * scale, 40 * scale, 180 * scale, 20 * scale));
}

void CategoryDialogTest::nothingIsCutOff()
{
    QFETCH(QByteArray, dpi);
    qputenv("KY_DPI", dpi);
    const Asked asked;
    QVERIFY(asked.prompt->heightForWidth(asked.prompt->width()) <= asked.prompt->height());
    QVERIFY(asked.line->fontMetrics().height() <= asked.line->contentsRect().height());
    const QSize buttons = asked.buttons->minimumSizeHint();
    QCOMPARE(buttons.boundedTo(asked.buttons->size()), buttons);
    QVERIFY(asked.dialog.rect().contains(asked.buttons->geometry()));
    QVERIFY(!asked.buttons->geometry().intersects(asked.line->geometry()));
    QVERIFY(!asked.prompt->geometry().intersects(asked.line->geometry()));
}

void CategoryDialogTest::showsWhatItIsGiven()
{
    QWidget parent;
    KyCategoryEditPrivate edit;
    const KyCategoryDialog dialog(&parent, "Rename", "Type category name", "Business", &edit);
    QCOMPARE(dialog.parentWidget(), &parent);
    QVERIFY(dialog.isModal());
    QCOMPARE(dialog.windowTitle(), "Rename");
    QCOMPARE(dialog.findChild<QLabel *>()->text(), "Type category name");
    QCOMPARE(dialog.findChild<QLineEdit *>()->text(), "Business");
    QCOMPARE(dialog.text(), "Business");
}

void CategoryDialogTest::lineHasTheFocusAndIsSelected()
{
    const Asked asked("old name");
    QVERIFY(asked.line->hasFocus());
    QCOMPARE(asked.line->selectedText(), "old name");
    type(asked, "new");
    QCOMPARE(asked.line->text(), "new");
}

void CategoryDialogTest::promptIsPlainText()
{
    KyCategoryEditPrivate edit;
    const KyCategoryDialog dialog(nullptr, "Add", "<b>&name</b>", {}, &edit);
    const auto *prompt = dialog.findChild<QLabel *>();
    QCOMPARE(prompt->textFormat(), Qt::PlainText);
}

void CategoryDialogTest::nameIsLimitedTo48Characters()
{
    const Asked asked;
    type(asked, QString(60, 'x'));
    press(asked, Qt::Key_Return);
    QCOMPARE(asked.dialog.text(), QString(48, 'x'));
}

void CategoryDialogTest::characterCutAtTheLimitIsDropped()
{
    const QString smile = QString::fromUtf8("\xF0\x9F\x98\x80");
    const MessageRobot robot;
    const Asked fitting;
    fitting.line->insert(QString(46, 'x') + smile);
    press(fitting, Qt::Key_Return);
    QCOMPARE(fitting.dialog.text(), QString(46, 'x') + smile);
    const Asked cut;
    cut.line->insert(QString(47, 'x') + smile);
    press(cut, Qt::Key_Return);
    QCOMPARE(cut.dialog.text(), QString(47, 'x'));
    QVERIFY(robot.boxes().isEmpty());
}

void CategoryDialogTest::enterAcceptsTheName()
{
    const Asked asked("Friend");
    type(asked, "Friends & <b>family");
    press(asked, Qt::Key_Return);
    QVERIFY(!asked.dialog.isVisible());
    QCOMPARE(asked.dialog.result(), 1);
    QCOMPARE(asked.dialog.text(), "Friends & <b>family");
}

void CategoryDialogTest::escapeChangesNothing()
{
    const MessageRobot robot;
    const Asked asked("old name");
    type(asked, "Business"); // would be refused
    press(asked, Qt::Key_Escape);
    QVERIFY(!asked.dialog.isVisible());
    QCOMPARE(asked.dialog.result(), 0);
    QCOMPARE(asked.dialog.text(), "old name");
    QVERIFY(robot.boxes().isEmpty());
}

void CategoryDialogTest::buttonsAcceptAndReject()
{
    const Asked accepted("old name");
    type(accepted, "new name");
    QTest::mouseClick(accepted.buttons->button(QDialogButtonBox::Ok), Qt::LeftButton);
    QCOMPARE(accepted.dialog.result(), 1);
    QCOMPARE(accepted.dialog.text(), "new name");

    const Asked rejected("old name");
    type(rejected, "new name");
    QTest::mouseClick(rejected.buttons->button(QDialogButtonBox::Cancel), Qt::LeftButton);
    QVERIFY(!rejected.dialog.isVisible());
    QCOMPARE(rejected.dialog.result(), 0);
    QCOMPARE(rejected.dialog.text(), "old name");
}

void CategoryDialogTest::otherResultsCloseWithThem()
{
    const MessageRobot robot;
    Asked asked("Business");
    asked.dialog.done(2);
    QVERIFY(!asked.dialog.isVisible());
    QCOMPARE(asked.dialog.result(), 2);
    QVERIFY(robot.boxes().isEmpty());
}

void CategoryDialogTest::blanksAroundTheNameAreDropped()
{
    const Asked asked;
    type(asked, "  two  words ");
    press(asked, Qt::Key_Return);
    QCOMPARE(asked.dialog.text(), "two  words");
}

void CategoryDialogTest::emptyNameIsAccepted_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << QString();
    QTest::newRow("blanks") << "   ";
}

void CategoryDialogTest::emptyNameIsAccepted()
{
    QFETCH(QString, text);
    const MessageRobot robot;
    const Asked asked;
    type(asked, text);
    press(asked, Qt::Key_Return);
    QCOMPARE(asked.dialog.result(), 1);
    QCOMPARE(asked.dialog.text(), QString(""));
    QVERIFY(robot.boxes().isEmpty());
}

void CategoryDialogTest::takenNameIsRefusedAndKeepsItOpen_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("all") << "All";
    QTest::newRow("unfiled") << "Unfiled";
    QTest::newRow("category") << "Business";
    QTest::newRow("system category") << "System";
    QTest::newRow("category with blanks") << "  Business ";
    QTest::newRow("all with blanks") << " All";
}

void CategoryDialogTest::takenNameIsRefusedAndKeepsItOpen()
{
    QFETCH(QString, name);
    const MessageRobot robot({QMessageBox::Ok});
    const Asked asked("old name");
    type(asked, name);
    asked.buttons->button(QDialogButtonBox::Ok)->setFocus();
    asked.buttons->button(QDialogButtonBox::Ok)->click();
    QCOMPARE(robot.boxes().size(), 1);
    const MessageRobot::Box box = robot.boxes().first();
    QCOMPARE(box.caption, "Error");
    QCOMPARE(box.text, Exists);
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.buttons, QMessageBox::Ok);
    QVERIFY(box.hasParent && box.hadAnswer);
    QVERIFY(asked.dialog.isVisible());
    QCOMPARE(asked.dialog.focusWidget(), asked.line);
    QCOMPARE(asked.line->selectedText(), name);
    QCOMPARE(asked.dialog.text(), "old name");
}

void CategoryDialogTest::unchangedNameOfARenamingIsRefused()
{
    const MessageRobot robot;
    const Asked asked("Business");
    press(asked, Qt::Key_Return);
    QCOMPARE(robot.boxes().value(0).text, Exists);
    QVERIFY(asked.dialog.isVisible());
}

void CategoryDialogTest::namesAreComparedInFull()
{
    const MessageRobot robot;
    for (const char *name : {"Busines", "Business 2", "business", "all", "unfiled"}) {
        const Asked asked;
        type(asked, name);
        press(asked, Qt::Key_Return);
        QCOMPARE(asked.dialog.result(), 1);
        QCOMPARE(asked.dialog.text(), name);
    }
    QVERIFY(robot.boxes().isEmpty());
}

void CategoryDialogTest::invalidNameIsRefused_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("control character") << QString("a\x01z");
    QTest::newRow("zero") << QString("a") + QChar(0) + "z";
    QTest::newRow("half a character") << QString("a") + QChar(0xD83D);
}

void CategoryDialogTest::invalidNameIsRefused()
{
    QFETCH(QString, name);
    const MessageRobot robot({QMessageBox::Ok});
    const Asked asked;
    asked.line->setText(name);
    press(asked, Qt::Key_Return);
    QCOMPARE(robot.boxes().size(), 1);
    QCOMPARE(robot.boxes().first().caption, "Error");
    QCOMPARE(robot.boxes().first().text, BadCharacters);
    QCOMPARE(robot.boxes().first().icon, QMessageBox::Warning);
    QVERIFY(asked.dialog.isVisible());
    QCOMPARE(asked.line->selectedText(), name);
}

void CategoryDialogTest::refusedNameMayBeCorrected()
{
    const MessageRobot robot;
    Asked asked;
    type(asked, "Business");
    press(asked, Qt::Key_Return);
    QVERIFY(asked.dialog.isVisible());
    asked.dialog.activateWindow(); // without a window manager nobody else does
    QVERIFY(QTest::qWaitForWindowActive(&asked.dialog));
    type(asked, "Business 2");
    press(asked, Qt::Key_Return);
    QVERIFY(!asked.dialog.isVisible());
    QCOMPARE(asked.dialog.text(), "Business 2");
    QCOMPARE(robot.boxes().size(), 1);
}

QTEST_MAIN(CategoryDialogTest)
#include "categorydialogtest.moc"
