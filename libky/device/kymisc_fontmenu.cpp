#include "kymisc.h"
#include <algorithm>
#include <iterator>
#include <QAction>
#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QMenu>

namespace {

struct NamedSize
{
    int points;
    const char *name;
};

// From the smallest to the largest; the number of an item is its place, from 1.
constexpr NamedSize LowResolutionSizes[] = {
    {10, QT_TRANSLATE_NOOP("KyMisc", "Small")},
    {12, QT_TRANSLATE_NOOP("KyMisc", "Medium")},
    {18, QT_TRANSLATE_NOOP("KyMisc", "Large")},
};
constexpr NamedSize HighResolutionSizes[] = {
    {12, QT_TRANSLATE_NOOP("KyMisc", "Minimum")}, {16, QT_TRANSLATE_NOOP("KyMisc", "Small")},
    {20, QT_TRANSLATE_NOOP("KyMisc", "Medium")},  {24, QT_TRANSLATE_NOOP("KyMisc", "Large")},
    {36, QT_TRANSLATE_NOOP("KyMisc", "Maximum")},
};

/** The named sizes of a resolution. Their middle is logical size 0. */
struct NamedSizes
{
    const NamedSize *first;
    int count;

    [[nodiscard]] int largest() const { return count / 2; }
    [[nodiscard]] int smallest() const { return -largest(); }
    [[nodiscard]] int bounded(int logicalSize) const
    {
        return std::clamp(logicalSize, smallest(), largest());
    }
    /** Number of the item of a logical size within the range. */
    [[nodiscard]] int itemNumber(int logicalSize) const { return logicalSize + largest() + 1; }
    [[nodiscard]] bool hasItem(int number) const { return number >= 1 && number <= count; }
    [[nodiscard]] const NamedSize &item(int number) const { return first[number - 1]; }
};

NamedSizes namedSizes()
{
    if (KyMisc::getResolutionScale() == 1)
        return {std::begin(LowResolutionSizes), static_cast<int>(std::size(LowResolutionSizes))};
    return {std::begin(HighResolutionSizes), static_cast<int>(std::size(HighResolutionSizes))};
}

// Marks the items of the named sizes: an application's own items may have any number.
constexpr char NamedSizeProperty[] = "kyNamedFontSize";

QAction *addItem(QMenu *menu, const QString &text, int number)
{
    QAction *item = menu->addAction(text);
    item->setData(number);
    item->setCheckable(true);
    return item;
}

/** All sizes that the application's font comes in, from the smallest. */
QList<int> allPointSizes()
{
    // Of the font that is really used: the one asked for may not exist, or stand for another.
    return QFontDatabase::pointSizes(QFontInfo(QApplication::font()).family());
}

QString pointSizeText(int pointSize)
{
    return QStringLiteral("%1dot").arg(pointSize);
}

QList<QAction *> itemsOf(const QMenu *menu)
{
    return menu ? menu->actions() : QList<QAction *>();
}

/** By the text, since several sizes share a number. */
void setPointSizeChecked(QMenu *menu, int pointSize, bool checked)
{
    const QString text = pointSizeText(pointSize);
    for (QAction *item : itemsOf(menu)) {
        if (item->text() == text)
            item->setChecked(checked);
    }
}

} // namespace

void KyMisc::insertStandardFontMenu(QMenu *menu)
{
    if (!menu)
        return;
    const NamedSizes sizes = namedSizes();
    for (int number = sizes.count; number >= 1; --number) {
        const QString text = QCoreApplication::translate("KyMisc", sizes.item(number).name);
        addItem(menu, text, number)->setProperty(NamedSizeProperty, true);
    }
}

void KyMisc::insertAllFontMenu(QMenu *menu)
{
    constexpr int NumberDivisor = 10;
    if (!menu)
        return;
    for (const int pointSize : allPointSizes())
        addItem(menu, pointSizeText(pointSize), pointSize / NumberDivisor);
}

int KyMisc::getLogicalSizeFromMenuId(int id)
{
    const NamedSizes sizes = namedSizes();
    return sizes.hasItem(id) ? id - sizes.itemNumber(0) : 0;
}

void KyMisc::setFontSizeItemChecked(QMenu *menu, int logicalSize)
{
    const NamedSizes sizes = namedSizes();
    const int checked = sizes.itemNumber(sizes.bounded(logicalSize));
    for (QAction *item : itemsOf(menu)) {
        if (item->property(NamedSizeProperty).toBool())
            item->setChecked(item->data().toInt() == checked);
    }
}

int KyMisc::getFontPointSize(int logicalSize)
{
    const NamedSizes sizes = namedSizes();
    return sizes.item(sizes.itemNumber(sizes.bounded(logicalSize))).points;
}

void KyMisc::toggleFontSize(QMenu *menu, int &logicalSize, bool larger)
{
    const NamedSizes sizes = namedSizes();
    if (larger ? logicalSize >= sizes.largest() : logicalSize <= sizes.smallest())
        return;
    logicalSize += larger ? 1 : -1;
    setFontSizeItemChecked(menu, logicalSize);
}

void KyMisc::toggleAllFontSize(QMenu *menu, int *pointSize, bool larger)
{
    const QList<int> sizes = allPointSizes();
    const qsizetype present = pointSize ? sizes.indexOf(*pointSize) : -1;
    if (present < 0)
        return;
    setPointSizeChecked(menu, *pointSize, false);
    *pointSize = sizes[std::clamp<qsizetype>(present + (larger ? 1 : -1), 0, sizes.size() - 1)];
    setPointSizeChecked(menu, *pointSize, true);
}
