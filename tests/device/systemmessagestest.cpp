#include "channellistener.h"
#include "childprocess.h"
#include "kymisc.h"
#include "logcapture.h"
#include "qcopenvelope.h"
#include <QTest>

namespace {

using Message = ChannelListener::Message;
using Messages = QList<Message>;

/** 32 bits as they are sent. */
QByteArray number(int value)
{
    QByteArray data;
    QDataStream(&data, QIODevice::WriteOnly) << qint32(value);
    return data;
}

Message screenSaver(int mode)
{
    return {"setScreenSaverMode(int)", number(mode)};
}

/** The path and the application's name of a message about a box; empty when it isn't just these two. */
QStringList argumentsOf(const Message &message)
{
    QString path, application;
    QCopArguments arguments(message.second);
    arguments >> path >> application;
    const bool isWhole = arguments.status() == QDataStream::Ok && arguments.atEnd();
    return isWhole ? QStringList({path, application}) : QStringList();
}

/** Asks for a box without an application object. */
int childMain(int, char **)
{
    KyMisc::requestCloseFile("F0:EARLY.BOX");
    return 0;
}

} // namespace

class SystemMessagesTest : public QObject
{
    Q_OBJECT
private slots:
    void autoPowerOff_data();
    void autoPowerOff();
    void autoPowerOffWithScreenAndSaver_data();
    void autoPowerOffWithScreenAndSaver();
    void lockApplicationIsANumber();
    void samba();
    void boxesAreAskedFor();
    void boxesAreAskedForUnderTheNameOfTheMoment();
    void boxesAreAskedForWithoutApplication();
};

void SystemMessagesTest::autoPowerOff_data()
{
    QTest::addColumn<bool>("enable");
    QTest::addColumn<int>("mode");
    QTest::newRow("on") << true << 200;
    QTest::newRow("off") << false << 2;
}

void SystemMessagesTest::autoPowerOff()
{
    QFETCH(bool, enable);
    QFETCH(int, mode);
    ChannelListener system("QPE/System");
    const LogCapture log;
    KyMisc::enableAutoPowerOff(enable);
    QCOMPARE(system.take(), Messages({screenSaver(mode)}));
    QCOMPARE(log.lines(), QStringList());
}

void SystemMessagesTest::autoPowerOffWithScreenAndSaver_data()
{
    QTest::addColumn<bool>("enable");
    QTest::addColumn<bool>("allowScreenOff");
    QTest::addColumn<bool>("disableSaver");
    QTest::addColumn<QList<int>>("modes");
    QTest::addColumn<QStringList>("lines");
    const QString saver = "send DisableScreenSaver";
    const auto row = [](bool enable, bool screen, bool saverOff, const QList<int> &modes,
                        const QStringList &more) {
        const QString line = QString("enableAutoPowerOff %1 %2 %3").arg(enable).arg(screen).arg(saverOff);
        QTest::newRow(qPrintable(line)) << enable << screen << saverOff << modes << QStringList(line) + more;
    };
    row(true, false, false, {200}, {});
    row(true, false, true, {200}, {});
    row(true, true, false, {200}, {});
    row(true, true, true, {200}, {});
    row(false, false, false, {2}, {});
    row(false, false, true, {2, 300}, {saver});
    row(false, true, false, {0}, {});
    row(false, true, true, {0, 300}, {saver});
}

void SystemMessagesTest::autoPowerOffWithScreenAndSaver()
{
    QFETCH(bool, enable);
    QFETCH(bool, allowScreenOff);
    QFETCH(bool, disableSaver);
    QFETCH(QList<int>, modes);
    ChannelListener system("QPE/System");
    const LogCapture log;
    KyMisc::enableAutoPowerOff(enable, allowScreenOff, disableSaver);
    Messages expected;
    for (const int mode : modes)
        expected.append(screenSaver(mode));
    QCOMPARE(system.take(), expected);
    QTEST(log.lines(), "lines");
}

void SystemMessagesTest::lockApplicationIsANumber()
{
    ChannelListener taskBar("QPE/TaskBar");
    KyMisc::enableLockApplication(true);
    KyMisc::enableLockApplication(false);
    QCOMPARE(taskBar.take(),
             Messages({{"lockApplication(bool)", number(1)}, {"lockApplication(bool)", number(0)}}));
}

void SystemMessagesTest::samba()
{
    ChannelListener system("QPE/System");
    KyMisc::stopSamba();
    KyMisc::startSamba();
    QCOMPARE(system.take(), Messages({{"stopSamba()", ""}, {"startSamba()", ""}}));
}

void SystemMessagesTest::boxesAreAskedFor()
{
    ChannelListener system("QPE/System");
    const QString path = QString::fromUtf8("/card/日本.BOX");
    KyMisc::requestCloseFile(path);
    KyMisc::requestOpenFile(path);
    KyMisc::requestCloseFile(QString());
    const Messages messages = system.take();
    QCOMPARE(messages.size(), 3);
    const QStringList paths = {path, path, QString()};
    const QByteArrayList signatures = {"closeFile(QString,QString)", "openFile(QString,QString)",
                                       "closeFile(QString,QString)"};
    for (qsizetype i = 0; i < 3; ++i) {
        QCOMPARE(messages[i].first, signatures[i]);
        QCOMPARE(argumentsOf(messages[i]), QStringList({paths[i], "systemmessagestest"}));
    }
}

void SystemMessagesTest::boxesAreAskedForUnderTheNameOfTheMoment()
{
    ChannelListener system("QPE/System");
    qApp->setObjectName("memo");
    KyMisc::requestOpenFile("F0:A.BOX");
    qApp->setObjectName(QString());
    const Messages messages = system.take();
    QCOMPARE(messages.size(), 1);
    QCOMPARE(argumentsOf(messages[0]), QStringList({"F0:A.BOX", "memo"}));
}

void SystemMessagesTest::boxesAreAskedForWithoutApplication()
{
    ChannelListener system("QPE/System");
    ChildProcess child({});
    QCOMPARE(child.finish(), 0);
    Messages messages;
    const auto hasArrived = [&] { return !(messages += system.take()).isEmpty(); };
    QVERIFY(QTest::qWaitFor(hasArrived, 10000));
    QCOMPARE(messages.size(), 1);
    QCOMPARE(argumentsOf(messages[0]), QStringList({"F0:EARLY.BOX", QString()}));
}

KY_TEST_MAIN_WITH_CHILD(SystemMessagesTest, childMain)
#include "systemmessagestest.moc"
