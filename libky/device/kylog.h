#ifndef KYLOG_H
#define KYLOG_H

#include "kyexport.h"
#include <QtGlobal>

/**
 * Sends the diagnostic lines of a program, which is all it writes to its standard error, to a file or to
 * nothing while the object lives.
 *
 *     int main(int argc, char **argv)
 *     {
 *         KyLog log(KyLog::ErrorToFile | KyLog::DefaultHandler, "memo", 2);
 *
 * writes /tmp/memo-0.txt at the first run and /tmp/memo-1.txt at the second. The ten files form a ring: the
 * gap in the numbers shows where the next run begins, and the file in front of the gap is the newest.
 */
class KY_EXPORT KyLog
{
public:
    /** What the object does: one of the first three; any other number is a set of the others. */
    enum LogMode {
        Silence = -2,       ///< standard error goes to nothing, Level is -1
        NoteOnly = -1,      ///< remembers whether Level was 0
        SetLevel = 0,       ///< sets Level
        ErrorToFile = 1,    ///< standard error goes to the next file of the ring
        DefaultHandler = 2, ///< messages of the toolkit are handled in its own way
        OutputToError = 4   ///< standard output goes where standard error goes
    };

    /** Highest level that putf() lets through; -1 at the start. */
    static int Level;

    /**
     * @param name of the files, without "-0.txt"; one without a slash in front is meant below /tmp. That of
     *             the program, as it was called, when null; "unknown" when empty
     * @param level for SetLevel; one below 0 means the present Level
     */
    KyLog(LogMode mode, const char *name, int level);
    /** Puts standard error, standard output and the message handler back. Level becomes 1, or 0 when it was 0
     * at construction. */
    ~KyLog();
    KyLog(const KyLog &) = delete;
    KyLog &operator=(const KyLog &) = delete;

    /** Writes a line to standard error when @p level is at most Level. @param format as for printf, without
     * the line feed */
    static void putf(int level, const char *format, ...) __attribute__((format(printf, 2, 3)));

private:
    bool enabledBefore = false; ///< Level was not 0 at construction
    int savedStderr = -1;
    int savedStdout = -1;
    QtMessageHandler savedHandler = nullptr;

    void redirect(LogMode modes, const char *name);
};

/** A set of modes. */
[[nodiscard]] constexpr KyLog::LogMode operator|(KyLog::LogMode a, KyLog::LogMode b)
{
    return KyLog::LogMode(int(a) | int(b));
}

#endif
