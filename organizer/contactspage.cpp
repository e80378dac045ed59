#include "contactspage.h"

#include "addressfields.h"
#include "contactform.h"
#include "contactimport.h"
#include "contactsmodel.h"
#include "resource.h"

#include <QAction>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QSplitter>
#include <QStackedWidget>
#include <QStyledItemDelegate>
#include <QTextBrowser>
#include <QToolBar>
#include <QTreeView>
#include <QVBoxLayout>

namespace {

/* Rows that a finger can hit. */
class RowDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        return QStyledItemDelegate::sizeHint(option, index) + QSize(0, option.fontMetrics.height() / 2);
    }
};

QString countText(int count)
{
    return count == 1 ? ContactsPage::tr("1 contact") : ContactsPage::tr("%1 contacts").arg(count);
}

} // namespace

ContactsPage::ContactsPage(QWidget *parent)
    : QWidget(parent), m_book(new ContactBook(this)), m_model(new ContactsModel(m_book, this)),
      m_stack(new QStackedWidget)
{
    m_form = new ContactForm(m_book);
    m_stack->addWidget(makeList());
    m_stack->addWidget(m_form);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_stack);

    connect(m_book, &ContactBook::availableChanged, this, &ContactsPage::updateState);
    connect(m_model, &QAbstractItemModel::modelReset, this, [this] { showCard(m_card); });
    connect(m_form, &ContactForm::saved, this, [this](unsigned long card) {
        m_stack->setCurrentIndex(0);
        showCard(card);
        m_list->setFocus();
    });
    connect(m_form, &ContactForm::cancelled, this, [this] {
        m_stack->setCurrentIndex(0);
        m_list->setFocus();
    });
    updateState();
    selectRow(0);
}

QWidget *ContactsPage::makeList()
{
    auto *page = new QWidget;
    auto *bar = new QToolBar;
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    addActions(bar);

    m_list = new QTreeView;
    m_list->setModel(m_model);
    m_list->setItemDelegate(new RowDelegate(m_list));
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setAlternatingRowColors(true);
    m_list->setAllColumnsShowFocus(true);
    m_list->header()->setStretchLastSection(true);
    const int letter = m_list->fontMetrics().averageCharWidth();
    m_list->header()->resizeSection(ContactsModel::Name, 24 * letter);
    m_list->header()->resizeSection(ContactsModel::Reading, 23 * letter);
    connect(m_list, &QTreeView::activated, this, &ContactsPage::editContact);
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &ContactsPage::showSelected);

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
    layout->addWidget(splitter, 1);
    layout->addWidget(m_state);
    return page;
}

void ContactsPage::addActions(QToolBar *bar)
{
    const auto add = [&](const QString &text, const char *icon, const QKeySequence &keys,
                         void (ContactsPage::*slot)()) {
        QAction *action = bar->addAction(QIcon(Resource::loadPixmap(icon)), text);
        action->setShortcut(keys);
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        connect(action, &QAction::triggered, this, slot);
        addAction(action);
        return action;
    };
    add(tr("New"), "new", QKeySequence::New, &ContactsPage::newContact);
    m_edit = add(tr("Edit"), "edit", Qt::Key_F2, &ContactsPage::editContact);
    m_delete = add(tr("Delete"), "delete", QKeySequence::Delete, &ContactsPage::deleteContact);
    m_undo = add(tr("Undo"), "undo", QKeySequence::Undo, &ContactsPage::undoDelete);
    add(tr("Import"), "import", QKeySequence::Open, &ContactsPage::importFile);
}

unsigned long ContactsPage::selectedCard() const
{
    const QModelIndex current = m_list->currentIndex();
    return current.isValid() && m_book->isAvailable() ? m_book->cardAt(current.row()) : 0;
}

void ContactsPage::selectRow(int row)
{
    m_list->setCurrentIndex(m_model->index(row, 0));
    m_list->scrollTo(m_list->currentIndex(), QAbstractItemView::PositionAtCenter);
}

/* Shows the card where it stands now, else the first one. */
void ContactsPage::showCard(unsigned long card)
{
    const int row = m_book->rowOf(card);
    selectRow(row < 0 ? 0 : row);
    updateState();
}

