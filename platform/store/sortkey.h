#ifndef PDTM_SORTKEY_H
#define PDTM_SORTKEY_H

#include "expression.h"

#include <string>

namespace pdtm {

class Collation;

/** Makes sort keys for one sort expression, box and language. */
class SortKeyMaker
{
public:
    SortKeyMaker(const SortExpression &expression, const Schema &schema, std::string language);

    /** Key of a card: keys compare by their bytes (memcmp, then length) as the cards do. Texts in text order
     * are collated for the language; other items compare by value. An empty item sorts first, last when
     * descending. A key on an item that the box lacks adds nothing. Equal keys are told apart by the caller,
     * by card id. */
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
    void appendPart(const BoundKey &key, Bytes value, std::string &out) const;
    void appendText(const BoundKey &key, Bytes text, std::string &out) const;

    std::vector<BoundKey> m_keys;
    std::string m_language;
    mutable const Collation *m_collation = nullptr; ///< asked for when a key is first made
};

/** Version of the collation rules for a language; keys made under another one don't compare. Constant while
 * ICU can be loaded, and loads nothing. */
[[nodiscard]] uint32_t collatorVersion(const std::string &language);

} // namespace pdtm

#endif
