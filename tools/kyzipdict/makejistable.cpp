#include <cstdio>
#include <iconv.h>

/* Writes the table of JIS X 0208 as a header: a row of UTF-16 for each of its 94 rows, 0 where there is no
 * character. Rows 9 to 15 and those behind 84 belong to makers' extensions of Shift-JIS. */

namespace {

constexpr int Rows = 94;

bool isStandardRow(int row)
{
    return row <= 8 || (row >= 16 && row <= 84);
}

unsigned unicodeOf(iconv_t converter, int row, int cell)
{
    const int pair = (row - 1) / 2;
    const int lead = pair + (pair <= 0x1E ? 0x81 : 0xC1);
    const int trail = row % 2 == 1 ? cell + (cell >= 64 ? 0x40 : 0x3F) : cell + 0x9E;
    char in[] = {static_cast<char>(lead), static_cast<char>(trail)};
    unsigned char out[2] = {};
    char *from = in;
    char *to = reinterpret_cast<char *>(out);
    size_t left = sizeof in;
    size_t room = sizeof out;
    const bool isThere = iconv(converter, &from, &left, &to, &room) == 0 && room == 0;
    return isThere ? static_cast<unsigned>(out[0] | out[1] << 8) : 0;
}

} // namespace

int main(int argc, char **argv)
{
    FILE *file = argc == 2 ? std::fopen(argv[1], "w") : nullptr;
    const iconv_t converter = iconv_open("UTF-16LE", "CP932");
    if (!file || converter == reinterpret_cast<iconv_t>(-1)) {
        std::fputs("makejistable: no file to write, or no table of Japanese text\n", stderr);
        return 1;
    }
    std::fputs("/* Made by makejistable. */\nconstexpr char16_t JisTable[94][94] = {\n", file);
    for (int row = 1; row <= Rows; ++row) {
        std::fputs("{", file);
        for (int cell = 1; cell <= Rows; ++cell)
            std::fprintf(file, "%u,", isStandardRow(row) ? unicodeOf(converter, row, cell) : 0);
        std::fputs("},\n", file);
    }
    std::fputs("};\n", file);
    iconv_close(converter);
    return std::fclose(file) == 0 ? 0 : 1;
}
