#ifndef CONTACTSMODEL_H
#define CONTACTSMODEL_H

#include <QAbstractTableModel>

class ContactBook;

/** The contacts as rows, in the order of the box; a row is read when it is shown. While the box is lent to
 * another application the model keeps its rows and the texts that it has shown. */
class ContactsModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { Name, Reading, Phone, ColumnCount };

    explicit ContactsModel(ContactBook *book, QObject *parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    struct Row
    {
        QString texts[ColumnCount];
    };
    [[nodiscard]] Row read(int row) const;
    void reset();

    ContactBook *m_book;
    int m_count = 0;
    mutable QHash<int, Row> m_shown;
};

#endif
