#ifndef KYHOSTVALIDATOR_H
#define KYHOSTVALIDATOR_H

#include "kyexport.h"
#include "kyiphostvalidator.h"

/**
 * Takes the name or the IP address of a host. Labels of letters of ASCII, digits and hyphens stand between
 * single points, none begins with a hyphen, and none that a point follows ends in one. Every beginning of
 * what it takes is at least Intermediate. Groups of digits that are no address, such as 256 or 224.0.0.1, are
 * a name.
 */
class KY_EXPORT KYHostValidator : public KYIPhostValidator
{
    Q_OBJECT
public:
    explicit KYHostValidator(QWidget *parent, const char *name = nullptr);

    [[nodiscard]] QValidator::State validate(QString &text, int &pos) const override;
};

#endif
