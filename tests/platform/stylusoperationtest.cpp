#include "qpeapplication.h"
#include <QListWidget>
#include <QtTest>

namespace {

/** Keeps the mouse events that reach a widget, as text such as "press left 5,5". */
class Pad : public QWidget
{
public:
    QStringList events;

protected:
    void mousePressEvent(QMouseEvent *event) override { note("press", event); }
    void mouseReleaseEvent(QMouseEvent *event) override { note("release", event); }
    void mouseMoveEvent(QMouseEvent *event) override { note("move", event); }

private:
    void note(const char *what, const QMouseEvent *event)
    {
        const char *button = event->button() == Qt::LeftButton    ? "left"
                             : event->button() == Qt::RightButton ? "right"
                                                                  : "none";
        const QPoint at = event->position().toPoint();
        events.append(QString("%1 %2 %3,%4").arg(what, button).arg(at.x()).arg(at.y()));
    }
};

/** A mouse move with the left button held, which QTest doesn't give. */
void drag(QWidget *widget, const QPoint &position)
{
    QMouseEvent event(QEvent::MouseMove, position, widget->mapToGlobal(position), Qt::NoButton,
                      Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(widget, &event);
}

} // namespace

class StylusOperationTest : public QObject
{
    Q_OBJECT
private slots:
    void holdGivesRightPress();
    void shortPressStaysLeft();
    void movingPreventsHold_data();
    void movingPreventsHold();
    void holdUsesViewportOfScrollArea();
    void leftOnlyTakesHoldAway();
    void widgetMayDieOnRightPress();
};

void StylusOperationTest::holdGivesRightPress()
{
    Pad pad;
    QPEApplication::setStylusOperation(&pad, QPEApplication::RightOnHold);
    QTest::mousePress(&pad, Qt::LeftButton, {}, {5, 5});
    QCOMPARE(pad.events, QStringList{"press left 5,5"});
    QTest::qWait(400);
    QCOMPARE(pad.events.size(), 1);
    QTRY_COMPARE(pad.events, (QStringList{"press left 5,5", "press right 5,5"}));
    drag(&pad, {40, 40});
    QTest::mouseRelease(&pad, Qt::LeftButton, {}, {7, 6});
    QCOMPARE(pad.events, (QStringList{"press left 5,5", "press right 5,5", "release right 7,6"}));
    QTest::mouseClick(&pad, Qt::LeftButton, {}, {9, 9});
    QCOMPARE(pad.events.mid(3), (QStringList{"press left 9,9", "release left 9,9"}));
}

void StylusOperationTest::shortPressStaysLeft()
{
    Pad pad;
    QPEApplication::setStylusOperation(&pad, QPEApplication::RightOnHold);
    QTest::mouseClick(&pad, Qt::LeftButton, {}, {5, 5});
    QTest::mousePress(&pad, Qt::RightButton, {}, {6, 6});
    QTest::qWait(700);
    QCOMPARE(pad.events, (QStringList{"press left 5,5", "release left 5,5", "press right 6,6"}));
}

void StylusOperationTest::movingPreventsHold_data()
{
    QTest::addColumn<int>("distance");
    QTest::addColumn<bool>("held");
    QTest::newRow("a trembling hand") << 6 << true;
    QTest::newRow("a stroke") << 7 << false;
}

void StylusOperationTest::movingPreventsHold()
{
    QFETCH(int, distance);
    Pad pad;
    QPEApplication::setStylusOperation(&pad, QPEApplication::RightOnHold);
    QTest::mousePress(&pad, Qt::LeftButton, {}, {5, 5});
    drag(&pad, {5 + distance, 5});
    QTest::qWait(700);
    QTEST(pad.events.contains("press right 5,5"), "held");
}

void StylusOperationTest::holdUsesViewportOfScrollArea()
{
    QListWidget list;
    list.addItem("one");
    list.show();
    QSignalSpy clicked(&list, &QListWidget::itemClicked), pressed(&list, &QListWidget::itemPressed);
    QPEApplication::setStylusOperation(&list, QPEApplication::RightOnHold);
    QCOMPARE(QPEApplication::stylusOperation(&list), QPEApplication::RightOnHold);
    QCOMPARE(QPEApplication::stylusOperation(list.viewport()), QPEApplication::RightOnHold);
    const QPoint row = list.visualItemRect(list.item(0)).center();
    QTest::mousePress(list.viewport(), Qt::LeftButton, {}, row);
    QTRY_COMPARE(pressed.size(), 2); // by the left and by the right button
    QTest::mouseRelease(list.viewport(), Qt::LeftButton, {}, row);
    QCOMPARE(clicked.size(), 0);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, row);
    QCOMPARE(clicked.size(), 1);
}

void StylusOperationTest::leftOnlyTakesHoldAway()
{
    Pad pad;
    QCOMPARE(QPEApplication::stylusOperation(&pad), QPEApplication::LeftOnly);
    QPEApplication::setStylusOperation(&pad, QPEApplication::RightOnHold);
    QPEApplication::setStylusOperation(&pad, QPEApplication::RightOnHold);
    QPEApplication::setStylusOperation(&pad, QPEApplication::LeftOnly);
    QCOMPARE(QPEApplication::stylusOperation(&pad), QPEApplication::LeftOnly);
    QTest::mousePress(&pad, Qt::LeftButton, {}, {5, 5});
    QTest::qWait(700);
    QCOMPARE(pad.events, QStringList{"press left 5,5"});
}

void StylusOperationTest::widgetMayDieOnRightPress()
{
    class Mortal : public QWidget
    {
    protected:
        void mousePressEvent(QMouseEvent *event) override
        {
            if (event->button() == Qt::RightButton)
                delete this;
        }
    };
    QPointer<QWidget> mortal = new Mortal;
    QPEApplication::setStylusOperation(mortal, QPEApplication::RightOnHold);
    QTest::mousePress(mortal, Qt::LeftButton, {}, {5, 5});
    QTRY_VERIFY(mortal.isNull());
}

QTEST_MAIN(StylusOperationTest)
#include "stylusoperationtest.moc"
