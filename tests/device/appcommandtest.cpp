#include "kymisc.h"
#include <QKeyEvent>
#include <QTest>

class AppCommandTest : public QObject
{
    Q_OBJECT
private slots:
    void commandOfAKey_data();
    void commandOfAKey();
    void commandOfAPressedKey();
};

void AppCommandTest::commandOfAKey_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("alone");
    QTest::addColumn<int>("withControl");
    const auto row = [](const char *name, int key, int alone, int withControl) {
        QTest::newRow(name) << key << alone << withControl;
    };
    row("C", Qt::Key_C, 0, 51);
    row("M", Qt::Key_M, 0, 2);
    row("N", Qt::Key_N, 0, 1);
    row("V", Qt::Key_V, 0, 52);
    row("X", Qt::Key_X, 0, 50);
    row("delete key", Qt::Key_Delete, 3, 3);
    row("delete key by its old number", 4103, 3, 3);
    row("8207", 8207, 5, 5);
    row("8208", 8208, 4, 4);
    for (int letter = Qt::Key_A; letter <= Qt::Key_Z; ++letter) {
        if (!QByteArray("CMNVX").contains(char(letter)))
            QTest::newRow(QByteArray(1, char(letter)).constData()) << letter << 0 << 0;
    }
    row("8206", 8206, 0, 0);
    row("8209", 8209, 0, 0);
    row("backspace", Qt::Key_Backspace, 0, 0);
    row("small c", 'c', 0, 0);
    row("no key", 0, 0, 0);
}

void AppCommandTest::commandOfAKey()
{
    QFETCH(int, key);
    QFETCH(int, alone);
    QFETCH(int, withControl);
    const auto command = [key](Qt::KeyboardModifiers modifiers) {
        return KyMisc::appCommandFromKey(QKeyEvent(QEvent::KeyPress, key, modifiers));
    };
    QCOMPARE(command(Qt::NoModifier), alone);
    QCOMPARE(command(Qt::ShiftModifier), alone);
    QCOMPARE(command(Qt::AltModifier | Qt::MetaModifier | Qt::KeypadModifier), alone);
    QCOMPARE(command(Qt::ControlModifier), withControl);
    QCOMPARE(command(Qt::ControlModifier | Qt::ShiftModifier), withControl);
}

/** Shows what the keys that it gets stand for. */
class CommandWidget : public QWidget
{
public:
    QList<int> commands;

protected:
    void keyPressEvent(QKeyEvent *event) override { commands.append(KyMisc::appCommandFromKey(*event)); }
};

void AppCommandTest::commandOfAPressedKey()
{
    CommandWidget widget;
    widget.show();
    QVERIFY(QTest::qWaitForWindowExposed(&widget));
    QTest::keyClick(&widget, Qt::Key_C, Qt::ControlModifier);
    QTest::keyClick(&widget, Qt::Key_C);
    QTest::keyClick(&widget, Qt::Key_Delete);
    QCOMPARE(widget.commands, QList<int>({0, 51, 0, 3})); // the control key comes first
}

QTEST_MAIN(AppCommandTest)
#include "appcommandtest.moc"
