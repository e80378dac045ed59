// An address or a host name of any characters: what the validators say agrees with a plain reading of the
// text, and every beginning of what they take is at least Intermediate.
#include "fuzzsupport.h"
#include "kyhostvalidator.h"
#include "qlistvalidator.h"
#include <optional>
#include <QStringList>

namespace {

constexpr qsizetype LongestBeginnings = 200; // characters; they cost the square

/** A group without its zeros in front. */
std::optional<quint32> groupValue(const QString &group)
{
    qsizetype zeros = 0;
    while (zeros < group.size() && group[zeros] == QLatin1Char('0'))
        ++zeros;
    const QString digits = group.mid(zeros);
    for (const QChar c : digits) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return std::nullopt;
    }
    if (group.isEmpty() || digits.size() > 3)
        return std::nullopt;
    const quint32 value = digits.toUInt();
    return value <= 255 ? std::optional(value) : std::nullopt;
}

/** The address that the text is. */
std::optional<quint32> plainAddress(const QString &text)
{
    const QStringList groups = text.split(QLatin1Char('.'));
    if (groups.size() != 4)
        return std::nullopt;
    quint32 address = 0;
    for (const QString &group : groups) {
        const std::optional<quint32> value = groupValue(group);
        if (!value)
            return std::nullopt;
        address = address << 8 | *value;
    }
    return address;
}

QValidator::State stateOf(const QValidator &validator, QString text)
{
    int position = 0;
    return validator.validate(text, position);
}

void requireBeginnings(const QValidator &validator, const QString &text)
{
    if (text.size() > LongestBeginnings || stateOf(validator, text) == QValidator::Invalid)
        return;
    for (qsizetype length = 0; length < text.size(); ++length)
        require(stateOf(validator, text.left(length)) != QValidator::Invalid);
}

void requireAddress(const KYIPhostValidator &host, const QString &text)
{
    int address = 0;
    const bool accepted = host.str2ip(text, address) == QValidator::Acceptable;
    const std::optional<quint32> expected = plainAddress(text);
    require(accepted == expected.has_value());
    require(!expected || quint32(address) == *expected);
    require((stateOf(host, text) == QValidator::Acceptable) == (expected && *expected < 0xe0000000));
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    const KYIPValidator address(nullptr);
    const KYIPhostValidator host(nullptr);
    const KYHostValidator name(nullptr);
    KYIPhostValidator item(nullptr);
    const QListValidator list(nullptr, &item, QStringLiteral(","));

    requireAddress(host, text);
    requireBeginnings(address, text);
    requireBeginnings(host, text);
    requireBeginnings(name, text);
    require(stateOf(list, text) == QValidator::Invalid ||
            stateOf(host, text.section(QLatin1Char(','), 0, 0).trimmed()) != QValidator::Invalid);
    QString message;
    const int code =
        host.ipsetValidate(text.section(QLatin1Char(','), 0, 0), text.section(QLatin1Char(','), 1, 1),
                           text.section(QLatin1Char(','), 2, 2), message);
    require(code >= 0 && code <= 8 && message.isEmpty() == (code == 2));
    return 0;
}
