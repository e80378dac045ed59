#include "contactspage.h"

#include "addressfields.h"
#include "cardlist.h"
#include "contactform.h"
#include "contactimport.h"
#include "messages.h"
#include "resource.h"

#include <QFileDialog>
#include <QMenu>

namespace {

QString counted(int contacts)
{
    return contacts == 1 ? ContactsPage::tr("1 contact") : ContactsPage::tr("%1 contacts").arg(contacts);
}

} // namespace

ContactsPage::ContactsPage(CategoryTable *table, QWidget *parent)
    : CardsPage(BoxKind::contacts(), table, {tr("Contacts"), tr("No contacts yet"), counted}, parent)
{
    const auto name = [this](unsigned long card) { return nameOf(card); };
    auto *list = new CardList(book(), {{tr("Name"), AddressField::FullPronunciation, 17, name},
                                       {tr("Company"), AddressField::Company, 17},
                                       {tr("Mobile phone"), AddressField::MobilePhone, 14}});
    begin(list, new ContactForm(book(), table));
    menu()->addAction(QIcon(Resource::loadPixmap(QStringLiteral("import"))), tr("Import..."), this,
                      &ContactsPage::importFile);
}

QString ContactsPage::nameOf(unsigned long card) const
{
    for (int field : {AddressField::FullName, AddressField::FullPronunciation, AddressField::Company}) {
        const QString text = book()->text(card, field);
        if (!text.isEmpty())
            return text;
    }
    return {};
}

CardDetails ContactsPage::detailsOf(unsigned long card) const
{
    CardDetails details{nameOf(card), book()->text(card, AddressField::FullPronunciation), {}};
    const CardValues values = book()->values(card);
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        const QString text = it->toString();
        if (text != details.heading && text != details.subheading)
            details.rows.append({book()->fields().itemInfo(it.key()).label, text});
    }
    return details;
}

void ContactsPage::importFile()
{
    const QString path = QFileDialog::getOpenFileName(this, tr("Import contacts"), QString(),
                                                      tr("vCard files (*.vcf *.vcard);;All files (*)"));
    if (!path.isEmpty())
        importFrom(path);
}

void ContactsPage::importFrom(const QString &path)
{
    ContactImport import(book(), categories(), this);
    const QString report = import.run(path);
    Messages::inform(this, tr("Import contacts"), report);
}
