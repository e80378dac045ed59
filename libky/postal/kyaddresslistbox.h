#ifndef KYADDRESSLISTBOX_H
#define KYADDRESSLISTBOX_H

#include "kyexport.h"
#include <QList>
#include <QListWidget>
#include <QString>

/** One address with its postal code. */
struct KYAddressItem
{
    QString state;        ///< the prefecture
    QString city;         ///< all behind it
    QString zip;          ///< with or without a hyphen
    bool showZip = false; ///< the row begins with the code
};

/** A list of addresses, one a row. */
class KY_EXPORT KyAddressListBox : public QListWidget
{
    Q_OBJECT

public:
    explicit KyAddressListBox(QWidget *parent = nullptr, const char *name = nullptr);
    ~KyAddressListBox() override;

    /** Adds rows for copies of @p items behind those that are there. */
    void insertAdrsList(const QList<KYAddressItem> &items);
    /** @return the address of the current row, which the box owns: good until rows are added or cleared; null
     * with no current row */
    [[nodiscard]] const KYAddressItem *currentAdrItem() const;

public slots:
    /** Takes all rows away, and their addresses. */
    void clear();

private:
    Q_DISABLE_COPY_MOVE(KyAddressListBox)

    QList<KYAddressItem> items; ///< by row
};

#endif
