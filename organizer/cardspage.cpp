#include "cardspage.h"

#include "cardform.h"
#include "cardlist.h"
#include "categorytable.h"
#include "kycategorycombo.h"
#include "kycategoryselect.h"
#include "messages.h"
#include "qpeapplication.h"
#include "resource.h"
#include "searchline.h"

#include <QAction>
#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QScrollBar>
#include <QShortcut>
#include <QSplitter>
#include <QStackedWidget>
#include <QTextBrowser>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <utility>

CardsPage::CardsPage(const BoxKind &kind, CategoryTable *table, PageWords words, QWidget *parent)
    : QWidget(parent), m_words(std::move(words)), m_table(table), m_book(new Book(kind, this)),
      m_stack(new QStackedWidget), m_menu(new QMenu(this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_stack);
}

void CardsPage::begin(CardList *list, CardForm *form)
{
    m_list = list;
    m_form = form;
    m_stack->addWidget(makeList());
    m_stack->addWidget(m_form);
    addOrders();

    connect(m_book, &Book::availableChanged, this, &CardsPage::updateState);
    connect(m_book, &Book::cardsChanged, this, &CardsPage::showAnew);
    connect(m_table, &CategoryTable::changed, this, &CardsPage::categoriesChanged);
    connect(m_form, &CardForm::saved, this, [this](unsigned long card) {
        closeForm();
        showCard(card);
    });
    connect(m_form, &CardForm::cancelled, this, &CardsPage::closeForm);
    fillCategories();
    showAnew();
}

QWidget *CardsPage::makeList()
{
    auto *page = new QWidget;
    auto *bar = new QToolBar;
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    addActions(page, bar);

    connect(m_list, &QTreeWidget::itemActivated, this, &CardsPage::editCard);
    connect(m_list, &QTreeWidget::currentItemChanged, this, &CardsPage::showSelected);

    m_details = new QTextBrowser;
    m_details->setOpenLinks(false);
    auto *splitter = new QSplitter(Qt::Vertical);
    splitter->addWidget(m_list);
    splitter->addWidget(m_details);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 2);
    splitter->setChildrenCollapsible(false);

    m_state = new QLabel;
    m_state->setContentsMargins(6, 2, 6, 2);
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(bar);
    layout->addWidget(makeChoosers());
    layout->addWidget(splitter, 1);
    layout->addWidget(m_state);
    return page;
}

QWidget *CardsPage::makeChoosers()
{
    m_chooser = new KyCategorySelect;
    m_chooser->setObjectName(QStringLiteral("category"));
    connect(m_chooser, &KyCategorySelect::signalSelected, this, &CardsPage::chooseCategory);
    m_search = new SearchLine;
    m_search->setObjectName(QStringLiteral("search"));
    connect(m_search, &SearchLine::searched, this, [this](const QString &text) {
        m_book->setSearch(text);
        m_book->ask();
    });
    auto *find = new QShortcut(QKeySequence::Find, this);
    find->setContext(Qt::WidgetWithChildrenShortcut);
    connect(find, &QShortcut::activated, m_search, [this] { m_search->setFocus(); });

    auto *line = new QWidget;
    auto *layout = new QHBoxLayout(line);
    layout->setContentsMargins(6, 2, 6, 4);
    layout->addWidget(m_chooser, 2);
    layout->addWidget(m_search, 3);
    return line;
}

/* The way to the order of a column for those without a pointer. */
void CardsPage::addOrders()
{
    QMenu *orders = m_menu->addMenu(tr("Sort by"));
    for (int column = 0; column < m_list->columnCount(); ++column) {
        QAction *order = orders->addAction(m_list->headerItem()->text(column));
        connect(order, &QAction::triggered, m_list, [this, column] { m_list->headerClicked(column); });
    }
}

