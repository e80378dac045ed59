#ifndef PROGRESS_H
#define PROGRESS_H

#include "source.h"
#include <cstdio>

namespace ZipDict {

/** Tells progress in one line of a terminal, which goes away when the work is done. */
[[nodiscard]] Progress progressOn(FILE *terminal);

/** Progress on standard error; none when it is no terminal, or not wanted. */
[[nodiscard]] Progress progressUnless(bool isQuiet);

} // namespace ZipDict

#endif