void ContactsPage::showSelected()
{
    if (m_book->isAvailable())
        m_card = selectedCard();
    if (m_card == 0)
        m_details->clear();
    else if (m_book->isAvailable())
        m_details->setHtml(detailsOf(m_card));
    updateState();
}

QString ContactsPage::detailsOf(unsigned long card) const
{
    const KyPDataBaseItemInfo labels = KyPDataBase::addressbookItems();
    const ContactTexts texts = m_book->texts(card);
    const QString shownAbove[] = {texts.value(AddressField::FullName),
                                  texts.value(AddressField::FullPronunciation)};
    QString rows;
    for (auto it = texts.cbegin(); it != texts.cend(); ++it) {
        if (std::find(std::begin(shownAbove), std::end(shownAbove), *it) != std::end(shownAbove))
            continue;
        rows += QStringLiteral("<tr><td style='color:gray; padding-right:8px'>%1</td><td>%2</td></tr>")
                    .arg(labels.itemInfo(it.key()).label.toHtmlEscaped(),
                         it->toHtmlEscaped().replace(QLatin1Char('\n'), QLatin1String("<br>")));
    }
    return QStringLiteral("<div style='font-size:large; font-weight:bold'>%1</div>"
                          "<div style='color:gray'>%2</div><table style='margin-top:6px'>%3</table>")
        .arg(shownAbove[0].toHtmlEscaped(), shownAbove[1].toHtmlEscaped(), rows);
}

void ContactsPage::updateState()
{
    const bool available = m_book->isAvailable();
    const bool selected = available && m_card != 0;
    m_list->setEnabled(available);
    m_edit->setEnabled(selected);
    m_delete->setEnabled(selected);
    m_undo->setEnabled(!m_deleted.isEmpty());
    m_state->setText(available ? countText(m_book->count()) : tr("In use by another application"));
}

QString ContactsPage::summary() const
{
    QStringList names;
    for (QModelIndex row = m_list->indexAt({0, 0}); row.isValid() && names.size() < 5;
         row = m_list->indexBelow(row))
        names.append(m_model->index(row.row(), ContactsModel::Name).data().toString());
    return QStringLiteral("%1, from %2").arg(m_state->text(), names.join(QLatin1String(", ")));
}

void ContactsPage::newContact()
{
    m_form->edit(0);
    m_stack->setCurrentWidget(m_form);
}

void ContactsPage::editContact()
{
    if (!m_book->ask() || m_card == 0)
        return;
    m_form->edit(m_card);
    m_stack->setCurrentWidget(m_form);
}

void ContactsPage::showList()
{
    if (m_stack->currentWidget() == m_form)
        m_form->cancel();
}

void ContactsPage::deleteContact()
{
    if (!m_book->ask() || m_card == 0)
        return;
    const ContactTexts texts = m_book->texts(m_card);
    if (QMessageBox::question(this, tr("Contacts"), tr("Delete %1?").arg(texts.value(AddressField::FullName)),
                              QMessageBox::Yes | QMessageBox::No, QMessageBox::No) != QMessageBox::Yes)
        return;
    const std::optional<unsigned long> neighbour = m_book->remove(m_card);
    if (!neighbour) {
        QMessageBox::warning(this, tr("Contacts"), tr("The contact could not be deleted."));
        return;
    }
    m_deleted = texts;
    showCard(*neighbour);
}

void ContactsPage::undoDelete()
{
    if (m_deleted.isEmpty())
        return;
    const unsigned long card = m_book->save(0, m_deleted);
    if (card == 0) {
        QMessageBox::warning(this, tr("Contacts"), tr("The contact could not be brought back."));
        return;
    }
    m_deleted.clear();
    showCard(card);
}

void ContactsPage::importFile()
{
    const QString path = QFileDialog::getOpenFileName(this, tr("Import contacts"), QString(),
                                                      tr("vCard files (*.vcf *.vcard);;All files (*)"));
    if (!path.isEmpty())
        importFrom(path);
}

void ContactsPage::importFrom(const QString &path)
{
    ContactImport import(m_book, this);
    const QString report = import.run(path);
    QMessageBox::information(this, tr("Import contacts"), report);
}
