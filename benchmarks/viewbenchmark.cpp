// Measures what a user does with a view, through KyPDataManager, beside plain SQLite; README.md tells what
// each line means.
#include "contacts.h"
#include "kypdatamanager.h"
#include "report.h"
#include "scratch.h"
#include "sqliteside.h"
#include "storeside.h"
#include "synchronisations.h"

namespace {

constexpr int Small = 5000;
constexpr int Large = 50000;
constexpr int Rounds = 5;
constexpr int Chosen = 10; // the category of every tenth contact
constexpr int Other = 1;
constexpr uint8_t Contains = 0x92;
constexpr char Nowhere[] = "nothing like it";
constexpr char Somewhere[] = "第7営業";

/** Every tenth contact has the chosen category, or each of them has. */
std::vector<Contact> contactsWith(int count, bool allChosen)
{
    std::vector<Contact> contacts = makeContacts(count);
    for (size_t i = 0; i < contacts.size(); ++i)
        contacts[i].category = allChosen || i % 10 == 0 ? Chosen : Other;
    return contacts;
}

/** The same contacts on both sides, fresh, with both boxes open and their logs empty. */
class Stage
{
public:
    Stage(const Scratch &scratch, const std::vector<Contact> &contacts)
        : store(nextName()), sqlite(scratch.file("view" + std::to_string(s_stages) + ".db"))
    {
        store.create();
        store.open();
        store.load(contacts);
        store.indexByReading(1);
        store.close();
        manager = std::make_unique<KyPDataManager>(store.boxPath().c_str(), nullptr, false);
        require(manager->isOpened() && manager->count() == static_cast<int>(contacts.size()), "opening");
        sqlite.createTable();
        sqlite.load(contacts);
        sqlite.emptyLog();
    }

