#include "contact.h"

#include <algorithm>
#include <QMap>
#include <QRegularExpression>
#include <QSharedData>

class ContactPrivate : public QSharedData
{
public:
    bool operator==(const ContactPrivate &other) const
    {
        return texts == other.texts && categories == other.categories;
    }

    QMap<int, QString> texts; // none of them empty
    QList<int> categories;
};

namespace {

bool isEastAsianCharacter(uint character)
{
    switch (QChar::script(character)) {
    case QChar::Script_Han:
    case QChar::Script_Hiragana:
    case QChar::Script_Katakana:
    case QChar::Script_Hangul:
        return true;
    default:
        return false;
    }
}

QString joined(const Contact &contact, std::initializer_list<Contact::Key> keys)
{
    QStringList parts;
    for (const Contact::Key key : keys)
        parts.append(contact.find(key));
    parts.removeAll(QString());
    return parts.join(u' ');
}

QString firstOf(const Contact &contact, std::initializer_list<Contact::Key> keys)
{
    for (const Contact::Key key : keys) {
        const QString text = contact.find(key);
        if (!text.isEmpty())
            return text;
    }
    return QString();
}

} // namespace

Contact::Contact() : d(new ContactPrivate) {}
Contact::Contact(const Contact &other) = default;
Contact &Contact::operator=(const Contact &other) = default;
Contact::~Contact() = default;

bool Contact::operator==(const Contact &other) const
{
    return d == other.d || *d == *other.d;
}

QString Contact::find(int key) const
{
    return d->texts.value(key);
}

void Contact::replace(int key, const QString &text)
{
    if (text.isEmpty())
        d->texts.remove(key);
    else
        d->texts.insert(key, text);
}

void Contact::setEmails(const QString &addresses)
{
    replace(Emails, addresses);
}

QStringList Contact::emailList() const
{
    static const QRegularExpression between(QStringLiteral("[\\s,;]+"));
    return find(Emails).split(between, Qt::SkipEmptyParts);
}

void Contact::setChildren(const QString &names)
{
    replace(Children, names);
}

QStringList Contact::childrenList() const
{
    static const QRegularExpression between(QStringLiteral("\\s*[\\r\\n,;]\\s*"));
    return find(Children).trimmed().split(between, Qt::SkipEmptyParts);
}

bool Contact::isLastNameFirst(const QString &name)
{
    const QList<uint> characters = name.toUcs4();
    return std::any_of(characters.cbegin(), characters.cend(), isEastAsianCharacter);
}

QString Contact::fullName() const
{
    const QString name = isLastNameFirst(find(LastName) + find(FirstName))
                             ? joined(*this, {LastName, MiddleName, FirstName})
                             : joined(*this, {Title, FirstName, MiddleName, LastName, Suffix});
    return name.isEmpty() ? firstOf(*this, {Nickname, Company, DefaultEmail, HomeMobile}) : name;
}

QList<int> Contact::categories() const
{
    return d->categories;
}

void Contact::setCategories(const QList<int> &categories)
{
    d->categories = categories;
}
