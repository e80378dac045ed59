// Bytes as text of the device's encodings, and as UTF-16: what was encoded once is encoded the same again.
#include "japanesetext.h"
#include "fuzzsupport.h"

#include <algorithm>
#include <cstring>

namespace {

void encodeAndDecode(const QString &text)
{
    const QByteArray sjis = JapaneseText::toSjis(text);
    require(sjis.size() <= text.size() * 2);
    require(JapaneseText::toSjis(JapaneseText::fromSjis(sjis)) == sjis);
    require(JapaneseText::canEncodeSjis(JapaneseText::fromSjis(sjis)));

    const QByteArray jis = JapaneseText::toJis7(text);
    require(std::ranges::all_of(jis, [](char byte) { return static_cast<uchar>(byte) < 0x80; }));
    require(JapaneseText::toJis7(JapaneseText::fromJis7(jis)) == jis);
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const QString sjis = JapaneseText::fromSjis(bytes);
    const QString jis = JapaneseText::fromJis7(bytes);
    require(sjis.size() <= bytes.size() && jis.size() <= bytes.size());
    encodeAndDecode(sjis);
    encodeAndDecode(jis);

    QString utf16(bytes.size() / 2, Qt::Uninitialized);
    if (!utf16.isEmpty())
        std::memcpy(utf16.data(), data, size / 2 * 2);
    encodeAndDecode(utf16);
    return 0;
}
