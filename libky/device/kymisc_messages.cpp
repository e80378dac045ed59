#include "kymisc.h"

#include "qcopchannel.h"
#include "qcopenvelope.h"
#include "qpeapplication.h"

namespace {

constexpr auto SystemChannel = "QPE/System";
constexpr auto TaskBarChannel = "QPE/TaskBar";

/** What `setScreenSaverMode(int)` asks of the power manager. */
enum ScreenSaverMode { ScreenMayGoDark = 0, StayOn = 2, PowerOffEnabled = 200, SaverDisabled = 300 };

void setScreenSaverMode(ScreenSaverMode mode)
{
    QCopEnvelope envelope(SystemChannel, "setScreenSaverMode(int)");
    envelope << static_cast<int>(mode);
}

void sendWithOwnName(const char *message, const QString &path)
{
    const QCoreApplication *application = QCoreApplication::instance();
    QCopEnvelope envelope(SystemChannel, message);
    envelope << path << (application ? QPEApplication::applicationNameOf(application) : QString());
}

} // namespace

void KyMisc::enableAutoPowerOff(bool enable)
{
    setScreenSaverMode(enable ? PowerOffEnabled : StayOn);
}

void KyMisc::enableAutoPowerOff(bool enable, bool allowScreenOff, bool disableSaver)
{
    qDebug("enableAutoPowerOff %d %d %d", enable, allowScreenOff, disableSaver);
    if (!enable && allowScreenOff)
        setScreenSaverMode(ScreenMayGoDark);
    else
        enableAutoPowerOff(enable);
    if (!enable && disableSaver) {
        qDebug("send DisableScreenSaver");
        setScreenSaverMode(SaverDisabled);
    }
}

void KyMisc::enableLockApplication(bool lock)
{
    QCopEnvelope envelope(TaskBarChannel, "lockApplication(bool)");
    envelope << static_cast<int>(lock); // 32 bits, in spite of the signature: the task bar reads that many
}

void KyMisc::requestCloseFile(const QString &path)
{
    sendWithOwnName("closeFile(QString,QString)", path);
}

void KyMisc::requestOpenFile(const QString &path)
{
    sendWithOwnName("openFile(QString,QString)", path);
}

void KyMisc::stopSamba()
{
    QCopChannel::send(SystemChannel, "stopSamba()");
}

void KyMisc::startSamba()
{
    QCopChannel::send(SystemChannel, "startSamba()");
}
