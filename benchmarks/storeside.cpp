#include "storeside.h"

#include "report.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>

namespace {

using namespace std::string_literals;

constexpr uint32_t Application = 0x42454E43; // BENC
constexpr uint8_t HiddenMask = 0x40;

void requireOk(PdtmStatus status, const char *what)
{
    if (status == PdtmOk)
        return;
    std::fprintf(stderr, "store: %s gives %d\n", what, status);
    std::exit(2);
}

ITEMDATA itemData(uint8_t type, uint8_t kind, const char *code)
{
    ITEMDATA item{};
    item.type = type;
    item.kind = kind;
    std::memcpy(item.code, code, sizeof item.code);
    std::memcpy(item.label, code, sizeof item.code);
    return item;
}

CardItemKey keyOf(uint16_t card, const char *code)
{
    CardItemKey key{card, {}};
    std::memcpy(key.code, code, sizeof key.code);
    return key;
}

uint16_t countOf(const std::string &path)
{
    uint16_t place = 0xFFFF, number = 0;
    if (_PrevIndexNo(path.c_str(), HiddenMask, 0, 0, &place) == PdtmOk)
        requireOk(_IndexNoToNumber(path.c_str(), HiddenMask, 0, 0, 0, place, &number), "_IndexNoToNumber");
    return number;
}

/** Times @p count calls of an operation with numbers that jump about; nanoseconds a call. */
template <typename Operation> double timeEach(uint16_t count, Operation operation)
{
    constexpr uint32_t Calls = 200000;
    uint32_t number = 0;
    const Stopwatch watch;
    for (uint32_t i = 0; i < Calls; ++i) {
        number = (number + 12347) % count;
        requireOk(operation(static_cast<uint16_t>(number + 1)), "navigation");
    }
    return watch.microseconds() * 1000 / Calls;
}

} // namespace

std::string StoreSide::indexPath(int number) const
{
    return "F0:" + m_name + std::to_string(number) + ".IDX";
}

int64_t StoreSide::fileSize() const
{
    char path[4096];
    requireOk(FileGetRealPath(path, boxPath().c_str()), "FileGetRealPath");
    struct stat status;
    return stat(path, &status) == 0 ? static_cast<int64_t>(status.st_size) : -1;
}

void StoreSide::create()
{
    requireOk(_BoxCreate(boxPath().c_str(), Application), "_BoxCreate");
    std::vector<ITEMDATA> items;
    items.reserve(std::size(TextItems) + 1);
    for (const char *code : TextItems)
        items.push_back(itemData(ItemTextUtf8, KindText, code));
    items.push_back(itemData(ItemCategory, KindCategory, "CTGR"));
    uint32_t added = 0;
    requireOk(_BoxItemAppend(boxPath().c_str(), items.data(), static_cast<int>(items.size()), &added),
              "_BoxItemAppend");
}

void StoreSide::open()
{
    m_handle = _BoxOpenRwMode(boxPath().c_str(), 0);
    requireOk(m_handle ? PdtmOk : PdtmMissing, "_BoxOpenRwMode");
}

void StoreSide::close()
{
    if (m_handle)
        requireOk(_BoxClose(m_handle), "_BoxClose");
    m_handle = 0;
}

void StoreSide::writeItem(uint16_t card, const char *code, const void *bytes, size_t size)
{
    const CardItemKey key = keyOf(card, code);
    requireOk(_CardWrite(m_handle, &key, bytes, static_cast<uint32_t>(size)), "_CardWrite");
}

void StoreSide::writeContact(uint16_t card, const Contact &contact)
{
    for (size_t i = 0; i < TextItems.size(); ++i)
        writeItem(card, TextItems[i], contact.texts[i].data(), contact.texts[i].size());
    writeItem(card, "CTGR", &contact.category, 1);
    writeItem(card, "MDTM", contact.modified.data(), contact.modified.size());
}

void StoreSide::add(const Contact &contact)
{
    uint16_t work = PdtmWorkCard, card = 0;
    requireOk(_CardDelete(m_handle, work), "_CardDelete");
    requireOk(_CardCreate(m_handle, &work), "_CardCreate");
    writeContact(work, contact);
    requireOk(_CardCopy(m_handle, work, &card), "_CardCopy");
}

void StoreSide::changePhone(uint16_t id, const std::string &phone, const Contact &modified)
{
    uint16_t work = PdtmWorkCard;
    requireOk(_CardDelete(m_handle, work), "_CardDelete");
    requireOk(_CardCopy(m_handle, id, &work), "_CardCopy");
    writeItem(work, "TEL1", phone.data(), phone.size());
    writeItem(work, "MDTM", modified.modified.data(), modified.modified.size());
    requireOk(_CardCopy(m_handle, work, &id), "_CardCopy");
}

