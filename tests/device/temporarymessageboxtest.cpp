#include "kymisc.h"
#include <functional>
#include <QApplication>
#include <QElapsedTimer>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

namespace {

constexpr int Timeout = 3;
constexpr qint64 TimeoutTime = 300; // ms

/** Finds the box when it is shown. */
class BoxWatch : public QObject
{
public:
    BoxWatch() { qApp->installEventFilter(this); }

    QPointer<QMessageBox> box;
    int shown = 0;
    std::function<void(QMessageBox &)> onShow; ///< called while the box is being shown

    bool eventFilter(QObject *object, QEvent *event) override
    {
        auto *shownBox = event->type() == QEvent::Show ? qobject_cast<QMessageBox *>(object) : nullptr;
        if (shownBox) {
            box = shownBox;
            ++shown;
            if (onShow)
                onShow(*shownBox);
        }
        return false;
    }
};

void showBox(int timeout, QWidget *parent = nullptr, int button0 = QMessageBox::Ok, int button1 = 0,
             int button2 = 0)
{
    KyMisc::temporaryMessageBox("Caption", "Text", timeout, QMessageBox::Information, button0, button1,
                                button2, parent, "box", 0);
}

} // namespace

class TemporaryMessageBoxTest : public QObject
{
    Q_OBJECT
private slots:
    void boxIsAsAskedFor();
    void nullsAreTaken();
    void windowFlags();
    void buttons_data();
    void buttons();
    void boxStandsForTheTime();
    void boxIsShownAtOnceWithoutTime_data();
    void boxIsShownAtOnceWithoutTime();
    void eventsAreHandled();
    void otherWindowsAreLocked();
    void answeredBoxKeepsTheTime_data();
    void answeredBoxKeepsTheTime();
    void parentMayGo();
    void applicationDoesNotEndWithTheBox();
};

void TemporaryMessageBoxTest::boxIsAsAskedFor()
{
    QWidget parent;
    BoxWatch watch;
    watch.onShow = [&parent](QMessageBox &box) {
        QCOMPARE(box.windowTitle(), QString("Caption"));
        QCOMPARE(box.text(), QString::fromUtf8("文 <b>"));
        QCOMPARE(box.icon(), QMessageBox::Critical);
        QCOMPARE(box.parentWidget(), &parent);
        QCOMPARE(box.objectName(), QString::fromUtf8("名"));
        QVERIFY(box.isWindow());
    };
    KyMisc::temporaryMessageBox("Caption", QString::fromUtf8("文 <b>"), 0, QMessageBox::Critical, 1, 2, 0,
                                &parent, "名", 0);
    QCOMPARE(watch.shown, 1);
}

void TemporaryMessageBoxTest::nullsAreTaken()
{
    BoxWatch watch;
    watch.onShow = [](QMessageBox &box) {
        QCOMPARE(box.parentWidget(), nullptr);
        QCOMPARE(box.objectName(), QString());
    };
    KyMisc::temporaryMessageBox(QString(), QString(), 0, QMessageBox::NoIcon, 0, 0, 0, nullptr, nullptr, 0);
    QCOMPARE(watch.shown, 1);
}

void TemporaryMessageBoxTest::windowFlags()
{
    BoxWatch watch;
    watch.onShow = [](QMessageBox &box) { QVERIFY(box.windowFlags().testFlag(Qt::WindowStaysOnTopHint)); };
    KyMisc::temporaryMessageBox("Caption", "Text", 0, QMessageBox::Warning, 1, 0, 0, nullptr, "box",
                                Qt::WindowStaysOnTopHint);
    QCOMPARE(watch.shown, 1);
}

void TemporaryMessageBoxTest::buttons_data()
{
    using Buttons = QList<int>;
    QTest::addColumn<Buttons>("codes");
    QTest::addColumn<QMessageBox::StandardButtons>("expected");
    QTest::addColumn<int>("defaultButton");
    QTest::addColumn<int>("escapeButton");
    const auto row = [](const char *name, const Buttons &codes, QMessageBox::StandardButtons expected,
                        int defaultButton = 0, int escapeButton = 0) {
        QTest::newRow(name) << codes << expected << defaultButton << escapeButton;
    };
    using Box = QMessageBox;
    row("1", {1, 0, 0}, Box::Ok);
    row("2", {2, 0, 0}, Box::Cancel);
    row("3", {3, 0, 0}, Box::Yes);
    row("4", {4, 0, 0}, Box::No);
    row("5", {5, 0, 0}, Box::Abort);
    row("6", {6, 0, 0}, Box::Retry);
    row("7", {7, 0, 0}, Box::Ignore);
    row("8", {8, 0, 0}, Box::YesToAll);
    row("9", {9, 0, 0}, Box::NoToAll);
    row("three", {3, 4, 2}, Box::Yes | Box::No | Box::Cancel);
    row("default and escape", {3 | 0x100, 4, 2 | 0x200}, Box::Yes | Box::No | Box::Cancel, Box::Yes,
        Box::Cancel);
    row("both on one", {3, 4 | 0x300, 0}, Box::Yes | Box::No, Box::No, Box::No);
    row("standard buttons", {Box::Save, Box::Discard | 0x100, Box::Cancel | 0x200},
        Box::Save | Box::Discard | Box::Cancel, Box::Discard, Box::Cancel);
    row("first and last standard button", {Box::FirstButton, Box::LastButton, 0},
        Box::Ok | Box::RestoreDefaults);
    row("numbers that are no button", {10, 0x3ff, 0x1400}, Box::NoButton);
    row("beyond the buttons", {3, 0x10000000, -1}, Box::Yes);
    row("flags alone", {3, 0x100, 0x200}, Box::Yes);
}

