#ifndef PDTM_ENVIRONMENT_H
#define PDTM_ENVIRONMENT_H

#include <string>

namespace pdtm {

/** Language code set by DtmSetLanguage(), "ja" before. */
[[nodiscard]] const std::string &language();

/** File system path of a logical path; empty for an invalid one (see DtmGetBaseNamePtr()). `F0:` stands for
 * $HOME/Applications/dtm/, which is made, mode 0700, at first use. */
[[nodiscard]] std::string realPath(const char *logicalPath);
/** The same for a file that is about to be made: a folder of internal storage that was removed is made anew.
 */
[[nodiscard]] std::string realPathOfNew(const char *logicalPath);

/** The directory part, up to and including the last slash or the `F0:`; empty when there is none. */
[[nodiscard]] std::string directoryPart(const std::string &path);

} // namespace pdtm

#endif
