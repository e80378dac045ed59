#ifndef BENCHMARKS_REPORT_H
#define BENCHMARKS_REPORT_H

#include <chrono>
#include <string>
#include <vector>

/** Prints one line a measure, and remembers whether a bar was missed. */
class Report
{
public:
    Report();
    void section(const std::string &title);
    /** A measure beside its peer's; it must be at most @p bar times that. */
    void compare(const std::string &measure, double ours, const std::string &peer, double theirs,
                 const char *unit, double bar);
    /** A measure that must be at most @p bar. */
    void limit(const std::string &measure, double ours, const char *unit, double bar);
    /** A measure to be read beside the others. */
    void note(const std::string &measure, double value, const char *unit);
    [[nodiscard]] bool anyMissed() const { return m_missed > 0; }
    void close() const;

private:
    void verdict(bool ok);
    int m_missed = 0;
    int m_bars = 0;
};

[[nodiscard]] double median(std::vector<double> values);

/** Ends the process with status 2, and says what failed, when something isn't done. */
void require(bool isDone, const char *what);

/** Microseconds since its making. */
class Stopwatch
{
public:
    [[nodiscard]] double microseconds() const
    {
        return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - m_start).count();
    }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

/** Milliseconds of a piece of work. */
template <typename Work> double timeOf(Work work)
{
    const Stopwatch watch;
    work();
    return watch.microseconds() / 1000;
}

/** One measure on both sides: the milliseconds of all rounds. */
struct Pair
{
    std::vector<double> ours;
    std::vector<double> theirs;

    void compare(Report &report, const std::string &measure, const char *peer, double bar) const;
    void note(Report &report, const std::string &measure, const std::string &peer) const;
};

#endif
