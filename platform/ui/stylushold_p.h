#ifndef KY_STYLUSHOLD_H
#define KY_STYLUSHOLD_H

#include <QBasicTimer>
#include <QEvent>
#include <QObject>
#include <QPoint>

class QMouseEvent;
class QWidget;

/**
 * Gives a widget a press of the right button when the left one is held still for 500 ms. The left press has
 * reached the widget by then; what follows up to the release is the right button's. Belongs to its widget.
 */
class StylusHold : public QObject
{
    Q_OBJECT
public:
    static constexpr int HoldTime = 500;   // ms
    static constexpr int HoldDistance = 6; // pixels at 72 dpi that a still stylus may wander

    explicit StylusHold(QWidget *widget);

    /** The widget's object of this class, null when it has none. */
    [[nodiscard]] static StylusHold *of(const QWidget *widget);

protected:
    bool eventFilter(QObject *object, QEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    bool handleMouse(const QMouseEvent *event);
    void press(const QMouseEvent *event);
    void sendRight(QEvent::Type type, const QPointF &position, const QPointF &globalPosition);

    QWidget *const m_widget;
    QBasicTimer m_timer;
    QPointF m_position;
    QPointF m_globalPosition;
    bool m_held = false;
};

#endif
