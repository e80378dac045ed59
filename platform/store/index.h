#ifndef PDTM_INDEX_H
#define PDTM_INDEX_H

#include "boxfile.h"
#include "indexfile.h"
#include "indexorder.h"

#include <functional>
#include <optional>

namespace pdtm {

/** The sort expression is well formed and has a key in text order. */
[[nodiscard]] bool hasTextOrder(const std::string &sortExpression);

/** Sets the expression that the cards are going to stand by, with the language and collation rules of today.
 */
void setOrder(IndexDefinition &definition, const std::string &sortExpression);

/** Tells whether a card belongs to an order that is being built. */
using Acceptance = std::function<bool(CardId, RecordView)>;

/** Orders the cards of a box that are accepted, by the expression of @p definition; nothing when the box
 * can't be read to its end. */
[[nodiscard]] std::optional<IndexOrder> buildOrder(BoxFile &box, const IndexDefinition &definition,
                                                   const Acceptance &accepts);

/** An index in memory: definition, order, and what ties them to the file and to a state of the box. */
class Index
{
public:
    /** @param path canonical path of the file */
    explicit Index(std::string path) : m_path(std::move(path)) {}

    [[nodiscard]] const std::string &path() const { return m_path; }
    [[nodiscard]] const IndexDefinition &definition() const { return m_definition; }
    [[nodiscard]] const IndexOrder &order() const { return m_order; }
    [[nodiscard]] uint64_t counter() const { return m_counter; }
    [[nodiscard]] const FileStamp &stamp() const { return m_stamp; }
    /** Memory holds something that the file doesn't. */
    [[nodiscard]] bool isDirty() const { return m_orderChanged || m_counterChanged; }
    /** Memory holds other cards, attribute bytes or keys than the file, or another definition. */
    [[nodiscard]] bool isOrderChanged() const { return m_orderChanged; }
    /** The cards are those of the box at this change counter. An index that was never filled has none to keep
     * up. */
    [[nodiscard]] bool isCurrent(uint64_t counter) const
    {
        return !m_definition.filled || m_counter == counter;
    }

    /** The keys are in text order, and of another language than today's. */
    [[nodiscard]] bool isOfOtherLanguage() const;

    /** Reads the file. A damaged order is not an error: it is empty, and current for no counter. */
    PdtmStatus load();
    /** Writes what is in memory: the file, or its counter alone. */
    PdtmStatus save();
    /** Takes a new content after it has been written to the file; on failure nothing changes. */
    PdtmStatus replace(IndexDefinition definition, IndexOrder order, uint64_t counter);
    /** The same with another definition alone. */
    PdtmStatus replaceDefinition(IndexDefinition definition);
    /** Builds the order anew from the box, in memory. False when the box can't be read. */
    bool rebuild(BoxFile &box);
    /** Has the sort keys read from the file, or makes the order anew. */
    bool ensureKeys(BoxFile &box);
    /** Reads the sort keys from the file; false when they can't be had, or are of other collation rules. */
    bool loadKeys();

    /** @name Changes in memory
     * @{ */
    /** Puts a card where it belongs after it was written, which may be nowhere. */
    void place(BoxFile &box, CardId card, RecordView record);
    /** Puts a card in that isn't there. @return its index number, 0 when the box can't be read */
    uint16_t append(BoxFile &box, CardId card, RecordView record);
    void remove(std::span<const CardId> cards);
    void setAttribute(CardId card, uint8_t attribute);
    /** Order or condition name ATTR, so that a change of it may move a card. */
    [[nodiscard]] bool goesByAttribute();
    /** The box has moved on to this counter, and the order with it. */
    void takeCounter(uint64_t counter);
    /** The order belongs to no state of the box any more. */
    void invalidate();
    /** Forgets what was derived from the schema of the box. */
    void unbind();
    /** @} */

private:
    [[nodiscard]] const std::optional<std::vector<SearchExpression>> &terms();
    [[nodiscard]] bool accepts(const Schema &schema, RecordView record);
    [[nodiscard]] const SortKeyMaker &keyMaker(const Schema &schema);
    [[nodiscard]] PdtmStatus write(const IndexDefinition &definition, const IndexOrder &order,
                                   uint64_t counter);

    std::string m_path;
    IndexDefinition m_definition;
    IndexOrder m_order;
    uint64_t m_counter = 0;
    FileStamp m_stamp;
    bool m_orderChanged = false;
    bool m_counterChanged = false;
    // Made when they are asked for; unbind() drops them.
    std::optional<std::vector<SearchExpression>> m_terms;
    std::optional<bool> m_goesByAttribute;
    std::optional<SortKeyMaker> m_keyMaker;
    std::string m_key; // of the card that is being placed
};

} // namespace pdtm

#endif
