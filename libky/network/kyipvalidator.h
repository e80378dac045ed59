#ifndef KYIPVALIDATOR_H
#define KYIPVALIDATOR_H

#include "kyexport.h"
#include <QValidator>

/** Takes an IP address of four decimal groups, such as 192.168.1.1. Every beginning of one is Intermediate,
 * the empty text too. */
class KY_EXPORT KYIPValidator : public QValidator
{
    Q_OBJECT
public:
    /** @param parent owns it; may be null
     * @param name becomes the objectName(); may be null */
    explicit KYIPValidator(QWidget *parent, const char *name = nullptr);

    /**
     * Reads an address. Only the digits 0 to 9 count, not those of other scripts; leading zeros are allowed
     * and mean nothing.
     * @param address gets the address with its first group in the top byte, groups that are missing as 0. It
     *                means nothing when the result is Invalid.
     */
    QValidator::State str2ip(const QString &text, int &address) const;

    [[nodiscard]] QValidator::State validate(QString &text, int &pos) const override;
};

#endif