void StoreSide::load(const std::vector<Contact> &contacts)
{
    requireOk(DtmBeginAction(m_handle), "DtmBeginAction");
    for (const Contact &contact : contacts)
        add(contact);
    requireOk(DtmEndAction(m_handle), "DtmEndAction");
}

void StoreSide::makeIndex(int number, int kind, const std::string &sortExpression,
                          const std::string &searchExpression)
{
    const std::string path = indexPath(number);
    const auto write = [&](int id, const std::string &bytes) {
        requireOk(
            _IndexInfoWriteWithCheck(path.c_str(), id, bytes.data(), static_cast<uint16_t>(bytes.size())),
            "_IndexInfoWriteWithCheck");
    };
    requireOk(_IndexCreate(path.c_str(), kind), "_IndexCreate");
    write(InfoBoxName, m_name + ".BOX" + '\0');
    write(InfoSortExpression, sortExpression);
    if (searchExpression.empty()) {
        requireOk(_IndexUnGroup(path.c_str(), m_handle), "_IndexUnGroup");
        return;
    }
    write(InfoSearchExpression, searchExpression);
    write(InfoSubset, "\1");
    requireOk(_IndexGroup(indexPath(1).c_str(), path.c_str(), m_handle), "_IndexGroup");
}

void StoreSide::createIndexes()
{
    makeIndex(1, 17, "NAPR\xFE\x80\0"s, {});
    makeIndex(2, 17, "CMPN\xFE\x80\0"s, {});
    makeIndex(3, 17, "MDTM\xFE\x82\0"s, {});
    makeIndex(4, 18, "NAPR\xFE\x80\0"s, "CTGR\xFE\x92\x0C\x03\0"s);
}

void StoreSide::indexByReading(int number)
{
    makeIndex(number, 17, "NAPR\xFE\x80\0"s, {});
}

void StoreSide::deleteTemporaryIndexes()
{
    char path[256];
    uint32_t permanent = 0;
    while (_GetIndexName(boxPath().c_str(), 2, path, sizeof path, &permanent) == PdtmOk)
        requireOk(_IndexDelete(path), "_IndexDelete");
}

size_t StoreSide::readItem(uint16_t id, int item)
{
    char buffer[256];
    uint32_t size = sizeof buffer;
    const CardItemKey key = keyOf(id, TextItems[static_cast<size_t>(item)]);
    requireOk(_CardRead(m_handle, &key, buffer, &size), "_CardRead");
    return size;
}

size_t StoreSide::walk(int number)
{
    const std::string path = indexPath(number);
    size_t bytes = 0;
    uint16_t place = 0, card = 0;
    while (_NextIndexNo(path.c_str(), HiddenMask, 0, 0, &place) == PdtmOk) {
        requireOk(_IndexNoToCardID(path.c_str(), place, &card), "_IndexNoToCardID");
        for (const int item : {NameItem, PhoneItem, CompanyItem})
            bytes += readItem(card, item);
    }
    return bytes;
}

std::vector<int> StoreSide::cardsOf(int number) const
{
    const std::string path = indexPath(number);
    std::vector<int> cards;
    uint16_t place = 0, card = 0;
    while (_NextIndexNo(path.c_str(), HiddenMask, 0, 0, &place) == PdtmOk) {
        requireOk(_IndexNoToCardID(path.c_str(), place, &card), "_IndexNoToCardID");
        cards.push_back(card);
    }
    return cards;
}

double StoreSide::nextTime(int number) const
{
    const std::string path = indexPath(number);
    uint16_t place = 0;
    int steps = 0;
    const Stopwatch watch;
    while (_NextIndexNo(path.c_str(), HiddenMask, 0, 0, &place) == PdtmOk)
        ++steps;
    return watch.microseconds() * 1000 / steps;
}

double StoreSide::previousTime(int number) const
{
    const std::string path = indexPath(number);
    uint16_t place = 0xFFFF;
    int steps = 0;
    const Stopwatch watch;
    while (_PrevIndexNo(path.c_str(), HiddenMask, 0, 0, &place) == PdtmOk)
        ++steps;
    return watch.microseconds() * 1000 / steps;
}

double StoreSide::numberOfCardTime(int number) const
{
    const std::string path = indexPath(number);
    uint16_t place = 0;
    return timeEach(countOf(path),
                    [&](uint16_t card) { return _CardIDToIndexNo(path.c_str(), card, &place); });
}

double StoreSide::ordinalTime(int number) const
{
    const std::string path = indexPath(number);
    uint16_t ordinal = 0;
    return timeEach(countOf(path), [&](uint16_t place) {
        return _IndexNoToNumber(path.c_str(), HiddenMask, 0, 0, 0, place, &ordinal);
    });
}

double StoreSide::ordinalToCardTime(int number) const
{
    const std::string path = indexPath(number);
    return timeEach(countOf(path), [&](uint16_t ordinal) {
        uint16_t place = 0;
        return _NumberToIndexNo(path.c_str(), 0, HiddenMask, 0, 0, &place, ordinal);
    });
}
