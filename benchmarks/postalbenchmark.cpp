#include "heappeak.h"
#include "jistext.h"
#include "processtime.h"
#include "report.h"
#include "scratch.h"
#include "source.h"
#include "ydic.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <random>
#include <sqlite3.h>

using namespace ZipDict;

namespace {

constexpr uint32_t Most = 20; ///< results of a search

void expect(bool isTrue, const char *what)
{
    if (isTrue)
        return;
    std::fprintf(stderr, "%s failed\n", what);
    std::exit(2);
}

/** The table of SQLite. */
class Database
{
public:
    explicit Database(const std::string &path)
    {
        sqlite3 *database = nullptr;
        expect(sqlite3_open(path.c_str(), &database) == SQLITE_OK, "opening the database");
        m_database.reset(database);
    }

    void load(const std::vector<SourceRow> &rows)
    {
        execute("CREATE TABLE places (code TEXT, prefecture TEXT, municipality TEXT, town TEXT)");
        execute("BEGIN");
        Statement insert = prepare("INSERT INTO places VALUES (?, ?, ?, ?)");
        for (const SourceRow &row : rows) {
            bind(insert,
                 {codeText(row.code), toUtf8(row.prefecture), toUtf8(row.municipality), toUtf8(row.town)});
            expect(sqlite3_step(insert.get()) == SQLITE_DONE, "filling the database");
            sqlite3_reset(insert.get());
        }
        execute("CREATE INDEX byCode ON places (code)");
        execute("CREATE INDEX byPlace ON places (municipality, town)");
        execute("COMMIT");
        execute("VACUUM");
        m_byCode = prepare("SELECT prefecture, municipality, town FROM places WHERE code = ?");
        m_byPlace = prepare("SELECT code FROM places WHERE municipality = ? AND town = ?");
    }

    /** Bytes of the places of a code. */
    [[nodiscard]] size_t placesOf(const std::string &code) { return bytesOf(m_byCode, {code}); }
    /** Bytes of the codes of a place. */
    [[nodiscard]] size_t codesOf(const std::string &municipality, const std::string &town)
    {
        return bytesOf(m_byPlace, {municipality, town});
    }

    [[nodiscard]] static std::string codeText(uint32_t code)
    {
        char text[8];
        std::snprintf(text, sizeof text, "%07u", code % 10000000);
        return text;
    }

private:
    struct Close
    {
        void operator()(sqlite3 *database) const { sqlite3_close_v2(database); }
        void operator()(sqlite3_stmt *statement) const { sqlite3_finalize(statement); }
    };
    using Statement = std::unique_ptr<sqlite3_stmt, Close>;

    void execute(const char *sql)
    {
        expect(sqlite3_exec(m_database.get(), sql, nullptr, nullptr, nullptr) == SQLITE_OK, sql);
    }

    Statement prepare(const char *sql)
    {
        sqlite3_stmt *statement = nullptr;
        expect(sqlite3_prepare_v2(m_database.get(), sql, -1, &statement, nullptr) == SQLITE_OK, sql);
        return Statement(statement);
    }

    static void bind(Statement &statement, const std::vector<std::string> &texts)
    {
        for (size_t i = 0; i < texts.size(); ++i)
            sqlite3_bind_text(statement.get(), static_cast<int>(i) + 1, texts[i].data(),
                              static_cast<int>(texts[i].size()), SQLITE_TRANSIENT);
    }

    static size_t bytesOf(Statement &statement, const std::vector<std::string> &texts)
    {
        bind(statement, texts);
        size_t bytes = 0;
        while (sqlite3_step(statement.get()) == SQLITE_ROW) {
            for (int column = 0; column < sqlite3_column_count(statement.get()); ++column) {
                sqlite3_column_text(statement.get(), column);
                bytes += static_cast<size_t>(sqlite3_column_bytes(statement.get(), column));
            }
        }
        sqlite3_reset(statement.get());
        return bytes;
    }

    std::unique_ptr<sqlite3, Close> m_database;
    Statement m_byCode, m_byPlace;
};

/** The dictionary, open. */
class Dictionary
{
public:
    Dictionary() { m_info.dictFile = std::fopen(KY_POSTAL_DICTIONARY, "rb"); }
    ~Dictionary() { std::fclose(m_info.dictFile); }
    Dictionary(const Dictionary &) = delete;
    Dictionary &operator=(const Dictionary &) = delete;

