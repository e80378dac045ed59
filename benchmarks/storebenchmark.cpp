// Measures the record store beside plain SQLite, in one run; README.md tells what each line means.
#include "contacts.h"
#include "processtime.h"
#include "report.h"
#include "scratch.h"
#include "sqliteside.h"
#include "storeside.h"
#include "synchronisations.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <numeric>
#include <random>
#include <sys/wait.h>

namespace {

constexpr int Small = 5000, Large = 50000;
constexpr std::array<int, 4> ReadItems = {NameItem, PhoneItem, MailItem, MemoItem};

/** Both sides with the same contacts. */
struct Stage
{
    Stage(const Scratch &scratch, int number)
        : count(number), contacts(makeContacts(number)), store("BENCH" + std::to_string(number)),
          plainPath(scratch.file("plain" + std::to_string(number) + ".db")),
          indexedPath(scratch.file("indexed" + std::to_string(number) + ".db"))
    {
        store.create();
        store.open();
        store.load(contacts);
        store.close();
        SqliteSide plain(plainPath);
        plain.createTable();
        plain.load(contacts);
        SqliteSide indexed(indexedPath);
        indexed.createTable();
        indexed.load(contacts);
        indexed.createIndexes();
        (void)indexed.fileSize();
        sqliteSize = plain.fileSize();
    }

