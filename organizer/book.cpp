#include "book.h"

#include "kypdatamanagerindexinfo.h"
#include "qcopchannel.h"
#include "qcopenvelope.h"
#include "qpeapplication.h"

#include <QScopedValueRollback>

namespace {

constexpr int RetryInterval = 50;  // ms, until the box was open once
constexpr int WatchInterval = 300; // ms, to see that it was lent or came back

constexpr char AnyText[] = "    \xFE\x92\x11"; // any text item contains, ASCII case ignored

QByteArray searchExpression(const QString &text)
{
    const QByteArray wanted = text.toUtf8().left(Book::MaximumSearch);
    return AnyText + wanted + '\0';
}

} // namespace

Book::Book(const BoxKind &kind, QObject *parent)
    : QObject(parent), m_kind(kind), m_channel(new QCopChannel("QPE/System", this))
{
    connect(m_channel, &QCopChannel::received, this, &Book::receive);
    connect(&m_watch, &QTimer::timeout, this, &Book::look);
    open();
    m_available = isAvailable();
    m_wasLent = false;
    m_watch.start();
}

/* The box first: its closing sends messages. */
Book::~Book()
{
    m_watch.stop();
    m_box.reset();
}

bool Book::isAvailable() const
{
    return m_box && m_box->isOpened() && m_box->count() >= 0;
}

/* A manager that could not open has no index table: a later attempt needs a new one. The files are looked at
 * each time, since an application that starts at the same moment may have been in the way of their making.
 * Events are handled inside, the watch among them. */
void Book::open()
{
    if (m_isOpening)
        return;
    const QScopedValueRollback<bool> opening(m_isOpening, true);
    m_box.reset();
    m_kind.make(KyPDtm::KyPDataManagerIndexInfo());
    m_box = std::make_unique<KyPDataBase>(m_kind.file.constData(), m_kind.fields, nullptr, false);
    m_showsCategory = false;
    m_wasLent = true;
    m_watch.setInterval(isAvailable() ? WatchInterval : RetryInterval);
}

bool Book::ask()
{
    if (!isAvailable())
        open();
    look();
    return m_available;
}

/* A box that is lent and given back between two looks is told of by its messages. */
void Book::receive(const QByteArray &message, const QByteArray &data)
{
    if (message != "closeFile(QString,QString)" && message != "openFile(QString,QString)")
        return;
    QString path;
    QString sender;
    QCopArguments arguments(data);
    arguments >> path >> sender;
    if (sender == QPEApplication::applicationNameOf(qApp) ||
        (!path.isEmpty() && path != QLatin1String(m_kind.file)))
        return;
    m_wasLent = true;
    QTimer::singleShot(0, this, &Book::look);
}

void Book::look()
{
    const bool isUseless = m_box && m_box->isOpened() && m_box->count() < 0;
    if (isUseless || (m_watch.interval() == RetryInterval && !isAvailable()))
        open();
    const bool available = isAvailable();
    const bool isBack = available && (!m_available || m_wasLent);
    const bool isChange = available != m_available;
    m_available = available;
    m_wasLent = m_wasLent && !available;
    if (isChange)
        emit availableChanged(available);
    if (isBack)
        refresh();
}

QByteArray Book::codeOf(int field) const
{
    return QByteArray(m_kind.fields.itemInfo(field).code, 4);
}

/* Back to all cards. The index of a category isn't kept: a box has names for ten such indexes, which all
 * applications share. */
void Book::leaveView()
{
    m_box->unfilter(true);
    if (m_showsCategory)
        m_box->disableFilter(true);
    m_showsCategory = false;
}

/* A new order of an empty box can't be made and isn't missed. */
bool Book::applyOrder()
{
    if (m_view.orderField != 0)
        return m_box->sort(codeOf(m_view.orderField).constData(), m_view.ascending) || m_box->count() == 0;
    m_box->sort(m_view.ascending);
    return true;
}

bool Book::applySearch()
{
    if (m_view.search.isEmpty())
        return true;
    const QByteArray expression = searchExpression(m_view.search);
    const auto length = static_cast<unsigned long>(expression.size());
    return m_box->filter(expression.constData(), length, nullptr, 0, KyPDataManager::FilterCurrent, true) &&
           applyOrder();
}

bool Book::applyView()
{
    leaveView();
    if (m_view.category != 0) {
        m_showsCategory = m_box->enableFilter(m_view.category);
        if (!m_showsCategory)
            return false;
    }
    return applyOrder() && applySearch();
}

bool Book::searchAgain()
{
    m_box->unfilter(true);
    return applyOrder() && applySearch();
}

/* A manager takes over all indexes of its box when it is made: a new one has room where another application
 * used it up. */
void Book::changeView(bool (Book::*apply)())
{
    if (!isAvailable())
        return;
    if (!(this->*apply)()) {
        open();
        if (!isAvailable())
            return; // lent in between: the last picture stays
        if (!applyView())
            qWarning("Book: the view of %s can't be shown", m_kind.file.constData());
    }
    emit cardsChanged();
}

void Book::setCategory(int category)
{
    m_view.category = category;
    refresh();
}

