#include "childprocess.h"
#include "kydlgwait.h"
#include "resource.h"
#include <memory>
#include <QElapsedTimer>
#include <QLabel>
#include <QScreen>
#include <QSignalSpy>
#include <unistd.h>

namespace {

constexpr char Message[] = "Please wait...";

QString longText()
{
    return QStringLiteral("This takes a while, since everything is read once more. ").repeated(4).trimmed();
}

/** The label with the text, or that with the icon. */
QLabel *label(const KyDlgWait &box, bool withPicture)
{
    for (QLabel *each : box.findChildren<QLabel *>()) {
        if (each->pixmap().isNull() != withPicture)
            return each;
    }
    return nullptr;
}

QImage pixels(const QPixmap &picture)
{
    return picture.toImage().convertToFormat(QImage::Format_RGB32);
}

/** Keeps a widget from being painted, as a screen that is locked does. */
class PaintFilter : public QObject
{
public:
    bool eventFilter(QObject *, QEvent *event) override { return event->type() == QEvent::Paint; }
};

/** The point of the screen where the tests that look at it put their box. */
constexpr QPoint Corner(100, 80);

bool isRealWindowSystem()
{
    return QGuiApplication::platformName() == QLatin1String("xcb");
}

} // namespace

class DlgWaitTest : public QObject
{
    Q_OBJECT
private slots:
    void cleanup();
    void sizeAtScale_data();
    void sizeAtScale();
    void withoutIconTheTextBeginsAtTheSpacing_data() { sizeAtScale_data(); }
    void withoutIconTheTextBeginsAtTheSpacing();
    void iconStandsInFrontOfTheText_data() { sizeAtScale_data(); }
    void iconStandsInFrontOfTheText();
    void longTextBreaksAndDoesNotWiden_data();
    void longTextBreaksAndDoesNotWiden();
    void longTextIsShownWhole();
    void longWordDoesNotWiden();
    void textIsAlignedLeftInTheMiddle();
    void windowHasNoTitleBar();
    void windowHasAnEdge();
    void parentIsKept();
    void execComesBackWithTheBoxPainted();
    void execWaitsHalfASecondForPaintAtMost();
    void boxStaysWhileNoEventsAreHandled();
    void boxGoesWhenEventsAreHandledAgain();
    void boxGoesWithTheObject();
    void execTwice();
    void execAgainWhileItIsShown();
    void execEndsWithTheParent();
    void shownAloneItCloses();
    void ordinaryDialogWaitsForTheUser();
    void ordinaryDialogCloses_data();
    void ordinaryDialogCloses();
    void screenShowsTheBoxOfABusyApplication();
};

void DlgWaitTest::cleanup()
{
    qputenv("KY_DPI", "72");
}

void DlgWaitTest::sizeAtScale_data()
{
    QTest::addColumn<QByteArray>("dpi");
    QTest::addColumn<int>("scale");
    QTest::newRow("scale 1") << QByteArray("72") << 1;
    QTest::newRow("scale 2") << QByteArray("144") << 2;
}

void DlgWaitTest::sizeAtScale()
{
    QFETCH(QByteArray, dpi);
    QFETCH(int, scale);
    qputenv("KY_DPI", dpi);
    for (const bool withIcon : {true, false}) {
        KyDlgWait box(nullptr, Message, withIcon, true);
        QCOMPARE(box.size(), QSize(160, 40) * scale);
        box.exec();
        QCOMPARE(box.size(), QSize(160, 40) * scale);
    }
}

void DlgWaitTest::withoutIconTheTextBeginsAtTheSpacing()
{
    QFETCH(QByteArray, dpi);
    QFETCH(int, scale);
    qputenv("KY_DPI", dpi);
    const KyDlgWait box(nullptr, Message, false, true);
    QVERIFY(!label(box, true));
    QVERIFY(label(box, false));
    QCOMPARE(label(box, false)->text(), QString(Message));
    QCOMPARE(label(box, false)->geometry(), QRect(10 * scale, 0, 150 * scale, 40 * scale));
}

void DlgWaitTest::iconStandsInFrontOfTheText()
{
    QFETCH(QByteArray, dpi);
    QFETCH(int, scale);
    qputenv("KY_DPI", dpi);
    const KyDlgWait box(nullptr, Message, true, true);
    const QLabel *icon = label(box, true);
    QVERIFY(icon);
    QCOMPARE(icon->geometry(), QRect(10 * scale, 4 * scale, 32 * scale, 32 * scale));
    QCOMPARE(pixels(icon->pixmap()), pixels(Resource::loadPixmap(QStringLiteral("wait"))));
    QCOMPARE(box.layout()->spacing(), 5 * scale);
    QVERIFY(label(box, false)->x() >= 52 * scale);
}

void DlgWaitTest::longTextBreaksAndDoesNotWiden_data()
{
    QTest::addColumn<bool>("withIcon");
    QTest::newRow("with icon") << true;
    QTest::newRow("without icon") << false;
}

