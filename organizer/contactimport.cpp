#include "contactimport.h"

#include "addressfields.h"
#include "contactnames.h"
#include "vcardreader.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QFile>
#include <QProgressDialog>

namespace {

constexpr int ProgressFrom = 200;   // cards
constexpr int CardsPerAction = 100; // one synchronisation to disk each

} // namespace

ContactImport::ContactImport(ContactBook *book, QWidget *parent) : QObject(parent), m_book(book), m_parent(parent)
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
