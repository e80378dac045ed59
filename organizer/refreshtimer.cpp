#include "refreshtimer.h"

#include <QEvent>
#include <QWidget>

namespace {

constexpr int Pace = 1000; // ms

} // namespace

RefreshTimer::RefreshTimer(QWidget *viewer) : QObject(viewer)
{
    m_timer.setInterval(Pace);
    connect(&m_timer, &QTimer::timeout, this, &RefreshTimer::due);
    viewer->installEventFilter(this);
}

bool RefreshTimer::eventFilter(QObject *object, QEvent *event)
{
    if (event->type() == QEvent::Show) {
        emit due();
        m_timer.start();
    } else if (event->type() == QEvent::Hide) {
        m_timer.stop();
    }
    return QObject::eventFilter(object, event);
}
