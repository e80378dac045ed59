#include "commands.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string_view>

namespace {

using namespace ZipDict;

constexpr int WrongArguments = 2;

struct Command
{
    std::string_view name;
    const char *usage;
    const char *help;
    const char *options; ///< a line each
    int (*run)(const Arguments &);
};

constexpr Command Commands[] = {
    {"write", "write [--edition N] [--businesses FILE] [--quiet | --verbose] PLACES -o FILE",
     "makes a dictionary from the CSV files of the postal operator",
     "  --edition N        of the dictionary, 1 to 255; applications use the highest\n"
     "  --businesses FILE  adds businesses that have codes of their own\n"
     "  --quiet            tells problems only\n"
     "  --verbose          lists the municipalities that are found with their 郡 only\n"
     "  -o FILE            the dictionary; one that is there is replaced when the new one is complete\n"
     "PLACES may be -, which is standard input.\n",
     writeCommand},
    {"patch",
     "patch [--from N] [--to N] [--serial N] [--businesses-old FILE --businesses-new FILE] OLD NEW -o FILE",
     "makes the patch that turns the dictionary of the older places into that of the newer",
     "  --from N               the edition of the dictionary that it corrects, else 1\n"
     "  --to N                 the edition that the patch makes of it, else 2\n"
     "  --serial N             of two patches of the same editions the higher is used\n"
     "  --businesses-old FILE, --businesses-new FILE\n"
     "                         the businesses of the two editions\n"
     "  -o FILE                the patch; one that is there is replaced when the new one is complete\n",
     patchCommand},
    {"dump", "dump FILE", "prints a dictionary or a patch", "", dumpCommand},
    {"check", "check FILE", "tells every rule of the format that a dictionary or a patch breaks", "",
     checkCommand},
    {"lookup", "lookup [--dictionary FILE [--patch FILE]] [--max N] WORD...",
     "prints the addresses of a code, or the codes of an address",
     "  --dictionary FILE  the dictionary to ask, else the one that applications use\n"
     "  --patch FILE       a patch that corrects it\n"
     "  --max N            results at most, 1 to 500, else 100\n",
     lookupCommand},
};

bool asksForHelp(std::string_view argument)
{
    return argument == "--help" || argument == "-h";
}

void printUsage(FILE *out, const Command &command)
{
    std::fprintf(out, "Usage: kyzipdict %s\n", command.usage);
}

void printHelp(FILE *out)
{
    std::fputs("Usage: kyzipdict COMMAND ...\n\n", out);
    for (const Command &command : Commands)
        std::fprintf(out, "  %s\n      %s\n", command.usage, command.help);
    std::fputs("\nkyzipdict COMMAND --help tells the options of a command.\n", out);
}

/* A full disk shows when the last of the output is written. */
bool isPrinted()
{
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return true;
    std::fprintf(stderr, "kyzipdict: standard output: %s\n", std::strerror(errno));
    return false;
}

int runCommand(const Command &command, const Arguments &arguments)
{
    if (std::ranges::any_of(arguments, asksForHelp)) {
        printUsage(stdout, command);
        std::printf("It %s.\n\n%s", command.help, command.options);
        return 0;
    }
    const int code = command.run(arguments);
    if (code == WrongArguments)
        printUsage(stderr, command);
    return isPrinted() ? code : 1;
}

int run(const Arguments &arguments)
{
    if (arguments.empty()) {
        printHelp(stderr);
        return WrongArguments;
    }
    if (asksForHelp(arguments.front())) {
        printHelp(stdout);
        return 0;
    }
    const auto *command = std::ranges::find(Commands, std::string_view(arguments.front()), &Command::name);
    if (command == std::end(Commands)) {
        std::fprintf(stderr, "kyzipdict: unknown command %s\n", arguments.front().c_str());
        printHelp(stderr);
        return WrongArguments;
    }
    return runCommand(*command, {arguments.begin() + 1, arguments.end()});
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return run({argv + 1, argv + std::max(argc, 1)});
    } catch (const std::exception &error) { // no memory left
        std::fprintf(stderr, "kyzipdict: %s\n", error.what());
        return 1;
    }
}
