#include "sortkey.h"

#include "collation.h"
#include "textencoding.h"

#include <algorithm>

/*
 * A sort key is the parts of its expression, one behind the other. A part tells its own end, so that a part
 * never runs into the next one, and all bytes of a descending part are complemented.
 *
 *   text, text order   the collation key, which has no 0 byte, and a 0 byte
 *   text, plain        its bytes with 0 and 1 written as 1 1 and 1 2, and a 0 byte
 *   anything, empty    0
 *   number             1, four bytes, big-endian
 *   time               1, its five bytes
 *   anything else      2, as a plain text
 */
namespace pdtm {

namespace {

constexpr char EmptyPart = 0;
constexpr char ValuePart = 1;
constexpr char BytesPart = 2;

std::string_view asText(Bytes bytes)
{
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

void appendBigEndian(uint32_t number, std::string &out)
{
    out += ValuePart;
    for (int shift = 24; shift >= 0; shift -= 8)
        out += static_cast<char>(number >> shift);
}

template <typename Unsigned> uint32_t nativeNumber(Bytes bytes)
{
    Unsigned number = 0;
    std::memcpy(&number, bytes.data(), sizeof number);
    return number;
}

void appendBytes(Bytes bytes, std::string &out)
{
    out += BytesPart;
    appendDelimited(asText(bytes), out);
}

void appendNumber(Bytes bytes, std::string &out)
{
    switch (bytes.size()) {
    case 1:
        return appendBigEndian(bytes[0], out);
    case 2:
        return appendBigEndian(nativeNumber<uint16_t>(bytes), out);
    case 4:
        return appendBigEndian(nativeNumber<uint32_t>(bytes), out);
    default:
        return appendBytes(bytes, out);
    }
}

void appendTime(Bytes bytes, std::string &out)
{
    if (bytes.size() != sizeof(PTimeValue))
        return appendBytes(bytes, out);
    out += ValuePart;
    out += asText(bytes);
}

} // namespace

SortKeyMaker::SortKeyMaker(const SortExpression &expression, const Schema &schema, std::string language)
    : m_language(std::move(language))
{
    for (const SortKey &key : expression.keys())
        if (const ItemDescription *item = schema.find(key.code.data()))
            m_keys.push_back({item->storage, item->type, key.textOrder, key.descending});
}

std::string SortKeyMaker::make(RecordView record) const
{
    std::string key;
    append(record, key);
    return key;
}

void SortKeyMaker::append(RecordView record, std::string &out) const
{
    for (const BoundKey &key : m_keys) {
        const size_t before = out.size();
        appendPart(key, record.item(key.storage), out);
        if (key.descending)
            std::for_each(out.begin() + static_cast<std::ptrdiff_t>(before), out.end(),
                          [](char &byte) { byte = static_cast<char>(~byte); });
    }
}

void SortKeyMaker::appendPart(const BoundKey &key, Bytes value, std::string &out) const
{
    if (value.empty())
        out += EmptyPart;
    else if (isTextType(key.type))
        appendText(key, value, out);
    else if (key.type == ItemTime)
        appendTime(value, out);
    else if (key.type == ItemCategory)
        appendBytes(value, out);
    else
        appendNumber(value, out);
}

void SortKeyMaker::appendText(const BoundKey &key, Bytes text, std::string &out) const
{
    if (!key.textOrder)
        return appendDelimited(asText(text), out);
    if (!m_collation)
        m_collation = &Collation::forLanguage(m_language);
    std::string buffer;
    m_collation->appendKey(asUtf8(key.type, text, buffer), out);
}

uint32_t collatorVersion(const std::string & /*language*/)
{
    return collationRulesVersion();
}

} // namespace pdtm
