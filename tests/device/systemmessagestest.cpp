#include "childprocess.h"
#include "kymisc.h"
#include "logcapture.h"
#include "qcopchannel.h"
#include "qcopenvelope.h"
#include <QTest>

namespace {

using Message = QPair<QByteArray, QByteArray>;
using Messages = QList<Message>;

/** Keeps what arrives on a channel. */
struct Listener
{
    explicit Listener(const QByteArray &name) : channel(name)
    {
        QObject::connect(&channel, &QCopChannel::received,
                         [this](const QByteArray &message, const QByteArray &data) {
                             messages.append({message, data});
                         });
    }
    QCopChannel channel;
    Messages messages;
};

/** Lets what is under way arrive: a message to ourselves comes behind all of it. */
bool settle()
{
    const Listener mark("Test/Settle");
    QCopChannel::send("Test/Settle", "mark()");
    return QTest::qWaitFor([&mark] { return !mark.messages.isEmpty(); }, 10000);
}

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
    const Listener system("QPE/System");
    const LogCapture log;
    KyMisc::enableAutoPowerOff(enable);
    QVERIFY(settle());
    QCOMPARE(system.messages, Messages({screenSaver(mode)}));
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
    const Listener system("QPE/System");
    const LogCapture log;
    KyMisc::enableAutoPowerOff(enable, allowScreenOff, disableSaver);
    QVERIFY(settle());
    Messages expected;
    for (const int mode : modes)
        expected.append(screenSaver(mode));
    QCOMPARE(system.messages, expected);
    QTEST(log.lines(), "lines");
}

void SystemMessagesTest::lockApplicationIsANumber()
{
    const Listener taskBar("QPE/TaskBar");
    KyMisc::enableLockApplication(true);
    KyMisc::enableLockApplication(false);
    QVERIFY(settle());
    QCOMPARE(taskBar.messages,
             Messages({{"lockApplication(bool)", number(1)}, {"lockApplication(bool)", number(0)}}));
}

void SystemMessagesTest::samba()
{
    const Listener system("QPE/System");
    KyMisc::stopSamba();
    KyMisc::startSamba();
    QVERIFY(settle());
    QCOMPARE(system.messages, Messages({{"stopSamba()", ""}, {"startSamba()", ""}}));
}

void SystemMessagesTest::boxesAreAskedFor()
{
    const Listener system("QPE/System");
    const QString path = QString::fromUtf8("/card/日本.BOX");
    KyMisc::requestCloseFile(path);
    KyMisc::requestOpenFile(path);
    KyMisc::requestCloseFile(QString());
    QVERIFY(settle());
    QCOMPARE(system.messages.size(), 3);
    const QStringList paths = {path, path, QString()};
    const QByteArrayList signatures = {"closeFile(QString,QString)", "openFile(QString,QString)",
                                       "closeFile(QString,QString)"};
    for (qsizetype i = 0; i < 3; ++i) {
        QCOMPARE(system.messages[i].first, signatures[i]);
        QCOMPARE(argumentsOf(system.messages[i]), QStringList({paths[i], "systemmessagestest"}));
    }
}

void SystemMessagesTest::boxesAreAskedForUnderTheNameOfTheMoment()
{
    const Listener system("QPE/System");
    qApp->setObjectName("memo");
    KyMisc::requestOpenFile("F0:A.BOX");
    qApp->setObjectName(QString());
    QVERIFY(settle());
    QCOMPARE(system.messages.size(), 1);
    QCOMPARE(argumentsOf(system.messages[0]), QStringList({"F0:A.BOX", "memo"}));
}

void SystemMessagesTest::boxesAreAskedForWithoutApplication()
{
    const Listener system("QPE/System");
    ChildProcess child({});
    QTRY_COMPARE_WITH_TIMEOUT(system.messages.size(), 1, 10000);
    QCOMPARE(child.finish(), 0);
    QCOMPARE(argumentsOf(system.messages[0]), QStringList({"F0:EARLY.BOX", QString()}));
}

KY_TEST_MAIN_WITH_CHILD(SystemMessagesTest, childMain)
#include "systemmessagestest.moc"
