#ifndef QPEAPPLICATION_H
#define QPEAPPLICATION_H

#include "kyexport.h"
#include <QApplication>

class QPEApplicationPrivate;

/**
 * The application object of every program on the device. Its name() tells applications apart: the messages of the
 * close protocol carry it.
 */
class KY_EXPORT QPEApplication : public QApplication
{
    Q_OBJECT
public:
    QPEApplication(int &argc, char **argv);
    ~QPEApplication() override;

    /** Name of the application: that of the program file, or what setName() gave. */
    [[nodiscard]] QByteArray name() const;
    void setName(const QByteArray &name);

    /** Name of the running application, whatever class qApp has: its objectName(), else its applicationName(). */
    [[nodiscard]] static QString applicationNameOf(const QCoreApplication *application);

    /** Root of the platform's files, from QPEDIR; ends in a slash. */
    [[nodiscard]] static QString qpeDir();
    /** Folder of the user's documents; ends in a slash. */
    [[nodiscard]] static QString documentDir();

    enum StylusMode {
        LeftOnly,
        RightOnHold ///< press and hold gives a press of the right button
    };
    static void setStylusOperation(QWidget *widget, StylusMode mode);
    [[nodiscard]] static StylusMode stylusOperation(QWidget *widget);

signals:
    /** A message on the application's own channel, "QPE/Application/NAME". */
    void appMessage(const QByteArray &message, const QByteArray &data);

private:
    QPEApplicationPrivate *const d;
};

#endif
