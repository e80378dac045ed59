#include "report.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

Report::Report()
{
    std::printf("%-44s %12s %12s %7s %6s\n", "", "ours", "peer", "ratio", "bar");
}

void Report::section(const std::string &title)
{
    std::printf("\n%s\n", title.c_str());
}

void Report::compare(const std::string &measure, double ours, const std::string &peer, double theirs,
                     const char *unit, double bar)
{
    std::printf("  %-42s %9.3f %-2s %9.3f %-2s %7.2f %6.2f", measure.c_str(), ours, unit, theirs, unit,
                ours / theirs, bar);
    verdict(ours <= bar * theirs);
    std::printf("  %s\n", peer.c_str());
}

void Report::limit(const std::string &measure, double ours, const char *unit, double bar)
{
    std::printf("  %-42s %9.3f %-2s %12s %7s %6.2f", measure.c_str(), ours, unit, "", "", bar);
    verdict(ours <= bar);
    std::printf("\n");
}

void Report::note(const std::string &measure, double value, const char *unit)
{
    std::printf("  %-42s %9.3f %-2s\n", measure.c_str(), value, unit);
    std::fflush(stdout);
}

void Report::verdict(bool ok)
{
    ++m_bars;
    m_missed += ok ? 0 : 1;
    std::printf("  %s", ok ? "ok    " : "MISSED");
    std::fflush(stdout);
}

void Report::close() const
{
    std::printf("\n%d of %d bars met\n", m_bars - m_missed, m_bars);
}

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void require(bool isDone, const char *what)
{
    if (isDone)
        return;
    std::fprintf(stderr, "%s failed\n", what);
    std::exit(2);
}

void Pair::compare(Report &report, const std::string &measure, const char *peer, double bar) const
{
    report.compare(measure, median(ours), peer, median(theirs), "ms", bar);
}

void Pair::note(Report &report, const std::string &measure, const std::string &peer) const
{
    report.note(measure, median(ours), "ms");
    report.note("  " + peer, median(theirs), "ms");
}
