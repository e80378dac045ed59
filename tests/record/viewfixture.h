#ifndef KY_TEST_VIEWFIXTURE_H
#define KY_TEST_VIEWFIXTURE_H

#include "boxfixture.h"
#include "recordfixture.h"

/** What a search expression ends in, and what joins two terms. */
inline const QByteArray ExpressionEnd(1, '\0');
inline const QByteArray TermJoin("\xFE\x86");

/** The term that a text item contains a text; ASCII case is ignored. */
inline QByteArray containsText(const QByteArray &code, const QByteArray &text)
{
    return code + "\xFE\x92\x11" + text + '\0';
}

/** The term that a one-byte number is not below a value. */
inline QByteArray atLeast(const QByteArray &code, char value)
{
    return code + "\xFE\x98\x0B" + value + '\0';
}

/** A sort expression of one key in plain order. */
inline QByteArray plainKey(const QByteArray &code, bool ascending = true)
{
    return code + (ascending ? "\xFE\x82" : "\xFE\x83") + '\0';
}

/** The files of all temporary indexes. */
inline QStringList temporaryFiles()
{
    return folderNames(boxFolder(), QStringLiteral("ppin"));
}

/** Ten temporary indexes share the first three letters of the names of their boxes: those of other boxes go.
 */
inline void deleteTemporaryFiles()
{
    for (const QString &name : temporaryFiles())
        _IndexDelete(("F0:" + name.toLatin1()).constData());
}

/** A box whose cards have a title, a number and categories, open in a manager. */
class View
{
public:
    View() = default;
    View(const QByteArray &masterFile, const KyPDataManagerSortKey &order) : box(masterFile, order) {}
    Q_DISABLE_COPY_MOVE(View)

    TestBox box;
    KyPDataManager manager{box.path().constData(), nullptr, false};

    KyPDtm::KyPDataManagerPrivate &table() { return privateOf(manager); }
    KyPDtm::PIOIDXINFO &current() { return *table().currentIndex; }

    unsigned long add(const QString &title, unsigned char number, const QByteArray &categories)
    {
        unsigned long card = 0;
        const bool added = manager.editNewCard() && manager.writeItem("TITL", title) &&
                           manager.writeItem("NUMB", number) && writeCategories(categories) &&
                           manager.finishEditCard(&card);
        return added ? card : 0;
    }

    /** a to f, numbered 6 to 1: a, b, c, d in category 5, c, d, e in category 9, f in none. */
    void addSix()
    {
        manager.beginAction();
        add("a", 6, "\x05");
        add("b", 5, "\x05");
        add("c", 4, "\x05\x09");
        add("d", 3, "\x05\x09");
        add("e", 2, "\x09");
        add("f", 1, "");
        manager.endAction();
    }

    bool setCategories(unsigned long card, const QByteArray &categories)
    {
        return manager.startEditCard(card) && writeCategories(categories) && manager.finishEditCard(&card);
    }

    /** The titles of the view in its order; the current card stays. */
    QString titles()
    {
        QString titles;
        for (unsigned long card = manager.firstCard(); card; card = manager.nextCard(card))
            titles += manager.readItem("TITL", card);
        return titles;
    }

    unsigned long cardOf(const QString &title)
    {
        const QByteArray master = box.master();
        unsigned long card = manager.firstCard(master.constData());
        while (card && manager.readItem("TITL", card) != title)
            card = manager.nextCard(card, master.constData());
        return card;
    }

    QByteArray currentPath() { return QByteArray("F0:") + current().fileName; }

    /** Shows the cards whose title contains a text, in the order of the numbers. */
    bool filter(const QByteArray &text, KyPDataManager::FilterFor parent, bool keepResume)
    {
        return filterBy(containsText("TITL", text), plainKey("NUMB"), parent, keepResume);
    }
    bool filterBy(const QByteArray &search, const QByteArray &order, KyPDataManager::FilterFor parent,
                  bool keepResume)
    {
        return manager.filter(search.constData(), static_cast<unsigned long>(search.size()),
                              order.constData(), static_cast<unsigned long>(order.size()), parent,
                              keepResume);
    }

private:
    bool writeCategories(const QByteArray &categories)
    {
        return manager.writeItem("CTGR", categories.constData(),
                                 static_cast<unsigned long>(categories.size()));
    }
};

#endif
