#ifndef QLISTVALIDATOR_H
#define QLISTVALIDATOR_H

#include "kyexport.h"
#include <QPointer>
#include <QRegularExpression>
#include <QValidator>

/**
 * Takes a list of texts that another validator takes. While the last one is Intermediate, so is the list.
 *
 * Blanks may stand around a separator. Those in front of it can be pasted, but not typed: until the separator
 * comes they belong to the text before.
 */
class KY_EXPORT QListValidator : public QValidator
{
    Q_OBJECT
public:
    /**
     * @param parent owns the list validator, and not @p item; may be null
     * @param item takes the texts; what it changes in one is lost. Without it, also once it was deleted,
     * every text is taken.
     * @param separator regular expression; where it matches nothing at all it doesn't separate. With an
     *                  expression that isn't valid, a list is one text, and a warning tells so.
     * @param name becomes the objectName(); may be null
     */
    QListValidator(QWidget *parent, QValidator *item, const QString &separator, const char *name = nullptr);

    [[nodiscard]] QValidator::State validate(QString &text, int &pos) const override;

private:
    const QPointer<QValidator> m_item;
    const QRegularExpression m_separator;
};

#endif
