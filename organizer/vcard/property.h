#ifndef VCARD_PROPERTY_H
#define VCARD_PROPERTY_H

#include <optional>
#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

namespace VCard {

/** How bytes without a CHARSET of their own are read. */
enum class Charset { Utf8, ShiftJis, Latin1 };

/** A logical line: folds undone, bytes as they came otherwise. */
struct LogicalLine
{
    QByteArray bytes;
    int number = 0; ///< Where it begins in the file.
};

/** One property of a card. Names, types and parameter names are in upper case, the group in lower case. */
struct Property
{
    QString group;
    QString name;
    QStringList types;                 ///< Values of TYPE, and bare parameters of version 2.1.
    QMap<QString, QString> parameters; ///< All others but TYPE.
    QByteArray value;                  ///< Still encoded.
    Charset charset = Charset::Utf8;
    bool isLegacy = false;    ///< Of a card of version 2.1.
    bool isConverted = false; ///< The file was UTF-16 and is UTF-8 now.
    int line = 0;

    [[nodiscard]] bool hasType(const char *type) const { return types.contains(QLatin1String(type)); }

    /** 1 is the most preferred, 101 is said of a property that doesn't speak of it. */
    [[nodiscard]] int preference() const;

    /** The value as text, its transfer encoding and character set undone, escapes still in it. */
    [[nodiscard]] QString encodedText() const;

    /** The value as one text. */
    [[nodiscard]] QString text() const;

    /** The parts of a structured value or a list, cut at every @p separator that isn't escaped. */
    [[nodiscard]] QStringList parts(QChar separator) const;
};

/** Reads a logical line whose parameters are in @p charset; nothing when it has no name or no colon. */
[[nodiscard]] std::optional<Property> parseProperty(const LogicalLine &line, Charset charset);

/** Undoes quoted-printable. What isn't a valid code stays as it is. */
[[nodiscard]] QByteArray decodeQuotedPrintable(const QByteArray &bytes);

/** Undoes the backslash escapes of a text value. Version 2.1 knows no escape for a line break. */
[[nodiscard]] QString unescape(const QString &text, bool isLegacy);

} // namespace VCard

#endif
