#include "kylog.h"
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <fcntl.h>
#include <QByteArray>
#include <sys/stat.h>
#include <unistd.h>

int KyLog::Level = -1;

namespace {

constexpr int Files = 10; // of the ring
constexpr mode_t FileMode = 0644;

QByteArray baseName(const char *name)
{
    QByteArray base(name ? name : program_invocation_name);
    if (base.isEmpty())
        base = "unknown";
    return base.startsWith('/') ? base : "/tmp/" + base;
}

QByteArray fileName(const QByteArray &base, int number)
{
    return base + '-' + QByteArray::number(number) + ".txt";
}

/** A link that leads nowhere exists, too. */
bool exists(const QByteArray &path)
{
    struct stat status;
    return lstat(path.constData(), &status) == 0;
}

/** The first free number; the last one when all are taken. */
int nextNumber(const QByteArray &base)
{
    int number = 0;
    while (number < Files - 1 && exists(fileName(base, number)))
        ++number;
    return number;
}

/** False for a second name of some other file of this user. */
bool isOwnFile(int file)
{
    struct stat status;
    return fstat(file, &status) == 0 && status.st_uid == geteuid() && status.st_nlink == 1;
}

/** Anyone may have planted something by that name in /tmp: a link is not followed, a pipe not waited for, and
 * nothing overwritten but a log of this user's. @return -1 when there is no file */
int createFile(const QByteArray &path)
{
    const int file =
        open(path.constData(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, FileMode);
    if (file >= 0 && isOwnFile(file) && ftruncate(file, 0) == 0) // only a plain file can be cut
        return file;
    if (file >= 0)
        close(file);
    return -1;
}

/** A copy that programs started meanwhile don't inherit; -1 when the descriptor is closed. */
int duplicate(int descriptor)
{
    return fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
}

/** Makes @p target what @p source is, and closes @p source. */
void moveDescriptor(int source, int target)
{
    dup2(source, target);
    close(source);
}

/** @return the former standard error, -1 when nothing has changed */
int errorToFile(const char *name)
{
    const int saved = duplicate(STDERR_FILENO);
    if (saved < 0)
        return -1;
    const QByteArray base = baseName(name);
    const int number = nextNumber(base);
    const int file = createFile(fileName(base, number));
    if (file < 0) {
        close(saved);
        return -1;
    }
    moveDescriptor(file, STDERR_FILENO);
    unlink(fileName(base, (number + 1) % Files).constData());
    return saved;
}

/** @return the former standard error, -1 when it is closed */
int errorToNothing()
{
    const int saved = duplicate(STDERR_FILENO);
    if (saved <= 0) // 0: the program runs without standard input, as a service that has let go of all
        return saved;
    const int nothing = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nothing >= 0)
        moveDescriptor(nothing, STDERR_FILENO);
    return saved;
}

/** @return the former standard output, -1 when it is closed */
int outputToError()
{
    std::fflush(stdout); // what was written before belongs to the former one
    const int saved = duplicate(STDOUT_FILENO);
    if (saved >= 0)
        dup2(STDERR_FILENO, STDOUT_FILENO);
    return saved;
}

void restore(int saved, int descriptor)
{
    if (saved >= 0)
        moveDescriptor(saved, descriptor);
}

} // namespace

KyLog::KyLog(LogMode mode, const char *name, int level) : enabledBefore(Level != 0)
{
    switch (mode) {
    case Silence:
        Level = -1;
        savedStderr = errorToNothing();
        break;
    case NoteOnly:
        break;
    case SetLevel:
        if (level >= 0)
            Level = level;
        break;
    default:
        redirect(mode, name);
    }
}

void KyLog::redirect(LogMode modes, const char *name)
{
    if (modes & ErrorToFile)
        savedStderr = errorToFile(name);
    if (modes & OutputToError)
        savedStdout = outputToError();
    if (modes & DefaultHandler)
        savedHandler = qInstallMessageHandler(nullptr);
}

KyLog::~KyLog()
{
    restore(savedStderr, STDERR_FILENO);
    if (savedStdout >= 0)
        std::fflush(stdout); // what was written meanwhile belongs where it went
    restore(savedStdout, STDOUT_FILENO);
    if (savedHandler)
        qInstallMessageHandler(savedHandler);
    Level = enabledBefore ? 1 : 0; // callers test it for 0 and no more
}

void KyLog::putf(int level, const char *format, ...)
{
    if (level > Level)
        return;
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    std::fputc('\n', stderr);
}
