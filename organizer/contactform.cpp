#include "contactform.h"

#include "addressfields.h"
#include "contactnames.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QShortcut>
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

} // namespace

ContactForm::ContactForm(ContactBook *book, QWidget *parent)
    : QWidget(parent), m_book(book), m_tabs(new QTabWidget)
{
    for (int tab = 0; tab < TabCount; ++tab)
        addTab(m_tabs, tab);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &ContactForm::save);
    connect(buttons, &QDialogButtonBox::rejected, this, &ContactForm::cancel);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_tabs);
    layout->addWidget(buttons);

    auto addShortcut = [this](const QKeySequence &keys, void (ContactForm::*slot)()) {
        auto *shortcut = new QShortcut(keys, this);
        shortcut->setContext(Qt::WidgetWithChildrenShortcut);
        connect(shortcut, &QShortcut::activated, this, slot);
    };
    addShortcut(QKeySequence::Save, &ContactForm::save);
    addShortcut(Qt::Key_Escape, &ContactForm::cancel);
}

void ContactForm::addTab(QTabWidget *tabs, int tab)
{
    auto *page = new QWidget;
    auto *form = new QFormLayout(page);
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    for (const FormField &entry : FormFields) {
        if (entry.tab != tab)
            continue;
        QWidget *editor = nullptr;
        if (entry.field == AddressField::Notes)
            editor = m_notes = new QPlainTextEdit;
        else
            editor = m_lines[entry.field] = new QLineEdit;
        form->addRow(tr(entry.label), editor);
    }
    auto *scroll = new QScrollArea;
    scroll->setWidget(page);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    tabs->addTab(scroll, tr(TabTitles[tab]));
}

void ContactForm::edit(unsigned long card)
{
    m_card = card;
    m_original = card == 0 ? ContactTexts() : m_book->texts(card);
    for (auto it = m_lines.begin(); it != m_lines.end(); ++it) {
        it.value()->setText(m_original.value(it.key()));
        it.value()->setCursorPosition(0);
    }
    m_notes->setPlainText(m_original.value(AddressField::Notes));
    m_tabs->setCurrentIndex(NameTab);
    m_lines[AddressField::LastName]->setFocus();
}

QString ContactForm::shownText(int field) const
{
    return field == AddressField::Notes ? m_notes->toPlainText() : m_lines[field]->text().trimmed();
}

ContactTexts ContactForm::changedTexts() const
{
    ContactTexts changed;
    for (const FormField &entry : FormFields) {
        const QString text = shownText(entry.field);
        if (text != m_original.value(entry.field))
            changed.insert(entry.field, text);
    }
    return changed;
}

bool ContactForm::isModified() const
{
    return !changedTexts().isEmpty();
}

void ContactForm::save()
{
    ContactTexts changed = changedTexts();
    if (changed.isEmpty() && m_card != 0) {
        emit saved(m_card);
        return;
    }
    ContactNames::completeNames(changed, m_original);
    if (changed.isEmpty()) {
        QMessageBox::information(this, tr("Contacts"), tr("Type a name before you save the contact."));
        return;
    }
    const bool gone = m_card != 0 && m_book->ask() && m_book->rowOf(m_card) < 0;
    if (gone) {
        // Another application deleted it meanwhile; what the user has before them is kept.
        for (auto it = m_original.cbegin(); it != m_original.cend(); ++it) {
            if (!changed.contains(it.key()))
                changed.insert(it.key(), it.value());
        }
    }
    const unsigned long card = m_book->save(gone ? 0 : m_card, changed);
    if (card == 0) {
        QMessageBox::warning(
            this, tr("Contacts"),
            m_book->isAvailable()
                ? tr("The contact could not be saved. The storage may be full.")
                : tr("The contacts are in use by another application. Try again in a moment."));
        return;
    }
    emit saved(card);
}

void ContactForm::cancel()
{
    if (isModified() && QMessageBox::question(this, tr("Contacts"), tr("Discard what you changed?"),
                                              QMessageBox::Discard | QMessageBox::Cancel,
                                              QMessageBox::Cancel) != QMessageBox::Discard)
        return;
    emit cancelled();
}
