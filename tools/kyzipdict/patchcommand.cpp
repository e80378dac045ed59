#include "commandline.h"
#include "edition.h"
#include "outputfile.h"
#include "patchwriter.h"
#include "progress.h"
#include <cstdio>

namespace ZipDict {

namespace {

struct Options
{
    std::string older;
    std::string newer;
    std::string olderBusinesses; ///< empty: none
    std::string newerBusinesses;
    std::string output;
    FileIdentity identity;
};

int writeFile(const Options &options)
{
    if (!canReplace(options.output,
                    {options.older, options.newer, options.olderBusinesses, options.newerBusinesses}))
        return 1;
    const Progress progress = progressUnless(false);
    const std::vector<Place> older = readEdition(options.older, options.olderBusinesses, progress).places;
    const std::vector<Place> newer = readEdition(options.newer, options.newerBusinesses, progress).places;
    if (older.empty() || newer.empty())
        return 1;
    const WrittenFile file = writePatch(options.identity, older, newer);
    if (!replaceFile(options.output, file))
        return 1;
    std::printf("places: %zu, then %zu\nbytes: %zu\n", older.size(), newer.size(), file.bytes.size());
    return 0;
}

Options optionsOf(CommandLine &line)
{
    Options options;
    options.olderBusinesses = line.value("--businesses-old");
    options.newerBusinesses = line.value("--businesses-new");
    options.output = line.value("-o");
    options.identity.isPatch = true;
    options.identity.corrects = static_cast<uint8_t>(line.number("--from", 1, LastEdition - 1, 1));
    options.identity.edition = static_cast<uint8_t>(line.number("--to", 2, LastEdition, 2));
    options.identity.serial = static_cast<uint8_t>(line.number("--serial", 0, 255, 0));
    if (!line.isGood())
        return options;
    if (line.rest().size() != 2)
        line.refuse("patch needs the older and the newer file of places");
    else if (options.output.empty())
        line.refuse("the file to write is missing");
    else if (options.identity.corrects >= options.identity.edition)
        line.refuse("the edition that a patch makes comes behind the one that it corrects");
    else if (options.olderBusinesses.empty() != options.newerBusinesses.empty())
        line.refuse("businesses of one edition only would all be added or removed");
    else {
        options.older = line.rest()[0];
        options.newer = line.rest()[1];
    }
    return options;
}

} // namespace

int patchCommand(const Arguments &arguments)
{
    CommandLine line(arguments, {"--from", "--to", "--serial", "--businesses-old", "--businesses-new", "-o"});
    const Options options = line.isGood() ? optionsOf(line) : Options();
    return line.isGood() ? writeFile(options) : 2;
}

} // namespace ZipDict
