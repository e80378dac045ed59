#ifndef COMMANDS_H
#define COMMANDS_H

#include <string>
#include <vector>

/**
 * @file commands.h
 * What the program kyzipdict does. Each command takes its arguments, prints what it found or what went wrong,
 * and gives the exit code: 0 done, 1 not done or nothing found, 2 wrong arguments.
 */

namespace ZipDict {

using Arguments = std::vector<std::string>;

int writeCommand(const Arguments &arguments);
int patchCommand(const Arguments &arguments);
int dumpCommand(const Arguments &arguments);
int checkCommand(const Arguments &arguments);
int lookupCommand(const Arguments &arguments);

} // namespace ZipDict

#endif
