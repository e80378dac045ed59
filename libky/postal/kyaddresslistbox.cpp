#include "kyaddresslistbox.h"

namespace {

QString rowText(const KYAddressItem &item)
{
    const QString address = item.state + item.city;
    return item.showZip ? item.zip + QLatin1Char(' ') + address : address;
}

} // namespace

KyAddressListBox::KyAddressListBox(QWidget *parent, const char *name) : QListWidget(parent)
{
    setObjectName(QLatin1String(name));
    // The keys that would scroll to the end of a long row go to the neighbouring codes in the dialog.
    setWordWrap(true);
    setResizeMode(QListView::Adjust);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAlternatingRowColors(true); // tells a row of two lines from two rows
}

KyAddressListBox::~KyAddressListBox() = default;

void KyAddressListBox::insertAdrsList(const QList<KYAddressItem> &newItems)
{
    for (const KYAddressItem &item : newItems) {
        items.append(item);
        addItem(rowText(item));
    }
}

const KYAddressItem *KyAddressListBox::currentAdrItem() const
{
    const int row = currentRow();
    return row >= 0 && row < items.size() ? &items.at(row) : nullptr;
}

void KyAddressListBox::clear()
{
    QListWidget::clear();
    items.clear();
}
