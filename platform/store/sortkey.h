#ifndef PDTM_SORTKEY_H
#define PDTM_SORTKEY_H

#include "expression.h"

#include <string>

namespace pdtm {

/** Makes sort keys for one sort expression, box and language. */
class SortKeyMaker
{
public:
    SortKeyMaker(const SortExpression &expression, const Schema &schema, std::string language);

    /** Key of a card: keys compare by their bytes (memcmp, then length) as the cards do. Texts in text order are
     * collated for the language; other items compare by value. An empty item sorts first, last when descending.
     * A key on an item that the box lacks adds nothing. Equal keys are told apart by the caller, by card id. */
    [[nodiscard]] std::string make(RecordView record) const;
    /** The same, appended to @p out. */
    void append(RecordView record, std::string &out) const;

private:
    struct BoundKey
    {
        StorageId storage = 0;
        uint8_t type = 0;
        bool textOrder = false;
        bool descending = false;
    };
    std::vector<BoundKey> m_keys;
    std::string m_language;
};

/** Version of the collation rules for a language; keys made under another one don't compare. Loads ICU. */
[[nodiscard]] uint32_t collatorVersion(const std::string &language);

} // namespace pdtm

#endif
