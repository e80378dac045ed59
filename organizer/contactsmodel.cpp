#include "contactsmodel.h"

#include "addressfields.h"
#include "contactbook.h"

ContactsModel::ContactsModel(ContactBook *book, QObject *parent) : QAbstractTableModel(parent), m_book(book)
{
    connect(book, &ContactBook::contactsChanged, this, &ContactsModel::reset);
    reset();
}

void ContactsModel::reset()
{
    beginResetModel();
    m_count = m_book->count();
    m_shown.clear();
    endResetModel();
}

int ContactsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_count;
}

int ContactsModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

ContactsModel::Row ContactsModel::read(int row) const
{
    const unsigned long card = m_book->cardAt(row);
    const auto firstOf = [&](std::initializer_list<int> fields) {
        for (int field : fields) {
            const QString text = m_book->text(card, field);
            if (!text.isEmpty())
                return text;
        }
        return QString();
    };
    return {{firstOf({AddressField::FullName, AddressField::FullPronunciation, AddressField::Company}),
             m_book->text(card, AddressField::FullPronunciation),
             firstOf({AddressField::MobilePhone, AddressField::HomePhone, AddressField::BusinessPhone,
                      AddressField::BusinessMobile})}};
}

QVariant ContactsModel::data(const QModelIndex &index, int role) const
{
    if (role != Qt::DisplayRole || !index.isValid())
        return {};
    auto shown = m_shown.constFind(index.row());
    if (shown == m_shown.constEnd()) {
        if (!m_book->isAvailable())
            return {};
        shown = m_shown.insert(index.row(), read(index.row()));
    }
    return shown->texts[index.column()];
}

QVariant ContactsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    const QString titles[ColumnCount] = {tr("Name"), tr("Reading"), tr("Phone")};
    return titles[section];
}
