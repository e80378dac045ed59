#include "jpnfep.h"
#include "fepinterface.h"
#include "global.h"
#include "kymisc.h"
#include "qcopchannel.h"
#include "qcopenvelope.h"
#include "qpeapplication.h"

namespace {

constexpr auto TaskBar = "QPE/TaskBar";
constexpr int Stylus = 2; // KyMisc::defaultInputDevice() of a device that is written on

void requestSwitch(const FepInterface &fep, bool on)
{
    const bool isOn = fep.isOn();
    // These two names have no parentheses; the task bar knows them so.
    if (on && !isOn && fep.canSwitchOn())
        QCopChannel::send(TaskBar, "inputFepOnReq");
    if (!on && isOn)
        QCopChannel::send(TaskBar, "inputFepOffReq");
}

} // namespace

void JpnFep::setInputMode(int mode, bool on)
{
    const FepInterface *fep = QPEApplication::qwsGetFepIF();
    if (!fep)
        return;
    requestSwitch(*fep, on);
    QCopEnvelope(TaskBar, "inputFepModeChangedReq()") << mode;
}

void JpnFep::showInputMethod()
{
    Global::showInputMethod();
}

void JpnFep::hideInputMethod()
{
    Global::hideInputMethod();
}

void JpnFep::changeInputMethod(const QString &name)
{
    QCopEnvelope(TaskBar, "changeInputMethod()") << name.toUtf8().constData();
}

void JpnFep::autoShowInputMethod()
{
    if (KyMisc::defaultInputDevice() == Stylus)
        showInputMethod();
}

void JpnFep::autoHideInputMethod()
{
    hideInputMethod();
}

void JpnFep::autoChangeInputMethod(const QString &name)
{
    if (KyMisc::defaultInputDevice() == Stylus)
        changeInputMethod(name);
}
