#include "kypdatamanagersortkey.h"
#include <cstring>
#include <QList>
#include <QSharedData>

namespace KyPDtm {

namespace {

struct SortKey
{
    char code[4] = {};
    bool ascending = true;
    bool textOrder = false;
};

constexpr unsigned long KeyLength = 6;
constexpr char OperatorMark = '\xFE';

char sortOperator(const SortKey &key)
{
    constexpr char text[] = {'\x81', '\x80'};
    constexpr char plain[] = {'\x83', '\x82'};
    return key.textOrder ? text[key.ascending] : plain[key.ascending];
}

} // namespace

class KyPDataManagerSortKeyPrivate : public QSharedData
{
public:
    QList<SortKey> keys;
};

KyPDataManagerSortKey::KyPDataManagerSortKey() : d(new KyPDataManagerSortKeyPrivate) {}
KyPDataManagerSortKey::KyPDataManagerSortKey(const KyPDataManagerSortKey &other) = default;
KyPDataManagerSortKey &KyPDataManagerSortKey::operator=(const KyPDataManagerSortKey &other) = default;
KyPDataManagerSortKey::~KyPDataManagerSortKey() = default;

void KyPDataManagerSortKey::addSortKey(const char *code, bool textOrder, bool ascending)
{
    SortKey key;
    std::memcpy(key.code, code, sizeof key.code);
    key.ascending = ascending;
    key.textOrder = textOrder;
    d->keys.append(key);
}

unsigned long KyPDataManagerSortKey::createSortExp(char *dst, unsigned long room) const
{
    const auto length = static_cast<unsigned long>(d->keys.size()) * KeyLength + 1;
    if (room < length)
        return 0;
    for (const SortKey &key : d->keys) {
        std::memcpy(dst, key.code, sizeof key.code);
        dst[4] = OperatorMark;
        dst[5] = sortOperator(key);
        dst += KeyLength;
    }
    *dst = 0;
    return length;
}

} // namespace KyPDtm
