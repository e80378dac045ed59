#include "processtime.h"

#include "report.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

double runTime(const char *program, const std::vector<std::string> &arguments)
{
    std::vector<char *> pointers = {const_cast<char *>(program)};
    for (const std::string &argument : arguments)
        pointers.push_back(const_cast<char *>(argument.c_str()));
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t process = 0;
    int status = 0;
    const Stopwatch watch;
    if (posix_spawn(&process, program, &actions, nullptr, pointers.data(), environ) != 0 ||
        waitpid(process, &status, 0) != process || status != 0) {
        std::fprintf(stderr, "%s failed\n", program);
        std::exit(2);
    }
    const double time = watch.microseconds() / 1000;
    posix_spawn_file_actions_destroy(&actions);
    return time;
}