void Book::setSearch(const QString &text)
{
    m_view.search = text;
    changeView(&Book::searchAgain);
}

void Book::setOrder(int field, bool ascending)
{
    m_view.orderField = field;
    m_view.ascending = ascending;
    changeView(&Book::applyOrder);
}

void Book::refresh()
{
    changeView(&Book::applyView);
}

int Book::count() const
{
    return isAvailable() ? m_box->count() : 0;
}

unsigned long Book::cardAt(int row) const
{
    return m_box->cardIdFromNumber(static_cast<unsigned long>(row) + 1);
}

int Book::rowOf(unsigned long card) const
{
    return card == 0 || !m_box ? -1 : static_cast<int>(m_box->numberFromCardId(card)) - 1;
}

/* Every card has a time of creation. */
bool Book::exists(unsigned long card) const
{
    return card != 0 && m_box && m_box->readTimeItem("CTTM", card).isValid();
}

QString Book::text(unsigned long card, int field) const
{
    return m_box->readField(field, card);
}

QVariant Book::value(unsigned long card, int field) const
{
    switch (m_kind.fields.itemInfo(field).type) {
    case KyPDataBaseItemInfo::UnsignedChar: {
        const int number = m_box->readUcharField(field, card);
        return number < 0 ? QVariant() : QVariant(number);
    }
    case KyPDataBaseItemInfo::Time: {
        const QDateTime time = m_box->readTimeField(field, card);
        return time.isValid() ? QVariant(time) : QVariant();
    }
    default: {
        const QString text = m_box->readField(field, card);
        return text.isEmpty() ? QVariant() : QVariant(text);
    }
    }
}

CardValues Book::values(unsigned long card) const
{
    CardValues result;
    for (int field = 1; field <= m_kind.lastField; ++field) {
        const QVariant present = value(card, field);
        if (present.isValid())
            result.insert(field, present);
    }
    return result;
}

QList<int> Book::categories(unsigned long card) const
{
    return m_box->readCategories(card);
}

Card Book::card(unsigned long card) const
{
    return {values(card), categories(card)};
}

QList<unsigned long> Book::allCards() const
{
    const char *all = m_kind.index.constData();
    QList<unsigned long> cards;
    for (unsigned long card = m_box->firstCard(all); card != 0; card = m_box->nextCard(card, all))
        cards.append(card);
    return cards;
}

QList<unsigned long> Book::shownCards() const
{
    QList<unsigned long> cards;
    const int rows = count();
    for (int row = 0; row < rows; ++row)
        cards.append(cardAt(row));
    return cards;
}

bool Book::writeValue(int field, const QVariant &value)
{
    if (value.toString().isEmpty())
        return m_box->clearField(field);
    switch (m_kind.fields.itemInfo(field).type) {
    case KyPDataBaseItemInfo::UnsignedChar:
        return m_box->writeField(field, static_cast<unsigned char>(value.toInt()));
    case KyPDataBaseItemInfo::Time:
        return m_box->writeField(field, value.toDateTime());
    default:
        return m_box->writeField(field, value.toString());
    }
}

unsigned long Book::write(unsigned long card, const CardValues &changed)
{
    if (!m_box->startEditCard(card))
        return 0;
    for (auto it = changed.begin(); it != changed.end(); ++it) {
        if (!writeValue(it.key(), it.value())) {
            m_box->cancelEditCard();
            return 0;
        }
    }
    return m_box->finishEditCard(&card) ? card : 0;
}

unsigned long Book::writeCard(unsigned long card, const CardValues &changed,
                              const std::optional<QList<int>> &categories)
{
    const unsigned long written = write(card, changed);
    if (written == 0 || !categories || m_box->readCategories(written) == *categories)
        return written;
    const bool filed = m_box->updateCategories(written, *categories, KyPDataManager::DeleteSingle, false);
    return filed ? written : 0;
}

/* One transaction: a change that fails in it undoes all of it. */
unsigned long Book::save(unsigned long card, const CardValues &changed,
                         const std::optional<QList<int>> &categories)
{
    if (!ask() || !m_box->beginAction())
        return 0;
    const unsigned long saved = writeCard(card, changed, categories);
    const bool ended = m_box->endAction();
    refresh();
    return ended ? saved : 0;
}

unsigned long Book::addAll(const QList<Card> &cards)
{
    if (!ask() || !m_box->beginAction())
        return 0;
    unsigned long first = 0;
    bool written = true;
    for (const Card &card : cards) {
        const unsigned long added = written ? writeCard(0, card.values, card.categories) : 0;
        written = added != 0;
        first = first == 0 ? added : first;
    }
    const bool ended = m_box->endAction();
    refresh();
    return ended && written ? first : 0;
}

std::optional<unsigned long> Book::remove(unsigned long card)
{
    if (!ask() || !m_box->deleteCard(&card, KyPDataManager::DeleteSingle))
        return std::nullopt;
    emit cardsChanged();
    return card;
}

bool Book::removeShown()
{
    unsigned long none = 0;
    const bool removed = ask() && m_box->deleteCard(&none, KyPDataManager::DeleteVisible);
    refresh();
    return removed;
}
