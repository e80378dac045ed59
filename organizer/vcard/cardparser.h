#ifndef CARDPARSER_H
#define CARDPARSER_H

#include "cardsource.h"
#include "property.h"

namespace VCard {

/** A card as properties, the preferred ones first. */
struct Card
{
    int line = 0;
    QList<Property> properties;
    QStringList agents;        ///< Names of the persons of nested cards.
    bool isUnreadable = false; ///< Some text is in no character set known here.
    QString fault;             ///< As in RawCard.
    int faultLine = 0;
};

/** Undoes folds, finds the character set, reads every property. A line that is none is the card's fault. */
[[nodiscard]] Card parseCard(const RawCard &raw);

/** The name in a card that is the value of a property (AGENT of version 3.0); empty when it has none. */
[[nodiscard]] QString nameInCard(const QString &card);

/**
 * Joins folded lines.
 *
 * A continuation loses its first blank; in version 2.1 it keeps it. A quoted-printable line that ends in '='
 * goes on in the next one, and base64 of version 2.1 on lines without a colon.
 */
[[nodiscard]] QList<LogicalLine> unfold(const QList<Line> &lines, bool isLegacy);

} // namespace VCard

#endif