    int placesOf(const std::string &code) { return Zip2AdrSearch(code.c_str(), Most, m_places, &m_info); }
    int codesOf(const std::string &address) { return Adr2ZipSearch(address.c_str(), Most, m_codes, &m_info); }

private:
    ydic_info m_info = {};
    char m_places[Most * (YDIC_ADDRESS_LENGTH + 1)] = {};
    char m_codes[Most * 8] = {};
};

std::u16string withoutBrackets(const std::u16string &town)
{
    return town.substr(0, town.find(u'（'));
}

double percentile(std::vector<double> values, double share)
{
    const auto at =
        values.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

void measureCodes(Report &report, Dictionary &dictionary, Database &database,
                  const std::vector<SourceRow> &rows)
{
    constexpr int Lookups = 20000;
    std::mt19937 random(1);
    std::vector<double> ours, theirs;
    for (int i = 0; i < Lookups; ++i) {
        const std::string code = Database::codeText(rows[random() % rows.size()].code);
        const Stopwatch first;
        expect(dictionary.placesOf(code) > 0, "a look-up");
        ours.push_back(first.microseconds());
        const Stopwatch second;
        expect(database.placesOf(code) > 0, "a SELECT");
        theirs.push_back(second.microseconds());
    }
    report.compare("code to places", median(ours), "prepared SELECT", median(theirs), "us", 1.0);
}

void measureProcess(Report &report, const std::string &database)
{
    constexpr int Runs = 301;
    std::vector<double> ours, theirs;
    for (int run = 0; run < Runs; ++run) {
        ours.push_back(runTime(KYZIPDICT, {"lookup", "--dictionary", KY_POSTAL_DICTIONARY, "100-0001"}));
        theirs.push_back(runTime(COLD_POSTAL, {database, "1000001"}));
    }
    report.compare("process: start to answer for a code", median(ours), "SQLite", median(theirs), "ms", 0.5);
}

void measureAddresses(Report &report, Dictionary &dictionary, Database &database,
                      const std::vector<SourceRow> &rows)
{
    std::vector<double> ours, theirs;
    for (const SourceRow &row : rows) {
        const std::string address =
            toJis(row.prefecture + row.municipality + withoutBrackets(row.town)).value_or("");
        const std::string municipality = toUtf8(row.municipality);
        const std::string town = toUtf8(row.town);
        const Stopwatch first;
        expect(dictionary.codesOf(address) >= 0, "a search by address");
        ours.push_back(first.microseconds());
        const Stopwatch second;
        expect(database.codesOf(municipality, town) > 0, "a SELECT by place");
        theirs.push_back(second.microseconds());
    }
    report.limit("address to codes, median", median(ours), "us", 200);
    report.limit("address to codes, 99th percentile", percentile(ours, 0.99), "us", 2000);
    report.note("address to codes, longest", *std::max_element(ours.begin(), ours.end()), "us");
    report.note("exact place by SELECT, median", median(theirs), "us");
}

void measureHeap(Report &report, const std::vector<SourceRow> &rows)
{
    constexpr size_t Every = 100;
    size_t most = 0;
    for (size_t i = 0; i < rows.size(); i += Every) {
        const SourceRow &row = rows[i];
        const std::string code = Database::codeText(row.code);
        const std::string address =
            toJis(row.prefecture + row.municipality + withoutBrackets(row.town)).value_or("");
        const HeapPeak peak;
        Dictionary dictionary;
        dictionary.placesOf(code);
        dictionary.codesOf(address);
        most = std::max(most, peak.bytes());
    }
    report.limit("heap of a look-up", static_cast<double>(most) / 1024, "KB", 64);
}

void measureFile(Report &report, const std::string &database)
{
    const auto megabytes = [](const std::string &path) {
        return static_cast<double>(std::filesystem::file_size(path)) / (1024 * 1024);
    };
    report.limit("file", megabytes(KY_POSTAL_DICTIONARY), "MB", 2);
    report.note("file of SQLite", megabytes(database), "MB");
}

} // namespace

int main(int argc, char **argv)
{
    const Scratch scratch(parentFolder(argc, argv));
    const Source source = readSource(KY_POSTAL_TABLE, nullptr);
    expect(source.problems.empty() && !source.rows.empty(), "reading the table of places");
    const std::string path = scratch.file("places.sqlite");
    Database database(path);
    database.load(source.rows);
    Report report;
    report.section("All postal codes of Japan");
    Dictionary dictionary;
    measureCodes(report, dictionary, database, source.rows);
    measureProcess(report, path);
    measureAddresses(report, dictionary, database, source.rows);
    measureFile(report, path);
    measureHeap(report, source.rows);
    report.close();
    return report.anyMissed() ? 1 : 0;
}
