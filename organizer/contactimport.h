#ifndef CONTACTIMPORT_H
#define CONTACTIMPORT_H

#include "book.h"
#include "vcardreader.h"

#include <QSet>

class CategoryTable;
class QWidget;

/** Brings the contacts of a vCard file into the address box. Their categories become categories of the
 * device; a name for which there is no room goes to the field for groups. */
class ContactImport : public QObject
{
    Q_OBJECT
public:
    /** @param parent progress is shown on it, from 200 cards on */
    ContactImport(Book *book, CategoryTable *table, QWidget *parent);

    /** Reads the file and saves its contacts, a few hundred at a time. A contact that is there already with
     * the same fields isn't doubled.
     * @return what came of it, for the user */
    QString run(const QString &path);

private:
    void collectPresent();
    bool take(const ContactFields &fields);
    bool saveBatch();
    [[nodiscard]] QString report(const VCardReport &read, bool saved, bool stopped) const;
    [[nodiscard]] static CardValues valuesOf(const ContactFields &fields);
    void file(Card &card, const QStringList &categories);
    [[nodiscard]] int categoryOf(const QString &name);
    [[nodiscard]] static QByteArray fingerprint(const CardValues &contact);

    Book *m_book;
    CategoryTable *m_table;
    QWidget *m_parent;
    QSet<QString> m_unplaced; ///< categories for which there is no room
    QSet<QByteArray> m_present;
    QList<Card> m_batch;
    int m_saved = 0;
    int m_doubles = 0;
};

#endif