void CardsPage::addActions(QWidget *page, QToolBar *bar)
{
    const auto make = [&](const QString &text, const char *icon, const QKeySequence &keys,
                          void (CardsPage::*slot)()) {
        auto *action = new QAction(QIcon(Resource::loadPixmap(icon)), text, this);
        action->setShortcut(keys);
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        connect(action, &QAction::triggered, this, slot);
        page->addAction(action); // not in the form, where Delete and Undo mean something else
        return action;
    };
    bar->addAction(make(tr("New"), "new", QKeySequence::New, &CardsPage::newCard));
    bar->addAction(m_edit = make(tr("Edit"), "edit", Qt::Key_F2, &CardsPage::editCard));
    bar->addAction(m_delete = make(tr("Delete"), "delete", QKeySequence::Delete, &CardsPage::deleteCard));
    bar->addAction(m_undo = make(tr("Undo"), "undo", QKeySequence::Undo, &CardsPage::undoDelete));
    m_deleteShown = make(tr("Delete all shown..."), "delete", {}, &CardsPage::deleteShown);
    m_menu->addAction(m_deleteShown);
    m_menu->addAction(make(tr("Categories..."), "category", {}, &CardsPage::showCategories));

    auto *more = new QToolButton;
    more->setText(tr("More"));
    more->setMenu(m_menu);
    more->setPopupMode(QToolButton::InstantPopup);
    more->setToolButtonStyle(Qt::ToolButtonTextOnly);
    bar->addWidget(more);
}

void CardsPage::fillCategories()
{
    const int category = m_book->view().category;
    m_chooser->setCategories(category == 0 ? QList<int>() : QList<int>{category},
                             QPEApplication::applicationNameOf(qApp));
    m_chooser->setAllCategories(true);
    if (category != 0)
        m_chooser->setCurrentCategory(category);
}

/* A category that was shown and is gone leaves all cards. */
void CardsPage::categoriesChanged()
{
    const int category = m_book->view().category;
    if (category != 0 && m_table->name(category).isNull())
        m_book->setCategory(0);
    else
        m_book->refresh();
    fillCategories();
}

/* The dialog may leave no category at all, which the chooser takes for the unfiled ones. */
void CardsPage::chooseCategory(int id)
{
    const bool isNone = m_chooser->currentCategories().isEmpty();
    showCategory(id == KyCategoryCombo::AllCategories || isNone ? 0 : id);
}

void CardsPage::showCategory(int category)
{
    m_book->setCategory(category);
    m_book->ask();
    fillCategories();
}

void CardsPage::search(const QString &text)
{
    m_search->setText(text);
    m_search->flush();
}

void CardsPage::selectRow(int row)
{
    m_list->setCurrentItem(m_list->topLevelItem(row));
    m_list->scrollToItem(m_list->currentItem(), QAbstractItemView::PositionAtCenter);
}

void CardsPage::focusList()
{
    m_list->setFocus();
}

void CardsPage::showAnew()
{
    showCard(m_card);
}

/* Shows the card where it stands now, else the first one. The list stays in its place where it can, so that a
 * second click hits the same row. Of the rows that come and go none is chosen by the user. */
void CardsPage::showCard(unsigned long card)
{
    const int place = m_list->verticalScrollBar()->value();
    {
        const QSignalBlocker blocker(m_list);
        m_list->showView(m_book->rowOf(card) < 0 ? 0 : card);
    }
    m_list->verticalScrollBar()->setValue(place);
    m_list->scrollToItem(m_list->currentItem());
    showSelected();
}

void CardsPage::showSelected()
{
    if (m_book->isAvailable())
        m_card = m_list->currentCardId();
    if (m_card == 0)
        m_details->clear();
    else if (m_book->isAvailable())
        m_details->setHtml(htmlOf(m_card));
    updateState();
}

QString CardsPage::htmlOf(unsigned long card) const
{
    CardDetails details = detailsOf(card);
    const QString categories = m_table->names(m_book->categories(card));
    if (!categories.isEmpty())
        details.rows.append({tr("categories"), categories});
    QString rows;
    for (const auto &[name, text] : details.rows) {
        rows += QStringLiteral("<tr><td style='color:gray; padding-right:8px'>%1</td><td>%2</td></tr>")
                    .arg(name.toHtmlEscaped(),
                         text.toHtmlEscaped().replace(QLatin1Char('\n'), QLatin1String("<br>")));
    }
    return QStringLiteral("<div style='font-size:large; font-weight:bold'>%1</div>"
                          "<div style='color:gray'>%2</div><table style='margin-top:6px'>%3</table>")
        .arg(details.heading.toHtmlEscaped(), details.subheading.toHtmlEscaped(), rows);
}

QString CardsPage::stateText() const
{
    if (!m_book->isAvailable())
        return tr("In use by another application");
    const bool isFruitless = m_book->count() == 0 && !m_book->view().search.isEmpty();
    return isFruitless ? tr("No match") : m_words.counted(m_book->count());
}

