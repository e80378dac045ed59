#include "addresslookup.h"

#include "kyzipconvertor.h"
#include "zipconversion.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>

AddressLookup::AddressLookup(const AddressLines &lines, QWidget *parent) : QWidget(parent), m_lines(lines)
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *byCode = new QPushButton(tr("Find address"));
    byCode->setToolTip(tr("Look the postal code up in the postal dictionary"));
    auto *byAddress = new QPushButton(tr("Find code"));
    byAddress->setToolTip(tr("Look the address up in the postal dictionary"));
    layout->addWidget(byCode);
    layout->addWidget(byAddress);
    layout->addStretch();
    connect(byCode, &QPushButton::clicked, this, &AddressLookup::findAddress);
    connect(byAddress, &QPushButton::clicked, this, &AddressLookup::findCode);
}

void AddressLookup::findAddress()
{
    convert(By::Code);
}

void AddressLookup::findCode()
{
    convert(By::Address);
}

/* What the user takes of the result; the rest of the form stays. */
void AddressLookup::convert(By by)
{
    KyZIPConvertor convertor(window(), true, nullptr, true);
    convertor.setSearchMode(by == By::Code ? KyZIPConvertor::ZipSearch : KyZIPConvertor::AddressSearch);
    convertor.setZip(m_lines.zip->text());
    convertor.setAddress(address());
    convertor.setStateAdoption(true);
    if (convertor.convertor() != QDialog::Accepted)
        return;
    if (convertor.isSelectZip())
        m_lines.zip->setText(convertor.selectedZip());
    if (convertor.isSelectAddress())
        fill(convertor.selectedState(), convertor.selectedCity());
}

/* What is there already, perhaps in another line, isn't written a second time. */
void AddressLookup::fill(const QString &state, const QString &city)
{
    if (FullWidthAdrStr(address()).startsWith(state + city))
        return;
    if (!FullWidthAdrStr(m_lines.city->text() + m_lines.street->text()).startsWith(city))
        m_lines.city->setText(city);
    if (!state.isEmpty())
        m_lines.state->setText(state);
}

QString AddressLookup::address() const
{
    return m_lines.state->text() + m_lines.city->text() + m_lines.street->text();
}
