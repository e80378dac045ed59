#include "config.h"
#include "kycolumnlist.h"
#include "kymisc.h"
#include <algorithm>
#include <cstdlib>
#include <limits>
#include <QHeaderView>
#include <QScrollBar>
#include <QTreeWidget>

namespace {

using ColumnInfos = QList<KyMisc::KyListColumnInfo>;

constexpr qint64 WidestColumn = 32767; // pixels: what no screen has, whatever a settings file says

/** The columns of a tree. */
class TreeColumns final : public KyColumnList
{
public:
    explicit TreeColumns(QTreeWidget *tree) : m_tree(tree) {}

    [[nodiscard]] int columnCount() const override { return m_tree->columnCount(); }
    [[nodiscard]] int columnWidth(int column) const override { return m_tree->columnWidth(column); }
    void setColumnWidth(int column, int width) override;
    void adjustContentsSize() override { m_tree->horizontalScrollBar()->setValue(0); }

private:
    QTreeWidget *const m_tree;
};

/** The width set is the width had: nothing stretches the last column, and none is too narrow. */
void TreeColumns::setColumnWidth(int column, int width)
{
    QHeaderView *header = m_tree->header();
    header->setStretchLastSection(false);
    header->setMinimumSectionSize(std::min(header->minimumSectionSize(), width));
    header->setSectionResizeMode(column, QHeaderView::Interactive);
    m_tree->setColumnWidth(column, width);
}

/** Calls @p work with the columns of a widget. @return false when it has none that we know */
template <typename Work> bool withColumnsOf(QWidget *widget, Work work)
{
    if (auto *tree = qobject_cast<QTreeWidget *>(widget)) {
        TreeColumns columns(tree);
        work(columns);
    } else if (auto *list = dynamic_cast<KyColumnList *>(widget)) {
        work(*list);
    } else {
        return false;
    }
    return true;
}

/** The same line from every operation. */
void refuse(const QWidget *widget)
{
    qDebug("KyMisc::setListColumnsWidth() doesn't accept %s",
           widget ? widget->metaObject()->className() : "null");
}

/** Finds the widths of columns by their rules. */
class ColumnRules
{
public:
    ColumnRules(const QWidget *widget, const ColumnInfos &columns);

    [[nodiscard]] qint64 width(const KyMisc::KyListColumnInfo &column) const;

private:
    [[nodiscard]] qint64 fixedWidth(const KyMisc::KyListColumnInfo &column) const;
    [[nodiscard]] qint64 evenShare() const { return m_total / m_count; }
    [[nodiscard]] qint64 stretchedWidth(int weight) const;

