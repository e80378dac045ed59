#include "commandline.h"
#include "dictionarycheck.h"
#include "wholefile.h"
#include <cstdio>

namespace ZipDict {

int dumpCommand(const Arguments &arguments)
{
    CommandLine line(arguments, {});
    if (line.isGood() && line.rest().size() != 1)
        line.refuse("dump needs one file");
    if (!line.isGood())
        return 2;
    const std::optional<std::vector<uint8_t>> file = readWholeFile(line.rest().front());
    if (!file)
        return 1;
    if (dumpDictionary(*file, stdout))
        return 0;
    std::fprintf(stderr, "kyzipdict: %s is no dictionary\n", line.rest().front().c_str());
    return 1;
}

} // namespace ZipDict
