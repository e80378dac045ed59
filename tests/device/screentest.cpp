#include "childprocess.h"
#include "displayfixture.h"
#include "kydeviceinfo.h"
#include "kymisc.h"
#include "qpeapplication.h"
#include <QtTest>

namespace {

int productNumber = 0;
int productNumberReads = 0;

/** Says the size of the scroll bars without an application object, and with one that knows no widgets. */
int childMain(int argc, char **argv)
{
    const auto sayExtent = [] {
        const QSize size = KyMisc::getScrollbarMetrics();
        ChildProcess::say(QByteArray::number(size.width()) + ' ' + QByteArray::number(size.height()));
    };
    sayExtent();
    const QCoreApplication application(argc, argv);
    sayExtent();
    return 0;
}

} // namespace

/** In place of the device's own, so that every model can be had. */
int KyDeviceInfo::getProductNumber()
{
    ++productNumberReads;
    return productNumber;
}

class ScreenTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void scale_data();
    void scale();
    void maximizedWidgetInfo();
    void scrollbarMetricsAreTheStyles();
    void scrollbarMetricsWithoutWidgets();
    void contentsWidth_data();
    void contentsWidth();
    void landscapeIsWiderThanHigh_data();
    void landscapeIsWiderThanHigh();
    void inputDeviceGoesByTheWidth_data();
    void inputDeviceGoesByTheWidth();
    void inputDeviceIsTheSameForAllModels();
    void wallPaper();
};

void ScreenTest::initTestCase()
{
    QApplication::setStyle(new NarrowScrollBars);
}

void ScreenTest::init()
{
    setDisplay(72, "480x640");
}

void ScreenTest::scale_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<int>("scale");
    QTest::newRow("72") << 72 << 1;
    QTest::newRow("143") << 143 << 1;
    QTest::newRow("144") << 144 << 2;
    QTest::newRow("200") << 200 << 2;
    QTest::newRow("215") << 215 << 2;
    QTest::newRow("216") << 216 << 3;
    QTest::newRow("576") << 576 << 8;
}

void ScreenTest::scale()
{
    QFETCH(int, dpi);
    setDisplay(dpi, "480x640");
    QCOMPARE(KyMisc::getDpi(), dpi);
    QTEST(KyMisc::getResolutionScale(), "scale");
}

void ScreenTest::maximizedWidgetInfo()
{
    QCOMPARE(KyMisc::getMaximizedWidgetInfo(), QSize(480, 640));
    qunsetenv("KY_SCREEN");
    QVERIFY(!KyMisc::getMaximizedWidgetInfo().isEmpty());
    QCOMPARE(KyMisc::getMaximizedWidgetInfo(), QPEApplication::maximizedSize());
}

void ScreenTest::scrollbarMetricsAreTheStyles()
{
    QCOMPARE(KyMisc::getScrollbarMetrics(), QSize(16, 16));
}

void ScreenTest::scrollbarMetricsWithoutWidgets()
{
    ChildProcess child({});
    QCOMPARE(child.readLine(), QByteArray("0 0"));
    QCOMPARE(child.readLine(), QByteArray("0 0"));
    QCOMPARE(child.finish(), 0);
}

void ScreenTest::contentsWidth_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<QByteArray>("screen");
    QTest::addColumn<int>("width");
    QTest::newRow("portrait, 72 dpi") << 72 << QByteArray("480x640") << 460;
    QTest::newRow("portrait, 143 dpi") << 143 << QByteArray("480x640") << 460;
    QTest::newRow("portrait, 144 dpi") << 144 << QByteArray("480x640") << 456;
    QTest::newRow("landscape, 200 dpi") << 200 << QByteArray("640x480") << 616;
    QTest::newRow("landscape, 216 dpi") << 216 << QByteArray("640x480") << 612;
}

void ScreenTest::contentsWidth()
{
    QFETCH(int, dpi);
    QFETCH(QByteArray, screen);
    setDisplay(dpi, screen);
    QTEST(KyMisc::getMaximizedWidgetContentsWidth(), "width");
}

void ScreenTest::landscapeIsWiderThanHigh_data()
{
    QTest::addColumn<bool>("landscape");
    QTest::newRow("640x480") << true;
    QTest::newRow("480x640") << false;
    QTest::newRow("480x480") << false;
    QTest::newRow("481x480") << true;
}

void ScreenTest::landscapeIsWiderThanHigh()
{
    setDisplay(72, QTest::currentDataTag());
    QTEST(KyMisc::isLandscape(), "landscape");
}

void ScreenTest::inputDeviceGoesByTheWidth_data()
{
    QTest::addColumn<int>("device");
    QTest::newRow("480x640") << 2;
    QTest::newRow("480x320") << 2;
    QTest::newRow("640x480") << 1;
    QTest::newRow("479x640") << 1;
    QTest::newRow("481x640") << 1;
}

void ScreenTest::inputDeviceGoesByTheWidth()
{
    setDisplay(72, QTest::currentDataTag());
    QTEST(KyMisc::defaultInputDevice(), "device");
}

void ScreenTest::inputDeviceIsTheSameForAllModels()
{
    for (productNumber = 0; productNumber <= 6; ++productNumber) {
        productNumberReads = 0;
        QCOMPARE(KyMisc::defaultInputDevice(), 2);
        QCOMPARE(productNumberReads, 1);
    }
}

void ScreenTest::wallPaper()
{
    QCOMPARE(KyMisc::defaultWallPaper(), QString("wallpaper/default"));
}

KY_TEST_MAIN_WITH_CHILD(ScreenTest, childMain)
#include "screentest.moc"
