#include "childprocess.h"
#include "devicefile.h"
#include "kymisc.h"
#include "kypowerstatusmanager.h"
#include "messagerobot.h"

class BatteryCheckTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void forcedCheckReadsNothing(); // first, as the manager is made at the first reading
    void withoutPowerFileAllIsAllowed();
    void state_data();
    void state();
    void stateIsReadAtEachCheck();
    void forcedAtAnyState_data() { state_data(); }
    void forcedAtAnyState();
    void messageIsTheSameForAllModules_data();
    void messageIsTheSameForAllModules();
    void nothingIsShownWhenAllowed();
    void nothingIsShownWithoutDialog();
    void moduleNameFromPath_data();
    void moduleNameFromPath();
};

namespace {

constexpr char VeryLow[] = "0x7f";

bool setState(const QByteArray &state)
{
    return writeDeviceFile(QStringLiteral("/proc/apm"), "1.16 1.2 0x02 0x00 " + state + " 0xff 50% 10 m\n");
}

} // namespace

/** The file is there before it is looked for. */
void BatteryCheckTest::initTestCase()
{
    QVERIFY(setState("0x00"));
}

void BatteryCheckTest::forcedCheckReadsNothing()
{
    QVERIFY(KyMisc::checkBatteryErrorWithoutDialog(QStringLiteral("SD"), true));
    QVERIFY(!KyPowerStatusManager::kyPs);
}

void BatteryCheckTest::withoutPowerFileAllIsAllowed()
{
    QVERIFY(removeDeviceFile(QStringLiteral("/proc/apm")));
    ChildProcess child({});
    QCOMPARE(child.readLine(), QByteArray("allowed"));
    QCOMPARE(child.finish(), 0);
    QVERIFY(setState("0x00"));
}

void BatteryCheckTest::state_data()
{
    QTest::addColumn<QByteArray>("state");
    QTest::addColumn<bool>("refused");

    QTest::newRow("high") << QByteArray("0x00") << false;
    QTest::newRow("low") << QByteArray("0x01") << false;
    QTest::newRow("critical") << QByteArray("0x02") << true;
    QTest::newRow("charging") << QByteArray("0x03") << false;
    QTest::newRow("not present") << QByteArray("0x04") << false;
    QTest::newRow("very low") << QByteArray("0x7f") << true;
}

void BatteryCheckTest::state()
{
    QFETCH(QByteArray, state);
    QFETCH(bool, refused);
    QVERIFY(setState(state));
    const MessageRobot robot({QMessageBox::Ok});
    QCOMPARE(KyMisc::checkBatteryErrorWithoutDialog(QStringLiteral("SD"), false), refused);
    QCOMPARE(robot.boxes().size(), 0);
    QCOMPARE(KyMisc::checkBatteryError(QStringLiteral("SD"), false), refused);
    QCOMPARE(robot.boxes().size(), refused ? 1 : 0);
}

void BatteryCheckTest::stateIsReadAtEachCheck()
{
    QVERIFY(setState(VeryLow));
    QVERIFY(KyMisc::checkBatteryErrorWithoutDialog(QStringLiteral("CF"), false));
    QVERIFY(setState("0x03"));
    QVERIFY(!KyMisc::checkBatteryErrorWithoutDialog(QStringLiteral("CF"), false));
}

void BatteryCheckTest::forcedAtAnyState()
{
    QFETCH(QByteArray, state);
    QVERIFY(setState(state));
    const MessageRobot robot({QMessageBox::Ok});
    QVERIFY(KyMisc::checkBatteryErrorWithoutDialog(QStringLiteral("SD"), true));
    QCOMPARE(robot.boxes().size(), 0);
    QVERIFY(KyMisc::checkBatteryError(QStringLiteral("SD"), true));
    QCOMPARE(robot.boxes().size(), 1);
}

