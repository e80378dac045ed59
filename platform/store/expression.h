#ifndef PDTM_EXPRESSION_H
#define PDTM_EXPRESSION_H

#include "record.h"

#include <optional>
#include <string>
#include <vector>

namespace pdtm {

/** One key of a sort expression. */
struct SortKey
{
    ItemCode code{};
    bool textOrder = false;
    bool descending = false;
};

/**
 * A sort expression: six-byte keys (code, 0xFE, operator 0x80 to 0x83), then one 0 byte, which may be missing at
 * the end of the bytes. An empty expression has no key.
 */
class SortExpression
{
public:
    /** Nothing for a malformed expression; never reads beyond @p bytes. */
    static std::optional<SortExpression> parse(Bytes bytes);
    [[nodiscard]] const std::vector<SortKey> &keys() const { return m_keys; }

private:
    std::vector<SortKey> m_keys;
};

/**
 * A search expression: one or more terms, then one 0 byte. Parsed once, bound to a schema when it is used.
 * A term on an item that the box lacks, or with an operator byte that the store doesn't know, matches nothing.
 */
class SearchExpression
{
public:
    /** Nothing for a malformed expression; an empty one (no bytes, or a single 0) matches every card. */
    static std::optional<SearchExpression> parse(Bytes bytes);
    /** Length of the expression that begins at @p expression, terminator included, for the operations that get
     * no length. At most @p limit bytes are looked at; 0 for a malformed one. */
    static size_t measure(const uint8_t *expression, size_t limit);

    [[nodiscard]] bool isEmpty() const;
    [[nodiscard]] bool matches(const Schema &schema, RecordView record) const;

private:
    struct Condition
    {
        uint8_t op = 0;
        bool wholeText = false; ///< 0xFE 0x95 stood before the operator
        uint8_t type = 0;
        std::string value;
    };
    struct Term
    {
        ItemCode code{};
        std::vector<Condition> conditions; ///< joined by 0xFE 0x84: all on the same item
    };
    std::vector<Term> m_terms; ///< joined by 0xFE 0x86: all must hold
};

} // namespace pdtm

#endif
