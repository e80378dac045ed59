// Measures lists of contacts in a window: KyDbListView on a box, beside a QSqlTableModel in a QTreeView;
// README.md tells what each line means.
#include "boxlist.h"
#include "contacts.h"
#include "report.h"
#include "scratch.h"
#include "separateprocess.h"
#include "sqliteside.h"
#include "sqllist.h"
#include <algorithm>
#include <malloc.h>
#include <QApplication>

namespace {

struct Size
{
    int contacts;
    const char *name; ///< its first three letters name the temporary indexes
};
constexpr Size Small = {5000, "SMALL"};
constexpr Size Large = {50000, "LARGE"};
constexpr int Rounds = 7;
constexpr int FontPixels = 12;
constexpr double PageLimit = 8;
constexpr double RowLimit = 340;

std::string databasePath(const Scratch &scratch, const Size &size)
{
    return scratch.file(size.name) + ".db";
}

/** The same contacts in a box, with an index by reading, and in a database. */
void makeFiles(const Scratch &scratch, const Size &size)
{
    const std::vector<Contact> contacts = makeContacts(size.contacts);
    StoreSide store(size.name);
    store.create();
    store.open();
    store.load(contacts);
    store.indexByReading(1);
    store.close();
    SqliteSide sqlite(databasePath(scratch, size));
    sqlite.createTable();
    sqlite.load(contacts);
    sqlite.createList();
    sqlite.emptyLog();
}

/** Lines of diagnosis: making them counts, the terminal doesn't. */
void dropMessage(QtMsgType, const QMessageLogContext &, const QString &) {}

/** What every process needs before it has a window. */
class Desktop
{
public:
    Desktop() : m_application(s_argumentCount, s_arguments)
    {
        QFont font = QApplication::font();
        font.setPixelSize(FontPixels);
        QApplication::setFont(font);
    }

private:
    static inline char s_name[] = "listbenchmark";
    static inline char *s_arguments[] = {s_name, nullptr};
    static inline int s_argumentCount = 1;
    QApplication m_application;
};

// Memory

/** Memory without what is free, so that nothing of that serves for rows. */
double memoryInUse()
{
    malloc_trim(0);
    return anonymousMemory();
}

/** A list gets its rows, and shows the first and the last of them. */
template <typename List> double growthByRows(const std::string &source)
{
    const Desktop desktop;
    List list(source);
    list.readAll();
    list.repaint();
    const double before = memoryInUse();
    list.fill();
    list.repaint();
    list.goToEnd();
    list.repaint();
    return anonymousMemory() - before;
}

/** All that a list shows is read, without a row. */
template <typename List> double growthByReading(const std::string &source)
{
    const Desktop desktop;
    List list(source);
    const double before = memoryInUse();
    list.readAll();
    return anonymousMemory() - before;
}

struct Sources
{
    std::string small;
    std::string large;
};

/** Bytes by which a process grows for each row more. */
double bytesOfRow(double (*growth)(const std::string &source), const Sources &sources)
{
    const double more = inSeparateProcess([&] { return growth(sources.large); }) -
                        inSeparateProcess([&] { return growth(sources.small); });
    return more / (Large.contacts - Small.contacts);
}

void measureMemory(Report &report, const Scratch &scratch)
{
    const Sources boxes = {Small.name, Large.name};
    const Sources databases = {databasePath(scratch, Small), databasePath(scratch, Large)};
    const double ours = bytesOfRow(growthByRows<BoxList>, boxes);
    report.section("Memory, from 5000 to 50000 contacts");
    report.compare("a row", ours, "a row", bytesOfRow(growthByRows<SqlList>, databases), "B", 1);
    report.limit("  alone", ours, "B", RowLimit);
    report.note("what the box keeps, a contact", bytesOfRow(growthByReading<BoxList>, boxes), "B");
    report.note("what SQLite keeps, a contact", bytesOfRow(growthByReading<SqlList>, databases), "B");
}

// Time

/** Both lists of the same contacts, filled. */
struct Stage
{
    Stage(const Scratch &scratch, const Size &size) : ours(size.name), theirs(databasePath(scratch, size))
    {
        ours.fill();
        theirs.setRowHeight(ours.rowHeight());
        theirs.fill();
        require(ours.rows() == size.contacts && theirs.rows() == size.contacts, "filling the lists");
        require(ours.rowHeight() == theirs.rowHeight(), "giving both lists rows of the same height");
    }

    /** Does something on both sides. */
    template <typename Work> void both(Work work)
    {
        work(ours);
        work(theirs);
    }
    /** The same, timed. */
    template <typename Work> void time(Pair &times, Work work)
    {
        times.ours.push_back(timeOf([&] { work(ours); }));
        times.theirs.push_back(timeOf([&] { work(theirs); }));
    }

