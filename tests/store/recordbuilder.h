#ifndef TESTS_RECORDBUILDER_H
#define TESTS_RECORDBUILDER_H

#include "record.h"

#include <QByteArray>

/** Bytes of a literal, 0 bytes inside it included. */
template <size_t N> QByteArray raw(const char (&literal)[N])
{
    return QByteArray(literal, N - 1);
}

inline pdtm::Bytes bytesOf(const QByteArray &array)
{
    return {reinterpret_cast<const uint8_t *>(array.constData()), static_cast<size_t>(array.size())};
}

template <typename Value> QByteArray native(Value value)
{
    return QByteArray(reinterpret_cast<const char *>(&value), sizeof value);
}

inline QByteArray timeValue(int year, int month, int day, int hour = 0, int minute = 0, int second = 0)
{
    QByteArray value(sizeof(PTimeValue), 0);
    if (ppsettime(value.data(), year, month, day, hour, minute, second) != PdtmOk)
        qFatal("no such time");
    return value;
}

inline pdtm::ItemCode codeOf(const char *code)
{
    return {code[0], code[1], code[2], code[3]};
}

/** A box description with one item of each type; the last one is declared with a lower-case first letter. */
inline pdtm::Schema everyType()
{
    pdtm::Schema schema;
    const std::pair<const char *, uint8_t> items[] = {
        {"SJS1", ItemTextSjis}, {"TIME", ItemTime},      {"BITS", ItemBit},      {"USH1", ItemUshort},
        {"BINA", ItemBinary},   {"USH2", ItemUshortAlt}, {"UCHR", ItemUchar},    {"CTGR", ItemCategory},
        {"COLR", ItemColor},    {"SJS2", ItemTextSjis2}, {"UTF8", ItemTextUtf8}, {"ULNG", ItemUlong},
        {"nAME", ItemTextUtf8}};
    for (const auto &[code, type] : items)
        schema.add({codeOf(code), type, 0, code, 0});
    return schema;
}

/** A card built item by item. */
class TestCard
{
public:
    explicit TestCard(const pdtm::Schema &schema) : m_schema(schema) {}
    TestCard &set(const char *code, const QByteArray &value)
    {
        [[maybe_unused]] const bool fits =
            pdtm::setItem(m_packed, m_schema.find(code)->storage, bytesOf(value));
        Q_ASSERT(fits);
        return *this;
    }
    [[nodiscard]] pdtm::RecordView view() const
    {
        return pdtm::RecordView({reinterpret_cast<const uint8_t *>(m_packed.data()), m_packed.size()});
    }

private:
    const pdtm::Schema &m_schema;
    std::string m_packed;
};

#endif