void CardsPage::updateState()
{
    const bool available = m_book->isAvailable();
    const bool selected = available && m_card != 0;
    setListEnabled(available);
    m_edit->setEnabled(selected);
    m_delete->setEnabled(selected);
    m_deleteShown->setEnabled(available && m_book->count() > 0);
    m_undo->setEnabled(!m_deleted.isEmpty());
    m_state->setText(stateText());
    m_list->setPlaceholder(available && m_book->view().isWhole() ? m_words.none : m_state->text());
}

/* A list that is disabled gives the keys to the details next to it; when nobody took them from there, they
 * come back. */
void CardsPage::setListEnabled(bool on)
{
    const QWidget *focused = window()->focusWidget();
    if (!on && m_list->isEnabled())
        m_listHadKeys = focused == m_list;
    m_list->setEnabled(on);
    if (on && std::exchange(m_listHadKeys, false) && focused == m_details)
        m_list->setFocus();
}

QString CardsPage::summary() const
{
    QStringList names;
    for (const QTreeWidgetItem *row = m_list->itemAt(0, 0); row && names.size() < 5;
         row = m_list->itemBelow(row))
        names.append(row->text(m_list->nameColumn()));
    return names.isEmpty() ? m_state->text()
                           : QStringLiteral("%1, from %2").arg(m_state->text(), names.join(u", "));
}

void CardsPage::closeForm()
{
    m_stack->setCurrentIndex(0);
    m_list->setFocus();
}

void CardsPage::newCard()
{
    const int category = m_book->view().category;
    m_form->edit(0, category == UnfiledCategoryId ? 0 : category);
    m_stack->setCurrentWidget(m_form);
}

void CardsPage::editCard()
{
    m_search->flush();
    if (!m_book->ask() || m_card == 0)
        return;
    m_form->edit(m_card);
    m_stack->setCurrentWidget(m_form);
}

bool CardsPage::isEditing() const
{
    return m_stack->currentWidget() == m_form;
}

void CardsPage::showList()
{
    if (isEditing())
        m_form->cancel();
}

void CardsPage::showCategories()
{
    m_chooser->slotDialog();
}

void CardsPage::deleteCard()
{
    m_search->flush();
    if (!m_book->ask() || m_card == 0)
        return;
    const unsigned long card = m_card;
    const QString name = Messages::shortened(detailsOf(card).heading);
    if (!Messages::confirm(this, m_words.title, tr("Delete %1?").arg(name)))
        return;
    // Read now: another application may have changed it while the question was open.
    const Card contents = m_book->ask() ? m_book->card(card) : Card();
    const int place = m_list->verticalScrollBar()->value();
    const std::optional<unsigned long> neighbour = m_book->remove(card);
    if (!neighbour) {
        Messages::warn(this, m_words.title, tr("This could not be deleted."));
        return;
    }
    m_deleted = {contents};
    m_list->verticalScrollBar()->setValue(place); // without the card the list went to its beginning
    showCard(*neighbour);
}

QString CardsPage::deleteQuestion() const
{
    const QString question = tr("Delete %1?").arg(m_words.counted(m_book->count()));
    return m_book->view().isWhole() ? question + QLatin1Char('\n') + tr("That is all there is.") : question;
}

/* What goes is what the question counted: another application may have had the box meanwhile. */
void CardsPage::deleteShown()
{
    m_search->flush();
    if (!m_book->ask() || m_book->count() == 0)
        return;
    const QList<unsigned long> counted = m_book->shownCards();
    if (!Messages::confirm(this, m_words.title, deleteQuestion()))
        return;
    if (!m_book->ask() || m_book->shownCards() != counted) {
        Messages::inform(this, m_words.title, tr("The list has changed meanwhile. Nothing was deleted."));
        return;
    }
    removeShown(counted);
}

void CardsPage::removeShown(const QList<unsigned long> &ids)
{
    QApplication::setOverrideCursor(Qt::WaitCursor);
    QList<Card> cards;
    for (unsigned long card : ids)
        cards.append(m_book->card(card));
    const bool removed = m_book->removeShown();
    QApplication::restoreOverrideCursor();
    if (!removed) {
        Messages::warn(this, m_words.title, tr("These could not be deleted."));
        return;
    }
    m_deleted = cards;
    updateState();
}

void CardsPage::undoDelete()
{
    if (m_deleted.isEmpty())
        return;
    QList<Card> cards = m_deleted;
    for (Card &card : cards)
        card.categories = m_table->known(card.categories);
    const unsigned long first = m_book->addAll(cards);
    if (first == 0) {
        Messages::warn(this, m_words.title, tr("What was deleted could not be brought back."));
        return;
    }
    m_deleted.clear();
    showCard(first);
}
