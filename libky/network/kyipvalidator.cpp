#include "kyipvalidator.h"
#include <algorithm>
#include <QWidget>

namespace {

constexpr int DigitSeen = 1; // of the parts: a digit stands in this group
constexpr int AllParts = 7;  // of the parts: a digit stands in the fourth group
constexpr quint32 LargestGroup = 255;

bool isDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

/** An address while its characters are read. */
struct AddressReader
{
    quint32 address = 0;
    quint32 group = 0; ///< value of the present group
    int parts = 0;     ///< two for each group that is over, and one when the present one has a digit

    bool take(QChar c) { return isDigit(c) ? takeDigit(c) : c == QLatin1Char('.') && takePoint(); }

    bool takeDigit(QChar c)
    {
        group = group * 10 + c.unicode() - '0';
        parts |= DigitSeen;
        return group <= LargestGroup;
    }

    bool takePoint()
    {
        if ((parts & DigitSeen) == 0)
            return false;
        if (++parts > AllParts)
            return false;
        address += group << (32 - parts * 4);
        group = 0;
        return true;
    }

    void finish() { address += group << ((31 - parts * 4) & 24); }
};

} // namespace

KYIPValidator::KYIPValidator(QWidget *parent, const char *name) : QValidator(parent)
{
    setObjectName(QString::fromUtf8(name));
}

QValidator::State KYIPValidator::str2ip(const QString &text, int &address) const
{
    AddressReader reader;
    const bool isValid = std::all_of(text.begin(), text.end(), [&](QChar c) { return reader.take(c); });
    reader.finish();
    address = int(reader.address);
    if (!isValid)
        return Invalid;
    return reader.parts == AllParts ? Acceptable : Intermediate;
}

QValidator::State KYIPValidator::validate(QString &text, int & /*pos*/) const
{
    int address = 0;
    return str2ip(text, address);
}
