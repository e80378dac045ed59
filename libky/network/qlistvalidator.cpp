#include "qlistvalidator.h"
#include <QWidget>

namespace {

/** The texts between separators. */
QStringList piecesOf(const QString &text, const QRegularExpression &separator)
{
    QStringList pieces;
    qsizetype start = 0;
    QRegularExpressionMatchIterator separators = separator.globalMatch(text);
    while (separators.hasNext()) {
        const QRegularExpressionMatch match = separators.next();
        if (match.capturedLength() == 0)
            continue;
        pieces.append(text.mid(start, match.capturedStart() - start));
        start = match.capturedEnd();
    }
    pieces.append(text.mid(start));
    return pieces;
}

QValidator::State stateOf(const QValidator *validator, QString piece)
{
    int position = int(piece.size());
    return validator ? validator->validate(piece, position) : QValidator::Acceptable;
}

} // namespace

QListValidator::QListValidator(QWidget *parent, QValidator *item, const QString &separator, const char *name)
    : QValidator(parent), m_item(item), m_separator(QStringLiteral("\\s*(?:%1)\\s*").arg(separator))
{
    setObjectName(QString::fromUtf8(name));
    if (!m_separator.isValid())
        qWarning("QListValidator: \"%s\" is no regular expression", qUtf8Printable(separator));
}

QValidator::State QListValidator::validate(QString &text, int & /*pos*/) const
{
    const QStringList pieces = m_separator.isValid() ? piecesOf(text, m_separator) : QStringList(text);
    for (const QString &piece : pieces.first(pieces.size() - 1)) {
        if (stateOf(m_item, piece) != Acceptable)
            return Invalid;
    }
    return stateOf(m_item, pieces.last());
}