    BoxList ours;
    SqlList theirs;
};

void fill(ListSide &list)
{
    list.fill();
}

void fillAndPaint(ListSide &list)
{
    list.fill();
    list.repaint();
}

void empty(ListSide &list)
{
    list.empty();
    list.repaint();
}

void measureFilling(Report &report, Stage &stage)
{
    Pair call;
    Pair painted;
    std::vector<double> firstRows;
    for (int round = 0; round < Rounds; ++round) {
        stage.both(empty);
        stage.time(call, fill);
        stage.both(empty);
        stage.time(painted, fillAndPaint);
        stage.both(empty);
        firstRows.push_back(timeOf([&] {
            stage.theirs.fillFirstRows();
            stage.theirs.repaint();
        }));
        stage.both(fillAndPaint);
    }
    call.compare(report, "setDb, call", "select() and all rows", 1);
    painted.compare(report, "setDb, painted", "select() and all rows", 1);
    report.note("  select() without fetching all rows", median(firstRows), "ms");
}

void showFirst(ListSide &list)
{
    list.goToFirst();
    list.repaint();
}

void turnPage(ListSide &list)
{
    list.scrollPage();
    list.repaint();
}

void showEnd(ListSide &list)
{
    list.goToEnd();
    list.repaint();
}

/** Every page of the list, from the second on. */
Pair turnPages(Stage &stage)
{
    Pair times;
    stage.both(showFirst);
    while (!stage.ours.isAtEnd() && !stage.theirs.isAtEnd())
        stage.time(times, turnPage);
    return times;
}

/** What all but one of a hundred don't exceed. */
double nearlyWorst(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() * 99 / 100];
}

/** For a list of which only the first page was painted so far. */
void measureScrolling(Report &report, Stage &stage)
{
    const Pair first = turnPages(stage);
    const Pair again = turnPages(stage);
    Pair end;
    for (int round = 0; round < Rounds; ++round) {
        stage.both(showFirst);
        stage.time(end, showEnd);
    }
    first.compare(report, "page of scrolling, first visit", "QTreeView", 1);
    report.limit("  alone", median(first.ours), "ms", PageLimit);
    report.note("  99 of 100", nearlyWorst(first.ours), "ms");
    report.note("  99 of 100 of the peer's", nearlyWorst(first.theirs), "ms");
    again.compare(report, "page of scrolling, later", "QTreeView", 1);
    end.compare(report, "to the end of the list", "QTreeView", 1);
    report.limit("  alone", median(end.ours), "ms", PageLimit);
}

/** A click on a header, to the repainted list. */
template <int Column> void order(ListSide &list)
{
    list.click(Column);
    list.repaint();
}

void measureKnownOrders(Report &report, Stage &stage)
{
    Pair other;
    Pair turned;
    stage.both(order<CompanyColumn>);
    stage.both(order<ReadingColumn>);
    for (int round = 0; round < Rounds; ++round) {
        stage.time(other, order<CompanyColumn>);
        stage.time(turned, order<CompanyColumn>);
        stage.both(order<ReadingColumn>);
    }
    other.compare(report, "header click, order that exists", "covering SQL index", 1);
    turned.compare(report, "header click, other direction", "covering SQL index", 1);
}

void measureNewOrder(Report &report, Stage &stage)
{
    Pair times;
    for (int round = 0; round < Rounds; ++round) {
        stage.ours.forgetOrders();
        stage.ours.fill();
        stage.theirs.click(ReadingColumn);
        stage.both([](ListSide &list) { list.repaint(); });
        stage.time(times, order<PhoneColumn>);
        require(stage.ours.text(0, PhoneColumn) == stage.theirs.text(0, PhoneColumn), "the same order");
    }
    times.compare(report, "header click, new order, from open", "ORDER BY", 1);
}

void showLast(ListSide &list)
{
    list.select(list.lastContact());
    list.repaint();
}

void measureFinding(Report &report, Stage &stage)
{
    Pair times;
    for (int round = 0; round < Rounds; ++round) {
        stage.both(showFirst);
        stage.time(times, showLast);
        stage.both([](ListSide &list) { require(list.isLastCurrent(), "finding the last contact"); });
    }
    times.compare(report, "last contact found, selected, painted", "a walk over the keys", 1);
}

/** The last measure: the list has one row less than the box has cards, then. */
void measureLineNumbers(Report &report, Stage &stage)
{
    std::vector<double> times;
    for (int round = 0; round < Rounds; ++round) {
        stage.ours.deleteFirstRow();
        qint64 sum = 0;
        times.push_back(timeOf([&] { sum = stage.ours.sumOfLineNumbers(); }));
        const qint64 rows = stage.ours.rows();
        require(sum == rows * (rows + 1) / 2, "numbering the rows");
    }
    report.note("lineNo() of all rows after a deletion", median(times), "ms");
}

void measureTimes(Report &report, const Scratch &scratch, const Size &size)
{
    Stage stage(scratch, size);
    report.section(std::to_string(size.contacts) + " contacts");
    measureFilling(report, stage);
    measureScrolling(report, stage);
    require(stage.ours.sizeOfTexts() == stage.theirs.sizeOfTexts(), "showing the same texts");
    measureKnownOrders(report, stage);
    measureNewOrder(report, stage);
    measureFinding(report, stage);
    measureLineNumbers(report, stage);
}

} // namespace

int main(int argc, char **argv)
{
    const Scratch scratch(parentFolder(argc, argv));
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler(dropMessage);
    DtmSetLanguage("ja");
    Report report;
    // Made elsewhere, so that nothing of them is in this process's memory.
    inSeparateProcess([&] {
        makeFiles(scratch, Small);
        makeFiles(scratch, Large);
        return 0.0;
    });
    measureMemory(report, scratch);
    const Desktop desktop;
    measureTimes(report, scratch, Small);
    measureTimes(report, scratch, Large);
    report.close();
    return report.anyMissed() ? 1 : 0;
}
