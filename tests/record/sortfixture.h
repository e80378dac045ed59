#ifndef KY_TEST_SORTFIXTURE_H
#define KY_TEST_SORTFIXTURE_H

#include "boxcreation.h"
#include "boxfixture.h"
#include "recordfixture.h"
#include <optional>

constexpr char TextAscending = '\x80';
constexpr char TextDescending = '\x81';
constexpr char PlainAscending = '\x82';
constexpr char PlainDescending = '\x83';

/** One key of a sort expression. */
inline QByteArray sortKey(const char *code, char direction)
{
    return QByteArray(code, 4) + '\xFE' + direction;
}

/** The terminator of an expression. */
inline QByteArray endOfExpression()
{
    return QByteArray(1, '\0');
}

/** What the user sees: which index, in which direction, and the cards. */
struct View
{
    const KyPDtm::PIOIDXINFO *row;
    QByteArray index;
    bool ascending;
    QString titles;
    bool operator==(const View &) const = default;
};

/**
 * A box of four cards, open in a manager. Its indexes go with it.
 *
 *     title  number  short  long  categories
 *     b      3       10     1     5
 *     c      1       40     1     5
 *     a      4       30     1     5
 *     d      2       20     2
 *
 * By title abcd, by number cdba, by short bdac.
 */
class SortBox
{
public:
    SortBox() { fill(); }
    explicit SortBox(const KyPDataManagerSortKey &masterOrder) : box("IDX", masterOrder) { fill(); }
    ~SortBox()
    {
        manager.reset();
        KyPDtm::DeleteFamilyIndex(box.path().constData());
    }
    Q_DISABLE_COPY_MOVE(SortBox)

    TestBox box;
    std::optional<KyPDataManager> manager;

    [[nodiscard]] KyPDtm::KyPDataManagerPrivate &record() { return privateOf(*manager); }
    [[nodiscard]] KyPDtm::PIOIDXINFO &currentRow() { return *record().currentIndex; }
    [[nodiscard]] quint8 item(const char *code) { return quint8(manager->nameToItemId(code)); }

    /** Opens the box anew, in a manager that knows only what is on the disk. */
    void reopen(bool readOnly = false)
    {
        manager.reset();
        manager.emplace(box.path().constData(), nullptr, readOnly);
    }

    /** Makes an index of the family such as "A.IDX", as another process would, and lets the manager adopt it.
     * Its file name. */
    QByteArray adopt(const QByteArray &rest, const QByteArray &sortExpression,
                     const QByteArray &searchExpression = QByteArray())
    {
        manager.reset();
        const QByteArray index = box.file(rest);
        const int failed =
            KyPDtm::createMIdxFile(index.constData(), box.path().constData(), searchExpression.constData(),
                                   int(searchExpression.size()), sortExpression.constData(),
                                   int(sortExpression.size()), false, box.master().constData());
        reopen();
        return failed ? QByteArray() : index.mid(3);
    }
    /** A category index of category 5 by title: abc. */
    QByteArray adoptCategory(const QByteArray &rest = "C.IDX")
    {
        return adopt(rest, byTitle(), QByteArray("CTGR\xFE\x92\x0C\x05\0", 9));
    }
    /** The result of a search for the long number 1, by title: abc. */
    QByteArray adoptSearch(const QByteArray &rest = "S.IDX")
    {
        return adopt(rest, byTitle(), QByteArray("LONG\xFE\x90\x12\x01\0\0\0\0", 12));
    }
    /** Makes a subset by title current: abc. */
    bool showSubset(bool isCategory)
    {
        const QByteArray name = isCategory ? adoptCategory() : adoptSearch();
        return manager->setCurrentIndex(name.constData(), false) && currentRow().isSubset();
    }

    static QByteArray byTitle() { return sortKey("TITL", TextAscending) + endOfExpression(); }

    /** Titles of the view. The current card stays as it is. */
    [[nodiscard]] QString titles() const
    {
        QString text;
        for (unsigned long card = manager->firstCard(); card; card = manager->nextCard(card))
            text += manager->readItem("TITL", card);
        return text;
    }
    /** Titles in the order that an index has on the disk. */
    [[nodiscard]] QString titlesIn(const QByteArray &fileName) const
    {
        QString text;
        for (const int card : cardsOf("F0:" + fileName))
            text += manager->readItem("TITL", static_cast<unsigned long>(card));
        return text;
    }
    [[nodiscard]] View view()
    {
        return {&currentRow(), currentRow().fileName, manager->ascendent(), titles()};
    }
    /** Names of the temporary indexes of all boxes. */
    static QStringList temporaries() { return folderNames(boxFolder(), "ppin"); }
    /** The sort expression of an index on the disk. */
    static QByteArray storedOrder(const QByteArray &fileName)
    {
        char bytes[PdtmInfoRoom];
        quint16 length = sizeof bytes;
        const PdtmStatus status =
            _IndexInfoRead(("F0:" + fileName).constData(), InfoSortExpression, bytes, &length);
        return status == PdtmOk ? QByteArray(bytes, length) : QByteArray("unreadable");
    }
    /** The sort expression as a row keeps it. */
    static QByteArray keptOrder(const KyPDtm::PIOIDXINFO &row)
    {
        return QByteArray(reinterpret_cast<const char *>(row.sortExp), row.sortExpLength);
    }
    KyPDtm::PIOIDXINFO *rowNamed(const QByteArray &fileName)
    {
        for (KyPDtm::PIOIDXINFO &row : record().indexes) {
            if (row.inUse && fileName == row.fileName)
                return &row;
        }
        return nullptr;
    }

private:
    void fill()
    {
        reopen();
        add(u'b', 3, 10, 1, "\x05");
        add(u'c', 1, 40, 1, "\x05");
        add(u'a', 4, 30, 1, "\x05");
        add(u'd', 2, 20, 2, "");
    }
    void add(char16_t title, uchar number, ushort shortNumber, unsigned long longNumber,
             const char *categories)
    {
        unsigned long card = 0;
        const bool added = manager->editNewCard() && manager->writeItem("TITL", QString(QChar(title))) &&
                           manager->writeItem("NUMB", number) && manager->writeItem("SHRT", shortNumber) &&
                           manager->writeItem("LONG", longNumber) &&
                           manager->writeItem("CTGR", categories, strlen(categories)) &&
                           manager->finishEditCard(&card);
        if (!added)
            qFatal("the box can't be filled");
    }
};

#endif
