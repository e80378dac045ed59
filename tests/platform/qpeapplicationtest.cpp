#include "qpeapplication.h"
#include "childprocess.h"
#include "currentdpi.h"
#include "qcopchannel.h"
#include "qcopenvelope.h"
#include "sessionbus_p.h"
#include <QtTest>

namespace {

/** A window in its icon, its dialog, and one that isn't shown. */
std::vector<std::unique_ptr<QWidget>> showWindows()
{
    std::vector<std::unique_ptr<QWidget>> windows;
    windows.push_back(std::make_unique<QWidget>());
    windows[0]->showMinimized();
    windows.push_back(std::make_unique<QDialog>(windows[0].get()));
    windows[1]->show();
    windows.push_back(std::make_unique<QWidget>());
    return windows;
}

/** One word a window. */
QByteArray windowStates(const std::vector<std::unique_ptr<QWidget>> &windows)
{
    QByteArrayList states;
    for (const auto &window : windows)
        states += !window->isVisible() ? "hidden" : window->isMinimized() ? "minimized" : "shown";
    return "windows " + states.join(' ');
}

/** NAME: says how long the start took, its name, and each message and signal that comes. */
int childMain(int argc, char **argv)
{
    const QByteArray name = argc > 1 ? argv[1] : "";
    QElapsedTimer clock;
    clock.start();
    QPEApplication application(argc, argv, name);
    ChildProcess::say(QByteArray::number(clock.elapsed()));
    ChildProcess::say(application.name() + ' ' + application.objectName().toUtf8() + ' ' +
                      qgetenv("QT_ENABLE_HIGHDPI_SCALING"));
    QObject::connect(&application, &QPEApplication::appMessage,
                     [](const QByteArray &message, const QByteArray &data) {
                         ChildProcess::say(message + ' ' + data.toHex());
                     });
    QObject::connect(&application, &QPEApplication::volumeChanged,
                     [](bool muted) { ChildProcess::say(muted ? "muted" : "loud"); });
    QObject::connect(&application, &QPEApplication::clockChanged,
                     [](bool ampm) { ChildProcess::say(ampm ? "12 hours" : "24 hours"); });
    std::vector<std::unique_ptr<QWidget>> windows;
    QObject::connect(&application, &QPEApplication::raised,
                     [&] { ChildProcess::say(windowStates(windows)); });
    ChildInput input([&](const QByteArray &line) {
        if (line == "first") {
            ChildProcess::say(application.isFirst() ? "first" : "not first");
            return;
        }
        if (line == "show") {
            windows = showWindows();
            ChildProcess::say(windowStates(windows));
            return;
        }
        if (line.startsWith("object "))
            application.setObjectName(QString::fromUtf8(line.mid(7)));
        else
            application.setName(line);
        ChildProcess::say("renamed " + application.name());
    });
    return application.exec();
}

} // namespace

class QPEApplicationTest : public QObject
{
    Q_OBJECT
private slots:
    void nameIsThatOfTheProgram();
    void nameCanBeGiven();
    void scalingIsOff();
    void hearsItsOwnChannel();
    void renamingMovesTheChannel();
    void tellsOfVolumeAndClock();
    void nameOfAnyApplication();
    void firstOfItsName();
    void nextInLineIsFirst();
    void oneOfManyStartsIsFirst();
    void withoutBusEveryProcessIsFirst();
    void raiseBringsTheWindowsToTheFront();
    void onlyRaiseRaises();
    void nobodyIsRaised();
    void doesNotWaitForForeignTree();
    void waitsAtMostTwoSeconds();
    void waitEndsWhenThePlatformIsReady();
    void doesNotWaitWithoutBus();
    void documentDirIsMade();
    void withoutHomeThereIsNoDocumentDir();
    void qpeDirEndsInSlash_data();
    void qpeDirEndsInSlash();
    void dpi_data();
    void dpi();
};

void QPEApplicationTest::nameIsThatOfTheProgram()
{
    ChildProcess child({});
    QVERIFY(!child.readLine().isNull());
    const QByteArray program = QFileInfo(QCoreApplication::applicationFilePath()).fileName().toUtf8();
    QCOMPARE(child.readLine(), program + ' ' + program + " 0");
}

void QPEApplicationTest::nameCanBeGiven()
{
    ChildProcess child({"addressbook"});
    QVERIFY(!child.readLine().isNull());
    QCOMPARE(child.readLine(), QByteArray("addressbook addressbook 0"));
}

void QPEApplicationTest::scalingIsOff()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_ENABLE_HIGHDPI_SCALING", "1");
    ChildProcess child({"x"}, environment);
    QVERIFY(!child.readLine().isNull());
    QCOMPARE(child.readLine(), QByteArray("x x 0"));
}

