#ifndef CONTACTIMPORT_H
#define CONTACTIMPORT_H

#include "contactbook.h"
#include "vcardreader.h"

#include <QSet>

class QWidget;

/** Brings the contacts of a vCard file into the address box. */
class ContactImport : public QObject
{
    Q_OBJECT
public:
    /** @param parent progress is shown on it, from 200 cards on */
    ContactImport(ContactBook *book, QWidget *parent);

    /** Reads the file and saves its contacts, a few hundred at a time. A contact that is there already with
     * the same fields isn't doubled.
     * @return what came of it, for the user */
    QString run(const QString &path);

private:
    void collectPresent();
    bool take(const ContactFields &fields);
    bool saveBatch();
    [[nodiscard]] QString report(const VCardReport &read, bool saved, bool stopped) const;
    [[nodiscard]] static ContactTexts textsOf(const ContactFields &fields);
    [[nodiscard]] static QByteArray fingerprint(const ContactTexts &contact);

    ContactBook *m_book;
    QWidget *m_parent;
    QSet<QByteArray> m_present;
    QList<ContactTexts> m_batch;
    int m_saved = 0;
    int m_doubles = 0;
};

#endif
