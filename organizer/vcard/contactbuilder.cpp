#include "contactbuilder.h"
#include "carddate.h"
#include "contact.h"
#include "readings.h"
#include <algorithm>
#include <QCoreApplication>
#include <QRegularExpression>
#include <QUrl>

namespace VCard {

namespace {

QString text(const char *source)
{
    return QCoreApplication::translate("VCardReader", source);
}

template <size_t N> bool contains(const char *const (&names)[N], const QString &name)
{
    return std::any_of(std::begin(names), std::end(names),
                       [&](const char *known) { return name == QLatin1String(known); });
}

/** A field of one line: line breaks and runs of blanks become one blank. */
QString singleLine(const QString &text)
{
    return text.simplified();
}

/** `tel:`, `mailto:` and the like taken off, with what they had to escape. */
QString withoutScheme(const QString &value, QLatin1String scheme)
{
    if (!value.startsWith(scheme, Qt::CaseInsensitive))
        return value;
    return QUrl::fromPercentEncoding(value.mid(scheme.size()).toUtf8());
}

QString plainEmail(const QString &value)
{
    static const QRegularExpression angled(QStringLiteral("<([^<>]+)>"));
    const QString address = withoutScheme(value.trimmed(), QLatin1String("mailto:"));
    const QRegularExpressionMatch match = angled.match(address);
    return (match.hasMatch() ? match.captured(1) : address).simplified().remove(u' ');
}

/** A label of the form `_$!<Spouse>!$_` is one of a fixed vocabulary. */
QString cleanLabel(const QString &label)
{
    QString word = label;
    return word.remove(QLatin1String("_$!<")).remove(QLatin1String(">!$_")).trimmed().toUpper();
}

/** A sort text holds the last name first, then a separator. */
QStringList lastAndFirst(const QString &sortText)
{
    static const QRegularExpression separator(QStringLiteral("[;,]"));
    if (sortText.contains(separator))
        return sortText.split(separator).mid(0, 2);
    const QString simple = sortText.simplified();
    if (!Contact::isLastNameFirst(simple))
        return {simple, QString()};
    return {simple.section(u' ', 0, 0), simple.section(u' ', 1)};
}

struct AddressFields
{
    int street, city, state, zip, country;
};

constexpr AddressFields HomeAddress{AddressField::HomeStreet, AddressField::HomeCity, AddressField::HomeState,
                                    AddressField::HomeZip, AddressField::HomeCountry};
constexpr AddressFields BusinessAddress{AddressField::BusinessStreet, AddressField::BusinessCity,
                                        AddressField::BusinessState, AddressField::BusinessZip,
                                        AddressField::BusinessCountry};

/** The parts of ADR in their order. */
enum AddressPart { PostOfficeBox, Extended, Street, City, State, Zip, Country, AddressParts };

struct GenderWord
{
    const char *word;
    const char *gender;
};

constexpr GenderWord GenderWords[] = {{"M", Gender::Male},   {"MALE", Gender::Male},
                                      {"F", Gender::Female}, {"FEMALE", Gender::Female},
                                      {"O", Gender::Other},  {"OTHER", Gender::Other}};

QString genderOf(const QString &word)
{
    for (const GenderWord &entry : GenderWords) {
        if (word.compare(QLatin1String(entry.word), Qt::CaseInsensitive) == 0)
            return QLatin1String(entry.gender);
    }
    return {};
}

} // namespace

const ContactBuilder::Rule ContactBuilder::Rules[] = {
    {"FN", &ContactBuilder::readFormattedName},
    {"N", &ContactBuilder::readName},
    {"SOUND", &ContactBuilder::readSound},
    {"SORT-STRING", &ContactBuilder::readSortString},
    {"X-PHONETIC-LAST-NAME", &ContactBuilder::readLastPronunciation},
    {"X-PHONETIC-FIRST-NAME", &ContactBuilder::readFirstPronunciation},
    {"X-PHONETIC-ORG", &ContactBuilder::readCompanyPronunciation},
    {"ORG", &ContactBuilder::readOrganization},
    {"TEL", &ContactBuilder::readPhone},
    {"ADR", &ContactBuilder::readAddress},
    {"EMAIL", &ContactBuilder::readEmail},
    {"URL", &ContactBuilder::readUrl},
    {"BDAY", &ContactBuilder::readBirthday},
    {"ANNIVERSARY", &ContactBuilder::readAnniversary},
    {"X-ANNIVERSARY", &ContactBuilder::readAnniversary},
    {"X-EVOLUTION-ANNIVERSARY", &ContactBuilder::readAnniversary},
    {"X-KADDRESSBOOK-X-ANNIVERSARY", &ContactBuilder::readAnniversary},
    {"X-MS-ANNIVERSARY", &ContactBuilder::readAnniversary},
    {"X-ABDATE", &ContactBuilder::readLabelledDate},
    {"GENDER", &ContactBuilder::readGender},
    {"X-GENDER", &ContactBuilder::readGender},
    {"X-WAB-GENDER", &ContactBuilder::readLegacyGenderCode},
    {"RELATED", &ContactBuilder::readRelated},
    {"X-ABRELATEDNAMES", &ContactBuilder::readRelated},
    {"X-CHILD", &ContactBuilder::readChildren},
    {"X-CHILDREN", &ContactBuilder::readChildren},
    {"X-MS-CHILD", &ContactBuilder::readChildren},
    {"X-MS-CHILDREN", &ContactBuilder::readChildren},
    {"NOTE", &ContactBuilder::readNote},
    {"CATEGORIES", &ContactBuilder::readCategories},
    {"AGENT", &ContactBuilder::readAgent},
};

const ContactBuilder::TextRule ContactBuilder::TextRules[] = {
    {"TITLE", AddressField::JobTitle},
    {"ROLE", AddressField::Profession},
    {"X-KADDRESSBOOK-X-PROFESSION", AddressField::Profession},
    {"NICKNAME", AddressField::Nickname},
    {"X-NICKNAME", AddressField::Nickname},
    {"X-EVOLUTION-FILE-AS", AddressField::FileAs},
    {"X-FILE-AS", AddressField::FileAs},
    {"X-KADDRESSBOOK-X-OFFICE", AddressField::Office},
    {"X-MS-OFFICE", AddressField::Office},
    {"X-OFFICE", AddressField::Office},
    {"X-ASSISTANT", AddressField::Assistant},
    {"X-EVOLUTION-ASSISTANT", AddressField::Assistant},
    {"X-KADDRESSBOOK-X-ASSISTANTSNAME", AddressField::Assistant},
    {"X-MS-ASSISTANT", AddressField::Assistant},
    {"X-MANAGER", AddressField::Manager},
    {"X-EVOLUTION-MANAGER", AddressField::Manager},
    {"X-KADDRESSBOOK-X-MANAGERSNAME", AddressField::Manager},
    {"X-MS-MANAGER", AddressField::Manager},
    {"X-SPOUSE", AddressField::Spouse},
    {"X-EVOLUTION-SPOUSE", AddressField::Spouse},
    {"X-KADDRESSBOOK-X-SPOUSESNAME", AddressField::Spouse},
    {"X-MS-SPOUSE", AddressField::Spouse},
};

/** Text that people want to keep, but that has no field. */
const char *const ContactBuilder::NoteRules[] = {"IMPP",
                                                 "GEO",
                                                 "TZ",
                                                 "LANG",
                                                 "LABEL",
                                                 "HOBBY",
                                                 "INTEREST",
                                                 "EXPERTISE",
                                                 "BIRTHPLACE",
                                                 "DEATHDATE",
                                                 "X-PHONETIC-MIDDLE-NAME"};

/** Too large for a text, or of no use outside the program that wrote it. */
const char *const ContactBuilder::LeftOutRules[] = {"PHOTO", "LOGO", "KEY"};

const char *const ContactBuilder::SilentRules[] = {
    "VERSION", "PRODID",       "REV",       "UID",     "MAILER",     "CLASS", "KIND",   "SOURCE",   "NAME",
    "PROFILE", "CLIENTPIDMAP", "X-ABLABEL", "X-ABADR", "X-ABSHOWAS", "FBURL", "CALURI", "CALADRURI"};

ContactFields ContactBuilder::build(const Card &card)
{
    m_contact.line = card.line;
    if (card.isUnreadable)
        m_contact.warnings.append(text("some text is damaged"));
    collectLabels(card);
    for (const Property &property : card.properties)
        add(property);
    fillLists();
    fillAgents(card.agents);
    fillNames();
    fillPronunciation();
    fillNotes();
    return m_contact;
}

void ContactBuilder::collectLabels(const Card &card)
{
    for (const Property &property : card.properties) {
        if (property.name == u"X-ABLABEL")
            m_labels.insert(property.group, cleanLabel(property.text()));
    }
}

void ContactBuilder::add(Property property)
{
    const QString label = property.group.isEmpty() ? QString() : m_labels.value(property.group);
    if (!label.isEmpty() && !property.types.contains(label))
        property.types.append(label);
    if (addByRule(property) || addText(property) || contains(SilentRules, property.name))
        return;
    if (contains(NoteRules, property.name))
        keepInNotes(property, property.text());
    else if (contains(LeftOutRules, property.name))
        VCardReport::count(&m_report->leftOut, property.name);
    else
        VCardReport::count(&m_report->unknownProperties, property.name);
}

bool ContactBuilder::addByRule(const Property &property)
{
    for (const Rule &rule : Rules) {
        if (property.name == QLatin1String(rule.name)) {
            (this->*rule.reader)(property);
            return true;
        }
    }
    return false;
}

bool ContactBuilder::addText(const Property &property)
{
    for (const TextRule &rule : TextRules) {
        if (property.name == QLatin1String(rule.name)) {
            setField(rule.field, property.text(), property);
            return true;
        }
    }
    return false;
}

void ContactBuilder::keepInNotes(const QString &label, const QString &value)
{
    const QString line = singleLine(value);
    if (!line.isEmpty())
        m_extraLines.append(label + QLatin1String(": ") + line);
}

void ContactBuilder::keepInNotes(const Property &property, const QString &value)
{
    QStringList types = property.types;
    types.removeAll(QStringLiteral("PREF"));
    keepInNotes(joined(QStringList{property.name} + types), value);
}

void ContactBuilder::setText(int field, const QString &value)
{
    const QString line = singleLine(value);
    if (!line.isEmpty() && this->value(field).isEmpty())
        m_contact.values.insert(field, line);
}

void ContactBuilder::setField(int field, const QString &newValue, const Property &property)
{
    setText(field, newValue);
    if (value(field) != singleLine(newValue))
        keepInNotes(property, newValue);
}

void ContactBuilder::readFormattedName(const Property &property)
{
    setField(AddressField::FullName, property.text(), property);
}

void ContactBuilder::readName(const Property &property)
{
    static constexpr int Fields[] = {AddressField::LastName, AddressField::FirstName,
                                     AddressField::MiddleName, AddressField::Title, AddressField::Suffix};
    const bool isSecond =
        std::any_of(std::begin(Fields), std::end(Fields), [&](int field) { return !value(field).isEmpty(); });
    const QStringList parts = property.parts(u';');
    if (isSecond)
        return keepInNotes(property, joined(parts));
    for (qsizetype i = 0; i < parts.size() && i < qsizetype(std::size(Fields)); ++i)
        setText(Fields[i], parts[i]);
    if (property.parameters.contains(QStringLiteral("SORT-AS")))
        m_sortReading = lastAndFirst(property.parameters.value(QStringLiteral("SORT-AS")));
}

void ContactBuilder::readSound(const Property &property)
{
    if (property.hasType("X-IRMC-N"))
        m_soundReading = property.parts(u';').mid(0, 2);
    else
        VCardReport::count(&m_report->leftOut, property.name);
}

void ContactBuilder::readSortString(const Property &property)
{
    if (m_sortReading.isEmpty())
        m_sortReading = lastAndFirst(property.text());
}

void ContactBuilder::readLastPronunciation(const Property &property)
{
    setField(AddressField::LastPronunciation, normalizedReading(property.text()), property);
}

void ContactBuilder::readFirstPronunciation(const Property &property)
{
    setField(AddressField::FirstPronunciation, normalizedReading(property.text()), property);
}

void ContactBuilder::readCompanyPronunciation(const Property &property)
{
    setField(AddressField::CompanyPronunciation, normalizedReading(property.text()), property);
}

void ContactBuilder::readOrganization(const Property &property)
{
    const QStringList parts = property.parts(u';');
    const QString company = singleLine(parts.first());
    if (!value(AddressField::Company).isEmpty() || !value(AddressField::Department).isEmpty())
        return keepInNotes(property, joined(parts));
    setText(AddressField::Company, company);
    setText(AddressField::Department, joined(parts.mid(1)));
    setText(AddressField::CompanyPronunciation,
            normalizedReading(property.parameters.value(QStringLiteral("SORT-AS")).section(u',', 0, 0)));
}

void ContactBuilder::addTelephone(int field, const Property &property)
{
    setField(field, withoutScheme(property.text().trimmed(), QLatin1String("tel:")), property);
}

void ContactBuilder::readPhone(const Property &property)
{
    const bool isWork = property.hasType("WORK");
    if (property.hasType("PAGER"))
        addTelephone(AddressField::BusinessPager, property);
    else if (property.hasType("FAX"))
        addTelephone(isWork ? AddressField::BusinessFax : AddressField::HomeFax, property);
    else if (property.hasType("CELL") || property.hasType("CAR") || property.hasType("PCS") ||
             property.hasType("IPHONE"))
        addTelephone(isWork ? AddressField::BusinessMobile : AddressField::MobilePhone, property);
    else
        addTelephone(isWork ? AddressField::BusinessPhone : AddressField::HomePhone, property);
}

void ContactBuilder::readAddress(const Property &property)
{
    const AddressFields &fields = property.hasType("WORK") ? BusinessAddress : HomeAddress;
    QStringList parts = property.parts(u';');
    const int all[] = {fields.street, fields.city, fields.state, fields.zip, fields.country};
    if (std::any_of(std::begin(all), std::end(all), [&](int field) { return !value(field).isEmpty(); }))
        return keepInNotes(property, joined(parts));
    while (parts.size() < AddressParts)
        parts.append(QString());
    setText(fields.street, joined({parts[Street], parts[Extended], parts[PostOfficeBox]}));
    setText(fields.city, parts[City]);
    setText(fields.state, parts[State]);
    setText(fields.zip, parts[Zip]);
    setText(fields.country, parts[Country]);
}

void ContactBuilder::readEmail(const Property &property)
{
    const QString address = plainEmail(property.text());
    if (!address.isEmpty())
        m_emails.append(address);
}

void ContactBuilder::readUrl(const Property &property)
{
    setField(property.hasType("WORK") ? AddressField::BusinessWebpage : AddressField::HomeWebpage,
             property.text(), property);
}

void ContactBuilder::readDate(int field, const Property &property)
{
    const QString given = property.text();
    QString date = toBookDate(given);
    const QString placeholder = property.parameters.value(QStringLiteral("X-APPLE-OMIT-YEAR"));
    if (!placeholder.isEmpty() && date.startsWith(placeholder + u'-'))
        date = withoutYear(date);
    if (date.isEmpty())
        keepInNotes(property, given);
    else
        setField(field, date, property);
}

void ContactBuilder::readBirthday(const Property &property)
{
    readDate(AddressField::Birthday, property);
}

void ContactBuilder::readAnniversary(const Property &property)
{
    readDate(AddressField::Anniversary, property);
}

void ContactBuilder::readLabelledDate(const Property &property)
{
    if (property.hasType("ANNIVERSARY"))
        readDate(AddressField::Anniversary, property);
    else
        keepInNotes(property, property.text());
}

void ContactBuilder::readGender(const Property &property)
{
    const QStringList parts = property.parts(u';');
    const QString gender = genderOf(parts.first());
    const QString ownWords = parts.value(1);
    const bool isUnsaid = parts.first() == u"U" || parts.first() == u"N";
    if (gender.isEmpty() && ownWords.isEmpty() && !isUnsaid)
        return keepInNotes(property, property.text());
    const bool isBinary = gender == QLatin1String(Gender::Male) || gender == QLatin1String(Gender::Female);
    setField(AddressField::Gender, isBinary || ownWords.isEmpty() ? gender : ownWords, property);
}

void ContactBuilder::readLegacyGenderCode(const Property &property)
{
    const QString code = property.text().trimmed();
    if (code == u"1" || code == u"2")
        setField(AddressField::Gender, QLatin1String(code == u"1" ? Gender::Female : Gender::Male), property);
}

void ContactBuilder::readRelated(const Property &property)
{
    if (property.hasType("SPOUSE"))
        setField(AddressField::Spouse, property.text(), property);
    else if (property.hasType("CHILD") || property.hasType("SON") || property.hasType("DAUGHTER"))
        readChildren(property);
    else if (property.hasType("ASSISTANT"))
        setField(AddressField::Assistant, property.text(), property);
    else if (property.hasType("MANAGER"))
        setField(AddressField::Manager, property.text(), property);
    else
        keepInNotes(property, property.text());
}

void ContactBuilder::readChildren(const Property &property)
{
    for (const QString &child : property.parts(u','))
        m_children.append(singleLine(child));
}

void ContactBuilder::readNote(const Property &property)
{
    const QString note = property.text().trimmed();
    if (!note.isEmpty())
        m_notes.append(note);
}

void ContactBuilder::readCategories(const Property &property)
{
    for (const QString &category : property.parts(u','))
        m_contact.categories.append(singleLine(category));
}

void ContactBuilder::readAgent(const Property &property)
{
    const QString given = property.text();
    const bool isCard = given.trimmed().startsWith(QLatin1String("BEGIN:VCARD"), Qt::CaseInsensitive);
    setField(AddressField::Assistant, isCard ? nameInCard(given) : given, property);
}

void ContactBuilder::fillAgents(const QStringList &agents)
{
    for (const QString &agent : agents) {
        setText(AddressField::Assistant, agent);
        if (value(AddressField::Assistant) != singleLine(agent))
            keepInNotes(QStringLiteral("AGENT"), agent);
    }
}

void ContactBuilder::fillLists()
{
    m_emails.removeDuplicates();
    setText(AddressField::DefaultEmail, m_emails.value(0));
    setText(AddressField::Emails, m_emails.join(u' '));
    m_children.removeAll(QString());
    setText(AddressField::Children, m_children.join(QLatin1String(", ")));
    m_contact.categories.removeAll(QString());
    m_contact.categories.removeDuplicates();
}

QString ContactBuilder::composedName() const
{
    const QString last = value(AddressField::LastName);
    const QString first = value(AddressField::FirstName);
    if (Contact::isLastNameFirst(last + first))
        return joined({last, first});
    return joined({first, value(AddressField::MiddleName), last});
}

QString ContactBuilder::filledName() const
{
    const QString candidates[] = {composedName(), value(AddressField::Company), value(AddressField::Nickname),
                                  value(AddressField::DefaultEmail)};
    for (const QString &candidate : candidates) {
        if (!candidate.isEmpty())
            return candidate;
    }
    return {};
}

void ContactBuilder::fillNames()
{
    setText(AddressField::FullName, filledName());
    setText(AddressField::FileAs, value(AddressField::FullName));
}

void ContactBuilder::takeReading(const QStringList &reading)
{
    const bool hasReading = !value(AddressField::LastPronunciation).isEmpty() ||
                            !value(AddressField::FirstPronunciation).isEmpty();
    if (hasReading || reading.isEmpty())
        return;
    setText(AddressField::LastPronunciation, normalizedReading(reading.first()));
    setText(AddressField::FirstPronunciation, normalizedReading(reading.value(1)));
}

void ContactBuilder::fillPronunciation()
{
    takeReading(m_soundReading);
    takeReading(m_sortReading);
    setText(AddressField::FullPronunciation,
            joined({value(AddressField::LastPronunciation), value(AddressField::FirstPronunciation)}));
    setText(AddressField::FullPronunciation,
            normalizedReading(joined({value(AddressField::LastName), value(AddressField::FirstName)})));
    if (value(AddressField::FullName) == value(AddressField::Company))
        setText(AddressField::FullPronunciation, value(AddressField::CompanyPronunciation));
    setText(AddressField::FullPronunciation, normalizedReading(value(AddressField::FullName)));
}

void ContactBuilder::fillNotes()
{
    m_notes.removeDuplicates();
    m_extraLines.removeDuplicates();
    m_report->movedToNotes += int(m_extraLines.size());
    for (const QString &line : std::as_const(m_extraLines))
        m_contact.warnings.append(text("kept in the notes: %1").arg(line.left(80)));
    const QString notes = (m_notes + m_extraLines).join(u'\n');
    if (!notes.isEmpty())
        m_contact.values.insert(AddressField::Notes, notes);
}

} // namespace VCard
