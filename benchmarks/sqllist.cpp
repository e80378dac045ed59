#include "sqllist.h"

#include "report.h"
#include <QHeaderView>
#include <QSqlError>
#include <QSqlQuery>

namespace {

/** Behind the others, and not shown. */
constexpr int KeyColumn = static_cast<int>(ListColumns.size());

} // namespace

QSize RowsOfHeight::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    return {QStyledItemDelegate::sizeHint(option, index).width(), m_height};
}

SqlList::SqlList(const std::string &path)
{
    const QSqlDatabase database = connection(QString::fromStdString(path));
    m_model = std::make_unique<QSqlTableModel>(nullptr, database);
    m_model->setTable("list");
    for (int column = 0; column < KeyColumn; ++column)
        m_model->setHeaderData(column, Qt::Horizontal,
                               QString::fromLatin1(ListColumns[static_cast<size_t>(column)].title));
    m_view.setModel(m_model.get());
    m_view.setColumnHidden(KeyColumn, true);
    m_view.header()->setSortIndicator(ReadingColumn, Qt::AscendingOrder);
    m_view.setSortingEnabled(true);
    requireNoError("reading the database");
    empty();
    showWindow();
}

SqlList::~SqlList()
{
    m_view.setModel(nullptr);
    const QString name = m_model->database().connectionName();
    m_model.reset();
    QSqlDatabase::removeDatabase(name);
}

/** With the settings that SQLite has by itself, and the journal of the file. */
QSqlDatabase SqlList::connection(const QString &path)
{
    require(QSqlDatabase::isDriverAvailable("QSQLITE"), "finding the driver QSQLITE (libqt6sql6-sqlite)");
    QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", path);
    database.setDatabaseName(path);
    require(database.open(), "opening the database");
    return database;
}

void SqlList::requireNoError(const char *what) const
{
    require(m_model->lastError().type() == QSqlError::NoError, what);
}

void SqlList::readAll()
{
    QSqlQuery rows(m_model->database());
    rows.setForwardOnly(true);
    require(rows.exec("SELECT * FROM list ORDER BY NAPR"), "reading the database");
    while (rows.next())
        for (int column = 0; column <= KeyColumn; ++column)
            require(!rows.value(column).isNull(), "reading an item");
}

void SqlList::fill()
{
    fillFirstRows();
    finishOrder();
}

void SqlList::fillFirstRows()
{
    m_model->setFilter(QString());
}

void SqlList::empty()
{
    m_model->setFilter("0");
}

void SqlList::finishOrder()
{
    while (m_model->canFetchMore())
        m_model->fetchMore();
    requireNoError("reading the rows");
}

void SqlList::setRowHeight(int height)
{
    m_delegate = std::make_unique<RowsOfHeight>(height);
    m_view.setItemDelegate(m_delegate.get());
}

unsigned long SqlList::lastContact()
{
    return m_model->index(m_model->rowCount() - 1, KeyColumn).data().toULongLong();
}

void SqlList::select(unsigned long contact)
{
    for (int row = 0; row < m_model->rowCount(); ++row) {
        if (m_model->index(row, KeyColumn).data().toULongLong() == contact) {
            m_view.setCurrentIndex(m_model->index(row, 0));
            return;
        }
    }
}

QString SqlList::text(int row, int column)
{
    return m_model->index(row, column).data().toString();
}