    const QFontMetrics m_metrics;
    const qint64 m_scale = KyMisc::getResolutionScale();
    const qint64 m_total;
    const qint64 m_count;
    qint64 m_rest;
    qint64 m_weights = 0;
};

constexpr int ListBorder = 4; // pixels

ColumnRules::ColumnRules(const QWidget *widget, const ColumnInfos &columns)
    : m_metrics(widget->font()), m_total(KyMisc::getMaximizedWidgetContentsWidth() - ListBorder),
      m_count(columns.size()), m_rest(m_total)
{
    for (const KyMisc::KyListColumnInfo &column : columns) {
        m_rest -= fixedWidth(column);
        if (column.type == KyMisc::ColumnStretch)
            m_weights += column.value;
    }
}

/** Width of a column that takes no share; 0 for the others. */
qint64 ColumnRules::fixedWidth(const KyMisc::KyListColumnInfo &column) const
{
    constexpr int TextBorder = 8;
    switch (column.type) {
    case KyMisc::ColumnScaled:
        return column.value * m_scale;
    case KyMisc::ColumnText:
        return m_metrics.horizontalAdvance(column.text) + TextBorder * m_scale;
    case KyMisc::ColumnPixels:
        return column.value;
    default:
        return 0;
    }
}

/** Where the fixed columns take more than the screen, what is missing is shared out as if it were left: a
 * stretched column never vanishes. */
qint64 ColumnRules::stretchedWidth(int weight) const
{
    const qint64 rest = std::min<qint64>(std::abs(m_rest), std::numeric_limits<int>::max());
    return m_weights == 0 ? evenShare() : rest * weight / m_weights;
}

qint64 ColumnRules::width(const KyMisc::KyListColumnInfo &column) const
{
    switch (column.type) {
    case KyMisc::ColumnScaled:
    case KyMisc::ColumnText:
    case KyMisc::ColumnPixels:
        return fixedWidth(column);
    case KyMisc::ColumnStretch:
        return stretchedWidth(column.value);
    default:
        return evenShare();
    }
}

QString widthKey(int column, bool landscape)
{
    return QStringLiteral("pcolw%1%2").arg(column).arg(landscape ? QLatin1String("_w") : QLatin1String("_h"));
}

/** The width that the user has set, 0 for none. */
qint64 keptWidth(const Config *config, int column)
{
    const qint64 units = config ? config->readNumEntry(widthKey(column, KyMisc::isLandscape()), 0) : 0;
    return units > 0 ? units * KyMisc::getResolutionScale() : 0;
}

void setWidths(KyColumnList &list, const QWidget *widget, const ColumnInfos &columns, const Config *config)
{
    const ColumnRules rules(widget, columns);
    const int count = std::min(static_cast<int>(columns.size()), list.columnCount());
    for (int i = 0; i < count; ++i) {
        const qint64 kept = keptWidth(config, i);
        const qint64 width = kept > 0 ? kept : rules.width(columns[i]);
        list.setColumnWidth(i, static_cast<int>(std::clamp<qint64>(width, 0, WidestColumn)));
    }
}

void writeWidths(const KyColumnList &list, const ColumnInfos &columns, bool landscape, Config *config)
{
    const auto scale = static_cast<unsigned>(KyMisc::getResolutionScale());
    const int wanted = columns.isEmpty() ? list.columnCount() : static_cast<int>(columns.size());
    for (int i = 0; i < std::min(wanted, list.columnCount()); ++i) {
        const unsigned units = static_cast<unsigned>(list.columnWidth(i)) / scale;
        config->writeEntry(widthKey(i, landscape), static_cast<int>(units));
    }
}

} // namespace

void KyMisc::setListColumnsWidth(QWidget *widget, const QList<KyMisc::KyListColumnInfo> &columns,
                                 Config *config)
{
    if (!withColumnsOf(widget, [&](KyColumnList &list) { setWidths(list, widget, columns, config); }))
        refuse(widget);
}

void KyMisc::setListColumnsWidth(QWidget *widget, const QList<KyMisc::KyListColumnInfo> &columns,
                                 Config &config)
{
    setListColumnsWidth(widget, columns, &config);
}

void KyMisc::writeListColumnsWidth(QWidget *widget, const QList<KyMisc::KyListColumnInfo> &columns,
                                   bool landscape, Config *config)
{
    const auto write = [&](const KyColumnList &list) {
        if (config)
            writeWidths(list, columns, landscape, config);
    };
    if (!withColumnsOf(widget, write))
        refuse(widget);
}

void KyMisc::writeListColumnsWidth(QWidget *widget, const QList<KyMisc::KyListColumnInfo> &columns,
                                   Config *config)
{
    writeListColumnsWidth(widget, columns, isLandscape(), config);
}

void KyMisc::writeListColumnsWidth(QWidget *widget, const QList<KyMisc::KyListColumnInfo> &columns,
                                   Config &config, bool landscape)
{
    writeListColumnsWidth(widget, columns, landscape, &config);
}

void KyMisc::writeListColumnsWidth(QWidget *widget, const QList<KyMisc::KyListColumnInfo> &columns,
                                   Config &config)
{
    writeListColumnsWidth(widget, columns, isLandscape(), &config);
}

void KyMisc::rotateListColumnsWidth(QWidget *widget, const QList<KyMisc::KyListColumnInfo> &columns,
                                    Config *config)
{
    writeListColumnsWidth(widget, columns, !isLandscape(), config);
    setListColumnsWidth(widget, columns, config);
    withColumnsOf(widget, [](KyColumnList &list) { list.adjustContentsSize(); });
}

void KyMisc::rotateListColumnsWidth(QWidget *widget, const QList<KyMisc::KyListColumnInfo> &columns,
                                    Config &config)
{
    rotateListColumnsWidth(widget, columns, &config);
}
