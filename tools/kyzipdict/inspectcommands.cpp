#include "commandline.h"
#include "dictionarycheck.h"
#include "wholefile.h"
#include <cstdio>

namespace ZipDict {

namespace {

/** The one file that a command looks at. */
struct InspectedFile
{
    int code = 0; ///< of the command, when there is none
    std::string name;
    std::vector<uint8_t> bytes;
};

InspectedFile onlyFile(const std::string &command, const Arguments &arguments)
{
    CommandLine line(arguments, {});
    if (line.isGood() && line.rest().size() != 1)
        line.refuse(command + " needs one file");
    if (!line.isGood())
        return {2, {}, {}};
    const std::string &name = line.rest().front();
    const std::optional<std::vector<uint8_t>> bytes = readWholeFile(name);
    return bytes ? InspectedFile{0, name, *bytes} : InspectedFile{1, name, {}};
}

} // namespace

int dumpCommand(const Arguments &arguments)
{
    const InspectedFile file = onlyFile("dump", arguments);
    if (file.code != 0 || dumpDictionary(file.bytes, stdout))
        return file.code;
    std::fprintf(stderr, "kyzipdict: %s is no dictionary\n", file.name.c_str());
    return 1;
}

int checkCommand(const Arguments &arguments)
{
    const InspectedFile file = onlyFile("check", arguments);
    if (file.code != 0)
        return file.code;
    const std::vector<std::string> findings = checkDictionary(file.bytes);
    for (const std::string &finding : findings)
        std::printf("%s\n", finding.c_str());
    if (findings.empty())
        std::printf("%s is good\n", file.name.c_str());
    return findings.empty() ? 0 : 1;
}

} // namespace ZipDict
