#include "kydblistview.h"

#include "kypdatamanager.h"
#include "qcopchannel.h"
#include "qcopenvelope.h"
#include "timestring.h"
#include <QHeaderView>
#include <QPointer>
#include <QScrollBar>

namespace {

/** Types of items as the record store numbers them. */
enum ItemType { SjisText = 1, Time = 4, OtherSjisText = 16, Utf8Text = 17 };

/** Null, which no item is called, for a column that there isn't. */
const char *codeOf(const QList<KyDbListViewColumn> &columns, int column)
{
    return column >= 0 && column < columns.size() ? columns[column].code : nullptr;
}

QString firstLine(const QString &text)
{
    return text.left(text.indexOf(u'\n'));
}

QString timeText(const QDateTime &moment, bool ampm)
{
    if (!moment.isValid())
        return QString();
    return TimeString::numberDateString(moment.date(), TimeString::currentDateFormat()) + u' ' +
           TimeString::timeString(moment.time(), ampm);
}

} // namespace

class KyDbListViewPrivate
{
public:
    QList<KyDbListViewColumn> columns;
    QPointer<KyPDataManager> db;
    int sortColumn = -1;
    bool ascending = true;
    bool ampm = true; ///< twelve hours
};

KyDbListView::KyDbListView(QWidget *parent, const char *name)
    : KyListView(parent, name), d(new KyDbListViewPrivate)
{
    setColumnCount(0);
    header()->setSectionsClickable(true);
    header()->setSortIndicatorShown(true);
    connect(header(), &QHeaderView::sectionClicked, this, &KyDbListView::headerClicked);
    updateSortIndicator();
    d->ampm = TimeString::currentAmPm();
    auto *channel = new QCopChannel("QPE/System", this);
    connect(channel, &QCopChannel::received, this, &KyDbListView::systemMessage);
}

KyDbListView::~KyDbListView() = default;

void KyDbListView::setDb(KyPDataManager *db)
{
    d->db = db;
    setAllDataNum(db ? db->count() : 0);
    updateSortIndicator();
}

KyPDataManager *KyDbListView::db() const
{
    return d->db;
}

void KyDbListView::setColumns(const QList<KyDbListViewColumn> &list)
{
    d->columns = list;
    QStringList titles;
    for (const KyDbListViewColumn &column : list) {
        if (!column.title.isEmpty())
            titles.append(column.title);
    }
    setColumnCount(int(titles.size()));
    setHeaderLabels(titles);
    updateSortIndicator();
}

const QList<KyDbListViewColumn> &KyDbListView::columns() const
{
    return d->columns;
}

void KyDbListView::update(unsigned long card)
{
    setAllDataNum(d->db ? d->db->count() : 0);
    if (d->db)
        setCurrentCardId(card);
}

void KyDbListView::setCurrentCardId(unsigned long card)
{
    QTreeWidgetItem *item = card ? findCard(card) : topLevelItem(0);
    if (!item)
        return;
    const int left = horizontalScrollBar()->value();
    setCurrentItem(item, 0, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    scrollTo(currentIndex());              // a slot may have replaced the row
    horizontalScrollBar()->setValue(left); // which column is in sight is the user's affair
}

unsigned long KyDbListView::currentCardId(QTreeWidgetItem *item) const
{
    if (!item)
        item = selectedItems().value(0);
    const int row = item && d->db ? indexOfTopLevelItem(item) : -1;
    return row < 0 ? 0 : d->db->cardIdFromNumber(static_cast<unsigned long>(row) + 1);
}

QTreeWidgetItem *KyDbListView::findCard(unsigned long card) const
{
    const unsigned long number = d->db ? d->db->numberFromCardId(card) : 0;
    return topLevelItem(int(number) - 1);
}

void KyDbListView::sort(int column, bool ascending)
{
    const char *code = codeOf(d->columns, column);
    if (!d->db || !code)
        return;
    d->db->sort(code, ascending);
    updateSortIndicator();
    triggerUpdate();
}

bool KyDbListView::deleteItem(unsigned long card)
{
    if (!card)
        card = currentCardId();
    QTreeWidgetItem *item = card ? findCard(card) : nullptr;
    if (!item || !d->db->deleteCard(&card, KyPDataManager::DeleteSingle))
        return false;
    const QPersistentModelIndex row = indexFromItem(item);
    // Else the view would make the next row current while it still has the line of another card.
    selectionModel()->clear();
    if (row.isValid())
        KyListView::deleteItem(itemFromIndex(row));
    setCurrentCardId(card);
    return true;
}

int KyDbListView::sortColumn() const
{
    return d->sortColumn;
}

bool KyDbListView::ascending() const
{
    return d->ascending;
}

void KyDbListView::headerClicked(int column)
{
    sort(column, column == d->sortColumn ? !d->ascending : true);
    updateSortIndicator(); // the header turns its indicator at a click, whatever comes of it
}

void KyDbListView::updateSortIndicator()
{
    setSortInfo();
    header()->setSortIndicator(d->sortColumn, d->ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
}

void KyDbListView::setSortInfo()
{
    d->sortColumn = -1;
    d->ascending = !d->db || d->db->ascendent();
    const int item = d->db ? d->db->sortItem() : 0;
    for (int column = 0; item != 0 && d->sortColumn < 0 && column < d->columns.size(); ++column) {
        if (d->db->nameToItemId(d->columns[column].code) == item)
            d->sortColumn = column;
    }
}

QString KyDbListView::itemText(int line, int column) const
{
    if (!d->db) {
        qDebug("[KyDbListView::itemText] unexpected NULL");
        return QString();
    }
    const char *code = codeOf(d->columns, column);
    const int type = d->db->readItemType(code);
    if (type == 0) {
        qDebug("no such item");
        return QString();
    }
    const unsigned long card = line > 0 ? d->db->cardIdFromNumber(static_cast<unsigned long>(line)) : 0;
    if (card == 0) // which would stand for the manager's current card
        return QString();
    switch (type) {
    case SjisText:
    case OtherSjisText:
    case Utf8Text:
        return firstLine(d->db->readItem(code, card));
    case Time:
        return timeText(d->db->readTimeItem(code, card, false), d->ampm);
    default:
        qDebug("unexpected item type for itemText.");
        return QString();
    }
}

void KyDbListView::systemMessage(const QByteArray &message, const QByteArray &arguments)
{
    if (message != "clockChange(bool)")
        return;
    QCopArguments stream(arguments);
    bool ampm = false;
    stream >> ampm;
    if (stream.status() != QDataStream::Ok)
        return;
    d->ampm = ampm;
    triggerUpdate();
}
