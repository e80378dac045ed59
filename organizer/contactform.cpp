#include "contactform.h"

#include "addressfields.h"
#include "addresslookup.h"
#include "contactnames.h"

#include <QFormLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollArea>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {

enum Tab { NameTab, BusinessTab, HomeTab, MoreTab, TabCount };

constexpr const char *TabTitles[TabCount] = {
    QT_TRANSLATE_NOOP("ContactForm", "Name"),
    QT_TRANSLATE_NOOP("ContactForm", "Business"),
    QT_TRANSLATE_NOOP("ContactForm", "Home"),
    QT_TRANSLATE_NOOP("ContactForm", "More"),
};

struct FormField
{
    Tab tab;
    int field;
    const char *label;
};

constexpr FormField FormFields[] = {
    {NameTab, AddressField::LastName, QT_TRANSLATE_NOOP("ContactForm", "Last name")},
    {NameTab, AddressField::FirstName, QT_TRANSLATE_NOOP("ContactForm", "First name")},
    {NameTab, AddressField::LastPronunciation, QT_TRANSLATE_NOOP("ContactForm", "Last name, reading")},
    {NameTab, AddressField::FirstPronunciation, QT_TRANSLATE_NOOP("ContactForm", "First name, reading")},
    {NameTab, AddressField::MiddleName, QT_TRANSLATE_NOOP("ContactForm", "Middle name")},
    {NameTab, AddressField::Title, QT_TRANSLATE_NOOP("ContactForm", "Title")},
    {NameTab, AddressField::Suffix, QT_TRANSLATE_NOOP("ContactForm", "Suffix")},
    {NameTab, AddressField::Nickname, QT_TRANSLATE_NOOP("ContactForm", "Nickname")},
    {NameTab, AddressField::MobilePhone, QT_TRANSLATE_NOOP("ContactForm", "Mobile phone")},
    {NameTab, AddressField::DefaultEmail, QT_TRANSLATE_NOOP("ContactForm", "Email")},
    {BusinessTab, AddressField::Company, QT_TRANSLATE_NOOP("ContactForm", "Company")},
    {BusinessTab, AddressField::CompanyPronunciation, QT_TRANSLATE_NOOP("ContactForm", "Company, reading")},
    {BusinessTab, AddressField::Department, QT_TRANSLATE_NOOP("ContactForm", "Department")},
    {BusinessTab, AddressField::JobTitle, QT_TRANSLATE_NOOP("ContactForm", "Job title")},
    {BusinessTab, AddressField::BusinessPhone, QT_TRANSLATE_NOOP("ContactForm", "Phone")},
    {BusinessTab, AddressField::BusinessMobile, QT_TRANSLATE_NOOP("ContactForm", "Mobile phone")},
    {BusinessTab, AddressField::BusinessFax, QT_TRANSLATE_NOOP("ContactForm", "Fax")},
    {BusinessTab, AddressField::BusinessPager, QT_TRANSLATE_NOOP("ContactForm", "Pager")},
    {BusinessTab, AddressField::BusinessZip, QT_TRANSLATE_NOOP("ContactForm", "Postal code")},
    {BusinessTab, AddressField::BusinessState, QT_TRANSLATE_NOOP("ContactForm", "State")},
    {BusinessTab, AddressField::BusinessCity, QT_TRANSLATE_NOOP("ContactForm", "City")},
    {BusinessTab, AddressField::BusinessStreet, QT_TRANSLATE_NOOP("ContactForm", "Street")},
    {BusinessTab, AddressField::BusinessCountry, QT_TRANSLATE_NOOP("ContactForm", "Country")},
    {BusinessTab, AddressField::BusinessWebpage, QT_TRANSLATE_NOOP("ContactForm", "Web page")},
    {BusinessTab, AddressField::Office, QT_TRANSLATE_NOOP("ContactForm", "Office")},
    {BusinessTab, AddressField::Profession, QT_TRANSLATE_NOOP("ContactForm", "Profession")},
    {BusinessTab, AddressField::Assistant, QT_TRANSLATE_NOOP("ContactForm", "Assistant")},
    {BusinessTab, AddressField::Manager, QT_TRANSLATE_NOOP("ContactForm", "Manager")},
    {HomeTab, AddressField::HomePhone, QT_TRANSLATE_NOOP("ContactForm", "Phone")},
    {HomeTab, AddressField::HomeFax, QT_TRANSLATE_NOOP("ContactForm", "Fax")},
    {HomeTab, AddressField::HomeZip, QT_TRANSLATE_NOOP("ContactForm", "Postal code")},
    {HomeTab, AddressField::HomeState, QT_TRANSLATE_NOOP("ContactForm", "State")},
    {HomeTab, AddressField::HomeCity, QT_TRANSLATE_NOOP("ContactForm", "City")},
    {HomeTab, AddressField::HomeStreet, QT_TRANSLATE_NOOP("ContactForm", "Street")},
    {HomeTab, AddressField::HomeCountry, QT_TRANSLATE_NOOP("ContactForm", "Country")},
    {HomeTab, AddressField::HomeWebpage, QT_TRANSLATE_NOOP("ContactForm", "Web page")},
    {HomeTab, AddressField::Spouse, QT_TRANSLATE_NOOP("ContactForm", "Spouse")},
    {HomeTab, AddressField::Children, QT_TRANSLATE_NOOP("ContactForm", "Children")},
    {MoreTab, AddressField::FileAs, QT_TRANSLATE_NOOP("ContactForm", "File as")},
    {MoreTab, AddressField::Emails, QT_TRANSLATE_NOOP("ContactForm", "All emails")},
    {MoreTab, AddressField::Notes, QT_TRANSLATE_NOOP("ContactForm", "Notes")},
};