void DlgWaitTest::longTextBreaksAndDoesNotWiden()
{
    QFETCH(bool, withIcon);
    KyDlgWait box(nullptr, longText(), withIcon, true);
    QCOMPARE(box.width(), 160);
    box.exec();
    QCOMPARE(box.width(), 160);
    QVERIFY(label(box, false)->geometry().right() < 160);
}

void DlgWaitTest::longTextIsShownWhole()
{
    KyDlgWait box(nullptr, longText(), true, true);
    box.exec();
    const QLabel *text = label(box, false);
    const QRect needed =
        text->fontMetrics().boundingRect(QRect(0, 0, text->width(), 10000), Qt::TextWordWrap, longText());
    QVERIFY2(needed.height() > 40, "the text is too short for this test");
    QVERIFY(text->height() >= needed.height());
    QVERIFY(box.rect().contains(text->geometry()));
}

void DlgWaitTest::longWordDoesNotWiden()
{
    KyDlgWait box(nullptr, QString(200, 'x'), true, true);
    box.exec();
    QCOMPARE(box.width(), 160);
}

void DlgWaitTest::textIsAlignedLeftInTheMiddle()
{
    const KyDlgWait box(nullptr, Message, true, true);
    QCOMPARE(label(box, false)->alignment(), Qt::AlignLeft | Qt::AlignVCenter);
    QVERIFY(label(box, false)->wordWrap());
}

void DlgWaitTest::windowHasNoTitleBar()
{
    const KyDlgWait box(nullptr, Message, true, true);
    QCOMPARE(box.objectName(), QStringLiteral("Wait"));
    QVERIFY(box.windowFlags().testFlag(Qt::FramelessWindowHint));
    QCOMPARE(box.windowType(), Qt::Dialog);
    QVERIFY(box.isModal());
    QVERIFY(!KyDlgWait(nullptr, Message, true, false).isModal());
}

void DlgWaitTest::windowHasAnEdge()
{
    KyDlgWait box(nullptr, Message, true, true);
    QPalette colours = box.palette();
    colours.setColor(QPalette::Window, Qt::white);
    colours.setColor(QPalette::Dark, Qt::red);
    box.setPalette(colours);
    const QImage picture = pixels(box.grab());
    const QRect area = picture.rect();
    for (const QPoint &corner : {area.topLeft(), area.topRight(), area.bottomLeft(), area.bottomRight()})
        QCOMPARE(picture.pixelColor(corner), QColor(Qt::red));
    QCOMPARE(picture.pixelColor(1, 1), QColor(Qt::white));
}

void DlgWaitTest::parentIsKept()
{
    QWidget window;
    const KyDlgWait box(&window, Message, true, true);
    QCOMPARE(box.parentWidget(), &window);
    QVERIFY(box.isWindow());
}

void DlgWaitTest::execComesBackWithTheBoxPainted()
{
    KyDlgWait box(nullptr, Message, true, true);
    QSignalSpy painted(&box, &KyDlgWait::painted);
    QCOMPARE(box.exec(), int(QDialog::Accepted));
    QCOMPARE(box.result(), int(QDialog::Accepted));
    QVERIFY(painted.count() > 0);
    QVERIFY(box.isVisible());
    QVERIFY(box.windowHandle()->isExposed());
}

void DlgWaitTest::execWaitsHalfASecondForPaintAtMost()
{
    constexpr int Attempts = 3; // a busy machine may hold up one or the other
    qint64 shortest = std::numeric_limits<qint64>::max();
    for (int attempt = 0; attempt < Attempts && shortest >= 1000; ++attempt) {
        KyDlgWait box(nullptr, Message, true, true);
        PaintFilter filter;
        box.installEventFilter(&filter);
        QElapsedTimer time;
        time.start();
        QCOMPARE(box.exec(), int(QDialog::Accepted));
        shortest = std::min(shortest, time.elapsed());
    }
    QVERIFY2(shortest >= 450 && shortest < 1000, qPrintable(QString::number(shortest)));
}

void DlgWaitTest::boxStaysWhileNoEventsAreHandled()
{
    KyDlgWait box(nullptr, Message, true, true);
    QSignalSpy finished(&box, &QDialog::finished);
    box.exec();
    QThread::msleep(100); // work: the 1 ms of the timer are over
    QVERIFY(box.isVisible());
    QCOMPARE(finished.count(), 0);
}

void DlgWaitTest::boxGoesWhenEventsAreHandledAgain()
{
    KyDlgWait box(nullptr, Message, true, true);
    QSignalSpy accepted(&box, &QDialog::accepted);
    box.exec();
    QTRY_VERIFY_WITH_TIMEOUT(!box.isVisible(), 10000);
    QCOMPARE(accepted.count(), 1);
    QVERIFY(!QApplication::activeModalWidget());
}

