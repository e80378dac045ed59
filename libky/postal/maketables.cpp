#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <iconv.h>
#include <map>
#include <sstream>
#include <string>
#include <vector>

/* Writes the tables of the postal dictionary from two lists in UTF-8. The searches rely on the number of rows
 * and on their order, so a list that is not as they need it fails here. */

namespace {

constexpr size_t Prefectures = 47;
constexpr size_t Pairs = 113;
constexpr size_t Classes = 5;
constexpr size_t VariantRows = 243;
constexpr unsigned FirstClass = 0xFB00;
constexpr unsigned ClassStep = 0x100;
constexpr unsigned StandardForm = 0x8000;

/* How many names there are of each kind, in the order of the kinds. */
constexpr std::array<size_t, 5> KindSizes = {40, 3, 2, 1, 1};

bool fail(const std::string &text)
{
    std::fprintf(stderr, "maketables: %s\n", text.c_str());
    return false;
}

/** Text in 7-bit JIS; empty when a character has no code there. */
std::string toJis(const std::string &utf8)
{
    const iconv_t converter = iconv_open("EUC-JP", "UTF-8");
    if (converter == reinterpret_cast<iconv_t>(-1))
        return {};
    std::string in = utf8;
    std::string out(utf8.size() + 8, '\0');
    char *from = in.data();
    char *to = out.data();
    size_t left = in.size();
    size_t room = out.size();
    const bool isConverted = iconv(converter, &from, &left, &to, &room) == 0;
    iconv_close(converter);
    out.resize(isConverted ? out.size() - room : 0);
    for (char &byte : out) {
        if (static_cast<unsigned char>(byte) < 0xA1)
            return {};
        byte = static_cast<char>(byte & 0x7F);
    }
    return out;
}

/** The words of every line that says something. */
bool readLines(const char *path, std::vector<std::vector<std::string>> &lines)
{
    std::ifstream file(path);
    std::string line;
    while (std::getline(file, line)) {
        std::istringstream stream(line);
        std::vector<std::string> words;
        for (std::string word; stream >> word;)
            words.push_back(word);
        if (!words.empty() && words.front() != "#")
            lines.push_back(words);
    }
    return file.eof() || fail(std::string("can't read ") + path);
}

struct Prefecture
{
    std::string name;
    size_t number;
};

/** Kind of a name in the order of the look-up, by its ending. */
size_t kindOf(const std::string &name)
{
    static const std::vector<std::string> endings = {toJis("県"), toJis("府"), toJis("道"), toJis("都")};
    const auto ending = std::find(endings.begin(), endings.end(), name.substr(name.size() - 2));
    const auto place = static_cast<size_t>(ending - endings.begin());
    return place == 0 ? (name.size() == 6 ? 0 : 1) : place + 1;
}

bool readPrefectures(const char *path, std::vector<Prefecture> &prefectures)
{
    std::vector<std::vector<std::string>> lines;
    if (!readLines(path, lines))
        return false;
    for (const std::vector<std::string> &words : lines) {
        const std::string name = words.size() == 1 ? toJis(words.front()) : std::string();
        if (name.size() != 6 && name.size() != 8)
            return fail("not the name of a prefecture: " + words.front());
        prefectures.push_back({name, prefectures.size() + 1});
    }
    return prefectures.size() == Prefectures || fail("the prefectures are not 47");
}

/** In the order of the look-up: by kind, ascending. Those of the first kind are bisected. */
bool sortPrefectures(std::vector<Prefecture> &prefectures)
{
    std::sort(prefectures.begin(), prefectures.end(), [](const Prefecture &a, const Prefecture &b) {
        const size_t kind = kindOf(a.name);
        return kind != kindOf(b.name) ? kind < kindOf(b.name) : a.name < b.name;
    });
    std::array<size_t, 5> sizes = {};
    for (const Prefecture &prefecture : prefectures) {
        const size_t kind = kindOf(prefecture.name);
        if (kind >= sizes.size())
            return fail("a prefecture has an ending that is none");
        ++sizes[kind];
    }
    if (sizes != KindSizes)
        return fail("the prefectures are not 40, 3, 2, 1 and 1 of the five kinds");
    for (size_t i = 1; i < KindSizes[0]; ++i) {
        if (prefectures[i - 1].name.compare(0, 4, prefectures[i].name, 0, 4) >= 0)
            return fail("two prefectures begin with the same characters");
    }
    return true;
}

/** What a character is a form of. */
struct Form
{
    std::string other; /**< of a pair, the other character */
    bool isStandard;   /**< the pair's standard form */
    unsigned value;    /**< of a class, its value */
};

/** By character, ascending. */
using Forms = std::map<std::string, Form>;

bool addForm(Forms &forms, const std::string &character, const Form &form, const std::string &line)
{
    if (character.size() != 2)
        return fail("not one character of JIS X 0208: " + line);
    return forms.emplace(character, form).second || fail("a character stands in two places: " + line);
}

bool addPair(Forms &forms, const std::vector<std::string> &words)
{
    const std::string line = words[0] + ' ' + words[1];
    const std::string standard = toJis(words[0]);
    const std::string variant = toJis(words[1]);
    return addForm(forms, standard, {variant, true, 0}, line) &&
           addForm(forms, variant, {standard, false, 0}, line);
}

bool addClass(Forms &forms, const std::vector<std::string> &words)
{
    const unsigned long value = std::strtoul(words[0].c_str(), nullptr, 16);
    if (value < FirstClass || value > 0xFF00 || value % ClassStep != 0)
        return fail("not the value of a class: " + words[0]);
    for (size_t i = 1; i < words.size(); ++i) {
        if (!addForm(forms, toJis(words[i]), {{}, false, static_cast<unsigned>(value)}, words[0]))
            return false;
    }
    return true;
}

bool readForms(const char *path, Forms &forms)
{
    std::vector<std::vector<std::string>> lines;
    if (!readLines(path, lines))
        return false;
    size_t pairs = 0;
    size_t classes = 0;
    for (const std::vector<std::string> &words : lines) {
        if (words.size() == 1)
            return fail("a form alone: " + words[0]);
        ++(words.size() == 2 ? pairs : classes);
        if (!(words.size() == 2 ? addPair(forms, words) : addClass(forms, words)))
            return false;
    }
    if (pairs != Pairs || classes != Classes || forms.size() + 1 != VariantRows)
        return fail("the forms are not 113 pairs and five classes of 242 characters");
    return true;
}

/** Nine digits stand first, as a form's row is a digit's number. */
bool areDigitsFirst(const Forms &forms)
{
    int digit = '1';
    for (auto form = forms.begin(); digit <= '9'; ++form, ++digit) {
        if (form->first != std::string({'\x23', static_cast<char>(digit)}))
            return fail("the first nine forms are not the digits");
    }
    return true;
}

unsigned valueOf(const Forms &forms, const Form &form)
{
    if (form.value)
        return form.value;
    const auto row = static_cast<unsigned>(std::distance(forms.begin(), forms.find(form.other)) + 1);
    return form.isStandard ? StandardForm + row : row;
}

/* Both bytes of every character. */
void writeBytes(FILE *file, const std::string &text, size_t count)
{
    for (size_t i = 0; i < count; ++i)
        std::fprintf(file, "0x%02X, ", i < text.size() ? static_cast<unsigned char>(text[i]) : 0U);
}

void writeNames(FILE *file, const std::vector<Prefecture> &prefectures)
{
    std::fputs("const char Tdfk_tbl[YDIC_TDFK_TBL_ROWS][YDIC_TDFK_ROW] = {\n{},\n", file);
    for (const Prefecture &prefecture : prefectures) {
        std::fputs("{", file);
        writeBytes(file, prefecture.name, 9);
        std::fputs("},\n", file);
    }
    std::fputs("{},\n};\n\n", file);
}

void writeLookup(FILE *file, const std::vector<Prefecture> &prefectures)
{
    std::fputs("const uint8_t Tdfk_dat[YDIC_PREFECTURES][YDIC_TDFK_ROW] = {\n", file);
    for (const Prefecture &prefecture : prefectures) {
        std::fputs("{", file);
        writeBytes(file, prefecture.name, 8);
        std::fprintf(file, "%zu},\n", prefecture.number);
    }
    std::fputs("};\n\n", file);
}

void writeForms(FILE *file, const Forms &forms)
{
    std::fputs("const uint8_t Yuragi_dat[YDIC_VARIANT_ROWS][YDIC_VARIANT_ROW] = {\n{0, 0, 0x00, 0x80},\n",
               file);
    for (const auto &[character, form] : forms) {
        const unsigned value = valueOf(forms, form);
        std::fputs("{", file);
        writeBytes(file, character, 2);
        std::fprintf(file, "0x%02X, 0x%02X},\n", value & 0xFF, value >> 8);
    }
    std::fputs("};\n", file);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 4) {
        fail("maketables PREFECTURES VARIANTS OUTPUT");
        return 1;
    }
    std::vector<Prefecture> prefectures;
    Forms forms;
    if (!readPrefectures(argv[1], prefectures) || !readForms(argv[2], forms) || !areDigitsFirst(forms))
        return 1;
    std::vector<Prefecture> sorted = prefectures;
    if (!sortPrefectures(sorted))
        return 1;
    FILE *file = std::fopen(argv[3], "w");
    if (!file) {
        fail("can't write the tables");
        return 1;
    }
    std::fputs(
        "/* Made by maketables from prefectures.txt and variants.txt. */\n#include \"ydictables_p.h\"\n\n",
        file);
    writeNames(file, prefectures);
    writeLookup(file, sorted);
    writeForms(file, forms);
    return std::fclose(file) == 0 ? 0 : 1;
}
