#ifndef KYDLGWAIT_H
#define KYDLGWAIT_H

#include "kyexport.h"
#include <QBasicTimer>
#include <QDialog>

/**
 * The small box that asks the user to wait while the application's thread is busy.
 *
 *     KyDlgWait wait(this, tr("Please wait..."), true, true);
 *     wait.exec();
 *     ... work that takes long ...
 *
 * With @c autoClose exec() comes back as soon as the box can be seen. The box then stays on the screen until
 * the object is destroyed, or until events are handled again. After show() alone it goes with the next
 * events.
 */
class KY_EXPORT KyDlgWait : public QDialog
{
    Q_OBJECT

public:
    /**
     * @param parent may be null
     * @param text breaks into lines; the box is as wide for every text, and higher for a long one
     * @param withIcon shows the picture "wait" in front of the text
     * @param autoClose the box is modal and exec() doesn't wait for the user; without it, it is an ordinary
     *                  dialog
     */
    KyDlgWait(QWidget *parent, const QString &text, bool withIcon, bool autoClose);
    ~KyDlgWait() override;

    /** With @c autoClose Accepted, after half a second at most also when the box could not be painted;
     * Rejected when the box was deleted meanwhile. */
    int exec() override;

signals:
    /** The box, or a part of it, was painted. */
    void painted(QPrivateSignal);

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    const bool closesItself;
    QBasicTimer closing; ///< takes a box that closes itself off the screen

    void waitUntilPainted();
};

#endif
