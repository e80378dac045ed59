#include "childprocess.h"
#include "qpeapplication.h"
#include <QScreen>
#include <QtTest>

namespace {

QByteArray written(const QSize &size)
{
    return QByteArray::number(size.width()) + 'x' + QByteArray::number(size.height());
}

QByteArray bothSizes()
{
    return written(QPEApplication::desktopSize()) + ' ' + written(QPEApplication::maximizedSize());
}

/** Says both sizes without an application object, and with one that knows no widgets. */
int childMain(int argc, char **argv)
{
    ChildProcess::say(bothSizes());
    const QGuiApplication application(argc, argv);
    ChildProcess::say(bothSizes());
    return 0;
}

} // namespace

class DesktopSizeTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void environmentGivesTheDesktop_data();
    void environmentGivesTheDesktop();
    void otherTextIsIgnored_data();
    void otherTextIsIgnored();
    void environmentIsReadAtEachCall();
    void maximizedIsWhatAMaximizedWindowGets();
    void leavesNoWindowBehind();
    void withoutWidgets();
    void withoutWidgetsTheEnvironmentCounts();
};

void DesktopSizeTest::init()
{
    qunsetenv("KY_SCREEN");
}

void DesktopSizeTest::environmentGivesTheDesktop_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("480x640") << QSize(480, 640);
    QTest::newRow("640x480") << QSize(640, 480);
    QTest::newRow("100x100") << QSize(100, 100);
    QTest::newRow("8000x8000") << QSize(8000, 8000);
    QTest::newRow("100x8000") << QSize(100, 8000);
}

void DesktopSizeTest::environmentGivesTheDesktop()
{
    QFETCH(QSize, size);
    qputenv("KY_SCREEN", QTest::currentDataTag());
    QCOMPARE(QPEApplication::desktopSize(), size);
    QCOMPARE(QPEApplication::maximizedSize(), size);
}

void DesktopSizeTest::otherTextIsIgnored_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("no sizes") << QByteArray("x");
    QTest::newRow("width alone") << QByteArray("480");
    QTest::newRow("no height") << QByteArray("480x");
    QTest::newRow("no width") << QByteArray("x640");
    QTest::newRow("three sizes") << QByteArray("480x640x480");
    QTest::newRow("capital letter") << QByteArray("480X640");
    QTest::newRow("blank in front") << QByteArray(" 480x640");
    QTest::newRow("blank behind") << QByteArray("480x640 ");
    QTest::newRow("line end") << QByteArray("480x640\n");
    QTest::newRow("negative width") << QByteArray("-480x640");
    QTest::newRow("negative height") << QByteArray("480x-640");
    QTest::newRow("hexadecimal") << QByteArray("0x1e0x640");
    QTest::newRow("fraction") << QByteArray("480.5x640");
    QTest::newRow("wide digits") << QByteArray("４８０x６４０");
    QTest::newRow("too narrow") << QByteArray("99x640");
    QTest::newRow("too low") << QByteArray("480x99");
    QTest::newRow("too wide") << QByteArray("8001x640");
    QTest::newRow("too high") << QByteArray("480x8001");
    QTest::newRow("beyond 32 bits") << QByteArray("4294967776x4294967936");
}

void DesktopSizeTest::otherTextIsIgnored()
{
    QFETCH(QByteArray, value);
    const QSize maximized = QPEApplication::maximizedSize();
    qputenv("KY_SCREEN", value);
    QCOMPARE(QPEApplication::desktopSize(), QGuiApplication::primaryScreen()->size());
    QCOMPARE(QPEApplication::maximizedSize(), maximized);
}

void DesktopSizeTest::environmentIsReadAtEachCall()
{
    for (const QSize size : {QSize(480, 640), QSize(640, 480), QSize(240, 320)}) {
        qputenv("KY_SCREEN", written(size));
        QCOMPARE(QPEApplication::desktopSize(), size);
        QCOMPARE(QPEApplication::maximizedSize(), size);
    }
}

void DesktopSizeTest::maximizedIsWhatAMaximizedWindowGets()
{
    QWidget window;
    window.showMaximized();
    QTRY_COMPARE_WITH_TIMEOUT(window.size(), QPEApplication::maximizedSize(), 10000);
    QCOMPARE(QPEApplication::desktopSize(), QGuiApplication::primaryScreen()->size());
}

void DesktopSizeTest::leavesNoWindowBehind()
{
    const qsizetype widgets = QApplication::allWidgets().size();
    const qsizetype windows = QGuiApplication::allWindows().size();
    QVERIFY(!QPEApplication::maximizedSize().isEmpty());
    QCOMPARE(QApplication::allWidgets().size(), widgets);
    QCOMPARE(QGuiApplication::allWindows().size(), windows);
}

void DesktopSizeTest::withoutWidgets()
{
    ChildProcess child({});
    QCOMPARE(child.readLine(), QByteArray("0x0 0x0"));
    const QScreen *screen = QGuiApplication::primaryScreen();
    QCOMPARE(child.readLine(), written(screen->size()) + ' ' + written(screen->availableSize()));
    QCOMPARE(child.finish(), 0);
}

void DesktopSizeTest::withoutWidgetsTheEnvironmentCounts()
{
    qputenv("KY_SCREEN", "480x640");
    ChildProcess child({});
    QCOMPARE(child.readLine(), QByteArray("480x640 480x640"));
    QCOMPARE(child.readLine(), QByteArray("480x640 480x640"));
    QCOMPARE(child.finish(), 0);
}

KY_TEST_MAIN_WITH_CHILD(DesktopSizeTest, childMain)
#include "desktopsizetest.moc"
