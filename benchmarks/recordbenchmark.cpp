#include "contacts.h"
#include "kypdatamanager.h"
#include "report.h"
#include "storeside.h"
#include <cstdio>
#include <QDir>
#include <QTemporaryDir>

// What typed access costs on top of the C interface: the same reads through both, in turns. Figures only, no
// bar.

namespace {

constexpr int Small = 5000;
constexpr int Large = 50000;
constexpr int Reads = 20000;
constexpr int Rounds = 5;
constexpr std::array Items = {NameItem, PhoneItem, CompanyItem, MailItem};

/** Ids that jump about, each in range. */
class CardIds
{
public:
    explicit CardIds(int count) : m_count(static_cast<uint32_t>(count)) {}
    uint16_t next() { return static_cast<uint16_t>((m_last = (m_last + 12347) % m_count) + 1); }

private:
    const uint32_t m_count;
    uint32_t m_last = 0;
};

/** Nanoseconds a read of one of four items of a random card; @p read gives the length of what it read. */
template <typename Read> double timeRandom(int count, Read read)
{
    CardIds ids(count);
    size_t length = 0;
    const Stopwatch watch;
    for (int i = 0; i < Reads; ++i)
        length += read(ids.next(), Items[static_cast<size_t>(i) % Items.size()]);
    const double time = watch.microseconds() * 1000 / Reads;
    if (length == 0)
        std::fprintf(stderr, "nothing was read\n");
    return time;
}

size_t walk(KyPDataManager &manager)
{
    size_t length = 0;
    for (bool found = manager.first(); found; found = manager.next()) {
        for (const int item : {NameItem, PhoneItem, CompanyItem})
            length += static_cast<size_t>(manager.readItem(TextItems[static_cast<size_t>(item)]).size());
    }
    return length;
}

/** Microseconds a card. */
template <typename Walk> double timeWalk(int count, Walk walkAll)
{
    const Stopwatch watch;
    if (walkAll() == 0)
        std::fprintf(stderr, "nothing was walked\n");
    return watch.microseconds() / count;
}

struct Times
{
    std::vector<double> item;
    std::vector<double> walk;
};

void measureStore(StoreSide &store, int count, Times &times)
{
    store.open();
    store.walk(1); // both sides are measured with the box in memory
    times.item.push_back(timeRandom(count, [&](uint16_t id, int item) { return store.readItem(id, item); }));
    times.walk.push_back(timeWalk(count, [&] { return store.walk(1); }));
    store.close();
}

bool measureManager(const StoreSide &store, int count, Times &times)
{
    KyPDataManager manager(store.boxPath().c_str(), nullptr, false);
    if (!manager.isOpened() || manager.count() != count)
        return false;
    walk(manager);
    times.item.push_back(timeRandom(count, [&](uint16_t id, int item) {
        return static_cast<size_t>(manager.readItem(TextItems[static_cast<size_t>(item)], id).size());
    }));
    times.walk.push_back(timeWalk(count, [&] { return walk(manager); }));
    return true;
}

/** Nanoseconds for QString::fromUtf8() on such items, few enough to stay in the processor's cache. */
double decodingTime(const std::vector<Contact> &contacts)
{
    return timeRandom(100, [&](uint16_t id, int item) {
        const std::string &text = contacts[id - 1u].texts[static_cast<size_t>(item)];
        return static_cast<size_t>(
            QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).size());
    });
}

bool measure(Report &report, int count)
{
    const std::vector<Contact> contacts = makeContacts(count);
    StoreSide store("REC" + std::to_string(count));
    store.create();
    store.open();
    store.load(contacts);
    store.indexByReading(1);
    store.close();

    Times below;
    Times above;
    for (int round = 0; round < Rounds; ++round) {
        measureStore(store, count, below);
        if (!measureManager(store, count, above))
            return false;
    }
    report.section(std::to_string(count) + " contacts");
    report.note("_CardRead of a random card", median(below.item), "ns");
    report.note("readItem of a random card", median(above.item), "ns");
    report.note("QString::fromUtf8 of such an item", decodingTime(contacts), "ns");
    report.note("ordered walk, three _CardRead a card", median(below.walk), "us");
    report.note("ordered walk, three readItem a card", median(above.walk), "us");
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    const QString parent =
        argc == 3 && qstrcmp(argv[1], "--dir") == 0 ? QString::fromLocal8Bit(argv[2]) : ".";
    const QTemporaryDir folder(QDir(parent).absoluteFilePath("recordbenchmark-XXXXXX"));
    if (!folder.isValid()) {
        std::fprintf(stderr, "no folder can be made below %s\n", qPrintable(parent));
        return 2;
    }
    qputenv("HOME", folder.path().toLocal8Bit());
    Report report;
    for (const int count : {Small, Large}) {
        if (!measure(report, count)) {
            std::fprintf(stderr, "the box of %d contacts could not be opened\n", count);
            return 2;
        }
    }
    return 0;
}
