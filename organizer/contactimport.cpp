#include "contactimport.h"

#include "addressfields.h"
#include "contactnames.h"

#include <QCryptographicHash>
#include <QFile>
#include <QProgressDialog>

namespace {

constexpr int ProgressFrom = 200;   // cards
constexpr int CardsPerAction = 100; // one synchronisation to disk each

} // namespace

ContactImport::ContactImport(ContactBook *book, QWidget *parent)
    : QObject(parent), m_book(book), m_parent(parent)
{
}

QByteArray ContactImport::fingerprint(const ContactTexts &contact)
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    for (auto it = contact.cbegin(); it != contact.cend(); ++it) {
        if (it->isEmpty())
            continue;
        hash.addData(QByteArray::number(it.key()) + '=' + it->toUtf8() + '\0');
    }
    return hash.result();
}

void ContactImport::collectPresent()
{
    m_present.clear();
    for (int row = 0; row < m_book->count(); ++row)
        m_present.insert(fingerprint(m_book->texts(m_book->cardAt(row))));
}

/* The device-wide categories are not open to the import yet; their names are kept in the field for groups. */
ContactTexts ContactImport::textsOf(const ContactFields &fields)
{
    ContactTexts texts = fields.values;
    if (!fields.categories.isEmpty() && !texts.contains(AddressField::Groups))
        texts.insert(AddressField::Groups, fields.categories.join(QLatin1String(", ")));
    ContactNames::completeNames(texts, texts);
    return texts;
}

bool ContactImport::saveBatch()
{
    if (m_batch.isEmpty())
        return true;
    if (!m_book->addAll(m_batch))
        return false;
    m_saved += static_cast<int>(m_batch.size());
    m_batch.clear();
    return true;
}

/* Takes one contact; false when the box doesn't take any more. */
bool ContactImport::take(const ContactFields &fields)
{
    const ContactTexts texts = textsOf(fields);
    const QByteArray print = fingerprint(texts);
    if (m_present.contains(print)) {
        ++m_doubles;
        return true;
    }
    m_present.insert(print);
    m_batch.append(texts);
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
        if (done % CardsPerAction == 0)
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
