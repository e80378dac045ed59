#include "fepinterface.h"
#include "fepstate_p.h"
#include "qpeapplication.h"
#include "sessionbus_p.h"

namespace {

/** Looks anew at each question: the user may switch the processor at any time, and it may end. */
class KeptFepInterface : public FepInterface
{
public:
    bool isOn() const override
    {
        const std::optional<FepState> state = FepState::read();
        return state && state->on;
    }
    bool canSwitchOn() const override
    {
        const std::optional<FepState> state = FepState::read();
        return state && state->switchable;
    }
};

} // namespace

const FepInterface *QPEApplication::qwsGetFepIF()
{
    static const KeptFepInterface interface;
    // The file outlives a service that was killed.
    const bool isKept = SessionBus::hasOwner(SessionBus::serviceName(QStringLiteral("service")));
    return isKept && FepState::read() ? &interface : nullptr;
}
