#ifndef POSTALPAGE_H
#define POSTALPAGE_H

#include "kyaddresslistbox.h"

#include <QWidget>

class QLabel;
class QLineEdit;
class QPushButton;
struct ydic_info;

/** Postal codes and addresses, found while the user types one or the other. The dictionary is open only while
 * something is looked up, so that its card can be taken out at any time. */
class PostalPage : public QWidget
{
    Q_OBJECT
public:
    explicit PostalPage(QWidget *parent = nullptr);

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
    bool eventFilter(QObject *object, QEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void find();
    void findCode(const QString &code, ydic_info *info);
    void findAddress(const QString &address, ydic_info *info);
    void walk(int mode);
    void showFound(const QList<KYAddressItem> &items, const QString &status);

    QLineEdit *m_line;
    KyAddressListBox *m_list;
    QLabel *m_status;
    QPushButton *m_previous;
    QPushButton *m_next;
    QPushButton *m_copy;
    QString m_code; ///< the code that is shown; empty when addresses of several are
};

#endif
