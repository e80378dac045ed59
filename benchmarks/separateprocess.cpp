#include "separateprocess.h"

#include "report.h"

#include <cstdio>
#include <fstream>
#include <sys/wait.h>
#include <unistd.h>

double inSeparateProcess(const std::function<double()> &work)
{
    int ends[2] = {-1, -1};
    require(pipe(ends) == 0, "making a pipe");
    std::fflush(nullptr);
    const pid_t child = fork();
    require(child >= 0, "starting a process");
    if (child == 0) {
        const double result = work();
        _exit(write(ends[1], &result, sizeof result) == sizeof result ? 0 : 2);
    }
    double result = 0;
    int status = 0;
    close(ends[1]);
    const bool isRead = read(ends[0], &result, sizeof result) == sizeof result;
    close(ends[0]);
    require(waitpid(child, &status, 0) == child && status == 0 && isRead, "the work of a separate process");
    return result;
}

double anonymousMemory()
{
    std::ifstream status("/proc/self/status");
    std::string word;
    double kilobytes = 0;
    while (status >> word) {
        if (word == "RssAnon:" && status >> kilobytes)
            return kilobytes * 1024;
    }
    require(false, "finding the memory of a process");
    return 0;
}
