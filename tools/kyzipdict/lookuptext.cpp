#include "lookuptext.h"

#include <algorithm>

namespace ZipDict {

namespace {

constexpr char16_t PostalMark = u'〒';
constexpr char16_t FullWidthZero = u'０';
constexpr char16_t FullWidthOffset = 0xFEE0; // from ASCII
constexpr char16_t FirstHalfKana = 0xFF61;
constexpr std::u16string_view HalfKana = u"。「」、・ヲァィゥェォャュョッーアイウエオカキクケコサシスセソタチ"
                                         u"ツテトナニヌネノハヒフヘホマミムメモヤユヨラリルレロワン゛゜";
constexpr char16_t HalfVoiced = 0xFF9E;
constexpr char16_t HalfSemivoiced = 0xFF9F;
constexpr size_t CodeLength = 7;

bool isBlank(char16_t character)
{
    return character == u' ' || character == u'\t' || character == u'\n' || character == u'　';
}

/* Hyphens that JIS has no character of its own for. */
bool isOtherDash(char16_t character)
{
    return character == u'-' || (character >= 0x2011 && character <= 0x2013);
}

bool isDash(char16_t character)
{
    constexpr std::u16string_view Dashes = u"‐―—−－ーｰ";
    return isOtherDash(character) || Dashes.find(character) != std::u16string_view::npos;
}

/* 0 when it is none. */
char digitOf(char16_t character)
{
    const char16_t narrow =
        character >= FullWidthZero ? static_cast<char16_t>(character - FullWidthOffset) : character;
    return narrow >= u'0' && narrow <= u'9' ? static_cast<char>(narrow) : '\0';
}

bool isBetween(char16_t character, char16_t first, char16_t last)
{
    return character >= first && character <= last;
}

/* The kana with a voicing mark behind it; 0 when it takes none. Voiced forms follow the plain ones. */
char16_t withMark(char16_t kana, char16_t mark)
{
    if (mark == HalfSemivoiced && isBetween(kana, u'ハ', u'ホ'))
        return static_cast<char16_t>(kana + 2);
    if (mark != HalfVoiced)
        return 0;
    if (kana == u'ウ')
        return u'ヴ';
    const bool hasVoiced = isBetween(kana, u'カ', u'ト') || isBetween(kana, u'ハ', u'ホ');
    return hasVoiced ? static_cast<char16_t>(kana + 1) : char16_t{0};
}

char16_t fullWidthOf(char16_t character)
{
    if (isOtherDash(character))
        return u'−';
    if (isBetween(character, u'!', u'~'))
        return static_cast<char16_t>(character + FullWidthOffset);
    if (isBetween(character, FirstHalfKana, HalfSemivoiced))
        return HalfKana[character - FirstHalfKana];
    return character;
}

} // namespace

std::vector<std::u16string> wordsOf(std::u16string_view text)
{
    std::vector<std::u16string> words;
    while (!text.empty()) {
        const auto blank = std::ranges::find_if(text, isBlank);
        if (blank != text.begin())
            words.emplace_back(text.begin(), blank);
        text.remove_prefix(static_cast<size_t>(blank - text.begin()) + (blank == text.end() ? 0 : 1));
    }
    return words;
}

std::string codeOf(std::u16string_view word)
{
    if (word.starts_with(PostalMark))
        word.remove_prefix(1);
    std::string code;
    for (size_t at = 0; at < word.size(); ++at) {
        if (at == 3 && isDash(word[at]))
            continue;
        const char digit = digitOf(word[at]);
        if (digit == '\0')
            return {};
        code += digit;
    }
    return code.size() == CodeLength ? code : std::string();
}

bool isNumber(std::u16string_view text)
{
    const auto isPart = [](char16_t character) { return isDash(character) || digitOf(character) != '\0'; };
    return !text.empty() && std::ranges::all_of(text, isPart);
}

std::u16string fullWidth(std::u16string_view address)
{
    std::u16string full;
    for (const char16_t character : address) {
        if (character == PostalMark)
            continue;
        const char16_t voiced = full.empty() ? char16_t{0} : withMark(full.back(), character);
        if (voiced != 0)
            full.back() = voiced;
        else
            full += fullWidthOf(character);
    }
    return full;
}

} // namespace ZipDict
