#include "kyhostvalidator.h"
#include <QRegularExpression>
#include <QWidget>

namespace {

/** True when labels, each right behind the one before, make up the text. */
bool isHostName(const QString &text)
{
    static const QRegularExpression label(QStringLiteral("\\G[0-9A-Za-z][-0-9A-Za-z]*\\.?"));
    qsizetype end = 0;
    QRegularExpressionMatchIterator labels = label.globalMatch(text);
    while (labels.hasNext()) {
        const QRegularExpressionMatch match = labels.next();
        if (match.capturedView().endsWith(QLatin1String("-.")))
            return false;
        end = match.capturedEnd();
    }
    return end == text.size();
}

} // namespace

KYHostValidator::KYHostValidator(QWidget *parent, const char *name) : KYIPhostValidator(parent, name) {}

QValidator::State KYHostValidator::validate(QString &text, int &pos) const
{
    const State state = KYIPhostValidator::validate(text, pos);
    if (state != Invalid)
        return state;
    return isHostName(text) ? Acceptable : Invalid;
}