void QPEApplicationTest::hearsItsOwnChannel()
{
    ChildProcess child({"datebook"});
    child.readLine();
    QVERIFY(!child.readLine().isNull());
    QVERIFY(QCopChannel::isRegistered("QPE/Application/datebook"));
    QCopChannel::send("QPE/Application/other", "no()");
    QCopChannel::send("QPE/Application/datebook", "alarm(QDateTime,int)", QByteArray("\0\x01", 2));
    QCOMPARE(child.readLine(), QByteArray("alarm(QDateTime,int) 0001"));
}

void QPEApplicationTest::renamingMovesTheChannel()
{
    ChildProcess child({"before"});
    child.readLine();
    child.readLine();
    child.write("after");
    QCOMPARE(child.readLine(), QByteArray("renamed after"));
    QVERIFY(!QCopChannel::isRegistered("QPE/Application/before"));
    QVERIFY(QCopChannel::isRegistered("QPE/Application/after"));
    QCopChannel::send("QPE/Application/before", "old()");
    QCopChannel::send("QPE/Application/after", "new()");
    QCOMPARE(child.readLine(), QByteArray("new() "));
    child.write("");
    QCOMPARE(child.readLine(), QByteArray("renamed after"));
    child.write("object third");
    QCOMPARE(child.readLine(), QByteArray("renamed third"));
    QVERIFY(!QCopChannel::isRegistered("QPE/Application/after"));
    QVERIFY(QCopChannel::isRegistered("QPE/Application/third"));
}

void QPEApplicationTest::tellsOfVolumeAndClock()
{
    ChildProcess child({"listener"});
    child.readLine();
    QVERIFY(!child.readLine().isNull());
    for (const int flag : {1, 0}) {
        QCopEnvelope("QPE/System", "volumeChange(bool)") << qint32(flag);
        QCOMPARE(child.readLine(), QByteArray(flag ? "muted" : "loud"));
        QCopEnvelope("QPE/System", "clockChange(bool)") << bool(flag);
        QCOMPARE(child.readLine(), QByteArray(flag ? "12 hours" : "24 hours"));
    }
}

void QPEApplicationTest::nameOfAnyApplication()
{
    const QString given = qApp->objectName();
    qApp->setObjectName(QString());
    QCOMPARE(QPEApplication::applicationNameOf(qApp), qApp->applicationName());
    qApp->setObjectName("memo");
    QCOMPARE(QPEApplication::applicationNameOf(qApp), QString("memo"));
    qApp->setObjectName(given);
}

namespace {

/** Its start is over. */
bool hasStarted(ChildProcess &child)
{
    return !child.readLine().isNull() && !child.readLine().isNull();
}

QByteArray ask(ChildProcess &child, const QByteArray &question)
{
    child.write(question);
    return child.readLine();
}

} // namespace

void QPEApplicationTest::firstOfItsName()
{
    QVERIFY(!QPEApplication::isRunning("once"));
    ChildProcess first({"once"});
    QVERIFY(hasStarted(first));
    QVERIFY(QPEApplication::isRunning("once"));
    ChildProcess second({"once"}), other({"another"});
    QVERIFY(hasStarted(second) && hasStarted(other));
    QCOMPARE(ask(first, "first"), "first");
    QCOMPARE(ask(second, "first"), "not first");
    QCOMPARE(ask(other, "first"), "first");
}

void QPEApplicationTest::nextInLineIsFirst()
{
    ChildProcess first({"heir"});
    QVERIFY(hasStarted(first));
    ChildProcess second({"heir"});
    QVERIFY(hasStarted(second));
    first.kill();
    QTRY_COMPARE(ask(second, "first"), "first");
    second.kill();
    QTRY_VERIFY(!QPEApplication::isRunning("heir"));
}

void QPEApplicationTest::oneOfManyStartsIsFirst()
{
    for (int round = 0; round < 5; ++round) {
        std::vector<std::unique_ptr<ChildProcess>> starts;
        for (int i = 0; i < 4; ++i)
            starts.push_back(std::make_unique<ChildProcess>(QStringList{"race" + QString::number(round)}));
        int firsts = 0;
        for (const auto &start : starts)
            firsts += hasStarted(*start) && ask(*start, "first") == "first";
        QCOMPARE(firsts, 1);
    }
}

void QPEApplicationTest::withoutBusEveryProcessIsFirst()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("DBUS_SESSION_BUS_ADDRESS");
    ChildProcess one({"alone"}, environment), other({"alone"}, environment);
    QVERIFY(hasStarted(one) && hasStarted(other));
    QCOMPARE(ask(one, "first"), "first");
    QCOMPARE(ask(other, "first"), "first");
}

void QPEApplicationTest::raiseBringsTheWindowsToTheFront()
{
    ChildProcess child({"shown"});
    QVERIFY(hasStarted(child));
    QCOMPARE(ask(child, "show"), "windows minimized shown hidden");
    QVERIFY(QPEApplication::raiseRunning("shown"));
    QCOMPARE(child.readLine(), "windows shown shown hidden");
    QCOMPARE(child.readLine(), "raise() "); // told as any other message
}

