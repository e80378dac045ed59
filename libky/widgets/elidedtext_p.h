#ifndef ELIDEDTEXT_P_H
#define ELIDEDTEXT_P_H

#include <QFontMetrics>
#include <QString>

/**
 * A text as one line that fits into a cell: itself, or the longest beginning with "..." behind it that stays
 * under the width, at least one character of it; an empty text stays empty. Characters are taken as people
 * see them, with their marks.
 *
 * No more of a text is looked at than could fit, however long it is.
 * @param width of the cell, in pixels @param margin in front of the text
 */
[[nodiscard]] QString elidedText(const QString &text, const QFontMetrics &metrics, int width, int margin);

#endif
