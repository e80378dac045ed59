#include "place.h"

#include "jistext.h"
#include "ydictables_p.h"

namespace ZipDict {

std::u16string prefectureName(uint8_t number)
{
    return number <= YDIC_PREFECTURES ? fromJis(Tdfk_tbl[number]) : std::u16string();
}

uint8_t prefectureNumber(std::u16string_view name)
{
    for (uint8_t number = 1; number <= YDIC_PREFECTURES; ++number) {
        if (prefectureName(number) == name)
            return number;
    }
    return 0;
}

std::u16string shownAddress(const Place &place)
{
    const std::u16string all = prefectureName(place.prefecture) + u"／" + place.municipality + place.town;
    return all.substr(0, ShownCharacters);
}

} // namespace ZipDict
