#include "source.h"

#include "csvreader.h"
#include "jistext.h"
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>

namespace ZipDict {

namespace {

constexpr size_t MaximumFileSize = 64U << 20;
constexpr size_t MaximumTownSize = 4096; // of the joined lines of a row, in characters
constexpr size_t MaximumMunicipalitySize = 17;
constexpr std::u16string_view MunicipalityEnds = u"市区町村";
constexpr size_t MaximumProblems = 1000;
constexpr size_t RecordsBetweenProgress = 4096;
constexpr size_t CodeDigits = 7;
constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view StandardInput = "-";

/** Where a file has what. */
struct Layout
{
    size_t columns;
    size_t code;
    size_t prefecture;
    size_t municipality;
    size_t town;
    size_t business;      ///< NoColumn in files of places
    size_t businessBlock; ///< NoColumn in files of places
};

constexpr size_t NoColumn = SIZE_MAX;
constexpr Layout Layouts[] = {{15, 2, 6, 7, 8, NoColumn, NoColumn}, {13, 7, 3, 4, 5, 2, 6}};

using Decoder = std::optional<std::u16string> (*)(std::string_view);
using FilePointer = std::unique_ptr<FILE, int (*)(FILE *)>;

/** What a file holds, or why it can't be had. */
struct FileContent
{
    std::string bytes;
    std::string error;
};

int leaveOpen(FILE *)
{
    return 0;
}

FilePointer openSource(const std::string &path)
{
    return path == StandardInput ? FilePointer(stdin, leaveOpen)
                                 : FilePointer(std::fopen(path.c_str(), "rb"), std::fclose);
}

FileContent contentOf(const std::string &path)
{
    const FilePointer file = openSource(path);
    if (!file)
        return {{}, std::strerror(errno)};
    FileContent content;
    char buffer[65536];
    size_t count = 0;
    while ((count = std::fread(buffer, 1, sizeof buffer, file.get())) > 0) {
        content.bytes.append(buffer, count);
        if (content.bytes.size() > MaximumFileSize)
            return {{}, "it is larger than 64 megabytes"};
    }
    if (std::ferror(file.get()))
        return {{}, std::strerror(errno)};
    return content;
}

const Layout *layoutOf(const CsvRecord &record)
{
    const auto *layout = std::ranges::find(Layouts, record.fields.size(), &Layout::columns);
    return layout == std::end(Layouts) ? nullptr : layout;
}

/* The first record of a known number of columns tells what the file is; broken ones before it are problems.
 */
const Layout *layoutOfFile(std::string_view bytes)
{
    CsvReader reader(bytes);
    CsvRecord record;
    while (reader.readRecord(record)) {
        if (const Layout *layout = layoutOf(record))
            return layout;
    }
    return nullptr;
}

/* Names of prefectures in Shift-JIS are no UTF-8. */
Decoder decoderOfFile(std::string_view bytes, const Layout &layout)
{
    if (bytes.starts_with(ByteOrderMark))
        return fromUtf8;
    CsvReader reader(bytes);
    CsvRecord record;
    while (reader.readRecord(record)) {
        if (layoutOf(record) != &layout)
            continue;
        const std::string &prefecture = record.fields[layout.prefecture];
        const bool isAscii = std::ranges::all_of(prefecture, [](char byte) { return (byte & 0x80) == 0; });
        if (!isAscii)
            return fromUtf8(prefecture) ? fromUtf8 : fromSjis;
    }
    return fromUtf8;
}

/* Half-width ASCII as the full-width characters that addresses are stored with. */
char16_t wide(char16_t character)
{
    if (character == u' ')
        return u'　';
    return character > u' ' && character < 0x7F ? static_cast<char16_t>(character + 0xFEE0) : character;
}

std::u16string trimmed(const std::u16string &text)
{
    const size_t start = text.find_first_not_of(u'　');
    return start == std::u16string::npos ? std::u16string()
                                         : text.substr(start, text.find_last_not_of(u'　') - start + 1);
}

/* A field with the characters of the dictionary, each in one spelling; nothing when it has others. */
std::optional<std::u16string> nameOf(const std::string &field, Decoder decode)
{
    std::optional<std::u16string> text = decode(field);
    if (!text)
        return std::nullopt;
    std::ranges::transform(*text, text->begin(), wide);
    const std::optional<std::string> jis = toJis(*text);
    return jis ? std::optional(trimmed(fromJis(*jis))) : std::nullopt;
}

std::optional<uint32_t> codeOf(const std::string &field)
{
    const auto isDigit = [](char character) { return character >= '0' && character <= '9'; };
    if (field.size() != CodeDigits || !std::ranges::all_of(field, isDigit))
        return std::nullopt;
    return static_cast<uint32_t>(std::stoul(field));
}

/* What a dictionary has room for as a key. */
bool isMunicipality(std::u16string_view name)
{
    return name.size() >= 2 && name.size() <= MaximumMunicipalitySize &&
           MunicipalityEnds.find(name.back()) != std::u16string_view::npos;
}

/* How many brackets are open at the end; below 0: one closes that wasn't opened. */
ptrdiff_t openBrackets(const std::u16string &town)
{
    return std::ranges::count(town, u'（') - std::ranges::count(town, u'）');
}

/** Reads the records of one file. */
class SourceReader
{
public:
    SourceReader(std::string file, std::string_view bytes, const Layout &layout)
        : m_file(std::move(file)), m_layout(layout), m_decode(decoderOfFile(bytes, layout)),
          m_bytes(bytes.substr(bytes.starts_with(ByteOrderMark) ? ByteOrderMark.size() : 0))
    {
    }

