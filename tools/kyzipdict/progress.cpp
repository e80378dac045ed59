#include "progress.h"

#include <unistd.h>

namespace ZipDict {

namespace {

constexpr const char *ClearLine = "\r\033[K";

} // namespace

Progress progressOn(FILE *terminal)
{
    return [terminal](const char *what, size_t done, size_t all) {
        if (done < all)
            std::fprintf(terminal, "%s%s %zu %%", ClearLine, what, done * 100 / all);
        else
            std::fputs(ClearLine, terminal);
        std::fflush(terminal);
    };
}

Progress progressUnless(bool isQuiet)
{
    return isQuiet || isatty(STDERR_FILENO) == 0 ? Progress() : progressOn(stderr);
}

} // namespace ZipDict
