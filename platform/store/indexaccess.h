#ifndef PDTM_INDEXACCESS_H
#define PDTM_INDEXACCESS_H

#include "guarded.h"
#include "indexregistry.h"

namespace pdtm {

/** The box behind a handle, if it is the one that the index is made for. PdtmBadArgument otherwise. */
[[nodiscard]] inline PdtmStatus boxOf(uint32_t handle, const Index &index, std::shared_ptr<BoxFile> &box)
{
    box = BoxFile::ofHandle(handle);
    if (!box) {
        return PdtmBadArgument;
    }
    IndexRegistry &registry = IndexRegistry::instance();
    const Family *family = registry.familyOf(index);
    const bool isOurs = family == nullptr || family == &registry.familyOf(*box) ||
                        BoxFile::ifOpen(family->boxPath) == box; // a link to the box
    return isOurs ? PdtmOk : PdtmBadArgument;
}

} // namespace pdtm

#endif
