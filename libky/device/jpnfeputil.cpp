#include "jpnfeputil.h"
#include "jpnfep.h"

JpnFepUtil::JpnFepUtil() = default;

void JpnFepUtil::setInputMode(int mode, bool on)
{
    JpnFep::setInputMode(mode, on);
}

void JpnFepUtil::showInputMethod()
{
    JpnFep::showInputMethod();
}

void JpnFepUtil::hideInputMethod()
{
    JpnFep::hideInputMethod();
}

void JpnFepUtil::changeInputMethod(const QString &name)
{
    JpnFep::changeInputMethod(name);
}

void JpnFepUtil::autoShowInputMethod()
{
    JpnFep::autoShowInputMethod();
}

void JpnFepUtil::autoHideInputMethod()
{
    JpnFep::autoHideInputMethod();
}

void JpnFepUtil::autoChangeInputMethod(const QString &name)
{
    JpnFep::autoChangeInputMethod(name);
}
