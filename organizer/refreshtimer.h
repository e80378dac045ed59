#ifndef REFRESHTIMER_H
#define REFRESHTIMER_H

#include <QTimer>

class QWidget;

/** Calls for new readings of the device every second while a widget is to be seen, and at once when it
 * comes to be. */
class RefreshTimer : public QObject
{
    Q_OBJECT
public:
    explicit RefreshTimer(QWidget *viewer);

signals:
    void due();

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    QTimer m_timer;
};

#endif
