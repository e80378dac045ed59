#ifndef KYIPHOSTVALIDATOR_H
#define KYIPHOSTVALIDATOR_H

#include "kyexport.h"
#include "kyipvalidator.h"

/**
 * Takes the IP address of a host: none of the multicast and reserved classes, 224.0.0.0 and above. A
 * beginning of an address that it takes is at least Intermediate; 224 alone is Invalid, so that 22.4.0.1 has
 * to be typed with its points in their turn.
 */
class KY_EXPORT KYIPhostValidator : public KYIPValidator
{
    Q_OBJECT
public:
    explicit KYIPhostValidator(QWidget *parent, const char *name = nullptr);

    [[nodiscard]] QValidator::State validate(QString &text, int &pos) const override;

    /**
     * Checks that the settings of an interface go together.
     * @param mask empty for that of the address class
     * @param gateway empty for none
     * @param message gets what is wrong, translated; the name of the address class when nothing is, nothing
     * for code 2
     * @return 0 when all is well; 1 no address, 2 an address of no host, 3 the broadcast address, 4 the
     * address of the network, 5 no mask, 6 a mask that is shorter than that of the class, 7 no address of a
     *         gateway, 8 a gateway outside the network
     */
    int ipsetValidate(const QString &ip, const QString &mask, const QString &gateway, QString &message) const;
    /** The same with numbers, as str2ip() gives them; never 1, 5 or 7. @param ip must not be null
     * @param mask null for that of the address class @param gateway null for none */
    int ipsetValidate(const int *ip, const int *mask, const int *gateway, QString &message) const;
};

#endif