    int count;
    std::vector<Contact> contacts;
    StoreSide store;
    std::string plainPath, indexedPath;
    int64_t sqliteSize = 0;
};

/** Times the alternatives in turn, so that a slow moment meets all of them; the median of each, in µs. */
std::vector<double> inTurn(int rounds, const std::vector<std::function<void()>> &alternatives)
{
    std::vector<std::vector<double>> times(alternatives.size());
    for (int round = 0; round < rounds; ++round)
        for (size_t i = 0; i < alternatives.size(); ++i) {
            const Stopwatch watch;
            alternatives[i]();
            times[i].push_back(watch.microseconds());
        }
    std::vector<double> medians;
    medians.reserve(times.size());
    for (const auto &values : times)
        medians.push_back(median(values));
    return medians;
}

std::string naming(const char *measure, int count)
{
    return std::string(measure) + ", " + std::to_string(count);
}

void measureSize(Report &report, Stage &stage)
{
    constexpr double MiB = 1 << 20;
    report.compare(naming("file size", stage.count), static_cast<double>(stage.store.fileSize()) / MiB,
                   "a table", static_cast<double>(stage.sqliteSize) / MiB, "MB", 1.2);
}

void measureOrder(Report &report, Stage &stage)
{
    constexpr int Rounds = 5;
    std::vector<double> ours, theirs, kept;
    std::vector<int> order;
    for (int round = 0; round < Rounds; ++round) {
        stage.store.open();
        const Stopwatch ourWatch;
        stage.store.indexByReading(100 + round);
        ours.push_back(ourWatch.microseconds() / 1000);
        const bool first = round == 0;
        const std::vector<int> cards = first ? stage.store.cardsOf(100) : std::vector<int>();
        stage.store.close();

        SqliteSide sqlite(stage.plainPath);
        const Stopwatch theirWatch;
        order = sqlite.orderByReading();
        theirs.push_back(theirWatch.microseconds() / 1000);
        if (first && cards != order) {
            std::fputs("the two orders differ\n", stderr);
            std::exit(2);
        }
    }
    report.compare(naming("text-ordered index", stage.count), median(ours), "ORDER BY with ICU",
                   median(theirs), "ms", 1.0);
}

/** Random cards, as a box that was just opened meets them. */
std::vector<int> randomIds(int count, int number)
{
    std::mt19937 random(99);
    std::vector<int> ids;
    while (number-- > 0)
        ids.push_back(1 + static_cast<int>(random() % static_cast<unsigned>(count)));
    return ids;
}

template <typename Side> void readFields(Side &side, const std::vector<int> &ids)
{
    size_t bytes = 0, turn = 0;
    for (const int id : ids)
        bytes += side.readItem(static_cast<uint16_t>(id), ReadItems[turn++ % ReadItems.size()]);
    if (bytes == 0)
        std::exit(2);
}

/** Eight more fields of each card. */
template <typename Side> void readMoreFields(Side &side, const std::vector<int> &ids)
{
    size_t bytes = 0, turn = 0;
    for (const int id : ids) {
        bytes += side.readItem(static_cast<uint16_t>(id), ReadItems[turn++ % ReadItems.size()]);
        for (const int item : {0, 2, 4, 6, 8, 11, 16, 24})
            bytes += side.readItem(static_cast<uint16_t>(id), item);
    }
    if (bytes == 0)
        std::exit(2);
}

void measureFields(Report &report, Stage &stage)
{
    constexpr int Rounds = 5, Reads = 20000, More = 8;
    const std::vector<int> ids = randomIds(stage.count, Reads);
    const auto withStore = [&](auto read) {
        stage.store.open();
        read(stage.store, ids);
        stage.store.close();
    };
    const auto withSqlite = [&](SqliteSide::Settings settings) {
        SqliteSide sqlite(stage.plainPath, settings);
        if (settings == SqliteSide::Settings::Tuned)
            sqlite.beginReading();
        readFields(sqlite, ids);
    };
    const auto readOne = [](auto &side, const std::vector<int> &cards) { readFields(side, cards); };
    const auto readMore = [](auto &side, const std::vector<int> &cards) { readMoreFields(side, cards); };
    const auto times = inTurn(Rounds, {[&] { withStore(readOne); }, [&] { withStore(readMore); },
                                       [&] { withSqlite(SqliteSide::Settings::Default); },
                                       [&] { withSqlite(SqliteSide::Settings::Tuned); }});
    const double field = times[0] / Reads, another = (times[1] - times[0]) / Reads / More;
    const double select = times[2] / Reads;
    report.compare(naming("field of a random card, from open", stage.count), field, "SELECT", select, "us",
                   1.0);
    report.compare(naming("another field of the same card", stage.count), another, "SELECT", select, "us",
                   0.2);
    report.note("  tuned SQLite, one read transaction", times[3] / Reads, "us");

    stage.store.open();
    SqliteSide sqlite(stage.plainPath);
    readFields(stage.store, ids);
    readFields(sqlite, ids);
    const auto warm =
        inTurn(Rounds, {[&] { readFields(stage.store, ids); }, [&] { readFields(sqlite, ids); }});
    report.compare(naming("field of a random card, later", stage.count), warm[0] / Reads, "SELECT",
                   warm[1] / Reads, "us", 1.0);
    stage.store.close();
}

void measureWalk(Report &report, Stage &stage)
{
    constexpr int Rounds = 5;
    stage.store.open();
    stage.store.createIndexes();
    stage.store.close();
    size_t ourBytes = 0, theirBytes = 0;
    const auto theirs = [&](SqliteSide::Settings settings) {
        SqliteSide sqlite(stage.indexedPath, settings);
        theirBytes = sqlite.walk();
    };
    const auto times = inTurn(Rounds, {[&] {
                                           stage.store.open();
                                           ourBytes = stage.store.walk(1);
                                           stage.store.close();
                                       },
                                       [&] { theirs(SqliteSide::Settings::Default); },
                                       [&] { theirs(SqliteSide::Settings::Tuned); }});
    if (ourBytes != theirBytes)
        std::exit(2);
    report.compare(naming("ordered walk, 3 fields a card, from open", stage.count), times[0] / stage.count,
                   "SQL index", times[1] / stage.count, "us", 0.5);
    report.note("  tuned SQLite", times[2] / stage.count, "us");

    stage.store.open();
    SqliteSide sqlite(stage.indexedPath);
    const auto warm = inTurn(Rounds, {[&] { (void)stage.store.walk(1); }, [&] { (void)sqlite.walk(); }});
    report.compare(naming("ordered walk, later", stage.count), warm[0] / stage.count, "SQL index",
                   warm[1] / stage.count, "us", 0.5);
    stage.store.close();
}

struct NavigationTime
{
    const char *name;
    double (StoreSide::*measure)(int) const; ///< nanoseconds
};
constexpr NavigationTime Navigation[] = {{"_NextIndexNo", &StoreSide::nextTime},
                                         {"_PrevIndexNo", &StoreSide::previousTime},
                                         {"_CardIDToIndexNo", &StoreSide::numberOfCardTime},
                                         {"_IndexNoToNumber", &StoreSide::ordinalTime},
                                         {"_NumberToIndexNo", &StoreSide::ordinalToCardTime}};

/** The time of a step must not grow with the box; caches of the processor are granted something. */
void measureNavigation(Report &report, Stage &small, Stage &large)
{
    constexpr int Rounds = 9;
    small.store.open();
    large.store.open();
    for (const NavigationTime &navigation : Navigation) {
        std::vector<double> fives, fifties;
        for (int round = 0; round < Rounds; ++round) {
            fives.push_back((small.store.*navigation.measure)(1) / 1000);
            fifties.push_back((large.store.*navigation.measure)(1) / 1000);
        }
        const std::string name = navigation.name;
        report.limit(name + ", 50000", median(fifties), "us", 0.3);
        report.compare(name + ", 50000", median(fifties), "itself with 5000", median(fives), "us", 1.5);
    }
    small.store.close();
    large.store.close();
}

void measureColdOpen(Report &report, Stage &stage)
{
    constexpr int Runs = 201;
    std::vector<double> ours, theirs;
    for (int run = 0; run < Runs; ++run) {
        ours.push_back(runTime(COLD_STORE, {stage.store.boxPath(), stage.store.indexPath(1)}));
        theirs.push_back(runTime(COLD_SQLITE, {stage.indexedPath}));
    }
    report.compare(naming("process: open, first card by reading", stage.count), median(ours), "SQL index",
                   median(theirs), "ms", 2.0);
}

using Change = std::function<void(int)>;

struct Durable
{
    double middle, mean; ///< µs a change
};

/** Changes in rounds, two sides in turn. Never a third: its checkpoints would burden the side that comes
 * next. */
std::pair<Durable, Durable> timeChanges(const Change &ours, const Change &theirs)
{
    constexpr int Rounds = 50, ChangesPerRound = 20;
    std::vector<double> times[2];
    for (int round = 0; round < Rounds; ++round)
        for (size_t side = 0; side < 2; ++side)
            for (int i = 0; i < ChangesPerRound; ++i) {
                const Stopwatch watch;
                (side == 0 ? ours : theirs)(round * ChangesPerRound + i);
                times[side].push_back(watch.microseconds());
            }
    const auto summary = [](const std::vector<double> &values) {
        const double sum = std::accumulate(values.begin(), values.end(), 0.0);
        return Durable{median(values), sum / static_cast<double>(values.size())};
    };
    return {summary(times[0]), summary(times[1])};
}

void compareChanges(Report &report, const std::string &name, const Change &ours, const char *peer,
                    const Change &theirs)
{
    const auto [our, their] = timeChanges(ours, theirs);
    report.compare(name + ", median", our.middle, peer, their.middle, "us", 1.3);
    report.compare(name + ", mean", our.mean, peer, their.mean, "us", 1.3);
}

/** Writing to a log that still grows costs the file system more than writing over an old one. A log grows to
 * a thousand pages; all of them are taken there before anything is timed. */
void growLogs(Stage &stage, SqliteSide &plain, SqliteSide &indexed)
{
    constexpr int Changes = 1100; // at least one page each
    for (int i = 0; i < Changes; ++i) {
        const Contact &contact = stage.contacts[static_cast<size_t>(i)];
        const std::string phone =
            "080-" + std::to_string(10000000 + i); // SQLite doesn't write what is there already
        stage.store.changePhone(static_cast<uint16_t>(i + 1), phone, contact);
        plain.changePhone(i + 1, phone, contact);
        indexed.changePhone(i + 1, phone, contact);
    }
}

void measureChanges(Report &report, Stage &stage)
{
    stage.store.open();
    SqliteSide plain(stage.plainPath), indexed(stage.indexedPath);
    const std::vector<Contact> added = makeContacts(2000);
    const std::vector<int> ids = randomIds(stage.count, 1000);
    growLogs(stage, plain, indexed);
    int ourSynchronisations = 0, ourChanges = 0;
    const auto counting = [&](auto change) {
        return [&ourSynchronisations, &ourChanges, change](int i) {
            const int before = synchronisations();
            change(i);
            ourSynchronisations += synchronisations() - before;
            ++ourChanges;
        };
    };
    const auto at = [](const auto &values, int i) -> const auto &
    {
        return values[static_cast<size_t>(i)];
    };
    int serial = 10000000; // SQLite doesn't write what is there already
    const auto change = [&](auto &side) {
        return [&](int i) {
            const std::string phone = "090-" + std::to_string(++serial);
            side.changePhone(static_cast<uint16_t>(at(ids, i)), phone, at(added, i));
        };
    };
    const auto add = [&](auto &side) { return [&](int i) { side.add(at(added, 1000 + i)); }; };
    const std::string edits = naming("durable edit of a field", stage.count);
    const std::string adds = naming("durable add", stage.count);
    compareChanges(report, edits, counting(change(stage.store)), "no SQL index", change(plain));
    compareChanges(report, edits, counting(change(stage.store)), "four SQL indexes", change(indexed));
    compareChanges(report, adds, counting(add(stage.store)), "no SQL index", add(plain));
    compareChanges(report, adds, counting(add(stage.store)), "four SQL indexes", add(indexed));
    report.limit("synchronisations a change", static_cast<double>(ourSynchronisations) / ourChanges, "",
                 1.05);
    stage.store.close();
}

} // namespace

int main(int argc, char **argv)
{
    const Scratch scratch(parentFolder(argc, argv));
    DtmSetLanguage("ja");
    Report report;
    Stage small(scratch, Small), large(scratch, Large);
    for (Stage *stage : {&small, &large}) {
        report.section(std::to_string(stage->count) + " contacts");
        measureSize(report, *stage);
        measureOrder(report, *stage);
        measureFields(report, *stage);
        measureWalk(report, *stage);
    }
    report.section("Navigation");
    measureNavigation(report, small, large);
    report.section("A process of its own");
    measureColdOpen(report, large);
    report.section("Changes, with four indexes kept");
    measureChanges(report, small);
    measureChanges(report, large);
    report.close();
    return report.anyMissed() ? 1 : 0;
}
