/* coldpostal DATABASE CODE: opens a database and prints the places of a postal code. */
#include <sqlite3.h>
#include <stdio.h>

int main(int argc, char **argv)
{
    sqlite3 *database = 0;
    sqlite3_stmt *statement = 0;
    int rows = 0;
    if (argc != 3 || sqlite3_open_v2(argv[1], &database, SQLITE_OPEN_READONLY, 0) != SQLITE_OK ||
        sqlite3_prepare_v2(database, "SELECT prefecture, municipality, town FROM places WHERE code = ?", -1,
                           &statement, 0) != SQLITE_OK ||
        sqlite3_bind_text(statement, 1, argv[2], -1, SQLITE_STATIC) != SQLITE_OK)
        return 1;
    for (; sqlite3_step(statement) == SQLITE_ROW; ++rows)
        printf("%s %s%s%s\n", argv[2], (const char *)sqlite3_column_text(statement, 0),
               (const char *)sqlite3_column_text(statement, 1),
               (const char *)sqlite3_column_text(statement, 2));
    sqlite3_finalize(statement);
    return sqlite3_close(database) == SQLITE_OK && rows > 0 ? 0 : 1;
}
