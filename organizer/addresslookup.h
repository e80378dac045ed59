#ifndef ADDRESSLOOKUP_H
#define ADDRESSLOOKUP_H

#include <QWidget>

class QLineEdit;

/** The lines of a form that hold one address. */
struct AddressLines
{
    QLineEdit *zip = nullptr;
    QLineEdit *state = nullptr;
    QLineEdit *city = nullptr;
    QLineEdit *street = nullptr;
};

/** Two buttons below an address: its code is looked up in the postal dictionary, or its place. */
class AddressLookup : public QWidget
{
    Q_OBJECT
public:
    explicit AddressLookup(const AddressLines &lines, QWidget *parent = nullptr);

public slots:
    /** Fills state and city from the code, as far as the user takes what is found. */
    void findAddress();
    /** Fills the code from the address. */
    void findCode();

private:
    enum class By { Code, Address };

    void convert(By by);
    void fill(const QString &state, const QString &city);
    [[nodiscard]] QString address() const;

    AddressLines m_lines;
};

#endif
