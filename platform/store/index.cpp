#include "index.h"

#include "environment.h"

#include <algorithm>

namespace pdtm {

namespace {

/** A malformed expression, which only a forged file can bring here, orders by card id. */
SortExpression parsedOrder(const std::string &expression)
{
    return SortExpression::parse(bytesOf(expression)).value_or(SortExpression());
}

/** The terms; nothing when one is malformed. */
std::optional<std::vector<SearchExpression>> parsedTerms(const std::vector<std::string> &condition)
{
    std::vector<SearchExpression> terms;
    for (const std::string &term : condition) {
        std::optional<SearchExpression> parsed = SearchExpression::parse(bytesOf(term));
        if (!parsed) {
            return std::nullopt;
        }
        terms.push_back(std::move(*parsed));
    }
    return terms;
}

bool matchesAll(const std::vector<SearchExpression> &terms, const Schema &schema, RecordView record)
{
    return std::all_of(terms.begin(), terms.end(),
                       [&](const SearchExpression &term) { return term.matches(schema, record); });
}

OrderImage imageOf(const IndexOrder &order, uint64_t counter)
{
    OrderImage image;
    image.counter = counter;
    image.cards = order.cards();
    image.attributes.reserve(order.count());
    image.keyEnds.reserve(order.count());
    for (const CardId card : image.cards) {
        image.attributes += static_cast<char>(order.attributeOf(card));
        image.keys += order.keyOf(card);
        image.keyEnds.push_back(static_cast<uint32_t>(image.keys.size()));
    }
    return image;
}

} // namespace

bool hasTextOrder(const std::string &sortExpression)
{
    const SortExpression expression = parsedOrder(sortExpression);
    return std::any_of(expression.keys().begin(), expression.keys().end(),
                       [](const SortKey &key) { return key.textOrder; });
}

void setOrder(IndexDefinition &definition, const std::string &sortExpression)
{
    definition.order = sortExpression;
    definition.language = language();
    definition.collator = hasTextOrder(sortExpression) ? collatorVersion(language()) : 0;
}

std::optional<IndexOrder> buildOrder(BoxFile &box, const IndexDefinition &definition,
                                     const Acceptance &accepts)
{
    const SortKeyMaker maker(parsedOrder(definition.order), box.schema(), definition.language);
    OrderBuilder builder(maker);
    const bool complete = box.forEachCard([&](CardId card, RecordView record) {
        if (accepts(card, record)) {
            builder.add(card, record);
        }
        return true;
    });
    return complete ? std::optional(builder.finish()) : std::nullopt;
}

namespace {

/** The sort expression was written, but the process ended before it put the cards in that order. */
bool awaitsSort(const IndexDefinition &definition)
{
    return definition.filled && definition.sortExpression && *definition.sortExpression != definition.order;
}

} // namespace

bool Index::isOfOtherLanguage() const
{
    return m_definition.collator != 0 && m_definition.language != language();
}

PdtmStatus Index::load()
{
    IndexFileReader reader;
    const PdtmStatus status = reader.open(m_path);
    if (status != PdtmOk) {
        return status;
    }
    m_definition = reader.definition();
    m_stamp = reader.stamp();
    m_orderChanged = false;
    m_counterChanged = false;
    unbind();
    StoredOrder stored;
    const bool usable = reader.readOrder(stored) && m_order.assign(stored.cards, stored.attributes);
    if (!usable) {
        m_order = IndexOrder();
    }
    m_counter = usable && !isOfOtherLanguage() && !awaitsSort(m_definition) ? stored.counter : 0;
    if (parsedOrder(m_definition.order).keys().empty()) {
        m_order.setEmptyKeys();
    }
    return PdtmOk;
}

bool Index::loadKeys()
{
    IndexFileReader reader;
    StoredOrder stored;
    StoredKeys keys;
    return reader.open(m_path) == PdtmOk && reader.stamp() == m_stamp && reader.readKeys(stored, keys) &&
           (m_definition.collator == 0 || m_definition.collator == collatorVersion(m_definition.language)) &&
           m_order.setKeys(stored.cards, keys.ends, std::move(keys.bytes));
}

bool Index::ensureKeys(BoxFile &box)
{
    return m_order.hasKeys() || loadKeys() || rebuild(box);
}

bool Index::rebuild(BoxFile &box)
{
    const uint64_t counter = box.changeCounter();
    IndexDefinition definition = m_definition;
    const std::string &stored = definition.sortExpression ? *definition.sortExpression : definition.order;
    const bool wellFormed = SortExpression::parse(bytesOf(stored)).has_value();
    setOrder(definition, std::string(wellFormed ? stored : definition.order));
    const auto terms = parsedTerms(definition.condition);
    std::optional<IndexOrder> order = buildOrder(box, definition, [&](CardId, RecordView record) {
        return definition.filled && terms && matchesAll(*terms, box.schema(), record);
    });
    if (!order) {
        return false;
    }
    m_definition = std::move(definition);
    m_order = std::move(*order);
    m_counter = counter;
    m_orderChanged = true;
    unbind();
    return true;
}

PdtmStatus Index::write(const IndexDefinition &definition, const IndexOrder &order, uint64_t counter)
{
    const OrderImage image = order.hasKeys() ? imageOf(order, counter) : OrderImage();
    const bool isEmptyFile = m_stamp.size >= 0 && !m_definition.filled;
    const PdtmStatus status = isEmptyFile ? fillIndexFile(m_path, m_definition, definition, image, m_stamp)
                                          : writeIndexFile(m_path, definition, image, m_stamp);
    if (status == PdtmOk) {
        m_orderChanged = !order.hasKeys();
        m_counterChanged = false;
    }
    return status;
}

PdtmStatus Index::save()
{
    if (!m_orderChanged) {
        const PdtmStatus status = writeIndexCounter(m_path, m_counter, m_stamp);
        m_counterChanged = status != PdtmOk;
        return status;
    }
    if (!m_order.hasKeys()) {
        static_cast<void>(loadKeys());
    }
    return write(m_definition, m_order, m_counter);
}

PdtmStatus Index::replace(IndexDefinition definition, IndexOrder order, uint64_t counter)
{
    const PdtmStatus status = write(definition, order, counter);
    if (status == PdtmOk) {
        m_definition = std::move(definition);
        m_order = std::move(order);
        m_counter = counter;
        unbind();
    }
    return status;
}

PdtmStatus Index::replaceDefinition(IndexDefinition definition)
{
    if (!m_order.hasKeys()) {
        static_cast<void>(loadKeys());
    }
    const PdtmStatus status = write(definition, m_order, m_counter);
    if (status == PdtmOk) {
        m_definition = std::move(definition);
        unbind();
    }
    return status;
}

void Index::unbind()
{
    m_terms.reset();
    m_goesByAttribute.reset();
    m_keyMaker.reset();
}

const std::optional<std::vector<SearchExpression>> &Index::terms()
{
    if (!m_terms) {
        m_terms = parsedTerms(m_definition.condition);
    }
    return m_terms;
}

bool Index::accepts(const Schema &schema, RecordView record)
{
    return m_definition.filled && terms() && matchesAll(*m_terms, schema, record);
}

bool Index::goesByAttribute()
{
    if (!m_goesByAttribute) {
        constexpr char Attribute[] = "ATTR";
        const std::vector<SortKey> keys = parsedOrder(m_definition.order).keys();
        m_goesByAttribute =
            std::ranges::any_of(
                keys, [&](const SortKey &key) { return sameCodeFolded(key.code.data(), Attribute); }) ||
            (terms() && std::ranges::any_of(
                            *m_terms, [&](const SearchExpression &term) { return term.names(Attribute); }));
    }
    return *m_goesByAttribute;
}

const SortKeyMaker &Index::keyMaker(const Schema &schema)
{
    if (!m_keyMaker) {
        m_keyMaker.emplace(parsedOrder(m_definition.order), schema, m_definition.language);
    }
    return *m_keyMaker;
}

void Index::place(BoxFile &box, CardId card, RecordView record)
{
    if (!accepts(box.schema(), record)) {
        remove({&card, 1});
        return;
    }
    if (!m_order.hasKeys() && !loadKeys()) {
        if (!rebuild(box)) { // which places this card as well
            invalidate();
        }
        return;
    }
    m_key.clear();
    keyMaker(box.schema()).append(record, m_key);
    if (m_order.contains(card) && m_order.keyOf(card) == m_key) {
        setAttribute(card, record.attribute());
        return;
    }
    m_order.remove(card);
    m_order.insert(card, record.attribute(), m_key);
    m_orderChanged = true;
}

uint16_t Index::append(BoxFile &box, CardId card, RecordView record)
{
    // Reading the keys may read the box, which ends the life of the record.
    const std::string packed(record.packed().begin(), record.packed().end());
    if (!ensureKeys(box)) {
        return 0;
    }
    if (m_order.contains(card)) {
        return m_order.numberOf(card);
    }
    const RecordView kept(bytesOf(packed));
    m_key.clear();
    keyMaker(box.schema()).append(kept, m_key);
    m_orderChanged = true;
    return m_order.insert(card, kept.attribute(), m_key);
}

void Index::remove(std::span<const CardId> cards)
{
    const uint16_t before = m_order.count();
    m_order.removeAll(cards);
    m_orderChanged |= m_order.count() != before;
}

void Index::setAttribute(CardId card, uint8_t attribute)
{
    if (m_order.contains(card) && m_order.attributeOf(card) != attribute) {
        m_order.setAttribute(card, attribute);
        m_orderChanged = true;
    }
}

void Index::takeCounter(uint64_t counter)
{
    m_counter = counter;
    m_counterChanged = true;
}

void Index::invalidate()
{
    m_counter = 0;
}

} // namespace pdtm
