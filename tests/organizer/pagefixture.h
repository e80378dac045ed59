#ifndef KY_TEST_PAGEFIXTURE_H
#define KY_TEST_PAGEFIXTURE_H

#include "cardform.h"
#include "cardspage.h"
#include "categorytable.h"
#include "kycategoryselect.h"
#include "qcopenvelope.h"

#include <QComboBox>
#include <QDir>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QTreeView>

constexpr int Patience = 10000; // ms

/** Throws all boxes of this device away. */
inline void removeBoxes()
{
    QDir boxes(QDir::homePath() + QLatin1String("/Applications/dtm"));
    for (const QString &file : boxes.entryList(QDir::Files))
        boxes.remove(file);
}

/** Shows a window and gives it the focus, also where no window manager does. */
inline bool showActive(QWidget &window)
{
    window.show();
    if (!QTest::qWaitForWindowExposed(&window, Patience))
        return false;
    window.activateWindow();
    return QTest::qWaitForWindowActive(&window, Patience);
}

/** What the list of a page shows in a column. */
inline QStringList texts(const CardsPage &page, int column)
{
    const QAbstractItemModel *model = page.findChild<QTreeView *>()->model();
    QStringList result;
    for (int row = 0; row < model->rowCount(); ++row)
        result.append(model->index(row, column).data().toString());
    return result;
}

/** The editor of the page's form that has this label. */
template <typename Editor = QLineEdit> Editor *editor(const CardsPage &page, const QString &label)
{
    for (const auto *form : page.findChild<CardForm *>()->findChildren<QFormLayout *>()) {
        for (int row = 0; row < form->rowCount(); ++row) {
            const QLayoutItem *item = form->itemAt(row, QFormLayout::LabelRole);
            const auto *shown = item ? qobject_cast<QLabel *>(item->widget()) : nullptr;
            if (shown && shown->text() == label)
                return qobject_cast<Editor *>(form->itemAt(row, QFormLayout::FieldRole)->widget());
        }
    }
    return nullptr;
}

/** Types into the field of the form that has this label. */
inline void type(const CardsPage &page, const QString &label, const QString &text)
{
    auto *line = editor(page, label);
    QVERIFY2(line, qPrintable("no field " + label));
    line->setText(text);
}

/** Clicks the header of a column. */
inline void clickHeader(const CardsPage &page, int column)
{
    QHeaderView *header = page.findChild<QTreeView *>()->header();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                      {header->sectionViewportPosition(column) + 8, header->height() / 2});
}

/** The box in which a page's category is chosen. */
inline QComboBox *chooser(const CardsPage &page)
{
    return page.findChild<KyCategorySelect *>("category")->findChild<QComboBox *>();
}

/** Where the categories of the card in a page's form are chosen. */
inline KyCategorySelect &filing(const CardsPage &page)
{
    return *page.findChild<CardForm *>()->findChild<KyCategorySelect *>();
}

/** Gives a category another name and tells of it, as another application does. */
inline bool renameCategory(const QString &oldName, const QString &newName)
{
    const bool isRenamed = KyCategories().renameCategory(oldName, newName);
    QCopEnvelope envelope("QPE/System", "categoryChange(QString)");
    envelope << QString("other");
    return isRenamed;
}

/** A message of the close protocol for the contacts, as another application sends it. */
inline void tellAll(const char *message)
{
    QCopEnvelope envelope("QPE/System", message);
    envelope << QString("F0:KYADRS.BOX") << QString("other");
}

/** What the line below the list says. */
inline QString state(const CardsPage &page)
{
    return page.summary().section(QLatin1String(", from "), 0, 0);
}

#endif