/** One address. */
struct PostalFields
{
    int zip;
    int state;
    int city;
    int street;
};

constexpr PostalFields Addresses[] = {
    {AddressField::BusinessZip, AddressField::BusinessState, AddressField::BusinessCity,
     AddressField::BusinessStreet},
    {AddressField::HomeZip, AddressField::HomeState, AddressField::HomeCity, AddressField::HomeStreet},
};

} // namespace

ContactForm::ContactForm(Book *book, CategoryTable *table, QWidget *parent)
    : CardForm(book, table,
               {tr("Contacts"), tr("Type a name before you save the contact."),
                tr("The contact could not be saved. The storage may be full."),
                tr("The contacts are in use by another application. Try again in a moment.")},
               parent),
      m_tabs(new QTabWidget)
{
    for (int tab = 0; tab < TabCount; ++tab)
        addTab(tab);
    m_tabs->setUsesScrollButtons(true);
    body()->addWidget(m_tabs);
    addEnd();
}

void ContactForm::addTab(int tab)
{
    auto *page = new QWidget;
    auto *form = new QFormLayout(page);
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    for (const FormField &entry : FormFields) {
        if (entry.tab != tab)
            continue;
        QWidget *editor = nullptr;
        if (entry.field == AddressField::Notes)
            editor = m_notes = makeTextEditor();
        else
            editor = m_lines[entry.field] = new QLineEdit;
        form->addRow(tr(entry.label), editor);
        addLookup(form, entry.field);
    }
    auto *scroll = new QScrollArea;
    scroll->setWidget(page);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    m_tabs->addTab(scroll, tr(TabTitles[tab]));
}

/* Behind the last line of an address. */
void ContactForm::addLookup(QFormLayout *form, int field)
{
    for (const PostalFields &fields : Addresses) {
        if (fields.street == field)
            form->addRow(QString(), new AddressLookup({m_lines[fields.zip], m_lines[fields.state],
                                                       m_lines[fields.city], m_lines[fields.street]}));
    }
}

void ContactForm::show(const CardValues &values)
{
    for (auto it = m_lines.begin(); it != m_lines.end(); ++it) {
        it.value()->setText(values.value(it.key()).toString());
        it.value()->setCursorPosition(0);
    }
    m_notes->setPlainText(values.value(AddressField::Notes).toString());
    m_tabs->setCurrentIndex(NameTab);
    m_lines[AddressField::LastName]->setFocus();
}

CardValues ContactForm::shown() const
{
    CardValues values;
    for (auto it = m_lines.cbegin(); it != m_lines.cend(); ++it)
        values.insert(it.key(), it.value()->text().trimmed());
    values.insert(AddressField::Notes, m_notes->toPlainText());
    return values;
}

bool ContactForm::complete(CardValues &changed, const CardValues &original) const
{
    ContactNames::completeNames(changed, original);
    return !changed.isEmpty() || !original.isEmpty();
}
