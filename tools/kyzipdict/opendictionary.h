#ifndef OPENDICTIONARY_H
#define OPENDICTIONARY_H

#include "ydic.h"
#include <memory>
#include <string>

namespace ZipDict {

struct DictionaryCloser
{
    void operator()(ydic_info *info) const { ZipFin(info); }
};
using OpenDictionary = std::unique_ptr<ydic_info, DictionaryCloser>;

/** Opens a file that its user named, and a patch for it. Tells on standard error why not.
 * @param patch empty: none @return null when they can't be used */
[[nodiscard]] OpenDictionary openNamed(const std::string &dictionary, const std::string &patch);

/** Opens what the device has, else the dictionary that is installed with the program. */
[[nodiscard]] OpenDictionary openInstalled();

} // namespace ZipDict

#endif
