#include "commandline.h"
#include "dictionarycheck.h"
#include "wholefile.h"
#include <cstdio>

namespace ZipDict {

int checkCommand(const Arguments &arguments)
{
    CommandLine line(arguments, {});
    if (line.isGood() && line.rest().size() != 1)
        line.refuse("check needs one file");
    if (!line.isGood())
        return 2;
    const std::optional<std::vector<uint8_t>> file = readWholeFile(line.rest().front());
    if (!file)
        return 1;
    const std::vector<std::string> findings = checkDictionary(*file);
    for (const std::string &finding : findings)
        std::printf("%s\n", finding.c_str());
    if (findings.empty())
        std::printf("%s is good\n", line.rest().front().c_str());
    return findings.empty() ? 0 : 1;
}

} // namespace ZipDict
