#include "kymisc.h"
#include <algorithm>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QTreeWidget>

namespace {

/** The widgets whose text grows, apart from QTreeWidget, which has a header as well. */
bool hasGrowingFont(const QWidget *widget)
{
    return qobject_cast<const QLineEdit *>(widget) || qobject_cast<const QListWidget *>(widget) ||
           qobject_cast<const QPlainTextEdit *>(widget) || qobject_cast<const QSpinBox *>(widget);
}

void arrangeFont(QWidget *widget, int fromPoint, int toPoint)
{
    auto *tree = qobject_cast<QTreeWidget *>(widget);
    QFont font = widget->font();
    if ((!tree && !hasGrowingFont(widget)) || font.pointSize() != fromPoint)
        return;
    font.setPointSize(toPoint);
    widget->setFont(font);
    if (tree)
        tree->header()->setFont(font);
}

/** A length in a layout times a factor, within what a layout can hold. A length below 0 is left to the style.
 */
int scaled(int length, long factor)
{
    const qint64 sane = std::clamp<qint64>(factor, 0, QWIDGETSIZE_MAX);
    return length < 0 ? length : static_cast<int>(std::min<qint64>(length * sane, QWIDGETSIZE_MAX));
}

template <typename TwoSpacings> void scaleBothSpacings(TwoSpacings *layout, long factor)
{
    layout->setHorizontalSpacing(scaled(layout->horizontalSpacing(), factor));
    layout->setVerticalSpacing(scaled(layout->verticalSpacing(), factor));
}

void scaleSpacing(QLayout *layout, long factor)
{
    if (auto *grid = qobject_cast<QGridLayout *>(layout))
        scaleBothSpacings(grid, factor);
    else if (auto *form = qobject_cast<QFormLayout *>(layout))
        scaleBothSpacings(form, factor);
    else
        layout->setSpacing(scaled(layout->spacing(), factor));
}

void scaleLayout(QLayout *layout, long factor)
{
    const QMargins margins = layout->contentsMargins();
    layout->setContentsMargins(scaled(margins.left(), factor), scaled(margins.top(), factor),
                               scaled(margins.right(), factor), scaled(margins.bottom(), factor));
    scaleSpacing(layout, factor);
}

} // namespace

void KyMisc::KyFontArrange(QWidget *widget)
{
    constexpr int LargestLowResolutionSize = 12;
    if (!widget || widget->font().family() != QLatin1String("lcfont"))
        return;
    if (widget->font().pointSize() > LargestLowResolutionSize)
        fontArrange(widget, 20, 24);
    else
        fontArrange(widget, 10, 12);
}

void KyMisc::KyLayoutSpaceArrange(QObject *object)
{
    scaleArrange(object, getResolutionScale());
}

void fontArrange(QObject *object, int fromPoint, int toPoint)
{
    if (!object)
        return;
    if (auto *widget = qobject_cast<QWidget *>(object))
        arrangeFont(widget, fromPoint, toPoint);
    if (object->metaObject() == &QComboBox::staticMetaObject)
        return;
    const QObjectList children = object->children(); // a widget may change its own when its font changes
    for (QObject *child : children)
        fontArrange(child, fromPoint, toPoint);
}

void scaleArrange(QObject *object, long factor)
{
    if (!object || factor == 1)
        return;
    if (auto *layout = qobject_cast<QLayout *>(object)) {
        scaleLayout(layout, factor);
        return;
    }
    for (QObject *child : object->children())
        scaleArrange(child, factor);
}
