#include "contactbook.h"

#include "addressfields.h"
#include "kypdatamanagerindexinfo.h"

namespace {

constexpr int RetryInterval = 50;  // ms, until the box was open once
constexpr int WatchInterval = 300; // ms, to see that it was lent or came back

} // namespace

ContactBook::ContactBook(QObject *parent) : QObject(parent)
{
    connect(&m_watch, &QTimer::timeout, this, &ContactBook::look);
    open();
    m_available = isAvailable();
    m_watch.start(m_available ? WatchInterval : RetryInterval);
}

bool ContactBook::isAvailable() const
{
    return m_box && m_box->isOpened() && m_box->count() >= 0;
}

/* A manager that could not open has no index table: a later attempt needs a new one. The files are looked at
 * each time, since an application that starts at the same moment may have been in the way of their making. */
void ContactBook::open()
{
    m_box.reset();
    KyPDataBase::createAddressbookFile(KyPDataManagerIndexInfo());
    m_box = std::make_unique<KyPDataBase>(KyPDataBase::addressbookFileName(false),
                                          KyPDataBase::addressbookItems(), nullptr, false);
}

bool ContactBook::ask()
{
    if (!isAvailable())
        open();
    look();
    return m_available;
}

void ContactBook::look()
{
    if (m_watch.interval() == RetryInterval && !isAvailable())
        open();
    const bool available = isAvailable();
    if (available == m_available)
        return;
    m_available = available;
    m_watch.setInterval(WatchInterval);
    emit availableChanged(available);
    if (available)
        emit contactsChanged();
}

int ContactBook::count() const
{
    return isAvailable() ? m_box->count() : 0;
}

unsigned long ContactBook::cardAt(int row) const
{
    return m_box->cardIdFromNumber(static_cast<unsigned long>(row) + 1);
}

int ContactBook::rowOf(unsigned long card) const
{
    return card == 0 ? -1 : static_cast<int>(m_box->numberFromCardId(card)) - 1;
}

QString ContactBook::text(unsigned long card, int field) const
{
    return m_box->readField(field, card);
}

ContactTexts ContactBook::texts(unsigned long card) const
{
    ContactTexts result;
    for (int field = AddressField::First; field <= AddressField::Last; ++field) {
        const QString value = text(card, field);
        if (!value.isEmpty())
            result.insert(field, value);
    }
    return result;
}

unsigned long ContactBook::write(unsigned long card, const ContactTexts &changed)
{
    if (!m_box->startEditCard(card))
        return 0;
    for (auto it = changed.begin(); it != changed.end(); ++it) {
        const bool written =
            it->isEmpty() ? m_box->clearField(it.key()) : m_box->writeField(it.key(), it.value());
        if (!written) {
            m_box->cancelEditCard();
            return 0;
        }
    }
    return m_box->finishEditCard(&card) ? card : 0;
}

unsigned long ContactBook::save(unsigned long card, const ContactTexts &changed)
{
    if (!ask())
        return 0;
    const unsigned long saved = write(card, changed);
    if (saved != 0)
        emit contactsChanged();
    return saved;
}

std::optional<unsigned long> ContactBook::remove(unsigned long card)
{
    if (!ask() || !m_box->deleteCard(&card, KyPDataManager::DeleteSingle))
        return std::nullopt;
    emit contactsChanged();
    return card;
}

/* One transaction: a change that fails in it undoes all of it. */
bool ContactBook::addAll(const QList<ContactTexts> &contacts)
{
    if (!ask() || !m_box->beginAction())
        return false;
    bool written = true;
    for (const ContactTexts &contact : contacts)
        written = written && write(0, contact) != 0;
    const bool ended = m_box->endAction();
    emit contactsChanged();
    return ended && written;
}