void QPEApplicationTest::onlyRaiseRaises()
{
    ChildProcess child({"shown"});
    QVERIFY(hasStarted(child));
    QCopChannel::send("QPE/Application/shown", "raise(int)");
    QCopChannel::send("QPE/Application/shown", "last()");
    QCOMPARE(child.readLine(), "raise(int) ");
    QCOMPARE(child.readLine(), "last() ");
}

void QPEApplicationTest::nobodyIsRaised()
{
    QVERIFY(!QPEApplication::raiseRunning("nobody"));
}

/** An environment whose device root has no files of its own. */
QProcessEnvironment keptTree(const QString &root)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("KY_DEVICE_ROOT", root);
    return environment;
}

void QPEApplicationTest::doesNotWaitForForeignTree()
{
    ChildProcess child({"x"});
    QVERIFY(child.readLine().toInt() < 1500);
}

void QPEApplicationTest::waitsAtMostTwoSeconds()
{
    QTemporaryDir root;
    ChildProcess child({"x"}, keptTree(root.path()));
    const int waited = child.readLine().toInt();
    QVERIFY2(waited >= 2000 && waited < 4000, QByteArray::number(waited));
}

void QPEApplicationTest::waitEndsWhenThePlatformIsReady()
{
    QTemporaryDir root;
    ChildProcess child({"x"}, keptTree(root.path()));
    QTest::qWait(500);
    QVERIFY(SessionBus::requestName(SessionBus::serviceName("platform"), false));
    const int waited = child.readLine().toInt();
    SessionBus::releaseName(SessionBus::serviceName("platform"));
    QVERIFY2(waited < 1900, QByteArray::number(waited));
}

void QPEApplicationTest::doesNotWaitWithoutBus()
{
    QTemporaryDir root;
    QProcessEnvironment environment = keptTree(root.path());
    environment.remove("DBUS_SESSION_BUS_ADDRESS");
    ChildProcess child({"x"}, environment);
    QVERIFY(child.readLine().toInt() < 1500);
}

void QPEApplicationTest::documentDirIsMade()
{
    const QString folder = QDir::homePath() + "/Documents/";
    QVERIFY(!QFileInfo::exists(folder));
    QCOMPARE(QPEApplication::documentDir(), folder);
    QVERIFY(QFileInfo(folder).isDir());
}

void QPEApplicationTest::withoutHomeThereIsNoDocumentDir()
{
    const QByteArray home = qgetenv("HOME");
    QVERIFY(!QFileInfo::exists("/Documents"));
    qunsetenv("HOME");
    QTest::ignoreMessage(QtWarningMsg, "QPEApplication: cannot make /Documents/");
    const QString folder = QPEApplication::documentDir();
    qputenv("HOME", home);
    QCOMPARE(folder, QString("/Documents/"));
    QVERIFY(!QFileInfo::exists(folder));
}

void QPEApplicationTest::qpeDirEndsInSlash_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("folder");
    QTest::newRow("without slash") << QByteArray("/opt/qpe") << "/opt/qpe/";
    QTest::newRow("with slash") << QByteArray("/opt/qpe/") << "/opt/qpe/";
    QTest::newRow("root") << QByteArray("/") << "/";
    QTest::newRow("empty") << QByteArray("") << "/home/QtPalmtop/";
}

void QPEApplicationTest::qpeDirEndsInSlash()
{
    QFETCH(QByteArray, value);
    const QByteArray before = qgetenv("QPEDIR");
    qputenv("QPEDIR", value);
    const QString folder = QPEApplication::qpeDir();
    qputenv("QPEDIR", before);
    QTEST(folder, "folder");
}

void QPEApplicationTest::dpi_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<int>("expected");
    QTest::newRow("unset") << QByteArray() << 72;
    QTest::newRow("empty") << QByteArray("") << 72;
    QTest::newRow("lowest") << QByteArray("72") << 72;
    QTest::newRow("below") << QByteArray("71") << 72;
    QTest::newRow("double") << QByteArray("144") << 144;
    QTest::newRow("highest") << QByteArray("576") << 576;
    QTest::newRow("above") << QByteArray("577") << 72;
    QTest::newRow("negative") << QByteArray("-144") << 72;
    QTest::newRow("text") << QByteArray("high") << 72;
}

void QPEApplicationTest::dpi()
{
    QFETCH(QByteArray, value);
    const QByteArray before = qgetenv("KY_DPI");
    if (value.isNull())
        qunsetenv("KY_DPI");
    else
        qputenv("KY_DPI", value);
    const int actual = qt_currentDpi();
    qputenv("KY_DPI", before);
    QTEST(actual, "expected");
}

KY_TEST_MAIN_WITH_CHILD(QPEApplicationTest, childMain)
#include "qpeapplicationtest.moc"
