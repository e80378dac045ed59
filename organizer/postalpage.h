#ifndef POSTALPAGE_H
#define POSTALPAGE_H

#include "kyaddresslistbox.h"

#include <QWidget>

class PostalDictionary;
class QLabel;
class QLineEdit;
class QPushButton;

/** Postal codes and addresses, found while the user types one or the other. The dictionary is open only while
 * the page is to be seen, so that a card can be taken out. */
class PostalPage : public QWidget
{
    Q_OBJECT
public:
    explicit PostalPage(QWidget *parent = nullptr);
    ~PostalPage() override;

    /** What was found, in a line. */
    [[nodiscard]] QString summary() const;

public slots:
    /** Types into the line. */
    void search(const QString &text);
    /** Goes to the next code that exists, or to the one before. */
    void goToNext();
    void goToPrevious();
    /** Copies the code and the address of the row. */
    void copy();

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void find();
    void findCode(const QString &code);
    void findAddress(const QString &address);
    void walk(int mode);
    void showFound(const QList<KYAddressItem> &items, const QString &status);

    std::unique_ptr<PostalDictionary> m_dictionary;
    QLineEdit *m_line;
    KyAddressListBox *m_list;
    QLabel *m_status;
    QPushButton *m_previous;
    QPushButton *m_next;
    QPushButton *m_copy;
    QString m_code; ///< the code that is shown; empty when addresses of several are
};

#endif
