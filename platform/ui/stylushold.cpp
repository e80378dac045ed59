#include "stylushold_p.h"
#include "currentdpi.h"
#include <QCoreApplication>
#include <QMouseEvent>
#include <QTimerEvent>
#include <QWidget>

StylusHold::StylusHold(QWidget *widget) : QObject(widget), m_widget(widget)
{
    widget->installEventFilter(this);
}

StylusHold *StylusHold::of(const QWidget *widget)
{
    return widget->findChild<StylusHold *>(QString(), Qt::FindDirectChildrenOnly);
}

bool StylusHold::eventFilter(QObject *, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
        return handleMouse(static_cast<QMouseEvent *>(event));
    case QEvent::Hide:
        m_timer.stop();
        m_held = false;
        return false;
    default:
        return false;
    }
}

bool StylusHold::handleMouse(const QMouseEvent *event)
{
    const QEvent::Type type = event->type();
    if (type == QEvent::MouseButtonPress) {
        press(event);
        return false;
    }
    if (m_held && event->button() == Qt::LeftButton && type == QEvent::MouseButtonRelease) {
        m_held = false;
        sendRight(type, event->position(), event->globalPosition());
        return true;
    }
    const QPointF way = event->globalPosition() - m_globalPosition;
    const int limit = HoldDistance * qt_currentDpi() / 72;
    if (type != QEvent::MouseMove || way.manhattanLength() > limit)
        m_timer.stop();
    return m_held && type == QEvent::MouseMove;
}

void StylusHold::press(const QMouseEvent *event)
{
    m_timer.stop();
    if (event->button() != Qt::LeftButton)
        return;
    m_held = false;
    m_position = event->position();
    m_globalPosition = event->globalPosition();
    m_timer.start(HoldTime, Qt::PreciseTimer, this);
}

void StylusHold::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_timer.timerId())
        return;
    m_timer.stop();
    m_held = true;
    sendRight(QEvent::MouseButtonPress, m_position, m_globalPosition);
}

void StylusHold::sendRight(QEvent::Type type, const QPointF &position, const QPointF &globalPosition)
{
    const Qt::MouseButtons buttons = type == QEvent::MouseButtonPress ? Qt::RightButton : Qt::NoButton;
    QMouseEvent event(type, position, globalPosition, Qt::RightButton, buttons, Qt::NoModifier);
    QCoreApplication::sendEvent(m_widget, &event); // may delete this
}
