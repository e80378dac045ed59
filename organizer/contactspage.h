#ifndef CONTACTSPAGE_H
#define CONTACTSPAGE_H

#include "cardspage.h"

/** The contacts, in the order of their readings at first. */
class ContactsPage : public CardsPage
{
    Q_OBJECT
public:
    explicit ContactsPage(CategoryTable *table, QWidget *parent = nullptr);

public slots:
    /** Asks for a vCard file and imports it. */
    void importFile();
    /** Imports a vCard file and tells what came of it. */
    void importFrom(const QString &path);

protected:
    [[nodiscard]] CardDetails detailsOf(unsigned long card) const override;

private:
    [[nodiscard]] QString nameOf(unsigned long card) const;
};

#endif
