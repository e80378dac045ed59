#include "commandline.h"
#include "lookup.h"
#include "opendictionary.h"

namespace ZipDict {

namespace {

constexpr unsigned UsualResults = 100;

} // namespace

int lookupCommand(const Arguments &arguments)
{
    CommandLine line(arguments, {"--dictionary", "--patch", "--max"});
    const std::string dictionary = line.value("--dictionary");
    const std::string patch = line.value("--patch");
    const unsigned max = line.number("--max", 1, MostResults, UsualResults);
    if (line.isGood() && line.rest().empty())
        line.refuse("lookup needs a code or an address");
    if (line.isGood() && dictionary.empty() && !patch.empty())
        line.refuse("--patch needs --dictionary: a patch belongs to one edition");
    if (!line.isGood())
        return 2;
    const OpenDictionary info = dictionary.empty() ? openInstalled() : openNamed(dictionary, patch);
    return info && lookUp(line.rest(), max, info.get(), stdout, stderr) ? 0 : 1;
}

} // namespace ZipDict
