#include "childprocess.h"
#include "logcapture.h"
#include "messagerobot.h"
#include <csignal>
#include <QtTest>

namespace {

/** Says its arguments, then each line of its input; returns 7 at the end of input. */
int childMain(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    ChildProcess::say(QByteArray(argv[1]) + '|' + QByteArray(argv[2]) + '|' + qgetenv("KY_FIXTURE"));
    ChildInput input([](const QByteArray &line) {
        if (line == "die")
            ::raise(SIGKILL);
        ChildProcess::say("heard " + line);
    });
    QCoreApplication::exec();
    return 7;
}

} // namespace

/** Checks what other tests rely on. */
class FixtureTest : public QObject
{
    Q_OBJECT
private slots:
    void childTalksAndEnds();
    void deadChildIsSeen();
    void robotAnswersInTurn();
    void robotUsesEscape();
    void logIsCollected();
};

void FixtureTest::childTalksAndEnds()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("KY_FIXTURE", "set");
    ChildProcess child({"role", "argument"}, environment);
    QCOMPARE(child.readLine(), QByteArray("role|argument|set"));
    child.write("abc");
    child.write("xyz");
    QCOMPARE(child.readLine(), QByteArray("heard abc"));
    QCOMPARE(child.readLine(), QByteArray("heard xyz"));
    QVERIFY(child.readLine(50).isNull());
    QVERIFY(child.isRunning());
    QCOMPARE(child.finish(), 7);
}

void FixtureTest::deadChildIsSeen()
{
    ChildProcess child({"role", ""});
    QVERIFY(!child.readLine().isNull());
    child.write("die");
    QCOMPARE(child.finish(), -1);
}

void FixtureTest::robotAnswersInTurn()
{
    MessageRobot robot({QMessageBox::Yes});
    robot.answer(QMessageBox::Cancel);
    QWidget parent;
    const auto buttons = QMessageBox::Yes | QMessageBox::No;
    QCOMPARE(QMessageBox::warning(&parent, "Caption", "First", buttons, QMessageBox::No), QMessageBox::Yes);
    QVERIFY(QMessageBox::critical(nullptr, "Caption", "Second", buttons) != QMessageBox::Cancel);
    QCOMPARE(robot.boxes().size(), 2);
    const MessageRobot::Box &first = robot.boxes()[0];
    QCOMPARE(first.icon, QMessageBox::Warning);
    QCOMPARE(first.caption, QString("Caption"));
    QCOMPARE(first.text, QString("First"));
    QCOMPARE(first.buttons, buttons);
    QCOMPARE(first.buttonTexts.size(), 2);
    QCOMPARE(first.defaultButton, QMessageBox::No);
    QVERIFY(first.hasParent);
    QVERIFY(first.hadAnswer);
    QVERIFY(!robot.boxes()[1].hasParent);
    QVERIFY2(!robot.boxes()[1].hadAnswer, "there was no such button");
}

void FixtureTest::robotUsesEscape()
{
    MessageRobot robot;
    QCOMPARE(QMessageBox::question(nullptr, "C", "T", QMessageBox::Ok | QMessageBox::Cancel),
             QMessageBox::Cancel);
    (void)QMessageBox::question(nullptr, "C", "No way out", QMessageBox::Yes | QMessageBox::YesToAll);
    QCOMPARE(robot.boxes().size(), 2);
}

void FixtureTest::logIsCollected()
{
    QStringList lines, warnings;
    {
        LogCapture log;
        qDebug("one %d", 1);
        qWarning("two");
        lines = log.lines();
        warnings = log.warnings();
        log.clear();
        QVERIFY(log.lines().isEmpty());
    }
    QCOMPARE(lines, (QStringList{"one 1", "two"}));
    QCOMPARE(warnings, QStringList{"two"});
}

KY_TEST_MAIN_WITH_CHILD(FixtureTest, childMain)
#include "fixturetest.moc"