    StoreSide store;
    std::unique_ptr<KyPDataManager> manager;
    SqliteSide sqlite;

private:
    /** Its first three letters name the temporary indexes, of which there are ten at most. */
    static std::string nextName() { return std::to_string(100 + s_stages++) + "VIEW"; }
    static inline int s_stages = 0;
};

size_t readNames(KyPDataManager &manager)
{
    size_t bytes = 0;
    for (bool found = manager.first(); found; found = manager.next())
        bytes += static_cast<size_t>(manager.readItem("FULL").toUtf8().size());
    return bytes;
}

// Views

struct ViewTimes
{
    Pair fromOpen;
    Pair first;
    std::vector<double> entering;
    std::vector<double> again;
    Pair newOrder;
    std::vector<double> knownOrder;
};

/** Enters the view of the chosen category and reads the names in it. */
void enter(Stage &stage, Pair &times, std::vector<double> *entering)
{
    size_t ourBytes = 0;
    size_t theirBytes = 0;
    double entered = 0;
    times.ours.push_back(timeOf([&] {
        entered = timeOf([&] { require(stage.manager->enableFilter(Chosen), "enableFilter"); });
        ourBytes = readNames(*stage.manager);
    }));
    times.theirs.push_back(timeOf([&] { theirBytes = stage.sqlite.namesOfCategory(Chosen); }));
    require(ourBytes == theirBytes && ourBytes > 0, "reading the same names");
    if (entering)
        entering->push_back(entered);
}

void leave(Stage &stage, bool discard)
{
    require(stage.manager->disableFilter(discard), "disableFilter");
}

void measureOrders(Stage &stage, ViewTimes &times)
{
    KyPDataManager &manager = *stage.manager;
    times.newOrder.ours.push_back(timeOf([&] { require(manager.sort("CMPN", true), "sort"); }));
    times.newOrder.theirs.push_back(timeOf([&] { (void)stage.sqlite.orderByCompany(); }));
    require(manager.sort("NAPR", true), "sort");
    times.knownOrder.push_back(timeOf([&] { require(manager.sort("CMPN", true), "sort"); }));
}

void measureViews(Report &report, const Scratch &scratch)
{
    const std::vector<Contact> contacts = contactsWith(Small, false);
    ViewTimes times;
    for (int round = 0; round < Rounds; ++round) {
        Stage stage(scratch, contacts);
        enter(stage, times.fromOpen, nullptr);
        leave(stage, true);
        enter(stage, times.first, &times.entering);
        leave(stage, false);
        times.again.push_back(timeOf([&] { require(stage.manager->enableFilter(Chosen), "enableFilter"); }));
        leave(stage, true);
        measureOrders(stage, times);
    }
    report.section("Views, 500 of 5000 contacts in the category");
    times.fromOpen.compare(report, "first view of a category, from open", "SELECT ... ORDER BY", 1);
    times.first.compare(report, "first view of a category, later", "SELECT ... ORDER BY", 1);
    report.note("  without reading the names", median(times.entering), "ms");
    report.note("the same view again", median(times.again), "ms");
    times.newOrder.note(report, "sort into a new order", "SELECT ... ORDER BY");
    report.note("sort into an order that exists", median(times.knownOrder), "ms");
}

// Searches

std::string containing(const char *text)
{
    return std::string("    \xFE\x92\x11") + text + '\0';
}

int countContaining(KyPDataManager &manager, const char *text)
{
    int count = 0;
    (void)manager.count(&count, containing(text).c_str(), 0, nullptr);
    return count;
}

/** Presses "next" until there is no further match. */
int searchAll(KyPDataManager &manager, const char *text)
{
    int found = 0;
    unsigned long card = 0;
    while (manager.search(&card, QString::fromUtf8(text), nullptr, Contains, true))
        ++found;
    return found;
}

void measureSearch(Report &report, const Scratch &scratch, int count)
{
    Stage stage(scratch, contactsWith(count, false));
    KyPDataManager &manager = *stage.manager;
    const double fromOpen = timeOf([&] { (void)countContaining(manager, Nowhere); });
    (void)stage.sqlite.countContaining(Nowhere);
    Pair counting;
    Pair searching;
    Pair nowhere;
    std::vector<double> pressing;
    int matches = 0;
    for (int round = 0; round < Rounds; ++round) {
        counting.ours.push_back(timeOf([&] { matches = countContaining(manager, Somewhere); }));
        counting.theirs.push_back(
            timeOf([&] { require(stage.sqlite.countContaining(Somewhere) == matches, "the same count"); }));
        searching.ours.push_back(
            timeOf([&] { require(searchAll(manager, Nowhere) == 0, "finding nothing"); }));
        nowhere.ours.push_back(
            timeOf([&] { require(countContaining(manager, Nowhere) == 0, "counting none"); }));
        nowhere.theirs.push_back(timeOf([&] { (void)stage.sqlite.countContaining(Nowhere); }));
        pressing.push_back(timeOf([&] { require(searchAll(manager, Somewhere) == matches, "finding all"); }));
    }
    searching.theirs = nowhere.theirs;
    report.section("Searches in every text of " + std::to_string(count) + " contacts");
    counting.compare(report, "count of " + std::to_string(matches) + " matches", "LIKE", 0.2);
    nowhere.compare(report, "count of a text that is nowhere", "LIKE", 0.2);
    searching.compare(report, "search for it in index order", "LIKE", 0.2);
    report.note("  the first one after the box was opened", fromOpen, "ms");
    report.note("one match after the other, all of them", median(pressing), "ms");
}

// Changes of many cards

struct Change
{
    const char *name;
    bool allChosen;
    void (*ours)(KyPDataManager &manager);
    void (*theirs)(SqliteSide &sqlite);
};

void deleteVisible(KyPDataManager &manager)
{
    unsigned long card = 0;
    require(manager.deleteCard(&card, KyPDataManager::DeleteVisible), "deleteCard");
}

void removeCategory(KyPDataManager &manager)
{
    require(manager.categoryRemoved(Chosen), "categoryRemoved");
}

constexpr Change Changes[] = {
    {"deletion of the 500 visible", false, deleteVisible,
     [](SqliteSide &sqlite) { sqlite.deleteCategory(Chosen); }},
    {"category taken from 500", false, removeCategory,
     [](SqliteSide &sqlite) { sqlite.clearCategory(Chosen); }},
    {"category taken from all 5000", true, removeCategory,
     [](SqliteSide &sqlite) { sqlite.clearCategory(Chosen); }},
};

/** Runs some work and counts the synchronisations in it. */
template <typename Work> int synchronisationsOf(Work work)
{
    const int before = synchronisations();
    work();
    return synchronisations() - before;
}

void measureChange(Report &report, const Scratch &scratch, const Change &change)
{
    const std::vector<Contact> contacts = contactsWith(Small, change.allChosen);
    Pair times;
    int ours = 0;
    int theirs = 0;
    for (int round = 0; round < Rounds; ++round) {
        Stage stage(scratch, contacts);
        (void)readNames(*stage.manager);
        (void)stage.sqlite.orderByReading();
        require(stage.manager->enableFilter(Chosen), "enableFilter");
        ours =
            synchronisationsOf([&] { times.ours.push_back(timeOf([&] { change.ours(*stage.manager); })); });
        theirs =
            synchronisationsOf([&] { times.theirs.push_back(timeOf([&] { change.theirs(stage.sqlite); })); });
        require(stage.sqlite.namesOfCategory(Chosen) == 0, "the change");
    }
    times.compare(report, change.name, "one transaction", 2);
    report.note("  synchronisations", ours, "");
    report.note("  synchronisations of SQLite", theirs, "");
}

/** Lines of diagnosis: making them counts, the terminal doesn't. */
void dropMessage(QtMsgType, const QMessageLogContext &, const QString &) {}

} // namespace

int main(int argc, char **argv)
{
    const Scratch scratch(parentFolder(argc, argv));
    qInstallMessageHandler(dropMessage);
    DtmSetLanguage("ja");
    Report report;
    measureViews(report, scratch);
    measureSearch(report, scratch, Small);
    measureSearch(report, scratch, Large);
    report.section("Changes in a view of 5000 contacts");
    for (const Change &change : Changes)
        measureChange(report, scratch, change);
    report.close();
    return report.anyMissed() ? 1 : 0;
}