void DlgWaitTest::boxGoesWithTheObject()
{
    {
        KyDlgWait box(nullptr, Message, true, true);
        box.exec();
        QCOMPARE(QApplication::activeModalWidget(), &box);
    }
    QVERIFY(!QApplication::activeModalWidget());
    QTest::qWait(20); // the timer of the box that is gone
    QVERIFY(!QApplication::activeModalWidget());
}

void DlgWaitTest::execTwice()
{
    KyDlgWait box(nullptr, Message, true, true);
    box.exec();
    QTRY_VERIFY_WITH_TIMEOUT(!box.isVisible(), 10000);
    QSignalSpy painted(&box, &KyDlgWait::painted);
    QCOMPARE(box.exec(), int(QDialog::Accepted));
    QVERIFY(box.isVisible());
    QVERIFY(painted.count() > 0);
}

/** The work consists of two steps, with no events between them. */
void DlgWaitTest::execAgainWhileItIsShown()
{
    KyDlgWait box(nullptr, Message, true, true);
    QSignalSpy finished(&box, &QDialog::finished);
    box.exec();
    QSignalSpy painted(&box, &KyDlgWait::painted);
    QThread::msleep(10); // the 1 ms of the first time are over
    QCOMPARE(box.exec(), int(QDialog::Accepted));
    QVERIFY(box.isVisible());
    QVERIFY(painted.count() > 0);
    QCOMPARE(finished.count(), 0);
}

void DlgWaitTest::execEndsWithTheParent()
{
    auto parent = std::make_unique<QWidget>();
    const QPointer<KyDlgWait> box = new KyDlgWait(parent.get(), Message, true, true);
    PaintFilter filter;
    box->installEventFilter(&filter);
    QTimer::singleShot(0, this, [&parent] { parent.reset(); });
    QCOMPARE(box->exec(), int(QDialog::Rejected));
    QVERIFY(box.isNull());
}

/** Nothing else could close it: it has no title bar, and locks the application. */
void DlgWaitTest::shownAloneItCloses()
{
    KyDlgWait box(nullptr, Message, true, true);
    QSignalSpy accepted(&box, &QDialog::accepted);
    box.show();
    QTRY_VERIFY_WITH_TIMEOUT(!box.isVisible(), 10000);
    QCOMPARE(accepted.count(), 1);
}

void DlgWaitTest::ordinaryDialogWaitsForTheUser()
{
    KyDlgWait box(nullptr, Message, true, false);
    box.show();
    QTest::qWait(50); // nothing closes it meanwhile
    QVERIFY(box.isVisible());
    QVERIFY(!QApplication::activeModalWidget());
}

void DlgWaitTest::ordinaryDialogCloses_data()
{
    QTest::addColumn<int>("result");
    QTest::newRow("accepted") << int(QDialog::Accepted);
    QTest::newRow("rejected") << int(QDialog::Rejected);
}

void DlgWaitTest::ordinaryDialogCloses()
{
    QFETCH(int, result);
    KyDlgWait box(nullptr, Message, true, false);
    QTimer::singleShot(50, &box, [&box, result] { box.done(result); });
    QCOMPARE(box.exec(), result);
    QVERIFY(!box.isVisible());
}

/** Another application shows the box and then handles no events: this one looks at the screen. */
void DlgWaitTest::screenShowsTheBoxOfABusyApplication()
{
    if (!isRealWindowSystem())
        QSKIP("there is no screen that two applications share");
    ChildProcess child({QStringLiteral("busy")});
    QCOMPARE(child.readLine(), QByteArray("busy"));

    KyDlgWait same(nullptr, Message, true, true);
    const QRect area(Corner, same.size());
    const QImage expected = pixels(same.grab());
    const auto shown = [&area] {
        return pixels(
            QGuiApplication::primaryScreen()->grabWindow(0, area.x(), area.y(), area.width(), area.height()));
    };
    QCOMPARE(shown(), expected);
    QThread::msleep(100); // it goes on working
    QCOMPARE(shown(), expected);

    child.write("end of work");
    QCOMPARE(child.readLine(), QByteArray("gone"));
    QTRY_VERIFY_WITH_TIMEOUT(shown() != expected, 10000);
    QCOMPARE(child.finish(), 0);
}

namespace {

/** Blocks the thread until the test has written a line. */
void work()
{
    char byte = 0;
    while (::read(STDIN_FILENO, &byte, 1) == 1 && byte != '\n') {
    }
}

int childMain(int argc, char **argv)
{
    QApplication application(argc, argv);
    {
        KyDlgWait box(nullptr, Message, true, true);
        box.move(Corner);
        box.exec();
        ChildProcess::say("busy");
        work();
    }
    ChildProcess::say("gone");
    const ChildInput untilTheEnd([](const QByteArray &) {});
    return QApplication::exec();
}

} // namespace

KY_TEST_MAIN_WITH_CHILD(DlgWaitTest, childMain)
#include "dlgwaittest.moc"
