#ifndef BOOK_H
#define BOOK_H

#include "boxkind.h"

#include <memory>
#include <optional>
#include <QObject>
#include <QTimer>
#include <QVariant>

class QCopChannel;

/** Values by field number: a text, a number or a moment, as the field has it. */
using CardValues = QMap<int, QVariant>;

/** All that a card holds. */
struct Card
{
    CardValues values; ///< without empty fields
    QList<int> categories;
};

/** Which cards are wanted, and in what order. */
struct CardView
{
    int category = 0;   ///< 0 for all, or a category id, or UnfiledCategoryId
    QString search;     ///< the cards with this text in any field; all of them when empty
    int orderField = 0; ///< 0 for the box's own order
    bool ascending = true;

    /** True when no card of the box is left out. */
    [[nodiscard]] bool isWhole() const { return category == 0 && search.isEmpty(); }
};

/**
 * One of the standard boxes, made at first use, seen through a view.
 *
 * Another application may have the box at any time; isAvailable() tells whether it is ours now. A box that is
 * somebody else's is tried for again every 50 ms until it was open once; after that ask() asks for it. The
 * view that was wanted last holds again as soon as the box is back.
 */
class Book : public QObject
{
    Q_OBJECT
public:
    /** Longest text of a search, in bytes of UTF-8: an index keeps conditions of 50 bytes. */
    static constexpr int MaximumSearch = 42;

    explicit Book(const BoxKind &kind, QObject *parent = nullptr);
    ~Book() override;

    [[nodiscard]] bool isAvailable() const;
    /** Asks others for the box unless it is ours. @return isAvailable() */
    bool ask();

    /** @name The view
     * A change takes effect at once, or when the box is back.
     * @{ */
    [[nodiscard]] const CardView &view() const { return m_view; }
    void setCategory(int category);
    void setSearch(const QString &text); ///< at most MaximumSearch bytes
    void setOrder(int field, bool ascending);
    /** Makes the view anew, from the box as it is now. */
    void refresh();
    /** @} */

    [[nodiscard]] int count() const;
    /** Card at a row of the view, from 0; 0 when there is none. */
    [[nodiscard]] unsigned long cardAt(int row) const;
    /** Row of a card, -1 when it is not in the view. */
    [[nodiscard]] int rowOf(unsigned long card) const;
    /** True while the box has this card, in the view or not. */
    [[nodiscard]] bool exists(unsigned long card) const;
    [[nodiscard]] QString text(unsigned long card, int field) const;
    /** The value of a field; a null one when it is empty. */
    [[nodiscard]] QVariant value(unsigned long card, int field) const;
    /** All fields of a card that are not empty. */
    [[nodiscard]] CardValues values(unsigned long card) const;
    [[nodiscard]] QList<int> categories(unsigned long card) const;
    [[nodiscard]] Card card(unsigned long card) const;
    /** The ids of all cards of the box, whatever the view is. */
    [[nodiscard]] QList<unsigned long> allCards() const;
    /** The ids of all cards of the view. */
    [[nodiscard]] QList<unsigned long> shownCards() const;
    [[nodiscard]] const KyPDataBaseItemInfo &fields() const { return m_kind.fields; }
    /** Code of a field's item, four characters. */
    [[nodiscard]] QByteArray codeOf(int field) const;
    /** The box itself, for a list of its view. It may be another one at each cardsChanged(). */
    [[nodiscard]] KyPDataManager *box() const { return m_box.get(); }

    /** Writes the fields of @p changed to a card, 0 for a new one, and its categories when they are given; an
     * empty value clears a field. All or nothing.
     * @return the card, 0 when nothing could be saved */
    unsigned long save(unsigned long card, const CardValues &changed,
                       const std::optional<QList<int>> &categories = std::nullopt);
    /** Saves many new cards in one transaction: all of them, or none on failure.
     * @return the first of them, 0 on failure */
    unsigned long addAll(const QList<Card> &cards);
    /** @return the card next to the deleted one, or nothing on failure */
    std::optional<unsigned long> remove(unsigned long card);
    /** Deletes all cards of the view, or none on failure. */
    bool removeShown();

signals:
    void availableChanged(bool available);
    /** Other cards, other contents or another order. */
    void cardsChanged();

private:
    void look();
    void open();
    void receive(const QByteArray &message, const QByteArray &data);
    bool applyView();
    void leaveView();
    bool applyOrder();
    bool applySearch();
    void changeView(bool (Book::*apply)());
    bool searchAgain();
    unsigned long write(unsigned long card, const CardValues &changed);
    bool writeValue(int field, const QVariant &value);
    unsigned long writeCard(unsigned long card, const CardValues &changed,
                            const std::optional<QList<int>> &categories);

    BoxKind m_kind;
    CardView m_view;
    std::unique_ptr<KyPDataBase> m_box;
    QCopChannel *m_channel;
    QTimer m_watch;
    bool m_available = false;
    bool m_wasLent = false;
    bool m_isOpening = false;
    bool m_showsCategory = false;
};

#endif
