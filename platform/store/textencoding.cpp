#include "textencoding.h"

#include <algorithm>
#include <iconv.h>

namespace pdtm {

namespace {

constexpr std::string_view Replacement = "\xEF\xBF\xBD";
const auto NoConverter = reinterpret_cast<iconv_t>(-1);

bool isAscii(std::string_view text)
{
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/** Opened at first use and kept: opening one costs a look for a module on the disk. */
iconv_t converter()
{
    static const iconv_t opened = iconv_open("UTF-8", "CP932");
    return opened;
}

/** Converts from the front of @p text as far as it is well-formed, at most what a buffer holds, and takes
 * that off @p text. False when nothing was converted. */
bool convertSome(std::string_view &text, std::string &out)
{
    std::array<char, 1024> buffer;
    char *from = const_cast<char *>(text.data()); // iconv doesn't write to its input
    size_t left = text.size();
    char *to = buffer.data();
    size_t room = buffer.size();
    if (converter() != NoConverter)
        iconv(converter(), &from, &left, &to, &room);
    out.append(buffer.data(), to);
    const size_t taken = text.size() - left;
    text.remove_prefix(taken);
    return taken > 0;
}

/** Takes one byte off @p text; kept when it is ASCII. */
void passByte(std::string_view &text, std::string &out)
{
    if (isAscii(text.substr(0, 1)))
        out += text.front();
    else
        out += Replacement;
    text.remove_prefix(1);
}

} // namespace

std::string utf8FromCp932(std::string_view text)
{
    if (isAscii(text))
        return std::string(text);
    std::string out;
    while (!text.empty())
        if (!convertSome(text, out))
            passByte(text, out);
    return out;
}

std::string_view asUtf8(uint8_t type, Bytes text, std::string &buffer)
{
    const std::string_view stored(reinterpret_cast<const char *>(text.data()), text.size());
    if (type == ItemTextUtf8 || isAscii(stored))
        return stored;
    buffer = utf8FromCp932(stored);
    return buffer;
}

} // namespace pdtm
