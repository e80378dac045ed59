#ifndef BENCHMARKS_PROCESSTIME_H
#define BENCHMARKS_PROCESSTIME_H

#include <string>
#include <vector>

/** Milliseconds that a program needs from its start to its end; what it prints goes nowhere. Ends this
 * process when it fails. */
[[nodiscard]] double runTime(const char *program, const std::vector<std::string> &arguments);

#endif
