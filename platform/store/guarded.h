#ifndef PDTM_GUARDED_H
#define PDTM_GUARDED_H

#include "pdtm.h"

#include <exception>

namespace pdtm {

/** Runs an operation of the C interface; no exception leaves it. */
template <typename Operation> PdtmStatus guarded(Operation operation) noexcept
{
    try {
        return operation();
    } catch (const std::exception &) { // only memory can run short
        return PdtmTooShort;
    }
}

} // namespace pdtm

#endif
