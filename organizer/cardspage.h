#ifndef CARDSPAGE_H
#define CARDSPAGE_H

#include "book.h"

#include <QWidget>

class CardForm;
class CardList;
class CategoryTable;
class KyCategorySelect;
class QAction;
class QLabel;
class QMenu;
class QStackedWidget;
class QTextBrowser;
class QToolBar;
class SearchLine;

/** What is known of a card, for people. */
struct CardDetails
{
    QString heading;
    QString subheading;
    QList<QPair<QString, QString>> rows; ///< name and text
};

/** The texts of a page that depend on what it is for. */
struct PageWords
{
    QString title;
    QString none;              ///< shown in an empty box
    QString (*counted)(int n); ///< such as "12 contacts"
};

/**
 * A page over one box: its cards as a list with a chooser of categories and a search, what is known of the
 * selected one, and the form. A subclass gives the list, the details and the form, and calls begin().
 */
class CardsPage : public QWidget
{
    Q_OBJECT
public:
    [[nodiscard]] Book *book() const { return m_book; }
    /** True while the form is open. */
    [[nodiscard]] bool isEditing() const;
    /** Selects a row of the list and shows it. */
    void selectRow(int row);
    /** Gives the keys to the list. */
    void focusList();
    /** Shows a category, 0 for all cards. */
    void showCategory(int category);
    /** Searches as if the text had been typed, without the pause. */
    void search(const QString &text);
    /** What the list shows, in a line: how many cards, and the names at the top of its window. */
    [[nodiscard]] QString summary() const;

public slots:
    void newCard();
    void editCard();
    /** Asks, then deletes; the deletion can be undone until the next one. */
    void deleteCard();
    /** Asks with the number, then deletes all cards that are shown; can be undone as well. */
    void deleteShown();
    /** Brings back what was deleted last, all of it or nothing. */
    void undoDelete();
    /** Leaves the form, asking about what isn't saved. */
    void showList();
    /** Opens the dialog in which categories are made, renamed and removed. */
    void showCategories();

protected:
    CardsPage(const BoxKind &kind, CategoryTable *table, PageWords words, QWidget *parent);

    /** Builds the page around its list and its form. */
    void begin(CardList *list, CardForm *form);
    [[nodiscard]] virtual CardDetails detailsOf(unsigned long card) const = 0;
    [[nodiscard]] CategoryTable *categories() const { return m_table; }
    /** The menu of what is seldom needed. */
    [[nodiscard]] QMenu *menu() const { return m_menu; }

private:
    void addActions(QWidget *page, QToolBar *bar);
    QWidget *makeList();
    QWidget *makeChoosers();
    void addOrders();
    void fillCategories();
    void categoriesChanged();
    void chooseCategory(int id);
    void showSelected();
    void updateState();
    void setListEnabled(bool on);
    void showCard(unsigned long card);
    void showAnew();
    void closeForm();
    void removeShown(const QList<unsigned long> &ids);
    [[nodiscard]] QString htmlOf(unsigned long card) const;
    [[nodiscard]] QString deleteQuestion() const;
    [[nodiscard]] QString stateText() const;

    PageWords m_words;
    CategoryTable *m_table;
    Book *m_book;
    QStackedWidget *m_stack;
    KyCategorySelect *m_chooser = nullptr;
    SearchLine *m_search = nullptr;
    CardList *m_list = nullptr;
    QTextBrowser *m_details = nullptr;
    QLabel *m_state = nullptr;
    CardForm *m_form = nullptr;
    QMenu *m_menu;
    QAction *m_edit = nullptr;
    QAction *m_delete = nullptr;
    QAction *m_deleteShown = nullptr;
    QAction *m_undo = nullptr;
    QList<Card> m_deleted;
    unsigned long m_card = 0;   ///< the selected card; survives a change of the list
    bool m_listHadKeys = false; ///< when it was disabled
};

#endif
