#ifndef CONTACTBOOK_H
#define CONTACTBOOK_H

#include "kypdatabase.h"

#include <functional>
#include <memory>
#include <QObject>
#include <QTimer>

/** Field numbers of the address box and their texts. */
using ContactTexts = QMap<int, QString>;

/**
 * The contacts of this device: the address box, made at first use.
 *
 * Another application may have the box at any time; isAvailable() tells whether it is ours now. A box that is
 * somebody else's is tried for again every 50 ms until it was open once; after that ask() asks for it.
 */
class ContactBook : public QObject
{
    Q_OBJECT
public:
    explicit ContactBook(QObject *parent = nullptr);

    [[nodiscard]] bool isAvailable() const;
    /** Asks others for the box unless it is ours. @return isAvailable() */
    bool ask();

    [[nodiscard]] int count() const;
    /** Card at a row of the list, from 0; 0 when there is none. */
    [[nodiscard]] unsigned long cardAt(int row) const;
    /** Row of a card, -1 when it is not in the list. */
    [[nodiscard]] int rowOf(unsigned long card) const;
    [[nodiscard]] QString text(unsigned long card, int field) const;
    /** All fields of a card that are not empty. */
    [[nodiscard]] ContactTexts texts(unsigned long card) const;

    /** Writes the fields of @p changed to a card, 0 for a new one; an empty text clears a field.
     * @return the card, 0 when nothing could be saved */
    unsigned long save(unsigned long card, const ContactTexts &changed);
    /** @return the card next to the deleted one, or nothing on failure */
    std::optional<unsigned long> remove(unsigned long card);

    /** Saves many new contacts in one transaction: all of them, or none on failure. */
    bool addAll(const QList<ContactTexts> &contacts);

signals:
    void availableChanged(bool available);
    void contactsChanged();

private:
    void look();
    void open();
    unsigned long write(unsigned long card, const ContactTexts &changed);

    std::unique_ptr<KyPDataBase> m_box;
    QTimer m_watch;
    bool m_available = false;
};

#endif
