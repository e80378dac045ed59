#ifndef KY_FEPINTERFACE_H
#define KY_FEPINTERFACE_H

#include "kyexport.h"

/** State of the input method that runs under the task bar, as far as applications may ask. */
class KY_EXPORT FepInterface
{
public:
    virtual ~FepInterface() = default;

    /** True while what is typed goes through the front-end processor. */
    [[nodiscard]] virtual bool isOn() const = 0;
    /** True when it may be switched on now. */
    [[nodiscard]] virtual bool canSwitchOn() const = 0;
};

#endif
