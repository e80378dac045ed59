#ifndef BENCHMARKS_LISTSIDE_H
#define BENCHMARKS_LISTSIDE_H

#include <array>
#include <QObject>
#include <QTreeView>

/** A column of the list, from the left. */
struct ListColumn
{
    const char *code;
    const char *title;
};

enum { NameColumn, CompanyColumn, PhoneColumn, ReadingColumn };
inline constexpr std::array<ListColumn, 4> ListColumns = {
    {{"FULL", "Name"}, {"CMPN", "Company"}, {"TEL1", "Mobile phone"}, {"NAPR", "Reading"}}};

/** Counts what is painted on a widget. */
class PaintCounter : public QObject
{
public:
    [[nodiscard]] int paints() const { return m_paints; }
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    int m_paints = 0;
};

/** Contacts in a list of 480 x 640 pixels, with the same columns and the same font on both sides. What only
 * Qt does is done here, the same for both. */
class ListSide
{
public:
    virtual ~ListSide() = default;

    /** Reads all that the rows show, without a row. */
    virtual void readAll() = 0;
    /** Makes the rows of all contacts, by reading; paints nothing. */
    virtual void fill() = 0;
    virtual void empty() = 0;
    /** Brings in what an order that was clicked still lacks. */
    virtual void finishOrder() = 0;
    /** The contact that the last row shows. */
    [[nodiscard]] virtual unsigned long lastContact() = 0;
    /** Finds a contact, makes it the current one and brings it into sight. */
    virtual void select(unsigned long contact) = 0;
    /** Text of a cell. @param row from 0 */
    [[nodiscard]] virtual QString text(int row, int column) = 0;
    [[nodiscard]] virtual QTreeView &view() = 0;

    /** Presses and releases the mouse on a header, and has all rows of the new order. */
    void click(int column);
    /** Paints list and header, at once. */
    void repaint();
    /** Makes the first row the current one and brings it into sight. */
    void goToFirst();
    void goToEnd();
    void scrollPage();
    [[nodiscard]] bool isAtEnd();
    [[nodiscard]] bool isLastCurrent();
    [[nodiscard]] int rowHeight();
    [[nodiscard]] int rows();
    /** Length of all that the rows show. */
    [[nodiscard]] qint64 sizeOfTexts();

protected:
    ListSide() = default;
    /** For the end of the constructors. */
    void showWindow();

private:
    Q_DISABLE_COPY_MOVE(ListSide)
    PaintCounter m_counter;
};

#endif
