#include "contactimport.h"

#include "addressfields.h"
#include "categorytable.h"
#include "contactnames.h"

#include <QCryptographicHash>
#include <QFile>
#include <QProgressDialog>

namespace {

constexpr int ProgressFrom = 200;   // cards
constexpr int ProgressStep = 100;   // cards
constexpr int CardsPerAction = 500; // one synchronisation to disk each, and one new view

} // namespace

ContactImport::ContactImport(Book *book, CategoryTable *table, QWidget *parent)
    : QObject(parent), m_book(book), m_table(table), m_parent(parent)
{
}

/* Without the groups, which hold the categories that once had no room. */
QByteArray ContactImport::fingerprint(const CardValues &contact)
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    for (auto it = contact.cbegin(); it != contact.cend(); ++it) {
        const QString text = it->toString();
        if (!text.isEmpty() && it.key() != AddressField::Groups)
            hash.addData(QByteArray::number(it.key()) + '=' + text.toUtf8() + '\0');
    }
    return hash.result();
}

void ContactImport::collectPresent()
{
    m_present.clear();
    for (unsigned long card : m_book->allCards())
        m_present.insert(fingerprint(m_book->values(card)));
}

/* The id of a category, made when it is missing; 0 when there is no room for it. */
int ContactImport::categoryOf(const QString &name)
{
    const int present = m_table->id(name);
    if (present != 0 || m_unplaced.contains(name))
        return present;
    const int added = m_table->add(name);
    if (added == 0)
        m_unplaced.insert(name);
    return added;
}

CardValues ContactImport::valuesOf(const ContactFields &fields)
{
    CardValues values;
    for (auto it = fields.values.cbegin(); it != fields.values.cend(); ++it)
        values.insert(it.key(), it.value());
    ContactNames::completeNames(values, values);
    return values;
}

void ContactImport::file(Card &card, const QStringList &categories)
{
    QStringList unplaced;
    for (const QString &name : categories) {
        const int category = categoryOf(name);
        if (category != 0)
            card.categories.append(category);
        else
            unplaced.append(name);
    }
    if (!unplaced.isEmpty() && !card.values.contains(AddressField::Groups))
        card.values.insert(AddressField::Groups, unplaced.join(QLatin1String(", ")));
}

bool ContactImport::saveBatch()
{
    if (m_batch.isEmpty())
        return true;
    if (m_book->addAll(m_batch) == 0)
        return false;
    m_saved += static_cast<int>(m_batch.size());
    m_batch.clear();
    return true;
}

/* Takes one contact; false when the box doesn't take any more. Its categories are made here, since that
 * handles events, and no event may come into the transaction of a batch. */
bool ContactImport::take(const ContactFields &fields)
{
    Card card{valuesOf(fields), {}};
    const QByteArray print = fingerprint(card.values);
    if (m_present.contains(print)) {
        ++m_doubles;
        return true;
    }
    m_present.insert(print);
    file(card, fields.categories);
    m_batch.append(card);
    return m_batch.size() < CardsPerAction || saveBatch();
}

QString ContactImport::run(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return tr("%1 can't be read: %2").arg(path, file.errorString());
    if (!m_book->ask())
        return tr("The contacts are in use by another application. Nothing was imported.");
    const int cards = VCardReader::countCards(&file);
    QProgressDialog progress(tr("Importing contacts"), tr("Stop"), 0, cards, m_parent);
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(cards < ProgressFrom ? INT_MAX : 0);

    collectPresent();
    VCardReader reader(&file);
    bool saving = true;
    for (int done = 0; saving && !progress.wasCanceled(); ++done) {
        const std::optional<ContactFields> fields = reader.next();
        if (!fields)
            break;
        saving = take(*fields);
        if (done % ProgressStep == 0)
            progress.setValue(done);
    }
    saving = saving && saveBatch();
    progress.setValue(cards);
    return report(reader.report(), saving, progress.wasCanceled());
}

QString ContactImport::report(const VCardReport &read, bool saved, bool stopped) const
{
    VCardReport imported = read;
    imported.imported = m_saved;
    QStringList lines(importReport(imported));
    if (m_doubles > 0)
        lines.append(m_doubles == 1 ? tr("1 contact was there already")
                                    : tr("%1 contacts were there already").arg(m_doubles));
    if (!saved)
        lines.append(
            tr("The rest could not be saved: the storage may be full, or another application has the "
               "contacts"));
    else if (stopped)
        lines.append(tr("The rest was left out, as you wished"));
    return lines.join(QLatin1Char('\n'));
}
