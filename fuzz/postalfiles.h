#ifndef POSTALFILES_H
#define POSTALFILES_H

#include "../tests/postal/searcheverything.h"
#include "fuzzsupport.h"

#include <memory>

/** The files of an input. Its first two bytes are the length of a patch, and the patch lies at its end; 0:
 * there is none. All else is the dictionary. */
inline std::unique_ptr<imagebuilder::OpenImages> postalFiles(const uint8_t *data, size_t size)
{
    const imagebuilder::Bytes bytes(reinterpret_cast<const char *>(data), size);
    if (size < 2)
        return std::make_unique<imagebuilder::OpenImages>(bytes);
    const size_t patch = std::min<size_t>(ydic_u16(data), size - 2);
    const imagebuilder::Bytes dictionary = bytes.substr(2, size - 2 - patch);
    if (patch == 0)
        return std::make_unique<imagebuilder::OpenImages>(dictionary);
    return std::make_unique<imagebuilder::OpenImages>(dictionary, bytes.substr(size - patch));
}

#endif