void TemporaryMessageBoxTest::buttons()
{
    QFETCH(QList<int>, codes);
    QFETCH(QMessageBox::StandardButtons, expected);
    QFETCH(int, defaultButton);
    QFETCH(int, escapeButton);
    BoxWatch watch;
    watch.onShow = [&](QMessageBox &box) {
        QCOMPARE(box.standardButtons(), expected);
        if (defaultButton)
            QCOMPARE(int(box.standardButton(box.defaultButton())), defaultButton);
        if (escapeButton)
            QCOMPARE(int(box.standardButton(box.escapeButton())), escapeButton);
    };
    showBox(0, nullptr, codes[0], codes[1], codes[2]);
    QCOMPARE(watch.shown, 1);
}

void TemporaryMessageBoxTest::boxStandsForTheTime()
{
    BoxWatch watch;
    QTimer timer;
    int visible = 0;
    connect(&timer, &QTimer::timeout, this, [&] { visible += watch.box && watch.box->isVisible(); });
    timer.start(0);
    QElapsedTimer clock;
    clock.start();
    showBox(Timeout);
    QVERIFY(clock.elapsed() >= TimeoutTime);
    QVERIFY(visible >= Timeout);
    QCOMPARE(watch.shown, 1);
    QVERIFY(watch.box.isNull());
}

void TemporaryMessageBoxTest::boxIsShownAtOnceWithoutTime_data()
{
    QTest::addColumn<int>("timeout");
    QTest::newRow("none") << 0;
    QTest::newRow("negative") << -1;
}

void TemporaryMessageBoxTest::boxIsShownAtOnceWithoutTime()
{
    QFETCH(int, timeout);
    BoxWatch watch;
    bool ran = false;
    QTimer::singleShot(0, this, [&ran] { ran = true; });
    showBox(timeout);
    QCOMPARE(watch.shown, 1);
    QVERIFY(watch.box.isNull());
    QVERIFY(!ran);
}

void TemporaryMessageBoxTest::eventsAreHandled()
{
    bool ran = false, boxWasThere = false;
    BoxWatch watch;
    QTimer::singleShot(0, this, [&] {
        ran = true;
        boxWasThere = watch.box && watch.box->isVisible();
    });
    showBox(1);
    QVERIFY(ran);
    QVERIFY(boxWasThere);
}

/** A tap on them would start other work in the middle of the caller's. */
void TemporaryMessageBoxTest::otherWindowsAreLocked()
{
    QPushButton other("Other");
    int clicks = 0;
    connect(&other, &QPushButton::clicked, this, [&clicks] { ++clicks; });
    other.show();
    QVERIFY(QTest::qWaitForWindowExposed(&other));
    const auto tap = [&other] { QTest::mouseClick(other.windowHandle(), Qt::LeftButton, {}, QPoint(5, 5)); };
    QTimer::singleShot(0, this, tap);
    showBox(1);
    QCOMPARE(clicks, 0);
    tap();
    QCOMPARE(clicks, 1);
}

void TemporaryMessageBoxTest::answeredBoxKeepsTheTime_data()
{
    using Answer = std::function<void(QMessageBox &)>;
    QTest::addColumn<Answer>("answer");
    QTest::newRow("button") << Answer(
        [](QMessageBox &box) { QTest::mouseClick(box.button(QMessageBox::Ok), Qt::LeftButton); });
    QTest::newRow("escape key") << Answer([](QMessageBox &box) { QTest::keyClick(&box, Qt::Key_Escape); });
}

void TemporaryMessageBoxTest::answeredBoxKeepsTheTime()
{
    QFETCH(std::function<void(QMessageBox &)>, answer);
    BoxWatch watch;
    bool wasHidden = false;
    QTimer::singleShot(0, this, [&] {
        answer(*watch.box);
        wasHidden = watch.box && !watch.box->isVisible();
    });
    QElapsedTimer clock;
    clock.start();
    showBox(Timeout);
    QVERIFY(clock.elapsed() >= TimeoutTime);
    QVERIFY(wasHidden);
    QVERIFY(watch.box.isNull());
}

void TemporaryMessageBoxTest::parentMayGo()
{
    auto parent = std::make_unique<QWidget>();
    BoxWatch watch;
    bool boxWentToo = false;
    QTimer::singleShot(0, this, [&] {
        parent.reset();
        boxWentToo = watch.box.isNull();
    });
    QElapsedTimer clock;
    clock.start();
    showBox(Timeout, parent.get());
    QVERIFY(clock.elapsed() >= TimeoutTime);
    QCOMPARE(watch.shown, 1);
    QVERIFY(boxWentToo);
}

void TemporaryMessageBoxTest::applicationDoesNotEndWithTheBox()
{
    const QSignalSpy closed(qApp, &QGuiApplication::lastWindowClosed);
    BoxWatch watch;
    qsizetype closedAtTheEnd = -1;
    QTimer::singleShot(0, this, [&] {
        QTimer::singleShot(0, this, [&watch] { watch.box->button(QMessageBox::Ok)->click(); });
        showBox(1);
        closedAtTheEnd = closed.size();
        QCoreApplication::exit();
    });
    QCoreApplication::exec();
    QCOMPARE(closedAtTheEnd, 0);
}

QTEST_MAIN(TemporaryMessageBoxTest)
#include "temporarymessageboxtest.moc"