    Source read(const Progress &progress)
    {
        CsvReader reader(m_bytes);
        CsvRecord record;
        for (size_t count = 0; reader.readRecord(record); ++count) {
            readRecord(record);
            if (progress && count % RecordsBetweenProgress == 0)
                progress("Reading", reader.position(), m_bytes.size());
        }
        dropUnfinished();
        if (progress)
            progress("Reading", m_bytes.size(), m_bytes.size());
        if (m_untold > 0)
            m_source.problems.push_back({m_file, 0, std::to_string(m_untold) + " more rows can't be used"});
        return std::move(m_source);
    }

private:
    void addProblem(unsigned line, const std::string &text)
    {
        if (m_source.problems.size() < MaximumProblems)
            m_source.problems.push_back({m_file, line, text});
        else
            ++m_untold;
    }

    void readRecord(const CsvRecord &record)
    {
        SourceRow row;
        row.line = record.line;
        const std::string problem = fillRow(row, record);
        if (!problem.empty()) {
            addProblem(record.line, problem);
            return;
        }
        if (m_unfinished && !continues(row))
            dropUnfinished();
        if (m_unfinished)
            row = joined(std::move(*m_unfinished), row);
        m_unfinished.reset();
        addRow(std::move(row));
    }

    void addRow(SourceRow row)
    {
        const ptrdiff_t open = m_layout.business == NoColumn ? openBrackets(row.town) : 0;
        if (row.town.size() > MaximumTownSize)
            addProblem(row.line, "the town is too long");
        else if (open < 0)
            addProblem(row.line, "a bracket of the town is never opened");
        else if (open > 0)
            m_unfinished = std::move(row);
        else
            m_source.rows.push_back(std::move(row));
    }

    /* What is wrong with the record; empty: nothing. */
    std::string fillRow(SourceRow &row, const CsvRecord &record) const
    {
        if (!record.isWhole)
            return "its quotation marks don't match, or it is too long";
        if (record.fields.size() != m_layout.columns)
            return "it has " + std::to_string(record.fields.size()) + " columns instead of " +
                   std::to_string(m_layout.columns);
        const std::optional<uint32_t> code = codeOf(record.fields[m_layout.code]);
        if (!code)
            return "the postal code doesn't have seven digits";
        row.code = *code;
        if (!fillNames(row, record))
            return "it has characters that are not in JIS X 0208";
        if (prefectureNumber(row.prefecture) == 0)
            return "there is no such prefecture";
        if (row.municipality.empty())
            return "the municipality is missing";
        if (m_layout.business == NoColumn && !isMunicipality(row.municipality))
            return "a municipality ends in 市, 区, 町 or 村 and has 2 to 17 characters";
        if (m_layout.business != NoColumn && row.business.empty())
            return "the name of the business is missing";
        return {};
    }

    bool fillNames(SourceRow &row, const CsvRecord &record) const
    {
        const struct
        {
            size_t column;
            std::u16string &text;
        } names[] = {{m_layout.prefecture, row.prefecture},
                     {m_layout.municipality, row.municipality},
                     {m_layout.town, row.town},
                     {m_layout.business, row.business},
                     {m_layout.businessBlock, row.businessBlock}};
        for (const auto &[column, text] : names) {
            if (column == NoColumn)
                continue;
            const std::optional<std::u16string> name = nameOf(record.fields[column], m_decode);
            if (!name)
                return false;
            text = *name;
        }
        return true;
    }

    [[nodiscard]] bool continues(const SourceRow &row) const
    {
        return m_unfinished->code == row.code && m_unfinished->prefecture == row.prefecture &&
               m_unfinished->municipality == row.municipality;
    }

    static SourceRow joined(SourceRow row, const SourceRow &next)
    {
        row.town += next.town;
        return row;
    }

    void dropUnfinished()
    {
        if (m_unfinished)
            addProblem(m_unfinished->line, "a bracket of the town is never closed");
        m_unfinished.reset();
    }

    std::string m_file;
    const Layout &m_layout;
    Decoder m_decode;
    std::string_view m_bytes;
    Source m_source;
    std::optional<SourceRow> m_unfinished; ///< a row that goes on in the next line
    size_t m_untold = 0;
};

} // namespace

Source readSource(const std::string &path, const Progress &progress)
{
    const std::string file = path == StandardInput ? "standard input" : path;
    const FileContent content = contentOf(path);
    if (!content.error.empty())
        return {{}, {{file, 0, content.error}}};
    const Layout *layout = layoutOfFile(content.bytes);
    if (!layout)
        return {{}, {{file, 0, "it has no rows of 15 columns (places) or of 13 (businesses)"}}};
    return SourceReader(file, content.bytes, *layout).read(progress);
}

} // namespace ZipDict