void BatteryCheckTest::messageIsTheSameForAllModules_data()
{
    QTest::addColumn<QString>("module");
    for (const char *module : {"USB", "CF", "SD", "IR", "Int.", "some other"})
        QTest::newRow(module) << QString::fromLatin1(module);
    QTest::newRow("empty") << QString();
}

void BatteryCheckTest::messageIsTheSameForAllModules()
{
    QFETCH(QString, module);
    QVERIFY(setState(VeryLow));
    const MessageRobot robot({QMessageBox::Ok});
    QVERIFY(KyMisc::checkBatteryError(module, false));
    QCOMPARE(robot.boxes().size(), 1);
    const MessageRobot::Box &box = robot.boxes().first();
    QCOMPARE(box.caption, QStringLiteral("Battery Status"));
    QCOMPARE(box.text, QStringLiteral("<p>Cannot execute the function due to low battery.\n"
                                      "Please connect AC adapter.<p>"));
    QCOMPARE(box.icon, QMessageBox::Critical);
    QVERIFY(!box.hasParent);
    QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
}

void BatteryCheckTest::nothingIsShownWhenAllowed()
{
    QVERIFY(setState("0x01"));
    const MessageRobot robot;
    QVERIFY(!KyMisc::checkBatteryError(QStringLiteral("USB"), false));
    QTest::qWait(20); // as long as a box that waits for nobody would take to be seen
    QCOMPARE(robot.boxes().size(), 0);
}

void BatteryCheckTest::nothingIsShownWithoutDialog()
{
    QVERIFY(setState(VeryLow));
    const MessageRobot robot;
    QVERIFY(KyMisc::checkBatteryErrorWithoutDialog(QStringLiteral("USB"), false));
    QTest::qWait(20);
    QCOMPARE(robot.boxes().size(), 0);
}

void BatteryCheckTest::moduleNameFromPath_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("module");

    const auto row = [](const QString &path, const QString &module) {
        QTest::newRow(qPrintable(path)) << path << module;
        QTest::newRow(qPrintable("rooted: " + path)) << devicePath(path) << module;
    };
    row(QStringLiteral("/mnt/cf"), QStringLiteral("CF"));
    row(QStringLiteral("/mnt/cf/Documents/a.txt"), QStringLiteral("CF"));
    row(QStringLiteral("/usr/mnt.rom/cf/a.txt"), QStringLiteral("CF"));
    row(QStringLiteral("/mnt/card/a.txt"), QStringLiteral("SD"));
    row(QStringLiteral("/usr/mnt.rom/card"), QStringLiteral("SD"));
    row(QStringLiteral("/mnt/cfold/a.txt"), QStringLiteral("CF")); // only the beginning counts
    row(QStringLiteral("/mnt/cards/a.txt"), QStringLiteral("SD"));
    row(QStringLiteral("/mnt/c"), QStringLiteral("Int."));
    row(QStringLiteral("/mnt/CF/a.txt"), QStringLiteral("Int."));
    row(QStringLiteral("/home/user/mnt/cf"), QStringLiteral("Int."));
    row(QStringLiteral("/mnt/sd/a.txt"), QStringLiteral("Int."));
    QTest::newRow("empty") << QString() << "Int.";
    QTest::newRow("relative") << "mnt/cf"
                              << "Int.";
}

void BatteryCheckTest::moduleNameFromPath()
{
    QFETCH(QString, path);
    QTEST(KyMisc::moduleNameFromPath(path), "module");
}

namespace {

/** Checks where there is no power file, and again when one has come. */
int childMain(int, char **)
{
    const auto isRefused = [] { return KyMisc::checkBatteryErrorWithoutDialog(QStringLiteral("SD"), false); };
    const bool isAllowed = !isRefused() && setState(VeryLow) && !isRefused();
    ChildProcess::say(isAllowed ? "allowed" : "refused");
    return 0;
}

} // namespace

KY_TEST_MAIN_WITH_CHILD(BatteryCheckTest, childMain)
#include "batterychecktest.moc"
