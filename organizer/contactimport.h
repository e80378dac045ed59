#ifndef CONTACTIMPORT_H
#define CONTACTIMPORT_H

#include "contactbook.h"

#include <QObject>
#include <QSet>

class QWidget;

/** Brings the contacts of a vCard file into the address box. */
class ContactImport : public QObject
{
    Q_OBJECT
public:
    /** @param parent progress is shown on it, from 200 cards on */
    ContactImport(ContactBook *book, QWidget *parent);

    /** Reads the file and saves its contacts, a few hundred at a time. A contact that is there already with the
     * same fields isn't doubled.
     * @return what came of it, for the user */
    QString run(const QString &path);

private:
    void collectPresent();
    bool saveAll(const QList<ContactTexts> &contacts);
    [[nodiscard]] static QByteArray fingerprint(const ContactTexts &contact);

    ContactBook *m_book;
    QWidget *m_parent;
    QSet<QByteArray> m_present;
    int m_saved = 0;
    bool m_cancelled = false;
};

#endif
