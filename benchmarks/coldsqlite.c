/* coldsqlite DATABASE: opens a database, goes to the first row of an SQL index and reads its name. */
#include <sqlite3.h>

int main(int argc, char **argv)
{
    sqlite3 *database = 0;
    sqlite3_stmt *statement = 0;
    if (argc != 2 || sqlite3_open_v2(argv[1], &database, SQLITE_OPEN_READWRITE, 0) != SQLITE_OK ||
        sqlite3_exec(database, "PRAGMA synchronous=FULL", 0, 0, 0) != SQLITE_OK ||
        sqlite3_prepare_v2(database, "SELECT FULL FROM contacts INDEXED BY byNAPR ORDER BY NAPR LIMIT 1", -1,
                           &statement, 0) != SQLITE_OK ||
        sqlite3_step(statement) != SQLITE_ROW || sqlite3_column_bytes(statement, 0) == 0)
        return 1;
    sqlite3_finalize(statement);
    return sqlite3_close(database) == SQLITE_OK ? 0 : 1;
}
