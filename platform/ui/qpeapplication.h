#ifndef KY_QPEAPPLICATION_H
#define KY_QPEAPPLICATION_H

#include "kyexport.h"
#include <QApplication>

class FepInterface;
class QPEApplicationPrivate;

/**
 * The application object of every program on the device. Its name() tells applications apart: the messages of
 * the close protocol carry it. It listens on the application's own channel, "QPE/Application/NAME", and on
 * "QPE/System".
 *
 * A program that is to run once gives its name to the constructor, and ends when another was first:
 *
 *     QPEApplication application(argc, argv, "memo");
 *     if (!application.isFirst()) {
 *         QPEApplication::raiseRunning("memo");
 *         return 0;
 *     }
 *
 * Qt's own scaling is switched off, so that a pixel is a pixel; sizes are scaled by qt_currentDpi().
 */
class KY_EXPORT QPEApplication : public QApplication
{
    Q_OBJECT
public:
    /**
     * Has the session bus start kyplatformd where none serves this HOME. When the device root's files are
     * kept by kyplatformd, waits until that is ready, at most 2 s.
     *
     * @param name name of the application, distinct for each; the base name of the program file when empty
     */
    QPEApplication(int &argc, char **argv, const QByteArray &name = QByteArray());
    ~QPEApplication() override;

    /** Name of the application, which is its objectName() as well; whichever is set, the channel follows. */
    [[nodiscard]] QByteArray name() const;
    /** Gives the application another name, and with it another channel. An empty name changes nothing. */
    void setName(const QByteArray &name);

    /**
     * True when this process was the first to start as an application of its name(): of several that start
     * at once, and of those that run, it is one. The next in line is when that one ends. Without a session
     * bus nobody can tell, and every process is.
     */
    [[nodiscard]] bool isFirst() const;
    /** True while an application of that name runs, this one included. */
    [[nodiscard]] static bool isRunning(const QByteArray &name);
    /** Asks the applications of that name to show themselves, by `raise()` on their channel.
     * @return false when none runs */
    static bool raiseRunning(const QByteArray &name);

    /** Name of the running application, whatever class qApp has: its objectName(), else its
     * applicationName(). */
    [[nodiscard]] static QString applicationNameOf(const QCoreApplication *application);

    /** Root of the platform's files, the value of QPEDIR, else /home/QtPalmtop; ends in a slash. */
    [[nodiscard]] static QString qpeDir();
    /** Folder of the user's documents, $HOME/Documents, made at first use; ends in a slash. */
    [[nodiscard]] static QString documentDir();

    /** Size of the desktop in pixels: the environment variable KY_SCREEN, such as "480x640", else that of the
     * primary screen; empty without an application object. */
    [[nodiscard]] static QSize desktopSize();
    /** Size that a maximised window gets, without what the window system puts around it: all of the desktop
     * where KY_SCREEN tells its size. */
    [[nodiscard]] static QSize maximizedSize();

    /** The input method's state; null when none runs in this session. Owned by the platform. */
    [[nodiscard]] static const FepInterface *qwsGetFepIF();

    /** What a stylus that is held still does. */
    enum StylusMode {
        LeftOnly,   ///< nothing: it is the left button
        RightOnHold ///< holding the left button still for 500 ms gives a press of the right button
    };
    /** Sets how @p widget takes the stylus; for a scroll area this is how its viewport does. */
    static void setStylusOperation(QWidget *widget, StylusMode mode);
    /** LeftOnly unless set otherwise. */
    [[nodiscard]] static StylusMode stylusOperation(QWidget *widget);

signals:
    /** A message on the application's own channel. */
    void appMessage(const QByteArray &message, const QByteArray &data);
    /** `raise()` on the application's own channel: its windows have come to the front. */
    void raised();
    /** Some process changed the volume, or switched sound off or on: `volumeChange(bool)` on "QPE/System". */
    void volumeChanged(bool muted);
    /** The user chose 12 or 24 hours: `clockChange(bool)` on "QPE/System". */
    void clockChanged(bool ampm);

private:
    QPEApplicationPrivate *const d;
};

#endif
