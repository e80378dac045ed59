#include "commandline.h"
#include "edition.h"
#include "jistext.h"
#include "outputfile.h"
#include "progress.h"
#include <cstdio>

namespace ZipDict {

namespace {

struct Options
{
    std::string places;
    std::string businesses; ///< empty: none
    std::string output;
    uint8_t edition = 1;
    bool isQuiet = false;
    bool isVerbose = false;
};

Options optionsOf(CommandLine &line)
{
    Options options;
    options.businesses = line.value("--businesses");
    options.output = line.value("-o");
    options.edition = static_cast<uint8_t>(line.number("--edition", 1, LastEdition, 1));
    options.isQuiet = line.has("--quiet");
    options.isVerbose = line.has("--verbose");
    if (!line.isGood())
        return options;
    if (line.rest().size() != 1)
        line.refuse("write needs one file of places");
    else if (options.output.empty())
        line.refuse("the file to write is missing");
    else
        options.places = line.rest().front();
    return options;
}

size_t countCodes(const std::vector<Place> &places)
{
    size_t count = 0;
    for (size_t i = 0; i < places.size(); ++i)
        count += i == 0 || places[i].code != places[i - 1].code ? 1 : 0;
    return count;
}

void printSummary(const Options &options, const Edition &edition, const WrittenFile &file)
{
    std::printf("rows used: %zu\nplaces: %zu\ncodes: %zu\nbytes: %zu\nkeys left out: %zu\n", edition.rows,
                edition.places.size(), countCodes(edition.places), file.bytes.size(),
                file.keysLeftOut.size());
    if (!options.isVerbose)
        return;
    for (const std::u16string &key : file.keysLeftOut)
        std::printf("  %s\n", toUtf8(key).c_str());
}

int writeFile(const Options &options)
{
    if (!canReplace(options.output, {options.places, options.businesses}))
        return 1;
    const Edition edition = readEdition(options.places, options.businesses, progressUnless(options.isQuiet));
    if (edition.places.empty())
        return 1;
    const WrittenFile file = writeDictionary(options.edition, edition.places);
    if (!replaceFile(options.output, file))
        return 1;
    if (!options.isQuiet)
        printSummary(options, edition, file);
    return 0;
}

} // namespace

int writeCommand(const Arguments &arguments)
{
    CommandLine line(arguments, {"--edition", "--businesses", "-o"}, {"--quiet", "--verbose"});
    const Options options = line.isGood() ? optionsOf(line) : Options();
    return line.isGood() ? writeFile(options) : 2;
}

} // namespace ZipDict
