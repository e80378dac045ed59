#ifndef BENCHMARKS_STORESIDE_H
#define BENCHMARKS_STORESIDE_H

#include "contacts.h"

#include "pdtm.h"

/** The same contacts in a box, through the C interface. The box lies on internal storage. */
class StoreSide
{
public:
    explicit StoreSide(std::string name) : m_name(std::move(name)) {}
    ~StoreSide() { close(); }
    StoreSide(const StoreSide &) = delete;
    StoreSide &operator=(const StoreSide &) = delete;

    [[nodiscard]] std::string boxPath() const { return "F0:" + m_name + ".BOX"; }
    [[nodiscard]] std::string indexPath(int number) const;
    [[nodiscard]] int64_t fileSize() const;

    void create();
    void open();
    void close();
    void load(const std::vector<Contact> &contacts);
    /** By reading, by company (both in text order), by the time of the last change, and of one category. */
    void createIndexes();
    /** A new index in the order of the readings. */
    void indexByReading(int number);
    /** All indexes but the permanent ones, of which there has to be one alone. */
    void deleteTemporaryIndexes();

    void add(const Contact &contact);
    void changePhone(uint16_t id, const std::string &phone, const Contact &modified);
    size_t readItem(uint16_t id, int item);
    /** Walks an index; bytes of three items of each card. */
    size_t walk(int number);
    [[nodiscard]] std::vector<int> cardsOf(int number) const;

    /** @name Navigation: nanoseconds a step, over the whole index @{ */
    [[nodiscard]] double nextTime(int number) const;
    [[nodiscard]] double previousTime(int number) const;
    [[nodiscard]] double numberOfCardTime(int number) const;
    [[nodiscard]] double ordinalTime(int number) const;
    [[nodiscard]] double ordinalToCardTime(int number) const;
    /** @} */

private:
    void writeItem(uint16_t card, const char *code, const void *bytes, size_t size);
    void writeContact(uint16_t card, const Contact &contact);
    void makeIndex(int number, int kind, const std::string &sortExpression,
                   const std::string &searchExpression);

    std::string m_name;
    uint32_t m_handle = 0;
};

#endif
